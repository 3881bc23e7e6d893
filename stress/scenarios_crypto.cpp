#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {

Table CryptoScenarios() {
  return {
      {"Base64 of a file",
       {{"root/a", std::string(5000, 'a')}},
       [](World& w) {
         EncodeBase64 codec;
         return codec.EncodeFile(w.Root("a"), w.Root("b"));
       },
       kPart},
      {"Base64 back to a file",
       {{"root/a", "YWJjAA=="}, {"root/b", "old"}},
       [](World& w) {
         DecodeBase64 codec;
         return codec.DecodeFile(w.Root("a"), w.Root("b"));
       },
       kPart},
      {"cipher, a file",
       {{"root/a", std::string(70003, 'a')}},
       [](World& w) {
         Hash_RipeMD256 hash;
         CipherManager cipher;
         cipher.SetAlgorithm(CIPHER_SAFER_SK64);
         if (cipher.GetCipherObject() == nullptr) return false;
         cipher.GetCipherObject()->SetHash(&hash);
         return cipher.InitKey("phrase", nullptr) && cipher.EncodeFile(w.Root("a"), w.Root("b"));
       },
       kClass | kPart},
  };
}

}  // namespace stress
