// Frequency-domain AGC: three bands of the 129-bin spectrum, each measured
// and moved towards its own compression curve in whole dB per frame, then
// limited together against clipping and spread over the bins.
#include "DynamicRangeProcessing.h"

#include <math.h>
#include <string.h>

#include "debug_msglevel.h"
#include "frame_stage.h"

namespace {

constexpr int kFftLenSamples = 256;
constexpr int kLastBin = FREQ_AGC_BINS - 1;
constexpr int kBands = FREQ_AGC_BANDS;
constexpr int kCurvePoints = FREQ_AGC_CURVE_POINTS;
constexpr int kDefaultBandEdgeBins[kBands] = {64, 96, 128};
constexpr float kDefaultCurveInputDb[kCurvePoints] = {-80, -60, -40, -20, 0, 0, 0};
constexpr float kDefaultCurveOutputDb[kCurvePoints] = {-20, -20, -20, -20, -20, 0, 0};

// |X|^2 of a bin over these two gives the square of an amplitude: a sine of
// amplitude A puts A*128 into its bin.
constexpr float kEnergyScaleA = 128.0f;
constexpr float kEnergyScaleB = 256.0f;
constexpr double kFullScale = 32768.0;
constexpr float kSilentBandDb = -120.0f;
constexpr float kMinCutDb = 0.5f;
constexpr float kHalfDbPerStep = 0.5f;
// 11-point moving average over the bins, mirrored at both ends.
constexpr int kSmoothHalfOrder = 5;
constexpr float kSmoothPoints = 11.0f;
constexpr int kCurveFloorDb = -120;
// The approximate log2(10) of the half-dB conversion.
constexpr double kLog2Of10 = 3.3219;

float BinLevelDb(float power) {
  return (float)(20.0 * log10(sqrt((double)(power / kEnergyScaleA / kEnergyScaleB)) / kFullScale));
}

bool CurvePointOutOfRange(int in, int out) {
  return in < kCurveFloorDb || in > 0 || out < kCurveFloorDb || out > 0;
}

void SetCurveRow(FreqAgcHandle* h, int row, const float* in, const float* out) {
  for (int i = 0; i < kCurvePoints; ++i) {
    h->compression_ratio_config.compressionRatioArrayInput[row][i] = in[i];
    h->compression_ratio_config.compressionRatioArrayOutput[row][i] = out[i];
  }
}

_ALGO_AGC_RET SetCurveRowChecked(FreqAgcHandle* h, int row, const int* in, const int* out) {
  if (h == NULL) return _ALGO_AGC_RET_INVALID_HANDLE;
  const _ALGO_AGC_RET ret = CheckCompressionRatioConfig((int*)in, (int*)out, h->dbg_level);
  if (ret != _ALGO_AGC_RET_SUCCESS) return ret;
  float inDb[kCurvePoints];
  float outDb[kCurvePoints];
  for (int i = 0; i < kCurvePoints; ++i) {
    inDb[i] = (float)in[i];
    outDb[i] = (float)out[i];
  }
  SetCurveRow(h, row, inDb, outDb);
  return _ALGO_AGC_RET_SUCCESS;
}

// Target of one band from its curve row at level p.
float CurveTargetDb(const float* in, const float* out, float p) {
  // The curve is read with both sides truncated to whole dB.
  int j = 1;
  while (j < kCurvePoints && !((int)p <= (int)in[j])) ++j;
  // A level above the last point is held at that point's output rather than
  // read on past the row (a curve ending at 0 dB never gets here).
  if (j == kCurvePoints) return out[kCurvePoints - 1];
  const int k = j - 1;
  const float slope = (out[j] - out[k]) / (in[j] - in[k]);
  if (k != 0) return out[k] + (p - in[k]) * slope;
  return out[j] + (p - in[j]) * slope;
}

float LimitStep(float v, float limit) {
  if (v > limit) return limit;
  if (v < -limit) return -limit;
  return v;
}

}  // namespace

