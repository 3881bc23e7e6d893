// The browse list: what is read, what each change writes, stamps and flushes, and what goes with a removed entry.
#include "zelvane/browse/browselist.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/settings.h"
#include "zelvane/core/datetime.h"

namespace {

enum Kind { kGroup, kComputer, kNobreak };
constexpr Kind kKinds[] = {kGroup, kComputer, kNobreak};
char const* const kSections[] = {"[GROUPS]\n", "[COMPUTERS]\n", "[NOBREAKS]\n"};
constexpr std::array kRemove = {RemoveBrwsGroup, RemoveBrwsComputer, RemoveBrwsNobreak};
constexpr std::array kRemoveOf = {RemoveBrwsGroupByGroup, RemoveBrwsComputerByGroup, RemoveBrwsNobreakByComputer};
constexpr std::array kClear = {ClearBrwsGroupsList, ClearBrwsComputersList, ClearBrwsNobreaksList};
constexpr std::array kCount = {GetBrwsGroupsCount, GetBrwsComputersCount, GetBrwsNobreaksCount};

// An entry as a record of each kind; texts of an array's width leave it without NUL.
struct Records {
  Records(int32_t id, std::string const& name, int32_t owner, std::string const& address = "2.2.2.2") {
    group.id = computer.id = nobreak.id = id;
    for (char* const field : {group.name, computer.name, nobreak.name}) name.copy(field, sizeof group.name);
    address.copy(computer.address, sizeof computer.address);
    group.parent = computer.group = nobreak.computer = owner;
  }
  BrwsGroupRec group = {};
  BrwsComputerRec computer = {};
  BrwsNobreakRec nobreak = {0, "", 3000000000, 0};
};

// The record at a position as text, "" when there is none.
std::string Read(void* list, Kind kind, unsigned long index) {
  Records r(77, std::string(256, 'x'), 77, std::string(16, 'x'));
  std::ostringstream read;
  if (kind == kGroup && GetBrwsGroupByIndex(list, index, &r.group) == 1)
    read << r.group.id << ';' << r.group.name << ';' << r.group.parent;
  if (kind == kComputer && GetBrwsComputerByIndex(list, index, &r.computer) == 1)
    read << r.computer.id << ';' << r.computer.name << ';' << r.computer.address << ';' << r.computer.group;
  if (kind == kNobreak && GetBrwsNobreakByIndex(list, index, &r.nobreak) == 1)
    read << r.nobreak.id << ';' << r.nobreak.name << ';' << r.nobreak.number << ';' << r.nobreak.computer;
  return read.str();
}

// One list in a scratch folder.
class BrowseList : public testing::Test {
 protected:
  ~BrowseList() override { CloseBrwsList(list_); }
  void Open(std::string const& bytes) {
    CloseBrwsList(list_);
    list_ = OpenBrwsList(folder_.Write("list.cfg", bytes).c_str());
  }
  bool IsNow(long stamp) const { return stamp >= began_ && stamp <= GetDateTime(); }
  // The whole file, with "now" for a stamp made since the test began.
  std::string File() const {
    std::string bytes = folder_.Read("list.cfg");
    std::size_t const at = bytes.find("DATETIME = ");
    if (at == std::string::npos || !IsNow(std::stol(bytes.substr(at + 11)))) return bytes;
    return bytes.replace(at + 11, bytes.find('\n', at) - at - 11, "now");
  }
  std::string Saved() {
    EXPECT_EQ(CloseBrwsList(std::exchange(list_, nullptr)), 1);
    return File();
  }
  // The changes in one form: (a)dd, (e)dit, (r)emove, remove those (o)f an owner, (c)lear, (s)tamp.
  int Do(char change, Kind kind, Records const& r, bool flush, bool plusOne = true, unsigned long* id = nullptr) {
    if (change == 's') return UpdateBrwsFileDate(list_, flush);
    if (change == 'c') return kClear[kind](list_, flush);
    if (change == 'r' || change == 'o') return (change == 'r' ? kRemove : kRemoveOf)[kind](list_, r.group.id, flush);
    bool const add = change == 'a';
    if (kind == kGroup)
      return add ? AddBrwsGroup(list_, &r.group, plusOne, id, flush) : EditBrwsGroup(list_, &r.group, flush);
    if (kind == kNobreak)
      return add ? AddBrwsNobreak(list_, &r.nobreak, plusOne, id, flush) : EditBrwsNobreak(list_, &r.nobreak, flush);
    return add ? AddBrwsComputer(list_, &r.computer, plusOne, id, flush) : EditBrwsComputer(list_, &r.computer, flush);
  }

