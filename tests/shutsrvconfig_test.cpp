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

constexpr char kShutText[] = "O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.";
constexpr char kCancelText[] = "O desligamento do computador %c (%i) foi cancelado!";

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
    "langId=4000000000\nserver=hall|10.0.0.7|1234\nactions=010101\nappPath=/srv/a b\ntimeLimit=61\npopupInterval=62\n"
    "shutMessage=a=b; c\ncancelMessage=p2\ncmdDelay=63\ncmdLine=/bin/x -y\nmailInterval=64\nmailServer=mail.a\n"
    "mailPort=65\nmailUser=user\nmailPassword=segredo\nmailFrom=f@a\nmailSubject=s1\nmailTo=t@b\nmailMessage=m1\n"
    "mailCancelSubject=s2\nmailCancelMessage=m2\n";

class ShutSrv : public testing::Test {
 protected:
  ShutSrv() { GetShutSrvDefConfig(&cfg_); }

  int Read(std::string const& text) {
    at_.Write("root/upscli.cfg", text);
    memset(&cfg_, 'x', sizeof cfg_);
    return GetShutSrvConfig(nullptr, &cfg_);
  }

  test::Installation at_;
  ShutSrvConfig cfg_;
};

void Fill(char* field, size_t width, char const* text) { strncpy(field, text, width); }

// ---- Defaults and missing files ----

