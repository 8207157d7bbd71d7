// Before/after spectrogram picture (PNG, libpng): the input on top, the
// output below, on the same time and frequency axes and the same level
// scale, so that what the chain removed or added is seen at a glance.
#ifndef ZEBTOOL_SPECTROGRAM_H
#define ZEBTOOL_SPECTROGRAM_H

#include <string>

#include "audio_file.h"

namespace zebtool {

// Renders both signals (channels mixed) and writes the picture to `fd`
// (from PendingOutput::Create, closed here). `input` and `output` share
// rate and length.
bool WriteSpectrogramPng(int fd, const std::string& finalPath, const AudioBuffer& input, const AudioBuffer& output,
                         std::string* error);

}  // namespace zebtool

#endif  // ZEBTOOL_SPECTROGRAM_H
