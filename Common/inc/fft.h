// The library's one transform entry: 256-point real FFT in caller memory.
#ifndef ZEB_COMMON_FFT_H
#define ZEB_COMMON_FFT_H

#include "ne10_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ORB_FFT_MODE_DO_FFT 1
#define ORB_FFT_MODE_DO_IFFT (-1)
#define FFT_MAX_BINS 129

typedef struct {
  ne10_fft_cpx_float32_t fft_Ne10_out[FFT_MAX_BINS];
  ne10_fft_r2c_cfg_float32_t fft_Ne10_cfg;
  int is_fft_init;
  int fftSize;
} FFTHandle_t;

unsigned int FFT_GetBufferSize(unsigned int nfft);
ne10_result_t ne10_init(void);
void fft_init(FFTHandle_t* handle);
void fft_Free(FFTHandle_t* handle);
void ORB_rdft(FFTHandle_t* handle, int n, int isgn, float* a, int* ip, float* w);

#ifdef __cplusplus
}
#endif

#endif
