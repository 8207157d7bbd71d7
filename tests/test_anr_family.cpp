// The stand-alone noise reduction family: working-buffer carve, every guard
// with its code and text, configuration round trip, the frame loop (exact
// pass-through where no filter acts, real attenuation in filter mode 0,
// channel independence), the blocked state after a failure, and the
// auxiliary switches.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "AudioAnrProcess.h"
#include "test_support.h"
#include "zebaudio/zeb_anr.h"

namespace {

using zebtest::CaptureStdout;
using zebtest::Err;
using zebtest::Msg;
using zebtest::Wrn;
using Level = zebtest::ScopedLevel;

constexpr int kFrame = 128;

AudioAnrConfig Config(int filterMode = 0) {
  AudioAnrConfig c = {};
  c.anr_enable = 1;
  c.user_mode = 1;
  const int bands[6] = {3, 24, 40, 64, 80, 128};
  for (int i = 0; i < 6; ++i) c.anr_intensity_band[i] = bands[i];
  for (int i = 0; i < 7; ++i) c.anr_intensity[i] = 20;
  c.anr_smooth_level = 10;
  c.anr_converge_speed = filterMode == 5 ? NR_SPEED_HIGH : NR_SPEED_MID;
  c.anr_filter_mode = filterMode;
  return c;
}

struct Anr {
  std::vector<uint64_t> mem;  // 8-byte aligned storage
  ANR_HANDLE h = nullptr;

  Anr() : mem(ZebAnr_GetBufferSize() / 8 + 1) {}
  char* buf() { return reinterpret_cast<char*>(mem.data()); }
  AudioAnrInternel* rec() { return static_cast<AudioAnrInternel*>(h); }
  bool Init(int fs, unsigned int channels) {
    AudioAnrInit init = {128u, channels, (ZEB_ANR_SAMPLE_RATE)fs};
    h = ZebAnr_Init(buf(), &init);
    return h != nullptr;
  }
  bool Start(int fs, unsigned int channels, const AudioAnrConfig& cfg) {
    if (!Init(fs, channels)) return false;
    AudioAnrConfig c = cfg;
    return ZebAnr_Config(h, &c) == ALGO_ANR_RET_SUCCESS;
  }
};

// ================================================================ carve ==

TEST(AnrBuffer, EveryPartLiesInsideTheBufferAndTheTransformEndsIt) {
  Level lv(1);
  Anr a;
  ASSERT_TRUE(a.Init(16000, 2));
  char* base = a.buf();
  const size_t size = ZebAnr_GetBufferSize();
  AudioAnrInternel* h = a.rec();
  EXPECT_EQ(static_cast<void*>(h), static_cast<void*>(base));
  const size_t fft = (FFT_GetBufferSize(256) + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*);
  EXPECT_EQ(reinterpret_cast<char*>(h->FFT_workingBuff.fft_Ne10_cfg) + fft, base + size);
  const void* ptrs[] = {h->nr_inst[0], h->nr_inst[1], h->nr_inst[0]->NRInternalWorkBuf,
                        h->nr_inst[1]->InternalParams, h->nr_inst[0]->NNStateWorkBuf, h->nr_inst[1]->nnlayer_buf,
                        h->nr_inst[0]->gru_state_buff, h->nr_inst[1]->common, h->nr_inst[1]->common->kfft,
                        h->nr_inst[0]->common->kfft->twiddles, h->nr_inst[1]->common->kfft->bitrev,
                        h->nr_inst[0]->SRCInputWorkBuf_ptr, h->nr_inst[1]->SRCOutputWorkBuf_ptr, h->postInfo,
                        h->cng_working_buffer[0], h->cng_working_buffer[1]};
  for (const void* p : ptrs) {
    const char* c = static_cast<const char*>(p);
    EXPECT_GT(c, base);
    EXPECT_LT(c, base + size);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(c) % sizeof(void*), 0u);
  }
}

