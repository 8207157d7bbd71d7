// Four-lane float and integer vectors for the portable kernels.
//
// The kernels are written once in these GCC/Clang vector extensions; on the
// target they compile to the 128-bit vector unit, elsewhere to SSE or to plain
// code. Every helper here is exact (loads, stores, bit casts, selects), so a
// kernel's lane arithmetic is the same float arithmetic as its scalar form.
#ifndef ZEB_COMMON_ZEB_SIMD_H
#define ZEB_COMMON_ZEB_SIMD_H

#include <stdint.h>
#include <string.h>

typedef float zeb_f32x4 __attribute__((vector_size(16)));
typedef int32_t zeb_i32x4 __attribute__((vector_size(16)));
typedef uint32_t zeb_u32x4 __attribute__((vector_size(16)));

#define ZEB_LANES 4

// Unaligned load and store: callers pass arbitrary float pointers.
static inline zeb_f32x4 zeb_load_f32x4(const float* p) {
  zeb_f32x4 v;
  memcpy(&v, p, sizeof(v));
  return v;
}

static inline void zeb_store_f32x4(float* p, zeb_f32x4 v) { memcpy(p, &v, sizeof(v)); }

static inline zeb_f32x4 zeb_splat_f32x4(float x) {
  zeb_f32x4 v = {x, x, x, x};
  return v;
}

static inline zeb_i32x4 zeb_splat_i32x4(int32_t x) {
  zeb_i32x4 v = {x, x, x, x};
  return v;
}

static inline zeb_u32x4 zeb_splat_u32x4(uint32_t x) {
  zeb_u32x4 v = {x, x, x, x};
  return v;
}

// Bit reinterpretation (same size vectors cast without conversion).
static inline zeb_u32x4 zeb_bits_f32x4(zeb_f32x4 v) { return (zeb_u32x4)v; }
static inline zeb_f32x4 zeb_from_bits_u32x4(zeb_u32x4 v) { return (zeb_f32x4)v; }

// Value conversions, truncating toward zero like a C cast. Callers keep the
// input inside the int32 range.
static inline zeb_i32x4 zeb_cvt_i32x4(zeb_f32x4 v) { return __builtin_convertvector(v, zeb_i32x4); }
static inline zeb_f32x4 zeb_cvt_f32x4(zeb_i32x4 v) { return __builtin_convertvector(v, zeb_f32x4); }

// mask lanes are all ones or all zeros (the result of a lane comparison).
static inline zeb_f32x4 zeb_select_f32x4(zeb_i32x4 mask, zeb_f32x4 ifTrue, zeb_f32x4 ifFalse) {
  const zeb_u32x4 m = (zeb_u32x4)mask;
  return (zeb_f32x4)(((zeb_u32x4)ifTrue & m) | ((zeb_u32x4)ifFalse & ~m));
}

// Lane minimum and maximum that let a NaN in x pass through unchanged.
static inline zeb_f32x4 zeb_min_f32x4(zeb_f32x4 x, zeb_f32x4 limit) {
  return zeb_select_f32x4(x > limit, limit, x);
}

static inline zeb_f32x4 zeb_max_f32x4(zeb_f32x4 x, zeb_f32x4 limit) {
  return zeb_select_f32x4(x < limit, limit, x);
}

// Scalar bit casts used by the scalar reference forms.
static inline uint32_t zeb_f32_bits(float x) {
  uint32_t u;
  memcpy(&u, &x, sizeof(u));
  return u;
}

static inline float zeb_f32_from_bits(uint32_t u) {
  float x;
  memcpy(&x, &u, sizeof(x));
  return x;
}

#endif
