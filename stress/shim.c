#define _GNU_SOURCE
#include "stress/shim.h"

#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

static int g_armed = 0;
static enum ShimCall g_call;
static enum ShimMode g_mode;
static long g_at;
static int g_reason;
static long g_seen;
static long g_hits;
static long g_lost;
static unsigned char g_unsynced[256]; /* descriptors written to since the last fsync */
static long g_pieces;
static void (*g_changed)(void);
static void (*g_record)(struct ShimDone const* call);

#define EXPORTED __attribute__((visibility("default")))

/* The replacement of a C library function. */
#define INSTEAD_OF(result, name, parameters) EXPORTED result name parameters

EXPORTED void ShimArm(enum ShimCall call, long at, enum ShimMode mode, int reason) {
  g_call = call;
  g_at = at;
  g_mode = mode;
  g_reason = reason;
  g_seen = g_hits = g_lost = 0;
  memset(g_unsynced, 0, sizeof g_unsynced);
  g_armed = 1;
}

EXPORTED long ShimDisarm(void) {
  g_armed = 0;
  return g_seen;
}

EXPORTED long ShimHits(void) { return g_hits; }
EXPORTED long ShimLost(void) { return g_lost; }
EXPORTED void ShimWatch(void (*changed)(void)) { g_changed = changed; }
EXPORTED void ShimRecord(void (*done)(struct ShimDone const*)) { g_record = done; }
EXPORTED long ShimPieces(void) { return g_pieces; }

static void Die(void) {
  signal(SIGKILL, SIG_DFL);
  raise(SIGKILL);
}

/* The fate of this call: 0 nothing, 1 it fails, 2 it transfers half. */
static int Fate(enum ShimCall call) {
  long number;
  if (!g_armed || (call != g_call && (g_call != SHIM_ANY || call == SHIM_MALLOC))) return 0;
  number = g_seen++ - g_at;
  if (number < 0 || (g_mode == SHIM_ONCE && number > 0) || (g_mode == SHIM_EINTR && number % 2 != 0)) return 0;
  if (g_mode == SHIM_FULL && number > 1) return 0;
  if (g_mode == SHIM_KILL) {
    if (number > 0) return 0;
    if (call == SHIM_WRITE) return 2; /* killed after half of it */
    Die();
  }
  g_hits++;
  if (g_mode == SHIM_SHORT) return call == SHIM_READ || call == SHIM_WRITE ? 2 : 0;
  if (g_mode == SHIM_FULL && number == 0) return 2;
  errno = g_mode == SHIM_EINTR ? EINTR : g_reason;
  return 1;
}

static void Changed(void) {
  if (g_armed && g_changed != NULL) {
    int const reason = errno;
    g_armed = 0;
    g_changed();
    g_armed = 1;
    errno = reason;
  }
}

/* Reports a call that succeeded. Calls made by the recorder itself are not reported. */
static void Done(struct ShimDone call) {
  void (*const record)(struct ShimDone const*) = g_record;
  int const reason = errno;
  if (record == NULL) return;
  g_record = NULL;
  record(&call);
  g_record = record;
  errno = reason;
}
#define DONE(...) Done((struct ShimDone){__VA_ARGS__})

#define REAL(name) (__extension__(__typeof__(&name)) Real(#name))
static void* Real(char const* name) { return dlsym(RTLD_NEXT, name); }

/* ---- Memory. Always counted, so that blocks allocated before arming can be freed while armed. ---- */

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* piece, size_t size);
void __libc_free(void* piece);

static void* Counted(void* piece) {
  if (piece != NULL) g_pieces++;
  return piece;
}

INSTEAD_OF(void*, malloc, (size_t size)) { return Fate(SHIM_MALLOC) ? NULL : Counted(__libc_malloc(size)); }
INSTEAD_OF(void*, calloc, (size_t count, size_t size)) {
  return Fate(SHIM_MALLOC) ? NULL : Counted(__libc_calloc(count, size));
}
INSTEAD_OF(void*, realloc, (void* piece, size_t size)) {
  if (Fate(SHIM_MALLOC)) return NULL;
  if (piece == NULL) return Counted(__libc_malloc(size));
  return __libc_realloc(piece, size);
}
INSTEAD_OF(void, free, (void* piece)) {
  if (piece != NULL) g_pieces--;
  __libc_free(piece);
}

/* ---- Files ---- */

static unsigned char* Unsynced(int fd) {
  static unsigned char other;
  return fd >= 0 && fd < (int)sizeof g_unsynced ? &g_unsynced[fd] : &other;
}

static char const* Redirected(char const* path) {
  if (path == NULL || strcmp(path, "/etc/zelvane.conf") != 0) return path;
  path = getenv("ZELVANE_TEST_SETTINGS");
  return path != NULL ? path : "/nonexistent/zelvane-test.conf";
}

