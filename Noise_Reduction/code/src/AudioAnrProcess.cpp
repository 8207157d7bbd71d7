// The stand-alone noise reduction family, ZebAnr_*: working-buffer layout,
// lifecycle and status guards, and the frame loop of window, transform,
// noise reducer, inverse transform and overlap-add. Each exported function
// forwards unchanged to its internal _ZebAnr_* counterpart.
#include "AudioAnrProcess.h"

#include <stddef.h>
#include <string.h>

#include "ComfortNoise.h"
#include "debug_msglevel.h"
#include "enum_field.h"
#include "frame_stage.h"
#include "nr_work_buffer.h"
#include "work_buffer.h"

namespace {

constexpr int kMaxChannels = ANR_MAX_CHANNELS;
constexpr int kFrameLenSamples = ANR_FRAME_LEN_SAMPLES;
constexpr int kFftLenSamples = ANR_FFT_LEN_SAMPLES;
constexpr int kNnFilterMode = 5;
constexpr int kMaxHandleId = 100;  // dump file numbers run 0..100

static_assert(kMaxChannels == NR_WORK_BUFFER_CHANNELS, "the family carves both noise reducers");
static_assert(kFftLenSamples == FRAME_STAGE_FFT_LEN_SAMPLES, "the shared frame steps run 256 points");

// The whole layout in its fixed order; h NULL only sizes it.
size_t WalkLayout(char* base, AudioAnrInternel* h) {
  Carver c(base);
  c.Take<AudioAnrInternel>();
  NSinst_t* nr[kMaxChannels];
  NR_CarveInstances(c, nr);
  cng_t* cng[kMaxChannels];
  for (int ch = 0; ch < kMaxChannels; ++ch) cng[ch] = c.Take<cng_t>();
  postInfo_t* post = c.Take<postInfo_t>();
  ne10_fft_r2c_state_float32_t* fft =
      c.Take<ne10_fft_r2c_state_float32_t>(FFT_GetBufferSize(kFftLenSamples));
  if (h != NULL) {
    h->nr_inst[0] = nr[0];
    h->nr_inst[1] = nr[1];
    h->cng_working_buffer[0] = cng[0];
    h->cng_working_buffer[1] = cng[1];
    h->postInfo = post;
    h->FFT_workingBuff.fft_Ne10_cfg = fft;
  }
  return c.size();
}

AudioAnrInternel* NR_AllocateWorkingBufferAddressPartial(char* working_buffer_address) {
  if (working_buffer_address == NULL) return NULL;
  AudioAnrInternel* h = reinterpret_cast<AudioAnrInternel*>(working_buffer_address);
  WalkLayout(working_buffer_address, h);
  return h;
}

// The core's result codes in the family's numbering: the first eleven match,
// the filter mode moves to 13, anything else is a failure.
ALGO_ANR_RET ANR_ConvertReturnValue(int ret) {
  if (ret >= _ALGO_ANR_RET_SUCCESS && ret <= _ALGO_ANR_RET_INVALID_CONVERGE_SPEED) {
    return (ALGO_ANR_RET)ret;
  }
  if (ret == _ALGO_ANR_RET_INVALID_FILTER_MODE) return ALGO_ANR_RET_INVALID_FILTER_MODE;
  return ALGO_ANR_RET_FAILED;
}

ALGO_ANR_RET NR_CheckInitParameter(const AudioAnrInit* anr_init, int dbg_level) {
  if (anr_init->point_number != (unsigned int)kFrameLenSamples) {
    ALGO_ERR(dbg_level,
             "[ANR]Fail! Unsupported point_number %d. This ANR Lib only support point_number = "
             "%d.\t\n",
             (int)anr_init->point_number, kFrameLenSamples);
    return ALGO_ANR_RET_INVALID_POINT_NUMBER;
  }
  if (anr_init->channel != 1 && anr_init->channel != 2) {
    ALGO_ERR(dbg_level,
             "[ANR]Fail! Unsupported channel %d. This ANR Lib only support mono or stereo.\t\n",
             (int)anr_init->channel);
    return ALGO_ANR_RET_INVALID_CHANNEL;
  }
  const int fs = EnumFieldValue(anr_init->sample_rate);
  if (fs != 8000 && fs != 16000 && fs != 32000 && fs != 48000) {
    ALGO_ERR(dbg_level,
             "[ANR]Fail! Unsupported sample_rate %d. This ANR Lib only support sample rate 8K 16K "
             "32K 48K.\t\n",
             fs);
    return ALGO_ANR_RET_INVALID_SAMPLE_RATE;
  }
  return ALGO_ANR_RET_SUCCESS;
}

AudioAnrInit PublicInit(const _AudioAnrInit& in) {
  AudioAnrInit out;
  out.point_number = in.point_number;
  out.channel = in.channel;
  SetEnumFieldValue(&out.sample_rate, in.sample_rate);
  return out;
}

_AudioAnrInit CoreInit(const AudioAnrInit& in) {
  _AudioAnrInit out;
  out.point_number = in.point_number;
  out.channel = in.channel;
  out.sample_rate = EnumFieldValue(in.sample_rate);
  return out;
}

// The level in force for a handle: that of its first noise reducer. A handle
// that never went through Init has none, and then every message shows.
int Level(const AudioAnrInternel* h) {
  return h->nr_inst[0] != NULL ? h->nr_inst[0]->dbg_level : ALGO_MSG_LEVEL_DEFAULT;
}

int Channels(const AudioAnrInternel* h) { return (int)h->anr_init.channel; }

// Entry guards. func is the caller's own name, __func__, which the messages
// show; the public name is func + 1.
AudioAnrInternel* HandleOrReport(ANR_HANDLE handle, const char* func) {
  if (handle == NULL) ALGO_ERR_ALWAYS("[%s]Fail! The anr handle is NULL.\t\n", func);
  return static_cast<AudioAnrInternel*>(handle);
}

bool RefuseBeforeInit(const AudioAnrInternel* h, const char* func) {
  if (h->is_anr_init_status != 0) return false;
  ALGO_ERR(Level(h), "[%s]Fail! Need init before %s.\t\n", func, func + 1);
  return true;
}

bool RefuseBeforeConfig(const AudioAnrInternel* h, const char* func) {
  if (h->is_anr_config_status != 0) return false;
  ALGO_ERR(Level(h), "[%s]Fail! Need config before %s.\t\n", func, func + 1);
  return true;
}

void ClearFrameBuffers(AudioAnrInternel* h) {
  memset(h->pssAudioIn, 0, sizeof(h->pssAudioIn));
  memset(h->mic_buf_ori, 0, sizeof(h->mic_buf_ori));
  memset(h->pssAudioOut, 0, sizeof(h->pssAudioOut));
  memset(h->fbf_ip, 0, sizeof(h->fbf_ip));
  memset(h->fft_win_buf_2ch, 0, sizeof(h->fft_win_buf_2ch));
  memset(h->fbf_wfft, 0, sizeof(h->fbf_wfft));
  memset(h->ifft_out_half_prev_2ch, 0, sizeof(h->ifft_out_half_prev_2ch));
  memset(h->fbf_ip_agc, 0, sizeof(h->fbf_ip_agc));
  memset(h->fft_win_buf_2ch_agc, 0, sizeof(h->fft_win_buf_2ch_agc));
  memset(h->fbf_wfft_agc, 0, sizeof(h->fbf_wfft_agc));
  memset(h->ifft_out_half_prev_2ch_agc, 0, sizeof(h->ifft_out_half_prev_2ch_agc));
  memset(h->counterNN, 0, sizeof(h->counterNN));
  memset(h->output_index, 0, sizeof(h->output_index));
  for (int ch = 0; ch < kMaxChannels; ++ch) h->input_index[ch] = kFrameLenSamples;
  memset(h->pssAudioInNN, 0, sizeof(h->pssAudioInNN));
  memset(h->pssAudioOutNN, 0, sizeof(h->pssAudioOutNN));
  memset(h->NN_buf_2ch, 0, sizeof(h->NN_buf_2ch));
  memset(h->pssAudioInSRC, 0, sizeof(h->pssAudioInSRC));
  memset(h->pssAudioOutSRC, 0, sizeof(h->pssAudioOutSRC));
  memset(h->src_out_tmp, 0, sizeof(h->src_out_tmp));
}

// Raw-audio dumps are not carried by this build: nothing to open or close.
int DebugDumpDataInit(AudioAnrInternel* /*h*/) { return 0; }
void DebugDumpDataFree(AudioAnrInternel* /*h*/) {}

// The tuning file reader is not carried by this build: no file is read.
unsigned int GetJsonFileSize(const char* /*jsonfile*/) { return 0; }
int NR_ReadJsonFile(NSinst_t* /*inst*/, char* /*jsonBuffer*/, char* /*jsonfile*/,
                    unsigned int /*buffSize*/) {
  return -1;
}

// The stream through one channel's frequency stage. Returns the core's result.
int RunChannel(AudioAnrInternel* h, short* pss_audio_in, int ch) {
  postInfo_t* post = h->postInfo;
  const int pn = (int)h->anr_init.point_number;
  const bool enabled = h->anr_config.anr_enable != 0;
  NSinst_t* nr = h->nr_inst[ch];
  float* buf = h->fft_win_buf_2ch[ch];

  FrameStage_LoadHistory(post, h->pssAudioIn[ch], pss_audio_in, ch, h->anr_init.channel, kFftLenSamples, pn);
  // The neural mode re-blocks into its own hops and is not part of this
  // build: its stream takes the plain path below with the spectrum untouched.
  memcpy(h->pssAudioOut[ch], h->pssAudioIn[ch], sizeof(h->pssAudioOut[ch]));

  const short* src = enabled ? h->pssAudioOut[ch] : h->pssAudioIn[ch];
  FrameStage_ToFloat(src, buf, kFftLenSamples);
  FrameStage_Forward(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  if (enabled && nr->filter_mode != kNnFilterMode) {
    const int ret = NR_Process(nr, buf);
    if (ret != _ALGO_ANR_RET_SUCCESS) return ret;
  }
  FrameStage_Inverse(&h->FFT_workingBuff, buf, h->fbf_ip, h->fbf_wfft);
  FrameStage_OverlapAdd(post, buf, h->ifft_out_half_prev_2ch[ch], pss_audio_in, h->anr_init.channel, ch,
                        kFftLenSamples, pn);
  return _ALGO_ANR_RET_SUCCESS;
}

}  // namespace

extern "C" {

// ================================================= lifecycle ==

unsigned int _ZebAnr_GetBufferSize(void) { return (unsigned int)WalkLayout(NULL, NULL); }

ANR_HANDLE _ZebAnr_Init(char* working_buffer_address, AudioAnrInit* anr_init) {
  const int lv = DynamicMessageLevel();
  if (working_buffer_address == NULL || anr_init == NULL) {
    ALGO_ERR(lv, "[ANR]Fail! The working_buffer_address or AudioAnrInit structure is NULL.\t\n");
    return NULL;
  }
  ALGO_MSG(lv, "[ANR]FFT mode: floating point mode.\t\n");
  memset(working_buffer_address, 0, _ZebAnr_GetBufferSize());
  AudioAnrInternel* h = NR_AllocateWorkingBufferAddressPartial(working_buffer_address);
  if (h == NULL) {
    ALGO_ERR(lv, "[ANR]Fail! Allocate address Error.\t\n");
    return NULL;
  }
  h->nr_inst[0]->dbg_level = lv;
  if (anr_init->channel == 2) h->nr_inst[1]->dbg_level = lv;
  h->check_number = ALGO_CHECK_NUMBER;
  if (NR_CheckInitParameter(anr_init, lv) != ALGO_ANR_RET_SUCCESS) {
    ALGO_ERR(lv, "[ANR]Fail! AudioAnrInit parameter error.\t\n");
    return NULL;
  }
  h->anr_init = CoreInit(*anr_init);
  ALGO_MSG(lv, "[ANR]Point Number: %d\t\n", (int)h->anr_init.point_number);
  ALGO_MSG(lv, "[ANR]Channel: %d\t\n", (int)h->anr_init.channel);
  ALGO_MSG(lv, "[ANR]Sample rate: %d\t\n", h->anr_init.sample_rate);

  ClearFrameBuffers(h);
  FrameStage_InitTransform(&h->FFT_workingBuff, lv);

  // Comfort noise is not part of this build: its per-channel records stay
  // as the clearing left them.
  int sum = NR_Init(h->nr_inst[0], &h->anr_init);
  if (Channels(h) == 2) sum += NR_Init(h->nr_inst[1], &h->anr_init);
  if (sum != 0) {
    ALGO_ERR(lv, "[ANR]Fail! ANR internal initialize error.\t\n");
    return NULL;
  }
  ALGO_MSG(lv, "[ANR]ANR internal initialize succeed.\t\n");
  h->input_dump = NULL;
  h->output_dump = NULL;
  h->is_anr_init_status = 1;
  return h;
}

ANR_HANDLE _ZebAnr_Reset(char* working_buffer_address, AudioAnrInit* anr_init) {
  return _ZebAnr_Init(working_buffer_address, anr_init);
}

ALGO_ANR_RET _ZebAnr_Free(ANR_HANDLE handle) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  if (RefuseBeforeInit(h, __func__)) return ALGO_ANR_RET_INVALID_CALLING;
  if (h->is_run_status != 0) return ALGO_ANR_RET_API_CONFLICT;
  h->is_run_status = 1;
  fft_Free(&h->FFT_workingBuff);
  DebugDumpDataFree(h);
  h->is_anr_init_status = 0;
  h->is_run_status = 0;
  // The neural denoiser holds nothing outside the buffer in this build.
  return ALGO_ANR_RET_SUCCESS;
}

// ============================================= configuration ==

ALGO_ANR_RET _ZebAnr_Config(ANR_HANDLE handle, AudioAnrConfig* anr_config) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (RefuseBeforeInit(h, __func__)) return ALGO_ANR_RET_INVALID_CALLING;
  const AudioAnrInit stored = PublicInit(h->anr_init);
  const ALGO_ANR_RET initRet = NR_CheckInitParameter(&stored, lv);
  if (initRet != ALGO_ANR_RET_SUCCESS) {
    ALGO_ERR(lv, "[%s]Fail! The anr init parameter error.\t\n", "_ZebAnr_Config");
    return initRet;
  }
  if (anr_config == NULL) {
    ALGO_ERR(lv, "[ANR]Fail! Config Fail.\t\n");
    return ANR_ConvertReturnValue(_ALGO_ANR_RET_INVALID_HANDLE);
  }
  // Stored before it is validated: a refused record still replaces the last one.
  _AudioAnrConfig* c = &h->anr_config;
  c->anr_enable = anr_config->anr_enable;
  c->user_mode = anr_config->user_mode;
  memcpy(c->anr_intensity_band, anr_config->anr_intensity_band, sizeof(c->anr_intensity_band));
  memcpy(c->anr_intensity, anr_config->anr_intensity, sizeof(c->anr_intensity));
  c->anr_smooth_level = anr_config->anr_smooth_level;
  c->anr_converge_speed = EnumFieldValue(anr_config->anr_converge_speed);
  c->anr_filter_mode = anr_config->anr_filter_mode;

