#include "zelvane/config/cfgclass.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/config/nodepool_internal.h"
#include "zelvane/config/rankindex_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::AnsiUpperInto;
using zelvane::internal::Guard;
using zelvane::internal::NodePool;
using zelvane::internal::PoolAllocator;
using zelvane::internal::RankIndex;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::SafeSave;
using zelvane::internal::TrimView;

namespace {

template <class Record>
using NameMap = std::map<std::string, Record, std::less<>, PoolAllocator<std::pair<std::string const, Record>>>;
using KeyMap = NameMap<KeyRec>;
using SectionMap = NameMap<SectRec>;
using LineList = std::list<std::string, PoolAllocator<std::string>>;

}  // namespace

namespace zelvane::internal {

struct SectKeys : KeyMap {
  explicit SectKeys(NodePool& pool) : KeyMap(KeyMap::allocator_type(pool)) {}
  RankIndex<KeyMap> ranks;
};

struct CfgState {
  CfgState() : lines(LineList::allocator_type(pool)), sections(SectionMap::allocator_type(pool)) {}

  NodePool pool;  // outlives the containers
  LineList lines;
  SectionMap sections;
  RankIndex<SectionMap> sectionRanks;
  std::list<std::string> detached;  // values that no line holds
  std::string fileName;
  std::string section;
  CfgClass::SectionPosition parseSection = sections.end();
  CfgClass::KeyPosition parseKey;
  std::string upper;         // the upper-cased name of the present look-up; kept for its memory
  std::size_t textSize = 0;  // of the last load: what a save needs, roughly
  int error = CFG_OK;
  int errorLine = 0;
  bool readOnly = false;
  bool modified = false;
  bool cached = false;
  bool plain = false;          // no step is replaced: see IsPlain
  bool stoppedAtLine = false;  // the load stopped at a syntax error, and the file has not been saved since
  bool missing = false;        // the last load failed because there is no such file
};

}  // namespace zelvane::internal

using zelvane::internal::CfgState;
using zelvane::internal::SectKeys;

SectRec::SectRec(CfgState& state, CfgClass::LinePosition headerLine)
    : keys(std::make_unique<SectKeys>(state.pool)), header(headerLine), lastKey(keys->end()) {}

SectRec::~SectRec() = default;

namespace {

// The public position types name the plain containers; they fit the pooled ones because the standard library makes
// iterators that do not depend on the allocator or the comparison.
static_assert(std::is_same_v<CfgClass::LinePosition, LineList::iterator>);
static_assert(std::is_same_v<CfgClass::SectionPosition, SectionMap::iterator>);
static_assert(std::is_same_v<CfgClass::KeyPosition, KeyMap::iterator>);

struct ParsedLine {
  enum class Kind { kNothing, kHeader, kKey, kBad } kind;
  std::string_view name;   // of the section or key
  std::string_view value;  // of the key
};

ParsedLine Parse(std::string_view raw) {
  using Kind = ParsedLine::Kind;
  std::string_view const text = TrimView(raw);
  if (text.empty() || text[0] == ';' || text[0] == '#' || text[0] == '\'') return {Kind::kNothing, {}, {}};
  std::size_t const opening = text.find('[');
  std::size_t const closing = text.find(']');
  if (opening != std::string_view::npos || closing != std::string_view::npos) {
    if (opening != 0 || closing != text.size() - 1 || text.size() < 3) return {Kind::kBad, {}, {}};
    return {Kind::kHeader, TrimView(text.substr(1, text.size() - 2)), {}};
  }
  std::size_t const equals = text.find('=');
  if (text.size() < 2 || equals == 0) return {Kind::kBad, {}, {}};
  if (equals == std::string_view::npos) return {Kind::kKey, text, text};
  return {Kind::kKey, TrimView(text.substr(0, equals)), TrimView(text.substr(equals + 1))};
}

std::string_view Upper(CfgState& state, std::string_view name) {
  AnsiUpperInto(state.upper, name);
  return state.upper;
}

// Where `upper` stands or belongs in `map`; most files are written in ascending order or nearly so.
template <class Map>
typename Map::iterator LowerBound(Map& map, std::string_view upper) {
  if (map.empty() || std::prev(map.end())->first < upper) return map.end();
  return map.lower_bound(upper);
}

// Enters the section unless it is there. `makeLine` gets the upper-cased name, gives the header's position and is
// called only when it is needed.
template <class MakeLine>
std::pair<CfgClass::SectionPosition, bool> AddSection(CfgState& state, std::string_view name, MakeLine makeLine) {
  std::string_view const upper = Upper(state, name);
  auto const place = LowerBound(state.sections, upper);
  if (place != state.sections.end() && place->first == upper) return {place, false};
  auto const added = state.sections.emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(upper),
                                                 std::forward_as_tuple(state, makeLine(upper)));
  state.sectionRanks.Inserted(added);
  state.parseSection = added;
  state.parseKey = added->second.keys->end();
  return {added, true};
}

