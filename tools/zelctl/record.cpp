#include "record.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <numeric>

#include "format.h"
#include "latin1.h"
#include "secret.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

using Values = std::vector<std::string>;             // one a field, in the table's order
using Changes = std::map<std::size_t, std::string>;  // by the field's place in the table

struct Arguments {
  std::string directory;
  std::vector<std::string> items;  // names of fields for show, assignments for set
  std::string passwordFile;
  bool force = false;
};

// Steps of one character (added, taken away, replaced) from one word to the other.
std::size_t Distance(std::string const& from, std::string const& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); i++) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); j++) {
      std::size_t const replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

std::size_t FindField(std::vector<Field> const& fields, std::string const& name) {
  auto const found = std::find_if(fields.begin(), fields.end(), [&](Field const& field) { return name == field.name; });
  if (found != fields.end()) return static_cast<std::size_t>(found - fields.begin());
  auto const nearest = std::min_element(fields.begin(), fields.end(), [&](Field const& a, Field const& b) {
    return Distance(name, a.name) < Distance(name, b.name);
  });
  throw WrongUsage("no field \"" + name + "\"; did you mean " + nearest->name + "?");
}

std::string TextFault(Field const& field, std::string const& value) {
  auto const most = static_cast<std::size_t>(field.highest);
  if (value.size() > most)
    return "at most " + std::to_string(most) + " characters, not " + std::to_string(value.size());
  if (field.kind == FieldKind::kPassword)
    return value.find('\0') == std::string::npos ? "" : "a NUL byte ends the text";
  if (field.kind == FieldKind::kListText && value.find(';') != std::string::npos)
    return "';' parts the fields of its line in the file";
  return ValueFault(value);
}

std::string NumberFault(Field const& field, std::string const& value) {
  std::int64_t number = 0;
  auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error == std::errc() && end == value.data() + value.size() && number >= field.lowest && number <= field.highest)
    return "";
  return "a number from " + std::to_string(field.lowest) + " to " + std::to_string(field.highest);
}

// What is wrong with a value for the field, in words; "" when it would come back from the file as it is.
std::string FieldFault(Field const& field, std::string const& value) {
  switch (field.kind) {
    case FieldKind::kNumber: return NumberFault(field, value);
    case FieldKind::kFlag: return value == "on" || value == "off" ? "" : "on or off";
    default: return TextFault(field, value);
  }
}

void AddChange(Changes& changes, Field const& field, std::size_t place, std::string value) {
  if (field.kind == FieldKind::kFlag && (value == "1" || value == "0")) value = value == "1" ? "on" : "off";
  std::string const fault = FieldFault(field, value);
  if (!fault.empty()) throw WrongUsage(std::string(field.name) + ": " + fault);
  if (!changes.emplace(place, std::move(value)).second) throw WrongUsage(std::string(field.name) + ": given twice");
}

Changes ParseChanges(std::vector<Field> const& fields, Arguments const& arguments, Terminal const& terminal) {
  Changes changes;
  for (std::string const& item : arguments.items) {
    std::size_t const equals = item.find('=');
    if (equals == std::string::npos) throw WrongUsage("\"" + item + "\": FIELD=VALUE is wanted");
    std::size_t const place = FindField(fields, item.substr(0, equals));
    Field const& field = fields[place];
    std::string value = item.substr(equals + 1);
    if (field.kind == FieldKind::kPassword && value == "-") value = ReadSecretFromInput();
    AddChange(changes, field, place, terminal.FromArgument(field.name, value));
  }
  if (!arguments.passwordFile.empty()) {
    auto const field =
        std::find_if(fields.begin(), fields.end(), [](Field const& f) { return f.kind == FieldKind::kPassword; });
    AddChange(changes, *field, static_cast<std::size_t>(field - fields.begin()),
              terminal.FromArgument(field->name, ReadSecretFromFile(arguments.passwordFile)));
  }
  if (changes.empty()) throw WrongUsage("nothing to set: FIELD=VALUE is wanted");
  return changes;
}

