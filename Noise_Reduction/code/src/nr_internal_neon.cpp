// Array kernels of the noise reduction core and the network, in a scalar
// reference form and a four-lane form that gives the same bits.
//
// Element-wise kernels are written once as an operation with three bodies:
// One (the lane arithmetic on one float), Four (the same on four lanes) and
// Tail (what the remainder of the array gets, usually One). Small drivers
// run them over the array in the shared loop shape.
#include <math.h>
#include <stdint.h>

#include "nr_internal_neon.h"
#include "zeb_recip_estimate.h"

// tanh(0.04 i) rounded to six decimals, i = 0..200.
extern "C" const float tansig_table[NR_TANSIG_TABLE_SIZE] = {
    0.000000f, 0.039979f, 0.079830f, 0.119427f, 0.158649f, 0.197375f, 0.235496f, 0.272905f,
    0.309507f, 0.345214f, 0.379949f, 0.413644f, 0.446244f, 0.477700f, 0.507977f, 0.537050f,
    0.564900f, 0.591519f, 0.616909f, 0.641077f, 0.664037f, 0.685809f, 0.706419f, 0.725897f,
    0.744277f, 0.761594f, 0.777888f, 0.793199f, 0.807569f, 0.821040f, 0.833655f, 0.845456f,
    0.856485f, 0.866784f, 0.876393f, 0.885352f, 0.893698f, 0.901468f, 0.908698f, 0.915420f,
    0.921669f, 0.927473f, 0.932862f, 0.937863f, 0.942503f, 0.946806f, 0.950795f, 0.954492f,
    0.957917f, 0.961090f, 0.964028f, 0.966747f, 0.969265f, 0.971594f, 0.973749f, 0.975743f,
    0.977587f, 0.979293f, 0.980869f, 0.982327f, 0.983675f, 0.984921f, 0.986072f, 0.987136f,
    0.988119f, 0.989027f, 0.989867f, 0.990642f, 0.991359f, 0.992020f, 0.992632f, 0.993196f,
    0.993718f, 0.994199f, 0.994644f, 0.995055f, 0.995434f, 0.995784f, 0.996108f, 0.996407f,
    0.996682f, 0.996937f, 0.997172f, 0.997389f, 0.997590f, 0.997775f, 0.997946f, 0.998104f,
    0.998249f, 0.998384f, 0.998508f, 0.998623f, 0.998728f, 0.998826f, 0.998916f, 0.999000f,
    0.999076f, 0.999147f, 0.999213f, 0.999273f, 0.999329f, 0.999381f, 0.999428f, 0.999472f,
    0.999513f, 0.999550f, 0.999585f, 0.999617f, 0.999646f, 0.999673f, 0.999699f, 0.999722f,
    0.999743f, 0.999763f, 0.999781f, 0.999798f, 0.999813f, 0.999828f, 0.999841f, 0.999853f,
    0.999865f, 0.999875f, 0.999885f, 0.999893f, 0.999902f, 0.999909f, 0.999916f, 0.999923f,
    0.999929f, 0.999934f, 0.999939f, 0.999944f, 0.999948f, 0.999952f, 0.999956f, 0.999959f,
    0.999962f, 0.999965f, 0.999968f, 0.999970f, 0.999973f, 0.999975f, 0.999977f, 0.999978f,
    0.999980f, 0.999982f, 0.999983f, 0.999984f, 0.999986f, 0.999987f, 0.999988f, 0.999989f,
    0.999990f, 0.999990f, 0.999991f, 0.999992f, 0.999992f, 0.999993f, 0.999994f, 0.999994f,
    0.999994f, 0.999995f, 0.999995f, 0.999996f, 0.999996f, 0.999996f, 0.999997f, 0.999997f,
    0.999997f, 0.999997f, 0.999998f, 0.999998f, 0.999998f, 0.999998f, 0.999998f, 0.999998f,
    0.999998f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f,
    0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 0.999999f, 1.000000f,
    1.000000f, 1.000000f, 1.000000f, 1.000000f, 1.000000f, 1.000000f, 1.000000f, 1.000000f,
    1.000000f,
};

extern "C" const float asinf_lut[NR_ASINF_LUT_SIZE] = {
    1.5707961f, -0.21458526f, 0.08875563f, -0.0488025f, 0.026899949f, -0.01114623f, 0.0022959649f,
};

