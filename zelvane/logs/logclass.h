/// @file
/// LogClass is an append-only log of fixed-size records with a time stamp: the event log and the history logs (*.rgt).
///
///     LogClass log;                                   log.LoadFile(64);                 // the whole file into memory
///     log.SetFile("/opt/ups/logevt.rgt");             long when;
///     log.SetMaxLines(4096);                          for (unsigned long i = 0; log.ReadReg(i, &when, event, 64); i++)
///     log.WriteReg(event, 64);                          Show(when, event);
///
/// RECORDS have a time stamp (a date-time of datetime.h, 32 bits) and `size` bytes of payload, stored unchanged.
/// zelvane-log(5) describes the file. It does not store `size`: all calls on one file must pass the same value. The
/// maximum is 4294967291; with more, counts are 0 and nothing is written. One write takes at most 2,147,479,552 bytes:
/// for a longer record WriteReg returns false.
///
/// DAMAGED FILES: a file whose length is not a multiple of the record length counts as empty. Readers leave it as it
/// is. The next WriteReg copies it to NAME.bad, empties it and appends the record. If it cannot be copied, WriteReg
/// returns false and the file is unchanged.
///
/// CUTS: a cut removes the oldest records of a log that has more records than its maximum (LimitFile).
///
/// CONCURRENCY: a file is open only during a call. Several processes can append to one log: each record is one write,
/// so records do not mix, and only one process repairs a damaged file (flock). Only one process may append once the log
/// has reached its maximum, because WriteReg then cuts it. A lock held by another process delays writers only briefly:
/// a repair waits for one second, then WriteReg returns false; a cut waits for a tenth of a second, then cuts without
/// the lock.
///
/// DURABILITY: when WriteReg returns true, the record and the name of a new file are on disk (if the disk honours a
/// flush and the file system can sync). A kill or a power failure during WriteReg can damage that one record, but no
/// other. A partial record damages the file (above): readers see no records. While a cut is unfinished, readers can see
/// records twice or mixed; the next WriteReg finishes it.
///
/// No operation throws. One thread at a time may use an object. The operations are virtual hooks: they call each other
/// through the virtual table, and their order is part of the interface.
#ifndef ZELVANE_LOGS_LOGCLASS_H
#define ZELVANE_LOGS_LOGCLASS_H

#include <cstdint>
#include <string>

#include "zelvane/export.h"

namespace zelvane::internal {
struct LogRecords;
}

/// @copydoc zelvane/logs/logclass.h
class ZELVANE_API LogClass {
 public:
  /// No file, no buffer, a maximum of 1024 records.
  LogClass();
  LogClass(LogClass const&) = delete;
  LogClass& operator=(LogClass const&) = delete;
  /// Frees the buffer.
  virtual ~LogClass();

  /// Sets the file name and frees the buffer. Null or "" means no file. Returns 1; 0 with nothing changed when memory
  /// runs out. The file is neither opened nor created.
  /// The first name also sets the scratch file of LimitFile, NAME.tmp. A later call keeps that scratch file name and
  /// deletes the file, even one that an interrupted cut needs: set the name once. Exception: if the new name leads to
  /// the scratch file itself, in any spelling, the scratch file becomes the new NAME.tmp.
  virtual int SetFile(char const* name);
  /// Replaces the buffer with a copy of `length` bytes. Returns true.
  /// False, old buffer kept: null, `length` 0 or above 4294967295.
  /// False, no buffer: out of memory. GetRegCount then still counts `length` bytes, but ReadReg returns false.
  virtual bool SetBuffer(void* data, unsigned long length);
  /// Sets the maximum number of records in the file (the low 32 bits of `n`). Takes effect in the next WriteReg or
  /// LimitFile. 0 empties the file after every record.
  virtual void SetMaxLines(unsigned long n);