// ================================================================= init ==

TEST(AnrInit, NullArgumentsAreRefused) {
  Level lv(7);
  Anr a;
  AudioAnrInit init = {128u, 1u, ZEB_ANR_SAMPLE_RATE_16000};
  const std::string text =
      Err("[ANR]Fail! The working_buffer_address or AudioAnrInit structure is NULL.\t\n");
  ANR_HANDLE h = &a;
  EXPECT_EQ(CaptureStdout([&] { h = ZebAnr_Init(nullptr, &init); }), text);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(CaptureStdout([&] { h = ZebAnr_Reset(a.buf(), nullptr); }), text);
  EXPECT_EQ(h, nullptr);
}

TEST(AnrInit, MonoMessagesInOrder) {
  Level lv(7);
  Anr a;
  const std::string out = CaptureStdout([&] { ASSERT_TRUE(a.Init(16000, 1)); });
  const std::string bar =
      "|--------------------------------------------------------------------------------|\n";
  const std::string blank =
      "|                                                                                |\n";
  const std::string neon =
      "|                                   NEON ENABLE                                  |\n";
  EXPECT_EQ(out, Msg("[ANR]FFT mode: floating point mode.\t\n") +
                     Msg("[ANR]Point Number: 128\t\n") + Msg("[ANR]Channel: 1\t\n") +
                     Msg("[ANR]Sample rate: 16000\t\n") + Msg(bar) + Msg(blank) + Msg(neon) +
                     Msg(blank) + Msg(bar) + Msg("[ANR] Converge mode: Normal.\t\n") +
                     Msg("[ANR]ANR internal initialize succeed.\t\n"));
  // A mono stream leaves the second reducer uninitialised.
  EXPECT_EQ(a.rec()->nr_inst[1]->initFlag, 0);
  EXPECT_EQ(a.rec()->nr_inst[1]->dbg_level, 0);
}

TEST(AnrInit, BadStreamParametersAreRefusedAfterClearing) {
  Level lv(1);
  const struct {
    unsigned int pn, ch;
    int fs;
    std::string text;
  } rows[] = {
      {160, 1, 16000,
       "[ANR]Fail! Unsupported point_number 160. This ANR Lib only support point_number = 128.\t\n"},
      {128, 3, 16000,
       "[ANR]Fail! Unsupported channel 3. This ANR Lib only support mono or stereo.\t\n"},
      {128, 1, 44100,
       "[ANR]Fail! Unsupported sample_rate 44100. This ANR Lib only support sample rate 8K 16K "
       "32K 48K.\t\n"},
      // Beyond the enumeration's range: a C caller can still store it.
      {128, 1, 96000,
       "[ANR]Fail! Unsupported sample_rate 96000. This ANR Lib only support sample rate 8K 16K "
       "32K 48K.\t\n"},
  };
  for (const auto& r : rows) {
    Anr a;
    std::memset(a.buf(), 0xAB, ZebAnr_GetBufferSize());
    AudioAnrInit init = {r.pn, r.ch, ZEB_ANR_SAMPLE_RATE_16000};
    std::memcpy(&init.sample_rate, &r.fs, sizeof(r.fs));
    ANR_HANDLE h = &a;
    const std::string out = CaptureStdout([&] { h = ZebAnr_Init(a.buf(), &init); });
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(out, Err(r.text) + Err("[ANR]Fail! AudioAnrInit parameter error.\t\n"));
    const AudioAnrInternel* rec = reinterpret_cast<const AudioAnrInternel*>(a.buf());
    EXPECT_EQ(rec->pssAudioIn[1][17], 0);
    EXPECT_EQ(rec->is_anr_init_status, 0);
    const char* tail = a.buf() + ZebAnr_GetBufferSize() - 64;
    for (int i = 0; i < 64; ++i) ASSERT_EQ(tail[i], 0) << i;
  }
}

// =============================================================== config ==

