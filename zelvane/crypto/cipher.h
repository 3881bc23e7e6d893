/// @file
/// The block ciphers that read and write the encrypted files of the product's earlier generation. CipherClass holds the
/// key of a cipher and chains its blocks over buffers of any length. Cipher_Safer and its two variants are the SAFER
/// cipher. CipherManager owns a cipher and works on buffers, strings and files.
///
///     Hash_RipeMD256 hash;                       Cipher_Safer_SK64 cipher;
///     cipher.SetHash(&hash);
///     if (cipher.InitKey("pass phrase", nullptr)) cipher.DecodeBuffer(in, out, length);
///
/// Use this for old files only. The key has 64 bits, a wrong phrase or changed bytes are not detected, and the chaining
/// below is the product's own.
///
/// CHAINING. The feedback register F starts as the initial block (`iv`; zeros if it is null). It continues from call to
/// call, so a stream can be passed in parts of whole blocks. Done() resets it. With E and D for one block:
///
///     CIPHER_CHAINED    C = E(P ^ F), P = D(C) ^ F, and then F = F ^ C: all blocks so far, not only the last.
///                       A partial block, both ways: T = E(F), the bytes ^ T, and then F = F ^ T.
///     CIPHER_CODE_BOOK  each block by itself. A partial block is copied over the beginning of the scratch block, which
///                       is then encrypted, also when decoding; its first bytes are the result. So it cannot be
///                       decrypted.
///     other values      the bytes are copied unchanged.
///
/// The operations are virtual hooks: they call each other through the virtual table, and their order is part of the
/// interface. One thread at a time may use an object. No operation throws; when memory runs out, keying fails.
#ifndef ZELVANE_CRYPTO_CIPHER_H
#define ZELVANE_CRYPTO_CIPHER_H

#include <cstdint>
#include <memory>
#include <string>

#include "zelvane/crypto/hash.h"
#include "zelvane/export.h"

namespace zelvane::internal {
struct SaferContext;
struct SaferSchedule;
}  // namespace zelvane::internal

/// Other values are allowed; they copy the bytes unchanged.
enum CipherMode : int {
  CIPHER_CHAINED = 0,
  CIPHER_CODE_BOOK = 4,
};

/// @copydoc zelvane/crypto/cipher.h
class ZELVANE_API CipherClass {
 public:
  CipherClass();
  CipherClass(CipherClass const&) = delete;
  CipherClass& operator=(CipherClass const&) = delete;

  /// First and last hook of a subclass's Init. InitBegin allocates the sizes of GetContext, forgets the previous key
  /// and clears flag 0. A negative `*length` becomes 0; `length` can be null. Returns false when memory runs out, or
  /// without a block size. InitEnd takes the initial block from `iv` (one block; null: zeros). From then on the object
  /// is keyed.
  virtual bool InitBegin(long* length);
  virtual void InitEnd(void* iv);
  /// Forgets the key: wipes context, registers and scratch block. The object is not keyed until the next key.
  virtual void Protect();
  /// Sets a flag, 0 to 31; other numbers are ignored. InitKey sets flag 0 on success.
  virtual void SetFlag(int number, bool on);
  /// Stores sizes in bytes: the block, the longest key, the context. Each pointer can be null. Here all are 0.
  virtual void GetContext(long* block, long* key, long* context);
  /// Wipes the key and everything derived from it.
  virtual ~CipherClass();

  /// Keys the cipher with `length` bytes and the initial block `iv`. Returns false if there is no key.
  virtual bool Init(void const* key, long length, void* iv) = 0;
  /// Resets the feedback register to the initial block: the next buffer starts a new stream.
  virtual void Done();
  /// Encrypt or decrypt one block in place, at any address. Do nothing for null or before the first keying.
  virtual void Encode(void* block) = 0;
  virtual void Decode(void* block) = 0;
  /// Keys the cipher with the digest of the phrase, cut to the key size. The digest in the hash object is then
  /// encrypted, so that it does not stay in memory; in the modes that copy, it stays unchanged. Returns false without a
  /// phrase, a hash object or a digest; the previous key then stays. Also returns false if Init fails.
  virtual bool InitKey(char const* phrase, void* iv);
  /// Decrypt or encrypt `length` bytes from `in` to `out`, which can be the same buffer, at any address. Return false
  /// and write nothing for null, for a length below 1 and before the first keying.
  virtual bool DecodeBuffer(void const* in, void* out, long length);
  virtual bool EncodeBuffer(void const* in, void* out, long length);
  /// Sets the mode of the following buffers; keying does not change it. At first CIPHER_CHAINED.
  virtual void SetMode(CipherMode mode);
  virtual CipherMode GetMode();
  /// Sets the hash for InitKey; null: none. It belongs to the caller, who keeps it alive. InitKey works with it, so in
  /// spite of the type it must not be a constant object.
  virtual void SetHash(HashClass const* hash);

