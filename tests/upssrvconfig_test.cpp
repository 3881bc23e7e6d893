#include "zelvane/api/upssrvconfig.h"

#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "support/settings.h"
#include "zelvane/core/datetime.h"

namespace {

// The whole record, related fields on a line.
std::string Show(UpsSrvConfig const& c) {
  std::ostringstream out;
  out << "type=" << c.upsType << ' ' << c.modelIndex << ' ' << c.upsName << ' ' << c.upsDriver << ' ' << c.cfgModule
      << ' ' << c.cliModule << "\nflags=" << c.nbShutdown << c.nbStandby << c.histLog << "\ndelay=" << c.nbShutdownDelay
      << "\nport=" << c.tcpPort << "\ndischarge=" << c.fullDischargeDate << ' ' << c.dischargeInterval
      << "\ntimers=" << c.timerManual << ' ' << c.timerOnBattery << ' ' << c.timerLowBattery << ' ' << c.timerFailure
      << ' ' << c.timerRegister << "\nlevel=" << c.batteryLevel << "\ncomm=" << c.commType << ' ' << c.commPort << ' '
      << c.commDriver << ' ' << c.usbDevice << "\nmodel=" << c.batteryChargeMode << ' ' << c.lineSensitivity << '\n';
  return out.str();
}

constexpr char kDefaults[] =
    "type=0 -1 Auto autoups zelcfg01 zelcli01\nflags=101\ndelay=120\nport=4375\ndischarge=-1 120\n"
    "timers=20000 300000 20000 20000 20000\nlevel=10\ncomm=0 2 rs232 0\nmodel=0 2\n";

constexpr char kDefaultFile[] =
    "[UPS]\nUPSTYPE = 0\nUPSDL = autoups\nCOMMDL = rs232\nCOMMPORT = 2\nHISTLOG = 1\nNBSHUTDOWN = 1\nNBSTANDBY = 0\n"
    "NBSHUTDOWNDELAY = 120\nUPSDISCHDELAY = 120\nUPSFULLDISCH = -1\n"
    "[TIMERS]\nMANUAL = 20\nOPBAT = 300\nBATBAIXA = 20\nFALHA = 20\nCONTREG = 20\nBATLEVEL = 10\n[TCPIP]\nPORT = 4375";

// Every key with a value of its own.
constexpr char kEveryKey[] =
    "[UPS]\nUPSTYPE = 5\nUPSDL = drv5\nCOMMDL = usbhid\nCOMMPORT = 3\nHISTLOG = 0\nNBSHUTDOWN = 0\nNBSTANDBY = 1\n"
    "NBSHUTDOWNDELAY = -7\nUPSDISCHDELAY = 90\nUPSFULLDISCH = 1000\n"
    "[TIMERS]\nMANUAL = 21\nOPBAT = 22\nBATBAIXA = 23\nFALHA = 24\nCONTREG = 25\nBATLEVEL = 26\n[TCPIP]\nPORT = 5000";
constexpr char kEveryField[] =
    "type=5 3 Five drv5 cfg5 cli5\nflags=010\ndelay=-7\nport=5000\ndischarge=1000 90\n"
    "timers=21000 22000 23000 24000 25000\nlevel=26\ncomm=1 3 usbhid 99\nmodel=1 4\n";

constexpr char kTypes[] = "[UPSTYPE]\n5 = Five;drv5;cfg5;cli5;3\n";

class UpsSrv : public testing::Test {
 protected:
  UpsSrv() {
    mkdir(at_.Root("1").c_str(), 0755);
    GetUpsSrvDefConfig(&cfg_);
  }

  // The unit's folder is the bare name "1"; the tables lie in the root.
  int Get(int tablesInCfgDir = 0) {
    memset(&cfg_, 1, sizeof cfg_);
    return GetUpsSrvConfig("1", &cfg_, tablesInCfgDir);
  }
  int Set(int tablesInCfgDir = 0) { return SetUpsSrvConfig("1", &cfg_, tablesInCfgDir); }

  // Whether `line` is one of those of Show.
  bool Shows(std::string const& line) const {
    return ("\n" + Show(cfg_)).find("\n" + line + "\n") != std::string::npos;
  }

