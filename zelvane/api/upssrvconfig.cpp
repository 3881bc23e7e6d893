#include "zelvane/api/upssrvconfig.h"

#include <algorithm>
#include <string>

#include "zelvane/api/record_internal.h"
#include "zelvane/api/serverentry_internal.h"
#include "zelvane/api/settingsfile_internal.h"
#include "zelvane/api/typeentry_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/datetime_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

namespace {

using namespace zelvane::internal;
using namespace zelvane::internal::table;

constexpr char kMainFile[] = "upssrv.cfg";
constexpr char kAutoDriver[] = "autoups";
constexpr char kSerial[] = "rs232";
constexpr char kUsb[] = "usbhid";
constexpr std::int32_t kUsbComm = 1;

constexpr std::int32_t kLowCharge = 0;
constexpr std::int32_t kNormalSensitivity = 2;

#define ZELVANE_UPSSRV(field) ZELVANE_FIELD(UpsSrvConfig, field)

constexpr Row kRows[] = {
    Signed("UPS", "UPSTYPE", ZELVANE_UPSSRV(upsType), 0),
    Text("UPS", "UPSDL", ZELVANE_UPSSRV(upsDriver), kAutoDriver),
    Text("UPS", "COMMDL", ZELVANE_UPSSRV(commDriver), kSerial),
    Signed("UPS", "COMMPORT", ZELVANE_UPSSRV(commPort), 2),
    Flag("UPS", "HISTLOG", ZELVANE_UPSSRV(histLog), true),
    Flag("UPS", "NBSHUTDOWN", ZELVANE_UPSSRV(nbShutdown), true),
    Flag("UPS", "NBSTANDBY", ZELVANE_UPSSRV(nbStandby), false),
    Signed("UPS", "NBSHUTDOWNDELAY", ZELVANE_UPSSRV(nbShutdownDelay), 120),
    Unsigned("UPS", "UPSDISCHDELAY", ZELVANE_UPSSRV(dischargeInterval), 120),
    Signed("UPS", "UPSFULLDISCH", ZELVANE_UPSSRV(fullDischargeDate), -1),
    Seconds("TIMERS", "MANUAL", ZELVANE_UPSSRV(timerManual), 20),
    Seconds("TIMERS", "OPBAT", ZELVANE_UPSSRV(timerOnBattery), 300),
    Seconds("TIMERS", "BATBAIXA", ZELVANE_UPSSRV(timerLowBattery), 20),
    Seconds("TIMERS", "FALHA", ZELVANE_UPSSRV(timerFailure), 20),
    Seconds("TIMERS", "CONTREG", ZELVANE_UPSSRV(timerRegister), 20),
    Unsigned("TIMERS", "BATLEVEL", ZELVANE_UPSSRV(batteryLevel), 10),
    Unsigned("TCPIP", "PORT", ZELVANE_UPSSRV(tcpPort), kDefaultPort),
    // Fields from COMMDL, the type table, usbhid.cfg and the model file.
    Signed(ZELVANE_UPSSRV(commType), 0),
    Text(ZELVANE_UPSSRV(upsName), "Auto"),
    Text(ZELVANE_UPSSRV(cfgModule), "zelcfg01"),
    Text(ZELVANE_UPSSRV(cliModule), "zelcli01"),
    Signed(ZELVANE_UPSSRV(modelIndex), -1),
    Unsigned(ZELVANE_UPSSRV(usbDevice), 0),
    Signed(ZELVANE_UPSSRV(batteryChargeMode), kLowCharge),
    Signed(ZELVANE_UPSSRV(lineSensitivity), kNormalSensitivity),
};

static_assert(RowsFit(sizeof(UpsSrvConfig), kRows), "rows outside the record or on top of each other");

// A setting that only some models have. Its field is the index of one of the names.
struct ModelSetting {
  char const* key;
  std::int32_t UpsSrvConfig::*field;
  std::int32_t def;
  std::int32_t count;
  char const* names[5];
};

constexpr ModelSetting kModelSettings[] = {
    {"ICARGABAT", &UpsSrvConfig::batteryChargeMode, kLowCharge, 2, {"CARGABATLO", "CARGABATHI"}},
    {"ENVOLTREDE",
     &UpsSrvConfig::lineSensitivity,
     kNormalSensitivity,
     5,
     {"SENSVLOW", "SENSLOW", "SENSNORMAL", "SENSHI", "SENSVHI"}},
};

struct Folders {
  std::string config;
  std::string tables;
};

// A bare name is below the root, unlike in the shutdown service's settings.
Folders FindFolders(char const* cfgDir, int tablesInCfgDir) {
  std::string config = cfgDir;
  std::string root = InstallationRoot();
  if (ExtractFilePath(config).empty()) config.insert(0, root);
  config = IncludePathDelimiter(config);
  return {config, tablesInCfgDir != 0 ? config : root};
}

std::string UsbKey(UpsSrvConfig const& cfg) {
  return IntToStr(static_cast<std::int32_t>(static_cast<std::uint32_t>(cfg.commPort) - 1U));
}

std::string ModelPath(Folders const& folders, std::int16_t modelIndex) {
  return folders.config + "upscfg" + IntToStr(modelIndex, 2, '0') + ".cfg";
}

// ---- Reading. Each function fills its fields if its file has a value for them. ----

// Returns the table's value for the type with that key. Does not use the plain C functions: their failure value would
// look like a type that is not in the table.
std::string TypeValue(Folders const& folders, std::string const& key, char const* def) {
  OptionalCfg table;
  table.OpenOrThrow(folders.tables + "upstype.cfg", true);
  return table.ReadStr("UPSTYPE", key.c_str(), def);
}

void ReadType(Folders const& folders, UpsSrvConfig& cfg) {
  TypeEntry type;
  if (!ParseTypeEntry(TypeValue(folders, UIntToStr(static_cast<std::uint32_t>(cfg.upsType)), ""), type)) return;
  CopyToField(cfg.upsName, type.name);
  CopyToField(cfg.cfgModule, type.cfgModule);
  CopyToField(cfg.cliModule, type.cliModule);
  cfg.modelIndex = type.modelIndex;
}

void ReadUsbDevice(Folders const& folders, UpsSrvConfig& cfg) {
  if (cfg.commType != kUsbComm) return;
  OptionalCfg table;
  table.OpenOrThrow(folders.tables + "usbhid.cfg", true);
  cfg.usbDevice = static_cast<std::uint32_t>(table.ReadInt("USBHID", UsbKey(cfg).c_str(), 0));
}

void ReadModel(Folders const& folders, UpsSrvConfig& cfg) {
  OptionalCfg model;
  model.OpenOrThrow(ModelPath(folders, cfg.modelIndex), true);
  for (ModelSetting const& setting : kModelSettings) {
    std::string const value = model.ReadStr("INIT", setting.key, "");
    for (std::int32_t i = 0; i < setting.count; i++)
      if (value == setting.names[i]) cfg.*setting.field = i;
  }
}

// Returns false if there is no upssrv.cfg. If this user cannot read it, `cfg` keeps the defaults.
bool ReadFiles(Folders const& folders, UpsSrvConfig& cfg) {
  OptionalCfg file;
  bool const open = file.OpenOrThrow(folders.config + kMainFile, true);
  if (!open || file.IsMissing()) return !open;
  ReadRows(file, kRows, &cfg);
  cfg.commType = FieldText(cfg.commDriver) == kUsb ? kUsbComm : 0;
  ReadType(folders, cfg);
  ReadUsbDevice(folders, cfg);
  ReadModel(folders, cfg);
  return true;
}

// ---- Writing. ----

// Returns false if the entry has too few fields. A missing entry or table counts as the type "Auto".
bool FindType(Folders const& folders, std::int32_t type, TypeEntry& entry) {
  if (!ParseTypeEntry(TypeValue(folders, IntToStr(type), "Auto;autoups;zelcfg01;zelcli01;-1"), entry)) return false;
  if (entry.driver.empty()) entry.driver = kAutoDriver;
  return true;
}

// A planned discharge is at most one interval away. Dates that mean "none" are before any other date.
std::int32_t NextDischarge(UpsSrvConfig const& cfg) {
  long const now = GetDateTime();
  if (now < 0) return cfg.fullDischargeDate;
  std::int64_t const latest = now + std::int64_t{kDaySeconds} * static_cast<std::uint32_t>(cfg.dischargeInterval);
  return static_cast<std::int32_t>(std::min<std::int64_t>(cfg.fullDischargeDate, latest));
}

bool WriteSettings(Folders const& folders, UpsSrvConfig const& cfg, std::string const& driver, Saving saving) {
  UpsSrvConfig written = cfg;
  CopyToField(written.upsDriver, driver);
  CopyToField(written.commDriver, cfg.commType == kUsbComm ? kUsb : kSerial);
  written.fullDischargeDate = NextDischarge(cfg);
  return ChangeFile<CfgClass>(folders.config + kMainFile, saving, [&](CfgClass& file) {
    // Writes the driver again, now complete: the table's can be longer than the record's field.
    return WriteRows(file, kRows, &written) && file.WriteStr("UPS", "UPSDL", driver.c_str());
  });
}

bool WriteUsbDevice(Folders const& folders, UpsSrvConfig const& cfg) {
  if (cfg.commType != kUsbComm) return true;
  return ChangeFile<CfgClass>(folders.tables + "usbhid.cfg", Saving::kOnce, [&](CfgClass& file) {
    return file.WriteUInt("USBHID", UsbKey(cfg).c_str(), cfg.usbDevice);
  });
}

bool WriteModel(Folders const& folders, UpsSrvConfig const& cfg, std::int16_t modelIndex) {
  if (modelIndex < 0) return true;
  return ChangeFile<CfgClass>(ModelPath(folders, modelIndex), Saving::kOnce, [&](CfgClass& file) {
    for (ModelSetting const& setting : kModelSettings) {
      // If the file lacks a key, the model lacks the setting.
      if (!file.KeyExists("INIT", setting.key)) continue;
      std::int32_t const value = cfg.*setting.field;
      bool const known = value >= 0 && value < setting.count;
      if (!file.WriteStr("INIT", setting.key, setting.names[known ? value : setting.def])) return false;
    }
    return true;
  });
}

bool WriteFiles(char const* cfgDir, UpsSrvConfig const& cfg, int tablesInCfgDir, Saving saving) {
  return Guard(false, [&] {
    Folders const folders = FindFolders(cfgDir, tablesInCfgDir);
    TypeEntry type;
    // Checked before anything is opened for writing.
    return FindType(folders, cfg.upsType, type) && WriteSettings(folders, cfg, type.driver, saving) &&
           WriteUsbDevice(folders, cfg) && WriteModel(folders, cfg, type.modelIndex);
  });
}

}  // namespace

int GetUpsSrvConfig(char const* cfgDir, UpsSrvConfig* cfg, int tablesInCfgDir) {
  if (cfgDir == nullptr || cfg == nullptr) return 0;
  return Guard(0, [&] {
    Folders const folders = FindFolders(cfgDir, tablesInCfgDir);
    // All defaults first: fields for which the other files have no value keep them too.
    SetDefaults(kRows, cfg);
    // Another program can create the file meanwhile: then its contents count.
    if (!ReadFiles(folders, *cfg) && !WriteFiles(cfgDir, *cfg, 0, Saving::kCreate)) ReadFiles(folders, *cfg);
    return 1;
  });
}

int GetUpsSrvDefConfig(UpsSrvConfig* cfg) {
  if (cfg == nullptr) return 0;
  SetDefaults(kRows, cfg);
  return 1;
}

int SetUpsSrvConfig(char const* cfgDir, UpsSrvConfig const* cfg, int tablesInCfgDir) {
  return cfgDir != nullptr && cfg != nullptr && WriteFiles(cfgDir, *cfg, tablesInCfgDir, Saving::kOnce) ? 1 : 0;
}
