// The chain's user-designed biquads: design into the EQ instances, apply to
// one frame outside Run, and report the summed magnitude response.
#include <string.h>

#include "AudioProcess.h"
#include "AudioProcessWrapper.h"
#include "debug_msglevel.h"
#include "eq_biquad.h"
#include "eq_filter.h"

namespace {

// Raw-audio dumps are not carried by this build: nothing to open.
int DebugDumpDataInit(AudioKolInternel* /*h*/) { return 0; }

bool EqBufferAllocated(const AudioKolInternel* h) { return h->kol_switch.eq_enable == 1; }

}  // namespace

extern "C" {

ALGO_KOL_RET _ZebKol_FilterDesign(KOL_HANDLE handle, int filter_cnt,
                                  AudioFilterConfig* filter_config) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (!EqBufferAllocated(h)) {
    ALGO_ERR(lv, "[%s]Fail! Please initialize EQ buffer before ZebKol_FilterDesign.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (filter_config == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The filter_config is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (EQ_DesignUserFilter(h->eq_inst, h->kol_init.channel, filter_cnt, filter_config) != 0) {
    return ALGO_KOL_RET_FAILED;
  }
  h->iir_enable = 1;
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_FilterApply(KOL_HANDLE handle, short* pss_audio_in) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (!EqBufferAllocated(h)) {
    ALGO_ERR(lv, "[%s]Fail! Please initialize EQ buffer befire ZebKol_FilterApply\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (pss_audio_in == NULL) {
    ALGO_ERR(lv, "[%s]Fail! Input data is NULL in ZebKol_FilterApply.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (DebugDumpDataInit(h) != 0) {
    ALGO_ERR(lv, "[%s]Fail! Debug dump init is error.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  const int pn = (int)h->kol_init.point_number;
  const int channels = (int)h->kol_init.channel;
  short planes[KOL_MAX_CHANNELS][KOL_FRAME_LEN_SAMPLES];
  RearranegOneArrayToMultipleChannel(pss_audio_in, &planes[0][0], pn, channels);
  for (int m = 0; m < channels; ++m) InfiniteImpulseResponseFilter(h->eq_inst[m], planes[m]);
  RearrangeMultipleChannelDataToOneArray(&planes[0][0], pss_audio_in, pn, channels);
  return ALGO_KOL_RET_SUCCESS;
}

ALGO_KOL_RET _ZebKol_FilterFreqz(KOL_HANDLE handle, float* frequency_response) {
  AudioKolInternel* h = KOL_HandleOrReport(handle, __func__);
  if (h == NULL) return ALGO_KOL_RET_INVALID_HANDLE;
  const int lv = h->dbg_level;
  if (!EqBufferAllocated(h)) {
    ALGO_ERR(lv, "[%s]Fail! Need allocate buffer for EQ.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  if (frequency_response == NULL) {
    ALGO_ERR(lv, "[%s]Fail! The frequency_response is NULL.\t\n", __func__);
    return ALGO_KOL_RET_FAILED;
  }
  EQ_SumDesignedResponses(h->eq_inst[0], frequency_response);
  return ALGO_KOL_RET_SUCCESS;
}

}  // extern "C"
