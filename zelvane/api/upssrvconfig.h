/// @file
/// Settings of the monitoring service of one UPS unit: its type and line, its timers, its TCP port, and what its model
/// offers. They are in four files:
///
///     upssrv.cfg     the settings proper                                                 configuration directory
///     upscfgNN.cfg   section [INIT]: what model NN can be set to                         configuration directory
///     upstype.cfg    section [UPSTYPE]: name, driver, modules and model of each type     table directory
///     usbhid.cfg     section [USBHID]: one number per port, key 0 for port 1             table directory
///
/// The configuration directory is `cfgDir`, with or without a trailing "/". A name without any "/" is in the
/// installation root. The table directory is the installation root, or the configuration directory if `tablesInCfgDir`
/// is not 0.
#ifndef ZELVANE_API_UPSSRVCONFIG_H
#define ZELVANE_API_UPSSRVCONFIG_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// Times marked ms are milliseconds in the record and whole seconds in the file. The comment of a field names its
/// section and key in upssrv.cfg, then its default in the unit of the record.
typedef struct UpsSrvConfig {
  int32_t upsType;            ///< UPS/UPSTYPE: 0. Number of the type in upstype.cfg
  int16_t modelIndex;         ///< from the type: -1 (none). Number NN of the model file
  char upsName[41];           ///< from the type: "Auto"
  char upsDriver[21];         ///< UPS/UPSDL: "autoups". Set writes the type's driver instead
  char cfgModule[21];         ///< from the type: "zelcfg01"
  char cliModule[21];         ///< from the type: "zelcli01"
  bool nbShutdown;            ///< UPS/NBSHUTDOWN: true. In these three, Set treats every byte except 0 as true
  bool nbStandby;             ///< UPS/NBSTANDBY: false
  bool histLog;               ///< UPS/HISTLOG: true
  int32_t nbShutdownDelay;    ///< UPS/NBSHUTDOWNDELAY: 120, in the unit of the file
  int32_t tcpPort;            ///< TCPIP/PORT: 4375
  int32_t fullDischargeDate;  ///< UPS/UPSFULLDISCH: -1 (none). Date-time of the battery's next full discharge
  int32_t dischargeInterval;  ///< UPS/UPSDISCHDELAY: 120 days between full discharges. Counts as unsigned
  uint32_t timerManual;       ///< TIMERS/MANUAL: 20000 ms
  uint32_t timerOnBattery;    ///< TIMERS/OPBAT: 300000 ms
  uint32_t timerLowBattery;   ///< TIMERS/BATBAIXA: 20000 ms
  uint32_t timerFailure;      ///< TIMERS/FALHA: 20000 ms
  uint32_t timerRegister;     ///< TIMERS/CONTREG: 20000 ms
  int32_t batteryLevel;       ///< TIMERS/BATLEVEL: 10
  int32_t commType;           ///< from UPS/COMMDL: 1 USB HID ("usbhid"), 0 serial line ("rs232" and everything else)
  int32_t commPort;           ///< UPS/COMMPORT: 2. Counted from 1
  char commDriver[21];        ///< UPS/COMMDL: "rs232". Set writes the driver of commType instead
  uint32_t usbDevice;         ///< usbhid.cfg, for this port: 0
  int32_t batteryChargeMode;  ///< INIT/ICARGABAT of the model file: 0 low, 1 high. Default 0
  int32_t lineSensitivity;    ///< INIT/ENVOLTREDE of the model file: 0 very low to 4 very high. Default 2
} UpsSrvConfig;

ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, upsType) == 0, "UpsSrvConfig: upsType");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, modelIndex) == 4, "UpsSrvConfig: modelIndex");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, upsName) == 6, "UpsSrvConfig: upsName");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, upsDriver) == 47, "UpsSrvConfig: upsDriver");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, cfgModule) == 68, "UpsSrvConfig: cfgModule");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, cliModule) == 89, "UpsSrvConfig: cliModule");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, nbShutdown) == 110, "UpsSrvConfig: nbShutdown");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, nbStandby) == 111, "UpsSrvConfig: nbStandby");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, histLog) == 112, "UpsSrvConfig: histLog");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, nbShutdownDelay) == 116, "UpsSrvConfig: nbShutdownDelay");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, tcpPort) == 120, "UpsSrvConfig: tcpPort");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, fullDischargeDate) == 124, "UpsSrvConfig: fullDischargeDate");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, dischargeInterval) == 128, "UpsSrvConfig: dischargeInterval");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, timerManual) == 132, "UpsSrvConfig: timerManual");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, timerOnBattery) == 136, "UpsSrvConfig: timerOnBattery");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, timerLowBattery) == 140, "UpsSrvConfig: timerLowBattery");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, timerFailure) == 144, "UpsSrvConfig: timerFailure");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, timerRegister) == 148, "UpsSrvConfig: timerRegister");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, batteryLevel) == 152, "UpsSrvConfig: batteryLevel");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, commType) == 156, "UpsSrvConfig: commType");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, commPort) == 160, "UpsSrvConfig: commPort");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, commDriver) == 164, "UpsSrvConfig: commDriver");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, usbDevice) == 188, "UpsSrvConfig: usbDevice");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, batteryChargeMode) == 192, "UpsSrvConfig: batteryChargeMode");
ZELVANE_STATIC_ASSERT(offsetof(UpsSrvConfig, lineSensitivity) == 196, "UpsSrvConfig: lineSensitivity");
ZELVANE_STATIC_ASSERT(sizeof(UpsSrvConfig) == 200, "UpsSrvConfig: size");

