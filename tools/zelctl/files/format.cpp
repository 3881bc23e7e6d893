#include "files/format.h"

#include <filesystem>

#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

bool Has(std::string const& text, char const* any) { return text.find_first_of(any) != std::string::npos; }

}  // namespace

std::string ValueFault(std::string const& value) {
  if (value.find('\0') != std::string::npos) return "a NUL byte ends the text";
  if (Has(value, "\n")) return "a line feed cannot stand in a line of the file";
  if (Has(value, "[]")) return "'[' or ']' would make the line a syntax error";
  if (Trim(value) != value) return "blanks at either end are not kept by the file";
  return "";
}

std::string KeyFault(std::string const& key) {
  if (key.empty()) return "a key needs a name";
  if (Has(key, "=")) return "'=' ends the name of a key";
  if (Has(key.substr(0, 1), ";#'")) return "';', '#' or \"'\" in front makes the line a comment";
  return ValueFault(key);
}

std::string SectionFault(std::string const& section) { return ValueFault(section); }

bool IsPasswordKey(std::string const& key) { return AnsiUpperCase(key).find("PASSWORD") != std::string::npos; }

FileState InspectFile(std::string const& path) {
  using std::filesystem::file_type;
  std::error_code error;
  file_type const type = std::filesystem::status(path, error).type();
  if (type == file_type::not_found) return {false, 0};
  CfgClass cfg;
  if (cfg.OpenReadOnly(path)) {
    // Of pipes and devices the engine reads nothing.
    if (type != file_type::regular) throw Failed(path + ": not a file");
    return {true, cfg.GetErrorLine()};
  }
  throw Failed(path + ": cannot be read");
}

bool HasKey(std::string const& path, std::string const& section, std::string const& key) {
  CfgClass cfg;
  return cfg.OpenReadOnly(path) && cfg.KeyExists(section, key);
}

void RemoveKey(std::string const& path, std::string const& section, std::string const& key,
               std::function<void()> const& remove) {
  std::string const name = "[" + section + "] " + key;
  if (!HasKey(path, section, key)) throw Failed(path + ": no key " + name);
  remove();
  if (HasKey(path, section, key))
    throw Failed(path + ": " + name + " stays: the file cannot be written, or a line that repeats it counts now");
}

void RequireWholeLoad(std::string const& path, bool force) {
  FileState const state = InspectFile(path);
  if (state.badLine != 0 && !force)
    throw Failed(StoppedAt(path, state.badLine) + ", and a save drops those lines; `zelctl cfg lint` names them, " +
                 "--force saves all the same (the file as it was is kept as " + path + ".lost)");
}

void NoteState(std::string const& path, std::string const& whenMissing, Terminal const& terminal) {
  FileState const state = InspectFile(path);
  if (!state.exists) terminal.Note(path + " does not exist: " + whenMissing);
  if (state.badLine != 0) terminal.Note(StoppedAt(path, state.badLine));
}

std::string StoppedAt(std::string const& path, long line) {
  return path + ":" + std::to_string(line) + ": syntax error: lines below this one are not read";
}
