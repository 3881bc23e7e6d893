#include "records/keylines.h"

#include <algorithm>

#include "zelvane/config/cfgclass.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

// Watches the engine during a load.
class Listener final : public CfgClass {
 public:
  bool ParseLine(std::string const& line, bool noLines) override {
    line_++;
    return CfgClass::ParseLine(line, noLines);
  }

  bool LocateSection(std::string const& name, SectionPosition* position) override {
    section_ = AnsiUpperCase(name);
    return CfgClass::LocateSection(name, position);
  }

  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    section_ = AnsiUpperCase(name);
    return CfgClass::InsertSection(name, line, create);
  }

  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    lines_[{section_, AnsiUpperCase(key)}] = {line_, value};
    return CfgClass::InsertKey(key, value, section, previous, line, create);
  }

  KeyLines const& Lines() const { return lines_; }

 private:
  long line_ = 0;
  std::string section_;
  KeyLines lines_;
};

}  // namespace

KeyLines ReadKeyLines(std::string const& path) {
  Listener listener;
  listener.OpenReadOnly(path);
  return listener.Lines();
}

std::string KeyOf(Field const& field, void const* record, KeyLines const& lines) {
  if (field.keyOf != nullptr) return field.keyOf(record);
  if (field.key == nullptr || std::string(field.key) != kFirstKey) return field.key == nullptr ? "" : field.key;
  auto const first = lines.lower_bound({field.section, ""});
  return first == lines.end() || first->first.first != field.section ? "" : first->first.second;
}

bool IsIn(Field const& field, std::string const& fileName) {
  static std::string const kModel = "upscfg";
  if (field.file == nullptr) return false;
  return field.file == kModel ? fileName.compare(0, kModel.size(), kModel) == 0 : fileName == field.file;
}

std::vector<std::string> Origins(std::vector<Field> const& fields, void const* record,
                                 std::vector<std::string> const& files) {
  std::map<std::string, KeyLines> lines;
  for (std::string const& file : files) lines[ExtractFileName(file)] = ReadKeyLines(file);
  std::vector<std::string> origins;
  for (Field const& field : fields) {
    auto const file =
        std::find_if(lines.begin(), lines.end(), [&field](auto const& each) { return IsIn(field, each.first); });
    std::string origin = "default";
    if (file != lines.end()) {
      auto const found = file->second.find({field.section, KeyOf(field, record, file->second)});
      if (found != file->second.end()) origin = file->first + ":" + std::to_string(found->second.line);
    }
    origins.push_back(origin);
  }
  return origins;
}
