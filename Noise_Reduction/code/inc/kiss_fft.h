// Complex mixed-radix FFT of the neural denoiser: one 320-point plan per
// instance, with the plan record and both of its tables carved out of the
// caller's working buffer.
#ifndef ZEB_NR_KISS_FFT_H
#define ZEB_NR_KISS_FFT_H

#ifdef __cplusplus
extern "C" {
#endif

// Length of the denoiser's transform; the working buffer reserves this many
// twiddles and bit-reverse entries behind each plan record.
#define KISS_NN_FFT_POINTS 320
// Radix/remaining-length pairs of a plan: room for eight stages.
#define KISS_MAX_FACTOR_WORDS 16

typedef struct {
  float r;
  float i;
} kiss_fft_cpx;

typedef kiss_fft_cpx kiss_twiddle_cpx;

typedef struct kiss_fft_state {
  int nfft;
  float scale;  // 1 / nfft, applied by the forward transform
  int shift;    // -1 for a plan that owns its twiddles
  short factors[KISS_MAX_FACTOR_WORDS];
  short* bitrev;               // nfft entries in the working buffer
  kiss_twiddle_cpx* twiddles;  // nfft entries in the working buffer
  void* arch_fft;              // no architecture-specific state in the float form
} kiss_fft_state;

#ifdef __cplusplus
}
#endif

#endif
