// Equaliser gain engine, high-pass tables and FIR, the ZebEq_* family and
// the chain's table mappings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "AudioEqProcess.h"
#include "eq_filter.h"
#include "eq_table_mapping.h"
#include "hpf_tables.h"
#include "test_support.h"
#include "zebaudio.h"

namespace {

using zebtest::CaptureStdout;
using zebtest::Err;
using zebtest::Msg;
using zebtest::Wrn;

constexpr int kFrame = 128;
constexpr int kBins = 129;

// A spectrum bin whose level, as the 500 Hz guard measures it, is levelDb.
float MagnitudeForLevelDb(float levelDb) {
  return 32767.0f * 128.0f * std::pow(10.0f, levelDb / 20.0f);
}

EQinst_t FreshInst(int rateHz, int level = 7) {
  EQinst_t inst;
  std::memset(&inst, 0, sizeof(inst));
  inst.dbg_level = level;
  EXPECT_EQ(EQ_Init(&inst, rateHz), 0);
  return inst;
}

_AudioEqConfig EqRecord(short gainDb, unsigned int enable = 1, unsigned int mode = 1) {
  _AudioEqConfig c;
  c.eq_enable = enable;
  c.user_mode = mode;
  for (int k = 0; k < kBins; ++k) c.eq_gain_db[k] = gainDb;
  return c;
}

// ---------------------------------------------------------------- gain law

TEST(EqEngine, InitGivesUnityFactorsAndLeavesTheHighPassAlone) {
  EQinst_t inst;
  std::memset(&inst, 0x5a, sizeof(inst));
  EXPECT_EQ(EQ_Init(&inst, 16000), 0);
  EXPECT_EQ(inst.filter_num, 0);
  for (int k = 0; k < kBins; ++k) EXPECT_EQ(inst.EQ_AddiScalingFactor[k], 256.0f);
  unsigned char pattern;
  std::memcpy(&pattern, inst.HPF_AddiScalingFactor, 1);
  EXPECT_EQ(pattern, 0x5a);
  EXPECT_EQ(EQ_Init(nullptr, 16000), -1);
}

TEST(EqEngine, DecibelsBecomeTruncatedQ8Weights) {
  // 6.02 dB per doubling, truncated: below about -48.16 dB a bin is muted.
  const struct {
    short db;
    short weight;
  } cases[] = {{20, 2560}, {12, 1019}, {6, 510}, {0, 256}, {-6, 128},
               {-48, 1},   {-49, 0},   {-100, 0}};
  for (const auto& c : cases) {
    EQinst_t inst = FreshInst(16000);
    _AudioEqConfig cfg = EqRecord(c.db);
    ASSERT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_SUCCESS) << c.db;
    EXPECT_EQ(inst.EQ_weight[40], c.weight) << c.db << " dB";
    EXPECT_EQ(inst.EQ_AddiScalingFactor[40], static_cast<float>(c.weight)) << c.db << " dB";
  }
}

TEST(EqEngine, NyquistBinFollowsBin127) {
  EQinst_t inst = FreshInst(16000);
  _AudioEqConfig cfg = EqRecord(0);
  cfg.eq_gain_db[127] = -6;
  cfg.eq_gain_db[128] = 12;
  ASSERT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(inst.EQ_weight[128], 1019);  // converted, but not used
  EXPECT_EQ(inst.EQ_AddiScalingFactor[128], 128.0f);
  EXPECT_EQ(inst.EQ_AddiScalingFactor[127], 128.0f);
}

