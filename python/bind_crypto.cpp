// Base64, RIPEMD-256 and the cipher of old files.
#include <memory>
#include <vector>

#include "binding.h"
#include "zelvane/crypto/base64.h"
#include "zelvane/crypto/cipher.h"
#include "zelvane/crypto/hash.h"

namespace {

constexpr std::size_t kMostAtOnce = 1 << 30;  // the library's lengths are long

// Bytes to bytes, b"" to b"".
template <class Codec>
py::bytes Convert(py::buffer const& data) {
  View const bytes(data);
  std::string const result = Unlocked([&] {
    Codec codec;
    std::string converted;
    if (bytes.Size() == 0) return converted;
    if (!codec.LoadFromBuf(bytes.Data(), bytes.Size())) throw std::bad_alloc();
    converted.resize(codec.SaveToBuf(nullptr, 0));
    codec.SaveToBuf(converted.data(), converted.size());
    return converted;
  });
  return py::bytes(result);
}

class Digest {
 public:
  Digest() { hash_.Init(); }
  Digest(Digest const& other) : hash_(other.hash_) {}

  void Update(py::buffer const& data) {
    View const bytes(data);
    Alone(mutex_, [&] {
      for (std::size_t at = 0; at < bytes.Size(); at += kMostAtOnce) {
        std::size_t const length = std::min(kMostAtOnce, bytes.Size() - at);
        hash_.Calc(const_cast<char*>(bytes.Data()) + at, static_cast<long>(length));
      }
    });
  }

  // The message may go on afterwards.
  std::string Bytes() {
    return Alone(mutex_, [&] {
      Hash_RipeMD256 ended = hash_;
      ended.Done();
      return std::string(static_cast<char const*>(ended.DigestKey()), static_cast<std::size_t>(ended.DigestKeySize()));
    });
  }

  std::unique_ptr<Digest> Copy() {
    return Alone(mutex_, [&] { return std::make_unique<Digest>(*this); });
  }

 private:
  std::mutex mutex_;
  Hash_RipeMD256 hash_;
};

class RipeManager : public HashManager {
 public:
  HashClass* GetHashObject() override { return &hash_; }

 private:
  Hash_RipeMD256 hash_;
};

class Cipher {
 public:
  Cipher(Text const& phrase, bool codeBook) {
    manager_.SetHashManager(&hashes_);
    manager_.SetMode(codeBook ? CIPHER_CODE_BOOK : CIPHER_CHAINED);
    manager_.SetAlgorithm(CIPHER_SAFER_SK64);
    if (!manager_.InitKey(phrase.bytes)) throw std::bad_alloc();
  }

  using Coder = bool (CipherManager::*)(void const*, void*, unsigned long);
  py::bytes Code(py::buffer const& data, Coder coder) {
    View const bytes(data);
    std::string const result = Alone(mutex_, [&] {
      std::string out(bytes.Size(), '\0');
      if (out.empty()) return out;
      if (!(manager_.*coder)(bytes.Data(), out.data(), out.size())) throw py::value_error("2 GiB and more at once");
      manager_.GetCipherObject()->Done();  // the next one begins a stream of its own
      return out;
    });
    return py::bytes(result);
  }

  using FileCoder = bool (CipherManager::*)(char const*, char const*);
  void CodeFile(Path const& source, Path const& destination, FileCoder coder) {
    Alone(mutex_, [&] {
      errno = 0;
      if ((manager_.*coder)(source.bytes.c_str(), destination.bytes.c_str())) return;
      throw Failure(errno, source.bytes, "the file is its own destination", destination.bytes);
    });
  }

 private:
  std::mutex mutex_;
  RipeManager hashes_;
  CipherManager manager_;
};

}  // namespace

void BindCrypto(py::module_& module) {
  module.def("b64encode", &Convert<EncodeBase64>, "data"_a,
             "The bytes as Base64: lines of 72 characters, CR LF between them and none at the end.");
  module.def("b64decode", &Convert<DecodeBase64>, "data"_a,
             "The decoded bytes. Other characters are skipped, and fewer than four at the end are dropped: no input\n"
             "is an error.");
  module.def(
      "encode_password", [](Text text) { return Text{EncodeBase64FromStr(text.bytes)}; }, "password"_a,
      "A password as in the settings files: Base64 of the text and a NUL. No protection: everyone who can\n"
      "read the file can decode it.");
  module.def(
      "decode_password", [](Text text) { return Text{DecodeBase64ToStr(text.bytes)}; }, "text"_a,
      "The password from its form in the settings files.");

  py::class_<Digest>(module, "RipeMD256", "RIPEMD-256 with the protocol of hashlib.")
      .def(py::init([](py::buffer const& data) {
             auto digest = std::make_unique<Digest>();
             digest->Update(data);
             return digest;
           }),
           "data"_a = py::bytes())
      .def("update", On(&Digest::Update), "data"_a,
           "Adds to the message. BEWARE: from 512 MiB on the digests are those of the product, not RIPEMD-256.")
      .def(
          "digest", [](Digest& digest) { return py::bytes(digest.Bytes()); }, "The 32 bytes of the digest so far.")
      .def(
          "hexdigest", [](Digest& digest) { return py::bytes(digest.Bytes()).attr("hex")(); },
          "The digest so far as 64 hexadecimal digits.")
      .def("copy", On(&Digest::Copy), "A copy of the object with the message so far.")
      .def_property_readonly("name", [](Digest&) { return "ripemd256"; })
      .def_property_readonly("digest_size", [](Digest&) { return 32; })
      .def_property_readonly("block_size", [](Digest&) { return 64; });

  py::class_<Cipher>(
      module, "Cipher",
      "The cipher of the product's old files, SAFER SK-64 under the RIPEMD-256 of a pass phrase.\n\n"
      "For old files only: the key has 64 bits, and neither a wrong phrase nor a changed byte is detected.")
      .def(py::init<Text const&, bool>(), "phrase"_a, "code_book"_a = false,
           "code_book: blocks of 8 bytes are independent, not chained.")
      .def(
          "encrypt", [](Cipher& c, py::buffer const& data) { return c.Code(data, &CipherManager::EncodeBuffer); },
          "data"_a, "Returns as many encrypted bytes, from a stream of their own.")
      .def(
          "decrypt", [](Cipher& c, py::buffer const& data) { return c.Code(data, &CipherManager::DecodeBuffer); },
          "data"_a,
          "Decrypts what encrypt() returned. In code_book mode a partial block at the end cannot be decrypted.")
      .def(
          "encrypt_file",
          [](Cipher& c, Path const& source, Path const& destination) {
            c.CodeFile(source, destination, &CipherManager::EncodeFile);
          },
          "source"_a, "destination"_a,
          "Encrypts a file; replaces the destination. OSError, or Error for a file onto itself.")
      .def(
          "decrypt_file",
          [](Cipher& c, Path const& source, Path const& destination) {
            c.CodeFile(source, destination, &CipherManager::DecodeFile);
          },
          "source"_a, "destination"_a, "Decrypts a file in the same way.");
}
