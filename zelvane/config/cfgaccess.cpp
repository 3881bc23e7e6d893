// The typed readers and writers of CfgClass. For each type, one overload on (section, key) does the work. The others
// determine section and key and call it through the virtual table.
#include <stdexcept>

#include "zelvane/config/cfgclass.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"

// The other overloads of an operation. `params` are the parameters after the key, `args` their names. An operation with
// a text parameter defines its std::string overloads separately.
#define ZELVANE_CURRENT_FORM(result, name, params, args)          \
  result CfgClass::name(char const* key, ZELVANE_UNPACK params) { \
    return name(GetSection().c_str(), key, ZELVANE_UNPACK args);  \
  }
#define ZELVANE_POINTER_FORMS(result, name, params, args)                                  \
  ZELVANE_CURRENT_FORM(result, name, params, args)                                         \
  result CfgClass::name(char const* section, unsigned long index, ZELVANE_UNPACK params) { \
    return name(section, GetKeyName(section, index).c_str(), ZELVANE_UNPACK args);         \
  }                                                                                        \
  result CfgClass::name(unsigned long index, ZELVANE_UNPACK params) {                      \
    return name(GetKeyName(index).c_str(), ZELVANE_UNPACK args);                           \
  }
#define ZELVANE_STRING_FORMS(result, name, params, args)                                             \
  result CfgClass::name(std::string const& section, std::string const& key, ZELVANE_UNPACK params) { \
    return name(section.c_str(), key.c_str(), ZELVANE_UNPACK args);                                  \
  }                                                                                                  \
  result CfgClass::name(std::string const& key, ZELVANE_UNPACK params) {                             \
    return name(key.c_str(), ZELVANE_UNPACK args);                                                   \
  }                                                                                                  \
  result CfgClass::name(std::string const& section, unsigned long index, ZELVANE_UNPACK params) {    \
    return name(section.c_str(), index, ZELVANE_UNPACK args);                                        \
  }
#define ZELVANE_STRING_INDEX_FORM(result, name, params, args) \
  result CfgClass::name(unsigned long index, ZELVANE_UNPACK params) { return name(index, ZELVANE_UNPACK args); }
#define ZELVANE_UNPACK(...) __VA_ARGS__
#define ZELVANE_FORMS(result, name, params, args)   \
  ZELVANE_POINTER_FORMS(result, name, params, args) \
  ZELVANE_STRING_FORMS(result, name, params, args)

// ---- Readers: ReadStr is in cfgclass.cpp; the others convert its text, which is empty for a missing key. ----

ZELVANE_CURRENT_FORM(std::string, ReadStr, (char const* def), (def))
ZELVANE_STRING_FORMS(std::string, ReadStr, (std::string const& def), (def.c_str()))
ZELVANE_STRING_INDEX_FORM(std::string, ReadStr, (std::string const& def), (def.c_str()))

long CfgClass::ReadInt(char const* section, char const* key, long def) {
  return StrToIntDef(ReadStr(section, key, ""), def);
}
ZELVANE_FORMS(long, ReadInt, (long def), (def))

bool CfgClass::ReadBool(char const* section, char const* key, bool def) {
  return StrToIntDef(ReadStr(section, key, ""), def ? 1 : 0) != 0;
}
ZELVANE_FORMS(bool, ReadBool, (bool def), (def))

long CfgClass::ReadDateTime(char const* section, char const* key, char const* format, long def) {
  std::string const text = ReadStr(section, key, "");
  try {
    return StrToDateTime(text.c_str(), format, def);
  } catch (std::out_of_range const&) {  // the text is shorter than its format
    return def;
  }
}
ZELVANE_POINTER_FORMS(long, ReadDateTime, (char const* format, long def), (format, def))
ZELVANE_STRING_FORMS(long, ReadDateTime, (std::string const& format, long def), (format.c_str(), def))
ZELVANE_STRING_INDEX_FORM(long, ReadDateTime, (std::string const& format, long def), (format.c_str(), def))

double CfgClass::ReadFloat(char const* section, char const* key, double def) {
  return StrToFloatDef(ReadStr(section, key, ""), def);
}
ZELVANE_FORMS(double, ReadFloat, (double def), (def))

// ---- Writers: WriteStr is in cfgclass.cpp; the others pass their text to it. ----

ZELVANE_POINTER_FORMS(bool, WriteStr, (char const* value), (value))
ZELVANE_STRING_FORMS(bool, WriteStr, (std::string const& value), (value.c_str()))
ZELVANE_STRING_INDEX_FORM(bool, WriteStr, (std::string const& value), (value.c_str()))

bool CfgClass::WriteInt(char const* section, char const* key, long value) {
  return WriteStr(section, key, IntToStr(value, 0, '0').c_str());
}
ZELVANE_FORMS(bool, WriteInt, (long value), (value))

bool CfgClass::WriteUInt(char const* section, char const* key, unsigned long value) {
  return WriteStr(section, key, UIntToStr(value, 0, '0').c_str());
}
ZELVANE_FORMS(bool, WriteUInt, (unsigned long value), (value))

bool CfgClass::WriteBool(char const* section, char const* key, bool value) {
  return WriteStr(section, key, value ? "1" : "0");
}
ZELVANE_FORMS(bool, WriteBool, (bool value), (value))

bool CfgClass::WriteDateTime(char const* section, char const* key, char const* format, long time) {
  return WriteStr(section, key, DateTimeToStr(format, time).c_str());
}
ZELVANE_POINTER_FORMS(bool, WriteDateTime, (char const* format, long time), (format, time))
ZELVANE_STRING_FORMS(bool, WriteDateTime, (std::string const& format, long time), (format.c_str(), time))
ZELVANE_STRING_INDEX_FORM(bool, WriteDateTime, (std::string const& format, long time), (format.c_str(), time))

bool CfgClass::WriteFloat(char const* section, char const* key, double value, unsigned int width, unsigned int digits) {
  return WriteStr(section, key, FloatToStr(value, static_cast<int>(width), digits, ' ').c_str());
}
ZELVANE_FORMS(bool, WriteFloat, (double value, unsigned int width, unsigned int digits), (value, width, digits))