TEST(EqEngine, OutOfRangeSettingFailsAndKeepsTheFactorsInUse) {
  EQinst_t inst = FreshInst(16000);
  _AudioEqConfig cfg = EqRecord(6);
  cfg.eq_gain_db[5] = 21;
  std::string out = CaptureStdout([&] { EXPECT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[EQ_Config]Fail! EQ setting could not be bigger than 20dB. 21\n"));
  for (int k = 0; k < kBins; ++k) EXPECT_EQ(inst.EQ_AddiScalingFactor[k], 256.0f) << k;

  cfg = EqRecord(0);
  cfg.eq_gain_db[100] = -101;
  out = CaptureStdout([&] { EXPECT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[EQ_Config]Fail! EQ setting could not be smaller than -100dB. -101\n"));

  // The limits themselves are accepted; -100 dB gives a factor of 0.
  cfg = EqRecord(20);
  cfg.eq_gain_db[0] = -100;
  EXPECT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(inst.EQ_AddiScalingFactor[0], 0.0f);
  EXPECT_EQ(inst.EQ_AddiScalingFactor[1], 2560.0f);
}

TEST(EqEngine, UserConfigCheckCodesAndTexts) {
  EXPECT_EQ(EQ_CheckUserConfig(nullptr, 7), _ALGO_EQ_RET_SUCCESS);
  _AudioEqConfig cfg = EqRecord(0, 2, 1);
  std::string out = CaptureStdout([&] { EXPECT_EQ(EQ_CheckUserConfig(&cfg, 7), _ALGO_EQ_RET_INVALID_ENABLE); });
  EXPECT_EQ(out, Err("[EQ]Fail! Unsupported EQ Config eq_enable 2. [0 or 1]\t\n"));
  cfg = EqRecord(0, 1, 3);
  out = CaptureStdout([&] { EXPECT_EQ(EQ_CheckUserConfig(&cfg, 7), _ALGO_EQ_RET_INVALID_MODE); });
  EXPECT_EQ(out, Err("[EQ]Fail! Unsupported EQ Config user_mode 3. [0 or 1]\t\n"));
  cfg = EqRecord(0, 0, 0);
  EXPECT_EQ(EQ_CheckUserConfig(&cfg, 7), _ALGO_EQ_RET_SUCCESS);

  EQinst_t inst = FreshInst(16000);
  cfg = EqRecord(0, 1, 2);
  EXPECT_EQ(EQ_Config(&inst, &cfg), _ALGO_EQ_RET_INVALID_MODE);
  out = CaptureStdout([&] { EXPECT_EQ(EQ_Config(nullptr, &cfg), _ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[EQ_Config]Fail! The eq handle is NULL.\t\n"));
}

// ------------------------------------------------------------ HPF tables

struct TableCase {
  int rateHz;
  int cutoff;
  const short* table;
  std::vector<short> prefix;
};

std::vector<TableCase> AllTables() {
  std::vector<short> stop16(8, 0), stop8(16, 0);
  stop8.push_back(25);
  return {
      {48000, 0, HpfTable_fs48k_80Hz, {128}},   {48000, 1, HpfTable_fs48k_120Hz, {128}},
      {48000, 2, HpfTable_fs48k_150Hz, {128}},  {48000, 3, HpfTable_fs48k_500Hz, {0, 0, 0}},
      {32000, 0, HpfTable_fs32k_80Hz, {128}},   {32000, 1, HpfTable_fs32k_120Hz, {128}},
      {32000, 2, HpfTable_fs32k_150Hz, {64, 128}}, {32000, 3, HpfTable_fs32k_500Hz, {0, 0, 0, 0}},
      {16000, 0, HpfTable_fs16k_80Hz, {1, 1}},  {16000, 1, HpfTable_fs16k_120Hz, {32, 64, 128}},
      {16000, 2, HpfTable_fs16k_150Hz, {16, 32, 64, 128}}, {16000, 3, HpfTable_fs16k_500Hz, stop16},
      {8000, 0, HpfTable_fs8k_80Hz, {32, 64, 128}}, {8000, 1, HpfTable_fs8k_120Hz, {8, 16, 32, 64, 128}},
      {8000, 2, HpfTable_fs8k_150Hz, {4, 8, 16, 32, 64, 128}}, {8000, 3, HpfTable_fs8k_500Hz, stop8},
  };
}

TEST(HpfTables, PrefixesThenUnity) {
  for (const TableCase& t : AllTables()) {
    for (int k = 0; k < kBins; ++k) {
      const short expected = k < (int)t.prefix.size() ? t.prefix[k] : 256;
      EXPECT_EQ(t.table[k], expected) << t.rateHz << " Hz, cutoff " << t.cutoff << ", bin " << k;
    }
    EXPECT_EQ(HPF_SelectTable(t.rateHz, t.cutoff), t.table);
  }
  EXPECT_EQ(HPF_SelectTable(44100, 0), nullptr);
  EXPECT_EQ(HPF_SelectTable(16000, 4), nullptr);
  EXPECT_EQ(HPF_SelectTable(16000, -1), nullptr);
}

TEST(HpfConfig, LoadsTheTableOrRefuses) {
  EQinst_t inst = FreshInst(8000);
  ASSERT_EQ(HPF_Config(&inst, _AUDIO_HPF_FREQ_150), _ALGO_EQ_RET_SUCCESS);
  for (int k = 0; k < kBins; ++k) EXPECT_EQ(inst.HPF_AddiScalingFactor[k], (float)HpfTable_fs8k_150Hz[k]);

  std::string out = CaptureStdout([&] { EXPECT_EQ(HPF_Config(&inst, _AUDIO_HPF_FREQ_BUTT), _ALGO_HPF_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[HPF]Fail! Unsupported hpf cutoff_frequency: 4\t\n"));
  for (int k = 0; k < kBins; ++k) EXPECT_EQ(inst.HPF_AddiScalingFactor[k], (float)HpfTable_fs8k_150Hz[k]);

  EQinst_t odd = FreshInst(44100);
  out = CaptureStdout([&] { EXPECT_EQ(HPF_Config(&odd, _AUDIO_HPF_FREQ_80), _ALGO_EQ_RET_INVALID_SAMPLE_RATE); });
  EXPECT_EQ(out, Err("[HPF]Fail! Unsupported sample rate : 44100\t\n"));
  out = CaptureStdout([&] { EXPECT_EQ(HPF_Config(nullptr, _AUDIO_HPF_FREQ_80), _ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[HPF_Config]Fail! The eq handle is NULL.\t\n"));
}

// The 500 Hz guard at 16 kHz: the stop band is bins 0..7 (filter_num 8).
// Each case sets bin levels in dB and names the factor each bin must get.
TEST(HpfGuard500, MutesCutsOrPassesByTheLevelsItMeasures) {
  const struct {
    const char* what;
    std::vector<std::pair<int, float>> levels;
    std::vector<std::pair<int, float>> gains;
  } cases[] = {
      // avg_all ~ -118.9 dB, max_low -40 dB: spread -78.9 < -75, peak > -70.
      {"strong stop-band peak over a quiet spectrum mutes the frame",
       {{3, -40}, {50, -110}, {128, -20}}, {{3, 0}, {50, 0}, {128, 0}}},
      // Spread -68.9 dB: neither mute nor duck; the table applies, unity at 128.
      {"weaker stop-band peak takes the table", {{3, -50}, {50, -110}, {128, -20}}, {{3, 0}, {50, 1}, {128, 1}}},
      {"dominant pass-band tone over quiet low bins passes uncut",
       {{2, -60}, {40, -10}, {128, -20}}, {{2, 1}, {40, 1}, {128, 1}}},
      // A loud low band (avg_low > -40): the stop band and bin 128 are cut.
      {"otherwise the stop band and bin 128 are cut",
       {{0, -25}, {1, -25}, {2, -25}, {3, -25}, {4, -25}, {5, -25}, {6, -25}, {7, -25}, {8, -90}, {40, -10}, {128, -20}},
       {{0, 0}, {7, 0}, {8, 1}, {40, 1}, {128, 0}}},
      // Equal peaks at bin 8 (still "<= filter_num") and 40: the first wins, so
      // the frame is muted as a stop-band peak; had bin 40 won, it were hard-cut.
      {"the first of equal maxima wins the index",
       {{0, -25}, {1, -25}, {2, -25}, {3, -25}, {4, -25}, {5, -25}, {6, -25}, {7, -25}, {8, -10}, {40, -10}},
       {{8, 0}, {40, 0}}},
  };
  for (const auto& c : cases) {
    EQinst_t inst = FreshInst(16000);
    ASSERT_EQ(HPF_Config(&inst, _AUDIO_HPF_FREQ_500), _ALGO_EQ_RET_SUCCESS);
    std::vector<float> y(258, 0.0f);
    for (const auto& l : c.levels) y[2 * l.first] = MagnitudeForLevelDb(l.second);
    const std::vector<float> in = y;
    HPF_ApplyGain(inst.HPF_AddiScalingFactor, y.data(), _AUDIO_HPF_FREQ_500);
    for (const auto& g : c.gains) EXPECT_EQ(y[2 * g.first] / in[2 * g.first], g.second) << c.what << ", bin " << g.first;
  }
}

// -------------------------------------------------------------- HPF FIR

// The two time-domain kernels: cutoff, taps array and tap count T.
const struct {
  _ZEB_HPF_FREQ freq;
  const float* c;
  int T;
} kFirKernels[] = {{_AUDIO_HPF_FREQ_500, hpf_500Hz_coeff, 128}, {_AUDIO_HPF_FREQ_80, hpf_120Hz_coeff, 256}};

// Runs frames of a mono signal through the time-domain high-pass.
std::vector<short> RunFir(const std::vector<short>& x, _ZEB_HPF_FREQ freq) {
  std::vector<short> history(HPF_FIR_HISTORY_SAMPLES, 0), y = x;
  for (size_t f = 0; f + kFrame <= y.size(); f += kFrame) {
    EXPECT_EQ(HPF_FiniteImpulseResponseFilter(history.data(), &y[f], freq, 7), 0);
  }
  return y;
}

// Amplitude of the component at freqHz over x[start..start+len).
double AmplitudeAt(const std::vector<short>& x, size_t start, size_t len, double freqHz, int rateHz,
                   int stride = 1, int channel = 0) {
  double c = 0.0, s = 0.0;
  for (size_t n = 0; n < len; ++n) {
    const double v = x[(start + n) * stride + channel];
    const double ph = 2.0 * M_PI * freqHz * (double)(start + n) / rateHz;
    c += v * std::cos(ph);
    s += v * std::sin(ph);
  }
  return 2.0 * std::hypot(c, s) / (double)len;
}

std::vector<short> Mix(int rateHz, const std::vector<std::pair<double, double>>& tones, size_t samples,
                       double dc = 0.0) {
  std::vector<short> x(samples);
  for (size_t n = 0; n < samples; ++n) {
    double v = dc;
    for (const auto& t : tones) v += t.second * std::sin(2.0 * M_PI * t.first * (double)n / rateHz);
    x[n] = (short)std::lround(v);
  }
  return x;
}

TEST(HpfFir, RemovesHumAndDcAndPassesVoiceBand) {
  const int fs = 16000;
  const size_t n = 100 * kFrame;
  const size_t start = 20 * kFrame, len = 16000 / 50 * 25;  // 25 hum periods
  struct Case {
    _ZEB_HPF_FREQ freq;
    double maxHumGain;  // 50 Hz
    double maxDcGain;
  } cases[] = {{_AUDIO_HPF_FREQ_80, 0.25, 0.06}, {_AUDIO_HPF_FREQ_500, 0.005, 0.002}};
  for (const Case& c : cases) {
    std::vector<short> y = RunFir(Mix(fs, {{50.0, 8000.0}, {1000.0, 8000.0}}, n), c.freq);
    EXPECT_LT(AmplitudeAt(y, start, len, 50.0, fs) / 8000.0, c.maxHumGain) << c.freq;
    EXPECT_NEAR(AmplitudeAt(y, start, len, 1000.0, fs) / 8000.0, 1.0, 0.005) << c.freq;
    std::vector<short> dc = RunFir(std::vector<short>(n, 10000), c.freq);
    EXPECT_LT(std::abs(dc[n - 1]) / 10000.0, c.maxDcGain) << c.freq;
  }
}

TEST(HpfFir, ImpulseResponseShowsTheRequiredArrangement) {
  // x[i] meets c[T-1] and c[T]; x[i-j] meets c[T-1-j]; x[i-T] is never read.
  for (const auto& k : kFirKernels) {
    for (int n = 0; n < k.T; ++n) EXPECT_EQ(k.c[n], k.c[k.T - n]) << "linear phase, tap " << n;
    std::vector<short> x(4 * kFrame, 0);
    x[0] = 30000;
    std::vector<short> y = RunFir(x, k.freq);
    EXPECT_EQ(y[0], (short)(30000.0f * k.c[k.T - 1] + 30000.0f * k.c[k.T]));
    for (int j = 1; j < k.T; ++j) EXPECT_EQ(y[j], (short)(30000.0f * k.c[k.T - 1 - j])) << j;
    EXPECT_NE((short)(30000.0f * k.c[0]), 0);  // a textbook filter would show it here
    EXPECT_EQ(y[k.T], 0) << k.T;
  }
}

TEST(HpfFir, UnsupportedCutoffLeavesFrameAndHistory) {
  std::vector<short> history(HPF_FIR_HISTORY_SAMPLES);
  for (size_t i = 0; i < history.size(); ++i) history[i] = (short)i;
  std::vector<short> frame(kFrame, 1234), h0 = history;
  std::string out = CaptureStdout([&] {
    EXPECT_EQ(HPF_FiniteImpulseResponseFilter(history.data(), frame.data(), _AUDIO_HPF_FREQ_120, 7), -1);
  });
  EXPECT_EQ(out, Err("[HPF_FiniteImpulseResponseFilter]Fail! The time domain HPF does not support this frequency.\t\n"));
  EXPECT_EQ(history, h0);
  EXPECT_EQ(frame, std::vector<short>(kFrame, 1234));
}

TEST(HpfFir, OutputSaturatesInsteadOfWrapping) {
  // The worst-case input for one output sample: every tap meets a full-scale
  // sample of its own sign, so the sum reaches twice the full scale.
  for (const auto& k : kFirKernels) {
    for (int sign : {1, -1}) {
      const size_t at = 3 * kFrame + 10;
      std::vector<short> x(4 * kFrame, 0);
      double unclamped = 0.0;
      for (int j = 0; j < k.T; ++j) {
        const float g = j == 0 ? k.c[k.T - 1] + k.c[k.T] : k.c[k.T - 1 - j];
        x[at - j] = (short)((g >= 0.0f ? 32767 : -32767) * sign);
        unclamped += (double)x[at - j] * g;
      }
      ASSERT_GT(std::fabs(unclamped), 60000.0);
      std::vector<short> y = RunFir(x, k.freq);
      EXPECT_EQ(y[at], sign > 0 ? 32767 : -32768) << k.T;
    }
  }
}

// ------------------------------------------------------------ EQ family

class EqFamily : public ::testing::Test {
 protected:
  EqFamily() : level_("DML_PATH", zebtest::kNoLevelFile) {}

  EQ_HANDLE Open(int rateHz, unsigned int channels) {
    work_.assign(ZebEq_GetBufferSize() + 64, 0);
    AudioEqInit init{kFrame, channels, static_cast<ZEB_EQ_SAMPLE_RATE>(rateHz)};
    EQ_HANDLE h = nullptr;
    CaptureStdout([&] { h = ZebEq_Init(work_.data(), &init); });
    return h;
  }
  static AudioEqInternel* Rec(EQ_HANDLE h) { return static_cast<AudioEqInternel*>(h); }
  static AudioEqConfig Eq(short db, unsigned int enable = 1, unsigned int mode = 1) {
    AudioEqConfig c;
    c.eq_enable = enable;
    c.user_mode = mode;
    for (int k = 0; k < kBins; ++k) c.eq_gain_db[k] = db;
    return c;
  }
  static AudioHpfConfig Hpf(unsigned int enable, unsigned int mode, ZEB_HPF_FREQ f) {
    return AudioHpfConfig{enable, mode, f};
  }
  // Runs the whole interleaved signal frame by frame; returns the output.
  static std::vector<short> Process(EQ_HANDLE h, std::vector<short> x, unsigned int channels) {
    for (size_t f = 0; f + kFrame * channels <= x.size(); f += kFrame * channels) {
      EXPECT_EQ(ZebEq_Run(h, &x[f]), ALGO_EQ_RET_SUCCESS);
    }
    return x;
  }

  zebtest::ScopedEnv level_;
  std::vector<char> work_;
};

TEST_F(EqFamily, InitTextsAndRefusals) {
  const size_t parts = sizeof(AudioEqInternel) + 2 * sizeof(EQinst_t) + sizeof(postInfo_t) + 2 * sizeof(cng_t) +
                       FFT_GetBufferSize(256);
  EXPECT_GE(ZebEq_GetBufferSize(), parts);
  EXPECT_LT(ZebEq_GetBufferSize(), parts + 7 * sizeof(void*));  // alignment only
  work_.assign(ZebEq_GetBufferSize(), 0);
  AudioEqInit init{kFrame, 2, ZEB_EQ_SAMPLE_RATE_16000};
  EQ_HANDLE h = nullptr;
  std::string out = CaptureStdout([&] { h = ZebEq_Init(work_.data(), &init); });
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(out.find(Msg("[EQ]FFT mode: floating point mode.\t\n")), 0u);
  EXPECT_NE(out.find(Msg("[EQ]Point Number: 128\t\n") + Msg("[EQ]Channel: 2\t\n") +
                     Msg("[EQ]Sample rate: 16000\t\n")),
            std::string::npos);
  EXPECT_NE(out.find(Msg("[EQ]EQ internal initialize succeed.\t\n")), std::string::npos);
  EXPECT_EQ(Rec(h)->eq_inst[1]->dbg_level, 0);  // channel 2 stays silent

  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Init(nullptr, &init), nullptr); });
  EXPECT_EQ(out, Err("[EQ]Fail! The workingBufferAddress or eq_init is NULL.\t\n"));
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Init(work_.data(), nullptr), nullptr); });
  EXPECT_EQ(out, Err("[EQ]Fail! The workingBufferAddress or eq_init is NULL.\t\n"));

  const struct {
    AudioEqInit init;
    const char* text;
  } bad[] = {
      {{64, 1, ZEB_EQ_SAMPLE_RATE_16000}, "[EQ]Fail! This EQ Lib only support point_number = 128.\t\n"},
      {{kFrame, 3, ZEB_EQ_SAMPLE_RATE_16000}, "[EQ]Fail! This EQ Lib only support mono or stereo.\t\n"},
      {{kFrame, 1, static_cast<ZEB_EQ_SAMPLE_RATE>(44100)},
       "[EQ]Fail! This EQ Lib only support sample rate 8K 16K 48K.\t\n"},
  };
  for (const auto& b : bad) {
    AudioEqInit i = b.init;
    out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Init(work_.data(), &i), nullptr); });
    EXPECT_NE(out.find(Err(b.text) + Err("[EQ]Fail! The eq_init parameter error.\t\n")), std::string::npos)
        << out;
  }
  // A rate outside the enumeration's range reaches the check as the int it is.
  AudioEqInit wild{kFrame, 1, ZEB_EQ_SAMPLE_RATE_16000};
  const int rate96k = 96000;
  std::memcpy(&wild.sample_rate, &rate96k, sizeof(rate96k));
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Init(work_.data(), &wild), nullptr); });
  EXPECT_NE(out.find(Err("[EQ]Fail! This EQ Lib only support sample rate 8K 16K 48K.\t\n")), std::string::npos);
  init.sample_rate = ZEB_EQ_SAMPLE_RATE_32000;
  CaptureStdout([&] { EXPECT_NE(ZebEq_Init(work_.data(), &init), nullptr); });
}

TEST_F(EqFamily, NullHandleTextsAreAlwaysPrinted) {
  short frame[kFrame] = {0};
  const std::string fns[] = {"_ZebEq_Config", "_ZebEq_Run", "_ZebEq_Free"};
  std::string out = CaptureStdout([&] {
    EXPECT_EQ(ZebEq_Config(nullptr, nullptr, nullptr), ALGO_EQ_RET_INVALID_HANDLE);
    EXPECT_EQ(ZebEq_Run(nullptr, frame), ALGO_EQ_RET_INVALID_HANDLE);
    EXPECT_EQ(ZebEq_Free(nullptr), ALGO_EQ_RET_INVALID_HANDLE);
  });
  std::string expected;
  for (const std::string& f : fns) expected += Err("[" + f + "]Fail! The eq handle is NULL.\t\n");
  EXPECT_EQ(out, expected);
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_GetConfig(nullptr, nullptr, nullptr, nullptr), ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, "");
}

