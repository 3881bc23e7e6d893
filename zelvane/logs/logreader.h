/// @file
/// Reads event logs, and counts and times the events in them.
///
///     void* log = LogReaderOpen("/opt/ups/logevt.rgt");
///     unsigned long failures = LogReaderCountEvents(log, MAINS_FAILED, from, to);
///     long seconds = LogReaderTimeEvents(log, MAINS_FAILED, MAINS_BACK, SHUT_DOWN, from, to);
///     LogReaderClose(log);
///
/// An event is a record (logclass.h) with a payload of 64 bytes, which begins with the event code: 16 bits,
/// little-endian. Only the programs interpret the other bytes. A handle holds a snapshot of the whole log. One thread
/// at a time may use a handle. It points to a LogClass.
///
/// A SPAN OF DAYS is given by two date-times, of which only the dates count. It starts at the first second of the date
/// of `from` and ends at the last second (23:59:59) of the date of `to`. Dates are as datetime.h decodes them, with two
/// odd days in a leap year: 29 February counts as 1 February, and 31 December as 1 January of the same year. A record
/// with a negative time stamp is in no span. A `from` that is not a date-time (negative, or above 2147483647) sets no
/// lower bound. With such a `to` the span is empty. It is also empty with a `to` on 2038-01-19, because the last second
/// of that day is not a date-time.
///
/// Statistics are 0 for a null handle and for an empty log.
#ifndef ZELVANE_LOGS_LOGREADER_H
#define ZELVANE_LOGS_LOGREADER_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/// Loads a log and returns its handle; free it with LogReaderClose. A file with the extension "cry" (in upper or lower
/// case) is treated as a log of the product's earlier generation: Load_Zelvane3x_Log reads it. Returns null if the path
/// is null or empty, the file cannot be opened for reading, or memory for the handle runs out. Otherwise always returns
/// a handle. It has no records for a damaged log (logclass.h) or a directory, after a read error, and if memory for the
/// records runs out.
///
/// While another process writes the log, the records are still a snapshot of one time. The call waits up to one second
/// while the log is being cut (flock). It loads the log again, at most 100 times, if the log has changed meanwhile.
ZELVANE_API void* LogReaderOpen(char const* path);

/// Frees the handle. Returns 1, or 0 for a null handle.
ZELVANE_API int LogReaderClose(void* log);

/// Returns the number of records; 0 for a null handle.
ZELVANE_API unsigned long LogReaderRegCount(void* log);

/// Stores record `index`, counted from 0 in file order: the time stamp in `*when`, the whole payload at `data`. Returns
/// 1. Returns 0 and writes nothing for a null argument, or if there is no such record.
ZELVANE_API int LogReaderReadReg(void* log, unsigned long index, long* when, void* data);

/// Returns the number of records with event code `code` whose date is in the span of days, whatever their order in the
/// file.
ZELVANE_API unsigned long LogReaderCountEvents(void* log, unsigned short code, long from, long to);

/// Same as LogReaderTimeEvents2 with two end codes. Pass a negative end code for none.
ZELVANE_API long LogReaderTimeEvents(void* log, short startCode, short endCodeA, short endCodeB, long from, long to);

/// Returns for how many seconds (signed, 32 bits) of the span of days a condition was in force. A record with
/// `startCode` begins the condition; the next record with one of the `count` end codes ends it. Codes are compared as
/// 16 bits (a negative start code counts as its unsigned value), but a negative end code matches nothing. Returns 0
/// also for null `endCodes` or a `count` of 0.
///
/// Records are read in file order. The scan stops at the first record at or after the last second of the span. Starts
/// while the condition is in force, and ends while it is not, are skipped. Kept, because programs rely on these
/// details:
/// - The first record inside the span at which the condition is in force moves its beginning to the time of
///   that record. This happens once. So a beginning before the span is cut to that record, not to the first second of
///   the span.
/// - If the condition is still in force at a record after the span, it ends with the last second of the span.
/// - If the condition is still in force at the end of the scan, it counts up to the last record before that point,
///   provided that it was in force at some record inside the span. It does not count up to the end of the span or up to
///   now.
/// - Nothing else is cut. Without such a record inside the span, an interval counts from its own beginning. If the
///   interval begins with the very first record after the span, the result is reduced by the seconds between the end of
///   the span and that record. In a log that is out of order or has negative time stamps, sums can leave the span in
///   other ways, and wrap.
ZELVANE_API long LogReaderTimeEvents2(void* log, short startCode, short const* endCodes, unsigned long count, long from,
                                      long to);

/// Stores the six fields of a date-time in every output that is not null. Returns 1, or 0 with every output unchanged
/// if it is not valid. Same as DecodeDateTime of datetime.h.
ZELVANE_API int DecodeProgDateTime(long dateTime, int* year, int* month, int* day, int* hour, int* minute, int* second);

/// Returns the date-time of the fields, or -1. Same as EncodeDateTime of datetime.h.
ZELVANE_API long EncodeProgDateTime(int year, int month, int day, int hour, int minute, int second);

/// @name Logs of the product's earlier generation
/// @{

/// Reads such a log into an array of event records as in a current log. Stores the address of the array in `*records`
/// and returns its length in bytes. Free the array with Close_Zelvane3x_Log.
///
/// Kept as a stub: the format of these encrypted files is not known to this library. Nothing is read; the result is
/// always 0, and `*records` becomes null (unless `records` is null).
ZELVANE_API unsigned long Load_Zelvane3x_Log(char const* path, void** records);

/// Frees the array and sets `*records` to null. A null `records` or `*records` is ignored.
ZELVANE_API void Close_Zelvane3x_Log(void** records);
/// @}

ZELVANE_C_END

#endif
