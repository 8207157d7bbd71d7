// State of the neural denoiser (filter mode 5): one DenoiseState and one
// CommonState per channel, both carved out of the caller's working buffer.
// Everything runs at 16 kHz in hops of 160 samples over a 320-point frame.
#ifndef ZEB_NR_NN_H
#define ZEB_NR_NN_H

#include "kiss_fft.h"
#include "rnn.h"

#ifdef __cplusplus
extern "C" {
#endif

#define NN_HOP_SAMPLES 160
#define NN_WINDOW_SAMPLES 320
#define NN_BINS 161
#define NN_BANDS 18
#define NN_FEATURES 38
#define NN_CEPS_HISTORY_FRAMES 8
#define NN_PITCH_BUF_SAMPLES 576
#define NN_PITCH_BUF2_SAMPLES 288   // decimated by two
#define NN_COMB_BUF_SAMPLES 640     // four hops
#define NN_DCT_TABLE_ENTRIES 324    // 18 x 18
#define NN_COMB_TAPS 3
#define NN_HP_STATE_WORDS 2

typedef struct DenoiseState {
  float analysis_mem[NN_HOP_SAMPLES];
  float cepstral_mem[NN_CEPS_HISTORY_FRAMES][NN_BANDS];
  int memid;
  float synthesis_mem[NN_HOP_SAMPLES];
  float pitch_buf[NN_PITCH_BUF_SAMPLES];
  float pitch_enh_buf[NN_PITCH_BUF_SAMPLES];
  float last_gain;
  int last_period;
  float mem_hp_x[NN_HP_STATE_WORDS];
  float lastg[NN_BANDS];
  RNNState rnn;
  kiss_fft_cpx X[NN_BINS];
  kiss_fft_cpx P[NN_WINDOW_SAMPLES];
  float x[NN_HOP_SAMPLES];
  float Ex[NN_BANDS];
  float Ep[NN_BANDS];
  float Exp[NN_BANDS];
  float features[NN_FEATURES];
  float g[NN_BANDS];
  float gf[NN_BINS];
  kiss_fft_cpx x_trans[NN_WINDOW_SAMPLES];
  kiss_fft_cpx y_trans[NN_WINDOW_SAMPLES];
  float x_t[NN_WINDOW_SAMPLES];
  float sum_buf[NN_BANDS];
  float Ly_buf[NN_BANDS];
  float p_buf[NN_WINDOW_SAMPLES];
  float pitch_buf2[NN_PITCH_BUF2_SAMPLES];
  // Pitch filter work arrays: per band (r, newE, norm) or per bin once
  // spread over the spectrum (rf, normf). tmp_buf is kept per bin so that
  // either use fits.
  float tmp_buf[NN_BINS];
  float r_buf[NN_BANDS];
  float rf_buf[NN_BINS];
  float newE_buf[NN_BANDS];
  float norm_buf[NN_BANDS];
  float normf_buf[NN_BINS];
  int eq_flag;
  float eq_table[NN_BINS];
  kiss_fft_cpx Y[NN_WINDOW_SAMPLES];
  float pitch_corr;
  float T;
  float Ex_lookahead[NN_BANDS];
  float comb_buf[NN_COMB_BUF_SAMPLES];
} DenoiseState;

typedef struct CommonState {
  int init;
  kiss_fft_state* kfft;
  float half_window[NN_WINDOW_SAMPLES];  // the whole window, despite the name
  float dct_table[NN_DCT_TABLE_ENTRIES];
  float comb_hann_window[NN_COMB_TAPS];
  float ones[NN_WINDOW_SAMPLES];
  float calulation_temp_memory[NN_WINDOW_SAMPLES];
  float calulation_temp_memory1[NN_WINDOW_SAMPLES];
  float calulation_temp_memory2[NN_WINDOW_SAMPLES];
} CommonState;

#ifdef __cplusplus
}
#endif

#endif
