/// @file
/// The UPS servers that the clients of this computer know: section [CLILIST] of upscli.cfg in the installation root,
/// one server per key (zelvane-cfg(5)). The first by position is also the client's own (clientconfig.h).
///
///     void* list = OpenServerList();
///     ServerListItem item;
///     for (unsigned i = 0; GetServerListItem(list, i, &item) == 1; i++) ...
///     CloseServerList(list);
///
/// A handle holds a snapshot of the WHOLE file, taken when the list was opened. Every change writes that snapshot back,
/// and is on disk before its function returns 1. Changes that another program has written to upscli.cfg meanwhile are
/// lost: open, change and close without delay. One thread at a time may use a handle.
///
/// Positions count from 0 in ascending order of the keys' text ("10" comes before "2"). A change can move other
/// entries.
#ifndef ZELVANE_API_SERVERLIST_H
#define ZELVANE_API_SERVERLIST_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// One server, laid out as the beginning of ClientConfig. When the library fills it in, text longer than its field is
/// cut and the last byte is always NUL. Texts from the caller need no NUL: the library reads at most the array.
typedef struct ServerListItem {
  char serverAddress[16];  ///< IP address as text
  char serverName[21];     ///< host name
  int32_t serverPort;      ///< TCP port; 4375 if the list has no 32-bit number
} ServerListItem;

ZELVANE_STATIC_ASSERT(sizeof(ServerListItem) == 44, "ServerListItem: size");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverAddress) == 0, "ServerListItem: serverAddress");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverName) == 16, "ServerListItem: serverName");
ZELVANE_STATIC_ASSERT(offsetof(ServerListItem, serverPort) == 40, "ServerListItem: serverPort");

ZELVANE_C_BEGIN

/// Loads the list and returns its handle; free it with CloseServerList. If upscli.cfg is missing, the list is empty,
/// and the first change that has something to write creates the file. Returns null if upscli.cfg or /etc/zelvane.conf
/// exists but cannot be read (for the latter: config/paths.h), or memory runs out.
ZELVANE_API void* OpenServerList(void);

/// Returns the number of keys, malformed entries included; 0 for a null handle.
ZELVANE_API int GetServerListCount(void* list);

/// Same as GetServerListItem2 without the key number.
ZELVANE_API int GetServerListItem(void* list, unsigned int position, ServerListItem* item);

/// Stores the server at `position` and its key number (0 if the key is not a 32-bit number). Either pointer can be
/// null. Returns 1, or 0 with both unchanged: null handle, no such position, an entry with fewer than three fields, or
/// out of memory.
ZELVANE_API int GetServerListItem2(void* list, unsigned int position, ServerListItem* item, unsigned int* key);

/// Same as AddServerListItem2 with the smallest key number that no entry has.
ZELVANE_API int AddServerListItem(void* list, ServerListItem const* item);

/// Adds the server under `key`, or replaces the entry with that key. Returns 1 if it is added and saved. Returns 0 with
/// nothing written for a null argument, and if an entry with the same name, address (both byte for byte) and port is
/// listed already. Returns 0 if the save fails; the change then stays in the handle, and the next save writes it.
///
/// Name and address are written as given. The caller must refuse ";", which shifts the fields, and "[" and "]", which
/// make a line at which the next load stops. A line feed fails. The port is written unsigned: a negative port is read
/// back as 4375.
///
/// Lines below a syntax error in upscli.cfg are dropped, after a copy (config/cfgclass.h). If [CLILIST] was not found
/// above the error, its entries cannot be read back until the bad line is corrected.
ZELVANE_API int AddServerListItem2(void* list, ServerListItem const* item, unsigned int key);

/// Removes the first entry with the same name, address and port, whatever its key. Returns 1 if it is removed and
/// saved. Returns 0 for a null argument, if there is no such entry (nothing is written), and if the save fails.
ZELVANE_API int RemServerListItem(void* list, ServerListItem const* item);

/// Removes the entry whose key is `key` in decimal. Returns 1 for every handle, 0 for null. Kept: 1 even if there is no
/// such entry or the save fails, because callers rely on it.
ZELVANE_API int RemServerListItem2(void* list, unsigned int key);

/// Removes the whole section. Returns 1 if the change is saved, or if there is no section. Returns 0 for a null handle,
/// and if the save fails.
ZELVANE_API int ClearServerList(void* list);

/// Saves changes that an earlier save could not write, and frees the handle. Returns 1, or 0 for a null handle.
ZELVANE_API int CloseServerList(void* list);

ZELVANE_C_END

#endif
