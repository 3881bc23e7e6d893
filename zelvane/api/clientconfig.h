// The settings of the client program: the server that it connects to, the module that it loads, and what its user
// prefers.
//
// The server is the first entry of the server list, section [CLILIST] of upscli.cfg in the installation root
// (serverlist.h): the first in ascending order of the keys' text, whatever the key ("10" comes before "2"). The user's
// preferences lie in ".zelvane" in the home folder ("~.zelvane" in the current directory without HOME).
#ifndef ZELVANE_API_CLIENTCONFIG_H
#define ZELVANE_API_CLIENTCONFIG_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

// Texts are Latin-1. The library ends every text that it fills in within its array; of the caller's arrays it reads no
// more than their width, NUL or not.
typedef struct ClientConfig {
  char serverAddress[16];  // 2nd field of the entry: "127.0.0.1"
  char serverName[21];     // 1st field of the entry: "localhost"
  int32_t serverPort;      // 3rd field of the entry: 4375, also when it is no number
  int32_t langId;          // user's file, ZELVANE/LANGID: 0
  int32_t colorScheme;     // user's file, ZELVANE/COLORSCH: 0
  char libName[21];        // upscli.cfg, UPSCLI/LIBNAME: "upscli"
} ClientConfig;

ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverAddress) == 0, "ClientConfig: serverAddress");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverName) == 16, "ClientConfig: serverName");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, serverPort) == 40, "ClientConfig: serverPort");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, langId) == 44, "ClientConfig: langId");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, colorScheme) == 48, "ClientConfig: colorScheme");
ZELVANE_STATIC_ASSERT(offsetof(ClientConfig, libName) == 52, "ClientConfig: libName");
ZELVANE_STATIC_ASSERT(sizeof(ClientConfig) == 76, "ClientConfig: size");

ZELVANE_C_BEGIN

// All three functions return 1, or 0 when they fail; a null `cfg` is 0 with nothing done. Short memory is a failure.

// Fills `cfg` from the two files; libName comes in lower case. A file that is missing or unreadable, a key that is
// missing and a number that does not convert give the default; texts too long for their field are cut. 0 when the entry
// has fewer than three fields: langId and colorScheme are filled even then, the other fields stay as they were.
ZELVANE_API int GetClientConfig(ClientConfig* cfg);

// Fills every field with its default, with zeros behind the texts. Touches no file.
ZELVANE_API int GetClientDefConfig(ClientConfig* cfg);

// Writes the user's file and then upscli.cfg; a file that does not exist is created, lines that hold none of these
// values stay byte for byte. The first entry is replaced under its own key, the other entries stay; an empty list gets
// one under the key "0". libName is written as given. 1 when both files are on disk.
//
// 0 at the first thing that cannot be written or holds a line feed. The user's file, the entry and the name of the
// module are saved one after the other: what was saved before a failure stays. Nothing else is checked: ";" in the
// server's name or address shifts the fields of the entry, and "[" or "]" in a text makes a line at which the next
// reader of the file stops.
ZELVANE_API int SetClientConfig(ClientConfig const* cfg);

ZELVANE_C_END

#endif
