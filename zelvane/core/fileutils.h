// File names, paths, whole-file copies, waiting, and facts about the system.
//
// Paths use "/". Every function that takes a path has a twin for std::string that passes the string's characters on, up
// to its first NUL. Text results come by value and failures show only in the result; the reason of the last system call
// that failed stays in errno (GetOSLastError). Where there is no memory for a text, std::bad_alloc is thrown.
#ifndef ZELVANE_CORE_FILEUTILS_H
#define ZELVANE_CORE_FILEUTILS_H

#include <string>

#include "zelvane/export.h"

// ---- Names, as text: no file is touched, and a null pointer gives "". ----
//
// The searches for "." do not stop at a "/", nor the other way round: a dot in a folder's name is taken for the
// extension's when the file's own name has none. Stored names depend on it.

// The path with its extension replaced: what follows the last "." becomes `ext`, whose own leading dot (one) is
// dropped. Without a "." the extension is appended. An empty `ext` cuts the path before its last ".". "" when either is
// null. "a.txt", ".cfg" gives "a.cfg"; "a.txt", "" gives "a"; "/opt/a.d/run", "cfg" gives "/opt/a.cfg".
ZELVANE_API std::string ChangeFileExt(char const* path, char const* ext);
ZELVANE_API std::string ChangeFileExt(std::string const& path, std::string const& ext);

// Up to the last "/", with it; "" when there is none.
ZELVANE_API std::string ExtractFilePath(char const* path);
ZELVANE_API std::string ExtractFilePath(std::string const& path);

// What follows the last "/"; the whole path when there is none.
ZELVANE_API std::string ExtractFileName(char const* path);
ZELVANE_API std::string ExtractFileName(std::string const& path);

// What follows the last ".", without the dot; "" when there is none. "/opt/a.d/run" gives "d/run".
ZELVANE_API std::string ExtractFileExt(char const* path);
ZELVANE_API std::string ExtractFileExt(std::string const& path);

// Always '/'.
ZELVANE_API char GetPathDelimiter();

// The path ending in "/": one is appended unless it is there. "" gives "/".
ZELVANE_API std::string IncludePathDelimiter(char const* path);
ZELVANE_API std::string IncludePathDelimiter(std::string const& path);

// The path without its last character if that is "/", and only that one: "/a//" gives "/a/", "/" gives "".
ZELVANE_API std::string ExcludePathDelimiter(char const* path);
ZELVANE_API std::string ExcludePathDelimiter(std::string const& path);

// ---- Where things are. The arguments are not consulted. ----

// Callers pass this value; any other gives the same result.
enum UserPathKind : int { UserPathHome = 1 };

// Full path of the running program: the target of /proc/self/exe, or, when that cannot be read (the program's file was
// replaced or deleted), the name it was started with, looked for in the current folder. "" when neither is readable.
ZELVANE_API std::string GetExeName(bool = false);

// The environment variable HOME with a trailing "/" (a HOME of "" gives "/"). "~", without a slash, when HOME is unset
// or is itself "~".
ZELVANE_API std::string GetUserPath(UserPathKind = UserPathHome, bool = false);

// The first of the environment variables TMP, TEMP and TMPDIR that is set (even if empty), or "/tmp/"; the running
// program's own folder when that one may not be entered (DirExists). Ends in "/"; "" when there is no such folder.
ZELVANE_API std::string GetTmpPath(bool = false);

// Creates an empty file "tmpXXXXXX" in GetTmpPath(), with six random characters for the X's and readable by its owner
// only, and gives its path. The caller removes it. When it cannot be created the path comes back with its X's; "" when
// there is no folder for it or no memory.
ZELVANE_API std::string GetTmpFileName(bool = false);

// ---- What may be done with a file: found by trying, since mode bits do not tell (root, read-only mounts). ----

// True if the file can be opened for reading. Folders can. False for null. Never waits (FIFO, serial line) and changes
// nothing.
ZELVANE_API bool FilePermToRead(char const* path);
ZELVANE_API bool FilePermToRead(std::string const& path);

// True if the file can be opened for reading and for appending. Nothing is created or changed, so a missing file is not
// writable; nor is one that this user may write but not read: the product's files are always read first. False for
// folders, for null and for a FIFO that nobody reads.
ZELVANE_API bool FilePermToWrite(char const* path);
ZELVANE_API bool FilePermToWrite(std::string const& path);

// True if the path is a directory that this process may enter; false for null. The current directory stays unchanged.
ZELVANE_API bool DirExists(char const* path);
ZELVANE_API bool DirExists(std::string const& path);

// ---- Copying ----

// Called by CpFile with: null, the number of bytes copied, the size of the whole source in bytes, the percentage
// (copied / size, truncated, its low 16 bits; 0 when the size is 0) and whether the copy has finished.
typedef void (*CpFileProgress)(void const*, unsigned long, unsigned long, unsigned short, bool);

// Copies `source` from byte `offset` to its end into `destination`, which is created, or emptied first. False, with the
// destination as it was: a null name; a source that cannot be opened; with `overwrite` false, a readable destination; a
// destination that cannot be opened for writing; source and destination being one file; no memory. False, with whatever
// has been copied left in the destination: a failed seek, read (a folder as source) or write.
//
// Blocks have 65,536 bytes with a pause of one millisecond before each, so that a large copy does not take the disk for
// itself. `progress` (null for none) is called once before the first block with finished false, once after each block,
// and once more with finished true when all is written. After a full block another round always follows, even if it
// finds the end: an empty file takes one round, 65,536 bytes take two. The size is the whole file's even with an
// offset, so that the percentage then ends below 100. A failed write ends the copy with false only when the source is
// through, and then without the last call. With `progress` the source must be able to seek; without it and with offset
// 0 it may be a FIFO.
ZELVANE_API bool CpFile(CpFileProgress progress, char const* source, char const* destination, unsigned long offset,
                        bool overwrite);
ZELVANE_API bool CpFile(CpFileProgress progress, std::string const& source, std::string const& destination,
                        unsigned long offset, bool overwrite);
ZELVANE_API bool CpFile(char const* source, char const* destination, unsigned long offset, bool overwrite);
ZELVANE_API bool CpFile(std::string const& source, std::string const& destination, unsigned long offset,
                        bool overwrite);

// ---- Waiting and ticks: 32-bit on every platform ----

// Sleeps that many milliseconds, at least one: 0 counts as 1. The time in microseconds is kept to its low 32 bits, so
// it wraps above 4,294,967 ms. A signal handler does not cut it short.
ZELVANE_API void Delay(unsigned long milliseconds);

// The same in microseconds: 0 counts as 1.
ZELVANE_API void usDelay(unsigned long microseconds);

// The time of day in milliseconds, low 32 bits: wraps after 49.7 days and follows the clock when it is set. Compare
// differences, in 32 bits.
ZELVANE_API unsigned long GetSystemTick();

// The same in microseconds: wraps after 71.6 minutes.
ZELVANE_API unsigned long usGetSystemTick();

// ---- The system ----

// "Debian GNU/Linux 12.7 - Linux 6.1.0-25-amd64 in x86_64": the first line of the first readable release file in /etc
// (some with a prefix) and " - ", then the kernel's name and release and the machine. Without a release file only the
// second half.
ZELVANE_API std::string GetOSVersion();

// Always 2: the Linux build of the product's libraries.
ZELVANE_API int GetOSType();

// True when the real user or the real group is number 0.
ZELVANE_API bool CurUserIsAdmin();

// The calling thread's errno.
ZELVANE_API int GetOSLastError();

#endif
