#include "report/options.h"

#include <errno.h>
#include <sys/stat.h>

#include "files/input.h"
#include "records/fields.h"
#include "terminal/terminal.h"
#include "zelvane/config/paths.h"

Options OutageOptions::Asked(bool required) {
  char const* const end = required ? "Codes that end an outage" : "Codes that end an outage; default: 2";
  char const* const start = required ? "Code that begins an outage" : "Code that begins an outage; default: 1";
  return {Value("--start", &start_, "N", start).Required(required),
          Value("--end", &ends_, "A,B", end).Separated().Required(required)};
}

OutageCodes OutageOptions::Codes() const {
  constexpr std::int64_t kHighest = 65535;
  OutageCodes codes = {static_cast<std::uint16_t>(NumberArgument("--start", start_, 0, kHighest)), {}};
  for (std::string const& end : ends_) {
    codes.ends.push_back(static_cast<std::uint16_t>(NumberArgument("--end", end, 0, kHighest)));
    if (codes.ends.back() == codes.start) throw WrongUsage("--end: " + end + " is the code that begins an outage");
  }
  return codes;
}

std::string RequireRoot() {
  std::string root = GetZelvanePath();
  if (root.empty()) throw Failed("installation root is unknown; use --root DIR");
  struct stat folder = {};
  if (stat(root.c_str(), &folder) != 0) throw FileFailed(root);
  if (!S_ISDIR(folder.st_mode)) throw FileFailed(root, ENOTDIR);
  return root;
}
