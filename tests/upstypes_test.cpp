#include "zelvane/api/upstypes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

// A table as a technician leaves it: notes, odd spacing, Latin-1, CR LF, entries that are damaged.
constexpr char kTable[] =
    "; tipos de nobreak\r\n"
    "[OTHER]\n"
    "9 = wrong;section;a;b;1\n"
    "[upstype]\r\n"
    "\t 2 =  Manager \xE9 III ; manager;zelcfg02;zelcli02; 7 \r\n"
    "10=Ten;ten;c10;l10;-1\n"
    "1 = One;one;c1;l1;3;sixth;seventh\n"
    "3 = four;fields;only;here\n"
    "4 =\n"
    "5 = Five;five;c5;l5;x\n"
    "6 = ;;;;65539\n"
    "007 = Bond;bond;c7;l7;7\n"
    "name = No number;n;n;n;1\n"
    "2 = Second;second;c;c;2\n"
    "4294967295 = Last;last;c;l;32768\n";

class UpsTypes : public testing::Test {
 protected:
  ~UpsTypes() override { EXPECT_EQ(CloseUPSTypeList(list_), list_ == nullptr ? 0 : 1); }

  void Load(std::string const& bytes) {
    root_.Write("root/upstype.cfg", bytes);
    list_ = OpenUPSTypeList(nullptr);
    ASSERT_NE(list_, nullptr);
  }

  test::Installation root_;
  void* list_ = nullptr;
};

std::string Describe(UpsTypeItem const& item) {
  return std::to_string(item.upsType) + "|" + std::to_string(item.modelIndex) + "|" + item.upsName + "|" +
         item.upsDriver + "|" + item.cfgModule + "|" + item.cliModule;
}

UpsTypeItem Filled() {
  UpsTypeItem item;
  std::memset(&item, 'x', sizeof item);
  return item;
}

TEST_F(UpsTypes, ByNumber) {
  Load(kTable);
  struct {
    unsigned int type;
    char const* expected;  // null: not found
  } const cases[] = {
      {1, "1|3|One|one|c1|l1"},
      {2, "2|-1|Manager \xE9 III | manager|zelcfg02|zelcli02"},  // " 7": blanks make it no number
      {10, "10|-1|Ten|ten|c10|l10"},
      {5, "5|-1|Five|five|c5|l5"},
      {6, "6|3||||"},  // the model index keeps its low 16 bits
      {4294967295u, "-1|-32768|Last|last|c|l"},
      {0, nullptr},
      {3, nullptr},
      {4, nullptr},
      {7, nullptr},  // the key is "007"
      {9, nullptr},
  };
  for (auto const& c : cases) {
    UpsTypeItem item = Filled();
    EXPECT_EQ(GetUPSTypeListItemByType(list_, c.type, &item), c.expected == nullptr ? 0 : 1) << c.type;
    if (c.expected != nullptr) {
      EXPECT_EQ(Describe(item), c.expected);
    } else {
      UpsTypeItem const untouched = Filled();
      EXPECT_EQ(std::memcmp(&item, &untouched, sizeof item), 0) << c.type;
    }
  }
}

TEST_F(UpsTypes, ByPositionGoesThroughTheNumberOfTheKey) {
  Load(kTable);
  // Keys in ascending order of their text: 007 1 10 2 3 4 4294967295 5 6 NAME.
  long const types[] = {-1, 1, 10, 2, -1, -1, -1, 5, 6, -1};
  int const count = static_cast<int>(std::size(types));
  ASSERT_EQ(GetUPSTypeListCount(list_), count);
  for (int i = 0; i < count; i++) {
    UpsTypeItem item = Filled();
    bool const found = GetUPSTypeListItem(list_, static_cast<unsigned int>(i), &item) == 1;
    EXPECT_EQ(found ? item.upsType : -1, types[i]) << i;
  }
  UpsTypeItem item;
  EXPECT_EQ(GetUPSTypeListItem(list_, static_cast<unsigned int>(count), &item), 0);
  EXPECT_EQ(GetUPSTypeListItem(list_, 4294967295u, &item), 0);
}

