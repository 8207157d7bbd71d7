// Biquad design, the section cascade, the magnitude response, and the
// filter operations of the ZebEq family and of the chain.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "AudioEqProcess.h"
#include "AudioProcess.h"
#include "chain_support.h"
#include "eq_biquad.h"
#include "eq_filter.h"
#include "test_support.h"
#include "zebaudio.h"

namespace {

using zebtest::CaptureStdout;
using zebtest::Err;
using zebtest::Msg;

constexpr int kFrame = 128;
constexpr int kPoints = EQ_FREQZ_POINTS;


EQinst_t Fresh(int rateHz, int level = 7) {
  EQinst_t inst;
  std::memset(&inst, 0, sizeof(inst));
  inst.dbg_level = level;
  EQ_Init(&inst, rateHz);
  return inst;
}

_AudioFilterConfig Section(int type, int f0, int q, int gain) {
  _AudioFilterConfig c;
  c.type = static_cast<_EQ_FILTER_TYPE>(type);
  c.f0 = f0;
  c.Q_factor = q;
  c.gain = gain;
  return c;
}

int Design(EQinst_t* inst, int slot1, _AudioFilterConfig cfg) {
  int ret = -2;
  CaptureStdout([&] {
    ret = FilterDesignConfigCheck(inst, &cfg);
    if (ret == 0) ret = FilterGeneratr(inst, slot1, &cfg);
  });
  return ret;
}

// |H| in dB of a slot's normalised coefficients at w radians, in double.
double AnalyticDb(const EQinst_t& inst, int s, double w) {
  const std::complex<double> z1 = std::polar(1.0, -w), z2 = z1 * z1;
  const std::complex<double> b = (double)inst.nor_b0[s] + (double)inst.nor_b1[s] * z1 + (double)inst.nor_b2[s] * z2;
  const std::complex<double> a = 1.0 + (double)inst.nor_a1[s] * z1 + (double)inst.nor_a2[s] * z2;
  return 20.0 * std::log10(std::abs(b / a));
}

double PointToRadians(int k) { return (double)(float)((float)k * (float)(3.1415926 / 512)); }

std::vector<short> Sine(double cyclesPerSample, double amplitude, size_t n) {
  std::vector<short> x(n);
  for (size_t i = 0; i < n; ++i) x[i] = (short)std::lround(amplitude * std::sin(2.0 * M_PI * cyclesPerSample * i));
  return x;
}

void Filter(EQinst_t* inst, std::vector<short>& x) {
  for (size_t f = 0; f + kFrame <= x.size(); f += kFrame) ASSERT_EQ(InfiniteImpulseResponseFilter(inst, &x[f]), 0);
}


// ------------------------------------------------------------- design

TEST(BiquadCheck, RefusesInTheStatedOrderWithItsTexts) {
  EQinst_t inst = Fresh(16000);
  const struct {
    _AudioFilterConfig cfg;
    const char* text;
  } cases[] = {
      {Section(0, 8001, 0, 0), "[FilterDesignConfigCheck]Fail! Filter frequency 8001 exceed Nyquist frequency 8000.\t\n"},
      {Section(9, -1, 0, 0), "[FilterDesignConfigCheck]Fail! Filter frequency cannot be negative -1\t\n"},
      {Section(9, 100, 0, 0), "[FilterDesignConfigCheck]Fail! Q factor can only be positive 0\t\n"},
      {Section(3, 100, 1, 0),
       "[FilterDesignConfigCheck]Fail! Filter can only be EQ_NOTCH_FILTER, EQ_HIGH_PASS_FILTER, "
       "EQ_LOW_PASS_FILTER 3\t\n"},
  };
  for (const auto& c : cases) {
    _AudioFilterConfig cfg = c.cfg;
    const std::string out = CaptureStdout([&] { EXPECT_EQ(FilterDesignConfigCheck(&inst, &cfg), -1); });
    EXPECT_EQ(out, Err(c.text));
  }
  inst.dbg_level = 6;
  _AudioFilterConfig bad = Section(0, 9000, 1, 0);
  EXPECT_EQ(CaptureStdout([&] { FilterDesignConfigCheck(&inst, &bad); }), "");
  // Both ends of the range pass; at fs/2 sin(w0) and alpha are about 0.
  for (int f0 : {0, 8000}) {
    _AudioFilterConfig ok = Section(2, f0, 1, 0);
    EXPECT_EQ(FilterDesignConfigCheck(&inst, &ok), 0) << f0;
  }
}

TEST(BiquadDesign, PeakingAtZeroGainIsTheIdentity) {
  EQinst_t inst = Fresh(16000);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_NOTCH_FILTER, 1000, 3, 0)), 0);
  EXPECT_EQ(inst.iir_type[0], EQ_IIR_DIRECT_FORM_I);
  EXPECT_EQ(inst.nor_b0[0], 1.0f);
  EXPECT_EQ(inst.nor_b1[0], inst.nor_a1[0]);
  EXPECT_EQ(inst.nor_b2[0], inst.nor_a2[0]);
  float resp[kPoints];
  SOS_freqz(&inst, 0, resp);
  for (int k = 0; k < kPoints; ++k) ASSERT_EQ(resp[k], 0.0f) << k;
  std::mt19937 rng(zebtest::TestSeed());
  std::uniform_int_distribution<int> d(-30000, 30000);
  std::vector<short> x(20 * kFrame);
  for (short& v : x) v = (short)d(rng);
  std::vector<short> y = x;
  Filter(&inst, y);
  // With b = a the only departure is the truncation of each output, fed
  // back through 1/A(z): |y - x| stays below the l1 norm of its impulse
  // response (each truncation takes off less than 1, plus float rounding).
  double l1 = 0.0, h1 = 0.0, h2 = 0.0;
  for (int n = 0; n < 4000; ++n) {
    const double h = (n == 0 ? 1.0 : 0.0) - inst.nor_a1[0] * h1 - inst.nor_a2[0] * h2;
    l1 += std::fabs(h);
    h2 = h1;
    h1 = h;
  }
  int worst = 0;
  for (size_t n = 0; n < x.size(); ++n) worst = std::max(worst, std::abs(y[n] - x[n]));
  EXPECT_LE(worst, l1 * 1.05) << "l1 " << l1;
}

