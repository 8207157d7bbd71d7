// The chain's gain-control operations outside Run: the frequency-domain
// AGC's band edges and per-band curves, the time-domain AGC's curve, and the
// digital gain on a caller's frame.
#include <stddef.h>

#include "AudioProcess.h"
#include "AudioProcessWrapper.h"
#include "DynamicRangeProcessing.h"
#include "agc.h"
#include "debug_msglevel.h"
#include "pre_post_tool.h"

namespace {

// gain_dB until the first ApplyDigitalGain.
constexpr float kGainNeverSetDb = -150.0f;
constexpr float kDigitalGainMinDb = -120.0f;
constexpr float kDigitalGainMaxDb = 120.0f;
constexpr int kCurvePointsMax = AGC_CURVE_POINTS_MAX;

typedef _ALGO_AGC_RET (*FreqCurveSetter)(FreqAgcHandle*, int*, int*);

bool FrequencyAgcReady(const AudioKolInternel* h) {
  return h->agc_config.agc_enable != 0 && h->agc_config.user_mode == 2 && h->kol_switch.agc_enable != 0;
}

int ChannelCount(const AudioKolInternel* h) { return h->kol_init.channel == 2 ? 2 : 1; }

// The three per-band curve setters share guards and failure handling; a
// failing stage call drops the configured state so Run waits for Config.
ALGO_KOL_RET SetBandCurve(KOL_HANDLE handle, int* in, int* out, FreqCurveSetter setter, const char* func,
                          const char* stageName) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, func);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeInit(h, func)) return ALGO_KOL_RET_INVALID_CALLING;
  if (!FrequencyAgcReady(h)) {
    ALGO_ERR(lv, "[%s]Fail! Need enable frequency domain AGC.\t\n", func);
    return ALGO_KOL_AGC_RET_INVALID_ENABLE;
  }
  if (in == NULL || out == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The compression ratio curve is NULL.\t\n", func);
    return ALGO_KOL_RET_FAILED;
  }
  for (int m = 0; m < ChannelCount(h); ++m) {
    const _ALGO_AGC_RET ret = setter(h->freq_agc_inst[m], in, out);
    if (ret != _ALGO_AGC_RET_SUCCESS) {
      h->is_kol_config_status = 0;
      if (m == 0) {
        ALGO_ERR(lv, "[AGC]Fail! %s fail.\t\n", stageName);
      } else {
        ALGO_ERR(lv, "[AGC]Fail! Channel 2 %s fail.\t\n", stageName);
      }
      return AGC_ConvertReturnValue(ret);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

}  // namespace

extern "C" {

ALGO_KOL_RET _ZebKol_SetLowFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetLowFreqCompressionRatioCurve, __func__,
                      "SetLowFreqCompressionRatioCurve");
}

ALGO_KOL_RET _ZebKol_SetMidFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                     int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetMidFreqCompressionRatioCurve, __func__,
                      "SetMidFreqCompressionRatioCurve");
}

ALGO_KOL_RET _ZebKol_SetHighFreqCompressionRatioCurve(KOL_HANDLE handle, int* CompressRatioInput,
                                                      int* CompressRatioOutput) {
  return SetBandCurve(handle, CompressRatioInput, CompressRatioOutput, SetHighFreqCompressionRatioCurve, __func__,
                      "SetHighFreqCompressionRatioCurve");
}

