// The chain's frame loop with every stage off: transparency with one frame of
// delay on each channel, full scale, entry guards, the long-run renewal and
// Reset.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "chain_support.h"

namespace {

constexpr int kFrame = 128;

using zebtest::Chain;

std::vector<short> Noise(size_t n, std::mt19937& rng) {
  std::uniform_int_distribution<int> d(-32768, 32767);
  std::vector<short> v(n);
  for (short& s : v) s = static_cast<short>(d(rng));
  return v;
}

class AllOff : public ::testing::TestWithParam<std::tuple<int, unsigned>> {};

TEST_P(AllOff, OutputIsInputOneFrameLate) {
  const int rate = std::get<0>(GetParam());
  const unsigned channels = std::get<1>(GetParam());
  Chain c(rate, channels);
  ASSERT_NE(c.kol, nullptr);
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  std::mt19937 rng(zebtest::TestSeed());
  const int frames = 40;
  std::vector<short> in = Noise(static_cast<size_t>(frames) * kFrame * channels, rng);
  std::vector<short> out = c.Run(in);
  const size_t delay = kFrame * channels;
  for (size_t i = 0; i < delay; ++i) ASSERT_EQ(out[i], 0) << "leading sample " << i;
  int worst = 0;
  for (size_t i = delay; i < out.size(); ++i) worst = std::max(worst, std::abs(out[i] - in[i - delay]));
  EXPECT_LE(worst, 1) << "rate " << rate << " channels " << channels;
}

INSTANTIATE_TEST_SUITE_P(RatesAndChannels, AllOff,
                         ::testing::Combine(::testing::Values(8000, 16000, 32000, 48000), ::testing::Values(1u, 2u)));

TEST(ChainRun, FullScaleSurvivesTheRoundTrip) {
  Chain c(48000, 1);
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  std::vector<short> in(kFrame * 10);
  for (size_t i = 0; i < in.size(); ++i) in[i] = (i / 3) % 2 ? 32767 : -32768;
  std::vector<short> out = c.Run(in);
  for (size_t i = kFrame; i < out.size(); ++i) ASSERT_LE(std::abs(out[i] - in[i - kFrame]), 1) << i;
}

TEST(ChainRun, EntryGuards) {
  zebtest::ScopedEnv env("DML_PATH", zebtest::kNoLevelFile);
  Chain c(16000, 1);
  short frame[kFrame] = {};
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(c.kol, nullptr), ALGO_KOL_RET_FAILED); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! The pss_audio_in is NULL.\t\n");
  // The refused frame counts towards renewal but leaves the handle usable.
  EXPECT_EQ(c.h()->reset_frame_cnt, 1);
  EXPECT_EQ(c.h()->is_run_status, 0);
  EXPECT_EQ(ZebKol_Run(c.kol, frame), ALGO_KOL_RET_SUCCESS);

  c.h()->is_run_status = 1;  // as if a call were still in progress
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(c.kol, frame), ALGO_KOL_RET_API_CONFLICT); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! Last time _ZebKol_Run process is unfinished.\t\n");
  c.h()->is_run_status = 0;

  c.h()->check_number = 0x12345678;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(c.kol, frame), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! The kol handle is dirty in ZebKol_Run.\t\n");
}

TEST(ChainRun, RenewalAfterTheFrameLimitRestartsStateButKeepsSettings) {
  Chain c(16000, 1);
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  c.h()->eq_config.eq_gain_db[3] = 4;  // a stored setting that must survive
  std::vector<short> tone = zebtest::Tone(16000, 500.0f, 10000.0f, 4, 1);
  std::vector<short> frame(tone.begin(), tone.begin() + kFrame);
  ASSERT_EQ(ZebKol_Run(c.kol, frame.data()), ALGO_KOL_RET_SUCCESS);

  c.h()->reset_frame_cnt = KOL_RESET_FRAME_LIMIT - 1;
  frame.assign(tone.begin() + kFrame, tone.begin() + 2 * kFrame);
  ASSERT_EQ(ZebKol_Run(c.kol, frame.data()), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.h()->reset_frame_cnt, KOL_RESET_FRAME_LIMIT);
  bool anyNonZero = false;
  for (short s : frame) anyNonZero |= s != 0;
  EXPECT_TRUE(anyNonZero);

  // This frame renews the handle: the history restarts from silence, so the
  // frame that comes out is the silent frame before it.
  frame.assign(tone.begin() + 2 * kFrame, tone.begin() + 3 * kFrame);
  std::string out;
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(c.kol, frame.data()), ALGO_KOL_RET_SUCCESS); });
  for (short s : frame) ASSERT_EQ(s, 0);
  EXPECT_EQ(c.h()->reset_frame_cnt, 0);
  EXPECT_EQ(c.h()->is_kol_config_status, 1);
  EXPECT_EQ(c.h()->eq_config.eq_gain_db[3], 4);
  EXPECT_NE(out.find("[KOL]KOL internal initialize succeed"), std::string::npos);

  frame.assign(tone.begin() + 3 * kFrame, tone.begin() + 4 * kFrame);
  ASSERT_EQ(ZebKol_Run(c.kol, frame.data()), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.h()->reset_frame_cnt, 1);
  for (int i = 0; i < kFrame; ++i) ASSERT_LE(std::abs(frame[i] - tone[2 * kFrame + i]), 1) << i;
}

TEST(ChainRun, ResetReproducesOutput) {
  Chain c(32000, 2);
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  std::mt19937 rng(zebtest::TestSeed());
  std::vector<short> in = Noise(kFrame * 2 * 12, rng);
  std::vector<short> first = c.Run(in);
  zebtest::CaptureStdout([&] { c.kol = ZebKol_Reset(c.buffer(), &c.init, &c.sw); });
  ASSERT_EQ(c.Config(), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.Run(in), first);
}

}  // namespace