namespace {

constexpr uint32_t kAbsMask = 0x7FFFFFFFu;

// tanh_ps: t limited to +-9, then p(t^2) * t / q(t^2), highest power first.
constexpr float kTanhClamp = 9.0f;
constexpr float kTanhTiny = 0.0001f;
constexpr float kTanhP[7] = {-2.7607684e-16f, 2.0001879e-13f,  -8.604672e-11f, 5.1222973e-08f,
                             1.4857224e-05f,  0.00063726195f, 0.0048935246f};
constexpr float kTanhQ[4] = {1.1982584e-06f, 0.00011853471f, 0.0022684347f, 0.0048935250f};

// exp_ps of the logistic lanes: the single-precision exponential with this
// family's own constants (its second coefficient rounds to another float
// than the math layer's) and the closing products taken as y * r * r.
constexpr float kExpLimit = 88.37626f;
constexpr float kExpLog2e = 1.442695f;
constexpr float kExpLn2Hi = 0.693359375f;
constexpr float kExpLn2Lo = -0.00021219444f;
constexpr float kExpPoly[6] = {0.00019875691f, 0.0013982f,   0.0083334520f,
                               0.041665796f,   0.16666666f, 0.5f};
constexpr int kExpFracBits = 23;
constexpr int32_t kExpBias = 127;

// tansig_approx: table step 0.04, so the index is 25 |x| rounded.
constexpr float kTansigLimit = 8.0f;
constexpr float kTansigStepsPerUnit = 25.0f;
constexpr float kTansigStep = 0.04f;

zeb_f32x4 AbsF32x4(zeb_f32x4 x) { return zeb_from_bits_u32x4(zeb_bits_f32x4(x) & kAbsMask); }
float AbsF32(float x) { return zeb_f32_from_bits(zeb_f32_bits(x) & kAbsMask); }

// ---------------------------------------------------- loop drivers ----
// Lanes while i + 3 < n, then the tail element by element.

template <class Op>
void Map1Scalar(const Op& op, const float* a, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = op.One(a[i + k]);
  }
  for (; i < n; ++i) out[i] = op.Tail(a[i]);
}

template <class Op>
void Map1Vec4(const Op& op, const float* a, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) zeb_store_f32x4(out + i, op.Four(zeb_load_f32x4(a + i)));
  for (; i < n; ++i) out[i] = op.Tail(a[i]);
}

template <class Op>
void Map2Scalar(const Op& op, const float* a, const float* b, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = op.One(a[i + k], b[i + k]);
  }
  for (; i < n; ++i) out[i] = op.Tail(a[i], b[i]);
}

template <class Op>
void Map2Vec4(const Op& op, const float* a, const float* b, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) {
    zeb_store_f32x4(out + i, op.Four(zeb_load_f32x4(a + i), zeb_load_f32x4(b + i)));
  }
  for (; i < n; ++i) out[i] = op.Tail(a[i], b[i]);
}

template <class Op>
void Map3Scalar(const Op& op, const float* a, const float* b, const float* c, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = op.One(a[i + k], b[i + k], c[i + k]);
  }
  for (; i < n; ++i) out[i] = op.One(a[i], b[i], c[i]);
}

template <class Op>
void Map3Vec4(const Op& op, const float* a, const float* b, const float* c, float* out, int n) {
  int i = 0;
  for (; i + 3 < n; i += ZEB_LANES) {
    zeb_store_f32x4(out + i, op.Four(zeb_load_f32x4(a + i), zeb_load_f32x4(b + i),
                                     zeb_load_f32x4(c + i)));
  }
  for (; i < n; ++i) out[i] = op.One(a[i], b[i], c[i]);
}

// ------------------------------------------------ element operations ----

struct MinOp {
  float One(float a, float b) const { return b < a ? b : a; }
  zeb_f32x4 Four(zeb_f32x4 a, zeb_f32x4 b) const { return zeb_select_f32x4(b < a, b, a); }
  float Tail(float a, float b) const { return One(a, b); }
};

struct LowerAssignOp {
  float bound, value;
  float One(float x) const { return x >= bound ? x : value; }
  zeb_f32x4 Four(zeb_f32x4 x) const {
    return zeb_select_f32x4(x >= bound, x, zeb_splat_f32x4(value));
  }
  float Tail(float x) const { return One(x); }
};

struct UpperAssignOp {
  float bound, value;
  float One(float x) const { return x <= bound ? x : value; }
  zeb_f32x4 Four(zeb_f32x4 x) const {
    return zeb_select_f32x4(x <= bound, x, zeb_splat_f32x4(value));
  }
  float Tail(float x) const { return One(x); }
};

struct LowerBoundOp {
  float bound;
  float One(float x) const { return x < bound ? bound : x; }
  zeb_f32x4 Four(zeb_f32x4 x) const { return zeb_max_f32x4(x, zeb_splat_f32x4(bound)); }
  float Tail(float x) const { return One(x); }
};