TEST(BiquadDesign, ResponseMatchesTheAnalyticResponseOfTheCoefficients) {
  const struct {
    int type, f0, q, gain;
    double atDcDb, atF0Db, atNyqDb;  // the design's intent; NAN where not asserted
  } designs[] = {
      {EQ_NOTCH_FILTER, 1000, 2, 12, 0.0, 12.0, 0.0},
      {EQ_NOTCH_FILTER, 1000, 4, -9, 0.0, -9.0, 0.0},
      {EQ_HIGH_PASS_FILTER, 500, 1, 0, NAN, 0.0, 0.0},  // |H(f0)| = Q
      {EQ_LOW_PASS_FILTER, 3000, 1, 0, 0.0, 0.0, NAN},
      {EQ_HIGH_PASS_FILTER, 2000, 1, 6, 0.0, NAN, 6.0},  // high shelf
      {EQ_LOW_PASS_FILTER, 300, 1, -6, -6.0, NAN, 0.0},  // low shelf
  };
  for (const auto& d : designs) {
    EQinst_t inst = Fresh(16000);
    ASSERT_EQ(Design(&inst, 4, Section(d.type, d.f0, d.q, d.gain)), 0);
    float resp[kPoints];
    ASSERT_EQ(SOS_freqz(&inst, 3, resp), 0);
    for (int k = 1; k < kPoints; ++k) {
      EXPECT_NEAR(resp[k], AnalyticDb(inst, 3, PointToRadians(k)), 2e-3) << d.type << " " << d.f0 << " @" << k;
    }
    const int atF0 = d.f0 * 1024 / 16000;
    if (!std::isnan(d.atDcDb)) {
      EXPECT_NEAR(resp[0], d.atDcDb, 0.05) << d.type << " " << d.f0;
    }
    if (!std::isnan(d.atF0Db)) {
      EXPECT_NEAR(resp[atF0], d.atF0Db, 0.05) << d.type << " " << d.f0;
    }
    if (!std::isnan(d.atNyqDb)) {
      EXPECT_NEAR(resp[kPoints - 1], d.atNyqDb, 0.05) << d.type << " " << d.f0;
    }
  }
}

