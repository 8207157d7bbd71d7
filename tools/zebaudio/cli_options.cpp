#include "cli_options.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace zebtool {
namespace {

// Strict whole number: the entire text, in [lo, hi].
bool ParseWhole(const std::string& text, long lo, long hi, long* out) {
  if (text.empty()) return false;
  errno = 0;
  char* end = nullptr;
  long value = strtol(text.c_str(), &end, 10);
  if (errno != 0 || *end != '\0' || value < lo || value > hi) return false;
  *out = value;
  return true;
}

bool ParseInt(const std::string& text, int* out) {
  long value = 0;
  if (!ParseWhole(text, INT_MIN, INT_MAX, &value)) return false;
  *out = (int)value;
  return true;
}

std::vector<std::string> SplitList(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (true) {
    size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return parts;
}

bool ParseIntList(const std::string& text, std::vector<int>* out) {
  out->clear();
  for (const std::string& part : SplitList(text, ',')) {
    int value = 0;
    if (!ParseInt(part, &value)) return false;
    out->push_back(value);
  }
  return true;
}

struct Choice {
  const char* word;
  int value;
};

bool ParseChoice(const std::string& text, const Choice* choices, size_t count, int* out) {
  for (size_t i = 0; i < count; ++i) {
    if (text == choices[i].word) {
      *out = choices[i].value;
      return true;
    }
  }
  return false;
}

constexpr Choice kNrChoices[] = {{"off", kStageOff}, {"0", 0}, {"1", 1}, {"2", 2},
                                 {"3", 3},           {"4", 4}, {"5", 5}};
constexpr Choice kSpeedChoices[] = {{"low", NR_SPEED_LOW}, {"mid", NR_SPEED_MID}, {"high", NR_SPEED_HIGH},
                                    {"0", NR_SPEED_LOW},   {"1", NR_SPEED_MID},   {"2", NR_SPEED_HIGH}};
constexpr Choice kHpfChoices[] = {{"off", kStageOff},
                                  {"80", AUDIO_HPF_FREQ_80},
                                  {"120", AUDIO_HPF_FREQ_120},
                                  {"150", AUDIO_HPF_FREQ_150},
                                  {"500", AUDIO_HPF_FREQ_500}};
constexpr Choice kHpfDomainChoices[] = {{"freq", 1}, {"time", 2}};
constexpr Choice kAgcChoices[] = {{"off", (int)kAgcOff}, {"time", 1}, {"freq", 2}};

template <size_t N>
bool Pick(const std::string& text, const Choice (&choices)[N], int* out) {
  return ParseChoice(text, choices, N, out);
}

typedef bool (*OptionHandler)(const std::string& value, ProcessOptions* options);

struct OptionSpec {
  const char* name;
  bool takesValue;
  bool stageOption;  // also accepted by "zebaudio config"
  OptionHandler handler;
  const char* valueHint;  // for the usage message when the value is bad
};

bool SetInt(const std::string& v, std::optional<int>* field) {
  int value = 0;
  if (!ParseInt(v, &value)) return false;
  *field = value;
  return true;
}

bool ParseCurve(const std::string& v, std::optional<std::vector<std::pair<int, int>>>* curve) {
  std::vector<std::pair<int, int>> points;
  for (const std::string& point : SplitList(v, ',')) {
    std::vector<std::string> io = SplitList(point, ':');
    int in = 0, out = 0;
    if (io.size() != 2 || !ParseInt(io[0], &in) || !ParseInt(io[1], &out)) return false;
    points.push_back({in, out});
  }
  if (points.empty() || points.size() > ZEB_AGC_CURVE_POINTS) return false;
  *curve = points;
  return true;
}

const OptionSpec kOptions[] = {
    {"--config", true, true, [](const std::string& v, ProcessOptions* o) { o->configPath = v; return true; },
     "a JSON file"},
    {"--nr", true, true,
     [](const std::string& v, ProcessOptions* o) {
       int mode = 0;
       if (!Pick(v, kNrChoices, &mode)) return false;
       o->stages.nrFilterMode = mode;
       return true;
     },
     "off or a filter mode 0..5"},
    {"--intensity", true, true,
     [](const std::string& v, ProcessOptions* o) {
       std::vector<int> values;
       if (!ParseIntList(v, &values) || (values.size() != 1 && values.size() != 7)) return false;
       o->stages.nrIntensity = values;
       return true;
     },
     "one intensity 0..30, or seven separated by commas"},
    {"--intensity-bands", true, true,
     [](const std::string& v, ProcessOptions* o) {
       std::vector<int> values;
       if (!ParseIntList(v, &values) || values.size() != 6) return false;
       o->stages.nrIntensityBands = values;
       return true;
     },
     "six band edges in bins, separated by commas"},
    {"--smooth", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.nrSmoothLevel); },
     "a smoothing order 0..10"},
    {"--speed", true, true,
     [](const std::string& v, ProcessOptions* o) {
       int speed = 0;
       if (!Pick(v, kSpeedChoices, &speed)) return false;
       o->stages.nrConvergeSpeed = speed;
       return true;
     },
     "low, mid or high (or 0, 1, 2)"},
    {"--tuning", true, false, [](const std::string& v, ProcessOptions* o) { o->tuningPath = v; return true; },
     "a JSON file"},
    {"--eq", true, true, [](const std::string& v, ProcessOptions* o) { o->stages.eqFile = v; return true; },
     "a file of 129 gains, or off"},
    {"--hpf", true, true,
     [](const std::string& v, ProcessOptions* o) {
       int cutoff = 0;
       if (!Pick(v, kHpfChoices, &cutoff)) return false;
       o->stages.hpfCutoff = cutoff;
       return true;
     },
     "off, 80, 120, 150 or 500"},
    {"--hpf-domain", true, true,
     [](const std::string& v, ProcessOptions* o) {
       int domain = 0;
       if (!Pick(v, kHpfDomainChoices, &domain)) return false;
       o->stages.hpfUserMode = (unsigned)domain;
       return true;
     },
     "freq or time"},
    {"--agc", true, true,
     [](const std::string& v, ProcessOptions* o) {
       int mode = 0;
       if (!Pick(v, kAgcChoices, &mode)) return false;
       o->stages.agcUserMode = (unsigned)mode;
       return true;
     },
     "off, time or freq"},
    {"--agc-curve", true, true, [](const std::string& v, ProcessOptions* o) { return ParseCurve(v, &o->stages.agcCurveDb); },
     "1 to 7 points IN:OUT in dB, separated by commas"},
    {"--agc-gate", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcGateDb); },
     "a level in dB"},
    {"--agc-gate-atten", true, true,
     [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcGateAttenuationPct); },
     "a percentage 0..100"},
    {"--agc-max-gain", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcMaxGainDb); },
     "a gain in dB"},
    {"--agc-min-gain", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcMinGainDb); },
     "a gain in dB"},
    {"--agc-init-gain", true, true,
     [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcInitGainDb); }, "a gain in dB"},
    {"--agc-limit", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcLimitDb); },
     "a level in dB"},
    {"--agc-max-drop", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcMaxDrop); },
     "a whole number 0..120"},
    {"--agc-attack", true, true,
     [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcAttackFrames); },
     "a frame count 1..99"},
    {"--agc-release", true, true,
     [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcReleaseFrames); },
     "a frame count 1..99"},
    {"--agc-step", true, true, [](const std::string& v, ProcessOptions* o) { return SetInt(v, &o->stages.agcGainStep); },
     "a step in half dB, 1..10"},
    {"--gain", true, false,
     [](const std::string& v, ProcessOptions* o) {
       char* end = nullptr;
       double db = strtod(v.c_str(), &end);
       // The library's own range for a changed gain; checked here for the
       // first value too, which the library would take unchecked.
       if (v.empty() || *end != '\0' || !std::isfinite(db) || db < -120.0 || db > 120.0) return false;
       o->digitalGainDb = (float)db;
       return true;
     },
     "a gain in dB, -120..120"},
    {"--cng", true, false,
     [](const std::string& v, ProcessOptions* o) {
       if (v == "off") {
         o->comfortNoiseDb.reset();
         return true;
       }
       return SetInt(v, &o->comfortNoiseDb);
     },
     "a noise floor in dB, or off"},
    {"--spectrogram", true, false, [](const std::string& v, ProcessOptions* o) { o->spectrogramPath = v; return true; },
     "a PNG file"},
    {"--no-align", false, false, [](const std::string&, ProcessOptions* o) { o->align = false; return true; }, ""},
    {"--delay", true, false,
     [](const std::string& v, ProcessOptions* o) {
       long samples = 0;
       if (!ParseWhole(v, 0, 1 << 20, &samples)) return false;
       o->delayOverrideSamples = (int)samples;
       return true;
     },
     "a sample count"},
    {"--allow-missing-stages", false, false,
     [](const std::string&, ProcessOptions* o) { o->allowMissingStages = true; return true; }, ""},
    {"--quiet", false, false, [](const std::string&, ProcessOptions* o) { o->quiet = true; return true; }, ""},
    {"--verbose", false, false, [](const std::string&, ProcessOptions* o) { o->verbose = true; return true; }, ""},
};

