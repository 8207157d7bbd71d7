// Noise reducer core: initial state, configuration checks with their texts
// and codes, the intensity tables of every mode including the cells the
// mode-0 tables share with their neighbours, the frame entry, its counters
// and update rhythm, and the scenario detectors.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "nr_core.h"
#include "test_support.h"

namespace {

using zebtest::CaptureStdout;
using zebtest::Err;
using zebtest::Wrn;

constexpr int kAllLevels = 7;

// One instance as its owning family leaves it before NR_Init: cleared, with
// its scratch and tuning table carved beside it.
struct Instance {
  std::unique_ptr<NSinst_t> inst{new NSinst_t()};
  std::unique_ptr<NSWorkingBuf_t> work{new NSWorkingBuf_t()};
  std::unique_ptr<NSCJsoninst_t> params{new NSCJsoninst_t()};

  explicit Instance(int fs = 16000, int level = 0, unsigned int channel = 1) {
    inst->NRInternalWorkBuf = work.get();
    inst->InternalParams = params.get();
    inst->dbg_level = level;
    _AudioAnrInit init = {128u, channel, fs};
    EXPECT_EQ(NR_Init(inst.get(), &init), 0);
  }
  NSinst_t* operator->() { return inst.get(); }
  NSinst_t* get() { return inst.get(); }
};

_AudioAnrConfig UserConfig() {
  _AudioAnrConfig c = {};
  c.anr_enable = 1;
  c.user_mode = 1;
  const int bands[6] = {3, 24, 40, 64, 80, 128};
  for (int i = 0; i < 6; ++i) c.anr_intensity_band[i] = bands[i];
  for (int i = 0; i < 7; ++i) c.anr_intensity[i] = 20;
  c.anr_smooth_level = 10;
  c.anr_converge_speed = 1;
  c.anr_filter_mode = 0;
  return c;
}


uint32_t WordOf(const int& cell) {
  uint32_t u;
  std::memcpy(&u, &cell, sizeof u);
  return u;
}

// ========================================================= initial state ==

TEST(NrInit, StartValuesTheEstimatorsBuildOn) {
  _AudioAnrInit init = {128u, 1u, 16000};
  EXPECT_EQ(NR_Init(nullptr, &init), -1);
  Instance in(16000);
  EXPECT_EQ(in->magnLen, 129);
  EXPECT_EQ(in->process_bins, 129);
  EXPECT_EQ(in->nframe_update_filter, 2);  // speed 1 after NR_InitCore's 1
  EXPECT_EQ(in->moving_average_order, 10);
  EXPECT_EQ(in->moving_average_smooth_const, 1.0f / 11.0f);
  EXPECT_EQ(in->counter[0], 200);
  EXPECT_EQ(in->blockInd, 0xFFFF);
  EXPECT_EQ(in->firstStartFrameNum, 7);
  EXPECT_EQ(std::memcmp(in->InternalParams, &kNrInternalParamsDefault, sizeof(NSCJsoninst_t)), 0);
}

TEST(NrInit, BinLimitsPerRate) {
  const struct {
    int fs;
    float kl, ku, k2, k3;
  } rows[] = {{8000, 7, 256, 17, 113}, {16000, 4, 161, 9, 57}, {32000, 3, 81, 5, 29},
              {48000, 2, 54, 4, 20}};
  for (const auto& r : rows) {
    Instance in(r.fs);
    EXPECT_EQ(in->k_l, r.kl) << r.fs;
    EXPECT_EQ(in->k_u, r.ku) << r.fs;
    EXPECT_EQ(in->k2_local, r.k2) << r.fs;
    EXPECT_EQ(in->k3_local, r.k3) << r.fs;
  }
}

TEST(NrInit, SmoothingKernelsHaveTheirSumsAndSymmetry) {
  float conv = 0.0f, global = 0.0f;
  for (float v : NR_b_conv) conv += v;
  for (float v : NR_b_xi_global) global += v;
  EXPECT_NEAR(conv, 0.9999f, 1e-5f);
  EXPECT_NEAR(global, 1.0f, 1e-6f);
  for (int i = 0; i < 15; ++i) EXPECT_EQ(NR_b_xi_global[i], NR_b_xi_global[30 - i]) << i;
  for (int i = 0; i < 10; ++i) EXPECT_EQ(NR_b_conv[i], NR_b_conv[20 - i]) << i;
}

TEST(NrInit, ConvergeModeMessageAtInformationLevelOnly) {
  EXPECT_EQ(CaptureStdout([] { Instance in(16000, kAllLevels); }),
            "[ALGO_MSG_MSG] [ANR] Converge mode: Normal.\t\n");
  EXPECT_EQ(CaptureStdout([] { Instance in(16000, 3); }), "");
}

TEST(NrInit, Setters) {
  Instance in;
  const int speeds[][2] = {{0, 3}, {1, 2}, {2, 1}, {3, 3}, {-1, 3}};
  for (const auto& s : speeds) {
    NR_SetUpdateFilterFrames(in.get(), s[0]);
    EXPECT_EQ(in->nframe_update_filter, s[1]) << s[0];
  }
  const int bins[][2] = {{0, 129}, {1, 240}, {9, 160}, {24, 10}, {25, 10}, {30, 10}};
  for (const auto& b : bins) {
    EXPECT_EQ(NR_SetProcessBins(in.get(), b[0]), 0);
    EXPECT_EQ(in->process_bins, b[1]) << b[0];
  }
  NR_SetSmoothOrder(in.get(), 0);
  EXPECT_EQ(in->moving_average_smooth_const, 1.0f);
  NR_SetSmoothOrder(in.get(), 3);  // odd order: the constant stays 1 / (order + 1)
  EXPECT_EQ(in->moving_average_order, 3);
  EXPECT_EQ(in->moving_average_smooth_const, 0.25f);
}

// ================================================ configuration checks ==

struct CheckCase {
  const char* what;
  void (*edit)(_AudioAnrConfig*);
  int fs;
  int pn;
  _ALGO_ANR_RET code;
  std::string text;
};

TEST(NrCheckUserConfig, EveryStepWithItsTextAndCode) {
  using C = _AudioAnrConfig*;
  const CheckCase cases[] = {
      {"enable 2", [](C c) { c->anr_enable = 2; }, 16000, 128, _ALGO_ANR_RET_INVALID_ENABLE,
       "[ANR]Fail! Unsupported ANR configuration anr_enable 2. [0 or 1]\t\n"},
      {"user_mode 3", [](C c) { c->user_mode = 3; }, 16000, 128, _ALGO_ANR_RET_INVALID_MODE,
       "[ANR]Fail! Unsupported ANR configuration user_mode 3. [0~2]\t\n"},
      {"intensity 31", [](C c) { c->anr_intensity[4] = 31; }, 16000, 128, _ALGO_ANR_RET_INVALID_INTENSITY,
       "[ANR]Fail! Unsupported anr_intensity 31 in position 4. [0~30]\t\n"},
      {"intensity -1", [](C c) { c->anr_intensity[0] = -1; }, 16000, 128, _ALGO_ANR_RET_INVALID_INTENSITY,
       "[ANR]Fail! Unsupported anr_intensity -1 in position 0. [0~30]\t\n"},
      {"band 129", [](C c) { c->anr_intensity_band[5] = 129; }, 16000, 128, _ALGO_ANR_RET_INVALID_INTENSITY,
       "[ANR]Fail! Unsupported anr_intensity_band 129 in position 5. [0~128]\t\n"},
      {"band decreasing", [](C c) { c->anr_intensity_band[2] = 20; }, 16000, 128, _ALGO_ANR_RET_INVALID_INTENSITY,
       "[ANR]Fail! The anr_intensity setting is not in order. \t24\t20\n"},
      {"smooth -1", [](C c) { c->anr_smooth_level = (unsigned int)-1; }, 16000, 128,
       _ALGO_ANR_RET_INVALID_SMOOTH_LEVEL, "[ANR]Fail! Unsupported anr_smooth_level -1. [0~10]\t\n"},
      {"speed 3", [](C c) { c->anr_converge_speed = 3; }, 16000, 128, _ALGO_ANR_RET_INVALID_CONVERGE_SPEED,
       "[ANR]Fail! Unsupported anr_converge_speed 3. [0~2]\t\n"},
      {"filter mode 6", [](C c) { c->anr_filter_mode = 6; }, 16000, 128, _ALGO_ANR_RET_INVALID_FILTER_MODE,
       "[ANR]Fail! Unsupported anr_filter_mode 6. [0~5]\t\n"},
      {"mode 5 speed 1", [](C c) { c->anr_filter_mode = 5; c->anr_converge_speed = 1; }, 48000, 128,
       _ALGO_ANR_RET_INVALID_CONVERGE_SPEED,
       "[ANR]Fail! Unsupported anr_converge_speed 1. The anr_filter_mode 5 is only support "
       "anr_converge_speed is 2.\t\n"},
      {"mode 5 at 48 kHz", [](C c) { c->anr_filter_mode = 5; c->anr_converge_speed = 2; }, 48000, 128,
       _ALGO_ANR_RET_INVALID_SAMPLE_RATE,
       "[ANR]Fail! Unsupported 48kHz sample rate. The anr_filter_mode 5 is only support sample "
       "rate 8kHz, 16kHz and 32kHz in Vers.1, Vers.2, Vers.4 and Vers.5.\t\n"},
      {"mode 5 with 160 points", [](C c) { c->anr_filter_mode = 5; c->anr_converge_speed = 2; }, 16000, 160,
       _ALGO_ANR_RET_INVALID_POINT_NUMBER,
       "[ANR]Fail! Unsupported point_number 160.The anr_filter_mode 5 is only support point "
       "number 128 in Vers.1, Vers.2, Vers.4 and Vers.5.\t\n"},
  };
  for (const CheckCase& k : cases) {
    _AudioAnrConfig c = UserConfig();
    k.edit(&c);
    _ALGO_ANR_RET ret = _ALGO_ANR_RET_SUCCESS;
    const std::string out =
        CaptureStdout([&] { ret = Nr_CheckUserConfig(&c, k.fs, k.pn, kAllLevels); });
    EXPECT_EQ(ret, k.code) << k.what;
    EXPECT_EQ(out, Err(k.text)) << k.what;
    // Without bit 0 the code is the same and nothing is printed.
    EXPECT_EQ(CaptureStdout([&] { ret = Nr_CheckUserConfig(&c, k.fs, k.pn, 6); }), "") << k.what;
    EXPECT_EQ(ret, k.code) << k.what;
  }
}

TEST(NrCheckUserConfig, StopsAtTheFirstFailureInOrder) {
  _AudioAnrConfig c = UserConfig();
  c.anr_intensity_band[0] = -5;
  c.anr_smooth_level = 11;
  c.anr_filter_mode = 9;
  const std::string out = CaptureStdout([&] { Nr_CheckUserConfig(&c, 16000, 128, 1); });
  EXPECT_EQ(out, Err("[ANR]Fail! Unsupported anr_intensity_band -5 in position 0. [0~128]\t\n"));
  c.anr_intensity_band[0] = 0;
  EXPECT_EQ(Nr_CheckUserConfig(&c, 16000, 128, 0), _ALGO_ANR_RET_INVALID_SMOOTH_LEVEL);
  EXPECT_EQ(Nr_CheckUserConfig(nullptr, 16000, 128, 7), _ALGO_ANR_RET_INVALID_HANDLE);
}

TEST(NrCheckUserConfig, UserBandsAreCheckedOnlyWhenTheyApply) {
  _AudioAnrConfig c = UserConfig();
  c.anr_intensity[2] = 99;
  c.anr_intensity_band[1] = 300;
  c.anr_smooth_level = 50;
  c.anr_converge_speed = 7;
  c.user_mode = 0;
  EXPECT_EQ(Nr_CheckUserConfig(&c, 16000, 128, 7), _ALGO_ANR_RET_SUCCESS);
  c.user_mode = 2;
  c.anr_enable = 0;
  EXPECT_EQ(Nr_CheckUserConfig(&c, 16000, 128, 7), _ALGO_ANR_RET_SUCCESS);
  // Mode 5 rules hold with user_mode 0 too: its speed must still be 2.
  c.anr_filter_mode = 5;
  EXPECT_EQ(Nr_CheckUserConfig(&c, 16000, 128, 0), _ALGO_ANR_RET_INVALID_CONVERGE_SPEED);
  c.anr_converge_speed = 2;
  EXPECT_EQ(Nr_CheckUserConfig(&c, 16000, 128, 0), _ALGO_ANR_RET_SUCCESS);
  // Equal neighbouring edges are accepted; only a decrease is refused.
  _AudioAnrConfig e = UserConfig();
  for (int& b : e.anr_intensity_band) b = 128;
  EXPECT_EQ(Nr_CheckUserConfig(&e, 16000, 128, 0), _ALGO_ANR_RET_SUCCESS);
}

// ============================================================ NR_Config ==

TEST(NrConfig, NullInstanceIsReportedAtAnyLevel) {
  _AudioAnrConfig c = UserConfig();
  _ALGO_ANR_RET ret = _ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = NR_Config(nullptr, &c); }),
            Err("[NR_Config]Fail! The anr handle is NULL.\t\n"));
  EXPECT_EQ(ret, _ALGO_ANR_RET_INVALID_HANDLE);
}

