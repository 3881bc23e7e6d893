// Read-only access to record logs (*.rgt). The library treats a log with a partial record as empty; this class reads
// all complete records.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_RECORDLOG_H
#define ZELVANE_TOOLS_ZELCTL_FILES_RECORDLOG_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct Terminal;

constexpr std::uint64_t kStampSize = 4;
constexpr std::uint64_t kEventSize = 64;  // payload of the event log, which the library's statistics require

// The time stamp of a record.
std::int32_t StampOf(unsigned char const* record);

struct Record {
  std::uint64_t index;
  std::int32_t stamp;
  unsigned char const* payload;
  std::size_t size;

  // The first two bytes of the payload; empty if it is shorter.
  std::optional<std::uint16_t> Code() const;
  // The text after the code, for display: without trailing zeros, control characters as ".".
  std::string Text() const;
  // The payload in hexadecimal; with its trailing zeros if `whole`.
  std::string Hex(bool whole) const;
};

class RecordLog {
 public:
  // Throws Failed if the file is missing or cannot be a log.
  RecordLog(std::string path, std::uint64_t payloadSize);

  std::string const& Path() const { return path_; }
  std::uint64_t Length() const { return length_; }
  std::uint64_t RecordSize() const { return recordSize_; }
  std::uint64_t Count() const { return length_ / recordSize_; }
  // Bytes after the last complete record.
  std::uint64_t Torn() const { return length_ % recordSize_; }

  // Passes the complete records that existed at construction to `see`, in blocks of complete records. Throws Failed.
  // Shows progress on a terminal if no part is named.
  void ForEachBlock(std::function<void(unsigned char const* bytes, std::size_t size)> const& see) const;
  void ForEach(std::function<void(Record const&)> const& see) const;
  // At most `count` records, from the record `first` on.
  void ForEach(std::function<void(Record const&)> const& see, std::uint64_t first, std::uint64_t count) const;
  // From the last record to the first.
  void ForEachReversed(std::function<void(Record const&)> const& see) const;

  // A remark if there is a partial record.
  void NoteDamage(Terminal const& terminal) const;

 private:
  void ForEachBlock(std::function<void(unsigned char const*, std::size_t)> const& see, std::uint64_t first,
                    std::uint64_t count) const;
  // Splits a block into records; the first one has `index`.
  void ForEachIn(unsigned char const* bytes, std::size_t length, std::uint64_t index,
                 std::function<void(Record const&)> const& see) const;

  std::string path_;
  std::uint64_t recordSize_;
  std::uint64_t length_ = 0;
};

#endif
