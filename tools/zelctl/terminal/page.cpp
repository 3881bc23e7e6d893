#include "terminal/page.h"

#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "terminal/terminal.h"

std::size_t PageWidth() {
  constexpr std::size_t kUsual = 80;
  constexpr std::size_t kWidest = 10000;
  std::size_t const columns = TerminalColumns();
  if (columns > 0) return columns;
  char const* const given = getenv("COLUMNS");
  if (given == nullptr) return kUsual;
  std::size_t width = 0;
  auto const [end, error] = std::from_chars(given, given + strlen(given), width);
  return error == std::errc() && *end == '\0' && width > 0 && width <= kWidest ? width : kUsual;
}

std::string Wrapped(std::string const& text, std::string const& head, std::string const& indent) {
  std::size_t const width = PageWidth();
  std::string lines;
  std::string line = head;
  bool fresh = true;
  for (std::size_t from = 0; from <= text.size();) {
    // Several blanks belong to the word after them.
    std::size_t const end = text.find(' ', text.find_first_not_of(' ', from));
    std::string const word = text.substr(from, end == std::string::npos ? end : end - from);
    if (fresh || line.size() + 1 + word.size() <= width) {
      line += (fresh ? "" : " ") + word;
    } else {
      lines += line + '\n';
      line = indent + word.substr(std::min(word.find_first_not_of(' '), word.size()));
    }
    fresh = false;
    if (end == std::string::npos) break;
    from = end + 1;
  }
  return lines + line + '\n';
}

std::size_t BarLength(std::uint64_t count, std::uint64_t greatest, std::size_t width) {
  if (count == 0) return 0;
  double const share = static_cast<double>(count) / static_cast<double>(greatest);
  return std::max<std::size_t>(static_cast<std::size_t>(std::lround(share * static_cast<double>(width))), 1);
}
