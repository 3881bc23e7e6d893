#include "zelvane/api/clientconfig.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/settings.h"

namespace {

std::string Show(ClientConfig const& c) {
  return std::string(c.serverName) + "|" + c.serverAddress + "|" + std::to_string(c.serverPort) + "|" +
         std::to_string(c.langId) + "|" + std::to_string(c.colorScheme) + "|" + c.libName;
}

class Client : public testing::Test {
 protected:
  Client() { GetClientDefConfig(&cfg_); }

  int Get() {
    memset(&cfg_, 'x', sizeof cfg_);
    return GetClientConfig(&cfg_);
  }

  void SetServer(char const* name, char const* address, int32_t port) {
    strcpy(cfg_.serverName, name);
    strcpy(cfg_.serverAddress, address);
    cfg_.serverPort = port;
  }

  test::Installation at_;
  ClientConfig cfg_;
};

TEST_F(Client, Defaults) {
  memset(&cfg_, 'x', sizeof cfg_);
  ASSERT_EQ(GetClientDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), "localhost|127.0.0.1|4375|0|0|upscli");
  EXPECT_EQ(std::string(cfg_.serverAddress, 16), std::string("127.0.0.1").append(7, '\0'));
  EXPECT_EQ(std::string(cfg_.serverName, 21), std::string("localhost").append(12, '\0'));
  EXPECT_EQ(std::string(cfg_.libName, 21), std::string("upscli").append(15, '\0'));
}

TEST_F(Client, NullRecords) {
  auto const before = at_.List();
  EXPECT_EQ(GetClientConfig(nullptr), 0);
  EXPECT_EQ(GetClientDefConfig(nullptr), 0);
  EXPECT_EQ(SetClientConfig(nullptr), 0);
  EXPECT_EQ(at_.List(), before);
}

TEST_F(Client, MissingFilesAreDefaultsAndStayMissing) {
  auto const before = at_.List();
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), "localhost|127.0.0.1|4375|0|0|upscli");
  EXPECT_EQ(at_.List(), before);
}

TEST_F(Client, FreshFiles) {
  SetServer("hall", "10.0.0.7", 1234);
  cfg_.langId = 2;
  cfg_.colorScheme = -1;
  strcpy(cfg_.libName, "MyLib");
  ASSERT_EQ(SetClientConfig(&cfg_), 1);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 2\nCOLORSCH = 4294967295");
  EXPECT_EQ(at_.Read("root/upscli.cfg"), "[CLILIST]\n0 = hall;10.0.0.7;1234\n[UPSCLI]\nLIBNAME = MyLib");
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), "hall|10.0.0.7|1234|2|0|mylib");  // 4294967295 does not fit a signed number
}

TEST_F(Client, TouchesOnlyItsLinesOfOldFiles) {
  at_.Write("home/.zelvane", "# mine\r\n[Zelvane]\r\n  Langid=1 ; pt\r\nNote = \xE9\r\n");
  at_.Write("root/upscli.cfg",
            "; servers\r\n"
            "[SHUTSRV]\r\n"
            "ZELSRV = s;1.1.1.1;1\r\n"
            " [CliList]\r\n"
            "2 = two;2.2.2.2;2\r\n"
            "\t10\t=\tten;1.2.3.4;5\t; first by its text\r\n"
            "\r\n"
            "2 = again;3.3.3.3;3\r\n");
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), "ten|1.2.3.4|4375|0|0|upscli");
  SetServer("new", "9.9.9.9", 9);
  cfg_.langId = 3;
  ASSERT_EQ(SetClientConfig(&cfg_), 1);
  EXPECT_EQ(at_.Read("home/.zelvane"), "# mine\r\n[Zelvane]\r\nLangid = 3\nNote = \xE9\r\nCOLORSCH = 0\n");
  EXPECT_EQ(at_.Read("root/upscli.cfg"),
            "; servers\r\n"
            "[SHUTSRV]\r\n"
            "ZELSRV = s;1.1.1.1;1\r\n"
            " [CliList]\r\n"
            "2 = two;2.2.2.2;2\r\n"
            "10 = new;9.9.9.9;9\n"
            "\r\n"
            "2 = again;3.3.3.3;3\r\n"
            "\n[UPSCLI]\nLIBNAME = upscli");
}

TEST_F(Client, FirstEntry) {
  struct {
    char const* list;
    char const* server;
    char const* after;
  } const cases[] = {
      {"", "localhost|127.0.0.1|4375", "\n[CLILIST]\n0 = n;a;1"},
      {"[CLILIST]", "localhost|127.0.0.1|4375", "[CLILIST]\n0 = n;a;1"},
      {"[CLILIST]\n7 = seven;7.7.7.7;7", "seven|7.7.7.7|7", "[CLILIST]\n7 = n;a;1"},
      {"[CLILIST]\n2 = two;b;2\n10 = ten;c;10", "ten|c|10", "[CLILIST]\n2 = two;b;2\n10 = n;a;1"},
      {"[CLILIST]\nmain = m;d;3\nZ = z;e;4", "m|d|3", "[CLILIST]\nmain = n;a;1\nZ = z;e;4"},
  };
  for (auto const& c : cases) {
    at_.Write("root/upscli.cfg", c.list);
    ASSERT_EQ(Get(), 1) << c.list;
    EXPECT_EQ(Show(cfg_).substr(0, strlen(c.server) + 1), std::string(c.server) + "|") << c.list;
    SetServer("n", "a", 1);
    ASSERT_EQ(SetClientConfig(&cfg_), 1) << c.list;
    EXPECT_EQ(at_.Read("root/upscli.cfg"), std::string(c.after) + "\n[UPSCLI]\nLIBNAME = upscli") << c.list;
  }
}

