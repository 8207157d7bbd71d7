#include "chain_settings.h"

#include <cJSON.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <sstream>

namespace zebtool {
namespace {

enum class FieldKind { kUnsigned, kInt, kIntArray, kShortArray, kConvergeSpeed, kHpfCutoff, kGainInfo };

struct FieldSpec {
  const char* name;
  FieldKind kind;
  size_t offset;
  int count;  // elements of an array field, else 1
};

struct EnumName {
  int value;
  const char* name;
};

constexpr EnumName kConvergeSpeedNames[] = {
    {NR_SPEED_LOW, "NR_SPEED_LOW"}, {NR_SPEED_MID, "NR_SPEED_MID"}, {NR_SPEED_HIGH, "NR_SPEED_HIGH"}};

constexpr EnumName kHpfCutoffNames[] = {{AUDIO_HPF_FREQ_80, "AUDIO_HPF_FREQ_80"},
                                        {AUDIO_HPF_FREQ_120, "AUDIO_HPF_FREQ_120"},
                                        {AUDIO_HPF_FREQ_150, "AUDIO_HPF_FREQ_150"},
                                        {AUDIO_HPF_FREQ_500, "AUDIO_HPF_FREQ_500"},
                                        {AUDIO_HPF_FREQ_BUTT, "AUDIO_HPF_FREQ_BUTT"}};

#define ZEB_FIELD(record, field, kind, count) {#field, kind, offsetof(record, field), count}

const FieldSpec kAnrFields[] = {
    ZEB_FIELD(AudioAnrConfig, anr_enable, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAnrConfig, user_mode, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAnrConfig, anr_intensity_band, FieldKind::kIntArray, 6),
    ZEB_FIELD(AudioAnrConfig, anr_intensity, FieldKind::kIntArray, 7),
    ZEB_FIELD(AudioAnrConfig, anr_smooth_level, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAnrConfig, anr_converge_speed, FieldKind::kConvergeSpeed, 1),
    ZEB_FIELD(AudioAnrConfig, anr_filter_mode, FieldKind::kInt, 1),
};

const FieldSpec kEqFields[] = {
    ZEB_FIELD(AudioEqConfig, eq_enable, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioEqConfig, user_mode, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioEqConfig, eq_gain_db, FieldKind::kShortArray, ZEB_SPECTRUM_BINS),
};

const FieldSpec kHpfFields[] = {
    ZEB_FIELD(AudioHpfConfig, hpf_enable, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioHpfConfig, user_mode, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioHpfConfig, cutoff_frequency, FieldKind::kHpfCutoff, 1),
};

const FieldSpec kAgcFields[] = {
    ZEB_FIELD(AudioAgcConfig, agc_enable, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, user_mode, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, gain_info, FieldKind::kGainInfo, 1),
    ZEB_FIELD(AudioAgcConfig, drop_gain_max, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, attack_time, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, release_time, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, compression_ratio_input, FieldKind::kShortArray, ZEB_AGC_CURVE_POINTS),
    ZEB_FIELD(AudioAgcConfig, compression_ratio_output, FieldKind::kShortArray, ZEB_AGC_CURVE_POINTS),
    ZEB_FIELD(AudioAgcConfig, drop_gain_threshold, FieldKind::kInt, 1),
    ZEB_FIELD(AudioAgcConfig, noise_gate_db, FieldKind::kInt, 1),
    ZEB_FIELD(AudioAgcConfig, noise_gate_attenuation_db, FieldKind::kUnsigned, 1),
    ZEB_FIELD(AudioAgcConfig, gain_step, FieldKind::kUnsigned, 1),
};

const FieldSpec kGainInfoFields[] = {
    ZEB_FIELD(AgcGainInfo, gain_max, FieldKind::kInt, 1),
    ZEB_FIELD(AgcGainInfo, gain_min, FieldKind::kInt, 1),
    ZEB_FIELD(AgcGainInfo, gain_init, FieldKind::kInt, 1),
};

#undef ZEB_FIELD

struct RecordSpec {
  const char* name;
  const FieldSpec* fields;
  size_t fieldCount;
  size_t offset;  // of the record in ChainSettings
};

template <size_t N>
constexpr size_t CountOf(const FieldSpec (&)[N]) {
  return N;
}

const RecordSpec kRecords[] = {
    {"anr_config", kAnrFields, CountOf(kAnrFields), offsetof(ChainSettings, anr)},
    {"eq_config", kEqFields, CountOf(kEqFields), offsetof(ChainSettings, eq)},
    {"hpf_config", kHpfFields, CountOf(kHpfFields), offsetof(ChainSettings, hpf)},
    {"agc_config", kAgcFields, CountOf(kAgcFields), offsetof(ChainSettings, agc)},
};

// Library defaults of the time-domain gain control (its user_mode 0 set).
constexpr short kAgcCurveInputDb[ZEB_AGC_CURVE_POINTS] = {-50, -30, -20, -10, -3, -3, -3};
constexpr short kAgcCurveOutputDb[ZEB_AGC_CURVE_POINTS] = {-30, -20, -15, -5, -5, -3, -3};
// Band edges in bins of the 256-point spectrum: the reducer's own built-in
// bands, which it uses until a configuration arrives.
constexpr int kAnrBandEdgesBins[6] = {3, 24, 40, 64, 80, 128};
constexpr int kAnrDefaultIntensity = 20;
constexpr unsigned kAnrDefaultSmoothLevel = 10;

// ---- JSON to fields -------------------------------------------------------

struct Reader {
  std::string file;
  std::string* error;

