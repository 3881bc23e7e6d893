#include "zelvane/logs/textlog.h"

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/sync_internal.h"
#include "zelvane/logs/logclass_internal.h"

using zelvane::internal::Descriptor;
using zelvane::internal::Guard;

TextLogClass::TextLogClass() = default;

TextLogClass::TextLogClass(char const* name) { TextLogClass::SetFile(name); }

TextLogClass::~TextLogClass() = default;

int TextLogClass::SetFile(char const* name) {
  return Guard(0, [&] {
    textFile_ = name == nullptr ? "" : name;
    return 1;
  });
}

bool TextLogClass::ClearFile() {
  return Guard(false, [&] { return !textFile_.empty() && zelvane::internal::EmptyFile(textFile_); });
}

bool TextLogClass::WriteLine(char const* text) { return WriteLine(GetDateTime(), text); }

bool TextLogClass::WriteLine(long when, char const* text) {
  if (textFile_.empty() || text == nullptr) return false;
  return Guard(false, [&] {
    std::string line = DateTimeToStr(when);
    if (line.empty()) return false;
    line.append(" ").append(UIntToStr(GetSystemTick())).append(" ").append(text).append("\n");
    Descriptor file = zelvane::internal::OpenToAppend(textFile_);
    return file && zelvane::internal::Append(file.Get(), line) && zelvane::internal::SyncData(file.Get()) &&
           file.Close();
  });
}
