// The library's internal interface to the configuration engine.
#ifndef ZELVANE_CONFIG_CFGCLASS_INTERNAL_H
#define ZELVANE_CONFIG_CFGCLASS_INTERNAL_H

#include <string>

#include "zelvane/config/cfgclass.h"
#include "zelvane/config/cfgline_internal.h"

namespace zelvane::internal {

// Whether the reason is lasting: the file is missing, or this user cannot read it until somebody changes that. Other
// reasons (no free descriptor, out of memory, I/O error) say nothing about the file.
bool IsLasting(int reason);

// CfgClass or RegCfgClass for the exported functions, whose files need not exist yet. It replaces only the load: a
// missing file loads as an empty one, and is created by the first save with a change. Any other failed load is still a
// failure.
template <class Base>
class OptionalFile final : public Base {
 public:
  OptionalFile();
  bool LoadFile(bool noLines) override;

  // Opens the file; a missing one is empty. False if this user cannot read it or it is not a file; nothing is open
  // then. Throws std::system_error for other reasons: no free descriptor, I/O error. A program that treated such a file
  // as missing would continue with defaults and save them.
  bool OpenOrThrow(std::string const& path, bool readOnly);
  // Whether the file was missing at the last load.
  bool IsMissing() const;
  // Later saves create the file, and fail if it exists.
  void SaveOnlyNew();

  // Finds a key by section and name (in any case) or number, without copying the value. The result is valid until the
  // section changes.
  using CfgClass::Find;

  // Call this before iterating over a section that will be changed. It avoids building the index for reads.
  void PrepareChanges(char const* section);

  // Clears the flag of unsaved changes, so that the destructor does not save the changes of a writer that failed.
  void ForgetChanges();
};

extern template class OptionalFile<CfgClass>;
extern template class OptionalFile<RegCfgClass>;

using OptionalCfg = OptionalFile<CfgClass>;
using OptionalRegCfg = OptionalFile<RegCfgClass>;

}  // namespace zelvane::internal

#endif
