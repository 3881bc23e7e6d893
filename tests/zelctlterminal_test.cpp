// The output of zelctl on a terminal, and what a stopped command leaves. The transcripts cover all other output.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "support/command.h"
#include "support/vectors.h"
#include "zelvane/crypto/cipher.h"

namespace {

struct RipeMd256 : HashManager {
  Hash_RipeMD256 hash;
  HashClass* GetHashObject() override { return &hash; }
};

class ZelctlCipher : public testing::Test {
 protected:
  void SetUp() override {
    if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
    here_.Write("phrase", "S\xE3o Paulo 4711\n");
  }

  // The command's arguments for files in the scratch directory.
  std::vector<std::string> Command(std::string const& direction, std::string const& in, std::string const& out,
                                   std::string const& mode = "chained") const {
    return {"cipher",       direction,       "--phrase-file", here_.Path("phrase"),
            here_.Path(in), here_.Path(out), "--mode",        mode};
  }

  test::Scratch here_;
};

// Everything that the program writes on a terminal with `columns` columns. `answer` is called at a prompt
// and returns what the user types.
std::string OnTerminal(std::string const& program, std::vector<std::string> const& arguments,
                       unsigned short columns = 0, std::function<std::string()> const& answer = {}) {
  int const terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  grantpt(terminal);
  unlockpt(terminal);
  int const slave = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
  winsize const size = {24, columns, 0, 0};
  ioctl(slave, TIOCSWINSZ, &size);
  pid_t const child = test::StartCommand(program, arguments, slave, slave);
  close(slave);
  std::string shown;
  char piece[4096];
  bool answered = false;
  for (ssize_t got = 0; (got = read(terminal, piece, sizeof piece)) > 0;) {
    shown.append(piece, static_cast<std::size_t>(got));
    if (answered || (shown.find("Password: ") == std::string::npos && shown.find("[y/N] ") == std::string::npos))
      continue;
    std::string const typed = answer ? answer() : "";
    EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    answered = true;
  }
  close(terminal);
  waitpid(child, nullptr, 0);
  return shown;
}

TEST_F(ZelctlCipher, DrawsABarOnATerminalOnly) {
  here_.Write("plain", test::Bytes(300 * 65536));
  std::string const shown = OnTerminal(ZELVANE_ZELCTL, Command("encode", "plain", "out"));
  std::string const half = "\r[" + std::string(25, '#') + std::string(25, '.') + "] 50 %  9 MiB\r";
  std::string const end = "\r[" + std::string(50, '#') + "] 100 %  18 MiB\r\x1B[K" + here_.Path("out") + ": ";
  EXPECT_NE(shown.find(half), std::string::npos) << shown;
  EXPECT_NE(shown.find(end), std::string::npos) << shown;
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '%'), 101) << "one drawing per cent";
  EXPECT_EQ(test::Zelctl(Command("encode", "plain", "other")), here_.Path("other") + ": 19660800 bytes written\n");
}

TEST(ZelctlTerminal, ErasesWhatItDrawsAndDrawsNothingForLittle) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  auto const bar = [](int percent, std::size_t marks, int size) {
    return "\r[" + std::string(marks, '#') + std::string(50 - marks, '.') + "] " + std::to_string(percent) + " %  " +
           std::to_string(size) + " MiB";
  };
  std::pair<char const*, std::string> const rows[] = {
      {"head -c 18874368 /dev/zero | $0 digest", "\r16 MiB\r17 MiB\r18 MiB\r"},
      {"head -c 16777215 /dev/zero | $0 digest", ""},
      {"head -c 16777215 /dev/zero > big; $0 digest big", ""},
      {"head -c 25165824 /dev/zero > big; $0 log verify big --size 8388604",
       bar(33, 16, 8) + bar(66, 33, 16) + bar(100, 50, 24) + "\r"},
      {"yes '; comment' | head -c 16777216 > big; $0 cfg get big a b", "reading big, 16 MiB\r"},
      {"yes '; comment' | head -c 16777215 > big; $0 cfg get big a b", ""}};
  for (auto const& [command, drawn] : rows) {
    test::Scratch const here;
    std::string const shown = OnTerminal("/bin/sh", {"-c", "cd '" + here.Path() + "'; " + command, ZELVANE_ZELCTL});
    std::size_t const erased = shown.find("\x1B[K");
    EXPECT_EQ(shown.substr(0, erased == std::string::npos ? 0 : erased), drawn) << command << ": " << shown;
  }
}

