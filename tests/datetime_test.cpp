// Dates: every day against the C library's calendar, with the kept deviations; text; the clock in time zones.
#include "zelvane/core/datetime.h"

#include <sys/time.h>
#include <cfloat>
#include <ctime>

#include "support/processes.h"
#include "support/test.h"

namespace {

// The calls that set the machine's clock. The test program has its own settimeofday(), which the library finds before
// the C library's.
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

using test::Table;
using Fields = std::array<int, 8>;

constexpr long kDay = 86400, kLast = 2147483647;
constexpr Fields kUntouched = {42, 42, 42, 42, 42, 42, 42, 42};

Fields Decoded(long t) {
  Fields f = kUntouched;
  bool const valid = DecodeDateTime(t, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6], &f[7]);
  EXPECT_EQ(valid, f != kUntouched) << t;
  return f;
}

using Date = std::array<int, 6>;

Date Parsed(std::string const& date) {
  Date d = {};
  std::sscanf(date.c_str(), "%d-%d-%d %d:%d:%d", &d[0], &d[1], &d[2], &d[3], &d[4], &d[5]);
  return d;
}

TEST(Calendar, EveryDayBesideTheCLibrary) {
  for (long day = 0; day <= kLast / kDay && !HasFailure(); day++) {
    // Includes the first and the last second; the sum of the last day does not fit in 32 bits.
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
    EXPECT_EACH((DateTimeToStr(t), FormatDateTime(t, "%Y")), "") << t;
    EXPECT_FALSE(SetDateTime(t)) << t;
  }
  EXPECT_TRUE(DecodeDateTime(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(Clock, SetToTheSecondThenToNoZone) {
  for (bool const refuses : {false, true}) {
    g_clock.clear(), g_clockRefuses = refuses;
    EXPECT_EQ(SetDateTime(1110182941), !refuses);
    EXPECT_EQ(g_clock, refuses ? "1110182941.0 " : "1110182941.0 zone 0 ");
  }
}

TEST(Calendar, Edges) {
  for (test::Case const& c : Table("core/datetime.txt", "days from the epoch")) {
    Date const d = Parsed(c[0]);
    EXPECT_EQ(DaysFromEpoch(d[0], d[1], d[2]), c.Int(1)) << c;
  }
  for (test::Case const& c : Table("core/datetime.txt", "no date-time")) {
    Date const d = Parsed(c[0]);
    EXPECT_EQ(EncodeDateTime(d[0], d[1], d[2], d[3], d[4], d[5]), -1) << c;
  }
  int const century = Decoded(GetDateTime())[0] / 100 * 100;
  auto const start = [](int year) { return EncodeDateTime(year, 1, 1, 0, 0, 0); };
  for (int const year : {1, 37, 38, 49, 50, 69, 70, 99})
    EXPECT_EQ(start(year), start(century + year - (year < 50 ? 0 : 100))) << year;
}

TEST(Clock, ZonesAndSummerTime) {
  for (test::Case const& c : Table("core/datetime.txt", "zones")) {
    test::Environment const zone("TZ", c[0]);
    EXPECT_EQ(GMTToLocalDateTime(c.Int(1)), c.Int(2)) << c;
    EXPECT_EQ(LocalToGMTDateTime(c.Int(1)), c.Int(1)) << c;
  }
  test::Environment const zone("TZ", "XYZ3");
  std::time_t const before = std::time(nullptr);
  for (long const now : {GetDateTime() + 3 * 3600, GetGMTDateTime()})
    EXPECT_ALL(before <= now, now <= std::time(nullptr)) << now << " at " << before;
}

TEST(DateText, Written) {
  long const t = EncodeDateTime(2005, 3, 7, 8, 9, 1);
  for (test::Case const& c : Table("core/datetime.txt", "written"))
    EXPECT_EACH((DateTimeToStr(c[0].c_str(), t), DateTimeToStr(c[0], t)), c[1]) << c;
  EXPECT_EACH((DateTimeToStr(t), DateTimeToStr(nullptr, 0)), "07/03/2005 08:09:01", "01/01/1970 00:00:00");
  std::string const longest(4095, 'x');
  EXPECT_EQ(FormatDateTime(t, "%Y-%m-%d %H:%M:%S %a %w %j"), "2005-03-07 08:09:01 Mon 1 066");
  EXPECT_EACH((FormatDateTime(t - 2 * kDay, "%a"), FormatDateTime(t - kDay, std::string("%A\0%d", 5))), "?", "Sunday");
  EXPECT_EACH((FormatDateTime(t, longest), FormatDateTime(t, longest + "x")), longest, "");
  EXPECT_EACH((FormatDateTime(t, ""), FormatDateTime(t, static_cast<char const*>(nullptr))), "");
}

TEST(DateText, Read) {
  for (test::Case const& c : Table("core/datetime.txt", "read"))
    for (long const read : {StrToDateTime(c[0].c_str(), c[1].c_str(), -9), StrToDateTime(c[0], c[1], -9)})
      EXPECT_EQ(read, c.Int(2)) << c;
  EXPECT_EQ(StrToDateTime(nullptr, nullptr, -9), -9);
  for (test::Case const& c : Table("core/datetime.txt", "read beyond the end")) {
    std::string const text = c[0], format = c[1];
    EXPECT_THROW(StrToDateTime(text, format, 0), std::out_of_range) << c;
  }
}

TEST(Rounding, HalvesAndEnds) {
  for (test::Case const& c : Table("core/datetime.txt", "rounded")) {
    double const value = std::strtod(c[0].c_str(), nullptr);
    EXPECT_EQ(std::pair(Round(value), LRound(value)), std::pair(std::stoll(c[1]), std::stoll(c[1]))) << c;
  }
  EXPECT_EQ(LRound(9223372036854775806.5L), LDBL_MANT_DIG > 60 ? 9223372036854775806 : LLONG_MAX);
}

}  // namespace
