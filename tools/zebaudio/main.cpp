// zebaudio: runs audio files through the library's processing chain.
//
//   zebaudio process IN OUT [options]
//   zebaudio config [options]
//   zebaudio --version | --help
//
// Exit status: 0 success, 1 processing or library failure, 2 usage or
// input error (bad options, unreadable or malformed input or configuration
// files, an output that cannot be created).
#include <unistd.h>

#include <cstdio>
#include <new>
#include <string>

#include "audio_file.h"
#include "chain_runner.h"
#include "chain_settings.h"
#include "cli_options.h"
#include "sonogram.h"
#include "summary.h"

namespace zebtool {
namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

int Fail(int status, const std::string& message) {
  fprintf(stderr, "zebaudio: %s\n", message.c_str());
  return status;
}

int PrintVersion() {
  unsigned short major = 0, minor = 0;
  if (!LibraryApiVersion(&major, &minor)) return kExitFailure;
  printf("zebaudio %s\n", ZEB_TOOL_VERSION);
  printf("libzebaudio %s, API %u.%u\n", ZEB_TOOL_VERSION, (unsigned)major, (unsigned)minor);
  return kExitOk;
}

int PrintConfig(const ProcessOptions& options) {
  ChainSettings settings;
  std::string error;
  if (!BuildChainSettings(options, &settings, &error)) return Fail(kExitUsage, error);
  fputs(ChainSettingsToJson(settings).c_str(), stdout);
  return kExitOk;
}

// Everything that can be checked before any audio is processed.
int CheckRequest(const ProcessOptions& options, const ChainSettings& settings) {
  std::string error;
  if (!options.tuningPath.empty()) {
    if (settings.anr.anr_enable == 0) {
      return Fail(kExitUsage, "--tuning applies to noise reduction, which is off (see --nr)");
    }
    if (!CheckTuningFile(options.tuningPath, &error)) return Fail(kExitUsage, error);
  }
  return kExitOk;
}

int Process(const ProcessOptions& options) {
  ChainSettings settings;
  std::string error;
  if (!BuildChainSettings(options, &settings, &error)) return Fail(kExitUsage, error);
  if (int status = CheckRequest(options, settings)) return status;

  AudioBuffer input;
  int format = 0;
  if (!ReadAudioFile(options.inputPath, &input, &format, &error)) return Fail(kExitUsage, error);

  // Create the outputs first: a bad output path is reported before the work.
  PendingOutput audioOut, pictureOut;
  const int audioFd = audioOut.Create(options.outputPath, &error);
  if (audioFd < 0) return Fail(kExitUsage, error);
  int pictureFd = -1;
  if (!options.spectrogramPath.empty()) {
    pictureFd = pictureOut.Create(options.spectrogramPath, &error);
    if (pictureFd < 0) {
      close(audioFd);
      return Fail(kExitUsage, error);
    }
  }

  const size_t inputFrames = input.FrameCount();
  AudioBuffer chainIn;
  const AudioBuffer* toChain = &input;
  const int chainRate = IsChainRate(input.sampleRateHz) ? input.sampleRateHz : NearestChainRate(input.sampleRateHz);
  if (chainRate != input.sampleRateHz) {
    fprintf(stderr, "zebaudio: note: the chain does not run at %d Hz; converting to %d Hz and back\n",
            input.sampleRateHz, chainRate);
    const size_t chainFrames = (size_t)((double)inputFrames * chainRate / input.sampleRateHz + 0.5);
    if (!ResampleAudio(input, chainRate, chainFrames, &chainIn, &error)) return Fail(kExitFailure, error);
    toChain = &chainIn;
  }

  ChainRunRequest request;
  request.settings = settings;
  request.digitalGainDb = options.digitalGainDb;
  request.comfortNoiseDb = options.comfortNoiseDb;
  request.tuningPath = options.tuningPath;
  request.align = options.align;
  request.delayOverrideSamples = options.delayOverrideSamples;
  request.allowMissingStages = options.allowMissingStages;
  request.verbose = options.verbose;
  const double seconds = input.sampleRateHz > 0 ? (double)inputFrames / input.sampleRateHz : 0.0;
  ProgressBar progress(seconds, !options.quiet);
  request.onProgress = [&progress](double done) { progress.Update(done); };

  AudioBuffer chainOut, output;
  ChainRunResult result;
  const bool ran = RunChain(request, *toChain, &chainOut, &result);
  progress.Finish();
  if (!ran) {
    close(audioFd);
    if (pictureFd >= 0) close(pictureFd);
    return kExitFailure;
  }
  if (toChain != &input) {
    if (!ResampleAudio(chainOut, input.sampleRateHz, inputFrames, &output, &error)) return Fail(kExitFailure, error);
  } else {
    output.sampleRateHz = chainOut.sampleRateHz;
    output.channels = chainOut.channels;
    output.samples.swap(chainOut.samples);
  }

  if (!WriteAudioFile(audioFd, options.outputPath, output, format, &error)) return Fail(kExitFailure, error);
  if (pictureFd >= 0 && !WriteSpectrogramPng(pictureFd, options.spectrogramPath, input, output, &error)) {
    return Fail(kExitFailure, error);
  }
  if (!audioOut.Commit(&error) || !pictureOut.Commit(&error)) return Fail(kExitFailure, error);

  if (!options.quiet) {
    RunSummary summary;
    summary.inputPath = options.inputPath;
    summary.outputPath = options.outputPath;
    summary.fileRateHz = input.sampleRateHz;
    summary.chainRateHz = chainRate;
    summary.channels = input.channels;
    summary.inputFrames = inputFrames;
    summary.input = MeasureLevels(input);
    summary.output = MeasureLevels(output);
    summary.run = result;
    summary.align = options.align;
    PrintSummary(stdout, summary);
    if (!options.spectrogramPath.empty()) printf("  spectrogram  %s\n", options.spectrogramPath.c_str());
  }
  return kExitOk;
}

int Main(int argc, char** argv) {
  CommandLine commandLine;
  std::string error;
  if (!ParseCommandLine(argc, argv, &commandLine, &error)) {
    fprintf(stderr, "zebaudio: %s\n", error.c_str());
    fprintf(stderr, "Try 'zebaudio --help'.\n");
    return kExitUsage;
  }
  switch (commandLine.command) {
    case Command::kHelp:
      fputs(MainHelpText(), stdout);
      return kExitOk;
    case Command::kVersion:
      return PrintVersion();
    case Command::kConfig:
      if (commandLine.helpRequested) {
        fputs(ConfigHelpText(), stdout);
        return kExitOk;
      }
      return PrintConfig(commandLine.options);
    case Command::kProcess:
      if (commandLine.helpRequested) {
        fputs(ProcessHelpText(), stdout);
        return kExitOk;
      }
      return Process(commandLine.options);
  }
  return kExitUsage;
}

}  // namespace
}  // namespace zebtool

int main(int argc, char** argv) {
  try {
    return zebtool::Main(argc, argv);
  } catch (const std::bad_alloc&) {
    fprintf(stderr, "zebaudio: out of memory\n");
    return 1;
  }
}
