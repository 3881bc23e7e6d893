#include "records/fields.h"

#include <string.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "files/format.h"
#include "terminal/latin1.h"
#include "terminal/moment.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"

namespace {

std::string TextFault(Field const& field, std::string const& value) {
  auto const most = static_cast<std::size_t>(field.highest);
  if (value.size() > most)
    return "too long: " + std::to_string(value.size()) + " characters, at most " + std::to_string(most) + " allowed";
  if (field.kind == FieldKind::kPassword) return value.find('\0') == std::string::npos ? "" : "contains a NUL byte";
  if (field.kind == FieldKind::kListText && value.find(';') != std::string::npos)
    return "contains ';', which separates fields in the file";
  if (field.kind == FieldKind::kLowerText && LowerCase(value) != value)
    return "contains capitals; the file is read in lower case";
  return ValueFault(value);
}

std::string NumberFault(std::string const& value, std::int64_t lowest, std::int64_t highest, std::int64_t step = 1) {
  std::int64_t number = 0;
  auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  bool const isNumber = error == std::errc() && end == value.data() + value.size();
  if (isNumber && number >= lowest && number <= highest && number % step == 0) return "";
  return "expected a number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
         (step == 1 ? "" : " in steps of " + std::to_string(step));
}

bool IsNumber(Field const& field) { return field.kind == FieldKind::kNumber || field.kind == FieldKind::kDate; }

// "1 h 30 min"; "" under one second, and under a minute for a field in seconds.
std::string DurationText(std::int64_t number, std::int64_t millis) {
  if (millis == 0 || number < 1000 / millis || (millis == 1000 && number < 60)) return "";
  std::int64_t seconds = number * millis / 1000;
  std::string text;
  std::pair<std::int64_t, char const*> const units[] = {{kDaySeconds, "d"}, {kHourSeconds, "h"}, {60, "min"}, {1, "s"}};
  for (auto const& [length, name] : units) {
    if (seconds >= length) text += (text.empty() ? "" : " ") + std::to_string(seconds / length) + " " + name;
    seconds %= length;
  }
  return text;
}

bool IsHidden(Field const& field, std::string const& value, Terminal const& terminal) {
  return field.kind == FieldKind::kPassword && !value.empty() && !terminal.showPasswords;
}

Cell TableCell(Field const& field, std::string const& value, Terminal const& terminal) {
  return field.kind == FieldKind::kPath ? Cell(FileName{value}) : Cell(CellOf(field, value, terminal));
}

}  // namespace

std::string Limits(Field const& field) {
  if (field.follows != nullptr) return std::string("depends on ") + field.follows;
  if (field.kind == FieldKind::kFlag) return "on or off";
  if (IsNumber(field)) return std::to_string(field.lowest) + " to " + std::to_string(field.highest);
  std::string const characters = "up to " + std::to_string(field.highest) + " characters";
  if (field.kind == FieldKind::kListText) return characters + ", no ';'";
  return field.kind == FieldKind::kLowerText ? characters + ", lower case" : characters;
}

std::string FieldTable(std::vector<Field> const& fields) {
  std::size_t names = 0;
  std::size_t limits = 0;
  for (Field const& field : fields) {
    names = std::max(names, strlen(field.name) + 2);
    limits = std::max(limits, Limits(field).size() + 2);
  }
  std::string table;
  for (Field const& field : fields)
    table += "  " + FillRight(std::string(field.name), static_cast<int>(names), ' ') +
             FillRight(Limits(field), static_cast<int>(limits), ' ') + field.meaning + "\n";
  return table;
}

std::string FieldFault(Field const& field, std::string const& value) {
  if (IsNumber(field)) return NumberFault(value, field.lowest, field.highest, field.step);
  if (field.kind == FieldKind::kFlag) return value == "on" || value == "off" ? "" : "expected \"on\" or \"off\"";
  return TextFault(field, value);
}

std::string CheckedArgument(Field const& field, std::string const& argument, Terminal const& terminal) {
  if (field.follows != nullptr) throw WrongUsage(std::string(field.name) + ": read-only; depends on " + field.follows);
  std::string value = terminal.FromArgument(field.name, argument);
  if (field.kind == FieldKind::kFlag && (value == "1" || value == "0")) value = value == "1" ? "on" : "off";
  std::string const fault = FieldFault(field, value);
  if (!fault.empty()) throw WrongUsage(std::string(field.name) + ": " + fault);
  return value;
}

