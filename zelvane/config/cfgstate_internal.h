// The state of the configuration engine: the lines of a file, the index over them, and the operations that keep the two
// consistent. CfgClass adds the order of the virtual hooks, the file and the error codes.
#ifndef ZELVANE_CONFIG_CFGSTATE_INTERNAL_H
#define ZELVANE_CONFIG_CFGSTATE_INTERNAL_H

#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "zelvane/config/cfgclass.h"
#include "zelvane/config/cfgline_internal.h"
#include "zelvane/config/nodepool_internal.h"
#include "zelvane/config/rankindex_internal.h"
#include "zelvane/config/textkeys_internal.h"

namespace zelvane::internal {

template <class Record>
using NameMap = std::map<std::string, Record, NameLess, PoolAllocator<std::pair<std::string const, Record>>>;
using SectionMap = NameMap<SectRec>;
using KeyMap = NameMap<KeyRec>;
using LineList = std::list<std::string, PoolAllocator<std::string>>;

// The public position types are iterators of plain containers. They fit the pooled ones, because the standard library's
// iterators do not depend on the allocator or the comparison.
using LinePosition = CfgClass::LinePosition;
using SectionPosition = CfgClass::SectionPosition;
using KeyPosition = CfgClass::KeyPosition;
static_assert(std::is_same_v<LinePosition, LineList::iterator>);
static_assert(std::is_same_v<SectionPosition, SectionMap::iterator>);
static_assert(std::is_same_v<KeyPosition, KeyMap::iterator>);

// With std::hash itself, the standard library compares the names one by one in a table of up to 20.
struct NameHash {
  std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};

// The keys of a section. A loaded section is a block: its lines, joined by line feeds, are one string in the list of
// lines, and its keys are read there. Expand gives it separate lines and a key map, for changes and positions.
struct SectKeys : KeyMap {
  SectKeys(NodePool& pool, LinePosition none) : KeyMap(KeyMap::allocator_type(pool)), block(none) {}
  LinePosition block;  // end() once expanded; before that the map is empty
  TextKeys text;       // of the block
  RankIndex<KeyMap> ranks;
};

struct CfgState {
  CfgState() : lines(LineList::allocator_type(pool)), sections(SectionMap::allocator_type(pool)) {}

