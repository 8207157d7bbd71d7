// Chain taps and small auxiliaries: NR and NR+EQ result taps, the echo
// reference entry, GetConfig and the beam-forming switch.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "chain_support.h"
#include "nr_core.h"

namespace {

constexpr int kFrame = 128;

using Records = zebtest::ChainRecords;

// A 16 kHz chain with or without noise-reduction and EQ memory.
class Taps : public ::testing::Test {
 protected:
  void Make(unsigned anrBuf, unsigned eqBuf, unsigned channels = 1) {
    chain_.reset(new zebtest::Chain(16000, channels, anrBuf, eqBuf, 0));
    kol_ = chain_->kol;
    ASSERT_NE(kol_, nullptr);
  }
  ALGO_KOL_RET Config(Records& r) { return chain_->Config(r); }
  AudioKolInternel* h() { return chain_->h(); }

  zebtest::ScopedEnv env_{"DML_PATH", zebtest::kNoLevelFile};
  std::unique_ptr<zebtest::Chain> chain_;
  KOL_HANDLE kol_ = nullptr;
};

TEST_F(Taps, NrResultNeedsNoiseReductionEnabledAndConfigured) {
  Make(1, 0);
  short out[kFrame];
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrResult(kol_, out), ALGO_KOL_ANR_RET_INVALID_ENABLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrResult]Fail! Please enable or buffer allocate NR.\t\n");
  h()->anr_config.anr_enable = 1;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrResult(kol_, out), ALGO_KOL_RET_INVALID_CALLING); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrResult]Fail! Need config before ZebKol_GetNrResult.\t\n");
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrResult(nullptr, out), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrResult]Fail! The kol handle is NULL.\t\n");
}

TEST_F(Taps, NrEqResultGuardsInOrderThenSilence) {
  Make(0, 0);
  short out[kFrame];
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrEqResult(nullptr, out), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrEqResult]Fail! The kol handle is  NULL.\t\n");
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrEqResult(kol_, out), ALGO_KOL_EQ_RET_INVALID_ENABLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrEqResult]Fail! Please allocate EQ buffer.\t\n");
  Make(0, 1);
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrEqResult(kol_, out), ALGO_KOL_EQ_RET_INVALID_ENABLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrEqResult]Fail! Please enable EQ.\t\n");
  h()->eq_config.eq_enable = 1;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_GetNrEqResult(kol_, out), ALGO_KOL_HPF_RET_INVALID_ENABLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_GetNrEqResult]Fail! Please enable HPF.\t\n");
  h()->hpf_config.hpf_enable = 1;
  EXPECT_EQ(ZebKol_GetNrEqResult(kol_, out), ALGO_KOL_RET_INVALID_CALLING);
  h()->is_kol_config_status = 1;
  std::fill(out, out + kFrame, 99);
  EXPECT_EQ(ZebKol_GetNrEqResult(kol_, out), ALGO_KOL_RET_SUCCESS);
  for (short s : out) EXPECT_EQ(s, 0);
}

TEST_F(Taps, EchoReferenceEntry) {
  Make(0, 0);
  short ref[kFrame] = {};
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_NrEstimateReferAec(kol_, ref), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_NrEstimateReferAec]Fail! ANR buffer does not allocate.\t\n");
  Make(1, 0, 2);
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_NrEstimateReferAec(kol_, ref), ALGO_KOL_RET_SUCCESS); }),
            "[ALGO_MSG_WRN] [_ZebKol_NrEstimateReferAec]Warning! Need enable ANR.\t\n");
  h()->anr_config.anr_enable = 2;  // neither on nor off: refused as without memory
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_NrEstimateReferAec(kol_, ref), ALGO_KOL_RET_INVALID_HANDLE); }),
            "[ALGO_MSG_ERR] [_ZebKol_NrEstimateReferAec]Fail! ANR buffer does not allocate.\t\n");
  h()->anr_config.anr_enable = 1;
  h()->anr_config.anr_filter_mode = 5;
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_NrEstimateReferAec(kol_, ref), ALGO_KOL_RET_SUCCESS); }),
            "[ALGO_MSG_WRN] [_ZebKol_NrEstimateReferAec]Warning! Only support anr filter mode 0~4.\t\n");
  EXPECT_EQ(h()->nr_inst[0]->aec_enable_flag, 0);

  h()->anr_config.anr_filter_mode = 0;
  std::vector<short> stereo = zebtest::Tone(16000, 1000.0f, 8000.0f, 1, 2);
  for (size_t i = 1; i < stereo.size(); i += 2) stereo[i] = 0;
  EXPECT_EQ(ZebKol_NrEstimateReferAec(kol_, stereo.data()), ALGO_KOL_RET_SUCCESS);
  for (int m = 0; m < 2; ++m) {
    NSinst_t* inst = h()->nr_inst[m];
    EXPECT_EQ(inst->aec_enable_flag, 1);
    for (int i = 0; i < kFrame; ++i) ASSERT_EQ(inst->pssAecIn[kFrame + i], stereo[2 * i + m]);
  }
  // Channel 1 carries a 1 kHz tone (bin 16), channel 2 silence.
  const float* s0 = h()->nr_inst[0]->fft_aec_buf_2ch;
  EXPECT_GT(std::hypot(s0[32], s0[33]), 1e5f);
  for (int i = 0; i < 258; ++i) ASSERT_EQ(h()->nr_inst[1]->fft_aec_buf_2ch[i], 0.0f);
}

