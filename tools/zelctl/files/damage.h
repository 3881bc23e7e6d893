// Damage that a power failure left in logs of versions that did not sync them.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_DAMAGE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_DAMAGE_H

#include <cstdint>
#include <string>
#include <vector>

class RecordLog;

struct Fault {
  char const* name;
  char const* shown;
  std::uint64_t count = 0;
  std::uint64_t first = 0;

  void Add(std::uint64_t index) {
    if (count++ == 0) first = index;
  }
};

// The complete records of a log. Throws Failed.
std::vector<unsigned char> LoadRecords(RecordLog const& log);

// Records that no program wrote in this form.
struct Damage {
  Fault zero = {"zeroRecords", "zeros at end"};
  Fault doubled = {"doubledRecords", "doubled"};  // one or more records, immediately repeated
  Fault mixed = {"mixedRecords", "mixed"};        // out of order, with the payload of the record next to it
  std::vector<bool> isLeftOut;                    // per record

  Damage(std::vector<unsigned char> const& bytes, std::uint64_t recordSize);
};

// The number of records in a scratch file that the log lacks. 0 if the scratch file is not the complete copy from a cut
// of this log. A complete copy is no longer than the log and ends with the log's last record, or with the one after it.
// Records of zeros at the end of the log do not count as its last.
std::uint64_t RecordsLacking(std::vector<unsigned char> const& log, std::vector<unsigned char> const& scratch,
                             std::uint64_t recordSize);

// ---- Text logs ----

struct TextDamage {
  std::uint64_t length = 0;
  std::uint64_t lines = 0;
  std::uint64_t nulRuns = 0;
  std::uint64_t nulBytes = 0;
  std::uint64_t tornBytes = 0;  // of a last line without a line feed
};

// Throws FileFailed.
std::string ReadText(std::string const& path);
TextDamage InspectText(std::string const& text);
std::string WithoutNul(std::string text);

#endif
