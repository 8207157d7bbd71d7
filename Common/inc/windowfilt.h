// Sine windows of the 256-point frame and the windowing loops.
#ifndef ZEB_COMMON_WINDOWFILT_H
#define ZEB_COMMON_WINDOWFILT_H

#ifdef __cplusplus
extern "C" {
#endif

extern const float FloatingFftInWindow512[257];
extern const float FloatingFftInWindow256[129];
extern const float FloatingFftInWindow128[65];
extern const float FloatingFftInWindow64[33];

// Both point at FloatingFftInWindow256.
extern const float* const FftInWindow;
extern const float* const FftOutWindow;

// Windows input[0..255] in place; fftSwitch 0 analysis, 1 synthesis, any
// other value does nothing.
void WindowFFT_Process(float* input, int fftSwitch);
// Windows input[0..2*length-1] with the rising half `filter` (length+1
// entries), then scales input[0..length-1] by gain unless gain is 0.0.
// `length` must be even.
void WindowFilter_Process(float* input, const float* filter, int length, float gain);

#ifdef __cplusplus
}
#endif

#endif
