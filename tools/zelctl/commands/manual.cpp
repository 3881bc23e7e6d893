#include "commands/manual.h"

#include <sstream>

namespace {

// Escapes macros, escapes and hyphens.
std::string Escaped(std::string const& text) {
  std::string escaped = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
  for (char const c : text) {
    if (c == '\\')
      escaped += "\\e";
    else
      escaped.append(c == '-' ? "\\-" : std::string(1, c));
  }
  return escaped;
}

// The text as one argument of a macro.
std::string Quoted(std::string const& text) {
  std::string quoted = "\"";
  for (char const c : Escaped(text)) quoted.append(c == '"' ? "\\(dq" : std::string(1, c));
  return quoted + '"';
}

// Starts each sentence of filled text on its own line.
std::string Filled(std::string const& line) {
  std::string text;
  std::size_t begin = 0;
  for (std::size_t at = 0; (at = line.find(". ", at)) != std::string::npos; at++) {
    if (at + 2 == line.size() || line[at + 2] < 'A' || line[at + 2] > 'Z') continue;
    text += Escaped(line.substr(begin, at + 1 - begin)) + "\n";
    begin = at + 2;
  }
  return text + Escaped(line.substr(begin)) + "\n";
}

std::string Sentence(std::string const& help) { return Filled(help + "."); }

std::string Literal(std::string const& lines) { return ".Bd -literal -compact\n" + lines + ".Ed\n"; }

// Lines that begin with two blanks stay lines; the others are filled.
std::string Paragraphs(std::string const& notes) {
  std::istringstream lines(notes);
  std::string text;
  std::string table;
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 2, "  ") == 0) {
      table += Escaped(line.erase(line.find_last_not_of(' ') + 1)) + "\n";
      continue;
    }
    if (!table.empty()) text += Literal(table);
    table.clear();
    text += line.empty() ? ".Pp\n" : Filled(line);
  }
  return text + (table.empty() ? "" : Literal(table));
}

std::string ValueOf(Option const& option) {
  std::string const name = option.IsArgument() ? option.name : option.value;
  bool const isList = std::holds_alternative<std::vector<std::string>*>(option.target) && option.IsArgument();
  return name.empty() ? "" : " Ar " + Quoted(name + (isList ? " ..." : ""));
}

// "-f", "--file" for "-f,--file"
std::string Flags(Option const& option) {
  if (option.IsArgument()) return ValueOf(option).substr(1);
  std::string flags;
  std::istringstream names(option.name);
  for (std::string name; std::getline(names, name, ',');)
    flags += (flags.empty() ? "Fl " : " , Fl ") + Quoted(name.substr(1));
  return flags + ValueOf(option);
}

std::string CommandText(Command const& command, std::string const& path, std::string const& familyNotes) {
  std::string text = ".It Cm " + Quoted(path);
  for (Option const& option : command.options)
    if (option.required || option.IsArgument()) text += (option.required ? " " : " Op ") + Flags(option);
  text += "\n" + Sentence(command.help);
  std::string options;
  for (Option const& option : command.options)
    if (!option.hidden) options += ".It " + Flags(option) + "\n" + Sentence(option.help);
  if (!options.empty()) text += ".Bl -tag -width Ds -compact\n" + options + ".El\n";
  if (command.notes != familyNotes) text += Paragraphs(command.notes);
  std::string examples;
  for (std::string const& example : command.examples) examples += "  $ " + Escaped(example) + "\n";
  return text + (examples.empty() ? "" : Literal(examples));
}

std::string FamilyText(Command const& family, std::string const& path, std::string const& notes) {
  if (family.commands.empty()) return CommandText(family, path, notes);
  std::string text;
  for (Command const& command : family.commands) text += FamilyText(command, path + " " + command.name, notes);
  return text;
}

}  // namespace

std::string ManualText(Command const& root) {
  std::string text;
  for (Command const& family : root.commands) {
    bool const isOne = family.commands.empty();
    text += ".Ss " + family.name + "\n";
    if (!isOne) text += Sentence(family.help) + Paragraphs(family.notes);
    text += ".Bl -tag -width Ds\n" + FamilyText(family, family.name, isOne ? "" : family.notes) + ".El\n";
  }
  return text;
}
