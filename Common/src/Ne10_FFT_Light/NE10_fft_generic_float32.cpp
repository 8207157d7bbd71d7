// Plan building for the real float32 FFT: buffer size, state layout in
// caller memory, factor rule and twiddle tables. Runs at Init only, so the
// trigonometry here never reaches the audio path.
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "ne10_fft.h"

namespace {

typedef ne10_fft_cpx_float32_t Cpx32;

constexpr double kPi = 3.141592653589793;
// The merging-stage phase is formed in float from this rounded constant.
constexpr float kMinusTwoPiF = -2.0f * 3.1415927f;
constexpr ne10_int32_t kMaxStages = 21;
// Bytes between the record start and the scratch buffer: the record's size
// with 4-byte pointers. Where pointers are wider the buffer starts behind the
// whole record instead, so the two never overlap.
constexpr size_t kRecordBytes32 = 36;
constexpr size_t kHeaderBytes = sizeof(ne10_fft_r2c_state_float32_t) > kRecordBytes32
                                    ? sizeof(ne10_fft_r2c_state_float32_t)
                                    : kRecordBytes32;
constexpr ne10_int32_t kMinTableLength = 16;
constexpr ne10_int32_t kSuperBlockEntries = 12;

// Byte offsets of the state's parts, relative to the record start.
struct StateLayout {
  size_t buffer;
  size_t twiddles;
  size_t factors;
  size_t twiddlesQuarter;
  size_t factorsQuarter;
  size_t superTwiddles;
  size_t end;
};

ne10_int32_t superBlockCount(ne10_int32_t nfft) { return nfft / 32 > 1 ? nfft / 32 : 1; }

StateLayout layoutState(uintptr_t base, ne10_int32_t nfft) {
  StateLayout l;
  const uintptr_t first = (base + kHeaderBytes + 7u) & ~(uintptr_t)7u;
  l.buffer = (size_t)(first - base);
  l.twiddles = l.buffer + (size_t)nfft * sizeof(Cpx32);
  l.factors = l.twiddles + (size_t)nfft * sizeof(Cpx32);
  l.twiddlesQuarter = l.factors + NE10_FACTOR_SLOTS * sizeof(ne10_int32_t);
  l.factorsQuarter = l.twiddlesQuarter + (size_t)(nfft / 4) * sizeof(Cpx32);
  l.superTwiddles = l.factorsQuarter + NE10_FACTOR_SLOTS * sizeof(ne10_int32_t);
  l.end = l.superTwiddles + (size_t)(superBlockCount(nfft) * kSuperBlockEntries) * sizeof(Cpx32);
  return l;
}

ne10_int32_t pickRadix(ne10_int32_t remainder, ne10_int32_t flags) {
  if (flags & NE10_FACTOR_EIGHT_FIRST) {
    if (remainder == 8) return 8;
    if (remainder == 40) return 5;
    if (remainder == 24) return 3;
  }
  if (remainder % 4 == 0) return 4;
  if (remainder % 2 == 0) return 2;
  if (remainder % 5 == 0) return 5;
  if (remainder % 3 == 0) return 3;
  return remainder;
}

// exp(-j*2*pi*fstride*k*j/nfft): the phase is formed in double and kept as
// a float, and cosine and sine are taken of that float phase.
Cpx32 twiddleAt(ne10_int32_t fstride, ne10_int32_t k, ne10_int32_t j, ne10_int32_t nfft) {
  const float phase = (float)(-2.0 * kPi * (double)fstride * (double)k * (double)j / (double)nfft);
  Cpx32 w;
  w.r = (float)cos((double)phase);
  w.i = (float)sin((double)phase);
  return w;
}

typedef void (*TwiddleLineFn)(Cpx32* twiddles, ne10_int32_t radix, ne10_int32_t fstride,
                              ne10_int32_t mstride, ne10_int32_t nfft);

void plainLine(Cpx32* twiddles, ne10_int32_t radix, ne10_int32_t fstride, ne10_int32_t mstride,
               ne10_int32_t nfft) {
  for (ne10_int32_t j = 0; j < mstride; ++j)
    for (ne10_int32_t k = 1; k < radix; ++k)
      twiddles[mstride * (k - 1) + j] = twiddleAt(fstride, k, j, nfft);
}

// Transposed order keeps the radix-1 twiddles of one butterfly adjacent.
void transposedLine(Cpx32* twiddles, ne10_int32_t radix, ne10_int32_t fstride, ne10_int32_t mstride,
                    ne10_int32_t nfft) {
  for (ne10_int32_t j = 0; j < mstride; ++j)
    for (ne10_int32_t k = 1; k < radix; ++k)
      twiddles[j * (radix - 1) + k - 1] = twiddleAt(fstride, k, j, nfft);
}

// Walks the stages from the last factor (the first butterfly stage) to the
// first one and writes one line of twiddles per stage.
Cpx32* generateTwiddles(Cpx32* twiddles, const ne10_int32_t* factors, ne10_int32_t nfft,
                        TwiddleLineFn line) {
  const ne10_int32_t stages = factors[0];
  ne10_int32_t fstride = factors[1];
  const ne10_int32_t lastRadix = factors[2 * stages];
  if (lastRadix & 1) {
    // An odd first-stage butterfly needs its own roots of unity.
    twiddles[0].r = 1.0f;
    twiddles[0].i = 0.0f;
    for (ne10_int32_t k = 1; k < lastRadix; ++k) twiddles[k] = twiddleAt(fstride, k, 1, nfft);
    twiddles += lastRadix;
  }
  for (ne10_int32_t stage = stages - 1; stage > 0; --stage) {
    const ne10_int32_t radix = factors[2 * stage];
    const ne10_int32_t mstride = factors[2 * stage + 1];
    fstride /= radix;
    line(twiddles, radix, fstride, mstride, nfft);
    twiddles += mstride * (radix - 1);
  }
  return twiddles;
}

}  // namespace