struct KeyLine {
  CfgClass::LinePosition line;
  std::string_view value;
};

// Enters the key unless it is there, after `previous` in the order of writing. `makeLine` gets the upper-cased name,
// gives the KeyLine and is called only when it is needed.
template <class MakeLine>
std::pair<CfgClass::KeyPosition, bool> AddKey(CfgState& state, SectRec& section, std::string_view key,
                                              CfgClass::KeyPosition previous, MakeLine makeLine) {
  std::string_view const upper = Upper(state, key);
  SectKeys& keys = *section.keys;
  auto const place = LowerBound(keys, upper);
  if (place != keys.end() && place->first == upper) return {place, false};
  KeyLine const made = makeLine(upper);
  auto const added = keys.emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(upper),
                                       std::forward_as_tuple(KeyRec{made.value, made.line, previous, keys.end()}));
  keys.ranks.Inserted(added);
  if (previous != keys.end()) {
    CfgClass::KeyPosition& next = previous->second.next;
    if (next != keys.end()) next->second.previous = keys.end();  // a key is followed by one other at most
    next = added;
  }
  section.lastKey = added;
  state.parseKey = added;
  return {added, true};
}

void RemoveKey(CfgState& state, SectRec& section, CfgClass::KeyPosition position) {
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

void RemoveSection(CfgState& state, CfgClass::SectionPosition position) {
  SectRec& section = position->second;
  bool headerIsKeyLine = false;
  for (auto const& [name, key] : *section.keys) {
    headerIsKeyLine = headerIsKeyLine || key.line == section.header;
    if (key.line != state.lines.end()) state.lines.erase(key.line);
  }
  if (!headerIsKeyLine && section.header != state.lines.end()) state.lines.erase(section.header);
  if (state.parseSection == position) state.parseSection = state.sections.end();
  state.sectionRanks.Erased(position);
  state.sections.erase(position);
}

// A new line directly behind the section's last key or else its header; a section with neither has its keys in front.
CfgClass::LinePosition MakeKeyLine(CfgState& state, SectRec const& section, std::string text) {
  auto place = section.header;
  if (section.lastKey != section.keys->end() && section.lastKey->second.line != state.lines.end())
    place = section.lastKey->second.line;
  return state.lines.insert(place == state.lines.end() ? state.lines.begin() : std::next(place), std::move(text));
}

std::string Joined(std::string_view key, std::string_view value) {
  std::string line;
  line.reserve(key.size() + 3 + value.size());
  return line.append(key).append(" = ").append(value);
}

std::string_view TailOf(std::string const& line, std::size_t length) {
  return std::string_view(line).substr(line.size() - length);
}

std::string_view Detach(CfgState& state, std::string_view value) {
  return state.detached.emplace_back(value);
}

// Gives the key a new value: the line keeps the key as it is spelled there, and nothing else.
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

// Takes in one line at once: what ParseLine does in steps for an object whose steps may be replaced.
bool TakeLine(CfgState& state, std::string_view raw) {
  auto const line = state.lines.emplace(state.lines.end(), raw);
  ParsedLine const parsed = Parse(*line);
  auto const thisLine = [&](std::string_view) { return line; };
  switch (parsed.kind) {
    case ParsedLine::Kind::kNothing: return true;
    case ParsedLine::Kind::kBad: state.error = CFG_SYNTAX; return false;
    case ParsedLine::Kind::kHeader: state.parseSection = AddSection(state, parsed.name, thisLine).first; return true;
    case ParsedLine::Kind::kKey: break;
  }
  if (state.parseSection == state.sections.end()) AddSection(state, {}, thisLine);
  SectRec& section = state.parseSection->second;
  AddKey(state, section, parsed.name, section.keys->end(), [&](std::string_view) {
    return KeyLine{line, parsed.value};
  });
  return true;
}

CfgClass::LinePosition MakeHeader(CfgState& state, std::string_view name) {
  std::string text(1, '[');
  if (name.empty()) text.push_back(' ');
  text.append(name).push_back(']');
  return state.lines.insert(state.lines.end(), std::move(text));
}

KeyLine MakeKey(CfgState& state, SectRec const& section, std::string_view key, std::string_view value) {
  auto const line = MakeKeyLine(state, section, Joined(key, value));
  return {line, TailOf(*line, value.size())};
}

// Where `value` stands in a line that is there already.
std::string_view ValueIn(CfgState& state, CfgClass::LinePosition line, std::string_view value) {
  if (line != state.lines.end()) {
    std::string_view const there = Parse(*line).value;
    if (there == value) return there;
  }
  return Detach(state, value);
}

bool HasLineFeed(std::string_view text) {
  return text.find('\n') != std::string_view::npos;
}

// Keeps the file that holds lines which the next save drops. A file that is gone has nothing to keep.
bool KeptForGood(std::string const& fileName) {
  if (access(fileName.c_str(), F_OK) != 0 && errno == ENOENT) return true;
  return zelvane::internal::KeepAside(fileName, ".lost");
}

void Reindexed(CfgState& state) {
  state.sections.clear();
  state.sectionRanks.Clear();
  state.detached.clear();
  state.parseSection = state.sections.end();
}

}  // namespace

