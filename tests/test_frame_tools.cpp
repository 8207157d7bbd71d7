// Windows, overlap-add, digital gain, clipping checks and stream loading.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "pre_post_tool.h"
#include "test_support.h"
#include "windowfilt.h"

namespace {

postInfo_t Info(int length, unsigned int channels, int bias, int flag = 0) {
  postInfo_t p;
  p.length = length;
  p.channel_number = channels;
  p.bias = bias;
  p.flag = flag;
  return p;
}

TEST(WindowTables, HalfSineValuesAndEnds) {
  struct Table {
    const float* w;
    int entries;
  } tables[] = {{FloatingFftInWindow512, 257},
                {FloatingFftInWindow256, 129},
                {FloatingFftInWindow128, 65},
                {FloatingFftInWindow64, 33}};
  for (const Table& t : tables) {
    EXPECT_EQ(t.w[0], 0.0f);
    EXPECT_EQ(t.w[t.entries - 1], 1.0f);
    for (int i = 0; i < t.entries; ++i) {
      const double exact = std::sin(M_PI * i / (2.0 * (t.entries - 1)));
      EXPECT_EQ(t.w[i], static_cast<float>(exact)) << "entry " << i << " of " << t.entries;
    }
  }
  EXPECT_EQ(FftInWindow, FloatingFftInWindow256);
  EXPECT_EQ(FftOutWindow, FloatingFftInWindow256);
}

TEST(WindowFFT, SquaredWindowOverlapsToUnity) {
  // Windowing twice and overlapping by half a frame must reconstruct a
  // constant: that is what makes the chain transparent with all stages off.
  std::vector<float> a(256, 1.0f), b(256, 1.0f);
  WindowFFT_Process(a.data(), 0);
  WindowFFT_Process(a.data(), 1);
  WindowFFT_Process(b.data(), 0);
  WindowFFT_Process(b.data(), 1);
  for (int k = 0; k < 128; ++k) {
    EXPECT_NEAR(a[128 + k] + b[k], 1.0f, 1e-6f) << k;
  }
  EXPECT_EQ(a[0], 0.0f);  // the oldest sample never reaches the spectrum
}

TEST(WindowFFT, UnknownSwitchLeavesInputAlone) {
  std::vector<float> a(256, 3.0f);
  WindowFFT_Process(a.data(), 2);
  WindowFFT_Process(a.data(), -1);
  for (float v : a) EXPECT_EQ(v, 3.0f);
}

TEST(WindowFilter, MatchesFftWindowAndAppliesGainToFirstHalfOnly) {
  std::vector<float> a(256), b(256);
  for (int i = 0; i < 256; ++i) a[i] = b[i] = static_cast<float>(i - 100);
  WindowFFT_Process(a.data(), 0);
  WindowFilter_Process(b.data(), FloatingFftInWindow256, 128, 0.0f);
  EXPECT_EQ(0, std::memcmp(a.data(), b.data(), sizeof(float) * 256));

  WindowFilter_Process(b.data(), FloatingFftInWindow256, 128, 2.0f);
  WindowFFT_Process(a.data(), 0);
  for (int i = 0; i < 128; ++i) EXPECT_EQ(b[i], a[i] * 2.0f) << i;
  for (int i = 128; i < 256; ++i) EXPECT_EQ(b[i], a[i]) << i;
}

TEST(WindowFilter, NullArgumentsAreReported) {
  std::vector<float> a(8, 1.0f);
  const std::string out =
      zebtest::CaptureStdout([&] { WindowFilter_Process(a.data(), nullptr, 0, 0.0f); });
  EXPECT_NE(out.find("[Audio] filter Null in WindowFilter_Process\n"), std::string::npos) << out;
  EXPECT_NE(out.find("is NULL in WindowFilter_Process\n"), std::string::npos) << out;
}

TEST(PostOla, ClampAndRoundTowardZero) {
  float in[6] = {32767.0f, 32767.5f, -1.5f, 1.9f, -40000.0f, NAN};
  short out[6] = {};
  postInfo_t p = Info(6, 1, 0);
  Post_OLA_Process(in, nullptr, out, &p);
  EXPECT_EQ(out[0], 32767);
  EXPECT_EQ(out[1], 32767);
  EXPECT_EQ(out[2], -1);
  EXPECT_EQ(out[3], 1);
  EXPECT_EQ(out[4], -32768);
  EXPECT_EQ(out[5], 0);
}

TEST(PostOla, AddsTailStridesAndDuplicates) {
  float in[3] = {1.0f, 2.0f, 3.0f};
  float tail[3] = {10.0f, 20.0f, 30.0f};
  short out[8] = {-7, -7, -7, -7, -7, -7, -7, -7};
  postInfo_t p = Info(3, 2, 1);
  Post_OLA_Process(in, tail, out, &p);
  EXPECT_EQ(out[1], 11);
  EXPECT_EQ(out[3], 22);
  EXPECT_EQ(out[5], 33);
  EXPECT_EQ(out[0], -7);  // the other channel is not touched
  EXPECT_EQ(out[2], -7);
  EXPECT_EQ(tail[0], 10.0f);

  short dup[6] = {};
  postInfo_t pd = Info(3, 2, 0, 1);
  Post_OLA_Process(in, nullptr, dup, &pd);
  const short want[6] = {1, 1, 2, 2, 3, 3};
  EXPECT_EQ(0, std::memcmp(dup, want, sizeof(want)));
}

TEST(PostDgain, ScalesOneChannelWithClamp) {
  short s[6] = {100, 7, -20000, 7, 3, 7};
  postInfo_t p = Info(3, 2, 0);
  Post_Dgain_Process(s, 2.5f, &p);
  EXPECT_EQ(s[0], 250);
  EXPECT_EQ(s[2], -32768);
  EXPECT_EQ(s[4], 7);  // 7.5 rounds toward zero
  EXPECT_EQ(s[1], 7);
}

TEST(ClippingChecks, SaturationWarningNeedsMoreThanAThirdOfPairs) {
  std::vector<float> x(12, 0.0f);
  for (int i = 0; i < 5; ++i) x[i] = 32767.0f;  // 4 pairs, 12/3 = 4: not above
  postInfo_t p = Info(12, 1, 0);
  EXPECT_EQ(zebtest::CaptureStdout([&] { Post_Clipping_Check(x.data(), &p, 7); }), "");
  x[5] = 32767.0f;  // 5 pairs
  EXPECT_EQ(zebtest::CaptureStdout([&] { Post_Clipping_Check(x.data(), &p, 7); }),
            "[ALGO_MSG_WRN] Warning! The Microphone data is saturate.\t\n");
  EXPECT_EQ(zebtest::CaptureStdout([&] { Post_Clipping_Check(x.data(), &p, 1); }), "");
}

TEST(ClippingChecks, PreClipAttenuatesWholeRangeOnlyWhenLoud) {
  short quiet[4] = {32700, -32700, 1000, 5};
  postInfo_t p = Info(4, 1, 0);
  Pre_Clipping_Check(quiet, &p);
  EXPECT_EQ(quiet[0], 32700);
  short loud[4] = {32701, -100, 1000, 7};
  Pre_Clipping_Check(loud, &p);
  EXPECT_EQ(loud[0], static_cast<short>(32701.0f * 23197.0f / 32767.0f));
  EXPECT_EQ(loud[2], static_cast<short>(1000.0f * 23197.0f / 32767.0f));
  short biased[3] = {32767, 100, 100};
  postInfo_t pb = Info(3, 1, 1);
  Pre_Clipping_Check(biased, &pb);  // the loud sample lies before bias
  EXPECT_EQ(biased[1], 100);
}

TEST(LoadStreams, SlidesHistoryMonoAndStereo) {
  short hist[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  short mono[4] = {11, 12, 13, 14};
  postInfo_t p = Info(8, 1, 4);
  LoadStreams(hist, mono, 0, &p);
  const short wantMono[8] = {5, 6, 7, 8, 11, 12, 13, 14};
  EXPECT_EQ(0, std::memcmp(hist, wantMono, sizeof(hist)));

  short stereo[8] = {21, 31, 22, 32, 23, 33, 24, 34};
  postInfo_t ps = Info(8, 2, 4);
  LoadStreams(hist, stereo, 1, &ps);
  const short wantStereo[8] = {11, 12, 13, 14, 31, 32, 33, 34};
  EXPECT_EQ(0, std::memcmp(hist, wantStereo, sizeof(hist)));

  postInfo_t bad = Info(8, 3, 4);
  LoadStreams(hist, stereo, 0, &bad);
  EXPECT_EQ(0, std::memcmp(hist, wantStereo, sizeof(hist)));
}

TEST(LoadStreamf, ChannelRule) {
  short stereo[4] = {1, 2, 3, 4};
  float hist[4] = {9, 9, 9, 9};
  postInfo_t p = Info(4, 2, 2, 0);
  LoadStreamf(hist, stereo, 1, &p);  // flag 0 names channel 0 only
  EXPECT_EQ(hist[2], 9.0f);
  LoadStreamf(hist, stereo, 2, &p);  // channel 2 counts as 0
  EXPECT_EQ(hist[2], 1.0f);
  EXPECT_EQ(hist[3], 3.0f);
  postInfo_t any = Info(4, 2, 2, 1);
  LoadStreamf(hist, stereo, 1, &any);
  EXPECT_EQ(hist[0], 1.0f);
  EXPECT_EQ(hist[2], 2.0f);
  EXPECT_EQ(hist[3], 4.0f);
}

TEST(Rearrange, InterleaveRoundTrip) {
  short inter[6] = {1, 10, 2, 20, 3, 30};
  short planes[6] = {};
  short back[6] = {};
  RearranegOneArrayToMultipleChannel(inter, planes, 3, 2);
  const short wantPlanes[6] = {1, 2, 3, 10, 20, 30};
  EXPECT_EQ(0, std::memcmp(planes, wantPlanes, sizeof(planes)));
  RearrangeMultipleChannelDataToOneArray(planes, back, 3, 2);
  EXPECT_EQ(0, std::memcmp(back, inter, sizeof(inter)));
}

}  // namespace