TEST_F(UpsTypes, AKeyThatIsNoNumberStandsForTypeZero) {
  Load("[UPSTYPE]\nAUTO = a;b;c;d;1\n0 = Zero;z;c;l;5\n");
  UpsTypeItem item;
  ASSERT_EQ(GetUPSTypeListItem(list_, 1, &item), 1);
  EXPECT_EQ(Describe(item), "0|5|Zero|z|c|l");
}

TEST_F(UpsTypes, LongTextIsCutToItsField) {
  for (size_t extra : {0, 1, 50}) {
    Load("[UPSTYPE]\n1 = " + std::string(40 + extra, 'n') + ";" + std::string(20 + extra, 'd') + ";" +
         std::string(20 + extra, 'c') + ";" + std::string(20 + extra, 'l') + ";2\n");
    UpsTypeItem item = Filled();
    ASSERT_EQ(GetUPSTypeListItemByType(list_, 1, &item), 1);
    EXPECT_EQ(Describe(item), "1|2|" + std::string(40, 'n') + "|" + std::string(20, 'd') + "|" + std::string(20, 'c') +
                                  "|" + std::string(20, 'l'));
    CloseUPSTypeList(list_);
    list_ = nullptr;
  }
}

TEST_F(UpsTypes, TheLastByteOfAFieldIsAlwaysNul) {
  Load("[UPSTYPE]\n1 = a;b;c;d;2\n");
  UpsTypeItem item = Filled();
  ASSERT_EQ(GetUPSTypeListItemByType(list_, 1, &item), 1);
  EXPECT_EQ(item.upsName[40] | item.upsDriver[20] | item.cfgModule[20] | item.cliModule[20], 0);
}

TEST_F(UpsTypes, TablesThatAreMissingOrElsewhere) {
  std::string const other = root_.Write("elsewhere/types.txt", "[UPSTYPE]\n3 = E;e;c;l;1\n");
  struct {
    char const* what;
    char const* path;
    int count;
  } const cases[] = {
      {"no table in the root", nullptr, 0},
      {"the same, named \"\"", "", 0},
      {"a path of its own", other.c_str(), 1},
  };
  std::vector<std::string> const before = root_.List();
  for (auto const& c : cases) {
    void* const list = OpenUPSTypeList(c.path);
    ASSERT_NE(list, nullptr) << c.what;
    UpsTypeItem item;
    EXPECT_EQ(GetUPSTypeListCount(list), c.count) << c.what;
    EXPECT_EQ(GetUPSTypeListItem(list, 0, &item), c.count) << c.what;
    EXPECT_EQ(GetUPSTypeListItemByType(list, 3, &item), c.count) << c.what;
    EXPECT_EQ(CloseUPSTypeList(list), 1) << c.what;
  }
  EXPECT_EQ(root_.List(), before);
  std::filesystem::create_directory(root_.Root("upstype.cfg"));
  EXPECT_EQ(OpenUPSTypeList(nullptr), nullptr) << "exists, but cannot be read";
}

TEST_F(UpsTypes, ReadingChangesNothing) {
  Load(kTable);
  UpsTypeItem item;
  for (unsigned int i = 0; i < 12; i++) GetUPSTypeListItem(list_, i, &item);
  EXPECT_EQ(CloseUPSTypeList(list_), 1);
  list_ = nullptr;
  EXPECT_EQ(root_.Read("root/upstype.cfg"), kTable);
}

TEST_F(UpsTypes, NullArguments) {
  Load(kTable);
  UpsTypeItem item;
  EXPECT_EQ(GetUPSTypeListCount(nullptr), 0);
  EXPECT_EQ(GetUPSTypeListItem(nullptr, 0, &item), 0);
  EXPECT_EQ(GetUPSTypeListItem(list_, 0, nullptr), 0);
  EXPECT_EQ(GetUPSTypeListItemByType(nullptr, 1, &item), 0);
  EXPECT_EQ(GetUPSTypeListItemByType(list_, 1, nullptr), 0);
  EXPECT_EQ(CloseUPSTypeList(nullptr), 0);
}

// ---- Model names ----

