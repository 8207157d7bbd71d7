// The stand-alone equaliser, high-pass filter and biquad family, ZebEq_*.
// Each exported function forwards unchanged to its internal _ZebEq_*
// counterpart; Reset keeps an entry of its own.
#include "AudioEqProcess.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "debug_msglevel.h"
#include "eq_biquad.h"
#include "frame_stage.h"
#include "work_buffer.h"

namespace {

constexpr int kFrameLenSamples = EQ_FRAME_LEN_SAMPLES;
constexpr int kFftLenSamples = EQ_FFT_LEN_SAMPLES;
constexpr unsigned int kHpfFreqDomainMode = 1;
constexpr unsigned int kHpfTimeDomainMode = 2;

static_assert(kFftLenSamples == FRAME_STAGE_FFT_LEN_SAMPLES, "the shared frame steps run 256 points");

// Walks the working-buffer layout in its fixed order; with a NULL base it
// only counts.
size_t WalkLayout(char* base) {
  Carver c(base);
  AudioEqInternel* h = c.Take<AudioEqInternel>();
  EQinst_t* eq0 = c.Take<EQinst_t>();
  EQinst_t* eq1 = c.Take<EQinst_t>();
  postInfo_t* post = c.Take<postInfo_t>();
  cng_t* cng0 = c.Take<cng_t>();
  cng_t* cng1 = c.Take<cng_t>();
  ne10_fft_r2c_state_float32_t* fft = c.Take<ne10_fft_r2c_state_float32_t>(FFT_GetBufferSize(kFftLenSamples));
  if (h != NULL) {
    h->eq_inst[0] = eq0;
    h->eq_inst[1] = eq1;
    h->postInfo = post;
    h->cng_working_buffer[0] = cng0;
    h->cng_working_buffer[1] = cng1;
    h->FFT_workingBuff.fft_Ne10_cfg = fft;
  }
  return c.size();
}

// Stage codes 0..11 keep their values in the family's result; anything
// else is a failure. (The chain has its own mapping of the same codes.)
ALGO_EQ_RET EQ_ConvertReturnValue(int ret) {
  if (ret >= _ALGO_EQ_RET_SUCCESS && ret <= _ALGO_HPF_RET_INVALID_TABLE) return (ALGO_EQ_RET)ret;
  return ALGO_EQ_RET_FAILED;
}

// The level of a handle lives in its first EQ instance; memory that was
// never initialised has none, and the default level then applies.
int HandleLevel(const AudioEqInternel* h) {
  return h->eq_inst[0] != NULL ? h->eq_inst[0]->dbg_level : ALGO_MSG_LEVEL_DEFAULT;
}

// Entry guards. func is the caller's own name, __func__, which the messages
// show; the public name is func + 1.
AudioEqInternel* HandleOrReport(EQ_HANDLE handle, const char* func) {
  if (handle == NULL) ALGO_ERR_ALWAYS("[%s]Fail! The eq handle is NULL.\t\n", func);
  return (AudioEqInternel*)handle;
}

bool RefuseBeforeInit(const AudioEqInternel* h, const char* func) {
  if (h->is_eq_init_status != 0) return false;
  ALGO_ERR(HandleLevel(h), "[%s]Fail! Need init before %s.\t\n", func, func + 1);
  return true;
}

bool RefuseBeforeConfig(const AudioEqInternel* h, const char* func) {
  if (h->is_eq_config_status != 0) return false;
  ALGO_ERR(HandleLevel(h), "[%s]Fail! Need config before %s.\t\n", func, func + 1);
  return true;
}

// Raw-audio dumps are not carried by this build: nothing to open or close.
int DebugDumpDataInit(AudioEqInternel* /*h*/) { return 0; }
void DebugDumpDataFree(AudioEqInternel* /*h*/) {}

int CheckInitParameter(const _AudioEqInit* eq_init, int dbg_level) {
  if (eq_init->point_number != (unsigned int)kFrameLenSamples) {
    ALGO_ERR(dbg_level, "[EQ]Fail! This EQ Lib only support point_number = %d.\t\n", kFrameLenSamples);
    return _ALGO_EQ_RET_INVALID_POINT_NUMBER;
  }
  if (eq_init->channel != 1 && eq_init->channel != 2) {
    ALGO_ERR(dbg_level, "[EQ]Fail! This EQ Lib only support mono or stereo.\t\n");
    return _ALGO_EQ_RET_INVALID_CHANNEL;
  }
  switch (eq_init->sample_rate) {
    case 8000:
    case 16000:
    case 32000:  // accepted, though the text below leaves it out
    case 48000:
      return _ALGO_EQ_RET_SUCCESS;
    default:
      ALGO_ERR(dbg_level, "[EQ]Fail! This EQ Lib only support sample rate 8K 16K 48K.\t\n");
      return _ALGO_EQ_RET_INVALID_SAMPLE_RATE;
  }
}

void ClearFrameState(AudioEqInternel* h) {
  memset(h->pssAudioIn, 0, sizeof(h->pssAudioIn));
  memset(h->mic_buf_ori, 0, sizeof(h->mic_buf_ori));
  memset(h->ifft_out_half_prev_2ch, 0, sizeof(h->ifft_out_half_prev_2ch));
  memset(h->fft_win_buf_2ch, 0, sizeof(h->fft_win_buf_2ch));
}

// Init and Reset: a full re-creation of the instance.
EQ_HANDLE InitBody(char* working_buffer_address, AudioEqInit* eq_init) {
  const int lv = DynamicMessageLevel();
  if (working_buffer_address == NULL || eq_init == NULL) {
    ALGO_ERR(lv, "[EQ]Fail! The workingBufferAddress or eq_init is NULL.\t\n");
    return NULL;
  }
  if ((uintptr_t)working_buffer_address % kWorkBlockAlignBytes != 0) {
    ALGO_ERR(lv, "[EQ]Fail! The working_buffer_address is not aligned to %d bytes.\t\n",
             (int)kWorkBlockAlignBytes);
    return NULL;
  }
  ALGO_MSG(lv, "[EQ]FFT mode: floating point mode.\t\n");
  // The init record may lie in the buffer about to be cleared.
  const _AudioEqInit init = {eq_init->point_number, eq_init->channel, EnumFieldValue(eq_init->sample_rate)};
  memset(working_buffer_address, 0, _ZebEq_GetBufferSize());
  AudioEqInternel* h = EQ_AllocateWorkingBufferAddressPartial(working_buffer_address, lv);
  if (h == NULL) {
    ALGO_ERR(lv, "[EQ]Fail! Allocate address error.\t\n");
    return NULL;
  }
  h->eq_inst[0]->dbg_level = lv;
  // The second instance gets the level only in stereo, judged by the stored
  // channel count, which is still 0 here: channel 2 stays silent for the
  // life of the instance.
  if (h->eq_init.channel == 2) h->eq_inst[1]->dbg_level = lv;
  h->check_number = ALGO_CHECK_NUMBER;
  if (CheckInitParameter(&init, lv) != _ALGO_EQ_RET_SUCCESS) {
    ALGO_ERR(lv, "[EQ]Fail! The eq_init parameter error.\t\n");
    return NULL;
  }
  h->eq_init = init;
  ALGO_MSG(lv, "[EQ]Point Number: %d\t\n", (int)init.point_number);
  ALGO_MSG(lv, "[EQ]Channel: %d\t\n", (int)init.channel);
  ALGO_MSG(lv, "[EQ]Sample rate: %d\t\n", init.sample_rate);
  ClearFrameState(h);
  FrameStage_InitTransform(&h->FFT_workingBuff, lv);

  int stageResult = EQ_Init(h->eq_inst[0], init.sample_rate);
  if (init.channel == 2) stageResult += EQ_Init(h->eq_inst[1], init.sample_rate);
  // The comfort-noise state joins this sum once comfort noise is built.
  if (stageResult != 0) {
    ALGO_ERR(lv, "[EQ]Fail! EQ internal initialize error.\t\n");
    return NULL;
  }
  ALGO_MSG(lv, "[EQ]EQ internal initialize succeed.\t\n");
  h->is_run_status = 0;
  h->is_eq_config_status = 0;
  h->is_eq_init_status = 1;
  return h;
}

bool HpfInMode(const _AudioHpfConfig& hpf, unsigned int mode) {
  return hpf.hpf_enable != 0 && hpf.user_mode == mode;
}

// One channel of Run: slide the history, optional time-domain high-pass,
// window, transform, EQ then high-pass, inverse, window, overlap-add into
// the caller's frame and keep the new tail. -1 when the FIR refuses.
int RunChannel(AudioEqInternel* h, short* pss_audio_in, int c) {
  const int pn = (int)h->eq_init.point_number;
  const _AudioHpfConfig& hpf = h->hpf_config;
  postInfo_t* post = h->postInfo;
  FrameStage_LoadHistory(post, h->pssAudioIn[c], pss_audio_in, c, h->eq_init.channel, kFftLenSamples, pn);
  if (HpfInMode(hpf, kHpfTimeDomainMode)) {
    if (HPF_FiniteImpulseResponseFilter(h->HPF_filter_buffer[c], &h->pssAudioIn[c][pn],
                                        hpf.cutoff_frequency, HandleLevel(h)) != 0) {
      return -1;
    }
  }
  float* buf = h->fft_win_buf_2ch[c];
  FrameStage_ToFloat(h->pssAudioIn[c], buf, kFftLenSamples);
  FrameStage_Forward(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  if (h->eq_config.eq_enable) EQ_ApplyGain(h->eq_inst[c]->EQ_AddiScalingFactor, buf);
  if (HpfInMode(hpf, kHpfFreqDomainMode)) {
    HPF_ApplyGain(h->eq_inst[c]->HPF_AddiScalingFactor, buf, hpf.cutoff_frequency);
  }
  FrameStage_Inverse(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  FrameStage_OverlapAdd(post, buf, h->ifft_out_half_prev_2ch[c], pss_audio_in, h->eq_init.channel, c,
                        kFftLenSamples, pn);
  return 0;
}

}  // namespace

extern "C" {

AudioEqInternel* EQ_AllocateWorkingBufferAddressPartial(char* workingBufferAddress, int dbg_level) {
  if (workingBufferAddress == NULL) {
    ALGO_ERR(dbg_level, "[EQ]Fail! The workingBufferAddress is NULL.\t\n");
    return NULL;
  }
  WalkLayout(workingBufferAddress);
  return (AudioEqInternel*)workingBufferAddress;
}

unsigned int _ZebEq_GetBufferSize(void) {
  return (unsigned int)WalkLayout(NULL);
}

EQ_HANDLE _ZebEq_Init(char* working_buffer_address, AudioEqInit* eq_init) {
  return InitBody(working_buffer_address, eq_init);
}

EQ_HANDLE _ZebEq_Reset(char* working_buffer_address, AudioEqInit* eq_init) {
  return InitBody(working_buffer_address, eq_init);
}

ALGO_EQ_RET _ZebEq_Config(EQ_HANDLE handle, AudioHpfConfig* hpf_config, AudioEqConfig* eq_config) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  const int lv = HandleLevel(h);
  if (RefuseBeforeInit(h, __func__)) return ALGO_EQ_RET_INVALID_CALLING;
  const int initRet = CheckInitParameter(&h->eq_init, lv);
  if (initRet != _ALGO_EQ_RET_SUCCESS) {
    ALGO_ERR(lv, "[%s]Fail! The eq init parameter error.\t\n", __func__);
    return EQ_ConvertReturnValue(initRet);
  }
  // The records are stored before any validation: a later failure leaves
  // them in place. A NULL record leaves its part as it was.
  if (eq_config != NULL) {
    h->eq_config.eq_enable = eq_config->eq_enable;
    h->eq_config.user_mode = eq_config->user_mode;
    memcpy(h->eq_config.eq_gain_db, eq_config->eq_gain_db, sizeof(h->eq_config.eq_gain_db));
  }
  if (hpf_config != NULL) {
    h->hpf_config.hpf_enable = hpf_config->hpf_enable;
    h->hpf_config.user_mode = hpf_config->user_mode;
    h->hpf_config.cutoff_frequency = (_ZEB_HPF_FREQ)EnumFieldValue(hpf_config->cutoff_frequency);
  }
  const bool stereo = h->eq_init.channel == 2;
  if (h->eq_config.eq_enable && h->eq_config.user_mode) {
    int ret = EQ_Config(h->eq_inst[0], &h->eq_config);
    if (ret != _ALGO_EQ_RET_SUCCESS) {
      ALGO_ERR(lv, "[EQ]Fail! Config fail.\t\n");
      return EQ_ConvertReturnValue(ret);
    }
    if (stereo) {
      ret = EQ_Config(h->eq_inst[1], &h->eq_config);
      if (ret != _ALGO_EQ_RET_SUCCESS) {
        ALGO_ERR(lv, "[EQ]Fail! Channel 2 Config fail.\t\n");
        return EQ_ConvertReturnValue(ret);
      }
    }
  }
  // The high-pass switch and mode are not validated: an unknown mode passes
  // and has no effect at Run.
  if (h->hpf_config.hpf_enable && h->hpf_config.user_mode) {
    int ret = HPF_Config(h->eq_inst[0], h->hpf_config.cutoff_frequency);
    if (ret != _ALGO_EQ_RET_SUCCESS) {
      ALGO_ERR(lv, "[HPF]Fail! Config fail.\t\n");
      return EQ_ConvertReturnValue(ret);
    }
    if (stereo) {
      ret = HPF_Config(h->eq_inst[1], h->hpf_config.cutoff_frequency);
      if (ret != _ALGO_EQ_RET_SUCCESS) {
        ALGO_ERR(lv, "[HPF]Fail! Channel 2 Config fail.\t\n");
        return EQ_ConvertReturnValue(ret);
      }
    }
  }
  h->is_eq_config_status = 1;
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_GetConfig(EQ_HANDLE handle, AudioEqInit* eq_init, AudioHpfConfig* hpf_config,
                             AudioEqConfig* eq_config) {
  if (handle == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  AudioEqInternel* h = (AudioEqInternel*)handle;
  if (RefuseBeforeConfig(h, __func__)) return ALGO_EQ_RET_INVALID_CALLING;
  if (eq_init != NULL) {
    eq_init->channel = h->eq_init.channel;
    eq_init->point_number = h->eq_init.point_number;
    eq_init->sample_rate = (ZEB_EQ_SAMPLE_RATE)h->eq_init.sample_rate;
  }
  if (hpf_config != NULL) {
    hpf_config->hpf_enable = h->hpf_config.hpf_enable;
    hpf_config->user_mode = h->hpf_config.user_mode;
    SetEnumFieldValue(&hpf_config->cutoff_frequency, (int)h->hpf_config.cutoff_frequency);
  }
  if (eq_config != NULL) {
    eq_config->eq_enable = h->eq_config.eq_enable;
    eq_config->user_mode = h->eq_config.user_mode;
    memcpy(eq_config->eq_gain_db, h->eq_config.eq_gain_db, sizeof(eq_config->eq_gain_db));
  }
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_Run(EQ_HANDLE handle, short int* pss_audio_in) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  const int lv = HandleLevel(h);
  if (h->check_number != ALGO_CHECK_NUMBER) {
    ALGO_ERR(lv, "[%s]Fail! The eq handle is dirty in ZebEq_Run.\t\n", __func__);
    return ALGO_EQ_RET_INVALID_HANDLE;
  }
  if (RefuseBeforeConfig(h, __func__)) return ALGO_EQ_RET_INVALID_CALLING;
  if (h->is_run_status != 0) return ALGO_EQ_RET_API_CONFLICT;
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! Input data is NULL in ZebEq_Run.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  h->is_run_status = 1;
  // From here on a failure leaves the handle marked as running.
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init in ZebEq_Run error.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  for (int c = 0; c < (int)h->eq_init.channel; ++c) {
    if (RunChannel(h, pss_audio_in, c) != 0) return ALGO_HPF_RET_INVALID_TABLE;
  }
  // Comfort noise (cng_enable) is added here once comfort noise is built.
  h->is_run_status = 0;
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_Free(EQ_HANDLE handle) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  if (RefuseBeforeInit(h, __func__)) return ALGO_EQ_RET_INVALID_CALLING;
  if (h->is_run_status != 0) return ALGO_EQ_RET_API_CONFLICT;
  h->is_run_status = 1;
  fft_Free(&h->FFT_workingBuff);
  DebugDumpDataFree(h);
  h->is_eq_init_status = 0;
  h->is_run_status = 0;
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_FilterDesign(EQ_HANDLE handle, int filter_cnt, AudioFilterConfig* filter_config) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  const int lv = HandleLevel(h);
  if (h->is_eq_init_status == 0) {
    ALGO_ERR(lv, "[%s]Fail! Need init before FilterDesign.\t\n", __func__);
    return ALGO_EQ_RET_INVALID_CALLING;
  }
  if (filter_config == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The filter_config is NULL.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  if (EQ_DesignUserFilter(h->eq_inst, h->eq_init.channel, filter_cnt, filter_config) != 0) {
    return ALGO_EQ_RET_FAILED;
  }
  h->iir_enable = 1;
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_FilterApply(EQ_HANDLE handle, short int* pss_audio_in) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  const int lv = HandleLevel(h);
  if (h->is_eq_init_status == 0) {
    ALGO_ERR_ALWAYS("[%s]Fail! Need init before FilterApply.\t\n", __func__);
    return ALGO_EQ_RET_INVALID_CALLING;
  }
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! Input data is NULL in ZebEq_FilterApply.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init in ZebEq_Run error.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  const int pn = (int)h->eq_init.point_number;
  const int channels = (int)h->eq_init.channel;
  short tmp_data[EQ_MAX_CHANNELS][EQ_FRAME_LEN_SAMPLES];
  RearranegOneArrayToMultipleChannel(pss_audio_in, &tmp_data[0][0], pn, channels);
  // As designed, every pass takes the first instance and the caller's
  // buffer, and the buffer is then rewritten from the copy: the frame comes
  // back as given and only the section delays advance.
  for (int c = 0; c < channels; ++c) InfiniteImpulseResponseFilter(h->eq_inst[0], pss_audio_in);
  RearrangeMultipleChannelDataToOneArray(&tmp_data[0][0], pss_audio_in, pn, channels);
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_FilterFreqz(EQ_HANDLE handle, float* frequency_response) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  if (frequency_response == NULL) {
    ALGO_ERR(HandleLevel(h), "[%s]Fail! The frequency_response is NULL.\t\n", __func__);
    return ALGO_EQ_RET_FAILED;
  }
  // A buffer never initialised has no instance: nothing designed, all 0.
  EQ_SumDesignedResponses(h->eq_inst[0], frequency_response);
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_SetHandleId(EQ_HANDLE handle, int id) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  const int lv = HandleLevel(h);
  if (id > EQ_MAX_DUMP_ID) {
    ALGO_WRN(lv, "[%s]Warning! The eq handle id exceed 100.\t\n", __func__);
    id = EQ_MAX_DUMP_ID;
  } else if (id < 0) {
    ALGO_WRN(lv, "[%s]Warning! The eq handle id is negative number.\t\n", __func__);
    id = 0;
  }
  h->dump_id = id;
  ALGO_MSG(lv, "[%s]Set the eq handle id as %d.\t\n", __func__, id);
  return ALGO_EQ_RET_SUCCESS;
}

ALGO_EQ_RET _ZebEq_EnableComfortNoise(EQ_HANDLE handle, int enable, int dB) {
  AudioEqInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_EQ_RET_INVALID_HANDLE;
  h->cng_enable = enable;
  CNG_SetFloorDb(h->cng_working_buffer[0], h->cng_working_buffer[1], h->eq_init.channel, dB);
  ALGO_MSG(HandleLevel(h), "[EQ] Comfort noise enable.\t\n");
  return ALGO_EQ_RET_SUCCESS;
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
