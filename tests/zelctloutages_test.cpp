// Output of zelctl on outages, against a direct model of the rule and against the library's sum.
#include <gtest/gtest.h>
#include <stdio.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/logreader.h"

namespace {

constexpr std::int32_t kStart = 1104537600;  // 2005-01-01
constexpr std::int32_t kDay = 86400;

struct Event {
  std::int32_t stamp;
  int code;
};

std::string BytesOf(std::vector<Event> const& events) {
  std::string bytes;
  for (Event const& event : events) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(event.stamp >> shift);
    bytes += static_cast<char>(event.code);
    bytes += std::string(63, '\0');
  }
  return bytes;
}

// Codes 0 to 4: 1 begins an outage, 2 and 4 end one. Steps of seconds, hours, days and weeks.
std::vector<Event> RandomLog(std::uint32_t seed, bool stepsBack) {
  std::mt19937 random(seed);
  std::vector<Event> events;
  std::int32_t stamp = kStart;
  for (std::uint32_t i = random() % 60; i > 0; i--) {
    std::uint32_t const most[] = {2, 600, 4 * 3600, 3 * kDay, 20 * kDay};
    auto const step = static_cast<std::int32_t>(random() % most[random() % 5]);
    stamp += stepsBack && random() % 3 == 0 ? -step : step;
    events.push_back({stamp, static_cast<int>(random() % 5)});
  }
  return events;
}

struct Model {
  std::string csv = "begin,end,seconds,open\n";
  std::map<std::string, std::int64_t> secondsByDay;
  std::int64_t sum = 0;
  int count = 0;

  explicit Model(std::vector<Event> const& events) {
    bool off = false;
    std::int32_t begin = 0;
    for (Event const& event : events) {
      if (!off && event.code == 1) {
        off = true;
        begin = event.stamp;
      } else if (off && (event.code == 2 || event.code == 4)) {
        off = false;
        Add(begin, event.stamp, false);
      }
    }
    if (off) Add(begin, events.back().stamp, true);
  }

 private:
  static std::string Text(time_t stamp) {
    char text[32];
    return {text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", gmtime(&stamp))};
  }

  void Add(std::int32_t begin, std::int32_t end, bool open) {
    if (end < begin) return;
    csv += Text(begin) + "," + (open ? "" : Text(end)) + "," + std::to_string(end - begin) + (open ? ",1\n" : ",0\n");
    sum += end - begin;
    count++;
    secondsByDay[Text(begin).substr(0, 10)] += 0;
    for (std::int32_t at = begin; at < end;) {
      std::int32_t const next = std::min(end, at - at % kDay + kDay);
      secondsByDay[Text(at).substr(0, 10)] += next - at;
      at = next;
    }
  }
};

std::string Answer(std::string const& arguments) {
  std::string const command = std::string(ZELVANE_ZELCTL) + " " + arguments + " 2>&1";
  std::unique_ptr<FILE, int (*)(FILE*)> const pipe(popen(command.c_str(), "r"), pclose);
  std::string answer;
  char piece[4096];
  while (std::size_t const got = fread(piece, 1, sizeof piece, pipe.get())) answer.append(piece, got);
  return answer;
}

// The lines without remarks.
std::string Rows(std::string const& answer) {
  std::string rows;
  for (std::size_t at = 0, end = 0; at < answer.size(); at = end + 1) {
    end = std::min(answer.find('\n', at), answer.size());
    if (answer.compare(at, 7, "zelctl:") != 0) rows += answer.substr(at, end - at) + "\n";
  }
  return rows;
}

std::int64_t SumOfLibrary(std::string const& path) {
  std::unique_ptr<void, int (*)(void*)> const log(LogReaderOpen(path.c_str()), LogReaderClose);
  short const ends[] = {2, 4};
  return LogReaderTimeEvents2(log.get(), 1, ends, 2, 0, EncodeDateTime(2030, 1, 1, 0, 0, 0));
}

class Outages : public testing::TestWithParam<std::uint32_t> {
 protected:
  void SetUp() override {
    if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  }

  test::Scratch const here_;
  std::string const file_ = here_.Path("logevt.rgt");
  std::string const command_ = "log outages " + file_ + " --start 1 --end 2,4 ";
};

TEST_P(Outages, AreThoseOfTheModelAndOfTheLibrary) {
  std::vector<Event> const events = RandomLog(GetParam(), false);
  test::WriteFile(file_, BytesOf(events));
  Model const model(events);
  EXPECT_EQ(Rows(Answer(command_ + "--csv")), model.csv) << "seed " << GetParam();
  EXPECT_EQ(SumOfLibrary(file_), model.sum) << "seed " << GetParam();
  std::string days;
  for (auto const& [day, seconds] : model.secondsByDay) days += day + "," + std::to_string(seconds) + "\n";
  std::string const groups =
      Answer(command_ + "--by day --csv | sed '1d; s/^\\([^,]*\\),[^,]*,\\([^,]*\\),.*/\\1,\\2/'");
  EXPECT_EQ(Rows(groups), days) << "seed " << GetParam();
}

TEST_P(Outages, OfAClockThatWasSetBackHaveNoLength) {
  std::vector<Event> const events = RandomLog(GetParam(), true);
  test::WriteFile(file_, BytesOf(events));
  EXPECT_EQ(Rows(Answer(command_ + "--csv")), Model(events).csv) << "seed " << GetParam();
}

// Their week, month and year end after the last second of a 32-bit time.
TEST(OutagesOfTheLastDays, AreInTheirPeriod) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  test::Scratch const here;
  here.Write("log", BytesOf({{2147483580, 1}, {2147483640, 2}}));
  std::pair<char const*, char const*> const rows[] = {
      {"day", "2038-01-19"}, {"week", "2038-01-18"}, {"month", "2038-01"}, {"year", "2038"}};
  for (auto const& [period, from] : rows)
    EXPECT_EQ(
        Rows(Answer("log outages " + here.Path("log") + " --start 1 --end 2 --csv --by " + period + " | head -3")),
        std::string("from,outages,seconds,longest\n") + from + ",1,60,60\n")
        << period;
}

INSTANTIATE_TEST_SUITE_P(Seed, Outages, testing::Range(1U, 13U));

}  // namespace
