#include <algorithm>
#include <cstring>
#include <new>

#include "zelvane/core/vtable_internal.h"
#include "zelvane/crypto/cipher.h"
#include "zelvane/crypto/cipher_internal.h"
#include "zelvane/crypto/safer_internal.h"

using zelvane::internal::kSaferBlock;
using zelvane::internal::kSaferMaxRounds;
using zelvane::internal::kSaferMinRounds;
using zelvane::internal::SaferContext;
using zelvane::internal::SaferKeySize;
using zelvane::internal::SaferSchedule;
using zelvane::internal::TableOf;
using zelvane::internal::TellSizes;
using zelvane::internal::XorInto;

namespace {

constexpr long kBlocksAtOnce = 64;
constexpr SaferMode kNoVariant = static_cast<SaferMode>(-1);

static_assert(sizeof(SaferContext) == 768, "GetContext tells this size");

SaferMode ByKeyLength(long length, SaferMode shortKey, SaferMode middleKey, SaferMode longKey) {
  if (length < 6) return shortKey;
  return length <= 8 ? middleKey : longKey;
}

SaferKeySize KeySize(SaferMode variant) {
  if (variant == SAFER_K_SHORT || variant == SAFER_SK_SHORT) return SaferKeySize::kShort;
  return variant == SAFER_K128 || variant == SAFER_SK128 ? SaferKeySize::k128 : SaferKeySize::k64;
}

long DefaultRounds(SaferMode variant) {
  switch (variant) {
    case SAFER_K_SHORT:
    case SAFER_SK_SHORT: return 5;
    case SAFER_K64:
    case SAFER_SK64: return 6;
    case SAFER_K128:
    case SAFER_SK128: return 10;
    default: return 8;
  }
}

}  // namespace

Cipher_Safer::Cipher_Safer() : variant_(kNoVariant) { RememberTable(); }

Cipher_Safer::~Cipher_Safer() {
  if (schedule_ != nullptr) explicit_bzero(schedule_.get(), sizeof(SaferSchedule));
}

void Cipher_Safer::Protect() {
  CipherClass::Protect();
  if (schedule_ != nullptr) explicit_bzero(schedule_.get(), sizeof(SaferSchedule));
}

void Cipher_Safer::GetContext(long* block, long* key, long* context) {
  TellSizes(block, key, context, kSaferBlock, 16, sizeof(SaferContext));
}

bool Cipher_Safer::Init(void const* key, long length, void* iv) { return InitNew(key, length, iv, SAFER_SK); }

void Cipher_Safer::Encode(void* block) {
  if (block == nullptr || !IsKeyed() || schedule_ == nullptr) return;
  SaferEncode(*Tables(), *schedule_, rounds_, static_cast<unsigned char*>(block), 1);
}

void Cipher_Safer::Decode(void* block) {
  if (block == nullptr || !IsKeyed() || schedule_ == nullptr) return;
  SaferDecode(*Tables(), *schedule_, rounds_, static_cast<unsigned char*>(block), 1);
}

bool Cipher_Safer::EncodeBuffer(void const* in, void* out, long length) {
  // In a chain every block depends on the one before.
  long const together = GetMode() == CIPHER_CODE_BOOK ? Together(in, out, length) : 0;
  if (together == 0) return CipherClass::EncodeBuffer(in, out, length);
  auto* const bytes = static_cast<unsigned char*>(out);
  if (in != out) std::memmove(out, in, static_cast<std::size_t>(length));
  SaferEncode(*Tables(), *schedule_, rounds_, bytes, together / kSaferBlock);
  return together == length || CipherClass::EncodeBuffer(bytes + together, bytes + together, length - together);
}

