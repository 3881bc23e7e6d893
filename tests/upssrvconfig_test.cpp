#include "zelvane/api/upssrvconfig.h"

#include "support/processes.h"
#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"
#include "zelvane/core/datetime.h"

namespace {

// The whole record, with related fields on one line.
std::string Show(UpsSrvConfig const& c) {
  return test::Words("\ntype", c.upsType, c.modelIndex, c.upsName, c.upsDriver, c.cfgModule, c.cliModule, "\nflags",
                     c.nbShutdown, c.nbStandby, c.histLog, "\ndelay", c.nbShutdownDelay, "\nport", c.tcpPort,
                     "\ndischarge", c.fullDischargeDate, c.dischargeInterval, "\ntimers", c.timerManual,
                     c.timerOnBattery, c.timerLowBattery, c.timerFailure, c.timerRegister, "\nlevel", c.batteryLevel,
                     "\ncomm", c.commType, c.commPort, c.commDriver, c.usbDevice, "\nmodel", c.batteryChargeMode,
                     c.lineSensitivity, "\n");
}

constexpr char kDefaults[] =
    "\ntype 0 -1 Auto autoups zelcfg01 zelcli01 \nflags 1 0 1 \ndelay 120 \nport 4375 \ndischarge -1 120 "
    "\ntimers 20000 300000 20000 20000 20000 \nlevel 10 \ncomm 0 2 rs232 0 \nmodel 0 2 \n ";
constexpr char kTypes[] = "[UPSTYPE]\n5 = Five;drv5;cfg5;cli5;3\n4294967295 = Top;d;c;l;7\n-1 = None;e;f;g;8\n";

// The unit's directory is the bare name "1"; the tables are in the root.
class UpsSrv : public testing::Test {
 protected:
  UpsSrv() {
    fs::create_directory(at_.Root("1"));
    GetUpsSrvDefConfig(&cfg_);
  }
  std::string Get(int own = 0, std::string const& folder = "1") {
    memset(&cfg_, 1, sizeof cfg_);
    return GetUpsSrvConfig(folder.c_str(), &cfg_, own) == 1 ? Show(cfg_) : "failed";
  }
  int Set(int own = 0, std::string const& folder = "1") { return SetUpsSrvConfig(folder.c_str(), &cfg_, own); }
  std::string File() const { return at_.Read("root/1/upssrv.cfg"); }

