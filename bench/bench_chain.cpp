// Frame cost of the processing chain, stage by stage, and of a peer noise
// suppressor on the same frames.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "zebaudio.h"

#ifdef ZEB_BENCH_HAVE_SPEEXDSP
#include <speex/speex_preprocess.h>
#endif

namespace {

constexpr int kFrame = ZEB_FRAME_LEN_SAMPLES;

struct Settings {
  AudioAnrConfig anr;
  AudioEqConfig eq;
  AudioHpfConfig hpf;
  AudioAgcConfig agc;
  Settings() {
    std::memset(&anr, 0, sizeof(anr));
    std::memset(&eq, 0, sizeof(eq));
    std::memset(&hpf, 0, sizeof(hpf));
    std::memset(&agc, 0, sizeof(agc));
  }
};

// One second of noisy tone, cycled frame by frame.
std::vector<short> TestSignal(int rateHz, unsigned channels) {
  std::mt19937 rng(3);
  std::normal_distribution<float> noise(0.0f, 800.0f);
  std::vector<short> s(static_cast<size_t>(rateHz / kFrame) * kFrame * channels);
  for (size_t i = 0; i < s.size(); ++i) {
    s[i] = static_cast<short>(6000.0 * std::sin(0.07 * static_cast<double>(i / channels)) + noise(rng));
  }
  return s;
}

void RunChain(benchmark::State& state, int rateHz, unsigned channels, Settings s, const char* label) {
  AudioKolBufferConfig stages = {1, 1, 0, 0, 1};
  AudioProcessInit init{kFrame, channels, static_cast<ZEB_KOL_SAMPLE_RATE>(rateHz)};
  std::vector<void*> work(ZebKol_GetBufferSize(&stages) / sizeof(void*) + 1);
  KOL_HANDLE kol = ZebKol_Init(reinterpret_cast<char*>(work.data()), &init, &stages);
  if (kol == nullptr || ZebKol_Config(kol, &s.anr, &s.eq, &s.hpf, nullptr, nullptr, &s.agc) != ALGO_KOL_RET_SUCCESS) {
    state.SkipWithError("chain set-up failed");
    return;
  }
  const std::vector<short> signal = TestSignal(rateHz, channels);
  const size_t frameLen = kFrame * channels;
  std::vector<short> frame(frameLen);
  size_t at = 0;
  for (auto _ : state) {
    std::memcpy(frame.data(), signal.data() + at, frameLen * sizeof(short));
    at = (at + frameLen) % signal.size();
    benchmark::DoNotOptimize(ZebKol_Run(kol, frame.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(label);
}

void NoiseReductionMode0(AudioAnrConfig& a) {
  a.anr_enable = 1;
  const int bands[6] = {3, 24, 40, 64, 80, 128};
  std::memcpy(a.anr_intensity_band, bands, sizeof(bands));
  for (int& x : a.anr_intensity) x = 20;
}

void TimeDomainAgc(AudioAgcConfig& c) {
  c.agc_enable = 1;
  c.user_mode = 1;
  c.gain_info = {30, -20, 0};
  c.drop_gain_max = 12;
  c.attack_time = 1;
  c.release_time = 1;
  const short in[7] = {-80, -60, -40, -20, -10, 0, 0};
  const short out[7] = {-40, -30, -20, -15, -10, -3, -3};
  std::memcpy(c.compression_ratio_input, in, sizeof(in));
  std::memcpy(c.compression_ratio_output, out, sizeof(out));
  c.drop_gain_threshold = -1;
  c.noise_gate_db = -70;
  c.gain_step = 1;
}

void BM_KolRun_AllOff(benchmark::State& state) {
  const unsigned channels = static_cast<unsigned>(state.range(0));
  RunChain(state, 16000, channels, Settings(), channels == 1 ? "16 kHz mono" : "16 kHz stereo");
}
BENCHMARK(BM_KolRun_AllOff)->Arg(1)->Arg(2);

void BM_KolRun_EqOnly(benchmark::State& state) {
  Settings s;
  s.eq.eq_enable = 1;
  s.eq.user_mode = 1;
  for (int k = 0; k < 129; ++k) s.eq.eq_gain_db[k] = static_cast<short>((k % 13) - 6);
  RunChain(state, 16000, 1, s, "16 kHz mono, EQ");
}
BENCHMARK(BM_KolRun_EqOnly);

void BM_KolRun_EqAndHpf(benchmark::State& state) {
  Settings s;
  s.eq.eq_enable = 1;
  s.eq.user_mode = 1;
  for (int k = 0; k < 129; ++k) s.eq.eq_gain_db[k] = static_cast<short>((k % 13) - 6);
  s.hpf.hpf_enable = 1;
  s.hpf.user_mode = 1;
  s.hpf.cutoff_frequency = AUDIO_HPF_FREQ_500;
  RunChain(state, 16000, 1, s, "16 kHz mono, EQ + 500 Hz high-pass");
}
BENCHMARK(BM_KolRun_EqAndHpf);

void BM_KolRun_TimeAgc(benchmark::State& state) {
  Settings s;
  TimeDomainAgc(s.agc);
  const int rate = static_cast<int>(state.range(0));
  RunChain(state, rate, 1, s, rate == 8000 ? "8 kHz mono, time-domain AGC" : "48 kHz mono, time-domain AGC");
}
BENCHMARK(BM_KolRun_TimeAgc)->Arg(8000)->Arg(48000);

void BM_KolRun_NrMode0(benchmark::State& state) {
  Settings s;
  NoiseReductionMode0(s.anr);
  RunChain(state, 16000, 1, s, "16 kHz mono, noise reduction mode 0");
}
BENCHMARK(BM_KolRun_NrMode0);

// The same with the estimators updated on every frame, as the peer does.
void BM_KolRun_NrMode0_EveryFrame(benchmark::State& state) {
  Settings s;
  NoiseReductionMode0(s.anr);
  s.anr.user_mode = 1;
  s.anr.anr_smooth_level = 10;
  s.anr.anr_converge_speed = NR_SPEED_HIGH;
  RunChain(state, 16000, 1, s, "16 kHz mono, noise reduction mode 0, update every frame");
}
BENCHMARK(BM_KolRun_NrMode0_EveryFrame);

#ifdef ZEB_BENCH_HAVE_SPEEXDSP
// The peer: SpeexDSP's preprocessor with denoise only, on the same frames.
void BM_SpeexPreprocess_Denoise(benchmark::State& state) {
  SpeexPreprocessState* st = speex_preprocess_state_init(kFrame, 16000);
  int on = 1, off = 0;
  speex_preprocess_ctl(st, SPEEX_PREPROCESS_SET_DENOISE, &on);
  speex_preprocess_ctl(st, SPEEX_PREPROCESS_SET_AGC, &off);
  speex_preprocess_ctl(st, SPEEX_PREPROCESS_SET_VAD, &off);
  speex_preprocess_ctl(st, SPEEX_PREPROCESS_SET_DEREVERB, &off);
  const std::vector<short> signal = TestSignal(16000, 1);
  std::vector<short> frame(kFrame);
  size_t at = 0;
  for (auto _ : state) {
    std::memcpy(frame.data(), signal.data() + at, kFrame * sizeof(short));
    at = (at + kFrame) % signal.size();
    benchmark::DoNotOptimize(speex_preprocess_run(st, frame.data()));
    benchmark::ClobberMemory();
  }
  speex_preprocess_state_destroy(st);
  state.SetItemsProcessed(state.iterations());
  state.SetLabel("16 kHz mono, SpeexDSP denoise");
}
BENCHMARK(BM_SpeexPreprocess_Denoise);
#endif

}  // namespace
