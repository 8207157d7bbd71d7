#include "audio_file.h"

#include <limits.h>
#include <signal.h>
#include <sndfile.h>
#include <soxr.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace zebtool {
namespace {

constexpr int kChainRatesHz[] = {8000, 16000, 32000, 48000};
constexpr int kMaxChannels = 2;

// ---- temporary outputs and their clean-up on a signal -------------------

constexpr int kPendingSlots = 4;
char g_pendingPaths[kPendingSlots][PATH_MAX];
volatile sig_atomic_t g_pendingUsed[kPendingSlots];

void RemovePendingOnSignal(int signalNumber) {
  for (int i = 0; i < kPendingSlots; ++i) {
    if (g_pendingUsed[i]) unlink(g_pendingPaths[i]);  // async-signal-safe
  }
  signal(signalNumber, SIG_DFL);
  raise(signalNumber);
}

void InstallSignalCleanup() {
  static bool installed = false;
  if (installed) return;
  installed = true;
  for (int s : {SIGINT, SIGTERM, SIGHUP}) signal(s, RemovePendingOnSignal);
}

int ClaimSlot(const std::string& path) {
  if (path.size() >= PATH_MAX) return -1;
  for (int i = 0; i < kPendingSlots; ++i) {
    if (!g_pendingUsed[i]) {
      memcpy(g_pendingPaths[i], path.c_str(), path.size() + 1);
      g_pendingUsed[i] = 1;
      return i;
    }
  }
  return -1;
}

// The permissions a newly created file would get under the current umask.
mode_t DefaultFileMode() {
  mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

std::string LowerExtension(const std::string& path) {
  size_t slash = path.find_last_of('/');
  size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot + 1);
  for (char& c : ext) c = (char)tolower((unsigned char)c);
  return ext;
}

// Same format as the input, with the container the output's extension asks
// for; a sample format the new container cannot hold becomes 16-bit PCM.
int OutputFormat(const std::string& path, int inputFormat, int channels, int rateHz) {
  const std::string ext = LowerExtension(path);
  int major = inputFormat & SF_FORMAT_TYPEMASK;
  const bool inputIsWav = major == SF_FORMAT_WAV || major == SF_FORMAT_WAVEX || major == SF_FORMAT_RF64;
  if (ext == "wav" && !inputIsWav) major = SF_FORMAT_WAV;
  if (ext == "flac") major = SF_FORMAT_FLAC;
  int format = major | (inputFormat & SF_FORMAT_SUBMASK);
  SF_INFO probe;
  memset(&probe, 0, sizeof(probe));
  probe.samplerate = rateHz;
  probe.channels = channels;
  probe.format = format;
  if (!sf_format_check(&probe)) format = major | SF_FORMAT_PCM_16;
  return format;
}

}  // namespace

bool ReadAudioFile(const std::string& path, AudioBuffer* audio, int* format, std::string* error) {
  SF_INFO info;
  memset(&info, 0, sizeof(info));
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) {
    *error = "cannot read audio file '" + path + "': " + sf_strerror(nullptr);
    return false;
  }
  bool ok = true;
  if (info.channels < 1 || info.channels > kMaxChannels) {
    *error = "'" + path + "' has " + std::to_string(info.channels) +
             " channels; the chain takes mono or stereo only";
    ok = false;
  } else if (info.samplerate <= 0) {
    *error = "'" + path + "' has no valid sample rate";
    ok = false;
  }
  if (ok) {
    // Float data beyond full scale is clipped rather than wrapped.
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    audio->sampleRateHz = info.samplerate;
    audio->channels = info.channels;
    audio->samples.assign((size_t)info.frames * (size_t)info.channels, 0);
    sf_count_t got = info.frames > 0 ? sf_readf_short(file, audio->samples.data(), info.frames) : 0;
    if (sf_error(file) != SF_ERR_NO_ERROR) {
      *error = "cannot read audio file '" + path + "': " + sf_strerror(file);
      ok = false;
    }
    audio->samples.resize((size_t)(got > 0 ? got : 0) * (size_t)info.channels);
    *format = info.format;
  }
  sf_close(file);
  return ok;
}