TEST_F(ZelctlCipher, LeavesNoOutputWhenStopped) {
  std::string const pipe = here_.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  pid_t const child =
      test::StartCommand(ZELVANE_ZELCTL, Command("encode", "pipe", "out"), STDOUT_FILENO, STDERR_FILENO);
  int const writer = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);  // once the command reads
  for (int tries = 0; tries < 10000 && here_.List().size() == 2; tries++) usleep(1000);
  EXPECT_EQ(here_.List().size(), 3U) << "a part of the output";
  for (int i = 0; i < 2; i++) kill(child, SIGTERM);  // as timeout(1) does
  int status = 0;
  waitpid(child, &status, 0);
  close(writer);
  EXPECT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(here_.List(), (std::vector<std::string>{"phrase", "pipe"}));
}

TEST(ZelctlStopped, CompletesASaveAndLeavesNoCopies) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  test::Scratch const here;
  ASSERT_EQ(mkdir(here.Path("tmp").c_str(), 0700), 0);
  std::string const stopped = "cd " + here.Path("") + "; exec env TMPDIR=tmp ZELVANE_TEST_STOP=1 LD_PRELOAD=" +
                              ZELVANE_TEST_REDIRECT " ASAN_OPTIONS=verify_asan_link_order=0 " ZELVANE_ZELCTL
                                                    " cfg set a.cfg A k 2 ";
  struct {
    char const* option;
    char const* answer;
    char const* text;
  } const rows[] = {{"", "a.cfg: 1 line changed\n[-15]", "[A]\nk = 2\n"}, {"--dry-run", "[-15]", "[A]\nk=1\n"}};
  for (auto const& [option, answer, text] : rows) {
    here.Write("a.cfg", "[A]\nk=1\n");
    EXPECT_EQ(test::Answer("/bin/sh", {"-c", stopped + option}), answer) << option;
    EXPECT_EQ(here.Read("a.cfg"), text) << option;
    EXPECT_EQ(here.List(), (std::vector<std::string>{"a.cfg", "tmp/"})) << option;
  }
}

TEST(ZelctlTerminal, FoldsCellsNamesColumnsWithoutRoomAndEscapesControls) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  struct {
    char const* command;
    unsigned short columns;
    char const* shown;
  } const rows[] = {
      {"log show logevt.rgt --last 1", 30, "too narrow for CODE, TEXT, PAYLOAD; use a wider terminal or --json\r\n"},
      {"log show logevt.rgt --last 1", 40, "too narrow for TEXT, PAYLOAD; use a wider terminal or --json\r\n"},
      {"--root . shutdown show shutMessage", 40, "  upscli.cfg:23\r\n"},
      {"b64 decode", 80, "\\x1B[31m\r\nb\r\n"},
      {"--root . shutdown show shutMessage mailFrom", 56,
       "\r\n             desligado em\r\n             %r s. (%m)\r\n"
       "mailFrom     nobreak@exemp  upscli.cfg:37  mail: sender\r\n             lo.com.br\r\n"},
  };
  for (auto const& [command, columns, shown] : rows) {
    std::string const line = "cd " ZELVANE_FIXTURES "/demo-root; echo G1szMW0KYg== | " ZELVANE_ZELCTL " ";
    std::string const found = OnTerminal("/bin/sh", {"-c", line + command}, columns);
    EXPECT_NE(found.find(shown), std::string::npos) << command << " at " << columns << ": " << found;
  }
}

TEST(ZelctlTerminal, OnlyAnAnswerThatIsMeantChangesTheFile) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  test::Scratch const here;
  std::string const one = "[CLILIST]\n1 = a;b;1\n", other = one + "2 = c;d;1\n";
  // A 32-bit command does not ask for passwords (tools/zelctl/CMakeLists.txt).
  char const* const password = sizeof(void*) == 8 ? "no password was typed" : "cannot ask for the password";
  struct {
    char const* command;
    char const* typed;
    char const* shown;
  } const rows[] = {{"shutdown set mailPassword=-", "\n", password},
                    {"server clear", "n\n", "zelctl: nothing changed"},
                    {"server clear", "y\n", "changed by another program meanwhile"}};
  for (auto const& [command, typed, shown] : rows) {
    here.Write("upscli.cfg", one);
    std::string const line = std::string("HOME=. exec setsid -wc " ZELVANE_ZELCTL " --root ") + here.Path("");
    auto const answer = [&here, &other, answered = typed] {
      here.Write("upscli.cfg", other);
      return std::string(answered);
    };
    std::string const found = OnTerminal("/bin/sh", {"-c", line + " " + command + " <&1"}, 80, answer);
    EXPECT_NE(found.find(shown), std::string::npos) << command << ": " << found;
    EXPECT_EQ(here.Read("upscli.cfg"), found.find("cannot ask") == std::string::npos ? other : one) << command;
  }
}

}  // namespace
