#include "records/fields.h"

#include <charconv>
#include <system_error>

#include "files/format.h"
#include "terminal/latin1.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"

namespace {

std::string TextFault(Field const& field, std::string const& value) {
  auto const most = static_cast<std::size_t>(field.highest);
  if (value.size() > most)
    return "at most " + std::to_string(most) + " characters, not " + std::to_string(value.size());
  if (field.kind == FieldKind::kPassword)
    return value.find('\0') == std::string::npos ? "" : "a NUL byte ends the text";
  if (field.kind == FieldKind::kListText && value.find(';') != std::string::npos)
    return "';' parts the fields of its line in the file";
  if (field.kind == FieldKind::kLowerText && LowerCase(value) != value)
    return "capitals: the file is read in lower case";
  return ValueFault(value);
}

std::string NumberFault(std::string const& value, std::int64_t lowest, std::int64_t highest, std::int64_t step = 1) {
  std::int64_t number = 0;
  auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  bool const isNumber = error == std::errc() && end == value.data() + value.size();
  if (isNumber && number >= lowest && number <= highest && number % step == 0) return "";
  return "a number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
         (step == 1 ? "" : " in steps of " + std::to_string(step));
}

bool IsNumber(Field const& field) { return field.kind == FieldKind::kNumber || field.kind == FieldKind::kDate; }

bool IsHidden(Field const& field, std::string const& value, Terminal const& terminal) {
  return field.kind == FieldKind::kPassword && !value.empty() && !terminal.showPasswords;
}

}  // namespace

std::string Limits(Field const& field) {
  if (field.follows != nullptr) return std::string("follows ") + field.follows;
  if (field.kind == FieldKind::kFlag) return "on or off";
  if (IsNumber(field)) return std::to_string(field.lowest) + " to " + std::to_string(field.highest);
  std::string const characters = "up to " + std::to_string(field.highest) + " characters";
  if (field.kind == FieldKind::kListText) return characters + ", no ';'";
  return field.kind == FieldKind::kLowerText ? characters + ", no capitals" : characters;
}

std::string FieldFault(Field const& field, std::string const& value) {
  if (IsNumber(field)) return NumberFault(value, field.lowest, field.highest, field.step);
  if (field.kind == FieldKind::kFlag) return value == "on" || value == "off" ? "" : "on or off";
  return TextFault(field, value);
}

std::string CheckedArgument(Field const& field, std::string const& argument, Terminal const& terminal) {
  if (field.follows != nullptr)
    throw WrongUsage(std::string(field.name) + ": cannot be set, it follows " + field.follows);
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

std::vector<std::string> ValuesOf(std::vector<Field> const& fields, void const* record) {
  std::vector<std::string> values;
  values.reserve(fields.size());
  for (Field const& field : fields) values.push_back(field.get(record));
  return values;
}

std::string CellOf(Field const& field, std::string const& value, Terminal const& terminal) {
  if (IsHidden(field, value, terminal)) return kHiddenPassword;
  std::string const date = field.kind == FieldKind::kDate ? DateTimeToStr("yyyy-mm-dd hh:nn:ss", std::stol(value)) : "";
  return date.empty() ? value : value + " (" + date + ")";
}

Json JsonOf(Field const& field, std::string const& value, Terminal const& terminal) {
  if (IsHidden(field, value, terminal)) return nullptr;
  if (IsNumber(field)) return std::stoll(value);
  if (field.kind == FieldKind::kFlag) return value == "on";
  if (field.kind == FieldKind::kAnswer) return value == "yes";
  return ToUtf8(value);
}

void PrintRecord(std::vector<Field> const& fields, void const* record, Terminal const& terminal) {
  Json members = Json::object();
  std::vector<std::vector<std::string>> rows = {{"FIELD", "VALUE", "MEANING"}};
  for (Field const& field : fields) {
    std::string const value = field.get(record);
    members[field.name] = JsonOf(field, value, terminal);
    rows.push_back({field.name, CellOf(field, value, terminal), field.meaning});
  }
  terminal.json ? terminal.PrintJson(members) : terminal.PrintTable(rows);
}

void PrintRecords(std::vector<Field> const& fields, std::vector<void const*> const& records, Terminal const& terminal) {
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows(1);
  for (Field const& field : fields) rows[0].push_back(UpperCase(field.name));
  for (void const* record : records) {
    Json members = Json::object();
    rows.emplace_back();
    for (Field const& field : fields) {
      std::string const value = field.get(record);
      members[field.name] = JsonOf(field, value, terminal);
      rows.back().push_back(CellOf(field, value, terminal));
    }
    list.push_back(std::move(members));
  }
  terminal.json ? terminal.PrintJson(list) : terminal.PrintTable(rows);
}
