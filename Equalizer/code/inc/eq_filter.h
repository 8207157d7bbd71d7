// Equaliser gain engine of one channel: per-bin EQ and high-pass scale
// factors, and the state of the user-designed biquads. Also the records
// through which the engine sees the user's EQ and HPF settings.
#ifndef ZEB_EQ_FILTER_H
#define ZEB_EQ_FILTER_H

#include "algo_stage_ret.h"

#ifdef __cplusplus
extern "C" {
#endif

// The stage enumerations hold any int a caller may leave in the public
// field they mirror; with int as their base every such value stays a value
// of the type, and the stage that owns it judges it.
#ifdef __cplusplus
#define EQ_INT_ENUM_BASE : int
#else
#define EQ_INT_ENUM_BASE
#endif

#define EQ_BINS 129            // bins of the 256-point spectrum
#define EQ_MAX_BIQUADS 10
#define EQ_BIQUAD_STATE_WORDS 20  // two delays per section

// High-pass cut-offs, with the values of the public ZEB_HPF_FREQ.
typedef enum EQ_INT_ENUM_BASE {
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

#define EQ_UNITY_Q8 256.0f               // Q8 scale factor of 0 dB
#define EQ_GAIN_MAX_DB 20
#define EQ_GAIN_MIN_DB (-100)
#define HPF_FIR_HISTORY_SAMPLES 385      // history of the time-domain high-pass
#define HPF_FIR_FRAME_SAMPLES 128        // samples filtered per call

// Float to int32 as the target's conversion does it: toward zero,
// saturating at the int32 limits, NaN to 0.
static inline int EQ_TruncToInt32Saturated(float v) {
  if (v != v) return 0;
  if (v >= 2147483648.0f) return 2147483647;
  if (v <= -2147483648.0f) return -2147483647 - 1;
  return (int)v;
}

// The low 16 bits of a truncated float: values outside 16 bits wrap.
static inline short EQ_WrapToInt16(float v) {
  return (short)(unsigned short)((unsigned int)EQ_TruncToInt32Saturated(v) & 0xFFFFu);
}

// Clears the biquad slots, sets every EQ factor to unity and stores the
// rate. -1 for a NULL inst, else 0.
int EQ_Init(EQinst_t* inst, int sample_rate);
// Range test of the user's EQ record; a NULL record passes.
_ALGO_EQ_RET EQ_CheckUserConfig(_AudioEqConfig* eq_config, int dbg_level);
// dB per bin to Q8 factors (6.02 dB per doubling, truncated to whole Q8
// steps); bin 128 takes the factor of bin 127.
_ALGO_EQ_RET EQ_Config(EQinst_t* inst, _AudioEqConfig* eq_config);
// Loads the high-pass table of the instance's rate and the cutoff.
_ALGO_EQ_RET HPF_Config(EQinst_t* inst, _ZEB_HPF_FREQ hpf_freq);
// Scales the 129 bins of a spectrum (re, im pairs) by Gain_in / 256.
void EQ_ApplyGain(float* Gain_in, float* Y_in);
// The frequency-domain high-pass; the 500 Hz cutoff adds a per-frame guard
// that decides from the spectrum how hard to cut.
void HPF_ApplyGain(float* Gain_in, float* Y_in, _ZEB_HPF_FREQ hpf_freq);
// The time-domain high-pass on HPF_FIR_FRAME_SAMPLES samples in place;
// HPF_filter_buffer is the caller's history of HPF_FIR_HISTORY_SAMPLES
// shorts. Only the 80 Hz and 500 Hz settings exist here: -1 otherwise.
int HPF_FiniteImpulseResponseFilter(short int* HPF_filter_buffer, short int* Y_in,
                                    _ZEB_HPF_FREQ hpf_freq, int dbg_level);

#ifdef __cplusplus
}

#include "enum_field.h"
#endif

#endif
