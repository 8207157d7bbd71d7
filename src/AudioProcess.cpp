// The processing chain: handle lifecycle, configuration guards and the frame
// loop around the 256-point frequency stage.
#include "AudioProcess.h"

#include <stdint.h>
#include <string.h>

#include "AudioProcessWrapper.h"
#include "ComfortNoise.h"
#include "DynamicRangeProcessing.h"
#include "agc.h"
#include "debug_msglevel.h"
#include "enum_field.h"
#include "eq_filter.h"
#include "frame_stage.h"
#include "nr_core.h"
#include "nr_work_buffer.h"
#include "work_buffer.h"

namespace {

constexpr int kFrameLenSamples = KOL_FRAME_LEN_SAMPLES;
constexpr int kFftLenSamples = KOL_FFT_LEN_SAMPLES;
constexpr int kSpectrumFloats = KOL_SPECTRUM_FLOATS;
constexpr unsigned short kApiVersionMajor = 2;
constexpr unsigned short kApiVersionMinor = 3;
constexpr int kMaxHandleId = 100;  // dump file numbers run 0..100

static_assert(KOL_MAX_CHANNELS == NR_WORK_BUFFER_CHANNELS, "the chain carves both noise reducers");
static_assert(kFftLenSamples == FRAME_STAGE_FFT_LEN_SAMPLES, "the shared frame steps run 256 points");


// The high-pass stage takes the cut-off as its enumeration and checks it
// against its four choices before any table is looked up.
_ZEB_HPF_FREQ StoredCutoff(const AudioKolInternel* h) {
  return (_ZEB_HPF_FREQ)EnumFieldValue(h->hpf_config.cutoff_frequency);
}

void WalkNoiseReductionBlock(Carver& c, AudioKolInternel* h) {
  NSinst_t* nr[KOL_MAX_CHANNELS];
  NR_CarveInstances(c, nr);
  if (h != NULL) {
    for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) h->nr_inst[ch] = nr[ch];
  }
}

void WalkGainControlBlock(Carver& c, AudioKolInternel* h) {
  const bool set = h != NULL;
  for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) {
    AGCinst_t* p = c.Take<AGCinst_t>();
    if (set) h->agc_inst[ch] = p;
  }
  for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) {
    FreqAgcHandle* p = c.Take<FreqAgcHandle>();
    if (set) h->freq_agc_inst[ch] = p;
  }
  for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) {
    ne10_fft_r2c_state_float32_t* p = c.Take<ne10_fft_r2c_state_float32_t>(FFT_GetBufferSize(kFftLenSamples));
    if (set) h->freq_agc_inst[ch]->FFT_workingBuff.fft_Ne10_cfg = p;
  }
}

// The whole layout, in its fixed block order; h NULL only sizes it.
size_t WalkLayout(char* base, const AudioKolBufferConfig* kol_switch, AudioKolInternel* h) {
  Carver c(base);
  c.Take<AudioKolInternel>();
  if (kol_switch->anr_enable) {
    WalkNoiseReductionBlock(c, h);
  }
  if (kol_switch->eq_enable) {
    for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) {
      EQinst_t* p = c.Take<EQinst_t>();
      if (h != NULL) h->eq_inst[ch] = p;
    }
  }
  if (kol_switch->agc_enable) {
    WalkGainControlBlock(c, h);
  }
  postInfo_t* post = c.Take<postInfo_t>();
  cng_t* cng[KOL_MAX_CHANNELS];
  for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) cng[ch] = c.Take<cng_t>();
  ne10_fft_r2c_state_float32_t* fft = c.Take<ne10_fft_r2c_state_float32_t>(FFT_GetBufferSize(kFftLenSamples));
  if (h != NULL) {
    h->postInfo = post;
    h->cng_working_buffer[0] = cng[0];
    h->cng_working_buffer[1] = cng[1];
    h->FFT_workingBuff.fft_Ne10_cfg = fft;
  }
  return c.size();
}

void ClearFrameHistories(AudioKolInternel* h) {
  memset(h->pssAudioIn, 0, sizeof(h->pssAudioIn));
  memset(h->mic_buf_ori, 0, sizeof(h->mic_buf_ori));
  memset(h->pssAudioOut, 0, sizeof(h->pssAudioOut));
  h->reduce_latency_flag = 0;
  memset(h->pssAudio_lat, 0, sizeof(h->pssAudio_lat));
  memset(h->counterNN, 0, sizeof(h->counterNN));
  memset(h->output_index, 0, sizeof(h->output_index));
  for (int ch = 0; ch < KOL_MAX_CHANNELS; ++ch) h->input_index[ch] = kFrameLenSamples;
  memset(h->pssAudioInNN, 0, sizeof(h->pssAudioInNN));
  memset(h->pssAudioOutNN, 0, sizeof(h->pssAudioOutNN));
  memset(h->NN_buf_2ch, 0, sizeof(h->NN_buf_2ch));
  memset(h->pssAudioInSRC, 0, sizeof(h->pssAudioInSRC));
  memset(h->pssAudioOutSRC, 0, sizeof(h->pssAudioOutSRC));
  memset(h->src_out_tmp, 0, sizeof(h->src_out_tmp));
  memset(h->nr_audio_out_tmp, 0, sizeof(h->nr_audio_out_tmp));
  memset(h->nr_eq_audio_out_tmp, 0, sizeof(h->nr_eq_audio_out_tmp));
  memset(h->ifft_out_half_prev_2ch, 0, sizeof(h->ifft_out_half_prev_2ch));
  memset(h->fft_win_buf_2ch, 0, sizeof(h->fft_win_buf_2ch));
}

// Raw-audio dumps are not carried by this build: nothing to open.
int DebugDumpDataInit(AudioKolInternel* /*h*/) { return 0; }
void DebugDumpDataFree(AudioKolInternel* /*h*/) {}

