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
  EXPECT_EQ(std::string(cfg_.upsName, 41), std::string("Auto").append(37, '\0'));
  EXPECT_EQ(std::string(cfg_.upsDriver, 21), std::string("autoups").append(14, '\0'));
  EXPECT_EQ(std::string(cfg_.cfgModule, 21), std::string("zelcfg01").append(13, '\0'));
  EXPECT_EQ(std::string(cfg_.cliModule, 21), std::string("zelcli01").append(13, '\0'));
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

TEST_F(UpsSrv, FirstReadCreatesTheFile) {
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(at_.Read("root/1/upssrv.cfg"), kDefaultFile);
  EXPECT_EQ(RootFiles(), Names{"1/upssrv.cfg"});
}

TEST_F(UpsSrv, FirstReadTakesTheTypeFromTheRootAndGivesTheDefaults) {
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Zero;rootdrv;c;d;2\n");
  at_.Write("root/1/upstype.cfg", "[UPSTYPE]\n0 = Zero;unitdrv;c;d;2\n");
  at_.Write("root/1/upscfg02.cfg", "[INIT]\nENVOLTREDE = SENSHI\n");
  ASSERT_EQ(Get(1), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(Value("UPSDL"), "rootdrv");
  EXPECT_EQ(at_.Read("root/1/upscfg02.cfg"), "[INIT]\nENVOLTREDE = SENSNORMAL\n");
}

TEST_F(UpsSrv, ReadOfAMissingFolderCreatesNothing) {
  memset(&cfg_, 1, sizeof cfg_);
  EXPECT_EQ(GetUpsSrvConfig("9", &cfg_, 0), 1);
  EXPECT_EQ(Show(cfg_), kDefaults);
  EXPECT_EQ(RootFiles(), Names{});
  EXPECT_FALSE(at_.Exists("root/9"));
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
            "; UPS in the cellar\r\n"
            "[ups]\r\n"
            "   UpsType=0   \r\n"
            "Note = por\xE3o\r\n"
            "upsdl = other ; driver\n"
            "' ports\n"
            "COMMPORT=4\n"
            "commport=5\n"
            "\n"
            "[Extra]\n"
            "PORT = 1\n"
            "[tcpip]\n"
            " port\t=\t9\t\n");
  ASSERT_EQ(Get(), 1);
  EXPECT_STREQ(cfg_.upsDriver, "other ; driver");
  EXPECT_EQ(cfg_.commPort, 4);
  EXPECT_EQ(cfg_.tcpPort, 9);
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(at_.Read("root/1/upssrv.cfg"),
            "; UPS in the cellar\r\n"
            "[ups]\r\n"
            "UpsType = 0\n"
            "Note = por\xE3o\r\n"
            "upsdl = autoups\n"
            "' ports\n"
            "COMMPORT = 4\n"
            "COMMDL = rs232\nHISTLOG = 1\nNBSHUTDOWN = 1\nNBSTANDBY = 0\nNBSHUTDOWNDELAY = 120\nUPSDISCHDELAY = 120\n"
            "UPSFULLDISCH = -1\n"
            "commport=5\n"
            "\n"
            "[Extra]\n"
            "PORT = 1\n"
            "[tcpip]\n"
            "port = 9\n"
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

TEST_F(UpsSrv, Timers) {
  struct {
    char const* seconds;
    uint32_t read;
  } const cases[] = {
      {"0", 0},     {"1", 1000}, {"4294967", 4294967000U}, {"4294968", 704}, {"-1", 4294966296U}, {"2147483648", 20000},
      {"x", 20000}, {"", 20000},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upssrv.cfg", std::string("[TIMERS]\nMANUAL = ") + c.seconds);
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.timerManual, c.read) << c.seconds;
  }
  struct {
    uint32_t written;
    char const* seconds;
  } const writes[] = {{0, "0"}, {999, "0"}, {1000, "1"}, {1500, "1"}, {4294967295U, "4294967"}};
  for (auto const& w : writes) {
    cfg_.timerManual = w.written;
    ASSERT_EQ(Set(), 1);
    EXPECT_EQ(Value("MANUAL"), w.seconds) << w.written;
  }
}

TEST_F(UpsSrv, UnscaledNumbersAreWrittenByTheirSign) {
  cfg_.upsType = cfg_.commPort = cfg_.nbShutdownDelay = -2;
  cfg_.tcpPort = cfg_.batteryLevel = cfg_.dischargeInterval = -2;
  ASSERT_EQ(Set(), 1);
  for (char const* key : {"UPSTYPE", "COMMPORT", "NBSHUTDOWNDELAY"}) EXPECT_EQ(Value(key), "-2") << key;
  for (char const* key : {"PORT", "BATLEVEL", "UPSDISCHDELAY"}) EXPECT_EQ(Value(key), "4294967294") << key;
}

TEST_F(UpsSrv, Flags) {
  struct {
    char const* value;
    bool histLog;
    bool nbStandby;
  } const cases[] = {{"0", false, false}, {"1", true, true},  {"2", true, true},
                     {"-1", true, true},  {"x", true, false}, {"", true, false}};
  for (auto const& c : cases) {
    at_.Write("root/1/upssrv.cfg", std::string("[UPS]\nHISTLOG = ") + c.value + "\nNBSTANDBY = " + c.value);
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.histLog, c.histLog) << c.value;
    EXPECT_EQ(cfg_.nbStandby, c.nbStandby) << c.value;
  }
  // C callers may have stored any byte.
  for (int const byte : {0, 1, 2, 128, 255}) {
    memset(reinterpret_cast<char*>(&cfg_) + offsetof(UpsSrvConfig, nbShutdown), byte, 3);
    ASSERT_EQ(Set(), 1);
    for (char const* key : {"NBSHUTDOWN", "NBSTANDBY", "HISTLOG"}) EXPECT_EQ(Value(key), byte != 0 ? "1" : "0") << byte;
  }
}

