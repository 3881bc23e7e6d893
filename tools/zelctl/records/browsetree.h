// The browse list read whole: who belongs to whom, and what is not right with the rest.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_BROWSETREE_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_BROWSETREE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class CfgClass;

enum class BrowseKind { kGroup, kComputer, kUps };

// What the command line and the answers call it: "group", "computer", "ups".
char const* NameOf(BrowseKind kind);
char const* SectionOf(BrowseKind kind);
// A group or computer hangs on a group, a UPS unit on a computer.
BrowseKind OwnerKind(BrowseKind kind);

struct BrowseEntry {
  BrowseKind kind;
  unsigned long index;  // its position in the list
  std::int32_t id;
  std::string name;     // as long as it is in the file
  std::string address;  // the same; of a UPS unit its own copy
  std::uint32_t number;
  std::int32_t owner;
  std::vector<std::size_t> below;  // places in BrowseTree::entries
};

// An entry as it is printed.
struct BrowseRow {
  BrowseEntry const* entry;
  std::size_t depth;
  std::string reason;  // why it stands apart; "" for those of the tree and those below one that stands apart
};

struct BrowseFault {
  BrowseKind kind;
  std::string key;
  std::string value;
  std::string reason;
};

struct BrowseTree {
  BrowseTree(void* list, std::string const& file);

  // Null when no valid entry has that identifier.
  BrowseEntry const* Find(BrowseKind kind, std::int32_t id) const;
  // Whether the group is `id` itself or somewhere below it.
  bool IsWithin(std::int32_t group, std::int32_t id) const;

  std::vector<BrowseEntry> entries;
  std::vector<BrowseRow> rows;      // the tree, top down
  std::vector<BrowseRow> orphans;   // what hangs on nothing, each with what is below it
  std::vector<BrowseFault> faults;  // what the library skips, or cannot reach

 private:
  void Read(void* list, CfgClass& cfg, BrowseKind kind);
  void Connect();
  void Arrange();
  void Walk(std::size_t top, std::string const& reason, std::vector<BrowseRow>& out, std::vector<bool>& seen) const;

  std::map<std::int32_t, std::size_t> places_[3];  // by kind
};

#endif
