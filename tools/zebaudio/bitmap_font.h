// A 5x7 pixel font for the labels of the spectrogram picture: digits,
// capital letters (small letters are drawn as capitals) and a few signs.
#ifndef ZEBTOOL_BITMAP_FONT_H
#define ZEBTOOL_BITMAP_FONT_H

#include <cstdint>

namespace zebtool {

constexpr int kGlyphWidthPx = 5;
constexpr int kGlyphHeightPx = 7;
constexpr int kGlyphAdvancePx = 6;  // one blank column between glyphs

// The seven rows of a glyph, top first; bit 4 is the leftmost pixel. An
// unknown character gives a blank glyph.
const uint8_t* GlyphRows(char c);

}  // namespace zebtool

#endif  // ZEBTOOL_BITMAP_FONT_H
