// The command zelctl, run as users run it. Each file of fixtures/zelctl/ is a transcript:
//
//   % a shell command, in the installation root, that prepares the next ones
//   $ a command under test
//     the lines of its standard output; a last line without a line feed ends in "(no line feed)"
//     ! the lines of its standard error
//     [2] its exit code, unless that is 0; after an error message on the same line
//     and the output of `diff` against the root before: every change of every byte of every file
//
// `each WORDS ARGUMENT...` runs zelctl with the words and each argument in turn, and prints the error and exit code on
// one line. `tries` does that for whole argument lines. `at TIME COMMAND` sets the clock. JSON is shown on one line.
// `unstamped` removes the time stamp of the last change from the browse list. All other lines are remarks. "@" in the
// output is the root's path. A command that changes nothing shows no difference, so each transcript also shows what was
// NOT written.
//
// With ZELVANE_TRANSCRIBE set, the files are rewritten instead of compared: check the changes before you keep them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/child.h"
#include "support/command.h"
#include "support/settings.h"

namespace {

namespace fs = std::filesystem;

// $1 is the scratch directory, $2 the command, $3 the program, $4 the object to preload. The address sanitizer expects
// to be loaded first; an option disables that check.
constexpr char kScript[] = R"(
  cd "$1" || exit
  scratch=$1 command=$2 program=$3 redirect=$4
  zelctl() {
    LD_PRELOAD=$redirect ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 "$program" "$@"
  }
  each() {
    words=$1
    shift
    for last in "$@"; do
      said=$(zelctl $words "$last" 2>&1)
      echo "$said [$?]"
    done
  }
  tries() {
    for line in "$@"; do
      said=$(eval "zelctl $line" 2>&1)
      echo "$said [$?]"
    done
  }
  at() {
    export TZ=UTC0 ZELVANE_TEST_NOW=$(date -u -d "$1" +%s)
    shift
    "$@"
  }
  unstamped() {
    sed -i '/^DATETIME = /d' zelbrws.cfg
  }
  export HOME="${scratch}root/home" LC_ALL=C
  if [ -s changes ] || [ ! -d before ]; then
    rm -rf before
    cp -a root before
  fi
  (cd root; eval "$command") > out 2> err < /dev/null
  echo $? > code
  diff -raN --no-dereference before root |
    sed '/^---$/d; /^[0-9,]*[acd][0-9,]*$/d; s|^diff .* before/.* root/|in |' > changes
  exit 0
)";

class Zelctl : public testing::TestWithParam<std::string> {
 protected:
  Zelctl() { fs::copy(ZELVANE_FIXTURES "/demo-root", here_.Root(), fs::copy_options::recursive); }

  std::string Run(std::string const& command) const {
    bool const ran = test::InChild([&] {
      execl("/bin/sh", "sh", "-c", kScript, "sh", here_.Path().c_str(), command.c_str(), ZELVANE_ZELCTL,
            ZELVANE_TEST_REDIRECT, nullptr);
      return false;
    });
    if (!ran) ADD_FAILURE() << command << " did not run";
    std::string code = here_.Read("code");
    code = code == "0\n" ? "" : "  [" + code.substr(0, code.size() - 1) + "]\n";
    std::string err = Shown("! ", "err");
    if (!err.empty() && !code.empty()) err.replace(err.size() - 1, 1, std::exchange(code, "").substr(1));
    return Shown("", "out", command.find("--json") != std::string::npos) + err + code + Shown("", "changes");
  }

 private:
  std::string Shown(std::string const& mark, std::string const& file, bool isJson = false) const {
    std::string text = here_.Read(file);
    for (std::size_t at = 0; (at = text.find(here_.Root(), at)) != std::string::npos;)
      text.replace(at, here_.Root().size(), "@");
    if (isJson) text = std::regex_replace(text, std::regex("\\n *(?=.)"), " ");
    std::istringstream lines(text);
    std::string shown;
    for (std::string line; std::getline(lines, line);)
      shown += "  " + mark + line + (lines.eof() ? "(no line feed)" : "") + "\n";
    return shown;
  }

  test::Installation here_;
};

std::vector<std::string> Transcripts() {
  std::vector<std::string> names;
  for (auto const& entry : fs::directory_iterator(ZELVANE_FIXTURES "/zelctl")) names.push_back(entry.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}

TEST_P(Zelctl, AnswersAsTranscribed) {
  if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  std::string const path = ZELVANE_FIXTURES "/zelctl/" + GetParam() + ".txt";
  std::string const expected = test::ReadFile(path);
  std::istringstream lines(expected);
  std::string answered;
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 2, "  ") == 0) continue;
    answered += line + "\n";
    if (line.compare(0, 2, "% ") == 0) Run(line.substr(2));
    if (line.compare(0, 2, "$ ") == 0) answered += Run(line.substr(2));
  }
  if (getenv("ZELVANE_TRANSCRIBE") != nullptr) return test::WriteFile(path, answered);
  EXPECT_EQ(answered, expected);
}

INSTANTIATE_TEST_SUITE_P(Transcript, Zelctl, testing::ValuesIn(Transcripts()),
                         [](auto const& transcript) { return transcript.param; });

// The month of the demo.
TEST(DemoRoot, TheEventLogIsWhatItsScriptWrites) {
  std::string const folder = ZELVANE_FIXTURES, log = folder + "/demo-root/logevt.rgt";
  std::string const command = "perl '" + folder + "/../../tools/make_demo_log.pl' | cmp - '" + log + "'";
  EXPECT_EQ(test::Answer("/bin/sh", {"-c", command}), "") << command;
}

}  // namespace
