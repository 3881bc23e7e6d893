#include "zelvane/api/shutsrvconfig.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "support/settings.h"

namespace {

// The whole record, one field a line.
std::string Show(ShutSrvConfig const& c) {
  std::ostringstream out;
  out << "langId=" << c.langId << "\nserver=" << c.serverName << '|' << c.serverAddress << '|' << c.serverPort
      << "\nactions=" << +c.actions.systemShutdown << +c.actions.closeAndSaveApp << +c.actions.popup
      << +c.actions.mailSend << +c.actions.runCommand << +c.actions.systemHibernate << "\nappPath=" << c.appPath
      << "\ntimeLimit=" << c.timeLimit << "\npopupInterval=" << c.popupInterval << "\nshutMessage=" << c.shutMessage
      << "\ncancelMessage=" << c.cancelMessage << "\ncmdDelay=" << c.cmdDelay << "\ncmdLine=" << c.cmdLine
      << "\nmailInterval=" << c.mailInterval << "\nmailServer=" << c.mailServer << "\nmailPort=" << c.mailPort
      << "\nmailUser=" << c.mailUser << "\nmailPassword=" << c.mailPassword << "\nmailFrom=" << c.mailFrom
      << "\nmailSubject=" << c.mailSubject << "\nmailTo=" << c.mailTo << "\nmailMessage=" << c.mailMessage
      << "\nmailCancelSubject=" << c.mailCancelSubject << "\nmailCancelMessage=" << c.mailCancelMessage << '\n';
  return out.str();
}

constexpr char kDefaults[] =
    "langId=0\nserver=localhost|127.0.0.1|4375\nactions=110000\nappPath=/home/zelvane\ntimeLimit=60\npopupInterval=0\n"
    "shutMessage=O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.\n"
    "cancelMessage=O desligamento do computador %c (%i) foi cancelado!\n"
    "cmdDelay=5\ncmdLine=\nmailInterval=0\nmailServer=\nmailPort=25\nmailUser=\nmailPassword=\nmailFrom=\n"
    "mailSubject=Desligamento do computador %c (%i)\nmailTo=\n"
    "mailMessage=O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.\n"
    "mailCancelSubject=Cancelado o Desligamento do computador %c (%i)\n"
    "mailCancelMessage=O desligamento do computador %c (%i) foi cancelado!\n";

// Every key with a value of its own, in the order in which new keys are written.
constexpr char kEveryKey[] =
    "[SHUTSRV]\nZELSRV = hall;10.0.0.7;1234\nSYSTEMSHUTDOWN = 0\nCLOSEANDSAVEAPP = 1\nPOPUP = 0\nMAILSEND = 1\n"
    "RUNCOMMAND = 0\nSYSTEMHIBERNATE = 1\n"
    "[CLOSEANDSAVEAPP]\nPATH = /srv/a b\nTIMELIMIT = 61\n"
    "[POPUP]\nSHUTMESSAGE = a=b; c\nCANCELMESSAGE = p2\nINTERVAL = 62\n"
    "[RUNCOMMAND]\nCMDLINE = /bin/x -y\nDELAY = 63\n"
    "[MAILSEND]\nINTERVAL = 64\nSERVER = mail.a\nPORT = 65\nUSERNAME = user\nPASSWORD = c2VncmVkbwA=\nFROM = f@a\nTO = "
    "t@b\n"
    "SUBJECT = s1\nMESSAGE = m1\nCANCELSUBJECT = s2\nCANCELMESSAGE = m2";
constexpr char kEveryField[] =
    "langId=3\nserver=hall|10.0.0.7|1234\nactions=010101\nappPath=/srv/a b\ntimeLimit=61\npopupInterval=62\n"
    "shutMessage=a=b; c\ncancelMessage=p2\ncmdDelay=63\ncmdLine=/bin/x -y\nmailInterval=64\nmailServer=mail.a\n"
    "mailPort=65\nmailUser=user\nmailPassword=segredo\nmailFrom=f@a\nmailSubject=s1\nmailTo=t@b\nmailMessage=m1\n"
    "mailCancelSubject=s2\nmailCancelMessage=m2\n";

// The texts. Those without a section share a line with others or are encoded.
struct TextField {
  char const* section;
  char const* key;
  size_t offset;
  size_t width;
} const kTexts[] = {
    {nullptr, "server name", 20, 21},
    {nullptr, "server address", 4, 16},
    {nullptr, "password", 853, 21},
    {"CLOSEANDSAVEAPP", "PATH", 49, 256},
    {"POPUP", "SHUTMESSAGE", 316, 101},
    {"POPUP", "CANCELMESSAGE", 417, 101},
    {"RUNCOMMAND", "CMDLINE", 524, 256},
    {"MAILSEND", "SERVER", 784, 41},
    {"MAILSEND", "USERNAME", 832, 21},
    {"MAILSEND", "FROM", 874, 41},
    {"MAILSEND", "TO", 986, 256},
    {"MAILSEND", "SUBJECT", 915, 71},
    {"MAILSEND", "MESSAGE", 1242, 256},
    {"MAILSEND", "CANCELSUBJECT", 1498, 71},
    {"MAILSEND", "CANCELMESSAGE", 1569, 256},
};

class ShutSrv : public testing::Test {
 protected:
  ShutSrv() { GetShutSrvDefConfig(&cfg_); }

