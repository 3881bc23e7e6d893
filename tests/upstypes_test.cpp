#include "zelvane/api/upstypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

// A table as a technician leaves it: notes, odd spacing, Latin-1, CR LF, damaged entries.
constexpr char kTable[] =
    "; tipos de nobreak\r\n[OTHER]\n9 = wrong;section;a;b;1\n[upstype]\r\n"
    "\t 2 =  Manager \xE9 III ; manager;zelcfg02;zelcli02; 7 \r\n"
    "10=Ten;ten;c10;l10;-1\n1 = One;one;c1;l1;3;sixth;seventh\n3 = four;fields;only;here\n4 =\n"
    "5 = Five;five;c5;l5;x\n6 = ;;;;65539\n007 = Bond;bond;c7;l7;7\nname = No number;n;n;n;1\n"
    "2 = Second;second;c;c;2\n0 = Zero;z;c;l;5\n4294967295 = Last;last;c;l;32768\n";

std::string Describe(UpsTypeItem const& item) {
  return std::to_string(item.upsType) + "|" + std::to_string(item.modelIndex) + "|" + item.upsName + "|" +
         item.upsDriver + "|" + item.cfgModule + "|" + item.cliModule;
}

std::string Bytes(UpsTypeItem const& item) { return {reinterpret_cast<char const*>(&item), sizeof item}; }

// What a look-up (by number or by position) fills in; "-" when it finds nothing and leaves the record alone.
template <class LookUp>
std::string Found(LookUp lookUp, void* list, unsigned int argument) {
  UpsTypeItem item;
  std::memset(&item, 'x', sizeof item);
  UpsTypeItem const before = item;
  if (lookUp(list, argument, &item) == 1) {
    EXPECT_EQ(item.upsName[40] | item.upsDriver[20] | item.cfgModule[20] | item.cliModule[20], 0);
    return Describe(item);
  }
  return Bytes(item) == Bytes(before) ? "-" : "changed";
}

TEST(UpsTypes, LookUps) {
  test::Installation root;
  root.Write("root/upstype.cfg", kTable);
  void* const list = OpenUPSTypeList(nullptr);
  struct {
    unsigned int type;
    char const* expected;
  } const types[] = {{0, "0|5|Zero|z|c|l"},
                     {1, "1|3|One|one|c1|l1"},
                     {2, "2|-1|Manager \xE9 III | manager|zelcfg02|zelcli02"},  // " 7": a blank makes it no number
                     {10, "10|-1|Ten|ten|c10|l10"},
                     {5, "5|-1|Five|five|c5|l5"},
                     {6, "6|3||||"},  // the model index keeps its low 16 bits
                     {4294967295u, "-1|-32768|Last|last|c|l"},
                     {3, "-"},
                     {4, "-"},
                     {7, "-"},  // its key is "007"
                     {9, "-"}};
  for (auto const& c : types) EXPECT_EQ(Found(GetUPSTypeListItemByType, list, c.type), c.expected) << c.type;

  // Keys in ascending order of their text, each looked up as the number it reads as: 0 where it is none.
  char const* const keys[] = {"0", "007", "1", "10", "2", "3", "4", "4294967295", "5", "6", "NAME"};
  unsigned int const numbers[] = {0, 7, 1, 10, 2, 3, 4, 0, 5, 6, 0};
  ASSERT_EQ(GetUPSTypeListCount(list), static_cast<int>(std::size(keys)));
  for (unsigned int i = 0; i < std::size(keys); i++)
    EXPECT_EQ(Found(GetUPSTypeListItem, list, i), Found(GetUPSTypeListItemByType, list, numbers[i])) << keys[i];
  EXPECT_EQ(Found(GetUPSTypeListItem, list, std::size(keys)), "-");
  EXPECT_EQ(Found(GetUPSTypeListItem, list, 4294967295u), "-");

  UpsTypeItem item;
  EXPECT_EQ(GetUPSTypeListItem(list, 0, nullptr) + GetUPSTypeListItemByType(list, 1, nullptr), 0);
  EXPECT_EQ(GetUPSTypeListItem(nullptr, 0, &item) + GetUPSTypeListItemByType(nullptr, 1, &item), 0);
  EXPECT_EQ(GetUPSTypeListCount(nullptr) + CloseUPSTypeList(nullptr), 0);
  EXPECT_EQ(CloseUPSTypeList(list), 1);
  EXPECT_EQ(root.Read("root/upstype.cfg"), kTable);
}

