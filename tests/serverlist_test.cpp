#include "zelvane/api/serverlist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

ServerListItem Item(std::string const& name, std::string const& address, int32_t port) {
  ServerListItem item = {};
  name.copy(item.serverName, sizeof item.serverName);
  address.copy(item.serverAddress, sizeof item.serverAddress);
  item.serverPort = port;
  return item;
}

// A list edited by hand beside sections that others own; what is no entry must survive every change.
constexpr char kOld[] =
    "; cliente \xE9\r\n"
    "[SHUTSRV]\r\n"
    "ZELSRV = a;1.1.1.1;1\r\n"
    "\r\n"
    "[CliList]\r\n"
    "  2=second;10.0.0.2;2002 ; note\r\n"
    "# between\r\n"
    "10 = tenth;10.0.0.10;x\n"
    "name = named;10.0.0.7;7\n"
    "4 = broken;entry\n"
    "5 =\n"
    "0 = first;10.0.0.1;4375\n"
    "0 = shadowed;10.0.0.99;1\n"
    "[UPSCLI]\n"
    "LIBNAME = upscli\n";

class ServerList : public testing::Test {
 protected:
  ~ServerList() override { Close(); }

  void Open(std::string const& bytes) {
    root_.Write("root/upscli.cfg", bytes);
    Open();
  }
  void Open() {
    Close();
    list_ = OpenServerList();
    ASSERT_NE(list_, nullptr);
  }
  void Close() {
    EXPECT_EQ(CloseServerList(list_), list_ == nullptr ? 0 : 1);
    list_ = nullptr;
  }
  int Add(std::string const& name, std::string const& address, int32_t port) {
    ServerListItem const item = Item(name, address, port);
    return AddServerListItem(list_, &item);
  }
  int Add(std::string const& name, std::string const& address, int32_t port, unsigned int key) {
    ServerListItem const item = Item(name, address, port);
    return AddServerListItem2(list_, &item, key);
  }
  int Remove(std::string const& name, std::string const& address, int32_t port) {
    ServerListItem const item = Item(name, address, port);
    return RemServerListItem(list_, &item);
  }
  std::string File() const { return root_.Read("root/upscli.cfg"); }

  test::Installation root_;
  void* list_ = nullptr;
};

std::string Entry(void* list, unsigned int position) {
  ServerListItem item;
  unsigned int key = 0;
  if (GetServerListItem2(list, position, &item, &key) == 0) return "-";
  return std::to_string(key) + ":" + item.serverName + "|" + item.serverAddress + "|" + std::to_string(item.serverPort);
}

std::string Entries(void* list) {
  std::string all;
  for (int i = 0; i < GetServerListCount(list); i++) all += Entry(list, static_cast<unsigned int>(i)) + "\n";
  return all;
}

// ---- Reading ----

TEST_F(ServerList, ReadsAHandMadeList) {
  Open(kOld);
  EXPECT_EQ(GetServerListCount(list_), 6);
  EXPECT_EQ(Entries(list_),
            "0:first|10.0.0.1|4375\n"
            "10:tenth|10.0.0.10|4375\n"
            "2:second|10.0.0.2|4375\n"  // "2002 ; note": what follows a value belongs to it
            "-\n"
            "-\n"
            "0:named|10.0.0.7|7\n");
  EXPECT_EQ(Entry(list_, 6), "-");
  EXPECT_EQ(Entry(list_, 4294967295u), "-");
  Close();
  EXPECT_EQ(File(), kOld);
}

TEST_F(ServerList, Values) {
  struct {
    std::string value;
    char const* entry;
  } const cases[] = {
      {"a;b;1", "3:a|b|1"},
      {";;", "3:||4375"},
      {"a;b;", "3:a|b|4375"},
      {"a;b;1;more", "3:a|b|1"},
      {"a;b;-1", "3:a|b|-1"},
      {"a;b;+7", "3:a|b|7"},
      {"a;b;2147483647", "3:a|b|2147483647"},
      {"a;b;2147483648", "3:a|b|4375"},
      {"a ; b; 1", "3:a | b|4375"},
      {"a;b", "-"},
      {"a,b,1", "-"},
      {"", "-"},
      {std::string(20, 'n') + ";" + std::string(15, 'a') + ";1", "3:nnnnnnnnnnnnnnnnnnnn|aaaaaaaaaaaaaaa|1"},
      {std::string(21, 'n') + ";" + std::string(16, 'a') + ";1", "3:nnnnnnnnnnnnnnnnnnnn|aaaaaaaaaaaaaaa|1"},
  };
  for (auto const& c : cases) {
    Open("[CLILIST]\n3 = " + c.value + "\n");
    EXPECT_EQ(Entry(list_, 0), c.entry) << c.value;
  }
}

