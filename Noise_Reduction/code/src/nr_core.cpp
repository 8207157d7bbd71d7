// Noise reducer of one channel: initialisation, user configuration, the frame
// entry that dispatches to the filter mode, and the scenario detectors.
#include <math.h>
#include <string.h>

#include "debug_msglevel.h"
#include "nr_core.h"
#include "nr_webrtc.h"

extern "C" {

const float NR_b_conv[NR_B_CONV_TAPS] = {
    0.0018f, 0.0072f, 0.0157f, 0.0266f, 0.039f,  0.0519f, 0.0643f, 0.0752f,
    0.0837f, 0.0891f, 0.0909f, 0.0891f, 0.0837f, 0.0752f, 0.0643f, 0.0519f,
    0.039f,  0.0266f, 0.0157f, 0.0072f, 0.0018f, 0.0f,
};

const float NR_b_mean[NR_B_MEAN_TAPS] = {
    0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f,
    0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f,
    0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f,
    0.04545454f, 0.04545454f, 0.04545454f, 0.04545454f,
};

const float NR_b_xi_local[NR_B_XI_LOCAL_TAPS] = {0.25f, 0.5f, 0.25f, 0.0f};

// A 31-point Hann window of unit sum, then one zero tap.
const float NR_b_xi_global[NR_B_XI_GLOBAL_TAPS] = {
    0.00060046f, 0.00237876f, 0.00526657f, 0.00915291f, 0.01388843f, 0.01929114f,
    0.02515343f, 0.03125f,    0.03734657f, 0.04320886f, 0.04861157f, 0.05334709f,
    0.05723343f, 0.06012123f, 0.06189954f, 0.0625f,     0.06189954f, 0.06012123f,
    0.05723343f, 0.05334709f, 0.04861157f, 0.04320886f, 0.03734657f, 0.03125f,
    0.02515343f, 0.01929114f, 0.01388843f, 0.00915291f, 0.00526657f, 0.00237876f,
    0.00060046f, 0.0f,
};

}  // extern "C"

