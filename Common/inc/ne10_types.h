// Scalar types of the transform and vector-math layers.
#ifndef ZEB_COMMON_NE10_TYPES_H
#define ZEB_COMMON_NE10_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef float ne10_float32_t;
typedef int32_t ne10_int32_t;
typedef uint32_t ne10_uint32_t;
typedef int ne10_result_t;

#define NE10_OK 0
#define NE10_ERR (-1)

typedef struct {
  ne10_float32_t r;
  ne10_float32_t i;
} ne10_fft_cpx_float32_t;

typedef struct {
  ne10_fft_cpx_float32_t* buffer;
  ne10_int32_t nfft;
  ne10_fft_cpx_float32_t* r_twiddles;
  ne10_int32_t* r_factors;
  ne10_fft_cpx_float32_t* r_twiddles_backward;
  ne10_fft_cpx_float32_t* r_twiddles_neon;
  ne10_fft_cpx_float32_t* r_twiddles_neon_backward;
  ne10_int32_t* r_factors_neon;
  ne10_fft_cpx_float32_t* r_super_twiddles_neon;
} ne10_fft_r2c_state_float32_t;

typedef ne10_fft_r2c_state_float32_t* ne10_fft_r2c_cfg_float32_t;

#ifdef __cplusplus
}
#endif

#endif
