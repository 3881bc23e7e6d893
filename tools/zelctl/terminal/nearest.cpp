#include "terminal/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace {

// Steps of one character (added, taken away, replaced) from one word to the other.
std::size_t Distance(std::string const& from, std::string const& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); i++) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); j++) {
      std::size_t const replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string Nearest(std::string const& word, std::vector<std::string> const& names) {
  return *std::min_element(names.begin(), names.end(), [&word](std::string const& a, std::string const& b) {
    return Distance(word, a) < Distance(word, b);
  });
}