struct UpperBoundOp {
  float bound;
  float One(float x) const { return x > bound ? bound : x; }
  zeb_f32x4 Four(zeb_f32x4 x) const { return zeb_min_f32x4(x, zeb_splat_f32x4(bound)); }
  float Tail(float x) const { return One(x); }
};

struct DivisionOp {
  float One(float n, float d) const { return div_ps_scalar(n, d); }
  zeb_f32x4 Four(zeb_f32x4 n, zeb_f32x4 d) const { return div_ps(n, d); }
  float Tail(float n, float d) const { return n / d; }  // the tail divides exactly
};

struct AddOp {
  float One(float a, float b) const { return a + b; }
  zeb_f32x4 Four(zeb_f32x4 a, zeb_f32x4 b) const { return a + b; }
  float Tail(float a, float b) const { return One(a, b); }
};

struct RecursiveScalarOp {
  float s;
  float One(float a, float b) const { return a * s + b * (1.0f - s); }
  zeb_f32x4 Four(zeb_f32x4 a, zeb_f32x4 b) const {
    const zeb_f32x4 sv = zeb_splat_f32x4(s);
    return a * sv + b * (zeb_splat_f32x4(1.0f) - sv);
  }
  float Tail(float a, float b) const { return One(a, b); }
};

struct RecursiveArrayOp {
  float One(float a, float b, float s) const { return a * s + b * (1.0f - s); }
  zeb_f32x4 Four(zeb_f32x4 a, zeb_f32x4 b, zeb_f32x4 s) const {
    return a * s + b * (zeb_splat_f32x4(1.0f) - s);
  }
};

struct TanhOp {
  float One(float x) const { return tanh_ps_scalar(x); }
  zeb_f32x4 Four(zeb_f32x4 x) const { return tanh_ps(x); }
  float Tail(float x) const { return tansig_approx(x); }
};

struct SigmoidOp {
  float One(float x) const { return sigmoid_ps_scalar(x); }
  zeb_f32x4 Four(zeb_f32x4 x) const { return sigmoid_ps(x); }
  float Tail(float x) const { return sigmoid_approx(x); }
};

struct ReluOp {
  float One(float x) const { return x < 0.0f ? 0.0f : x; }
  zeb_f32x4 Four(zeb_f32x4 x) const { return zeb_max_f32x4(x, zeb_splat_f32x4(0.0f)); }
  float Tail(float x) const { return One(x); }
};

// ------------------------------------------------ pair helpers ----

// Real and imaginary parts of four interleaved complex values.
inline void Deinterleave(const float* x, zeb_f32x4* re, zeb_f32x4* im) {
  const zeb_f32x4 a = zeb_load_f32x4(x);
  const zeb_f32x4 b = zeb_load_f32x4(x + ZEB_LANES);
  *re = __builtin_shufflevector(a, b, 0, 2, 4, 6);
  *im = __builtin_shufflevector(a, b, 1, 3, 5, 7);
}

// Eight signed bytes widened to two float vectors.
inline void WidenBytes(const signed char* w, zeb_f32x4* lo, zeb_f32x4* hi) {
  *lo = zeb_f32x4{(float)w[0], (float)w[1], (float)w[2], (float)w[3]};
  *hi = zeb_f32x4{(float)w[4], (float)w[5], (float)w[6], (float)w[7]};
}

// One output of the weight kernels: accumulation from j = 0 upward.
inline float WeightedSum(const signed char* weight, const float* value, float acc, int i,
                         int shift, int stride, int loop) {
  for (int j = 0; j < loop; ++j) acc = acc + (float)weight[shift + stride * j + i] * value[j];
  return acc;
}

inline float WeightedSum2(const signed char* weight, const float* value1, const float* value2,
                          float acc, int i, int shift, int stride, int loop) {
  for (int j = 0; j < loop; ++j) {
    acc = acc + (float)weight[shift + stride * j + i] * (value1[j] * value2[j]);
  }
  return acc;
}

constexpr int kWideStep = 2 * ZEB_LANES;  // eight outputs a step

