// Sample-moving tools around the spectral work of every family.
#include "pre_post_tool.h"

#include <string.h>

#include "debug_msglevel.h"

namespace {

constexpr float kClipFullScale = 32767.0f;
constexpr float kClipNegFullScale = -32768.0f;
constexpr short kPreClipThreshold = 32700;
// About -3 dB, applied to a whole frame once it holds a near-full-scale sample.
constexpr float kPreClipGainNum = 23197.0f;
constexpr float kPreClipGainDen = 32767.0f;

}  // namespace

extern "C" {

void Post_OLA_Process(float* input, float* input2, short* output, postInfo_t* postInfo) {
  const int length = postInfo->length;
  const unsigned int stride = postInfo->channel_number;
  const int bias = postInfo->bias;
  const bool duplicate = postInfo->flag != 0 && stride == 2;
  for (int k = 0; k < length; ++k) {
    float temp = input[k];
    if (input2 != NULL) {
      temp += input2[k];
    }
    const short s = FloatToShortClamped(temp);
    output[(unsigned int)k * stride + bias] = s;
    if (duplicate) {
      output[(unsigned int)k * 2 + bias + 1] = s;
    }
  }
}

void Post_Dgain_Process(short* output, float gain, postInfo_t* postInfo) {
  for (int k = 0; k < postInfo->length; ++k) {
    const unsigned int index = (unsigned int)k * postInfo->channel_number + postInfo->bias;
    output[index] = FloatToShortClamped((float)output[index] * gain);
  }
}

void Post_Clipping_Check(float* input, postInfo_t* postInfo, int dbg_level) {
  const int length = postInfo->length;
  int saturatedPairs = 0;
  for (int k = 1; k < length; ++k) {
    const bool posPair = input[k - 1] == kClipFullScale && input[k] == kClipFullScale;
    const bool negPair = input[k - 1] == kClipNegFullScale && input[k] == kClipNegFullScale;
    if (posPair || negPair) {
      ++saturatedPairs;
    }
  }
  if (saturatedPairs > length / 3) {
    ALGO_WRN(dbg_level, "Warning! The Microphone data is saturate.\t\n");
  }
}

void Pre_Clipping_Check(short* input, postInfo_t* postInfo) {
  int loud = 0;
  for (int i = postInfo->bias; i < postInfo->length; ++i) {
    if (input[i] > kPreClipThreshold || input[i] < -kPreClipThreshold) {
      ++loud;
    }
  }
  if (loud == 0) {
    return;
  }
  for (int i = postInfo->bias; i < postInfo->length; ++i) {
    input[i] = (short)((float)input[i] * kPreClipGainNum / kPreClipGainDen);
  }
}

void LoadStreams(short* input, short* pss_audio_in, int channel_counter, postInfo_t* postInfo) {
  const int length = postInfo->length;
  const int fresh = postInfo->bias;  // at most length/2: only `fresh` old samples are kept
  if (postInfo->channel_number == 1) {
    memmove(input, input + (length - fresh), (size_t)fresh * sizeof(short));
    memcpy(input + (length - fresh), pss_audio_in, (size_t)fresh * sizeof(short));
  } else if (postInfo->channel_number == 2) {
    memmove(input, input + (length - fresh), (size_t)fresh * sizeof(short));
    for (int n = 0; n < fresh; ++n) {
      input[length - fresh + n] = pss_audio_in[2 * n + channel_counter];
    }
  }
}

void LoadStreamf(float* input, short* pss_audio_in, int channel_counter, postInfo_t* postInfo) {
  const int length = postInfo->length;
  const int fresh = postInfo->bias;
  if (channel_counter == 2) {
    channel_counter = 0;
  }
  if (postInfo->channel_number == 1) {
    memmove(input, input + (length - fresh), (size_t)fresh * sizeof(float));
    for (int n = 0; n < fresh; ++n) {
      input[length - fresh + n] = (float)pss_audio_in[n];
    }
  } else if (postInfo->channel_number == 2) {
    // flag 1 loads any channel; otherwise only the channel that flag names.
    if (postInfo->flag != 1 && channel_counter != postInfo->flag) {
      return;
    }
    memmove(input, input + (length - fresh), (size_t)fresh * sizeof(float));
    for (int n = 0; n < fresh; ++n) {
      input[length - fresh + n] = (float)pss_audio_in[2 * n + channel_counter];
    }
  }
}

void RearranegOneArrayToMultipleChannel(short* input, short* output, int frame_size, int channel_num) {
  for (int i = 0; i < frame_size; ++i) {
    for (int j = 0; j < channel_num; ++j) {
      output[j * frame_size + i] = input[i * channel_num + j];
    }
  }
}

void RearrangeMultipleChannelDataToOneArray(short* input, short* output, int frame_size, int channel_num) {
  for (int i = 0; i < frame_size; ++i) {
    for (int j = 0; j < channel_num; ++j) {
      output[i * channel_num + j] = input[j * frame_size + i];
    }
  }
}

}  // extern "C"
