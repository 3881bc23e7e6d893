// Text helpers for the library's own sources.
#ifndef ZELVANE_CORE_STRUTILS_INTERNAL_H
#define ZELVANE_CORE_STRUTILS_INTERNAL_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace zelvane::internal {

// Returns the text up to its NUL. For a null pointer data() of the view is null: empty, but distinct from "".
inline std::string_view View(char const* text) { return text == nullptr ? std::string_view() : std::string_view(text); }

// Removes the blanks that Trim removes; the result is a part of `text`.
std::string_view CutBlanks(std::string_view text);
inline std::string_view TrimView(std::string_view text) {
  bool const mayHaveBlanks = text.empty() || text.front() <= ' ' || text.back() <= ' ';  // few texts do
  return mayHaveBlanks ? CutBlanks(text) : text;
}

// StrToIntDef for a part of a text.
long ToInt(std::string_view text, long def);

// Each byte as AnsiUpperCase writes it.
extern std::array<unsigned char, 256> const kAnsiUpper;

// AnsiUpperCase for a part of a text.
inline std::string AnsiUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = static_cast<char>(kAnsiUpper[static_cast<unsigned char>(c)]);
  return upper;
}

// Stores AnsiUpperCase of `text` in `out`, using the existing capacity of `out`. `text` must not be part of `out`.
void AnsiUpperInto(std::string& out, std::string_view text);

// Splits a value of `n` fields (at least 1) joined by ";". Returns true if it has at least n - 1 separators. `fields`
// is then the result of Tokenize with the limit `n`: exactly n fields, text after the last one dropped. So "h;1;" has
// three fields, and the empty value has one. On false `fields` is unchanged.
bool SplitFields(std::string_view value, std::size_t n, std::vector<std::string>& fields);

// Fills a char array of a record: at most width - 1 bytes of `text`, a NUL directly after them, and a NUL in the last
// byte. The bytes in between do not change.
inline void CopyToField(char* field, std::size_t width, std::string_view text) {
  if (width == 0) return;
  std::size_t const length = std::min(text.size(), width - 1);
  if (length > 0) std::memcpy(field, text.data(), length);
  field[length] = '\0';
  field[width - 1] = '\0';
}

template <std::size_t N>
void CopyToField(char (&field)[N], std::string_view text) {
  CopyToField(field, N, text);
}

// Returns the text of a caller's char array, up to its NUL or, without one, its width. Null returns "".
inline std::string_view FieldText(char const* field, std::size_t width) {
  return field == nullptr ? std::string_view() : std::string_view(field, strnlen(field, width));
}

template <std::size_t N>
std::string_view FieldText(char const (&field)[N]) {
  return FieldText(field, N);
}

}  // namespace zelvane::internal

#endif