extern "C" {

ne10_int32_t ne10_fft_r2c_float32_GetBuffSize(ne10_int32_t nfft) {
  return 16 * nfft + 2 * nfft + (nfft / 32 + 1) * 96 + 556;
}

ne10_int32_t ne10_factor(ne10_int32_t n, ne10_int32_t* facbuf, ne10_int32_t ne10_factor_flags) {
  if (facbuf == NULL || n < 1) return NE10_ERR;
  ne10_int32_t stages = 0;
  ne10_int32_t radix = 1;
  ne10_int32_t remainder = n;
  ne10_int32_t oddRadixTaken = 0;
  while (remainder > 1) {
    if (stages == kMaxStages) return NE10_ERR;
    radix = pickRadix(remainder, ne10_factor_flags);
    remainder /= radix;
    facbuf[2 + 2 * stages] = radix;
    facbuf[3 + 2 * stages] = remainder;
    if (radix & 1) oddRadixTaken = 1;
    ++stages;
  }
  facbuf[0] = stages;
  facbuf[1] = n / radix;
  facbuf[2 + 2 * stages] = oddRadixTaken;
  return NE10_OK;
}

ne10_fft_cpx_float32_t* ne10_fft_generate_twiddles_float32(ne10_fft_cpx_float32_t* twiddles,
                                                           const ne10_int32_t* factors,
                                                           ne10_int32_t nfft) {
  return generateTwiddles(twiddles, factors, nfft, plainLine);
}

ne10_fft_cpx_float32_t* ne10_fft_generate_twiddles_transposed_float32(
    ne10_fft_cpx_float32_t* twiddles, const ne10_int32_t* factors, ne10_int32_t nfft) {
  return generateTwiddles(twiddles, factors, nfft, transposedLine);
}

void ne10_fft_generate_super_twiddles_float32(ne10_fft_cpx_float32_t* super_twiddles,
                                              ne10_int32_t nfft) {
  const ne10_int32_t blocks = superBlockCount(nfft);
  for (ne10_int32_t i = 0; i < blocks; ++i) {
    for (ne10_int32_t j = 1; j <= 3; ++j) {
      for (ne10_int32_t k = 0; k < 4; ++k) {
        const float phase = kMinusTwoPiF * (float)(j * (4 * i + k)) / (float)nfft;
        Cpx32* w = &super_twiddles[kSuperBlockEntries * i + 4 * (j - 1) + k];
        w->r = cosf(phase);
        w->i = sinf(phase);
      }
    }
  }
}

ne10_fft_r2c_cfg_float32_t ne10_fft_alloc_r2c_float32(void* st, ne10_int32_t nfft) {
  if (st == NULL || nfft < 1) return NULL;
  const size_t sizeBytes = (size_t)ne10_fft_r2c_float32_GetBuffSize(nfft);
  memset(st, 0, sizeBytes);
  const StateLayout lay = layoutState((uintptr_t)st, nfft);
  // Short lengths fit the record and pointers; larger ones must fit all tables.
  if (nfft >= kMinTableLength && lay.end > sizeBytes) return NULL;
  unsigned char* base = static_cast<unsigned char*>(st);
  ne10_fft_r2c_cfg_float32_t cfg = static_cast<ne10_fft_r2c_cfg_float32_t>(st);
  cfg->nfft = nfft;
  cfg->buffer = reinterpret_cast<Cpx32*>(base + lay.buffer);
  cfg->r_twiddles = reinterpret_cast<Cpx32*>(base + lay.twiddles);
  cfg->r_factors = reinterpret_cast<ne10_int32_t*>(base + lay.factors);
  cfg->r_twiddles_neon = reinterpret_cast<Cpx32*>(base + lay.twiddlesQuarter);
  cfg->r_factors_neon = reinterpret_cast<ne10_int32_t*>(base + lay.factorsQuarter);
  cfg->r_super_twiddles_neon = reinterpret_cast<Cpx32*>(base + lay.superTwiddles);
  if (nfft < kMinTableLength) return cfg;

  if (ne10_factor(nfft, cfg->r_factors, 0) != NE10_OK) return NULL;
  cfg->r_twiddles_backward =
      ne10_fft_generate_twiddles_float32(cfg->r_twiddles, cfg->r_factors, nfft);
  if (ne10_factor(nfft / 4, cfg->r_factors_neon, 0) != NE10_OK) return cfg;
  cfg->r_twiddles_neon_backward = ne10_fft_generate_twiddles_transposed_float32(
      cfg->r_twiddles_neon, cfg->r_factors_neon, nfft / 4);
  ne10_fft_generate_super_twiddles_float32(cfg->r_super_twiddles_neon, nfft);
  return cfg;
}

}  // extern "C"
