/* The browse list: the product's address book of the monitored network. Groups form a tree, computers belong to groups,
   UPS units ("nobreaks") to computers.

     void* list = OpenBrwsList(NULL);
     BrwsComputerRec computer;
     for (unsigned long i = 0; i < GetBrwsComputersCount(list); i++)
       if (GetBrwsComputerByIndex(list, i, &computer)) Show(&computer);
     if (!CloseBrwsList(list)) Complain();

   THE FILE is a configuration file (cfgclass.h). An entry is one key, its value's fields are joined by ";":

     [GROUPS]      identifier = name;parent group
     [COMPUTERS]   identifier = name;address;group
     [NOBREAKS]    identifier = name;address;number;computer
     [DATE]        DATETIME = seconds, GetDateTime() of the last change: "is my copy current?"

   Identifiers count from 0; -1 stands for "none" in the last field. The address of a UPS unit is a copy of its
   computer's, kept in step by the library.

   VALID ENTRIES have a key that is an integer and exactly 2, 3 or 4 fields, of which none is empty but the address of a
   UPS unit. Others are skipped: their identifiers count as free, and a new entry may take their place. A computer
   without an address is such an entry: it can be added, is not read back and does not keep its identifier. Keys in
   another spelling than the library's ("007", "+2") are read by position and keep their number from being given
   again, but nothing below finds, changes or removes them.

   CHANGES stay in the handle until they are flushed. `flush` true does that before the function returns 1, which then
   means on disk: the whole list as this handle knows it replaces the file, and what another program has written since
   the list was opened is lost. The functions that remove something together with what belongs to it flush anyway, once,
   at the end. A missing file is created by the first flush with something to write.

   RESULTS are 1 for success and 0 for failure: a null handle or record, no memory, a file that could not be read when
   the list was opened (then it has no entries and takes none), a flush that failed (the change stays in the handle, the
   next flush tries again), and what the functions name. A change that runs out of memory may be half done in the
   handle: nothing that the handle has not flushed goes to the file then, and it takes no more changes. Texts with
   ";", "[", "]" or a line break are refused, because the file cannot hold them. So are names and addresses of nothing
   but blanks, tabs and carriage returns: a load takes those off. The changes are stamped with the date but for the
   exceptions named.

   BEHIND A SYNTAX ERROR nothing is read. The lines below it are dropped by the next flush, which first copies the file
   to NAME.lost (cfgclass.h). A section that was not found above the error is added below it: its entries are in the
   handle and in the file, but no load finds them until the line is corrected.

   Numbers are 32 bits wide: of a wider `long` the low 32 bits count. Arrays given to the library need no NUL and end at
   their width then; those it fills are cut to fit, with NUL in the last byte. Blanks around a name are gone with the
   next load. A handle is used by one thread at a time; no function throws. */
#ifndef ZELVANE_BROWSE_BROWSELIST_H
#define ZELVANE_BROWSE_BROWSELIST_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

typedef struct BrwsGroupRec {
  int32_t id;     /* from 0 */
  char name[256]; /* not empty */
  int32_t parent; /* identifier of a group, or -1 */
} BrwsGroupRec;

typedef struct BrwsComputerRec {
  int32_t id;       /* from 0 */
  char name[256];   /* not empty */
  char address[16]; /* dotted IPv4 address */
  int32_t group;    /* identifier of a group, or -1 */
} BrwsComputerRec;

