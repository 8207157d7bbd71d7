/*
 * Definitions shared by every public header of the library: the export
 * macro, C linkage guards, the untyped handles and the frame geometry.
 *
 * Frames. Every family works on frames of ZEB_FRAME_LEN_SAMPLES (128)
 * 16-bit samples per channel, mono or interleaved stereo (L R L R ...), at
 * 8, 16, 32 or 48 kHz. Samples are processed in place in the caller's
 * buffer, which holds point_number * channel shorts.
 *
 * Memory. The caller asks a family's GetBufferSize for a byte count,
 * provides one contiguous working buffer of that size (pointer aligned) and
 * keeps it alive for the life of the handle. Init carves all state out of
 * it; a handle is an untyped pointer equal to the start of that buffer.
 * Free releases only what lies outside the buffer (dump files, transform
 * state, the neural denoiser's state), never the buffer itself.
 *
 * Threading. The library has no threads, queues, timers or locks. One
 * handle has one caller at a time; an overlapping call on the same handle is
 * detected and refused, but not serialised. Distinct handles may run on
 * distinct threads.
 *
 * Real-time safety. Run and the per-frame calls neither allocate, nor lock,
 * nor touch files. File access happens only in Init (the message-level file
 * named by DML_PATH, default "/config/audioAlgo.json"), in the JSON tuning
 * calls (ReadJson / NrReadJson / GetJsonFileSize) and in the raw-audio dumps
 * that the AUDIO_*_DUMP environment variables switch on.
 */
#ifndef ZEBAUDIO_ZEB_TYPES_H
#define ZEBAUDIO_ZEB_TYPES_H

#if defined(__GNUC__) || defined(__clang__)
#define ZEB_API __attribute__((visibility("default")))
#else
#define ZEB_API
#endif

#ifdef __cplusplus
#define ZEB_EXTERN_C_BEGIN extern "C" {
#define ZEB_EXTERN_C_END }
#else
#define ZEB_EXTERN_C_BEGIN
#define ZEB_EXTERN_C_END
#endif

/* Samples per channel in one frame: the only point_number accepted. */
#define ZEB_FRAME_LEN_SAMPLES 128
/* Channels a handle can carry; per-channel state is always reserved twice. */
#define ZEB_MAX_CHANNELS 2
/* Bins of the 256-point spectrum that the per-bin tables address. */
#define ZEB_SPECTRUM_BINS 129
/* Points of the magnitude response returned by the FilterFreqz calls. */
#define ZEB_FREQZ_POINTS 512
/* Slots for user-designed biquad sections. */
#define ZEB_FILTER_SLOTS 10
/* Points of a compression curve in AudioAgcConfig and the band setters. */
#define ZEB_AGC_CURVE_POINTS 7
/* Edges, in Hz, given to the SetAgcFreqBand calls. */
#define ZEB_AGC_FREQ_BAND_EDGES 3

ZEB_EXTERN_C_BEGIN

/* Handles: the start of the caller's working buffer of each family. */
typedef void* KOL_HANDLE;
typedef void* ANR_HANDLE;
typedef void* EQ_HANDLE;
typedef void* AGC_HANDLE;

/* A beam-forming instance of another library; never dereferenced here. */
typedef void* KOL_BF_HANDLE;
typedef void* ANR_BF_HANDLE;

ZEB_EXTERN_C_END

#endif /* ZEBAUDIO_ZEB_TYPES_H */
