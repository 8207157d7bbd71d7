// The steps every family runs per channel around its own spectral work: the
// start-up of the 256-point transform, the slide of a frame into a channel's
// history, window and transform, and the overlap-add back into the frame.
#ifndef ZEB_COMMON_FRAME_STAGE_H
#define ZEB_COMMON_FRAME_STAGE_H

#include "fft.h"
#include "pre_post_tool.h"

#ifdef __cplusplus
extern "C" {
#endif

#define FRAME_STAGE_FFT_LEN_SAMPLES 256  // the windows of windowfilt.h are this long

// The banner each family prints once its transform is up.
void PrintNeonBanner(int dbg_level);
// Brings up a 256-point transform whose state lies in the owner's buffer
// (fft_Ne10_cfg already pointing there), then prints the banner.
void FrameStage_InitTransform(FFTHandle_t* fft, int dbg_level);

// Slides newSamples samples of channel ch of the interleaved frame (stride
// channels) into the end of a history of historyLen samples.
void FrameStage_LoadHistory(postInfo_t* post, short* history, short* frame, int ch, unsigned int channels,
                            int historyLen, int newSamples);
// Samples as floats, for the spectral work.
void FrameStage_ToFloat(const short* src, float* dst, int samples);
// Analysis window and forward transform in place: buf (258 floats) then
// holds the 129-bin spectrum.
void FrameStage_Forward(FFTHandle_t* fft, float* buf, int* ip, float* w);
// Inverse transform and synthesis window in place.
void FrameStage_Inverse(FFTHandle_t* fft, float* buf, int* ip, float* w);
// Adds tail to the first bufLen - newSamples samples of buf into the
// interleaved frame from index bias on (stride channels), then keeps
// buf[newSamples..bufLen-1] as the next tail.
void FrameStage_OverlapAdd(postInfo_t* post, float* buf, float* tail, short* frame, unsigned int channels, int bias,
                           int bufLen, int newSamples);

#ifdef __cplusplus
}
#endif

#endif
