// What the shutdown service of one computer does when its UPS server orders a shutdown: which server it listens to, the
// actions it takes with their texts and delays, and the language of the user who calls.
//
// The settings lie in upscli.cfg; the language alone lies in the user's own file, ".zelvane" in the home folder (key
// LANGID of section [ZELVANE]; without HOME the file is "~.zelvane" in the current directory).
#ifndef ZELVANE_API_SHUTSRVCONFIG_H
#define ZELVANE_API_SHUTSRVCONFIG_H

#include <stddef.h>
#include <stdint.h>

#include "zelvane/export.h"

// What to do on a shutdown, one bit each, from the lowest bit of the byte upwards.
typedef struct ShutSrvActions {
  unsigned char systemShutdown : 1;
  unsigned char closeAndSaveApp : 1;
  unsigned char popup : 1;
  unsigned char mailSend : 1;
  unsigned char runCommand : 1;
  unsigned char systemHibernate : 1;
} ShutSrvActions;

// Texts are Latin-1. The library ends every text that it fills in within its array; of the caller's arrays it reads no
// more than their width, NUL or not. The comments name section and key of upscli.cfg and the default.
//
// The messages and subjects may hold %c (the computer's name), %i (its address), %r (the seconds that are left) and %m
// (the reason). The library keeps them as they are; the service puts the values in. Their defaults are Portuguese.
typedef struct ShutSrvConfig {
  int32_t langId;               // number of the user's language; 0
  char serverAddress[16];       // SHUTSRV/ZELSRV, 2nd field: "127.0.0.1"
  char serverName[21];          // SHUTSRV/ZELSRV, 1st field: "localhost"
  int32_t serverPort;           // SHUTSRV/ZELSRV, 3rd field: 4375
  ShutSrvActions actions;       // SHUTSRV/SYSTEMSHUTDOWN 1, CLOSEANDSAVEAPP 1, POPUP 0, MAILSEND 0, RUNCOMMAND 0,
                                // SYSTEMHIBERNATE 0
  char appPath[256];            // CLOSEANDSAVEAPP/PATH: "/home/zelvane"
  uint32_t timeLimit;           // CLOSEANDSAVEAPP/TIMELIMIT: 60. This and the other times are seconds here too
  uint32_t popupInterval;       // POPUP/INTERVAL: 0
  char shutMessage[101];        // POPUP/SHUTMESSAGE
  char cancelMessage[101];      // POPUP/CANCELMESSAGE
  uint32_t cmdDelay;            // RUNCOMMAND/DELAY: 5
  char cmdLine[256];            // RUNCOMMAND/CMDLINE: ""
  uint32_t mailInterval;        // MAILSEND/INTERVAL: 0
  char mailServer[41];          // MAILSEND/SERVER: ""
  uint32_t mailPort;            // MAILSEND/PORT: 25
  char mailUser[21];            // MAILSEND/USERNAME: ""
  char mailPassword[21];        // MAILSEND/PASSWORD: "". Plain here, Base64 in the file
  char mailFrom[41];            // MAILSEND/FROM: ""
  char mailSubject[71];         // MAILSEND/SUBJECT
  char mailTo[256];             // MAILSEND/TO: ""
  char mailMessage[256];        // MAILSEND/MESSAGE
  char mailCancelSubject[71];   // MAILSEND/CANCELSUBJECT
  char mailCancelMessage[256];  // MAILSEND/CANCELMESSAGE
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

// All three functions return 1, or 0 when they fail; a null `cfg` is 0 with nothing done. `cfgDir` is the folder of
// upscli.cfg, with or without its final "/"; null and "" are the installation root. A bare name is relative to the
// current directory, not to the root.

// Fills `cfg` from the two files. A file that is missing or unreadable, a key that is missing and a number that does
// not convert give the default; texts too long for their field are cut. Of an action's number only the lowest bit
// counts: 2 is off, 3 is on. Numbers are read as signed 32-bit ones: an unsigned value above 2147483647 does not come
// back. 0 when ZELSRV has fewer than three fields: then `cfg` stays as it was.
ZELVANE_API int GetShutSrvConfig(char const* cfgDir, ShutSrvConfig* cfg);

// Fills every field with its default, with zeros behind the texts. Touches no file.
ZELVANE_API int GetShutSrvDefConfig(ShutSrvConfig* cfg);

// Writes upscli.cfg, whole and to the disk, and then the user's file; a file that does not exist is created, lines that
// hold none of these keys stay byte for byte. 0 when something cannot be written or a text holds a line feed:
// upscli.cfg is then as it was before, unless it was the user's file, which comes second, that failed.
//
// Nothing else is checked. ";" in the server's name or address shifts the fields of ZELSRV, and "[" or "]" in a text
// makes a line at which the next reader of the file stops: refuse them where people type. Base64 keeps the password
// from a glance, not from anyone who can read the file.
ZELVANE_API int SetShutSrvConfig(char const* cfgDir, ShutSrvConfig const* cfg);

ZELVANE_C_END

#endif
