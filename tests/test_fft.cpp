// Real FFT layer: both kernel forms against a plain DFT in double, their
// bitwise agreement, the ORB_rdft contract, plan factors and state memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "fft.h"
#include "ne10_fft.h"
#include "test_support.h"

namespace {

constexpr int kFrameFft = 256;
constexpr int kFrameFloats = kFrameFft + 2;
constexpr unsigned char kGuardByte = 0xA5;
constexpr size_t kGuardBytes = 64;
const double kTwoPi = 2.0 * std::acos(-1.0);

typedef std::vector<std::complex<double>> Spectrum;

// Caller memory for one transform state, followed by a guard zone that no
// routine may touch.
struct StateMemory {
  explicit StateMemory(int nfft)
      : sizeBytes(ne10_fft_r2c_float32_GetBuffSize(nfft)),
        words((sizeBytes + kGuardBytes + 7) / 8) {
    std::memset(words.data(), kGuardByte, words.size() * 8);
  }
  void* start() { return words.data(); }
  const unsigned char* bytes() const {
    return reinterpret_cast<const unsigned char*>(words.data());
  }
  bool guardIntact() const {
    for (size_t b = sizeBytes; b < words.size() * 8; ++b)
      if (bytes()[b] != kGuardByte) return false;
    return true;
  }
  size_t sizeBytes;
  std::vector<uint64_t> words;
};

struct Plan {
  explicit Plan(int nfft) : memory(nfft), cfg(ne10_fft_alloc_r2c_float32(memory.start(), nfft)) {}
  StateMemory memory;
  ne10_fft_r2c_cfg_float32_t cfg;
};

// A handle set up the way an owning stage does it.
struct OwnedHandle {
  explicit OwnedHandle(int nfft = kFrameFft) : memory(nfft) {
    std::memset(&handle, 0, sizeof(handle));
    handle.fft_Ne10_cfg = static_cast<ne10_fft_r2c_cfg_float32_t>(memory.start());
    handle.fftSize = nfft;
    ne10_init();
    fft_init(&handle);
  }
  StateMemory memory;
  FFTHandle_t handle;
  int ip[130] = {};
  float w[260] = {};
};

std::vector<float> RandomSignal(std::mt19937& rng, int n, float amplitude) {
  std::uniform_real_distribution<float> dist(-amplitude, amplitude);
  std::vector<float> x(n);
  for (float& v : x) v = dist(rng);
  return x;
}

double MaxAbs(const std::vector<float>& x) {
  double m = 0.0;
  for (float v : x) m = std::max(m, (double)std::fabs(v));
  return m;
}

// Bins 0..n/2 of X[k] = sum x[t] exp(-j 2 pi k t / n), in double.
Spectrum Dft(const std::vector<float>& x) {
  const int n = (int)x.size();
  Spectrum X(n / 2 + 1);
  for (int k = 0; k <= n / 2; ++k) {
    std::complex<double> sum = 0.0;
    for (int t = 0; t < n; ++t)
      sum += (double)x[t] * std::polar(1.0, -kTwoPi * (double)((int64_t)k * t % n) / n);
    X[k] = sum;
  }
  return X;
}

std::vector<float> Forward(ne10_fft_r2c_cfg_float32_t cfg, std::vector<float> x, bool vectorForm) {
  std::vector<ne10_fft_cpx_float32_t> out(x.size() / 2 + 1);
  if (vectorForm)
    ne10_fft_r2c_1d_float32_neon(out.data(), x.data(), cfg);
  else
    ne10_fft_r2c_1d_float32_c(out.data(), x.data(), cfg);
  std::vector<float> packed(2 * out.size());
  std::memcpy(packed.data(), out.data(), packed.size() * sizeof(float));
  return packed;
}

std::vector<float> Inverse(ne10_fft_r2c_cfg_float32_t cfg, const std::vector<float>& bins,
                           bool vectorForm) {
  std::vector<ne10_fft_cpx_float32_t> in(bins.size() / 2);
  std::memcpy(in.data(), bins.data(), bins.size() * sizeof(float));
  std::vector<float> out(bins.size() - 2);
  if (vectorForm)
    ne10_fft_c2r_1d_float32_neon(out.data(), in.data(), cfg);
  else
    ne10_fft_c2r_1d_float32_c(out.data(), in.data(), cfg);
  return out;
}

void ExpectMatchesDft(const std::vector<float>& x, const std::vector<float>& bins) {
  const Spectrum X = Dft(x);
  const double tol = 1e-5 * (double)x.size() * MaxAbs(x);
  for (size_t k = 0; k < X.size(); ++k) {
    EXPECT_NEAR(bins[2 * k], X[k].real(), tol) << "bin " << k;
    EXPECT_NEAR(bins[2 * k + 1], X[k].imag(), tol) << "bin " << k;
  }
  EXPECT_EQ(bins[1], 0.0f);
  EXPECT_EQ(bins.back(), 0.0f);
}

std::string PointerText(const void* p) {
  char text[64];
  std::snprintf(text, sizeof(text), "%p", p);
  return text;
}

const int kSupportedLengths[] = {8, 32, 64, 128, 256, 512, 1024};

// ---- Sizes, factors, tables and layout ---------------------------------------

TEST(FftPlan, BufferSizeFollowsTheFormula) {
  EXPECT_EQ(FFT_GetBufferSize(256), 6028u);
  for (int n : {8, 16, 64, 100, 512})
    EXPECT_EQ((int)FFT_GetBufferSize(n), 16 * n + 2 * n + (n / 32 + 1) * 96 + 556) << n;
}

TEST(FftPlan, FactorRule) {
  struct Case {
    int n;
    int flags;
    std::vector<int> expected;  // stage count, n / last radix, pairs, flag
  };
  const Case cases[] = {
      {256, 0, {4, 64, 4, 64, 4, 16, 4, 4, 4, 1, 0}},
      {64, 0, {3, 16, 4, 16, 4, 4, 4, 1, 0}},
      {32, 0, {3, 16, 4, 8, 4, 2, 2, 1, 0}},
      {40, 0, {3, 8, 4, 10, 2, 5, 5, 1, 1}},
      {24, 1, {2, 3, 3, 8, 8, 1, 1}},
      {49, 0, {1, 1, 49, 1, 1}},
  };
  for (const Case& c : cases) {
    std::vector<int32_t> facbuf(NE10_FACTOR_SLOTS, -7);
    ASSERT_EQ(ne10_factor(c.n, facbuf.data(), c.flags), 0) << c.n;
    facbuf.resize(c.expected.size());
    EXPECT_EQ(std::vector<int>(facbuf.begin(), facbuf.end()), c.expected)
        << "n " << c.n << " flags " << c.flags;
  }
  int32_t facbuf[NE10_FACTOR_SLOTS];
  EXPECT_EQ(ne10_factor(16, nullptr, 0), -1);
  EXPECT_EQ(ne10_factor(0, facbuf, 0), -1);
  EXPECT_EQ(ne10_factor(-4, facbuf, 0), -1);
}

TEST(FftPlan, StateLiesInsideCallerMemory) {
  StateMemory memory(kFrameFft);
  unsigned char* st = static_cast<unsigned char*>(memory.start());
  ne10_fft_r2c_cfg_float32_t cfg = ne10_fft_alloc_r2c_float32(st, kFrameFft);
  ASSERT_EQ((void*)cfg, (void*)st);
  EXPECT_EQ(cfg->nfft, kFrameFft);
  const unsigned char* end = st + memory.sizeBytes;
  const void* parts[] = {cfg->buffer,          cfg->r_twiddles,     cfg->r_factors,
                         cfg->r_twiddles_neon, cfg->r_factors_neon, cfg->r_super_twiddles_neon};
  for (const void* p : parts) {
    EXPECT_GE((const unsigned char*)p, st);
    EXPECT_LT((const unsigned char*)p, end);
  }
  EXPECT_LE((const unsigned char*)(cfg->r_super_twiddles_neon + 96), end);
  EXPECT_TRUE(memory.guardIntact());
  // The scratch buffer was zeroed over the caller's old contents.
  for (int k = 0; k < kFrameFft; ++k) EXPECT_EQ(cfg->buffer[k].r, 0.0f);
}

// Both twiddle tables of the frame plan, bit for bit: the phase is formed in
// double, kept as a float, and its cosine and sine are rounded to float.
TEST(FftPlan, TwiddlesAreTakenOfTheFloatPhase) {
  Plan plan(kFrameFft);
  const struct {
    const ne10_fft_cpx_float32_t* table;
    int nfft, fstride;
    bool transposed;
  } tables[] = {{plan.cfg->r_twiddles, kFrameFft, 64, false},
                {plan.cfg->r_twiddles_neon, kFrameFft / 4, 16, true}};
  for (const auto& t : tables) {
    const ne10_fft_cpx_float32_t* w = t.table;
    // Radix-4 stages from the first butterfly on; the first one needs none.
    for (int fstride = t.fstride / 4, mstride = 4; fstride >= 1; fstride /= 4, mstride *= 4) {
      for (int j = 0; j < mstride; ++j) {
        for (int k = 1; k < 4; ++k) {
          const float phase = (float)(-2.0 * 3.141592653589793 * fstride * k * j / t.nfft);
          const ne10_fft_cpx_float32_t& got = w[t.transposed ? j * 3 + k - 1 : mstride * (k - 1) + j];
          ASSERT_EQ(got.r, (float)std::cos((double)phase)) << t.nfft << " " << j << " " << k;
          ASSERT_EQ(got.i, (float)std::sin((double)phase)) << t.nfft << " " << j << " " << k;
        }
      }
      w += 3 * mstride;
    }
  }
}

TEST(FftPlan, AllocRefusesNullAndBuildsNoTablesBelowSixteen) {
  EXPECT_EQ(ne10_fft_alloc_r2c_float32(nullptr, kFrameFft), nullptr);
  StateMemory memory(8);
  ne10_fft_r2c_cfg_float32_t cfg = ne10_fft_alloc_r2c_float32(memory.start(), 8);
  ASSERT_EQ((void*)cfg, memory.start());
  EXPECT_EQ(cfg->nfft, 8);
  EXPECT_EQ(cfg->r_factors[0], 0);
  EXPECT_EQ(cfg->r_twiddles_backward, nullptr);
  EXPECT_EQ(cfg->r_twiddles_neon_backward, nullptr);
  EXPECT_TRUE(memory.guardIntact());
}

// ---- Transform accuracy and lane forms ---------------------------------------

TEST(FftTransform, BothFormsMatchDoubleDftAndRoundTrip) {
  std::mt19937 rng(zebtest::TestSeed());
  for (int n : kSupportedLengths) {
    Plan plan(n);
    ASSERT_NE(plan.cfg, nullptr) << n;
    const std::vector<float> x = RandomSignal(rng, n, 32768.0f);
    for (bool vectorForm : {false, true}) {
      SCOPED_TRACE(testing::Message() << "n " << n << (vectorForm ? " 4-lane" : " scalar"));
      const std::vector<float> bins = Forward(plan.cfg, x, vectorForm);
      ExpectMatchesDft(x, bins);
      const std::vector<float> back = Inverse(plan.cfg, bins, vectorForm);
      const double tol = 1e-5 * MaxAbs(x);
      for (int t = 0; t < n; ++t) ASSERT_NEAR(back[t], x[t], tol) << "sample " << t;
    }
    EXPECT_TRUE(plan.memory.guardIntact());
  }
}

TEST(FftTransform, ScalarAndFourLaneFormsAgreeBitForBit) {
  std::mt19937 rng(zebtest::TestSeed());
  for (int n : kSupportedLengths) {
    Plan plan(n);
    const std::vector<float> x = RandomSignal(rng, n, 32768.0f);
    const std::vector<float> scalarBins = Forward(plan.cfg, x, false);
    const std::vector<float> laneBins = Forward(plan.cfg, x, true);
    EXPECT_EQ(0, std::memcmp(scalarBins.data(), laneBins.data(), scalarBins.size() * 4)) << n;
    const std::vector<float> scalarBack = Inverse(plan.cfg, scalarBins, false);
    const std::vector<float> laneBack = Inverse(plan.cfg, scalarBins, true);
    EXPECT_EQ(0, std::memcmp(scalarBack.data(), laneBack.data(), scalarBack.size() * 4)) << n;
  }
}

TEST(FftTransform, EntriesLeaveTheirInputAsStated) {
  Plan plan(kFrameFft);
  std::mt19937 rng(zebtest::TestSeed());
  std::vector<float> x = RandomSignal(rng, kFrameFft, 100.0f);
  const std::vector<float> xCopy = x;
  std::vector<ne10_fft_cpx_float32_t> bins(kFrameFft / 2 + 1);
  ne10_fft_r2c_1d_float32_neon(bins.data(), x.data(), plan.cfg);
  EXPECT_EQ(x, xCopy);
  const float nyquist = bins[kFrameFft / 2].r;
  std::vector<float> out(kFrameFft);
  ne10_fft_c2r_1d_float32_neon(out.data(), bins.data(), plan.cfg);
  EXPECT_EQ(bins[0].i, 0.0f);
  EXPECT_EQ(bins[kFrameFft / 2].r, nyquist);
}

// ---- ORB_rdft contract ---------------------------------------------------------

TEST(FftOrbRdft, InitialisesAndRoundTripsWithoutScaling) {
  OwnedHandle h;
  ASSERT_EQ(h.handle.is_fft_init, 1);
  std::mt19937 rng(zebtest::TestSeed());
  std::vector<float> x = RandomSignal(rng, kFrameFft, 32767.0f);
  std::vector<float> a(x);
  a.resize(kFrameFloats, 12345.0f);
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w);
  ExpectMatchesDft(x, a);
  a[1] = 77.0f;  // imaginary parts of DC and Nyquist are ignored by the inverse
  a[kFrameFft + 1] = -55.0f;
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_IFFT, a.data(), h.ip, h.w);
  for (int t = 0; t < kFrameFft; ++t) ASSERT_NEAR(a[t], x[t], 1e-5 * 32767.0) << t;
  EXPECT_EQ(a[kFrameFft], 0.0f);
  EXPECT_EQ(a[kFrameFft + 1], 0.0f);
  EXPECT_TRUE(h.memory.guardIntact());
}

