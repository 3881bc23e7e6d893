#include "zelvane/api/clientconfig.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

class Client : public testing::Test {
 protected:
  Client() { GetClientDefConfig(&cfg_); }

  std::string Show() const {
    return test::Server(cfg_) + " " + cfg_.libName + " " + test::Words(cfg_.langId, cfg_.colorScheme);
  }
  std::string Get() {
    memset(&cfg_, 'x', sizeof cfg_);
    return GetClientConfig(&cfg_) == 1 ? Show() : "refused";
  }
  std::string Get(std::string const& text) { return at_.Write("root/upscli.cfg", text), Get(); }
  void SetServer(std::string const& name, std::string const& address, int32_t port) {
    test::Put(cfg_.serverName, name);
    test::Put(cfg_.serverAddress, address);
    cfg_.serverPort = port;
  }
  std::string File() const { return at_.Read("root/upscli.cfg"); }
  test::Installation at_;
  ClientConfig cfg_;
};

TEST_F(Client, Defaults) {
  memset(&cfg_, 'x', sizeof cfg_);
  ASSERT_EQ(GetClientDefConfig(&cfg_), 1);
  std::string const defaults = test::Bytes(cfg_);
  SetServer("localhost", "127.0.0.1", 4375);
  test::Put(cfg_.libName, "upscli");
  cfg_.langId = cfg_.colorScheme = 0;
  EXPECT_EQ(defaults, test::Bytes(cfg_));
  auto const before = at_.List();
  EXPECT_EQ(Get(), "localhost|127.0.0.1|4375 upscli 0 0 ");
  EXPECT_EQ(at_.List(), before);
}

TEST_F(Client, NewFiles) {
  memset(&cfg_, 'N', sizeof cfg_);  // arrays without NUL end at their width
  cfg_.langId = 2;
  cfg_.colorScheme = cfg_.serverPort = -1;
  ASSERT_EQ(SetClientConfig(&cfg_), 1);
  std::string const n(21, 'N'), a(16, 'N');
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 2\nCOLORSCH = 4294967295");
  EXPECT_EQ(File(), "[CLILIST]\n0 = " + n + ";" + a + ";4294967295\n[UPSCLI]\nLIBNAME = " + n);
  // 4294967295 does not fit a signed 32-bit number.
  EXPECT_EQ(Get(), n.substr(1) + "|" + a.substr(1) + "|4375 " + std::string(20, 'n') + " 2 0 ");
}

TEST_F(Client, FirstEntryAndModule) {
  at_.Write("home/.zelvane", "# mine\r\n[Zelvane]\r\n  Langid=1 ; pt\r\nNote = \xE9\r\n");
  for (test::Case const& c : test::Cases("client.txt", "lists")) {
    EXPECT_EQ(Get(c[0]), c[1] + " 0 0 ") << c;
    SetServer("n", "a", 1);
    ASSERT_EQ(SetClientConfig(&cfg_), 1) << c;
    EXPECT_EQ(File(), c[2]) << c;
  }
  EXPECT_EQ(at_.Read("home/.zelvane"), "# mine\r\n[Zelvane]\r\nLangid = 0\nNote = \xE9\r\nCOLORSCH = 0\n");
}

TEST_F(Client, HowAnEntryIsRead) {
  at_.Write("home/.zelvane", "[ZELVANE]\nLANGID = 3\nCOLORSCH = 4\n");
  for (test::Case const& c : test::Cases("servers.txt", "entries")) {
    std::string const record = Get("[CLILIST]\n0 = " + c[0] + "\n[UPSCLI]\nLIBNAME = lib\n");
    EXPECT_EQ(record, c[1] == "refused" ? c[1] : c[1] + " lib 3 4 ") << c;
    ClientConfig expected;  // of a rejected entry only the user's fields are filled
    memset(&expected, 'x', sizeof expected);
    expected.langId = 3;
    expected.colorScheme = 4;
    EXPECT_EQ(test::Bytes(cfg_) == test::Bytes(expected), c[1] == "refused") << c;
  }
}

// The user's file, the entry and the module are saved one after another.
TEST_F(Client, FailedSaves) {
  auto const before = at_.List();
  setenv("HOME", at_.Path("missing").c_str(), 1);
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  setenv("HOME", at_.Path("home").c_str(), 1);
  EXPECT_EQ(at_.List(), before);
  fs::create_directory(at_.Root("upscli.cfg"));
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_EQ(at_.Read("home/.zelvane"), "[ZELVANE]\nLANGID = 0\nCOLORSCH = 0");
  fs::remove(at_.Root("upscli.cfg"));
  test::Put(cfg_.libName, "a\nb");
  EXPECT_EQ(SetClientConfig(&cfg_), 0);
  EXPECT_EQ(File(), "[CLILIST]\n0 = localhost;127.0.0.1;4375");
  for (char const* const name : {"a\nb", "a"}) {
    SetServer(name, "b\nc", 1);
    EXPECT_EQ(SetClientConfig(&cfg_), 0) << name;
  }
  EXPECT_EQ(File(), "[CLILIST]\n0 = localhost;127.0.0.1;4375");
}

}  // namespace
