#include "zelvane/core/strutils.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <string_view>

#include "zelvane/core/strutils_internal.h"

using zelvane::internal::kAnsiUpper;
using zelvane::internal::TrimView;
using zelvane::internal::View;

namespace {

using ByteTable = std::array<unsigned char, 256>;

// The bytes from `first` to `last` are 0x20 away from their counterparts in the other case, up or down.
constexpr void Shift(ByteTable& table, int first, int last, int distance) {
  for (int byte = first; byte <= last; byte++) {
    table[static_cast<std::size_t>(byte)] = static_cast<unsigned char>(byte + distance);
  }
}

constexpr ByteTable MakeCaseTable(bool upper) {
  ByteTable table{};
  Shift(table, 0, 255, 0);
  int const distance = upper ? -0x20 : 0x20;
  int const start = upper ? 0x20 : 0;  // distance from upper case to lower case
  Shift(table, 'A' + start, 'Z' + start, distance);
  Shift(table, 0xC0 + start, 0xD6 + start, distance);
  Shift(table, 0xD8 + start, 0xDE + start, distance);
  return table;
}

constexpr ByteTable kAnsiLower = MakeCaseTable(false);

void TranslateInto(std::string& out, std::string_view text, ByteTable const& table) {
  out.resize(text.size());
  for (std::size_t i = 0; i < text.size(); i++) {
    out[i] = static_cast<char>(table[static_cast<unsigned char>(text[i])]);
  }
}

std::string Translate(std::string_view text, ByteTable const& table) {
  std::string result;
  TranslateInto(result, text, table);
  return result;
}

std::string ChangeCase(std::string_view text, int (*change)(int)) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(change(static_cast<unsigned char>(c)));
  return result;
}

