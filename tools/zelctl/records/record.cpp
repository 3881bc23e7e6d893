#include "records/record.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <numeric>

#include "files/format.h"
#include "terminal/secret.h"
#include "zelvane/config/paths.h"
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

void AddChange(Changes& changes, Field const& field, std::size_t place, std::string value) {
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
    AddChange(changes, field, place, CheckedArgument(field, value, terminal));
  }
  if (!arguments.passwordFile.empty()) {
    auto const field =
        std::find_if(fields.begin(), fields.end(), [](Field const& f) { return f.kind == FieldKind::kPassword; });
    AddChange(changes, *field, static_cast<std::size_t>(field - fields.begin()),
              CheckedArgument(*field, ReadSecretFromFile(arguments.passwordFile), terminal));
  }
  if (changes.empty()) throw WrongUsage("nothing to set: FIELD=VALUE is wanted");
  return changes;
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

void Apply(Changes const& changes, std::vector<Field> const& fields, void* record) {
  for (auto const& [place, value] : changes) fields[place].put(record, value);
}

bool IsField(std::vector<Field> const& fields, std::string const& name) {
  return std::any_of(fields.begin(), fields.end(), [&name](Field const& field) { return name == field.name; });
}

// The folder of the settings; "" for the installation root. Takes the word that names it off the items.
std::string TakeDirectory(RecordFamily const& family, Arguments& arguments) {
  std::string directory = arguments.directory;
  if (family.folder == Folder::kArgument) {
    std::vector<std::string>& items = arguments.items;
    if (directory.empty() && !items.empty() && items[0].find('=') == std::string::npos &&
        !IsField(family.fields, items[0])) {
      directory = items[0];
      items.erase(items.begin());
    }
    if (!directory.empty() && ExtractFilePath(directory).empty()) directory.insert(0, GetZelvanePath());
  }
  return directory;
}

void RequireDirectory(std::string const& directory) {
  if (!directory.empty() && !DirExists(directory)) throw Failed(directory + ": no such folder");
}

std::shared_ptr<void> ReadRecord(RecordFamily const& family, std::string const& directory) {
  std::shared_ptr<void> record = family.make();
  if (family.read(directory.c_str(), record.get()) == 0)
    throw Failed(family.files(directory, record.get()).front() + ": " + family.readFault);
  return record;
}

void Show(RecordFamily const& family, Arguments arguments, Terminal const& terminal) {
  std::string const directory = TakeDirectory(family, arguments);
  std::vector<Field> fields;
  for (std::string const& name : arguments.items) fields.push_back(family.fields[FindField(family.fields, name)]);
  RequireDirectory(directory);
  std::shared_ptr<void> const record = ReadRecord(family, directory);
  for (std::string const& file : family.files(directory, record.get()))
    NoteState(file, "its settings have their defaults", terminal);
  PrintRecord(fields.empty() ? family.fields : fields, record.get(), terminal);
}

void ShowDefaults(RecordFamily const& family, Terminal const& terminal) {
  std::shared_ptr<void> const record = family.make();
  if (family.defaults(record.get()) == 0) throw Failed("the library gives no defaults");
  PrintRecord(family.fields, record.get(), terminal);
}

// The save writes every field, also one that the file holds in a form that would not come back.
void RequireSavable(std::vector<Field> const& fields, Values const& values) {
  for (std::size_t i = 0; i < fields.size(); i++) {
    std::string const fault = fields[i].follows == nullptr ? FieldFault(fields[i], values[i]) : "";
    if (!fault.empty())
      throw Failed(std::string(fields[i].name) + ": the file holds a value that cannot be saved again (" + fault +
                   "); set this field too");
  }
}

// A save may keep something else than it was given: a model may lack a setting, a date may be too far away.
void RequireKept(std::vector<Field> const& fields, Changes const& changes, Values const& saved, Values const& now,
                 Terminal const& terminal) {
  for (auto const& [place, unused] : changes)
    if (now[place] != saved[place])
      throw Failed(std::string("saved, but ") + fields[place].name + " reads back as " +
                   terminal.Shown(CellOf(fields[place], now[place], terminal)));
}

