// Features of filter mode 0 and the speech/noise model built on them:
// spectral flatness, spectral difference against the pause spectrum, the
// time-averaged likelihood ratio, their histograms and the thresholds and
// weights re-estimated from those histograms.
#include <math.h>

#include "nr_webrtc.h"

namespace {

constexpr double kLn65536 = 11.090354888959125;  // the spectrum is kept divided by 65536
constexpr double kFlatnessUpdate = 0.3;
constexpr float kDifferenceUpdate = 0.3f;
constexpr float kVarianceGuard = 2.3283064e-14f;
constexpr float kLrtUpdate = 0.5f;
constexpr double kPriorUpdate = 0.1;
constexpr float kPriorMax = 0.999f;
constexpr float kPriorMin = 0.01f;
constexpr float kProbSpeechMax = 0.999f;
constexpr float kLogLrtRange = 6.9078f;  // ln(1000): beyond it the probability saturates
constexpr float kSnrGuard = 1.5258789e-09f;
constexpr float kSteepWidth = 8.0f;
constexpr float kShallowWidth = 4.0f;

// Features are counted when they lie in [0, binSize x NR_HIST_BINS).
void AddToHistogram(int* hist, float feature, float binSize) {
  if (!(feature >= 0.0f && feature < binSize * (float)NR_HIST_BINS)) return;
  int bin = (int)(feature / binSize);
  // The quotient of a value just under the top edge may round up to the edge.
  if (bin >= NR_HIST_BINS) bin = NR_HIST_BINS - 1;
  hist[bin] += 1;
}

struct HistPeaks {
  int weight1 = 0;
  int weight2 = 0;
  float pos1 = 0.0f;
  float pos2 = 0.0f;
};

// The two highest counts; a tie keeps the lower bin.
HistPeaks FindPeaks(const int* hist, float binSize) {
  HistPeaks p;
  for (int i = 0; i < NR_HIST_BINS; ++i) {
    const float binMid = ((float)i + 0.5f) * binSize;
    if (hist[i] > p.weight1) {
      p.weight2 = p.weight1;
      p.pos2 = p.pos1;
      p.weight1 = hist[i];
      p.pos1 = binMid;
    } else if (hist[i] > p.weight2) {
      p.weight2 = hist[i];
      p.pos2 = binMid;
    }
  }
  return p;
}

// Two close peaks of similar height are one broad peak. The spacing test works
// on the integer absolute distance, so it passes whenever the two lie less
// than 1.0 apart.
void MergePeaks(HistPeaks* p, float spacingLimit, float weightLimit) {
  if (NrIntAbs(p->pos2 - p->pos1) < spacingLimit &&
      (float)p->weight2 > weightLimit * (float)p->weight1) {
    p->weight1 += p->weight2;
    p->pos1 = 0.5f * (p->pos1 + p->pos2);
  }
}

float Clamp(float v, float lo, float hi) {
  if (v < lo) return lo;
  if (v > hi) return hi;
  return v;
}

// Threshold of the likelihood-ratio feature; returns its fluctuation.
float EstimateLrtThreshold(NSinst_t* inst) {
  const NSParaExtract_t& par = inst->featureExtractionParams;
  float avgHistLrt = 0.0f, avgHistLrtCompl = 0.0f, avgSquareHistLrt = 0.0f;
  int numHistLrt = 0;
  for (int i = 0; i < NR_HIST_BINS; ++i) {
    const float binMid = ((float)i + 0.5f) * par.binSizeLrt;
    const float count = (float)inst->histLrt[i];
    if (binMid <= par.rangeAvgHistLrt) {
      avgHistLrt += count * binMid;
      numHistLrt += inst->histLrt[i];
    }
    avgSquareHistLrt += count * binMid * binMid;
    avgHistLrtCompl += count * binMid;
  }
  if (numHistLrt > 0) avgHistLrt /= (float)numHistLrt;
  const float window = (float)inst->modelUpdatePars[1];
  avgHistLrtCompl /= window;
  avgSquareHistLrt /= window;
  const float fluctLrt = avgSquareHistLrt - avgHistLrt * avgHistLrtCompl;
  if (fluctLrt < par.thresFluctLrt) {
    inst->priorModelPars[0] = par.maxLrt;
  } else {
    inst->priorModelPars[0] = Clamp(par.factor1ModelPars * avgHistLrt, par.minLrt, par.maxLrt);
  }
  return fluctLrt;
}

int EstimateFlatnessThreshold(NSinst_t* inst) {
  const NSParaExtract_t& par = inst->featureExtractionParams;
  HistPeaks p = FindPeaks(inst->histSpecFlat, par.binSizeSpecFlat);
  MergePeaks(&p, par.limitPeakSpacingSpecFlat, par.limitPeakWeightsSpecFlat);
  if (p.weight1 < par.thresWeightSpecFlat || p.pos1 < par.thresPosSpecFlat) return 0;
  inst->priorModelPars[1] = Clamp(par.factor2ModelPars * p.pos1, par.minSpecFlat, par.maxSpecFlat);
  return 1;
}

int EstimateDifferenceThreshold(NSinst_t* inst, float fluctLrt) {
  const NSParaExtract_t& par = inst->featureExtractionParams;
  HistPeaks p = FindPeaks(inst->histSpecDiff, par.binSizeSpecDiff);
  MergePeaks(&p, par.limitPeakSpacingSpecDiff, par.limitPeakWeightsSpecDiff);
  int use = 1;
  // The threshold moves even when the feature is then left out.
  inst->priorModelPars[3] = par.factor1ModelPars * p.pos1;
  if (p.weight1 < par.thresWeightSpecDiff) use = 0;
  inst->priorModelPars[3] = Clamp(inst->priorModelPars[3], par.minSpecDiff, par.maxSpecDiff);
  if (fluctLrt < par.thresFluctLrt) use = 0;
  return use;
}

void ClearHistograms(NSinst_t* inst) {
  for (int i = 0; i < NR_HIST_BINS; ++i) {
    inst->histLrt[i] = 0;
    inst->histSpecFlat[i] = 0;
    inst->histSpecDiff[i] = 0;
  }
}

// (tanh(x) + 1) / 2, the soft indicator of one feature.
float SoftIndicator(float x) { return 0.5f * ((float)tanh((double)x) + 1.0f); }

}  // namespace

