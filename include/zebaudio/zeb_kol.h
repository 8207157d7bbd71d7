/*
 * The processing chain: the ZebKol_* family. One handle runs noise
 * reduction, equaliser and high-pass filter, and gain control over each
 * frame, channel after channel.
 *
 * Frame: 128 samples per channel (point_number), 16-bit, mono or
 * interleaved stereo, at 8, 16, 32 or 48 kHz, processed in place. The
 * frequency stage (256-point transform, 50 % overlap) delays the output by
 * one frame; filter mode 5 with reduce-latency adds the neural re-blocking
 * delay instead.
 *
 * Order of calls: ZebKol_GetBufferSize with the stage switches, allocate
 * the working buffer, ZebKol_Init, ZebKol_Config; per frame optionally
 * ZebKol_NrEstimateReferAec, then ZebKol_Run, then optionally one of
 * ZebKol_GetNrResult / ZebKol_GetNrEqResult / ZebKol_GetVadOut; at the end
 * ZebKol_Free. Config and the curve setters may be repeated between frames.
 * ZebKol_Reset is ZebKol_Init; Config is due again after it.
 *
 * Files: ZebKol_Init reads the message-level file; ZebKol_NrReadJson and
 * ZebKol_GetJsonFileSize read the tuning file; Run and FilterApply may
 * write raw dumps when AUDIO_KOL_DUMP asks for them. Run allocates nothing
 * and takes no lock. One caller per handle.
 */
#ifndef ZEBAUDIO_ZEB_KOL_H
#define ZEBAUDIO_ZEB_KOL_H

#include "zebaudio/zeb_types.h"
#include "zebaudio/zeb_anr.h"
#include "zebaudio/zeb_eq.h"
#include "zebaudio/zeb_agc.h"

ZEB_EXTERN_C_BEGIN

/* Result of the ZebKol_* calls; 0 is success. The numbering keeps a
   decimal habit: 0x10000509 is followed by 0x10000510. */
typedef enum {
  ALGO_KOL_RET_SUCCESS = 0,
  ALGO_KOL_RET_INIT_ERROR = 0x10000501,
  ALGO_KOL_RET_INVALID_HANDLE = 0x10000502,
  ALGO_KOL_RET_INVALID_SAMPLE_RATE = 0x10000503,
  ALGO_KOL_RET_INVALID_POINT_NUMBER = 0x10000504,
  ALGO_KOL_RET_INVALID_CHANNEL = 0x10000505,
  ALGO_KOL_ANR_RET_INVALID_ENABLE = 0x10000506,
  ALGO_KOL_ANR_RET_INVALID_MODE = 0x10000507,
  ALGO_KOL_ANR_RET_INVALID_INTENSITY = 0x10000508,
  ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL = 0x10000509,
  ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED = 0x10000510,
  ALGO_KOL_ANR_RET_INVALID_FILTER_MODE = 0x10000511,
  ALGO_KOL_EQ_RET_INVALID_ENABLE = 0x10000512,
  ALGO_KOL_EQ_RET_INVALID_MODE = 0x10000513,
  ALGO_KOL_EQ_RET_INVALID_TABLE = 0x10000514,
  ALGO_KOL_HPF_RET_INVALID_ENABLE = 0x10000515,
  ALGO_KOL_HPF_RET_INVALID_MODE = 0x10000516,
  ALGO_KOL_HPF_RET_INVALID_TABLE = 0x10000517,
  ALGO_KOL_AGC_RET_INVALID_ENABLE = 0x10000518,
  ALGO_KOL_AGC_RET_INVALID_MODE = 0x10000519,
  ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO = 0x10000520,
  ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND = 0x10000521,
  ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX = 0x10000522,
  ALGO_KOL_AGC_RET_INVALID_GAIN_STEP = 0x10000523,
  ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME = 0x10000524,
  ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME = 0x10000525,
  ALGO_KOL_AGC_RET_INVALID_NOISE_GATE = 0x10000526,
  ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU = 0x10000527,
  ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL = 0x10000528,
  ALGO_KOL_AGC_RET_INVALID_GAIN_INFO = 0x10000529,
  ALGO_KOL_RET_API_CONFLICT = 0x10000530,
  ALGO_KOL_RET_INVALID_CALLING = 0x10000531,
  ALGO_KOL_RET_FAILED = 0x10000532
} ALGO_KOL_RET;

