#include "records/check.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <set>

#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/browsetree.h"
#include "records/listcheck.h"
#include "records/tables.h"
#include "records/valuecheck.h"
#include "terminal/nearest.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/browse/browselist.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

// ---- Records ----

// A settings record, read from a directory that is the root, the home and the settings directory at the same time.
struct Kind {
  std::vector<Field> fields;
  std::shared_ptr<void> record;
  bool read = false;
};

template <class Record, class Read>
Kind MakeKind(std::vector<Field> fields, Read const& read) {
  auto const record = std::make_shared<Record>();
  bool const done = read(record.get()) != 0;
  return {std::move(fields), record, done};
}

std::vector<Kind> ReadKinds(std::string const& folder) {
  char const* const at = folder.c_str();
  std::vector<Kind> kinds;
  kinds.push_back(MakeKind<ShutSrvConfig>(ShutdownFields(), [at](auto* r) { return GetShutSrvConfig(at, r); }));
  kinds.push_back(MakeKind<ClientConfig>(ClientFields(), [](auto* r) { return GetClientConfig(r); }));
  kinds.push_back(MakeKind<UpsSrvConfig>(UpsFields(), [at](auto* r) { return GetUpsSrvConfig(at, r, 1); }));
  return kinds;
}

class Checker {
 public:
  Checker(std::string const& path, KeyLines const& lines, Terminal const& terminal, std::vector<Finding>& findings)
      : file_(ExtractFileName(path)), lines_(lines), terminal_(terminal), findings_(findings) {}

  // `known` has more keys that programs read, by section.
  void Records(std::vector<Kind> const& kinds, std::map<std::string, std::vector<std::string>> known) {
    std::set<std::pair<std::string, std::string>> seen;  // a key that two fields share is reported once
    for (Kind const& kind : kinds)
      for (Field const& field : kind.fields) {
        if (!IsIn(field, file_) || field.key == nullptr || field.key == std::string(kFirstKey)) continue;
        known[field.section].emplace_back(field.key);
        if (seen.insert({field.section, field.key + std::to_string(field.part)}).second) Value(kind, field);
      }
    if (!list_.empty()) known[list_];
    bool const isProducts = !known.empty();
    for (auto const& [place, line] : lines_) {
      if (isProducts && place.first.empty())
        Add(line, "unknown-key", "no program reads " + place.second + " before the first header");
      auto const keys = known.find(place.first);
      if (keys == known.end() || place.first == list_) continue;
      if (std::find(keys->second.begin(), keys->second.end(), place.second) == keys->second.end())
        Add(line, "unknown-key",
            "no program reads " + place.second + " of [" + place.first + "]" + DidYouMean(place.second, keys->second));
    }
    Sections(known);
  }

  // The entries of a list, in the order of the library.
  void Entries(EntryList const& list) {
    list_ = list.section;
    unsigned int position = 0;
    for (auto const& [place, line] : lines_)
      if (place.first == list.section) Entry(list, place.second, line, position++);
  }

  // A value whose meaning depends on another file, or that breaks a rule of its own.
  void Fault(char const* kind, std::string const& section, std::string const& key, std::string const& reason) {
    auto const line = lines_.find({section, key});
    if (line != lines_.end() && !reason.empty())
      Add(line->second, kind, Assignment(key, line->second.value) + ": " + reason);
  }

 private:
  // Programs can have sections of their own, so only those that resemble a known one are reported.
  void Sections(std::map<std::string, std::vector<std::string>> const& known) {
    std::vector<std::string> names;
    names.reserve(known.size());
    for (auto const& [name, keys] : known) names.push_back(name);
    std::map<std::string, KeyLine> first;
    for (auto const& [place, line] : lines_) {
      if (known.count(place.first) != 0) continue;
      KeyLine& earliest = first.try_emplace(place.first, line).first->second;
      if (line.line < earliest.line) earliest = line;
    }
    for (auto const& [name, line] : first) {
      std::string reason = name.empty() ? "" : DidYouMean(name, names);
      if (reason.empty()) continue;
      reason.insert(0, "no program reads the keys of [" + name + "]");
      Add(line, "unknown-section", reason);
    }
  }

