#include "zelvane/logs/logclass.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/bytes_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/core/sync_internal.h"
#include "zelvane/core/vtable_internal.h"
#include "zelvane/logs/logclass_internal.h"

using zelvane::internal::Append;
using zelvane::internal::Descriptor;
using zelvane::internal::FileLock;
using zelvane::internal::Folder;
using zelvane::internal::Guard;
using zelvane::internal::kStampSize;
using zelvane::internal::LoadLe32;
using zelvane::internal::Open;
using zelvane::internal::OpenToAppend;
using zelvane::internal::ReadBlock;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::StoreLe32;
using zelvane::internal::SyncData;
using zelvane::internal::SyncFile;
using zelvane::internal::TableOf;
using zelvane::internal::WriteAll;

namespace {

constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kCopyBlock = 65536;
constexpr std::uint64_t kPage = 4096;
constexpr int kLooks = 4;         // checks of a length that is not a multiple of the record length, 1 ms apart
constexpr int kReaderWait = 100;  // milliseconds for which a cut waits for readers

// Returns the length of a record, or 0 if it does not fit into 32 bits.
std::uint64_t RecordLength(unsigned long size) { return size > kMost - kStampSize ? 0 : size + kStampSize; }

std::uint64_t WholeRecords(std::uint64_t bytes, unsigned long size) {
  std::uint64_t const length = RecordLength(size);
  return length == 0 || bytes % length != 0 ? 0 : bytes / length;
}

Descriptor OpenToRead(std::string const& path) { return Open(path.c_str(), O_RDONLY | O_NONBLOCK); }

bool Seek(Descriptor const& file, std::uint64_t position) {
  return lseek(file.Get(), static_cast<off_t>(position), SEEK_SET) >= 0;
}

// Returns the number of records in an open file; 0 where GetFileRegCount returns 0.
unsigned long CountRecords(Descriptor const& file, unsigned long size) {
  struct stat status;
  std::uint64_t const record = RecordLength(size);
  // Of a record that crosses a page, the first half can be visible before the second.
  for (int look = 0; look <= kLooks && record > 0; look++) {
    if (look > 0) Delay(1);
    if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    auto const length = static_cast<std::uint64_t>(status.st_size);
    if (length % record == 0) return static_cast<unsigned long>(std::min<std::uint64_t>(length / record, kMost));
  }
  return 0;
}

// Returns the length of a file that ends in a partial record; 0 for any other file, -1 if it cannot be examined.
off_t TornLength(int file, unsigned long size) {
  struct stat status;
  if (fstat(file, &status) != 0) return -1;
  if (!S_ISREG(status.st_mode)) return 0;
  return WholeRecords(static_cast<std::uint64_t>(status.st_size), size) > 0 ? 0 : status.st_size;
}

// Empties a log that ends in a partial record, after its bytes are backed up. The check is made under the lock: of
// several programs one repairs the log, and the others find it repaired.
bool Repair(int file, std::string const& path, unsigned long size) {
  FileLock const lock(file, FileLock::kAlone, zelvane::internal::kLongestWait);
  if (!lock) return false;
  // While another program writes a record across two pages, its first half can be visible, for as long as that program
  // waits for the processor. Setting the file's time, which the new record does anyway, waits for that write.
  futimens(file, nullptr);
  off_t const torn = TornLength(file, size);
  if (torn == 0) return true;
  if (torn < 0 || !zelvane::internal::BackUp(path, ".bad")) return false;
  off_t const now = TornLength(file, size);
  return now == 0 || (now == torn && ftruncate(file, 0) == 0);
}

// Returns whether a subclass counts no records where this class counts some. Asked before and after, so that a file
// that temporarily cannot be read does not count.
bool IsDisowned(LogClass& log, unsigned long size) {
  return log.LogClass::GetFileRegCount(size) > 0 && log.GetFileRegCount(size) == 0 &&
         log.LogClass::GetFileRegCount(size) > 0;
}

// Writes complete records of `length` bytes at position `at`. A kill ends a write between two pages of the file, so
// each write covers the records of one page. Only a record that crosses the end of a page can then be partial.
bool WriteRecords(Descriptor const& to, std::uint64_t at, char const* bytes, std::uint64_t size, std::uint64_t length) {
  while (size > 0) {
    std::uint64_t const toPageEnd = kPage - at % kPage;
    std::uint64_t const piece = std::min(size, std::max<std::uint64_t>(toPageEnd / length, 1) * length);
    if (!WriteAll(to.Get(), bytes, static_cast<size_t>(piece))) return false;
    at += piece;
    bytes += piece;
    size -= piece;
  }
  return true;
}

// What happens to a file whose write a kill has ended.
enum class Unfinished { kIsDropped, kIsKept };

// Copies the records from the position of `from` to its end over the beginning of `to`. Returns the number of bytes, or
// -1 on failure.
off_t CopyRest(Descriptor const& from, Descriptor const& to, std::uint64_t length, Unfinished unfinished) {
  std::vector<char> block(static_cast<size_t>(std::max<std::uint64_t>(kCopyBlock / length, 1) * length));
  std::uint64_t copied = 0;
  ssize_t got = 0;
  if (!Seek(to, 0)) return -1;
  do {
    Delay(0);
    got = ReadBlock(from.Get(), block.data(), block.size());
    if (got < 0) return -1;
    auto const size = static_cast<std::uint64_t>(got);
    bool const written = unfinished == Unfinished::kIsKept ? WriteRecords(to, copied, block.data(), size, length)
                                                           : WriteAll(to.Get(), block.data(), static_cast<size_t>(got));
    if (!written) return -1;
    copied += size;
  } while (got == static_cast<ssize_t>(block.size()));
  return static_cast<off_t>(copied);
}

// ---- The cut ----

bool IsSame(struct stat const& one, struct stat const& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Returns whether the path names this file, directly or through a link.
bool IsUnder(std::string const& path, struct stat const& file) {
  struct stat status;
  return (lstat(path.c_str(), &status) == 0 && IsSame(status, file)) ||
         (stat(path.c_str(), &status) == 0 && IsSame(status, file));
}

// Returns whether the path is a link to this file.
bool IsLinkTo(std::string const& path, struct stat const& file) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode) && stat(path.c_str(), &status) == 0 &&
         IsSame(status, file);
}

