// A UPS server in one value of a settings file: "name;address;port".
#ifndef ZELVANE_API_SERVERENTRY_INTERNAL_H
#define ZELVANE_API_SERVERENTRY_INTERNAL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {

constexpr std::int32_t kDefaultPort = 4375;

// The entry that counts if no server was ever named.
constexpr char kDefaultServerEntry[] = "localhost;127.0.0.1;4375";

struct ServerEntry {
  std::string name;
  std::string address;
  std::int32_t port;  // kDefaultPort if the field is not a number
};

// Returns false with `entry` unchanged if `value` has fewer than three fields.
inline bool ParseServerEntry(std::string_view value, ServerEntry& entry) {
  std::vector<std::string> fields;
  if (!SplitFields(value, 3, fields)) return false;
  entry.port = static_cast<std::int32_t>(StrToIntDef(fields[2], kDefaultPort));
  entry.name.swap(fields[0]);
  entry.address.swap(fields[1]);
  return true;
}

// Record is a type with serverAddress, serverName and serverPort.
template <class Record>
void StoreServerEntry(ServerEntry const& entry, Record& record) {
  CopyToField(record.serverName, entry.name);
  CopyToField(record.serverAddress, entry.address);
  record.serverPort = entry.port;
}

template <class Record>
std::string JoinServerEntry(Record const& record) {
  std::string value(FieldText(record.serverName));
  value += ';';
  value += FieldText(record.serverAddress);
  value += ';';
  value += UIntToStr(static_cast<std::uint32_t>(record.serverPort));
  return value;
}

}  // namespace zelvane::internal

#endif
