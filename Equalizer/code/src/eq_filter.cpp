// Equaliser gain engine of one channel: dB settings and the built-in
// high-pass tables become Q8 scale factors per bin of the 256-point
// spectrum, applied by multiplication. Also the time-domain high-pass.
#include "eq_filter.h"

#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "debug_msglevel.h"
#include "hpf_tables.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_eq.h"

// The engine reads the public records through its own views of them.
static_assert(sizeof(_AudioEqConfig) == sizeof(AudioEqConfig) &&
                  offsetof(_AudioEqConfig, user_mode) == offsetof(AudioEqConfig, user_mode) &&
                  offsetof(_AudioEqConfig, eq_gain_db) == offsetof(AudioEqConfig, eq_gain_db),
              "_AudioEqConfig must match AudioEqConfig");
static_assert(sizeof(_AudioHpfConfig) == sizeof(AudioHpfConfig) &&
                  offsetof(_AudioHpfConfig, cutoff_frequency) ==
                      offsetof(AudioHpfConfig, cutoff_frequency),
              "_AudioHpfConfig must match AudioHpfConfig");
static_assert(sizeof(_AudioEqInit) == sizeof(AudioEqInit) &&
                  offsetof(_AudioEqInit, sample_rate) == offsetof(AudioEqInit, sample_rate),
              "_AudioEqInit must match AudioEqInit");
static_assert((int)_AUDIO_HPF_FREQ_500 == (int)AUDIO_HPF_FREQ_500 &&
                  (int)_AUDIO_HPF_FREQ_BUTT == (int)AUDIO_HPF_FREQ_BUTT,
              "_ZEB_HPF_FREQ must match ZEB_HPF_FREQ");