TEST(NrConfig, FailureChangesNothingAndUserModeZeroUsesBuiltInSmoothingAndSpeed) {
  Instance in;
  _AudioAnrConfig c = UserConfig();
  c.anr_filter_mode = 3;
  c.anr_smooth_level = 12;
  EXPECT_EQ(NR_Config(in.get(), &c), _ALGO_ANR_RET_INVALID_SMOOTH_LEVEL);
  EXPECT_EQ(in->filter_mode, 0);
  EXPECT_EQ(in->moving_average_order, 10);
  c.user_mode = 0;
  c.anr_smooth_level = 4;
  c.anr_converge_speed = 0;
  c.anr_filter_mode = 2;
  EXPECT_EQ(NR_Config(in.get(), &c), _ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(in->filter_mode, 2);
  EXPECT_EQ(in->moving_average_order, 10);
  EXPECT_EQ(in->nframe_update_filter, 2);
  c.user_mode = 1;
  EXPECT_EQ(NR_Config(in.get(), &c), _ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(in->moving_average_order, 4);
  EXPECT_EQ(in->moving_average_smooth_const, 0.2f);
  EXPECT_EQ(in->nframe_update_filter, 3);
}

TEST(NrConfig, FilterModeIsSetBeforeTheTablesAreMapped) {
  Instance in;
  _AudioAnrConfig c = UserConfig();
  c.anr_filter_mode = 4;
  for (int& x : c.anr_intensity) x = 10;
  ASSERT_EQ(NR_Config(in.get(), &c), _ALGO_ANR_RET_SUCCESS);
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[0], 0.8f);
  EXPECT_FLOAT_EQ(in->overdrive[0], 1.1f);  // mode-0 table still from initialisation
}

// ============================================================ NR_SetMode ==

TEST(NrSetMode, ModeZeroTellingPoints) {
  Instance in;
  const struct {
    int x;
    float od, db;
  } rows[] = {{0, 1.0f, 0.5f},      {1, 1.0f, 0.475f},    {9, 1.0f, 0.275f},
              {10, 1.0f, 0.25f},    {19, 1.09f, 0.1375f}, {20, 1.1f, 0.125f},
              {30, 1.25f, 0.001f}};
  for (const auto& r : rows) {
    int bands[6] = {128, 128, 128, 128, 128, 128};
    int x[7] = {r.x, 0, 0, 0, 0, 0, r.x};
    NR_SetMode(in.get(), bands, x);
    EXPECT_NEAR(in->overdrive[5], r.od, 3e-7) << r.x;
    EXPECT_NEAR(in->denoiseBound[5], r.db, 3e-8) << r.x;
  }
}

TEST(NrSetMode, ModeZeroSharesTheCellsAfterItsTables) {
  Instance in;
  int bands[6] = {3, 24, 40, 64, 80, 128};
  int x[7] = {0, 5, 10, 15, 20, 25, 30};
  NR_SetMode(in.get(), bands, x);
  for (int i = 0; i < 7; ++i) EXPECT_EQ(in->aggrMode[i], x[i]);
  EXPECT_EQ(in->overdrive[0], 1.0f);
  EXPECT_EQ(in->overdrive[2], 1.0f);
  EXPECT_EQ(in->denoiseBound[1], 0.5f);
  EXPECT_FLOAT_EQ(in->denoiseBound[3], 0.375f);   // band 1, x = 5
  EXPECT_FLOAT_EQ(in->overdrive[127], 1.175f);    // band 5, x = 25
  EXPECT_FLOAT_EQ(in->denoiseBound[127], 0.063f);
  // Band 6 is bin 128 alone: its over-subtraction lands in denoiseBound[0],
  // its floor in the gainmap word, which the flag then replaces.
  EXPECT_FLOAT_EQ(in->denoiseBound[0], 1.25f);
  EXPECT_EQ(in->gainmap, 1);
  EXPECT_EQ(in->blockInd, 0xFFFF);
  // Read as a float, the floor of bin 128 is the integer 1: all but zero.
  float floor128;
  const uint32_t word = WordOf(in->gainmap);
  std::memcpy(&floor128, &word, sizeof floor128);
  EXPECT_EQ(floor128, 1.4e-45f);
}

TEST(NrSetMode, EmptyAndInvalidBands) {
  Instance in(16000, kAllLevels);
  int bands[6] = {0, 10, 20, 30, 40, 50};
  int x[7] = {30, 0, 99, 20, 20, 20, 20};
  const std::string out = CaptureStdout([&] { NR_SetMode(in.get(), bands, x); });
  EXPECT_EQ(out, Err("[ANR]Fail! ANR filter mode 0 anr_intensity must between [0 , 30].\t\n"));
  EXPECT_EQ(in->overdrive[0], 1.0f);  // band 0 is empty: bin 0 belongs to band 1
  EXPECT_EQ(in->denoiseBound[15], 0.5f);  // band 2 keeps band 1's pair
  EXPECT_EQ(in->overdrive[15], 1.0f);
  // An invalid first band fills with the zero the mapping starts from.
  int y[7] = {-3, 20, 20, 20, 20, 20, 20};
  int edges[6] = {5, 10, 20, 30, 40, 50};
  NR_SetMode(in.get(), edges, y);
  EXPECT_EQ(in->overdrive[4], 0.0f);
  EXPECT_EQ(in->denoiseBound[4], 0.0f);
  EXPECT_FLOAT_EQ(in->overdrive[5], 1.1f);
}

TEST(NrSetMode, ModesOneToFourScaleTheNoise) {
  Instance in(16000, kAllLevels);
  in->filter_mode = 3;
  const float overdriveBefore = in->overdrive[10];
  in->noise_suppression_gain[130] = -1.0f;
  int bands[6] = {2, 4, 6, 8, 10, 12};
  int x[7] = {0, 5, 10, 15, 20, 25, 30};
  NR_SetMode(in.get(), bands, x);
  const float expect[7] = {0.0f, 0.4f, 0.8f, 0.9f, 1.0f, 1.23425f, 1.4685f};
  for (int k = 0; k < 7; ++k) EXPECT_FLOAT_EQ(in->noise_suppression_gain[2 * k], expect[k]) << k;
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[129], 1.4685f);  // band 6 ends at 129 inclusive
  EXPECT_EQ(in->noise_suppression_gain[130], -1.0f);
  EXPECT_EQ(in->overdrive[10], overdriveBefore);
  int bad[7] = {20, 20, 20, 20, 20, 20, 31};
  EXPECT_EQ(CaptureStdout([&] { NR_SetMode(in.get(), bands, bad); }),
            Err("[ANR]Fail! ANR filter mode 1-4 anr_intensity must between [0 , 30].\t\n"));
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[100], 1.0f);
}