TEST(FftOrbRdft, ZeroConstantAndAlternatingFrames) {
  OwnedHandle h;
  std::vector<float> a(kFrameFloats, 0.0f);
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w);
  for (float v : a) EXPECT_EQ(v, 0.0f);
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_IFFT, a.data(), h.ip, h.w);
  for (float v : a) EXPECT_EQ(v, 0.0f);

  const float c = 1000.0f;
  std::fill(a.begin(), a.end(), c);
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w);
  EXPECT_EQ(a[0], 256.0f * c);
  EXPECT_EQ(a[1], 0.0f);
  EXPECT_EQ(a[kFrameFft + 1], 0.0f);
  for (int k = 2; k < kFrameFloats; ++k) EXPECT_NEAR(a[k], 0.0f, 1e-3f) << k;

  for (int t = 0; t < kFrameFloats; ++t) a[t] = (t & 1) ? -c : c;
  ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w);
  EXPECT_EQ(a[kFrameFft], 256.0f * c);
  EXPECT_EQ(a[1], 0.0f);
  EXPECT_EQ(a[kFrameFft + 1], 0.0f);
  for (int k = 0; k < kFrameFft; ++k) EXPECT_NEAR(a[k], 0.0f, 1e-3f) << k;
}

TEST(FftOrbRdft, IgnoresUnknownModesAndForeignLengths) {
  OwnedHandle h;
  std::vector<float> a(kFrameFloats);
  for (int t = 0; t < kFrameFloats; ++t) a[t] = (float)t;
  const std::vector<float> before = a;
  const std::string out = zebtest::CaptureStdout([&] {
    for (int isgn : {0, 2, -2}) ORB_rdft(&h.handle, kFrameFft, isgn, a.data(), h.ip, h.w);
    ORB_rdft(&h.handle, 128, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w);
    ORB_rdft(&h.handle, 512, ORB_FFT_MODE_DO_IFFT, a.data(), h.ip, h.w);
  });
  EXPECT_EQ(out, "");
  EXPECT_EQ(a, before);
}

