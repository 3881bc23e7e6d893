// Dates and times as one number, and their calendar fields and text.
//
// A date-time is the number of seconds since 1970-01-01 00:00:00 of the calendar that its fields were given in (local
// or universal; the number does not say which). Valid ones lie between 0 and 2147483647 (2038-01-19 03:14:07) on every
// platform; every other value is invalid, and -1 is what functions return for "invalid".
//
// The calendar is the library's own, and files and callers depend on its peculiarities:
// - Every year divisible by 4 is a leap year.
// - Days of the week: Sunday 1, Monday 2, ... Friday 6, and Saturday 0 (not 7).
// - Two days a leap year cannot be decoded: 29 February comes back as 1 February (with its day of the year, 60), and
//   31 December as 1 January of the same year (with day of the year 1). The day of the week is right on both.
// - EncodeDateTime and DaysFromEpoch do not accept the same days.
//
// Where there is no memory for a text, std::bad_alloc is thrown.
#ifndef ZELVANE_CORE_DATETIME_H
#define ZELVANE_CORE_DATETIME_H

#include <string>

#include "zelvane/export.h"

// ---- The clock ----

// Now, in local or in universal time; -1 when the clock stands outside the valid range.
ZELVANE_API long GetDateTime();
ZELVANE_API long GetGMTDateTime();

// The universal date-time `t` in local time, by the rules of the time zone (TZ is looked at in every call); -1 when `t`
// or the result is not valid.
ZELVANE_API long GMTToLocalDateTime(long t);

// `t` taken through the universal calendar, which gives `t` back apart from the range test: NOT the inverse of
// GMTToLocalDateTime, in spite of its name. Callers depend on it. -1 when `t` is not valid.
ZELVANE_API long LocalToGMTDateTime(long t);

// Sets the system clock to `t` and its kernel time zone to zero. False, with nothing changed, when `t` is not valid or
// the system refuses the time (it takes root); a refused zone alone does not count.
ZELVANE_API bool SetDateTime(long t);

// ---- Calendar arithmetic ----

// Days from 1970-01-01 to the date. -1 when year < 1970, the month is not 1-12, day < 1, the day is behind the end of
// its month, or the result does not fit. In a leap year only February has an end (29): 31 April 2004 counts as 1 May,
// and so on for any number of days.
ZELVANE_API int DaysFromEpoch(int year, int month, int day);

// The date-time of the fields; -1 when one is outside its range (month 1-12, day up to the length of the month, hour
// 0-23, minute and second 0-59) or the result outside the valid range. Years 1-49 mean the current century, 50-99 the
// one before it; the year of GetDateTime() says which is current.
ZELVANE_API long EncodeDateTime(int year, int month, int day, int hour, int minute, int second);

// The fields of `t`, into every output that is not null: the four-digit year, month 1-12, day 1-31, hour, minute,
// second, day of the week (Saturday is 0) and day of the year (from 1). False, with every output untouched, when `t` is
// not valid. See above for the two days of a leap year that come out wrong.
ZELVANE_API bool DecodeDateTime(long t, int* year, int* month, int* day, int* hour, int* minute, int* second,
                                int* dayOfWeek, int* dayOfYear);

// One field of DecodeDateTime; -1 when `t` is not valid.
ZELVANE_API int DayOfWeek(long t);
ZELVANE_API int DayOfYear(long t);

// ---- Text ----

// A format is read as runs of one repeated character, after LowerCase (so "D" is "d", and a literal "T" is written
// "t"). Runs of d (day), m (month), y (year), h (hour), n (minute) and s (second) are fields; all else is literal. Null
// and "" stand for "dd/mm/yyyy hh:nn:ss".

// The text of `t`, every field filled with zeros up to the length of its run and never cut: "yy" writes 2005. "" when
// `t` is not valid.
ZELVANE_API std::string DateTimeToStr(char const* format, long t);
ZELVANE_API std::string DateTimeToStr(std::string const& format, long t);
// In the format that null stands for.
ZELVANE_API std::string DateTimeToStr(long t);

// The text of `t` in a format of strftime, names in the language of the program's locale. Saturday is handed on as day
// -1 of the week, which the C library prints as "?". "" when `t` is not valid, the format is null or has no text, or
// the text reaches 4096 bytes. The format ends at its first NUL in both forms.
ZELVANE_API std::string FormatDateTime(long t, char const* format);
ZELVANE_API std::string FormatDateTime(long t, std::string const& format);

// The date-time that `text` spells, or `def`. Fields are taken by position: a run of the format reads the same bytes of
// the text, as StrToIntDef reads them; what stands at the literals does not matter, nor what follows. Fields that are
// missing from the format, or read as -1, are taken from 1970-01-01 00:00:00. `def` when `text` is null or empty, a
// field is not a number, a letter has more than one run, or EncodeDateTime refuses the fields. Throws std::out_of_range
// (of std::string::substr) when a field begins behind the end of the text: "07/03/2005" does so at the hours of the
// default format. Callers depend on it.
ZELVANE_API long StrToDateTime(char const* text, char const* format, long def);
ZELVANE_API long StrToDateTime(std::string const& text, std::string const& format, long def);

// ---- Rounding ----

// The nearest integer. A first decimal digit above 5 rounds away from zero and one below 5 truncates; an exact half
// goes to the even neighbour (2.5 and -2.5 to 2 and -2, 3.5 to 4), anything more than a half away from zero. Values
// beyond the range of the result give its nearest end; not-a-number gives 0.
ZELVANE_API long long Round(double value);
ZELVANE_API long long LRound(long double value);

#endif