TEST_F(Client, EntryFields) {
  struct {
    char const* entry;
    int result;
    char const* server;
  } const cases[] = {
      {"a;b;1", 1, "a|b|1|"},
      {"a;b;", 1, "a|b|4375|"},
      {"a;b;x", 1, "a|b|4375|"},
      {"a;b;1;c", 1, "a|b|1|"},
      {"a;b;-5", 1, "a|b|-5|"},
      {"12345678901234567890;123456789012345;1", 1, "12345678901234567890|123456789012345|1|"},
      {"123456789012345678901;1234567890123456;1", 1, "12345678901234567890|123456789012345|1|"},
      {"a;b", 0, nullptr},
      {"", 0, nullptr},
  };
  for (auto const& c : cases) {
    at_.Write("root/upscli.cfg", std::string("[CLILIST]\n0 = ") + c.entry);
    EXPECT_EQ(Get(), c.result) << c.entry;
    if (c.server != nullptr) {
      EXPECT_EQ(Show(cfg_).substr(0, strlen(c.server)), c.server);
    }
  }
}

TEST_F(Client, MalformedEntryFillsTheUsersFieldsAlone) {
  at_.Write("home/.zelvane", "[ZELVANE]\nLANGID = 3\nCOLORSCH = 4\n");
  at_.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b\n[UPSCLI]\nLIBNAME = lib\n");
  ASSERT_EQ(Get(), 0);
  ClientConfig expected;
  memset(&expected, 'x', sizeof expected);
  expected.langId = 3;
  expected.colorScheme = 4;
  EXPECT_EQ(memcmp(&cfg_, &expected, sizeof cfg_), 0);
}

TEST_F(Client, ModuleNames) {
  struct {
    char const* value;
    char const* name;
  } const cases[] = {{"UpsCli", "upscli"},
                     {"", ""},
                     {"A LIB-9_\xC9", "a lib-9_\xC9"},
                     {"LIB45678901234567890", "lib45678901234567890"},
                     {"LIB456789012345678901", "lib45678901234567890"}};
  for (auto const& c : cases) {
    at_.Write("root/upscli.cfg", std::string("[UPSCLI]\nLIBNAME = ") + c.value);
    ASSERT_EQ(Get(), 1);
    EXPECT_STREQ(cfg_.libName, c.name) << c.value;
  }
}

TEST_F(Client, ArraysWithoutNul) {
  memset(&cfg_, 'z', sizeof cfg_);
  cfg_.serverPort = cfg_.langId = cfg_.colorScheme = 0;
  ASSERT_EQ(SetClientConfig(&cfg_), 1);
  EXPECT_EQ(at_.Read("root/upscli.cfg"), "[CLILIST]\n0 = " + std::string(21, 'z') + ";" + std::string(16, 'z') +
                                             ";0\n[UPSCLI]\nLIBNAME = " + std::string(21, 'z'));
}

// ---- Failures: the user's file, the entry and the module are saved one after the other ----

TEST_F(Client, LineFeeds) {
  strcpy(cfg_.libName, "a\nb");
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 0\nCOLORSCH = 0");
  EXPECT_EQ(at_.Read("root/upscli.cfg"), "[CLILIST]\n0 = localhost;127.0.0.1;4375");
  for (char* const field : {cfg_.serverName, cfg_.serverAddress}) {
    GetClientDefConfig(&cfg_);
    at_.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1");
    strcpy(field, "a\nb");
    EXPECT_EQ(SetClientConfig(&cfg_), 0);
    EXPECT_EQ(at_.Read("root/upscli.cfg"), "[CLILIST]\n0 = a;b;1");
  }
}

TEST_F(Client, FailedSaves) {
  int const open = test::OpenDescriptors();
  mkdir(at_.Home(".zelvane").c_str(), 0755);
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_FALSE(at_.Exists("root/upscli.cfg"));
  setenv("HOME", at_.Path("missing").c_str(), 1);
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_FALSE(at_.Exists("root/upscli.cfg"));
  setenv("HOME", at_.Path("home").c_str(), 1);
  rmdir(at_.Home(".zelvane").c_str());

  mkdir(at_.Root("upscli.cfg").c_str(), 0755);
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 0\nCOLORSCH = 0");
  at_.Write("zelvane.conf", "[ZELVANE]\nPATH = " + at_.Path("missing"));
  cfg_.langId = 1;
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 1\nCOLORSCH = 0");
  EXPECT_FALSE(at_.Exists("missing"));
  EXPECT_EQ(test::OpenDescriptors(), open);
}

TEST_F(Client, UserFileWithoutHome) {
  std::string const old = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(at_.Path().c_str()), 0);
  unsetenv("HOME");
  EXPECT_EQ(SetClientConfig(&cfg_), 1);
  EXPECT_EQ(at_.Read("~.zelvane"), "[ZELVANE]\nLANGID = 0\nCOLORSCH = 0");
  ASSERT_EQ(chdir(old.c_str()), 0);
}

}  // namespace
