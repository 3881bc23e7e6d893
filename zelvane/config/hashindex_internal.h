// Finding a name in an ordered map without walking down its tree: a flat table of the map's positions by hash.
#ifndef ZELVANE_CONFIG_HASHINDEX_INTERNAL_H
#define ZELVANE_CONFIG_HASHINDEX_INTERNAL_H

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace zelvane::internal {

// Built when a map has been asked for about a quarter as many names as it holds, then kept up to date through Inserted
// and Erased: a caller that reads ten keys of a file never pays for it. `Map` is ordered by its keys, which are unique.
//
// A map that is one of very many does not stay in the processor's caches, and each step down its tree is a trip to
// memory. There the table comes earlier, for a small map at the first question: should no other one come, that was in
// vain, but took no more than a fifth of the time of loading those entries.
template <class Map>
class HashIndex {
 public:
  using Position = typename Map::iterator;

  Position Find(Map& map, std::string_view name, bool oneOfMany = false) {
    if (slots_.empty()) {
      bool const paid = ++asked_ * (oneOfMany ? kEntriesPerTrip : kEntriesPerQuestion) >= map.size();
      if (map.size() < kTreeCheaper || !paid) return map.find(name);
      Build(map);
    }
    std::size_t const hash = Hash(name);
    for (std::size_t i = hash & Mask(); slots_[i].hash != kEmpty; i = (i + 1) & Mask())
      if (slots_[i].hash == hash && slots_[i].position->first == name) return slots_[i].position;
    return map.end();
  }

  // `position` has been inserted. A table too small for it goes: nothing can fail here, with the entry in the map.
  void Inserted(Map& map, Position position) {
    if (slots_.empty()) return;
    if (map.size() * 2 > slots_.size()) return Clear();
    Enter(position);
  }

  // An entry is about to be erased. The table goes with it: the questions that follow earn a new one.
  void Erased() { Clear(); }

  void Clear() {
    slots_.clear();
    asked_ = 0;
  }

 private:
  struct Slot {
    std::size_t hash = kEmpty;
    Position position;
  };
  static constexpr std::size_t kEmpty = 0;
  static constexpr std::size_t kTreeCheaper = 8;
  static constexpr std::size_t kEntriesPerQuestion = 4;
  static constexpr std::size_t kEntriesPerTrip = 128;

  // The top bit tells a used slot; the low ones choose it.
  static std::size_t Hash(std::string_view name) {
    return std::hash<std::string_view>()(name) | ~(~std::size_t{0} >> 1);
  }
  std::size_t Mask() const { return slots_.size() - 1; }

  // A power of two of slots, a quarter to a half of them full.
  void Build(Map& map) {
    std::size_t size = 4 * kTreeCheaper;
    while (size < map.size() * 2 + 2) size *= 2;
    slots_.assign(size, Slot());
    for (Position position = map.begin(); position != map.end(); ++position) Enter(position);
  }

  void Enter(Position position) {
    std::size_t const hash = Hash(position->first);
    std::size_t i = hash & Mask();
    while (slots_[i].hash != kEmpty) i = (i + 1) & Mask();
    slots_[i] = {hash, position};
  }

  std::vector<Slot> slots_;
  std::size_t asked_ = 0;  // without a table
};

}  // namespace zelvane::internal

#endif