  bool Fail(const std::string& where, const std::string& problem) {
    *error = "'" + file + "': " + where + " " + problem;
    return false;
  }

  bool WholeNumber(const cJSON* item, const std::string& where, long long lo, long long hi, long long* out) {
    if (!cJSON_IsNumber(item)) return Fail(where, "must be a number");
    double v = item->valuedouble;
    if (std::floor(v) != v || v < (double)lo || v > (double)hi) {
      return Fail(where, "must be a whole number from " + std::to_string(lo) + " to " + std::to_string(hi));
    }
    *out = (long long)v;
    return true;
  }

  bool EnumValue(const cJSON* item, const std::string& where, const EnumName* names, size_t count, int* out) {
    if (cJSON_IsString(item)) {
      for (size_t i = 0; i < count; ++i) {
        if (strcmp(item->valuestring, names[i].name) == 0) {
          *out = names[i].value;
          return true;
        }
      }
      return Fail(where, std::string("has an unknown name \"") + item->valuestring + "\"");
    }
    long long v = 0;
    if (!WholeNumber(item, where, INT_MIN, INT_MAX, &v)) return false;
    *out = (int)v;
    return true;
  }

  bool Array(const cJSON* item, const std::string& where, int count, long long lo, long long hi, long long* out) {
    if (!cJSON_IsArray(item) || cJSON_GetArraySize(item) != count) {
      return Fail(where, "must be an array of " + std::to_string(count) + " whole numbers");
    }
    int i = 0;
    for (const cJSON* e = item->child; e != nullptr; e = e->next, ++i) {
      if (!WholeNumber(e, where + "[" + std::to_string(i) + "]", lo, hi, &out[i])) return false;
    }
    return true;
  }

  bool Field(const cJSON* item, const FieldSpec& f, unsigned char* base, const std::string& where);

