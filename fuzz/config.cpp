// A configuration file: unchanged lines stay byte for byte, written values are read back, and a saved file loads with
// the contents it was saved with.
#include "fuzz.h"
#include "zelvane/config/cfgclass.h"

namespace {

std::string Everything(CfgClass& file) {
  std::string all;
  for (unsigned long s = 0; s < file.GetSectionCount(); s++) {
    std::string const section = file.GetSectionName(s);
    all += "[" + section + "]";
    for (unsigned long k = 0; k < file.GetKeyCount(section); k++) {
      std::string const key = file.GetKeyName(section, k);
      all += key + "=" + file.ReadStr(section, key, "") + "\n";
      // A name given as text ends at its first NUL.
      if ((section + key).find('\0') != std::string::npos) continue;
      fuzz::Check(file.ReadStr(section, k, "?") == file.ReadStr(section, key, "!"), "by number as by name");
    }
  }
  return all;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  std::string const bytes = fuzz::Text(data, size);
  disk.Write(bytes);
  unlink((disk.Path() + ".lost").c_str());
  CfgClass file;
  file.SetCached(true);
  fuzz::Check(file.Open(disk.Path()), "every file opens");
  bool const whole = file.GetErrorCode() == CFG_OK;
  std::string const before = Everything(file);
  bool const fresh = !file.SectionExists("FUZZ SECTION");

  fuzz::Check(file.WriteStr("FUZZ SECTION", "FUZZ KEY", "value") && file.Flush(), "a change is saved");
  CfgClass again;
  fuzz::Check(again.Open(disk.Path()), "a saved file opens");
  if (whole) {
    fuzz::Check(again.ReadStr("FUZZ SECTION", "FUZZ KEY", "") == "value", "what was written is read");
    fuzz::Check(Everything(again) == Everything(file), "load, save, load");
    fuzz::Check(again.EraseSection("FUZZ SECTION"), "and goes again");
    if (fresh) {
      fuzz::Check(Everything(again) == before, "all else stays");
      fuzz::Check(disk.Read() == bytes, "byte for byte");
    }
  }
  fuzz::File const copy(".copy");
  if (file.SaveAs(copy.Path())) {
    CfgClass normal;
    fuzz::Check(normal.Open(copy.Path()), "a normalised copy opens");
  }
  return 0;
}