// ---- Construction, files. ----

CfgClass::CfgClass() : state_(std::make_unique<CfgState>()) {}

CfgClass::~CfgClass() {
  Close();
}  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): this class's own steps save

bool CfgClass::Fail(CfgError code) {
  state_->error = code;
  return code == CFG_OK;
}

// Whether every step between parser, index and lines is this class's own, so that they can be taken together.
bool CfgClass::IsPlain() const {
  std::type_info const& type = typeid(*this);
  return type == typeid(CfgClass) || type == typeid(RegCfgClass) || type == typeid(zelvane::internal::OptionalCfg) ||
         type == typeid(zelvane::internal::OptionalRegCfg);
}

bool CfgClass::GetUpperCaseWriteCache() {
  return true;
}

bool CfgClass::OpenAs(char const* name, bool readOnly) {
  if (name == nullptr || *name == '\0') return Fail(CFG_BAD_ARGUMENT);
  std::string copy = name;  // it may be this object's own file name, which Close clears
  Close();
  state_->fileName = std::move(copy);
  bool const loaded = LoadFile(false);
  if (!loaded && state_->error != CFG_SYNTAX) {
    state_->fileName.clear();
    return false;
  }
  state_->readOnly = readOnly;
  state_->modified = false;
  return true;
}

bool CfgClass::Open(char const* name) {
  return OpenAs(name, false);
}
bool CfgClass::Open(std::string const& name) {
  return Open(name.c_str());
}
bool CfgClass::OpenReadOnly(char const* name) {
  return OpenAs(name, true);
}
bool CfgClass::OpenReadOnly(std::string const& name) {
  return OpenReadOnly(name.c_str());
}
bool CfgClass::SetFileName(char const* name, bool readOnly) {
  return readOnly ? OpenReadOnly(name) : Open(name);
}

