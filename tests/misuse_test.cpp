// Every exported plain function with what it must refuse: null pointers one by one, numbers out of range, char arrays
// without a NUL. Nothing may crash, change a file or keep a descriptor.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/settings.h"
#include "zelvane/zelvane.h"

namespace {

constexpr unsigned kFar = 4294967295U;

template <class Record>
Record Full() {
  Record record;
  std::memset(&record, 'x', sizeof record);
  return record;
}

// Each line is a call and what it gives.
#define REFUSES(failed, call) EXPECT_EQ(failed, call) << #call

class Misuse : public testing::Test {
 protected:
  Misuse() {
    root_.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1\n");
    root_.Write("root/zelbrws.cfg", "[GROUPS]\n0 = all;-1\n");
    root_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n");
    root_.Write("root/zellang.cfg", "[LANG]\n1 = English\n[1]\n1 = on\n");
    root_.Write("log", std::string(68, 'r'));
    names_ = root_.List();
    descriptors_ = test::OpenDescriptors();
  }
  ~Misuse() override {
    EXPECT_EQ(descriptors_, test::OpenDescriptors());
    EXPECT_EQ(names_, root_.List());
  }

  test::Installation root_;
  std::vector<std::string> names_;
  int descriptors_ = 0;
};

TEST_F(Misuse, NullHandles) {
  ServerListItem server = {};
  UpsTypeItem type = {};
  reg_proglist entry = {0};
  BrwsGroupRec group = {};
  BrwsComputerRec computer = {};
  BrwsNobreakRec unit = {};
  char text[8] = "kept";
  short codes[1] = {1};
  long when = 7;
  unsigned char number = 7;
  int flag = 7;
  unsigned key = 7;
  REFUSES(0, GetServerListCount(nullptr));
  REFUSES(0, GetServerListItem(nullptr, 0, &server));
  REFUSES(0, GetServerListItem2(nullptr, 0, &server, &key));
  REFUSES(0, AddServerListItem(nullptr, &server));
  REFUSES(0, AddServerListItem2(nullptr, &server, 1));
  REFUSES(0, RemServerListItem(nullptr, &server));
  REFUSES(0, RemServerListItem2(nullptr, 1));
  REFUSES(0, ClearServerList(nullptr));
  REFUSES(0, CloseServerList(nullptr));
  REFUSES(0, GetUPSTypeListCount(nullptr));
  REFUSES(0, GetUPSTypeListItem(nullptr, 0, &type));
  REFUSES(0, GetUPSTypeListItemByType(nullptr, 0, &type));
  REFUSES(0, CloseUPSTypeList(nullptr));
  REFUSES(0, GetEnumSerialPorts(nullptr, 0, &number));
  REFUSES(0, CloseEnumSerialPorts(nullptr));
  REFUSES(0, LogReaderClose(nullptr));
  REFUSES(0U, LogReaderRegCount(nullptr));
  REFUSES(0, LogReaderReadReg(nullptr, 0, &when, text));
  REFUSES(0U, LogReaderCountEvents(nullptr, 1, 0, 1));
  REFUSES(0, LogReaderTimeEvents(nullptr, 1, 2, 3, 0, 1));
  REFUSES(0, LogReaderTimeEvents2(nullptr, 1, codes, 1, 0, 1));
  REFUSES(0, CloseProgList(nullptr));
  REFUSES(0U, GetProgListRegCount(nullptr));
  REFUSES(0, GetProgListRegByIndex(nullptr, 0, &entry));
  REFUSES(0, AddProgListReg(nullptr, &entry));
  REFUSES(0, RemProgListReg(nullptr, &entry));
  REFUSES(0, ClearProgList(nullptr));
  REFUSES(nullptr, GetLangStr(nullptr, 1));
  REFUSES(nullptr, GetSystemLangStr(nullptr, 1));
  REFUSES(0U, GetLangCount(nullptr));
  REFUSES(0, GetLangDesc(nullptr, 1, text, sizeof text));
  REFUSES(0, SetLangStr(nullptr, 1, "a"));
  CloseLang(nullptr);
  REFUSES(0, CloseBrwsList(nullptr));
  REFUSES(0, GetBrwsFileDate(nullptr));
  REFUSES(0, UpdateBrwsFileDate(nullptr, true));
  REFUSES(0U, GetBrwsGroupsCount(nullptr) + GetBrwsComputersCount(nullptr) + GetBrwsNobreaksCount(nullptr));
  REFUSES(0, GetBrwsGroupByIndex(nullptr, 0, &group));
  REFUSES(0, GetBrwsComputerByIndex(nullptr, 0, &computer));
  REFUSES(0, GetBrwsNobreakByIndex(nullptr, 0, &unit));
  REFUSES(0, AddBrwsGroup(nullptr, &group, true, nullptr, true));
  REFUSES(0, AddBrwsComputer(nullptr, &computer, true, nullptr, true));
  REFUSES(0, AddBrwsNobreak(nullptr, &unit, true, nullptr, true));
  REFUSES(0, EditBrwsGroup(nullptr, &group, true));
  REFUSES(0, EditBrwsComputer(nullptr, &computer, true));
  REFUSES(0, EditBrwsNobreak(nullptr, &unit, true));
  for (auto remove : {RemoveBrwsGroup, RemoveBrwsComputer, RemoveBrwsNobreak, RemoveBrwsGroupByGroup,
                      RemoveBrwsComputerByGroup, RemoveBrwsNobreakByComputer})
    REFUSES(0, remove(nullptr, -1, true));
  for (auto clear : {ClearBrwsGroupsList, ClearBrwsComputersList, ClearBrwsNobreaksList})
    REFUSES(0, clear(nullptr, true));
  REFUSES(false, CloseSvcManager(nullptr));
  REFUSES(false, GetSvcStatus(nullptr, "a", &flag, &flag));
  REFUSES(false,
          SvcStart(nullptr, "a") || SvcStop(nullptr, "a") || SvcRestart(nullptr, "a") || SetSvcAuto(nullptr, "a", 1));
  Close_Zelvane3x_Log(nullptr);
  EXPECT_EQ(7, flag);
  EXPECT_STREQ("kept", text);
  EXPECT_EQ(7, when);
}

TEST_F(Misuse, NullArguments) {
  REFUSES(0, GetClientConfig(nullptr) + GetClientDefConfig(nullptr) + SetClientConfig(nullptr));
  REFUSES(0, GetShutSrvConfig("", nullptr) + GetShutSrvDefConfig(nullptr) + SetShutSrvConfig(nullptr, nullptr));
  UpsSrvConfig cfg = {};
  REFUSES(0, GetUpsSrvConfig(nullptr, &cfg, 0) + GetUpsSrvConfig("", nullptr, 0) + GetUpsSrvDefConfig(nullptr));
  REFUSES(0, SetUpsSrvConfig(nullptr, &cfg, 0) + SetUpsSrvConfig("", nullptr, 0));
  REFUSES(0, GetUpsListItem(0, nullptr) + AddUpsListItem(nullptr) + RemUpsListItem(nullptr));
  REFUSES(0, GetUPSModelName(0, 0, nullptr, 9) + GetUPSCapabilities(0, nullptr) + GetOSVersionInfo(nullptr, 9));
  REFUSES(0, GetZelvaneVersionInfo(nullptr) + GetZelvaneInstalledModules(nullptr) + OpenEnumSerialPorts(nullptr));
  REFUSES(nullptr, LogReaderOpen(nullptr));
  REFUSES(nullptr, OpenProgList(nullptr));
  REFUSES(1, DecodeProgDateTime(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
  REFUSES(0U, Load_Zelvane3x_Log(nullptr, nullptr));
  int flag = 7;
  REFUSES(false, GetProcStatus(nullptr, &flag) || KillProc(nullptr) || CreateNewProc(nullptr, 0));
  REFUSES(false, GetProcAuto(nullptr, &flag) || SetProcAuto(nullptr, 1));
  EXPECT_EQ(7, flag);

  void* const servers = OpenServerList();
  REFUSES(1, GetServerListItem2(servers, 0, nullptr, nullptr));
  REFUSES(0, AddServerListItem(servers, nullptr) + AddServerListItem2(servers, nullptr, 1) +
                 RemServerListItem(servers, nullptr));
  CloseServerList(servers);
  void* const types = OpenUPSTypeList(nullptr);
  REFUSES(0, GetUPSTypeListItem(types, 0, nullptr) + GetUPSTypeListItemByType(types, 0, nullptr));
  CloseUPSTypeList(types);
  void* const lang = OpenLang(1);
  REFUSES(0, GetLangDesc(lang, 1, nullptr, 9) + SetLangStr(lang, 1, nullptr));
  CloseLang(lang);
  void* const log = LogReaderOpen(root_.Path("log").c_str());
  long when = 7;
  char data[64];
  REFUSES(0, LogReaderReadReg(log, 0, nullptr, data) + LogReaderReadReg(log, 0, &when, nullptr));
  REFUSES(0, LogReaderTimeEvents2(log, 1, nullptr, 1, 0, 1));
  LogReaderClose(log);
  void* const list = OpenBrwsList(nullptr);
  REFUSES(0, GetBrwsGroupByIndex(list, 0, nullptr) + GetBrwsComputerByIndex(list, 0, nullptr) +
                 GetBrwsNobreakByIndex(list, 0, nullptr));
  REFUSES(0, AddBrwsGroup(list, nullptr, true, nullptr, true) + AddBrwsComputer(list, nullptr, true, nullptr, true) +
                 AddBrwsNobreak(list, nullptr, true, nullptr, true));
  REFUSES(0, EditBrwsGroup(list, nullptr, true) + EditBrwsComputer(list, nullptr, true) +
                 EditBrwsNobreak(list, nullptr, true));
  CloseBrwsList(list);
}

TEST_F(Misuse, NumbersOutOfRange) {
  void* const servers = OpenServerList();
  ServerListItem server = {};
  void* const types = OpenUPSTypeList("");
  UpsTypeItem type = {};
  void* const log = LogReaderOpen(root_.Path("log").c_str());
  long when = 0;
  char data[64];
  void* const list = OpenBrwsList("");
  BrwsGroupRec group = {};
  char name[4] = "abc";
  for (unsigned const far : {1U, 2147483647U, 2147483648U, kFar}) {
    REFUSES(0, GetServerListItem(servers, far, &server));
    REFUSES(0, GetUPSTypeListItem(types, far, &type) + GetUPSTypeListItemByType(types, far, &type));
    REFUSES(0, LogReaderReadReg(log, far, &when, data));
    REFUSES(0, GetBrwsGroupByIndex(list, far, &group));
    REFUSES(0, GetUpsListItem(far, name));
  }
  REFUSES(0, GetBrwsGroupByIndex(list, ~0UL, &group));
  REFUSES(0, LogReaderReadReg(log, ~0UL, &when, data));
  void* const prog = OpenProgList(root_.Path("missing/prog").c_str());
  reg_proglist entry = {0};
  for (long const far : {-1L, 0L, 2147483647L, -2147483647L - 1}) REFUSES(0, GetProgListRegByIndex(prog, far, &entry));
  REFUSES(0, CloseProgList(prog));
  void* ports = nullptr;
  int const count = OpenEnumSerialPorts(&ports);
  unsigned char number = 7;
  for (int far = count; far < 256; far++)
    REFUSES(0, GetEnumSerialPorts(ports, static_cast<unsigned char>(far), &number));
  CloseEnumSerialPorts(ports);
  unsigned mask = 0;
  for (unsigned const far : {6U, kFar}) REFUSES(1, GetUPSCapabilities(far, &mask));
  void* const lang = OpenLang(-2147483647L - 1);
  for (long const far : {-1L, 2147483647L, -2147483647L - 1}) EXPECT_STREQ("", GetLangStr(lang, far));
  CloseLang(lang);
  EXPECT_EQ(4, CloseServerList(servers) + CloseUPSTypeList(types) + LogReaderClose(log) + CloseBrwsList(list));
  EXPECT_EQ(-1, EncodeProgDateTime(2147483647, 1, 1, 0, 0, 0));
  EXPECT_EQ(0, DecodeProgDateTime(-1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(Misuse, ArraysWithoutNul) {
  // Read by their width: a sanitizer, or the next field in the file, would tell.
  ClientConfig const client = Full<ClientConfig>();
  EXPECT_EQ(1, SetClientConfig(&client));
  ShutSrvConfig const shut = Full<ShutSrvConfig>();
  EXPECT_EQ(1, SetShutSrvConfig("", &shut));
  UpsSrvConfig const ups = Full<UpsSrvConfig>();
  EXPECT_EQ(1, SetUpsSrvConfig(root_.Root().c_str(), &ups, 0));
  ShutSrvConfig read = {};
  EXPECT_EQ(1, GetShutSrvConfig("", &read));
  EXPECT_EQ(std::string(255, 'x') + "|" + std::string(20, 'x'), std::string(read.mailTo) + "|" + read.mailPassword);
  void* const list = OpenBrwsList(nullptr);
  auto const computer = Full<BrwsComputerRec>();
  EXPECT_EQ(1, AddBrwsComputer(list, &computer, false, nullptr, true));
  BrwsComputerRec back = {};
  EXPECT_EQ(1, GetBrwsComputerByIndex(list, 0, &back));
  EXPECT_EQ(std::string(255, 'x') + "|" + std::string(15, 'x'), std::string(back.name) + "|" + back.address);
  CloseBrwsList(list);
  void* const servers = OpenServerList();
  auto const server = Full<ServerListItem>();
  EXPECT_EQ(1, ClearServerList(servers));
  EXPECT_EQ(1, AddServerListItem(servers, &server));
  CloseServerList(servers);
  char version[3] = {'a', 'b', 'c'};
  EXPECT_EQ(1, GetOSVersionInfo(version, 2));
  EXPECT_EQ('c', version[2]);
  names_ = root_.List();
}

}  // namespace
