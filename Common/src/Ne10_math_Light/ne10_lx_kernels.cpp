// Array kernels of the math interface: lanes while i + 3 < length, then a
// scalar tail through the C library in double precision.
//
// The _scalar form applies the one-element lane functions and is the
// reference; the _vec4 form runs the 4-lane functions and gives the same bits.
// The _neon kernels the library calls are the 4-lane form.
#include <math.h>

#include "ne10_math.h"

namespace {

constexpr float kLog10OfE = 0.43429449f;

typedef float (*Lane1)(float);
typedef zeb_f32x4 (*Lane4)(zeb_f32x4);
typedef float (*Lane1Binary)(float, float);
typedef zeb_f32x4 (*Lane4Binary)(zeb_f32x4, zeb_f32x4);

// Each returns the index of the first element left for the tail.
unsigned int LanesScalar(const float* in, float* out, unsigned int length, Lane1 lane) {
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = lane(in[i + k]);
  }
  return i;
}

unsigned int LanesVec4(const float* in, float* out, unsigned int length, Lane4 lane) {
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) zeb_store_f32x4(out + i, lane(zeb_load_f32x4(in + i)));
  return i;
}

unsigned int LanesScalarBinary(const float* a, const float* b, float* out, unsigned int length,
                               Lane1Binary lane) {
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = lane(a[i + k], b[i + k]);
  }
  return i;
}

unsigned int LanesVec4Binary(const float* a, const float* b, float* out, unsigned int length,
                             Lane4Binary lane) {
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    zeb_store_f32x4(out + i, lane(zeb_load_f32x4(a + i), zeb_load_f32x4(b + i)));
  }
  return i;
}

// ---- lane bodies not provided by the lane functions themselves ----
float Log10Lane1(float x) { return log_ps_scalar(x) * kLog10OfE; }
zeb_f32x4 Log10Lane4(zeb_f32x4 x) { return log_ps(x) * kLog10OfE; }
float MulLane1(float a, float b) { return a * b; }
zeb_f32x4 MulLane4(zeb_f32x4 a, zeb_f32x4 b) { return a * b; }

// ---- tails: the C library in double, rounded to float ----
void ExpTail(const float* in, float* out, unsigned int i, unsigned int length) {
  for (; i < length; ++i) out[i] = static_cast<float>(exp(static_cast<double>(in[i])));
}

void SineTail(const float* in, float* out, unsigned int i, unsigned int length) {
  for (; i < length; ++i) out[i] = static_cast<float>(sin(static_cast<double>(in[i])));
}

void SqrtTail(const float* in, float* out, unsigned int i, unsigned int length) {
  for (; i < length; ++i) out[i] = static_cast<float>(sqrt(static_cast<double>(in[i])));
}

void Log10Tail(const float* in, float* out, unsigned int i, unsigned int length) {
  for (; i < length; ++i) out[i] = static_cast<float>(log10(static_cast<double>(in[i])));
}

void PowTail(const float* base, const float* exponent, float* out, unsigned int i,
             unsigned int length) {
  for (; i < length; ++i) {
    out[i] = static_cast<float>(pow(static_cast<double>(base[i]), static_cast<double>(exponent[i])));
  }
}

void MulTail(const float* a, const float* b, float* out, unsigned int i, unsigned int length) {
  for (; i < length; ++i) out[i] = a[i] * b[i];
}

// Adds the four lane sums as the vector unit does: low half plus high half,
// then the two remaining lanes.
float FoldLaneSums(const float acc[ZEB_LANES]) { return (acc[0] + acc[2]) + (acc[1] + acc[3]); }

}  // namespace

// ============================================================ scalar ==

extern "C" void LX_Exp_scalar(float* input, float* output, unsigned int length) {
  ExpTail(input, output, LanesScalar(input, output, length, exp_ps_scalar), length);
}

extern "C" void LX_Pow_scalar(float* base, float* exponent, float* output, unsigned int length) {
  const unsigned int i = LanesScalarBinary(base, exponent, output, length, vpowq_f32_scalar);
  PowTail(base, exponent, output, i, length);
}

extern "C" void LX_Sine_scalar(float* input, float* output, unsigned int length) {
  SineTail(input, output, LanesScalar(input, output, length, sin_ps_scalar), length);
}

extern "C" void LX_Sqrt_scalar(float* input, float* output, unsigned int length) {
  SqrtTail(input, output, LanesScalar(input, output, length, sqrt_ps_scalar), length);
}

extern "C" void LX_Log10_scalar(float* input, float* output, unsigned int length) {
  Log10Tail(input, output, LanesScalar(input, output, length, Log10Lane1), length);
}

extern "C" void LX_Dot_Mul_scalar(float* input1, float* input2, float* output, unsigned int length) {
  MulTail(input1, input2, output, LanesScalarBinary(input1, input2, output, length, MulLane1), length);
}

extern "C" void LX_Dump_Element_To_Array_scalar(float* inout, float value, unsigned int length) {
  for (unsigned int i = 0; i < length; ++i) inout[i] = value;
}

extern "C" void LX_Mul_Element_To_Array_scalar(float* inout, float value, unsigned int length) {
  for (unsigned int i = 0; i < length; ++i) inout[i] = inout[i] * value;
}