bool Cipher_Safer::DecodeBuffer(void const* in, void* out, long length) {
  CipherMode const mode = GetMode();
  long const together = mode == CIPHER_CODE_BOOK || mode == CIPHER_CHAINED ? Together(in, out, length) : 0;
  if (together == 0) return CipherClass::DecodeBuffer(in, out, length);
  auto* bytes = static_cast<unsigned char*>(out);
  if (in != out) std::memmove(out, in, static_cast<std::size_t>(length));
  unsigned char enciphered[kBlocksAtOnce * kSaferBlock];
  for (long left = together; left > 0;) {
    long const piece = std::min(left, static_cast<long>(sizeof enciphered));
    std::memcpy(enciphered, bytes, static_cast<std::size_t>(piece));
    SaferDecode(*Tables(), *schedule_, rounds_, bytes, piece / kSaferBlock);
    for (long i = 0; i < piece && mode == CIPHER_CHAINED; i += kSaferBlock) {
      XorInto(bytes + i, Feedback(), kSaferBlock);
      XorInto(Feedback(), enciphered + i, kSaferBlock);
    }
    bytes += piece;
    left -= piece;
  }
  return together == length || CipherClass::DecodeBuffer(bytes, bytes, length - together);
}

void Cipher_Safer::Internal_InitKey(void const* key, long length) {
  if (key == nullptr || schedule_ == nullptr || Context() == nullptr) return;
  SaferMode variant = variant_;
  if (variant <= SAFER_K || variant == SAFER_SK || variant > SAFER_SK128)
    variant = ByKeyLength(length, SAFER_K_SHORT, SAFER_K64, SAFER_K128);
  SaferExpand(*Tables(), static_cast<unsigned char const*>(key), length, KeySize(variant), variant > SAFER_SK);
  SaferArrange(*Tables(), *schedule_);
}

void Cipher_Safer::Internal_InitTab() {
  if (Context() != nullptr) SaferTables(*Tables());
}

bool Cipher_Safer::InitNew(void const* key, long length, void* iv, SaferMode mode) {
  if (key == nullptr || !InitBegin(&length)) return false;
  if (schedule_ == nullptr) schedule_.reset(new (std::nothrow) SaferSchedule());
  if (schedule_ == nullptr) return false;
  if (mode == SAFER_K) mode = ByKeyLength(length, SAFER_K_SHORT, SAFER_K64, SAFER_K128);
  if (mode == SAFER_SK) mode = ByKeyLength(length, SAFER_SK_SHORT, SAFER_SK64, SAFER_SK128);
  variant_ = mode;
  SetRounds(rounds_);
  Internal_InitTab();
  Internal_InitKey(key, length);
  InitEnd(iv);
  return IsKeyed();
}

void Cipher_Safer::SetRounds(long rounds) {
  rounds_ = rounds >= kSaferMinRounds && rounds <= kSaferMaxRounds ? rounds : DefaultRounds(variant_);
}

// Returns how many bytes from the front of the buffer can go through the block functions together. None if a subclass
// may have replaced Encode or Decode, because every block must then pass through them.
long Cipher_Safer::Together(void const* in, void const* out, long length) const {
  bool const own = TableOf(*this) == ownTable_;
  if (!own || !IsKeyed() || schedule_ == nullptr || in == nullptr || out == nullptr || length <= 0) return 0;
  return length - length % kSaferBlock;
}

// Called by the constructors of the classes that use Encode and Decode of this class.
void Cipher_Safer::RememberTable() { ownTable_ = TableOf(*this); }

SaferContext* Cipher_Safer::Tables() { return reinterpret_cast<SaferContext*>(Context()); }

Cipher_Safer_K64::Cipher_Safer_K64() { RememberTable(); }

Cipher_Safer_K64::~Cipher_Safer_K64() = default;

void Cipher_Safer_K64::GetContext(long* block, long* key, long* context) {
  TellSizes(block, key, context, kSaferBlock, 8, sizeof(SaferContext));
}

bool Cipher_Safer_K64::Init(void const* key, long length, void* iv) { return InitNew(key, length, iv, SAFER_K64); }

Cipher_Safer_SK64::Cipher_Safer_SK64() { RememberTable(); }

Cipher_Safer_SK64::~Cipher_Safer_SK64() = default;

bool Cipher_Safer_SK64::Init(void const* key, long length, void* iv) { return InitNew(key, length, iv, SAFER_SK64); }
