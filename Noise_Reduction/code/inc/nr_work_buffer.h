// The noise-reduction block of a working buffer, carved the same way by the
// chain and by the ZebAnr family.
#ifndef ZEB_NR_WORK_BUFFER_H
#define ZEB_NR_WORK_BUFFER_H

#include "nr_core.h"
#include "work_buffer.h"

#define NR_WORK_BUFFER_CHANNELS 2  // both instances are always carved

// Each kind of record for channel 0, then for channel 1: the instances, then
// their working buffers, tuning values, neural state and network layers,
// recurrent state, common neural state, its transform with twiddles and
// bit reversal, and the rate converter's input and output buffers. nr gets
// the instances, and their pointers are set, only when c carves a buffer;
// while it only counts, nr gets NULLs.
void NR_CarveInstances(Carver& c, NSinst_t* nr[NR_WORK_BUFFER_CHANNELS]);

#endif
