/*
 * Noise reduction used alone: the ZebAnr_* family, and the public noise
 * reduction records that the processing chain (zeb_kol.h) reuses.
 *
 * Frame: 128 samples per channel, 16-bit, mono or interleaved stereo,
 * filtered in place with one frame (128 samples) of delay. Filter modes
 * (anr_filter_mode): 0 Wiener-type estimator, 1 revised OM-LSA, 2 MCRA, 3 IMCRA,
 * 4 SPP, 5 neural (16 kHz inside; not at 48 kHz; needs converge speed 2).
 *
 * Order of calls: ZebAnr_GetBufferSize, ZebAnr_Init, ZebAnr_Config, then
 * ZebAnr_Run per frame, ZebAnr_Free at the end. The buffer size depends on
 * neither the channel count nor the rate.
 *
 * Files: ZebAnr_Init and ZebAnr_Reset read the message-level file;
 * ZebAnr_GetJsonFileSize and ZebAnr_ReadJson read the tuning file; Run may
 * write raw dumps when AUDIO_ANR_DUMP asks for them. Nothing else touches
 * the file system, and Run allocates nothing. One caller per handle.
 */
#ifndef ZEBAUDIO_ZEB_ANR_H
#define ZEBAUDIO_ZEB_ANR_H

#include "zebaudio/zeb_types.h"

ZEB_EXTERN_C_BEGIN

/* Result of the ZebAnr_* calls; 0 is success. */
typedef enum {
  ALGO_ANR_RET_SUCCESS = 0,
  ALGO_ANR_RET_INIT_ERROR = 1,
  ALGO_ANR_RET_INVALID_HANDLE = 2,
  ALGO_ANR_RET_INVALID_SAMPLE_RATE = 3,
  ALGO_ANR_RET_INVALID_POINT_NUMBER = 4,
  ALGO_ANR_RET_INVALID_CHANNEL = 5,
  ALGO_ANR_RET_INVALID_ENABLE = 6,
  ALGO_ANR_RET_INVALID_MODE = 7,
  ALGO_ANR_RET_INVALID_INTENSITY = 8,
  ALGO_ANR_RET_INVALID_SMOOTH_LEVEL = 9,
  ALGO_ANR_RET_INVALID_CONVERGE_SPEED = 10,
  ALGO_ANR_RET_API_CONFLICT = 11,
  ALGO_ANR_RET_INVALID_CALLING = 12,
  ALGO_ANR_RET_INVALID_FILTER_MODE = 13,
  ALGO_ANR_RET_FAILED = 14
} ALGO_ANR_RET;

/* Sample rates in Hz; the value is the rate itself. */
typedef enum {
  ZEB_ANR_SAMPLE_RATE_8000 = 8000,
  ZEB_ANR_SAMPLE_RATE_16000 = 16000,
  ZEB_ANR_SAMPLE_RATE_32000 = 32000,
  ZEB_ANR_SAMPLE_RATE_48000 = 48000
} ZEB_ANR_SAMPLE_RATE;

/* How often the filter is updated: every third, second or every frame. */
typedef enum {
  NR_SPEED_LOW = 0,
  NR_SPEED_MID = 1,
  NR_SPEED_HIGH = 2
} NR_CONVERGE_SPEED;

/* Stream parameters given to ZebAnr_Init. */
typedef struct {
  unsigned int point_number;       /* samples per channel per frame; 128 */
  unsigned int channel;            /* 1 or 2; stereo is interleaved */
  ZEB_ANR_SAMPLE_RATE sample_rate; /* Hz */
} AudioAnrInit;

/* Noise reduction settings, shared by ZebAnr_Config and ZebKol_Config. */
typedef struct {
  unsigned int anr_enable;   /* 0 or 1 */
  unsigned int user_mode;    /* 0: built-in smoothing 10 and speed 1;
                                1, 2: the two fields below apply */
  int anr_intensity_band[6]; /* upper edges in bins of bands 0..5,
                                0..128, not decreasing */
  int anr_intensity[7];      /* per band, 0..30; band 6 runs to the top */
  unsigned int anr_smooth_level;         /* 0..10, gain smoothing order */
  NR_CONVERGE_SPEED anr_converge_speed;  /* 0..2 */
  int anr_filter_mode;                   /* 0..5, see above */
} AudioAnrConfig;

/* Bytes of working buffer an ANR handle needs. */
ZEB_API unsigned int ZebAnr_GetBufferSize(void);
/* Clears and carves the buffer; returns the handle or NULL. */
ZEB_API ANR_HANDLE ZebAnr_Init(char* working_buffer_address, AudioAnrInit* anr_init);
/* The same as ZebAnr_Init: all state is lost, Config is due again. */
ZEB_API ANR_HANDLE ZebAnr_Reset(char* working_buffer_address, AudioAnrInit* anr_init);
ZEB_API ALGO_ANR_RET ZebAnr_Config(ANR_HANDLE handle, AudioAnrConfig* anr_config);
ZEB_API ALGO_ANR_RET ZebAnr_GetConfig(ANR_HANDLE handle, AudioAnrInit* anr_init,
                                      AudioAnrConfig* anr_config);
/* One frame in place: point_number * channel interleaved samples. */
ZEB_API ALGO_ANR_RET ZebAnr_Run(ANR_HANDLE handle, short* pss_audio_in);
ZEB_API ALGO_ANR_RET ZebAnr_Free(ANR_HANDLE handle);
/* Accepted for compatibility; this library has no beam-forming mode. */
ZEB_API ALGO_ANR_RET ZebAnr_EnhanceNNBFMode(ANR_HANDLE handle, ANR_BF_HANDLE handle2,
                                            int is_enable);
/* Number (0..100) used in the dump file names. */
ZEB_API ALGO_ANR_RET ZebAnr_SetHandleId(ANR_HANDLE handle, int id);
/* Size in bytes of a JSON tuning file; 0 when it cannot be opened. */
ZEB_API unsigned int ZebAnr_GetJsonFileSize(char* jsonfile);
/* Reads the tuning file into jsonBuffer (buffSize bytes) and applies it. */
ZEB_API ALGO_ANR_RET ZebAnr_ReadJson(ANR_HANDLE handle, char* jsonBuffer, char* jsonfile,
                                     unsigned int buffSize);
/* Comfort noise on/off with its floor level in dB. */
ZEB_API ALGO_ANR_RET ZebAnr_EnableComfortNoise(ANR_HANDLE handle, int enable, int dB);
/* Automatic smoothing switch; acts in filter mode 0. */
ZEB_API ALGO_ANR_RET ZebAnr_EnableAutoSmooth(ANR_HANDLE handle, int enable);

ZEB_EXTERN_C_END

#endif /* ZEBAUDIO_ZEB_ANR_H */
