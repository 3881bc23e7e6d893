/// @file
/// The UPS units of one installation. A unit is a number from 0 to 99. It is listed in srvlist.cfg of the installation
/// root (zelvane-cfg(5)), and has a directory in that root with its own settings and logs. Its name, in the list and of
/// the directory, is the number with leading zeros to three digits: unit 7 has the directory 007/.
///
/// Every call reads the list again.
#ifndef ZELVANE_API_UPSLIST_H
#define ZELVANE_API_UPSLIST_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/// @name Functions
///
/// All four functions fail and do nothing while /etc/zelvane.conf temporarily cannot be opened or read
/// (config/paths.h).
/// @{

/// Returns the number of units listed. Returns 0 if there is no list, it cannot be read, or memory runs out.
ZELVANE_API int GetUpsListCount(void);

/// Stores the name of the unit at `position`: the listed value with leading zeros to three characters, cut to its first
/// three. Positions count from 0 in ascending order of the keys' text: "10" comes before "2". `name` must have space
/// for 4 bytes; the last one is NUL.
///
/// Returns 1, or 0 with `name` unchanged: null, no such position, or out of memory.
ZELVANE_API int GetUpsListItem(unsigned int position, char* name);

/// Lists the unit `name`. The name gets leading zeros to three characters and is read as a decimal number: "7", "07"
/// and "007" are unit 7, "" is unit 0, and "+7" is not a number ("0+7"). The entry of a listed unit is written again.
///
/// If the unit has no directory, creates it and copies the template's files into it. The template is the directory
/// `default` of the root; its zelcfg.cfg names the files (zelvane-cfg(5)).
///
/// Returns 1 if the unit is listed and the list is on disk; the copied files are not synced. Returns 0 in these cases:
///
///     null, not a number, or outside 0 to 99             nothing is created
///     no directory yet, and: template unreadable, or a   nothing is created
///       file name contains "/" or ".."
///     the directory cannot be created                    nothing is created
///     a file is missing, not a regular file, or cannot   the directory stays, with the files copied before. Remove it
///       be copied                                        before the next attempt: an existing directory is only listed
///     srvlist.cfg cannot be read or written              a new directory stays, complete
///
/// Kept: a new directory has mode 01230 minus the umask, because installed systems expect it. Not even its owner can
/// list or enter it, so only root can add a new unit.
ZELVANE_API int AddUpsListItem(char const* name);

/// Removes the unit `name`, read in the same way, from the list. Its directory and files stay. A name that is not a
/// number counts as 100, and numbers outside 0 to 99 are accepted: entries made by hand can be removed too.
///
/// Returns 1 if the unit is no longer listed. If it was not listed, nothing is written or created. Returns 0 if `name`
/// is null, srvlist.cfg cannot be read or written, or memory runs out.
ZELVANE_API int RemUpsListItem(char const* name);
/// @}

ZELVANE_C_END

#endif
