#include "debug_msglevel.h"

#include <cjson/cJSON.h>
#include <stdlib.h>
#include <string.h>

#include "RivOsLayer.h"

namespace {

constexpr const char* kDefaultLevelPath = "/config/audioAlgo.json";
constexpr size_t kLevelPathLenBytes = 128;
constexpr int kLevelFileMode = 420;  // 0644: the file is only read

bool IsAllowedLevel(int level) { return level == 1 || level == 3 || level == 7 || level == 15; }

int LevelFromText(const char* text) {
  int level = ALGO_MSG_LEVEL_DEFAULT;
  cJSON* root = cJSON_Parse(text);
  if (root == NULL) {
    return level;
  }
  cJSON* item = cJSON_GetObjectItem(root, "debug_level");
  if (item != NULL) {
    level = item->valueint;
    if (!IsAllowedLevel(level)) {
      level = ALGO_MSG_LEVEL_DEFAULT;
    }
  }
  // The tree is released here rather than kept: a process that re-initialises
  // handles for days must not grow.
  cJSON_Delete(root);
  return level;
}

}  // namespace

extern "C" int DynamicMessageLevel(void) {
  int level = ALGO_MSG_LEVEL_DEFAULT;
  char path[kLevelPathLenBytes];
  const char* env = getenv("DML_PATH");
  if (env != NULL) {
    strncpy(path, env, sizeof(path) - 1);
    path[sizeof(path) - 1] = '\0';
  } else {
    strcpy(path, kDefaultLevelPath);
  }

  int fd = RivFsOpen(path, RIV_FS_O_RDONLY, kLevelFileMode);
  if (fd < 0) {
    return level;
  }
  long lengthBytes = RivFsSeek(fd, 0, RIV_FS_SEEK_END);
  RivFsSeek(fd, 0, RIV_FS_SEEK_SET);
  if (lengthBytes > 0) {
    // One byte more than the file for the terminator the parser needs.
    char* text = (char*)RivOsMemAlloc((size_t)lengthBytes + 1);
    if (text != NULL) {
      int got = RivFsRead(fd, text, (unsigned int)lengthBytes);
      if (got > 0) {
        text[got] = '\0';
        level = LevelFromText(text);
      }
      RivOsMemRelease(text);
    }
  }
  RivFsClose(fd);
  return level;
}
