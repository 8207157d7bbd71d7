// A chain handle in test-owned memory, shared by the chain's test programs.
// Header-only: it needs the library's headers, which the shared helper
// library does not see.
#ifndef ZEB_TESTS_CHAIN_SUPPORT_H
#define ZEB_TESTS_CHAIN_SUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "AudioProcess.h"
#include "test_support.h"
#include "zebaudio.h"

namespace zebtest {

// The chain's stage records, all zero: every stage off.
struct ChainRecords {
  AudioAnrConfig anr;
  AudioEqConfig eq;
  AudioHpfConfig hpf;
  AudioAgcConfig agc;
  ChainRecords() {
    std::memset(&anr, 0, sizeof(anr));
    std::memset(&eq, 0, sizeof(eq));
    std::memset(&hpf, 0, sizeof(hpf));
    std::memset(&agc, 0, sizeof(agc));
  }
};

// Init's messages are swallowed; kol is null where Init refused.
struct Chain {
  Chain(int rateHz, unsigned channels, unsigned anrBuf = 1, unsigned eqBuf = 1, unsigned agcBuf = 1) {
    std::memset(&sw, 0, sizeof(sw));
    sw.anr_enable = anrBuf;
    sw.eq_enable = eqBuf;
    sw.agc_enable = agcBuf;
    init = {128u, channels, static_cast<ZEB_KOL_SAMPLE_RATE>(rateHz)};
    work.assign(ZebKol_GetBufferSize(&sw) / sizeof(void*) + 1, nullptr);
    Init();
  }
  char* buffer() { return reinterpret_cast<char*>(work.data()); }
  AudioKolInternel* h() const { return static_cast<AudioKolInternel*>(kol); }
  KOL_HANDLE Init() {
    CaptureStdout([&] { kol = ZebKol_Init(buffer(), &init, &sw); });
    return kol;
  }
  // Config with the records; its messages go to lastText.
  ALGO_KOL_RET Config(ChainRecords r = ChainRecords()) {
    ALGO_KOL_RET ret = ALGO_KOL_RET_FAILED;
    lastText = CaptureStdout([&] { ret = ZebKol_Config(kol, &r.anr, &r.eq, &r.hpf, nullptr, nullptr, &r.agc); });
    return ret;
  }
  // Every whole frame of an interleaved signal in turn; each must succeed.
  std::vector<short> Run(std::vector<short> x) {
    const size_t step = 128u * init.channel;
    for (size_t at = 0; at + step <= x.size(); at += step) EXPECT_EQ(ZebKol_Run(kol, &x[at]), ALGO_KOL_RET_SUCCESS);
    return x;
  }

  AudioKolBufferConfig sw;
  AudioProcessInit init;
  std::vector<void*> work;
  KOL_HANDLE kol = nullptr;
  std::string lastText;
};

}  // namespace zebtest

#endif
