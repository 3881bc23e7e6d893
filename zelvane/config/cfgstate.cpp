#include "zelvane/config/cfgstate_internal.h"

#include "zelvane/core/strutils_internal.h"

using zelvane::internal::CfgState;
using zelvane::internal::SectKeys;

SectRec::SectRec(CfgState& state, CfgClass::LinePosition headerLine)
    : keys(std::make_unique<SectKeys>(state.pool, state.lines.end())), header(headerLine), lastKey(keys->end()) {}

SectRec::~SectRec() = default;

namespace zelvane::internal {
namespace {

// A map is searched in log n steps, each with a cache miss in a large one. A table of the names costs about as much as
// n / 10 searches. It is built at n / 32, which costs a tenth of what the sections cost to load.
constexpr std::size_t kFewSections = 8;

std::string_view Detach(CfgState& state, std::string_view value) { return state.detached.emplace_back(value); }

}  // namespace

std::string_view Upper(CfgState& state, std::string_view name) {
  AnsiUpperInto(state.upper, name);
  return state.upper;
}

std::string TakeUpper(CfgState& state) {
  constexpr std::size_t kLong = 1024;
  bool const fits = state.upper.size() > state.upper.capacity() / 2;
  return fits && state.upper.size() > kLong ? std::exchange(state.upper, {}) : state.upper;
}

void Expand(CfgState& state, SectRec& section) {
  SectKeys& keys = *section.keys;
  LinePosition const block = keys.block;
  if (block == state.lines.end()) return;
  LineList lines(LineList::allocator_type(state.pool));
  try {
    for (std::string_view rest = *block, raw; CutLine(rest, raw);) {
      auto const line = lines.emplace(lines.end(), raw);
      std::string_view const text = TrimView(*line);
      if (!IsKey(text)) continue;
      KeyText const key = KeyOf(text);
      AddKey(state, section, key.name, keys.end(), [&](std::string_view) { return KeyLine{line, key.value}; });
    }
  } catch (...) {
    keys.clear();
    section.lastKey = keys.end();
    throw;
  }
  if (section.header == block) section.header = lines.begin();
  state.lines.splice(block, lines);
  state.lines.erase(block);
  keys.block = state.lines.end();
  keys.text = TextKeys();
}

void ExpandAll(CfgState& state) {
  if (!state.hasBlocks) return;
  for (auto& [name, section] : state.sections) Expand(state, section);
  state.hasBlocks = false;
}

SectionPosition FindSection(CfgState& state, std::string_view name) {
  if (state.recent != state.sections.end() && IsSameName(name, state.recent->first)) return state.recent;
  std::string_view const upper = Upper(state, name);
  SectionMap& sections = state.sections;
  auto& names = state.sectionNames;
  if (names.empty() && sections.size() > kFewSections && ++state.sectionQuestions > sections.size() / 32) {
    decltype(state.sectionNames) all(sections.size());
    for (auto at = sections.begin(); at != sections.end(); ++at) all.emplace(at->first, at);
    names.swap(all);
  }
  if (names.empty()) return state.recent = sections.find(upper);
  auto const found = names.find(upper);
  return state.recent = found == names.end() ? sections.end() : found->second;
}

bool ReadKey(CfgState& state, SectRec& section, std::string_view name, KeyText* found) {
  SectKeys& keys = *section.keys;
  if (keys.block != state.lines.end()) return keys.text.Find(name, found);
  KeyPosition const position = keys.find(Upper(state, name));
  if (position == keys.end()) return false;
  *found = {position->first, position->second.value};
  return true;
}

std::size_t KeyCount(CfgState& state, SectRec& section) {
  SectKeys& keys = *section.keys;
  return keys.block != state.lines.end() ? keys.text.Sorted().size() : keys.size();
}

bool ReadKeyAt(CfgState& state, SectRec& section, std::size_t n, KeyText* found) {
  SectKeys& keys = *section.keys;
  if (n >= KeyCount(state, section)) return false;
  if (keys.block != state.lines.end()) return *found = keys.text.Sorted()[n].key, true;
  KeyPosition const position = keys.ranks.At(keys, n);
  *found = {position->first, position->second.value};
  return true;
}

std::string KeyNameAt(CfgState& state, SectRec& section, std::size_t n) {
  SectKeys& keys = *section.keys;
  if (n >= KeyCount(state, section)) return {};
  return keys.block != state.lines.end() ? AnsiUpper(keys.text.Sorted()[n].key.name) : keys.ranks.At(keys, n)->first;
}

void RemoveKey(CfgState& state, SectRec& section, KeyPosition position) {
  KeyRec const& key = position->second;
  auto const none = section.keys->end();
  if (key.line != state.lines.end()) {
    if (section.header == key.line) section.header = state.lines.end();
    state.lines.erase(key.line);
  }
  if (key.previous != none) key.previous->second.next = key.next;
  if (key.next != none) key.next->second.previous = key.previous;
  if (section.lastKey == position) section.lastKey = key.previous;
  if (state.parseSection != state.sections.end() && &state.parseSection->second == &section &&
      state.parseKey == position)
    state.parseKey = none;
  section.keys->ranks.Erased(position);
  section.keys->erase(position);
}

void RemoveSection(CfgState& state, SectionPosition position) {
  SectRec& section = position->second;
  Expand(state, section);
  bool headerIsKeyLine = false;
  for (auto const& [name, key] : *section.keys) {
    headerIsKeyLine = headerIsKeyLine || key.line == section.header;
    if (key.line != state.lines.end()) state.lines.erase(key.line);
  }
  if (!headerIsKeyLine && section.header != state.lines.end()) state.lines.erase(section.header);
  if (state.parseSection == position) state.parseSection = state.sections.end();
  state.recent = state.current = state.sections.end();
  state.sectionRanks.Erased(position);
  state.sectionNames.erase(position->first);
  state.sections.erase(position);
}

void ForgetIndex(CfgState& state) {
  state.sectionNames.clear();
  state.sectionQuestions = 0;
  state.sections.clear();
  state.recent = state.current = state.sections.end();
  state.sectionRanks.Clear();
  state.detached.clear();
  state.parseSection = state.sections.end();
  state.hasBlocks = false;
}

void ForgetLines(CfgState& state) {
  ExpandAll(state);
  std::list<std::string> values;  // all copies first: if memory runs out, nothing has changed
  for (auto const& [name, section] : state.sections)
    for (auto const& [key, record] : *section.keys) values.emplace_back(record.value);
  auto value = values.begin();
  for (auto& [name, section] : state.sections) {
    section.header = state.lines.end();
    for (auto& [key, record] : *section.keys) {
      record.value = *value++;
      record.line = state.lines.end();
    }
  }
  state.detached.swap(values);  // nothing refers to the former ones
  state.lines.clear();
}

void ForgetFile(CfgState& state) {
  ForgetIndex(state);
  ForgetLines(state);
  state.fileName.clear();
}

std::string Joined(std::string_view key, std::string_view value) {
  std::string line(key.size() + 3 + value.size(), ' ');
  line[key.copy(line.data(), key.size()) + 1] = '=';
  value.copy(line.data() + key.size() + 3, value.size());
  return line;
}

void Rewrite(CfgState& state, KeyRec& key, std::string_view value) {
  if (key.line == state.lines.end()) {
    key.value = Detach(state, value);
    return;
  }
  std::string& line = *key.line;
  std::string_view const text = TrimView(line);
  line = Joined(TrimView(text.substr(0, text.find('='))), value);
  key.value = std::string_view(line).substr(line.size() - value.size());
}

bool BlockLoader::Take(std::string_view line) {
  std::string_view const text = TrimView(line);
  LineKind const kind = KindOf(text);
  std::string_view const name = kind == LineKind::kHeader ? HeaderName(text) : std::string_view();
  bool const opens = kind == LineKind::kHeader || (kind == LineKind::kKey && section_ == nullptr);
  if (opens || kind == LineKind::kBad || start_ == nullptr) Begin(line, opens ? &name : nullptr);
  end_ = line.data() + line.size();
  if (kind == LineKind::kBad) state_.error = CFG_SYNTAX;
  return kind != LineKind::kBad;
}

void BlockLoader::Begin(std::string_view line, std::string_view const* section) {
  Finish();
  start_ = line.data();
  section_ = nullptr;
  block_ = state_.lines.emplace(state_.lines.end());
  if (section == nullptr) return;
  auto const [position, added] = AddSection(state_, *section, [this](std::string_view) { return block_; });
  state_.parseSection = position;
  section_ = &position->second;
  isContinued_ = !added;
}

void BlockLoader::Finish() {
  if (start_ == nullptr) return;
  block_->assign(start_, static_cast<std::size_t>(end_ - start_));
  if (section_ == nullptr) return;
  if (isContinued_) Expand(state_, *section_);
  section_->keys->block = block_;
  section_->keys->text = TextKeys(*block_);
  state_.hasBlocks = true;
  if (isContinued_) Expand(state_, *section_);
}

LinePosition MakeHeader(CfgState& state, std::string_view name) {
  std::string text(1, '[');
  if (name.empty()) text.push_back(' ');
  text.append(name).push_back(']');
  return state.lines.insert(state.lines.end(), std::move(text));
}

KeyLine MakeKey(CfgState& state, SectRec const& section, std::string_view key, std::string_view value) {
  auto place = section.header;
  if (section.lastKey != section.keys->end() && section.lastKey->second.line != state.lines.end())
    place = section.lastKey->second.line;
  place = place == state.lines.end() ? state.lines.begin() : std::next(place);
  auto const line = state.lines.insert(place, Joined(key, value));
  return {line, std::string_view(*line).substr(line->size() - value.size())};
}

std::string_view ValueIn(CfgState& state, LinePosition line, std::string_view value) {
  if (line != state.lines.end()) {
    std::string_view const there = KeyOf(TrimView(*line)).value;
    if (there == value) return there;
  }
  return Detach(state, value);
}

}  // namespace zelvane::internal
