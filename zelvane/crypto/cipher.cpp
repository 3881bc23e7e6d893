#include "zelvane/crypto/cipher.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "zelvane/crypto/cipher_internal.h"

using zelvane::internal::TellSizes;
using zelvane::internal::XorInto;

namespace {

constexpr int kKeyedFlag = 0;
constexpr int kFlags = 32;

}  // namespace

CipherClass::CipherClass() = default;

bool CipherClass::InitBegin(long* length) {
  if (length != nullptr) *length = std::max(*length, 0L);
  Protect();
  SetFlag(kKeyedFlag, false);
  long block = 0;
  long key = 0;
  long context = 0;
  GetContext(&block, &key, &context);
  if (block <= 0 || context < 0) return false;
  if (memory_ == nullptr || block != block_ || context != context_) {
    std::size_t const size = static_cast<std::size_t>(block) * kRegisters + static_cast<std::size_t>(context);
    memory_.reset(new (std::nothrow) unsigned char[size]());
    if (memory_ == nullptr) return false;
    block_ = block;
    context_ = context;
  }
  return true;
}

void CipherClass::InitEnd(void* iv) {
  if (memory_ == nullptr) return;
  auto const size = static_cast<std::size_t>(block_);
  if (iv != nullptr) {
    std::memcpy(Block(kStart), iv, size);
  } else {
    std::memset(Block(kStart), 0, size);
  }
  std::memcpy(Block(kFeedback), Block(kStart), size);
  keyed_ = true;
}

void CipherClass::Protect() { Wipe(); }

void CipherClass::SetFlag(int number, bool on) {
  if (number < 0 || number >= kFlags) return;
  std::uint32_t const bit = std::uint32_t{1} << number;
  flags_ = on ? flags_ | bit : flags_ & ~bit;
}

bool CipherClass::GetFlag(int number) const { return number >= 0 && number < kFlags && (flags_ >> number & 1) != 0; }

void CipherClass::GetContext(long* block, long* key, long* context) { TellSizes(block, key, context, 0, 0, 0); }

CipherClass::~CipherClass() { Wipe(); }

void CipherClass::Done() {
  if (memory_ != nullptr) std::memcpy(Block(kFeedback), Block(kStart), static_cast<std::size_t>(block_));
}

bool CipherClass::InitKey(char const* phrase, void* iv) {
  if (phrase == nullptr || hash_ == nullptr) return false;
  hash_->Init();
  hash_->Calc(const_cast<char*>(phrase), static_cast<long>(std::strlen(phrase)));
  hash_->Done();
  void* const digest = hash_->DigestKey();
  long const size = hash_->DigestKeySize();
  if (digest == nullptr || size <= 0) return false;

  long block = 0;
  long key = 0;
  long context = 0;
  GetContext(&block, &key, &context);
  bool const keyed = Init(digest, std::min(size, key), iv) && EncodeBuffer(digest, digest, size);
  if (!keyed) explicit_bzero(digest, static_cast<std::size_t>(size));
  Done();
  if (keyed) SetFlag(kKeyedFlag, true);
  return keyed;
}

bool CipherClass::InitKey(std::string const& phrase, void* iv) { return InitKey(phrase.c_str(), iv); }

bool CipherClass::EncodeBuffer(void const* in, void* out, long length) {
  if (!Accepts(in, out, length)) return false;
  auto* bytes = static_cast<unsigned char*>(out);
  if (in != out) std::memmove(out, in, static_cast<std::size_t>(length));
  switch (GetMode()) {
    case CIPHER_CHAINED:
      for (; length >= block_; length -= block_, bytes += block_) {
        XorInto(bytes, Block(kFeedback), block_);
        Encode(bytes);
        XorInto(Block(kFeedback), bytes, block_);
      }
      ChainRest(bytes, length);
      break;
    case CIPHER_CODE_BOOK:
      for (; length >= block_; length -= block_, bytes += block_) Encode(bytes);
      CodeBookRest(bytes, length);
      break;
    default: break;
  }
  return true;
}

bool CipherClass::DecodeBuffer(void const* in, void* out, long length) {
  if (!Accepts(in, out, length)) return false;
  auto* bytes = static_cast<unsigned char*>(out);
  if (in != out) std::memmove(out, in, static_cast<std::size_t>(length));
  switch (GetMode()) {
    case CIPHER_CHAINED:
      for (; length >= block_; length -= block_, bytes += block_) {
        // Decode overwrites the encrypted block, so the next feedback is computed before.
        std::memcpy(Block(kAlternate), Block(kFeedback), static_cast<std::size_t>(block_));
        XorInto(Block(kAlternate), bytes, block_);
        Decode(bytes);
        XorInto(bytes, Block(kFeedback), block_);
        std::memcpy(Block(kFeedback), Block(kAlternate), static_cast<std::size_t>(block_));
      }
      ChainRest(bytes, length);
      break;
    case CIPHER_CODE_BOOK:
      for (; length >= block_; length -= block_, bytes += block_) Decode(bytes);
      CodeBookRest(bytes, length);
      break;
    default: break;
  }
  return true;
}

void CipherClass::SetMode(CipherMode mode) { mode_ = mode; }

CipherMode CipherClass::GetMode() { return mode_; }

void CipherClass::SetHash(HashClass const* hash) { hash_ = const_cast<HashClass*>(hash); }

unsigned char* CipherClass::Context() { return memory_ == nullptr ? nullptr : memory_.get() + block_ * kRegisters; }

unsigned char* CipherClass::Feedback() { return memory_ == nullptr ? nullptr : Block(kFeedback); }

bool CipherClass::Accepts(void const* in, void const* out, long length) const {
  return keyed_ && length > 0 && in != nullptr && out != nullptr;
}

void CipherClass::ChainRest(unsigned char* bytes, long count) {
  if (count <= 0) return;
  std::memcpy(Block(kScratch), Block(kFeedback), static_cast<std::size_t>(block_));
  Encode(Block(kScratch));
  XorInto(bytes, Block(kScratch), count);
  XorInto(Block(kFeedback), Block(kScratch), block_);
}

void CipherClass::CodeBookRest(unsigned char* bytes, long count) {
  if (count <= 0) return;
  std::memcpy(Block(kScratch), bytes, static_cast<std::size_t>(count));
  Encode(Block(kScratch));
  std::memcpy(bytes, Block(kScratch), static_cast<std::size_t>(count));
}

unsigned char* CipherClass::Block(Register which) { return memory_.get() + which * block_; }

void CipherClass::Wipe() {
  keyed_ = false;
  if (memory_ != nullptr) explicit_bzero(memory_.get(), static_cast<std::size_t>(block_ * kRegisters + context_));
}
