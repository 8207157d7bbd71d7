// Installation of the process-wide transform entries.
#include "ne10_fft.h"

extern "C" {

// Every installation stores the same values, so handles initialised from
// different threads agree. The defaults already name the 4-lane forms so
// that a transform reached before ne10_init still has a valid target.
ne10_fft_r2c_1d_float32_fn ne10_fft_r2c_1d_float32 = ne10_fft_r2c_1d_float32_neon;
ne10_fft_c2r_1d_float32_fn ne10_fft_c2r_1d_float32 = ne10_fft_c2r_1d_float32_neon;

ne10_result_t ne10_init_dsp(void) {
  ne10_fft_r2c_1d_float32 = ne10_fft_r2c_1d_float32_neon;
  ne10_fft_c2r_1d_float32 = ne10_fft_c2r_1d_float32_neon;
  return NE10_OK;
}

}  // extern "C"
