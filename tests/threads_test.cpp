// Objects are one thread's own; separate ones do not disturb each other. Meant for the thread sanitizer, true without.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/settings.h"
#include "zelvane/zelvane.h"

// The C library guards its time zone by a lock that the sanitizer does not see.
extern "C" char const* __tsan_default_suppressions();
extern "C" char const* __tsan_default_suppressions() { return "race:tzset_internal\nrace:tzfile\nrace:__tz_convert\n"; }

namespace {

// Runs the body in threads that begin together, with a number of their own each.
void InThreads(std::function<void(std::string const&)> const& body) {
  constexpr int kThreads = 4;
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; i++)
    threads.emplace_back([&, i] {
      for (waiting--; waiting > 0;) std::this_thread::yield();
      for (int round = 0; round < 5; round++) body(std::to_string(i));
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ObjectsOfTheirOwn) {
  test::Installation root;
  InThreads([&](std::string const& me) {
    CfgClass cfg;
    cfg.SetCached(true);
    root.Write("cfg" + me, "[A]\nk = 1\n");
    EXPECT_TRUE(cfg.Open(root.Path("cfg" + me)) && cfg.WriteDateTime("A", "t", nullptr, GetDateTime()) && cfg.Flush());
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
    Hash_RipeMD256 hash;
    Cipher_Safer_SK64 cipher;
    cipher.SetHash(&hash);
    EXPECT_TRUE(cipher.InitKey("phrase", nullptr));
    EXPECT_NE("", FormatDateTime(GMTToLocalDateTime(GetGMTDateTime()), "%c"));
    EXPECT_EQ("1.50000", FloatToStr(StrToFloatDef("1.5", 0), 0, 6));
  });
}

TEST(Threads, PlainFunctions) {
  test::Installation root;
  root.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1\n");
  root.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n");
  root.Write("root/zellang.cfg", "[LANG]\n1 = English\n[1]\n1 = on\n");
  root.Write("root/log", std::string(68, 'r'));
  InThreads([&](std::string const& me) {
    ClientConfig client;
    EXPECT_EQ(1, GetClientConfig(&client));
    ShutSrvConfig shut;
    EXPECT_EQ(1, GetShutSrvConfig("", &shut));
    UpsSrvConfig ups;
    GetUpsSrvDefConfig(&ups);
    root.Write("root/u" + me + "/x", "");
    EXPECT_EQ(1, SetUpsSrvConfig(root.Root("u" + me).c_str(), &ups, 0) *
                     GetUpsSrvConfig(root.Root("u" + me).c_str(), &ups, 0));
    VersionInfo info = {};
    EXPECT_EQ(1, GetZelvaneVersionInfo(&info));
    void* const servers = OpenServerList();
    void* const types = OpenUPSTypeList(nullptr);
    void* const lang = OpenLang(1);
    void* const log = LogReaderOpen(root.Root("log").c_str());
    EXPECT_EQ(1, GetServerListCount(servers) * GetUPSTypeListCount(types) * static_cast<int>(LogReaderRegCount(log)));
    EXPECT_STREQ("on", GetLangStr(lang, 1));
    CloseServerList(servers);
    CloseUPSTypeList(types);
    CloseLang(lang);
    LogReaderClose(log);
    void* const prog = OpenProgList(root.Path("prog" + me).c_str());
    reg_proglist const entry = {2000000000};
    EXPECT_EQ(1, AddProgListReg(prog, &entry));
    EXPECT_EQ(1, CloseProgList(prog));
    void* const list = OpenBrwsList(root.Path("brws" + me).c_str());
    BrwsGroupRec group = {};
    std::strcpy(group.name, "g");
    EXPECT_EQ(1, AddBrwsGroup(list, &group, true, nullptr, true));
    EXPECT_EQ(1, CloseBrwsList(list));
    int running = -1;
    EXPECT_TRUE(GetProcStatus("no such process", &running) && running == 0);
    char text[99];
    EXPECT_EQ(1, GetOSVersionInfo(text, sizeof text));
    void* ports = nullptr;
    OpenEnumSerialPorts(&ports);
    EXPECT_EQ(1, CloseEnumSerialPorts(ports));
  });
}

}  // namespace