TEST(BiquadCascade, DirectFormTwoWrapsRatherThanSaturates) {
  EQinst_t inst = Fresh(16000);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_NOTCH_FILTER, 1000, 10, 20)), 0);
  ASSERT_EQ(inst.iir_type[0], EQ_IIR_DIRECT_FORM_II);
  std::vector<short> x = Sine(1000.0 / 16000.0, 10000.0, 30 * kFrame), y = x;
  Filter(&inst, y);
  // The same recursion written out; only the 16-bit store differs from a
  // saturating filter.
  const float b0 = inst.nor_b0[0], b1 = inst.nor_b1[0], b2 = inst.nor_b2[0];
  const float a1 = inst.nor_a1[0], a2 = inst.nor_a2[0];
  float w1 = 0.0f, w2 = 0.0f;
  int wrapped = 0;
  for (size_t n = 0; n < x.size(); ++n) {
    const float w = (float)x[n] - a1 * w1 - a2 * w2;
    const float out = b0 * w + b1 * w1 + b2 * w2;
    w2 = w1;
    w1 = w;
    const int full = (int)out;
    ASSERT_EQ(y[n], (short)(unsigned short)(full & 0xFFFF)) << n;
    if (full > 32767 || full < -32768) ++wrapped;
  }
  EXPECT_GT(wrapped, 100);
}

TEST(BiquadCascade, DirectFormOneFeedsBackTheTruncatedOutput) {
  // Slot 0 made the identity, then redesigned as a shelf: it keeps direct
  // form I, and its feedback runs on the stored 16-bit outputs.
  EQinst_t inst = Fresh(16000);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_NOTCH_FILTER, 1000, 1, 0)), 0);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_LOW_PASS_FILTER, 500, 1, 12)), 0);
  EXPECT_EQ(inst.iir_type[0], EQ_IIR_DIRECT_FORM_I);
  std::vector<short> x = Sine(300.0 / 16000.0, 10000.0, 10 * kFrame), y = x;
  Filter(&inst, y);
  const float b0 = inst.nor_b0[0], b1 = inst.nor_b1[0], b2 = inst.nor_b2[0];
  const float a1 = inst.nor_a1[0], a2 = inst.nor_a2[0];
  float x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  int wrapped = 0;
  for (size_t n = 0; n < x.size(); ++n) {
    const float xn = (float)x[n];
    const float out = b0 * xn + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    const short yn = (short)(unsigned short)((int)out & 0xFFFF);
    if ((int)out != yn) ++wrapped;
    x2 = x1;
    x1 = xn;
    y2 = y1;
    y1 = (float)yn;
    ASSERT_EQ(y[n], yn) << n;
  }
  EXPECT_GT(wrapped, 0);  // +12 dB on a 10000 amplitude leaves 16 bits
}

TEST(BiquadSlots, CountFromOneAndRefuseOutsideOneToTen) {
  EQinst_t inst = Fresh(16000);
  _AudioFilterConfig cfg = Section(EQ_NOTCH_FILTER, 1000, 2, 6);
  std::string out = CaptureStdout([&] { EXPECT_EQ(FilterGeneratr(&inst, 3, &cfg), 0); });
  EXPECT_EQ(out, Msg("[FilterDesign] Filter 3 set successfully.\t\n"));
  for (int s = 0; s < EQ_MAX_BIQUADS; ++s) EXPECT_EQ(inst.filter_flag[s], s == 2 ? 1 : 0) << s;
  EXPECT_EQ(inst.filter_num, 1);
  ASSERT_EQ(Design(&inst, 10, cfg), 0);
  EXPECT_EQ(inst.filter_num, 2);

  const EQinst_t before = inst;
  for (int cnt : {0, 11, -5}) {
    out = CaptureStdout([&] { EXPECT_EQ(FilterGeneratr(&inst, cnt, &cfg), -1); });
    EXPECT_EQ(out, Err("[FilterGeneratr]Fail! Filter index " + std::to_string(cnt) + " out of range [1, 10].\t\n"));
    EXPECT_EQ(std::memcmp(&inst, &before, sizeof(inst)), 0);
  }

  float resp[kPoints];
  out = CaptureStdout([&] { EXPECT_EQ(SOS_freqz(&inst, 2, resp), 0); });
  EXPECT_EQ(out, Msg("[Freqz] Get Filter 3 frequency response successfully.\t\n"));
  EXPECT_EQ(SOS_freqz(&inst, 10, resp), -1);
  EXPECT_EQ(SOS_freqz(&inst, -1, resp), -1);
}

