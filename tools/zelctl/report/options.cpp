#include "report/options.h"

#include <errno.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>

#include "files/input.h"
#include "records/fields.h"
#include "terminal/terminal.h"
#include "zelvane/config/paths.h"

void OutageOptions::AddTo(CLI::App* command, bool required) {
  std::string const otherwise = required ? "" : "; 1 if not given";
  CLI::Option* const start = command->add_option("--start", start_, "Code that begins an outage" + otherwise);
  CLI::Option* const end =
      command->add_option("--end", ends_, required ? "Codes that end it" : "Codes that end it; 2 if not given");
  start->type_name("N")->required(required);
  end->type_name("A,B")->required(required)->delimiter(',')->allow_extra_args(false);
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
  if (root.empty()) throw Failed("no installation root is known; --root names one");
  struct stat folder = {};
  if (stat(root.c_str(), &folder) != 0) throw FileFailed(root);
  if (!S_ISDIR(folder.st_mode)) throw FileFailed(root, ENOTDIR);
  return root;
}
