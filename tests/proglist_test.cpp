#include "zelvane/logs/proglist.h"

#include <gtest/gtest.h>

#include <climits>
#include <ctime>
#include <filesystem>
#include <random>
#include <vector>

#include "support/child.h"
#include "support/scratch.h"
#include "zelvane/core/datetime.h"

namespace {
std::time_t g_clock = 0;  // what the library's clock shows; 0: the real time
}

extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* out) noexcept {
  timespec real;
  clock_gettime(CLOCK_REALTIME, &real);
  std::time_t const now = g_clock != 0 ? g_clock : real.tv_sec;
  if (out != nullptr) *out = now;
  return now;
}

namespace {

using test::Scratch;
namespace fs = std::filesystem;

constexpr std::int32_t kDay = 86400;

std::string Bytes(std::vector<std::int32_t> const& entries) {
  std::string bytes;
  for (std::int32_t entry : entries)
    for (int i = 0; i < 4; i++) bytes += static_cast<char>(static_cast<std::uint32_t>(entry) >> (8 * i));
  return bytes;
}

// At noon of a day in 2026, by a clock that stands still until a test moves it.
class Schedule : public testing::Test {
 protected:
  Schedule() {
    g_clock = 1772884800;
    now = static_cast<std::int32_t>(GetDateTime());
  }
  ~Schedule() override { g_clock = 0; }
  void Pass(int seconds) {
    g_clock += seconds;
    now += seconds;
  }

  // The entries as they stand, without a refresh.
  static std::vector<std::int32_t> Entries(void* list) {
    std::vector<std::int32_t> entries;
    reg_proglist entry;
    while (GetProgListRegByIndex(list, static_cast<long>(entries.size()), &entry) == 1)
      entries.push_back(entry.dateTime);
    return entries;
  }
  static int Add(void* list, std::int32_t when) {
    reg_proglist const entry = {when};
    return AddProgListReg(list, &entry);
  }
  static int Remove(void* list, std::int32_t when) {
    reg_proglist const entry = {when};
    return RemProgListReg(list, &entry);
  }

  Scratch scratch;
  std::string const path = scratch.Path("list");
  std::int32_t now;
};

TEST_F(Schedule, IsSavedSortedAndWithoutThePast) {
  void* list = OpenProgList(path.c_str());
  for (std::int32_t when : {now + kDay, now - 1, now + 60, now, now + kDay, -7, INT32_MAX, now + 1})
    EXPECT_EQ(Add(list, when), 1);
  EXPECT_FALSE(scratch.Exists("list")) << "nothing is written before the list is closed";
  EXPECT_EQ(Entries(list).size(), 8u);
  EXPECT_EQ(GetProgListRegCount(list), 6u);
  std::vector<std::int32_t> const sorted = {now, now + 1, now + 60, now + kDay, now + kDay, INT32_MAX};
  EXPECT_EQ(Entries(list), sorted);
  EXPECT_EQ(CloseProgList(list), 1);
  EXPECT_EQ(test::ReadFile(path), Bytes(sorted));
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"list"});

  list = OpenProgList(path.c_str());
  EXPECT_EQ(Entries(list), sorted);
  Pass(2);
  EXPECT_EQ(Entries(list), sorted) << "a walk refreshes nothing";
  EXPECT_EQ(GetProgListRegCount(list), 4u);
  EXPECT_EQ(Entries(list).front(), now + 58);
  EXPECT_EQ(CloseProgList(list), 1);
  EXPECT_EQ(test::ReadFile(path), Bytes({sorted.begin() + 2, sorted.end()}));
}

TEST_F(Schedule, FilesAsTheyCome) {
  std::int32_t const a = now + 5, b = now + 3, past = now - 9;
  struct {
    std::string bytes;
    std::vector<std::int32_t> read, kept;
  } const rows[] = {{"", {}, {}},
                    {"abc", {}, {}},
                    {Bytes({a, b}) + "xy", {a, b}, {b, a}},
                    {Bytes({past, a, past, b, past}), {past, a, past, b, past}, {b, a}},
                    {Bytes({past, -1, INT32_MIN}), {past, -1, INT32_MIN}, {}}};
  for (auto const& row : rows) {
    test::WriteFile(path, row.bytes);
    void* const list = OpenProgList(path.c_str());
    EXPECT_EQ(Entries(list), row.read) << row.bytes.size();
    EXPECT_EQ(CloseProgList(list), 1);
    EXPECT_EQ(test::ReadFile(path), Bytes(row.kept)) << row.bytes.size();
  }
}

