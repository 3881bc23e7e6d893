// The lines of a configuration file: their kinds, and how names in them match.
#ifndef ZELVANE_CONFIG_CFGLINE_INTERNAL_H
#define ZELVANE_CONFIG_CFGLINE_INTERNAL_H

#include <endian.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {

// Takes the next line from `rest`. A text has one line more than line feeds; after the last one, rest.data() is null.
inline bool CutLine(std::string_view& rest, std::string_view& line) {
  if (rest.data() == nullptr) return false;
  std::size_t const feed = rest.find('\n');
  line = rest.substr(0, feed);
  rest = feed == std::string_view::npos ? std::string_view() : rest.substr(feed + 1);
  return true;
}

// ---- Kinds of lines; `text` is trimmed. ----

enum class LineKind { kNothing, kHeader, kKey, kBad };

inline bool IsNothing(std::string_view text) {
  return text.empty() || text[0] == ';' || text[0] == '#' || text[0] == '\'';
}

// `text` must not be kBad.
inline bool IsKey(std::string_view text) { return !IsNothing(text) && text[0] != '['; }

inline LineKind KindOf(std::string_view text) {
  if (IsNothing(text)) return LineKind::kNothing;
  std::size_t const opening = text.find('[');
  std::size_t const closing = text.find(']');
  if (opening != std::string_view::npos || closing != std::string_view::npos)
    return opening == 0 && closing == text.size() - 1 && text.size() > 2 ? LineKind::kHeader : LineKind::kBad;
  return text.size() < 2 || text[0] == '=' ? LineKind::kBad : LineKind::kKey;
}

inline std::string_view HeaderName(std::string_view text) { return TrimView(text.substr(1, text.size() - 2)); }

struct KeyText {
  std::string_view name;
  std::string_view value;
};
inline KeyText KeyOf(std::string_view text) {
  std::size_t const equals = text.find('=');
  if (equals == std::string_view::npos) return {text, text};
  return {TrimView(text.substr(0, equals)), TrimView(text.substr(equals + 1))};
}

// ---- Names, ignoring case. ----

inline unsigned char UpperOf(char c) { return kAnsiUpper[static_cast<unsigned char>(c)]; }

inline bool NameBegins(std::string_view text, std::string_view name) {
  auto const isSame = [](char a, char b) { return a == b || UpperOf(a) == UpperOf(b); };
  return text.size() >= name.size() && std::equal(name.begin(), name.end(), text.begin(), isSame);
}

inline bool IsSameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && (a == b || NameBegins(a, b));  // most callers spell a name as in the file
}

// Whether the upper-cased `a` is less than the upper-cased `b`, by memcmp.
inline bool IsNameBefore(std::string_view a, std::string_view b) {
  auto const isLess = [](char x, char y) { return UpperOf(x) < UpperOf(y); };
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), isLess);
}

// operator< for upper-cased names. Most differ in their first bytes, which are compared as one number.
struct NameLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const {
    std::uint64_t x = 0;
    std::uint64_t y = 0;
    if (a.size() < sizeof x || b.size() < sizeof y) return a < b;
    std::memcpy(&x, a.data(), sizeof x);
    std::memcpy(&y, b.data(), sizeof y);
    return x == y ? a < b : be64toh(x) < be64toh(y);
  }
};

// The first bytes of the upper-cased name as a number. If the numbers of two names differ, they have the order of the
// names.
inline std::uint64_t Beginning(std::string_view name) {
  std::uint64_t bytes = 0;
  std::size_t const size = std::min(name.size(), sizeof bytes);
  for (std::size_t i = 0; i < size; i++) bytes = bytes << 8 | UpperOf(name[i]);
  return size == 0 ? 0 : bytes << 8 * (sizeof bytes - size);
}

}  // namespace zelvane::internal

#endif
