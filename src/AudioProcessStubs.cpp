// Chain operations that are not yet available in this build. Each reports
// failure (or a size of 0) without looking at its arguments, so any input,
// NULL included, is safe. Their bodies move to AudioProcess.cpp as they are
// implemented, and the stub here is then deleted.
#include "AudioProcessWrapper.h"

ALGO_KOL_RET _ZebKol_NrReadJson(KOL_HANDLE, char*, char*, unsigned int) {
  return ALGO_KOL_RET_FAILED;
}

unsigned int _ZebKol_GetJsonFileSize(char*) {
  return 0;
}

ALGO_KOL_RET _ZebKol_EnableComfortNoise(KOL_HANDLE, int, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_ApplyComfortNoise(CngStruct, short*) {
  return ALGO_KOL_RET_FAILED;
}
