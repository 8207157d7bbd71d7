// Block copy tuned for 64-byte cache lines.
#ifndef ZEB_PLATFORM_MEMCPYFAST_H
#define ZEB_PLATFORM_MEMCPYFAST_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// Same contract as memcpy (no overlap); returns destination. Copies of 256
// bytes or more whose addresses agree in their low two bits go by 64-byte
// batches with the source prefetched ahead; everything else is plain memcpy.
void* memcpy_fast(void* destination, const void* source, size_t num);

// Nonzero when memcpy_fast takes the batch path for these arguments.
int memcpy_fast_uses_batches(const void* destination, const void* source, size_t num);

#ifdef __cplusplus
}
#endif

#endif
