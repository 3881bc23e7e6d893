#include "commands/record.h"

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "files/edit.h"
#include "files/format.h"
#include "records/keylines.h"
#include "terminal/nearest.h"
#include "terminal/secret.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

using Changes = Values;

struct Arguments {
  std::string directory;
  std::vector<std::string> items;  // field names for show, assignments for set
  std::string passwordFile;
  bool value = false;
  Writing writing;
};

Field const& FindField(std::vector<Field> const& fields, std::string const& name) {
  if (Field const* const found = FieldNamed(fields, name)) return *found;
  std::string const nearest = DidYouMean(name, FieldNames(fields));
  throw WrongUsage("unknown field \"" + name + "\"" + (nearest.empty() ? "; --help lists the fields" : nearest));
}

void AddChange(Changes& changes, Field const& field, std::string value) {
  if (!changes.emplace(field.name, std::move(value)).second)
    throw WrongUsage(std::string(field.name) + ": given more than once");
}

Changes ParseChanges(std::vector<Field> const& fields, Arguments const& arguments, Terminal const& terminal) {
  Changes changes;
  for (std::string const& item : arguments.items) {
    std::size_t const equals = item.find('=');
    if (equals == std::string::npos) throw WrongUsage("\"" + item + "\": expected FIELD=VALUE");
    Field const& field = FindField(fields, item.substr(0, equals));
    std::string value = item.substr(equals + 1);
    if (field.kind == FieldKind::kPassword && !arguments.passwordFile.empty())
      throw WrongUsage(std::string(field.name) + ": given more than once");
    if (field.kind == FieldKind::kPassword && value == "-") value = ReadSecretFromInput();
    AddChange(changes, field, CheckedArgument(field, value, terminal));
  }
  if (!arguments.passwordFile.empty()) {
    auto const field =
        std::find_if(fields.begin(), fields.end(), [](Field const& f) { return f.kind == FieldKind::kPassword; });
    AddChange(changes, *field, CheckedArgument(*field, ReadSecretFromFile(arguments.passwordFile), terminal));
  }
  if (changes.empty()) throw WrongUsage("nothing to set; expected FIELD=VALUE");
  return changes;
}

void PrintChanges(std::vector<Field> const& fields, Values const& before, Values const& after, Changes const& changes,
                  Terminal const& terminal) {
  if (!terminal.json) return;
  Json::Object members;
  for (Field const& field : fields) {
    if (changes.count(field.name) == 0) continue;
    members.push_back({field.name,
                       {{"before", JsonOf(field, before.at(field.name), terminal)},
                        {"now", JsonOf(field, after.at(field.name), terminal)}}});
  }
  terminal.PrintJson(members);
}

void Apply(Changes const& changes, std::vector<Field> const& fields, void* record) {
  for (auto const& [name, value] : changes) FindField(fields, name).put(record, value);
}

// The directory that a word names: a number, with any leading zeros, names a unit; a bare name is in the root; a path
// is unchanged.
std::string InRoot(std::string const& word) {
  if (!ExtractFilePath(word).empty() || word == "." || word == "..") return IncludePathDelimiter(word);
  long const unit = word.find_first_not_of("0123456789") == std::string::npos ? StrToIntDef(word, -1) : -1;
  return GetZelvanePath() + (unit >= 0 ? IntToStr(unit, 3) : word);
}

// The directory of the settings; "" for the installation root. Removes the word that names it from the items.
std::string TakeDirectory(RecordFamily const& family, Arguments& arguments) {
  std::string directory = arguments.directory;
  if (family.folder == Folder::kArgument) {
    std::vector<std::string>& items = arguments.items;
    if (directory.empty() && !items.empty() && items[0].find('=') == std::string::npos &&
        FieldNamed(family.fields, items[0]) == nullptr) {
      directory = InRoot(items[0]);
      items.erase(items.begin());
    }
  }
  if (directory == "." || directory == "..") directory = IncludePathDelimiter(directory);
  // The library searches the root for a bare name.
  if (!arguments.directory.empty() && ExtractFilePath(directory).empty()) directory.insert(0, "./");
  return directory;
}

void RequireDirectory(std::string const& directory) {
  struct stat folder = {};
  if (directory.empty()) return;
  if (stat(directory.c_str(), &folder) != 0) throw Failed(directory + ": " + strerror(errno));
  if (!S_ISDIR(folder.st_mode)) throw Failed(directory + ": " + strerror(ENOTDIR));
}