TEST(AnrConfig, GuardsAndCodes) {
  Level lv(1);
  AudioAnrConfig c = Config();
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Config(nullptr, &c); }),
            Err("[_ZebAnr_Config]Fail! The anr handle is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);

  Anr a;
  std::memset(a.buf(), 0, ZebAnr_GetBufferSize());
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Config(a.buf(), &c); }),
            Err("[_ZebAnr_Config]Fail! Need init before ZebAnr_Config.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_CALLING);

  ASSERT_TRUE(a.Init(48000, 2));
  c.anr_intensity[3] = 31;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Config(a.h, &c); }),
            Err("[ANR]Fail! Unsupported anr_intensity 31 in position 3. [0~30]\t\n") +
                Err("[ANR]Fail! Config Fail.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_INTENSITY);
  // The refused record has replaced the stored one all the same.
  EXPECT_EQ(a.rec()->anr_config.anr_intensity[3], 31);
  EXPECT_EQ(a.rec()->is_anr_config_status, 0);

  c = Config();
  c.anr_filter_mode = 6;
  EXPECT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_INVALID_FILTER_MODE);  // core 11 becomes 13
  c = Config(5);
  EXPECT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_INVALID_SAMPLE_RATE);
  c.anr_converge_speed = NR_SPEED_MID;
  EXPECT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_INVALID_CONVERGE_SPEED);
  c = Config();
  c.anr_smooth_level = 11;
  EXPECT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_INVALID_SMOOTH_LEVEL);
}

TEST(AnrConfig, BothChannelsAreConfiguredAndGetConfigReturnsTheRecord) {
  Level lv(1);
  Anr a;
  ASSERT_TRUE(a.Init(32000, 2));
  AudioAnrInit gotInit = {};
  AudioAnrConfig gotCfg = {};
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_GetConfig(a.h, &gotInit, &gotCfg); }),
            Err("[_ZebAnr_GetConfig]Fail! Need config before ZebAnr_GetConfig.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_CALLING);

  AudioAnrConfig c = Config(3);
  c.anr_smooth_level = 4;
  c.anr_converge_speed = NR_SPEED_LOW;
  c.anr_intensity[6] = 7;
  ASSERT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_SUCCESS);
  for (int ch = 0; ch < 2; ++ch) {
    EXPECT_EQ(a.rec()->nr_inst[ch]->filter_mode, 3) << ch;
    EXPECT_EQ(a.rec()->nr_inst[ch]->moving_average_order, 4) << ch;
    EXPECT_EQ(a.rec()->nr_inst[ch]->nframe_update_filter, 3) << ch;
  }
  ASSERT_EQ(ZebAnr_GetConfig(a.h, &gotInit, &gotCfg), ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(gotInit.point_number, 128u);
  EXPECT_EQ(gotInit.channel, 2u);
  EXPECT_EQ(gotInit.sample_rate, ZEB_ANR_SAMPLE_RATE_32000);
  EXPECT_EQ(std::memcmp(&gotCfg, &c, sizeof c), 0);
  EXPECT_EQ(ZebAnr_GetConfig(nullptr, &gotInit, &gotCfg), ALGO_ANR_RET_INVALID_HANDLE);
}

// ================================================================== run ==

std::vector<short> WhiteNoise(int samples, float rms, uint32_t seed) {
  std::mt19937 g(seed);
  std::normal_distribution<float> n(0.0f, rms);
  std::vector<short> v(samples);
  for (short& s : v) s = (short)std::lround(std::fmax(-32768.0f, std::fmin(32767.0f, n(g))));
  return v;
}

// Runs a mono or interleaved stream through the handle frame by frame.
std::vector<short> RunStream(Anr& a, const std::vector<short>& in, int channels) {
  std::vector<short> out = in;
  for (size_t at = 0; at + kFrame * channels <= out.size(); at += kFrame * channels) {
    EXPECT_EQ(ZebAnr_Run(a.h, &out[at]), ALGO_ANR_RET_SUCCESS);
  }
  return out;
}

