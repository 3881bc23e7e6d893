// The records of a log as rows of a table, of JSON or of CSV.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_RECORDLISTING_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_RECORDLISTING_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "terminal/listing.h"

struct Record;

class RecordListing {
 public:
  // For a log with `records` records and texts of `textWidth` characters.
  RecordListing(Terminal const& terminal, std::uint64_t records, std::size_t textWidth);

  void Row(Record const& record);
  void Flush() { listing_.Flush(); }
  void End() { listing_.End(); }

 private:
  bool inTable_;
  Listing listing_;
  std::vector<Json> cells_;
};

#endif