std::shared_ptr<void> ReadRecord(RecordFamily const& family, std::string const& directory) {
  std::shared_ptr<void> record = family.make();
  if (family.read(directory.c_str(), record.get()) == 0)
    throw Failed(family.files(directory, record.get()).front() + ": " + family.readFault);
  return record;
}

void PrintValues(std::vector<Field> const& fields, void const* record, Terminal const& terminal) {
  for (Field const& field : fields)
    if (field.kind == FieldKind::kPassword && !terminal.showPasswords)
      throw WrongUsage(std::string(field.name) + " is a password; use --show-password");
  for (Field const& field : fields) terminal.PrintValue(field.get(record));
}

void Show(RecordFamily const& family, Arguments arguments, Terminal const& terminal) {
  std::string const directory = TakeDirectory(family, arguments);
  std::vector<Field> fields;
  for (std::string const& name : arguments.items) fields.push_back(FindField(family.fields, name));
  RequireDirectory(directory);
  std::shared_ptr<void> const record = ReadRecord(family, directory);
  std::vector<std::string> files = family.files(directory, record.get());
  for (std::string const& file : files) NoteState(file, "defaults are used", terminal);
  if (fields.empty()) fields = family.fields;
  if (arguments.value) return PrintValues(fields, record.get(), terminal);
  if (family.tables)
    for (std::string const& file : family.tables(directory)) files.push_back(file);
  PrintRecord(fields, record.get(), terminal, Origins(fields, record.get(), files));
}

void ShowDefaults(RecordFamily const& family, Terminal const& terminal) {
  std::shared_ptr<void> const record = family.make();
  if (family.defaults(record.get()) == 0) throw Failed("cannot get the defaults (out of memory)");
  PrintRecord(family.fields, record.get(), terminal);
}

// A save writes every field, even one whose value in the file would not read back.
void RequireSavable(std::vector<Field> const& fields, Values const& values) {
  for (Field const& field : fields) {
    std::string const fault = field.follows == nullptr ? FieldFault(field, values.at(field.name)) : "";
    if (!fault.empty())
      throw Failed(std::string(field.name) + ": the value in the file cannot be saved again (" + fault +
                   "); set this field too");
  }
}

// A save can store another value than requested: a model may lack a setting, or a date may be out of range.
void RequireKept(std::vector<Field> const& fields, Changes const& changes, Values const& saved, Values const& now,
                 Terminal const& terminal) {
  for (auto const& [name, unused] : changes)
    if (now.at(name) != saved.at(name))
      throw Failed("saved, but " + name + " is now " +
                   terminal.Shown(CellOf(FindField(fields, name), now.at(name), terminal)));
}

// Names the first file of the save that cannot be written, or else all files.
std::string WhyNotWritten(std::vector<std::string> const& files, int error) {
  auto const barred = std::find_if_not(files.begin(), files.end(), IsWritable);
  if (barred != files.end()) return CannotWrite(*barred, error);
  std::string names;
  for (std::string const& file : files) names += (names.empty() ? "" : ", ") + file;
  return names + ": cannot write" + (error == 0 ? "" : std::string(": ") + strerror(error));
}

// The change can select other files of the record, but none in other directories.
void LockPlace(RecordFamily const& family, std::string const& directory) {
  std::vector<std::string> files = family.files(directory, family.make().get());
  if (family.tables)
    for (std::string const& file : family.tables(directory)) files.push_back(file);
  LockFoldersOf(files);
}

void Set(RecordFamily const& family, Arguments arguments, Terminal const& terminal) {
  std::vector<Field> const& fields = family.fields;
  std::string const directory = TakeDirectory(family, arguments);
  Changes const changes = ParseChanges(fields, arguments, terminal);
  RequireDirectory(directory);
  if (!arguments.writing.dryRun) LockPlace(family, directory);

  std::shared_ptr<void> const record = ReadRecord(family, directory);
  Values const before = ValuesOf(fields, record.get());
  Apply(changes, fields, record.get());
  bool const reselect = std::any_of(changes.begin(), changes.end(), [&](auto const& change) {
    Field const& field = FindField(fields, change.first);
    return field.selects && field.get(record.get()) != before.at(change.first);
  });
  if (reselect) {
    family.reselect(directory, record.get());
    Apply(changes, fields, record.get());
  }
  Values const saved = ValuesOf(fields, record.get());
  RequireSavable(fields, saved);
  std::vector<std::string> const files = family.files(directory, record.get());
  Edit edit = {files, {}, "added with their defaults"};
  if (family.tables) edit.reads = family.tables(directory);
  // The save would otherwise stop after the files before that one.
  auto const barred = std::find_if_not(files.begin(), files.end(), CanBeWritten);
  if (barred != files.end()) throw Failed(CannotWrite(*barred));
  bool const done = Make(edit, arguments.writing, terminal, [&] {
    std::string const place = directory.empty() ? directory : At(directory);
    errno = 0;
    if (family.write(place.c_str(), record.get(), terminal) == 0) throw Failed(WhyNotWritten(files, errno));
  });
  if (!done) return;
  Values const now = ValuesOf(fields, ReadRecord(family, directory).get());
  PrintChanges(fields, before, now, changes, terminal);
  RequireKept(fields, changes, saved, now, terminal);
}

