// Symbolic file names, and operations on file names.
#include "fuzz.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  std::string rest = fuzz::Text(data, size);
  std::string const folder = fuzz::Take(rest, rest.empty() ? 0 : static_cast<unsigned char>(rest[0]) % 20).c_str();
  std::string const name = rest.c_str();
  std::string const path = ParseMacroFileName(name, folder);
  if (name.compare(0, 2, "//") != 0) fuzz::Check(path == name, "what is no symbol stays");
  fuzz::Check(path == ParseMacroFileName(name.c_str(), folder.c_str()), "both forms");
  fuzz::Check(ExtractFilePath(name) + ExtractFileName(name) == name, "path and name");
  fuzz::Check(ExcludePathDelimiter(IncludePathDelimiter(name)) ==
                  (name.empty() || name.back() != '/' ? name : name.substr(0, name.size() - 1)),
              "delimiter and back");
  fuzz::Check(ExtractFileExt(ChangeFileExt(name, "ext")) == "ext", "extension");
  return 0;
}
