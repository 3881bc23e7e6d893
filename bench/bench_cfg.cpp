// Compares the configuration engine with GKeyFile and SimpleIni, which keep comments too, and inih, which only reads.
#include <INIReader.h>
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#include <glib.h>
#include <malloc.h>

#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string_view>
#include <vector>

#include "bench.h"
#include "zelvane/config/cfgclass.h"

namespace {

constexpr int kKeysPerSection = 50;

struct Entry {
  std::string section, key, value;
};

// A file of `count` keys with comments and blank lines, and its entries.
struct Sample {
  ScratchFile file;
  std::vector<Entry> entries;

  explicit Sample(int count) : file("cfg-" + std::to_string(count)) {
    std::mt19937 random(static_cast<unsigned>(count));
    std::ofstream out(file.Path());
    for (int i = 0; i < count; i++) {
      if (i % kKeysPerSection == 0) out << "\n# settings of one unit\n[UNIT" << i / kKeysPerSection << "]\n";
      if (i % 10 == 0) out << "# a note on what follows\n";
      Entry entry{"UNIT" + std::to_string(i / kKeysPerSection),
                  "KEY" + std::to_string(random() % 100000) + "X" + std::to_string(i % kKeysPerSection),
                  std::string(random() % 40 + 1, 'v')};
      out << entry.key << "=" << entry.value << "\n";
      entries.push_back(std::move(entry));
    }
  }

  static Sample const& Of(benchmark::State const& state) {
    static std::map<int, Sample> samples;
    int const count = static_cast<int>(state.range(0));
    return samples.try_emplace(count, count).first->second;
  }

  char const* Path() const { return file.Path().c_str(); }
  Entry const& Middle() const { return entries[entries.size() / 2]; }
};

// The text of the last save while saves do not reach the disk. Every engine produces a text; how a program then writes
// it safely to disk is a separate question.
bool g_saveToDisk = true;
std::string_view g_savedText;

}  // namespace

// Replaces the library's safe save (through the linker's --wrap).
#define ZELVANE_SAFE_SAVE(prefix) \
  prefix##_ZN7zelvane8internal8SafeSaveERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt17basic_string_viewIcS4_E
extern "C" bool ZELVANE_SAFE_SAVE(__real_)(std::string const& path, std::string_view text);
extern "C" bool ZELVANE_SAFE_SAVE(__wrap_)(std::string const& path, std::string_view text) {
  if (g_saveToDisk) return ZELVANE_SAFE_SAVE(__real_)(path, text);
  g_savedText = text;
  benchmark::DoNotOptimize(text.data());
  return true;
}

namespace {

// ---- The engines. Each opens a file, reads and writes keys, visits all of them and produces the text to be saved.
// ----

class Ours {
 public:
  static constexpr char const* kName = "ours";
  explicit Ours(char const* path) { Require(path == nullptr || (cfg_.Open(path) && !cfg_.IsFail()), "load"); }
  ~Ours() {
    g_saveToDisk = false;
    cfg_.Close();
    g_saveToDisk = true;
  }

  std::string Read(Entry const& entry) { return cfg_.ReadStr(entry.section.c_str(), entry.key.c_str(), ""); }
  std::string ReadByStrings(Entry const& entry) { return cfg_.ReadStr(entry.section, entry.key, std::string()); }

  void Write(Entry const& entry) {
    cfg_.SetCached(true);
    Require(cfg_.WriteStr(entry.section.c_str(), entry.key.c_str(), entry.value.c_str()), "write");
  }

  std::size_t TextSize() {
    g_saveToDisk = false;
    Require(cfg_.Flush(), "text");
    g_saveToDisk = true;
    return g_savedText.size();
  }

  void Save(char const*) { Require(cfg_.Flush(), "save"); }

