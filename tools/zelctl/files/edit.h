// Changes of files by the library's functions: refused before anything is lost, rehearsed when that was asked for, and
// told when they are made.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_EDIT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_EDIT_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "terminal/option.h"

struct Terminal;

// What the caller allows.
struct Writing {
  bool force = false;   // to save a file whose load stops at a bad line
  bool dryRun = false;  // nothing but telling what would change
  bool yes = false;     // to remove without being asked
};

// --force and --dry-run.
Options WritingOptions(Writing& writing);
Option DryRun(Writing& writing);
// For a command that removes more than it was told by name.
Option Yes(Writing& writing);

// For a command that writes one file OUT.
Option Overwrite(bool& overwrite);
Option DryOutput(bool& dryRun);
// How many bytes were, or would be, written.
void TellOutput(std::string const& path, std::uint64_t bytes, bool dryRun, Terminal const& terminal);

// Tells what is about to be removed and asks whether to continue. Does not ask with --yes or --dry-run. Throws Failed
// when the answer is no, and WrongUsage where nobody can be asked.
void RequireConsent(std::string const& what, Writing const& writing);

// During a rehearsal the copy of that file or directory; otherwise the path itself. The installation root and the
// user's home lead to the copies by themselves.
std::string At(std::string const& path);

struct Edit {
  std::vector<std::string> files;       // all that the change may write
  std::vector<std::string> reads = {};  // what it only reads
  std::string added = "added";          // what became of new lines
  std::string noun = "line";
  // For files that are no lines of text: what they hold, a line each.
  std::function<std::string(std::string const& bytes)> asLines = {};
};

// Copies of the files under a directory of their own, which the library and At() take for the originals while this
// lives.
class Rehearsal {
 public:
  Rehearsal(Edit const& edit, Terminal const& terminal);
  ~Rehearsal();
  Rehearsal(Rehearsal const&) = delete;
  Rehearsal& operator=(Rehearsal const&) = delete;

 private:
  void End() const;

  std::string root_;
  std::string home_;
};

// Whether the file can be written or, where there is none, made.
bool IsWritable(std::string const& path);

// Copies the file to NAME.lost, or NAME.lost.1 and so on where that exists already, as the library names its copies.
// Throws FileFailed.
void KeepAsLost(std::string const& path);

// Lets `act` change the files, and says in one line how they changed (not with --json and --csv). `act` works on paths
// from At(); it may be called twice, first for a rehearsal. Throws Failed when a file lies in an installation root that
// nobody stated, cannot be read, has a bad line and this is not forced, or would hold lines that are never read.
// False when it was a dry run.
bool Make(Edit const& edit, Writing const& writing, Terminal const& terminal, std::function<void()> const& act);

// Lets `remove` take a key away. Throws Failed when the file has no such key before it, or still has one after it.
bool RemoveKey(std::string const& path, std::string const& section, std::string const& key, Writing const& writing,
               Terminal const& terminal, std::function<void()> const& remove);

#endif
