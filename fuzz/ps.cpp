// The output of ps, through a `ps` that prints what the fuzzer made.
#include <algorithm>

#include "fuzz.h"
#include "zelvane/system/proc.h"

namespace {

// In the place of the C library's: no shell and no process is needed to read a file.
std::string g_output;

}  // namespace

extern "C" FILE* popen(char const*, char const*) { return fopen(g_output.c_str(), "re"); }
extern "C" int pclose(FILE* stream) { return fclose(stream); }

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  g_output = disk.Path();
  std::string const bytes = fuzz::Text(data, size);
  disk.Write(bytes);
  ProcManager table;
  fuzz::Check(table.Update(), "read");
  unsigned long const count = table.GetProcCount();
  fuzz::Check(count <= static_cast<unsigned long>(std::count(bytes.begin(), bytes.end(), '\n')) + 1,
              "one a line at most");
  for (unsigned long i = 0; i < count; i++) {
    ProcClass& entry = *table.GetProcByIndex(i);
    fuzz::Check(entry.GetPriority() >= 0 && entry.GetPriority() <= 3 && entry.GetPID() <= 0xFFFFFFFFUL, "ranges");
    fuzz::Check(entry.GetFileName().size() < 1024 && entry.GetName().find(' ') == std::string::npos, "fields");
    ProcClass* const found = table.GetProcByPID(entry.GetPID());
    fuzz::Check(found != nullptr && found->GetPID() == entry.GetPID(), "found by its id");
  }
  return 0;
}