bool CfgClass::Close() {
  bool const saved = SaveFile();
  ClearReadCache();
  ClearWriteCache();
  state_->fileName.clear();
  state_->section.clear();
  state_->readOnly = state_->modified = state_->stoppedAtLine = false;
  state_->errorLine = 0;
  return saved;
}

bool CfgClass::LoadFile(bool noLines) {
  CfgState& state = *state_;
  ClearReadCache();
  ClearWriteCache();
  state.errorLine = 0;
  state.stoppedAtLine = false;
  state.plain = IsPlain();

  std::string text;
  ReadResult const read = ReadWhole(state.fileName, text);
  state.missing = read == ReadResult::kNotOpened && errno == ENOENT;
  if (read == ReadResult::kReadFailed)
    state.errorLine = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  if (read != ReadResult::kOk) return Fail(CFG_FILE_FAILED);

  state.textSize = text.size();
  state.parseSection = state.sections.end();
  int number = 0;
  for (char const *line = text.data(), *const end = line + text.size();;) {
    char const* const feed = static_cast<char const*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)));
    std::string_view const raw(line, static_cast<std::size_t>((feed == nullptr ? end : feed) - line));
    number++;
    if (!(state.plain && !noLines ? TakeLine(state, raw) : ParseLine(std::string(raw), noLines))) {
      state.errorLine = number;
      state.stoppedAtLine = true;
      return false;
    }
    if (feed == nullptr) return Fail(CFG_OK);
    line = feed + 1;
  }
}

bool CfgClass::ParseLine(std::string const& line, bool noLines) {
  CfgState& state = *state_;
  auto const position = noLines ? state.lines.end() : state.lines.insert(state.lines.end(), line);
  auto const give_up = [this] {
    ClearReadCache();
    ClearWriteCache();
    return false;
  };
  ParsedLine const parsed = Parse(line);
  switch (parsed.kind) {
    case ParsedLine::Kind::kNothing: return true;
    case ParsedLine::Kind::kBad: return Fail(CFG_SYNTAX);
    case ParsedLine::Kind::kHeader: {
      std::string const name(parsed.name);
      SectionPosition found;
      if (!LocateSection(name, &found)) return InsertSection(name, &position, false) || give_up();
      state.parseSection = found;
      state.parseKey = found->second.keys->end();
      return true;
    }
    case ParsedLine::Kind::kKey: break;
  }
  if (state.parseSection == state.sections.end() && !InsertSection("", &position, false)) return give_up();
  std::string const key(parsed.name);
  // The failed look-up leaves the parse key at the end: a loaded key gets no previous one.
  if (LocateKey(&state.parseSection, key, &state.parseKey)) return true;
  return InsertKey(key, std::string(parsed.value), &state.parseSection, &state.parseKey, &position, false) || give_up();
}

void CfgClass::ClearReadCache() {
  Reindexed(*state_);
}

void CfgClass::ClearWriteCache() {
  CfgState& state = *state_;
  for (auto& [name, section] : state.sections) {  // an index that outlives the lines must not point into them
    section.header = state.lines.end();
    for (auto& [key, record] : *section.keys) {
      record.value = Detach(state, record.value);
      record.line = state.lines.end();
    }
  }
  state.lines.clear();
}

bool CfgClass::SaveFile() {
  CfgState& state = *state_;
  if (state.fileName.empty()) return Fail(CFG_NOT_OPEN), true;
  if (state.readOnly) return Fail(CFG_READ_ONLY), true;
  if (!state.modified) return Fail(CFG_OK);
  if (state.stoppedAtLine && !KeptForGood(state.fileName)) return Fail(CFG_FILE_FAILED);
  std::string text;
  text.reserve(state.textSize + state.textSize / 8 + 256);
  for (std::string const& line : state.lines) text.append(line).push_back('\n');
  if (!text.empty()) text.pop_back();  // line feeds stand between the lines
  if (!SafeSave(state.fileName, text)) return Fail(CFG_FILE_FAILED);
  state.modified = state.stoppedAtLine = false;
  return Fail(CFG_OK);
}