TEST(NrSetMode, ModeFiveScalesEdgesAndSetsTheMixOnce) {
  Instance in(16000, kAllLevels);
  in->filter_mode = 5;
  in->noise_suppression_gain[161] = -1.0f;
  in->noise_mix_ratio[161] = -1.0f;
  int bands[6] = {3, 24, 40, 64, 80, 128};
  int full[7] = {30, 30, 30, 30, 30, 30, 30};
  NR_SetMode(in.get(), bands, full);
  EXPECT_EQ(in->mix_enable, 0);
  Instance one;  // one band below full strength is enough for the mix
  one->filter_mode = 5;
  int x29[7] = {30, 30, 30, 29, 30, 30, 30};
  NR_SetMode(one.get(), bands, x29);
  EXPECT_EQ(one->mix_enable, 1);
  EXPECT_EQ(in->noise_mix_ratio[160], 1.0f);
  EXPECT_EQ(in->noise_mix_ratio[161], -1.0f);
  EXPECT_EQ(in->noise_suppression_gain[161], -1.0f);

  int x[7] = {10, 20, 30, 0, 29, 1, 30};
  NR_SetMode(in.get(), bands, x);
  EXPECT_EQ(in->mix_enable, 1);
  // Edge 3 covers bins below 3.75, edge 24 those below 30.
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[3], 0.8f);
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[4], 1.0f);
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[29], 1.0f);
  EXPECT_FLOAT_EQ(in->noise_suppression_gain[30], 1.4685f);
  EXPECT_FLOAT_EQ(in->noise_mix_ratio[3], 0.5f + 10 * 0.0166666f);
  EXPECT_EQ(in->noise_mix_ratio[50], 0.0f);                        // x = 0, bins 50..79
  EXPECT_FLOAT_EQ(in->noise_mix_ratio[80], 0.5f + 29 * 0.0166666f);  // edge 64 -> 80
  EXPECT_FLOAT_EQ(in->noise_mix_ratio[100], 0.5f + 0.0166666f);
  EXPECT_EQ(in->noise_mix_ratio[160], 1.0f);

  NR_SetMode(in.get(), bands, full);
  EXPECT_EQ(in->mix_enable, 1);  // never cleared again

  int bad[7] = {20, 20, 20, 20, 20, 20, -1};
  const std::string text =
      Err("[ANR]Fail! ANR filter mode 5 anr_intensity must between [0 , 30].\t\n");
  EXPECT_EQ(CaptureStdout([&] { NR_SetMode(in.get(), bands, bad); }), text + text);
}