TEST_F(EqFamily, CallsOutOfOrderAreRefused) {
  // Memory that was never initialised: Config refuses.
  std::vector<char> raw(ZebEq_GetBufferSize(), 0);
  AudioEqConfig eq = Eq(0);
  AudioHpfConfig hpf = Hpf(0, 0, AUDIO_HPF_FREQ_80);
  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Config(raw.data(), &hpf, &eq), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_Config]Fail! Need init before ZebEq_Config.\t\n"));

  EQ_HANDLE h = Open(16000, 1);
  short frame[kFrame] = {0};
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_Run]Fail! Need config before ZebEq_Run.\t\n"));
  AudioEqInit init;
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_GetConfig(h, &init, &hpf, &eq), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_GetConfig]Fail! Need config before ZebEq_GetConfig.\t\n"));

  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_SUCCESS);
  // Reset is a full re-creation: Config is due again.
  AudioEqInit again{kFrame, 1, ZEB_EQ_SAMPLE_RATE_16000};
  CaptureStdout([&] { EXPECT_EQ(ZebEq_Reset(work_.data(), &again), h); });
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_INVALID_CALLING); }),
            Err("[_ZebEq_Run]Fail! Need config before ZebEq_Run.\t\n"));

  EXPECT_EQ(ZebEq_Free(h), ALGO_EQ_RET_SUCCESS);
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Free(h), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_Free]Fail! Need init before ZebEq_Free.\t\n"));
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_INVALID_CALLING); });
  EXPECT_EQ(out, Err("[_ZebEq_Config]Fail! Need init before ZebEq_Config.\t\n"));
}

