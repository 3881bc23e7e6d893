#include "terminal/latin1.h"

#include <errno.h>
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>
#include <stdio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <type_traits>
#include <utility>

#include "terminal/terminal.h"

namespace {

constexpr char kLatin1[] = "ISO-8859-1";
constexpr char kUtf8[] = "UTF-8";

struct CloseConverter {
  void operator()(iconv_t converter) const { iconv_close(converter); }
};
using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

// Opening a converter loads a module, so converters are kept.
iconv_t ConverterOf(std::string const& from, std::string const& to) {
  static std::map<std::pair<std::string, std::string>, Converter> kept;
  auto const [place, isNew] = kept.try_emplace({from, to});
  if (isNew) {
    auto* const opened = iconv_open(to.c_str(), from.c_str());
    if (reinterpret_cast<std::intptr_t>(opened) == -1) {
      kept.erase(place);
      throw Failed("cannot convert from " + from + " to " + to + "; --bytes shows the bytes as they are");
    }
    place->second.reset(opened);
  }
  iconv(place->second.get(), nullptr, nullptr, nullptr, nullptr);
  return place->second.get();
}

// Converts the text up to the first character that cannot be converted. Returns the number of bytes converted.
std::size_t Convert(std::string const& text, std::string const& from, std::string const& to, std::string& out) {
  auto* const converter = ConverterOf(from, to);
  std::string input = text;
  char* in = input.data();
  std::size_t left = input.size();
  char piece[1024];
  for (bool more = true; more;) {
    char* end = piece;
    std::size_t space = sizeof piece;
    bool const all = iconv(converter, &in, &left, &end, &space) != static_cast<std::size_t>(-1);
    more = !all && errno == E2BIG;
    out.append(piece, end);
  }
  return text.size() - left;
}

// The first character of the text; 0 if there is none.
char32_t FirstCharacter(std::string const& text, std::string const& charset) {
  std::string characters;
  // No character is longer in any character set.
  Convert(text.substr(0, 8), charset, "UTF-32LE", characters);
  if (characters.size() < 4) return 0;
  char32_t character = 0;
  for (std::size_t i = 4; i-- > 0;) character = character << 8 | static_cast<unsigned char>(characters[i]);
  return character;
}

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

std::string Hex(unsigned char byte) {
  static char const kHex[] = "0123456789ABCDEF";
  return {'\\', 'x', kHex[byte >> 4], kHex[byte & 0x0F]};
}

// The length of the UTF-8 character at `at`; 1 if the byte starts none.
std::size_t CharacterLength(std::string const& bytes, std::size_t at) {
  auto const lead = static_cast<unsigned char>(bytes[at]);
  std::size_t const length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
  std::string ignored;
  std::string const character = bytes.substr(at, length);
  return length > 1 && Convert(character, kUtf8, "UTF-32LE", ignored) == length ? length : 1;
}

}  // namespace

std::string LocaleCharset() {
  locale_t const locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return "";
  std::string const charset = nl_langinfo_l(CODESET, locale);
  freelocale(locale);
  return charset == "ANSI_X3.4-1968" || charset == kLatin1 ? "" : charset;
}

std::string FromLatin1(std::string const& latin1, std::string const& charset) {
  bool const ascii = std::all_of(latin1.begin(), latin1.end(), [](char c) { return (c & 0x80) == 0; });
  if (charset.empty() || ascii) return latin1;
  std::string out;
  std::string rest = latin1;
  while (!(rest = rest.substr(Convert(rest, kLatin1, charset, out))).empty()) {
    out += '?';
    rest.erase(0, 1);
  }
  return out;
}

std::optional<std::string> ToLatin1(std::string const& text, std::string const& charset, std::string& lacking) {
  lacking.clear();
  std::string latin1;
  std::size_t const done = Convert(text, charset, kLatin1, latin1);
  if (done == text.size()) return latin1;
  if (char32_t const character = FirstCharacter(text.substr(done), charset)) {
    char code[16];
    snprintf(code, sizeof code, "(U+%04X)", static_cast<unsigned int>(character));
    std::size_t const length = charset == kUtf8 ? CharacterLength(text, done) : 1;
    lacking = "'" + text.substr(done, length) + "' " + code;
  }
  return std::nullopt;
}

std::string ToUtf8(std::string const& latin1) { return FromLatin1(latin1, kUtf8); }

std::string Printable(std::string const& latin1) {
  std::string shown;
  for (char const c : latin1) {
    auto const byte = static_cast<unsigned char>(c);
    shown += IsControl(byte) ? Hex(byte) : std::string(1, c);
  }
  return shown;
}

std::string PrintableBytes(std::string const& bytes, bool isUtf8) {
  if (!isUtf8) return Printable(bytes);
  std::string shown;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t const length = CharacterLength(bytes, at);
    auto const byte = static_cast<unsigned char>(bytes[at]);
    bool const isC1 = byte == 0xC2 && length == 2 && static_cast<unsigned char>(bytes[at + 1]) < 0xA0;
    if (length > 1 ? !isC1 : byte < 0x7F && !IsControl(byte))
      shown += bytes.substr(at, length);
    else
      for (std::size_t i = 0; i < length; i++) shown += Hex(static_cast<unsigned char>(bytes[at + i]));
    at += length;
  }
  return shown;
}

std::size_t WidthOf(std::string const& shown, bool isUtf8) {
  if (!isUtf8) return shown.size();
  return static_cast<std::size_t>(std::count_if(shown.begin(), shown.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::size_t EndOf(std::string const& shown, std::size_t at, std::size_t columns, bool isUtf8) {
  if (!isUtf8) return at + columns;
  auto const isContinued = [&shown](std::size_t i) { return i < shown.size() && (shown[i] & 0xC0) == 0x80; };
  for (; columns > 0; columns--)
    for (at++; isContinued(at);) at++;
  return at;
}