extern "C" void InnerProduct_scalar(float* input1, float* input2, float* output, int length) {
  float acc[ZEB_LANES] = {0.0f, 0.0f, 0.0f, 0.0f};
  int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    for (int k = 0; k < ZEB_LANES; ++k) acc[k] = acc[k] + input1[i + k] * input2[i + k];
  }
  float sum = FoldLaneSums(acc);
  for (; i < length; ++i) sum = sum + input1[i] * input2[i];
  output[0] = sum;
}

// ============================================================ 4-lane ==

extern "C" void LX_Exp_vec4(float* input, float* output, unsigned int length) {
  ExpTail(input, output, LanesVec4(input, output, length, exp_ps), length);
}

extern "C" void LX_Pow_vec4(float* base, float* exponent, float* output, unsigned int length) {
  const unsigned int i = LanesVec4Binary(base, exponent, output, length, vpowq_f32);
  PowTail(base, exponent, output, i, length);
}

extern "C" void LX_Sine_vec4(float* input, float* output, unsigned int length) {
  SineTail(input, output, LanesVec4(input, output, length, sin_ps), length);
}

extern "C" void LX_Sqrt_vec4(float* input, float* output, unsigned int length) {
  SqrtTail(input, output, LanesVec4(input, output, length, sqrt_ps), length);
}

extern "C" void LX_Log10_vec4(float* input, float* output, unsigned int length) {
  Log10Tail(input, output, LanesVec4(input, output, length, Log10Lane4), length);
}

extern "C" void LX_Dot_Mul_vec4(float* input1, float* input2, float* output, unsigned int length) {
  MulTail(input1, input2, output, LanesVec4Binary(input1, input2, output, length, MulLane4), length);
}

extern "C" void LX_Dump_Element_To_Array_vec4(float* inout, float value, unsigned int length) {
  const zeb_f32x4 v = zeb_splat_f32x4(value);
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) zeb_store_f32x4(inout + i, v);
  for (; i < length; ++i) inout[i] = value;
}

extern "C" void LX_Mul_Element_To_Array_vec4(float* inout, float value, unsigned int length) {
  unsigned int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    zeb_store_f32x4(inout + i, zeb_load_f32x4(inout + i) * value);
  }
  for (; i < length; ++i) inout[i] = inout[i] * value;
}

extern "C" void InnerProduct_vec4(float* input1, float* input2, float* output, int length) {
  zeb_f32x4 acc = zeb_splat_f32x4(0.0f);
  int i = 0;
  for (; i + 3 < length; i += ZEB_LANES) {
    acc = acc + zeb_load_f32x4(input1 + i) * zeb_load_f32x4(input2 + i);
  }
  const float lanes[ZEB_LANES] = {acc[0], acc[1], acc[2], acc[3]};
  float sum = FoldLaneSums(lanes);
  for (; i < length; ++i) sum = sum + input1[i] * input2[i];
  output[0] = sum;
}

// ================================================= library kernels ==

extern "C" void LX_Exp_neon(float* input, float* output, unsigned int length) {
  LX_Exp_vec4(input, output, length);
}

extern "C" void LX_Pow_neon(float* base, float* exponent, float* output, unsigned int length) {
  LX_Pow_vec4(base, exponent, output, length);
}

extern "C" void LX_Sine_neon(float* input, float* output, unsigned int length) {
  LX_Sine_vec4(input, output, length);
}

extern "C" void LX_Sqrt_neon(float* input, float* output, unsigned int length) {
  LX_Sqrt_vec4(input, output, length);
}

extern "C" void LX_Log10_neon(float* input, float* output, unsigned int length) {
  LX_Log10_vec4(input, output, length);
}

extern "C" void LX_Dot_Mul_neon(float* input1, float* input2, float* output, unsigned int length) {
  LX_Dot_Mul_vec4(input1, input2, output, length);
}

extern "C" void LX_Dump_Element_To_Array_neon(float* inout, float value, unsigned int length) {
  LX_Dump_Element_To_Array_vec4(inout, value, length);
}

extern "C" void LX_Mul_Element_To_Array_neon(float* inout, float value, unsigned int length) {
  LX_Mul_Element_To_Array_vec4(inout, value, length);
}

extern "C" void InnerProduct_neon(float* input1, float* input2, float* output, int length) {
  InnerProduct_vec4(input1, input2, output, length);
}

// ======================================================== interface ==

extern "C" AUDIO_MATH_RET ne10_LX_Exp(float* input, float* output, unsigned int length) {
  LX_Exp_neon(input, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Pow(float* base, float* exponent, float* output,
                                      unsigned int length) {
  LX_Pow_neon(base, exponent, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Sine(float* input, float* output, unsigned int length) {
  LX_Sine_neon(input, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Sqrt(float* input, float* output, unsigned int length) {
  LX_Sqrt_neon(input, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Log10(float* input, float* output, unsigned int length) {
  LX_Log10_neon(input, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Dot_Mul(float* input1, float* input2, float* output,
                                          unsigned int length) {
  LX_Dot_Mul_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Dump_Element_To_Array(float* inout, float value,
                                                        unsigned int length) {
  LX_Dump_Element_To_Array_neon(inout, value, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_LX_Mul_Element_To_Array(float* inout, float value,
                                                       unsigned int length) {
  LX_Mul_Element_To_Array_neon(inout, value, length);
  return AUDIO_MATH_RET_SUCCESS;
}

extern "C" AUDIO_MATH_RET ne10_InnerProduct(float* input1, float* input2, float* output,
                                            int length) {
  InnerProduct_neon(input1, input2, output, length);
  return AUDIO_MATH_RET_SUCCESS;
}
