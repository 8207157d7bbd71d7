// Frame cost of the processing chain.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "zebaudio.h"

namespace {

struct Chain {
  std::vector<char> work;
  KOL_HANDLE kol = nullptr;

  Chain(int sampleRateHz, unsigned int channels, AudioKolBufferConfig stages) {
    AudioProcessInit init{ZEB_FRAME_LEN_SAMPLES, channels, static_cast<ZEB_KOL_SAMPLE_RATE>(sampleRateHz)};
    work.resize(ZebKol_GetBufferSize(&stages) + 16);
    kol = ZebKol_Init(work.data(), &init, &stages);
  }
};

AudioKolBufferConfig NoStages() {
  AudioKolBufferConfig s;
  std::memset(&s, 0, sizeof(s));
  return s;
}

void BM_KolRun_AllOff(benchmark::State& state) {
  const unsigned int channels = static_cast<unsigned int>(state.range(0));
  Chain chain(16000, channels, NoStages());
  if (chain.kol == nullptr || ZebKol_Config(chain.kol, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) !=
                                  ALGO_KOL_RET_SUCCESS) {
    state.SkipWithError("chain set-up failed");
    return;
  }
  std::vector<short> tone(ZEB_FRAME_LEN_SAMPLES * channels);
  for (size_t i = 0; i < tone.size(); ++i) tone[i] = static_cast<short>(8000.0 * std::sin(0.05 * i));
  std::vector<short> frame(tone.size());
  for (auto _ : state) {
    std::memcpy(frame.data(), tone.data(), tone.size() * sizeof(short));
    benchmark::DoNotOptimize(ZebKol_Run(chain.kol, frame.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(channels == 1 ? "16 kHz mono, all stages off" : "16 kHz stereo, all stages off");
}
BENCHMARK(BM_KolRun_AllOff)->Arg(1)->Arg(2);

}  // namespace
