/// @file
/// Base64 text (the alphabet with "+" and "/", padded with "=", lines of 72 characters separated by CR LF).
///
/// The product stores passwords as Base64 in its configuration files. That hides a password from a glance only: anyone
/// who can read the file can decode it. The mode of the file protects it.
///
/// A codec keeps the result of its last conversion until the next one or Unload():
///
///     EncodeBase64 codec;
///     if (codec.LoadFromFile("logo.png")) codec.SaveToFile("logo.b64");
///
/// One thread at a time may use an object. No operation throws; when memory runs out, it returns false.
#ifndef ZELVANE_CRYPTO_BASE64_H
#define ZELVANE_CRYPTO_BASE64_H

#include <string>

#include "zelvane/export.h"

class ClassBase64;

/// Receives the progress of a codec. The caller implements it, and keeps the object alive while a codec uses it.
class ZELVANE_API ProgressClass {
 public:
  /// The object has no data to copy.
  ProgressClass();
  ProgressClass(ProgressClass const& other);
  ProgressClass& operator=(ProgressClass const& other);
  virtual ~ProgressClass();
  /// `consumed` of `total` input bytes are done, which is `percent` (0 to 100, rounded to the nearest). The operation
  /// must not load into the codec. Its position, third among the virtual operations, is part of the interface.
  virtual void Progress(ClassBase64* codec, unsigned long consumed, unsigned long total, unsigned short percent,
                        bool finished) const = 0;
};

/// The operations are virtual hooks: they call each other through the virtual table, and their order is part of the
/// interface.
class ZELVANE_API ClassBase64 {
 public:
  ClassBase64();
  ClassBase64(ClassBase64 const&) = delete;
  ClassBase64& operator=(ClassBase64 const&) = delete;

  /// The conversion itself: replaces the result with the converted bytes. Returns false and keeps the old result for
  /// null or a length of 0. Returns false with no result when memory runs out. An empty result (the text has nothing to
  /// decode) is a success.
  virtual bool EncodeDecodeFunction(void const* data, unsigned long length) = 0;
  virtual ~ClassBase64();

  /// Converts `length` bytes. Returns false and keeps the old result for null or a length of 0.
  virtual bool LoadFromBuf(void const* data, unsigned long length);
  /// Converts the string including its terminating NUL, as in stored passwords: encoding "abc" gives "YWJjAA==", and ""
  /// gives "AA==". Decoding ignores the NUL. Returns false for null. The second overload converts up to the first NUL.
  virtual bool LoadFromStr(std::string const& text);
  virtual bool LoadFromStr(char const* text);
  /// Converts a whole file. Returns false and keeps the old result for null, and for a file that cannot be read, is
  /// empty or is not a regular file.
  virtual bool LoadFromFile(std::string const& path);
  virtual bool LoadFromFile(char const* path);

  /// Writes the result to the file, which is created, or emptied first. Returns true also without a result: the file is
  /// then empty. Returns false for null, or if the file cannot be opened or written; an incomplete file is not removed.
  virtual bool SaveToFile(std::string const& path);
  virtual bool SaveToFile(char const* path);
  /// Stores the result up to its first NUL in `out`. Returns false with `out` unchanged if there is no result or it is
  /// empty.
  virtual bool SaveToStr(std::string& out);
  /// Calls SaveToBuf, then stores NUL in the last of the `size` bytes, over the result if it fills them. Returns false
  /// if SaveToBuf returned 0 (the NUL is still written), and for null or a size of 0 (nothing is written).
  virtual bool SaveToStr(char* buffer, unsigned long size);
  /// Copies the result, or its first `size` bytes, fills the remainder of the buffer with zeros, and returns the number
  /// of bytes copied. Adds no NUL. Returns 0 and writes nothing without a result or with a size of 0. With a null
  /// buffer returns the length of the result, whatever `size` is.
  virtual unsigned long SaveToBuf(void* buffer, unsigned long size);

  /// Sets the object that receives the progress (null for none); it still belongs to the caller. The codec calls it
  /// before a group (three bytes when encoding, four characters when decoding) if the percentage has grown since the
  /// last call; the first call is for 1 % or more. Encoding ends with a call for 100 % with finished true; decoding
  /// does not. The codec waits one microsecond before each call.
  virtual void SetProgress(ProgressClass const* progress);

  /// Frees the result.
  virtual void Unload();

 protected:
  unsigned char* result_ = nullptr;  // allocated with new[]; null when the result is empty
  unsigned long resultLength_ = 0;   // no NUL is stored or counted
  ProgressClass const* progress_ = nullptr;
};

/// A codec from bytes to Base64 text.
class ZELVANE_API EncodeBase64 : public ClassBase64 {
 public:
  EncodeBase64();
  ~EncodeBase64() override;
  /// Bytes to text: lines of 72 characters, with CR LF between them and none at the end.
  bool EncodeDecodeFunction(void const* data, unsigned long length) override;

  /// LoadFromStr, SaveToStr and Unload in one call. Returns false with `out` unchanged if one of the first two fails.
  virtual bool EncodeStr(std::string const& in, std::string& out);
  /// Same, but returns the text; "" on failure.
  virtual std::string EncodeStr(std::string const& in);
  /// Same for `size` bytes, cut to fit and always ending in NUL. Returns false and writes nothing for null or a size of
  /// 0.
  virtual bool EncodeStr(char const* in, char* out, unsigned long size);
  /// LoadFromFile, SaveToFile and Unload in one call. Returns false and does nothing for a null name, a `source` that
  /// cannot be opened, or "" as `destination`. Returns false with `destination` unchanged if `source` cannot be loaded
  /// (LoadFromFile), and false if `destination` cannot be written.
  virtual bool EncodeFile(std::string const& source, std::string const& destination);
  virtual bool EncodeFile(char const* source, char const* destination);
};

/// A codec from Base64 text to bytes.
class ZELVANE_API DecodeBase64 : public ClassBase64 {
 public:
  DecodeBase64();
  ~DecodeBase64() override;
  /// Text to bytes. Characters that are neither in the alphabet nor "=" are skipped anywhere. "=" counts as a character
  /// of value 0 anywhere. If the third of four characters is "=", the group gives one byte; otherwise, if the fourth is
  /// "=", two. Such a group is the last one decoded. Fewer than four characters at the end are dropped.
  bool EncodeDecodeFunction(void const* data, unsigned long length) override;

  /// Same as in EncodeBase64, but decoding. Text that another tool encoded without the NUL gives the same string.
  virtual bool DecodeStr(std::string const& in, std::string& out);
  virtual std::string DecodeStr(std::string const& in);
  virtual bool DecodeStr(char const* in, char* out, unsigned long size);
  virtual bool DecodeFile(std::string const& source, std::string const& destination);
  virtual bool DecodeFile(char const* source, char const* destination);
};

/// EncodeBase64::EncodeStr and DecodeBase64::DecodeStr with a codec of their own; `s` is not changed. Configuration
/// files store passwords in this form: Decode(Encode(s)) is s up to its first NUL. Return "" on failure.
ZELVANE_API std::string EncodeBase64FromStr(std::string& s);
ZELVANE_API std::string DecodeBase64ToStr(std::string& s);

#endif
