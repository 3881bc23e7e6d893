#include "terminal/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "zelvane/core/strutils.h"

namespace {

// The edit distance: characters added, removed or replaced.
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
  std::string nearest;
  std::size_t fewest = (word.size() + 1) / 2 + 1;
  for (std::string const& name : names) {
    std::size_t const distance = Distance(LowerCase(word), LowerCase(name));
    if (distance < fewest) nearest = name;
    fewest = std::min(fewest, distance);
  }
  return nearest;
}

std::string DidYouMean(std::string const& word, std::vector<std::string> const& names) {
  std::string const nearest = Nearest(word, names);
  return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}
