// The configuration engine's memory: the lines of a file, the index over them, and the operations that keep both in
// step. CfgClass adds the order of its steps, the file and the error codes.
#ifndef ZELVANE_CONFIG_CFGSTATE_INTERNAL_H
#define ZELVANE_CONFIG_CFGSTATE_INTERNAL_H

#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "zelvane/config/cfgclass.h"
#include "zelvane/config/cfgline_internal.h"
#include "zelvane/config/nodepool_internal.h"
#include "zelvane/config/rankindex_internal.h"
#include "zelvane/config/textkeys_internal.h"

namespace zelvane::internal {

template <class Record>
using NameMap = std::map<std::string, Record, std::less<>, PoolAllocator<std::pair<std::string const, Record>>>;
using SectionMap = NameMap<SectRec>;
using KeyMap = NameMap<KeyRec>;
using LineList = std::list<std::string, PoolAllocator<std::string>>;

// The public position types name the plain containers; they fit the pooled ones because the standard library makes
// iterators that do not depend on the allocator or the comparison.
using LinePosition = CfgClass::LinePosition;
using SectionPosition = CfgClass::SectionPosition;
using KeyPosition = CfgClass::KeyPosition;
static_assert(std::is_same_v<LinePosition, LineList::iterator>);
static_assert(std::is_same_v<SectionPosition, SectionMap::iterator>);
static_assert(std::is_same_v<KeyPosition, KeyMap::iterator>);

// The keys of a section. A loaded section is one block: all its lines, joined by line feeds, are the string of one node
// of the lines, and its keys are read there. Expand gives it lines and a key map of its own, for changes and positions.
struct SectKeys : KeyMap {
  SectKeys(NodePool& pool, LinePosition none) : KeyMap(KeyMap::allocator_type(pool)), block(none) {}
  LinePosition block;  // the end of the lines once expanded; the map is empty before
  TextKeys text;       // of the block
  RankIndex<KeyMap> ranks;
};

struct CfgState {
  CfgState() : lines(LineList::allocator_type(pool)), sections(SectionMap::allocator_type(pool)) {}

  NodePool pool;  // outlives the containers
  LineList lines;
  SectionMap sections;
  RankIndex<SectionMap> sectionRanks;
  SectionPosition recent = sections.end();   // what was found last: callers stay in a section for a while
  SectionPosition current = sections.end();  // the current section, once found by number
  std::list<std::string> detached;           // values that no line holds
  std::string fileName;
  std::string section;
  SectionPosition parseSection = sections.end();
  KeyPosition parseKey;
  std::string upper;         // the upper-cased name of the present look-up; kept for its memory
  std::size_t textSize = 0;  // of the last load: what a save needs, roughly
  int error = CFG_OK;
  int errorLine = 0;
  bool readOnly = false;
  bool modified = false;
  bool cached = false;
  void const* ownTable = nullptr;  // see RememberTable
  bool usesOwnSteps = false;       // a subclass may have replaced any step
  bool hasBlocks = false;          // some section may be a block
  bool dropsLines = false;         // the load stopped at a syntax error, and the lines after it are not kept aside yet
  bool onlyNew = false;            // saves create the file, and fail where there is one
  int reason = 0;                  // errno of the last load that could not read the file
};

// ---- The index. ----

// The upper-cased name, in the state's memory until the next call.
std::string_view Upper(CfgState& state, std::string_view name);
// The same name for the index, for the last time: a long one takes its memory along instead of being copied.
std::string TakeUpper(CfgState& state);

// Gives the section its lines and its key map. Out of memory, it stays a block.
void Expand(CfgState& state, SectRec& section);
// The same for all: whoever holds a position reaches every section, and every line.
void ExpandAll(CfgState& state);

// The section of that name in any case, or the end.
SectionPosition FindSection(CfgState& state, std::string_view name);

// The key of that name in any case, with its name upper-cased or as it is spelled in the file, or false.
bool ReadKey(CfgState& state, SectRec& section, std::string_view name, KeyText* found);
std::size_t KeyCount(CfgState& state, SectRec& section);
// The n-th key in ascending order; n is below their number.
KeyText ReadKeyAt(CfgState& state, SectRec& section, std::size_t n);

// The same by position, in a section that is no block; the end of the keys for none.
KeyPosition FindKey(CfgState& state, SectRec& section, std::string_view name);

// Where `upper` is or belongs in `map`. Names mostly arrive in ascending order, numbers nearly so: first the end is
// tried, then the place after `latest`, the entry added last.
template <class Map>
typename Map::iterator LowerBound(Map& map, std::string_view upper, typename Map::iterator latest) {
  if (map.empty() || std::prev(map.end())->first < upper) return map.end();
  if (latest != map.end() && latest->first < upper && !(std::next(latest)->first < upper)) return std::next(latest);
  return map.lower_bound(upper);
}

// Enters the section unless it is there. `makeLine` gets the upper-cased name, gives the header's position and is
// called only when it is needed. Out of memory, neither the entry nor the line stays.
template <class MakeLine>
std::pair<SectionPosition, bool> AddSection(CfgState& state, std::string_view name, MakeLine makeLine) {
  std::string_view const upper = Upper(state, name);
  auto const place = LowerBound(state.sections, upper, state.parseSection);
  if (place != state.sections.end() && place->first == upper) return {place, false};
  auto const added =
      state.sections.emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(TakeUpper(state)),
                                  std::forward_as_tuple(state, state.lines.end()));
  try {
    added->second.header = makeLine(added->first);
  } catch (...) {
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

// The same for a key, after `previous` in the order of writing. `makeLine` gives a KeyLine.
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
    if (next != keys.end()) next->second.previous = keys.end();  // a key is followed by one other at most
    next = added;
  }
  section.lastKey = added;
  return {added, true};
}