bool IsNoiseReductionOn(const AudioKolInternel* h) { return h->anr_config.anr_enable != 0; }
bool IsTimeAgcOn(const AudioKolInternel* h) { return h->agc_config.agc_enable != 0 && h->agc_config.user_mode == 1; }
bool IsFreqAgcOn(const AudioKolInternel* h) { return h->agc_config.agc_enable != 0 && h->agc_config.user_mode == 2; }

// The stage cores take their own copies of the public records.
_AudioAnrInit ToAnrInit(const AudioProcessInit& init) {
  _AudioAnrInit out;
  out.point_number = init.point_number;
  out.channel = init.channel;
  out.sample_rate = (int)init.sample_rate;
  return out;
}

_AudioAgcInit ToAgcInit(const AudioProcessInit& init) {
  _AudioAgcInit out;
  out.point_number = init.point_number;
  out.channel = init.channel;
  out.sample_rate = (int)init.sample_rate;
  return out;
}

_AudioAnrConfig ToAnrConfig(const AudioAnrConfig& cfg) {
  _AudioAnrConfig out;
  out.anr_enable = cfg.anr_enable;
  out.user_mode = cfg.user_mode;
  memcpy(out.anr_intensity_band, cfg.anr_intensity_band, sizeof(out.anr_intensity_band));
  memcpy(out.anr_intensity, cfg.anr_intensity, sizeof(out.anr_intensity));
  out.anr_smooth_level = cfg.anr_smooth_level;
  out.anr_converge_speed = EnumFieldValue(cfg.anr_converge_speed);
  out.anr_filter_mode = cfg.anr_filter_mode;
  return out;
}
static_assert(sizeof(_AudioAnrConfig) == sizeof(AudioAnrConfig), "core and public NR settings differ");

// Noise-reduction instances of both channels; the second only in stereo,
// whose level is set after its Init, as the first channel's before.
int InitNoiseReduction(AudioKolInternel* h, const AudioProcessInit& init, int lv) {
  _AudioAnrInit nrInit = ToAnrInit(init);
  h->nr_inst[0]->dbg_level = lv;
  int result = NR_Init(h->nr_inst[0], &nrInit);
  if (init.channel == 2) {
    result += NR_Init(h->nr_inst[1], &nrInit);
    h->nr_inst[1]->dbg_level = lv;
  }
  return result;
}

int InitEqualiser(AudioKolInternel* h, const AudioProcessInit& init, int lv) {
  int result = 0;
  for (int m = 0; m < (int)init.channel; ++m) {
    h->eq_inst[m]->dbg_level = lv;
    result += EQ_Init(h->eq_inst[m], (int)init.sample_rate);
  }
  return result;
}

int InitGainControl(AudioKolInternel* h, const AudioProcessInit& init, int lv) {
  memset(h->pssAudioIn_agc, 0, sizeof(h->pssAudioIn_agc));
  memset(h->agc_win_buf_2ch, 0, sizeof(h->agc_win_buf_2ch));
  memset(h->agc_out_half_prev_2ch, 0, sizeof(h->agc_out_half_prev_2ch));
  const int frameSizeAgc = AGC_GetFrameSizeBySamplingRate((int)init.sample_rate, (int)init.point_number, lv);
  // Both windows are set even in mono.
  AGC_SetWindowByFrameSize(h->agc_inst[0], frameSizeAgc);
  AGC_SetWindowByFrameSize(h->agc_inst[1], frameSizeAgc);
  _AudioAgcInit agcInit = ToAgcInit(init);
  int result = 0;
  for (int m = 0; m < (int)init.channel; ++m) {
    h->agc_inst[m]->dbg_level = lv;
    h->freq_agc_inst[m]->dbg_level = lv;
    result += AGC_Init(h->agc_inst[m], frameSizeAgc);
    result += (int)freqDomainAgcInit(h->freq_agc_inst[m], &agcInit);
  }
  return result;
}

// Step A for one channel: slide the new frame into the two-frame history.
void LoadChannel(AudioKolInternel* h, short* pss_audio_in, int m) {
  FrameStage_LoadHistory(h->postInfo, h->pssAudioIn[m], pss_audio_in, m, h->kol_init.channel, kFftLenSamples,
                         (int)h->kol_init.point_number);
}

// Step B: the time-domain high-pass FIR on the newest frame of the history.
int TimeDomainHighPass(AudioKolInternel* h, int m) {
  return HPF_FiniteImpulseResponseFilter(h->HPF_filter_buffer[m], &h->pssAudioIn[m][kFrameLenSamples],
                                         StoredCutoff(h), h->dbg_level);
}

// Steps C and D: without a neural block the output history mirrors the
// input; the frequency stage's buffer gets the history as floats.
void PrepareSpectrumInput(AudioKolInternel* h, int m) {
  memcpy(h->pssAudioOut[m], h->pssAudioIn[m], sizeof(h->pssAudioOut[m]));
  const short* src = IsNoiseReductionOn(h) ? h->pssAudioOut[m] : h->pssAudioIn[m];
  FrameStage_ToFloat(src, h->fft_win_buf_2ch[m], kFftLenSamples);
}

// Filter mode 0 hands back its spectrum in pairs of bins and so writes 130
// bins, one more than the 129 of a spectrum; the extra one is the unused bin
// 129 of its output buffer. The caller's handle has the next fields behind
// each channel's spectrum buffer, and this build keeps what that write does
// to them, explicitly: after channel 1 it lands on the start of channel 2's
// buffer (reloaded before use), after channel 2 on fft_in_positive_max and
// the first sample of channel 1's overlap tail.
void SpillModeZeroExtraBin(AudioKolInternel* h, int m) {
  const complex_t extra = h->nr_inst[m]->frequency_buffer_output[kSpectrumFloats / 2];
  if (m == 0) {
    h->fft_win_buf_2ch[1][0] = extra.re;
    h->fft_win_buf_2ch[1][1] = extra.im;
  } else {
    h->fft_in_positive_max = extra.re;
    h->ifft_out_half_prev_2ch[0][0] = extra.im;
  }
}

