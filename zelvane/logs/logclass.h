// LogClass, the append-only log of time-stamped records of one size: the event log and the history logs (*.rgt).
//
//   LogClass log;                                   log.LoadFile(64);                 // the whole file into memory
//   log.SetFile("/opt/ups/logevt.rgt");             long when;
//   log.SetMaxLines(4096);                          for (unsigned long i = 0; log.ReadReg(i, &when, event, 64); i++)
//   log.WriteReg(event, 64);                          Show(when, event);
//
// THE FILE is records and nothing else, each 4 + `size` bytes long: a date-time (datetime.h; signed, 32 bits,
// little-endian), then the caller's payload, `size` bytes as they are. Record i begins at byte i * (4 + size). The size
// stands nowhere: every call names it, and all calls on one file must name the same.
//
// A DAMAGED FILE, one whose length is no whole number of records, counts as holding none. Nothing mends it; the next
// WriteReg begins it anew, and what it held is kept beside it as NAME.bad (one that is there already stays as it is).
//
// A file is open only while a call lasts. Nothing locks: programs that append to one log at the same time get their
// records in one after the other, but a log that is being cut (LimitFile) must have one writer.
//
// `size` is at most 4294967291; with more a file and the buffer hold no records and nothing is written. No operation
// throws. An object is used by one thread at a time. The operations call each other virtually, and their order is part
// of the interface.
#ifndef ZELVANE_LOGS_LOGCLASS_H
#define ZELVANE_LOGS_LOGCLASS_H

#include <cstdint>
#include <string>

#include "zelvane/export.h"

namespace zelvane::internal {
struct LogRecords;
}

class ZELVANE_API LogClass {
 public:
  // No file, no buffer, at most 1024 records.
  LogClass();
  LogClass(LogClass const&) = delete;
  LogClass& operator=(LogClass const&) = delete;
  virtual ~LogClass();

  // Names the file and drops the buffer; null counts as "", no file. 1, or 0 with nothing changed when memory is short.
  // The first name also settles the scratch file that LimitFile uses, NAME.tmp. A later call keeps that one and removes
  // the file of its name, unless it is the very file now named: the scratch file is then called after the new name.
  virtual int SetFile(char const* name);
  // Replaces the buffer by a copy of `length` bytes. False, with the old buffer kept, for null, a length of 0 or one
  // above 4294967295. False without a buffer when memory is short (GetRegCount then still counts `length` bytes, but no
  // record can be read).
  virtual bool SetBuffer(void* data, unsigned long length);
  // The most records that the file keeps (32 bits). Takes effect with the next WriteReg; 0 empties the file after each.
  virtual void SetMaxLines(unsigned long n);

  // WriteReg(GetDateTime(), data, size): the stamp is local time.
  virtual bool WriteReg(void const* data, unsigned long size);
  // Appends a record stamped with the low 32 bits of `when`, creating the file if need be, then calls LimitFile. The
  // record goes out in one write; what a full disk took of it is taken back. A damaged file is emptied first, see
  // above. False, with the file as it was (a new one may be there, empty): no file named, null `data` for a `size`
  // above 0, the file cannot be opened, looked at or written (a damaged one can be empty by then, and kept), or it is
  // damaged and cannot be kept. False, too, when closing fails, though the record may be there. A failed cut is no
  // failure.
  virtual bool WriteReg(long when, void const* data, unsigned long size);

  // Records in the file; 0 when it is missing, unreadable, damaged, or not a regular file.
  virtual unsigned long GetFileRegCount(unsigned long size);
  // Records in the buffer; 0 when there is none or its length is no whole number of records.
  virtual unsigned long GetRegCount(unsigned long size);

  // Record `index`, counted from 0, from the file into `*when` and the `size` bytes at `data`. False when there is no
  // such record or it cannot be read, and for null; `data` may then be partly written.
  virtual bool ReadFileReg(unsigned long index, long* when, void* data, unsigned long size);
  // The same from the buffer; either pointer may be null. On false nothing is written.
  virtual bool ReadReg(unsigned long index, long* when, void* data, unsigned long size);

  // Reads the whole file into the buffer and gives the number of records. 0 with the old buffer kept: no file named, or
  // it cannot be opened. 0 without a buffer: it holds no records, a read failed, memory is short, or it has 4 GiB.
  // Call UnloadFile first: over a buffer that is there, the number is given all the same but nothing is loaded and the
  // buffer is gone. Callers depend on it.
  virtual unsigned long LoadFile(unsigned long size);
  // Frees the buffer.
  virtual void UnloadFile();

  // Empties the file, creating it if it is missing; the buffer stays. False when no file is named or it cannot be
  // opened for writing.
  virtual bool ClearFile();

  // Removes the oldest records of a file that holds more than the most it may. The newest are copied to the scratch
  // file, then over the beginning of the log, which is shortened last: the log keeps its inode and its mode, and a kill
  // at any moment leaves the newest records in it, some of them twice. (Between these copies it can leave one that
  // mixes two, where a record lies across two pages: about once in 4,000 kills of a program that does nothing but cut.)
  // Blocks of 64 KiB with a pause of one millisecond before each. A first copy that fails leaves the log as it was. The
  // scratch file is removed before and after.
  void LimitFile(unsigned long size);

  // Same as SetFile(name.c_str()).
  int SetFile(std::string const& name) { return SetFile(name.c_str()); }

 private:
  friend struct zelvane::internal::LogRecords;

  ZELVANE_HIDDEN bool MakeSound(int fd, unsigned long size);
  ZELVANE_HIDDEN bool FinishCut(unsigned long size);
  ZELVANE_HIDDEN bool CutToBound(unsigned long size);

  std::uint32_t maxLines_ = 1024;
  std::string file_;
  std::string scratch_;
  unsigned char* buffer_ = nullptr;  // allocated with malloc
  std::uint32_t bufferSize_ = 0;
};

#endif
