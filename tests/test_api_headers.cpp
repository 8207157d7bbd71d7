// Public C API: result codes, enumerations and record layouts as clients and
// the stage records that embed them rely on, and the behaviour of every
// handle-taking entry point when it is handed NULL.
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <type_traits>

#include "AudioProcessWrapper.h"
#include "test_support.h"
#include "zebaudio.h"

namespace {

struct EnumEntry {
  const char* name;
  long long value;
  long long expected;
};
#define ENTRY(name, expected) {#name, static_cast<long long>(name), expected}

const EnumEntry kKolCodes[] = {
    ENTRY(ALGO_KOL_RET_SUCCESS, 0),
    ENTRY(ALGO_KOL_RET_INIT_ERROR, 0x10000501),
    ENTRY(ALGO_KOL_RET_INVALID_HANDLE, 0x10000502),
    ENTRY(ALGO_KOL_RET_INVALID_SAMPLE_RATE, 0x10000503),
    ENTRY(ALGO_KOL_RET_INVALID_POINT_NUMBER, 0x10000504),
    ENTRY(ALGO_KOL_RET_INVALID_CHANNEL, 0x10000505),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_ENABLE, 0x10000506),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_MODE, 0x10000507),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_INTENSITY, 0x10000508),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL, 0x10000509),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED, 0x10000510),
    ENTRY(ALGO_KOL_ANR_RET_INVALID_FILTER_MODE, 0x10000511),
    ENTRY(ALGO_KOL_EQ_RET_INVALID_ENABLE, 0x10000512),
    ENTRY(ALGO_KOL_EQ_RET_INVALID_MODE, 0x10000513),
    ENTRY(ALGO_KOL_EQ_RET_INVALID_TABLE, 0x10000514),
    ENTRY(ALGO_KOL_HPF_RET_INVALID_ENABLE, 0x10000515),
    ENTRY(ALGO_KOL_HPF_RET_INVALID_MODE, 0x10000516),
    ENTRY(ALGO_KOL_HPF_RET_INVALID_TABLE, 0x10000517),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_ENABLE, 0x10000518),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_MODE, 0x10000519),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO, 0x10000520),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND, 0x10000521),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX, 0x10000522),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_GAIN_STEP, 0x10000523),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME, 0x10000524),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME, 0x10000525),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_NOISE_GATE, 0x10000526),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU, 0x10000527),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL, 0x10000528),
    ENTRY(ALGO_KOL_AGC_RET_INVALID_GAIN_INFO, 0x10000529),
    ENTRY(ALGO_KOL_RET_API_CONFLICT, 0x10000530),
    ENTRY(ALGO_KOL_RET_INVALID_CALLING, 0x10000531),
    ENTRY(ALGO_KOL_RET_FAILED, 0x10000532),
};

const EnumEntry kAnrCodes[] = {
    ENTRY(ALGO_ANR_RET_SUCCESS, 0),
    ENTRY(ALGO_ANR_RET_INIT_ERROR, 1),
    ENTRY(ALGO_ANR_RET_INVALID_HANDLE, 2),
    ENTRY(ALGO_ANR_RET_INVALID_SAMPLE_RATE, 3),
    ENTRY(ALGO_ANR_RET_INVALID_POINT_NUMBER, 4),
    ENTRY(ALGO_ANR_RET_INVALID_CHANNEL, 5),
    ENTRY(ALGO_ANR_RET_INVALID_ENABLE, 6),
    ENTRY(ALGO_ANR_RET_INVALID_MODE, 7),
    ENTRY(ALGO_ANR_RET_INVALID_INTENSITY, 8),
    ENTRY(ALGO_ANR_RET_INVALID_SMOOTH_LEVEL, 9),
    ENTRY(ALGO_ANR_RET_INVALID_CONVERGE_SPEED, 10),
    ENTRY(ALGO_ANR_RET_API_CONFLICT, 11),
    ENTRY(ALGO_ANR_RET_INVALID_CALLING, 12),
    ENTRY(ALGO_ANR_RET_INVALID_FILTER_MODE, 13),
    ENTRY(ALGO_ANR_RET_FAILED, 14),
};

