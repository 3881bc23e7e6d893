/// @file
/// File names, paths, whole-file copies, waiting, and facts about the system.
///
/// Paths use "/". Every function that takes a path has a std::string overload, which uses the string up to its first
/// NUL. Text results are returned by value. Failures show only in the result; errno keeps the reason of the last failed
/// system call (GetOSLastError). Functions that return a text throw std::bad_alloc when memory runs out.
#ifndef ZELVANE_CORE_FILEUTILS_H
#define ZELVANE_CORE_FILEUTILS_H

#include <string>

#include "zelvane/export.h"

/// @name Names, as text
///
/// No file is accessed. Null returns "".
///
/// Kept, because stored names depend on it: the search for "." does not stop at a "/", and the search for "/" does not
/// stop at a ".". If the file name has no dot, a dot in a directory name starts the extension.
/// @{

/// Replaces the extension: the text after the last "." becomes `ext`, without its own leading dot (one). If there is no
/// ".", appends the extension. An empty `ext` removes the last "." and what follows. Returns "" if either argument is
/// null. "a.txt", ".cfg" returns "a.cfg"; "a.txt", "" returns "a"; "/opt/a.d/run", "cfg" returns "/opt/a.cfg".
ZELVANE_API std::string ChangeFileExt(char const* path, char const* ext);
ZELVANE_API std::string ChangeFileExt(std::string const& path, std::string const& ext);

/// Returns the path up to and including the last "/"; "" if there is none.
ZELVANE_API std::string ExtractFilePath(char const* path);
ZELVANE_API std::string ExtractFilePath(std::string const& path);

/// Returns the part after the last "/"; the whole path if there is none.
ZELVANE_API std::string ExtractFileName(char const* path);
ZELVANE_API std::string ExtractFileName(std::string const& path);

/// Returns the part after the last ".", without the dot; "" if there is none. "/opt/a.d/run" returns "d/run".
ZELVANE_API std::string ExtractFileExt(char const* path);
ZELVANE_API std::string ExtractFileExt(std::string const& path);

/// Always returns '/'.
ZELVANE_API char GetPathDelimiter();

/// Returns the path with a trailing "/", appended only if missing. "" returns "/".
ZELVANE_API std::string IncludePathDelimiter(char const* path);
ZELVANE_API std::string IncludePathDelimiter(std::string const& path);

/// Returns the path without its last character if that is "/". Only one is removed: "/a//" returns "/a/", "/" returns
/// "".
ZELVANE_API std::string ExcludePathDelimiter(char const* path);
ZELVANE_API std::string ExcludePathDelimiter(std::string const& path);
/// @}

/// @name Locations
///
/// The arguments are ignored.
/// @{

/// Callers pass this value; any other gives the same result.
enum UserPathKind : int { UserPathHome = 1 };

/// Returns the full path of the running program: the target of /proc/self/exe. If that file cannot be read (it was
/// replaced or deleted), returns the path of the file in the current directory that has the name with which the program
/// was started. Returns "" if that cannot be read either.
ZELVANE_API std::string GetExeName(bool = false);

/// Returns the environment variable HOME with a trailing "/" (an empty HOME returns "/"). Returns "~", without a slash,
/// if HOME is unset or is itself "~".
ZELVANE_API std::string GetUserPath(UserPathKind = UserPathHome, bool = false);

/// Returns the first of the environment variables TMP, TEMP and TMPDIR that is set (even if empty), or "/tmp/". If that
/// directory may not be entered (DirExists), returns the directory of the running program. The result ends in "/"; ""
/// if there is no such directory.
ZELVANE_API std::string GetTmpPath(bool = false);

/// Creates an empty file "tmpXXXXXX" in GetTmpPath(), with random characters for the six X's, readable only by its
/// owner, and returns its path. The caller removes it. If it cannot be created, returns the path with its X's. Returns
/// "" if there is no directory for it, or when memory runs out.
ZELVANE_API std::string GetTmpFileName(bool = false);
/// @}

/// @name File permissions
///
/// The functions open the file to find out: mode bits do not decide (root, read-only mounts).
/// @{

