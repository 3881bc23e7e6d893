// A language file: a text that was set is read back, all others stay.
#include "fuzz.h"
#include "zelvane/core/strutils.h"
#include "zelvane/lang/langclass.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  std::string rest = fuzz::Text(data, size);
  long const id = static_cast<int32_t>(fuzz::Number(rest)), language = static_cast<int32_t>(fuzz::Number(rest) % 4);
  std::string const text = fuzz::Take(rest, static_cast<size_t>(fuzz::Number(rest) % 20));
  disk.Write(rest);
  unlink((disk.Path() + ".lost").c_str());
  LangClass lang;
  lang.SetFileName(disk.Path());
  lang.GetLangCount();
  lang.GetLangDesc(language);
  bool const loaded = lang.LoadStrings(language);
  std::string const other = lang.GetLangStr(12);
  bool const fits = std::string(text.c_str()).find_first_of("[]\r\n") == std::string::npos;
  bool const set = lang.SetLangStr(id, text.c_str());
  fuzz::Check(!set || fits, "what the file cannot hold is refused");
  if (set && loaded && id >= 0) {
    // The first spelling of a number counts, which need not be the one that was written.
    std::string const there = lang.GetLangStr(id);
    fuzz::Check(
        there == Trim(text.c_str()) || rest.find('0') != std::string::npos || rest.find('+') != std::string::npos,
        "what is set is read");
    if (id != 12 && rest.find('0') == std::string::npos) fuzz::Check(lang.GetLangStr(12) == other, "others stay");
  }
  LangClass again;
  again.SetFileName(disk.Path());
  again.LoadStrings(language);
  if (set && loaded) fuzz::Check(again.GetLangStr(id) == lang.GetLangStr(id), "for the next one, too");
  return 0;
}
