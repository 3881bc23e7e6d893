#include "zelvane/config/textkeys_internal.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {
namespace {

unsigned char UpperAt(std::string_view text, std::size_t i) { return kAnsiUpper[static_cast<unsigned char>(text[i])]; }

bool BeginsWith(std::string_view text, std::string_view upper) {
  if (text.size() < upper.size()) return false;
  for (std::size_t i = 0; i < upper.size(); i++)
    if (UpperAt(text, i) != static_cast<unsigned char>(upper[i])) return false;
  return true;
}

// The upper-cased texts' order, as memcmp and the shorter first.
int Compare(std::string_view a, std::string_view b) {
  std::size_t const common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; i++)
    if (UpperAt(a, i) != UpperAt(b, i)) return UpperAt(a, i) < UpperAt(b, i) ? -1 : 1;
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

std::uint32_t Hash(std::string_view upper) { return static_cast<std::uint32_t>(std::hash<std::string_view>()(upper)); }

// The first bytes of an upper-cased name as a number: names that differ there are in order without a look at them.
std::uint64_t Beginning(std::string_view name) {
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < sizeof bytes; i++) bytes = bytes << 8 | (i < name.size() ? UpperAt(name, i) : 0u);
  return bytes;
}

}  // namespace

bool TextKeys::ReadLines(std::string_view upper, KeyText* found) const {
  LineCutter lines(text_);
  for (std::string_view line; lines.Next(line);) {
    if (!line.empty() && line[0] <= ' ') line = TrimView(line);
    if (!BeginsWith(line, upper) || !IsKey(line)) continue;
    KeyText const key = KeyOf(TrimView(line));
    if (key.name.size() != upper.size()) continue;
    *found = key;
    return true;
  }
  return false;
}

void TextKeys::MakeEntries() {
  if (hasEntries_) return;
  std::vector<Entry> entries;
  entries.reserve(static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '\n')) + 1);
  auto const place = [this](std::string_view part) { return static_cast<std::uint32_t>(part.data() - text_.data()); };
  LineCutter lines(text_);
  for (std::string_view line; lines.Next(line);) {
    line = TrimView(line);
    if (!IsKey(line)) continue;
    auto const [name, value] = KeyOf(line);
    entries.push_back(
        {place(name), static_cast<std::uint32_t>(name.size()), place(value), static_cast<std::uint32_t>(value.size())});
  }
  entries_ = std::move(entries);
  hasEntries_ = true;
}

// The slot of that name, or the empty one where it belongs.
std::size_t TextKeys::SlotOf(std::string_view upper, std::uint32_t hash) const {
  std::size_t const mask = table_.size() - 1;
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    Slot const& slot = table_[i];
    if (slot.entry == 0) return i;
    if (slot.hash != hash) continue;
    Entry const& entry = entries_[slot.entry - 1];
    if (entry.nameSize == upper.size() && BeginsWith(NameOf(entry), upper)) return i;
  }
}

void TextKeys::MakeTable() {
  if (!table_.empty()) return;
  MakeEntries();
  std::string upper;
  std::size_t longest = 0;
  for (Entry const& entry : entries_) longest = std::max<std::size_t>(longest, entry.nameSize);
  upper.reserve(longest);
  std::size_t size = 4;
  while (size < entries_.size() * 2) size *= 2;
  table_.assign(size, Slot());
  for (std::uint32_t i = 0; i < entries_.size(); i++) {
    AnsiUpperInto(upper, NameOf(entries_[i]));
    std::uint32_t const hash = Hash(upper);
    Slot& slot = table_[SlotOf(upper, hash)];
    if (slot.entry == 0) slot = {hash, i + 1};
  }
}

bool TextKeys::Find(std::string_view upper, KeyText* found) {
  if (table_.empty()) {
    if (asked_ < kQuestionsWithoutTable) return asked_++, ReadLines(upper, found);
    MakeTable();
  }
  std::uint32_t const entry = table_[SlotOf(upper, Hash(upper))].entry;
  if (entry == 0) return false;
  *found = KeyIn(entries_[entry - 1]);
  return true;
}

void TextKeys::MakeOrder() {
  if (hasOrder_) return;
  MakeEntries();
  using Name = std::pair<std::uint64_t, std::uint32_t>;
  std::vector<Name> names;
  names.reserve(entries_.size());
  for (std::uint32_t i = 0; i < entries_.size(); i++) names.emplace_back(Beginning(NameOf(entries_[i])), i);
  auto const compare = [this](Name a, Name b) {
    return Compare(NameOf(entries_[a.second]), NameOf(entries_[b.second]));
  };
  std::sort(names.begin(), names.end(), [&](Name a, Name b) {
    if (a.first != b.first) return a.first < b.first;
    int const order = compare(a, b);
    return order == 0 ? a.second < b.second : order < 0;
  });
  auto const last =
      std::unique(names.begin(), names.end(), [&](Name a, Name b) { return a.first == b.first && compare(a, b) == 0; });
  order_.reserve(static_cast<std::size_t>(last - names.begin()));
  for (auto name = names.begin(); name != last; ++name) order_.push_back(name->second);
  hasOrder_ = true;
}

std::size_t TextKeys::Count() {
  MakeOrder();
  return order_.size();
}

KeyText TextKeys::At(std::size_t n) {
  MakeOrder();
  return KeyIn(entries_[order_[n]]);
}

}  // namespace zelvane::internal