bool IsBlank(char c) {
  if (c > ' ') return false;  // most are
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

std::string_view TrimLeftView(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

std::string_view TrimRightView(std::string_view text) {
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string Quoted(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 2);
  if (text.empty() || text.front() != '"') result += '"';
  result += text;
  if (text.empty() || text.back() != '"') result += '"';
  return result;
}

// Returns how many bytes of fill bring `length` up to `width`.
std::size_t Missing(std::size_t length, int width) {
  return width > 0 && static_cast<std::size_t>(width) > length ? static_cast<std::size_t>(width) - length : 0;
}

enum class Pieces { kWhole, kTrimmed };

// Splits a text by one separator after the other. The first separator of the list that occurs in the remaining text
// counts. One that does not occur there does not occur later either. So each is used up before the next is searched,
// and the time is linear in the text.
class Splitter {
 public:
  Splitter(std::vector<std::string>& out, std::string_view text, unsigned long count, Pieces pieces)
      : out_(out), rest_(text), count_(count), pieces_(pieces) {
    out_.clear();
    // There cannot be more tokens than that before the padding, whatever the count.
    out_.reserve(std::min<std::size_t>(count == 0 ? kUsualPieces : count, text.size() + 1));
  }

  void CutBy(std::string_view separator) {
    if (separator.empty()) return;
    while (!Full()) {
      // Most separators are one character, and looking for a text takes longer.
      std::size_t const end = separator.size() == 1 ? rest_.find(separator.front()) : rest_.find(separator);
      if (end == std::string_view::npos) return;
      Append(rest_.substr(0, end));
      rest_.remove_prefix(end + separator.size());
    }
  }

  void Finish() {
    if (!rest_.empty() && !Full()) Append(rest_);
    if (count_ != 0) out_.resize(count_);
  }

 private:
  static constexpr std::size_t kUsualPieces = 4;  // in a line of a record

  bool Full() const { return count_ != 0 && out_.size() == count_; }
  void Append(std::string_view token) { out_.emplace_back(pieces_ == Pieces::kTrimmed ? TrimView(token) : token); }

  std::vector<std::string>& out_;
  std::string_view rest_;
  unsigned long count_;
  Pieces pieces_;
};

void Cut(Splitter& splitter, std::vector<std::string> const& separators) {
  for (std::string const& separator : separators) splitter.CutBy(separator);
}

void Cut(Splitter& splitter, std::string_view separator) { splitter.CutBy(separator); }

// Returns whether clearing `out` would destroy input: a text inside one of its strings, or separators that are these
// strings.
bool WouldDestroy(std::vector<std::string> const& out, std::string_view text) {
  std::less<char const*> const before;
  return std::any_of(out.begin(), out.end(), [&](std::string const& held) {
    return !before(text.data(), held.data()) && !before(held.data() + held.size(), text.data());
  });
}

bool WouldDestroy(std::vector<std::string> const& out, std::vector<std::string> const& separators) {
  return &out == &separators;
}

template <typename Separators>
void Split(std::vector<std::string>& out, std::string_view text, Separators const& separators, unsigned long count,
           Pieces pieces) {
  if (text.data() == nullptr) return out.clear();
  if (WouldDestroy(out, text) || WouldDestroy(out, separators)) {
    std::vector<std::string> apart;
    Split(apart, text, separators, count, pieces);
    return out.swap(apart);
  }
  Splitter splitter(out, text, count, pieces);
  Cut(splitter, separators);
  splitter.Finish();
}

}  // namespace

namespace zelvane::internal {

constexpr ByteTable kAnsiUpper = MakeCaseTable(true);

std::string_view CutBlanks(std::string_view text) { return TrimRightView(TrimLeftView(text)); }

void AnsiUpperInto(std::string& out, std::string_view text) { TranslateInto(out, text, kAnsiUpper); }

bool SplitFields(std::string_view value, std::size_t n, std::vector<std::string>& fields) {
  auto const separators = static_cast<std::size_t>(std::count(value.begin(), value.end(), ';'));
  if (separators + 1 < n) return false;
  Split(fields, value, std::string_view(";"), n, Pieces::kWhole);
  return true;
}

}  // namespace zelvane::internal

std::string UpperCase(char const* text) { return ChangeCase(View(text), std::toupper); }
std::string UpperCase(std::string const& text) { return ChangeCase(text, std::toupper); }

std::string LowerCase(char const* text) { return ChangeCase(View(text), std::tolower); }
std::string LowerCase(std::string const& text) { return ChangeCase(text, std::tolower); }

std::string AnsiUpperCase(char const* text) { return Translate(View(text), kAnsiUpper); }
std::string AnsiUpperCase(std::string const& text) { return Translate(text, kAnsiUpper); }

std::string AnsiLowerCase(char const* text) { return Translate(View(text), kAnsiLower); }
std::string AnsiLowerCase(std::string const& text) { return Translate(text, kAnsiLower); }

std::string Trim(char const* text) { return std::string(TrimView(View(text))); }
std::string Trim(std::string const& text) { return std::string(TrimView(text)); }

std::string TrimLeft(char const* text) { return std::string(TrimLeftView(View(text))); }
std::string TrimLeft(std::string const& text) { return std::string(TrimLeftView(text)); }

std::string TrimRight(char const* text) { return std::string(TrimRightView(View(text))); }
std::string TrimRight(std::string const& text) { return std::string(TrimRightView(text)); }

std::string QuotedStr(char const* text) { return text == nullptr ? std::string() : Quoted(text); }
std::string QuotedStr(std::string const& text) { return Quoted(text); }

std::string FillLeft(char const* text, int width, char fill) {
  return text == nullptr ? std::string() : FillLeft(std::string(text), width, fill);
}
std::string FillLeft(std::string const& text, int width, char fill) {
  return std::string(Missing(text.size(), width), fill) + text;
}

std::string FillRight(char const* text, int width, char fill) {
  return text == nullptr ? std::string() : FillRight(std::string(text), width, fill);
}
std::string FillRight(std::string const& text, int width, char fill) {
  return text + std::string(Missing(text.size(), width), fill);
}

void Tokenize(std::vector<std::string>& out, char const* text, std::vector<std::string> const& separators,
              unsigned long count) {
  Split(out, View(text), separators, count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, char const* text, std::string const& separator, unsigned long count) {
  Split(out, View(text), std::string_view(separator), count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, char const* text, char const* separator, unsigned long count) {
  Split(out, View(text), View(separator), count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, char const* text, char separator, unsigned long count) {
  Split(out, View(text), std::string_view(&separator, 1), count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, std::string const& text, std::vector<std::string> const& separators,
              unsigned long count) {
  Split(out, text, separators, count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, std::string const& text, std::string const& separator,
              unsigned long count) {
  Split(out, text, std::string_view(separator), count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, std::string const& text, char const* separator, unsigned long count) {
  Split(out, text, View(separator), count, Pieces::kWhole);
}
void Tokenize(std::vector<std::string>& out, std::string const& text, char separator, unsigned long count) {
  Split(out, text, std::string_view(&separator, 1), count, Pieces::kWhole);
}

void TrimTokenize(std::vector<std::string>& out, char const* text, std::vector<std::string> const& separators,
                  unsigned long count) {
  Split(out, View(text), separators, count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, char const* text, std::string const& separator, unsigned long count) {
  Split(out, View(text), std::string_view(separator), count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, char const* text, char const* separator, unsigned long count) {
  Split(out, View(text), View(separator), count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, char const* text, char separator, unsigned long count) {
  Split(out, View(text), std::string_view(&separator, 1), count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, std::string const& text, std::vector<std::string> const& separators,
                  unsigned long count) {
  Split(out, text, separators, count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, std::string const& text, std::string const& separator,
                  unsigned long count) {
  Split(out, text, std::string_view(separator), count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, std::string const& text, char const* separator, unsigned long count) {
  Split(out, text, View(separator), count, Pieces::kTrimmed);
}
void TrimTokenize(std::vector<std::string>& out, std::string const& text, char separator, unsigned long count) {
  Split(out, text, std::string_view(&separator, 1), count, Pieces::kTrimmed);
}