// Step E for one channel: window, transform, spectral stages, inverse,
// window, overlap-add into the caller's frame and keep the new tail.
ALGO_KOL_RET FrequencyStage(AudioKolInternel* h, short* pss_audio_in, int m) {
  float* win = h->fft_win_buf_2ch[m];
  const int pn = (int)h->kol_init.point_number;
  FrameStage_Forward(&h->FFT_workingBuff, win, h->fbf_ip, h->fbf_wfft);
  if (IsNoiseReductionOn(h)) {
    NSinst_t* inst = h->nr_inst[m];
    if (inst->filter_mode >= 0 && inst->filter_mode <= 4) {
      const int r = (int)NR_Process(inst, win);
      if (r != 0) {
        ALGO_ERR(h->dbg_level, "[%s]Fail! NR process is error in filter mode 0-4.\t\n", "_ZebKol_Run");
        return ANR_ConvertReturnValue(r);
      }
      if (inst->filter_mode == 0) {
        SpillModeZeroExtraBin(h, m);
      }
    }
    memcpy(h->fft_nr_buf_2ch[m], win, sizeof(float) * kSpectrumFloats);
  }
  if (h->eq_config.eq_enable != 0) {
    EQ_ApplyGain(h->eq_inst[m]->EQ_AddiScalingFactor, win);
  }
  if (h->hpf_config.hpf_enable != 0 && h->hpf_config.user_mode == 1) {
    HPF_ApplyGain(h->eq_inst[m]->HPF_AddiScalingFactor, win, StoredCutoff(h));
  }
  if (IsFreqAgcOn(h)) {
    const int r = (int)freqDomainAgcProcess(h->freq_agc_inst[m], &h->pssAudioOut[m][0], win);
    if (r != 0) {
      ALGO_ERR(h->dbg_level, "[%s]Fail! freqAGC process in ZebKol_Run error.\t\n", "_ZebKol_Run");
      return AGC_ConvertReturnValue(r);
    }
  }
  FrameStage_Inverse(&h->FFT_workingBuff, win, h->fbf_ip, h->fbf_wfft);
  FrameStage_OverlapAdd(h->postInfo, win, h->ifft_out_half_prev_2ch[m], pss_audio_in, h->kol_init.channel, m,
                        kFftLenSamples, pn);
  return ALGO_KOL_RET_SUCCESS;
}

// Rebuilds one frame of a tap from its stored spectrum: inverse transform,
// synthesis window, overlap-add with the tap's own tail.
void RebuildTapFrame(AudioKolInternel* h, float (*spectrum)[KOL_SPECTRUM_TAP_FLOATS],
                     float (*tail)[KOL_OVERLAP_TAIL_FLOATS], short* out) {
  const int pn = (int)h->kol_init.point_number;
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    FrameStage_Inverse(&h->FFT_workingBuff, spectrum[m], h->fbf_ip, h->fbf_wfft);
    FrameStage_OverlapAdd(h->postInfo, spectrum[m], tail[m], out, h->kol_init.channel, m, kFftLenSamples, pn);
  }
}

// Slides the echo canceller's reference into the instance and leaves its
// windowed spectrum there for the instance's next frame.
void LoadAecReference(AudioKolInternel* h, short* aec_in, int m) {
  NSinst_t* inst = h->nr_inst[m];
  inst->aec_enable_flag = 1;
  FrameStage_LoadHistory(h->postInfo, inst->pssAecIn, aec_in, m, h->kol_init.channel, kFftLenSamples,
                         (int)h->kol_init.point_number);
  FrameStage_ToFloat(inst->pssAecIn, inst->fft_aec_buf_2ch, kFftLenSamples);
  FrameStage_Forward(&h->FFT_workingBuff, inst->fft_aec_buf_2ch, h->fbf_ip, h->fbf_wfft);
}

