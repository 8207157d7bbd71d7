// Dispatch functions of the noise reduction kernels: each calls its kernel
// (the name without FuncNR_, with _neon added; nr_internal_neon.h) with the
// same arguments and returns AUDIO_MATH_RET_SUCCESS, the only value it gives.
#ifndef ZEB_NR_INTERFACE_NEON_H
#define ZEB_NR_INTERFACE_NEON_H

#include "ne10_math.h"

#ifdef __cplusplus
extern "C" {
#endif

// ps[k] = X[2k]^2 + X[2k+1]^2 for k below length / 2.
AUDIO_MATH_RET FuncNR_Power_Spectrum(const float* X, float* ps, int length);
// ps[k] = X[2k] Y[2k] + X[2k+1] Y[2k+1] for k below length / 2.
AUDIO_MATH_RET FuncNR_Cross_Power_Spectrum(const float* X, const float* Y, float* ps, int length);
// output[k] = sum over j < filter_size of input[k + j] filter[j], for k below
// input_size + filter_size - 1; input holds input_size + 2 (filter_size - 1)
// floats, and the filter is not reversed.
AUDIO_MATH_RET FuncNR_Convolution(float* input, const float* filter, int input_size,
                                  int filter_size, float* output);
AUDIO_MATH_RET FuncNR_Mini_Element_By_Element(float* input1, float* input2, float* output,
                                              int length);
// output[i] = input[i] if input[i] >= lower_bound, else assigne_value.
AUDIO_MATH_RET FuncNR_Lower_Bound_Calculation_And_Assigned(float* input, float* output,
                                                           float lower_bound, float assigne_value,
                                                           int length);
// output[i] = input[i] if input[i] <= upper_bound, else assigne_value.
AUDIO_MATH_RET FuncNR_Upper_Bound_Calculation_And_Assigned(float* input, float* output,
                                                           float upper_bound, float assigne_value,
                                                           int length);
AUDIO_MATH_RET FuncNR_Lower_Bound_Calculation(float* input, float* output, float lower_bound,
                                              int length);
AUDIO_MATH_RET FuncNR_Upper_Bound_Calculation(float* input, float* output, float upper_bound,
                                              int length);
// Both parts of complex bin k times real_filter[k], for k below length / 2.
AUDIO_MATH_RET FuncNR_Frequency_Mul_Real_Filter(float* frequency_domain, float* real_filter,
                                                float* output, int length);
// Lanes: input1 times a once-refined reciprocal estimate of input2; tail exact.
AUDIO_MATH_RET FuncNR_Division_Array(float* input1, float* input2, float* output, int length);
AUDIO_MATH_RET FuncNR_Add_Array(float* input1, float* input2, float* output, int length);
// output[i] = input1[i] scalar + input2[i] (1 - scalar).
AUDIO_MATH_RET FuncNR_Recursive_Scalar(float* input1, float* input2, float scalar,
                                       float* output, int length);
// output[i] = input1[i] scalar[i] + input2[i] (1 - scalar[i]).
AUDIO_MATH_RET FuncNR_Recursive_Array(float* input1, float* input2, float* scalar,
                                      float* output, int length);
AUDIO_MATH_RET FuncNR_Tanh(float* input, int length);
AUDIO_MATH_RET FuncNR_Sigmoid(float* input, int length);
AUDIO_MATH_RET FuncNR_Relu(float* input, int length);
// output[i] = (output[i] + bias[i]) scale[0].
AUDIO_MATH_RET FuncNR_AddBias_Scale(const signed char* bias, float* output, int length,
                                    float* scale);
// output[i] += sum over j < loop of weight[shift + stride j + i] value[j];
// it accumulates onto what output holds.
AUDIO_MATH_RET FuncNR_MulWeight(const signed char* weight, const float* value, float* output,
                                int shift, int stride, int length, int loop);
// As FuncNR_MulWeight with value1[j] value2[j] as the input.
AUDIO_MATH_RET FuncNR_MulWeight2(const signed char* weight, const float* value1,
                                 const float* value2, float* output, int shift, int stride,
                                 int length, int loop);
// Recurrent state update: t = input1 input2 + (1 - input1) output, written to
// both output and input2.
AUDIO_MATH_RET FuncNR_MulState(float* input1, float* input2, float* output, int length);

#ifdef __cplusplus
}
#endif

#endif
