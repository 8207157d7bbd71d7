// Reciprocal and reciprocal-square-root estimates, computed the way the
// target's vector unit computes them, so that kernels refining them by one
// Newton step give identical bits on every build.
//
// Both estimates read 8 or 9 leading bits of the operand's significand, look
// up a 9-bit result r in [256, 511] (the estimate is r/256 times a power of
// two) and rebuild a float from r and an exponent derived from the input.
// The lookup values are defined by integer arithmetic: the midpoint of the
// input interval, its reciprocal (or reciprocal square root), rounded to the
// nearest 1/256. The tables below are that arithmetic run at compile time.
#include "zeb_recip_estimate.h"

#include <array>
#include <cstdint>

namespace {

constexpr uint32_t kSignMask = 0x80000000u;
constexpr uint32_t kExpMask = 0x7F800000u;
constexpr uint32_t kFracMask = 0x007FFFFFu;
constexpr uint32_t kDefaultNaN = 0x7FC00000u;
constexpr uint32_t kInfBits = 0x7F800000u;
constexpr int kFracBits = 23;

// a in [256, 511] is the operand's significand in units of 1/512 (operand in
// [0.5, 1)). Returns the reciprocal of the interval midpoint (a + 0.5)/512 in
// units of 1/256, rounded to nearest: 2^19/(2a+1), halved with rounding.
constexpr uint32_t UnsignedRecipEstimate(uint32_t a) {
  const uint32_t midpoint = a * 2 + 1;
  const uint32_t b = (1u << 19) / midpoint;
  return (b + 1) / 2;
}

// a in [128, 511]: operand in [0.25, 0.5) in units of 1/512 (a < 256), or in
// [0.5, 1) where only 8 bits count (a >= 256). Returns the reciprocal square
// root of the interval midpoint in units of 1/256, rounded to nearest.
constexpr uint32_t UnsignedRSqrtEstimate(uint32_t a) {
  uint64_t midpoint = 0;  // in units of 1/1024
  if (a < 256) {
    midpoint = a * 2 + 1;
  } else {
    midpoint = ((a >> 1) << 1) + 1;  // the low bit is ignored in [0.5, 1)
    midpoint *= 2;
  }
  // b: the largest value with b < 2^14 / sqrt(midpoint), found by counting up
  // from the smallest possible answer.
  uint64_t b = 512;
  while (midpoint * (b + 1) * (b + 1) < (uint64_t{1} << 28)) {
    ++b;
  }
  return static_cast<uint32_t>((b + 1) / 2);
}

constexpr std::array<uint16_t, 512> MakeRecipTable() {
  std::array<uint16_t, 512> t{};
  for (uint32_t a = 256; a < 512; ++a) t[a] = static_cast<uint16_t>(UnsignedRecipEstimate(a));
  return t;
}

constexpr std::array<uint16_t, 512> MakeRSqrtTable() {
  std::array<uint16_t, 512> t{};
  for (uint32_t a = 128; a < 512; ++a) t[a] = static_cast<uint16_t>(UnsignedRSqrtEstimate(a));
  return t;
}

constexpr std::array<uint16_t, 512> kRecipTable = MakeRecipTable();
constexpr std::array<uint16_t, 512> kRSqrtTable = MakeRSqrtTable();

static_assert(kRecipTable[256] == 511 && kRecipTable[511] == 256, "reciprocal table ends");
static_assert(kRSqrtTable[128] == 511 && kRSqrtTable[511] == 256, "rsqrt table ends");

bool IsNaNBits(uint32_t u) { return (u & kExpMask) == kExpMask && (u & kFracMask) != 0; }
bool IsInfBits(uint32_t u) { return (u & ~kSignMask) == kInfBits; }
// Zeros and denormals: the vector unit flushes denormal operands to zero.
bool IsZeroBits(uint32_t u) { return (u & kExpMask) == 0; }

// Flush a denormal operand to a zero of the same sign.
float FlushDenormal(float x) {
  const uint32_t u = zeb_f32_bits(x);
  return IsZeroBits(u) ? zeb_f32_from_bits(u & kSignMask) : x;
}

}  // namespace

