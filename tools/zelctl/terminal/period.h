// Hours, days, weeks, months and years, for grouping events and outages. Weeks begin on Monday.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_PERIOD_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_PERIOD_H

#include <cstdint>
#include <optional>
#include <string>

enum class Period { kHour, kDay, kWeek, kMonth, kYear };

// "hour", "day", "week", "month" or "year".
char const* NameOf(Period period);
std::optional<Period> PeriodNamed(std::string const& name);

// The first second of the period that contains `dateTime` (not negative), and of the next period. The first Monday is
// 1969-12-29, so a week can begin before 0.
std::int64_t BeginOf(Period period, std::int64_t dateTime);
std::int64_t NextBegin(Period period, std::int64_t begin);

// The name of a period: "2005-03-04 Fri" (the weekday on request), "2005-03-04 Fri 13:00", "2005-03", "2005". A week
// has the name of its Monday.
std::string TextOf(Period period, std::int64_t begin, bool withWeekday = true);

#endif