TEST_F(ServerList, OutputsOfAnItem) {
  Open("[CLILIST]\n3 = a;b;1\n4294967295 = c;d;2\n5 = broken\n");
  ServerListItem item;
  std::memset(&item, 'x', sizeof item);
  EXPECT_EQ(GetServerListItem(list_, 0, &item), 1);
  EXPECT_STREQ(item.serverName, "a");
  EXPECT_EQ(item.serverName[20] | item.serverAddress[15], 0);
  unsigned int key = 77;
  EXPECT_EQ(GetServerListItem2(list_, 0, nullptr, &key), 1);
  EXPECT_EQ(key, 3u);
  EXPECT_EQ(GetServerListItem2(list_, 1, nullptr, &key), 1);
  EXPECT_EQ(key, 0u) << "beyond 31 bits a key does not read back";
  EXPECT_EQ(GetServerListItem2(list_, 0, &item, nullptr), 1);
  EXPECT_EQ(GetServerListItem(list_, 0, nullptr), 1);
  ServerListItem const before = item;
  key = 77;
  EXPECT_EQ(GetServerListItem2(list_, 2, &item, &key), 0);
  EXPECT_EQ(key, 77u);
  EXPECT_EQ(std::memcmp(&item, &before, sizeof item), 0);
}

// ---- Adding ----

