// The options and arguments of a command, as data.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_OPTION_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_OPTION_H

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

struct Terminal;

// The target of an option. The first three types are for flags, which have no value.
using Target = std::variant<bool*, bool Terminal::*, void (Terminal::*)(), std::string*, std::optional<std::string>*,
                            std::vector<std::string>*, void (Terminal::*)(std::string const&)>;

// An option; without leading dashes in its name, an argument.
struct Option {
  std::string name;  // "--size", "-f,--file", "FILE"
  Target target;
  std::string value;  // the value's name in the help: "N"; "" for flags and arguments
  std::string help;
  bool required = false;
  bool hidden = false;                  // not in the help of the command
  bool filled = false;                  // an empty value is refused, as that of a file always is
  bool separated = false;               // one word with values separated by commas
  bool showDefault = false;             // the target's initial value
  std::pair<int, int> values = {0, 0};  // minimum and maximum; 0, 0: one, or any number for a list
  std::vector<std::string> words = {};  // the allowed values; empty: any
  std::string excludes = {};            // names of other options
  std::string needs = {};
  std::function<std::vector<std::string>(std::string const& begun)> suggest = {};  // candidates for shell completion

  bool IsFlag() const { return target.index() < 3; }
  bool IsArgument() const { return name[0] != '-'; }
  // What the value is, in the help: "FILE".
  std::string const& Word() const { return IsArgument() ? name : value; }
  bool IsFile() const { return Word() == "FILE" || Word() == "IN" || Word() == "OUT" || Word() == "IN OUT"; }

  Option Required(bool isRequired = true) && { return With(&Option::required, isRequired); }
  Option Filled() && { return With(&Option::filled, true); }
  Option Hidden() && { return With(&Option::hidden, true); }
  Option Separated() && { return With(&Option::separated, true); }
  Option ShowingDefault() && { return With(&Option::showDefault, true); }
  Option Values(int fewest, int most) && { return With(&Option::values, {fewest, most}); }
  Option OneOf(std::vector<std::string> names) && { return With(&Option::words, std::move(names)); }
  Option Excludes(std::string other) && { return With(&Option::excludes, std::move(other)); }
  Option Needs(std::string other) && { return With(&Option::needs, std::move(other)); }
  Option Suggesting(std::function<std::vector<std::string>(std::string const&)> offer) && {
    return With(&Option::suggest, std::move(offer));
  }

 private:
  template <class Type>
  Option With(Type Option::*member, Type what) {
    this->*member = std::move(what);
    return std::move(*this);
  }
};

using Options = std::vector<Option>;

inline Option Flag(char const* name, Target target, std::string help) { return {name, target, "", std::move(help)}; }
inline Option Value(char const* name, Target target, char const* value, std::string help) {
  return {name, target, value, std::move(help)};
}
inline Option Argument(std::string name, Target target, std::string help) {
  return {std::move(name), target, "", std::move(help)};
}

inline Options Joined(std::initializer_list<Options> parts) {
  Options all;
  for (Options const& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

#endif
