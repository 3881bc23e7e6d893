#include "records/valuecheck.h"

#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"

std::string FileFault(Field field, std::string const& text) {
  if (!field.words.empty()) {
    std::string list;
    for (std::string const& word : field.words) {
      if (word == text) return "";
      list += (list.empty() ? "" : ", ") + word;
    }
    return "expected one of " + list;
  }
  if (field.kind == FieldKind::kFlag) return text == "0" || text == "1" ? "" : "expected 0 or 1";
  if (field.kind == FieldKind::kPassword) {
    std::string encoded = text;
    return FieldFault(field, text.empty() ? text : DecodeBase64ToStr(encoded));
  }
  bool const hasBlank = Trim(text) != text;
  if (field.kind == FieldKind::kNumber || field.kind == FieldKind::kDate) {
    if (hasBlank) return "starts or ends with a blank, so it is not a number";
    field.lowest /= field.step;
    field.highest /= field.step;
    field.step = 1;
    // The library accepts a sign and leading zeros.
    long const number = StrToIntDef(text, 0);
    return FieldFault(field, number == StrToIntDef(text, 1) ? std::to_string(number) : "");
  }
  return hasBlank ? "starts or ends with a blank, which the programs keep" : FieldFault(field, text);
}

std::vector<std::string> Parts(std::string const& value) {
  std::vector<std::string> parts = {""};
  for (char const c : value)
    if (c == ';')
      parts.emplace_back();
    else
      parts.back() += c;
  return parts;
}