TEST_F(ShutSrv, Defaults) {
  memset(&cfg_, 'x', sizeof cfg_);
  ASSERT_EQ(GetShutSrvDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  struct {
    char const* name;
    char const* field;
    size_t width;
  } const texts[] = {
      {"serverAddress", cfg_.serverAddress, 16},
      {"serverName", cfg_.serverName, 21},
      {"appPath", cfg_.appPath, 256},
      {"shutMessage", cfg_.shutMessage, 101},
      {"cancelMessage", cfg_.cancelMessage, 101},
      {"cmdLine", cfg_.cmdLine, 256},
      {"mailServer", cfg_.mailServer, 41},
      {"mailUser", cfg_.mailUser, 21},
      {"mailPassword", cfg_.mailPassword, 21},
      {"mailFrom", cfg_.mailFrom, 41},
      {"mailSubject", cfg_.mailSubject, 71},
      {"mailTo", cfg_.mailTo, 256},
      {"mailMessage", cfg_.mailMessage, 256},
      {"mailCancelSubject", cfg_.mailCancelSubject, 71},
      {"mailCancelMessage", cfg_.mailCancelMessage, 256},
  };
  for (auto const& text : texts)
    for (size_t i = strlen(text.field); i < text.width; i++) EXPECT_EQ(text.field[i], '\0') << text.name << ' ' << i;
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

TEST_F(ShutSrv, FreshFiles) {
  ASSERT_EQ(Read(kEveryKey), 1);
  cfg_.langId = static_cast<int32_t>(4000000000U);
  std::filesystem::remove(at_.Root("upscli.cfg"));
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"), kEveryKey);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 4000000000");
}

TEST_F(ShutSrv, ReadsEveryKey) {
  at_.Write("home/.zelvane", "[zelvane]\r\nlangid=3\r\n");
  ASSERT_EQ(Read(kEveryKey), 1);
  std::string expected = kEveryField;
  expected.replace(expected.find("4000000000"), 10, "3");
  EXPECT_EQ(Show(cfg_), expected);
}

TEST_F(ShutSrv, WritesDefaults) {
  ASSERT_EQ(SetShutSrvConfig("", &cfg_), 1);
  EXPECT_EQ(
      at_.Read("root/upscli.cfg"),
      std::string("[SHUTSRV]\nZELSRV = localhost;127.0.0.1;4375\nSYSTEMSHUTDOWN = 1\nCLOSEANDSAVEAPP = 1\nPOPUP = 0\n"
                  "MAILSEND = 0\nRUNCOMMAND = 0\nSYSTEMHIBERNATE = 0\n"
                  "[CLOSEANDSAVEAPP]\nPATH = /home/zelvane\nTIMELIMIT = 60\n[POPUP]\nSHUTMESSAGE = ") +
          kShutText + "\nCANCELMESSAGE = " + kCancelText +
          "\nINTERVAL = 0\n[RUNCOMMAND]\nCMDLINE = \nDELAY = 5\n[MAILSEND]\nINTERVAL = 0\nSERVER = \nPORT = 25\n"
          "USERNAME = \nPASSWORD = \nFROM = \nTO = \nSUBJECT = Desligamento do computador %c (%i)\nMESSAGE = " +
          kShutText +
          "\nCANCELSUBJECT = Cancelado o Desligamento do computador %c (%i)\nCANCELMESSAGE = " + kCancelText);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 0");
}

TEST_F(ShutSrv, TouchesOnlyItsLinesOfAnOldFile) {
  at_.Write("root/upscli.cfg",
            "; kept by hand since '99\r\n"
            "Before = any section\r\n"
            "\r\n"
            "  [ShutSrv]   \r\n"
            "\tZelSrv   =   old;1.2.3.4;1   \r\n"
            "  # the actions\n"
            "POPUP=1 ; sometimes\n"
            "Unknown =  stays  \r\n"
            "\n"
            "[Mailsend]\n"
            "To = ger\xEAncia@a\n"
            "to = second one, never read\n"
            "' end\n"
            "[CLILIST]\n"
            "0 = a;b;1\n"
            "[SHUTSRV]\n"
            "MailSend = 1\n");
  at_.Write("home/.zelvane", "# mine\n[Zelvane]\n  Langid=1 ; pt\nCOLORSCH = 2\n");
  ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
  cfg_.langId = 2;
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"),
            std::string("; kept by hand since '99\r\n"
                        "Before = any section\r\n"
                        "\r\n"
                        "  [ShutSrv]   \r\n"
                        "ZelSrv = old;1.2.3.4;1\n"
                        "  # the actions\n"
                        "POPUP = 0\n"  // `1 ; sometimes` is no number: the default
                        "Unknown =  stays  \r\n"
                        "\n"
                        "[Mailsend]\n"
                        "To = ger\xEAncia@a\n"
                        "INTERVAL = 0\nSERVER = \nPORT = 25\nUSERNAME = \nPASSWORD = \nFROM = \n"
                        "SUBJECT = Desligamento do computador %c (%i)\nMESSAGE = ") +
                kShutText +
                "\nCANCELSUBJECT = Cancelado o Desligamento do computador %c (%i)\nCANCELMESSAGE = " + kCancelText +
                "\nto = second one, never read\n"
                "' end\n"
                "[CLILIST]\n"
                "0 = a;b;1\n"
                "[SHUTSRV]\n"
                "MailSend = 1\n"
                "SYSTEMSHUTDOWN = 1\nCLOSEANDSAVEAPP = 1\nRUNCOMMAND = 0\nSYSTEMHIBERNATE = 0\n"
                "\n[CLOSEANDSAVEAPP]\nPATH = /home/zelvane\nTIMELIMIT = 60\n[POPUP]\nSHUTMESSAGE = " +
                kShutText + "\nCANCELMESSAGE = " + kCancelText + "\nINTERVAL = 0\n[RUNCOMMAND]\nCMDLINE = \nDELAY = 5");
  EXPECT_EQ(at_.Read("home/.zelvane"), "# mine\n[Zelvane]\nLangid = 2\nCOLORSCH = 2\n");
}

TEST_F(ShutSrv, SavingWhatWasReadChangesNoByte) {
  ASSERT_EQ(Read(kEveryKey), 1);
  ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"), kEveryKey);
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
  struct {
    char const* value;
    char const* actions;
  } const cases[] = {{"0", "000000"},  {"1", "111111"}, {"2", "000000"}, {"3", "111111"},    {"-1", "111111"},
                     {"-2", "000000"}, {"x", "110000"}, {"", "110000"},  {"true", "110000"}, {"2147483648", "110000"}};
  for (auto const& c : cases) {
    std::string text = "[SHUTSRV]\n";
    for (char const* key : {"SYSTEMSHUTDOWN", "CLOSEANDSAVEAPP", "POPUP", "MAILSEND", "RUNCOMMAND", "SYSTEMHIBERNATE"})
      text += std::string(key) + " = " + c.value + "\n";
    ASSERT_EQ(Read(text), 1);
    EXPECT_NE(Show(cfg_).find(std::string("\nactions=") + c.actions + "\n"), std::string::npos) << c.value;
  }
}

