// Dates: every day beside the C library's calendar, with the peculiarities that are kept; text; the clock in zones.
#include "zelvane/core/datetime.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string>
#include <tuple>

#include "support/processes.h"

namespace {

// What the machine's clock was asked to become: the test program has a settimeofday() of its own, which the library
// finds before the C library's.
std::string g_clock;
bool g_clockRefuses = false;

}  // namespace

extern "C" __attribute__((visibility("default"))) int settimeofday(timeval const* time,
                                                                   struct timezone const* zone) noexcept {
  if (time != nullptr) g_clock += std::to_string(time->tv_sec) + "." + std::to_string(time->tv_usec) + " ";
  if (zone != nullptr) g_clock += "zone " + std::to_string(zone->tz_minuteswest) + " ";
  return g_clockRefuses ? -1 : 0;
}

namespace {

using Fields = std::array<int, 8>;

constexpr long kDay = 86400, kLast = 2147483647;
constexpr Fields kUntouched = {42, 42, 42, 42, 42, 42, 42, 42};

Fields Decoded(long t) {
  Fields f = kUntouched;
  bool const valid = DecodeDateTime(t, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6], &f[7]);
  EXPECT_EQ(valid, f != kUntouched) << t;
  return f;
}

long Encoded(char const* date) {
  std::array<int, 6> f = {};
  std::sscanf(date, "%d-%d-%d %d:%d:%d", &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  return EncodeDateTime(f[0], f[1], f[2], f[3], f[4], f[5]);
}

TEST(Calendar, EveryDayBesideTheCLibrary) {
  for (long day = 0; day <= kLast / kDay && !HasFailure(); day++) {
    // The first and the last second, too; the last day's sum does not fit into 32 bits.
    auto const t = static_cast<std::time_t>(std::min<long long>(1LL * day * kDay + day * 7907 % kDay, kLast));
    std::tm tm = {};
    gmtime_r(&t, &tm);
    int const year = tm.tm_year + 1900, month = tm.tm_mon + 1;
    EXPECT_EQ(DaysFromEpoch(year, month, tm.tm_mday), day);
    EXPECT_EQ(EncodeDateTime(year, month, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec), t);
    Fields expected = {year, month, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, (tm.tm_wday + 1) % 7, tm.tm_yday + 1};
    if (month == 2 && tm.tm_mday == 29) expected[2] = 1;
    if (tm.tm_yday == 365) expected[1] = expected[2] = expected[7] = 1;
    EXPECT_EQ(Decoded(t), expected) << t;
    EXPECT_EQ(std::pair(DayOfWeek(t), DayOfYear(t)), std::pair(expected[6], expected[7])) << t;
  }
}

TEST(Calendar, ValuesThatAreNoDateTime) {
  for (long const t : {-1L, LONG_MIN, static_cast<long>(kLast + 1LL), static_cast<long>(LLONG_MAX)}) {
    EXPECT_EQ(Decoded(t), kUntouched) << t;
    for (long const result : {long{DayOfWeek(t)}, long{DayOfYear(t)}, GMTToLocalDateTime(t), LocalToGMTDateTime(t)})
      EXPECT_EQ(result, -1) << t;
    EXPECT_EQ(DateTimeToStr(t) + FormatDateTime(t, "%Y"), "") << t;
  }
  EXPECT_FALSE(SetDateTime(-1) || SetDateTime(LONG_MIN));
  EXPECT_TRUE(DecodeDateTime(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(Clock, SetToTheSecondThenToNoZone) {
  for (bool const refuses : {false, true}) {
    g_clock.clear(), g_clockRefuses = refuses;
    EXPECT_EQ(SetDateTime(1110182941), !refuses);
    EXPECT_EQ(g_clock, refuses ? "1110182941.0 " : "1110182941.0 zone 0 ");
  }
}

TEST(Calendar, DaysFromEpochEdges) {
  // A leap year bounds February alone: the January of 1972, which begins on day 730, has no end.
  using Row = std::tuple<int, int, int, int>;
  for (auto const& [year, month, day, days] :
       {Row(1969, 6, 1, -1), Row(1970, 0, 1, -1), Row(1970, 13, 1, -1), Row(1975, 1, 0, -1), Row(1970, 1, 32, -1),
        Row(2003, 2, 29, -1), Row(2004, 2, 30, -1), Row(2004, 4, 31, 12539), Row(2100, 2, 29, 47541),
        Row(INT_MAX, 1, 1, -1), Row(1972, 1, INT_MAX - 729, INT_MAX), Row(1972, 1, INT_MAX - 728, -1)})
    EXPECT_EQ(DaysFromEpoch(year, month, day), days) << year << "-" << month << "-" << day;
}

TEST(Calendar, EncodeEdges) {
  for (char const* date :
       {"1970-1-1 24:0:0", "1970-1-1 -1:0:0", "1970-1-1 0:60:0", "1970-1-1 0:-1:0", "1970-1-1 0:0:60",
        "1970-1-1 0:0:-1", "1970-0-1", "1970-13-1", "1970-1-0", "1970-1-32", "1969-12-31 23:59:59", "100-1-1", "0-1-1",
        "-5-1-1", "2003-2-29", "2004-4-31", "2038-1-19 3:14:8", "2147483647-12-31"})
    EXPECT_EQ(Encoded(date), -1) << date;
  int const century = Decoded(GetDateTime())[0] / 100 * 100;
  auto const start = [](int year) { return EncodeDateTime(year, 1, 1, 0, 0, 0); };
  for (int const year : {1, 37, 38, 49, 50, 69, 70, 99})
    EXPECT_EQ(start(year), start(century + year - (year < 50 ? 0 : 100))) << year;
}

TEST(Clock, ZonesAndSummerTime) {
  constexpr char kSouth[] = "BRT3BRST,M10.3.0/0,M2.3.0/0";
  using Row = std::tuple<char const*, long, long>;
  for (auto const& [name, t, local] : {Row(kSouth, 1105358400, 1105351200), Row(kSouth, 1120996800, 1120986000),
                                       Row("BRT3", 10799, -1), Row("BRT3", 10800, 0), Row("CET-1", kLast - 3600, kLast),
                                       Row("CET-1", kLast - 3599, -1), Row("CET-1", -1, -1)}) {
    test::Environment const zone("TZ", name);
    EXPECT_EQ(std::pair(GMTToLocalDateTime(t), LocalToGMTDateTime(t)), std::pair(local, t)) << name << " " << t;
  }
  test::Environment const zone("TZ", "XYZ3");
  std::time_t const before = std::time(nullptr);
  for (long const now : {GetDateTime() + 3 * 3600, GetGMTDateTime()})
    EXPECT_TRUE(before <= now && now <= std::time(nullptr)) << now << " at " << before;
}

TEST(DateText, Written) {
  long const t = EncodeDateTime(2005, 3, 7, 8, 9, 1);
  using Row = std::tuple<char const*, char const*>;
  for (auto const& [format, text] :
       {Row("", "07/03/2005 08:09:01"), Row("YYYY-MM-DD", "2005-03-07"), Row("d.m.yy h", "7.3.2005 8"),
        Row("yyyyyy ddd", "002005 007"), Row("--T--", "--t--"), Row("\xC7 %d", "\xC7 %7"), Row("nn'ss\"", "09'01\"")})
    EXPECT_EQ(DateTimeToStr(format, t) + DateTimeToStr(std::string(format), t), std::string(text) + text) << format;
  EXPECT_EQ(DateTimeToStr(t) + DateTimeToStr(nullptr, 0), "07/03/2005 08:09:0101/01/1970 00:00:00");
  std::string const longest(4095, 'x');
  EXPECT_EQ(FormatDateTime(t, "%Y-%m-%d %H:%M:%S %a %w %j"), "2005-03-07 08:09:01 Mon 1 066");
  EXPECT_EQ(FormatDateTime(t - 2 * kDay, "%a") + FormatDateTime(t - kDay, std::string("%A\0%d", 5)), "?Sunday");
  EXPECT_EQ(FormatDateTime(t, longest) + FormatDateTime(t, longest + "x"), longest);
  EXPECT_EQ(FormatDateTime(t, "") + FormatDateTime(t, static_cast<char const*>(nullptr)), "");
}

TEST(DateText, Read) {
  using Row = std::tuple<char const*, char const*, long>;
  for (auto const& [text, format, t] :
       {Row("", "//", -9), Row("07/03/2005 08:09:01", "", 1110182941),
        Row("07x03x2005_08.09.01 and more", "DD/MM/YYYY HH:NN:SS", 1110182941), Row("5", "hh", 18000),
        Row("-1", "hh", 0), Row("-2", "hh", -9), Row(" 5", "hh", -9), Row("24", "hh", -9), Row("-1 13", "hh hh", -9),
        Row("31/04/2005", "dd/mm/yyyy", -9), Row("xx 30", "hh nn", -9), Row("07/", "dd/mm", -9), Row("1", "//", 0)})
    EXPECT_EQ(StrToDateTime(text, format, -9), t) << text << " as " << format;
  EXPECT_EQ(StrToDateTime(std::string("5"), std::string("nn"), -9), 300);
  EXPECT_EQ(StrToDateTime(nullptr, nullptr, -9), -9);
  // A field behind the end of the text. The second one after a bad field, the third in a letter's second run.
  for (auto const& [text, format] : {std::pair("07/03/2005", ""), {"xx", "dd/mm"}, {"07", "dd dd"}, {"1", "dd//s"}})
    EXPECT_THROW(StrToDateTime(text, format, 0), std::out_of_range) << text << " as " << format;
}

TEST(Rounding, HalvesAndEnds) {
  using Row = std::tuple<double, long long>;
  for (auto const& [value, rounded] :
       {Row(0.4, 0), Row(0.5, 0), Row(1.5, 2), Row(2.5, 2), Row(2.57, 3), Row(-0.5, 0), Row(-1.5, -2), Row(-2.5, -2),
        Row(-2.6, -3), Row(-2.4, -2), Row(0x1p63, LLONG_MAX), Row(1e300, LLONG_MAX), Row(-1e300, LLONG_MIN),
        Row(std::nan(""), 0), Row(0.49999999999999994, 0), Row(4503599627370495.5, 4503599627370496)})
    EXPECT_EQ(std::pair(Round(value), LRound(value)), std::pair(rounded, rounded)) << value;
  EXPECT_EQ(LRound(9223372036854775806.5L), LDBL_MANT_DIG > 60 ? 9223372036854775806 : LLONG_MAX);
}

}  // namespace
