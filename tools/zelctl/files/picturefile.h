// Pictures and pages that a command writes. Existing files are replaced only with --overwrite.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H

#include <cstddef>
#include <string>

#include "files/output.h"
#include "terminal/json.h"
#include "terminal/option.h"

struct Terminal;

struct PictureFile {
  std::string path;  // "" if not requested
  Replacing replacing;
  bool dryRun = false;

  explicit operator bool() const { return !path.empty(); }

  // --overwrite, --dry-run, and the option `name`.
  Options Asked(char const* name, char const* help);
  // Throws Failed if the file exists and --overwrite was not given, or if it has the name of one of the programs'
  // files. Throws WrongUsage if it is `source`, the file that the picture shows ("" for none). Call this before the
  // work is done.
  void RequireFree(std::string const& source) const;
  // Atomic; with --dry-run only checks that the file can be written. Throws Failed.
  void Write(std::string const& bytes) const;
  // Reports the file. `counted` is what it shows, in words and as members of the row for --json and --csv.
  void Tell(std::string const& counted, Json::Object const& members, std::size_t bytes, Terminal const& terminal) const;
};

#endif
