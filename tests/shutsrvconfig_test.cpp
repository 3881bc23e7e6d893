#include "zelvane/api/shutsrvconfig.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

// The whole record, one field a line.
std::string Show(ShutSrvConfig const& c) {
  std::ostringstream out;
  out << "langId=" << c.langId << "\nserver=" << test::Server(c) << "\nactions=" << +c.actions.systemShutdown
      << +c.actions.closeAndSaveApp << +c.actions.popup << +c.actions.mailSend << +c.actions.runCommand
      << +c.actions.systemHibernate << "\nappPath=" << c.appPath << "\ntimeLimit=" << c.timeLimit
      << "\npopupInterval=" << c.popupInterval << "\nshutMessage=" << c.shutMessage
      << "\ncancelMessage=" << c.cancelMessage << "\ncmdDelay=" << c.cmdDelay << "\ncmdLine=" << c.cmdLine
      << "\nmailInterval=" << c.mailInterval << "\nmailServer=" << c.mailServer << "\nmailPort=" << c.mailPort
      << "\nmailUser=" << c.mailUser << "\nmailPassword=" << c.mailPassword << "\nmailFrom=" << c.mailFrom
      << "\nmailSubject=" << c.mailSubject << "\nmailTo=" << c.mailTo << "\nmailMessage=" << c.mailMessage
      << "\nmailCancelSubject=" << c.mailCancelSubject << "\nmailCancelMessage=" << c.mailCancelMessage << '\n';
  return out.str();
}

class ShutSrv : public testing::Test {
 protected:
  ShutSrv() { GetShutSrvDefConfig(&cfg_); }

  std::string Get(char const* folder = nullptr) {
    memset(&cfg_, 'x', sizeof cfg_);
    return GetShutSrvConfig(folder, &cfg_) == 1 ? Show(cfg_) : "refused";
  }
  std::string Get(std::string const& text) { return at_.Write("root/upscli.cfg", text), Get(); }
  int Set() { return SetShutSrvConfig(nullptr, &cfg_); }
  std::string File() const { return at_.Read("root/upscli.cfg"); }
  char* Field(test::Case const& text) { return reinterpret_cast<char*>(&cfg_) + text.Int(2); }

  test::Installation at_;
  ShutSrvConfig cfg_;
};

TEST_F(ShutSrv, Defaults) {
  memset(&cfg_, 'x', sizeof cfg_);
  ASSERT_EQ(GetShutSrvDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), test::Fixture("shutsrv-default.txt"));
  for (test::Case const& c : test::Cases("shutsrv.txt", "texts")) {
    size_t const rest = c.UInt(3) - strlen(Field(c));
    EXPECT_EQ(std::string(Field(c) + strlen(Field(c)), rest), std::string(rest, '\0')) << c;
  }
}

TEST_F(ShutSrv, ReadersCreateNothing) {
  fs::create_directories(at_.Path("folder/upscli.cfg"));
  std::string const folder = at_.Path("folder"), missing = at_.Path("missing");
  auto const before = at_.List();
  for (char const* at : {static_cast<char const*>(nullptr), "", missing.c_str(), folder.c_str()})
    EXPECT_EQ(Get(at), test::Fixture("shutsrv-default.txt"));
  EXPECT_EQ(at_.List(), before);
}

TEST_F(ShutSrv, EveryKey) {
  at_.Write("home/.zelvane", "[zelvane]\r\nlangid=3\r\n");
  EXPECT_EQ(Get(test::Fixture("shutsrv-every.cfg")), test::Fixture("shutsrv-every.txt"));
  ASSERT_EQ(SetShutSrvConfig("", &cfg_), 1);
  EXPECT_EACH((File(), at_.Read("home/.zelvane")), test::Fixture("shutsrv-every.cfg"), "[zelvane]\r\nlangid = 3\n");
  for (char const* file : {"root/upscli.cfg", "home/.zelvane"}) fs::remove(at_.Path(file));
  cfg_.langId = static_cast<int32_t>(4000000000U);
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(File(), test::Fixture("shutsrv-every.cfg"));
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 4000000000");
}

TEST_F(ShutSrv, TouchesOnlyItsLinesOfOldFiles) {
  at_.Write("home/.zelvane", "# mine\n[Zelvane]\n  Langid=1 ; pt\nCOLORSCH = 2\n");
  Get(test::Fixture("shutsrv-old.cfg"));
  cfg_.langId = 2;
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(File(), test::Fixture("shutsrv-old-saved.cfg"));
  EXPECT_EQ(at_.Read("home/.zelvane"), "# mine\n[Zelvane]\nLangid = 2\nCOLORSCH = 2\n");
}