bool CfgClass::SaveAs(char const* name) {
  if (name == nullptr || *name == '\0') return Fail(CFG_BAD_ARGUMENT);
  if (state_->fileName == name) return Fail(CFG_SAME_FILE);
  std::string text;
  for (auto const& [section, record] : state_->sections) {
    if (!section.empty()) text.append("[").append(section).append("]\n");
    for (auto const& [key, keyRecord] : *record.keys) text.append(Joined(key, keyRecord.value)).push_back('\n');
    text.push_back('\n');
  }
  return Fail(SafeSave(name, text) ? CFG_OK : CFG_FILE_FAILED);
}

bool CfgClass::SaveAs(std::string const& name) {
  return SaveAs(name.c_str());
}

bool CfgClass::Rename(char const* name) {
  std::string const copy = name == nullptr ? "" : name;
  return SaveAs(copy.c_str()) && Open(copy.c_str());
}

std::string CfgClass::GetFileName() {
  return state_->fileName;
}

// ---- Steps on the index. ----

bool CfgClass::LocateSection(std::string const& name, SectionPosition* position) {
  auto const found = state_->sections.find(Upper(*state_, name));
  if (position != nullptr) *position = found;
  Fail(CFG_OK);
  return found != state_->sections.end();
}

bool CfgClass::LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* position) {
  if (section == nullptr) return Fail(CFG_BAD_ARGUMENT);
  Fail(CFG_OK);
  if (*section == state_->sections.end()) return false;
  SectKeys& keys = *(*section)->second.keys;
  auto const found = keys.find(Upper(*state_, key));
  if (position != nullptr) *position = found;
  return found != keys.end();
}

bool CfgClass::InsertSection(std::string const& name, LinePosition const* line, bool create) {
  if (create ? HasLineFeed(name) : line == nullptr) return Fail(CFG_BAD_ARGUMENT);
  auto const makeLine = [&](std::string_view upper) {
    return create ? MakeHeader(*state_, GetUpperCaseWriteCache() ? upper : std::string_view(name)) : *line;
  };
  bool const added = AddSection(*state_, name, makeLine).second;
  return Fail(added ? CFG_OK : CFG_EXISTS);
}

bool CfgClass::InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                         KeyPosition const* previous, LinePosition const* line, bool create) {
  CfgState& state = *state_;
  if (section == nullptr || previous == nullptr || *section == state.sections.end()) return Fail(CFG_BAD_ARGUMENT);
  if (create ? HasLineFeed(key) || HasLineFeed(value) : line == nullptr) return Fail(CFG_BAD_ARGUMENT);
  SectRec& record = (*section)->second;
  auto const makeLine = [&](std::string_view upper) {
    if (!create) return KeyLine{*line, ValueIn(state, *line, value)};
    return MakeKey(state, record, GetUpperCaseWriteCache() ? upper : std::string_view(key), value);
  };
  bool const added = AddKey(state, record, key, *previous, makeLine).second;
  return Fail(added ? CFG_OK : CFG_EXISTS);
}

// ---- Sections. ----

bool CfgClass::SetSection(char const* name) {
  if (state_->fileName.empty()) return Fail(CFG_NOT_OPEN);
  if (name == nullptr) return Fail(CFG_BAD_ARGUMENT);
  state_->section = name;
  return Fail(CFG_OK);
}

bool CfgClass::SetSection(std::string const& name) {
  return SetSection(name.c_str());
}
std::string CfgClass::GetSection() {
  return state_->section;
}

bool CfgClass::SectionExists(char const* name) {
  if (name == nullptr) return Fail(CFG_BAD_ARGUMENT);
  return LocateSection(name, nullptr);
}

