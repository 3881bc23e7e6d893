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
#include "zelvane/logs/logclass_internal.h"

using zelvane::internal::AppendAndClose;
using zelvane::internal::Descriptor;
using zelvane::internal::Guard;
using zelvane::internal::LoadLe32;
using zelvane::internal::Open;
using zelvane::internal::OpenToAppend;
using zelvane::internal::ReadBlock;
using zelvane::internal::StoreLe32;
using zelvane::internal::WriteAll;

namespace {

constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kStampSize = 4;
constexpr std::uint64_t kCopyBlock = 65536;
constexpr std::uint64_t kPage = 4096;

// The length of a record, or 0 when it would not fit into 32 bits.
std::uint64_t RecordLength(unsigned long size) { return size > kMost - kStampSize ? 0 : size + kStampSize; }

std::uint64_t WholeRecords(std::uint64_t bytes, unsigned long size) {
  std::uint64_t const length = RecordLength(size);
  return length == 0 || bytes % length != 0 ? 0 : bytes / length;
}

Descriptor OpenToRead(std::string const& path) { return Open(path.c_str(), O_RDONLY | O_NONBLOCK); }

bool Seek(Descriptor const& file, std::uint64_t position) {
  return lseek(file.Get(), static_cast<off_t>(position), SEEK_SET) >= 0;
}

// The length of a file that ends in a part of a record; 0 for any other, -1 when that cannot be told.
off_t TornLength(Descriptor const& file, unsigned long size) {
  struct stat status;
  if (fstat(file.Get(), &status) != 0) return -1;
  if (!S_ISREG(status.st_mode)) return 0;
  return WholeRecords(static_cast<std::uint64_t>(status.st_size), size) > 0 ? 0 : status.st_size;
}

// Before a record goes into a file in which none were found. That is settled again on the open file: it may have been
// unreadable only for a moment, or another program may have written the first record since. Only what is damaged beyond
// doubt is emptied, and only once its bytes are safe.
bool MakeSound(Descriptor const& file, std::string const& path, unsigned long size) {
  if (TornLength(file, size) == 0) return true;
  // A record that another program is just writing across two pages can be seen by its first half, for as long as that
  // program waits for the processor. Setting the file's time, which the new record does anyway, waits for such a write.
  futimens(file.Get(), nullptr);
  off_t const torn = TornLength(file, size);
  if (torn == 0) return true;
  if (torn < 0 || !zelvane::internal::KeepAside(path, ".bad")) return false;
  off_t const now = TornLength(file, size);
  return now == 0 || (now == torn && ftruncate(file.Get(), 0) == 0);
}

// Writes whole records of `length` bytes at position `at`. A kill ends a write between two pages of the file, so each
// write keeps to the records of one page; what remains is the one record that may lie across its end.
bool WriteRecords(Descriptor const& to, std::uint64_t at, char const* bytes, std::uint64_t size, std::uint64_t length) {
  while (size > 0) {
    std::uint64_t const room = kPage - at % kPage;
    std::uint64_t const piece = std::min(size, std::max<std::uint64_t>(room / length, 1) * length);
    if (!WriteAll(to.Get(), bytes, static_cast<size_t>(piece))) return false;
    at += piece;
    bytes += piece;
    size -= piece;
  }
  return true;
}

// Copies the records from the one's position to its end over the beginning of the other; the number of bytes, or -1 on
// failure.
off_t CopyRest(Descriptor const& from, Descriptor const& to, std::uint64_t length) {
  std::vector<char> block(static_cast<size_t>(std::max<std::uint64_t>(kCopyBlock / length, 1) * length));
  std::uint64_t copied = 0;
  ssize_t got = 0;
  if (!Seek(to, 0)) return -1;
  do {
    Delay(0);
    got = ReadBlock(from.Get(), block.data(), block.size());
    if (got < 0) return -1;
    auto const size = static_cast<std::uint64_t>(got);
    if (!WriteRecords(to, copied, block.data(), size, length)) return -1;
    copied += size;
  } while (got == static_cast<ssize_t>(block.size()));
  return static_cast<off_t>(copied);
}

// Cuts the first `drop` records off `path`. The log is overwritten and only then shortened: emptying it first would
// leave a moment in which a kill loses everything.
bool Cut(std::string const& path, std::string const& scratchPath, std::uint64_t drop, std::uint64_t length) {
  Descriptor log = Open(path.c_str(), O_RDWR | O_NONBLOCK);
  // Created here or not used: a link that somebody placed there would lead the records elsewhere.
  Descriptor const scratch = Open(scratchPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!log || !scratch || !Seek(log, drop * length)) return false;
  off_t const kept = CopyRest(log, scratch, length);
  if (kept < 0 || !Seek(scratch, 0) || CopyRest(scratch, log, length) != kept) return false;
  return ftruncate(log.Get(), kept) == 0 && log.Close();
}

}  // namespace

LogClass::~LogClass() { LogClass::UnloadFile(); }

int LogClass::SetFile(char const* name) {
  return Guard(0, [&] {
    std::string file = name == nullptr ? "" : name;
    if (scratch_.empty() || scratch_ == file) {
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

    bool const sound = GetFileRegCount(size) > 0;
    Descriptor file = OpenToAppend(file_);
    if (!file || !(sound || MakeSound(file, file_, size)) || !AppendAndClose(file, record)) return false;
    LimitFile(size);
    return true;
  });
}

unsigned long LogClass::GetFileRegCount(unsigned long size) {
  if (file_.empty()) return 0;
  Descriptor const file = OpenToRead(file_);
  struct stat status;
  if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  std::uint64_t const count = WholeRecords(static_cast<std::uint64_t>(status.st_size), size);
  return static_cast<unsigned long>(std::min<std::uint64_t>(count, kMost));
}

unsigned long LogClass::GetRegCount(unsigned long size) {
  return static_cast<unsigned long>(WholeRecords(bufferSize_, size));
}

bool LogClass::ReadFileReg(unsigned long index, long* when, void* data, unsigned long size) {
  if (file_.empty() || when == nullptr || (data == nullptr && size > 0)) return false;
  if (index >= GetFileRegCount(size)) return false;
  Descriptor const file = OpenToRead(file_);
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
  // Before the old buffer is freed, which sets the length to 0: that is why a second load in a row loads nothing.
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

bool LogClass::ClearFile() { return !file_.empty() && zelvane::internal::EmptyFile(file_); }

void LogClass::LimitFile(unsigned long size) {
  Guard(false, [&] {
    // SetFile has given it a name; without a file both are empty, and there is nothing to remove.
    std::remove(scratch_.c_str());
    unsigned long const count = GetFileRegCount(size);
    if (count <= maxLines_ || RecordLength(size) == 0) return true;
    // Short of memory in there, the scratch file must go all the same.
    bool const cut = Guard(false, [&] { return Cut(file_, scratch_, count - maxLines_, RecordLength(size)); });
    std::remove(scratch_.c_str());
    return cut;
  });
}