namespace {

// ---------------------------------------------------------- constants ----

constexpr float kSpectrumScale = 65536.0f;  // the record keeps the spectrum / 65536
constexpr int kMaxIntensity = 30;
constexpr int kMaxBandEdge = 128;
constexpr int kMaxSmoothLevel = 10;
constexpr int kDefaultSmoothOrder = 10;
constexpr int kDefaultConvergeSpeed = 1;
constexpr int kNnFilterMode = 5;
constexpr int kNnConvergeSpeed = 2;
constexpr int kNnRefusedRateHz = 48000;
constexpr unsigned short kQuantileCounterStart = 200;
constexpr unsigned short kBlockIndStart = 0xFFFF;
constexpr int kModelUpdateWindow = 50;
constexpr float kModeFiveSumFloat = 0.1f;  // constant activity reported by mode 5

// Bands of NR_SetMode at initialisation: edges in bins and intensity 20.
constexpr int kIntensityBandDefault[NR_INTENSITY_EDGES] = {3, 24, 40, 64, 80, 128};
constexpr int kIntensityDefault = 20;

// Bin limits of the prior speech absence: round(f / fs * 256 + 1) for these
// frequencies, k_u limited to 256.
constexpr double kLowBinHz = 200.0;
constexpr double kHighBinHz = 10000.0;
constexpr double kLocal2Hz = 500.0;
constexpr double kLocal3Hz = 3500.0;
constexpr float kMaxUpperBin = 256.0f;

// Where each mode's band walk ends (exclusive): band 6 runs up to it.
constexpr int kModeZeroBins = 129;      // bins 0..128
constexpr int kModeOneToFourBins = 130;  // one entry further than the estimators read
constexpr int kModeFiveBins = NR_NN_BINS;
constexpr double kModeFiveEdgeScale = 1.25;  // 161 bins over the 129 of the edges

// ------------------------------------------------- intensity mapping ----

bool IntensityValid(int x) { return x >= 0 && x <= kMaxIntensity; }

struct WienerPair {
  float overdrive;
  float denoiseBound;
};

// Filter mode 0: over-subtraction and gain floor; the products are taken in
// double and narrowed before the float addition.
WienerPair ModeZeroPair(int x) {
  if (x == 0) return {1.0f, 0.5f};
  if (x < 10) return {1.0f, 0.5f - (float)(x * 0.025)};
  if (x < 20) return {1.0f + (float)((x - 10) * 0.01), 0.25f - (float)((x - 10) * 0.0125)};
  return {1.1f + (float)((x - 20) * 0.015), 0.125f - (float)((x - 20) * 0.0124)};
}

// Modes 1 to 5: scale on the noise estimate, 20 neutral.
float NoiseScale(int x) {
  if (x == 0) return 0.0f;
  if (x <= 10) return 0.0f + (float)(x * 0.08);
  if (x <= 20) return 0.8f + (float)((x - 10) * 0.02);
  return 1.0f + (float)((x - 20) * 0.04685);
}

// Mode 5: share of the processed signal in the mix.
float MixRatio(int x) {
  if (x == 0) return 0.0f;
  if (x < kMaxIntensity) return 0.5f + (float)(x * 0.0166666);
  return 1.0f;
}

// The mode-0 tables hold 128 bins, the walk covers 129. The record lays
// denoiseBound right behind overdrive and gainmap right behind denoiseBound,
// so the cell of bin 128 of overdrive is denoiseBound[0] and that of bin 128
// of denoiseBound is gainmap (the flag written after the walk replaces it).
void WriteModeZeroBin(NSinst_t* inst, int bin, WienerPair v) {
  if (bin < NR_BAND_TABLE_BINS) {
    inst->overdrive[bin] = v.overdrive;
    inst->denoiseBound[bin] = v.denoiseBound;
    return;
  }
  inst->denoiseBound[0] = v.overdrive;
  memcpy(&inst->gainmap, &v.denoiseBound, sizeof(inst->gainmap));
}

void MapModeZero(NSinst_t* inst, const int* edges, const int* intensity) {
  WienerPair last = {0.0f, 0.0f};
  int bin = 0;
  for (int k = 0; k < NR_INTENSITY_BANDS; ++k) {
    const int x = intensity[k];
    if (IntensityValid(x)) {
      last = ModeZeroPair(x);
    } else {
      ALGO_ERR(inst->dbg_level, "[ANR]Fail! ANR filter mode 0 anr_intensity must between [0 , 30].\t\n");
    }
    const int end = k < NR_INTENSITY_EDGES ? edges[k] : kModeZeroBins;
    for (; bin < end && bin < kModeZeroBins; ++bin) WriteModeZeroBin(inst, bin, last);
  }
  inst->gainmap = 1;
}

void MapNoiseScale(NSinst_t* inst, const int* edges, const int* intensity) {
  float last = 0.0f;
  int bin = 0;
  for (int k = 0; k < NR_INTENSITY_BANDS; ++k) {
    const int x = intensity[k];
    if (IntensityValid(x)) {
      last = NoiseScale(x);
    } else {
      ALGO_ERR(inst->dbg_level,
               "[ANR]Fail! ANR filter mode 1-4 anr_intensity must between [0 , 30].\t\n");
    }
    const int end = k < NR_INTENSITY_EDGES ? edges[k] : kModeOneToFourBins;
    for (; bin < end && bin < kModeOneToFourBins; ++bin) inst->noise_suppression_gain[bin] = last;
  }
}

// Mode 5 bin j belongs to a band whose edge e satisfies j < e * 1.25.
bool InNnBand(int bin, int k, const int* edges) {
  if (k >= NR_INTENSITY_EDGES) return bin < kModeFiveBins;
  return bin < kModeFiveBins && (double)bin < (double)edges[k] * kModeFiveEdgeScale;
}

// One walk of mode 5 over `table` with `map`; returns the float sum of the
// seven band values.
float MapModeFiveWalk(NSinst_t* inst, const int* edges, const int* intensity, float* table,
                      float (*map)(int)) {
  float last = 0.0f;
  float sum = 0.0f;
  int bin = 0;
  for (int k = 0; k < NR_INTENSITY_BANDS; ++k) {
    const int x = intensity[k];
    if (IntensityValid(x)) {
      last = map(x);
    } else {
      ALGO_ERR(inst->dbg_level, "[ANR]Fail! ANR filter mode 5 anr_intensity must between [0 , 30].\t\n");
    }
    for (; InNnBand(bin, k, edges); ++bin) table[bin] = last;
    sum += last;
  }
  return sum;
}

void MapModeFive(NSinst_t* inst, const int* edges, const int* intensity) {
  MapModeFiveWalk(inst, edges, intensity, inst->noise_suppression_gain, NoiseScale);
  const float mixSum = MapModeFiveWalk(inst, edges, intensity, inst->noise_mix_ratio, MixRatio);
  // A dry mix, once asked for, stays on: a later full-intensity configuration
  // does not clear it.
  if (mixSum < (float)NR_INTENSITY_BANDS) inst->mix_enable = 1;
}

// ------------------------------------------------------ initialisation ----

float BinOf(double frequencyHz, int fs) {
  return (float)round(frequencyHz / (double)fs * 256.0 + 1.0);
}

void SetBinLimits(NSinst_t* inst) {
  inst->k_l = BinOf(kLowBinHz, inst->fs);
  inst->k_u = BinOf(kHighBinHz, inst->fs);
  inst->k2_local = BinOf(kLocal2Hz, inst->fs);
  inst->k3_local = BinOf(kLocal3Hz, inst->fs);
  if (inst->k_u > kMaxUpperBin) inst->k_u = kMaxUpperBin;
}

void InitQuantileState(NSinst_t* inst) {
  for (int i = 0; i < NR_MAGN_LEN_BINS; ++i) {
    inst->quantile[i] = 0.0f;
    inst->lquantile[i] = 8.0f;
    inst->density[i] = 0.3f;
  }
  inst->counter[0] = kQuantileCounterStart;
  inst->quantite = 0.25f;
  inst->updates = 0;
  inst->noise_cnt = 0;
}

void InitModeZeroBins(NSinst_t* inst) {
  for (int i = 0; i < NR_MAGN_LEN_BINS; ++i) {
    inst->smooth[i] = 0.9999f;
    inst->magnPrev[i] = 0.0f;
    inst->noisePrev[i] = 0.0f;
    inst->startNoiseFilter[i] = 1.0f;
    inst->logLrtTimeAvg[i] = 0.5f;
    inst->magnAvgPause[i] = 0.0f;
    inst->initMagnEst[i] = 0.0f;
  }
}

void InitFeatureModel(NSinst_t* inst) {
  // featureData[1] and [2] are unused and keep the zero of the cleared buffer.
  inst->featureData[0] = 0.5f;
  inst->featureData[3] = 0.5f;
  inst->featureData[4] = 0.5f;
  inst->featureData[5] = 0.0f;
  inst->featureData[6] = 0.0f;
  memset(inst->histLrt, 0, sizeof(inst->histLrt));
  memset(inst->histSpecFlat, 0, sizeof(inst->histSpecFlat));
  memset(inst->histSpecDiff, 0, sizeof(inst->histSpecDiff));
  inst->blockInd = kBlockIndStart;
  const float prior[NR_MODEL_PARAMS] = {0.5f, 0.5f, 1.0f, 0.5f, 1.0f, 0.0f, 0.0f};
  memcpy(inst->priorModelPars, prior, sizeof(prior));
  inst->modelUpdatePars[0] = 2;
  inst->modelUpdatePars[1] = kModelUpdateWindow;
  inst->modelUpdatePars[2] = 0;
  inst->modelUpdatePars[3] = kModelUpdateWindow;
}

// ------------------------------------------------------- frame entry ----

// Copies the packed spectrum into `to` divided by 65536, `bins` complex values.
void ScaleIn(complex_t* to, const float* from, int bins) {
  for (int i = 0; i < bins; ++i) {
    to[i].re = from[2 * i] / kSpectrumScale;
    to[i].im = from[2 * i + 1] / kSpectrumScale;
  }
}

void BringSpectrumIn(NSinst_t* inst, const float* inOutFrame) {
  // Mode 5 hands a block of 160 samples, not a spectrum: the copy still runs
  // but covers only that block, and the mode does not read what it leaves.
  const int bins = inst->filter_mode == kNnFilterMode ? NR_NN_BLOCK_SAMPLES / 2 : inst->magnLen;
  if (inst->aec_enable_flag == 1) {
    ScaleIn(inst->frequency_buffer_output, inOutFrame, bins);
    ScaleIn(inst->frequency_buffer, inst->fft_aec_buf_2ch, inst->magnLen);
  } else {
    ScaleIn(inst->frequency_buffer, inOutFrame, bins);
  }
}

float SumOfGains(const NSinst_t* inst) {
  float sum = 0.0f;
  for (int i = 0; i < NR_MAGN_LEN_BINS; ++i) sum += inst->G[i];
  return sum;
}

// --------------------------------------------------------- detectors ----

void CountSinetoneCandidates(NSinst_t* inst, int length) {
  for (int i = 0; i < length; ++i) {
    if (inst->zscore[i] == 1.0f) {
      // Saturates rather than wrapping: a stable tone stays a candidate.
      if (Counter16Add(&inst->sinetone_candidate[i], 1)) inst->sinetone_candidate[i] = 32767;
    } else {
      inst->sinetone_candidate[i] = 0;
    }
  }
}

}  // namespace

