#include "files/picturefile.h"

#include <sys/stat.h>

#include "files/output.h"
#include "terminal/terminal.h"

Options PictureFile::Asked(char const* name, char const* help) {
  return {Flag("--overwrite", &overwrite, "Replace the file if it exists"), Value(name, &path, "FILE", help).Filled()};
}

void PictureFile::RequireFree(std::string const& source) const {
  struct stat from = {};
  if (!source.empty() && stat(source.c_str(), &from) == 0) RequireWritable(path, from, overwrite);
  RequireNew(path, overwrite);
}

void PictureFile::Write(std::string const& bytes) const {
  struct stat const noSource = {};
  Output file(path, noSource, overwrite);
  file.Write(bytes.data(), bytes.size());
  file.Keep();
}
