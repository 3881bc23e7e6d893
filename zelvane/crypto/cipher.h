// The block ciphers that read and write the enciphered files of the product's earlier generation. CipherClass keys a
// cipher and chains its blocks over buffers of any length; Cipher_Safer and its two variants are the SAFER cipher;
// CipherManager owns a cipher and works on buffers, strings and files.
//
//   Hash_RipeMD256 hash;                       Cipher_Safer_SK64 cipher;
//   cipher.SetHash(&hash);
//   if (cipher.InitKey("pass phrase", nullptr)) cipher.DecodeBuffer(in, out, length);
//
// This is for old files only. The key has 64 bits, a wrong phrase is not noticed, changed bytes are not noticed, and
// the chaining below is the product's own.
//
// THE CHAINING. The feedback register F starts as the initial block (`iv`; zeros when that is null), goes on from call
// to call, so that a stream may come in pieces of whole blocks, and is set back by Done(). With E and D for one block:
//
//   CIPHER_CHAINED    C = E(P ^ F), P = D(C) ^ F, and then F = F ^ C: all blocks so far, not only the last.
//                     A rest of k bytes, both ways: T = E(F), the bytes ^ T, and then F = F ^ T.
//   CIPHER_CODE_BOOK  each block by itself. A rest is put into the scratch block, over what that held before, which is
//                     enciphered, when decoding too; as many bytes come out. So the rest cannot be read back.
//   other values      the bytes are copied as they are.
//
// The order of the virtual operations is part of the interface, and they call each other virtually: a subclass may
// replace any of them. An object is used by one thread at a time. No operation throws; without memory for a key, keying
// fails.
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

// Other values are allowed; they copy.
enum CipherMode : int {
  CIPHER_CHAINED = 0,
  CIPHER_CODE_BOOK = 4,
};

class ZELVANE_API CipherClass {
 public:
  CipherClass();
  CipherClass(CipherClass const&) = delete;
  CipherClass& operator=(CipherClass const&) = delete;

  // First and last step of a subclass's Init. InitBegin makes room for what GetContext asks for, forgets the key before
  // and clears flag 0; a negative `*length` (may be null) becomes 0. False without memory or without a block size.
  // InitEnd takes the initial block from `iv` (one block; null: zeros). From then on the object is keyed.
  virtual bool InitBegin(long* length);
  virtual void InitEnd(void* iv);
  // Forgets the key: wipes context, registers and scratch block. Until the next keying the object is not keyed.
  virtual void Protect();
  // Flags 0 to 31; other numbers are ignored. Flag 0 is set by InitKey when it has succeeded.
  virtual void SetFlag(int number, bool on);
  // Sizes in bytes: the block, the longest key, the context. Each pointer may be null. All 0 here.
  virtual void GetContext(long* block, long* key, long* context);
  // The key and everything derived from it are wiped.
  virtual ~CipherClass();

  // Keys the cipher with `length` bytes and the initial block `iv`. False when there is no key.
  virtual bool Init(void const* key, long length, void* iv) = 0;
  // Sets the feedback register back to the initial block: the next buffer begins a new stream.
  virtual void Done();
  // One block in place, at any address. Nothing happens for null and before the first keying.
  virtual void Encode(void* block) = 0;
  virtual void Decode(void* block) = 0;
  // Keys the cipher with the digest of the phrase, cut to the key size. The digest in the hash object is enciphered
  // afterwards, so that it does not stay in memory; in the modes that copy it stays there as it is. False without a
  // phrase, a hash object or a digest; then the key before stays.
  virtual bool InitKey(char const* phrase, void* iv);
  // `length` bytes from `in` to `out`, which may be the same buffer, at any address. False, with nothing written, for
  // null, for a length below 1 and before the first keying.
  virtual bool DecodeBuffer(void const* in, void* out, long length);
  virtual bool EncodeBuffer(void const* in, void* out, long length);
  // Counts from the next buffer on; keying leaves it alone. CIPHER_CHAINED at first.
  virtual void SetMode(CipherMode mode);
  virtual CipherMode GetMode();
  // The hash for InitKey; null: none. It stays the caller's, who keeps it alive. InitKey works with it, so it must not
  // be a constant object, in spite of the type.
  virtual void SetHash(HashClass const* hash);

  // Same as with char const*.
  bool InitKey(std::string const& phrase, void* iv);

  // False for a number that is none.
  bool GetFlag(int number) const;

 protected:
  // Whether a key is there: between InitEnd and the next InitBegin or Protect.
  bool IsKeyed() const { return keyed_; }
  // The room for tables and subkeys, of the size that GetContext gave; null before the first InitBegin.
  unsigned char* Context();
  // The feedback register, of one block; null before the first InitBegin.
  unsigned char* Feedback();

