// The ZebAgc_* family (layout, guards, codes, texts, Run in both modes,
// setters) and the chain's AGC setters with its digital gain.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "AudioAgcProcess.h"
#include "AudioProcess.h"
#include "AudioProcessWrapper.h"
#include "debug_msglevel.h"
#include "chain_support.h"
#include "test_support.h"

namespace {

constexpr int kFrame = 128;

AudioAgcConfig Mode(unsigned int mode) {
  AudioAgcConfig c;
  std::memset(&c, 0, sizeof(c));
  c.agc_enable = 1;
  c.user_mode = mode;
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
  c.gain_step = 1;
  return c;
}

// The level file is absent, so the level is 7 (everything printed).
struct Family {
  Family(int rate, unsigned int channels, unsigned int pointNumber = kFrame) : env("DML_PATH", zebtest::kNoLevelFile) {
    work.assign(ZebAgc_GetBufferSize() / sizeof(void*) + 1, nullptr);
    init = {pointNumber, channels, ZEB_AGC_SAMPLE_RATE_16000};
    std::memcpy(&init.sample_rate, &rate, sizeof(rate));  // any int, as a C caller may pass
    initText = zebtest::CaptureStdout([&] { agc = ZebAgc_Init(buffer(), &init); });
  }
  char* buffer() { return reinterpret_cast<char*>(work.data()); }
  ALGO_AGC_RET Config(AudioAgcConfig c) {
    ALGO_AGC_RET r = ALGO_AGC_RET_FAILED;
    lastText = zebtest::CaptureStdout([&] { r = ZebAgc_Config(agc, &c); });
    return r;
  }
  std::vector<short> Run(std::vector<short> frame) {
    EXPECT_EQ(ZebAgc_Run(agc, frame.data()), ALGO_AGC_RET_SUCCESS);
    return frame;
  }
  AudioAgcInternel* h() { return static_cast<AudioAgcInternel*>(agc); }

