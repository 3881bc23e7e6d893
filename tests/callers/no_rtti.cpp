// Subclasses compiled without run-time type information work, and their overrides are called.
#include <unistd.h>

#include <cstring>
#include <string>

#include "callers/check.h"
#include "zelvane/zelvane.h"

namespace {

struct Settings : CfgClass {
  int parsed = 0;
  bool ParseLine(std::string const& line, bool noLines) override {
    return parsed++, CfgClass::ParseLine(line, noLines);
  }
};

struct Cipher : Cipher_Safer_SK64 {
  int blocks = 0;
  void Decode(void* block) override { blocks++, Cipher_Safer_SK64::Decode(block); }
};

}  // namespace

int main() {
  char path[] = "/tmp/zelvane-no-rtti-XXXXXX";
  CHECK(write(mkstemp(path), "[S]\nk=1\n", 8) == 8);
  {
    Settings settings;
    CHECK(settings.Open(path));
    CHECK(settings.parsed == 3);
    CHECK(settings.ReadInt("s", "K", 0) == 1);
    CHECK(settings.WriteInt("s", "K", 2));
  }
  CfgClass plain;
  CHECK(plain.Open(path));
  CHECK(plain.ReadInt("S", "k", 0) == 2);
  CHECK(remove(path) == 0);

  Hash_RipeMD256 hash;
  Cipher cipher;
  Cipher_Safer_SK64 other;
  char text[17] = "sixteen letters.";
  for (CipherClass* each : {static_cast<CipherClass*>(&cipher), static_cast<CipherClass*>(&other)}) {
    each->SetHash(&hash);
    CHECK(each->InitKey("phrase", nullptr));
  }
  CHECK(other.EncodeBuffer(text, text, 16));
  CHECK(cipher.DecodeBuffer(text, text, 16));
  CHECK(std::strcmp(text, "sixteen letters.") == 0);
  CHECK(cipher.blocks == 2);
  return 0;
}
