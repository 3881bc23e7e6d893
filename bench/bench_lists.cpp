// The growing lists: the browse list and the language tables, with a hundred thousand entries and a tenth of that.
// Files lie in memory. No peer: what is to be seen is that ten times the entries cost about ten times the time.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "zelvane/browse/browselist.h"
#include "zelvane/lang/langclass.h"

namespace {

[[noreturn]] void Wrong(char const* what) {
  std::fprintf(stderr, "wrong result: %s\n", what);
  std::exit(1);
}

void Check(bool right, char const* what) {
  if (!right) Wrong(what);
}

// A file in memory, gone with the object.
class File {
 public:
  File() : path_("/dev/shm/zelvane-bench-lists-" + std::to_string(getpid())) {}
  ~File() { unlink(path_.c_str()); }
  File(File const&) = delete;
  File& operator=(File const&) = delete;
  char const* Path() const { return path_.c_str(); }

 private:
  std::string path_;
};

std::string AddressOf(int i) {
  return "10." + std::to_string(i >> 16) + "." + std::to_string(i >> 8 & 255) + "." + std::to_string(i & 255);
}

// One group with `count` computers, and a UPS unit for every tenth.
void WriteList(File const& file, int count) {
  std::ofstream out(file.Path());
  out << "[GROUPS]\n0 = all;-1\n[COMPUTERS]\n";
  for (int i = 0; i < count; i++) out << i << " = host" << i << ";" << AddressOf(i) << ";0\n";
  out << "[NOBREAKS]\n";
  for (int i = 0; i < count; i += 10) out << i << " = ups" << i << ";" << AddressOf(i) << ";1;" << i << "\n";
}

void FillList(benchmark::State& state, bool maxPlusOne) {
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    File const file;
    void* const list = OpenBrwsList(file.Path());
    BrwsComputerRec computer = {};
    for (int i = 0; i < count; i++) {
      AddressOf(i).copy(computer.address, sizeof computer.address - 1);
      ("host" + std::to_string(i)).copy(computer.name, sizeof computer.name - 1);
      unsigned long id = 0;
      Check(AddBrwsComputer(list, &computer, maxPlusOne, &id, false) == 1, "add");
      Check(id == static_cast<unsigned long>(i) + (maxPlusOne ? 1 : 0), "identifier");
    }
    Check(GetBrwsComputersCount(list) == static_cast<unsigned long>(count) && CloseBrwsList(list) == 1, "fill");
  }
}

// The smallest identifier is free again and again, at the far end of a long list from where the last one was.
void RemoveAndAdd(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  File const file;
  WriteList(file, count);
  void* const list = OpenBrwsList(file.Path());
  BrwsNobreakRec const nobreak = {0, "ups", 1, -1};
  int i = 0;
  for (auto _ : state) {
    unsigned long id = 0;
    i = (i + 7919) % count;
    Check(AddBrwsNobreak(list, &nobreak, false, &id, false) == 1, "add");
    Check(RemoveBrwsNobreak(list, static_cast<long>(id), false) == 1, "remove");
  }
  CloseBrwsList(list);
}

void WalkList(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  File const file;
  WriteList(file, count);
  for (auto _ : state) {
    void* const list = OpenBrwsList(file.Path());
    unsigned long sum = 0;
    BrwsComputerRec computer = {};
    for (unsigned long i = 0; i < GetBrwsComputersCount(list); i++) {
      Check(GetBrwsComputerByIndex(list, i, &computer) == 1, "walk");
      sum += static_cast<unsigned long>(computer.id);
    }
    Check(sum == static_cast<unsigned long>(count) * static_cast<unsigned long>(count - 1) / 2, "walk");
    CloseBrwsList(list);
  }
}

void RemoveGroup(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    File const file;
    WriteList(file, count);
    void* list = OpenBrwsList(file.Path());
    state.ResumeTiming();
    Check(RemoveBrwsGroup(list, 0, false) == 1, "remove");
    state.PauseTiming();
    CloseBrwsList(list);
    list = OpenBrwsList(file.Path());
    Check(GetBrwsGroupsCount(list) + GetBrwsComputersCount(list) + GetBrwsNobreaksCount(list) == 0, "left behind");
    CloseBrwsList(list);
    state.ResumeTiming();
  }
}

void LoadLanguage(benchmark::State& state) {
  int const count = static_cast<int>(state.range(0));
  File const file;
  {
    std::ofstream out(file.Path());
    out << "[LANG]\n1 = English\n[1]\n";
    for (int i = 0; i < count; i++) out << i << " = text number " << i << "\n";
  }
  LangClass lang;
  lang.SetFileName(file.Path());
  std::string const last = "text number " + std::to_string(count - 1);
  for (auto _ : state) {
    Check(lang.LoadStrings(1), "load");
    Check(lang.GetLangStr(count - 1) == last && lang.GetLangStr(count).empty(), "texts");
  }
}

void FillSmallest(benchmark::State& state) { FillList(state, false); }
void FillMaxPlusOne(benchmark::State& state) { FillList(state, true); }

BENCHMARK(FillSmallest)->Name("fill-smallest/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(FillMaxPlusOne)->Name("fill-max-plus-one/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveAndAdd)->Name("add-and-remove-one/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(WalkList)->Name("open-and-walk/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveGroup)->Name("remove-group/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadLanguage)->Name("load-language/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