namespace {

constexpr int kBins = EQ_BINS;
constexpr int kNyquistBin = EQ_BINS - 1;
constexpr float kDbPerDoubling = 6.02f;  // not 20*log10(2): part of the gain law
constexpr int kFrameLenSamples = HPF_FIR_FRAME_SAMPLES;

// 500 Hz guard: levels in dB relative to a full-scale sinusoid's bin.
constexpr int kGuardFirstScanBin = 8;
constexpr float kGuardFloorDb = -120.0f;
constexpr float kGuardStartDb = -200.0f;
constexpr float kGuardFullScale = 32767.0f;
constexpr float kGuardBinScale = 128.0f;
constexpr float kMuteSpreadDb = -75.0f;
constexpr float kMuteLowPeakDb = -70.0f;
constexpr float kDuckSpreadDb = -80.0f;
constexpr float kDuckLowAvgDb = -30.0f;
constexpr float kDuckGain = 0.01f;
constexpr float kPassSpreadDb = -65.0f;
constexpr float kPassLowAvgDb = -40.0f;

// Q8 weight of one dB setting: the low 16 bits of the truncated product.
short WeightQ8FromDb(short gainDb) {
  const float doublings = (float)gainDb / kDbPerDoubling;
  const float factor = (float)pow(2.0, (double)doublings);
  return EQ_WrapToInt16(factor * EQ_UNITY_Q8);
}

// First bin from kGuardFirstScanBin on whose gain is not 0: where the pass
// band of the table starts. Every built-in table has one; a table that is
// all zeros from there on (never configured) counts the whole spectrum but
// the last bin as stop band.
int PassBandStartBin(const float* Gain_in) {
  for (int k = kGuardFirstScanBin; k < kBins; ++k) {
    if (Gain_in[k] != 0.0f) return k;
  }
  return kNyquistBin;
}

struct GuardStats {
  int stopBins;     // filter_num
  int maxIndex;     // strongest bin
  float maxBinDb;   // its level
  float maxLowDb;   // strongest level in the stop band
  float avgLowDb;   // stop-band average (divisor one too large, as designed)
  float avgAllDb;   // pass-band average (divisor counts bin 128, as designed)
};

// Step 4 and 5 of the guard: bin levels, the two averages and the maxima.
// filter_tmp leaves as 0 in the stop band and 1 in the pass band up to 127.
GuardStats MeasureGuard(const float* Y_in, int stopBins, float* filter_tmp) {
  GuardStats s = {stopBins, 0, kGuardStartDb, kGuardStartDb, 0.0f, 0.0f};
  for (int k = 0; k < kNyquistBin; ++k) {
    const float re = Y_in[2 * k];
    const float im = Y_in[2 * k + 1];
    const float p = (float)sqrt((double)(re * re + im * im));
    float levelDb = 20.0f * log10f(p / kGuardFullScale / kGuardBinScale);
    if (levelDb < kGuardFloorDb) levelDb = kGuardFloorDb;
    if (s.maxBinDb < levelDb) {
      s.maxBinDb = levelDb;
      s.maxIndex = k;
    }
    if (k >= stopBins) {
      s.avgAllDb += levelDb;
      filter_tmp[k] = 1.0f;
    } else {
      if (levelDb > s.maxLowDb) s.maxLowDb = levelDb;
      s.avgLowDb += levelDb;
      filter_tmp[k] = 0.0f;
    }
  }
  s.avgAllDb /= (float)(kBins - stopBins);
  s.avgLowDb /= (float)(stopBins + 1);
  return s;
}

void FillAll(float* filter_tmp, float value) {
  for (int k = 0; k < kBins; ++k) filter_tmp[k] = value;
}

void FillFromTable(float* filter_tmp, const float* Gain_in) {
  for (int k = 0; k < kBins; ++k) filter_tmp[k] = Gain_in[k] / EQ_UNITY_Q8;
}

// Step 6: mute, duck, take the table, pass uncut, or keep the hard cut.
void DecideGuard(const GuardStats& s, const float* Gain_in, float* filter_tmp) {
  if (s.maxIndex <= s.stopBins) {
    if (s.avgAllDb - s.maxLowDb < kMuteSpreadDb && s.maxLowDb > kMuteLowPeakDb) {
      FillAll(filter_tmp, 0.0f);
    } else if (s.avgAllDb - s.maxLowDb < kDuckSpreadDb && s.avgLowDb > kDuckLowAvgDb) {
      FillAll(filter_tmp, kDuckGain);
    } else {
      FillFromTable(filter_tmp, Gain_in);
    }
  } else if (s.avgAllDb - s.maxBinDb < kPassSpreadDb && s.avgLowDb < kPassLowAvgDb) {
    FillAll(filter_tmp, 1.0f);
  }
}

struct FirKernel {
  const float* taps;
  int order;  // T: taps - 1
};

bool SelectFirKernel(_ZEB_HPF_FREQ hpf_freq, FirKernel* kernel) {
  if (hpf_freq == _AUDIO_HPF_FREQ_80) {
    // The 80 Hz setting runs the kernel named after 120 Hz.
    *kernel = {hpf_120Hz_coeff, HPF_FIR_120HZ_TAPS - 1};
    return true;
  }
  if (hpf_freq == _AUDIO_HPF_FREQ_500) {
    *kernel = {hpf_500Hz_coeff, HPF_FIR_500HZ_TAPS - 1};
    return true;
  }
  return false;
}

}  // namespace

