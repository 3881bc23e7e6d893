#include "zelvane/api/versioninfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "support/settings.h"

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
      {"VERSION = " + std::string(300, 'v') + "\n", std::string(9, 'v'), "Zelvane " + std::string(247, 'v')},
  };
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
  std::string const own = std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/";
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
  struct {
    char const* file;
    unsigned int modules;
  } const cases[] = {
      {"zelsrv", 1},    {"shutsrv", 2},   {"zelvane", 4},   {"zelcli00", 4},  {"zelcli09", 4}, {"zelcli15", 4},
      {"czelcli00", 4}, {"czelcli15", 4}, {"zelconfig", 8}, {"zelcfg00", 8},  {"zelcfg15", 8}, {"czelcfg00", 8},
      {"czelcfg15", 8}, {"zelbrws", 16},  {"zelcli16", 0},  {"czelcli16", 0}, {"zelcfg16", 0}, {"czelcfg16", 0},
      {"zelcli", 0},    {"zelcli1", 0},   {"zelcli001", 0}, {"zelsrv00", 0},  {"ZELSRV", 0},   {"cshutsrv", 0},
  };
  Settings("");
  EXPECT_EQ(Modules(), 0u);
  for (auto const& c : cases) {
    root_.Write("root/" + std::string(c.file), "");
    EXPECT_EQ(Modules(), c.modules) << c.file;
    std::filesystem::remove(root_.Root(c.file));
  }
  for (char const* file : {"zelsrv", "shutsrv", "czelcli07", "zelcfg03", "zelbrws"})
    root_.Write("root/" + std::string(file), "");
  EXPECT_EQ(Modules(), 31u);
}

TEST_F(Version, TheSettingsOverrideTheSearch) {
  struct {
    char const* value;
    bool without;  // the flag when the file is missing
    bool with;     // and when it is there
  } const cases[] = {
      {"0", false, false},        {"1", true, true},           {"5", true, true},     {"256", true, true},
      {"2147483647", true, true}, {"-1", false, true},         {"-256", false, true}, {"", false, true},
      {"yes", false, true},       {"4294967296", false, true}, {"+0", false, false},
  };
  struct {
    char const* key;
    char const* file;
    unsigned int bit;
  } const modules[] = {{"ZELSRV", "zelsrv", 1},
                       {"SHUTSRV", "shutsrv", 2},
                       {"ZELCLI", "czelcli15", 4},
                       {"ZELCFG", "zelcfg00", 8},
                       {"ZELBRWS", "zelbrws", 16}};
  for (auto const& module : modules) {
    for (auto const& c : cases) {
      Settings(module.key + std::string(" = ") + c.value + "\n");
      EXPECT_EQ(Modules(), c.without ? module.bit : 0) << module.key << "=" << c.value;
      root_.Write("root/" + std::string(module.file), "");
      EXPECT_EQ(Modules(), c.with ? module.bit : 0) << module.key << "=" << c.value << " with its file";
      std::filesystem::remove(root_.Root(module.file));
    }
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
