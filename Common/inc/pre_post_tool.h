// Frame tools: overlap-add back to 16-bit, digital gain, clipping checks and
// the moving of interleaved PCM into per-channel histories.
#ifndef ZEB_COMMON_PRE_POST_TOOL_H
#define ZEB_COMMON_PRE_POST_TOOL_H

#ifdef __cplusplus
extern "C" {
#endif

// Parameter record of the frame tools; callers fill it right before a call.
typedef struct {
  int length;                   // samples to process (whole buffer length for the loaders)
  unsigned int channel_number;  // interleave stride of the PCM side, 1 or 2
  int bias;                     // output offset, new-sample count or first index, per tool
  int flag;                     // channel duplication / channel rule, per tool
} postInfo_t;

void Post_OLA_Process(float* input, float* input2, short* output, postInfo_t* postInfo);
void Post_Dgain_Process(short* output, float gain, postInfo_t* postInfo);
void Post_Clipping_Check(float* input, postInfo_t* postInfo, int dbg_level);
void Pre_Clipping_Check(short* input, postInfo_t* postInfo);
void LoadStreams(short* input, short* pss_audio_in, int channel_counter, postInfo_t* postInfo);
void LoadStreamf(float* input, short* pss_audio_in, int channel_counter, postInfo_t* postInfo);
void RearranegOneArrayToMultipleChannel(short* input, short* output, int frame_size, int channel_num);
void RearrangeMultipleChannelDataToOneArray(short* input, short* output, int frame_size, int channel_num);

// Float sample to 16 bits: clamp to [-32768, 32767], then round toward zero.
// A NaN, which neither clamp catches, becomes 0 as the ARM conversion gives.
static inline short FloatToShortClamped(float temp) {
  if (temp != temp) {
    return 0;
  }
  if (temp > 32767.0f) {
    temp = 32767.0f;
  } else if (temp < -32768.0f) {
    temp = -32768.0f;
  }
  return (short)(int)temp;
}

#ifdef __cplusplus
}
#endif

#endif
