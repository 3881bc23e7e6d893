// Files that a command makes for people: a picture, a page. They never replace a file that was not to be replaced.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_PICTUREFILE_H

#include <string>

#include "terminal/option.h"

struct PictureFile {
  std::string path;  // "" when none was asked for
  bool overwrite = false;

  explicit operator bool() const { return !path.empty(); }

  // --overwrite and the option `name`.
  Options Asked(char const* name, char const* help);
  // Throws Failed when the file is there and --overwrite was not given: to be called before the work is done.
  void RequireFree() const;
  // Whole or not at all. Throws Failed.
  void Write(std::string const& bytes) const;
};

#endif
