#include <unistd.h>

#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {

Table CoreScenarios() {
  return {
      {"CpFile",
       {{"root/a", std::string(150000, 'a')}, {"root/b", "old"}},
       [](World& w) { return CpFile(w.Root("a"), w.Root("c"), 0, false); },
       kPart},
      {"CpFile with progress, over a file",
       {{"root/a", std::string(70000, 'a')}, {"root/b", "old"}},
       [](World& w) {
         return CpFile([](void const*, unsigned long, unsigned long, unsigned short, bool) {}, w.Root("a"), w.Root("b"),
                       9, true);
       },
       kPart},
      {"GetTmpFileName",
       {},
       [](World&) {
         std::string const name = GetTmpFileName(false);
         return !name.empty() && name.find("XXXXXX") == std::string::npos && unlink(name.c_str()) == 0;
       },
       kAnyNotes},
      {"permissions and folders",
       {{"root/a.cfg", kClientFile}},
       [](World& w) {
         return FilePermToRead(w.Root("a.cfg")) && FilePermToWrite(w.Root("a.cfg")) && DirExists(w.Root(""));
       }},
  };
}

}  // namespace stress
