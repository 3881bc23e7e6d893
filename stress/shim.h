// The C library's calls as the stress tests need them: failing, interrupted or killed at a chosen one. Linked into the
// program (or preloaded), where the library finds these definitions before the C library's.
#ifndef ZELVANE_STRESS_SHIM_H
#define ZELVANE_STRESS_SHIM_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum ShimCall {
  SHIM_OPEN,  // open, openat, fopen
  SHIM_READ,
  SHIM_WRITE,  // write, writev
  SHIM_SEEK,
  SHIM_CLOSE,
  SHIM_SYNC,      // fsync, fdatasync, of files and of folders
  SHIM_RENAME,    // rename, renameat2, link
  SHIM_TRUNCATE,  // ftruncate, fallocate
  SHIM_TEMP,      // mkstemp, mkostemp
  SHIM_FORK,      // fork, posix_spawn, popen, system
  SHIM_MALLOC,    // malloc, calloc, realloc
  SHIM_STATUS,    // fstat, stat, lstat, fchmod, fchown, mkdir, faccessat, scandir
  SHIM_LOCK,      // flock
  SHIM_REMOVE,    // unlink, remove; only for kills: what cannot be removed must stay
  SHIM_CALLS,
  SHIM_ANY = SHIM_CALLS  // every call but malloc
};

enum ShimMode {
  SHIM_ONCE,
  SHIM_EVER_AFTER,
  SHIM_SHORT,  // this read or write, and all after it, moves half of what it is asked for
  SHIM_FULL,   // this write moves half of what it is asked for and the next one fails, as on a disk that is just full
  SHIM_EINTR,  // this call, and every second one after it, is interrupted
  SHIM_KILL    // the process is killed there; a write has then written half
};

// From now on call number `at` (counted from 0) of that kind meets the fault; `reason` is its errno. A close that fails
// has closed all the same, as on Linux.
void ShimArm(enum ShimCall call, long at, enum ShimMode mode, int reason);
// The calls of that kind since ShimArm. Nothing fails from now on.
long ShimDisarm(void);
// How many of them met the fault.
long ShimHits(void);
// How many of those lost what had been written: an fsync or fdatasync that failed for good, or a close
// of what none had brought to disk.
long ShimLost(void);
// Called where a file may be complete, while armed: after a rename, an fsync, a close. Null for none.
void ShimWatch(void (*changed)(void));
// Pieces of memory that have been asked for and not been given back.
long ShimPieces(void);

enum ShimChange {
  SHIM_OPENED,   // path, fd, flags, mode
  SHIM_WROTE,    // fd, bytes, size, at: where the first of them went
  SHIM_SIZED,    // fd, at: the new length
  SHIM_SYNCED,   // fd, of a file or a folder
  SHIM_RENAMED,  // path, to
  SHIM_LINKED,   // path, to
  SHIM_REMOVED   // path
};

struct ShimDone {
  enum ShimChange change;
  int fd;
  char const* path;
  char const* to;
  void const* bytes;
  size_t size;
  off_t at;
  int flags;
  mode_t mode;
};

// From now on `done` is told of each of these calls after it succeeded. Null for no longer.
void ShimRecord(void (*done)(struct ShimDone const* call));

// Besides: the clock stands still at this second (universal time), nobody sleeps while armed or recorded, and
// "/etc/zelvane.conf" is the path in the variable ZELVANE_TEST_SETTINGS.
#define SHIM_NOW 1792000000

#ifdef __cplusplus
}
#endif

#endif
