#include "files/damage.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "files/input.h"
#include "files/recordlog.h"
#include "terminal/terminal.h"

namespace {

// Records as strings.
class Records {
 public:
  Records(std::vector<unsigned char> const& bytes, std::uint64_t recordSize)
      : bytes_(reinterpret_cast<char const*>(bytes.data())),
        size_(static_cast<std::size_t>(recordSize)),
        count_(bytes.size() / size_) {}

  std::size_t Count() const { return count_; }
  std::string_view operator[](std::size_t i) const { return {bytes_ + i * size_, size_}; }
  std::string_view Run(std::size_t first, std::size_t count) const { return {bytes_ + first * size_, count * size_}; }
  std::int32_t Stamp(std::size_t i) const {
    return StampOf(reinterpret_cast<unsigned char const*>(bytes_ + i * size_));
  }
  std::string_view Payload(std::size_t i) const { return (*this)[i].substr(kStampSize); }

 private:
  char const* bytes_;
  std::size_t size_;
  std::size_t count_;
};

bool IsZero(std::string_view bytes) { return bytes.find_first_not_of('\0') == std::string_view::npos; }

}  // namespace

std::vector<unsigned char> LoadRecords(RecordLog const& log) {
  std::vector<unsigned char> bytes;
  bytes.reserve(static_cast<std::size_t>(log.Count() * log.RecordSize()));
  log.ForEachBlock(
      [&](unsigned char const* block, std::size_t size) { bytes.insert(bytes.end(), block, block + size); });
  return bytes;
}

Damage::Damage(std::vector<unsigned char> const& bytes, std::uint64_t recordSize) {
  Records const records(bytes, recordSize);
  isLeftOut.resize(records.Count());
  auto const leaveOut = [this](Fault& fault, std::size_t i) { fault.Add(i), isLeftOut[i] = true; };

  std::size_t end = records.Count();
  while (end > 0 && IsZero(records[end - 1])) end--;
  for (std::size_t i = end; i < records.Count(); i++) leaveOut(zero, i);

  std::unordered_map<std::string_view, std::size_t> last;  // last position of each record
  for (std::size_t i = 0; i < end;) {
    auto const [met, isNew] = last.try_emplace(records[i], i);
    std::size_t const run = i - met->second;
    if (!isNew && i + run <= end && records.Run(met->second, run) == records.Run(i, run)) {
      for (std::size_t const after = i + run; i < after; i++) leaveOut(doubled, i);
    } else {
      met->second = i++;
    }
  }

  std::size_t before = end;  // the last record that is kept
  for (std::size_t i = 0; i < end; i++) {
    if (isLeftOut[i]) continue;
    bool const isBack = before < end && records.Stamp(i) < records.Stamp(before);
    bool const isBeside = isBack && (records.Payload(i) == records.Payload(before) ||
                                     (i + 1 < end && records.Payload(i) == records.Payload(i + 1)));
    if (isBeside && !records.Payload(i).empty()) {
      leaveOut(mixed, i);
    } else {
      before = i;
    }
  }
}

std::uint64_t RecordsLacking(std::vector<unsigned char> const& log, std::vector<unsigned char> const& scratch,
                             std::uint64_t recordSize) {
  Records const old(log, recordSize), copy(scratch, recordSize);
  if (copy.Count() == 0 || copy.Count() > old.Count()) return 0;
  // The record that was appended before the cut can be zeros.
  std::size_t end = old.Count();
  while (end > 1 && IsZero(old[end - 1])) end--;
  std::string_view const last = old[end - 1];
  bool const continues = copy[copy.Count() - 1] == last || (copy.Count() > 1 && copy[copy.Count() - 2] == last);
  if (!continues) return 0;
  std::unordered_set<std::string_view> there;
  for (std::size_t i = 0; i < old.Count(); i++) there.insert(old[i]);
  std::uint64_t lacking = 0;
  for (std::size_t i = 0; i < copy.Count(); i++) lacking += there.count(copy[i]) == 0;
  return lacking;
}

std::string ReadText(std::string const& path) {
  if (std::filesystem::is_directory(path)) throw Failed(path + ": not a file");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw FileFailed(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TextDamage InspectText(std::string const& text) {
  TextDamage damage;
  damage.length = text.size();
  damage.lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
  damage.tornBytes = text.size() - (text.rfind('\n') + 1);
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\0') continue;
    damage.nulBytes++;
    damage.nulRuns += i == 0 || text[i - 1] != '\0';
  }
  return damage;
}

std::string WithoutNul(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  return text;
}