/* Sample rates in Hz; the value is the rate itself. */
typedef enum {
  ZEB_KOL_SAMPLE_RATE_8000 = 8000,
  ZEB_KOL_SAMPLE_RATE_16000 = 16000,
  ZEB_KOL_SAMPLE_RATE_32000 = 32000,
  ZEB_KOL_SAMPLE_RATE_48000 = 48000
} ZEB_KOL_SAMPLE_RATE;

/* Stream parameters given to ZebKol_Init. */
typedef struct {
  unsigned int point_number;       /* samples per channel per frame; 128 */
  unsigned int channel;            /* 1 or 2; stereo is interleaved */
  ZEB_KOL_SAMPLE_RATE sample_rate; /* Hz */
} AudioProcessInit;

/* Which stages get memory in the working buffer; non-zero means yes. */
typedef struct {
  unsigned int anr_enable; /* noise reduction and its rate converters */
  unsigned int eq_enable;  /* equaliser and high-pass filter together */
  unsigned int dr_enable;  /* stored only */
  unsigned int vad_enable; /* stored only */
  unsigned int agc_enable; /* time- and frequency-domain gain control */
} AudioKolBufferConfig;

/* Argument of ZebKol_ApplyComfortNoise, passed by value. */
typedef struct {
  int energy_dbfs;    /* target level of the noise, dBFS */
  short point_number; /* samples per channel, at most 1024 */
  int channel_num;    /* 1 or 2 */
} CngStruct;

/* Accepted by ZebKol_Config and ignored. */
typedef struct {
  unsigned int vad_enable;
  unsigned int user_mode;
  int vad_threshold;
} AudioVadConfig;

/* Accepted by ZebKol_Config and ignored. */
typedef struct {
  unsigned int dereverb_enable;
} AudioDereverbConfig;

/* Lifecycle. The buffer size depends only on the switches. */
ZEB_API unsigned int ZebKol_GetBufferSize(AudioKolBufferConfig* kol_switch);
/* Clears and carves the buffer; returns the handle or NULL. */
ZEB_API KOL_HANDLE ZebKol_Init(const char* working_buffer_address,
                               AudioProcessInit* audio_process_init,
                               AudioKolBufferConfig* kol_switch);
/* The same as ZebKol_Init: all state and settings are lost. */
ZEB_API KOL_HANDLE ZebKol_Reset(char* working_buffer_address,
                                AudioProcessInit* audio_process_init,
                                AudioKolBufferConfig* kol_switch);
ZEB_API ALGO_KOL_RET ZebKol_Free(KOL_HANDLE handle);

/* Configuration. A NULL record leaves that stage as it is. */
ZEB_API ALGO_KOL_RET ZebKol_Config(KOL_HANDLE handle, AudioAnrConfig* anr_config,
                                   AudioEqConfig* eq_config, AudioHpfConfig* hpf_config,
                                   AudioVadConfig* vad_config,
                                   AudioDereverbConfig* dereverb_config,
                                   AudioAgcConfig* agc_config);
/* audio_process_init must not be NULL; vad_config and dereverb_config are
   not written. */
ZEB_API ALGO_KOL_RET ZebKol_GetConfig(KOL_HANDLE handle, AudioProcessInit* audio_process_init,
                                      AudioAnrConfig* anr_config, AudioEqConfig* eq_config,
                                      AudioHpfConfig* hpf_config, AudioVadConfig* vad_config,
                                      AudioDereverbConfig* dereverb_config,
                                      AudioAgcConfig* agc_config);

/* One frame in place: point_number * channel interleaved samples. */
ZEB_API ALGO_KOL_RET ZebKol_Run(KOL_HANDLE handle, short* pss_audio_in);

/* Taps. The two result taps belong after a Run and at most once after it;
   each writes point_number * channel interleaved samples. */
ZEB_API ALGO_KOL_RET ZebKol_GetNrResult(KOL_HANDLE handle, short* nr_audio_out);
ZEB_API ALGO_KOL_RET ZebKol_GetNrEqResult(KOL_HANDLE handle, short* nr_eq_audio_out);
/* One speech probability per channel. */
ZEB_API ALGO_KOL_RET ZebKol_GetVadOut(KOL_HANDLE handle, int* speech_probability);
/* Reference frame from an echo canceller, before the Run of the same frame;
   filter modes 0..4 only. */