  // The value of a key in the unit's upssrv.cfg.
  std::string Value(std::string const& key) const {
    std::string const text = at_.Read("root/1/upssrv.cfg") + "\n";
    size_t const at = text.find("\n" + key + " = ");
    if (at == std::string::npos) return "<no key>";
    size_t const begin = at + key.size() + 4;
    return text.substr(begin, text.find('\n', begin) - begin);
  }

  std::vector<std::string> RootFiles() const {
    std::vector<std::string> names;
    for (std::string const& name : at_.List())
      if (name.compare(0, 5, "root/") == 0 && name.back() != '/') names.push_back(name.substr(5));
    return names;
  }

  test::Installation at_;
  UpsSrvConfig cfg_;
};

using Names = std::vector<std::string>;

// ---- Defaults, missing and unreadable files ----

TEST_F(UpsSrv, Defaults) {
  memset(&cfg_, 1, sizeof cfg_);
  ASSERT_EQ(GetUpsSrvDefConfig(&cfg_), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  std::string const texts(cfg_.upsName, 41 + 3 * 21);
  EXPECT_EQ(texts, std::string("Auto").append(37, '\0') + std::string("autoups").append(14, '\0') +
                       std::string("zelcfg01").append(13, '\0') + std::string("zelcli01").append(13, '\0'));
  EXPECT_EQ(std::string(cfg_.commDriver, 21), std::string("rs232").append(16, '\0'));
}

TEST_F(UpsSrv, NullArguments) {
  EXPECT_EQ(GetUpsSrvDefConfig(nullptr), 0);
  EXPECT_EQ(GetUpsSrvConfig(nullptr, &cfg_, 0), 0);
  EXPECT_EQ(GetUpsSrvConfig("1", nullptr, 0), 0);
  EXPECT_EQ(SetUpsSrvConfig(nullptr, &cfg_, 0), 0);
  EXPECT_EQ(SetUpsSrvConfig("1", nullptr, 0), 0);
  EXPECT_EQ(RootFiles(), Names{});
}

TEST_F(UpsSrv, FirstReadGivesTheDefaultsAndCreatesTheFile) {
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(at_.Read("root/1/upssrv.cfg"), kDefaultFile);
  memset(&cfg_, 1, sizeof cfg_);
  EXPECT_EQ(GetUpsSrvConfig("9", &cfg_, 0), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(RootFiles(), Names{"1/upssrv.cfg"});
  EXPECT_FALSE(at_.Exists("root/9"));
  // It is the root's type table that says what is written, wherever the caller's tables lie.
  std::filesystem::remove(at_.Root("1/upssrv.cfg"));
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Zero;rootdrv;c;d;2\n");
  at_.Write("root/1/upstype.cfg", "[UPSTYPE]\n0 = Zero;unitdrv;c;d;2\n");
  at_.Write("root/1/upscfg02.cfg", "[INIT]\nENVOLTREDE = SENSHI\n");
  ASSERT_EQ(Get(1), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(Value("UPSDL"), "rootdrv");
  EXPECT_EQ(at_.Read("root/1/upscfg02.cfg"), "[INIT]\nENVOLTREDE = SENSNORMAL\n");
}

TEST_F(UpsSrv, UnreadableIsNotMissing) {
  // A link to itself can be neither read nor taken for missing.
  ASSERT_EQ(symlink("upssrv.cfg", at_.Root("1/upssrv.cfg").c_str()), 0);
  EXPECT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_TRUE(std::filesystem::is_symlink(at_.Root("1/upssrv.cfg")));
  EXPECT_EQ(Set(), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(at_.Root("1/upssrv.cfg")));
}

// ---- Every key ----

TEST_F(UpsSrv, EveryKey) {
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 98\n2 = 99\n3 = 97\n");
  at_.Write("root/1/upscfg03.cfg", "[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSVHI\n");
  at_.Write("root/1/upssrv.cfg", kEveryKey);
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), kEveryField);

  for (char const* name : {"1/upssrv.cfg", "usbhid.cfg"}) std::filesystem::remove(at_.Root(name));
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(at_.Read("root/1/upssrv.cfg"), kEveryKey);
  EXPECT_EQ(at_.Read("root/usbhid.cfg"), "[USBHID]\n2 = 99");
  EXPECT_EQ(RootFiles(), (Names{"1/upscfg03.cfg", "1/upssrv.cfg", "upstype.cfg", "usbhid.cfg"}));
}

TEST_F(UpsSrv, TouchesOnlyItsLinesOfAnOldFile) {
  at_.Write("root/1/upssrv.cfg",
            "; UPS in the cellar\r\n[ups]\r\n   UpsType=0   \r\nNote = por\xE3o\r\nupsdl = other ; driver\n"
            "' ports\nCOMMPORT=4\ncommport=5\n\n[Extra]\nPORT = 1\n[tcpip]\n port\t=\t9\t\n");
  ASSERT_EQ(Get(), 1);
  EXPECT_STREQ(cfg_.upsDriver, "other ; driver");
  EXPECT_EQ(cfg_.commPort, 4);
  EXPECT_EQ(cfg_.tcpPort, 9);
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(at_.Read("root/1/upssrv.cfg"),
            "; UPS in the cellar\r\n[ups]\r\nUpsType = 0\nNote = por\xE3o\r\nupsdl = autoups\n"
            "' ports\nCOMMPORT = 4\nCOMMDL = rs232\nHISTLOG = 1\nNBSHUTDOWN = 1\nNBSTANDBY = 0\n"
            "NBSHUTDOWNDELAY = 120\nUPSDISCHDELAY = 120\nUPSFULLDISCH = -1\n"
            "commport=5\n\n[Extra]\nPORT = 1\n[tcpip]\nport = 9\n"
            "\n[TIMERS]\nMANUAL = 20\nOPBAT = 300\nBATBAIXA = 20\nFALHA = 20\nCONTREG = 20\nBATLEVEL = 10");
}

TEST_F(UpsSrv, Folders) {
  std::filesystem::create_directories(at_.Path("far/unit"));
  std::string const old = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(at_.Path("far").c_str()), 0);
  struct {
    std::string folder;
    char const* file;
  } const cases[] = {
      {"1", "root/1/upssrv.cfg"},
      {"", "root/upssrv.cfg"},
      {"./unit", "far/unit/upssrv.cfg"},
      {at_.Path("far/unit"), "far/unit/upssrv.cfg"},
      {at_.Path("far/unit/"), "far/unit/upssrv.cfg"},
  };
  for (auto const& c : cases) {
    cfg_.batteryLevel++;
    EXPECT_EQ(SetUpsSrvConfig(c.folder.c_str(), &cfg_, 0), 1) << c.folder;
    EXPECT_NE(at_.Read(c.file).find("\nBATLEVEL = " + std::to_string(cfg_.batteryLevel) + "\n"), std::string::npos)
        << c.folder;
    UpsSrvConfig back;
    EXPECT_EQ(GetUpsSrvConfig(c.folder.c_str(), &back, 0), 1) << c.folder;
    EXPECT_EQ(back.batteryLevel, cfg_.batteryLevel) << c.folder;
  }
  ASSERT_EQ(chdir(old.c_str()), 0);
}

// ---- Values of upssrv.cfg ----

TEST_F(UpsSrv, Readings) {
  struct {
    char const* text;
    char const* line;
  } const cases[] = {
      // Seconds to milliseconds, in 32 bits.
      {"[TIMERS]\nMANUAL=0\nOPBAT=1\nBATBAIXA=4294967\nFALHA=4294968\nCONTREG=-1",
       "timers=0 1000 4294967000 704 4294966296"},
      {"[TIMERS]\nMANUAL=2147483648\nOPBAT=x\nBATBAIXA=\nFALHA=2147483647\nCONTREG=1.5",
       "timers=20000 300000 20000 4294966296 20000"},
      {"[TIMERS]\nBATLEVEL=-1", "level=-1"},
      {"[TIMERS]\nBATLEVEL=4294967295", "level=10"},
      {"[UPS]\nNBSHUTDOWN=0\nNBSTANDBY=1\nHISTLOG=2", "flags=011"},
      {"[UPS]\nNBSHUTDOWN=-1\nNBSTANDBY=x\nHISTLOG=0", "flags=100"},
      {"[UPS]\nNBSHUTDOWN=\nNBSTANDBY=-1\nHISTLOG=true", "flags=111"},
      {"[UPS]\nCOMMDL=rs232", "comm=0 2 rs232 0"},
      {"[UPS]\nCOMMDL=usbhid", "comm=1 2 usbhid 0"},
      {"[UPS]\nCOMMDL=USBHID", "comm=0 2 USBHID 0"},
      {"[UPS]\nCOMMDL=", "comm=0 2  0"},
      {"[UPS]\nCOMMDL=usbhid78901234567890", "comm=0 2 usbhid78901234567890 0"},
      {"[UPS]\nCOMMDL=usbhid789012345678901", "comm=0 2 usbhid78901234567890 0"},
      {"[UPS]\nUPSDL=12345678901234567890", "type=0 -1 Auto 12345678901234567890 zelcfg01 zelcli01"},
      {"[UPS]\nUPSDL=123456789012345678901", "type=0 -1 Auto 12345678901234567890 zelcfg01 zelcli01"},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upssrv.cfg", c.text);
    ASSERT_EQ(Get(), 1);
    EXPECT_TRUE(Shows(c.line)) << c.text << '\n' << Show(cfg_);
  }
}

TEST_F(UpsSrv, Writings) {
  struct {
    uint32_t milliseconds;
    char const* seconds;
  } const timers[] = {{0, "0"}, {999, "0"}, {1000, "1"}, {1500, "1"}, {4294967295U, "4294967"}};
  for (auto const& t : timers) {
    cfg_.timerManual = t.milliseconds;
    ASSERT_EQ(Set(), 1);
    EXPECT_EQ(Value("MANUAL"), t.seconds);
  }
  at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 6\n");
  cfg_.usbDevice = 5;
  for (int32_t const type : {-1, 0, 1, 2, 7}) {
    cfg_.commType = type;
    strcpy(cfg_.commDriver, "a\nb");  // not looked at
    ASSERT_EQ(Set(), 1) << type;
    EXPECT_EQ(Value("COMMDL"), type == 1 ? "usbhid" : "rs232") << type;
    EXPECT_EQ(at_.Read("root/usbhid.cfg"), type == 1 ? "[USBHID]\n1 = 5\n" : "[USBHID]\n1 = 6\n") << type;
    at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 6\n");
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.usbDevice, type == 1 ? 6U : 0U) << type;
    cfg_.usbDevice = 5;
  }
  // C callers may have stored any byte.
  for (int const byte : {0, 1, 2, 128, 255}) {
    memset(reinterpret_cast<char*>(&cfg_) + offsetof(UpsSrvConfig, nbShutdown), byte, 3);
    ASSERT_EQ(Set(), 1);
    for (char const* key : {"NBSHUTDOWN", "NBSTANDBY", "HISTLOG"}) EXPECT_EQ(Value(key), byte != 0 ? "1" : "0") << byte;
  }
  cfg_.upsType = cfg_.commPort = cfg_.nbShutdownDelay = -2;
  cfg_.tcpPort = cfg_.batteryLevel = cfg_.dischargeInterval = -2;
  ASSERT_EQ(Set(), 1);
  for (char const* key : {"UPSTYPE", "COMMPORT", "NBSHUTDOWNDELAY"}) EXPECT_EQ(Value(key), "-2") << key;
  for (char const* key : {"PORT", "BATLEVEL", "UPSDISCHDELAY"}) EXPECT_EQ(Value(key), "4294967294") << key;
}

