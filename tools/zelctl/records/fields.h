// Fields of the library's records: name, limits, and how to read, set and print them. A record is a table of fields.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_FIELDS_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_FIELDS_H

#include <string.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "terminal/terminal.h"

enum class FieldKind {
  kText,
  kListText,   // one of several texts in a line, separated by ";"
  kLowerText,  // read as lower case
  kPassword,   // Base64 in the file, so any byte is allowed; shown on request only
  kNumber,
  kDate,  // a number that is a date-time of the library
  kFlag,
  kAnswer,  // a read-only flag
  kPath,    // a read-only name of a file or directory
};

struct Field {
  char const* name;
  FieldKind kind;
  std::int64_t lowest;   // of a number
  std::int64_t highest;  // of a number; for a text the maximum length in bytes
  char const* meaning;   // unit and meaning, for people
  // The value as text: numbers in decimal, flags as "on" and "off". `put` requires a value that FieldFault() accepts.
  std::string (*get)(void const* record);
  void (*put)(void* record, std::string const& value);
  std::int64_t step = 1;          // of a number: the file stores multiples of it
  char const* follows = nullptr;  // the field that determines this one, which cannot be set then
  bool selects = false;           // a change reloads other fields (RecordFamily::reselect)
  std::int64_t millis = 0;        // of a duration: milliseconds in one unit
  // Where the field is stored; null if in no file. A file of "upscfg" is that of the model.
  char const* file = nullptr;
  char const* section = nullptr;
  char const* key = nullptr;  // null: see keyOf; kFirstKey: the first key of the section
  int part = -1;              // index in a value with several parts separated by ";"
  std::string (*keyOf)(void const* record) = nullptr;
  std::vector<std::string> words = {};  // the words in the file for the numbers 0, 1, ..., if it stores words
};

constexpr char kFirstKey[] = "*";

// The field with its place in a file.
inline Field In(char const* file, char const* section, char const* key, Field field, int part = -1) {
  field.file = file;
  field.section = section;
  field.key = key;
  field.part = part;
  return field;
}

// The field as a duration; one unit is `millis` milliseconds.
inline Field Duration(std::int64_t millis, Field field) {
  field.millis = millis;
  return field;
}

// The highest number that reads back: files store signed 32-bit numbers, whatever the field's type.
constexpr std::int64_t kHighestNumber = 2147483647;
constexpr std::int64_t kHighestPort = 65535;

template <class Record, class Value>
Record RecordOfMember(Value Record::*);
template <auto Member>
using RecordOf = decltype(RecordOfMember(Member));

// A char array.
template <auto Member>
Field Text(char const* name, char const* meaning, FieldKind kind = FieldKind::kText) {
  using Whole = RecordOf<Member>;
  constexpr std::size_t kWidth = sizeof(static_cast<Whole*>(nullptr)->*Member);
  return {name,
          kind,
          0,
          kWidth - 1,
          meaning,
          [](void const* record) {
            char const* const array = static_cast<Whole const*>(record)->*Member;
            return std::string(array, strnlen(array, kWidth));
          },
          [](void* record, std::string const& value) {
            char* const array = static_cast<Whole*>(record)->*Member;
            memset(array, 0, kWidth);
            value.copy(array, kWidth - 1, 0);  // clang 14 treats a default argument here as a capture
          }};
}

template <auto Member>
Field Number(char const* name, char const* meaning, std::int64_t highest = kHighestNumber, std::int64_t lowest = 0) {
  using Whole = RecordOf<Member>;
  return {name,
          FieldKind::kNumber,
          lowest,
          highest,
          meaning,
          [](void const* record) { return std::to_string(static_cast<Whole const*>(record)->*Member); },
          [](void* record, std::string const& value) {
            auto& member = static_cast<Whole*>(record)->*Member;
            member = static_cast<std::remove_reference_t<decltype(member)>>(std::stoll(value));
          }};
}

template <auto Member>
Field Flag(char const* name, char const* meaning) {
  using Whole = RecordOf<Member>;
  return {name,
          FieldKind::kFlag,
          0,
          1,
          meaning,
          [](void const* record) { return std::string(static_cast<Whole const*>(record)->*Member ? "on" : "off"); },
          [](void* record, std::string const& value) { static_cast<Whole*>(record)->*Member = value == "on"; }};
}

// Bit-fields have no address, so the table passes two accessors.
inline Field Flag(char const* name, char const* meaning, std::string (*get)(void const*),
                  void (*put)(void*, std::string const&)) {
  return {name, FieldKind::kFlag, 0, 1, meaning, get, put};
}

// A read-only bool: "yes" or "no".
template <auto Member>
Field Answer(char const* name, char const* meaning) {
  return {name,
          FieldKind::kAnswer,
          0,
          0,
          meaning,
          [](void const* record) {
            return std::string(static_cast<RecordOf<Member> const*>(record)->*Member ? "yes" : "no");
          },
          nullptr};
}

// A read-only std::string.
template <auto Member>
Field String(char const* name, char const* meaning = "") {
  return {name,    FieldKind::kText,
          0,       0,
          meaning, [](void const* record) { return static_cast<RecordOf<Member> const*>(record)->*Member; },
          nullptr};
}

// A read-only path in a std::string.
template <auto Member>
Field Path(char const* name, char const* meaning = "") {
  Field field = String<Member>(name, meaning);
  field.kind = FieldKind::kPath;
  return field;
}

// The allowed values of the field, in words.
std::string Limits(Field const& field);
// For help: a line for each field with its name, limits and meaning, after two blanks.
std::string FieldTable(std::vector<Field> const& fields);
// Why a value is invalid for the field, in words; "" if it would read back unchanged.
std::string FieldFault(Field const& field, std::string const& value);

// The value of an argument in the encoding of the files. Throws WrongUsage with the field's name and limits.
std::string CheckedArgument(Field const& field, std::string const& argument, Terminal const& terminal);

// The same, stored in the field.
void PutArgument(Field const& field, void* record, std::string const& argument, Terminal const& terminal);
// The decimal number in `text`. Throws WrongUsage with the argument's name and limits.
std::int64_t NumberArgument(std::string const& name, std::string const& text, std::int64_t lowest,
                            std::int64_t highest);

// Shell completion for FIELD, and for a partial FIELD=VALUE.
std::vector<std::string> FieldNames(std::vector<Field> const& fields);
std::vector<std::string> Assignments(std::vector<Field> const& fields, std::string const& begun);

// The field with that name; null if there is none.
Field const* FieldNamed(std::vector<Field> const& fields, std::string const& name);

// The values of all fields, by name.
using Values = std::map<std::string, std::string>;
Values ValuesOf(std::vector<Field> const& fields, void const* record);

// A value for people and for programs; passwords only if the terminal shows them.
std::string CellOf(Field const& field, std::string const& value, Terminal const& terminal);
Json JsonOf(Field const& field, std::string const& value, Terminal const& terminal);

// Prints one record, one field a line, with the origin of each if given.
void PrintRecord(std::vector<Field> const& fields, void const* record, Terminal const& terminal,
                 std::vector<std::string> const& origins = {});

// Prints records of one kind, one record a line.
void PrintRecords(std::vector<Field> const& fields, std::vector<void const*> const& records, Terminal const& terminal);
template <class Record>
void PrintRecords(std::vector<Field> const& fields, std::vector<Record> const& records, Terminal const& terminal) {
  std::vector<void const*> addresses;
  addresses.reserve(records.size());
  for (Record const& record : records) addresses.push_back(&record);
  PrintRecords(fields, addresses, terminal);
}

#endif
