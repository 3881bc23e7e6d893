// Reading event logs, and counting and timing what happened in them.
//
//   void* log = LogReaderOpen("/opt/ups/logevt.rgt");
//   unsigned long failures = LogReaderCountEvents(log, MAINS_FAILED, from, to);
//   long seconds = LogReaderTimeEvents(log, MAINS_FAILED, MAINS_BACK, SHUT_DOWN, from, to);
//   LogReaderClose(log);
//
// An event record (logclass.h has the file) is a date-time and 64 bytes: the event code, 16 bits, little-endian, and 62
// bytes that mean something to the programs alone. A handle holds the whole log as it was when it was opened, and is
// used by one thread at a time. It points to a LogClass.
//
// A SPAN OF DAYS is given by two date-times of which only the dates count: it runs from the first second of the date of
// `from` to the last one (23:59:59) of the date of `to`. Dates are those that datetime.h decodes, with its two odd days
// a leap year: 29 February is 1 February there, and 31 December is 1 January of the same year. A record with a negative
// stamp lies in no span. A `from` that is no date-time (a negative one) sets no lower bound; with such a `to`, or one
// on 2038-01-19, whose last second is no date-time any more, the span is empty.
//
// Statistics are 0 for a null handle and for an empty log.
#ifndef ZELVANE_LOGS_LOGREADER_H
#define ZELVANE_LOGS_LOGREADER_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

// Loads a log and returns its handle, to be given back to LogReaderClose. A file whose extension is "cry", in any case,
// is taken for a log of the product's earlier generation and goes through Load_Zelvane3x_Log. Null when the path is
// null or empty, the file cannot be opened for reading, or memory is short. A file that can be opened always gives a
// handle, one without records if nothing could be made of it: a length that is no multiple of 68 bytes, a folder, a
// read error. Beside a process that writes the log, the records are those of one moment: the call waits up to a second
// while the log is being cut (flock), and loads again, at most 100 times, when it has changed meanwhile.
ZELVANE_API void* LogReaderOpen(char const* path);

// 1, or 0 for a null handle. The handle is gone afterwards.
ZELVANE_API int LogReaderClose(void* log);

// Number of records; 0 for a null handle.
ZELVANE_API unsigned long LogReaderRegCount(void* log);

// The record `index`, counted from 0 in file order: its stamp into `*when`, its 64 bytes to `data`. 1; 0, with nothing
// written, for a null argument and when there is no such record.
ZELVANE_API int LogReaderReadReg(void* log, unsigned long index, long* when, void* data);

// Number of records with the event code `code` whose date lies in the span of days, whatever their order in the file.
ZELVANE_API unsigned long LogReaderCountEvents(void* log, unsigned short code, long from, long to);

// LogReaderTimeEvents2 with two end codes; give a negative one for none.
ZELVANE_API long LogReaderTimeEvents(void* log, short startCode, short endCodeA, short endCodeB, long from, long to);

// How many seconds (signed, 32 bits) of the span of days a condition was in force that a record with `startCode` began
// and the next record with one of the `count` end codes ended. Codes are compared as 16 bits (a negative start code is
// its unsigned value), but a negative end code matches nothing. 0, too, for null `endCodes` or a `count` of 0.
//
// Records are taken in file order, and the scan ends with the first that is stamped at or after the last second of the
// span. Starts while a condition is in force and ends while none is are passed over. Programs rely on these details:
// - The first record inside the span that finds a condition in force moves its beginning to its own time. That happens
//   once, so a beginning before the span is cut, but to that record rather than to the span's first second.
// - A condition still in force at a record after the span ends with the last second of the span.
// - A condition still in force when the scan ends is counted up to the last record before that point, in case any was
//   met inside the span; not up to the end of the span and not up to now.
// - Nothing else is cut: without a record inside the span an interval counts from where it began, and one that begins
//   with the very first record after the span counts its distance from the span's last second as negative. In a log
//   that is out of order or has negative stamps sums can leave the span in other ways, and wrap.
ZELVANE_API long LogReaderTimeEvents2(void* log, short startCode, short const* endCodes, unsigned long count, long from,
                                      long to);

// The six fields of a date-time, into every output that is not null. 1; 0, with every output untouched, when it is not
// valid. Same as DecodeDateTime of datetime.h.
ZELVANE_API int DecodeProgDateTime(long dateTime, int* year, int* month, int* day, int* hour, int* minute, int* second);

// The date-time of the fields, or -1. Same as EncodeDateTime of datetime.h.
ZELVANE_API long EncodeProgDateTime(int year, int month, int day, int hour, int minute, int second);

// ---- Logs of the product's earlier generation ----

// Reads such a log into an array of event records, 68 bytes each as in a current log, that the caller gives back to
// Close_Zelvane3x_Log: its address goes to `*records`, its length in bytes is the result.
//
// The format of those enciphered files is not known to this library: nothing is read, the result is always 0 and
// `*records`, unless `records` is null, becomes null.
ZELVANE_API unsigned long Load_Zelvane3x_Log(char const* path, void** records);

// Frees the array and sets `*records` to null. A null `records` or `*records` is left alone.
ZELVANE_API void Close_Zelvane3x_Log(void** records);

ZELVANE_C_END

#endif
