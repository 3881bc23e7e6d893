// Record logs (*.rgt) as files to look into. Unlike the library, which takes a log with a partial record for empty,
// this reads the whole records that are there. Nothing is ever written to the log.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_RECORDLOG_H
#define ZELVANE_TOOLS_ZELCTL_FILES_RECORDLOG_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct Terminal;

constexpr std::uint64_t kStampSize = 4;
constexpr std::uint64_t kEventSize = 64;  // payload of the event log, which the library's statistics read

// The date-time that a record begins with.
std::int32_t StampOf(unsigned char const* record);

struct Record {
  std::uint64_t index;
  std::int32_t stamp;
  unsigned char const* payload;
  std::size_t size;

  // The first two bytes of the payload; nothing when it is shorter.
  std::optional<std::uint16_t> Code() const;
  // What is after the code, as people read it: zeros at the end left out, "." for control characters.
  std::string Text() const;
  // The payload; `whole` with the zeros at its end.
  std::string Hex(bool whole) const;
};

class RecordLog {
 public:
  // Throws Failed when there is no such file, or nothing that could be a log.
  RecordLog(std::string path, std::uint64_t payloadSize);

  std::string const& Path() const { return path_; }
  std::uint64_t Length() const { return length_; }
  std::uint64_t RecordSize() const { return recordSize_; }
  std::uint64_t Count() const { return length_ / recordSize_; }
  // Bytes after the last whole record.
  std::uint64_t Torn() const { return length_ % recordSize_; }

  // The whole records of the file as it was at construction, in blocks that end with a record. Throws Failed. Where no
  // part is named, a terminal shows how far they are.
  void ForEachBlock(std::function<void(unsigned char const* bytes, std::size_t size)> const& see) const;
  void ForEach(std::function<void(Record const&)> const& see) const;
  // At most `count` of them, from the record `first` on.
  void ForEach(std::function<void(Record const&)> const& see, std::uint64_t first, std::uint64_t count) const;
  // From the last one to the first.
  void ForEachReversed(std::function<void(Record const&)> const& see) const;

  // A remark when there is a partial record.
  void NoteDamage(Terminal const& terminal) const;

 private:
  void ForEachBlock(std::function<void(unsigned char const*, std::size_t)> const& see, std::uint64_t first,
                    std::uint64_t count) const;
  // Takes a block apart, of which the first record has that index.
  void ForEachIn(unsigned char const* bytes, std::size_t length, std::uint64_t index,
                 std::function<void(Record const&)> const& see) const;

  std::string path_;
  std::uint64_t recordSize_;
  std::uint64_t length_ = 0;
};

#endif
