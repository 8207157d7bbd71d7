// Frame steps shared by the chain and the single-stage families.
#include "frame_stage.h"

#include "debug_msglevel.h"
#include "windowfilt.h"

extern "C" {

void PrintNeonBanner(int dbg_level) {
  ALGO_MSG(dbg_level, "|--------------------------------------------------------------------------------|\n");
  ALGO_MSG(dbg_level, "|                                                                                |\n");
  ALGO_MSG(dbg_level, "|                                   NEON ENABLE                                  |\n");
  ALGO_MSG(dbg_level, "|                                                                                |\n");
  ALGO_MSG(dbg_level, "|--------------------------------------------------------------------------------|\n");
}

void FrameStage_InitTransform(FFTHandle_t* fft, int dbg_level) {
  fft->fftSize = FRAME_STAGE_FFT_LEN_SAMPLES;
  ne10_init();
  fft_init(fft);
  PrintNeonBanner(dbg_level);
}

void FrameStage_LoadHistory(postInfo_t* post, short* history, short* frame, int ch, unsigned int channels,
                            int historyLen, int newSamples) {
  post->length = historyLen;
  post->channel_number = channels;
  post->bias = newSamples;
  post->flag = 0;
  LoadStreams(history, frame, ch, post);
}

void FrameStage_ToFloat(const short* src, float* dst, int samples) {
  for (int i = 0; i < samples; ++i) dst[i] = (float)src[i];
}

void FrameStage_Forward(FFTHandle_t* fft, float* buf, int* ip, float* w) {
  WindowFFT_Process(buf, 0);
  ORB_rdft(fft, FRAME_STAGE_FFT_LEN_SAMPLES, ORB_FFT_MODE_DO_FFT, buf, ip, w);
}

void FrameStage_Inverse(FFTHandle_t* fft, float* buf, int* ip, float* w) {
  ORB_rdft(fft, FRAME_STAGE_FFT_LEN_SAMPLES, ORB_FFT_MODE_DO_IFFT, buf, ip, w);
  WindowFFT_Process(buf, 1);
}

void FrameStage_OverlapAdd(postInfo_t* post, float* buf, float* tail, short* frame, unsigned int channels, int bias,
                           int bufLen, int newSamples) {
  const int tailLen = bufLen - newSamples;
  post->length = tailLen;
  post->channel_number = channels;
  post->bias = bias;
  post->flag = 0;
  Post_OLA_Process(buf, tail, frame, post);
  for (int k = 0; k < tailLen; ++k) tail[k] = buf[newSamples + k];
}

}  // extern "C"
