#include "zelvane/crypto/base64.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/crypto/base64_groups_internal.h"
#include "zelvane/crypto/base64_tables_internal.h"

using zelvane::internal::Base64Loops;
using zelvane::internal::BestBase64Loops;
using zelvane::internal::Guard;
using zelvane::internal::kBase64Places;
using zelvane::internal::kBase64Skipped;
using zelvane::internal::kBase64Slack;

namespace {

constexpr unsigned long kLineGroups = 18;  // 54 bytes, 72 characters

// Calls the progress object when the percentage has grown. Instead of dividing before every group, it stores the number
// of bytes at which the next call is due.
class Meter {
 public:
  Meter(ProgressClass const* progress, ClassBase64* codec, unsigned long total)
      : progress_(progress), codec_(codec), total_(total) {
    if (progress_ != nullptr) due_ = DueFor(1);
  }

  // Returns how many groups of `size` bytes from `at` on begin before the next call is due; at least one.
  unsigned long GroupsUntilDue(unsigned long at, unsigned long size) const {
    return at < due_ ? (due_ - at - 1) / size + 1 : 1;
  }

  void At(unsigned long consumed) {
    if (consumed < due_) return;
    std::uint64_t const percent = (std::uint64_t{consumed} * 100 + total_ / 2) / total_;
    Call(consumed, percent, false);
    due_ = DueFor(percent + 1);
  }

  void Finish() const {
    if (progress_ != nullptr) Call(total_, 100, true);
  }

 private:
  // Returns the smallest number of bytes that rounds to `percent` or more.
  unsigned long DueFor(std::uint64_t percent) const {
    return static_cast<unsigned long>((percent * total_ - total_ / 2 + 99) / 100);
  }

  void Call(unsigned long consumed, std::uint64_t percent, bool finished) const {
    usDelay(1);
    progress_->Progress(codec_, consumed, total_, static_cast<unsigned short>(percent), finished);
  }

