// Real float32 FFT beneath ORB_rdft: state layout, plan tables and the
// transform entries.
//
// An N-point real transform is computed as four interleaved sequences
// x[4n + l], l = 0..3, each transformed by an N/4-point real plan in the four
// lanes of a vector, then merged by one radix-4 stage with the "super"
// twiddles. Two lane forms of the same kernels exist: `_c` (a struct of four
// floats, the reference) and `_neon` (GCC vector extension, 4 floats per
// register). Both perform identical float operations and give identical bits.
//
// The drivers handle N = 8 (scalar 8-point path) and N = 16 * 2^k, i.e. quarter
// plans made of radix-4 stages with an optional trailing radix 2, which is
// folded into a radix-8 first stage. For other lengths the tables are still
// built, but the transform entries leave their output untouched.
#ifndef ZEB_COMMON_NE10_FFT_H
#define ZEB_COMMON_NE10_FFT_H

#include "ne10_types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Slots reserved for a factor table: stage count, first stride, up to 21
// (radix, remainder) pairs and the algorithm flag fit with room to spare.
#define NE10_MAXFACTORS 32
#define NE10_FACTOR_SLOTS (2 * NE10_MAXFACTORS)
// Bit 0 of the factor flags: take radix 8 (or 5, 3 for 40, 24) first.
#define NE10_FACTOR_EIGHT_FIRST 1

typedef void (*ne10_fft_r2c_1d_float32_fn)(ne10_fft_cpx_float32_t* fout, ne10_float32_t* fin,
                                           ne10_fft_r2c_cfg_float32_t cfg);
typedef void (*ne10_fft_c2r_1d_float32_fn)(ne10_float32_t* fout, ne10_fft_cpx_float32_t* fin,
                                           ne10_fft_r2c_cfg_float32_t cfg);

// Process-wide transform entries, installed by ne10_init_dsp.
extern ne10_fft_r2c_1d_float32_fn ne10_fft_r2c_1d_float32;
extern ne10_fft_c2r_1d_float32_fn ne10_fft_c2r_1d_float32;

// Points the two entries at the 4-lane forms; returns NE10_OK.
ne10_result_t ne10_init_dsp(void);

// Bytes of caller memory for one state of length nfft:
// 16*nfft + 2*nfft + (nfft/32 + 1)*96 + 556.
ne10_int32_t ne10_fft_r2c_float32_GetBuffSize(ne10_int32_t nfft);

// Lays the state out in the caller's memory at st (zeroing
// GetBuffSize(nfft) bytes first) and builds the tables. Returns st, or NULL
// for NULL st, nfft < 1, a failed first factorisation or tables that do not
// fit. Below 16 points no table is built.
ne10_fft_r2c_cfg_float32_t ne10_fft_alloc_r2c_float32(void* st, ne10_int32_t nfft);

// Factor table: facbuf[0] = stage count, facbuf[1] = n / last radix,
// (radix, remainder) pairs from slot 2, then the algorithm flag (1 when a
// radix 3, 5 or an odd remainder was taken). 0, or -1 for NULL facbuf,
// n < 1 or more than 21 stages.
ne10_int32_t ne10_factor(ne10_int32_t n, ne10_int32_t* facbuf, ne10_int32_t ne10_factor_flags);

// Twiddles of a factor table, stage entry (j, k) at mstride*(k-1) + j (plain)
// or j*(radix-1) + k-1 (transposed). Both return the slot behind the last
// twiddle written.
ne10_fft_cpx_float32_t* ne10_fft_generate_twiddles_float32(ne10_fft_cpx_float32_t* twiddles,
                                                           const ne10_int32_t* factors,
                                                           ne10_int32_t nfft);
ne10_fft_cpx_float32_t* ne10_fft_generate_twiddles_transposed_float32(
    ne10_fft_cpx_float32_t* twiddles, const ne10_int32_t* factors, ne10_int32_t nfft);

// Twiddles of the merging stage: max(1, nfft/32) blocks of 12, entry
// 12*i + 4*(j-1) + k = exp(-2*pi*j*(4*i + k)/nfft), j = 1..3, k = 0..3.
void ne10_fft_generate_super_twiddles_float32(ne10_fft_cpx_float32_t* super_twiddles,
                                              ne10_int32_t nfft);

// Forward: nfft real samples in, nfft/2 + 1 bins out (unscaled,
// exp(-j...)), fout[0].i and fout[nfft/2].i are 0. fin is not written.
void ne10_fft_r2c_1d_float32_neon(ne10_fft_cpx_float32_t* fout, ne10_float32_t* fin,
                                  ne10_fft_r2c_cfg_float32_t cfg);
void ne10_fft_r2c_1d_float32_c(ne10_fft_cpx_float32_t* fout, ne10_float32_t* fin,
                               ne10_fft_r2c_cfg_float32_t cfg);
// Inverse: nfft/2 + 1 bins in, nfft real samples out, scaled by 1/nfft.
// Im of bins 0 and nfft/2 are ignored; fin[0].i is 0 on return.
void ne10_fft_c2r_1d_float32_neon(ne10_float32_t* fout, ne10_fft_cpx_float32_t* fin,
                                  ne10_fft_r2c_cfg_float32_t cfg);
void ne10_fft_c2r_1d_float32_c(ne10_float32_t* fout, ne10_fft_cpx_float32_t* fin,
                               ne10_fft_r2c_cfg_float32_t cfg);

// Scalar 8-point real transforms on packed spectra (fout[0] = (X0, X4));
// only fstride = mstride = 1 and nfft = 8 occur. The inverse scales by 1/8.
void ne10_radix8_r2c_c(ne10_fft_cpx_float32_t* Fout, const ne10_float32_t* Fin,
                       ne10_int32_t fstride, ne10_int32_t mstride, ne10_int32_t nfft);
void ne10_radix8_c2r_c(ne10_float32_t* Fout, const ne10_fft_cpx_float32_t* Fin,
                       ne10_int32_t fstride, ne10_int32_t mstride, ne10_int32_t nfft);

#ifdef __cplusplus
}
#endif

#endif
