// Fields of the library's records: how each is called, checked, put and shown. A record is a table of them.
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
  kListText,   // one of several texts that share a line, separated by ";"
  kLowerText,  // read in lower case, however it was written
  kPassword,   // Base64 in the file, so it may hold anything; shown on request only
  kNumber,
  kDate,  // a number that is a date-time of the library's
  kFlag,
  kAnswer,  // a flag that is only shown
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
  std::int64_t step = 1;          // of a number: the file keeps its multiples
  char const* follows = nullptr;  // the field that decides on this one, which cannot be set then
  bool selects = false;           // when it changes, other fields come from elsewhere (RecordFamily::reselect)
  std::int64_t millis = 0;        // of a duration: one unit
  // Where it is written; null for a field that is in no file. A file of "upscfg" is that of the model.
  char const* file = nullptr;
  char const* section = nullptr;
  char const* key = nullptr;  // null: keyOf tells; kFirstKey: the first one of the section
  int part = -1;              // of a value of several, separated by ";"
  std::string (*keyOf)(void const* record) = nullptr;
  std::vector<std::string> words = {};  // what the file has for the numbers from 0 on, where those are words
};

constexpr char kFirstKey[] = "*";

// The field, with the place where it is written.
inline Field In(char const* file, char const* section, char const* key, Field field, int part = -1) {
  field.file = file;
  field.section = section;
  field.key = key;
  field.part = part;
  return field;
}

// The field, as a duration in units of so many milliseconds.
inline Field Duration(std::int64_t millis, Field field) {
  field.millis = millis;
  return field;
}

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
            value.copy(array, kWidth - 1, 0);  // clang 14 takes a default argument here for a capture
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

// Bits have no address: the table's author gives the two accessors.
inline Field Flag(char const* name, char const* meaning, std::string (*get)(void const*),
                  void (*put)(void*, std::string const&)) {
  return {name, FieldKind::kFlag, 0, 1, meaning, get, put};
}

// A bool, only shown: "yes" or "no".
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

// A std::string, only shown.
template <auto Member>
Field String(char const* name, char const* meaning = "") {
  return {name,    FieldKind::kText,
          0,       0,
          meaning, [](void const* record) { return static_cast<RecordOf<Member> const*>(record)->*Member; },
          nullptr};
}

// What a value of the field may be, in words.
std::string Limits(Field const& field);
// What is wrong with a value for the field, in words; "" when it would come back from the file as it is.
std::string FieldFault(Field const& field, std::string const& value);

// The value of an argument as the file will hold it. Throws WrongUsage with the field's name and limit.
std::string CheckedArgument(Field const& field, std::string const& argument, Terminal const& terminal);

// The same, put into its field.
void PutArgument(Field const& field, void* record, std::string const& argument, Terminal const& terminal);
// The number that `text` spells, in decimal. Throws WrongUsage that names the argument and its limits.
std::int64_t NumberArgument(std::string const& name, std::string const& text, std::int64_t lowest,
                            std::int64_t highest);

// What a shell may offer for FIELD, and for FIELD=VALUE that has been begun.
std::vector<std::string> FieldNames(std::vector<Field> const& fields);
std::vector<std::string> Assignments(std::vector<Field> const& fields, std::string const& begun);

// The field of that name; null when there is none.
Field const* FieldNamed(std::vector<Field> const& fields, std::string const& name);

// The values of all fields, by name.
using Values = std::map<std::string, std::string>;
Values ValuesOf(std::vector<Field> const& fields, void const* record);

// A value for people and for programs; passwords only where the terminal wants them.
std::string CellOf(Field const& field, std::string const& value, Terminal const& terminal);
Json JsonOf(Field const& field, std::string const& value, Terminal const& terminal);

// One record, a field a line; where each comes from, if that is given.
void PrintRecord(std::vector<Field> const& fields, void const* record, Terminal const& terminal,
                 std::vector<std::string> const& origins = {});

// Records of one kind, one a line.
void PrintRecords(std::vector<Field> const& fields, std::vector<void const*> const& records, Terminal const& terminal);
template <class Record>
void PrintRecords(std::vector<Field> const& fields, std::vector<Record> const& records, Terminal const& terminal) {
  std::vector<void const*> addresses;
  addresses.reserve(records.size());
  for (Record const& record : records) addresses.push_back(&record);
  PrintRecords(fields, addresses, terminal);
}

#endif
