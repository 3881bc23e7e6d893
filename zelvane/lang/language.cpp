#include "zelvane/lang/language.h"

#include <cstring>
#include <memory>
#include <string>

#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/lang/langclass.h"

using zelvane::internal::Guard;
using zelvane::internal::InstallationRoot;

namespace {

constexpr char kFileName[] = "zellang.cfg";

struct Tables {
  LangClass user;
  LangClass system;
};

Tables* Of(void* handle) { return static_cast<Tables*>(handle); }

}  // namespace

void* OpenLang(long lang) {
  return Guard<void*>(nullptr, [lang] {
    auto tables = std::make_unique<Tables>();
    tables->user.SetFileName(GetUserPath(UserPathHome) + "." + kFileName);
    tables->system.SetFileName(InstallationRoot() + kFileName);
    tables->user.LoadStrings(lang);
    tables->system.LoadStrings(lang);
    return tables.release();
  });
}

void CloseLang(void* handle) { delete Of(handle); }

char const* GetLangStr(void* handle, long id) {
  if (handle == nullptr) return nullptr;
  std::string const& own = Of(handle)->user.GetLangStr(id);
  return own.empty() ? GetSystemLangStr(handle, id) : own.c_str();
}

char const* GetSystemLangStr(void* handle, long id) {
  return handle == nullptr ? nullptr : Of(handle)->system.GetLangStr(id).c_str();
}

unsigned long GetLangCount(void* handle) {
  if (handle == nullptr) return 0;
  return Guard(0UL, [&] { return Of(handle)->system.GetLangCount(); });
}

int GetLangDesc(void* handle, long lang, char* destination, unsigned long length) {
  if (handle == nullptr || destination == nullptr) return 0;
  return Guard(0, [&] {
    if (length == 0) return 1;
    std::strncpy(destination, Of(handle)->system.GetLangDesc(lang).c_str(), length);
    destination[length - 1] = '\0';
    return 1;
  });
}

int SetLangStr(void* handle, long id, char const* text) {
  if (handle == nullptr || text == nullptr) return 0;
  return Guard(0, [&] {
    std::string const copy = text;  // it can be in the user's table, which is gone at the second attempt
    return Of(handle)->user.SetLangStr(id, copy) || Of(handle)->system.SetLangStr(id, copy) ? 1 : 0;
  });
}
