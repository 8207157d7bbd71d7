// Filter mode 0 (the quantile-noise mode): estimators on constructed spectra,
// the frame routine's rules, and a full noise reducer loop on synthetic
// noisy spectra.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
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
constexpr int kSpecFloats = NR_SPECTRUM_FLOATS;
constexpr float kSpecScale = 65536.0f;

// One noise reducer with its own scratch and tuning table, as a family carves
// them out of its working buffer.
struct Mode0Instance {
  std::unique_ptr<NSinst_t> inst{new NSinst_t()};
  std::unique_ptr<NSWorkingBuf_t> work{new NSWorkingBuf_t()};
  std::unique_ptr<NSCJsoninst_t> tune{new NSCJsoninst_t()};
  NSinst_t* operator->() { return inst.get(); }
  NSinst_t* get() { return inst.get(); }
};

// Mode-0 floor and over-subtraction of one intensity, as the band mapping
// gives them.
void Mode0Pair(int x, float* overdrive, float* bound) {
  if (x <= 9) {
    *overdrive = 1.0f;
    *bound = (float)(0.5 - (double)x * 0.025);
  } else if (x <= 19) {
    *overdrive = (float)(1.0 + (double)(x - 10) * 0.01);
    *bound = (float)(0.25 - (double)(x - 10) * 0.0125);
  } else {
    *overdrive = (float)(1.1 + (double)(x - 20) * 0.015);
    *bound = (float)(0.125 - (double)(x - 20) * 0.0124);
  }
}

// The start state of the mode's fields, written out here so that these tests
// stand on their own: one intensity for all bins, bin 128 sharing its cells
// with the next table as the record lays them out.
void InitMode0(Mode0Instance& m, int fs, int intensity = 20) {
  NSinst_t* s = m.get();
  std::memset(s, 0, sizeof *s);
  *m.tune = kNrInternalParamsDefault;
  s->InternalParams = m.tune.get();
  s->NRInternalWorkBuf = m.work.get();
  s->dbg_level = 7;
  s->fs = fs;
  s->pn = 128;
  s->channel = 1;
  s->anaLen = 256;
  s->magnLen = kBins;
  s->process_bins = kBins;
  s->moving_average_order = 10;
  s->moving_average_smooth_const = 1.0f / 11.0f;
  s->nframe_update_filter = 2;
  for (int i = 0; i < kBins; ++i) {
    s->lquantile[i] = 8.0f;
    s->density[i] = 0.3f;
    s->smooth[i] = 0.9999f;
    s->startNoiseFilter[i] = 1.0f;
    s->logLrtTimeAvg[i] = 0.5f;
  }
  s->counter[0] = 200;
  s->quantite = 0.25f;
  s->priorSpeechProb = 0.5f;
  s->featureData[0] = s->featureData[3] = s->featureData[4] = 0.5f;
  s->blockInd = 0xFFFF;
  const float model[NR_MODEL_PARAMS] = {0.5f, 0.5f, 1.0f, 0.5f, 1.0f, 0.0f, 0.0f};
  std::memcpy(s->priorModelPars, model, sizeof model);
  const int pars[NR_MODEL_UPDATE_PARAMS] = {2, 50, 0, 50};
  std::memcpy(s->modelUpdatePars, pars, sizeof pars);
  s->featureExtractionParams = NSParaExtract_t{0.1f, 0.05f, 0.1f, 1.0f, 1.2f, 0.9f, 0.6f,
                                               0.1f, 0.2f,  0.5f, 0.5f, 0.05f, 1.0f, 0.2f,
                                               0.95f, 0.1f, 1.0f, 0.16f, 15,   15};
  s->SilenceSupressScale = 1.0f;
  s->initFlag = 1;
  float od, bound;
  Mode0Pair(intensity, &od, &bound);
  for (int i = 0; i < NR_BAND_TABLE_BINS; ++i) {
    s->overdrive[i] = od;
    s->denoiseBound[i] = bound;
  }
  s->denoiseBound[0] = od;  // bin 128's over-subtraction
  s->gainmap = 1;           // bin 128's floor cell, overwritten by the flag
}

// Packed spectrum in PCM scale -> the record's frame spectrum, as NR_Process
// brings it in.
void LoadSpectrum(NSinst_t* s, const std::vector<float>& spec) {
  for (int i = 0; i < kBins; ++i) {
    s->frequency_buffer[i].re = spec[2 * i] / kSpecScale;
    s->frequency_buffer[i].im = spec[2 * i + 1] / kSpecScale;
  }
}

// Runs one frame through the mode as NR_Process does and returns the output.
std::vector<float> RunFrame(NSinst_t* s, const std::vector<float>& spec) {
  LoadSpectrum(s, spec);
  s->sum_filter = 0.0f;
  std::vector<float> out(spec);
  EXPECT_EQ(NR_Webrtc_Process(s, out.data()), 0);
  return out;
}

// Sine-windowed 256-point spectra of a signal, hop 128, by a plain DFT.
class SpectrumMaker {
 public:
  SpectrumMaker() {
    for (int n = 0; n < 256; ++n) {
      window_[n] = std::sin(M_PI * (n + 0.5) / 256.0);
      cos_[n] = std::cos(2.0 * M_PI * n / 256.0);
      sin_[n] = std::sin(2.0 * M_PI * n / 256.0);
    }
  }
  std::vector<float> Frame(const std::vector<double>& signal, int frame) const {
    std::vector<float> spec(kSpecFloats, 0.0f);
    const double* x = signal.data() + 128 * frame;
    for (int k = 0; k < kBins; ++k) {
      double re = 0.0, im = 0.0;
      for (int n = 0; n < 256; ++n) {
        const double v = x[n] * window_[n];
        re += v * cos_[(n * k) & 255];
        im -= v * sin_[(n * k) & 255];
      }
      spec[2 * k] = (float)re;
      spec[2 * k + 1] = (float)im;
    }
    return spec;
  }

 private:
  double window_[256], cos_[256], sin_[256];
};

std::vector<double> WhiteNoise(std::mt19937& rng, int frames, double rms) {
  std::normal_distribution<double> g(0.0, rms);
  std::vector<double> x(128 * (frames + 1));
  for (double& v : x) v = g(rng);
  return x;
}

double BinEnergy(const std::vector<float>& spec, int lo, int hi) {
  double e = 0.0;
  for (int k = lo; k <= hi; ++k) e += (double)spec[2 * k] * spec[2 * k] +
                                     (double)spec[2 * k + 1] * spec[2 * k + 1];
  return e;
}

// Random magnitude spectrum of stationary noise, in the record's scale.
void NoiseMagnitudes(std::mt19937& rng, float sigma, float* magn) {
  std::normal_distribution<float> g(0.0f, sigma);
  for (int i = 0; i < kBins; ++i) {
    const float re = g(rng), im = g(rng);
    magn[i] = std::sqrt(re * re + im * im) + 1.5258789e-05f;
  }
}

