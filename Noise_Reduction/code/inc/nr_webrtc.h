// Filter mode 0, the quantile-noise mode: a quantile noise tracker, three
// spectral features that feed a speech/noise likelihood model, a Wiener rule
// with per-bin over-subtraction and floor, a spectral moving average and two
// quiet-signal mechanisms.
#ifndef ZEB_NR_WEBRTC_H
#define ZEB_NR_WEBRTC_H

#include "nr_core.h"

#ifdef __cplusplus
extern "C" {
#endif

// Frame routine of filter mode 0, called by NR_Process once per frame with the
// packed spectrum (258 floats, full PCM scale). Returns 1 on an uninitialised
// instance, 0 otherwise; the suppressed spectrum replaces inOutFrame.
int NR_Webrtc_Process(NSinst_t* inst, float* inOutFrame);

// Estimators of the mode, run on update frames in this order:
// flatness (fills lmagn), noise tracker (reads lmagn), difference, model.
void NR_ComputeSpectralFlatness(NSinst_t* inst, float* magnIn);
void NR_NoiseEstimation(NSinst_t* inst, float* magn, float* noise);
void NR_ComputeSpectralDifference(NSinst_t* inst, float* magnIn);
// flag 0 adds the frame's features to the histograms, flag 1 re-estimates
// the model thresholds and weights from them.
void NR_FeatureParameterEstimation(NSinst_t* inst, int flag);
void NR_SpeechNoiseRatioEsti(NSinst_t* inst, float* probSpeechFinal, float* snrLocPrior,
                             float* snrLocPost);
// Picks the order of the spectral moving average from the frame's reduction.
void postfilter_calculation(NSinst_t* inst, float energy_in, float* magn, float* theFilter);

#ifdef __cplusplus
}  // extern "C"

#include <climits>
#include <cstdint>
#include <cstring>

// Integer absolute value of a float: truncated toward zero to a signed word,
// made non-negative and back to float. The closeness tests of this mode use it
// on purpose, which widens each of them to the next whole number. Values past
// the word's range saturate as the target's conversion does, NaN gives 0.
inline float NrIntAbs(float x) {
  if (!(x == x)) return 0.0f;
  if (x >= 2147483648.0f || x <= -2147483648.0f) return (float)INT_MAX;
  const int v = (int)x;
  return (float)(v < 0 ? -v : v);
}

// A 32-bit word of the record read as a float.
inline float NrWordAsFloat(uint32_t word) {
  float f;
  std::memcpy(&f, &word, sizeof f);
  return f;
}

// Per-bin over-subtraction. The table holds 128 bins while the band mapping
// walks 129, so the cell of bin 128 is the first cell of denoiseBound.
inline float NrOverdriveAt(const NSinst_t* inst, int bin) {
  return bin < NR_BAND_TABLE_BINS ? inst->overdrive[bin]
                                  : inst->denoiseBound[bin - NR_BAND_TABLE_BINS];
}

// Per-bin gain floor, read past its 128 cells the way the record lays them
// out: bin 128 is the gainmap word (the integer 1 as a float, all but zero),
// bin 129 the word holding blockInd with its cleared padding half (a denormal).
inline float NrDenoiseBoundAt(const NSinst_t* inst, int bin) {
  if (bin < NR_BAND_TABLE_BINS) return inst->denoiseBound[bin];
  if (bin == NR_BAND_TABLE_BINS) return NrWordAsFloat((uint32_t)inst->gainmap);
  return NrWordAsFloat((uint32_t)inst->blockInd);
}

// Bins the estimators of this mode cover: process_bins, never past the
// spectrum's own bins.
inline int NrProcessBins(const NSinst_t* inst) {
  return inst->process_bins < inst->magnLen ? inst->process_bins : inst->magnLen;
}
#endif

#endif