// A file that is removed at the end unless it is kept.
class Passing {
 public:
  Passing() = default;
  ~Passing() {
    if (!path_.empty()) Remove();
  }
  Passing(Passing const&) = delete;
  Passing& operator=(Passing const&) = delete;

  bool Rename(std::string to) {
    if (rename(path_.c_str(), to.c_str()) != 0) return false;
    path_ = std::move(to);
    return true;
  }
  void Take(std::string path) { path_ = std::move(path); }
  void Remove() {
    unlink(path_.c_str());
    Keep();
  }
  void Keep() { path_.clear(); }

 private:
  std::string path_;
};

// Uses only a file created here: a link placed under that name would lead the records elsewhere. A leftover of an
// interrupted cut is removed, unless it is the log under another name.
Descriptor OpenNew(std::string const& path, struct stat const& log) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW;
  Descriptor made = Open(path.c_str(), kFlags, 0600);
  if (!made && errno == EEXIST && !IsUnder(path, log) && unlink(path.c_str()) == 0)
    made = Open(path.c_str(), kFlags, 0600);
  return made;
}

// When the log is synced: before and after it is shortened, or only after.
enum class Syncs { kTwice, kOnce };

// The second half of a cut. If the log were emptied first, a kill could lose everything. With Syncs::kOnce the log is
// shortened before it is synced: a power failure can then remove its last records until the cut is finished.
bool CopyBack(Descriptor const& scratch, Descriptor const& log, std::uint64_t length, Syncs syncs) {
  if (!Seek(scratch, 0)) return false;
  off_t const kept = CopyRest(scratch, log, length, Unfinished::kIsKept);
  return kept >= 0 && (syncs == Syncs::kOnce || SyncData(log.Get())) && ftruncate(log.Get(), kept) == 0 &&
         SyncFile(log.Get());
}

