#include "terminal/period.h"

#include <time.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "terminal/moment.h"

namespace {

constexpr std::int64_t kWeekSeconds = 7 * kDaySeconds;
constexpr std::int64_t kFirstMonday = -3 * kDaySeconds;  // 1970-01-01 was a Thursday

constexpr std::array<char const*, 5> kNames = {"hour", "day", "week", "month", "year"};

tm FieldsOf(std::int64_t dateTime) {
  auto const seconds = static_cast<time_t>(dateTime);  // of a record: 32 bits
  tm fields = {};
  gmtime_r(&seconds, &fields);
  return fields;
}

// The first second of a month, calculated: the month after the last one of a record must also work where time_t has 32
// bits. Years are counted from 1900; month 12 is January of the next year.
std::int64_t FirstOf(int year, int month) {
  year += 1900 + month / 12;
  month = (month + 10) % 12;  // from March, so a leap day is the last of its year
  if (month >= 10) year--;
  std::int64_t const days = 365 * year + year / 4 - year / 100 + year / 400 + (153 * month + 2) / 5 - 719468;
  return days * kDaySeconds;
}

}  // namespace

char const* NameOf(Period period) { return kNames[static_cast<std::size_t>(period)]; }

std::optional<Period> PeriodNamed(std::string const& name) {
  for (std::size_t i = 0; i < kNames.size(); i++)
    if (name == kNames[i]) return static_cast<Period>(i);
  return std::nullopt;
}

std::int64_t BeginOf(Period period, std::int64_t dateTime) {
  switch (period) {
    case Period::kHour: return dateTime - dateTime % kHourSeconds;
    case Period::kDay: return dateTime - dateTime % kDaySeconds;
    case Period::kWeek: return dateTime - (dateTime - kFirstMonday) % kWeekSeconds;
    case Period::kMonth:
    case Period::kYear: break;
  }
  tm const fields = FieldsOf(dateTime);
  return FirstOf(fields.tm_year, period == Period::kMonth ? fields.tm_mon : 0);
}

std::int64_t NextBegin(Period period, std::int64_t begin) {
  if (period == Period::kHour) return begin + kHourSeconds;
  if (period == Period::kDay) return begin + kDaySeconds;
  if (period == Period::kWeek) return begin + kWeekSeconds;
  tm const fields = FieldsOf(begin);
  return FirstOf(fields.tm_year, fields.tm_mon + (period == Period::kMonth ? 1 : 12));
}

std::string TextOf(Period period, std::int64_t begin, bool withWeekday) {
  bool const isDay = period == Period::kDay || period == Period::kHour;
  char const* form = "%Y-%m-%d";
  if (period == Period::kMonth) form = "%Y-%m";
  if (period == Period::kYear) form = "%Y";
  if (isDay && withWeekday) form = period == Period::kDay ? "%Y-%m-%d %a" : "%Y-%m-%d %a %H:%M";
  if (period == Period::kHour && !withWeekday) form = "%Y-%m-%d %H:%M";
  tm const fields = FieldsOf(begin);
  char text[64];
  return {text, strftime(text, sizeof text, form, &fields)};
}
