#include "terminal/page.h"

#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <sstream>

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

std::string Wrapped(std::string const& text) {
  std::size_t const width = PageWidth();
  std::istringstream words(text);
  std::string lines;
  std::size_t column = 0;
  for (std::string word; words >> word;) {
    bool const fits = column + 1 + word.size() <= width;
    if (column > 0) lines += fits ? ' ' : '\n';
    column = column > 0 && fits ? column + 1 + word.size() : word.size();
    lines += word;
  }
  return lines + '\n';
}

std::size_t BarLength(std::uint64_t count, std::uint64_t greatest, std::size_t room) {
  if (count == 0) return 0;
  double const share = static_cast<double>(count) / static_cast<double>(greatest);
  return std::max<std::size_t>(static_cast<std::size_t>(std::lround(share * static_cast<double>(room))), 1);
}