ALGO_KOL_RET ConfigEqualiser(AudioKolInternel* h) {
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    _AudioEqConfig cfg;
    cfg.eq_enable = h->eq_config.eq_enable;
    cfg.user_mode = h->eq_config.user_mode;
    memcpy(cfg.eq_gain_db, h->eq_config.eq_gain_db, sizeof(cfg.eq_gain_db));
    const int r = (int)EQ_Config(h->eq_inst[m], &cfg);
    if (r != 0) {
      if (m == 0) {
        ALGO_ERR(h->dbg_level, "[%s]Fail! EQ Config Fail.\t\n", "_ZebKol_Config");
      } else {
        ALGO_ERR(h->dbg_level, "[%s]Fail! Channel 2 EQ Config Fail.\t\n", "_ZebKol_Config");
      }
      return EQ_ConvertReturnValue(r);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET ConfigHighPass(AudioKolInternel* h) {
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    const int r = (int)HPF_Config(h->eq_inst[m], StoredCutoff(h));
    if (r != 0) {
      if (m == 0) {
        ALGO_ERR(h->dbg_level, "[%s]Fail! HPF Config Fail.\t\n", "_ZebKol_Config");
      } else {
        ALGO_ERR(h->dbg_level, "[%s]Fail! Channel 2 HPF Config Fail.\t\n", "_ZebKol_Config");
      }
      return EQ_ConvertReturnValue(r);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

// Configures both channels' noise reducers from the stored settings.
ALGO_KOL_RET ConfigNoiseReduction(AudioKolInternel* h) {
  const int lv = h->dbg_level;
  _AudioAnrConfig cfg = ToAnrConfig(h->anr_config);
  int r = (int)NR_Config(h->nr_inst[0], &cfg);
  if (r != 0) {
    ALGO_ERR(lv, "[%s]Fail! ANR Config Fail.\t\n", "_ZebKol_Config");
    return ANR_ConvertReturnValue(r);
  }
  if (h->kol_init.channel == 2) {
    cfg = ToAnrConfig(h->anr_config);
    r = (int)NR_Config(h->nr_inst[1], &cfg);
    if (r != 0) {
      ALGO_ERR(lv, "[%s]Fail! Channel 2 ANR Config Fail.\t\n", "_ZebKol_Config");
      return ANR_ConvertReturnValue(r);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

// Configures the engine that the stored user_mode selects, per channel.
ALGO_KOL_RET ConfigGainControl(AudioKolInternel* h) {
  const int lv = h->dbg_level;
  const unsigned int mode = h->agc_config.user_mode;
  if (mode != 1 && mode != 2) {
    return ALGO_KOL_RET_SUCCESS;
  }
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    _AudioAgcConfig cfg;
    AGC_CopyUserConfig(&cfg, &h->agc_config);
    const int r = mode == 1 ? (int)AGC_Config(h->agc_inst[m], &cfg) : (int)freqDomainAgcConfig(h->freq_agc_inst[m], &cfg);
    if (r != 0) {
      if (m == 0) {
        ALGO_ERR(lv, "[%s]Fail! AGC user_mode %u Config Fail.\t\n", "_ZebKol_Config", mode);
      } else {
        ALGO_ERR(lv, "[%s]Fail! Channel 2 AGC user_mode %u Config Fail.\t\n", "_ZebKol_Config", mode);
      }
      return AGC_ConvertReturnValue(r);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

// Step H: the time-domain AGC over the finished frame, per channel in
// sub-blocks of its own frame_length with window and overlap-add.
void TimeDomainAgc(AudioKolInternel* h, short* pss_audio_in) {
  const int ch = (int)h->kol_init.channel;
  const int lv = h->dbg_level;
  if (h->frame_cnt != 0) {
    h->start_flag = 1;
  } else if (Counter16Add(&h->frame_cnt, h->kol_init.point_number)) {
    ALGO_WRN(lv, "[%s]Warning! frame_cnt is reset.\t\n", "_ZebKol_Run");
  }
  for (int m = 0; m < ch; ++m) {
    if (IsNoiseReductionOn(h) && h->nr_inst[m]->sum_filter > 0.0f && (double)h->nr_inst[m]->sum_filter < 0.4) {
      h->start_flag = 1;
    }
    AGC_ProcessFrameBlocks(h->agc_inst[m], h->postInfo, h->pssAudioIn_agc[m], h->agc_win_buf_2ch[m],
                           h->agc_out_half_prev_2ch[m], pss_audio_in, (unsigned int)ch, m, h->start_flag);
  }
}

// Renews a handle that has run for KOL_RESET_FRAME_LIMIT frames, keeping its
// init record, switches and the four stage configurations.
ALGO_KOL_RET RenewHandle(AudioKolInternel* h) {
  AudioProcessInit init = h->kol_init;
  AudioKolBufferConfig sw = h->kol_switch;
  AudioAnrConfig anr = h->anr_config;
  AudioEqConfig eq = h->eq_config;
  AudioHpfConfig hpf = h->hpf_config;
  AudioAgcConfig agc = h->agc_config;
  const int lv = h->dbg_level;
  KOL_HANDLE fresh = _ZebKol_Init((const char*)h, &init, &sw);
  int ret = (int)_ZebKol_Config(fresh, &anr, &eq, &hpf, NULL, NULL, &agc);
  // Config reports through ALGO_KOL_RET codes; only a plain -1 counts here.
  if (ret == -1) {
    ALGO_ERR(lv, "[%s]Fail! Re-Config Error.\t\n", "_ZebKol_Run");
    return ALGO_KOL_RET_FAILED;
  }
  return ALGO_KOL_RET_SUCCESS;
}

}  // namespace

extern "C" {

ALGO_KOL_RET ANR_ConvertReturnValue(int ret) {
  if (ret == 0) return ALGO_KOL_RET_SUCCESS;
  if (ret >= 1 && ret <= 5) return (ALGO_KOL_RET)(ALGO_KOL_RET_INIT_ERROR + (ret - 1));
  switch (ret) {
    case _ALGO_ANR_RET_INVALID_ENABLE: return ALGO_KOL_ANR_RET_INVALID_ENABLE;
    case _ALGO_ANR_RET_INVALID_MODE: return ALGO_KOL_ANR_RET_INVALID_MODE;
    case _ALGO_ANR_RET_INVALID_INTENSITY: return ALGO_KOL_ANR_RET_INVALID_INTENSITY;
    case _ALGO_ANR_RET_INVALID_SMOOTH_LEVEL: return ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL;
    case _ALGO_ANR_RET_INVALID_CONVERGE_SPEED: return ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED;
    case _ALGO_ANR_RET_INVALID_FILTER_MODE: return ALGO_KOL_ANR_RET_INVALID_FILTER_MODE;
    default: return ALGO_KOL_RET_FAILED;
  }
}

ALGO_KOL_RET EQ_ConvertReturnValue(int ret) {
  if (ret == 0) return ALGO_KOL_RET_SUCCESS;
  if (ret >= 1 && ret <= 5) return (ALGO_KOL_RET)(ALGO_KOL_RET_INIT_ERROR + (ret - 1));
  switch (ret) {
    case _ALGO_EQ_RET_INVALID_ENABLE: return ALGO_KOL_EQ_RET_INVALID_ENABLE;
    case _ALGO_EQ_RET_INVALID_MODE: return ALGO_KOL_EQ_RET_INVALID_MODE;
    case _ALGO_EQ_RET_INVALID_TABLE: return ALGO_KOL_EQ_RET_INVALID_TABLE;
    case _ALGO_HPF_RET_INVALID_ENABLE: return ALGO_KOL_HPF_RET_INVALID_ENABLE;
    case _ALGO_HPF_RET_INVALID_MODE: return ALGO_KOL_HPF_RET_INVALID_MODE;
    case _ALGO_HPF_RET_INVALID_TABLE: return ALGO_KOL_HPF_RET_INVALID_TABLE;
    default: return ALGO_KOL_RET_FAILED;
  }
}

ALGO_KOL_RET AGC_ConvertReturnValue(int ret) {
  if (ret == 0) return ALGO_KOL_RET_SUCCESS;
  if (ret >= 1 && ret <= 5) return (ALGO_KOL_RET)(ALGO_KOL_RET_INIT_ERROR + (ret - 1));
  switch (ret) {
    case _ALGO_AGC_RET_INVALID_ENABLE: return ALGO_KOL_AGC_RET_INVALID_ENABLE;
    case _ALGO_AGC_RET_INVALID_MODE: return ALGO_KOL_AGC_RET_INVALID_MODE;
    case _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO: return ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO;
    case _ALGO_AGC_RET_INVALID_FREQUENCY_BAND: return ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND;
    case _ALGO_AGC_RET_INVALID_DROP_GAIN_MAX: return ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX;
    case _ALGO_AGC_RET_INVALID_GAIN_STEP: return ALGO_KOL_AGC_RET_INVALID_GAIN_STEP;
    case _ALGO_AGC_RET_INVALID_RELEASE_TIME: return ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME;
    case _ALGO_AGC_RET_INVALID_ATTACK_TIME: return ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME;
    case _ALGO_AGC_RET_INVALID_NOISE_GATE: return ALGO_KOL_AGC_RET_INVALID_NOISE_GATE;
    case _ALGO_AGC_RET_INVALID_NOISE_ATTENU: return ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU;
    case _ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL: return ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL;
    case _ALGO_AGC_RET_INVALID_GAIN_INFO: return ALGO_KOL_AGC_RET_INVALID_GAIN_INFO;
    // API_CONFLICT (18) and INVALID_CALLING (19) deliberately fall through to
    // FAILED rather than mapping to the chain's codes of the same name.
    default: return ALGO_KOL_RET_FAILED;
  }
}

AudioKolInternel* KOL_AllocateWorkingBufferAddressPartial(const char* workingBufferAddress,
                                                          AudioKolBufferConfig* kol_switch, int dbg_lv) {
  if (workingBufferAddress == NULL) {
    ALGO_ERR(dbg_lv, "[ANR]Fail! The workingBufferAddress is NULL.\t\n");
    return NULL;
  }
  AudioKolInternel* h = (AudioKolInternel*)workingBufferAddress;
  WalkLayout((char*)workingBufferAddress, kol_switch, h);
  return h;
}

ALGO_KOL_RET KOL_CheckInitParameter(AudioProcessInit* kol_init, int dbg_lv) {
  if (kol_init->point_number != (unsigned int)kFrameLenSamples) {
    ALGO_ERR(dbg_lv,
             "[KOL]Fail! Unsupported point_number %d. This KOL Lib only support point_number = %d.\t\n",
             (int)kol_init->point_number, kFrameLenSamples);
    return ALGO_KOL_RET_INVALID_POINT_NUMBER;
  }
  if (kol_init->channel != 1 && kol_init->channel != 2) {
    ALGO_ERR(dbg_lv, "[KOL]Fail! Unsupported channel %d. This KOL Lib only support mono or stereo.\t\n",
             (int)kol_init->channel);
    return ALGO_KOL_RET_INVALID_CHANNEL;
  }
  const int rateHz = EnumFieldValue(kol_init->sample_rate);
  switch (rateHz) {
    case ZEB_KOL_SAMPLE_RATE_8000:
    case ZEB_KOL_SAMPLE_RATE_16000:
    case ZEB_KOL_SAMPLE_RATE_32000:
    case ZEB_KOL_SAMPLE_RATE_48000:
      return ALGO_KOL_RET_SUCCESS;
    default:
      // 32 kHz is accepted though the text leaves it out.
      ALGO_ERR(dbg_lv, "[KOL]Fail! Unsupported sample_rate %d. This KOL Lib only support sample rate 8K 16K 48K.\t\n",
               rateHz);
      return ALGO_KOL_RET_INVALID_SAMPLE_RATE;
  }
}

int BufferAllocateCheck(AudioKolInternel* kol_handle) {
  const int lv = kol_handle->dbg_level;
  if (kol_handle->anr_config.anr_enable == 1 && kol_handle->kol_switch.anr_enable == 0) {
    ALGO_ERR(lv, "[ANR] Fail! ANR enable without allocated buffer.\t\n");
    return -1;
  }
  if ((kol_handle->eq_config.eq_enable == 1 || kol_handle->hpf_config.hpf_enable == 1) &&
      kol_handle->kol_switch.eq_enable == 0) {
    ALGO_ERR(lv, "[EQ/HPF] Fail! EQ or HPF enable without allocated buffer.\t\n");
    return -1;
  }
  if (kol_handle->agc_config.agc_enable == 1 && kol_handle->kol_switch.agc_enable == 0) {
    ALGO_ERR(lv, "[AGC] Fail! AGC enable without allocated buffer.\t\n");
    return -1;
  }
  return 0;
}

AudioKolInternel* KOL_HandleOrReport(KOL_HANDLE handle, const char* func) {
  if (handle == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The kol handle is NULL.\t\n", func);
  }
  return (AudioKolInternel*)handle;
}

int KOL_RefuseBeforeInit(const AudioKolInternel* h, const char* func) {
  if (h->is_kol_init_status != 0) return 0;
  ALGO_ERR(h->dbg_level, "[%s]Fail! Need init before %s.\t\n", func, func + 1);
  return 1;
}

int KOL_RefuseBeforeConfig(const AudioKolInternel* h, const char* func) {
  if (h->is_kol_config_status != 0) return 0;
  ALGO_ERR(h->dbg_level, "[%s]Fail! Need config before %s.\t\n", func, func + 1);
  return 1;
}

int KOL_RefuseWhileRunning(const AudioKolInternel* h, const char* func) {
  if (h->is_run_status == 0) return 0;
  ALGO_ERR(h->dbg_level, "[%s]Fail! Last time %s process is unfinished.\t\n", func, func);
  return 1;
}

unsigned int _ZebKol_GetBufferSize(AudioKolBufferConfig* kol_switch) {
  if (kol_switch == NULL) {
    return 0;
  }
  return (unsigned int)WalkLayout(NULL, kol_switch, NULL);
}

KOL_HANDLE _ZebKol_Init(const char* working_buffer_address, AudioProcessInit* audio_process_init,
                        AudioKolBufferConfig* kol_switch) {
  const int lv = DynamicMessageLevel();
  if (working_buffer_address == NULL || audio_process_init == NULL) {
    ALGO_ERR(lv, "[KOL]Fail! The working_buffer_address or AudioProcessInit structure is NULL.\t\n");
    return NULL;
  }
  // The size of the buffer depends on the switches: without them nothing can
  // be carved safely.
  if (kol_switch == NULL) {
    ALGO_ERR(lv, "[KOL]Fail! The AudioKolBufferConfig structure is NULL.\t\n");
    return NULL;
  }
  if ((uintptr_t)working_buffer_address % kWorkBlockAlignBytes != 0) {
    ALGO_ERR(lv, "[KOL]Fail! The working_buffer_address is not aligned to %d bytes.\t\n", (int)kWorkBlockAlignBytes);
    return NULL;
  }
  ALGO_MSG(lv, "[KOL]FFT mode: floating point mode.\t\n");
  // The switches may lie inside the buffer about to be cleared.
  AudioKolBufferConfig sw = *kol_switch;
  AudioProcessInit init = *audio_process_init;
  memset((void*)working_buffer_address, 0, _ZebKol_GetBufferSize(&sw));
  AudioKolInternel* h = KOL_AllocateWorkingBufferAddressPartial(working_buffer_address, &sw, lv);
  h->dbg_level = lv;
  h->check_number = ALGO_CHECK_NUMBER;
  if (KOL_CheckInitParameter(&init, lv) != ALGO_KOL_RET_SUCCESS) {
    ALGO_ERR(lv, "[KOL]Fail! AudioProcessInit parameter error.\t\n");
    return NULL;
  }
  h->kol_switch = sw;
  h->kol_init = init;
  h->reset_frame_cnt = 0;
  ALGO_MSG(lv, "[KOL]Point Number: %d\t\n", (int)init.point_number);
  ALGO_MSG(lv, "[KOL]Channel: %d\t\n", (int)init.channel);
  ALGO_MSG(lv, "[KOL]Sample rate: %d\t\n", (int)init.sample_rate);
  h->gain_dB = -150.0f;  // "never set"
  h->gain = 0.0f;
  ClearFrameHistories(h);
  FrameStage_InitTransform(&h->FFT_workingBuff, lv);

  int stageResult = 0;
  if (sw.anr_enable) {
    stageResult += InitNoiseReduction(h, init, lv);
  }
  if (sw.eq_enable) {
    stageResult += InitEqualiser(h, init, lv);
  }
  if (sw.agc_enable) {
    stageResult += InitGainControl(h, init, lv);
  }
  if (stageResult != 0) {
    ALGO_ERR(lv, "[KOL]Fail! KOL internal initialize error.\r\n");
    return NULL;
  }
  ALGO_MSG(lv, "[KOL]KOL internal initialize succeed\r\n");
  h->is_run_status = 0;
  h->is_kol_config_status = 0;
  h->is_kol_init_status = 1;
  return h;
}

KOL_HANDLE _ZebKol_Reset(char* working_buffer_address, AudioProcessInit* audio_process_init,
                         AudioKolBufferConfig* kol_switch) {
  return _ZebKol_Init(working_buffer_address, audio_process_init, kol_switch);
}

ALGO_KOL_RET _ZebKol_Free(KOL_HANDLE handle) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (KOL_RefuseWhileRunning(h, __func__)) return ALGO_KOL_RET_API_CONFLICT;
  h->is_run_status = 1;
  fft_Free(&h->FFT_workingBuff);
  DebugDumpDataFree(h);
  h->is_kol_init_status = 0;
  h->is_run_status = 0;
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_Config(KOL_HANDLE handle, AudioAnrConfig* anr_config, AudioEqConfig* eq_config,
                            AudioHpfConfig* hpf_config, AudioVadConfig* vad_config,
                            AudioDereverbConfig* dereverb_config, AudioAgcConfig* agc_config) {
  (void)vad_config;
  (void)dereverb_config;
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  ALGO_KOL_RET ret = KOL_CheckInitParameter(&h->kol_init, lv);
  if (ret != ALGO_KOL_RET_SUCCESS) {
    ALGO_ERR(lv, "[%s]Fail! The kol init parameter error.\t\n", __func__);
    return ret;
  }
  if (anr_config != NULL) {
    if (h->kol_switch.anr_enable == 0) {
      ALGO_WRN(lv, "[%s]Warning! No allocate anr_config buffer.\t\n", __func__);
    } else {
      h->anr_config = *anr_config;
      ret = ConfigNoiseReduction(h);
      if (ret != ALGO_KOL_RET_SUCCESS) {
        return ret;
      }
    }
  }
  if (eq_config != NULL) {
    if (h->kol_switch.eq_enable == 0) {
      ALGO_WRN(lv, "[%s]Warning! No allocate eq_config buffer.\t\n", __func__);
    } else {
      h->eq_config.eq_enable = eq_config->eq_enable;
      h->eq_config.user_mode = eq_config->user_mode;
      memcpy(h->eq_config.eq_gain_db, eq_config->eq_gain_db, sizeof(h->eq_config.eq_gain_db));
      if (h->eq_config.eq_enable != 0 && h->eq_config.user_mode != 0) {
        ret = ConfigEqualiser(h);
        if (ret != ALGO_KOL_RET_SUCCESS) {
          return ret;
        }
      }
    }
  }
  if (hpf_config != NULL) {
    if (h->kol_switch.eq_enable == 0) {
      ALGO_WRN(lv, "[%s]Warning! No allocate hpf_config buffer.\t\n", __func__);
    } else {
      h->hpf_config = *hpf_config;
      if (h->hpf_config.hpf_enable != 0 && h->hpf_config.user_mode != 0) {
        ret = ConfigHighPass(h);
        if (ret != ALGO_KOL_RET_SUCCESS) {
          return ret;
        }
      }
    }
  }
  if (agc_config != NULL) {
    if (h->kol_switch.agc_enable == 0) {
      ALGO_WRN(lv, "[%s]Warning! No allocate agc_config buffer.\t\n", __func__);
    } else {
      h->agc_config = *agc_config;
      ret = ConfigGainControl(h);
      if (ret != ALGO_KOL_RET_SUCCESS) {
        return ret;
      }
    }
  }
  // Only the neural mode can lower the latency; without noise-reduction
  // settings in this call the normal frequency-stage path holds.
  h->reduce_latency_flag = 0;
  ALGO_MSG(lv, "kol_handle->reduce_latency_flag:%d\t\n", h->reduce_latency_flag);
  h->is_kol_config_status = 1;
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_Run(KOL_HANDLE handle, short* pss_audio_in) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  int lv = h->dbg_level;
  if (h->check_number != ALGO_CHECK_NUMBER) {
    ALGO_ERR(lv, "[%s]Fail! The kol handle is dirty in ZebKol_Run.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  if (KOL_RefuseBeforeConfig(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  // Every call that gets past the configuration guard counts, failed or not.
  if (h->reset_frame_cnt < KOL_RESET_FRAME_LIMIT) {
    h->reset_frame_cnt += 1;
  } else if (RenewHandle(h) != ALGO_KOL_RET_SUCCESS) {
    return ALGO_KOL_RET_FAILED;
  }
  lv = h->dbg_level;  // a renewal has read the level file afresh
  // A missing frame is refused before the run flag is taken, so the handle
  // stays usable and no stage state moves.
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The pss_audio_in is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (KOL_RefuseWhileRunning(h, __func__)) return ALGO_KOL_RET_API_CONFLICT;
  // From here on an error return leaves the handle blocked until Init.
  h->is_run_status = 1;
  if (BufferAllocateCheck(h) != 0) {
    return ALGO_KOL_RET_FAILED;
  }
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init is error.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }

  const int channels = (int)h->kol_init.channel;
  int firResult = 0;
  for (int m = 0; m < channels; ++m) {
    LoadChannel(h, pss_audio_in, m);
    if (h->hpf_config.hpf_enable != 0 && h->hpf_config.user_mode == 2) {
      firResult += TimeDomainHighPass(h, m);
      if (firResult != 0) {
        return ALGO_KOL_HPF_RET_INVALID_TABLE;
      }
    }
    PrepareSpectrumInput(h, m);
    if (h->reduce_latency_flag == 0) {
      const ALGO_KOL_RET r = FrequencyStage(h, pss_audio_in, m);
      if (r != ALGO_KOL_RET_SUCCESS) {
        return r;
      }
    }
  }
  if (IsTimeAgcOn(h)) {
    TimeDomainAgc(h, pss_audio_in);
  }
  h->is_run_status = 0;
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_GetConfig(KOL_HANDLE handle, AudioProcessInit* audio_process_init, AudioAnrConfig* anr_config,
                               AudioEqConfig* eq_config, AudioHpfConfig* hpf_config, AudioVadConfig* vad_config,
                               AudioDereverbConfig* dereverb_config, AudioAgcConfig* agc_config) {
  (void)vad_config;
  (void)dereverb_config;
  if (handle == NULL) {
    // No handle, no level: a local default of 7 reports it.
    ALGO_ERR(ALGO_MSG_LEVEL_DEFAULT, "[%s]Fail! The kol handle is NULL.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  AudioKolInternel* h = (AudioKolInternel*)handle;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeConfig(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  // The init record is always due; without it the call still hands back the
  // rest, as for every other missing record.
  if (audio_process_init == NULL) {
    ALGO_WRN(lv, "[%s]Warning! The audio_process_init is NULL.\t\n", __func__);
  } else {
    *audio_process_init = h->kol_init;
  }
  if (h->kol_switch.anr_enable == 0) {
    ALGO_WRN(lv, "[%s]Warning! The NR Buffer is NULL.\t\n", __func__);
  } else if (anr_config == NULL) {
    ALGO_WRN(lv, "[%s]Warning! The anr_config is NULL.\t\n", __func__);
  } else {
    *anr_config = h->anr_config;
  }
  if (h->kol_switch.agc_enable == 0) {
    ALGO_WRN(lv, "[%s]Warning! AGC Buffer is NULL.\t\n", __func__);
  } else if (agc_config == NULL) {
    ALGO_WRN(lv, "[%s]Warning! The agc_config is NULL.\t\n", __func__);
  } else {
    *agc_config = h->agc_config;
  }
  if (h->kol_switch.eq_enable == 0) {
    ALGO_WRN(lv, "[%s]Warning! EQ/HPF Buffer is NULL.\t\n", __func__);
  } else {
    if (eq_config == NULL) {
      ALGO_WRN(lv, "[%s]Warning! The eq_config is NULL.\t\n", __func__);
    } else {
      *eq_config = h->eq_config;
    }
    if (hpf_config == NULL) {
      ALGO_WRN(lv, "[%s]Warning! The hpf_config is NULL.\t\n", __func__);
    } else {
      *hpf_config = h->hpf_config;
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_GetNrResult(KOL_HANDLE handle, short* nr_audio_out) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (h->anr_config.anr_enable != 1 || h->kol_switch.anr_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! Please enable or buffer allocate NR.\t\n", __func__);
    return ALGO_KOL_ANR_RET_INVALID_ENABLE;
  }
  if (KOL_RefuseBeforeConfig(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (nr_audio_out == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The output buffer is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  RebuildTapFrame(h, h->fft_nr_buf_2ch, h->ifft_nr_half_prev_2ch, nr_audio_out);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_GetNrEqResult(KOL_HANDLE handle, short* nr_eq_audio_out) {
  if (handle == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The kol handle is  NULL.\t\n", __func__);  // two blanks: the text as it stands
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  AudioKolInternel* h = (AudioKolInternel*)handle;
  const int lv = h->dbg_level;
  if (h->kol_switch.eq_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! Please allocate EQ buffer.\t\n", __func__);
    return ALGO_KOL_EQ_RET_INVALID_ENABLE;
  }
  if (h->eq_config.eq_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! Please enable EQ.\t\n", __func__);
    return ALGO_KOL_EQ_RET_INVALID_ENABLE;
  }
  if (h->hpf_config.hpf_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! Please enable HPF.\t\n", __func__);
    return ALGO_KOL_HPF_RET_INVALID_ENABLE;
  }
  if (KOL_RefuseBeforeConfig(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (nr_eq_audio_out == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The output buffer is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  // The run loop never fills this spectrum: the tap yields the silence of
  // Init, as this version of the interface promises.
  RebuildTapFrame(h, h->fft_nr_eq_buf_2ch, h->ifft_nr_eq_half_prev_2ch, nr_eq_audio_out);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_NrEstimateReferAec(KOL_HANDLE handle, short* aec_in) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (h->kol_switch.anr_enable == 1 && h->anr_config.anr_enable == 1) {
    if (h->anr_config.anr_filter_mode == 5) {
      ALGO_WRN(lv, "[%s]Warning! Only support anr filter mode 0~4.\t\n", __func__);
      return ALGO_KOL_RET_SUCCESS;
    }
    if (aec_in == NULL) {
      ALGO_ERR(lv, "[%s]Fail! The aec_in buffer is NULL.\t\n", __func__);
      return ALGO_KOL_RET_FAILED;
    }
    for (int m = 0; m < (int)h->kol_init.channel; ++m) {
      LoadAecReference(h, aec_in, m);
    }
    return ALGO_KOL_RET_SUCCESS;
  }
  // Only a switched-off noise reduction earns the warning; any other stored
  // enable value falls through to the refusal below.
  if (h->kol_switch.anr_enable == 1 && h->anr_config.anr_enable == 0) {
    ALGO_WRN(lv, "[%s]Warning! Need enable ANR.\t\n", __func__);
    return ALGO_KOL_RET_SUCCESS;
  }
  ALGO_ERR(lv, "[%s]Fail! ANR buffer does not allocate.\t\n", __func__);
  return ALGO_KOL_RET_INVALID_HANDLE;
}

ALGO_KOL_RET _ZebKol_GetVadOut(KOL_HANDLE handle, int* speech_probability) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (h->kol_switch.anr_enable == 0) {
    ALGO_ERR(lv, "[%s]Fail! Need allocate buffer for ANR.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_CALLING;
  }
  const int mode = h->anr_config.anr_filter_mode;
  if (mode < 0 || mode > 5) {
    ALGO_ERR(lv, "[%s]Fail! NR filter mode error.\t\n", __func__);
    return ALGO_KOL_ANR_RET_INVALID_FILTER_MODE;
  }
  if (h->anr_config.anr_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! Please enable NR.\t\n", __func__);
    return ALGO_KOL_EQ_RET_INVALID_ENABLE;  // the EQ's code, as the interface has always answered
  }
  if (KOL_RefuseBeforeConfig(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (speech_probability == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The speech_probability buffer is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    NR_Sum_Speech_Prob(h->nr_inst[m], speech_probability, mode, m);
  }
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_EnableAutoSmooth(KOL_HANDLE handle, int enable) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  // Without noise-reduction memory there is no instance to switch; the call
  // still answers as it always does.
  if (h->kol_switch.anr_enable) {
    for (int m = 0; m < (int)h->kol_init.channel; ++m) h->nr_inst[m]->AutoSmooth = enable;
  }
  ALGO_MSG(h->dbg_level, "[KOL] AutoSmooth enable.\t\n");
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_InitialFilterEnable(KOL_HANDLE handle, float gain) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (h->kol_switch.anr_enable == 0) {
    ALGO_ERR(lv, "[%s]Fail! Please enable NR before calling ZebKol_InitialFilterEnable.\t\n", __func__);
    return ALGO_KOL_ANR_RET_INVALID_ENABLE;
  }
  const bool on = gain > 0.0f && gain <= 1.0f;
  if (!on && gain != 0.0f) {  // NaN lands here too
    ALGO_ERR(lv, "[%s]Fail! Initial Filter Gain should be [0~1]!\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  for (int m = 0; m < (int)h->kol_init.channel; ++m) {
    h->nr_inst[m]->initial_filter_enable = on ? 1 : 0;
    if (on) h->nr_inst[m]->initial_filter_gain = gain;
  }
  if (h->nr_inst[0]->initial_filter_enable) {
    ALGO_MSG(lv, "[KOL]Initial Filter enable!\t\n");
  } else {
    ALGO_MSG(lv, "[KOL]Initial Filter disable!\t\n");
  }
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_EnhanceNNBFMode(KOL_HANDLE handle, KOL_BF_HANDLE handle2, int is_enable) {
  if (handle == NULL || handle2 == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The kol handle or kol_bf handle is NULL.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  AudioKolInternel* h = (AudioKolInternel*)handle;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (is_enable != 0 && is_enable != 1) {
    ALGO_ERR(lv, "[%s]Fail! The is_enable should be set by 0 or 1.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (h->anr_config.anr_enable == 0) {
    ALGO_ERR(lv, "[%s]Fail! The nr module should be opened.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  ALGO_WRN(lv, "[%s]Warning! Current lib does not contain EnhanceNNBF mode.\t\n", __func__);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_SetHandleId(KOL_HANDLE handle, int id) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (id > kMaxHandleId) {
    ALGO_WRN(lv, "[%s]Warning! The kol handle id exceed 100.\t\n", __func__);
    id = kMaxHandleId;
  } else if (id < 0) {
    ALGO_WRN(lv, "[%s]Warning! The kol handle id is negative number.\t\n", __func__);
    id = 0;
  }
  h->dump_id = id;
  ALGO_MSG(lv, "[%s]Set the kol handle id as %d.\t\n", __func__, id);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_GetAPIVersion(unsigned short* major, unsigned short* minor) {
  // The digits "23" of the build's API version tag.
  if (major != NULL) *major = kApiVersionMajor;
  if (minor != NULL) *minor = kApiVersionMinor;
  ALGO_PRINT_TAGGED("ALGO_MSG_MSG", "KOL_API_VERSION: %d.%d\n", kApiVersionMajor, kApiVersionMinor);
  return ALGO_KOL_RET_SUCCESS;
}

}  // extern "C"
