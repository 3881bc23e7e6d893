/// @file
/// The browse list: the address book of the monitored network. Groups form a tree, computers belong to groups, and UPS
/// units ("nobreaks") belong to computers.
///
///     void* list = OpenBrwsList(NULL);
///     BrwsComputerRec computer;
///     for (unsigned long i = 0; i < GetBrwsComputersCount(list); i++)
///       if (GetBrwsComputerByIndex(list, i, &computer)) Show(&computer);
///     if (!CloseBrwsList(list)) Complain();
///
/// zelvane-browse(5) describes the file, a configuration file (cfgclass.h), and says which entries are valid.
/// Identifiers count from 0; -1 is "none". The address of a UPS unit is a copy of its computer's; the library keeps
/// them equal. The file date is the time of the last change: it tells a program whether its copy is current.
///
/// INVALID ENTRIES are skipped: their identifiers count as free, and a new entry can replace them. A computer without
/// an address is invalid: it can be added, but is not read back and does not keep its identifier. The library writes
/// keys without leading zeros. An entry with another spelling ("007") is read by position and keeps its identifier, but
/// no function below finds, changes or removes it.
///
/// CHANGES stay in the handle until a flush. With `flush` true the function flushes before it returns 1, which then
/// means on disk. A flush replaces the whole file with the list in this handle: changes that another program has
/// written since the list was opened are lost. The functions that remove an entry together with what belongs to it
/// always flush, once, at the end. The first flush with something to write creates a missing file.
///
/// RESULTS are 1 for success and 0 for failure. Each function names the failures that only it has. Every function fails
///
/// - for a null handle or record;
/// - if the file could not be read when the list was opened: the list has no entries and takes none;
/// - if a flush fails: the change stays in the handle, and the next flush tries again;
/// - when memory runs out: a change can then be half done in the handle, which writes nothing more to the file
///   and takes no more changes;
/// - for a text that the file cannot hold: one with ";", "[", "]" or a line break, and a name or address of nothing but
///   blanks, tabs and carriage returns.
///
/// Changes update the file date, with the exceptions named below.
///
/// SYNTAX ERRORS: nothing below a syntax error is read, and the next flush drops it (cfgclass.h). If a section was not
/// found above the error, it is added below it: no load finds its entries until the bad line is corrected.
///
/// Numbers have 32 bits: the low 32 bits of a wider `long` count. Arrays from the caller need no NUL: the library reads
/// at most the array. Arrays that the library fills in are cut to fit, with NUL in the last byte. The next load drops
/// blanks before a name and keeps those after it. One thread at a time may use a handle. No function throws.
#ifndef ZELVANE_BROWSE_BROWSELIST_H
#define ZELVANE_BROWSE_BROWSELIST_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// A group.
typedef struct BrwsGroupRec {
  int32_t id;      ///< from 0
  char name[256];  ///< not empty
  int32_t parent;  ///< identifier of a group, or -1
} BrwsGroupRec;

/// A computer.
typedef struct BrwsComputerRec {
  int32_t id;        ///< from 0
  char name[256];    ///< not empty
  char address[16];  ///< dotted IPv4 address
  int32_t group;     ///< identifier of a group, or -1
} BrwsComputerRec;

/// A UPS unit ("nobreak").
typedef struct BrwsNobreakRec {
  int32_t id;        ///< from 0
  char name[256];    ///< not empty
  uint32_t number;   ///< for the programs; above 2147483647 it is written unchanged, but read as 4294967295
  int32_t computer;  ///< identifier of a computer, or -1
} BrwsNobreakRec;

ZELVANE_STATIC_ASSERT(sizeof(BrwsGroupRec) == 264, "BrwsGroupRec: size");
ZELVANE_STATIC_ASSERT(offsetof(BrwsGroupRec, name) == 4, "BrwsGroupRec: name");
ZELVANE_STATIC_ASSERT(offsetof(BrwsGroupRec, parent) == 260, "BrwsGroupRec: parent");
ZELVANE_STATIC_ASSERT(sizeof(BrwsComputerRec) == 280, "BrwsComputerRec: size");
ZELVANE_STATIC_ASSERT(offsetof(BrwsComputerRec, name) == 4, "BrwsComputerRec: name");
ZELVANE_STATIC_ASSERT(offsetof(BrwsComputerRec, address) == 260, "BrwsComputerRec: address");
ZELVANE_STATIC_ASSERT(offsetof(BrwsComputerRec, group) == 276, "BrwsComputerRec: group");
ZELVANE_STATIC_ASSERT(sizeof(BrwsNobreakRec) == 268, "BrwsNobreakRec: size");
ZELVANE_STATIC_ASSERT(offsetof(BrwsNobreakRec, name) == 4, "BrwsNobreakRec: name");
ZELVANE_STATIC_ASSERT(offsetof(BrwsNobreakRec, number) == 260, "BrwsNobreakRec: number");
ZELVANE_STATIC_ASSERT(offsetof(BrwsNobreakRec, computer) == 264, "BrwsNobreakRec: computer");

ZELVANE_C_BEGIN

/// @name The list
/// @{

