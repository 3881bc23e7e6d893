// Base64 and the cipher: decode(encode(x)) = x, and any text can be decoded.
#include "zelvane/crypto/base64.h"
#include "fuzz.h"
#include "zelvane/crypto/cipher.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  if (size == 0) return 0;
  EncodeBase64 encoder;
  DecodeBase64 decoder;
  std::string const bytes = fuzz::Text(data, size);
  decoder.LoadFromBuf(data, size);
  fuzz::Check(decoder.SaveToBuf(nullptr, 0) <= size / 4 * 3 + 3, "three bytes a group");

  fuzz::Check(encoder.LoadFromBuf(data, size), "encoded");
  std::string text(encoder.SaveToBuf(nullptr, 0), '\0');
  encoder.SaveToBuf(text.data(), text.size());
  fuzz::Check(decoder.LoadFromBuf(text.data(), text.size()), "decoded");
  std::string back(decoder.SaveToBuf(nullptr, 0), '\0');
  decoder.SaveToBuf(back.data(), back.size());
  fuzz::Check(back == bytes, "decode(encode(x)) = x");

  Cipher_Safer_SK64 cipher;
  long const length = static_cast<long>(size);
  fuzz::Check(cipher.Init(data, length, nullptr), "keyed");
  std::string hidden(size, '\0'), shown(size, '\0');
  fuzz::Check(cipher.EncodeBuffer(data, hidden.data(), length), "enciphered");
  cipher.Done();
  fuzz::Check(cipher.DecodeBuffer(hidden.data(), shown.data(), length) && shown == bytes, "and back");
  return 0;
}
