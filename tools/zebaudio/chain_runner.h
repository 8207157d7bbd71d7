// Drives the processing chain over a whole signal through the public
// ZebKol_* calls: buffer, Init, Config, the frame loop, Free.
#ifndef ZEBTOOL_CHAIN_RUNNER_H
#define ZEBTOOL_CHAIN_RUNNER_H

#include <functional>
#include <optional>
#include <string>

#include "audio_file.h"
#include "chain_settings.h"

namespace zebtool {

constexpr int kFrameLenSamples = ZEB_FRAME_LEN_SAMPLES;

// The chain's delay in samples per channel, derived from the settings
// alone (no state of the library is read):
//   - the frequency stage (256-point transform, 50 % overlap): one frame;
//   - the time-domain AGC adds its block length, 4 ms rounded to the frame
//     grid: 32 samples at 8 kHz, 64 at 16 kHz, 128 at 32 and 48 kHz;
//   - the time-domain high-pass FIR (257 taps at 80 Hz, 129 at 500 Hz, both
//     symmetric) adds its centre tap's offset, 127 or 63 samples;
//   - the neural filter mode replaces the frame of the frequency stage by
//     its re-blocking: 448 samples at 16 kHz, or 576 when the frequency-
//     domain AGC keeps the frequency stage in the path. At 8 and 32 kHz the
//     rate converters around it add their filter delay; that figure is an
//     estimate, and *estimated is set.
int ChainDelaySamples(const ChainSettings& settings, int sampleRateHz, bool* estimated);

struct ChainRunRequest {
  ChainSettings settings;
  std::optional<float> digitalGainDb;
  std::optional<int> comfortNoiseDb;
  std::string tuningPath;
  bool align = true;
  // Compensated instead of the delay derived from the settings in force.
  std::optional<int> delayOverrideSamples;
  bool allowMissingStages = false;
  bool verbose = false;
  std::function<void(double fractionDone)> onProgress;
};

struct ChainRunResult {
  size_t framesRun = 0;
  double cpuSeconds = 0.0;
  bool haveSpeechProbability = false;
  double meanSpeechProbabilityPct = 0.0;
  ChainSettings effectiveSettings;  // after stages the library lacks were dropped
  int delaySamples = 0;             // compensated (0 without alignment)
  bool delayEstimated = false;
};

// Processes `in` (at a chain rate) into `out`, the same length. Returns
// false after reporting a library failure on standard error.
bool RunChain(const ChainRunRequest& request, const AudioBuffer& in, AudioBuffer* out, ChainRunResult* result);

// Asks the library for its API version (ZebKol_GetAPIVersion).
bool LibraryApiVersion(unsigned short* major, unsigned short* minor);

}  // namespace zebtool

#endif  // ZEBTOOL_CHAIN_RUNNER_H
