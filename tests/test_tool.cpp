// End-to-end tests of the zebaudio command-line tool: the built program is
// run on short files written here, and its outputs, exit status and
// messages are checked.
#include <gtest/gtest.h>

#ifndef ZEB_TOOL_PATH

TEST(Tool, NotBuilt) { GTEST_SKIP() << "the zebaudio tool is not part of this build (ZEBAUDIO_BUILD_TOOLS=OFF)"; }

#else

#include <cJSON.h>
#include <dirent.h>
#include <fcntl.h>
#include <sndfile.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "test_support.h"

extern char** environ;

namespace {

constexpr int kFrame = 128;
constexpr double kPi = 3.14159265358979323846;

struct ToolResult {
  int status = -1;
  std::string out;
  std::string err;
};

struct Audio {
  int rate = 0;
  int channels = 0;
  int format = 0;
  std::vector<short> samples;  // interleaved
  size_t Frames() const { return channels ? samples.size() / channels : 0; }
};

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteText(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

void WriteAudio(const std::string& path, const Audio& a) {
  SF_INFO info;
  memset(&info, 0, sizeof(info));
  info.samplerate = a.rate;
  info.channels = a.channels;
  info.format = a.format;
  SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
  ASSERT_EQ(sf_writef_short(f, a.samples.data(), (sf_count_t)a.Frames()), (sf_count_t)a.Frames());
  sf_close(f);
}

bool ReadAudio(const std::string& path, Audio* a) {
  SF_INFO info;
  memset(&info, 0, sizeof(info));
  SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
  if (f == nullptr) return false;
  a->rate = info.samplerate;
  a->channels = info.channels;
  a->format = info.format;
  a->samples.assign((size_t)info.frames * info.channels, 0);
  sf_readf_short(f, a->samples.data(), info.frames);
  sf_close(f);
  return true;
}

Audio Silence(int rate, int channels, size_t frames, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16) {
  Audio a;
  a.rate = rate;
  a.channels = channels;
  a.format = format;
  a.samples.assign(frames * channels, 0);
  return a;
}

void AddNoise(Audio* a, double amplitude, uint32_t seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-amplitude, amplitude);
  for (short& s : a->samples) s = (short)std::lround(std::clamp(s + u(rng), -32768.0, 32767.0));
}

void AddTone(Audio* a, double hz, double amplitude) {
  for (size_t i = 0; i < a->Frames(); ++i) {
    const double v = amplitude * std::sin(2.0 * kPi * hz * i / a->rate);
    for (int c = 0; c < a->channels; ++c) {
      short& s = a->samples[i * a->channels + c];
      s = (short)std::lround(std::clamp(s + v, -32768.0, 32767.0));
    }
  }
}

// Largest sample difference between two equally long signals.
int WorstDifference(const Audio& x, const Audio& y) {
  int worst = 0;
  for (size_t i = 0; i < std::min(x.samples.size(), y.samples.size()); ++i) {
    worst = std::max(worst, std::abs(x.samples[i] - y.samples[i]));
  }
  return worst;
}

double RmsDb(const Audio& a, size_t fromFrame, size_t toFrame) {
  double sum = 0.0;
  size_t n = 0;
  for (size_t i = fromFrame * a.channels; i < toFrame * a.channels && i < a.samples.size(); ++i, ++n) {
    sum += (double)a.samples[i] * a.samples[i];
  }
  return 10.0 * std::log10(sum / std::max<size_t>(n, 1) + 1e-9);
}

// Level of one frequency in channel 0 over a span, in dB (Goertzel-style
// correlation with a sine and a cosine).
double ToneDb(const Audio& a, double hz, size_t fromFrame, size_t toFrame) {
  double re = 0.0, im = 0.0;
  for (size_t i = fromFrame; i < toFrame; ++i) {
    const double v = a.samples[i * a.channels];
    re += v * std::cos(2.0 * kPi * hz * i / a.rate);
    im += v * std::sin(2.0 * kPi * hz * i / a.rate);
  }
  const double amplitude = 2.0 * std::hypot(re, im) / (double)(toFrame - fromFrame);
  return 20.0 * std::log10(amplitude + 1e-9);
}

class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zebaudio-tool-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
  }

  void TearDown() override {
    for (const std::string& name : Files(true)) unlink(Path(name).c_str());
    rmdir(dir_.c_str());
  }

  std::string Path(const std::string& name) const { return dir_ + "/" + name; }

  // Names in the working directory; the captured streams start with '_'.
  std::vector<std::string> Files(bool withCaptures = false) const {
    std::vector<std::string> names;
    DIR* d = opendir(dir_.c_str());
    if (d == nullptr) return names;
    while (dirent* e = readdir(d)) {
      std::string name = e->d_name;
      if (name == "." || name == "..") continue;
      if (!withCaptures && name[0] == '_') continue;
      names.push_back(name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
  }

  ToolResult Tool(const std::vector<std::string>& args) {
    std::vector<std::string> all = {ZEB_TOOL_PATH};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : all) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    const std::string outPath = Path("_stdout"), errPath = Path("_stderr");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ToolResult r;
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
      int status = 0;
      waitpid(pid, &status, 0);
      r.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    posix_spawn_file_actions_destroy(&actions);
    r.out = Slurp(outPath);
    r.err = Slurp(errPath);
    return r;
  }

  // Processes `in` with the options; fails the test unless the tool
  // succeeds, and returns the output.
  Audio Process(const Audio& in, const std::vector<std::string>& options, ToolResult* result = nullptr,
                const std::string& inName = "in.wav", const std::string& outName = "out.wav") {
    WriteAudio(Path(inName), in);
    std::vector<std::string> args = {"process", Path(inName), Path(outName), "--quiet"};
    args.insert(args.end(), options.begin(), options.end());
    ToolResult r = Tool(args);
    EXPECT_EQ(r.status, 0) << r.err;
    Audio out;
    EXPECT_TRUE(ReadAudio(Path(outName), &out)) << r.err;
    if (result != nullptr) *result = r;
    return out;
  }

  // True when the tool gave an error and left neither the output nor any
  // temporary file behind.
  void ExpectFailureWithoutOutput(const ToolResult& r, int status, const std::string& expectedText) {
    EXPECT_EQ(r.status, status) << r.err;
    EXPECT_NE(r.err.find(expectedText), std::string::npos) << "stderr: " << r.err;
    for (const std::string& name : Files()) {
      EXPECT_EQ(name.find("out"), std::string::npos) << "left behind: " << name;
      EXPECT_EQ(name.find(".tmp-"), std::string::npos) << "left behind: " << name;
    }
  }

  std::string dir_;
};