  /// Same as WriteReg(GetDateTime(), data, size): the time stamp is now, in local time.
  virtual bool WriteReg(void const* data, unsigned long size);
  /// Appends a record with the low 32 bits of `when` as its time stamp, and cuts the log as LimitFile does. Creates a
  /// missing file. Copies a damaged file to NAME.bad and empties it first.
  ///
  ///     true                     the record is on disk; a failed cut is not reported; the next WriteReg cuts again
  ///     false, file unchanged    no file name; `size` too large; null `data` with `size` above 0; the file cannot be
  ///                              opened, examined or written; a damaged file cannot be copied or locked; an
  ///                              interrupted cut cannot be finished; the directory of an empty file cannot be synced;
  ///                              out of memory. A new file can exist, empty
  ///     false, damaged file now  the write failed after the damaged file was copied and emptied
  ///     empty
  ///     false, record perhaps    sync or close failed
  ///     written
  ///
  /// A full disk can accept part of a record. WriteReg truncates that part away. It cannot if another process has
  /// appended meanwhile, or if the truncation fails: the file is then damaged.
  /// Kept: if a subclass's GetFileRegCount returns 0 twice in a row for a file in which this class counts records, the
  /// file is emptied first, without a copy.
  virtual bool WriteReg(long when, void const* data, unsigned long size);

  /// Number of records in the file. 0 if the file is missing, unreadable, damaged, or not a regular file. If the length
  /// is not a multiple of the record length, it is checked again for 4 ms: an append may be in progress.
  virtual unsigned long GetFileRegCount(unsigned long size);
  /// Number of records in the buffer. 0 without a buffer, or if its length is not a multiple of the record length.
  virtual unsigned long GetRegCount(unsigned long size);

  /// Reads record `index` of the file, counted from 0: the time stamp into `*when`, `size` bytes into `data`.
  /// False: no file name, null `when`, null `data` with `size` above 0, no such record, read error. `*when` is then
  /// unchanged; `data` can be partly written.
  virtual bool ReadFileReg(unsigned long index, long* when, void* data, unsigned long size);
  /// Same from the buffer. Either pointer can be null. On false nothing is written.
  virtual bool ReadReg(unsigned long index, long* when, void* data, unsigned long size);

  /// Reads the whole file into the buffer and returns the number of records.
  /// 0, old buffer kept: no file name, or the file cannot be opened.
  /// 0, no buffer: no records, read error, out of memory, or 4 GiB or more of records.
  /// Call UnloadFile before a second LoadFile. Kept, because callers depend on it: with a buffer present, LoadFile
  /// returns the number of records, frees the buffer and loads nothing.
  /// While another process cuts the log, LoadFile can read records twice. LogReaderOpen (logreader.h) does not.
  virtual unsigned long LoadFile(unsigned long size);
  /// Frees the buffer.
  virtual void UnloadFile();

  /// Empties the file, or creates it empty. The buffer stays. Returns true when that is on disk. False: no file name,
  /// the file cannot be opened for writing, or (it is then empty) cannot be synced or closed.
  virtual bool ClearFile();

  /// Removes the oldest records until the file holds the maximum. Finishes an interrupted cut first. Does nothing if
  /// the file holds no more than the maximum. The newest records are copied to NAME.tmp, and from there to the start of
  /// the log, which keeps its inode, owner and mode. Copies use blocks of 64 KiB with a pause of 1 ms before each. If
  /// the first copy fails, the log is unchanged. If the second one fails, NAME.tmp stays for the next cut.
  /// zelvane-log(5) has the steps.
  void LimitFile(unsigned long size);

  /// Same as SetFile(name.c_str()).
  int SetFile(std::string const& name) { return SetFile(name.c_str()); }

 private:
  friend struct zelvane::internal::LogRecords;

  ZELVANE_HIDDEN bool MakeSound(int fd, unsigned long size);
  ZELVANE_HIDDEN bool FinishCut(unsigned long size);
  ZELVANE_HIDDEN bool CutToBound(unsigned long size, bool isWriting);

  std::uint32_t maxLines_ = 1024;
  std::string file_;
  std::string scratch_;
  unsigned char* buffer_ = nullptr;  // allocated with malloc
  std::uint32_t bufferSize_ = 0;
};

#endif
