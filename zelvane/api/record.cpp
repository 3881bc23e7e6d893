#include "zelvane/api/record_internal.h"

#include <cstring>
#include <string>

#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal::table {

namespace {

// Fields are accessed as bytes: a caller's `bool` can hold a value that C++ must not read as one.

void StoreNumber(Row const& row, std::uint32_t value, unsigned char* field) {
  switch (row.kind) {
    case Kind::kFlag: *field = value != 0; break;
    case Kind::kBit: {
      unsigned const mask = 1U << row.bit;
      *field = static_cast<unsigned char>((value & 1U) != 0 ? *field | mask : *field & ~mask);
      break;
    }
    default:
      if (row.place.width == sizeof(std::uint16_t)) {
        auto const narrow = static_cast<std::uint16_t>(value);
        std::memcpy(field, &narrow, sizeof narrow);
      } else {
        value *= row.scale;
        std::memcpy(field, &value, sizeof value);
      }
  }
}

void StoreText(Row const& row, std::string_view text, unsigned char* field) {
  CopyToField(reinterpret_cast<char*>(field), row.place.width, text);
}

void ReadRow(CfgClass& file, Row const& row, unsigned char* field) {
  if (row.kind == Kind::kText)
    StoreText(row, file.ReadStr(row.section, row.key, row.text), field);
  else
    StoreNumber(row, static_cast<std::uint32_t>(file.ReadInt(row.section, row.key, row.number)), field);
}

bool WriteRow(CfgClass& file, Row const& row, unsigned char const* field) {
  std::uint32_t number = 0;
  switch (row.kind) {
    case Kind::kText: {
      std::string const text(FieldText(reinterpret_cast<char const*>(field), row.place.width));
      return file.WriteStr(row.section, row.key, text.c_str());
    }
    case Kind::kSigned:
      std::memcpy(&number, field, sizeof number);
      return file.WriteInt(row.section, row.key, static_cast<std::int32_t>(number));
    case Kind::kUnsigned:
      std::memcpy(&number, field, sizeof number);
      return file.WriteUInt(row.section, row.key, number / row.scale);
    case Kind::kFlag: return file.WriteBool(row.section, row.key, *field != 0);
    case Kind::kBit: return file.WriteInt(row.section, row.key, *field >> row.bit & 1);
  }
  return false;
}

}  // namespace

void SetDefaults(Rows rows, void* record) {
  for (Row const& row : rows) {
    unsigned char* const field = static_cast<unsigned char*>(record) + row.place.offset;
    if (row.kind == Kind::kText) {
      std::memset(field, 0, row.place.width);
      StoreText(row, row.text, field);
    } else {
      StoreNumber(row, static_cast<std::uint32_t>(row.number), field);
    }
  }
}

bool ReadRows(CfgClass& file, Rows rows, void* record) {
  for (Row const& row : rows) {
    if (row.section == nullptr) continue;
    if (row.step != nullptr && row.step->read != nullptr) {
      if (!row.step->read(file, row, record)) return false;
    } else {
      ReadRow(file, row, static_cast<unsigned char*>(record) + row.place.offset);
    }
  }
  return true;
}

bool WriteRows(CfgClass& file, Rows rows, void const* record) {
  for (Row const& row : rows) {
    if (row.section == nullptr) continue;
    bool const written = row.step != nullptr && row.step->write != nullptr
                             ? row.step->write(file, row, record)
                             : WriteRow(file, row, static_cast<unsigned char const*>(record) + row.place.offset);
    if (!written) return false;
  }
  return true;
}

}  // namespace zelvane::internal::table
