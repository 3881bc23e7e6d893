// From the output of `ps` to processes.
#ifndef ZELVANE_SYSTEM_PROC_INTERNAL_H
#define ZELVANE_SYSTEM_PROC_INTERNAL_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zelvane/system/proc.h"

namespace zelvane::internal {

// The process that a line (without its line feed) of the columns id, parent's id, nice, command name and command line
// describes; none when it does not begin with an integer, like the heading. Fields stand between runs of spaces, as the
// widths of the columns depend on the machine; the last is the rest of the line. Missing fields are 0 or empty.
std::optional<ProcClass> ParsePsLine(std::string_view line);

// Takes the output piece by piece, cut anywhere, and appends the processes to the table.
class PsOutput {
 public:
  explicit PsOutput(std::vector<ProcClass>& table) : table_(table) {}
  void Take(std::string_view bytes);
  // The last line need not end in a line feed.
  void Finish();

 private:
  void EndLine();

  std::vector<ProcClass>& table_;
  std::string line_;  // up to the limit
};

}  // namespace zelvane::internal

#endif
