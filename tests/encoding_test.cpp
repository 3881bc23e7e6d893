#include "zelvane/api/encoding.h"

#include "support/test.h"

namespace {

TEST(Encoding, BothWays) {
  for (test::Case const& c : test::Table("core/encoding.txt", "calls")) {
    auto const convert = c[0] == "to UTF-8" ? Latin1ToUtf8 : Utf8ToLatin1;
    std::string buffer(16, '#'), expected = buffer;
    if (c.columns.size() > 4) expected.replace(0, c[4].size() + 1, c[4] + '\0');
    EXPECT_EACH((convert(c[1].c_str(), nullptr, c.UInt(2)), convert(c[1].c_str(), buffer.data(), c.UInt(2))), c.Int(3))
        << c;
    EXPECT_EQ(buffer, expected) << c;
  }
  EXPECT_EACH((Latin1ToUtf8(nullptr, nullptr, 0), Utf8ToLatin1(nullptr, nullptr, 0)), -1);
}

}  // namespace
