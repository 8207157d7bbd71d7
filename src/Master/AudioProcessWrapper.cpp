// The exported face of the processing chain: every ZebKol_* function adds
// nothing and forwards to its internal _ZebKol_* counterpart.
#include "AudioProcessWrapper.h"

unsigned int ZebKol_GetBufferSize(AudioKolBufferConfig* kol_switch) {
  return _ZebKol_GetBufferSize(kol_switch);
}

KOL_HANDLE ZebKol_Init(const char* working_buffer_address, AudioProcessInit* audio_process_init,
                       AudioKolBufferConfig* kol_switch) {
  return _ZebKol_Init(working_buffer_address, audio_process_init, kol_switch);
}

KOL_HANDLE ZebKol_Reset(char* working_buffer_address, AudioProcessInit* audio_process_init,
                        AudioKolBufferConfig* kol_switch) {
  return _ZebKol_Reset(working_buffer_address, audio_process_init, kol_switch);
}

ALGO_KOL_RET ZebKol_Free(KOL_HANDLE handle) {
  return _ZebKol_Free(handle);
}

ALGO_KOL_RET ZebKol_Config(KOL_HANDLE handle, AudioAnrConfig* anr_config,
                           AudioEqConfig* eq_config, AudioHpfConfig* hpf_config,
                           AudioVadConfig* vad_config, AudioDereverbConfig* dereverb_config,
                           AudioAgcConfig* agc_config) {
  return _ZebKol_Config(handle, anr_config, eq_config, hpf_config, vad_config, dereverb_config, agc_config);
}

ALGO_KOL_RET ZebKol_GetConfig(KOL_HANDLE handle, AudioProcessInit* audio_process_init,
                              AudioAnrConfig* anr_config, AudioEqConfig* eq_config,
                              AudioHpfConfig* hpf_config, AudioVadConfig* vad_config,
                              AudioDereverbConfig* dereverb_config, AudioAgcConfig* agc_config) {
  return _ZebKol_GetConfig(handle, audio_process_init, anr_config, eq_config, hpf_config, vad_config, dereverb_config, agc_config);
}

ALGO_KOL_RET ZebKol_Run(KOL_HANDLE handle, short* pss_audio_in) {
  return _ZebKol_Run(handle, pss_audio_in);
}

ALGO_KOL_RET ZebKol_GetNrResult(KOL_HANDLE handle, short* nr_audio_out) {
  return _ZebKol_GetNrResult(handle, nr_audio_out);
}

ALGO_KOL_RET ZebKol_GetNrEqResult(KOL_HANDLE handle, short* nr_eq_audio_out) {
  return _ZebKol_GetNrEqResult(handle, nr_eq_audio_out);
}

ALGO_KOL_RET ZebKol_GetVadOut(KOL_HANDLE handle, int* speech_probability) {
  return _ZebKol_GetVadOut(handle, speech_probability);
}

ALGO_KOL_RET ZebKol_NrEstimateReferAec(KOL_HANDLE handle, short* aec_in) {
  return _ZebKol_NrEstimateReferAec(handle, aec_in);
}

ALGO_KOL_RET ZebKol_SetAgcFreqBand(KOL_HANDLE handle, int* frequency_band) {
  return _ZebKol_SetAgcFreqBand(handle, frequency_band);
}

ALGO_KOL_RET ZebKol_SetLowFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                    int* CompressRatioOutput) {
  return _ZebKol_SetLowFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_KOL_RET ZebKol_SetMidFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                    int* CompressRatioOutput) {
  return _ZebKol_SetMidFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_KOL_RET ZebKol_SetHighFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return _ZebKol_SetHighFreqCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput);
}

ALGO_KOL_RET ZebKol_SetCompressionRatioCurve(KOL_HANDLE handle, short* CompressRatioInput,
                                             short* CompressRatioOutput, int curve_len) {
  return _ZebKol_SetCompressionRatioCurve(handle, CompressRatioInput, CompressRatioOutput, curve_len);
}

ALGO_KOL_RET ZebKol_ApplyDigitalGain(KOL_HANDLE handle, short* pss_audio_in, float gain_value) {
  return _ZebKol_ApplyDigitalGain(handle, pss_audio_in, gain_value);
}

ALGO_KOL_RET ZebKol_EnhanceNNBFMode(KOL_HANDLE handle, KOL_BF_HANDLE handle2, int is_enable) {
  return _ZebKol_EnhanceNNBFMode(handle, handle2, is_enable);
}

ALGO_KOL_RET ZebKol_FilterDesign(KOL_HANDLE handle, int filter_cnt,
                                 AudioFilterConfig* filter_config) {
  return _ZebKol_FilterDesign(handle, filter_cnt, filter_config);
}

ALGO_KOL_RET ZebKol_FilterApply(KOL_HANDLE handle, short* pss_audio_in) {
  return _ZebKol_FilterApply(handle, pss_audio_in);
}

ALGO_KOL_RET ZebKol_FilterFreqz(KOL_HANDLE handle, float* frequency_response) {
  return _ZebKol_FilterFreqz(handle, frequency_response);
}

ALGO_KOL_RET ZebKol_InitialFilterEnable(KOL_HANDLE handle, float gain) {
  return _ZebKol_InitialFilterEnable(handle, gain);
}

ALGO_KOL_RET ZebKol_SetHandleId(KOL_HANDLE handle, int id) {
  return _ZebKol_SetHandleId(handle, id);
}

ALGO_KOL_RET ZebKol_GetAPIVersion(unsigned short* major, unsigned short* minor) {
  return _ZebKol_GetAPIVersion(major, minor);
}

ALGO_KOL_RET ZebKol_NrReadJson(KOL_HANDLE handle, char* jsonBuffer, char* jsonfile,
                               unsigned int buffSize) {
  return _ZebKol_NrReadJson(handle, jsonBuffer, jsonfile, buffSize);
}

unsigned int ZebKol_GetJsonFileSize(char* jsonfile) {
  return _ZebKol_GetJsonFileSize(jsonfile);
}

ALGO_KOL_RET ZebKol_EnableAutoSmooth(KOL_HANDLE handle, int enable) {
  return _ZebKol_EnableAutoSmooth(handle, enable);
}

ALGO_KOL_RET ZebKol_EnableComfortNoise(KOL_HANDLE handle, int enable, int dB) {
  return _ZebKol_EnableComfortNoise(handle, enable, dB);
}

ALGO_KOL_RET ZebKol_ApplyComfortNoise(CngStruct cng_para, short* pss_audio_in) {
  return _ZebKol_ApplyComfortNoise(cng_para, pss_audio_in);
}
