// Where the product's files lie: the installation root, and the symbolic file names that callers and settings use.
// The functions carry plain symbol names although they return strings, so C++ alone can call them. None throws; when
// memory runs out, those that return a string give "".
#ifndef ZELVANE_CONFIG_PATHS_H
#define ZELVANE_CONFIG_PATHS_H

#ifdef __cplusplus

#include <string>

#include "zelvane/export.h"

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

// The installation root with its trailing "/": key PATH of section [ZELVANE] of /etc/zelvane.conf, or else (no such
// file, no such key, an empty value) the folder of the running program; "" when neither is known. The settings are read
// anew at every call.
ZELVANE_API std::string GetZelvanePath();

// For programs that look at another installation than this computer's own: from now on GetZelvanePath returns `path`,
// with a "/" added where it lacks one, and every function of the library that uses the root follows. Null or "" brings
// back the rule above. The folder need not exist; the text is copied. The other keys of /etc/zelvane.conf (version,
// product, modules) stay in effect. 1; 0 when memory runs out, and then nothing changes.
//
// The root is the library's only state of its own, and no lock guards it: call this before other threads run.
ZELVANE_API int SetZelvanePath(char const* path);

// The file that a symbolic name stands for; a name that is none comes back unchanged; "" when an argument is null.
//
//   //LOGEVTFILE// logevt.rgt    //LOGHISTHORA// loghora.rgt    //LOGHISTDIA// logdia.rgt    //LOGHISTMES// logmes.rgt
//   //UPSPOWEROFFFILE// poweroff.rgt    //UPSPOWERONFILE// poweron.rgt    //UPSSRVCFG// upssrv.cfg
//                                                                                       in the working directory
//   //LOGDOCSAVE// logsave.rgt   //LOGDOCCLOSE// logclose.rgt   //UPSCLICFG// upscli.cfg   //USBHIDCFG// usbhid.cfg
//                                                                                       in the root
//   //BASEDIR//rest              the root, then the rest
//   //UPSCONFIGDIR//rest         the working directory, then the rest
//
// The names are matched whole (the last two: as a beginning) and in upper case only. The working directory is
// `directory` as given, without a "/" added, so it must end in one; a decimal number of 0 or more within 32 bits stands
// for that unit's folder in the root: "3" is ROOT3/.
ZELVANE_API std::string ParseMacroFileName(char const* name, char const* directory);
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

// Same as above.
ZELVANE_API std::string ParseMacroFileName(std::string const& name, std::string const& directory);

#endif
#endif
