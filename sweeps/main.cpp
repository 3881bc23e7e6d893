// The sweeps: faults, kills, power cuts, company, sizes. The program copies itself beside an installation root of its
// own and goes on there.
#include <stdlib.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "support/scratch.h"
#include "sweeps/world.h"

namespace {

constexpr char kBase[] = "ZELVANE_SWEEPS_BASE";

int Usage() {
  std::fputs(
      "usage: sweeps faults [--brief] [SCENARIO] | kills [COUNT] | company | sizes [--brief] |\n"
      "  powercut [--brief] [CASE] | powercut-cases | powercut-write FOLDER CASE | powercut-judge FOLDER CASE\n",
      stderr);
  return 2;
}

// Thousands of files are written and synced, and nothing is learnt from the syncs of a real disk there.
void GoToMemory() {
  struct statvfs memory;
  bool const usable = statvfs("/dev/shm", &memory) == 0 && (memory.f_flag & ST_NOEXEC) == 0;
  if (usable && access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
}

int Go(std::string const& base, int argc, char** argv) {
  std::string const what = argv[1];
  if (what == "powercut-cases") return sweeps::PowerCutCases();
  std::size_t const number = argc > 3 ? static_cast<std::size_t>(std::atoi(argv[3])) : 0;
  if (what == "powercut-write" && argc > 3) return sweeps::PowerCutWrite(argv[2], number);
  bool const brief = argc > 2 && std::strcmp(argv[2], "--brief") == 0;
  std::string const rest = argc > 2 && !brief ? argv[2] : argc > 3 ? argv[3] : "";
  static sweeps::World world(base);
  if (what == "powercut-judge" && argc > 3) return sweeps::PowerCutJudge(world, argv[2], number);
  if (what == "faults") return sweeps::Faults(world, brief, rest);
  if (what == "kills") return sweeps::Kills(world, rest.empty() ? 1000 : std::atoi(rest.c_str()));
  if (what == "powercut") return sweeps::PowerCuts(world, brief, rest);
  if (what == "company") return sweeps::Company(world);
  if (what == "sizes") return sweeps::Sizes(world, brief);
  return Usage();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return Usage();
  if (char const* const base = getenv(kBase)) return Go(base, argc, argv) == 0 ? 0 : 1;
  std::string const what = argv[1];
  if (what == "faults" || what == "kills" || what == "powercut") GoToMemory();
  test::Scratch const scratch;
  std::filesystem::create_directories(scratch.Path("program"));
  std::filesystem::copy_file("/proc/self/exe", scratch.Path("program/sweeps"));
  setenv(kBase, scratch.Path().c_str(), 1);
  pid_t const child = fork();
  if (child == 0) {
    execv(scratch.Path("program/sweeps").c_str(), argv);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
