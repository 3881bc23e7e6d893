// Base64 text (the alphabet with "+" and "/", padded with "=", lines of 72 characters separated by CR LF).
//
// The product keeps passwords in its configuration files as Base64. That hides a password from a glance, not from a
// reader: whoever can read the file can decode it, so it is the file's mode that protects it.
//
// A codec holds the result of its last conversion until the next one or Unload():
//
//   EncodeBase64 codec;
//   if (codec.LoadFromFile("logo.png")) codec.SaveToFile("logo.b64");
//
// An object is used by one thread at a time. No operation throws; out of memory is a false result.
#ifndef ZELVANE_CRYPTO_BASE64_H
#define ZELVANE_CRYPTO_BASE64_H

#include <string>

#include "zelvane/export.h"

class ClassBase64;

// Told by a codec how far it is. Implemented by the caller, who keeps the object alive while a codec has it.
class ZELVANE_API ProgressClass {
 public:
  // Holds nothing of its own to copy.
  ProgressClass();
  ProgressClass(ProgressClass const& other);
  ProgressClass& operator=(ProgressClass const& other);
  virtual ~ProgressClass();
  // `consumed` of `total` input bytes are done, that is `percent` (0-100, rounded to the nearest). The operation must
  // not load into the codec. Its place, third among the virtual operations, is part of the interface.
  virtual void Progress(ClassBase64* codec, unsigned long consumed, unsigned long total, unsigned short percent,
                        bool finished) const = 0;
};

// The order of the virtual operations is part of the interface, and they call each other virtually: a subclass may
// replace any step.
class ZELVANE_API ClassBase64 {
 public:
  ClassBase64();
  ClassBase64(ClassBase64 const&) = delete;
  ClassBase64& operator=(ClassBase64 const&) = delete;

  // The conversion itself: replaces the result by the converted bytes. False, with the old result kept, for null or a
  // length of 0; false, with no result, when there is no memory. An empty result (nothing to decode in the text) is
  // true.
  virtual bool EncodeDecodeFunction(void const* data, unsigned long length) = 0;
  virtual ~ClassBase64();

  // Converts `length` bytes. False, with the old result kept, for null or a length of 0.
  virtual bool LoadFromBuf(void const* data, unsigned long length);
  // Converts the string together with its terminating NUL, as the stored passwords have it: encoding "abc" gives
  // "YWJjAA==", and "" gives "AA==". Decoding ignores the NUL. False for null. The second form goes up to the first
  // NUL.
  virtual bool LoadFromStr(std::string const& text);
  virtual bool LoadFromStr(char const* text);
  // Converts a whole file. False, with the old result kept, for null and for a file that cannot be read, is empty or is
  // not a regular file.
  virtual bool LoadFromFile(std::string const& path);
  virtual bool LoadFromFile(char const* path);

  // Writes the result, possibly no bytes at all, into the file, which is created, or emptied first. False for null and
  // when the file cannot be opened or written; an unfinished file is not removed.
  virtual bool SaveToFile(std::string const& path);
  virtual bool SaveToFile(char const* path);
  // `out` becomes the result up to its first NUL. False, with `out` as it was, when there is no result or it is empty.
  virtual bool SaveToStr(std::string& out);
  // SaveToBuf, then a NUL into the last of the `size` bytes, over the result if that fills them. False when SaveToBuf
  // gave 0 (the NUL is written all the same), and for null or a size of 0 (nothing is written).
  virtual bool SaveToStr(char* buffer, unsigned long size);
  // Copies the result, or as much as `size` bytes take, and fills the rest with zeros; gives the number of bytes
  // copied. No NUL is added. 0, with nothing written, without a result or with a size of 0. With a null buffer: the
  // result's length.
  virtual unsigned long SaveToBuf(void* buffer, unsigned long size);

  // Names the object to be told (null for none); it stays the caller's. Before each group (three bytes when encoding,
  // four characters when decoding) it is called if the percentage has grown since the last call, from 0 on, after a
  // pause of one microsecond. An encoding ends with a call for 100 % with finished true; a decoding has no such call.
  virtual void SetProgress(ProgressClass const* progress);

  // Frees the result.
  virtual void Unload();

 protected:
  unsigned char* result_ = nullptr;  // allocated with new[]; null when the result is empty
  unsigned long resultLength_ = 0;   // no NUL is stored or counted
  ProgressClass const* progress_ = nullptr;
};

class ZELVANE_API EncodeBase64 : public ClassBase64 {
 public:
  EncodeBase64();
  ~EncodeBase64() override;
  // Bytes to text: lines of 72 characters, CR LF between them and none at the end.
  bool EncodeDecodeFunction(void const* data, unsigned long length) override;

  // LoadFromStr and SaveToStr at once; nothing stays loaded. False, with `out` as it was, when either fails.
  virtual bool EncodeStr(std::string const& in, std::string& out);
  // The same, returning the text; "" on failure.
  virtual std::string EncodeStr(std::string const& in);
  // The same into `size` bytes, cut to fit and always ending in a NUL. False for null or a size of 0, with nothing
  // written.
  virtual bool EncodeStr(char const* in, char* out, unsigned long size);
  // LoadFromFile and SaveToFile at once; nothing stays loaded. False when a name is null, `source` cannot be read or is
  // empty, `destination` is "", or it cannot be written. What cannot be loaded leaves the destination untouched.
  virtual bool EncodeFile(std::string const& source, std::string const& destination);
  virtual bool EncodeFile(char const* source, char const* destination);
};

class ZELVANE_API DecodeBase64 : public ClassBase64 {
 public:
  DecodeBase64();
  ~DecodeBase64() override;
  // Text to bytes. Whatever is neither in the alphabet nor "=" is skipped wherever it stands. "=" counts as a character
  // of value 0 wherever it stands: of four characters, a third that is "=" leaves one byte, otherwise a fourth that is
  // "=" leaves two, and such a group is the last one decoded. Fewer than four characters at the end are dropped.
  bool EncodeDecodeFunction(void const* data, unsigned long length) override;

  // As EncodeBase64's, decoding. Text that another tool encoded without the NUL gives the same string.
  virtual bool DecodeStr(std::string const& in, std::string& out);
  virtual std::string DecodeStr(std::string const& in);
  virtual bool DecodeStr(char const* in, char* out, unsigned long size);
  virtual bool DecodeFile(std::string const& source, std::string const& destination);
  virtual bool DecodeFile(char const* source, char const* destination);
};

// EncodeBase64::EncodeStr and DecodeBase64::DecodeStr with a codec of their own; `s` is not changed. The form in which
// the configuration files keep passwords: Decode(Encode(s)) is s up to its first NUL; "" on failure.
ZELVANE_API std::string EncodeBase64FromStr(std::string& s);
ZELVANE_API std::string DecodeBase64ToStr(std::string& s);

#endif