const OptionSpec* FindOption(const std::string& name) {
  std::string canonical = name == "-q" ? "--quiet" : name == "-v" ? "--verbose" : name;
  for (const OptionSpec& option : kOptions) {
    if (canonical == option.name) return &option;
  }
  return nullptr;
}

bool ParseOptions(int argc, char** argv, int first, CommandLine* cl, std::string* error) {
  std::vector<std::string> positional;
  const bool configCommand = cl->command == Command::kConfig;
  const char* commandName = configCommand ? "zebaudio config" : "zebaudio process";
  for (int i = first; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      cl->helpRequested = true;
      return true;
    }
    if (arg.size() < 2 || arg[0] != '-' || arg == "--") {
      positional.push_back(arg);
      continue;
    }
    std::string name = arg, value;
    bool inlineValue = false;
    size_t eq = arg.find('=');
    if (arg.rfind("--", 0) == 0 && eq != std::string::npos) {
      name = arg.substr(0, eq);
      value = arg.substr(eq + 1);
      inlineValue = true;
    }
    const OptionSpec* option = FindOption(name);
    if (option == nullptr || (configCommand && !option->stageOption)) {
      *error = "unknown option '" + name + "' for '" + commandName + "'";
      return false;
    }
    if (option->takesValue && !inlineValue) {
      if (i + 1 >= argc) {
        *error = "option " + name + " needs a value: " + option->valueHint;
        return false;
      }
      value = argv[++i];
    } else if (!option->takesValue && inlineValue) {
      *error = "option " + name + " takes no value";
      return false;
    }
    if (!option->handler(value, &cl->options)) {
      *error = "bad value '" + value + "' for " + name + ": expected " + option->valueHint;
      return false;
    }
  }
  if (configCommand) {
    if (!positional.empty()) {
      *error = "'zebaudio config' takes no file names (got '" + positional[0] + "')";
      return false;
    }
    return true;
  }
  if (positional.size() != 2) {
    *error = positional.size() < 2 ? "'zebaudio process' needs an input and an output file"
                                   : "'zebaudio process' takes one input and one output file (extra: '" +
                                         positional[2] + "')";
    return false;
  }
  cl->options.inputPath = positional[0];
  cl->options.outputPath = positional[1];
  return true;
}

