// The grammar of a configuration file: its lines, and what each of them says.
#ifndef ZELVANE_CONFIG_CFGLINE_INTERNAL_H
#define ZELVANE_CONFIG_CFGLINE_INTERNAL_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zelvane::internal {

// Takes a text apart at its line feeds. A text has one line more than line feeds, so that one behind the last line
// feed may be empty.
class LineCutter {
 public:
  explicit LineCutter(std::string_view text) : next_(text.data()), end_(text.data() + text.size()) {}

  bool Next(std::string_view& line) {
    if (IsAtEnd()) return false;
    auto const* const feed = static_cast<char const*>(std::memchr(next_, '\n', static_cast<std::size_t>(end_ - next_)));
    line = std::string_view(next_, static_cast<std::size_t>((feed == nullptr ? end_ : feed) - next_));
    next_ = feed == nullptr ? nullptr : feed + 1;
    return true;
  }
  bool IsAtEnd() const { return next_ == nullptr; }

 private:
  char const* next_;
  char const* end_;
};

enum class LineKind { kNothing, kHeader, kKey, kBad };

// What a line is; `text` is trimmed.
LineKind KindOf(std::string_view text);
// The same for a line that is known not to be kBad: whether it is a key.
bool IsKey(std::string_view text);

// The name in a header; `text` is trimmed.
std::string_view HeaderName(std::string_view text);

struct KeyText {
  std::string_view name;
  std::string_view value;
};
// What a key's line says; `text` is trimmed. Without "=" all of it is both.
KeyText KeyOf(std::string_view text);

}  // namespace zelvane::internal

#endif
