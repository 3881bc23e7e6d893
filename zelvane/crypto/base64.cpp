#include "zelvane/crypto/base64.h"

#include <string.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/safesave_internal.h"

using zelvane::internal::Guard;

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned long kLineGroups = 18;  // 54 bytes, 72 characters

struct Pair {
  char text[2];
};

// Twelve bits at once: half as many look-ups as character by character.
constexpr std::array<Pair, 4096> MakePairs() {
  std::array<Pair, 4096> pairs{};
  for (unsigned i = 0; i < 4096; i++) pairs[i] = {{kAlphabet[i >> 6], kAlphabet[i & 63]}};
  return pairs;
}
constexpr std::array<Pair, 4096> kPairs = MakePairs();

// Character to value. The two upper bits tell what needs a closer look: "=" and what is skipped.
constexpr std::uint8_t kPad = 0x40;
constexpr std::uint8_t kSkipped = 0x80;
constexpr std::array<std::uint8_t, 256> MakeValues() {
  std::array<std::uint8_t, 256> values{};
  for (auto& value : values) value = kSkipped;
  for (std::uint8_t i = 0; i < 64; i++) values[static_cast<unsigned char>(kAlphabet[i])] = i;
  values['='] = kPad;
  return values;
}
constexpr std::array<std::uint8_t, 256> kValues = MakeValues();

// Tells the progress object when the percentage has grown. Instead of dividing before every group, it knows the number
// of bytes at which the next call is due.
class Meter {
 public:
  Meter(ProgressClass const* progress, ClassBase64* codec, unsigned long total)
      : progress_(progress), codec_(codec), total_(total) {
    if (progress_ != nullptr) due_ = DueFor(1);
  }

  unsigned long Due() const { return due_; }

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
  // The least number of bytes that rounds to `percent` or more.
  unsigned long DueFor(std::uint64_t percent) const {
    return static_cast<unsigned long>((percent * total_ - total_ / 2 + 99) / 100);
  }

  void Call(unsigned long consumed, std::uint64_t percent, bool finished) const {
    usDelay(1);
    progress_->Progress(codec_, consumed, total_, static_cast<unsigned short>(percent), finished);
  }

  ProgressClass const* progress_;
  ClassBase64* codec_;
  std::uint64_t total_;
  unsigned long due_ = std::numeric_limits<unsigned long>::max();
};

// ---- Encoding ----

unsigned long EncodedLength(unsigned long length) {
  unsigned long const groups = length / 3 + (length % 3 != 0 ? 1 : 0);
  return groups * 4 + (groups - 1) / kLineGroups * 2;
}

unsigned char* PutGroup(unsigned char* out, unsigned bits) {
  memcpy(out, kPairs[bits >> 12].text, 2);
  memcpy(out + 2, kPairs[bits & 4095].text, 2);
  return out + 4;
}

unsigned char* PutGroups(unsigned char* out, unsigned char const* in, unsigned long count) {
  for (; count > 0; count--, in += 3) out = PutGroup(out, static_cast<unsigned>(in[0] << 16 | in[1] << 8 | in[2]));
  return out;
}

unsigned char* PutLastGroup(unsigned char* out, unsigned char const* in, unsigned long length) {
  bool const two = length == 2;
  out = PutGroup(out, static_cast<unsigned>(in[0] << 16 | (two ? in[1] << 8 : 0)));
  out[-1] = '=';
  if (!two) out[-2] = '=';
  return out;
}

void Encode(unsigned char const* in, unsigned long length, unsigned char* out, Meter& meter) {
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
    unsigned long const untilDue = (meter.Due() - at - 1) / 3 + 1;
    unsigned long const run = std::min({left / 3, kLineGroups - lineGroups, untilDue});
    out = PutGroups(out, in + at, run);
    lineGroups += run;
    at += run * 3;
  }
}

// ---- Decoding ----

unsigned char* PutBytes(unsigned char* out, unsigned bits) {
  out[0] = static_cast<unsigned char>(bits >> 16);
  out[1] = static_cast<unsigned char>(bits >> 8);
  out[2] = static_cast<unsigned char>(bits);
  return out + 3;
}

// Decodes groups of four neighbouring characters of the alphabet, up to the first that needs a closer look or to
// `stop`; gives the number of characters taken.
unsigned long TakeGroups(unsigned char const* in, unsigned long stop, unsigned char*& out) {
  unsigned long at = 0;
  for (; at < stop; at += 4) {
    unsigned const a = kValues[in[at]];
    unsigned const b = kValues[in[at + 1]];
    unsigned const c = kValues[in[at + 2]];
    unsigned const d = kValues[in[at + 3]];
    if (((a | b | c | d) & (kPad | kSkipped)) != 0) break;
    out = PutBytes(out, a << 18 | b << 12 | c << 6 | d);
  }
  return at;
}

