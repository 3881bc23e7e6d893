// Whole files in and out: how every file of the product is read at once, and how it is replaced so that a kill or a
// full disk at any moment leaves either the whole old text or the whole new one.
#ifndef ZELVANE_CORE_SAFESAVE_INTERNAL_H
#define ZELVANE_CORE_SAFESAVE_INTERNAL_H

#include <string>
#include <string_view>

namespace zelvane::internal {

enum class ReadResult {
  kOk,
  kNotOpened,   // missing, or not readable by this user
  kReadFailed,  // opened, but its bytes could not be had: a directory, an I/O error, an endless device
};

// Reads the file from start to end into `out`, which after kReadFailed holds what came before the failure: it shows
// where that was. errno holds the reason of a failure (ENOENT for a missing file, EISDIR for a directory). Never waits:
// a FIFO without a writer reads as empty, one whose writer is silent fails with EAGAIN. What is not a regular file
// fails with EFBIG past 16 MiB, since an endless device must not eat the memory, and with ENOMEM when there is none.
// Never throws.
ReadResult ReadWhole(std::string const& path, std::string& out);

// Makes `text` the file's whole content. True when its bytes and its name are on disk: a power cut afterwards leaves
// the new text, one before that the whole old text or the whole new one. On false the file holds what it held before,
// or is still missing, and nothing is left beside it. One exception: when only the folder could not be brought to disk
// (EIO), the file holds the new text already, and a power cut can bring back the old one.
//
// An existing file must be openable for writing by this user, whatever its folder would allow. A new file is then
// written beside it, given the old one's owner and mode, brought to disk and renamed over it; symbolic links are
// followed, so the link stays a link. The text is written into the old file where a new one would lose something or is
// not allowed: several hard links, an access control list, an owner that this user cannot give, a folder that takes no
// new name, a mount on the file itself. There the space is reserved first, the file is never empty in between, and a
// failed write puts the old bytes back; a mixture is left only by a kill in the middle of that write, or when the old
// bytes cannot be written again either, or could not be read by this user in the first place. Extended attributes other
// than the access control list are not carried over. What is not a regular file (a device, a FIFO with a reader)
// just gets the bytes, without waiting.
//
// A missing file is created the same way with the mode that the umask gives, at the end of a dangling symbolic link
// too; its folder must exist. Throws only std::bad_alloc.
bool SafeSave(std::string const& path, std::string_view text);

// Keeps a copy of the file's present bytes, with the same owner and mode, beside it: as `path` followed by `suffix`, or
// by `suffix` and .1 to .9 when the names before that are taken by anything else. A copy that is there already with the
// same bytes will do; none is ever replaced. True when the copy is on disk. An owner that this user cannot give becomes
// this user, and if the group cannot be given either, or an access control list decided what the group may do, the
// group's permission goes: the copy is never open to more people. False when it could not be kept (then no part of a
// copy is there), when all ten names are taken, and when `path` is missing, unreadable or not a regular file; also when
// only the folder could not be brought to disk, with the copy there. Throws only std::bad_alloc.
bool BackUp(std::string const& path, char const* suffix);

// Same as SafeSave, but only for a missing file: false, with that file untouched, when there is one by the time that
// the text is ready. At the end of a dangling symbolic link the same holds for the file that it names.
bool SaveIfMissing(std::string const& path, std::string_view text);

}  // namespace zelvane::internal

#endif
