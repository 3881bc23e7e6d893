#include "files/scratch.h"

#include <errno.h>
#include <stdlib.h>

#include <filesystem>

#include "files/format.h"
#include "terminal/terminal.h"

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
  std::error_code error;
  fs::path const place = fs::temp_directory_path(error);
  if (error) throw Failed("no directory for temporary files (TMPDIR): " + error.message());
  path_ = place / "zelctl-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw Failed(CannotWrite(path_, errno));
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  // The owner may lack permissions on a new unit's directory.
  for (fs::recursive_directory_iterator each(path_, ignored), end; !ignored && each != end; each.increment(ignored))
    if (each->is_directory(ignored) && !each->is_symlink(ignored))
      fs::permissions(each->path(), fs::perms::owner_all, ignored);
  fs::remove_all(path_, ignored);
}
