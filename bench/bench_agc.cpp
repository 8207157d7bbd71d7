// Frame cost of the stand-alone gain control in each engine.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "zebaudio.h"

namespace {

AudioAgcConfig AgcMode(unsigned int mode) {
  AudioAgcConfig c;
  std::memset(&c, 0, sizeof(c));
  c.agc_enable = 1;
  c.user_mode = mode;
  c.gain_info = {20, -20, 0};
  c.drop_gain_max = 12;
  c.attack_time = 1;
  c.release_time = 1;
  const short in[7] = {-50, -30, -20, -10, -3, -3, -3};
  const short out[7] = {-30, -20, -15, -5, -5, -3, -3};
  std::memcpy(c.compression_ratio_input, in, sizeof(in));
  std::memcpy(c.compression_ratio_output, out, sizeof(out));
  c.drop_gain_threshold = -3;
  c.noise_gate_db = -50;
  c.gain_step = 1;
  return c;
}

// ZebAgc_Run on a mono speech-level tone; state.range(0) is the rate in Hz.
void RunAgc(benchmark::State& state, unsigned int mode) {
  const int rateHz = static_cast<int>(state.range(0));
  std::vector<void*> work(ZebAgc_GetBufferSize() / sizeof(void*) + 1);
  AudioAgcInit init{ZEB_FRAME_LEN_SAMPLES, 1, static_cast<ZEB_AGC_SAMPLE_RATE>(rateHz)};
  AGC_HANDLE agc = ZebAgc_Init(reinterpret_cast<char*>(work.data()), &init);
  AudioAgcConfig config = AgcMode(mode);
  if (agc == nullptr || ZebAgc_Config(agc, &config) != ALGO_AGC_RET_SUCCESS) {
    state.SkipWithError("AGC set-up failed");
    return;
  }
  std::vector<short> tone(ZEB_FRAME_LEN_SAMPLES);
  for (size_t i = 0; i < tone.size(); ++i) tone[i] = static_cast<short>(1500.0 * std::sin(0.21 * i));
  std::vector<short> frame(tone.size());
  for (auto _ : state) {
    std::memcpy(frame.data(), tone.data(), tone.size() * sizeof(short));
    benchmark::DoNotOptimize(ZebAgc_Run(agc, frame.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(mode == 1 ? "time domain, mono" : "frequency domain, mono");
}

void BM_AgcRun_Mode1(benchmark::State& state) { RunAgc(state, 1); }
void BM_AgcRun_Mode2(benchmark::State& state) { RunAgc(state, 2); }
BENCHMARK(BM_AgcRun_Mode1)->Arg(8000)->Arg(48000);
BENCHMARK(BM_AgcRun_Mode2)->Arg(8000)->Arg(48000);

}  // namespace