  int ret = NR_Config(h->nr_inst[0], c);
  if (ret != _ALGO_ANR_RET_SUCCESS) {
    ALGO_ERR(lv, "[ANR]Fail! Config Fail.\t\n");
    return ANR_ConvertReturnValue(ret);
  }
  if (Channels(h) == 2) {
    ret = NR_Config(h->nr_inst[1], c);
    if (ret != _ALGO_ANR_RET_SUCCESS) {
      ALGO_ERR(lv, "[ANR]Fail! Channel 2 Config Fail.\t\n");
      return ANR_ConvertReturnValue(ret);
    }
  }
  h->is_anr_config_status = 1;
  return ALGO_ANR_RET_SUCCESS;
}

ALGO_ANR_RET _ZebAnr_GetConfig(ANR_HANDLE handle, AudioAnrInit* anr_init,
                               AudioAnrConfig* anr_config) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  if (RefuseBeforeConfig(h, __func__)) return ALGO_ANR_RET_INVALID_CALLING;
  if (anr_init != NULL) *anr_init = PublicInit(h->anr_init);
  if (anr_config != NULL) {
    const _AudioAnrConfig* c = &h->anr_config;
    anr_config->anr_enable = c->anr_enable;
    anr_config->user_mode = c->user_mode;
    memcpy(anr_config->anr_intensity_band, c->anr_intensity_band, sizeof(c->anr_intensity_band));
    memcpy(anr_config->anr_intensity, c->anr_intensity, sizeof(c->anr_intensity));
    anr_config->anr_smooth_level = c->anr_smooth_level;
    SetEnumFieldValue(&anr_config->anr_converge_speed, c->anr_converge_speed);
    anr_config->anr_filter_mode = c->anr_filter_mode;
  }
  return ALGO_ANR_RET_SUCCESS;
}

