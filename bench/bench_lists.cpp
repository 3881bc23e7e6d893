// Compares the browse list with the same list maintained by hand with GKeyFile and SimpleIni. Then measures the growing
// lists, with a hundred thousand entries and a tenth of that: ten times the entries should cost about ten times the
// time.
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "bench.h"
#include "zelvane/browse/browselist.h"
#include "zelvane/lang/langclass.h"

namespace {

std::string AddressOf(int i) {
  return "10." + std::to_string(i >> 16) + "." + std::to_string(i >> 8 & 255) + "." + std::to_string(i & 255);
}

// One group with `count` computers, and a UPS unit for every tenth.
void WriteList(ScratchFile const& file, int count) {
  std::ofstream out(file.Path());
  out << "[GROUPS]\n0 = all;-1\n[COMPUTERS]\n";
  for (int i = 0; i < count; i++) out << i << " = host" << i << ";" << AddressOf(i) << ";0\n";
  out << "[NOBREAKS]\n";
  for (int i = 0; i < count; i += 10) out << i << " = ups" << i << ";" << AddressOf(i) << ";1;" << i << "\n";
}

// ---- By hand: what a program does that maintains the same file with a library for such files. ----

constexpr int kGroupSize = 100;

// Groups of a hundred computers each.
void WriteGroups(ScratchFile const& file, int count) {
  std::ofstream out(file.Path());
  out << "[GROUPS]\n";
  for (int i = 0; i < count / kGroupSize; i++) out << i << " = group" << i << ";-1\n";
  out << "[COMPUTERS]\n";
  for (int i = 0; i < count; i++) out << i << " = host" << i << ";" << AddressOf(i) << ";" << i / kGroupSize << "\n";
}

struct Computer {
  long id = 0;
  std::string name, address;
  long group = 0;
};

Computer Parsed(char const* key, char const* value) {
  Computer computer;
  computer.id = std::atol(key);
  char const* const first = std::strchr(value, ';');
  char const* const second = std::strchr(first + 1, ';');
  computer.name.assign(value, first);
  computer.address.assign(first + 1, second);
  computer.group = std::atol(second + 1);
  return computer;
}

class ByKeyFile {
 public:
  explicit ByKeyFile(ScratchFile const& file) : path_(file.Path()), list_(g_key_file_new()) {
    Require(g_key_file_load_from_file(list_, path_.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr), "load");
  }
  ~ByKeyFile() { g_key_file_free(list_); }
  void Save() { Require(g_key_file_save_to_file(list_, path_.c_str(), nullptr), "save"); }
  void Set(char const* key, char const* value) { g_key_file_set_value(list_, "COMPUTERS", key, value); }
  void Remove(char const* section, char const* key) { g_key_file_remove_key(list_, section, key, nullptr); }

  template <class Take>
  void ForEach(Take take) {
    gchar** const keys = g_key_file_get_keys(list_, "COMPUTERS", nullptr, nullptr);
    for (gchar** key = keys; *key != nullptr; key++) {
      gchar* const value = g_key_file_get_value(list_, "COMPUTERS", *key, nullptr);
      take(*key, value);
      g_free(value);
    }
    g_strfreev(keys);
  }

 private:
  std::string path_;
  GKeyFile* list_;
};

class BySimpleIni {
 public:
  explicit BySimpleIni(ScratchFile const& file) : path_(file.Path()) {
    Require(list_.LoadFile(path_.c_str()) == SI_OK, "load");
  }
  void Save() { Require(list_.SaveFile(path_.c_str(), false) == SI_OK, "save"); }
  void Set(char const* key, char const* value) { list_.SetValue("COMPUTERS", key, value); }
  void Remove(char const* section, char const* key) { list_.Delete(section, key); }
  bool Text(std::string& text) const { return list_.Save(text) == SI_OK; }

  template <class Take>
  void ForEach(Take take) {
    CSimpleIniA::TNamesDepend keys;
    list_.GetAllKeys("COMPUTERS", keys);
    for (auto const& key : keys) take(key.pItem, list_.GetValue("COMPUTERS", key.pItem));
  }

