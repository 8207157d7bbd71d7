// Frame cost of the stand-alone equaliser, ZebEq_Run, at 16 kHz mono.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "zebaudio.h"

namespace {

constexpr int kFrameLenSamples = 128;
constexpr int kSampleRateHz = 16000;

struct EqBench {
  std::vector<char> work;
  EQ_HANDLE eq = nullptr;

  EqBench(AudioEqConfig eqConfig, AudioHpfConfig hpfConfig) {
    AudioEqInit init{kFrameLenSamples, 1, ZEB_EQ_SAMPLE_RATE_16000};
    work.resize(ZebEq_GetBufferSize());
    eq = ZebEq_Init(work.data(), &init);
    if (eq != nullptr && ZebEq_Config(eq, &hpfConfig, &eqConfig) != ALGO_EQ_RET_SUCCESS) eq = nullptr;
  }
};

// Speech-band mixture with some hum, so that the 500 Hz guard measures a
// realistic spectrum.
std::vector<short> TestFrames(int frames) {
  std::vector<short> x(static_cast<size_t>(frames) * kFrameLenSamples);
  for (size_t n = 0; n < x.size(); ++n) {
    const double t = static_cast<double>(n) / kSampleRateHz;
    x[n] = static_cast<short>(2000.0 * std::sin(2.0 * M_PI * 50.0 * t) +
                              6000.0 * std::sin(2.0 * M_PI * 440.0 * t) +
                              3000.0 * std::sin(2.0 * M_PI * 1870.0 * t));
  }
  return x;
}

void RunFrames(benchmark::State& state, EqBench& bench) {
  if (bench.eq == nullptr) {
    state.SkipWithError("equaliser set-up failed");
    return;
  }
  const int kFrames = 64;
  const std::vector<short> input = TestFrames(kFrames);
  std::vector<short> frame(kFrameLenSamples);
  size_t f = 0;
  for (auto _ : state) {
    std::memcpy(frame.data(), &input[f * kFrameLenSamples], sizeof(short) * kFrameLenSamples);
    benchmark::DoNotOptimize(ZebEq_Run(bench.eq, frame.data()));
    benchmark::ClobberMemory();
    f = (f + 1) % kFrames;
  }
  state.SetItemsProcessed(state.iterations());
}

AudioEqConfig EqOff() {
  AudioEqConfig c;
  std::memset(&c, 0, sizeof(c));
  return c;
}

void BM_EqRun_AllOff(benchmark::State& state) {
  EqBench bench(EqOff(), AudioHpfConfig{0, 0, AUDIO_HPF_FREQ_80});
  RunFrames(state, bench);
  state.SetLabel("16 kHz mono, EQ and HPF off");
}
BENCHMARK(BM_EqRun_AllOff);

void BM_EqRun_EqOnly(benchmark::State& state) {
  AudioEqConfig eq = EqOff();
  eq.eq_enable = 1;
  eq.user_mode = 1;
  for (int k = 0; k < 129; ++k) eq.eq_gain_db[k] = static_cast<short>(k % 13 - 6);
  EqBench bench(eq, AudioHpfConfig{0, 0, AUDIO_HPF_FREQ_80});
  RunFrames(state, bench);
  state.SetLabel("16 kHz mono, EQ on, HPF off");
}
BENCHMARK(BM_EqRun_EqOnly);

void BM_EqRun_EqAndHpf500(benchmark::State& state) {
  AudioEqConfig eq = EqOff();
  eq.eq_enable = 1;
  eq.user_mode = 1;
  for (int k = 0; k < 129; ++k) eq.eq_gain_db[k] = static_cast<short>(k % 13 - 6);
  EqBench bench(eq, AudioHpfConfig{1, 1, AUDIO_HPF_FREQ_500});
  RunFrames(state, bench);
  state.SetLabel("16 kHz mono, EQ and frequency-domain 500 Hz HPF");
}
BENCHMARK(BM_EqRun_EqAndHpf500);

}  // namespace
