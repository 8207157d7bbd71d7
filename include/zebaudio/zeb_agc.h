/*
 * Automatic gain control used alone: the ZebAgc_* family, the public AGC
 * records that the processing chain (zeb_kol.h) reuses, and AGC_Process.
 *
 * Frame: 128 samples per channel, 16-bit, mono or interleaved stereo,
 * changed in place. Two engines behind one record:
 *   user_mode 1, time domain: gain counted in half dB, moved per sub-frame
 *     of 32, 64 or 128 samples (8, 16, 32/48 kHz);
 *   user_mode 2, frequency domain: three bands on 256-point spectra, gain
 *     counted in dB, one frame of delay.
 * Any other user_mode, or agc_enable 0, leaves the frame untouched.
 *
 * Order of calls: ZebAgc_GetBufferSize, ZebAgc_Init, ZebAgc_Config,
 * optional curve and band setters, then ZebAgc_Run per frame, ZebAgc_Free.
 *
 * Files: ZebAgc_Init reads the message-level file; Run may write raw dumps
 * when AUDIO_AGC_DUMP asks for them. Run allocates nothing. One caller per
 * handle.
 */
#ifndef ZEBAUDIO_ZEB_AGC_H
#define ZEBAUDIO_ZEB_AGC_H

#include "zebaudio/zeb_types.h"

ZEB_EXTERN_C_BEGIN

/* Result of the ZebAgc_* calls; 0 is success. There is no public code for
   a bad frequency band: it is reported as ALGO_AGC_RET_FAILED. */
typedef enum {
  ALGO_AGC_RET_SUCCESS = 0,
  ALGO_AGC_RET_INIT_ERROR = 1,
  ALGO_AGC_RET_INVALID_HANDLE = 2,
  ALGO_AGC_RET_INVALID_SAMPLE_RATE = 3,
  ALGO_AGC_RET_INVALID_POINT_NUMBER = 4,
  ALGO_AGC_RET_INVALID_CHANNEL = 5,
  ALGO_AGC_RET_INVALID_ENABLE = 6,
  ALGO_AGC_RET_INVALID_MODE = 7,
  ALGO_AGC_RET_INVALID_COMPRESSION_RATIO = 8,
  ALGO_AGC_RET_INVALID_DROP_GAIN_MAX = 9,
  ALGO_AGC_RET_INVALID_GAIN_STEP = 10,
  ALGO_AGC_RET_INVALID_RELEASE_TIME = 11,
  ALGO_AGC_RET_INVALID_ATTACK_TIME = 12,
  ALGO_AGC_RET_INVALID_NOISE_GATE = 13,
  ALGO_AGC_RET_INVALID_NOISE_ATTENU = 14,
  ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL = 15,
  ALGO_AGC_RET_INVALID_GAIN_INFO = 16,
  ALGO_AGC_RET_API_CONFLICT = 17,
  ALGO_AGC_RET_INVALID_CALLING = 18,
  ALGO_AGC_RET_FAILED = 19
} ALGO_AGC_RET;

/* Sample rates in Hz; the value is the rate itself. */
typedef enum {
  ZEB_AGC_SAMPLE_RATE_8000 = 8000,
  ZEB_AGC_SAMPLE_RATE_16000 = 16000,
  ZEB_AGC_SAMPLE_RATE_32000 = 32000,
  ZEB_AGC_SAMPLE_RATE_48000 = 48000
} ZEB_AGC_SAMPLE_RATE;

/* Stream parameters given to ZebAgc_Init. */
typedef struct {
  unsigned int point_number;       /* samples per channel per frame; 128 */
  unsigned int channel;            /* 1 or 2; stereo is interleaved */
  ZEB_AGC_SAMPLE_RATE sample_rate; /* Hz */
} AudioAgcInit;

/* Limits and start value of the gain, all in dB. */
typedef struct {
  int gain_max;  /* -120..100 */
  int gain_min;  /* -120..100 */
  int gain_init; /* -100..100 */
} AgcGainInfo;

