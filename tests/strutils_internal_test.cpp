// Helpers that records and files share.
#include "zelvane/core/strutils_internal.h"

#include <gtest/gtest.h>

#include "zelvane/core/bytes_internal.h"
#include "zelvane/core/strutils.h"

namespace {

namespace internal = zelvane::internal;
using Strings = std::vector<std::string>;

TEST(SplitFields, SeparatorsDecide) {
  struct {
    char const* value;
    std::size_t n;
    bool enough;
    Strings fields;
  } const rows[] = {{"", 1, true, {""}},         {"", 2, false, {}},
                    {"a", 1, true, {"a"}},       {"a", 2, false, {}},
                    {";", 2, true, {"", ""}},    {"h;1.1.1.1;", 3, true, {"h", "1.1.1.1", ""}},
                    {"h;1.1.1.1", 3, false, {}}, {"a; b ;c;d", 3, true, {"a", " b ", "c"}}};
  for (auto const& row : rows) {
    Strings fields = {"old"};
    EXPECT_EQ(internal::SplitFields(row.value, row.n, fields), row.enough) << row.value << " in " << row.n;
    EXPECT_EQ(fields, row.enough ? row.fields : Strings{"old"}) << row.value << " in " << row.n;
  }
}

TEST(RecordFields, CopiedAndReadWithinTheirWidth) {
  struct {
    std::string text;
    std::string field;  // of four bytes, before it "####"
  } const rows[] = {{"", std::string("\0##\0", 4)},    {"a", std::string("a\0#\0", 4)},
                    {"ab", std::string("ab\0\0", 4)},  {"abc", std::string("abc\0", 4)},
                    {"abcd", std::string("abc\0", 4)}, {"abcdefgh", std::string("abc\0", 4)}};
  for (auto const& row : rows) {
    char field[6] = {'#', '#', '#', '#', '#', '#'};
    internal::CopyToField(field, 4, row.text);
    EXPECT_EQ(std::string(field, 6), row.field + "##") << row.text;
    EXPECT_EQ(internal::FieldText(field), row.text.substr(0, 3)) << row.text;
  }
  char field[4] = {'#', '#', '#', '#'};
  internal::CopyToField(field, 0, "a");
  EXPECT_EQ(internal::FieldText(field), "####");
  EXPECT_EQ(internal::FieldText(field, 2), "##");
  EXPECT_EQ(internal::FieldText(nullptr, 4), "");
  internal::CopyToField(field, "xyz!");
  EXPECT_STREQ(field, "xyz");
}

TEST(AnsiUpperInto, AsAnsiUpperCase) {
  std::string all;
  for (int b = 0; b < 256; b++) all += static_cast<char>(b);
  std::string out = "old";
  internal::AnsiUpperInto(out, all);
  EXPECT_EQ(out, AnsiUpperCase(all));
  internal::AnsiUpperInto(out, "");
  EXPECT_EQ(out, "");
}

TEST(View, NullIsToldFromEmpty) {
  EXPECT_EQ(internal::View(nullptr).data(), nullptr);
  EXPECT_NE(internal::View("").data(), nullptr);
  EXPECT_EQ(internal::View("ab"), "ab");
  EXPECT_EQ(internal::TrimView(internal::View(nullptr)), "");
}

TEST(Bytes, LittleEndian) {
  unsigned char bytes[6] = {0xAA, 0, 0, 0, 0, 0xBB};
  internal::StoreLe32(bytes + 1, 0x89ABCDEF);
  EXPECT_EQ(std::string(bytes, bytes + 6), "\xAA\xEF\xCD\xAB\x89\xBB");
  EXPECT_EQ(internal::LoadLe32(bytes + 1), 0x89ABCDEFu);
}

}  // namespace
