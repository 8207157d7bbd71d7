// Approximate elementary functions, four lanes at a time, each with its
// one-element form doing the same float operations in the same order.
//
// The logarithm, exponential and sine/cosine use the classic single-precision
// polynomial approximations (errors around 1e-7 relative); the power function
// is a coarser log2/exp2 pair meant for gain curves, and the square root uses
// the reciprocal-square-root estimate with one Newton step.
#include <stdint.h>

#include "ne10_math.h"
#include "zeb_recip_estimate.h"

namespace {

constexpr uint32_t kSignMask = 0x80000000u;
constexpr uint32_t kExpMask = 0x7F800000u;
constexpr uint32_t kFracMask = 0x007FFFFFu;
constexpr uint32_t kAllBits = 0xFFFFFFFFu;
constexpr int kFracBits = 23;
constexpr int32_t kExpBias = 127;

// ---- log ----
// Significands below sqrt(1/2) are doubled so that the polynomial argument
// stays within [sqrt(1/2) - 1, sqrt(2) - 1].
constexpr float kLogSqrtHalf = 0.7071067f;
constexpr float kLogPoly[9] = {0.070376836f, -0.1151461f,  0.116769984f, -0.1242014f, 0.14249323f,
                               -0.16668057f, 0.20000714f, -0.24999994f,  0.3333333f};
// ln 2 split into a part exact in float and a small correction.
constexpr float kLn2Hi = 0.693359375f;
constexpr float kLn2Lo = -0.00021219444f;
constexpr uint32_t kHalfBits = 0x3F000000u;      // 0.5f
constexpr uint32_t kLogMantMask = 0x807FFFFFu;   // keeps sign and fraction

// ---- exp ----
constexpr float kExpHi = 88.3762626647949f;
constexpr float kExpLo = -88.3762626647949f;
constexpr float kLog2e = 1.44269504f;
constexpr float kExpPoly[6] = {0.00019875691f, 0.0013981999f, 0.008333452f,
                               0.041665796f,   0.16666666f,   0.5f};

// ---- sin/cos ----
constexpr float kFourOverPi = 1.2732395f;
// pi/4 in three parts (Cody-Waite): j*kDP1 and j*kDP2 are exact for the j in use.
constexpr float kDP1 = -0.78515625f;
constexpr float kDP2 = -0.00024187565f;
constexpr float kDP3 = -0.000000037748951f;
constexpr float kSinPoly[3] = {-0.00019515296f, 0.0083321608f, -0.16666655f};
constexpr float kCosPoly[3] = {0.000024433157f, -0.0013887316f, 0.041666646f};
// Octant counts are taken from |x|*4/pi limited to 2^30, which keeps the
// conversion to int defined; beyond |x| ~ 8192 the result is meaningless anyway.
constexpr float kMaxOctant = 1073741824.0f;

// ---- pow ----
// log2(m) ~ (m - 1) * P(m) on [1, 2) and 2^f ~ Q(f) on [0, 1), lowest power
// first. The leading coefficients are design constants; the others are a
// minimax fit with those leading terms held fixed (tools/fit_vpow_coeffs.py):
// max |error| of log2 5.4e-6, max relative error of 2^f 0.17 %.
constexpr float kLog2Poly[6] = {3.12620359f, -3.35079130f, 2.62399191f,
                                -1.24197616f, 0.319822965f, -0.034436006f};
constexpr float kExp2Poly[3] = {1.00172476f, 0.657636272f, 0.33718944f};
constexpr uint32_t kOneBits = 0x3F800000u;        // 1.0f
constexpr uint32_t kTwo8Bits = 0x43800000u;       // 256.0f: fraction unit 2^-15
constexpr float kTwo8PlusBias = 383.0f;           // 256 + 127
constexpr float kPowExpMax = 129.0f;
constexpr float kPowExpMin = -126.99999f;

// ---- sqrt ----
constexpr float kZero = 0.0f;

}  // namespace

// ============================================================== log ==

extern "C" float log_ps_scalar(float x) {
  const bool invalid = !(x > 0.0f);
  x = x < 0.0f ? 0.0f : x;
  const uint32_t bits = zeb_f32_bits(x);
  float e = static_cast<float>(static_cast<int32_t>(bits >> kFracBits) - kExpBias) + 1.0f;
  float m = zeb_f32_from_bits((bits & kLogMantMask) | kHalfBits);  // in [0.5, 1)
  if (m < kLogSqrtHalf) {
    e = e - 1.0f;
    m = m + m - 1.0f;
  } else {
    e = e - 0.0f;
    m = m - 1.0f;
  }
  const float z = m * m;
  float y = kLogPoly[0];
  for (int k = 1; k < 9; ++k) y = y * m + kLogPoly[k];
  y = y * m;
  y = y * z;
  y = y + e * kLn2Lo;
  y = y - z * 0.5f;
  float r = m + y;
  r = r + e * kLn2Hi;
  return invalid ? zeb_f32_from_bits(kAllBits) : r;
}

