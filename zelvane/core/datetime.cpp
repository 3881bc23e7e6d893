#include "zelvane/core/datetime.h"

#include <sys/time.h>

#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string_view>

#include "zelvane/core/strutils.h"

namespace {

constexpr long kNoDate = -1;
constexpr std::int64_t kLastDateTime = 2147483647;
constexpr int kDaySeconds = 86400;
constexpr int kYearDays = 365;
constexpr char const* kDefaultFormat = "dd/mm/yyyy hh:nn:ss";

bool IsLeapYear(int year) { return year % 4 == 0; }

// Days before the month in an ordinary year; 13 stands for the end of the year.
int DaysBefore(int month) {
  static constexpr int kDays[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
  return kDays[month - 1];
}

int MonthLength(int year, int month) {
  return DaysBefore(month + 1) - DaysBefore(month) + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

bool IsMonth(int month) { return month >= 1 && month <= 12; }
bool IsDateTime(long t) { return t >= 0 && t <= kLastDateTime; }

struct Fields {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int dayOfWeek = 0;
  int dayOfYear = 0;
};

// Leaves the year in `fields` and returns the days that have gone by in it. 31 December of a leap year is taken for a
// day on which nothing has: its 365 days are taken off as for an ordinary year, and nothing is left for the leap day.
int DecodeYear(int days, Fields& fields) {
  constexpr int kFourYears = 4 * kYearDays + 1;
  fields.year = 1970 + days / kFourYears * 4;
  days %= kFourYears;
  for (; days >= kYearDays; fields.year++) {
    days -= kYearDays;
    if (!IsLeapYear(fields.year)) continue;
    if (days == 0) break;
    days--;
  }
  return days;
}

// 29 February comes to a stop the same way, on the first of its month.
void DecodeMonth(int days, Fields& fields) {
  fields.month = 1;
  while (days >= DaysBefore(fields.month + 1) - DaysBefore(fields.month)) {
    days -= DaysBefore(fields.month + 1) - DaysBefore(fields.month);
    if (fields.month == 2 && IsLeapYear(fields.year)) {
      if (days == 0) break;
      days--;
    }
    fields.month++;
  }
  fields.day = days + 1;
}

bool Decode(long t, Fields& fields) {
  if (!IsDateTime(t)) return false;
  int const days = static_cast<int>(t / kDaySeconds);
  int const rest = static_cast<int>(t % kDaySeconds);
  fields.hour = rest / 3600;
  fields.minute = rest % 3600 / 60;
  fields.second = rest % 60;
  fields.dayOfWeek = (days + 5) % 7;
  int const gone = DecodeYear(days, fields);
  fields.dayOfYear = gone + 1;
  DecodeMonth(gone, fields);
  return true;
}

long FromCalendar(std::tm const* fields) {
  if (fields == nullptr) return kNoDate;
  return EncodeDateTime(fields->tm_year + 1900, fields->tm_mon + 1, fields->tm_mday, fields->tm_hour, fields->tm_min,
                        fields->tm_sec);
}

long LocalFields(std::time_t t) {
  std::tm fields = {};
  tzset();  // localtime_r need not look at TZ again
  return FromCalendar(localtime_r(&t, &fields));
}

long UniversalFields(std::time_t t) {
  std::tm fields = {};
  return FromCalendar(gmtime_r(&t, &fields));
}

std::string EffectiveFormat(std::string const& format) { return format.empty() ? kDefaultFormat : LowerCase(format); }

// Length of the run of one repeated character that begins at `start`.
std::size_t RunLength(std::string const& format, std::size_t start) {
  std::size_t const end = format.find_first_not_of(format[start], start);
  return (end == std::string::npos ? format.size() : end) - start;
}

// The field that a letter of a format stands for; null for a literal.
int* FieldOf(Fields& fields, char letter) {
  switch (letter) {
    case 'd': return &fields.day;
    case 'm': return &fields.month;
    case 'y': return &fields.year;
    case 'h': return &fields.hour;
    case 'n': return &fields.minute;
    case 's': return &fields.second;
    default: return nullptr;
  }
}

std::string Text(std::string const& format, long t) {
  Fields fields;
  std::string result;
  if (!Decode(t, fields)) return result;
  std::string const pattern = EffectiveFormat(format);
  for (std::size_t start = 0, length = 0; start < pattern.size(); start += length) {
    length = RunLength(pattern, start);
    int const* const field = FieldOf(fields, pattern[start]);
    if (field == nullptr) {
      result.append(length, pattern[start]);
    } else {
      result += IntToStr(*field, static_cast<int>(length));
    }
  }
  return result;
}

constexpr int kAbsent = -1;
constexpr int kInvalid = -2;

// What is left absent comes from 1970-01-01 00:00:00.
constexpr Fields kFirstSecond = {1970, 1, 1, 0, 0, 0, 0, 0};

long ReadText(std::string const& text, std::string const& format, long def) {
  if (text.empty()) return def;
  Fields fields = {kAbsent, kAbsent, kAbsent, kAbsent, kAbsent, kAbsent, 0, 0};
  std::string const pattern = EffectiveFormat(format);
  std::string seen;
  for (std::size_t start = 0, length = 0; start < pattern.size(); start += length) {
    length = RunLength(pattern, start);
    char const letter = pattern[start];
    int* const field = FieldOf(fields, letter);
    if (field == nullptr) continue;
    long const value = StrToIntDef(text.substr(start, length), kInvalid);
    *field = seen.find(letter) == std::string::npos ? static_cast<int>(value) : kInvalid;
    seen += letter;
  }
  Fields defaults = kFirstSecond;
  for (char const letter : std::string_view("dmyhns")) {
    int* const field = FieldOf(fields, letter);
    if (*field == kInvalid) return def;
    if (*field == kAbsent) *field = *FieldOf(defaults, letter);
  }
  long const t = EncodeDateTime(fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second);
  return t < 0 ? def : t;
}

template <typename Float>
long long RoundHalfToEven(Float value) {
  using Limits = std::numeric_limits<long long>;
  Float const limit = static_cast<Float>(-static_cast<Float>(Limits::min()));  // a power of two: exact
  if (std::isnan(value)) return 0;
  if (value >= limit) return Limits::max();
  if (value <= -limit) return Limits::min();
  Float const whole = std::trunc(value);
  Float const fraction = std::fabs(value - whole);
  auto const result = static_cast<long long>(whole);
  bool const away = fraction > Float(0.5) || (fraction == Float(0.5) && result % 2 != 0);
  return away ? result + (value < 0 ? -1 : 1) : result;
}

}  // namespace

long GetDateTime() { return LocalFields(std::time(nullptr)); }

long GetGMTDateTime() { return UniversalFields(std::time(nullptr)); }

long GMTToLocalDateTime(long t) { return IsDateTime(t) ? LocalFields(t) : kNoDate; }

long LocalToGMTDateTime(long t) { return IsDateTime(t) ? UniversalFields(t) : kNoDate; }

bool SetDateTime(long t) {
  if (!IsDateTime(t)) return false;
  timeval time = {};
  time.tv_sec = t;
  if (settimeofday(&time, nullptr) != 0) return false;
  // The C library refuses a time and a zone in one call. The time is set by now: a refused zone does not undo it.
  struct timezone zone = {};
  static_cast<void>(settimeofday(nullptr, &zone));
  return true;
}

int DaysFromEpoch(int year, int month, int day) {
  if (year < 1970 || !IsMonth(month) || day < 1) return -1;
  // Files and callers depend on it that a leap year bounds February alone.
  if ((!IsLeapYear(year) || month == 2) && day > MonthLength(year, month)) return -1;
  std::int64_t const days = (year - std::int64_t{1970}) * kYearDays + (year - 1969) / 4 + DaysBefore(month) +
                            (IsLeapYear(year) && month > 2 ? 1 : 0) + day - 1;
  return days > std::numeric_limits<int>::max() ? -1 : static_cast<int>(days);
}

long EncodeDateTime(int year, int month, int day, int hour, int minute, int second) {
  if (year < 1 || !IsMonth(month) || day < 1 || day > MonthLength(year, month)) return kNoDate;
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return kNoDate;
  if (year < 100) {
    Fields now;
    if (!Decode(GetDateTime(), now)) return kNoDate;
    int const century = now.year / 100 * 100;
    year += year < 50 ? century : century - 100;
  }
  std::int64_t const days = DaysFromEpoch(year, month, day);
  if (days < 0) return kNoDate;
  std::int64_t const t = days * kDaySeconds + hour * 3600 + minute * 60 + second;
  return t > kLastDateTime ? kNoDate : static_cast<long>(t);
}

bool DecodeDateTime(long t, int* year, int* month, int* day, int* hour, int* minute, int* second, int* dayOfWeek,
                    int* dayOfYear) {
  Fields fields;
  if (!Decode(t, fields)) return false;
  auto const give = [](int* output, int value) {
    if (output != nullptr) *output = value;
  };
  give(year, fields.year);
  give(month, fields.month);
  give(day, fields.day);
  give(hour, fields.hour);
  give(minute, fields.minute);
  give(second, fields.second);
  give(dayOfWeek, fields.dayOfWeek);
  give(dayOfYear, fields.dayOfYear);
  return true;
}

int DayOfWeek(long t) {
  Fields fields;
  return Decode(t, fields) ? fields.dayOfWeek : -1;
}

int DayOfYear(long t) {
  Fields fields;
  return Decode(t, fields) ? fields.dayOfYear : -1;
}

std::string DateTimeToStr(char const* format, long t) { return Text(format == nullptr ? "" : format, t); }
std::string DateTimeToStr(std::string const& format, long t) { return Text(format, t); }
std::string DateTimeToStr(long t) { return Text("", t); }

std::string FormatDateTime(long t, char const* format) {
  Fields fields;
  if (format == nullptr || !Decode(t, fields)) return "";
  std::tm broken = {};
  broken.tm_sec = fields.second;
  broken.tm_min = fields.minute;
  broken.tm_hour = fields.hour;
  broken.tm_mday = fields.day;
  broken.tm_mon = fields.month - 1;
  broken.tm_year = fields.year - 1900;
  broken.tm_wday = fields.dayOfWeek - 1;
  broken.tm_yday = fields.dayOfYear - 1;
  broken.tm_isdst = -1;
  char buffer[4096];
  return std::string(buffer, std::strftime(buffer, sizeof buffer, format, &broken));
}

std::string FormatDateTime(long t, std::string const& format) { return FormatDateTime(t, format.c_str()); }

long StrToDateTime(char const* text, char const* format, long def) {
  return ReadText(text == nullptr ? "" : text, format == nullptr ? "" : format, def);
}

long StrToDateTime(std::string const& text, std::string const& format, long def) { return ReadText(text, format, def); }

long long Round(double value) { return RoundHalfToEven(value); }
long long LRound(long double value) { return RoundHalfToEven(value); }