void Set(RecordFamily const& family, Arguments arguments, Terminal const& terminal) {
  std::vector<Field> const& fields = family.fields;
  std::string const directory = TakeDirectory(family, arguments);
  Changes const changes = ParseChanges(fields, arguments, terminal);
  RequireDirectory(directory);

  std::shared_ptr<void> const record = ReadRecord(family, directory);
  Values const before = ValuesOf(fields, record.get());
  Apply(changes, fields, record.get());
  bool const reselect = std::any_of(changes.begin(), changes.end(), [&](auto const& change) {
    Field const& field = fields[change.first];
    return field.selects && field.get(record.get()) != before[change.first];
  });
  if (reselect) {
    family.reselect(directory, record.get());
    Apply(changes, fields, record.get());
  }
  Values const saved = ValuesOf(fields, record.get());
  RequireSavable(fields, saved);
  std::vector<std::string> const files = family.files(directory, record.get());
  for (std::string const& file : files) RequireWholeLoad(file, arguments.force);

  if (family.write(directory.c_str(), record.get()) == 0) {
    std::string names;
    for (std::string const& file : files) names += (names.empty() ? "" : ", ") + file;
    throw Failed("cannot be written: " + names);
  }
  Values const now = ValuesOf(fields, ReadRecord(family, directory).get());
  PrintChanges(fields, before, now, changes, terminal);
  RequireKept(fields, changes, saved, now, terminal);
}

std::string FieldList(std::vector<Field> const& fields) {
  std::string list = "Fields:\n";
  for (Field const& field : fields) {
    list += "  ";
    list += FillRight(field.name, 20, ' ');
    list += FillRight(Limits(field), 34, ' ');
    list += field.meaning;
    list += '\n';
  }
  return list;
}

bool HasPassword(RecordFamily const& family) {
  return std::any_of(family.fields.begin(), family.fields.end(),
                     [](Field const& field) { return field.kind == FieldKind::kPassword; });
}

// What `show` and `set` have in common.
void AddOptions(CLI::App* command, Terminal& terminal, RecordFamily const& family, Arguments& arguments) {
  if (family.folder != Folder::kRoot)
    command->add_option("--dir", arguments.directory, "Folder of the settings; the installation root if not given")
        ->type_name("DIR");
  if (family.addOptions) family.addOptions(command);
  if (HasPassword(family)) AddShowPassword(command, terminal);
}

// The words behind the command.
void AddItems(CLI::App* command, RecordFamily const& family, Arguments& arguments, std::string const& name,
              std::string const& description) {
  bool const takesDirectory = family.folder == Folder::kArgument;
  // Not `required`: `show` shows all fields, and for `set` a password file alone is enough.
  command
      ->add_option(
          (takesDirectory ? "[DIR] " : "") + name, arguments.items,
          description + (takesDirectory ? ", behind the folder (a bare name lies in the installation root)" : ""))
      ->type_name("");
}

void AddSet(CLI::App* family, Terminal& terminal, std::shared_ptr<RecordFamily const> const& record) {
  auto const arguments = std::make_shared<Arguments>();
  CLI::App* const set = AddCommand(family, terminal, "set", "Change fields and save; all are checked before any is");
  AddOptions(set, terminal, *record, *arguments);
  AddItems(set, *record, *arguments, "FIELD=VALUE", "Fields with their new values");
  AddForce(set, arguments->force);
  std::string footer = FieldList(record->fields) + record->notes +
                       "Texts cannot hold '[', ']', line feeds or blanks at either end: the file does not keep them.\n";
  if (HasPassword(*record)) {
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
  AddOptions(show, terminal, *record, *arguments);
  AddItems(show, *record, *arguments, "FIELD", "Fields to show");
  show->footer(record->notes);
  show->callback([record, arguments, &terminal] { Show(*record, *arguments, terminal); });

  AddSet(family, terminal, record);

  CLI::App* const defaults = AddCommand(family, terminal, "defaults", "Show the factory defaults; touches no file");
  defaults->callback([record, &terminal] { ShowDefaults(*record, terminal); });
}
