// Public C API: result codes, enumerations and the record sizes clients and
// the stage records that embed them rely on, and the behaviour of every
// handle-taking entry point when it is handed NULL.
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include "AudioProcessWrapper.h"
#include "test_support.h"
#include "zebaudio.h"

namespace {

// Every result enumeration in declared order, as clients compare against it.
const long long kKolCodes[] = {
    ALGO_KOL_RET_SUCCESS, ALGO_KOL_RET_INIT_ERROR, ALGO_KOL_RET_INVALID_HANDLE,
    ALGO_KOL_RET_INVALID_SAMPLE_RATE, ALGO_KOL_RET_INVALID_POINT_NUMBER, ALGO_KOL_RET_INVALID_CHANNEL,
    ALGO_KOL_ANR_RET_INVALID_ENABLE, ALGO_KOL_ANR_RET_INVALID_MODE, ALGO_KOL_ANR_RET_INVALID_INTENSITY,
    ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL, ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED,
    ALGO_KOL_ANR_RET_INVALID_FILTER_MODE, ALGO_KOL_EQ_RET_INVALID_ENABLE, ALGO_KOL_EQ_RET_INVALID_MODE,
    ALGO_KOL_EQ_RET_INVALID_TABLE, ALGO_KOL_HPF_RET_INVALID_ENABLE, ALGO_KOL_HPF_RET_INVALID_MODE,
    ALGO_KOL_HPF_RET_INVALID_TABLE, ALGO_KOL_AGC_RET_INVALID_ENABLE, ALGO_KOL_AGC_RET_INVALID_MODE,
    ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO, ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND,
    ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX, ALGO_KOL_AGC_RET_INVALID_GAIN_STEP,
    ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME, ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME,
    ALGO_KOL_AGC_RET_INVALID_NOISE_GATE, ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU,
    ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL, ALGO_KOL_AGC_RET_INVALID_GAIN_INFO, ALGO_KOL_RET_API_CONFLICT,
    ALGO_KOL_RET_INVALID_CALLING, ALGO_KOL_RET_FAILED};
const long long kAnrCodes[] = {
    ALGO_ANR_RET_SUCCESS, ALGO_ANR_RET_INIT_ERROR, ALGO_ANR_RET_INVALID_HANDLE, ALGO_ANR_RET_INVALID_SAMPLE_RATE,
    ALGO_ANR_RET_INVALID_POINT_NUMBER, ALGO_ANR_RET_INVALID_CHANNEL, ALGO_ANR_RET_INVALID_ENABLE,
    ALGO_ANR_RET_INVALID_MODE, ALGO_ANR_RET_INVALID_INTENSITY, ALGO_ANR_RET_INVALID_SMOOTH_LEVEL,
    ALGO_ANR_RET_INVALID_CONVERGE_SPEED, ALGO_ANR_RET_API_CONFLICT, ALGO_ANR_RET_INVALID_CALLING,
    ALGO_ANR_RET_INVALID_FILTER_MODE, ALGO_ANR_RET_FAILED};
const long long kEqCodes[] = {
    ALGO_EQ_RET_SUCCESS, ALGO_EQ_RET_INIT_ERROR, ALGO_EQ_RET_INVALID_HANDLE, ALGO_EQ_RET_INVALID_SAMPLE_RATE,
    ALGO_EQ_RET_INVALID_POINT_NUMBER, ALGO_EQ_RET_INVALID_CHANNEL, ALGO_EQ_RET_INVALID_ENABLE,
    ALGO_EQ_RET_INVALID_MODE, ALGO_EQ_RET_INVALID_TABLE, ALGO_HPF_RET_INVALID_ENABLE, ALGO_HPF_RET_INVALID_MODE,
    ALGO_HPF_RET_INVALID_TABLE, ALGO_EQ_RET_API_CONFLICT, ALGO_EQ_RET_INVALID_CALLING, ALGO_EQ_RET_FAILED};
// The public AGC result has no frequency-band member: from 9 on it runs
// one below the stage's own numbering.
const long long kAgcCodes[] = {
    ALGO_AGC_RET_SUCCESS, ALGO_AGC_RET_INIT_ERROR, ALGO_AGC_RET_INVALID_HANDLE, ALGO_AGC_RET_INVALID_SAMPLE_RATE,
    ALGO_AGC_RET_INVALID_POINT_NUMBER, ALGO_AGC_RET_INVALID_CHANNEL, ALGO_AGC_RET_INVALID_ENABLE,
    ALGO_AGC_RET_INVALID_MODE, ALGO_AGC_RET_INVALID_COMPRESSION_RATIO, ALGO_AGC_RET_INVALID_DROP_GAIN_MAX,
    ALGO_AGC_RET_INVALID_GAIN_STEP, ALGO_AGC_RET_INVALID_RELEASE_TIME, ALGO_AGC_RET_INVALID_ATTACK_TIME,
    ALGO_AGC_RET_INVALID_NOISE_GATE, ALGO_AGC_RET_INVALID_NOISE_ATTENU, ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL,
    ALGO_AGC_RET_INVALID_GAIN_INFO, ALGO_AGC_RET_API_CONFLICT, ALGO_AGC_RET_INVALID_CALLING,
    ALGO_AGC_RET_FAILED};

TEST(ResultCodes, ChainCodesCountInDecimalDigitsFrom0x10000501) {
  // Entry i is 0x10000500 + i written as if decimal: 0x1000050A does not exist.
  ASSERT_EQ(std::size(kKolCodes), 33u);
  EXPECT_EQ(kKolCodes[0], 0);
  for (int i = 1; i < 33; ++i) EXPECT_EQ(kKolCodes[i], 0x10000500LL + (i / 10) * 16 + i % 10) << "entry " << i;
}

TEST(ResultCodes, FamilyCodesCountFromZero) {
  ASSERT_EQ(std::size(kAnrCodes), 15u);
  ASSERT_EQ(std::size(kEqCodes), 15u);
  ASSERT_EQ(std::size(kAgcCodes), 20u);
  for (size_t i = 0; i < 15; ++i) EXPECT_EQ(kAnrCodes[i], (long long)i) << "ANR entry " << i;
  for (size_t i = 0; i < 15; ++i) EXPECT_EQ(kEqCodes[i], (long long)i) << "EQ entry " << i;
  for (size_t i = 0; i < 20; ++i) EXPECT_EQ(kAgcCodes[i], (long long)i) << "AGC entry " << i;
}

TEST(ResultCodes, RatesAndSettingEnums) {
  const long long rates[][4] = {
      {ZEB_KOL_SAMPLE_RATE_8000, ZEB_KOL_SAMPLE_RATE_16000, ZEB_KOL_SAMPLE_RATE_32000, ZEB_KOL_SAMPLE_RATE_48000},
      {ZEB_ANR_SAMPLE_RATE_8000, ZEB_ANR_SAMPLE_RATE_16000, ZEB_ANR_SAMPLE_RATE_32000, ZEB_ANR_SAMPLE_RATE_48000},
      {ZEB_EQ_SAMPLE_RATE_8000, ZEB_EQ_SAMPLE_RATE_16000, ZEB_EQ_SAMPLE_RATE_32000, ZEB_EQ_SAMPLE_RATE_48000},
      {ZEB_AGC_SAMPLE_RATE_8000, ZEB_AGC_SAMPLE_RATE_16000, ZEB_AGC_SAMPLE_RATE_32000, ZEB_AGC_SAMPLE_RATE_48000}};
  for (const auto& family : rates) {
    EXPECT_EQ(std::vector<long long>(family, family + 4), (std::vector<long long>{8000, 16000, 32000, 48000}));
  }
  const long long settings[] = {NR_SPEED_LOW,      NR_SPEED_MID,       NR_SPEED_HIGH,       AUDIO_HPF_FREQ_80,
                                AUDIO_HPF_FREQ_120, AUDIO_HPF_FREQ_150, AUDIO_HPF_FREQ_500, AUDIO_HPF_FREQ_BUTT,
                                EQ_NOTCH_FILTER,   EQ_HIGH_PASS_FILTER, EQ_LOW_PASS_FILTER};
  EXPECT_EQ(std::vector<long long>(std::begin(settings), std::end(settings)),
            (std::vector<long long>{0, 1, 2, 0, 1, 2, 3, 4, 0, 1, 2}));
}

// Records embed these enumerations, so their width fixes record layouts.
static_assert(sizeof(ALGO_KOL_RET) == 4 && sizeof(ZEB_KOL_SAMPLE_RATE) == 4 && sizeof(ZEB_ANR_SAMPLE_RATE) == 4 &&
                  sizeof(ZEB_EQ_SAMPLE_RATE) == 4 && sizeof(ZEB_AGC_SAMPLE_RATE) == 4 &&
                  sizeof(NR_CONVERGE_SPEED) == 4 && sizeof(ZEB_HPF_FREQ) == 4 && sizeof(EQ_FILTER_TYPE) == 4,
              "enumerations are 32-bit");
static_assert(std::is_same<KOL_HANDLE, void*>::value && std::is_same<ANR_HANDLE, void*>::value &&
                  std::is_same<EQ_HANDLE, void*>::value && std::is_same<AGC_HANDLE, void*>::value &&
                  std::is_same<KOL_BF_HANDLE, void*>::value && std::is_same<ANR_BF_HANDLE, void*>::value,
              "handles are untyped pointers");

// The sizes that the callers' records and the stages' copies of them share;
// every one a multiple of four so that records carved back to back stay
// aligned. The offsets are those a field of another width would move.
static_assert(sizeof(AudioProcessInit) == 12 && sizeof(AudioAnrInit) == 12 && sizeof(AudioEqInit) == 12 &&
                  sizeof(AudioAgcInit) == 12,
              "init records");
static_assert(sizeof(AudioKolBufferConfig) == 20 && sizeof(CngStruct) == 12 && sizeof(AudioDereverbConfig) == 4,
              "chain records");
static_assert(sizeof(AudioAnrConfig) == 72 && offsetof(AudioAnrConfig, anr_smooth_level) == 60,
              "AudioAnrConfig");
static_assert(sizeof(AudioEqConfig) == 268 && offsetof(AudioEqConfig, eq_gain_db) == 8, "266 bytes padded");
static_assert(sizeof(AudioHpfConfig) == 12 && sizeof(AudioFilterConfig) == 16, "filter records");
static_assert(sizeof(AgcGainInfo) == 12 && sizeof(AudioAgcConfig) == 76 &&
                  offsetof(AudioAgcConfig, compression_ratio_output) == 46 &&
                  offsetof(AudioAgcConfig, drop_gain_threshold) == 60,
              "AudioAgcConfig");
static_assert(offsetof(CngStruct, channel_num) == 8, "the short point_number is padded");

// Every handle-taking entry point refuses a NULL handle with a non-zero
// code and without touching its other (also NULL) arguments. The messages
// are each operation's own concern and are kept off the log here.
TEST(NullArguments, EveryEntryPointRefusesANullHandle) {
  zebtest::CaptureStdout([] {
    EXPECT_EQ(ZebKol_Init(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebKol_Reset(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAnr_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAnr_Reset(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebEq_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebEq_Reset(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAgc_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAgc_Reset(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebKol_GetJsonFileSize(nullptr), 0u);
    EXPECT_EQ(ZebAnr_GetJsonFileSize(nullptr), 0u);
    const long long codes[] = {
        ZebKol_Free(nullptr), ZebKol_Config(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        ZebKol_GetConfig(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        ZebKol_Run(nullptr, nullptr), ZebKol_GetNrResult(nullptr, nullptr), ZebKol_GetNrEqResult(nullptr, nullptr),
        ZebKol_GetVadOut(nullptr, nullptr), ZebKol_NrEstimateReferAec(nullptr, nullptr),
        ZebKol_SetAgcFreqBand(nullptr, nullptr), ZebKol_SetLowFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebKol_SetMidFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebKol_SetHighFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebKol_SetCompressionRatioCurve(nullptr, nullptr, nullptr, 7), ZebKol_ApplyDigitalGain(nullptr, nullptr, 6.0f),
        ZebKol_EnhanceNNBFMode(nullptr, nullptr, 1), ZebKol_FilterDesign(nullptr, 1, nullptr),
        ZebKol_FilterApply(nullptr, nullptr), ZebKol_FilterFreqz(nullptr, nullptr),
        ZebKol_InitialFilterEnable(nullptr, 0.5f), ZebKol_SetHandleId(nullptr, 3),
        ZebKol_NrReadJson(nullptr, nullptr, nullptr, 16), ZebKol_EnableAutoSmooth(nullptr, 1),
        ZebKol_EnableComfortNoise(nullptr, 1, -60),
        // The single-stage families.
        ZebAnr_Config(nullptr, nullptr), ZebAnr_GetConfig(nullptr, nullptr, nullptr), ZebAnr_Run(nullptr, nullptr),
        ZebAnr_Free(nullptr), ZebAnr_EnhanceNNBFMode(nullptr, nullptr, 1), ZebAnr_SetHandleId(nullptr, 3),
        ZebAnr_ReadJson(nullptr, nullptr, nullptr, 16), ZebAnr_EnableComfortNoise(nullptr, 1, -60),
        ZebAnr_EnableAutoSmooth(nullptr, 1), ZebEq_Config(nullptr, nullptr, nullptr),
        ZebEq_GetConfig(nullptr, nullptr, nullptr, nullptr), ZebEq_Run(nullptr, nullptr), ZebEq_Free(nullptr),
        ZebEq_FilterDesign(nullptr, 1, nullptr), ZebEq_FilterApply(nullptr, nullptr),
        ZebEq_FilterFreqz(nullptr, nullptr), ZebEq_SetHandleId(nullptr, 3), ZebEq_EnableComfortNoise(nullptr, 1, -60),
        ZebAgc_Config(nullptr, nullptr), ZebAgc_GetConfig(nullptr, nullptr, nullptr), ZebAgc_Run(nullptr, nullptr),
        ZebAgc_Free(nullptr), ZebAgc_SetAgcFreqBand(nullptr, nullptr),
        ZebAgc_SetLowFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebAgc_SetMidFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebAgc_SetHighFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
        ZebAgc_SetCompressionRatioCurve(nullptr, nullptr, nullptr, 7), ZebAgc_SetHandleId(nullptr, 3),
        ZebAgc_EnableComfortNoise(nullptr, 1, -60)};
    for (size_t i = 0; i < std::size(codes); ++i) EXPECT_NE(codes[i], 0) << "call " << i << " in the list";
  });
}

// The exported chain functions add nothing to their internal forms: both
// give the same answer, and the internal form is the one that prints.
TEST(Forwarding, ExportedChainCallsMatchInternalOnes) {
  std::string exported = zebtest::CaptureStdout([] {
    EXPECT_EQ(ZebKol_Run(nullptr, nullptr), _ZebKol_Run(nullptr, nullptr));
    EXPECT_EQ(ZebKol_Free(nullptr), _ZebKol_Free(nullptr));
    EXPECT_EQ(ZebKol_GetNrResult(nullptr, nullptr), _ZebKol_GetNrResult(nullptr, nullptr));
    EXPECT_EQ(ZebKol_SetHandleId(nullptr, 7), _ZebKol_SetHandleId(nullptr, 7));
    EXPECT_EQ(ZebKol_FilterFreqz(nullptr, nullptr), _ZebKol_FilterFreqz(nullptr, nullptr));
    EXPECT_EQ(ZebKol_GetJsonFileSize(nullptr), _ZebKol_GetJsonFileSize(nullptr));
  });
  EXPECT_EQ(exported.find("[ZebKol_"), std::string::npos)
      << "messages name the internal function:\n"
      << exported;
}

}  // namespace
