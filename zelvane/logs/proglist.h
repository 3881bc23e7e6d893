/// @file
/// The schedule: the dates and times at which the product is to act. The programs decide what happens then.
///
///     void* list = OpenProgList("/opt/ups/proglist.dat");
///     reg_proglist entry;
///     entry.dateTime = (int32_t)EncodeProgDateTime(2026, 3, 7, 22, 30, 0);
///     AddProgListReg(list, &entry);
///     if (!CloseProgList(list)) Complain();
///
/// zelvane-schedule(5) describes the file. Every write drops entries in the past and sorts the others in ascending
/// order. It is atomic; when it returns true, data and name are on disk.
///
/// "Now" is GetDateTime(): local time, like the entries. One thread at a time may use a list. Programs that change the
/// same file must do so one after the other: a save writes what its list holds, and the last one wins. Adding, removing
/// and access by index take about the same time in long lists as in short ones, in any order.
#ifndef ZELVANE_LOGS_PROGLIST_H
#define ZELVANE_LOGS_PROGLIST_H

#include <stdint.h>

#include "zelvane/export.h"

/// One entry.
typedef struct reg_proglist {
  int32_t dateTime;  ///< seconds since 1970-01-01 00:00:00, local time
} reg_proglist;

ZELVANE_STATIC_ASSERT(sizeof(reg_proglist) == 4, "reg_proglist: size");

ZELVANE_C_BEGIN

/// Returns the handle of a cached ProgList with the file `path`; free it with CloseProgList. A missing file is an empty
/// list. So is a file that cannot be read, but that file is not overwritten (see ProgList). Returns null for a null
/// path, or when memory runs out.
///
/// The functions below are the ProgList operations of the same name. They return 1 and 0 for true and false, and 0 for
/// a null handle. Nothing is written before CloseProgList.
ZELVANE_API void* OpenProgList(char const* path);
/// Writes the file, even if nothing was changed, and frees the handle. Returns the result of the write; on 0 the
/// changes are lost.
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

/// Returns true if the entry is in the past: before now. An entry of the current second is not.
ZELVANE_API bool folddatetime(reg_proglist const& entry);
/// Returns true if the first entry is before the second one.
ZELVANE_API bool fcomp(reg_proglist const& first, reg_proglist const& second);

/// The list itself. At first it is not cached: every change writes the file before it returns. In cached mode
/// WriteToFile does. Changes that could not be written stay in the list. The destructor writes nothing. No operation
/// throws: when memory runs out, it returns false. Without a file name every operation except SetFile and SetCached
/// fails. Null entries fail.
///
/// If the file exists but the last attempt to read it failed, the list is empty and WriteToFile returns false, so that
/// the entries on disk are not lost. AddReg (after another attempt to read) and ClearList decide the contents of the
/// list, and end this state.
class ZELVANE_API ProgList {
 public:
  ProgList();
  ProgList(ProgList const&) = delete;
  ProgList& operator=(ProgList const&) = delete;
  virtual ~ProgList();

  /// Sets the file name, then calls ReadFromFile(), whose result is ignored. Returns false and changes nothing for
  /// null. Changes not written to the former file are lost.
  virtual bool SetFile(char const* name);
  /// Switches cached mode. Switching it off writes nothing.
  virtual void SetCached(bool on);

  /// Calls RefreshList(), then returns the number of entries.
  virtual unsigned long GetRegCount();
  /// Stores the entry at `index`, counted from 0. Does not refresh: the entry can be in the past since the last
  /// refresh. Returns false with `*entry` unchanged if there is none. In a walk by index every step costs the same.
  virtual bool GetRegByIndex(long index, reg_proglist* entry);
  /// Stores the first entry in list order that is after now. Does not refresh; after a refresh it is the next time at
  /// which the product will act. Returns false with `*entry` unchanged if there is none.
  virtual bool GetNextReg(reg_proglist* entry);

  /// Appends the entry, even if it is in the list already or in the past.
  virtual bool AddReg(reg_proglist* entry);
  /// Removes the first entry in list order of the same day as the given one, whatever its time. A day is the date-time
  /// divided by the seconds of a day, truncated toward zero. Returns true even if there is none; the file is written
  /// even then.
  virtual bool RemReg(reg_proglist const* entry);
  /// Removes all entries.
  virtual bool ClearList();

  /// Replaces the list with the entries of the file, in file order, including those in the past. Returns false with an
  /// empty list if the file is missing or cannot be read.
  virtual bool ReadFromFile();
  /// Calls RefreshList(), then saves the list. Returns true when the file is on disk. Returns false with the file
  /// unchanged if it cannot be written, or after a failed read (see above). If only the directory cannot be synced
  /// (EIO), it returns false with the new file, which a power failure can undo.
  virtual bool WriteToFile();
  /// Drops the entries in the past and sorts the others; equal entries keep their order. If the list is still sorted,
  /// the cost is that of the dropped entries alone.
  virtual void RefreshList();
  /// Same as WriteToFile().
  virtual bool FlushCache();

  /// Same as SetFile(name.c_str()).
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