// e^x: n = floor(x * log2(e) + 0.5), r = x - n ln2 in two parts, a degree-5
// polynomial in r, scaled by 2^n through the exponent field.
float exp_ps_scalar(float x) {
  x = x > kExpLimit ? kExpLimit : x;
  x = x < -kExpLimit ? -kExpLimit : x;
  const float f = x * kExpLog2e + 0.5f;
  // floor through truncation; a NaN converts as 0 and stays NaN in x.
  const float t = (float)(int32_t)(f == f ? f : 0.0f);
  const float n = t > f ? t - 1.0f : t - 0.0f;
  const float r = x - n * kExpLn2Hi - n * kExpLn2Lo;
  float y = kExpPoly[0];
  for (int k = 1; k < 6; ++k) y = y * r + kExpPoly[k];
  y = y * r * r + r + 1.0f;
  // n lies in [-127, 128]: the biased exponent 0..255 fits the field.
  return y * zeb_f32_from_bits((uint32_t)((int32_t)n + kExpBias) << kExpFracBits);
}

zeb_f32x4 exp_ps(zeb_f32x4 x) {
  const zeb_f32x4 zero = zeb_splat_f32x4(0.0f);
  x = zeb_min_f32x4(x, zeb_splat_f32x4(kExpLimit));
  x = zeb_max_f32x4(x, zeb_splat_f32x4(-kExpLimit));
  const zeb_f32x4 f = x * kExpLog2e + 0.5f;
  const zeb_f32x4 t = zeb_cvt_f32x4(zeb_cvt_i32x4(zeb_select_f32x4(f == f, f, zero)));
  const zeb_f32x4 n = t - zeb_select_f32x4(t > f, zeb_splat_f32x4(1.0f), zero);
  const zeb_f32x4 r = x - n * kExpLn2Hi - n * kExpLn2Lo;
  zeb_f32x4 y = zeb_splat_f32x4(kExpPoly[0]);
  for (int k = 1; k < 6; ++k) y = y * r + kExpPoly[k];
  y = y * r * r + r + 1.0f;
  const zeb_u32x4 biased = (zeb_u32x4)(zeb_cvt_i32x4(n) + kExpBias);
  return y * zeb_from_bits_u32x4(biased << kExpFracBits);
}

}  // namespace

// ================================================= lane functions ==

extern "C" float div_ps_scalar(float a, float b) {
  const float r0 = zeb_vrecpe_f32(b);
  const float r1 = r0 * zeb_vrecps_f32(b, r0);
  return a * r1;
}

extern "C" zeb_f32x4 div_ps(zeb_f32x4 a, zeb_f32x4 b) {
  const zeb_f32x4 r0 = zeb_vrecpeq_f32(b);
  const zeb_f32x4 r1 = r0 * zeb_vrecpsq_f32(b, r0);
  return a * r1;
}

extern "C" float sigmoid_ps_scalar(float v) {
  const float d = 1.0f + exp_ps_scalar(-v);
  const float r0 = zeb_vrecpe_f32(d);
  return r0 * zeb_vrecps_f32(d, r0);
}

extern "C" zeb_f32x4 sigmoid_ps(zeb_f32x4 v) {
  const zeb_f32x4 d = zeb_splat_f32x4(1.0f) + exp_ps(-v);
  const zeb_f32x4 r0 = zeb_vrecpeq_f32(d);
  return r0 * zeb_vrecpsq_f32(d, r0);
}

extern "C" float tanh_ps_scalar(float x) {
  float t = x > kTanhClamp ? kTanhClamp : x;
  t = t < -kTanhClamp ? -kTanhClamp : t;
  const float u = t * t;
  float p = kTanhP[0];
  for (int k = 1; k < 7; ++k) p = p * u + kTanhP[k];
  p = p * t;
  float q = kTanhQ[0];
  for (int k = 1; k < 4; ++k) q = q * u + kTanhQ[k];
  const float r = div_ps_scalar(p, q);
  return AbsF32(x) < kTanhTiny ? x : r;
}

extern "C" zeb_f32x4 tanh_ps(zeb_f32x4 x) {
  zeb_f32x4 t = zeb_min_f32x4(x, zeb_splat_f32x4(kTanhClamp));
  t = zeb_max_f32x4(t, zeb_splat_f32x4(-kTanhClamp));
  const zeb_f32x4 u = t * t;
  zeb_f32x4 p = zeb_splat_f32x4(kTanhP[0]);
  for (int k = 1; k < 7; ++k) p = p * u + kTanhP[k];
  p = p * t;
  zeb_f32x4 q = zeb_splat_f32x4(kTanhQ[0]);
  for (int k = 1; k < 4; ++k) q = q * u + kTanhQ[k];
  const zeb_f32x4 r = div_ps(p, q);
  return zeb_select_f32x4(AbsF32x4(x) < kTanhTiny, x, r);
}

