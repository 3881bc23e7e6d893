#include "zelvane/api/encoding.h"

#include "support/test.h"
#include "zelvane/version.h"

namespace {

struct Call {
  char const* text;
  unsigned long size;
  long result;
  char const* written;  // into a buffer of '#'
};

using Function = long (*)(char const*, char*, unsigned long);

void Check(Function function, Call const& call) {
  std::string buffer(16, '#');
  std::string expected = buffer;
  if (call.written != nullptr) {
    std::string const bytes = std::string(call.written) + '\0';
    expected.replace(0, bytes.size(), bytes);
  }
  SCOPED_TRACE(std::string(call.text) + ", " + std::to_string(call.size));
  EXPECT_EQ(function(call.text, nullptr, call.size), call.result);
  EXPECT_EQ(function(call.text, buffer.data(), call.size), call.result);
  EXPECT_EQ(buffer, expected);
}

TEST(Encoding, Latin1ToUtf8) {
  for (Call const& call : {Call{"", 1, 0, ""},
                           {"abc", 4, 3, "abc"},
                           {"abc", 3, 3, "ab"},
                           {"abc", 0, 3, nullptr},
                           {"\x7F\x80\xBF\xC0\xFF", 16, 9, "\x7F\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF"},
                           {"a\xE9z", 4, 4, "a\xC3\xA9"},
                           {"a\xE9z", 3, 4, "a"},
                           {"a\xE9z", 1, 4, ""}})
    Check(Latin1ToUtf8, call);
  EXPECT_EQ(Latin1ToUtf8(nullptr, nullptr, 0), -1);
}

TEST(Encoding, Utf8ToLatin1) {
  for (Call const& call : {Call{"", 1, 0, ""},
                           {"\x7F\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF", 16, 5, "\x7F\x80\xBF\xC0\xFF"},
                           {"a\xC3\xA9z", 3, 3, "a\xE9"},
                           {"a\xC3\xA9z", 0, 3, nullptr},
                           {"a\xC4\x80", 16, -1, nullptr},      // U+0100
                           {"a\xE2\x82\xAC", 16, -1, nullptr},  // the euro sign
                           {"a\xC1\x81", 16, -1, nullptr},      // overlong
                           {"a\xC3", 16, -1, nullptr},
                           {"a\xC3z", 16, -1, nullptr},
                           {"\x80", 16, -1, nullptr}})
    Check(Utf8ToLatin1, call);
  EXPECT_EQ(Utf8ToLatin1(nullptr, nullptr, 0), -1);
}

TEST(LibraryVersion, IsThatOfTheHeaders) {
  EXPECT_STREQ(ZelvaneVersion(), ZELVANE_VERSION);
  std::string const numbers = std::to_string(ZELVANE_VERSION_MAJOR) + "." + std::to_string(ZELVANE_VERSION_MINOR) +
                              "." + std::to_string(ZELVANE_VERSION_PATCH);
  EXPECT_EQ(numbers, ZELVANE_VERSION);
}

}  // namespace