  bool Record(const cJSON* object, const FieldSpec* fields, size_t count, unsigned char* base,
              const std::string& where) {
    if (!cJSON_IsObject(object)) return Fail(where, "must be an object");
    for (const cJSON* item = object->child; item != nullptr; item = item->next) {
      const FieldSpec* fieldDef = nullptr;
      for (size_t i = 0; i < count; ++i) {
        if (strcmp(fields[i].name, item->string) == 0) fieldDef = &fields[i];
      }
      if (fieldDef == nullptr) return Fail(where, std::string("has no field \"") + item->string + "\"");
      if (!Field(item, *fieldDef, base + fieldDef->offset, where + "." + fieldDef->name)) return false;
    }
    return true;
  }
};

bool Reader::Field(const cJSON* item, const FieldSpec& f, unsigned char* at, const std::string& where) {
  long long values[ZEB_SPECTRUM_BINS];
  int e = 0;
  switch (f.kind) {
    case FieldKind::kUnsigned:
      if (!WholeNumber(item, where, 0, UINT_MAX, values)) return false;
      *reinterpret_cast<unsigned*>(at) = (unsigned)values[0];
      return true;
    case FieldKind::kInt:
      if (!WholeNumber(item, where, INT_MIN, INT_MAX, values)) return false;
      *reinterpret_cast<int*>(at) = (int)values[0];
      return true;
    case FieldKind::kIntArray:
      if (!Array(item, where, f.count, INT_MIN, INT_MAX, values)) return false;
      for (int i = 0; i < f.count; ++i) reinterpret_cast<int*>(at)[i] = (int)values[i];
      return true;
    case FieldKind::kShortArray:
      if (!Array(item, where, f.count, SHRT_MIN, SHRT_MAX, values)) return false;
      for (int i = 0; i < f.count; ++i) reinterpret_cast<short*>(at)[i] = (short)values[i];
      return true;
    case FieldKind::kConvergeSpeed:
      if (!EnumValue(item, where, kConvergeSpeedNames, 3, &e)) return false;
      *reinterpret_cast<NR_CONVERGE_SPEED*>(at) = (NR_CONVERGE_SPEED)e;
      return true;
    case FieldKind::kHpfCutoff:
      if (!EnumValue(item, where, kHpfCutoffNames, 5, &e)) return false;
      *reinterpret_cast<ZEB_HPF_FREQ*>(at) = (ZEB_HPF_FREQ)e;
      return true;
    case FieldKind::kGainInfo:
      return Record(item, kGainInfoFields, CountOf(kGainInfoFields), at, where);
  }
  return false;
}

// Line and column of a position in the text, both counted from 1.
std::string PositionOf(const std::string& text, size_t offset) {
  int line = 1, column = 1;
  for (size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// Parses JSON text, or explains where it breaks.
cJSON* ParseJson(const std::string& path, const std::string& text, std::string* error) {
  const char* end = nullptr;
  cJSON* root = cJSON_ParseWithOpts(text.c_str(), &end, 1);
  if (root == nullptr) {
    const char* at = cJSON_GetErrorPtr();
    size_t offset = at != nullptr && at >= text.c_str() ? (size_t)(at - text.c_str()) : text.size();
    *error = "'" + path + "': not valid JSON (error near " + PositionOf(text, offset) + ")";
  }
  return root;
}

// ---- fields to JSON -------------------------------------------------------

cJSON* RecordToJson(const FieldSpec* fields, size_t count, const unsigned char* base);

cJSON* FieldToJson(const FieldSpec& f, const unsigned char* at) {
  switch (f.kind) {
    case FieldKind::kUnsigned:
      return cJSON_CreateNumber(*reinterpret_cast<const unsigned*>(at));
    case FieldKind::kInt:
      return cJSON_CreateNumber(*reinterpret_cast<const int*>(at));
    case FieldKind::kIntArray:
      return cJSON_CreateIntArray(reinterpret_cast<const int*>(at), f.count);
    case FieldKind::kShortArray: {
      int values[ZEB_SPECTRUM_BINS];
      for (int i = 0; i < f.count; ++i) values[i] = reinterpret_cast<const short*>(at)[i];
      return cJSON_CreateIntArray(values, f.count);
    }
    case FieldKind::kConvergeSpeed:
      return cJSON_CreateNumber((int)*reinterpret_cast<const NR_CONVERGE_SPEED*>(at));
    case FieldKind::kHpfCutoff:
      return cJSON_CreateNumber((int)*reinterpret_cast<const ZEB_HPF_FREQ*>(at));
    case FieldKind::kGainInfo:
      return RecordToJson(kGainInfoFields, CountOf(kGainInfoFields), at);
  }
  return cJSON_CreateNull();
}

cJSON* RecordToJson(const FieldSpec* fields, size_t count, const unsigned char* base) {
  cJSON* object = cJSON_CreateObject();
  for (size_t i = 0; i < count; ++i) {
    cJSON_AddItemToObject(object, fields[i].name, FieldToJson(fields[i], base + fields[i].offset));
  }
  return object;
}

}  // namespace

ChainSettings DefaultChainSettings() {
  ChainSettings s;
  memset(&s, 0, sizeof(s));
  s.anr.anr_enable = 0;
  s.anr.user_mode = 1;
  for (int i = 0; i < 6; ++i) s.anr.anr_intensity_band[i] = kAnrBandEdgesBins[i];
  for (int i = 0; i < 7; ++i) s.anr.anr_intensity[i] = kAnrDefaultIntensity;
  s.anr.anr_smooth_level = kAnrDefaultSmoothLevel;
  s.anr.anr_converge_speed = NR_SPEED_HIGH;
  s.anr.anr_filter_mode = 0;

  s.eq.eq_enable = 0;
  s.eq.user_mode = 1;

  s.hpf.hpf_enable = 0;
  s.hpf.user_mode = 1;
  s.hpf.cutoff_frequency = AUDIO_HPF_FREQ_80;

  s.agc.agc_enable = 0;
  s.agc.user_mode = 1;
  s.agc.gain_info.gain_max = 20;
  s.agc.gain_info.gain_min = 0;
  s.agc.gain_info.gain_init = 0;
  s.agc.drop_gain_max = 12;
  s.agc.attack_time = 1;
  s.agc.release_time = 1;
  memcpy(s.agc.compression_ratio_input, kAgcCurveInputDb, sizeof(kAgcCurveInputDb));
  memcpy(s.agc.compression_ratio_output, kAgcCurveOutputDb, sizeof(kAgcCurveOutputDb));
  s.agc.drop_gain_threshold = -3;
  s.agc.noise_gate_db = -50;
  s.agc.noise_gate_attenuation_db = 0;
  s.agc.gain_step = 1;
  return s;
}

std::string ChainSettingsToJson(const ChainSettings& settings) {
  cJSON* root = cJSON_CreateObject();
  const unsigned char* base = reinterpret_cast<const unsigned char*>(&settings);
  for (const RecordSpec& r : kRecords) {
    cJSON_AddItemToObject(root, r.name, RecordToJson(r.fields, r.fieldCount, base + r.offset));
  }
  char* printed = cJSON_Print(root);
  std::string text = printed != nullptr ? std::string(printed) + "\n" : std::string();
  cJSON_free(printed);
  cJSON_Delete(root);
  return text;
}

bool ReadTextFile(const std::string& path, std::string* text, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot open '" + path + "': " + strerror(errno);
    return false;
  }
  std::ostringstream content;
  content << in.rdbuf();
  if (in.bad()) {
    *error = "cannot read '" + path + "'";
    return false;
  }
  *text = content.str();
  return true;
}

bool LoadChainSettingsFile(const std::string& path, ChainSettings* settings, std::string* error) {
  std::string text;
  if (!ReadTextFile(path, &text, error)) return false;
  cJSON* root = ParseJson(path, text, error);
  if (root == nullptr) return false;
  Reader reader{path, error};
  // Work on a copy so that a file that fails halfway changes nothing.
  ChainSettings updated = *settings;
  unsigned char* base = reinterpret_cast<unsigned char*>(&updated);
  bool ok = cJSON_IsObject(root) || reader.Fail("the top level", "must be an object");
  for (const cJSON* item = ok ? root->child : nullptr; item != nullptr && ok; item = item->next) {
    const RecordSpec* record = nullptr;
    for (const RecordSpec& r : kRecords) {
      if (strcmp(r.name, item->string) == 0) record = &r;
    }
    if (record == nullptr) {
      ok = reader.Fail("the top level", std::string("has an unknown record \"") + item->string +
                                            "\" (expected anr_config, eq_config, hpf_config, agc_config)");
    } else {
      ok = reader.Record(item, record->fields, record->fieldCount, base + record->offset, record->name);
    }
  }
  cJSON_Delete(root);
  if (ok) *settings = updated;
  return ok;
}

namespace {

bool LoadEqGainJson(const std::string& path, const std::string& text, short gainsDb[ZEB_SPECTRUM_BINS],
                    std::string* error) {
  cJSON* root = ParseJson(path, text, error);
  if (root == nullptr) return false;
  const cJSON* array = root;
  if (cJSON_IsObject(root)) array = cJSON_GetObjectItemCaseSensitive(root, "eq_gain_db");
  Reader reader{path, error};
  long long values[ZEB_SPECTRUM_BINS];
  bool ok = array != nullptr ? reader.Array(array, "eq_gain_db", ZEB_SPECTRUM_BINS, SHRT_MIN, SHRT_MAX, values)
                             : reader.Fail("the object", "has no \"eq_gain_db\" array");
  if (ok) {
    for (int i = 0; i < ZEB_SPECTRUM_BINS; ++i) gainsDb[i] = (short)values[i];
  }
  cJSON_Delete(root);
  return ok;
}

bool LoadEqGainLines(const std::string& path, const std::string& text, short gainsDb[ZEB_SPECTRUM_BINS],
                     std::string* error) {
  std::istringstream lines(text);
  std::string line;
  int lineNumber = 0, count = 0;
  while (std::getline(lines, line)) {
    ++lineNumber;
    size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    char* end = nullptr;
    long value = strtol(line.c_str() + first, &end, 10);
    while (*end == ' ' || *end == '\t' || *end == '\r') ++end;
    if (end == line.c_str() + first || *end != '\0' || value < SHRT_MIN || value > SHRT_MAX) {
      *error = "'" + path + "': line " + std::to_string(lineNumber) + " is not a whole number of dB";
      return false;
    }
    if (count == ZEB_SPECTRUM_BINS) {
      *error = "'" + path + "': more than " + std::to_string(ZEB_SPECTRUM_BINS) + " gains";
      return false;
    }
    gainsDb[count++] = (short)value;
  }
  if (count != ZEB_SPECTRUM_BINS) {
    *error = "'" + path + "': " + std::to_string(count) + " gains found, " + std::to_string(ZEB_SPECTRUM_BINS) +
             " needed (one per bin of the 256-point spectrum)";
    return false;
  }
  return true;
}

}  // namespace

bool LoadEqGainFile(const std::string& path, short gainsDb[ZEB_SPECTRUM_BINS], std::string* error) {
  std::string text;
  if (!ReadTextFile(path, &text, error)) return false;
  size_t first = text.find_first_not_of(" \t\r\n");
  bool looksJson = first != std::string::npos && (text[first] == '[' || text[first] == '{');
  return looksJson ? LoadEqGainJson(path, text, gainsDb, error) : LoadEqGainLines(path, text, gainsDb, error);
}

bool CheckTuningFile(const std::string& path, std::string* error) {
  std::string text;
  if (!ReadTextFile(path, &text, error)) return false;
  cJSON* root = ParseJson(path, text, error);
  if (root == nullptr) return false;
  bool ok = cJSON_IsObject(root);
  if (!ok) *error = "'" + path + "': a tuning file holds one JSON object of numbers";
  cJSON_Delete(root);
  return ok;
}

}  // namespace zebtool