TEST_F(UpsSrv, CommunicationType) {
  struct {
    char const* value;
    int32_t type;
    char const* driver;
  } const cases[] = {{"rs232", 0, "rs232"},
                     {"usbhid", 1, "usbhid"},
                     {"USBHID", 0, "USBHID"},
                     {"usbhid2", 0, "usbhid2"},
                     {"", 0, ""},
                     {"usbhid78901234567890", 0, "usbhid78901234567890"},
                     {"usbhid789012345678901", 0, "usbhid78901234567890"}};
  for (auto const& c : cases) {
    at_.Write("root/1/upssrv.cfg", std::string("[UPS]\nCOMMDL = ") + c.value);
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.commType, c.type) << c.value;
    EXPECT_STREQ(cfg_.commDriver, c.driver);
  }
  for (int32_t const type : {-1, 0, 1, 2, 7}) {
    cfg_.commType = type;
    strcpy(cfg_.commDriver, "a\nb");  // not looked at
    ASSERT_EQ(Set(), 1) << type;
    EXPECT_EQ(Value("COMMDL"), type == 1 ? "usbhid" : "rs232") << type;
  }
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
  std::string const name(41, 'n');
  std::string const module(22, 'm');
  struct {
    std::string entry;
    std::string type;
  } const cases[] = {
      {"Five;d;c;l;3", "5 3 Five mine c l"},
      {"Five;d;c;l;", "5 -1 Five mine c l"},
      {";;;;12", "5 12  mine  "},
      {"Five;d;c;l;70000", "5 4464 Five mine c l"},
      {"Five;d;c;l;3;more", "5 3 Five mine c l"},
      {"Five;d;c;l", "5 -1 Auto mine zelcfg01 zelcli01"},
      {name + ";d;" + module + ";" + module + ";1",
       "5 1 " + name.substr(1) + " mine " + module.substr(2) + " " + module.substr(2)},
  };
  at_.Write("root/1/upssrv.cfg", "[UPS]\nUPSTYPE = 5\nUPSDL = mine\n");
  for (auto const& c : cases) {
    at_.Write("root/upstype.cfg", "[UPSTYPE]\n5 = " + c.entry + "\n");
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(Show(cfg_).substr(0, c.type.size() + 6), "type=" + c.type + "\n") << c.entry;
  }
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n6 = Six;d;c;l;3\n");
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(Show(cfg_).substr(0, 38), "type=5 -1 Auto mine zelcfg01 zelcli01\n");
}

