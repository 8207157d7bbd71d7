#include "library_output.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace zebtool {
namespace {

struct KolResultEntry {
  ALGO_KOL_RET code;
  const char* name;
};

constexpr KolResultEntry kKolResultNames[] = {
    {ALGO_KOL_RET_SUCCESS, "ALGO_KOL_RET_SUCCESS"},
    {ALGO_KOL_RET_INIT_ERROR, "ALGO_KOL_RET_INIT_ERROR"},
    {ALGO_KOL_RET_INVALID_HANDLE, "ALGO_KOL_RET_INVALID_HANDLE"},
    {ALGO_KOL_RET_INVALID_SAMPLE_RATE, "ALGO_KOL_RET_INVALID_SAMPLE_RATE"},
    {ALGO_KOL_RET_INVALID_POINT_NUMBER, "ALGO_KOL_RET_INVALID_POINT_NUMBER"},
    {ALGO_KOL_RET_INVALID_CHANNEL, "ALGO_KOL_RET_INVALID_CHANNEL"},
    {ALGO_KOL_ANR_RET_INVALID_ENABLE, "ALGO_KOL_ANR_RET_INVALID_ENABLE"},
    {ALGO_KOL_ANR_RET_INVALID_MODE, "ALGO_KOL_ANR_RET_INVALID_MODE"},
    {ALGO_KOL_ANR_RET_INVALID_INTENSITY, "ALGO_KOL_ANR_RET_INVALID_INTENSITY"},
    {ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL, "ALGO_KOL_ANR_RET_INVALID_SMOOTH_LEVEL"},
    {ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED, "ALGO_KOL_ANR_RET_INVALID_CONVERGE_SPEED"},
    {ALGO_KOL_ANR_RET_INVALID_FILTER_MODE, "ALGO_KOL_ANR_RET_INVALID_FILTER_MODE"},
    {ALGO_KOL_EQ_RET_INVALID_ENABLE, "ALGO_KOL_EQ_RET_INVALID_ENABLE"},
    {ALGO_KOL_EQ_RET_INVALID_MODE, "ALGO_KOL_EQ_RET_INVALID_MODE"},
    {ALGO_KOL_EQ_RET_INVALID_TABLE, "ALGO_KOL_EQ_RET_INVALID_TABLE"},
    {ALGO_KOL_HPF_RET_INVALID_ENABLE, "ALGO_KOL_HPF_RET_INVALID_ENABLE"},
    {ALGO_KOL_HPF_RET_INVALID_MODE, "ALGO_KOL_HPF_RET_INVALID_MODE"},
    {ALGO_KOL_HPF_RET_INVALID_TABLE, "ALGO_KOL_HPF_RET_INVALID_TABLE"},
    {ALGO_KOL_AGC_RET_INVALID_ENABLE, "ALGO_KOL_AGC_RET_INVALID_ENABLE"},
    {ALGO_KOL_AGC_RET_INVALID_MODE, "ALGO_KOL_AGC_RET_INVALID_MODE"},
    {ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO, "ALGO_KOL_AGC_RET_INVALID_COMPRESSION_RATIO"},
    {ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND, "ALGO_KOL_AGC_RET_INVALID_FREQUENCY_BAND"},
    {ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX, "ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_MAX"},
    {ALGO_KOL_AGC_RET_INVALID_GAIN_STEP, "ALGO_KOL_AGC_RET_INVALID_GAIN_STEP"},
    {ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME, "ALGO_KOL_AGC_RET_INVALID_RELEASE_TIME"},
    {ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME, "ALGO_KOL_AGC_RET_INVALID_ATTACK_TIME"},
    {ALGO_KOL_AGC_RET_INVALID_NOISE_GATE, "ALGO_KOL_AGC_RET_INVALID_NOISE_GATE"},
    {ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU, "ALGO_KOL_AGC_RET_INVALID_NOISE_ATTENU"},
    {ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL, "ALGO_KOL_AGC_RET_INVALID_DROP_GAIN_LEVEL"},
    {ALGO_KOL_AGC_RET_INVALID_GAIN_INFO, "ALGO_KOL_AGC_RET_INVALID_GAIN_INFO"},
    {ALGO_KOL_RET_API_CONFLICT, "ALGO_KOL_RET_API_CONFLICT"},
    {ALGO_KOL_RET_INVALID_CALLING, "ALGO_KOL_RET_INVALID_CALLING"},
    {ALGO_KOL_RET_FAILED, "ALGO_KOL_RET_FAILED"},
};

std::string Hex(unsigned value) {
  char text[16];
  snprintf(text, sizeof(text), "0x%x", value);
  return text;
}

// The library opens every message with a bracketed level tag.
LibraryLineKind KindOfLine(const std::string& line, LibraryLineKind previous) {
  if (line.rfind("[ALGO_MSG_ERR]", 0) == 0) return LibraryLineKind::kError;
  if (line.rfind("[ALGO_MSG_WRN]", 0) == 0) return LibraryLineKind::kWarning;
  if (line.rfind("[ALGO_MSG_MSG]", 0) == 0) return LibraryLineKind::kInfo;
  // An untagged line continues the message before it.
  return previous;
}

// Message texts end in tabs and carriage returns; they carry no meaning.
std::string TrimLineEnd(std::string line) {
  while (!line.empty() && (line.back() == '\t' || line.back() == '\r' || line.back() == ' ')) {
    line.pop_back();
  }
  return line;
}

std::vector<LibraryLine> SplitLines(const std::string& text) {
  std::vector<LibraryLine> lines;
  LibraryLineKind kind = LibraryLineKind::kInfo;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = TrimLineEnd(text.substr(start, end - start));
    start = end + 1;
    if (line.empty()) continue;
    kind = KindOfLine(line, kind);
    lines.push_back({kind, line});
  }
  return lines;
}

}  // namespace

