// The browse list: what is read, what each change writes, stamps and flushes, and which entries a removal includes.
#include "zelvane/browse/browselist.h"

#include "support/settings.h"
#include "support/test.h"
#include "zelvane/core/datetime.h"

namespace {

enum Kind { kGroup, kComputer, kNobreak };
constexpr Kind kKinds[] = {kGroup, kComputer, kNobreak};
Kind KindOf(std::string const& word) { return Kind(std::string("gcn").find(word[0])); }
char const* const kSections[] = {"[GROUPS]\n", "[COMPUTERS]\n", "[NOBREAKS]\n"};
constexpr std::array kRemove = {RemoveBrwsGroup, RemoveBrwsComputer, RemoveBrwsNobreak};
constexpr std::array kRemoveOf = {RemoveBrwsGroupByGroup, RemoveBrwsComputerByGroup, RemoveBrwsNobreakByComputer};
constexpr std::array kClear = {ClearBrwsGroupsList, ClearBrwsComputersList, ClearBrwsNobreaksList};
constexpr std::array kCount = {GetBrwsGroupsCount, GetBrwsComputersCount, GetBrwsNobreaksCount};

// An entry as a record of each kind. A text as long as its array gets no NUL.
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

// The record at a position as text; "" if there is none.
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

// A list in a scratch directory.
class BrowseList : public testing::Test {
 protected:
  ~BrowseList() override { CloseBrwsList(list_); }
  void Open(std::string const& bytes) {
    CloseBrwsList(list_);
    list_ = OpenBrwsList(folder_.Write("list.cfg", bytes).c_str());
  }
  bool IsNow(long stamp) const { return stamp >= began_ && stamp <= GetDateTime(); }
  // The whole file, with "now" for a time stamp set since the test began.
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
  // The changes: (a)dd, (e)dit, (r)emove, remove those (o)f an owner, (c)lear, (s)tamp.
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
  for (test::Case const& c : test::Table("browse/browselist.txt", "entries")) {
    Kind const kind = KindOf(c[0]);
    Open(kSections[kind] + c[1] + "\n");
    EXPECT_EQ(Read(list_, kind, 0), c[2]) << c;
    EXPECT_EACH((kCount[kind](list_), Read(list_, kind, 1)), 1, "") << c;
  }
}

TEST_F(BrowseList, WritesWhatItIsGiven) {
  std::string const n(256, 'n'), wide = n + ";1234567890123456;", rest = "03 = c;;1;5\n4 = d;;1;-1\n5 = e;;1\n";
  list_ = OpenBrwsList(folder_.Path("list.cfg").c_str());
  for (Kind const kind : kKinds) EXPECT_EQ(Do('a', kind, {99, n, 1, wide.substr(257, 16)}, false), 1);
  // A computer without an address does not keep its identifier.
  for (char const* const address : {"", "2.2.2.2"}) EXPECT_EQ(Do('a', kComputer, {99, "\xE9", 7, address}, false), 1);
  EXPECT_EQ(Do('a', kNobreak, {99, "x", 3}, false), 1);
  EXPECT_EQ(folder_.List(), test::Names{}) << "before the first flush";
  EXPECT_EQ(Read(list_, kComputer, 0), "1;" + n.substr(1) + ";123456789012345;1");
  EXPECT_EQ(Saved(), "[GROUPS]\n1 = " + n + ";-1\n[DATE]\nDATETIME = now\n[COMPUTERS]\n1 = " + wide +
                         "1\n2 = \xE9;2.2.2.2;-1\n[NOBREAKS]\n0 = " + wide +
                         "3000000000;1\n1 = x;127.0.0.1;3000000000;-1");
  Open("; \xE9\r\n[COMPUTERS]\n5 = broken\n-1 = odd;1.1.1.1;-1\n[NOBREAKS]\n0 = a;;007;+5\n1=" + n + "n;;x;5\n" + rest +
       "6 = f;;1;-1\n[GROUPS]\n2 = x;-1\n");
  for (int32_t const group : {8, 9})  // it moved, so removing its old group keeps it
    EXPECT_EACH((Do('e', kComputer, {5, "pc", group}, false), Do('o', kComputer, {17 - group, "", 0}, false)), 1);
  EXPECT_EACH((Do('e', kGroup, {2, "y", 2}, false), Do('e', kComputer, {-1, "pc", 9}, false)), 1);
  EXPECT_EQ(Do('e', kNobreak, {6, "f", 5}, false), 1);
  EXPECT_EQ(Saved(),
            "; \xE9\r\n[COMPUTERS]\n5 = pc;2.2.2.2;9\n-1 = pc;2.2.2.2;9\n[NOBREAKS]\n0 = a;2.2.2.2;007;5\n1 = " + n +
                "n;2.2.2.2;x;5\n" + rest + "6 = f;2.2.2.2;3000000000;5\n[GROUPS]\n2 = y;2\n\n[DATE]\nDATETIME = now");
}

char const kSmall[] =
    "[GROUPS]\n0=all ; -1\n1 = top;-1\n[COMPUTERS]\n-2 = far;1;5\n0 = pc;10.0.0.1;1\n"
    "[NOBREAKS]\n-1 = odd;;2;0\n0 = ups;10.0.0.1;5;0\n1 = free;;6;-1\n[DATE]\nDATETIME = 1\n";

TEST_F(BrowseList, WhatEachChangeStampsAndFlushes) {
  for (test::Case const& c : test::Table("browse/browselist.txt", "changes"))
    for (bool const flush : {false, true}) {
      std::istringstream in(c[0]);
      std::string change, kind;
      int number = 0;
      in >> change >> kind >> number;
      Open(kSmall);
      EXPECT_EQ(Do(change[0], KindOf(kind), {number, "new", number}, flush), 1) << c;
      std::string const file = File();
      EXPECT_EQ(IsNow(GetBrwsFileDate(list_)), c[2].find("stamps") == 0) << c;
      EXPECT_EQ(kCount[0](list_) + kCount[1](list_) + kCount[2](list_), c.UInt(1)) << c;
      EXPECT_EQ(file, flush || c[2] == "stamps flushes" ? Saved() : kSmall) << c << flush;
    }
}

TEST_F(BrowseList, WhatIsRefusedChangesNothing) {
  Open(kSmall);
  for (Kind const kind : kKinds) {
    EXPECT_EQ(Do('e', kind, {7, "x", 0}, true), 0) << "no such key";
    for (std::string const bad : {"", " \t", ";", "[", "x]y", "x\n", "\ry"})
      for (char const change : {'a', 'e'}) {
        EXPECT_EQ(Do(change, kind, {0, bad, 0}, true), 0) << change << kind << bad;
        if (kind != kComputer || (bad.empty() && change == 'a')) continue;
        EXPECT_EQ(Do(change, kind, {0, "x", 0, bad}, true), 0) << change << bad;
      }
  }
  for (int32_t const computer : {7, -2}) EXPECT_EQ(Do('e', kNobreak, {0, "x", computer}, true), 0) << computer;
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
  void* const lost = OpenBrwsList(nullptr);
  EXPECT_EACH((UpdateBrwsFileDate(lost, false), CloseBrwsList(lost)), 1, 0);
  std::filesystem::create_directories(root.Root());
  EXPECT_EQ(CloseBrwsList(list_), 1);
  list_ = OpenBrwsList("");
  EXPECT_EQ(Read(list_, kComputer, 0), "1;LAN;2.2.2.2;-1") << "the same default file";
  EXPECT_TRUE(root.Exists("root/zelbrws.cfg"));
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

// A naive list that searches all entries every time. The file also has other entries, which no change affects.
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
  auto const lines = [](std::string const& text) {
    std::multiset<std::string> all;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) all.insert(line);
    return all;
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