extern "C" float tansig_approx(float x) {
  // Tested as "not below 8" first, so a NaN comes out as 1.
  if (!(x < kTansigLimit)) return 1.0f;
  if (!(x > -kTansigLimit)) return -1.0f;
  float sign = 1.0f;
  if (x < 0.0f) {
    x = -x;
    sign = -1.0f;
  }
  const int i = (int)floor((double)(0.5f + kTansigStepsPerUnit * x));
  const float d = x - kTansigStep * (float)i;
  const float y = tansig_table[i];
  return sign * (y + d * (1.0f - y * y) * (1.0f - y * d));
}

extern "C" float sigmoid_approx(float x) { return 0.5f + 0.5f * tansig_approx(0.5f * x); }

// ================================================= scalar forms ==

extern "C" void Power_Spectrum_scalar(const float* X, float* ps, int length) {
  const int bins = length / 2;
  for (int k = 0; k < bins; ++k) ps[k] = X[2 * k] * X[2 * k] + X[2 * k + 1] * X[2 * k + 1];
}

extern "C" void Cross_Power_Spectrum_scalar(const float* X, const float* Y, float* ps,
                                            int length) {
  const int bins = length / 2;
  for (int k = 0; k < bins; ++k) ps[k] = X[2 * k] * Y[2 * k] + X[2 * k + 1] * Y[2 * k + 1];
}

extern "C" void Convolution_scalar(float* input, const float* filter, int input_size,
                                   int filter_size, float* output) {
  const int outputs = input_size + filter_size - 1;
  for (int k = 0; k < outputs; ++k) {
    float lane[ZEB_LANES] = {0.0f, 0.0f, 0.0f, 0.0f};
    int j = 0;
    for (; j + 3 < filter_size; j += ZEB_LANES) {
      for (int l = 0; l < ZEB_LANES; ++l) lane[l] = lane[l] + input[k + j + l] * filter[j + l];
    }
    float sum = lane[0] + lane[1];
    sum = sum + lane[2];
    sum = sum + lane[3];
    for (; j < filter_size; ++j) sum = sum + input[k + j] * filter[j];
    output[k] = sum;
  }
}

extern "C" void Mini_Element_By_Element_scalar(float* input1, float* input2, float* output,
                                               int length) {
  Map2Scalar(MinOp{}, input1, input2, output, length);
}

extern "C" void Lower_Bound_Calculation_And_Assigned_scalar(float* input, float* output,
                                                            float lower_bound, float assigne_value,
                                                            int length) {
  Map1Scalar(LowerAssignOp{lower_bound, assigne_value}, input, output, length);
}

extern "C" void Upper_Bound_Calculation_And_Assigned_scalar(float* input, float* output,
                                                            float upper_bound, float assigne_value,
                                                            int length) {
  Map1Scalar(UpperAssignOp{upper_bound, assigne_value}, input, output, length);
}

extern "C" void Lower_Bound_Calculation_scalar(float* input, float* output, float lower_bound,
                                               int length) {
  Map1Scalar(LowerBoundOp{lower_bound}, input, output, length);
}

extern "C" void Upper_Bound_Calculation_scalar(float* input, float* output, float upper_bound,
                                               int length) {
  Map1Scalar(UpperBoundOp{upper_bound}, input, output, length);
}

extern "C" void Frequency_Mul_Real_Filter_scalar(float* frequency_domain, float* real_filter,
                                                 float* output, int length) {
  const int bins = length / 2;
  for (int k = 0; k < bins; ++k) {
    const float g = real_filter[k];
    output[2 * k] = frequency_domain[2 * k] * g;
    output[2 * k + 1] = frequency_domain[2 * k + 1] * g;
  }
}

extern "C" void Division_Array_scalar(float* input1, float* input2, float* output, int length) {
  Map2Scalar(DivisionOp{}, input1, input2, output, length);
}

extern "C" void Add_Array_scalar(float* input1, float* input2, float* output, int length) {
  Map2Scalar(AddOp{}, input1, input2, output, length);
}

extern "C" void Recursive_Scalar_scalar(float* input1, float* input2, float scalar,
                                        float* output, int length) {
  Map2Scalar(RecursiveScalarOp{scalar}, input1, input2, output, length);
}

extern "C" void Recursive_Array_scalar(float* input1, float* input2, float* scalar,
                                       float* output, int length) {
  Map3Scalar(RecursiveArrayOp{}, input1, input2, scalar, output, length);
}

extern "C" void Tanh_scalar(float* input, int length) {
  Map1Scalar(TanhOp{}, input, input, length);
}

extern "C" void Sigmoid_scalar(float* input, int length) {
  Map1Scalar(SigmoidOp{}, input, input, length);
}

