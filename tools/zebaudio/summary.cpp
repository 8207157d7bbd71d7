#include "summary.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace zebtool {
namespace {

constexpr double kFullScale = 32768.0;
constexpr double kProgressMinSeconds = 10.0;
constexpr int kProgressBarCells = 30;

double ToDbfs(double linear) {
  return linear > 0.0 ? 20.0 * std::log10(linear / kFullScale) : -std::numeric_limits<double>::infinity();
}

const char* StageLine(const ChainSettings& s, char* text, size_t size) {
  static const char* const kAgcModes[] = {"?", "time domain", "frequency domain"};
  static const char* const kHpfHz[] = {"80", "120", "150", "500", "?"};
  const unsigned cutoff = (unsigned)s.hpf.cutoff_frequency;
  char nr[32] = "off", hpf[48] = "off", agc[32] = "off";
  if (s.anr.anr_enable != 0) snprintf(nr, sizeof(nr), "mode %d", s.anr.anr_filter_mode);
  if (s.hpf.hpf_enable != 0) {
    snprintf(hpf, sizeof(hpf), "%s Hz, %s", kHpfHz[cutoff < 4 ? cutoff : 4],
             s.hpf.user_mode == 2 ? "time domain" : s.hpf.user_mode == 1 ? "frequency domain" : "no domain");
  }
  if (s.agc.agc_enable != 0) snprintf(agc, sizeof(agc), "%s", kAgcModes[s.agc.user_mode < 3 ? s.agc.user_mode : 0]);
  snprintf(text, size, "noise reduction %s; equaliser %s; high-pass %s; AGC %s", nr,
           s.eq.eq_enable != 0 ? "on" : "off", hpf, agc);
  return text;
}

}  // namespace

LevelStats MeasureLevels(const AudioBuffer& audio) {
  double sumSquares = 0.0, peak = 0.0;
  for (int16_t s : audio.samples) {
    const double v = s;
    sumSquares += v * v;
    peak = std::max(peak, std::fabs(v));
  }
  const double rms = audio.samples.empty() ? 0.0 : std::sqrt(sumSquares / (double)audio.samples.size());
  return {ToDbfs(rms), ToDbfs(peak)};
}

std::string FormatDbfs(double dbfs) {
  if (std::isinf(dbfs)) return "-inf dBFS";
  char text[32];
  snprintf(text, sizeof(text), "%.1f dBFS", dbfs);
  return text;
}

ProgressBar::ProgressBar(double durationSeconds, bool enabled)
    : durationSeconds_(durationSeconds),
      active_(enabled && durationSeconds > kProgressMinSeconds && isatty(STDERR_FILENO)) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Update(double fractionDone) {
  if (!active_) return;
  const int permille = (int)(fractionDone * 1000.0);
  if (permille == lastPermille_) return;
  lastPermille_ = permille;
  char bar[kProgressBarCells + 1];
  const int filled = permille * kProgressBarCells / 1000;
  for (int i = 0; i < kProgressBarCells; ++i) bar[i] = i < filled ? '#' : '-';
  bar[kProgressBarCells] = '\0';
  fprintf(stderr, "\r[%s] %5.1f %%  %.1f / %.1f s", bar, permille / 10.0, fractionDone * durationSeconds_,
          durationSeconds_);
  fflush(stderr);
}

void ProgressBar::Finish() {
  if (!active_) return;
  if (lastPermille_ >= 0) fputc('\n', stderr);
  active_ = false;
}

void PrintSummary(FILE* out, const RunSummary& s) {
  const double seconds = s.fileRateHz > 0 ? (double)s.inputFrames / s.fileRateHz : 0.0;
  char stages[200];
  fprintf(out, "%s -> %s\n", s.inputPath.c_str(), s.outputPath.c_str());
  fprintf(out, "  duration     %.2f s, %d Hz, %d channel%s\n", seconds, s.fileRateHz, s.channels,
          s.channels == 1 ? "" : "s");
  if (s.chainRateHz != s.fileRateHz) fprintf(out, "  chain rate   %d Hz (converted and back)\n", s.chainRateHz);
  fprintf(out, "  frames       %zu of %d samples per channel\n", s.run.framesRun, kFrameLenSamples);
  fprintf(out, "  stages       %s\n", StageLine(s.run.effectiveSettings, stages, sizeof(stages)));
  fprintf(out, "  input        RMS %s, peak %s\n", FormatDbfs(s.input.rmsDbfs).c_str(),
          FormatDbfs(s.input.peakDbfs).c_str());
  fprintf(out, "  output       RMS %s, peak %s\n", FormatDbfs(s.output.rmsDbfs).c_str(),
          FormatDbfs(s.output.peakDbfs).c_str());
  if (s.run.haveSpeechProbability) {
    fprintf(out, "  speech       %.1f %% mean speech probability\n", s.run.meanSpeechProbabilityPct);
  }
  if (s.align) {
    fprintf(out, "  delay        %d samples compensated%s\n", s.run.delaySamples,
            s.run.delayEstimated ? " (estimated)" : "");
  } else {
    fprintf(out, "  delay        kept in the output (--no-align)\n");
  }
  fprintf(out, "  CPU time     %.3f s, real-time factor %.4f\n", s.run.cpuSeconds,
          seconds > 0.0 ? s.run.cpuSeconds / seconds : 0.0);
}

}  // namespace zebtool
