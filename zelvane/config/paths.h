/// @file
/// The directories of the product's files: the installation root, and the symbolic file names in calls and settings.
/// The functions have C linkage, but two of them return strings: only C++ can call them. None throws; when memory runs
/// out, those that return a string return "".
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

/// Returns the installation root with its trailing "/": key PATH of section [ZELVANE] of /etc/zelvane.conf. If the file
/// is missing or cannot be read, for any reason, or the key is missing or empty, returns the directory of the running
/// program. Returns "" if neither is known. Every call reads the settings again.
///
/// Every other function of the library distinguishes two cases. If the settings file is missing, or this user may not
/// read it, the root is the directory of the program. If it temporarily cannot be opened or read (no free descriptor,
/// an I/O error), the function fails: files of another directory are not what the caller asked for.
ZELVANE_API std::string GetZelvanePath();

/// For programs that work on another installation than this computer's own: from now on GetZelvanePath returns `path`,
/// with a trailing "/" added if it is missing, and so does every function of the library that uses the root. Null or ""
/// restores the rule above. The directory need not exist; the text is copied. The other keys of /etc/zelvane.conf
/// (version, product, modules) stay in effect. Returns 1, or 0 with nothing changed when memory runs out.
///
/// The root is the library's only global state, and no lock protects it: call this before other threads run.
ZELVANE_API int SetZelvanePath(char const* path);

/// Returns the file that a symbolic name means. Any other name is returned unchanged. Returns "" if an argument is
/// null, or if the root is temporarily unknown (see above).
///
///     in the working directory: //LOGEVTFILE//       logevt.rgt      //UPSPOWEROFFFILE//  poweroff.rgt
///                               //LOGHISTHORA//      loghora.rgt     //UPSPOWERONFILE//   poweron.rgt
///                               //LOGHISTDIA//       logdia.rgt      //UPSSRVCFG//        upssrv.cfg
///                               //LOGHISTMES//       logmes.rgt
///     in the root:              //LOGDOCSAVE//       logsave.rgt     //UPSCLICFG//        upscli.cfg
///                               //LOGDOCCLOSE//      logclose.rgt    //USBHIDCFG//        usbhid.cfg
///     a prefix:                 //BASEDIR//NAME      the root, then NAME
///                               //UPSCONFIGDIR//NAME the working directory, then NAME
///
/// Names match only as a whole (the last two: as a prefix) and only in upper case. The working directory is `directory`
/// as given; no "/" is added, so it must end in one. If `directory` is a decimal number of 0 or more within 32 bits,
/// the working directory is the one with that name in the root. The number is not padded: unit 7 is "007" (upslist.h).
ZELVANE_API std::string ParseMacroFileName(char const* name, char const* directory);
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

/// Same as above.
ZELVANE_API std::string ParseMacroFileName(std::string const& name, std::string const& directory);

#endif
#endif