/// Loads the file `path` and returns the handle; free it with CloseBrwsList. Null or "" means zelbrws.cfg in the
/// installation root. A missing file is an empty list. Returns null when memory runs out, or if the root is needed
/// while /etc/zelvane.conf temporarily cannot be read (paths.h).
ZELVANE_API void* OpenBrwsList(char const* path);

/// Flushes unsaved changes and frees the handle. On 0 these changes are lost.
ZELVANE_API int CloseBrwsList(void* list);

/// Returns the file date: seconds since 1970, local time, of the last change known to this handle; 0 without one.
ZELVANE_API long GetBrwsFileDate(void* list);

/// Sets the file date to now, without another change.
ZELVANE_API int UpdateBrwsFileDate(void* list, bool flush);
/// @}

/// @name Reading
/// @{

/// The number of keys, invalid entries included; 0 for a null handle.
ZELVANE_API unsigned long GetBrwsGroupsCount(void* list);
ZELVANE_API unsigned long GetBrwsComputersCount(void* list);
ZELVANE_API unsigned long GetBrwsNobreaksCount(void* list);

/// Stores the entry at `index`, counted from 0 in ascending order of the keys' text ("10" comes before "2"). A change
/// can move other entries. A number in the value, or a key, that is not a 32-bit number reads as -1. Returns 0 with the
/// record unchanged if there is no such position, or the entry is not valid.
ZELVANE_API int GetBrwsGroupByIndex(void* list, unsigned long index, BrwsGroupRec* group);
ZELVANE_API int GetBrwsComputerByIndex(void* list, unsigned long index, BrwsComputerRec* computer);
ZELVANE_API int GetBrwsNobreakByIndex(void* list, unsigned long index, BrwsNobreakRec* nobreak);
/// @}

/// @name Adding
/// @{

/// Adds an entry and stores its new identifier in `identifier`, which can be null. `id` of the record is ignored.
///
///     `maxPlusOne` false   the smallest free identifier
///     `maxPlusOne` true    the largest identifier plus one; if 2147483647 is taken, the smallest free one. In an empty
///                          list 1 for groups and computers, and 0 for UPS units (kept: callers rely on it)
///
/// A parent, group or computer that does not exist is stored as -1. The UPS unit then gets the address "127.0.0.1", and
/// the file date is not updated. Returns 0 and stores nothing for an empty name, or a text that the file cannot hold.
ZELVANE_API int AddBrwsGroup(void* list, BrwsGroupRec const* group, bool maxPlusOne, unsigned long* identifier,
                             bool flush);
ZELVANE_API int AddBrwsComputer(void* list, BrwsComputerRec const* computer, bool maxPlusOne, unsigned long* identifier,
                                bool flush);
ZELVANE_API int AddBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool maxPlusOne, unsigned long* identifier,
                               bool flush);
/// @}

/// @name Changing
///
/// Replaces the entry `id`, valid or not. Returns 0 and changes nothing if there is no such key, the name is empty, or
/// the file cannot hold a text.
/// @{

/// The parent is not checked: it can be missing, or even form a cycle.
ZELVANE_API int EditBrwsGroup(void* list, BrwsGroupRec const* group, bool flush);
/// The group is not checked. The address must not be empty. It is also stored in the computer's UPS units; their names
/// and numbers stay, and their computer is written without padding ("005" becomes 5).
ZELVANE_API int EditBrwsComputer(void* list, BrwsComputerRec const* computer, bool flush);
/// The computer must exist.
ZELVANE_API int EditBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool flush);
/// @}

/// @name Removing
///
/// An entry that does not exist is no failure: everything else is still done.
/// @{

/// Removes the group, all groups below it, their computers and the UPS units of those computers. Always flushes.
/// BEWARE: -1 is the owner of top-level groups and of computers without a group. With -1 all of these are removed.
ZELVANE_API int RemoveBrwsGroup(void* list, long id, bool flush);
/// Removes the computer and its UPS units. Always flushes. With -1: the UPS units without a computer.
ZELVANE_API int RemoveBrwsComputer(void* list, long id, bool flush);
/// Removes the UPS unit. Does not update the file date if the unit has no computer.
ZELVANE_API int RemoveBrwsNobreak(void* list, long id, bool flush);

/// Same for each group of that parent, or each computer of that group; -1 for those without. Flushes if there was one,
/// or if `flush` is true.
ZELVANE_API int RemoveBrwsGroupByGroup(void* list, long parent, bool flush);
ZELVANE_API int RemoveBrwsComputerByGroup(void* list, long group, bool flush);
/// Same for each UPS unit of that computer; -1 for those without, and then the file date is not updated. Flushes only
/// if `flush` is true.
ZELVANE_API int RemoveBrwsNobreakByComputer(void* list, long computer, bool flush);

/// Removes all entries of one kind and nothing else: what belonged to them keeps their identifiers.
ZELVANE_API int ClearBrwsGroupsList(void* list, bool flush);
ZELVANE_API int ClearBrwsComputersList(void* list, bool flush);
ZELVANE_API int ClearBrwsNobreaksList(void* list, bool flush);
/// @}

ZELVANE_C_END

#endif
