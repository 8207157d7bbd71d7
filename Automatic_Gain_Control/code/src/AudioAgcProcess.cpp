// The stand-alone gain control family, ZebAgc_*. Each exported function
// forwards unchanged to its internal _ZebAgc_* counterpart; Reset runs the
// Init body.
#include <stddef.h>

#include "zebaudio/zeb_agc.h"

extern "C" {

// Not yet available in this build: reports failure.
unsigned int _ZebAgc_GetBufferSize(void) {
  return 0;
}

AGC_HANDLE _ZebAgc_Init(char*, AudioAgcInit*) {
  return NULL;
}

ALGO_AGC_RET _ZebAgc_Config(AGC_HANDLE, AudioAgcConfig*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_GetConfig(AGC_HANDLE, AudioAgcInit*, AudioAgcConfig*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_Run(AGC_HANDLE, short int*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_Free(AGC_HANDLE) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetAgcFreqBand(AGC_HANDLE, int*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetLowFreqCompressionRatioCurve(AGC_HANDLE, int*, int*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetMidFreqCompressionRatioCurve(AGC_HANDLE, int*, int*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetHighFreqCompressionRatioCurve(AGC_HANDLE, int*, int*) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetCompressionRatioCurve(AGC_HANDLE, short int*, short int*, int) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_SetHandleId(AGC_HANDLE, int) {
  return ALGO_AGC_RET_FAILED;
}

ALGO_AGC_RET _ZebAgc_EnableComfortNoise(AGC_HANDLE, int, int) {
  return ALGO_AGC_RET_FAILED;
}

// Not yet available in this build: reports a gain of 0. Weak, so that the
// time-domain AGC core's own definition takes precedence once it is linked in.
__attribute__((weak)) float AGC_Process(AGCinst_t*, short int*) {
  return 0.0f;
}

// Exported entry points: thin forwards to the internal functions above.
unsigned int ZebAgc_GetBufferSize(void) {
  return _ZebAgc_GetBufferSize();
}

AGC_HANDLE ZebAgc_Init(char* working_buffer_address, AudioAgcInit* agc_init) {
  return _ZebAgc_Init(working_buffer_address, agc_init);
}

AGC_HANDLE ZebAgc_Reset(char* working_buffer_address, AudioAgcInit* agc_init) {
  return _ZebAgc_Init(working_buffer_address, agc_init);
}

ALGO_AGC_RET ZebAgc_Config(AGC_HANDLE handle, AudioAgcConfig* agc_config) {
  return _ZebAgc_Config(handle, agc_config);
}

ALGO_AGC_RET ZebAgc_GetConfig(AGC_HANDLE handle, AudioAgcInit* agc_init,
                              AudioAgcConfig* agc_config) {
  return _ZebAgc_GetConfig(handle, agc_init, agc_config);
}

ALGO_AGC_RET ZebAgc_Run(AGC_HANDLE handle, short int* pss_audio_in) {
  return _ZebAgc_Run(handle, pss_audio_in);
}

ALGO_AGC_RET ZebAgc_Free(AGC_HANDLE handle) {
  return _ZebAgc_Free(handle);
}

ALGO_AGC_RET ZebAgc_SetAgcFreqBand(AGC_HANDLE handle, int* frequency_band) {
  return _ZebAgc_SetAgcFreqBand(handle, frequency_band);
}

ALGO_AGC_RET ZebAgc_SetLowFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                    int* CompressRatioOutput) {
  return _ZebAgc_SetLowFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_AGC_RET ZebAgc_SetMidFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                    int* CompressRatioOutput) {
  return _ZebAgc_SetMidFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_AGC_RET ZebAgc_SetHighFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return _ZebAgc_SetHighFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_AGC_RET ZebAgc_SetCompressionRatioCurve(AGC_HANDLE handle, short int* CompressRatioInput,
                                             short int* CompressRatioOutput, int curve_len) {
  return _ZebAgc_SetCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput, curve_len);
}

ALGO_AGC_RET ZebAgc_SetHandleId(AGC_HANDLE handle, int id) {
  return _ZebAgc_SetHandleId(handle, id);
}

ALGO_AGC_RET ZebAgc_EnableComfortNoise(AGC_HANDLE handle, int enable, int dB) {
  return _ZebAgc_EnableComfortNoise(handle, enable, dB);
}

}  // extern "C"
