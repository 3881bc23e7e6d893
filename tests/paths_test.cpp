#include "zelvane/config/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/settings.h"

namespace {

std::string ProgramFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/"; }

// ---- The root ----

TEST(ZelvanePath, SettingsFile) {
  struct {
    char const* text;
    char const* root;  // null: the program's own folder
  } const cases[] = {
      {"[ZELVANE]\nPATH = /opt/x\n", "/opt/x/"},
      {"[ZELVANE]\nPATH=/opt/x/", "/opt/x/"},
      {"[zelvane]\r\n\tpath =  /opt/with blank  \r\n", "/opt/with blank/"},
      {"[ZELVANE]\nPATH = /first\nPATH = /second\n", "/first/"},
      {"[ZELVANE]\nPATH = relative\n", "relative/"},
      {"[ZELVANE]\nPATH = /\n", "/"},
      {"[ZELVANE]\nPATH = /opt/x\nx\n", "/opt/x/"},
      {"[ZELVANE]\nx\nPATH = /opt/x\n", nullptr},  // the load stops at the bad line
      {"[ZELVANE]\nPATH =\n", nullptr},
      {"[ZELVANE]\n", nullptr},
      {"PATH = /opt/x\n[OTHER]\nPATH = /opt/y\n", nullptr},
      {"", nullptr},
  };
  test::Scratch scratch;
  test::SetSettingsFile(scratch.Path("zelvane.conf"));
  for (auto const& c : cases) {
    scratch.Write("zelvane.conf", c.text);
    EXPECT_EQ(GetZelvanePath(), c.root == nullptr ? ProgramFolder() : c.root) << c.text;
    EXPECT_EQ(scratch.Read("zelvane.conf"), c.text);
  }
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"zelvane.conf"});
}

TEST(ZelvanePath, WithoutSettingsFile) {
  test::Scratch scratch;
  for (std::string const& path : {scratch.Path("missing"), scratch.Path("no/folder"), scratch.Path()}) {
    test::SetSettingsFile(path);
    EXPECT_EQ(GetZelvanePath(), ProgramFolder()) << path;
  }
  EXPECT_TRUE(scratch.List().empty());
}

TEST(ZelvanePath, IsReadAnewAndLeavesNothingOpen) {
  test::Installation installation;
  EXPECT_EQ(GetZelvanePath(), installation.Root());
  int const open = test::OpenDescriptors();
  installation.Write("zelvane.conf", "[ZELVANE]\nPATH = /moved\n");
  EXPECT_EQ(GetZelvanePath(), "/moved/");
  EXPECT_EQ(test::OpenDescriptors(), open);
}

// ---- Symbolic names ----

class MacroFileName : public testing::Test {
 protected:
  MacroFileName() {
    scratch_.Write("zelvane.conf", "[ZELVANE]\nPATH = /opt/x\n");
    test::SetSettingsFile(scratch_.Path("zelvane.conf"));
  }

  test::Scratch scratch_;
};

