// `zelctl log follow` beside a program that writes the log.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>

#include "support/scratch.h"
#include "zelvane/logs/logclass.h"

namespace {

constexpr std::int32_t kStart = 1104537600;  // 2005-01-01

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

TEST(LogFollow, ShowsEachRecordOnceWhateverHappensToTheLog) {
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
  log.ClearFile();
  for (int code = 11; code <= 13; code++) WriteEvent(log, code);
  EXPECT_EQ(follower.Codes(3), "11 12 13 ") << "none of which was there before";
  follower.Stop();
  EXPECT_EQ(follower.Line(), "(end)") << "nothing twice";
}

}  // namespace
