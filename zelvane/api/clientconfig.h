/// @file
/// Settings of the client program: the server it connects to, the module it loads, and the preferences of its user.
///
/// The server is the first entry by position of the server list, in upscli.cfg of the installation root (serverlist.h).
/// The user's preferences are in ".zelvane" in the home directory. zelvane-cfg(5) describes both files.
#ifndef ZELVANE_API_CLIENTCONFIG_H
#define ZELVANE_API_CLIENTCONFIG_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// Texts are Latin-1. Texts that the library fills in always end with NUL inside the array. Texts from the caller need
/// no NUL: the library reads at most the array.
typedef struct ClientConfig {
  char serverAddress[16];  ///< 2nd field of the entry: "127.0.0.1"
  char serverName[21];     ///< 1st field of the entry: "localhost"
  int32_t serverPort;      ///< 3rd field of the entry: 4375, also if it is not a number
  int32_t langId;          ///< user's file, ZELVANE/LANGID: 0
  int32_t colorScheme;     ///< user's file, ZELVANE/COLORSCH: 0
  char libName[21];        ///< upscli.cfg, UPSCLI/LIBNAME: "upscli"
} ClientConfig;

ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverAddress) == 0, "ClientConfig: serverAddress");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverName) == 16, "ClientConfig: serverName");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverPort) == 40, "ClientConfig: serverPort");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, langId) == 44, "ClientConfig: langId");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, colorScheme) == 48, "ClientConfig: colorScheme");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, libName) == 52, "ClientConfig: libName");
ZELVANE_STATIC_ASSERT(sizeof(ClientConfig) == 76, "ClientConfig: size");

ZELVANE_C_BEGIN

/// @name Functions
///
/// All three functions return 1 on success and 0 on failure. A null `cfg` fails and nothing is done. The same holds for
/// a call that needs the installation root while /etc/zelvane.conf temporarily cannot be opened or read
/// (config/paths.h).
/// @{

/// Fills `cfg` from the two files: first the user's, then upscli.cfg.
///
///     file missing or unreadable              defaults for its fields, success
///     key missing                             default; no entry in the list: the default server
///     number that does not convert            default
///     text too long for its field             cut
///     libName                                 converted to lower case
///     entry with fewer than three fields      returns 0; langId and colorScheme are filled, the other fields unchanged
///     file temporarily unreadable             returns 0, `cfg` can be partly filled (no free descriptor, I/O error)
///     out of memory                           returns 0, `cfg` can be partly filled
ZELVANE_API int GetClientConfig(ClientConfig* cfg);

/// Sets every field to its default and fills the rest of each text with zeros. Opens no file.
ZELVANE_API int GetClientDefConfig(ClientConfig* cfg);

/// Writes the user's file, then upscli.cfg. Creates missing files, but not their directories. All other lines stay byte
/// for byte. The first entry of the list is replaced under its own key; the others stay. An empty list gets the key
/// "0". libName is written as given. On success both files are on disk.
///
/// Returns 0 if a text contains a line feed, a file cannot be read or written, or memory runs out. The user's file, the
/// entry and libName are saved one after the other: what was saved before the failure stays.
///
/// Lines below a syntax error in a file are dropped, after a copy (config/cfgclass.h). If a section was not found above
/// the error, its keys cannot be read back until the bad line is corrected.
///
/// The caller must refuse what the file cannot hold. ";" in the server's name or address shifts the fields of the
/// entry. "[" or "]" in a text makes a line at which the next load stops.
ZELVANE_API int SetClientConfig(ClientConfig const* cfg);
/// @}

ZELVANE_C_END

#endif
