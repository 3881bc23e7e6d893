// Objects are one thread's own; separate ones do not disturb each other. Meant for the thread sanitizer, true without.
// The threads have small stacks, as some of the product's programs give theirs.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/processes.h"
#include "support/services.h"
#include "support/settings.h"
#include "zelvane/zelvane.h"

// The C library guards its time zone by a lock that the sanitizer does not see.
extern "C" char const* __tsan_default_suppressions();
extern "C" char const* __tsan_default_suppressions() { return "race:tzset_internal\nrace:tzfile\nrace:__tz_convert\n"; }

namespace {

constexpr int kThreads = 4;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStack = 1 << 20;  // sanitizers make every frame larger
#else
constexpr std::size_t kStack = 32 * 1024;
#endif

using Body = std::function<void(std::string const&)>;

struct Thread {
  pthread_t id = {};
  std::string name;
  Body const* body = nullptr;
  std::atomic<int>* waiting = nullptr;

  static void* Run(void* argument) {
    auto const& me = *static_cast<Thread*>(argument);
    for (--*me.waiting; *me.waiting > 0;) std::this_thread::yield();
    for (int round = 0; round < 5; round++) (*me.body)(me.name);
    return nullptr;
  }
};

// Runs the body five times in threads that begin together, with a number of their own each.
void InThreads(Body const& body) {
  std::atomic<int> waiting{kThreads};
  Thread threads[kThreads];
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  for (int i = 0; i < kThreads; i++) {
    threads[i] = {{}, std::to_string(i), &body, &waiting};
    ASSERT_EQ(pthread_create(&threads[i].id, &attributes, Thread::Run, &threads[i]), 0);
  }
  for (Thread const& thread : threads) pthread_join(thread.id, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(Threads, ObjectsOfTheirOwn) {
  test::Installation root;
  InThreads([&](std::string const& me) {
    CfgClass cfg;
    cfg.SetCached(true);
    root.Write("cfg" + me, "[A]\nk = 1\n");
    EXPECT_TRUE(cfg.Open(root.Path("cfg" + me)) && cfg.WriteDateTime("A", "t", nullptr, GetDateTime()) && cfg.Flush());
    RegCfgClass reg;
    EXPECT_TRUE(reg.Open(root.Write("reg" + me, "")) && reg.WriteStr("A", "k", "1") && reg.Close());
    LogClass log;
    log.SetFile(root.Path("log" + me));
    log.SetMaxLines(3);
    EXPECT_TRUE(log.WriteReg("ab", 2));
    TextLogClass text;
    text.SetFile(root.Path("text" + me));
    EXPECT_TRUE(text.WriteLine("line"));
    LangClass lang;
    lang.SetFileName(root.Path("lang" + me));
    EXPECT_TRUE(lang.SetLangStr(1, "text", 1));
    EncodeBase64 codec;
    EXPECT_EQ("AA==", codec.EncodeStr(""));
    EXPECT_EQ("", DecodeBase64().DecodeStr("AA=="));
    Hash_RipeMD256 hash;
    CipherManager cipher;
    cipher.SetAlgorithm(CIPHER_SAFER_SK64);
    cipher.GetCipherObject()->SetHash(&hash);
    EXPECT_TRUE(cipher.InitKey("phrase") && cipher.EncodeFile(root.Path("cfg" + me), root.Path("coded" + me)));
    EXPECT_NE("", FormatDateTime(GMTToLocalDateTime(GetGMTDateTime()), "%c"));
    EXPECT_EQ("1.50000", FloatToStr(StrToFloatDef("1.5", 0), 0, 6));
    EXPECT_TRUE(CpFile(root.Path("cfg" + me), root.Path("copy" + me), 0, true));
    EXPECT_TRUE(codec.EncodeFile(root.Path("cfg" + me), root.Path("b64" + me)));
    EXPECT_EQ(remove(GetTmpFileName().c_str()), 0);
    EXPECT_NE("", GetOSVersion() + GetUserPath());
  });
}

// Settings and lists that nobody writes: every thread sees the same.
TEST(Threads, FunctionsThatRead) {
  test::Installation root;
  root.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1\n");
  root.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n");
  root.Write("root/zellang.cfg", "[LANG]\n1 = English\n[1]\n1 = on\n");
  root.Write("root/srvlist.cfg", "[SRVLIST]\n7 = 007\n");
  root.Write("root/log", std::string(68, 'r'));
  InThreads([&](std::string const&) {
    ClientConfig client;
    ShutSrvConfig shut;
    UpsSrvConfig ups;
    EXPECT_EQ(2, GetClientConfig(&client) + GetClientDefConfig(&client));
    EXPECT_EQ(2, GetShutSrvConfig("", &shut) + GetShutSrvDefConfig(&shut));
    EXPECT_EQ(1, GetUpsSrvDefConfig(&ups));
    VersionInfo info = {};
    EXPECT_EQ(2, GetZelvaneVersionInfo(&info) + GetZelvaneInstalledModules(&info.modules));
    EXPECT_EQ(GetZelvanePath() + "rest", ParseMacroFileName("//BASEDIR//rest", ""));
    char text[99];
    EXPECT_EQ(1, GetUpsListCount() * GetUpsListItem(0, text));
    EXPECT_EQ(1, GetOSVersionInfo(text, sizeof text));
    EXPECT_EQ(geteuid() == 0, CurrentUserIsAdmin() == 1);

    void* const servers = OpenServerList();
    ServerListItem server;
    unsigned key = 7;
    EXPECT_EQ(1, GetServerListCount(servers) * GetServerListItem(servers, 0, &server));
    EXPECT_EQ(1, GetServerListItem2(servers, 0, &server, &key) * CloseServerList(servers));
    void* const types = OpenUPSTypeList(nullptr);
    UpsTypeItem type;
    EXPECT_EQ(1, GetUPSTypeListCount(types) * GetUPSTypeListItem(types, 0, &type));
    EXPECT_EQ(1, GetUPSTypeListItemByType(types, 0, &type) * CloseUPSTypeList(types));
    EXPECT_EQ(1, GetUPSModelName(-1, 0, text, sizeof text) * GetUPSCapabilities(0, &key));
    void* ports = nullptr;
    unsigned char number = 0;
    int const found = OpenEnumSerialPorts(&ports);
    EXPECT_EQ(found > 0, GetEnumSerialPorts(ports, 0, &number) == 1);
    EXPECT_EQ(1, CloseEnumSerialPorts(ports));

    void* const lang = OpenLang(1);
    EXPECT_STREQ("on", GetLangStr(lang, 1));
    EXPECT_STREQ("on", GetSystemLangStr(lang, 1));
    EXPECT_EQ(1, static_cast<int>(GetLangCount(lang)) * GetLangDesc(lang, 1, text, sizeof text));
    CloseLang(lang);
    void* const log = LogReaderOpen(root.Root("log").c_str());
    long when = 0;
    short const end = 1;
    EXPECT_EQ(1, static_cast<int>(LogReaderRegCount(log)) * LogReaderReadReg(log, 0, &when, text));
    EXPECT_EQ(1U, LogReaderCountEvents(log, 0x7272, 0, when + 86400));
    EXPECT_EQ(0, LogReaderTimeEvents(log, 1, 2, 3, 0, when) + LogReaderTimeEvents2(log, 1, &end, 1, 0, when));
    EXPECT_EQ(1, LogReaderClose(log));
    void* records = nullptr;
    EXPECT_EQ(0U, Load_Zelvane3x_Log(root.Root("log").c_str(), &records));
    Close_Zelvane3x_Log(&records);
    int fields[6];
    EXPECT_EQ(1, DecodeProgDateTime(when, fields, fields + 1, fields + 2, fields + 3, fields + 4, fields + 5));
    EXPECT_EQ(when, EncodeProgDateTime(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]));
  });
}

TEST(Threads, FunctionsThatWriteFilesOfTheirOwn) {
  test::Installation root;
  InThreads([&](std::string const& me) {
    UpsSrvConfig ups;
    GetUpsSrvDefConfig(&ups);
    root.Write("root/u" + me + "/x", "");
    EXPECT_EQ(1, SetUpsSrvConfig(root.Root("u" + me).c_str(), &ups, 0) *
                     GetUpsSrvConfig(root.Root("u" + me).c_str(), &ups, 0));
    void* const prog = OpenProgList(root.Path("prog" + me).c_str());
    reg_proglist entry = {2000000000};
    EXPECT_EQ(1, AddProgListReg(prog, &entry) * GetProgListRegByIndex(prog, 0, &entry));
    EXPECT_EQ(1U, GetProgListRegCount(prog));
    EXPECT_EQ(1, RemProgListReg(prog, &entry) * ClearProgList(prog) * CloseProgList(prog));

    void* const list = OpenBrwsList(root.Path("brws" + me).c_str());
    BrwsGroupRec group = {0, "g", -1};
    BrwsComputerRec computer = {0, "c", "10.0.0.1", 0};
    BrwsNobreakRec unit = {0, "u", 0, 0};
    unsigned long id = 7;
    EXPECT_EQ(1, AddBrwsGroup(list, &group, false, &id, true) * AddBrwsComputer(list, &computer, false, &id, true) *
                     AddBrwsNobreak(list, &unit, false, &id, true));
    EXPECT_EQ(1, EditBrwsGroup(list, &group, true) * EditBrwsComputer(list, &computer, true) *
                     EditBrwsNobreak(list, &unit, true));
    EXPECT_EQ(1U, GetBrwsGroupsCount(list) * GetBrwsComputersCount(list) * GetBrwsNobreaksCount(list));
    EXPECT_EQ(1, GetBrwsGroupByIndex(list, 0, &group) * GetBrwsComputerByIndex(list, 0, &computer) *
                     GetBrwsNobreakByIndex(list, 0, &unit));
    EXPECT_TRUE(UpdateBrwsFileDate(list, true) == 1 && GetBrwsFileDate(list) > 0);
    for (auto remove : {RemoveBrwsNobreak, RemoveBrwsNobreakByComputer, RemoveBrwsComputer, RemoveBrwsComputerByGroup,
                        RemoveBrwsGroup, RemoveBrwsGroupByGroup})
      EXPECT_EQ(1, remove(list, 0, true));
    for (auto clear : {ClearBrwsGroupsList, ClearBrwsComputersList, ClearBrwsNobreaksList})
      EXPECT_EQ(1, clear(list, true));
    EXPECT_EQ(1, CloseBrwsList(list));
  });
}

// What one of them has saved another one may replace: each call succeeds, and the files stay whole.
TEST(Threads, FunctionsThatWriteTheSameFiles) {
  test::Installation root;
  root.Write("root/upscli.cfg", "# kept\n[CLILIST]\n0 = a;b;1\n");
  root.Write("root/srvlist.cfg", "[SRVLIST]\n7 = 007\n");
  root.Write("root/007/upssrv.cfg", "");
  root.Write("home/.zellang.cfg", "[1]\n1 = on\n");
  std::atomic<int> serial{0};
  InThreads([&](std::string const&) {
    ClientConfig client;
    GetClientDefConfig(&client);
    ShutSrvConfig shut;
    GetShutSrvDefConfig(&shut);
    EXPECT_EQ(1, SetClientConfig(&client) * SetShutSrvConfig("", &shut));
    ServerListItem server = {};
    std::strcpy(server.serverName, std::to_string(serial++).c_str());  // nobody else adds it
    void* const servers = OpenServerList();
    EXPECT_EQ(1, AddServerListItem(servers, &server) * RemServerListItem(servers, &server));
    EXPECT_EQ(1, AddServerListItem2(servers, &server, 9) * RemServerListItem2(servers, 9));
    EXPECT_EQ(1, ClearServerList(servers) * CloseServerList(servers));
    EXPECT_EQ(1, AddUpsListItem("7") * RemUpsListItem("9"));
    void* const lang = OpenLang(1);
    EXPECT_EQ(1, SetLangStr(lang, 2, "off"));
    CloseLang(lang);
  });
  EXPECT_EQ("[1]\n1 = on\n2 = off\n", root.Read("home/.zellang.cfg"));
  EXPECT_EQ("[SRVLIST]\n7 = 007\n", root.Read("root/srvlist.cfg"));
  EXPECT_EQ(0U, root.Read("root/upscli.cfg").find("# kept\n"));
}

// A cancellation that is pending takes effect at the next blocking call: not at one inside these functions.
TEST(Threads, ACancelledThreadFinishesItsFunctions) {
  test::Installation root;
  test::FakePs const ps("  PID  PPID  NI COMMAND         COMMAND\n    1     0   0 init            /sbin/init\n", 0);
  root.Write("root/srvlist.cfg", "[SRVLIST]\n7 = 007\n");
  root.Write("root/log", std::string(68, 'r'));
  struct Calls {
    std::string log, list, prog;
    int done = 0;
    static void* Run(void* argument) {
      pthread_cancel(pthread_self());
      MakeAll(*static_cast<Calls*>(argument));
      pthread_testcancel();  // with nothing in this frame: the address sanitizer does not follow such an end
      return nullptr;
    }
    static void MakeAll(Calls& me) {
      ShutSrvConfig shut = {};
      BrwsGroupRec group = {0, "g", -1};
      reg_proglist entry = {2000000000};
      unsigned long id = 0;
      int running = 0;
      me.done += GetShutSrvConfig("", &shut) + SetShutSrvConfig("", &shut) + (GetUpsListCount() == 1);
      me.done += LogReaderClose(LogReaderOpen(me.log.c_str()));
      void* const list = OpenBrwsList(me.list.c_str());
      me.done += AddBrwsGroup(list, &group, false, &id, false);
      me.done += CloseBrwsList(list);
      void* const prog = OpenProgList(me.prog.c_str());
      me.done += AddProgListReg(prog, &entry);
      me.done += CloseProgList(prog);
      void* const lang = OpenLang(1);
      me.done += SetLangStr(lang, 1, "on");
      CloseLang(lang);
      me.done += GetProcStatus("init", &running);
      me.done += running;
      CloseSvcManager(OpenSvcManager());
      me.done += DirExists("/");
      me.done += FilePermToWrite(me.log);
      me.done += CpFile(me.log, me.log + ".copy", 0, true);
      me.done += GetTmpPath(false) != "";
      me.done += GetExeName(false) != "";
      me.done += GetOSVersion() != "";
    }
  } calls = {root.Root("log"), root.Path("browse"), root.Path("schedule")};
  pthread_t thread;
  void* result = nullptr;
  ASSERT_EQ(pthread_create(&thread, nullptr, Calls::Run, &calls), 0);
  pthread_join(thread, &result);
  EXPECT_EQ(calls.done, 17);
  EXPECT_EQ(result, PTHREAD_CANCELED) << "afterwards it is cancelled as before";
}

TEST(Threads, ProcessesAndServices) {
  test::FakePs const ps("  PID  PPID  NI COMMAND         COMMAND\n    1     0   0 init            /sbin/init\n", 0);
  test::Services services[kThreads];
  for (test::Services& each : services) {
    each.Add("absent");
    ASSERT_TRUE(each.Update());
  }
  InThreads([&](std::string const& me) {
    void* const manager = static_cast<SvcManager*>(&services[std::stoi(me)]);
    int running = 7, automatic = 7;
    EXPECT_TRUE(SetSvcAuto(manager, "absent", 1) && GetSvcStatus(manager, "absent", &running, &automatic));
    EXPECT_EQ(1, 10 * running + automatic);
    EXPECT_TRUE(SvcStop(manager, "absent"));
    EXPECT_FALSE(SvcStart(manager, "absent") || SvcRestart(manager, "absent"));
    EXPECT_TRUE(GetProcStatus("init", &running) && running == 1);
    EXPECT_FALSE(KillProc("absent") || AlreadyRunning());
    EXPECT_FALSE(GetProcAuto("init", &automatic) || SetProcAuto("init", 1));
    EXPECT_TRUE(CreateNewProc(":", 0));
    void* const installed = OpenSvcManager();  // null where the machine has no init scripts
    EXPECT_EQ(CloseSvcManager(installed), installed != nullptr);
  });
  // Later than that: the threads wait for processes of their own.
  while (waitpid(-1, nullptr, 0) > 0) {
  }
  for (test::Services& each : services)
    EXPECT_EQ("stop\nstart\nstop\nstart\nstop\nstart\nstop\nstart\nstop\nstart\n", each.Log());
}

}  // namespace
