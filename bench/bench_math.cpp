// Vector math kernels on one spectrum's worth of floats (129 bins): the
// scalar reference against the 4-lane form the library runs.
#include <benchmark/benchmark.h>

#include <vector>

#include "ne10_math.h"

namespace {

constexpr unsigned int kBins = 129;

std::vector<float> Ramp(float lo, float hi) {
  std::vector<float> v(kBins);
  for (unsigned int i = 0; i < kBins; ++i) v[i] = lo + (hi - lo) * static_cast<float>(i) / kBins;
  return v;
}

typedef void (*UnaryKernel)(float*, float*, unsigned int);

void BM_Unary(benchmark::State& state, UnaryKernel kernel, float lo, float hi) {
  std::vector<float> in = Ramp(lo, hi), out(kBins);
  for (auto _ : state) {
    kernel(in.data(), out.data(), kBins);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBins);
}

BENCHMARK_CAPTURE(BM_Unary, Exp_scalar, LX_Exp_scalar, -10.0f, 10.0f);
BENCHMARK_CAPTURE(BM_Unary, Exp_vec4, LX_Exp_vec4, -10.0f, 10.0f);
BENCHMARK_CAPTURE(BM_Unary, Log10_scalar, LX_Log10_scalar, 0.01f, 1e6f);
BENCHMARK_CAPTURE(BM_Unary, Log10_vec4, LX_Log10_vec4, 0.01f, 1e6f);
BENCHMARK_CAPTURE(BM_Unary, Sqrt_scalar, LX_Sqrt_scalar, 0.01f, 1e6f);
BENCHMARK_CAPTURE(BM_Unary, Sqrt_vec4, LX_Sqrt_vec4, 0.01f, 1e6f);

}  // namespace
