// Time-domain AGC core: level table, configuration checks, the control law
// in half dB, the noise gate and the saturation cut.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "agc.h"
#include "test_support.h"
#include "windowfilt.h"

namespace {

constexpr int kCoreFrame = 32;  // 8 kHz

_AudioAgcConfig DefaultConfig() {
  _AudioAgcConfig c;
  std::memset(&c, 0, sizeof(c));
  c.agc_enable = 1;
  c.user_mode = 1;
  c.gain_info = {20, -20, 0};
  c.drop_gain_max = 12;
  c.attack_time = 1;
  c.release_time = 1;
  const short in[7] = {-50, -30, -20, -10, -3, -3, -3};
  const short out[7] = {-30, -20, -15, -5, -5, -3, -3};
  std::memcpy(c.compression_ratio_input, in, sizeof(in));
  std::memcpy(c.compression_ratio_output, out, sizeof(out));
  c.drop_gain_threshold = -3;
  c.noise_gate_db = -50;
  c.noise_gate_attenuation_db = 0;
  c.gain_step = 1;
  return c;
}

struct Core {
  explicit Core(const _AudioAgcConfig& cfg, int frame = kCoreFrame) : inst(new AGCinst_t()) {
    std::memset(inst.get(), 0, sizeof(AGCinst_t));
    inst->dbg_level = 7;
    EXPECT_EQ(AGC_SetWindowByFrameSize(inst.get(), frame), 0);
    EXPECT_EQ(AGC_Init(inst.get(), frame), 0);
    config = cfg;
    EXPECT_EQ(AGC_Config(inst.get(), &config), _ALGO_AGC_RET_SUCCESS);
  }
  float Process(std::vector<short> frame) { return AGC_Process(inst.get(), frame.data()); }
  std::unique_ptr<AGCinst_t> inst;
  _AudioAgcConfig config;
};

// A whole number of periods in a core frame, so every frame has one level.
std::vector<short> Sine(float rmsDb, int n = kCoreFrame) {
  std::vector<short> v(n);
  const double amp = 32767.0 * std::pow(10.0, rmsDb / 20.0) * std::sqrt(2.0);
  for (int i = 0; i < n; ++i) v[i] = static_cast<short>(std::lround(amp * std::sin(2.0 * M_PI * i / 8.0)));
  return v;
}

std::vector<short> Square(float rmsDb, int n = kCoreFrame) {
  std::vector<short> v(n);
  const short a = static_cast<short>(std::lround(32767.0 * std::pow(10.0, rmsDb / 20.0)));
  for (int i = 0; i < n; ++i) v[i] = (i & 1) ? a : static_cast<short>(-a);
  return v;
}

TEST(AgcTables, VolTableAndConversions) {
  // 32767 times the level, truncated (entry 11 is 9234.995).
  for (int i = 0; i <= 75; ++i) {
    EXPECT_EQ(VolTable[i].db, -i);
    EXPECT_EQ(VolTable[i].val, static_cast<short>(32767.0 * std::pow(10.0, -i / 20.0))) << i;
  }
  const short tail[5] = {4, 3, 2, 1, 1};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(VolTable[76 + i].val, tail[i]);

  EXPECT_EQ(GetValueFromdB(0.5f), 32767.0f);
  EXPECT_EQ(GetValueFromdB(-81.0f), 1.0f);
  EXPECT_EQ(GetValueFromdB(-3.0f), 23197.0f);
  EXPECT_EQ(GetValueFromdB(-3.5f), 0.0f);  // between entries
  EXPECT_NEAR(GetdbFromValue(32767), -0.000265f, 1e-5f);
  EXPECT_EQ(GetdbFromValue(0), -80.0f);
  EXPECT_NEAR(GetdbFromValue(3276), -20.0f, 0.01f);
}

TEST(AgcFrameSize, RatesWindowsAndTexts) {
  EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(8000, 128, 7), 32);
  EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(16000, 256, 7), 64);
  EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(32000, 128, 7), 128);
  EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(48000, 128, 7), 128);
  std::string out = zebtest::CaptureStdout([] { EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(48000, 64, 7), -1); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Frame number setting Error\r\n");
  out = zebtest::CaptureStdout([] { EXPECT_EQ(AGC_GetFrameSizeBySamplingRate(44100, 128, 7), -1); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Sample rate setting Error\r\n");

  AGCinst_t inst;
  std::memset(&inst, 0, sizeof(inst));
  inst.dbg_level = 7;
  const struct { int frame; const float* table; int factor; } rows[] = {
      {32, FloatingFftInWindow64, 4}, {64, FloatingFftInWindow128, 2}, {128, FloatingFftInWindow256, 1}};
  for (const auto& r : rows) {
    EXPECT_EQ(AGC_SetWindowByFrameSize(&inst, r.frame), 0);
    EXPECT_EQ(inst.FftInWindow_agc, r.table);
    EXPECT_EQ(inst.FftOutWindow_agc, r.table);
    EXPECT_EQ(AGC_Init(&inst, r.frame), 0);
    EXPECT_EQ(inst.time_factor, r.factor);
    EXPECT_EQ(inst.frame_length, r.frame);
    EXPECT_EQ(inst.buffer_size, 2 * r.frame);
  }
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(AGC_SetWindowByFrameSize(&inst, 96), -1); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [AGC] Window setting error\t\n");
  EXPECT_EQ(AGC_Init(nullptr, 32), -1);
  AGC_InitCore(&inst, 0);
  EXPECT_EQ(inst.time_factor, 0);
}

TEST(AgcConfig, ChecksInOrderWithTexts) {
  struct Case {
    void (*edit)(_AudioAgcConfig&);
    _ALGO_AGC_RET code;
    const char* text;
  } cases[] = {
      {[](_AudioAgcConfig& c) { c.drop_gain_max = 121; }, _ALGO_AGC_RET_INVALID_DROP_GAIN_MAX,
       "[ALGO_MSG_ERR] [AGC] DropGainMax value error\t121\n"},
      {[](_AudioAgcConfig& c) { c.gain_step = 0; }, _ALGO_AGC_RET_INVALID_GAIN_STEP,
       "[ALGO_MSG_ERR] [AGC] GainStep value error\t0\n"},
      {[](_AudioAgcConfig& c) { c.release_time = 100; }, _ALGO_AGC_RET_INVALID_RELEASE_TIME,
       "[ALGO_MSG_ERR] [AGC] ReleaseTime value error\t100\n"},
      {[](_AudioAgcConfig& c) { c.attack_time = 0; }, _ALGO_AGC_RET_INVALID_ATTACK_TIME,
       "[ALGO_MSG_ERR] [AGC] AttactTime value error\t0\n"},
      {[](_AudioAgcConfig& c) { c.noise_gate_attenuation_db = 101; }, _ALGO_AGC_RET_INVALID_NOISE_ATTENU,
       "[ALGO_MSG_ERR] [AGC] noise_gate_attenuation_db value error\t101\n"},
      {[](_AudioAgcConfig& c) { c.noise_gate_db = -121; }, _ALGO_AGC_RET_INVALID_NOISE_GATE,
       "[ALGO_MSG_ERR] [AGC] NoiseGateDB value error\t-121\n"},
      {[](_AudioAgcConfig& c) { c.drop_gain_threshold = 1; }, _ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL,
       "[ALGO_MSG_ERR] [AGC] TargetPowerDB value error\t1\n"},
      {[](_AudioAgcConfig& c) { c.gain_info.gain_max = 101; }, _ALGO_AGC_RET_INVALID_GAIN_INFO,
       "[ALGO_MSG_ERR] [AGC] dB_info.max value error\t 101\n"},
      {[](_AudioAgcConfig& c) { c.gain_info.gain_min = -121; }, _ALGO_AGC_RET_INVALID_GAIN_INFO,
       "[ALGO_MSG_ERR] [AGC] dB_info.min value error\t-121\n"},
      {[](_AudioAgcConfig& c) { c.gain_info.gain_init = -101; }, _ALGO_AGC_RET_INVALID_GAIN_INFO,
       "[ALGO_MSG_ERR] [AGC] dB_info.init value error\t-101\n"},
      // The curve is checked before everything else.
      {[](_AudioAgcConfig& c) { c.compression_ratio_input[0] = 1; c.drop_gain_max = 999; },
       _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO,
       "[ALGO_MSG_ERR] [AGC] Fail! compression_ratio value error\t\n"
       "[ALGO_MSG_ERR] compression_ratio_input[0] = 1, compression_ratio_output[0] = -30\n"},
      {[](_AudioAgcConfig& c) { c.compression_ratio_output[3] = -16; }, _ALGO_AGC_RET_INVALID_COMPRESSION_RATIO,
       "[ALGO_MSG_ERR] [AGC] Fail! Compression_ratio value error!!!!\t\n"
       "[ALGO_MSG_ERR] input[2] = -20, output[2] = -15, input[3] = -10, output[3] = -16\n"},
  };
  for (const Case& k : cases) {
    Core core(DefaultConfig());
    std::vector<char> before(sizeof(AGCinst_t));
    std::memcpy(before.data(), core.inst.get(), before.size());
    _AudioAgcConfig bad = DefaultConfig();
    bad.gain_info.gain_init = 7;  // would move DGain if the setters ran
    k.edit(bad);
    _ALGO_AGC_RET ret = _ALGO_AGC_RET_SUCCESS;
    const std::string out = zebtest::CaptureStdout([&] { ret = AGC_Config(core.inst.get(), &bad); });
    EXPECT_EQ(ret, k.code) << k.text;
    EXPECT_EQ(out, k.text);
    EXPECT_EQ(std::memcmp(before.data(), core.inst.get(), before.size()), 0) << "a refused config changed the core";
  }
  // Equal neighbours pass; no relation between min, init and max is tested.
  _AudioAgcConfig odd = DefaultConfig();
  odd.gain_info = {-10, 10, 50};
  EXPECT_EQ(AGC_CheckUserConfig(&odd, 7), _ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(AGC_Config(nullptr, &odd), _ALGO_AGC_RET_INVALID_HANDLE);
}

TEST(AgcConfig, UserModeZeroLoadsDefaultsAndConfigRestartsGain) {
  _AudioAgcConfig c = DefaultConfig();
  c.gain_info = {30, -30, 5};
  Core core(c);
  EXPECT_EQ(core.inst->DGain, 10.0f);
  EXPECT_EQ(core.inst->vol_max, 60);
  EXPECT_EQ(core.inst->vol_min, -60);
  c.user_mode = 0;
  c.gain_info = {1, 1, 1};
  ASSERT_EQ(AGC_Config(core.inst.get(), &c), _ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(core.inst->vol_max, 40);
  EXPECT_EQ(core.inst->vol_min, 0);
  EXPECT_EQ(core.inst->DGain, 0.0f);
  EXPECT_EQ(core.inst->noise_thr, -50.0f);
  EXPECT_EQ(core.inst->sat_threshold, 23197.0f);
  EXPECT_EQ(core.inst->compression_ratio_output[1], -20.0f);
  EXPECT_EQ(core.inst->stuck_thr, 64);
}

TEST(AgcCurve, TargetsOfTheDefaultCurve) {
  Core core(DefaultConfig());
  AGCinst_t* inst = core.inst.get();
  const struct { float level, target; } rows[] = {
      {-40.0f, -25.0f},  // first segment
      {-60.0f, -35.0f},  // below in[0]: the first segment continued
      {-20.0f, -15.0f}, {-30.0f, -20.0f}, {-3.0f, -5.0f},
      {-2.0f, -2.0f},    // above the last point: straight on to (0, 0)
  };
  for (const auto& r : rows) {
    inst->original_data_dB = r.level;
    AGC_SetTargetLevelByCompressionRation(inst);
    EXPECT_FLOAT_EQ(inst->Target_dB_now, r.target) << r.level;
  }
  inst->original_data_dB = -2.999f;
  AGC_SetTargetLevelByCompressionRation(inst);
  EXPECT_GT(inst->Target_dB_now, -3.0f);
  EXPECT_LT(inst->Target_dB_now, -2.99f);
}

TEST(AgcLaw, SteadyToneConvergesHalfDbPerFrameThenHolds) {
  Core core(DefaultConfig());
  const std::vector<short> tone = Sine(-40.0f);
  for (int n = 1; n <= 29; ++n) ASSERT_EQ(core.Process(tone), static_cast<float>(n)) << "frame " << n;
  for (int n = 30; n < 60; ++n) core.Process(tone);
  // Curve target -25 dB for a -40 dB level: +15 dB, i.e. 30 half-dB steps.
  EXPECT_NEAR(core.inst->DGain, 30.0f, 0.05f);
  const float held = core.inst->DGain;
  for (int n = 0; n < 10; ++n) EXPECT_EQ(core.Process(tone), held);
  EXPECT_EQ(core.Process(tone), core.inst->DGain_pre);
}

TEST(AgcLaw, LouderToneIsCutAndGainStaysInLimits) {
  Core core(DefaultConfig());
  // A square wave at -4 dB stays below the saturation threshold; its target is -5.
  const std::vector<short> loud = Square(-4.0f);
  EXPECT_EQ(core.Process(loud), -1.0f);
  EXPECT_NEAR(core.Process(loud), -2.0f, 0.01f);
  for (int n = 0; n < 5; ++n) EXPECT_NEAR(core.Process(loud), -2.0f, 0.01f);
  EXPECT_EQ(core.inst->satu_flag, 0);

  _AudioAgcConfig c = DefaultConfig();
  c.gain_info = {5, -20, 0};
  Core capped(c);
  for (int n = 0; n < 40; ++n) capped.Process(Sine(-40.0f));
  EXPECT_EQ(capped.inst->DGain, 10.0f);  // vol_max = 2 * 5
}

TEST(AgcLaw, ReleaseAndAttackCountsDelayEachStep) {
  _AudioAgcConfig c = DefaultConfig();
  c.release_time = 3;
  c.attack_time = 2;
  c.gain_step = 4;
  Core core(c);
  const std::vector<float> rise = {0, 0, 4, 4, 4, 8, 8, 8, 12};
  for (size_t n = 0; n < rise.size(); ++n) EXPECT_EQ(core.Process(Sine(-40.0f)), rise[n]) << n;
  // Now a falling demand of 2 half dB (target -10 dB for a -15 dB level): it
  // waits for the second frame and then lands on the curve.
  const std::vector<float> fall = {12, 10, 10, 10};
  for (size_t n = 0; n < fall.size(); ++n) EXPECT_NEAR(core.Process(Sine(-15.0f)), fall[n], 1e-3f) << n;

  // An error inside the dead zone clears both run lengths.
  AGCinst_t* inst = core.inst.get();
  AGC_CalculateNewGain(inst, 1.0f);
  AGC_CalculateNewGain(inst, 1.0f);
  EXPECT_EQ(inst->AGC_SetUpGain_counter, 2);
  AGC_CalculateNewGain(inst, 0.005f);
  EXPECT_EQ(inst->AGC_SetUpGain_counter, 0);
  EXPECT_EQ(inst->AGC_SetDownGain_counter, 0);
}

TEST(AgcSaturation, FullScalePeakDropsAtOnce) {
  // One full-scale sample in a quiet frame: level -15 dB, law step -1, then
  // the saturation cut of at most drop_gain_max on top.
  std::vector<short> spike(kCoreFrame, 0);
  spike[5] = 32767;
  _AudioAgcConfig c = DefaultConfig();
  c.gain_info.gain_init = 10;
  Core raised(c);
  EXPECT_EQ(raised.Process(spike), 20.0f - 1.0f - 12.0f);
  EXPECT_EQ(raised.inst->satu_flag, 1);
  EXPECT_EQ(raised.inst->gInputAbsMax, 32767);

  Core flat(DefaultConfig());
  // From 0: a law step up, then the cut that brings the peak to -3 dB,
  // about 6 half dB.
  EXPECT_NEAR(flat.Process(spike), 1.0f - 6.0f, 0.01f);

  spike[5] = -32768;
  Core neg(DefaultConfig());
  neg.Process(spike);
  EXPECT_EQ(neg.inst->gInputAbsMax, 32768);
}

TEST(AgcGate, SilenceRelaxesTowardsZeroDb) {
  _AudioAgcConfig c = DefaultConfig();
  c.gain_info.gain_init = 5;
  Core up(c);
  const std::vector<short> silence(kCoreFrame, 0);
  const std::vector<float> expect = {10, 9, 9, 8, 8, 7};
  for (size_t n = 0; n < expect.size(); ++n) EXPECT_EQ(up.Process(silence), expect[n]) << n;
  EXPECT_EQ(up.inst->isUnderNoiseGate, 1);
  EXPECT_EQ(up.inst->original_data_dB, -120.0f);
  for (int n = 0; n < 20; ++n) up.Process(silence);
  EXPECT_EQ(up.inst->DGain, 0.0f);
  EXPECT_EQ(up.inst->noise_gate_counter, 0);

  // A cut gain relaxes after the attack count (crossed over, and with '>').
  c.gain_info.gain_init = -5;
  c.attack_time = 3;
  Core down(c);
  const std::vector<float> rise = {-10, -10, -10, -9, -9, -9, -9, -8};
  for (size_t n = 0; n < rise.size(); ++n) EXPECT_EQ(down.Process(silence), rise[n]) << n;
}

TEST(AgcGate, NonNegativeGateFreezesTheGain) {
  _AudioAgcConfig c = DefaultConfig();
  c.noise_gate_db = 0;
  c.gain_info.gain_init = 3;
  Core core(c);
  EXPECT_EQ(core.inst->keep_gain, 1);
  EXPECT_EQ(core.inst->noise_gate_db, 0);
  for (int n = 0; n < 10; ++n) {
    EXPECT_EQ(core.Process(Sine(-40.0f)), 6.0f);
    EXPECT_EQ(core.Process(std::vector<short>(kCoreFrame, 0)), 6.0f);
  }
  AGC_SetNoiseGateIndB(core.inst.get(), 20);
  EXPECT_EQ(core.inst->noise_gate_db, -20);
}

TEST(AgcGate, AttenuationOverwritesTheGainUnderTheGate) {
  _AudioAgcConfig c = DefaultConfig();
  c.noise_gate_attenuation_db = 100;
  Core core(c);
  // -60 dB: (-120 + 60) * 1.0 = -60 half dB, below vol_min (-40).
  EXPECT_NEAR(core.Process(Sine(-60.0f)), -60.0f, 0.05f);
  EXPECT_EQ(core.Process(std::vector<short>(kCoreFrame, 0)), 0.0f);
  c.noise_gate_attenuation_db = 50;
  Core half(c);
  EXPECT_NEAR(half.Process(Sine(-60.0f)), -30.0f, 0.05f);
  // Above the gate the law takes over again.
  EXPECT_NEAR(half.Process(Sine(-40.0f)), -29.0f, 0.05f);
}

TEST(AgcCore, ProcessLeavesTheFrameAndRejectsNull) {
  Core core(DefaultConfig());
  std::vector<short> frame = Sine(-10.0f);
  const std::vector<short> copy = frame;
  AGC_Process(core.inst.get(), frame.data());
  EXPECT_EQ(frame, copy);
  EXPECT_EQ(core.inst->isTrueData, 1);
  float g = 0.0f;
  const std::string out = zebtest::CaptureStdout([&] { g = AGC_Process(nullptr, frame.data()); });
  EXPECT_EQ(g, -1.0f);
  EXPECT_EQ(out, "[ALGO_MSG_ERR] AGCinst working buffer is NULL!\n");
  // A missing frame is refused the same way, before any state moves.
  const float before = core.inst->DGain;
  EXPECT_EQ(zebtest::CaptureStdout([&] { g = AGC_Process(core.inst.get(), nullptr); }),
            "[ALGO_MSG_ERR] AGC input frame is NULL!\n");
  EXPECT_EQ(g, -1.0f);
  EXPECT_EQ(core.inst->DGain, before);

  // A curve of 20 points is taken whole; later calls with fewer leave the rest.
  short in[20], outDb[20];
  for (int i = 0; i < 20; ++i) {
    in[i] = static_cast<short>(-100 + 5 * i);
    outDb[i] = static_cast<short>(-60 + 3 * i);
  }
  AGC_SetCompressionRatioValue(core.inst.get(), in, outDb, 20);
  EXPECT_EQ(core.inst->compression_ratio_input[19], -5.0f);
  AGC_SetCompressionRatioValue(core.inst.get(), in + 1, outDb + 1, 2);
  EXPECT_EQ(core.inst->compression_ratio_input[0], -95.0f);
  EXPECT_EQ(core.inst->compression_ratio_input[2], -90.0f);
  AGC_SetCompressionRatioValue(nullptr, in, outDb, 7);  // ignored
}

TEST(AgcBandFilters, LowPassBandsPassDcAndSelectionIsKept) {
  for (int band = 2; band <= 4; ++band) {
    set_filterCoef(band);
    Filter_Coeff_Reset(0.0f, 0.0f);
    float y = 0.0f;
    for (int n = 0; n < 200000; ++n) y = filter_loop(1000.0f);
    EXPECT_NEAR(y, 1000.0f, 15.0f) << "band " << band;
  }
  // The recursion of one section, step by step, from a reset state.
  set_filterCoef(3);
  set_filterCoef(9);  // out of range: band 3 stays
  Filter_Coeff_Reset(0.0f, 0.0f);
  const float* a = filter_coef_A[2][0];
  const float* b = filter_coef_B[2][0];
  const float g = filter_gain[2][0];
  const float y0 = IIR_filter(256.0f, 0);
  EXPECT_FLOAT_EQ(y0, g * (256.0f * b[0]) / 256.0f);
  const float y1 = IIR_filter(0.0f, 0);
  EXPECT_FLOAT_EQ(y1, g * (b[1] * 256.0f) / 256.0f - a[1] * y0);
}

}  // namespace
