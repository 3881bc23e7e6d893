/* The version of the library: of these headers as macros, of the library that the program runs with as a function.

     #if ZELVANE_VERSION_MAJOR == 1 && ZELVANE_VERSION_MINOR >= 2

   Within one major number a newer library serves programs that were built with older headers. */
#ifndef ZELVANE_VERSION_H
#define ZELVANE_VERSION_H

#include "zelvane/export.h"

/* The build stops when these differ from the version of the project in CMakeLists.txt. */
#define ZELVANE_VERSION_MAJOR 1
#define ZELVANE_VERSION_MINOR 0
#define ZELVANE_VERSION_PATCH 0
#define ZELVANE_VERSION "1.0.0"

ZELVANE_C_BEGIN

/* The version of the library itself, "major.minor.patch". The text is constant and belongs to the library. */
ZELVANE_API char const* ZelvaneVersion(void);

ZELVANE_C_END

#endif