// ---- alignment and formats ----------------------------------------------

struct FormatCase {
  int rate;
  int channels;
  int format;
  const char* ext;
};

class ToolFormats : public ToolTest, public ::testing::WithParamInterface<FormatCase> {};

TEST_P(ToolFormats, AllOffReproducesTheInputAlignedAndInTheSameFormat) {
  const FormatCase c = GetParam();
  // Not a whole number of frames: the last one is padded and trimmed.
  Audio in = Silence(c.rate, c.channels, (size_t)c.rate / 4 + 37, c.format);
  AddNoise(&in, 8000.0, zebtest::TestSeed());
  const std::string inName = std::string("in.") + c.ext, outName = std::string("out.") + c.ext;
  Audio out = Process(in, {}, nullptr, inName, outName);
  EXPECT_EQ(out.rate, in.rate);
  EXPECT_EQ(out.channels, in.channels);
  EXPECT_EQ(out.format, in.format);
  ASSERT_EQ(out.Frames(), in.Frames());
  // The chain's transform round trip truncates toward zero, so samples may
  // move by one step; a shift of even one sample would show as thousands.
  EXPECT_LE(WorstDifference(in, out), 1);
}

INSTANTIATE_TEST_SUITE_P(RatesChannelsContainers, ToolFormats,
                         ::testing::Values(FormatCase{16000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, "wav"},
                                           FormatCase{48000, 2, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, "flac"},
                                           FormatCase{8000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24, "flac"},
                                           FormatCase{32000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, "wav"}));

