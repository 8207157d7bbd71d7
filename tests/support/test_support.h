// Small helpers shared by the test programs.
#ifndef ZEB_TESTS_TEST_SUPPORT_H
#define ZEB_TESTS_TEST_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zebtest {

// Runs fn with standard output captured and returns what it printed.
std::string CaptureStdout(const std::function<void()>& fn);

// Sets (or, with nullptr, unsets) an environment variable for one scope.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool had_old_;
};

// A file in the temporary directory, removed at the end of the scope.
class TempFile {
 public:
  explicit TempFile(const std::string& content);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Points DML_PATH at a level file holding {"debug_level": level} for one
// scope, so that handles made in it print exactly what that level lets through.
class ScopedLevel {
 public:
  explicit ScopedLevel(int level);

 private:
  TempFile file_;
  ScopedEnv env_;
};

// A level-file path that never exists: the library then runs at level 7.
extern const char* const kNoLevelFile;

// A message as the library prints it: level tag, a space, then the body.
inline std::string Err(const std::string& body) { return "[ALGO_MSG_ERR] " + body; }
inline std::string Wrn(const std::string& body) { return "[ALGO_MSG_WRN] " + body; }
inline std::string Msg(const std::string& body) { return "[ALGO_MSG_MSG] " + body; }

// RMS of samples [fromFrame, toFrame) of one channel of an interleaved signal.
double Rms(const std::vector<short>& x, size_t fromFrame, size_t toFrame, unsigned channels = 1,
           unsigned channel = 0);
// An amplitude ratio in dB.
double Db(double ratio);

// Seed for random tests: ZEB_TEST_SEED if set, else from the clock; printed.
uint32_t TestSeed();

// Interleaved 16-bit tone: amplitude in sample units, frequency in Hz.
std::vector<short> Tone(int sampleRateHz, float frequencyHz, float amplitude, int frames,
                        int channels, int frameLenSamples = 128);

}  // namespace zebtest

#endif
