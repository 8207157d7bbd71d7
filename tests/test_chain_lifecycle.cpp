// Chain handle: buffer size, carve, Init/Reset/Free, Config guards, result
// mappings and the message rules that hang on the handle.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "AudioProcess.h"
#include "AudioSRCProcess.h"
#include "ComfortNoise.h"
#include "DynamicRangeProcessing.h"
#include "agc.h"
#include "eq_filter.h"
#include "nr_core.h"
#include "chain_support.h"
#include "test_support.h"
#include "zebaudio.h"

namespace {

AudioKolBufferConfig Switches(unsigned anr, unsigned eq, unsigned agc) {
  AudioKolBufferConfig s;
  std::memset(&s, 0, sizeof(s));
  s.anr_enable = anr;
  s.eq_enable = eq;
  s.agc_enable = agc;
  return s;
}

AudioProcessInit InitRecord(unsigned pn, unsigned ch, int rate) {
  AudioProcessInit i;
  i.point_number = pn;
  i.channel = ch;
  i.sample_rate = static_cast<ZEB_KOL_SAMPLE_RATE>(rate);
  return i;
}

// Working buffer with pointer alignment and a guard pattern behind it.
struct Buffer {
  explicit Buffer(size_t bytes) : words((bytes + 64) / sizeof(void*) + 1) {
    std::memset(words.data(), 0xA5, words.size() * sizeof(void*));
    size = bytes;
  }
  char* data() { return reinterpret_cast<char*>(words.data()); }
  bool GuardIntact() const {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(words.data());
    for (size_t i = size; i < words.size() * sizeof(void*); ++i)
      if (p[i] != 0xA5) return false;
    return true;
  }
  std::vector<void*> words;
  size_t size;
};

class QuietLevel : public ::testing::Test {
 protected:
  zebtest::ScopedEnv env_{"DML_PATH", zebtest::kNoLevelFile};
};

using ChainLifecycle = QuietLevel;

TEST_F(ChainLifecycle, BufferSizeIsPureFunctionOfSwitches) {
  AudioKolBufferConfig none = Switches(0, 0, 0);
  const unsigned base = ZebKol_GetBufferSize(&none);
  EXPECT_GE(base, sizeof(AudioKolInternel) + sizeof(postInfo_t) + 2 * sizeof(cng_t) + FFT_GetBufferSize(256));
  AudioKolBufferConfig eq = Switches(0, 1, 0);
  EXPECT_EQ(ZebKol_GetBufferSize(&eq) - base, 2 * sizeof(EQinst_t));
  AudioKolBufferConfig agc = Switches(0, 0, 1);
  EXPECT_GE(ZebKol_GetBufferSize(&agc) - base,
            2 * sizeof(AGCinst_t) + 2 * sizeof(FreqAgcHandle) + 2 * FFT_GetBufferSize(256));
  AudioKolBufferConfig anr = Switches(1, 0, 0);
  EXPECT_GE(ZebKol_GetBufferSize(&anr) - base,
            2 * sizeof(NSinst_t) + 4 * ZebSrc_GetBufferSize(static_cast<SrcConversionMode>(0)));
  AudioKolBufferConfig all = Switches(1, 1, 1);
  EXPECT_EQ(ZebKol_GetBufferSize(&all), ZebKol_GetBufferSize(&anr) + ZebKol_GetBufferSize(&eq) +
                                            ZebKol_GetBufferSize(&agc) - 2 * base);
  AudioKolBufferConfig stored = all;
  stored.dr_enable = 1;
  stored.vad_enable = 7;
  EXPECT_EQ(ZebKol_GetBufferSize(&stored), ZebKol_GetBufferSize(&all));
  EXPECT_EQ(ZebKol_GetBufferSize(nullptr), 0u);
}

TEST_F(ChainLifecycle, CarveStaysInsideBufferAndReservesBothChannels) {
  AudioKolBufferConfig all = Switches(1, 1, 1);
  Buffer buf(ZebKol_GetBufferSize(&all));
  AudioProcessInit mono = InitRecord(128, 1, 48000);
  auto* h = static_cast<AudioKolInternel*>(ZebKol_Init(buf.data(), &mono, &all));
  ASSERT_NE(h, nullptr);
  const char* lo = buf.data();
  const char* hi = lo + buf.size;
  auto inside = [&](const void* p, size_t n) {
    const char* c = static_cast<const char*>(p);
    return c >= lo && c + n <= hi;
  };
  for (int ch = 0; ch < 2; ++ch) {
    EXPECT_TRUE(inside(h->nr_inst[ch], sizeof(NSinst_t))) << ch;
    EXPECT_TRUE(inside(h->nr_inst[ch]->SRCOutputWorkBuf_ptr, 1)) << ch;
    EXPECT_TRUE(inside(h->eq_inst[ch], sizeof(EQinst_t))) << ch;
    EXPECT_TRUE(inside(h->agc_inst[ch], sizeof(AGCinst_t))) << ch;
    EXPECT_TRUE(inside(h->freq_agc_inst[ch], sizeof(FreqAgcHandle))) << ch;
    EXPECT_TRUE(inside(h->cng_working_buffer[ch], sizeof(cng_t))) << ch;
  }
  // The chain's own transform state is the last block of the buffer.
  const size_t fftBlock = (FFT_GetBufferSize(256) + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*);
  EXPECT_EQ(reinterpret_cast<const char*>(h->FFT_workingBuff.fft_Ne10_cfg) + fftBlock, hi);
  EXPECT_TRUE(buf.GuardIntact());
}

TEST_F(ChainLifecycle, InitRefusesBadArgumentsWithTheirMessages) {
  AudioKolBufferConfig none = Switches(0, 0, 0);
  Buffer buf(ZebKol_GetBufferSize(&none));
  AudioProcessInit good = InitRecord(128, 1, 16000);
  std::string out = zebtest::CaptureStdout([&] {
    EXPECT_EQ(ZebKol_Init(nullptr, &good, &none), nullptr);
    EXPECT_EQ(ZebKol_Init(buf.data(), nullptr, &none), nullptr);
  });
  const std::string nullText =
      "[ALGO_MSG_ERR] [KOL]Fail! The working_buffer_address or AudioProcessInit structure is NULL.\t\n";
  EXPECT_EQ(out, nullText + nullText);

  struct Case {
    AudioProcessInit init;
    const char* text;
  } cases[] = {
      {InitRecord(160, 1, 16000),
       "[ALGO_MSG_ERR] [KOL]Fail! Unsupported point_number 160. This KOL Lib only support point_number = 128.\t\n"},
      {InitRecord(128, 3, 16000),
       "[ALGO_MSG_ERR] [KOL]Fail! Unsupported channel 3. This KOL Lib only support mono or stereo.\t\n"},
      {InitRecord(128, 0, 16000),
       "[ALGO_MSG_ERR] [KOL]Fail! Unsupported channel 0. This KOL Lib only support mono or stereo.\t\n"},
      {InitRecord(128, 2, 44100),
       "[ALGO_MSG_ERR] [KOL]Fail! Unsupported sample_rate 44100. This KOL Lib only support sample rate 8K 16K "
       "48K.\t\n"},
      // Beyond the range of the enumeration's values: still just a number.
      {InitRecord(128, 2, 96000),
       "[ALGO_MSG_ERR] [KOL]Fail! Unsupported sample_rate 96000. This KOL Lib only support sample rate 8K 16K "
       "48K.\t\n"},
  };
  for (Case& c : cases) {
    std::string o = zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Init(buf.data(), &c.init, &none), nullptr); });
    EXPECT_EQ(o, std::string("[ALGO_MSG_MSG] [KOL]FFT mode: floating point mode.\t\n") + c.text +
                     "[ALGO_MSG_ERR] [KOL]Fail! AudioProcessInit parameter error.\t\n");
    // Left zeroed and carved, but not initialised.
    auto* h = reinterpret_cast<AudioKolInternel*>(buf.data());
    EXPECT_EQ(h->check_number, 0x30513057);
    EXPECT_NE(h->postInfo, nullptr);
    EXPECT_EQ(h->is_kol_init_status, 0);
  }
  // Every supported rate passes, including 32 kHz that the message omits.
  for (int rate : {8000, 16000, 32000, 48000}) {
    AudioProcessInit ok = InitRecord(128, 2, rate);
    zebtest::CaptureStdout([&] { EXPECT_NE(ZebKol_Init(buf.data(), &ok, &none), nullptr) << rate; });
  }
  // A switch record that is missing, or a misaligned buffer, cannot be carved.
  zebtest::CaptureStdout([&] {
    EXPECT_EQ(ZebKol_Init(buf.data(), &good, nullptr), nullptr);
    EXPECT_EQ(ZebKol_Init(buf.data() + 2, &good, &none), nullptr);
  });
}

