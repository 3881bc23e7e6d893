#include "files/picturefile.h"

#include <sys/stat.h>

#include <filesystem>

#include "files/output.h"
#include "terminal/terminal.h"

Options PictureFile::Asked(char const* name, char const* help) {
  return {Flag("--overwrite", &overwrite, "Replace the file if it is there"), Value(name, &path, "FILE", help)};
}

void PictureFile::RequireFree() const {
  namespace fs = std::filesystem;
  std::error_code none;
  if (!overwrite && fs::symlink_status(path, none).type() != fs::file_type::not_found)
    throw Failed(path + ": is there already; --overwrite replaces it");
}

void PictureFile::Write(std::string const& bytes) const {
  RequireFree();
  struct stat const noSource = {};
  Output file(path, noSource);
  file.Write(bytes.data(), bytes.size());
  file.Keep();
}