TEST_F(EqFamily, DirtyHandleAndReentryAreRefused) {
  EQ_HANDLE h = Open(16000, 1);
  AudioEqConfig eq = Eq(0);
  AudioHpfConfig hpf = Hpf(0, 0, AUDIO_HPF_FREQ_80);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  short frame[kFrame] = {0};
  Rec(h)->is_run_status = 1;
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_API_CONFLICT); }), "");
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(ZebEq_Free(h), ALGO_EQ_RET_API_CONFLICT); }), "");
  Rec(h)->is_run_status = 0;
  Rec(h)->check_number = 0;
  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_INVALID_HANDLE); });
  EXPECT_EQ(out, Err("[_ZebEq_Run]Fail! The eq handle is dirty in ZebEq_Run.\t\n"));
}

TEST_F(EqFamily, FailedTimeDomainHighPassBlocksTheHandle) {
  // 120 Hz has no time-domain kernel: Config accepts it, Run fails once with
  // 11 and from then on reports an unfinished call.
  EQ_HANDLE h = Open(16000, 1);
  AudioEqConfig eq = Eq(0, 0, 0);
  AudioHpfConfig hpf = Hpf(1, 2, AUDIO_HPF_FREQ_120);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  short frame[kFrame] = {0};
  EXPECT_EQ(ZebEq_Run(h, frame), ALGO_HPF_RET_INVALID_TABLE);
  EXPECT_EQ(ZebEq_Run(h, frame), ALGO_EQ_RET_API_CONFLICT);
  EXPECT_EQ(ZebEq_Free(h), ALGO_EQ_RET_API_CONFLICT);
  AudioEqInit init{kFrame, 1, ZEB_EQ_SAMPLE_RATE_16000};
  CaptureStdout([&] { EXPECT_EQ(ZebEq_Init(work_.data(), &init), h); });
  EXPECT_EQ(ZebEq_Free(h), ALGO_EQ_RET_SUCCESS);
}