extern "C" zeb_f32x4 log_ps(zeb_f32x4 x) {
  const zeb_f32x4 zero = zeb_splat_f32x4(0.0f);
  const zeb_f32x4 one = zeb_splat_f32x4(1.0f);
  const zeb_i32x4 invalid = ~(x > zero);
  x = zeb_max_f32x4(x, zero);
  const zeb_u32x4 bits = zeb_bits_f32x4(x);
  const zeb_i32x4 biased = (zeb_i32x4)(bits >> kFracBits);
  zeb_f32x4 e = zeb_cvt_f32x4(biased - kExpBias) + one;
  zeb_f32x4 m = zeb_from_bits_u32x4((bits & kLogMantMask) | kHalfBits);
  const zeb_i32x4 small = m < zeb_splat_f32x4(kLogSqrtHalf);
  e = e - zeb_select_f32x4(small, one, zero);
  m = zeb_select_f32x4(small, m + m - one, m - one);
  const zeb_f32x4 z = m * m;
  zeb_f32x4 y = zeb_splat_f32x4(kLogPoly[0]);
  for (int k = 1; k < 9; ++k) y = y * m + kLogPoly[k];
  y = y * m;
  y = y * z;
  y = y + e * kLn2Lo;
  y = y - z * 0.5f;
  zeb_f32x4 r = m + y;
  r = r + e * kLn2Hi;
  return zeb_from_bits_u32x4(zeb_bits_f32x4(r) | (zeb_u32x4)invalid);
}

// ============================================================== exp ==

extern "C" float exp_ps_scalar(float x) {
  x = x > kExpHi ? kExpHi : x;
  x = x < kExpLo ? kExpLo : x;
  float fx = x * kLog2e + 0.5f;
  // floor(fx) through truncation; a NaN converts as 0 and stays NaN in x.
  const float fxSafe = fx == fx ? fx : 0.0f;
  const float t = static_cast<float>(static_cast<int32_t>(fxSafe));
  fx = t > fx ? t - 1.0f : t - 0.0f;
  x = x - fx * kLn2Hi;
  x = x - fx * kLn2Lo;
  const float z = x * x;
  float y = kExpPoly[0];
  for (int k = 1; k < 6; ++k) y = y * x + kExpPoly[k];
  y = y * z;
  y = y + x;
  y = y + 1.0f;
  // fx lies in [-127, 128]: the biased exponent 0..255 fits the field.
  const uint32_t biased = static_cast<uint32_t>(static_cast<int32_t>(fx) + kExpBias);
  return y * zeb_f32_from_bits(biased << kFracBits);
}

extern "C" zeb_f32x4 exp_ps(zeb_f32x4 x) {
  const zeb_f32x4 zero = zeb_splat_f32x4(0.0f);
  const zeb_f32x4 one = zeb_splat_f32x4(1.0f);
  x = zeb_min_f32x4(x, zeb_splat_f32x4(kExpHi));
  x = zeb_max_f32x4(x, zeb_splat_f32x4(kExpLo));
  zeb_f32x4 fx = x * kLog2e + 0.5f;
  const zeb_f32x4 fxSafe = zeb_select_f32x4(fx == fx, fx, zero);
  const zeb_f32x4 t = zeb_cvt_f32x4(zeb_cvt_i32x4(fxSafe));
  fx = t - zeb_select_f32x4(t > fx, one, zero);
  x = x - fx * kLn2Hi;
  x = x - fx * kLn2Lo;
  const zeb_f32x4 z = x * x;
  zeb_f32x4 y = zeb_splat_f32x4(kExpPoly[0]);
  for (int k = 1; k < 6; ++k) y = y * x + kExpPoly[k];
  y = y * z;
  y = y + x;
  y = y + one;
  const zeb_u32x4 biased = (zeb_u32x4)(zeb_cvt_i32x4(fx) + kExpBias);
  return y * zeb_from_bits_u32x4(biased << kFracBits);
}

// ========================================================== sin/cos ==

