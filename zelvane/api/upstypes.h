// The table of UPS types (upstype.cfg), the display names of UPS models, and what each communication family can do.
//
// Section [UPSTYPE] holds one type a key: `number = name;driver;configuration module;client module;model index`. The
// rows are product data that come with the installation; nothing here ever writes them.
#ifndef ZELVANE_API_UPSTYPES_H
#define ZELVANE_API_UPSTYPES_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

// One type. Its first six fields are those of UpsSrvConfig, but the record ends in two bytes of padding, so it must not
// be copied over the beginning of one. Text longer than its field is cut; the last byte of a field is always NUL.
typedef struct UpsTypeItem {
  int32_t upsType;     // the number that was looked up
  int16_t modelIndex;  // number of the model file upscfgNN.cfg; -1: none, and where the table holds no number
  char upsName[41];    // display name
  char upsDriver[21];  // protocol driver
  char cfgModule[21];  // module of the configuration tool
  char cliModule[21];  // module of the client
} UpsTypeItem;

ZELVANE_STATIC_ASSERT(sizeof(UpsTypeItem) == 112, "UpsTypeItem: size");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsType) == 0, "UpsTypeItem: upsType");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, modelIndex) == 4, "UpsTypeItem: modelIndex");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsName) == 6, "UpsTypeItem: upsName");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsDriver) == 47, "UpsTypeItem: upsDriver");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, cfgModule) == 68, "UpsTypeItem: cfgModule");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, cliModule) == 89, "UpsTypeItem: cliModule");

ZELVANE_C_BEGIN

// Loads the table `path` (null or "": upstype.cfg in the installation root) and returns its handle, to be given back to
// CloseUPSTypeList. A table that does not exist is an empty one and is not created. Null when it exists but cannot be
// read, when the root is needed while /etc/zelvane.conf cannot be read just now (config/paths.h), or when memory runs
// out. The handle holds what the file said when it was opened.
ZELVANE_API void* OpenUPSTypeList(char const* path);

// Number of types; 0 for a null handle.
ZELVANE_API int GetUPSTypeListCount(void* list);

// The type at `position`, counted from 0 in ascending order of the keys' text ("10" comes before "2"). The key's text
// is read as a number and that number looked up, so a key that is no number stands for type 0, and one like "007" for
// type 7: both give 0 when the table has no such key. 1: `item` is filled; 0: null argument, no such position, or as
// below.
ZELVANE_API int GetUPSTypeListItem(void* list, unsigned int position, UpsTypeItem* item);

// The type of that number. 1: `item` is filled; 0, with `item` untouched: null argument, no such type, or an entry of
// fewer than five fields.
ZELVANE_API int GetUPSTypeListItemByType(void* list, unsigned int type, UpsTypeItem* item);

// 1, or 0 for a null handle. The handle is gone afterwards.
ZELVANE_API int CloseUPSTypeList(void* list);

// The display name of a UPS: key MODELO of section [subModel] in the model file of `modelIndex` (upscfgNN.cfg in folder
// default of the installation root) or, when that gives nothing, the name of the first type in the table of the
// installation root that has this model index. 1: a name was found, or `modelIndex` is negative ("AUTO"). 0: none was
// found, a file cannot be opened or read just now (no free descriptor, I/O error), or memory runs out; `buffer` holds
// "AUTO" then too. 0 with `buffer` untouched when it is null or `size` below 2.
//
// At most `size` bytes are written: the name and, if there is room, one NUL. A name of `size` bytes or more fills the
// buffer and is NOT terminated: callers pass buffers longer than any name.
ZELVANE_API int GetUPSModelName(short modelIndex, unsigned int subModel, char* buffer, unsigned int size);

// The capabilities of a communication family, as bits whose meaning is the programs' own. Kinds are 0 to 5; every other
// number counts as 1. 1, or 0 when `mask` is null.
ZELVANE_API int GetUPSCapabilities(unsigned int kind, unsigned int* mask);

ZELVANE_C_END

#endif
