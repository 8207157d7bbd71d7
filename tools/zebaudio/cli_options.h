// Command line of the zebaudio tool: commands, options and help texts.
#ifndef ZEBTOOL_CLI_OPTIONS_H
#define ZEBTOOL_CLI_OPTIONS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chain_settings.h"

namespace zebtool {

// Stage options: each one, when given, overrides the configuration file.
struct StageOptions {
  std::optional<int> nrFilterMode;  // kStageOff or 0..5
  std::optional<std::vector<int>> nrIntensity;       // 1 value (all bands) or 7
  std::optional<std::vector<int>> nrIntensityBands;  // 6 band edges in bins
  std::optional<int> nrSmoothLevel;
  std::optional<int> nrConvergeSpeed;
  std::optional<std::string> eqFile;  // "off" switches the equaliser off
  std::optional<int> hpfCutoff;       // kStageOff or a ZEB_HPF_FREQ value
  std::optional<unsigned> hpfUserMode;  // 1 frequency domain, 2 time domain
  std::optional<unsigned> agcUserMode;  // kAgcOff, 1 time domain, 2 frequency domain
  std::optional<std::vector<std::pair<int, int>>> agcCurveDb;  // (input, output) points
  std::optional<int> agcGateDb;
  std::optional<int> agcGateAttenuationPct;
  std::optional<int> agcMaxGainDb;
  std::optional<int> agcMinGainDb;
  std::optional<int> agcInitGainDb;
  std::optional<int> agcLimitDb;
  std::optional<int> agcMaxDrop;
  std::optional<int> agcAttackFrames;
  std::optional<int> agcReleaseFrames;
  std::optional<int> agcGainStep;
};

constexpr int kStageOff = -1;
constexpr unsigned kAgcOff = 0;

struct ProcessOptions {
  std::string inputPath;
  std::string outputPath;
  std::string configPath;
  std::string tuningPath;
  std::string spectrogramPath;
  StageOptions stages;
  std::optional<float> digitalGainDb;
  std::optional<int> comfortNoiseDb;
  bool align = true;
  std::optional<int> delayOverrideSamples;
  bool allowMissingStages = false;
  bool quiet = false;
  bool verbose = false;
};

enum class Command { kProcess, kConfig, kHelp, kVersion };

struct CommandLine {
  Command command = Command::kHelp;
  bool helpRequested = false;  // "--help" after a command
  ProcessOptions options;      // "config" uses configPath and stages only
};

// Parses argv. On a usage error returns false with the message in *error.
bool ParseCommandLine(int argc, char** argv, CommandLine* commandLine, std::string* error);

// Applies the stage options to the records; reads the equaliser file.
bool ApplyStageOptions(const StageOptions& stages, ChainSettings* settings, std::string* error);

// Loads --config (if any) over the defaults, then applies the stage options.
bool BuildChainSettings(const ProcessOptions& options, ChainSettings* settings, std::string* error);

const char* MainHelpText();
const char* ProcessHelpText();
const char* ConfigHelpText();

}  // namespace zebtool

#endif  // ZEBTOOL_CLI_OPTIONS_H
