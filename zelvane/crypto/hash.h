// Message digests. HashClass is what every digest looks like from outside; Hash_MD4 is the frame that the MD4 family
// shares (64-byte blocks and the padding at the end); Hash_RipeMD256 fills that frame with RIPEMD-256, the one digest
// that works.
//
//   Hash_RipeMD256 hash;
//   hash.Init();
//   hash.Calc(data, length);  // as often as there is more
//   hash.Done();
//   std::memcpy(digest, hash.DigestKey(), 32);
//
// The order of the virtual operations is part of the interface, and they call each other virtually: a subclass may
// replace any of them. An object is used by one thread at a time. No operation throws or allocates.
#ifndef ZELVANE_CRYPTO_HASH_H
#define ZELVANE_CRYPTO_HASH_H

#include <cstdint>
#include <string>

#include "zelvane/export.h"

class ZELVANE_API HashClass {
 public:
  // Holds nothing of its own to copy.
  HashClass();
  HashClass(HashClass const& other);
  HashClass& operator=(HashClass const& other);

  // A hook around the time in which the state holds data: the last act of Init() calls it with true, that of Done()
  // with false. It does nothing; a subclass may lock the state in memory.
  virtual void Protect(bool active);
  virtual ~HashClass();
  // Length of the digest in bytes; 0 when there is none.
  virtual long DigestKeySize();
  // Begins a message, forgetting the one before.
  virtual void Init();
  // Ends it. After that DigestKey() holds the digest; the next message needs Init().
  virtual void Done();
  // Takes in `length` bytes. The data is only read, in spite of its type.
  virtual void Calc(void* data, long length) = 0;
  // DigestKeySize() bytes inside the object, or null when there is no digest. The caller may overwrite them, as
  // CipherClass::InitKey does to leave no trace of a pass phrase.
  virtual void* DigestKey();
};

// The frame alone: it counts, cuts into blocks and pads, but Transform does nothing, so there is no digest.
class ZELVANE_API Hash_MD4 : public HashClass {
 public:
  // Without a message until Init(). A copy goes on from the same state.
  Hash_MD4();
  Hash_MD4(Hash_MD4 const& other);
  Hash_MD4& operator=(Hash_MD4 const& other);
  ~Hash_MD4() override;

  // 0.
  long DigestKeySize() override;
  // Does nothing.
  void Init() override;
  // Pads the message, transforms what is left, clears the block.
  //
  // The length in the padding has 32 bits. From 512 MiB on it is wrong, and stays so: digests of such messages are
  // stored, and a right length would no longer match them.
  void Done() override;
  // Null, zero or a negative length: nothing happens. Pieces may be cut anywhere.
  void Calc(void* data, long length) override;
  // The state. Before Done() these are no digest bytes.
  void* DigestKey() override;
  // Works the 64 bytes at `block` into the state. The type is the one that callers were built with: the bytes are 16
  // little-endian words of 32 bits, however wide a long is.
  virtual void Transform(long* block);

 protected:
  std::uint32_t count_;                    // bytes since Init(), modulo 2^32
  alignas(long) unsigned char block_[64];  // the first count_ % 64 are taken
  std::uint32_t state_[10];                // chaining values; RIPEMD-256 uses eight
};

class ZELVANE_API Hash_RipeMD256 : public Hash_MD4 {
 public:
  // Without a message until Init(). A copy goes on from the same state.
  Hash_RipeMD256();
  Hash_RipeMD256(Hash_RipeMD256 const& other);
  Hash_RipeMD256& operator=(Hash_RipeMD256 const& other);
  ~Hash_RipeMD256() override;

  // 32.
  long DigestKeySize() override;
  void Init() override;
  void Transform(long* block) override;
};

// Nothing chooses by it yet.
enum HashAlgorithm : int {
  HASH_RIPEMD256 = 0,
};

// A facade that does nothing yet. Callers can be written against it, and a subclass whose GetHashObject() gives an
// object serves CipherManager for its pass phrases.
class ZELVANE_API HashManager {
 public:
  HashManager();
  HashManager(HashManager const&) = delete;
  HashManager& operator=(HashManager const&) = delete;

  virtual ~HashManager();
  // Null. The object stays the manager's.
  virtual HashClass* GetHashObject();
  // Do nothing.
  virtual void CalcBuffer(void const* data, unsigned long length);
  virtual void CalcString(char const* text);
  virtual void CalcFile(char const* path);
  // "".
  virtual std::string GetDigest();
  // Does nothing.
  virtual void SetDigest(char const* digest);
  // 0.
  virtual long GetDigestSize();
  // "", whatever the argument.
  virtual std::string GetDigestString(long format);
  // Does nothing, for every value.
  virtual void SetAlgorithm(HashAlgorithm algorithm);
  // HASH_RIPEMD256.
  virtual HashAlgorithm GetAlgorithm();

  // Same as with char const*.
  void CalcString(std::string const& text);
  void CalcFile(std::string const& path);
  void SetDigest(std::string const& digest);

 private:
  HashClass* hash_ = nullptr;
};

#endif
