// Files that the exported functions change, and the one that belongs to the user.
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
  kCreate,  // all changes at the end, in a new file: one that is there, or appears meanwhile, stays and is a failure
};

// Opens `path` as a File (CfgClass or RegCfgClass), or starts it anew when it does not exist, and lets `body(file)`
// change it. True when `body` returned true and all its changes are in the file. What is not in the file when this
// returns or throws is dropped: the engine would save it on destruction. A file to which `body` writes nothing is
// neither created nor written; one that exists but cannot be read refuses every write. Throws as OpenOrThrow does.
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

// The calling user's own settings, a RegCfgClass: ".zelvane" in the home folder, or "~.zelvane" in the current one
// without HOME.
inline std::string UserSettingsPath() { return GetUserPath(UserPathHome, false) + ".zelvane"; }

}  // namespace zelvane::internal

#endif