extern "C" {

// ---- Conversions ----

float DecibelToValue(float x) {
  return (float)pow(10.0, (double)(x / 20.0f));
}

float DecibelToValueHalf(float g) {
  return (float)pow(2.0, (double)(g / 2.0f / 20.0f) * kLog2Of10);
}

float ValueToDecibel(float x) {
  return (float)(20.0 * log10((double)(x / 32768.0f)));
}

int PeakDetection(short int* input) {
  int peak = 0;
  for (int i = 0; i < kFftLenSamples; ++i) {
    const int a = input[i] < 0 ? -(int)input[i] : (int)input[i];
    if (a > peak) peak = a;
  }
  return peak;
}

int FrequencyToBinNum(int frequency, int sample_rate) {
  // The bin width is fs/2/129 rather than fs/256: kept as the tables expect.
  const float binWidthHz = (float)sample_rate / 2.0f / (float)FREQ_AGC_BINS;
  const int bin = (int)floorf((float)frequency / binWidthHz);
  return bin < kLastBin ? bin : kLastBin;
}

// ---- Checks and setters ----

_ALGO_AGC_RET CheckFrequencyBand(int* frequency_band, float sampling_rate, int dbg_level) {
  const float nyquistHz = sampling_rate / 2.0f;
  if ((float)frequency_band[0] > nyquistHz || frequency_band[0] < 0) {
    ALGO_ERR(dbg_level, "[AGC] Frequency band value error, frequency_band[0] = %d\t\n", frequency_band[0]);
    return _ALGO_AGC_RET_INVALID_FREQUENCY_BAND;
  }
  for (int i = 1; i < kBands; ++i) {
    if ((float)frequency_band[i] > nyquistHz || frequency_band[i] < 0 ||
        frequency_band[i] < frequency_band[i - 1]) {
      ALGO_ERR(dbg_level, "[AGC] Frequency band value error, frequency_band[%d] =  %d,frequency_band[%d] = %d\t\n",
               i - 1, frequency_band[i - 1], i, frequency_band[i]);
      return _ALGO_AGC_RET_INVALID_FREQUENCY_BAND;
    }
  }
  return _ALGO_AGC_RET_SUCCESS;
}

_ALGO_AGC_RET CheckCompressionRatioConfig(int* in, int* out, int dbg_level) {
  if (CurvePointOutOfRange(in[0], out[0])) {
    ALGO_ERR(dbg_level, "[AGC] Frequency domain compression_ratio value error\t\n");
    return _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO;
  }
  for (int i = 1; i < kCurvePoints; ++i) {
    if (CurvePointOutOfRange(in[i], out[i]) || in[i] < in[i - 1] || out[i] < out[i - 1]) {
      ALGO_ERR(dbg_level, "[AGC] Frequency domain compression_ratio value error!!!!\t\n");
      ALGO_ERR(dbg_level, "Input[%d] = %d, Output[%d] = %d, Input[%d] = %d, Output[%d] = %d", i - 1, in[i - 1],
               i - 1, out[i - 1], i, in[i], i, out[i]);
      return _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO;
    }
  }
  return _ALGO_AGC_RET_SUCCESS;
}

_ALGO_AGC_RET SetFreqBand(FreqAgcHandle* freqHandle, int* frequency) {
  if (freqHandle == NULL) return _ALGO_AGC_RET_INVALID_HANDLE;
  const int fs = freqHandle->agc_init.sample_rate;
  const _ALGO_AGC_RET ret = CheckFrequencyBand(frequency, (float)fs, freqHandle->dbg_level);
  if (ret != _ALGO_AGC_RET_SUCCESS) return ret;
  for (int i = 0; i < kBands; ++i) freqHandle->freq_bin_band[i] = FrequencyToBinNum(frequency[i], fs);
  return _ALGO_AGC_RET_SUCCESS;
}

_ALGO_AGC_RET SetLowFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                              int* CompressRatioOutput) {
  return SetCurveRowChecked(freqHandle, 0, CompressRatioInput, CompressRatioOutput);
}

