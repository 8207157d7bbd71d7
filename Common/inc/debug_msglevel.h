// Message printing, message level and the status conventions shared by every
// family of the library.
#ifndef ZEB_COMMON_DEBUG_MSGLEVEL_H
#define ZEB_COMMON_DEBUG_MSGLEVEL_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

// Bits of the message level.
#define ALGO_MSG_LEVEL_ERR 1
#define ALGO_MSG_LEVEL_WRN 2
#define ALGO_MSG_LEVEL_MSG 4
// Level in force when no level file says otherwise.
#define ALGO_MSG_LEVEL_DEFAULT 7

// First word of every family's internal record once Init has run.
#define ALGO_CHECK_NUMBER 0x30513057

// Every message opens with "[tag] prefix"; the prefix is always empty.
#define ALGO_MSG_PREFIX ""

#define ALGO_PRINT_TAGGED(tag, fmt, ...) \
  printf("[%s] %s" fmt, tag, ALGO_MSG_PREFIX, ##__VA_ARGS__)

// Gated messages: printed only when their bit is set in `lv`.
#define ALGO_ERR(lv, fmt, ...)                                         \
  do {                                                                 \
    if ((lv) & ALGO_MSG_LEVEL_ERR)                                     \
      ALGO_PRINT_TAGGED("ALGO_MSG_ERR", fmt, ##__VA_ARGS__);           \
  } while (0)
#define ALGO_WRN(lv, fmt, ...)                                         \
  do {                                                                 \
    if ((lv) & ALGO_MSG_LEVEL_WRN)                                     \
      ALGO_PRINT_TAGGED("ALGO_MSG_WRN", fmt, ##__VA_ARGS__);           \
  } while (0)
#define ALGO_MSG(lv, fmt, ...)                                         \
  do {                                                                 \
    if ((lv) & ALGO_MSG_LEVEL_MSG)                                     \
      ALGO_PRINT_TAGGED("ALGO_MSG_MSG", fmt, ##__VA_ARGS__);           \
  } while (0)
// A NULL handle leaves no level to consult: its error is always printed.
#define ALGO_ERR_ALWAYS(fmt, ...) ALGO_PRINT_TAGGED("ALGO_MSG_ERR", fmt, ##__VA_ARGS__)

// Reads the message level from the file named by DML_PATH, or
// "/config/audioAlgo.json"; 7 when there is none or it holds no valid level.
int DynamicMessageLevel(void);

// 16-bit free-running counter step: stores the low 16 bits of counter + add
// and returns 1 when the sum did not fit (the caller names the counter in
// its own warning), 0 otherwise.
static inline int Counter16Add(unsigned short* counter, unsigned int add) {
  unsigned int sum = (unsigned int)*counter + add;
  *counter = (unsigned short)(sum & 0xFFFFu);
  return sum > 0xFFFFu;
}

#ifdef __cplusplus
}
#endif

#endif
