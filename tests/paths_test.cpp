// The installation root, and the symbolic names of files.
#include "zelvane/config/paths.h"

#include <gtest/gtest.h>

#include <tuple>

#include "support/settings.h"

namespace {

using Row = std::tuple<char const*, std::string>;

TEST(ZelvanePath, ReadAnewFromTheSettingsFile) {
  std::string const own = test::ProgramFolder();
  test::Scratch scratch;
  test::SetSettingsFile(scratch.Path("zelvane.conf"));
  int const open = test::OpenDescriptors();
  for (auto const& [text, root] :
       {Row("[ZELVANE]\nPATH = /opt/x\n", "/opt/x/"),
        Row("[zelvane]\r\n\tpath =  /opt/with blank/  \r\n", "/opt/with blank/"),
        Row("[ZELVANE]\nPATH = /first\nPATH = /second\n", "/first/"), Row("[ZELVANE]\nPATH = relative", "relative/"),
        Row("[ZELVANE]\nPATH = /\n", "/"), Row("[ZELVANE]\nPATH = /opt/x\nx\n", "/opt/x/"),
        Row("[ZELVANE]\nx\nPATH = /opt/x\n", own),  // the load stops at the bad line
        Row("[ZELVANE]\nPATH =\n", own), Row("PATH = /opt/x\n[OTHER]\nPATH = /opt/y\n", own), Row("", own)}) {
    scratch.Write("zelvane.conf", text);
    EXPECT_EQ(GetZelvanePath(), root) << text;
    EXPECT_EQ(scratch.Read("zelvane.conf"), text);
  }
  for (char const* missing : {"missing", "no/folder", ""}) {
    test::SetSettingsFile(scratch.Path(missing));
    EXPECT_EQ(GetZelvanePath(), own) << missing;
  }
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"zelvane.conf"});
  EXPECT_EQ(test::OpenDescriptors(), open);
}

TEST(MacroFileName, NamesUnderTheRootAndTheWorkingFolder) {
  test::Installation const at;
  for (auto const& [name, file] : {Row("//LOGDOCSAVE//", "logsave.rgt"), Row("//LOGDOCCLOSE//", "logclose.rgt"),
                                   Row("//UPSCLICFG//", "upscli.cfg"), Row("//USBHIDCFG//", "usbhid.cfg"),
                                   Row("//BASEDIR//data.cfg", "data.cfg"), Row("//BASEDIR//", "")})
    EXPECT_EQ(ParseMacroFileName(name, "2"), at.Root() + file) << name;
  for (auto const& [name, file] :
       {Row("//LOGEVTFILE//", "logevt.rgt"), Row("//LOGHISTHORA//", "loghora.rgt"), Row("//LOGHISTDIA//", "logdia.rgt"),
        Row("//LOGHISTMES//", "logmes.rgt"), Row("//UPSPOWEROFFFILE//", "poweroff.rgt"),
        Row("//UPSPOWERONFILE//", "poweron.rgt"), Row("//UPSSRVCFG//", "upssrv.cfg"),
        Row("//UPSCONFIGDIR//x.cfg", "x.cfg"), Row("//UPSCONFIGDIR//", "")}) {
    EXPECT_EQ(ParseMacroFileName(name, "2"), at.Root("2/") + file) << name;
    EXPECT_EQ(ParseMacroFileName(std::string(name), std::string("/var/log/")), "/var/log/" + file) << name;
  }
  for (char const* name :
       {"", "plain.cfg", "/full/path.cfg", "//UNKNOWN//", "//logevtfile//", "//LOGEVTFILE// ", " //LOGEVTFILE//",
        "//LOGEVTFILE//x", "//LOGEVTFILE/", "//basedir//x", "//BASEDIR/", " //BASEDIR//x", "x//UPSCONFIGDIR//y"})
    EXPECT_EQ(ParseMacroFileName(name, "2"), name);
  EXPECT_EQ(ParseMacroFileName(nullptr, "2") + ParseMacroFileName("plain.cfg", nullptr), "");
}

TEST(MacroFileName, WorkingFolders) {
  test::Installation const at;
  // A number is a folder under the root. What has come out is looked at again, for each prefix once, the root first.
  for (auto const& [folder, path] :
       {Row("0", at.Root("0/")), Row("+7", at.Root("+7/")), Row("007", at.Root("007/")),
        Row("2147483647", at.Root("2147483647/")), Row("-0", at.Root("-0/")), Row("2147483648", "2147483648"),
        Row("-1", "-1"), Row("", ""), Row("1 ", "1 "), Row("0x1", "0x1"), Row("/var/log", "/var/log"),
        Row("//BASEDIR//", at.Root()), Row("//UPSCONFIGDIR//a/", "//UPSCONFIGDIR//a/a/")})
    EXPECT_EQ(ParseMacroFileName("//UPSSRVCFG//", folder), path + "upssrv.cfg") << folder;
  EXPECT_EQ(ParseMacroFileName("//UPSCONFIGDIR//x", "//BASEDIR//"), "//BASEDIR//x");
  EXPECT_EQ(ParseMacroFileName("//BASEDIR////BASEDIR//x", "2"), at.Root("//BASEDIR//x"));
  at.Write("zelvane.conf", "[ZELVANE]\nPATH = //UPSCONFIGDIR//r\n");
  EXPECT_EQ(ParseMacroFileName("//BASEDIR//x", "/w/"), "/w/r/x");
}

}  // namespace
