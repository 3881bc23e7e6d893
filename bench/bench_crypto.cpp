// Compares RIPEMD-256 and the SAFER variants with libtomcrypt and Crypto++, on whole messages and buffers. Keys are set
// beforehand. Each measurement first checks that the results equal ours.
#include <benchmark/benchmark.h>
#include <crypto++/modes.h>
#include <crypto++/ripemd.h>
#include <crypto++/safer.h>
// After Crypto++, because it defines `byte` as a macro.
#include <tomcrypt.h>
#undef byte

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "zelvane/crypto/cipher.h"
#include "zelvane/crypto/hash.h"

namespace {

using Buffer = std::vector<unsigned char>;

Buffer Sample(std::size_t size) {
  Buffer bytes(size);
  for (std::size_t i = 0; i < size; i++) bytes[i] = static_cast<unsigned char>(7 * i + (i >> 8));
  return bytes;
}

// ---- Digests ----

void HashOurs(Buffer& message, unsigned char* digest) {
  Hash_RipeMD256 hash;
  hash.Init();
  hash.Calc(message.data(), static_cast<long>(message.size()));
  hash.Done();
  std::memcpy(digest, hash.DigestKey(), 32);
}

void HashTomcrypt(Buffer& message, unsigned char* digest) {
  hash_state state;
  rmd256_init(&state);
  rmd256_process(&state, message.data(), message.size());
  rmd256_done(&state, digest);
}

void HashCryptopp(Buffer& message, unsigned char* digest) {
  CryptoPP::RIPEMD256 hash;
  hash.Update(message.data(), message.size());
  hash.Final(digest);
}

template <void (*kHash)(Buffer&, unsigned char*)>
void Digest(benchmark::State& state) {
  Buffer message = Sample(static_cast<std::size_t>(state.range(0)));
  Buffer expected(32);
  Buffer digest(32);
  HashOurs(message, expected.data());
  kHash(message, digest.data());
  if (digest != expected) return state.SkipWithError("the digests differ");
  for (auto _ : state) {
    kHash(message, digest.data());
    benchmark::DoNotOptimize(digest.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// ---- Independent blocks ----

struct Variant {
  char const* name;
  SaferMode mode;
  int keySize;
  int rounds;
  bool strengthened;
  int (*setUp)(unsigned char const* key, int keySize, int rounds, symmetric_key* to);
};

constexpr Variant kVariants[] = {
    {"safer-k64", SAFER_K64, 8, 6, false, safer_k64_setup},
    {"safer-k128", SAFER_K128, 16, 10, false, safer_k128_setup},
    {"safer-sk64", SAFER_SK64, 8, 6, true, safer_sk64_setup},
    {"safer-sk128", SAFER_SK128, 16, 10, true, safer_sk128_setup},
};

class Coder {
 public:
  virtual ~Coder() = default;
  virtual void Code(Buffer const& in, Buffer& out) = 0;
};

class Ours : public Coder {
 public:
  Ours(Variant const& variant, Buffer const& key, bool encode) : encode_(encode) {
    cipher_.InitNew(key.data(), variant.keySize, nullptr, variant.mode);
    cipher_.SetMode(CIPHER_CODE_BOOK);
  }
  void Code(Buffer const& in, Buffer& out) override {
    long const size = static_cast<long>(in.size());
    if (encode_) {
      cipher_.EncodeBuffer(in.data(), out.data(), size);
    } else {
      cipher_.DecodeBuffer(in.data(), out.data(), size);
    }
  }

 private:
  Cipher_Safer cipher_;
  bool encode_;
};

// Only the block operations, one call per block, as the chained mode needs them.
class OursByBlock : public Coder {
 public:
  OursByBlock(Variant const& variant, Buffer const& key, bool encode) : encode_(encode) {
    cipher_.InitNew(key.data(), variant.keySize, nullptr, variant.mode);
  }
  void Code(Buffer const& in, Buffer& out) override {
    std::memcpy(out.data(), in.data(), in.size());
    CipherClass& cipher = cipher_;
    for (std::size_t i = 0; i < out.size(); i += 8) {
      if (encode_) {
        cipher.Encode(&out[i]);
      } else {
        cipher.Decode(&out[i]);
      }
    }
  }

 private:
  Cipher_Safer cipher_;
  bool encode_;
};

class Tomcrypt : public Coder {
 public:
  Tomcrypt(Variant const& variant, Buffer const& key, bool encode) : encode_(encode) {
    variant.setUp(key.data(), variant.keySize, variant.rounds, &key_);
  }
  void Code(Buffer const& in, Buffer& out) override {
    for (std::size_t i = 0; i < in.size(); i += 8) {
      if (encode_) {
        safer_ecb_encrypt(&in[i], &out[i], &key_);
      } else {
        safer_ecb_decrypt(&in[i], &out[i], &key_);
      }
    }
  }

 private:
  symmetric_key key_;
  bool encode_;
};

template <class Cipher>
std::unique_ptr<CryptoPP::SymmetricCipher> MakePeer(bool encode) {
  if (encode) return std::make_unique<typename CryptoPP::ECB_Mode<Cipher>::Encryption>();
  return std::make_unique<typename CryptoPP::ECB_Mode<Cipher>::Decryption>();
}

class Cryptopp : public Coder {
 public:
  Cryptopp(Variant const& variant, Buffer const& key, bool encode)
      : peer_(variant.strengthened ? MakePeer<CryptoPP::SAFER_SK>(encode) : MakePeer<CryptoPP::SAFER_K>(encode)) {
    peer_->SetKey(key.data(), static_cast<std::size_t>(variant.keySize),
                  CryptoPP::MakeParameters("Rounds", variant.rounds));
  }
  void Code(Buffer const& in, Buffer& out) override { peer_->ProcessData(out.data(), in.data(), in.size()); }

 private:
  std::unique_ptr<CryptoPP::SymmetricCipher> peer_;
};

template <class Who>
void Blocks(benchmark::State& state, Variant const& variant, bool encode) {
  Buffer const key = Sample(16);
  Buffer const in = Sample(static_cast<std::size_t>(state.range(0)));
  Buffer expected(in.size());
  Buffer out(in.size());
  Who coder(variant, key, encode);
  Ours(variant, key, encode).Code(in, expected);
  coder.Code(in, out);
  if (out != expected) return state.SkipWithError("the blocks differ");
  for (auto _ : state) {
    coder.Code(in, out);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class Who>
void Register(Variant const& variant, bool encode, std::string const& who) {
  std::string const name = std::string(variant.name) + (encode ? "-encode/" : "-decode/") + who;
  benchmark::RegisterBenchmark(name.c_str(),
                               [&variant, encode](benchmark::State& state) { Blocks<Who>(state, variant, encode); })
      ->Arg(1 << 10)
      ->Arg(1 << 20);
}

int RegisterBlocks() {
  for (Variant const& variant : kVariants) {
    for (bool encode : {true, false}) {
      Register<Ours>(variant, encode, "ours");
      Register<OursByBlock>(variant, encode, "ours-by-block");
      Register<Tomcrypt>(variant, encode, "libtomcrypt");
      Register<Cryptopp>(variant, encode, "cryptopp");
    }
  }
  return 0;
}

BENCHMARK(Digest<HashOurs>)->Name("ripemd256/ours")->Arg(1 << 10)->Arg(1 << 20);
BENCHMARK(Digest<HashTomcrypt>)->Name("ripemd256/libtomcrypt")->Arg(1 << 10)->Arg(1 << 20);
BENCHMARK(Digest<HashCryptopp>)->Name("ripemd256/cryptopp")->Arg(1 << 10)->Arg(1 << 20);
int const kRegistered = RegisterBlocks();

}  // namespace
