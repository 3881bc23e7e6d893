#include <algorithm>
#include <limits>

#include "zelvane/core/datetime_internal.h"
#include "zelvane/logs/schedule_internal.h"

namespace zelvane::internal {
namespace {

constexpr long kNever = std::numeric_limits<long>::min();

// Doubles the capacity of a full vector, so that the next push_back needs no memory.
template <class Vector>
void ReserveNext(Vector& vector) {
  if (vector.size() == vector.capacity()) vector.reserve(2 * vector.size() + 16);
}

std::int32_t DayOf(std::int32_t dateTime) { return dateTime / kDaySeconds; }

}  // namespace

void ScheduleEntries::Add(reg_proglist const& entry) {
  if (size_ == 0 || (places_.size() == places_.capacity() && size_ < places_.size() / 2)) Compact(kNever);
  ReserveNext(places_);
  ReserveNext(counts_);
  std::size_t const place = places_.size();
  if (hasDays_) days_[DayOf(entry.dateTime)].places.push_back(place);
  sorted_ = place == 0 || (sorted_ && entry.dateTime >= places_.back().dateTime);
  places_.push_back({entry.dateTime, true});
  std::uint32_t count = 1;
  for (std::size_t step = 1; step < LowBit(place + 1); step <<= 1) count += counts_[place - step];
  counts_.push_back(count);
  size_++;
}

void ScheduleEntries::RemoveFirstOf(std::int32_t day) {
  if (!hasDays_) {
    days_.clear();
    for (std::size_t place = first_; place < places_.size(); place++)
      if (places_[place].present) days_[DayOf(places_[place].dateTime)].places.push_back(place);
    hasDays_ = true;
  }
  auto const found = days_.find(day);
  if (found == days_.end()) return;
  auto& [places, next] = found->second;
  while (next < places.size() && !places_[places[next]].present) next++;
  if (next < places.size()) Remove(places[next++]);
}

void ScheduleEntries::Refresh(long now) {
  if (sorted_) {
    for (; first_ < places_.size() && places_[first_].dateTime < now; first_++)
      if (places_[first_].present) Remove(first_);
    return;
  }
  Compact(now);
  std::stable_sort(places_.begin(), places_.end(),
                   [](Place const& a, Place const& b) { return a.dateTime < b.dateTime; });
  sorted_ = true;
}

// Goes down the tree: skips each part that has too few entries, and subtracts them from `index`.
std::size_t ScheduleEntries::PlaceOf(std::size_t index) const {
  if (size_ == places_.size()) return index;
  std::size_t place = 0;
  std::size_t step = 1;
  while (step <= counts_.size() / 2) step <<= 1;
  for (; step > 0; step >>= 1)
    if (place + step <= counts_.size() && counts_[place + step - 1] <= index) {
      index -= counts_[place + step - 1];
      place += step;
    }
  return place;
}

void ScheduleEntries::Remove(std::size_t place) {
  places_[place].present = false;
  for (std::size_t i = place + 1; i <= counts_.size(); i += LowBit(i)) counts_[i - 1]--;
  size_--;
}

void ScheduleEntries::Compact(long now) {
  auto const gone = [now](Place const& place) { return !place.present || place.dateTime < now; };
  places_.erase(std::remove_if(places_.begin(), places_.end(), gone), places_.end());
  size_ = places_.size();
  counts_.resize(size_);
  for (std::size_t i = 0; i < size_; i++) counts_[i] = static_cast<std::uint32_t>(LowBit(i + 1));
  days_.clear();
  hasDays_ = false;
  first_ = 0;
}

}  // namespace zelvane::internal
