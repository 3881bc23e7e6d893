#include "zelvane/api/versioninfo.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"
#include "zelvane/version.h"

namespace {

class Version : public testing::Test {
 protected:
  // Reads settings with `root` and the lines.
  VersionInfo Get(std::string const& lines, std::string const& root = "root") {
    at_.Write("zelvane.conf", "[zelvane]\r\n Path=" + at_.Path(root) + " \r\n" + lines + "\n");
    return Get();
  }
  VersionInfo Get() {
    VersionInfo info;
    memset(&info, 'x', sizeof info);
    info.modules = 0;
    EXPECT_EQ(GetZelvaneVersionInfo(&info), 1);
    EXPECT_EQ(info.installPath[259] | info.version[9] | info.product[255], 0);
    return info;
  }

  test::Installation at_;
};

TEST_F(Version, Texts) {
  for (test::Case const& c : test::Cases("versioninfo.txt", "texts")) {
    VersionInfo const info = Get(c[0]);
    EXPECT_EACH((info.installPath, info.version, info.product, info.modules), at_.Root(), c[1], c[2], 0) << c;
  }
  for (size_t const length : {255U, 256U, 300U})
    EXPECT_EQ(Get("PRODUCT = " + std::string(length, 'p')).product, std::string(255, 'p')) << length;
  EXPECT_EQ(Get("VERSION = " + std::string(300, 'v')).product, "Zelvane " + std::string(247, 'v'));
  EXPECT_EQ(at_.List(), (test::Names{"home/", "root/", "zelvane.conf"}));
}

TEST_F(Version, WithoutSettingsTheProgramsFolderIsTheRoot) {
  test::SetSettingsFile(at_.Path("missing.conf"));
  VersionInfo const info = Get();
  EXPECT_EACH((info.installPath, info.product), test::ProgramFolder().substr(0, 259), "Zelvane 4.0+");
  EXPECT_FALSE(at_.Exists("missing.conf"));
}

TEST_F(Version, ARootLongerThanItsFieldIsSearchedWhole) {
  std::string const folder = std::string(200, 'a') + "/" + std::string(200, 'b');
  at_.Write(folder + "/zelsrv", "");
  VersionInfo const info = Get("", folder);
  EXPECT_EQ(info.installPath, at_.Path(folder).substr(0, 259));
  EXPECT_EQ(info.modules, 1);
}

TEST_F(Version, ModulesAreFoundByTheirFiles) {
  for (test::Case const& c : test::Cases("versioninfo.txt", "files")) {
    at_.Write("root/" + c[0], "");
    EXPECT_EQ(Get("").modules, c.Int(1)) << c;
    fs::remove(at_.Root(c[0]));
  }
}

TEST_F(Version, TheSettingsOverrideTheSearch) {
  for (bool const there : {false, true}) {
    for (test::Case const& key : test::Cases("versioninfo.txt", "keys")) {
      if (there) at_.Write("root/" + key[2], "");
      for (test::Case const& c : test::Cases("versioninfo.txt", "values")) {
        bool const set = c[1] == "yes" || (c[1] == "search" && there);
        EXPECT_EQ(Get(key[1] + " = " + c[0]).modules, set ? key.Int(0) : 0) << key << ' ' << c << there;
      }
      fs::remove(at_.Root(key[2]));
    }
  }
}

TEST_F(Version, BitsOfTheCallerStay) {
  Get("ZELSRV = 1\nZELBRWS = 1\n");
  for (int const before : {0, 0x80, 0xFFFF, 0xFFE0, 0x1F}) {
    VersionInfo info = {};
    unsigned short mask = info.modules = static_cast<unsigned short>(before);
    EXPECT_EACH((GetZelvaneVersionInfo(&info), GetZelvaneInstalledModules(&mask)), 1);
    EXPECT_EACH((info.modules, mask), mask, ((before & 0xFFE0) | 0x11)) << before;
  }
}

TEST(LibraryVersion, IsThatOfTheHeaders) {
  EXPECT_STREQ(ZelvaneVersion(), ZELVANE_VERSION);
  std::string const numbers = std::to_string(ZELVANE_VERSION_MAJOR) + "." + std::to_string(ZELVANE_VERSION_MINOR) +
                              "." + std::to_string(ZELVANE_VERSION_PATCH);
  EXPECT_EQ(numbers, ZELVANE_VERSION);
}

}  // namespace
