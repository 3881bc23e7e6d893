// What configuration files can store, and the state of a file.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H

#include <string>

struct Terminal;

// Why a text would not read back from a file unchanged, in words; "" if it would.
std::string ValueFault(std::string const& value);
std::string KeyFault(std::string const& key);
std::string SectionFault(std::string const& section);

// Whether a key with this name stores a password.
bool IsPasswordKey(std::string const& key);
// The trimmed line, without the value if it is a password.
std::string WithoutPassword(std::string const& line, bool showPasswords);

// "FILE: cannot read: REASON", and the same for a write. REASON is the system's, or that of `error` if a check of the
// file and its directory finds none.
std::string CannotRead(std::string const& path, int error = 0);
std::string CannotWrite(std::string const& path, int error = 0);

// Why the directory cannot be used, as an error number of the system; 0 if it can.
int FolderFault(std::string const& path);

struct FileState {
  bool exists;
  long badLine;  // the line at which the load stops; 0 if all lines load
};

// Throws Failed if the file exists but cannot be read.
FileState InspectFile(std::string const& path);

// The system-wide settings, and whether they name an installation root.
extern char const kSettingsFile[];
bool HasRootSetting();

// Whether the file has the key. False if the file is missing.
bool HasKey(std::string const& path, std::string const& section, std::string const& key);

// Why the bytes are a log, a schedule or another binary file, which a change would damage; "" for text.
std::string BinaryFault(std::string const& bytes);

// For commands that write: throws Failed if the file cannot be read or, unless `force`, if it is binary or its load
// stops at a bad line. A save would drop all lines after that one.
void RequireWholeLoad(std::string const& path, bool force);

// For commands that read: a remark if the file is missing (with the consequence), or if its load stops.
void NoteState(std::string const& path, std::string const& whenMissing, Terminal const& terminal);

// The message for a file whose load stops at `line`.
std::string StoppedAt(std::string const& path, long line);

#endif
