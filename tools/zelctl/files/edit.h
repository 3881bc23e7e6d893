// Changes of files by the library's functions: refused before anything is lost, rehearsed on request, and reported when
// made.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_EDIT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_EDIT_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "files/output.h"
#include "files/scratch.h"
#include "terminal/option.h"

struct Terminal;

// What the user allows.
struct Writing {
  bool force = false;   // save a file whose load stops at a bad line
  bool dryRun = false;  // only show what would change
  bool yes = false;     // remove without asking
};

// --force and --dry-run.
Options WritingOptions(Writing& writing);
Option DryRun(Writing& writing);
// For a command that removes more than its arguments name.
Option Yes(Writing& writing);

// For a command that writes a file OUT.
Option Overwrite(Replacing& replacing);
Option DryOutput(bool& dryRun);
// Reports how many bytes were written, or would be.
void TellOutput(std::string const& path, std::uint64_t bytes, bool dryRun, Terminal const& terminal);

// Reports what will be removed from the file and asks whether to continue. Does not ask with --yes or --dry-run. Throws
// Failed if the answer is no, or if the file was changed until then, and WrongUsage if there is no terminal to ask on.
void RequireConsent(std::string const& file, std::string const& what, Writing const& writing);

// During a rehearsal the path of the copy; otherwise the path itself. The installation root and the user's home are
// redirected to the copies without this.
std::string At(std::string const& path);

struct Edit {
  std::vector<std::string> files;       // every file that the change may write
  std::vector<std::string> reads = {};  // files that it only reads
  std::string added = "added";          // the word for new lines in the report
  std::string noun = "line";
  // For files that are not text: their contents, one line for each item.
  std::function<std::string(std::string const& bytes)> asLines = {};
};

// Copies of the files in a temporary directory. While this object exists, the library and At() use the copies.
class Rehearsal {
 public:
  Rehearsal(Edit const& edit, Terminal const& terminal);
  ~Rehearsal();
  Rehearsal(Rehearsal const&) = delete;
  Rehearsal& operator=(Rehearsal const&) = delete;

 private:
  void End() const;

  ScratchFolder folder_;
  std::string root_;
  std::optional<std::string> home_;
};

// Waits until no other zelctl changes files in the directories of these files, at most 10 s each; others wait until
// this process ends. A directory that cannot be locked is left out. For everything that a change reads before it
// writes.
void LockFoldersOf(std::vector<std::string> const& files);

// Whether the file can be written, or created if it is missing.
bool IsWritable(std::string const& path);
// The same; a missing directory counts as created by the change.
bool CanBeWritten(std::string const& path);

// Copies the file to NAME.lost, or to NAME.lost.1 and so on if that exists, as the library names its copies. Returns
// the copy's name. Throws FileFailed.
std::string KeepAsLost(std::string const& path);
// The message about a copy.
std::string OldFileIn(std::string const& path, std::string const& copy);

// Lets `act` change the files and reports the changes in one line (not with --json or --csv). `act` uses paths from
// At() and may be called twice, first for a rehearsal. Throws Failed if a file is in an installation root that was not
// set explicitly, cannot be read, has a bad line without --force, or would contain lines that are never read. False
// after a dry run.
bool Make(Edit const& edit, Writing const& writing, Terminal const& terminal, std::function<void()> const& act);

// Lets `remove` delete a key. Throws Failed if the file lacks the key before, or still has it after.
bool RemoveKey(std::string const& path, std::string const& section, std::string const& key, Writing const& writing,
               Terminal const& terminal, std::function<void()> const& remove);

#endif