TEST_F(EqFamily, ConfigStoresBeforeValidatingAndReportsStageCodes) {
  EQ_HANDLE h = Open(16000, 2);
  AudioEqConfig eq = Eq(0);
  eq.eq_gain_db[7] = 21;
  AudioHpfConfig hpf = Hpf(1, 1, AUDIO_HPF_FREQ_150);
  std::string out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[EQ_Config]Fail! EQ setting could not be bigger than 20dB. 21\n") +
                     Err("[EQ]Fail! Config fail.\t\n"));
  EXPECT_EQ(Rec(h)->eq_config.eq_gain_db[7], 21);
  EXPECT_EQ(Rec(h)->hpf_config.cutoff_frequency, _AUDIO_HPF_FREQ_150);
  EXPECT_EQ(Rec(h)->is_eq_config_status, 0);

  eq = Eq(0, 2, 1);
  EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_INVALID_ENABLE);
  eq = Eq(0, 1, 2);
  EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_INVALID_MODE);

  eq = Eq(0);
  hpf = Hpf(1, 1, AUDIO_HPF_FREQ_BUTT);
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_HPF_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[HPF]Fail! Unsupported hpf cutoff_frequency: 4\t\n") + Err("[HPF]Fail! Config fail.\t\n"));
  const int cutoffWild = -1;  // outside the enumeration's range: taken as the int it is
  std::memcpy(&hpf.cutoff_frequency, &cutoffWild, sizeof(cutoffWild));
  out = CaptureStdout([&] { EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_HPF_RET_INVALID_TABLE); });
  EXPECT_EQ(out, Err("[HPF]Fail! Unsupported hpf cutoff_frequency: -1\t\n") + Err("[HPF]Fail! Config fail.\t\n"));

  // Neither the high-pass switch nor its mode is validated.
  hpf = Hpf(7, 9, AUDIO_HPF_FREQ_80);
  EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);

  hpf = Hpf(1, 1, AUDIO_HPF_FREQ_500);
  eq = Eq(3);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  for (int c = 0; c < 2; ++c) {
    EXPECT_EQ(Rec(h)->eq_inst[c]->HPF_AddiScalingFactor[7], 0.0f) << c;
    EXPECT_EQ(Rec(h)->eq_inst[c]->HPF_AddiScalingFactor[8], 256.0f) << c;
    EXPECT_EQ(Rec(h)->eq_inst[c]->EQ_AddiScalingFactor[0], 361.0f) << c;
  }
  AudioEqInit init;
  AudioHpfConfig hpfOut;
  AudioEqConfig eqOut;
  ASSERT_EQ(ZebEq_GetConfig(h, &init, &hpfOut, &eqOut), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(init.channel, 2u);
  EXPECT_EQ(hpfOut.cutoff_frequency, AUDIO_HPF_FREQ_500);
  EXPECT_EQ(std::memcmp(eqOut.eq_gain_db, eq.eq_gain_db, sizeof(eq.eq_gain_db)), 0);
}

