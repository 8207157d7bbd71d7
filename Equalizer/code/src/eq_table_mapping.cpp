// The chain's 129-bin EQ and high-pass curves, resampled by linear
// interpolation onto the neural denoiser's gain table.
#include "eq_table_mapping.h"

#include <math.h>
#include <stddef.h>

#include "debug_msglevel.h"
#include "eq_filter.h"
#include "hpf_tables.h"

namespace {

constexpr float kDbPerDoubling = 6.02f;
constexpr int kLastBin = EQ_BINS - 1;  // 128, the last bin of a 129-bin table
constexpr double kTableBins = 129.0;
constexpr double kUnityQ8 = 256.0;

}  // namespace

extern "C" {

int eq_table_mapping(short* input_table, float* output_table, short input_size, short output_size,
                     int dbg_lv) {
  if (input_size < 1 || output_size < 1) return -1;
  output_table[0] = (float)input_table[0];
  for (int i = 1; i < output_size; ++i) {
    const float x = (float)input_size * ((float)i / (float)output_size);
    const double lo = floor((double)x);
    double hi = ceil((double)x);
    // Past the end the last bin of a 129-bin table is named outright.
    if (hi > (double)(input_size - 1)) hi = (double)kLastBin;
    int hiIndex = (int)hi;
    if (hiIndex > input_size - 1) hiIndex = input_size - 1;  // shorter tables
    const int loIndex = (int)lo;
    const float frac = x - (float)lo;
    output_table[i] =
        (float)input_table[loIndex] + (float)(input_table[hiIndex] - input_table[loIndex]) * frac;
  }
  for (int i = 0; i < output_size; ++i) {
    if (output_table[i] > 20.0f) {
      ALGO_WRN(dbg_lv, "[%s]Warning! EQ setting could not be bigger than 20dB. %f\n", __func__,
               (double)output_table[i]);
    }
    if (output_table[i] < -100.0f) {
      ALGO_WRN(dbg_lv, "[%s]Warning! EQ setting could not be smaller than -100dB. %f\n", __func__,
               (double)output_table[i]);
    }
    output_table[i] = (float)pow(2.0, (double)(output_table[i] / kDbPerDoubling));
  }
  return 0;
}

int hpf_table_mapping(int hpf_freq, float* output_table, ZEB_KOL_SAMPLE_RATE sample_rate,
                      short output_size, int dbg_lv) {
  if (HPF_SelectTable((int)sample_rate, AUDIO_HPF_FREQ_80) == NULL) {
    ALGO_ERR(dbg_lv, "[HPF]Fail! Unsupported sample rate : %d\t\n", (int)sample_rate);
    return -1;
  }
  const short* table = HPF_SelectTable((int)sample_rate, hpf_freq);
  if (table == NULL) {
    ALGO_ERR(dbg_lv, "[HPF]Fail! Unsupported hpf cutoff_frequency: %d\t\n", hpf_freq);
    return -1;
  }
  if (output_size < 1) return -1;
  // Entry 0 is overwritten with the table's first gain and then scaled by an
  // interpolated gain that is never computed for it: it always ends at 0.
  const float tmp0 = 0.0f;
  output_table[0] = (float)table[0];
  output_table[0] = (float)((double)output_table[0] * ((double)tmp0 / kUnityQ8 * 1.0));
  for (int i = 1; i < output_size; ++i) {
    const double x = (double)((float)i / (float)output_size) * kTableBins;
    const double lo = floor(x);
    const double hi = fmin(ceil(x), (double)kLastBin);
    const int loIndex = (int)lo;
    const int hiIndex = (int)hi;
    const float tmp = (float)(table[loIndex] + (table[hiIndex] - table[loIndex]) * (x - lo));
    output_table[i] = (float)((double)output_table[i] * ((double)tmp / kUnityQ8 * 1.0));
  }
  return 0;
}

}  // extern "C"
