// The chain's EQ and high-pass curves mapped onto the neural denoiser's gain
// table, whose bins are spaced differently from the 129 bins of the
// 256-point spectrum.
#ifndef ZEB_EQ_TABLE_MAPPING_H
#define ZEB_EQ_TABLE_MAPPING_H

#include "zebaudio/zeb_kol.h"

#ifdef __cplusplus
extern "C" {
#endif

// Interpolates input_size dB settings onto output_size points and turns each
// into a linear gain, 6.02 dB per doubling. Values outside -100..20 dB are
// warned about and kept. -1 (nothing written) for sizes below 1; else 0.
int eq_table_mapping(short* input_table, float* output_table, short input_size, short output_size,
                     int dbg_lv);
// Multiplies the high-pass gains of a rate and cutoff, interpolated onto
// output_size points, into output_table; its first entry always ends at 0.
// -1 (nothing written) for an unsupported rate or cutoff; else 0.
int hpf_table_mapping(int hpf_freq, float* output_table, ZEB_KOL_SAMPLE_RATE sample_rate,
                      short output_size, int dbg_lv);

#ifdef __cplusplus
}
#endif

#endif
