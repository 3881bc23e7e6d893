// The settings records as tables. The rows of a record say in one place what GetDef fills in, Get reads and Set writes.
// Their order is the order of the lines in a new file. A named row hook handles what a row cannot express.
#ifndef ZELVANE_API_RECORD_INTERNAL_H
#define ZELVANE_API_RECORD_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zelvane/api/settingsfile_internal.h"
#include "zelvane/config/cfgclass.h"

// The position of a field in its record.
#define ZELVANE_FIELD(Record, field) \
  ::zelvane::internal::table::Place { offsetof(Record, field), sizeof(Record::field) }

namespace zelvane::internal::table {

struct Place {
  std::size_t offset;
  std::size_t width;
};

enum class Kind : unsigned char {
  kText,      // char array
  kSigned,    // int32_t; int16_t only without a line
  kUnsigned,  // 32 bits, written unsigned even if the field is signed; times `scale` in the record
  kFlag,      // one byte: 0 is false, any other value true, because C callers can store one
  kBit,       // bit number `bit` of the byte; of the number in the file only the lowest bit counts
};

struct Row;

// Replaces the reading or writing of one row (null: as its kind does it). On false the walk ends.
struct Step {
  bool (*read)(CfgClass& file, Row const& row, void* record);
  bool (*write)(CfgClass& file, Row const& row, void const* record);
};

struct Row {
  char const* section;  // null: a field without a line of its own; only its default is known here
  char const* key;
  Place place;
  Step const* step;
  char const* text;     // default of a text
  std::int32_t number;  // default of the other kinds, in the unit of the file
  std::uint32_t scale;
  Kind kind;
  unsigned char bit;
};

// ---- Rows, by kind. Without section and key for fields without a line. ----

constexpr Row Text(char const* section, char const* key, Place place, char const* def, Step const* step = nullptr) {
  return {section, key, place, step, def, 0, 1, Kind::kText, 0};
}
constexpr Row Text(Place place, char const* def) { return Text(nullptr, nullptr, place, def); }

constexpr Row Signed(char const* section, char const* key, Place place, std::int32_t def) {
  return {section, key, place, nullptr, "", def, 1, Kind::kSigned, 0};
}
constexpr Row Signed(Place place, std::int32_t def) { return Signed(nullptr, nullptr, place, def); }

constexpr Row Unsigned(char const* section, char const* key, Place place, std::int32_t def, std::uint32_t scale = 1) {
  return {section, key, place, nullptr, "", def, scale, Kind::kUnsigned, 0};
}
constexpr Row Unsigned(Place place, std::int32_t def) { return Unsigned(nullptr, nullptr, place, def); }

// Seconds in the file, milliseconds in the record.
constexpr Row Seconds(char const* section, char const* key, Place place, std::int32_t def) {
  return Unsigned(section, key, place, def, 1000);
}

constexpr Row Flag(char const* section, char const* key, Place place, bool def) {
  return {section, key, place, nullptr, "", def, 1, Kind::kFlag, 0};
}

constexpr Row Bit(char const* section, char const* key, Place place, unsigned char bit, bool def) {
  return {section, key, place, nullptr, "", def, 1, Kind::kBit, bit};
}

// A complete table.
struct Rows {
  template <std::size_t N>
  constexpr Rows(Row const (&rows)[N]) : first(rows), last(rows + N) {}  // NOLINT(google-explicit-constructor)
  constexpr Row const* begin() const { return first; }
  constexpr Row const* end() const { return last; }

  Row const* first;
  Row const* last;
};

// ---- Compile-time checks of a table. ----

constexpr bool RowFits(Row const& row, std::size_t size) {
  std::size_t const width = row.place.width;
  if (row.place.offset > size || width > size - row.place.offset) return false;
  switch (row.kind) {
    case Kind::kText: return std::string_view(row.text).size() < width;
    case Kind::kSigned:
      return width == sizeof(std::int32_t) || (width == sizeof(std::int16_t) && row.section == nullptr);
    case Kind::kUnsigned: return width == sizeof(std::uint32_t) && row.scale > 0;
    case Kind::kFlag: return width == 1;
    case Kind::kBit: return width == 1 && row.bit < 8;
  }
  return false;
}

constexpr bool RowsApart(Row const& a, Row const& b) {
  if (a.place.offset + a.place.width <= b.place.offset || b.place.offset + b.place.width <= a.place.offset) return true;
  return a.kind == Kind::kBit && b.kind == Kind::kBit && a.bit != b.bit;
}

// Every row, of one table or of two that share the record, is inside the record and overlaps no other.
constexpr bool RowsFit(std::size_t size, Rows rows) {
  for (Row const& row : rows) {
    if (!RowFits(row, size)) return false;
    for (Row const* other = &row + 1; other != rows.last; ++other)
      if (!RowsApart(row, *other)) return false;
  }
  return true;
}
constexpr bool RowsFit(std::size_t size, Rows rows, Rows more) {
  for (Row const& row : rows)
    for (Row const& other : more)
      if (!RowsApart(row, other)) return false;
  return RowsFit(size, rows) && RowsFit(size, more);
}

// ---- The three walks. `record` is the one that the positions refer to. ----

// Sets every field to its default and fills the rest of each text with zeros.
void SetDefaults(Rows rows, void* record);

// Reads all rows that have a line. A missing key, text that does not convert, or a file that is not open sets the
// default; texts are cut to their fields. Returns false if a hook fails: the rows before it are then filled.
bool ReadRows(CfgClass& file, Rows rows, void* record);

// Writes all rows that have a line. Returns false at the first that cannot be written.
bool WriteRows(CfgClass& file, Rows rows, void const* record);

// ReadRows from a file of its own. A missing or unreadable file gives the defaults; throws as OpenOrThrow does.
template <class File>
bool ReadRowsFrom(std::string const& path, Rows rows, void* record) {
  OptionalFile<File> file;
  file.OpenOrThrow(path, true);
  return ReadRows(file, rows, record);
}

// WriteRows to a file of its own.
template <class File>
bool WriteRowsTo(std::string const& path, Saving saving, Rows rows, void const* record) {
  return ChangeFile<File>(path, saving, [&](CfgClass& file) { return WriteRows(file, rows, record); });
}

}  // namespace zelvane::internal::table

#endif
