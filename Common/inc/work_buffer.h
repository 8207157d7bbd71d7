// Carving of a family's working buffer: one walk over the layout gives both
// the size the caller must provide and, over the real buffer, the place of
// every block.
#ifndef ZEB_COMMON_WORK_BUFFER_H
#define ZEB_COMMON_WORK_BUFFER_H

#include <stddef.h>

// Every record's size is a multiple of four bytes, which is all the 32-bit
// target needs. On a 64-bit build the records holding pointers need eight, so
// each block is rounded up to pointer size; on the target this adds nothing.
constexpr size_t kWorkBlockAlignBytes = sizeof(void*);

constexpr size_t RoundToWorkBlock(size_t bytes) {
  return (bytes + kWorkBlockAlignBytes - 1) / kWorkBlockAlignBytes * kWorkBlockAlignBytes;
}

// Walks the working-buffer layout. With a NULL base it only counts bytes, so
// that the size and the carve come from one description of the layout.
class Carver {
 public:
  explicit Carver(char* base) : base_(base), offset_(0) {}
  template <typename T>
  T* Take(size_t bytes) {
    T* at = base_ != NULL ? reinterpret_cast<T*>(base_ + offset_) : NULL;
    offset_ += RoundToWorkBlock(bytes);
    return at;
  }
  template <typename T>
  T* Take() {
    return Take<T>(sizeof(T));
  }
  size_t size() const { return offset_; }

 private:
  char* base_;
  size_t offset_;
};

#endif