TEST(UpsTypes, LongTextIsCutToItsField) {
  test::Scratch scratch;
  std::string const expected = "1|2|" + std::string(40, 'n') + "|" + std::string(20, 'd') + "|" + std::string(20, 'c') +
                               "|" + std::string(20, 'l');
  for (size_t extra : {0, 1, 50}) {
    std::string const path =
        scratch.Write("types", "[UPSTYPE]\n1 = " + std::string(40 + extra, 'n') + ";" + std::string(20 + extra, 'd') +
                                   ";" + std::string(20 + extra, 'c') + ";" + std::string(20 + extra, 'l') + ";2\n");
    void* const list = OpenUPSTypeList(path.c_str());
    EXPECT_EQ(Found(GetUPSTypeListItem, list, 0), expected) << extra;
    CloseUPSTypeList(list);
  }
}

TEST(UpsTypes, AMissingTableIsEmptyAndAnUnreadableOneIsNone) {
  test::Installation root;
  std::vector<std::string> const before = root.List();
  for (char const* path : {static_cast<char const*>(nullptr), ""}) {
    void* const list = OpenUPSTypeList(path);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(GetUPSTypeListCount(list), 0);
    EXPECT_EQ(Found(GetUPSTypeListItem, list, 0), "-");
    EXPECT_EQ(Found(GetUPSTypeListItemByType, list, 0), "-");
    EXPECT_EQ(CloseUPSTypeList(list), 1);
  }
  EXPECT_EQ(root.List(), before);
  std::filesystem::create_directory(root.Root("upstype.cfg"));
  EXPECT_EQ(OpenUPSTypeList(nullptr), nullptr);
}

TEST(UpsModelName, FromTheModelFileOrElseTheTable) {
  test::Installation root;
  char name[64];
  EXPECT_EQ(GetUPSModelName(3, 0, name, sizeof name), 0) << "nothing is installed";
  EXPECT_STREQ(name, "AUTO");
  root.Write("root/default/upscfg03.cfg",
             "[0]\nMODELO = Three zero \xE7\n[12]\r\n modelo=Three twelve\r\n[4]\nMODELO =\n[5]\nOTHER = x\n");
  root.Write("root/default/upscfg100.cfg", "[1]\nMODELO = Hundred\n");
  root.Write("root/upstype.cfg",
             "[UPSTYPE]\n1 = First;a;b;c;3\n2 = Second;a;b;c;3\n3 = short;a;b;4\n4 = ;a;b;c;5\n5 = Late;a;b;c;5\n"
             "6 = Only table;a;b;c;77\n8 = Zero;a;b;c;0\n7 = None;a;b;c;-1\n");
  struct {
    short model;
    unsigned int sub;
    int result;
    char const* name;
  } const cases[] = {{3, 0, 1, "Three zero \xE7"},
                     {3, 12, 1, "Three twelve"},
                     {3, 4, 1, "First"},  // an empty MODELO counts as none
                     {3, 5, 1, "First"},
                     {3, 99, 1, "First"},
                     {100, 1, 1, "Hundred"},
                     {100, 2, 0, "AUTO"},
                     {77, 0, 1, "Only table"},
                     {4, 0, 0, "AUTO"},  // its entry has four fields
                     {5, 0, 0, "AUTO"},  // the first entry of model 5 has no name
                     {0, 0, 1, "Zero"},
                     {32767, 0, 0, "AUTO"},
                     {-1, 0, 1, "AUTO"},
                     {-32768, 12, 1, "AUTO"}};
  for (auto const& c : cases) {
    EXPECT_EQ(GetUPSModelName(c.model, c.sub, name, sizeof name), c.result) << c.model << " " << c.sub;
    EXPECT_STREQ(name, c.name) << c.model << " " << c.sub;
  }
  // Text that fills the buffer is not terminated, and nothing behind `size` bytes is touched.
  for (short const model : {short{-1}, short{4}, short{100}}) {
    for (unsigned int size = 0; size <= 9; size++) {
      std::string const copied =
          size < 2 ? "" : ((model == 100 ? "Hundred" : "AUTO") + std::string(1, '\0')).substr(0, size);
      std::string buffer(12, '~');
      EXPECT_EQ(GetUPSModelName(model, 1, buffer.data(), size), size >= 2 && model != 4 ? 1 : 0)
          << model << " " << size;
      EXPECT_EQ(buffer, copied + std::string(12 - copied.size(), '~')) << model << " " << size;
    }
    EXPECT_EQ(GetUPSModelName(model, 1, nullptr, 100), 0);
  }
}

TEST(UpsCapabilities, ByKind) {
  unsigned int const masks[] = {0x184000, 0x3FFFFFF, 0x3BFF7FF, 0x15D6EF, 0x3BFF7FF, 0x3BFF7FF, 0x3FFFFFF};
  for (unsigned int kind : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 99u, 4294967295u}) {
    unsigned int mask = 0xFFFFFFFF;
    EXPECT_EQ(GetUPSCapabilities(kind, &mask), 1) << kind;
    EXPECT_EQ(mask, masks[std::min(kind, 6u)]) << kind;
  }
  EXPECT_EQ(GetUPSCapabilities(1, nullptr), 0);
}

}  // namespace
