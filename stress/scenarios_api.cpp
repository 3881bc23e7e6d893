#include <cstring>

#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

// Returns the bytes of a record as one number.
template <class T>
unsigned long Sum(T const& record) {
  unsigned long sum = 5381;
  unsigned char bytes[sizeof record];
  std::memcpy(bytes, &record, sizeof record);
  for (unsigned char const byte : bytes) sum = sum * 33 + byte;
  return sum;
}

ServerListItem Server(char const* name, int port) {
  ServerListItem item = {};
  Put(item.serverName, name);
  Put(item.serverAddress, "10.1.1.1");
  item.serverPort = port;
  return item;
}

bool SetSrv(World& world, int commType) {
  UpsSrvConfig cfg;
  GetUpsSrvDefConfig(&cfg);
  cfg.upsType = 7;
  cfg.commType = commType;
  cfg.commPort = 3;
  cfg.usbDevice = 5;
  cfg.lineSensitivity = 4;
  return SetUpsSrvConfig(world.Root("007"), &cfg, 0) == 1;
}

}  // namespace

Table ApiScenarios() {
  std::string const types = "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n7 = Ups 7;drv7;zelcfg07;zelcli07;3\n";
  std::string const models = "[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSLOW\n[2]\nMODELO = Two\n";
  Files const unit = WithRoot(
      {{"root/007/upssrv.cfg",
        "[UPS]\nUPSTYPE = 7\nCOMMDL = usbhid\nCOMMPORT = 3\n; kept\n[TIMERS]\nMANUAL = 30\n[TCPIP]\nPORT = 4001\n"},
       {"root/upstype.cfg", types},
       {"root/usbhid.cfg", "[USBHID]\n2 = 99\n"},
       {"root/007/upscfg03.cfg", models}});
  Files const client = WithRoot({{"root/upscli.cfg", kClientFile}, {"home/.zelvane", kUserFile}});
  Files const units = WithRoot({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n7 = 007\n"}});
  std::vector<std::string> const model = {"root/upstype.cfg", "zelvane.conf", "root/007/upscfg03.cfg"};
  std::vector<std::string> const noConf = {"zelvane.conf"};
  return {
      {"GetUpsSrvConfig", unit,
       [](World& w) {
         UpsSrvConfig record = {};
         int const done = GetUpsSrvConfig(w.Root("007"), &record, 0);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"GetUpsSrvConfig without a file",
       WithRoot({}),
       [](World& w) {
         UpsSrvConfig record = {};
         int const done = GetUpsSrvConfig(w.Root(""), &record, 0);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader | kForgives,  // the result does not depend on the file that it creates
       {},
       [](Files const&, Files const& after, bool) { return after.size() <= 2; }},
      {"SetUpsSrvConfig, serial line", unit, [](World& w) { return SetSrv(w, 0); }, 0, model},
      {"SetUpsSrvConfig, USB and model", unit, [](World& w) { return SetSrv(w, 1); }, 0, model},
      {"GetShutSrvConfig", client,
       [](World& w) {
         ShutSrvConfig record = {};
         int const done = GetShutSrvConfig(nullptr, &record);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"SetShutSrvConfig", client,
       [](World&) {
         ShutSrvConfig record;
         GetShutSrvDefConfig(&record);
         Put(record.mailPassword, "other");
         return SetShutSrvConfig("", &record) == 1;
       },
       0, noConf},
      {"SetShutSrvConfig, new files", WithRoot({{"home/", ""}}),
       [](World& w) {
         ShutSrvConfig record;
         GetShutSrvDefConfig(&record);
         return SetShutSrvConfig(w.Root(""), &record) == 1;
       }},
      {"GetClientConfig", client,
       [](World& w) {
         ClientConfig record = {};
         int const done = GetClientConfig(&record);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"SetClientConfig", client,
       [](World&) {
         ClientConfig record;
         GetClientDefConfig(&record);
         record.langId = 9;
         return SetClientConfig(&record) == 1;
       },
       0, noConf},
      {"GetUpsListItem", units,
       [](World& w) {
         char name[4] = "";
         int const done = GetUpsListItem(1, name);
         w.Note("%s", name);
         return done == 1;
       }},
      {"GetUpsListCount", units, [](World&) { return GetUpsListCount() == 2; }},
      {"AddUpsListItem",
       WithRoot({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n"},
                 {"root/default/zelcfg.cfg", "[FILES]\n0 = a.cfg\n1 = b.cfg\n"},
                 {"root/default/a.cfg", "aaa"},
                 {"root/default/b.cfg", "bbb"}}),
       [](World&) { return AddUpsListItem("7") == 1; }, kPart | kAdmin | kTwice},
      {"RemUpsListItem", units, [](World&) { return RemUpsListItem("7") == 1; }, 0, noConf},
      {"server list, reading", client,
       [](World& w) {
         void* const list = OpenServerList();
         ServerListItem item = {};
         int const done = GetServerListItem(list, 1, &item);
         w.Note("%s", item.serverName);
         CloseServerList(list);
         return done == 1;
       },
       kReader},
      {"server list, adding and removing", client,
       [](World&) {
         void* const list = OpenServerList();
         ServerListItem const added = Server("new", 3), gone = Server("b", 1);
         bool const done = list != nullptr && AddServerListItem(list, &added) == 1 &&
                           RemServerListItem(list, &gone) == 0 && RemServerListItem(list, &added) == 1 &&
                           AddServerListItem2(list, &added, 9) == 1;
         CloseServerList(list);
         return done;
       },
       kTwice, noConf},
      {"server list, clearing", client,
       [](World&) {
         void* const list = OpenServerList();
         bool const done = list != nullptr && ClearServerList(list) == 1;
         CloseServerList(list);
         return done;
       },
       0, noConf},
      {"UPS types", unit,
       [](World& w) {
         void* const list = OpenUPSTypeList(nullptr);
         UpsTypeItem item = {};
         int const first = GetUPSTypeListItem(list, 1, &item);
         int const second = GetUPSTypeListItemByType(list, 7, &item);
         w.Note("%s", item.upsName);
         CloseUPSTypeList(list);
         return first == 1 && second == 1;
       },
       kReader},
      {"GetUPSModelName", WithRoot({{"root/upstype.cfg", types}, {"root/default/upscfg03.cfg", models}}),
       [](World& w) {
         char name[40] = "";
         int const done = GetUPSModelName(3, 2, name, sizeof name);
         w.Note("%s", name);
         return done == 1;
       },
       kReader},
      {"GetZelvaneVersionInfo", WithRoot({{"root/zelconfig", ""}, {"root/zelcli07", ""}}),
       [](World& w) {
         VersionInfo info = {};
         int const done = GetZelvaneVersionInfo(&info);
         w.Note("%d %s", info.modules, info.version);
         return done == 1;
       },
       kReader},
      {"GetZelvaneInstalledModules", WithRoot({{"root/zelbrws", ""}}),
       [](World& w) {
         unsigned short mask = 0;
         int const done = GetZelvaneInstalledModules(&mask);
         w.Note("%d", mask);
         return done == 1;
       },
       kReader},
      {"serial ports",
       {},
       [](World& w) {
         void* ports = &w;  // not a handle
         OpenEnumSerialPorts(&ports);
         return CloseEnumSerialPorts(ports) == 1;
       },
       kAnyNotes},
      {"GetOSVersionInfo",
       {},
       [](World&) {
         char text[200];
         return GetOSVersionInfo(text, sizeof text) == 1;
       },
       kAnyNotes},
  };
}

}  // namespace stress
