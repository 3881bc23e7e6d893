// Lists of the library, for which it returns untyped handles.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_HANDLE_H
#define ZELVANE_TOOLS_ZELCTL_FILES_HANDLE_H

#include <memory>
#include <string>

#include "files/format.h"
#include "terminal/terminal.h"

using Handle = std::unique_ptr<void, int (*)(void*)>;

// Takes ownership of the handle that the library returned for `file`. Throws Failed if it is null.
inline Handle OpenHandle(std::string const& file, void* opened, int (*close)(void*)) {
  if (opened == nullptr) throw Failed(CannotRead(file));
  return {opened, close};
}

#endif