TEST_F(ToolTest, NoAlignKeepsTheOneFrameDelayAndDelayOverridesTheDerivedOne) {
  Audio in = Silence(16000, 2, 3000);
  AddNoise(&in, 5000.0, zebtest::TestSeed());
  Audio raw = Process(in, {"--no-align"});
  ASSERT_EQ(raw.Frames(), in.Frames());
  for (size_t i = 0; i < (size_t)kFrame * 2; ++i) ASSERT_EQ(raw.samples[i], 0) << i;
  int worst = 0;
  for (size_t i = (size_t)kFrame * 2; i < raw.samples.size(); ++i) {
    worst = std::max(worst, std::abs(raw.samples[i] - in.samples[i - kFrame * 2]));
  }
  EXPECT_LE(worst, 1);
  Audio zeroDelay = Process(in, {"--delay", "0"}, nullptr, "in.wav", "out0.wav");
  EXPECT_EQ(zeroDelay.samples, raw.samples);
}

TEST_F(ToolTest, OtherRatesAreConvertedToTheNearestChainRateAndBack) {
  Audio in = Silence(44100, 2, 44100);
  AddTone(&in, 440.0, 6000.0);
  AddTone(&in, 2500.0, 3000.0);
  ToolResult r;
  Audio out = Process(in, {}, &r);
  EXPECT_NE(r.err.find("converting to 48000 Hz"), std::string::npos) << r.err;
  EXPECT_EQ(out.rate, 44100);
  ASSERT_EQ(out.Frames(), in.Frames());
  // Both conversions and the chain leave the tones in place, sample for
  // sample, away from the file's edges.
  double errorSum = 0.0, signalSum = 0.0;
  for (size_t i = 2000 * 2; i < out.samples.size() - 2000 * 2; ++i) {
    const double e = (double)out.samples[i] - in.samples[i];
    errorSum += e * e;
    signalSum += (double)in.samples[i] * in.samples[i];
  }
  EXPECT_LT(10.0 * std::log10(errorSum / signalSum), -40.0);

  Audio low = Silence(22050, 1, 5000);
  AddTone(&low, 300.0, 4000.0);
  ToolResult lowRun;
  Audio lowOut = Process(low, {}, &lowRun, "low.wav", "lowout.wav");
  EXPECT_NE(lowRun.err.find("converting to 16000 Hz"), std::string::npos) << lowRun.err;
  EXPECT_EQ(lowOut.Frames(), low.Frames());
}

TEST_F(ToolTest, OutputContainerFollowsTheExtensionAndEmptyInputGivesEmptyOutput) {
  Audio in = Silence(16000, 1, 1000);
  AddNoise(&in, 1000.0, 7);
  Audio out = Process(in, {}, nullptr, "in.wav", "out.flac");
  EXPECT_EQ(out.format & SF_FORMAT_TYPEMASK, SF_FORMAT_FLAC);
  EXPECT_LE(WorstDifference(in, out), 1);
  Audio empty = Process(Silence(16000, 1, 0), {}, nullptr, "empty.wav", "emptyout.wav");
  EXPECT_EQ(empty.Frames(), 0u);
}

// ---- feedback ---------------------------------------------------------------

TEST_F(ToolTest, SummaryReportsLevelsAndTimingAndQuietSilencesIt) {
  Audio in = Silence(16000, 1, 16000);
  AddTone(&in, 1000.0, 32768.0 * 0.5);  // peak -6.0 dBFS, RMS -9.0 dBFS
  WriteAudio(Path("in.wav"), in);
  ToolResult r = Tool({"process", Path("in.wav"), Path("out.wav")});
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* text : {"duration     1.00 s, 16000 Hz, 1 channel", "frames       126 of 128",
                           "input        RMS -9.0 dBFS, peak -6.0 dBFS", "output       RMS -9.0 dBFS",
                           "delay        128 samples compensated", "CPU time", "real-time factor"}) {
    EXPECT_NE(r.out.find(text), std::string::npos) << "missing '" << text << "' in:\n" << r.out;
  }
  ToolResult quiet = Tool({"process", Path("in.wav"), Path("out.wav"), "--quiet"});
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.out, "");
}

