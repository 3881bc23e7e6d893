// Dates and times on the command line and in output: 2005-03-07 10:06:40.
//
// Uses the real calendar. The library decodes two days of a leap year as other days (datetime.h); here an event of 29
// February is found on that day.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_MOMENT_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_MOMENT_H

#include <cstdint>
#include <string>

constexpr std::int32_t kHourSeconds = 3600;
constexpr std::int32_t kDaySeconds = 86400;
// A record of the product is younger; an earlier time shows that the bytes are something else.
constexpr std::int32_t kYear1990 = 631152000;

// A day, a minute or a second.
struct Moment {
  std::int32_t first;  // its first and its last second
  std::int32_t last;
  bool isDay;
};

// Accepts yyyy-mm-dd and dd/mm/yyyy, each optionally followed by "hh:mm" or "hh:mm:ss". Throws WrongUsage; `name` names
// the argument in the message.
Moment ParseMoment(std::string const& name, std::string const& text);
// The same for a day without a time.
Moment ParseDay(std::string const& name, std::string const& text);

// The start of a span until now: a date and time as above, "today", "yesterday", or "2 hours ago" (minutes, hours, days
// or weeks). Throws WrongUsage.
std::int32_t ParseSince(std::string const& name, std::string const& text);

// "" for a negative (invalid) date-time.
std::string TimeText(std::int32_t dateTime);
std::string DayText(std::int32_t dateTime);
// Three letters.
char const* WeekdayText(std::int32_t dateTime);

#endif