extern "C" {

// ================================================== initialisation ==

void NR_InitInternalParams(NSCJsoninst_t* internal_params) {
  if (internal_params == NULL) return;
  *internal_params = kNrInternalParamsDefault;
}

void NR_set_feature_extraction_parameters(NSinst_t* inst) {
  NSParaExtract_t* p = &inst->featureExtractionParams;
  p->binSizeLrt = 0.1f;
  p->binSizeSpecFlat = 0.05f;
  p->binSizeSpecDiff = 0.1f;
  p->rangeAvgHistLrt = 1.0f;
  p->factor1ModelPars = 1.2f;
  p->factor2ModelPars = 0.9f;
  p->thresPosSpecFlat = 0.6f;
  p->limitPeakSpacingSpecFlat = 2 * p->binSizeSpecFlat;
  p->limitPeakSpacingSpecDiff = 2 * p->binSizeSpecDiff;
  p->limitPeakWeightsSpecFlat = 0.5f;
  p->limitPeakWeightsSpecDiff = 0.5f;
  p->thresFluctLrt = 0.05f;
  p->maxLrt = 1.0f;
  p->minLrt = 0.2f;
  p->maxSpecFlat = 0.95f;
  p->minSpecFlat = 0.1f;
  p->maxSpecDiff = 1.0f;
  p->minSpecDiff = 0.16f;
  // At least 30 % of the update window must fall in a peak to trust it.
  p->thresWeightSpecFlat = (int)(float)(inst->modelUpdatePars[1] * 0.3);
  p->thresWeightSpecDiff = (int)(float)(inst->modelUpdatePars[1] * 0.3);
}

void NR_SetSmoothOrder(NSinst_t* inst, int order) {
  inst->moving_average_order = order;
  inst->moving_average_smooth_const = 1.0f / (float)(order + 1);
}

int NR_SetProcessBins(NSinst_t* inst, int level) {
  if (level == 0) {
    inst->process_bins = inst->magnLen;
    return 0;
  }
  const int bins = 250 - 10 * level;
  inst->process_bins = bins <= 9 ? 10 : bins;
  return 0;
}

void NR_SetUpdateFilterFrames(NSinst_t* inst, int speed) {
  switch (speed) {
    case 0:
      inst->nframe_update_filter = 3;
      break;
    case 1:
      inst->nframe_update_filter = 2;
      break;
    case 2:
      inst->nframe_update_filter = 1;
      break;
    default:
      inst->nframe_update_filter = 3;
      break;
  }
}

int NR_InitCore(NSinst_t* inst, _AudioAnrInit* anr_init) {
  inst->fs = anr_init->sample_rate;
  inst->pn = (int)anr_init->point_number;
  inst->channel = (int)anr_init->channel;
  inst->anaLen = NR_ANA_LEN_SAMPLES;
  inst->outLen = 0;
  inst->magnLen = inst->anaLen / 2 + 1;

  inst->AutoSmooth = 0;
  inst->moving_average_order = 0;
  inst->moving_average_smooth_const = 1.0f / (float)(0 + 1);
  inst->process_bins = inst->magnLen;
  inst->nframe_cnt = 0;
  inst->nframe_update_filter = 1;
  inst->frame_cnt = 0;

  InitQuantileState(inst);
  memset(inst->aggrMode, 0, sizeof(inst->aggrMode));
  inst->firstStartFrameNum = 7;
  inst->firstStartFrameFlag = 1;
  inst->priorSpeechProb = 0.5f;
  InitModeZeroBins(inst);
  InitFeatureModel(inst);
  inst->signalEnergy = 0.0f;
  inst->sumMagn = 0.0f;
  inst->whiteNoiseLevel = 0.0f;
  inst->pinkNoiseNumerator = 0.0f;
  inst->pinkNoiseExp = 0.0f;
  NR_set_feature_extraction_parameters(inst);
  inst->SilenceSupressScale = 1.0f;
  inst->initFlag = 1;

  // filter_mode is still the 0 of the cleared record: this maps mode 0.
  int bands[NR_INTENSITY_EDGES];
  int intensity[NR_INTENSITY_BANDS];
  memcpy(bands, kIntensityBandDefault, sizeof(bands));
  for (int& x : intensity) x = kIntensityDefault;
  NR_SetMode(inst, bands, intensity);

  inst->b_conv = NR_b_conv;
  inst->b_mean = NR_b_mean;
  inst->b_xi_local = NR_b_xi_local;
  inst->b_xi_global = NR_b_xi_global;
  SetBinLimits(inst);

  inst->l_mod_lswitch = 0;
  inst->time_counter = 0;
  for (float& v : inst->eta_2term) v = 1.0f;
  memcpy(inst->ones, inst->eta_2term, sizeof(inst->ones));
  // The neural denoiser's state and the rate bridge are set up by their own
  // modules; this build has neither, so initialisation ends here.
  return 0;
}

int NR_Init(NSinst_t* inst, _AudioAnrInit* anr_init) {
  if (inst == NULL) return -1;
  ALGO_MSG(inst->dbg_level, "[ANR] Converge mode: Normal.\t\n");
  inst->aec_enable_flag = 0;
  NR_InitCore(inst, anr_init);
  NR_SetUpdateFilterFrames(inst, kDefaultConvergeSpeed);
  NR_SetSmoothOrder(inst, kDefaultSmoothOrder);
  NR_InitInternalParams(inst->InternalParams);
  return 0;
}

// ================================================== configuration ==

_ALGO_ANR_RET Nr_CheckUserConfig(_AudioAnrConfig* anr_config, int fs, int pn, int dbg_level) {
  if (anr_config == NULL) return _ALGO_ANR_RET_INVALID_HANDLE;
  const _AudioAnrConfig* c = anr_config;
  if (c->anr_enable != 0 && c->anr_enable != 1) {
    ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported ANR configuration anr_enable %d. [0 or 1]\t\n",
             (int)c->anr_enable);
    return _ALGO_ANR_RET_INVALID_ENABLE;
  }
  if (c->user_mode > 2) {
    ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported ANR configuration user_mode %d. [0~2]\t\n",
             (int)c->user_mode);
    return _ALGO_ANR_RET_INVALID_MODE;
  }
  // The user's own bands, smoothing and speed are checked only when they apply.
  if (c->anr_enable == 1 && (c->user_mode == 1 || c->user_mode == 2)) {
    for (int i = 0; i < NR_INTENSITY_BANDS; ++i) {
      if (!IntensityValid(c->anr_intensity[i])) {
        ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported anr_intensity %d in position %d. [0~30]\t\n",
                 c->anr_intensity[i], i);
        return _ALGO_ANR_RET_INVALID_INTENSITY;
      }
    }
    for (int i = 0; i < NR_INTENSITY_EDGES; ++i) {
      const int edge = c->anr_intensity_band[i];
      if (edge < 0 || edge > kMaxBandEdge) {
        ALGO_ERR(dbg_level,
                 "[ANR]Fail! Unsupported anr_intensity_band %d in position %d. [0~128]\t\n", edge,
                 i);
        return _ALGO_ANR_RET_INVALID_INTENSITY;
      }
      if (i > 0 && edge < c->anr_intensity_band[i - 1]) {
        ALGO_ERR(dbg_level, "[ANR]Fail! The anr_intensity setting is not in order. \t%d\t%d\n",
                 c->anr_intensity_band[i - 1], edge);
        return _ALGO_ANR_RET_INVALID_INTENSITY;
      }
    }
    if (c->anr_smooth_level > (unsigned int)kMaxSmoothLevel) {
      ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported anr_smooth_level %d. [0~10]\t\n",
               (int)c->anr_smooth_level);
      return _ALGO_ANR_RET_INVALID_SMOOTH_LEVEL;
    }
    if (c->anr_converge_speed < 0 || c->anr_converge_speed > 2) {
      ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported anr_converge_speed %d. [0~2]\t\n",
               c->anr_converge_speed);
      return _ALGO_ANR_RET_INVALID_CONVERGE_SPEED;
    }
  }
  if (c->anr_filter_mode < 0 || c->anr_filter_mode > kNnFilterMode) {
    ALGO_ERR(dbg_level, "[ANR]Fail! Unsupported anr_filter_mode %d. [0~5]\t\n",
             c->anr_filter_mode);
    return _ALGO_ANR_RET_INVALID_FILTER_MODE;
  }
  if (c->anr_filter_mode == kNnFilterMode) {
    if (c->anr_converge_speed != kNnConvergeSpeed) {
      ALGO_ERR(dbg_level,
               "[ANR]Fail! Unsupported anr_converge_speed %d. The anr_filter_mode 5 is only "
               "support anr_converge_speed is 2.\t\n",
               c->anr_converge_speed);
      return _ALGO_ANR_RET_INVALID_CONVERGE_SPEED;
    }
    if (fs == kNnRefusedRateHz) {
      ALGO_ERR(dbg_level,
               "[ANR]Fail! Unsupported 48kHz sample rate. The anr_filter_mode 5 is only support "
               "sample rate 8kHz, 16kHz and 32kHz in Vers.1, Vers.2, Vers.4 and Vers.5.\t\n");
      return _ALGO_ANR_RET_INVALID_SAMPLE_RATE;
    }
    if (pn != NR_FRAME_LEN_SAMPLES) {
      ALGO_ERR(dbg_level,
               "[ANR]Fail! Unsupported point_number %d.The anr_filter_mode 5 is only support "
               "point number 128 in Vers.1, Vers.2, Vers.4 and Vers.5.\t\n",
               pn);
      return _ALGO_ANR_RET_INVALID_POINT_NUMBER;
    }
  }
  return _ALGO_ANR_RET_SUCCESS;
}

