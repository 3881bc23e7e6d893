#include "records/recordlisting.h"

#include <optional>
#include <string>
#include <utility>

#include "files/recordlog.h"
#include "terminal/moment.h"

RecordListing::RecordListing(Terminal const& terminal, std::uint64_t records, std::size_t textWidth)
    : inTable_(!terminal.json && !terminal.csv),
      listing_(terminal, {{"record", std::to_string(records).size()},
                          {"dateTime", 0, false},
                          {"time", 19},
                          {"code", 5},
                          {"text", textWidth},
                          {"payload", 0}}),
      cells_(6) {}

void RecordListing::Row(Record const& record) {
  std::optional<std::uint16_t> const code = record.Code();
  std::string time = TimeText(record.stamp);
  cells_[0] = record.index;
  cells_[1] = record.stamp;
  cells_[2] = time.empty() ? Json() : Json(std::move(time));
  cells_[3] = code ? Json(*code) : Json();
  cells_[4] = record.Text();
  cells_[5] = record.Hex(!inTable_);
  listing_.Row(cells_);
}
