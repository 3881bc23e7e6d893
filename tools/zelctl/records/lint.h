// Lines of a configuration file that the programs do not read as intended.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H

#include <string>
#include <vector>

struct Terminal;

struct Finding {
  long line;            // counted from 1
  char const* kind;     // "syntax-error", "dropped", "repeated-section", "repeated-key", "encoding", "value", "fields",
                        // "unknown-key", "unknown-section"
  std::string message;  // Latin-1, without the file and the line
};

// Findings in line order. Throws Failed if the file cannot be read. Messages omit the values of password keys unless
// the terminal shows passwords.
std::vector<Finding> Lint(std::string const& path, Terminal const& terminal);

#endif