TEST_F(Schedule, RemovalTakesTheFirstOfTheDay) {
  std::int32_t const tomorrow = now / kDay * kDay + kDay;
  struct {
    std::vector<std::int32_t> entries;  // in list order
    std::int32_t removed;
    std::vector<std::int32_t> left;
  } const rows[] = {{{tomorrow + 5, tomorrow, tomorrow + kDay}, tomorrow + kDay - 1, {tomorrow, tomorrow + kDay}},
                    {{tomorrow, tomorrow + 5, tomorrow + kDay}, tomorrow + kDay - 1, {tomorrow + 5, tomorrow + kDay}},
                    {{tomorrow - 1, tomorrow, tomorrow + kDay}, tomorrow, {tomorrow - 1, tomorrow + kDay}},
                    {{tomorrow - 1, tomorrow + kDay}, tomorrow + 5, {tomorrow - 1, tomorrow + kDay}},
                    {{tomorrow}, tomorrow + kDay, {tomorrow}},
                    {{}, tomorrow, {}},
                    {{-kDay, 1 - kDay, kDay - 1}, 5, {-kDay, kDay - 1}},  // day 0 reaches a day to either side
                    {{1, -1}, 1 - kDay, {-1}}};
  for (auto const& row : rows) {
    void* const list = OpenProgList(path.c_str());
    for (std::int32_t when : row.entries) Add(list, when);
    EXPECT_EQ(Remove(list, row.removed), 1) << "also when there is none";
    EXPECT_EQ(Entries(list), row.left) << testing::PrintToString(row.entries) << " without " << row.removed;
    EXPECT_EQ(ClearProgList(list), 1);
    EXPECT_EQ(Entries(list), std::vector<std::int32_t>());
    EXPECT_EQ(CloseProgList(list), 1);
    EXPECT_EQ(test::ReadFile(path), "");
  }
}

TEST_F(Schedule, TheNextMomentIsTheFirstInListOrderAfterNow) {
  ProgList list;
  reg_proglist next = {77};
  EXPECT_FALSE(list.GetNextReg(&next)) << "no file";
  test::WriteFile(path, Bytes({now - 5, now, now + 9, now + 1}));
  EXPECT_TRUE(list.SetFile(path));
  EXPECT_TRUE(list.GetNextReg(&next));
  EXPECT_EQ(next.dateTime, now + 9);
  EXPECT_FALSE(list.GetNextReg(nullptr));
  list.RefreshList();
  EXPECT_TRUE(list.GetNextReg(&next));
  EXPECT_EQ(next.dateTime, now + 1);
  Pass(9);
  EXPECT_FALSE(list.GetNextReg(&next));
  EXPECT_EQ(next.dateTime, now - 8);
}

TEST_F(Schedule, UncachedChangesAreWrittenAtOnce) {
  ProgList list;
  list.SetFile(path);
  reg_proglist soon = {now + 60}, later = {now + kDay}, past = {now - 1};
  EXPECT_TRUE(list.AddReg(&later));
  EXPECT_TRUE(list.AddReg(&past));
  EXPECT_TRUE(list.AddReg(&soon));
  EXPECT_EQ(test::ReadFile(path), Bytes({now + 60, now + kDay}));
  EXPECT_TRUE(list.RemReg(&soon));
  EXPECT_EQ(test::ReadFile(path), Bytes({now + kDay}));
  list.SetCached(true);
  EXPECT_TRUE(list.ClearList());
  EXPECT_EQ(test::ReadFile(path), Bytes({now + kDay}));
  list.SetCached(false);
  EXPECT_EQ(test::ReadFile(path), Bytes({now + kDay}));
  EXPECT_TRUE(list.FlushCache());
  EXPECT_EQ(test::ReadFile(path), "");
  fs::remove(path);
  EXPECT_TRUE(list.RemReg(&soon)) << "written even if nothing was removed";
  EXPECT_EQ(test::ReadFile(path), "");

  fs::create_directory(scratch.Path("gone"));
  EXPECT_TRUE(list.SetFile(scratch.Path("gone/list")));
  fs::remove(scratch.Path("gone"));
  EXPECT_FALSE(list.AddReg(&soon));
  EXPECT_EQ(list.GetRegCount(), 1u) << "the change stays in the list";
}

TEST_F(Schedule, NothingFromNothing) {
  reg_proglist entry = {now + 60};
  EXPECT_EQ(OpenProgList(nullptr), nullptr);
  EXPECT_EQ(GetProgListRegCount(nullptr), 0u);
  EXPECT_EQ(AddProgListReg(nullptr, &entry) + RemProgListReg(nullptr, &entry) + ClearProgList(nullptr) +
                GetProgListRegByIndex(nullptr, 0, &entry) + CloseProgList(nullptr),
            0);
  void* const list = OpenProgList("");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(Add(list, now + 60) + Remove(list, now) + ClearProgList(list), 0);
  EXPECT_EQ(GetProgListRegCount(list), 0u);
  EXPECT_EQ(CloseProgList(list), 0);

  ProgList named;
  EXPECT_FALSE(named.ReadFromFile() || named.WriteToFile() || named.AddReg(&entry));
  EXPECT_TRUE(named.SetFile(path));
  EXPECT_FALSE(named.ReadFromFile()) << "missing";
  EXPECT_FALSE(named.SetFile(static_cast<char const*>(nullptr)));
  EXPECT_FALSE(named.AddReg(nullptr) || named.RemReg(nullptr));
  EXPECT_TRUE(named.AddReg(&entry));
  for (long index : {-1L, 1L, LONG_MIN, LONG_MAX}) EXPECT_FALSE(named.GetRegByIndex(index, &entry)) << index;
  EXPECT_FALSE(named.GetRegByIndex(0, nullptr));
  EXPECT_EQ(test::ReadFile(path), Bytes({now + 60}));
}