// Removes the first `drop` records of `path`. The remaining records are first copied; the copy takes the name
// `scratchPath` once it is complete and synced. From then on an interrupted cut can be finished. Returns true if all of
// the log is on disk.
bool Cut(std::string const& path, std::string const& scratchPath, std::uint64_t drop, std::uint64_t length,
         Syncs syncs) {
  Descriptor log = Open(path.c_str(), O_RDWR | O_NONBLOCK);
  struct stat status;
  Folder const folder(scratchPath);
  if (!log || !folder || fstat(log.Get(), &status) != 0) return false;
  Passing name;
  std::string unfinished = scratchPath + "~";
  Descriptor const scratch = OpenNew(unfinished, status);
  if (!scratch) return false;
  name.Take(std::move(unfinished));
  if (!Seek(log, drop * length) || CopyRest(log, scratch, length, Unfinished::kIsDropped) < 0 ||
      !SyncFile(scratch.Get()) || !name.Rename(scratchPath) || !folder.Sync())
    return false;
  FileLock const lock(log.Get(), FileLock::kAlone, kReaderWait);
  if (!CopyBack(scratch, log, length, syncs)) {
    name.Keep();
    return false;
  }
  // The removal is synced, because a power failure could bring the scratch file back after the next record was
  // appended. If that record has the same bytes as the one before, log and scratch file look like an interrupted cut,
  // and finishing it would remove the record.
  name.Remove();
  (void)folder.Sync();
  return true;
}

// Returns whether `log` can be the result of a cut of `drop` bytes to the records in `scratch` that was interrupted
// while it copied them back. Each byte is then the old or the new one. The record appended last may be missing from the
// disk. The page with the new end may be filled with zeros before the length is shortened.
bool IsCutBrokenOff(std::string const& log, std::string const& scratch, std::uint64_t drop, std::uint64_t length) {
  std::uint64_t const before = drop + scratch.size();
  if (log.size() > before || log.size() + length < before) return false;
  auto const byte = [](std::string const& text, std::uint64_t at) { return text[static_cast<std::size_t>(at)]; };
  for (std::uint64_t at = drop; at < log.size(); at++) {
    bool const isZero = byte(log, at) == 0;
    bool const isOld = byte(log, at) == byte(scratch, at - drop);
    bool const isNew = at < scratch.size() && byte(log, at) == byte(scratch, at);
    bool const isUnsettled = at >= before - length && (log.size() < before || isZero);
    bool const isFilledUp = isZero && at >= scratch.size() && at / kPage == scratch.size() / kPage;
    if (!isOld && !isNew && !isUnsettled && !isFilledUp) return false;
  }
  return true;
}

// Returns whether the log is a mixture that the records in `scratch` complete. It is not if it already has all of them,
// because the cut had not begun or was finished, or if it is not a result of that cut.
bool IsMixture(std::string const& log, std::string const& scratch, std::uint64_t length) {
  if (log == scratch) return false;
  std::uint64_t const whole = log.size() / length * length;
  if (whole == log.size() && whole > scratch.size()) {
    if (log.compare(log.size() - scratch.size(), scratch.size(), scratch) == 0) return false;
    if (IsCutBrokenOff(log, scratch, whole - scratch.size(), length)) return true;
  }
  return whole + length > scratch.size() && IsCutBrokenOff(log, scratch, whole + length - scratch.size(), length);
}

}  // namespace

LogClass::LogClass() = default;

LogClass::~LogClass() { LogClass::UnloadFile(); }

int LogClass::SetFile(char const* name) {
  return Guard(0, [&] {
    std::string file = name == nullptr ? "" : name;
    // Compares files, not spellings: the log must never be removed as its own scratch file.
    struct stat status;
    if (scratch_.empty() || scratch_ == file || (lstat(scratch_.c_str(), &status) == 0 && IsUnder(file, status))) {
      scratch_ = file.empty() ? "" : file + ".tmp";
    } else {
      std::remove(scratch_.c_str());
    }
    file_ = std::move(file);
    UnloadFile();
    return 1;
  });
}

