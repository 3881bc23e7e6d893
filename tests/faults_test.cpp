// Faults that the sweeps have found, pinned where every test run meets them: files stay old or become new, success
// tells the truth, and nothing else is left behind.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "support/processes.h"
#include "support/records.h"
#include "support/settings.h"
#include "zelvane/zelvane.h"

namespace {

long g_left = -1;  // allocations until the one that fails; none does while it is negative

}  // namespace

// The library finds this one before the C++ library's, which a sanitizer may have replaced.
void* operator new(std::size_t size) {
  using New = void* (*)(std::size_t);
  static New const real = reinterpret_cast<New>(dlsym(RTLD_NEXT, sizeof size == 8 ? "_Znwm" : "_Znwj"));
  if (g_left >= 0 && g_left-- == 0) throw std::bad_alloc();
  return real(size);
}

namespace {

struct Row {
  char const* name;
  char const* file;    // in the scratch folder
  std::string before;  // what it holds
  // Whether all calls tell success. What they tell besides goes to `told`; `path` is the file's.
  bool (*run)(char const* path, char (&told)[64]);
  bool throws = false;       // C++ alone: std::bad_alloc may come out
  std::string between = {};  // what the file may hold, too
};

std::string Records(int count, int from = 0) {
  std::string log;
  for (int i = from; i < from + count; i++) log += std::string(8, static_cast<char>('a' + i));
  return log;
}

std::string ManyKeys() {
  std::string file = "[S]\n";
  for (int i = 10; i < 60; i++) file += "K" + std::to_string(i) + " = 1\n";
  return file;
}

// A caller that does not give up at once.
template <class Body>
bool InThreeTries(Body&& body) {
  for (int i = 0; i < 3; i++) {
    try {
      return body();
    } catch (std::bad_alloc const&) {
    }
  }
  return false;
}

constexpr char kUnits[] = "[SRVLIST]\n1 = 001\n7 = 007\n";

Row const kRows[] = {
    {"the root", "root/srvlist.cfg", kUnits, [](char const*, char (&)[64]) { return RemUpsListItem("7") == 1; }},
    {"a stored password", "upscli.cfg", "[SHUTSRV]\nZELSRV = a;b;1\n[MAILSEND]\nPASSWORD = c2VjcmV0AA==\n",
     [](char const* path, char (&told)[64]) {
       ShutSrvConfig cfg;
       char folder[4096];
       std::snprintf(folder, sizeof folder, "%.*s", static_cast<int>(std::strrchr(path, '/') - path), path);
       if (GetShutSrvConfig(folder, &cfg) != 1) return false;
       std::snprintf(told, sizeof told, "%s %s", cfg.serverName, cfg.mailPassword);
       return true;
     }},
    {"a cascade in the browse list", "zelbrws.cfg",
     "[GROUPS]\n0 = all;-1\n1 = sub;0\n[COMPUTERS]\n0 = pc;10.0.0.1;1\n[NOBREAKS]\n0 = u;10.0.0.1;1;0\n1 = "
     "v;;1;-1\n[DATE]\nDATETIME = 5\n",
     [](char const* path, char (&)[64]) {
       void* const list = OpenBrwsList(path);
       bool const done = RemoveBrwsGroup(list, 0, true) == 1;
       return CloseBrwsList(list) == 1 && done;
     }},
    {"a new section and keys, tried again", "cfg", "[A]\nk = 1",
     [](char const* path, char (&)[64]) {
       CfgClass cfg;
       return InThreeTries([&] { return cfg.Open(path) && cfg.SetCached(true); }) && InThreeTries([&] {
                return cfg.WriteStr("A", "l", "2") && cfg.WriteStr("NEW", "m", "3") && cfg.WriteStr("NEW", "n", "4");
              }) &&
              InThreeTries([&] { return cfg.Close(); });
     },
     true},
    {"a file that was not read to its end", "cfg", "[A]\nk = 1\n[B]\nlast = 1\n",
     [](char const* path, char (&)[64]) {
       CfgClass cfg;
       try {
         cfg.Open(path) && cfg.LoadFile(false);
       } catch (std::bad_alloc const&) {
       }
       return cfg.WriteStr("A", "k", "2") && cfg.Close();
     },
     true},
    {"lines to be forgotten, but not by half", "cfg", "[A]\nk = 1\nl = 2\n",
     [](char const* path, char (&)[64]) {
       CfgClass cfg;
       bool const open = InThreeTries([&] { return cfg.Open(path); });
       try {
         cfg.ClearWriteCache();
       } catch (std::bad_alloc const&) {
       }
       return open && cfg.WriteStr("A", "k", "3");
     },
     true, "[A]\nk = 3\nl = 2\n"},
    {"changes, another file being opened", "cfg", "k=1\nbad[\nlater=2\n",
     [](char const* path, char (&)[64]) {
       CfgClass cfg;
       char lost[4096];
       std::snprintf(lost, sizeof lost, "%s.lost", path);
       unlink(lost);
       auto const change = [&] { return cfg.Open(path) && cfg.SetCached(true) && cfg.WriteStr("", "k", "2"); };
       return InThreeTries(change) && InThreeTries([&] { return cfg.Open("srvlist.cfg"); });
     },
     true},
    {"keys by number", "cfg", ManyKeys(),
     [](char const* path, char (&told)[64]) {
       CfgClass cfg;
       if (!cfg.Open(path) || !cfg.SetCached(true)) return false;
       bool const done = InThreeTries([&] { return cfg.GetKeyName("S", 30) != "" && cfg.WriteStr("S", "K15x", "1"); });
       std::string const name = cfg.GetKeyName("S", 31);
       name.copy(told, sizeof told - 1);
       return done && cfg.GetKeyCount("S") == 51 && cfg.Close();
     },
     true},
    {"a log that is cut", "log", Records(3),
     [](char const* path, char (&)[64]) {
       LogClass log;
       log.SetFile(path);
       log.SetMaxLines(3);
       return log.WriteReg(0x64646464, "dddd", 4);
     },
     true, Records(4)},
    {"a temporary file", "root/other", "",
     [](char const*, char (&)[64]) {
       std::string const name = GetTmpFileName();
       return !name.empty() && unlink(name.c_str()) == 0;
     },
     true},
};

// Without the stamp, which stands last.
std::string Undated(std::string const& file) { return file.substr(0, file.find("DATETIME")); }

TEST(Faults, OutOfMemoryAtEveryAllocation) {
  for (Row const& row : kRows) {
    test::Installation root;
    test::Environment const temporary("TMP", root.Path());
    root.Write("here/srvlist.cfg", kUnits);
    test::InFolder const here(root.Path("here"));
    std::string const path = root.Path(row.file);
    auto const run = [&](long failing, std::string& told) {
      char note[64] = "";
      root.Write(row.file, row.before);
      bool done = false, threw = false;
      g_left = failing;
      try {
        done = row.run(path.c_str(), note);
      } catch (std::bad_alloc const&) {
        threw = true;
      }
      bool const met = failing >= 0 && g_left < 0;
      g_left = -1;
      EXPECT_TRUE(!threw || row.throws) << row.name << ", allocation " << failing;
      told = note;
      return std::pair(done, met);
    };
    int const descriptors = test::OpenDescriptors();
    std::string expected, told;
    EXPECT_TRUE(run(-1, expected).first) << row.name;
    std::string const before = Undated(row.before), after = Undated(root.Read(row.file));
    std::vector<std::string> const files = root.List();
    long failing = 0;
    for (bool met = true; met; failing++) {
      auto const result = run(failing, told);
      met = result.second;
      std::string const now = Undated(root.Read(row.file));
      EXPECT_TRUE(now == after || (now == before && !result.first) || (now == row.between && now != ""))
          << row.name << ", allocation " << failing << ": " << result.first << ", " << now;
      EXPECT_TRUE(!result.first || told == expected) << row.name << ", allocation " << failing << ": " << told;
      EXPECT_EQ(kUnits, root.Read("here/srvlist.cfg")) << row.name << ", allocation " << failing;
      EXPECT_EQ(files, root.List()) << row.name << ", allocation " << failing;
      EXPECT_EQ(descriptors, test::OpenDescriptors()) << row.name << ", allocation " << failing;
    }
    EXPECT_GT(failing, 2) << row.name << ": nothing failed";
  }
}

TEST(Faults, OneOpenThatFails) {
  test::Installation root;
  std::string const settings = root.Write("unit/upssrv.cfg", "[UPS]\nUPSTYPE = 7\n");
  std::string const schedule = root.Write("schedule", std::string("\0\x94\x35\x77", 4));
  test::g_refused = settings.c_str();
  UpsSrvConfig cfg;
  EXPECT_EQ(1, GetUpsSrvConfig(root.Path("unit").c_str(), &cfg, 0));
  EXPECT_EQ(0, cfg.upsType);
  EXPECT_EQ("[UPS]\nUPSTYPE = 7\n", root.Read("unit/upssrv.cfg")) << "not replaced by the defaults";

  test::g_refused = schedule.c_str();
  void* const list = OpenProgList(schedule.c_str());
  EXPECT_EQ(0U, GetProgListRegCount(list));
  reg_proglist const entry = {2000000001};
  EXPECT_EQ(2, AddProgListReg(list, &entry) + CloseProgList(list));
  EXPECT_EQ(std::string("\0\x94\x35\x77\1\x94\x35\x77", 8), root.Read("schedule")) << "not by the entry added";
  EXPECT_EQ(nullptr, test::g_refused);
}

}  // namespace
