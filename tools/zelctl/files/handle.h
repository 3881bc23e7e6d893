// Lists of the library, of which it gives untyped handles.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_HANDLE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_HANDLE_H

#include <memory>
#include <string>

#include "files/format.h"
#include "terminal/terminal.h"

using Handle = std::unique_ptr<void, int (*)(void*)>;

// Takes over what the library opened from `file`. Throws Failed when that is nothing.
inline Handle OpenHandle(std::string const& file, void* opened, int (*close)(void*)) {
  if (opened == nullptr) throw Failed(CannotRead(file));
  return {opened, close};
}

#endif