// ========================================================= frame entry ==

std::vector<float> Spectrum(float scale) {
  std::vector<float> s(258);
  for (int i = 0; i < 258; ++i) s[i] = scale * (float)((i * 37) % 101 - 50);
  return s;
}

TEST(NrProcess, ModesOneToFiveLeaveTheFrameAsItCame) {
  for (int mode = 1; mode <= 5; ++mode) {
    Instance in;
    in->filter_mode = mode;
    for (int i = 0; i < 129; ++i) in->G[i] = 0.5f;
    std::vector<float> frame = Spectrum(1000.0f);
    const std::vector<float> before = frame;
    EXPECT_EQ(NR_Process(in.get(), frame.data()), _ALGO_ANR_RET_SUCCESS) << mode;
    EXPECT_EQ(frame, before) << mode;
    EXPECT_EQ(in->sum_filter, mode == 5 ? 0.1f : 64.5f) << mode;
    if (mode == 5) continue;  // its block is 160 floats
    for (int k = 0; k < 129; ++k) {
      ASSERT_EQ(in->frequency_buffer[k].re, before[2 * k] / 65536.0f) << mode << " bin " << k;
      ASSERT_EQ(in->frequency_buffer[k].im, before[2 * k + 1] / 65536.0f) << mode << " bin " << k;
    }
  }
}