TEST_F(EqFamily, UserModeZeroKeepsTheCurrentFactors) {
  EQ_HANDLE h = Open(16000, 1);
  AudioHpfConfig hpf = Hpf(0, 0, AUDIO_HPF_FREQ_80);
  AudioEqConfig eq = Eq(6);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  eq = Eq(-6, 1, 0);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(Rec(h)->eq_inst[0]->EQ_AddiScalingFactor[10], 510.0f);
}

// ---------------------------------------------------------- EQ family run

std::vector<short> Noise(size_t samples, uint32_t seed, int amplitude) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> d(-amplitude, amplitude);
  std::vector<short> x(samples);
  for (short& v : x) v = (short)d(rng);
  return x;
}

TEST_F(EqFamily, AllOffIsTheInputOneFrameLateAndZeroGainsMatchItBitForBit) {
  std::vector<short> x = Noise(20 * kFrame * 2, zebtest::TestSeed(), 30000);
  AudioHpfConfig hpf = Hpf(0, 0, AUDIO_HPF_FREQ_80);
  EQ_HANDLE h = Open(48000, 2);
  AudioEqConfig off = Eq(0, 0, 0);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &off), ALGO_EQ_RET_SUCCESS);
  std::vector<short> yOff = Process(h, x, 2);
  for (size_t n = 2 * kFrame; n < yOff.size(); ++n) ASSERT_NEAR(yOff[n], x[n - 2 * kFrame], 1) << n;
  h = Open(48000, 2);
  AudioEqConfig zero = Eq(0);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &zero), ALGO_EQ_RET_SUCCESS);
  EXPECT_EQ(Process(h, x, 2), yOff);
}