void ApplyNrOptions(const StageOptions& s, AudioAnrConfig* anr) {
  if (s.nrFilterMode) {
    anr->anr_enable = *s.nrFilterMode == kStageOff ? 0 : 1;
    if (*s.nrFilterMode != kStageOff) anr->anr_filter_mode = *s.nrFilterMode;
  }
  if (s.nrIntensity) {
    for (int i = 0; i < 7; ++i) anr->anr_intensity[i] = (*s.nrIntensity)[s.nrIntensity->size() == 1 ? 0 : i];
  }
  if (s.nrIntensityBands) {
    for (int i = 0; i < 6; ++i) anr->anr_intensity_band[i] = (*s.nrIntensityBands)[i];
  }
  // A negative level arrives as a huge unsigned value, which the library
  // refuses with its own code, as it would from any other client.
  if (s.nrSmoothLevel) anr->anr_smooth_level = (unsigned)*s.nrSmoothLevel;
  if (s.nrConvergeSpeed) anr->anr_converge_speed = (NR_CONVERGE_SPEED)*s.nrConvergeSpeed;
  // The record's own bands, smoothing and speed count only in a user mode.
  if ((s.nrIntensity || s.nrIntensityBands || s.nrSmoothLevel || s.nrConvergeSpeed) && anr->user_mode == 0) {
    anr->user_mode = 1;
  }
}