/* Gain control settings, shared by ZebAgc_Config and ZebKol_Config. */
typedef struct {
  unsigned int agc_enable;    /* 0: frames pass untouched */
  unsigned int user_mode;     /* 1: time domain; 2: frequency domain */
  AgcGainInfo gain_info;
  unsigned int drop_gain_max; /* largest cut against saturation, 0..120:
                                 half dB per frame in mode 1, dB in mode 2 */
  unsigned int attack_time;   /* frames of falling demand before the gain
                                 falls, 1..99 */
  unsigned int release_time;  /* frames of rising demand before the gain
                                 rises, 1..99 */
  short compression_ratio_input[7];  /* curve input levels, dB, -120..0,
                                        not falling */
  short compression_ratio_output[7]; /* curve output levels, dB, -120..0,
                                        not falling */
  int drop_gain_threshold;    /* output peak limit, dB, -120..0 */
  int noise_gate_db;          /* gate, dB, -120..120; in mode 1 a value of
                                 0 or above holds the gain */
  unsigned int noise_gate_attenuation_db; /* attenuation under the gate as a
                                             percentage, 0..100 */
  unsigned int gain_step;     /* largest step per event, half dB, 1..10 */
} AudioAgcConfig;

/* Time-domain gain core of one channel, defined inside the library as
   struct AGCinst_t_. */
typedef struct AGCinst_t_ AGCinst_t;

/* Bytes of working buffer an AGC handle needs. */
ZEB_API unsigned int ZebAgc_GetBufferSize(void);
/* Clears and carves the buffer; returns the handle or NULL. */
ZEB_API AGC_HANDLE ZebAgc_Init(char* working_buffer_address, AudioAgcInit* agc_init);
/* The same as ZebAgc_Init: curves, bands and state are reset. */
ZEB_API AGC_HANDLE ZebAgc_Reset(char* working_buffer_address, AudioAgcInit* agc_init);
ZEB_API ALGO_AGC_RET ZebAgc_Config(AGC_HANDLE handle, AudioAgcConfig* agc_config);
ZEB_API ALGO_AGC_RET ZebAgc_GetConfig(AGC_HANDLE handle, AudioAgcInit* agc_init,
                                      AudioAgcConfig* agc_config);
/* One frame in place: point_number * channel interleaved samples. */
ZEB_API ALGO_AGC_RET ZebAgc_Run(AGC_HANDLE handle, short int* pss_audio_in);
ZEB_API ALGO_AGC_RET ZebAgc_Free(AGC_HANDLE handle);
/* Frequency-domain AGC: three band edges in Hz, each 0..fs/2, rising. */
ZEB_API ALGO_AGC_RET ZebAgc_SetAgcFreqBand(AGC_HANDLE handle, int* frequency_band);
/* Frequency-domain AGC: per-band curves of seven input and seven output
   levels in dB. */
ZEB_API ALGO_AGC_RET ZebAgc_SetLowFreqCompressionRatioCurve(AGC_HANDLE handle,
                                                            int* CompressRatioInput,
                                                            int* CompressRatioOutput);
ZEB_API ALGO_AGC_RET ZebAgc_SetMidFreqCompressionRatioCurve(AGC_HANDLE handle,
                                                            int* CompressRatioInput,
                                                            int* CompressRatioOutput);
ZEB_API ALGO_AGC_RET ZebAgc_SetHighFreqCompressionRatioCurve(AGC_HANDLE handle,
                                                             int* CompressRatioInput,
                                                             int* CompressRatioOutput);
/* Time-domain AGC: a curve of curve_len points (at most 20), dB. */
ZEB_API ALGO_AGC_RET ZebAgc_SetCompressionRatioCurve(AGC_HANDLE handle,
                                                     short int* CompressRatioInput,
                                                     short int* CompressRatioOutput,
                                                     int curve_len);
/* Number (0..100) used in the dump file names. */
ZEB_API ALGO_AGC_RET ZebAgc_SetHandleId(AGC_HANDLE handle, int id);
/* Comfort noise on/off with its floor level in dB. */
ZEB_API ALGO_AGC_RET ZebAgc_EnableComfortNoise(AGC_HANDLE handle, int enable, int dB);

/* Analyses one block of frame_length samples of one channel and returns the
   gain to apply, in half dB; the samples are not changed. */
ZEB_API float AGC_Process(AGCinst_t* inst, short int* inOutFrame);

ZEB_EXTERN_C_END

#endif /* ZEBAUDIO_ZEB_AGC_H */
