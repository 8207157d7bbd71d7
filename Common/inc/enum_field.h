// Enumeration fields of the public records, read and written as the int they
// hold. A C caller may leave any int in such a field; read through the
// enumeration type in C++, a value outside the enumerators' range is
// undefined, so the stage that owns the value receives the plain int and
// judges it with its own message.
#ifndef ZEB_COMMON_ENUM_FIELD_H
#define ZEB_COMMON_ENUM_FIELD_H

#ifdef __cplusplus
#include <string.h>

template <typename E>
inline int EnumFieldValue(const E& field) {
  static_assert(sizeof(E) == sizeof(int), "public enumerations are int-sized");
  int value;
  memcpy(&value, &field, sizeof(value));
  return value;
}

template <typename E>
inline void SetEnumFieldValue(E* field, int value) {
  static_assert(sizeof(E) == sizeof(int), "public enumerations are int-sized");
  memcpy(field, &value, sizeof(value));
}
#endif

#endif