void ApplyAgcOptions(const StageOptions& s, AudioAgcConfig* agc) {
  if (s.agcUserMode) {
    agc->agc_enable = *s.agcUserMode == kAgcOff ? 0 : 1;
    if (*s.agcUserMode != kAgcOff) agc->user_mode = *s.agcUserMode;
  }
  if (s.agcCurveDb) {
    // Fewer than seven points: the last one repeats, which keeps the curve
    // not falling, as the library asks.
    const std::vector<std::pair<int, int>>& points = *s.agcCurveDb;
    for (size_t i = 0; i < ZEB_AGC_CURVE_POINTS; ++i) {
      const std::pair<int, int>& p = points[i < points.size() ? i : points.size() - 1];
      agc->compression_ratio_input[i] = (short)p.first;
      agc->compression_ratio_output[i] = (short)p.second;
    }
  }
  if (s.agcGateDb) agc->noise_gate_db = *s.agcGateDb;
  if (s.agcGateAttenuationPct) agc->noise_gate_attenuation_db = (unsigned)*s.agcGateAttenuationPct;
  if (s.agcMaxGainDb) agc->gain_info.gain_max = *s.agcMaxGainDb;
  if (s.agcMinGainDb) agc->gain_info.gain_min = *s.agcMinGainDb;
  if (s.agcInitGainDb) agc->gain_info.gain_init = *s.agcInitGainDb;
  if (s.agcLimitDb) agc->drop_gain_threshold = *s.agcLimitDb;
  if (s.agcMaxDrop) agc->drop_gain_max = (unsigned)*s.agcMaxDrop;
  if (s.agcAttackFrames) agc->attack_time = (unsigned)*s.agcAttackFrames;
  if (s.agcReleaseFrames) agc->release_time = (unsigned)*s.agcReleaseFrames;
  if (s.agcGainStep) agc->gain_step = (unsigned)*s.agcGainStep;
}

}  // namespace

bool ParseCommandLine(int argc, char** argv, CommandLine* cl, std::string* error) {
  if (argc < 2) {
    *error = "no command given";
    return false;
  }
  std::string command = argv[1];
  if (command == "--help" || command == "-h" || command == "help") {
    cl->command = Command::kHelp;
    return true;
  }
  if (command == "--version" || command == "version") {
    cl->command = Command::kVersion;
    return true;
  }
  if (command == "process") {
    cl->command = Command::kProcess;
  } else if (command == "config") {
    cl->command = Command::kConfig;
  } else {
    *error = "unknown command '" + command + "'";
    return false;
  }
  return ParseOptions(argc, argv, 2, cl, error);
}

bool ApplyStageOptions(const StageOptions& s, ChainSettings* settings, std::string* error) {
  ApplyNrOptions(s, &settings->anr);
  if (s.eqFile) {
    if (*s.eqFile == "off") {
      settings->eq.eq_enable = 0;
    } else {
      if (!LoadEqGainFile(*s.eqFile, settings->eq.eq_gain_db, error)) return false;
      settings->eq.eq_enable = 1;
      settings->eq.user_mode = 1;
    }
  }
  if (s.hpfCutoff) {
    settings->hpf.hpf_enable = *s.hpfCutoff == kStageOff ? 0 : 1;
    if (*s.hpfCutoff != kStageOff) settings->hpf.cutoff_frequency = (ZEB_HPF_FREQ)*s.hpfCutoff;
  }
  if (s.hpfUserMode) settings->hpf.user_mode = *s.hpfUserMode;
  ApplyAgcOptions(s, &settings->agc);
  return true;
}

bool BuildChainSettings(const ProcessOptions& options, ChainSettings* settings, std::string* error) {
  *settings = DefaultChainSettings();
  if (!options.configPath.empty() && !LoadChainSettingsFile(options.configPath, settings, error)) return false;
  return ApplyStageOptions(options.stages, settings, error);
}

const char* MainHelpText() {
  return "usage: zebaudio process IN OUT [options]   run an audio file through the processing chain\n"
         "       zebaudio config [options]           print a complete configuration file\n"
         "       zebaudio --version                  print the tool, library and API versions\n"
         "       zebaudio --help                     this text\n"
         "\n"
         "'zebaudio process --help' and 'zebaudio config --help' list the options.\n"
         "\n"
         "Exit status: 0 success, 1 processing or library failure, 2 usage or input error.\n";
}