float SumOf(const float* v, int n) {
  float s = 0.0f;
  for (int i = 0; i < n; ++i) s += v[i];
  return s;
}

// ---------------------------------------------------------------------------
// Helpers of the mode.

TEST(NrMode0Helpers, IntegerAbsoluteValueTruncatesTowardZero) {
  EXPECT_EQ(NrIntAbs(0.99f), 0.0f);
  EXPECT_EQ(NrIntAbs(-0.99f), 0.0f);
  EXPECT_EQ(NrIntAbs(1.0f), 1.0f);
  EXPECT_EQ(NrIntAbs(-3.7f), 3.0f);
  EXPECT_EQ(NrIntAbs(4.99f), 4.0f);
  EXPECT_EQ(NrIntAbs(1e12f), (float)INT_MAX);
  EXPECT_EQ(NrIntAbs(-1e12f), (float)INT_MAX);
  EXPECT_EQ(NrIntAbs(NAN), 0.0f);
}

TEST(NrMode0Helpers, BandTablesReadOnIntoTheFollowingCells) {
  Mode0Instance m;
  InitMode0(m, 16000, 20);
  m->denoiseBound[0] = 1.25f;
  EXPECT_EQ(NrOverdriveAt(m.get(), 127), m->overdrive[127]);
  EXPECT_EQ(NrOverdriveAt(m.get(), 128), 1.25f);
  EXPECT_EQ(NrDenoiseBoundAt(m.get(), 0), 1.25f);
  // gainmap 1 read as a float: the smallest denormal.
  EXPECT_EQ(NrDenoiseBoundAt(m.get(), 128), std::numeric_limits<float>::denorm_min());
  // blockInd's word: 0xFFFF with a cleared upper half.
  const float blockWord = NrDenoiseBoundAt(m.get(), 129);
  uint32_t bits;
  std::memcpy(&bits, &blockWord, 4);
  EXPECT_EQ(bits, 0xFFFFu);
  EXPECT_GT(blockWord, 0.0f);
  EXPECT_LT(blockWord, 1e-39f);
}

// ---------------------------------------------------------------------------
// Quantile noise tracker.

TEST(NrMode0Quantile, ConvergesToTheQuantileOfStationaryNoise) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Mode0Instance m;
  InitMode0(m, 16000);
  const float sigma = 0.02f;  // per real/imaginary part, record scale
  std::vector<float> noise(kBins);
  for (int frame = 0; frame < 1200; ++frame) {
    NoiseMagnitudes(rng, sigma, m.work->magn);
    NR_ComputeSpectralFlatness(m.get(), m.work->magn);
    NR_NoiseEstimation(m.get(), m.work->magn, noise.data());
  }
  EXPECT_EQ(m->updates, 200);
  EXPECT_FLOAT_EQ(m->quantite, 0.15f);
  // Rayleigh magnitudes of scale sigma: the 15 % quantile is
  // sigma * sqrt(-2 ln 0.85) = 0.570 sigma. Average the bins' estimates.
  const double expected = sigma * std::sqrt(-2.0 * std::log(0.85));
  double logSum = 0.0;
  for (int i = 0; i < kBins; ++i) {
    EXPECT_EQ(noise[i], m->quantile[i]);
    logSum += std::log(noise[i]);
  }
  const double geoMean = std::exp(logSum / kBins);
  EXPECT_NEAR(geoMean / expected, 1.0, 0.25) << "seed " << seed;
}

TEST(NrMode0Quantile, EstimateMovesEveryUpdateThenOncePerBlock) {
  std::mt19937 rng(7);
  Mode0Instance m;
  InitMode0(m, 16000);
  std::vector<float> noise(kBins);
  std::vector<float> before(kBins);
  for (int frame = 0; frame < 199; ++frame) {
    std::memcpy(before.data(), m->quantile, sizeof(float) * kBins);
    NoiseMagnitudes(rng, 0.02f, m.work->magn);
    NR_ComputeSpectralFlatness(m.get(), m.work->magn);
    NR_NoiseEstimation(m.get(), m.work->magn, noise.data());
    ASSERT_NE(std::memcmp(before.data(), m->quantile, sizeof(float) * kBins), 0) << frame;
  }
  // Settled from the 200th update on: published only when the block count
  // comes round, on updates 201 and 401 here.
  int changes = 0;
  for (int frame = 0; frame < 401; ++frame) {
    std::memcpy(before.data(), m->quantile, sizeof(float) * kBins);
    NoiseMagnitudes(rng, 0.02f, m.work->magn);
    NR_ComputeSpectralFlatness(m.get(), m.work->magn);
    NR_NoiseEstimation(m.get(), m.work->magn, noise.data());
    if (std::memcmp(before.data(), m->quantile, sizeof(float) * kBins) != 0) ++changes;
  }
  EXPECT_EQ(changes, 2);
}

TEST(NrMode0Quantile, DensityHitNeedsADistanceBelowOne) {
  for (const float lmagn : {0.99f, 1.0f, -0.99f}) {
    Mode0Instance m;
    InitMode0(m, 16000);
    m->counter[0] = 199;
    m->updates = 10;
    // An upward step of 0.25 * 40 / 200 = 0.05 lands the quantile on 0.
    for (int i = 0; i < kBins; ++i) {
      m.work->lmagn[i] = lmagn;
      m->lquantile[i] = lmagn > 0.0f ? -0.05f : 0.0f;
    }
    std::vector<float> noise(kBins);
    NR_NoiseEstimation(m.get(), m.work->magn, noise.data());
    const float hit = (199.0f * 0.3f + 5.0f) / 200.0f;
    if (lmagn == 1.0f) {
      EXPECT_EQ(m->lquantile[3], 0.0f);
      EXPECT_EQ(m->density[3], 0.3f) << "a distance of 1.0 is no hit";
    } else {
      EXPECT_EQ(m->density[3], hit) << lmagn;
    }
    EXPECT_EQ(m->counter[0], 200);
  }
}

// ---------------------------------------------------------------------------
// Spectral flatness and difference.

TEST(NrMode0Features, FlatnessSeparatesWhiteFromTonalSpectra) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Mode0Instance white, tonal;
  InitMode0(white, 16000);
  InitMode0(tonal, 16000);
  for (int frame = 0; frame < 40; ++frame) {
    NoiseMagnitudes(rng, 0.02f, white.work->magn);
    white->sumMagn = SumOf(white.work->magn, kBins);
    NR_ComputeSpectralFlatness(white.get(), white.work->magn);

    for (int i = 0; i < kBins; ++i) tonal.work->magn[i] = 1e-4f;
    tonal.work->magn[20] = 2.0f;
    tonal.work->magn[21] = 1.0f;
    tonal->sumMagn = SumOf(tonal.work->magn, kBins);
    NR_ComputeSpectralFlatness(tonal.get(), tonal.work->magn);
    ASSERT_GE(white->featureData[0], 0.0f);
    ASSERT_LE(white->featureData[0], 1.0f);
  }
  EXPECT_GT(white->featureData[0], 0.6f) << "seed " << seed;
  EXPECT_LT(tonal->featureData[0], 0.05f);
}

