// Char arrays of records.
#include "zelvane/core/strutils_internal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace {

using namespace zelvane::internal;

TEST(RecordFields, CopiedAndReadWithinTheirWidth) {
  // What stands in a field of six "#" afterwards, with "." for NUL.
  std::tuple<std::size_t, char const*, std::string> const rows[] = {{0, "a", "######"},   {1, "a", ".#####"},
                                                                    {4, "", ".##.##"},    {4, "ab", "ab..##"},
                                                                    {4, "abc", "abc.##"}, {4, "abcd", "abc.##"}};
  for (auto const& [width, text, bytes] : rows) {
    char field[] = {'#', '#', '#', '#', '#', '#'};
    CopyToField(field, width, text);
    EXPECT_EQ(FieldText(field), bytes.substr(0, bytes.find('.'))) << text << " in " << width;
    std::replace(field, field + 6, '\0', '.');
    EXPECT_EQ(std::string(field, 6), bytes) << text << " in " << width;
  }
  EXPECT_TRUE(FieldText(nullptr, 4).empty() && View(nullptr).data() == nullptr && View("").data() != nullptr);
}

}  // namespace