  NodePool pool;  // outlives the containers
  LineList lines;
  SectionMap sections;
  RankIndex<SectionMap> sectionRanks;
  std::unordered_map<std::string_view, SectionPosition, NameHash> sectionNames;  // all or none: see FindSection
  std::size_t sectionQuestions = 0;                                              // answered without sectionNames
  SectionPosition recent = sections.end();   // the last one found: callers use one section for a while
  SectionPosition current = sections.end();  // the current section, once found by number
  std::list<std::string> detached;           // values that are in no line
  std::string fileName;
  std::string section;
  SectionPosition parseSection = sections.end();
  KeyPosition parseKey;
  std::string upper;         // the upper-cased name of the present lookup; keeps its memory
  std::size_t textSize = 0;  // of the last load: about the size that a save needs
  int error = CFG_OK;
  int errorLine = 0;
  bool readOnly = false;
  bool modified = false;
  bool cached = false;
  void const* ownTable = nullptr;  // see RememberTable
  bool hasBlocks = false;          // a section may be a block
  bool dropsLines = false;         // the load stopped at a syntax error and the lines after it are not backed up yet
  bool onlyNew = false;            // saves create the file and fail if it exists
  int reason = 0;                  // errno of the last load if it failed to read the file
};

// ---- The index. ----

// The upper-cased name. It is valid until the next call.
std::string_view Upper(CfgState& state, std::string_view name);
// The same name, to store in the index. A long name is moved, not copied.
std::string TakeUpper(CfgState& state);

// Gives the section separate lines and a key map. When memory runs out, it stays a block.
void Expand(CfgState& state, SectRec& section);
// The same for all sections: from a position, a caller can reach every section and line.
void ExpandAll(CfgState& state);

// The section with that name in any case, or the end.
SectionPosition FindSection(CfgState& state, std::string_view name);

// The key with that name in any case. `found` gets the name upper-cased or as in the file. False if it is missing.
bool ReadKey(CfgState& state, SectRec& section, std::string_view name, KeyText* found);
std::size_t KeyCount(CfgState& state, SectRec& section);
// The n-th key in ascending order. False if there are no more than n keys.
bool ReadKeyAt(CfgState& state, SectRec& section, std::size_t n, KeyText* found);
// Its upper-cased name, or "".
std::string KeyNameAt(CfgState& state, SectRec& section, std::size_t n);

// The position of `upper` in `map`, or where it belongs. Names mostly arrive in ascending order, and numbers nearly so:
// first try the end, then the position after `latest`, the last entry added.
template <class Map>
typename Map::iterator LowerBound(Map& map, std::string_view upper, typename Map::iterator latest) {
  NameLess const isLess;
  if (map.empty() || isLess(std::prev(map.end())->first, upper)) return map.end();
  if (latest != map.end() && isLess(latest->first, upper) && !isLess(std::next(latest)->first, upper))
    return std::next(latest);
  return map.lower_bound(upper);
}

// Adds the section unless it exists. `makeLine` gets the upper-cased name and returns the position of the header. It is
// called only if needed. When memory runs out, neither the entry nor the line remains.
template <class MakeLine>
std::pair<SectionPosition, bool> AddSection(CfgState& state, std::string_view name, MakeLine makeLine) {
  std::string_view const upper = Upper(state, name);
  auto const place = LowerBound(state.sections, upper, state.parseSection);
  if (place != state.sections.end() && place->first == upper) return {place, false};
  auto const added = state.sections.try_emplace(place, TakeUpper(state), state, state.lines.end());
  try {
    if (!state.sectionNames.empty()) state.sectionNames.emplace(added->first, added);
    added->second.header = makeLine(added->first);
  } catch (...) {
    state.sectionNames.erase(added->first);
    state.sections.erase(added);
    throw;
  }
  state.sectionRanks.Inserted(added);
  state.parseSection = added;
  state.parseKey = added->second.keys->end();
  return {added, true};
}

struct KeyLine {
  LinePosition line;
  std::string_view value;
};

// The same for a key, after `previous` in writing order. `makeLine` returns a KeyLine.
template <class MakeLine>
std::pair<KeyPosition, bool> AddKey(CfgState& state, SectRec& section, std::string_view key, KeyPosition previous,
                                    MakeLine makeLine) {
  std::string_view const upper = Upper(state, key);
  SectKeys& keys = *section.keys;
  auto const place = LowerBound(keys, upper, section.lastKey);
  if (place != keys.end() && place->first == upper) return {place, false};
  auto const added = keys.emplace_hint(place, TakeUpper(state), KeyRec{{}, state.lines.end(), previous, keys.end()});
  try {
    KeyLine const made = makeLine(added->first);
    added->second.line = made.line;
    added->second.value = made.value;
  } catch (...) {
    keys.erase(added);
    throw;
  }
  keys.ranks.Inserted(added);
  if (previous != keys.end()) {
    KeyPosition& next = previous->second.next;
    if (next != keys.end()) next->second.previous = keys.end();  // at most one key follows another
    next = added;
  }
  section.lastKey = added;
  return {added, true};
}

// Removes the key's line and joins its neighbours in writing order.
void RemoveKey(CfgState& state, SectRec& section, KeyPosition position);

// Removes the lines of the header and of the indexed keys.
void RemoveSection(CfgState& state, SectionPosition position);

// Empties the index, or the lines. An index without lines keeps its values and refers to no line.
void ForgetIndex(CfgState& state);
void ForgetLines(CfgState& state);
// Both, and the file name. Used if a file was loaded only in part, because a subclass refused or memory ran out: a
// later save would write that part.
void ForgetFile(CfgState& state);

// ---- The lines. ----

// Loads a file, each section as a block. CfgClass::ParseLine does the same through virtual hooks.
class BlockLoader {
 public:
  explicit BlockLoader(CfgState& state) : state_(state) {}

  // False, with the error code set, for a syntax error. All lines are parts of one text.
  bool Take(std::string_view line);
  // Call this after the last line.
  void Finish();

 private:
  void Begin(std::string_view line, std::string_view const* section);

  CfgState& state_;
  LinePosition block_;  // for the lines from start_ to end_; Finish stores them
  char const* start_ = nullptr;
  char const* end_ = nullptr;
  SectRec* section_ = nullptr;  // null for the lines before the first section
  bool isContinued_ = false;    // the section already has a block
};

// Appends a header line. The unnamed section gets `[ ]`, since `[]` would not load again.
LinePosition MakeHeader(CfgState& state, std::string_view name);

// Inserts a line directly after the section's last key, or else after its header. A section with neither gets its keys
// at the start.
KeyLine MakeKey(CfgState& state, SectRec const& section, std::string_view key, std::string_view value);

// Changes the key's line to `Key = value`, with the name as in the file.
void Rewrite(CfgState& state, KeyRec& key, std::string_view value);

// The part of an existing line with `value`; if there is none, a copy owned by the state.
std::string_view ValueIn(CfgState& state, LinePosition line, std::string_view value);

// `key = value`.
std::string Joined(std::string_view key, std::string_view value);

}  // namespace zelvane::internal

#endif
