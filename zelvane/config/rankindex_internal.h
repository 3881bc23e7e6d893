// Access to an ordered map by number. A map needs n steps to its n-th entry. This class continues from the last entry,
// and for larger jumps keeps the positions in rows of a few hundred.
#ifndef ZELVANE_CONFIG_RANKINDEX_INTERNAL_H
#define ZELVANE_CONFIG_RANKINDEX_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace zelvane::internal {

// The rows are built at the first jump and then updated by Inserted and Erased. A walk over all entries never needs
// them. `Map` is sorted by operator< of its keys.
template <class Map>
class RankIndex {
 public:
  using Position = typename Map::iterator;

  // The n-th position in ascending order, counted from 0; n is less than map.size().
  Position At(Map& map, std::size_t n) {
    if (rows_.empty()) {
      bool const isNear = here_ && n + kStepsCheaper > place_ && n < place_ + kStepsCheaper;
      if (isNear || n < kStepsCheaper) {
        here_ = std::next(isNear ? *here_ : map.begin(), static_cast<std::ptrdiff_t>(n - (isNear ? place_ : 0)));
        place_ = n;
        return *here_;
      }
      Build(map);
    }
    while (n < before_) before_ -= rows_[--row_].size();
    while (n - before_ >= rows_[row_].size()) before_ += rows_[row_++].size();
    place_ = n - before_;
    return rows_[row_][place_];
  }

  // Call this after `position` is inserted. The entry is already in the map, so this cannot fail: if memory runs out,
  // the rows are dropped and built again later.
  void Inserted(Position position) {
    here_.reset();
    if (rows_.empty()) return;
    try {
      std::size_t const at = RowOf(position);
      Row& row = rows_[at];
      row.insert(PlaceIn(row, position), position);
      if (at < row_) before_++;
      if (row.size() > 2 * kRow) Split(at);
    } catch (std::bad_alloc const&) {
      Clear();
    }
  }

  // Call this before `position` is erased.
  void Erased(Position position) {
    here_.reset();
    if (rows_.empty()) return;
    bool const isHere = place_ < rows_[row_].size() && rows_[row_][place_] == position;  // found by number just before
    std::size_t const at = isHere ? row_ : RowOf(position);
    Row& row = rows_[at];
    row.erase(isHere ? row.begin() + static_cast<std::ptrdiff_t>(place_) : PlaceIn(row, position));
    if (at < row_) before_--;
    if (!row.empty()) return;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(at));
    Restart();
  }

  void Clear() {
    here_.reset();
    rows_.clear();
    Restart();
  }

 private:
  using Row = std::vector<Position>;
  static constexpr std::size_t kRow = 512;
  static constexpr std::size_t kStepsCheaper = 8;

  void Build(Map& map) {
    std::vector<Row> rows;
    for (Position position = map.begin(); position != map.end(); ++position) {
      if (rows.empty() || rows.back().size() == kRow) rows.emplace_back().reserve(kRow);
      rows.back().push_back(position);
    }
    rows_ = std::move(rows);
    Restart();
  }

  static bool IsLess(Position a, Position b) { return a->first < b->first; }

  // The first row whose last entry is not less than `position`, or the last row.
  std::size_t RowOf(Position position) const {
    auto const row = std::partition_point(rows_.begin(), rows_.end() - 1,
                                          [position](Row const& each) { return IsLess(each.back(), position); });
    return static_cast<std::size_t>(row - rows_.begin());
  }

  static typename Row::iterator PlaceIn(Row& row, Position position) {
    return std::lower_bound(row.begin(), row.end(), position, IsLess);
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
  std::size_t place_ = 0;         // the number of the last entry returned, in its row once there are rows
  std::vector<Row> rows_;
  std::size_t row_ = 0;     // the last row used
  std::size_t before_ = 0;  // the entries in the rows before it
};

}  // namespace zelvane::internal

#endif
