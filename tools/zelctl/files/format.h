// What the configuration files can hold, and in what state a file is.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H

#include <string>

struct Terminal;

// Why a text would not come back from a file as it was written, in words; "" when it would.
std::string ValueFault(std::string const& value);
std::string KeyFault(std::string const& key);
std::string SectionFault(std::string const& section);

// Whether a key of this name holds a password.
bool IsPasswordKey(std::string const& key);
// The line, trimmed, without the value of a key that holds a password.
std::string WithoutPassword(std::string const& line, bool showPasswords);

// "FILE: cannot read: REASON", and the same for a write: the system's reason, or `error` where a look at the file and
// its directory shows none.
std::string CannotRead(std::string const& path, int error = 0);
std::string CannotWrite(std::string const& path, int error = 0);

struct FileState {
  bool exists;
  long badLine;  // the line that stops the parser; 0 when all lines load
};

// Throws Failed when the file is there but cannot be read.
FileState InspectFile(std::string const& path);

// The system's settings, and whether they name an installation root.
extern char const kSettingsFile[];
bool HasRootSetting();

// Whether the file, which need not exist, has the key.
bool HasKey(std::string const& path, std::string const& section, std::string const& key);

// For commands that write: throws Failed when the file cannot be read, or, unless `force`, when it has a line that
// stops the parser, because a save would drop all lines below it.
void RequireWholeLoad(std::string const& path, bool force);

// For commands that read: a remark when the file does not exist, with what follows from that, or when its load stops.
void NoteState(std::string const& path, std::string const& whenMissing, Terminal const& terminal);

// What to tell a reader of a file whose load stops at `line`.
std::string StoppedAt(std::string const& path, long line);

#endif
