// Chain operations that are not yet available in this build. Each reports
// failure (or a size of 0) without looking at its arguments, so any input,
// NULL included, is safe. Their bodies move to AudioProcess.cpp as they are
// implemented, and the stub here is then deleted.
#include "AudioProcessWrapper.h"

ALGO_KOL_RET _ZebKol_GetConfig(KOL_HANDLE, AudioProcessInit*, AudioAnrConfig*, AudioEqConfig*,
                               AudioHpfConfig*, AudioVadConfig*, AudioDereverbConfig*,
                               AudioAgcConfig*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_GetNrResult(KOL_HANDLE, short*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_GetNrEqResult(KOL_HANDLE, short*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_GetVadOut(KOL_HANDLE, int*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_NrEstimateReferAec(KOL_HANDLE, short*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetAgcFreqBand(KOL_HANDLE, int*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetLowFreqCompressionRatioCurve(KOL_HANDLE, int*, int*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetMidFreqCompressionRatioCurve(KOL_HANDLE, int*, int*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetHighFreqCompressionRatioCurve(KOL_HANDLE, int*, int*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetCompressionRatioCurve(KOL_HANDLE, short*, short*, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_ApplyDigitalGain(KOL_HANDLE, short*, float) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_EnhanceNNBFMode(KOL_HANDLE, KOL_BF_HANDLE, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_FilterDesign(KOL_HANDLE, int, AudioFilterConfig*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_FilterApply(KOL_HANDLE, short*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_FilterFreqz(KOL_HANDLE, float*) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_InitialFilterEnable(KOL_HANDLE, float) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_SetHandleId(KOL_HANDLE, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_NrReadJson(KOL_HANDLE, char*, char*, unsigned int) {
  return ALGO_KOL_RET_FAILED;
}

unsigned int _ZebKol_GetJsonFileSize(char*) {
  return 0;
}

ALGO_KOL_RET _ZebKol_EnableAutoSmooth(KOL_HANDLE, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_EnableComfortNoise(KOL_HANDLE, int, int) {
  return ALGO_KOL_RET_FAILED;
}

ALGO_KOL_RET _ZebKol_ApplyComfortNoise(CngStruct, short*) {
  return ALGO_KOL_RET_FAILED;
}