 private:
  std::string path_;
  CSimpleIniA list_;
};

// The same with the guarantees of the list's save: writes a temporary file in the same directory, syncs it, gives it
// the old mode, renames it over the old file and syncs the directory.
class BySyncedSimpleIni : public BySimpleIni {
 public:
  explicit BySyncedSimpleIni(ScratchFile const& file) : BySimpleIni(file), path_(file.Path()), made_(path_ + ".new") {}
  void Save() {
    struct stat old = {};
    std::string text;
    Require(Text(text) && stat(path_.c_str(), &old) == 0, "text");
    int const made = open(made_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    int const folder = open(path_.substr(0, path_.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Require(fchmod(made, old.st_mode & 07777) == 0, "mode");
    Require(write(made, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
    Require(fsync(made) == 0 && close(made) == 0, "sync");
    Require(rename(made_.c_str(), path_.c_str()) == 0 && fsync(folder) == 0 && close(folder) == 0, "rename");
  }

 private:
  std::string path_, made_;
};

template <class List>
void WalkByHand(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  ScratchFile const file("lists");
  WriteGroups(file, count);
  for (auto _ : state) {
    List list(file);
    long sum = 0;
    list.ForEach([&](char const* key, char const* value) { sum += Parsed(key, value).id; });
    Require(sum == static_cast<long>(count) * (count - 1) / 2, "walk");
  }
}

// Runs `change(file, count)` on a fresh list each time.
template <class Change>
void OnFreshLists(benchmark::State& state, Change change) {
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    ScratchFile const file("lists");
    WriteGroups(file, count);
    state.ResumeTiming();
    change(file, count);
  }
}

template <class List>
void AddByHand(benchmark::State& state) {
  OnFreshLists(state, [](ScratchFile const& file, int count) {
    List list(file);
    for (int i = 0; i < 100; i++) {
      std::set<long> used;
      list.ForEach([&](char const* key, char const*) { used.insert(std::atol(key)); });
      long id = 0;
      while (used.count(id) != 0) id++;
      Require(id == count + i, "identifier");
      list.Set(std::to_string(id).c_str(), "host;10.0.0.1;-1");
    }
    list.Save();
  });
}

template <class List>
void RemoveGroupByHand(benchmark::State& state) {
  OnFreshLists(state, [](ScratchFile const& file, int) {
    List list(file);
    std::vector<std::string> gone;
    list.ForEach([&](char const* key, char const* value) {
      if (Parsed(key, value).group == 0) gone.emplace_back(key);
    });
    Require(gone.size() == kGroupSize, "group");
    for (std::string const& key : gone) list.Remove("COMPUTERS", key.c_str());
    list.Remove("GROUPS", "0");
    list.Save();
  });
}

void WalkOurs(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  ScratchFile const file("lists");
  WriteGroups(file, count);
  for (auto _ : state) {
    void* const list = OpenBrwsList(file.Path().c_str());
    long sum = 0;
    BrwsComputerRec computer;
    for (unsigned long i = 0; i < GetBrwsComputersCount(list); i++) {
      Require(GetBrwsComputerByIndex(list, i, &computer) == 1, "walk");
      sum += computer.id;
    }
    Require(sum == static_cast<long>(count) * (count - 1) / 2, "walk");
    CloseBrwsList(list);
  }
}

void AddOurs(benchmark::State& state) {
  OnFreshLists(state, [](ScratchFile const& file, int count) {
    void* const list = OpenBrwsList(file.Path().c_str());
    BrwsComputerRec const computer = {0, "host", "10.0.0.1", -1};
    for (int i = 0; i < 100; i++) {
      unsigned long id = 0;
      Require(AddBrwsComputer(list, &computer, false, &id, false) == 1, "add");
      Require(id == static_cast<unsigned long>(count + i), "identifier");
    }
    CloseBrwsList(list);
  });
}

void RemoveGroupOurs(benchmark::State& state) {
  OnFreshLists(state, [](ScratchFile const& file, int count) {
    void* const list = OpenBrwsList(file.Path().c_str());
    Require(RemoveBrwsGroup(list, 0, false) == 1, "remove");
    Require(GetBrwsComputersCount(list) == static_cast<unsigned long>(count - kGroupSize), "removed");
    CloseBrwsList(list);
  });
}

// ---- Growth. ----

void FillList(benchmark::State& state, bool maxPlusOne) {
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    ScratchFile const file("lists");
    void* const list = OpenBrwsList(file.Path().c_str());
    BrwsComputerRec computer = {};
    for (int i = 0; i < count; i++) {
      AddressOf(i).copy(computer.address, sizeof computer.address - 1);
      ("host" + std::to_string(i)).copy(computer.name, sizeof computer.name - 1);
      unsigned long id = 0;
      Require(AddBrwsComputer(list, &computer, maxPlusOne, &id, false) == 1, "add");
      Require(id == static_cast<unsigned long>(i) + (maxPlusOne ? 1 : 0), "identifier");
    }
    Require(GetBrwsComputersCount(list) == static_cast<unsigned long>(count) && CloseBrwsList(list) == 1, "fill");
  }
}

// The smallest free identifier is, again and again, at the other end of a long list than the previous one.
void RemoveAndAdd(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  ScratchFile const file("lists");
  WriteList(file, count);
  void* const list = OpenBrwsList(file.Path().c_str());
  BrwsNobreakRec const nobreak = {0, "ups", 1, -1};
  int i = 0;
  for (auto _ : state) {
    unsigned long id = 0;
    i = (i + 7919) % count;
    Require(AddBrwsNobreak(list, &nobreak, false, &id, false) == 1, "add");
    Require(RemoveBrwsNobreak(list, static_cast<long>(id), false) == 1, "remove");
  }
  CloseBrwsList(list);
}

void RemoveGroup(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    ScratchFile const file("lists");
    WriteList(file, count);
    void* list = OpenBrwsList(file.Path().c_str());
    state.ResumeTiming();
    Require(RemoveBrwsGroup(list, 0, false) == 1, "remove");
    state.PauseTiming();
    CloseBrwsList(list);
    list = OpenBrwsList(file.Path().c_str());
    Require(GetBrwsGroupsCount(list) + GetBrwsComputersCount(list) + GetBrwsNobreaksCount(list) == 0, "not removed");
    CloseBrwsList(list);
    state.ResumeTiming();
  }
}

void LoadLanguage(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  ScratchFile const file("lists");
  {
    std::ofstream out(file.Path());
    out << "[LANG]\n1 = English\n[1]\n";
    for (int i = 0; i < count; i++) out << i << " = text number " << i << "\n";
  }
  LangClass lang;
  lang.SetFileName(file.Path().c_str());
  std::string const last = "text number " + std::to_string(count - 1);
  for (auto _ : state) {
    Require(lang.LoadStrings(1), "load");
    Require(lang.GetLangStr(count - 1) == last && lang.GetLangStr(count).empty(), "texts");
  }
}

void FillSmallest(benchmark::State& state) { FillList(state, false); }
void FillMaxPlusOne(benchmark::State& state) { FillList(state, true); }

#define ZELVANE_ROW(name, ...) BENCHMARK(__VA_ARGS__)->Name(name)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond)
ZELVANE_ROW("browse-walk/ours", WalkOurs);
ZELVANE_ROW("browse-walk/gkeyfile", WalkByHand<ByKeyFile>);
ZELVANE_ROW("browse-add-100/ours", AddOurs);
ZELVANE_ROW("browse-add-100/gkeyfile", AddByHand<ByKeyFile>);
ZELVANE_ROW("browse-add-100/simpleini", AddByHand<BySimpleIni>);
ZELVANE_ROW("browse-remove-group/ours", RemoveGroupOurs);
ZELVANE_ROW("browse-remove-group/simpleini-synced", RemoveGroupByHand<BySyncedSimpleIni>);
BENCHMARK(WalkOurs)->Name("browse-walk/ours")->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FillSmallest)->Name("fill-smallest/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(FillMaxPlusOne)->Name("fill-max-plus-one/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveAndAdd)->Name("add-and-remove-one/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(RemoveGroup)->Name("remove-group/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadLanguage)->Name("load-language/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
