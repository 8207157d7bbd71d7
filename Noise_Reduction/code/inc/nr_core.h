// Noise reducer of one channel: the flat record that holds the state of all
// six filter modes side by side, its companions in the working buffer, and
// the records through which the core sees the user's settings.
#ifndef ZEB_NR_CORE_H
#define ZEB_NR_CORE_H

#include "AudioSRCProcess.h"
#include "algo_stage_ret.h"
#include "nr_NN.h"
#include "rnn.h"

#ifdef __cplusplus
extern "C" {
#endif

#define NR_FRAME_LEN_SAMPLES 128
#define NR_ANA_LEN_SAMPLES 256
#define NR_MAGN_LEN_BINS 129        // NR_ANA_LEN_SAMPLES / 2 + 1
#define NR_SPECTRUM_SLOTS 256       // per-bin arrays with spare room past bin 128
#define NR_SPECTRUM_FLOATS 258      // packed (re, im) spectrum of 129 bins
#define NR_BAND_TABLE_BINS 128      // overdrive and denoiseBound
#define NR_INTENSITY_BANDS 7
#define NR_INTENSITY_EDGES 6
#define NR_MODEL_PARAMS 7
#define NR_FEATURES 7
#define NR_MODEL_UPDATE_PARAMS 4
#define NR_SIMULT_QUANTILES 1
#define NR_HIST_BINS 1000
#define NR_MIN_SUBWINDOWS 8
#define NR_CONV_PAD2_FLOATS 191     // 129 bins + 2 x 31 taps of padding
#define NR_CONV_RESULT2_FLOATS 160
#define NR_CONV_PAD_FLOATS 171      // 129 bins + 2 x 21 taps of padding
#define NR_CONV_RESULT_FLOATS 150
#define NR_SRC_OUTPUT_SAMPLES 1024
#define NR_AEC_SAMPLES 256
#define NR_NN_BLOCK_SAMPLES 160     // time-domain block of filter mode 5
#define NR_NN_BINS 161              // bins of filter mode 5
#define NR_B_CONV_TAPS 22
#define NR_B_MEAN_TAPS 22
#define NR_B_XI_LOCAL_TAPS 4
#define NR_B_XI_GLOBAL_TAPS 32

// The user's stream parameters as the core sees them.
typedef struct {
  unsigned int point_number;
  unsigned int channel;
  int sample_rate;
} _AudioAnrInit;

// The user's configuration as the core sees them: the layout of the public
// AudioAnrConfig with the converge speed as a plain int.
typedef struct {
  unsigned int anr_enable;
  unsigned int user_mode;
  int anr_intensity_band[NR_INTENSITY_EDGES];
  int anr_intensity[NR_INTENSITY_BANDS];
  unsigned int anr_smooth_level;
  int anr_converge_speed;
  int anr_filter_mode;
} _AudioAnrConfig;

typedef struct {
  float re;
  float im;
} complex_t;

// Frame scratch of filter mode 0; nothing in it outlives a frame.
typedef struct {
  float magn[NR_MAGN_LEN_BINS];
  float noise[NR_MAGN_LEN_BINS];
  float theFilter[NR_MAGN_LEN_BINS];
  float snrLocPost[NR_MAGN_LEN_BINS];
  float snrLocPrior[NR_MAGN_LEN_BINS];
  float probSpeechFinal[NR_MAGN_LEN_BINS];
  float previousEstimateStsa[NR_MAGN_LEN_BINS];
  float real[NR_ANA_LEN_SAMPLES];
  float imag[NR_MAGN_LEN_BINS];
  float lmagn[NR_MAGN_LEN_BINS];
  float theFilterTmp[NR_MAGN_LEN_BINS];
} NSWorkingBuf_t;

// Constants of the feature extraction of filter mode 0.
typedef struct {
  float binSizeLrt;
  float binSizeSpecFlat;
  float binSizeSpecDiff;
  float rangeAvgHistLrt;
  float factor1ModelPars;
  float factor2ModelPars;
  float thresPosSpecFlat;
  float limitPeakSpacingSpecFlat;
  float limitPeakSpacingSpecDiff;
  float limitPeakWeightsSpecFlat;
  float limitPeakWeightsSpecDiff;
  float thresFluctLrt;
  float maxLrt;
  float minLrt;
  float maxSpecFlat;
  float minSpecFlat;
  float maxSpecDiff;
  float minSpecDiff;
  int thresWeightSpecFlat;
  int thresWeightSpecDiff;
} NSParaExtract_t;

// Tuning values that the JSON tuning file may replace. The number in a
// group's prefix names the serving algorithm, not always the filter mode.
typedef struct {
  float fmode0_alpha_dd_pr_snr;
  float fmode0_delta_prob_range;
  int fmode1_Vwin;
  float fmode1_Bmin;
  float fmode1_delta_y;
  float fmode1_delta_s;
  float fmode1_delta_yt;
  float fmode1_alpha_s;
  float fmode1_alpha_d;
  float fmode1_alpha_xi;
  float fmode1_alpha_eta;
  float fmode3_delta_s;
  float fmode3_alpha_spp;
  int fmode4_averageFrame;
  float fmode4_eta_opt;
  float fmode4_alpha_spp;
  float fmode4_alpha_eta;
  float fmode4_alpha_N;
  int fmode5_averageFrame;
  float fmode5_eta_opt;
  float fmode5_alpha_spp;
  float fmode5_alpha_eta;
  float fmode5_alpha_N;
  float fmode5_bound1;
  float fmode5_delta1;
  float fmode5_alpha1;
  int farfield_scenario;
  int farfield_bound1;
  int farfield_bound2;
  float farfield_alpha1;
  float farfield_alpha2;
  float farfield_delta1;
  float farfield_delta2;
  int sinetone_scenario;
  int sinetone_delta1;
  int sinetone_delta2;
  float sinetone_delta3;
  float sinetone_alpha1;
  int covermic_scenario;
  int covermic_bound1;
  float covermic_delta1;
  float covermic_delta2;
  float covermic_delta3;
  float covermic_alpha1;
} NSCJsoninst_t;

typedef struct NSinst_t_ {
  // Identity and sizes.
  int fs;
  int pn;
  int channel;
  int filter_mode;
  int outLen;
  int anaLen;
  int magnLen;
  int aggrMode[NR_INTENSITY_BANDS];

  // Filter mode 0: quantile noise tracking and feature model.
  float density[NR_MAGN_LEN_BINS];
  float lquantile[NR_MAGN_LEN_BINS];
  float quantile[NR_MAGN_LEN_BINS];
  unsigned short counter[NR_SIMULT_QUANTILES];
  unsigned short updates;
  float preFilter[NR_MAGN_LEN_BINS];
  float finalFilter[NR_MAGN_LEN_BINS];
  unsigned short noise_cnt;
  float smooth[NR_MAGN_LEN_BINS];
  float overdrive[NR_BAND_TABLE_BINS];
  float denoiseBound[NR_BAND_TABLE_BINS];
  int gainmap;                 // the two words right behind denoiseBound:
  unsigned short blockInd;     // mode 0 reads them as its entries 128 and 129
  int modelUpdatePars[NR_MODEL_UPDATE_PARAMS];
  int firstStartFrameFlag;
  int firstStartFrameNum;
  float quantite;
  float priorModelPars[NR_MODEL_PARAMS];
  float noisePrev[NR_MAGN_LEN_BINS];
  float startNoiseFilter[NR_MAGN_LEN_BINS];
  float snrPrior[NR_MAGN_LEN_BINS];
  float magnPrev[NR_MAGN_LEN_BINS];
  float logLrtTimeAvg[NR_MAGN_LEN_BINS];
  float priorSpeechProb;
  float featureData[NR_FEATURES];
  float magnAvgPause[NR_MAGN_LEN_BINS];
  float signalEnergy;
  float sumMagn;
  float whiteNoiseLevel;
  float initMagnEst[NR_MAGN_LEN_BINS];
  float pinkNoiseNumerator;
  float pinkNoiseExp;
  NSParaExtract_t featureExtractionParams;
  int histLrt[NR_HIST_BINS];
  int histSpecFlat[NR_HIST_BINS];
  int histSpecDiff[NR_HIST_BINS];
  float probSpeechMean;
  unsigned int IndIsNotSpeech_buf;
  float SilenceSupressScale;
  float rawPriorSpeechProb;
  int converged_flag;

  // Frame control.
  int initial_filter_enable;
  float initial_filter_gain;
  int initFlag;
  float sum_filter;
  NSWorkingBuf_t* NRInternalWorkBuf;
  unsigned short nframe_cnt;
  int nframe_update_filter;
  unsigned short frame_cnt;
  int moving_average_order;
  float moving_average_smooth_const;
  int AutoSmooth;
  int process_bins;

  // Spectral state of modes 1 to 4 and the frame's spectrum.
  float PH1[NR_SPECTRUM_SLOTS];
  NSCJsoninst_t* InternalParams;
  complex_t frequency_buffer[NR_SPECTRUM_SLOTS];
  complex_t frequency_buffer_output[NR_SPECTRUM_SLOTS];
  float power_spectrum[NR_SPECTRUM_SLOTS];
  float gamma[NR_SPECTRUM_SLOTS];
  float lambda_d[NR_SPECTRUM_SLOTS];
  float eta[NR_SPECTRUM_SLOTS];
  float eta_2term[NR_SPECTRUM_SLOTS];
  float v[NR_SPECTRUM_SLOTS];
  float phat[NR_SPECTRUM_SLOTS];
  float lambda_dav[NR_SPECTRUM_SLOTS];
  float GH1[NR_SPECTRUM_SLOTS];
  float q[NR_SPECTRUM_SLOTS];
  float G[NR_SPECTRUM_SLOTS];
  float Glastg[NR_SPECTRUM_SLOTS];
  unsigned short l_mod_lswitch;
  unsigned short time_counter;
  float ones[NR_SPECTRUM_SLOTS];
  float calulation_temp_memory[NR_SPECTRUM_SLOTS];
  float calulation_temp_memory1[NR_SPECTRUM_SLOTS];
  float calulation_temp_memory2[NR_SPECTRUM_SLOTS];
  float G_p[NR_SPECTRUM_SLOTS];
  float noise_suppression_gain[NR_SPECTRUM_SLOTS];
  float noise_mix_ratio[NR_SPECTRUM_SLOTS];

  // Minimum tracking of modes 1 to 3; the names ending in t belong to the
  // second iteration.
  float Sf[NR_MAGN_LEN_BINS];
  float S[NR_MAGN_LEN_BINS];
  float Smin[NR_MAGN_LEN_BINS];
  float SMact[NR_MAGN_LEN_BINS];
  float I_f[NR_MAGN_LEN_BINS];
  float conv_I[NR_MAGN_LEN_BINS];
  float St[NR_MAGN_LEN_BINS];
  float Sft[NR_MAGN_LEN_BINS];
  float conv_Y[NR_MAGN_LEN_BINS];
  float Smint[NR_MAGN_LEN_BINS];
  float SMactt[NR_MAGN_LEN_BINS];
  float gamma_mint[NR_MAGN_LEN_BINS];
  float SW[NR_MIN_SUBWINDOWS][NR_MAGN_LEN_BINS];
  float SWt[NR_MIN_SUBWINDOWS][NR_MAGN_LEN_BINS];

  // Prior speech absence of modes 1 to 3.
  float xi[NR_MAGN_LEN_BINS];
  float xi_frame;
  float xi_m_dB;
  float k_u;
  float k_l;
  float k2_local;
  float k3_local;
  float xi_local[NR_MAGN_LEN_BINS];
  float xi_global[NR_MAGN_LEN_BINS];
  float xi_local_db[NR_MAGN_LEN_BINS];
  float xi_global_db[NR_MAGN_LEN_BINS];
  float P_local[NR_MAGN_LEN_BINS];
  float P_global[NR_MAGN_LEN_BINS];
  const float* b_mean;
  const float* b_conv;
  const float* b_xi_local;
  const float* b_xi_global;
  float eta_prev[NR_MAGN_LEN_BINS];
  float conv_It[NR_MAGN_LEN_BINS];
  float convolution_buffer_padding2[NR_CONV_PAD2_FLOATS];
  float convolution_result2[NR_CONV_RESULT2_FLOATS];
  float convolution_buffer_padding[NR_CONV_PAD_FLOATS];
  float convolution_result[NR_CONV_RESULT_FLOATS];

  // Neural mode.
  DenoiseState* NNStateWorkBuf;
  GRUState* gru_state_buff;
  NNLayerState* nnlayer_buf;
  CommonState* common;
  int mix_enable;

  // Rate bridge.
  int outlen;
  unsigned short counterSRC;
  int src_enable;
  short src_output[NR_SRC_OUTPUT_SAMPLES];
  SRC_HANDLE SRCInputHandle;
  SRC_HANDLE SRCOutputHandle;
  char* SRCInputWorkBuf_ptr;
  char* SRCOutputWorkBuf_ptr;

  // Echo-canceller reference.
  int aec_enable_flag;
  short pssAecIn[NR_AEC_SAMPLES];
  float fft_aec_buf_2ch[NR_SPECTRUM_FLOATS];

  int ret;

  // Scenario detectors.
  unsigned short cmi_nospeechCnt;
  unsigned short cmi_flag;
  float cmi_PowerSpectrum;
  float cmi_S[NR_MAGN_LEN_BINS];
  unsigned short sinetone_candidate[NR_SPECTRUM_SLOTS];
  float zscore[NR_SPECTRUM_SLOTS];
  float filteredSpectrum[NR_SPECTRUM_SLOTS];

  int dbg_level;
} NSinst_t;

// Smoothing kernels over frequency shared by all instances; each instance
// points at them from b_conv, b_mean, b_xi_local and b_xi_global.
extern const float NR_b_conv[NR_B_CONV_TAPS];
extern const float NR_b_mean[NR_B_MEAN_TAPS];
extern const float NR_b_xi_local[NR_B_XI_LOCAL_TAPS];
extern const float NR_b_xi_global[NR_B_XI_GLOBAL_TAPS];

// ---- Instance and initialisation ----
// The owning family clears the record, carves it (NRInternalWorkBuf,
// InternalParams, neural pointers) and sets dbg_level before NR_Init.
// Returns -1 for a null inst, 0 otherwise.
int NR_Init(NSinst_t* inst, _AudioAnrInit* anr_init);
int NR_InitCore(NSinst_t* inst, _AudioAnrInit* anr_init);
void NR_InitInternalParams(NSCJsoninst_t* internal_params);
void NR_set_feature_extraction_parameters(NSinst_t* inst);
void NR_SetSmoothOrder(NSinst_t* inst, int order);
int NR_SetProcessBins(NSinst_t* inst, int level);
// speed 0, 1, 2 update the filter every 3rd, 2nd, every frame.
void NR_SetUpdateFilterFrames(NSinst_t* inst, int speed);

// ---- User configuration ----
// Validates without changing anything; messages only with bit 0 of dbg_level.
_ALGO_ANR_RET Nr_CheckUserConfig(_AudioAnrConfig* anr_config, int fs, int pn, int dbg_level);
_ALGO_ANR_RET NR_Config(NSinst_t* inst, _AudioAnrConfig* anr_config);
// Maps six band edges and seven intensities onto the per-bin tables of the
// present filter_mode.
void NR_SetMode(NSinst_t* inst, int* intensity_band, int* intensity);

// ---- Frame process ----
// One frame of one channel: for modes 0 to 4 the packed spectrum of 258
// floats at PCM scale, for mode 5 a block of 160 samples. The result replaces
// inOutFrame. Returns _ALGO_ANR_RET_SUCCESS, or _ALGO_ANR_RET_INIT_ERROR
// when the mode's frame routine refuses an uninitialised instance.
// Dispatch: mode 0 NR_Webrtc_Process (nr_webrtc.h); modes 1 to 5 pass the
// frame through unchanged in this build.
_ALGO_ANR_RET NR_Process(NSinst_t* inst, float* inOutFrame);
// Frames in half a second: the limit of frame_cnt and of the initial filter.
unsigned short NR_FrameCountLimit(const NSinst_t* inst);
// Counter step shared by the frame routines: nframe_cnt + 1, frame_cnt + 1
// while it is at or below the limit (wrap warnings at bit 1), then nframe_cnt
// back to 0 once it reaches nframe_update_filter. Returns the nframe_cnt
// value before that reset: 1 marks an update frame.
int NR_AdvanceFrameCounters(NSinst_t* inst);

// ---- Scenario detectors ----
float Compute_Mean(float* input, int length);
// The mean square deviation (no root is taken).
float Compute_Std(float* input, int length, float mean);
void Sinetone_Dectection(NSinst_t* inst, float* spectrum, int length, int lag, float threshold,
                         float influence);
void Check_MicInlet(NSinst_t* inst);
// Frame speech activity in percent, averaged over the channels as the caller
// runs channel_num 0, 1.
void NR_Sum_Speech_Prob(NSinst_t* inst, int* speech_probability, int anr_filter_mode,
                        int channel_num);

#ifdef __cplusplus
}  // extern "C"

