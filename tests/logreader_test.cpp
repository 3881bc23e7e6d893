#include "zelvane/logs/logreader.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>
#include <vector>

#include "support/scratch.h"

namespace {

namespace fs = std::filesystem;

struct Event {
  std::int32_t when;
  std::uint16_t code;
};

std::string Record(Event const& event) {
  std::string bytes;
  for (int i = 0; i < 4; i++) bytes += static_cast<char>(static_cast<std::uint32_t>(event.when) >> (8 * i));
  bytes += static_cast<char>(event.code);
  bytes += static_cast<char>(event.code >> 8);
  for (int i = 2; i < 64; i++) bytes += static_cast<char>(event.code + i);
  return bytes;
}

std::string FileOf(std::vector<Event> const& events) {
  std::string bytes;
  for (Event const& event : events) bytes += Record(event);
  return bytes;
}

// An open log with these events; its file is gone already.
class EventLog {
 public:
  explicit EventLog(std::vector<Event> const& events) {
    test::Scratch const scratch;
    handle_ = LogReaderOpen(scratch.Write("log.rgt", FileOf(events)).c_str());
  }
  ~EventLog() { EXPECT_EQ(LogReaderClose(handle_), 1); }
  EventLog(EventLog const&) = delete;
  EventLog& operator=(EventLog const&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

std::int32_t At(int day, int hour, int minute = 0, int second = 0) {
  return static_cast<std::int32_t>(EncodeProgDateTime(2005, 3, day, hour, minute, second));
}

TEST(LogReader, OpensWhatCanBeRead) {
  test::Scratch scratch;
  std::string const two = FileOf({{1, 2}, {3, 4}});
  fs::create_directory(scratch.Path("folder"));
  struct {
    std::string path;
    int records;  // -1: no handle
  } const rows[] = {{scratch.Write("log.rgt", two), 2},
                    {scratch.Write("plain", two), 2},
                    {scratch.Write("log.cryx", two), 2},
                    {scratch.Write("cry", two), 2},
                    {scratch.Write("x.cry/y.rgt", two), 2},
                    {scratch.Write("log.cry", two), 0},
                    {scratch.Write("log.CrY", two), 0},
                    {scratch.Write("torn", two + "x"), 0},
                    {scratch.Write("short", two.substr(1)), 0},
                    {scratch.Write("empty", ""), 0},
                    {scratch.Path("folder"), 0},
                    {"/dev/null", 0},
                    {scratch.Path("missing"), -1},
                    {scratch.Path("missing.cry"), -1},
                    {"", -1}};
  int const open = test::OpenDescriptors();
  for (auto const& row : rows) {
    void* const log = LogReaderOpen(row.path.c_str());
    ASSERT_EQ(log == nullptr, row.records < 0) << row.path;
    EXPECT_EQ(LogReaderRegCount(log), row.records < 0 ? 0u : static_cast<unsigned>(row.records)) << row.path;
    EXPECT_EQ(LogReaderCountEvents(log, 2, 0, 0), row.records > 0 ? 1u : 0u) << row.path;
    EXPECT_EQ(LogReaderTimeEvents(log, 2, 4, -1, 0, 0), row.records > 0 ? 2 : 0) << row.path;
    EXPECT_EQ(LogReaderClose(log), row.records < 0 ? 0 : 1) << row.path;
  }
  EXPECT_EQ(LogReaderOpen(nullptr), nullptr);
  EXPECT_EQ(test::OpenDescriptors(), open);
}

TEST(LogReader, RecordsComeAsTheyStand) {
  std::vector<Event> const events = {{At(7, 8), 0x0102}, {-5, 0xFFFF}, {0, 0}};
  EventLog const log(events);
  char data[66];
  long when = 0;
  for (size_t i = 0; i < events.size(); i++) {
    memset(data, '~', sizeof data);
    EXPECT_EQ(LogReaderReadReg(log, i, &when, data + 1), 1) << i;
    EXPECT_EQ(when, events[i].when) << i;
    EXPECT_EQ(std::string(data, sizeof data), "~" + Record(events[i]).substr(4) + "~") << i;
  }
  for (unsigned long index : {3ul, ULONG_MAX}) EXPECT_EQ(LogReaderReadReg(log, index, &when, data), 0) << index;
  EXPECT_EQ(LogReaderReadReg(log, 0, nullptr, data), 0);
  EXPECT_EQ(LogReaderReadReg(log, 0, &when, nullptr), 0);
  EXPECT_EQ(LogReaderReadReg(nullptr, 0, &when, data), 0);
  short const ends[] = {1};
  EXPECT_EQ(LogReaderTimeEvents2(log, 0x0102, nullptr, 1, 0, LONG_MAX), 0);
  EXPECT_EQ(LogReaderTimeEvents2(log, 0x0102, ends, 0, 0, LONG_MAX), 0);
  EXPECT_EQ(LogReaderTimeEvents2(nullptr, 0x0102, ends, 1, 0, LONG_MAX), 0);
}

TEST(LogReader, DatesOfTheSchedule) {
  int year, month, day, hour, minute, second;
  EXPECT_EQ(DecodeProgDateTime(At(7, 8, 9, 10), &year, &month, &day, &hour, &minute, &second), 1);
  EXPECT_EQ((std::vector<int>{year, month, day, hour, minute, second}), (std::vector<int>{2005, 3, 7, 8, 9, 10}));
  EXPECT_EQ(DecodeProgDateTime(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(DecodeProgDateTime(-1, &year, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(year, 2005);
  EXPECT_EQ(EncodeProgDateTime(1970, 1, 2, 0, 0, 1), 86401);
  EXPECT_EQ(EncodeProgDateTime(2003, 2, 29, 0, 0, 0), -1);
}

TEST(LogReader, TheEarlierGenerationIsNotKnown) {
  test::Scratch scratch;
  std::string const path = scratch.Write("log.cry", FileOf({{1, 2}}));
  void* records = &scratch;
  EXPECT_EQ(Load_Zelvane3x_Log(path.c_str(), &records), 0u);
  EXPECT_EQ(records, nullptr);
  EXPECT_EQ(Load_Zelvane3x_Log(nullptr, nullptr), 0u);
  Close_Zelvane3x_Log(nullptr);
  Close_Zelvane3x_Log(&records);
  records = malloc(68);
  Close_Zelvane3x_Log(&records);
  EXPECT_EQ(records, nullptr);
}

TEST(LogStatistics, CountedByDate) {
  auto const date = [](int year, int month, int day, int hour = 12) {
    return static_cast<std::int32_t>(EncodeProgDateTime(year, month, day, hour, 0, 0));
  };
  EventLog const log({{At(7, 0) - 1, 5},
                      {At(7, 0), 5},
                      {At(9, 23, 30), 5},
                      {At(10, 0), 5},
                      {At(8, 12), 6},
                      {At(8, 12), 0xFF05},
                      {At(8, 1), 5},
                      {-1, 5},
                      {INT32_MIN, 5},
                      {date(2004, 2, 29), 9},
                      {date(2004, 2, 1), 9},
                      {date(2004, 12, 31), 9},
                      {date(2004, 1, 1, 0), 9},
                      {0, 7},
                      {-1, 7},
                      {INT32_MAX, 7}});
  struct {
    unsigned short code;
    long from, to;
    unsigned long count;
  } const rows[] = {{5, At(7, 15), At(9, 3), 3},  // the times of day do not matter
                    {5, At(7, 0), At(9, 23, 59, 59), 3},
                    {5, At(6, 0), At(10, 0), 5},
                    {5, At(8, 23), At(8, 1), 1},
                    {5, At(9, 0), At(8, 23), 0},
                    {6, At(8, 0), At(8, 0), 1},
                    {0xFF05, At(8, 0), At(8, 0), 1},
                    {5, -1, At(9, 0), 4},
                    {5, LONG_MIN, At(7, 0), 2},
                    {5, At(7, 0), -1, 0},
                    {5, -1, -1, 0},
                    {9, date(2004, 2, 2), date(2004, 3, 1), 0},  // 29 February is decoded as the 1st
                    {9, date(2004, 2, 1), date(2004, 2, 1), 2},
                    {9, date(2004, 1, 15), date(2004, 2, 29), 2},
                    {9, date(2004, 1, 1), date(2004, 1, 1), 2},
                    {9, date(2004, 3, 1), date(2004, 12, 31), 0},
                    {7, 0, 0, 1},
                    {7, 0, date(2038, 1, 18), 1},
                    {7, 0, INT32_MAX, 0}};  // 2038-01-19 has no last second
  for (auto const& row : rows)
    EXPECT_EQ(LogReaderCountEvents(log, row.code, row.from, row.to), row.count)
        << row.code << " from " << row.from << " to " << row.to;
}

TEST(LogStatistics, TimedFromStartToEnd) {
  enum : std::uint16_t { kNote = 9, kFailed = 1, kBack = 2, kOff = 3 };
  // Day 8 is the span.
  struct {
    char const* what;
    std::vector<Event> events;
    long seconds;
  } const rows[] = {
      {"nothing", {}, 0},
      {"one interval", {{At(8, 9), kNote}, {At(8, 10), kFailed}, {At(8, 10, 30), kBack}}, 1800},
      {"two intervals, two ends",
       {{At(8, 10), kFailed}, {At(8, 11), kBack}, {At(8, 12), kFailed}, {At(8, 12, 0, 5), kOff}},
       3605},
      {"ends without a start", {{At(8, 10), kBack}, {At(8, 11), kOff}}, 0},
      {"starts while open", {{At(8, 10), kFailed}, {At(8, 11), kFailed}, {At(8, 12), kBack}}, 7200},
      {"begun before", {{At(7, 20), kFailed}, {At(8, 8), kNote}, {At(8, 9), kBack}}, 3600},
      {"begun before, no record between", {{At(7, 20), kFailed}, {At(8, 9), kBack}}, 0},
      {"ended after", {{At(8, 23), kFailed}, {At(9, 9), kBack}}, 3599},
      {"over the whole span", {{At(7, 1), kFailed}, {At(9, 9), kBack}}, 86399 + 23 * 3600},
      {"open at a note after", {{At(8, 23), kFailed}, {At(9, 9), kNote}, {At(9, 10), kBack}}, 3599},
      {"still open", {{At(8, 10), kFailed}, {At(8, 11), kNote}, {At(8, 13), kNote}}, 3 * 3600},
      {"still open, not met inside", {{At(7, 10), kFailed}, {At(7, 11), kNote}}, 0},
      {"open at the last second", {{At(8, 10), kFailed}, {At(8, 11), kNote}, {At(8, 23, 59, 59), kNote}}, 3600},
      {"ended at the last second", {{At(8, 23), kFailed}, {At(8, 23, 59, 59), kBack}, {At(8, 1), kFailed}}, 3599},
      {"begun at the last second", {{At(8, 23, 59, 59), kFailed}}, 0},
      {"only before", {{At(7, 10), kFailed}, {At(7, 11), kBack}}, 0},
      {"begun after", {{At(9, 10), kFailed}, {At(9, 11), kBack}}, -10 * 3600 - 1},
      {"first record after", {{At(9, 10), kNote}, {At(8, 10), kFailed}, {At(8, 11), kBack}}, 0},
      {"out of order", {{At(8, 10), kFailed}, {At(8, 9), kBack}}, -3600},
      {"stamp without a date", {{-1, kFailed}, {At(8, 9), kBack}}, 0},
      {"stamp without a date, but set", {{At(8, 1), kNote}, {-2, kFailed}, {-1, kBack}, {-2, kNote}}, 0},
      // A start that is an end as well.
      {"self-ending", {{At(8, 10), kOff}, {At(8, 11), kFailed}, {At(8, 12), kBack}}, 3600}};
  short const ends[] = {-1, kBack, kOff, kBack};
  for (auto const& row : rows) {
    EventLog const log(row.events);
    EXPECT_EQ(LogReaderTimeEvents(log, kFailed, kBack, kOff, At(8, 13), At(8, 2)), row.seconds) << row.what;
    EXPECT_EQ(LogReaderTimeEvents2(log, kFailed, ends, 4, At(8, 13), At(8, 2)), row.seconds) << row.what;
    EXPECT_EQ(LogReaderTimeEvents(log, kFailed, -1, -2, At(9, 0), At(8, 0)), 0) << row.what;
  }
}

TEST(LogStatistics, CodesAreComparedAs16Bits) {
  EventLog const log({{At(8, 10), 0xFFFF}, {At(8, 11), 0x8000}, {At(8, 12), 0x7FFF}, {At(8, 13), 0}});
  short const unsigned8000 = static_cast<short>(0x8000);
  EXPECT_EQ(LogReaderTimeEvents(log, -1, unsigned8000, 0x7FFF, At(8, 0), At(8, 0)), 2 * 3600);
  EXPECT_EQ(LogReaderTimeEvents(log, unsigned8000, -1, 0, At(8, 0), At(8, 0)), 2 * 3600);
  EXPECT_EQ(LogReaderTimeEvents(log, 0x7FFF, -1, 0, At(8, 0), At(8, 0)), 3600);
  EXPECT_EQ(LogReaderCountEvents(log, 0xFFFF, At(8, 0), At(8, 0)), 1u);
}

// ---- Beside a model ----

// The statistics as plain prose has them, record by record and in 64 bits.
struct Model {
  std::vector<Event> events;

  static long Bound(long t, int hour, int minute, int second) {
    int year, month, day, ignored;
    if (DecodeProgDateTime(t, &year, &month, &day, &ignored, &ignored, &ignored) == 0) return -1;
    return EncodeProgDateTime(year, month, day, hour, minute, second);
  }
  static bool Inside(long t, long from, long to) {
    return t >= 0 && t >= Bound(from, 0, 0, 0) && t <= Bound(to, 23, 59, 59);
  }

  unsigned long Count(unsigned short code, long from, long to) const {
    unsigned long count = 0;
    for (Event const& event : events)
      if (event.code == code && Inside(Bound(event.when, 0, 0, 0), from, to)) count++;
    return count;
  }

  long Time(short start, std::vector<short> const& ends, long from, long to) const {
    long const last = Bound(to, 23, 59, 59);
    std::int64_t total = 0, open = -1;
    bool clipped = false;
    size_t i = 0;
    for (; i < events.size(); i++) {
      std::int64_t when = events[i].when;
      bool isEnd = when > last;
      for (short end : ends) isEnd = isEnd || (end >= 0 && end == events[i].code);
      if (open == -1 && events[i].code == static_cast<std::uint16_t>(start)) open = when;
      if (open != -1 && Inside(static_cast<long>(when), from, to) && !clipped) {
        clipped = true;
        open = when;
      }
      if (when > last && open != -1) when = last;
      if (isEnd && open != -1) {
        if (Inside(static_cast<long>(when), from, to)) total += when - open;
        open = -1;
      }
      if (when >= last) break;
    }
    if (open != -1 && clipped && i > 0) total += events[i - 1].when - open;
    return static_cast<std::int32_t>(static_cast<std::uint64_t>(total));
  }
};

TEST(LogStatistics, AgreeWithTheModel) {
  for (unsigned seed = 0; seed < 300; seed++) {
    std::mt19937 random(seed);
    auto const below = [&](unsigned n) { return static_cast<int>(random() % n); };
    // Two months around the end of a leap year or its February, in steps from seconds to days; one log in four is
    // damaged: out of order, stamped before 1970 or at the end of time.
    std::int32_t when = static_cast<std::int32_t>(seed % 2 == 0 ? EncodeProgDateTime(2004, 12, 10, 0, 0, 0)
                                                                : EncodeProgDateTime(2004, 2, 10, 0, 0, 0));
    std::int32_t const begin = when;
    auto const stamp = [&] {
      std::int32_t const odd[] = {-1, -2, 0, INT32_MIN, INT32_MAX, begin - below(9999999)};
      return seed % 4 == 3 && below(8) == 0 ? odd[below(6)] : when;
    };
    Model model;
    for (int n = below(80); n > 0; n--) {
      model.events.push_back({stamp(), static_cast<std::uint16_t>(below(20) == 0 ? 0xFFFF - below(2) : below(5))});
      when += below(3) == 0 ? below(200000) : below(9000);
      if (below(10) == 0) when += 86399 - when % 86400;
    }
    EventLog const log(model.events);
    auto const code = [&] { return static_cast<short>(below(12) == 0 ? -1 - below(2) : below(6)); };
    auto const bound = [&] { return below(40) == 0 ? below(3) - 2L : begin + below(70 * 86400) - 4L * 86400; };
    for (int query = 0; query < 20; query++) {
      short const start = code();
      std::vector<short> ends(static_cast<size_t>(below(3) + 1));
      for (short& end : ends) end = code();
      long const from = bound();
      long const to = below(6) == 0 ? bound() : from + below(20) * 86400L;
      std::ostringstream story;
      story << "seed " << seed << " query " << query << " start " << start << " from " << from << " to " << to;
      auto const counted = static_cast<unsigned short>(start);
      ASSERT_EQ(LogReaderCountEvents(log, counted, from, to), model.Count(counted, from, to)) << story.str();
      ASSERT_EQ(LogReaderTimeEvents2(log, start, ends.data(), ends.size(), from, to), model.Time(start, ends, from, to))
          << story.str();
      ASSERT_EQ(LogReaderTimeEvents(log, start, ends.front(), ends.back(), from, to),
                model.Time(start, {ends.front(), ends.back()}, from, to))
          << story.str();
    }
  }
}

}  // namespace
