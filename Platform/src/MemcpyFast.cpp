// Block copy tuned for 64-byte cache lines: align the destination to a line,
// then move whole lines with the source prefetched a few lines ahead.
#include "MemcpyFast.h"

#include <stdint.h>
#include <string.h>

#include "FastOperation.h"
#include "zeb_simd.h"

namespace {

constexpr size_t kPlainCopyMaxBytes = 255;
constexpr unsigned int kWordAlignBytes = 4;
constexpr unsigned int kLineBytes = 64;
constexpr size_t kPrefetchAheadBytes = 192;  // three lines
// Sources that sit 4, 8 or 12 bytes into a line after the destination was
// aligned prefetch slightly further ahead (tuned on the target's cache).
constexpr size_t kPrefetchAheadNearLineStartBytes = 204;

bool SourceNearLineStart(unsigned int sourcePedding) {
  return sourcePedding == 52 || sourcePedding == 56 || sourcePedding == 60;
}

// Prefetch is a hint and never faults, so the address may lie past the end of
// the source; it is formed as an integer to keep the pointer arithmetic within
// the object.
void PrefetchAhead(const unsigned char* source, size_t aheadBytes) {
  __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(source) + aheadBytes));
}

// One line: four 16-byte loads, then four 16-byte stores.
void CopyLine(unsigned char* destination, const unsigned char* source) {
  zeb_u32x4 v[4];
  for (int k = 0; k < 4; ++k) memcpy(&v[k], source + 16 * k, sizeof(v[k]));
  for (int k = 0; k < 4; ++k) memcpy(destination + 16 * k, &v[k], sizeof(v[k]));
}

}  // namespace

extern "C" int memcpy_fast_uses_batches(const void* destination, const void* source, size_t num) {
  return num > kPlainCopyMaxBytes && is_both_address_align_to(destination, source, kWordAlignBytes);
}

extern "C" void* memcpy_fast(void* destination, const void* source, size_t num) {
  if (!memcpy_fast_uses_batches(destination, source, num)) {
    memcpy(destination, source, num);
    return destination;
  }
  unsigned char* d = static_cast<unsigned char*>(destination);
  const unsigned char* s = static_cast<const unsigned char*>(source);
  // A whole line even when the destination is already aligned.
  const size_t pedding = get_align_pedding(d, kLineBytes);
  memcpy(d, s, pedding);
  d += pedding;
  s += pedding;
  const size_t batchLength = (num - pedding) / kLineBytes;
  const size_t remainLength = (num - pedding) % kLineBytes;
  const size_t ahead = SourceNearLineStart(get_align_pedding(s, kLineBytes))
                           ? kPrefetchAheadNearLineStartBytes
                           : kPrefetchAheadBytes;
  for (size_t b = 0; b < batchLength; ++b) {
    PrefetchAhead(s, ahead);
    CopyLine(d, s);
    d += kLineBytes;
    s += kLineBytes;
  }
  memcpy(d, s, remainLength);
  return destination;
}
