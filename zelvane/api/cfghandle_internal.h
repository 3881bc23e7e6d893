// Lists that are one section of a settings file, accessed through an opaque handle, and copies of text to callers'
// buffers.
#ifndef ZELVANE_API_CFGHANDLE_INTERNAL_H
#define ZELVANE_API_CFGHANDLE_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/core/barrier_internal.h"

namespace zelvane::internal {

// Opens the file and selects `section`; null if the file exists but cannot be read. The pointer is converted to
// CfgClass before it becomes untyped, because Cfg() converts it back to that type.
inline void* OpenHandle(std::string const& path, char const* section, bool readOnly) {
  auto cfg = std::make_unique<OptionalCfg>();
  if (!cfg->SetFileName(path.c_str(), readOnly) || !cfg->SetSection(section)) return nullptr;
  CfgClass* const handle = cfg.release();
  return handle;
}

inline CfgClass* Cfg(void* handle) { return static_cast<CfgClass*>(handle); }

inline int HandleKeyCount(void* handle) {
  if (handle == nullptr) return 0;
  return Guard(0, [&] { return static_cast<int>(Cfg(handle)->GetKeyCount()); });
}

inline int CloseHandle(void* handle) {
  if (handle == nullptr) return 0;
  delete Cfg(handle);
  return 1;
}

// Copies at most `size` bytes: `text` and, if it fits, one NUL. Text that fills the buffer is not terminated.
inline void CopyToBuffer(char* buffer, std::size_t size, std::string_view text) {
  std::size_t const length = std::min(text.size(), size);
  std::memcpy(buffer, text.data(), length);
  if (length < size) buffer[length] = '\0';
}

}  // namespace zelvane::internal

#endif
