// The complete browse list: the tree of owners, the orphans and the invalid entries.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_BROWSETREE_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_BROWSETREE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class CfgClass;

enum class BrowseKind { kGroup, kComputer, kUps };

// The name in commands and output: "group", "computer", "ups".
char const* NameOf(BrowseKind kind);
char const* SectionOf(BrowseKind kind);
// A group or computer belongs to a group, a UPS unit to a computer.
BrowseKind OwnerKind(BrowseKind kind);

struct BrowseEntry {
  BrowseKind kind;
  unsigned long index;  // position in the list
  std::int32_t id;
  std::string name;     // not cut to the length of a record
  std::string address;  // likewise; a UPS unit has its own copy
  std::uint32_t number;
  std::int32_t owner;
  std::vector<std::size_t> below;  // positions in BrowseTree::entries
};

// An entry for output.
struct BrowseRow {
  BrowseEntry const* entry;
  std::size_t depth;
  std::string reason;  // why it is an orphan; "" in the tree, and for entries below an orphan
};

struct BrowseFault {
  BrowseKind kind;
  std::string key;
  std::string value;
  std::string reason;
};

struct BrowseTree {
  BrowseTree(void* list, std::string const& file);

  // Null if no valid entry has that identifier.
  BrowseEntry const* Find(BrowseKind kind, std::int32_t id) const;
  // Whether the group is `id` or somewhere below it.
  bool IsWithin(std::int32_t group, std::int32_t id) const;

  std::vector<BrowseEntry> entries;
  std::vector<BrowseRow> rows;  // the tree, top down
  std::vector<BrowseRow>
      orphans;  // entries without an owner that exists, or in a cycle, each followed by the entries below it
  std::vector<BrowseFault> faults;  // entries that the library skips or cannot find

 private:
  void Read(void* list, CfgClass& cfg, BrowseKind kind);
  void Connect();
  void Arrange();
  void Walk(std::size_t top, std::string const& reason, std::vector<BrowseRow>& out, std::vector<bool>& seen) const;

  std::map<std::int32_t, std::size_t> places_[3];  // by kind
};

#endif
