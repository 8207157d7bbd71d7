// The comfort-noise floor that every single-stage family sets from a level in dB.
#include <math.h>
#include <string.h>

#include "ComfortNoise.h"

namespace {

// Offset from a level in dB to a bin power on the spectrum's scale.
constexpr double kFloorOffsetDb = 24.21;

}  // namespace

extern "C" {

void CNG_SetFloorDb(cng_t* left, cng_t* right, unsigned int channels, int dB) {
  if (left == NULL) return;
  const float power = (float)pow(10.0, ((double)(float)dB + kFloorOffsetDb) / 10.0);
  for (int k = 0; k < CNG_BINS; ++k) left->dMinPow[k] = power;
  if (channels == 2 && right != NULL) memcpy(right->dMinPow, left->dMinPow, sizeof(right->dMinPow));
}

}  // extern "C"
