#include "files/picturefile.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <filesystem>

#include "files/output.h"
#include "terminal/terminal.h"

CLI::Option* PictureFile::AddTo(CLI::App* command, std::string const& description, char const* name) {
  command->add_flag("--overwrite", overwrite, "Replace the file if it is there");
  return command->add_option(name, path, description)->type_name("FILE");
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