TEST(FftOrbRdft, NullArgumentsAreReported) {
  OwnedHandle h;
  std::vector<float> a(kFrameFloats, 0.0f);
  EXPECT_EQ(zebtest::CaptureStdout(
                [&] { ORB_rdft(nullptr, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w); }),
            "[Audio] Ne10_workingBufPtr is Null in fft\n");

  // A missing ip or w is only a warning: the transform still runs.
  a[0] = 3.0f;
  const std::string warned = zebtest::CaptureStdout(
      [&] { ORB_rdft(&h.handle, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), nullptr, h.w); });
  EXPECT_EQ(warned, "[Audio] input Null in Ne10_workingBufPtr->fft_Ne10_cfg\naddress = " +
                        PointerText(h.handle.fft_Ne10_cfg) + " is NULL in ORB_rdft\n");
  EXPECT_EQ(a[0], 3.0f);
  EXPECT_EQ(a[2], 3.0f);

  FFTHandle_t empty;
  std::memset(&empty, 0, sizeof(empty));
  const std::vector<float> before = a;
  const std::string noState = zebtest::CaptureStdout(
      [&] { ORB_rdft(&empty, kFrameFft, ORB_FFT_MODE_DO_FFT, a.data(), h.ip, h.w); });
  EXPECT_EQ(noState, "[Audio] input Null in Ne10_workingBufPtr->fft_Ne10_cfg\naddress = " +
                         PointerText(nullptr) + " is NULL in ORB_rdft\n");
  EXPECT_EQ(a, before);
}

