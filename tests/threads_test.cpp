// Each object belongs to one thread; separate objects do not affect each other. Meant for the thread sanitizer, and
// useful without it. The threads have small stacks, like those of some of the product's programs.
#include <pthread.h>
#include <atomic>
#include <thread>

#include "support/processes.h"
#include "support/services.h"
#include "support/settings.h"
#include "support/test.h"
#include "zelvane/zelvane.h"

// The C library protects its time zone with a lock that the sanitizer does not see.
extern "C" char const* __tsan_default_suppressions();
extern "C" char const* __tsan_default_suppressions() { return "race:tzset_internal\nrace:tzfile\nrace:__tz_convert\n"; }

// There with the address sanitizer only.
extern "C" __attribute__((weak)) void __asan_handle_no_return();

namespace {

constexpr int kThreads = 4;
#ifdef ZELVANE_SANITIZED
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

// Runs the body in threads that start together; each has its own number.
void InThreads(Body const& body) {
  std::atomic<int> waiting{kThreads};
  Thread threads[kThreads];
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  for (int i = 0; i < kThreads; i++) {
    threads[i] = {{}, std::to_string(i), &body, &waiting};
    ASSERT_EQ(pthread_create(&threads[i].id, &attributes, Thread::Run, &threads[i]), 0) << i;
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
    EXPECT_ALL(cfg.Open(root.Path("cfg" + me)), cfg.WriteDateTime("A", "t", nullptr, GetDateTime()), cfg.Flush());
    RegCfgClass reg;
    EXPECT_ALL(reg.Open(root.Write("reg" + me, "")), reg.WriteStr("A", "k", "1"), reg.Close());
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
    EXPECT_EQ(codec.EncodeStr(""), "AA==");
    EXPECT_EQ(DecodeBase64().DecodeStr("AA=="), "");
    Hash_RipeMD256 hash;
    CipherManager cipher;
    cipher.SetAlgorithm(CIPHER_SAFER_SK64);
    cipher.GetCipherObject()->SetHash(&hash);
    EXPECT_ALL(cipher.InitKey("phrase"), cipher.EncodeFile(root.Path("cfg" + me), root.Path("coded" + me)));
    EXPECT_NE(FormatDateTime(GMTToLocalDateTime(GetGMTDateTime()), "%c"), "");
    EXPECT_EQ(FloatToStr(StrToFloatDef("1.5", 0), 0, 6), "1.50000");
    EXPECT_TRUE(CpFile(root.Path("cfg" + me), root.Path("copy" + me), 0, true));
    EXPECT_TRUE(codec.EncodeFile(root.Path("cfg" + me), root.Path("b64" + me)));
    EXPECT_EQ(remove(GetTmpFileName().c_str()), 0);
    EXPECT_NONE(GetOSVersion().empty(), GetUserPath().empty());
  });
}

// Every plain C function, on settings that no thread writes and on files of its own thread.
struct PlainFunctions {
  test::Installation root;
  test::FakePs ps{"  PID  PPID  NI COMMAND         COMMAND\n    1     0   0 init            /sbin/init\n", 0};
  test::Services services[kThreads];

  PlainFunctions() {
    root.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1\n");
    root.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n");
    root.Write("root/zellang.cfg", "[LANG]\n1 = English\n[1]\n1 = on\n");
    root.Write("root/srvlist.cfg", "[SRVLIST]\n7 = 007\n");
    root.Write("root/log", std::string(68, 'r'));
    for (int i = 0; i < kThreads; i++) {
      root.Write("root/u" + std::to_string(i) + "/x", "");
      services[i].Add("absent");
      services[i].Update();
    }
  }
  // After the calls, since the threads wait for their own processes.
  ~PlainFunctions() {
    while (wait(nullptr) > 0) {
    }
  }

