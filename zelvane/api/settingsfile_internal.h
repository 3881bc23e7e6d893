// Files that the plain C functions change, and the file of the current user.
#ifndef ZELVANE_API_SETTINGSFILE_INTERNAL_H
#define ZELVANE_API_SETTINGSFILE_INTERNAL_H

#include <string>
#include <utility>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/core/fileutils.h"

namespace zelvane::internal {

enum class Saving {
  kOnce,        // all changes at the end, together or not at all
  kEachChange,  // every change as it is made
  kCreate,      // all changes at the end, in a new file; fails if the file exists or appears meanwhile, and keeps it
};

// Opens `path` as a File (CfgClass or RegCfgClass), or starts it empty if it does not exist, and lets `body(file)`
// change it. Returns true if `body` returned true and all its changes are in the file. Changes that are not in the file
// when this returns or throws are dropped: the engine would save them on destruction. If `body` writes nothing, the
// file is neither created nor written. A file that exists but cannot be read fails every write. Throws as OpenOrThrow
// does.
template <class File, class Body>
bool ChangeFile(std::string const& path, Saving saving, Body&& body) {
  struct Forget {
    OptionalFile<File>& file;
    ~Forget() { file.ForgetChanges(); }
  };
  OptionalFile<File> file;
  Forget const forget{file};
  file.SetCached(saving != Saving::kEachChange);
  file.OpenOrThrow(path, false);
  if (saving == Saving::kCreate) {
    if (!file.IsMissing()) return false;
    file.SaveOnlyNew();
  }
  return std::forward<Body>(body)(static_cast<CfgClass&>(file)) && file.FlushCache();
}

// The current user's own settings, a RegCfgClass: ".zelvane" in the home directory, or "~.zelvane" in the current
// directory without HOME.
inline std::string UserSettingsPath() { return GetUserPath(UserPathHome, false) + ".zelvane"; }

}  // namespace zelvane::internal

#endif