TEST(NrProcess, ModeFiveCopiesOnlyItsBlock) {
  Instance in;
  in->filter_mode = 5;
  std::vector<float> block(160, 640.0f);
  in->frequency_buffer[80].re = 9.0f;
  EXPECT_EQ(NR_Process(in.get(), block.data()), _ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(in->frequency_buffer[79].im, 640.0f / 65536.0f);
  EXPECT_EQ(in->frequency_buffer[80].re, 9.0f);
  EXPECT_EQ(block, std::vector<float>(160, 640.0f));
}

TEST(NrProcess, EchoReferenceFeedsTheEstimatorsAndTheFrameGetsTheGain) {
  Instance in;
  in->filter_mode = 1;
  in->aec_enable_flag = 1;
  std::vector<float> ref = Spectrum(2.0f);
  std::memcpy(in->fft_aec_buf_2ch, ref.data(), sizeof(in->fft_aec_buf_2ch));
  std::vector<float> frame = Spectrum(5.0f);
  NR_Process(in.get(), frame.data());
  for (int k = 0; k < 129; ++k) {
    ASSERT_EQ(in->frequency_buffer[k].re, ref[2 * k] / 65536.0f) << k;
    ASSERT_EQ(in->frequency_buffer_output[k].im, frame[2 * k + 1] / 65536.0f) << k;
  }
}

// ============================================== counters and rhythm ==

TEST(NrCounters, UpdateRhythmPerSpeed) {
  const struct {
    int speed;
    int phases[6];
  } rows[] = {{2, {1, 1, 1, 1, 1, 1}}, {1, {1, 2, 1, 2, 1, 2}}, {0, {1, 2, 3, 1, 2, 3}}};
  for (const auto& r : rows) {
    Instance in;
    NR_SetUpdateFilterFrames(in.get(), r.speed);
    for (int f = 0; f < 6; ++f) EXPECT_EQ(NR_AdvanceFrameCounters(in.get()), r.phases[f]) << r.speed;
  }
}

TEST(NrCounters, FrameCountStopsHalfASecondIn) {
  const int rows[][2] = {{8000, 31}, {16000, 62}, {32000, 125}, {48000, 187}};
  for (const auto& r : rows) {
    Instance in(r[0]);
    EXPECT_EQ(NR_FrameCountLimit(in.get()), r[1]);
    for (int f = 0; f < 400; ++f) NR_AdvanceFrameCounters(in.get());
    EXPECT_EQ(in->frame_cnt, r[1] + 1) << r[0];
  }
}

TEST(NrCounters, WrapWarnings) {
  Instance in(16000, kAllLevels);
  in->nframe_update_filter = 70000;
  in->nframe_cnt = 65535;
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(NR_AdvanceFrameCounters(in.get()), 0); }),
            Wrn("[ANR]Warning! nframe_cnt is reset.\t\n"));
  EXPECT_EQ(in->nframe_cnt, 0);
  // A limit of 65535 lets frame_cnt itself wrap.
  in->fs = 131070;
  in->pn = 1;
  in->frame_cnt = 65535;
  EXPECT_EQ(CaptureStdout([&] { NR_AdvanceFrameCounters(in.get()); }),
            Wrn("[ANR]Warning! frame_cnt is reset.\t\n"));
  EXPECT_EQ(in->frame_cnt, 0);
  in->dbg_level = 1;
  in->nframe_cnt = 65535;
  EXPECT_EQ(CaptureStdout([&] { NR_AdvanceFrameCounters(in.get()); }), "");
}