_ALGO_ANR_RET NR_Config(NSinst_t* inst, _AudioAnrConfig* anr_config) {
  if (inst == NULL) {
    ALGO_ERR_ALWAYS("[%s]Fail! The anr handle is NULL.\t\n", "NR_Config");
    return _ALGO_ANR_RET_INVALID_HANDLE;
  }
  const _ALGO_ANR_RET ret = Nr_CheckUserConfig(anr_config, inst->fs, inst->pn, inst->dbg_level);
  if (ret != _ALGO_ANR_RET_SUCCESS) return ret;
  // NR_SetMode maps the tables of the mode in force: set it first.
  inst->filter_mode = anr_config->anr_filter_mode;
  NR_SetMode(inst, anr_config->anr_intensity_band, anr_config->anr_intensity);
  if (anr_config->user_mode == 0) {
    NR_SetSmoothOrder(inst, kDefaultSmoothOrder);
    NR_SetUpdateFilterFrames(inst, kDefaultConvergeSpeed);
  } else {
    NR_SetSmoothOrder(inst, (int)anr_config->anr_smooth_level);
    NR_SetUpdateFilterFrames(inst, anr_config->anr_converge_speed);
  }
  return _ALGO_ANR_RET_SUCCESS;
}

void NR_SetMode(NSinst_t* inst, int* intensity_band, int* intensity) {
  memcpy(inst->aggrMode, intensity, sizeof(inst->aggrMode));
  if (inst->filter_mode == 0) {
    MapModeZero(inst, intensity_band, intensity);
  } else if (inst->filter_mode >= 1 && inst->filter_mode <= 4) {
    MapNoiseScale(inst, intensity_band, intensity);
  } else if (inst->filter_mode == kNnFilterMode) {
    MapModeFive(inst, intensity_band, intensity);
  }
}

