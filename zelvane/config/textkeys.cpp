#include "zelvane/config/textkeys_internal.h"

#include <algorithm>
#include <utility>

namespace zelvane::internal {

bool TextKeys::FindInText(std::string_view name, KeyText* found) const {
  for (std::string_view rest = text_, line; CutLine(rest, line);) {
    if (!line.empty() && line[0] <= ' ') line = TrimView(line);
    bool const nameMayEnd = line.size() <= name.size() || line[name.size()] == '=' || line[name.size()] <= ' ';
    if (!nameMayEnd || !NameBegins(line, name) || !IsKey(line)) continue;
    KeyText const key = KeyOf(TrimView(line));
    if (key.name.size() != name.size()) continue;
    *found = key;
    return true;
  }
  return false;
}

void TextKeys::List() {
  if (stage_ != Stage::kText) return;
  std::vector<Entry> keys;
  keys.reserve(static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '\n')) + 1);
  for (std::string_view rest = text_, line; CutLine(rest, line);) {
    line = TrimView(line);
    if (!IsKey(line)) continue;
    KeyText const key = KeyOf(line);
    keys.push_back({Beginning(key.name), key});
  }
  keys_ = std::move(keys);
  stage_ = Stage::kListed;
}

void TextKeys::Sort() {
  List();
  std::stable_sort(keys_.begin(), keys_.end(), [](Entry const& a, Entry const& b) {  // equal names keep their order
    return a.beginning == b.beginning ? IsNameBefore(a.key.name, b.key.name) : a.beginning < b.beginning;
  });
  auto const isSame = [](Entry const& a, Entry const& b) {
    return a.beginning == b.beginning && IsSameName(a.key.name, b.key.name);
  };
  keys_.erase(std::unique(keys_.begin(), keys_.end(), isSame), keys_.end());
  stage_ = Stage::kSorted;
}

// The first key in the sorted list that is not less than `name`.
TextKeys::Entry const* TextKeys::FirstNotBefore(std::string_view name) const {
  std::uint64_t const beginning = Beginning(name);
  Entry const* entry = keys_.data();
  Entry const* const end = entry + keys_.size();
  for (std::size_t half, count = keys_.size(); count > 0; count -= half) {
    half = count - count / 2;  // without a branch, which would be mispredicted every second time
    entry += half & (std::size_t{0} - static_cast<std::size_t>(entry[half - 1].beginning < beginning));
  }
  if (entry == end || IsSameName(entry->key.name, name)) return entry;
  return std::lower_bound(entry, end, name, [beginning](Entry const& each, std::string_view other) {
    return each.beginning == beginning && IsNameBefore(each.key.name, other);  // several names have this beginning
  });
}

bool TextKeys::Find(std::string_view name, KeyText* found) {
  if (stage_ == Stage::kText && asked_++ < kQuestionsToText) return FindInText(name, found);
  Entry const* entry = nullptr;
  if (stage_ != Stage::kSorted && asked_++ < kQuestionsToList) {
    List();
    entry =
        std::find_if(keys_.data(), keys_.data() + keys_.size(), [name, beginning = Beginning(name)](Entry const& each) {
          return each.beginning == beginning && IsSameName(each.key.name, name);
        });
  } else {
    Sorted();
    entry = FirstNotBefore(name);
  }
  if (entry == keys_.data() + keys_.size() || !IsSameName(entry->key.name, name)) return false;
  *found = entry->key;
  return true;
}

}  // namespace zelvane::internal