  /// Same as the char const* overload.
  bool InitKey(std::string const& phrase, void* iv);

  /// Returns false for a number that is not a flag.
  bool GetFlag(int number) const;

 protected:
  // Whether the object has a key: between InitEnd and the next InitBegin or Protect.
  bool IsKeyed() const { return keyed_; }
  // Space for tables and subkeys, of the size from GetContext; null before the first InitBegin.
  unsigned char* Context();
  // The feedback register, of one block; null before the first InitBegin.
  unsigned char* Feedback();

 private:
  bool Accepts(void const* in, void const* out, long length) const;
  void ChainRest(unsigned char* bytes, long count);
  void CodeBookRest(unsigned char* bytes, long count);
  // One block each: the initial block, the feedback register, the next feedback register, the scratch block.
  enum Register : int { kStart, kFeedback, kAlternate, kScratch, kRegisters };
  unsigned char* Block(Register which);
  void Wipe();

  std::unique_ptr<unsigned char[]> memory_;  // the registers, then the context
  long block_ = 0;
  long context_ = 0;
  bool keyed_ = false;
  CipherMode mode_ = CIPHER_CHAINED;
  HashClass* hash_ = nullptr;
  std::uint32_t flags_ = 0;
};

/// The variants of SAFER. Other values are allowed: K, chosen by the length of the key, with 8 rounds.
enum SaferMode : int {
  SAFER_K = 0,         ///< by length: under 6 bytes SAFER_K_SHORT, under 9 SAFER_K64, otherwise SAFER_K128
  SAFER_K_SHORT = 1,   ///< 5 bytes, 5 rounds
  SAFER_K64 = 2,       ///< 8 bytes, 6 rounds
  SAFER_K128 = 3,      ///< 16 bytes, 10 rounds
  SAFER_SK = 4,        ///< by length, as SAFER_K
  SAFER_SK_SHORT = 5,  ///< 5 bytes, 5 rounds
  SAFER_SK64 = 6,      ///< 8 bytes, 6 rounds: not the recommended 8, because the old files have 6
  SAFER_SK128 = 7,     ///< 16 bytes, 10 rounds
};

/// SAFER with blocks of 8 bytes and keys of up to 16. A key shorter than its variant requires is filled with zeros, a
/// longer one is cut; no byte beyond its length is read.
class ZELVANE_API Cipher_Safer : public CipherClass {
 public:
  Cipher_Safer();
  ~Cipher_Safer() override;

  void Protect() override;
  /// Stores 8, 16 and 768. A subclass can change only the size of the key.
  void GetContext(long* block, long* key, long* context) override;
  /// InitNew with SAFER_SK.
  bool Init(void const* key, long length, void* iv) override;
  void Encode(void* block) override;
  void Decode(void* block) override;
  /// As in CipherClass. If a subclass does not replace Encode and Decode, independent blocks are processed together.
  bool DecodeBuffer(void const* in, void* out, long length) override;
  bool EncodeBuffer(void const* in, void* out, long length) override;
  /// Hooks of InitNew: the key schedule of the variant chosen before, and the tables. Do nothing for a null key or
  /// before InitBegin.
  virtual void Internal_InitKey(void const* key, long length);
  virtual void Internal_InitTab();
  /// Keys the cipher as the variant `mode`. Returns false for a null key; the previous key then stays.
  virtual bool InitNew(void const* key, long length, void* iv, SaferMode mode);
  /// Sets 4 to 13 rounds. Any other number sets the default of the current variant, which is 8 before the first keying.
  /// Takes effect immediately. Without a call, the first keying sets the default of its variant. The number stays for
  /// later keys, also of other variants.
  virtual void SetRounds(long rounds);

 private:
  friend class Cipher_Safer_K64;
  friend class Cipher_Safer_SK64;

  ZELVANE_HIDDEN void RememberTable();
  long Together(void const* in, void const* out, long length) const;
  zelvane::internal::SaferContext* Tables();

