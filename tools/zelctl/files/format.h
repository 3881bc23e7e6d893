// What the configuration files can hold, and in what state a file is.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_FORMAT_H

#include <functional>
#include <string>

struct Terminal;

// Why a text would not come back from a file as it was written, in words; "" when it would.
std::string ValueFault(std::string const& value);
std::string KeyFault(std::string const& key);
std::string SectionFault(std::string const& section);

// Whether a key of this name holds a password.
bool IsPasswordKey(std::string const& key);

struct FileState {
  bool exists;
  long badLine;  // the line that stops the parser; 0 when all lines load
};

// Throws Failed when the file is there but cannot be read.
FileState InspectFile(std::string const& path);

// Whether the file, which need not exist, has the key.
bool HasKey(std::string const& path, std::string const& section, std::string const& key);

// Lets `remove` take a key away. Throws Failed when the file has no such key before it, or still has one after it.
void RemoveKey(std::string const& path, std::string const& section, std::string const& key,
               std::function<void()> const& remove);

// For commands that write: throws Failed when the file cannot be read, or, unless `force`, when it has a line that
// stops the parser, because a save would drop all lines below it.
void RequireWholeLoad(std::string const& path, bool force);

// For commands that read: a remark when the file does not exist, with what follows from that, or when its load stops.
void NoteState(std::string const& path, std::string const& whenMissing, Terminal const& terminal);

// What to tell a reader of a file whose load stops at `line`.
std::string StoppedAt(std::string const& path, long line);

#endif