  int Read(std::string const& text) {
    at_.Write("root/upscli.cfg", text);
    memset(&cfg_, 'x', sizeof cfg_);
    return GetShutSrvConfig(nullptr, &cfg_);
  }

  char* Field(TextField const& text) { return reinterpret_cast<char*>(&cfg_) + text.offset; }

  test::Installation at_;
  ShutSrvConfig cfg_;
};

// ---- Defaults and missing files ----

TEST_F(ShutSrv, Defaults) {
  memset(&cfg_, 'x', sizeof cfg_);
  ASSERT_EQ(GetShutSrvDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  for (TextField const& text : kTexts) {
    size_t const length = strlen(Field(text));
    EXPECT_EQ(std::string(Field(text) + length, text.width - length), std::string(text.width - length, '\0'))
        << text.key;
  }
}

TEST_F(ShutSrv, NullRecords) {
  EXPECT_EQ(GetShutSrvConfig(nullptr, nullptr), 0);
  EXPECT_EQ(GetShutSrvDefConfig(nullptr), 0);
  EXPECT_EQ(SetShutSrvConfig(nullptr, nullptr), 0);
  EXPECT_FALSE(at_.Exists("root/upscli.cfg"));
  EXPECT_FALSE(at_.Exists("home/.zelvane"));
}

TEST_F(ShutSrv, ReadersTakeMissingFilesForDefaultsAndCreateNothing) {
  auto const before = at_.List();
  for (char const* folder : {"", "/nonexistent/zelvane"}) {
    memset(&cfg_, 'x', sizeof cfg_);
    EXPECT_EQ(GetShutSrvConfig(folder, &cfg_), 1) << folder;
    EXPECT_EQ(Show(cfg_), kDefaults) << folder;
  }
  mkdir(at_.Root("upscli.cfg").c_str(), 0755);
  memset(&cfg_, 'x', sizeof cfg_);
  EXPECT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  rmdir(at_.Root("upscli.cfg").c_str());
  EXPECT_EQ(at_.List(), before);
}

// ---- Every key ----

TEST_F(ShutSrv, EveryKey) {
  at_.Write("home/.zelvane", "[zelvane]\r\nlangid=3\r\n");
  ASSERT_EQ(Read(kEveryKey), 1);
  EXPECT_EQ(Show(cfg_), kEveryField);
  ASSERT_EQ(SetShutSrvConfig("", &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"), kEveryKey);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[zelvane]\r\nlangid = 3\n");
}

TEST_F(ShutSrv, FreshFiles) {
  ASSERT_EQ(Read(kEveryKey), 1);
  cfg_.langId = static_cast<int32_t>(4000000000U);
  std::filesystem::remove(at_.Root("upscli.cfg"));
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"), kEveryKey);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 4000000000");
}

TEST_F(ShutSrv, TouchesOnlyItsLinesOfOldFiles) {
  at_.Write(
      "root/upscli.cfg",
      "; kept by hand since '99\r\nBefore = any section\r\n\r\n  [ShutSrv]   \r\n\tZelSrv   =   old;1.2.3.4;1   \r\n"
      "  # the actions\nPOPUP=1 ; sometimes\nUnknown =  stays  \r\n\n[Mailsend]\nTo = ger\xEAncia@a\n"
      "to = second one, never read\n' end\n[CLILIST]\n0 = a;b;1\n[SHUTSRV]\nMailSend = 1\n");
  at_.Write("home/.zelvane", "# mine\n[Zelvane]\n  Langid=1 ; pt\nCOLORSCH = 2\n");
  ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(cfg_.actions.popup, 0);  // `1 ; sometimes` is no number
  cfg_.langId = 2;
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"),
            "; kept by hand since '99\r\nBefore = any section\r\n\r\n  [ShutSrv]   \r\nZelSrv = old;1.2.3.4;1\n"
            "  # the actions\nPOPUP = 0\nUnknown =  stays  \r\n\n[Mailsend]\nTo = ger\xEAncia@a\n"
            "INTERVAL = 0\nSERVER = \nPORT = 25\nUSERNAME = \nPASSWORD = \nFROM = \n"
            "SUBJECT = Desligamento do computador %c (%i)\n"
            "MESSAGE = O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.\n"
            "CANCELSUBJECT = Cancelado o Desligamento do computador %c (%i)\n"
            "CANCELMESSAGE = O desligamento do computador %c (%i) foi cancelado!\n"
            "to = second one, never read\n' end\n[CLILIST]\n0 = a;b;1\n[SHUTSRV]\nMailSend = 1\n"
            "SYSTEMSHUTDOWN = 1\nCLOSEANDSAVEAPP = 1\nRUNCOMMAND = 0\nSYSTEMHIBERNATE = 0\n\n"
            "[CLOSEANDSAVEAPP]\nPATH = /home/zelvane\nTIMELIMIT = 60\n"
            "[POPUP]\nSHUTMESSAGE = O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.\n"
            "CANCELMESSAGE = O desligamento do computador %c (%i) foi cancelado!\nINTERVAL = 0\n"
            "[RUNCOMMAND]\nCMDLINE = \nDELAY = 5");
  EXPECT_EQ(at_.Read("home/.zelvane"), "# mine\n[Zelvane]\nLangid = 2\nCOLORSCH = 2\n");
}

// ---- Values ----

TEST_F(ShutSrv, Server) {
  struct {
    char const* value;
    int result;
    char const* server;
  } const cases[] = {
      {"a;b;1", 1, "a|b|1"},
      {"a;b;", 1, "a|b|4375"},
      {";;", 1, "||4375"},
      {"a;b;x", 1, "a|b|4375"},
      {"a;b;1;2", 1, "a|b|1"},
      {"a; b ;-1", 1, "a| b |-1"},
      {"a;b;2147483648", 1, "a|b|4375"},
      {"12345678901234567890;123456789012345;0", 1, "12345678901234567890|123456789012345|0"},
      {"123456789012345678901;1234567890123456;0", 1, "12345678901234567890|123456789012345|0"},
      {"a;b", 0, nullptr},
      {"a", 0, nullptr},
      {"", 0, nullptr},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(Read(std::string("[SHUTSRV]\nZELSRV = ") + c.value), c.result) << c.value;
    if (c.server != nullptr) {
      EXPECT_NE(Show(cfg_).find(std::string("\nserver=") + c.server + "\n"), std::string::npos)
          << c.value << Show(cfg_);
    }
  }
}

TEST_F(ShutSrv, MalformedServerLeavesTheRecord) {
  at_.Write("home/.zelvane", "[ZELVANE]\nLANGID = 3\n");
  ASSERT_EQ(Read("[SHUTSRV]\nZELSRV = a;b\nPOPUP = 1\n"), 0);
  std::string const bytes(reinterpret_cast<char const*>(&cfg_), sizeof cfg_);
  EXPECT_EQ(bytes, std::string(sizeof cfg_, 'x'));
}

TEST_F(ShutSrv, ActionsKeepTheLowestBit) {
  ASSERT_EQ(Read("[SHUTSRV]\nSYSTEMSHUTDOWN=2\nCLOSEANDSAVEAPP=3\nPOPUP=-1\nMAILSEND=-2\nRUNCOMMAND=1\n"
                 "SYSTEMHIBERNATE=0"),
            1);
  EXPECT_NE(Show(cfg_).find("\nactions=011010\n"), std::string::npos) << Show(cfg_);
  ASSERT_EQ(Read("[SHUTSRV]\nSYSTEMSHUTDOWN=x\nCLOSEANDSAVEAPP=\nPOPUP=true\nMAILSEND=2147483649"), 1);
  EXPECT_NE(Show(cfg_).find("\nactions=110000\n"), std::string::npos) << Show(cfg_);
}

TEST_F(ShutSrv, ActionsLieFromTheLowestBitUpwards) {
  char const* const keys[] = {"SYSTEMSHUTDOWN", "CLOSEANDSAVEAPP", "POPUP",
                              "MAILSEND",       "RUNCOMMAND",      "SYSTEMHIBERNATE"};
  for (int bit = 0; bit < 6; bit++) {
    auto const byte = static_cast<unsigned char>(1 << bit);
    memcpy(&cfg_.actions, &byte, 1);
    ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
    std::string const text = at_.Read("root/upscli.cfg");
    for (int i = 0; i < 6; i++)
      EXPECT_NE(text.find(std::string("\n") + keys[i] + (i == bit ? " = 1\n" : " = 0\n")), std::string::npos) << text;
    ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
    EXPECT_EQ(memcmp(&cfg_.actions, &byte, 1), 0) << keys[bit];
  }
}

TEST_F(ShutSrv, Numbers) {
  struct {
    char const* value;
    uint32_t timeLimit;
  } const cases[] = {{"0", 0},           {"2147483647", 2147483647U},  {"2147483648", 60},
                     {"-1", 4294967295}, {"-2147483648", 2147483648U}, {"1.5", 60}};
  for (auto const& c : cases) {
    ASSERT_EQ(Read(std::string("[CLOSEANDSAVEAPP]\nTIMELIMIT = ") + c.value), 1);
    EXPECT_EQ(cfg_.timeLimit, c.timeLimit) << c.value;
  }
  cfg_.timeLimit = 4294967295U;
  cfg_.serverPort = -1;
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  std::string const text = at_.Read("root/upscli.cfg");
  EXPECT_NE(text.find("\nTIMELIMIT = 4294967295\n"), std::string::npos) << text;
  EXPECT_NE(text.find(";4294967295\n"), std::string::npos) << text;
}

TEST_F(ShutSrv, TextsAreCutToTheirFields) {
  for (TextField const& text : kTexts) {
    if (text.section == nullptr) continue;
    for (size_t const length : {text.width - 2, text.width - 1, text.width, text.width + 100}) {
      std::string const value(length, 'v');
      ASSERT_EQ(Read(std::string("[") + text.section + "]\n" + text.key + " = " + value), 1);
      EXPECT_EQ(std::string(Field(text), strnlen(Field(text), text.width)), value.substr(0, text.width - 1))
          << text.key;
      EXPECT_EQ(Field(text)[text.width - 1], '\0') << text.key << length;
    }
  }
}

TEST_F(ShutSrv, Password) {
  struct {
    char const* stored;
    char const* plain;
  } const cases[] = {
      {"c2VncmVkbwA=", "segredo"},
      {"c2VncmVkbw==", "segredo"},  // by tools that do not encode the NUL
      {"5+fjAA==", "\xE7\xE7\xE3"},
      {"MTIzNDU2Nzg5MDEyMzQ1Njc4OTAA", "12345678901234567890"},
      {"MTIzNDU2Nzg5MDEyMzQ1Njc4OTAxMjM0NTYA", "12345678901234567890"},
      {"AA==", ""},
      {"???", ""},
      {"", ""},
  };
  for (auto const& c : cases) {
    ASSERT_EQ(Read(std::string("[MAILSEND]\nPASSWORD = ") + c.stored), 1);
    EXPECT_STREQ(cfg_.mailPassword, c.plain) << c.stored;
  }
  for (char const* plain : {"", "x", "segredo", " blanks ", "[=;\n]", "12345678901234567890"}) {
    strcpy(cfg_.mailPassword, plain);
    ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1) << plain;
    ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1) << plain;
    EXPECT_STREQ(cfg_.mailPassword, plain);
  }
  EXPECT_NE(at_.Read("root/upscli.cfg").find("\nPASSWORD = MTIzNDU2Nzg5MDEyMzQ1Njc4OTAA\n"), std::string::npos);
}

