/// @file
/// Dates and times as one number, and their calendar fields and text.
///
/// A date-time is the number of seconds since 1970-01-01 00:00:00 of the calendar in which its fields were given (local
/// or universal; the number does not say which). Valid date-times are 0 to 2147483647 (2038-01-19 03:14:07) on every
/// platform. Every other value is invalid; functions return -1 for "invalid".
///
/// The calendar is the library's own. Its peculiarities are kept, because files and callers depend on them:
/// - Every year divisible by 4 is a leap year.
/// - Days of the week: Sunday 1, Monday 2, ... Friday 6, and Saturday 0 (not 7).
/// - Two days of a leap year decode wrongly: 29 February as 1 February (with its day of the year, 60), and 31 December
///   as 1 January of the same year (with day of the year 1). The day of the week is right for both.
/// - EncodeDateTime and DaysFromEpoch do not accept the same days.
///
/// Functions that return a text throw std::bad_alloc when memory runs out.
#ifndef ZELVANE_CORE_DATETIME_H
#define ZELVANE_CORE_DATETIME_H

#include <string>

#include "zelvane/export.h"

/// @name The clock
/// @{

/// Return the current local or universal time; -1 if the clock is outside the valid range.
ZELVANE_API long GetDateTime();
ZELVANE_API long GetGMTDateTime();

/// Converts the universal date-time `t` to local time by the rules of the time zone (each call reads TZ). Returns -1 if
/// `t` or the result is not valid.
ZELVANE_API long GMTToLocalDateTime(long t);

/// Returns `t`, or -1 if `t` is not valid. In spite of its name it does NOT convert: it is not the inverse of
/// GMTToLocalDateTime. Kept: callers depend on it.
ZELVANE_API long LocalToGMTDateTime(long t);

/// Sets the system clock to `t` and the kernel's time zone to zero. Returns false and changes nothing if `t` is not
/// valid or the system refuses the time (this requires root). A refused time zone alone is no failure.
ZELVANE_API bool SetDateTime(long t);
/// @}

/// @name Calendar arithmetic
/// @{

/// Returns the days from 1970-01-01 to the date. Returns -1 if the year is below 1970, the month is not 1 to 12, the
/// day is below 1 or after the end of its month, or the result does not fit. Kept: in a leap year only February has an
/// end (29), so 31 April 2004 counts as 1 May, and so on for any number of days.
ZELVANE_API int DaysFromEpoch(int year, int month, int day);

/// Returns the date-time of the fields. Returns -1 if a field is out of range (month 1 to 12, day 1 to the length of
/// the month, hour 0 to 23, minute and second 0 to 59) or the result is not valid. Years 1 to 49 belong to the current
/// century, 50 to 99 to the one before; the year of GetDateTime() is the current one.
ZELVANE_API long EncodeDateTime(int year, int month, int day, int hour, int minute, int second);

/// Stores the fields of `t` in every output that is not null: four-digit year, month 1 to 12, day 1 to 31, hour,
/// minute, second, day of the week (Saturday is 0) and day of the year (from 1). Returns false with every output
/// unchanged if `t` is not valid. Two days of a leap year come out wrong (see above).
ZELVANE_API bool DecodeDateTime(long t, int* year, int* month, int* day, int* hour, int* minute, int* second,
                                int* dayOfWeek, int* dayOfYear);

/// Return one field of DecodeDateTime; -1 if `t` is not valid.
ZELVANE_API int DayOfWeek(long t);
ZELVANE_API int DayOfYear(long t);
/// @}

/// @name Text
///
/// A format consists of runs of one repeated character, after LowerCase (so "D" is "d", and a literal "T" is written
/// "t"). Runs of d (day), m (month), y (year), h (hour), n (minute) and s (second) are fields; everything else is
/// literal. Null and "" mean "dd/mm/yyyy hh:nn:ss".
/// @{

/// Returns the text of `t`. Every field gets leading zeros up to the length of its run and is never cut: "yy" writes
/// 2005. Returns "" if `t` is not valid.
ZELVANE_API std::string DateTimeToStr(char const* format, long t);
ZELVANE_API std::string DateTimeToStr(std::string const& format, long t);
/// Same in the default format.
ZELVANE_API std::string DateTimeToStr(long t);

/// Returns the text of `t` in a strftime format, with names in the language of the program's locale. Kept: Saturday is
/// passed to strftime as day -1 of the week, which the C library prints as "?". Returns "" if `t` is not valid, the
/// format is null or produces no text, or the text reaches 4096 bytes. In both overloads the format ends at its first
/// NUL.
ZELVANE_API std::string FormatDateTime(long t, char const* format);
ZELVANE_API std::string FormatDateTime(long t, std::string const& format);

/// Returns the date-time in `text`, or `def`. Fields are read by position: a run of the format reads the same bytes of
/// the text with StrToIntDef. The text at the literals is ignored, and so is the text after the format. Fields that are
/// missing from the format, or that read as -1, are those of 1970-01-01 00:00:00. Returns `def` if `text` is null or
/// empty, a field is not a number, a letter has more than one run, or EncodeDateTime refuses the fields.
/// Throws std::out_of_range (of std::string::substr) if a field begins after the end of the text: with the default
/// format, "07/03/2005" throws at the hours. Kept: callers depend on it.
ZELVANE_API long StrToDateTime(char const* text, char const* format, long def);
ZELVANE_API long StrToDateTime(std::string const& text, std::string const& format, long def);
/// @}

/// @name Rounding
/// @{

/// Returns the nearest integer. A first decimal digit above 5 rounds away from zero; one below 5 truncates. An exact
/// half rounds to the even neighbour (2.5 and -2.5 to 2 and -2, 3.5 to 4); more than a half rounds away from zero. A
/// value beyond the range of the result returns its nearest end; not-a-number returns 0.
ZELVANE_API long long Round(double value);
ZELVANE_API long long LRound(long double value);
/// @}

#endif
