#include "sonogram.h"

#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <vector>

#include "bitmap_font.h"

namespace zebtool {
namespace {

constexpr int kFftLen = 512;
constexpr int kFftLog2 = 9;
constexpr int kBins = kFftLen / 2 + 1;
constexpr int kPanelHeightPx = kBins;  // one row per bin
constexpr int kHopForWidthSamples = 128;
constexpr int kMinPlotWidthPx = 320;
constexpr int kMaxPlotWidthPx = 1200;
constexpr int kTextScale = 2;
constexpr int kMarginLeftPx = 64;
constexpr int kMarginRightPx = 16;
constexpr int kTitleBandPx = 30;
constexpr int kPanelGapPx = 8;
constexpr int kAxisBandPx = 56;
constexpr double kFloorDb = -110.0;  // bottom of the colour scale, dB re full scale
constexpr double kFullScale = 32768.0;
constexpr double kPi = 3.14159265358979323846;

struct Rgb {
  uint8_t r, g, b;
};

constexpr Rgb kBackground = {24, 24, 28};
constexpr Rgb kInk = {230, 230, 230};
constexpr Rgb kTickInk = {150, 150, 150};

// Dark to bright through purple, red and orange: perceived brightness rises
// with the level.
constexpr Rgb kColourStops[] = {{0, 0, 4}, {60, 15, 110}, {180, 45, 95}, {250, 140, 30}, {252, 255, 164}};

class Image {
 public:
  Image(int width, int height) : width_(width), height_(height), rgb_((size_t)width * height * 3) {
    Fill(0, 0, width, height, kBackground);
  }
  int width() const { return width_; }
  int height() const { return height_; }
  const uint8_t* data() const { return rgb_.data(); }

  void Put(int x, int y, Rgb c) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    uint8_t* p = &rgb_[((size_t)y * width_ + x) * 3];
    p[0] = c.r;
    p[1] = c.g;
    p[2] = c.b;
  }

  void Fill(int x, int y, int w, int h, Rgb c) {
    for (int j = y; j < y + h; ++j) {
      for (int i = x; i < x + w; ++i) Put(i, j, c);
    }
  }

  // Top-left corner at (x, y).
  void Text(int x, int y, const std::string& text, Rgb c) {
    for (size_t n = 0; n < text.size(); ++n) {
      const uint8_t* rows = GlyphRows(text[n]);
      const int gx = x + (int)n * kGlyphAdvancePx * kTextScale;
      for (int row = 0; row < kGlyphHeightPx; ++row) {
        for (int col = 0; col < kGlyphWidthPx; ++col) {
          if (rows[row] & (0x10 >> col)) Fill(gx + col * kTextScale, y + row * kTextScale, kTextScale, kTextScale, c);
        }
      }
    }
  }

  static int TextWidth(const std::string& text) {
    return text.empty() ? 0 : ((int)text.size() * kGlyphAdvancePx - 1) * kTextScale;
  }

