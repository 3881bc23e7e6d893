#include "zelvane/lang/language.h"

#include "support/settings.h"
#include "support/test.h"

namespace {

constexpr char kSystem[] =
    "[LANG]\n1 = English\n2 = Portugu\xEAs do Brasil, longo\n[1]\n12 = Power on\n13 = Power off\n";
constexpr char kUser[] = "; mine\n[1]\n12 = Ligar\n13 =\n14 = Own\n[LANG]\n1 = Mine\n";

class UserLanguages : public testing::Test {
 protected:
  ~UserLanguages() override { CloseLang(lang_); }
  void Open(long lang, std::string const& system = "", std::string const& user = "") {
    if (!system.empty()) root_.Write("root/zellang.cfg", system);
    if (!user.empty()) root_.Write("home/.zellang.cfg", user);
    CloseLang(lang_);
    lang_ = OpenLang(lang);
    ASSERT_NE(lang_, nullptr);
  }
  std::string User() const { return root_.Read("home/.zellang.cfg"); }
  std::string System() const { return root_.Read("root/zellang.cfg"); }

  test::Installation root_;
  void* lang_ = nullptr;
};

TEST_F(UserLanguages, TheUsersOwnWordingComesFirst) {
  Open(1, kSystem, kUser);
  std::string texts;
  for (long id = 12; id < 16; id++)
    texts += std::string(GetLangStr(lang_, id)) + "/" + GetSystemLangStr(lang_, id) + ",";
  EXPECT_EQ(texts, "Ligar/Power on,Power off/Power off,Own/,/,");
  EXPECT_EQ(GetLangCount(lang_), 2u) << "the system's languages";
  Open(-1);
  EXPECT_EQ(SetLangStr(lang_, 12, "text"), 0) << "no language";
  Open(2);
  EXPECT_STREQ(GetLangStr(lang_, 12), "");
  EXPECT_EACH((User(), System()), kUser, kSystem);
}

TEST_F(UserLanguages, DescriptionsAreCutToFit) {
  Open(1, kSystem, kUser);
  for (std::string const c : {"1English", "2Portugu\xEAs do Brasil, longo", "3"})
    for (std::size_t length = 0; length < 30; length++) {
      std::string buffer(40, 'x'), expected = c.substr(1, length == 0 ? 0 : length - 1);
      expected.resize(length);
      EXPECT_EQ(GetLangDesc(lang_, c[0] - '0', buffer.data() + 1, length), 1) << c << length;
      EXPECT_EQ(buffer, "x" + expected + std::string(39 - length, 'x')) << c << length;
    }
}

TEST_F(UserLanguages, ANewWordingGoesToTheUsersFile) {
  test::Names const before = root_.List();
  Open(1);
  EXPECT_EACH((GetLangStr(lang_, 1), GetSystemLangStr(lang_, 1)), "");
  EXPECT_EQ(GetLangCount(lang_), 0u);
  EXPECT_EACH((SetLangStr(lang_, 1, "a\nb"), SetLangStr(lang_, 1, "[x]")), 0);
  EXPECT_EQ(root_.List(), before) << "missing files are empty tables";
  Open(1, kSystem);
  EXPECT_EACH((SetLangStr(lang_, 12, "Ligar \xE9"), SetLangStr(lang_, 13, GetLangStr(lang_, 12))), 1);
  EXPECT_EQ(User(), "[1]\n12 = Ligar \xE9\n13 = Ligar \xE9");
  EXPECT_EQ(SetLangStr(lang_, 12, ""), 1);
  EXPECT_EACH((GetLangStr(lang_, 12), GetLangStr(lang_, 13)), "Power on", "Ligar \xE9");
  EXPECT_EACH((User(), System()), "[1]\n12 = \n13 = Ligar \xE9", kSystem);
}

TEST_F(UserLanguages, TheSystemsFileIsWrittenOnlyWhenTheUsersCannotBe) {
  std::filesystem::create_directories(root_.Home(".zellang.cfg/x"));
  Open(1, "[1]\n12 = on\n13 = off\n");
  EXPECT_EQ(SetLangStr(lang_, 13, GetLangStr(lang_, 12)), 1);
  EXPECT_EQ(SetLangStr(lang_, 13, "[x]"), 0);
  EXPECT_EACH((System(), GetLangStr(lang_, 13)), "[1]\n12 = on\n13 = on\n", "on");
  std::filesystem::remove(root_.Root("zellang.cfg"));
  std::filesystem::create_directories(root_.Root("zellang.cfg/x"));
  EXPECT_EQ(SetLangStr(lang_, 13, "x"), 0);
}

// The user's text is written but cannot be read back, so the system's table is loaded. The caller's text was in the
// user's table and no longer exists.
TEST_F(UserLanguages, ATextWhoseTableIsGone) {
  std::string const text = "a text that is too long to stand in the string itself";
  Open(1, "", "[1]\n1 = " + text + "\n");
  root_.Write("home/.zellang.cfg",
              "x\n");  // the load stops here, so the section is added after it, where it is not read
  EXPECT_EQ(SetLangStr(lang_, 2, GetLangStr(lang_, 1)), 1);
  EXPECT_EACH((System(), GetLangStr(lang_, 2), root_.Read("home/.zellang.cfg.lost")), "[1]\n2 = " + text, text, "x\n");
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

}  // namespace
