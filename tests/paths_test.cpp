// The installation root, and the symbolic names of files.
#include "zelvane/config/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <utility>

#include "support/each.h"
#include "support/settings.h"
#include "support/table.h"
#include "zelvane/zelvane.h"

namespace {

TEST(ZelvanePath, ReadAnewFromTheSettingsFile) {
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
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"zelvane.conf"});
}

// Every function that uses the root follows, until null or "" brings the rule back.
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

// A settings file that cannot be opened just now names a root all the same, so no function goes on with another one.
TEST(ZelvanePath, NoDescriptorForTheSettingsFile) {
  test::Installation const at;
  at.Write("root/zellang.cfg", "[1]\n1 = a\n");
  for (char const* file : {"upscli.cfg", "upstype.cfg", "srvlist.cfg"})
    at.Write("root/" + std::string(file), "[CLILIST]\n1 = a;b;1\n[UPSTYPE]\n1 = a;b;c;d;3\n[SRVLIST]\n1 = 001\n");
  mkdir(at.Root("001").c_str(), 0755);
  ShutSrvConfig shut;
  ClientConfig client;
  GetShutSrvDefConfig(&shut);
  GetClientDefConfig(&client);
  char name[40];
  unsigned short mask = 0;
  std::pair<char const*, std::function<bool()>> const calls[] = {
      {"GetShutSrvConfig", [&] { return GetShutSrvConfig(nullptr, &shut) == 1; }},
      {"SetShutSrvConfig", [&] { return SetShutSrvConfig("", &shut) == 1; }},
      {"GetClientConfig", [&] { return GetClientConfig(&client) == 1; }},
      {"SetClientConfig", [&] { return SetClientConfig(&client) == 1; }},
      {"OpenServerList", [] { return CloseServerList(OpenServerList()) == 1; }},
      {"OpenUPSTypeList", [] { return CloseUPSTypeList(OpenUPSTypeList("")) == 1; }},
      {"GetUPSModelName", [&] { return GetUPSModelName(3, 1, name, sizeof name) == 1; }},
      {"GetUpsListCount", [] { return GetUpsListCount() == 1; }},
      {"GetUpsListItem", [&] { return GetUpsListItem(0, name) == 1; }},
      {"AddUpsListItem", [] { return AddUpsListItem("1") == 1; }},
      {"RemUpsListItem", [] { return RemUpsListItem("9") == 1; }},
      {"GetZelvaneInstalledModules", [&] { return GetZelvaneInstalledModules(&mask) == 1; }},
      {"OpenBrwsList", [] { return CloseBrwsList(OpenBrwsList(nullptr)) == 1; }},
      {"OpenLang",
       [] {
         void* const lang = OpenLang(1);
         CloseLang(lang);
         return lang != nullptr;
       }},
      {"ParseMacroFileName", [] { return !ParseMacroFileName("//UPSCLICFG//", "1").empty(); }},
  };
  std::string const settings = at.Path("zelvane.conf");
  for (auto const& [call, succeeds] : calls) {
    EXPECT_TRUE(succeeds()) << call;
    auto const before = at.List();
    test::g_refused = settings.c_str();
    EXPECT_FALSE(succeeds()) << call;
    EXPECT_EQ(test::g_refused, nullptr) << call << " does not read the settings";
    EXPECT_EQ(at.List(), before) << call;
  }
  test::g_refused = settings.c_str();
  EXPECT_EQ(ParseMacroFileName("plain.cfg", "1"), "plain.cfg") << "the root is not asked for";
  EXPECT_EQ(GetZelvanePath(), test::ProgramFolder()) << "unreadable counts as missing";
}

// The same for the files that hold the settings.
TEST(ZelvanePath, NoDescriptorForAnotherFile) {
  test::Installation const at;
  ShutSrvConfig shut;
  ClientConfig client;
  char name[40];
  for (std::string const& file : {at.Root("upscli.cfg"), at.Home(".zelvane")}) {
    test::g_refused = file.c_str();
    EXPECT_EQ(GetShutSrvConfig(nullptr, &shut), 0) << file;
    test::g_refused = file.c_str();
    EXPECT_EQ(GetClientConfig(&client), 0) << file;
  }
  at.Write("root/upstype.cfg", "[UPSTYPE]\n1 = a;b;c;d;3\n");
  std::string const model = at.Root("default/upscfg03.cfg");
  test::g_refused = model.c_str();
  EXPECT_EQ(GetUPSModelName(3, 1, name, sizeof name), 0) << "the table's name may be another one";
  EXPECT_STREQ(name, "AUTO");
}

}  // namespace
