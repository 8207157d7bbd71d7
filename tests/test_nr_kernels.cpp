// Noise reduction kernels: every 4-lane form and every FuncNR_* dispatch
// against the scalar reference, bit for bit and with guard zones; every
// kernel against a plain loop within its stated accuracy; the lane and tail
// differences the kernels keep on purpose.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "nr_interface_neon.h"
#include "nr_internal_neon.h"
#include "test_support.h"
#include "zeb_recip_estimate.h"

namespace {

enum class Form { kScalar, kVec4, kDispatch };
// Which array receives the output: its own, or the first or second input.
enum class Alias { kSeparate, kFirst, kSecond };

constexpr int kGuardFloats = 16;
constexpr int kLoop = 6;        // inputs per output of the weight kernels
constexpr int kShift = 3;       // first weight used
constexpr int kStridePad = 5;   // stride = length + kStridePad
constexpr int kMaxTaps = 32;

uint32_t Bits(float x) { return zeb_f32_bits(x); }

struct Bufs {
  std::vector<float> a, b, c, out;
  std::vector<signed char> w;
  float scale = 0.0f;
};

float* Target(Bufs& s, Alias alias) {
  return alias == Alias::kFirst ? s.a.data() : alias == Alias::kSecond ? s.b.data() : s.out.data();
}

template <typename F>
F Pick(Form form, F scalar, F vec4, F neon) {
  return form == Form::kScalar ? scalar : form == Form::kVec4 ? vec4 : neon;
}

void Ok(AUDIO_MATH_RET r) { EXPECT_EQ(r, AUDIO_MATH_RET_SUCCESS); }

// The scalar, 4-lane or dispatching form of kernel X, picked by f; the
// dispatching form's code must be success.
#define FORMS(X) Pick<decltype(&X##_scalar)>(f, X##_scalar, X##_vec4, [](auto... a) { Ok(FuncNR_##X(a...)); })

// Plain-loop check of one kernel: `before` holds the arrays as they were,
// `after` as the kernel left them, `out` is the output array in `after`.
using Check = std::function<void(const Bufs& before, const Bufs& after, const float* out, int n)>;

struct KernelCase {
  const char* name;
  int taps;                 // filter length (convolution); 0 elsewhere
  bool pairs;               // length counts floats of complex values
  bool inPlaceOnly;         // updates `out` in place; has no separate output
  bool writesSecond;        // also writes b[0..n-1] (state update)
  Alias secondAlias;        // a second aliasing that is legal besides kFirst
  std::function<int(int)> written;  // floats written to the output array
  std::function<void(Form, Bufs&, float* out, int n)> run;
  Check check;
};

// A table entry's run (the form f, the arrays s, output o, length n) and its
// plain-loop check (arrays before and after, output o, length n).
#define RUN(...) [](Form f, [[maybe_unused]] Bufs& s, float* o, int n) { __VA_ARGS__; }
#define CHECK(...) [](const Bufs& be, [[maybe_unused]] const Bufs& af, const float* o, int n) { __VA_ARGS__; }

int Outputs(int n) { return n < 0 ? 0 : n; }
int HalfOutputs(int n) { return n / 2; }

// ---- tolerances of the plain-loop checks ----

// Exact: the plain loop does the same float operations in the same order.
void ExpectExact(float expected, float got, int i) {
  ASSERT_EQ(Bits(expected), Bits(got)) << "element " << i << ": " << expected << " vs " << got;
}

// A sum of products in another order: within a few roundings of the magnitude.
void ExpectSum(double exact, double magnitude, float got, int terms, int i) {
  const double budget = (terms + 2) * 1.2e-7 * magnitude + 1e-30;
  ASSERT_NEAR(got, exact, budget) << "element " << i;
}

constexpr double kRecipRel = 1.6e-5;  // one Newton step on an 8-bit estimate: about 16 bits
constexpr double kTanhLaneAbs = 1.6e-5;
constexpr double kTansigAbs = 5.0e-6;

int LaneEnd(int n) { return n < 0 ? 0 : n / 4 * 4; }

// The weight kernels: out[i] plus weights times a[j] (or a[j] b[j]), with the
// weights of input j at kShift + stride * j + i.
void ExpectWeightSums(const Bufs& be, const float* o, int n, bool product) {
  for (int i = 0; i < n; ++i) {
    double exact = be.out[i], mag = std::fabs(be.out[i]);
    for (int j = 0; j < kLoop; ++j) {
      const double v = product ? (double)be.a[j] * be.b[j] : be.a[j];
      const double t = (double)be.w[kShift + (n + kStridePad) * j + i] * v;
      exact += t;
      mag += std::fabs(t);
    }
    ExpectSum(exact, mag, o[i], product ? kLoop + 1 : kLoop, i);
  }
}

const KernelCase kKernels[] = {
    {"PowerSpectrum", 0, true, false, false, Alias::kFirst, HalfOutputs,
     RUN(FORMS(Power_Spectrum)(s.a.data(), o, n)),
     CHECK(
       for (int k = 0; k < n / 2; ++k) {
         ExpectExact(be.a[2 * k] * be.a[2 * k] + be.a[2 * k + 1] * be.a[2 * k + 1], o[k], k);
       })},
    {"CrossPowerSpectrum", 0, true, false, false, Alias::kSecond, HalfOutputs,
     RUN(FORMS(Cross_Power_Spectrum)(s.a.data(), s.b.data(), o, n)),
     CHECK(
       for (int k = 0; k < n / 2; ++k) {
         ExpectExact(be.a[2 * k] * be.b[2 * k] + be.a[2 * k + 1] * be.b[2 * k + 1], o[k], k);
       })},
    {"MinElement", 0, false, false, false, Alias::kSecond, Outputs,
     RUN(FORMS(Mini_Element_By_Element)(s.a.data(), s.b.data(), o, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(std::fmin(be.a[i], be.b[i]), o[i], i))},
    {"LowerBoundAssigned", 0, false, false, false, Alias::kFirst, Outputs,
     RUN(FORMS(Lower_Bound_Calculation_And_Assigned)(s.a.data(), o, 0.5f, -7.0f, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(be.a[i] >= 0.5f ? be.a[i] : -7.0f, o[i], i))},
    {"UpperBoundAssigned", 0, false, false, false, Alias::kFirst, Outputs,
     RUN(FORMS(Upper_Bound_Calculation_And_Assigned)(s.a.data(), o, -0.5f, 9.0f, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(be.a[i] <= -0.5f ? be.a[i] : 9.0f, o[i], i))},
    {"LowerBound", 0, false, false, false, Alias::kFirst, Outputs,
     RUN(FORMS(Lower_Bound_Calculation)(s.a.data(), o, 1.25f, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(std::fmax(be.a[i], 1.25f), o[i], i))},
    {"UpperBound", 0, false, false, false, Alias::kFirst, Outputs,
     RUN(FORMS(Upper_Bound_Calculation)(s.a.data(), o, -1.25f, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(std::fmin(be.a[i], -1.25f), o[i], i))},
    {"FrequencyMulRealFilter", 0, true, false, false, Alias::kFirst, [](int n) { return n / 2 * 2; },
     RUN(FORMS(Frequency_Mul_Real_Filter)(s.a.data(), s.b.data(), o, n)),
     CHECK(
       for (int k = 0; k < n / 2; ++k) {
         ExpectExact(be.a[2 * k] * be.b[k], o[2 * k], 2 * k);
         ExpectExact(be.a[2 * k + 1] * be.b[k], o[2 * k + 1], 2 * k + 1);
       })},
    {"Division", 0, false, false, false, Alias::kSecond, Outputs,
     RUN(FORMS(Division_Array)(s.a.data(), s.b.data(), o, n)),
     CHECK(
       for (int i = 0; i < n; ++i) {
         const float exact = be.a[i] / be.b[i];
         if (i < LaneEnd(n)) {
           ASSERT_NEAR(o[i], exact, kRecipRel * std::fabs(exact)) << "lane " << i;
         } else {
           ExpectExact(exact, o[i], i);  // the tail divides exactly
         }
       })},
    {"Add", 0, false, false, false, Alias::kSecond, Outputs,
     RUN(FORMS(Add_Array)(s.a.data(), s.b.data(), o, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(be.a[i] + be.b[i], o[i], i))},
    {"RecursiveScalar", 0, false, false, false, Alias::kSecond, Outputs,
     RUN(FORMS(Recursive_Scalar)(s.a.data(), s.b.data(), 0.85f, o, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(be.a[i] * 0.85f + be.b[i] * (1.0f - 0.85f), o[i], i))},
    {"RecursiveArray", 0, false, false, false, Alias::kSecond, Outputs,
     RUN(FORMS(Recursive_Array)(s.a.data(), s.b.data(), s.c.data(), o, n)),
     CHECK(
       for (int i = 0; i < n; ++i) {
         ExpectExact(be.a[i] * be.c[i] + be.b[i] * (1.0f - be.c[i]), o[i], i);
       })},
    {"Tanh", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(Tanh)(o, n)),
     CHECK(
       for (int i = 0; i < n; ++i) {
         const double x = be.out[i];
         const double budget = i < LaneEnd(n) ? kTanhLaneAbs : kTansigAbs;
         ASSERT_NEAR(o[i], std::tanh(x), budget) << (i < LaneEnd(n) ? "lane " : "tail ") << i;
       })},
    {"Sigmoid", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(Sigmoid)(o, n)),
     CHECK(
       for (int i = 0; i < n; ++i) {
         const double exact = 1.0 / (1.0 + std::exp(-(double)be.out[i]));
         const double budget = i < LaneEnd(n) ? kRecipRel * exact : kTansigAbs;
         ASSERT_NEAR(o[i], exact, budget) << (i < LaneEnd(n) ? "lane " : "tail ") << i;
       })},
    {"Relu", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(Relu)(o, n)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact(be.out[i] < 0.0f ? 0.0f : be.out[i], o[i], i))},
    {"AddBiasScale", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(AddBias_Scale)(s.w.data(), o, n, &s.scale)),
     CHECK(for (int i = 0; i < n; ++i) ExpectExact((be.out[i] + (float)be.w[i]) * be.scale, o[i], i))},
    {"MulWeight", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(MulWeight)(s.w.data(), s.a.data(), o, kShift, n + kStridePad, n, kLoop)),
     CHECK(ExpectWeightSums(be, o, n, false))},
    {"MulWeight2", 0, false, true, false, Alias::kSeparate, Outputs,
     RUN(FORMS(MulWeight2)(s.w.data(), s.a.data(), s.b.data(), o, kShift, n + kStridePad, n, kLoop)),
     CHECK(ExpectWeightSums(be, o, n, true))},
    {"MulState", 0, false, false, true, Alias::kSeparate, Outputs,
     RUN(FORMS(MulState)(s.a.data(), s.b.data(), o, n)),
     CHECK(
       for (int i = 0; i < n; ++i) {
         const float t = be.a[i] * be.b[i] + (1.0f - be.a[i]) * be.out[i];
         ExpectExact(t, o[i], i);
         ExpectExact(t, af.b[i], i);  // the state is written too
       })},
};

// Convolution with several filter lengths: shorter than a lane group, one
// group, the 22-tap and 32-tap smoothing kernels of the estimators.
constexpr int kTapCounts[] = {3, 4, 22, 32};

KernelCase ConvolutionCase(int taps) {
  KernelCase kc{"Convolution", taps, false, false, false, Alias::kFirst,
                [taps](int n) { return n + taps - 1 < 0 ? 0 : n + taps - 1; }, nullptr, nullptr};
  kc.run = [taps](Form f, Bufs& s, float* o, int n) {
    FORMS(Convolution)(s.a.data(), s.b.data(), n, taps, o);
  };
  kc.check = [taps](const Bufs& be, const Bufs&, const float* o, int n) {
    for (int k = 0; k < n + taps - 1; ++k) {
      double exact = 0.0, mag = 0.0;
      for (int j = 0; j < taps; ++j) {
        const double t = (double)be.a[k + j] * be.b[j];  // not reversed
        exact += t;
        mag += std::fabs(t);
      }
      ExpectSum(exact, mag, o[k], taps, k);
    }
  };
  return kc;
}

std::vector<KernelCase> AllKernels() {
  std::vector<KernelCase> all(std::begin(kKernels), std::end(kKernels));
  for (int taps : kTapCounts) all.push_back(ConvolutionCase(taps));
  return all;
}

const std::vector<KernelCase>& Kernels() {
  static const std::vector<KernelCase> all = AllKernels();
  return all;
}

std::string CaseName(const KernelCase& kc) {
  return kc.taps ? std::string(kc.name) + std::to_string(kc.taps) : std::string(kc.name);
}

// Random arrays with room for every kernel's reads plus a guard zone. The
// second array stays away from zero (it is a divisor); the first spans the
// interesting range of tanh and the logistic function, with a few tiny values
// for the small-argument path of tanh.
Bufs MakeBufs(int n, std::mt19937& g) {
  const int cap = 2 * n + 2 * kMaxTaps + kGuardFloats;
  std::uniform_real_distribution<float> wide(-10.0f, 10.0f), mag(0.05f, 20.0f), unit(0.0f, 1.0f);
  std::uniform_int_distribution<int> bytes(-128, 127);
  Bufs s;
  s.a.resize(cap);
  s.b.resize(cap);
  s.c.resize(cap);
  s.out.resize(cap);
  for (int i = 0; i < cap; ++i) {
    s.a[i] = i % 11 == 5 ? 1e-5f * wide(g) : wide(g);
    s.b[i] = (unit(g) < 0.5f ? -1.0f : 1.0f) * mag(g);
    s.c[i] = unit(g);
    s.out[i] = i % 13 == 7 ? 5e-5f * wide(g) : wide(g);
  }
  s.w.resize(kShift + (n + kStridePad) * kLoop + n + kGuardFloats);
  for (signed char& v : s.w) v = (signed char)bytes(g);
  s.scale = 1.0f / 256.0f;
  return s;
}

void ExpectSameBits(const std::vector<float>& x, const std::vector<float>& y, const char* what) {
  ASSERT_EQ(x.size(), y.size());
  for (size_t i = 0; i < x.size(); ++i) ASSERT_EQ(Bits(x[i]), Bits(y[i])) << what << "[" << i << "]";
}

// Runs one form on a copy; returns the arrays as it left them.
Bufs RunForm(const KernelCase& kc, Form form, const Bufs& start, int n, Alias alias) {
  Bufs s = start;
  kc.run(form, s, kc.inPlaceOnly ? s.out.data() : Target(s, alias), n);
  return s;
}

std::vector<Alias> Aliases(const KernelCase& kc) {
  if (kc.inPlaceOnly || kc.writesSecond) return {Alias::kSeparate};
  std::vector<Alias> v{Alias::kSeparate, Alias::kFirst};
  if (kc.secondAlias == Alias::kSecond) v.push_back(Alias::kSecond);
  return v;
}

const std::vector<float>& Array(const Bufs& s, Alias alias) {
  return alias == Alias::kFirst ? s.a : alias == Alias::kSecond ? s.b : s.out;
}

// Only the output extent (and a state array where the kernel has one)
// changes; every other float of every array stays as it was.
void ExpectOnlyOutputWritten(const KernelCase& kc, const Bufs& before, const Bufs& after, int n,
                             Alias alias) {
  const int written = kc.written(n);
  const std::vector<float>* arrays[4][2] = {{&before.a, &after.a},
                                            {&before.b, &after.b},
                                            {&before.c, &after.c},
                                            {&before.out, &after.out}};
  const std::vector<float>& target = Array(after, kc.inPlaceOnly ? Alias::kSeparate : alias);
  for (auto& pair : arrays) {
    const bool isTarget = pair[1] == &target;
    const bool isState = kc.writesSecond && pair[1] == &after.b;
    const size_t from = isTarget ? written : isState ? (size_t)n : 0;
    for (size_t i = from; i < pair[0]->size(); ++i) {
      ASSERT_EQ(Bits((*pair[0])[i]), Bits((*pair[1])[i])) << "guard/input changed at " << i;
    }
  }
  ASSERT_EQ(before.w, after.w);
}

struct NrKernelFormTest : testing::TestWithParam<std::tuple<int, int, Form>> {};

TEST_P(NrKernelFormTest, MatchesScalarBitForBitKeepsGuardsAndMeetsPlainLoop) {
  const KernelCase& kc = Kernels()[std::get<0>(GetParam())];
  const int n = std::get<1>(GetParam());
  const Form form = std::get<2>(GetParam());
  std::mt19937 g(zebtest::TestSeed());
  const Bufs start = MakeBufs(n, g);
  for (Alias alias : Aliases(kc)) {
    SCOPED_TRACE(alias == Alias::kSeparate ? "separate output" : alias == Alias::kFirst
                                                                     ? "in place on input 1"
                                                                     : "in place on input 2");
    const Bufs ref = RunForm(kc, Form::kScalar, start, n, alias);
    const Bufs got = RunForm(kc, form, start, n, alias);
    ExpectSameBits(ref.a, got.a, "a");
    ExpectSameBits(ref.b, got.b, "b");
    ExpectSameBits(ref.c, got.c, "c");
    ExpectSameBits(ref.out, got.out, "out");
    ExpectOnlyOutputWritten(kc, start, got, n, alias);
    if (alias == Alias::kSeparate) {
      kc.check(start, got, got.out.data(), n);
    } else {
      const std::vector<float>& o = Array(got, alias);
      kc.check(start, got, o.data(), n);
    }
  }
}

std::string FormTestName(const testing::TestParamInfo<NrKernelFormTest::ParamType>& info) {
  return CaseName(Kernels()[std::get<0>(info.param)]) + "_n" +
         std::to_string(std::get<1>(info.param)) +
         (std::get<2>(info.param) == Form::kVec4 ? "_vec4" : "_dispatch");
}

INSTANTIATE_TEST_SUITE_P(AllNrKernels, NrKernelFormTest,
                         testing::Combine(testing::Range(0, (int)(std::size(kKernels) +
                                                                  std::size(kTapCounts))),
                                          testing::Values(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 129, 258),
                                          testing::Values(Form::kVec4, Form::kDispatch)),
                         FormTestName);

// ------------------------------------------------------- edge cases ----

TEST(NrKernelEdges, LowerBoundAssignedWithBoundZeroKeepsZero) {
  float in[6] = {0.0f, -0.0f, -1e-30f, 2.0f, 0.0f, -3.0f}, out[6];
  FuncNR_Lower_Bound_Calculation_And_Assigned(in, out, 0.0f, 42.0f, 6);
  EXPECT_EQ(out[0], 0.0f);
  EXPECT_EQ(out[1], 0.0f);  // -0 >= 0
  EXPECT_EQ(out[2], 42.0f);
  EXPECT_EQ(out[3], 2.0f);
  EXPECT_EQ(out[4], 0.0f);  // tail element
  EXPECT_EQ(out[5], 42.0f);
}

TEST(NrKernelEdges, TanhAndSigmoidLanesDifferFromTailsOnlyInTheLastBits) {
  // The same value at a lane position and at a tail position.
  float t[5] = {0.7f, 0.7f, 0.7f, 0.7f, 0.7f}, s[5] = {0.7f, 0.7f, 0.7f, 0.7f, 0.7f};
  FuncNR_Tanh(t, 5);
  FuncNR_Sigmoid(s, 5);
  EXPECT_EQ(t[4], tansig_approx(0.7f));
  EXPECT_EQ(s[4], sigmoid_approx(0.7f));
  EXPECT_EQ(t[0], tanh_ps_scalar(0.7f));
  EXPECT_NEAR(t[0], t[4], 5e-5);
  EXPECT_NEAR(s[0], s[4], 5e-5);
}

// The logistic lanes: the once-refined reciprocal of 1 + e^-v, with e^x by
// these kernels' own recipe (0.0013982 as second coefficient, y * r * r).
TEST(NrKernelEdges, SigmoidLanesUseTheKernelsOwnExponential) {
  const float c[6] = {0.00019875691f, 0.0013982f, 0.0083334520f, 0.041665796f, 0.16666666f, 0.5f};
  for (float v = -95.0f; v <= 95.0f; v += 0.173f) {
    const float x = std::fmin(std::fmax(-v, -88.37626f), 88.37626f);
    const float n = std::floor(x * 1.442695f + 0.5f);
    const float r = x - n * 0.693359375f - n * -0.00021219444f;
    float y = c[0];
    for (int k = 1; k < 6; ++k) y = y * r + c[k];
    y = y * r * r + r + 1.0f;
    const float d = 1.0f + std::ldexp(y, (int)n);
    const float r0 = zeb_vrecpe_f32(d);
    ASSERT_EQ(Bits(sigmoid_ps_scalar(v)), Bits(r0 * zeb_vrecps_f32(d, r0))) << v;
  }
}

TEST(NrKernelEdges, TanhLanesPassTinyInputsAndSaturate) {
  const zeb_f32x4 x = {5e-5f, -9e-5f, 20.0f, -20.0f};
  const zeb_f32x4 y = tanh_ps(x);
  EXPECT_EQ(y[0], 5e-5f);
  EXPECT_EQ(y[1], -9e-5f);
  EXPECT_NEAR(y[2], 1.0f, kTanhLaneAbs);
  EXPECT_NEAR(y[3], -1.0f, kTanhLaneAbs);
  EXPECT_EQ(Bits(y[2]), Bits(tanh_ps_scalar(9.0f)));  // limited to 9
}

TEST(NrKernelEdges, TansigApproxLimitsAndSmallArguments) {
  EXPECT_EQ(tansig_approx(8.0f), 1.0f);
  EXPECT_EQ(tansig_approx(1e9f), 1.0f);
  EXPECT_EQ(tansig_approx(-8.0f), -1.0f);
  EXPECT_EQ(tansig_approx(NAN), 1.0f);  // "not below 8" is asked first
  EXPECT_EQ(tansig_approx(0.0f), 0.0f);
  EXPECT_NEAR(tansig_approx(1e-3f), 1e-3f, 1e-9);
  EXPECT_EQ(tansig_approx(-0.5f), -tansig_approx(0.5f));
  for (float x = -7.999f; x < 8.0f; x += 0.0137f) {
    ASSERT_NEAR(tansig_approx(x), std::tanh((double)x), kTansigAbs) << x;
    ASSERT_NEAR(sigmoid_approx(x), 1.0 / (1.0 + std::exp(-(double)x)), kTansigAbs) << x;
  }
  EXPECT_EQ(sigmoid_approx(0.0f), 0.5f);
}

TEST(NrKernelEdges, TansigTableIsTanhInSteps) {
  for (int i = 0; i < NR_TANSIG_TABLE_SIZE; ++i) {
    ASSERT_NEAR(tansig_table[i], std::tanh(0.04 * i), 5.6e-7) << i;
  }
}

TEST(NrKernelEdges, DivisionLaneByZeroFollowsTheEstimate) {
  float num[4] = {1.0f, -1.0f, 0.0f, 2.0f}, den[4] = {0.0f, 0.0f, 0.0f, 4.0f}, out[4];
  FuncNR_Division_Array(num, den, out, 4);
  EXPECT_TRUE(std::isinf(out[0]) || std::isnan(out[0]));
  EXPECT_TRUE(std::isinf(out[1]) || std::isnan(out[1]));
  EXPECT_TRUE(std::isnan(out[2]));
  EXPECT_NEAR(out[3], 0.5f, kRecipRel);
}

}  // namespace
