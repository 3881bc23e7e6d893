// The settings of the monitoring service of one UPS: its type and line, its timers, its TCP port, and what its model
// offers. They lie in four files:
//
//   upssrv.cfg     the settings proper                                                 configuration folder
//   upscfgNN.cfg   section [INIT]: what model NN can be set to                         configuration folder
//   upstype.cfg    section [UPSTYPE]: name, driver, modules and model of each type     table folder
//   usbhid.cfg     section [USBHID]: one number per port, key 0 for port 1             table folder
//
// The configuration folder is `cfgDir`, with or without its final "/"; a bare name without any "/" lies in the
// installation root. The table folder is the installation root, or the configuration folder when `tablesInCfgDir` is
// not 0.
#ifndef ZELVANE_API_UPSSRVCONFIG_H
#define ZELVANE_API_UPSSRVCONFIG_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

// Times are milliseconds here and whole seconds in the file, where it says ms. The comments name section and key of
// upssrv.cfg and the default, in the units of the record.
typedef struct UpsSrvConfig {
  int32_t upsType;            // UPS/UPSTYPE: 0. Number of the type in upstype.cfg
  int16_t modelIndex;         // from the type: -1 (none). Number NN of the model file
  char upsName[41];           // from the type: "Auto"
  char upsDriver[21];         // UPS/UPSDL: "autoups". Set writes the type's driver instead
  char cfgModule[21];         // from the type: "zelcfg01"
  char cliModule[21];         // from the type: "zelcli01"
  bool nbShutdown;            // UPS/NBSHUTDOWN: true. Set takes any byte but 0 for true, in these three
  bool nbStandby;             // UPS/NBSTANDBY: false
  bool histLog;               // UPS/HISTLOG: true
  int32_t nbShutdownDelay;    // UPS/NBSHUTDOWNDELAY: 120, in the unit of the file
  int32_t tcpPort;            // TCPIP/PORT: 4375
  int32_t fullDischargeDate;  // UPS/UPSFULLDISCH: -1 (none). Date-time of the battery's next full discharge
  int32_t dischargeInterval;  // UPS/UPSDISCHDELAY: 120 days between full discharges
  uint32_t timerManual;       // TIMERS/MANUAL: 20000 ms
  uint32_t timerOnBattery;    // TIMERS/OPBAT: 300000 ms
  uint32_t timerLowBattery;   // TIMERS/BATBAIXA: 20000 ms
  uint32_t timerFailure;      // TIMERS/FALHA: 20000 ms
  uint32_t timerRegister;     // TIMERS/CONTREG: 20000 ms
  int32_t batteryLevel;       // TIMERS/BATLEVEL: 10
  int32_t commType;           // from UPS/COMMDL: 1 USB HID ("usbhid"), 0 serial line ("rs232" and all else)
  int32_t commPort;           // UPS/COMMPORT: 2. Counted from 1
  char commDriver[21];        // UPS/COMMDL: "rs232". Set writes what commType says instead
  uint32_t usbDevice;         // usbhid.cfg, for this port: 0
  int32_t batteryChargeMode;  // INIT/ICARGABAT of the model file: 0 low, 1 high. Default 0
  int32_t lineSensitivity;    // INIT/ENVOLTREDE of the model file: 0 very low to 4 very high. Default 2
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

// Fills `cfg` from the files. 1, or 0 when an argument is null or memory is short.
//
// A missing key and a number that does not convert give the default; a timer is the number of seconds times 1000, in 32
// bits ("-1" is 4294966296 ms). Texts too long for their field are cut. A type that the table does not hold leaves the
// defaults in the name, the modules and modelIndex (and so the model's settings), but upsDriver is always what UPSDL
// says. usbDevice is read with commType 1 only and is 0 otherwise. A model file, or a key of it, that is missing or
// unknown leaves the default.
//
// When upssrv.cfg cannot be read: every field is the default, whatever the other files say, and SetUpsSrvConfig(cfgDir,
// cfg, 0) tries to create the file (always with the tables of the installation root; its result does not count). A file
// that is there but unreadable stays as it is.
ZELVANE_API int GetUpsSrvConfig(char const* cfgDir, UpsSrvConfig* cfg, int tablesInCfgDir);

// Fills every field with its default, with zeros behind the texts. Touches no file. 0 when `cfg` is null, else 1.
ZELVANE_API int GetUpsSrvDefConfig(UpsSrvConfig* cfg);

// Writes upssrv.cfg; then, with commType 1 only, usbDevice to usbhid.cfg; then the model's settings, only where its
// file is there and has the key already. 1 when all that is on disk; 0 at the first failure, and files saved before it
// stay so: each file by itself is changed whole or not at all. Lines that hold none of the keys stay byte for byte.
// upssrv.cfg and usbhid.cfg are created when they do not exist.
//
// 0 with nothing written: a null argument, or an entry of upstype.cfg for upsType that has fewer than five fields. A
// type that the table does not hold counts as "Auto;autoups;zelcfg01;zelcli01;-1". The type alone decides on the driver
// that is written and on the model file: upsDriver, upsName, cfgModule, cliModule, modelIndex and commDriver are not
// looked at.
//
// Milliseconds are rounded down to seconds. A fullDischargeDate above 0 is written as GetDateTime() + dischargeInterval
// days when it lies behind that; -1 and 0 are written as they are. batteryChargeMode counts as 0 unless it is 1, and
// lineSensitivity as 2 outside 0 to 4.
ZELVANE_API int SetUpsSrvConfig(char const* cfgDir, UpsSrvConfig const* cfg, int tablesInCfgDir);

ZELVANE_C_END

#endif