TEST_F(ShutSrv, ArraysWithoutNul) {
  memset(&cfg_, 'z', sizeof cfg_);
  memset(&cfg_.actions, 0, 1);
  cfg_.langId = cfg_.serverPort = 0;
  cfg_.timeLimit = cfg_.popupInterval = cfg_.cmdDelay = cfg_.mailInterval = cfg_.mailPort = 0;
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  auto const z = [](size_t width) { return std::string(width, 'z'); };
  EXPECT_EQ(at_.Read("root/upscli.cfg"),
            "[SHUTSRV]\nZELSRV = " + z(21) + ";" + z(16) +
                ";0\nSYSTEMSHUTDOWN = 0\nCLOSEANDSAVEAPP = 0\nPOPUP = 0\nMAILSEND = 0\nRUNCOMMAND = 0\n"
                "SYSTEMHIBERNATE = 0\n[CLOSEANDSAVEAPP]\nPATH = " +
                z(256) + "\nTIMELIMIT = 0\n[POPUP]\nSHUTMESSAGE = " + z(101) + "\nCANCELMESSAGE = " + z(101) +
                "\nINTERVAL = 0\n[RUNCOMMAND]\nCMDLINE = " + z(256) +
                "\nDELAY = 0\n[MAILSEND]\nINTERVAL = 0\nSERVER = " + z(41) + "\nPORT = 0\nUSERNAME = " + z(21) +
                "\nPASSWORD = enp6enp6enp6enp6enp6enp6enp6AA==\nFROM = " + z(41) + "\nTO = " + z(256) + "\nSUBJECT = " +
                z(71) + "\nMESSAGE = " + z(256) + "\nCANCELSUBJECT = " + z(71) + "\nCANCELMESSAGE = " + z(256));
}