TEST(NrMode0Features, ZeroBinDecaysFlatnessAndKeepsTheLogarithms) {
  Mode0Instance m;
  InitMode0(m, 16000);
  for (int i = 0; i < kBins; ++i) m.work->magn[i] = 0.01f * (1 + i % 5);
  m.work->magn[40] = 0.0f;
  m->featureData[0] = 0.5f;
  NR_ComputeSpectralFlatness(m.get(), m.work->magn);
  EXPECT_FLOAT_EQ(m->featureData[0], 0.35f);
  EXPECT_EQ(m.work->lmagn[41], (float)std::log((double)m.work->magn[41]));
  EXPECT_EQ(m.work->lmagn[128], (float)std::log((double)m.work->magn[128]));
  EXPECT_TRUE(std::isinf(m.work->lmagn[40]));
}

TEST(NrMode0Features, DifferenceIsWhatThePauseSpectrumCannotExplain) {
  std::mt19937 rng(11);
  Mode0Instance same, other;
  InitMode0(same, 16000);
  InitMode0(other, 16000);
  for (Mode0Instance* m : {&same, &other}) {
    for (int i = 0; i < kBins; ++i) (*m)->magnAvgPause[i] = 0.01f + 0.001f * (i % 7);
    (*m)->featureData[5] = 1e-4f;
    (*m)->featureData[4] = 0.0f;
    (*m)->signalEnergy = 2.5f;
  }
  // A scaled copy of the pause spectrum is fully explained by it.
  for (int i = 0; i < kBins; ++i) same.work->magn[i] = 3.0f * same->magnAvgPause[i];
  same->sumMagn = SumOf(same.work->magn, kBins);
  NR_ComputeSpectralDifference(same.get(), same.work->magn);
  EXPECT_NEAR(same->featureData[4], 0.0f, 1e-3f);
  EXPECT_EQ(same->featureData[6], 2.5f);

  NoiseMagnitudes(rng, 0.02f, other.work->magn);
  other->sumMagn = SumOf(other.work->magn, kBins);
  NR_ComputeSpectralDifference(other.get(), other.work->magn);
  EXPECT_GT(other->featureData[4], 0.3f * 0.5f);
}

// ---------------------------------------------------------------------------
// Histograms and model update.

TEST(NrMode0Model, HistogramsTakeFeaturesInsideTheirRangeOnly) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->featureData[3] = 0.35f;  // LRT bin 3
  m->featureData[0] = 0.82f;  // flatness bin 16
  m->featureData[4] = 99.05f;  // difference bin 990
  NR_FeatureParameterEstimation(m.get(), 0);
  EXPECT_EQ(m->histLrt[3], 1);
  EXPECT_EQ(m->histSpecFlat[16], 1);
  EXPECT_EQ(m->histSpecDiff[990], 1);

  Mode0Instance edge;
  InitMode0(edge, 16000);
  edge->featureData[3] = 100.0f;                           // the upper limit itself
  edge->featureData[0] = -0.01f;                           // negative
  edge->featureData[4] = std::nextafter(100.0f, 0.0f);     // just inside
  NR_FeatureParameterEstimation(edge.get(), 0);
  int lrt = 0, flat = 0;
  for (int i = 0; i < NR_HIST_BINS; ++i) {
    lrt += edge->histLrt[i];
    flat += edge->histSpecFlat[i];
  }
  EXPECT_EQ(lrt, 0);
  EXPECT_EQ(flat, 0);
  EXPECT_EQ(edge->histSpecDiff[999], 1);
}

TEST(NrMode0Model, LikelihoodThresholdFollowsTheHistogram) {
  Mode0Instance narrow, spread, beyond;
  InitMode0(narrow, 16000);
  InitMode0(spread, 16000);
  InitMode0(beyond, 16000);
  narrow->histLrt[3] = 50;  // no fluctuation
  narrow->histSpecDiff[4] = 30;
  NR_FeatureParameterEstimation(narrow.get(), 1);
  EXPECT_FLOAT_EQ(narrow->priorModelPars[0], 1.0f);
  // A steady likelihood ratio also leaves the difference feature out, though
  // its threshold still moves.
  EXPECT_NEAR(narrow->priorModelPars[3], 1.2f * 0.45f, 1e-6f);
  EXPECT_FLOAT_EQ(narrow->priorModelPars[6], 0.0f);

  spread->histLrt[1] = 25;  // 0.15
  spread->histLrt[8] = 25;  // 0.85
  NR_FeatureParameterEstimation(spread.get(), 1);
  EXPECT_NEAR(spread->priorModelPars[0], 1.2f * 0.5f, 1e-6f);

  beyond->histLrt[20] = 50;  // all counts above the averaging range
  NR_FeatureParameterEstimation(beyond.get(), 1);
  EXPECT_FLOAT_EQ(beyond->priorModelPars[0], 0.2f);
}

TEST(NrMode0Model, FlatnessAndDifferenceThresholdsAndWeights) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->histLrt[1] = 25;
  m->histLrt[8] = 25;
  m->histSpecFlat[16] = 20;  // 0.825
  m->histSpecFlat[18] = 12;  // 0.925, merged: 12 > 0.5 * 20
  m->histSpecDiff[4] = 30;   // 0.45
  NR_FeatureParameterEstimation(m.get(), 1);
  EXPECT_NEAR(m->priorModelPars[1], 0.9f * 0.875f, 1e-6f);
  EXPECT_NEAR(m->priorModelPars[3], 1.2f * 0.45f, 1e-6f);
  EXPECT_FLOAT_EQ(m->priorModelPars[4], 1.0f / 3.0f);
  EXPECT_FLOAT_EQ(m->priorModelPars[5], 1.0f / 3.0f);
  EXPECT_FLOAT_EQ(m->priorModelPars[6], 1.0f / 3.0f);
  for (int i = 0; i < NR_HIST_BINS; ++i) {
    ASSERT_EQ(m->histLrt[i] | m->histSpecFlat[i] | m->histSpecDiff[i], 0) << i;
  }

  // Too few counts: neither feature is trusted, the difference threshold still
  // moves and is clamped.
  Mode0Instance weak;
  InitMode0(weak, 16000);
  weak->modelUpdatePars[0] = 0;  // keep the histograms
  weak->histLrt[1] = 25;
  weak->histLrt[8] = 25;
  weak->histSpecFlat[16] = 10;
  weak->histSpecFlat[30] = 4;  // too light to merge with the first
  weak->histSpecDiff[0] = 10;  // 0.05 * 1.2 = 0.06, raised to 0.16
  NR_FeatureParameterEstimation(weak.get(), 1);
  EXPECT_FLOAT_EQ(weak->priorModelPars[1], 0.5f);
  EXPECT_FLOAT_EQ(weak->priorModelPars[3], 0.16f);
  EXPECT_FLOAT_EQ(weak->priorModelPars[4], 1.0f);
  EXPECT_FLOAT_EQ(weak->priorModelPars[5], 0.0f);
  EXPECT_FLOAT_EQ(weak->priorModelPars[6], 0.0f);
  EXPECT_EQ(weak->histSpecFlat[16], 10);

  // Two light neighbours merge into one peak heavy enough to be trusted.
  Mode0Instance merged;
  InitMode0(merged, 16000);
  merged->histLrt[1] = 25;
  merged->histLrt[8] = 25;
  merged->histSpecFlat[16] = 10;
  merged->histSpecFlat[17] = 6;
  NR_FeatureParameterEstimation(merged.get(), 1);
  EXPECT_NEAR(merged->priorModelPars[1], 0.9f * 0.85f, 1e-6f);
  EXPECT_FLOAT_EQ(merged->priorModelPars[5], 0.5f);

  // A flatness peak below its position threshold is left out.
  Mode0Instance low;
  InitMode0(low, 16000);
  low->histSpecFlat[5] = 40;  // 0.275 < 0.6
  NR_FeatureParameterEstimation(low.get(), 1);
  EXPECT_FLOAT_EQ(low->priorModelPars[1], 0.5f);
  EXPECT_FLOAT_EQ(low->priorModelPars[5], 0.0f);
}

