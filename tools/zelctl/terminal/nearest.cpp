#include "terminal/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "zelvane/core/strutils.h"

namespace {

using Row = std::vector<std::size_t>;

// The edit distance: characters added, removed, replaced or swapped with the next one.
std::size_t Distance(std::string const& from, std::string const& to) {
  Row before;
  Row last(to.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); i++) {
    Row row = {i};
    for (std::size_t j = 1; j <= to.size(); j++) {
      std::size_t fewest = std::min({last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1), last[j] + 1, row[j - 1] + 1});
      bool const isSwapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (isSwapped) fewest = std::min(fewest, before[j - 2] + 1);
      row.push_back(fewest);
    }
    before = std::move(last);
    last = std::move(row);
  }
  return last.back();
}

// In lower case, without the dashes of an option.
std::string Bare(std::string const& word) {
  return LowerCase(word.substr(std::min(word.find_first_not_of('-'), word.size())));
}

}  // namespace

std::string Nearest(std::string const& word, std::vector<std::string> const& names) {
  std::string const sought = Bare(word);
  std::string nearest;
  std::size_t fewest = (sought.size() + 1) / 3 + 1;
  for (std::string const& name : names) {
    std::string const bare = Bare(name);
    bool const isBegun = sought.size() > 1 && bare.compare(0, sought.size(), sought) == 0;
    std::size_t const distance = isBegun ? 1 : Distance(sought, bare);
    if (distance < fewest) nearest = name;
    fewest = std::min(fewest, distance);
  }
  return nearest;
}

std::string DidYouMean(std::string const& word, std::vector<std::string> const& names) {
  std::string const nearest = Nearest(word, names);
  return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}