double Energy(const std::vector<short>& v, size_t from, size_t to) {
  double e = 0.0;
  for (size_t i = from; i < to; ++i) e += (double)v[i] * v[i];
  return e;
}

// Window, transform, inverse and overlap-add alone give the input back one
// frame later, up to the rounding toward zero of each output sample.
void ExpectDelayedCopy(const std::vector<short>& in, const std::vector<short>& out) {
  for (size_t i = kFrame; i < out.size(); ++i) ASSERT_NEAR(out[i], in[i - kFrame], 1) << i;
  for (int i = 0; i < kFrame; ++i) ASSERT_NEAR(out[i], 0, 1) << i;
}

TEST(AnrRun, WithoutAnActiveFilterTheStreamPassesOneFrameLate) {
  Level lv(1);
  const std::vector<short> tone = zebtest::Tone(16000, 440.0f, 9000.0f, 40, 1);
  const std::vector<short> noise = WhiteNoise(40 * kFrame, 3000.0f, zebtest::TestSeed());
  // Reducer switched off; filter modes not built into this library yet.
  AudioAnrConfig off = Config();
  off.anr_enable = 0;
  const AudioAnrConfig cfgs[] = {off, Config(1), Config(2), Config(3), Config(4), Config(5)};
  for (const AudioAnrConfig& cfg : cfgs) {
    for (const std::vector<short>* in : {&tone, &noise}) {
      Anr a;
      ASSERT_TRUE(a.Start(16000, 1, cfg));
      ExpectDelayedCopy(*in, RunStream(a, *in, 1));
    }
  }
}

TEST(AnrRun, ModeZeroAttenuatesStationaryNoiseAndKeepsSilence) {
  Level lv(1);
  const int frames = 300;
  const std::vector<short> noise = WhiteNoise(frames * kFrame, 2000.0f, zebtest::TestSeed());
  Anr a;
  ASSERT_TRUE(a.Start(16000, 1, Config(0)));
  const std::vector<short> out = RunStream(a, noise, 1);
  const size_t from = 150 * kFrame;
  const double dropDb = 10.0 * std::log10(Energy(noise, from, noise.size()) /
                                          Energy(out, from, out.size()));
  printf("mode 0 on white noise: %.1f dB less energy after the first second\n", dropDb);
  EXPECT_GT(dropDb, 6.0);

  Anr b;
  ASSERT_TRUE(b.Start(8000, 1, Config(0)));
  const std::vector<short> silence(50 * kFrame, 0);
  EXPECT_EQ(RunStream(b, silence, 1), silence);
}

TEST(AnrRun, StereoChannelsStayApart) {
  Level lv(1);
  const std::vector<short> left = zebtest::Tone(48000, 1000.0f, 8000.0f, 30, 1);
  std::vector<short> stereo(2 * left.size(), 0);
  for (size_t i = 0; i < left.size(); ++i) stereo[2 * i] = left[i];
  AudioAnrConfig off = Config();
  off.anr_enable = 0;
  Anr a;
  ASSERT_TRUE(a.Start(48000, 2, off));
  const std::vector<short> out = RunStream(a, stereo, 2);
  std::vector<short> outLeft(left.size()), outRight(left.size());
  for (size_t i = 0; i < left.size(); ++i) {
    outLeft[i] = out[2 * i];
    outRight[i] = out[2 * i + 1];
  }
  ExpectDelayedCopy(left, outLeft);
  EXPECT_EQ(outRight, std::vector<short>(left.size(), 0));

  Anr b;
  ASSERT_TRUE(b.Start(48000, 2, Config(0)));
  const std::vector<short> reduced = RunStream(b, stereo, 2);
  for (size_t i = 0; i < left.size(); ++i) ASSERT_EQ(reduced[2 * i + 1], 0) << i;
}

