// The processing chain's handle record and its internal operations.
#ifndef ZEB_SRC_AUDIOPROCESS_H
#define ZEB_SRC_AUDIOPROCESS_H

#include <stdio.h>

#include "algo_stage_ret.h"
#include "fft.h"
#include "pre_post_tool.h"
#include "zebaudio/zeb_kol.h"

#ifdef __cplusplus
extern "C" {
#endif

// Stage records live in the working buffer; the chain only holds pointers.
typedef struct NSinst_t_ NSinst_t;
typedef struct EQinst_t_ EQinst_t;
typedef struct AGCinst_t_ AGCinst_t;
typedef struct FreqAgcHandle_ FreqAgcHandle;
typedef struct cng_t_ cng_t;

#define KOL_MAX_CHANNELS 2
#define KOL_FRAME_LEN_SAMPLES 128
#define KOL_FFT_LEN_SAMPLES 256
#define KOL_SPECTRUM_FLOATS 258      // 129 interleaved (re, im) pairs
#define KOL_SPECTRUM_TAP_FLOATS 516  // spectrum tap buffers hold two spectra
#define KOL_OVERLAP_TAIL_FLOATS 130
#define KOL_HPF_FIR_DELAY_SAMPLES 385
#define KOL_NN_BLOCK_SAMPLES 288
#define KOL_NN_HOP_SAMPLES 160
#define KOL_FFT_IP_INTS 130
#define KOL_FFT_W_FLOATS 260
// Frames after which a handle renews itself (30 days at 48 kHz).
#define KOL_RESET_FRAME_LIMIT 972000000

typedef struct {
  // Identity and configuration.
  int check_number;
  AudioKolBufferConfig kol_switch;
  AudioProcessInit kol_init;
  AudioAnrConfig anr_config;
  AudioEqConfig eq_config;
  AudioHpfConfig hpf_config;
  AudioAgcConfig agc_config;

  // Input history: per channel the previous frame in [0..127], the newest in [128..255].
  short pssAudioIn[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  short mic_buf_ori[KOL_FFT_LEN_SAMPLES];
  int signalAmpEsti;

  // Stage instances.
  NSinst_t* nr_inst[KOL_MAX_CHANNELS];
  EQinst_t* eq_inst[KOL_MAX_CHANNELS];
  short HPF_filter_buffer[KOL_MAX_CHANNELS][KOL_HPF_FIR_DELAY_SAMPLES];
  AGCinst_t* agc_inst[KOL_MAX_CHANNELS];

  // Time-domain gain control.
  int start_flag;
  unsigned short frame_cnt;
  short pssAudioIn_agc[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  float agc_win_buf_2ch[KOL_MAX_CHANNELS][KOL_SPECTRUM_FLOATS];
  float agc_out_half_prev_2ch[KOL_MAX_CHANNELS][KOL_OVERLAP_TAIL_FLOATS];
  FreqAgcHandle* freq_agc_inst[KOL_MAX_CHANNELS];

  // Frequency stage.
  FFTHandle_t FFT_workingBuff;
  int fbf_ip[KOL_FFT_IP_INTS];
  float fbf_wfft[KOL_FFT_W_FLOATS];
  float fft_win_buf_2ch[KOL_MAX_CHANNELS][KOL_SPECTRUM_FLOATS];
  float fft_in_positive_max;
  float ifft_out_half_prev_2ch[KOL_MAX_CHANNELS][KOL_OVERLAP_TAIL_FLOATS];
  float fft_nr_buf_2ch[KOL_MAX_CHANNELS][KOL_SPECTRUM_TAP_FLOATS];
  float ifft_nr_half_prev_2ch[KOL_MAX_CHANNELS][KOL_OVERLAP_TAIL_FLOATS];
  float fft_nr_eq_buf_2ch[KOL_MAX_CHANNELS][KOL_SPECTRUM_TAP_FLOATS];
  float ifft_nr_eq_half_prev_2ch[KOL_MAX_CHANNELS][KOL_OVERLAP_TAIL_FLOATS];

  // Gain, comfort noise, status.
  float gain_dB;
  float gain;
  cng_t* cng_working_buffer[KOL_MAX_CHANNELS];
  int cng_enable;
  int is_run_status;
  int is_kol_init_status;
  int is_kol_config_status;
  int dbg_level;

  // Output history and neural re-blocking.
  short pssAudioOut[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  int reduce_latency_flag;
  short pssAudio_lat[KOL_MAX_CHANNELS][KOL_FRAME_LEN_SAMPLES];
  unsigned short counterNN[KOL_MAX_CHANNELS];
  int input_index[KOL_MAX_CHANNELS];
  int output_index[KOL_MAX_CHANNELS];
  short pssAudioInNN[KOL_MAX_CHANNELS][KOL_NN_BLOCK_SAMPLES];
  short pssAudioOutNN[KOL_MAX_CHANNELS][KOL_NN_BLOCK_SAMPLES];
  float NN_buf_2ch[KOL_MAX_CHANNELS][KOL_NN_HOP_SAMPLES];
  short pssAudioInSRC[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  short pssAudioOutSRC[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  short src_out_tmp[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  short nr_audio_out_tmp[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];
  short nr_eq_audio_out_tmp[KOL_MAX_CHANNELS][KOL_FFT_LEN_SAMPLES];

  // Dumps.
  FILE* input_dump;
  FILE* input_dump_iir;
  FILE* output_dump;
  FILE* output_dump_nr;
  FILE* output_dump_eq;
  FILE* output_dump_iir;
  FILE* output_dump_agc;
  int dump_flag;
  int dump_flag_nr;
  int dump_flag_eq;
  int dump_flag_iir;
  int dump_flag_agc;
  int dump_id;
  int iir_enable;
  postInfo_t* postInfo;
  int reset_frame_cnt;
} AudioKolInternel;

// Stage-to-chain result mappings; any value not listed gives ALGO_KOL_RET_FAILED.
ALGO_KOL_RET ANR_ConvertReturnValue(int ret);
ALGO_KOL_RET EQ_ConvertReturnValue(int ret);
ALGO_KOL_RET AGC_ConvertReturnValue(int ret);

AudioKolInternel* KOL_AllocateWorkingBufferAddressPartial(const char* workingBufferAddress,
                                                          AudioKolBufferConfig* kol_switch, int dbg_lv);
ALGO_KOL_RET KOL_CheckInitParameter(AudioProcessInit* kol_init, int dbg_lv);
int BufferAllocateCheck(AudioKolInternel* kol_handle);

// Entry guards of the chain's operations. func is the caller's own name,
// __func__, which the messages show; the public name is func + 1.
// The record behind handle, or NULL after the message for a NULL handle.
AudioKolInternel* KOL_HandleOrReport(KOL_HANDLE handle, const char* func);
// 1, after its message, when Init has not run; 0 otherwise.
int KOL_RefuseBeforeInit(const AudioKolInternel* h, const char* func);
// 1, after its message, when Config has not run; 0 otherwise.
int KOL_RefuseBeforeConfig(const AudioKolInternel* h, const char* func);
// 1, after its message, while an earlier call is marked unfinished.
int KOL_RefuseWhileRunning(const AudioKolInternel* h, const char* func);

#ifdef __cplusplus
}
#endif

#endif