// ===================================================== frame ==

ALGO_ANR_RET _ZebAnr_Run(ANR_HANDLE handle, short* pss_audio_in) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  if (h->check_number != ALGO_CHECK_NUMBER) {
    // Nothing in a dirty record can be trusted, its level included.
    ALGO_ERR_ALWAYS("[%s]Fail! The anr handle is dirty.\t\n", "_ZebAnr_Run");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  const int lv = Level(h);
  if (RefuseBeforeConfig(h, __func__)) return ALGO_ANR_RET_INVALID_CALLING;
  // A missing frame is refused before any state moves, so nothing is lost.
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The pss_audio_in is NULL.\t\n", "_ZebAnr_Run");
    return ALGO_ANR_RET_FAILED;
  }
  if (h->is_run_status != 0) return ALGO_ANR_RET_API_CONFLICT;
  h->is_run_status = 1;
  // From here on a failure leaves is_run_status set: the handle stays
  // blocked until the next Init.
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init error.\t\n", "_ZebAnr_Run");
    return ALGO_ANR_RET_FAILED;
  }
  for (int ch = 0; ch < Channels(h); ++ch) {
    const int ret = RunChannel(h, pss_audio_in, ch);
    if (ret != _ALGO_ANR_RET_SUCCESS) {
      ALGO_ERR(lv, "[%s]Fail! NR process is error.\t\n", "_ZebAnr_Run");
      return ANR_ConvertReturnValue(ret);
    }
  }
  // Comfort noise is not part of this build: cng_enable adds nothing yet.
  h->is_run_status = 0;
  return ALGO_ANR_RET_SUCCESS;
}