// Decodes up to `length` bytes of text into `out` and gives the number of bytes written.
unsigned long Decode(unsigned char const* in, unsigned long length, unsigned char* out, Meter& meter) {
  unsigned char* const start = out;
  unsigned long at = 0;
  bool more = true;
  while (more && at < length) {
    meter.At(at);
    unsigned long const whole = length < 4 ? 0 : length - 3;
    unsigned long const stop = std::min(whole, meter.Due());
    if (at < stop) at += TakeGroups(in + at, stop - at, out);
    if (at >= meter.Due()) continue;

    unsigned char kept[4];
    unsigned bits = 0;
    int count = 0;
    for (; at < length && count < 4; at++) {
      std::uint8_t const value = kValues[in[at]];
      if (value == kSkipped) continue;
      kept[count++] = in[at];
      bits = bits << 6 | (value & 63U);
    }
    if (count < 4) break;
    out = PutBytes(out, bits);
    if (kept[2] == '=')
      out -= 2;
    else if (kept[3] == '=')
      out -= 1;
    more = kept[2] != '=' && kept[3] != '=';
  }
  return static_cast<unsigned long>(out - start);
}

// ---- What both codecs do with strings and files ----

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

ProgressClass::~ProgressClass() = default;

ClassBase64::~ClassBase64() {
  delete[] result_;
}

bool ClassBase64::LoadFromBuf(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  Unload();
  return EncodeDecodeFunction(data, length);
}

bool ClassBase64::LoadFromStr(std::string const& text) {
  return LoadFromStr(text.c_str());
}

bool ClassBase64::LoadFromStr(char const* text) {
  return text != nullptr && LoadFromBuf(text, strlen(text) + 1);
}

bool ClassBase64::LoadFromFile(std::string const& path) {
  return LoadFromFile(path.c_str());
}

bool ClassBase64::LoadFromFile(char const* path) {
  return Guard(false, [&] {
    struct stat status;
    if (path == nullptr || stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::string bytes;
    if (zelvane::internal::ReadWhole(path, bytes) != zelvane::internal::ReadResult::kOk) return false;
    return LoadFromBuf(bytes.data(), bytes.size());
  });
}

bool ClassBase64::SaveToFile(std::string const& path) {
  return SaveToFile(path.c_str());
}

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

void ClassBase64::SetProgress(ProgressClass const* progress) {
  progress_ = progress;
}

void ClassBase64::Unload() {
  delete[] result_;
  result_ = nullptr;
  resultLength_ = 0;
}

EncodeBase64::~EncodeBase64() = default;

bool EncodeBase64::EncodeDecodeFunction(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  Unload();
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

bool EncodeBase64::EncodeStr(std::string const& in, std::string& out) {
  return ConvertStr(*this, in, out);
}

std::string EncodeBase64::EncodeStr(std::string const& in) {
  std::string out;
  return EncodeStr(in, out) ? out : std::string();
}

bool EncodeBase64::EncodeStr(char const* in, char* out, unsigned long size) {
  return ConvertStr(*this, in, out, size);
}

bool EncodeBase64::EncodeFile(std::string const& source, std::string const& destination) {
  return EncodeFile(source.c_str(), destination.c_str());
}

bool EncodeBase64::EncodeFile(char const* source, char const* destination) {
  return ConvertFile(*this, source, destination);
}

DecodeBase64::~DecodeBase64() = default;

bool DecodeBase64::EncodeDecodeFunction(void const* data, unsigned long length) {
  if (data == nullptr || length == 0) return false;
  Unload();
  // A group is written whole before it is cut, hence never more than three bytes for each four characters.
  std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[length / 4 * 3 + 1]);
  if (bytes == nullptr) return false;
  Meter meter(progress_, this, length);
  unsigned long const size = Decode(static_cast<unsigned char const*>(data), length, bytes.get(), meter);
  if (size == 0) return true;
  result_ = bytes.release();
  resultLength_ = size;
  return true;
}

bool DecodeBase64::DecodeStr(std::string const& in, std::string& out) {
  return ConvertStr(*this, in, out);
}

std::string DecodeBase64::DecodeStr(std::string const& in) {
  std::string out;
  return DecodeStr(in, out) ? out : std::string();
}

bool DecodeBase64::DecodeStr(char const* in, char* out, unsigned long size) {
  return ConvertStr(*this, in, out, size);
}

bool DecodeBase64::DecodeFile(std::string const& source, std::string const& destination) {
  return DecodeFile(source.c_str(), destination.c_str());
}

bool DecodeBase64::DecodeFile(char const* source, char const* destination) {
  return ConvertFile(*this, source, destination);
}

std::string EncodeBase64FromStr(std::string& s) {
  return EncodeBase64().EncodeStr(s);
}

std::string DecodeBase64ToStr(std::string& s) {
  return DecodeBase64().DecodeStr(s);
}
