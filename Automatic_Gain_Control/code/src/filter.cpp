// Band filters of the gain-control module: four bands, each two cascaded
// biquad sections. They share one process-wide state and serve no
// processing path; they stay part of the module's tool set.
#include "agc.h"

namespace {

// Section outputs carry an eight-bit scale in their gains.
constexpr float kGainScale = 256.0f;

// Selected band: row band-1 of the three tables.
const float (*CoeffA)[AGC_FILTER_TAPS] = filter_coef_A[0];
const float (*CoeffB)[AGC_FILTER_TAPS] = filter_coef_B[0];
const float* CoeffGain = filter_gain[0];

// Per section: [0] the previous value, [1] the one before.
float filter_buffer_x[AGC_FILTER_SECTIONS][2];
float filter_buffer_y[AGC_FILTER_SECTIONS][2];

}  // namespace

extern "C" {

const float filter_coef_A[AGC_FILTER_BANDS][AGC_FILTER_SECTIONS][AGC_FILTER_TAPS] = {
    {{1.0f, -1.9988675f, 0.9988697f}, {1.0f, -1.9972540f, 0.9972562f}},
    {{1.0f, -1.9929008f, 0.9934466f}, {1.0f, -1.9840964f, 0.9842503f}},
    {{1.0f, -1.9898611f, 0.9900316f}, {1.0f, -1.9759333f, 0.9761026f}},
    {{1.0f, -1.9357148f, 0.9417005f}, {1.0f, -1.8590763f, 0.8648249f}},
};

const float filter_coef_B[AGC_FILTER_BANDS][AGC_FILTER_SECTIONS][AGC_FILTER_TAPS] = {
    {{1.0f, -1.9997109f, 1.0f}, {1.0f, -1.9983158f, 1.0f}},
    {{1.0f, 2.0f, 1.0f}, {1.0f, 2.0f, 1.0f}},
    {{1.0f, 2.0f, 1.0f}, {1.0f, 2.0f, 1.0f}},
    {{1.0f, 2.0f, 1.0f}, {1.0f, 2.0f, 1.0f}},
};

const float filter_gain[AGC_FILTER_BANDS][AGC_FILTER_TAPS] = {
    {1.9472779f, 0.3360656f, 256.0f},
    {0.0349347f, 0.0098495f, 228.16023f},
    {0.0109114f, 0.0108350f, 256.0f},
    {0.3830793f, 0.3679125f, 256.0f},
};

void set_filterCoef(int band) {
  if (band < 1 || band > AGC_FILTER_BANDS) return;
  CoeffA = filter_coef_A[band - 1];
  CoeffB = filter_coef_B[band - 1];
  CoeffGain = filter_gain[band - 1];
}

float IIR_filter(float x, int i) {
  if (i < 0 || i >= AGC_FILTER_SECTIONS) return x;
  const float* a = CoeffA[i];
  const float* b = CoeffB[i];
  float* xs = filter_buffer_x[i];
  float* ys = filter_buffer_y[i];
  const float y = (CoeffGain[i] * (b[2] * xs[1] + x * b[0] + b[1] * xs[0])) / kGainScale - a[1] * ys[0] -
                  a[2] * ys[1];
  xs[1] = xs[0];
  xs[0] = x;
  ys[1] = ys[0];
  ys[0] = y;
  return y;
}

float filter_loop(float in) {
  float v = in;
  for (int i = 0; i < AGC_FILTER_SECTIONS; ++i) v = IIR_filter(v, i);
  return v;
}

void Filter_Coeff_Reset(float x, float y) {
  for (int i = 0; i < AGC_FILTER_SECTIONS; ++i) {
    filter_buffer_x[i][0] = x;
    filter_buffer_x[i][1] = x;
    filter_buffer_y[i][0] = y;
    filter_buffer_y[i][1] = y;
  }
}

}  // extern "C"
