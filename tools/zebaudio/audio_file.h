// Audio files (libsndfile), rate conversion (libsoxr) and outputs that
// appear only when complete.
#ifndef ZEBTOOL_AUDIO_FILE_H
#define ZEBTOOL_AUDIO_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zebtool {

// Interleaved 16-bit samples: the chain's own sample format.
struct AudioBuffer {
  int sampleRateHz = 0;
  int channels = 0;
  std::vector<int16_t> samples;

  size_t FrameCount() const { return channels > 0 ? samples.size() / (size_t)channels : 0; }
};

// Reads a whole file. `format` receives libsndfile's format word so that
// the output can be written in the same format.
bool ReadAudioFile(const std::string& path, AudioBuffer* audio, int* format, std::string* error);

// The rates the chain runs at.
bool IsChainRate(int sampleRateHz);
// The chain rate closest to `sampleRateHz` (the higher one on a tie).
int NearestChainRate(int sampleRateHz);

// Converts to `targetRateHz` with libsoxr (high quality, linear phase, no
// dither). The result is trimmed or padded with silence to exactly
// `targetFrames` frames.
bool ResampleAudio(const AudioBuffer& in, int targetRateHz, size_t targetFrames, AudioBuffer* out,
                   std::string* error);

// A file that is written under a temporary name beside its final path and
// renamed into place by Commit. Until then, or if Commit is never reached
// (an error, or SIGINT/SIGTERM/SIGHUP), the temporary file is removed.
class PendingOutput {
 public:
  PendingOutput() = default;
  ~PendingOutput();
  PendingOutput(const PendingOutput&) = delete;
  PendingOutput& operator=(const PendingOutput&) = delete;

  // Creates the temporary file; returns its descriptor or -1.
  int Create(const std::string& finalPath, std::string* error);
  bool Commit(std::string* error);
  void Discard();

 private:
  std::string finalPath_;
  std::string tempPath_;
  int slot_ = -1;  // entry in the table the signal handler cleans up
};

// Writes `audio` to `fd` (from PendingOutput::Create, closed here) in
// libsndfile `format`; the container follows the extension of `finalPath`
// when that is .wav or .flac.
bool WriteAudioFile(int fd, const std::string& finalPath, const AudioBuffer& audio, int format,
                    std::string* error);

}  // namespace zebtool

#endif  // ZEBTOOL_AUDIO_FILE_H
