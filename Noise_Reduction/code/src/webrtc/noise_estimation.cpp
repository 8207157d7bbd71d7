// Quantile noise tracker of filter mode 0: one log-domain quantile per bin,
// moved a step up or down by each update frame, with a step size that
// shrinks where the density of observations around the quantile is high.
#include <math.h>

#include "debug_msglevel.h"
#include "nr_webrtc.h"

namespace {

constexpr unsigned short kQuantileWarmupUpdates = 200;  // updates before the tracker settles
constexpr unsigned short kQuantileBlockCount = 200;     // counts per published estimate
constexpr float kQuantileSettled = 0.15f;               // quantile tracked once settled
constexpr float kQuantileStep = 40.0f;
constexpr float kDensityHit = 5.0f;
constexpr float kDensityWidth = 0.1f;  // applied to the integer absolute distance

void PublishQuantile(NSinst_t* inst, int bins) {
  for (int i = 0; i < bins; ++i) inst->quantile[i] = (float)exp((double)inst->lquantile[i]);
}

void StepQuantiles(NSinst_t* inst, const float* lmagn, int bins) {
  const float counter = (float)(inst->counter[0] + 1);
  const float countOld = (float)inst->counter[0];
  for (int i = 0; i < bins; ++i) {
    const float delta = inst->density[i] > 1.0f ? kQuantileStep / inst->density[i] : kQuantileStep;
    if (lmagn[i] > inst->lquantile[i]) {
      inst->lquantile[i] += inst->quantite * delta / counter;
    } else {
      // The downward step is taken in double, as it always was.
      inst->lquantile[i] =
          (float)((double)inst->lquantile[i] -
                  (1.0 - (double)inst->quantite) * (double)delta / (double)counter);
    }
    if (NrIntAbs(lmagn[i] - inst->lquantile[i]) < kDensityWidth) {
      inst->density[i] = (countOld * inst->density[i] + kDensityHit) / counter;
    }
  }
}

}  // namespace

extern "C" void NR_NoiseEstimation(NSinst_t* inst, float* magn, float* noise) {
  (void)magn;  // the tracker works on the logarithms the flatness step left in lmagn
  const int bins = NrProcessBins(inst);
  if (inst->updates >= kQuantileWarmupUpdates) {
    inst->quantite = kQuantileSettled;
  } else if (Counter16Add(&inst->updates, 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! updates is reset.\t\n");
  }

  StepQuantiles(inst, inst->NRInternalWorkBuf->lmagn, bins);

  if (inst->counter[0] >= kQuantileBlockCount) {
    inst->counter[0] = 0;
    if (inst->updates >= kQuantileWarmupUpdates) PublishQuantile(inst, bins);
  }
  if (Counter16Add(&inst->counter[0], 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! counter[%d] is reset.\t\n", 0);
  }
  // While warming up the estimate follows every update; afterwards only once
  // per block of counts.
  if (inst->updates < kQuantileWarmupUpdates) PublishQuantile(inst, bins);

  for (int i = 0; i < bins; ++i) noise[i] = inst->quantile[i];
}
