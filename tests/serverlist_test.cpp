#include "zelvane/api/serverlist.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

ServerListItem Item(std::string const& name, std::string const& address, int32_t port) {
  ServerListItem item = {};
  test::Put(item.serverName, name);
  test::Put(item.serverAddress, address);
  item.serverPort = port;
  return item;
}

class ServerList : public testing::Test {
 protected:
  ~ServerList() override { EXPECT_EQ(CloseServerList(list_), list_ == nullptr ? 0 : 1); }
  void Open(std::string const& bytes) {
    if (bytes == "<missing>") fs::remove(at_.Root("upscli.cfg"));
    if (bytes != "<missing>") at_.Write("root/upscli.cfg", bytes);
    EXPECT_EQ(CloseServerList(list_), list_ == nullptr ? 0 : 1);
    list_ = OpenServerList();
    ASSERT_NE(list_, nullptr);
  }
  int Change(std::string const& operation, ServerListItem const& item, unsigned int key = 0) {
    if (operation == "add") return AddServerListItem(list_, &item);
    if (operation == "add2") return AddServerListItem2(list_, &item, key);
    if (operation == "remove") return RemServerListItem(list_, &item);
    return operation == "remove2" ? RemServerListItem2(list_, key) : ClearServerList(list_);
  }
  // "key:name|address|port " for every position; "- " if nothing is read and no output changes.
  std::string Entries() {
    std::string all;
    for (unsigned int i = 0; i < static_cast<unsigned int>(GetServerListCount(list_)); i++) {
      ServerListItem const before = Item(std::string(21, 'x'), std::string(16, 'x'), 99);
      ServerListItem item = before;
      unsigned int key = 99;
      bool const found = GetServerListItem2(list_, i, &item, &key) == 1;
      if (!found) EXPECT_EACH((key, test::Bytes(item)), 99, test::Bytes(before)) << i;
      all += found ? std::to_string(key) + ":" + test::Server(item) + " " : "- ";
    }
    return all;
  }
  std::string File() const { return at_.Read("root/upscli.cfg"); }

  test::Installation at_;
  void* list_ = nullptr;
};

TEST_F(ServerList, ReadsAHandMadeList) {
  std::string const old = test::Fixture("serverlist-old.cfg");
  Open(old);
  // In ascending text order of the keys. "2002 ; note" is not a number, since text after a value belongs to it.
  EXPECT_EQ(Entries(), "0:first|10.0.0.1|4375 10:tenth|10.0.0.10|4375 2:second|10.0.0.2|4375 - - 0:named|10.0.0.7|7 ");
  ServerListItem item;
  unsigned int key = 0;
  EXPECT_EACH((GetServerListItem(list_, 6, &item), GetServerListItem(list_, 4294967295u, &item)), 0);
  EXPECT_EACH((GetServerListItem(list_, 2, &item), GetServerListItem2(list_, 1, nullptr, &key)), 1);
  EXPECT_EQ(test::Words(item.serverName, key), "second 10 ");
  EXPECT_EQ(File(), old);
}

TEST_F(ServerList, Values) {
  for (test::Case const& c : test::Cases("servers.txt", "entries")) {
    Open("[CLILIST]\n3 = " + c[0] + "\n");
    EXPECT_EQ(Entries(), c[1] == "refused" ? "- " : "3:" + c[1] + " ") << c;
  }
}

TEST_F(ServerList, Changes) {
  for (test::Case const& c : test::Cases("serverlist.txt", "changes")) {
    Open(c[0]);
    EXPECT_EQ(Change(c[1], Item(c[2], c[3], c.Int(4)), c.UInt(5)), c.Int(6)) << c;
    EXPECT_EQ(File(), c[7] == "same" ? c[0] : c[7]) << c;
  }
}

TEST_F(ServerList, ASaveThatFailsShowsInTheResult) {
  Open("[CLILIST]\n1 = a;b;1\n2 = c;d;2\n");
  // A directory in place of the file can be neither replaced nor written.
  fs::remove(at_.Root("upscli.cfg"));
  fs::create_directory(at_.Root("upscli.cfg"));
  auto const before = at_.List();
  EXPECT_EACH((Change("add", Item("e", "f", 3)), Change("remove", Item("a", "b", 1))), 0);
  EXPECT_EQ(RemServerListItem2(list_, 2), 1) << "whatever becomes of it";
  EXPECT_EACH((ClearServerList(list_), CloseServerList(std::exchange(list_, nullptr))), 0, 1);
  EXPECT_EQ(OpenServerList(), nullptr) << "exists, but cannot be read";
  EXPECT_EQ(at_.List(), before);
}

}  // namespace
