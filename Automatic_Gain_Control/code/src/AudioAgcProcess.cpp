// The stand-alone gain control family, ZebAgc_*: an instance in the caller's
// working buffer running the time-domain core (user_mode 1) or the
// three-band frequency-domain processor (user_mode 2) on frames of 128
// samples per channel. Each exported function forwards unchanged to its
// internal _ZebAgc_* counterpart; Reset runs the Init body.
#include "AudioAgcProcess.h"

#include <stdint.h>
#include <string.h>

#include "debug_msglevel.h"
#include "frame_stage.h"
#include "work_buffer.h"

namespace {

constexpr unsigned int kFrameLenSamples = 128;
constexpr unsigned int kAltFrameLenSamples64 = 64;
constexpr unsigned int kAltFrameLenSamples32 = 32;
constexpr int kFftLenSamples = 256;
constexpr int kCurvePointsMax = AGC_CURVE_POINTS_MAX;
constexpr int kHandleIdMax = 100;

static_assert(kFftLenSamples == FRAME_STAGE_FFT_LEN_SAMPLES, "the shared frame steps run 256 points");

// The record, both cores, both frequency processors, the parameter block,
// three transform states and the comfort noise, in this order.
size_t WalkLayout(char* base, AudioAgcInternel* h) {
  Carver c(base);
  c.Take<AudioAgcInternel>();
  AGCinst_t* core0 = c.Take<AGCinst_t>();
  AGCinst_t* core1 = c.Take<AGCinst_t>();
  FreqAgcHandle* freq0 = c.Take<FreqAgcHandle>();
  FreqAgcHandle* freq1 = c.Take<FreqAgcHandle>();
  postInfo_t* post = c.Take<postInfo_t>();
  const size_t fftBytes = FFT_GetBufferSize(kFftLenSamples);
  ne10_fft_r2c_state_float32_t* fft0 = c.Take<ne10_fft_r2c_state_float32_t>(fftBytes);
  ne10_fft_r2c_state_float32_t* fft1 = c.Take<ne10_fft_r2c_state_float32_t>(fftBytes);
  ne10_fft_r2c_state_float32_t* fftOwn = c.Take<ne10_fft_r2c_state_float32_t>(fftBytes);
  cng_t* cng0 = c.Take<cng_t>();
  cng_t* cng1 = c.Take<cng_t>();
  if (h != NULL) {
    h->agc_inst[0] = core0;
    h->agc_inst[1] = core1;
    h->freq_agc_inst[0] = freq0;
    h->freq_agc_inst[1] = freq1;
    h->postInfo = post;
    freq0->FFT_workingBuff.fft_Ne10_cfg = fft0;
    freq1->FFT_workingBuff.fft_Ne10_cfg = fft1;
    h->FFT_workingBuff.fft_Ne10_cfg = fftOwn;
    h->cng_working_buffer[0] = cng0;
    h->cng_working_buffer[1] = cng1;
  }
  return c.size();
}

// Stage result to public result. The frequency band has no public code and
// falls through to FAILED, as do the two codes whose public names differ.
ALGO_AGC_RET AGC_ConvertReturnValue(int ret) {
  switch (ret) {
    case _ALGO_AGC_RET_SUCCESS: return ALGO_AGC_RET_SUCCESS;
    case _ALGO_AGC_RET_INIT_ERROR: return ALGO_AGC_RET_INIT_ERROR;
    case _ALGO_AGC_RET_INVALID_HANDLE: return ALGO_AGC_RET_INVALID_HANDLE;
    case _ALGO_AGC_RET_INVALID_SAMPLE_RATE: return ALGO_AGC_RET_INVALID_SAMPLE_RATE;
    case _ALGO_AGC_RET_INVALID_POINT_NUMBER: return ALGO_AGC_RET_INVALID_POINT_NUMBER;
    case _ALGO_AGC_RET_INVALID_CHANNEL: return ALGO_AGC_RET_INVALID_CHANNEL;
    case _ALGO_AGC_RET_INVALID_ENABLE: return ALGO_AGC_RET_INVALID_ENABLE;
    case _ALGO_AGC_RET_INVALID_MODE: return ALGO_AGC_RET_INVALID_MODE;
    case _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO: return ALGO_AGC_RET_INVALID_COMPRESSION_RATIO;
    case _ALGO_AGC_RET_INVALID_DROP_GAIN_MAX: return ALGO_AGC_RET_INVALID_DROP_GAIN_MAX;
    case _ALGO_AGC_RET_INVALID_GAIN_STEP: return ALGO_AGC_RET_INVALID_GAIN_STEP;
    case _ALGO_AGC_RET_INVALID_RELEASE_TIME: return ALGO_AGC_RET_INVALID_RELEASE_TIME;
    case _ALGO_AGC_RET_INVALID_ATTACK_TIME: return ALGO_AGC_RET_INVALID_ATTACK_TIME;
    case _ALGO_AGC_RET_INVALID_NOISE_GATE: return ALGO_AGC_RET_INVALID_NOISE_GATE;
    case _ALGO_AGC_RET_INVALID_NOISE_ATTENU: return ALGO_AGC_RET_INVALID_NOISE_ATTENU;
    case _ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL: return ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL;
    case _ALGO_AGC_RET_INVALID_GAIN_INFO: return ALGO_AGC_RET_INVALID_GAIN_INFO;
    default: return ALGO_AGC_RET_FAILED;
  }
}

// The family's level lives in the first core; a buffer that never went
// through Init has no core yet.
int Level(const AudioAgcInternel* h) {
  return h->agc_inst[0] != NULL ? h->agc_inst[0]->dbg_level : ALGO_MSG_LEVEL_DEFAULT;
}

// Entry guards. func is the caller's own name, __func__, which the messages
// show; the public name is func + 1.
AudioAgcInternel* HandleOrReport(AGC_HANDLE handle, const char* func) {
  if (handle == NULL) ALGO_ERR_ALWAYS("[%s]Fail! The agc handle is NULL\t\n", func);
  return (AudioAgcInternel*)handle;
}

bool RefuseBeforeInit(const AudioAgcInternel* h, const char* func) {
  if (h->is_agc_init_status != 0) return false;
  ALGO_ERR(Level(h), "[%s]Fail! Need init before %s\t\n", func, func + 1);
  return true;
}

bool RefuseBeforeConfig(const AudioAgcInternel* h, const char* func) {
  if (h->is_agc_config_status != 0) return false;
  ALGO_ERR(Level(h), "[%s]Fail! Need config before %s\t\n", func, func + 1);
  return true;
}

// Raw-audio dumps are not carried by this build: nothing to open or close.
int DebugDumpDataInit(AudioAgcInternel* /*h*/) { return 0; }
void DebugDumpDataFree(AudioAgcInternel* /*h*/) {}
void DumpFrame(FILE* file, const short* frame, size_t samples) {
  if (file != NULL) fwrite(frame, sizeof(short), samples, file);
}

int ChannelCount(const AudioAgcInternel* h) { return h->channel == 2 ? 2 : 1; }

// Mode 2, one channel: window, transform, band gains, inverse, window and
// overlap-add into the caller's frame, then keep the new tail.
void RunFrequencyChannel(AudioAgcInternel* h, short* pss_audio_in, int c) {
  const int pn = (int)h->point_number;
  postInfo_t* post = h->postInfo;
  FrameStage_LoadHistory(post, h->pssAudioIn[c], pss_audio_in, c, h->channel, kFftLenSamples, pn);
  float* buf = h->fft_win_buf_2ch[c];
  FrameStage_ToFloat(h->pssAudioIn[c], buf, kFftLenSamples);
  FrameStage_Forward(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  // The processor measures the raw 256 samples and changes the spectrum.
  freqDomainAgcProcess(h->freq_agc_inst[c], h->pssAudioIn[c], buf);
  FrameStage_Inverse(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  FrameStage_OverlapAdd(post, buf, h->ifft_out_half_prev_2ch[c], pss_audio_in, h->channel, c, kFftLenSamples, pn);
}

// Mode 1, one channel: per core block the gain comes from the block's newest
// half; blocks overlap by half, so gain changes cross-fade over a block.
void RunTimeChannel(AudioAgcInternel* h, short* pss_audio_in, int c) {
  AGC_ProcessFrameBlocks(h->agc_inst[c], h->postInfo, h->pssAudioIn[c], h->agc_win_buf_2ch[c],
                         h->agc_out_half_prev_2ch[c], pss_audio_in, h->channel, c, h->start_flag);
}

// The first Run after Init passes the frame at unity gain.
void UpdateStartFlag(AudioAgcInternel* h) {
  if (h->frame_cnt == 0) {
    if (Counter16Add(&h->frame_cnt, h->point_number)) {
      ALGO_WRN(Level(h), "[%s]Warning! frame_cnt is reset.\t\n", "_ZebAgc_Run");
    }
  } else {
    h->start_flag = 1;
  }
}

typedef _ALGO_AGC_RET (*FreqCurveSetter)(FreqAgcHandle*, int*, int*);

// The three per-band curve setters share their guards.
ALGO_AGC_RET SetBandCurve(AGC_HANDLE handle, int* in, int* out, FreqCurveSetter setter, const char* name) {
  if (handle == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The AGC handle is NULL\t\n", name);
    return ALGO_AGC_RET_INVALID_HANDLE;
  }
  AudioAgcInternel* h = (AudioAgcInternel*)handle;
  const int lv = Level(h);
  if (h->is_agc_init_status == 0) {
    ALGO_ERR(lv, "[%s]Fail! Need init\t\n", name);
    return ALGO_AGC_RET_INVALID_CALLING;
  }
  if (in == NULL || out == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The compression ratio curve is NULL\t\n", name);
    return ALGO_AGC_RET_FAILED;
  }
  for (int c = 0; c < ChannelCount(h); ++c) {
    const _ALGO_AGC_RET ret = setter(h->freq_agc_inst[c], in, out);
    if (ret != _ALGO_AGC_RET_SUCCESS) {
      ALGO_ERR(lv, "[AGC]Config Fail!!\n");
      h->is_agc_config_status = 0;
      return AGC_ConvertReturnValue(ret);
    }
  }
  return ALGO_AGC_RET_SUCCESS;
}

}  // namespace

extern "C" {

AudioAgcInternel* AGC_AllocateWorkingBufferAddressPartial(char* workingBufferAddress, int dbg_level) {
  if (workingBufferAddress == NULL) {
    ALGO_ERR(dbg_level, "[AGC]Fail! The workingBufferAddress is NULL\t\n");
    return NULL;
  }
  AudioAgcInternel* h = (AudioAgcInternel*)workingBufferAddress;
  WalkLayout(workingBufferAddress, h);
  return h;
}

_ALGO_AGC_RET AGC_CheckInitParameter(AudioAgcInit* agc_init, int dbg_level) {
  const unsigned int pn = agc_init->point_number;
  if (pn != kFrameLenSamples && pn != kAltFrameLenSamples64 && pn != kAltFrameLenSamples32) {
    ALGO_ERR(dbg_level, "[AGC]This AGC Lib only support point_number = %d or %d or %d....\t\n",
             (int)kFrameLenSamples, (int)kAltFrameLenSamples64, (int)kAltFrameLenSamples32);
    return _ALGO_AGC_RET_INVALID_POINT_NUMBER;
  }
  if (agc_init->channel != 1 && agc_init->channel != 2) {
    ALGO_ERR(dbg_level, "[ANR]This AGC Lib only support mono or stereo ....\r\n");
    return _ALGO_AGC_RET_INVALID_CHANNEL;
  }
  switch (EnumFieldValue(agc_init->sample_rate)) {
    case ZEB_AGC_SAMPLE_RATE_8000:
    case ZEB_AGC_SAMPLE_RATE_16000:
    case ZEB_AGC_SAMPLE_RATE_32000:
    case ZEB_AGC_SAMPLE_RATE_48000:
      return _ALGO_AGC_RET_SUCCESS;
    default:
      ALGO_ERR(dbg_level, "[AGC]This AGC Lib only support sample rate 8K 16K 48K....\r\n");
      return _ALGO_AGC_RET_INVALID_SAMPLE_RATE;
  }
}

unsigned int _ZebAgc_GetBufferSize(void) {
  return (unsigned int)WalkLayout(NULL, NULL);
}

AGC_HANDLE _ZebAgc_Init(char* working_buffer_address, AudioAgcInit* agc_init) {
  const int lv = DynamicMessageLevel();
  if (working_buffer_address == NULL || agc_init == NULL) {
    ALGO_ERR(lv, "[AGC]Fail! The workingBufferAddress or agc_init is NULL\t\n");
    return NULL;
  }
  if ((uintptr_t)working_buffer_address % kWorkBlockAlignBytes != 0) {
    ALGO_ERR(lv, "[AGC]Fail! The workingBufferAddress is not aligned to %d bytes\t\n", (int)kWorkBlockAlignBytes);
    return NULL;
  }
  ALGO_MSG(lv, "[AGC]FFT mode: floating point mode\r\n");
  // The init record may lie inside the buffer about to be cleared.
  AudioAgcInit init = *agc_init;
  memset(working_buffer_address, 0, _ZebAgc_GetBufferSize());
  AudioAgcInternel* h = AGC_AllocateWorkingBufferAddressPartial(working_buffer_address, lv);
  h->agc_inst[0]->dbg_level = lv;
  h->freq_agc_inst[0]->dbg_level = lv;
  if (init.channel == 2) {
    h->agc_inst[1]->dbg_level = lv;
    h->freq_agc_inst[1]->dbg_level = lv;
  }
  h->check_number = ALGO_CHECK_NUMBER;
  if (AGC_CheckInitParameter(&init, lv) != _ALGO_AGC_RET_SUCCESS) return NULL;
  h->point_number = init.point_number;
  h->channel = init.channel;
  h->sample_rate = init.sample_rate;
  ALGO_MSG(lv, "[AGC]Point Number: %d\r\n", (int)init.point_number);
  ALGO_MSG(lv, "[AGC]Channel: %d\r\n", (int)init.channel);
  ALGO_MSG(lv, "[AGC]Sample rate: %d\r\n", (int)init.sample_rate);

  memset(h->pssAudioIn, 0, sizeof(h->pssAudioIn));
  memset(h->mic_buf_ori, 0, sizeof(h->mic_buf_ori));
  memset(h->ifft_out_half_prev_2ch, 0, sizeof(h->ifft_out_half_prev_2ch));
  memset(h->fft_win_buf_2ch, 0, sizeof(h->fft_win_buf_2ch));
  FrameStage_InitTransform(&h->FFT_workingBuff, lv);

  // The core frame accepts 128 or 256 while the init check accepts 128, 64
  // or 32: only 128 gets through both.
  const int frame = AGC_GetFrameSizeBySamplingRate((int)init.sample_rate, (int)init.point_number, lv);
  _AudioAgcInit coreInit;
  AGC_CopyInitRecord(&coreInit, &init);
  int sum = AGC_SetWindowByFrameSize(h->agc_inst[0], frame);
  sum += AGC_SetWindowByFrameSize(h->agc_inst[1], frame);
  sum += AGC_Init(h->agc_inst[0], frame);
  sum += (int)freqDomainAgcInit(h->freq_agc_inst[0], &coreInit);
  if (init.channel == 2) {
    sum += AGC_Init(h->agc_inst[1], frame);
    sum += (int)freqDomainAgcInit(h->freq_agc_inst[1], &coreInit);
  }
  if (sum != 0) {
    ALGO_ERR(lv, "[AGC]Fail! AGC internal initialize error\r\n");
    return NULL;
  }
  ALGO_MSG(lv, "[AGC]AGC internal initialize succeed\r\n");
  h->is_run_status = 0;
  h->is_agc_config_status = 0;
  h->is_agc_init_status = 1;
  return h;
}

ALGO_AGC_RET _ZebAgc_Config(AGC_HANDLE handle, AudioAgcConfig* agc_config) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (RefuseBeforeInit(h, __func__)) return ALGO_AGC_RET_INVALID_CALLING;
  if (agc_config == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The agc_config is NULL\t\n", __func__);
    return ALGO_AGC_RET_FAILED;
  }
  AudioAgcInit init = {h->point_number, h->channel, h->sample_rate};
  _ALGO_AGC_RET ret = AGC_CheckInitParameter(&init, lv);
  if (ret != _ALGO_AGC_RET_SUCCESS) return AGC_ConvertReturnValue(ret);
  // Stored before the engines validate it: a refused record stays in place.
  AGC_CopyUserConfig(&h->agc_config, agc_config);
  const int channels = ChannelCount(h);
  if (h->agc_config.user_mode == 1) {
    for (int c = 0; c < channels; ++c) {
      ret = AGC_Config(h->agc_inst[c], &h->agc_config);
      if (ret != _ALGO_AGC_RET_SUCCESS) {
        if (c == 0) {
          ALGO_ERR(lv, "[AGC]Config Fail!!\n");
        } else {
          ALGO_ERR(lv, "[AGC]Channel 2 Config Fail!!\n");
        }
        return AGC_ConvertReturnValue(ret);
      }
    }
  } else if (h->agc_config.user_mode == 2) {
    for (int c = 0; c < channels; ++c) {
      ret = freqDomainAgcConfig(h->freq_agc_inst[c], &h->agc_config);
      if (ret != _ALGO_AGC_RET_SUCCESS) {
        if (c == 0) {
          ALGO_ERR(lv, "[AGC]Mode 2 Config Fail!!\n");
        } else {
          ALGO_ERR(lv, "[AGC]Mode 2 Channel 2 Config Fail!!\n");
        }
        return AGC_ConvertReturnValue(ret);
      }
    }
  }
  h->is_agc_config_status = 1;
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_GetConfig(AGC_HANDLE handle, AudioAgcInit* agc_init, AudioAgcConfig* agc_config) {
  // A NULL handle is refused without a text here, unlike Config and Run.
  if (handle == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  AudioAgcInternel* h = (AudioAgcInternel*)handle;
  if (RefuseBeforeConfig(h, __func__)) return ALGO_AGC_RET_INVALID_CALLING;
  if (agc_init != NULL) {
    agc_init->point_number = h->point_number;
    agc_init->channel = h->channel;
    agc_init->sample_rate = h->sample_rate;
  }
  if (agc_config != NULL) AGC_CopyUserConfigOut(agc_config, &h->agc_config);
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_Run(AGC_HANDLE handle, short int* pss_audio_in) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (h->check_number != ALGO_CHECK_NUMBER) {
    ALGO_ERR(lv, "[%s]Fail! The agc handle is dirty in ZebAgc_Run\t\n", __func__);
    return ALGO_AGC_RET_INVALID_HANDLE;
  }
  if (RefuseBeforeConfig(h, __func__)) return ALGO_AGC_RET_INVALID_CALLING;
  // A missing frame is refused before any state moves, so nothing is lost.
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The pss_audio_in is NULL\t\n", __func__);
    return ALGO_AGC_RET_FAILED;
  }
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init in ZebAgc_Run error\t\n", __func__);
    return ALGO_AGC_RET_FAILED;
  }
  const size_t frameSamples = (size_t)h->point_number * h->channel;
  if (h->dump_flag) DumpFrame(h->input_dump, pss_audio_in, frameSamples);
  if (h->is_run_status != 0) return ALGO_AGC_RET_API_CONFLICT;
  h->is_run_status = 1;

  const _AudioAgcConfig& cfg = h->agc_config;
  const int channels = ChannelCount(h);
  if (cfg.agc_enable && cfg.user_mode == 2) {
    for (int c = 0; c < channels; ++c) RunFrequencyChannel(h, pss_audio_in, c);
  } else if (cfg.agc_enable && cfg.user_mode == 1) {
    UpdateStartFlag(h);
    for (int c = 0; c < channels; ++c) RunTimeChannel(h, pss_audio_in, c);
  }
  h->is_run_status = 0;
  if (h->dump_flag) DumpFrame(h->output_dump, pss_audio_in, frameSamples);
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_Free(AGC_HANDLE handle) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  if (RefuseBeforeInit(h, __func__)) return ALGO_AGC_RET_INVALID_CALLING;
  if (h->is_run_status != 0) return ALGO_AGC_RET_API_CONFLICT;
  h->is_run_status = 1;
  // The transform states stay marked as initialised until the next Init
  // clears the buffer: this family makes no fft_Free call.
  DebugDumpDataFree(h);
  h->is_agc_init_status = 0;
  h->is_run_status = 0;
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_SetAgcFreqBand(AGC_HANDLE handle, int* frequency_band) {
  if (handle == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The KOL handle is NULL\t\n", __func__);
    return ALGO_AGC_RET_INVALID_HANDLE;
  }
  AudioAgcInternel* h = (AudioAgcInternel*)handle;
  const int lv = Level(h);
  if (h->is_agc_init_status == 0) {
    // The family borrows the chain's words here.
    ALGO_ERR(lv, "[%s]Fail! Need init before ZebKol_SetLowFreqCompressionRatioCurve\t\n", __func__);
    return ALGO_AGC_RET_INVALID_CALLING;
  }
  if (frequency_band == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The frequency_band is NULL\t\n", __func__);
    return ALGO_AGC_RET_FAILED;
  }
  for (int c = 0; c < ChannelCount(h); ++c) {
    const _ALGO_AGC_RET ret = SetFreqBand(h->freq_agc_inst[c], frequency_band);
    if (ret != _ALGO_AGC_RET_SUCCESS) {
      ALGO_ERR(lv, "[AGC]Config Fail!!\n");
      h->is_agc_config_status = 0;
      return AGC_ConvertReturnValue(ret);
    }
  }
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_SetLowFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetLowFreqCompressionRatioCurve, __func__);
}

ALGO_AGC_RET _ZebAgc_SetMidFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetMidFreqCompressionRatioCurve, __func__);
}