_ALGO_AGC_RET SetMidFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                              int* CompressRatioOutput) {
  return SetCurveRowChecked(freqHandle, 1, CompressRatioInput, CompressRatioOutput);
}

_ALGO_AGC_RET SetHighFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                               int* CompressRatioOutput) {
  return SetCurveRowChecked(freqHandle, 2, CompressRatioInput, CompressRatioOutput);
}

// ---- Lifecycle ----

_ALGO_AGC_RET freqDomainAgcInit(FreqAgcHandle* freqHandle, _AudioAgcInit* anr_init) {
  if (freqHandle == NULL || anr_init == NULL) return _ALGO_AGC_RET_INVALID_HANDLE;
  FreqAgcHandle* h = freqHandle;
  for (int b = 0; b < kBands; ++b) SetCurveRow(h, b, kDefaultCurveInputDb, kDefaultCurveOutputDb);
  h->agc_init = *anr_init;
  for (int b = 0; b < kBands; ++b) {
    h->gain_decibel[b] = 0.0f;
    h->freq_bin_band[b] = kDefaultBandEdgeBins[b];
  }
  for (int k = 0; k < FREQ_AGC_BINS; ++k) h->apply_gain[k] = 1.0f;
  memset(h->ifft_out_half_prev_2ch, 0, sizeof(h->ifft_out_half_prev_2ch));
  memset(h->fft_win_buf_2ch, 0, sizeof(h->fft_win_buf_2ch));
  FrameStage_InitTransform(&h->FFT_workingBuff, h->dbg_level);
  return _ALGO_AGC_RET_SUCCESS;
}

_ALGO_AGC_RET freqDomainAgcConfig(FreqAgcHandle* freqHandle, _AudioAgcConfig* agc_config) {
  if (freqHandle == NULL || agc_config == NULL) return _ALGO_AGC_RET_INVALID_HANDLE;
  const _ALGO_AGC_RET ret = AGC_CheckUserConfig(agc_config, freqHandle->dbg_level);
  if (ret != _ALGO_AGC_RET_SUCCESS) return ret;
  FreqAgcHandle* h = freqHandle;
  h->agc_config = *agc_config;
  float inDb[kCurvePoints];
  float outDb[kCurvePoints];
  for (int i = 0; i < kCurvePoints; ++i) {
    inDb[i] = (float)agc_config->compression_ratio_input[i];
    outDb[i] = (float)agc_config->compression_ratio_output[i];
  }
  for (int b = 0; b < kBands; ++b) {
    h->gain_decibel[b] = (float)agc_config->gain_info.gain_init;
    // The record's one curve replaces every per-band curve set before.
    SetCurveRow(h, b, inDb, outDb);
  }
  h->drop_gain_max_dB = -(float)agc_config->drop_gain_max;
  return _ALGO_AGC_RET_SUCCESS;
}

// ---- Frame steps ----

void TimeToFrequencyDomain(FreqAgcHandle* h, short int* input) {
  for (int k = 0; k < kFftLenSamples; ++k) h->fft_buf_agc[k] = (float)input[k];
  ORB_rdft(&h->FFT_workingBuff, kFftLenSamples, ORB_FFT_MODE_DO_FFT, h->fft_buf_agc, h->fbf_ip, h->fbf_wfft);
}

