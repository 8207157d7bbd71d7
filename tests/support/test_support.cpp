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
