#include "zelvane/api/upslist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

constexpr char kTemplate[] =
    "; what a new unit gets\r\n"
    "[FILES]\r\n"
    "2 = upssrv.cfg\r\n"
    "1= notes \xE7.txt \n"
    "3 =\n"
    "[OTHER]\n"
    "1 = not this one\n";

class UpsList : public testing::Test {
 protected:
  UpsList() {
    root_.Write("root/default/zelcfg.cfg", kTemplate);
    root_.Write("root/default/upssrv.cfg", std::string("[UPS]\nUPSTYPE = 3\0\n", 19));
    root_.Write("root/default/notes \xE7.txt", "");
    root_.Write("root/default/not this one", "x");
  }
  // A unit's folder may not be entered by an ordinary user, who still has to remove it.
  ~UpsList() override {
    for (char const* name : {"000", "007", "099"}) chmod(root_.Root(name).c_str(), 0700);
  }

  std::string List() const { return root_.Read("root/srvlist.cfg"); }
  // A unit that has its folder: adding and listing it is all that is left to do.
  void MakeUnit(std::string const& name) { std::filesystem::create_directory(root_.Root(name)); }

  test::Installation root_;
};

std::string Item(unsigned int position) {
  char name[] = "....~";
  return GetUpsListItem(position, name) == 1 ? std::string(name) + name[4] : std::string("- ") + name;
}

// ---- Reading ----

TEST_F(UpsList, NoList) {
  std::vector<std::string> const before = root_.List();
  EXPECT_EQ(GetUpsListCount(), 0);
  EXPECT_EQ(Item(0), "- ....~");
  EXPECT_EQ(RemUpsListItem("7"), 1);
  EXPECT_EQ(root_.List(), before);
}

TEST_F(UpsList, ReadsAHandMadeList) {
  root_.Write(
      "root/srvlist.cfg",
      "[srvlist]\r\n 10 = 10 ; not a comment\r\n2=12\n; note\n3 =\nx = 1\n1 = 0001\n9 = abcdef\n[X]\n5 = 005\n");
  EXPECT_EQ(GetUpsListCount(), 6);
  // In ascending order of the keys' text: 1 10 2 3 9 X. Values are filled to three characters, or cut.
  char const* const names[] = {"000~", "10 ~", "012~", "000~", "abc~", "001~"};
  for (unsigned int i = 0; i < std::size(names); i++) EXPECT_EQ(Item(i), names[i]) << i;
  EXPECT_EQ(Item(6), "- ....~");
  EXPECT_EQ(Item(4294967295u), "- ....~");
  EXPECT_EQ(GetUpsListItem(0, nullptr), 0);
}

// ---- Adding ----

TEST_F(UpsList, AFreshUnitGetsItsFolderAndFiles) {
  for (mode_t const mask : {0, 022}) {
    std::filesystem::remove_all(root_.Root("007"));
    mode_t const old = umask(mask);
    int const added = AddUpsListItem("7");
    umask(old);
    struct stat status = {};
    ASSERT_EQ(stat(root_.Root("007").c_str(), &status), 0) << mask;
    EXPECT_EQ(status.st_mode & 07777u, 01230u & ~mask) << mask;
    chmod(root_.Root("007").c_str(), 0700);
    if (geteuid() != 0) {
      EXPECT_EQ(added, 0) << "the folder cannot be entered, so nothing can be copied";
      EXPECT_FALSE(root_.Exists("root/srvlist.cfg"));
      continue;
    }
    EXPECT_EQ(added, 1) << mask;
    EXPECT_EQ(List(), "[SRVLIST]\n7 = 007");
    EXPECT_EQ(root_.List(),
              (std::vector<std::string>{"home/", "root/", "root/007/", "root/007/notes \xE7.txt", "root/007/upssrv.cfg",
                                        "root/default/", "root/default/not this one", "root/default/notes \xE7.txt",
                                        "root/default/upssrv.cfg", "root/default/zelcfg.cfg", "root/srvlist.cfg",
                                        "zelvane.conf"}));
    EXPECT_EQ(root_.Read("root/007/upssrv.cfg"), root_.Read("root/default/upssrv.cfg"));
  }
}

