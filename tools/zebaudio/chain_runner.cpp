#include "chain_runner.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>

#include "library_output.h"

namespace zebtool {
namespace {

enum class StageId { kNoiseReduction, kEqualiser, kHighPass, kGainControl };

constexpr StageId kStages[] = {StageId::kNoiseReduction, StageId::kEqualiser, StageId::kHighPass,
                               StageId::kGainControl};

const char* StageName(StageId id) {
  switch (id) {
    case StageId::kNoiseReduction: return "noise reduction";
    case StageId::kEqualiser: return "the equaliser";
    case StageId::kHighPass: return "the high-pass filter";
    case StageId::kGainControl: return "gain control";
  }
  return "a stage";
}

bool StageOn(const ChainSettings& s, StageId id) {
  switch (id) {
    case StageId::kNoiseReduction: return s.anr.anr_enable != 0;
    case StageId::kEqualiser: return s.eq.eq_enable != 0;
    case StageId::kHighPass: return s.hpf.hpf_enable != 0;
    case StageId::kGainControl: return s.agc.agc_enable != 0;
  }
  return false;
}

void SwitchOff(ChainSettings* s, StageId id) {
  switch (id) {
    case StageId::kNoiseReduction: s->anr.anr_enable = 0; break;
    case StageId::kEqualiser: s->eq.eq_enable = 0; break;
    case StageId::kHighPass: s->hpf.hpf_enable = 0; break;
    case StageId::kGainControl: s->agc.agc_enable = 0; break;
  }
}

// Working memory only for the stages that are on; the equaliser and the
// high-pass filter share theirs.
AudioKolBufferConfig SwitchesFor(const ChainSettings& s) {
  AudioKolBufferConfig sw;
  memset(&sw, 0, sizeof(sw));
  sw.anr_enable = StageOn(s, StageId::kNoiseReduction) ? 1 : 0;
  sw.eq_enable = StageOn(s, StageId::kEqualiser) || StageOn(s, StageId::kHighPass) ? 1 : 0;
  sw.agc_enable = StageOn(s, StageId::kGainControl) ? 1 : 0;
  return sw;
}

double ProcessCpuSeconds() {
  struct timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return (double)now.tv_sec + (double)now.tv_nsec * 1e-9;
}

enum class Verdict { kOk, kMissing, kFailed };

// Turns a result code into go on / go on without the stage / stop, and says
// so on standard error with the library's own messages.
class Reporter {
 public:
  Reporter(LibraryOutputCapture* capture, bool allowMissing, bool verbose)
      : capture_(capture), allowMissing_(allowMissing), verbose_(verbose) {}

  // `stage` names what goes missing if the call is refused as unavailable;
  // nullptr for calls whose failure always ends the run.
  Verdict Judge(const std::string& call, const char* stage, ALGO_KOL_RET ret) {
    std::vector<LibraryLine> lines = capture_->Take();
    if (ret == ALGO_KOL_RET_SUCCESS) {
      RelayLibraryLines(lines, verbose_);
      return Verdict::kOk;
    }
    return Refused(call, stage, KolResultName(ret), ret == ALGO_KOL_RET_FAILED, lines);
  }

  Verdict Refused(const std::string& call, const char* stage, const std::string& outcome, bool maybeMissing,
                  const std::vector<LibraryLine>& lines) {
    if (stage != nullptr && maybeMissing && allowMissing_) {
      fprintf(stderr, "zebaudio: warning: %s is not available from this library (%s: %s); continuing without it\n",
              stage, call.c_str(), outcome.c_str());
      RelayLibraryLines(lines, verbose_);
      return Verdict::kMissing;
    }
    ReportLibraryFailure(call, outcome, lines);
    if (stage != nullptr && maybeMissing) {
      fprintf(stderr,
              "zebaudio: hint: this library may not provide %s yet; --allow-missing-stages goes on without it\n",
              stage);
    }
    return Verdict::kFailed;
  }

  void Relay() { RelayLibraryLines(capture_->Take(), verbose_); }
  std::vector<LibraryLine> Take() { return capture_->Take(); }

