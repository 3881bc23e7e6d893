// Long output, whole: the page of `zelctl report`, the pictures of `zelctl log`, two parts of the manual page, the
// answers about an odd site. fixtures/pictures/ has the expected files, without the style sheet and the version of the
// program, and the rows of most tables only once.
//
// With ZELVANE_TRANSCRIBE set, the files are rewritten instead of compared: check the changes before you keep them.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/command.h"
#include "support/settings.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kStart = 1104537600;  // 2005-01-01
constexpr std::int32_t kDay = 86400;

std::string Record(std::int32_t stamp, int code, std::string text) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(stamp >> shift);
  text.resize(62);
  return bytes + static_cast<char>(code) + '\0' + text;
}

// Outages of many lengths with a warning in each. The last one is still open.
std::string Log(int outages, std::int32_t apart) {
  std::string log;
  for (int i = 0; i < outages; i++) {
    std::int32_t const begin = kStart + i * apart, length = i * i * 397 % 9000;
    log += Record(begin, 1, "Mains failed") + Record(begin + length / 2, 3, "Battery <low>");
    if (i + 1 < outages) log += Record(begin + length, 2 + i % 3 * 2, "Mains back " + std::to_string(i));
  }
  return log;
}

class ReportFiles : public testing::TestWithParam<std::pair<std::string, std::string>> {
 protected:
  void SetUp() override {
    if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
    fs::copy(ZELVANE_FIXTURES "/demo-root", here_.Path("demo"), fs::copy_options::recursive);
    here_.Write("months/logevt.rgt", Log(104, kDay + 9000));
    here_.Write("years/logevt.rgt", Log(40, 60 * kDay + 5 * 3600));
    here_.Write("years/srvlist.cfg", "[SRVLIST]\n7 = 007\n8 = 008\n9 = 009\n10 = 010\n");
    for (char const* unit : {"008", "009", "010"}) here_.Write(std::string("years/") + unit + "/upssrv.cfg", "");
    here_.Write("plan", std::string("\1\0\0\0\0\0\0C", 8));
    here_.Write("years/007/logevt.rgt", Log(6, kDay / 2 + 500));
    WriteOddSite();
  }

  // Whatever makes a finding: a clock that was set back, many records in one outage, a torn log, files that cannot be
  // read, a browse list with orphans.
  void WriteOddSite() const {
    std::string log = Record(kStart, 1, "Mains failed");
    for (int i = 1; i < 15; i++) log += Record(kStart + i, 3, "Step " + std::to_string(i));
    log += Record(kStart + 100, 2, "Mains back") + Record(kStart + 900, 1, "") + Record(kStart + 800, 2, "");
    here_.Write("odd/logevt.rgt", log + "torn");
    here_.Write("odd/srvlist.cfg", "[SRVLIST]\n7 = 007\n8 = 008\n");
    here_.Write("odd/upscli.cfg", "[SHUTSRV]\nZELSRV = a;b\n");
    here_.Write("odd/007/logevt.rgt/other.rgt", "");
    here_.Write("odd/007/other.rgt", Record(kStart, 3, "later") + Record(kStart - 1, 3, "earlier") + "torn");
    here_.Write("odd/008/logevt.rgt", Record(kStart, 2, "Mains back"));
    here_.Write("odd/008/upssrv.cfg/other.cfg", "");
    here_.Write("odd/list.cfg",
                "[GROUPS]\n1 = a;-1\n2 = lost;9\n3 = ring;4\n4 = ring too;3\n007 = odd;-1\n5 = broken\n"
                "[COMPUTERS]\n1 = under lost;1.1.1.1;2\n2 = bare;;1\n[NOBREAKS]\n0 = u;1.1.1.1;3;1\n"
                "1 = gone;1.1.1.1;3;44\n2 = free;;x;-1\n[DATE]\nDATETIME = 1000000000\n");
  }

  test::Installation here_;
};

void Cut(std::string& page, std::string const& from, std::string const& to) {
  for (std::size_t at = 0; (at = page.find(from, at)) != std::string::npos; at += from.size())
    page.erase(at + from.size(), page.find(to, at) - at - from.size());
}

std::vector<std::string> Elements(std::string const& page) {
  std::istringstream in(std::regex_replace(page, std::regex("><"), ">\n<"));
  std::vector<std::string> elements;
  for (std::string each; std::getline(in, each);) elements.push_back(each);
  elements.push_back("(end)");
  return elements;
}