TEST(BiquadSlots, RedesignKeepsTheDelaysAndAnUnknownStructureStops) {
  EQinst_t inst = Fresh(16000);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_NOTCH_FILTER, 1000, 2, 6)), 0);
  std::vector<short> x = Sine(0.05, 3000.0, kFrame);
  Filter(&inst, x);
  const float w1 = inst.x_states[0];
  ASSERT_NE(w1, 0.0f);
  ASSERT_EQ(Design(&inst, 1, Section(EQ_NOTCH_FILTER, 2000, 2, 3)), 0);
  EXPECT_EQ(inst.x_states[0], w1);

  inst.iir_type[0] = 2;
  std::vector<short> frame(kFrame, 100), copy = frame;
  EXPECT_EQ(InfiniteImpulseResponseFilter(&inst, frame.data()), -1);
  EXPECT_EQ(frame, copy);
}

// ------------------------------------------------------ EQ family path

class EqFamilyFilters : public ::testing::Test {
 protected:
  EQ_HANDLE Open(unsigned int channels) {
    work_.assign(ZebEq_GetBufferSize(), 0);
    AudioEqInit init{kFrame, channels, ZEB_EQ_SAMPLE_RATE_16000};
    EQ_HANDLE h = nullptr;
    CaptureStdout([&] { h = ZebEq_Init(work_.data(), &init); });
    return h;
  }
  static AudioEqInternel* Rec(EQ_HANDLE h) { return static_cast<AudioEqInternel*>(h); }
  zebtest::ScopedEnv env_{"DML_PATH", zebtest::kNoLevelFile};
  std::vector<char> work_;
};

TEST_F(EqFamilyFilters, DesignGuardsAndStereoCopy) {
  AudioFilterConfig cfg{EQ_NOTCH_FILTER, 1000, 2, 6};
  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(nullptr, 1, &cfg), ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[_ZebEq_FilterDesign]Fail! The eq handle is NULL.\t\n"));
  std::vector<char> raw(ZebEq_GetBufferSize(), 0);
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(raw.data(), 1, &cfg), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_FilterDesign]Fail! Need init before FilterDesign.\t\n"));

  EQ_HANDLE h = Open(2);
  AudioFilterConfig bad{EQ_NOTCH_FILTER, 9000, 2, 6};
  CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(h, 1, &bad), ALGO_EQ_RET_FAILED); });
  CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(h, 11, &cfg), ALGO_EQ_RET_FAILED); });
  // A type outside the enumeration's range reaches the check as the int it is.
  AudioFilterConfig wild = cfg;
  const int type7 = 7;
  std::memcpy(&wild.type, &type7, sizeof(type7));
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(h, 1, &wild), ALGO_EQ_RET_FAILED); });
  EXPECT_EQ(out, Err("[FilterDesignConfigCheck]Fail! Filter can only be EQ_NOTCH_FILTER, EQ_HIGH_PASS_FILTER, "
                     "EQ_LOW_PASS_FILTER 7\t\n"));
  EXPECT_EQ(Rec(h)->iir_enable, 0);
  CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterDesign(h, 2, &cfg), ALGO_EQ_RET_SUCCESS); });
  EXPECT_EQ(Rec(h)->iir_enable, 1);
  EXPECT_EQ(Rec(h)->eq_inst[0]->filter_flag[1], 1);
  // Channel 2 is a byte copy of channel 1, its level included.
  EXPECT_EQ(std::memcmp(Rec(h)->eq_inst[1], Rec(h)->eq_inst[0], sizeof(EQinst_t)), 0);
  EXPECT_EQ(Rec(h)->eq_inst[1]->dbg_level, 7);
}

