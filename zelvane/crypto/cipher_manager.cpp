#include <cstring>
#include <limits>
#include <new>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/crypto/cipher.h"

using zelvane::internal::Descriptor;
using zelvane::internal::Guard;
using zelvane::internal::Open;
using zelvane::internal::OpenDestination;
using zelvane::internal::ReadBlock;
using zelvane::internal::WriteAll;

namespace {

constexpr std::size_t kFileChunk = 4096;

}  // namespace

CipherManager::CipherManager() = default;

CipherManager::~CipherManager() = default;

bool CipherManager::InitKey(char const* phrase, void* iv) { return cipher_ != nullptr && cipher_->InitKey(phrase, iv); }

bool CipherManager::InitKey(char const* phrase) { return InitKey(phrase, nullptr); }

bool CipherManager::EncodeFile(char const* source, char const* destination) {
  return CodeFile(source, destination, &CipherManager::EncodeBuffer);
}

bool CipherManager::DecodeFile(char const* source, char const* destination) {
  return CodeFile(source, destination, &CipherManager::DecodeBuffer);
}

bool CipherManager::EncodeBuffer(void const* in, void* out, unsigned long length) {
  if (cipher_ == nullptr || length > std::numeric_limits<std::int32_t>::max()) return false;
  return cipher_->EncodeBuffer(in, out, static_cast<long>(length));
}

bool CipherManager::DecodeBuffer(void const* in, void* out, unsigned long length) {
  if (cipher_ == nullptr || length > std::numeric_limits<std::int32_t>::max()) return false;
  return cipher_->DecodeBuffer(in, out, static_cast<long>(length));
}

std::string CipherManager::EncodeString(char const* text) { return CodeString(text, &CipherManager::EncodeBuffer); }

std::string CipherManager::DecodeString(char const* text) { return CodeString(text, &CipherManager::DecodeBuffer); }

void CipherManager::SetAlgorithm(CipherAlgorithm algorithm) {
  algorithm_ = algorithm;
  cipher_.reset();
  cipher_.reset(new (std::nothrow) Cipher_Safer_SK64());
  if (cipher_ == nullptr) return;
  cipher_->SetMode(mode_);
  cipher_->SetHash(hashManager_ == nullptr ? nullptr : hashManager_->GetHashObject());
}

CipherAlgorithm CipherManager::GetAlgorithm() { return algorithm_; }

void CipherManager::SetMode(CipherMode mode) {
  mode_ = mode;
  if (cipher_ != nullptr) cipher_->SetMode(mode);
}

CipherMode CipherManager::GetMode() { return mode_; }

void CipherManager::SetHashManager(HashManager const* manager) { hashManager_ = const_cast<HashManager*>(manager); }

HashManager* CipherManager::GetHashManager() { return hashManager_; }

CipherClass* CipherManager::GetCipherObject() { return cipher_.get(); }

bool CipherManager::InitKey(std::string const& phrase, void* iv) { return InitKey(phrase.c_str(), iv); }

bool CipherManager::InitKey(std::string const& phrase) { return InitKey(phrase.c_str()); }

bool CipherManager::EncodeFile(std::string const& source, std::string const& destination) {
  return EncodeFile(source.c_str(), destination.c_str());
}

bool CipherManager::DecodeFile(std::string const& source, std::string const& destination) {
  return DecodeFile(source.c_str(), destination.c_str());
}

std::string CipherManager::EncodeString(std::string const& text) { return EncodeString(text.c_str()); }

std::string CipherManager::DecodeString(std::string const& text) { return DecodeString(text.c_str()); }

bool CipherManager::CodeFile(char const* source, char const* destination, Coder coder) {
  if (source == nullptr || destination == nullptr) return false;
  Descriptor const in = Open(source, O_RDONLY);
  if (!in) return false;
  bool const coded = CodeStream(in.Get(), destination, coder);
  if (cipher_ != nullptr) cipher_->Done();
  return coded;
}

bool CipherManager::CodeStream(int source, char const* destination, Coder coder) {
  char chunk[kFileChunk];
  Descriptor out;
  ssize_t got = 0;
  do {
    got = ReadBlock(source, chunk, sizeof chunk);
    if (got < 0) return false;
    if (got > 0 && !(this->*coder)(chunk, chunk, static_cast<unsigned long>(got))) return false;
    // Opened only when there is something to write: the old contents may be all that the owner has.
    if (!out) out = OpenDestination(destination, source);
    if (!out || !WriteAll(out.Get(), chunk, static_cast<std::size_t>(got))) return false;
  } while (got == static_cast<ssize_t>(sizeof chunk));
  return out.Close();
}

std::string CipherManager::CodeString(char const* text, Coder coder) {
  if (text == nullptr) return {};
  return Guard(std::string(), [&] {
    std::string coded = text;
    bool const done = (this->*coder)(coded.data(), coded.data(), coded.size());
    if (cipher_ != nullptr) cipher_->Done();
    coded.resize(done ? std::strlen(coded.c_str()) : 0);
    return coded;
  });
}