// ================================================ auxiliaries ==

ALGO_ANR_RET _ZebAnr_EnhanceNNBFMode(ANR_HANDLE handle, ANR_BF_HANDLE handle2, int is_enable) {
  if (handle == NULL || handle2 == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The anr handle or anr_bf handle is NULL.\t\n",
                    "_ZebAnr_EnhanceNNBFMode");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  AudioAnrInternel* h = static_cast<AudioAnrInternel*>(handle);
  const int lv = Level(h);
  if (h->is_anr_init_status == 0) {
    ALGO_ERR(lv, "[%s]Fail! Need init before ZebAnr_EnhanceNNBFMode.\t\n",
             "_ZebAnr_EnhanceNNBFMode");
    return ALGO_ANR_RET_INVALID_CALLING;
  }
  if (is_enable != 0 && is_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! The is_enable should be set by 0 or 1.\t\n", "_ZebAnr_EnhanceNNBFMode");
    return ALGO_ANR_RET_FAILED;
  }
  if (h->anr_config.anr_enable == 0) {
    ALGO_ERR(lv, "[%s]Fail! The nr module should be opened.\t\n", "_ZebAnr_EnhanceNNBFMode");
    return ALGO_ANR_RET_FAILED;
  }
  ALGO_WRN(lv, "[%s]Warning! Current lib does not contain EnhanceNNBFMode mode.\t\n",
           "_ZebAnr_EnhanceNNBFMode");
  return ALGO_ANR_RET_SUCCESS;
}

