// What the user sees besides the output file: level statistics, the
// progress bar and the closing summary.
#ifndef ZEBTOOL_SUMMARY_H
#define ZEBTOOL_SUMMARY_H

#include <cstdio>
#include <string>

#include "audio_file.h"
#include "chain_runner.h"

namespace zebtool {

struct LevelStats {
  double rmsDbfs;   // -infinity for digital silence
  double peakDbfs;
};

// Over all channels together; full scale is 32768.
LevelStats MeasureLevels(const AudioBuffer& audio);

// "-23.4 dBFS", or "-inf dBFS" for silence.
std::string FormatDbfs(double dbfs);

// A one-line bar on standard error, redrawn in place. It shows only when
// standard error is a terminal and the input is longer than ten seconds.
class ProgressBar {
 public:
  ProgressBar(double durationSeconds, bool enabled);
  ~ProgressBar();
  void Update(double fractionDone);
  void Finish();

 private:
  double durationSeconds_;
  bool active_;
  int lastPermille_ = -1;
};

struct RunSummary {
  std::string inputPath;
  std::string outputPath;
  int fileRateHz = 0;
  int chainRateHz = 0;
  int channels = 0;
  size_t inputFrames = 0;  // samples per channel, at the file's rate
  LevelStats input{};
  LevelStats output{};
  ChainRunResult run;
  bool align = true;
};

void PrintSummary(FILE* out, const RunSummary& summary);

}  // namespace zebtool

#endif  // ZEBTOOL_SUMMARY_H