  ProgressClass const* progress_;
  ClassBase64* codec_;
  unsigned long total_;
  unsigned long due_ = std::numeric_limits<unsigned long>::max();
};

// ---- Encoding ----

// Nothing overflows up to kMostBytes. No array can be large enough for the text of more.
constexpr unsigned long kMostBytes = PTRDIFF_MAX / 2;

unsigned long EncodedLength(unsigned long length) {
  unsigned long const groups = (length + 2) / 3;
  return groups * 4 + (groups - 1) / kLineGroups * 2;
}

void PutLastGroup(unsigned char* out, unsigned char const* in, unsigned long length) {
  unsigned char const bytes[3] = {in[0], length == 2 ? in[1] : static_cast<unsigned char>(0), 0};
  BestBase64Loops().encode(out, bytes, 1, sizeof bytes);
  if (length < 2) out[2] = '=';
  out[3] = '=';
}

void Encode(unsigned char const* in, unsigned long length, unsigned char* out, Meter& meter) {
  Base64Loops const& loops = BestBase64Loops();
  unsigned long lineGroups = 0;
  for (unsigned long at = 0; at < length;) {
    meter.At(at);
    if (lineGroups == kLineGroups) {
      *out++ = '\r';
      *out++ = '\n';
      lineGroups = 0;
    }
    unsigned long const left = length - at;
    if (left < 3) {
      PutLastGroup(out, in + at, left);
      break;
    }
    unsigned long const run = std::min({left / 3, kLineGroups - lineGroups, meter.GroupsUntilDue(at, 3)});
    out = loops.encode(out, in + at, run, left);
    lineGroups += run;
    at += run * 3;
  }
}

// ---- Decoding ----

// Decodes one group, skipping other characters between its own. Moves `at` after it and returns the number of bytes
// written: 0 if the text ends first.
unsigned DecodeCarefully(unsigned char const* in, unsigned long length, unsigned long& at, unsigned char* out) {
  unsigned char kept[4];
  std::uint32_t bits = 0;
  for (int count = 0; count < 4; at++) {
    if (at == length) return 0;
    std::uint32_t const value = kBase64Places[0][in[at]];
    if ((value & kBase64Skipped) != 0) continue;
    bits = bits << 6 | value >> 26;
    kept[count++] = in[at];
  }
  unsigned const size = kept[2] == '=' ? 1 : kept[3] == '=' ? 2 : 3;
  for (unsigned i = 0; i < size; i++) out[i] = static_cast<unsigned char>(bits >> (16 - 8 * i));
  return size;
}

// Decodes `length` bytes of text into `out` and returns the number of bytes there.
unsigned long Decode(unsigned char const* in, unsigned long length, unsigned char* out, Meter& meter) {
  Base64Loops const& loops = BestBase64Loops();
  unsigned char* const start = out;
  for (unsigned long at = 0; at < length;) {
    meter.At(at);
    while (at < length && (kBase64Places[0][in[at]] & kBase64Skipped) != 0) at++;
    unsigned long const groups = loops.decode(in + at, std::min((length - at) / 4, meter.GroupsUntilDue(at, 4)), out);
    at += groups * 4;
    out += groups * 3;
    if (groups > 0) continue;
    unsigned const size = DecodeCarefully(in, length, at, out);
    out += size;
    if (size < 3) break;
  }
  return static_cast<unsigned long>(out - start);
}

// ---- Strings and files, for both codecs ----

bool ConvertStr(ClassBase64& codec, std::string const& in, std::string& out) {
  bool const done = codec.LoadFromStr(in) && codec.SaveToStr(out);
  codec.Unload();
  return done;
}

bool ConvertStr(ClassBase64& codec, char const* in, char* out, unsigned long size) {
  if (in == nullptr || out == nullptr || size == 0) return false;
  bool const done = codec.LoadFromStr(in) && codec.SaveToStr(out, size);
  codec.Unload();
  return done;
}

bool ConvertFile(ClassBase64& codec, char const* source, char const* destination) {
  if (source == nullptr || destination == nullptr || !FilePermToRead(source) || *destination == '\0') return false;
  bool const done = codec.LoadFromFile(source) && codec.SaveToFile(destination);
  codec.Unload();
  return done;
}

}  // namespace

ProgressClass::ProgressClass() = default;
ProgressClass::ProgressClass(ProgressClass const&) = default;
ProgressClass& ProgressClass::operator=(ProgressClass const&) = default;
ProgressClass::~ProgressClass() = default;

ClassBase64::ClassBase64() = default;
ClassBase64::~ClassBase64() { delete[] result_; }

bool ClassBase64::LoadFromBuf(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  Unload();
  return EncodeDecodeFunction(data, length);
}

bool ClassBase64::LoadFromStr(std::string const& text) { return LoadFromStr(text.c_str()); }

bool ClassBase64::LoadFromStr(char const* text) { return text != nullptr && LoadFromBuf(text, strlen(text) + 1); }

bool ClassBase64::LoadFromFile(std::string const& path) { return LoadFromFile(path.c_str()); }