extern "C" void Relu_scalar(float* input, int length) {
  Map1Scalar(ReluOp{}, input, input, length);
}

extern "C" void AddBias_Scale_scalar(const signed char* bias, float* output, int length,
                                     float* scale) {
  const float s = scale[0];
  for (int i = 0; i < length; ++i) output[i] = (output[i] + (float)bias[i]) * s;
}

extern "C" void MulWeight_scalar(const signed char* weight, const float* value, float* output,
                                 int shift, int stride, int length, int loop) {
  for (int i = 0; i < length; ++i) {
    output[i] = WeightedSum(weight, value, output[i], i, shift, stride, loop);
  }
}

extern "C" void MulWeight2_scalar(const signed char* weight, const float* value1,
                                  const float* value2, float* output, int shift, int stride,
                                  int length, int loop) {
  for (int i = 0; i < length; ++i) {
    output[i] = WeightedSum2(weight, value1, value2, output[i], i, shift, stride, loop);
  }
}

extern "C" void MulState_scalar(float* input1, float* input2, float* output, int length) {
  for (int i = 0; i < length; ++i) {
    const float z = input1[i];
    const float t = z * input2[i] + (1.0f - z) * output[i];
    output[i] = t;
    input2[i] = t;
  }
}

// ================================================= 4-lane forms ==

extern "C" void Power_Spectrum_vec4(const float* X, float* ps, int length) {
  const int bins = length / 2;
  int k = 0;
  for (; k + 3 < bins; k += ZEB_LANES) {  // eight floats a step
    zeb_f32x4 re, im;
    Deinterleave(X + 2 * k, &re, &im);
    zeb_store_f32x4(ps + k, re * re + im * im);
  }
  for (; k < bins; ++k) ps[k] = X[2 * k] * X[2 * k] + X[2 * k + 1] * X[2 * k + 1];
}

extern "C" void Cross_Power_Spectrum_vec4(const float* X, const float* Y, float* ps,
                                          int length) {
  const int bins = length / 2;
  int k = 0;
  for (; k + 3 < bins; k += ZEB_LANES) {
    zeb_f32x4 xr, xi, yr, yi;
    Deinterleave(X + 2 * k, &xr, &xi);
    Deinterleave(Y + 2 * k, &yr, &yi);
    zeb_store_f32x4(ps + k, xr * yr + xi * yi);
  }
  for (; k < bins; ++k) ps[k] = X[2 * k] * Y[2 * k] + X[2 * k + 1] * Y[2 * k + 1];
}

extern "C" void Convolution_vec4(float* input, const float* filter, int input_size,
                                 int filter_size, float* output) {
  const int outputs = input_size + filter_size - 1;
  for (int k = 0; k < outputs; ++k) {
    zeb_f32x4 acc = zeb_splat_f32x4(0.0f);
    int j = 0;
    for (; j + 3 < filter_size; j += ZEB_LANES) {
      acc = acc + zeb_load_f32x4(input + k + j) * zeb_load_f32x4(filter + j);
    }
    float sum = acc[0] + acc[1];
    sum = sum + acc[2];
    sum = sum + acc[3];
    for (; j < filter_size; ++j) sum = sum + input[k + j] * filter[j];
    output[k] = sum;
  }
}

extern "C" void Mini_Element_By_Element_vec4(float* input1, float* input2, float* output,
                                             int length) {
  Map2Vec4(MinOp{}, input1, input2, output, length);
}

extern "C" void Lower_Bound_Calculation_And_Assigned_vec4(float* input, float* output,
                                                          float lower_bound, float assigne_value,
                                                          int length) {
  Map1Vec4(LowerAssignOp{lower_bound, assigne_value}, input, output, length);
}

extern "C" void Upper_Bound_Calculation_And_Assigned_vec4(float* input, float* output,
                                                          float upper_bound, float assigne_value,
                                                          int length) {
  Map1Vec4(UpperAssignOp{upper_bound, assigne_value}, input, output, length);
}

extern "C" void Lower_Bound_Calculation_vec4(float* input, float* output, float lower_bound,
                                             int length) {
  Map1Vec4(LowerBoundOp{lower_bound}, input, output, length);
}

extern "C" void Upper_Bound_Calculation_vec4(float* input, float* output, float upper_bound,
                                             int length) {
  Map1Vec4(UpperBoundOp{upper_bound}, input, output, length);
}