  std::size_t Walk() {
    std::size_t bytes = 0;
    for (unsigned long s = 0; s < cfg_.GetSectionCount(); s++) {
      cfg_.SetSection(cfg_.GetSectionName(s));
      for (unsigned long k = 0; k < cfg_.GetKeyCount(); k++)
        bytes += cfg_.GetKeyName(k).size() + cfg_.ReadStr(k, "").size();
    }
    return bytes;
  }

 private:
  CfgClass cfg_;
};

class KeyFile {
 public:
  static constexpr char const* kName = "gkeyfile";
  explicit KeyFile(char const* path) : file_(g_key_file_new()) {
    Require(path == nullptr || g_key_file_load_from_file(file_, path, G_KEY_FILE_KEEP_COMMENTS, nullptr), "load");
  }
  ~KeyFile() { g_key_file_free(file_); }

  std::string Read(Entry const& entry) {
    gchar* const value = g_key_file_get_value(file_, entry.section.c_str(), entry.key.c_str(), nullptr);
    std::string result(value == nullptr ? "" : value);
    g_free(value);
    return result;
  }

  void Write(Entry const& entry) {
    g_key_file_set_value(file_, entry.section.c_str(), entry.key.c_str(), entry.value.c_str());
  }

  std::size_t TextSize() {
    gsize size = 0;
    g_free(g_key_file_to_data(file_, &size, nullptr));
    return size;
  }

  void Save(char const* path) { Require(g_key_file_save_to_file(file_, path, nullptr), "save"); }

  std::size_t Walk() {
    std::size_t bytes = 0;
    gchar** const groups = g_key_file_get_groups(file_, nullptr);
    for (gchar** group = groups; *group != nullptr; group++) {
      gchar** const keys = g_key_file_get_keys(file_, *group, nullptr, nullptr);
      for (gchar** key = keys; *key != nullptr; key++) {
        gchar* const value = g_key_file_get_value(file_, *group, *key, nullptr);
        bytes += std::strlen(*key) + std::strlen(value);
        g_free(value);
      }
      g_strfreev(keys);
    }
    g_strfreev(groups);
    return bytes;
  }

 private:
  GKeyFile* file_;
};

class Simple {
 public:
  static constexpr char const* kName = "simpleini";
  explicit Simple(char const* path) { Require(path == nullptr || ini_.LoadFile(path) == SI_OK, "load"); }

  std::string Read(Entry const& entry) { return ini_.GetValue(entry.section.c_str(), entry.key.c_str(), ""); }
  void Write(Entry const& entry) { ini_.SetValue(entry.section.c_str(), entry.key.c_str(), entry.value.c_str()); }
  std::size_t TextSize() {
    std::string text;
    Require(ini_.Save(text) == SI_OK, "text");
    return text.size();
  }
  void Save(char const* path) { Require(ini_.SaveFile(path, false) == SI_OK, "save"); }

  std::size_t Walk() {
    std::size_t bytes = 0;
    CSimpleIniA::TNamesDepend sections, keys;
    ini_.GetAllSections(sections);
    for (auto const& section : sections) {
      ini_.GetAllKeys(section.pItem, keys);
      for (auto const& key : keys)
        bytes += std::strlen(key.pItem) + std::strlen(ini_.GetValue(section.pItem, key.pItem, ""));
    }
    return bytes;
  }

 private:
  CSimpleIniA ini_;
};

class Inih {
 public:
  static constexpr char const* kName = "inih";
  explicit Inih(char const* path) : reader_(path) { Require(reader_.ParseError() == 0, "load"); }
  std::string Read(Entry const& entry) { return reader_.Get(entry.section, entry.key, ""); }

