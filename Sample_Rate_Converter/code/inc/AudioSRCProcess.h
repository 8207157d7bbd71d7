// Sample-rate converter used inside the library by the noise reduction's
// rate bridge: records, result codes and entry points. Not exported.
#ifndef ZEB_SRC_AUDIOSRCPROCESS_H
#define ZEB_SRC_AUDIOSRCPROCESS_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

// Largest block a converter accepts, in input samples.
#define SRC_MAX_POINT_NUMBER 1536
// Filter line room beyond the block: one more than the higher order.
#define SRC_FILTER_LINE_EXTRA_FLOATS 243
#define SRC_FILTER_ORDER_LOW_TAPS 50
#define SRC_FILTER_ORDER_HIGH_TAPS 242
// Size of SRC_inst_t on the 32-bit target, on which the buffer size law
// 6144 f + 3072 (f + 1) + 1056 was laid down.
#define SRC_TARGET_RECORD_BYTES 84

typedef void* SRC_HANDLE;

typedef enum {
  SRC_8k_to_16k = 0,
  SRC_8k_to_32k = 1,
  SRC_8k_to_48k = 2,
  SRC_16k_to_8k = 3,
  SRC_16k_to_32k = 4,
  SRC_16k_to_48k = 5,
  SRC_32k_to_8k = 6,
  SRC_32k_to_16k = 7,
  SRC_32k_to_48k = 8,
  SRC_48k_to_8k = 9,
  SRC_48k_to_16k = 10,
  SRC_48k_to_32k = 11,
  SRC_24k_to_8k = 12,
  SRC_24k_to_16k = 13,
  SRC_24k_to_32k = 14,
  SRC_24k_to_48k = 15,
  SRC_8k_to_24k = 16,
  SRC_16k_to_24k = 17,
  SRC_32k_to_24k = 18,
  SRC_48k_to_24k = 19
} SrcConversionMode;

// Input rates in kHz.
typedef enum {
  SRATE_8K = 8,
  SRATE_16K = 16,
  SRATE_24K = 24,
  SRATE_32K = 32,
  SRATE_48K = 48
} SrcInSrate;

typedef enum {
  ORDER_LOW = 0,
  ORDER_HIGH = 1
} SrcFilterOrder;

typedef enum {
  ALGO_SRC_RET_SUCCESS = 0,
  ALGO_SRC_RET_INIT_ERROR = 268436993,
  ALGO_SRC_RET_INVALID_MODE = 268436994,
  ALGO_SRC_RET_INVALID_HANDLE = 268436995,
  ALGO_SRC_RET_INVALID_CHANNEL = 268436996,
  ALGO_SRC_RET_INVALID_POINT_NUMBER = 268436997,
  ALGO_SRC_RET_INVALID_SAMPLE_RATE = 268436998,
  ALGO_SRC_RET_API_CONFLICT = 268436999,
  ALGO_SRC_RET_INVALID_CALLING = 268437000
} ALGO_SRC_RET;

// Setup record given to ZebSrc_Init.
typedef struct {
  SrcInSrate WaveIn_srate;
  SrcConversionMode mode;  // not stored by Init: the stored copy keeps 0
  SrcFilterOrder order;
  unsigned int channel;
  unsigned int point_number;
} SRCStructProcess;

// Work areas of one converter; the three pointers lead into the working
// buffer behind the instance record.
typedef struct {
  unsigned short point_buffer_len;  // not used
  short* inbuf[1];                  // SRC_MAX_POINT_NUMBER samples
  short* outbuf[1];                 // SRC_MAX_POINT_NUMBER * factor samples
  unsigned int filter_order;        // 50 or 242
  float* DataBuf[1];                // filter line
  int diff[1];                      // decimation phase carried between blocks
} SRCWorkingBuf_t;

typedef struct {
  int FirFactor;
  int UpFactor;
  unsigned int factor;  // from GetSrcFactor
  SRCStructProcess src_struct_;
  SRCWorkingBuf_t src_work_buf;
  float* FilterCoeff;
  int g_is_init_status;
  int is_run_status;
  int dbg_level;
  FILE* input_dump[1];
  FILE* output_dump[1];
  int dump_flag;
} SRC_inst_t;

// Output-buffer factor of a mode (its up-sampling factor, 1 for mode 15);
// 0 with a message for an unknown mode.
int GetSrcFactor(SrcConversionMode mode, int dbg_lv);
// Bytes of one converter's working buffer; 0 for an unknown mode.
unsigned int ZebSrc_GetBufferSize(SrcConversionMode mode);

SRC_HANDLE ZebSrc_Init(char* workingBufferAddress, SRCStructProcess* src_struct);
ALGO_SRC_RET ZebSrc_Run(SRC_HANDLE handle, short int* audio_input, short int* src_output,
                        int* output_size);
ALGO_SRC_RET ZebSrc_Release(SRC_HANDLE handle);

#ifdef __cplusplus
}
#endif

#endif
