#include "zelvane/lang/langclass.h"

#include <cstring>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::OptionalCfg;

namespace {

constexpr char kLanguages[] = "LANG";
constexpr std::int32_t kNoLanguage = -1;

// The next load stops at a line with brackets, and a line feed would start a new line.
bool FitsInFile(char const* text) { return text[std::strcspn(text, "[]\r\n")] == '\0'; }

}  // namespace

LangClass::LangClass() = default;

LangClass::~LangClass() = default;

void LangClass::SetFileName(std::string const& name) { SetFileName(name.c_str()); }

void LangClass::SetFileName(char const* name) { fileName_ = name == nullptr ? "" : name; }

unsigned long LangClass::GetLangCount() {
  if (fileName_.empty()) return 0;
  OptionalCfg file;
  file.SetFileName(fileName_.c_str(), false);
  return file.GetKeyCount(kLanguages);
}

std::string LangClass::GetLangDesc(long lang) {
  if (fileName_.empty()) return "";
  OptionalCfg file;
  file.SetFileName(fileName_.c_str(), false);
  return file.ReadStr(kLanguages, IntToStr(lang), "");
}

bool LangClass::LoadStrings(long lang) {
  ClearStrings();
  if (fileName_.empty()) return false;
  lang_ = static_cast<std::int32_t>(lang);
  OptionalCfg file;
  file.SetFileName(fileName_.c_str(), false);
  std::string const section = IntToStr(lang);
  if (!file.SectionExists(section)) return false;
  unsigned long const count = file.GetKeyCount(section);
  for (unsigned long i = 0; i < count; i++) {
    std::string const key = file.GetKeyName(section, i);
    long const id = StrToIntDef(key, -1);
    if (id >= 0) strings_.try_emplace(static_cast<std::int32_t>(id), file.ReadStr(section, key, ""));
  }
  description_ = file.ReadStr(kLanguages, section, "");
  return true;
}

void LangClass::ClearStrings() {
  lang_ = kNoLanguage;
  description_.clear();
  strings_.clear();
}

std::string const& LangClass::GetLangStr(long id) {
  auto const found = strings_.find(static_cast<std::int32_t>(id));
  return found == strings_.end() ? none_ : found->second;
}

bool LangClass::SetLangStr(long id, std::string const& text, long lang) { return SetLangStr(id, text.c_str(), lang); }

bool LangClass::SetLangStr(long id, char const* text, long lang) {
  if (fileName_.empty() || text == nullptr || !FitsInFile(text)) return false;
  {
    OptionalCfg file;
    file.SetFileName(fileName_.c_str(), false);
    if (!file.WriteStr(IntToStr(lang).c_str(), IntToStr(id).c_str(), text)) {
      file.ForgetChanges();  // the destructor would save them in spite of the result
      return false;
    }
  }
  if (static_cast<std::int32_t>(lang) != lang_) return true;
  ClearStrings();
  return LoadStrings(lang);
}

bool LangClass::SetLangStr(long id, std::string const& text) { return SetLangStr(id, text.c_str()); }

bool LangClass::SetLangStr(long id, char const* text) {
  return lang_ != kNoLanguage && SetLangStr(id, text, static_cast<long>(lang_));
}
