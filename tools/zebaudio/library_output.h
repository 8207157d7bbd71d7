// What the library says: the names of its result codes, and its printed
// messages. The library prints with printf to standard output; while a
// session runs, the tool parks standard output in a temporary file so that
// these messages can be attached to the failure they explain instead of
// being mixed into the tool's own output.
#ifndef ZEBTOOL_LIBRARY_OUTPUT_H
#define ZEBTOOL_LIBRARY_OUTPUT_H

#include <string>
#include <vector>

#include "zebaudio.h"

namespace zebtool {

// "ALGO_KOL_ANR_RET_INVALID_INTENSITY (0x10000508)"; unknown values are
// given in hexadecimal only.
std::string KolResultName(ALGO_KOL_RET code);

enum class LibraryLineKind { kError, kWarning, kInfo };

struct LibraryLine {
  LibraryLineKind kind;
  std::string text;  // as printed, without the line end
};

// Redirects standard output into a private file between Begin and End.
// Only one capture exists per process.
class LibraryOutputCapture {
 public:
  LibraryOutputCapture() = default;
  ~LibraryOutputCapture();
  LibraryOutputCapture(const LibraryOutputCapture&) = delete;
  LibraryOutputCapture& operator=(const LibraryOutputCapture&) = delete;

  // False (with errno set) when the redirection could not be made; the
  // library then prints straight to standard output, which is harmless.
  bool Begin();
  void End();
  // Lines printed since the last call, oldest first.
  std::vector<LibraryLine> Take();

 private:
  int savedStdoutFd_ = -1;
  int captureFd_ = -1;
};

// Writes lines to standard error as "zebaudio: library: ...". Information
// lines pass only when verbose is set.
void RelayLibraryLines(const std::vector<LibraryLine>& lines, bool verbose);

// Reports a failed library call on standard error: the call, its outcome
// (KolResultName of the result code, for calls that return one), and the
// error and warning lines the library printed.
void ReportLibraryFailure(const std::string& call, const std::string& outcome,
                          const std::vector<LibraryLine>& lines);

}  // namespace zebtool

#endif  // ZEBTOOL_LIBRARY_OUTPUT_H