TEST_F(UpsSrv, FullDischargeIsNeverFurtherAwayThanOneInterval) {
  struct {
    int32_t date;
    int32_t interval;
    bool capped;
  } const cases[] = {
      {-1, 120, false},           {0, 120, false},
      {-2147483647, 0, false},    {1, 120, false},
      {2147483647, 120, true},    {2147483647, 0, true},
      {2147483647, 1, true},      {2147483647, 24856, false},  // past the end of 31 bits
      {2147483647, 49711, false},                              // past the end of 32 bits
      {2147483647, -1, false},                                 // the file's 4294967295 days
  };
  for (auto const& c : cases) {
    cfg_.fullDischargeDate = c.date;
    cfg_.dischargeInterval = c.interval;
    long const before = GetDateTime();
    ASSERT_EQ(Set(), 1);
    long const after = GetDateTime();
    long const written = std::stol(Value("UPSFULLDISCH"));
    if (c.capped) {
      EXPECT_GE(written, before + c.interval * 86400L) << c.interval;
      EXPECT_LE(written, after + c.interval * 86400L) << c.interval;
    } else {
      EXPECT_EQ(written, c.date) << c.interval;
    }
  }
}

// ---- The type table ----

TEST_F(UpsSrv, TypeOfARead) {
  std::string const n40(40, 'n');
  std::string const m20(20, 'm');
  struct {
    std::string entry;
    std::string line;
  } const cases[] = {
      {"5 = Five;d;c;l;3", "type=5 3 Five mine c l"},
      {"5 = Five;d;c;l;", "type=5 -1 Five mine c l"},
      {"5 = ;;;;12", "type=5 12  mine  "},
      {"5 = Five;d;c;l;70000", "type=5 4464 Five mine c l"},
      {"5 = Five;d;c;l;3;more", "type=5 3 Five mine c l"},
      {"5 = " + n40 + "n;d;" + m20 + "mm;" + m20 + "m;1", "type=5 1 " + n40 + " mine " + m20 + " " + m20},
      {"5 = Five;d;c;l", "type=5 -1 Auto mine zelcfg01 zelcli01"},
      {"6 = Six;d;c;l;3", "type=5 -1 Auto mine zelcfg01 zelcli01"},
  };
  at_.Write("root/1/upssrv.cfg", "[UPS]\nUPSTYPE = 5\nUPSDL = mine\n");
  for (auto const& c : cases) {
    at_.Write("root/upstype.cfg", "[UPSTYPE]\n" + c.entry + "\n");
    ASSERT_EQ(Get(), 1);
    EXPECT_TRUE(Shows(c.line)) << c.entry << '\n' << Show(cfg_);
  }
}