TEST_F(ShutSrv, ActionsLieFromTheLowestBitUpwards) {
  struct {
    char const* key;
    unsigned char byte;
  } const cases[] = {{"SYSTEMSHUTDOWN", 1}, {"CLOSEANDSAVEAPP", 2}, {"POPUP", 4},
                     {"MAILSEND", 8},       {"RUNCOMMAND", 16},     {"SYSTEMHIBERNATE", 32}};
  for (auto const& c : cases) {
    at_.Write("root/upscli.cfg", std::string("[SHUTSRV]\nSYSTEMSHUTDOWN = 0\nCLOSEANDSAVEAPP = 0\n[SHUTSRV]\n"));
    memset(&cfg_, 0, sizeof cfg_);
    memcpy(&cfg_.actions, &c.byte, 1);
    ASSERT_EQ(SetShutSrvConfig(nullptr, &cfg_), 1);
    std::string const text = at_.Read("root/upscli.cfg");
    EXPECT_NE(text.find(std::string("\n") + c.key + " = 1\n"), std::string::npos) << c.key << text;
    ASSERT_EQ(GetShutSrvConfig(nullptr, &cfg_), 1);
    EXPECT_EQ(memcmp(&cfg_.actions, &c.byte, 1), 0) << c.key;
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
  struct {
    char const* section;
    char const* key;
    char const* field;
    size_t width;
  } const cases[] = {
      {"CLOSEANDSAVEAPP", "PATH", cfg_.appPath, 256},
      {"POPUP", "SHUTMESSAGE", cfg_.shutMessage, 101},
      {"POPUP", "CANCELMESSAGE", cfg_.cancelMessage, 101},
      {"RUNCOMMAND", "CMDLINE", cfg_.cmdLine, 256},
      {"MAILSEND", "SERVER", cfg_.mailServer, 41},
      {"MAILSEND", "USERNAME", cfg_.mailUser, 21},
      {"MAILSEND", "FROM", cfg_.mailFrom, 41},
      {"MAILSEND", "TO", cfg_.mailTo, 256},
      {"MAILSEND", "SUBJECT", cfg_.mailSubject, 71},
      {"MAILSEND", "MESSAGE", cfg_.mailMessage, 256},
      {"MAILSEND", "CANCELSUBJECT", cfg_.mailCancelSubject, 71},
      {"MAILSEND", "CANCELMESSAGE", cfg_.mailCancelMessage, 256},
  };
  for (auto const& c : cases)
    for (size_t const length : {c.width - 2, c.width - 1, c.width, c.width + 100}) {
      std::string const value(length, 'v');
      ASSERT_EQ(Read(std::string("[") + c.section + "]\n" + c.key + " = " + value), 1);
      EXPECT_EQ(std::string(c.field, strnlen(c.field, c.width)), value.substr(0, c.width - 1)) << c.key << length;
      EXPECT_EQ(c.field[c.width - 1], '\0') << c.key << length;
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
    Fill(cfg_.mailPassword, sizeof cfg_.mailPassword, plain);
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
  struct {
    char const* name;
    char* field;
  } const cases[] = {
      {"serverName", cfg_.serverName},
      {"serverAddress", cfg_.serverAddress},
      {"appPath", cfg_.appPath},
      {"shutMessage", cfg_.shutMessage},
      {"cancelMessage", cfg_.cancelMessage},
      {"cmdLine", cfg_.cmdLine},
      {"mailServer", cfg_.mailServer},
      {"mailUser", cfg_.mailUser},
      {"mailFrom", cfg_.mailFrom},
      {"mailSubject", cfg_.mailSubject},
      {"mailTo", cfg_.mailTo},
      {"mailMessage", cfg_.mailMessage},
      {"mailCancelSubject", cfg_.mailCancelSubject},
      {"mailCancelMessage", cfg_.mailCancelMessage},
  };
  for (bool const fresh : {true, false}) {
    if (!fresh) at_.Write("root/upscli.cfg", "[SHUTSRV]\nZELSRV = a;b;1\n");
    for (auto const& c : cases) {
      GetShutSrvDefConfig(&cfg_);
      strcpy(c.field, "a\nb");
      EXPECT_EQ(SetShutSrvConfig(nullptr, &cfg_), 0) << c.name;
      EXPECT_EQ(at_.Read("root/upscli.cfg"), fresh ? "<missing>" : "[SHUTSRV]\nZELSRV = a;b;1\n") << c.name;
      EXPECT_FALSE(at_.Exists("home/.zelvane")) << c.name;
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