TEST_F(ServerList, FreshRootGetsItsFileWithTheFirstEntry) {
  std::vector<std::string> const before = root_.List();
  Open();
  EXPECT_EQ(GetServerListCount(list_), 0);
  EXPECT_EQ(Remove("a", "b", 1), 0);
  EXPECT_EQ(RemServerListItem2(list_, 0), 1);
  EXPECT_EQ(ClearServerList(list_), 1);
  Close();
  EXPECT_EQ(root_.List(), before);
  Open();
  EXPECT_EQ(Add("server", "10.0.0.1", 4375), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = server;10.0.0.1;4375") << "saved at once, not on closing";
  EXPECT_EQ(Add("server", "10.0.0.1", 4375), 0);
  EXPECT_EQ(Add("server", "10.0.0.1", 4376), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = server;10.0.0.1;4375\n1 = server;10.0.0.1;4376");
}

TEST_F(ServerList, AddsToAHandMadeList) {
  Open(kOld);
  EXPECT_EQ(Add("new", "1.2.3.4", 5), 1);
  std::string expected = kOld;
  std::string const shadowed = "0 = shadowed;10.0.0.99;1\n";
  expected.insert(expected.find(shadowed), "1 = new;1.2.3.4;5\n");
  EXPECT_EQ(File(), expected);
  // An entry of the same number is replaced, in its place and with its key's own spelling.
  EXPECT_EQ(Add("other", "1.2.3.5", -1, 2), 1);
  std::string const old = "  2=second;10.0.0.2;2002 ; note\r\n";
  expected.replace(expected.find(old), old.size(), "2 = other;1.2.3.5;4294967295\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Add("max", "1.2.3.6", 1, 4294967295u), 1);
  expected.insert(expected.find(shadowed), "4294967295 = max;1.2.3.6;1\n");
  EXPECT_EQ(File(), expected);
}

TEST_F(ServerList, OnlyAnIdenticalEntryIsRefused) {
  Open("[CLILIST]\n1 = a;b;4375\n2 = broken\n3 = c;d;no number\n4 = e;f;1;more\n");
  std::string const before = File();
  struct {
    char const* name;
    char const* address;
    int32_t port;
  } const same[] = {{"a", "b", 4375}, {"c", "d", 4375}, {"e", "f", 1}};
  for (auto const& c : same) {
    EXPECT_EQ(Add(c.name, c.address, c.port), 0) << c.name;
    EXPECT_EQ(Add(c.name, c.address, c.port, 9), 0) << c.name;
  }
  EXPECT_EQ(File(), before);
  EXPECT_EQ(Add("A", "b", 4375), 1);
  EXPECT_EQ(Add("a", "B", 4375), 1);
  EXPECT_EQ(Add("a", "b", 4374), 1);
  EXPECT_EQ(Add("", "", 0), 1);
  EXPECT_EQ(Add("", "", 0), 0);
}

TEST_F(ServerList, TakesTheSmallestFreeNumber) {
  struct {
    char const* keys;
    unsigned int taken;
  } const cases[] = {
      {"", 0},
      {"1 = x\n", 0},
      {"0 = x\n", 1},
      {"0 = x\n1 = x\n3 = x\n", 2},
      {"k = x\n", 1},  // no number counts as 0
      {"-1 = x\n", 0},
      {"00 = x\n+1 = x\n002 = x\n", 3},
      {"2147483647 = x\n", 0},
      {"4294967295 = x\n", 1},
  };
  for (auto const& c : cases) {
    Open("[CLILIST]\n" + std::string(c.keys));
    ASSERT_EQ(Add("new", "1.1.1.1", 1), 1) << c.keys;
    Open();
    std::string const line = std::to_string(c.taken) + ":new|1.1.1.1|1\n";
    EXPECT_NE(("\n" + Entries(list_)).find("\n" + line), std::string::npos) << c.keys << Entries(list_);
  }
}

TEST_F(ServerList, FieldsWithoutNulEndAtTheirWidth) {
  Open();
  ServerListItem item;
  std::memset(&item, 'x', sizeof item);
  item.serverPort = 7;
  EXPECT_EQ(AddServerListItem(list_, &item), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = " + std::string(21, 'x') + ";" + std::string(16, 'x') + ";7");
  EXPECT_EQ(AddServerListItem(list_, &item), 0);
  EXPECT_EQ(RemServerListItem(list_, &item), 1);
  EXPECT_EQ(File(), "[CLILIST]");
}

TEST_F(ServerList, ALineFeedIsRefused) {
  Open();
  EXPECT_EQ(Add("a\n9 = b", "c", 1), 0);
  EXPECT_EQ(GetServerListCount(list_), 0);
  Close();
  EXPECT_FALSE(root_.Exists("root/upscli.cfg"));
}

// ---- Removing ----

TEST_F(ServerList, RemovesTheEntryThatMatches) {
  Open(kOld);
  EXPECT_EQ(Remove("first", "10.0.0.1", 4374), 0);
  EXPECT_EQ(Remove("First", "10.0.0.1", 4375), 0);
  EXPECT_EQ(Remove("shadowed", "10.0.0.99", 1), 0);
  EXPECT_EQ(Remove("", "", 0), 0);
  EXPECT_EQ(File(), kOld);
  std::string expected = kOld;
  auto const without = [&](std::string const& line) { expected.erase(expected.find(line), line.size()); };
  EXPECT_EQ(Remove("named", "10.0.0.7", 7), 1);
  without("name = named;10.0.0.7;7\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Remove("tenth", "10.0.0.10", 4375), 1);
  without("10 = tenth;10.0.0.10;x\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Remove("tenth", "10.0.0.10", 4375), 0);
}

TEST_F(ServerList, RemovesOnlyTheFirstOfTwoThatMatch) {
  Open("[CLILIST]\n1 = a;b;1\n2 = a;b;1\n");
  EXPECT_EQ(Remove("a", "b", 1), 1);
  EXPECT_EQ(File(), "[CLILIST]\n2 = a;b;1\n");
}

TEST_F(ServerList, RemovesByNumber) {
  Open(kOld);
  EXPECT_EQ(RemServerListItem2(list_, 3), 1);
  EXPECT_EQ(RemServerListItem2(list_, 4294967295u), 1);
  EXPECT_EQ(File(), kOld);
  EXPECT_EQ(RemServerListItem2(list_, 4), 1);
  std::string expected = kOld;
  expected.erase(expected.find("4 = broken;entry\n"), std::strlen("4 = broken;entry\n"));
  EXPECT_EQ(File(), expected);
}

TEST_F(ServerList, ClearingLeavesTheRestOfTheFile) {
  Open(kOld);
  EXPECT_EQ(ClearServerList(list_), 1);
  EXPECT_EQ(GetServerListCount(list_), 0);
  std::string const rest =
      "; cliente \xE9\r\n[SHUTSRV]\r\nZELSRV = a;1.1.1.1;1\r\n\r\n# between\r\n"
      "0 = shadowed;10.0.0.99;1\n[UPSCLI]\nLIBNAME = upscli\n";
  EXPECT_EQ(File(), rest);
  EXPECT_EQ(ClearServerList(list_), 1);
  EXPECT_EQ(Add("again", "1.1.1.1", 1), 1);
  EXPECT_EQ(File(), rest + "\n[CLILIST]\n0 = again;1.1.1.1;1");
}

// ---- Failures ----

TEST_F(ServerList, ASaveThatFailsShowsInTheResult) {
  Open("[CLILIST]\n1 = a;b;1\n2 = c;d;2\n");
  // A folder in the file's place can neither be replaced nor written.
  std::filesystem::remove(root_.Root("upscli.cfg"));
  std::filesystem::create_directories(root_.Root("upscli.cfg/x"));
  EXPECT_EQ(Add("e", "f", 3), 0);
  EXPECT_EQ(Remove("a", "b", 1), 0);
  EXPECT_EQ(RemServerListItem2(list_, 2), 1);
  EXPECT_EQ(ClearServerList(list_), 0);
  Close();
  EXPECT_EQ(OpenServerList(), nullptr) << "exists, but cannot be read";
  EXPECT_EQ(root_.List(),
            (std::vector<std::string>{"home/", "root/", "root/upscli.cfg/", "root/upscli.cfg/x/", "zelvane.conf"}));
}

TEST_F(ServerList, NullArguments) {
  Open("[CLILIST]\n1 = a;b;1\n");
  ServerListItem item = Item("a", "b", 1);
  unsigned int key = 0;
  EXPECT_EQ(GetServerListCount(nullptr), 0);
  EXPECT_EQ(GetServerListItem(nullptr, 0, &item), 0);
  EXPECT_EQ(GetServerListItem2(nullptr, 0, &item, &key), 0);
  EXPECT_EQ(AddServerListItem(nullptr, &item), 0);
  EXPECT_EQ(AddServerListItem2(nullptr, &item, 1), 0);
  EXPECT_EQ(RemServerListItem(nullptr, &item), 0);
  EXPECT_EQ(RemServerListItem2(nullptr, 1), 0);
  EXPECT_EQ(ClearServerList(nullptr), 0);
  EXPECT_EQ(CloseServerList(nullptr), 0);
  EXPECT_EQ(AddServerListItem(list_, nullptr), 0);
  EXPECT_EQ(AddServerListItem2(list_, nullptr, 1), 0);
  EXPECT_EQ(RemServerListItem(list_, nullptr), 0);
  EXPECT_EQ(File(), "[CLILIST]\n1 = a;b;1\n");
}

TEST_F(ServerList, LeavesNoDescriptorOpen) {
  int const before = test::OpenDescriptors();
  Open("[CLILIST]\n1 = a;b;1\n");
  Add("c", "d", 2);
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(ServerList, TenThousandEntries) {
  constexpr int kCount = 10000;
  std::string bytes = "[CLILIST]\n";
  auto const line = [](int i) {
    return std::to_string(i) + " = host" + std::to_string(i) + ";10.0.0.1;" + std::to_string(i) + "\n";
  };
  for (int i = 0; i < kCount; i++)
    if (i != 7777) bytes += line(i);
  Open(bytes);
  ASSERT_EQ(GetServerListCount(list_), kCount - 1);
  std::vector<bool> seen(kCount);
  for (unsigned int i = 0; i < kCount - 1; i++) {
    ServerListItem item;
    unsigned int key = 0;
    ASSERT_EQ(GetServerListItem2(list_, i, &item, &key), 1) << i;
    ASSERT_EQ("host" + std::to_string(key), item.serverName);
    seen[key] = true;
  }
  EXPECT_EQ(std::count(seen.begin(), seen.end(), true), kCount - 1);
  EXPECT_EQ(Add("host7777", "10.0.0.1", 7777), 1);
  EXPECT_EQ(Remove("host5000", "10.0.0.1", 5000), 1);
  EXPECT_EQ(Add("late", "10.0.0.1", 1), 1);
  bytes.erase(bytes.find(line(5000)), line(5000).size());
  EXPECT_EQ(File(), bytes.substr(0, bytes.size() - 1) + "\n7777 = host7777;10.0.0.1;7777\n5000 = late;10.0.0.1;1\n");
}

}  // namespace