TEST_F(UpsSrv, TypeOfAWrite) {
  struct {
    int32_t type;
    char const* entry;
    char const* driver;  // null: refused
  } const cases[] = {
      {5, "5 = Five;drv5;c;l;-1", "drv5"},
      {5, "5 = Five;;c;l;-1", "autoups"},
      {5, "5 = Five;a driver longer than its field;c;l;-1", "a driver longer than its field"},
      {5, "5 = Five;drv5;c;l;", "drv5"},
      {5, "5 = Five;drv5;c;l", nullptr},
      {5, "5 =", nullptr},
      {6, "5 =", "autoups"},
      {-1, "-1 = Minus;minus;c;l;-1", "minus"},
  };
  for (auto const& c : cases) {
    std::filesystem::remove(at_.Root("1/upssrv.cfg"));
    at_.Write("root/upstype.cfg", std::string("[UPSTYPE]\n") + c.entry + "\n");
    cfg_.upsType = c.type;
    strcpy(cfg_.upsDriver, "a\nb");  // not looked at
    EXPECT_EQ(Set(), c.driver != nullptr ? 1 : 0) << c.entry;
    EXPECT_EQ(at_.Exists("root/1/upssrv.cfg"), c.driver != nullptr) << c.entry;
    EXPECT_EQ(Value("UPSDL"), c.driver != nullptr ? c.driver : "<no key>") << c.entry;
  }
}

