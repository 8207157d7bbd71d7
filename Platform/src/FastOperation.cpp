// Address alignment helpers for the block copy.
#include "FastOperation.h"

#include <stdint.h>

extern "C" int is_both_address_align_to(const void* address_0, const void* address_1,
                                        unsigned int align) {
  const uintptr_t a = reinterpret_cast<uintptr_t>(address_0);
  const uintptr_t b = reinterpret_cast<uintptr_t>(address_1);
  return ((a ^ b) & (align - 1u)) == 0;
}

extern "C" unsigned int get_align_pedding(const void* address, unsigned int align) {
  const uintptr_t a = reinterpret_cast<uintptr_t>(address);
  return align - static_cast<unsigned int>(a & (align - 1u));
}
