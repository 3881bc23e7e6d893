/// @file
/// Where the product is installed, its version, and which of its programs are on this computer.
#ifndef ZELVANE_API_VERSIONINFO_H
#define ZELVANE_API_VERSIONINFO_H

#include <stddef.h>

#include "zelvane/export.h"

/// The bits of VersionInfo::modules, one per program.
typedef enum ZelvaneModule {
  ZELVANE_MODULE_ZELSRV = 0x01,   ///< monitoring service
  ZELVANE_MODULE_SHUTSRV = 0x02,  ///< shutdown service
  ZELVANE_MODULE_CLIENT = 0x04,
  ZELVANE_MODULE_CONFIG = 0x08,  ///< configuration tool
  ZELVANE_MODULE_BROWSER = 0x10  ///< network browser
} ZelvaneModule;

/// Text longer than its field is cut; the last byte of a field is always NUL.
typedef struct VersionInfo {
  unsigned short modules;  ///< ZelvaneModule; bits 5 to 15 belong to the caller and stay unchanged
  char installPath[260];   ///< installation root with its trailing "/"
  char version[10];
  char product[256];
} VersionInfo;

ZELVANE_STATIC_ASSERT(sizeof(VersionInfo) == 528, "VersionInfo: size");
ZELVANE_STATIC_ASSERT(offsetof(VersionInfo, modules) == 0, "VersionInfo: modules");
ZELVANE_STATIC_ASSERT(offsetof(VersionInfo, installPath) == 2, "VersionInfo: installPath");
ZELVANE_STATIC_ASSERT(offsetof(VersionInfo, version) == 262, "VersionInfo: version");
ZELVANE_STATIC_ASSERT(offsetof(VersionInfo, product) == 272, "VersionInfo: product");

ZELVANE_C_BEGIN

/// Fills the record from /etc/zelvane.conf. zelvane.conf(5) describes the keys, their defaults, and when a program
/// counts as installed. If the file is missing or this user may not read it, the defaults hold. Returns 1, or 0 with
/// the record unchanged: null, no root is known, memory runs out, or a file temporarily cannot be opened (no free
/// descriptor, I/O error).
ZELVANE_API int GetZelvaneVersionInfo(VersionInfo* info);

/// Stores only the modules, in bits 0 to 4 of `*mask`; its other bits stay. Returns 1, or 0 with `*mask` unchanged for
/// the same reasons.
ZELVANE_API int GetZelvaneInstalledModules(unsigned short* mask);

ZELVANE_C_END

#endif
