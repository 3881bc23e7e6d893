#include "zelvane/config/textkeys_internal.h"

#include <algorithm>
#include <utility>

#include "zelvane/config/cfgnames_internal.h"

namespace zelvane::internal {
bool TextKeys::FindInText(std::string_view name, KeyText* found) const {
  LineCutter lines(text_);
  for (std::string_view line; lines.Next(line);) {
    if (!line.empty() && line[0] <= ' ') line = TrimView(line);
    if (!NameBegins(line, name) || !IsKey(line)) continue;
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
  auto const place = [this](std::string_view part) { return static_cast<std::uint32_t>(part.data() - text_.data()); };
  auto const size = [](std::string_view part) { return static_cast<std::uint32_t>(part.size()); };
  LineCutter lines(text_);
  for (std::string_view line; lines.Next(line);) {
    line = TrimView(line);
    if (!IsKey(line)) continue;
    auto const [name, value] = KeyOf(line);
    keys.push_back({Beginning(name), place(name), size(name), place(value), size(value)});
  }
  keys_ = std::move(keys);
  stage_ = Stage::kListed;
}

void TextKeys::Sort() {
  if (stage_ == Stage::kSorted) return;
  List();
  std::sort(keys_.begin(), keys_.end(), [this](Entry const& a, Entry const& b) {
    if (a.beginning != b.beginning) return a.beginning < b.beginning;
    int const order = CompareNames(NameOf(a), NameOf(b));
    return order < 0 || (order == 0 && a.name < b.name);
  });
  auto const isSame = [this](Entry const& a, Entry const& b) {
    return a.beginning == b.beginning && IsSameName(NameOf(a), NameOf(b));
  };
  keys_.erase(std::unique(keys_.begin(), keys_.end(), isSame), keys_.end());
  stage_ = Stage::kSorted;
}

bool TextKeys::Find(std::string_view name, KeyText* found) {
  if (stage_ == Stage::kText && asked_++ < kQuestionsToText) return FindInText(name, found);
  auto const nameOf = [this](Entry const& each) { return NameOf(each); };
  Entry const* entry = nullptr;
  if (stage_ != Stage::kSorted && asked_++ < kQuestionsToList) {
    List();
    std::uint64_t const beginning = Beginning(name);
    entry = std::find_if(keys_.data(), keys_.data() + keys_.size(), [&](Entry const& each) {
      return each.beginning == beginning && IsSameName(NameOf(each), name);
    });
  } else {
    Sort();
    entry = FirstNotBefore(keys_.data(), keys_.size(), name, nameOf);
  }
  if (entry == keys_.data() + keys_.size() || !IsSameName(NameOf(*entry), name)) return false;
  *found = KeyIn(*entry);
  return true;
}

std::size_t TextKeys::Count() {
  Sort();
  return keys_.size();
}

KeyText TextKeys::At(std::size_t n) {
  Sort();
  return KeyIn(keys_[n]);
}

}  // namespace zelvane::internal
