// Cost of the 256-point real FFT: through ORB_rdft as the stages call it, and
// each kernel form on its own.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "fft.h"
#include "ne10_fft.h"

namespace {

constexpr int kFftLen = 256;

std::vector<float> TestFrame() {
  std::vector<float> frame(kFftLen + 2, 0.0f);
  uint32_t state = 12345u;
  for (int t = 0; t < kFftLen; ++t) {
    state = state * 1664525u + 1013904223u;
    frame[t] = (float)((int32_t)(state >> 16) - 32768);
  }
  return frame;
}

void BM_OrbRdft256_ForwardInverse(benchmark::State& state) {
  std::vector<uint64_t> memory(FFT_GetBufferSize(kFftLen) / 8 + 1);
  FFTHandle_t handle;
  std::memset(&handle, 0, sizeof(handle));
  handle.fft_Ne10_cfg = reinterpret_cast<ne10_fft_r2c_cfg_float32_t>(memory.data());
  handle.fftSize = kFftLen;
  ne10_init();
  fft_init(&handle);
  int ip[130] = {};
  float w[260] = {};
  std::vector<float> a = TestFrame();
  for (auto _ : state) {
    ORB_rdft(&handle, kFftLen, ORB_FFT_MODE_DO_FFT, a.data(), ip, w);
    ORB_rdft(&handle, kFftLen, ORB_FFT_MODE_DO_IFFT, a.data(), ip, w);
    benchmark::DoNotOptimize(a.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_OrbRdft256_ForwardInverse);

template <bool kVectorForm>
void BM_Rfft256_Forward(benchmark::State& state) {
  std::vector<uint64_t> memory(FFT_GetBufferSize(kFftLen) / 8 + 1);
  ne10_fft_r2c_cfg_float32_t cfg = ne10_fft_alloc_r2c_float32(memory.data(), kFftLen);
  std::vector<float> in = TestFrame();
  std::vector<ne10_fft_cpx_float32_t> out(kFftLen / 2 + 1);
  for (auto _ : state) {
    if (kVectorForm)
      ne10_fft_r2c_1d_float32_neon(out.data(), in.data(), cfg);
    else
      ne10_fft_r2c_1d_float32_c(out.data(), in.data(), cfg);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK_TEMPLATE(BM_Rfft256_Forward, false)->Name("BM_Rfft256_Forward_Scalar");
BENCHMARK_TEMPLATE(BM_Rfft256_Forward, true)->Name("BM_Rfft256_Forward_FourLane");

template <bool kVectorForm>
void BM_Rfft256_Inverse(benchmark::State& state) {
  std::vector<uint64_t> memory(FFT_GetBufferSize(kFftLen) / 8 + 1);
  ne10_fft_r2c_cfg_float32_t cfg = ne10_fft_alloc_r2c_float32(memory.data(), kFftLen);
  std::vector<float> frame = TestFrame();
  std::vector<ne10_fft_cpx_float32_t> bins(kFftLen / 2 + 1);
  ne10_fft_r2c_1d_float32_neon(bins.data(), frame.data(), cfg);
  std::vector<float> out(kFftLen);
  for (auto _ : state) {
    if (kVectorForm)
      ne10_fft_c2r_1d_float32_neon(out.data(), bins.data(), cfg);
    else
      ne10_fft_c2r_1d_float32_c(out.data(), bins.data(), cfg);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK_TEMPLATE(BM_Rfft256_Inverse, false)->Name("BM_Rfft256_Inverse_Scalar");
BENCHMARK_TEMPLATE(BM_Rfft256_Inverse, true)->Name("BM_Rfft256_Inverse_FourLane");

}  // namespace