void CalculateBandEnergy(FreqAgcHandle* h) {
  int j = 0;
  float sum = 0.0f;
  for (int k = 0; k <= h->freq_bin_band[kBands - 1] && k < FREQ_AGC_BINS; ++k) {
    // A band closes at its own edge: the edge bin opens the next band, and
    // only one band closes per bin even when edges coincide.
    if (j < kBands && k >= h->freq_bin_band[j]) {
      h->freq_band_energy[j] = sum != 0.0f ? BinLevelDb(sum) : kSilentBandDb;
      ++j;
      sum = 0.0f;
    }
    const float re = h->fft_buf_agc[2 * k];
    const float im = h->fft_buf_agc[2 * k + 1];
    const float t = re * re + im * im;
    sum += t;
    h->freq_bin_energy[k] = BinLevelDb(t);
  }
}

void SetFreqBinTargatLevel(FreqAgcHandle* h) {
  for (int b = 0; b < kBands; ++b) {
    const float p = h->freq_band_energy[b];
    if (!(p >= kSilentBandDb)) continue;  // keeps the last target
    h->freq_bin_target_porwer[b] = CurveTargetDb(h->compression_ratio_config.compressionRatioArrayInput[b],
                                                 h->compression_ratio_config.compressionRatioArrayOutput[b], p);
  }
}

void CalculateApplyGain(FreqAgcHandle* h) {
  const _AudioAgcConfig& c = h->agc_config;
  const float stepLimitDb = (float)c.gain_step * kHalfDbPerStep;
  for (int b = 0; b < kBands; ++b) {
    h->noise_flag[b] = h->freq_band_energy[b] < (float)c.noise_gate_db ? 1 : 0;
    if (h->noise_flag[b] == 0) {
      h->gain_target[b] = h->freq_bin_target_porwer[b] - h->freq_band_energy[b] - h->gain_decibel[b];
    } else {
      h->gain_target[b] = 0.0f - h->gain_decibel[b];  // relax towards 0 dB
    }
    // Both run lengths are bounded by release_time; a fall needs more than
    // attack_time, so with attack_time above release_time the law never cuts.
    if (h->gain_target[b] > 0.0f) {
      if ((unsigned int)h->boost_gain_cnt[b] <= c.release_time) h->boost_gain_cnt[b] += 1;
      h->decay_gain_cnt[b] = 0;
    } else if (h->gain_target[b] < 0.0f) {
      if ((unsigned int)h->decay_gain_cnt[b] <= c.release_time) h->decay_gain_cnt[b] += 1;
      h->boost_gain_cnt[b] = 0;
    } else {
      h->boost_gain_cnt[b] = 0;
      h->decay_gain_cnt[b] = 0;
    }
    // The counters stay up: once a run has reached its threshold the gain
    // moves every frame until the direction changes.
    if ((unsigned int)h->boost_gain_cnt[b] > c.release_time || (unsigned int)h->decay_gain_cnt[b] > c.attack_time) {
      h->gain_decibel[b] += LimitStep(h->gain_target[b], stepLimitDb);
      if (h->gain_decibel[b] > (float)c.gain_info.gain_max) h->gain_decibel[b] = (float)c.gain_info.gain_max;
      if (h->gain_decibel[b] < (float)c.gain_info.gain_min) h->gain_decibel[b] = (float)c.gain_info.gain_min;
    }
  }
}

void ClippingPrevent(FreqAgcHandle* h) {
  const float peak = (float)h->peak_value;
  const float thresholdDb = (float)h->agc_config.drop_gain_threshold;
  const float maxCutDb = (float)h->agc_config.drop_gain_max;
  float ratioSum = 0.0f;
  for (int b = 0; b < kBands; ++b) {
    h->band_energy_ratio[b] = DecibelToValue(h->freq_band_energy[b] - h->freq_band_energy[0]);
    ratioSum += h->band_energy_ratio[b];
  }
  float predicted = 0.0f;
  for (int b = 0; b < kBands; ++b) {
    // The frame's peak, shared out in proportion to band energy.
    h->band_peak[b] = h->band_energy_ratio[b] * (peak / ratioSum);
    predicted += h->band_peak[b] * DecibelToValue(h->gain_decibel[b]);
  }
  float x = ValueToDecibel(predicted);
  float remaining = maxCutDb;
  // Every band takes the same cut; gain_min does not bound it.
  while (x > thresholdDb) {
    float d = x - thresholdDb < maxCutDb ? x - thresholdDb : maxCutDb;
    if (d < kMinCutDb) d = kMinCutDb;
    float next = 0.0f;
    for (int b = 0; b < kBands; ++b) {
      h->gain_decibel[b] -= d;
      float v = DecibelToValue(h->gain_decibel[b]);
      if (v < 0.0f) v = 0.0f;
      next += v * h->band_peak[b];
    }
    x = ValueToDecibel(next);
    remaining -= d;
    if (remaining <= 0.0f) break;
  }
}