  void CallAll(std::string const& me) {
    ClientConfig client;
    ShutSrvConfig shut;
    UpsSrvConfig ups;
    VersionInfo info = {};
    char text[99];
    unsigned key = 7;
    unsigned long id = 7;
    long when = 0;
    EXPECT_EACH(
        (GetClientConfig(&client), GetClientDefConfig(&client), GetShutSrvConfig("", &shut), GetShutSrvDefConfig(&shut),
         GetUpsSrvDefConfig(&ups), GetZelvaneVersionInfo(&info), GetZelvaneInstalledModules(&info.modules),
         GetUpsListCount(), GetUpsListItem(0, text), GetOSVersionInfo(text, sizeof text),
         GetUPSModelName(-1, 0, text, sizeof text), GetUPSCapabilities(0, &key)),
        1);
    EXPECT_EACH((ParseMacroFileName("//BASEDIR//rest", ""), CurrentUserIsAdmin()), GetZelvanePath() + "rest",
                geteuid() == 0 ? 1 : 0);
    std::string const unit = root.Root("u" + me);
    EXPECT_EACH((SetUpsSrvConfig(unit.c_str(), &ups, 0), GetUpsSrvConfig(unit.c_str(), &ups, 0)), 1);

    void* const servers = OpenServerList();
    ServerListItem server;
    EXPECT_EACH((GetServerListCount(servers), GetServerListItem(servers, 0, &server),
                 GetServerListItem2(servers, 0, &server, &key), CloseServerList(servers)),
                1);
    void* const types = OpenUPSTypeList(nullptr);
    UpsTypeItem type;
    EXPECT_EACH((GetUPSTypeListCount(types), GetUPSTypeListItem(types, 0, &type),
                 GetUPSTypeListItemByType(types, 0, &type), CloseUPSTypeList(types)),
                1);
    void* ports = nullptr;
    unsigned char number = 0;
    int const found = OpenEnumSerialPorts(&ports);
    EXPECT_EACH((GetEnumSerialPorts(ports, 0, &number), CloseEnumSerialPorts(ports)), found > 0 ? 1 : 0, 1);

    void* const lang = OpenLang(1);
    EXPECT_EACH((GetLangStr(lang, 1), GetSystemLangStr(lang, 1)), "on");
    EXPECT_EACH((GetLangCount(lang), GetLangDesc(lang, 1, text, sizeof text)), 1);
    CloseLang(lang);
    void* const log = LogReaderOpen(root.Root("log").c_str());
    EXPECT_EACH((LogReaderRegCount(log), LogReaderReadReg(log, 0, &when, text),
                 LogReaderCountEvents(log, 0x7272, 0, when + 86400)),
                1);
    short const end = 1;
    EXPECT_EACH((LogReaderTimeEvents(log, 1, 2, 3, 0, when), LogReaderTimeEvents2(log, 1, &end, 1, 0, when),
                 LogReaderClose(log)),
                0, 0, 1);
    void* records = nullptr;
    EXPECT_EQ(Load_Zelvane3x_Log(root.Root("log").c_str(), &records), 0U);
    Close_Zelvane3x_Log(&records);
    int f[6];
    EXPECT_EACH((DecodeProgDateTime(when, f, f + 1, f + 2, f + 3, f + 4, f + 5),
                 EncodeProgDateTime(f[0], f[1], f[2], f[3], f[4], f[5])),
                1, when);
    void* const prog = OpenProgList(root.Path("prog" + me).c_str());
    reg_proglist entry = {2000000000};
    EXPECT_EACH((AddProgListReg(prog, &entry), GetProgListRegByIndex(prog, 0, &entry), GetProgListRegCount(prog),
                 RemProgListReg(prog, &entry), ClearProgList(prog), CloseProgList(prog)),
                1);

    void* const list = OpenBrwsList(root.Path("brws" + me).c_str());
    BrwsGroupRec group = {0, "g", -1};
    BrwsComputerRec computer = {0, "c", "10.0.0.1", 0};
    BrwsNobreakRec nobreak = {0, "u", 0, 0};
    EXPECT_EACH((AddBrwsGroup(list, &group, false, &id, true), AddBrwsComputer(list, &computer, false, &id, true),
                 AddBrwsNobreak(list, &nobreak, false, &id, true), EditBrwsGroup(list, &group, true),
                 EditBrwsComputer(list, &computer, true), EditBrwsNobreak(list, &nobreak, true),
                 GetBrwsGroupsCount(list), GetBrwsComputersCount(list), GetBrwsNobreaksCount(list),
                 GetBrwsGroupByIndex(list, 0, &group), GetBrwsComputerByIndex(list, 0, &computer),
                 GetBrwsNobreakByIndex(list, 0, &nobreak), UpdateBrwsFileDate(list, true), GetBrwsFileDate(list) > 0),
                1);
    for (auto remove : {RemoveBrwsNobreak, RemoveBrwsNobreakByComputer, RemoveBrwsComputer, RemoveBrwsComputerByGroup,
                        RemoveBrwsGroup, RemoveBrwsGroupByGroup})
      EXPECT_EQ(remove(list, 0, true), 1);
    EXPECT_EACH((ClearBrwsGroupsList(list, true), ClearBrwsComputersList(list, true), ClearBrwsNobreaksList(list, true),
                 CloseBrwsList(list)),
                1);

    void* const manager = static_cast<SvcManager*>(&services[std::stoi(me)]);
    int running = 7, automatic = 7;
    EXPECT_EACH(
        (SetSvcAuto(manager, "absent", 1), GetSvcStatus(manager, "absent", &running, &automatic), running, automatic),
        true, true, 0, 1);
    EXPECT_EACH((SvcStop(manager, "absent"), SvcStart(manager, "absent"), SvcRestart(manager, "absent")), true, false,
                false);
    EXPECT_EACH((GetProcStatus("init", &running), running, CreateNewProc(":", 0)), true, 1, true);
    EXPECT_NONE(KillProc("absent"), AlreadyRunning(), GetProcAuto("init", &automatic), SetProcAuto("init", 1));
    void* const installed = OpenSvcManager();  // null on a machine without init scripts
    EXPECT_EQ(CloseSvcManager(installed), installed != nullptr);
  }
};

TEST(Threads, PlainFunctions) {
  PlainFunctions functions;
  InThreads([&](std::string const& me) { functions.CallAll(me); });
}

// A pending cancellation takes effect at the next blocking call, but not inside these functions.
TEST(Threads, ACancelledThreadFinishesItsFunctions) {
  struct Cancelled : PlainFunctions {
    bool done = false;
    static void* Run(void* argument) {
      pthread_cancel(pthread_self());
      static_cast<Cancelled*>(argument)->CallAll("0");
      static_cast<Cancelled*>(argument)->done = true;
      // Forgets the marks of the frames that a cancellation leaves.
      if (__asan_handle_no_return != nullptr) __asan_handle_no_return();
      pthread_testcancel();
      return nullptr;
    }
  } functions;
  pthread_t thread;
  void* result = nullptr;
  ASSERT_EQ(pthread_create(&thread, nullptr, Cancelled::Run, &functions), 0);
  pthread_join(thread, &result);
  EXPECT_TRUE(functions.done);
  EXPECT_EQ(result, PTHREAD_CANCELED) << "afterwards it is cancelled as before";
}

}  // namespace