TEST_F(EqFamily, SixDecibelsDoubleATonesBinsAndMinus100MutesThem) {
  const int fs = 16000, k = 20;  // bin 20: 1250 Hz
  const size_t n = 60 * kFrame, start = 10 * kFrame, len = 40 * kFrame;
  std::vector<short> x = Mix(fs, {{k * fs / 256.0, 6000.0}}, n);
  AudioHpfConfig hpf = Hpf(0, 0, AUDIO_HPF_FREQ_80);
  for (short db : {6, -100}) {
    EQ_HANDLE h = Open(fs, 1);
    AudioEqConfig eq = Eq(0);
    for (int b = k - 3; b <= k + 3; ++b) eq.eq_gain_db[b] = db;
    ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
    std::vector<short> y = Process(h, x, 1);
    const double gain = AmplitudeAt(y, start, len, k * fs / 256.0, fs) / 6000.0;
    if (db == 6) {
      EXPECT_NEAR(gain, 510.0 / 256.0, 0.01);  // 6 dB is weight 510, a doubling to 0.4 %
    } else {
      EXPECT_LT(gain, 0.002);
    }
  }
}

// Gains at 50 Hz and 1 kHz of the frequency-domain high-pass, measured over
// half a second of a steady mixture after a quarter second of settling.
struct HumAndVoice {
  double hum, voice;
};

class EqFamilyHighPass : public EqFamily {
 protected:
  HumAndVoice Measure(int fs, ZEB_HPF_FREQ f, double humAmp, double voiceAmp) {
    const size_t n = (size_t)fs / kFrame * kFrame;  // about one second
    const size_t start = n / 4, len = (size_t)fs / 2;
    std::vector<short> x = Mix(fs, {{50.0, humAmp}, {1000.0, voiceAmp}}, n);
    EQ_HANDLE h = Open(fs, 1);
    AudioEqConfig eq = Eq(0, 0, 0);
    AudioHpfConfig hpf = Hpf(1, 1, f);
    EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
    std::vector<short> y = Process(h, x, 1);
    return {humAmp > 0 ? AmplitudeAt(y, start, len, 50.0, fs) / humAmp : 0.0,
            voiceAmp > 0 ? AmplitudeAt(y, start, len, 1000.0, fs) / voiceAmp : 0.0};
  }
};

TEST_F(EqFamilyHighPass, FixedTablesCutHumAsFarAsTheirBinsReachAndPassOneKilohertz) {
  // The tables only touch the lowest bins, so the hum goes as far as the
  // bin spacing allows: at 32 and 48 kHz only bin 0 is cut.
  const struct {
    int fs;
    ZEB_HPF_FREQ f;
    double maxHum;
  } cases[] = {
      {8000, AUDIO_HPF_FREQ_80, 0.45},   {8000, AUDIO_HPF_FREQ_120, 0.12},
      {8000, AUDIO_HPF_FREQ_150, 0.06},  {16000, AUDIO_HPF_FREQ_80, 0.04},
      {16000, AUDIO_HPF_FREQ_120, 0.25}, {16000, AUDIO_HPF_FREQ_150, 0.13},
      {32000, AUDIO_HPF_FREQ_80, 0.75},  {32000, AUDIO_HPF_FREQ_120, 0.75},
      {32000, AUDIO_HPF_FREQ_150, 0.4},  {48000, AUDIO_HPF_FREQ_80, 0.7},
      {48000, AUDIO_HPF_FREQ_120, 0.7},  {48000, AUDIO_HPF_FREQ_150, 0.7},
  };
  for (const auto& c : cases) {
    const HumAndVoice g = Measure(c.fs, c.f, 6000.0, 6000.0);
    EXPECT_LT(g.hum, c.maxHum) << c.fs << " Hz, cutoff " << c.f;
    EXPECT_NEAR(g.voice, 1.0, 0.01) << c.fs << " Hz, cutoff " << c.f;
  }
}

TEST_F(EqFamilyHighPass, GuardedCutoffMutesLoneHumAndPassesLoneVoice) {
  for (int fs : {8000, 16000, 32000, 48000}) {
    EXPECT_LT(Measure(fs, AUDIO_HPF_FREQ_500, 6000.0, 0.0).hum, 0.001) << fs;
  }
  for (int fs : {8000, 16000, 32000}) {
    EXPECT_NEAR(Measure(fs, AUDIO_HPF_FREQ_500, 0.0, 6000.0).voice, 1.0, 0.01) << fs;
  }
  // The guard's stop band is bins 0..7 whatever the table says: at 48 kHz
  // that reaches 1.5 kHz, and a lone 1 kHz tone is muted as a low peak.
  EXPECT_LT(Measure(48000, AUDIO_HPF_FREQ_500, 0.0, 6000.0).voice, 0.001);
  // A tonal hum hardly raises the stop band's average in dB: under an equal
  // tone above it the frame is judged clean and passes uncut.
  const HumAndVoice g = Measure(8000, AUDIO_HPF_FREQ_500, 6000.0, 6000.0);
  EXPECT_GT(g.hum, 0.99);
  EXPECT_NEAR(g.voice, 1.0, 0.01);
}

TEST_F(EqFamily, TimeDomainHighPassRunsBeforeTheTransform) {
  const int fs = 16000;
  const size_t n = 100 * kFrame;
  std::vector<short> x = Mix(fs, {{50.0, 6000.0}, {1000.0, 6000.0}}, n);
  EQ_HANDLE h = Open(fs, 1);
  AudioEqConfig eq = Eq(0, 0, 0);
  AudioHpfConfig hpf = Hpf(1, 2, AUDIO_HPF_FREQ_500);
  ASSERT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
  std::vector<short> y = Process(h, x, 1);
  // The same path as the FIR alone, one frame later.
  std::vector<short> fir = RunFir(x, _AUDIO_HPF_FREQ_500);
  for (size_t i = 2 * kFrame; i < n; ++i) EXPECT_NEAR(y[i], fir[i - kFrame], 1) << i;
}