typedef struct BrwsNobreakRec {
  int32_t id;       /* from 0 */
  char name[256];   /* not empty */
  uint32_t number;  /* the programs' own; above 2147483647 it is written as it is, but read as 4294967295 */
  int32_t computer; /* identifier of a computer, or -1 */
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

/* ---- The list ---- */

/* Loads the file `path`, or zelbrws.cfg in the installation root for null or "", and returns the handle, to be given
   back to CloseBrwsList. A missing file is an empty list. Null when memory runs out, and
   when the root is needed while /etc/zelvane.conf cannot be read just now (paths.h). */
ZELVANE_API void* OpenBrwsList(char const* path);

/* Flushes what is left and frees the handle. On 0 the changes are lost. */
ZELVANE_API int CloseBrwsList(void* list);

/* The stamp: seconds since 1970, local time, of the last change that this handle knows of; 0 when there is none. */
ZELVANE_API long GetBrwsFileDate(void* list);

/* Sets the stamp to now, without another change. */
ZELVANE_API int UpdateBrwsFileDate(void* list, bool flush);

/* ---- Reading ---- */

/* Number of keys, invalid entries included; 0 for a null handle. */
ZELVANE_API unsigned long GetBrwsGroupsCount(void* list);
ZELVANE_API unsigned long GetBrwsComputersCount(void* list);
ZELVANE_API unsigned long GetBrwsNobreaksCount(void* list);

/* The entry at `index`, counted from 0 in ascending order of the keys' text ("10" comes before "2"); a change may move
   the others. A number in the value that is no 32-bit number reads as -1, and so does such a key. 0, with the record
   untouched: no such position, or the entry is not valid. */
ZELVANE_API int GetBrwsGroupByIndex(void* list, unsigned long index, BrwsGroupRec* group);
ZELVANE_API int GetBrwsComputerByIndex(void* list, unsigned long index, BrwsComputerRec* computer);
ZELVANE_API int GetBrwsNobreakByIndex(void* list, unsigned long index, BrwsNobreakRec* nobreak);

/* ---- Adding ---- */

/* Adds an entry and stores the identifier that it got in `identifier`, which may be null; `id` of the record does not
   count. `maxPlusOne` false: the smallest that is free. True: one more than the largest taken; in an empty list that is
   1 for groups and computers and 0 for UPS units, which callers rely on; where 2147483647 is taken, the smallest free.

   A parent, group or computer that does not exist is stored as -1. The UPS unit then gets the address "127.0.0.1"
   instead of its computer's, and the list is not stamped. 0, with nothing stored: an empty name, or a refused text. */
ZELVANE_API int AddBrwsGroup(void* list, BrwsGroupRec const* group, bool maxPlusOne, unsigned long* identifier,
                             bool flush);
ZELVANE_API int AddBrwsComputer(void* list, BrwsComputerRec const* computer, bool maxPlusOne, unsigned long* identifier,
                                bool flush);
ZELVANE_API int AddBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool maxPlusOne, unsigned long* identifier,
                               bool flush);

/* ---- Changing: replaces the entry `id`, valid or not. 0, with nothing changed: no such key, an empty name, or a
   refused text. ---- */

/* The parent is stored unseen: it may be missing, or even make a circle. */
ZELVANE_API int EditBrwsGroup(void* list, BrwsGroupRec const* group, bool flush);
/* The group is stored unseen; the address must not be empty. It goes to the computer's UPS units as well. Their names
   and numbers stay; the computer is written without padding ("005" becomes 5). */
ZELVANE_API int EditBrwsComputer(void* list, BrwsComputerRec const* computer, bool flush);
/* The computer must exist. */
ZELVANE_API int EditBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool flush);

/* ---- Removing. An entry that does not exist is no failure: the rest is done all the same. ---- */

/* Removes the group, the groups below it at every depth, all their computers and those computers' UPS units. Flushes
   always. BEWARE: -1 is what top-level groups and computers without a group belong to, and is taken at its word: with
   it everything of that kind goes. */
ZELVANE_API int RemoveBrwsGroup(void* list, long id, bool flush);
/* Removes the computer and its UPS units. Flushes always. With -1: the UPS units without a computer. */
ZELVANE_API int RemoveBrwsComputer(void* list, long id, bool flush);
/* Removes the UPS unit. No stamp if it has no computer. */
ZELVANE_API int RemoveBrwsNobreak(void* list, long id, bool flush);

/* The same for each group of that parent, each computer of that group; -1 for those without. Flushes if there was
   one. */
ZELVANE_API int RemoveBrwsGroupByGroup(void* list, long parent, bool flush);
ZELVANE_API int RemoveBrwsComputerByGroup(void* list, long group, bool flush);
/* The same for each UPS unit of that computer; -1 for those without, and no stamp then. Flushes only if asked. */
ZELVANE_API int RemoveBrwsNobreakByComputer(void* list, long computer, bool flush);

/* Removes all entries of one kind and nothing else: what belonged to them keeps their identifiers. */
ZELVANE_API int ClearBrwsGroupsList(void* list, bool flush);
ZELVANE_API int ClearBrwsComputersList(void* list, bool flush);
ZELVANE_API int ClearBrwsNobreaksList(void* list, bool flush);

ZELVANE_C_END

#endif