extern "C" void sincos_ps_scalar(float x, float* s, float* c) {
  const uint32_t inputSign = zeb_f32_bits(x) & kSignMask;
  x = zeb_f32_from_bits(zeb_f32_bits(x) & ~kSignMask);
  float y = x * kFourOverPi;
  const float ySafe = y < kMaxOctant ? y : kMaxOctant;
  // Octant index rounded up to even: the reduced argument is within pi/4.
  const uint32_t j = (static_cast<uint32_t>(static_cast<int32_t>(ySafe)) + 1u) & ~1u;
  y = static_cast<float>(static_cast<int32_t>(j));
  const uint32_t sinSign = inputSign ^ ((j & 4u) << 29);
  const bool sinUsesSinPoly = (j & 2u) == 0;
  const uint32_t jc = j - 2u;
  const uint32_t cosSign = (~jc & 4u) << 29;
  const bool cosUsesSinPoly = (jc & 2u) == 0;

  x = x + y * kDP1;
  x = x + y * kDP2;
  x = x + y * kDP3;
  const float z = x * x;
  float yc = kCosPoly[0];
  yc = yc * z + kCosPoly[1];
  yc = yc * z + kCosPoly[2];
  yc = yc * z;
  yc = yc * z;
  yc = yc - z * 0.5f;
  yc = yc + 1.0f;
  float ys = kSinPoly[0];
  ys = ys * z + kSinPoly[1];
  ys = ys * z + kSinPoly[2];
  ys = ys * z;
  ys = ys * x;
  ys = ys + x;
  *s = zeb_f32_from_bits(zeb_f32_bits(sinUsesSinPoly ? ys : yc) ^ sinSign);
  *c = zeb_f32_from_bits(zeb_f32_bits(cosUsesSinPoly ? ys : yc) ^ cosSign);
}

extern "C" void sincos_ps(zeb_f32x4 x, zeb_f32x4* s, zeb_f32x4* c) {
  const zeb_u32x4 zeroU = zeb_splat_u32x4(0);
  const zeb_u32x4 inputSign = zeb_bits_f32x4(x) & kSignMask;
  x = zeb_from_bits_u32x4(zeb_bits_f32x4(x) & ~kSignMask);
  zeb_f32x4 y = x * kFourOverPi;
  const zeb_f32x4 ySafe = zeb_select_f32x4(y < kMaxOctant, y, zeb_splat_f32x4(kMaxOctant));
  const zeb_u32x4 j = ((zeb_u32x4)zeb_cvt_i32x4(ySafe) + 1u) & ~1u;
  y = zeb_cvt_f32x4((zeb_i32x4)j);
  const zeb_u32x4 sinSign = inputSign ^ ((j & 4u) << 29);
  const zeb_i32x4 sinUsesSinPoly = (j & 2u) == zeroU;
  const zeb_u32x4 jc = j - 2u;
  const zeb_u32x4 cosSign = (~jc & 4u) << 29;
  const zeb_i32x4 cosUsesSinPoly = (jc & 2u) == zeroU;

  x = x + y * kDP1;
  x = x + y * kDP2;
  x = x + y * kDP3;
  const zeb_f32x4 z = x * x;
  zeb_f32x4 yc = zeb_splat_f32x4(kCosPoly[0]);
  yc = yc * z + kCosPoly[1];
  yc = yc * z + kCosPoly[2];
  yc = yc * z;
  yc = yc * z;
  yc = yc - z * 0.5f;
  yc = yc + 1.0f;
  zeb_f32x4 ys = zeb_splat_f32x4(kSinPoly[0]);
  ys = ys * z + kSinPoly[1];
  ys = ys * z + kSinPoly[2];
  ys = ys * z;
  ys = ys * x;
  ys = ys + x;
  *s = zeb_from_bits_u32x4(zeb_bits_f32x4(zeb_select_f32x4(sinUsesSinPoly, ys, yc)) ^ sinSign);
  *c = zeb_from_bits_u32x4(zeb_bits_f32x4(zeb_select_f32x4(cosUsesSinPoly, ys, yc)) ^ cosSign);
}

extern "C" float sin_ps_scalar(float x) {
  float s = 0.0f;
  float c = 0.0f;
  sincos_ps_scalar(x, &s, &c);
  return s;
}

extern "C" zeb_f32x4 sin_ps(zeb_f32x4 x) {
  zeb_f32x4 s;
  zeb_f32x4 c;
  sincos_ps(x, &s, &c);
  return s;
}

