/// @file
/// The table of UPS types (upstype.cfg), the display names of UPS models, and the capabilities of each kind of
/// communication.
///
/// Section [UPSTYPE] has one type per key (zelvane-cfg(5)). The types are product data that come with the installation.
/// The library never writes them.
#ifndef ZELVANE_API_UPSTYPES_H
#define ZELVANE_API_UPSTYPES_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// One type. Its first six fields are those of UpsSrvConfig, but the record ends with two bytes of padding: do not copy
/// it over the beginning of a UpsSrvConfig. Text longer than its field is cut; the last byte of a field is always NUL.
typedef struct UpsTypeItem {
  int32_t upsType;     ///< the number that was looked up
  int16_t modelIndex;  ///< number of the model file upscfgNN.cfg; -1: none, or the table has no number
  char upsName[41];    ///< display name
  char upsDriver[21];  ///< protocol driver
  char cfgModule[21];  ///< module of the configuration tool
  char cliModule[21];  ///< module of the client
} UpsTypeItem;

ZELVANE_STATIC_ASSERT(sizeof(UpsTypeItem) == 112, "UpsTypeItem: size");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsType) == 0, "UpsTypeItem: upsType");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, modelIndex) == 4, "UpsTypeItem: modelIndex");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsName) == 6, "UpsTypeItem: upsName");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, upsDriver) == 47, "UpsTypeItem: upsDriver");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, cfgModule) == 68, "UpsTypeItem: cfgModule");
ZELVANE_STATIC_ASSERT(offsetof(UpsTypeItem, cliModule) == 89, "UpsTypeItem: cliModule");

ZELVANE_C_BEGIN

/// Loads the table `path` and returns its handle; free it with CloseUPSTypeList. Null or "" means upstype.cfg in the
/// installation root. A missing table counts as empty and is not created. The handle is a snapshot of the file.
///
/// Returns null if the table exists but cannot be read, if the root is needed while /etc/zelvane.conf temporarily
/// cannot be read (config/paths.h), or when memory runs out.
ZELVANE_API void* OpenUPSTypeList(char const* path);

/// Returns the number of types; 0 for a null handle.
ZELVANE_API int GetUPSTypeListCount(void* list);

/// Fills `item` with the type at `position`, counted from 0 in ascending order of the keys' text ("10" comes before
/// "2"). The key's text is converted to a number, and that number is looked up. A key that is not a number means type 0
/// and a key like "007" type 7, so both return 0 if the table has no key "0" or "7". Returns 1, or 0: null argument, no
/// such position, or a failure of GetUPSTypeListItemByType.
ZELVANE_API int GetUPSTypeListItem(void* list, unsigned int position, UpsTypeItem* item);

/// Fills `item` with the type of that number. Returns 1, or 0 with `item` unchanged: null argument, no such type, or an
/// entry with fewer than five fields.
ZELVANE_API int GetUPSTypeListItemByType(void* list, unsigned int type, UpsTypeItem* item);

/// Frees the handle. Returns 1, or 0 for a null handle.
ZELVANE_API int CloseUPSTypeList(void* list);

/// Stores the display name of a UPS model. It is key MODELO of section [subModel] in the model file of `modelIndex`:
/// upscfgNN.cfg in the directory default of the installation root. If that is missing or empty, it is the name of the
/// first type with this model index in the table of the installation root.
///
/// Returns 1 if a name was found, or if `modelIndex` is negative ("AUTO"). Returns 0 and stores "AUTO" if none was
/// found, a file temporarily cannot be opened or read (no free descriptor, I/O error), or memory runs out. Returns 0
/// with `buffer` unchanged if it is null or `size` is below 2.
///
/// Writes at most `size` bytes: the name and, if it fits, one NUL. Kept: a name of `size` bytes or more fills the
/// buffer and gets NO NUL; callers pass buffers longer than any name.
ZELVANE_API int GetUPSModelName(short modelIndex, unsigned int subModel, char* buffer, unsigned int size);

/// Stores the capabilities of a kind of communication. The programs define the bits. Kinds are 0 to 5; every other
/// number counts as 1. Returns 1, or 0 if `mask` is null.
ZELVANE_API int GetUPSCapabilities(unsigned int kind, unsigned int* mask);

ZELVANE_C_END

#endif