  zebtest::ScopedEnv env;
  std::vector<void*> work;
  AudioAgcInit init;
  AGC_HANDLE agc = nullptr;
  std::string initText, lastText;
};

// Interleaved tone with a period of 8 samples: whole periods in every block.
std::vector<short> Tone(float rmsDb, unsigned int channels = 1, int frames = 1) {
  std::vector<short> v(kFrame * channels * frames);
  const double amp = 32767.0 * std::sqrt(2.0) * std::pow(10.0, rmsDb / 20.0);
  for (size_t i = 0; i < v.size() / channels; ++i) {
    for (unsigned int c = 0; c < channels; ++c) {
      v[i * channels + c] = static_cast<short>(std::lround(amp * std::sin(2.0 * M_PI * i / 8.0)));
    }
  }
  return v;
}

double RmsDb(const std::vector<short>& v, size_t from = 0) {
  double s = 0.0;
  for (size_t i = from; i < v.size(); ++i) s += double(v[i]) * v[i];
  return 20.0 * std::log10(std::sqrt(s / double(v.size() - from)) / 32767.0);
}

constexpr size_t Round(size_t n) { return (n + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*); }

TEST(AgcFamilyLayout, SizeIsTheSumOfTheRoundedParts) {
  const size_t fft = Round(FFT_GetBufferSize(256));
  const size_t expect = Round(sizeof(AudioAgcInternel)) + 2 * Round(sizeof(AGCinst_t)) +
                        2 * Round(sizeof(FreqAgcHandle)) + Round(sizeof(postInfo_t)) + 3 * fft +
                        2 * Round(sizeof(cng_t));
  EXPECT_EQ(ZebAgc_GetBufferSize(), expect);
  Family f(16000, 2);
  ASSERT_NE(f.agc, nullptr);
  EXPECT_EQ(reinterpret_cast<char*>(f.h()->cng_working_buffer[1]) + Round(sizeof(cng_t)),
            f.buffer() + ZebAgc_GetBufferSize());
  EXPECT_EQ(f.h()->agc_inst[1]->dbg_level, 7);
}

TEST(AgcFamilyInit, TextsOfEveryPath) {
  Family ok(48000, 1);
  ASSERT_NE(ok.agc, nullptr);
  EXPECT_NE(ok.initText.find("[ALGO_MSG_MSG] [AGC]FFT mode: floating point mode\r\n"), std::string::npos);
  EXPECT_NE(ok.initText.find("[ALGO_MSG_MSG] [AGC]Point Number: 128\r\n[ALGO_MSG_MSG] [AGC]Channel: 1\r\n"
                             "[ALGO_MSG_MSG] [AGC]Sample rate: 48000\r\n"),
            std::string::npos);
  EXPECT_NE(ok.initText.find("[ALGO_MSG_MSG] [AGC]AGC internal initialize succeed\r\n"), std::string::npos);
  EXPECT_EQ(ok.h()->agc_inst[1]->dbg_level, 0);  // mono: the second core keeps level 0

  // 64 passes the first check and fails on the core's frame size.
  Family p64(16000, 1, 64);
  EXPECT_EQ(p64.agc, nullptr);
  EXPECT_NE(p64.initText.find("[ALGO_MSG_ERR] [AGC] Frame number setting Error\r\n"), std::string::npos);
  EXPECT_NE(p64.initText.find("[ALGO_MSG_ERR] [AGC] Window setting error\t\n"), std::string::npos);
  EXPECT_NE(p64.initText.find("[ALGO_MSG_ERR] [AGC]Fail! AGC internal initialize error\r\n"), std::string::npos);

  Family p100(16000, 1, 100);
  EXPECT_EQ(p100.agc, nullptr);
  EXPECT_NE(p100.initText.find("[ALGO_MSG_ERR] [AGC]This AGC Lib only support point_number = 128 or 64 or 32....\t\n"),
            std::string::npos);
  Family ch3(16000, 3);
  EXPECT_EQ(ch3.agc, nullptr);
  EXPECT_NE(ch3.initText.find("[ALGO_MSG_ERR] [ANR]This AGC Lib only support mono or stereo ....\r\n"),
            std::string::npos);
  for (int rateHz : {22050, 96000}) {  // the second lies outside the enumeration's range
    Family rate(rateHz, 1);
    EXPECT_EQ(rate.agc, nullptr);
    EXPECT_NE(rate.initText.find("[ALGO_MSG_ERR] [AGC]This AGC Lib only support sample rate 8K 16K 48K....\r\n"),
              std::string::npos);
  }
  const std::string out = zebtest::CaptureStdout([] { EXPECT_EQ(ZebAgc_Reset(nullptr, nullptr), nullptr); });
  EXPECT_NE(out.find("[ALGO_MSG_ERR] [AGC]Fail! The workingBufferAddress or agc_init is NULL\t\n"), std::string::npos);
}

TEST(AgcFamilyConfig, CodesAndTheirPublicMapping) {
  Family f(16000, 1);
  ASSERT_NE(f.agc, nullptr);
  struct Case {
    void (*edit)(AudioAgcConfig&);
    ALGO_AGC_RET code;
  } cases[] = {
      {[](AudioAgcConfig& c) { c.compression_ratio_input[2] = -40; }, ALGO_AGC_RET_INVALID_COMPRESSION_RATIO},
      {[](AudioAgcConfig& c) { c.drop_gain_max = 121; }, ALGO_AGC_RET_INVALID_DROP_GAIN_MAX},
      {[](AudioAgcConfig& c) { c.gain_step = 0; }, ALGO_AGC_RET_INVALID_GAIN_STEP},
      {[](AudioAgcConfig& c) { c.release_time = 0; }, ALGO_AGC_RET_INVALID_RELEASE_TIME},
      {[](AudioAgcConfig& c) { c.attack_time = 100; }, ALGO_AGC_RET_INVALID_ATTACK_TIME},
      {[](AudioAgcConfig& c) { c.noise_gate_db = 121; }, ALGO_AGC_RET_INVALID_NOISE_GATE},
      {[](AudioAgcConfig& c) { c.noise_gate_attenuation_db = 101; }, ALGO_AGC_RET_INVALID_NOISE_ATTENU},
      {[](AudioAgcConfig& c) { c.drop_gain_threshold = -121; }, ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL},
      {[](AudioAgcConfig& c) { c.gain_info.gain_min = 101; }, ALGO_AGC_RET_INVALID_GAIN_INFO},
  };
  for (unsigned int mode = 1; mode <= 2; ++mode) {
    for (const Case& k : cases) {
      AudioAgcConfig c = Mode(mode);
      k.edit(c);
      EXPECT_EQ(f.Config(c), k.code) << "mode " << mode;
      EXPECT_NE(f.lastText.find(mode == 1 ? "[ALGO_MSG_ERR] [AGC]Config Fail!!\n" : "[ALGO_MSG_ERR] [AGC]Mode 2 Config Fail!!\n"),
                std::string::npos);
      EXPECT_EQ(f.h()->agc_config.drop_gain_max, c.drop_gain_max);  // stored before validation
    }
  }
  AudioAgcConfig c = Mode(3);
  c.gain_step = 0;
  EXPECT_EQ(f.Config(c), ALGO_AGC_RET_SUCCESS);  // nothing validates mode 3
  EXPECT_EQ(f.lastText, "");

  // GetConfig copies out what Config stored.
  ASSERT_EQ(f.Config(Mode(2)), ALGO_AGC_RET_SUCCESS);
  AudioAgcInit gotInit;
  AudioAgcConfig got;
  ASSERT_EQ(ZebAgc_GetConfig(f.agc, &gotInit, &got), ALGO_AGC_RET_SUCCESS);
  const AudioAgcConfig want = Mode(2);
  EXPECT_EQ(std::memcmp(got.compression_ratio_output, want.compression_ratio_output, 14), 0);
  EXPECT_EQ(got.gain_step, want.gain_step);
  EXPECT_EQ(gotInit.sample_rate, ZEB_AGC_SAMPLE_RATE_16000);
}

TEST(AgcFamilyGuards, RefusalsAndTheirTexts) {
  std::vector<void*> raw(ZebAgc_GetBufferSize() / sizeof(void*) + 1, nullptr);
  AGC_HANDLE cold = raw.data();
  AudioAgcConfig c = Mode(1);
  std::vector<short> frame(kFrame, 0);
  struct Check {
    std::function<ALGO_AGC_RET()> call;
    ALGO_AGC_RET code;
    const char* text;
  } checks[] = {
      {[&] { return ZebAgc_Config(nullptr, &c); }, ALGO_AGC_RET_INVALID_HANDLE,
       "[ALGO_MSG_ERR] [_ZebAgc_Config]Fail! The agc handle is NULL\t\n"},
      {[&] { return ZebAgc_Config(cold, &c); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_Config]Fail! Need init before ZebAgc_Config\t\n"},
      {[&] { return ZebAgc_GetConfig(nullptr, nullptr, &c); }, ALGO_AGC_RET_INVALID_HANDLE, ""},
      {[&] { return ZebAgc_GetConfig(cold, nullptr, &c); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_GetConfig]Fail! Need config before ZebAgc_GetConfig\t\n"},
      {[&] { return ZebAgc_Run(nullptr, frame.data()); }, ALGO_AGC_RET_INVALID_HANDLE,
       "[ALGO_MSG_ERR] [_ZebAgc_Run]Fail! The agc handle is NULL\t\n"},
      {[&] { return ZebAgc_Run(cold, frame.data()); }, ALGO_AGC_RET_INVALID_HANDLE,
       "[ALGO_MSG_ERR] [_ZebAgc_Run]Fail! The agc handle is dirty in ZebAgc_Run\t\n"},
      {[&] { return ZebAgc_Free(cold); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_Free]Fail! Need init before ZebAgc_Free\t\n"},
      {[&] { return ZebAgc_SetAgcFreqBand(nullptr, nullptr); }, ALGO_AGC_RET_INVALID_HANDLE,
       "[ALGO_MSG_ERR] [_ZebAgc_SetAgcFreqBand]Fail! The KOL handle is NULL\t\n"},
      {[&] { return ZebAgc_SetAgcFreqBand(cold, nullptr); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_SetAgcFreqBand]Fail! Need init before ZebKol_SetLowFreqCompressionRatioCurve\t\n"},
      {[&] { return ZebAgc_SetMidFreqCompressionRatioCurve(nullptr, nullptr, nullptr); }, ALGO_AGC_RET_INVALID_HANDLE,
       "[ALGO_MSG_ERR] [_ZebAgc_SetMidFreqCompressionRatioCurve]Fail! The AGC handle is NULL\t\n"},
      {[&] { return ZebAgc_SetHighFreqCompressionRatioCurve(cold, nullptr, nullptr); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_SetHighFreqCompressionRatioCurve]Fail! Need init\t\n"},
      {[&] { return ZebAgc_SetCompressionRatioCurve(cold, nullptr, nullptr, 7); }, ALGO_AGC_RET_INVALID_CALLING,
       "[ALGO_MSG_ERR] [_ZebAgc_SetCompressionRatioCurve]Fail! Need init before ZebAgc_SetCompressionRatioCurve\t\n"},
  };
  for (const Check& k : checks) {
    ALGO_AGC_RET r = ALGO_AGC_RET_SUCCESS;
    const std::string out = zebtest::CaptureStdout([&] { r = k.call(); });
    EXPECT_EQ(r, k.code) << k.text;
    EXPECT_EQ(out, k.text);
  }

  Family f(16000, 1);
  ASSERT_NE(f.agc, nullptr);
  std::string out = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebAgc_Run(f.agc, frame.data()), ALGO_AGC_RET_INVALID_CALLING); });
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [_ZebAgc_Run]Fail! Need config before ZebAgc_Run\t\n");
  ASSERT_EQ(f.Config(Mode(1)), ALGO_AGC_RET_SUCCESS);
  f.h()->is_run_status = 1;  // as left by an unfinished call
  out = zebtest::CaptureStdout([&] {
    EXPECT_EQ(ZebAgc_Run(f.agc, frame.data()), ALGO_AGC_RET_API_CONFLICT);
    EXPECT_EQ(ZebAgc_Free(f.agc), ALGO_AGC_RET_API_CONFLICT);
  });
  EXPECT_EQ(out, "");
  f.h()->is_run_status = 0;
  EXPECT_EQ(ZebAgc_Free(f.agc), ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(f.h()->is_agc_init_status, 0);
  EXPECT_EQ(f.h()->FFT_workingBuff.is_fft_init, 1);  // no fft_Free in this family
}

TEST(AgcFamilyRun, DisabledOrUnknownModePassesUntouched) {
  for (AudioAgcConfig c : {Mode(1), Mode(0)}) {
    Family f(16000, 2);
    if (c.user_mode == 1) c.agc_enable = 0;
    ASSERT_EQ(f.Config(c), ALGO_AGC_RET_SUCCESS);
    const std::vector<short> in = Tone(-20.0f, 2);
    EXPECT_EQ(f.Run(in), in);
    EXPECT_EQ(f.Run(in), in);
  }
}

TEST(AgcFamilyRun, TimeDomainFirstFrameIsUnityThenTheGainApplies) {
  AudioAgcConfig c = Mode(1);
  c.gain_info.gain_init = 10;
  Family f(8000, 1);
  ASSERT_EQ(f.Config(c), ALGO_AGC_RET_SUCCESS);
  const std::vector<short> in = Tone(-30.0f);
  const std::vector<short> out = f.Run(in);
  EXPECT_EQ(f.h()->start_flag, 0);
  // Windowed overlap-add at unity: the input one core frame (32) later.
  for (int n = 0; n < 32; ++n) EXPECT_EQ(out[n], 0);
  for (int n = 32; n < kFrame; ++n) EXPECT_NEAR(out[n], in[n - 32], 1) << n;
  const std::vector<short> second = f.Run(in);
  EXPECT_EQ(f.h()->start_flag, 1);
  EXPECT_GT(RmsDb(second, 32), RmsDb(in) + 5.0);
}

TEST(AgcFamilyRun, CoreFramesPerRunFollowTheRate) {
  const struct { int rate, factor, frame; } rows[] = {{8000, 4, 32}, {16000, 2, 64}, {32000, 1, 128}, {48000, 1, 128}};
  for (const auto& r : rows) {
    Family f(r.rate, 1);
    ASSERT_EQ(f.Config(Mode(1)), ALGO_AGC_RET_SUCCESS);
    EXPECT_EQ(f.h()->agc_inst[0]->time_factor, r.factor);
    EXPECT_EQ(f.h()->agc_inst[0]->frame_length, r.frame);
    f.Run(Tone(-40.0f));
    f.Run(Tone(-40.0f));
    // Half a dB per core frame, whatever the rate.
    EXPECT_EQ(f.h()->agc_inst[0]->DGain, 2.0f * r.factor) << r.rate;
  }
}

TEST(AgcFamilyRun, TimeDomainLevelsAToneAndKeepsChannelsApart) {
  Family f(16000, 2);
  ASSERT_EQ(f.Config(Mode(1)), ALGO_AGC_RET_SUCCESS);
  std::vector<short> in = Tone(-40.0f, 2);
  for (size_t i = 1; i < in.size(); i += 2) in[i] = 0;  // right channel silent
  std::vector<short> out;
  for (int n = 0; n < 30; ++n) out = f.Run(in);
  EXPECT_NEAR(f.h()->agc_inst[0]->DGain, 30.0f, 0.1f);
  EXPECT_EQ(f.h()->agc_inst[1]->DGain, 0.0f);
  std::vector<short> left(kFrame), right(kFrame);
  for (int i = 0; i < kFrame; ++i) {
    left[i] = out[2 * i];
    right[i] = out[2 * i + 1];
  }
  EXPECT_NEAR(RmsDb(left), -25.0, 0.2);  // the curve's target for -40 dB
  EXPECT_EQ(right, std::vector<short>(kFrame, 0));
}

TEST(AgcFamilyRun, FrequencyDomainRaisesTheBandTowardsItsTarget) {
  Family f(16000, 1);
  AudioAgcConfig c = Mode(2);
  c.gain_step = 2;
  ASSERT_EQ(f.Config(c), ALGO_AGC_RET_SUCCESS);
  // Bin 16 (1 kHz) at -40 dB: the default curve's target is -25 dB.
  std::vector<short> in(kFrame);
  const double amp = 32768.0 * std::sqrt(2.0) * 0.01;
  std::vector<short> out;
  for (int n = 0; n < 40; ++n) {
    for (int i = 0; i < kFrame; ++i) in[i] = static_cast<short>(std::lround(amp * std::cos(2.0 * M_PI * 16 * i / 256.0)));
    out = f.Run(in);
  }
  EXPECT_NEAR(f.h()->freq_agc_inst[0]->gain_decibel[0], 15.0f, 0.2f);
  EXPECT_NEAR(RmsDb(out), -25.0, 0.3);
}

TEST(AgcFamilySetters, CurvesAndBands) {
  Family f(16000, 2);
  ASSERT_EQ(f.Config(Mode(2)), ALGO_AGC_RET_SUCCESS);
  int bad[3] = {1000, 500, 2000};
  std::string out = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebAgc_SetAgcFreqBand(f.agc, bad), ALGO_AGC_RET_FAILED); });
  EXPECT_NE(out.find("[ALGO_MSG_ERR] [AGC]Config Fail!!\n"), std::string::npos);
  EXPECT_EQ(f.h()->is_agc_config_status, 0);
  std::vector<short> frame(2 * kFrame, 0);
  zebtest::CaptureStdout([&] { EXPECT_EQ(ZebAgc_Run(f.agc, frame.data()), ALGO_AGC_RET_INVALID_CALLING); });
  int good[3] = {1000, 3000, 8000};
  ASSERT_EQ(ZebAgc_SetAgcFreqBand(f.agc, good), ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(f.h()->freq_agc_inst[1]->freq_bin_band[1], 48);

  int in[7] = {-90, -70, -50, -30, -10, 0, 0};
  int o[7] = {-40, -30, -20, -10, -5, 0, 0};
  ASSERT_EQ(ZebAgc_SetLowFreqCompressionRatioCurve(f.agc, in, o), ALGO_AGC_RET_SUCCESS);
  EXPECT_EQ(f.h()->freq_agc_inst[1]->compression_ratio_config.compressionRatioArrayOutput[0][0], -40.0f);
  o[3] = -50;
  zebtest::CaptureStdout(
      [&] { EXPECT_EQ(ZebAgc_SetMidFreqCompressionRatioCurve(f.agc, in, o), ALGO_AGC_RET_INVALID_COMPRESSION_RATIO); });

  short ci[21], co[21];
  for (int i = 0; i < 21; ++i) {
    ci[i] = static_cast<short>(-100 + 4 * i);
    co[i] = static_cast<short>(-60 + 2 * i);
  }
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebAgc_SetCompressionRatioCurve(f.agc, ci, co, 21), ALGO_AGC_RET_FAILED); });
  EXPECT_NE(out.find("Fail!"), std::string::npos);
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebAgc_SetCompressionRatioCurve(f.agc, ci, co, 20), ALGO_AGC_RET_SUCCESS); });
  EXPECT_EQ(out, "[ALGO_MSG_MSG] [_ZebAgc_SetCompressionRatioCurve]Set compression ratio curve succeed.\n");
  EXPECT_EQ(f.h()->agc_inst[1]->compression_ratio_input[19], -24.0f);
  co[4] = -100;
  zebtest::CaptureStdout(
      [&] { EXPECT_EQ(ZebAgc_SetCompressionRatioCurve(f.agc, ci, co, 7), ALGO_AGC_RET_INVALID_COMPRESSION_RATIO); });

}

