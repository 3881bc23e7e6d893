// What the library itself knows of the configuration engine beyond its public interface.
#ifndef ZELVANE_CONFIG_CFGCLASS_INTERNAL_H
#define ZELVANE_CONFIG_CFGCLASS_INTERNAL_H

#include <string>

#include "zelvane/config/cfgclass.h"
#include "zelvane/config/cfgline_internal.h"

namespace zelvane::internal {

// Whether a file that cannot be opened for that reason is missing, or not for this user to read, until somebody changes
// that. Other reasons (no free descriptor, no memory, an I/O error) say nothing about the file.
bool IsLasting(int reason);

// CfgClass or RegCfgClass for the exported functions, which work on files that need not exist yet. It replaces the load
// alone: a file that does not exist loads as one without lines, and nothing is created before the first save that has
// something to write. Any other failure to load stays a failure.
template <class Base>
class OptionalFile final : public Base {
 public:
  OptionalFile();
  bool LoadFile(bool noLines) override;

  // Opens the file; a missing one has no lines. False: this user cannot read it, or it is not a file; nothing is open
  // then. Throws std::system_error when that cannot be known: no free descriptor, an I/O error. A program that took
  // such a file for a missing one would go on with defaults, and write them back.
  bool OpenOrThrow(std::string const& path, bool readOnly);
  // Whether the last load found no file.
  bool IsMissing() const;
  // From now on a save creates the file, and fails where there is one by then.
  void SaveOnlyNew();

  // A key by its section and its name or number: to look at a value without copying it. The name is spelled in any
  // case. Both are there until the section is changed.
  using CfgClass::Find;

  // Before a walk over a section that will then be changed: what serves for reading alone is not made.
  void PrepareChanges(char const* section);

  // Drops the mark of unsaved changes: a writer that fails half-way must not have its changes saved on destruction.
  void ForgetChanges();
};

extern template class OptionalFile<CfgClass>;
extern template class OptionalFile<RegCfgClass>;

using OptionalCfg = OptionalFile<CfgClass>;
using OptionalRegCfg = OptionalFile<RegCfgClass>;

}  // namespace zelvane::internal

#endif