// Where modes bind: root reads everything.
TEST_F(Schedule, WhatCouldNotBeReadIsNotOverwritten) {
  fs::permissions(scratch.Path(), fs::perms::all);
  for (bool changed : {false, true}) {
    test::WriteFile(path, Bytes({now + 60}));
    fs::permissions(path, fs::perms(0222));
    EXPECT_TRUE(test::AsOrdinaryUser([&] {
      void* const list = OpenProgList(path.c_str());
      if (list == nullptr || GetProgListRegCount(list) != 0 || Remove(list, now + 60) != 1) return false;
      if (changed && Add(list, now + 5) != 1) return false;
      return CloseProgList(list) == (changed ? 1 : 0);
    }));
    fs::permissions(path, fs::perms(0666));
    EXPECT_EQ(test::ReadFile(path), Bytes({now + (changed ? 5 : 60)}));
  }
  fs::create_directory(scratch.Path("folder"));
  EXPECT_EQ(CloseProgList(OpenProgList(scratch.Path("folder").c_str())), 0);
}

TEST_F(Schedule, Predicates) {
  EXPECT_TRUE(folddatetime({now - 1}));
  EXPECT_FALSE(folddatetime({now}));
  EXPECT_FALSE(folddatetime({now + 1}));
  EXPECT_TRUE(folddatetime({-1}));
  EXPECT_TRUE(fcomp({-1}, {0}));
  EXPECT_FALSE(fcomp({3}, {3}));
  EXPECT_FALSE(fcomp({4}, {3}));
}

// Beside a plain vector, with the clock moving on.
TEST_F(Schedule, AgreesWithAModel) {
  for (unsigned seed = 0; seed < 25; seed++) {
    std::mt19937 random(seed);
    auto const below = [&](unsigned n) { return static_cast<int>(random() % n); };
    fs::remove(path);
    std::vector<std::int32_t> model;
    void* list = OpenProgList(path.c_str());
    auto const refresh = [&] {
      model.erase(std::remove_if(model.begin(), model.end(), [&](auto when) { return when < now; }), model.end());
      std::sort(model.begin(), model.end());
    };
    for (int step = 0; step < 150; step++) {
      std::int32_t const when = now + below(12 * kDay) - kDay;
      int const what = below(12);
      if (what < 6) {
        EXPECT_EQ(Add(list, when), 1);
        model.push_back(when);
      } else if (what < 9) {
        EXPECT_EQ(Remove(list, when), 1);
        auto const found = std::find_if(model.begin(), model.end(), [&](auto e) { return e / kDay == when / kDay; });
        if (found != model.end()) model.erase(found);
      } else if (what == 9) {
        refresh();
        ASSERT_EQ(GetProgListRegCount(list), model.size()) << "seed " << seed << " step " << step;
      } else if (what == 10) {
        Pass(below(kDay / 4));
      } else {
        refresh();
        ASSERT_EQ(CloseProgList(list), 1);
        ASSERT_EQ(test::ReadFile(path), Bytes(model)) << "seed " << seed << " step " << step;
        list = OpenProgList(path.c_str());
      }
      ASSERT_EQ(Entries(list), model) << "seed " << seed << " step " << step;
    }
    CloseProgList(list);
  }
}

// Finishes at all only if a step does not cost the length of the list.
TEST_F(Schedule, ALongListIsWalkedAndEmptied) {
  constexpr int kEntries = 200000;
  std::vector<std::int32_t> entries;
  for (int i = 0; i < kEntries; i++) entries.push_back(i / 10 * 10 + 7);
  g_clock = 1;
  test::WriteFile(path, Bytes(entries));
  void* const list = OpenProgList(path.c_str());
  EXPECT_EQ(Entries(list), entries);
  EXPECT_EQ(GetProgListRegCount(list), static_cast<unsigned long>(kEntries));
  EXPECT_EQ(ClearProgList(list), 1);
  for (int i = 0; i < kEntries / 10; i++) Add(list, i * kDay + 9);
  for (int i = kEntries / 10; i-- > 0;) ASSERT_EQ(Remove(list, i * kDay), 1);
  EXPECT_EQ(Entries(list).size(), 0u);
  CloseProgList(list);
}

TEST_F(Schedule, StepsCallEachOtherVirtually) {
  struct Probe : ProgList {
    std::string calls;
    bool ReadFromFile() override {
      calls += "Read ";
      return ProgList::ReadFromFile();
    }
    bool WriteToFile() override {
      calls += "Write ";
      return ProgList::WriteToFile();
    }
    void RefreshList() override {
      calls += "Refresh ";
      ProgList::RefreshList();
    }
  } list;
  reg_proglist entry = {now + 60};
  list.SetFile(path);
  EXPECT_TRUE(list.AddReg(&entry) && list.RemReg(&entry) && list.ClearList() && list.FlushCache());
  EXPECT_EQ(list.GetRegCount(), 0u);
  EXPECT_EQ(list.calls, "Read Write Refresh Write Refresh Write Refresh Write Refresh Refresh ");
}

}  // namespace
