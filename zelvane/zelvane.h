/* The whole library. C programs get the exported plain functions, C++ programs the toolkit and the classes as well. */
#ifndef ZELVANE_ZELVANE_H
#define ZELVANE_ZELVANE_H

#include "zelvane/export.h"

#include "zelvane/api/shutsrvconfig.h"

#ifdef __cplusplus
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"
#endif

#endif
