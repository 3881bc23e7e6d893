/// @file
/// The version of the library: as macros for these headers, as a function for the library that the program runs with.
///
///     #if ZELVANE_VERSION_MAJOR == 1 && ZELVANE_VERSION_MINOR >= 2
///
/// Within one major version a newer library works with programs that were built with older headers.
#ifndef ZELVANE_VERSION_H
#define ZELVANE_VERSION_H

#include "zelvane/export.h"

/// The build fails if these differ from the project version in CMakeLists.txt.
#define ZELVANE_VERSION_MAJOR 1
#define ZELVANE_VERSION_MINOR 0
#define ZELVANE_VERSION_PATCH 0
#define ZELVANE_VERSION "1.0.0"

ZELVANE_C_BEGIN

/// Returns the version of the library itself, "major.minor.patch". The text is constant and belongs to the library.
ZELVANE_API char const* ZelvaneVersion(void);

ZELVANE_C_END

#endif
