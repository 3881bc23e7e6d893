// The configuration engine beside GLib's GKeyFile, which keeps comments too. Files lie in memory.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "zelvane/config/cfgclass.h"

namespace {

constexpr int kKeysPerSection = 100;

[[noreturn]] void Different(char const* what) {
  std::fprintf(stderr, "ours and the peer differ: %s\n", what);
  std::exit(1);
}

struct Entry {
  std::string section, key, value;
};

// A file of `count` keys with comments and blank lines, and its entries.
struct Sample {
  std::string path;
  std::vector<Entry> entries;

  explicit Sample(int count)
      : path("/dev/shm/zelvane-bench-" + std::to_string(getpid()) + "-" + std::to_string(count)) {
    std::mt19937 random(static_cast<unsigned>(count));
    std::ofstream out(path);
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
  ~Sample() { unlink(path.c_str()); }

  static Sample const& Of(int count) {
    static std::map<int, Sample> samples;
    return samples.try_emplace(count, count).first->second;
  }
};

GKeyFile* LoadPeer(Sample const& sample) {
  GKeyFile* file = g_key_file_new();
  if (!g_key_file_load_from_file(file, sample.path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr)) Different("load");
  return file;
}

void LoadOurs(CfgClass& cfg, Sample const& sample) {
  if (!cfg.Open(sample.path) || cfg.IsFail()) Different("load");
}

void OursLoad(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    CfgClass cfg;
    LoadOurs(cfg, sample);
  }
}

void PeerLoad(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  for (auto _ : state) g_key_file_free(LoadPeer(sample));
}

std::vector<Entry const*> Picks(Sample const& sample) {
  std::mt19937 random(3);
  std::vector<Entry const*> picks(10000);
  for (auto& pick : picks) pick = &sample.entries[random() % sample.entries.size()];
  return picks;
}

void OursLookUp(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  auto const picks = Picks(sample);
  CfgClass cfg;
  LoadOurs(cfg, sample);
  for (Entry const* pick : picks)
    if (cfg.ReadStr(pick->section, pick->key, "") != pick->value) Different("look-up");
  for (auto _ : state)
    for (Entry const* pick : picks) benchmark::DoNotOptimize(cfg.ReadStr(pick->section.c_str(), pick->key.c_str(), ""));
}

void PeerLookUp(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  auto const picks = Picks(sample);
  GKeyFile* file = LoadPeer(sample);
  for (auto _ : state)
    for (Entry const* pick : picks)
      g_free(g_key_file_get_value(file, pick->section.c_str(), pick->key.c_str(), nullptr));
  g_key_file_free(file);
}

void OursChange(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  Entry const& entry = sample.entries[sample.entries.size() / 2];
  CfgClass cfg;
  LoadOurs(cfg, sample);
  for (auto _ : state)
    if (!cfg.WriteStr(entry.section, entry.key, entry.value)) Different("save");
}

void PeerChange(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  Entry const& entry = sample.entries[sample.entries.size() / 2];
  GKeyFile* file = LoadPeer(sample);
  for (auto _ : state) {
    g_key_file_set_value(file, entry.section.c_str(), entry.key.c_str(), entry.value.c_str());
    if (!g_key_file_save_to_file(file, sample.path.c_str(), nullptr)) Different("save");
  }
  g_key_file_free(file);
}

void OursWalk(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  CfgClass cfg;
  LoadOurs(cfg, sample);
  for (auto _ : state) {
    std::size_t bytes = 0;
    for (unsigned long s = 0; s < cfg.GetSectionCount(); s++) {
      cfg.SetSection(cfg.GetSectionName(s));
      for (unsigned long k = 0; k < cfg.GetKeyCount(); k++)
        bytes += cfg.GetKeyName(k).size() + cfg.ReadStr(k, "").size();
    }
    benchmark::DoNotOptimize(bytes);
  }
}

void PeerWalk(benchmark::State& state) {
  Sample const& sample = Sample::Of(static_cast<int>(state.range(0)));
  GKeyFile* file = LoadPeer(sample);
  for (auto _ : state) {
    std::size_t bytes = 0;
    gchar** groups = g_key_file_get_groups(file, nullptr);
    for (gchar** group = groups; *group != nullptr; group++) {
      gchar** keys = g_key_file_get_keys(file, *group, nullptr, nullptr);
      for (gchar** key = keys; *key != nullptr; key++) {
        gchar* value = g_key_file_get_value(file, *group, *key, nullptr);
        bytes += std::char_traits<char>::length(*key) + std::char_traits<char>::length(value);
        g_free(value);
      }
      g_strfreev(keys);
    }
    g_strfreev(groups);
    benchmark::DoNotOptimize(bytes);
  }
  g_key_file_free(file);
}

// One section of `count` keys, addressed by number. No peer does this; the cost of one step shall not grow with count.
void FillOne(CfgClass& cfg, std::string const& path, int count) {
  std::ofstream(path).flush();
  if (!cfg.Open(path)) Different("open");
  cfg.SetCached(true);
  cfg.SetSection("S");
  for (int i = 0; i < count; i++) cfg.WriteInt("K" + std::to_string(i), i);
}

void OursJump(benchmark::State& state) {
  std::string const path = "/dev/shm/zelvane-bench-jump-" + std::to_string(getpid());
  int const count = static_cast<int>(state.range(0));
  CfgClass cfg;
  FillOne(cfg, path, count);
  std::mt19937 random(5);
  for (auto _ : state) benchmark::DoNotOptimize(cfg.GetKeyName(random() % static_cast<unsigned>(count)));
  unlink(path.c_str());
}

void OursWalkDeleting(benchmark::State& state) {
  std::string const path = "/dev/shm/zelvane-bench-delete-" + std::to_string(getpid());
  int const count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    CfgClass cfg;
    FillOne(cfg, path, count);
    state.ResumeTiming();
    for (unsigned long n = 0; n < cfg.GetKeyCount(); n++) cfg.DeleteKey(n);  // every second one
    if (cfg.GetKeyCount() != static_cast<unsigned long>(count) / 2) Different("deletions");
  }
  state.SetItemsProcessed(state.iterations() * count);
  unlink(path.c_str());
}

#define ZELVANE_PAIR(task, ours, peer)                                                                    \
  BENCHMARK(ours)->Name(task "/ours")->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond); \
  BENCHMARK(peer)->Name(task "/gkeyfile")->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond)
ZELVANE_PAIR("load", OursLoad, PeerLoad);
ZELVANE_PAIR("look-up-10000", OursLookUp, PeerLookUp);
ZELVANE_PAIR("change-and-save", OursChange, PeerChange);
ZELVANE_PAIR("walk-by-index", OursWalk, PeerWalk);
BENCHMARK(OursJump)->Name("jump-by-index/ours")->Arg(1000)->Arg(100000)->Arg(1000000);
BENCHMARK(OursWalkDeleting)->Name("walk-deleting/ours")->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
