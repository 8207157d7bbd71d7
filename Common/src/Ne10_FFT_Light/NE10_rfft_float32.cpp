// Real float32 FFT kernels, written once over a lane type.
//
// An N-point real signal is read as M = N/4 vectors of four floats; lane l of
// vector n is x[4n + l], so the lanes hold four interleaved real sequences of
// length M. Every stage of the M-point plan works on all four lanes at once
// and keeps each sequence as a packed half spectrum of L floats per lane:
//   slot 0 = Re Y[0], slot 1 = Re Y[L/2], slots 2k, 2k+1 = Re, Im Y[k].
// A real radix-4 stage combines four such length-L spectra Y_r into one of
// length 4L: with T_r = W_4L^(rk) Y_r[k] and A_q = sum_r T_r (-j)^(rq),
//   Z[k] = A_0, Z[L+k] = A_1, Z[2L-k] = conj(A_2), Z[L-k] = conj(A_3),
// for k = 0..L/2 (k = 0 and k = L/2 have real inputs and are special cases).
// The last stage applies the same combination across the four lanes with
// the super twiddles W_N^(lk) and writes the N/2 + 1 complex bins.
//
// The lane type is a struct of four floats (the reference `_c` form) or a
// GCC/Clang 4-float vector (`_neon` form); both execute the same float
// operations in the same order, so their results are bit-identical.
#include <stdint.h>
#include <string.h>

#include "ne10_fft.h"
#include "zeb_simd.h"

