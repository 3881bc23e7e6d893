// The entries of a schedule in list order, indexed by number and by day. Adding, removing and access take logarithmic
// time at most, in any order of calls.
#ifndef ZELVANE_LOGS_SCHEDULE_INTERNAL_H
#define ZELVANE_LOGS_SCHEDULE_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "zelvane/logs/proglist.h"

namespace zelvane::internal {

// Entries keep their places until the list is refreshed; a removed one leaves its place empty. When memory runs out,
// std::bad_alloc is thrown and the list is unchanged.
class ScheduleEntries {
 public:
  std::size_t Size() const { return size_; }
  reg_proglist At(std::size_t index) const { return {places_[PlaceOf(index)].dateTime}; }

  void Add(reg_proglist const& entry);
  // Removes the first entry in list order that has this day number.
  void RemoveFirstOf(std::int32_t day);
  // Drops the entries before `now` and sorts the others; equal ones keep their order.
  void Refresh(long now);

  // Visits the entries in list order until one satisfies `see`; returns whether one did.
  template <class See>
  bool Any(See&& see) const {
    for (Place const& place : places_)
      if (place.present && see(reg_proglist{place.dateTime})) return true;
    return false;
  }

 private:
  struct Place {
    std::int32_t dateTime;
    bool present;
  };
  struct Day {
    std::vector<std::size_t> places;  // in list order, some of them empty by now
    std::size_t next = 0;             // all before it are empty
  };
  static std::size_t LowBit(std::size_t n) { return n & (~n + 1); }

  std::size_t PlaceOf(std::size_t index) const;
  void Remove(std::size_t place);
  // Drops the empty places, and entries before `now`. Needs no memory.
  void Compact(long now);

  std::vector<Place> places_;
  std::vector<std::uint32_t> counts_;  // a Fenwick tree: present entries of the LowBit(i + 1) places that end with i
  std::unordered_map<std::int32_t, Day> days_;  // built by the first removal
  bool hasDays_ = false;
  bool sorted_ = true;
  std::size_t first_ = 0;  // no place before it is present
  std::size_t size_ = 0;
};

}  // namespace zelvane::internal

#endif