ALGO_KOL_RET _ZebKol_SetAgcFreqBand(KOL_HANDLE handle, int* frequency_band) {
  if (handle == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The kol handle is NULL\t\n", __func__);
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  AudioKolInternel* h = (AudioKolInternel*)handle;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (!FrequencyAgcReady(h)) {
    ALGO_ERR(lv, "[%s]Fail! Need enable frequency domain AGC.\t\n", __func__);
    return ALGO_KOL_AGC_RET_INVALID_ENABLE;
  }
  if (frequency_band == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The frequency_band is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  for (int m = 0; m < ChannelCount(h); ++m) {
    const _ALGO_AGC_RET ret = SetFreqBand(h->freq_agc_inst[m], frequency_band);
    if (ret != _ALGO_AGC_RET_SUCCESS) {
      h->is_kol_config_status = 0;
      if (m == 0) {
        ALGO_ERR(lv, "[AGC]Fail! SetFreqBand fail.\t\n");
      } else {
        ALGO_ERR(lv, "[AGC]Fail! Channel 2 SetFreqBand fail.\t\n");
      }
      return AGC_ConvertReturnValue(ret);
    }
  }
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_SetCompressionRatioCurve(KOL_HANDLE handle, short* CompressRatioInput,
                                              short* CompressRatioOutput, int curve_len) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  // Only a warning: without AGC blocks the curve has nowhere to go, and the
  // core setter below ignores the missing instances.
  if (h->kol_switch.agc_enable == 0) {
    ALGO_ERR(lv, "[AGC] Fail! Need allocate buffer for agc setting.\t\n");
  }
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  // The cores hold at most 20 points; a longer curve would overrun them.
  if (curve_len > kCurvePointsMax) {
    ALGO_ERR(lv, "[%s]Fail! curve_len %d exceeds %d.\t\n", __func__, curve_len, kCurvePointsMax);
    return ALGO_KOL_RET_FAILED;
  }
  if (CompressRatioInput == NULL || CompressRatioOutput == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The compression ratio curve is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (AGC_CompressionRatioCurveSettingCheck(CompressRatioInput, CompressRatioOutput, curve_len, lv) != 0) {
    return ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO;
  }
  if (h->kol_init.channel != 1 && h->kol_init.channel != 2) {
    ALGO_ERR(lv, "[%s]Fail! Channel number error.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_CHANNEL;
  }
  for (int m = 0; m < ChannelCount(h); ++m) {
    AGC_SetCompressionRatioValue(h->agc_inst[m], CompressRatioInput, CompressRatioOutput, curve_len);
  }
  ALGO_MSG(lv, "[%s]Set compression ratio curve succeed.\t\n", __func__);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_ApplyDigitalGain(KOL_HANDLE handle, short* pss_audio_in, float gain_value) {
  if (handle == NULL) {
    // No handle, no level: the default one lets the error through.
    ALGO_ERR(ALGO_MSG_LEVEL_DEFAULT, "[%s]Fail! The kol handle is NULL.\t\n", __func__);
    return ALGO_KOL_RET_INVALID_HANDLE;
  }
  AudioKolInternel* h = (AudioKolInternel*)handle;
  const int lv = h->dbg_level;
  if (KOL_RefuseBeforeInit(h, __func__)) return ALGO_KOL_RET_INVALID_CALLING;
  if (KOL_RefuseWhileRunning(h, __func__)) return ALGO_KOL_RET_API_CONFLICT;
  // From here on an error return leaves the handle blocked until Init.
  h->is_run_status = 1;
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! Input data is NULL in ZebKol_ApplyDigitalGain.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (h->gain_dB == kGainNeverSetDb) {
    // The first value passes unchecked.
    h->gain_dB = gain_value;
    h->gain = DecibelToValue(gain_value);
  } else if (gain_value != h->gain_dB) {
    if (gain_value < kDigitalGainMinDb || gain_value > kDigitalGainMaxDb) {
      ALGO_ERR(lv, "[%s]Fail! Gain value out of range in ZebKol_ApplyDigitalGain.\t\n", __func__);
      return ALGO_KOL_RET_FAILED;
    }
    h->gain_dB = gain_value;
    h->gain = DecibelToValue(gain_value);
  }
  postInfo_t* post = h->postInfo;
  post->length = (int)(h->kol_init.point_number * h->kol_init.channel);
  post->channel_number = 1;
  post->bias = 0;
  post->flag = 0;
  Post_Dgain_Process(pss_audio_in, h->gain, post);
  h->is_run_status = 0;
  return ALGO_KOL_RET_SUCCESS;
}

}  // extern "C"
