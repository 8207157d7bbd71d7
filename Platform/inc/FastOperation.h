// Address alignment helpers for the block copy.
#ifndef ZEB_PLATFORM_FASTOPERATION_H
#define ZEB_PLATFORM_FASTOPERATION_H

#ifdef __cplusplus
extern "C" {
#endif

// Nonzero when both addresses have the same offset within an align-byte
// block ((a ^ b) & (align - 1) == 0), so aligning one aligns the other.
// align is a power of two.
int is_both_address_align_to(const void* address_0, const void* address_1, unsigned int align);

// Bytes from address up to the next align-byte boundary: align - (address mod
// align), which is a full align for an address already on a boundary.
unsigned int get_align_pedding(const void* address, unsigned int align);

#ifdef __cplusplus
}
#endif

#endif