TEST_F(ChainLifecycle, InitPrintsItsInformationAtLevelSeven) {
  AudioKolBufferConfig none = Switches(0, 0, 0);
  Buffer buf(ZebKol_GetBufferSize(&none));
  AudioProcessInit init = InitRecord(128, 2, 48000);
  const std::string out = zebtest::CaptureStdout([&] { ZebKol_Init(buf.data(), &init, &none); });
  const std::string bar =
      "[ALGO_MSG_MSG] |--------------------------------------------------------------------------------|\n";
  const std::string blank =
      "[ALGO_MSG_MSG] |                                                                                |\n";
  const std::string neon =
      "[ALGO_MSG_MSG] |                                   NEON ENABLE                                  |\n";
  EXPECT_EQ(out, "[ALGO_MSG_MSG] [KOL]FFT mode: floating point mode.\t\n"
                 "[ALGO_MSG_MSG] [KOL]Point Number: 128\t\n"
                 "[ALGO_MSG_MSG] [KOL]Channel: 2\t\n"
                 "[ALGO_MSG_MSG] [KOL]Sample rate: 48000\t\n" +
                     bar + blank + neon + blank + bar + "[ALGO_MSG_MSG] [KOL]KOL internal initialize succeed\r\n");
}

TEST_F(ChainLifecycle, LevelOneSilencesAllButErrorsAndNullHandles) {
  zebtest::ScopedLevel level(1);
  zebtest::Chain c(16000, 1, 0, 0, 0);
  KOL_HANDLE kol = nullptr;
  EXPECT_EQ(zebtest::CaptureStdout([&] { kol = ZebKol_Init(c.buffer(), &c.init, &c.sw); }), "");
  ASSERT_NE(kol, nullptr);
  EXPECT_EQ(c.h()->dbg_level, 1);
  short frame[128] = {};
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(nullptr, frame), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! The kol handle is NULL.\t\n");
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(kol, frame), ALGO_KOL_RET_INVALID_CALLING); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! Need config before ZebKol_Run.\t\n");
  AudioAnrConfig anr;
  std::memset(&anr, 0, sizeof(anr));
  // Warnings are gated off at level 1.
  EXPECT_EQ(zebtest::CaptureStdout([&] {
              EXPECT_EQ(ZebKol_Config(kol, &anr, nullptr, nullptr, nullptr, nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
            }),
            "");
}

TEST_F(ChainLifecycle, FreeGuardsAndDoubleFree) {
  zebtest::Chain c(16000, 1, 0, 0, 0);
  KOL_HANDLE kol = c.kol;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Free(nullptr), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_Free]Fail! The kol handle is NULL.\t\n");
  EXPECT_EQ(ZebKol_Free(kol), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(reinterpret_cast<AudioKolInternel*>(kol)->FFT_workingBuff.is_fft_init, 0);
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Free(kol), ALGO_KOL_RET_INVALID_CALLING); }),
            "[ALGO_MSG_ERR] [_ZebKol_Free]Fail! Need init before ZebKol_Free.\t\n");
  // Config needs Init too.
  EXPECT_EQ(zebtest::CaptureStdout([&] {
              EXPECT_EQ(ZebKol_Config(kol, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                        ALGO_KOL_RET_INVALID_CALLING);
            }),
            "[ALGO_MSG_ERR] [_ZebKol_Config]Fail! Need init before ZebKol_Config.\t\n");
}

