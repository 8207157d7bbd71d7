// ORB_rdft: the library's 256-point real FFT entry over a handle whose
// state lives in the owner's working buffer.
#include "fft.h"

#include <stdio.h>
#include <string.h>

#include "ne10_fft.h"

namespace {

// Bins of an n-point real spectrum, held as (re, im) pairs.
inline int binCount(int n) { return n / 2 + 1; }

// The transform length is the state's; a call for another length, or one
// longer than the staging array, cannot be served and is ignored.
bool lengthServable(const FFTHandle_t* handle, int n) {
  return n == handle->fft_Ne10_cfg->nfft && n >= 2 && binCount(n) <= FFT_MAX_BINS;
}

}  // namespace

extern "C" {

unsigned int FFT_GetBufferSize(unsigned int nfft) {
  return (unsigned int)ne10_fft_r2c_float32_GetBuffSize((ne10_int32_t)nfft);
}

ne10_result_t ne10_init(void) {
  if (ne10_init_dsp() != NE10_OK) {
    printf("init Ne10 DSP fail\n");
    printf("ERROR: init dsp failed\n");
    return NE10_ERR;
  }
  return NE10_OK;
}

void fft_init(FFTHandle_t* handle) {
  if (handle == NULL) {
    printf("[FFT]The handle is NULL\n");
    return;
  }
  if (handle->is_fft_init == 1) {
    printf("[FFT]Ne10 has init already\n");
    return;
  }
  if (handle->fft_Ne10_cfg == NULL) {
    printf("[FFT] Please assigned the begining address about FFT workingbuffer in Init.\n");
    return;
  }
  // On failure the owner's pointer is lost: the next Init must set it again.
  handle->fft_Ne10_cfg = ne10_fft_alloc_r2c_float32(handle->fft_Ne10_cfg, handle->fftSize);
  if (handle->fft_Ne10_cfg == NULL) {
    printf("[Audio] memory malloc failed\n");
    return;
  }
  handle->is_fft_init = 1;
}

void fft_Free(FFTHandle_t* handle) {
  if (handle == NULL) {
    printf("handle is NULL in FFT_Free!\t\n");
    return;
  }
  // Nothing to release: the state lives in the owner's working buffer.
  if (handle->is_fft_init) handle->is_fft_init = 0;
}

void ORB_rdft(FFTHandle_t* handle, int n, int isgn, float* a, int* ip, float* w) {
  if (handle == NULL) {
    printf("[Audio] Ne10_workingBufPtr is Null in fft\n");
    return;
  }
  ne10_fft_r2c_cfg_float32_t cfg = handle->fft_Ne10_cfg;
  // ip and w are kept from the older in-place interface: only their
  // presence is checked, and a missing one is reported but not fatal.
  if (cfg == NULL || a == NULL || ip == NULL || w == NULL) {
    printf("[Audio] input Null in Ne10_workingBufPtr->fft_Ne10_cfg\n");
    printf("address = %p is NULL in %s\n", (void*)cfg, __func__);
  }
  // Without a state or a data array there is nothing to transform.
  if (cfg == NULL || a == NULL) return;
  if (isgn != ORB_FFT_MODE_DO_FFT && isgn != ORB_FFT_MODE_DO_IFFT) return;
  if (!lengthServable(handle, n)) return;

  const size_t binBytes = (size_t)binCount(n) * sizeof(ne10_fft_cpx_float32_t);
  if (isgn == ORB_FFT_MODE_DO_FFT) {
    ne10_fft_r2c_1d_float32(handle->fft_Ne10_out, a, cfg);
    memcpy(a, handle->fft_Ne10_out, binBytes);
  } else {
    memcpy(handle->fft_Ne10_out, a, binBytes);
    memset(a, 0, (size_t)(n + 2) * sizeof(float));
    ne10_fft_c2r_1d_float32(a, handle->fft_Ne10_out, cfg);
  }
}

}  // extern "C"
