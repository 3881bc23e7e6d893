// The installation root, and the symbolic names of files.
#include "zelvane/config/paths.h"

#include "support/settings.h"
#include "support/test.h"
#include "zelvane/zelvane.h"

namespace {

TEST(ZelvanePath, ReadAgainFromTheSettingsFile) {
  std::string const own = test::ProgramFolder();
  test::Scratch scratch;
  test::SetSettingsFile(scratch.Path("zelvane.conf"));
  for (test::Case const& c : test::Table("config/paths.txt", "roots")) {
    scratch.Write("zelvane.conf", c[0]);
    EXPECT_EQ(GetZelvanePath(), c[1] == "-" ? own : c[1]) << c;
    EXPECT_EQ(scratch.Read("zelvane.conf"), c[0]);
  }
  for (char const* missing : {"missing", "no/folder", ""}) {
    test::SetSettingsFile(scratch.Path(missing));
    EXPECT_EQ(GetZelvanePath(), own) << missing;
  }
  EXPECT_EQ(scratch.List(), test::Names{"zelvane.conf"});
}

// Every function that uses the root uses the new one, until null or "" restores the rule.
TEST(ZelvanePath, SetByAProgramForItself) {
  test::Installation const at;
  test::Scratch const other;
  other.Write("srvlist.cfg", "[SRVLIST]\n3 = 003\n");
  std::string const path = other.Path("");
  for (std::string const& given : {path, path.substr(0, path.size() - 1)}) {
    EXPECT_EQ(SetZelvanePath(given.c_str()), 1);
    EXPECT_EQ(GetZelvanePath(), path) << given;
    EXPECT_EQ(GetUpsListCount(), 1) << given;
    EXPECT_EQ(ParseMacroFileName("//UPSCLICFG//", ""), path + "upscli.cfg") << given;
  }
  for (char const* none : {static_cast<char const*>(nullptr), ""}) {
    SetZelvanePath("none");
    EXPECT_EQ(GetZelvanePath(), "none/");
    EXPECT_EQ(SetZelvanePath(none), 1);
    EXPECT_EQ(GetZelvanePath(), at.Root()) << (none == nullptr ? "null" : none);
  }
}

TEST(MacroFileName, NamesAndWorkingFolders) {
  test::Installation const at;
  for (test::Case const& c : test::Table("config/paths.txt", "names")) {
    std::string const file = c[2][0] == '$' ? at.Root(c[2].substr(1)) : c[2];
    EXPECT_EQ(ParseMacroFileName(c[0], c[1]), file) << c;
    EXPECT_EQ(ParseMacroFileName(c[0].c_str(), c[1].c_str()), file) << c;
  }
  EXPECT_EACH((ParseMacroFileName(nullptr, "2"), ParseMacroFileName("plain.cfg", nullptr)), "");
  at.Write("zelvane.conf", "[ZELVANE]\nPATH = //UPSCONFIGDIR//r\n");
  EXPECT_EQ(ParseMacroFileName("//BASEDIR//x", "/w/"), "/w/r/x");
}

// The fault injection covers the other failures.
TEST(ZelvanePath, NoDescriptorForTheSettingsFile) {
  test::Installation const at;
  std::string const settings = at.Path("zelvane.conf");
  test::g_refused = settings.c_str();
  EXPECT_EQ(ParseMacroFileName("//UPSCLICFG//", "1"), "");
  test::g_refused = settings.c_str();
  EXPECT_EQ(ParseMacroFileName("plain.cfg", "1"), "plain.cfg") << "the root is not asked for";
  EXPECT_EQ(GetZelvanePath(), test::ProgramFolder()) << "unreadable counts as missing";
}

}  // namespace