// The key's line goes, its neighbours in the order of writing are joined.
void RemoveKey(CfgState& state, SectRec& section, KeyPosition position);

// The lines of the header and of the indexed keys go.
void RemoveSection(CfgState& state, SectionPosition position);

// Empties the index, or the lines; an index that outlives the lines keeps its values and points at no line.
void ForgetIndex(CfgState& state);
void ForgetLines(CfgState& state);
// Both, and the file's name: nothing stays of a file that was not taken in whole, by a variant's refusal or for want of
// memory, since a later save would write the part.
void ForgetFile(CfgState& state);

// ---- The lines. ----

// Takes in a file, each section as a block: CfgClass::ParseLine does it in steps, which a subclass may replace.
class BlockLoader {
 public:
  explicit BlockLoader(CfgState& state) : state_(state) {}

  // False, with the error code set, when the line is a syntax error. The lines are parts of one text.
  bool Take(std::string_view line);
  // After the last line.
  void Finish();

 private:
  void Begin(std::string_view line, std::string_view const* section);

  CfgState& state_;
  LinePosition block_;  // of the lines from start_ to end_, which it gets in Finish
  char const* start_ = nullptr;
  char const* end_ = nullptr;
  SectRec* section_ = nullptr;  // null for the lines before the first section
  bool isContinued_ = false;    // the section has had a block before
};

// A new header line at the end; the unnamed section's is `[ ]`, since `[]` would not load again.
LinePosition MakeHeader(CfgState& state, std::string_view name);

// A new line directly behind the section's last key or else its header; a section with neither has its keys in front.
KeyLine MakeKey(CfgState& state, SectRec const& section, std::string_view key, std::string_view value);

// The key's line becomes `Key = value`, with the key as it is spelled there.
void Rewrite(CfgState& state, KeyRec& key, std::string_view value);

// Where `value` stands in a line that is there already; a copy kept by the state where it does not.
std::string_view ValueIn(CfgState& state, LinePosition line, std::string_view value);

// `key = value`.
std::string Joined(std::string_view key, std::string_view value);

}  // namespace zelvane::internal

#endif