namespace {

typedef ne10_fft_cpx_float32_t Cpx32;
typedef zeb_f32x4 Vec4;

constexpr float kSqrtHalf = 0.70710678f;
constexpr float kSqrtTwo = 1.41421356f;
constexpr int kSuperBlockEntries = 12;

// ---- Lane types -------------------------------------------------------------

// Scalar reference lanes: four floats, each operation lane by lane.
struct Lane4 {
  float v[4];
};

inline Lane4 operator+(const Lane4& a, const Lane4& b) {
  Lane4 r;
  for (int n = 0; n < 4; ++n) r.v[n] = a.v[n] + b.v[n];
  return r;
}
inline Lane4 operator-(const Lane4& a, const Lane4& b) {
  Lane4 r;
  for (int n = 0; n < 4; ++n) r.v[n] = a.v[n] - b.v[n];
  return r;
}
inline Lane4 operator*(const Lane4& a, const Lane4& b) {
  Lane4 r;
  for (int n = 0; n < 4; ++n) r.v[n] = a.v[n] * b.v[n];
  return r;
}
inline Lane4 operator-(const Lane4& a) {
  Lane4 r;
  for (int n = 0; n < 4; ++n) r.v[n] = -a.v[n];
  return r;
}

template <class V>
inline V splat(float x);
template <>
inline float splat<float>(float x) {
  return x;
}
template <>
inline Lane4 splat<Lane4>(float x) {
  return Lane4{{x, x, x, x}};
}
template <>
inline Vec4 splat<Vec4>(float x) {
  return zeb_splat_f32x4(x);
}

// Floats per lane value: 1 for the scalar 8-point path, 4 otherwise.
template <class V>
constexpr int kLanes = (int)(sizeof(V) / sizeof(float));

// Slot n of a stage buffer; buffers carry no alignment promise beyond float.
template <class V>
inline V ldSlot(const float* base, int slot) {
  V v;
  memcpy(&v, base + kLanes<V> * slot, sizeof(v));
  return v;
}
template <class V>
inline void stSlot(float* base, int slot, const V& v) {
  memcpy(base + kLanes<V> * slot, &v, sizeof(v));
}

// Lane n of the result is lane I_n of the pair (a, b); 0..3 name a, 4..7 b.
template <int I0, int I1, int I2, int I3>
inline Lane4 shuffle(const Lane4& a, const Lane4& b) {
  const int idx[4] = {I0, I1, I2, I3};
  Lane4 r;
  for (int n = 0; n < 4; ++n) r.v[n] = idx[n] < 4 ? a.v[idx[n]] : b.v[idx[n] - 4];
  return r;
}
template <int I0, int I1, int I2, int I3>
inline Vec4 shuffle(Vec4 a, Vec4 b) {
#if defined(__clang__)
  return __builtin_shufflevector(a, b, I0, I1, I2, I3);
#else
  typedef int32_t Mask __attribute__((vector_size(16)));
  const Mask mask = {I0, I1, I2, I3};
  return __builtin_shuffle(a, b, mask);
#endif
}

template <class V>
inline void transpose4(V& a, V& b, V& c, V& d) {
  const V ab0 = shuffle<0, 4, 1, 5>(a, b);
  const V ab1 = shuffle<2, 6, 3, 7>(a, b);
  const V cd0 = shuffle<0, 4, 1, 5>(c, d);
  const V cd1 = shuffle<2, 6, 3, 7>(c, d);
  a = shuffle<0, 1, 4, 5>(ab0, cd0);
  b = shuffle<2, 3, 6, 7>(ab0, cd0);
  c = shuffle<0, 1, 4, 5>(ab1, cd1);
  d = shuffle<2, 3, 6, 7>(ab1, cd1);
}

// ---- Complex values over lanes ---------------------------------------------

template <class V>
struct Cx {
  V r;
  V i;
};

template <class V>
inline Cx<V> operator+(const Cx<V>& a, const Cx<V>& b) {
  return Cx<V>{a.r + b.r, a.i + b.i};
}
template <class V>
inline Cx<V> operator-(const Cx<V>& a, const Cx<V>& b) {
  return Cx<V>{a.r - b.r, a.i - b.i};
}
template <class V>
inline Cx<V> mul(const Cx<V>& a, const Cx<V>& w) {
  return Cx<V>{a.r * w.r - a.i * w.i, a.r * w.i + a.i * w.r};
}
// a * conj(w): undoes a twiddle of unit magnitude.
template <class V>
inline Cx<V> mulConj(const Cx<V>& a, const Cx<V>& w) {
  return Cx<V>{a.r * w.r + a.i * w.i, a.i * w.r - a.r * w.i};
}
template <class V>
inline Cx<V> conj(const Cx<V>& a) {
  return Cx<V>{a.r, -a.i};
}

template <class V>
inline Cx<V> ldBin(const float* base, int bin) {
  return Cx<V>{ldSlot<V>(base, 2 * bin), ldSlot<V>(base, 2 * bin + 1)};
}
template <class V>
inline void stBin(float* base, int bin, const Cx<V>& c) {
  stSlot<V>(base, 2 * bin, c.r);
  stSlot<V>(base, 2 * bin + 1, c.i);
}
template <class V>
inline Cx<V> splatCx(const Cpx32& w) {
  return Cx<V>{splat<V>(w.r), splat<V>(w.i)};
}

// Four consecutive complex values (r, i pairs) to and from lane form.
template <class V>
inline Cx<V> ldCx4(const Cpx32* p) {
  const V lo = ldSlot<V>(reinterpret_cast<const float*>(p), 0);
  const V hi = ldSlot<V>(reinterpret_cast<const float*>(p + 2), 0);
  return Cx<V>{shuffle<0, 2, 4, 6>(lo, hi), shuffle<1, 3, 5, 7>(lo, hi)};
}
// Reads p[3], p[2], p[1], p[0] into lanes 0..3.
template <class V>
inline Cx<V> ldCx4Reversed(const Cpx32* p) {
  const V lo = ldSlot<V>(reinterpret_cast<const float*>(p), 0);
  const V hi = ldSlot<V>(reinterpret_cast<const float*>(p + 2), 0);
  return Cx<V>{shuffle<6, 4, 2, 0>(lo, hi), shuffle<7, 5, 3, 1>(lo, hi)};
}
template <class V>
inline void stCx4(Cpx32* p, const Cx<V>& c) {
  stSlot<V>(reinterpret_cast<float*>(p), 0, shuffle<0, 4, 1, 5>(c.r, c.i));
  stSlot<V>(reinterpret_cast<float*>(p + 2), 0, shuffle<2, 6, 3, 7>(c.r, c.i));
}
// Writes lanes 3, 2, 1, 0 to p[0], p[1], p[2], p[3].
template <class V>
inline void stCx4Reversed(Cpx32* p, const Cx<V>& c) {
  stSlot<V>(reinterpret_cast<float*>(p), 0, shuffle<3, 7, 2, 6>(c.r, c.i));
  stSlot<V>(reinterpret_cast<float*>(p + 2), 0, shuffle<1, 5, 0, 4>(c.r, c.i));
}

// A_q = sum_r T_r (-j)^(rq).
template <class V>
inline void radix4Forward(const Cx<V> t[4], Cx<V> a[4]) {
  const Cx<V> s02 = t[0] + t[2];
  const Cx<V> d02 = t[0] - t[2];
  const Cx<V> s13 = t[1] + t[3];
  const Cx<V> d13 = t[1] - t[3];
  a[0] = s02 + s13;
  a[2] = s02 - s13;
  a[1] = Cx<V>{d02.r + d13.i, d02.i - d13.r};
  a[3] = Cx<V>{d02.r - d13.i, d02.i + d13.r};
}

// T_r = sum_q A_q j^(rq): the unscaled inverse of radix4Forward.
template <class V>
inline void radix4Backward(const Cx<V> a[4], Cx<V> t[4]) {
  const Cx<V> s02 = a[0] + a[2];
  const Cx<V> d02 = a[0] - a[2];
  const Cx<V> s13 = a[1] + a[3];
  const Cx<V> d13 = a[1] - a[3];
  t[0] = s02 + s13;
  t[2] = s02 - s13;
  t[1] = Cx<V>{d02.r - d13.i, d02.i + d13.r};
  t[3] = Cx<V>{d02.r + d13.i, d02.i - d13.r};
}

// ---- First forward stage / last inverse stage (no twiddles) ----------------

// groups radix-4 transforms of real inputs x_r = src[g + groups*r]; each
// output is the packed 4-point spectrum (Z0, Z2, Re Z1, Im Z1).
template <class V>
void ne10_radix4x4_r2c_neon(float* __restrict dst, const float* __restrict src, int groups) {
  for (int g = 0; g < groups; ++g) {
    const V x0 = ldSlot<V>(src, g);
    const V x1 = ldSlot<V>(src, g + groups);
    const V x2 = ldSlot<V>(src, g + 2 * groups);
    const V x3 = ldSlot<V>(src, g + 3 * groups);
    const V s02 = x0 + x2;
    const V d02 = x0 - x2;
    const V s13 = x1 + x3;
    const V d13 = x1 - x3;
    float* out = dst + kLanes<V> * 4 * g;
    stSlot<V>(out, 0, s02 + s13);
    stSlot<V>(out, 1, s02 - s13);
    stSlot<V>(out, 2, d02);
    stSlot<V>(out, 3, -d13);
  }
}

template <class V>
void ne10_radix4x4_c2r_neon(float* __restrict dst, const float* __restrict src, int groups,
                            float scale) {
  const V sc = splat<V>(scale);
  for (int g = 0; g < groups; ++g) {
    const float* in = src + kLanes<V> * 4 * g;
    const V z0 = ldSlot<V>(in, 0);
    const V z2 = ldSlot<V>(in, 1);
    const V z1r = ldSlot<V>(in, 2);
    const V z1i = ldSlot<V>(in, 3);
    const V s = z0 + z2;
    const V d = z0 - z2;
    const V r2 = z1r + z1r;
    const V i2 = z1i + z1i;
    stSlot<V>(dst, g, (s + r2) * sc);
    stSlot<V>(dst, g + groups, (d - i2) * sc);
    stSlot<V>(dst, g + 2 * groups, (s - r2) * sc);
    stSlot<V>(dst, g + 3 * groups, (d + i2) * sc);
  }
}

// groups radix-8 transforms of real inputs x_r = src[g + groups*r], split
// into the 4-point spectra E (even r) and O (odd r): Z[k] = E[k] + W8^k O[k].
// Output: packed (Z0, Z4, Z1, Z2, Z3).
template <class V>
void ne10_radix8x4_r2c_neon(float* __restrict dst, const float* __restrict src, int groups) {
  const V c = splat<V>(kSqrtHalf);
  for (int g = 0; g < groups; ++g) {
    V x[8];
    for (int r = 0; r < 8; ++r) x[r] = ldSlot<V>(src, g + groups * r);
    const V es = x[0] + x[4];
    const V ed = x[0] - x[4];
    const V es2 = x[2] + x[6];
    const V ed2 = x[2] - x[6];
    const V os = x[1] + x[5];
    const V od = x[1] - x[5];
    const V os2 = x[3] + x[7];
    const V od2 = x[3] - x[7];
    const V e0 = es + es2;
    const V e2 = es - es2;
    const V o0 = os + os2;
    const V o2 = os - os2;
    // E1 = (ed, -ed2), O1 = (od, -od2); W8 * O1 = (t, u).
    const V o1r = od;
    const V o1i = -od2;
    const V t = c * (o1r + o1i);
    const V u = c * (o1i - o1r);
    const V e1i = -ed2;
    float* out = dst + kLanes<V> * 8 * g;
    stSlot<V>(out, 0, e0 + o0);
    stSlot<V>(out, 1, e0 - o0);
    stSlot<V>(out, 2, ed + t);
    stSlot<V>(out, 3, e1i + u);
    stSlot<V>(out, 4, e2);
    stSlot<V>(out, 5, -o2);
    stSlot<V>(out, 6, ed - t);
    stSlot<V>(out, 7, u - e1i);
  }
}

template <class V>
void ne10_radix8x4_c2r_neon(float* __restrict dst, const float* __restrict src, int groups,
                            float scale) {
  const V sc = splat<V>(scale);
  const V c = splat<V>(kSqrtHalf);
  for (int g = 0; g < groups; ++g) {
    const float* in = src + kLanes<V> * 8 * g;
    const V z0 = ldSlot<V>(in, 0);
    const V z4 = ldSlot<V>(in, 1);
    const V z1r = ldSlot<V>(in, 2);
    const V z1i = ldSlot<V>(in, 3);
    const V z2r = ldSlot<V>(in, 4);
    const V z2i = ldSlot<V>(in, 5);
    const V z3r = ldSlot<V>(in, 6);
    const V z3i = ldSlot<V>(in, 7);
    // Twice the 4-point spectra: 2E[k] = Z[k] + Z[k+4], 2W8^k O[k] = Z[k] - Z[k+4].
    const V e0 = z0 + z4;
    const V o0 = z0 - z4;
    const V e2 = z2r + z2r;
    const V o2 = -(z2i + z2i);
    const V e1r = z1r + z3r;
    const V e1i = z1i - z3i;
    const V wr = z1r - z3r;
    const V wi = z1i + z3i;
    const V o1r = c * (wr - wi);
    const V o1i = c * (wr + wi);
    const V s = e0 + e2;
    const V d = e0 - e2;
    const V er2 = e1r + e1r;
    const V ei2 = e1i + e1i;
    const V so = o0 + o2;
    const V dd = o0 - o2;
    const V or2 = o1r + o1r;
    const V oi2 = o1i + o1i;
    stSlot<V>(dst, g, (s + er2) * sc);
    stSlot<V>(dst, g + groups, (so + or2) * sc);
    stSlot<V>(dst, g + 2 * groups, (d - ei2) * sc);
    stSlot<V>(dst, g + 3 * groups, (dd - oi2) * sc);
    stSlot<V>(dst, g + 4 * groups, (s - er2) * sc);
    stSlot<V>(dst, g + 5 * groups, (so - or2) * sc);
    stSlot<V>(dst, g + 6 * groups, (d + ei2) * sc);
    stSlot<V>(dst, g + 7 * groups, (dd + oi2) * sc);
  }
}

// ---- Middle stages: real radix-4 with twiddles ------------------------------

// k = 0: the four inputs are real (DC of each sub-spectrum).
template <class V>
inline void ne10_radix4x4_r2c_with_twiddles_first_butterfly_neon(float* out,
                                                                 const float* const in[4],
                                                                 int mstride) {
  const V y0 = ldSlot<V>(in[0], 0);
  const V y1 = ldSlot<V>(in[1], 0);
  const V y2 = ldSlot<V>(in[2], 0);
  const V y3 = ldSlot<V>(in[3], 0);
  const V s02 = y0 + y2;
  const V s13 = y1 + y3;
  stSlot<V>(out, 0, s02 + s13);
  stSlot<V>(out, 1, s02 - s13);
  stBin<V>(out, mstride, Cx<V>{y0 - y2, y3 - y1});
}

template <class V>
inline void ne10_radix4x4_r2c_with_twiddles_other_butterfly_neon(float* out,
                                                                 const float* const in[4],
                                                                 const Cpx32* tw, int mstride,
                                                                 int k) {
  Cx<V> t[4];
  t[0] = ldBin<V>(in[0], k);
  for (int r = 1; r < 4; ++r) t[r] = mul(ldBin<V>(in[r], k), splatCx<V>(tw[r - 1]));
  Cx<V> a[4];
  radix4Forward(t, a);
  stBin<V>(out, k, a[0]);
  stBin<V>(out, mstride + k, a[1]);
  stBin<V>(out, 2 * mstride - k, conj(a[2]));
  stBin<V>(out, mstride - k, conj(a[3]));
}

// k = L/2: the inputs are the real Nyquist values, twiddled by W8^r.
template <class V>
inline void ne10_radix4x4_r2c_with_twiddles_last_butterfly_neon(float* out,
                                                                const float* const in[4],
                                                                int mstride) {
  const V c = splat<V>(kSqrtHalf);
  const V y0 = ldSlot<V>(in[0], 1);
  const V y1 = ldSlot<V>(in[1], 1);
  const V y2 = ldSlot<V>(in[2], 1);
  const V y3 = ldSlot<V>(in[3], 1);
  const V p = c * (y1 - y3);
  const V q = c * (y1 + y3);
  stBin<V>(out, mstride / 2, Cx<V>{y0 + p, -y2 - q});
  stBin<V>(out, 3 * mstride / 2, Cx<V>{y0 - p, y2 - q});
}

// Combines groups*4 spectra of length mstride into groups of length 4*mstride;
// tw holds the stage's transposed twiddles, 3 per k.
template <class V>
void ne10_radix4x4_r2c_with_twiddles_neon(float* __restrict dst, const float* __restrict src,
                                          const Cpx32* __restrict tw, int mstride, int groups) {
  for (int g = 0; g < groups; ++g) {
    const float* const in[4] = {
        src + kLanes<V> * mstride * g, src + kLanes<V> * mstride * (g + groups),
        src + kLanes<V> * mstride * (g + 2 * groups), src + kLanes<V> * mstride * (g + 3 * groups)};
    float* out = dst + kLanes<V> * 4 * mstride * g;
    ne10_radix4x4_r2c_with_twiddles_first_butterfly_neon<V>(out, in, mstride);
    for (int k = 1; k < mstride / 2; ++k)
      ne10_radix4x4_r2c_with_twiddles_other_butterfly_neon<V>(out, in, tw + 3 * k, mstride, k);
    ne10_radix4x4_r2c_with_twiddles_last_butterfly_neon<V>(out, in, mstride);
  }
}

template <class V>
inline void ne10_radix4x4_c2r_with_twiddles_first_butterfly_neon(float* const out[4],
                                                                 const float* in, int mstride) {
  const V z0 = ldSlot<V>(in, 0);
  const V z2 = ldSlot<V>(in, 1);
  const Cx<V> zl = ldBin<V>(in, mstride);
  const V s = z0 + z2;
  const V d = z0 - z2;
  const V lr2 = zl.r + zl.r;
  const V li2 = zl.i + zl.i;
  stSlot<V>(out[0], 0, s + lr2);
  stSlot<V>(out[1], 0, d - li2);
  stSlot<V>(out[2], 0, s - lr2);
  stSlot<V>(out[3], 0, d + li2);
}

template <class V>
inline void ne10_radix4x4_c2r_with_twiddles_other_butterfly_neon(float* const out[4],
                                                                 const float* in, const Cpx32* tw,
                                                                 int mstride, int k) {
  Cx<V> a[4];
  a[0] = ldBin<V>(in, k);
  a[1] = ldBin<V>(in, mstride + k);
  a[2] = conj(ldBin<V>(in, 2 * mstride - k));
  a[3] = conj(ldBin<V>(in, mstride - k));
  Cx<V> t[4];
  radix4Backward(a, t);
  stBin<V>(out[0], k, t[0]);
  for (int r = 1; r < 4; ++r) stBin<V>(out[r], k, mulConj(t[r], splatCx<V>(tw[r - 1])));
}

// Recovers the four real Nyquist values from Z[L/2] = a and Z[3L/2] = b.
template <class V>
inline void ne10_radix4x4_c2r_with_twiddles_last_butterfly_neon(float* const out[4],
                                                                const float* in, int mstride) {
  const V s2 = splat<V>(kSqrtTwo);
  const Cx<V> a = ldBin<V>(in, mstride / 2);
  const Cx<V> b = ldBin<V>(in, 3 * mstride / 2);
  const V rSum = a.r + b.r;
  const V rDiff = a.r - b.r;
  const V iSum = a.i + b.i;
  const V iDiff = b.i - a.i;
  stSlot<V>(out[0], 1, rSum + rSum);
  stSlot<V>(out[1], 1, s2 * (rDiff - iSum));
  stSlot<V>(out[2], 1, iDiff + iDiff);
  stSlot<V>(out[3], 1, -(s2 * (rDiff + iSum)));
}

template <class V>
void ne10_radix4x4_c2r_with_twiddles_neon(float* __restrict dst, const float* __restrict src,
                                          const Cpx32* __restrict tw, int mstride, int groups) {
  for (int g = 0; g < groups; ++g) {
    float* const out[4] = {dst + kLanes<V> * mstride * g, dst + kLanes<V> * mstride * (g + groups),
                           dst + kLanes<V> * mstride * (g + 2 * groups),
                           dst + kLanes<V> * mstride * (g + 3 * groups)};
    const float* in = src + kLanes<V> * 4 * mstride * g;
    ne10_radix4x4_c2r_with_twiddles_first_butterfly_neon<V>(out, in, mstride);
    for (int k = 1; k < mstride / 2; ++k)
      ne10_radix4x4_c2r_with_twiddles_other_butterfly_neon<V>(out, in, tw + 3 * k, mstride, k);
    ne10_radix4x4_c2r_with_twiddles_last_butterfly_neon<V>(out, in, mstride);
  }
}

// ---- Quarter plan -------------------------------------------------------------

// The shape of the quarter-length plan as the drivers run it.
struct QuarterPlan {
  bool usable;
  int quarter;       // M = nfft / 4
  int firstRadix;    // 4, or 8 when a trailing radix 2 is folded in
  int middleStages;  // radix-4 stages with twiddles
  int skipTwiddles;  // twiddles of the folded stage, unused
};

QuarterPlan quarterPlanOf(const ne10_int32_t* factors) {
  QuarterPlan plan = {false, 0, 0, 0, 0};
  const int stages = factors[0];
  if (stages < 1) return plan;
  const int lastRadix = factors[2 * stages];
  for (int s = 1; s < stages; ++s)
    if (factors[2 * s] != 4) return plan;
  if (lastRadix == 4) {
    plan.firstRadix = 4;
    plan.middleStages = stages - 1;
  } else if (lastRadix == 2 && stages >= 2) {
    plan.firstRadix = 8;
    plan.middleStages = stages - 2;
    plan.skipTwiddles = factors[2 * stages - 1] * (factors[2 * stages - 2] - 1);
  } else {
    return plan;
  }
  plan.quarter = factors[1] * lastRadix;
  plan.usable = true;
  return plan;
}

bool transformUsable(const ne10_fft_r2c_state_float32_t* cfg, QuarterPlan* plan) {
  if (cfg->nfft < 16 || cfg->r_twiddles_neon_backward == NULL) return false;
  *plan = quarterPlanOf(cfg->r_factors_neon);
  return plan->usable && 4 * plan->quarter == cfg->nfft;
}

// ---- Forward and inverse drivers of the quarter plan ---------------------------

// Runs the quarter plan over the four lanes; the result lands in buffer so
// that the merging stage can write the caller's output.
template <class V>
void ne10_mixed_radix_r2c_butterfly_float32_neon(float* out, const float* in,
                                                 const ne10_int32_t* factors, const Cpx32* twiddles,
                                                 float* buffer) {
  const QuarterPlan plan = quarterPlanOf(factors);
  const int stages = 1 + plan.middleStages;
  float* dst = (stages % 2 == 1) ? buffer : out;
  float* other = (dst == buffer) ? out : buffer;
  if (plan.firstRadix == 8)
    ne10_radix8x4_r2c_neon<V>(dst, in, plan.quarter / 8);
  else
    ne10_radix4x4_r2c_neon<V>(dst, in, plan.quarter / 4);
  const Cpx32* tw = twiddles + plan.skipTwiddles;
  int mstride = plan.firstRadix;
  for (int s = 0; s < plan.middleStages; ++s) {
    float* src = dst;
    dst = other;
    other = src;
    ne10_radix4x4_r2c_with_twiddles_neon<V>(dst, src, tw, mstride, plan.quarter / (4 * mstride));
    tw += 3 * mstride;
    mstride *= 4;
  }
}

// Inverse of the quarter plan from the largest stage down; the final
// butterfly applies the whole 1/N as 0.25/M and writes out.
template <class V>
void ne10_mixed_radix_c2r_butterfly_float32_neon(float* out, const float* in,
                                                 const ne10_int32_t* factors,
                                                 const Cpx32* twiddlesBackward, float* buffer) {
  const QuarterPlan plan = quarterPlanOf(factors);
  const int stages = 1 + plan.middleStages;
  const float* src = in;
  const Cpx32* tw = twiddlesBackward;
  int mstride = plan.quarter / 4;
  for (int s = 0; s < plan.middleStages; ++s) {
    float* dst = ((stages - 1 - s) % 2 == 0) ? out : buffer;
    tw -= 3 * mstride;
    ne10_radix4x4_c2r_with_twiddles_neon<V>(dst, src, tw, mstride, plan.quarter / (4 * mstride));
    src = dst;
    mstride /= 4;
  }
  const float scale = 0.25f / (float)plan.quarter;
  if (plan.firstRadix == 8)
    ne10_radix8x4_c2r_neon<V>(out, src, plan.quarter / 8, scale);
  else
    ne10_radix4x4_c2r_neon<V>(out, src, plan.quarter / 4, scale);
}

// ---- Merging stage: four lane sequences into one real spectrum ------------------

// Y_l[k] of lane l from the packed quarter spectra.
inline Cx<float> laneBin(const float* src, int lane, int k) {
  return Cx<float>{src[4 * (2 * k) + lane], src[4 * (2 * k + 1) + lane]};
}

inline Cx<float> superTwiddle(const Cpx32* super, int lane, int k) {
  const Cpx32& w = super[kSuperBlockEntries * (k / 4) + 4 * (lane - 1) + k % 4];
  return Cx<float>{w.r, w.i};
}

inline void putBin(Cpx32* p, const Cx<float>& c) {
  p->r = c.r;
  p->i = c.i;
}

// One bin k of the forward merge, for quarter plans too short for a block.
void lastStageBin(Cpx32* fout, const float* src, const Cpx32* super, int quarter, int k) {
  Cx<float> t[4];
  t[0] = laneBin(src, 0, k);
  for (int l = 1; l < 4; ++l) t[l] = mul(laneBin(src, l, k), superTwiddle(super, l, k));
  Cx<float> a[4];
  radix4Forward(t, a);
  putBin(&fout[k], a[0]);
  putBin(&fout[quarter + k], a[1]);
  putBin(&fout[2 * quarter - k], conj(a[2]));
  putBin(&fout[quarter - k], conj(a[3]));
}

// Bins k0..k0+3: the lanes are transposed so that each vector holds one
// sequence at four consecutive k, matching the super twiddle block.
template <class V>
void lastStageBlock(Cpx32* __restrict fout, const float* __restrict src,
                    const Cpx32* __restrict superBlock, int quarter, int k0) {
  V re[4];
  V im[4];
  for (int m = 0; m < 4; ++m) {
    re[m] = ldSlot<V>(src, 2 * (k0 + m));
    im[m] = ldSlot<V>(src, 2 * (k0 + m) + 1);
  }
  transpose4(re[0], re[1], re[2], re[3]);
  transpose4(im[0], im[1], im[2], im[3]);
  Cx<V> t[4];
  t[0] = Cx<V>{re[0], im[0]};
  for (int l = 1; l < 4; ++l) t[l] = mul(Cx<V>{re[l], im[l]}, ldCx4<V>(superBlock + 4 * (l - 1)));
  Cx<V> a[4];
  radix4Forward(t, a);
  stCx4Reversed<V>(&fout[quarter - k0 - 3], conj(a[3]));
  stCx4<V>(&fout[k0], a[0]);
  stCx4<V>(&fout[quarter + k0], a[1]);
  stCx4Reversed<V>(&fout[2 * quarter - k0 - 3], conj(a[2]));
}

// Bins 0..3 (or the few bins of a short plan), then bin 0 itself, whose lane
// values are the real DC terms; the Nyquist bin goes to fout[0].i.
template <class V>
void ne10_radix4_r2c_with_twiddles_last_stage_first_butterfly(Cpx32* fout, const float* src,
                                                              const Cpx32* super, int quarter) {
  if (quarter >= 8) {
    lastStageBlock<V>(fout, src, super, quarter, 0);
  } else {
    for (int k = 1; k < quarter / 2; ++k) lastStageBin(fout, src, super, quarter, k);
  }
  float y[4];
  memcpy(y, src, sizeof(y));
  const float s02 = y[0] + y[2];
  const float s13 = y[1] + y[3];
  fout[0].r = s02 + s13;
  fout[0].i = s02 - s13;
  fout[quarter].r = y[0] - y[2];
  fout[quarter].i = y[3] - y[1];
}

// Bin M/2: the lanes hold the real Nyquist values of the quarter spectra.
inline void ne10_radix4_r2c_with_twiddles_last_stage_second_butterfly(Cpx32* fout, const float* src,
                                                                      int quarter) {
  float y[4];
  memcpy(y, src + 4, sizeof(y));
  const float p = kSqrtHalf * (y[1] - y[3]);
  const float q = kSqrtHalf * (y[1] + y[3]);
  fout[quarter / 2].r = y[0] + p;
  fout[quarter / 2].i = -y[2] - q;
  fout[3 * quarter / 2].r = y[0] - p;
  fout[3 * quarter / 2].i = y[2] - q;
}

template <class V>
void ne10_radix4_r2c_with_twiddles_last_stage_other_butterfly(Cpx32* fout, const float* src,
                                                              const Cpx32* super, int quarter) {
  for (int i = 1; i < quarter / 8; ++i)
    lastStageBlock<V>(fout, src, super + kSuperBlockEntries * i, quarter, 4 * i);
}

template <class V>
void ne10_radix4_r2c_with_twiddles_last_stage(Cpx32* fout, const float* src, const Cpx32* super,
                                              int nfft) {
  const int quarter = nfft / 4;
  ne10_radix4_r2c_with_twiddles_last_stage_first_butterfly<V>(fout, src, super, quarter);
  ne10_radix4_r2c_with_twiddles_last_stage_second_butterfly(fout, src, quarter);
  ne10_radix4_r2c_with_twiddles_last_stage_other_butterfly<V>(fout, src, super, quarter);
}

// ---- Splitting stage of the inverse -------------------------------------------

inline Cx<float> getBin(const Cpx32& p) { return Cx<float>{p.r, p.i}; }

void firstStageBin(float* dst, const Cpx32* fin, const Cpx32* super, int quarter, int k) {
  Cx<float> a[4];
  a[0] = getBin(fin[k]);
  a[1] = getBin(fin[quarter + k]);
  a[2] = conj(getBin(fin[2 * quarter - k]));
  a[3] = conj(getBin(fin[quarter - k]));
  Cx<float> t[4];
  radix4Backward(a, t);
  for (int l = 0; l < 4; ++l) {
    const Cx<float> y = l == 0 ? t[0] : mulConj(t[l], superTwiddle(super, l, k));
    dst[4 * (2 * k) + l] = y.r;
    dst[4 * (2 * k + 1) + l] = y.i;
  }
}

template <class V>
void firstStageBlock(float* __restrict dst, const Cpx32* __restrict fin,
                     const Cpx32* __restrict superBlock, int quarter, int k0) {
  Cx<V> a[4];
  a[0] = ldCx4<V>(&fin[k0]);
  a[1] = ldCx4<V>(&fin[quarter + k0]);
  a[2] = conj(ldCx4Reversed<V>(&fin[2 * quarter - k0 - 3]));
  a[3] = conj(ldCx4Reversed<V>(&fin[quarter - k0 - 3]));
  Cx<V> t[4];
  radix4Backward(a, t);
  V re[4];
  V im[4];
  re[0] = t[0].r;
  im[0] = t[0].i;
  for (int l = 1; l < 4; ++l) {
    const Cx<V> y = mulConj(t[l], ldCx4<V>(superBlock + 4 * (l - 1)));
    re[l] = y.r;
    im[l] = y.i;
  }
  transpose4(re[0], re[1], re[2], re[3]);
  transpose4(im[0], im[1], im[2], im[3]);
  for (int m = 0; m < 4; ++m) {
    stSlot<V>(dst, 2 * (k0 + m), re[m]);
    stSlot<V>(dst, 2 * (k0 + m) + 1, im[m]);
  }
}

// Bins 0..3, then the real DC terms of the quarter spectra from X[0], the
// Nyquist value parked in fin[0].i, and X[M].
template <class V>
void ne10_radix4_c2r_with_twiddles_first_stage_first_butterfly(float* dst, const Cpx32* fin,
                                                               const Cpx32* super, int quarter) {
  if (quarter >= 8) {
    firstStageBlock<V>(dst, fin, super, quarter, 0);
  } else {
    for (int k = 1; k < quarter / 2; ++k) firstStageBin(dst, fin, super, quarter, k);
  }
  const float z0 = fin[0].r;
  const float z2 = fin[0].i;
  const float s = z0 + z2;
  const float d = z0 - z2;
  const float lr2 = fin[quarter].r + fin[quarter].r;
  const float li2 = fin[quarter].i + fin[quarter].i;
  const float y[4] = {s + lr2, d - li2, s - lr2, d + li2};
  memcpy(dst, y, sizeof(y));
}

// The real Nyquist values of the quarter spectra from X[M/2] and X[3M/2].
inline void ne10_radix4_c2r_with_twiddles_first_stage_second_butterfly(float* dst, const Cpx32* fin,
                                                                       int quarter) {
  const Cpx32& a = fin[quarter / 2];
  const Cpx32& b = fin[3 * quarter / 2];
  const float rSum = a.r + b.r;
  const float rDiff = a.r - b.r;
  const float iSum = a.i + b.i;
  const float iDiff = b.i - a.i;
  const float y[4] = {rSum + rSum, kSqrtTwo * (rDiff - iSum), iDiff + iDiff,
                      -(kSqrtTwo * (rDiff + iSum))};
  memcpy(dst + 4, y, sizeof(y));
}

template <class V>
void ne10_radix4_c2r_with_twiddles_first_stage_other_butterfly(float* dst, const Cpx32* fin,
                                                               const Cpx32* super, int quarter) {
  for (int i = 1; i < quarter / 8; ++i)
    firstStageBlock<V>(dst, fin, super + kSuperBlockEntries * i, quarter, 4 * i);
}

template <class V>
void ne10_radix4_c2r_with_twiddles_first_stage(float* dst, const Cpx32* fin, const Cpx32* super,
                                               int nfft) {
  const int quarter = nfft / 4;
  ne10_radix4_c2r_with_twiddles_first_stage_first_butterfly<V>(dst, fin, super, quarter);
  ne10_radix4_c2r_with_twiddles_first_stage_second_butterfly(dst, fin, quarter);
  ne10_radix4_c2r_with_twiddles_first_stage_other_butterfly<V>(dst, fin, super, quarter);
}

// ---- Entries ---------------------------------------------------------------------

constexpr ne10_int32_t kScalarPathLength = 8;

template <class V>
void r2cEntry(Cpx32* fout, ne10_float32_t* fin, ne10_fft_r2c_cfg_float32_t cfg) {
  if (cfg == NULL) return;
  const ne10_int32_t nfft = cfg->nfft;
  if (nfft == kScalarPathLength) {
    ne10_radix8_r2c_c(fout, fin, 1, 1, kScalarPathLength);
  } else {
    QuarterPlan plan;
    if (!transformUsable(cfg, &plan)) return;
    float* buffer = &cfg->buffer[0].r;
    ne10_mixed_radix_r2c_butterfly_float32_neon<V>(reinterpret_cast<float*>(fout), fin, cfg->r_factors_neon,
                                                   cfg->r_twiddles_neon, buffer);
    ne10_radix4_r2c_with_twiddles_last_stage<V>(fout, buffer, cfg->r_super_twiddles_neon, nfft);
  }
  // The packed spectrum parks the real Nyquist bin in the imaginary part of DC.
  fout[nfft / 2].r = fout[0].i;
  fout[nfft / 2].i = 0.0f;
  fout[0].i = 0.0f;
}

template <class V>
void c2rEntry(ne10_float32_t* fout, Cpx32* fin, ne10_fft_r2c_cfg_float32_t cfg) {
  if (cfg == NULL) return;
  const ne10_int32_t nfft = cfg->nfft;
  if (nfft == kScalarPathLength) {
    fin[0].i = fin[nfft / 2].r;
    ne10_radix8_c2r_c(fout, fin, 1, 1, kScalarPathLength);
    fin[0].i = 0.0f;
    return;
  }
  QuarterPlan plan;
  if (!transformUsable(cfg, &plan)) return;
  fin[0].i = fin[nfft / 2].r;
  // The splitting stage writes where the stage count makes the final
  // butterfly of the quarter plan land in fout.
  const int stages = 1 + plan.middleStages;
  float* buffer = &cfg->buffer[0].r;
  float* first = (stages % 2 == 0) ? fout : buffer;
  ne10_radix4_c2r_with_twiddles_first_stage<V>(first, fin, cfg->r_super_twiddles_neon, nfft);
  ne10_mixed_radix_c2r_butterfly_float32_neon<V>(fout, first, cfg->r_factors_neon,
                                                 cfg->r_twiddles_neon_backward, buffer);
  fin[0].i = 0.0f;
}

}  // namespace