#define DEFINE_OPEN(name, parameters, arguments)                                          \
  INSTEAD_OF(int, name, parameters) {                                                     \
    va_list rest;                                                                         \
    mode_t mode = 0;                                                                      \
    int fd;                                                                               \
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {                                           \
      va_start(rest, flags);                                                              \
      mode = va_arg(rest, mode_t);                                                        \
      va_end(rest);                                                                       \
    }                                                                                     \
    if (Fate(SHIM_OPEN)) return -1;                                                       \
    fd = REAL(name) arguments;                                                            \
    if (fd >= 0) DONE(SHIM_OPENED, .fd = fd, .path = path, .flags = flags, .mode = mode); \
    return fd;                                                                            \
  }

DEFINE_OPEN(open, (char const* path, int flags, ...), (Redirected(path), flags, mode))
DEFINE_OPEN(open64, (char const* path, int flags, ...), (Redirected(path), flags, mode))
DEFINE_OPEN(openat, (int folder, char const* path, int flags, ...), (folder, path, flags, mode))
DEFINE_OPEN(openat64, (int folder, char const* path, int flags, ...), (folder, path, flags, mode))

/* `recorded` runs after the call has succeeded. */
#define DEFINE_RECORDED(result, failed, call, name, parameters, arguments, recorded) \
  INSTEAD_OF(result, name, parameters) {                                             \
    result done;                                                                     \
    if (Fate(call)) return failed;                                                   \
    done = REAL(name) arguments;                                                     \
    if (done != (failed)) recorded;                                                  \
    if (call == SHIM_RENAME) Changed();                                              \
    return done;                                                                     \
  }
#define DEFINE(result, failed, call, name, parameters, arguments) \
  DEFINE_RECORDED(result, failed, call, name, parameters, arguments, (void)0)

static void Sized(int fd) {
  struct stat now;
  if (g_record != NULL && REAL(fstat)(fd, &now) == 0) DONE(SHIM_SIZED, .fd = fd, .at = now.st_size);
}

DEFINE(FILE*, NULL, SHIM_OPEN, fopen, (char const* path, char const* mode), (path, mode))
DEFINE(FILE*, NULL, SHIM_OPEN, fopen64, (char const* path, char const* mode), (path, mode))
DEFINE(off_t, -1, SHIM_SEEK, lseek, (int fd, off_t at, int from), (fd, at, from))
DEFINE(off64_t, -1, SHIM_SEEK, lseek64, (int fd, off64_t at, int from), (fd, at, from))
DEFINE_RECORDED(int, -1, SHIM_RENAME, rename, (char const* from, char const* to), (from, to),
                DONE(SHIM_RENAMED, .path = from, .to = to))
DEFINE_RECORDED(int, -1, SHIM_RENAME, link, (char const* from, char const* to), (from, to),
                DONE(SHIM_LINKED, .path = from, .to = to))
DEFINE_RECORDED(int, -1, SHIM_RENAME, renameat2, (int a, char const* from, int b, char const* to, unsigned flags),
                (a, from, b, to, flags), DONE(SHIM_RENAMED, .path = from, .to = to))
DEFINE_RECORDED(int, -1, SHIM_TRUNCATE, ftruncate, (int fd, off_t size), (fd, size), Sized(fd))
DEFINE_RECORDED(int, -1, SHIM_TRUNCATE, ftruncate64, (int fd, off64_t size), (fd, size), Sized(fd))
DEFINE_RECORDED(int, -1, SHIM_TRUNCATE, fallocate, (int fd, int mode, off_t at, off_t size), (fd, mode, at, size),
                Sized(fd))
DEFINE_RECORDED(int, -1, SHIM_TRUNCATE, fallocate64, (int fd, int mode, off64_t at, off64_t size), (fd, mode, at, size),
                Sized(fd))
DEFINE_RECORDED(int, -1, SHIM_TEMP, mkstemp, (char* path), (path),
                DONE(SHIM_OPENED, .fd = done, .path = path, .mode = 0600))
DEFINE_RECORDED(int, -1, SHIM_TEMP, mkostemp, (char* path, int flags), (path, flags),
                DONE(SHIM_OPENED, .fd = done, .path = path, .mode = 0600))
DEFINE_RECORDED(int, -1, SHIM_TEMP, mkostemp64, (char* path, int flags), (path, flags),
                DONE(SHIM_OPENED, .fd = done, .path = path, .mode = 0600))
DEFINE(pid_t, -1, SHIM_FORK, fork, (void), ())
DEFINE(FILE*, NULL, SHIM_FORK, popen, (char const* command, char const* mode), (command, mode))
DEFINE(int, -1, SHIM_STATUS, fstat, (int fd, struct stat* to), (fd, to))
DEFINE(int, -1, SHIM_STATUS, fstat64, (int fd, struct stat64* to), (fd, to))
DEFINE(int, -1, SHIM_STATUS, stat, (char const* path, struct stat* to), (path, to))
DEFINE(int, -1, SHIM_STATUS, stat64, (char const* path, struct stat64* to), (path, to))
DEFINE(int, -1, SHIM_STATUS, lstat, (char const* path, struct stat* to), (path, to))
DEFINE(int, -1, SHIM_STATUS, lstat64, (char const* path, struct stat64* to), (path, to))
DEFINE(int, -1, SHIM_STATUS, fchmod, (int fd, mode_t mode), (fd, mode))
DEFINE(int, -1, SHIM_STATUS, fchown, (int fd, uid_t user, gid_t group), (fd, user, group))
DEFINE(int, -1, SHIM_STATUS, mkdir, (char const* path, mode_t mode), (path, mode))
DEFINE(int, -1, SHIM_LOCK, flock, (int fd, int operation), (fd, operation))
DEFINE(int, -1, SHIM_STATUS, faccessat, (int folder, char const* path, int mode, int flags),
       (folder, path, mode, flags))
