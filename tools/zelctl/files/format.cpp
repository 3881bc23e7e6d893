#include "files/format.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "files/damage.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

bool Has(std::string const& text, char const* any) { return text.find_first_of(any) != std::string::npos; }

}  // namespace

std::string ValueFault(std::string const& value) {
  if (value.find('\0') != std::string::npos) return "contains a NUL byte";
  if (Has(value, "\n")) return "contains a line feed";
  if (Has(value, "[]")) return "contains '[' or ']', which the file format does not allow";
  if (Trim(value) != value) return "starts or ends with a blank, which the file does not keep";
  return "";
}

std::string KeyFault(std::string const& key) {
  if (key.empty()) return "is empty";
  if (Has(key, "=")) return "contains '='";
  if (Has(key.substr(0, 1), ";#'")) return "starts with ';', '#' or \"'\", which makes the line a comment";
  return ValueFault(key);
}

std::string SectionFault(std::string const& section) { return ValueFault(section); }

bool IsPasswordKey(std::string const& key) { return AnsiUpperCase(key).find("PASSWORD") != std::string::npos; }

std::string WithoutPassword(std::string const& line, bool showPasswords) {
  std::string const text = Trim(line);
  std::size_t const equals = text.find('=');
  bool const hide = !showPasswords && IsPasswordKey(text.substr(0, equals));
  return hide && equals != std::string::npos ? text.substr(0, equals + 1) + " " + kHiddenPassword : text;
}

std::string CannotRead(std::string const& path, int error) {
  int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) error = errno;
  if (file >= 0) close(file);
  return path + ": cannot read" + (error == 0 ? "" : std::string(": ") + strerror(error));
}

std::string CannotWrite(std::string const& path, int error) {
  std::string const folder = ExtractFilePath(path);
  bool const exists = access(path.c_str(), F_OK) == 0;
  if ((exists && access(path.c_str(), W_OK) != 0) || access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) != 0)
    error = errno;
  return path + ": cannot write" + (error == 0 ? "" : std::string(": ") + strerror(error));
}

int FolderFault(std::string const& path) {
  struct stat folder = {};
  if (stat(path.c_str(), &folder) != 0) return errno;
  if (!S_ISDIR(folder.st_mode)) return ENOTDIR;
  return access(path.c_str(), X_OK) == 0 ? 0 : errno;
}

FileState InspectFile(std::string const& path) {
  struct stat file = {};
  if (stat(path.c_str(), &file) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return {false, 0};
    throw Failed(CannotRead(path, errno));
  }
  if (S_ISDIR(file.st_mode)) throw Failed(CannotRead(path, EISDIR));
  // The engine reads nothing from pipes and devices.
  if (!S_ISREG(file.st_mode)) throw Failed(path + ": not a regular file");
  CfgClass cfg;
  errno = 0;
  if (!cfg.OpenReadOnly(path)) throw Failed(CannotRead(path, errno));
  return {true, cfg.GetErrorLine()};
}

char const kSettingsFile[] = "/etc/zelvane.conf";

bool HasRootSetting() {
  CfgClass settings;
  return settings.OpenReadOnly(kSettingsFile) && !settings.ReadStr("ZELVANE", "PATH", "").empty();
}

bool HasKey(std::string const& path, std::string const& section, std::string const& key) {
  CfgClass cfg;
  return cfg.OpenReadOnly(path) && cfg.KeyExists(section, key);
}

std::string BinaryFault(std::string const& bytes) {
  if (bytes.find('\0') != std::string::npos) return "contains NUL bytes";
  std::int32_t last = kYear1990;
  std::int32_t entry = 0;
  if (bytes.empty() || bytes.size() % sizeof entry != 0) return "";
  for (std::size_t at = 0; at < bytes.size(); at += sizeof entry, last = entry) {
    memcpy(&entry, bytes.data() + at, sizeof entry);
    if (entry < last) return "";
  }
  return "contains the dates of a schedule";
}

void RequireWholeLoad(std::string const& path, bool force) {
  FileState const state = InspectFile(path);
  std::string const fault = state.exists && !force ? BinaryFault(ReadText(path)) : "";
  if (!fault.empty())
    throw Failed(path + ": not a text file: " + fault + "; use --force to save it anyway (the old file is copied to " +
                 path + ".lost)");
  if (state.badLine != 0 && !force)
    throw Failed(StoppedAt(path, state.badLine) + ", and a save drops them. Run `zelctl cfg lint " + path +
                 "` to list them, or use --force (the old file is copied to " + path + ".lost)");
}

void NoteState(std::string const& path, std::string const& whenMissing, Terminal const& terminal) {
  FileState const state = InspectFile(path);
  if (!state.exists) terminal.Note(path + ": no such file; " + whenMissing);
  if (state.badLine != 0) terminal.Note(StoppedAt(path, state.badLine));
}

std::string StoppedAt(std::string const& path, long line) {
  return path + ":" + std::to_string(line) + ": syntax error: the lines below are not read";
}
