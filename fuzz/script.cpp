// The header of an init script.
#include <algorithm>

#include "fuzz.h"
#include "zelvane/system/svc.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  std::string const bytes = fuzz::Text(data, size);
  disk.Write(bytes);
  SvcManager services;
  std::string const description = services.GetDaemonDescr(disk.Path());
  fuzz::Check(description.size() <= bytes.size() && description.find('\n') == std::string::npos,
              "a part of the script");
  if (!description.empty()) fuzz::Check(bytes.find(':') != std::string::npos, "after a colon");
  return 0;
}
