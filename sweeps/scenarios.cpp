#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "support/processes.h"
#include "sweeps/shim.h"
#include "sweeps/world.h"
#include "zelvane/zelvane.h"

namespace sweeps {
namespace {

constexpr long kNow = SHIM_NOW;
constexpr unsigned long kPayload = 64;

std::string const kConf = "[ZELVANE]\nPATH = <root>\nVERSION = 5.1\nZELSRV = 1\n";
std::string const kUser = "; mine\n[ZELVANE]\nLangId = 2\nColorSch = 1\n";
std::string const kCli =
    "# kept\n[SHUTSRV]\nZELSRV = ups;10.0.0.1;4000\nPOPUP = 1\n[CLILIST]\n0 = ups;10.0.0.1;4000\n1 = b;10.0.0.2;1\n"
    "[MAILSEND]\nPASSWORD = c2VjcmV0AA==\n[UPSCLI]\nLIBNAME = zelcli03\n";
std::string const kSrv =
    "[UPS]\nUPSTYPE = 7\nCOMMDL = usbhid\nCOMMPORT = 3\n; kept\n[TIMERS]\nMANUAL = 30\n[TCPIP]\nPORT = 4001\n";
std::string const kTypes = "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n7 = Ups 7;drv7;zelcfg07;zelcli07;3\n";
std::string const kUsb = "[USBHID]\n2 = 99\n";
std::string const kModel = "[INIT]\nICARGABAT = CARGABATHI\nENVOLTREDE = SENSLOW\n[2]\nMODELO = Two\n";
std::string const kLang = "[LANG]\n1 = English\n[1]\n12 = on\n13 = off\n";
std::string const kBrowse =
    "[GROUPS]\n0 = all;-1\n1 = sub;0\n2 = deep;1\n[COMPUTERS]\n0 = pc;10.0.0.1;1\n1 = pd;10.0.0.2;2\n[NOBREAKS]\n"
    "0 = u0;10.0.0.1;1;0\n1 = u1;10.0.0.2;1;1\n2 = u2;127.0.0.1;1;-1\n[DATE]\nDATETIME = 5\n";

std::string Record(long stamp, std::size_t payload = kPayload) {
  std::string record(4 + payload, static_cast<char>(stamp % 251));
  for (int i = 0; i < 4; i++) record[static_cast<std::size_t>(i)] = static_cast<char>(stamp >> 8 * i);
  record[4] = static_cast<char>(stamp % 3);
  record[5] = 0;
  return record;
}

std::string Log(long count) {
  std::string log;
  for (long i = 0; i < count; i++) log += Record(i);
  return log;
}

std::string ManyKeys(int count = 40) {
  std::string file = "[S]\n";
  for (int i = 10; i < 10 + count; i++) file += "K" + std::to_string(i) + " = " + std::to_string(i) + "\n";
  return file;
}

std::string Schedule() {
  std::string file;
  for (long day = 1; day < 4; day++) file += Record(kNow + 86400 * day).substr(0, 4);
  return file;
}

std::string PsOutput() {
  return "  PID  PPID  NI COMMAND         COMMAND\n    1     0   0 init            /sbin/init\n   77     1 -20 upssrv  "
         "        "
         "/opt/upssrv -d\n";
}

template <std::size_t N>
void Put(char (&field)[N], char const* text) {
  std::strncpy(field, text, N);
}

// Whether the only file is as it was, but for lines that begin with this letter.
bool KeepsAllBut(char letter, Files const& before, Files const& after) {
  std::string kept = after.at("root/a.cfg");
  for (std::size_t at = 0; (at = kept.find(std::string("\n") + letter, at)) != std::string::npos;)
    kept.erase(at, kept.find('\n', at + 1) - at);
  return after.size() == 1 && kept == before.at("root/a.cfg");
}

// The bytes of a record as one number.
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

unsigned char const* Payload(long stamp) {
  static unsigned char bytes[kPayload];
  std::memset(bytes, static_cast<int>(stamp % 251), sizeof bytes);
  bytes[0] = static_cast<unsigned char>(stamp % 3);
  bytes[1] = 0;
  return bytes;
}

bool Append(World& world, long stamp, unsigned long most) {
  LogClass log;
  if (log.SetFile(world.Root("logevt.rgt")) != 1) return false;
  log.SetMaxLines(most);
  return log.WriteReg(stamp, Payload(stamp), kPayload);
}

template <class File, class Body>
bool Change(World& world, char const* name, bool cached, Body&& body) {
  File file;
  file.SetCached(cached);
  if (!file.Open(world.Root(name))) return false;
  return body(file) && (!cached || file.Flush()) && file.Close();
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

// Every operation that changes a browse list, one after the other; how many told success. What comes behind one that
// ran out of memory is refused.
int ChangeBrowseList(void* list) {
  BrwsGroupRec const group = {1, "a group with a long name", 1};
  BrwsComputerRec const computer = {1, "a computer with a long name", "2001:db8:0:0:0", 1};
  BrwsNobreakRec const unit = {1, "a unit with a long name", 0, 1}, orphan = {0, "a unit without a computer", 0, 77};
  int done = 0;
  for (int const told :
       {AddBrwsGroup(list, &group, true, nullptr, true), AddBrwsComputer(list, &computer, false, nullptr, true),
        AddBrwsNobreak(list, &unit, true, nullptr, false), AddBrwsNobreak(list, &orphan, false, nullptr, true),
        EditBrwsGroup(list, &group, true), EditBrwsComputer(list, &computer, true), EditBrwsNobreak(list, &unit, true),
        UpdateBrwsFileDate(list, true), RemoveBrwsNobreak(list, 2, true), RemoveBrwsNobreakByComputer(list, 1, true),
        RemoveBrwsComputer(list, 1, true), RemoveBrwsComputerByGroup(list, 1, true),
        RemoveBrwsGroupByGroup(list, 1, true), RemoveBrwsGroup(list, 0, true), ClearBrwsGroupsList(list, true),
        ClearBrwsComputersList(list, true), ClearBrwsNobreaksList(list, true)})
    done += told;
  return done;
}

// The services of the folder init.d.
class Services : public SvcManager {
 public:
  explicit Services(World& world) : folder_(world.Path("init.d/")) {}
  bool GetDaemonInfo(std::string const& dir) override {
    return dir == "/etc/init.d/" && SvcManager::GetDaemonInfo(folder_);
  }

 private:
  std::string const folder_;
};

// Of a log that had nine records and gets one more, at most nine: the first may be gone, none else.
bool KeepsNewest(Files const&, Files const& after, bool ok) {
  auto const log = after.find("root/logevt.rgt");
  return log != after.end() && HoldsNewest(log->second, kPayload, ok ? 9 : 8, ok ? 9 : 8) && after.size() == 2;
}

// An object that goes saves the changes that it has taken before it ran out of memory, each of them whole.
bool IsChangedInOrder(Files const& before, Files const& after, bool ok) {
  std::string file = before.at("root/a.cfg");
  auto const insert = [&](std::string const& behind, std::string const& line) {
    file.insert(file.find(behind) + behind.size(), line);
  };
  bool known = !ok && after.at("root/a.cfg") == file;
  auto const step = [&](bool last) { known = known || ((last || !ok) && after.at("root/a.cfg") == file); };
  insert("POPUP = 1\n", "NEW = 5\n");
  step(false);
  file += "\n[NEW]";
  step(false);
  file += "\nA = 1";
  step(false);
  file.erase(file.find("1 = b;10.0.0.2;1\n"), 17);
  step(false);
  insert("\nA = 1", "\nT = " + DateTimeToStr(nullptr, kNow));
  step(false);
  file += "\nF = 1.500";
  step(true);
  return known && after.size() == 1;
}

std::vector<Scenario> Make() {
  Files const conf = {{"zelvane.conf", kConf}};
  auto const with = [&](Files files) {
    files.insert(conf.begin(), conf.end());
    return files;
  };
  Files const srv = with({{"root/007/upssrv.cfg", kSrv},
                          {"root/upstype.cfg", kTypes},
                          {"root/usbhid.cfg", kUsb},
                          {"root/007/upscfg03.cfg", kModel}});
  Files const cli = with({{"root/upscli.cfg", kCli}, {"home/.zelvane", kUser}});
  Files const browse = with({{"root/zelbrws.cfg", kBrowse}});
  Files const cfg = {{"root/a.cfg", kCli}};
  Files const ps = {{"only/output", PsOutput()}};
  std::vector<std::string> const model = {"root/upstype.cfg", "zelvane.conf", "root/007/upscfg03.cfg"};
  std::vector<std::string> const noConf = {"zelvane.conf"};

  return {
      // ---- Files ----
      {"CpFile",
       {{"root/a", std::string(150000, 'a')}, {"root/b", "old"}},
       [](World& w) { return CpFile(w.Root("a"), w.Root("c"), 0, false); },
       kPart},
      {"CpFile with progress, over a file",
       {{"root/a", std::string(70000, 'a')}, {"root/b", "old"}},
       [](World& w) {
         return CpFile([](void const*, unsigned long, unsigned long, unsigned short, bool) {}, w.Root("a"), w.Root("b"),
                       9, true);
       },
       kPart},
      {"GetTmpFileName",
       {},
       [](World&) {
         std::string const name = GetTmpFileName(false);
         return !name.empty() && name.find("XXXXXX") == std::string::npos && unlink(name.c_str()) == 0;
       },
       kAnyNotes},
      {"permissions and folders", cfg,
       [](World& w) {
         return FilePermToRead(w.Root("a.cfg")) && FilePermToWrite(w.Root("a.cfg")) && DirExists(w.Root(""));
       }},
      {"GetOSVersionInfo",
       {},
       [](World&) {
         char text[200];
         return GetOSVersionInfo(text, sizeof text) == 1;
       },
       kAnyNotes},
      // ---- The configuration engine ----
      {"CfgClass: a change", cfg,
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.WriteStr("SHUTSRV", "POPUP", "0"); });
       },
       kClass},
      {"CfgClass: many changes, one save",
       cfg,
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", true, [](auto& f) {
           return f.WriteInt("SHUTSRV", "NEW", 5) && f.WriteBool("NEW", "A", true) && f.DeleteKey("CLILIST", "1") &&
                  f.WriteDateTime("NEW", "T", nullptr, kNow) && f.WriteFloat("NEW", "F", 1.5, 0, 4);
         });
       },
       kClass,
       {},
       IsChangedInOrder},
      {"CfgClass: a change tried three times", cfg,
       [](World& w) {
         CfgClass file;
         if (!file.Open(w.Root("a.cfg"))) return false;
         for (int i = 0; i < 3; i++) {
           try {
             if (file.WriteStr("NEW", "A", "1") && file.WriteStr("NEW", "B", "2")) return file.Close();
           } catch (std::bad_alloc const&) {
           }
         }
         return false;
       },
       kClass},
      {"CfgClass: numbers of keys after a change tried three times",
       {{"root/a.cfg", ManyKeys()}},
       [](World& w) {
         CfgClass file;
         if (!file.Open(w.Root("a.cfg"))) return false;
         file.SetCached(true);
         bool done = false;
         for (int i = 0; i < 3 && !done; i++) {
           try {
             done =
                 file.GetKeyName("S", 30) != "" && file.WriteStr("S", "K15x", "1") && file.WriteStr("S", "K15y", "1");
           } catch (std::bad_alloc const&) {
           }
         }
         for (unsigned long i = 0; i < file.GetKeyCount("S"); i++) w.Note("%s ", file.GetKeyName("S", i).c_str());
         return done && file.Close();
       },
       kClass},
      {"CfgClass: a change to a file that could not be opened", cfg,
       [](World& w) {
         CfgClass file;
         try {
           file.Open(w.Root("a.cfg"));
         } catch (std::bad_alloc const&) {
         }
         return file.WriteStr("SHUTSRV", "POPUP", "0") && file.Close();
       },
       kClass},
      {"CfgClass: a section erased", cfg,
       [](World& w) { return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.EraseSection("CLILIST"); }); },
       kClass},
      {"CfgClass: many links to the file", cfg,
       [](World& w) {
         unlink(w.Root("linked"));
         if (link(w.Root("a.cfg"), w.Root("linked")) != 0) return false;
         bool const done =
             Change<CfgClass>(w, "linked", true, [](auto& f) { return f.WriteStr("NEW", "A", std::string(5, 'n')); });
         unlink(w.Root("linked"));
         return done;
       },
       kClass},
      {"CfgClass: a link to the file", cfg,
       [](World& w) {
         unlink(w.Root("link"));
         if (symlink("a.cfg", w.Root("link")) != 0) return false;
         bool const done = Change<CfgClass>(w, "link", false, [](auto& f) { return f.WriteStr("NEW", "A", "1"); });
         unlink(w.Root("link"));
         return done;
       },
       kClass},
      {"CfgClass: lines behind a syntax error are kept",
       {{"root/a.cfg", "[A]\nk = 1\n=\nlost = 1\n"}},
       [](World& w) { return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.WriteStr("A", "k", "2"); }); },
       kClass},
      {"CfgClass: SaveAs", cfg,
       [](World& w) {
         CfgClass file;
         return file.OpenReadOnly(w.Root("a.cfg")) && file.SaveAs(w.Root("b.cfg"));
       },
       kClass},
      {"CfgClass: Rename", cfg,
       [](World& w) {
         CfgClass file;
         return file.Open(w.Root("a.cfg")) && file.Rename(w.Root("b.cfg")) && file.WriteStr("N", "A", "1") &&
                file.Close();
       },
       kClass | kTwice},
      {"CfgClass: reading", cfg,
       [](World& w) {
         CfgClass file;
         if (!file.OpenReadOnly(w.Root("a.cfg"))) return false;
         for (unsigned long i = 0; i < file.GetSectionCount(); i++)
           w.Note("%s %lu ", file.GetSectionName(i).c_str(), file.GetKeyCount(file.GetSectionName(i)));
         w.Note("%ld %s", file.ReadInt("CLILIST", 0UL, 5), file.ReadStr("UPSCLI", "LIBNAME", "").c_str());
         return true;
       },
       kClass},
      {"CfgClass: a thousand keys by number, made and removed",
       {{"root/a.cfg", ManyKeys(1024)}},
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", true, [&](auto& f) {
           char name[8];
           unsigned sum = 0;
           for (int const way : {0, 1}) {
             for (int i = 0; i < 1100; i++) {
               std::snprintf(name, sizeof name, "J%04d", i);
               if (!(way == 0 ? f.WriteStr("S", name, "1") : f.DeleteKey("S", name))) return false;
               if (i % 50 == 0) sum = sum * 31 + static_cast<unsigned char>(f.GetKeyName("S", 900)[4]);
             }
           }
           w.Note("%x", sum);
           return f.GetKeyCount("S") == 1024;
         });
       },
       kClass,
       {},
       [](Files const& before, Files const& after, bool ok) {
         return ok ? after == before : KeepsAllBut('J', before, after);
       }},
      {"RegCfgClass: a change",
       {{"home/a.cfg", kUser}},
       [](World& w) {
         RegCfgClass file;
         return file.Open(w.Path("home/a.cfg")) && file.WriteInt("Zelvane", "New", 7) && file.Close();
       },
       kClass},
      {"ParseMacroFileName", conf,
       [](World&) {
         std::string const name = ParseMacroFileName("//LOGDOCSAVE//", "3");
         return !name.empty();
       }},
      // ---- The settings records ----
      {"GetUpsSrvConfig", srv,
       [](World& w) {
         UpsSrvConfig record = {};
         int const done = GetUpsSrvConfig(w.Root("007"), &record, 0);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"GetUpsSrvConfig without a file",
       conf,
       [](World& w) {
         UpsSrvConfig record = {};
         int const done = GetUpsSrvConfig(w.Root(""), &record, 0);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader,
       {},
       [](Files const&, Files const& after, bool) { return after.size() <= 2; }},
      {"SetUpsSrvConfig, serial line", srv, [](World& w) { return SetSrv(w, 0); }, 0, model},
      {"SetUpsSrvConfig, USB and model", srv, [](World& w) { return SetSrv(w, 1); }, 0, model},
      {"GetShutSrvConfig", cli,
       [](World& w) {
         ShutSrvConfig record = {};
         int const done = GetShutSrvConfig(nullptr, &record);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"SetShutSrvConfig", cli,
       [](World&) {
         ShutSrvConfig record;
         GetShutSrvDefConfig(&record);
         Put(record.mailPassword, "other");
         return SetShutSrvConfig("", &record) == 1;
       },
       0, noConf},
      {"SetShutSrvConfig, new files", with({{"home/", ""}}),
       [](World& w) {
         ShutSrvConfig record;
         GetShutSrvDefConfig(&record);
         return SetShutSrvConfig(w.Root(""), &record) == 1;
       }},
      {"GetClientConfig", cli,
       [](World& w) {
         ClientConfig record = {};
         int const done = GetClientConfig(&record);
         w.Note("%lx", Sum(record));
         return done == 1;
       },
       kReader},
      {"SetClientConfig", cli,
       [](World&) {
         ClientConfig record;
         GetClientDefConfig(&record);
         record.langId = 9;
         return SetClientConfig(&record) == 1;
       },
       0, noConf},
      // ---- Lists ----
      {"GetUpsListItem", with({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n7 = 007\n"}}),
       [](World& w) {
         char name[4] = "";
         int const done = GetUpsListItem(1, name);
         w.Note("%s", name);
         return done == 1;
       }},
      {"GetUpsListCount", with({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n7 = 007\n"}}),
       [](World&) { return GetUpsListCount() == 2; }},
      {"AddUpsListItem",
       with({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n"},
             {"root/default/zelcfg.cfg", "[FILES]\n0 = a.cfg\n1 = b.cfg\n"},
             {"root/default/a.cfg", "aaa"},
             {"root/default/b.cfg", "bbb"}}),
       [](World&) { return AddUpsListItem("7") == 1; }, kPart | kAdmin | kTwice},
      {"RemUpsListItem", with({{"root/srvlist.cfg", "[SRVLIST]\n1 = 001\n7 = 007\n"}}),
       [](World&) { return RemUpsListItem("7") == 1; }, 0, noConf},
      {"server list, reading", cli,
       [](World& w) {
         void* const list = OpenServerList();
         ServerListItem item = {};
         int const done = GetServerListItem(list, 1, &item);
         w.Note("%s", item.serverName);
         CloseServerList(list);
         return done == 1;
       },
       kReader},
      {"server list, adding and removing", cli,
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
      {"server list, clearing", cli,
       [](World&) {
         void* const list = OpenServerList();
         bool const done = list != nullptr && ClearServerList(list) == 1;
         CloseServerList(list);
         return done;
       },
       0, noConf},
      {"UPS types", srv,
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
      {"GetUPSModelName", with({{"root/upstype.cfg", kTypes}, {"root/default/upscfg03.cfg", kModel}}),
       [](World& w) {
         char name[40] = "";
         int const done = GetUPSModelName(3, 2, name, sizeof name);
         w.Note("%s", name);
         return done == 1;
       },
       kReader},
      {"GetZelvaneVersionInfo", with({{"root/zelconfig", ""}, {"root/zelcli07", ""}}),
       [](World& w) {
         VersionInfo info = {};
         unsigned short mask = 0;
         bool const done = GetZelvaneVersionInfo(&info) == 1 && GetZelvaneInstalledModules(&mask) == 1;
         w.Note("%d %d %s", info.modules, mask, info.version);
         return done;
       },
       kAnyNotes},
      {"serial ports",
       {},
       [](World&) {
         void* ports = nullptr;
         OpenEnumSerialPorts(&ports);
         return CloseEnumSerialPorts(ports) == 1;
       },
       kAnyNotes},
      // ---- Logs and the schedule ----
      {"record log, appending", {{"root/logevt.rgt", Log(3)}}, [](World& w) { return Append(w, 3, 1000000); }, kTwice},
      {"record log, new",
       {},
       [](World& w) { return Append(w, 3, 100); },
       kTwice,
       {},
       [](Files const&, Files const& after, bool ok) {
         return after == Files{{"root/logevt.rgt", Record(3)}} ||
                (!ok && (after.empty() || after == Files{{"root/logevt.rgt", ""}}));
       }},
      {"record log at its bound",
       {{"root/logevt.rgt", Log(9)}, {"root/other", ""}},
       [](World& w) { return Append(w, 9, 9); },
       kTwice,
       {},
       KeepsNewest},
      {"record log, damaged", {{"root/logevt.rgt", Log(3) + "x"}}, [](World& w) { return Append(w, 3, 100); }, kTwice},
      {"record log, reading",
       {{"root/logevt.rgt", Log(5)}},
       [](World& w) {
         LogClass log;
         if (log.SetFile(w.Root("logevt.rgt")) != 1) return false;
         long when = 0;
         unsigned char data[kPayload] = {};
         unsigned long const count = log.LoadFile(kPayload);
         bool const read = log.ReadReg(4, &when, data, kPayload);
         bool const direct = log.ReadFileReg(2, &when, data, kPayload);
         if (count != 5 || !read || !direct) return false;
         w.Note("%lu %ld %d", count, when, data[9]);
         return true;
       }},
      {"record log, emptying",
       {{"root/logevt.rgt", Log(5)}},
       [](World& w) {
         LogClass log;
         return log.SetFile(w.Root("logevt.rgt")) == 1 && log.ClearFile();
       }},
      {"text log",
       {{"root/a.log", "05/03/2004 08:07:09 1 on\n"}},
       [](World& w) {
         TextLogClass log;
         return log.SetFile(w.Root("a.log")) == 1 && log.WriteLine("off") && log.WriteLine(kNow, "on");
       },
       kTwice},
      {"log statistics",
       {{"root/logevt.rgt", Log(60)}},
       [](World& w) {
         void* const log = LogReaderOpen(w.Root("logevt.rgt"));
         unsigned long const count = LogReaderRegCount(log);
         w.Note("%lu %ld", LogReaderCountEvents(log, 1, 0, kNow), LogReaderTimeEvents(log, 0, 1, 2, 0, kNow));
         LogReaderClose(log);
         if (count != 60) w.TakeNotes();
         return count == 60;
       }},
      {"schedule, adding",
       {{"root/prog", Schedule()}},
       [](World& w) {
         void* const list = OpenProgList(w.Root("prog"));
         reg_proglist const entry = {static_cast<int32_t>(kNow + 50)};
         // A list that does not hold what it should is not for saving: that is up to the caller.
         bool const read = GetProgListRegCount(list) == 3;
         bool const added = read && AddProgListReg(list, &entry) == 1 && GetProgListRegCount(list) == 4;
         return CloseProgList(list) == 1 && added;
       },
       kTwice},
      {"schedule, removing at once",
       {{"root/prog", Schedule()}},
       [](World& w) {
         ProgList list;
         reg_proglist const entry = {static_cast<int32_t>(kNow + 86400)};
         return list.SetFile(w.Root("prog")) && list.GetRegCount() == 3 && list.RemReg(&entry);
       },
       kClass | kTwice},
      // ---- Languages, browse list ----
      {"language, reading", with({{"root/zellang.cfg", kLang}, {"home/.zellang.cfg", "[1]\n12 = mine\n"}}),
       [](World& w) {
         void* const lang = OpenLang(1);
         if (lang == nullptr) return false;
         w.Note("%s %s", GetLangStr(lang, 12), GetLangStr(lang, 13));
         CloseLang(lang);
         return true;
       },
       kReader},
      {"language, writing",
       with({{"root/zellang.cfg", kLang}, {"home/.zellang.cfg", "[1]\n12 = mine\n"}}),
       [](World&) {
         void* const lang = OpenLang(1);
         bool const done = SetLangStr(lang, 13, "ours") == 1;
         CloseLang(lang);
         return done;
       },
       0,
       {},
       [](Files const& before, Files const& after, bool ok) {
         bool const user = after.at("home/.zellang.cfg") == "[1]\n12 = mine\n13 = ours\n";
         std::string const system = "[LANG]\n1 = English\n[1]\n12 = on\n13 = ours\n";
         bool const sound =
             (user || after.at("home/.zellang.cfg") == before.at("home/.zellang.cfg")) &&
             (after.at("root/zellang.cfg") == system || after.at("root/zellang.cfg") == before.at("root/zellang.cfg"));
         return sound && (!ok || user || after.at("root/zellang.cfg") == system) && after.size() == before.size();
       }},
      {"browse list, reading", browse,
       [](World& w) {
         void* const list = OpenBrwsList(nullptr);
         BrwsComputerRec computer = {};
         BrwsNobreakRec unit = {};
         BrwsGroupRec group = {};
         int const a = GetBrwsComputerByIndex(list, 0, &computer), b = GetBrwsNobreakByIndex(list, 1, &unit),
                   c = GetBrwsGroupByIndex(list, 2, &group);
         bool const whole = GetBrwsGroupsCount(list) == 3 && a == 1 && b == 1 && c == 1;
         if (whole) w.Note("%s %s %s %ld", computer.name, unit.name, group.name, GetBrwsFileDate(list));
         return CloseBrwsList(list) == 1 && whole;
       }},
      {"browse list, adding and changing", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         BrwsComputerRec computer = {};
         Put(computer.name, "new");
         Put(computer.address, "10.0.0.9");
         bool const added = AddBrwsComputer(list, &computer, true, nullptr, true) == 1 &&
                            EditBrwsComputer(list, &computer, false) == 1;
         return CloseBrwsList(list) == 1 && added;
       },
       kTwice},
      {"browse list, every change", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         int const done = ChangeBrowseList(list);
         return CloseBrwsList(list) == 1 && done == 17;
       },
       kTwice},
      {"browse list, cascade", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         bool const done = RemoveBrwsGroup(list, 0, true) == 1;
         return CloseBrwsList(list) == 1 && done;
       }},
      // ---- Processes and services ----
      {"GetProcStatus", ps,
       [](World& w) {
         int running = -1;
         bool const done = GetProcStatus("upssrv", &running);
         w.Note("%d", running);
         return done;
       },
       kAnyNotes | kSlow},
      {"AlreadyRunning", ps, [](World&) { return !AlreadyRunning(); }, kAnyNotes | kSlow},
      {"KillProc of nobody", ps, [](World&) { return !KillProc("nobody") && test::TakeSignals().empty(); },
       kAnyNotes | kSlow},
      {"CreateNewProc",
       {},
       [](World&) {
         bool const started = CreateNewProc(":", 0);
         while (waitpid(-1, nullptr, 0) > 0) {
         }
         return started;
       },
       kSlow},
      {"services",
       {{"only/output", PsOutput()}, {"init.d/upssrv", "#!/bin/sh\n# description: ups\n:\n"}},
       [](World& w) {
         Services services(w);
         int running = -1, automatic = -1;
         if (!services.Update() || !GetSvcStatus(&services, "upssrv", &running, &automatic)) return false;
         w.Note("%d %d", running, automatic);
         return true;
       },
       kClass | kAnyNotes | kSlow},
      // ---- Base64 and ciphers ----
      {"Base64 of a file",
       {{"root/a", std::string(5000, 'a')}},
       [](World& w) {
         EncodeBase64 codec;
         return codec.EncodeFile(w.Root("a"), w.Root("b"));
       },
       kPart},
      {"Base64 back to a file",
       {{"root/a", "YWJjAA=="}, {"root/b", "old"}},
       [](World& w) {
         DecodeBase64 codec;
         return codec.DecodeFile(w.Root("a"), w.Root("b"));
       },
       kPart},
      {"cipher, a file",
       {{"root/a", std::string(70003, 'a')}},
       [](World& w) {
         Hash_RipeMD256 hash;
         CipherManager cipher;
         cipher.SetAlgorithm(CIPHER_SAFER_SK64);
         if (cipher.GetCipherObject() == nullptr) return false;
         cipher.GetCipherObject()->SetHash(&hash);
         return cipher.InitKey("phrase", nullptr) && cipher.EncodeFile(w.Root("a"), w.Root("b"));
       },
       kClass | kPart},
  };
}

}  // namespace

std::vector<Scenario> const& Scenarios() {
  static std::vector<Scenario> const all = Make();
  return all;
}

Scenario const& Find(std::string const& name) {
  for (Scenario const& scenario : Scenarios())
    if (name == scenario.name) return scenario;
  throw std::runtime_error("no scenario " + name);
}

bool HoldsNewest(std::string const& log, std::size_t payload, long newest, long last) {
  if (log.size() % (4 + payload) != 0) return false;
  for (long stamp = last - newest + 1; stamp <= last; stamp++) {
    std::string const record = Record(stamp, payload);
    std::size_t at = log.find(record);
    while (at != std::string::npos && at % (4 + payload) != 0) at = log.find(record, at + 1);
    if (at == std::string::npos) return false;
  }
  return true;
}

}  // namespace sweeps