bool HasPassword(RecordFamily const& family) {
  return std::any_of(family.fields.begin(), family.fields.end(),
                     [](Field const& field) { return field.kind == FieldKind::kPassword; });
}

// The options of both `show` and `set`.
Options CommonOptions(RecordFamily const& family, Arguments& arguments) {
  Options options;
  if (family.folder != Folder::kRoot)
    options.push_back(
        Value("--dir", &arguments.directory, "DIR", "Directory of the settings; default: the installation root")
            .Filled());
  options.insert(options.end(), family.options.begin(), family.options.end());
  if (HasPassword(family)) options.push_back(ShowPassword());
  return options;
}

// The words after the command. Optional: `show` without them shows all fields, and `set` can have a password file
// alone.
Option Items(std::shared_ptr<RecordFamily const> const& family, Arguments& arguments, bool assigns) {
  std::string const name = assigns ? "FIELD=VALUE" : "FIELD";
  std::string const help = assigns ? "Fields and their new values" : "Fields to show";
  auto const suggest = [family, assigns](std::string const& begun) {
    std::vector<std::string> offered = assigns ? Assignments(family->fields, begun) : FieldNames(family->fields);
    std::vector<std::string> const places = family->places ? family->places() : std::vector<std::string>();
    if (begun.find('=') == std::string::npos) offered.insert(offered.begin(), places.begin(), places.end());
    return offered;
  };
  if (family->folder != Folder::kArgument) return Argument(name, &arguments.items, help).Suggesting(suggest);
  return Argument("[DIR] " + name, &arguments.items,
                  help + ", after the directory DIR; a name without \"/\" is in the installation root")
      .Suggesting(suggest);
}

Command SetCommand(std::shared_ptr<RecordFamily const> const& record) {
  auto const arguments = std::make_shared<Arguments>();
  Options options = Joined(
      {CommonOptions(*record, *arguments), {Items(record, *arguments, true)}, WritingOptions(arguments->writing)});
  std::string notes = "Fields:\n" + FieldTable(record->fields) + record->notes +
                      "Texts cannot contain '[', ']' or line feeds, nor start or end with a blank. The record is "
                      "written whole: fields that the files lack are added with their defaults.\n";
  if (HasPassword(*record)) {
    options.push_back(
        Value("--password-file", &arguments->passwordFile, "FILE", "Take the password from the first line of FILE"));
    notes +=
        "Other users can see a password on the command line. Use \"-\" to read it from standard input (not echoed), or "
        "--password-file.\n";
  }
  return {"set", "Set fields; every value is checked before anything is written",
          [record, arguments](Terminal const& terminal) { Set(*record, *arguments, terminal); }, std::move(options),
          std::move(notes)};
}

}  // namespace

std::vector<Command> RecordCommands(RecordFamily const& family) {
  auto const record = std::make_shared<RecordFamily const>(family);
  auto const arguments = std::make_shared<Arguments>();
  return {{"show", "Show all settings, or the named fields",
           [record, arguments](Terminal const& terminal) { Show(*record, *arguments, terminal); },
           Joined({CommonOptions(*record, *arguments),
                   {Items(record, *arguments, false),
                    Flag("--value", &arguments->value, "Print the bare values, one per line")}}),
           std::string(record->notes) + "ORIGIN is the file and line that a value comes from, or \"default\".\n"},
          SetCommand(record),
          {"defaults", "Show the defaults; reads no file",
           [record](Terminal const& terminal) { ShowDefaults(*record, terminal); }}};
}