// Tuning values in force until a tuning file replaces them; the two eta_opt
// values are 15 dB as a power ratio.
inline constexpr NSCJsoninst_t kNrInternalParamsDefault = {
    0.98f,       // fmode0_alpha_dd_pr_snr
    0.3f,        // fmode0_delta_prob_range
    15,          // fmode1_Vwin
    4.98f,       // fmode1_Bmin
    4.6f,        // fmode1_delta_y
    1.67f,       // fmode1_delta_s
    3.0f,        // fmode1_delta_yt
    0.9f,        // fmode1_alpha_s
    0.85f,       // fmode1_alpha_d
    0.7f,        // fmode1_alpha_xi
    0.95f,       // fmode1_alpha_eta
    5.0f,        // fmode3_delta_s
    0.2f,        // fmode3_alpha_spp
    2,           // fmode4_averageFrame
    31.622776f,  // fmode4_eta_opt
    0.9f,        // fmode4_alpha_spp
    0.98f,       // fmode4_alpha_eta
    0.8f,        // fmode4_alpha_N
    10,          // fmode5_averageFrame
    31.622776f,  // fmode5_eta_opt
    0.9f,        // fmode5_alpha_spp
    0.98f,       // fmode5_alpha_eta
    0.8f,        // fmode5_alpha_N
    0.0f,        // fmode5_bound1
    1.0f,        // fmode5_delta1
    0.1f,        // fmode5_alpha1
    0,           // farfield_scenario
    1000,        // farfield_bound1
    300,         // farfield_bound2
    0.8f,        // farfield_alpha1
    0.1f,        // farfield_alpha2
    0.002f,      // farfield_delta1
    0.2f,        // farfield_delta2
    0,           // sinetone_scenario
    10,          // sinetone_delta1
    10,          // sinetone_delta2
    3.0f,        // sinetone_delta3
    0.0f,        // sinetone_alpha1
    0,           // covermic_scenario
    600,         // covermic_bound1
    0.5f,        // covermic_delta1
    1.0f,        // covermic_delta2
    1000.0f,     // covermic_delta3
    0.99f,       // covermic_alpha1
};
#endif

#endif