 private:
  LibraryOutputCapture* capture_;
  bool allowMissing_;
  bool verbose_;
};

// One chain handle in its working buffer.
class ChainSession {
 public:
  explicit ChainSession(Reporter* reporter) : reporter_(reporter) {}
  // After a failure the run has been reported already: a Free that the
  // blocked handle refuses would only add noise.
  ~ChainSession() {
    if (handle_ != nullptr) ZebKol_Free(handle_);
    reporter_->Take();
    free(buffer_);
  }
  ChainSession(const ChainSession&) = delete;
  ChainSession& operator=(const ChainSession&) = delete;

  bool Open(const ChainSettings& settings, int sampleRateHz, int channels) {
    if (!Close()) return false;
    switches_ = SwitchesFor(settings);
    AudioProcessInit init;
    init.point_number = kFrameLenSamples;
    init.channel = (unsigned)channels;
    init.sample_rate = (ZEB_KOL_SAMPLE_RATE)sampleRateHz;
    const unsigned bytes = ZebKol_GetBufferSize(&switches_);
    buffer_ = malloc(bytes > 0 ? bytes : 1);  // malloc's alignment serves any record
    if (buffer_ == nullptr) {
      fprintf(stderr, "zebaudio: out of memory for the chain's working buffer (%u bytes)\n", bytes);
      return false;
    }
    handle_ = ZebKol_Init((const char*)buffer_, &init, &switches_);
    if (handle_ == nullptr) {
      ReportLibraryFailure("ZebKol_Init", "no handle returned", reporter_->Take());
      return false;
    }
    reporter_->Relay();
    return true;
  }

  // Configures every stage that has memory, or only `only`.
  ALGO_KOL_RET Configure(ChainSettings* s, const StageId* only) {
    auto wanted = [&](StageId id, unsigned allocated) { return allocated != 0 && (only == nullptr || *only == id); };
    return ZebKol_Config(handle_, wanted(StageId::kNoiseReduction, switches_.anr_enable) ? &s->anr : nullptr,
                         wanted(StageId::kEqualiser, switches_.eq_enable) ? &s->eq : nullptr,
                         wanted(StageId::kHighPass, switches_.eq_enable) ? &s->hpf : nullptr, nullptr, nullptr,
                         wanted(StageId::kGainControl, switches_.agc_enable) ? &s->agc : nullptr);
  }

  // Frees the handle; false after reporting a refusal.
  bool Close() {
    bool ok = true;
    if (handle_ != nullptr) {
      ALGO_KOL_RET ret = ZebKol_Free(handle_);
      ok = reporter_->Judge("ZebKol_Free", nullptr, ret) == Verdict::kOk;
      handle_ = nullptr;
    }
    free(buffer_);
    buffer_ = nullptr;
    return ok;
  }

  KOL_HANDLE handle() const { return handle_; }