extern "C" void Frequency_Mul_Real_Filter_vec4(float* frequency_domain, float* real_filter,
                                               float* output, int length) {
  const int bins = length / 2;
  int k = 0;
  for (; k + 3 < bins; k += ZEB_LANES) {  // four bins, eight floats a step
    const zeb_f32x4 g = zeb_load_f32x4(real_filter + k);
    const zeb_f32x4 lo = zeb_load_f32x4(frequency_domain + 2 * k);
    const zeb_f32x4 hi = zeb_load_f32x4(frequency_domain + 2 * k + ZEB_LANES);
    zeb_store_f32x4(output + 2 * k, lo * __builtin_shufflevector(g, g, 0, 0, 1, 1));
    zeb_store_f32x4(output + 2 * k + ZEB_LANES, hi * __builtin_shufflevector(g, g, 2, 2, 3, 3));
  }
  for (; k < bins; ++k) {
    const float g = real_filter[k];
    output[2 * k] = frequency_domain[2 * k] * g;
    output[2 * k + 1] = frequency_domain[2 * k + 1] * g;
  }
}

extern "C" void Division_Array_vec4(float* input1, float* input2, float* output, int length) {
  Map2Vec4(DivisionOp{}, input1, input2, output, length);
}

extern "C" void Add_Array_vec4(float* input1, float* input2, float* output, int length) {
  Map2Vec4(AddOp{}, input1, input2, output, length);
}

extern "C" void Recursive_Scalar_vec4(float* input1, float* input2, float scalar, float* output,
                                      int length) {
  Map2Vec4(RecursiveScalarOp{scalar}, input1, input2, output, length);
}

extern "C" void Recursive_Array_vec4(float* input1, float* input2, float* scalar, float* output,
                                     int length) {
  Map3Vec4(RecursiveArrayOp{}, input1, input2, scalar, output, length);
}

extern "C" void Tanh_vec4(float* input, int length) { Map1Vec4(TanhOp{}, input, input, length); }

extern "C" void Sigmoid_vec4(float* input, int length) {
  Map1Vec4(SigmoidOp{}, input, input, length);
}

extern "C" void Relu_vec4(float* input, int length) { Map1Vec4(ReluOp{}, input, input, length); }

extern "C" void AddBias_Scale_vec4(const signed char* bias, float* output, int length,
                                   float* scale) {
  const float s = scale[0];
  int i = 0;
  for (; i + kWideStep - 1 < length; i += kWideStep) {
    zeb_f32x4 lo, hi;
    WidenBytes(bias + i, &lo, &hi);
    zeb_store_f32x4(output + i, (zeb_load_f32x4(output + i) + lo) * s);
    zeb_store_f32x4(output + i + ZEB_LANES, (zeb_load_f32x4(output + i + ZEB_LANES) + hi) * s);
  }
  for (; i < length; ++i) output[i] = (output[i] + (float)bias[i]) * s;
}

extern "C" void MulWeight_vec4(const signed char* weight, const float* value, float* output,
                               int shift, int stride, int length, int loop) {
  int i = 0;
  for (; i + kWideStep - 1 < length; i += kWideStep) {
    zeb_f32x4 acc0 = zeb_load_f32x4(output + i);
    zeb_f32x4 acc1 = zeb_load_f32x4(output + i + ZEB_LANES);
    for (int j = 0; j < loop; ++j) {
      zeb_f32x4 lo, hi;
      WidenBytes(weight + shift + stride * j + i, &lo, &hi);
      const zeb_f32x4 v = zeb_splat_f32x4(value[j]);
      acc0 = acc0 + lo * v;
      acc1 = acc1 + hi * v;
    }
    zeb_store_f32x4(output + i, acc0);
    zeb_store_f32x4(output + i + ZEB_LANES, acc1);
  }
  for (; i < length; ++i) output[i] = WeightedSum(weight, value, output[i], i, shift, stride, loop);
}

extern "C" void MulWeight2_vec4(const signed char* weight, const float* value1,
                                const float* value2, float* output, int shift, int stride,
                                int length, int loop) {
  int i = 0;
  for (; i + kWideStep - 1 < length; i += kWideStep) {
    zeb_f32x4 acc0 = zeb_load_f32x4(output + i);
    zeb_f32x4 acc1 = zeb_load_f32x4(output + i + ZEB_LANES);
    for (int j = 0; j < loop; ++j) {
      zeb_f32x4 lo, hi;
      WidenBytes(weight + shift + stride * j + i, &lo, &hi);
      const zeb_f32x4 v = zeb_splat_f32x4(value1[j] * value2[j]);
      acc0 = acc0 + lo * v;
      acc1 = acc1 + hi * v;
    }
    zeb_store_f32x4(output + i, acc0);
    zeb_store_f32x4(output + i + ZEB_LANES, acc1);
  }
  for (; i < length; ++i) {
    output[i] = WeightedSum2(weight, value1, value2, output[i], i, shift, stride, loop);
  }
}