const EnumEntry kEqCodes[] = {
    ENTRY(ALGO_EQ_RET_SUCCESS, 0),
    ENTRY(ALGO_EQ_RET_INIT_ERROR, 1),
    ENTRY(ALGO_EQ_RET_INVALID_HANDLE, 2),
    ENTRY(ALGO_EQ_RET_INVALID_SAMPLE_RATE, 3),
    ENTRY(ALGO_EQ_RET_INVALID_POINT_NUMBER, 4),
    ENTRY(ALGO_EQ_RET_INVALID_CHANNEL, 5),
    ENTRY(ALGO_EQ_RET_INVALID_ENABLE, 6),
    ENTRY(ALGO_EQ_RET_INVALID_MODE, 7),
    ENTRY(ALGO_EQ_RET_INVALID_TABLE, 8),
    ENTRY(ALGO_HPF_RET_INVALID_ENABLE, 9),
    ENTRY(ALGO_HPF_RET_INVALID_MODE, 10),
    ENTRY(ALGO_HPF_RET_INVALID_TABLE, 11),
    ENTRY(ALGO_EQ_RET_API_CONFLICT, 12),
    ENTRY(ALGO_EQ_RET_INVALID_CALLING, 13),
    ENTRY(ALGO_EQ_RET_FAILED, 14),
};

// The public AGC result has no frequency-band member: from 9 on it runs
// one below the stage's own numbering.
const EnumEntry kAgcCodes[] = {
    ENTRY(ALGO_AGC_RET_SUCCESS, 0),
    ENTRY(ALGO_AGC_RET_INIT_ERROR, 1),
    ENTRY(ALGO_AGC_RET_INVALID_HANDLE, 2),
    ENTRY(ALGO_AGC_RET_INVALID_SAMPLE_RATE, 3),
    ENTRY(ALGO_AGC_RET_INVALID_POINT_NUMBER, 4),
    ENTRY(ALGO_AGC_RET_INVALID_CHANNEL, 5),
    ENTRY(ALGO_AGC_RET_INVALID_ENABLE, 6),
    ENTRY(ALGO_AGC_RET_INVALID_MODE, 7),
    ENTRY(ALGO_AGC_RET_INVALID_COMPRESSION_RATIO, 8),
    ENTRY(ALGO_AGC_RET_INVALID_DROP_GAIN_MAX, 9),
    ENTRY(ALGO_AGC_RET_INVALID_GAIN_STEP, 10),
    ENTRY(ALGO_AGC_RET_INVALID_RELEASE_TIME, 11),
    ENTRY(ALGO_AGC_RET_INVALID_ATTACK_TIME, 12),
    ENTRY(ALGO_AGC_RET_INVALID_NOISE_GATE, 13),
    ENTRY(ALGO_AGC_RET_INVALID_NOISE_ATTENU, 14),
    ENTRY(ALGO_AGC_RET_INVALID_DROP_GAIN_LEVEL, 15),
    ENTRY(ALGO_AGC_RET_INVALID_GAIN_INFO, 16),
    ENTRY(ALGO_AGC_RET_API_CONFLICT, 17),
    ENTRY(ALGO_AGC_RET_INVALID_CALLING, 18),
    ENTRY(ALGO_AGC_RET_FAILED, 19),
};

const EnumEntry kSmallEnums[] = {
    ENTRY(ZEB_KOL_SAMPLE_RATE_8000, 8000),   ENTRY(ZEB_KOL_SAMPLE_RATE_16000, 16000),
    ENTRY(ZEB_KOL_SAMPLE_RATE_32000, 32000), ENTRY(ZEB_KOL_SAMPLE_RATE_48000, 48000),
    ENTRY(ZEB_ANR_SAMPLE_RATE_8000, 8000),   ENTRY(ZEB_ANR_SAMPLE_RATE_16000, 16000),
    ENTRY(ZEB_ANR_SAMPLE_RATE_32000, 32000), ENTRY(ZEB_ANR_SAMPLE_RATE_48000, 48000),
    ENTRY(ZEB_EQ_SAMPLE_RATE_8000, 8000),    ENTRY(ZEB_EQ_SAMPLE_RATE_16000, 16000),
    ENTRY(ZEB_EQ_SAMPLE_RATE_32000, 32000),  ENTRY(ZEB_EQ_SAMPLE_RATE_48000, 48000),
    ENTRY(ZEB_AGC_SAMPLE_RATE_8000, 8000),   ENTRY(ZEB_AGC_SAMPLE_RATE_16000, 16000),
    ENTRY(ZEB_AGC_SAMPLE_RATE_32000, 32000), ENTRY(ZEB_AGC_SAMPLE_RATE_48000, 48000),
    ENTRY(NR_SPEED_LOW, 0),                  ENTRY(NR_SPEED_MID, 1),
    ENTRY(NR_SPEED_HIGH, 2),                 ENTRY(AUDIO_HPF_FREQ_80, 0),
    ENTRY(AUDIO_HPF_FREQ_120, 1),            ENTRY(AUDIO_HPF_FREQ_150, 2),
    ENTRY(AUDIO_HPF_FREQ_500, 3),            ENTRY(AUDIO_HPF_FREQ_BUTT, 4),
    ENTRY(EQ_NOTCH_FILTER, 0),               ENTRY(EQ_HIGH_PASS_FILTER, 1),
    ENTRY(EQ_LOW_PASS_FILTER, 2),
};
#undef ENTRY