TEST_F(UpsList, NamesOfUnits) {
  struct {
    char const* name;
    char const* entry;  // null: refused
  } const cases[] = {
      {"7", "7 = 007"},
      {"07", "7 = 007"},
      {"007", "7 = 007"},
      {"0007", "7 = 007"},
      {"008", "8 = 008"},
      {"+7", nullptr},
      {"+12", "12 = 012"},
      {"", "0 = 000"},
      {"0", "0 = 000"},
      {"99", "99 = 099"},
      {"0000000000099", "99 = 099"},
      {"100", nullptr},
      {"0100", nullptr},
      {"-1", nullptr},
      {"-12", nullptr},
      {"-000", "0 = 000"},
      {"a", nullptr},
      {"7a", nullptr},
      {" 7", nullptr},
      {"0x7", nullptr},
      {"../7", nullptr},
      {"7/", nullptr},
      {"-", nullptr},
      {"4294967303", nullptr},
      {"99999999999999999999", nullptr},
  };
  for (char const* name : {"000", "007", "008", "012", "099", "100", "-12", "+12"}) MakeUnit(name);
  std::vector<std::string> const before = root_.List();
  for (auto const& c : cases) {
    EXPECT_EQ(AddUpsListItem(c.name), c.entry == nullptr ? 0 : 1) << c.name;
    EXPECT_EQ(List(), c.entry == nullptr ? "<missing>" : "[SRVLIST]\n" + std::string(c.entry)) << c.name;
    std::filesystem::remove(root_.Root("srvlist.cfg"));
    EXPECT_EQ(root_.List(), before) << c.name;
  }
  EXPECT_EQ(AddUpsListItem(nullptr), 0);
}

TEST_F(UpsList, AUnitWithAFolderIsOnlyListed) {
  std::filesystem::remove_all(root_.Root("default"));
  root_.Write("root/007/upssrv.cfg", "kept");
  std::string const old = "# lista \xE9\r\n[SrvList]\r\n  3=003 ; three\r\n\r\n[Next]\nA = B\n";
  root_.Write("root/srvlist.cfg", old);
  EXPECT_EQ(AddUpsListItem("7"), 1);
  std::string expected = old;
  expected.insert(expected.find("\r\n[Next]"), "7 = 007\n");
  EXPECT_EQ(List(), expected);
  EXPECT_EQ(AddUpsListItem("7"), 1) << "listed already";
  EXPECT_EQ(List(), expected);
  EXPECT_EQ(root_.Read("root/007/upssrv.cfg"), "kept");
  EXPECT_FALSE(root_.Exists("root/007/zelcfg.cfg"));
}

TEST_F(UpsList, WithoutATemplateNothingIsCreated) {
  std::vector<std::string> const bare = {"home/", "root/", "zelvane.conf"};
  struct {
    char const* what;
    void (*spoil)(std::string const& folder);
  } const cases[] = {
      {"no list of files", [](std::string const& folder) { std::filesystem::remove(folder + "zelcfg.cfg"); }},
      {"a folder for a list",
       [](std::string const& folder) { std::filesystem::create_directory(folder + "zelcfg.cfg"); }},
      {"no folder", [](std::string const& folder) { std::filesystem::remove_all(folder); }},
      {"a file for a folder",
       [](std::string const& folder) { test::WriteFile(folder.substr(0, folder.size() - 1), ""); }},
  };
  for (auto const& c : cases) {
    c.spoil(root_.Root("default/"));
    std::vector<std::string> const before = root_.List();
    EXPECT_EQ(AddUpsListItem("7"), 0) << c.what;
    EXPECT_EQ(root_.List(), before) << c.what;
  }
}

