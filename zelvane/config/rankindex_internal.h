// Access to an ordered map by number, and faster access by name. A map needs n steps to its n-th entry and log n steps
// to a name, each with a cache miss. This class continues from the last entry, and where it pays, keeps the positions
// in rows of a few hundred.
#ifndef ZELVANE_CONFIG_RANKINDEX_INTERNAL_H
#define ZELVANE_CONFIG_RANKINDEX_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zelvane/config/cfgline_internal.h"

namespace zelvane::internal {

// The rows are built at the first jump, or for lookups by name, and then updated by Inserted and Erased. They cost 50
// ns an entry and save up to 500 ns a lookup in a map larger than the processor's caches, so they pay after n / 10
// lookups. Building them at n / 32 costs a tenth of what the entries cost. `Map` is sorted by operator< of its keys,
// which are upper-cased names.
template <class Map>
class RankIndex {
 public:
  using Position = typename Map::iterator;

  // The n-th position in ascending order, counted from 0; n is less than map.size().
  Position At(Map& map, std::size_t n) {
    if (rows_.empty()) {
      if (n < kStepsCheaper) return Remember(n, std::next(map.begin(), static_cast<std::ptrdiff_t>(n)));
      if (here_ && n + kStepsCheaper > place_ && n < place_ + kStepsCheaper)
        return Remember(n, std::next(*here_, static_cast<std::ptrdiff_t>(n) - static_cast<std::ptrdiff_t>(place_)));
      Build(map);
    }
    while (n < before_) before_ -= rows_[--row_].size();
    while (n - before_ >= rows_[row_].size()) before_ += rows_[row_++].size();
    return rows_[row_][n - before_].position;
  }

  // The entry with that upper-cased name, or the end.
  Position Find(Map& map, std::string const& upper) {
    if (rows_.empty()) {
      if (map.size() < kStepsCheaper || ++asked_ * kEntriesPerQuestion < map.size()) return map.find(upper);
      Build(map);
    }
    Row const& row = rows_[RowOf(upper)];
    auto const found = PlaceIn(row, upper);
    return found == row.end() || found->position->first != upper ? map.end() : found->position;
  }

  // Call this after `position` is inserted. The entry is already in the map, so this cannot fail: if memory runs out,
  // the rows are dropped and built again later.
  void Inserted(Position position) {
    here_.reset();
    if (rows_.empty()) return;
    try {
      Enter(position);
    } catch (std::bad_alloc const&) {
      Clear();
    }
  }

  // Call this before `position` is erased.
  void Erased(Position position) {
    here_.reset();
    if (rows_.empty()) return;
    std::size_t const at = RowOf(position->first);
    Row& row = rows_[at];
    row.erase(PlaceIn(row, position->first));
    if (at < row_) before_--;
    if (!row.empty()) return;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(at));
    Restart();
  }

  void Clear() {
    here_.reset();
    rows_.clear();
    asked_ = 0;
    Restart();
  }

 private:
  struct Entry {
    std::uint64_t beginning;  // of the name
    Position position;
  };
  using Row = std::vector<Entry>;
  static constexpr std::size_t kRow = 512;
  static constexpr std::size_t kStepsCheaper = 8;
  static constexpr std::size_t kEntriesPerQuestion = 32;

  Position Remember(std::size_t n, Position position) {
    here_ = position;
    place_ = n;
    return position;
  }

  void Build(Map& map) {
    std::vector<Row> rows;
    for (Position position = map.begin(); position != map.end(); ++position) {
      if (rows.empty() || rows.back().size() == kRow) rows.emplace_back().reserve(kRow);
      rows.back().push_back({Beginning(position->first), position});
    }
    rows_ = std::move(rows);
    Restart();
  }

  void Enter(Position position) {
    std::size_t const at = RowOf(position->first);
    Row& row = rows_[at];
    row.insert(PlaceIn(row, position->first), {Beginning(position->first), position});
    if (at < row_) before_++;
    if (row.size() > 2 * kRow) Split(at);
  }

  // The first row whose last entry is not less than `name`, or the last row.
  std::size_t RowOf(std::string const& name) const {
    std::uint64_t const beginning = Beginning(name);
    auto const row = std::partition_point(rows_.begin(), rows_.end() - 1, [&](Row const& each) {
      Entry const& last = each.back();
      return last.beginning == beginning ? last.position->first < name : last.beginning < beginning;
    });
    return static_cast<std::size_t>(row - rows_.begin());
  }

  static typename Row::const_iterator PlaceIn(Row const& row, std::string const& name) {
    auto const nameOf = [](Entry const& entry) -> std::string const& { return entry.position->first; };
    return row.begin() + (FirstNotBefore(row.data(), row.size(), name, nameOf) - row.data());
  }

  void Split(std::size_t at) {
    auto const middle = rows_[at].begin() + kRow;
    Row upper(middle, rows_[at].end());
    rows_[at].erase(middle, rows_[at].end());
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(at) + 1, std::move(upper));
    Restart();
  }

  void Restart() { row_ = before_ = 0; }

  std::optional<Position> here_;  // the last entry returned, while there are no rows
  std::size_t place_ = 0;         // its number
  std::size_t asked_ = 0;         // lookups by name without rows
  std::vector<Row> rows_;
  std::size_t row_ = 0;     // the last row used
  std::size_t before_ = 0;  // the entries in the rows before it
};

}  // namespace zelvane::internal

#endif