void AgcApplyGain(FreqAgcHandle* h, float* input) {
  for (int b = 0; b < kBands; ++b) h->gain_value[b] = DecibelToValue(h->gain_decibel[b]);
  // Here the edge bin belongs to the lower band, unlike in the measurement.
  int j = 0;
  for (int i = 0; i <= h->freq_bin_band[kBands - 1] && i < FREQ_AGC_BINS; ++i) {
    if (j < kBands - 1 && i > h->freq_bin_band[j]) ++j;
    h->apply_gain[i] = h->gain_value[j];
  }
  const float* g = h->apply_gain;
  float sum = 0.0f;
  for (int k = 0; k < FREQ_AGC_BINS; ++k) {
    if (k == 0) {
      for (int i = 1; i <= kSmoothHalfOrder; ++i) sum += g[i];
      sum = 2.0f * sum + g[0];
    } else if (k <= kSmoothHalfOrder) {
      sum += g[k + kSmoothHalfOrder] - g[kSmoothHalfOrder + 1 - k];
    } else if (k <= kLastBin - kSmoothHalfOrder) {
      sum += g[k + kSmoothHalfOrder] - g[k - kSmoothHalfOrder - 1];
    } else {
      sum += g[2 * kLastBin - kSmoothHalfOrder - k] - g[k - kSmoothHalfOrder - 1];
    }
    const float gain = sum / kSmoothPoints;
    input[2 * k] *= gain;
    input[2 * k + 1] *= gain;
  }
}

void NoiseAttenuation(FreqAgcHandle* h, float* input) {
  const float a = (float)h->agc_config.noise_gate_attenuation_db / 100.0f;
  const double keep = 1.0 - (double)a;
  int lower = 0;
  for (int b = 0; b < kBands; ++b) {
    const int upper = h->freq_bin_band[b];
    if (h->noise_flag[b]) {
      for (int k = lower; k < upper && k < FREQ_AGC_BINS; ++k) {
        input[2 * k] = (float)((double)input[2 * k] * keep);
        input[2 * k + 1] = (float)((double)input[2 * k + 1] * keep);
      }
    }
    lower = upper;
  }
}

_ALGO_AGC_RET freqDomainAgcProcess(FreqAgcHandle* freqHandle, short int* timeDomainFrameWithoutWindowing,
                                   float* inOutFrame) {
  if (freqHandle == NULL || timeDomainFrameWithoutWindowing == NULL || inOutFrame == NULL) {
    return _ALGO_AGC_RET_INVALID_HANDLE;
  }
  FreqAgcHandle* h = freqHandle;
  TimeToFrequencyDomain(h, timeDomainFrameWithoutWindowing);
  h->peak_value = PeakDetection(timeDomainFrameWithoutWindowing);
  CalculateBandEnergy(h);
  SetFreqBinTargatLevel(h);
  CalculateApplyGain(h);
  ClippingPrevent(h);
  AgcApplyGain(h, inOutFrame);
  if (h->agc_config.noise_gate_attenuation_db != 0) NoiseAttenuation(h, inOutFrame);
  return _ALGO_AGC_RET_SUCCESS;
}

}  // extern "C"