TEST_F(UpsSrv, TypeOfAWrite) {
  struct {
    char const* entry;
    int result;
    char const* driver;
  } const cases[] = {
      {"Five;drv5;c;l;-1", 1, "drv5"},
      {"Five;;c;l;-1", 1, "autoups"},
      {"Five;a driver longer than its field;c;l;-1", 1, "a driver longer than its field"},
      {"Five;drv5;c;l;", 1, "drv5"},
      {"Five;drv5;c;l", 0, nullptr},
      {"", 0, nullptr},
  };
  for (auto const& c : cases) {
    std::filesystem::remove(at_.Root("1/upssrv.cfg"));
    at_.Write("root/upstype.cfg", std::string("[UPSTYPE]\n5 = ") + c.entry + "\n");
    cfg_.upsType = 5;
    strcpy(cfg_.upsDriver, "a\nb");  // not looked at
    EXPECT_EQ(Set(), c.result) << c.entry;
    EXPECT_EQ(at_.Exists("root/1/upssrv.cfg"), c.result == 1) << c.entry;
    if (c.driver != nullptr) {
      EXPECT_EQ(Value("UPSDL"), c.driver) << c.entry;
    }
  }
  cfg_.upsType = 6;
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(Value("UPSDL"), "autoups");
  at_.Write("root/upstype.cfg", "[UPSTYPE]\n-1 = Minus;minus;c;l;-1\n");
  cfg_.upsType = -1;
  ASSERT_EQ(Set(), 1);
  EXPECT_EQ(Value("UPSDL"), "minus");
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
  cfg_.commType = 1;
  cfg_.commPort = 1;
  cfg_.usbDevice = 4294967295U;
  ASSERT_EQ(Set(), 1);
  EXPECT_NE(at_.Read("root/usbhid.cfg").find("\n0 = 4294967295"), std::string::npos);
}

TEST_F(UpsSrv, UsbTableIsForUsbAlone) {
  at_.Write("root/usbhid.cfg", "[USBHID]\n1 = 5\n");
  for (int32_t const type : {0, 2, 7, -1}) {
    cfg_.commType = type;
    cfg_.usbDevice = 6;
    ASSERT_EQ(Set(), 1) << type;
    EXPECT_EQ(at_.Read("root/usbhid.cfg"), "[USBHID]\n1 = 5\n") << type;
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.usbDevice, 0U) << type;
  }
}

// ---- The model file ----

TEST_F(UpsSrv, ModelSettingsRead) {
  at_.Write("root/upstype.cfg", kTypes);
  at_.Write("root/1/upssrv.cfg", "[UPS]\nUPSTYPE = 5\n");
  at_.Write("root/default/upscfg03.cfg", "[INIT]\nICARGABAT = CARGABATHI\n");
  struct {
    char const* text;
    int32_t charge;
    int32_t sensitivity;
  } const cases[] = {
      {"[INIT]\nICARGABAT = CARGABATLO\nENVOLTREDE = SENSVLOW\n", 0, 0},
      {"[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSLOW\n", 1, 1},
      {"[init]\nicargabat = cargabathi\nenvoltrede = SENSNORMAL\n", 0, 2},
      {"[INIT]\nICARGABAT = NADA\nENVOLTREDE = SENSHI\n", 0, 3},
      {"[INIT]\nENVOLTREDE = SENSVHI\n", 0, 4},
      {"[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = NADA\n", 1, 2},
      {"[INIT]\nICARGABAT = 1\nENVOLTREDE = 4\n", 0, 2},
      {"ICARGABAT = CARGABATHI\n[OTHER]\nENVOLTREDE = SENSVHI\n", 0, 2},
      {"", 0, 2},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upscfg03.cfg", c.text);
    ASSERT_EQ(Get(), 1);
    EXPECT_EQ(cfg_.batteryChargeMode, c.charge) << c.text;
    EXPECT_EQ(cfg_.lineSensitivity, c.sensitivity) << c.text;
  }
  std::filesystem::remove(at_.Root("1/upscfg03.cfg"));
  ASSERT_EQ(Get(), 1);
  EXPECT_EQ(cfg_.batteryChargeMode, 0);
}

