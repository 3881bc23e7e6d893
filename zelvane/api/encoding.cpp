#include "zelvane/api/encoding.h"

namespace {

// Counts every byte, and keeps those that fit in the caller's buffer with a NUL after them.
class Output {
 public:
  Output(char* buffer, unsigned long size) : buffer_(buffer), size_(buffer == nullptr ? 0 : size) {}

  // One character.
  void Put(unsigned char first) { Put(&first, 1); }
  void Put(unsigned char first, unsigned char second) {
    unsigned char const bytes[] = {first, second};
    Put(bytes, 2);
  }

  long Finish() {
    if (size_ > 0) buffer_[kept_] = '\0';
    return static_cast<long>(length_);
  }

 private:
  void Put(unsigned char const* bytes, unsigned long count) {
    // Nothing after the first character that does not fit is kept.
    if (length_ == kept_ && kept_ + count < size_) {
      for (unsigned long i = 0; i < count; i++) buffer_[kept_ + i] = static_cast<char>(bytes[i]);
      kept_ += count;
    }
    length_ += count;
  }

  char* buffer_;
  unsigned long size_;
  unsigned long length_ = 0;
  unsigned long kept_ = 0;
};

// The number of bytes of the first character if Latin-1 has it, otherwise 0.
int Width(unsigned char const* text) {
  if (text[0] < 0x80) return 1;
  // U+0080 to U+00FF are exactly the pairs that begin with C2 or C3.
  return (text[0] == 0xC2 || text[0] == 0xC3) && (text[1] & 0xC0) == 0x80 ? 2 : 0;
}

}  // namespace

long Latin1ToUtf8(char const* text, char* buffer, unsigned long size) {
  if (text == nullptr) return -1;
  Output out(buffer, size);
  for (; *text != '\0'; text++) {
    auto const byte = static_cast<unsigned char>(*text);
    if (byte < 0x80)
      out.Put(byte);
    else
      out.Put(static_cast<unsigned char>(0xC0 | (byte >> 6)), static_cast<unsigned char>(0x80 | (byte & 0x3F)));
  }
  return out.Finish();
}

long Utf8ToLatin1(char const* text, char* buffer, unsigned long size) {
  if (text == nullptr) return -1;
  auto const* const bytes = reinterpret_cast<unsigned char const*>(text);
  // The complete text is checked before anything is written.
  for (unsigned char const* at = bytes; *at != 0; at += Width(at)) {
    if (Width(at) == 0) return -1;
  }
  Output out(buffer, size);
  for (unsigned char const* at = bytes; *at != 0; at += Width(at))
    out.Put(Width(at) == 1 ? at[0] : static_cast<unsigned char>((at[0] & 0x03) << 6 | (at[1] & 0x3F)));
  return out.Finish();
}
