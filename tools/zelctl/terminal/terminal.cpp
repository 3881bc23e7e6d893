#include "terminal/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "terminal/latin1.h"

namespace {

// Bytes from 0x80 on stay: most names of files are UTF-8, in which they are parts of characters.
std::string OnOneLine(std::string const& text) {
  std::string line;
  for (char const c : text) {
    auto const byte = static_cast<unsigned char>(c);
    line += byte < 0x20 || byte == 0x7F ? Printable({c}) : std::string(1, c);
  }
  return line;
}

}  // namespace

char const kHiddenPassword[] = "(not shown)";

std::string Terminal::FromArgument(std::string const& name, std::string const& text) const {
  std::optional<std::string> const converted = FromUtf8(text);
  if (!utf8) {
    if (converted && *converted != text)
      Note(name + " looks like UTF-8 and is taken byte by byte; --utf8 would convert it to the files' Latin-1");
    return text;
  }
  if (!converted) throw WrongUsage(name + ": not UTF-8, or a character that the files' Latin-1 does not have");
  return *converted;
}

std::string Terminal::Shown(std::string const& latin1) const {
  return utf8 ? ToUtf8(Printable(latin1)) : Printable(latin1);
}

void Terminal::PrintTable(std::vector<std::vector<std::string>> const& rows) const {
  constexpr std::size_t kWidest = 48;
  std::vector<std::size_t> widths;
  for (auto const& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); i++) {
      std::size_t const width = Printable(row[i]).size();
      if (width <= kWidest) widths[i] = std::max(widths[i], width);
    }
  }
  for (auto const& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); i++) {
      std::string const cell = Printable(row[i]);
      line += i == 0 ? "" : "  ";
      line += cell;
      if (cell.size() < widths[i]) line.append(widths[i] - cell.size(), ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::cout << (utf8 ? ToUtf8(line) : line) << '\n';
  }
}

void Terminal::PrintJson(Json const& value) const {
  // File names are bytes of any kind: what is not UTF-8 in them must not end the command.
  std::cout << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void Terminal::PrintText(std::string const& latin1) const { std::cout << (utf8 ? ToUtf8(latin1) : latin1) << '\n'; }

void Terminal::Note(std::string const& text) const { Complain("note: " + text); }

void Complain(std::string const& text) { std::cerr << "zelctl: " << OnOneLine(text) << '\n'; }

std::string Counted(std::uint64_t number, std::string const& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::size_t TerminalColumns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

CLI::App* AddCommand(CLI::App* family, Terminal& terminal, char const* name, char const* description) {
  CLI::App* const command = family->add_subcommand(name, description);
  command->add_flag("--json", terminal.json, "Answer in JSON (always UTF-8)");
  command->add_flag("--utf8", terminal.utf8, "The terminal is UTF-8: convert to and from the files' Latin-1");
  return command;
}

void AddShowPassword(CLI::App* command, Terminal& terminal) {
  command->add_flag("--show-password", terminal.showPasswords, "Show passwords, which are hidden otherwise");
}

void AddForce(CLI::App* command, bool& force) {
  command->add_flag("--force", force, "Save even if a line of the file is a syntax error and those below are lost");
}
