// Stage records carved out of the working buffers: field order, the few
// adjacencies that algorithms rely on, sizes, the converter's buffer size
// and the tuning defaults.
#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
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

constexpr bool Ascending(std::initializer_list<size_t> offsets) {
  bool first = true;
  size_t prev = 0;
  for (size_t o : offsets) {
    if (!first && o <= prev) return false;
    prev = o;
    first = false;
  }
  return true;
}

#define OFF(T, f) offsetof(T, f)

// Field order is the contract between the carve-out and the stage code.
static_assert(OFF(NSinst_t, fs) == 0, "");
static_assert(Ascending({OFF(NSinst_t, fs), OFF(NSinst_t, magnLen), OFF(NSinst_t, aggrMode),
                         OFF(NSinst_t, density), OFF(NSinst_t, counter), OFF(NSinst_t, smooth),
                         OFF(NSinst_t, featureExtractionParams), OFF(NSinst_t, histSpecDiff),
                         OFF(NSinst_t, converged_flag), OFF(NSinst_t, initial_filter_enable),
                         OFF(NSinst_t, NRInternalWorkBuf), OFF(NSinst_t, process_bins),
                         OFF(NSinst_t, PH1), OFF(NSinst_t, InternalParams),
                         OFF(NSinst_t, frequency_buffer), OFF(NSinst_t, noise_mix_ratio),
                         OFF(NSinst_t, Sf), OFF(NSinst_t, SWt), OFF(NSinst_t, xi),
                         OFF(NSinst_t, b_mean), OFF(NSinst_t, convolution_result),
                         OFF(NSinst_t, NNStateWorkBuf), OFF(NSinst_t, mix_enable),
                         OFF(NSinst_t, outlen), OFF(NSinst_t, SRCOutputWorkBuf_ptr),
                         OFF(NSinst_t, aec_enable_flag), OFF(NSinst_t, ret),
                         OFF(NSinst_t, cmi_nospeechCnt), OFF(NSinst_t, filteredSpectrum),
                         OFF(NSinst_t, dbg_level)}),
              "NSinst_t order");
// Mode 0 reads denoiseBound one and two entries past its end: the words of
// gainmap and blockInd, which must follow it directly.
static_assert(OFF(NSinst_t, gainmap) == OFF(NSinst_t, denoiseBound) + NR_BAND_TABLE_BINS * 4, "");
static_assert(OFF(NSinst_t, blockInd) == OFF(NSinst_t, gainmap) + 4, "");
static_assert(sizeof(complex_t) == 8, "");

static_assert(Ascending({OFF(NSWorkingBuf_t, magn), OFF(NSWorkingBuf_t, previousEstimateStsa),
                         OFF(NSWorkingBuf_t, real), OFF(NSWorkingBuf_t, imag),
                         OFF(NSWorkingBuf_t, theFilterTmp)}),
              "");
static_assert(sizeof(NSWorkingBuf_t) == (10 * NR_MAGN_LEN_BINS + NR_ANA_LEN_SAMPLES) * 4, "");
static_assert(sizeof(NSParaExtract_t) == 20 * 4, "");
static_assert(OFF(NSParaExtract_t, thresWeightSpecFlat) == 18 * 4, "");
static_assert(sizeof(NSCJsoninst_t) == 44 * 4, "");
static_assert(Ascending({OFF(NSCJsoninst_t, fmode0_alpha_dd_pr_snr),
                         OFF(NSCJsoninst_t, fmode1_Vwin), OFF(NSCJsoninst_t, fmode3_alpha_spp),
                         OFF(NSCJsoninst_t, fmode5_alpha1), OFF(NSCJsoninst_t, farfield_scenario),
                         OFF(NSCJsoninst_t, sinetone_scenario),
                         OFF(NSCJsoninst_t, covermic_alpha1)}),
              "");

static_assert(Ascending({OFF(DenoiseState, analysis_mem), OFF(DenoiseState, memid),
                         OFF(DenoiseState, lastg), OFF(DenoiseState, rnn), OFF(DenoiseState, X),
                         OFF(DenoiseState, gf), OFF(DenoiseState, pitch_buf2),
                         OFF(DenoiseState, tmp_buf), OFF(DenoiseState, normf_buf),
                         OFF(DenoiseState, eq_flag), OFF(DenoiseState, Y),
                         OFF(DenoiseState, comb_buf)}),
              "");
static_assert(Ascending({OFF(CommonState, init), OFF(CommonState, kfft),
                         OFF(CommonState, half_window), OFF(CommonState, comb_hann_window),
                         OFF(CommonState, calulation_temp_memory2)}),
              "");
static_assert(sizeof(GRUState) == (24 + 48 + 96) * 4, "");
static_assert(sizeof(NNLayerState) == (4 * 128 + 2 * 384) * 4, "");
static_assert(Ascending({OFF(RNNModel, input_dense_size), OFF(RNNModel, input_dense),
                         OFF(RNNModel, vad_gru), OFF(RNNModel, noise_gru),
                         OFF(RNNModel, denoise_gru), OFF(RNNModel, denoise_output),
                         OFF(RNNModel, vad_output)}),
              "");