extern "C" float zeb_vrecpe_f32(float x) {
  const uint32_t u = zeb_f32_bits(x);
  const uint32_t sign = u & kSignMask;
  if (IsNaNBits(u)) return zeb_f32_from_bits(kDefaultNaN);
  if (IsInfBits(u)) return zeb_f32_from_bits(sign);
  if (IsZeroBits(u)) return zeb_f32_from_bits(sign | kInfBits);
  const uint32_t biasedExp = (u & kExpMask) >> kFracBits;
  // |x| >= 2^126: the reciprocal would be denormal, which flushes to zero.
  if (biasedExp >= 253) return zeb_f32_from_bits(sign);
  const uint32_t a = 256 + ((u & kFracMask) >> 15);
  const uint32_t r = kRecipTable[a];
  const uint32_t resultExp = 253 - biasedExp;
  return zeb_f32_from_bits(sign | (resultExp << kFracBits) | ((r & 0xFFu) << 15));
}

extern "C" float zeb_vrsqrte_f32(float x) {
  const uint32_t u = zeb_f32_bits(x);
  const uint32_t sign = u & kSignMask;
  if (IsNaNBits(u)) return zeb_f32_from_bits(kDefaultNaN);
  if (IsZeroBits(u)) return zeb_f32_from_bits(sign | kInfBits);
  if (sign != 0) return zeb_f32_from_bits(kDefaultNaN);
  if (IsInfBits(u)) return 0.0f;
  const uint32_t biasedExp = (u & kExpMask) >> kFracBits;
  // An odd biased exponent scales the significand into [0.25, 0.5), an even
  // one into [0.5, 1): the square root then halves an even exponent.
  const uint32_t frac = u & kFracMask;
  const uint32_t a = (biasedExp & 1u) ? 128 + (frac >> 16) : 256 + (frac >> 15);
  const uint32_t r = kRSqrtTable[a];
  const uint32_t resultExp = (380 - biasedExp) / 2;
  return zeb_f32_from_bits((resultExp << kFracBits) | ((r & 0xFFu) << 15));
}

extern "C" float zeb_vrecps_f32(float a, float b) {
  if (IsNaNBits(zeb_f32_bits(a)) || IsNaNBits(zeb_f32_bits(b))) return zeb_f32_from_bits(kDefaultNaN);
  a = FlushDenormal(a);
  b = FlushDenormal(b);
  const uint32_t ua = zeb_f32_bits(a);
  const uint32_t ub = zeb_f32_bits(b);
  // inf * 0 would be NaN; the step defines the product as 0 there.
  if ((IsInfBits(ua) && IsZeroBits(ub)) || (IsZeroBits(ua) && IsInfBits(ub))) return 2.0f;
  const float product = a * b;
  return 2.0f - product;
}

extern "C" float zeb_vrsqrts_f32(float a, float b) {
  if (IsNaNBits(zeb_f32_bits(a)) || IsNaNBits(zeb_f32_bits(b))) return zeb_f32_from_bits(kDefaultNaN);
  a = FlushDenormal(a);
  b = FlushDenormal(b);
  const uint32_t ua = zeb_f32_bits(a);
  const uint32_t ub = zeb_f32_bits(b);
  if ((IsInfBits(ua) && IsZeroBits(ub)) || (IsZeroBits(ua) && IsInfBits(ub))) return 1.5f;
  const float product = a * b;
  return (3.0f - product) * 0.5f;
}

extern "C" zeb_f32x4 zeb_vrecpeq_f32(zeb_f32x4 x) {
  zeb_f32x4 r;
  for (int k = 0; k < ZEB_LANES; ++k) r[k] = zeb_vrecpe_f32(x[k]);
  return r;
}

extern "C" zeb_f32x4 zeb_vrsqrteq_f32(zeb_f32x4 x) {
  zeb_f32x4 r;
  for (int k = 0; k < ZEB_LANES; ++k) r[k] = zeb_vrsqrte_f32(x[k]);
  return r;
}

extern "C" zeb_f32x4 zeb_vrecpsq_f32(zeb_f32x4 a, zeb_f32x4 b) {
  zeb_f32x4 r;
  for (int k = 0; k < ZEB_LANES; ++k) r[k] = zeb_vrecps_f32(a[k], b[k]);
  return r;
}

extern "C" zeb_f32x4 zeb_vrsqrtsq_f32(zeb_f32x4 a, zeb_f32x4 b) {
  zeb_f32x4 r;
  for (int k = 0; k < ZEB_LANES; ++k) r[k] = zeb_vrsqrts_f32(a[k], b[k]);
  return r;
}