extern "C" void NR_ComputeSpectralFlatness(NSinst_t* inst, float* magnIn) {
  float* lmagn = inst->NRInternalWorkBuf->lmagn;
  const int bins = NrProcessBins(inst);
  float den = inst->sumMagn - magnIn[0];
  // The noise tracker reads these logarithms, so they are taken in full even
  // when the flatness itself gives up below.
  for (int i = 0; i < bins; ++i) lmagn[i] = (float)log((double)magnIn[i]);

  float num = 0.0f;
  bool allPositive = true;
  for (int i = 1; i < bins; ++i) {
    if (!(magnIn[i] > 0.0f)) allPositive = false;
    num += lmagn[i];
  }
  float* flatness = &inst->featureData[0];
  if (!allPositive) {
    *flatness -= *flatness * kFlatnessUpdate;
    return;
  }
  // Geometric over arithmetic mean; the counts stay those of the whole
  // spectrum even when fewer bins are processed.
  const float n = (float)inst->magnLen;
  const float m = (float)(inst->magnLen - 1);
  den = den / n;
  const float logSum = (float)((double)num + (double)m * kLn65536);
  const float ratio = (float)(exp((double)(logSum / n)) / (double)den);
  const float value = (float)((double)ratio / 65536.0);
  *flatness += (value - *flatness) * kFlatnessUpdate;
}

extern "C" void NR_ComputeSpectralDifference(NSinst_t* inst, float* magnIn) {
  const int bins = NrProcessBins(inst);
  float avgPause = 0.0f;
  for (int i = 0; i < bins; ++i) avgPause += inst->magnAvgPause[i];
  avgPause /= (float)bins;
  const float avgMagn = inst->sumMagn / (float)bins;

  float covMagnPause = 0.0f, varPause = 0.0f, varMagn = 0.0f;
  for (int i = 0; i < bins; ++i) {
    const float a = magnIn[i] - avgMagn;
    const float b = inst->magnAvgPause[i] - avgPause;
    covMagnPause += a * b;
    varPause += b * b;
    varMagn += a * a;
  }
  covMagnPause /= (float)bins;
  varPause /= (float)bins;
  varMagn /= (float)bins;

  inst->featureData[6] += inst->signalEnergy;
  float explained = covMagnPause * covMagnPause / (varPause + kVarianceGuard);
  if (explained < 0.0f) explained = 0.0f;
  float avgDiffNormMagn = (varMagn - explained) / (inst->featureData[5] + kVarianceGuard);
  if (avgDiffNormMagn < 0.0f) avgDiffNormMagn = 0.0f;
  inst->featureData[4] += (avgDiffNormMagn - inst->featureData[4]) * kDifferenceUpdate;
}