TEST_F(UpsSrv, ModelSettingsWritten) {
  at_.Write("root/upstype.cfg", kTypes);
  struct {
    int32_t charge;
    int32_t sensitivity;
    char const* chargeName;
    char const* sensitivityName;
  } const cases[] = {
      {0, 0, "CARGABATLO", "SENSVLOW"},   {1, 1, "CARGABATHI", "SENSLOW"},     {2, 2, "CARGABATLO", "SENSNORMAL"},
      {-1, 3, "CARGABATLO", "SENSHI"},    {1, 4, "CARGABATHI", "SENSVHI"},     {0, 5, "CARGABATLO", "SENSNORMAL"},
      {0, 9, "CARGABATLO", "SENSNORMAL"}, {0, -1, "CARGABATLO", "SENSNORMAL"},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upscfg03.cfg", "; model 3\r\n[Init]\r\n Icargabat=NADA ; ?\r\nOTHER = 1\nENVOLTREDE =\n");
    cfg_.upsType = 5;
    cfg_.modelIndex = 9;  // not looked at
    cfg_.batteryChargeMode = c.charge;
    cfg_.lineSensitivity = c.sensitivity;
    ASSERT_EQ(Set(), 1);
    EXPECT_EQ(at_.Read("root/1/upscfg03.cfg"), std::string("; model 3\r\n[Init]\r\nIcargabat = ") + c.chargeName +
                                                   "\nOTHER = 1\nENVOLTREDE = " + c.sensitivityName + "\n");
  }
}

TEST_F(UpsSrv, ModelFilesGainNothing) {
  at_.Write("root/upstype.cfg", kTypes);
  cfg_.upsType = 5;
  ASSERT_EQ(Set(), 1);
  EXPECT_FALSE(at_.Exists("root/1/upscfg03.cfg"));
  struct {
    char const* before;
    char const* after;
  } const cases[] = {
      {"", ""},
      {"[INIT]\n", "[INIT]\n"},
      {"[OTHER]\nICARGABAT = 1", "[OTHER]\nICARGABAT = 1"},
      {"[INIT]\nICARGABAT = 1", "[INIT]\nICARGABAT = CARGABATLO"},
      {"[INIT]\nENVOLTREDE = 1", "[INIT]\nENVOLTREDE = SENSNORMAL"},
  };
  for (auto const& c : cases) {
    at_.Write("root/1/upscfg03.cfg", c.before);
    ASSERT_EQ(Set(), 1) << c.before;
    EXPECT_EQ(at_.Read("root/1/upscfg03.cfg"), c.after);
  }
}

TEST_F(UpsSrv, ModelFileNames) {
  struct {
    char const* index;
    char const* file;  // null: none
  } const cases[] = {
      {"0", "upscfg00.cfg"},        {"3", "upscfg03.cfg"},     {"99", "upscfg99.cfg"}, {"100", "upscfg100.cfg"},
      {"32767", "upscfg32767.cfg"}, {"65539", "upscfg03.cfg"}, {"x", nullptr},         {"32768", nullptr}};
  cfg_.upsType = 5;
  cfg_.lineSensitivity = 4;
  for (auto const& c : cases) {
    at_.Write("root/upstype.cfg", std::string("[UPSTYPE]\n5 = F;d;c;l;") + c.index);
    for (char const* name : {"upscfg00.cfg", "upscfg03.cfg", "upscfg99.cfg", "upscfg100.cfg", "upscfg32767.cfg",
                             "upscfg-1.cfg", "upscfg-32768.cfg"})
      at_.Write(std::string("root/1/") + name, "[INIT]\nENVOLTREDE = NADA");
    ASSERT_EQ(Set(), 1) << c.index;
    for (std::string const& name : RootFiles()) {
      if (name.compare(0, 8, "1/upscfg") != 0) continue;
      bool const chosen = c.file != nullptr && name.substr(2) == c.file;
      EXPECT_EQ(at_.Read("root/" + name), chosen ? "[INIT]\nENVOLTREDE = SENSVHI" : "[INIT]\nENVOLTREDE = NADA")
          << c.index << ' ' << name;
    }
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
