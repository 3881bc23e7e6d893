// Stress tests: fault injection, crash consistency, power cuts, concurrency, scaling. The program copies itself next to
// an installation root of its own and continues there.
#include <stdlib.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "stress/world.h"
#include "support/scratch.h"

namespace {

constexpr char kBase[] = "ZELVANE_STRESS_BASE";

int Usage() {
  std::fputs(
      "usage: zelvane_stress faults [--brief] [SCENARIO] | crashes [COUNT] | concurrency | scaling [--brief] |\n"
      "  powercuts [--brief] [CASE] | powercuts-cases | powercuts-write FOLDER CASE | powercuts-judge FOLDER CASE\n",
      stderr);
  return 2;
}

// Thousands of files are written and synced; syncs of a real disk would only take time.
void GoToMemory() {
  struct statvfs memory;
  bool const usable = statvfs("/dev/shm", &memory) == 0 && (memory.f_flag & ST_NOEXEC) == 0;
  if (usable && access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
}

int Go(std::string const& base, int argc, char** argv) {
  std::string const what = argv[1];
  if (what == "powercuts-cases") return stress::PowerCutCases();
  std::size_t const number = argc > 3 ? static_cast<std::size_t>(std::atoi(argv[3])) : 0;
  if (what == "powercuts-write" && argc > 3) return stress::PowerCutWrite(argv[2], number);
  bool const brief = argc > 2 && std::strcmp(argv[2], "--brief") == 0;
  std::string const rest = argc > 2 && !brief ? argv[2] : argc > 3 ? argv[3] : "";
  static stress::World world(base);
  if (what == "powercuts-judge" && argc > 3) return stress::PowerCutJudge(world, argv[2], number);
  if (what == "faults") return stress::Faults(world, brief, rest);
  if (what == "crashes") return stress::Crashes(world, rest.empty() ? 1000 : std::atoi(rest.c_str()));
  if (what == "powercuts") return stress::PowerCuts(world, brief, rest);
  if (what == "concurrency") return stress::Concurrency(world);
  if (what == "scaling") return stress::Scaling(world, brief);
  return Usage();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return Usage();
  if (char const* const base = getenv(kBase)) return Go(base, argc, argv) == 0 ? 0 : 1;
  std::string const what = argv[1];
  if (what == "faults" || what == "crashes" || what == "powercuts") GoToMemory();
  test::Scratch const scratch;
  std::filesystem::create_directories(scratch.Path("program"));
  std::filesystem::copy_file("/proc/self/exe", scratch.Path("program/stress"));
  setenv(kBase, scratch.Path().c_str(), 1);
  pid_t const child = fork();
  if (child == 0) {
    execv(scratch.Path("program/stress").c_str(), argv);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
