// Bars of how often something happened, a row a day or an hour.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

struct Terminal;

enum class Step { kAutomatic, kDay, kHour };

class Chart {
 public:
  // `text` is what the event says of itself.
  void Add(std::uint16_t code, std::int32_t dateTime, std::string const& text);

  // By hour, unless told otherwise, if all of it lies within three days. All bars have one scale.
  void Print(Step step, Terminal const& terminal) const;

 private:
  using Counts = std::map<std::int32_t, std::uint64_t>;  // by hours or days since 1970

  struct Code {
    Counts counts;
    std::uint64_t events = 0;
    std::string text;  // of the latest
  };
  using Codes = std::map<std::uint16_t, Code>;

  bool IsByHour(Step step) const;
  Codes ByDay() const;

  Codes codes_;  // by hours
};

#endif