TEST_F(UpsSrv, TablesOfTheUnit) {
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n5 = Root;rootdrv;c;l;-1\n");
  at_.Write("root/1/upstype.cfg", "[UPSTYPE]\n5 = Unit;unitdrv;c;l;-1\n");
  at_.Write("root/usbhid.cfg", "[USBHID]\n2 = 10\n");
  at_.Write("root/1/usbhid.cfg", "[USBHID]\n2 = 20\n");
  at_.Write("root/1/upssrv.cfg", kEveryKey);
  ASSERT_EQ(Get(0), 1);
  EXPECT_STREQ(cfg_.upsName, "Root");
  EXPECT_EQ(cfg_.usbDevice, 10U);
  ASSERT_EQ(Get(-1), 1);
  EXPECT_STREQ(cfg_.upsName, "Unit");
  EXPECT_EQ(cfg_.usbDevice, 20U);

  cfg_.usbDevice = 21;
  ASSERT_EQ(Set(1), 1);
  EXPECT_EQ(Value("UPSDL"), "unitdrv");
  EXPECT_EQ(at_.Read("root/1/usbhid.cfg"), "[USBHID]\n2 = 21\n");
  cfg_.usbDevice = 11;
  ASSERT_EQ(Set(0), 1);
  EXPECT_EQ(Value("UPSDL"), "rootdrv");
  EXPECT_EQ(at_.Read("root/usbhid.cfg"), "[USBHID]\n2 = 11\n");
  EXPECT_EQ(at_.Read("root/1/usbhid.cfg"), "[USBHID]\n2 = 21\n");
}

