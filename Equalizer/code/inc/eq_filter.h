// Equaliser gain engine of one channel: per-bin EQ and high-pass scale
// factors, and the state of the user-designed biquads. Also the records
// through which the engine sees the user's EQ and HPF settings.
#ifndef ZEB_EQ_FILTER_H
#define ZEB_EQ_FILTER_H

#ifdef __cplusplus
extern "C" {
#endif

#define EQ_BINS 129            // bins of the 256-point spectrum
#define EQ_MAX_BIQUADS 10
#define EQ_BIQUAD_STATE_WORDS 20  // two delays per section

// High-pass cut-offs, with the values of the public ZEB_HPF_FREQ.
typedef enum {
  _AUDIO_HPF_FREQ_80 = 0,
  _AUDIO_HPF_FREQ_120 = 1,
  _AUDIO_HPF_FREQ_150 = 2,
  _AUDIO_HPF_FREQ_500 = 3,
  _AUDIO_HPF_FREQ_BUTT = 4
} _ZEB_HPF_FREQ;

// The public AudioEqInit, AudioEqConfig and AudioHpfConfig as the engine
// sees them, field for field with plain ints for the enumerations.
typedef struct {
  unsigned int point_number;
  unsigned int channel;
  int sample_rate;
} _AudioEqInit;

typedef struct {
  unsigned int eq_enable;
  unsigned int user_mode;
  short eq_gain_db[EQ_BINS];
} _AudioEqConfig;

typedef struct {
  unsigned int hpf_enable;
  unsigned int user_mode;
  _ZEB_HPF_FREQ cutoff_frequency;
} _AudioHpfConfig;

typedef struct EQinst_t_ {
  char isApplyDgainInWindow;             // not used; stays 0
  float EQ_AddiScalingFactor[EQ_BINS];   // Q8 gain per bin, 256.0 = unity
  short eq_dB[EQ_BINS];                  // not written; stays 0
  short EQ_weight[EQ_BINS];              // Q8 gain per bin as integers
  float HPF_AddiScalingFactor[EQ_BINS];  // Q8 high-pass gain per bin
  int sample_rate;
  int filter_num;
  int filter_flag[EQ_MAX_BIQUADS];
  float nor_b0[EQ_MAX_BIQUADS];
  float nor_b1[EQ_MAX_BIQUADS];
  float nor_b2[EQ_MAX_BIQUADS];
  float a0[EQ_MAX_BIQUADS];
  float nor_a1[EQ_MAX_BIQUADS];
  float nor_a2[EQ_MAX_BIQUADS];
  unsigned short iir_type[EQ_MAX_BIQUADS];
  float x_states[EQ_BIQUAD_STATE_WORDS];
  float y_states[EQ_BIQUAD_STATE_WORDS];
  int dbg_level;
} EQinst_t;

#ifdef __cplusplus
}
#endif

#endif