// ==================================================== frame process ==

unsigned short NR_FrameCountLimit(const NSinst_t* inst) {
  return (unsigned short)((double)inst->fs * 0.5 / (double)inst->pn);
}

int NR_AdvanceFrameCounters(NSinst_t* inst) {
  if (Counter16Add(&inst->nframe_cnt, 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! nframe_cnt is reset.\t\n");
  }
  if (inst->frame_cnt <= NR_FrameCountLimit(inst)) {
    if (Counter16Add(&inst->frame_cnt, 1)) {
      ALGO_WRN(inst->dbg_level, "[ANR]Warning! frame_cnt is reset.\t\n");
    }
  }
  const int phase = inst->nframe_cnt;
  if (inst->nframe_cnt >= inst->nframe_update_filter) inst->nframe_cnt = 0;
  return phase;
}

_ALGO_ANR_RET NR_Process(NSinst_t* inst, float* inOutFrame) {
  BringSpectrumIn(inst, inOutFrame);
  inst->sum_filter = 0.0f;
  switch (inst->filter_mode) {
    case 0:
      if (NR_Webrtc_Process(inst, inOutFrame) != 0) return _ALGO_ANR_RET_INIT_ERROR;
      break;
    case 1:
    case 2:
    case 3:
    case 4:
      // The frame routines of these modes are not part of this build: the
      // frame passes through unchanged, and the activity is summed from the
      // gain of the last update as those routines leave it.
      inst->sum_filter = SumOfGains(inst);
      break;
    case kNnFilterMode:
      // The neural denoiser is not part of this build: the block passes
      // through unchanged.
      inst->sum_filter = kModeFiveSumFloat;
      break;
    default:
      break;
  }
  return _ALGO_ANR_RET_SUCCESS;
}

// ======================================================= detectors ==

float Compute_Mean(float* input, int length) {
  float sum = 0.0f;
  for (int i = 0; i < length; ++i) sum += input[i];
  return sum / (float)length;
}

float Compute_Std(float* input, int length, float mean) {
  float sum = 0.0f;
  for (int i = 0; i < length; ++i) sum += (input[i] - mean) * (input[i] - mean);
  return sum / (float)length;
}

void Sinetone_Dectection(NSinst_t* inst, float* spectrum, int length, int lag, float threshold,
                         float influence) {
  if (length > NR_SPECTRUM_SLOTS) length = NR_SPECTRUM_SLOTS;
  memset(inst->zscore, 0, sizeof(inst->zscore));
  for (int i = 0; i < length; ++i) inst->filteredSpectrum[i] = spectrum[i];
  // A window that is empty or longer than the spectrum finds no peak (an
  // empty one makes the statistics 0 / 0, which no test passes).
  if (lag > 0 && lag <= length) {
    float m = Compute_Mean(spectrum, lag);
    float s = Compute_Std(spectrum, lag, m);
    for (int i = lag; i < length; ++i) {
      if (fabsf(spectrum[i] - m) > threshold * s) {
        inst->zscore[i] = spectrum[i] > m ? 1.0f : -1.0f;
        inst->filteredSpectrum[i] =
            influence * spectrum[i] + (1.0f - influence) * inst->filteredSpectrum[i - 1];
      } else {
        inst->zscore[i] = 0.0f;
      }
      // The window for the next bin ends just before this one.
      m = Compute_Mean(&inst->filteredSpectrum[i - lag], lag);
      s = Compute_Std(&inst->filteredSpectrum[i - lag], lag, m);
    }
  }
  CountSinetoneCandidates(inst, length < 0 ? 0 : length);
}

void Check_MicInlet(NSinst_t* inst) {
  const NSCJsoninst_t* p = inst->InternalParams;
  if (inst->filter_mode != 1 || (p->covermic_scenario == 0 && p->farfield_scenario == 0)) return;
  int low = inst->magnLen * p->covermic_bound1 / (inst->fs / 2);
  if (low < 0) low = 0;
  if (low > NR_MAGN_LEN_BINS - 1) low = NR_MAGN_LEN_BINS - 1;
  const float u = Compute_Mean(&inst->phat[low], NR_MAGN_LEN_BINS - low);
  const float w = Compute_Mean(inst->power_spectrum, NR_MAGN_LEN_BINS);
  inst->cmi_PowerSpectrum =
      inst->cmi_PowerSpectrum * p->covermic_alpha1 + (1.0f - p->covermic_alpha1) * w;
  if (inst->time_counter <= p->fmode1_Vwin) return;

  if (u > p->covermic_delta1) {
    if (inst->cmi_nospeechCnt > (int)(p->covermic_delta2 * (float)(inst->fs / inst->pn))) {
      if (inst->cmi_flag == 1) memcpy(inst->S, inst->cmi_S, sizeof(inst->S));
      inst->cmi_flag = 0;
    }
    inst->cmi_nospeechCnt = 0;
  } else if (Counter16Add(&inst->cmi_nospeechCnt, 1)) {
    ALGO_WRN(inst->dbg_level, "[ANR]Warning! cmi_nospeechCnt is reset.\t\n");
    inst->cmi_nospeechCnt = 32767;
  }
  // The frame's power has fallen far below its smoothed value: the
  // microphone inlet is covered, freeze the noise estimate.
  if (p->covermic_delta3 * w < inst->cmi_PowerSpectrum) {
    if (inst->cmi_flag == 0) memcpy(inst->cmi_S, inst->S, sizeof(inst->cmi_S));
    inst->cmi_flag = 1;
  }
}

void NR_Sum_Speech_Prob(NSinst_t* inst, int* speech_probability, int anr_filter_mode,
                        int channel_num) {
  float t = 0.0f;
  if (anr_filter_mode == 0) {
    t = inst->sum_filter;
  } else {
    for (int i = 0; i < NR_MAGN_LEN_BINS; ++i) t += inst->PH1[i];
  }
  t = t / 129.0f * 100.0f;
  if (t < 0.0f) t = 0.0f;
  if (t > 100.0f) t = 100.0f;
  *speech_probability = (channel_num * *speech_probability + (int)t) / (channel_num + 1);
}

}  // extern "C"