/// Returns true if the file or directory can be opened for reading; false for null. Never blocks (FIFO, serial line)
/// and changes nothing.
ZELVANE_API bool FilePermToRead(char const* path);
ZELVANE_API bool FilePermToRead(std::string const& path);

/// Returns true if the file can be opened for reading and for appending. Creates and changes nothing. False for null, a
/// missing file, a directory, and a FIFO without a reader. Also false for a file that this user may write but not read:
/// the programs always read a file first.
ZELVANE_API bool FilePermToWrite(char const* path);
ZELVANE_API bool FilePermToWrite(std::string const& path);

/// Returns true if the path is a directory that this process may enter; false for null. The current directory does not
/// change.
ZELVANE_API bool DirExists(char const* path);
ZELVANE_API bool DirExists(std::string const& path);
/// @}

/// @name Copying
/// @{

/// CpFile calls it with: null, the number of bytes copied, the size of the whole source in bytes, the percentage
/// (copied / size, truncated, its low 16 bits; 0 if the size is 0), and whether the copy has finished.
typedef void (*CpFileProgress)(void const*, unsigned long, unsigned long, unsigned short, bool);

/// Copies `source` from byte `offset` to its end into `destination`, which is created, or emptied first.
///
///     false, destination      a null name; a source that cannot be opened; with `overwrite` false, a readable
///     unchanged               destination; a destination that cannot be opened for writing; source and destination are
///                             one file; out of memory
///     false, a part copied    a failed seek, read (a directory as source) or write
///
/// Blocks have 65,536 bytes, with a pause of one millisecond before each, so that a large copy does not monopolise the
/// disk. `progress` (null for none) is called once before the first block with finished false, once after each block,
/// and once more with finished true when everything is written. After a full block another round always follows, even
/// if it finds only the end: an empty file takes one round, 65,536 bytes take two. The size is that of the whole file
/// even with an offset, so the percentage then ends below 100. After a failed write the source is still read to its
/// end; then the function returns false, without the last call. With `progress` the source must be able to seek.
/// Without it, and with offset 0, the source can be a FIFO.
ZELVANE_API bool CpFile(CpFileProgress progress, char const* source, char const* destination, unsigned long offset,
                        bool overwrite);
ZELVANE_API bool CpFile(CpFileProgress progress, std::string const& source, std::string const& destination,
                        unsigned long offset, bool overwrite);
ZELVANE_API bool CpFile(char const* source, char const* destination, unsigned long offset, bool overwrite);
ZELVANE_API bool CpFile(std::string const& source, std::string const& destination, unsigned long offset,
                        bool overwrite);
/// @}

/// @name Waiting and ticks
///
/// 32 bits on every platform.
/// @{

/// Sleeps for that many milliseconds, at least one: 0 counts as 1. Kept: the time in microseconds has 32 bits, so it
/// wraps above 4,294,967 ms. A signal handler does not shorten it.
ZELVANE_API void Delay(unsigned long milliseconds);

/// Same in microseconds: 0 counts as 1.
ZELVANE_API void usDelay(unsigned long microseconds);

/// Returns the time of day in milliseconds, low 32 bits. It wraps after 49.7 days and follows changes of the clock.
/// Compare differences, in 32 bits.
ZELVANE_API unsigned long GetSystemTick();

/// Same in microseconds: wraps after 71.6 minutes.
ZELVANE_API unsigned long usGetSystemTick();
/// @}

/// @name The system
/// @{

/// Returns, for example, "Debian GNU/Linux 12.7 - Linux 6.1.0-25-amd64 in x86_64": the first line of the first readable
/// release file in /etc (some with a prefix) and " - ", then the name and release of the kernel and the machine.
/// Without a release file, only the part after " - ".
ZELVANE_API std::string GetOSVersion();

/// Always returns 2: the Linux build of the product's libraries.
ZELVANE_API int GetOSType();

/// Returns true if the real user or the real group has number 0.
ZELVANE_API bool CurUserIsAdmin();

/// Returns the calling thread's errno.
ZELVANE_API int GetOSLastError();
/// @}

#endif