TEST_F(EqFamilyFilters, ApplyReturnsTheFrameAsGivenAndAdvancesTheDelays) {
  EQ_HANDLE h = Open(2);
  AudioFilterConfig cfg{EQ_NOTCH_FILTER, 1000, 2, 6};
  CaptureStdout([&] { ASSERT_EQ(ZebEq_FilterDesign(h, 1, &cfg), ALGO_EQ_RET_SUCCESS); });
  std::vector<short> frame = Sine(0.03, 9000.0, 2 * kFrame), copy = frame;
  EXPECT_EQ(ZebEq_FilterApply(h, frame.data()), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(frame, copy);
  // Two passes over the first 128 interleaved samples, both on channel 1's
  // instance; channel 2's stays as designed.
  EQinst_t expected = *Rec(h)->eq_inst[1];
  std::vector<short> ref(copy.begin(), copy.begin() + kFrame);
  InfiniteImpulseResponseFilter(&expected, ref.data());
  InfiniteImpulseResponseFilter(&expected, ref.data());
  EXPECT_EQ(Rec(h)->eq_inst[0]->x_states[0], expected.x_states[0]);
  EXPECT_EQ(Rec(h)->eq_inst[0]->x_states[1], expected.x_states[1]);
  EXPECT_EQ(Rec(h)->eq_inst[1]->x_states[0], 0.0f);

  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterApply(nullptr, frame.data()), ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[_ZebEq_FilterApply]Fail! The eq handle is NULL.\t\n"));
  ASSERT_EQ(ZebEq_Free(h), ALGO_EQ_RET_SUCCESS);
  Rec(h)->eq_inst[0]->dbg_level = 0;  // printed whatever the level
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterApply(h, frame.data()), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_FilterApply]Fail! Need init before FilterApply.\t\n"));
}

