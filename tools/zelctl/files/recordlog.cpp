#include "files/recordlog.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "files/format.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCodeSize = 2;
constexpr std::uint64_t kBlockSize = 1 << 20;

// The length without trailing zeros.
std::size_t Filled(unsigned char const* bytes, std::size_t size) {
  while (size > 0 && bytes[size - 1] == 0) size--;
  return size;
}

}  // namespace

std::int32_t StampOf(unsigned char const* record) {
  std::uint32_t stamp = 0;
  for (std::size_t i = kStampSize; i-- > 0;) stamp = stamp << 8 | record[i];
  return static_cast<std::int32_t>(stamp);
}

std::optional<std::uint16_t> Record::Code() const {
  if (size < kCodeSize) return std::nullopt;
  return static_cast<std::uint16_t>(payload[0] | payload[1] << 8);
}

std::string Record::Text() const {
  std::size_t const begin = size < kCodeSize ? 0 : kCodeSize;
  std::string text;
  for (std::size_t i = begin; i < Filled(payload, size); i++) {
    bool const shows = payload[i] >= 0x20 && (payload[i] < 0x7F || payload[i] >= 0xA0);
    text += shows ? static_cast<char>(payload[i]) : '.';
  }
  return text;
}

std::string Record::Hex(bool whole) const {
  static char const kDigits[] = "0123456789abcdef";
  std::size_t const length = whole ? size : Filled(payload, size);
  std::string hex;
  hex.reserve(2 * length);
  for (std::size_t i = 0; i < length; i++) {
    hex += kDigits[payload[i] >> 4];
    hex += kDigits[payload[i] & 0x0F];
  }
  return hex;
}

RecordLog::RecordLog(std::string path, std::uint64_t payloadSize)
    : path_(std::move(path)), recordSize_(kStampSize + payloadSize) {
  if (AnsiLowerCase(ExtractFileExt(path_)) == "cry")
    throw Failed(path_ + ": log of an earlier product generation, unknown format");
  std::error_code error;
  fs::file_status const status = fs::status(path_, error);
  if (status.type() == fs::file_type::not_found) throw Failed(path_ + ": no such file");
  if (status.type() == fs::file_type::none) throw Failed(CannotRead(path_, error.value()));
  if (status.type() != fs::file_type::regular) throw Failed(path_ + ": not a regular file");
  length_ = fs::file_size(path_, error);
  if (error || !std::ifstream(path_, std::ios::binary)) throw Failed(CannotRead(path_, error.value()));
}

void RecordLog::ForEachBlock(std::function<void(unsigned char const*, std::size_t)> const& see) const {
  Progress progress(Count() * recordSize_);
  ForEachBlock(
      [&](unsigned char const* bytes, std::size_t length) {
        see(bytes, length);
        progress.Advance(length);
      },
      0, Count());
}

void RecordLog::ForEachBlock(std::function<void(unsigned char const*, std::size_t)> const& see, std::uint64_t first,
                             std::uint64_t count) const {
  std::uint64_t left = std::min(count, Count() - std::min(first, Count()));
  std::uint64_t const most = std::max<std::uint64_t>(kBlockSize / recordSize_, 1);
  std::vector<unsigned char> block(static_cast<std::size_t>(std::min(most, left) * recordSize_));
  std::ifstream file(path_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(first * recordSize_));
  while (left > 0) {
    std::uint64_t const records = std::min(most, left);
    auto const size = static_cast<std::streamsize>(records * recordSize_);
    file.read(reinterpret_cast<char*>(block.data()), size);
    if (file.gcount() != size)
      throw Failed(path_ + ": cannot read to the end (read error, or the file became shorter)");
    see(block.data(), static_cast<std::size_t>(size));
    left -= records;
  }
}

void RecordLog::ForEachIn(unsigned char const* bytes, std::size_t length, std::uint64_t index,
                          std::function<void(Record const&)> const& see) const {
  auto const size = static_cast<std::size_t>(recordSize_);
  auto const payload = static_cast<std::size_t>(recordSize_ - kStampSize);
  for (std::size_t at = 0; at < length; at += size)
    see({index++, StampOf(bytes + at), bytes + at + kStampSize, payload});
}

void RecordLog::ForEach(std::function<void(Record const&)> const& see) const {
  std::uint64_t index = 0;
  ForEachBlock([&](unsigned char const* bytes, std::size_t length) {
    ForEachIn(bytes, length, index, see);
    index += length / recordSize_;
  });
}

void RecordLog::ForEach(std::function<void(Record const&)> const& see, std::uint64_t first, std::uint64_t count) const {
  ForEachBlock(
      [&](unsigned char const* bytes, std::size_t length) {
        ForEachIn(bytes, length, first, see);
        first += length / recordSize_;
      },
      first, count);
}

void RecordLog::ForEachReversed(std::function<void(Record const&)> const& see) const {
  std::uint64_t const most = std::max<std::uint64_t>(kBlockSize / recordSize_, 1);
  std::vector<unsigned char> block(static_cast<std::size_t>(std::min(most, Count()) * recordSize_));
  std::ifstream file(path_, std::ios::binary);
  auto const payload = static_cast<std::size_t>(recordSize_ - kStampSize);
  for (std::uint64_t left = Count(); left > 0;) {
    std::uint64_t const records = std::min(most, left);
    auto const size = static_cast<std::streamsize>(records * recordSize_);
    file.seekg(static_cast<std::streamoff>((left - records) * recordSize_));
    if (!file.read(reinterpret_cast<char*>(block.data()), size))
      throw Failed(path_ + ": cannot read to the end (read error, or the file became shorter)");
    for (std::uint64_t i = records; i-- > 0;) {
      unsigned char const* const record = &block[static_cast<std::size_t>(i * recordSize_)];
      see({--left, StampOf(record), record + kStampSize, payload});
    }
  }
}

void RecordLog::NoteDamage(Terminal const& terminal) const {
  if (Torn() == 0) return;
  terminal.Note(path_ + ": damaged, counts as empty in the programs: " + std::to_string(Count()) +
                " complete records of " + std::to_string(recordSize_) + " bytes and " + std::to_string(Torn()) +
                " extra bytes; run `zelctl log salvage`");
}
