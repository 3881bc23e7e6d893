#include "zelvane/api/upstypes.h"

#include "support/records.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

// What a lookup (by number or by position) fills in; "-" if it finds nothing and leaves the record unchanged.
template <class LookUp>
std::string Found(LookUp lookUp, void* list, unsigned int argument) {
  UpsTypeItem item;
  memset(&item, 'x', sizeof item);
  std::string const before = test::Bytes(item);
  if (lookUp(list, argument, &item) == 0) return test::Bytes(item) == before ? "-" : "changed";
  EXPECT_EQ(item.upsName[40] | item.upsDriver[20] | item.cfgModule[20] | item.cliModule[20], 0) << argument;
  return std::to_string(item.upsType) + "|" + std::to_string(item.modelIndex) + "|" + item.upsName + "|" +
         item.upsDriver + "|" + item.cfgModule + "|" + item.cliModule;
}

// A table edited by hand: notes, odd spacing, Latin-1, CR LF, damaged entries.
TEST(UpsTypes, LookUps) {
  test::Installation at;
  at.Write("root/upstype.cfg", test::Fixture("upstype.cfg"));
  void* const list = OpenUPSTypeList(nullptr);
  for (test::Case const& c : test::Cases("upstypes.txt", "by number"))
    EXPECT_EQ(Found(GetUPSTypeListItemByType, list, c.UInt(0)), c[1]) << c;
  unsigned int position = 0;
  for (test::Case const& c : test::Cases("upstypes.txt", "by position"))
    EXPECT_EQ(Found(GetUPSTypeListItem, list, position++), Found(GetUPSTypeListItemByType, list, c.UInt(1))) << c;
  EXPECT_EQ(GetUPSTypeListCount(list), static_cast<int>(position));
  for (unsigned int const none : {position, 4294967295u}) EXPECT_EQ(Found(GetUPSTypeListItem, list, none), "-");
  EXPECT_EQ(CloseUPSTypeList(list), 1);
  EXPECT_EQ(at.Read("root/upstype.cfg"), test::Fixture("upstype.cfg"));
}

TEST(UpsTypes, AMissingTableIsEmptyAndAnUnreadableOneIsNone) {
  test::Installation at;
  std::string const other = at.Write("types", "[UPSTYPE]\n3 = n;d;c;l;2");
  auto const before = at.List();
  for (char const* path : {static_cast<char const*>(nullptr), "", other.c_str()}) {
    void* const list = OpenUPSTypeList(path);
    EXPECT_EQ(Found(GetUPSTypeListItem, list, 0), path == other.c_str() ? "3|2|n|d|c|l" : "-");
    EXPECT_EQ(CloseUPSTypeList(list), 1);
  }
  EXPECT_EQ(at.List(), before);
  std::filesystem::create_directory(at.Root("upstype.cfg"));
  EXPECT_EQ(OpenUPSTypeList(nullptr), nullptr);
}

TEST(UpsModelName, FromTheModelFileOrElseTheTable) {
  test::Installation at;
  char name[64];
  EXPECT_EQ(GetUPSModelName(3, 0, name, sizeof name), 0) << "nothing is installed";
  EXPECT_STREQ(name, "AUTO");
  at.Write("root/default/upscfg03.cfg",
           "[0]\nMODELO = Three zero \xE7\n[12]\r\n modelo=Three twelve\r\n[4]\nMODELO =\n[5]\nOTHER = x\n");
  at.Write("root/default/upscfg100.cfg", "[1]\nMODELO = Hundred\n");
  at.Write("root/upstype.cfg",
           "[UPSTYPE]\n1 = First;a;b;c;3\n2 = Second;a;b;c;3\n3 = short;a;b;4\n4 = ;a;b;c;5\n5 = Late;a;b;c;5\n"
           "6 = Only table;a;b;c;77\n8 = Zero;a;b;c;0\n7 = None;a;b;c;-1\n");
  for (test::Case const& c : test::Cases("upstypes.txt", "model names")) {
    EXPECT_EQ(GetUPSModelName(static_cast<short>(c.Int(0)), c.UInt(1), name, sizeof name), c.Int(2)) << c;
    EXPECT_EQ(name, c[3]) << c;
  }
  // Text that fills the buffer has no NUL, and no byte after `size` changes.
  for (short const model : {short{-1}, short{4}, short{100}}) {
    for (unsigned int size = 0; size <= 9; size++) {
      std::string const whole = (model == 100 ? "Hundred" : "AUTO") + std::string(1, '\0');
      std::string const copied = size < 2 ? "" : whole.substr(0, size);
      std::string buffer(12, '~');
      EXPECT_EQ(GetUPSModelName(model, 1, buffer.data(), size), size >= 2 && model != 4) << model << " " << size;
      EXPECT_EQ(buffer, copied + std::string(12 - copied.size(), '~')) << model << " " << size;
    }
  }
}

TEST(UpsCapabilities, ByKind) {
  for (test::Case const& c : test::Cases("upstypes.txt", "capabilities")) {
    unsigned int mask = 0xFFFFFFFF;
    EXPECT_EQ(GetUPSCapabilities(c.UInt(0), &mask), 1) << c;
    EXPECT_EQ(mask, c.UInt(1)) << c;
  }
}

}  // namespace
