#include "stress/crashstates.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <stdexcept>

namespace stress {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kSector = 512;

Disk* g_disk = nullptr;

std::string FolderOf(std::string const& name) { return name.substr(0, name.rfind('/') + 1); }

// Returns these bytes of a file's pages; 0 where there are none.
std::string Piece(std::string const& bytes, std::size_t at, std::size_t size) {
  std::string piece = at < bytes.size() ? bytes.substr(at, size) : "";
  piece.resize(size, '\0');
  return piece;
}

}  // namespace

// ---- Choices ----

unsigned Choices::Of(std::size_t count) {
  if (count < 2) return 0;
  auto const most = static_cast<unsigned>(count);
  if (random_) return chance_() % most;
  if (at_ == taken_.size()) taken_.emplace_back(0, most);
  return taken_[at_++].first;
}

bool Choices::Next() {
  at_ = 0;
  if (random_) return true;
  while (!taken_.empty() && ++taken_.back().first == taken_.back().second) taken_.pop_back();
  return !taken_.empty();
}

void Choices::ByChance(unsigned seed) {
  random_ = true;
  chance_.seed(seed);
}

// ---- Recording ----

Disk::Disk(World const& world) : base_(world.base) {
  for (auto const& [name, bytes] : world.Get()) {
    if (name.back() == '/') continue;
    before_[name] = static_cast<int>(files_.size());
    files_.push_back({name, 0644, {{0, bytes, bytes.size()}}, {0}});
  }
  names_ = before_;
  g_disk = this;
  ShimRecord(Record);
}

Disk::~Disk() {
  ShimRecord(nullptr);
  g_disk = nullptr;
}

void Disk::Record(ShimDone const* call) { g_disk->Take(*call); }

Files Disk::Stop() {
  ShimRecord(nullptr);
  Files files;
  for (auto const& [name, file] : names_) {
    Version const& last = files_[static_cast<std::size_t>(file)].versions.back();
    files[name] = last.bytes.substr(0, last.size);
  }
  return files;
}

void Disk::Told() {
  told_.push_back(steps_.size());
  steps_.push_back("success told");
}

// Returns the name below the base directory; "" for any other.
std::string Disk::Below(char const* path) const {
  std::string name = path;
  for (std::size_t at = 0; (at = name.find("//", at)) != std::string::npos;) name.erase(at, 1);
  if (name + "/" == base_) return "./";
  return name.compare(0, base_.size(), base_) == 0 ? name.substr(base_.size()) : "";
}

void Disk::Take(ShimDone const& call) {
  auto const open = open_.find(call.fd);
  switch (call.change) {
    case SHIM_OPENED: return Opened(call);
    case SHIM_WROTE:
      if (open != open_.end())
        Write(open->second, {static_cast<char const*>(call.bytes), call.size}, static_cast<std::size_t>(call.at));
      return;
    case SHIM_SIZED:
      if (open != open_.end()) Resize(open->second, static_cast<std::size_t>(call.at));
      return;
    case SHIM_SYNCED:
      if (auto const folder = folders_.find(call.fd); folder != folders_.end()) {
        syncs_.push_back({steps_.size(), folder->second});
        steps_.push_back("sync of folder " + folder->second);
      } else if (open != open_.end()) {
        File& file = files_[static_cast<std::size_t>(open->second)];
        Version const last = file.versions.back();
        Changed(open->second, "sync", last.bytes.substr(0, last.size), last.size);
        file.settled.push_back(file.versions.size() - 1);
      }
      return;
    case SHIM_RENAMED:
      if (names_.count(Below(call.path)) > 0)
        Named("rename to ", {{Below(call.to), names_.at(Below(call.path))}, {Below(call.path), -1}});
      return;
    case SHIM_LINKED:
      if (names_.count(Below(call.path)) > 0) Named("link ", {{Below(call.to), names_.at(Below(call.path))}});
      return;
    case SHIM_REMOVED:
      if (names_.count(Below(call.path)) > 0) Named("removal of ", {{Below(call.path), -1}});
      return;
  }
}

void Disk::Opened(ShimDone const& call) {
  open_.erase(call.fd);
  folders_.erase(call.fd);
  std::string const name = Below(call.path);
  struct stat status;
  if (name.empty() || fstat(call.fd, &status) != 0) return;
  if (S_ISDIR(status.st_mode)) folders_[call.fd] = name.back() == '/' ? name : name + "/";
  if (!S_ISREG(status.st_mode)) return;
  auto const known = names_.find(name);
  if (known == names_.end()) {
    int const file = static_cast<int>(files_.size());
    files_.push_back({name, status.st_mode & 07777, {{steps_.size(), "", 0}}, {0}});
    Named("creation of ", {{name, file}});
    open_[call.fd] = file;
  } else {
    open_[call.fd] = known->second;
    if ((call.flags & O_TRUNC) != 0) Resize(known->second, 0);
  }
}

void Disk::Named(std::string const& what, std::vector<std::pair<std::string, int>> names) {
  for (auto const& [name, file] : names) {
    if (file < 0)
      names_.erase(name);
    else
      names_[name] = file;
  }
  namings_.push_back({steps_.size(), FolderOf(names[0].first), names});
  steps_.push_back(what + names[0].first);
}

void Disk::Changed(int number, std::string const& what, std::string bytes, std::size_t size) {
  File& file = files_[static_cast<std::size_t>(number)];
  file.versions.push_back({steps_.size(), std::move(bytes), size});
  steps_.push_back(what + " of " + file.name);
}

