// Dispatch functions of the noise reduction kernels.
#include "nr_interface_neon.h"

#include "nr_internal_neon.h"

extern "C" {

AUDIO_MATH_RET FuncNR_Power_Spectrum(const float* X, float* ps, int length) {
  Power_Spectrum_neon(X, ps, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Cross_Power_Spectrum(const float* X, const float* Y, float* ps, int length) {
  Cross_Power_Spectrum_neon(X, Y, ps, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Convolution(float* input, const float* filter, int input_size,
                                  int filter_size, float* output) {
  Convolution_neon(input, filter, input_size, filter_size, output);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Mini_Element_By_Element(float* input1, float* input2, float* output,
                                              int length) {
  Mini_Element_By_Element_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Lower_Bound_Calculation_And_Assigned(float* input, float* output,
                                                           float lower_bound, float assigne_value,
                                                           int length) {
  Lower_Bound_Calculation_And_Assigned_neon(input, output, lower_bound, assigne_value, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Upper_Bound_Calculation_And_Assigned(float* input, float* output,
                                                           float upper_bound, float assigne_value,
                                                           int length) {
  Upper_Bound_Calculation_And_Assigned_neon(input, output, upper_bound, assigne_value, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Lower_Bound_Calculation(float* input, float* output, float lower_bound,
                                              int length) {
  Lower_Bound_Calculation_neon(input, output, lower_bound, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Upper_Bound_Calculation(float* input, float* output, float upper_bound,
                                              int length) {
  Upper_Bound_Calculation_neon(input, output, upper_bound, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Frequency_Mul_Real_Filter(float* frequency_domain, float* real_filter,
                                                float* output, int length) {
  Frequency_Mul_Real_Filter_neon(frequency_domain, real_filter, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Division_Array(float* input1, float* input2, float* output, int length) {
  Division_Array_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Add_Array(float* input1, float* input2, float* output, int length) {
  Add_Array_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Recursive_Scalar(float* input1, float* input2, float scalar,
                                       float* output, int length) {
  Recursive_Scalar_neon(input1, input2, scalar, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Recursive_Array(float* input1, float* input2, float* scalar,
                                      float* output, int length) {
  Recursive_Array_neon(input1, input2, scalar, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Tanh(float* input, int length) {
  Tanh_neon(input, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Sigmoid(float* input, int length) {
  Sigmoid_neon(input, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_Relu(float* input, int length) {
  Relu_neon(input, length);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_AddBias_Scale(const signed char* bias, float* output, int length,
                                    float* scale) {
  AddBias_Scale_neon(bias, output, length, scale);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_MulWeight(const signed char* weight, const float* value, float* output,
                                int shift, int stride, int length, int loop) {
  MulWeight_neon(weight, value, output, shift, stride, length, loop);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_MulWeight2(const signed char* weight, const float* value1,
                                 const float* value2, float* output, int shift, int stride,
                                 int length, int loop) {
  MulWeight2_neon(weight, value1, value2, output, shift, stride, length, loop);
  return AUDIO_MATH_RET_SUCCESS;
}

AUDIO_MATH_RET FuncNR_MulState(float* input1, float* input2, float* output, int length) {
  MulState_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

}  // extern "C"
