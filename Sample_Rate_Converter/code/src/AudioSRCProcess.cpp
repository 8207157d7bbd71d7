// Sample-rate converter: working-buffer sizing.
#include "AudioSRCProcess.h"

#include "debug_msglevel.h"

namespace {

constexpr int kSrcModeCount = 20;

// Output-buffer factor per SrcConversionMode: the up-sampling factor of the
// mode, except SRC_24k_to_48k, which is sized with 1 (its output buffer is
// half of what a full block would need; callers keep blocks small there).
constexpr int kSrcFactorByMode[kSrcModeCount] = {
    2, 4, 6,  // 8k to 16k, 32k, 48k
    1, 2, 3,  // 16k to 8k, 32k, 48k
    1, 1, 3,  // 32k to 8k, 16k, 48k
    1, 1, 2,  // 48k to 8k, 16k, 32k
    1, 2, 4,  // 24k to 8k, 16k, 32k
    1,        // 24k to 48k
    3, 3, 3,  // 8k, 16k, 32k to 24k
    1,        // 48k to 24k
};

constexpr unsigned int kInBufBytes = SRC_MAX_POINT_NUMBER * sizeof(short);
constexpr unsigned int kOutBufBytesPerFactor = SRC_MAX_POINT_NUMBER * sizeof(short);
constexpr unsigned int kDataBufBytesPerFactor = SRC_MAX_POINT_NUMBER * sizeof(float);
constexpr unsigned int kDataBufExtraBytes = SRC_FILTER_LINE_EXTRA_FLOATS * sizeof(float);

// Converter buffers are carved back to back and each starts with an
// SRC_inst_t, so a size must keep the next record pointer aligned.
constexpr unsigned int RoundUpToPointer(unsigned int bytes) {
  return (bytes + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*);
}

}  // namespace

extern "C" int GetSrcFactor(SrcConversionMode mode, int dbg_lv) {
  const int index = static_cast<int>(mode);
  if (index < 0 || index >= kSrcModeCount) {
    ALGO_ERR(dbg_lv, "[SRC]Fail! Unsupported SRC mode\r\n");
    return 0;
  }
  return kSrcFactorByMode[index];
}

// The instance record, the input block, the output block and the filter
// line, back to back. On the 32-bit target (84-byte record) this is
// 6144 f + 3072 (f + 1) + 1056; a wider record on a 64-bit build gets its
// true size plus the padding that keeps the next buffer aligned, so that no
// work area reaches past the end of the buffer.
extern "C" unsigned int ZebSrc_GetBufferSize(SrcConversionMode mode) {
  const int dbg_level = DynamicMessageLevel();
  const unsigned int factor = static_cast<unsigned int>(GetSrcFactor(mode, dbg_level));
  if (factor == 0) {
    return 0;
  }
  const unsigned int bytes = static_cast<unsigned int>(sizeof(SRC_inst_t)) + kInBufBytes +
                             kOutBufBytesPerFactor * factor + kDataBufBytesPerFactor * factor +
                             kDataBufExtraBytes;
  return RoundUpToPointer(bytes);
}
