#include "records/check.h"

#include <stdlib.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>

#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/browsetree.h"
#include "records/tables.h"
#include "terminal/nearest.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/browse/browselist.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"

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

// What the file should contain for the field, in words; "" if the text is valid.
std::string TextFault(Field field, std::string const& text) {
  if (!field.words.empty()) {
    std::string list;
    for (std::string const& word : field.words) {
      if (word == text) return "";
      list += (list.empty() ? "" : ", ") + word;
    }
    return "expected one of " + list;
  }
  if (field.kind == FieldKind::kFlag) return text == "0" || text == "1" ? "" : "expected 0 or 1";
  if (field.kind == FieldKind::kPassword) {
    std::string encoded = text;
    return FieldFault(field, text.empty() ? text : DecodeBase64ToStr(encoded));
  }
  if (field.kind == FieldKind::kNumber || field.kind == FieldKind::kDate) {
    field.lowest /= field.step;
    field.highest /= field.step;
    field.step = 1;
    // The library accepts blanks around a number, a sign and leading zeros.
    long const number = StrToIntDef(text, 0);
    return FieldFault(field, number == StrToIntDef(text, 1) ? std::to_string(number) : "");
  }
  return FieldFault(field, text);
}

class Checker {
 public:
  Checker(std::string const& path, KeyLines const& lines, Terminal const& terminal, std::vector<Finding>& findings)
      : file_(ExtractFileName(path)), lines_(lines), terminal_(terminal), findings_(findings) {}

  void Records(std::vector<Kind> const& kinds) {
    std::map<std::string, std::vector<std::string>> known;  // keys by section
    std::set<std::pair<std::string, std::string>> seen;     // a key that two fields share is reported once
    for (Kind const& kind : kinds)
      for (Field const& field : kind.fields) {
        if (!IsIn(field, file_) || field.key == nullptr || field.key == std::string(kFirstKey)) continue;
        known[field.section].emplace_back(field.key);
        if (seen.insert({field.section, field.key + std::to_string(field.part)}).second) Value(kind, field);
      }
    bool const isProducts = !known.empty() || isList_;
    for (auto const& [place, line] : lines_) {
      if (isProducts && place.first.empty())
        Add(line, "unknown-key", "no program reads " + place.second + " before the first header");
      auto const keys = known.find(place.first);
      if (keys == known.end()) continue;
      if (std::find(keys->second.begin(), keys->second.end(), place.second) == keys->second.end())
        Add(line, "unknown-key",
            "no program reads " + place.second + " of [" + place.first + "]" + DidYouMean(place.second, keys->second));
    }
  }

  // Entries of a list: numbered keys whose values have a fixed number of fields.
  void Entries(char const* file, std::string const& section, std::vector<Field> const& fields, char const* shape) {
    if (file_ != file) return;
    isList_ = true;
    for (auto const& [place, line] : lines_) {
      if (place.first != section) continue;
      if (!TextFault(kEntryKey, place.second).empty())
        Add(line, "value", place.second + " of [" + section + "]: expected a number as key; the programs use 0");
      std::vector<std::string> const parts = Parts(line.value);
      if (parts.size() != fields.size()) {
        Add(line, "fields", Assignment(place.second, line.value) + ": expected " + shape);
        continue;
      }
      for (std::size_t i = 0; i < fields.size(); i++) {
        std::string const fault = TextFault(fields[i], parts[i]);
        if (!fault.empty())
          Add(line, "value", Assignment(place.second, line.value) + ": " + fields[i].name + ": " + fault);
      }
    }
  }

  void Fault(std::string const& section, std::string const& key, std::string const& reason) {
    auto const line = lines_.find({section, key});
    if (line != lines_.end()) Add(line->second, "fields", Assignment(key, line->second.value) + ": " + reason);
  }

 private:
  static std::vector<std::string> Parts(std::string const& value) {
    std::vector<std::string> parts = {""};
    for (char const c : value)
      if (c == ';')
        parts.emplace_back();
      else
        parts.back() += c;
    return parts;
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

  void Value(Kind const& kind, Field const& field) {
    auto const found = lines_.find({field.section, field.key});
    if (found == lines_.end()) return;
    KeyLine const& line = found->second;
    std::string text = line.value;
    if (field.part >= 0) {
      constexpr std::size_t kParts = 3;
      std::vector<std::string> const parts = Parts(text);
      if (parts.size() != kParts && field.part == 0)
        Add(line, "fields", Assignment(field.key, text) + ": expected NAME;ADDRESS;PORT");
      if (parts.size() != kParts) return;
      text = parts[static_cast<std::size_t>(field.part)];
    }
    std::string const fault = TextFault(field, text);
    if (fault.empty()) return;
    std::string const taken = kind.read && field.kind != FieldKind::kPassword
                                  ? "; the programs use " + InFile(field, field.get(kind.record.get()))
                                  : "";
    Add(line, "value", Assignment(field.key, line.value) + ": " + fault + taken);
  }

  static Field const kEntryKey;

  std::string file_;
  bool isList_ = false;
  KeyLines const& lines_;
  Terminal const& terminal_;
  std::vector<Finding>& findings_;
};

struct Entry {
  std::int32_t number;
  char text[256];
};

Field const Checker::kEntryKey = Number<&Entry::number>("key", "");

// A field of an entry, described by its limits alone.
Field LimitedText(char const* name, std::int64_t most) {
  Field field = Text<&Entry::text>(name, "");
  field.highest = most;
  return field;
}

Field LimitedNumber(char const* name, std::int64_t highest, std::int64_t lowest = 0) {
  return Number<&Entry::number>(name, "", highest, lowest);
}

void CheckLists(std::string const& path, Checker& checker) {
  checker.Entries("upscli.cfg", "CLILIST",
                  {LimitedText("name", 20), LimitedText("address", 15), LimitedNumber("port", kHighestPort)},
                  "NAME;ADDRESS;PORT");
  checker.Entries("upstype.cfg", "UPSTYPE",
                  {LimitedText("name", 40), LimitedText("driver", 20), LimitedText("module", 20),
                   LimitedText("module", 20), LimitedNumber("model", INT16_MAX, -1)},
                  "NAME;DRIVER;MODULE;MODULE;MODEL");
  checker.Entries("usbhid.cfg", "USBHID", {LimitedNumber("device", kHighestNumber)}, "a number");
  checker.Entries("srvlist.cfg", "SRVLIST", {LimitedNumber("unit", 99)}, "the number of a unit");
  if (ExtractFileName(path) != "zelbrws.cfg") return;
  Handle const list = OpenHandle(path, OpenBrwsList(path.c_str()), CloseBrwsList);
  for (BrowseFault const& fault : BrowseTree(list.get(), path).faults)
    checker.Fault(SectionOf(fault.kind), fault.key, fault.reason);
}

}  // namespace

void CheckValues(std::string const& path, KeyLines const& lines, Terminal const& terminal,
                 std::vector<Finding>& findings) {
  Checker checker(path, lines, terminal, findings);
  CheckLists(path, checker);
  // A copy, in a directory where the programs find no other file.
  Rehearsal const rehearsal({{path}, {}}, terminal);
  std::string const copy = At(path);
  std::string const folder = ExtractFilePath(copy);
  setenv("HOME", folder.c_str(), 1);
  if (SetZelvanePath(folder.c_str()) == 0) throw std::bad_alloc();
  checker.Records(ReadKinds(folder));
}