// ---- usbhid.cfg ----

TEST_F(UpsSrv, UsbDevice) {
  struct {
    int32_t commPort;
    char const* key;
  } const cases[] = {{1, "0"}, {2, "1"}, {100, "99"}, {0, "-1"}, {-2147483647 - 1, "2147483647"}};
  for (auto const& c : cases) {
    std::filesystem::remove(at_.Root("usbhid.cfg"));
    cfg_.commType = 1;
    cfg_.commPort = c.commPort;
    cfg_.usbDevice = 2147483647;
    ASSERT_EQ(Set(), 1);
    EXPECT_EQ(at_.Read("root/usbhid.cfg"), std::string("[USBHID]\n") + c.key + " = 2147483647") << c.commPort;
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.usbDevice, 2147483647U) << c.commPort;
  }
  cfg_.usbDevice = 4294967295U;
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(at_.Read("root/usbhid.cfg"), "[USBHID]\n2147483647 = 4294967295");
}

// ---- The model file ----

TEST_F(UpsSrv, ModelSettingsRead) {
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/1/upssrv.cfg", "[UPS]\nUPSTYPE = 5\n");
  at_.Write("root/default/upscfg03.cfg", "[INIT]\nICARGABAT = CARGABATHI\n");  // not this one
  ASSERT_EQ(Get(), 1);
  EXPECT_TRUE(Shows("model=0 2"));
  struct {
    char const* text;
    char const* line;
  } const cases[] = {
      {"[INIT]\nICARGABAT = CARGABATLO\nENVOLTREDE = SENSVLOW\n", "model=0 0"},
      {"[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSLOW\n", "model=1 1"},
      {"[init]\nicargabat = cargabathi\nenvoltrede = SENSNORMAL\n", "model=0 2"},
      {"[INIT]\nICARGABAT = NADA\nENVOLTREDE = SENSHI\n", "model=0 3"},
      {"[INIT]\nENVOLTREDE = SENSVHI\n", "model=0 4"},
      {"[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = NADA\n", "model=1 2"},
      {"[INIT]\nICARGABAT = 1\nENVOLTREDE =\n", "model=0 2"},
      {"ICARGABAT = CARGABATHI\n[OTHER]\nENVOLTREDE = SENSVHI\n", "model=0 2"},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upscfg03.cfg", c.text);
    ASSERT_EQ(Get(), 1);
    EXPECT_TRUE(Shows(c.line)) << c.text << '\n' << Show(cfg_);
  }
}

