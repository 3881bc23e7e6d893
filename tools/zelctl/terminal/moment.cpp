#include "terminal/moment.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>
#include <regex>

#include "terminal/terminal.h"
#include "zelvane/core/datetime.h"

namespace {

char const kDayForm[] = "YYYY-MM-DD or DD/MM/YYYY";
char const kMomentForm[] = "YYYY-MM-DD or DD/MM/YYYY, optionally followed by hh:mm or hh:mm:ss";

tm Fields(std::int32_t dateTime) {
  time_t const seconds = dateTime;
  tm fields = {};
  gmtime_r(&seconds, &fields);
  return fields;
}

[[noreturn]] void Refuse(std::string const& name, std::string const& form) {
  throw WrongUsage(name + ": expected " + form + "; range 1970-01-01 to 2038-01-19 03:14:07");
}

std::optional<Moment> MomentOf(std::string const& text) {
  static std::regex const form(
      R"((?:(\d{4})-(\d\d?)-(\d\d?)|(\d\d?)/(\d\d?)/(\d{4}))(?:[ T](\d\d?):(\d\d)(?::(\d\d))?)?)");
  std::smatch match;
  if (!std::regex_match(text, match, form)) return std::nullopt;
  auto const field = [&match](std::size_t i) { return match[i].matched ? std::stoi(match[i].str()) : 0; };
  int const year = field(1) + field(6);
  int const month = field(2) + field(5);
  int const day = field(3) + field(4);
  auto const first = static_cast<std::int32_t>(EncodeDateTime(year, month, day, field(7), field(8), field(9)));
  // In a leap year the library accepts days past the end of a short month.
  tm const fields = Fields(first);
  if (first < 0 || fields.tm_year + 1900 != year || fields.tm_mon + 1 != month || fields.tm_mday != day)
    return std::nullopt;
  std::int32_t const length = !match[7].matched ? kDaySeconds : !match[9].matched ? 60 : 1;
  std::int32_t const left = std::numeric_limits<std::int32_t>::max() - first;
  return Moment{first, first + std::min(length - 1, left), length == kDaySeconds};
}

}  // namespace

Moment ParseMoment(std::string const& name, std::string const& text) {
  std::optional<Moment> const moment = MomentOf(text);
  if (!moment) Refuse(name, kMomentForm);
  return *moment;
}

Moment ParseDay(std::string const& name, std::string const& text) {
  Moment const moment = ParseMoment(name, text);
  if (!moment.isDay) Refuse(name, kDayForm);
  return moment;
}

std::int32_t ParseSince(std::string const& name, std::string const& text) {
  auto const now = static_cast<std::int32_t>(GetDateTime());
  std::int32_t const today = now - now % kDaySeconds;
  if (text == "today") return today;
  if (text == "yesterday") return today - kDaySeconds;
  static std::regex const form(R"((\d{1,5}) (minute|hour|day|week)s? ago)");
  std::smatch match;
  if (!std::regex_match(text, match, form)) {
    std::optional<Moment> const moment = MomentOf(text);
    if (!moment) Refuse(name, std::string("today, yesterday, \"2 hours ago\", ") + kMomentForm);
    return moment->first;
  }
  std::string const unit = match[2].str();
  std::int64_t const seconds = unit == "minute" ? 60
                               : unit == "hour" ? kHourSeconds
                               : unit == "day"  ? kDaySeconds
                                                : 7 * kDaySeconds;
  return static_cast<std::int32_t>(std::max<std::int64_t>(now - std::stoll(match[1].str()) * seconds, 0));
}

std::string TimeText(std::int32_t dateTime) {
  if (dateTime < 0) return "";
  tm const fields = Fields(dateTime);
  char text[64];
  int const length = std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", fields.tm_year + 1900,
                                   fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
  return {text, static_cast<std::size_t>(length)};
}

std::string DayText(std::int32_t dateTime) { return TimeText(dateTime).substr(0, 10); }

char const* WeekdayText(std::int32_t dateTime) {
  static char const* const kNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  return kNames[Fields(dateTime).tm_wday];
}