TEST_F(Taps, GetConfigRoundTripAndWarnings) {
  Make(1, 1);
  Records r;
  EXPECT_EQ(zebtest::CaptureStdout([&] {
              EXPECT_EQ(ZebKol_GetConfig(kol_, &chain_->init, &r.anr, &r.eq, &r.hpf, nullptr, nullptr, &r.agc),
                        ALGO_KOL_RET_INVALID_CALLING);
            }),
            "[ALGO_MSG_ERR] [_ZebKol_GetConfig]Fail! Need config before ZebKol_GetConfig.\t\n");
  r.anr.anr_filter_mode = 3;
  r.eq.eq_gain_db[128] = -7;
  ASSERT_EQ(Config(r), ALGO_KOL_RET_SUCCESS);
  Records back;
  AudioProcessInit initBack;
  std::string out = zebtest::CaptureStdout([&] {
    EXPECT_EQ(ZebKol_GetConfig(kol_, &initBack, &back.anr, &back.eq, nullptr, nullptr, nullptr, &back.agc),
              ALGO_KOL_RET_SUCCESS);
    EXPECT_EQ(ZebKol_GetConfig(kol_, nullptr, &back.anr, &back.eq, &back.hpf, nullptr, nullptr, &back.agc),
              ALGO_KOL_RET_SUCCESS);
  });
  EXPECT_EQ(out, "[ALGO_MSG_WRN] [_ZebKol_GetConfig]Warning! AGC Buffer is NULL.\t\n"
                 "[ALGO_MSG_WRN] [_ZebKol_GetConfig]Warning! The hpf_config is NULL.\t\n"
                 "[ALGO_MSG_WRN] [_ZebKol_GetConfig]Warning! The audio_process_init is NULL.\t\n"
                 "[ALGO_MSG_WRN] [_ZebKol_GetConfig]Warning! AGC Buffer is NULL.\t\n");
  EXPECT_EQ(initBack.sample_rate, ZEB_KOL_SAMPLE_RATE_16000);
  EXPECT_EQ(back.anr.anr_filter_mode, 3u);
  EXPECT_EQ(back.eq.eq_gain_db[128], -7);
  EXPECT_EQ(zebtest::CaptureStdout([&] {
              EXPECT_EQ(ZebKol_GetConfig(nullptr, &initBack, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                        ALGO_KOL_RET_INVALID_HANDLE);
            }),
            "[ALGO_MSG_ERR] [_ZebKol_GetConfig]Fail! The kol handle is NULL.\t\n");
}

TEST_F(Taps, BeamFormingSwitchChangesNothing) {
  Make(1, 0);
  int bf = 0;
  EXPECT_EQ(ZebKol_EnhanceNNBFMode(kol_, nullptr, 1), ALGO_KOL_RET_INVALID_HANDLE);
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_EnhanceNNBFMode(kol_, &bf, 2), ALGO_KOL_RET_FAILED); }),
            "[ALGO_MSG_ERR] [_ZebKol_EnhanceNNBFMode]Fail! The is_enable should be set by 0 or 1.\t\n");
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_EnhanceNNBFMode(kol_, &bf, 1), ALGO_KOL_RET_FAILED); }),
            "[ALGO_MSG_ERR] [_ZebKol_EnhanceNNBFMode]Fail! The nr module should be opened.\t\n");
  h()->anr_config.anr_enable = 1;
  std::vector<char> before(chain_->buffer(), chain_->buffer() + sizeof(AudioKolInternel));
  EXPECT_EQ(zebtest::CaptureStdout([&] { EXPECT_EQ(ZebKol_EnhanceNNBFMode(kol_, &bf, 1), ALGO_KOL_RET_SUCCESS); }),
            "[ALGO_MSG_WRN] [_ZebKol_EnhanceNNBFMode]Warning! Current lib does not contain EnhanceNNBF mode.\t\n");
  EXPECT_EQ(0, std::memcmp(before.data(), chain_->buffer(), before.size()));
}

}  // namespace
