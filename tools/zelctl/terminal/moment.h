// Dates and times on the command line and in answers: 2005-03-07 10:06:40.
//
// In the calendar as people know it. The library decodes two days a leap year as other ones (datetime.h); an event of a
// 29 February is looked for on that day.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_MOMENT_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_MOMENT_H

#include <cstdint>
#include <string>

constexpr std::int32_t kHourSeconds = 3600;
constexpr std::int32_t kDaySeconds = 86400;

// What was given: a day, a minute or a second.
struct Moment {
  std::int32_t first;  // its first and its last second
  std::int32_t last;
  bool isDay;
};

// Takes yyyy-mm-dd and dd/mm/yyyy, with "hh:mm" or "hh:mm:ss" after either. Throws WrongUsage; `name` says in the
// message what the text was given for.
Moment ParseMoment(std::string const& name, std::string const& text);
// The same for a day alone.
Moment ParseDay(std::string const& name, std::string const& text);

// The beginning of a time that continues until now: a moment as above, "today", "yesterday", or such as "2 hours ago"
// with minutes, hours, days or weeks. Throws WrongUsage.
std::int32_t ParseSince(std::string const& name, std::string const& text);

// "" for a date-time that is none, a negative one.
std::string TimeText(std::int32_t dateTime);
std::string DayText(std::int32_t dateTime);
// Three letters.
char const* WeekdayText(std::int32_t dateTime);

#endif