// ---- The chain's AGC setters and digital gain ----

struct NoLevelFile {
  zebtest::ScopedEnv env{"DML_PATH", zebtest::kNoLevelFile};
};

// A 16 kHz chain with memory for the AGC stages only, or for none; made
// after the level file is out of the way.
struct Chain : NoLevelFile, zebtest::Chain {
  explicit Chain(unsigned int channels, bool agcBlocks = true) : zebtest::Chain(16000, channels, 0, 0, agcBlocks) {
    for (unsigned int m = 0; agcBlocks && m < channels; ++m) {
      // Before the chain brings its AGC stages up itself, do it here.
      FreqAgcHandle* fh = h()->freq_agc_inst[m];
      if (fh->agc_init.sample_rate == 0) {
        fh->dbg_level = h()->dbg_level;
        _AudioAgcInit ai = {kFrame, channels, 16000};
        zebtest::CaptureStdout([&] { freqDomainAgcInit(fh, &ai); });
      }
    }
  }
  ALGO_KOL_RET Config(unsigned int mode) {
    zebtest::ChainRecords r;
    r.agc = Mode(mode);
    return zebtest::Chain::Config(r);
  }
};

TEST(ChainAgcSetters, FrequencyDomainGuardsAndFailures) {
  Chain c(2);
  ASSERT_NE(c.kol, nullptr);
  ASSERT_EQ(c.Config(1), ALGO_KOL_RET_SUCCESS);
  int in[7] = {-90, -70, -50, -30, -10, 0, 0};
  int out[7] = {-40, -30, -20, -10, -5, 0, 0};
  std::string text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetLowFreqCompressionRatioCurve(c.kol, in, out), ALGO_KOL_AGC_RET_INVALID_ENABLE); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_SetLowFreqCompressionRatioCurve]Fail! Need enable frequency domain AGC.\t\n");

  ASSERT_EQ(c.Config(2), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(_ZebKol_SetHighFreqCompressionRatioCurve(c.kol, in, out), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.h()->freq_agc_inst[1]->compression_ratio_config.compressionRatioArrayOutput[2][1], -30.0f);
  int band[3] = {500, 2500, 6000};
  EXPECT_EQ(_ZebKol_SetAgcFreqBand(c.kol, band), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.h()->freq_agc_inst[1]->freq_bin_band[2], FrequencyToBinNum(6000, 16000));

  out[2] = -50;
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetMidFreqCompressionRatioCurve(c.kol, in, out), ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO); });
  EXPECT_NE(text.find("[ALGO_MSG_ERR] [AGC]Fail! SetMidFreqCompressionRatioCurve fail.\t\n"), std::string::npos);
  EXPECT_EQ(c.h()->is_kol_config_status, 0);
  ASSERT_EQ(c.Config(2), ALGO_KOL_RET_SUCCESS);
  band[2] = 9000;
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetAgcFreqBand(c.kol, band), ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND); });
  EXPECT_NE(text.find("[ALGO_MSG_ERR] [AGC]Fail! SetFreqBand fail.\t\n"), std::string::npos);
  std::vector<short> frame(2 * kFrame, 0);
  zebtest::CaptureStdout([&] { EXPECT_EQ(_ZebKol_Run(c.kol, frame.data()), ALGO_KOL_RET_INVALID_CALLING); });

  text = zebtest::CaptureStdout([&] { EXPECT_EQ(_ZebKol_SetAgcFreqBand(nullptr, band), ALGO_KOL_RET_INVALID_HANDLE); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_SetAgcFreqBand]Fail! The kol handle is NULL\t\n");
  c.h()->is_kol_init_status = 0;
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetMidFreqCompressionRatioCurve(c.kol, in, out), ALGO_KOL_RET_INVALID_CALLING); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_SetMidFreqCompressionRatioCurve]Fail! Need init before "
                  "ZebKol_SetMidFreqCompressionRatioCurve.\t\n");
}

