// Output of zelctl on outages, against a direct model of the rule and against the library's sum.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/logclass.h"
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
  EXPECT_EQ(model.sum, SumOfLibrary(file_)) << "seed " << GetParam();
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

INSTANTIATE_TEST_SUITE_P(Seed, Outages, testing::Range(1U, 13U));

// ---- Pages and pictures ----

// The first byte that a page must not contain: a control character except a line feed, or the second byte of a C1
// control in UTF-8.
std::string FirstControl(std::string const& page) {
  for (std::size_t i = 0; i < page.size(); i++) {
    auto const byte = static_cast<unsigned char>(page[i]);
    bool const isC1 = i > 0 && page[i - 1] == '\xC2' && byte < 0xA0;
    if ((byte < 0x20 && byte != '\n') || byte == 0x7F || isC1)
      return std::to_string(byte) + " at " + std::to_string(i) + " after " + page.substr(i < 40 ? 0 : i - 40, 40);
  }
  return page.empty() ? "empty" : "none";
}

TEST(PagesAndPictures, HoldNoControlOfTextsAndSettings) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  std::string controls = "<i>";
  for (int byte = 1; byte < 0xA0; byte = byte == 0x1F ? 0x7F : byte + 1)
    if (byte != '\n' && byte != '\r') controls += static_cast<char>(byte);
  controls += "</i>";
  test::Scratch const here;
  // The texts of four records contain all of them.
  std::string log = BytesOf({{kStart, 1}, {kStart + 9, 2}, {kStart + 20, 1}, {kStart + 29, 2}});
  for (std::size_t i = 0; i < 4; i++) controls.substr(i * 20, 62).copy(&log[i * 68 + 6], 62);
  std::string const file = here.Write("root/logevt.rgt", log);
  here.Write("root/upscli.cfg", "[SHUTSRV]\nZELSRV = a" + controls + "b;1.2.3.4;4375\n[POPUP]\nMESSAGE = " + controls +
                                    "\n[CLILIST]\n1 = n" + controls + ";1.2.3.4;1\n[x" + controls + "\n");
  std::string const report = "report --root " + here.Path("root") + " --start 1 --end 2 --out " + here.Path("page");
  std::string const picture = "log outages " + file + " --start 1 --end 2 --svg " + here.Path("picture");
  std::string const chart = "log chart " + file + " --svg " + here.Path("chart");
  EXPECT_EQ(FirstControl(Answer(report) + here.Read("page")), "none");
  EXPECT_EQ(FirstControl(Answer(picture) + here.Read("picture")), "none");
  EXPECT_EQ(FirstControl(Answer(chart) + here.Read("chart")), "none");
  EXPECT_NE(here.Read("page").find("x1B"), std::string::npos) << "the page shows the texts";
}

// ---- log follow ----

// `zelctl log follow`, read line by line: reading keeps it and the test in step.
class Follower {
 public:
  explicit Follower(std::string const& file) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || (child_ = fork()) < 0) return;
    if (child_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      execlp("timeout", "timeout", "60", ZELVANE_ZELCTL, "log", "follow", file.c_str(), "--last", "1", "--csv",
             nullptr);
      _exit(1);
    }
    close(ends[1]);
    answer_.reset(fdopen(ends[0], "r"));
  }

  std::string Line() {
    char line[512];
    return fgets(line, sizeof line, answer_.get()) != nullptr ? line : "(end)";
  }

  // The codes of the next records.
  std::string Codes(int count) {
    std::string codes;
    while (count-- > 0) {
      std::string line = Line();
      for (int comma = 0; comma < 3; comma++) line.erase(0, line.find(',') + 1);
      codes += line.substr(0, line.find(',')) + " ";
    }
    return codes;
  }

  void Stop() {
    kill(child_, SIGTERM);
    waitpid(child_, nullptr, 0);
  }

 private:
  pid_t child_ = -1;
  std::unique_ptr<FILE, int (*)(FILE*)> answer_ = {nullptr, fclose};
};

void WriteEvent(LogClass& log, int code) {
  char const payload[64] = {static_cast<char>(code)};
  EXPECT_TRUE(log.WriteReg(kStart + code, payload, sizeof payload)) << "code " << code;
}

TEST(LogFollow, ShowsEachRecordOnceAlsoWhenTheLogIsCutOrAwayForAWhile) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  test::Scratch const here;
  LogClass log;
  log.SetFile(here.Path("log.rgt").c_str());
  log.SetMaxLines(4);
  for (int code = 1; code <= 3; code++) WriteEvent(log, code);
  Follower follower(here.Path("log.rgt"));
  follower.Line();  // the names of the columns
  EXPECT_EQ(follower.Codes(1), "3 ") << "the last one that was there";
  for (int code = 4; code <= 6; code++) WriteEvent(log, code);
  EXPECT_EQ(follower.Codes(3), "4 5 6 ") << "beyond the bound of 4";
  for (int code = 7; code <= 9; code++) WriteEvent(log, code);
  EXPECT_EQ(follower.Codes(3), "7 8 9 ") << "beyond the bound again";
  EXPECT_EQ(rename(here.Path("log.rgt").c_str(), here.Path("away").c_str()), 0);
  EXPECT_EQ(follower.Line(), "zelctl: note: " + here.Path("log.rgt") + ": no such file; waiting for it\n");
  EXPECT_EQ(rename(here.Path("away").c_str(), here.Path("log.rgt").c_str()), 0);
  EXPECT_EQ(follower.Line(), "zelctl: note: " + here.Path("log.rgt") + ": can be read again\n");
  WriteEvent(log, 10);
  EXPECT_EQ(follower.Codes(1), "10 ") << "after its return";
  follower.Stop();
  EXPECT_EQ(follower.Line(), "(end)") << "nothing twice";
}

}  // namespace