Values ValuesOf(std::vector<Field> const& fields, void const* record) {
  Values values;
  for (Field const& field : fields) values.push_back(field.get(record));
  return values;
}

bool IsHidden(Field const& field, std::string const& value, Terminal const& terminal) {
  return field.kind == FieldKind::kPassword && !value.empty() && !terminal.showPasswords;
}

std::string CellOf(Field const& field, std::string const& value, Terminal const& terminal) {
  return IsHidden(field, value, terminal) ? kHiddenPassword : value;
}

Json JsonOf(Field const& field, std::string const& value, Terminal const& terminal) {
  if (IsHidden(field, value, terminal)) return nullptr;
  if (field.kind == FieldKind::kNumber) return std::stoll(value);
  if (field.kind == FieldKind::kFlag) return value == "on";
  return ToUtf8(value);
}

// Prints the fields at `places`, or all.
void PrintRecord(std::vector<Field> const& fields, Values const& values, std::vector<std::size_t> places,
                 Terminal const& terminal) {
  if (places.empty()) {
    places.resize(fields.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
  }
  Json members = Json::object();
  std::vector<std::vector<std::string>> rows = {{"FIELD", "VALUE", "MEANING"}};
  for (std::size_t const place : places) {
    Field const& field = fields[place];
    members[field.name] = JsonOf(field, values[place], terminal);
    rows.push_back({field.name, CellOf(field, values[place], terminal), field.meaning});
  }
  terminal.json ? terminal.PrintJson(members) : terminal.PrintTable(rows);
}

// Success is silent but for --json, as it is for `cfg set`.
void PrintChanges(std::vector<Field> const& fields, Values const& before, Values const& after, Changes const& changes,
                  Terminal const& terminal) {
  if (!terminal.json) return;
  Json members = Json::object();
  for (auto const& [place, unused] : changes) {
    Field const& field = fields[place];
    members[field.name] = {{"before", JsonOf(field, before[place], terminal)},
                           {"now", JsonOf(field, after[place], terminal)}};
  }
  terminal.PrintJson(members);
}

void RequireDirectory(std::string const& directory) {
  if (!directory.empty() && !DirExists(directory)) throw Failed(directory + ": no such folder");
}

void ReadRecord(RecordFamily const& family, std::string const& directory, void* record) {
  if (family.read(directory.c_str(), record) == 0)
    throw Failed(family.files(directory).front() + ": " + family.readFault);
}

void Show(RecordFamily const& family, Arguments const& arguments, Terminal const& terminal) {
  std::vector<std::size_t> places;
  for (std::string const& name : arguments.items) places.push_back(FindField(family.fields, name));
  RequireDirectory(arguments.directory);
  for (std::string const& file : family.files(arguments.directory)) {
    FileState const state = InspectFile(file);
    if (!state.exists) terminal.Note(file + " does not exist: its settings have their defaults");
    if (state.badLine != 0) terminal.Note(StoppedAt(file, state.badLine));
  }
  std::shared_ptr<void> const record = family.make();
  ReadRecord(family, arguments.directory, record.get());
  PrintRecord(family.fields, ValuesOf(family.fields, record.get()), places, terminal);
}

void ShowDefaults(RecordFamily const& family, Terminal const& terminal) {
  std::shared_ptr<void> const record = family.make();
  if (family.defaults(record.get()) == 0) throw Failed("the library gives no defaults");
  PrintRecord(family.fields, ValuesOf(family.fields, record.get()), {}, terminal);
}

void Set(RecordFamily const& family, Arguments const& arguments, Terminal const& terminal) {
  std::vector<Field> const& fields = family.fields;
  Changes const changes = ParseChanges(fields, arguments, terminal);
  RequireDirectory(arguments.directory);
  std::vector<std::string> const files = family.files(arguments.directory);
  for (std::string const& file : files) arguments.force ? void(InspectFile(file)) : RequireWholeLoad(file);

  std::shared_ptr<void> const record = family.make();
  ReadRecord(family, arguments.directory, record.get());
  Values const before = ValuesOf(fields, record.get());
  for (auto const& [place, value] : changes) fields[place].put(record.get(), value);
  Values const after = ValuesOf(fields, record.get());
  // The save writes every field, also one that the file holds in a form that would not come back.
  for (std::size_t i = 0; i < fields.size(); i++) {
    std::string const fault = FieldFault(fields[i], after[i]);
    if (!fault.empty())
      throw Failed(std::string(fields[i].name) + ": the file holds a value that cannot be saved again (" + fault +
                   "); set this field too");
  }
  if (family.write(arguments.directory.c_str(), record.get()) == 0) {
    std::string names;
    for (std::string const& file : files) names += (names.empty() ? "" : ", ") + file;
    throw Failed("cannot be written: " + names);
  }
  PrintChanges(fields, before, after, changes, terminal);
}

std::string Limits(Field const& field) {
  switch (field.kind) {
    case FieldKind::kNumber: return std::to_string(field.lowest) + " to " + std::to_string(field.highest);
    case FieldKind::kFlag: return "on or off";
    case FieldKind::kListText: return "up to " + std::to_string(field.highest) + " characters, no ';'";
    default: return "up to " + std::to_string(field.highest) + " characters";
  }
}

std::string FieldList(std::vector<Field> const& fields) {
  std::string list = "Fields:\n";
  for (Field const& field : fields) {
    list += "  ";
    list += FillRight(field.name, 20, ' ');
    list += FillRight(Limits(field), 29, ' ');
    list += field.meaning;
    list += '\n';
  }
  return list;
}

void AddDirectory(CLI::App* command, Arguments& arguments) {
  command->add_option("--dir", arguments.directory, "Folder of the settings; the installation root if not given")
      ->type_name("DIR");
}

void AddSet(CLI::App* family, Terminal& terminal, std::shared_ptr<RecordFamily const> const& record) {
  auto const arguments = std::make_shared<Arguments>();
  CLI::App* const set = AddCommand(family, terminal, "set", "Change fields and save; all are checked before any is");
  AddDirectory(set, *arguments);
  AddShowPassword(set, terminal);
  // Not `required`: a password file alone is enough.
  set->add_option("FIELD=VALUE", arguments->items, "Fields with their new values")->type_name("");
  set->add_flag("--force", arguments->force,
                "Save even if a line of the file is a syntax error and those below are lost");
  bool const hasPassword = std::any_of(record->fields.begin(), record->fields.end(),
                                       [](Field const& field) { return field.kind == FieldKind::kPassword; });
  std::string footer = FieldList(record->fields) + record->notes +
                       "Texts cannot hold '[', ']', line feeds or blanks at either end: the file does not keep them.\n";
  if (hasPassword) {
    set->add_option("--password-file", arguments->passwordFile, "Take the password from the first line of FILE")
        ->type_name("FILE");
    footer +=
        "Other users of this machine can see a password on the command line; the value \"-\" reads it from standard\n"
        "input instead (not shown while it is typed), --password-file from a file.\n";
  }
  set->footer(footer);
  set->callback([record, arguments, &terminal] { Set(*record, *arguments, terminal); });
}

}  // namespace

void AddRecordCommands(CLI::App* family, Terminal& terminal, RecordFamily const& family_record) {
  auto const record = std::make_shared<RecordFamily const>(family_record);
  auto const arguments = std::make_shared<Arguments>();
  family->require_subcommand(1);

  CLI::App* const show = AddCommand(family, terminal, "show", "Show the settings, or the fields that are named");
  AddDirectory(show, *arguments);
  AddShowPassword(show, terminal);
  show->add_option("FIELD", arguments->items, "Fields to show")->type_name("");
  show->footer(record->notes);
  show->callback([record, arguments, &terminal] { Show(*record, *arguments, terminal); });

  AddSet(family, terminal, record);

  CLI::App* const defaults = AddCommand(family, terminal, "defaults", "Show the factory defaults; touches no file");
  defaults->callback([record, &terminal] { ShowDefaults(*record, terminal); });
}