  // A value of a record as the file would have it.
  std::string InFile(Field const& field, std::string const& value) const {
    if (field.kind == FieldKind::kNumber && !field.words.empty()) {
      auto const number = static_cast<std::size_t>(std::stoull(value));
      return number < field.words.size() ? field.words[number] : value;
    }
    return field.step > 1 ? std::to_string(std::stoll(value) / field.step) : CellOf(field, value, terminal_);
  }

  std::string Assignment(std::string const& key, std::string const& value) const {
    return WithoutPassword(key + " = " + value, terminal_.showPasswords);
  }

  void Add(KeyLine const& line, char const* kind, std::string message) {
    findings_.push_back({line.line, kind, std::move(message)});
  }

  // How the programs read a value that has a fault.
  static std::string Taken(std::string const& used, std::string const& text) {
    bool const isKept = used == text && Trim(text) != text;  // the fault says so
    return isKept ? "" : "; the programs use " + used;
  }

  void Entry(EntryList const& list, std::string const& key, KeyLine const& line, unsigned int position) {
    std::string const start = Assignment(key, line.value) + ": ";
    std::string const wrongKey = list.keyFault(key, line.value);
    if (!wrongKey.empty()) Add(line, "value", start + wrongKey);
    bool const isSingle = list.fields.size() == 1;
    std::vector<std::string> const parts = isSingle ? std::vector<std::string>{line.value} : Parts(line.value);
    std::optional<std::vector<std::string>> const read = list.read(position, key);
    std::string const skipped = "; " + (position == 0 ? list.firstSkipped : list.skipped);
    if (parts.size() != list.fields.size())
      Add(line, "fields", start + "expected " + list.shape + (read ? kRestIgnored : skipped));
    for (std::size_t i = 0; read && i < list.fields.size(); i++) {
      std::string const fault = FileFault(list.fields[i], parts[i]);
      std::string const place = start + list.fields[i].name + ": ";
      if (!fault.empty()) Add(line, "value", place + fault + Taken((*read)[i], parts[i]));
    }
  }

  void Value(Kind const& kind, Field const& field) {
    auto const found = lines_.find({field.section, field.key});
    if (found == lines_.end()) return;
    KeyLine const& line = found->second;
    std::string text = line.value;
    if (field.part >= 0) {
      constexpr std::size_t kParts = 3;
      std::vector<std::string> const parts = Parts(text);
      if (parts.size() != kParts && field.part == 0)
        Add(line, "fields",
            Assignment(field.key, text) + ": expected NAME;ADDRESS;PORT" +
                (kind.read ? kRestIgnored : "; the shutdown service reads no settings"));
      if (parts.size() < kParts) return;
      text = parts[static_cast<std::size_t>(field.part)];
    }
    std::string const fault = FileFault(field, text);
    if (fault.empty()) return;
    std::string taken;
    if (field.kind != FieldKind::kPassword)
      taken = kind.read ? Taken(InFile(field, field.get(kind.record.get())), text) : "; it is not read";
    Add(line, "value", Assignment(field.key, line.value) + ": " + fault + taken);
  }

  std::string file_;
  std::string list_;  // section of the list, "" if the file has none
  KeyLines const& lines_;
  Terminal const& terminal_;
  std::vector<Finding>& findings_;
};

// ---- Values that depend on other files ----

// The table of types of the service with these settings: in the same directory, or in the root above a unit.
std::string TypeTable(std::string const& path) {
  std::string const folder = ExtractFilePath(path);
  for (std::string const& place : {folder, folder + "../", GetZelvanePath()}) {
    std::string table = std::filesystem::path(place + "upstype.cfg").lexically_normal();
    if (FilePermToRead(table)) return table;
  }
  return "";
}

