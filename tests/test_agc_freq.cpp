// Frequency-domain AGC: conversions, band measurement, per-band curves,
// the rise/fall counters, the clipping guard, bin smoothing and the gate.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "DynamicRangeProcessing.h"
#include "test_support.h"

namespace {

constexpr int kBins = 129;
constexpr int kRate = 16000;  // bin k of the 256-point FFT sits at 62.5 * k Hz

_AudioAgcConfig Config() {
  _AudioAgcConfig c;
  std::memset(&c, 0, sizeof(c));
  c.agc_enable = 1;
  c.user_mode = 2;
  c.gain_info = {30, -30, 0};
  c.drop_gain_max = 20;
  c.attack_time = 1;
  c.release_time = 1;
  // 2:1 around -20 dB: -60 dB wants +20 dB, -40 dB wants +10 dB.
  const short in[7] = {-100, -80, -60, -40, -20, 0, 0};
  const short out[7] = {-60, -50, -40, -30, -20, -10, 0};
  std::memcpy(c.compression_ratio_input, in, sizeof(in));
  std::memcpy(c.compression_ratio_output, out, sizeof(out));
  c.drop_gain_threshold = -3;
  c.noise_gate_db = -70;
  c.noise_gate_attenuation_db = 0;
  c.gain_step = 2;  // 1 dB per frame
  return c;
}

struct Freq {
  explicit Freq(const _AudioAgcConfig& cfg) : h(new FreqAgcHandle()) {
    std::memset(h.get(), 0, sizeof(FreqAgcHandle));
    fftState.resize(FFT_GetBufferSize(256) / sizeof(double) + 1);
    h->FFT_workingBuff.fft_Ne10_cfg = reinterpret_cast<ne10_fft_r2c_cfg_float32_t>(fftState.data());
    h->dbg_level = 1;
    _AudioAgcInit init = {128, 1, kRate};
    EXPECT_EQ(freqDomainAgcInit(h.get(), &init), _ALGO_AGC_RET_SUCCESS);
    config = cfg;
    EXPECT_EQ(freqDomainAgcConfig(h.get(), &config), _ALGO_AGC_RET_SUCCESS);
  }
  // One frame; returns the spectrum of ones after the gains.
  std::vector<float> Process(std::vector<short> frame) {
    std::vector<float> spectrum(258, 1.0f);
    EXPECT_EQ(freqDomainAgcProcess(h.get(), frame.data(), spectrum.data()), _ALGO_AGC_RET_SUCCESS);
    return spectrum;
  }
  std::unique_ptr<FreqAgcHandle> h;
  std::vector<double> fftState;
  _AudioAgcConfig config;
};

// Sum of whole-period tones: (bin, level of the band in dB).
std::vector<short> Tones(std::initializer_list<std::pair<int, float>> tones) {
  std::vector<double> acc(256, 0.0);
  for (const auto& t : tones) {
    const double amp = 32768.0 * std::sqrt(2.0) * std::pow(10.0, t.second / 20.0);
    for (int i = 0; i < 256; ++i) acc[i] += amp * std::cos(2.0 * M_PI * t.first * i / 256.0);
  }
  std::vector<short> v(256);
  for (int i = 0; i < 256; ++i) v[i] = static_cast<short>(std::lround(acc[i]));
  return v;
}

TEST(FreqAgcConversions, ValuesBinsAndPeaks) {
  EXPECT_FLOAT_EQ(DecibelToValue(20.0f), 10.0f);
  EXPECT_FLOAT_EQ(DecibelToValue(-6.0f), 0.50118723f);
  EXPECT_NEAR(DecibelToValueHalf(12.0f), 1.99526f, 1e-4f);  // 6 dB
  EXPECT_EQ(DecibelToValueHalf(0.0f), 1.0f);
  EXPECT_FLOAT_EQ(ValueToDecibel(3276.8f), -20.0f);
  EXPECT_EQ(FrequencyToBinNum(4000, 16000), 64);   // 4000 / 62.0155 = 64.5
  EXPECT_EQ(FrequencyToBinNum(3000, 16000), 48);
  EXPECT_EQ(FrequencyToBinNum(8000, 16000), 128);  // 129 is folded to 128
  EXPECT_EQ(FrequencyToBinNum(0, 8000), 0);
  std::vector<short> x(256, 7);
  x[100] = -32768;
  EXPECT_EQ(PeakDetection(x.data()), 32768);
}

TEST(FreqAgcSetup, ConfigOverwritesEveryBandAndARefusalKeepsTheOldValues) {
  Freq f(Config());
  FreqAgcHandle* h = f.h.get();
  int in[7] = {-90, -70, -50, -30, -10, 0, 0};
  int out[7] = {-30, -30, -30, -30, -30, 0, 0};
  ASSERT_EQ(SetMidFreqCompressionRatioCurve(h, in, out), _ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(h->compression_ratio_config.compressionRatioArrayInput[1][0], -90.0f);
  _AudioAgcConfig c = Config();
  c.gain_info.gain_init = 4;
  ASSERT_EQ(freqDomainAgcConfig(h, &c), _ALGO_AGC_RET_SUCCESS);
  for (int b = 0; b < 3; ++b) {
    EXPECT_EQ(h->gain_decibel[b], 4.0f);
    EXPECT_EQ(h->compression_ratio_config.compressionRatioArrayInput[b][0], -100.0f) << "band " << b;
  }
  c.gain_step = 11;
  const std::string text = zebtest::CaptureStdout([&] { EXPECT_EQ(freqDomainAgcConfig(h, &c), _ALGO_AGC_RET_INVALID_GAIN_STEP); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [AGC] GainStep value error\t11\n");
  EXPECT_EQ(h->agc_config.gain_step, 2u);
}

TEST(FreqAgcSetup, BandAndCurveChecksKeepOldValues) {
  Freq f(Config());
  FreqAgcHandle* h = f.h.get();
  h->dbg_level = 7;
  int bands[3] = {1000, 4000, 9000};
  std::string out = zebtest::CaptureStdout([&] { EXPECT_EQ(SetFreqBand(h, bands), _ALGO_AGC_RET_INVALID_FREQUENCY_BAND); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Frequency band value error, frequency_band[1] =  4000,frequency_band[2] = 9000\t\n");
  EXPECT_EQ(h->freq_bin_band[2], 128);
  bands[0] = -1;
  out = zebtest::CaptureStdout([&] { SetFreqBand(h, bands); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Frequency band value error, frequency_band[0] = -1\t\n");
  int falling[3] = {3000, 2000, 5000};
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(SetFreqBand(h, falling), _ALGO_AGC_RET_INVALID_FREQUENCY_BAND); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Frequency band value error, frequency_band[0] =  3000,frequency_band[1] = 2000\t\n");
  int good[3] = {1000, 3000, 8000};
  ASSERT_EQ(SetFreqBand(h, good), _ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(h->freq_bin_band[0], 16);
  EXPECT_EQ(h->freq_bin_band[1], 48);
  EXPECT_EQ(h->freq_bin_band[2], 128);

  int in[7] = {-90, -70, -50, -30, -10, 0, 1};
  int o[7] = {-30, -30, -30, -30, -30, 0, 0};
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(SetHighFreqCompressionRatioCurve(h, in, o), _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO); });
  EXPECT_EQ(out,
            "[ALGO_MSG_ERR] [AGC] Frequency domain compression_ratio value error!!!!\t\n"
            "[ALGO_MSG_ERR] Input[5] = 0, Output[5] = 0, Input[6] = 1, Output[6] = 0");
  in[0] = -121;
  out = zebtest::CaptureStdout([&] { CheckCompressionRatioConfig(in, o, 7); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Frequency domain compression_ratio value error\t\n");
  EXPECT_EQ(h->compression_ratio_config.compressionRatioArrayInput[2][0], -100.0f);
}

TEST(FreqAgcMeasure, BandEnergiesAndTheirEdges) {
  Freq f(Config());
  FreqAgcHandle* h = f.h.get();
  std::vector<short> frame = Tones({{10, -20.0f}, {100, -40.0f}});
  TimeToFrequencyDomain(h, frame.data());
  CalculateBandEnergy(h);
  EXPECT_NEAR(h->freq_band_energy[0], -20.0f, 0.05f);
  EXPECT_LT(h->freq_band_energy[1], -80.0f);
  EXPECT_NEAR(h->freq_band_energy[2], -40.0f, 0.05f);
  EXPECT_NEAR(h->freq_bin_energy[10], -20.0f, 0.05f);
  // The edge bin opens the next band.
  frame = Tones({{64, -30.0f}});
  TimeToFrequencyDomain(h, frame.data());
  CalculateBandEnergy(h);
  EXPECT_LT(h->freq_band_energy[0], -80.0f);
  EXPECT_NEAR(h->freq_band_energy[1], -30.0f, 0.05f);
  // Silence: every band at -120.
  frame.assign(256, 0);
  TimeToFrequencyDomain(h, frame.data());
  CalculateBandEnergy(h);
  for (int b = 0; b < 3; ++b) EXPECT_EQ(h->freq_band_energy[b], -120.0f);
  // Equal edges: only band 0 closes; the others keep what they had.
  h->freq_bin_band[0] = h->freq_bin_band[1] = h->freq_bin_band[2] = 128;
  h->freq_band_energy[1] = 5.0f;
  frame = Tones({{100, -40.0f}});
  TimeToFrequencyDomain(h, frame.data());
  CalculateBandEnergy(h);
  EXPECT_NEAR(h->freq_band_energy[0], -40.0f, 0.05f);
  EXPECT_EQ(h->freq_band_energy[1], 5.0f);
}

TEST(FreqAgcCurve, TargetsPerBandWithBoundedScan) {
  Freq f(Config());
  FreqAgcHandle* h = f.h.get();
  const struct { float level, target; } rows[] = {
      {-50.0f, -35.0f},   // segment (-60, -40) .. (-40, -30)
      {-110.0f, -65.0f},  // below in[0]: the first segment continued from in[1]
      {-20.0f, -20.0f},
      {2.0f, 0.0f},       // above the last point: held at out[6]
  };
  for (const auto& r : rows) {
    h->freq_band_energy[1] = r.level;
    SetFreqBinTargatLevel(h);
    EXPECT_FLOAT_EQ(h->freq_bin_target_porwer[1], r.target) << r.level;
  }
  h->freq_band_energy[1] = -130.0f;  // below -120: target kept
  SetFreqBinTargatLevel(h);
  EXPECT_FLOAT_EQ(h->freq_bin_target_porwer[1], 0.0f);
}

TEST(FreqAgcLaw, CountersDelayAndHoldTheMotion) {
  _AudioAgcConfig c = Config();
  c.release_time = 3;
  c.attack_time = 5;  // above release_time + 1: the law never lowers a gain
  Freq f(c);
  FreqAgcHandle* h = f.h.get();
  auto step = [&](float level, float target) {
    for (int b = 0; b < 3; ++b) {
      h->freq_band_energy[b] = level;
      h->freq_bin_target_porwer[b] = target;
    }
    CalculateApplyGain(h);
    return h->gain_decibel[0];
  };
  const std::vector<float> rise = {0, 0, 0, 1, 2, 3};
  for (size_t n = 0; n < rise.size(); ++n) EXPECT_EQ(step(-40.0f, -30.0f), rise[n]) << n;
  for (int n = 0; n < 20; ++n) step(-40.0f, -30.0f);
  EXPECT_EQ(h->gain_decibel[0], 10.0f);
  EXPECT_EQ(h->boost_gain_cnt[0], 0);  // a target of exactly 0 clears both
  for (int n = 0; n < 20; ++n) EXPECT_EQ(step(-40.0f, -45.0f), 10.0f);
  EXPECT_EQ(h->decay_gain_cnt[0], 4);  // bounded by release_time + 1

  c.attack_time = 2;
  Freq g(c);
  h = g.h.get();
  h->gain_decibel[0] = 10.0f;
  const std::vector<float> fall = {10, 10, 9, 8};
  for (size_t n = 0; n < fall.size(); ++n) EXPECT_EQ(step(-40.0f, -45.0f), fall[n]) << n;
  // Under the gate the target is 0 dB.
  for (int n = 0; n < 30; ++n) step(-90.0f, -45.0f);
  EXPECT_EQ(h->noise_flag[0], 1);
  EXPECT_EQ(h->gain_decibel[0], 0.0f);
  // gain_max bounds the law.
  for (int n = 0; n < 60; ++n) step(-100.0f + 30.0f, -20.0f);
  EXPECT_EQ(h->gain_decibel[0], 30.0f);
}

TEST(FreqAgcClipping, AllBandsTakeTheSameCut) {
  Freq f(Config());
  FreqAgcHandle* h = f.h.get();
  const float energy[3] = {-6.0f, -12.0f, -30.0f};
  for (int b = 0; b < 3; ++b) {
    h->freq_band_energy[b] = energy[b];
    h->gain_decibel[b] = 0.0f;
  }
  h->peak_value = 32767;
  ClippingPrevent(h);
  for (int b = 0; b < 3; ++b) {
    EXPECT_GE(h->gain_decibel[b], -3.5f);
    EXPECT_LE(h->gain_decibel[b], -2.99f);
    EXPECT_EQ(h->gain_decibel[b], h->gain_decibel[0]);
  }
  EXPECT_NEAR(h->band_peak[0] + h->band_peak[1] + h->band_peak[2], 32767.0f, 1.0f);

  // drop_gain_max bounds the cut per frame, and gain_min does not.
  f.h->agc_config.drop_gain_max = 6;
  f.h->agc_config.drop_gain_threshold = -40;
  const float gains[3] = {-28.0f, 5.0f, 0.0f};
  for (int b = 0; b < 3; ++b) h->gain_decibel[b] = gains[b];
  ClippingPrevent(h);
  for (int b = 0; b < 3; ++b) EXPECT_FLOAT_EQ(h->gain_decibel[b], gains[b] - 6.0f);

  h->peak_value = 0;
  ClippingPrevent(h);
  EXPECT_FLOAT_EQ(h->gain_decibel[1], -1.0f);
}

// The mirrored 11-point average of the per-bin gains, in double.
std::vector<double> SmoothedGains(const float* g) {
  std::vector<double> out(kBins);
  for (int k = 0; k < kBins; ++k) {
    double s = 0.0;
    for (int d = -5; d <= 5; ++d) {
      int i = k + d;
      if (i < 0) i = -i;
      if (i > 128) i = 256 - i;
      s += g[i];
    }
    out[k] = s / 11.0;
  }
  return out;
}

TEST(FreqAgcApply, RunningAverageMatchesTheDirectSum) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  std::uniform_real_distribution<float> db(-20.0f, 10.0f);
  std::uniform_int_distribution<int> edge(0, 128);
  for (int trial = 0; trial < 50; ++trial) {
    Freq f(Config());
    FreqAgcHandle* h = f.h.get();
    int e[3] = {edge(rng), edge(rng), edge(rng)};
    std::sort(e, e + 3);
    for (int b = 0; b < 3; ++b) {
      h->freq_bin_band[b] = e[b];
      h->gain_decibel[b] = db(rng);
    }
    std::vector<float> spectrum(258);
    for (float& v : spectrum) v = db(rng);
    const std::vector<float> before = spectrum;
    AgcApplyGain(h, spectrum.data());
    // The edge bin takes the lower band's gain; bins above the last edge keep 1.0.
    int j = 0;
    for (int i = 0; i < kBins; ++i) {
      if (i > e[2]) {
        ASSERT_EQ(h->apply_gain[i], 1.0f) << "seed " << seed;
        continue;
      }
      if (i > e[j]) ++j;
      ASSERT_EQ(h->apply_gain[i], h->gain_value[j]) << "seed " << seed << " bin " << i;
    }
    const std::vector<double> smooth = SmoothedGains(h->apply_gain);
    for (int k = 0; k < kBins; ++k) {
      ASSERT_NEAR(spectrum[2 * k], before[2 * k] * smooth[k], 1e-4 * (1.0 + std::fabs(before[2 * k]) * 4.0))
          << "seed " << seed << " bin " << k;
      ASSERT_NEAR(spectrum[2 * k + 1], before[2 * k + 1] * smooth[k],
                  1e-4 * (1.0 + std::fabs(before[2 * k + 1]) * 4.0));
    }
  }
}

TEST(FreqAgcProcess, BandsLevelIndependently) {
  Freq f(Config());
  const std::vector<short> frame = Tones({{20, -60.0f}, {110, -40.0f}});
  for (int n = 0; n < 40; ++n) f.Process(frame);
  FreqAgcHandle* h = f.h.get();
  EXPECT_NEAR(h->gain_decibel[0], 20.0f, 0.1f);
  EXPECT_NEAR(h->gain_decibel[2], 10.0f, 0.1f);
  EXPECT_EQ(h->gain_decibel[1], 0.0f);  // silent band under the gate
  EXPECT_EQ(h->noise_flag[1], 1);
  // One more frame moves nothing.
  f.Process(frame);
  EXPECT_NEAR(h->gain_decibel[0], 20.0f, 0.1f);
}

TEST(FreqAgcProcess, GatedBandsAreAttenuatedByThePercentage) {
  _AudioAgcConfig c = Config();
  c.release_time = 99;
  c.attack_time = 99;
  c.noise_gate_attenuation_db = 50;
  Freq f(c);
  const std::vector<float> spectrum = f.Process(Tones({{20, -40.0f}, {110, -40.0f}}));
  EXPECT_EQ(f.h->noise_flag[1], 1);
  EXPECT_FLOAT_EQ(spectrum[2 * 40], 1.0f);
  EXPECT_FLOAT_EQ(spectrum[2 * 80], 0.5f);
  EXPECT_FLOAT_EQ(spectrum[2 * 80 + 1], 0.5f);
  EXPECT_FLOAT_EQ(spectrum[2 * 96], 1.0f);  // bin 96 opens band 2
  EXPECT_FLOAT_EQ(spectrum[2 * 120], 1.0f);

  // All-zero frame: every band gated, gains relax by gain_step / 2 per frame.
  c = Config();
  c.gain_info.gain_init = 3;
  Freq z(c);
  z.Process(std::vector<short>(256, 0));
  EXPECT_EQ(z.h->gain_decibel[0], 3.0f);  // the run length must exceed attack_time
  z.Process(std::vector<short>(256, 0));
  EXPECT_EQ(z.h->gain_decibel[0], 2.0f);
  for (int n = 0; n < 5; ++n) z.Process(std::vector<short>(256, 0));
  EXPECT_EQ(z.h->gain_decibel[2], 0.0f);
}

}  // namespace
