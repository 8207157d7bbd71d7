// The setters every family shares, checked once over all of them: the handle
// id, clamped to 0..100 with a warning and a note of the value taken, and the
// comfort-noise floor, written for both channels whether or not the noise is
// switched on.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "AudioAgcProcess.h"
#include "AudioAnrProcess.h"
#include "AudioEqProcess.h"
#include "chain_support.h"
#include "test_support.h"

namespace {

using zebtest::CaptureStdout;

// The texts differ by the family's name and, in the AGC, by the full stop.
template <typename Rec, typename Ret>
void ExpectHandleIdRule(void* h, Ret (*set)(void*, int), const std::string& prefix, const std::string& name,
                        const std::string& stop, Ret invalidHandle) {
  const std::string fn = "[_Zeb" + prefix + "_SetHandleId]", id = "The " + name + " handle id ";
  const Rec* r = static_cast<const Rec*>(h);
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(set(h, 101), Ret{}); }),
            zebtest::Wrn(fn + "Warning! " + id + "exceed 100" + stop + "\t\n") +
                zebtest::Msg(fn + "Set the " + name + " handle id as 100" + stop + "\t\n"));
  EXPECT_EQ(r->dump_id, 100);
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(set(h, -3), Ret{}); }),
            zebtest::Wrn(fn + "Warning! " + id + "is negative number" + stop + "\t\n") +
                zebtest::Msg(fn + "Set the " + name + " handle id as 0" + stop + "\t\n"));
  EXPECT_EQ(r->dump_id, 0);
  CaptureStdout([&] { set(h, 42); });
  EXPECT_EQ(r->dump_id, 42);
  CaptureStdout([&] { EXPECT_EQ(set(nullptr, 1), invalidHandle); });
}

// Switched off, the floor is still written to both channels; the message
// carries the stage's tag.
template <typename Rec, typename Ret>
void ExpectComfortNoiseFloor(void* h, Ret (*enable)(void*, int, int), const std::string& tag, Ret invalidHandle) {
  const Rec* r = static_cast<const Rec*>(h);
  EXPECT_EQ(CaptureStdout([&] { EXPECT_EQ(enable(h, 0, -70), Ret{}); }),
            zebtest::Msg("[" + tag + "] Comfort noise enable.\t\n"));
  EXPECT_EQ(r->cng_enable, 0);
  const float floor = (float)std::pow(10.0, (-70.0 + 24.21) / 10.0);
  for (int k = 0; k < 129; ++k) {
    ASSERT_EQ(r->cng_working_buffer[0]->dMinPow[k], floor) << tag << " bin " << k;
    ASSERT_EQ(r->cng_working_buffer[1]->dMinPow[k], floor) << tag << " bin " << k;
  }
  CaptureStdout([&] { EXPECT_EQ(enable(h, 1, -60), Ret{}); });
  EXPECT_EQ(r->cng_enable, 1);
  CaptureStdout([&] { EXPECT_EQ(enable(nullptr, 1, -60), invalidHandle); });
}

class FamilySetters : public ::testing::Test {
 protected:
  template <typename Init, typename Handle>
  Handle Open(Handle (*init)(char*, Init*), unsigned int size) {
    work_.assign(size / sizeof(void*) + 1, nullptr);
    Init rec{128u, 2u, {}};
    rec.sample_rate = static_cast<decltype(rec.sample_rate)>(16000);
    Handle h = nullptr;
    CaptureStdout([&] { h = init(reinterpret_cast<char*>(work_.data()), &rec); });
    return h;
  }
  zebtest::ScopedEnv level_{"DML_PATH", zebtest::kNoLevelFile};
  std::vector<void*> work_;
};

TEST_F(FamilySetters, Chain) {
  zebtest::Chain c(16000, 2);
  ASSERT_NE(c.kol, nullptr);
  ExpectHandleIdRule<AudioKolInternel>(c.kol, ZebKol_SetHandleId, "Kol", "kol", ".", ALGO_KOL_RET_INVALID_HANDLE);
}

TEST_F(FamilySetters, NoiseReduction) {
  ANR_HANDLE h = Open(ZebAnr_Init, ZebAnr_GetBufferSize());
  ASSERT_NE(h, nullptr);
  ExpectHandleIdRule<AudioAnrInternel>(h, ZebAnr_SetHandleId, "Anr", "anr", ".", ALGO_ANR_RET_INVALID_HANDLE);
  ExpectComfortNoiseFloor<AudioAnrInternel>(h, ZebAnr_EnableComfortNoise, "ANR", ALGO_ANR_RET_INVALID_HANDLE);
}

TEST_F(FamilySetters, Equaliser) {
  EQ_HANDLE h = Open(ZebEq_Init, ZebEq_GetBufferSize());
  ASSERT_NE(h, nullptr);
  ExpectHandleIdRule<AudioEqInternel>(h, ZebEq_SetHandleId, "Eq", "eq", ".", ALGO_EQ_RET_INVALID_HANDLE);
  ExpectComfortNoiseFloor<AudioEqInternel>(h, ZebEq_EnableComfortNoise, "EQ", ALGO_EQ_RET_INVALID_HANDLE);
}

TEST_F(FamilySetters, GainControl) {
  AGC_HANDLE h = Open(ZebAgc_Init, ZebAgc_GetBufferSize());
  ASSERT_NE(h, nullptr);
  ExpectHandleIdRule<AudioAgcInternel>(h, ZebAgc_SetHandleId, "Agc", "agc", "", ALGO_AGC_RET_INVALID_HANDLE);
  // The AGC's comfort-noise line is printed whatever the level.
  static_cast<AudioAgcInternel*>(h)->agc_inst[0]->dbg_level = 0;
  ExpectComfortNoiseFloor<AudioAgcInternel>(h, ZebAgc_EnableComfortNoise, "AGC", ALGO_AGC_RET_INVALID_HANDLE);
}

}  // namespace