TEST_P(ReportFiles, AreTheExpectedOnes) {
  auto const& [file, command] = GetParam();
  // Packagers' tools take a page with long lines for one made from a source that is missing.
  std::string const expected =
      ZELVANE_FIXTURES "/pictures/" + file + (file.find(".html") != std::string::npos ? ".txt" : "");
  std::string const script = "cd '" + here_.Path() +
                             "' && TZ=UTC0 ZELVANE_TEST_NOW=1111910400 LD_PRELOAD=" ZELVANE_TEST_REDIRECT
                             " ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 " ZELVANE_ZELCTL " " +
                             command + " made >/dev/null";
  ASSERT_EQ(test::Answer("/bin/sh", {"-c", script}), "") << command;
  std::string page = here_.Read("made");
  Cut(page, "<style>", "</style>");
  Cut(page, "by zelctl ", " from");
  if (file != "demo.html" && file != "odd.html") Cut(page, "<tbody>", "</tbody>");
  if (getenv("ZELVANE_TRANSCRIBE") != nullptr) return test::WriteFile(expected, page);
  std::vector<std::string> const made = Elements(page), elements = Elements(test::ReadFile(expected));
  auto const [one, other] = std::mismatch(made.begin(), made.end() - 1, elements.begin(), elements.end() - 1);
  EXPECT_EQ(*one, *other) << command << ", element " << one - made.begin();
}

INSTANTIATE_TEST_SUITE_P(
    Made, ReportFiles,
    testing::Values(
        std::pair("demo.html", "report --root demo --out"),
        std::pair("months.html", "report --root months --start 1 --end 2,4,6 --out"),
        std::pair("years.html", "report --root years --start 1 --end 2,4 --schedule plan --out"),
        std::pair("outages-day.svg", "log outages demo/logevt.rgt --start 1 --end 2 --svg"),
        std::pair("outages-month.svg", "log outages months/logevt.rgt --start 1 --end 2 --by month --svg"),
        std::pair("outages-year.svg", "log outages years/logevt.rgt --start 1 --end 4 --by year --svg"),
        std::pair("chart-day.svg", "log chart demo/logevt.rgt --code 1,3 --by day --svg"),
        std::pair("chart-hour.svg", "log chart years/logevt.rgt --by hour-of-day --svg"),
        std::pair("odd.html", "report --root odd --out made >/dev/null; test $? = 1 #"),
        std::pair("odd-verify.txt", "log verify odd/007/other.rgt | tee"),
        std::pair("odd-status.txt", "status --root odd | grep -v versions | tee"),
        std::pair("odd-status.json", "status --root odd --json | grep -v versions | tee"),
        std::pair("odd-outages.txt", "log outages odd/logevt.rgt --start 1 --end 2 2>&1 | tee"),
        std::pair("odd-none.txt", "log outages odd/008/logevt.rgt --start 1 --end 2 2>&1 | tee"),
        std::pair("odd-clear.txt",
                  "browse clear --yes --file odd/list.cfg >made; sed /DATETIME/d odd/list.cfg >>made; true"),
        std::pair("odd-tree.txt", "browse tree --file odd/list.cfg | tee"),
        std::pair("odd-tree.json", "browse tree --file odd/list.cfg --json | tee"),
        std::pair("manual.txt", "help --manual | sed '/^.Ss \\(shutdown\\|digest\\)/,/^.Ss/!d' | tee")),
    [](auto const& row) { return std::regex_replace(row.param.first, std::regex("\\W"), "_"); });

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
  std::string log;
  for (int i = 0; i < 4; i++)
    log += Record(kStart + 10 * i, 1 + i % 2, controls.substr(20 * static_cast<std::size_t>(i), 62));
  std::string const file = here.Write("root/logevt.rgt", log);
  here.Write("root/upscli.cfg", "[SHUTSRV]\nZELSRV = a" + controls + "b;1.2.3.4;4375\n[POPUP]\nMESSAGE = " + controls +
                                    "\n[CLILIST]\n1 = n" + controls + ";1.2.3.4;1\n[x" + controls + "\n");
  for (std::string const& command :
       {"report --root " + here.Path("root") + " --start 1 --end 2 --out ",
        "log outages " + file + " --start 1 --end 2 --svg ", "log chart " + file + " --svg "}) {
    fs::remove(here.Path("made"));
    EXPECT_EQ(FirstControl(test::ZelctlLine(command + here.Path("made"))), "none") << command;
    EXPECT_EQ(FirstControl(here.Read("made")), "none") << command;
    bool const showsTexts = here.Read("made").find("x1B") != std::string::npos;
    EXPECT_EQ(showsTexts, command[0] == 'r') << command;
  }
}

}  // namespace