 private:
  bool Accepts(void const* in, void const* out, long length) const;
  void ChainRest(unsigned char* bytes, long count);
  void CodeBookRest(unsigned char* bytes, long count);
  // A block each: the initial block, the feedback register, the one that becomes the next, the scratch block.
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

// The variants of SAFER. Other values are allowed: K chosen by the length of the key, with 8 rounds.
enum SaferMode : int {
  SAFER_K = 0,         // by length: under 6 bytes SAFER_K_SHORT, under 9 SAFER_K64, otherwise SAFER_K128
  SAFER_K_SHORT = 1,   // 5 bytes, 5 rounds
  SAFER_K64 = 2,       // 8 bytes, 6 rounds
  SAFER_K128 = 3,      // 16 bytes, 10 rounds
  SAFER_SK = 4,        // by length, as SAFER_K
  SAFER_SK_SHORT = 5,  // 5 bytes, 5 rounds
  SAFER_SK64 = 6,      // 8 bytes, 6 rounds: not the 8 that are recommended for it, because the old files have 6
  SAFER_SK128 = 7,     // 16 bytes, 10 rounds
};

// SAFER with blocks of 8 bytes and keys of up to 16. A key shorter than its variant takes is filled with zeros, a
// longer one is cut; no byte beyond its length is read.
class ZELVANE_API Cipher_Safer : public CipherClass {
 public:
  Cipher_Safer();
  ~Cipher_Safer() override;

  void Protect() override;
  // 8, 16 and 768. A subclass may tell another size for the key alone.
  void GetContext(long* block, long* key, long* context) override;
  // InitNew with SAFER_SK.
  bool Init(void const* key, long length, void* iv) override;
  void Encode(void* block) override;
  void Decode(void* block) override;
  // As in CipherClass. Where Encode and Decode are this class's own, blocks that do not wait for each other are worked
  // on together.
  bool DecodeBuffer(void const* in, void* out, long length) override;
  bool EncodeBuffer(void const* in, void* out, long length) override;
  // Steps of InitNew: the schedule of the variant chosen by then, and the tables. Nothing happens for a null key or
  // before InitBegin.
  virtual void Internal_InitKey(void const* key, long length);
  virtual void Internal_InitTab();
  // Keys the cipher as the variant `mode`. A null key: false, and the key before stays.
  virtual bool InitNew(void const* key, long length, void* iv, SaferMode mode);
  // 4 to 13 rounds; for any other number the default of the present variant, which is 8 before the first keying. Counts
  // at once. The number stays for later keys, of other variants too: an object takes a default only once.
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

// SAFER K-64.
class ZELVANE_API Cipher_Safer_K64 : public Cipher_Safer {
 public:
  Cipher_Safer_K64();
  ~Cipher_Safer_K64() override;

  // 8, 8 and 768.
  void GetContext(long* block, long* key, long* context) override;
  bool Init(void const* key, long length, void* iv) override;
};

// SAFER SK-64, the cipher of the old files. Sizes as above.
class ZELVANE_API Cipher_Safer_SK64 : public Cipher_Safer_K64 {
 public:
  Cipher_Safer_SK64();
  ~Cipher_Safer_SK64() override;

  bool Init(void const* key, long length, void* iv) override;
};

// There is one algorithm; every other value stands for it too.
enum CipherAlgorithm : int {
  CIPHER_SAFER_SK64 = 0,
};

// Owns a cipher. Without one (before SetAlgorithm) every operation that needs it gives false or "".
class ZELVANE_API CipherManager {
 public:
  CipherManager();
  CipherManager(CipherManager const&) = delete;
  CipherManager& operator=(CipherManager const&) = delete;

  virtual ~CipherManager();
  // CipherClass::InitKey; without `iv` the initial block is zeros.
  virtual bool InitKey(char const* phrase, void* iv);
  virtual bool InitKey(char const* phrase);
  // Writes the file `source`, enciphered or deciphered, to `destination`, which is created or emptied first. Both have
  // the same length: nothing is added. Then Done() is called, so that the next file or string begins a stream of its
  // own. False, with `destination` untouched, for null, for a source that cannot be read, when both are the same file,
  // and, unless the source is empty, without a key; false, with a part written, when reading or writing fails later.
  virtual bool EncodeFile(char const* source, char const* destination);
  virtual bool DecodeFile(char const* source, char const* destination);
  // CipherClass::EncodeBuffer and DecodeBuffer. Lengths above 2^31 - 1 are refused.
  virtual bool EncodeBuffer(void const* in, void* out, unsigned long length);
  virtual bool DecodeBuffer(void const* in, void* out, unsigned long length);
  // The text enciphered, as raw bytes, and back; then Done() is called. The result ends at its first NUL. Of enciphered
  // texts with n bytes, about n in 256 have one inside and cannot be read back. "" for null or on failure.
  virtual std::string EncodeString(char const* text);
  virtual std::string DecodeString(char const* text);
  // Replaces the cipher by a new SAFER SK-64, with the mode set here and the hash of the hash manager (none without
  // one). It has no key yet. Every value does the same.
  virtual void SetAlgorithm(CipherAlgorithm algorithm);
  // The value last set; CIPHER_SAFER_SK64 at first.
  virtual CipherAlgorithm GetAlgorithm();
  // Reaches the present cipher too. CIPHER_CHAINED at first.
  virtual void SetMode(CipherMode mode);
  virtual CipherMode GetMode();
  // Where SetAlgorithm gets the hash object from; null: nowhere. A cipher already there keeps its hash. The manager
  // stays the caller's, who keeps it alive, and is no constant object, in spite of the type.
  virtual void SetHashManager(HashManager const* manager);
  virtual HashManager* GetHashManager();
  // The cipher, or null. It stays the manager's, until the next SetAlgorithm.
  virtual CipherClass* GetCipherObject();

  // Same as with char const*.
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