// The prior of one feature alone, with the other two weighted out: the
// likelihood ratio's mean is half the starting ratio (zero SNR halves it).
float OneFeaturePrior(int feature, float startLogLrt, float flatness, float difference) {
  Mode0Instance m;
  InitMode0(m, 16000);
  for (int i = 0; i < kBins; ++i) m->logLrtTimeAvg[i] = startLogLrt;
  m->featureData[0] = flatness;
  m->featureData[4] = difference;
  for (int k = 0; k < 3; ++k) m->priorModelPars[4 + k] = k == feature ? 1.0f : 0.0f;
  std::vector<float> zero(kBins, 0.0f), prob(kBins);
  NR_SpeechNoiseRatioEsti(m.get(), prob.data(), zero.data(), zero.data());
  EXPECT_NEAR(m->featureData[3], 0.5f * startLogLrt, 1e-5f);
  return m->rawPriorSpeechProb;
}

double Indicator(double x) { return 0.5 * (std::tanh(x) + 1.0); }

TEST(NrMode0Model, IndicatorWidthsFollowThePreviousIndicator) {
  // Likelihood ratio against 0.5: steep below, shallow above.
  EXPECT_NEAR(OneFeaturePrior(0, 0.6f, 0.5f, 0.5f), Indicator(8.0 * (0.3 - 0.5)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(0, 1.4f, 0.5f, 0.5f), Indicator(4.0 * (0.7 - 0.5)), 1e-5);
  // Flatness: steep when the first indicator (not the flatness) is above 0.5.
  EXPECT_NEAR(OneFeaturePrior(1, 1.4f, 0.3f, 0.5f), Indicator(8.0 * (0.5 - 0.3)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(1, 0.6f, 0.3f, 0.5f), Indicator(4.0 * (0.5 - 0.3)), 1e-5);
  // Difference: steep when the flatness indicator is below 0.5.
  EXPECT_NEAR(OneFeaturePrior(2, 0.6f, 0.8f, 0.6f), Indicator(8.0 * (0.6 - 0.5)), 1e-5);
  EXPECT_NEAR(OneFeaturePrior(2, 0.6f, 0.3f, 0.6f), Indicator(4.0 * (0.6 - 0.5)), 1e-5);
}

TEST(NrMode0Model, SpeechProbabilityFollowsTheLocalSnr) {
  Mode0Instance m;
  InitMode0(m, 16000);
  std::vector<float> prior(kBins, 0.0f), post(kBins, 0.0f), prob(kBins);
  // High prior but no posterior SNR gives a strongly negative ratio.
  for (int i = 0; i < 64; ++i) prior[i] = 1000.0f;
  for (int i = 64; i < kBins; ++i) prior[i] = post[i] = 100.0f;
  for (int frame = 0; frame < 20; ++frame) {
    NR_SpeechNoiseRatioEsti(m.get(), prob.data(), prior.data(), post.data());
    ASSERT_GE(m->priorSpeechProb, 0.01f);
    ASSERT_LE(m->priorSpeechProb, 0.999f);
  }
  EXPECT_LT(prob[10], 0.1f);
  EXPECT_GT(prob[100], 0.99f);
  EXPECT_LE(prob[100], 0.999f);
  float mean = 0.0f;
  for (int i = 0; i < kBins; ++i) mean += m->logLrtTimeAvg[i];
  EXPECT_FLOAT_EQ(m->featureData[3], mean / kBins);
}

// ---------------------------------------------------------------------------
// The frame routine.

struct Mode0Loop : ::testing::Test {
  SpectrumMaker maker;
};

TEST_F(Mode0Loop, RefusesAnUninitialisedInstance) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->initFlag = 0;
  std::vector<float> frame(kSpecFloats, 3.0f);
  const std::vector<float> copy = frame;
  EXPECT_EQ(NR_Webrtc_Process(m.get(), frame.data()), 1);
  EXPECT_EQ(frame, copy);
  EXPECT_EQ(m->nframe_cnt, 0);
}

TEST_F(Mode0Loop, DigitalSilencePassesAndMovesOnlyTheFrameCounters) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->noise_cnt = 5;
  std::vector<float> frame(kSpecFloats, 0.0f);
  frame[7] = -0.0f;
  EXPECT_EQ(NR_Webrtc_Process(m.get(), frame.data()), 0);
  EXPECT_EQ(m->nframe_cnt, 1);
  EXPECT_EQ(m->frame_cnt, 1);
  EXPECT_EQ(m->noise_cnt, 5);
  EXPECT_EQ(m->updates, 0);
  EXPECT_TRUE(std::signbit(frame[7]));
}

TEST_F(Mode0Loop, WritesTheSpectrumAndNothingBehindIt) {
  std::mt19937 rng(3);
  Mode0Instance m;
  InitMode0(m, 16000);
  const std::vector<double> x = WhiteNoise(rng, 1, 3000.0);
  std::vector<float> frame = maker.Frame(x, 0);
  LoadSpectrum(m.get(), frame);
  frame.resize(kSpecFloats + 4, 12345.0f);
  ASSERT_EQ(NR_Webrtc_Process(m.get(), frame.data()), 0);
  for (int i = kSpecFloats; i < kSpecFloats + 4; ++i) EXPECT_EQ(frame[i], 12345.0f);
}