TEST(ChainAgcSetters, TimeDomainCurve) {
  Chain c(2);
  short in[7] = {-60, -40, -30, -20, -10, -5, 0};
  short out[7] = {-40, -30, -25, -20, -10, -5, 0};
  std::string text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetCompressionRatioCurve(c.kol, in, out, 7), ALGO_KOL_RET_SUCCESS); });
  EXPECT_EQ(text, "[ALGO_MSG_MSG] [_ZebKol_SetCompressionRatioCurve]Set compression ratio curve succeed.\t\n");
  EXPECT_EQ(c.h()->agc_inst[1]->compression_ratio_input[1], -40.0f);
  out[1] = -50;
  zebtest::CaptureStdout([&] {
    EXPECT_EQ(_ZebKol_SetCompressionRatioCurve(c.kol, in, out, 7), ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO);
    EXPECT_EQ(_ZebKol_SetCompressionRatioCurve(c.kol, in, out, 21), ALGO_KOL_RET_FAILED);
  });

  Chain bare(1, false);
  out[1] = -30;
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_SetCompressionRatioCurve(bare.kol, in, out, 7), ALGO_KOL_RET_SUCCESS); });
  EXPECT_EQ(text.rfind("[ALGO_MSG_ERR] [AGC] Fail! Need allocate buffer for agc setting.\t\n", 0), 0u);
}