// =========================================================== detectors ==

TEST(NrDetectors, MeanAndStdIsTheVariance) {
  float x[4] = {1.0f, 2.0f, 3.0f, 4.0f};
  EXPECT_EQ(Compute_Mean(x, 4), 2.5f);
  EXPECT_EQ(Compute_Std(x, 4, 2.5f), 1.25f);
}

std::vector<float> FlatSpectrum() {
  std::vector<float> s(129);
  for (int i = 0; i < 129; ++i) s[i] = 10.0f + 0.5f * (float)((i * 7) % 5);
  return s;
}

TEST(NrDetectors, SinetoneCountsStablePeaksOnly) {
  Instance in;
  std::vector<float> s = FlatSpectrum();
  s[40] = 500.0f;   // a tone
  s[70] = -400.0f;  // a dip: z-score -1, never a candidate
  s[5] = 500.0f;    // below lag: never looked at
  for (int f = 0; f < 10; ++f) Sinetone_Dectection(in.get(), s.data(), 129, 10, 3.0f, 0.0f);
  EXPECT_EQ(in->sinetone_candidate[40], 10);
  EXPECT_EQ(in->zscore[40], 1.0f);
  EXPECT_EQ(in->zscore[70], -1.0f);
  EXPECT_EQ(in->sinetone_candidate[70], 0);
  EXPECT_EQ(in->sinetone_candidate[5], 0);
  EXPECT_EQ(in->zscore[5], 0.0f);
  EXPECT_EQ(in->sinetone_candidate[41], 0);
  // Influence 0: the peak leaves nothing of itself in the statistics.
  EXPECT_EQ(in->filteredSpectrum[40], in->filteredSpectrum[39]);
  EXPECT_EQ(in->filteredSpectrum[41], s[41]);
  s[40] = s[39];
  Sinetone_Dectection(in.get(), s.data(), 129, 10, 3.0f, 0.0f);
  EXPECT_EQ(in->sinetone_candidate[40], 0);
  // Without a window nothing is a peak.
  s[60] = 1e4f;
  in->sinetone_candidate[60] = 3;
  Sinetone_Dectection(in.get(), s.data(), 129, 0, 3.0f, 0.0f);
  EXPECT_EQ(in->sinetone_candidate[60], 0);
}

