// Time-domain AGC core: one digital gain per channel, counted in half dB,
// moved towards the compression curve once per core frame, held under the
// noise gate and cut at once when the frame would saturate.
#include "agc.h"

#include <math.h>
#include <string.h>

#include "DynamicRangeProcessing.h"
#include "debug_msglevel.h"
#include "frame_stage.h"
#include "ne10_math.h"
#include "windowfilt.h"

namespace {

// Frames of 128 samples are cut into core frames of this many samples.
constexpr int kChainFrameLenSamples = 128;
constexpr int kChainFrameAltLenSamples = 256;
constexpr int kCoreFrame8kSamples = 32;
constexpr int kCoreFrame16kSamples = 64;
constexpr int kCoreFrame32k48kSamples = 128;

constexpr float kLevelFloorDb = -120.0f;
constexpr float kLevelCeilDb = 0.0f;
constexpr float kFullScale = 32767.0f;
// Keeps log10 of a silent frame finite: 2^-26.
constexpr float kRmsBias = 1.525879e-8f;
// 6.02 dB per doubling; the half-dB gain is halved before use.
constexpr float kDbPerOctave = 6.02401f;
constexpr float kGainEpsilon = 1e-6f;
// Errors within this band (half dB) neither raise nor lower the gain.
constexpr float kDeadZoneHalfDb = 0.01f;
// A relax step under the gate: half a dB.
constexpr float kGateStepHalfDb = 1.0f;
constexpr int kUnusedSatThreshold = 24357;
constexpr float kUnusedStepSizeDb = 0.5f;
constexpr int kStuckThrFloor = 63;

// Defaults of AGC_Init and of AGC_Config with user_mode 0.
constexpr int kInitSatThresholdDb = -3;
constexpr int kInitNoiseGateDb = -60;
constexpr float kInitTargetDb = -3.0f;
constexpr int kInitDropGainMaxHalfDb = 12;
constexpr int kDefaultNoiseGateDb = -50;
constexpr int kDefaultGainMaxDb = 20;
constexpr short kDefaultCurveInputDb[AGC_USER_CURVE_POINTS] = {-50, -30, -20, -10, -3, -3, -3};
constexpr short kDefaultCurveOutputDb[AGC_USER_CURVE_POINTS] = {-30, -20, -15, -5, -5, -3, -3};

// Ranges of the user record.
constexpr unsigned int kDropGainMaxLimit = 120;
constexpr unsigned int kGainStepLimit = 10;
constexpr unsigned int kFrameCountLimit = 99;
constexpr unsigned int kPercentLimit = 100;
constexpr int kNoiseGateLimitDb = 120;
constexpr int kCurveFloorDb = -120;
constexpr int kGainInfoMinDb = -120;
constexpr int kGainInfoMaxDb = 100;
constexpr int kGainInitLimitDb = 100;

// Float sample to 16 bits, toward zero; a NaN from a degenerate curve
// becomes 0 instead of an undefined conversion.
short ClampToShort(float v) {
  if (v != v) return 0;
  if (v > 32767.0f) return 32767;
  if (v < -32768.0f) return -32768;
  return (short)(int)v;
}

int AbsSample(short s) { return s < 0 ? -(int)s : (int)s; }

float ClampLevelDb(float dB) {
  if (dB < kLevelFloorDb) return kLevelFloorDb;
  if (dB > kLevelCeilDb) return kLevelCeilDb;
  return dB;
}

bool CurvePointOutOfRange(int in, int out) {
  return in < kCurveFloorDb || in > 0 || out < kCurveFloorDb || out > 0;
}

// Which of the user's values the setters of AGC_Config take.
struct CoreSettings {
  int satThresholdDb;
  _AgcGainInfo gainInfo;
  int attenuationPercent;
  const short* curveIn;
  const short* curveOut;
  int noiseGateDb;
  int upFrames;
  int downFrames;
  int dropGainMax;
  int gainStep;
};

CoreSettings SettingsFrom(const _AudioAgcConfig* c) {
  if (c->user_mode != 0) {
    return {c->drop_gain_threshold, c->gain_info, (int)c->noise_gate_attenuation_db,
            c->compression_ratio_input, c->compression_ratio_output, c->noise_gate_db,
            (int)c->release_time, (int)c->attack_time, (int)c->drop_gain_max, (int)c->gain_step};
  }
  return {kInitSatThresholdDb, {kDefaultGainMaxDb, 0, 0}, 0, kDefaultCurveInputDb, kDefaultCurveOutputDb,
          kDefaultNoiseGateDb, 1, 1, kInitDropGainMaxHalfDb, 1};
}

// The public settings and the core's copy hold the same fields under the
// same names and types; one copy serves both directions.
template <typename Dst, typename Src>
void CopyConfigFields(Dst* dst, const Src* src) {
  dst->agc_enable = src->agc_enable;
  dst->user_mode = src->user_mode;
  dst->gain_info.gain_max = src->gain_info.gain_max;
  dst->gain_info.gain_min = src->gain_info.gain_min;
  dst->gain_info.gain_init = src->gain_info.gain_init;
  dst->drop_gain_max = src->drop_gain_max;
  dst->attack_time = src->attack_time;
  dst->release_time = src->release_time;
  memcpy(dst->compression_ratio_input, src->compression_ratio_input, sizeof(dst->compression_ratio_input));
  memcpy(dst->compression_ratio_output, src->compression_ratio_output, sizeof(dst->compression_ratio_output));
  dst->drop_gain_threshold = src->drop_gain_threshold;
  dst->noise_gate_db = src->noise_gate_db;
  dst->noise_gate_attenuation_db = src->noise_gate_attenuation_db;
  dst->gain_step = src->gain_step;
}

}  // namespace