ALGO_AGC_RET _ZebAgc_SetHighFreqCompressionRatioCurve(AGC_HANDLE handle, int* CompressRatioInput,
                                                      int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetHighFreqCompressionRatioCurve, __func__);
}

ALGO_AGC_RET _ZebAgc_SetCompressionRatioCurve(AGC_HANDLE handle, short int* CompressRatioInput,
                                              short int* CompressRatioOutput, int curve_len) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (RefuseBeforeInit(h, __func__)) return ALGO_AGC_RET_INVALID_CALLING;
  // The cores hold at most 20 points; a longer curve would overrun them.
  if (curve_len > kCurvePointsMax) {
    ALGO_ERR(lv, "[%s]Fail! curve_len %d exceeds %d\t\n", __func__, curve_len, kCurvePointsMax);
    return ALGO_AGC_RET_FAILED;
  }
  if (CompressRatioInput == NULL || CompressRatioOutput == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The compression ratio curve is NULL\t\n", __func__);
    return ALGO_AGC_RET_FAILED;
  }
  if (AGC_CompressionRatioCurveSettingCheck(CompressRatioInput, CompressRatioOutput, curve_len, lv) != 0) {
    return ALGO_AGC_RET_INVALID_COMPRESSION_RATIO;
  }
  if (h->channel != 1 && h->channel != 2) {
    ALGO_ERR(lv, "[%s]Fail! Channel num error\n", __func__);
    return ALGO_AGC_RET_INVALID_CHANNEL;
  }
  for (int c = 0; c < ChannelCount(h); ++c) {
    AGC_SetCompressionRatioValue(h->agc_inst[c], CompressRatioInput, CompressRatioOutput, curve_len);
  }
  ALGO_MSG(lv, "[%s]Set compression ratio curve succeed.\n", __func__);
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_SetHandleId(AGC_HANDLE handle, int id) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (id > kHandleIdMax) {
    ALGO_WRN(lv, "[%s]Warning! The agc handle id exceed 100\t\n", __func__);
    id = kHandleIdMax;
  } else if (id < 0) {
    ALGO_WRN(lv, "[%s]Warning! The agc handle id is negative number\t\n", __func__);
    id = 0;
  }
  h->dump_id = id;
  ALGO_MSG(lv, "[%s]Set the agc handle id as %d\t\n", __func__, id);
  return ALGO_AGC_RET_SUCCESS;
}

ALGO_AGC_RET _ZebAgc_EnableComfortNoise(AGC_HANDLE handle, int enable, int dB) {
  AudioAgcInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_AGC_RET_INVALID_HANDLE;
  h->cng_enable = enable;
  CNG_SetFloorDb(h->cng_working_buffer[0], h->cng_working_buffer[1], h->channel, dB);
  ALGO_PRINT_TAGGED("ALGO_MSG_MSG", "[AGC] Comfort noise enable.\t\n");
  return ALGO_AGC_RET_SUCCESS;
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

ALGO_AGC_RET ZebAgc_GetConfig(AGC_HANDLE handle, AudioAgcInit* agc_init, AudioAgcConfig* agc_config) {
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