TEST_F(ToolTest, SpectrogramIsAPngOfTheExpectedSize) {
  Audio in = Silence(16000, 1, 16000 * 2);
  AddTone(&in, 500.0, 3000.0);
  Process(in, {"--spectrogram", Path("picture.png")});
  const std::string png = Slurp(Path("picture.png"));
  ASSERT_GT(png.size(), 33u);
  EXPECT_EQ(png.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
  auto be32 = [&](size_t at) {
    return (uint32_t)(uint8_t)png[at] << 24 | (uint32_t)(uint8_t)png[at + 1] << 16 |
           (uint32_t)(uint8_t)png[at + 2] << 8 | (uint8_t)png[at + 3];
  };
  // 2 s at 16 kHz gives 250 columns, widened to the 320 minimum, plus the
  // margins; two panels of 257 rows with their title bands and the axis.
  EXPECT_EQ(be32(16), 64u + 320u + 16u);
  EXPECT_EQ(be32(20), 2u * (30u + 257u) + 8u + 56u);
  for (const std::string& name : Files()) EXPECT_EQ(name.find(".tmp-"), std::string::npos) << name;
}

TEST_F(ToolTest, HelpDocumentsEveryOptionAndVersionNamesTheApi) {
  ToolResult help = Tool({"process", "--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* option :
       {"--nr", "--intensity", "--intensity-bands", "--smooth", "--speed", "--tuning", "--eq", "--hpf ",
        "--hpf-domain", "--agc ", "--agc-curve", "--agc-gate ", "--agc-gate-atten", "--agc-max-gain",
        "--agc-min-gain", "--agc-init-gain", "--agc-limit", "--agc-max-drop", "--agc-attack", "--agc-release",
        "--agc-step", "--gain", "--cng", "--config", "--no-align", "--delay", "--spectrogram",
        "--allow-missing-stages", "--quiet", "--verbose"}) {
    EXPECT_NE(help.out.find(option), std::string::npos) << option;
  }
  ToolResult main = Tool({"--help"});
  EXPECT_EQ(main.status, 0);
  EXPECT_NE(main.out.find("zebaudio process IN OUT"), std::string::npos);
  EXPECT_NE(main.out.find("zebaudio config"), std::string::npos);
  ToolResult version = Tool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(version.out.find("API 2.3"), std::string::npos) << version.out;
  EXPECT_EQ(version.out.find("ALGO_MSG"), std::string::npos) << "library chatter leaked: " << version.out;
}

// ---- errors -------------------------------------------------------------------

TEST_F(ToolTest, UnreadableOrMalformedInputsAreUsageErrorsNamingTheFile) {
  ToolResult missing = Tool({"process", Path("absent.wav"), Path("out.wav")});
  ExpectFailureWithoutOutput(missing, 2, "absent.wav");

  WriteText(Path("garbage.wav"), "this is not audio at all");
  ToolResult garbage = Tool({"process", Path("garbage.wav"), Path("out.wav")});
  ExpectFailureWithoutOutput(garbage, 2, "garbage.wav");

  WriteAudio(Path("three.wav"), Silence(16000, 3, 500));
  ToolResult three = Tool({"process", Path("three.wav"), Path("out.wav")});
  ExpectFailureWithoutOutput(three, 2, "mono or stereo");

  WriteAudio(Path("in.wav"), Silence(16000, 1, 500));
  ToolResult noDir = Tool({"process", Path("in.wav"), Path("nowhere/out.wav")});
  ExpectFailureWithoutOutput(noDir, 2, "nowhere/out.wav");
}

TEST_F(ToolTest, BadOptionsAndFilesAreUsageErrors) {
  WriteAudio(Path("in.wav"), Silence(16000, 1, 500));
  const std::string in = Path("in.wav"), out = Path("out.wav");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--bogus"}), 2, "unknown option '--bogus'");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--nr", "7"}), 2, "bad value '7' for --nr");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--hpf", "100"}), 2, "bad value '100' for --hpf");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--gain", "121"}), 2, "for --gain");
  ExpectFailureWithoutOutput(Tool({"process", in}), 2, "needs an input and an output");
  ExpectFailureWithoutOutput(Tool({"config", "--spectrogram", "x.png"}), 2, "unknown option");

  WriteText(Path("broken.json"), "{\n  \"anr_config\": {\n    \"anr_enable\": 1,\n  }\n}\n");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--config", Path("broken.json")}), 2,
                             "broken.json': not valid JSON (error near line 4");
  WriteText(Path("typo.json"), "{\"hpf_config\": {\"cutoff_frequencies\": 1}}");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--config", Path("typo.json")}), 2,
                             "hpf_config has no field \"cutoff_frequencies\"");
  WriteText(Path("short.json"), "{\"anr_config\": {\"anr_intensity\": [1, 2, 3]}}");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--config", Path("short.json")}), 2,
                             "anr_config.anr_intensity must be an array of 7 whole numbers");

  std::string gains;
  for (int i = 0; i < 128; ++i) gains += "0\n";
  WriteText(Path("eq.txt"), gains);
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--eq", Path("eq.txt")}), 2, "128 gains found, 129 needed");
  WriteText(Path("eq2.txt"), "# gains\n1.5\n");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--eq", Path("eq2.txt")}), 2,
                             "line 2 is not a whole number of dB");

  WriteText(Path("tuning.json"), "{\"fmode1Vwin\": 15}");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--tuning", Path("tuning.json")}), 2,
                             "--tuning applies to noise reduction");
  WriteText(Path("badtuning.json"), "[1, 2");
  ExpectFailureWithoutOutput(Tool({"process", in, out, "--nr", "0", "--tuning", Path("badtuning.json")}), 2,
                             "badtuning.json': not valid JSON");
}