extern "C" {

const short* HPF_SelectTable(int sample_rate, int hpf_freq) {
  static const short* const kTables[4][4] = {
      {HpfTable_fs8k_80Hz, HpfTable_fs8k_120Hz, HpfTable_fs8k_150Hz, HpfTable_fs8k_500Hz},
      {HpfTable_fs16k_80Hz, HpfTable_fs16k_120Hz, HpfTable_fs16k_150Hz, HpfTable_fs16k_500Hz},
      {HpfTable_fs32k_80Hz, HpfTable_fs32k_120Hz, HpfTable_fs32k_150Hz, HpfTable_fs32k_500Hz},
      {HpfTable_fs48k_80Hz, HpfTable_fs48k_120Hz, HpfTable_fs48k_150Hz, HpfTable_fs48k_500Hz},
  };
  int row;
  switch (sample_rate) {
    case 8000: row = 0; break;
    case 16000: row = 1; break;
    case 32000: row = 2; break;
    case 48000: row = 3; break;
    default: return NULL;
  }
  if (hpf_freq < 0 || hpf_freq > 3) return NULL;
  return kTables[row][hpf_freq];
}

int EQ_Init(EQinst_t* inst, int sample_rate) {
  if (inst == NULL) return -1;
  inst->filter_num = 0;
  memset(inst->filter_flag, 0, sizeof(inst->filter_flag));
  memset(inst->nor_b0, 0, sizeof(inst->nor_b0));
  memset(inst->nor_b1, 0, sizeof(inst->nor_b1));
  memset(inst->nor_b2, 0, sizeof(inst->nor_b2));
  memset(inst->a0, 0, sizeof(inst->a0));
  memset(inst->nor_a1, 0, sizeof(inst->nor_a1));
  memset(inst->nor_a2, 0, sizeof(inst->nor_a2));
  memset(inst->iir_type, 0, sizeof(inst->iir_type));
  memset(inst->x_states, 0, sizeof(inst->x_states));
  memset(inst->y_states, 0, sizeof(inst->y_states));
  for (int k = 0; k < kBins; ++k) inst->EQ_AddiScalingFactor[k] = EQ_UNITY_Q8;
  // HPF_AddiScalingFactor stays as the owner's zeroing left it until
  // HPF_Config writes it.
  inst->sample_rate = sample_rate;
  return 0;
}

_ALGO_EQ_RET EQ_CheckUserConfig(_AudioEqConfig* eq_config, int dbg_level) {
  if (eq_config == NULL) return _ALGO_EQ_RET_SUCCESS;
  if (eq_config->eq_enable != 0 && eq_config->eq_enable != 1) {
    ALGO_ERR(dbg_level, "[EQ]Fail! Unsupported EQ Config eq_enable %d. [0 or 1]\t\n",
             (int)eq_config->eq_enable);
    return _ALGO_EQ_RET_INVALID_ENABLE;
  }
  if (eq_config->user_mode != 0 && eq_config->user_mode != 1) {
    ALGO_ERR(dbg_level, "[EQ]Fail! Unsupported EQ Config user_mode %d. [0 or 1]\t\n",
             (int)eq_config->user_mode);
    return _ALGO_EQ_RET_INVALID_MODE;
  }
  if (eq_config->eq_enable == 1 && eq_config->user_mode == 1) {
    // The table is an array inside the record: only a record at a wild
    // address can fail this.
    const short* table = eq_config->eq_gain_db;
    if (table == NULL) {
      ALGO_ERR(dbg_level, "[EQ]Fail! The EQ table is NULL.\t\n");
      return _ALGO_EQ_RET_INVALID_TABLE;
    }
  }
  return _ALGO_EQ_RET_SUCCESS;
}

_ALGO_EQ_RET EQ_Config(EQinst_t* inst, _AudioEqConfig* eq_config) {
  if (inst == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The eq handle is NULL.\t\n", __func__);
    return _ALGO_EQ_RET_INVALID_HANDLE;
  }
  const int lv = inst->dbg_level;
  const _ALGO_EQ_RET check = EQ_CheckUserConfig(eq_config, lv);
  if (check != _ALGO_EQ_RET_SUCCESS) return check;
  if (eq_config == NULL) return _ALGO_EQ_RET_SUCCESS;  // nothing to convert
  // Each weight is stored before its setting is validated: a failure leaves
  // EQ_weight converted up to and including the offending bin, while the
  // factors in use stay untouched.
  for (int k = 0; k < kBins; ++k) {
    const short gainDb = eq_config->eq_gain_db[k];
    inst->EQ_weight[k] = WeightQ8FromDb(gainDb);
    if (gainDb > EQ_GAIN_MAX_DB) {
      ALGO_ERR(lv, "[%s]Fail! EQ setting could not be bigger than 20dB. %d\n", __func__, (int)gainDb);
      return _ALGO_EQ_RET_INVALID_TABLE;
    }
    if (gainDb < EQ_GAIN_MIN_DB) {
      ALGO_ERR(lv, "[%s]Fail! EQ setting could not be smaller than -100dB. %d\n", __func__,
               (int)gainDb);
      return _ALGO_EQ_RET_INVALID_TABLE;
    }
  }
  for (int k = 0; k < kNyquistBin; ++k) inst->EQ_AddiScalingFactor[k] = (float)inst->EQ_weight[k];
  // The Nyquist bin always follows bin 127; its own setting is only validated.
  inst->EQ_AddiScalingFactor[kNyquistBin] = inst->EQ_AddiScalingFactor[kNyquistBin - 1];
  return _ALGO_EQ_RET_SUCCESS;
}

_ALGO_EQ_RET HPF_Config(EQinst_t* inst, _ZEB_HPF_FREQ hpf_freq) {
  if (inst == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The eq handle is NULL.\t\n", __func__);
    return _ALGO_EQ_RET_INVALID_HANDLE;
  }
  const int lv = inst->dbg_level;
  if (HPF_SelectTable(inst->sample_rate, _AUDIO_HPF_FREQ_80) == NULL) {
    ALGO_ERR(lv, "[HPF]Fail! Unsupported sample rate : %d\t\n", inst->sample_rate);
    return _ALGO_EQ_RET_INVALID_SAMPLE_RATE;
  }
  const short* table = HPF_SelectTable(inst->sample_rate, (int)hpf_freq);
  if (table == NULL) {
    ALGO_ERR(lv, "[HPF]Fail! Unsupported hpf cutoff_frequency: %d\t\n", (int)hpf_freq);
    return _ALGO_HPF_RET_INVALID_TABLE;
  }
  for (int k = 0; k < kBins; ++k) {
    int v = table[k];
    if (v > 32767) v = 32767;
    if (v < -32768) v = -32768;
    inst->HPF_AddiScalingFactor[k] = (float)v;
  }
  return _ALGO_EQ_RET_SUCCESS;
}

void EQ_ApplyGain(float* Gain_in, float* Y_in) {
  for (int k = 0; k < kBins; ++k) {
    const float g = Gain_in[k] / EQ_UNITY_Q8;
    Y_in[2 * k] *= g;
    Y_in[2 * k + 1] *= g;
  }
}

void HPF_ApplyGain(float* Gain_in, float* Y_in, _ZEB_HPF_FREQ hpf_freq) {
  float filter_tmp[kBins] = {0.0f};
  const int filter_num = PassBandStartBin(Gain_in);
  if (hpf_freq != _AUDIO_HPF_FREQ_500) {
    FillFromTable(filter_tmp, Gain_in);
  } else {
    const GuardStats stats = MeasureGuard(Y_in, filter_num, filter_tmp);
    DecideGuard(stats, Gain_in, filter_tmp);
  }
  for (int k = 0; k < kBins; ++k) {
    Y_in[2 * k] *= filter_tmp[k];
    Y_in[2 * k + 1] *= filter_tmp[k];
  }
}

int HPF_FiniteImpulseResponseFilter(short int* HPF_filter_buffer, short int* Y_in,
                                    _ZEB_HPF_FREQ hpf_freq, int dbg_level) {
  FirKernel kernel;
  if (!SelectFirKernel(hpf_freq, &kernel)) {
    ALGO_ERR(dbg_level, "[%s]Fail! The time domain HPF does not support this frequency.\t\n", __func__);
    return -1;
  }
  const int T = kernel.order;
  const float* c = kernel.taps;
  short* h = HPF_filter_buffer;
  // Keep the last T + 1 samples, then append the new frame.
  memmove(h, h + kFrameLenSamples, sizeof(short) * (size_t)(T + 1));
  memcpy(h + T + 1, Y_in, sizeof(short) * kFrameLenSamples);
  for (int i = 0; i < kFrameLenSamples; ++i) {
    // This arrangement is part of the filter's definition: x[i] meets both
    // c[T-1] (at j = 0) and c[T], and x[i-T] (h[i+1]) is never read.
    float acc = 0.0f;
    for (int j = 0; j < T; ++j) acc += (float)h[T + 1 - j + i] * c[T - 1 - j];
    acc += (float)Y_in[i] * c[T];
    Y_in[i] = FloatToShortClamped(acc);
  }
  return 0;
}

}  // extern "C"