TEST(AnrRun, GuardsInOrder) {
  Level lv(1);
  short frame[kFrame] = {};
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(nullptr, frame); }),
            Err("[_ZebAnr_Run]Fail! The anr handle is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);

  Anr a;
  std::memset(a.buf(), 0, ZebAnr_GetBufferSize());
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(a.buf(), frame); }),
            Err("[_ZebAnr_Run]Fail! The anr handle is dirty.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);

  ASSERT_TRUE(a.Init(16000, 1));
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(a.h, frame); }),
            Err("[_ZebAnr_Run]Fail! Need config before ZebAnr_Run.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_CALLING);

  AudioAnrConfig c = Config();
  ASSERT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_SUCCESS);
  // A missing frame is refused without blocking the handle.
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(a.h, nullptr); }),
            Err("[_ZebAnr_Run]Fail! The pss_audio_in is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_FAILED);
  EXPECT_EQ(a.rec()->is_run_status, 0);
  a.rec()->is_run_status = 1;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(a.h, frame); }), "");
  EXPECT_EQ(ret, ALGO_ANR_RET_API_CONFLICT);
  EXPECT_EQ(ZebAnr_Free(a.h), ALGO_ANR_RET_API_CONFLICT);
}

TEST(AnrRun, AFailedFrameBlocksTheHandleUntilInit) {
  Level lv(1);
  Anr a;
  ASSERT_TRUE(a.Start(16000, 1, Config(0)));
  std::vector<short> frame = zebtest::Tone(16000, 300.0f, 5000.0f, 1, 1);
  a.rec()->nr_inst[0]->initFlag = 0;
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Run(a.h, frame.data()); }),
            Err("[_ZebAnr_Run]Fail! NR process is error.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INIT_ERROR);
  a.rec()->nr_inst[0]->initFlag = 1;
  EXPECT_EQ(ZebAnr_Run(a.h, frame.data()), ALGO_ANR_RET_API_CONFLICT);
  EXPECT_EQ(ZebAnr_Free(a.h), ALGO_ANR_RET_API_CONFLICT);
  AudioAnrInit init = {128u, 1u, ZEB_ANR_SAMPLE_RATE_16000};
  ASSERT_EQ(ZebAnr_Reset(a.buf(), &init), a.h);
  AudioAnrConfig c = Config(0);
  ASSERT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(ZebAnr_Run(a.h, frame.data()), ALGO_ANR_RET_SUCCESS);
}

// ================================================================= free ==

TEST(AnrFree, ClearsInitButNotConfig) {
  Level lv(1);
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Free(nullptr); }),
            Err("[_ZebAnr_Free]Fail! The anr handle is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);
  Anr a;
  ASSERT_TRUE(a.Start(16000, 1, Config()));
  EXPECT_EQ(ZebAnr_Free(a.h), ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(a.rec()->FFT_workingBuff.is_fft_init, 0);
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_Free(a.h); }),
            Err("[_ZebAnr_Free]Fail! Need init before ZebAnr_Free.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_CALLING);
  // The status checks still let a frame through while the buffer is intact.
  std::vector<short> frame(kFrame, 100);
  EXPECT_EQ(ZebAnr_Run(a.h, frame.data()), ALGO_ANR_RET_SUCCESS);
  AudioAnrConfig c = Config();
  EXPECT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_INVALID_CALLING);
}

// =========================================================== auxiliaries ==