TEST_F(ChainLifecycle, ConfigWarnsForStagesWithoutMemoryAndStoresTheRest) {
  zebtest::Chain c(16000, 1, 0, 1, 0);
  zebtest::ChainRecords r;
  r.eq.eq_gain_db[5] = -3;
  EXPECT_EQ(c.Config(r), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(c.lastText,
            "[ALGO_MSG_WRN] [_ZebKol_Config]Warning! No allocate anr_config buffer.\t\n"
            "[ALGO_MSG_WRN] [_ZebKol_Config]Warning! No allocate agc_config buffer.\t\n"
            "[ALGO_MSG_MSG] kol_handle->reduce_latency_flag:0\t\n");
  EXPECT_EQ(c.h()->eq_config.eq_gain_db[5], -3);
  EXPECT_EQ(c.h()->is_kol_config_status, 1);
}

// A C caller may store any int in an enumeration field; the stage that owns
// the field reports it as the number it is.
TEST_F(ChainLifecycle, ConfigHandsEnumerationFieldsOutsideTheirRangeToTheStage) {
  zebtest::Chain c(16000, 1);
  zebtest::ChainRecords r;
  r.anr.anr_enable = 1;
  r.anr.user_mode = 1;
  const int bands[6] = {10, 20, 40, 60, 90, 128};
  std::memcpy(r.anr.anr_intensity_band, bands, sizeof(bands));
  r.anr.anr_converge_speed = static_cast<NR_CONVERGE_SPEED>(9);
  EXPECT_EQ(c.Config(r), ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED);
  EXPECT_NE(c.lastText.find("[ANR]Fail! Unsupported anr_converge_speed 9."), std::string::npos) << c.lastText;
  r.anr.anr_converge_speed = NR_SPEED_MID;
  r.hpf = {1, 1, static_cast<ZEB_HPF_FREQ>(9)};
  EXPECT_EQ(c.Config(r), ALGO_KOL_HPF_RET_INVALID_TABLE);
  EXPECT_EQ(c.lastText,
            "[ALGO_MSG_ERR] [HPF]Fail! Unsupported hpf cutoff_frequency: 9\t\n"
            "[ALGO_MSG_ERR] [_ZebKol_Config]Fail! HPF Config Fail.\t\n");
}

TEST_F(ChainLifecycle, FailurePastTheRunGuardBlocksUntilInit) {
  zebtest::Chain c(16000, 1, 0, 0, 0);
  KOL_HANDLE kol = c.kol;
  ASSERT_EQ(ZebKol_Config(kol, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
  auto* h = reinterpret_cast<AudioKolInternel*>(kol);
  // A stage enabled without memory: only reachable by a corrupted record.
  h->anr_config.anr_enable = 1;
  short frame[128] = {};
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(kol, frame), ALGO_KOL_RET_FAILED); }),
            "[ALGO_MSG_ERR] [ANR] Fail! ANR enable without allocated buffer.\t\n");
  h->anr_config.anr_enable = 0;  // the cause is gone, the block stays
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Run(kol, frame), ALGO_KOL_RET_API_CONFLICT); }),
            "[ALGO_MSG_ERR] [_ZebKol_Run]Fail! Last time _ZebKol_Run process is unfinished.\t\n");
  zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_Free(kol), ALGO_KOL_RET_API_CONFLICT); });
  zebtest::CaptureStdout([&] { kol = ZebKol_Reset(c.buffer(), &c.init, &c.sw); });
  ASSERT_EQ(ZebKol_Config(kol, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(ZebKol_Run(kol, frame), ALGO_KOL_RET_SUCCESS);
  EXPECT_EQ(ZebKol_Free(kol), ALGO_KOL_RET_SUCCESS);
}

TEST_F(ChainLifecycle, BufferAllocateCheckNamesEachStage) {
  zebtest::Chain c(16000, 1, 0, 0, 0);
  AudioKolInternel* h = c.h();
  EXPECT_EQ(BufferAllocateCheck(h), 0);
  h->hpf_config.hpf_enable = 1;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(BufferAllocateCheck(h), -1); }),
            "[ALGO_MSG_ERR] [EQ/HPF] Fail! EQ or HPF enable without allocated buffer.\t\n");
  h->hpf_config.hpf_enable = 0;
  h->agc_config.agc_enable = 1;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(BufferAllocateCheck(h), -1); }),
            "[ALGO_MSG_ERR] [AGC] Fail! AGC enable without allocated buffer.\t\n");
  h->agc_config.agc_enable = 2;  // only exactly 1 counts
  EXPECT_EQ(BufferAllocateCheck(h), 0);
}