bool CfgClass::SectionExists(std::string const& name) {
  return SectionExists(name.c_str());
}
bool CfgClass::SectionExists() {
  return SectionExists(GetSection().c_str());
}

bool CfgClass::EraseSection(char const* name) {
  if (name == nullptr) return Fail(CFG_BAD_ARGUMENT);
  if (state_->fileName.empty()) return Fail(CFG_NOT_OPEN);
  if (state_->readOnly) return Fail(CFG_READ_ONLY);
  SectionPosition found;
  if (!LocateSection(name, &found)) return true;
  RemoveSection(*state_, found);
  return Changed();
}

bool CfgClass::EraseSection(std::string const& name) {
  return EraseSection(name.c_str());
}
bool CfgClass::EraseSection() {
  return EraseSection(GetSection().c_str());
}

unsigned long CfgClass::GetSectionCount() {
  Fail(CFG_OK);
  return state_->sections.size();
}

std::string CfgClass::GetSectionName(unsigned long n) {
  Fail(CFG_OK);
  SectionMap& sections = state_->sections;
  return n < sections.size() ? state_->sectionRanks.At(sections, n)->first : std::string();
}

// ---- Keys. ----

// Finds what a reader or writer names, by the object's own steps where those may be replaced.
bool CfgClass::Find(char const* section, char const* key, KeyPosition* position) {
  CfgState& state = *state_;
  SectionPosition at;
  if (!state.plain) return LocateSection(section, &at) && LocateKey(&at, key, position);
  Fail(CFG_OK);
  at = state.sections.find(Upper(state, section));
  if (at == state.sections.end()) return false;
  *position = at->second.keys->find(Upper(state, key));
  return *position != at->second.keys->end();
}

// The arguments of an operation on one key, and then the object's state, in the order that all share.
CfgError CfgClass::Refusal(char const* section, char const* key, bool writing) const {
  if (section == nullptr || key == nullptr || *key == '\0') return CFG_BAD_ARGUMENT;
  if (state_->fileName.empty()) return CFG_NOT_OPEN;
  return writing && state_->readOnly ? CFG_READ_ONLY : CFG_OK;
}

// After a change: saved at once, or left for a flush.
bool CfgClass::Changed() {
  state_->modified = true;
  return state_->cached ? Fail(CFG_OK) : SaveFile();
}

bool CfgClass::KeyExists(char const* section, char const* key) {
  KeyPosition found;
  return Fail(Refusal(section, key, false)) && Find(section, key, &found);
}

bool CfgClass::KeyExists(std::string const& section, std::string const& key) {
  return KeyExists(section.c_str(), key.c_str());
}
bool CfgClass::KeyExists(char const* key) {
  return KeyExists(GetSection().c_str(), key);
}
bool CfgClass::KeyExists(std::string const& key) {
  return KeyExists(key.c_str());
}

bool CfgClass::DeleteKey(char const* section, char const* key) {
  if (!Fail(Refusal(section, key, true))) return false;
  SectionPosition at;
  KeyPosition found;
  if (!LocateSection(section, &at) || !LocateKey(&at, key, &found)) return true;
  RemoveKey(*state_, at->second, found);
  return Changed();
}

bool CfgClass::DeleteKey(std::string const& section, std::string const& key) {
  return DeleteKey(section.c_str(), key.c_str());
}
bool CfgClass::DeleteKey(char const* key) {
  return DeleteKey(GetSection().c_str(), key);
}
bool CfgClass::DeleteKey(std::string const& key) {
  return DeleteKey(key.c_str());
}
bool CfgClass::DeleteKey(unsigned long n) {
  return DeleteKey(GetKeyName(n).c_str());
}

unsigned long CfgClass::GetKeyCount(char const* section) {
  if (section == nullptr) return Fail(CFG_BAD_ARGUMENT), 0;
  SectionPosition at;
  return LocateSection(section, &at) ? at->second.keys->size() : 0;
}

unsigned long CfgClass::GetKeyCount(std::string const& section) {
  return GetKeyCount(section.c_str());
}
unsigned long CfgClass::GetKeyCount() {
  return GetKeyCount(GetSection().c_str());
}

