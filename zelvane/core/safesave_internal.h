// Reads and saves whole files: all but the logs. A file is read in one piece, and replaced so that a kill or a full
// disk leaves either the whole old text or the whole new one, with the exceptions below.
#ifndef ZELVANE_CORE_SAFESAVE_INTERNAL_H
#define ZELVANE_CORE_SAFESAVE_INTERNAL_H

#include <string>
#include <string_view>

namespace zelvane::internal {

enum class ReadResult {
  kOk,
  kNotOpened,   // missing, or this user may not read it
  kReadFailed,  // opened, but not readable: a directory, an I/O error, an endless device
};

// Reads the whole file into `out`. After kReadFailed `out` has the bytes before the failure, which show where it was.
// errno has the reason of a failure (ENOENT for a missing file, EISDIR for a directory). Never blocks: a FIFO without a
// writer reads as empty; one whose writer is silent fails with EAGAIN. Other files than regular ones fail with EFBIG
// past 16 MiB, because an endless device must not use up the memory. Fails with ENOMEM when memory runs out. Never
// throws.
ReadResult ReadWhole(std::string const& path, std::string& out);

// Replaces the contents of the file with `text`. Returns true when its bytes and its name are on disk: a power failure
// after that leaves the new text; one before it, the whole old text or the whole new one. On false the file has its old
// contents, or is still missing, and no other file remains. One exception: if only the directory cannot be synced
// (EIO), the file already has the new text, and a power failure can bring back the old one.
//
// This user must be able to open an existing file for writing, whatever its directory would allow. A new file is then
// written in the same directory, gets the old one's owner and mode, is synced and renamed over it. Symbolic links are
// followed, so a link stays a link.
//
// The text is written in place if a new file would lose something or is not allowed: several hard links, an access
// control list, an owner that this user cannot set, a directory that accepts no new name, a mount on the file itself.
// Space is reserved first, the file is never empty in between, and after a failed write the old bytes are restored. A
// mixture remains only after a kill during that write, or if the old bytes cannot be written either or were not
// readable by this user. Extended attributes other than the access control list are lost. Other files than regular ones
// (a device, a FIFO with a reader) just receive the bytes, without waiting.
//
// A missing file is created in the same way, with the mode given by the umask, also at the end of a dangling symbolic
// link; its directory must exist. Throws only std::bad_alloc.
bool SafeSave(std::string const& path, std::string_view text);

// Copies the current bytes of the file, with the same owner and mode, to `path` followed by `suffix`. If that name is
// taken by anything else, uses `suffix` and .1 to .9. An existing copy with the same bytes is sufficient; none is ever
// replaced. Returns true when the copy is on disk. An owner that this user cannot set becomes this user. If the group
// cannot be set either, or an access control list defined its rights, the group loses its permissions: the copy is
// never accessible to more people. Returns false if the copy cannot be made (no partial copy remains), if all ten names
// are taken, and if `path` is missing, unreadable or not a regular file. Also returns false if only the directory
// cannot be synced; the copy then exists. Throws only std::bad_alloc.
bool BackUp(std::string const& path, char const* suffix);

// Same as SafeSave, but only for a missing file. Returns false and leaves the file unchanged if one exists by the time
// the text is ready. At the end of a dangling symbolic link the same holds for the file that it names.
bool SaveIfMissing(std::string const& path, std::string_view text);

}  // namespace zelvane::internal

#endif
