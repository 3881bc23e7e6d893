#include "files/picturefile.h"

#include <sys/stat.h>

#include "terminal/listing.h"
#include "terminal/terminal.h"

Options PictureFile::Asked(char const* name, char const* help) {
  return {Flag("--overwrite", &replacing.any, "Replace the file if it exists"),
          Flag("--dry-run", &dryRun, "Write nothing; show what would be written").Needs(name),
          Value(name, &path, "FILE", help)};
}

void PictureFile::RequireFree(std::string const& source) const {
  struct stat from = {};
  if (!source.empty() && stat(source.c_str(), &from) == 0) RequireWritable(path, from, replacing);
  RequireNew(path, replacing);
}

void PictureFile::Write(std::string const& bytes) const {
  struct stat const noSource = {};
  if (dryRun) return RequireWritable(path, noSource, replacing);
  Output file(path, noSource, replacing);
  file.Write(bytes.data(), bytes.size());
  file.Keep();
}

void PictureFile::Tell(std::string const& counted, Json::Object const& members, std::size_t bytes,
                       Terminal const& terminal) const {
  Json::Object row = {{"file", FileName{path}}};
  row.insert(row.end(), members.begin(), members.end());
  row.push_back({"bytes", bytes});
  row.push_back({"written", !dryRun});
  if (!PrintMachineRow(terminal, row))
    terminal.PrintNames(path + ": " + counted + ", " + Counted(bytes, "byte") + (dryRun ? " would be written" : ""));
}