TEST_F(UpsSrv, ModelSettingsWritten) {
  at_.Write("root/upstype.cfg", kTypes);
  cfg_.upsType = 5;
  cfg_.modelIndex = 9;  // not looked at
  ASSERT_EQ(Set(), 1);
  EXPECT_FALSE(at_.Exists("root/1/upscfg03.cfg"));
  constexpr char kBoth[] = "; 3\r\n[Init]\r\n Icargabat=NADA ; ?\r\nOTHER = 1\nENVOLTREDE =\n";
  std::string const start = "; 3\r\n[Init]\r\nIcargabat = ";
  struct {
    int32_t charge;
    int32_t sensitivity;
    char const* before;
    std::string after;
  } const cases[] = {
      {0, 0, kBoth, start + "CARGABATLO\nOTHER = 1\nENVOLTREDE = SENSVLOW\n"},
      {1, 1, kBoth, start + "CARGABATHI\nOTHER = 1\nENVOLTREDE = SENSLOW\n"},
      {2, 2, kBoth, start + "CARGABATLO\nOTHER = 1\nENVOLTREDE = SENSNORMAL\n"},
      {-1, 3, kBoth, start + "CARGABATLO\nOTHER = 1\nENVOLTREDE = SENSHI\n"},
      {1, 4, kBoth, start + "CARGABATHI\nOTHER = 1\nENVOLTREDE = SENSVHI\n"},
      {0, 5, kBoth, start + "CARGABATLO\nOTHER = 1\nENVOLTREDE = SENSNORMAL\n"},
      {0, -1, kBoth, start + "CARGABATLO\nOTHER = 1\nENVOLTREDE = SENSNORMAL\n"},
      // A file gains neither keys nor sections.
      {1, 4, "", ""},
      {1, 4, "[INIT]\n", "[INIT]\n"},
      {1, 4, "[OTHER]\nICARGABAT = 1", "[OTHER]\nICARGABAT = 1"},
      {1, 4, "[INIT]\nICARGABAT = 1", "[INIT]\nICARGABAT = CARGABATHI"},
      {1, 4, "[INIT]\nENVOLTREDE = 1", "[INIT]\nENVOLTREDE = SENSVHI"},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upscfg03.cfg", c.before);
    cfg_.batteryChargeMode = c.charge;
    cfg_.lineSensitivity = c.sensitivity;
    ASSERT_EQ(Set(), 1);
    EXPECT_EQ(at_.Read("root/1/upscfg03.cfg"), c.after) << c.charge << ' ' << c.sensitivity;
  }
}

TEST_F(UpsSrv, ModelFileNames) {
  struct {
    char const* index;
    char const* file;
  } const cases[] = {
      {"0", "upscfg00.cfg"},     {"3", "upscfg03.cfg"}, {"100", "upscfg100.cfg"}, {"32767", "upscfg32767.cfg"},
      {"65539", "upscfg03.cfg"}, {"x", "none"},         {"32768", "none"},        {"65535", "none"}};
  cfg_.upsType = 5;
  cfg_.lineSensitivity = 4;
  for (auto const& c : cases) {
    at_.Write("root/upstype.cfg", std::string("[UPSTYPE]\n5 = F;d;c;l;") + c.index);
    for (std::string const name : {"00", "03", "100", "32767", "-1", "-32768"})
      at_.Write("root/1/upscfg" + name + ".cfg", "[INIT]\nENVOLTREDE = NADA");
    ASSERT_EQ(Set(), 1) << c.index;
    for (std::string const name :
         {"upscfg00.cfg", "upscfg03.cfg", "upscfg100.cfg", "upscfg32767.cfg", "upscfg-1.cfg", "upscfg-32768.cfg"})
      EXPECT_EQ(at_.Read("root/1/" + name),
                name == c.file ? "[INIT]\nENVOLTREDE = SENSVHI" : "[INIT]\nENVOLTREDE = NADA")
          << c.index;
  }
}

// ---- Failures ----

TEST_F(UpsSrv, FailedSaves) {
  int const open = test::OpenDescriptors();
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/1/upscfg03.cfg", "[INIT]\nENVOLTREDE = NADA");
  cfg_.upsType = 5;
  cfg_.commType = 1;
  // No folder, a folder in the file's place, a file in the folder's.
  EXPECT_EQ(SetUpsSrvConfig("9", &cfg_, 0), 0);
  mkdir(at_.Root("1/upssrv.cfg").c_str(), 0755);
  EXPECT_EQ(Set(), 0);
  EXPECT_EQ(SetUpsSrvConfig(at_.Path("zelvane.conf").c_str(), &cfg_, 0), 0);
  EXPECT_EQ(RootFiles(), (Names{"1/upscfg03.cfg", "upstype.cfg"}));
  rmdir(at_.Root("1/upssrv.cfg").c_str());
  // The second file fails: the first stays saved, the third is not reached.
  mkdir(at_.Root("usbhid.cfg").c_str(), 0755);
  EXPECT_EQ(Set(), 0);
  EXPECT_EQ(Value("COMMDL"), "usbhid");
  EXPECT_EQ(at_.Read("root/1/upscfg03.cfg"), "[INIT]\nENVOLTREDE = NADA");
  EXPECT_EQ(test::OpenDescriptors(), open);
}

}  // namespace
