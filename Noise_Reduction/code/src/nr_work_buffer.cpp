// Carve of the noise-reduction block shared by the chain and the ZebAnr family.
#include "nr_work_buffer.h"

#include "AudioSRCProcess.h"
#include "kiss_fft.h"
#include "nr_NN.h"
#include "rnn.h"

namespace {

constexpr int kChannels = NR_WORK_BUFFER_CHANNELS;
constexpr int kNnFftLenSamples = KISS_NN_FFT_POINTS;  // the neural denoiser's own transform

}  // namespace

void NR_CarveInstances(Carver& c, NSinst_t* nr[NR_WORK_BUFFER_CHANNELS]) {
  for (int ch = 0; ch < kChannels; ++ch) nr[ch] = c.Take<NSinst_t>();
  const bool set = nr[0] != NULL;
  for (int ch = 0; ch < kChannels; ++ch) {
    NSWorkingBuf_t* p = c.Take<NSWorkingBuf_t>();
    if (set) nr[ch]->NRInternalWorkBuf = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    NSCJsoninst_t* p = c.Take<NSCJsoninst_t>();
    if (set) nr[ch]->InternalParams = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    DenoiseState* p = c.Take<DenoiseState>();
    if (set) nr[ch]->NNStateWorkBuf = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    NNLayerState* p = c.Take<NNLayerState>();
    if (set) nr[ch]->nnlayer_buf = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    GRUState* p = c.Take<GRUState>();
    if (set) nr[ch]->gru_state_buff = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    CommonState* p = c.Take<CommonState>();
    if (set) nr[ch]->common = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    kiss_fft_state* p = c.Take<kiss_fft_state>();
    if (set) nr[ch]->common->kfft = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    kiss_twiddle_cpx* p = c.Take<kiss_twiddle_cpx>(sizeof(kiss_twiddle_cpx) * kNnFftLenSamples);
    if (set) nr[ch]->common->kfft->twiddles = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    short* p = c.Take<short>(sizeof(short) * kNnFftLenSamples);
    if (set) nr[ch]->common->kfft->bitrev = p;
  }
  const size_t srcBytes = ZebSrc_GetBufferSize((SrcConversionMode)0);
  for (int ch = 0; ch < kChannels; ++ch) {
    char* p = c.Take<char>(srcBytes);
    if (set) nr[ch]->SRCInputWorkBuf_ptr = p;
  }
  for (int ch = 0; ch < kChannels; ++ch) {
    char* p = c.Take<char>(srcBytes);
    if (set) nr[ch]->SRCOutputWorkBuf_ptr = p;
  }
}
