// Filter mode 0 (the quantile-noise mode): estimators on constructed spectra,
// the rules of its frame routine, and the noise reducer on synthetic noisy
// spectra.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "nr_core.h"
#include "nr_webrtc.h"
#include "test_support.h"

namespace {

constexpr int kBins = NR_MAGN_LEN_BINS;
constexpr float kScale = 65536.0f;
using Spectrum = std::vector<float>;

// One noise reducer after NR_Init: mode 0, intensity 20 in every band,
// smoothing order 10, an update every second frame unless told otherwise.
struct Reducer {
  std::unique_ptr<NSinst_t> inst{new NSinst_t()};
  std::unique_ptr<NSWorkingBuf_t> work{new NSWorkingBuf_t()};
  std::unique_ptr<NSCJsoninst_t> tune{new NSCJsoninst_t()};
  explicit Reducer(int fs = 16000, int updateEvery = 2) {
    inst->NRInternalWorkBuf = work.get();
    inst->InternalParams = tune.get();
    inst->dbg_level = 3;
    _AudioAnrInit init{128, 1, fs};
    EXPECT_EQ(NR_Init(inst.get(), &init), 0);
    inst->nframe_update_filter = updateEvery;
  }
  NSinst_t* operator->() { return inst.get(); }
  NSinst_t* get() { return inst.get(); }
  void Configure(unsigned userMode, unsigned smoothLevel, int speed) {
    _AudioAnrConfig c{
        1, userMode, {3, 24, 40, 64, 80, 128}, {20, 20, 20, 20, 20, 20, 20}, smoothLevel, speed, 0};
    ASSERT_EQ(NR_Config(get(), &c), _ALGO_ANR_RET_SUCCESS);
  }
  Spectrum Run(Spectrum frame) {
    EXPECT_EQ(NR_Process(get(), frame.data()), _ALGO_ANR_RET_SUCCESS);
    return frame;
  }
};

// Sine-windowed 256-point spectra (PCM scale) of a signal, hop 128, by a
// plain DFT.
Spectrum FrameSpectrum(const std::vector<double>& x, int frame) {
  static double window[256], cosine[256], sine[256];
  if (window[1] == 0.0) {
    for (int n = 0; n < 256; ++n) {
      window[n] = std::sin(M_PI * (n + 0.5) / 256.0);
      cosine[n] = std::cos(2.0 * M_PI * n / 256.0);
      sine[n] = std::sin(2.0 * M_PI * n / 256.0);
    }
  }
  Spectrum result(NR_SPECTRUM_FLOATS, 0.0f);
  for (int k = 0; k < kBins; ++k) {
    double re = 0.0, im = 0.0;
    for (int n = 0; n < 256; ++n) {
      const double v = x[128 * frame + n] * window[n];
      re += v * cosine[(n * k) & 255];
      im -= v * sine[(n * k) & 255];
    }
    result[2 * k] = (float)re;
    result[2 * k + 1] = (float)im;
  }
  return result;
}

std::vector<double> WhiteNoise(std::mt19937& rng, int frames, double rms) {
  std::normal_distribution<double> g(0.0, rms);
  std::vector<double> x(128 * (frames + 1));
  for (double& v : x) v = g(rng);
  return x;
}

double Energy(const Spectrum& s, int lo = 0, int hi = kBins - 1) {
  double e = 0.0;
  for (int k = lo; k <= hi; ++k)
    e += (double)s[2 * k] * s[2 * k] + (double)s[2 * k + 1] * s[2 * k + 1];
  return e;
}

// Rayleigh magnitudes of stationary noise in the record's scale; fills sumMagn.
void NoiseMagnitudes(std::mt19937& rng, float sigma, NSinst_t* s) {
  std::normal_distribution<float> g(0.0f, sigma);
  s->sumMagn = 0.0f;
  for (float& m : s->NRInternalWorkBuf->magn) {
    const float re = g(rng), im = g(rng);
    s->sumMagn += m = std::sqrt(re * re + im * im) + 1.5258789e-05f;
  }
}

TEST(NrMode0Helpers, IntegerAbsoluteValueAndTheSharedTableCells) {
  EXPECT_EQ(NrIntAbs(0.99f), 0.0f);
  EXPECT_EQ(NrIntAbs(-3.7f), 3.0f);
  EXPECT_EQ(NrIntAbs(1e12f), (float)INT_MAX);
  EXPECT_EQ(NrIntAbs(NAN), 0.0f);
  Reducer r;
  // Bin 128 of the over-subtraction is the floor table's first cell, which
  // the band mapping left at the top band's value; bin 0 reads it as floor.
  EXPECT_FLOAT_EQ(NrOverdriveAt(r.get(), 128), 1.1f);
  EXPECT_FLOAT_EQ(NrDenoiseBoundAt(r.get(), 0), 1.1f);
  EXPECT_FLOAT_EQ(NrDenoiseBoundAt(r.get(), 127), 0.125f);
  EXPECT_EQ(NrDenoiseBoundAt(r.get(), 128), std::numeric_limits<float>::denorm_min());
  const float blockWord = NrDenoiseBoundAt(r.get(), 129);
  uint32_t bits;
  std::memcpy(&bits, &blockWord, 4);
  EXPECT_EQ(bits, 0xFFFFu);
}

TEST(NrMode0Quantile, TracksTheQuantileOfStationaryNoiseAndPublishesPerBlock) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Reducer r;
  std::vector<float> noise(kBins), before(kBins);
  int changes = 0;
  for (int update = 1; update <= 1200; ++update) {
    std::copy(r->quantile, r->quantile + kBins, before.begin());
    NoiseMagnitudes(rng, 0.02f, r.get());
    NR_ComputeSpectralFlatness(r.get(), r.work->magn);
    NR_NoiseEstimation(r.get(), r.work->magn, noise.data());
    const bool changed = !std::equal(before.begin(), before.end(), r->quantile);
    if (update < 200) {
      ASSERT_TRUE(changed) << update;  // warming up: every update
    } else {
      changes += changed;  // then once per 200 counts
    }
  }
  EXPECT_EQ(changes, 5);
  EXPECT_EQ(r->updates, 200);
  EXPECT_FLOAT_EQ(r->quantite, 0.15f);
  // The 15 % quantile of Rayleigh magnitudes: sigma * sqrt(-2 ln 0.85).
  double logSum = 0.0;
  for (int i = 0; i < kBins; ++i) logSum += std::log(noise[i]);
  EXPECT_NEAR(std::exp(logSum / kBins) / (0.02 * std::sqrt(-2.0 * std::log(0.85))), 1.0, 0.25)
      << "seed " << seed;
}

