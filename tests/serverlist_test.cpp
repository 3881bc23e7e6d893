#include "zelvane/api/serverlist.h"

#include <gtest/gtest.h>

#include <algorithm>
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

std::string Bytes(ServerListItem const& item) { return {reinterpret_cast<char const*>(&item), sizeof item}; }

// Lists edited by hand beside sections that others own; whatever is no entry must survive every change.
constexpr char kTop[] = "; cliente \xE9\r\n[SHUTSRV]\r\nZELSRV = a;1.1.1.1;1\r\n\r\n";
constexpr char kRest[] = "0 = shadowed;10.0.0.99;1\n[UPSCLI]\nLIBNAME = upscli\n";
std::string const kOld = std::string(kTop) +
                         "[CliList]\r\n  2=second;10.0.0.2;2002 ; note\r\n# between\r\n10 = tenth;10.0.0.10;x\n"
                         "name = named;10.0.0.7;7\n4 = broken;entry\n5 =\n0 = first;10.0.0.1;4375\n" +
                         kRest;

class ServerList : public testing::Test {
 protected:
  ~ServerList() override { Close(); }
  void Close() {
    EXPECT_EQ(CloseServerList(list_), list_ == nullptr ? 0 : 1);
    list_ = nullptr;
  }
  void Open() {
    Close();
    list_ = OpenServerList();
    ASSERT_NE(list_, nullptr);
  }
  void Open(std::string const& bytes) {
    root_.Write("root/upscli.cfg", bytes);
    Open();
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
  // "key:name|address|port " of every position; "- " where nothing is read and no output touched.
  std::string Entries() {
    std::string all;
    for (unsigned int i = 0; i < static_cast<unsigned int>(GetServerListCount(list_)); i++) {
      ServerListItem item = Item(std::string(21, 'x'), std::string(16, 'x'), 99);
      ServerListItem const before = item;
      unsigned int key = 99;
      if (GetServerListItem2(list_, i, &item, &key) == 1) {
        EXPECT_EQ(item.serverName[20] | item.serverAddress[15], 0) << i;
        all += std::to_string(key) + ":" + item.serverName + "|" + item.serverAddress + "|" +
               std::to_string(item.serverPort) + " ";
      } else {
        all += Bytes(item) == Bytes(before) && key == 99 ? "- " : "changed ";
      }
    }
    return all;
  }
  std::string File() const { return root_.Read("root/upscli.cfg"); }

  test::Installation root_;
  void* list_ = nullptr;
};

std::string Without(std::string text, std::string const& line) { return text.erase(text.find(line), line.size()); }

TEST_F(ServerList, ReadsAHandMadeList) {
  Open(kOld);
  // In ascending order of the keys' text; "2002 ; note" is no number, since what follows a value belongs to it.
  EXPECT_EQ(Entries(), "0:first|10.0.0.1|4375 10:tenth|10.0.0.10|4375 2:second|10.0.0.2|4375 - - 0:named|10.0.0.7|7 ");
  ServerListItem item;
  unsigned int key = 0;
  EXPECT_EQ(GetServerListItem(list_, 6, &item) + GetServerListItem(list_, 4294967295u, &item), 0);
  EXPECT_EQ(GetServerListItem(list_, 2, &item), 1);
  EXPECT_STREQ(item.serverName, "second");
  EXPECT_EQ(GetServerListItem2(list_, 1, nullptr, &key), 1);
  EXPECT_EQ(key, 10u);
  EXPECT_EQ(GetServerListItem2(list_, 1, &item, nullptr) + GetServerListItem(list_, 1, nullptr), 2);
  Close();
  EXPECT_EQ(File(), kOld);
}

TEST_F(ServerList, Values) {
  std::string const longest = std::string(20, 'n') + ";" + std::string(15, 'a') + ";1";
  std::string const longer = std::string(21, 'n') + ";" + std::string(16, 'a') + ";1";
  std::string const widest = "3:" + std::string(20, 'n') + "|" + std::string(15, 'a') + "|1 ";
  std::string const cases[][2] = {{"a;b;1", "3:a|b|1 "},
                                  {"a;b;1;more", "3:a|b|1 "},
                                  {";;", "3:||4375 "},
                                  {"a;b;", "3:a|b|4375 "},
                                  {"a;b;-1", "3:a|b|-1 "},
                                  {"a ; b;+7", "3:a | b|7 "},
                                  {"a;b; 1", "3:a|b|4375 "},
                                  {"a;b;2147483647", "3:a|b|2147483647 "},
                                  {"a;b;2147483648", "3:a|b|4375 "},
                                  {"a;b", "- "},
                                  {"a,b,1", "- "},
                                  {"", "- "},
                                  {longest, widest},
                                  {longer, widest}};
  for (auto const& c : cases) {
    Open("[CLILIST]\n3 = " + c[0] + "\n");
    EXPECT_EQ(Entries(), c[1]) << c[0];
  }
}

TEST_F(ServerList, AFreshRootGetsItsFileWithTheFirstEntry) {
  std::vector<std::string> const before = root_.List();
  Open();
  EXPECT_EQ(GetServerListCount(list_) + Remove("a", "b", 1) + Add("a\n9 = b", "line feed", 1), 0);
  EXPECT_EQ(RemServerListItem2(list_, 0) + ClearServerList(list_), 2);
  Close();
  EXPECT_EQ(root_.List(), before);
  Open();
  EXPECT_EQ(Add("server", "10.0.0.1", 4375), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = server;10.0.0.1;4375") << "saved at once, not on closing";
  EXPECT_EQ(Add("server", "10.0.0.1", 4376), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = server;10.0.0.1;4375\n1 = server;10.0.0.1;4376");
}

TEST_F(ServerList, AddsToAHandMadeList) {
  Open(kOld);
  std::string expected = kOld;
  auto const append = [&](char const* line) { expected.insert(expected.find(kRest), line); };
  EXPECT_EQ(Add("new", "1.2.3.4", 5), 1);
  append("1 = new;1.2.3.4;5\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Add("max", "1.2.3.6", -1, 4294967295u), 1);
  append("4294967295 = max;1.2.3.6;4294967295\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Add("other", "1.2.3.5", 1, 2), 1) << "an entry of that number is replaced where it stands";
  std::string const old = "  2=second;10.0.0.2;2002 ; note\r\n";
  EXPECT_EQ(File(), expected.replace(expected.find(old), old.size(), "2 = other;1.2.3.5;1\n"));
}

TEST_F(ServerList, OnlyAnIdenticalEntryIsRefused) {
  Open("[CLILIST]\n1 = a;b;4375\n2 = broken\n3 = c;d;no number\n4 = e;f;1;more\n");
  std::string const before = File();
  EXPECT_EQ(Add("a", "b", 4375) + Add("c", "d", 4375) + Add("e", "f", 1), 0);
  EXPECT_EQ(Add("a", "b", 4375, 1) + Add("c", "d", 4375, 9) + Add("e", "f", 1, 9), 0);
  EXPECT_EQ(File(), before);
  EXPECT_EQ(Add("A", "b", 4375) + Add("a", "B", 4375) + Add("a", "b", 4374) + Add("", "", 0), 4);
  EXPECT_EQ(Add("", "", 0), 0);
}

TEST_F(ServerList, TakesTheSmallestFreeNumber) {
  struct {
    char const* keys;
    unsigned int taken;
  } const cases[] = {{"", 0},
                     {"1 = x\n", 0},
                     {"0 = x\n", 1},
                     {"0 = x\n1 = x\n3 = x\n", 2},
                     {"-1 = x\n2147483647 = x\n", 0},
                     {"00 = x\n+1 = x\n002 = x\n", 3},
                     {"k = x\n", 1},  // no number counts as 0
                     {"4294967295 = x\n", 1}};
  for (auto const& c : cases) {
    Open("[CLILIST]\n" + std::string(c.keys));
    EXPECT_EQ(Add("new", "1.1.1.1", 1), 1) << c.keys;
    EXPECT_NE(Entries().find(std::to_string(c.taken) + ":new|"), std::string::npos) << c.keys << Entries();
  }
}

TEST_F(ServerList, FieldsWithoutNulEndAtTheirWidth) {
  Open();
  ServerListItem const item = Item(std::string(21, 'x'), std::string(16, 'x'), 7);
  EXPECT_EQ(AddServerListItem(list_, &item), 1);
  EXPECT_EQ(File(), "[CLILIST]\n0 = " + std::string(21, 'x') + ";" + std::string(16, 'x') + ";7");
  EXPECT_EQ(AddServerListItem(list_, &item), 0);
  EXPECT_EQ(RemServerListItem(list_, &item), 1);
  EXPECT_EQ(File(), "[CLILIST]");
}

TEST_F(ServerList, Removes) {
  Open(kOld);
  EXPECT_EQ(Remove("first", "10.0.0.1", 4374) + Remove("First", "10.0.0.1", 4375) + Remove("shadowed", "10.0.0.99", 1),
            0);
  EXPECT_EQ(RemServerListItem2(list_, 3) + RemServerListItem2(list_, 4294967295u), 2);
  EXPECT_EQ(File(), kOld);
  EXPECT_EQ(Remove("named", "10.0.0.7", 7), 1);
  std::string expected = Without(kOld, "name = named;10.0.0.7;7\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(Remove("tenth", "10.0.0.10", 4375), 1);
  EXPECT_EQ(File(), expected = Without(expected, "10 = tenth;10.0.0.10;x\n"));
  EXPECT_EQ(RemServerListItem2(list_, 4), 1);
  EXPECT_EQ(File(), Without(expected, "4 = broken;entry\n"));
  Open("[CLILIST]\n1 = a;b;1\n2 = a;b;1\n");
  EXPECT_EQ(Remove("a", "b", 1), 1);
  EXPECT_EQ(File(), "[CLILIST]\n2 = a;b;1\n") << "the first of two that match";
}

TEST_F(ServerList, ClearingLeavesTheRestOfTheFile) {
  Open(kOld);
  std::string const rest = std::string(kTop) + "# between\r\n" + kRest;
  EXPECT_EQ(ClearServerList(list_), 1);
  EXPECT_EQ(GetServerListCount(list_), 0);
  EXPECT_EQ(File(), rest);
  EXPECT_EQ(ClearServerList(list_), 1);
  EXPECT_EQ(Add("again", "1.1.1.1", 1), 1);
  EXPECT_EQ(File(), rest + "\n[CLILIST]\n0 = again;1.1.1.1;1");
}

TEST_F(ServerList, ASaveThatFailsShowsInTheResult) {
  int const descriptors = test::OpenDescriptors();
  Open("[CLILIST]\n1 = a;b;1\n2 = c;d;2\n");
  // A folder in the file's place can neither be replaced nor written.
  std::filesystem::remove(root_.Root("upscli.cfg"));
  std::filesystem::create_directories(root_.Root("upscli.cfg/x"));
  std::vector<std::string> const before = root_.List();
  EXPECT_EQ(Add("e", "f", 3) + Remove("a", "b", 1), 0);
  EXPECT_EQ(RemServerListItem2(list_, 2), 1) << "whatever becomes of it";
  EXPECT_EQ(ClearServerList(list_), 0);
  Close();
  EXPECT_EQ(OpenServerList(), nullptr) << "exists, but cannot be read";
  EXPECT_EQ(root_.List(), before);
  EXPECT_EQ(test::OpenDescriptors(), descriptors);
}

TEST_F(ServerList, NullArguments) {
  Open(kOld);
  ServerListItem item = Item("a", "b", 1);
  unsigned int key = 0;
  EXPECT_EQ(GetServerListCount(nullptr) + GetServerListItem(nullptr, 0, &item), 0);
  EXPECT_EQ(GetServerListItem2(nullptr, 0, &item, &key) + AddServerListItem(nullptr, &item), 0);
  EXPECT_EQ(AddServerListItem2(nullptr, &item, 1) + RemServerListItem(nullptr, &item), 0);
  EXPECT_EQ(RemServerListItem2(nullptr, 1) + ClearServerList(nullptr) + CloseServerList(nullptr), 0);
  EXPECT_EQ(AddServerListItem(list_, nullptr) + AddServerListItem2(list_, nullptr, 1), 0);
  EXPECT_EQ(RemServerListItem(list_, nullptr), 0);
  EXPECT_EQ(File(), kOld);
}

TEST_F(ServerList, TenThousandEntries) {
  constexpr unsigned int kCount = 10000;
  auto const line = [](unsigned int i) {
    return std::to_string(i) + " = host" + std::to_string(i) + ";10.0.0.1;" + std::to_string(i) + "\n";
  };
  std::string bytes = "[CLILIST]\n";
  for (unsigned int i = 0; i < kCount; i++) bytes += line(i);
  Open(Without(bytes, line(7777)));
  std::vector<bool> seen(kCount);
  for (unsigned int i = 0; i < kCount - 1; i++) {
    ServerListItem item;
    unsigned int key = 0;
    ASSERT_EQ(GetServerListItem2(list_, i, &item, &key), 1) << i;
    ASSERT_EQ("host" + std::to_string(key), item.serverName);
    seen[key] = true;
  }
  EXPECT_EQ(std::count(seen.begin(), seen.end(), true), kCount - 1);
  EXPECT_EQ(Add("host7777", "10.0.0.1", 7777) + Remove("host5000", "10.0.0.1", 5000) + Add("late", "10.0.0.1", 1), 3);
  EXPECT_EQ(File(), Without(Without(bytes, line(7777)), line(5000)) + line(7777) + "5000 = late;10.0.0.1;1\n");
}

}  // namespace