TEST(ChainDigitalGain, SentinelRangeAndBlocking) {
  Chain c(2);
  ASSERT_EQ(c.h()->gain_dB, -150.0f);
  std::vector<short> frame(2 * kFrame, 100);
  frame[7] = 20000;
  ASSERT_EQ(_ZebKol_ApplyDigitalGain(c.kol, frame.data(), 20.0f), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(frame[2 * kFrame - 1], 1000);  // both channels, every sample
  EXPECT_EQ(frame[7], 32767);

  // -150 leaves the sentinel in place; the next value again passes unchecked.
  Chain s(1);
  std::vector<short> mono(kFrame, 100);
  ASSERT_EQ(_ZebKol_ApplyDigitalGain(s.kol, mono.data(), -150.0f), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(s.h()->gain_dB, -150.0f);
  mono.assign(kFrame, 100);
  ASSERT_EQ(_ZebKol_ApplyDigitalGain(s.kol, mono.data(), 200.0f), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(mono[0], 32767);
  std::string text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_ApplyDigitalGain(s.kol, mono.data(), 201.0f), ALGO_KOL_RET_FAILED); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_ApplyDigitalGain]Fail! Gain value out of range in ZebKol_ApplyDigitalGain.\t\n");
  // The failed call leaves the handle blocked.
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_ApplyDigitalGain(s.kol, mono.data(), 200.0f), ALGO_KOL_RET_API_CONFLICT); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_ApplyDigitalGain]Fail! Last time _ZebKol_ApplyDigitalGain process is unfinished.\t\n");

  Chain n(1);
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_ApplyDigitalGain(n.kol, nullptr, 0.0f), ALGO_KOL_RET_FAILED); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_ApplyDigitalGain]Fail! Input data is NULL in ZebKol_ApplyDigitalGain.\t\n");
  EXPECT_EQ(n.h()->is_run_status, 1);
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_ApplyDigitalGain(nullptr, mono.data(), 0.0f), ALGO_KOL_RET_INVALID_HANDLE); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_ApplyDigitalGain]Fail! The kol handle is NULL.\t\n");
  n.h()->is_kol_init_status = 0;
  text = zebtest::CaptureStdout(
      [&] { EXPECT_EQ(_ZebKol_ApplyDigitalGain(n.kol, mono.data(), 0.0f), ALGO_KOL_RET_INVALID_CALLING); });
  EXPECT_EQ(text, "[ALGO_MSG_ERR] [_ZebKol_ApplyDigitalGain]Fail! Need init before ZebKol_ApplyDigitalGain.\t\n");
}

}  // namespace
