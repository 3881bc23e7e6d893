#include "zelvane/api/upslist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/settings.h"

namespace fs = std::filesystem;

namespace {

class UpsList : public testing::Test {
 protected:
  UpsList() {
    root_.Write("root/default/zelcfg.cfg",
                "; what a new unit gets\r\n[FILES]\r\n2 = upssrv.cfg\r\n1= notes \xE7.txt \n3 =\n[OTHER]\n1 = other\n");
    root_.Write("root/default/upssrv.cfg", std::string("[UPS]\nUPSTYPE = 3\0\n", 19));
    root_.Write("root/default/notes \xE7.txt", "");
    root_.Write("root/default/other", "x");
  }
  // A new unit's folder may not be entered by an ordinary user, who still has to remove it.
  ~UpsList() override { Unlock(); }
  bool Unlock() const { return chmod(root_.Root("007").c_str(), 0700) == 0; }

  std::string List() const { return root_.Read("root/srvlist.cfg"); }

  test::Installation root_;
};

// The item with the byte behind it; "-" when there is none and the buffer was left alone.
std::string Item(unsigned int position) {
  char name[] = "....~";
  if (GetUpsListItem(position, name) == 1) return std::string(name) + name[4];
  return std::string(name) == "....~" ? "-" : "changed";
}

TEST_F(UpsList, ReadsAHandMadeList) {
  std::vector<std::string> const before = root_.List();
  EXPECT_EQ(GetUpsListCount(), 0);
  EXPECT_EQ(Item(0), "-");
  EXPECT_EQ(RemUpsListItem("7"), 1);
  EXPECT_EQ(root_.List(), before) << "nothing is created without a list";
  root_.Write(
      "root/srvlist.cfg",
      "[srvlist]\r\n 10 = 10 ; not a comment\r\n2=12\n; note\n3 =\nx = 1\n1 = 0001\n9 = abcdef\n[X]\n5 = 005\n");
  EXPECT_EQ(GetUpsListCount(), 6);
  // In ascending order of the keys' text: 1 10 2 3 9 X. Values are filled to three characters, or cut.
  char const* const names[] = {"000~", "10 ~", "012~", "000~", "abc~", "001~", "-"};
  for (unsigned int i = 0; i < std::size(names); i++) EXPECT_EQ(Item(i), names[i]) << i;
  EXPECT_EQ(Item(4294967295u), "-");
  EXPECT_EQ(GetUpsListItem(0, nullptr), 0);
}

TEST_F(UpsList, AFreshUnitGetsItsFolderAndFiles) {
  std::vector<std::string> const before = root_.List();
  for (mode_t const mask : {0, 022}) {
    fs::remove_all(root_.Root("007"));
    mode_t const old = umask(mask);
    int const descriptors = test::OpenDescriptors();
    int const added = AddUpsListItem("7");
    EXPECT_EQ(test::OpenDescriptors(), descriptors);
    umask(old);
    struct stat status = {};
    ASSERT_EQ(stat(root_.Root("007").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 01230u & ~mask);
    ASSERT_TRUE(Unlock());
    bool const root = geteuid() == 0;  // others cannot enter the folder, so nothing can be copied
    EXPECT_EQ(added, root ? 1 : 0);
    EXPECT_EQ(List(), root ? "[SRVLIST]\n7 = 007" : "<missing>");
    EXPECT_EQ(root_.List().size(), before.size() + (root ? 4 : 1)) << "the folder, two files, the list";
    if (!root) continue;
    EXPECT_EQ(root_.Read("root/007/upssrv.cfg"), root_.Read("root/default/upssrv.cfg"));
    EXPECT_EQ(root_.Read("root/007/notes \xE7.txt"), "");
  }
}

TEST_F(UpsList, NamesOfUnits) {
  for (char const* name : {"000", "007", "008", "012", "099", "100", "-12", "+12"})
    fs::create_directory(root_.Root(name));
  std::vector<std::string> const before = root_.List();
  char const* const entries[][2] = {{"7", "7 = 007"},   {"07", "7 = 007"},     {"0007", "7 = 007"},
                                    {"008", "8 = 008"}, {"", "0 = 000"},       {"-000", "0 = 000"},
                                    {"99", "99 = 099"}, {"00099", "99 = 099"}, {"+12", "12 = 012"}};
  for (auto const& [name, entry] : entries) {
    EXPECT_EQ(AddUpsListItem(name), 1) << name;
    EXPECT_EQ(List(), "[SRVLIST]\n" + std::string(entry)) << name;
    fs::remove(root_.Root("srvlist.cfg"));
  }
  // "7" with a sign is filled to "0+7" before it is read.
  for (char const* name : {"100", "0100", "-1", "-12", "+7", "a", "7a", " 7", "0x7", "../7", "7/", "-", "4294967303"})
    EXPECT_EQ(AddUpsListItem(name), 0) << name;
  EXPECT_EQ(AddUpsListItem(nullptr), 0);
  EXPECT_EQ(root_.List(), before);
}

TEST_F(UpsList, AUnitWithAFolderIsOnlyListed) {
  fs::remove_all(root_.Root("default"));
  root_.Write("root/007/upssrv.cfg", "kept");
  root_.Write("root/srvlist.cfg", "# lista \xE9\r\n[SrvList]\r\n  3=003 ; three\r\n\r\n[Next]\nA = B\n");
  for (int i = 0; i < 2; i++) {
    EXPECT_EQ(AddUpsListItem("7"), 1);
    EXPECT_EQ(List(), "# lista \xE9\r\n[SrvList]\r\n  3=003 ; three\r\n7 = 007\n\r\n[Next]\nA = B\n");
  }
  EXPECT_EQ(root_.Read("root/007/upssrv.cfg"), "kept");
}

TEST_F(UpsList, NothingIsCreatedWithoutASoundTemplate) {
  std::string const folder = root_.Root("default");
  auto const refused = [&](std::string const& what) {
    std::vector<std::string> const before = root_.List();
    EXPECT_EQ(AddUpsListItem("7"), 0) << what;
    EXPECT_EQ(root_.List(), before) << what;
  };
  root_.Write("root/default/sub/x", "x");
  for (std::string const name : {"../zelvane.conf", "..", "sub/x", "/etc/hostname", "a..b"}) {
    root_.Write("root/default/zelcfg.cfg", "[FILES]\n1 = upssrv.cfg\n2 = " + name + "\n");
    refused("a listed name that may lead elsewhere: " + name);
  }
  fs::remove(folder + "/zelcfg.cfg");
  refused("no list of files");
  fs::create_directory(folder + "/zelcfg.cfg");
  refused("a folder for a list");
  fs::remove_all(folder);
  refused("no folder");
  test::WriteFile(folder, "");
  refused("a file for a folder");
}

TEST_F(UpsList, AFailedCopyLeavesTheUnitUnlisted) {
  fs::create_directory(root_.Root("default/folder"));
  for (std::string const name : {"missing", "folder", "."}) {
    root_.Write("root/default/zelcfg.cfg", "[FILES]\n1 = upssrv.cfg\n2 = " + name + "\n3 = other\n");
    EXPECT_EQ(AddUpsListItem("7"), 0) << name;
    EXPECT_EQ(List(), "<missing>") << name;
    ASSERT_TRUE(Unlock()) << name;
    EXPECT_EQ(root_.Exists("root/007/upssrv.cfg"), geteuid() == 0) << name;
    EXPECT_FALSE(root_.Exists("root/007/other")) << name;
    fs::remove_all(root_.Root("007"));
  }
  root_.Write("root/007", "a file in the folder's place");
  EXPECT_EQ(AddUpsListItem("7"), 0);
  EXPECT_EQ(root_.Read("root/007"), "a file in the folder's place");
  EXPECT_EQ(List(), "<missing>");
}

TEST_F(UpsList, RemovesTheEntryAndKeepsTheFolder) {
  fs::create_directory(root_.Root("007"));
  std::string const old = "; top\r\n[SRVLIST]\r\n 7 = 007\r\n; mid\n12=012\n100 = 100\n-12 = x\n[X]\n7 = 1\n";
  char const* const lines[][2] = {
      {"7", " 7 = 007\r\n"}, {"007", " 7 = 007\r\n"}, {"0012", "12=012\n"},        {"3", ""}, {"", ""},
      {"-12", "-12 = x\n"},  {"100", "100 = 100\n"},  {"no number", "100 = 100\n"}};
  for (auto const& [name, line] : lines) {
    root_.Write("root/srvlist.cfg", old);
    EXPECT_EQ(RemUpsListItem(name), 1) << name;
    std::string expected = old;
    EXPECT_EQ(List(), expected.erase(old.find(line), std::string(line).size())) << name;
  }
  EXPECT_EQ(RemUpsListItem(nullptr), 0);
  EXPECT_TRUE(root_.Exists("root/007"));
  fs::remove(root_.Root("srvlist.cfg"));
  fs::create_directory(root_.Root("srvlist.cfg"));
  std::vector<std::string> const before = root_.List();
  EXPECT_EQ(GetUpsListCount() + AddUpsListItem("7") + RemUpsListItem("7"), 0) << "a list that cannot be read";
  EXPECT_EQ(root_.List(), before);
}

}  // namespace
