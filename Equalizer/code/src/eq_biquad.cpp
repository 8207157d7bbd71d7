// Biquad design of the equaliser: cookbook sections from a type, frequency,
// Q and gain, their time-domain cascade and their magnitude response.
#include "eq_biquad.h"

#include <math.h>
#include <stddef.h>
#include <string.h>

#include "debug_msglevel.h"
#include "zebaudio/zeb_eq.h"

static_assert(sizeof(_AudioFilterConfig) == sizeof(AudioFilterConfig) &&
                  offsetof(_AudioFilterConfig, f0) == offsetof(AudioFilterConfig, f0) &&
                  offsetof(_AudioFilterConfig, Q_factor) == offsetof(AudioFilterConfig, q_factor) &&
                  offsetof(_AudioFilterConfig, gain) == offsetof(AudioFilterConfig, gain),
              "_AudioFilterConfig must match AudioFilterConfig");
static_assert((int)_EQ_LOW_PASS_FILTER == (int)EQ_LOW_PASS_FILTER,
              "_EQ_FILTER_TYPE must match EQ_FILTER_TYPE");

namespace {

constexpr double kTwoPi = 6.2831852;          // the 8-digit constant of the design
constexpr double kPiForFreqz = 3.1415926;
constexpr double kIdentityTolerance = 1e-15;  // on the raw coefficients

// Raw (not yet normalised) coefficients of one section, in float.
struct Section {
  float b0, b1, b2, a0, a1, a2;
};

// The shared design quantities, with the roundings of the design law.
struct DesignTerms {
  float A;      // 10^(gain/40)
  float alpha;  // sin(w0) / (2 Q)
  double c;     // cos(w0)
  double s2;    // 2 sqrt(A) alpha
};

DesignTerms ComputeTerms(const EQinst_t* inst, const _AudioFilterConfig* cfg) {
  const float g = (float)cfg->gain;
  const float f = (float)cfg->f0;
  const float Q = (float)cfg->Q_factor;
  const float fs = (float)inst->sample_rate;
  DesignTerms t;
  t.A = (float)sqrt(pow(10.0, (double)(g / 20)));
  const float w0 = (float)((double)f * kTwoPi / (double)fs);
  t.alpha = (float)(sin((double)w0) / (double)(Q + Q));
  t.c = cos((double)w0);
  t.s2 = 2.0 * sqrt((double)t.A) * (double)t.alpha;
  return t;
}

Section Make(double b0, double b1, double b2, double a0, double a1, double a2) {
  return Section{(float)b0, (float)b1, (float)b2, (float)a0, (float)a1, (float)a2};
}

Section Peaking(const DesignTerms& t) {
  const double A = t.A, alpha = t.alpha, c = t.c;
  return Make(1.0 + alpha * A, -2.0 * c, 1.0 - alpha * A, 1.0 + alpha / A, -2.0 * c,
              1.0 - alpha / A);
}

Section HighPassOrShelf(const DesignTerms& t, int gainDb) {
  const double A = t.A, alpha = t.alpha, c = t.c, s2 = t.s2;
  if (gainDb == 0) {
    return Make((1.0 + c) / 2.0, -1.0 - c, (1.0 + c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha);
  }
  return Make(A * ((A + 1.0) + (A - 1.0) * c + s2), -2.0 * A * ((A - 1.0) + (A + 1.0) * c),
              A * ((A + 1.0) + (A - 1.0) * c - s2), (A + 1.0) - (A - 1.0) * c + s2,
              2.0 * ((A - 1.0) - (A + 1.0) * c), (A + 1.0) - (A - 1.0) * c - s2);
}

Section LowPassOrShelf(const DesignTerms& t, int gainDb) {
  const double A = t.A, alpha = t.alpha, c = t.c, s2 = t.s2;
  if (gainDb == 0) {
    return Make((1.0 - c) / 2.0, 1.0 - c, (1.0 - c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha);
  }
  return Make(A * ((A + 1.0) - (A - 1.0) * c + s2), 2.0 * A * ((A - 1.0) - (A + 1.0) * c),
              A * ((A + 1.0) - (A - 1.0) * c - s2), (A + 1.0) + (A - 1.0) * c + s2,
              -2.0 * ((A - 1.0) + (A + 1.0) * c), (A + 1.0) + (A - 1.0) * c - s2);
}

bool IsIdentity(const Section& s) {
  return fabs((double)s.b1 - (double)s.a1) < kIdentityTolerance &&
         fabs((double)s.b2 - (double)s.a2) < kIdentityTolerance &&
         fabs((double)s.b0 - (double)s.a0) < kIdentityTolerance;
}

void StoreSection(EQinst_t* inst, int slot, const Section& s) {
  inst->a0[slot] = s.a0;
  if (s.a0 == 0.0f) {
    // Only the all-zero section of an unknown type gets here: it stays all
    // zero rather than dividing by zero.
    inst->nor_b0[slot] = inst->nor_b1[slot] = inst->nor_b2[slot] = 0.0f;
    inst->nor_a1[slot] = inst->nor_a2[slot] = 0.0f;
    return;
  }
  inst->nor_b0[slot] = s.b0 / s.a0;
  inst->nor_b1[slot] = s.b1 / s.a0;
  inst->nor_b2[slot] = s.b2 / s.a0;
  inst->nor_a1[slot] = s.a1 / s.a0;
  inst->nor_a2[slot] = s.a2 / s.a0;
}

void RunDirectFormI(EQinst_t* inst, int s, short* Y_in) {
  const float b0 = inst->nor_b0[s], b1 = inst->nor_b1[s], b2 = inst->nor_b2[s];
  const float a1 = inst->nor_a1[s], a2 = inst->nor_a2[s];
  float x1 = inst->x_states[2 * s], x2 = inst->x_states[2 * s + 1];
  float y1 = inst->y_states[2 * s], y2 = inst->y_states[2 * s + 1];
  for (int n = 0; n < EQ_IIR_FRAME_SAMPLES; ++n) {
    const float x = (float)Y_in[n];
    const float y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    const short yn = EQ_WrapToInt16(y);
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = (float)yn;  // the feedback runs on the truncated output
    Y_in[n] = yn;
  }
  inst->x_states[2 * s] = x1;
  inst->x_states[2 * s + 1] = x2;
  inst->y_states[2 * s] = y1;
  inst->y_states[2 * s + 1] = y2;
}

void RunDirectFormII(EQinst_t* inst, int s, short* Y_in) {
  const float b0 = inst->nor_b0[s], b1 = inst->nor_b1[s], b2 = inst->nor_b2[s];
  const float a1 = inst->nor_a1[s], a2 = inst->nor_a2[s];
  float w1 = inst->x_states[2 * s], w2 = inst->x_states[2 * s + 1];
  for (int n = 0; n < EQ_IIR_FRAME_SAMPLES; ++n) {
    const float w = (float)Y_in[n] - a1 * w1 - a2 * w2;
    const short yn = EQ_WrapToInt16(b0 * w + b1 * w1 + b2 * w2);
    w2 = w1;
    w1 = w;
    Y_in[n] = yn;
  }
  inst->x_states[2 * s] = w1;
  inst->x_states[2 * s + 1] = w2;
}

_AudioFilterConfig ToStageFilterConfig(const AudioFilterConfig* cfg) {
  _AudioFilterConfig out;
  out.type = (_EQ_FILTER_TYPE)EnumFieldValue(cfg->type);
  out.f0 = cfg->f0;
  out.Q_factor = cfg->q_factor;
  out.gain = cfg->gain;
  return out;
}

}  // namespace

extern "C" {

int FilterDesignConfigCheck(EQinst_t* inst, _AudioFilterConfig* filter_config) {
  const int lv = inst->dbg_level;
  const int nyquistHz = inst->sample_rate / 2;
  if (filter_config->f0 > nyquistHz) {
    ALGO_ERR(lv, "[%s]Fail! Filter frequency %d exceed Nyquist frequency %d.\t\n", __func__,
             filter_config->f0, nyquistHz);
    return -1;
  }
  if (filter_config->f0 < 0) {
    ALGO_ERR(lv, "[%s]Fail! Filter frequency cannot be negative %d\t\n", __func__, filter_config->f0);
    return -1;
  }
  if (filter_config->Q_factor <= 0) {
    ALGO_ERR(lv, "[%s]Fail! Q factor can only be positive %d\t\n", __func__, filter_config->Q_factor);
    return -1;
  }
  const int type = (int)filter_config->type;
  if (type != _EQ_NOTCH_FILTER && type != _EQ_HIGH_PASS_FILTER && type != _EQ_LOW_PASS_FILTER) {
    ALGO_ERR(lv,
             "[%s]Fail! Filter can only be EQ_NOTCH_FILTER, EQ_HIGH_PASS_FILTER, EQ_LOW_PASS_FILTER %d\t\n",
             __func__, type);
    return -1;
  }
  return 0;
}

int FilterGeneratr(EQinst_t* inst, int filter_cnt, _AudioFilterConfig* filter_config) {
  const int lv = inst->dbg_level;
  if (filter_cnt < 1 || filter_cnt > EQ_MAX_BIQUADS) {
    ALGO_ERR(lv, "[%s]Fail! Filter index %d out of range [1, %d].\t\n", __func__, filter_cnt,
             EQ_MAX_BIQUADS);
    return -1;
  }
  const DesignTerms t = ComputeTerms(inst, filter_config);
  Section sec;
  switch ((int)filter_config->type) {
    case _EQ_NOTCH_FILTER: sec = Peaking(t); break;
    case _EQ_HIGH_PASS_FILTER: sec = HighPassOrShelf(t, filter_config->gain); break;
    case _EQ_LOW_PASS_FILTER: sec = LowPassOrShelf(t, filter_config->gain); break;
    default:
      ALGO_ERR(lv, "[%s]Fail! Filter type set error.\t\n", __func__);
      sec = Section{0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
      break;
  }
  const int slot = filter_cnt - 1;
  StoreSection(inst, slot, sec);
  inst->filter_flag[slot] = 1;
  int count = 0;
  for (int s = 0; s < EQ_MAX_BIQUADS; ++s) count += inst->filter_flag[s];
  inst->filter_num = count;
  // Nothing sets the structure back: a slot once found to be the identity
  // keeps direct form I through later redesigns. The delays are kept too.
  if (IsIdentity(sec)) inst->iir_type[slot] = EQ_IIR_DIRECT_FORM_I;
  ALGO_MSG(lv, "[FilterDesign] Filter %d set successfully.\t\n", filter_cnt);
  return 0;
}

int InfiniteImpulseResponseFilter(EQinst_t* inst, short int* Y_in) {
  for (int s = 0; s < EQ_MAX_BIQUADS; ++s) {
    if (inst->filter_flag[s] != 1) continue;
    if (inst->iir_type[s] == EQ_IIR_DIRECT_FORM_I) {
      RunDirectFormI(inst, s, Y_in);
    } else if (inst->iir_type[s] == EQ_IIR_DIRECT_FORM_II) {
      RunDirectFormII(inst, s, Y_in);
    } else {
      return -1;
    }
  }
  return 0;
}

int SOS_freqz(EQinst_t* inst, int filter_cnt, float* Frequency_response) {
  const int s = filter_cnt;
  if (s < 0 || s >= EQ_MAX_BIQUADS) return -1;
  const double B0 = inst->nor_b0[s] * inst->a0[s];
  const double B1 = inst->nor_b1[s] * inst->a0[s];
  const double B2 = inst->nor_b2[s] * inst->a0[s];
  const double A1 = inst->nor_a1[s] * inst->a0[s];
  const double A2 = inst->nor_a2[s] * inst->a0[s];
  const double A0 = inst->a0[s];
  const float delta = (float)(kPiForFreqz / EQ_FREQZ_POINTS);
  for (int k = 0; k < EQ_FREQZ_POINTS; ++k) {
    const float x = (float)k * delta;
    const double c = cos((double)x), sn = sin((double)x);
    const double br = B1 * c + B0 + c * c * B2 - sn * sn * B2;
    const double bi = B1 * sn + 2.0 * B2 * c * sn;
    const double ar = A1 * c + A0 + c * c * A2 - sn * sn * A2;
    const double ai = A1 * sn + 2.0 * A2 * c * sn;
    const double d = ar * ar + ai * ai;
    const double hr = (br * ar + bi * ai) / d;
    const double hi = (bi * ar - br * ai) / d;
    Frequency_response[k] = (float)(20.0 * log10(sqrt(hr * hr + hi * hi)));
  }
  ALGO_MSG(inst->dbg_level, "[Freqz] Get Filter %d frequency response successfully.\t\n", s + 1);
  return 0;
}

int EQ_DesignUserFilter(EQinst_t** eq, unsigned int channels, int filter_cnt, const AudioFilterConfig* filter_config) {
  _AudioFilterConfig cfg = ToStageFilterConfig(filter_config);
  if (FilterDesignConfigCheck(eq[0], &cfg) != 0 || FilterGeneratr(eq[0], filter_cnt, &cfg) != 0) {
    return -1;
  }
  if (channels == 2) *eq[1] = *eq[0];
  return 0;
}

void EQ_SumDesignedResponses(EQinst_t* inst, float* frequency_response) {
  memset(frequency_response, 0, sizeof(float) * EQ_FREQZ_POINTS);
  if (inst == NULL) return;
  float section[EQ_FREQZ_POINTS];
  for (int s = 0; s < EQ_MAX_BIQUADS; ++s) {
    if (inst->filter_flag[s] != 1) continue;
    SOS_freqz(inst, s, section);
    for (int k = 0; k < EQ_FREQZ_POINTS; ++k) frequency_response[k] += section[k];
  }
}

}  // extern "C"