extern "C" {

const VolTable_t VolTable[AGC_VOL_TABLE_ENTRIES] = {
    {0, 32767},   {-1, 29203},  {-2, 26027},  {-3, 23197},  {-4, 20674},  {-5, 18426},  {-6, 16422},
    {-7, 14636},  {-8, 13044},  {-9, 11626},  {-10, 10361}, {-11, 9234},  {-12, 8230},  {-13, 7335},
    {-14, 6537},  {-15, 5826},  {-16, 5193},  {-17, 4628},  {-18, 4125},  {-19, 3676},  {-20, 3276},
    {-21, 2920},  {-22, 2602},  {-23, 2319},  {-24, 2067},  {-25, 1842},  {-26, 1642},  {-27, 1463},
    {-28, 1304},  {-29, 1162},  {-30, 1036},  {-31, 923},   {-32, 823},   {-33, 733},   {-34, 653},
    {-35, 582},   {-36, 519},   {-37, 462},   {-38, 412},   {-39, 367},   {-40, 327},   {-41, 292},
    {-42, 260},   {-43, 231},   {-44, 206},   {-45, 184},   {-46, 164},   {-47, 146},   {-48, 130},
    {-49, 116},   {-50, 103},   {-51, 92},    {-52, 82},    {-53, 73},    {-54, 65},    {-55, 58},
    {-56, 51},    {-57, 46},    {-58, 41},    {-59, 36},    {-60, 32},    {-61, 29},    {-62, 26},
    {-63, 23},    {-64, 20},    {-65, 18},    {-66, 16},    {-67, 14},    {-68, 13},    {-69, 11},
    {-70, 10},    {-71, 9},     {-72, 8},     {-73, 7},     {-74, 6},     {-75, 5},     {-76, 4},
    {-77, 3},     {-78, 2},     {-79, 1},     {-80, 1},
};

// ---- Conversions ----

float GetValueFromdB(float dB) {
  if (dB > (float)VolTable[0].db) return 32767.0f;
  if (dB < (float)VolTable[AGC_VOL_TABLE_ENTRIES - 1].db) return 1.0f;
  for (int i = 0; i < AGC_VOL_TABLE_ENTRIES; ++i) {
    if ((float)VolTable[i].db == dB) return (float)VolTable[i].val;
  }
  // Between two whole dB values: no entry.
  return 0.0f;
}

float GetdbFromValue(int value) {
  float dB = (float)(20.0 * log10(((double)value + 1.525879e-8) / 1024 / 32));
  if (dB < -80.0f) dB = -80.0f;
  if (dB > 0.0f) dB = 0.0f;
  return dB;
}

// ---- Setters ----

void AGC_SetSaturatedThresholdIndB(AGCinst_t* inst, int value) {
  inst->target_level_db = (float)value;
  inst->sat_threshold = GetValueFromdB(inst->target_level_db);
}

void AGC_SetTargetPowerIndB(AGCinst_t* inst, float value) {
  inst->Target_dB_now = value < inst->noise_thr ? inst->noise_thr : value;
}

void AGC_SetGainInfo(AGCinst_t* inst, _AgcGainInfo gain_info) {
  inst->analog_gain_now = 0.0f;
  inst->analog_gain_max = 0;
  inst->analog_gain_min = 0;
  inst->analog_gain_init = 0;
  inst->analog_gain_old = 0;
  inst->vol_now = 2 * gain_info.gain_init;
  inst->vol_max = 2 * gain_info.gain_max;
  inst->vol_min = 2 * gain_info.gain_min;
  inst->vol_init = 2 * gain_info.gain_init;
  inst->vol_old = inst->vol_init;
  inst->DGain = (float)inst->vol_init;
}

void AGC_SetCompressionRatioValue(AGCinst_t* inst, short* in, short* out, int len) {
  if (inst == NULL) return;
  if (len > AGC_CURVE_POINTS_MAX) len = AGC_CURVE_POINTS_MAX;
  for (int i = 0; i < len; ++i) {
    inst->compression_ratio_input[i] = (float)in[i];
    inst->compression_ratio_output[i] = (float)out[i];
  }
}

void AGC_SetNoiseGateAttenuation(AGCinst_t* inst, int per) {
  inst->noise_gate_attenuation_db = (float)per;
}

void AGC_SetNoiseGateIndB(AGCinst_t* inst, int dB) {
  inst->noise_thr = (float)dB;
  if (dB < 0) {
    inst->keep_gain = 0;
    inst->noise_gate_db = dB;
  } else {
    // Every level is at or below a gate of 0 dB or more: the gate is always
    // closed, and with keep_gain the gain simply holds.
    inst->keep_gain = 1;
    inst->noise_gate_db = -dB;
  }
}

void AGC_SetDownGainTime(AGCinst_t* inst, int value) {
  inst->gSetDownGainThr = value;
}

void AGC_SetUpGainTime(AGCinst_t* inst, int value) {
  inst->gSetUpGainThr = value;
  const int twice = 2 * value;
  inst->stuck_thr = (twice > kStuckThrFloor ? twice : kStuckThrFloor) + 1;
}

void AGC_SetDropGainMax(AGCinst_t* inst, int value) {
  inst->drop_gain_max = (float)value;
}

void AGC_SetGainStep(AGCinst_t* inst, int value) {
  inst->gain_step = (float)value;
}

// ---- Frame size and windows ----

int AGC_GetFrameSizeBySamplingRate(int sampling_rate, int input_size, int dbg_level) {
  if (input_size != kChainFrameLenSamples && input_size != kChainFrameAltLenSamples) {
    ALGO_ERR(dbg_level, "[AGC] Frame number setting Error\r\n");
    return -1;
  }
  switch (sampling_rate) {
    case 8000: return kCoreFrame8kSamples;
    case 16000: return kCoreFrame16kSamples;
    case 32000:
    case 48000: return kCoreFrame32k48kSamples;
    default:
      ALGO_ERR(dbg_level, "[AGC] Sample rate setting Error\r\n");
      return -1;
  }
}

int AGC_SetWindowByFrameSize(AGCinst_t* inst, int frame_size) {
  if (inst == NULL) return -1;
  const float* window = NULL;
  switch (frame_size) {
    case kCoreFrame8kSamples: window = FloatingFftInWindow64; break;
    case kCoreFrame16kSamples: window = FloatingFftInWindow128; break;
    case kCoreFrame32k48kSamples: window = FloatingFftInWindow256; break;
    default:
      ALGO_ERR(inst->dbg_level, "[AGC] Window setting error\t\n");
      return -1;
  }
  // Analysis and synthesis share the table: sin^2 + cos^2 = 1 over the overlap.
  inst->FftInWindow_agc = window;
  inst->FftOutWindow_agc = window;
  return 0;
}

// ---- Lifecycle ----

void AGC_InitCore(AGCinst_t* inst, int frame_size) {
  inst->dgain_enable = 1;
  inst->agc_start = 0;
  inst->keep_gain = 0;
  inst->satu_flag = 0;
  inst->isUnderNoiseGate = 0;
  inst->DGain_pre = 0.0f;
  inst->original_data_rms_avg = 0.0f;
  inst->original_data_dB = 0.0f;
  inst->AGC_SetUpGain_counter = 0;
  inst->AGC_SetDownGain_counter = 0;
  inst->noise_gate_counter = 0;
  inst->stuck_thr = 0;
  inst->gInputAbsMax = 0;
  inst->AGC_SAT_THRESHOLD = kUnusedSatThreshold;
  inst->DgainStepSize = kUnusedStepSizeDb;
  inst->isTrueData = 1;
  inst->gain_step = 1.0f;
  inst->time_factor = frame_size != 0 ? kChainFrameLenSamples / frame_size : 0;
  inst->frame_length = frame_size;
  inst->buffer_size = 2 * frame_size;
}

int AGC_Init(AGCinst_t* inst, int frame_size) {
  if (inst == NULL) return -1;
  memset(inst->data_buf, 0, sizeof(inst->data_buf));
  memset(inst->TmpData, 0, sizeof(inst->TmpData));
  AGC_SetSaturatedThresholdIndB(inst, kInitSatThresholdDb);
  AGC_InitCore(inst, frame_size);
  AGC_SetNoiseGateIndB(inst, kInitNoiseGateDb);
  AGC_SetTargetPowerIndB(inst, kInitTargetDb);
  AGC_SetUpGainTime(inst, 1);
  AGC_SetDownGainTime(inst, 1);
  AGC_SetDropGainMax(inst, kInitDropGainMaxHalfDb);
  AGC_SetGainStep(inst, 1);
  return 0;
}

int AGC_CompressionRatioCurveSettingCheck(short* compression_ratio_input, short* compression_ratio_output,
                                          int len, int dbg_level) {
  const short* in = compression_ratio_input;
  const short* out = compression_ratio_output;
  if (CurvePointOutOfRange(in[0], out[0])) {
    ALGO_ERR(dbg_level, "[AGC] Fail! compression_ratio value error\t\n");
    ALGO_ERR(dbg_level, "compression_ratio_input[%d] = %d, compression_ratio_output[%d] = %d\n", 0, in[0], 0,
             out[0]);
    return -1;
  }
  for (int i = 1; i < len; ++i) {
    if (CurvePointOutOfRange(in[i], out[i]) || in[i] < in[i - 1] || out[i] < out[i - 1]) {
      ALGO_ERR(dbg_level, "[AGC] Fail! Compression_ratio value error!!!!\t\n");
      ALGO_ERR(dbg_level, "input[%d] = %d, output[%d] = %d, input[%d] = %d, output[%d] = %d\n", i - 1, in[i - 1],
               i - 1, out[i - 1], i, in[i], i, out[i]);
      return -1;
    }
  }
  return 0;
}

_ALGO_AGC_RET AGC_CheckUserConfig(_AudioAgcConfig* c, int dbg_level) {
  if (AGC_CompressionRatioCurveSettingCheck(c->compression_ratio_input, c->compression_ratio_output,
                                            AGC_USER_CURVE_POINTS, dbg_level) != 0) {
    return _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO;
  }
  if (c->drop_gain_max > kDropGainMaxLimit) {
    ALGO_ERR(dbg_level, "[AGC] DropGainMax value error\t%d\n", (int)c->drop_gain_max);
    return _ALGO_AGC_RET_INVALID_DROP_GAIN_MAX;
  }
  if (c->gain_step == 0 || c->gain_step > kGainStepLimit) {
    ALGO_ERR(dbg_level, "[AGC] GainStep value error\t%d\n", (int)c->gain_step);
    return _ALGO_AGC_RET_INVALID_GAIN_STEP;
  }
  if (c->release_time == 0 || c->release_time > kFrameCountLimit) {
    ALGO_ERR(dbg_level, "[AGC] ReleaseTime value error\t%d\n", (int)c->release_time);
    return _ALGO_AGC_RET_INVALID_RELEASE_TIME;
  }
  if (c->attack_time == 0 || c->attack_time > kFrameCountLimit) {
    ALGO_ERR(dbg_level, "[AGC] AttactTime value error\t%d\n", (int)c->attack_time);
    return _ALGO_AGC_RET_INVALID_ATTACK_TIME;
  }
  if (c->noise_gate_attenuation_db > kPercentLimit) {
    ALGO_ERR(dbg_level, "[AGC] noise_gate_attenuation_db value error\t%d\n", (int)c->noise_gate_attenuation_db);
    return _ALGO_AGC_RET_INVALID_NOISE_ATTENU;
  }
  if (c->noise_gate_db < -kNoiseGateLimitDb || c->noise_gate_db > kNoiseGateLimitDb) {
    ALGO_ERR(dbg_level, "[AGC] NoiseGateDB value error\t%d\n", c->noise_gate_db);
    return _ALGO_AGC_RET_INVALID_NOISE_GATE;
  }
  if (c->drop_gain_threshold < kCurveFloorDb || c->drop_gain_threshold > 0) {
    ALGO_ERR(dbg_level, "[AGC] TargetPowerDB value error\t%d\n", c->drop_gain_threshold);
    return _ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL;
  }
  const _AgcGainInfo& g = c->gain_info;
  if (g.gain_max < kGainInfoMinDb || g.gain_max > kGainInfoMaxDb) {
    ALGO_ERR(dbg_level, "[AGC] dB_info.max value error\t %d\n", g.gain_max);
    return _ALGO_AGC_RET_INVALID_GAIN_INFO;
  }
  if (g.gain_min < kGainInfoMinDb || g.gain_min > kGainInfoMaxDb) {
    ALGO_ERR(dbg_level, "[AGC] dB_info.min value error\t%d\n", g.gain_min);
    return _ALGO_AGC_RET_INVALID_GAIN_INFO;
  }
  if (g.gain_init < -kGainInitLimitDb || g.gain_init > kGainInitLimitDb) {
    ALGO_ERR(dbg_level, "[AGC] dB_info.init value error\t%d\n", g.gain_init);
    return _ALGO_AGC_RET_INVALID_GAIN_INFO;
  }
  return _ALGO_AGC_RET_SUCCESS;
}

_ALGO_AGC_RET AGC_Config(AGCinst_t* inst, _AudioAgcConfig* agc_config) {
  if (inst == NULL) return _ALGO_AGC_RET_INVALID_HANDLE;
  const _ALGO_AGC_RET ret = AGC_CheckUserConfig(agc_config, inst->dbg_level);
  if (ret != _ALGO_AGC_RET_SUCCESS) return ret;
  const CoreSettings s = SettingsFrom(agc_config);
  AGC_SetSaturatedThresholdIndB(inst, s.satThresholdDb);
  AGC_SetGainInfo(inst, s.gainInfo);  // restarts the gain at gain_init
  AGC_SetNoiseGateAttenuation(inst, s.attenuationPercent);
  AGC_SetCompressionRatioValue(inst, (short*)s.curveIn, (short*)s.curveOut, AGC_USER_CURVE_POINTS);
  AGC_SetNoiseGateIndB(inst, s.noiseGateDb);
  AGC_SetTargetPowerIndB(inst, (float)s.satThresholdDb);
  AGC_SetUpGainTime(inst, s.upFrames);
  AGC_SetDownGainTime(inst, s.downFrames);
  AGC_SetDropGainMax(inst, s.dropGainMax);
  AGC_SetGainStep(inst, s.gainStep);
  return _ALGO_AGC_RET_SUCCESS;
}

// ---- Per core frame ----

void AGC_DGainAmp(AGCinst_t* inst, short int* data) {
  inst->DGain_pre = inst->DGain;
  const float factor = (float)pow(2.0, (double)inst->DGain * 0.5 / (double)kDbPerOctave);
  const bool apply = fabsf(inst->DGain) > kGainEpsilon;
  for (int i = 0; i < inst->frame_length; ++i) {
    data[i] = apply ? ClampToShort((float)data[i] * factor) : data[i];
  }
}

int AGC_SaturationDetect(AGCinst_t* inst, short int* TmpData, short int* inOutFrame) {
  const int threshold = (int)inst->sat_threshold;
  int gainedPeak = 0;
  int rawPeak = 0;
  int saturated = 0;
  for (int i = 0; i < inst->frame_length; ++i) {
    const int a = AbsSample(TmpData[i]);
    if (a > gainedPeak) gainedPeak = a;
    if (a >= threshold) ++saturated;
    const int r = AbsSample(inOutFrame[i]);
    if (r > rawPeak) rawPeak = r;
  }
  inst->gInputPeakBuf = gainedPeak;
  inst->gInputAbsMax = rawPeak;
  return saturated > 0 ? 1 : 0;
}

void AGC_SetGain(AGCinst_t* inst, float value) {
  const float total = inst->analog_gain_now + inst->DGain + value;
  float ag = total;
  float dg = 0.0f;
  // The analog split is kept though this library has no analog stage: with
  // both limits at 0 the whole total lands in the digital gain.
  if (total >= (float)inst->analog_gain_max) {
    dg = total - (float)inst->analog_gain_max;
    ag = (float)inst->analog_gain_max;
  } else if (total <= (float)inst->analog_gain_min) {
    dg = total - (float)inst->analog_gain_min;
    ag = (float)inst->analog_gain_min;
  }
  if (dg > (float)inst->vol_max) dg = (float)inst->vol_max;
  if (dg < (float)inst->vol_min) dg = (float)inst->vol_min;
  inst->analog_gain_now = ag;
  inst->DGain = inst->dgain_enable == 1 ? dg : 0.0f;
}

void AGC_ReduceGain(AGCinst_t* inst) {
  if (inst->keep_gain != 0) return;
  if (Counter16Add(&inst->noise_gate_counter, 1)) {
    ALGO_WRN(inst->dbg_level, "[AGC]Warning! noise_gate_counter is reset.\t\n");
  }
  // The thresholds are crossed over against the control law: a cut gain
  // rises back after the attack count, a raised gain falls after the release
  // count.
  if (inst->DGain < 0.0f && inst->noise_gate_counter > inst->gSetDownGainThr) {
    inst->noise_gate_counter = 0;
    AGC_SetGain(inst, kGateStepHalfDb);
  }
  if (inst->DGain > 0.0f && inst->noise_gate_counter > inst->gSetUpGainThr) {
    inst->noise_gate_counter = 0;
    AGC_SetGain(inst, -kGateStepHalfDb);
  }
  if (inst->DGain == 0.0f) inst->noise_gate_counter = 0;
}

int AGC_SetTargetLevelByCompressionRation(AGCinst_t* inst) {
  const float x = inst->original_data_dB;
  const float* in = inst->compression_ratio_input;
  const float* out = inst->compression_ratio_output;
  float target = x;
  if (!(x < kLevelFloorDb)) {
    // Unused entries hold 0 and levels are at most 0, so a 7-point curve ends
    // the scan by entry 7; a full 20-point curve below the level falls back
    // on its last segment instead of reading past the arrays.
    int j = 0;
    while (j < AGC_CURVE_POINTS_MAX - 2 && !(in[j + 1] >= x)) ++j;
    if (j == 0) {
      target = out[1] + (x - in[1]) * ((out[0] - out[1]) / (in[0] - in[1]));
    } else {
      target = out[j] + (x - in[j]) * ((out[j + 1] - out[j]) / (in[j + 1] - in[j]));
    }
  }
  AGC_SetTargetPowerIndB(inst, target);
  return 0;
}

float AGC_MainProcess(AGCinst_t* inst, short int* AudioIn) {
  const int n = inst->frame_length;
  float sum = 0.0f;
  for (int i = 0; i < n; ++i) {
    const float s = (float)AudioIn[i];
    sum += s * s;
  }
  inst->original_data_rms_avg = (float)sqrt((double)(sum / (float)n)) + kRmsBias;
  inst->original_data_dB = ClampLevelDb((float)(20.0 * log10((double)inst->original_data_rms_avg / 32767.0)));
  if (inst->original_data_dB <= inst->noise_thr) {
    AGC_ReduceGain(inst);
    inst->isUnderNoiseGate = 1;
    return 0.0f;
  }
  AGC_SetTargetLevelByCompressionRation(inst);
  const float twiceTarget = inst->Target_dB_now + inst->Target_dB_now;
  const float twiceLevel = inst->original_data_dB + inst->original_data_dB;
  return twiceTarget - twiceLevel - inst->DGain;
}

void AGC_CalculateNewGain(AGCinst_t* inst, float gain) {
  if (gain >= kDeadZoneHalfDb) {
    inst->AGC_SetUpGain_counter += 1;
    inst->AGC_SetDownGain_counter = 0;
  } else if (gain > -kDeadZoneHalfDb) {
    inst->AGC_SetUpGain_counter = 0;
    inst->AGC_SetDownGain_counter = 0;
  } else {
    inst->AGC_SetDownGain_counter += 1;
    inst->AGC_SetUpGain_counter = 0;
  }
  if (inst->AGC_SetUpGain_counter >= inst->gSetUpGainThr) {
    AGC_SetGain(inst, gain < inst->gain_step ? gain : inst->gain_step);
    inst->AGC_SetUpGain_counter = 0;
  }
  if (inst->AGC_SetDownGain_counter >= inst->gSetDownGainThr) {
    AGC_SetGain(inst, gain > -inst->gain_step ? gain : -inst->gain_step);
    inst->AGC_SetDownGain_counter = 0;
  }
  if (inst->satu_flag) {
    // The change that brings the raw peak to the saturation threshold, at
    // most one drop; on top of the law's step, and not forced negative.
    float v = 2.0f * (inst->target_level_db - GetdbFromValue(inst->gInputAbsMax)) - inst->DGain_pre;
    if (v < (float)(-(int)inst->drop_gain_max)) v = -inst->drop_gain_max;
    AGC_SetGain(inst, v);
    inst->AGC_SetUpGain_counter = 0;
  }
}

float AGC_Process(AGCinst_t* inst, short int* inOutFrame) {
  if (inst == NULL) {
    ALGO_ERR_ALWAYS("AGCinst working buffer is NULL!\n");
    return -1.0f;
  }
  if (inOutFrame == NULL) {
    ALGO_ERR(inst->dbg_level, "AGC input frame is NULL!\n");
    return -1.0f;
  }
  // An instance whose Init failed has no valid frame: nothing to analyse.
  if (inst->frame_length <= 0 || inst->frame_length > AGC_DATA_BUF_SAMPLES) return inst->DGain;
  inst->isTrueData = 0;
  inst->isUnderNoiseGate = 0;
  const size_t bytes = sizeof(short) * (size_t)inst->frame_length;
  memcpy(inst->TmpData, inOutFrame, bytes);
  memcpy(inst->data_buf, inOutFrame, bytes);
  AGC_DGainAmp(inst, inst->TmpData);
  inst->satu_flag = AGC_SaturationDetect(inst, inst->TmpData, inst->data_buf);
  const float error = AGC_MainProcess(inst, inst->data_buf);
  AGC_CalculateNewGain(inst, error);
  if (inst->noise_gate_attenuation_db > 0.0f && inst->isUnderNoiseGate == 1) {
    // Overrides the law and ignores vol_min: -120 dB is the floor, so the
    // quieter the frame under the gate, the smaller the cut.
    inst->DGain = (-120.0f - inst->original_data_dB) * (inst->noise_gate_attenuation_db / 100.0f);
  }
  inst->DGain_pre = inst->DGain;
  inst->isTrueData = 1;
  return inst->DGain;
}

// ---- Records of the public API ----

void AGC_CopyInitRecord(_AudioAgcInit* dst, const AudioAgcInit* src) {
  dst->point_number = src->point_number;
  dst->channel = src->channel;
  dst->sample_rate = (int)src->sample_rate;
}

void AGC_CopyUserConfig(_AudioAgcConfig* dst, const AudioAgcConfig* src) { CopyConfigFields(dst, src); }

void AGC_CopyUserConfigOut(AudioAgcConfig* dst, const _AudioAgcConfig* src) { CopyConfigFields(dst, src); }

void AGC_ProcessFrameBlocks(AGCinst_t* inst, postInfo_t* post, short* history, float* buf, float* tail,
                            short* frame, unsigned int channels, int ch, int startFlag) {
  const int blockLen = inst->frame_length;
  const int bufLen = inst->buffer_size;
  for (int i = 0; i < inst->time_factor; ++i) {
    const int frameOffset = (int)channels * blockLen * i;
    FrameStage_LoadHistory(post, history, frame + frameOffset, ch, channels, bufLen, blockLen);
    const float gainHalfDb = AGC_Process(inst, &history[blockLen]);
    FrameStage_ToFloat(history, buf, bufLen);
    WindowFilter_Process(buf, inst->FftInWindow_agc, blockLen, 1.0f);
    if (startFlag) {
      ne10_LX_Mul_Element_To_Array(buf, DecibelToValueHalf(gainHalfDb), (unsigned int)bufLen);
    }
    WindowFilter_Process(buf, inst->FftOutWindow_agc, blockLen, 0.0f);
    FrameStage_OverlapAdd(post, buf, tail, frame, channels, frameOffset + ch, bufLen, blockLen);
  }
}

}  // extern "C"
