// The stand-alone gain control family: its instance record at the start of
// the working buffer, and the internal entry points behind ZebAgc_*.
#ifndef ZEB_AGC_AUDIOAGCPROCESS_H
#define ZEB_AGC_AUDIOAGCPROCESS_H

#include <stdio.h>

#include "ComfortNoise.h"
#include "DynamicRangeProcessing.h"
#include "agc.h"
#include "fft.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_agc.h"

#ifdef __cplusplus
extern "C" {
#endif

#define AGC_FAMILY_CHANNELS 2
#define AGC_FAMILY_HISTORY_SAMPLES 256
#define AGC_FAMILY_BUF_FLOATS 258
#define AGC_FAMILY_TAIL_FLOATS 130
#define AGC_FAMILY_FFT_IP_INTS 130
#define AGC_FAMILY_FFT_W_FLOATS 260

typedef struct {
  int check_number;
  unsigned int point_number;
  unsigned int channel;
  ZEB_AGC_SAMPLE_RATE sample_rate;
  _AudioAgcConfig agc_config;
  short pssAudioIn[AGC_FAMILY_CHANNELS][AGC_FAMILY_HISTORY_SAMPLES];
  short mic_buf_ori[AGC_FAMILY_HISTORY_SAMPLES];  // zeroed, otherwise not used
  int signalAmpEsti;                               // not used
  AGCinst_t* agc_inst[AGC_FAMILY_CHANNELS];
  // Mode 1: windowed block and overlap tail per channel.
  float agc_win_buf_2ch[AGC_FAMILY_CHANNELS][AGC_FAMILY_BUF_FLOATS];
  float agc_out_half_prev_2ch[AGC_FAMILY_CHANNELS][AGC_FAMILY_TAIL_FLOATS];
  FreqAgcHandle* freq_agc_inst[AGC_FAMILY_CHANNELS];
  // Mode 2: transform of the windowed frame, spectrum and overlap tail.
  FFTHandle_t FFT_workingBuff;
  int fbf_ip[AGC_FAMILY_FFT_IP_INTS];
  float fft_win_buf_2ch[AGC_FAMILY_CHANNELS][AGC_FAMILY_BUF_FLOATS];
  float fbf_wfft[AGC_FAMILY_FFT_W_FLOATS];
  float fft_in_positive_max;  // not used
  float ifft_out_half_prev_2ch[AGC_FAMILY_CHANNELS][AGC_FAMILY_TAIL_FLOATS];
  int start_flag;             // mode 1 applies no gain before the second Run
  unsigned short frame_cnt;
  int is_run_status;
  int is_agc_config_status;
  int is_agc_init_status;
  FILE* input_dump;
  FILE* output_dump;
  int dump_id;
  int dump_flag;
  postInfo_t* postInfo;
  cng_t* cng_working_buffer[AGC_FAMILY_CHANNELS];
  int cng_enable;
} AudioAgcInternel;

// Points the record's members at their blocks; NULL for a NULL buffer.
AudioAgcInternel* AGC_AllocateWorkingBufferAddressPartial(char* workingBufferAddress, int dbg_level);
_ALGO_AGC_RET AGC_CheckInitParameter(AudioAgcInit* agc_init, int dbg_level);

unsigned int _ZebAgc_GetBufferSize(void);
AGC_HANDLE _ZebAgc_Init(char* working_buffer_address, AudioAgcInit* agc_init);
ALGO_AGC_RET _ZebAgc_Config(AGC_HANDLE handle, AudioAgcConfig* agc_config);
ALGO_AGC_RET _ZebAgc_GetConfig(AGC_HANDLE handle, AudioAgcInit* agc_init, AudioAgcConfig* agc_config);
ALGO_AGC_RET _ZebAgc_Run(AGC_HANDLE handle, short int* pss_audio_in);
ALGO_AGC_RET _ZebAgc_Free(AGC_HANDLE handle);
ALGO_AGC_RET _ZebAgc_SetAgcFreqBand(AGC_HANDLE handle, int* frequency_band);
ALGO_AGC_RET _ZebAgc_SetLowFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput);
ALGO_AGC_RET _ZebAgc_SetMidFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput);
ALGO_AGC_RET _ZebAgc_SetHighFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                      int* CompressRatioOutput);
ALGO_AGC_RET _ZebAgc_SetCompressionRatioCurve(AGC_HANDLE handle, short int* CompressRatioInput,
                                              short int* CompressRatioOutput, int curve_len);
ALGO_AGC_RET _ZebAgc_SetHandleId(AGC_HANDLE handle, int id);
ALGO_AGC_RET _ZebAgc_EnableComfortNoise(AGC_HANDLE handle, int enable, int dB);

#ifdef __cplusplus
}
#endif

#endif