TEST(NrMode0Quantile, DensityHitNeedsADistanceBelowOne) {
  for (const float lmagn : {0.99f, 1.0f, -0.99f}) {
    Reducer r;
    r->counter[0] = 199;  // steps of 40 / 200: up 0.05, down 0.15
    for (int i = 0; i < kBins; ++i) {
      r.work->lmagn[i] = lmagn;
      r->lquantile[i] = lmagn > 0.0f ? -0.05f : 0.0f;
    }
    std::vector<float> noise(kBins);
    NR_NoiseEstimation(r.get(), r.work->magn, noise.data());
    EXPECT_EQ(r->density[3], lmagn == 1.0f ? 0.3f : (199.0f * 0.3f + 5.0f) / 200.0f) << lmagn;
    EXPECT_EQ(noise[3], (float)std::exp((double)r->lquantile[3]));
  }
}

TEST(NrMode0Features, FlatnessSeparatesWhiteFromTonalAndDecaysOnAZeroBin) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Reducer white, tonal;
  for (int frame = 0; frame < 40; ++frame) {
    NoiseMagnitudes(rng, 0.02f, white.get());
    NR_ComputeSpectralFlatness(white.get(), white.work->magn);
    ASSERT_GE(white->featureData[0], 0.0f);
    ASSERT_LE(white->featureData[0], 1.0f);
    std::fill(tonal.work->magn, tonal.work->magn + kBins, 1e-4f);
    tonal.work->magn[20] = 2.0f;
    tonal->sumMagn = 2.0f + 128 * 1e-4f;
    NR_ComputeSpectralFlatness(tonal.get(), tonal.work->magn);
  }
  EXPECT_GT(white->featureData[0], 0.6f) << "seed " << seed;
  EXPECT_LT(tonal->featureData[0], 0.05f);
  // A zero bin: the flatness decays by 30 %, the logarithms are all taken.
  white.work->magn[40] = 0.0f;
  const float before = white->featureData[0];
  NR_ComputeSpectralFlatness(white.get(), white.work->magn);
  EXPECT_FLOAT_EQ(white->featureData[0], before * 0.7f);
  EXPECT_EQ(white.work->lmagn[128], (float)std::log((double)white.work->magn[128]));
}

