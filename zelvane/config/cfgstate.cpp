#include "zelvane/config/cfgstate_internal.h"

#include "zelvane/core/strutils_internal.h"

using zelvane::internal::CfgState;
using zelvane::internal::SectKeys;

SectRec::SectRec(CfgState& state, CfgClass::LinePosition headerLine)
    : keys(std::make_unique<SectKeys>(state.pool, state.lines.end())), header(headerLine), lastKey(keys->end()) {}

SectRec::~SectRec() = default;

namespace zelvane::internal {
namespace {

// A new line directly behind the section's last key or else its header; a section with neither has its keys in front.
LinePosition MakeKeyLine(CfgState& state, SectRec const& section, std::string text) {
  auto place = section.header;
  if (section.lastKey != section.keys->end() && section.lastKey->second.line != state.lines.end())
    place = section.lastKey->second.line;
  return state.lines.insert(place == state.lines.end() ? state.lines.begin() : std::next(place), std::move(text));
}

constexpr std::size_t kManySections = 1000;  // together more than the caches hold

std::string_view TailOf(std::string const& line, std::size_t length) {
  return std::string_view(line).substr(line.size() - length);
}

std::string_view Detach(CfgState& state, std::string_view value) { return state.detached.emplace_back(value); }

bool IsNothing(std::string_view text) { return text.empty() || text[0] == ';' || text[0] == '#' || text[0] == '\''; }

KeyPosition Remember(CfgState& state, SectRec const& section, KeyPosition key) {
  state.recent.keyOwner = &section;
  return state.recent.key = key;
}

}  // namespace

LineKind KindOf(std::string_view text) {
  if (IsNothing(text)) return LineKind::kNothing;
  std::size_t const opening = text.find('[');
  std::size_t const closing = text.find(']');
  if (opening != std::string_view::npos || closing != std::string_view::npos)
    return opening == 0 && closing == text.size() - 1 && text.size() > 2 ? LineKind::kHeader : LineKind::kBad;
  return text.size() < 2 || text[0] == '=' ? LineKind::kBad : LineKind::kKey;
}

std::string_view HeaderName(std::string_view text) { return TrimView(text.substr(1, text.size() - 2)); }

KeyText KeyOf(std::string_view text) {
  std::size_t const equals = text.find('=');
  if (equals == std::string_view::npos) return {text, text};
  return {TrimView(text.substr(0, equals)), TrimView(text.substr(equals + 1))};
}

std::string_view Upper(CfgState& state, std::string_view name) {
  AnsiUpperInto(state.upper, name);
  return state.upper;
}

std::string TakeUpper(CfgState& state) {
  constexpr std::size_t kLong = 1024;
  bool const fits = state.upper.size() > state.upper.capacity() / 2;
  return fits && state.upper.size() > kLong ? std::exchange(state.upper, {}) : state.upper;
}

void IndexKeys(CfgState& state, SectRec& section) {
  SectKeys& keys = *section.keys;
  while (keys.unread != state.lines.end()) {
    LinePosition const line = keys.unread;
    std::string_view const text = TrimView(*line);
    if (!IsNothing(text)) {
      KeyText const key = KeyOf(text);
      AddKey(state, section, key.name, keys.end(), [&](std::string_view) { return KeyLine{line, key.value}; });
    }
    keys.unread = line == keys.lastUnread ? state.lines.end() : std::next(line);
  }
}

void IndexAllKeys(CfgState& state) {
  if (!state.hasUnread) return;
  for (auto& [name, section] : state.sections) IndexKeys(state, section);
  state.hasUnread = false;
}

SectionPosition FindSection(CfgState& state, std::string_view name) {
  Recent& recent = state.recent;
  if (recent.section && name == recent.sectionName) return *recent.section;
  SectionPosition const found = state.sectionHashes.Find(state.sections, Upper(state, name));
  if (found != state.sections.end()) {
    IndexKeys(state, found->second);
    recent.section.reset();  // the name below may not find memory
    recent.isCurrent = false;
    recent.sectionName = name;
    recent.section = found;
  }
  return found;
}

KeyPosition FindKey(CfgState& state, SectRec& section, std::string_view name) {
  if (state.recent.keyOwner == &section && name == state.recent.key->first) return state.recent.key;
  KeyPosition const found =
      section.keys->hashes.Find(*section.keys, Upper(state, name), state.sections.size() > kManySections);
  return found == section.keys->end() ? found : Remember(state, section, found);
}

KeyPosition KeyAt(CfgState& state, SectRec& section, std::size_t n) {
  return Remember(state, section, section.keys->ranks.At(*section.keys, n));
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
  if (state.recent.keyOwner == &section && state.recent.key == position) state.recent.keyOwner = nullptr;
  section.keys->ranks.Erased(position);
  section.keys->hashes.Erased();
  section.keys->erase(position);
}

void RemoveSection(CfgState& state, SectionPosition position) {
  SectRec& section = position->second;
  bool headerIsKeyLine = false;
  for (auto const& [name, key] : *section.keys) {
    headerIsKeyLine = headerIsKeyLine || key.line == section.header;
    if (key.line != state.lines.end()) state.lines.erase(key.line);
  }
  if (!headerIsKeyLine && section.header != state.lines.end()) state.lines.erase(section.header);
  if (state.parseSection == position) state.parseSection = state.sections.end();
  state.recent = Recent();
  state.sectionRanks.Erased(position);
  state.sectionHashes.Erased();
  state.sections.erase(position);
}

void ForgetIndex(CfgState& state) {
  state.sections.clear();
  state.recent = Recent();
  state.sectionRanks.Clear();
  state.sectionHashes.Clear();
  state.detached.clear();
  state.parseSection = state.sections.end();
  state.hasUnread = false;
}

void ForgetLines(CfgState& state) {
  IndexAllKeys(state);
  std::list<std::string> values;  // all of them first: short of memory, nothing has changed
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
  state.detached.splice(state.detached.end(), values);
  state.lines.clear();
}

void ForgetFile(CfgState& state) {
  ForgetIndex(state);
  ForgetLines(state);
  state.fileName.clear();
}

std::string Joined(std::string_view key, std::string_view value) {
  std::string line;
  line.reserve(key.size() + 3 + value.size());
  return line.append(key).append(" = ").append(value);
}

void Rewrite(CfgState& state, KeyRec& key, std::string_view value) {
  if (key.line == state.lines.end()) {
    key.value = Detach(state, value);
    return;
  }
  std::string& line = *key.line;
  std::string_view const text = TrimView(line);
  line = Joined(TrimView(text.substr(0, text.find('='))), value);
  key.value = TailOf(line, value.size());
}

bool TakeLine(CfgState& state, std::string_view raw) {
  auto const line = state.lines.emplace(state.lines.end(), raw);
  std::string_view const text = TrimView(*line);
  auto const thisLine = [&](std::string_view) { return line; };
  switch (KindOf(text)) {
    case LineKind::kNothing: return true;
    case LineKind::kBad: state.error = CFG_SYNTAX; return false;
    case LineKind::kHeader:
      state.parseSection = AddSection(state, HeaderName(text), thisLine).first;
      IndexKeys(state, state.parseSection->second);  // of an earlier header of that name: those lines stand apart
      return true;
    case LineKind::kKey: break;
  }
  if (state.parseSection == state.sections.end()) AddSection(state, {}, thisLine);
  SectKeys& keys = *state.parseSection->second.keys;
  if (keys.unread == state.lines.end()) keys.unread = line;
  keys.lastUnread = line;
  state.hasUnread = true;
  return true;
}

LinePosition MakeHeader(CfgState& state, std::string_view name) {
  std::string text(1, '[');
  if (name.empty()) text.push_back(' ');
  text.append(name).push_back(']');
  return state.lines.insert(state.lines.end(), std::move(text));
}

KeyLine MakeKey(CfgState& state, SectRec const& section, std::string_view key, std::string_view value) {
  auto const line = MakeKeyLine(state, section, Joined(key, value));
  return {line, TailOf(*line, value.size())};
}

std::string_view ValueIn(CfgState& state, LinePosition line, std::string_view value) {
  if (line != state.lines.end()) {
    std::string_view const there = KeyOf(TrimView(*line)).value;
    if (there == value) return there;
  }
  return Detach(state, value);
}

}  // namespace zelvane::internal
