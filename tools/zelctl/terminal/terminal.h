// How every command takes its arguments and gives its answers, and how it ends.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_TERMINAL_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_TERMINAL_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "terminal/json.h"
#include "terminal/option.h"

// Ends the command with exit code 1: it could not do what it was asked.
struct Failed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Ends the command with exit code 2: it was asked for something that makes no sense. Nothing has been written then.
struct WrongUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The options that every command has, and the output that obeys them. Texts are Latin-1 inside the command.
struct Terminal {
  bool json = false;
  bool csv = false;    // of the commands that list records
  bool utf8 = false;   // the terminal is UTF-8, whatever the locale
  bool bytes = false;  // texts go through as they are, whatever the locale
  bool showPasswords = false;
  std::string root;  // the installation that was asked for; "" for this computer's own
  int status = 0;    // exit code of a command that came to its end

  // --root: throws Failed for what is no directory.
  void SetRoot(std::string const& directory);
  void SetUtf8();
  void SetBytes();

  // What the terminal shows and takes: by the options, otherwise by the locale. "" for bytes as they are.
  std::string const& Charset() const;

  // Text from the command line as the files hold it. `name` says in messages what it was given for.
  std::string FromArgument(std::string const& name, std::string const& text) const;

  // The text in the terminal's encoding, control characters visible: for tables and messages.
  std::string Shown(std::string const& latin1) const;
  // A name of a file, which is in the terminal's encoding already.
  std::string ShownName(std::string const& name) const;

  // One row a line, columns aligned; the first row is the heading. A cell longer than 48 characters pushes aside the
  // rest of its own row only. On a terminal no row is wider than that: long cells continue in the next line, and
  // columns for which there is no room are named on the error stream instead.
  void PrintTable(std::vector<std::vector<std::string>> const& rows) const;
  // In UTF-8 whatever the terminal.
  void PrintJson(Json const& value) const;
  // A line for people.
  void PrintText(std::string const& latin1) const;
  // A value for scripts, and a line feed: on a terminal as Shown() gives it, elsewhere the bytes as they are, converted
  // with --utf8 only.
  void PrintValue(std::string const& latin1) const;
  // Names the columns that a narrow terminal does not show.
  void NoteNoRoom(std::string const& columns) const;
  // A remark on the error stream; the command continues.
  void Note(std::string const& text) const;
};

// A complaint on the error stream, on one line whatever the names in it are made of.
void Complain(std::string const& text);

// From now on messages leave out that text: a path that the user did not give.
void HideInMessages(std::string const& text);

// "1 day", "2 days"
std::string Counted(std::uint64_t number, std::string const& noun);

// Columns of the terminal that the answer goes to; 0 when it goes elsewhere.
std::size_t TerminalColumns();
bool IsOnTerminal();

// What stands in place of a password that was not asked for.
extern char const kHiddenPassword[];

Option ShowPassword();

#endif