// Writes page by page: each page can go to the disk, with the length it gave the file, before the next one is written.
void Disk::Write(int file, std::string const& bytes, std::size_t at) {
  for (std::size_t done = 0; done < bytes.size();) {
    std::size_t const piece = std::min(bytes.size() - done, kPage - (at + done) % kPage);
    Version const last = files_[static_cast<std::size_t>(file)].versions.back();
    std::size_t const end = at + done + piece, size = std::max(last.size, end);
    std::string now = last.bytes;
    if (now.size() < size) now.resize(size, '\0');
    std::fill(now.begin() + static_cast<long>(last.size), now.begin() + static_cast<long>(size), '\0');
    now.replace(at + done, piece, bytes, done, piece);
    Changed(file, "write of " + std::to_string(piece) + " bytes at " + std::to_string(at + done), std::move(now), size);
    done += piece;
  }
}

// The last page of a shortened file is filled with 0. Later pages stay until the length is settled.
void Disk::Resize(int file, std::size_t size) {
  Version const last = files_[static_cast<std::size_t>(file)].versions.back();
  std::string now = last.bytes;
  std::size_t const end = std::min(now.size(), (size + kPage - 1) / kPage * kPage);
  if (size < end) std::fill(now.begin() + static_cast<long>(size), now.begin() + static_cast<long>(end), '\0');
  if (now.size() < size) now.resize(size, '\0');
  Changed(file, "length " + std::to_string(size), std::move(now), size);
}

// ---- What a cut leaves ----

std::map<std::string, int> Disk::NamesAt(std::size_t cut, Choices& choices, std::string& how) const {
  std::vector<Naming const*> done;
  std::vector<bool> settled;
  std::size_t journal = 0;  // number of settled names, if names are kept in order
  for (Naming const& naming : namings_) {
    if (naming.step >= cut) break;
    done.push_back(&naming);
    settled.push_back(std::any_of(syncs_.begin(), syncs_.end(), [&](FolderSync const& sync) {
      return sync.step > naming.step && sync.step < cut && sync.folder == naming.folder;
    }));
    if (settled.back()) journal = done.size();
  }
  std::map<std::string, int> names = before_;
  bool const inOrder = choices.Of(2) == 0;
  std::size_t const kept = inOrder ? journal + choices.Of(done.size() - journal + 1) : 0;
  for (std::size_t i = 0; i < done.size(); i++) {
    bool const there = inOrder ? i < kept : settled[i] || choices.Of(2) == 0;
    if (!there) {
      how += "; without the " + steps_[done[i]->step];
      continue;
    }
    for (auto const& [name, file] : done[i]->names) {
      names.erase(name);
      if (file >= 0) names[name] = file;
    }
  }
  return names;
}

std::string Disk::BytesAt(File const& file, std::size_t cut, Choices& choices, std::string& how) const {
  std::size_t first = 0, last = 0;
  while (last + 1 < file.versions.size() && file.versions[last + 1].step < cut) last++;
  for (std::size_t const settled : file.settled)
    if (settled <= last) first = settled;
  std::vector<Version> const& versions = file.versions;
  if (first == last) return versions[first].bytes.substr(0, versions[first].size);

  std::set<std::size_t> sizes;
  for (std::size_t i = first; i <= last; i++) sizes.insert(versions[i].size);
  std::size_t const size = *std::next(sizes.begin(), choices.Of(sizes.size()));
  // Everything from one time, by pages, or by sectors: the last includes the others, but rarely by chance.
  static constexpr std::size_t kGrains[] = {static_cast<std::size_t>(-1), kPage, kSector};
  unsigned const grain = choices.Of(3);
  how += "; " + file.name + " with " + std::to_string(size) + " bytes" +
         (grain == 0   ? ""
          : grain == 1 ? ", page by page"
                       : ", torn") +
         ", of moments";
  std::string bytes;
  while (bytes.size() < size) {
    std::size_t const length = std::min(kGrains[grain], size - bytes.size());
    std::vector<std::pair<std::string, std::size_t>> pieces;
    for (std::size_t i = first; i <= last; i++) {
      std::string piece = Piece(versions[i].bytes, bytes.size(), length);
      if (std::none_of(pieces.begin(), pieces.end(), [&](auto const& other) { return other.first == piece; }))
        pieces.emplace_back(std::move(piece), i);
    }
    auto const& chosen = pieces[choices.Of(pieces.size())];
    if (pieces.size() > 1) how += " " + std::to_string(versions[chosen.second].step);
    bytes += chosen.first;
  }
  return bytes;
}

Disk::State Disk::Cut(Choices& choices) const {
  State state;
  std::size_t const cut = choices.Of(steps_.size() + 1);
  for (std::size_t const step : told_) state.told += step < cut;
  state.how = "power cut after step " + std::to_string(cut) + (cut > 0 ? " (" + steps_[cut - 1] + ")" : "");
  std::map<int, std::string> made;
  for (auto const& [name, number] : NamesAt(cut, choices, state.how)) {
    File const& file = files_[static_cast<std::size_t>(number)];
    if (made.count(number) == 0) made[number] = BytesAt(file, cut, choices, state.how);
    state.files[name] = made[number];
    state.modes[name] = file.mode;
  }
  return state;
}

}  // namespace stress
