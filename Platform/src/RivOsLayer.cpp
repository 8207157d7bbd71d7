#include "RivOsLayer.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

int ToPosixFlags(int flags) {
  switch (flags) {
    case RIV_FS_O_WRONLY:
      return O_WRONLY;
    case RIV_FS_O_RDWR:
      return O_RDWR;
    default:
      return O_RDONLY;
  }
}

int ToPosixWhence(int whence) {
  switch (whence) {
    case RIV_FS_SEEK_CUR:
      return SEEK_CUR;
    case RIV_FS_SEEK_END:
      return SEEK_END;
    default:
      return SEEK_SET;
  }
}

}  // namespace

extern "C" {

int RivFsOpen(const char* path, int flags, int mode) {
  if (path == NULL) {
    return -1;
  }
  const int fd = open(path, ToPosixFlags(flags) | O_CLOEXEC, (mode_t)mode);
  if (fd < 0) {
    return fd;
  }
  // Only files are opened: POSIX lets a directory be opened for reading, and
  // its "length" from a seek to the end is no size to allocate.
  struct stat st;
  if (fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
    close(fd);
    errno = EISDIR;
    return -1;
  }
  return fd;
}

long RivFsSeek(int fd, long offset, int whence) {
  return (long)lseek(fd, (off_t)offset, ToPosixWhence(whence));
}

int RivFsRead(int fd, void* buffer, unsigned int sizeBytes) {
  if (buffer == NULL) {
    return -1;
  }
  unsigned int total = 0;
  while (total < sizeBytes) {
    ssize_t got = read(fd, (char*)buffer + total, sizeBytes - total);
    if (got < 0) {
      return total > 0 ? (int)total : -1;
    }
    if (got == 0) {
      break;
    }
    total += (unsigned int)got;
  }
  return (int)total;
}

int RivFsClose(int fd) { return close(fd); }

void* RivOsMemAlloc(size_t sizeBytes) { return malloc(sizeBytes); }

void RivOsMemRelease(void* ptr) { free(ptr); }

}  // extern "C"
