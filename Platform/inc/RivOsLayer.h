// Thin layer over the device's OS services: file reading and heap for the
// few non-audio-path tasks that need them (the message-level file).
#ifndef ZEB_PLATFORM_RIVOSLAYER_H
#define ZEB_PLATFORM_RIVOSLAYER_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// Access flags of RivFsOpen.
#define RIV_FS_O_RDONLY 0
#define RIV_FS_O_WRONLY 1
#define RIV_FS_O_RDWR 2

// Origins of RivFsSeek.
#define RIV_FS_SEEK_SET 0
#define RIV_FS_SEEK_CUR 1
#define RIV_FS_SEEK_END 2

// Returns a file descriptor, or a negative value when the file cannot be opened.
int RivFsOpen(const char* path, int flags, int mode);
// Returns the new offset in bytes, or a negative value on failure.
long RivFsSeek(int fd, long offset, int whence);
// Returns the number of bytes read, 0 at the end of the file, negative on failure.
int RivFsRead(int fd, void* buffer, unsigned int sizeBytes);
int RivFsClose(int fd);

void* RivOsMemAlloc(size_t sizeBytes);
void RivOsMemRelease(void* ptr);

#ifdef __cplusplus
}
#endif

#endif
