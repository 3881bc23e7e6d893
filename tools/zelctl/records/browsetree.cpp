#include "records/browsetree.h"

#include <algorithm>
#include <tuple>

#include "zelvane/browse/browselist.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

constexpr BrowseKind kKinds[] = {BrowseKind::kGroup, BrowseKind::kComputer, BrowseKind::kUps};

std::size_t Place(BrowseKind kind) { return static_cast<std::size_t>(kind); }

// Reads the numbers of a valid entry, not its texts, which can be longer in the file than in a record.
bool ReadEntry(void* list, BrowseKind kind, unsigned long index, BrowseEntry& entry) {
  BrwsGroupRec group;
  BrwsComputerRec computer;
  BrwsNobreakRec ups;
  if (kind == BrowseKind::kGroup && GetBrwsGroupByIndex(list, index, &group) != 0)
    entry = {kind, index, group.id, "", "", 0, group.parent, {}};
  else if (kind == BrowseKind::kComputer && GetBrwsComputerByIndex(list, index, &computer) != 0)
    entry = {kind, index, computer.id, "", "", 0, computer.group, {}};
  else if (kind == BrowseKind::kUps && GetBrwsNobreakByIndex(list, index, &ups) != 0)
    entry = {kind, index, ups.id, "", "", ups.number, ups.computer, {}};
  else
    return false;
  return true;
}

// Why the library rejects the entry.
std::string InvalidReason(BrowseKind kind, std::string const& key) {
  if (!StrIsInt(key)) return "key is not a number";
  static char const* const kShapes[] = {"NAME;PARENT", "NAME;ADDRESS;GROUP", "NAME;ADDRESS;NUMBER;COMPUTER"};
  return std::string("expected ") + kShapes[Place(kind)] + " with no empty field";
}

// Why the library reads the entry but cannot find it again; "" if it can.
std::string UnreachableReason(std::int32_t id, std::string const& key) {
  if (id < 0) return "key is not an identifier (0 to 2147483647)";
  return key == IntToStr(id) ? ""
                             : "key should be \"" + IntToStr(id) + "\": the programs never change or remove this entry";
}

}  // namespace

char const* NameOf(BrowseKind kind) {
  static char const* const kNames[] = {"group", "computer", "ups"};
  return kNames[Place(kind)];
}

char const* SectionOf(BrowseKind kind) {
  static char const* const kSections[] = {"GROUPS", "COMPUTERS", "NOBREAKS"};
  return kSections[Place(kind)];
}

BrowseKind OwnerKind(BrowseKind kind) { return kind == BrowseKind::kUps ? BrowseKind::kComputer : BrowseKind::kGroup; }

BrowseTree::BrowseTree(void* list, std::string const& file) {
  CfgClass cfg;
  if (cfg.OpenReadOnly(file))
    for (BrowseKind const kind : kKinds) Read(list, cfg, kind);
  Connect();
  Arrange();
}

// Reads the file in addition to the list. The list does not return keys, addresses of UPS units or skipped entries.
void BrowseTree::Read(void* list, CfgClass& cfg, BrowseKind kind) {
  unsigned long const count = cfg.GetKeyCount(SectionOf(kind));
  for (unsigned long i = 0; i < count; i++) {
    std::string const key = cfg.GetKeyName(SectionOf(kind), i);
    std::string const value = cfg.ReadStr(SectionOf(kind), key, "");
    BrowseEntry entry;
    bool const valid = ReadEntry(list, kind, i, entry);
    std::string const reason = valid ? UnreachableReason(entry.id, key) : InvalidReason(kind, key);
    if (!reason.empty()) {
      faults.push_back({kind, key, value, reason});
      continue;
    }
    std::vector<std::string> fields;
    Tokenize(fields, value, ';');
    entry.name = fields[0];
    if (kind != BrowseKind::kGroup) entry.address = fields[1];
    places_[Place(kind)].emplace(entry.id, entries.size());
    entries.push_back(std::move(entry));
  }
}

void BrowseTree::Connect() {
  auto const order = [this](std::size_t place) { return std::tuple(entries[place].kind, entries[place].id); };
  for (std::size_t i = 0; i < entries.size(); i++) {
    auto const& owners = places_[Place(OwnerKind(entries[i].kind))];
    auto const owner = owners.find(entries[i].owner);
    if (owner != owners.end()) entries[owner->second].below.push_back(i);
  }
  for (BrowseEntry& entry : entries)
    std::sort(entry.below.begin(), entry.below.end(),
              [&](std::size_t a, std::size_t b) { return order(a) < order(b); });
}

void BrowseTree::Arrange() {
  std::vector<bool> seen(entries.size());
  // First entries that have no owner, then those whose owner does not exist, then cycles.
  for (auto const& places : places_)
    for (auto const& [id, place] : places)
      if (entries[place].owner == -1) Walk(place, "", rows, seen);
  for (auto const& places : places_)
    for (auto const& [id, place] : places) {
      BrowseEntry const& entry = entries[place];
      BrowseKind const kind = OwnerKind(entry.kind);
      if (!seen[place] && Find(kind, entry.owner) == nullptr)
        Walk(place, std::string(NameOf(kind)) + " " + std::to_string(entry.owner) + " does not exist", orphans, seen);
    }
  for (auto const& places : places_)
    for (auto const& [id, place] : places)
      if (!seen[place]) Walk(place, "its groups form a cycle", orphans, seen);
}

// Chains can be deeper than the stack, so this uses a list of open entries instead of recursion.
void BrowseTree::Walk(std::size_t top, std::string const& reason, std::vector<BrowseRow>& out,
                      std::vector<bool>& seen) const {
  std::vector<std::pair<std::size_t, std::size_t>> open = {{top, 0}};  // place, depth
  while (!open.empty()) {
    auto const [place, depth] = open.back();
    open.pop_back();
    if (seen[place]) continue;
    seen[place] = true;
    out.push_back({&entries[place], depth, depth == 0 ? reason : ""});
    auto const& below = entries[place].below;
    for (auto child = below.rbegin(); child != below.rend(); ++child) open.emplace_back(*child, depth + 1);
  }
}

BrowseEntry const* BrowseTree::Find(BrowseKind kind, std::int32_t id) const {
  auto const& places = places_[Place(kind)];
  auto const found = places.find(id);
  return found == places.end() ? nullptr : &entries[found->second];
}

bool BrowseTree::IsWithin(std::int32_t group, std::int32_t id) const {
  // At most one step for each group, so that a cycle above ends the search.
  for (std::size_t i = 0; i <= places_[0].size() && group != id; i++) {
    BrowseEntry const* const entry = Find(BrowseKind::kGroup, group);
    if (entry == nullptr) return false;
    group = entry->owner;
  }
  return group == id;
}
