// Records of settings as tables of fields: one table a record, from which `show`, `set` and `defaults` are made.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORD_H
#define ZELVANE_TOOLS_ZELCTL_RECORD_H

#include <string.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "terminal.h"

enum class FieldKind {
  kText,
  kListText,  // one of several texts that share a line, parted by ";"
  kPassword,  // Base64 in the file, so it may hold anything; shown on request only
  kNumber,
  kFlag,
};

struct Field {
  char const* name;
  FieldKind kind;
  std::int64_t lowest;   // of a number
  std::int64_t highest;  // of a number; of a text the most bytes
  char const* meaning;   // unit and meaning, for people
  // The value as text: numbers in decimal, flags as "on" and "off". `put` takes what FieldFault() found no fault with.
  std::string (*get)(void const* record);
  void (*put)(void* record, std::string const& value);
};

// The highest number that reads back: files are read as signed 32-bit numbers, whatever the field's type.
constexpr std::int64_t kHighestNumber = 2147483647;
constexpr std::int64_t kHighestPort = 65535;

template <class Record, class Value>
Record RecordOfMember(Value Record::*);
template <auto Member>
using RecordOf = decltype(RecordOfMember(Member));

// A char array.
template <auto Member>
Field Text(char const* name, char const* meaning, FieldKind kind = FieldKind::kText) {
  using Record = RecordOf<Member>;
  constexpr std::size_t kWidth = sizeof(static_cast<Record*>(nullptr)->*Member);
  return {name,
          kind,
          0,
          kWidth - 1,
          meaning,
          [](void const* record) {
            char const* const array = static_cast<Record const*>(record)->*Member;
            return std::string(array, strnlen(array, kWidth));
          },
          [](void* record, std::string const& value) {
            char* const array = static_cast<Record*>(record)->*Member;
            memset(array, 0, kWidth);
            value.copy(array, kWidth - 1);
          }};
}

template <auto Member>
Field Number(char const* name, char const* meaning, std::int64_t highest = kHighestNumber, std::int64_t lowest = 0) {
  using Record = RecordOf<Member>;
  return {name,
          FieldKind::kNumber,
          lowest,
          highest,
          meaning,
          [](void const* record) { return std::to_string(static_cast<Record const*>(record)->*Member); },
          [](void* record, std::string const& value) {
            auto& member = static_cast<Record*>(record)->*Member;
            member = static_cast<std::remove_reference_t<decltype(member)>>(std::stoll(value));
          }};
}

// Bits have no address: the table's author gives the two accessors.
inline Field Flag(char const* name, char const* meaning, std::string (*get)(void const*),
                  void (*put)(void*, std::string const&)) {
  return {name, FieldKind::kFlag, 0, 1, meaning, get, put};
}

struct RecordFamily {
  std::vector<Field> fields;
  std::shared_ptr<void> (*make)();                                  // a record of zeros
  std::vector<std::string> (*files)(std::string const& directory);  // where the record lies, the main file first
  int (*read)(char const* directory, void* record);
  int (*defaults)(void* record);
  int (*write)(char const* directory, void const* record);
  char const* readFault;  // what it means when `read` fails
  char const* notes;      // lines for the help of `show` and `set`
};

// Adds `show`, `set` and `defaults`.
void AddRecordCommands(CLI::App* family, Terminal& terminal, RecordFamily const& record);

#endif
