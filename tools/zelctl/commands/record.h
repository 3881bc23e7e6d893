// Settings records as tables of fields. `show`, `set` and `defaults` are made from one table per record.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_RECORD_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_RECORD_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "commands/command.h"
#include "records/fields.h"

// Where a record is stored.
enum class Folder {
  kRoot,      // the installation root
  kOption,    // the root, or the directory in --dir
  kArgument,  // the same, or the directory in the first word; a bare name is in the root
};

struct RecordFamily {
  std::vector<Field> fields;
  std::shared_ptr<void> (*make)();  // a record of zeros
  // The files of the record, the main file first.
  std::function<std::vector<std::string>(std::string const& directory, void const* record)> files;
  std::function<int(char const* directory, void* record)> read;
  int (*defaults)(void* record);
  std::function<int(char const* directory, void const* record, Terminal const& terminal)> write;
  char const* readFault;  // why `read` fails
  char const* notes;      // lines for the help of `show` and `set`
  Folder folder = Folder::kOption;
  std::function<std::vector<std::string>(std::string const& directory)> tables =
      {};  // files that `write` reads but does not write
  // For tables with selecting fields: loads the dependent fields as a `read` after the save would.
  std::function<void(std::string const& directory, void* record)> reselect = {};
  std::function<std::vector<std::string>()> places = {};  // directories in the root, for shell completion
  Options options = {};                                   // extra options of `show` and `set`
};

// `show`, `set` and `defaults`.
std::vector<Command> RecordCommands(RecordFamily const& family);

#endif
