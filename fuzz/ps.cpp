// The output of ps, from a `ps` that prints the fuzzer's input.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "fuzz.h"
#include "zelvane/system/proc.h"

namespace {

constexpr pid_t kNoProcess = 0x7fffffff;
std::string g_output;

}  // namespace

// Replaces the C library's function: reading a file needs no shell and no process.
extern "C" int pipe2(int* ends, int) noexcept {
  ends[0] = open(g_output.c_str(), O_RDONLY | O_CLOEXEC);
  ends[1] = open("/dev/null", O_WRONLY | O_CLOEXEC);
  return 0;
}
extern "C" int posix_spawn(pid_t* id, char const*, posix_spawn_file_actions_t const*, posix_spawnattr_t const*,
                           char* const*, char* const*) {
  *id = kNoProcess;
  return 0;
}
extern "C" pid_t waitpid(pid_t id, int* status, int) {
  *status = 0;
  return id;
}

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