ZELVANE_C_BEGIN

/// @name Functions
///
/// All three functions return 1 on success and 0 on failure. A null argument fails and nothing is done. The same holds
/// for Get and Set while /etc/zelvane.conf temporarily cannot be opened or read (config/paths.h).
/// @{

/// Fills `cfg` from the files.
///
///     key missing                             default
///     number that does not convert            default
///     timer                                   seconds times 1000, in 32 bits: "-1" is 4294966296 ms
///     text too long for its field             cut
///     type not in the table                   defaults in upsName, cfgModule, cliModule and modelIndex
///     upsDriver                               the value of UPSDL, whatever the type
///     usbDevice                               read only if commType is 1, otherwise 0
///     model file or its key missing, or       default
///       value unknown
///     table or model file unreadable          same as missing
///     upssrv.cfg unreadable                   every field is the default, success. The file stays
///     upssrv.cfg missing                      every field is the default, success, and the file is created (see below)
///     file temporarily unreadable             returns 0, `cfg` can be partly filled (no free descriptor, I/O error)
///     out of memory                           returns 0, `cfg` can be partly filled
///
/// A missing upssrv.cfg is created as SetUpsSrvConfig(cfgDir, cfg, 0) does it: always with the tables of the
/// installation root. The result does not show a failure to create it. If another program creates the file meanwhile,
/// that file stays, and `cfg` is filled from it.
ZELVANE_API int GetUpsSrvConfig(char const* cfgDir, UpsSrvConfig* cfg, int tablesInCfgDir);

/// Sets every field to its default and fills the rest of each text with zeros. Opens no file.
ZELVANE_API int GetUpsSrvDefConfig(UpsSrvConfig* cfg);

/// Writes upssrv.cfg. Then writes usbDevice to usbhid.cfg, only if commType is 1. Then writes the model's settings,
/// only if the model file exists and has the key. Creates missing files (upssrv.cfg and usbhid.cfg), but not their
/// directories. All other lines stay byte for byte. Each file is saved atomically; on success all of them are on disk
/// (config/cfgclass.h).
///
/// Returns 0 at the first failure; files saved before it stay saved. Returns 0 with nothing written if the entry of
/// upstype.cfg for upsType has fewer than five fields, or the table temporarily cannot be opened or read. A type that
/// is not in the table, or a missing or unreadable table, counts as the type "Auto" with the defaults above.
///
/// The type decides which driver is written and which model file is changed. Set ignores upsDriver, upsName, cfgModule,
/// cliModule, modelIndex and commDriver. It rounds milliseconds down to seconds. It treats batteryChargeMode as 0
/// unless it is 1, and lineSensitivity as 2 unless it is 0 to 4.
///
/// A fullDischargeDate of -1 or 0 is written unchanged. A later date is reduced to at most GetDateTime() +
/// dischargeInterval days; dischargeInterval counts as unsigned: -1 is 4294967295 days.
///
/// Lines below a syntax error in a file are dropped, after a copy (config/cfgclass.h). If a section was not found above
/// the error, its keys cannot be read back until the bad line is corrected.
ZELVANE_API int SetUpsSrvConfig(char const* cfgDir, UpsSrvConfig const* cfg, int tablesInCfgDir);
/// @}

ZELVANE_C_END

#endif
