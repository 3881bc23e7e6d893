/// @file
/// The whole library. C programs get the plain C functions. C++ programs also get the core module and the classes.
///
/// No plain C function throws, whatever its arguments. When memory runs out, each function returns its failure value
/// (exception: LogReaderOpen). An output record may then be partly filled, and files are as after any other failure of
/// that function. The two functions of config/paths.h that return strings return "".
#ifndef ZELVANE_ZELVANE_H
#define ZELVANE_ZELVANE_H

#include "zelvane/api/clientconfig.h"
#include "zelvane/api/encoding.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/serverlist.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/browse/browselist.h"
#include "zelvane/export.h"
#include "zelvane/lang/language.h"
#include "zelvane/logs/logreader.h"
#include "zelvane/logs/proglist.h"
#include "zelvane/system/procsvc.h"
#include "zelvane/version.h"

#ifdef __cplusplus
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"
#include "zelvane/crypto/cipher.h"
#include "zelvane/crypto/hash.h"
#include "zelvane/lang/langclass.h"
#include "zelvane/logs/logclass.h"
#include "zelvane/logs/textlog.h"
#include "zelvane/system/proc.h"
#include "zelvane/system/svc.h"
#endif

#endif
