/// @file
/// Message digests. HashClass is the interface of every digest. Hash_MD4 is the framework of the MD4 family (64-byte
/// blocks and the padding at the end). Hash_RipeMD256 adds RIPEMD-256, the only digest that works.
///
///     Hash_RipeMD256 hash;
///     hash.Init();
///     hash.Calc(data, length);  // any number of times
///     hash.Done();
///     std::memcpy(digest, hash.DigestKey(), 32);
///
/// The operations are virtual hooks: they call each other through the virtual table, and their order is part of the
/// interface. One thread at a time may use an object. No operation throws or allocates.
#ifndef ZELVANE_CRYPTO_HASH_H
#define ZELVANE_CRYPTO_HASH_H

#include <cstdint>
#include <string>

#include "zelvane/export.h"

/// The interface of every digest.
class ZELVANE_API HashClass {
 public:
  /// The object has no data to copy.
  HashClass();
  HashClass(HashClass const& other);
  HashClass& operator=(HashClass const& other);

  /// Called around the time in which the state holds data: at the end of Init() with true, at the end of Done() with
  /// false. Does nothing; a subclass can lock the state in memory.
  virtual void Protect(bool active);
  virtual ~HashClass();
  /// Returns the length of the digest in bytes; 0 if there is none.
  virtual long DigestKeySize();
  /// Starts a message and forgets the previous one.
  virtual void Init();
  /// Ends the message. DigestKey() then returns the digest. The next message needs Init().
  virtual void Done();
  /// Adds `length` bytes. In spite of its type, the data is only read.
  virtual void Calc(void* data, long length) = 0;
  /// Returns DigestKeySize() bytes inside the object, or null if there is no digest. The caller may overwrite them:
  /// CipherClass::InitKey does, to leave no trace of a pass phrase.
  virtual void* DigestKey();
};

/// The framework alone: it counts, splits into blocks and pads, but Transform does nothing, so there is no digest.
class ZELVANE_API Hash_MD4 : public HashClass {
 public:
  /// No message until Init(). A copy continues from the same state.
  Hash_MD4();
  Hash_MD4(Hash_MD4 const& other);
  Hash_MD4& operator=(Hash_MD4 const& other);
  ~Hash_MD4() override;

  /// Returns 0.
  long DigestKeySize() override;
  /// Does nothing.
  void Init() override;
  /// Pads the message, transforms the remainder, clears the block.
  ///
  /// Kept: the length in the padding has 32 bits and is wrong from 512 MiB on. Digests of such messages are stored, and
  /// a correct length would no longer match them.
  void Done() override;
  /// Does nothing for null, or a length of zero or below. A message can be split anywhere.
  void Calc(void* data, long length) override;
  /// Returns the state. Before Done() it is not a digest.
  void* DigestKey() override;
  /// Updates the state with the 64 bytes at `block`; does nothing for null. The type is the one that callers were built
  /// with: the bytes are 16 little-endian words of 32 bits, whatever the width of long.
  virtual void Transform(long* block);

 protected:
  std::uint32_t count_;                    // bytes since Init(), modulo 2^32
  alignas(long) unsigned char block_[64];  // the first count_ % 64 are taken
  std::uint32_t state_[10];                // chaining values; RIPEMD-256 uses eight
};

/// RIPEMD-256, the only digest that works.
class ZELVANE_API Hash_RipeMD256 : public Hash_MD4 {
 public:
  /// No message until Init(). A copy continues from the same state.
  Hash_RipeMD256();
  Hash_RipeMD256(Hash_RipeMD256 const& other);
  Hash_RipeMD256& operator=(Hash_RipeMD256 const& other);
  ~Hash_RipeMD256() override;

  /// Returns 32.
  long DigestKeySize() override;
  void Init() override;
  void Transform(long* block) override;
};

/// Not used to choose anything yet.
enum HashAlgorithm : int {
  HASH_RIPEMD256 = 0,
};

/// A facade that does nothing yet. Callers can be written against it. A subclass whose GetHashObject() returns an
/// object can serve CipherManager for its pass phrases.
class ZELVANE_API HashManager {
 public:
  HashManager();
  HashManager(HashManager const&) = delete;
  HashManager& operator=(HashManager const&) = delete;

  virtual ~HashManager();
  /// Returns null. An object would belong to the manager.
  virtual HashClass* GetHashObject();
  /// These three do nothing.
  virtual void CalcBuffer(void const* data, unsigned long length);
  virtual void CalcString(char const* text);
  virtual void CalcFile(char const* path);
  /// Returns "".
  virtual std::string GetDigest();
  /// Does nothing.
  virtual void SetDigest(char const* digest);
  /// Returns 0.
  virtual long GetDigestSize();
  /// Returns "", whatever the argument.
  virtual std::string GetDigestString(long format);
  /// Does nothing, for any value.
  virtual void SetAlgorithm(HashAlgorithm algorithm);
  /// Returns HASH_RIPEMD256.
  virtual HashAlgorithm GetAlgorithm();

  /// Same as the char const* overloads.
  void CalcString(std::string const& text);
  void CalcFile(std::string const& path);
  void SetDigest(std::string const& digest);

 private:
  HashClass* hash_ = nullptr;
};

#endif
