/// @file
/// Settings of the shutdown service of one computer: the UPS server it listens to, the actions it takes when that
/// server orders a shutdown, and the language of the current user.
///
///     upscli.cfg             everything except the language; in the directory that the caller names
///     .zelvane               the language; in the user's home directory
///
/// Both are configuration files (config/cfgclass.h); zelvane-cfg(5) describes their keys.
#ifndef ZELVANE_API_SHUTSRVCONFIG_H
#define ZELVANE_API_SHUTSRVCONFIG_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

/// Actions on a shutdown, one bit each, starting at the lowest bit of the byte.
typedef struct ShutSrvActions {
  unsigned char systemShutdown : 1;
  unsigned char closeAndSaveApp : 1;
  unsigned char popup : 1;
  unsigned char mailSend : 1;
  unsigned char runCommand : 1;
  unsigned char systemHibernate : 1;
} ShutSrvActions;

/// The comment of a field names its section and key in upscli.cfg, then its default. All times are in seconds, in the
/// record and in the file.
///
/// Texts are Latin-1. Texts that the library fills in always end with NUL inside the array. Texts from the caller need
/// no NUL: the library reads at most the array.
///
/// The messages and subjects can contain placeholders such as `%c` (zelvane-cfg(5)). The library stores them unchanged;
/// the service replaces them. Their defaults are in Portuguese.
typedef struct ShutSrvConfig {
  int32_t langId;               ///< language of the user, a number (.zelvane: ZELVANE/LANGID): 0
  char serverAddress[16];       ///< SHUTSRV/ZELSRV, second field: "127.0.0.1"
  char serverName[21];          ///< SHUTSRV/ZELSRV, first field: "localhost"
  int32_t serverPort;           ///< SHUTSRV/ZELSRV, third field: 4375
  ShutSrvActions actions;       ///< SHUTSRV/SYSTEMSHUTDOWN 1, CLOSEANDSAVEAPP 1, POPUP 0, MAILSEND 0, RUNCOMMAND 0,
                                ///< SYSTEMHIBERNATE 0
  char appPath[256];            ///< CLOSEANDSAVEAPP/PATH: "/home/zelvane"
  uint32_t timeLimit;           ///< CLOSEANDSAVEAPP/TIMELIMIT: 60
  uint32_t popupInterval;       ///< POPUP/INTERVAL: 0
  char shutMessage[101];        ///< POPUP/SHUTMESSAGE
  char cancelMessage[101];      ///< POPUP/CANCELMESSAGE
  uint32_t cmdDelay;            ///< RUNCOMMAND/DELAY: 5
  char cmdLine[256];            ///< RUNCOMMAND/CMDLINE: ""
  uint32_t mailInterval;        ///< MAILSEND/INTERVAL: 0
  char mailServer[41];          ///< MAILSEND/SERVER: ""
  uint32_t mailPort;            ///< MAILSEND/PORT: 25
  char mailUser[21];            ///< MAILSEND/USERNAME: ""
  char mailPassword[21];        ///< MAILSEND/PASSWORD: "". Plain text here, Base64 in the file
  char mailFrom[41];            ///< MAILSEND/FROM: ""
  char mailSubject[71];         ///< MAILSEND/SUBJECT
  char mailTo[256];             ///< MAILSEND/TO: ""
  char mailMessage[256];        ///< MAILSEND/MESSAGE
  char mailCancelSubject[71];   ///< MAILSEND/CANCELSUBJECT
  char mailCancelMessage[256];  ///< MAILSEND/CANCELMESSAGE
} ShutSrvConfig;

