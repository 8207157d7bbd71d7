// The stand-alone noise reduction family's handle record and its internal
// operations (the exported ZebAnr_* functions forward to these).
#ifndef ZEB_NR_AUDIOANRPROCESS_H
#define ZEB_NR_AUDIOANRPROCESS_H

#include <stdio.h>

#include "fft.h"
#include "nr_core.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_anr.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct cng_t_ cng_t;

#define ANR_MAX_CHANNELS 2
#define ANR_FRAME_LEN_SAMPLES 128
#define ANR_FFT_LEN_SAMPLES 256
#define ANR_SPECTRUM_FLOATS 258      // 129 interleaved (re, im) pairs
#define ANR_OVERLAP_TAIL_FLOATS 130
#define ANR_FFT_IP_INTS 130
#define ANR_FFT_W_FLOATS 260
#define ANR_NN_QUEUE_SAMPLES 288     // samples waiting for or leaving a 160-sample block
#define ANR_NN_HOP_SAMPLES 160
#define ANR_NN_FFT_LEN_SAMPLES 320   // the neural denoiser's own transform

typedef struct {
  // Identity and configuration.
  int check_number;
  _AudioAnrInit anr_init;
  _AudioAnrConfig anr_config;

  // Time-domain frames: per channel the previous frame in [0..127], the
  // newest in [128..255].
  short pssAudioIn[ANR_MAX_CHANNELS][ANR_FFT_LEN_SAMPLES];
  short mic_buf_ori[ANR_FFT_LEN_SAMPLES];
  int signalAmpEsti;

  NSinst_t* nr_inst[ANR_MAX_CHANNELS];

  // Transform; the second set of the same shape is cleared and kept unused.
  FFTHandle_t FFT_workingBuff;
  int fbf_ip[ANR_FFT_IP_INTS];
  float fft_win_buf_2ch[ANR_MAX_CHANNELS][ANR_SPECTRUM_FLOATS];
  float fbf_wfft[ANR_FFT_W_FLOATS];
  float fft_in_positive_max;
  float ifft_out_half_prev_2ch[ANR_MAX_CHANNELS][ANR_OVERLAP_TAIL_FLOATS];
  int fbf_ip_agc[ANR_FFT_IP_INTS];
  float fft_win_buf_2ch_agc[ANR_MAX_CHANNELS][ANR_SPECTRUM_FLOATS];
  float fbf_wfft_agc[ANR_FFT_W_FLOATS];
  float fft_in_positive_max_agc;
  float ifft_out_half_prev_2ch_agc[ANR_MAX_CHANNELS][ANR_OVERLAP_TAIL_FLOATS];

  // Status.
  int is_run_status;
  int is_anr_init_status;
  int is_anr_config_status;
  short pssAudioOut[ANR_MAX_CHANNELS][ANR_FFT_LEN_SAMPLES];

  // Comfort noise.
  cng_t* cng_working_buffer[ANR_MAX_CHANNELS];
  int cng_enable;

  // Neural re-blocking.
  unsigned short counterNN[ANR_MAX_CHANNELS];
  int input_index[ANR_MAX_CHANNELS];
  int output_index[ANR_MAX_CHANNELS];
  short pssAudioInNN[ANR_MAX_CHANNELS][ANR_NN_QUEUE_SAMPLES];
  short pssAudioOutNN[ANR_MAX_CHANNELS][ANR_NN_QUEUE_SAMPLES];
  float NN_buf_2ch[ANR_MAX_CHANNELS][ANR_NN_HOP_SAMPLES];
  short pssAudioInSRC[ANR_MAX_CHANNELS][ANR_FFT_LEN_SAMPLES];
  short pssAudioOutSRC[ANR_MAX_CHANNELS][ANR_FFT_LEN_SAMPLES];
  short src_out_tmp[ANR_MAX_CHANNELS][ANR_FFT_LEN_SAMPLES];

  // Dumps.
  FILE* input_dump;
  FILE* output_dump;
  int dump_id;
  int dump_flag;
  postInfo_t* postInfo;
} AudioAnrInternel;

unsigned int _ZebAnr_GetBufferSize(void);
ANR_HANDLE _ZebAnr_Init(char* working_buffer_address, AudioAnrInit* anr_init);
ANR_HANDLE _ZebAnr_Reset(char* working_buffer_address, AudioAnrInit* anr_init);
ALGO_ANR_RET _ZebAnr_Config(ANR_HANDLE handle, AudioAnrConfig* anr_config);
ALGO_ANR_RET _ZebAnr_GetConfig(ANR_HANDLE handle, AudioAnrInit* anr_init,
                               AudioAnrConfig* anr_config);
ALGO_ANR_RET _ZebAnr_Run(ANR_HANDLE handle, short* pss_audio_in);
ALGO_ANR_RET _ZebAnr_Free(ANR_HANDLE handle);
ALGO_ANR_RET _ZebAnr_EnhanceNNBFMode(ANR_HANDLE handle, ANR_BF_HANDLE handle2, int is_enable);
ALGO_ANR_RET _ZebAnr_SetHandleId(ANR_HANDLE handle, int id);
unsigned int _ZebAnr_GetJsonFileSize(char* jsonfile);
ALGO_ANR_RET _ZebAnr_ReadJson(ANR_HANDLE handle, char* jsonBuffer, char* jsonfile,
                              unsigned int buffSize);
ALGO_ANR_RET _ZebAnr_EnableComfortNoise(ANR_HANDLE handle, int enable, int dB);
ALGO_ANR_RET _ZebAnr_EnableAutoSmooth(ANR_HANDLE handle, int enable);

#ifdef __cplusplus
}
#endif

#endif
