// Records of settings as tables of fields: one table a record, from which `show`, `set` and `defaults` are made.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_RECORD_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_RECORD_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "commands/command.h"
#include "records/fields.h"

// Where a record lies.
enum class Folder {
  kRoot,      // in the installation root
  kOption,    // there, or in the directory that --dir names
  kArgument,  // the same, but the first word names it too; a bare name lies in the root
};

struct RecordFamily {
  std::vector<Field> fields;
  std::shared_ptr<void> (*make)();  // a record of zeros
  // The files that hold the record, the main file first.
  std::function<std::vector<std::string>(std::string const& directory, void const* record)> files;
  std::function<int(char const* directory, void* record)> read;
  int (*defaults)(void* record);
  std::function<int(char const* directory, void const* record, Terminal const& terminal)> write;
  char const* readFault;  // what it means when `read` fails
  char const* notes;      // lines for the help of `show` and `set`
  Folder folder = Folder::kOption;
  std::function<std::vector<std::string>(std::string const& directory)> tables = {};  // files that `write` only reads
  // For tables with fields that select: fills in those that come from elsewhere now, as a `read` after the save would.
  std::function<void(std::string const& directory, void* record)> reselect = {};
  std::function<std::vector<std::string>()> places = {};  // directories in the root that a shell may offer
  Options options = {};                                   // of `show` and `set`, which the functions know
};

// `show`, `set` and `defaults`.
std::vector<Command> RecordCommands(RecordFamily const& family);

#endif