TEST(NrMode0Model, HistogramsTakeOnlyFeaturesInsideTheirRange) {
  Reducer r;
  r->featureData[3] = 100.0f;                        // the upper limit itself
  r->featureData[0] = -0.01f;                        // negative
  r->featureData[4] = std::nextafter(100.0f, 0.0f);  // just inside
  NR_FeatureParameterEstimation(r.get(), 0);
  EXPECT_EQ(std::count(r->histLrt, r->histLrt + NR_HIST_BINS, 0), NR_HIST_BINS);
  EXPECT_EQ(std::count(r->histSpecFlat, r->histSpecFlat + NR_HIST_BINS, 0), NR_HIST_BINS);
  EXPECT_EQ(r->histSpecDiff[999], 1);
  r->featureData[0] = 0.82f;
  NR_FeatureParameterEstimation(r.get(), 0);
  EXPECT_EQ(r->histSpecFlat[16], 1);
}

// Model estimated from histograms: {lrt bin, count} pairs and so on.
NSinst_t* Estimate(Reducer& r, std::initializer_list<std::pair<int, int>> lrt,
                   std::initializer_list<std::pair<int, int>> flat,
                   std::initializer_list<std::pair<int, int>> diff) {
  for (auto [bin, n] : lrt) r->histLrt[bin] = n;
  for (auto [bin, n] : flat) r->histSpecFlat[bin] = n;
  for (auto [bin, n] : diff) r->histSpecDiff[bin] = n;
  NR_FeatureParameterEstimation(r.get(), 1);
  return r.get();
}

TEST(NrMode0Model, ThresholdsAndWeightsFollowTheHistograms) {
  const auto spread = {std::pair{1, 25}, std::pair{8, 25}};  // mean 0.5, fluctuating
  Reducer a, b, c, d, e;
  // Steady ratio: top threshold, and the difference feature is left out
  // though its threshold moves.
  NSinst_t* s = Estimate(a, {{3, 50}}, {}, {{4, 30}});
  EXPECT_FLOAT_EQ(s->priorModelPars[0], 1.0f);
  EXPECT_NEAR(s->priorModelPars[3], 1.2f * 0.45f, 1e-6f);
  EXPECT_EQ(s->priorModelPars[6], 0.0f);
  // Close peaks of similar weight merge; all three features count; the
  // histograms are cleared after the estimate.
  s = Estimate(b, spread, {{16, 20}, {18, 12}}, {{4, 30}});
  EXPECT_NEAR(s->priorModelPars[0], 1.2f * 0.5f, 1e-6f);
  EXPECT_NEAR(s->priorModelPars[1], 0.9f * 0.875f, 1e-6f);
  EXPECT_FLOAT_EQ(s->priorModelPars[5], 1.0f / 3.0f);
  EXPECT_EQ(std::count(s->histLrt, s->histLrt + NR_HIST_BINS, 0), NR_HIST_BINS);
  // Two light peaks become one heavy enough to trust.
  s = Estimate(c, spread, {{16, 10}, {17, 6}}, {});
  EXPECT_NEAR(s->priorModelPars[1], 0.9f * 0.85f, 1e-6f);
  EXPECT_FLOAT_EQ(s->priorModelPars[5], 0.5f);
  // Too light, or a peak below 0.6: flatness out; a low difference peak clamps.
  d->modelUpdatePars[0] = 0;
  s = Estimate(d, spread, {{16, 10}, {30, 4}}, {{0, 10}});
  EXPECT_FLOAT_EQ(s->priorModelPars[1], 0.5f);
  EXPECT_FLOAT_EQ(s->priorModelPars[3], 0.16f);
  EXPECT_FLOAT_EQ(s->priorModelPars[4], 1.0f);
  EXPECT_EQ(s->histSpecFlat[16], 10) << "kept without the clearing mode";
  // Counts beyond the averaging range only: the threshold clamps to its minimum.
  s = Estimate(e, {{20, 50}}, {{5, 40}}, {});
  EXPECT_FLOAT_EQ(s->priorModelPars[0], 0.2f);
  EXPECT_FLOAT_EQ(s->priorModelPars[5], 0.0f);
}