bool ClassBase64::LoadFromFile(char const* path) {
  return Guard(false, [&] {
    struct stat status;
    if (path == nullptr || stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::string bytes;
    if (zelvane::internal::ReadWhole(path, bytes) != zelvane::internal::ReadResult::kOk) return false;
    return LoadFromBuf(bytes.data(), bytes.size());
  });
}

bool ClassBase64::SaveToFile(std::string const& path) { return SaveToFile(path.c_str()); }

bool ClassBase64::SaveToFile(char const* path) {
  if (path == nullptr) return false;
  zelvane::internal::Descriptor file = zelvane::internal::Open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (!file) return false;
  bool const written = zelvane::internal::WriteAll(file.Get(), reinterpret_cast<char const*>(result_), resultLength_);
  return file.Close() && written;
}

bool ClassBase64::SaveToStr(std::string& out) {
  if (result_ == nullptr) return false;
  char const* const text = reinterpret_cast<char const*>(result_);
  return Guard(false, [&] {
    out.assign(text, strnlen(text, resultLength_));
    return true;
  });
}

bool ClassBase64::SaveToStr(char* buffer, unsigned long size) {
  if (buffer == nullptr || size == 0) return false;
  bool const copied = SaveToBuf(buffer, size) != 0;
  buffer[size - 1] = '\0';
  return copied;
}

unsigned long ClassBase64::SaveToBuf(void* buffer, unsigned long size) {
  if (buffer == nullptr) return resultLength_;
  if (size == 0 || result_ == nullptr) return 0;
  unsigned long const copied = std::min(size, resultLength_);
  memcpy(buffer, result_, copied);
  memset(static_cast<char*>(buffer) + copied, 0, size - copied);
  return copied;
}

void ClassBase64::SetProgress(ProgressClass const* progress) { progress_ = progress; }

void ClassBase64::Unload() {
  delete[] result_;
  result_ = nullptr;
  resultLength_ = 0;
}

EncodeBase64::EncodeBase64() = default;
EncodeBase64::~EncodeBase64() = default;

bool EncodeBase64::EncodeDecodeFunction(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  ClassBase64::Unload();  // LoadFromBuf has called the subclass's Unload
  if (length > kMostBytes) return false;
  unsigned long const size = EncodedLength(length);
  std::unique_ptr<unsigned char[]> text(new (std::nothrow) unsigned char[size]);
  if (text == nullptr) return false;
  Meter meter(progress_, this, length);
  Encode(static_cast<unsigned char const*>(data), length, text.get(), meter);
  result_ = text.release();
  resultLength_ = size;
  meter.Finish();
  return true;
}

bool EncodeBase64::EncodeStr(std::string const& in, std::string& out) { return ConvertStr(*this, in, out); }

std::string EncodeBase64::EncodeStr(std::string const& in) {
  std::string out;
  if (!EncodeStr(in, out)) out.clear();
  return out;
}

bool EncodeBase64::EncodeStr(char const* in, char* out, unsigned long size) { return ConvertStr(*this, in, out, size); }

bool EncodeBase64::EncodeFile(std::string const& source, std::string const& destination) {
  return EncodeFile(source.c_str(), destination.c_str());
}

bool EncodeBase64::EncodeFile(char const* source, char const* destination) {
  return ConvertFile(*this, source, destination);
}

DecodeBase64::DecodeBase64() = default;
DecodeBase64::~DecodeBase64() = default;

bool DecodeBase64::EncodeDecodeFunction(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  ClassBase64::Unload();
  std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[length / 4 * 3 + kBase64Slack]);
  if (bytes == nullptr) return false;
  Meter meter(progress_, this, length);
  unsigned long const size = Decode(static_cast<unsigned char const*>(data), length, bytes.get(), meter);
  if (size == 0) return true;
  result_ = bytes.release();
  resultLength_ = size;
  return true;
}

bool DecodeBase64::DecodeStr(std::string const& in, std::string& out) { return ConvertStr(*this, in, out); }

std::string DecodeBase64::DecodeStr(std::string const& in) {
  std::string out;
  if (!DecodeStr(in, out)) out.clear();
  return out;
}

bool DecodeBase64::DecodeStr(char const* in, char* out, unsigned long size) { return ConvertStr(*this, in, out, size); }

bool DecodeBase64::DecodeFile(std::string const& source, std::string const& destination) {
  return DecodeFile(source.c_str(), destination.c_str());
}

bool DecodeBase64::DecodeFile(char const* source, char const* destination) {
  return ConvertFile(*this, source, destination);
}

std::string EncodeBase64FromStr(std::string& s) { return EncodeBase64().EncodeStr(s); }

std::string DecodeBase64ToStr(std::string& s) { return DecodeBase64().DecodeStr(s); }
