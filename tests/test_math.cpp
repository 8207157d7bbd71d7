// Vector math: every 4-lane form against its scalar reference, lane accuracy
// against the C library, the documented lane/tail differences, the
// reciprocal estimates and the block copy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "FastOperation.h"
#include "MemcpyFast.h"
#include "ne10_math.h"
#include "test_support.h"
#include "zeb_recip_estimate.h"

namespace {

constexpr int kGuardFloats = 16;
// A signalling-NaN pattern that no kernel produces.
constexpr uint32_t kGuardBits = 0x7FA5A5A5u;

uint32_t Bits(float x) { return zeb_f32_bits(x); }
float FromBits(uint32_t u) { return zeb_f32_from_bits(u); }
int RoundUp4(int n) { return (n + 3) / 4 * 4; }

// ------------------------------------------------------ kernel table ----

enum class Form { kScalar, kVec4, kLibrary };

enum class Domain { kExp, kLog, kSine, kSqrt, kPowBase, kPowExp, kSigned };

float Draw(Domain d, std::mt19937& g, int index) {
  std::uniform_real_distribution<float> u01(0.0f, 1.0f);
  const float u = u01(g);
  switch (d) {
    case Domain::kExp:  // beyond both clamps at +-88.376
      return -100.0f + 200.0f * u;
    case Domain::kLog:  // every seventh value zero or negative: the NaN path
      if (index % 7 == 3) return index % 2 ? 0.0f : -u;
      return std::exp(-80.0f + 160.0f * u);
    case Domain::kSine:
      return -50.0f + 100.0f * u;
    case Domain::kSqrt:
      if (index % 7 == 3) return index % 2 ? 0.0f : -u;
      return std::exp(-85.0f + 170.0f * u);
    case Domain::kPowBase:
      return std::exp(-10.0f + 20.0f * u);
    case Domain::kPowExp:
      return -4.0f + 8.0f * u;
    case Domain::kSigned:
      return -10.0f + 20.0f * u;
  }
  return 0.0f;
}

void PrintTo(Form f, std::ostream* os) {
  *os << (f == Form::kScalar ? "scalar" : f == Form::kVec4 ? "vec4" : "library");
}

template <typename F>
F Pick(Form form, F scalar, F vec4, F library) {
  return form == Form::kScalar ? scalar : form == Form::kVec4 ? vec4 : library;
}

// Element-wise kernels that update in place: out-of-place runs copy first.
void PrepareInOut(const float* in, float* out, int n) {
  if (out != in) std::memcpy(out, in, sizeof(float) * n);
}

struct KernelCase {
  const char* name;
  Domain domain1;
  Domain domain2;
  bool overRun;       // writes up to the next multiple of 4
  bool scalarOutput;  // writes output[0] only
  void (*run)(Form, float* in1, float* in2, float* out, int n);
};

// The scalar, 4-lane or library form of LX_X, picked by f; the library's
// code must be success.
#define LX_FORMS(X) \
  Pick<decltype(&LX_##X##_scalar)>(f, LX_##X##_scalar, LX_##X##_vec4, [](auto... a) { EXPECT_EQ(ne10_LX_##X(a...), 0); })
#define RUN(...) [](Form f, [[maybe_unused]] float* a, [[maybe_unused]] float* b, float* o, int n) { __VA_ARGS__; }

const KernelCase kKernels[] = {
    {"Exp", Domain::kExp, Domain::kSigned, false, false, RUN(LX_FORMS(Exp)(a, o, n))},
    {"Pow", Domain::kPowBase, Domain::kPowExp, false, false, RUN(LX_FORMS(Pow)(a, b, o, n))},
    {"Sine", Domain::kSine, Domain::kSigned, false, false, RUN(LX_FORMS(Sine)(a, o, n))},
    {"Sqrt", Domain::kSqrt, Domain::kSigned, false, false, RUN(LX_FORMS(Sqrt)(a, o, n))},
    {"Log10", Domain::kLog, Domain::kSigned, false, false, RUN(LX_FORMS(Log10)(a, o, n))},
    {"DotMul", Domain::kSigned, Domain::kSigned, false, false, RUN(LX_FORMS(Dot_Mul)(a, b, o, n))},
    {"DumpElement", Domain::kSigned, Domain::kSigned, false, false,
     RUN(PrepareInOut(a, o, n); LX_FORMS(Dump_Element_To_Array)(o, -3.25f, n))},
    {"MulElement", Domain::kSigned, Domain::kSigned, false, false,
     RUN(PrepareInOut(a, o, n); LX_FORMS(Mul_Element_To_Array)(o, 0.3f, n))},
    {"InnerProduct", Domain::kSigned, Domain::kSigned, false, true,
     RUN(Pick<decltype(&InnerProduct_scalar)>(f, InnerProduct_scalar, InnerProduct_vec4, [](auto... x) {
       EXPECT_EQ(ne10_InnerProduct(x...), 0);
     })(a, b, o, n))},
    {"inner_product", Domain::kSigned, Domain::kSigned, true, false,
     RUN(Pick<decltype(&inner_product)>(f, inner_product_scalar, inner_product_vec4, inner_product)(a, b, o, n))},
    {"constant_mul", Domain::kSigned, Domain::kSigned, true, false,
     RUN(Pick<decltype(&constant_mul)>(f, constant_mul_scalar, constant_mul_vec4, constant_mul)(a, 1.5f, o, n))},
};

// ------------------------------------------- forms against the scalar ----

struct FormRun {
  std::vector<float> in1, in2, out;
};

struct KernelFormTest
    : testing::TestWithParam<std::tuple<int /*kernel*/, int /*length*/, bool /*in place*/, Form>> {};

// Runs one form on copies of the inputs; out aliases in1 when in place.
FormRun RunForm(const KernelCase& kc, Form form, const std::vector<float>& in1,
                const std::vector<float>& in2, int n, bool inPlace) {
  FormRun r{in1, in2, std::vector<float>(kc.scalarOutput ? 1 + kGuardFloats : in1.size(),
                                         FromBits(kGuardBits))};
  float* out = inPlace ? r.in1.data() : r.out.data();
  kc.run(form, r.in1.data(), r.in2.data(), out, n);
  return r;
}

void ExpectSameBits(const std::vector<float>& expected, const std::vector<float>& actual, const char* what) {
  ASSERT_EQ(expected.size(), actual.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(Bits(expected[i]), Bits(actual[i])) << what << "[" << i << "]";
  }
}

TEST_P(KernelFormTest, MatchesScalarBitForBitAndKeepsGuard) {
  const KernelCase& kc = kKernels[std::get<0>(GetParam())];
  const int n = std::get<1>(GetParam());
  const bool inPlace = std::get<2>(GetParam());
  const Form form = std::get<3>(GetParam());
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  const int cap = RoundUp4(n) + kGuardFloats;
  std::vector<float> in1(cap), in2(cap);
  for (int i = 0; i < cap; ++i) {
    in1[i] = Draw(kc.domain1, g, i);
    in2[i] = Draw(kc.domain2, g, i);
  }
  // Elements a kernel may write: the array, the over-run group, or output[0].
  const int written = kc.scalarOutput ? 1 : (kc.overRun ? RoundUp4(n) : n);
  const FormRun ref = RunForm(kc, Form::kScalar, in1, in2, n, inPlace);
  const FormRun got = RunForm(kc, form, in1, in2, n, inPlace);
  ExpectSameBits(ref.in1, got.in1, "in1");
  ExpectSameBits(ref.in2, got.in2, "in2");
  ExpectSameBits(ref.out, got.out, "out");

  // Nothing beyond the written extent changes, and inputs stay as they were.
  const std::vector<float>& outBuf = inPlace ? got.in1 : got.out;
  for (size_t i = written; i < outBuf.size(); ++i) {
    const uint32_t before = inPlace ? Bits(in1[i]) : kGuardBits;
    ASSERT_EQ(Bits(outBuf[i]), before) << "guard overwritten at " << i;
  }
  if (!inPlace) ExpectSameBits(in1, got.in1, "input 1 modified");
  ExpectSameBits(in2, got.in2, "input 2 modified");
}

std::string KernelFormName(const testing::TestParamInfo<KernelFormTest::ParamType>& info) {
  const char* forms[] = {"scalar", "vec4", "library"};
  return std::string(kKernels[std::get<0>(info.param)].name) + "_n" + std::to_string(std::get<1>(info.param)) +
         (std::get<2>(info.param) ? "_inplace_" : "_separate_") + forms[static_cast<int>(std::get<3>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(AllKernels, KernelFormTest,
                         testing::Combine(testing::Range(0, static_cast<int>(std::size(kKernels))),
                                          testing::Values(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 129, 258),
                                          testing::Bool(), testing::Values(Form::kVec4, Form::kLibrary)),
                         KernelFormName);

TEST(MathOverRun, GroupProductsWriteToNextMultipleOfFourAndNoFurther) {
  for (int n = 0; n <= 9; ++n) {
    std::vector<float> a(16), b(16), out(16, FromBits(kGuardBits)), outc(16, FromBits(kGuardBits));
    for (int i = 0; i < 16; ++i) {
      a[i] = 0.5f * i + 1.0f;
      b[i] = 3.0f - 0.25f * i;
    }
    inner_product(a.data(), b.data(), out.data(), n);
    constant_mul(a.data(), 2.0f, outc.data(), n);
    for (int i = 0; i < 16; ++i) {
      if (i < RoundUp4(n)) {
        EXPECT_EQ(out[i], a[i] * b[i]) << "n=" << n << " i=" << i;
        EXPECT_EQ(outc[i], a[i] * 2.0f) << "n=" << n << " i=" << i;
      } else {
        EXPECT_EQ(Bits(out[i]), kGuardBits) << "n=" << n << " i=" << i;
        EXPECT_EQ(Bits(outc[i]), kGuardBits) << "n=" << n << " i=" << i;
      }
    }
  }
}

// ------------------------------------------------- lane accuracy ----

TEST(MathLaneAccuracy, LogExpSinCosAgreeWithLibm) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  std::uniform_real_distribution<float> u(0.0f, 1.0f);
  for (int n = 0; n < 100000; ++n) {
    const float xl = std::exp(-85.0f + 170.0f * u(g));
    const float xe = -87.0f + 175.0f * u(g);
    const float xs = -100.0f + 200.0f * u(g);
    const zeb_f32x4 lanes = {xl, xe, xs, xs};
    const zeb_f32x4 l = log_ps(lanes);
    const zeb_f32x4 e = exp_ps(lanes);
    zeb_f32x4 s, c;
    sincos_ps(lanes, &s, &c);
    const double ln = std::log(static_cast<double>(xl));
    ASSERT_NEAR(l[0], ln, 1e-6 * std::fmax(1.0, std::fabs(ln))) << "log " << xl;
    const double ex = std::exp(static_cast<double>(xe));
    ASSERT_NEAR(e[1], ex, 1e-6 * ex) << "exp " << xe;
    ASSERT_NEAR(s[2], std::sin(static_cast<double>(xs)), 1e-6) << "sin " << xs;
    ASSERT_NEAR(c[3], std::cos(static_cast<double>(xs)), 1e-6) << "cos " << xs;
    ASSERT_EQ(Bits(sin_ps(lanes)[2]), Bits(s[2]));
  }
}

TEST(MathLaneAccuracy, SqrtHasAboutSixteenBits) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  std::uniform_real_distribution<float> u(-86.0f, 87.0f);
  std::vector<float> x(4096), y(4096);
  for (float& v : x) v = std::exp(u(g));
  ne10_LX_Sqrt(x.data(), y.data(), 4096);
  for (int i = 0; i < 4096; ++i) {
    const double r = std::sqrt(static_cast<double>(x[i]));
    ASSERT_NEAR(y[i], r, 2e-5 * r) << x[i];
  }
}

// log2 costs ~5e-6 and 2^f 0.17 % where the fraction handed to the 2^f
// polynomial lies in [0, 1); trunc(t - 0.5) hands it (-0.5, 0) for t in
// (-0.5, 0) mod 1 and [1, 1.5) for t in [1, 1.5) mod 1, where the error
// grows to ~3 % and ~7 %.
TEST(MathLaneAccuracy, PowWithinFitErrorInsideFitRangeAndBoundedOutside) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  std::uniform_real_distribution<float> ua(-20.0f, 20.0f), ub(-3.0f, 3.0f);
  int inside = 0;
  for (int n = 0; n < 200000; ++n) {
    const float a = std::exp(ua(g));
    const float b = ub(g);
    const double t = static_cast<double>(b) * std::log2(static_cast<double>(a));
    const double exact = std::pow(static_cast<double>(a), static_cast<double>(b));
    const double rel = std::fabs(vpowq_f32_scalar(a, b) / exact - 1.0);
    // Skip t where float and double rounding could disagree on trunc(t - 0.5).
    const double jump = (t - 0.5) - std::floor(t - 0.5);
    if (jump < 1e-3 || jump > 1.0 - 1e-3) continue;
    const double frac = t - std::trunc(t - 0.5);
    if (frac >= 0.0 && frac < 1.0) {
      ++inside;
      ASSERT_LT(rel, 0.002) << a << "^" << b;
    } else {
      ASSERT_LT(rel, 0.075) << a << "^" << b;
    }
  }
  EXPECT_GT(inside, 50000);
  float base[4] = {2.0f, 10.0f, 0.5f, 3.0f}, expo[4] = {0.5f, 0.6f, 1.6f, 1.8f}, out[4];
  ne10_LX_Pow(base, expo, out, 4);
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(out[k], std::pow(base[k], expo[k]), 0.003 * out[k]) << k;
}

// ----------------------------------------------------- edge cases ----

TEST(MathEdgeCases, Log10OfZeroIsNaNInLanesAndMinusInfInTail) {
  float zeros[4] = {0.0f, 0.0f, 0.0f, 0.0f}, out[4];
  ne10_LX_Log10(zeros, out, 4);
  for (float v : out) EXPECT_TRUE(std::isnan(v));
  ne10_LX_Log10(zeros, out, 1);
  EXPECT_EQ(out[0], -INFINITY);
}

TEST(MathEdgeCases, SqrtOfZeroIsSignedZeroInLanesAndTail) {
  float in[5] = {0.0f, -0.0f, 1e-40f /* denormal */, 4.0f, 0.0f}, out[5];
  ne10_LX_Sqrt(in, out, 5);
  EXPECT_EQ(Bits(out[0]), 0u);
  EXPECT_EQ(Bits(out[1]), 0x80000000u);
  EXPECT_EQ(out[2], 0.0f);
  EXPECT_NEAR(out[3], 2.0f, 4e-5f);
  EXPECT_EQ(Bits(out[4]), 0u);  // tail: sqrt in double
}

TEST(MathEdgeCases, ExpOfHundredClampsInLanesOnly) {
  float in[4] = {100.0f, 88.3762626647949f, -100.0f, 0.0f}, out[4];
  ne10_LX_Exp(in, out, 4);
  EXPECT_TRUE(std::isfinite(out[0]));
  EXPECT_EQ(out[0], out[1]);
  EXPECT_NEAR(out[0], 2.4061436e38f, 1e32f);
  EXPECT_EQ(out[2], 0.0f);
  EXPECT_EQ(out[3], 1.0f);
  ne10_LX_Exp(in, out, 1);
  EXPECT_EQ(out[0], INFINITY);
}

TEST(MathEdgeCases, InnerProductOfNothingIsZeroAndTailAddsInOrder) {
  float a[5] = {1, 2, 3, 4, 5}, b[5] = {1, 1, 1, 1, 2}, out = 7.0f;
  EXPECT_EQ(ne10_InnerProduct(a, b, &out, 0), AUDIO_MATH_RET_SUCCESS);
  EXPECT_EQ(out, 0.0f);
  ne10_InnerProduct(a, b, &out, 5);
  EXPECT_EQ(out, 20.0f);
}

TEST(MathEdgeCases, ReturnCodesHaveTheirFixedValues) {
  EXPECT_EQ(AUDIO_MATH_RET_SUCCESS, 0);
  EXPECT_EQ(AUDIO_MATH_RET_NOT_SUPPORT, 268435713);
  EXPECT_EQ(AUDIO_MATH_RET_HARDWARE_ERROR, 268435714);
}

// ---------------------------------------------- estimate functions ----

TEST(RecipEstimate, KnownValuesAndSpecialCases) {
  EXPECT_EQ(zeb_vrecpe_f32(1.0f), 0.998046875f);
  EXPECT_EQ(zeb_vrecpe_f32(2.0f), 0.4990234375f);
  EXPECT_EQ(zeb_vrecpe_f32(-2.0f), -0.4990234375f);
  EXPECT_EQ(zeb_vrecpe_f32(1.5f), 0.666015625f);  // 341/512
  EXPECT_EQ(zeb_vrsqrte_f32(1.0f), 0.998046875f);
  EXPECT_EQ(zeb_vrsqrte_f32(4.0f), 0.4990234375f);
  EXPECT_EQ(zeb_vrsqrte_f32(2.0f), 0.705078125f);  // 361/512

  EXPECT_EQ(zeb_vrecpe_f32(0.0f), INFINITY);
  EXPECT_EQ(zeb_vrecpe_f32(-0.0f), -INFINITY);
  EXPECT_EQ(zeb_vrecpe_f32(1e-40f), INFINITY);  // denormal flushed to zero
  EXPECT_EQ(Bits(zeb_vrecpe_f32(INFINITY)), 0u);
  EXPECT_EQ(Bits(zeb_vrecpe_f32(-INFINITY)), 0x80000000u);
  EXPECT_EQ(Bits(zeb_vrecpe_f32(0x1p126f)), 0u);  // reciprocal would be denormal
  EXPECT_EQ(zeb_vrecpe_f32(0x1.fffffep125f), 0x1p-126f);  // smallest normal result
  EXPECT_EQ(Bits(zeb_vrecpe_f32(NAN)), 0x7FC00000u);

  EXPECT_EQ(zeb_vrsqrte_f32(0.0f), INFINITY);
  EXPECT_EQ(zeb_vrsqrte_f32(-0.0f), -INFINITY);
  EXPECT_EQ(zeb_vrsqrte_f32(-1e-40f), -INFINITY);
  EXPECT_EQ(Bits(zeb_vrsqrte_f32(INFINITY)), 0u);
  EXPECT_EQ(Bits(zeb_vrsqrte_f32(-1.0f)), 0x7FC00000u);
  EXPECT_EQ(Bits(zeb_vrsqrte_f32(-INFINITY)), 0x7FC00000u);
  EXPECT_EQ(Bits(zeb_vrsqrte_f32(NAN)), 0x7FC00000u);
}

TEST(RecipEstimate, RelativeErrorBelowOneIn256AndMonotone) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  std::uniform_int_distribution<uint32_t> positiveNormal(0x00800000u, 0x7E7FFFFFu);
  for (int n = 0; n < 65536; ++n) {
    const float x = FromBits(positiveNormal(g));
    const double r = zeb_vrecpe_f32(x);
    const double s = zeb_vrsqrte_f32(x);
    ASSERT_LT(std::fabs(r * x - 1.0), 1.0 / 256) << x;
    ASSERT_LT(std::fabs(s * std::sqrt(static_cast<double>(x)) - 1.0), 1.0 / 256) << x;
    ASSERT_EQ(zeb_vrecpe_f32(-x), -zeb_vrecpe_f32(x));
  }
  // Positive floats increase with their bit patterns.
  float lastR = INFINITY, lastS = INFINITY;
  for (uint32_t u = 0x00800000u; u < 0x7F800000u; u += 251) {
    const float r = zeb_vrecpe_f32(FromBits(u));
    const float s = zeb_vrsqrte_f32(FromBits(u));
    ASSERT_LE(r, lastR) << std::hex << u;
    ASSERT_LE(s, lastS) << std::hex << u;
    lastR = r;
    lastS = s;
  }
}

TEST(RecipEstimate, StepsAndOneNewtonIteration) {
  EXPECT_EQ(zeb_vrecps_f32(2.0f, 0.5f), 1.0f);
  EXPECT_EQ(zeb_vrecps_f32(INFINITY, 0.0f), 2.0f);
  EXPECT_EQ(zeb_vrecps_f32(-0.0f, INFINITY), 2.0f);
  EXPECT_EQ(zeb_vrecps_f32(1e-40f, INFINITY), 2.0f);
  EXPECT_EQ(zeb_vrecps_f32(INFINITY, 1.0f), -INFINITY);
  EXPECT_EQ(Bits(zeb_vrecps_f32(NAN, 1.0f)), 0x7FC00000u);
  EXPECT_EQ(zeb_vrsqrts_f32(1.0f, 1.0f), 1.0f);
  EXPECT_EQ(zeb_vrsqrts_f32(0.0f, INFINITY), 1.5f);
  EXPECT_EQ(Bits(zeb_vrsqrts_f32(1.0f, -NAN)), 0x7FC00000u);

  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  std::uniform_real_distribution<float> u(-30.0f, 30.0f);
  for (int n = 0; n < 10000; ++n) {
    const float x = std::exp(u(g));
    const float r0 = zeb_vrecpe_f32(x);
    const float r1 = r0 * zeb_vrecps_f32(x, r0);
    ASSERT_LT(std::fabs(static_cast<double>(r1) * x - 1.0), 2e-5) << x;
    const zeb_f32x4 v = {x, -x, 1.0f / x, 0.0f};
    const zeb_f32x4 e = zeb_vrecpeq_f32(v), q = zeb_vrsqrteq_f32(v);
    const zeb_f32x4 sr = zeb_vrecpsq_f32(v, e), sq = zeb_vrsqrtsq_f32(v, q);
    for (int k = 0; k < 4; ++k) {
      ASSERT_EQ(Bits(e[k]), Bits(zeb_vrecpe_f32(v[k])));
      ASSERT_EQ(Bits(q[k]), Bits(zeb_vrsqrte_f32(v[k])));
      ASSERT_EQ(Bits(sr[k]), Bits(zeb_vrecps_f32(v[k], e[k])));
      ASSERT_EQ(Bits(sq[k]), Bits(zeb_vrsqrts_f32(v[k], q[k])));
    }
  }
}

// ------------------------------------------------------ block copy ----

TEST(MemcpyFast, PathChoice) {
  alignas(64) unsigned char src[512] = {}, dst[512] = {};
  EXPECT_FALSE(memcpy_fast_uses_batches(dst, src, 255));
  EXPECT_TRUE(memcpy_fast_uses_batches(dst, src, 256));
  EXPECT_TRUE(memcpy_fast_uses_batches(dst + 3, src + 7, 256));
  EXPECT_FALSE(memcpy_fast_uses_batches(dst + 1, src, 256));
}

TEST(MemcpyFast, CopiesExactlyAtManySizesAndOffsets) {
  const uint32_t seed = zebtest::TestSeed();
  std::mt19937 g(seed);
  const size_t sizes[] = {0, 1, 63, 64, 255, 256, 257, 319, 320, 1000, 4109};
  const size_t kMargin = 128;
  std::vector<unsigned char> src(8192), dstBuf(8192);
  for (auto& c : src) c = static_cast<unsigned char>(g());
  for (size_t size : sizes) {
    for (size_t dOff = 0; dOff < 70; dOff += 3) {
      for (size_t sOff : {size_t{0}, size_t{1}, size_t{4}, size_t{52}, size_t{60}, dOff}) {
        std::fill(dstBuf.begin(), dstBuf.end(), 0xEE);
        unsigned char* d = dstBuf.data() + kMargin + dOff;
        const unsigned char* s = src.data() + kMargin + sOff;
        ASSERT_EQ(memcpy_fast(d, s, size), d);
        ASSERT_EQ(std::memcmp(d, s, size), 0) << size << " " << dOff << " " << sOff;
        for (size_t i = 0; i < kMargin + dOff + size + kMargin; ++i) {
          const bool inside = i >= kMargin + dOff && i < kMargin + dOff + size;
          if (!inside) {
            ASSERT_EQ(dstBuf[i], 0xEE) << "byte " << i << " size " << size;
          }
        }
      }
    }
  }
}

}  // namespace