ALGO_ANR_RET _ZebAnr_SetHandleId(ANR_HANDLE handle, int id) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (id > kMaxHandleId) {
    ALGO_WRN(lv, "[%s]Warning! The anr handle id exceed 100.\t\n", "_ZebAnr_SetHandleId");
    id = kMaxHandleId;
  } else if (id < 0) {
    ALGO_WRN(lv, "[%s]Warning! The anr handle id is negative number.\t\n", "_ZebAnr_SetHandleId");
    id = 0;
  }
  h->dump_id = id;
  ALGO_MSG(lv, "[%s]Set the anr handle id as %d.\t\n", "_ZebAnr_SetHandleId", id);
  return ALGO_ANR_RET_SUCCESS;
}

unsigned int _ZebAnr_GetJsonFileSize(char* jsonfile) {
  const int lv = DynamicMessageLevel();
  if (jsonfile == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The path json file is invalid.\t\n", "_ZebAnr_GetJsonFileSize");
    return 0;
  }
  const unsigned int size = GetJsonFileSize(jsonfile);
  if (size == 0) {
    ALGO_ERR(lv, "[%s]Fail! Unable to fopen json file.\t\n", "_ZebAnr_GetJsonFileSize");
    return 0;
  }
  return size;
}

ALGO_ANR_RET _ZebAnr_ReadJson(ANR_HANDLE handle, char* jsonBuffer, char* jsonfile,
                              unsigned int buffSize) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  const int lv = Level(h);
  if (jsonBuffer == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The json buffer is NULL.\t\n", "_ZebAnr_ReadJson");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  if (jsonfile == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The path json file is invalid.\t\n", "_ZebAnr_ReadJson");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  if (NR_ReadJsonFile(h->nr_inst[0], jsonBuffer, jsonfile, buffSize) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Channel 1 read json file error.\t\n", "_ZebAnr_ReadJson");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  if (Channels(h) == 2 && NR_ReadJsonFile(h->nr_inst[1], jsonBuffer, jsonfile, buffSize) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Channel 2 read json file error.\t\n", "_ZebAnr_ReadJson");
    return ALGO_ANR_RET_INVALID_HANDLE;
  }
  return ALGO_ANR_RET_SUCCESS;
}