static_assert(Ascending({OFF(GRULayer, bias), OFF(GRULayer, recurrent_weights),
                         OFF(GRULayer, nb_inputs), OFF(GRULayer, activation)}),
              "");
static_assert(Ascending({OFF(kiss_fft_state, nfft), OFF(kiss_fft_state, scale),
                         OFF(kiss_fft_state, shift), OFF(kiss_fft_state, factors),
                         OFF(kiss_fft_state, bitrev), OFF(kiss_fft_state, twiddles),
                         OFF(kiss_fft_state, arch_fft)}),
              "");

static_assert(Ascending({OFF(EQinst_t, isApplyDgainInWindow), OFF(EQinst_t, EQ_AddiScalingFactor),
                         OFF(EQinst_t, eq_dB), OFF(EQinst_t, EQ_weight),
                         OFF(EQinst_t, HPF_AddiScalingFactor), OFF(EQinst_t, sample_rate),
                         OFF(EQinst_t, nor_b0), OFF(EQinst_t, a0), OFF(EQinst_t, iir_type),
                         OFF(EQinst_t, y_states), OFF(EQinst_t, dbg_level)}),
              "");

static_assert(OFF(AGCinst_t, check_number) == 0, "");
static_assert(Ascending({OFF(AGCinst_t, isUnderNoiseGate), OFF(AGCinst_t, satu_flag),
                         OFF(AGCinst_t, analog_gain_old), OFF(AGCinst_t, vol_max),
                         OFF(AGCinst_t, vol_old), OFF(AGCinst_t, DGain),
                         OFF(AGCinst_t, gain_step), OFF(AGCinst_t, compression_ratio_input),
                         OFF(AGCinst_t, compression_ratio_output),
                         OFF(AGCinst_t, noise_gate_counter), OFF(AGCinst_t, buffer_size),
                         OFF(AGCinst_t, FftInWindow_agc), OFF(AGCinst_t, data_buf),
                         OFF(AGCinst_t, TmpData), OFF(AGCinst_t, dbg_level)}),
              "");

// A curve scan that runs past in[6] reads on into the next band's row and
// from the last row into the output curves.
static_assert(OFF(CompressionRatioConfig, compressionRatioArrayOutput) ==
                  FREQ_AGC_BANDS * FREQ_AGC_CURVE_POINTS * 4,
              "");
static_assert(Ascending({OFF(FreqAgcHandle, freq_bin_energy), OFF(FreqAgcHandle, apply_gain),
                         OFF(FreqAgcHandle, freq_bin_band), OFF(FreqAgcHandle, power),
                         OFF(FreqAgcHandle, compression_ratio_config),
                         OFF(FreqAgcHandle, peak_value), OFF(FreqAgcHandle, agc_init),
                         OFF(FreqAgcHandle, noise_flag), OFF(FreqAgcHandle, fft_buf_agc),
                         OFF(FreqAgcHandle, FFT_workingBuff), OFF(FreqAgcHandle, fbf_ip),
                         OFF(FreqAgcHandle, fft_2ch_for_agc), OFF(FreqAgcHandle, fbf_wfft),
                         OFF(FreqAgcHandle, ifft_out_half_prev_2ch),
                         OFF(FreqAgcHandle, agc_config), OFF(FreqAgcHandle, dbg_level)}),
              "");

static_assert(sizeof(cng_t) == (CNG_BINS + 2) * 4, "");
static_assert(OFF(cng_t, comfort_noise_mul_left_shift) == (CNG_BINS + 1) * 4, "");

static_assert(Ascending({OFF(SRC_inst_t, FirFactor), OFF(SRC_inst_t, factor),
                         OFF(SRC_inst_t, src_struct_), OFF(SRC_inst_t, src_work_buf),
                         OFF(SRC_inst_t, FilterCoeff), OFF(SRC_inst_t, dbg_level),
                         OFF(SRC_inst_t, output_dump), OFF(SRC_inst_t, dump_flag)}),
              "");
static_assert(Ascending({OFF(SRCWorkingBuf_t, point_buffer_len), OFF(SRCWorkingBuf_t, inbuf),
                         OFF(SRCWorkingBuf_t, outbuf), OFF(SRCWorkingBuf_t, filter_order),
                         OFF(SRCWorkingBuf_t, DataBuf), OFF(SRCWorkingBuf_t, diff)}),
              "");

// The core's copies of the user records keep the public layout.
template <typename Internal, typename Public>
constexpr bool SameSize() {
  return sizeof(Internal) == sizeof(Public);
}
static_assert(SameSize<_AudioAnrInit, AudioAnrInit>(), "");
static_assert(SameSize<_AudioAnrConfig, AudioAnrConfig>(), "");
static_assert(OFF(_AudioAnrConfig, anr_converge_speed) == OFF(AudioAnrConfig, anr_converge_speed),
              "");
