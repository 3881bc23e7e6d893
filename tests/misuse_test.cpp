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

constexpr unsigned kFar = 4294967295U;

constexpr char const* kNull = nullptr;

// A record without a NUL, all 'x', directly in front of memory that may not be touched.
template <class Record>
class Full {
 public:
  Full() {
    mprotect(pages_ + page_, page_, PROT_NONE);
    std::memset(static_cast<void*>(Get()), 'x', sizeof(Record));
  }
  ~Full() { munmap(pages_, 2 * page_); }
  Full(Full const&) = delete;
  Full& operator=(Full const&) = delete;
  Record* Get() const { return reinterpret_cast<Record*>(pages_ + page_ - sizeof(Record)); }
  Record* operator->() const { return Get(); }

 private:
  std::size_t const page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  char* const pages_ =
      static_cast<char*>(mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
};

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
  BrwsComputerRec computer = {};
  BrwsNobreakRec unit = {};
  char name[4] = "abc";
  unsigned key = 7;
  for (unsigned const far : {1U, 2147483647U, 2147483648U, kFar}) {
    REFUSES(0, GetServerListItem(servers, far, &server) + GetServerListItem2(servers, far, &server, &key));
    REFUSES(1, RemServerListItem2(servers, far));  // whether or not there is one
    REFUSES(0, GetUPSTypeListItem(types, far, &type) + GetUPSTypeListItemByType(types, far, &type));
    REFUSES(0, LogReaderReadReg(log, far, &when, data));
    REFUSES(0, GetBrwsGroupByIndex(list, far, &group) + GetBrwsComputerByIndex(list, far - 1, &computer) +
                   GetBrwsNobreakByIndex(list, far - 1, &unit));
    REFUSES(0, GetUpsListItem(far, name));
    group.id = computer.id = unit.id = static_cast<int>(far);
    group.name[0] = computer.name[0] = computer.address[0] = unit.name[0] = 'x';
    REFUSES(0, EditBrwsGroup(list, &group, true) + EditBrwsComputer(list, &computer, true) +
                   EditBrwsNobreak(list, &unit, true));
  }
  REFUSES(0, GetBrwsGroupByIndex(list, ~0UL, &group) + GetBrwsComputerByIndex(list, ~0UL, &computer) +
                 GetBrwsNobreakByIndex(list, ~0UL, &unit));
  REFUSES(0, LogReaderReadReg(log, ~0UL, &when, data));
  REFUSES(0U, LogReaderCountEvents(log, 0x7272, LONG_MIN, LONG_MIN) + LogReaderCountEvents(log, 65535, 0, LONG_MAX));
  REFUSES(0, LogReaderTimeEvents(log, -1, -1, -1, LONG_MIN, LONG_MAX));
  EXPECT_EQ("abc7", name + std::to_string(key));
  for (char const* far : {"-1", "100", "4294967295", "x"}) {
    REFUSES(0, AddUpsListItem(far));
    REFUSES(1, RemUpsListItem(far));  // it is not listed
  }
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
  unsigned one = 0, mask = 1;
  REFUSES(1, GetUPSCapabilities(1, &one));
  for (unsigned const far : {6U, kFar}) {
    REFUSES(1, GetUPSCapabilities(far, &mask));
    EXPECT_EQ(one, mask) << far;
  }
  char text[9] = "12345678";
  REFUSES(0, GetUPSModelName(SHRT_MAX, kFar, text, 8));
  EXPECT_STREQ("AUTO", text);
  for (long const language : {1L, -1L, -2147483647L - 1}) {
    void* const lang = OpenLang(language);
    for (long const far : {-1L, 2147483647L, -2147483647L - 1, static_cast<long>(kFar)}) {
      EXPECT_EQ("", std::string(GetLangStr(lang, far)) + GetSystemLangStr(lang, far)) << far;
      REFUSES(1, GetLangDesc(lang, far, text, sizeof text));
      EXPECT_STREQ("", text) << far;
    }
    if (language == -1) REFUSES(0, SetLangStr(lang, 1, "no language"));
    CloseLang(lang);
  }
  EXPECT_EQ(4, CloseServerList(servers) + CloseUPSTypeList(types) + LogReaderClose(log) + CloseBrwsList(list));
  EXPECT_EQ(-1, EncodeProgDateTime(2147483647, 1, 1, 0, 0, 0));
  EXPECT_EQ(0, DecodeProgDateTime(-1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

// Read by their width: what is written ends there, and nothing behind the record is touched.
TEST_F(Misuse, ArraysWithoutNul) {
  auto const xs = [](std::size_t count) { return std::string(count, 'x'); };
  Full<ClientConfig> const client;
  REFUSES(1, SetClientConfig(client.Get()));
  EXPECT_EQ("[CLILIST]\n0 = " + xs(21) + ";" + xs(16) + ";2021161080\n\n[UPSCLI]\nLIBNAME = " + xs(21),
            root_.Read("root/upscli.cfg"));
  REFUSES(1, GetClientConfig(client.Get()));
  EXPECT_EQ(xs(20) + "|" + xs(15) + "|" + xs(20),
            std::string(client->serverName) + "|" + client->serverAddress + "|" + client->libName);
  Full<ShutSrvConfig> const shut;
  REFUSES(1, SetShutSrvConfig("", shut.Get()));
  REFUSES(1, GetShutSrvConfig("", shut.Get()));
  EXPECT_EQ(xs(255) + "|" + xs(20), std::string(shut->mailTo) + "|" + shut->mailPassword);
  EXPECT_EQ(xs(255), shut->mailCancelMessage);
  REFUSES(1, GetShutSrvDefConfig(shut.Get()) * GetClientDefConfig(client.Get()));
  Full<UpsSrvConfig> const ups;
  REFUSES(1, SetUpsSrvConfig(root_.Root().c_str(), ups.Get(), 0));
  REFUSES(1, GetUpsSrvConfig(root_.Root().c_str(), ups.Get(), 0));
  EXPECT_STREQ("autoups", ups->upsDriver);

  void* const list = OpenBrwsList(root_.Path("new").c_str());
  Full<BrwsGroupRec> const group;
  Full<BrwsComputerRec> const computer;
  Full<BrwsNobreakRec> const unit;
  unsigned long id = 7;
  REFUSES(1, AddBrwsGroup(list, group.Get(), false, &id, false));
  REFUSES(1, AddBrwsComputer(list, computer.Get(), false, &id, false));
  REFUSES(1, AddBrwsNobreak(list, unit.Get(), false, &id, false));
  EXPECT_EQ(0U, id);
  group->id = computer->id = unit->id = unit->computer = 0;
  REFUSES(1, EditBrwsGroup(list, group.Get(), false) * EditBrwsComputer(list, computer.Get(), false) *
                 EditBrwsNobreak(list, unit.Get(), true));
  std::string written = root_.Read("new");
  std::size_t const date = written.find("[DATE]");
  written.erase(date, written.find("[COMPUTERS]") - date);
  EXPECT_EQ("[GROUPS]\n0 = " + xs(256) + ";2021161080\n[COMPUTERS]\n0 = " + xs(256) + ";" + xs(16) +
                ";2021161080\n[NOBREAKS]\n0 = " + xs(256) + ";" + xs(16) + ";2021161080;0",
            written);
  REFUSES(1, GetBrwsGroupByIndex(list, 0, group.Get()) * GetBrwsComputerByIndex(list, 0, computer.Get()) *
                 GetBrwsNobreakByIndex(list, 0, unit.Get()));
  EXPECT_EQ(xs(255) + xs(255) + xs(15) + xs(255),
            std::string(group->name) + computer->name + computer->address + unit->name);
  CloseBrwsList(list);

  void* const servers = OpenServerList();
  Full<ServerListItem> const server;
  REFUSES(1, ClearServerList(servers) * AddServerListItem2(servers, server.Get(), kFar));
  REFUSES(0, AddServerListItem(servers, server.Get()));  // it is listed
  EXPECT_NE(std::string::npos, root_.Read("root/upscli.cfg").find("\n4294967295 = " + xs(21) + ";" + xs(16) + ";2021"));
  unsigned key = 7;
  REFUSES(1, GetServerListItem2(servers, 0, server.Get(), &key));
  EXPECT_EQ(xs(20) + "|" + xs(15) + "|0", std::string(server->serverName) + "|" + server->serverAddress + "|" +
                                              std::to_string(key));  // the key is no signed number
  std::memset(server.Get(), 'x', sizeof(ServerListItem));
  REFUSES(1, RemServerListItem(servers, server.Get()) * CloseServerList(servers));
  Full<char[2]> const version;
  REFUSES(1, GetOSVersionInfo(*version.Get(), 2) * GetUPSModelName(-1, 0, *version.Get(), 2));
  files_ = Files();
}

// ---- The toolkit ----

TEST_F(Misuse, NullTexts) {
  std::string const path = root_.Path("log");
  REFUSES("", Trim(kNull) + TrimLeft(kNull) + TrimRight(kNull) + FillLeft(kNull, INT_MAX, '*') +
                  FillRight(kNull, INT_MAX, '*') + FillLeft("", INT_MIN, '*'));
  REFUSES(false, StrIsInt(kNull) || StrIsHex(kNull) || StrIsFloat(kNull) || StrIsIPNumber(kNull));
  REFUSES(-27, StrToIntDef(kNull, -9) + HexToIntDef(kNull, -9) + static_cast<long>(StrToFloatDef(kNull, -9)));
  std::vector<std::string> const separators = {";"};
  std::vector<std::string> out = {"old"};
  auto const pieces = [&](auto const& separator) {
    std::size_t left = 0;
    for (unsigned long const count : {0UL, 1UL, ULONG_MAX}) {
      out = {"old"}, Tokenize(out, kNull, separator, count), left += out.size();
      out = {"old"}, TrimTokenize(out, kNull, separator, count), left += out.size();
    }
    return left;
  };
  REFUSES(0U, pieces(separators) + pieces(separators[0]) + pieces(separators[0].c_str()) + pieces(';') + pieces(kNull));
  TrimTokenize(out, " a;b ", kNull);
  EXPECT_EQ(out, std::vector<std::string>{"a;b"});
  REFUSES("01/01/1970 00:00:00", DateTimeToStr(kNull, 0) + DateTimeToStr(kNull, -1) + FormatDateTime(0, kNull));
  REFUSES(-9, StrToDateTime(kNull, "dd", -9));
  REFUSES(false, FilePermToRead(kNull) || FilePermToWrite(kNull) || DirExists(kNull));
  REFUSES(false, CpFile(nullptr, kNull, path.c_str(), 0, true) || CpFile(nullptr, path.c_str(), kNull, 0, true) ||
                     CpFile(path.c_str(), path.c_str(), ULONG_MAX, true));
  REFUSES("", ExtractFilePath(kNull) + ExtractFileName(kNull) + IncludePathDelimiter(kNull) +
                  ExcludePathDelimiter(kNull) + ChangeFileExt(kNull, kNull));
}

// In every form of an operation of the engine: by name, by number, in the section that is set.
#define IN_EVERY_FORM(gives, operation, ...)                          \
  REFUSED_AS_ARGUMENT(gives, operation(kNull, "k", __VA_ARGS__));     \
  REFUSED_AS_ARGUMENT(gives, operation("S", kNull, __VA_ARGS__));     \
  REFUSED_AS_ARGUMENT(gives, operation(kNull, 0UL, __VA_ARGS__));     \
  REFUSED_AS_ARGUMENT(gives, operation("S", ULONG_MAX, __VA_ARGS__)); \
  REFUSED_AS_ARGUMENT(gives, operation(kNull, __VA_ARGS__));          \
  REFUSED_AS_ARGUMENT(gives, operation(ULONG_MAX, __VA_ARGS__))
#define REFUSED_AS_ARGUMENT(gives, call) \
  REFUSES(gives, cfg.call);              \
  EXPECT_EQ(CFG_BAD_ARGUMENT, cfg.GetErrorCode()) << #call

TEST_F(Misuse, TheEngine) {
  CfgClass cfg;
  ASSERT_TRUE(cfg.Open(root_.Write("cfg", "[S]\nk = 1\n")) && cfg.SetSection("S"));
  files_ = Files();
  IN_EVERY_FORM("d", ReadStr, "d");
  IN_EVERY_FORM(-9, ReadInt, -9);
  IN_EVERY_FORM(true, ReadBool, true);
  IN_EVERY_FORM(-9, ReadDateTime, "dd", -9);
  IN_EVERY_FORM(-9, ReadDateTime, kNull, -9);
  IN_EVERY_FORM(-9, ReadFloat, -9);
  IN_EVERY_FORM(false, WriteStr, "v");
  IN_EVERY_FORM(false, WriteStr, kNull);
  IN_EVERY_FORM(false, WriteInt, 5);
  IN_EVERY_FORM(false, WriteUInt, 5);
  IN_EVERY_FORM(false, WriteBool, true);
  IN_EVERY_FORM(false, WriteDateTime, kNull, 5);
  IN_EVERY_FORM(false, WriteFloat, 5, 0, 6);
  for (char const* const none : {kNull, ""}) {
    REFUSED_AS_ARGUMENT(false, KeyExists("S", none) || cfg.KeyExists(none));
    REFUSED_AS_ARGUMENT(false, DeleteKey("S", none) || cfg.DeleteKey(none) || cfg.DeleteKey(ULONG_MAX));
    REFUSED_AS_ARGUMENT(false, SaveAs(none));
  }
  REFUSED_AS_ARGUMENT(false, KeyExists(kNull, "k") || cfg.DeleteKey(kNull, "k"));
  REFUSED_AS_ARGUMENT(false, SetSection(kNull) || cfg.SectionExists(kNull) || cfg.EraseSection(kNull));
  REFUSED_AS_ARGUMENT(false, KeyExists(std::string("S"), std::string()));
  REFUSED_AS_ARGUMENT("", GetKeyName(kNull, 0));
  REFUSED_AS_ARGUMENT(0U, GetKeyCount(kNull));
  REFUSES("", cfg.GetSectionName(ULONG_MAX) + cfg.GetKeyName("S", ULONG_MAX) + cfg.GetKeyName(1));
  REFUSES(true, cfg.ParseLine("", true) && cfg.ParseLine(" # text", true));
  REFUSES(false, cfg.ParseLine("=", true));
  EXPECT_EQ(CFG_SYNTAX, cfg.GetErrorCode());
  CfgClass::KeyPosition key;
  REFUSED_AS_ARGUMENT(false, LocateKey(nullptr, "k", &key) || cfg.LocateKey(nullptr, "k", nullptr));
  REFUSES(true, cfg.LocateSection("S", nullptr));
  REFUSED_AS_ARGUMENT(false, Open(kNull) || cfg.OpenReadOnly(kNull) || cfg.Rename(kNull));
  REFUSED_AS_ARGUMENT(false, SetFileName(kNull, true) || cfg.SetFileName(kNull, false));
  EXPECT_EQ(root_.Path("cfg"), cfg.GetFileName());
  RegCfgClass reg;
  REFUSES(false, reg.Open(kNull) || reg.SaveAs(kNull));
}

TEST_F(Misuse, TheOtherClasses) {
  std::string const path = root_.Path("log");
  char bytes[] = "12345678";
  LogClass log;
  TextLogClass text(kNull);
  REFUSES(2, log.SetFile(kNull) + text.SetFile(kNull));
  REFUSES(false, log.WriteReg(bytes, 8) || log.WriteReg(0, nullptr, 0) || log.ClearFile() || text.ClearFile());
  REFUSES(false, text.WriteLine("x") || text.WriteLine(0, "x") || text.WriteLine(kNull));
  REFUSES(0U, log.LoadFile(64) + log.GetFileRegCount(ULONG_MAX) + log.GetRegCount(ULONG_MAX));
  ProgList list;
  REFUSES(false, list.SetFile(kNull) || list.GetRegByIndex(-1, nullptr) || list.GetNextReg(nullptr));
  LangClass lang;
  lang.SetFileName(kNull);
  REFUSES("", lang.GetLangStr(-1) + lang.GetLangDesc(-1));
  REFUSES(false, lang.LoadStrings(-1) || lang.SetLangStr(1, kNull) || lang.SetLangStr(1, kNull, 1));
  ProcManager processes;
  REFUSES(false, processes.IsRunning(kNull) || processes.IsRunning(ULONG_MAX) || processes.CreateNew(kNull));
  REFUSES(nullptr, processes.GetProcByIndex(ULONG_MAX));
  ProcClass const none;
  ProcClass copy(none);
  copy = none, copy = ProcClass();
  REFUSES(false, copy.Kill() || copy.SetPriority(INT_MAX) || copy.GetPID() + copy.GetPPID() != 0);
  SvcManager services;
  REFUSES(false, services.IsRunning(kNull));
  SvcClass service;
  REFUSES(false, service.GetAutomatic(INT_MAX) || service.GetAutomatic(INT_MIN) || service.SetAutomatic(INT_MAX, true));

  EncodeBase64 encoder;
  DecodeBase64 decoder;
  REFUSES(false, encoder.EncodeFile(path.c_str(), kNull) || encoder.EncodeFile(kNull, path.c_str()) ||
                     decoder.DecodeFile(path.c_str(), kNull) || decoder.DecodeFile(kNull, path.c_str()));
  REFUSES(false, decoder.DecodeStr(kNull, bytes, 8) || decoder.DecodeStr("YWJj", nullptr, 8) ||
                     decoder.LoadFromStr(kNull) || decoder.LoadFromFile(kNull) || decoder.SaveToStr(nullptr, 8));
  Hash_RipeMD256 hash;
  HashManager hashes;
  hashes.CalcBuffer(nullptr, ULONG_MAX), hashes.CalcString(kNull), hashes.CalcFile(kNull), hashes.SetDigest(kNull);
  Cipher_Safer_SK64 cipher;
  cipher.SetHash(&hash);
  REFUSES(false, cipher.InitKey(kNull, nullptr) || cipher.Init(nullptr, -1, nullptr));
  REFUSES(false, Cipher_Safer().Init(nullptr, -1, nullptr));
  CipherManager manager;
  manager.SetHashManager(nullptr), manager.SetAlgorithm(CIPHER_SAFER_SK64), manager.GetCipherObject()->SetHash(&hash);
  REFUSES(false, manager.InitKey(kNull) || manager.InitKey(kNull, nullptr));
  ASSERT_TRUE(manager.InitKey("phrase"));
  REFUSES(false, manager.EncodeBuffer(nullptr, bytes, 8) || manager.EncodeBuffer(bytes, nullptr, 8) ||
                     manager.DecodeBuffer(nullptr, bytes, 8) || manager.DecodeBuffer(bytes, nullptr, 8));
  REFUSES(false, manager.EncodeFile(kNull, path.c_str()) || manager.EncodeFile(path.c_str(), kNull) ||
                     manager.DecodeFile(kNull, path.c_str()) || manager.DecodeFile(path.c_str(), kNull));
  REFUSES("", manager.EncodeString(kNull) + manager.DecodeString(kNull));
  EXPECT_STREQ("12345678", bytes);
}

}  // namespace
