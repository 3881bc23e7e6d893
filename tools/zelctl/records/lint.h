// What in a configuration file is not read as its author meant it.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_LINT_H

#include <string>
#include <vector>

struct Finding {
  long line;            // counted from 1
  char const* kind;     // "syntax-error", "dropped", "repeated-section" or "repeated-key"
  std::string message;  // Latin-1, complete but for the file and the line
};

// In the order of the lines. Throws Failed when the file cannot be read. Values of password keys are left out of the
// messages unless `showPasswords`.
std::vector<Finding> Lint(std::string const& path, bool showPasswords);

#endif
