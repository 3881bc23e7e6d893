#include "zelvane/core/datetime.h"

#include <sys/time.h>

#include <algorithm>
#include <bitset>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "zelvane/core/datetime_internal.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::kDaySeconds;
using zelvane::internal::ToInt;
using zelvane::internal::View;

namespace {

constexpr long kNoDate = -1;
constexpr std::int64_t kLastDateTime = 2147483647;
constexpr int kYearDays = 365;
constexpr std::string_view kDefaultFormat = "dd/mm/yyyy hh:nn:ss";

bool IsLeapYear(int year) { return year % 4 == 0; }

// Days before the month in an ordinary year; 13 means the end of the year.
int DaysBefore(int month) {
  static constexpr int kDays[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
  return kDays[month - 1];
}

bool IsMonth(int month) { return month >= 1 && month <= 12; }

int MonthLength(int year, int month) {
  // 31 and 30 alternate; August begins again with 31.
  return month != 2 ? 30 | (month ^ month >> 3) : IsLeapYear(year) ? 29 : 28;
}

// Days since 1 January 1970, from that year on. A day after the end of the month counts as one of the next months.
std::int64_t DayNumber(int year, int month, int day) {
  bool const leapDayGone = IsLeapYear(year) && month > 2;
  return (year - std::int64_t{1970}) * kYearDays + (year - 1969) / 4 + DaysBefore(month) + leapDayGone + day - 1;
}

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

// Stores the year in `fields` and returns how many of its days are over: 0 for 31 December of a leap year. Its 365 days
// are removed as for an ordinary year, and nothing remains for the leap day.
int DecodeYear(int days, Fields& fields) {
  constexpr int kFourYears = 4 * kYearDays + 1;  // from 1970 on, the third of four is the leap year
  constexpr int kLeapYearEnd = 3 * kYearDays;
  int const rest = days % kFourYears;
  int const withoutLeapDay = rest > kLeapYearEnd ? rest - 1 : rest;
  fields.year = 1970 + days / kFourYears * 4 + (rest == kLeapYearEnd ? 2 : withoutLeapDay / kYearDays);
  return rest == kLeapYearEnd ? 0 : withoutLeapDay % kYearDays;
}

// In the same way, 29 February becomes the first of its month.
void DecodeMonth(int days, Fields& fields) {
  constexpr int kLeapDay = 31 + 28;
  if (IsLeapYear(fields.year) && days == kLeapDay) {
    fields.month = 2;
    fields.day = 1;
    return;
  }
  if (IsLeapYear(fields.year) && days > kLeapDay) days--;
  fields.month = days / 31 + 1;  // that month or the previous one
  if (days >= DaysBefore(fields.month + 1)) fields.month++;
  fields.day = days - DaysBefore(fields.month) + 1;
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

inline long Encode(int year, int month, int day, int hour, int minute, int second) {
  if (year < 1970 || !IsMonth(month) || day < 1 || day > MonthLength(year, month)) return kNoDate;
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return kNoDate;
  std::int64_t const t = DayNumber(year, month, day) * kDaySeconds + hour * 3600 + minute * 60 + second;
  return t > kLastDateTime ? kNoDate : static_cast<long>(t);
}

// Years of two digits are of this century up to 49, of the last one from 50 on. A function of its own: with the call of
// the clock in it, Encode would save registers for every year.
__attribute__((noinline)) long EncodeShortYear(int year, int month, int day, int hour, int minute, int second) {
  Fields now;
  if (year < 1 || !Decode(GetDateTime(), now)) return kNoDate;
  int const century = now.year / 100 * 100 - (year < 50 ? 0 : 100);
  return Encode(century + year, month, day, hour, minute, second);
}

long FromCalendar(std::tm const* fields) {
  if (fields == nullptr) return kNoDate;
  return EncodeDateTime(fields->tm_year + 1900, fields->tm_mon + 1, fields->tm_mday, fields->tm_hour, fields->tm_min,
                        fields->tm_sec);
}

long LocalFields(std::time_t t) {
  std::tm fields = {};
  tzset();  // localtime_r need not read TZ again
  return FromCalendar(localtime_r(&t, &fields));
}

long UniversalFields(std::time_t t) {
  std::tm fields = {};
  return FromCalendar(gmtime_r(&t, &fields));
}

// The letters of a format count in either case; its literals are written in lower case. Most are lower case already.
char Lower(char c) {
  auto const byte = static_cast<unsigned char>(c);
  bool const mayHaveCase = byte >= 0x80 || (byte >= 'A' && byte <= 'Z');
  return mayHaveCase ? static_cast<char>(std::tolower(byte)) : c;
}

// A run of one repeated character in a format.
struct Run {
  char letter;
  std::size_t start;
  std::size_t length;
};

// Calls `take` with each run of the format in turn.
template <typename Take>
void ForEachRun(std::string_view format, Take take) {
  if (format.empty()) format = kDefaultFormat;
  for (std::size_t start = 0, end = 0; start < format.size(); start = end) {
    char const letter = Lower(format[start]);
    while (end < format.size() && Lower(format[end]) == letter) end++;
    take(Run{letter, start, end - start});
  }
}

constexpr int Fields::*kInText[] = {&Fields::day,  &Fields::month,  &Fields::year,
                                    &Fields::hour, &Fields::minute, &Fields::second};

// Returns the field of a letter of a format; null for a literal.
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

// Writes the digits of a field, which is never negative, from the right over the zeros of its run. Inserts digits for
// which the run is too short before it; returns their number.
std::size_t PutDigits(std::string& text, std::size_t run, std::size_t length, int value) {
  for (; length > 0 && value > 0; length--, value /= 10) text[run + length - 1] = static_cast<char>('0' + value % 10);
  if (value == 0) return 0;
  std::string const rest = std::to_string(value);
  text.insert(run, rest);
  return rest.size();
}

std::string Text(std::string_view format, long t) {
  Fields fields;
  if (!Decode(t, fields)) return "";
  std::string result(format.empty() ? kDefaultFormat.size() : format.size(), '0');
  std::size_t more = 0;  // bytes by which the text is longer than its format
  ForEachRun(format, [&](Run run) {
    if (int const* const field = FieldOf(fields, run.letter)) {
      more += PutDigits(result, run.start + more, run.length, *field);
    } else {
      std::fill_n(&result[run.start + more], run.length, run.letter);
    }
  });
  return result;
}

constexpr int kAbsent = -1;
constexpr int kInvalid = -2;

// Same as StrToIntDef, but faster for the few digits of nearly every field.
int FieldValue(std::string_view text) {
  constexpr std::size_t kFew = 9;
  int value = 0;
  for (char const c : text) {
    if (text.size() > kFew || c < '0' || c > '9') return static_cast<int>(ToInt(text, kInvalid));
    value = value * 10 + (c - '0');
  }
  return text.empty() ? kInvalid : value;
}

// Values for absent fields: 1970-01-01 00:00:00.
constexpr Fields kFirstSecond = {1970, 1, 1, 0, 0, 0, 0, 0};

long ReadText(std::string_view text, std::string_view format, long def) {
  if (text.empty()) return def;
  Fields fields = {kAbsent, kAbsent, kAbsent, kAbsent, kAbsent, kAbsent, 0, 0};
  std::bitset<26> seen;  // the letters of the fields
  ForEachRun(format, [&](Run run) {
    int* const field = FieldOf(fields, run.letter);
    if (field == nullptr) return;
    // Callers expect the exception of std::string if a text ends before a field begins.
    if (run.start > text.size()) throw std::out_of_range("basic_string::substr");
    int const value = FieldValue(text.substr(run.start, run.length));
    auto const letter = static_cast<std::size_t>(run.letter - 'a');
    *field = seen[letter] ? kInvalid : value;
    seen.set(letter);
  });
  for (int Fields::*const field : kInText) {
    if (fields.*field == kInvalid) return def;
    if (fields.*field == kAbsent) fields.*field = kFirstSecond.*field;
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
  // The C library refuses a time and a zone in one call. The time is already set: a refused zone does not undo it.
  struct timezone zone = {};
  static_cast<void>(settimeofday(nullptr, &zone));
  return true;
}

int DaysFromEpoch(int year, int month, int day) {
  if (year < 1970 || !IsMonth(month) || day < 1) return -1;
  // Kept, because files and callers depend on it: a leap year limits only February.
  if ((!IsLeapYear(year) || month == 2) && day > MonthLength(year, month)) return -1;
  std::int64_t const days = DayNumber(year, month, day);
  return days > std::numeric_limits<int>::max() ? -1 : static_cast<int>(days);
}

long EncodeDateTime(int year, int month, int day, int hour, int minute, int second) {
  if (year < 100) return EncodeShortYear(year, month, day, hour, minute, second);
  return Encode(year, month, day, hour, minute, second);
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

std::string DateTimeToStr(char const* format, long t) { return Text(View(format), t); }
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

long StrToDateTime(char const* text, char const* format, long def) { return ReadText(View(text), View(format), def); }

long StrToDateTime(std::string const& text, std::string const& format, long def) { return ReadText(text, format, def); }

long long Round(double value) { return RoundHalfToEven(value); }
long long LRound(long double value) { return RoundHalfToEven(value); }