static_assert(SameSize<_AudioEqInit, AudioEqInit>(), "");
static_assert(SameSize<_AudioEqConfig, AudioEqConfig>(), "");
static_assert(SameSize<_AudioHpfConfig, AudioHpfConfig>(), "");
static_assert(SameSize<_AudioAgcInit, AudioAgcInit>(), "");
static_assert(SameSize<_AudioAgcConfig, AudioAgcConfig>(), "");
static_assert(OFF(_AudioAgcConfig, gain_step) == OFF(AudioAgcConfig, gain_step), "");
static_assert(OFF(_AudioAgcConfig, compression_ratio_output) ==
                  OFF(AudioAgcConfig, compression_ratio_output),
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
  zebtest::ScopedEnv env("DML_PATH", "/nonexistent/zebaudio/level.json");
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
  zebtest::ScopedEnv env("DML_PATH", "/nonexistent/zebaudio/level.json");
  const SrcConversionMode unknown = static_cast<SrcConversionMode>(20);
  unsigned int size = 1;
  std::string out = zebtest::CaptureStdout([&] { size = ZebSrc_GetBufferSize(unknown); });
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(out, "[ALGO_MSG_ERR] [SRC]Fail! Unsupported SRC mode\r\n");
  // The message is an error: gated by bit 0 of the level.
  out = zebtest::CaptureStdout([&] { EXPECT_EQ(GetSrcFactor(unknown, 6), 0); });
  EXPECT_EQ(out, "");
}

TEST(NrTuningDefaults, EveryFieldHasItsValue) {
  const NSCJsoninst_t& d = kNrInternalParamsDefault;
  EXPECT_FLOAT_EQ(d.fmode0_alpha_dd_pr_snr, 0.98f);
  EXPECT_FLOAT_EQ(d.fmode0_delta_prob_range, 0.3f);
  EXPECT_EQ(d.fmode1_Vwin, 15);
  EXPECT_FLOAT_EQ(d.fmode1_Bmin, 4.98f);
  EXPECT_FLOAT_EQ(d.fmode1_delta_y, 4.6f);
  EXPECT_FLOAT_EQ(d.fmode1_delta_s, 1.67f);
  EXPECT_FLOAT_EQ(d.fmode1_delta_yt, 3.0f);
  EXPECT_FLOAT_EQ(d.fmode1_alpha_s, 0.9f);
  EXPECT_FLOAT_EQ(d.fmode1_alpha_d, 0.85f);
  EXPECT_FLOAT_EQ(d.fmode1_alpha_xi, 0.7f);
  EXPECT_FLOAT_EQ(d.fmode1_alpha_eta, 0.95f);
  EXPECT_FLOAT_EQ(d.fmode3_delta_s, 5.0f);
  EXPECT_FLOAT_EQ(d.fmode3_alpha_spp, 0.2f);
  EXPECT_EQ(d.fmode4_averageFrame, 2);
  EXPECT_FLOAT_EQ(d.fmode4_eta_opt, 31.622776f);
  EXPECT_FLOAT_EQ(d.fmode4_alpha_spp, 0.9f);
  EXPECT_FLOAT_EQ(d.fmode4_alpha_eta, 0.98f);
  EXPECT_FLOAT_EQ(d.fmode4_alpha_N, 0.8f);
  EXPECT_EQ(d.fmode5_averageFrame, 10);
  EXPECT_FLOAT_EQ(d.fmode5_eta_opt, 31.622776f);
  EXPECT_FLOAT_EQ(d.fmode5_alpha_spp, 0.9f);
  EXPECT_FLOAT_EQ(d.fmode5_alpha_eta, 0.98f);
  EXPECT_FLOAT_EQ(d.fmode5_alpha_N, 0.8f);
  EXPECT_FLOAT_EQ(d.fmode5_bound1, 0.0f);
  EXPECT_FLOAT_EQ(d.fmode5_delta1, 1.0f);
  EXPECT_FLOAT_EQ(d.fmode5_alpha1, 0.1f);
  EXPECT_EQ(d.farfield_scenario, 0);
  EXPECT_EQ(d.farfield_bound1, 1000);
  EXPECT_EQ(d.farfield_bound2, 300);
  EXPECT_FLOAT_EQ(d.farfield_alpha1, 0.8f);
  EXPECT_FLOAT_EQ(d.farfield_alpha2, 0.1f);
  EXPECT_FLOAT_EQ(d.farfield_delta1, 0.002f);
  EXPECT_FLOAT_EQ(d.farfield_delta2, 0.2f);
  EXPECT_EQ(d.sinetone_scenario, 0);
  EXPECT_EQ(d.sinetone_delta1, 10);
  EXPECT_EQ(d.sinetone_delta2, 10);
  EXPECT_FLOAT_EQ(d.sinetone_delta3, 3.0f);
  EXPECT_FLOAT_EQ(d.sinetone_alpha1, 0.0f);
  EXPECT_EQ(d.covermic_scenario, 0);
  EXPECT_EQ(d.covermic_bound1, 600);
  EXPECT_FLOAT_EQ(d.covermic_delta1, 0.5f);
  EXPECT_FLOAT_EQ(d.covermic_delta2, 1.0f);
  EXPECT_FLOAT_EQ(d.covermic_delta3, 1000.0f);
  EXPECT_FLOAT_EQ(d.covermic_alpha1, 0.99f);
}

}  // namespace