extern "C" void MulState_vec4(float* input1, float* input2, float* output, int length) {
  int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    const zeb_f32x4 z = zeb_load_f32x4(input1 + i);
    const zeb_f32x4 t = z * zeb_load_f32x4(input2 + i) +
                        (zeb_splat_f32x4(1.0f) - z) * zeb_load_f32x4(output + i);
    zeb_store_f32x4(output + i, t);
    zeb_store_f32x4(input2 + i, t);
  }
  for (; i < length; ++i) {
    const float z = input1[i];
    const float t = z * input2[i] + (1.0f - z) * output[i];
    output[i] = t;
    input2[i] = t;
  }
}

// ================================================= library kernels ==

extern "C" void Power_Spectrum_neon(const float* X, float* ps, int length) {
  Power_Spectrum_vec4(X, ps, length);
}

extern "C" void Cross_Power_Spectrum_neon(const float* X, const float* Y, float* ps, int length) {
  Cross_Power_Spectrum_vec4(X, Y, ps, length);
}

extern "C" void Convolution_neon(float* input, const float* filter, int input_size,
                                 int filter_size, float* output) {
  Convolution_vec4(input, filter, input_size, filter_size, output);
}

extern "C" void Mini_Element_By_Element_neon(float* input1, float* input2, float* output,
                                             int length) {
  Mini_Element_By_Element_vec4(input1, input2, output, length);
}

extern "C" void Lower_Bound_Calculation_And_Assigned_neon(float* input, float* output,
                                                          float lower_bound, float assigne_value,
                                                          int length) {
  Lower_Bound_Calculation_And_Assigned_vec4(input, output, lower_bound, assigne_value, length);
}

extern "C" void Upper_Bound_Calculation_And_Assigned_neon(float* input, float* output,
                                                          float upper_bound, float assigne_value,
                                                          int length) {
  Upper_Bound_Calculation_And_Assigned_vec4(input, output, upper_bound, assigne_value, length);
}

extern "C" void Lower_Bound_Calculation_neon(float* input, float* output, float lower_bound,
                                             int length) {
  Lower_Bound_Calculation_vec4(input, output, lower_bound, length);
}

extern "C" void Upper_Bound_Calculation_neon(float* input, float* output, float upper_bound,
                                             int length) {
  Upper_Bound_Calculation_vec4(input, output, upper_bound, length);
}

extern "C" void Frequency_Mul_Real_Filter_neon(float* frequency_domain, float* real_filter,
                                               float* output, int length) {
  Frequency_Mul_Real_Filter_vec4(frequency_domain, real_filter, output, length);
}

extern "C" void Division_Array_neon(float* input1, float* input2, float* output, int length) {
  Division_Array_vec4(input1, input2, output, length);
}

extern "C" void Add_Array_neon(float* input1, float* input2, float* output, int length) {
  Add_Array_vec4(input1, input2, output, length);
}

extern "C" void Recursive_Scalar_neon(float* input1, float* input2, float scalar, float* output,
                                      int length) {
  Recursive_Scalar_vec4(input1, input2, scalar, output, length);
}

extern "C" void Recursive_Array_neon(float* input1, float* input2, float* scalar, float* output,
                                     int length) {
  Recursive_Array_vec4(input1, input2, scalar, output, length);
}

extern "C" void Tanh_neon(float* input, int length) { Tanh_vec4(input, length); }

extern "C" void Sigmoid_neon(float* input, int length) { Sigmoid_vec4(input, length); }

extern "C" void Relu_neon(float* input, int length) { Relu_vec4(input, length); }

extern "C" void AddBias_Scale_neon(const signed char* bias, float* output, int length,
                                   float* scale) {
  AddBias_Scale_vec4(bias, output, length, scale);
}

extern "C" void MulWeight_neon(const signed char* weight, const float* value, float* output,
                               int shift, int stride, int length, int loop) {
  MulWeight_vec4(weight, value, output, shift, stride, length, loop);
}

extern "C" void MulWeight2_neon(const signed char* weight, const float* value1,
                                const float* value2, float* output, int shift, int stride,
                                int length, int loop) {
  MulWeight2_vec4(weight, value1, value2, output, shift, stride, length, loop);
}

extern "C" void MulState_neon(float* input1, float* input2, float* output, int length) {
  MulState_vec4(input1, input2, output, length);
}