// ============================================================== pow ==
//
// a^b = 2^t with t = b*log2|a| (the sign of a is ignored). The integer part is
// taken as trunc(t - 0.5), so the fraction f = t - i handed to the 2^f
// polynomial lies in [0.5, 1.5) for t >= 0.5 and in (-0.5, 0.5] for t < 0,
// partly outside the [0, 1) the polynomial was fitted on: there the relative
// error grows to about 3 % (f near 1.5) and 7 % (f near -0.5). Callers use it
// for gain curves and tolerate that.

extern "C" float vpowq_f32_scalar(float a, float b) {
  const uint32_t bits = zeb_f32_bits(a);
  // The exponent field dropped into the fraction of 256.0f reads as 256 + E.
  const float e = zeb_f32_from_bits(((bits & kExpMask) >> 8) | kTwo8Bits) - kTwo8PlusBias;
  const float m = zeb_f32_from_bits((bits & kFracMask) | kOneBits);  // in [1, 2)
  float p = kLog2Poly[5];
  for (int k = 4; k >= 0; --k) p = p * m + kLog2Poly[k];
  const float log2a = p * (m - 1.0f) + e;

  float t = b * log2a;
  t = t > kPowExpMax ? kPowExpMax : t;
  t = t < kPowExpMin ? kPowExpMin : t;
  const float tSafe = t == t ? t : 0.0f;
  const int32_t i = static_cast<int32_t>(tSafe - 0.5f);  // in [-127, 128]
  const float power = zeb_f32_from_bits(static_cast<uint32_t>(i + kExpBias) << kFracBits);
  const float f = t - static_cast<float>(i);
  float q = kExp2Poly[2] * f + kExp2Poly[1];
  q = q * f + kExp2Poly[0];
  return power * q;
}

extern "C" zeb_f32x4 vpowq_f32(zeb_f32x4 a, zeb_f32x4 b) {
  const zeb_u32x4 bits = zeb_bits_f32x4(a);
  const zeb_f32x4 e = zeb_from_bits_u32x4(((bits & kExpMask) >> 8) | kTwo8Bits) - kTwo8PlusBias;
  const zeb_f32x4 m = zeb_from_bits_u32x4((bits & kFracMask) | kOneBits);
  zeb_f32x4 p = zeb_splat_f32x4(kLog2Poly[5]);
  for (int k = 4; k >= 0; --k) p = p * m + kLog2Poly[k];
  const zeb_f32x4 log2a = p * (m - 1.0f) + e;

  zeb_f32x4 t = b * log2a;
  t = zeb_min_f32x4(t, zeb_splat_f32x4(kPowExpMax));
  t = zeb_max_f32x4(t, zeb_splat_f32x4(kPowExpMin));
  const zeb_f32x4 tSafe = zeb_select_f32x4(t == t, t, zeb_splat_f32x4(0.0f));
  const zeb_i32x4 i = zeb_cvt_i32x4(tSafe - 0.5f);
  const zeb_f32x4 power = zeb_from_bits_u32x4((zeb_u32x4)(i + kExpBias) << kFracBits);
  const zeb_f32x4 f = t - zeb_cvt_f32x4(i);
  zeb_f32x4 q = kExp2Poly[2] * f + kExp2Poly[1];
  q = q * f + kExp2Poly[0];
  return power * q;
}

// ============================================================= sqrt ==
//
// sqrt(x) = x * r' with r' = r * (3 - x*r*r)/2, r the reciprocal-square-root
// estimate. A zero or denormal x has an infinite estimate and x*r would be
// NaN; a negative x has a NaN estimate. Both get r = 0 instead, so the result
// is x*0: a zero carrying the sign of x.

extern "C" float sqrt_ps_scalar(float x) {
  float r = zeb_vrsqrte_f32(x);
  const bool steer = (zeb_f32_bits(x) & kExpMask) == 0 || r != r;
  r = steer ? kZero : r;
  const float xr = x * r;
  r = r * zeb_vrsqrts_f32(xr, r);
  return x * r;
}

extern "C" zeb_f32x4 sqrt_ps(zeb_f32x4 x) {
  zeb_f32x4 r = zeb_vrsqrteq_f32(x);
  const zeb_i32x4 steer = ((zeb_bits_f32x4(x) & kExpMask) == zeb_splat_u32x4(0)) | (r != r);
  r = zeb_select_f32x4(steer, zeb_splat_f32x4(kZero), r);
  const zeb_f32x4 xr = x * r;
  r = r * zeb_vrsqrtsq_f32(xr, r);
  return x * r;
}