// ---- Lifecycle ------------------------------------------------------------------

TEST(FftLifecycle, InitMessagesAndStateKeeping) {
  EXPECT_EQ(ne10_init(), 0);
  EXPECT_EQ(ne10_fft_r2c_1d_float32, &ne10_fft_r2c_1d_float32_neon);
  EXPECT_EQ(ne10_fft_c2r_1d_float32, &ne10_fft_c2r_1d_float32_neon);
  EXPECT_EQ(zebtest::CaptureStdout([] { fft_init(nullptr); }), "[FFT]The handle is NULL\n");

  std::string quiet = "unset";
  OwnedHandle* h = nullptr;
  quiet = zebtest::CaptureStdout([&] { h = new OwnedHandle(); });
  EXPECT_EQ(quiet, "");
  ne10_fft_r2c_cfg_float32_t cfg = h->handle.fft_Ne10_cfg;
  const std::vector<uint64_t> stateBefore = h->memory.words;
  EXPECT_EQ(zebtest::CaptureStdout([&] { fft_init(&h->handle); }), "[FFT]Ne10 has init already\n");
  EXPECT_EQ(h->handle.fft_Ne10_cfg, cfg);
  EXPECT_EQ(h->handle.is_fft_init, 1);
  EXPECT_EQ(h->memory.words, stateBefore);

  EXPECT_EQ(zebtest::CaptureStdout([&] { fft_Free(&h->handle); }), "");
  EXPECT_EQ(h->handle.is_fft_init, 0);
  EXPECT_EQ(zebtest::CaptureStdout([] { fft_Free(nullptr); }), "handle is NULL in FFT_Free!\t\n");
  delete h;

  FFTHandle_t handle;
  std::memset(&handle, 0, sizeof(handle));
  handle.fftSize = kFrameFft;
  EXPECT_EQ(zebtest::CaptureStdout([&] { fft_init(&handle); }),
            "[FFT] Please assigned the begining address about FFT workingbuffer in Init.\n");
  EXPECT_EQ(handle.is_fft_init, 0);

  // A length the state cannot hold loses the pointer and stays uninitialised.
  StateMemory memory(kFrameFft);
  handle.fft_Ne10_cfg = static_cast<ne10_fft_r2c_cfg_float32_t>(memory.start());
  handle.fftSize = 0;
  EXPECT_EQ(zebtest::CaptureStdout([&] { fft_init(&handle); }), "[Audio] memory malloc failed\n");
  EXPECT_EQ(handle.fft_Ne10_cfg, nullptr);
  EXPECT_EQ(handle.is_fft_init, 0);
}

}  // namespace
