// The stand-alone equaliser, high-pass filter and biquad family, ZebEq_*.
// Each exported function forwards unchanged to its internal _ZebEq_*
// counterpart; Reset keeps an entry of its own.
#include <stddef.h>

#include "zebaudio/zeb_eq.h"

extern "C" {

// Not yet available in this build: reports failure.
unsigned int _ZebEq_GetBufferSize(void) {
  return 0;
}

EQ_HANDLE _ZebEq_Init(char*, AudioEqInit*) {
  return NULL;
}

EQ_HANDLE _ZebEq_Reset(char*, AudioEqInit*) {
  return NULL;
}

ALGO_EQ_RET _ZebEq_Config(EQ_HANDLE, AudioHpfConfig*, AudioEqConfig*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_GetConfig(EQ_HANDLE, AudioEqInit*, AudioHpfConfig*, AudioEqConfig*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_Run(EQ_HANDLE, short int*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_Free(EQ_HANDLE) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_FilterDesign(EQ_HANDLE, int, AudioFilterConfig*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_FilterApply(EQ_HANDLE, short int*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_FilterFreqz(EQ_HANDLE, float*) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_SetHandleId(EQ_HANDLE, int) {
  return ALGO_EQ_RET_FAILED;
}

ALGO_EQ_RET _ZebEq_EnableComfortNoise(EQ_HANDLE, int, int) {
  return ALGO_EQ_RET_FAILED;
}

// Exported entry points: thin forwards to the internal functions above.
unsigned int ZebEq_GetBufferSize(void) {
  return _ZebEq_GetBufferSize();
}

EQ_HANDLE ZebEq_Init(char* working_buffer_address, AudioEqInit* eq_init) {
  return _ZebEq_Init(working_buffer_address, eq_init);
}

EQ_HANDLE ZebEq_Reset(char* working_buffer_address, AudioEqInit* eq_init) {
  return _ZebEq_Reset(working_buffer_address, eq_init);
}

ALGO_EQ_RET ZebEq_Config(EQ_HANDLE handle, AudioHpfConfig* hpf_config, AudioEqConfig* eq_config) {
  return _ZebEq_Config(handle, hpf_config, eq_config);
}

ALGO_EQ_RET ZebEq_GetConfig(EQ_HANDLE handle, AudioEqInit* eq_init, AudioHpfConfig* hpf_config,
                            AudioEqConfig* eq_config) {
  return _ZebEq_GetConfig(handle, eq_init, hpf_config, eq_config);
}

ALGO_EQ_RET ZebEq_Run(EQ_HANDLE handle, short int* pss_audio_in) {
  return _ZebEq_Run(handle, pss_audio_in);
}

ALGO_EQ_RET ZebEq_Free(EQ_HANDLE handle) {
  return _ZebEq_Free(handle);
}

ALGO_EQ_RET ZebEq_FilterDesign(EQ_HANDLE handle, int filter_cnt,
                               AudioFilterConfig* filter_config) {
  return _ZebEq_FilterDesign(handle, filter_cnt, filter_config);
}

ALGO_EQ_RET ZebEq_FilterApply(EQ_HANDLE handle, short int* pss_audio_in) {
  return _ZebEq_FilterApply(handle, pss_audio_in);
}

ALGO_EQ_RET ZebEq_FilterFreqz(EQ_HANDLE handle, float* frequency_response) {
  return _ZebEq_FilterFreqz(handle, frequency_response);
}

ALGO_EQ_RET ZebEq_SetHandleId(EQ_HANDLE handle, int id) {
  return _ZebEq_SetHandleId(handle, id);
}

ALGO_EQ_RET ZebEq_EnableComfortNoise(EQ_HANDLE handle, int enable, int dB) {
  return _ZebEq_EnableComfortNoise(handle, enable, dB);
}

}  // extern "C"
