// The schedule: the dates and times at which the product is to act. What happens then is the programs' own.
//
//   void* list = OpenProgList("/opt/ups/proglist.dat");
//   reg_proglist entry;
//   entry.dateTime = (int32_t)EncodeProgDateTime(2026, 3, 7, 22, 30, 0);
//   AddProgListReg(list, &entry);
//   if (!CloseProgList(list)) Complain();
//
// THE FILE is entries and nothing else, each a date-time (datetime.h) in 4 bytes, signed, little-endian. What follows
// the last whole entry is ignored. Whenever the file is written, entries whose moment has passed are dropped and the
// rest are in ascending order. Saving is whole or not at all, and on disk when it is true: data and name are synced.
//
// "Now" is GetDateTime(): local time, as the entries are. A list is used by one thread at a time, and programs that
// change one file must do so one after the other: a save writes what its list holds, and the last one wins. Adding,
// removing and addressing take about the same time in long lists as in short ones, whatever the order.
#ifndef ZELVANE_LOGS_PROGLIST_H
#define ZELVANE_LOGS_PROGLIST_H

#include <stdint.h>

#include "zelvane/export.h"

// One entry.
typedef struct reg_proglist {
  int32_t dateTime;  // seconds since 1970-01-01 00:00:00, local time
} reg_proglist;

ZELVANE_STATIC_ASSERT(sizeof(reg_proglist) == 4, "reg_proglist: size");

ZELVANE_C_BEGIN

// The handle of a cached ProgList with the file `path`, to be given back to CloseProgList. A missing file is an empty
// list; so is one that cannot be read, but that is not overwritten either, see ProgList. Null for a null path or when
// memory is short.
//
// The functions below are the ProgList operations of that name and return 1 or 0 where those return true or false, 0
// for a null handle. Nothing is written before CloseProgList.
ZELVANE_API void* OpenProgList(char const* path);
// Writes the file, also when nothing was changed, and frees the handle. The result is that of the write; on 0 the
// changes are lost.
ZELVANE_API int CloseProgList(void* list);
ZELVANE_API unsigned long GetProgListRegCount(void* list);
ZELVANE_API int GetProgListRegByIndex(void* list, long index, reg_proglist* entry);
ZELVANE_API int AddProgListReg(void* list, reg_proglist const* entry);
ZELVANE_API int RemProgListReg(void* list, reg_proglist const* entry);
ZELVANE_API int ClearProgList(void* list);

ZELVANE_C_END

#ifdef __cplusplus

#include <memory>
#include <string>

namespace zelvane::internal {
class ScheduleEntries;
}

// True when the entry's moment has passed: before now. An entry of this very second still stands.
ZELVANE_API bool folddatetime(reg_proglist const& entry);
// True when the first entry's moment is before the second's.
ZELVANE_API bool fcomp(reg_proglist const& first, reg_proglist const& second);

// The list itself. Not cached, as it is at first, every change writes the file before it returns; cached, WriteToFile
// does. Changes that could not be written stay in the list. Nothing is written at destruction. No operation throws:
// short memory is a false result. Every operation but SetFile and SetCached fails while no file is named; null entries
// are refused.
//
// While the file exists but the last attempt to read it failed, the list is empty and WriteToFile refuses to write, so
// that the entries on disk do not go with it. AddReg, after one more attempt, and
// ClearList say what the list is to hold, and end that.
class ZELVANE_API ProgList {
 public:
  ProgList();
  ProgList(ProgList const&) = delete;
  ProgList& operator=(ProgList const&) = delete;
  virtual ~ProgList();

  // Names the file, then ReadFromFile(), whose result does not matter. False, with nothing changed, for null. What was
  // not written to the former file is forgotten.
  virtual bool SetFile(char const* name);
  // Switches cached mode. Nothing is written by switching it off.
  virtual void SetCached(bool on);

  // RefreshList(), then the number of entries.
  virtual unsigned long GetRegCount();
  // The entry at `index`, counted from 0. Nothing is refreshed: since the last refresh its moment may have passed.
  // False, with `*entry` untouched, when there is none. A walk by index costs the same for every step.
  virtual bool GetRegByIndex(long index, reg_proglist* entry);
  // The first entry in list order that lies after now. Nothing is refreshed; after a refresh it is the next moment at
  // which the product will act. False, with `*entry` untouched, when there is none.
  virtual bool GetNextReg(reg_proglist* entry);

  // Appends the entry, also one that is there already or whose moment has passed.
  virtual bool AddReg(reg_proglist* entry);
  // Removes the first entry in list order that has the same day number as the given one, whatever its time of day. The
  // day number is the date-time divided by 86400, truncated toward zero. True, too, when there is none; the file is
  // written even then.
  virtual bool RemReg(reg_proglist const* entry);
  virtual bool ClearList();

  // Replaces the list by the file's entries, past ones included, in file order. False when it is missing or cannot be
  // read: the list is empty then.
  virtual bool ReadFromFile();
  // RefreshList(), then saves the list. True when the file is on disk. False, with the file as it was, when it cannot
  // be written, and after a failed read, see above. When only its folder cannot be synced (EIO), the file is the new
  // one, which a power cut can undo.
  virtual bool WriteToFile();
  // Drops the entries whose moment has passed and sorts the rest; entries of the same moment keep their order. A list
  // that is still sorted costs only what is dropped.
  virtual void RefreshList();
  // WriteToFile().
  virtual bool FlushCache();

  // Same as SetFile(name.c_str()).
  bool SetFile(std::string const& name) { return SetFile(name.c_str()); }

 private:
  ZELVANE_HIDDEN bool SaveUnlessCached();

  bool cached_ = false;
  std::unique_ptr<zelvane::internal::ScheduleEntries> entries_;
  std::string file_;
  bool unread_ = false;
};

#endif

#endif