extern "C" {

void ne10_radix8_r2c_c(ne10_fft_cpx_float32_t* Fout, const ne10_float32_t* Fin,
                       ne10_int32_t fstride, ne10_int32_t mstride, ne10_int32_t nfft) {
  (void)fstride;
  (void)mstride;
  (void)nfft;
  ne10_radix8x4_r2c_neon<float>(reinterpret_cast<float*>(Fout), Fin, 1);
}

void ne10_radix8_c2r_c(ne10_float32_t* Fout, const ne10_fft_cpx_float32_t* Fin,
                       ne10_int32_t fstride, ne10_int32_t mstride, ne10_int32_t nfft) {
  (void)fstride;
  (void)mstride;
  (void)nfft;
  ne10_radix8x4_c2r_neon<float>(Fout, reinterpret_cast<const float*>(Fin), 1, 1.0f / (float)kScalarPathLength);
}

void ne10_fft_r2c_1d_float32_neon(ne10_fft_cpx_float32_t* fout, ne10_float32_t* fin,
                                  ne10_fft_r2c_cfg_float32_t cfg) {
  r2cEntry<Vec4>(fout, fin, cfg);
}

void ne10_fft_r2c_1d_float32_c(ne10_fft_cpx_float32_t* fout, ne10_float32_t* fin,
                               ne10_fft_r2c_cfg_float32_t cfg) {
  r2cEntry<Lane4>(fout, fin, cfg);
}

void ne10_fft_c2r_1d_float32_neon(ne10_float32_t* fout, ne10_fft_cpx_float32_t* fin,
                                  ne10_fft_r2c_cfg_float32_t cfg) {
  c2rEntry<Vec4>(fout, fin, cfg);
}

void ne10_fft_c2r_1d_float32_c(ne10_float32_t* fout, ne10_fft_cpx_float32_t* fin,
                               ne10_fft_r2c_cfg_float32_t cfg) {
  c2rEntry<Lane4>(fout, fin, cfg);
}

}  // extern "C"
