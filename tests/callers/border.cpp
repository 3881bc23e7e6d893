// Subclasses, casts, type information and exceptions across the library boundary. Also compiled without
// position-independent code, where the program has copies of the library's type information.
#include <stdexcept>
#include <typeinfo>

#include "callers/check.h"
#include "zelvane/zelvane.h"

namespace {

struct Quiet : RegCfgClass {
  bool GetUpperCaseWriteCache() override { return true; }
};

struct Vault : CipherManager {
  int asked = 0;
  CipherMode GetMode() override { return asked++, CipherManager::GetMode(); }
};

bool ThrowsOutOfRange() {
  try {
    StrToDateTime("07/03/2005", "dd/mm/yyyy hh:nn:ss", -1);
  } catch (std::out_of_range const&) {
    return true;
  }
  return false;
}

}  // namespace

int main() {
  Quiet quiet;
  CfgClass* const cfg = &quiet;
  CHECK(typeid(*cfg) == typeid(Quiet));
  CHECK(dynamic_cast<RegCfgClass*>(cfg) == &quiet);
  CHECK(dynamic_cast<Quiet*>(cfg) == &quiet);
  CfgClass plain;
  CfgClass* const other = &plain;
  CHECK(typeid(*other) == typeid(CfgClass));
  CHECK(dynamic_cast<RegCfgClass*>(other) == nullptr);

  Vault vault;
  vault.SetAlgorithm(CIPHER_SAFER_SK64);
  CipherClass* const made = vault.GetCipherObject();  // made by the library
  CHECK(typeid(*made) == typeid(Cipher_Safer_SK64));
  CHECK(dynamic_cast<Cipher_Safer*>(made) != nullptr);
  CipherManager* const manager = &vault;
  CHECK(manager->GetMode() == CIPHER_CHAINED);
  CHECK(vault.asked == 1);
  CHECK(ThrowsOutOfRange());
  return 0;
}