template <size_t N>
void ExpectTable(const EnumEntry (&table)[N]) {
  for (const EnumEntry& e : table) {
    EXPECT_EQ(e.value, e.expected) << e.name;
  }
}

template <size_t N>
void ExpectDistinct(const EnumEntry (&table)[N]) {
  std::set<long long> seen;
  for (const EnumEntry& e : table) {
    EXPECT_TRUE(seen.insert(e.value).second) << e.name << " repeats a value";
  }
}

TEST(ResultCodes, ChainCodesAsTabled) {
  ExpectTable(kKolCodes);
  ExpectDistinct(kKolCodes);
}

TEST(ResultCodes, ChainCodesSkipNonDecimalLowDigits) {
  // The block 0x501..0x532 is numbered as if it were decimal: no code has a
  // hexadecimal letter in its last two digits (0x1000050A does not exist).
  for (const EnumEntry& e : kKolCodes) {
    if (e.value == 0) continue;
    EXPECT_GE(e.value, 0x10000501LL) << e.name;
    EXPECT_LE(e.value, 0x10000532LL) << e.name;
    EXPECT_LE(e.value & 0xF, 9) << e.name;
    EXPECT_LE((e.value >> 4) & 0xF, 9) << e.name;
  }
}

TEST(ResultCodes, FamilyCodesAsTabled) {
  ExpectTable(kAnrCodes);
  ExpectDistinct(kAnrCodes);
  ExpectTable(kEqCodes);
  ExpectDistinct(kEqCodes);
  ExpectTable(kAgcCodes);
  ExpectDistinct(kAgcCodes);
}

TEST(ResultCodes, RatesAndSmallEnumsAsTabled) { ExpectTable(kSmallEnums); }

// Records embed these enumerations, so their width fixes record layouts.
static_assert(sizeof(ALGO_KOL_RET) == 4, "32-bit result code");
static_assert(sizeof(ZEB_KOL_SAMPLE_RATE) == 4 && sizeof(ZEB_ANR_SAMPLE_RATE) == 4 &&
                  sizeof(ZEB_EQ_SAMPLE_RATE) == 4 && sizeof(ZEB_AGC_SAMPLE_RATE) == 4,
              "rate enums are 32-bit");
static_assert(sizeof(NR_CONVERGE_SPEED) == 4 && sizeof(ZEB_HPF_FREQ) == 4 &&
                  sizeof(EQ_FILTER_TYPE) == 4,
              "setting enums are 32-bit");

static_assert(std::is_same<KOL_HANDLE, void*>::value && std::is_same<ANR_HANDLE, void*>::value &&
                  std::is_same<EQ_HANDLE, void*>::value && std::is_same<AGC_HANDLE, void*>::value &&
                  std::is_same<KOL_BF_HANDLE, void*>::value &&
                  std::is_same<ANR_BF_HANDLE, void*>::value,
              "handles are untyped pointers");