TEST(ResultMappings, StageCodesMapToChainCodes) {
  for (int v = 0; v <= 5; ++v) {
    const ALGO_KOL_RET want = v == 0 ? ALGO_KOL_RET_SUCCESS : static_cast<ALGO_KOL_RET>(0x10000500 + v);
    EXPECT_EQ(ANR_ConvertReturnValue(v), want) << v;
    EXPECT_EQ(EQ_ConvertReturnValue(v), want) << v;
    EXPECT_EQ(AGC_ConvertReturnValue(v), want) << v;
  }
  const unsigned anr[] = {0x10000506, 0x10000507, 0x10000508, 0x10000509, 0x10000510, 0x10000511};
  for (int v = 6; v <= 11; ++v) EXPECT_EQ(static_cast<unsigned>(ANR_ConvertReturnValue(v)), anr[v - 6]) << v;
  for (int v = 6; v <= 11; ++v)
    EXPECT_EQ(static_cast<unsigned>(EQ_ConvertReturnValue(v)), 0x10000512u + (v - 6)) << v;
  const unsigned agc[] = {0x10000518, 0x10000519, 0x10000520, 0x10000521, 0x10000522, 0x10000523,
                          0x10000524, 0x10000525, 0x10000526, 0x10000527, 0x10000528, 0x10000529};
  for (int v = 6; v <= 17; ++v) EXPECT_EQ(static_cast<unsigned>(AGC_ConvertReturnValue(v)), agc[v - 6]) << v;
  for (int v : {-1, 12, 100}) EXPECT_EQ(ANR_ConvertReturnValue(v), ALGO_KOL_RET_FAILED) << v;
  for (int v : {-1, 12, 18}) EXPECT_EQ(EQ_ConvertReturnValue(v), ALGO_KOL_RET_FAILED) << v;
  // The AGC's own conflict and calling codes do not reach their chain twins.
  EXPECT_EQ(AGC_ConvertReturnValue(18), ALGO_KOL_RET_FAILED);
  EXPECT_EQ(AGC_ConvertReturnValue(19), ALGO_KOL_RET_FAILED);
  EXPECT_EQ(AGC_ConvertReturnValue(20), ALGO_KOL_RET_FAILED);
  // 0x1000050A is not a code: nothing maps to it.
  for (int v = -2; v < 40; ++v) {
    EXPECT_NE(static_cast<unsigned>(ANR_ConvertReturnValue(v)), 0x1000050Au);
    EXPECT_NE(static_cast<unsigned>(AGC_ConvertReturnValue(v)), 0x1000050Au);
  }
}

TEST(ApiVersion, NeedsNoHandleAndPrintsAtAnyLevel) {
  zebtest::ScopedLevel level(1);
  unsigned short major = 0, minor = 0;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetAPIVersion(&major, &minor), ALGO_KOL_RET_SUCCESS); }),
            "[ALGO_MSG_MSG] KOL_API_VERSION: 2.3\n");
  EXPECT_EQ(major, 2);
  EXPECT_EQ(minor, 3);
}

}  // namespace