  test::Scratch folder_;
  void* list_ = nullptr;
  long const began_ = GetDateTime();
};

TEST_F(BrowseList, WhichEntriesAreValid) {
  // Lines, and the record of each as it is read.
  char const* const cases[] = {
      ("0 = g;-1 > 0;g;-1\n7 = \xE9 = x ;3 > 7;\xE9 = x ;3\n7 = g;3; > 7;g;3\n7 = g;3;; > \n7 = g; > \n7 = g > \n"
       "7 = ;3 > \n7 = > \n7 = g;x > 7;g;-1\n7 = g; 3 > 7;g;-1\n7 = a;2147483647 > 7;a;2147483647\n"
       "7 = g;2147483648 > 7;g;-1\n007 = g;+3 > 7;g;3\n-5 = g;3 > -5;g;3\n+ = g;3 > -1;g;3\n"
       "2147483648 = g;3 > -1;g;3\nx = g;3 > \n"),
      "3 = PC;10.0.0.1;0 > 3;PC;10.0.0.1;0\n3 = PC1;;3 > \n3 = ;10.0.0.1;3 > \n3 = PC;10.0.0.1; > \n3 = PC;1;0;x > \n",
      ("3 = UPS;;2;5 > 3;UPS;2;5\n3 = UPS;;;5 > \n3 = ;;2;5 > \n3 = UPS;;2; > \n3 = UPS;;2;5;x > \n"
       "3 = U;1;2147483647;-1 > 3;U;2147483647;-1\n3 = U;;2147483648;y > 3;U;4294967295;-1\n")};
  for (Kind const kind : kKinds) {
    std::istringstream rows(cases[kind]);
    for (std::string row; std::getline(rows, row);) {
      Open(kSections[kind] + row.substr(0, row.find(" > ")) + "\n");
      EXPECT_EQ(Read(list_, kind, 0), row.substr(row.find(" > ") + 3)) << row;
      EXPECT_EQ(kCount[kind](list_), Read(list_, kind, 1).empty() ? 1u : 0u) << row;
    }
  }
}

TEST_F(BrowseList, WritesWhatItIsGiven) {
  std::string const n(256, 'n'), wide = n + ";1234567890123456;", rest = "03 = c;;1;5\n4 = d;;1;-1\n5 = e;;1\n";
  list_ = OpenBrwsList(folder_.Path("list.cfg").c_str());
  for (Kind const kind : kKinds) EXPECT_EQ(Do('a', kind, {99, n, 1, wide.substr(257, 16)}, false), 1);
  // A computer without an address does not keep its identifier.
  for (char const* const address : {"", "2.2.2.2"}) EXPECT_EQ(Do('a', kComputer, {99, "\xE9", 7, address}, false), 1);
  EXPECT_EQ(Do('a', kNobreak, {99, "x", 3}, false), 1);
  EXPECT_EQ(folder_.List(), std::vector<std::string>{}) << "before the first flush";
  EXPECT_EQ(Read(list_, kComputer, 0), "1;" + n.substr(1) + ";123456789012345;1");
  EXPECT_EQ(Saved(), "[GROUPS]\n1 = " + n + ";-1\n[DATE]\nDATETIME = now\n[COMPUTERS]\n1 = " + wide +
                         "1\n2 = \xE9;2.2.2.2;-1\n[NOBREAKS]\n0 = " + wide +
                         "3000000000;1\n1 = x;127.0.0.1;3000000000;-1");
  Open("; \xE9\r\n[COMPUTERS]\n5 = broken\n-1 = odd;1.1.1.1;-1\n[NOBREAKS]\n0 = a;;007;5\n1=" + n + "n;;x;5\n" + rest +
       "6 = f;;1;-1\n[GROUPS]\n2 = x;-1\n");
  for (int32_t const group : {8, 9})  // it does not go with the group where it was before
    EXPECT_EQ(Do('e', kComputer, {5, "pc", group}, false) + Do('o', kComputer, {17 - group, "", 0}, false), 2);
  EXPECT_EQ(Do('e', kGroup, {2, "y", 2}, false) + Do('e', kComputer, {-1, "pc", 9}, false), 2);
  EXPECT_EQ(Do('e', kNobreak, {6, "f", 5}, false), 1);
  EXPECT_EQ(Saved(),
            "; \xE9\r\n[COMPUTERS]\n5 = pc;2.2.2.2;9\n-1 = pc;2.2.2.2;9\n[NOBREAKS]\n0 = a;2.2.2.2;007;5\n1 = " + n +
                "n;2.2.2.2;x;5\n" + rest + "6 = f;2.2.2.2;3000000000;5\n[GROUPS]\n2 = y;2\n\n[DATE]\nDATETIME = now");
}

char const kSmall[] =
    "[GROUPS]\n0=all ; -1\n1 = top;-1\n[COMPUTERS]\n-2 = far;1;5\n0 = pc;10.0.0.1;1\n"
    "[NOBREAKS]\n-1 = odd;;2;0\n0 = ups;10.0.0.1;5;0\n1 = free;;6;-1\n[DATE]\nDATETIME = 1\n";

TEST_F(BrowseList, WhatEachChangeStampsAndFlushes) {
  // The change, its kind, the number of the entry and its owner; how many entries are left, whether it stamps (s) and
  // flushes unasked (f).
  for (std::string const c :
       {"sg0 7s",  "ag1 8s",  "ac1 8s",  "an0 8s", "an4 8",   "eg1 7s", "ec0 7s", "en0 7s",   "rg1 4sf",
        "rg9 7sf", "rc0 5sf", "rc9 7sf", "rn0 6s", "rn-1 6s", "rn1 6",  "rn9 7",  "og-1 3sf", "og1 7s",
        "oc1 5sf", "oc0 7s",  "on0 6s",  "on9 7s", "on-1 6",  "cg0 5s", "cc0 5s", "cn0 4s"})
    for (bool const flush : {false, true}) {
      int const number = std::stoi(c.substr(2));
      Open(kSmall);
      EXPECT_EQ(Do(c[0], Kind(std::string("gcn").find(c[1])), {number, "new", number}, flush), 1) << c;
      std::string const file = File();
      EXPECT_EQ(IsNow(GetBrwsFileDate(list_)), c.find('s', 3) != std::string::npos) << c;
      EXPECT_EQ(kCount[0](list_) + kCount[1](list_) + kCount[2](list_), std::stoul(c.substr(c.find(' ')))) << c;
      EXPECT_EQ(file, flush || c.back() == 'f' ? Saved() : kSmall) << c << flush;
    }
}

TEST_F(BrowseList, WhatIsRefusedChangesNothing) {
  Records const r(7, "x", 0);
  EXPECT_EQ(CloseBrwsList(nullptr) + GetBrwsFileDate(nullptr), 0);
  for (Kind const kind : kKinds) {
    for (char const change : {'a', 'e', 'r', 'o', 'c', 's'}) EXPECT_EQ(Do(change, kind, r, true), 0) << change << kind;
    EXPECT_EQ(Read(nullptr, kind, kCount[kind](nullptr)), "");
  }
  Open(kSmall);
  for (Kind const kind : kKinds) {
    EXPECT_EQ(Do('e', kind, r, true), 0) << "no such key";
    for (std::string const bad : {"", ";", "[", "x]y", "x\n", "\ry"})
      for (char const change : {'a', 'e'}) {
        EXPECT_EQ(Do(change, kind, {0, bad, 0}, true), 0) << change << kind << bad;
        if (kind != kComputer || (bad.empty() && change == 'a')) continue;
        EXPECT_EQ(Do(change, kind, {0, "x", 0, bad}, true), 0) << change << bad;
      }
  }
  for (int32_t const computer : {7, -2}) EXPECT_EQ(Do('e', kNobreak, {0, "x", computer}, true), 0) << computer;
  EXPECT_EQ(AddBrwsGroup(list_, nullptr, true, nullptr, true) + EditBrwsGroup(list_, nullptr, true), 0);
  EXPECT_EQ(AddBrwsComputer(list_, nullptr, true, nullptr, true) + EditBrwsComputer(list_, nullptr, true), 0);
  EXPECT_EQ(AddBrwsNobreak(list_, nullptr, true, nullptr, true) + EditBrwsNobreak(list_, nullptr, true), 0);
  EXPECT_EQ(GetBrwsGroupByIndex(list_, 0, nullptr) + GetBrwsComputerByIndex(list_, 0, nullptr), 0);
  EXPECT_EQ(GetBrwsNobreakByIndex(list_, 0, nullptr), 0);
  EXPECT_EQ(Saved(), kSmall);
}

TEST_F(BrowseList, AFailedFlushShowsInTheResultAndKeepsTheChange) {
  test::Installation const root;
  std::filesystem::remove(root.Root());
  list_ = OpenBrwsList(nullptr);
  Records const r(9, "LAN", -1);
  for (char const change : {'r', 'o'}) EXPECT_EQ(Do(change, kNobreak, {-1, "", 0}, true), 1) << "nothing to write";
  for (Kind const kind : kKinds)
    for (char const change : {'s', 'a', 'c', 'o', 'r', 'a'}) EXPECT_EQ(Do(change, kind, r, true), 0) << change << kind;
  std::filesystem::create_directories(root.Root());
  EXPECT_EQ(CloseBrwsList(list_), 1);
  list_ = OpenBrwsList("");
  EXPECT_EQ(Read(list_, kComputer, 0), "1;LAN;2.2.2.2;-1") << "the same default file";
  std::filesystem::create_directories(folder_.Path("list.cfg/x"));
  CloseBrwsList(std::exchange(list_, OpenBrwsList(folder_.Path("list.cfg").c_str())));
  for (char const change : {'s', 'a', 'r', 'o', 'c'}) EXPECT_EQ(Do(change, kGroup, r, false), 0) << "unreadable";
}

TEST_F(BrowseList, ACircleDeeperThanAnyStack) {
  constexpr int kDepth = 100000;
  std::string bytes = "[GROUPS]\n";
  for (int i = kDepth; i > 0; i--) bytes += std::to_string(i % kDepth) + " = g;" + std::to_string(i - 1) + "\n";
  Open(bytes + "[COMPUTERS]\n5 = last;1.1.1.1;" + std::to_string(kDepth - 1) + "\n6 = other;1.1.1.1;-1\n");
  EXPECT_EQ(Do('r', kGroup, {0, "", 0}, false), 1);
  EXPECT_EQ(File(), "[GROUPS]\n[COMPUTERS]\n6 = other;1.1.1.1;-1\n\n[DATE]\nDATETIME = now");
}

// A naive list, which asks every entry again each time; its file has others besides, which no change reaches.
struct Model {
  std::map<int64_t, int64_t> owners[3];  // by identifier