std::string KolResultName(ALGO_KOL_RET code) {
  for (const KolResultEntry& entry : kKolResultNames) {
    if (entry.code == code) return std::string(entry.name) + " (" + Hex((unsigned)code) + ")";
  }
  return "unknown result " + Hex((unsigned)code);
}

LibraryOutputCapture::~LibraryOutputCapture() { End(); }

bool LibraryOutputCapture::Begin() {
  if (captureFd_ >= 0) return true;
  fflush(stdout);
  FILE* parked = tmpfile();
  if (parked == nullptr) return false;
  // A duplicate keeps the file alive after the stream is closed.
  captureFd_ = dup(fileno(parked));
  fclose(parked);
  if (captureFd_ < 0) return false;
  savedStdoutFd_ = dup(STDOUT_FILENO);
  if (savedStdoutFd_ < 0 || dup2(captureFd_, STDOUT_FILENO) < 0) {
    if (savedStdoutFd_ >= 0) close(savedStdoutFd_);
    close(captureFd_);
    savedStdoutFd_ = captureFd_ = -1;
    return false;
  }
  return true;
}

void LibraryOutputCapture::End() {
  if (captureFd_ < 0) return;
  fflush(stdout);
  dup2(savedStdoutFd_, STDOUT_FILENO);
  close(savedStdoutFd_);
  close(captureFd_);
  savedStdoutFd_ = captureFd_ = -1;
}

std::vector<LibraryLine> LibraryOutputCapture::Take() {
  if (captureFd_ < 0) return {};
  fflush(stdout);
  struct stat info;
  if (fstat(captureFd_, &info) != 0 || info.st_size == 0) return {};
  std::string text((size_t)info.st_size, '\0');
  ssize_t got = pread(captureFd_, &text[0], text.size(), 0);
  text.resize(got > 0 ? (size_t)got : 0);
  // Standard output shares the file offset with captureFd_, so rewinding
  // here makes the next message start at the beginning again.
  if (ftruncate(captureFd_, 0) == 0) lseek(captureFd_, 0, SEEK_SET);
  return SplitLines(text);
}

void RelayLibraryLines(const std::vector<LibraryLine>& lines, bool verbose) {
  for (const LibraryLine& line : lines) {
    if (line.kind == LibraryLineKind::kInfo && !verbose) continue;
    fprintf(stderr, "zebaudio: library: %s\n", line.text.c_str());
  }
}

void ReportLibraryFailure(const std::string& call, const std::string& outcome,
                          const std::vector<LibraryLine>& lines) {
  fprintf(stderr, "zebaudio: %s failed: %s\n", call.c_str(), outcome.c_str());
  bool said = false;
  for (const LibraryLine& line : lines) {
    if (line.kind == LibraryLineKind::kInfo) continue;
    fprintf(stderr, "zebaudio:   library says: %s\n", line.text.c_str());
    said = true;
  }
  if (!said) fprintf(stderr, "zebaudio:   (the library printed no message)\n");
}

}  // namespace zebtool
