// Every exported plain function, and what of the toolkit its own tests leave out, with what it must refuse: null
// pointers one by one, numbers out of range, char arrays without a NUL. Nothing may crash, change a file or keep a
// descriptor.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "support/settings.h"
#include "zelvane/zelvane.h"

namespace {

constexpr char const* kNull = nullptr;

// Each line is a call and what it gives.
#define REFUSES(failed, call)                                 \
  do {                                                        \
    int const descriptors = test::OpenDescriptors();          \
    EXPECT_EQ(failed, call);                                  \
    EXPECT_EQ(descriptors, test::OpenDescriptors()) << #call; \
  } while (false)

class Misuse : public testing::Test {
 protected:
  Misuse() {
    root_.Write("root/upscli.cfg", "[CLILIST]\n0 = a;b;1\n");
    root_.Write("root/zelbrws.cfg", "[GROUPS]\n0 = all;-1\n");
    root_.Write("root/upstype.cfg", "[UPSTYPE]\n0 = Auto;autoups;zelcfg01;zelcli01;-1\n");
    root_.Write("root/zellang.cfg", "[LANG]\n1 = English\n[1]\n1 = on\n");
    root_.Write("root/srvlist.cfg", "[SRVLIST]\n7 = 007\n");
    root_.Write("log", std::string(68, 'r'));
    root_.Write("prog", std::string("\0\x94\x35\x77", 4));
    files_ = Files();
  }
  ~Misuse() override { EXPECT_EQ(files_, Files()); }

  // Each with what it holds.
  std::vector<std::string> Files() const {
    std::vector<std::string> files = root_.List();
    for (std::string& file : files)
      if (file.back() != '/') file += ":\n" + root_.Read(file);
    return files;
  }

  test::Installation root_;
  std::vector<std::string> files_;
};

TEST_F(Misuse, ClosingNullTwice) {
  void* records = nullptr;
  for (int i = 0; i < 2; i++) {
    REFUSES(0, CloseServerList(nullptr) + CloseUPSTypeList(nullptr) + CloseEnumSerialPorts(nullptr));
    REFUSES(0, LogReaderClose(nullptr) + CloseProgList(nullptr) + CloseBrwsList(nullptr));
    REFUSES(false, CloseSvcManager(nullptr));
    CloseLang(nullptr);
    Close_Zelvane3x_Log(nullptr);
    Close_Zelvane3x_Log(&records);
  }
}

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
  REFUSES(0, GetUPSTypeListCount(nullptr));
  REFUSES(0, GetUPSTypeListItem(nullptr, 0, &type));
  REFUSES(0, GetUPSTypeListItemByType(nullptr, 0, &type));
  REFUSES(0, GetEnumSerialPorts(nullptr, 0, &number));
  REFUSES(0U, LogReaderRegCount(nullptr));
  REFUSES(0, LogReaderReadReg(nullptr, 0, &when, text));
  REFUSES(0U, LogReaderCountEvents(nullptr, 1, 0, 1));
  REFUSES(0, LogReaderTimeEvents(nullptr, 1, 2, 3, 0, 1));
  REFUSES(0, LogReaderTimeEvents2(nullptr, 1, codes, 1, 0, 1));
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
  REFUSES(false, GetSvcStatus(nullptr, "a", &flag, &flag));
  REFUSES(false,
          SvcStart(nullptr, "a") || SvcStop(nullptr, "a") || SvcRestart(nullptr, "a") || SetSvcAuto(nullptr, "a", 1));
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
  REFUSES(nullptr, LogReaderOpen(""));
  REFUSES(nullptr, OpenProgList(nullptr));
  int flag = 7;
  void* records = &flag;
  REFUSES(0U, Load_Zelvane3x_Log(nullptr, nullptr) + Load_Zelvane3x_Log(nullptr, &records));
  REFUSES(nullptr, records);
  REFUSES("", ParseMacroFileName(kNull, "x") + ParseMacroFileName("//UPSSRVCFG//", kNull));
  char text[8] = "kept";
  REFUSES(0, GetOSVersionInfo(text, 0) + GetUPSModelName(-1, 0, text, 1));
  int fields[6];
  for (int without = 0; without < 6; without++) {
    int* to[6];
    for (int i = 0; i < 6; i++) fields[i] = -1, to[i] = i == without ? nullptr : &fields[i];
    REFUSES(1, DecodeProgDateTime(86399, to[0], to[1], to[2], to[3], to[4], to[5]));
    int const expected[6] = {1970, 1, 1, 23, 59, 59};
    for (int i = 0; i < 6; i++) EXPECT_EQ(i == without ? -1 : expected[i], fields[i]) << i << " without " << without;
  }
  REFUSES(false, GetProcStatus(nullptr, &flag) || KillProc(nullptr) || CreateNewProc(nullptr, 0));
  REFUSES(false, GetProcAuto(nullptr, &flag) || GetProcAuto("init", nullptr) || SetProcAuto(nullptr, 1));
  REFUSES(true, GetProcStatus("init", nullptr));
  EXPECT_EQ(7, flag);

  void* const servers = OpenServerList();
  REFUSES(2, GetServerListItem2(servers, 0, nullptr, nullptr) + GetServerListItem(servers, 0, nullptr));
  REFUSES(0, AddServerListItem(servers, nullptr) + AddServerListItem2(servers, nullptr, 1) +
                 RemServerListItem(servers, nullptr));
  CloseServerList(servers);
  void* const types = OpenUPSTypeList(nullptr);
  REFUSES(0, GetUPSTypeListItem(types, 0, nullptr) + GetUPSTypeListItemByType(types, 0, nullptr));
  CloseUPSTypeList(types);
  void* const lang = OpenLang(1);
  REFUSES(0, GetLangDesc(lang, 1, nullptr, 9) + SetLangStr(lang, 1, nullptr));
  REFUSES(1, GetLangDesc(lang, 1, text, 0));
  EXPECT_STREQ("kept", text);
  CloseLang(lang);
  void* const log = LogReaderOpen(root_.Path("log").c_str());
  long when = 7;
  char data[64];
  REFUSES(0, LogReaderReadReg(log, 0, nullptr, data) + LogReaderReadReg(log, 0, &when, nullptr));
  short const code = 1;
  REFUSES(0, LogReaderTimeEvents2(log, 1, nullptr, 1, 0, 1) + LogReaderTimeEvents2(log, 1, &code, 0, 0, 1));
  EXPECT_EQ(7, when);
  LogReaderClose(log);
  void* const prog = OpenProgList(root_.Path("prog").c_str());
  REFUSES(1U, GetProgListRegCount(prog));
  REFUSES(0, GetProgListRegByIndex(prog, 0, nullptr) + AddProgListReg(prog, nullptr) + RemProgListReg(prog, nullptr));
  CloseProgList(prog);
  void* const list = OpenBrwsList(nullptr);
  REFUSES(0, GetBrwsGroupByIndex(list, 0, nullptr) + GetBrwsComputerByIndex(list, 0, nullptr) +
                 GetBrwsNobreakByIndex(list, 0, nullptr));
  REFUSES(0, AddBrwsGroup(list, nullptr, true, nullptr, true) + AddBrwsComputer(list, nullptr, true, nullptr, true) +
                 AddBrwsNobreak(list, nullptr, true, nullptr, true));
  REFUSES(0, EditBrwsGroup(list, nullptr, true) + EditBrwsComputer(list, nullptr, true) +
                 EditBrwsNobreak(list, nullptr, true));
  CloseBrwsList(list);
}

}  // namespace
