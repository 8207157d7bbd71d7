// Array kernels of the noise reduction core and the neural network.
//
// Every kernel exists in three forms:
//   Xxx_scalar   the reference: the kernel's arithmetic one element at a time
//   Xxx_vec4     the same arithmetic on four float lanes; bit-identical to _scalar
//   Xxx_neon     the form the library calls (the 4-lane form)
// The dispatch functions FuncNR_* (nr_interface_neon.h) call the _neon form.
//
// Lanes run while i + 3 < length (eight floats a step where a kernel reads
// interleaved pairs or eight outputs); the rest is the tail, one element at
// a time. Most kernels compute the same value in lanes and tail. Where they
// differ it is on purpose:
//   Division_Array  lanes n * r1 with r1 a once-refined reciprocal estimate
//                   (about 16 good bits), tail the exact quotient
//   Tanh            lanes tanh_ps, tail tansig_approx
//   Sigmoid         lanes sigmoid_ps, tail sigmoid_approx
// so an element's value can depend on its position in the array.
//
// No kernel tests for NULL or allocates. An output array may be the same
// array as an input, except that Frequency_Mul_Real_Filter's output must not
// be real_filter. Complex arrays are interleaved (re, im) and their length
// counts floats.
#ifndef ZEB_NR_INTERNAL_NEON_H
#define ZEB_NR_INTERNAL_NEON_H

#include "zeb_simd.h"

