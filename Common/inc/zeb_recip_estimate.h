// Portable reciprocal and reciprocal-square-root estimates.
//
// These return bit for bit what the target's vector unit gives for its
// reciprocal estimate (VRECPE.F32), reciprocal square root estimate
// (VRSQRTE.F32) and the two Newton-Raphson step instructions (VRECPS.F32,
// VRSQRTS.F32) in 32-bit ARM vector mode: denormal inputs are flushed to
// zero and every NaN result is the default NaN 0x7FC00000. The kernels that
// refine an estimate by one Newton step then produce the same approximate
// quotients and square roots on every build.
#ifndef ZEB_COMMON_ZEB_RECIP_ESTIMATE_H
#define ZEB_COMMON_ZEB_RECIP_ESTIMATE_H

#include "zeb_simd.h"

#ifdef __cplusplus
extern "C" {
#endif

// About 1/x, 8 significant bits: a multiple of 1/256 in [1, 511/256] times
// a power of two. 1/(+-0) = +-inf, 1/(+-inf) = +-0, |x| >= 2^126 gives +-0.
float zeb_vrecpe_f32(float x);
// About 1/sqrt(x), 8 significant bits. +-0 gives +-inf, +inf gives +0, any
// other negative input and NaN give the default NaN.
float zeb_vrsqrte_f32(float x);
// Newton step factor for the reciprocal: 2 - a*b (2 when one is 0, the other inf).
float zeb_vrecps_f32(float a, float b);
// Newton step factor for the reciprocal square root: (3 - a*b)/2 (1.5 when
// one is 0, the other inf).
float zeb_vrsqrts_f32(float a, float b);

zeb_f32x4 zeb_vrecpeq_f32(zeb_f32x4 x);
zeb_f32x4 zeb_vrsqrteq_f32(zeb_f32x4 x);
zeb_f32x4 zeb_vrecpsq_f32(zeb_f32x4 a, zeb_f32x4 b);
zeb_f32x4 zeb_vrsqrtsq_f32(zeb_f32x4 a, zeb_f32x4 b);

#ifdef __cplusplus
}
#endif

#endif