  std::unique_ptr<zelvane::internal::SaferSchedule> schedule_;
  SaferMode variant_;
  long rounds_ = 0;
  void const* ownTable_ = nullptr;  // see RememberTable
};

/// SAFER K-64.
class ZELVANE_API Cipher_Safer_K64 : public Cipher_Safer {
 public:
  Cipher_Safer_K64();
  ~Cipher_Safer_K64() override;

  /// Stores 8, 8 and 768.
  void GetContext(long* block, long* key, long* context) override;
  bool Init(void const* key, long length, void* iv) override;
};

/// SAFER SK-64, the cipher of the old files. Its sizes are those of SAFER K-64.
class ZELVANE_API Cipher_Safer_SK64 : public Cipher_Safer_K64 {
 public:
  Cipher_Safer_SK64();
  ~Cipher_Safer_SK64() override;

  bool Init(void const* key, long length, void* iv) override;
};

/// There is one algorithm; every other value means it too.
enum CipherAlgorithm : int {
  CIPHER_SAFER_SK64 = 0,
};

/// Owns a cipher. Without one (before SetAlgorithm) every operation that needs it returns false or "".
class ZELVANE_API CipherManager {
 public:
  CipherManager();
  CipherManager(CipherManager const&) = delete;
  CipherManager& operator=(CipherManager const&) = delete;

  virtual ~CipherManager();
  /// CipherClass::InitKey; without `iv` the initial block is zeros.
  virtual bool InitKey(char const* phrase, void* iv);
  virtual bool InitKey(char const* phrase);
  /// Encrypt or decrypt the file `source` to `destination`, which is created, or emptied first. Both have the same
  /// length: nothing is added. Then Done() is called, so that the next file or string starts a stream of its own. False
  /// with `destination` unchanged: null; a source that cannot be read; both are the same file; no key, unless the
  /// source is empty. False with a part written: reading or writing fails later.
  virtual bool EncodeFile(char const* source, char const* destination);
  virtual bool DecodeFile(char const* source, char const* destination);
  /// CipherClass::EncodeBuffer and DecodeBuffer. Return false for a length above 2^31 - 1.
  virtual bool EncodeBuffer(void const* in, void* out, unsigned long length);
  virtual bool DecodeBuffer(void const* in, void* out, unsigned long length);
  /// Return the text encrypted, as raw bytes, or decrypted; then Done() is called. Kept: the result ends at its first
  /// NUL. An encrypted text of n bytes contains one, and cannot be decrypted, in about n of 256 cases. Return "" for
  /// null or on failure.
  virtual std::string EncodeString(char const* text);
  virtual std::string DecodeString(char const* text);
  /// Replaces the cipher with a new SAFER SK-64, with the mode set here and the hash of the hash manager (none without
  /// a manager). It has no key yet. Every value does the same.
  virtual void SetAlgorithm(CipherAlgorithm algorithm);
  /// Returns the value last set; at first CIPHER_SAFER_SK64.
  virtual CipherAlgorithm GetAlgorithm();
  /// Sets the mode of the current cipher and of later ones. At first CIPHER_CHAINED.
  virtual void SetMode(CipherMode mode);
  virtual CipherMode GetMode();
  /// Sets the manager from which SetAlgorithm gets the hash object; null: none. An existing cipher keeps its hash. The
  /// manager belongs to the caller, who keeps it alive. In spite of the type it must not be a constant object.
  virtual void SetHashManager(HashManager const* manager);
  virtual HashManager* GetHashManager();
  /// Returns the cipher, or null. It belongs to the manager and is valid until the next SetAlgorithm.
  virtual CipherClass* GetCipherObject();

  /// Same as the char const* overloads.
  bool InitKey(std::string const& phrase, void* iv);
  bool InitKey(std::string const& phrase);
  bool EncodeFile(std::string const& source, std::string const& destination);
  bool DecodeFile(std::string const& source, std::string const& destination);
  std::string EncodeString(std::string const& text);
  std::string DecodeString(std::string const& text);

 private:
  using Coder = bool (CipherManager::*)(void const* in, void* out, unsigned long length);
  bool CodeFile(char const* source, char const* destination, Coder coder);
  bool CodeStream(int source, char const* destination, Coder coder);
  std::string CodeString(char const* text, Coder coder);

  std::unique_ptr<CipherClass> cipher_;
  CipherAlgorithm algorithm_ = CIPHER_SAFER_SK64;
  CipherMode mode_ = CIPHER_CHAINED;
  HashManager* hashManager_ = nullptr;
};

#endif
