// What in a configuration file is not read as its author meant it.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H

#include <string>
#include <vector>

struct Terminal;

struct Finding {
  long line;            // counted from 1
  char const* kind;     // "syntax-error", "dropped", "repeated-section", "repeated-key", "encoding", "value", "fields",
                        // "unknown-key"
  std::string message;  // Latin-1, complete but for the file and the line
};

// In the order of the lines. Throws Failed when the file cannot be read. Values of password keys are left out of the
// messages unless the terminal wants them.
std::vector<Finding> Lint(std::string const& path, Terminal const& terminal);

#endif