bool IsChainRate(int sampleRateHz) {
  for (int rate : kChainRatesHz) {
    if (rate == sampleRateHz) return true;
  }
  return false;
}

int NearestChainRate(int sampleRateHz) {
  int best = kChainRatesHz[0];
  for (int rate : kChainRatesHz) {
    if (std::abs(rate - sampleRateHz) <= std::abs(best - sampleRateHz)) best = rate;
  }
  return best;
}

bool ResampleAudio(const AudioBuffer& in, int targetRateHz, size_t targetFrames, AudioBuffer* out,
                   std::string* error) {
  const size_t inFrames = in.FrameCount();
  // Room for the converter's rounding; the result is cut to targetFrames.
  const size_t capacity =
      (size_t)std::ceil((double)inFrames * targetRateHz / in.sampleRateHz) + 16 + targetFrames;
  std::vector<int16_t> converted(capacity * (size_t)in.channels);
  soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
  io.flags |= SOXR_NO_DITHER;  // the same input always gives the same output
  soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
  size_t done = 0;
  soxr_error_t failure = soxr_oneshot(in.sampleRateHz, targetRateHz, (unsigned)in.channels, in.samples.data(),
                                      inFrames, nullptr, converted.data(), capacity, &done, &io, &quality, nullptr);
  if (failure != nullptr) {
    *error = std::string("rate conversion failed: ") + failure;
    return false;
  }
  converted.resize(targetFrames * (size_t)in.channels, 0);  // zero-fills when short
  out->sampleRateHz = targetRateHz;
  out->channels = in.channels;
  out->samples.swap(converted);
  return true;
}

PendingOutput::~PendingOutput() { Discard(); }

int PendingOutput::Create(const std::string& finalPath, std::string* error) {
  Discard();
  InstallSignalCleanup();
  std::string pattern = finalPath + ".tmp-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  int fd = mkstemp(name.data());
  if (fd < 0) {
    *error = "cannot create '" + pattern + "': " + strerror(errno);
    return -1;
  }
  fchmod(fd, DefaultFileMode());  // mkstemp's 0600 is too private for a result
  finalPath_ = finalPath;
  tempPath_ = name.data();
  slot_ = ClaimSlot(tempPath_);
  return fd;
}

bool PendingOutput::Commit(std::string* error) {
  if (tempPath_.empty()) return true;
  if (rename(tempPath_.c_str(), finalPath_.c_str()) != 0) {
    *error = "cannot rename '" + tempPath_ + "' to '" + finalPath_ + "': " + strerror(errno);
    Discard();
    return false;
  }
  if (slot_ >= 0) g_pendingUsed[slot_] = 0;
  slot_ = -1;
  tempPath_.clear();
  return true;
}

void PendingOutput::Discard() {
  if (tempPath_.empty()) return;
  unlink(tempPath_.c_str());
  if (slot_ >= 0) g_pendingUsed[slot_] = 0;
  slot_ = -1;
  tempPath_.clear();
}

bool WriteAudioFile(int fd, const std::string& finalPath, const AudioBuffer& audio, int format,
                    std::string* error) {
  SF_INFO info;
  memset(&info, 0, sizeof(info));
  info.samplerate = audio.sampleRateHz;
  info.channels = audio.channels;
  info.format = OutputFormat(finalPath, format, audio.channels, audio.sampleRateHz);
  SNDFILE* file = sf_open_fd(fd, SFM_WRITE, &info, SF_TRUE);
  if (file == nullptr) {
    close(fd);
    *error = "cannot write audio file '" + finalPath + "': " + sf_strerror(nullptr);
    return false;
  }
  const sf_count_t frames = (sf_count_t)audio.FrameCount();
  sf_count_t written = frames > 0 ? sf_writef_short(file, audio.samples.data(), frames) : 0;
  bool ok = written == frames && sf_error(file) == SF_ERR_NO_ERROR;
  if (!ok) *error = "cannot write audio file '" + finalPath + "': " + sf_strerror(file);
  if (sf_close(file) != 0 && ok) {
    *error = "cannot finish audio file '" + finalPath + "'";
    ok = false;
  }
  return ok;
}

}  // namespace zebtool