// A value the library refuses ends the run with status 1, the result code's
// name and the library's own message.
TEST_F(ToolTest, LibraryRefusalsNameTheResultCodeAndLeaveNoOutput) {
  WriteAudio(Path("in.wav"), Silence(16000, 1, 2000));
  ToolResult r = Tool({"process", Path("in.wav"), Path("out.wav"), "--nr", "0", "--intensity", "31"});
  ExpectFailureWithoutOutput(r, 1, "failed: ALGO_KOL_");
  if (r.err.find("ALGO_KOL_ANR_RET_INVALID_INTENSITY (0x10000508)") != std::string::npos) {
    EXPECT_NE(r.err.find("library says: [ALGO_MSG_ERR] [ANR]Fail! Unsupported anr_intensity 31 in position 0."),
              std::string::npos)
        << r.err;
    // A refused value is no missing stage: the flag does not excuse it.
    ToolResult again =
        Tool({"process", Path("in.wav"), Path("out.wav"), "--nr", "0", "--intensity", "31", "--allow-missing-stages"});
    ExpectFailureWithoutOutput(again, 1, "ALGO_KOL_ANR_RET_INVALID_INTENSITY");
  } else {
    // Noise reduction is not in this library yet: its first call fails as
    // unavailable, which names the code and points at the flag.
    EXPECT_NE(r.err.find("ALGO_KOL_RET_FAILED (0x10000532)"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("--allow-missing-stages"), std::string::npos) << r.err;
  }

  ToolResult agc = Tool({"process", Path("in.wav"), Path("out.wav"), "--agc", "time", "--agc-step", "0"});
  if (agc.status == 0) GTEST_SKIP() << "the chain does not validate the AGC settings yet";
  ExpectFailureWithoutOutput(agc, 1, "ALGO_KOL_AGC_RET_INVALID_GAIN_STEP (0x10000523)");
  EXPECT_NE(agc.err.find("GainStep value error"), std::string::npos) << agc.err;
}

// ---- configuration file -------------------------------------------------------

std::vector<std::string> FieldNames(const cJSON* object) {
  std::vector<std::string> names;
  for (const cJSON* item = object != nullptr ? object->child : nullptr; item != nullptr; item = item->next) {
    names.push_back(item->string);
  }
  return names;
}

int IntAt(const cJSON* root, const char* record, const char* field, int index = -1) {
  const cJSON* item = cJSON_GetObjectItemCaseSensitive(cJSON_GetObjectItemCaseSensitive(root, record), field);
  if (index >= 0) item = cJSON_GetArrayItem(item, index);
  return item != nullptr ? item->valueint : -12345;
}

TEST_F(ToolTest, DefaultConfigurationHoldsEveryFieldOfTheFourRecordsInOrder) {
  ToolResult r = Tool({"config"});
  ASSERT_EQ(r.status, 0) << r.err;
  cJSON* root = cJSON_Parse(r.out.c_str());
  ASSERT_NE(root, nullptr) << r.out;
  EXPECT_EQ(FieldNames(root), (std::vector<std::string>{"anr_config", "eq_config", "hpf_config", "agc_config"}));
  EXPECT_EQ(FieldNames(cJSON_GetObjectItem(root, "anr_config")),
            (std::vector<std::string>{"anr_enable", "user_mode", "anr_intensity_band", "anr_intensity",
                                      "anr_smooth_level", "anr_converge_speed", "anr_filter_mode"}));
  EXPECT_EQ(FieldNames(cJSON_GetObjectItem(root, "eq_config")),
            (std::vector<std::string>{"eq_enable", "user_mode", "eq_gain_db"}));
  EXPECT_EQ(FieldNames(cJSON_GetObjectItem(root, "hpf_config")),
            (std::vector<std::string>{"hpf_enable", "user_mode", "cutoff_frequency"}));
  EXPECT_EQ(FieldNames(cJSON_GetObjectItem(root, "agc_config")),
            (std::vector<std::string>{"agc_enable", "user_mode", "gain_info", "drop_gain_max", "attack_time",
                                      "release_time", "compression_ratio_input", "compression_ratio_output",
                                      "drop_gain_threshold", "noise_gate_db", "noise_gate_attenuation_db",
                                      "gain_step"}));
  EXPECT_EQ(FieldNames(cJSON_GetObjectItem(cJSON_GetObjectItem(root, "agc_config"), "gain_info")),
            (std::vector<std::string>{"gain_max", "gain_min", "gain_init"}));
  EXPECT_EQ(cJSON_GetArraySize(cJSON_GetObjectItem(cJSON_GetObjectItem(root, "eq_config"), "eq_gain_db")), 129);
  // Every stage starts off.
  EXPECT_EQ(IntAt(root, "anr_config", "anr_enable"), 0);
  EXPECT_EQ(IntAt(root, "eq_config", "eq_enable"), 0);
  EXPECT_EQ(IntAt(root, "hpf_config", "hpf_enable"), 0);
  EXPECT_EQ(IntAt(root, "agc_config", "agc_enable"), 0);
  cJSON_Delete(root);
}

TEST_F(ToolTest, ConfigurationRoundTripsAndOptionsOverrideTheFile) {
  ToolResult defaults = Tool({"config"});
  WriteText(Path("default.json"), defaults.out);
  ToolResult again = Tool({"config", "--config", Path("default.json")});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(again.out, defaults.out);

  // A partial file, with an enumerator given by name, then options on top.
  WriteText(Path("partial.json"),
            "{\"hpf_config\": {\"hpf_enable\": 1, \"cutoff_frequency\": \"AUDIO_HPF_FREQ_150\"},"
            " \"anr_config\": {\"anr_filter_mode\": 2, \"anr_smooth_level\": 4}}");
  ToolResult mixed = Tool({"config", "--config", Path("partial.json"), "--nr", "3", "--intensity", "12", "--hpf-domain",
                           "time", "--agc", "freq", "--agc-curve", "-60:-40,-20:-10", "--agc-max-gain", "15"});
  ASSERT_EQ(mixed.status, 0) << mixed.err;
  cJSON* root = cJSON_Parse(mixed.out.c_str());
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(IntAt(root, "anr_config", "anr_enable"), 1);
  EXPECT_EQ(IntAt(root, "anr_config", "anr_filter_mode"), 3);      // option over file
  EXPECT_EQ(IntAt(root, "anr_config", "anr_smooth_level"), 4);     // file over default
  EXPECT_EQ(IntAt(root, "anr_config", "anr_intensity", 6), 12);
  EXPECT_EQ(IntAt(root, "hpf_config", "cutoff_frequency"), 2);
  EXPECT_EQ(IntAt(root, "hpf_config", "user_mode"), 2);
  EXPECT_EQ(IntAt(root, "agc_config", "agc_enable"), 1);
  EXPECT_EQ(IntAt(root, "agc_config", "user_mode"), 2);
  EXPECT_EQ(IntAt(root, "agc_config", "compression_ratio_input", 0), -60);
  EXPECT_EQ(IntAt(root, "agc_config", "compression_ratio_input", 6), -20);  // last point repeats
  EXPECT_EQ(IntAt(root, "agc_config", "compression_ratio_output", 6), -10);
  const cJSON* gainInfo = cJSON_GetObjectItem(cJSON_GetObjectItem(root, "agc_config"), "gain_info");
  EXPECT_EQ(cJSON_GetObjectItem(gainInfo, "gain_max")->valueint, 15);
  cJSON_Delete(root);

  WriteText(Path("mixed.json"), mixed.out);
  EXPECT_EQ(Tool({"config", "--config", Path("mixed.json")}).out, mixed.out);

  // The default file drives an all-off run.
  Audio in = Silence(16000, 1, 3000);
  AddNoise(&in, 3000.0, 11);
  Audio out = Process(in, {"--config", Path("default.json")});
  EXPECT_LE(WorstDifference(in, out), 1);
}

// ---- stage effects ------------------------------------------------------------
// Each stage joins the library in its own time. Until it has, the tool
// reports it as not available (with --allow-missing-stages) or the output
// comes back unchanged, and the test is skipped.

class ToolStageTest : public ToolTest {
 protected:
  // Runs a stage; false, with skipReason_ set, when the library does not
  // provide it yet. A failing run fails the test in Process.
  bool RunStage(const Audio& in, const std::vector<std::string>& options, const char* stage, Audio* out) {
    std::vector<std::string> args = options;
    args.push_back("--allow-missing-stages");
    ToolResult r;
    *out = Process(in, args, &r);
    if (r.status != 0) return false;
    if (r.err.find(std::string(stage) + " is not available") != std::string::npos) {
      skipReason_ = r.err;
      return false;
    }
    if (out->samples.size() == in.samples.size() && UnchangedAtSomeLag(in, *out)) {
      skipReason_ = std::string(stage) + " left the signal unchanged: not in this library yet";
      return false;
    }
    return true;
  }

  // An inert stage still moves the output by the delay the tool expects of
  // it, so the comparison tries every lag up to two frames.
  static bool UnchangedAtSomeLag(const Audio& in, const Audio& out) {
    const long frames = (long)in.Frames(), ch = in.channels;
    for (long lag = -2 * kFrame; lag <= 2 * kFrame; ++lag) {
      bool same = true;
      for (long i = std::max(0L, -lag); same && i < frames && i + lag < frames; ++i) {
        for (long c = 0; c < ch; ++c) {
          same = same && std::abs(out.samples[i * ch + c] - in.samples[(i + lag) * ch + c]) <= 1;
        }
      }
      if (same) return true;
    }
    return false;
  }

  std::string skipReason_;
};

TEST_F(ToolStageTest, FrequencyDomainHighPassRemovesHum) {
  Audio in = Silence(16000, 1, 16000 * 3);
  AddTone(&in, 50.0, 8000.0);
  AddTone(&in, 1000.0, 3000.0);
  const size_t from = 8000, to = in.Frames() - 8000;
  // At 16 kHz the 80 Hz table cuts the two lowest bins to 1/256, the 150 Hz
  // one ramps from 1/16 at 0 Hz to 1/4 at 125 Hz.
  const struct {
    const char* cutoffHz;
    double minCutDb;
  } cases[] = {{"80", 20.0}, {"150", 15.0}};
  for (const auto& c : cases) {
    Audio out;
    if (!RunStage(in, {"--hpf", c.cutoffHz}, "the high-pass filter", &out)) GTEST_SKIP() << skipReason_;
    EXPECT_LT(ToneDb(out, 50.0, from, to), ToneDb(in, 50.0, from, to) - c.minCutDb) << c.cutoffHz << " Hz";
    EXPECT_NEAR(ToneDb(out, 1000.0, from, to), ToneDb(in, 1000.0, from, to), 1.0) << c.cutoffHz << " Hz";
  }
}

TEST_F(ToolStageTest, TimeDomainHighPassRemovesHumAndStaysAligned) {
  Audio in = Silence(16000, 1, 16000 * 3);
  AddNoise(&in, 2000.0, zebtest::TestSeed());
  AddTone(&in, 50.0, 8000.0);
  Audio out;
  if (!RunStage(in, {"--hpf", "500", "--hpf-domain", "time"}, "the high-pass filter", &out)) {
    GTEST_SKIP() << skipReason_;
  }
  const size_t from = 8000, to = in.Frames() - 8000;
  EXPECT_LT(ToneDb(out, 50.0, from, to), ToneDb(in, 50.0, from, to) - 20.0);
  // The derived delay lines the filtered noise up with its source: the
  // correlation peaks at lag 0.
  int bestLag = 0;
  double best = -1.0;
  for (int lag = -64; lag <= 64; ++lag) {
    double sum = 0.0;
    for (size_t i = from; i < to; ++i) sum += (double)out.samples[i] * in.samples[(size_t)((long)i + lag)];
    if (sum > best) {
      best = sum;
      bestLag = lag;
    }
  }
  EXPECT_EQ(bestLag, 0);
}

TEST_F(ToolStageTest, EqualiserFileCutsTheBinsItNames) {
  Audio in = Silence(16000, 1, 16000 * 2);
  AddTone(&in, 500.0, 4000.0);   // bin 8
  AddTone(&in, 3000.0, 4000.0);  // bin 48
  std::string gains = "# flat below 2 kHz, -20 dB above\n";
  for (int bin = 0; bin < 129; ++bin) gains += bin < 32 ? "0\n" : "-20\n";
  WriteText(Path("eq.txt"), gains);
  Audio out;
  if (!RunStage(in, {"--eq", Path("eq.txt")}, "the equaliser", &out)) GTEST_SKIP() << skipReason_;
  const size_t from = 4000, to = in.Frames() - 4000;
  EXPECT_NEAR(ToneDb(out, 3000.0, from, to), ToneDb(in, 3000.0, from, to) - 20.0, 1.0);
  EXPECT_NEAR(ToneDb(out, 500.0, from, to), ToneDb(in, 500.0, from, to), 1.0);
}

TEST_F(ToolStageTest, ComfortNoiseFillsSilenceAtTheFloorAsked) {
  Audio in = Silence(16000, 1, 16000);
  Audio quiet, louder;
  if (!RunStage(in, {"--cng", "-70"}, "comfort noise", &quiet)) GTEST_SKIP() << skipReason_;
  ASSERT_TRUE(RunStage(in, {"--cng", "-50"}, "comfort noise", &louder)) << skipReason_;
  // The floor is a power: 20 dB more of it is 20 dB more noise.
  EXPECT_NEAR(RmsDb(louder, 0, in.Frames()) - RmsDb(quiet, 0, in.Frames()), 20.0, 3.0);
}

TEST_F(ToolStageTest, BothAgcDomainsRaiseAQuietFile) {
  Audio in = Silence(16000, 1, 16000 * 4);
  AddTone(&in, 700.0, 300.0);  // about -43 dBFS RMS
  AddTone(&in, 1900.0, 150.0);
  const size_t half = in.Frames() / 2;
  for (const char* domain : {"time", "freq"}) {
    Audio out;
    if (!RunStage(in, {"--agc", domain}, "gain control", &out)) GTEST_SKIP() << skipReason_;
    EXPECT_GT(RmsDb(out, half, in.Frames()), RmsDb(in, half, in.Frames()) + 6.0) << domain;
  }
}

TEST_F(ToolStageTest, NoiseReductionLowersAStationaryNoiseFloor) {
  Audio in = Silence(16000, 1, 16000 * 4);
  AddNoise(&in, 1500.0, zebtest::TestSeed());
  Audio out;
  if (!RunStage(in, {"--nr", "0"}, "noise reduction", &out)) GTEST_SKIP() << skipReason_;
  const size_t from = in.Frames() / 2;
  EXPECT_LT(RmsDb(out, from, in.Frames()), RmsDb(in, from, in.Frames()) - 6.0);
}

TEST_F(ToolStageTest, DigitalGainScalesTheOutput) {
  Audio in = Silence(16000, 2, 4000);
  AddNoise(&in, 3000.0, zebtest::TestSeed());
  Audio out;
  // 6.0206 dB is a factor of two.
  if (!RunStage(in, {"--gain", "6.0206"}, "digital gain", &out)) GTEST_SKIP() << skipReason_;
  int worst = 0;
  for (size_t i = 0; i < in.samples.size(); ++i) worst = std::max(worst, std::abs(out.samples[i] - 2 * in.samples[i]));
  EXPECT_LE(worst, 3);
}

}  // namespace

#endif  // ZEB_TOOL_PATH
