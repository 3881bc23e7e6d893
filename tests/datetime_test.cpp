// Dates: every day beside the C library's calendar, with the peculiarities that are kept; text; the clock in zones.
#include "zelvane/core/datetime.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {

constexpr long kDay = 86400;
constexpr long kLast = 2147483647;

// The eight fields of a date-time; empty when it does not decode.
std::vector<int> Decoded(long t) {
  std::array<int, 8> f = {};
  if (!DecodeDateTime(t, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6], &f[7])) return {};
  return std::vector<int>(f.begin(), f.end());
}

// Sets TZ for a test.
class Zone {
 public:
  explicit Zone(char const* zone) {
    if (char const* const old = std::getenv("TZ")) old_ = old;
    setenv("TZ", zone, 1);
  }
  ~Zone() {
    if (old_) {
      setenv("TZ", old_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  Zone(Zone const&) = delete;
  Zone& operator=(Zone const&) = delete;

 private:
  std::optional<std::string> old_;
};

TEST(Calendar, EveryDayBesideTheCLibrary) {
  for (long day = 0; day <= kLast / kDay; day++) {
    long const t = day * kDay + std::min(day * 7919 % kDay, kLast % kDay);  // also times within the last, short day
    std::time_t const seconds = t;
    std::tm tm = {};
    gmtime_r(&seconds, &tm);
    int const year = tm.tm_year + 1900;
    SCOPED_TRACE(testing::Message() << year << "-" << tm.tm_mon + 1 << "-" << tm.tm_mday);
    ASSERT_EQ(DaysFromEpoch(year, tm.tm_mon + 1, tm.tm_mday), day);
    ASSERT_EQ(EncodeDateTime(year, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec), t);

    std::vector<int> expected = {year,      tm.tm_mon + 1, tm.tm_mday,           tm.tm_hour,
                                 tm.tm_min, tm.tm_sec,     (tm.tm_wday + 1) % 7, tm.tm_yday + 1};
    if (tm.tm_mon == 1 && tm.tm_mday == 29) expected[2] = 1;
    if (tm.tm_yday == 365) expected[1] = expected[2] = expected[7] = 1;
    ASSERT_EQ(Decoded(t), expected);
    ASSERT_EQ(DayOfWeek(t), expected[6]);
    ASSERT_EQ(DayOfYear(t), expected[7]);
  }
}

TEST(Calendar, DecodeLimitsAndOutputs) {
  EXPECT_EQ(Decoded(0), (std::vector<int>{1970, 1, 1, 0, 0, 0, 5, 1}));
  EXPECT_EQ(Decoded(kLast), (std::vector<int>{2038, 1, 19, 3, 14, 7, 3, 19}));
  EXPECT_EQ(Decoded(EncodeDateTime(2004, 12, 31, 23, 59, 59)), (std::vector<int>{2004, 1, 1, 23, 59, 59, 6, 1}));
  EXPECT_EQ(Decoded(EncodeDateTime(2004, 2, 29, 1, 2, 3)), (std::vector<int>{2004, 2, 1, 1, 2, 3, 1, 60}));
  EXPECT_TRUE(DecodeDateTime(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
  std::vector<long> invalid = {-1, LONG_MIN};
  long beyond = kLast;
  if (LONG_MAX > kLast) invalid.insert(invalid.end(), {++beyond, LONG_MAX});
  for (long const t : invalid) {
    int year = 42;
    EXPECT_FALSE(DecodeDateTime(t, &year, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)) << t;
    EXPECT_EQ(year, 42) << t;
    EXPECT_EQ(DayOfWeek(t), -1) << t;
    EXPECT_EQ(DayOfYear(t), -1) << t;
    EXPECT_EQ(DateTimeToStr(t), "") << t;
    EXPECT_EQ(FormatDateTime(t, "%Y"), "") << t;
    EXPECT_EQ(GMTToLocalDateTime(t), -1) << t;
    EXPECT_EQ(LocalToGMTDateTime(t), -1) << t;
  }
  EXPECT_FALSE(SetDateTime(-1) || SetDateTime(LONG_MIN));
}

TEST(Calendar, DaysFromEpochEdges) {
  struct {
    int year, month, day, days;
  } const rows[] = {{1970, 1, 1, 0},      {1969, 12, 31, -1},   {1970, 0, 1, -1},      {1970, 13, 1, -1},
                    {1970, 1, 0, -1},     {1970, 1, 31, 30},    {1970, 1, 32, -1},     {1970, 4, 31, -1},
                    {2003, 2, 29, -1},    {2004, 2, 29, 12477}, {2004, 2, 30, -1},     {2004, 4, 30, 12538},
                    {2004, 4, 31, 12539}, {2004, 5, 1, 12539},  {2004, 1, 400, 12817}, {2100, 2, 29, 47541},
                    {INT_MAX, 1, 1, -1},  {INT_MIN, 1, 1, -1}};
  for (auto const& row : rows) {
    EXPECT_EQ(DaysFromEpoch(row.year, row.month, row.day), row.days) << row.year << "-" << row.month << "-" << row.day;
  }
  // 1972 begins on day 730, and its January has no end.
  EXPECT_EQ(DaysFromEpoch(1972, 1, INT_MAX - 729), INT_MAX);
  EXPECT_EQ(DaysFromEpoch(1972, 1, INT_MAX - 728), -1);
}

TEST(Calendar, EncodeEdges) {
  struct {
    int year, month, day, hour, minute, second;
    long t;
  } const rows[] = {{1970, 1, 1, 0, 0, 0, 0},       {1970, 1, 1, 23, 59, 59, 86399},    {1970, 1, 1, 24, 0, 0, -1},
                    {1970, 1, 1, -1, 0, 0, -1},     {1970, 1, 1, 0, 60, 0, -1},         {1970, 1, 1, 0, -1, 0, -1},
                    {1970, 1, 1, 0, 0, 60, -1},     {1970, 1, 1, 0, 0, -1, -1},         {1970, 0, 1, 0, 0, 0, -1},
                    {1970, 13, 1, 0, 0, 0, -1},     {1970, 1, 0, 0, 0, 0, -1},          {1970, 1, 32, 0, 0, 0, -1},
                    {1969, 12, 31, 23, 59, 59, -1}, {100, 1, 1, 0, 0, 0, -1},           {0, 1, 1, 0, 0, 0, -1},
                    {-5, 1, 1, 0, 0, 0, -1},        {2004, 2, 29, 0, 0, 0, 1078012800}, {2003, 2, 29, 0, 0, 0, -1},
                    {2004, 4, 31, 0, 0, 0, -1},     {2038, 1, 19, 3, 14, 7, kLast},     {2038, 1, 19, 3, 14, 8, -1},
                    {2106, 2, 8, 0, 0, 0, -1},      {INT_MAX, 12, 31, 23, 59, 59, -1}};
  for (auto const& row : rows) {
    EXPECT_EQ(EncodeDateTime(row.year, row.month, row.day, row.hour, row.minute, row.second), row.t)
        << row.year << "-" << row.month << "-" << row.day << " " << row.hour << ":" << row.minute << ":" << row.second;
  }
  std::time_t const now = std::time(nullptr);
  std::tm tm = {};
  int const century = (localtime_r(&now, &tm)->tm_year + 1900) / 100 * 100;
  for (int const year : {1, 4, 5, 37, 38, 49, 50, 69, 70, 75, 99}) {
    int const whole = year < 50 ? century + year : century - 100 + year;
    EXPECT_EQ(EncodeDateTime(year, 1, 2, 3, 4, 5), EncodeDateTime(whole, 1, 2, 3, 4, 5)) << year;
  }
}

TEST(Clock, LocalAndUniversalTime) {
  Zone const zone("XYZ3");
  std::time_t const before = std::time(nullptr);
  long const local = GetDateTime();
  long const universal = GetGMTDateTime();
  std::time_t const after = std::time(nullptr);
  EXPECT_TRUE(local >= before - 3 * 3600 && local <= after - 3 * 3600) << local << " at " << before;
  EXPECT_TRUE(universal >= before && universal <= after) << universal << " at " << before;
}

TEST(Clock, ZonesAndSummerTime) {
  long const january = 1105358400;
  long const july = 1120996800;
  struct {
    char const* zone;
    long t;
    long local;
  } const rows[] = {{"UTC0", 0, 0},
                    {"UTC0", kLast, kLast},
                    {"BRT3BRST,M10.3.0/0,M2.3.0/0", january, january - 2 * 3600},
                    {"BRT3BRST,M10.3.0/0,M2.3.0/0", july, july - 3 * 3600},
                    {"BRT3", 0, -1},  // 1969 there
                    {"BRT3", 3 * 3600, 0},
                    {"CET-1", kLast - 3600, kLast},
                    {"CET-1", kLast - 3599, -1},
                    {"CET-1", -1, -1}};
  for (auto const& row : rows) {
    Zone const zone(row.zone);
    EXPECT_EQ(GMTToLocalDateTime(row.t), row.local) << row.zone << " " << row.t;
    EXPECT_EQ(LocalToGMTDateTime(row.t), row.t) << row.zone << " " << row.t;
  }
}

TEST(Text, DateTimeToStr) {
  long const t = EncodeDateTime(2005, 3, 7, 8, 9, 1);
  struct {
    char const* format;
    char const* text;
  } const rows[] = {{nullptr, "07/03/2005 08:09:01"},
                    {"", "07/03/2005 08:09:01"},
                    {"YYYY-MM-DD", "2005-03-07"},
                    {"d.m.yy h", "7.3.2005 8"},
                    {"yyyyyy ddd", "002005 007"},
                    {"DdMm", "0703"},
                    {"--T--", "--t--"},
                    {"\xC7 %d", "\xC7 %7"},
                    {"nn'ss\"", "09'01\""}};
  for (auto const& row : rows) {
    EXPECT_EQ(DateTimeToStr(row.format, t), row.text) << (row.format == nullptr ? "null" : row.format);
    EXPECT_EQ(DateTimeToStr(std::string(row.format == nullptr ? "" : row.format), t), row.text);
  }
  EXPECT_EQ(DateTimeToStr(t), "07/03/2005 08:09:01");
  EXPECT_EQ(DateTimeToStr(0), "01/01/1970 00:00:00");
  EXPECT_EQ(DateTimeToStr(std::string("d\0\0/", 4), t), std::string("7\0\0/", 4));
}

TEST(Text, FormatDateTime) {
  long const monday = EncodeDateTime(2005, 3, 7, 8, 9, 1);
  long const saturday = EncodeDateTime(2005, 3, 5, 0, 0, 0);
  struct {
    long t;
    std::string format;
    std::string text;
  } const rows[] = {{monday, "%Y-%m-%d %H:%M:%S", "2005-03-07 08:09:01"},
                    {monday, "%a %w %j", "Mon 1 066"},
                    {saturday, "%a", "?"},
                    {EncodeDateTime(2005, 3, 6, 0, 0, 0), "%A", "Sunday"},
                    {EncodeDateTime(2004, 12, 31, 0, 0, 0), "%d/%m/%Y %j", "01/01/2004 001"},
                    {monday, "", ""},
                    {monday, std::string(4095, 'x'), std::string(4095, 'x')},
                    {monday, std::string(4096, 'x'), ""},
                    {monday, std::string("%d\0%m", 5), "07"}};
  for (auto const& row : rows) {
    EXPECT_EQ(FormatDateTime(row.t, row.format), row.text) << row.format;
    EXPECT_EQ(FormatDateTime(row.t, row.format.c_str()), row.text) << row.format;
  }
  EXPECT_EQ(FormatDateTime(monday, static_cast<char const*>(nullptr)), "");
}

TEST(Text, StrToDateTime) {
  constexpr long kDef = -99;
  struct {
    char const* text;
    char const* format;
    long t;
  } const rows[] = {{nullptr, nullptr, kDef},
                    {"", "dd", kDef},
                    {"07/03/2005 08:09:01", nullptr, 1110182941},
                    {"07/03/2005 08:09:01", "", 1110182941},
                    {"07x03x2005_08.09.01 and more", "DD/MM/YYYY HH:NN:SS", 1110182941},
                    {"07/03/2005", "dd/mm/yyyy", 1110153600},
                    {"1999", "yyyy", 915148800},
                    {"05", "hh", 5 * 3600},
                    {"5", "hh", 5 * 3600},
                    {"+5", "hh", 5 * 3600},
                    {"-1", "hh", 0},
                    {"-2", "hh", kDef},
                    {" 5", "hh", kDef},
                    {"24", "hh", kDef},
                    {"-1 13", "hh hh", kDef},
                    {"31/04/2005", "dd/mm/yyyy", kDef},
                    {"29/02/2004", "dd/mm/yyyy", 1078012800},
                    {"xx 30", "hh nn", kDef},
                    {"07/", "dd/mm", kDef},  // the month begins at the end of the text: empty
                    {"any", "//", 0}};
  for (auto const& row : rows) {
    SCOPED_TRACE(testing::Message() << (row.text ? row.text : "null") << " as " << (row.format ? row.format : "null"));
    EXPECT_EQ(StrToDateTime(row.text, row.format, kDef), row.t);
    if (row.text == nullptr || row.format == nullptr) continue;
    EXPECT_EQ(StrToDateTime(std::string(row.text), std::string(row.format), kDef), row.t);
  }
}

TEST(Text, StrToDateTimeThrowsBehindTheEnd) {
  // The second one after a bad field, the third in a letter's second run.
  for (auto const& [text, format] :
       {std::pair("07/03/2005", ""), std::pair("xx", "dd/mm"), std::pair("07", "dd dd"), std::pair("1", "dd//s")}) {
    try {
      StrToDateTime(text, format, 0);
      ADD_FAILURE() << text << " as " << format << " did not throw";
    } catch (std::out_of_range const& error) {
      EXPECT_EQ(std::string(error.what()).rfind("basic_string::substr", 0), 0u) << error.what();
    }
  }
  EXPECT_EQ(StrToDateTime("1", "//", 7), 0) << "literals are not looked up";
}

TEST(Rounding, HalvesAndEnds) {
  struct {
    double value;
    long long rounded;
  } const rows[] = {{0.0, 0},
                    {0.4, 0},
                    {0.5, 0},
                    {0.6, 1},
                    {1.5, 2},
                    {2.5, 2},
                    {3.5, 4},
                    {2.57, 3},
                    {4.6, 5},
                    {-0.5, 0},
                    {-1.5, -2},
                    {-2.5, -2},
                    {-2.6, -3},
                    {-2.4, -2},
                    {1e300, LLONG_MAX},
                    {0x1p63, LLONG_MAX},
                    {-1e300, LLONG_MIN},
                    {-0x1p63, LLONG_MIN},
                    {std::nan(""), 0}};
  for (auto const& row : rows) {
    EXPECT_EQ(Round(row.value), row.rounded) << row.value;
    EXPECT_EQ(LRound(row.value), row.rounded) << row.value;
  }
  EXPECT_EQ(Round(0.49999999999999994), 0);  // adding a half to it would give 1
  EXPECT_EQ(Round(4503599627370495.5), 4503599627370496);
  EXPECT_EQ(LRound(9223372036854775806.5L),
            std::numeric_limits<long double>::digits > 60 ? 9223372036854775806 : LLONG_MAX);
}

}  // namespace