 private:
  int width_;
  int height_;
  std::vector<uint8_t> rgb_;
};

Rgb ColourOf(double t) {
  t = std::min(1.0, std::max(0.0, t));
  const int segments = (int)(sizeof(kColourStops) / sizeof(kColourStops[0])) - 1;
  const double pos = t * segments;
  const int i = std::min((int)pos, segments - 1);
  const double f = pos - i;
  const Rgb a = kColourStops[i], b = kColourStops[i + 1];
  auto mix = [f](uint8_t u, uint8_t v) { return (uint8_t)std::lround(u + (v - u) * f); };
  return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
}

// In-place radix-2 transform of kFftLen points.
void Fft(std::complex<double>* x) {
  for (int i = 1, j = 0; i < kFftLen; ++i) {
    int bit = kFftLen >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(x[i], x[j]);
  }
  for (int len = 2; len <= kFftLen; len <<= 1) {
    const std::complex<double> step = std::polar(1.0, -2.0 * kPi / len);
    for (int i = 0; i < kFftLen; i += len) {
      std::complex<double> w = 1.0;
      for (int k = 0; k < len / 2; ++k) {
        const std::complex<double> u = x[i + k], v = x[i + k + len / 2] * w;
        x[i + k] = u + v;
        x[i + k + len / 2] = u - v;
        w *= step;
      }
    }
  }
}
static_assert((1 << kFftLog2) == kFftLen, "the transform length is a power of two");

std::vector<double> MixToMono(const AudioBuffer& audio) {
  const size_t frames = audio.FrameCount();
  std::vector<double> mono(frames, 0.0);
  for (size_t i = 0; i < frames; ++i) {
    for (int c = 0; c < audio.channels; ++c) mono[i] += audio.samples[i * audio.channels + c];
    mono[i] /= audio.channels * kFullScale;
  }
  return mono;
}

// One panel: column x shows the spectrum of a Hann window centred on its
// share of the signal; a full-scale sine reads 0 dB.
void DrawPanel(Image* image, int left, int top, int plotWidth, const std::vector<double>& signal) {
  std::vector<double> window(kFftLen);
  double windowSum = 0.0;
  for (int i = 0; i < kFftLen; ++i) {
    window[i] = 0.5 - 0.5 * std::cos(2.0 * kPi * i / kFftLen);
    windowSum += window[i];
  }
  const double n = (double)signal.size();
  std::vector<std::complex<double>> x(kFftLen);
  for (int col = 0; col < plotWidth; ++col) {
    const long centre = (long)((col + 0.5) * n / plotWidth);
    for (int i = 0; i < kFftLen; ++i) {
      const long t = centre - kFftLen / 2 + i;
      x[i] = t >= 0 && t < (long)signal.size() ? signal[(size_t)t] * window[i] : 0.0;
    }
    Fft(x.data());
    for (int bin = 0; bin < kBins; ++bin) {
      const double magnitude = std::abs(x[bin]) * 2.0 / windowSum;
      const double db = 20.0 * std::log10(std::max(magnitude, 1e-12));
      image->Put(left + col, top + (kPanelHeightPx - 1 - bin), ColourOf(1.0 - db / kFloorDb));
    }
  }
}

// The smallest step from `steps` that gives at most `maxTicks` intervals.
double TickStep(double span, const double* steps, size_t count, double maxTicks) {
  for (size_t i = 0; i < count; ++i) {
    if (span / steps[i] <= maxTicks) return steps[i];
  }
  return steps[count - 1];
}

std::string NumberLabel(double value, bool decimals) {
  char text[32];
  snprintf(text, sizeof(text), decimals ? "%.1f" : "%.0f", value);
  return text;
}

void DrawFrequencyAxis(Image* image, int left, int top, int sampleRateHz) {
  static const double kStepsHz[] = {250, 500, 1000, 2000, 4000, 5000, 10000};
  const double nyquist = sampleRateHz / 2.0;
  const double step = TickStep(nyquist, kStepsHz, sizeof(kStepsHz) / sizeof(kStepsHz[0]), 8.0);
  const int glyphHalf = kGlyphHeightPx * kTextScale / 2;
  for (double f = 0.0; f <= nyquist + 1e-9; f += step) {
    const int y = top + (kPanelHeightPx - 1) - (int)std::lround(f / nyquist * (kPanelHeightPx - 1));
    image->Fill(left - 5, y, 5, 1, kTickInk);
    const std::string label = NumberLabel(f / 1000.0, step < 1000.0);
    image->Text(left - 8 - Image::TextWidth(label), std::max(top - glyphHalf, y - glyphHalf), label, kInk);
  }
}

void DrawTimeAxis(Image* image, int left, int top, int plotWidth, double seconds) {
  static const double kStepsS[] = {0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1800, 3600};
  if (seconds <= 0.0) return;
  const double step = TickStep(seconds, kStepsS, sizeof(kStepsS) / sizeof(kStepsS[0]), 10.0);
  for (double t = 0.0; t <= seconds + 1e-9; t += step) {
    const int x = left + (int)std::lround(t / seconds * (plotWidth - 1));
    image->Fill(x, top, 1, 5, kTickInk);
    const std::string label = NumberLabel(t, step < 1.0);
    image->Text(x - Image::TextWidth(label) / 2, top + 8, label, kInk);
  }
  const std::string title = "TIME (S)";
  image->Text(left + (plotWidth - Image::TextWidth(title)) / 2, top + 8 + kGlyphHeightPx * kTextScale + 8, title,
              kInk);
}

// Only plain locals live in this function: libpng reports errors by
// longjmp back into it.
bool WritePngRows(FILE* file, int width, int height, const uint8_t* rgb) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, (png_uint_32)width, (png_uint_32)height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < height; ++y) png_write_row(png, rgb + (size_t)y * width * 3);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

bool WriteSpectrogramPng(int fd, const std::string& finalPath, const AudioBuffer& input, const AudioBuffer& output,
                         std::string* error) {
  const size_t frames = input.FrameCount();
  const int plotWidth =
      std::clamp((int)(frames / kHopForWidthSamples), kMinPlotWidthPx, kMaxPlotWidthPx);
  const int width = kMarginLeftPx + plotWidth + kMarginRightPx;
  const int height = 2 * (kTitleBandPx + kPanelHeightPx) + kPanelGapPx + kAxisBandPx;
  Image image(width, height);
  const AudioBuffer* panels[2] = {&input, &output};
  const char* titles[2] = {"INPUT", "OUTPUT"};
  for (int p = 0; p < 2; ++p) {
    const int top = kTitleBandPx + p * (kTitleBandPx + kPanelHeightPx + kPanelGapPx);
    image.Text(kMarginLeftPx, top - kTitleBandPx + 6, titles[p], kInk);
    image.Text(4, top - kTitleBandPx + 6, "KHZ", kTickInk);
    DrawPanel(&image, kMarginLeftPx, top, plotWidth, MixToMono(*panels[p]));
    DrawFrequencyAxis(&image, kMarginLeftPx, top, input.sampleRateHz);
  }
  const int axisTop = height - kAxisBandPx;
  DrawTimeAxis(&image, kMarginLeftPx, axisTop, plotWidth,
               input.sampleRateHz > 0 ? (double)frames / input.sampleRateHz : 0.0);

  FILE* file = fdopen(fd, "wb");
  if (file == nullptr) {
    close(fd);
    *error = "cannot write '" + finalPath + "'";
    return false;
  }
  bool ok = WritePngRows(file, image.width(), image.height(), image.data());
  ok = fclose(file) == 0 && ok;
  if (!ok) *error = "cannot write the spectrogram picture '" + finalPath + "'";
  return ok;
}

}  // namespace zebtool
