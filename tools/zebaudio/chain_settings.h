// The four public configuration records of the chain, their defaults, and
// their JSON form. A configuration file holds the records under the names
// of ZebKol_Config's parameters, and each record field by field under the
// record's own field names:
//
//   { "anr_config": { "anr_enable": 0, ... },
//     "eq_config":  { "eq_enable": 0, "user_mode": 1, "eq_gain_db": [129 values] },
//     "hpf_config": { "hpf_enable": 0, "user_mode": 1, "cutoff_frequency": 0 },
//     "agc_config": { "agc_enable": 0, ..., "gain_info": { "gain_max": 20, ... } } }
//
// Every record and every field is optional in a file; what is left out
// keeps its default. Unknown names are refused, so that a misspelt field
// does not pass unnoticed. Enumerated fields take their number or their
// enumerator's name ("AUDIO_HPF_FREQ_150", "NR_SPEED_HIGH").
#ifndef ZEBTOOL_CHAIN_SETTINGS_H
#define ZEBTOOL_CHAIN_SETTINGS_H

#include <string>

#include "zebaudio.h"

namespace zebtool {

struct ChainSettings {
  AudioAnrConfig anr;
  AudioEqConfig eq;
  AudioHpfConfig hpf;
  AudioAgcConfig agc;
};

// All stages off, with the other fields holding values that work as soon as
// a stage is switched on: noise reduction in a user mode with intensity 20
// in every band and the fastest update (which every filter mode accepts),
// a flat equaliser, the high-pass at 80 Hz in the frequency domain, and the
// gain control in the time domain with the library's built-in curve and
// limits.
ChainSettings DefaultChainSettings();

// The four records as JSON text, every field present, ending in a newline.
std::string ChainSettingsToJson(const ChainSettings& settings);

// Reads a configuration file over `settings`. On failure returns false with
// a message that names the file and the problem.
bool LoadChainSettingsFile(const std::string& path, ChainSettings* settings, std::string* error);

// Reads equaliser gains: either 129 whole numbers of dB, one per line (blank
// lines and lines starting with '#' are skipped), or JSON: an array of 129
// numbers, or an object with such an array under "eq_gain_db".
bool LoadEqGainFile(const std::string& path, short gainsDb[ZEB_SPECTRUM_BINS], std::string* error);

// Checks that a noise-reduction tuning file is one JSON object, so that a
// broken file is named by the tool before the library sees it.
bool CheckTuningFile(const std::string& path, std::string* error);

// Reads a whole file; false with a message naming it when that fails.
bool ReadTextFile(const std::string& path, std::string* text, std::string* error);

}  // namespace zebtool

#endif  // ZEBTOOL_CHAIN_SETTINGS_H
