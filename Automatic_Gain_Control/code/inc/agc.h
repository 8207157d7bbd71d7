// Time-domain AGC core of one channel, and the records through which the
// gain-control cores see the user's AGC settings. Gains of this core are
// counted in half dB; levels, targets and curves in dB.
#ifndef ZEB_AGC_AGC_H
#define ZEB_AGC_AGC_H

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

#ifdef __cplusplus
}
#endif

#endif
