#include "zelvane/crypto/hash.h"

#include <algorithm>
#include <cstring>

#include "zelvane/core/bytes_internal.h"
#include "zelvane/crypto/ripemd_internal.h"

using zelvane::internal::StoreLe32;

namespace {

// Position of the message length in the padding: a 64-bit number at the end of the last block.
constexpr std::uint32_t kLengthAt = 56;

}  // namespace

HashClass::HashClass() = default;
HashClass::HashClass(HashClass const&) = default;
HashClass& HashClass::operator=(HashClass const&) = default;
HashClass::~HashClass() = default;

void HashClass::Protect(bool) {}

long HashClass::DigestKeySize() { return 0; }

void HashClass::Init() { Protect(true); }

void HashClass::Done() { Protect(false); }

void* HashClass::DigestKey() { return nullptr; }

Hash_MD4::Hash_MD4() : count_(0), block_(), state_() {}
Hash_MD4::Hash_MD4(Hash_MD4 const&) = default;
Hash_MD4& Hash_MD4::operator=(Hash_MD4 const&) = default;
Hash_MD4::~Hash_MD4() = default;

long Hash_MD4::DigestKeySize() { return 0; }

void Hash_MD4::Init() {}

void Hash_MD4::Calc(void* data, long length) {
  if (data == nullptr || length <= 0) return;
  auto const* bytes = static_cast<unsigned char const*>(data);
  auto left = static_cast<std::size_t>(length);
  std::size_t const taken = count_ % sizeof block_;
  count_ += static_cast<std::uint32_t>(left);
  if (taken > 0) {
    std::size_t const piece = std::min(left, sizeof block_ - taken);
    std::memcpy(block_ + taken, bytes, piece);
    if (taken + piece < sizeof block_) return;
    Transform(reinterpret_cast<long*>(block_));
    bytes += piece;
    left -= piece;
  }
  // Complete blocks are copied too: a Transform may read its block as words, and the data can be at an odd address.
  for (; left >= sizeof block_; bytes += sizeof block_, left -= sizeof block_) {
    std::memcpy(block_, bytes, sizeof block_);
    Transform(reinterpret_cast<long*>(block_));
  }
  std::memcpy(block_, bytes, left);
}

void Hash_MD4::Done() {
  std::size_t taken = count_ % sizeof block_;
  block_[taken++] = 0x80;
  std::memset(block_ + taken, 0, sizeof block_ - taken);
  if (taken > kLengthAt) {
    Transform(reinterpret_cast<long*>(block_));
    std::memset(block_, 0, sizeof block_);
  }
  StoreLe32(block_ + kLengthAt, count_ * 8);
  Transform(reinterpret_cast<long*>(block_));
  std::memset(block_, 0, sizeof block_);
  // From numbers to the bytes that DigestKey returns.
  for (std::uint32_t& word : state_) StoreLe32(reinterpret_cast<unsigned char*>(&word), word);
  Protect(false);
}

void* Hash_MD4::DigestKey() { return state_; }

void Hash_MD4::Transform(long*) {}

Hash_RipeMD256::Hash_RipeMD256() = default;
Hash_RipeMD256::Hash_RipeMD256(Hash_RipeMD256 const&) = default;
Hash_RipeMD256& Hash_RipeMD256::operator=(Hash_RipeMD256 const&) = default;
Hash_RipeMD256::~Hash_RipeMD256() = default;

long Hash_RipeMD256::DigestKeySize() { return 32; }

void Hash_RipeMD256::Init() {
  // The eight of RIPEMD-256, then the last two of RIPEMD-320. Nothing reads those two.
  static constexpr std::uint32_t kStart[10] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0x76543210,
                                               0xFEDCBA98, 0x89ABCDEF, 0x01234567, 0x01234567, 0x3C2D1E0F};
  static_assert(sizeof kStart == sizeof state_, "one start value for each word");
  count_ = 0;
  std::memset(block_, 0, sizeof block_);
  std::memcpy(state_, kStart, sizeof state_);
  Protect(true);
}

void Hash_RipeMD256::Transform(long* block) {
  if (block == nullptr) return;
  zelvane::internal::RipeMd256Compress(state_, reinterpret_cast<unsigned char const*>(block));
}

HashManager::HashManager() = default;
HashManager::~HashManager() = default;

HashClass* HashManager::GetHashObject() { return hash_; }

void HashManager::CalcBuffer(void const*, unsigned long) {}

void HashManager::CalcString(char const*) {}

void HashManager::CalcFile(char const*) {}

std::string HashManager::GetDigest() { return {}; }

void HashManager::SetDigest(char const*) {}

long HashManager::GetDigestSize() { return 0; }

std::string HashManager::GetDigestString(long) { return {}; }

void HashManager::SetAlgorithm(HashAlgorithm) {}

HashAlgorithm HashManager::GetAlgorithm() { return HASH_RIPEMD256; }

void HashManager::CalcString(std::string const& text) { CalcString(text.c_str()); }

void HashManager::CalcFile(std::string const& path) { CalcFile(path.c_str()); }

void HashManager::SetDigest(std::string const& digest) { SetDigest(digest.c_str()); }