#ifdef __cplusplus
extern "C" {
#endif

#define NR_TANSIG_TABLE_SIZE 201
#define NR_ASINF_LUT_SIZE 7

// tanh(0.04 i) to six decimals, i = 0..200.
extern const float tansig_table[NR_TANSIG_TABLE_SIZE];
// Coefficients of an arc sine polynomial; kept with the kernels, read by none.
extern const float asinf_lut[NR_ASINF_LUT_SIZE];

// Table-driven tanh and logistic functions of the network (the tails of
// Tanh and Sigmoid). tansig_approx: x >= 8 (and NaN) gives 1, x <= -8 gives -1.
float tansig_approx(float x);
float sigmoid_approx(float x);

// ---- Lane functions and their one-element forms ----
// a times the once-refined reciprocal estimate of b.
zeb_f32x4 div_ps(zeb_f32x4 a, zeb_f32x4 b);
float div_ps_scalar(float a, float b);
// Once-refined reciprocal of 1 + exp_ps(-v).
zeb_f32x4 sigmoid_ps(zeb_f32x4 v);
float sigmoid_ps_scalar(float v);
// Rational tanh on x limited to [-9, 9]; |x| < 0.0001 returns x itself.
zeb_f32x4 tanh_ps(zeb_f32x4 x);
float tanh_ps_scalar(float x);

// ---- Kernels: _neon is what the library runs ----
void Power_Spectrum_neon(const float* X, float* ps, int length);
void Cross_Power_Spectrum_neon(const float* X, const float* Y, float* ps, int length);
void Convolution_neon(float* input, const float* filter, int input_size, int filter_size,
                      float* output);
void Mini_Element_By_Element_neon(float* input1, float* input2, float* output, int length);
void Lower_Bound_Calculation_And_Assigned_neon(float* input, float* output, float lower_bound,
                                               float assigne_value, int length);
void Upper_Bound_Calculation_And_Assigned_neon(float* input, float* output, float upper_bound,
                                               float assigne_value, int length);
void Lower_Bound_Calculation_neon(float* input, float* output, float lower_bound, int length);
void Upper_Bound_Calculation_neon(float* input, float* output, float upper_bound, int length);
void Frequency_Mul_Real_Filter_neon(float* frequency_domain, float* real_filter, float* output,
                                    int length);
void Division_Array_neon(float* input1, float* input2, float* output, int length);
void Add_Array_neon(float* input1, float* input2, float* output, int length);
void Recursive_Scalar_neon(float* input1, float* input2, float scalar, float* output, int length);
void Recursive_Array_neon(float* input1, float* input2, float* scalar, float* output, int length);
void Tanh_neon(float* input, int length);
void Sigmoid_neon(float* input, int length);
void Relu_neon(float* input, int length);
void AddBias_Scale_neon(const signed char* bias, float* output, int length, float* scale);
void MulWeight_neon(const signed char* weight, const float* value, float* output, int shift,
                    int stride, int length, int loop);
void MulWeight2_neon(const signed char* weight, const float* value1, const float* value2,
                     float* output, int shift, int stride, int length, int loop);
void MulState_neon(float* input1, float* input2, float* output, int length);

// ---- Scalar reference forms ----
void Power_Spectrum_scalar(const float* X, float* ps, int length);
void Cross_Power_Spectrum_scalar(const float* X, const float* Y, float* ps, int length);
void Convolution_scalar(float* input, const float* filter, int input_size, int filter_size,
                        float* output);
void Mini_Element_By_Element_scalar(float* input1, float* input2, float* output, int length);
void Lower_Bound_Calculation_And_Assigned_scalar(float* input, float* output, float lower_bound,
                                                 float assigne_value, int length);
void Upper_Bound_Calculation_And_Assigned_scalar(float* input, float* output, float upper_bound,
                                                 float assigne_value, int length);
void Lower_Bound_Calculation_scalar(float* input, float* output, float lower_bound, int length);
void Upper_Bound_Calculation_scalar(float* input, float* output, float upper_bound, int length);
void Frequency_Mul_Real_Filter_scalar(float* frequency_domain, float* real_filter, float* output,
                                      int length);
void Division_Array_scalar(float* input1, float* input2, float* output, int length);
void Add_Array_scalar(float* input1, float* input2, float* output, int length);
void Recursive_Scalar_scalar(float* input1, float* input2, float scalar, float* output,
                             int length);
void Recursive_Array_scalar(float* input1, float* input2, float* scalar, float* output,
                            int length);
void Tanh_scalar(float* input, int length);
void Sigmoid_scalar(float* input, int length);
void Relu_scalar(float* input, int length);
void AddBias_Scale_scalar(const signed char* bias, float* output, int length, float* scale);
void MulWeight_scalar(const signed char* weight, const float* value, float* output, int shift,
                      int stride, int length, int loop);
void MulWeight2_scalar(const signed char* weight, const float* value1, const float* value2,
                       float* output, int shift, int stride, int length, int loop);
void MulState_scalar(float* input1, float* input2, float* output, int length);

// ---- 4-lane forms ----
void Power_Spectrum_vec4(const float* X, float* ps, int length);
void Cross_Power_Spectrum_vec4(const float* X, const float* Y, float* ps, int length);
void Convolution_vec4(float* input, const float* filter, int input_size, int filter_size,
                      float* output);
void Mini_Element_By_Element_vec4(float* input1, float* input2, float* output, int length);
void Lower_Bound_Calculation_And_Assigned_vec4(float* input, float* output, float lower_bound,
                                               float assigne_value, int length);
void Upper_Bound_Calculation_And_Assigned_vec4(float* input, float* output, float upper_bound,
                                               float assigne_value, int length);
void Lower_Bound_Calculation_vec4(float* input, float* output, float lower_bound, int length);
void Upper_Bound_Calculation_vec4(float* input, float* output, float upper_bound, int length);
void Frequency_Mul_Real_Filter_vec4(float* frequency_domain, float* real_filter, float* output,
                                    int length);
void Division_Array_vec4(float* input1, float* input2, float* output, int length);
void Add_Array_vec4(float* input1, float* input2, float* output, int length);
void Recursive_Scalar_vec4(float* input1, float* input2, float scalar, float* output, int length);
void Recursive_Array_vec4(float* input1, float* input2, float* scalar, float* output, int length);
void Tanh_vec4(float* input, int length);
void Sigmoid_vec4(float* input, int length);
void Relu_vec4(float* input, int length);
void AddBias_Scale_vec4(const signed char* bias, float* output, int length, float* scale);
void MulWeight_vec4(const signed char* weight, const float* value, float* output, int shift,
                    int stride, int length, int loop);
void MulWeight2_vec4(const signed char* weight, const float* value1, const float* value2,
                     float* output, int shift, int stride, int length, int loop);
void MulState_vec4(float* input1, float* input2, float* output, int length);

#ifdef __cplusplus
}
#endif

#endif