TEST_F(ShutSrv, HowEachValueIsRead) {
  at_.Write("home/.zelvane", "[ZELVANE]\nLANGID = 3\n");
  for (test::Case const& c : test::Cases("servers.txt", "entries")) {
    std::string const record = Get("[SHUTSRV]\nZELSRV = " + c[0] + "\nPOPUP = 1\n");
    EXPECT_TRUE(test::Holds(record, c[1] == "refused" ? c[1] : "server=" + c[1])) << c;
    if (c[1] == "refused") EXPECT_EACH((test::Bytes(cfg_)), std::string(sizeof cfg_, 'x')) << c;
  }
  for (test::Case const& c : test::Cases("shutsrv.txt", "readings")) EXPECT_TRUE(test::Holds(Get(c[0]), c[1])) << c;
  for (test::Case const& c : test::Cases("shutsrv.txt", "texts")) {
    for (size_t const length : {c.UInt(3) - 2, c.UInt(3) - 1, c.UInt(3), c.UInt(3) + 100}) {
      if (c[0] == "-") continue;
      std::string const value(length, 'v');
      Get("[" + c[0] + "]\n" + c[1] + " = " + value);
      EXPECT_EQ(std::string(Field(c), strnlen(Field(c), c.UInt(3))), value.substr(0, c.UInt(3) - 1)) << c << length;
    }
  }
}

TEST_F(ShutSrv, WritesAnyRecord) {
  for (test::Case const& c : test::Cases("shutsrv.txt", "actions")) {
    auto const byte = static_cast<unsigned char>(c.Int(0));
    memcpy(&cfg_.actions, &byte, 1);
    ASSERT_EQ(Set(), 1);
    EXPECT_TRUE(test::Holds(File(), c[1])) << c;
    memset(&cfg_.actions, 0, 1);  // including the unnamed bits
    ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
    EXPECT_EQ(memcmp(&cfg_.actions, &byte, 1), 0) << c;
  }
  for (test::Case const& c : test::Cases("shutsrv.txt", "passwords")) {
    test::Put(cfg_.mailPassword, c[0]);
    ASSERT_EQ(Set(), 1) << c;
    EXPECT_TRUE(test::Holds(File(), c[1])) << c;
    Get();
    EXPECT_EQ(cfg_.mailPassword, c[0]) << c;
  }
  // Arrays without a NUL end at their width, and all numbers are unsigned.
  memset(&cfg_, 'z', sizeof cfg_);
  cfg_.serverPort = cfg_.langId = -1;
  ASSERT_EQ(Set(), 1);
  for (std::string const& line : {"TIMELIMIT = " + std::to_string(cfg_.timeLimit),
                                  "ZELSRV = " + std::string(21, 'z') + ";" + std::string(16, 'z') + ";4294967295",
                                  std::string("PASSWORD = enp6enp6enp6enp6enp6enp6enp6AA==")})
    EXPECT_TRUE(test::Holds(File(), line));
  for (test::Case const& c : test::Cases("shutsrv.txt", "texts"))
    if (c[0] != "-") {
      EXPECT_TRUE(test::Holds(File(), c[1] + " = " + std::string(c.UInt(3), 'z')));
    }
}

TEST_F(ShutSrv, WhichFoldersHoldTheFiles) {
  fs::create_directories(at_.Path("other"));
  test::InFolder const here(at_.Path());
  unsetenv("HOME");  // the user's file is then "~.zelvane" here
  for (std::string const& folder : {at_.Path("other"), std::string("other"), std::string("./other/")}) {
    cfg_.langId++;
    EXPECT_EQ(SetShutSrvConfig(folder.c_str(), &cfg_), 1) << folder;
    std::string const record = Show(cfg_);
    EXPECT_EQ(Get(folder.c_str()), record) << folder;
    test::Names after = {"home/", "other/", "other/upscli.cfg", "root/", "zelvane.conf", "~.zelvane"};
    EXPECT_EQ(at_.List(), after) << folder;
    fs::remove(at_.Path("other/upscli.cfg"));
  }
  EXPECT_EQ(at_.Read("~.zelvane"), "[ZELVANE]\nLANGID = 3");
}

TEST_F(ShutSrv, FailedSaves) {
  // The old file is unchanged, and the second one is not written.
  std::string const old = "[SHUTSRV]\nZELSRV = a;b;1\n";
  at_.Write("root/upscli.cfg", old);
  for (test::Case const& c : test::Cases("shutsrv.txt", "texts")) {
    if (c[1] == "password") continue;  // it is encoded, so it has no line feed
    memcpy(Field(c), "a\nb", 4);
    EXPECT_EQ(Set(), 0) << c;
    EXPECT_EQ(File(), old) << c;
    GetShutSrvDefConfig(&cfg_);
  }
  fs::create_directories(at_.Path("folder/upscli.cfg"));
  for (std::string const folder : {"folder", "missing", "zelvane.conf"})
    EXPECT_EQ(SetShutSrvConfig(at_.Path(folder).c_str(), &cfg_), 0) << folder;
  EXPECT_NONE(at_.Exists("home/.zelvane"), at_.Exists("missing"));
  // If the second file fails, the first is already saved.
  fs::create_directory(at_.Home(".zelvane"));
  EXPECT_EQ(Set(), 0);
  EXPECT_TRUE(test::Holds(File(), "TIMELIMIT = 60"));
}

}  // namespace
