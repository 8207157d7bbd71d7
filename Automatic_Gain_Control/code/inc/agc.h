// Time-domain AGC core of one channel, and the records through which the
// gain-control cores see the user's AGC settings. Gains of this core are
// counted in half dB; levels, targets and curves in dB.
#ifndef ZEB_AGC_AGC_H
#define ZEB_AGC_AGC_H

#include "algo_stage_ret.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_agc.h"  // AGC_Process is exported under its own name

#ifdef __cplusplus
extern "C" {
#endif

#define AGC_USER_CURVE_POINTS 7   // curve points of the configuration record
#define AGC_CURVE_POINTS_MAX 20   // curve points the core can hold
#define AGC_DATA_BUF_SAMPLES 1024
#define AGC_VOL_TABLE_ENTRIES 81  // 0 dB down to -80 dB

// The public AgcGainInfo, AudioAgcInit and AudioAgcConfig as the cores see
// them, field for field with plain ints for the enumerations.
typedef struct {
  int gain_max;
  int gain_min;
  int gain_init;
} _AgcGainInfo;

typedef struct {
  unsigned int point_number;
  unsigned int channel;
  int sample_rate;
} _AudioAgcInit;

typedef struct {
  unsigned int agc_enable;
  unsigned int user_mode;
  _AgcGainInfo gain_info;
  unsigned int drop_gain_max;
  unsigned int attack_time;
  unsigned int release_time;
  short compression_ratio_input[AGC_USER_CURVE_POINTS];
  short compression_ratio_output[AGC_USER_CURVE_POINTS];
  int drop_gain_threshold;
  int noise_gate_db;
  unsigned int noise_gate_attenuation_db;
  unsigned int gain_step;
} _AudioAgcConfig;

// One row of the level table: a whole dB value and its sample amplitude.
typedef struct {
  int db;
  short val;
} VolTable_t;

extern const VolTable_t VolTable[AGC_VOL_TABLE_ENTRIES];

typedef struct AGCinst_t_ {
  // Level and noise gate.
  int check_number;
  int isUnderNoiseGate;
  float Target_dB_now;
  int noise_gate_db;
  float noise_thr;
  int satu_flag;

  // Gain; vol_* and DGain in half dB. This library has no analog stage, so
  // the analog_gain_* fields stay 0.
  int analog_gain_max;
  int analog_gain_min;
  int analog_gain_init;
  int analog_gain_old;
  int vol_max;
  int vol_min;
  int vol_now;
  int vol_init;
  int vol_old;
  float analog_gain_now;
  float DGain;
  float DGain_pre;
  int gSetUpGainThr;
  int gSetDownGainThr;
  int stuck_thr;
  int isTrueData;
  int keep_gain;
  int dgain_enable;
  float drop_gain_max;
  float gain_step;
  float compression_ratio_input[AGC_CURVE_POINTS_MAX];
  float compression_ratio_output[AGC_CURVE_POINTS_MAX];
  float noise_gate_attenuation_db;  // a percentage, 0..100
  float target_level_db;
  unsigned short noise_gate_counter;
  float original_data_rms_avg;
  float original_data_dB;
  float sat_threshold;
  int time_factor;
  int gInputAbsMax;
  int AGC_SetUpGain_counter;
  int AGC_SetDownGain_counter;
  int gInputPeakBuf;
  int frame_length;
  int buffer_size;
  const float* FftInWindow_agc;
  const float* FftOutWindow_agc;
  short data_buf[AGC_DATA_BUF_SAMPLES];
  short TmpData[AGC_DATA_BUF_SAMPLES];
  int dbg_level;

  // Kept in the record for its layout; no algorithm reads these. Init sets
  // DgainStepSize to 0.5 and AGC_SAT_THRESHOLD to 24357.
  float P_avg;
  int N_VAD;
  int hold_time_count;
  int nr_enable;
  float P_recent;
  float P_forget;
  float Target_dB_for_Low_PAPR;
  float Target_dB_for_High_PAPR;
  float Target_Val_now;
  int VAD;
  short* pssAudioIn_ch1;
  short* pssAudioIn_ch2;
  int noise_frame_cnt;
  int agc_start;
  int noise_gate_enable;
  float DgainStepSize;
  int channel;
  int attack_time;
  int release_time;
  int point_number;
  int maximum_gain;
  int music_mode;
  int AGC_SAT_THRESHOLD;
  int AGC_TARGET_PEAK_VALUE;
  int g_is_agc_init;
} AGCinst_t;

// ---- Instance lifecycle and configuration ----
// -1 for a NULL instance, else 0. Leaves the window pointers alone.
int AGC_Init(AGCinst_t* inst, int frame_size);
void AGC_InitCore(AGCinst_t* inst, int frame_size);
// Validates the whole record first, so a failing call changes nothing.
// user_mode 0 loads the built-in defaults instead of the record's values.
_ALGO_AGC_RET AGC_Config(AGCinst_t* inst, _AudioAgcConfig* agc_config);
_ALGO_AGC_RET AGC_CheckUserConfig(_AudioAgcConfig* agc_config, int dbg_level);
// 0, or -1 when a point leaves -120..0 dB or falls below its predecessor.
int AGC_CompressionRatioCurveSettingCheck(short* compression_ratio_input, short* compression_ratio_output,
                                          int len, int dbg_level);
// Core frame for a rate (32, 64 or 128 samples: about 4 ms), or -1.
int AGC_GetFrameSizeBySamplingRate(int sampling_rate, int input_size, int dbg_level);
// Points FftInWindow_agc and FftOutWindow_agc at the half-sine table of
// frame_size + 1 entries; 0, or -1 for a size without a table.
int AGC_SetWindowByFrameSize(AGCinst_t* inst, int frame_size);

// ---- Setters; a NULL instance is ignored by AGC_SetCompressionRatioValue ----
void AGC_SetSaturatedThresholdIndB(AGCinst_t* inst, int value);
void AGC_SetTargetPowerIndB(AGCinst_t* inst, float value);
void AGC_SetGainInfo(AGCinst_t* inst, _AgcGainInfo gain_info);
void AGC_SetCompressionRatioValue(AGCinst_t* inst, short* in, short* out, int len);
void AGC_SetNoiseGateAttenuation(AGCinst_t* inst, int per);
void AGC_SetNoiseGateIndB(AGCinst_t* inst, int dB);
void AGC_SetDownGainTime(AGCinst_t* inst, int value);
void AGC_SetUpGainTime(AGCinst_t* inst, int value);
void AGC_SetDropGainMax(AGCinst_t* inst, int value);
void AGC_SetGainStep(AGCinst_t* inst, int value);

// ---- Per core frame (AGC_Process is declared in zeb_agc.h) ----
// Error in half dB between the gain that puts this frame on the curve and
// the gain in force; 0 under the gate.
float AGC_MainProcess(AGCinst_t* inst, short int* AudioIn);
void AGC_CalculateNewGain(AGCinst_t* inst, float gain);
void AGC_ReduceGain(AGCinst_t* inst);
void AGC_SetGain(AGCinst_t* inst, float value);
void AGC_DGainAmp(AGCinst_t* inst, short int* data);
int AGC_SaturationDetect(AGCinst_t* inst, short int* TmpData, short int* inOutFrame);
int AGC_SetTargetLevelByCompressionRation(AGCinst_t* inst);
float GetValueFromdB(float dB);
float GetdbFromValue(int value);

// ---- Over a whole frame ----
// Runs the core over channel ch of an interleaved frame, one core frame of
// frame_length new samples at a time: the samples slide into history, the
// core measures them, and the windowed buffer_size block, scaled by the
// core's gain once startFlag is set, is overlap-added back into the frame
// with tail, which then keeps the block's second half.
void AGC_ProcessFrameBlocks(AGCinst_t* inst, postInfo_t* post, short* history, float* buf, float* tail,
                            short* frame, unsigned int channels, int ch, int startFlag);

// ---- Records of the public API as the cores see them ----
void AGC_CopyInitRecord(_AudioAgcInit* dst, const AudioAgcInit* src);
void AGC_CopyUserConfig(_AudioAgcConfig* dst, const AudioAgcConfig* src);
void AGC_CopyUserConfigOut(AudioAgcConfig* dst, const _AudioAgcConfig* src);

// ---- Band filters: two biquad sections with process-wide state; no
// processing path uses them ----
#define AGC_FILTER_BANDS 4
#define AGC_FILTER_SECTIONS 2
#define AGC_FILTER_TAPS 3
extern const float filter_coef_A[AGC_FILTER_BANDS][AGC_FILTER_SECTIONS][AGC_FILTER_TAPS];
extern const float filter_coef_B[AGC_FILTER_BANDS][AGC_FILTER_SECTIONS][AGC_FILTER_TAPS];
extern const float filter_gain[AGC_FILTER_BANDS][AGC_FILTER_TAPS];
// band 1..4; any other value leaves the selection as it is.
void set_filterCoef(int band);
float IIR_filter(float x, int i);
float filter_loop(float in);
void Filter_Coeff_Reset(float x, float y);

#ifdef __cplusplus
}

#include "enum_field.h"
#endif

#endif