  test::Installation at_;
  UpsSrvConfig cfg_;
};

TEST_F(UpsSrv, Defaults) {
  memset(&cfg_, 1, sizeof cfg_);
  ASSERT_EQ(GetUpsSrvDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(std::string(cfg_.upsName + 4, 37), std::string(37, '\0'));
  for (char const* const text : {cfg_.upsDriver, cfg_.cfgModule, cfg_.cliModule, cfg_.commDriver})
    EXPECT_EQ(std::string(text + strlen(text), text + 21), std::string(21 - strlen(text), '\0')) << text;
}

TEST_F(UpsSrv, FirstReadGivesTheDefaultsAndCreatesTheFile) {
  EXPECT_EQ(Get(0, "9"), kDefaults);
  EXPECT_FALSE(at_.Exists("root/9"));
  EXPECT_EQ(Get(), kDefaults);
  EXPECT_EQ(File(), test::Fixture("upssrv-default.cfg"));
  // The root's type table decides what is written, wherever the caller's tables are.
  fs::remove(at_.Root("1/upssrv.cfg"));
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Zero;rootdrv;c;d;2\n");
  at_.Write("root/1/upstype.cfg", "[UPSTYPE]\n0 = Zero;unitdrv;c;d;2\n");
  at_.Write("root/1/upscfg02.cfg", "[INIT]\nENVOLTREDE = SENSHI\n");
  EXPECT_EQ(Get(1), kDefaults);
  EXPECT_TRUE(test::Holds(File(), "UPSDL = rootdrv"));
  EXPECT_EQ(at_.Read("root/1/upscfg02.cfg"), "[INIT]\nENVOLTREDE = SENSNORMAL\n");
}

TEST_F(UpsSrv, UnreadableIsNotMissing) {
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Zero;d;c;l;2\n");
  for (char const* target : {".", "upssrv.cfg"}) {  // a directory, and a link to itself
    fs::create_symlink(target, at_.Root("1/upssrv.cfg"));
    auto const before = at_.List();
    EXPECT_EQ(Get(), kDefaults) << target;
    EXPECT_EQ(Set(), 0) << target;
    EXPECT_EQ(at_.List(), before) << target;
    fs::remove(at_.Root("1/upssrv.cfg"));
  }
}

TEST_F(UpsSrv, AFileThatAppearsMeanwhileIsKeptAndRead) {
  static std::string path;
  path = at_.Root("1/upssrv.cfg");
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Zero;d;c;l;2\n");
  at_.Write("root/1/upscfg02.cfg", "[INIT]\nENVOLTREDE = SENSHI\n");
  auto const before = at_.List();
  test::g_creating = [] { test::WriteFile(path, "[TCPIP]\nPORT = 9999\n"); };
  EXPECT_TRUE(test::Holds(Get(), "port 9999 "));
  EXPECT_EACH((File(), at_.Read("root/1/upscfg02.cfg")), "[TCPIP]\nPORT = 9999\n", "[INIT]\nENVOLTREDE = SENSHI\n");
  EXPECT_EQ(at_.List().size(), before.size() + 1);
}

TEST_F(UpsSrv, AFolderThatLeadsNowhereHasNoFile) {
  at_.Write("root/1/file", "");
  fs::create_symlink("loop", at_.Root("1/loop"));
  for (std::string const& folder : {at_.Root("1/file/"), at_.Root("1/loop/"), std::string(300, 'x')})
    EXPECT_EQ(Get(0, folder), kDefaults) << folder;
}

TEST_F(UpsSrv, EveryKey) {
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 98\n2 = 99\n3 = 97\n");
  at_.Write("root/1/upscfg03.cfg", "[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSVHI\n");
  at_.Write("root/1/upssrv.cfg", test::Fixture("upssrv-every.cfg"));
  auto const before = at_.List();
  EXPECT_EQ(Get(),
            "\ntype 5 3 Five drv5 cfg5 cli5 \nflags 0 1 0 \ndelay -7 \nport 5000 \ndischarge 1000 90 "
            "\ntimers 21000 22000 23000 24000 25000 \nlevel 26 \ncomm 1 3 usbhid 99 \nmodel 1 4 \n ");
  for (char const* name : {"1/upssrv.cfg", "usbhid.cfg"}) fs::remove(at_.Root(name));
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(File(), test::Fixture("upssrv-every.cfg"));
  EXPECT_EQ(at_.Read("root/usbhid.cfg"), "[USBHID]\n2 = 99");
  EXPECT_EQ(at_.List(), before);
}

TEST_F(UpsSrv, TouchesOnlyItsLinesOfAnOldFile) {
  at_.Write("root/1/upssrv.cfg", test::Fixture("upssrv-old.cfg"));
  Get();
  EXPECT_EQ(test::Words(cfg_.upsDriver, cfg_.commPort, cfg_.tcpPort), "other ; driver 4 9 ");
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(File(), test::Fixture("upssrv-old-saved.cfg"));
}

TEST_F(UpsSrv, WhichFolderANameMeans) {
  fs::create_directories(at_.Path("far/unit"));
  test::InFolder const here(at_.Path("far"));
  std::string const far = at_.Path("far/unit");
  std::string const cases[][2] = {
      {"1", "root/1/"}, {"", "root/"}, {"./unit", "far/unit/"}, {far, "far/unit/"}, {far + "/", "far/unit/"}};
  for (auto const& [folder, real] : cases) {
    at_.Write(real + "upssrv.cfg", "[TCPIP]\nPORT = 77");
    Get(0, folder);
    EXPECT_EQ(cfg_.tcpPort, 77) << folder;
    fs::remove(at_.Path(real + "upssrv.cfg"));
    EXPECT_EQ(Set(0, folder), 1) << folder;
    EXPECT_TRUE(at_.Exists(real + "upssrv.cfg")) << folder;
  }
}

TEST_F(UpsSrv, HowEachValueIsRead) {
  at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 6\n-1 = 7\n2147483647 = 8\n0 = 4294967295");
  for (test::Case const& c : test::Cases("upssrv.txt", "readings")) {
    at_.Write("root/1/upssrv.cfg", "[UPS]\nUPSTYPE = 5\nUPSDL = mine\n");
    at_.Write("root/upstype.cfg", kTypes);
    at_.Write("root/" + c[0], c[1]);
    EXPECT_TRUE(test::Holds(Get(), c[2] + " ")) << c;
  }
}

TEST_F(UpsSrv, HowEachValueIsWritten) {
  at_.Write("root/upstype.cfg", kTypes);
  for (test::Case const& c : test::Cases("upssrv.txt", "writings")) {
    for (char const* name : {"1/upssrv.cfg", "usbhid.cfg"}) fs::remove(at_.Root(name));
    if (c.columns.size() > 3) at_.Write("root/" + c[1], c[3]);
    GetUpsSrvDefConfig(&cfg_);
    test::Put(cfg_.commDriver, "a\nb");  // not used
    std::istringstream fields(c[0]);
    for (int64_t offset = 0, value = 0; fields >> offset && fields.ignore() >> value;)
      memcpy(reinterpret_cast<char*>(&cfg_) + offset, &value, offset == 110 ? 3 : 4);
    ASSERT_EQ(Set(), 1) << c;
    std::string const text = at_.Read("root/" + c[1]);
    bool const part = c[2][0] == '.';
    EXPECT_TRUE(test::Holds(text, c[2].substr(part ? 4 : 0))) << c;
    if (!part) EXPECT_EACH((text), c[2]) << c;
  }
}

TEST_F(UpsSrv, FullDischargeIsNeverFurtherAwayThanOneInterval) {
  test::Environment const zone("TZ", "FAR-11");  // dates are local
  for (int32_t const interval : {0, 1, 120}) {
    cfg_.fullDischargeDate = 2147483647;
    cfg_.dischargeInterval = interval;
    long const before = GetDateTime() + interval * 86400L;
    ASSERT_EQ(Set(), 1);
    long const after = GetDateTime() + interval * 86400L;
    Get();
    EXPECT_ALL(before <= cfg_.fullDischargeDate, cfg_.fullDischargeDate <= after) << interval << Show(cfg_);
  }
}

TEST_F(UpsSrv, TypesDecideOnDriverAndModelFile) {
  std::string const models[] = {"00", "03", "100", "-1", "-32768"};
  cfg_.lineSensitivity = 4;
  cfg_.modelIndex = 0;                // neither this field
  test::Put(cfg_.upsDriver, "a\nb");  // nor this one is used
  for (test::Case const& c : test::Cases("upssrv.txt", "types")) {
    bool const written = c[2] != "refused";
    fs::remove(at_.Root("1/upssrv.cfg"));
    at_.Write("root/upstype.cfg", "[UPSTYPE]\n" + c[1] + "\n");
    for (auto const& model : models) at_.Write("root/1/upscfg" + model + ".cfg", "[INIT]\nENVOLTREDE = NADA");
    auto const before = at_.List();
    cfg_.upsType = c.Int(0);
    EXPECT_EQ(Set(), written) << c;
    EXPECT_EQ(at_.List().size(), before.size() + written) << c;
    EXPECT_EQ(bool{test::Holds(File(), "UPSDL = " + c[2])}, written) << c << File();
    for (auto const& model : models)
      EXPECT_EQ(at_.Read("root/1/upscfg" + model + ".cfg"),
                model == c[3] ? "[INIT]\nENVOLTREDE = SENSVHI" : "[INIT]\nENVOLTREDE = NADA")
          << c << model;
  }
}

TEST_F(UpsSrv, TablesOfTheUnit) {
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n5 = Root;rootdrv;c;l;-1\n");
  at_.Write("root/1/upstype.cfg", "[UPSTYPE]\n5 = Unit;unitdrv;c;l;-1\n");
  for (int const own : {0, -1}) {
    at_.Write("root/usbhid.cfg", "[USBHID]\n2 = 10\n");
    at_.Write("root/1/usbhid.cfg", "[USBHID]\n2 = 20\n");
    at_.Write("root/1/upssrv.cfg", test::Fixture("upssrv-every.cfg"));
    Get(own);
    EXPECT_EQ(test::Words(cfg_.upsName, cfg_.usbDevice), own != 0 ? "Unit 20 " : "Root 10 ");
    cfg_.usbDevice = 99;
    ASSERT_EQ(Set(own), 1);
    EXPECT_TRUE(test::Holds(File(), own != 0 ? "UPSDL = unitdrv" : "UPSDL = rootdrv"));
    EXPECT_EACH((at_.Read("root/usbhid.cfg"), at_.Read("root/1/usbhid.cfg")),
                own != 0 ? "[USBHID]\n2 = 10\n" : "[USBHID]\n2 = 99\n",
                own != 0 ? "[USBHID]\n2 = 99\n" : "[USBHID]\n2 = 20\n");
  }
}

TEST_F(UpsSrv, FailedSaves) {
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/1/upscfg03.cfg", "[INIT]\nENVOLTREDE = NADA");
  cfg_.upsType = 5;
  cfg_.commType = 1;
  // No directory, and a file in its place.
  auto const before = at_.List();
  EXPECT_EACH((Set(0, "9"), Set(0, at_.Path("zelvane.conf"))), 0);
  EXPECT_EQ(at_.List(), before);
  // The second file fails: the first is already saved, the third is not written.
  fs::create_directory(at_.Root("usbhid.cfg"));
  EXPECT_EQ(Set(), 0);
  EXPECT_TRUE(test::Holds(File(), "COMMDL = usbhid"));
  EXPECT_EQ(at_.Read("root/1/upscfg03.cfg"), "[INIT]\nENVOLTREDE = NADA");
}

}  // namespace
