// Selects records of a log by code, text and time.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_CHOICE_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_CHOICE_H

#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "terminal/option.h"

struct Record;
struct Terminal;

// Without options it selects every record, even one without a valid time stamp.
struct Choice {
  std::set<std::uint16_t> codes;  // empty: all codes
  std::string text;               // part of the record's text, in lower case
  bool dated = false;
  std::int32_t first = 0;
  std::int32_t last = std::numeric_limits<std::int32_t>::max();

  bool operator()(Record const& record) const;
};

class ChoiceOptions {
 public:
  Options Code();
  Options Grep();
  Options Span();  // --from, --to, --since

  bool HasCodes() const { return !codes_.empty(); }
  // Throws WrongUsage.
  Choice Get(Terminal const& terminal) const;

 private:
  std::vector<std::string> codes_;
  std::string text_;
  std::optional<std::string> from_;
  std::optional<std::string> to_;
  std::optional<std::string> since_;
};

#endif