// Without a table every type would be wrong: the file may be a copy.
std::string TypeFault(std::string const& text, std::string const& table) {
  long const type = StrToIntDef(text, 0);
  UpsTypeItem item;
  if (type == 0 || table.empty()) return "";
  Handle const types(OpenUPSTypeList(table.c_str()), CloseUPSTypeList);
  if (GetUPSTypeListItemByType(types.get(), static_cast<unsigned int>(type), &item) != 0) return "";
  std::string const key = std::to_string(type);
  return (HasKey(table, "UPSTYPE", key) ? "type " + key + " has fewer than five fields in "
                                        : "there is no type " + key + " in ") +
         ExtractFileName(table) + "; the programs use Auto";
}

constexpr char kSettingsName[] = "zelvane.conf";
constexpr char const* kModuleKeys[] = {"ZELSRV", "SHUTSRV", "ZELCLI", "ZELCFG", "ZELBRWS"};

std::string RootFault(std::string const& root) {
  if (root.empty()) return "empty; the programs use their own directory";
  if (root[0] != '/') return "not an absolute path; the programs look for it in their current directory";
  int const fault = FolderFault(root);
  return fault == 0 ? "" : strerror(fault);
}

// zelvane.conf. The library reads only the one in /etc.
Kind SettingsKind(std::string const& copy) {
  auto const info = std::make_shared<VersionInfo>();
  Kind kind = {{In(kSettingsName, "ZELVANE", "VERSION", Text<&VersionInfo::version>("VERSION", "")),
                In(kSettingsName, "ZELVANE", "PRODUCT", Text<&VersionInfo::product>("PRODUCT", ""))},
               info,
               true};
  CfgClass file;
  file.OpenReadOnly(copy);
  for (Field const& field : kind.fields) field.put(info.get(), file.ReadStr(field.section, field.key, ""));
  return kind;
}

void CheckOtherFiles(std::string const& path, std::string const& typeTable, KeyLines const& lines, Checker& checker) {
  auto const textOf = [&lines](char const* section, char const* key) {
    auto const line = lines.find({section, key});
    return line == lines.end() ? "0" : line->second.value;
  };
  std::string const name = ExtractFileName(path);
  if (name == "upssrv.cfg") checker.Fault("value", "UPS", "UPSTYPE", TypeFault(textOf("UPS", "UPSTYPE"), typeTable));
  if (name == kSettingsName) {
    checker.Fault("value", "ZELVANE", "PATH", RootFault(textOf("ZELVANE", "PATH")));
    for (char const* const key : kModuleKeys)
      if (StrToIntDef(textOf("ZELVANE", key), -1) < 0)
        checker.Fault("value", "ZELVANE", key, "expected 0 or 1; the programs look for the program's files");
  }
  if (name != "zelbrws.cfg") return;
  Handle const list = OpenHandle(path, OpenBrwsList(path.c_str()), CloseBrwsList);
  BrowseTree const tree(list.get(), path);
  for (BrowseFault const& fault : tree.faults) checker.Fault("fields", SectionOf(fault.kind), fault.key, fault.reason);
  for (BrowseRow const& row : tree.orphans)
    checker.Fault("value", SectionOf(row.entry->kind), IntToStr(row.entry->id), row.reason);
}

}  // namespace

void CheckValues(std::string const& path, KeyLines const& lines, Terminal const& terminal,
                 std::vector<Finding>& findings) {
  Checker checker(path, lines, terminal, findings);
  CheckOtherFiles(path, TypeTable(path), lines, checker);
  // A copy, in a directory where the programs find no other file.
  Rehearsal const rehearsal({{path}, {}}, terminal);
  std::string const copy = At(path);
  std::string const folder = ExtractFilePath(copy);
  setenv("HOME", folder.c_str(), 1);
  if (SetZelvanePath(folder.c_str()) == 0) throw std::bad_alloc();
  std::string const name = ExtractFileName(path);
  if (std::optional<EntryList> const list = ListIn(name)) checker.Entries(*list);
  if (name != kSettingsName) return checker.Records(ReadKinds(folder), {});
  std::vector<std::string> others(std::begin(kModuleKeys), std::end(kModuleKeys));
  others.emplace_back("PATH");
  checker.Records({SettingsKind(copy)}, {{"ZELVANE", others}});
}