TEST_F(UpsList, NamesThatLeadOutOfTheTemplateAreRefused) {
  for (char const* name : {"../zelvane.conf", "..", "sub/x", "/etc/hostname", "a..b"}) {
    root_.Write("root/default/zelcfg.cfg", "[FILES]\n1 = upssrv.cfg\n2 = " + std::string(name) + "\n");
    root_.Write("root/default/sub/x", "x");
    std::vector<std::string> const before = root_.List();
    EXPECT_EQ(AddUpsListItem("7"), 0) << name;
    EXPECT_EQ(root_.List(), before) << name;
  }
}

TEST_F(UpsList, AFailedCopyLeavesTheUnitUnlisted) {
  struct {
    char const* name;  // listed between two good ones
    char const* what;
  } const cases[] = {{"missing", "no such file"}, {"folder", "a folder"}};
  std::filesystem::create_directory(root_.Root("default/folder"));
  for (auto const& c : cases) {
    root_.Write("root/default/zelcfg.cfg",
                "[FILES]\n1 = upssrv.cfg\n2 = " + std::string(c.name) + "\n3 = notes \xE7.txt\n");
    EXPECT_EQ(AddUpsListItem("7"), 0) << c.what;
    EXPECT_FALSE(root_.Exists("root/srvlist.cfg")) << c.what;
    ASSERT_EQ(chmod(root_.Root("007").c_str(), 0700), 0) << c.what;
    EXPECT_EQ(root_.Exists("root/007/upssrv.cfg"), geteuid() == 0) << c.what;
    EXPECT_FALSE(root_.Exists("root/007/notes \xE7.txt")) << c.what;
    std::filesystem::remove_all(root_.Root("007"));
  }
}

TEST_F(UpsList, AFolderThatCannotBeMade) {
  root_.Write("root/007", "a file");
  EXPECT_EQ(AddUpsListItem("7"), 0);
  EXPECT_EQ(root_.Read("root/007"), "a file");
  EXPECT_FALSE(root_.Exists("root/srvlist.cfg"));
}

TEST_F(UpsList, AListThatCannotBeRead) {
  MakeUnit("007");
  std::filesystem::create_directory(root_.Root("srvlist.cfg"));
  std::vector<std::string> const before = root_.List();
  EXPECT_EQ(GetUpsListCount(), 0);
  EXPECT_EQ(Item(0), "- ....~");
  EXPECT_EQ(AddUpsListItem("7"), 0);
  EXPECT_EQ(RemUpsListItem("7"), 0);
  EXPECT_EQ(root_.List(), before);
}

// ---- Removing ----

TEST_F(UpsList, RemovesTheEntryAndKeepsTheFolder) {
  MakeUnit("007");
  std::string const old = "; top\r\n[SRVLIST]\r\n 7 = 007\r\n; mid\n12=012\n100 = 100\n-12 = x\n[X]\n7 = 1\n";
  struct {
    char const* name;
    char const* line;  // that goes; "" for none
  } const cases[] = {
      {"7", " 7 = 007\r\n"},  {"007", " 7 = 007\r\n"}, {"0012", "12=012\n"},           {"3", ""}, {"", ""},
      {"100", "100 = 100\n"}, {"-12", "-12 = x\n"},    {"99999999999", "100 = 100\n"},
  };
  for (auto const& c : cases) {
    root_.Write("root/srvlist.cfg", old);
    EXPECT_EQ(RemUpsListItem(c.name), 1) << c.name;
    std::string expected = old;
    expected.erase(expected.find(c.line), std::string(c.line).size());
    EXPECT_EQ(List(), expected) << c.name;
  }
  EXPECT_EQ(RemUpsListItem(nullptr), 0);
  EXPECT_TRUE(root_.Exists("root/007"));
}

TEST_F(UpsList, LeavesNoDescriptorOpen) {
  MakeUnit("007");
  int const before = test::OpenDescriptors();
  AddUpsListItem("7");
  AddUpsListItem("8");
  Item(0);
  RemUpsListItem("7");
  EXPECT_EQ(test::OpenDescriptors(), before);
  chmod(root_.Root("008").c_str(), 0700);
}

}  // namespace