extern "C" void NR_FeatureParameterEstimation(NSinst_t* inst, int flag) {
  const NSParaExtract_t& par = inst->featureExtractionParams;
  if (flag == 0) {
    AddToHistogram(inst->histLrt, inst->featureData[3], par.binSizeLrt);
    AddToHistogram(inst->histSpecFlat, inst->featureData[0], par.binSizeSpecFlat);
    AddToHistogram(inst->histSpecDiff, inst->featureData[4], par.binSizeSpecDiff);
    return;
  }
  if (flag != 1) return;

  const float fluctLrt = EstimateLrtThreshold(inst);
  const int useFeatureSpecFlat = EstimateFlatnessThreshold(inst);
  const int useFeatureSpecDiff = EstimateDifferenceThreshold(inst, fluctLrt);

  // The likelihood ratio always counts; the other two only when trusted.
  const float featureSum = (float)(useFeatureSpecFlat + 1 + useFeatureSpecDiff);
  inst->priorModelPars[4] = 1.0f / featureSum;
  inst->priorModelPars[5] = (float)useFeatureSpecFlat / featureSum;
  inst->priorModelPars[6] = (float)useFeatureSpecDiff / featureSum;

  if (inst->modelUpdatePars[0] > 0) ClearHistograms(inst);
}

namespace {

// Updates the time-averaged log likelihood ratio per bin; returns its mean.
float UpdateLogLrt(NSinst_t* inst, const float* snrLocPrior, const float* snrLocPost, int bins) {
  float sum = 0.0f;
  for (int i = 0; i < bins; ++i) {
    const float prior = snrLocPrior[i];
    const float post = snrLocPost[i];
    const float tmp1 = 2.0f * prior + 1.0f;
    const float besselTmp = post + (2.0f * prior - post) / (tmp1 + kSnrGuard);
    const float logTmp1 = (float)log((double)tmp1);
    inst->logLrtTimeAvg[i] += (besselTmp - logTmp1 - inst->logLrtTimeAvg[i]) * kLrtUpdate;
    sum += inst->logLrtTimeAvg[i];
  }
  return sum / (float)bins;
}

// Prior speech probability of the frame from the three features.
float FeaturePrior(const NSinst_t* inst, float meanLogLrt) {
  const float* model = inst->priorModelPars;
  const float threshPrior0 = model[0];
  const float threshPrior1 = model[1];
  const float threshPrior2 = model[3];
  const int sgnMap = (int)model[2];

  float width = meanLogLrt < threshPrior0 ? kSteepWidth : kShallowWidth;
  const float indicator0 = SoftIndicator(width * (meanLogLrt - threshPrior0));

  // The width tests compare the previous indicator with the next threshold,
  // not the feature itself: kept as the model was tuned with it.
  width = kShallowWidth;
  if ((sgnMap == 1 && indicator0 > threshPrior1) || (sgnMap == -1 && indicator0 < threshPrior1)) {
    width = kSteepWidth;
  }
  const float indicator1 =
      SoftIndicator((float)sgnMap * (threshPrior1 - inst->featureData[0]) * width);

  width = indicator1 < threshPrior2 ? kSteepWidth : kShallowWidth;
  const float indicator2 = SoftIndicator((inst->featureData[4] - threshPrior2) * width);

  return model[4] * indicator0 + model[5] * indicator1 + model[6] * indicator2;
}

}  // namespace

extern "C" void NR_SpeechNoiseRatioEsti(NSinst_t* inst, float* probSpeechFinal, float* snrLocPrior,
                                        float* snrLocPost) {
  const int bins = NrProcessBins(inst);
  inst->featureData[3] = UpdateLogLrt(inst, snrLocPrior, snrLocPost, bins);

  const float indPrior = FeaturePrior(inst, inst->featureData[3]);
  inst->rawPriorSpeechProb = indPrior;
  inst->priorSpeechProb += (indPrior - inst->priorSpeechProb) * kPriorUpdate;
  if (inst->priorSpeechProb >= 1.0f) inst->priorSpeechProb = kPriorMax;
  if (inst->priorSpeechProb < kPriorMin) inst->priorSpeechProb = kPriorMin;

  const float gainPrior = (1.0f - inst->priorSpeechProb) / (inst->priorSpeechProb + 0.0001f);
  const float logGainPrior = (float)log((double)gainPrior);
  for (int i = 0; i < bins; ++i) {
    const float lrt = inst->logLrtTimeAvg[i];
    float p;
    if (lrt < logGainPrior - kLogLrtRange) {
      p = 0.0f;
    } else if (lrt > logGainPrior + kLogLrtRange) {
      p = kProbSpeechMax;
    } else {
      p = 1.0f / ((float)exp((double)-lrt) * gainPrior + 1.0f);
      if (p >= 1.0f) p = kProbSpeechMax;
    }
    probSpeechFinal[i] = p;
  }
}