  void Remove(Kind kind, int64_t id) {
    owners[kind].erase(id);
    if (kind == kGroup) RemoveOf(kGroup, id);
    if (kind != kNobreak) RemoveOf(kind == kGroup ? kComputer : kNobreak, id);
  }
  void RemoveOf(Kind kind, int64_t of) {
    for (auto const [id, owner] : std::map(owners[kind]))
      if (owner == of && owners[kind].count(id) > 0) Remove(kind, id);
  }
  int64_t Add(Kind kind, int64_t owner, bool plusOne) {
    std::set<int64_t> taken = {0, 7, 12};
    for (auto const& entry : owners[kind]) taken.insert(entry.first);
    int64_t id = plusOne && *taken.rbegin() < 2147483647 ? *taken.rbegin() + 1 : 0;
    while (taken.count(id) > 0) id++;
    owners[kind][id] = owners[kind == kNobreak ? kComputer : kGroup].count(owner) > 0 ? owner : -1;
    return id;
  }
  std::string Text() const {
    std::string text = "[DATE]\nDATETIME = now\n";
    for (Kind const kind : kKinds) {
      std::string const front = std::array{" = g;", " = c;127.0.0.1;", " = n;127.0.0.1;3000000000;"}[kind];
      text += kSections[kind] + ("99999" + front) + "3;;\n";
      for (std::string const key : {"00", "007", "+12", "-1", "4294967296"}) text += key + front + "3\n";
      for (auto const [id, owner] : owners[kind]) text += std::to_string(id) + front + std::to_string(owner) + "\n";
    }
    return text;
  }
};

TEST_F(BrowseList, SixHundredRemovalsBesideAModel) {
  std::mt19937 random(20260307);
  auto const pick = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
  auto const lines = [feed = std::regex("\n")](std::string const& text) {
    return std::multiset<std::string>(std::sregex_token_iterator(text.begin(), text.end(), feed, -1), {});
  };
  Model model;
  for (int step = 0; step < 600; step++) {
    if (step % 20 == 0) {
      for (Kind const kind : kKinds)
        for (int i = 0; i < 40; i++) model.owners[kind][i == 0 ? 2147483647 : pick(1, 50)] = pick(-1, 30);
      Open(model.Text());
    }
    Kind const kind = kKinds[pick(0, 2)];
    bool const of = pick(0, 1) == 0;
    int const id = pick(0, 9) > 0 ? pick(1, 50) : of ? -1 : 2147483647;
    of ? model.RemoveOf(kind, id) : model.Remove(kind, id);
    ASSERT_EQ(Do(of ? 'o' : 'r', kind, {id, "", 0}, false), 1) << step;
    for (Kind const added : kKinds) {
      int const owner = pick(-1, 30), plusOne = pick(0, 1);
      int64_t const expected = model.Add(added, owner, plusOne == 1);
      unsigned long got = 0;
      Records const r(0, std::string(1, "gcn"[added]), owner, "127.0.0.1");
      ASSERT_EQ(Do('a', added, r, step % 10 == 9, plusOne == 1, &got), 1) << step;
      ASSERT_EQ(got, static_cast<unsigned long>(expected)) << step;
    }
    if (step % 10 < 9) continue;
    ASSERT_EQ(lines(File()), lines(model.Text())) << step;
  }
}

}  // namespace