DEFINE(int, -1, SHIM_STATUS, scandir,
       (char const* path, struct dirent*** list, int (*keep)(struct dirent const*),
        int (*order)(struct dirent const**, struct dirent const**)),
       (path, list, keep, order))
DEFINE(int, -1, SHIM_STATUS, scandir64,
       (char const* path, struct dirent64*** list, int (*keep)(struct dirent64 const*),
        int (*order)(struct dirent64 const**, struct dirent64 const**)),
       (path, list, keep, order))

INSTEAD_OF(int, posix_spawn,
           (pid_t* restrict id, char const* restrict path, posix_spawn_file_actions_t const* actions,
            posix_spawnattr_t const* restrict attributes, char* const argv[], char* const env[])) {
  return Fate(SHIM_FORK) ? g_reason : REAL(posix_spawn)(id, path, actions, attributes, argv, env);
}

INSTEAD_OF(int, system, (char const* command)) { return Fate(SHIM_FORK) ? -1 : REAL(system)(command); }

/* A failed removal would always leave a file, so these calls are only counted. */
INSTEAD_OF(int, unlink, (char const* path)) {
  int done;
  if (g_call == SHIM_ANY) (void)Fate(SHIM_REMOVE);
  done = REAL(unlink)(path);
  if (done == 0) DONE(SHIM_REMOVED, .path = path);
  return done;
}
INSTEAD_OF(int, remove, (char const* path)) {
  int done;
  if (g_call == SHIM_ANY) (void)Fate(SHIM_REMOVE);
  done = REAL(remove)(path);
  if (done == 0) DONE(SHIM_REMOVED, .path = path);
  return done;
}

/* An interrupted sync is repeated; one that the file system does not offer loses nothing. */
static int Synced(int fd, int (*sync)(int)) {
  int done;
  if (Fate(SHIM_SYNC)) {
    g_lost += errno != EINTR && errno != EINVAL;
    return -1;
  }
  done = sync(fd);
  if (done == 0) DONE(SHIM_SYNCED, .fd = fd);
  *Unsynced(fd) = 0;
  Changed();
  return done;
}
INSTEAD_OF(int, fsync, (int fd)) { return Synced(fd, REAL(fsync)); }
INSTEAD_OF(int, fdatasync, (int fd)) { return Synced(fd, REAL(fdatasync)); }

INSTEAD_OF(int, close, (int fd)) {
  int const done = REAL(close)(fd), failed = Fate(SHIM_CLOSE);
  g_lost += failed && *Unsynced(fd);
  *Unsynced(fd) = 0;
  Changed();
  return failed ? -1 : done;
}

INSTEAD_OF(ssize_t, read, (int fd, void* to, size_t size)) {
  int const fate = Fate(SHIM_READ);
  return fate == 1 ? -1 : REAL(read)(fd, to, fate == 2 ? (size + 1) / 2 : size);
}

INSTEAD_OF(ssize_t, write, (int fd, void const* from, size_t size)) {
  int const fate = Fate(SHIM_WRITE);
  ssize_t done;
  if (fate == 1) return -1;
  done = REAL(write)(fd, from, fate == 2 ? (size + 1) / 2 : size);
  if (fate == 2 && g_mode == SHIM_KILL) Die();
  if (done > 0)
    DONE(SHIM_WROTE, .fd = fd, .bytes = from, .size = (size_t)done, .at = REAL(lseek)(fd, 0, SEEK_CUR) - done);
  *Unsynced(fd) = (unsigned char)(g_armed != 0);
  return done;
}

INSTEAD_OF(ssize_t, writev, (int fd, struct iovec const* parts, int count)) {
  return Fate(SHIM_WRITE) ? -1 : REAL(writev)(fd, parts, count);
}

/* ---- Time ---- */

INSTEAD_OF(int, gettimeofday, (struct timeval* restrict now, void* restrict zone)) {
  (void)zone;
  now->tv_sec = SHIM_NOW;
  now->tv_usec = 250000;
  return 0;
}

INSTEAD_OF(time_t, time, (time_t * now)) {
  if (now != NULL) *now = SHIM_NOW;
  return SHIM_NOW;
}

INSTEAD_OF(int, clock_nanosleep, (clockid_t clock, int flags, struct timespec const* pause, struct timespec* left)) {
  return g_armed || g_record != NULL ? 0 : REAL(clock_nanosleep)(clock, flags, pause, left);
}
