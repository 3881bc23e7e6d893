#include "support/scratch.h"

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <utility>

namespace fs = std::filesystem;

namespace test {
namespace {

bool g_watched = false;  // whether a listener asks for leftovers
std::vector<std::string> g_leftovers;
std::set<std::string> g_written;

// Temporary files of a save (.zelv and eight characters) and of a log cut.
bool IsTemporary(fs::path const& path) {
  std::string const name = path.filename().string();
  return (name.size() == 13 && name.rfind(".zelv", 0) == 0) || path.extension() == ".tmp" ||
         path.extension() == ".tmp~";
}

}  // namespace

Scratch::Scratch() {
  std::string pattern = (fs::temp_directory_path() / "zelvane-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder: " + pattern);
  folder_ = pattern + "/";
}

Scratch::~Scratch() {
  std::error_code ignored;
  if (g_watched) {
    for (auto const& entry : fs::recursive_directory_iterator(folder_, ignored))
      if (IsTemporary(entry) && fs::symlink_status(entry).type() == fs::file_type::regular &&
          g_written.count(entry.path().string()) == 0)
        g_leftovers.push_back(entry.path().string());
  }
  fs::remove_all(folder_, ignored);
}

std::string Scratch::Write(std::string const& name, std::string const& bytes) const {
  fs::create_directories(fs::path(Path(name)).parent_path());
  WriteFile(Path(name), bytes);
  return Path(name);
}

std::string Scratch::Read(std::string const& name) const { return ReadFile(Path(name)); }

bool Scratch::Exists(std::string const& name) const { return fs::exists(fs::symlink_status(Path(name))); }

std::vector<std::string> Scratch::List() const {
  std::vector<std::string> names;
  for (auto const& entry : fs::recursive_directory_iterator(folder_)) {
    std::error_code loop;  // a link to itself is not a directory
    names.push_back(entry.path().string().substr(folder_.size()) + (entry.is_directory(loop) ? "/" : ""));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadFile(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteFile(std::string const& path, std::string const& bytes) {
  if (g_watched && IsTemporary(path)) g_written.insert(path);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path);
}

std::vector<std::string> TakeLeftovers() {
  g_watched = true;
  g_written.clear();
  return std::exchange(g_leftovers, {});
}

int OpenDescriptors() {
  fs::directory_iterator folder("/proc/self/fd");
  return static_cast<int>(std::distance(fs::begin(folder), fs::end(folder))) - 1;
}

}  // namespace test
