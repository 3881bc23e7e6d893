#include "zelvane/logs/proglist.h"

#include <chrono>
#include <ctime>

#include "support/settings.h"
#include "support/test.h"
#include "zelvane/core/datetime.h"

namespace {
std::time_t g_clock = 0;  // the time of the library's clock; 0: the real time
}

extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* out) noexcept {
  using Clock = std::chrono::system_clock;
  std::time_t const now = g_clock != 0 ? g_clock : Clock::to_time_t(Clock::now());
  if (out != nullptr) *out = now;
  return now;
}

namespace {

using Moments = std::vector<std::int32_t>;

constexpr std::int32_t kDay = 86400;

std::string Bytes(Moments const& list) { return {reinterpret_cast<char const*>(list.data()), list.size() * 4}; }

// At noon of a day in 2026, with a clock that only the test advances.
class Schedule : public testing::Test {
 protected:
  Schedule() { g_clock = 1772884800, now = static_cast<std::int32_t>(GetDateTime()); }
  ~Schedule() override { g_clock = 0; }
  void Pass(int seconds) { g_clock += seconds, now += seconds; }

  // The entries without a refresh.
  static Moments Entries(void* list) {
    Moments entries;
    for (reg_proglist entry; GetProgListRegByIndex(list, static_cast<long>(entries.size()), &entry) == 1;)
      entries.push_back(entry.dateTime);
    return entries;
  }
  static int Add(void* list, reg_proglist entry) { return AddProgListReg(list, &entry); }
  static int Remove(void* list, reg_proglist entry) { return RemProgListReg(list, &entry); }

  test::Scratch scratch;
  std::string const path = scratch.Path("list");
  std::int32_t now;
};

TEST_F(Schedule, RemovalTakesTheFirstOfTheDay) {
  std::int32_t const day = now / kDay * kDay + kDay, past = now - 1;
  std::tuple<std::int32_t, Moments, Moments, Moments> const rows[] = {
      // removed; read, left in the list, written
      {day + kDay - 1, {day + 5, day, day + kDay}, {day, day + kDay}, {day, day + kDay}},
      {day + 5, {now, day + kDay, day - 1}, {now, day + kDay, day - 1}, {now, day - 1, day + kDay}},
      {9, {past, INT32_MAX, past, day, day, -1}, {past, INT32_MAX, past, day, day}, {day, day, INT32_MAX}},
      {5, {-kDay, 1 - kDay, kDay - 1}, {-kDay, kDay - 1}, {}}};  // day 0 covers a day on either side
  for (auto const& [removed, read, left, written] : rows) {
    test::WriteFile(path, Bytes(read) + "xyz");
    void* const list = OpenProgList(path.c_str());
    EXPECT_EQ(Remove(list, {removed}), 1) << "also when there is none";
    EXPECT_EQ(Entries(list), left) << testing::PrintToString(read) << " without " << removed;
    EXPECT_EQ(CloseProgList(list), 1);
    EXPECT_EQ(test::ReadFile(path), Bytes(written)) << testing::PrintToString(read);
  }
}

TEST_F(Schedule, UncachedChangesAreWrittenAtOnce) {
  ProgList list;
  reg_proglist soon = {now + 60}, later = {now + kDay}, past = {now - 1}, next = {0};
  EXPECT_NONE(list.ReadFromFile(), list.WriteToFile(), list.AddReg(&soon), list.GetNextReg(&next)) << "no file";
  EXPECT_FALSE(list.SetFile(static_cast<char const*>(nullptr)));
  EXPECT_ALL(list.SetFile(path), list.AddReg(&later), list.AddReg(&past), list.AddReg(&soon));
  EXPECT_EQ(test::ReadFile(path), Bytes({now + 60, now + kDay}));
  for (long index : {-1L, 2L, LONG_MIN, LONG_MAX}) EXPECT_FALSE(list.GetRegByIndex(index, &next)) << index;
  EXPECT_NONE(list.GetRegByIndex(0, nullptr), list.AddReg(nullptr), list.RemReg(nullptr));
  list.SetCached(true);
  EXPECT_ALL(list.ClearList(), list.SetFile(scratch.Path("other")));
  EXPECT_EQ(test::ReadFile(path), Bytes({now + 60, now + kDay}));
}

// The next entry is the first one after now in list order, which a refresh changes.
TEST_F(Schedule, TheNextMoment) {
  ProgList list;
  reg_proglist next = {0};
  test::WriteFile(path, Bytes({now - 5, now, now + 9, now + 1}));
  EXPECT_ALL(list.SetFile(path), list.ReadFromFile());
  EXPECT_EACH((list.GetNextReg(&next), next.dateTime), true, now + 9);
  EXPECT_EQ(list.GetRegCount(), 3u);
  EXPECT_EACH((list.GetNextReg(&next), list.GetNextReg(nullptr), next.dateTime), true, false, now + 1);
  Pass(9);
  EXPECT_FALSE(list.GetNextReg(&next));
}

// Against a plain vector, with a running clock.
TEST_F(Schedule, AgreesWithAModel) {
  auto below = [random = std::mt19937()](int n) mutable { return static_cast<int>(random() % n); };
  Moments model;
  void* const list = OpenProgList(path.c_str());
  for (int step = 0; step < 3000; step++) {
    std::int32_t const when = now + below(12 * kDay) - kDay;
    int const what = below(12);
    if (what < 6) {
      ASSERT_EQ(Add(list, {when}), 1) << step;
      model.push_back(when);
    } else if (what < 9) {
      ASSERT_EQ(Remove(list, {when}), 1) << step;
      auto const found = std::find_if(model.begin(), model.end(), [&](auto e) { return e / kDay == when / kDay; });
      if (found != model.end()) model.erase(found);
    } else {
      Pass(below(kDay / 8));
      model.erase(std::remove_if(model.begin(), model.end(), [&](auto e) { return e < now; }), model.end());
      std::sort(model.begin(), model.end());
      ASSERT_EQ(GetProgListRegCount(list), model.size()) << step;
    }
    ASSERT_EQ(Entries(list), model) << step;
  }
  EXPECT_EACH((ClearProgList(list), CloseProgList(list)), 1);
  EXPECT_EQ(test::ReadFile(path), "");
}

TEST_F(Schedule, NothingWithoutAFile) {
  void* const list = OpenProgList("");
  EXPECT_EACH((Add(list, {now}), Remove(list, {now}), ClearProgList(list), CloseProgList(list)), 0);
  EXPECT_EACH((folddatetime({now - 1}), folddatetime({now}), fcomp({-1}, {0}), fcomp({3}, {3})), true, false, true,
              false);
}

}  // namespace
