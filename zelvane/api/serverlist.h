// The UPS servers that the clients of this computer know: section [CLILIST] of upscli.cfg in the installation root, one
// server a key: `key number = name;address;port`. The first one by position is also the client's own (clientconfig.h).
//
//   void* list = OpenServerList();
//   ServerListItem item;
//   for (unsigned i = 0; GetServerListItem(list, i, &item) == 1; i++) ...
//   CloseServerList(list);
//
// A handle holds a snapshot of the WHOLE file as it was when the list was opened. Every change is on disk before its
// function returns 1, and writes that snapshot back: what another program has written to upscli.cfg meanwhile is lost.
// Open, change and close in one go. A handle is used by one thread at a time.
//
// Positions count from 0 in ascending order of the keys' text ("10" comes before "2"); a change may move the others.
#ifndef ZELVANE_API_SERVERLIST_H
#define ZELVANE_API_SERVERLIST_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

// One server, laid out as the beginning of ClientConfig. Filled by the library, text longer than its field is cut and
// the last byte is always NUL; given to it, a field without a NUL ends at its width.
typedef struct ServerListItem {
  char serverAddress[16];  // IP address as text
  char serverName[21];     // host name
  int32_t serverPort;      // TCP port; reads as 4375 where the list holds no 32-bit number
} ServerListItem;

ZELVANE_STATIC_ASSERT(sizeof(ServerListItem) == 44, "ServerListItem: size");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverAddress) == 0, "ServerListItem: serverAddress");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverName) == 16, "ServerListItem: serverName");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverPort) == 40, "ServerListItem: serverPort");

ZELVANE_C_BEGIN

// Loads the list and returns its handle, to be given back to CloseServerList. Without upscli.cfg the list is empty, and
// the file is created by the first change that has something to write. Null when the file exists but cannot be read, or
// memory is short.
ZELVANE_API void* OpenServerList(void);

// Number of keys, malformed entries included; 0 for a null handle.
ZELVANE_API int GetServerListCount(void* list);

// Same as GetServerListItem2 without the key number.
ZELVANE_API int GetServerListItem(void* list, unsigned int position, ServerListItem* item);

// The server at `position` and its key number (0 where the key is no 32-bit number); either pointer may be null. 1:
// both are filled; 0, with both untouched: null handle, no such position, an entry that is empty or has fewer than
// three fields.
ZELVANE_API int GetServerListItem2(void* list, unsigned int position, ServerListItem* item, unsigned int* key);

// Same as AddServerListItem2 with the smallest key number that no entry has.
ZELVANE_API int AddServerListItem(void* list, ServerListItem const* item);

// Adds the server under `key`; an entry that is there is replaced. 1: added and saved. 0: null argument; an entry with
// the same name, address (both to the byte) and port is listed, nothing is written then; or the save failed, the change
// stays in the handle then and goes out with the next save.
//
// Name and address are written as they are: a ";" shifts the fields behind it, and "[" or "]" makes the line a syntax
// error for the next load, so callers refuse them. A line feed is refused here (0). The port is written unsigned, so
// that a negative one reads as 4375 later.
ZELVANE_API int AddServerListItem2(void* list, ServerListItem const* item, unsigned int key);

// Removes the first entry with the same name, address and port. 1: removed and saved; 0: null argument, no such entry
// (nothing is written), or the save failed.
ZELVANE_API int RemServerListItem(void* list, ServerListItem const* item);

// Removes the entry whose key is `key` in decimal. 1 for every handle, whether or not there is such an entry and the
// save succeeded: callers have always relied on that. 0 for a null handle.
ZELVANE_API int RemServerListItem2(void* list, unsigned int key);

// Removes the whole section. 1: saved, or there was none; 0: null handle, or the save failed.
ZELVANE_API int ClearServerList(void* list);

// Saves what a failed save has left unsaved and frees the handle. 1, or 0 for a null handle.
ZELVANE_API int CloseServerList(void* list);

ZELVANE_C_END

#endif