TEST_F(EqFamilyFilters, FreqzSumsTheDesignedSections) {
  EQ_HANDLE h = Open(1);
  std::vector<float> resp(kPoints, 5.0f);
  ASSERT_EQ(ZebEq_FilterFreqz(h, resp.data()), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(resp, std::vector<float>(kPoints, 0.0f));

  AudioFilterConfig a{EQ_NOTCH_FILTER, 1000, 2, 6}, b{EQ_HIGH_PASS_FILTER, 4000, 1, -3};
  CaptureStdout([&] {
    ASSERT_EQ(ZebEq_FilterDesign(h, 1, &a), ALGO_EQ_RET_SUCCESS);
    ASSERT_EQ(ZebEq_FilterDesign(h, 5, &b), ALGO_EQ_RET_SUCCESS);
    ASSERT_EQ(ZebEq_FilterFreqz(h, resp.data()), ALGO_EQ_RET_SUCCESS);
  });
  float r0[kPoints], r4[kPoints];
  CaptureStdout([&] {
    SOS_freqz(Rec(h)->eq_inst[0], 0, r0);
    SOS_freqz(Rec(h)->eq_inst[0], 4, r4);
  });
  for (int k = 0; k < kPoints; ++k) ASSERT_EQ(resp[k], 0.0f + r0[k] + r4[k]) << k;
  EXPECT_NEAR(resp[64], 6.0f + r4[64], 0.05f);

  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_FilterFreqz(nullptr, resp.data()), ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[_ZebEq_FilterFreqz]Fail! The eq handle is NULL.\t\n"));
}

// ------------------------------------------------------------- chain

class ChainFilters : public ::testing::Test {
 protected:
  KOL_HANDLE Open(unsigned int channels, unsigned int eqSwitch) {
    chain_.reset(new zebtest::Chain(16000, channels, 0, eqSwitch, 0));
    return chain_->kol;
  }
  static AudioKolInternel* Rec(KOL_HANDLE h) { return static_cast<AudioKolInternel*>(h); }
  zebtest::ScopedEnv env_{"DML_PATH", zebtest::kNoLevelFile};
  std::unique_ptr<zebtest::Chain> chain_;
};

TEST_F(ChainFilters, NullHandleAndMissingEqBufferAreRefused) {
  AudioFilterConfig cfg{EQ_NOTCH_FILTER, 1000, 2, 6};
  short frame[kFrame] = {0};
  float resp[kPoints];
  std::string out = CaptureStdout([&] {
    EXPECT_EQ(ZebKol_FilterDesign(nullptr, 1, &cfg), ALGO_KOL_RET_INVALID_HANDLE);
    EXPECT_EQ(ZebKol_FilterApply(nullptr, frame), ALGO_KOL_RET_INVALID_HANDLE);
    EXPECT_EQ(ZebKol_FilterFreqz(nullptr, resp), ALGO_KOL_RET_INVALID_HANDLE);
  });
  EXPECT_EQ(out, Err("[_ZebKol_FilterDesign]Fail! The kol handle is NULL.\t\n") +
                     Err("[_ZebKol_FilterApply]Fail! The kol handle is NULL.\t\n") +
                     Err("[_ZebKol_FilterFreqz]Fail! The kol handle is NULL.\t\n"));

  KOL_HANDLE h = Open(1, 0);
  ASSERT_NE(h, nullptr);
  out = CaptureStdout([&] { EXPECT_EQ(ZebKol_FilterDesign(h, 1, &cfg), ALGO_KOL_RET_FAILED); });
  EXPECT_EQ(out, Err("[_ZebKol_FilterDesign]Fail! Please initialize EQ buffer before ZebKol_FilterDesign.\t\n"));
  out = CaptureStdout([&] { EXPECT_EQ(ZebKol_FilterApply(h, frame), ALGO_KOL_RET_FAILED); });
  EXPECT_EQ(out, Err("[_ZebKol_FilterApply]Fail! Please initialize EQ buffer befire ZebKol_FilterApply\t\n"));
  out = CaptureStdout([&] { EXPECT_EQ(ZebKol_FilterFreqz(h, resp), ALGO_KOL_RET_FAILED); });
  EXPECT_EQ(out, Err("[_ZebKol_FilterFreqz]Fail! Need allocate buffer for EQ.\t\n"));
}

TEST_F(ChainFilters, DesignCopiesToChannelTwoAndApplyFiltersEachPlane) {
  KOL_HANDLE h = Open(2, 1);
  ASSERT_NE(h, nullptr);
  AudioFilterConfig cfg{EQ_NOTCH_FILTER, 1000, 2, 9};
  AudioFilterConfig bad{EQ_NOTCH_FILTER, 1000, 0, 9};
  CaptureStdout([&] {
    EXPECT_EQ(ZebKol_FilterDesign(h, 1, &bad), ALGO_KOL_RET_FAILED);
    EXPECT_EQ(ZebKol_FilterDesign(h, 0, &cfg), ALGO_KOL_RET_FAILED);
  });
  EXPECT_EQ(Rec(h)->iir_enable, 0);
  CaptureStdout([&] { ASSERT_EQ(ZebKol_FilterDesign(h, 1, &cfg), ALGO_KOL_RET_SUCCESS); });
  EXPECT_EQ(Rec(h)->iir_enable, 1);
  EXPECT_EQ(std::memcmp(Rec(h)->eq_inst[1], Rec(h)->eq_inst[0], sizeof(EQinst_t)), 0);

  // Left a 1 kHz tone, right a 3 kHz tone: each channel through its own
  // instance, in place.
  std::vector<short> l = Sine(1000.0 / 16000.0, 4000.0, kFrame), r = Sine(3000.0 / 16000.0, 4000.0, kFrame);
  std::vector<short> frame(2 * kFrame);
  for (int i = 0; i < kFrame; ++i) {
    frame[2 * i] = l[i];
    frame[2 * i + 1] = r[i];
  }
  EQinst_t refL = *Rec(h)->eq_inst[0], refR = *Rec(h)->eq_inst[1];
  InfiniteImpulseResponseFilter(&refL, l.data());
  InfiniteImpulseResponseFilter(&refR, r.data());
  ASSERT_EQ(ZebKol_FilterApply(h, frame.data()), ALGO_KOL_RET_SUCCESS);
  for (int i = 0; i < kFrame; ++i) {
    ASSERT_EQ(frame[2 * i], l[i]) << i;
    ASSERT_EQ(frame[2 * i + 1], r[i]) << i;
  }
  EXPECT_EQ(Rec(h)->eq_inst[0]->x_states[0], refL.x_states[0]);
  EXPECT_EQ(Rec(h)->eq_inst[1]->x_states[0], refR.x_states[0]);
  EXPECT_NE(refL.x_states[0], refR.x_states[0]);
}

}  // namespace