TEST_F(MacroFileName, EveryName) {
  struct {
    char const* name;
    char const* inUnit2;
    char const* inFolder;
  } const cases[] = {
      {"//LOGEVTFILE//", "/opt/x/2/logevt.rgt", "/var/log/logevt.rgt"},
      {"//LOGHISTHORA//", "/opt/x/2/loghora.rgt", "/var/log/loghora.rgt"},
      {"//LOGHISTDIA//", "/opt/x/2/logdia.rgt", "/var/log/logdia.rgt"},
      {"//LOGHISTMES//", "/opt/x/2/logmes.rgt", "/var/log/logmes.rgt"},
      {"//UPSPOWEROFFFILE//", "/opt/x/2/poweroff.rgt", "/var/log/poweroff.rgt"},
      {"//UPSPOWERONFILE//", "/opt/x/2/poweron.rgt", "/var/log/poweron.rgt"},
      {"//LOGDOCSAVE//", "/opt/x/logsave.rgt", "/opt/x/logsave.rgt"},
      {"//LOGDOCCLOSE//", "/opt/x/logclose.rgt", "/opt/x/logclose.rgt"},
      {"//UPSSRVCFG//", "/opt/x/2/upssrv.cfg", "/var/log/upssrv.cfg"},
      {"//UPSCLICFG//", "/opt/x/upscli.cfg", "/opt/x/upscli.cfg"},
      {"//USBHIDCFG//", "/opt/x/usbhid.cfg", "/opt/x/usbhid.cfg"},
      {"//BASEDIR//data.cfg", "/opt/x/data.cfg", "/opt/x/data.cfg"},
      {"//BASEDIR//", "/opt/x/", "/opt/x/"},
      {"//UPSCONFIGDIR//x.cfg", "/opt/x/2/x.cfg", "/var/log/x.cfg"},
      {"//UPSCONFIGDIR//", "/opt/x/2/", "/var/log/"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(ParseMacroFileName(c.name, "2"), c.inUnit2) << c.name;
    EXPECT_EQ(ParseMacroFileName(c.name, "/var/log/"), c.inFolder) << c.name;
    EXPECT_EQ(ParseMacroFileName(std::string(c.name), std::string("/var/log/")), c.inFolder) << c.name;
  }
}

TEST_F(MacroFileName, OtherNamesComeBack) {
  for (char const* name :
       {"", "plain.cfg", "/full/path.cfg", "//UNKNOWN//", "//logevtfile//", "//LOGEVTFILE// ", " //LOGEVTFILE//",
        "//LOGEVTFILE//x", "//LOGEVTFILE/", "//basedir//x", "//BASEDIR/", " //BASEDIR//x", "x//UPSCONFIGDIR//y"})
    EXPECT_EQ(ParseMacroFileName(name, "2"), name) << '"' << name << '"';
}

TEST_F(MacroFileName, WorkingFolder) {
  struct {
    char const* directory;
    char const* path;
  } const cases[] = {
      {"0", "/opt/x/0/upssrv.cfg"},
      {"+7", "/opt/x/+7/upssrv.cfg"},
      {"007", "/opt/x/007/upssrv.cfg"},
      {"2147483647", "/opt/x/2147483647/upssrv.cfg"},
      {"2147483648", "2147483648upssrv.cfg"},
      {"-1", "-1upssrv.cfg"},
      {"-0", "/opt/x/-0/upssrv.cfg"},
      {"", "upssrv.cfg"},
      {"1 ", "1 upssrv.cfg"},
      {"0x1", "0x1upssrv.cfg"},
      {"/var/log", "/var/logupssrv.cfg"},
      // What has come out so far is looked at again.
      {"//BASEDIR//", "/opt/x/upssrv.cfg"},
      {"//UPSCONFIGDIR//a/", "//UPSCONFIGDIR//a/a/upssrv.cfg"},
  };
  for (auto const& c : cases) EXPECT_EQ(ParseMacroFileName("//UPSSRVCFG//", c.directory), c.path) << c.directory;
}

TEST_F(MacroFileName, PrefixesAreTakenInTheirOrderAndOnce) {
  // The root comes first, so a root that begins with the other prefix is expanded again; not so the other way round.
  EXPECT_EQ(ParseMacroFileName("//UPSCONFIGDIR//x", "//BASEDIR//"), "//BASEDIR//x");
  EXPECT_EQ(ParseMacroFileName("//BASEDIR////BASEDIR//x", "2"), "/opt/x///BASEDIR//x");
  scratch_.Write("zelvane.conf", "[ZELVANE]\nPATH = //UPSCONFIGDIR//r\n");
  EXPECT_EQ(ParseMacroFileName("//BASEDIR//x", "/w/"), "/w/r/x");
}

TEST_F(MacroFileName, Null) {
  char const* const null = nullptr;
  EXPECT_EQ(ParseMacroFileName(null, "2"), "");
  EXPECT_EQ(ParseMacroFileName("plain.cfg", null), "");
  EXPECT_EQ(ParseMacroFileName(null, null), "");
}

}  // namespace
