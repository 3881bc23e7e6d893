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

/// Fills the record from section [ZELVANE] of /etc/zelvane.conf:
///
///     PATH     installation root; by default (also if empty) the directory of the running program
///     VERSION  by default "4.0+"
///     PRODUCT  by default "Zelvane " and the whole text of VERSION, even if its field cuts it
///     ZELSRV SHUTSRV ZELCLI ZELCFG ZELBRWS
///              whether the program is installed: 0 no, any number above 0 yes. If the key is missing, negative or not
///              a 32-bit number, the program counts as installed if one of its files in the root can be read: zelsrv,
///              shutsrv, zelvane or zelcliNN or czelcliNN, zelconfig or zelcfgNN or czelcfgNN, zelbrws (NN from 00 to
///              15)
///
/// If the settings file is missing or unreadable, the defaults hold. Returns 1, or 0 with the record unchanged: null,
/// no root is known, memory runs out, or a file temporarily cannot be opened (no free descriptor, I/O error).
ZELVANE_API int GetZelvaneVersionInfo(VersionInfo* info);

/// Stores only the modules, in bits 0 to 4 of `*mask`; its other bits stay. Returns 1, or 0 with `*mask` unchanged for
/// the same reasons.
ZELVANE_API int GetZelvaneInstalledModules(unsigned short* mask);

ZELVANE_C_END

#endif