// ---- Where the files lie ----

TEST_F(ShutSrv, Folder) {
  std::filesystem::create_directories(at_.Path("other"));
  std::string const old = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(at_.Path().c_str()), 0);
  std::string const whole = at_.Path("other");
  for (std::string const& folder : {whole, whole + "/", std::string("other"), std::string("./other/")}) {
    cfg_.timeLimit++;
    EXPECT_EQ(SetShutSrvConfig(folder.c_str(), &cfg_), 1) << folder;
    ShutSrvConfig back;
    EXPECT_EQ(GetShutSrvConfig(folder.c_str(), &back), 1) << folder;
    EXPECT_EQ(back.timeLimit, cfg_.timeLimit) << folder;
  }
  ASSERT_EQ(chdir(old.c_str()), 0);
  EXPECT_EQ(at_.List(), (std::vector<std::string>{"home/", "home/.zelvane", "other/", "other/upscli.cfg", "root/",
                                                  "zelvane.conf"}));
}

TEST_F(ShutSrv, UserFileWithoutHome) {
  std::string const old = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(at_.Path().c_str()), 0);
  unsetenv("HOME");
  cfg_.langId = 7;
  EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("~.zelvane"), "[ZELVANE]\nLANGID = 7");
  ShutSrvConfig back;
  EXPECT_EQ(GetShutSrvConfig(nullptr, &back), 1);
  EXPECT_EQ(back.langId, 7);
  ASSERT_EQ(chdir(old.c_str()), 0);
}

