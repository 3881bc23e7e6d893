// The order of the virtual operations, which programs that were built against another release count on.
#include <gtest/gtest.h>

#include <string>

#include "support/slot.h"
#include "zelvane/crypto/base64.h"
#include "zelvane/crypto/cipher.h"
#include "zelvane/lang/langclass.h"
#include "zelvane/logs/proglist.h"
#include "zelvane/logs/textlog.h"
#include "zelvane/system/proc.h"
#include "zelvane/system/svc.h"

namespace {

using test::ExpectSlots;

using Chars = char const*;
using Text = std::string const&;

// The one of several operations of that name that has this form.
template <class Form, class Class>
Form Class::*Of(Form Class::*operation) {
  return operation;
}

TEST(Slots, Logs) {
  using L = LogClass;
  ExpectSlots(2, Of<int(Chars)>(&L::SetFile), &L::SetBuffer, &L::SetMaxLines,
              Of<bool(void const*, unsigned long)>(&L::WriteReg),
              Of<bool(long, void const*, unsigned long)>(&L::WriteReg), &L::GetFileRegCount, &L::GetRegCount,
              &L::ReadFileReg, &L::ReadReg, &L::LoadFile, &L::UnloadFile, &L::ClearFile);
  using T = TextLogClass;
  ExpectSlots(14, Of<bool(Chars)>(&T::WriteLine), Of<bool(long, Chars)>(&T::WriteLine));
  using P = ProgList;
  ExpectSlots(2, Of<bool(Chars)>(&P::SetFile), &P::SetCached, &P::GetRegCount, &P::GetRegByIndex, &P::GetNextReg,
              &P::AddReg, &P::RemReg, &P::ClearList, &P::ReadFromFile, &P::WriteToFile, &P::RefreshList,
              &P::FlushCache);
}

TEST(Slots, Language) {
  using L = LangClass;
  ExpectSlots(2, Of<void(Text)>(&L::SetFileName), Of<void(Chars)>(&L::SetFileName), &L::GetLangCount, &L::GetLangDesc,
              &L::LoadStrings, &L::ClearStrings, &L::GetLangStr, Of<bool(long, Text, long)>(&L::SetLangStr),
              Of<bool(long, Chars, long)>(&L::SetLangStr), Of<bool(long, Text)>(&L::SetLangStr),
              Of<bool(long, Chars)>(&L::SetLangStr));
}

TEST(Slots, System) {
  using C = ProcClass;
  ExpectSlots(2, &C::Kill, &C::GetPriority, &C::SetPriority, &C::GetName, &C::GetFileName, &C::GetPID, &C::GetPPID);
  using P = ProcManager;
  ExpectSlots(2, &P::Update, &P::Clear, &P::GetProcCount, &P::GetProcByIndex, Of<ProcClass*(Chars)>(&P::GetProcByName),
              &P::GetProcByPID, Of<bool(Chars)>(&P::IsRunning), Of<bool(unsigned long)>(&P::IsRunning),
              Of<bool(Chars)>(&P::CreateNew), Of<bool(Chars, unsigned long)>(&P::CreateNew),
              Of<bool(Chars, long)>(&P::CreateNewAndWait), Of<bool(Chars, long, unsigned long)>(&P::CreateNewAndWait));
  using S = SvcManager;
  ExpectSlots(0, &S::GetDaemonInfo, &S::GetDaemonDescr, &S::GetDaemonAuto);
  ExpectSlots(5, &S::Update, &S::Clear, &S::GetSvcCount, &S::GetSvcByIndex, Of<SvcClass*(Chars)>(&S::GetSvcByName),
              Of<bool(Chars)>(&S::IsRunning));
}

TEST(Slots, Base64) {
  using C = ClassBase64;
  ExpectSlots(0, &C::EncodeDecodeFunction);
  ExpectSlots(3, &C::LoadFromBuf, Of<bool(Text)>(&C::LoadFromStr), Of<bool(Chars)>(&C::LoadFromStr),
              Of<bool(Text)>(&C::LoadFromFile), Of<bool(Chars)>(&C::LoadFromFile), Of<bool(Text)>(&C::SaveToFile),
              Of<bool(Chars)>(&C::SaveToFile), Of<bool(std::string&)>(&C::SaveToStr),
              Of<bool(char*, unsigned long)>(&C::SaveToStr), &C::SaveToBuf, &C::SetProgress, &C::Unload);
  using E = EncodeBase64;
  ExpectSlots(15, Of<bool(Text, std::string&)>(&E::EncodeStr), Of<std::string(Text)>(&E::EncodeStr),
              Of<bool(Chars, char*, unsigned long)>(&E::EncodeStr), Of<bool(Text, Text)>(&E::EncodeFile),
              Of<bool(Chars, Chars)>(&E::EncodeFile));
  using D = DecodeBase64;
  ExpectSlots(15, Of<bool(Text, std::string&)>(&D::DecodeStr), Of<std::string(Text)>(&D::DecodeStr),
              Of<bool(Chars, char*, unsigned long)>(&D::DecodeStr), Of<bool(Text, Text)>(&D::DecodeFile),
              Of<bool(Chars, Chars)>(&D::DecodeFile));
  ExpectSlots(2, &ProgressClass::Progress);
}

TEST(Slots, Hashes) {
  using H = Hash_RipeMD256;
  ExpectSlots(0, &H::Protect);
  ExpectSlots(3, &H::DigestKeySize, &H::Init, &H::Done, &H::Calc, &H::DigestKey, &H::Transform);
  using M = HashManager;
  ExpectSlots(2, &M::GetHashObject, &M::CalcBuffer, Of<void(Chars)>(&M::CalcString), Of<void(Chars)>(&M::CalcFile),
              &M::GetDigest, Of<void(Chars)>(&M::SetDigest), &M::GetDigestSize, &M::GetDigestString, &M::SetAlgorithm,
              &M::GetAlgorithm);
}

TEST(Slots, Ciphers) {
  using C = Cipher_Safer;
  ExpectSlots(0, &C::InitBegin, &C::InitEnd, &C::Protect, &C::SetFlag, &C::GetContext);
  ExpectSlots(7, &C::Init, &C::Done, &C::Encode, &C::Decode, Of<bool(Chars, void*)>(&C::InitKey), &C::DecodeBuffer,
              &C::EncodeBuffer, &C::SetMode, &C::GetMode, &C::SetHash, &C::Internal_InitKey, &C::Internal_InitTab,
              &C::InitNew, &C::SetRounds);
  using M = CipherManager;
  ExpectSlots(2, Of<bool(Chars, void*)>(&M::InitKey), Of<bool(Chars)>(&M::InitKey),
              Of<bool(Chars, Chars)>(&M::EncodeFile), Of<bool(Chars, Chars)>(&M::DecodeFile), &M::EncodeBuffer,
              &M::DecodeBuffer, Of<std::string(Chars)>(&M::EncodeString), Of<std::string(Chars)>(&M::DecodeString),
              &M::SetAlgorithm, &M::GetAlgorithm, &M::SetMode, &M::GetMode, &M::SetHashManager, &M::GetHashManager,
              &M::GetCipherObject);
}

}  // namespace