bool LogClass::SetBuffer(void* data, unsigned long length) {
  if (data == nullptr || length == 0 || length > kMost) return false;
  UnloadFile();
  bufferSize_ = static_cast<std::uint32_t>(length);
  buffer_ = static_cast<unsigned char*>(std::malloc(length));
  if (buffer_ == nullptr) return false;
  std::memcpy(buffer_, data, length);
  return true;
}

void LogClass::SetMaxLines(unsigned long n) { maxLines_ = static_cast<std::uint32_t>(n); }

bool LogClass::WriteReg(void const* data, unsigned long size) { return WriteReg(GetDateTime(), data, size); }

bool LogClass::WriteReg(long when, void const* data, unsigned long size) {
  if (file_.empty() || RecordLength(size) == 0 || (data == nullptr && size > 0)) return false;
  return Guard(false, [&] {
    std::string record(static_cast<size_t>(RecordLength(size)), '\0');
    StoreLe32(reinterpret_cast<unsigned char*>(record.data()), static_cast<std::uint32_t>(when));
    if (size > 0) std::memcpy(record.data() + kStampSize, data, size);

    if (!FinishCut(size)) return false;
    bool const sound = GetFileRegCount(size) > 0;
    Descriptor file = OpenToAppend(file_);
    if (!file || !(sound || MakeSound(file.Get(), size)) || !Append(file.Get(), record)) return false;
    // A cut syncs the whole log. A cut that fails is no failure here, as long as the record is on disk.
    return (CutToBound(size, true) || SyncData(file.Get())) && file.Close();
  });
}

unsigned long LogClass::GetFileRegCount(unsigned long size) {
  if (file_.empty() || RecordLength(size) == 0) return 0;
  return CountRecords(OpenToRead(file_), size);
}

unsigned long LogClass::GetRegCount(unsigned long size) {
  return static_cast<unsigned long>(WholeRecords(bufferSize_, size));
}

bool LogClass::ReadFileReg(unsigned long index, long* when, void* data, unsigned long size) {
  if (file_.empty() || when == nullptr || (data == nullptr && size > 0)) return false;
  // A subclass may count in its own way. This class counts in the file that it has opened to read from.
  bool const countsHere = TableOf(*this) == TableOf(LogClass());
  if (!countsHere && index >= GetFileRegCount(size)) return false;
  Descriptor const file = OpenToRead(file_);
  if (countsHere && index >= CountRecords(file, size)) return false;
  unsigned char stamp[kStampSize];
  if (!file || !Seek(file, index * RecordLength(size)) ||
      ReadBlock(file.Get(), reinterpret_cast<char*>(stamp), sizeof stamp) != static_cast<ssize_t>(sizeof stamp) ||
      ReadBlock(file.Get(), static_cast<char*>(data), size) != static_cast<ssize_t>(size))
    return false;
  *when = static_cast<std::int32_t>(LoadLe32(stamp));
  return true;
}

bool LogClass::ReadReg(unsigned long index, long* when, void* data, unsigned long size) {
  if (buffer_ == nullptr || index >= WholeRecords(bufferSize_, size)) return false;
  unsigned char const* const record = buffer_ + index * RecordLength(size);
  if (when != nullptr) *when = static_cast<std::int32_t>(LoadLe32(record));
  if (data != nullptr && size > 0) std::memcpy(data, record + kStampSize, size);
  return true;
}