const char* ProcessHelpText() {
  return "usage: zebaudio process IN OUT [options]\n"
         "\n"
         "Reads IN (WAV or FLAC, mono or stereo, 16-bit or any sample format that\n"
         "libsndfile reads), runs it through the chain in frames of 128 samples per\n"
         "channel and writes OUT in the same format. The chain runs at 8, 16, 32 or\n"
         "48 kHz; a file at another rate is converted to the nearest of these and back\n"
         "(libsoxr), with a note on standard error. The last frame is padded with\n"
         "silence and the padding trimmed; OUT has exactly as many samples as IN.\n"
         "OUT is written to a temporary file beside it and renamed at the end, so a\n"
         "failure never leaves a partial OUT behind.\n"
         "\n"
         "Noise reduction:\n"
         "  --nr off|0..5           filter mode: 0 Wiener-type, 1 revised OM-LSA, 2 MCRA,\n"
         "                          3 IMCRA, 4 SPP, 5 neural (8, 16 and 32 kHz only)\n"
         "  --intensity N[,N...]    0..30 for all seven bands, or seven values\n"
         "  --intensity-bands E,..  six upper band edges in bins (0..128, not decreasing)\n"
         "  --smooth N              order of the gain smoothing over frequency, 0..10\n"
         "  --speed low|mid|high    filter update on every 3rd, 2nd or every frame\n"
         "                          (--intensity, --smooth and --speed select the record's\n"
         "                          user_mode 1 if it was 0)\n"
         "  --tuning FILE.json      noise-reduction tuning file (needs --nr)\n"
         "Equaliser and high-pass filter:\n"
         "  --eq FILE|off           129 gains in dB (-100..20), one per bin of the\n"
         "                          256-point spectrum: one per line, or JSON (an array,\n"
         "                          or an object with \"eq_gain_db\")\n"
         "  --hpf off|80|120|150|500  high-pass cutoff in Hz\n"
         "  --hpf-domain freq|time  frequency-domain gains (default) or time-domain FIR;\n"
         "                          the FIR offers 80 and 500 Hz only\n"
         "Gain control:\n"
         "  --agc off|time|freq     time-domain or three-band frequency-domain AGC\n"
         "  --agc-curve IN:OUT,...  compression curve, 1 to 7 points in dB (-120..0, not\n"
         "                          falling); fewer than 7 repeat the last point\n"
         "  --agc-gate DB           noise gate level (time domain: 0 or above holds the gain)\n"
         "  --agc-gate-atten PCT    attenuation under the gate, percent 0..100\n"
         "  --agc-max-gain DB       largest gain          --agc-min-gain DB   smallest gain\n"
         "  --agc-init-gain DB      starting gain         --agc-limit DB      output peak limit\n"
         "  --agc-max-drop N        largest cut against saturation per frame (half dB in\n"
         "                          the time domain, dB in the frequency domain), 0..120\n"
         "  --agc-attack N          frames of falling demand before the gain falls, 1..99\n"
         "  --agc-release N         frames of rising demand before the gain rises, 1..99\n"
         "  --agc-step N            largest gain step in half dB, 1..10\n"
         "Other processing:\n"
         "  --gain DB               digital gain on every output frame, -120..120\n"
         "  --cng DB|off            comfort noise filling the spectrum up to a power floor\n"
         "                          in dB (-60 is a faint hiss; +20 dB is ten times louder)\n"
         "  --config FILE.json      the four configuration records (see 'zebaudio config');\n"
         "                          the options above override the file\n"
         "Output:\n"
         "  --no-align              keep the chain's delay instead of compensating it\n"
         "  --delay SAMPLES         compensate this delay instead of the derived one\n"
         "  --spectrogram FILE.png  before/after spectrogram of the first channels' mix\n"
         "  --allow-missing-stages  a stage the library reports as not available\n"
         "                          (ALGO_KOL_RET_FAILED from its call) is switched off\n"
         "                          with a warning instead of failing the run\n"
         "  -q, --quiet             no summary and no progress bar\n"
         "  -v, --verbose           also pass on the library's information messages\n"
         "\n"
         "Delay compensation: the output is shifted so that it lines up with the input\n"
         "sample for sample. The delay is derived from the settings: 128 samples for the\n"
         "frequency stage; plus the time-domain AGC's block (32 samples at 8 kHz, 64 at\n"
         "16 kHz, 128 at 32 and 48 kHz); plus 127 samples (80 Hz) or 63 samples (500 Hz)\n"
         "for the time-domain high-pass FIR. The neural mode replaces the 128 by its\n"
         "re-blocking delay: 448 samples at 16 kHz (576 with the frequency-domain AGC);\n"
         "at 8 and 32 kHz this is an estimate, as --delay can correct.\n"
         "\n"
         "At the end a summary goes to standard output: duration, frames, input and output\n"
         "RMS and peak in dBFS, the mean speech probability (with noise reduction), the\n"
         "processing CPU time and the real-time factor. A progress bar goes to standard\n"
         "error for inputs over ten seconds when it is a terminal.\n"
         "\n"
         "Library failures are reported with the result code's name and the library's own\n"
         "message, and end the run with status 1.\n";
}

const char* ConfigHelpText() {
  return "usage: zebaudio config [--config FILE.json] [stage options]\n"
         "\n"
         "Prints a complete configuration file: the four records that ZebKol_Config\n"
         "takes (anr_config, eq_config, hpf_config, agc_config), every field under its\n"
         "own name. Without options it prints the defaults, with every stage off; with\n"
         "--config and the stage options of 'zebaudio process' (--nr, --intensity,\n"
         "--eq, --hpf, --agc, ...) it prints the configuration they make. Save it, edit\n"
         "it, and pass it back with 'zebaudio process --config FILE.json'.\n";
}

}  // namespace zebtool
