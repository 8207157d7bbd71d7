// Float array operations for the frame stages: elementary functions, products
// and fills, four elements at a time with a scalar tail.
//
// Each operation exists in three layers:
//   ne10_LX_*        the interface: calls the kernel, returns AUDIO_MATH_RET_SUCCESS
//   LX_*_neon        the kernel used by the library (the 4-lane form)
//   LX_*_scalar      the reference: the lane arithmetic element by element
//   LX_*_vec4        the same arithmetic on four lanes; bit-identical to _scalar
// Lanes run while i + 3 < length; the remaining elements use the C library in
// double precision rounded to float. Lane and tail results differ slightly,
// so an element's value can depend on its position in the array.
//
// No function tests for NULL; an output array may be the same as an input.
#ifndef ZEB_COMMON_NE10_MATH_H
#define ZEB_COMMON_NE10_MATH_H

#include "zeb_simd.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
  AUDIO_MATH_RET_SUCCESS = 0,
  AUDIO_MATH_RET_NOT_SUPPORT = 268435713,     // reserved
  AUDIO_MATH_RET_HARDWARE_ERROR = 268435714,  // reserved
} AUDIO_MATH_RET;

// ---- Interface ----
AUDIO_MATH_RET ne10_LX_Exp(float* input, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Pow(float* base, float* exponent, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Sine(float* input, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Sqrt(float* input, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Log10(float* input, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Dot_Mul(float* input1, float* input2, float* output, unsigned int length);
AUDIO_MATH_RET ne10_LX_Dump_Element_To_Array(float* inout, float value, unsigned int length);
AUDIO_MATH_RET ne10_LX_Mul_Element_To_Array(float* inout, float value, unsigned int length);
// output[0] = sum of input1[i] * input2[i]; length <= 0 writes 0.
AUDIO_MATH_RET ne10_InnerProduct(float* input1, float* input2, float* output, int length);

// ---- Kernels (4-lane form) ----
void LX_Exp_neon(float* input, float* output, unsigned int length);
void LX_Pow_neon(float* base, float* exponent, float* output, unsigned int length);
void LX_Sine_neon(float* input, float* output, unsigned int length);
void LX_Sqrt_neon(float* input, float* output, unsigned int length);
void LX_Log10_neon(float* input, float* output, unsigned int length);
void LX_Dot_Mul_neon(float* input1, float* input2, float* output, unsigned int length);
void LX_Dump_Element_To_Array_neon(float* inout, float value, unsigned int length);
void LX_Mul_Element_To_Array_neon(float* inout, float value, unsigned int length);
void InnerProduct_neon(float* input1, float* input2, float* output, int length);

// ---- Scalar reference forms ----
void LX_Exp_scalar(float* input, float* output, unsigned int length);
void LX_Pow_scalar(float* base, float* exponent, float* output, unsigned int length);
void LX_Sine_scalar(float* input, float* output, unsigned int length);
void LX_Sqrt_scalar(float* input, float* output, unsigned int length);
void LX_Log10_scalar(float* input, float* output, unsigned int length);
void LX_Dot_Mul_scalar(float* input1, float* input2, float* output, unsigned int length);
void LX_Dump_Element_To_Array_scalar(float* inout, float value, unsigned int length);
void LX_Mul_Element_To_Array_scalar(float* inout, float value, unsigned int length);
void InnerProduct_scalar(float* input1, float* input2, float* output, int length);

// ---- 4-lane forms ----
void LX_Exp_vec4(float* input, float* output, unsigned int length);
void LX_Pow_vec4(float* base, float* exponent, float* output, unsigned int length);
void LX_Sine_vec4(float* input, float* output, unsigned int length);
void LX_Sqrt_vec4(float* input, float* output, unsigned int length);
void LX_Log10_vec4(float* input, float* output, unsigned int length);
void LX_Dot_Mul_vec4(float* input1, float* input2, float* output, unsigned int length);
void LX_Dump_Element_To_Array_vec4(float* inout, float value, unsigned int length);
void LX_Mul_Element_To_Array_vec4(float* inout, float value, unsigned int length);
void InnerProduct_vec4(float* input1, float* input2, float* output, int length);

// ---- Element products that run past the end ----
// out[i] = in1[i] * in2[i] (inner_product) or in1[i] * const_in2
// (constant_mul), four elements a step with no tail: for a length that is no
// multiple of 4 they read in1/in2 and write out up to the next multiple of 4,
// i.e. up to three elements behind the end. Callers size all three arrays
// for that.
void inner_product(float* in1, float* in2, float* out, int length);
void constant_mul(float* in1, const float const_in2, float* out, int length);
void inner_product_scalar(float* in1, float* in2, float* out, int length);
void inner_product_vec4(float* in1, float* in2, float* out, int length);
void constant_mul_scalar(float* in1, const float const_in2, float* out, int length);
void constant_mul_vec4(float* in1, const float const_in2, float* out, int length);

// ---- Lane functions (approximations) and their one-element forms ----
// Natural logarithm; lanes with x <= 0 or NaN give all bits set (a NaN).
zeb_f32x4 log_ps(zeb_f32x4 x);
float log_ps_scalar(float x);
// e^x with x limited to +-88.3762626647949.
zeb_f32x4 exp_ps(zeb_f32x4 x);
float exp_ps_scalar(float x);
void sincos_ps(zeb_f32x4 x, zeb_f32x4* s, zeb_f32x4* c);
void sincos_ps_scalar(float x, float* s, float* c);
zeb_f32x4 sin_ps(zeb_f32x4 x);
float sin_ps_scalar(float x);
// |a|^b via log2, good to a few tenths of a percent where the fraction of
// b*log2(a) falls in [0, 1), to several percent elsewhere (see the source).
zeb_f32x4 vpowq_f32(zeb_f32x4 a, zeb_f32x4 b);
float vpowq_f32_scalar(float a, float b);
// Square root from the reciprocal-square-root estimate and one Newton step
// (about 16 good bits). Zero, denormal and negative lanes give a signed 0.
zeb_f32x4 sqrt_ps(zeb_f32x4 x);
float sqrt_ps_scalar(float x);

#ifdef __cplusplus
}
#endif

#endif