std::string CfgClass::GetKeyName(char const* section, unsigned long n) {
  if (section == nullptr) return Fail(CFG_BAD_ARGUMENT), "";
  SectionPosition at;
  if (!LocateSection(section, &at) || n >= at->second.keys->size()) return "";
  return at->second.keys->ranks.At(*at->second.keys, n)->first;
}

std::string CfgClass::GetKeyName(std::string const& section, unsigned long n) {
  return GetKeyName(section.c_str(), n);
}
std::string CfgClass::GetKeyName(unsigned long n) {
  return GetKeyName(GetSection().c_str(), n);
}

// ---- Values. ----

std::string CfgClass::ReadStr(char const* section, char const* key, char const* def) {
  KeyPosition found;
  if (Fail(Refusal(section, key, false)) && Find(section, key, &found)) return std::string(found->second.value);
  return def == nullptr ? "" : def;
}

bool CfgClass::WriteStr(char const* section, char const* key, char const* value) {
  if (section == nullptr || key == nullptr || value == nullptr || HasLineFeed(section) || HasLineFeed(key) ||
      HasLineFeed(value))
    return Fail(CFG_BAD_ARGUMENT);
  if (!Fail(Refusal(section, key, true))) return false;
  CfgState& state = *state_;
  SectionPosition at;
  if (!LocateSection(section, &at) && (!InsertSection(section, nullptr, true) || !LocateSection(section, &at)))
    return false;
  SectRec& record = at->second;
  KeyPosition found;
  if (state.plain) {
    auto const makeLine = [&](std::string_view upper) {
      return MakeKey(state, record, GetUpperCaseWriteCache() ? upper : std::string_view(key), value);
    };
    auto const [position, added] = AddKey(state, record, key, record.lastKey, makeLine);
    if (!added) Rewrite(state, position->second, value);
  } else if (LocateKey(&at, key, &found)) {
    Rewrite(state, found->second, value);
  } else if (!InsertKey(key, value, &at, &record.lastKey, nullptr, true)) {
    return false;
  }
  return Changed();
}

// ---- Cached mode and errors. ----

bool CfgClass::SetCached(bool on) {
  Fail(CFG_OK);
  if (on == state_->cached) return true;
  state_->cached = on;
  return on || Flush();
}

bool CfgClass::Flush() {
  return SaveFile();
}
bool CfgClass::FlushCache() {
  return Flush();
}
bool CfgClass::IsFail() {
  return state_->error != CFG_OK;
}
long CfgClass::GetErrorCode() {
  return state_->error;
}
long CfgClass::GetErrorLine() {
  return state_->errorLine;
}

// ---- The variants. ----

RegCfgClass::RegCfgClass() = default;
RegCfgClass::~RegCfgClass() = default;  // the base closes, and so saves
bool RegCfgClass::GetUpperCaseWriteCache() {
  return false;
}
bool RegCfgClass::LoadFile(bool noLines) {
  return CfgClass::LoadFile(noLines);
}
bool RegCfgClass::SaveFile() {
  return CfgClass::SaveFile();
}
bool RegCfgClass::SaveAs(char const* name) {
  return CfgClass::SaveAs(name);
}
bool RegCfgClass::SaveAs(std::string const& name) {
  return CfgClass::SaveAs(name);
}

namespace zelvane::internal {

template <class Base>
OptionalFile<Base>::~OptionalFile() {
  Guard(false, [this] { return this->Close(); });
}

template <class Base>
bool OptionalFile<Base>::LoadFile(bool noLines) {
  return Base::LoadFile(noLines) || (this->state_->missing && this->Fail(CFG_OK));
}

template <class Base>
void OptionalFile<Base>::ForgetChanges() {
  this->state_->modified = false;
}

template class OptionalFile<CfgClass>;
template class OptionalFile<RegCfgClass>;

}  // namespace zelvane::internal