ALGO_ANR_RET _ZebAnr_EnableComfortNoise(ANR_HANDLE handle, int enable, int dB) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  h->cng_enable = enable;
  CNG_SetFloorDb(h->cng_working_buffer[0], h->cng_working_buffer[1], (unsigned int)Channels(h), dB);
  ALGO_MSG(Level(h), "[ANR] Comfort noise enable.\t\n");
  return ALGO_ANR_RET_SUCCESS;
}

ALGO_ANR_RET _ZebAnr_EnableAutoSmooth(ANR_HANDLE handle, int enable) {
  AudioAnrInternel* h = HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_ANR_RET_INVALID_HANDLE;
  for (int ch = 0; ch < Channels(h) && ch < kMaxChannels; ++ch) {
    if (h->nr_inst[ch] != NULL) h->nr_inst[ch]->AutoSmooth = enable;
  }
  ALGO_MSG(Level(h), "[ANR] AutoSmooth enable.\t\n");
  return ALGO_ANR_RET_SUCCESS;
}

// ============================== exported entry points: thin forwards ==

unsigned int ZebAnr_GetBufferSize(void) { return _ZebAnr_GetBufferSize(); }

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

ALGO_ANR_RET ZebAnr_Free(ANR_HANDLE handle) { return _ZebAnr_Free(handle); }

ALGO_ANR_RET ZebAnr_EnhanceNNBFMode(ANR_HANDLE handle, ANR_BF_HANDLE handle2, int is_enable) {
  return _ZebAnr_EnhanceNNBFMode(handle, handle2, is_enable);
}

ALGO_ANR_RET ZebAnr_SetHandleId(ANR_HANDLE handle, int id) {
  return _ZebAnr_SetHandleId(handle, id);
}

unsigned int ZebAnr_GetJsonFileSize(char* jsonfile) { return _ZebAnr_GetJsonFileSize(jsonfile); }

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
