#include "zelvane/lang/language.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

constexpr char kSystem[] =
    "[LANG]\n1 = English\n2 = Portugu\xEAs do Brasil, longo\n[1]\n12 = Power on\n13 = Power off\n";
constexpr char kUser[] = "; mine\n[1]\n12 = Ligar\n13 =\n14 = Own\n[LANG]\n1 = Mine\n";

class UserLanguages : public testing::Test {
 protected:
  ~UserLanguages() override { CloseLang(lang_); }
  void Open(long lang) {
    CloseLang(lang_);
    lang_ = OpenLang(lang);
    ASSERT_NE(lang_, nullptr);
  }
  void WriteBoth() {
    root_.Write("root/zellang.cfg", kSystem);
    root_.Write("home/.zellang.cfg", kUser);
  }
  std::string User() const { return root_.Read("home/.zellang.cfg"); }
  std::string System() const { return root_.Read("root/zellang.cfg"); }

  test::Installation root_;
  void* lang_ = nullptr;
};

TEST_F(UserLanguages, TheUsersOwnWordingComesFirst) {
  WriteBoth();
  Open(1);
  struct {
    long id;
    char const* text;
    char const* system;
  } const cases[] = {{12, "Ligar", "Power on"}, {13, "Power off", "Power off"}, {14, "Own", ""}, {15, "", ""}};
  for (auto const& c : cases) {
    EXPECT_STREQ(GetLangStr(lang_, c.id), c.text) << c.id;
    EXPECT_STREQ(GetSystemLangStr(lang_, c.id), c.system) << c.id;
  }
  EXPECT_EQ(GetLangCount(lang_), 2u) << "the system's languages";
  Open(2);
  EXPECT_STREQ(GetLangStr(lang_, 12), "");
  EXPECT_EQ(System(), kSystem);
  EXPECT_EQ(User(), kUser);
}

TEST_F(UserLanguages, DescriptionsAreCutToTheirRoom) {
  WriteBoth();
  Open(1);
  std::string const name = "Portugu\xEAs do Brasil, longo";
  struct {
    long lang;
    unsigned long length;
    std::string expected;
  } const cases[] = {{2, 0, ""},
                     {2, 1, std::string(1, '\0')},
                     {2, 8, std::string("Portugu\0", 8)},
                     {2, name.size(), name.substr(0, name.size() - 1) + '\0'},
                     {2, name.size() + 1, name + '\0'},
                     {1, 10, std::string("English\0\0\0", 10)},
                     {3, 3, std::string(3, '\0')}};
  for (auto const& c : cases) {
    std::string buffer(40, 'x');
    EXPECT_EQ(GetLangDesc(lang_, c.lang, buffer.data() + 1, c.length), 1) << c.length;
    EXPECT_EQ(buffer, "x" + c.expected + std::string(39 - c.length, 'x')) << c.length;
  }
}

TEST_F(UserLanguages, MissingFilesAreEmptyTables) {
  std::vector<std::string> const before = root_.List();
  Open(1);
  EXPECT_STREQ(GetLangStr(lang_, 1), "");
  EXPECT_STREQ(GetSystemLangStr(lang_, 1), "");
  EXPECT_EQ(GetLangCount(lang_), 0u);
  EXPECT_EQ(SetLangStr(lang_, 1, "a\nb") + SetLangStr(lang_, 1, "[x]"), 0);
  CloseLang(lang_);
  lang_ = nullptr;
  EXPECT_EQ(root_.List(), before);
}

