#include "test_support.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace zebtest {

std::string CaptureStdout(const std::function<void()>& fn) {
  fflush(stdout);
  testing::internal::CaptureStdout();
  fn();
  fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name), had_old_(false) {
  const char* old = getenv(name);
  if (old != nullptr) {
    had_old_ = true;
    old_ = old;
  }
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

ScopedEnv::~ScopedEnv() {
  if (had_old_) {
    setenv(name_.c_str(), old_.c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

TempFile::TempFile(const std::string& content) {
  char pattern[] = "/tmp/zebtest_XXXXXX";
  int fd = mkstemp(pattern);
  if (fd >= 0) {
    path_ = pattern;
    if (!content.empty()) {
      ssize_t written = write(fd, content.data(), content.size());
      (void)written;
    }
    close(fd);
  }
}

TempFile::~TempFile() {
  if (!path_.empty()) {
    unlink(path_.c_str());
  }
}

const char* const kNoLevelFile = "/nonexistent/zebaudio-test-level.json";

ScopedLevel::ScopedLevel(int level)
    : file_("{\"debug_level\": " + std::to_string(level) + "}"), env_("DML_PATH", file_.path().c_str()) {}

double Rms(const std::vector<short>& x, size_t fromFrame, size_t toFrame, unsigned channels, unsigned channel) {
  double e = 0.0;
  size_t n = 0;
  for (size_t i = fromFrame * channels + channel; i < toFrame * channels && i < x.size(); i += channels, ++n) {
    e += double(x[i]) * x[i];
  }
  return std::sqrt(e / (n > 0 ? n : 1));
}

double Db(double ratio) { return 20.0 * std::log10(ratio); }

uint32_t TestSeed() {
  uint32_t seed;
  const char* env = getenv("ZEB_TEST_SEED");
  if (env != nullptr) {
    seed = static_cast<uint32_t>(strtoul(env, nullptr, 0));
  } else {
    seed = static_cast<uint32_t>(
        std::chrono::steady_clock::now().time_since_epoch().count() & 0xffffffffu);
  }
  std::printf("random seed: %u (set ZEB_TEST_SEED to repeat)\n", seed);
  return seed;
}

std::vector<short> Tone(int sampleRateHz, float frequencyHz, float amplitude, int frames,
                        int channels, int frameLenSamples) {
  std::vector<short> out(static_cast<size_t>(frames) * frameLenSamples * channels);
  const double step = 2.0 * M_PI * frequencyHz / sampleRateHz;
  for (size_t n = 0; n < out.size() / channels; ++n) {
    const short s = static_cast<short>(std::lround(amplitude * std::sin(step * n)));
    for (int c = 0; c < channels; ++c) {
      out[n * channels + c] = s;
    }
  }
  return out;
}

}  // namespace zebtest
