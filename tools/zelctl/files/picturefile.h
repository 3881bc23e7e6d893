// Pictures and pages that a command writes. Existing files are replaced only with --overwrite.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H

#include <string>

#include "terminal/option.h"

struct PictureFile {
  std::string path;  // "" if not requested
  bool overwrite = false;

  explicit operator bool() const { return !path.empty(); }

  // --overwrite, and the option `name`.
  Options Asked(char const* name, char const* help);
  // Throws Failed if the file exists and --overwrite was not given, and WrongUsage if it is `source`, the file that the
  // picture shows ("" for none). Call this before the work is done.
  void RequireFree(std::string const& source) const;
  // Atomic. Throws Failed.
  void Write(std::string const& bytes) const;
};

#endif
