// Internal entry points behind the exported ZebKol_* functions. Each
// exported function forwards its arguments unchanged to the function of the
// same name with a leading underscore, which names itself in messages.
#ifndef ZEB_SRC_AUDIOPROCESSWRAPPER_H
#define ZEB_SRC_AUDIOPROCESSWRAPPER_H

#include "zebaudio/zeb_kol.h"

#ifdef __cplusplus
extern "C" {
#endif

unsigned int _ZebKol_GetBufferSize(AudioKolBufferConfig* kol_switch);
KOL_HANDLE _ZebKol_Init(const char* working_buffer_address,
                        AudioProcessInit* audio_process_init, AudioKolBufferConfig* kol_switch);
KOL_HANDLE _ZebKol_Reset(char* working_buffer_address, AudioProcessInit* audio_process_init,
                         AudioKolBufferConfig* kol_switch);
ALGO_KOL_RET _ZebKol_Free(KOL_HANDLE handle);
ALGO_KOL_RET _ZebKol_Config(KOL_HANDLE handle, AudioAnrConfig* anr_config,
                            AudioEqConfig* eq_config, AudioHpfConfig* hpf_config,
                            AudioVadConfig* vad_config, AudioDereverbConfig* dereverb_config,
                            AudioAgcConfig* agc_config);
ALGO_KOL_RET _ZebKol_GetConfig(KOL_HANDLE handle, AudioProcessInit* audio_process_init,
                               AudioAnrConfig* anr_config, AudioEqConfig* eq_config,
                               AudioHpfConfig* hpf_config, AudioVadConfig* vad_config,
                               AudioDereverbConfig* dereverb_config, AudioAgcConfig* agc_config);
ALGO_KOL_RET _ZebKol_Run(KOL_HANDLE handle, short* pss_audio_in);
ALGO_KOL_RET _ZebKol_GetNrResult(KOL_HANDLE handle, short* nr_audio_out);
ALGO_KOL_RET _ZebKol_GetNrEqResult(KOL_HANDLE handle, short* nr_eq_audio_out);
ALGO_KOL_RET _ZebKol_GetVadOut(KOL_HANDLE handle, int* speech_probability);
ALGO_KOL_RET _ZebKol_NrEstimateReferAec(KOL_HANDLE handle, short* aec_in);
ALGO_KOL_RET _ZebKol_SetAgcFreqBand(KOL_HANDLE handle, int* frequency_band);
ALGO_KOL_RET _ZebKol_SetLowFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput);
ALGO_KOL_RET _ZebKol_SetMidFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput);
ALGO_KOL_RET _ZebKol_SetHighFreqCompressionRatioCurve(KOL_HANDLE handle,
                                                      int* CompressRatioInput,
                                                      int* CompressRatioOutput);
ALGO_KOL_RET _ZebKol_SetCompressionRatioCurve(KOL_HANDLE handle, short* CompressRatioInput,
                                              short* CompressRatioOutput, int curve_len);
ALGO_KOL_RET _ZebKol_ApplyDigitalGain(KOL_HANDLE handle, short* pss_audio_in, float gain_value);
ALGO_KOL_RET _ZebKol_EnhanceNNBFMode(KOL_HANDLE handle, KOL_BF_HANDLE handle2, int is_enable);
ALGO_KOL_RET _ZebKol_FilterDesign(KOL_HANDLE handle, int filter_cnt,
                                  AudioFilterConfig* filter_config);
ALGO_KOL_RET _ZebKol_FilterApply(KOL_HANDLE handle, short* pss_audio_in);
ALGO_KOL_RET _ZebKol_FilterFreqz(KOL_HANDLE handle, float* frequency_response);
ALGO_KOL_RET _ZebKol_InitialFilterEnable(KOL_HANDLE handle, float gain);
ALGO_KOL_RET _ZebKol_SetHandleId(KOL_HANDLE handle, int id);
ALGO_KOL_RET _ZebKol_GetAPIVersion(unsigned short* major, unsigned short* minor);
ALGO_KOL_RET _ZebKol_NrReadJson(KOL_HANDLE handle, char* jsonBuffer, char* jsonfile,
                                unsigned int buffSize);
unsigned int _ZebKol_GetJsonFileSize(char* jsonfile);
ALGO_KOL_RET _ZebKol_EnableAutoSmooth(KOL_HANDLE handle, int enable);
ALGO_KOL_RET _ZebKol_EnableComfortNoise(KOL_HANDLE handle, int enable, int dB);
ALGO_KOL_RET _ZebKol_ApplyComfortNoise(CngStruct cng_para, short* pss_audio_in);

#ifdef __cplusplus
}
#endif

#endif
