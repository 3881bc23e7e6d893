// The UPS units of one installation. A unit is a number from 0 to 99: key `number = name` of section [SRVLIST] in
// srvlist.cfg of the installation root, and the folder `name` in that root with the unit's own settings and logs. The
// name is the number filled with zeros to three digits: unit 7 is `7 = 007` and the folder 007/.
//
// The list is read anew at every call.
#ifndef ZELVANE_API_UPSLIST_H
#define ZELVANE_API_UPSLIST_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

// Number of units listed; 0 when there is no list, it cannot be read, or memory is short.
ZELVANE_API int GetUpsListCount(void);

// The name of the unit at `position`, counted from 0 in ascending order of the keys' text ("10" comes before "2"): the
// listed value filled with zeros in front to three characters, cut to its first three. 1: `name`, which has room for 4
// bytes, holds it with its NUL. 0, with `name` untouched: null, no such position, or short memory.
ZELVANE_API int GetUpsListItem(unsigned int position, char* name);

// Lists the unit `name` and, unless it has a folder already, creates the folder and copies into it the files that the
// values of section [FILES] in default/zelcfg.cfg of the root name, in ascending order of their keys. Adding a unit
// that is listed already writes its entry again. `name` is filled with zeros in front to three characters before it is
// read as a decimal number: "7", "07" and "007" are unit 7 and "" is unit 0, but "+7" is no number ("0+7").
//
// 1: listed, and the list is on disk; the files copied into a new folder are not synced. 0, with nothing created: null,
// no number, a number outside 0 to 99; and, for a unit without a folder, a template folder or zelcfg.cfg that cannot be
// read, or a listed file whose name holds "/" or "..". 0, not listed: the folder cannot be made; what is listed is no
// file or cannot be copied, what has been copied stays then. 0 also when srvlist.cfg cannot be read or written; the
// folder stays.
//
// A new folder's mode is octal 01230 less the umask, which installed systems expect: not even its owner may list or
// enter it. Adding units therefore takes root. Whether there is a folder is asked as DirExists does (core/fileutils.h):
// the process's current folder changes for a moment, so no other thread may use relative paths, or do this, meanwhile.
ZELVANE_API int AddUpsListItem(char const* name);

// Takes the unit `name`, read in the same way, off the list. Its folder and files stay. 1: it is not listed (any more);
// nothing is written, or created, when it was not. 0: null, or srvlist.cfg cannot be read or written. Numbers outside 0
// to 99 are not refused, so that entries made by hand can be removed too, and a name that is no number counts as 100.
ZELVANE_API int RemUpsListItem(char const* name);

ZELVANE_C_END

#endif