 private:
  Reporter* reporter_;
  AudioKolBufferConfig switches_{};
  void* buffer_ = nullptr;
  KOL_HANDLE handle_ = nullptr;
};

// Init and Config. With --allow-missing-stages, a Config refused as
// ALGO_KOL_RET_FAILED is retried stage by stage on fresh handles to find
// the stages the library lacks; those are switched off, and the chain is
// set up once more from scratch, so that no probing is left in its state.
bool SetUpChain(ChainSession* session, Reporter* reporter, bool allowMissing, ChainSettings* settings, int rateHz,
                int channels) {
  for (int round = 0; round < 2; ++round) {
    if (!session->Open(*settings, rateHz, channels)) return false;
    const ALGO_KOL_RET ret = session->Configure(settings, nullptr);
    std::vector<LibraryLine> lines = reporter->Take();
    if (ret == ALGO_KOL_RET_SUCCESS) {
      RelayLibraryLines(lines, false);
      return true;
    }
    if (ret != ALGO_KOL_RET_FAILED || !allowMissing || round == 1) {
      return reporter->Refused("ZebKol_Config", nullptr, KolResultName(ret), false, lines) == Verdict::kOk;
    }
    bool dropped = false;
    for (StageId id : kStages) {
      if (!StageOn(*settings, id)) continue;
      if (!session->Open(*settings, rateHz, channels)) return false;
      const Verdict v = reporter->Judge("ZebKol_Config", StageName(id), session->Configure(settings, &id));
      if (v == Verdict::kFailed) return false;
      if (v == Verdict::kMissing) {
        SwitchOff(settings, id);
        dropped = true;
      }
    }
    if (!dropped) {
      ReportLibraryFailure("ZebKol_Config", KolResultName(ret), lines);
      return false;
    }
  }
  return false;
}

bool LoadTuning(KOL_HANDLE handle, Reporter* reporter, const std::string& path) {
  static const char* const kStage = "noise-reduction tuning";
  std::vector<char> pathText(path.begin(), path.end());
  pathText.push_back('\0');
  const unsigned bytes = ZebKol_GetJsonFileSize(pathText.data());
  if (bytes == 0) {
    // The tool has read the file already, so 0 means the call itself failed.
    return reporter->Refused("ZebKol_GetJsonFileSize", kStage, "returned 0 for '" + path + "'", true,
                             reporter->Take()) != Verdict::kFailed;
  }
  reporter->Relay();
  // One byte more than the file, left zero: the text reaches the JSON
  // parser terminated.
  std::vector<char> text((size_t)bytes + 1, '\0');
  const ALGO_KOL_RET ret = ZebKol_NrReadJson(handle, text.data(), pathText.data(), bytes);
  return reporter->Judge("ZebKol_NrReadJson", kStage, ret) != Verdict::kFailed;
}

// The time-domain AGC's block: 4 ms, on the grid of the frame.
int AgcBlockSamples(int sampleRateHz) {
  switch (sampleRateHz) {
    case 8000: return 32;
    case 16000: return 64;
    default: return 128;
  }
}

// The neural mode's re-blocking and look-ahead, 448 samples at 16 kHz.
constexpr int kNeuralDelayAt16kHz = 448;
// Each of the two rate converters' FIR (51 taps) delays by 25 samples at
// the rate it filters at: 16 kHz around 8 kHz lines, 32 kHz around 32 kHz.
constexpr int kConverterDelayAtFilterRate = 25;
// The FIR gives the newest sample both of its last two taps, which brings
// the centre tap (128 of 257, 64 of 129) one sample closer.
constexpr int kHpfFirDelay80Hz = 127;
constexpr int kHpfFirDelay500Hz = 63;

}  // namespace

int ChainDelaySamples(const ChainSettings& s, int sampleRateHz, bool* estimated) {
  *estimated = false;
  const bool neural = s.anr.anr_enable != 0 && s.anr.anr_filter_mode == 5;
  const bool freqAgc = s.agc.agc_enable != 0 && s.agc.user_mode == 2;
  int delay = kFrameLenSamples;
  if (neural) {
    delay = kNeuralDelayAt16kHz * sampleRateHz / 16000 + (freqAgc ? kFrameLenSamples : 0);
    if (sampleRateHz == 8000) delay += kConverterDelayAtFilterRate;  // two converters at 16 kHz
    if (sampleRateHz == 32000) delay += 2 * kConverterDelayAtFilterRate;
    *estimated = sampleRateHz != 16000;
  }
  if (s.agc.agc_enable != 0 && s.agc.user_mode == 1) delay += AgcBlockSamples(sampleRateHz);
  if (s.hpf.hpf_enable != 0 && s.hpf.user_mode == 2) {
    if (s.hpf.cutoff_frequency == AUDIO_HPF_FREQ_80) delay += kHpfFirDelay80Hz;
    if (s.hpf.cutoff_frequency == AUDIO_HPF_FREQ_500) delay += kHpfFirDelay500Hz;
  }
  return delay;
}

bool RunChain(const ChainRunRequest& request, const AudioBuffer& in, AudioBuffer* out, ChainRunResult* result) {
  LibraryOutputCapture capture;
  capture.Begin();
  Reporter reporter(&capture, request.allowMissingStages, request.verbose);
  ChainSession session(&reporter);
  result->effectiveSettings = request.settings;
  ChainSettings& settings = result->effectiveSettings;
  if (!SetUpChain(&session, &reporter, request.allowMissingStages, &settings, in.sampleRateHz, in.channels)) {
    return false;
  }
  KOL_HANDLE h = session.handle();
  if (request.comfortNoiseDb) {
    const ALGO_KOL_RET ret = ZebKol_EnableComfortNoise(h, 1, *request.comfortNoiseDb);
    if (reporter.Judge("ZebKol_EnableComfortNoise", "comfort noise", ret) == Verdict::kFailed) return false;
  }
  if (!request.tuningPath.empty() && !LoadTuning(h, &reporter, request.tuningPath)) return false;

  bool estimated = false;
  const int derivedDelay = ChainDelaySamples(settings, in.sampleRateHz, &estimated);
  const size_t delay = !request.align ? 0 : (size_t)request.delayOverrideSamples.value_or(derivedDelay);
  result->delaySamples = (int)delay;
  result->delayEstimated = request.align && !request.delayOverrideSamples && estimated;

  const size_t channels = (size_t)in.channels;
  const size_t inFrames = in.FrameCount();
  out->sampleRateHz = in.sampleRateHz;
  out->channels = in.channels;
  out->samples.assign(in.samples.size(), 0);
  const size_t frames = inFrames == 0 ? 0 : (inFrames + delay + kFrameLenSamples - 1) / kFrameLenSamples;
  bool gainOn = request.digitalGainDb.has_value();
  bool vadOn = settings.anr.anr_enable != 0;
  double speechSumPct = 0.0;
  size_t speechFrames = 0;
  short frame[kFrameLenSamples * ZEB_MAX_CHANNELS];
  const double cpuStart = ProcessCpuSeconds();
  for (size_t f = 0; f < frames; ++f) {
    const size_t start = f * kFrameLenSamples;
    for (size_t k = 0; k < kFrameLenSamples; ++k) {
      for (size_t c = 0; c < channels; ++c) {
        frame[k * channels + c] = start + k < inFrames ? in.samples[(start + k) * channels + c] : 0;
      }
    }
    const ALGO_KOL_RET ret = ZebKol_Run(h, frame);
    if (reporter.Judge("ZebKol_Run (frame " + std::to_string(f) + ")", nullptr, ret) != Verdict::kOk) return false;
    if (gainOn) {
      const Verdict v = reporter.Judge("ZebKol_ApplyDigitalGain", "digital gain",
                                       ZebKol_ApplyDigitalGain(h, frame, *request.digitalGainDb));
      if (v == Verdict::kFailed) return false;
      gainOn = v == Verdict::kOk;
    }
    if (vadOn) {
      int speechPct[ZEB_MAX_CHANNELS] = {0, 0};
      const Verdict v = reporter.Judge("ZebKol_GetVadOut", "the speech probability", ZebKol_GetVadOut(h, speechPct));
      if (v == Verdict::kFailed) return false;
      vadOn = v == Verdict::kOk;
      // The read-out averages the channels into its first entry.
      if (vadOn && start < inFrames) {
        speechSumPct += speechPct[0];
        ++speechFrames;
      }
    }
    // Sample start + k of the output stream is input sample start + k - delay.
    for (size_t k = 0; k < kFrameLenSamples; ++k) {
      if (start + k < delay || start + k - delay >= inFrames) continue;
      memcpy(&out->samples[(start + k - delay) * channels], &frame[k * channels], channels * sizeof(short));
    }
    if (request.onProgress) request.onProgress((double)(f + 1) / (double)frames);
  }
  result->cpuSeconds = ProcessCpuSeconds() - cpuStart;
  result->framesRun = frames;
  result->haveSpeechProbability = vadOn && speechFrames > 0;
  result->meanSpeechProbabilityPct = speechFrames > 0 ? speechSumPct / (double)speechFrames : 0.0;
  return session.Close();
}

bool LibraryApiVersion(unsigned short* major, unsigned short* minor) {
  LibraryOutputCapture capture;
  capture.Begin();
  const ALGO_KOL_RET ret = ZebKol_GetAPIVersion(major, minor);
  std::vector<LibraryLine> lines = capture.Take();
  capture.End();
  if (ret != ALGO_KOL_RET_SUCCESS) ReportLibraryFailure("ZebKol_GetAPIVersion", KolResultName(ret), lines);
  return ret == ALGO_KOL_RET_SUCCESS;
}

}  // namespace zebtool