// The raw prior of one feature alone: zero SNR halves the likelihood ratio.
float OneFeaturePrior(int feature, float startLogLrt, float flatness, float difference) {
  Reducer r;
  std::fill(r->logLrtTimeAvg, r->logLrtTimeAvg + kBins, startLogLrt);
  r->featureData[0] = flatness;
  r->featureData[4] = difference;
  for (int k = 0; k < 3; ++k) r->priorModelPars[4 + k] = k == feature ? 1.0f : 0.0f;
  std::vector<float> zero(kBins, 0.0f), prob(kBins);
  NR_SpeechNoiseRatioEsti(r.get(), prob.data(), zero.data(), zero.data());
  return r->rawPriorSpeechProb;
}

double Ind(double x) { return 0.5 * (std::tanh(x) + 1.0); }

TEST(NrMode0Model, IndicatorWidthsFollowThePreviousIndicator) {
  EXPECT_NEAR(OneFeaturePrior(0, 0.6f, 0.5f, 0.5f), Ind(8.0 * (0.3 - 0.5)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(0, 1.4f, 0.5f, 0.5f), Ind(4.0 * (0.7 - 0.5)), 1e-5);
  // Flatness: steep when the first indicator, not the flatness, is above 0.5.
  EXPECT_NEAR(OneFeaturePrior(1, 1.4f, 0.3f, 0.5f), Ind(8.0 * (0.5 - 0.3)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(1, 0.6f, 0.3f, 0.5f), Ind(4.0 * (0.5 - 0.3)), 1e-5);
  // Difference: steep when the flatness indicator is below 0.5.
  EXPECT_NEAR(OneFeaturePrior(2, 0.6f, 0.8f, 0.6f), Ind(8.0 * (0.6 - 0.5)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(2, 0.6f, 0.3f, 0.6f), Ind(4.0 * (0.6 - 0.5)), 1e-5);
}

TEST(NrMode0Frame, RefusalSilenceAndTheExtentOfTheOutput) {
  Reducer r;
  Spectrum zero(NR_SPECTRUM_FLOATS + 4, 0.0f);
  zero[7] = -0.0f;
  r->initFlag = 0;
  EXPECT_EQ(NR_Webrtc_Process(r.get(), zero.data()), 1);
  EXPECT_EQ(r->nframe_cnt, 0);
  r->initFlag = 1;
  r->noise_cnt = 5;
  EXPECT_EQ(r.Run(zero), zero) << "digital silence passes untouched";
  EXPECT_TRUE(std::signbit(r.Run(zero)[7]));
  EXPECT_EQ(r->noise_cnt, 5);
  EXPECT_EQ(r->frame_cnt, 2);
  EXPECT_EQ(r->updates, 0);
  std::mt19937 rng(3);
  Spectrum frame = FrameSpectrum(WhiteNoise(rng, 1, 3000.0), 0);
  frame.resize(NR_SPECTRUM_FLOATS + 4, 12345.0f);
  frame = r.Run(frame);
  for (int i = NR_SPECTRUM_FLOATS; i < NR_SPECTRUM_FLOATS + 4; ++i) EXPECT_EQ(frame[i], 12345.0f);
}

TEST(NrMode0Frame, FilterStaysBetweenItsFloorAndUnity) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Reducer r;
  int edges[6] = {20, 128, 128, 128, 128, 128}, intensity[7] = {0, 30, 30, 30, 30, 30, 30};
  NR_SetMode(r.get(), edges, intensity);  // floors 0.5 below bin 20, 0.001 above
  std::vector<double> x = WhiteNoise(rng, 60, 2000.0);
  for (size_t n = 0; n < x.size(); ++n) x[n] += 8000.0 * std::sin(2 * M_PI * n / 16.0);
  for (int f = 0; f < 60; ++f) {
    r.Run(FrameSpectrum(x, f));
    if (f % 2 != 0) continue;
    float sum = 0.0f;
    for (int i = 0; i < kBins; ++i) sum += r->finalFilter[i];
    ASSERT_FLOAT_EQ(r->sum_filter, sum);
    ASSERT_EQ(r.work->theFilter[0], 1.25f) << "bin 0 passes at the top band's offset";
    for (int i = 1; i < 128; ++i) {
      ASSERT_GE(r.work->theFilter[i], r->denoiseBound[i]) << "seed " << seed << " bin " << i;
      ASSERT_LE(r.work->theFilter[i], 1.0f) << "seed " << seed << " bin " << i;
      ASSERT_EQ(r->smooth[i], r.work->theFilter[i]);
    }
  }
}

// The spectral moving average, mirrored about bins 0 and 128.
float MirroredMean(const float* filter, int i, int h, float smoothConst) {
  float sum = 0.0f;
  for (int j = i - h; j <= i + h; ++j) sum += filter[j < 0 ? -j : (j > 128 ? 256 - j : j)];
  return sum * smoothConst;
}

TEST(NrMode0Frame, StoredFilterIsTheMirroredMeanTimesOneFrameGain) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  for (const int order : {10, 4, 21, 1, 0}) {
    Reducer r(16000, 1);
    NR_SetSmoothOrder(r.get(), order);
    const std::vector<double> x = WhiteNoise(rng, 30, 1500.0);
    for (int f = 0; f < 30; ++f) r.Run(FrameSpectrum(x, f));
    const int h = order >> 1;
    auto ref = [&](int i) {
      return h == 0 ? r.work->theFilter[i]
                    : MirroredMean(r.work->theFilter, i, h, r->moving_average_smooth_const);
    };
    const float gain = r->preFilter[64] / ref(64);
    EXPECT_GT(gain, 0.84f);
    EXPECT_LT(gain, 1.35f);
    for (int i = 0; i < 128; ++i)
      ASSERT_NEAR(r->preFilter[i], gain * ref(i), 2e-5f) << order << " " << i;
    EXPECT_NEAR(r->preFilter[128], ref(128), 2e-5f) << "bin 128 takes no frame gain";
  }
}

TEST(NrMode0Frame, FramesBetweenUpdatesRepeatTheStoredFilter) {
  std::mt19937 rng(5);
  Reducer r(16000, 3);
  const std::vector<double> x = WhiteNoise(rng, 9, 2500.0);
  for (int f = 0; f < 9; ++f) {
    const Spectrum in = FrameSpectrum(x, f);
    const std::vector<float> held(r->preFilter, r->preFilter + kBins);
    const Spectrum out = r.Run(in);
    EXPECT_EQ(r->sum_filter > 0.0f, f % 3 == 0) << "activity only on update frames";
    if (f % 3 == 0) continue;
    for (int k = 0; k < 2 * kBins; ++k) {
      const float gain = k < 256 ? held[k / 2] : 1.0f;  // bin 128 as it came
      ASSERT_EQ(out[k], (in[k] / kScale) * gain * kScale) << k;
    }
  }
}

TEST(NrMode0Frame, MagnitudesCountTheTopBinTwice) {
  Reducer r;
  Spectrum frame(NR_SPECTRUM_FLOATS, 0.0f);
  frame[0] = 2.7f * kScale;  // bins 0 and 128 keep the integer part only
  double sum = 2.0 + 1.0 + 130 * 1.52587890625e-05, energy = (2.7 * 2.7 + 1.5 * 1.5) / 129.0;
  for (int k = 1; k <= 128; ++k) {
    const double re = k == 128 ? -1.5 : 0.01 * k, im = k == 128 ? 0.0 : -0.02;
    frame[2 * k] = (float)(re * kScale);
    frame[2 * k + 1] = (float)(im * kScale);
    sum += std::sqrt(re * re + im * im);
    energy += (re * re + im * im) / 129.0;
  }
  r.Run(frame);
  EXPECT_NEAR(r.work->magn[0], 2.0f, 1e-4f);
  EXPECT_NEAR(r.work->magn[128], 1.5f, 1e-4f);
  EXPECT_NEAR(r->sumMagn, sum, 1e-4);
  EXPECT_NEAR(r->signalEnergy, energy, 1e-4);
}

// The first estimate of a bin uses the smoothing constant its lower
// neighbour chose; a change of constant can only lower the estimate.
TEST(NrMode0Frame, NoiseUpdateCarriesTheSmoothingConstantUpward) {
  std::mt19937 rng(43);
  Reducer r(16000, 1);
  std::vector<double> x = WhiteNoise(rng, 40, 1000.0);
  for (size_t n = 128 * 20; n < x.size(); ++n) x[n] += 6000.0 * std::sin(0.7 * n);
  int carried = 0;
  for (int f = 0; f < 40; ++f) {
    const std::vector<float> prev(r->noisePrev, r->noisePrev + kBins);
    r.Run(FrameSpectrum(x, f));
    float gamma = 0.9f;
    for (int i = 0; i < kBins; ++i) {
      const float p = r.work->probSpeechFinal[i], magn = r.work->magn[i];
      auto smooth = [&](float g) {
        return prev[i] * g + (1.0f - g) * (magn * (1.0f - p) + prev[i] * p);
      };
      const float first = smooth(gamma), old = gamma;
      gamma =
          p > 0.3f ? 0.99f : (p < 0.3f ? (float)(((double)(1.0f - p) - 0.7) / 6.0 + 0.9) : 0.9f);
      carried += gamma != old;
      ASSERT_EQ(r->noisePrev[i], gamma == old ? first : std::min(first, smooth(gamma)))
          << f << " " << i;
    }
  }
  EXPECT_GT(carried, 100);
}

TEST(NrMode0Frame, GainMapRaisesOrLowersTheWholeFrame) {
  std::mt19937 rng(13);
  const std::vector<double> x = WhiteNoise(rng, 40, 2000.0);
  Reducer mapped(16000, 1), plain(16000, 1);
  for (int f = 0; f < 40; ++f) {
    const Spectrum in = FrameSpectrum(x, f);
    std::memcpy(plain.get(), mapped.get(), sizeof(NSinst_t));  // same state but the flag
    plain->gainmap = 0;
    plain->NRInternalWorkBuf = plain.work.get();
    plain->InternalParams = plain.tune.get();
    const Spectrum a = mapped.Run(in), b = plain.Run(in);
    const double ratio = std::sqrt(Energy(b) / Energy(in));
    double f1 = 1.0, f2 = 1.0;
    if (ratio > 0.5)
      f1 = ratio * ((ratio - 0.5) * 1.3 + 1.0) > 1.0 ? 1.0 / ratio : (ratio - 0.5) * 1.3 + 1.0;
    if (ratio < 0.5) f2 = 1.0 - (0.5 - ratio) * 0.3;
    const double gain = f2 + mapped->priorSpeechProb * (f1 - f2);
    for (int k = 0; k < 2 * kBins; ++k) {
      ASSERT_NEAR(a[k], (k < 256 ? gain : 1.0) * b[k], 2e-4 * std::fabs(b[k]) + 1e-3)
          << f << " " << k;
    }
  }
}

TEST(NrMode0Frame, QuietRegisterOnlyRaisesALowerScale) {
  std::mt19937 rng(17);
  const std::vector<double> x = WhiteNoise(rng, 3, 2000.0);
  Reducer r(16000, 1);
  r->priorModelPars[4] = 0.0f;  // a raw prior of 0: not speech
  r->modelUpdatePars[0] = 0;
  r->SilenceSupressScale = 0.2f;
  r->IndIsNotSpeech_buf = 0x7FFF;
  r.Run(FrameSpectrum(x, 0));
  EXPECT_EQ(r->IndIsNotSpeech_buf, 0xFFFFu);
  EXPECT_EQ(r->SilenceSupressScale, 0.5f);
  r->priorModelPars[4] = 1.0f;
  r->priorModelPars[0] = -100.0f;  // a raw prior of 1
  r.Run(FrameSpectrum(x, 1));
  EXPECT_EQ(r->SilenceSupressScale, 1.0f);
}

TEST(NrMode0Frame, InitialFilterHoldsUntilConvergence) {
  std::mt19937 rng(19);
  const std::vector<double> x = WhiteNoise(rng, 70, 2000.0);
  Reducer with, without;
  with->initial_filter_enable = 1;
  with->initial_filter_gain = 0.5f;
  const int limit = 62;  // frames in half a second at 16 kHz
  for (int f = 0; f < 70; ++f) {
    with.Run(FrameSpectrum(x, f));
    without.Run(FrameSpectrum(x, f));
    ASSERT_EQ(with->converged_flag, f + 1 > limit ? 1 : 0) << f;
    if (f % 2 != 0) continue;
    // Up to the converging frame the stored filters differ by one factor
    // near 0.5 (the frame gain map sees the lower level), then not at all.
    const float ratio = f <= limit ? with->preFilter[1] / without->preFilter[1] : 1.0f;
    if (f <= limit) {
      EXPECT_NEAR(ratio, 0.5f, 0.5f * 0.17f) << f;
    }
    for (int k = 1; k < 128; ++k)
      ASSERT_NEAR(with->preFilter[k], ratio * without->preFilter[k], 1e-5f);
  }
  EXPECT_EQ(with->frame_cnt, limit + 1);
}

TEST(NrMode0Frame, ConvergesEarlyWhenTheFilterSumFallsBelowAThreshold) {
  std::mt19937 rng(23);
  const std::vector<double> x = WhiteNoise(rng, 30, 3000.0);
  Reducer r(16000, 1);
  r.tune->fmode0_alpha_dd_pr_snr = 0.0f;  // the gain follows this frame alone
  for (int f = 0; f < 30; ++f) r.Run(FrameSpectrum(x, f));
  ASSERT_EQ(r->converged_flag, 0);
  for (int i = 0; i < kBins; ++i) ASSERT_EQ(r->magnPrev[i], 0.0f) << "no memory without alpha";
  Spectrum quiet(NR_SPECTRUM_FLOATS, 0.0f);  // far below the noise but for one bin
  for (int k = 0; k < kBins; ++k) quiet[2 * k] = 0.01f * r->noisePrev[k] * kScale;
  quiet[60] = 1.6f * r->noisePrev[30] * kScale;
  r.Run(quiet);
  EXPECT_GT(r->sum_filter, 0.0f);
  EXPECT_LT(r->sum_filter, 0.4f);
  EXPECT_EQ(r->converged_flag, 1);
  r.Run(FrameSpectrum(x, 0));
  EXPECT_EQ(r->converged_flag, 1) << "once set it stays";
}

TEST(NrMode0Frame, LongNearSilenceRecoversTheFilterAndRestartsTheTracker) {
  std::mt19937 rng(29);
  Reducer r;
  const std::vector<double> loud = WhiteNoise(rng, 20, 10000.0), faint = WhiteNoise(rng, 123, 3.0);
  for (int f = 0; f < 20; ++f) r.Run(FrameSpectrum(loud, f));
  ASSERT_EQ(r->noise_cnt, 0);
  for (int f = 0; f < 121; ++f) r.Run(FrameSpectrum(faint, f));
  ASSERT_EQ(r->noise_cnt, 121);
  ASSERT_EQ(r->nframe_cnt, 1) << "the next frame rests";
  const std::vector<float> held(r->preFilter, r->preFilter + kBins);
  r.Run(FrameSpectrum(faint, 121));
  for (int k = 0; k < 128; ++k) ASSERT_EQ(r->preFilter[k], held[k] * 0.99f + 0.00999999f) << k;
  EXPECT_EQ(r->preFilter[128], held[128]);
  r.Run(FrameSpectrum(faint, 122));  // an update frame restarts the tracker softly
  EXPECT_EQ(r->updates, 0);
  EXPECT_EQ(r->counter[0], 200);
  r->noise_cnt = 32767;
  r.Run(FrameSpectrum(faint, 0));
  EXPECT_EQ(r->noise_cnt, 121) << "folds back instead of wrapping";
}

TEST(NrMode0Frame, FewerProcessedBinsTakeTheLastFilterAndOnlyTheFrameGain) {
  std::mt19937 rng(9);
  Reducer r(16000, 1);
  r->process_bins = 100;
  const std::vector<double> x = WhiteNoise(rng, 20, 2500.0);
  Spectrum in, out;
  for (int f = 0; f < 20; ++f) out = r.Run(in = FrameSpectrum(x, f));
  for (int i = 100; i < kBins; ++i) EXPECT_EQ(r.work->theFilter[i], r.work->theFilter[99]);
  const float gain = out[220] / in[220];
  for (int k = 200; k < 258; ++k) {
    EXPECT_NEAR(out[k], in[k] * (k < 256 ? gain : 1.0f), 1e-3f * std::fabs(in[k]) + 1e-3f) << k;
  }
}

TEST(NrMode0Reducer, StationaryNoiseIsAttenuatedAfterOneSecond) {
  const uint32_t seed = zebtest::TestSeed();
  for (const int fs : {8000, 16000, 48000}) {
    std::mt19937 rng(seed);
    const int second = fs / 128;
    const std::vector<double> noise = WhiteNoise(rng, 3 * second, 1000.0);
    Reducer r(fs);
    r.Configure(0, 10, 1);
    double in = 0.0, out = 0.0;
    for (int f = 0; f < 3 * second; ++f) {
      const Spectrum frame = FrameSpectrum(noise, f), result = r.Run(frame);
      if (f >= second) in += Energy(frame), out += Energy(result);
    }
    const double db = 10.0 * std::log10(out / in);
    printf("mode 0 at %d Hz: white noise after 1 s changed by %.2f dB\n", fs, db);
    EXPECT_LE(db, -12.0) << fs << " Hz, seed " << seed;
  }
}

TEST(NrMode0Reducer, StrongTonePassesWithoutSpectralSmoothing) {
  // One second of noise, then a 1 kHz tone 20 dB above it per bin, measured
  // over its first half second in the bins where it stands out.
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  std::vector<double> noisy = WhiteNoise(rng, 187, 1000.0), tone(noisy.size());
  for (size_t n = 128 * 125; n < noisy.size(); ++n)
    noisy[n] += tone[n] = 10000.0 * std::sin(M_PI * n / 8.0);
  Reducer r;
  r.Configure(1, 0, 1);
  double in = 0.0, out = 0.0;
  for (int f = 0; f < 187; ++f) {
    const Spectrum frame = FrameSpectrum(noisy, f), result = r.Run(frame);
    if (f < 125) continue;
    const Spectrum clean = FrameSpectrum(tone, f);
    for (int k = 0; k < kBins; ++k) {
      if (Energy(clean, k, k) < 100.0 * 1000.0 * 1000.0 * 128.0) continue;
      in += Energy(frame, k, k);
      out += Energy(result, k, k);
    }
  }
  const double db = 10.0 * std::log10(out / in);
  printf("mode 0, smooth level 0: the tone changed by %.2f dB\n", db);
  EXPECT_NEAR(db, 0.0, 3.0) << "seed " << seed;
}

TEST(NrMode0Reducer, EchoReferenceDrivesTheEstimatorsOnly) {
  std::mt19937 rng(37);
  const std::vector<double> x = WhiteNoise(rng, 12, 2000.0);
  Reducer own, ref;
  ref->aec_enable_flag = 1;
  for (int f = 0; f < 12; ++f) {
    // The frame is the reference turned over: same estimates, so the gain
    // lands on the frame with the opposite sign.
    const Spectrum reference = FrameSpectrum(x, f);
    Spectrum frame(reference);
    for (float& v : frame) v = -v;
    std::copy(reference.begin(), reference.end(), ref->fft_aec_buf_2ch);
    Spectrum expected = own.Run(reference);
    for (float& v : expected) v = -v;
    ASSERT_EQ(ref.Run(frame), expected) << f;
  }
  std::fill(ref->fft_aec_buf_2ch, ref->fft_aec_buf_2ch + NR_SPECTRUM_FLOATS, 0.0f);
  const Spectrum frame = FrameSpectrum(x, 3);
  EXPECT_EQ(ref.Run(frame), frame) << "a silent reference stops the frame";
}

}  // namespace