TEST_F(EqFamily, StereoChannelsAreIndependent) {
  const int fs = 32000;
  const size_t frames = 30;
  std::vector<short> left = Mix(fs, {{50.0, 9000.0}, {700.0, 5000.0}}, frames * kFrame);
  std::vector<short> right = Noise(frames * kFrame, zebtest::TestSeed(), 12000);
  std::vector<short> both(2 * frames * kFrame);
  for (size_t i = 0; i < frames * kFrame; ++i) {
    both[2 * i] = left[i];
    both[2 * i + 1] = right[i];
  }
  AudioEqConfig eq = Eq(0);
  for (int b = 0; b < 40; ++b) eq.eq_gain_db[b] = (short)(b % 9 - 6);
  AudioHpfConfig hpf = Hpf(1, 2, AUDIO_HPF_FREQ_80);
  auto run = [&](std::vector<short> x, unsigned int ch) {
    EQ_HANDLE h = Open(fs, ch);
    EXPECT_EQ(ZebEq_Config(h, &hpf, &eq), ALGO_EQ_RET_SUCCESS);
    return Process(h, x, ch);
  };
  std::vector<short> yBoth = run(both, 2), yLeft = run(left, 1), yRight = run(right, 1);
  for (size_t i = 0; i < frames * kFrame; ++i) {
    ASSERT_EQ(yBoth[2 * i], yLeft[i]) << i;
    ASSERT_EQ(yBoth[2 * i + 1], yRight[i]) << i;
  }
}

// ------------------------------------------------------- table mappings

TEST(EqTableMapping, InterpolatesOntoTheDenoiserTable) {
  std::vector<short> db(kBins);
  for (int k = 0; k < kBins; ++k) db[k] = (short)(k % 13 - 6);
  std::vector<float> out(161, -1.0f);
  ASSERT_EQ(eq_table_mapping(db.data(), out.data(), kBins, 161, 7), 0);
  EXPECT_EQ(out[0], (float)std::pow(2.0, db[0] / 6.02f));
  for (int i = 1; i < 161; ++i) {
    const float x = 129.0f * ((float)i / 161.0f);
    const int lo = (int)std::floor(x), hi = std::min((int)std::ceil(x), 128);
    const float dbAt = db[lo] + (db[hi] - db[lo]) * (x - (float)lo);
    EXPECT_FLOAT_EQ(out[i], (float)std::pow(2.0, dbAt / 6.02f)) << i;
  }
  // Flat 0 dB is unity everywhere.
  std::vector<short> flat(kBins, 0);
  ASSERT_EQ(eq_table_mapping(flat.data(), out.data(), kBins, 161, 7), 0);
  for (float v : out) EXPECT_EQ(v, 1.0f);
}

TEST(EqTableMapping, OutOfRangeSettingsWarnButPass) {
  std::vector<short> db(kBins, 0);
  db[0] = 30;
  std::vector<float> out(161);
  std::string out1 = CaptureStdout([&] { ASSERT_EQ(eq_table_mapping(db.data(), out.data(), kBins, 161, 7), 0); });
  EXPECT_NE(out1.find(Wrn("[eq_table_mapping]Warning! EQ setting could not be bigger than 20dB. 30.000000\n")),
            std::string::npos);
  EXPECT_EQ(out[0], (float)std::pow(2.0, 30.0f / 6.02f));
  db[0] = -120;
  out1 = CaptureStdout([&] { eq_table_mapping(db.data(), out.data(), kBins, 161, 7); });
  EXPECT_NE(out1.find(Wrn("[eq_table_mapping]Warning! EQ setting could not be smaller than -100dB. -120.000000\n")),
            std::string::npos);
}

TEST(HpfTableMapping, MultipliesTheHighPassIntoTheTable) {
  std::vector<float> table(161, 1.0f);
  ASSERT_EQ(hpf_table_mapping(AUDIO_HPF_FREQ_500, table.data(), ZEB_KOL_SAMPLE_RATE_16000, 161, 7), 0);
  EXPECT_EQ(table[0], 0.0f);
  for (int i = 1; i < 161; ++i) {
    const double x = (double)((float)i / 161.0f) * 129.0;
    const double expected = x <= 7.0 ? 0.0 : (x >= 8.0 ? 1.0 : (x - 7.0));
    EXPECT_NEAR(table[i], expected, 1e-6) << i;
  }
  // A second mapping multiplies again.
  std::vector<float> twice(161, 3.0f);
  hpf_table_mapping(AUDIO_HPF_FREQ_80, twice.data(), ZEB_KOL_SAMPLE_RATE_8000, 161, 7);
  hpf_table_mapping(AUDIO_HPF_FREQ_80, twice.data(), ZEB_KOL_SAMPLE_RATE_8000, 161, 7);
  EXPECT_EQ(twice[0], 0.0f);
  const double x1 = (double)(1.0f / 161.0f) * 129.0;  // between bins 0 (32) and 1 (64)
  const double g1 = (32.0 + 32.0 * x1) / 256.0;
  EXPECT_FLOAT_EQ(twice[1], (float)(3.0 * g1 * g1));
  EXPECT_EQ(twice[160], 3.0f);
}

TEST(HpfTableMapping, UnsupportedRateLeavesTheTable) {
  std::vector<float> table(161, 2.0f);
  std::string out = CaptureStdout([&] {
    EXPECT_EQ(hpf_table_mapping(AUDIO_HPF_FREQ_80, table.data(), static_cast<ZEB_KOL_SAMPLE_RATE>(44100), 161, 7), -1);
  });
  EXPECT_EQ(out, Err("[HPF]Fail! Unsupported sample rate : 44100\t\n"));
  EXPECT_EQ(table, std::vector<float>(161, 2.0f));
}

}  // namespace
