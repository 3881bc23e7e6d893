#include "zelvane/api/upslist.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

class UpsList : public testing::Test {
 protected:
  UpsList() {
    at_.Write("root/default/zelcfg.cfg",
              "; what a new unit gets\r\n[FILES]\r\n2 = upssrv.cfg\r\n1= notes \xE7.txt \n3 =\n[OTHER]\n1 = other\n");
    at_.Write("root/default/upssrv.cfg", std::string("[UPS]\nUPSTYPE = 3\0\n", 19));
    for (char const* name : {"notes \xE7.txt", "other", "folder/x"}) at_.Write("root/default/" + std::string(name), "");
    mkfifo(at_.Root("default/fifo").c_str(), 0600);
  }
  // An ordinary user may not enter a new unit's directory, but must read and remove it.
  ~UpsList() override { chmod(at_.Root("007").c_str(), 0700); }
  std::string List() const { return at_.Read("root/srvlist.cfg"); }

  test::Installation at_;
};

TEST_F(UpsList, ReadsAHandMadeList) {
  auto const before = at_.List();
  EXPECT_EACH((GetUpsListCount(), RemUpsListItem("7")), 0, 1);
  EXPECT_EQ(at_.List(), before) << "nothing is created without a list";
  at_.Write("root/srvlist.cfg",
            "[srvlist]\r\n 10 = 10 ; not a comment\r\n2=12\n; note\n3 =\nx = 1\n1 = 0001\n9 = abcdef\n[X]\n5 = 005\n");
  // In ascending text order of the keys: 1 10 2 3 9 X. Values are padded or cut to three characters.
  std::string all;
  for (unsigned int const position : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 4294967295u}) {
    char name[] = "....~";
    all += test::Words(GetUpsListItem(position, name), std::string_view(name, 5));
  }
  EXPECT_EQ(all, std::string("1 000\0~ 1 10 \0~ 1 012\0~ 1 000\0~ 1 abc\0~ 1 001\0~ 0 ....~ 0 ....~ ", 64));
  EXPECT_EQ(GetUpsListCount(), 6);
}

TEST_F(UpsList, AFreshUnitGetsItsFolderAndFiles) {
  auto const before = at_.List();
  bool const root = geteuid() == 0;  // other users cannot enter the directory, so nothing is copied
  for (mode_t const mask : {0U, 022U}) {
    fs::remove_all(at_.Root("007"));
    mode_t const old = umask(mask);
    EXPECT_EQ(AddUpsListItem("7"), root);
    umask(old);
    EXPECT_EQ(static_cast<mode_t>(fs::status(at_.Root("007")).permissions()), 01230u & ~mask);
    fs::permissions(at_.Root("007"), fs::perms::owner_all);
    EXPECT_EQ(List(), root ? "[SRVLIST]\n7 = 007" : "<missing>");
    EXPECT_EQ(at_.List().size(), before.size() + (root ? 4 : 1)) << "the folder, two files, the list";
    EXPECT_EQ(at_.Read("root/007/upssrv.cfg"), root ? at_.Read("root/default/upssrv.cfg") : "<missing>");
  }
}

TEST_F(UpsList, AUnitWithAFolderIsOnlyListed) {
  for (char const* name : {"000", "007", "008", "012", "099", "100", "-12", "+12"})
    fs::create_directory(at_.Root(name));
  fs::remove_all(at_.Root("default"));
  for (test::Case const& c : test::Cases("upslist.txt", "names")) {
    EXPECT_EQ(AddUpsListItem(c[0].c_str()), c[1] != "refused") << c;
    EXPECT_EQ(List(), c[1] != "refused" ? "[SRVLIST]\n" + c[1] : "<missing>") << c;
    fs::remove(at_.Root("srvlist.cfg"));
  }
  at_.Write("root/srvlist.cfg", "# lista \xE9\r\n[SrvList]\r\n  3=003 ; three\r\n\r\n[Next]\nA = B\n");
  EXPECT_EACH((AddUpsListItem("7"), AddUpsListItem("007")), 1);
  EXPECT_EQ(List(), "# lista \xE9\r\n[SrvList]\r\n  3=003 ; three\r\n7 = 007\n\r\n[Next]\nA = B\n");
}

TEST_F(UpsList, NoUnitWithoutASoundTemplate) {
  at_.Write("root/008", "");
  EXPECT_EQ(AddUpsListItem("8"), 0) << "a file in the place of the unit's folder";
  at_.Write("root/default/zelcfg.cfg", "[FILES]\n");
  EXPECT_EQ(AddUpsListItem("8"), 0) << "the same with nothing to copy";
  auto const before = at_.List();
  for (test::Case const& c : test::Cases("upslist.txt", "bad templates")) {
    at_.Write("root/default/zelcfg.cfg", c[0]);
    EXPECT_EQ(AddUpsListItem("7"), 0) << c;
    chmod(at_.Root("007").c_str(), 0700);
    size_t const made = c[1] == "no" ? 0 : geteuid() == 0 ? 2 : 1;  // the directory, and the file before the bad one
    EXPECT_EQ(at_.List().size(), before.size() + made) << c;
    fs::remove_all(at_.Root("007"));
  }
  for (char const* gone : {"default/zelcfg.cfg", "default"}) {
    fs::remove_all(at_.Root(gone));
    auto const rest = at_.List();
    EXPECT_EQ(AddUpsListItem("7"), 0) << gone;
    EXPECT_EQ(at_.List(), rest) << gone;
  }
}

TEST_F(UpsList, RemovesTheEntryAndKeepsTheFolder) {
  fs::create_directory(at_.Root("007"));
  std::string const old = "; top\r\n[SRVLIST]\r\n 7 = 007\r\n; mid\n12=012\n100 = 100\n-12 = x\n[X]\n7 = 1\n";
  for (test::Case const& c : test::Cases("upslist.txt", "removals")) {
    at_.Write("root/srvlist.cfg", old);
    EXPECT_EQ(RemUpsListItem(c[0].c_str()), 1) << c;
    EXPECT_EQ(List(), std::string(old).erase(old.find(c[1]), c[1].size())) << c;
  }
  EXPECT_TRUE(at_.Exists("root/007"));
  fs::remove(at_.Root("srvlist.cfg"));
  fs::create_directory(at_.Root("srvlist.cfg"));
  EXPECT_EACH((GetUpsListCount(), AddUpsListItem("7"), RemUpsListItem("7")), 0) << "a list that cannot be read";
}

}  // namespace