// ---- Failures: the old file stays whole ----

TEST_F(ShutSrv, LineFeedsAreRefused) {
  for (char const* old : {"<missing>", "[SHUTSRV]\nZELSRV = a;b;1\n"}) {
    if (*old == '[') at_.Write("root/upscli.cfg", old);
    for (TextField const& text : kTexts) {
      if (text.offset == offsetof(ShutSrvConfig, mailPassword)) continue;  // encoded, it has none
      GetShutSrvDefConfig(&cfg_);
      strcpy(Field(text), "a\nb");
      EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 0) << text.key;
      EXPECT_EQ(at_.Read("root/upscli.cfg"), old) << text.key;
      EXPECT_FALSE(at_.Exists("home/.zelvane")) << text.key;
    }
  }
}

TEST_F(ShutSrv, FailuresOfTheFirstFileKeepTheSecondUntouched) {
  mkdir(at_.Root("upscli.cfg").c_str(), 0755);
  EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 0);
  EXPECT_EQ(SetShutSrvConfig(at_.Path("missing").c_str(), &cfg_), 0);
  EXPECT_EQ(SetShutSrvConfig(at_.Path("zelvane.conf").c_str(), &cfg_), 0);
  EXPECT_EQ(at_.List(), (std::vector<std::string>{"home/", "root/", "root/upscli.cfg/", "zelvane.conf"}));
}

TEST_F(ShutSrv, FailuresOfTheSecondFileComeAfterTheFirstIsSaved) {
  int const open = test::OpenDescriptors();
  setenv("HOME", at_.Path("missing").c_str(), 1);
  EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 0);
  std::string const saved = at_.Read("root/upscli.cfg");
  EXPECT_EQ(saved.substr(0, 10), "[SHUTSRV]\n");
  setenv("HOME", at_.Path("home").c_str(), 1);
  mkdir(at_.Home(".zelvane").c_str(), 0755);
  cfg_.timeLimit = 1;
  EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 0);
  EXPECT_NE(at_.Read("root/upscli.cfg"), saved);
  EXPECT_EQ(test::OpenDescriptors(), open);
}

}  // namespace
