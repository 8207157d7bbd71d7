// The stand-alone noise reduction family, ZebAnr_*. Each exported function
// forwards unchanged to its internal _ZebAnr_* counterpart.
#include <stddef.h>

#include "zebaudio/zeb_anr.h"

extern "C" {

// Not yet available in this build: reports failure.
unsigned int _ZebAnr_GetBufferSize(void) {
  return 0;
}

ANR_HANDLE _ZebAnr_Init(char*, AudioAnrInit*) {
  return NULL;
}

ANR_HANDLE _ZebAnr_Reset(char*, AudioAnrInit*) {
  return NULL;
}

ALGO_ANR_RET _ZebAnr_Config(ANR_HANDLE, AudioAnrConfig*) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_GetConfig(ANR_HANDLE, AudioAnrInit*, AudioAnrConfig*) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_Run(ANR_HANDLE, short*) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_Free(ANR_HANDLE) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_EnhanceNNBFMode(ANR_HANDLE, ANR_BF_HANDLE, int) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_SetHandleId(ANR_HANDLE, int) {
  return ALGO_ANR_RET_FAILED;
}

unsigned int _ZebAnr_GetJsonFileSize(char*) {
  return 0;
}

ALGO_ANR_RET _ZebAnr_ReadJson(ANR_HANDLE, char*, char*, unsigned int) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_EnableComfortNoise(ANR_HANDLE, int, int) {
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET _ZebAnr_EnableAutoSmooth(ANR_HANDLE, int) {
  return ALGO_ANR_RET_FAILED;
}

// Exported entry points: thin forwards to the internal functions above.
unsigned int ZebAnr_GetBufferSize(void) {
  return _ZebAnr_GetBufferSize();
}

ANR_HANDLE ZebAnr_Init(char* working_buffer_address, AudioAnrInit* anr_init) {
  return _ZebAnr_Init(working_buffer_address, anr_init);
}

ANR_HANDLE ZebAnr_Reset(char* working_buffer_address, AudioAnrInit* anr_init) {
  return _ZebAnr_Reset(working_buffer_address, anr_init);
}

ALGO_ANR_RET ZebAnr_Config(ANR_HANDLE handle, AudioAnrConfig* anr_config) {
  return _ZebAnr_Config(handle, anr_config);
}

ALGO_ANR_RET ZebAnr_GetConfig(ANR_HANDLE handle, AudioAnrInit* anr_init,
                              AudioAnrConfig* anr_config) {
  return _ZebAnr_GetConfig(handle, anr_init, anr_config);
}

ALGO_ANR_RET ZebAnr_Run(ANR_HANDLE handle, short* pss_audio_in) {
  return _ZebAnr_Run(handle, pss_audio_in);
}

ALGO_ANR_RET ZebAnr_Free(ANR_HANDLE handle) {
  return _ZebAnr_Free(handle);
}

ALGO_ANR_RET ZebAnr_EnhanceNNBFMode(ANR_HANDLE handle, ANR_BF_HANDLE handle2, int is_enable) {
  return _ZebAnr_EnhanceNNBFMode(handle, handle2, is_enable);
}

ALGO_ANR_RET ZebAnr_SetHandleId(ANR_HANDLE handle, int id) {
  return _ZebAnr_SetHandleId(handle, id);
}

unsigned int ZebAnr_GetJsonFileSize(char* jsonfile) {
  return _ZebAnr_GetJsonFileSize(jsonfile);
}

ALGO_ANR_RET ZebAnr_ReadJson(ANR_HANDLE handle, char* jsonBuffer, char* jsonfile,
                             unsigned int buffSize) {
  return _ZebAnr_ReadJson(handle, jsonBuffer, jsonfile, buffSize);
}

ALGO_ANR_RET ZebAnr_EnableComfortNoise(ANR_HANDLE handle, int enable, int dB) {
  return _ZebAnr_EnableComfortNoise(handle, enable, dB);
}

ALGO_ANR_RET ZebAnr_EnableAutoSmooth(ANR_HANDLE handle, int enable) {
  return _ZebAnr_EnableAutoSmooth(handle, enable);
}

}  // extern "C"