TEST(NrDetectors, SinetoneWindowEndsBeforeTheBinAndCountSaturates) {
  Instance in;
  float s[8] = {1.0f, 1.0f, 1.0f, 5.0f, 5.0f, 1.0f, 1.0f, 1.0f};
  in->sinetone_candidate[3] = 65535;
  Sinetone_Dectection(in.get(), s, 8, 2, 0.5f, 1.0f);
  EXPECT_EQ(in->zscore[3], 1.0f);
  EXPECT_EQ(in->filteredSpectrum[3], 5.0f);  // influence 1 lets the peak through
  // The statistics for bin 4 cover bins 1 and 2 only, so bin 4 is a peak too.
  EXPECT_EQ(in->zscore[4], 1.0f);
  EXPECT_EQ(in->sinetone_candidate[3], 32767);
  EXPECT_EQ(in->sinetone_candidate[4], 1);
}

struct MicInletFixture : testing::Test {
  Instance in{16000, kAllLevels};
  void SetUp() override {
    in->filter_mode = 1;
    in.params->farfield_scenario = 1;  // the covered-inlet guard runs on its defaults
    in->time_counter = 20;
    for (int i = 0; i < 129; ++i) {
      in->power_spectrum[i] = 1.0f;
      in->S[i] = 3.0f;
      in->phat[i] = 0.1f;
    }
  }
};

