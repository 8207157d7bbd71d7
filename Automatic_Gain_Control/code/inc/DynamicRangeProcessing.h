// Frequency-domain AGC of one channel: a three-band dynamic range processor
// on the 129-bin spectrum of a 256-point frame. Gains are counted in dB.
#ifndef ZEB_AGC_DYNAMICRANGEPROCESSING_H
#define ZEB_AGC_DYNAMICRANGEPROCESSING_H

#include "agc.h"
#include "fft.h"

#ifdef __cplusplus
extern "C" {
#endif

#define FREQ_AGC_BINS 129
#define FREQ_AGC_BANDS 3
#define FREQ_AGC_CURVE_POINTS 7
#define FREQ_AGC_SPECTRUM_FLOATS 258   // packed (re, im) spectrum
#define FREQ_AGC_FFT_IP_INTS 130
#define FREQ_AGC_FFT_W_FLOATS 260
#define FREQ_AGC_OVERLAP_TAIL_FLOATS 130
#define FREQ_AGC_CHANNELS 2

// One seven-point curve per band: row 0 low, 1 mid, 2 high.
typedef struct {
  float compressionRatioArrayInput[FREQ_AGC_BANDS][FREQ_AGC_CURVE_POINTS];
  float compressionRatioArrayOutput[FREQ_AGC_BANDS][FREQ_AGC_CURVE_POINTS];
} CompressionRatioConfig;

typedef struct FreqAgcHandle_ {
  float freq_bin_energy[FREQ_AGC_BINS];          // dB per bin
  float apply_gain[FREQ_AGC_BINS];               // linear gain per bin
  float freq_bin_target_porwer[FREQ_AGC_BANDS];  // dB per band
  int freq_bin_band[FREQ_AGC_BANDS];             // upper bin of each band
  float freq_band_energy[FREQ_AGC_BANDS];        // dB per band
  float gain_target[FREQ_AGC_BANDS];             // dB
  float gain_decibel[FREQ_AGC_BANDS];            // dB
  float gain_value[FREQ_AGC_BANDS];              // linear
  float gain_diff[FREQ_AGC_BANDS];               // not used
  float power;                                   // not used
  CompressionRatioConfig compression_ratio_config;
  int peak_value;
  int peak_power_part[FREQ_AGC_BANDS];           // not used
  float band_energy_ratio[FREQ_AGC_BANDS];
  float band_peak[FREQ_AGC_BANDS];
  _AudioAgcInit agc_init;
  int boost_gain_cnt[FREQ_AGC_BANDS];
  int decay_gain_cnt[FREQ_AGC_BANDS];
  int noise_flag[FREQ_AGC_BANDS];
  float drop_gain_max_dB;
  float fft_buf_agc[FREQ_AGC_SPECTRUM_FLOATS];
  FFTHandle_t FFT_workingBuff;  // its transform state lies in the working buffer
  int fbf_ip[FREQ_AGC_FFT_IP_INTS];
  float fft_win_buf_2ch[FREQ_AGC_CHANNELS][FREQ_AGC_SPECTRUM_FLOATS];
  float fft_2ch_for_agc[FREQ_AGC_CHANNELS][FREQ_AGC_SPECTRUM_FLOATS];
  float fbf_wfft[FREQ_AGC_FFT_W_FLOATS];
  float fft_in_positive_max;                     // not used
  float ifft_out_half_prev_2ch[FREQ_AGC_CHANNELS][FREQ_AGC_OVERLAP_TAIL_FLOATS];
  _AudioAgcConfig agc_config;
  int ret;                                       // not used
  int dbg_level;
} FreqAgcHandle;

// ---- Lifecycle ----
// Default curves and band edges, unity gains, own transform ready. The
// handle's dbg_level must be set before. Always 0 for a valid handle.
_ALGO_AGC_RET freqDomainAgcInit(FreqAgcHandle* freqHandle, _AudioAgcInit* anr_init);
// Validates like the time-domain core, then restarts the band gains at
// gain_init and gives all three bands the record's curve.
_ALGO_AGC_RET freqDomainAgcConfig(FreqAgcHandle* freqHandle, _AudioAgcConfig* agc_config);
// One frame: the 256 unwindowed samples measure the level, the caller's
// windowed spectrum (258 floats) gets the gains in place. Always 0.
_ALGO_AGC_RET freqDomainAgcProcess(FreqAgcHandle* freqHandle, short int* timeDomainFrameWithoutWindowing,
                                   float* inOutFrame);

// ---- Band edges and per-band curves; a failing call changes nothing ----
_ALGO_AGC_RET SetFreqBand(FreqAgcHandle* freqHandle, int* frequency);
_ALGO_AGC_RET SetLowFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                              int* CompressRatioOutput);
_ALGO_AGC_RET SetMidFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                              int* CompressRatioOutput);
_ALGO_AGC_RET SetHighFreqCompressionRatioCurve(FreqAgcHandle* freqHandle, int* CompressRatioInput,
                                               int* CompressRatioOutput);
_ALGO_AGC_RET CheckFrequencyBand(int* frequency_band, float sampling_rate, int dbg_level);
_ALGO_AGC_RET CheckCompressionRatioConfig(int* CompressRatioInput, int* CompressRatioOutput, int dbg_level);
// Bin of a frequency with a bin width of fs/2/129, at most 128.
int FrequencyToBinNum(int frequency, int sample_rate);

// ---- Conversions ----
float DecibelToValue(float x);      // dB to linear amplitude
float DecibelToValueHalf(float g);  // half dB to linear amplitude
float ValueToDecibel(float x);      // sample amplitude to dB full scale
// Largest |sample| of 256, |-32768| counting as 32768.
int PeakDetection(short int* input);

// ---- Steps of freqDomainAgcProcess, in their order ----
void TimeToFrequencyDomain(FreqAgcHandle* freqHandle, short int* input);
void CalculateBandEnergy(FreqAgcHandle* freqHandle);
void SetFreqBinTargatLevel(FreqAgcHandle* freqHandle);
void CalculateApplyGain(FreqAgcHandle* freqHandle);
void ClippingPrevent(FreqAgcHandle* freqHandle);
void AgcApplyGain(FreqAgcHandle* freqHandle, float* input);
void NoiseAttenuation(FreqAgcHandle* freqHandle, float* input);

#ifdef __cplusplus
}
#endif

#endif
