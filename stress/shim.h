// C library calls for the stress tests: they fail, are interrupted or kill the process at a chosen call. Linked into
// the program (or preloaded), where the library finds these definitions before those of the C library.
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
  SHIM_SYNC,      // fsync, fdatasync, of files and directories
  SHIM_RENAME,    // rename, renameat2, link
  SHIM_TRUNCATE,  // ftruncate, fallocate
  SHIM_TEMP,      // mkstemp, mkostemp
  SHIM_FORK,      // fork, posix_spawn, popen, system
  SHIM_MALLOC,    // malloc, calloc, realloc
  SHIM_STATUS,    // fstat, stat, lstat, fchmod, fchown, mkdir, faccessat, scandir
  SHIM_LOCK,      // flock
  SHIM_REMOVE,    // unlink, remove; only for kills, because a file that cannot be removed stays
  SHIM_CALLS,
  SHIM_ANY = SHIM_CALLS  // every call but malloc
};

enum ShimMode {
  SHIM_ONCE,
  SHIM_EVER_AFTER,
  SHIM_SHORT,  // this read or write, and all later ones, transfer half of the requested bytes
  SHIM_FULL,   // this write transfers half of its bytes and the next one fails, as on a full disk
  SHIM_EINTR,  // this call, and every second one after it, is interrupted
  SHIM_KILL    // the process is killed there; a write has then written half of its bytes
};

// From now on call number `at` (counted from 0) of that kind meets the fault; `reason` is its errno. A close that fails
// still closes, as on Linux.
void ShimArm(enum ShimCall call, long at, enum ShimMode mode, int reason);
// Returns the number of calls of that kind since ShimArm. No call fails from now on.
long ShimDisarm(void);
// Returns how many of them met the fault.
long ShimHits(void);
// Returns how many of those lost written data: an fsync or fdatasync that failed for good, or a close of unsynced data.
long ShimLost(void);
// Sets a function that is called when a file may be complete, while armed: after a rename, an fsync, a close. Null for
// none.
void ShimWatch(void (*changed)(void));
// Returns the number of allocated blocks that have not been freed.
long ShimPieces(void);

enum ShimChange {
  SHIM_OPENED,   // path, fd, flags, mode
  SHIM_WROTE,    // fd, bytes, size, at: position of the first byte
  SHIM_SIZED,    // fd, at: the new length
  SHIM_SYNCED,   // fd, of a file or a directory
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

// From now on `done` is called after each of these calls that succeeds. Null ends this.
void ShimRecord(void (*done)(struct ShimDone const* call));

// Also: the clock always shows this second (universal time), nobody sleeps while armed or recording, and
// "/etc/zelvane.conf" is the path in the variable ZELVANE_TEST_SETTINGS.
#define SHIM_NOW 1792000000

#ifdef __cplusplus
}
#endif

#endif