class UpsModelName : public testing::Test {
 protected:
  UpsModelName() {
    root_.Write("root/default/upscfg03.cfg",
                "[0]\nMODELO = Three zero \xE7\n[12]\r\n modelo=Three twelve\r\n[4]\nMODELO =\n[5]\nOTHER = x\n");
    root_.Write("root/default/upscfg100.cfg", "[1]\nMODELO = Hundred\n");
    root_.Write("root/upstype.cfg",
                "[UPSTYPE]\n1 = First;a;b;c;3\n2 = Second;a;b;c;3\n3 = short;a;b;4\n4 = ;a;b;c;5\n5 = Late;a;b;c;5\n"
                "6 = Only table;a;b;c;77\n7 = None;a;b;c;-1\n");
  }

  test::Installation root_;
};

TEST_F(UpsModelName, FromTheModelFileOrElseTheTable) {
  struct {
    short model;
    unsigned int sub;
    int result;
    char const* name;
  } const cases[] = {
      {3, 0, 1, "Three zero \xE7"},
      {3, 12, 1, "Three twelve"},
      {3, 4, 1, "First"},  // an empty MODELO counts as none
      {3, 5, 1, "First"},
      {3, 99, 1, "First"},
      {100, 1, 1, "Hundred"},
      {100, 2, 0, "AUTO"},
      {77, 0, 1, "Only table"},
      {4, 0, 0, "AUTO"},  // its entry has four fields
      {5, 0, 0, "AUTO"},  // the first entry of model 5 has no name
      {0, 0, 0, "AUTO"},
      {32767, 0, 0, "AUTO"},
      {-1, 0, 1, "AUTO"},
      {-32768, 12, 1, "AUTO"},
  };
  for (auto const& c : cases) {
    char name[64] = "before";
    EXPECT_EQ(GetUPSModelName(c.model, c.sub, name, sizeof name), c.result) << c.model << " " << c.sub;
    EXPECT_STREQ(name, c.name) << c.model << " " << c.sub;
  }
}

TEST_F(UpsModelName, OnABareRoot) {
  test::Installation bare;
  char name[8];
  EXPECT_EQ(GetUPSModelName(3, 0, name, sizeof name), 0);
  EXPECT_STREQ(name, "AUTO");
  EXPECT_EQ(bare.List(), (std::vector<std::string>{"home/", "root/", "zelvane.conf"}));
}

// Text that fills the buffer is not terminated, and nothing behind `size` bytes is touched.
TEST_F(UpsModelName, BufferSizes) {
  for (short const model : {short{-1}, short{0}, short{100}}) {
    std::string const whole = model == 100 ? "Hundred" : "AUTO";
    for (unsigned int size = 0; size <= 9; size++) {
      std::string buffer(12, '~');
      int const result = GetUPSModelName(model, 1, buffer.data(), size);
      std::string expected(12, '~');
      if (size >= 2) {
        std::string const copied = (whole + '\0').substr(0, size);
        expected.replace(0, copied.size(), copied);
      }
      EXPECT_EQ(buffer, expected) << model << " " << size;
      EXPECT_EQ(result, size >= 2 && model != 0 ? 1 : 0) << model << " " << size;
    }
    EXPECT_EQ(GetUPSModelName(model, 1, nullptr, 100), 0);
  }
}

TEST(UpsCapabilities, ByKind) {
  struct {
    unsigned int kind;
    unsigned int mask;
  } const cases[] = {{0, 0x184000},  {1, 0x3FFFFFF}, {2, 0x3BFF7FF},  {3, 0x15D6EF},           {4, 0x3BFF7FF},
                     {5, 0x3BFF7FF}, {6, 0x3FFFFFF}, {99, 0x3FFFFFF}, {4294967295u, 0x3FFFFFF}};
  for (auto const& c : cases) {
    unsigned int mask = 0xFFFFFFFF;
    EXPECT_EQ(GetUPSCapabilities(c.kind, &mask), 1) << c.kind;
    EXPECT_EQ(mask, c.mask) << c.kind;
  }
  EXPECT_EQ(GetUPSCapabilities(1, nullptr), 0);
}

}  // namespace
