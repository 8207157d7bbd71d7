// Frame routine of filter mode 0. On update frames it measures the spectrum,
// runs the estimators, forms the Wiener gain with its per-bin over-subtraction
// and floor, smooths it over frequency, maps the frame's overall gain and
// keeps the result in preFilter; the frames in between apply preFilter as it
// stands.
#include <math.h>

#include "debug_msglevel.h"
#include "nr_webrtc.h"

namespace {

constexpr float kSpectrumScale = 65536.0f;  // the record keeps the spectrum divided by this
constexpr float kEnergyBinScale = 256.0f;   // bins are scaled down before squaring
constexpr float kMagnFloor = 1.5258789e-05f;
constexpr double kMagnFloorExact = 1.52587890625e-05;
constexpr float kNoiseGuard = 1.5258789e-09f;
constexpr unsigned short kQuietFrames = 120;  // frames of near-silence before the recovery
constexpr unsigned short kQuietCountMax = 32767;
constexpr unsigned short kBlockIndLimit = 200;
constexpr float kNoiseSmoothBase = 0.9f;
constexpr float kNoiseSmoothSpeech = 0.99f;
constexpr double kPauseUpdate = 0.05;
constexpr float kDecisionDirectedMaxSnr = 3.0f;
constexpr float kDecisionDirectedMaxJump = 4.0f;  // on the integer absolute distance
constexpr float kGainMapKnee = 0.5f;
constexpr float kGainMapRaise = 1.3f;
constexpr float kGainMapLower = 0.3f;
constexpr float kQuietPrior = 0.1f;
constexpr unsigned int kQuietRegisterMask = 0xFFFFu;  // 16 quiet frames in a row
constexpr float kSilenceScaleMin = 0.5f;
constexpr double kConvergedSumFilter = 0.4;
constexpr float kPostfilterKnee = 0.4f;

struct FrameRhythm {
  bool update;
  unsigned short limit;  // frames in half a second
  int modelUpdateMode;
};

// Steps the update cycle and the start-up count.
FrameRhythm AdvanceCounters(NSinst_t* inst) {
  FrameRhythm r;
  r.update = NR_AdvanceFrameCounters(inst) == 1;
  r.limit = NR_FrameCountLimit(inst);
  r.modelUpdateMode = inst->modelUpdatePars[0];
  return r;
}

float SpectrumEnergy(const complex_t* bins, int count) {
  float energy = 0.0f;
  for (int i = 0; i < count; ++i) {
    const float re = bins[i].re / kEnergyBinScale;
    const float im = bins[i].im / kEnergyBinScale;
    energy += re * re + im * im;
  }
  return energy;
}

// Multiplies bins 0..magnLen-2 by the filter; the top bin is left as it came.
void ApplyFilterBelowTop(NSinst_t* inst, const float* filter) {
  complex_t* out = inst->frequency_buffer_output;
  for (int i = 0; i < inst->magnLen - 1; i += 2) {
    out[i].re *= filter[i];
    out[i].im *= filter[i];
    out[i + 1].re *= filter[i + 1];
    out[i + 1].im *= filter[i + 1];
  }
}

// Magnitudes, frame energy and magnitude sum. The two real-only bins take the
// integer absolute value of their real part. With all bins processed the
// pair loop reaches the top bin again, so its magnitude is recomputed and
// counted twice in the sums: kept, the features were tuned with it.
void ComputeMagnitudes(NSinst_t* inst, float* magn, int bins) {
  const complex_t* x = inst->frequency_buffer;
  const int top = inst->magnLen - 1;
  const float re0 = x[0].re;
  const float reTop = x[top].re;
  magn[0] = NrIntAbs(re0) + kMagnFloor;
  magn[top] = NrIntAbs(reTop) + kMagnFloor;
  float energy, sumMagn;
  int count;
  if (inst->magnLen == bins) {
    energy = re0 * re0 + reTop * reTop;
    sumMagn = magn[0] + magn[top];
    count = inst->magnLen - 1;
  } else {
    energy = re0 * re0;
    sumMagn = magn[0];
    count = bins;
  }
  const float magnLen = (float)inst->magnLen;
  energy /= magnLen;
  for (int i = 1; (float)i <= (float)(count - 1); i += 2) {
    for (int k = i; k <= i + 1; ++k) {
      const float power = x[k].re * x[k].re + x[k].im * x[k].im;
      magn[k] = (float)(sqrt((double)power) + kMagnFloorExact);
      energy += power / magnLen;
      sumMagn += magn[k];
    }
  }
  inst->signalEnergy = energy;
  inst->sumMagn = sumMagn;
}

// Local a posteriori and decision-directed a priori SNR for the likelihood
// model.
void ComputeLocalSnr(NSinst_t* inst, NSWorkingBuf_t* wb, float alpha, int bins) {
  for (int i = 0; i < bins; ++i) {
    float post = 0.0f;
    if (wb->magn[i] > wb->noise[i]) post = wb->magn[i] / (wb->noise[i] + kNoiseGuard) - 1.0f;
    wb->snrLocPost[i] = post;
    if (alpha == 0.0f) {
      wb->snrLocPrior[i] = post;
    } else {
      wb->previousEstimateStsa[i] =
          inst->magnPrev[i] * inst->smooth[i] / (inst->noisePrev[i] + kNoiseGuard);
      wb->snrLocPrior[i] = post + alpha * (wb->previousEstimateStsa[i] - post);
    }
  }
}

// Counts down the model window: histograms fill during the window and the
// model is re-estimated at its end.
void UpdateFeatureModel(NSinst_t* inst, int modelUpdateMode) {
  if (modelUpdateMode <= 0) return;
  int* pars = inst->modelUpdatePars;
  pars[3] -= 1;
  if (pars[3] > 0) NR_FeatureParameterEstimation(inst, 0);
  if (pars[3] != 0) return;
  NR_FeatureParameterEstimation(inst, 1);
  pars[3] = pars[1];
  if (modelUpdateMode == 1) {
    pars[0] = 0;  // one estimation, then the model stays
  } else {
    inst->featureData[6] /= (float)pars[1];
    inst->featureData[5] = (inst->featureData[6] + inst->featureData[5]) * 0.5f;
    inst->featureData[6] = 0.0f;
  }
}

float NoiseSmoothing(float probSpeech, float gammaOld, float noisePrev, float magn) {
  return noisePrev * gammaOld +
         (1.0f - gammaOld) * (magn * (1.0f - probSpeech) + noisePrev * probSpeech);
}

// Speech-probability weighted noise update. The smoothing constant of a bin
// is decided after the bin's first estimate, which therefore uses the
// constant left by the bin below: that carry is part of the rule.
void UpdateNoise(NSinst_t* inst, NSWorkingBuf_t* wb, int bins) {
  const float range = inst->InternalParams->fmode0_delta_prob_range;
  float gamma = kNoiseSmoothBase;
  float probSpeechMean = 0.0f;
  for (int i = 0; i < bins; ++i) {
    const float p = wb->probSpeechFinal[i];
    const float q = 1.0f - p;
    probSpeechMean += p;
    const float first = NoiseSmoothing(p, gamma, inst->noisePrev[i], wb->magn[i]);
    const float gammaOld = gamma;
    gamma = kNoiseSmoothBase;
    if (p > range) {
      gamma = kNoiseSmoothSpeech;
    } else if (p < range) {
      gamma = (float)(((double)q - 0.7) / 6.0 + 0.9);
      inst->magnAvgPause[i] += (wb->magn[i] - inst->magnAvgPause[i]) * kPauseUpdate;
    }
    if (gamma == gammaOld) {
      wb->noise[i] = first;
    } else {
      const float second = NoiseSmoothing(p, gamma, inst->noisePrev[i], wb->magn[i]);
      wb->noise[i] = first < second ? first : second;
    }
  }
  inst->probSpeechMean = probSpeechMean / (float)bins;
}

// Wiener gain from the a priori SNR. The decision-directed term is kept only
// for low SNR that has not jumped since the last update. Leaves the raw sum
// in sum_filter, then applies the floor.
void ComputeFilter(NSinst_t* inst, NSWorkingBuf_t* wb, float alpha, int bins) {
  const NSCJsoninst_t* tune = inst->InternalParams;
  inst->sum_filter = 0.0f;
  for (int i = 0; i < bins; ++i) {
    float snr = 0.0f;
    if (wb->magn[i] > wb->noise[i]) snr = wb->magn[i] / (wb->noise[i] + kNoiseGuard) - 1.0f;
    float prior = snr;
    if (alpha != 0.0f && snr < kDecisionDirectedMaxSnr &&
        NrIntAbs(snr - wb->previousEstimateStsa[i]) < kDecisionDirectedMaxJump) {
      prior = snr + alpha * (wb->previousEstimateStsa[i] - snr);
    }
    inst->snrPrior[i] = prior;
    wb->theFilter[i] = prior / (prior + NrOverdriveAt(inst, i));
    if (tune->sinetone_scenario != 0 && inst->sinetone_candidate[i] >= tune->sinetone_delta1) {
      wb->theFilter[i] = 1.0f;
    }
    inst->finalFilter[i] = wb->theFilter[i];
    inst->sum_filter += wb->theFilter[i];
  }
  for (int i = 0; i < bins; ++i) {
    const float floor = NrDenoiseBoundAt(inst, i);
    if (wb->theFilter[i] < floor) {
      wb->theFilter[i] = floor;
    } else if (wb->theFilter[i] > 1.0f) {
      wb->theFilter[i] = 1.0f;
    }
    if (alpha != 0.0f) inst->smooth[i] = wb->theFilter[i];
  }
}

// One step of the running mean over 2 x maLen + 1 bins, mirrored at both
// edges (the high mirror about the fixed bin 128). The sum runs over the
// unsmoothed filter.
float MovingAverageStep(const float* filter, int i, int maLen, float* runningSum) {
  if (maLen == 0) return filter[i];
  if (i == 0) {
    for (int j = 1; j <= maLen; ++j) *runningSum += 2.0f * filter[j];
    *runningSum += filter[0];
  } else if (i <= maLen) {
    *runningSum += filter[i + maLen] - filter[maLen + 1 - i];
  } else if (i <= 128 - maLen) {
    *runningSum += filter[i + maLen] - filter[i - 1 - maLen];
  } else {
    *runningSum += filter[256 - i - maLen] - filter[i - 1 - maLen];
  }
  return *runningSum;
}

// Smooths the filter over frequency, applies the initial filter until the
// estimator has converged, and applies the result to the output spectrum.
void SmoothAndApplyFilter(NSinst_t* inst, NSWorkingBuf_t* wb, float alpha, int bins) {
  float* filter = wb->theFilter;
  const int maLen = inst->moving_average_order >> 1;
  for (int i = bins; i < inst->magnLen; ++i) filter[i] = filter[bins - 1];
  const bool initialFilter = inst->initial_filter_enable != 0 && inst->converged_flag == 0;
  float runningSum = 0.0f;
  for (int i = 0; i < bins; ++i) {
    float t = MovingAverageStep(filter, i, maLen, &runningSum);
    // The window has moving_average_order bins under 1 / (order + 1): the
    // smoother lowers the gain a little, as tuned.
    if (maLen != 0) t = t * inst->moving_average_smooth_const;
    if (initialFilter) t *= inst->initial_filter_gain;
    inst->frequency_buffer_output[i].re *= t;
    inst->frequency_buffer_output[i].im *= t;
    inst->preFilter[i] = t;
    inst->noisePrev[i] = wb->noise[i];
    if (alpha != 0.0f) inst->magnPrev[i] = wb->magn[i];
  }
}

// After a long stretch of near-silence the tracker drifts back toward its
// start values and counts its block from the top again.
void RestartTrackerSoftly(NSinst_t* inst) {
  inst->updates = 0;
  for (int i = 0; i < NR_MAGN_LEN_BINS; ++i) {
    inst->lquantile[i] = inst->lquantile[i] * 0.99f + 0.07999992f;
    inst->density[i] = inst->density[i] * 0.99f + 0.0029999972f;
  }
  inst->counter[0] = 200;
}

// Overall gain of the frame: a frame the filter left above half its level is
// raised toward unity when speech is likely, one cut below half is lowered by
// up to 15 % when speech is unlikely.
float MapFrameGain(const NSinst_t* inst, float energyIn) {
  if (!(inst->gainmap == 1 && inst->blockInd > kBlockIndLimit)) return 1.0f;
  const float energyOut = SpectrumEnergy(inst->frequency_buffer_output, inst->magnLen);
  float ratio = sqrtf(energyOut / energyIn);
  float factor1 = 1.0f;
  float factor2 = 1.0f;
  if (ratio > kGainMapKnee) {
    factor1 = (ratio - kGainMapKnee) * kGainMapRaise + 1.0f;
    if (ratio * factor1 > 1.0f) factor1 = 1.0f / ratio;
  }
  if (ratio < kGainMapKnee) {
    // The floor is the floor table read one cell past the spectrum: the word
    // of blockInd, a denormal, so in effect there is none.
    const float floor = NrDenoiseBoundAt(inst, inst->magnLen);
    if (!(ratio > floor)) ratio = floor;
    factor2 = 1.0f - (kGainMapKnee - ratio) * kGainMapLower;
  }
  return factor2 + inst->priorSpeechProb * (factor1 - factor2);
}

// Shift register of frames with a low raw prior. After 16 such frames the
// suppression scale may only rise to 0.5; otherwise it returns to 1.0. As it
// starts at 1.0 the scale stays there: the mechanism is in place but neutral.
float UpdateQuietRegister(NSinst_t* inst) {
  inst->IndIsNotSpeech_buf <<= 1;
  if (inst->rawPriorSpeechProb < kQuietPrior) inst->IndIsNotSpeech_buf += 1;
  if ((inst->IndIsNotSpeech_buf & kQuietRegisterMask) == kQuietRegisterMask) {
    if (inst->SilenceSupressScale < kSilenceScaleMin) inst->SilenceSupressScale = kSilenceScaleMin;
  } else {
    inst->SilenceSupressScale = 1.0f;
  }
  return inst->SilenceSupressScale;
}

// Everything an update frame does between the magnitudes and the output.
void RunUpdateFrame(NSinst_t* inst, const FrameRhythm& rhythm, float energyIn) {
  NSWorkingBuf_t* wb = inst->NRInternalWorkBuf;
  const NSCJsoninst_t* tune = inst->InternalParams;
  const float alpha = tune->fmode0_alpha_dd_pr_snr;
  const int bins = NrProcessBins(inst);

  ComputeMagnitudes(inst, wb->magn, bins);
  NR_ComputeSpectralFlatness(inst, wb->magn);
  NR_NoiseEstimation(inst, wb->magn, wb->noise);
  if (inst->blockInd < kBlockIndLimit) {
    inst->featureData[5] = (inst->featureData[5] * (float)inst->blockInd + inst->signalEnergy) /
                           (float)(inst->blockInd + 1);
  }
  ComputeLocalSnr(inst, wb, alpha, bins);
  NR_ComputeSpectralDifference(inst, wb->magn);
  UpdateFeatureModel(inst, rhythm.modelUpdateMode);
  NR_SpeechNoiseRatioEsti(inst, wb->probSpeechFinal, wb->snrLocPrior, wb->snrLocPost);
  UpdateNoise(inst, wb, bins);
  if (tune->sinetone_scenario != 0) {
    Sinetone_Dectection(inst, wb->magn, bins, tune->sinetone_delta2, tune->sinetone_delta3,
                        tune->sinetone_alpha1);
  }
  ComputeFilter(inst, wb, alpha, bins);
  if (inst->AutoSmooth != 0) postfilter_calculation(inst, energyIn, wb->magn, wb->theFilter);
  SmoothAndApplyFilter(inst, wb, alpha, bins);
  if (inst->noise_cnt > kQuietFrames) RestartTrackerSoftly(inst);

  const float scale = MapFrameGain(inst, energyIn) * UpdateQuietRegister(inst);
  // The stored filter carries the frame gain into the following frames.
  complex_t* out = inst->frequency_buffer_output;
  for (int i = 0; i < inst->magnLen - 1; i += 2) {
    out[i].re *= scale;
    out[i].im *= scale;
    out[i + 1].re *= scale;
    out[i + 1].im *= scale;
    inst->preFilter[i] *= scale;
    inst->preFilter[i + 1] *= scale;
  }
}

// Scales the output back to PCM range and hands its 129 bins to the caller.
// Entry 129 of the output record is never written and stays zero; the
// caller's buffer ends at bin 128, so it is not copied.
void WriteOutput(NSinst_t* inst, float* inOutFrame) {
  complex_t* out = inst->frequency_buffer_output;
  for (int i = 0; i < inst->magnLen; ++i) {
    out[i].re *= kSpectrumScale;
    out[i].im *= kSpectrumScale;
  }
  for (int i = 0; i < inst->magnLen; ++i) {
    inOutFrame[2 * i] = out[i].re;
    inOutFrame[2 * i + 1] = out[i].im;
  }
}

// Counts frames whose output is all but silent.
void CountQuietOutput(NSinst_t* inst, const float* inOutFrame) {
  float residual = 0.0f;
  for (int i = 0; i <= inst->anaLen; i += 2) {
    const float re = inOutFrame[i] / kSpectrumScale;
    const float im = inOutFrame[i + 1] / kSpectrumScale;
    residual += re * re + im * im;
  }
  if (residual >= 1.0f) {
    inst->noise_cnt = 0;
    return;
  }
  if (inst->noise_cnt == kQuietCountMax) inst->noise_cnt = kQuietFrames;
  if (Counter16Add(&inst->noise_cnt, 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! noise_cnt is reset.\t\n");
  }
}

}  // namespace

extern "C" void postfilter_calculation(NSinst_t* inst, float energy_in, float* magn,
                                       float* theFilter) {
  float energyOut = 0.0f;
  for (int i = 0; i < inst->magnLen; ++i) {
    const float v = magn[i] * theFilter[i] / kEnergyBinScale;
    energyOut += v * v;
  }
  const float ioRatio = energyOut / energy_in;
  if (ioRatio >= kPostfilterKnee) {
    inst->moving_average_order = 1;
  } else {
    // The heavier the reduction, the wider the smoothing: orders 1 to 21.
    const double steps = round((1.0 - (double)ioRatio / 0.4) * 10.0);
    inst->moving_average_order = (int)(2.0 * steps + 1.0);
  }
  inst->moving_average_smooth_const = 1.0f / (float)(inst->moving_average_order + 1);
}

extern "C" int NR_Webrtc_Process(NSinst_t* inst, float* inOutFrame) {
  if (inst->initFlag != 1) return 1;
  const FrameRhythm rhythm = AdvanceCounters(inst);

  // Digital silence passes untouched and moves no estimator.
  const float energyIn = SpectrumEnergy(inst->frequency_buffer, inst->magnLen);
  if (energyIn == 0.0f) return 0;

  if (inst->noise_cnt > kQuietFrames) {
    // During long near-silence the held filter recovers toward unity.
    for (int i = 0; i < inst->magnLen - 1; ++i) {
      inst->preFilter[i] = inst->preFilter[i] * 0.99f + 0.00999999f;
    }
  }
  if (inst->blockInd < kBlockIndLimit && Counter16Add(&inst->blockInd, 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! blockInd is reset.\t\n");
  }
  if (inst->aec_enable_flag == 0) {
    for (int i = 0; i < inst->magnLen; ++i) {
      inst->frequency_buffer_output[i] = inst->frequency_buffer[i];
    }
  }

  if (rhythm.update) {
    RunUpdateFrame(inst, rhythm, energyIn);
  } else {
    ApplyFilterBelowTop(inst, inst->preFilter);
  }

  if ((inst->sum_filter > 0.0f && (double)inst->sum_filter < kConvergedSumFilter) ||
      inst->frame_cnt > rhythm.limit) {
    inst->converged_flag = 1;
  }
  WriteOutput(inst, inOutFrame);
  CountQuietOutput(inst, inOutFrame);
  return 0;
}