// Field order, types and offsets of the public records. Offsets follow from
// the stated order with 4-byte ints and 2-byte shorts; every size is a
// multiple of four so that records carved back to back stay aligned.
#define FIELD(rec, field, type, offset)                                            \
  static_assert(std::is_same<decltype(rec::field), type>::value, #rec "." #field); \
  static_assert(offsetof(rec, field) == (offset), #rec "." #field " offset")

FIELD(AudioProcessInit, point_number, unsigned int, 0);
FIELD(AudioProcessInit, channel, unsigned int, 4);
FIELD(AudioProcessInit, sample_rate, ZEB_KOL_SAMPLE_RATE, 8);
static_assert(sizeof(AudioProcessInit) == 12, "AudioProcessInit size");

FIELD(AudioKolBufferConfig, anr_enable, unsigned int, 0);
FIELD(AudioKolBufferConfig, eq_enable, unsigned int, 4);
FIELD(AudioKolBufferConfig, dr_enable, unsigned int, 8);
FIELD(AudioKolBufferConfig, vad_enable, unsigned int, 12);
FIELD(AudioKolBufferConfig, agc_enable, unsigned int, 16);
static_assert(sizeof(AudioKolBufferConfig) == 20, "AudioKolBufferConfig size");

FIELD(CngStruct, energy_dbfs, int, 0);
FIELD(CngStruct, point_number, short, 4);
FIELD(CngStruct, channel_num, int, 8);
static_assert(sizeof(CngStruct) == 12, "CngStruct size");

FIELD(AudioVadConfig, vad_enable, unsigned int, 0);
FIELD(AudioVadConfig, user_mode, unsigned int, 4);
FIELD(AudioVadConfig, vad_threshold, int, 8);
FIELD(AudioDereverbConfig, dereverb_enable, unsigned int, 0);
static_assert(sizeof(AudioDereverbConfig) == 4, "AudioDereverbConfig size");

FIELD(AudioAnrInit, point_number, unsigned int, 0);
FIELD(AudioAnrInit, channel, unsigned int, 4);
FIELD(AudioAnrInit, sample_rate, ZEB_ANR_SAMPLE_RATE, 8);

FIELD(AudioAnrConfig, anr_enable, unsigned int, 0);
FIELD(AudioAnrConfig, user_mode, unsigned int, 4);
FIELD(AudioAnrConfig, anr_intensity_band, int[6], 8);
FIELD(AudioAnrConfig, anr_intensity, int[7], 32);
FIELD(AudioAnrConfig, anr_smooth_level, unsigned int, 60);
FIELD(AudioAnrConfig, anr_converge_speed, NR_CONVERGE_SPEED, 64);
FIELD(AudioAnrConfig, anr_filter_mode, int, 68);
static_assert(sizeof(AudioAnrConfig) == 72, "AudioAnrConfig size");

FIELD(AudioEqInit, point_number, unsigned int, 0);
FIELD(AudioEqInit, channel, unsigned int, 4);
FIELD(AudioEqInit, sample_rate, ZEB_EQ_SAMPLE_RATE, 8);

FIELD(AudioEqConfig, eq_enable, unsigned int, 0);
FIELD(AudioEqConfig, user_mode, unsigned int, 4);
FIELD(AudioEqConfig, eq_gain_db, short[129], 8);
static_assert(sizeof(AudioEqConfig) == 268, "AudioEqConfig size: 266 bytes padded to 268");

FIELD(AudioHpfConfig, hpf_enable, unsigned int, 0);
FIELD(AudioHpfConfig, user_mode, unsigned int, 4);
FIELD(AudioHpfConfig, cutoff_frequency, ZEB_HPF_FREQ, 8);
static_assert(sizeof(AudioHpfConfig) == 12, "AudioHpfConfig size");

FIELD(AudioFilterConfig, type, EQ_FILTER_TYPE, 0);
FIELD(AudioFilterConfig, f0, int, 4);
FIELD(AudioFilterConfig, q_factor, int, 8);
FIELD(AudioFilterConfig, gain, int, 12);
static_assert(sizeof(AudioFilterConfig) == 16, "AudioFilterConfig size");

FIELD(AudioAgcInit, point_number, unsigned int, 0);
FIELD(AudioAgcInit, channel, unsigned int, 4);
FIELD(AudioAgcInit, sample_rate, ZEB_AGC_SAMPLE_RATE, 8);

FIELD(AgcGainInfo, gain_max, int, 0);
FIELD(AgcGainInfo, gain_min, int, 4);
FIELD(AgcGainInfo, gain_init, int, 8);

FIELD(AudioAgcConfig, agc_enable, unsigned int, 0);
FIELD(AudioAgcConfig, user_mode, unsigned int, 4);
FIELD(AudioAgcConfig, gain_info, AgcGainInfo, 8);
FIELD(AudioAgcConfig, drop_gain_max, unsigned int, 20);
FIELD(AudioAgcConfig, attack_time, unsigned int, 24);
FIELD(AudioAgcConfig, release_time, unsigned int, 28);
FIELD(AudioAgcConfig, compression_ratio_input, short[7], 32);
FIELD(AudioAgcConfig, compression_ratio_output, short[7], 46);
FIELD(AudioAgcConfig, drop_gain_threshold, int, 60);
FIELD(AudioAgcConfig, noise_gate_db, int, 64);
FIELD(AudioAgcConfig, noise_gate_attenuation_db, unsigned int, 68);
FIELD(AudioAgcConfig, gain_step, unsigned int, 72);
static_assert(sizeof(AudioAgcConfig) == 76, "AudioAgcConfig size");
#undef FIELD

// Every handle-taking entry point refuses a NULL handle with a non-zero
// code and without touching its other (also NULL) arguments.
TEST(NullArguments, ChainRefusesNullHandle) {
  // The messages are each operation's own concern: keep them off the log.
  zebtest::CaptureStdout([] {
    EXPECT_EQ(ZebKol_Init(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebKol_Reset(nullptr, nullptr, nullptr), nullptr);
    EXPECT_NE(ZebKol_Free(nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_Config(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_GetConfig(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_Run(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_GetNrResult(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_GetNrEqResult(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_GetVadOut(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_NrEstimateReferAec(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetAgcFreqBand(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetLowFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetMidFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetHighFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetCompressionRatioCurve(nullptr, nullptr, nullptr, 7),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_ApplyDigitalGain(nullptr, nullptr, 6.0f), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_EnhanceNNBFMode(nullptr, nullptr, 1), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_FilterDesign(nullptr, 1, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_FilterApply(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_FilterFreqz(nullptr, nullptr), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_InitialFilterEnable(nullptr, 0.5f), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_SetHandleId(nullptr, 3), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_NrReadJson(nullptr, nullptr, nullptr, 16), ALGO_KOL_RET_SUCCESS);
    EXPECT_EQ(ZebKol_GetJsonFileSize(nullptr), 0u);
    EXPECT_NE(ZebKol_EnableAutoSmooth(nullptr, 1), ALGO_KOL_RET_SUCCESS);
    EXPECT_NE(ZebKol_EnableComfortNoise(nullptr, 1, -60), ALGO_KOL_RET_SUCCESS);
  });
}

TEST(NullArguments, FamiliesRefuseNullHandle) {
  // The messages are each operation's own concern: keep them off the log.
  zebtest::CaptureStdout([] {
    EXPECT_EQ(ZebAnr_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAnr_Reset(nullptr, nullptr), nullptr);
    EXPECT_NE(ZebAnr_Config(nullptr, nullptr), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_GetConfig(nullptr, nullptr, nullptr), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_Run(nullptr, nullptr), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_Free(nullptr), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_EnhanceNNBFMode(nullptr, nullptr, 1), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_SetHandleId(nullptr, 3), ALGO_ANR_RET_SUCCESS);
    EXPECT_EQ(ZebAnr_GetJsonFileSize(nullptr), 0u);
    EXPECT_NE(ZebAnr_ReadJson(nullptr, nullptr, nullptr, 16), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_EnableComfortNoise(nullptr, 1, -60), ALGO_ANR_RET_SUCCESS);
    EXPECT_NE(ZebAnr_EnableAutoSmooth(nullptr, 1), ALGO_ANR_RET_SUCCESS);

    EXPECT_EQ(ZebEq_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebEq_Reset(nullptr, nullptr), nullptr);
    EXPECT_NE(ZebEq_Config(nullptr, nullptr, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_GetConfig(nullptr, nullptr, nullptr, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_Run(nullptr, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_Free(nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_FilterDesign(nullptr, 1, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_FilterApply(nullptr, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_FilterFreqz(nullptr, nullptr), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_SetHandleId(nullptr, 3), ALGO_EQ_RET_SUCCESS);
    EXPECT_NE(ZebEq_EnableComfortNoise(nullptr, 1, -60), ALGO_EQ_RET_SUCCESS);

    EXPECT_EQ(ZebAgc_Init(nullptr, nullptr), nullptr);
    EXPECT_EQ(ZebAgc_Reset(nullptr, nullptr), nullptr);
    EXPECT_NE(ZebAgc_Config(nullptr, nullptr), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_GetConfig(nullptr, nullptr, nullptr), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_Run(nullptr, nullptr), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_Free(nullptr), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetAgcFreqBand(nullptr, nullptr), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetLowFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetMidFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetHighFreqCompressionRatioCurve(nullptr, nullptr, nullptr),
              ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetCompressionRatioCurve(nullptr, nullptr, nullptr, 7),
              ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_SetHandleId(nullptr, 3), ALGO_AGC_RET_SUCCESS);
    EXPECT_NE(ZebAgc_EnableComfortNoise(nullptr, 1, -60), ALGO_AGC_RET_SUCCESS);
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