TEST_F(MicInletFixture, IdleUnlessModeOneWithAScenarioAndOnlySmoothsInTheFirstWindow) {
  in->filter_mode = 2;
  in.params->covermic_scenario = 1;
  Check_MicInlet(in.get());
  EXPECT_EQ(in->cmi_PowerSpectrum, 0.0f);
  in->filter_mode = 1;
  in.params->covermic_scenario = 0;
  in.params->farfield_scenario = 0;
  Check_MicInlet(in.get());
  EXPECT_EQ(in->cmi_PowerSpectrum, 0.0f);
  in.params->farfield_scenario = 1;
  in->time_counter = 15;
  Check_MicInlet(in.get());
  EXPECT_NEAR(in->cmi_PowerSpectrum, 0.01f, 1e-8);
  EXPECT_EQ(in->cmi_nospeechCnt, 0);
}

TEST_F(MicInletFixture, FreezesOnAPowerDropAndReleasesAfterEnoughPause) {
  in->cmi_PowerSpectrum = 1e6f;
  Check_MicInlet(in.get());
  EXPECT_EQ(in->cmi_flag, 1);
  EXPECT_EQ(in->cmi_nospeechCnt, 1);
  EXPECT_EQ(in->cmi_S[50], 3.0f);
  for (int i = 0; i < 129; ++i) {
    in->S[i] = 7.0f;
    in->phat[i] = 0.9f;  // speech above 600 Hz
    in->power_spectrum[i] = 1e9f;
  }
  in->cmi_nospeechCnt = 125;  // not above 1.0 x 16000 / 128: the flag stays
  Check_MicInlet(in.get());
  EXPECT_EQ(in->cmi_flag, 1);
  EXPECT_EQ(in->cmi_nospeechCnt, 0);
  in->cmi_nospeechCnt = 126;
  Check_MicInlet(in.get());
  EXPECT_EQ(in->cmi_flag, 0);
  EXPECT_EQ(in->S[50], 3.0f);  // restored from the saved copy
  EXPECT_EQ(in->cmi_nospeechCnt, 0);
  for (int i = 0; i < 129; ++i) in->phat[i] = 0.1f;  // a pause again: the count saturates
  in->cmi_nospeechCnt = 65535;
  EXPECT_EQ(CaptureStdout([&] { Check_MicInlet(in.get()); }), Wrn("[ANR]Warning! cmi_nospeechCnt is reset.\t\n"));
  EXPECT_EQ(in->cmi_nospeechCnt, 32767);
}

TEST(NrDetectors, SpeechProbabilityAveragesOverChannels) {
  Instance a, b;
  a->sum_filter = 64.5f;
  int p = 99;
  NR_Sum_Speech_Prob(a.get(), &p, 0, 0);
  EXPECT_EQ(p, 50);  // channel 0 replaces what the pointer held
  for (int i = 0; i < 129; ++i) b->PH1[i] = 0.25f;
  NR_Sum_Speech_Prob(b.get(), &p, 2, 1);
  EXPECT_EQ(p, (50 + 25) / 2);
  a->sum_filter = 1000.0f;
  NR_Sum_Speech_Prob(a.get(), &p, 0, 0);
  EXPECT_EQ(p, 100);
  a->sum_filter = -3.0f;
  NR_Sum_Speech_Prob(a.get(), &p, 0, 0);
  EXPECT_EQ(p, 0);
}

}  // namespace