unsigned long LogClass::LoadFile(unsigned long size) {
  unsigned long const count = GetFileRegCount(size);
  if (file_.empty()) return 0;
  Descriptor const file = OpenToRead(file_);
  if (!file) return 0;
  std::uint64_t const length = RecordLength(size) * count;
  // Set before the old buffer is freed, which sets the length to 0: that is why a second load in a row loads nothing.
  bufferSize_ = static_cast<std::uint32_t>(length);
  UnloadFile();
  if (length > kMost) {
    bufferSize_ = 0;
    return 0;
  }
  if (bufferSize_ == 0) return count;
  buffer_ = static_cast<unsigned char*>(std::malloc(bufferSize_));
  if (buffer_ != nullptr &&
      ReadBlock(file.Get(), reinterpret_cast<char*>(buffer_), bufferSize_) == static_cast<ssize_t>(bufferSize_))
    return count;
  UnloadFile();
  bufferSize_ = 0;
  return 0;
}

void LogClass::UnloadFile() {
  if (buffer_ == nullptr) return;
  std::free(buffer_);
  buffer_ = nullptr;
  bufferSize_ = 0;
}

bool LogClass::ClearFile() {
  return Guard(false, [&] { return !file_.empty() && zelvane::internal::EmptyFile(file_); });
}

void LogClass::LimitFile(unsigned long size) {
  Guard(false, [&] { return RecordLength(size) != 0 && FinishCut(size) && CutToBound(size, false); });
}

// ---- Parts of a write ----

// Called before a record is written to a file in which none were found. The file may have been temporarily unreadable,
// or another program may have written the first record since. Empties the file only if it is certainly damaged, or if a
// subclass insists that it has no records.
bool LogClass::MakeSound(int fd, unsigned long size) {
  if (TornLength(fd, size) != 0) return Repair(fd, file_, size);
  return !IsDisowned(*this, size) || ftruncate(fd, 0) == 0;
}

// Examines a scratch file left by a cut, finishes that cut if it was interrupted, and removes the file. Returns false
// if the file may still be needed.
bool LogClass::FinishCut(unsigned long size) {
  struct stat left;
  if (lstat(scratch_.c_str(), &left) != 0) return errno == ENOENT || errno == ENOTDIR;
  // The log must not be removed as its own scratch file. Another hard link to it can be removed, but not the file to
  // which the log's name leads.
  bool const isTarget = IsLinkTo(file_, left);
  if (isTarget || (IsUnder(file_, left) && scratch_ != file_ + ".tmp")) {
    scratch_ = (isTarget ? scratch_ : file_) + ".tmp";
    return FinishCut(size);
  }
  std::uint64_t const length = RecordLength(size);
  // Does not depend on the current maximum, because the cut can have had another one.
  bool const mayBeWhole =
      S_ISREG(left.st_mode) && left.st_size > 0 && static_cast<std::uint64_t>(left.st_size) % length == 0;
  Descriptor const log = mayBeWhole ? Open(file_.c_str(), O_RDWR | O_NONBLOCK) : Descriptor();
  if (mayBeWhole && !log && errno != ENOENT) return false;
  if (log) {
    FileLock const lock(log.Get(), FileLock::kAlone, zelvane::internal::kLongestWait);
    Descriptor const scratch = Open(scratch_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    std::string records, kept;
    // The scratch file is gone: another program was still at its cut, and has finished it.
    if (!scratch || ReadWhole(file_, records) != ReadResult::kOk || ReadWhole(scratch_, kept) != ReadResult::kOk)
      return errno == ENOENT;
    if (IsMixture(records, kept, length) && !CopyBack(scratch, log, length, Syncs::kTwice)) return false;
  }
  std::remove(scratch_.c_str());
  return Folder(scratch_).Sync();
}

// Returns true if records were removed and all of the log is on disk.
bool LogClass::CutToBound(unsigned long size, bool isWriting) {
  unsigned long const count = GetFileRegCount(size);
  if (count <= maxLines_) return false;
  unsigned long const drop = count - maxLines_;
  // No success has been reported yet for the record being written.
  Syncs const syncs = isWriting && drop == 1 ? Syncs::kOnce : Syncs::kTwice;
  if (Guard(false, [&] { return Cut(file_, scratch_, drop, RecordLength(size), syncs); })) return true;
  // A scratch file removed after a failure must not come back after a power cut: the log continues without it.
  Guard(false, [&] { return Folder(scratch_).Sync(); });
  return false;
}