 private:
  INIReader reader_;
};

// ---- The tasks. ----

template <class Engine>
void Load(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  for (auto _ : state) Engine engine(sample.Path());
}

// The life of one exported call: load everything, read ten keys, free everything.
template <class Engine>
void ReadTen(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  for (auto _ : state) {
    Engine engine(sample.Path());
    for (std::size_t i = 0; i < 10; i++) {
      Entry const& entry = sample.entries[i * (sample.entries.size() / 10)];
      Require(engine.Read(entry) == entry.value, "ten keys");
    }
  }
}

// Look-ups in an open file, the first one included: pairs from all parts of it, spelled as in the file.
template <class Engine, std::string (Engine::*Read)(Entry const&) = &Engine::Read>
void LookUp(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  std::mt19937 random(3);
  std::vector<Entry const*> picks(10000);
  for (auto& pick : picks) pick = &sample.entries[random() % sample.entries.size()];
  for (auto _ : state) {
    state.PauseTiming();
    {
      Engine engine(sample.Path());
      state.ResumeTiming();
      for (Entry const* pick : picks) Require((engine.*Read)(*pick) == pick->value, "look-up");
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
}

template <class Engine>
void ChangeText(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  Engine engine(sample.Path());
  for (auto _ : state) {
    engine.Write(sample.Middle());
    Require(engine.TextSize() > sample.entries.size(), "text");
  }
  Require(engine.Read(sample.Middle()) == sample.Middle().value, "changed value");
}

template <class Engine>
void ChangeAndSave(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  ScratchFile const copy("copy");
  std::ofstream(copy.Path()) << std::ifstream(sample.Path()).rdbuf();
  Engine engine(copy.Path().c_str());
  for (auto _ : state) {
    engine.Write(sample.Middle());
    engine.Save(copy.Path().c_str());
  }
  Require(Engine(copy.Path().c_str()).Read(sample.Middle()) == sample.Middle().value, "saved value");
}

// All names and values of a file that is open, for the first time.
template <class Engine>
void Walk(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  std::size_t bytes = 0;
  for (Entry const& entry : sample.entries) bytes += entry.key.size() + entry.value.size();
  for (auto _ : state) {
    state.PauseTiming();
    {
      Engine engine(sample.Path());
      state.ResumeTiming();
      Require(engine.Walk() == bytes, "walk");
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
}

template <class Engine>
void Build(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  ScratchFile const empty("empty");
  std::ofstream(empty.Path()).flush();
  for (auto _ : state) {
    Engine engine(std::is_same_v<Engine, Ours> ? empty.Path().c_str() : nullptr);
    for (Entry const& entry : sample.entries) engine.Write(entry);
    Require(engine.TextSize() > sample.entries.size() * 4, "text");
  }
}

// Heap bytes per key, after the load or after everything has been read.
template <class Engine, bool kWalk>
void Memory(benchmark::State& state) {
  Sample const& sample = Sample::Of(state);
  auto const used = [] {
    struct mallinfo2 const info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
  };
  double bytes = 0;
  for (auto _ : state) {
    double const before = used();
    Engine engine(sample.Path());
    if constexpr (kWalk) Require(engine.Walk() > 0, "walk");
    bytes = used() - before;
  }
  state.counters["bytes"] = bytes / static_cast<double>(sample.entries.size());
}

// One section of `count` keys, accessed by number. No comparison library does this; the cost of one step must not grow
// with count.
void FillOne(CfgClass& cfg, std::string const& path, int count) {
  std::ofstream(path).flush();
  Require(cfg.Open(path), "open");
  cfg.SetCached(true);
  cfg.SetSection("S");
  for (int i = 0; i < count; i++) cfg.WriteInt("K" + std::to_string(i), i);
}

void OursJump(benchmark::State& state) {
  ScratchFile const file("jump");
  int const count = static_cast<int>(state.range(0));
  CfgClass cfg;
  FillOne(cfg, file.Path(), count);
  std::mt19937 random(5);
  for (auto _ : state) benchmark::DoNotOptimize(cfg.GetKeyName(random() % static_cast<unsigned>(count)));
}

void OursWalkDeleting(benchmark::State& state) {
  ScratchFile const file("delete");
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    CfgClass cfg;
    FillOne(cfg, file.Path(), count);
    state.ResumeTiming();
    for (unsigned long n = 0; n < cfg.GetKeyCount(); n++) cfg.DeleteKey(n);  // every second key
    Require(cfg.GetKeyCount() == static_cast<unsigned long>(count) / 2, "deletions");
  }
}

template <class Engine>
void Register(char const* task, void (*run)(benchmark::State&), std::initializer_list<int> sizes) {
  auto* const rows = benchmark::RegisterBenchmark((std::string(task) + "/" + Engine::kName).c_str(), run);
  for (int const size : sizes) rows->Arg(size);
  rows->Unit(benchmark::kMicrosecond);
}

// Five powers of ten for the plot, among them the three sizes of the table.
constexpr auto kSizes = {100, 1000, 10000, 100000, 1000000};

int const kRegistered = [] {
  Register<Ours>("load", Load<Ours>, kSizes);
  Register<KeyFile>("load", Load<KeyFile>, kSizes);
  Register<Simple>("load", Load<Simple>, kSizes);
  Register<Inih>("load", Load<Inih>, kSizes);
  Register<Ours>("read-ten-keys", ReadTen<Ours>, {100, 10000});
  Register<KeyFile>("read-ten-keys", ReadTen<KeyFile>, {100, 10000});
  Register<Simple>("read-ten-keys", ReadTen<Simple>, {100, 10000});
  Register<Inih>("read-ten-keys", ReadTen<Inih>, {100, 10000});
  Register<Ours>("look-up-10000", LookUp<Ours>, kSizes);
  Register<KeyFile>("look-up-10000", LookUp<KeyFile>, kSizes);
  Register<Simple>("look-up-10000", LookUp<Simple>, {100, 10000, 1000000});
  Register<Inih>("look-up-10000", LookUp<Inih>, {100, 10000, 1000000});
  Register<Ours>("look-up-10000-strings", LookUp<Ours, &Ours::ReadByStrings>, {100, 10000, 1000000});
  Register<KeyFile>("look-up-10000-strings", LookUp<KeyFile>, {100, 10000, 1000000});
  Register<Ours>("change-to-text", ChangeText<Ours>, kSizes);
  Register<KeyFile>("change-to-text", ChangeText<KeyFile>, kSizes);
  Register<Simple>("change-to-text", ChangeText<Simple>, kSizes);
  Register<Ours>("change-and-save", ChangeAndSave<Ours>, {100, 10000, 1000000});
  Register<KeyFile>("change-and-save", ChangeAndSave<KeyFile>, {100, 10000, 1000000});
  Register<Simple>("change-and-save", ChangeAndSave<Simple>, {100, 10000, 1000000});
  Register<Ours>("walk-by-index", Walk<Ours>, kSizes);
  Register<KeyFile>("walk-by-index", Walk<KeyFile>, kSizes);
  Register<Simple>("walk-by-index", Walk<Simple>, {100, 10000, 1000000});
  Register<Ours>("build", Build<Ours>, kSizes);
  Register<KeyFile>("build", Build<KeyFile>, kSizes);
  Register<Simple>("build", Build<Simple>, kSizes);
  Register<Ours>("memory-after-load", Memory<Ours, false>, {100, 10000, 1000000});
  Register<KeyFile>("memory-after-load", Memory<KeyFile, false>, {100, 10000, 1000000});
  Register<Simple>("memory-after-load", Memory<Simple, false>, {100, 10000, 1000000});
  Register<Ours>("memory-after-walk", Memory<Ours, true>, {100, 10000, 1000000});
  Register<KeyFile>("memory-after-walk", Memory<KeyFile, true>, {100, 10000, 1000000});
  Register<Simple>("memory-after-walk", Memory<Simple, true>, {100, 10000, 1000000});
  Register<Ours>("jump-by-index", OursJump, {1000, 100000, 1000000});
  Register<Ours>("walk-deleting", OursWalkDeleting, {1000, 100000});
  return 0;
}();

}  // namespace
