// The stand-alone equaliser family's instance record, at the start of its
// working buffer, and its internal entry points.
#ifndef ZEB_AUDIO_EQ_PROCESS_H
#define ZEB_AUDIO_EQ_PROCESS_H

#include <stdio.h>

#include "ComfortNoise.h"
#include "eq_filter.h"
#include "fft.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_eq.h"

#ifdef __cplusplus
extern "C" {
#endif

#define EQ_MAX_CHANNELS 2
#define EQ_FRAME_LEN_SAMPLES 128
#define EQ_FFT_LEN_SAMPLES 256
#define EQ_SPECTRUM_FLOATS 258
#define EQ_OVERLAP_TAIL_FLOATS 130
#define EQ_FFT_IP_INTS 130
#define EQ_FFT_W_FLOATS 260
#define EQ_MAX_DUMP_ID 100

typedef struct {
  int check_number;
  _AudioEqInit eq_init;
  _AudioEqConfig eq_config;
  _AudioHpfConfig hpf_config;
  // Per channel the previous frame in [0..127], the newest in [128..255].
  short pssAudioIn[EQ_MAX_CHANNELS][EQ_FFT_LEN_SAMPLES];
  short mic_buf_ori[EQ_FFT_LEN_SAMPLES];  // cleared at Init, not used here
  int signalAmpEsti;                      // not used here
  EQinst_t* eq_inst[EQ_MAX_CHANNELS];
  short HPF_filter_buffer[EQ_MAX_CHANNELS][HPF_FIR_HISTORY_SAMPLES];
  FFTHandle_t FFT_workingBuff;  // one transform state for both channels
  int fbf_ip[EQ_FFT_IP_INTS];
  float fft_win_buf_2ch[EQ_MAX_CHANNELS][EQ_SPECTRUM_FLOATS];
  float fbf_wfft[EQ_FFT_W_FLOATS];
  float fft_in_positive_max;  // not used here
  float ifft_out_half_prev_2ch[EQ_MAX_CHANNELS][EQ_OVERLAP_TAIL_FLOATS];
  int is_run_status;
  int is_eq_init_status;
  int is_eq_config_status;
  FILE* input_dump;
  FILE* input_dump_iir;
  FILE* output_dump;
  FILE* output_dump_iir;
  int dump_id;
  int dump_flag;
  int dump_flag_iir;
  int iir_enable;
  postInfo_t* postInfo;
  cng_t* cng_working_buffer[EQ_MAX_CHANNELS];
  int cng_enable;
} AudioEqInternel;

// Points the record's pointers into the buffer: the record, eq_inst[0],
// eq_inst[1], postInfo, cng_working_buffer[0], [1], the FFT state.
AudioEqInternel* EQ_AllocateWorkingBufferAddressPartial(char* workingBufferAddress, int dbg_level);

unsigned int _ZebEq_GetBufferSize(void);
EQ_HANDLE _ZebEq_Init(char* working_buffer_address, AudioEqInit* eq_init);
EQ_HANDLE _ZebEq_Reset(char* working_buffer_address, AudioEqInit* eq_init);
ALGO_EQ_RET _ZebEq_Config(EQ_HANDLE handle, AudioHpfConfig* hpf_config, AudioEqConfig* eq_config);
ALGO_EQ_RET _ZebEq_GetConfig(EQ_HANDLE handle, AudioEqInit* eq_init, AudioHpfConfig* hpf_config,
                             AudioEqConfig* eq_config);
ALGO_EQ_RET _ZebEq_Run(EQ_HANDLE handle, short int* pss_audio_in);
ALGO_EQ_RET _ZebEq_Free(EQ_HANDLE handle);
ALGO_EQ_RET _ZebEq_FilterDesign(EQ_HANDLE handle, int filter_cnt, AudioFilterConfig* filter_config);
ALGO_EQ_RET _ZebEq_FilterApply(EQ_HANDLE handle, short int* pss_audio_in);
ALGO_EQ_RET _ZebEq_FilterFreqz(EQ_HANDLE handle, float* frequency_response);
ALGO_EQ_RET _ZebEq_SetHandleId(EQ_HANDLE handle, int id);
ALGO_EQ_RET _ZebEq_EnableComfortNoise(EQ_HANDLE handle, int enable, int dB);

#ifdef __cplusplus
}
#endif

#endif