TEST_F(Mode0Loop, FilterStaysWithinItsFloorAndUnity) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  Mode0Instance m;
  InitMode0(m, 16000, 20);
  // Band 0 at intensity 0 (floor 0.5), the rest at 30 (floor 0.001).
  for (int i = 0; i < 20; ++i) m->denoiseBound[i] = 0.5f, m->overdrive[i] = 1.0f;
  for (int i = 20; i < NR_BAND_TABLE_BINS; ++i) {
    Mode0Pair(30, &m->overdrive[i], &m->denoiseBound[i]);
  }
  m->denoiseBound[0] = m->overdrive[127];
  std::vector<double> x = WhiteNoise(rng, 120, 2000.0);
  for (int n = 0; n < (int)x.size(); ++n) x[n] += 8000.0 * std::sin(2 * M_PI * 1000.0 * n / 16000.0);
  for (int frame = 0; frame < 120; ++frame) {
    RunFrame(m.get(), maker.Frame(x, frame));
    if (frame % 2 != 0) continue;  // update frames only
    float sum = 0.0f;
    for (int i = 0; i < kBins; ++i) {
      ASSERT_GE(m->finalFilter[i], 0.0f);
      ASSERT_LE(m->finalFilter[i], 1.0f);
      sum += m->finalFilter[i];
    }
    ASSERT_FLOAT_EQ(m->sum_filter, sum) << frame;
    // Bin 0's floor is the top band's over-subtraction, so it always passes
    // at that level.
    ASSERT_EQ(m.work->theFilter[0], 1.25f);
    for (int i = 1; i < 128; ++i) {
      ASSERT_GE(m.work->theFilter[i], m->denoiseBound[i]) << "seed " << seed << " bin " << i;
      ASSERT_LE(m.work->theFilter[i], 1.0f) << "seed " << seed << " bin " << i;
      // The decision-directed memory keeps the clamped value.
      ASSERT_EQ(m->smooth[i], m.work->theFilter[i]);
    }
  }
}

// Reference of the spectral moving average: a window of 2h + 1 bins,
// mirrored about bin 0 and about bin 128.
float MirroredMean(const float* filter, int i, int h, float smoothConst) {
  float sum = 0.0f;
  for (int j = i - h; j <= i + h; ++j) {
    const int k = j < 0 ? -j : (j > 128 ? 256 - j : j);
    sum += filter[k];
  }
  return sum * smoothConst;
}

TEST_F(Mode0Loop, StoredFilterIsTheMirroredMeanTimesOneFrameGain) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 rng(seed);
  for (const int order : {10, 4, 21, 1, 0}) {
    Mode0Instance m;
    InitMode0(m, 16000);
    m->nframe_update_filter = 1;
    m->moving_average_order = order;
    m->moving_average_smooth_const = 1.0f / (float)(order + 1);
    std::vector<double> x = WhiteNoise(rng, 30, 1500.0);
    for (int frame = 0; frame < 30; ++frame) RunFrame(m.get(), maker.Frame(x, frame));
    const int h = order >> 1;
    std::vector<float> ref(kBins);
    for (int i = 0; i < kBins; ++i) {
      ref[i] = h == 0 ? m.work->theFilter[i]
                      : MirroredMean(m.work->theFilter, i, h, m->moving_average_smooth_const);
    }
    const float gain = m->preFilter[64] / ref[64];
    EXPECT_GT(gain, 0.84f);
    EXPECT_LT(gain, 1.35f);
    for (int i = 0; i < 128; ++i) {
      EXPECT_NEAR(m->preFilter[i], gain * ref[i], 2e-5f) << "order " << order << " bin " << i;
    }
    // The top bin is left out of the frame gain.
    EXPECT_NEAR(m->preFilter[128], ref[128], 2e-5f) << "order " << order;
  }
}

TEST_F(Mode0Loop, MagnitudesCountTheTopBinTwice) {
  Mode0Instance m;
  InitMode0(m, 16000);
  std::vector<float> frame(kSpecFloats, 0.0f);
  frame[0] = 2.7f * kSpecScale;     // bin 0: integer part only
  frame[1] = 0.0f;
  frame[256] = -1.5f * kSpecScale;  // bin 128
  double sum = 2.0 + 1.0;           // the two integer magnitudes
  double energy = (2.7 * 2.7 + 1.5 * 1.5) / 129.0;
  for (int k = 1; k <= 128; ++k) {
    const double re = k == 128 ? -1.5 : 0.01 * k, im = k == 128 ? 0.0 : -0.02;
    frame[2 * k] = (float)(re * kSpecScale);
    frame[2 * k + 1] = (float)(im * kSpecScale);
    sum += std::sqrt(re * re + im * im);
    energy += (re * re + im * im) / 129.0;
  }
  RunFrame(m.get(), frame);
  EXPECT_NEAR(m.work->magn[0], 2.0f, 1e-4f);
  EXPECT_NEAR(m.work->magn[128], 1.5f, 1e-4f);
  sum += 130 * 1.52587890625e-05;  // the floor added to every magnitude
  EXPECT_NEAR(m->sumMagn, sum, 1e-4);
  EXPECT_NEAR(m->signalEnergy, energy, 1e-4);
}

// The noise update, bin by bin from the bottom: the first estimate of a bin
// uses the smoothing constant its lower neighbour chose.
TEST_F(Mode0Loop, NoiseUpdateCarriesTheSmoothingConstantUpward) {
  std::mt19937 rng(43);
  Mode0Instance m;
  InitMode0(m, 16000);
  m->nframe_update_filter = 1;
  std::vector<double> x = WhiteNoise(rng, 40, 1000.0);
  for (size_t n = 128 * 20; n < x.size(); ++n) x[n] += 6000.0 * std::sin(2 * M_PI * 0.11 * n);
  int carried = 0;
  for (int frame = 0; frame < 40; ++frame) {
    const std::vector<float> before(m->noisePrev, m->noisePrev + kBins);
    RunFrame(m.get(), maker.Frame(x, frame));
    const float range = m.tune->fmode0_delta_prob_range;
    float gamma = 0.9f;
    for (int i = 0; i < kBins; ++i) {
      const float p = m.work->probSpeechFinal[i], magn = m.work->magn[i];
      auto smooth = [&](float g) {
        return before[i] * g + (1.0f - g) * (magn * (1.0f - p) + before[i] * p);
      };
      const float first = smooth(gamma);
      const float old = gamma;
      gamma = p > range ? 0.99f
                        : (p < range ? (float)(((double)(1.0f - p) - 0.7) / 6.0 + 0.9) : 0.9f);
      const float expected = gamma == old ? first : std::min(first, smooth(gamma));
      if (gamma != old) ++carried;
      ASSERT_EQ(m->noisePrev[i], expected) << "frame " << frame << " bin " << i;
    }
  }
  EXPECT_GT(carried, 100);
}