TEST(AnrAux, EnhanceNNBFModeExistsOnlyAsAStub) {
  Level lv(3);
  const char* fn = "_ZebAnr_EnhanceNNBFMode";
  Anr a;
  int other = 0;
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_EnhanceNNBFMode(nullptr, &other, 1); }),
            Err(std::string("[") + fn + "]Fail! The anr handle or anr_bf handle is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);
  ASSERT_TRUE(a.Init(16000, 1));
  EXPECT_EQ(ZebAnr_EnhanceNNBFMode(a.h, nullptr, 1), ALGO_ANR_RET_INVALID_HANDLE);
  a.rec()->is_anr_init_status = 0;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_EnhanceNNBFMode(a.h, &other, 1); }),
            Err(std::string("[") + fn + "]Fail! Need init before ZebAnr_EnhanceNNBFMode.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_CALLING);
  a.rec()->is_anr_init_status = 1;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_EnhanceNNBFMode(a.h, &other, 2); }),
            Err(std::string("[") + fn + "]Fail! The is_enable should be set by 0 or 1.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_FAILED);
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_EnhanceNNBFMode(a.h, &other, 1); }),
            Err(std::string("[") + fn + "]Fail! The nr module should be opened.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_FAILED);
  AudioAnrConfig c = Config();
  ASSERT_EQ(ZebAnr_Config(a.h, &c), ALGO_ANR_RET_SUCCESS);
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_EnhanceNNBFMode(a.h, &other, 0); }),
            Wrn(std::string("[") + fn +
                "]Warning! Current lib does not contain EnhanceNNBFMode mode.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_SUCCESS);
}

TEST(AnrAux, TuningFileEntryPointsReportTheirFailures) {
  Level lv(1);
  unsigned int size = 1;
  EXPECT_EQ(CaptureStdout([&] { size = ZebAnr_GetJsonFileSize(nullptr); }),
            Err("[_ZebAnr_GetJsonFileSize]Fail! The path json file is invalid.\t\n"));
  EXPECT_EQ(size, 0u);
  char missing[] = "/nonexistent/zeb_tuning.json";
  EXPECT_EQ(CaptureStdout([&] { size = ZebAnr_GetJsonFileSize(missing); }),
            Err("[_ZebAnr_GetJsonFileSize]Fail! Unable to fopen json file.\t\n"));
  EXPECT_EQ(size, 0u);

  Anr a;
  ASSERT_TRUE(a.Init(16000, 1));
  char buffer[16];
  ALGO_ANR_RET ret = ALGO_ANR_RET_SUCCESS;
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_ReadJson(a.h, nullptr, missing, 16); }),
            Err("[_ZebAnr_ReadJson]Fail! The json buffer is NULL.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_ReadJson(a.h, buffer, nullptr, 16); }),
            Err("[_ZebAnr_ReadJson]Fail! The path json file is invalid.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);
  EXPECT_EQ(CaptureStdout([&] { ret = ZebAnr_ReadJson(a.h, buffer, missing, 16); }),
            Err("[_ZebAnr_ReadJson]Fail! Channel 1 read json file error.\t\n"));
  EXPECT_EQ(ret, ALGO_ANR_RET_INVALID_HANDLE);
  EXPECT_EQ(ZebAnr_ReadJson(nullptr, buffer, missing, 16), ALGO_ANR_RET_INVALID_HANDLE);
}

TEST(AnrAux, AutoSmoothReachesEveryChannel) {
  Level lv(7);
  Anr a;
  ASSERT_TRUE(a.Init(8000, 2));
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(ZebAnr_EnableAutoSmooth(a.h, 1), ALGO_ANR_RET_SUCCESS); }),
            Msg("[ANR] AutoSmooth enable.\t\n"));
  EXPECT_EQ(a.rec()->nr_inst[0]->AutoSmooth, 1);
  EXPECT_EQ(a.rec()->nr_inst[1]->AutoSmooth, 1);
  EXPECT_EQ(CaptureStdout([&] { ZebAnr_EnableAutoSmooth(a.h, 0); }),
            Msg("[ANR] AutoSmooth enable.\t\n"));
  EXPECT_EQ(a.rec()->nr_inst[1]->AutoSmooth, 0);
  EXPECT_EQ(ZebAnr_EnableAutoSmooth(nullptr, 1), ALGO_ANR_RET_INVALID_HANDLE);
}

}  // namespace
