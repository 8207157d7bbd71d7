/*
 * Real-time voice processing on 128-sample frames of 16-bit PCM: the
 * processing chain (ZebKol_*) and its stages used singly (ZebAnr_*,
 * ZebEq_*, ZebAgc_*). See the family headers for records and calls.
 */
#ifndef ZEBAUDIO_H
#define ZEBAUDIO_H

#include "zebaudio/zeb_types.h"
#include "zebaudio/zeb_anr.h"
#include "zebaudio/zeb_eq.h"
#include "zebaudio/zeb_agc.h"
#include "zebaudio/zeb_kol.h"

#endif /* ZEBAUDIO_H */