void PutArgument(Field const& field, void* record, std::string const& argument, Terminal const& terminal) {
  field.put(record, CheckedArgument(field, argument, terminal));
}

std::int64_t NumberArgument(std::string const& name, std::string const& text, std::int64_t lowest,
                            std::int64_t highest) {
  std::string const fault = NumberFault(text, lowest, highest);
  if (!fault.empty()) throw WrongUsage(name + ": " + fault);
  return std::stoll(text);
}

Field const* FieldNamed(std::vector<Field> const& fields, std::string const& name) {
  auto const found = std::find_if(fields.begin(), fields.end(), [&](Field const& field) { return name == field.name; });
  return found == fields.end() ? nullptr : &*found;
}

std::vector<std::string> FieldNames(std::vector<Field> const& fields) {
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (Field const& field : fields) names.emplace_back(field.name);
  return names;
}

std::vector<std::string> Assignments(std::vector<Field> const& fields, std::string const& begun) {
  std::vector<std::string> offered;
  std::string const name = begun.substr(0, begun.find('='));
  Field const* const field = name == begun ? nullptr : FieldNamed(fields, name);
  if (field != nullptr && field->kind == FieldKind::kFlag) return {name + "=on", name + "=off"};
  if (name != begun) return {};
  for (Field const& each : fields)
    if (each.follows == nullptr) offered.push_back(std::string(each.name) + "=");
  return offered;
}

Values ValuesOf(std::vector<Field> const& fields, void const* record) {
  Values values;
  for (Field const& field : fields) values[field.name] = field.get(record);
  return values;
}

std::string CellOf(Field const& field, std::string const& value, Terminal const& terminal) {
  if (IsHidden(field, value, terminal)) return kHiddenPassword;
  std::string const beside = field.kind == FieldKind::kDate     ? DateTimeToStr("yyyy-mm-dd hh:nn:ss", std::stol(value))
                             : field.kind == FieldKind::kNumber ? DurationText(std::stoll(value), field.millis)
                                                                : "";
  return beside.empty() ? value : value + " (" + beside + ")";
}

Json JsonOf(Field const& field, std::string const& value, Terminal const& terminal) {
  if (IsHidden(field, value, terminal)) return nullptr;
  if (IsNumber(field)) return std::stoll(value);
  if (field.kind == FieldKind::kFlag) return value == "on";
  if (field.kind == FieldKind::kAnswer) return value == "yes";
  return field.kind == FieldKind::kPath ? Json(FileName{value}) : Json(ToUtf8(value));
}

void PrintRecord(std::vector<Field> const& fields, void const* record, Terminal const& terminal,
                 std::vector<std::string> const& origins) {
  Json::Object members;
  Table rows = {{"FIELD", "VALUE", "MEANING"}};
  for (Field const& field : fields) {
    std::string const value = field.get(record);
    members.push_back({field.name, JsonOf(field, value, terminal)});
    rows.push_back({field.name, TableCell(field, value, terminal), field.meaning});
  }
  if (!origins.empty()) rows[0].insert(rows[0].begin() + 2, "ORIGIN");
  for (std::size_t i = 0; i < origins.size(); i++) rows[i + 1].insert(rows[i + 1].begin() + 2, origins[i]);
  terminal.json ? terminal.PrintJson(members) : terminal.PrintTable(rows);
}

void PrintRecords(std::vector<Field> const& fields, std::vector<void const*> const& records, Terminal const& terminal) {
  Json::List list;
  Table rows(1);
  for (Field const& field : fields) rows[0].emplace_back(UpperCase(field.name));
  for (void const* record : records) {
    Json::Object members;
    rows.emplace_back();
    for (Field const& field : fields) {
      std::string const value = field.get(record);
      members.push_back({field.name, JsonOf(field, value, terminal)});
      rows.back().push_back(TableCell(field, value, terminal));
    }
    list.emplace_back(std::move(members));
  }
  terminal.json ? terminal.PrintJson(list) : terminal.PrintTable(rows);
}