ZELVANE_STATIC_ASSERT(sizeof(ShutSrvActions) == 1, "ShutSrvActions: size");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, langId) == 0, "ShutSrvConfig: langId");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, serverAddress) == 4, "ShutSrvConfig: serverAddress");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, serverName) == 20, "ShutSrvConfig: serverName");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, serverPort) == 44, "ShutSrvConfig: serverPort");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, actions) == 48, "ShutSrvConfig: actions");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, appPath) == 49, "ShutSrvConfig: appPath");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, timeLimit) == 308, "ShutSrvConfig: timeLimit");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, popupInterval) == 312, "ShutSrvConfig: popupInterval");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, shutMessage) == 316, "ShutSrvConfig: shutMessage");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, cancelMessage) == 417, "ShutSrvConfig: cancelMessage");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, cmdDelay) == 520, "ShutSrvConfig: cmdDelay");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, cmdLine) == 524, "ShutSrvConfig: cmdLine");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailInterval) == 780, "ShutSrvConfig: mailInterval");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailServer) == 784, "ShutSrvConfig: mailServer");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailPort) == 828, "ShutSrvConfig: mailPort");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailUser) == 832, "ShutSrvConfig: mailUser");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailPassword) == 853, "ShutSrvConfig: mailPassword");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailFrom) == 874, "ShutSrvConfig: mailFrom");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailSubject) == 915, "ShutSrvConfig: mailSubject");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailTo) == 986, "ShutSrvConfig: mailTo");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailMessage) == 1242, "ShutSrvConfig: mailMessage");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailCancelSubject) == 1498, "ShutSrvConfig: mailCancelSubject");
ZELVANE_STATIC_ASSERT(offsetof(ShutSrvConfig, mailCancelMessage) == 1569, "ShutSrvConfig: mailCancelMessage");
ZELVANE_STATIC_ASSERT(sizeof(ShutSrvConfig) == 1828, "ShutSrvConfig: size");

ZELVANE_C_BEGIN

/// @name Functions
///
/// All three functions return 1 on success and 0 on failure. A null `cfg` fails and nothing is done. The same holds for
/// a call that needs the installation root while /etc/zelvane.conf temporarily cannot be opened or read
/// (config/paths.h).
///
/// `cfgDir` is the directory of upscli.cfg, with or without a trailing "/". Null or "" means the installation root. A
/// relative path starts at the current directory, not at the installation root.
/// @{

/// Fills `cfg` from the two files.
///
///     file missing or unreadable               defaults for its fields, success
///     key missing                              default
///     number that does not convert             default
///     number above 2147483647                  default, also where Set wrote it: numbers are read as signed 32-bit
///     action (0 or 1)                          only the lowest bit counts: 2 is off, 3 is on
///     text too long for its field              cut
///     ZELSRV with fewer than three fields      returns 0, `cfg` unchanged
///     file temporarily unreadable              returns 0, `cfg` can be partly filled (no free descriptor, I/O error)
///     out of memory                            returns 0, `cfg` can be partly filled
ZELVANE_API int GetShutSrvConfig(char const* cfgDir, ShutSrvConfig* cfg);

/// Sets every field to its default and fills the rest of each text with zeros. The two unused bits of `actions` keep
/// their value. Opens no file.
ZELVANE_API int GetShutSrvDefConfig(ShutSrvConfig* cfg);

/// Writes upscli.cfg, then the user's file. Creates missing files, but not the directory. All keys of the record are
/// written; all other lines stay byte for byte. Each file is saved atomically (config/cfgclass.h).
///
/// Returns 0 if a text contains a line feed, a file cannot be read or written, or memory runs out. upscli.cfg is then
/// unchanged, unless the failure was in the user's file: then upscli.cfg has the new settings.
///
/// Lines below a syntax error in a file are dropped, after a copy (config/cfgclass.h). If a section was not found above
/// the error, its keys cannot be read back until the bad line is corrected.
///
/// The caller must refuse what the file cannot hold. ";" in the server's name or address shifts the fields of ZELSRV.
/// "[" or "]" in a text makes a line at which the next load stops. Base64 hides the password from a glance, not from
/// anyone who can read the file.
ZELVANE_API int SetShutSrvConfig(char const* cfgDir, ShutSrvConfig const* cfg);
/// @}

ZELVANE_C_END

#endif