TEST_F(Mode0Loop, FramesBetweenUpdatesRepeatTheStoredFilter) {
  std::mt19937 rng(5);
  Mode0Instance m;
  InitMode0(m, 16000);
  m->nframe_update_filter = 3;
  std::vector<double> x = WhiteNoise(rng, 12, 2500.0);
  for (int frame = 0; frame < 12; ++frame) {
    const std::vector<float> in = maker.Frame(x, frame);
    const std::vector<float> held(m->preFilter, m->preFilter + kBins);
    const std::vector<float> out = RunFrame(m.get(), in);
    if (frame % 3 == 0) {
      EXPECT_GT(m->sum_filter, 0.0f) << frame;
      continue;
    }
    EXPECT_EQ(m->sum_filter, 0.0f) << "no estimate between updates";
    for (int k = 0; k < 128; ++k) {
      ASSERT_EQ(out[2 * k], (in[2 * k] / kSpecScale) * held[k] * kSpecScale) << k;
      ASSERT_EQ(out[2 * k + 1], (in[2 * k + 1] / kSpecScale) * held[k] * kSpecScale) << k;
    }
    EXPECT_EQ(out[256], (in[256] / kSpecScale) * kSpecScale) << "bin 128 as it came";
  }
}

TEST_F(Mode0Loop, FewerProcessedBinsTakeTheLastFilterAndOnlyTheFrameGain) {
  std::mt19937 rng(9);
  Mode0Instance m;
  InitMode0(m, 16000);
  m->process_bins = 100;
  m->nframe_update_filter = 1;
  std::vector<double> x = WhiteNoise(rng, 20, 2500.0);
  std::vector<float> in, out;
  for (int frame = 0; frame < 20; ++frame) {
    in = maker.Frame(x, frame);
    out = RunFrame(m.get(), in);
  }
  for (int i = 100; i < kBins; ++i) EXPECT_EQ(m.work->theFilter[i], m.work->theFilter[99]);
  const float gain = out[2 * 110] / in[2 * 110];
  for (int k = 100; k < 128; ++k) {
    EXPECT_NEAR(out[2 * k], in[2 * k] * gain, 1e-3f * std::fabs(in[2 * k]) + 1e-3f) << k;
  }
  EXPECT_NEAR(out[256], in[256], 1e-3f * std::fabs(in[256]) + 1e-3f);
}

TEST_F(Mode0Loop, GainMapRaisesOrLowersTheWholeFrame) {
  std::mt19937 rng(13);
  const std::vector<double> x = WhiteNoise(rng, 40, 2000.0);
  Mode0Instance mapped, plain;
  InitMode0(mapped, 16000);
  InitMode0(plain, 16000);
  plain->gainmap = 0;
  mapped->nframe_update_filter = plain->nframe_update_filter = 1;
  for (int frame = 0; frame < 40; ++frame) {
    const std::vector<float> in = maker.Frame(x, frame);
    // Both start the frame from the same state but for the flag.
    std::memcpy(plain.get(), mapped.get(), sizeof(NSinst_t));
    plain->gainmap = 0;
    plain->NRInternalWorkBuf = plain.work.get();
    plain->InternalParams = plain.tune.get();
    const std::vector<float> outMapped = RunFrame(mapped.get(), in);
    const std::vector<float> outPlain = RunFrame(plain.get(), in);
    const double ratio = std::sqrt(BinEnergy(outPlain, 0, 128) / BinEnergy(in, 0, 128));
    double f1 = 1.0, f2 = 1.0;
    if (ratio > 0.5) {
      f1 = (ratio - 0.5) * 1.3 + 1.0;
      if (ratio * f1 > 1.0) f1 = 1.0 / ratio;
    }
    if (ratio < 0.5) f2 = 1.0 - (0.5 - ratio) * 0.3;
    const double gain = f2 + mapped->priorSpeechProb * (f1 - f2);
    for (int k = 0; k < 128; ++k) {
      ASSERT_NEAR(outMapped[2 * k], gain * outPlain[2 * k],
                  2e-4 * std::fabs(outPlain[2 * k]) + 1e-3)
          << "frame " << frame << " bin " << k;
    }
    ASSERT_NEAR(outMapped[256], outPlain[256], 2e-4 * std::fabs(outPlain[256]) + 1e-3);
  }
}

TEST_F(Mode0Loop, QuietRegisterOnlyRaisesALowerScale) {
  std::mt19937 rng(17);
  const std::vector<double> x = WhiteNoise(rng, 4, 2000.0);
  Mode0Instance m;
  InitMode0(m, 16000);
  m->nframe_update_filter = 1;
  // Zero weights make the raw prior 0: every frame counts as not speech.
  m->priorModelPars[4] = 0.0f;
  m->modelUpdatePars[0] = 0;
  m->SilenceSupressScale = 0.2f;
  m->IndIsNotSpeech_buf = 0x7FFF;
  RunFrame(m.get(), maker.Frame(x, 0));
  EXPECT_EQ(m->IndIsNotSpeech_buf, 0xFFFFu);
  EXPECT_EQ(m->SilenceSupressScale, 0.5f);
  RunFrame(m.get(), maker.Frame(x, 1));
  EXPECT_EQ(m->SilenceSupressScale, 0.5f) << "kept once at least 0.5";

  // A frame that may be speech sets it back to unity.
  m->priorModelPars[4] = 1.0f;
  m->priorModelPars[0] = -100.0f;
  RunFrame(m.get(), maker.Frame(x, 2));
  EXPECT_EQ(m->IndIsNotSpeech_buf & 1u, 0u);
  EXPECT_EQ(m->SilenceSupressScale, 1.0f);
}

TEST_F(Mode0Loop, InitialFilterHoldsUntilConvergence) {
  std::mt19937 rng(19);
  const std::vector<double> x = WhiteNoise(rng, 80, 2000.0);
  Mode0Instance with, without;
  InitMode0(with, 16000);
  InitMode0(without, 16000);
  with->initial_filter_enable = 1;
  with->initial_filter_gain = 0.5f;
  const unsigned short limit = 62;  // half a second at 16 kHz
  for (int frame = 0; frame < 70; ++frame) {
    const std::vector<float> in = maker.Frame(x, frame);
    const std::vector<float> a = RunFrame(with.get(), in);
    const std::vector<float> b = RunFrame(without.get(), in);
    // The frame that converges still carries the initial gain; the frame gain
    // map sees the lower level, so the stored filters differ by one factor
    // near 0.5 over all bins.
    if (frame % 2 == 0 && frame + 1 <= limit + 1) {
      const float ratio = with->preFilter[1] / without->preFilter[1];
      EXPECT_GT(ratio, 0.5f * 0.84f);
      EXPECT_LT(ratio, 0.5f / 0.84f);
      for (int k = 1; k < 128; ++k) {
        ASSERT_NEAR(with->preFilter[k], ratio * without->preFilter[k], 1e-5f) << frame;
      }
    }
    if (frame + 1 <= limit) {
      ASSERT_EQ(with->converged_flag, 0) << frame;
    } else {
      ASSERT_EQ(with->converged_flag, 1) << frame;
      ASSERT_EQ(with->frame_cnt, limit + 1) << "stops above the limit";
      if (frame % 2 == 0 && frame > limit) {
        for (int k = 1; k < 128; ++k) ASSERT_EQ(with->preFilter[k], without->preFilter[k]);
      }
    }
  }
}

