#include "zelvane/logs/logreader.h"

#include "support/test.h"

namespace {

using Event = std::pair<std::int32_t, std::uint16_t>;  // the time stamp and the code

std::string FileOf(std::vector<Event> const& events) {
  std::string bytes;
  for (auto const& [when, code] : events) {
    bytes.append(reinterpret_cast<char const*>(&when), 4).append(reinterpret_cast<char const*>(&code), 2);
    for (int i = 2; i < 64; i++) bytes += static_cast<char>(code + i);
  }
  return bytes;
}

// An open log with these events. Its file is already deleted.
std::shared_ptr<void> EventLog(std::vector<Event> const& events) {
  return {LogReaderOpen(test::Scratch().Write("log.rgt", FileOf(events)).c_str()), LogReaderClose};
}

std::int32_t At(int day, int hour, int minute = 0) {
  return static_cast<std::int32_t>(EncodeProgDateTime(2005, 3, day, hour, minute, 0));
}

TEST(LogReader, OpensWhatCanBeRead) {
  test::Scratch scratch;
  std::string const two = FileOf({{1, 2}, {3, 4}});
  std::pair<std::string, long> const rows[] = {{scratch.Write("log.rgt", two), 2},
                                               {scratch.Write("x.cry/y", two), 2},
                                               {scratch.Write("log.CrY", two), 0},
                                               {scratch.Write("torn", two + "x"), 0},
                                               {scratch.Path(), 0},
                                               {scratch.Path("missing.cry"), -1}};
  for (auto const& [path, records] : rows) {
    void* const log = LogReaderOpen(path.c_str());
    EXPECT_EQ(static_cast<long>(LogReaderRegCount(log)), std::max(records, 0L)) << path;
    EXPECT_EQ(LogReaderClose(log), records < 0 ? 0 : 1) << path;  // -1: no handle
  }
}

TEST(LogReader, NothingComesFromTheEarlierGeneration) {
  void* records = &records;
  EXPECT_EQ(Load_Zelvane3x_Log("any.cry", &records), 0u);
  EXPECT_EQ(records, nullptr);
  records = std::malloc(68);
  for (int twice = 0; twice < 2; twice++) Close_Zelvane3x_Log(&records);
  EXPECT_EQ(records, nullptr);
}

TEST(LogReader, RecordsComeInFileOrder) {
  std::vector<Event> const events = {{At(7, 8), 0x0102}, {-5, 0xFFFF}, {0, 0}};
  auto const log = EventLog(events);
  long when = 0;
  for (size_t i = 0; i < events.size(); i++) {
    std::string data(66, '~');
    EXPECT_EACH((LogReaderReadReg(log.get(), i, &when, &data[1]), when), 1, events[i].first) << i << " " << when;
    EXPECT_EQ(data, "~" + FileOf({events[i]}).substr(4) + "~") << i;
  }
}

TEST(LogStatistics, TimedFromStartToEnd) {
  // 1 starts, 2 and 3 end; the span is day 8.
  std::pair<std::vector<Event>, long> const rows[] = {
      {{{At(8, 10), 1}, {At(8, 11), 2}, {At(8, 12), 1}, {At(8, 12, 5), 3}}, 3900},
      {{{At(7, 20), 1}, {At(8, 8), 9}, {At(8, 9), 2}}, 3600},
      {{{At(7, 1), 1}, {At(9, 9), 2}}, 86399 + 23 * 3600},
      {{{At(8, 10), 1}, {At(8, 11), 9}, {At(8, 13), 9}}, 3 * 3600}};
  for (auto const& [events, seconds] : rows)
    EXPECT_EQ(LogReaderTimeEvents(EventLog(events).get(), 1, 2, 3, At(8, 13), At(8, 2)), seconds);
}

// A direct model of the statistics, record by record and in 64 bits.
struct Model {
  std::vector<Event> events;
  static long Bound(long t, int hour, int minute, int second) {
    int y, m, d;
    bool const isDate = DecodeProgDateTime(t, &y, &m, &d, nullptr, nullptr, nullptr) != 0;
    return isDate ? EncodeProgDateTime(y, m, d, hour, minute, second) : -1;
  }
  static bool Inside(long t, long from, long to) {
    return t >= 0 && t >= Bound(from, 0, 0, 0) && t <= Bound(to, 23, 59, 59);
  }
  long Count(unsigned short code, long from, long to) const {
    return std::count_if(events.begin(), events.end(), [&](Event const& event) {
      return event.second == code && Inside(Bound(event.first, 0, 0, 0), from, to);
    });
  }
  long Time(short start, std::vector<short> const& ends, long from, long to) const {
    std::int64_t last = Bound(to, 23, 59, 59), total = 0, open = -1;
    bool clipped = false;
    size_t i = 0;
    for (; i < events.size(); i++) {
      std::int64_t when = events[i].first;
      bool isEnd = when > last;
      for (short end : ends) isEnd = isEnd || (end >= 0 && end == events[i].second);
      if (open == -1 && events[i].second == static_cast<std::uint16_t>(start)) open = when;
      if (open != -1 && Inside(static_cast<long>(when), from, to) && !std::exchange(clipped, true)) open = when;
      if (when > last && open != -1) when = last;
      if (isEnd && open != -1 && Inside(static_cast<long>(when), from, to)) total += when - open;
      if (isEnd) open = -1;
      if (when >= last) break;
    }
    if (open != -1 && clipped && i > 0) total += events[i - 1].first - open;
    return static_cast<std::int32_t>(static_cast<std::uint64_t>(total));
  }
};

TEST(LogStatistics, AgreeWithTheModel) {
  for (unsigned seed = 0; seed < 300; seed++) {
    std::mt19937 random(seed);
    auto const below = [&](unsigned n) { return static_cast<int>(random() % n); };
    // Two months around the end of a leap year or its February, in steps from seconds to days. One log in four is
    // damaged: out of order, with time stamps before 1970 or at the end of time.
    auto const begin = static_cast<std::int32_t>(EncodeProgDateTime(2004, seed % 2 == 0 ? 12 : 2, 10, 0, 0, 0));
    std::int32_t when = begin;
    Model model;
    for (int n = below(80); n > 0; n--) {
      std::int32_t const odd[] = {-1, -2, 0, INT32_MIN, INT32_MAX, begin - below(9999999)};
      bool const damaged = seed % 4 == 3 && below(8) == 0;
      model.events.push_back(
          {damaged ? odd[below(6)] : when, static_cast<std::uint16_t>(below(20) == 0 ? 0xFFFF - below(2) : below(5))});
      when += below(10) == 0 ? 86399 - when % 86400 : below(3) == 0 ? below(200000) : below(9000);
    }
    auto const log = EventLog(model.events);
    auto const code = [&] { return static_cast<short>(below(12) == 0 ? -1 - below(2) : below(6)); };
    auto const bound = [&] { return below(40) == 0 ? below(3) - 2L : begin + below(70 * 86400) - 4L * 86400; };
    for (int query = 0; query < 20; query++) {
      std::vector<short> const ends = {code(), code(), code()};
      short const start = code();
      long const from = bound(), to = below(6) == 0 ? bound() : from + below(20) * 86400L;
      SCOPED_TRACE(testing::Message() << "seed " << seed << " start " << start << " from " << from << " to " << to);
      auto const counted = static_cast<unsigned short>(start);
      ASSERT_EQ(LogReaderCountEvents(log.get(), counted, from, to), model.Count(counted, from, to));
      ASSERT_EQ(LogReaderTimeEvents2(log.get(), start, ends.data(), 3, from, to), model.Time(start, ends, from, to));
    }
  }
}

}  // namespace
