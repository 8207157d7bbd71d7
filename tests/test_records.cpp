// Stage records carved out of the working buffers: the adjacencies that
// algorithms rely on, sizes, the converter's buffer size and the tuning
// defaults.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "AudioSRCProcess.h"
#include "ComfortNoise.h"
#include "DynamicRangeProcessing.h"
#include "agc.h"
#include "eq_filter.h"
#include "kiss_fft.h"
#include "nr_NN.h"
#include "nr_core.h"
#include "rnn.h"
#include "test_support.h"
#include "zebaudio/zeb_agc.h"
#include "zebaudio/zeb_anr.h"
#include "zebaudio/zeb_eq.h"

namespace {

#define OFF(T, f) offsetof(T, f)

// Mode 0 reads denoiseBound one and two entries past its end: the words of
// gainmap and blockInd, which must follow it directly.
static_assert(OFF(NSinst_t, gainmap) == OFF(NSinst_t, denoiseBound) + NR_BAND_TABLE_BINS * 4, "");
static_assert(OFF(NSinst_t, blockInd) == OFF(NSinst_t, gainmap) + 4, "");
static_assert(OFF(NSinst_t, fs) == 0 && OFF(AGCinst_t, check_number) == 0, "");
static_assert(sizeof(complex_t) == 8, "");
static_assert(sizeof(NSWorkingBuf_t) == (10 * NR_MAGN_LEN_BINS + NR_ANA_LEN_SAMPLES) * 4, "");
static_assert(sizeof(NSCJsoninst_t) == 44 * 4, "the tuning file fills 44 words");
static_assert(sizeof(GRUState) == (24 + 48 + 96) * 4, "");
static_assert(sizeof(NNLayerState) == (4 * 128 + 2 * 384) * 4, "");
// A curve scan that runs past in[6] reads on into the next band's row and
// from the last row into the output curves.
static_assert(OFF(CompressionRatioConfig, compressionRatioArrayOutput) ==
                  FREQ_AGC_BANDS * FREQ_AGC_CURVE_POINTS * 4,
              "");
static_assert(sizeof(cng_t) == (CNG_BINS + 2) * 4, "");
static_assert(OFF(cng_t, comfort_noise_mul_left_shift) == (CNG_BINS + 1) * 4, "");

// The core's copies of the user records keep the public layout.
static_assert(sizeof(_AudioAnrInit) == sizeof(AudioAnrInit) && sizeof(_AudioAnrConfig) == sizeof(AudioAnrConfig) &&
                  OFF(_AudioAnrConfig, anr_converge_speed) == OFF(AudioAnrConfig, anr_converge_speed),
              "");
static_assert(sizeof(_AudioEqInit) == sizeof(AudioEqInit) && sizeof(_AudioEqConfig) == sizeof(AudioEqConfig) &&
                  sizeof(_AudioHpfConfig) == sizeof(AudioHpfConfig),
              "");
static_assert(sizeof(_AudioAgcInit) == sizeof(AudioAgcInit) && sizeof(_AudioAgcConfig) == sizeof(AudioAgcConfig) &&
                  OFF(_AudioAgcConfig, gain_step) == OFF(AudioAgcConfig, gain_step) &&
                  OFF(_AudioAgcConfig, compression_ratio_output) == OFF(AudioAgcConfig, compression_ratio_output),
              "");

// The working buffers carve records back to back with no padding: every
// size is a multiple of 4, and of the pointer size where a record holds
// pointers, so the next record stays aligned.
template <typename T>
constexpr bool Carvable() {
  return sizeof(T) % 4 == 0 && sizeof(T) % alignof(T) == 0;
}
static_assert(Carvable<NSinst_t>() && Carvable<NSWorkingBuf_t>() && Carvable<NSCJsoninst_t>() &&
                  Carvable<DenoiseState>() && Carvable<CommonState>() && Carvable<GRUState>() &&
                  Carvable<NNLayerState>() && Carvable<kiss_fft_state>() &&
                  Carvable<EQinst_t>() && Carvable<AGCinst_t>() && Carvable<FreqAgcHandle>() &&
                  Carvable<cng_t>() && Carvable<SRC_inst_t>(),
              "");
static_assert(KISS_NN_FFT_POINTS * sizeof(kiss_twiddle_cpx) % 8 == 0, "");
static_assert(KISS_NN_FFT_POINTS * sizeof(short) % 8 == 0, "");

#undef OFF

unsigned int SrcSizeOnTarget(unsigned int factor) {
  return 6144 * factor + 3072 * (factor + 1) + 1056;
}

TEST(SrcBufferSize, FollowsTheFactorOfEachMode) {
  const int factors[20] = {2, 4, 6, 1, 2, 3, 1, 1, 3, 1, 1, 2, 1, 2, 4, 1, 3, 3, 3, 1};
  zebtest::ScopedEnv env("DML_PATH", zebtest::kNoLevelFile);
  const unsigned int growth =
      static_cast<unsigned int>(sizeof(SRC_inst_t)) - SRC_TARGET_RECORD_BYTES;
  for (int mode = 0; mode < 20; ++mode) {
    SCOPED_TRACE(mode);
    const SrcConversionMode m = static_cast<SrcConversionMode>(mode);
    ASSERT_EQ(GetSrcFactor(m, 7), factors[mode]);
    const unsigned int size = ZebSrc_GetBufferSize(m);
    // The law holds exactly where the record has its target size; a wider
    // record adds its growth, rounded so that the next buffer stays aligned.
    const unsigned int target = SrcSizeOnTarget(factors[mode]);
    EXPECT_GE(size, target + growth);
    EXPECT_LT(size, target + growth + sizeof(void*));
    EXPECT_EQ(size % sizeof(void*), 0u);
    // The record and its three work areas fit.
    const unsigned int areas = SRC_MAX_POINT_NUMBER * 2 * (1 + factors[mode]) +
                               (SRC_MAX_POINT_NUMBER * factors[mode] + 243) * 4;
    EXPECT_LE(sizeof(SRC_inst_t) + areas, size);
  }
  if (sizeof(SRC_inst_t) == SRC_TARGET_RECORD_BYTES) {
    EXPECT_EQ(ZebSrc_GetBufferSize(SRC_8k_to_16k), 22560u);
  }
}

TEST(SrcBufferSize, UnknownModeIsZeroWithMessage) {
  zebtest::ScopedEnv env("DML_PATH", zebtest::kNoLevelFile);
  const SrcConversionMode unknown = static_cast<SrcConversionMode>(20);
  unsigned int size = 1;
  std::string out = zebtest::CaptureStdout([&] { size = ZebSrc_GetBufferSize(unknown); });
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [SRC]Fail! Unsupported SRC mode\r\n");
  // The message is an error: gated by bit 0 of the level.
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(GetSrcFactor(unknown, 6), 0); });
  EXPECT_EQ(out, "");
}

// One value of each group: enough to tell the table and its field order.
TEST(NrTuningDefaults, OneValueOfEachGroup) {
  const NSCJsoninst_t& d = kNrInternalParamsDefault;
  EXPECT_FLOAT_EQ(d.fmode0_alpha_dd_pr_snr, 0.98f);
  EXPECT_EQ(d.fmode1_Vwin, 15);
  EXPECT_FLOAT_EQ(d.fmode3_alpha_spp, 0.2f);
  EXPECT_FLOAT_EQ(d.fmode4_eta_opt, 31.622776f);
  EXPECT_EQ(d.fmode5_averageFrame, 10);
  EXPECT_EQ(d.farfield_bound1, 1000);
  EXPECT_FLOAT_EQ(d.sinetone_delta3, 3.0f);
  EXPECT_FLOAT_EQ(d.covermic_alpha1, 0.99f);
}

}  // namespace
