// User-designed second-order sections of the equaliser: design from type,
// frequency, Q and gain, the time-domain cascade, and the magnitude response.
// The coefficients and delays live in EQinst_t (eq_filter.h).
#ifndef ZEB_EQ_BIQUAD_H
#define ZEB_EQ_BIQUAD_H

#include "eq_filter.h"
#include "zebaudio/zeb_eq.h"

#ifdef __cplusplus
extern "C" {
#endif

#define EQ_FREQZ_POINTS 512  // response points; point k is k * fs / 1024
#define EQ_IIR_FRAME_SAMPLES 128

// Section shapes, with the values of the public EQ_FILTER_TYPE. The notch
// is a peaking section; high and low pass become shelves at non-zero gain.
typedef enum EQ_INT_ENUM_BASE {
  _EQ_NOTCH_FILTER = 0,
  _EQ_HIGH_PASS_FILTER = 1,
  _EQ_LOW_PASS_FILTER = 2
} _EQ_FILTER_TYPE;

// The public AudioFilterConfig as the engine sees it.
typedef struct {
  _EQ_FILTER_TYPE type;
  int f0;        // Hz
  int Q_factor;  // whole number, at least 1
  int gain;      // dB
} _AudioFilterConfig;

// Structure of a section (iir_type).
#define EQ_IIR_DIRECT_FORM_II 0
#define EQ_IIR_DIRECT_FORM_I 1  // chosen for a section that is the identity

// Range test of one section's settings; 0 or -1, with a message.
int FilterDesignConfigCheck(EQinst_t* inst, _AudioFilterConfig* filter_config);
// Designs slot filter_cnt - 1 (filter_cnt counts 1..10). 0, or -1 with a
// message for a filter_cnt outside 1..10, which would name no slot.
int FilterGeneratr(EQinst_t* inst, int filter_cnt, _AudioFilterConfig* filter_config);
// Runs every designed section over EQ_IIR_FRAME_SAMPLES samples in place,
// slot after slot; outputs wrap at 16 bits. -1 for an unknown structure.
int InfiniteImpulseResponseFilter(EQinst_t* inst, short int* Y_in);
// Magnitude response in dB of slot filter_cnt (counting from 0) at
// EQ_FREQZ_POINTS points; -1 for a slot outside 0..9.
int SOS_freqz(EQinst_t* inst, int filter_cnt, float* Frequency_response);

// The user's filter operations of the chain and the ZebEq family.
// Designs slot filter_cnt - 1 of eq[0] from the public settings; in stereo
// eq[1] then becomes a whole copy of eq[0], delays included. 0, or -1 when
// the settings or the slot are refused.
int EQ_DesignUserFilter(EQinst_t** eq, unsigned int channels, int filter_cnt, const AudioFilterConfig* filter_config);
// Sum of the responses of inst's designed sections at EQ_FREQZ_POINTS
// points; all 0 when nothing is designed or there is no instance.
void EQ_SumDesignedResponses(EQinst_t* inst, float* frequency_response);

#ifdef __cplusplus
}
#endif

#endif
