/*
 * Equaliser, high-pass filter and biquad design used alone: the ZebEq_*
 * family, and the public EQ/HPF records that the processing chain
 * (zeb_kol.h) reuses.
 *
 * Frame: 128 samples per channel, 16-bit, mono or interleaved stereo,
 * changed in place with one frame (128 samples) of delay. Per-bin gains
 * address the 129 bins of a 256-point spectrum, bin k at k * fs / 256.
 *
 * Order of calls: ZebEq_GetBufferSize, ZebEq_Init, ZebEq_Config, then
 * ZebEq_Run per frame, ZebEq_Free at the end. The biquad calls
 * (ZebEq_FilterDesign / FilterApply / FilterFreqz) are a separate path that
 * may follow Init at any time.
 *
 * Files: ZebEq_Init and ZebEq_Reset read the message-level file; Run and
 * FilterApply may write raw dumps when AUDIO_EQ_DUMP asks for them. Run
 * allocates nothing. One caller per handle.
 */
#ifndef ZEBAUDIO_ZEB_EQ_H
#define ZEBAUDIO_ZEB_EQ_H

#include "zebaudio/zeb_types.h"

ZEB_EXTERN_C_BEGIN

/* Result of the ZebEq_* calls; 0 is success. */
typedef enum {
  ALGO_EQ_RET_SUCCESS = 0,
  ALGO_EQ_RET_INIT_ERROR = 1,
  ALGO_EQ_RET_INVALID_HANDLE = 2,
  ALGO_EQ_RET_INVALID_SAMPLE_RATE = 3,
  ALGO_EQ_RET_INVALID_POINT_NUMBER = 4,
  ALGO_EQ_RET_INVALID_CHANNEL = 5,
  ALGO_EQ_RET_INVALID_ENABLE = 6,
  ALGO_EQ_RET_INVALID_MODE = 7,
  ALGO_EQ_RET_INVALID_TABLE = 8,
  ALGO_HPF_RET_INVALID_ENABLE = 9,
  ALGO_HPF_RET_INVALID_MODE = 10,
  ALGO_HPF_RET_INVALID_TABLE = 11,
  ALGO_EQ_RET_API_CONFLICT = 12,
  ALGO_EQ_RET_INVALID_CALLING = 13,
  ALGO_EQ_RET_FAILED = 14
} ALGO_EQ_RET;

/* Sample rates in Hz; the value is the rate itself. */
typedef enum {
  ZEB_EQ_SAMPLE_RATE_8000 = 8000,
  ZEB_EQ_SAMPLE_RATE_16000 = 16000,
  ZEB_EQ_SAMPLE_RATE_32000 = 32000,
  ZEB_EQ_SAMPLE_RATE_48000 = 48000
} ZEB_EQ_SAMPLE_RATE;

/* High-pass cutoff choices: 80, 120, 150 or 500 Hz. */
typedef enum {
  AUDIO_HPF_FREQ_80 = 0,
  AUDIO_HPF_FREQ_120 = 1,
  AUDIO_HPF_FREQ_150 = 2,
  AUDIO_HPF_FREQ_500 = 3,
  AUDIO_HPF_FREQ_BUTT = 4 /* count of choices, not a cutoff */
} ZEB_HPF_FREQ;

/* Biquad shapes. The "notch" is a peaking section: it cuts for a negative
   gain and passes everything at gain 0. High and low pass become shelves
   when gain is non-zero. */
typedef enum {
  EQ_NOTCH_FILTER = 0,
  EQ_HIGH_PASS_FILTER = 1,
  EQ_LOW_PASS_FILTER = 2
} EQ_FILTER_TYPE;

/* Stream parameters given to ZebEq_Init. */
typedef struct {
  unsigned int point_number;      /* samples per channel per frame; 128 */
  unsigned int channel;           /* 1 or 2; stereo is interleaved */
  ZEB_EQ_SAMPLE_RATE sample_rate; /* Hz */
} AudioEqInit;

/* Per-bin equaliser, shared by ZebEq_Config and ZebKol_Config. */
typedef struct {
  unsigned int eq_enable;  /* 0 or 1 */
  unsigned int user_mode;  /* 0: keep the current gains; 1: take eq_gain_db */
  short eq_gain_db[129];   /* dB per bin of the 256-point spectrum, -100..20 */
} AudioEqConfig;

/* High-pass filter, shared by ZebEq_Config and ZebKol_Config. */
typedef struct {
  unsigned int hpf_enable;       /* 0 or 1 */
  unsigned int user_mode;        /* 1: frequency-domain gains;
                                    2: time-domain FIR; others: off */
  ZEB_HPF_FREQ cutoff_frequency; /* AUDIO_HPF_FREQ_80 .. AUDIO_HPF_FREQ_500 */
} AudioHpfConfig;

/* One user-designed biquad section. */
typedef struct {
  EQ_FILTER_TYPE type;
  int f0;       /* centre or corner frequency, Hz, 0..fs/2 */
  int q_factor; /* whole number, at least 1 */
  int gain;     /* dB */
} AudioFilterConfig;

/* Bytes of working buffer an EQ handle needs. */
ZEB_API unsigned int ZebEq_GetBufferSize(void);
/* Clears and carves the buffer; returns the handle or NULL. */
ZEB_API EQ_HANDLE ZebEq_Init(char* working_buffer_address, AudioEqInit* eq_init);
/* The same as ZebEq_Init: configuration, filters and state are discarded. */
ZEB_API EQ_HANDLE ZebEq_Reset(char* working_buffer_address, AudioEqInit* eq_init);
ZEB_API ALGO_EQ_RET ZebEq_Config(EQ_HANDLE handle, AudioHpfConfig* hpf_config,
                                 AudioEqConfig* eq_config);
ZEB_API ALGO_EQ_RET ZebEq_GetConfig(EQ_HANDLE handle, AudioEqInit* eq_init,
                                    AudioHpfConfig* hpf_config, AudioEqConfig* eq_config);
/* One frame in place: point_number * channel interleaved samples. */
ZEB_API ALGO_EQ_RET ZebEq_Run(EQ_HANDLE handle, short int* pss_audio_in);
ZEB_API ALGO_EQ_RET ZebEq_Free(EQ_HANDLE handle);
/* Designs the biquad of slot filter_cnt - 1; filter_cnt counts 1..10. */
ZEB_API ALGO_EQ_RET ZebEq_FilterDesign(EQ_HANDLE handle, int filter_cnt,
                                       AudioFilterConfig* filter_config);
/* Runs the designed sections over one frame; advances their delays only,
   the frame comes back as it was given. */
ZEB_API ALGO_EQ_RET ZebEq_FilterApply(EQ_HANDLE handle, short int* pss_audio_in);
/* Summed magnitude response of the designed sections, in dB, at 512 points;
   point k is frequency k * fs / 1024. */
ZEB_API ALGO_EQ_RET ZebEq_FilterFreqz(EQ_HANDLE handle, float* frequency_response);
/* Number (0..100) used in the dump file names. */
ZEB_API ALGO_EQ_RET ZebEq_SetHandleId(EQ_HANDLE handle, int id);
/* Comfort noise on/off with its floor level in dB. */
ZEB_API ALGO_EQ_RET ZebEq_EnableComfortNoise(EQ_HANDLE handle, int enable, int dB);

ZEB_EXTERN_C_END

#endif /* ZEBAUDIO_ZEB_EQ_H */
