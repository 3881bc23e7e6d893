#include "zelvane/api/versioninfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/settings.h"

namespace fs = std::filesystem;

namespace {

class Version : public testing::Test {
 protected:
  // The settings file with the root of the test and `lines` behind it.
  void Settings(std::string const& lines) {
    root_.Write("zelvane.conf", "[ZELVANE]\nPATH = " + root_.Path("root") + "\n" + lines);
  }
  unsigned int Modules() {
    VersionInfo info = {};
    EXPECT_EQ(GetZelvaneVersionInfo(&info), 1);
    return info.modules;
  }

  test::Installation root_;
};

TEST_F(Version, Texts) {
  struct {
    std::string lines;
    std::string version;
    std::string product;
  } const cases[] = {
      {"", "4.0+", "Zelvane 4.0+"},
      {"VERSION = 5\n", "5", "Zelvane 5"},
      {" version=\t5.1 beta \r\n", "5.1 beta", "Zelvane 5.1 beta"},
      {"VERSION =\n", "", "Zelvane "},
      {"PRODUCT = Nobreak \xE7\n", "4.0+", "Nobreak \xE7"},
      {"PRODUCT =\n", "4.0+", ""},
      {"VERSION = 123456789\n", "123456789", "Zelvane 123456789"},
      {"VERSION = 1234567890\n", "123456789", "Zelvane 1234567890"},  // the default takes the whole version
      {"PRODUCT = " + std::string(255, 'p') + "\n", "4.0+", std::string(255, 'p')},
      {"PRODUCT = " + std::string(256, 'p') + "\n", "4.0+", std::string(255, 'p')},
      {"VERSION = " + std::string(300, 'v') + "\n", std::string(9, 'v'), "Zelvane " + std::string(247, 'v')}};
  for (auto const& c : cases) {
    Settings(c.lines);
    VersionInfo info;
    std::memset(&info, 'x', sizeof info);
    ASSERT_EQ(GetZelvaneVersionInfo(&info), 1) << c.lines;
    EXPECT_EQ(info.installPath, root_.Root()) << c.lines;
    EXPECT_EQ(info.version, c.version) << c.lines;
    EXPECT_EQ(info.product, c.product) << c.lines;
    EXPECT_EQ(info.installPath[259] | info.version[9] | info.product[255], 0) << c.lines;
  }
}

TEST_F(Version, WithoutSettingsTheProgramsFolderIsTheRoot) {
  std::string const own = fs::read_symlink("/proc/self/exe").parent_path().string() + "/";
  test::SetSettingsFile(root_.Path("missing.conf"));
  VersionInfo info = {};
  ASSERT_EQ(GetZelvaneVersionInfo(&info), 1);
  EXPECT_EQ(info.installPath, own.substr(0, 259));
  EXPECT_STREQ(info.product, "Zelvane 4.0+");
  EXPECT_FALSE(root_.Exists("missing.conf"));
}

TEST_F(Version, ARootLongerThanItsFieldIsSearchedWhole) {
  std::string const folder = std::string(200, 'a') + "/" + std::string(200, 'b');
  root_.Write(folder + "/zelsrv", "");
  root_.Write("zelvane.conf", "[ZELVANE]\nPATH = " + root_.Path(folder) + "\n");
  VersionInfo info = {};
  ASSERT_EQ(GetZelvaneVersionInfo(&info), 1);
  EXPECT_EQ(info.installPath, root_.Path(folder).substr(0, 259));
  EXPECT_EQ(info.modules, 1);
}

TEST_F(Version, ModulesAreFoundByTheirFiles) {
  std::vector<char const*> const files[] = {{"zelcli16", "czelcli16", "zelcfg16", "czelcfg16", "zelcli", "zelcli1",
                                             "zelcli001", "zelsrv00", "ZELSRV", "cshutsrv"},
                                            {"zelsrv"},
                                            {"shutsrv"},
                                            {"zelvane", "zelcli00", "zelcli09", "zelcli15", "czelcli00", "czelcli15"},
                                            {"zelconfig", "zelcfg00", "zelcfg15", "czelcfg00", "czelcfg15"},
                                            {"zelbrws"}};
  Settings("");
  for (unsigned int i = 0; i < std::size(files); i++) {
    for (char const* file : files[i]) {
      root_.Write("root/" + std::string(file), "");
      EXPECT_EQ(Modules(), i == 0 ? 0u : 1u << (i - 1)) << file;
      fs::remove(root_.Root(file));
    }
  }
  for (char const* file : {"zelsrv", "shutsrv", "czelcli07", "zelcfg03", "zelbrws"})
    root_.Write("root/" + std::string(file), "");
  EXPECT_EQ(Modules(), 31u);
}

TEST_F(Version, TheSettingsOverrideTheSearch) {
  char const* const modules[][2] = {{"ZELSRV", "zelsrv"},
                                    {"SHUTSRV", "shutsrv"},
                                    {"ZELCLI", "czelcli15"},
                                    {"ZELCFG", "zelcfg00"},
                                    {"ZELBRWS", "zelbrws"}};
  unsigned int bit = 1;
  for (auto const& [key, file] : modules) {
    auto const flags = [&, k = key](char const* value) {
      Settings(k + std::string(" = ") + value + "\n");
      return Modules();
    };
    for (bool const there : {false, true}) {
      if (there) root_.Write("root/" + std::string(file), "");
      for (char const* no : {"0", "+0", "-0"}) EXPECT_EQ(flags(no), 0u) << key << no << there;
      for (char const* yes : {"1", "5", "256", "65536", "2147483647"})
        EXPECT_EQ(flags(yes), bit) << key << yes << there;
      for (char const* search : {"-1", "-256", "", "yes", "4294967296"})
        EXPECT_EQ(flags(search), there ? bit : 0u) << key << search << there;
    }
    fs::remove(root_.Root(file));
    bit *= 2;
  }
}

TEST_F(Version, BitsOfTheCallerStay) {
  Settings("ZELSRV = 1\nZELBRWS = 1\n");
  for (unsigned int before : {0u, 0x80u, 0xFFFFu, 0xFFE0u, 0x1Fu}) {
    unsigned int const expected = (before & 0xFFE0u) | 0x11u;
    VersionInfo info = {};
    info.modules = static_cast<unsigned short>(before);
    EXPECT_EQ(GetZelvaneVersionInfo(&info), 1);
    EXPECT_EQ(info.modules, expected) << before;
    unsigned short mask = static_cast<unsigned short>(before);
    EXPECT_EQ(GetZelvaneInstalledModules(&mask), 1);
    EXPECT_EQ(mask, expected) << before;
  }
}

TEST_F(Version, NullAndNothingWritten) {
  std::string const settings = " \r\n[zelvane]\r\n Path=" + root_.Path("root") + " \r\n;x";
  root_.Write("zelvane.conf", settings);
  EXPECT_EQ(GetZelvaneVersionInfo(nullptr), 0);
  EXPECT_EQ(GetZelvaneInstalledModules(nullptr), 0);
  int const open = test::OpenDescriptors();
  EXPECT_EQ(Modules(), 0u);
  EXPECT_EQ(test::OpenDescriptors(), open);
  EXPECT_EQ(root_.Read("zelvane.conf"), settings);
  EXPECT_EQ(root_.List(), (std::vector<std::string>{"home/", "root/", "zelvane.conf"}));
}

}  // namespace
