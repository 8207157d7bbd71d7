// Element products that work in whole groups of four.
//
// inner_product (element products, despite its name) and constant_mul step by
// four while i < length and have no scalar tail: for a length that is no
// multiple of 4 the last group reads in1/in2 and writes out up to three
// elements behind the end. That over-run is part of their contract: every
// caller sizes all three arrays up to the next multiple of 4.
#include "ne10_math.h"

extern "C" void inner_product_scalar(float* in1, float* in2, float* out, int length) {
  for (int i = 0; i < length; i += ZEB_LANES) {
    // Deliberately no bound check inside the group (over-run by design).
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = in1[i + k] * in2[i + k];
  }
}

extern "C" void inner_product_vec4(float* in1, float* in2, float* out, int length) {
  for (int i = 0; i < length; i += ZEB_LANES) {
    // The last group may run up to three elements past length (by design).
    zeb_store_f32x4(out + i, zeb_load_f32x4(in1 + i) * zeb_load_f32x4(in2 + i));
  }
}

extern "C" void constant_mul_scalar(float* in1, const float const_in2, float* out, int length) {
  for (int i = 0; i < length; i += ZEB_LANES) {
    // Deliberately no bound check inside the group (over-run by design).
    for (int k = 0; k < ZEB_LANES; ++k) out[i + k] = in1[i + k] * const_in2;
  }
}

extern "C" void constant_mul_vec4(float* in1, const float const_in2, float* out, int length) {
  for (int i = 0; i < length; i += ZEB_LANES) {
    // The last group may run up to three elements past length (by design).
    zeb_store_f32x4(out + i, zeb_load_f32x4(in1 + i) * const_in2);
  }
}

extern "C" void inner_product(float* in1, float* in2, float* out, int length) {
  inner_product_vec4(in1, in2, out, length);
}

extern "C" void constant_mul(float* in1, const float const_in2, float* out, int length) {
  constant_mul_vec4(in1, const_in2, out, length);
}