ZEB_API ALGO_KOL_RET ZebKol_NrEstimateReferAec(KOL_HANDLE handle, short* aec_in);

/* Frequency-domain AGC: three band edges in Hz and the per-band curves of
   seven input and seven output levels in dB. */
ZEB_API ALGO_KOL_RET ZebKol_SetAgcFreqBand(KOL_HANDLE handle, int* frequency_band);
ZEB_API ALGO_KOL_RET ZebKol_SetLowFreqCompressionRatioCurve(KOL_HANDLE handle,
                                                            int* CompressRatioInput,
                                                            int* CompressRatioOutput);
ZEB_API ALGO_KOL_RET ZebKol_SetMidFreqCompressionRatioCurve(KOL_HANDLE handle,
                                                            int* CompressRatioInput,
                                                            int* CompressRatioOutput);
ZEB_API ALGO_KOL_RET ZebKol_SetHighFreqCompressionRatioCurve(KOL_HANDLE handle,
                                                             int* CompressRatioInput,
                                                             int* CompressRatioOutput);
/* Time-domain AGC: a curve of curve_len points (at most 20), dB. */
ZEB_API ALGO_KOL_RET ZebKol_SetCompressionRatioCurve(KOL_HANDLE handle,
                                                     short* CompressRatioInput,
                                                     short* CompressRatioOutput,
                                                     int curve_len);

/* Digital gain in dB on a caller's frame, in place, outside Run. */
ZEB_API ALGO_KOL_RET ZebKol_ApplyDigitalGain(KOL_HANDLE handle, short* pss_audio_in,
                                             float gain_value);
/* Accepted for compatibility; this library has no beam-forming mode. */
ZEB_API ALGO_KOL_RET ZebKol_EnhanceNNBFMode(KOL_HANDLE handle, KOL_BF_HANDLE handle2,
                                            int is_enable);

/* User-designed biquads (slot filter_cnt - 1, filter_cnt counts 1..10). */
ZEB_API ALGO_KOL_RET ZebKol_FilterDesign(KOL_HANDLE handle, int filter_cnt,
                                         AudioFilterConfig* filter_config);
/* The designed sections over one frame, in place, outside Run. */
ZEB_API ALGO_KOL_RET ZebKol_FilterApply(KOL_HANDLE handle, short* pss_audio_in);
/* Summed magnitude response in dB at 512 points, k * fs / 1024. */
ZEB_API ALGO_KOL_RET ZebKol_FilterFreqz(KOL_HANDLE handle, float* frequency_response);
/* Initial noise filter: gain in (0, 1] enables it, 0 disables it. */
ZEB_API ALGO_KOL_RET ZebKol_InitialFilterEnable(KOL_HANDLE handle, float gain);

/* Number (0..100) used in the dump file names. */
ZEB_API ALGO_KOL_RET ZebKol_SetHandleId(KOL_HANDLE handle, int id);
/* Needs no handle: major 2, minor 3. */
ZEB_API ALGO_KOL_RET ZebKol_GetAPIVersion(unsigned short* major, unsigned short* minor);
/* Reads the tuning file into jsonBuffer (buffSize bytes) and applies it. */
ZEB_API ALGO_KOL_RET ZebKol_NrReadJson(KOL_HANDLE handle, char* jsonBuffer, char* jsonfile,
                                       unsigned int buffSize);
/* Size in bytes of a JSON tuning file; 0 when it cannot be opened. */
ZEB_API unsigned int ZebKol_GetJsonFileSize(char* jsonfile);
/* Automatic smoothing switch of the noise reduction; acts in mode 0. */
ZEB_API ALGO_KOL_RET ZebKol_EnableAutoSmooth(KOL_HANDLE handle, int enable);

/* Comfort noise on/off with its floor level in dB; may precede Config. */
ZEB_API ALGO_KOL_RET ZebKol_EnableComfortNoise(KOL_HANDLE handle, int enable, int dB);
/* Stateless: adds white noise of cng_para.energy_dbfs to a frame; the
   additions wrap at 16 bits. Always succeeds. */
ZEB_API ALGO_KOL_RET ZebKol_ApplyComfortNoise(CngStruct cng_para, short* pss_audio_in);

ZEB_EXTERN_C_END

#endif /* ZEBAUDIO_ZEB_KOL_H */