TEST_F(Mode0Loop, ConvergesEarlyWhenTheFilterSumFallsBelowAThreshold) {
  std::mt19937 rng(23);
  const std::vector<double> x = WhiteNoise(rng, 30, 3000.0);
  Mode0Instance m;
  InitMode0(m, 16000);
  m->nframe_update_filter = 1;
  m.tune->fmode0_alpha_dd_pr_snr = 0.0f;  // the gain follows this frame alone
  for (int frame = 0; frame < 30; ++frame) RunFrame(m.get(), maker.Frame(x, frame));
  ASSERT_EQ(m->converged_flag, 0);
  // A frame far below the noise but for one bin just above it.
  std::vector<float> quiet(kSpecFloats, 0.0f);
  for (int k = 0; k < kBins; ++k) quiet[2 * k] = 0.01f * m->noisePrev[k] * kSpecScale;
  quiet[2 * 30] = 1.6f * m->noisePrev[30] * kSpecScale;
  RunFrame(m.get(), quiet);
  EXPECT_GT(m->sum_filter, 0.0f);
  EXPECT_LT(m->sum_filter, 0.4f);
  EXPECT_EQ(m->converged_flag, 1);
  // Once set it stays.
  RunFrame(m.get(), maker.Frame(x, 0));
  EXPECT_EQ(m->converged_flag, 1);
}

TEST_F(Mode0Loop, LongNearSilenceRecoversTheFilterAndRestartsTheTracker) {
  std::mt19937 rng(29);
  Mode0Instance m;
  InitMode0(m, 16000);
  const std::vector<double> loud = WhiteNoise(rng, 20, 10000.0);
  for (int frame = 0; frame < 20; ++frame) RunFrame(m.get(), maker.Frame(loud, frame));
  ASSERT_EQ(m->noise_cnt, 0);
  const std::vector<double> faint = WhiteNoise(rng, 140, 3.0);
  for (int frame = 0; frame < 121; ++frame) RunFrame(m.get(), maker.Frame(faint, frame));
  ASSERT_EQ(m->noise_cnt, 121);
  // Between updates the held filter steps toward unity before it is applied.
  ASSERT_EQ(m->nframe_cnt, 1);  // the next frame rests
  const std::vector<float> held(m->preFilter, m->preFilter + kBins);
  RunFrame(m.get(), maker.Frame(faint, 121));
  for (int k = 0; k < 128; ++k) {
    EXPECT_EQ(m->preFilter[k], held[k] * 0.99f + 0.00999999f) << k;
  }
  EXPECT_EQ(m->preFilter[128], held[128]);
  // An update frame restarts the tracker softly.
  RunFrame(m.get(), maker.Frame(faint, 122));
  EXPECT_EQ(m->updates, 0);
  EXPECT_EQ(m->counter[0], 200);
}

TEST_F(Mode0Loop, QuietCountFoldsBackInsteadOfWrapping) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->noise_cnt = 32767;
  std::vector<float> faint(kSpecFloats, 0.0f);
  for (int k = 0; k < kBins; ++k) faint[2 * k] = 50.0f;
  RunFrame(m.get(), faint);
  EXPECT_EQ(m->noise_cnt, 121);
}

TEST_F(Mode0Loop, AlphaZeroLeavesTheDecisionDirectedMemoryAlone) {
  std::mt19937 rng(31);
  Mode0Instance m;
  InitMode0(m, 16000);
  m.tune->fmode0_alpha_dd_pr_snr = 0.0f;
  const std::vector<double> x = WhiteNoise(rng, 10, 2000.0);
  for (int frame = 0; frame < 10; ++frame) RunFrame(m.get(), maker.Frame(x, frame));
  for (int i = 0; i < kBins; ++i) {
    ASSERT_EQ(m->smooth[i], 0.9999f);
    ASSERT_EQ(m->magnPrev[i], 0.0f);
  }
  EXPECT_NE(m->noisePrev[10], 0.0f);
}

TEST_F(Mode0Loop, UpdateCycleWrapWarns) {
  Mode0Instance m;
  InitMode0(m, 16000);
  m->nframe_update_filter = 70000;
  m->nframe_cnt = 65535;
  std::vector<float> frame(kSpecFloats, 0.0f);
  const std::string out = zebtest::CaptureStdout([&] { NR_Webrtc_Process(m.get(), frame.data()); });
  EXPECT_EQ(out, "[ALGO_MSG_WRN] [ANR]Warning! nframe_cnt is reset.\t\n");
  EXPECT_EQ(m->nframe_cnt, 0);
  m->dbg_level = 1;
  m->nframe_cnt = 65535;
  EXPECT_EQ(zebtest::CaptureStdout([&] { NR_Webrtc_Process(m.get(), frame.data()); }), "");
}

TEST(NrMode0Postfilter, OrderWidensWithTheReduction) {
  Mode0Instance m;
  InitMode0(m, 16000);
  std::vector<float> magn(kBins, 256.0f), filter(kBins, 1.0f);
  // energy_out with unit filter: 129 (each bin (256 / 256)^2).
  postfilter_calculation(m.get(), 129.0f / 0.4f, magn.data(), filter.data());
  EXPECT_EQ(m->moving_average_order, 1);
  EXPECT_EQ(m->moving_average_smooth_const, 0.5f);
  postfilter_calculation(m.get(), 129.0f / 0.2f, magn.data(), filter.data());
  EXPECT_EQ(m->moving_average_order, 11);
  EXPECT_EQ(m->moving_average_smooth_const, 1.0f / 12.0f);
  std::fill(filter.begin(), filter.end(), 0.0f);
  postfilter_calculation(m.get(), 1.0f, magn.data(), filter.data());
  EXPECT_EQ(m->moving_average_order, 21);
}

}  // namespace

