// Every plain C function, and the core functions that other tests omit, with arguments that it must reject: each
// pointer null in turn, numbers out of range, char arrays without a NUL. No call may crash, change a file or leak a
// descriptor.

#include "support/settings.h"
#include "support/test.h"
#include "zelvane/zelvane.h"

namespace {

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
  ~Misuse() override { EXPECT_EQ(Files(), files_); }

  // The files with their contents.
  test::Names Files() const {
    test::Names files = root_.List();
    for (std::string& file : files)
      if (file.back() != '/') file += ":\n" + root_.Read(file);
    return files;
  }

  test::Installation root_;
  test::Names files_;
};

TEST_F(Misuse, ClosingNullTwice) {
  void* records = nullptr;
  for (int i = 0; i < 2; i++) {
    EXPECT_EACH((CloseServerList(nullptr), CloseUPSTypeList(nullptr), CloseEnumSerialPorts(nullptr),
                 LogReaderClose(nullptr), CloseProgList(nullptr), CloseBrwsList(nullptr)),
                0);
    EXPECT_NONE(CloseSvcManager(nullptr));
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
  EXPECT_EACH(
      (GetServerListCount(nullptr), GetServerListItem(nullptr, 0, &server),
       GetServerListItem2(nullptr, 0, &server, &key), AddServerListItem(nullptr, &server),
       AddServerListItem2(nullptr, &server, 1), RemServerListItem(nullptr, &server), RemServerListItem2(nullptr, 1),
       ClearServerList(nullptr), GetUPSTypeListCount(nullptr), GetUPSTypeListItem(nullptr, 0, &type),
       GetUPSTypeListItemByType(nullptr, 0, &type), GetEnumSerialPorts(nullptr, 0, &number), LogReaderRegCount(nullptr),
       LogReaderReadReg(nullptr, 0, &when, text), LogReaderCountEvents(nullptr, 1, 0, 1),
       LogReaderTimeEvents(nullptr, 1, 2, 3, 0, 1), LogReaderTimeEvents2(nullptr, 1, codes, 1, 0, 1),
       GetProgListRegCount(nullptr), GetProgListRegByIndex(nullptr, 0, &entry), AddProgListReg(nullptr, &entry),
       RemProgListReg(nullptr, &entry), ClearProgList(nullptr)),
      0);
  EXPECT_EACH((GetLangStr(nullptr, 1), GetSystemLangStr(nullptr, 1)), nullptr);
  EXPECT_EACH(
      (GetLangCount(nullptr), GetLangDesc(nullptr, 1, text, sizeof text), SetLangStr(nullptr, 1, "a"),
       GetBrwsFileDate(nullptr), UpdateBrwsFileDate(nullptr, true), GetBrwsGroupsCount(nullptr),
       GetBrwsComputersCount(nullptr), GetBrwsNobreaksCount(nullptr), GetBrwsGroupByIndex(nullptr, 0, &group),
       GetBrwsComputerByIndex(nullptr, 0, &computer), GetBrwsNobreakByIndex(nullptr, 0, &unit),
       AddBrwsGroup(nullptr, &group, true, nullptr, true), AddBrwsComputer(nullptr, &computer, true, nullptr, true),
       AddBrwsNobreak(nullptr, &unit, true, nullptr, true), EditBrwsGroup(nullptr, &group, true),
       EditBrwsComputer(nullptr, &computer, true), EditBrwsNobreak(nullptr, &unit, true)),
      0);
  for (auto remove : {RemoveBrwsGroup, RemoveBrwsComputer, RemoveBrwsNobreak, RemoveBrwsGroupByGroup,
                      RemoveBrwsComputerByGroup, RemoveBrwsNobreakByComputer})
    EXPECT_EACH((remove(nullptr, -1, true)), 0);
  for (auto clear : {ClearBrwsGroupsList, ClearBrwsComputersList, ClearBrwsNobreaksList})
    EXPECT_EACH((clear(nullptr, true)), 0);
  EXPECT_NONE(GetSvcStatus(nullptr, "a", &flag, &flag), SvcStart(nullptr, "a"), SvcStop(nullptr, "a"),
              SvcRestart(nullptr, "a"), SetSvcAuto(nullptr, "a", 1));
  EXPECT_EQ(flag, 7);
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(when, 7);
}

TEST_F(Misuse, NullArguments) {
  EXPECT_EACH((GetClientConfig(nullptr), GetClientDefConfig(nullptr), SetClientConfig(nullptr),
               GetShutSrvConfig("", nullptr), GetShutSrvDefConfig(nullptr), SetShutSrvConfig(nullptr, nullptr)),
              0);
  UpsSrvConfig cfg = {};
  EXPECT_EACH((GetUpsSrvConfig(nullptr, &cfg, 0), GetUpsSrvConfig("", nullptr, 0), GetUpsSrvDefConfig(nullptr),
               SetUpsSrvConfig(nullptr, &cfg, 0), SetUpsSrvConfig("", nullptr, 0), GetUpsListItem(0, nullptr),
               AddUpsListItem(nullptr), RemUpsListItem(nullptr), GetUPSModelName(0, 0, nullptr, 9),
               GetUPSCapabilities(0, nullptr), GetOSVersionInfo(nullptr, 9), GetZelvaneVersionInfo(nullptr),
               GetZelvaneInstalledModules(nullptr), OpenEnumSerialPorts(nullptr)),
              0);
  EXPECT_EACH((LogReaderOpen(nullptr), LogReaderOpen(""), OpenProgList(nullptr)), nullptr);
  int flag = 7;
  void* records = &flag;
  EXPECT_EACH((Load_Zelvane3x_Log(nullptr, nullptr), Load_Zelvane3x_Log(nullptr, &records)), 0);
  EXPECT_EACH((records), nullptr);
  EXPECT_EACH((ParseMacroFileName(test::kNull, "x"), ParseMacroFileName("//UPSSRVCFG//", test::kNull)), "");
  char text[8] = "kept";
  EXPECT_EACH((GetOSVersionInfo(text, 0), GetUPSModelName(-1, 0, text, 1)), 0);
  int fields[6];
  for (int without = 0; without < 6; without++) {
    int* to[6];
    for (int i = 0; i < 6; i++) fields[i] = -1, to[i] = i == without ? nullptr : &fields[i];
    EXPECT_EACH((DecodeProgDateTime(86399, to[0], to[1], to[2], to[3], to[4], to[5])), 1);
    int const expected[6] = {1970, 1, 1, 23, 59, 59};
    for (int i = 0; i < 6; i++) EXPECT_EQ(fields[i], i == without ? -1 : expected[i]) << i << " without " << without;
  }
  EXPECT_NONE(GetProcStatus(nullptr, &flag), KillProc(nullptr), CreateNewProc(nullptr, 0), GetProcAuto(nullptr, &flag),
              GetProcAuto("init", nullptr), SetProcAuto(nullptr, 1));
  EXPECT_ALL(GetProcStatus("init", nullptr));
  EXPECT_EQ(flag, 7);

  void* const servers = OpenServerList();
  EXPECT_EACH((GetServerListItem2(servers, 0, nullptr, nullptr), GetServerListItem(servers, 0, nullptr)), 1);
  EXPECT_EACH((AddServerListItem(servers, nullptr), AddServerListItem2(servers, nullptr, 1),
               RemServerListItem(servers, nullptr)),
              0);
  CloseServerList(servers);
  void* const types = OpenUPSTypeList(nullptr);
  EXPECT_EACH((GetUPSTypeListItem(types, 0, nullptr), GetUPSTypeListItemByType(types, 0, nullptr)), 0);
  CloseUPSTypeList(types);
  void* const lang = OpenLang(1);
  EXPECT_EACH((GetLangDesc(lang, 1, nullptr, 9), SetLangStr(lang, 1, nullptr)), 0);
  EXPECT_EACH((GetLangDesc(lang, 1, text, 0)), 1);
  EXPECT_STREQ(text, "kept");
  CloseLang(lang);
  void* const log = LogReaderOpen(root_.Path("log").c_str());
  long when = 7;
  char data[64];
  EXPECT_EACH((LogReaderReadReg(log, 0, nullptr, data), LogReaderReadReg(log, 0, &when, nullptr)), 0);
  short const code = 1;
  EXPECT_EACH((LogReaderTimeEvents2(log, 1, nullptr, 1, 0, 1), LogReaderTimeEvents2(log, 1, &code, 0, 0, 1)), 0);
  EXPECT_EQ(when, 7);
  LogReaderClose(log);
  void* const prog = OpenProgList(root_.Path("prog").c_str());
  EXPECT_EACH((GetProgListRegCount(prog)), 1U);
  EXPECT_EACH((GetProgListRegByIndex(prog, 0, nullptr), AddProgListReg(prog, nullptr), RemProgListReg(prog, nullptr)),
              0);
  CloseProgList(prog);
  void* const list = OpenBrwsList(nullptr);
  EXPECT_EACH(
      (GetBrwsGroupByIndex(list, 0, nullptr), GetBrwsComputerByIndex(list, 0, nullptr),
       GetBrwsNobreakByIndex(list, 0, nullptr), AddBrwsGroup(list, nullptr, true, nullptr, true),
       AddBrwsComputer(list, nullptr, true, nullptr, true), AddBrwsNobreak(list, nullptr, true, nullptr, true),
       EditBrwsGroup(list, nullptr, true), EditBrwsComputer(list, nullptr, true), EditBrwsNobreak(list, nullptr, true)),
      0);
  CloseBrwsList(list);
}

}  // namespace
