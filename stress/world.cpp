#include "stress/world.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "support/scratch.h"

namespace stress {

namespace fs = std::filesystem;

namespace {

constexpr char kProgram[] = "program/stress";
constexpr char kPs[] = "only/ps";

bool IsTemporary(std::string const& name) {
  return name.find("/.zelv") != std::string::npos && name.find("/.zelvane") == std::string::npos;
}

// The directories that always exist, and what this program puts into them.
constexpr char const* kOurs[] = {"root", "home", "only", "here", "program", kProgram, kPs};
bool IsOurs(std::string const& name) { return std::find(std::begin(kOurs), std::end(kOurs), name) != std::end(kOurs); }

}  // namespace

World::World(std::string const& folder) : base(folder) {
  for (char const* name : {"root", "home", "only"}) fs::create_directories(base + name);
  test::WriteFile(base + kPs, "#!/bin/sh\nexec /bin/cat '" + base + "only/output'\n");
  fs::permissions(base + kPs, fs::perms::all);
  // A separate directory: files written to the current directory by mistake must show.
  fs::create_directories(base + "here");
  fs::current_path(base + "here");
  setenv("HOME", (base + "home").c_str(), 1);
  setenv("PATH", (base + "only").c_str(), 1);
  setenv("TMPDIR", (base + "root").c_str(), 1);
  unsetenv("TMP");
  unsetenv("TEMP");
  setenv("TZ", "UTC", 1);
  setenv("ZELVANE_TEST_SETTINGS", (base + "zelvane.conf").c_str(), 1);
}

Files World::Get() const {
  Files files;
  for (auto const& entry : fs::recursive_directory_iterator(base)) {
    std::string const name = entry.path().string().substr(base.size());
    if (IsOurs(name) || IsTemporary(name)) continue;
    if (entry.is_directory())
      files[name + "/"];
    else
      files[name] = test::ReadFile(entry.path().string());
  }
  // A directory that contains files is not listed itself.
  for (auto file = files.begin(); file != files.end();) {
    auto const next = std::next(file);
    bool const shown = file->first.back() == '/' && next != files.end() &&
                       next->first.compare(0, file->first.size(), file->first) == 0;
    file = shown ? files.erase(file) : next;
  }
  return files;
}

void World::ForgetOtherRoot() {
  for (auto const& entry : fs::directory_iterator(base + "program"))
    if (entry.path() != base + kProgram) fs::remove_all(entry.path());
}

std::vector<std::string> World::Leftovers() const {
  std::vector<std::string> names;
  for (auto const& entry : fs::recursive_directory_iterator(base))
    if (IsTemporary(entry.path().string())) names.push_back(entry.path().string().substr(base.size()));
  return names;
}

void World::Set(Files const& files) {
  Files wanted = files;
  std::size_t at = 0;
  for (auto& [name, bytes] : wanted)
    while ((at = bytes.find("<root>")) != std::string::npos) bytes.replace(at, 6, base + "root");
  for (std::string const& name : Leftovers()) fs::remove(base + name);
  Files const present = Get();
  for (auto const& [name, bytes] : present)
    if (wanted.count(name) == 0) fs::remove_all(base + (name.back() == '/' ? name.substr(0, name.size() - 1) : name));
  for (auto const& [name, bytes] : wanted) {
    auto const there = present.find(name);
    if (there != present.end() && there->second == bytes) continue;
    fs::create_directories(fs::path(base + name).parent_path());
    if (name.back() != '/') test::WriteFile(base + name, bytes);
  }
  // Directories that a scenario has created and that are now empty.
  for (auto const& entry : fs::directory_iterator(base + "root"))
    if (entry.is_directory() && fs::is_empty(entry.path())) fs::remove(entry.path());
  noted_ = 0;
}

char const* World::Path(char const* name) {
  char* const path = paths_[nextPath_++ % 8];
  std::snprintf(path, sizeof paths_[0], "%s%s", base.c_str(), name);
  return path;
}

char const* World::Root(char const* name) {
  char* const path = paths_[nextPath_++ % 8];
  std::snprintf(path, sizeof paths_[0], "%sroot/%s", base.c_str(), name);
  return path;
}

void World::Note(char const* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  int const length = std::vsnprintf(notes_ + noted_, sizeof notes_ - noted_, format, arguments);
  va_end(arguments);
  if (length > 0) noted_ = std::min(noted_ + static_cast<std::size_t>(length), sizeof notes_ - 1);
}

std::string World::TakeNotes() {
  std::string const notes(notes_, noted_);
  noted_ = 0;
  return notes;
}

}  // namespace stress