namespace {

// ---------------------------------------------------------------------------
// The full noise reducer: NR_Init, NR_Config in mode 0, NR_Process per frame.

struct NoiseReducer {
  Mode0Instance m;
  explicit NoiseReducer(int fs) {
    std::memset(m.get(), 0, sizeof(NSinst_t));
    m->NRInternalWorkBuf = m.work.get();
    m->InternalParams = m.tune.get();
    m->dbg_level = 1;
    _AudioAnrInit init{128, 1, fs};
    EXPECT_EQ(NR_Init(m.get(), &init), 0);
    _AudioAnrConfig config{1, 0, {3, 24, 40, 64, 80, 128}, {20, 20, 20, 20, 20, 20, 20}, 10, 1, 0};
    EXPECT_EQ(NR_Config(m.get(), &config), _ALGO_ANR_RET_SUCCESS);
  }
  std::vector<float> Run(std::vector<float> frame) {
    EXPECT_EQ(NR_Process(m.get(), frame.data()), _ALGO_ANR_RET_SUCCESS);
    return frame;
  }
};


// A noise reducer at the given rate, configured by the user's record with
// the default bands and intensities.
NoiseReducer MakeReducer(int fs, unsigned userMode, unsigned smoothLevel) {
  NoiseReducer r(fs);
  _AudioAnrConfig config{1, userMode, {3, 24, 40, 64, 80, 128}, {20, 20, 20, 20, 20, 20, 20},
                         smoothLevel, 1, 0};
  EXPECT_EQ(NR_Config(r.m.get(), &config), _ALGO_ANR_RET_SUCCESS);
  return r;
}

double Db(double ratio) { return 10.0 * std::log10(ratio); }

TEST(NrMode0Reducer, StationaryNoiseIsAttenuatedAfterOneSecond) {
  const uint32_t seed = zebtest::TestSeed();
  SpectrumMaker maker;
  for (const int fs : {8000, 16000, 48000}) {
    std::mt19937 rng(seed);
    const int framesPerSecond = fs / 128;
    const int frames = 3 * framesPerSecond;
    const std::vector<double> noise = WhiteNoise(rng, frames, 1000.0);
    NoiseReducer nr = MakeReducer(fs, 0, 10);
    double in = 0.0, out = 0.0;
    for (int f = 0; f < frames; ++f) {
      const std::vector<float> frame = maker.Frame(noise, f);
      const std::vector<float> result = nr.Run(frame);
      if (f < framesPerSecond) continue;
      in += BinEnergy(frame, 0, 128);
      out += BinEnergy(result, 0, 128);
    }
    const double db = Db(out / in);
    printf("mode 0 at %d Hz: white noise after 1 s changed by %.2f dB\n", fs, db);
    EXPECT_LE(db, -12.0) << fs << " Hz, seed " << seed;
    EXPECT_EQ(nr.m->converged_flag, 1);
  }
}

// Energy of the output in the bins where the clean signal stands 20 dB above
// the noise, against the input's in the same bins.
struct StrongBinMeter {
  double noisePerBin;
  double in = 0.0, out = 0.0;
  void Add(const std::vector<float>& clean, const std::vector<float>& noisy,
           const std::vector<float>& result) {
    for (int k = 0; k < kBins; ++k) {
      if (BinEnergy(clean, k, k) < 100.0 * noisePerBin) continue;
      in += BinEnergy(noisy, k, k);
      out += BinEnergy(result, k, k);
    }
  }
  double Db() const { return 10.0 * std::log10(out / in); }
};

// One second of noise, then the signal on top: measured over its first
// half second.
double StrongSignalChangeDb(NoiseReducer& nr, const std::vector<double>& signal, uint32_t seed) {
  SpectrumMaker maker;
  std::mt19937 rng(seed);
  const int frames = 125 + 62;
  std::vector<double> noisy = WhiteNoise(rng, frames, 1000.0);
  for (size_t n = 128 * 125; n < noisy.size(); ++n) noisy[n] += signal[n];
  StrongBinMeter meter{1000.0 * 1000.0 * 128.0};
  for (int f = 0; f < frames; ++f) {
    const std::vector<float> frame = maker.Frame(noisy, f);
    const std::vector<float> result = nr.Run(frame);
    if (f >= 125) meter.Add(maker.Frame(signal, f), frame, result);
  }
  return meter.Db();
}

TEST(NrMode0Reducer, StrongTonePassesWithoutSpectralSmoothing) {
  const uint32_t seed = zebtest::TestSeed();
  std::vector<double> tone(128 * 188);
  for (size_t n = 0; n < tone.size(); ++n) tone[n] = 10000.0 * std::sin(2 * M_PI * 16 * n / 256.0);
  NoiseReducer nr = MakeReducer(16000, 1, 0);
  const double db = StrongSignalChangeDb(nr, tone, seed);
  printf("mode 0, smooth level 0: a 1 kHz tone 20 dB above the noise changed by %.2f dB\n", db);
  EXPECT_NEAR(db, 0.0, 3.0) << "seed " << seed;
}

TEST(NrMode0Reducer, DefaultSmoothingCostsANarrowSignalAFewDecibels) {
  // A harmonic series on a 200 Hz fundamental: the 11-bin moving average of
  // the default smoothing level spreads each harmonic's gain over its
  // neighbours, which lowers the harmonics a little.
  const uint32_t seed = zebtest::TestSeed();
  std::vector<double> voice(128 * 188, 0.0);
  for (size_t n = 0; n < voice.size(); ++n) {
    for (int h = 1; h <= 12; ++h) {
      voice[n] += 3000.0 / h * std::sin(2 * M_PI * 200.0 * h * n / 16000.0 + h);
    }
  }
  NoiseReducer nr = MakeReducer(16000, 0, 10);
  const double db = StrongSignalChangeDb(nr, voice, seed);
  printf("mode 0, defaults: harmonics 20 dB above the noise changed by %.2f dB\n", db);
  EXPECT_LT(db, 0.0);
  EXPECT_GT(db, -4.5) << "seed " << seed;
}

TEST(NrMode0Reducer, EchoReferenceDrivesTheEstimatorsOnly) {
  std::mt19937 rng(37);
  SpectrumMaker maker;
  const std::vector<double> x = WhiteNoise(rng, 12, 2000.0);
  NoiseReducer own = MakeReducer(16000, 0, 10);
  NoiseReducer ref = MakeReducer(16000, 0, 10);
  ref.m->aec_enable_flag = 1;
  for (int f = 0; f < 12; ++f) {
    const std::vector<float> frame = maker.Frame(x, f);
    // A reference equal to the frame gives the plain result.
    std::copy(frame.begin(), frame.end(), ref.m->fft_aec_buf_2ch);
    ASSERT_EQ(ref.Run(frame), own.Run(frame)) << f;
  }
  // A silent reference stops the frame before anything is touched.
  std::fill(ref.m->fft_aec_buf_2ch, ref.m->fft_aec_buf_2ch + kSpecFloats, 0.0f);
  const std::vector<float> frame = maker.Frame(x, 3);
  EXPECT_EQ(ref.Run(frame), frame);
}

TEST(NrMode0Reducer, ActivityIsReportedOnUpdateFramesOnly) {
  std::mt19937 rng(41);
  SpectrumMaker maker;
  const std::vector<double> x = WhiteNoise(rng, 9, 2000.0);
  NoiseReducer nr(16000);
  _AudioAnrConfig config{1, 1, {3, 24, 40, 64, 80, 128}, {20, 20, 20, 20, 20, 20, 20}, 10, 0, 0};
  ASSERT_EQ(NR_Config(nr.m.get(), &config), _ALGO_ANR_RET_SUCCESS);
  for (int f = 0; f < 9; ++f) {
    nr.Run(maker.Frame(x, f));
    if (f % 3 == 0) {
      EXPECT_GT(nr.m->sum_filter, 0.0f) << f;
    } else {
      EXPECT_EQ(nr.m->sum_filter, 0.0f) << f;
    }
  }
}

}  // namespace