TEST_F(UserLanguages, ANewWordingGoesToTheUsersFile) {
  root_.Write("root/zellang.cfg", kSystem);
  Open(1);
  EXPECT_EQ(SetLangStr(lang_, 12, "Ligar \xE9"), 1);
  EXPECT_EQ(User(), "[1]\n12 = Ligar \xE9");
  EXPECT_STREQ(GetLangStr(lang_, 12), "Ligar \xE9");
  EXPECT_STREQ(GetSystemLangStr(lang_, 12), "Power on");
  EXPECT_EQ(SetLangStr(lang_, 13, GetLangStr(lang_, 12)), 1) << "a text of the table itself";
  EXPECT_EQ(SetLangStr(lang_, 12, ""), 1);
  EXPECT_STREQ(GetLangStr(lang_, 12), "Power on");
  EXPECT_STREQ(GetLangStr(lang_, 13), "Ligar \xE9");
  EXPECT_EQ(User(), "[1]\n12 = \n13 = Ligar \xE9");
  EXPECT_EQ(System(), kSystem);
}

TEST_F(UserLanguages, TheSystemsFileIsWrittenOnlyWhenTheUsersCannotBe) {
  root_.Write("root/zellang.cfg", kSystem);
  std::filesystem::create_directories(root_.Home(".zellang.cfg/x"));
  Open(1);
  EXPECT_EQ(SetLangStr(lang_, 13, GetLangStr(lang_, 12)), 1);
  EXPECT_STREQ(GetLangStr(lang_, 13), "Power on");
  std::string expected = kSystem;
  EXPECT_EQ(System(), expected.replace(expected.find("Power off"), 9, "Power on"));
  EXPECT_EQ(SetLangStr(lang_, 13, "[x]"), 0);
  std::filesystem::remove(root_.Root("zellang.cfg"));
  std::filesystem::create_directories(root_.Root("zellang.cfg/x"));
  EXPECT_EQ(SetLangStr(lang_, 13, "x"), 0);
}

// The user's text is written but cannot be read back, and the system's table takes over: by then the caller's text,
// which stood in the user's table, is gone.
TEST_F(UserLanguages, ATextWhoseTableIsGone) {
  std::string const text = "a text that is too long to stand in the string itself";
  root_.Write("home/.zellang.cfg", "[1]\n1 = " + text + "\n");
  Open(1);
  root_.Write("home/.zellang.cfg", "x\n");  // loading stops here; so the section is added behind it, out of reach
  EXPECT_EQ(SetLangStr(lang_, 2, GetLangStr(lang_, 1)), 1);
  EXPECT_EQ(System(), "[1]\n2 = " + text);
  EXPECT_STREQ(GetLangStr(lang_, 2), text.c_str());
  EXPECT_EQ(root_.Read("home/.zellang.cfg.lost"), "x\n");
}

TEST_F(UserLanguages, NoLanguage) {
  WriteBoth();
  Open(-1);
  EXPECT_EQ(SetLangStr(lang_, 12, "text"), 0);
  EXPECT_EQ(User() + System(), std::string(kUser) + kSystem);
}

TEST_F(UserLanguages, WithoutAHome) {
  unsetenv("HOME");
  std::filesystem::path const before = std::filesystem::current_path();
  std::filesystem::current_path(root_.Path());
  root_.Write("~.zellang.cfg", "[1]\n1 = here\n");
  Open(1);
  std::filesystem::current_path(before);
  EXPECT_STREQ(GetLangStr(lang_, 1), "here");
}

TEST_F(UserLanguages, NullArguments) {
  WriteBoth();
  char text[4] = "abc";
  CloseLang(nullptr);
  EXPECT_EQ(GetLangStr(nullptr, 1), nullptr);
  EXPECT_EQ(GetSystemLangStr(nullptr, 1), nullptr);
  EXPECT_EQ(GetLangCount(nullptr), 0u);
  Open(1);
  EXPECT_EQ(GetLangDesc(nullptr, 1, text, 4) + GetLangDesc(lang_, 1, nullptr, 4), 0);
  EXPECT_EQ(SetLangStr(nullptr, 1, "x") + SetLangStr(lang_, 1, nullptr), 0);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(User() + System(), std::string(kUser) + kSystem);
}

}  // namespace
