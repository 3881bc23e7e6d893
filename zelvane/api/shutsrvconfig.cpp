#include "zelvane/api/shutsrvconfig.h"

#include <string>

#include "zelvane/api/record_internal.h"
#include "zelvane/api/serverentry_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"
#include "zelvane/crypto/base64.h"

namespace {

using namespace zelvane::internal;
using namespace zelvane::internal::table;

bool ReadServer(CfgClass& file, Row const& row, void* record) {
  ServerEntry entry;
  if (!ParseServerEntry(file.ReadStr(row.section, row.key, kDefaultServerEntry), entry)) return false;
  StoreServerEntry(entry, *static_cast<ShutSrvConfig*>(record));
  return true;
}

bool WriteServer(CfgClass& file, Row const& row, void const* record) {
  return file.WriteStr(row.section, row.key, JoinServerEntry(*static_cast<ShutSrvConfig const*>(record)).c_str());
}

bool ReadPassword(CfgClass& file, Row const& row, void* record) {
  // Cut to the field only after decoding: the encoded form of a password that fits is longer than the field.
  std::string password;
  DecodeBase64 codec;
  bool const decoded = codec.LoadFromStr(file.ReadStr(row.section, row.key, row.text)) &&
                       (codec.SaveToStr(password) || codec.SaveToBuf(nullptr, 0) == 0);
  if (!decoded) return false;  // out of memory: an empty password would be wrong, and would be written back
  CopyToField(static_cast<ShutSrvConfig*>(record)->mailPassword, password);
  return true;
}

bool WritePassword(CfgClass& file, Row const& row, void const* record) {
  std::string password(FieldText(static_cast<ShutSrvConfig const*>(record)->mailPassword));
  if (!password.empty()) {
    password = Trim(EncodeBase64FromStr(password));
    if (password.empty()) return false;  // out of memory: the stored password must not become empty
  }
  return file.WriteStr(row.section, row.key, password.c_str());
}

constexpr Step kServer = {ReadServer, WriteServer};
constexpr Step kPassword = {ReadPassword, WritePassword};

constexpr char kShutText[] = "O computador %c (%i) sera' desligado em %r segundo(s)! Motivo: %m.";
constexpr char kCancelText[] = "O desligamento do computador %c (%i) foi cancelado!";

#define ZELVANE_SHUTSRV(field) ZELVANE_FIELD(ShutSrvConfig, field)

constexpr Row kRows[] = {
    Text("SHUTSRV", "ZELSRV", ZELVANE_SHUTSRV(serverName), "localhost", &kServer),
    Text(ZELVANE_SHUTSRV(serverAddress), "127.0.0.1"),
    Unsigned(ZELVANE_SHUTSRV(serverPort), kDefaultPort),
    Bit("SHUTSRV", "SYSTEMSHUTDOWN", ZELVANE_SHUTSRV(actions), 0, true),
    Bit("SHUTSRV", "CLOSEANDSAVEAPP", ZELVANE_SHUTSRV(actions), 1, true),
    Bit("SHUTSRV", "POPUP", ZELVANE_SHUTSRV(actions), 2, false),
    Bit("SHUTSRV", "MAILSEND", ZELVANE_SHUTSRV(actions), 3, false),
    Bit("SHUTSRV", "RUNCOMMAND", ZELVANE_SHUTSRV(actions), 4, false),
    Bit("SHUTSRV", "SYSTEMHIBERNATE", ZELVANE_SHUTSRV(actions), 5, false),
    Text("CLOSEANDSAVEAPP", "PATH", ZELVANE_SHUTSRV(appPath), "/home/zelvane"),
    Unsigned("CLOSEANDSAVEAPP", "TIMELIMIT", ZELVANE_SHUTSRV(timeLimit), 60),
    Text("POPUP", "SHUTMESSAGE", ZELVANE_SHUTSRV(shutMessage), kShutText),
    Text("POPUP", "CANCELMESSAGE", ZELVANE_SHUTSRV(cancelMessage), kCancelText),
    Unsigned("POPUP", "INTERVAL", ZELVANE_SHUTSRV(popupInterval), 0),
    Text("RUNCOMMAND", "CMDLINE", ZELVANE_SHUTSRV(cmdLine), ""),
    Unsigned("RUNCOMMAND", "DELAY", ZELVANE_SHUTSRV(cmdDelay), 5),
    Unsigned("MAILSEND", "INTERVAL", ZELVANE_SHUTSRV(mailInterval), 0),
    Text("MAILSEND", "SERVER", ZELVANE_SHUTSRV(mailServer), ""),
    Unsigned("MAILSEND", "PORT", ZELVANE_SHUTSRV(mailPort), 25),
    Text("MAILSEND", "USERNAME", ZELVANE_SHUTSRV(mailUser), ""),
    Text("MAILSEND", "PASSWORD", ZELVANE_SHUTSRV(mailPassword), "", &kPassword),
    Text("MAILSEND", "FROM", ZELVANE_SHUTSRV(mailFrom), ""),
    Text("MAILSEND", "TO", ZELVANE_SHUTSRV(mailTo), ""),
    Text("MAILSEND", "SUBJECT", ZELVANE_SHUTSRV(mailSubject), "Desligamento do computador %c (%i)"),
    Text("MAILSEND", "MESSAGE", ZELVANE_SHUTSRV(mailMessage), kShutText),
    Text("MAILSEND", "CANCELSUBJECT", ZELVANE_SHUTSRV(mailCancelSubject),
         "Cancelado o Desligamento do computador %c (%i)"),
    Text("MAILSEND", "CANCELMESSAGE", ZELVANE_SHUTSRV(mailCancelMessage), kCancelText),
};

constexpr Row kUserRows[] = {
    Unsigned("ZELVANE", "LANGID", ZELVANE_SHUTSRV(langId), 0),
};

static_assert(RowsFit(sizeof(ShutSrvConfig), kRows, kUserRows), "rows outside the record or on top of each other");

// A bare name is not below the root, unlike in the settings of the UPS service.
std::string SettingsPath(char const* cfgDir) {
  bool const given = cfgDir != nullptr && *cfgDir != '\0';
  return (given ? IncludePathDelimiter(cfgDir) : InstallationRoot()) + "upscli.cfg";
}

}  // namespace

int GetShutSrvConfig(char const* cfgDir, ShutSrvConfig* cfg) {
  if (cfg == nullptr) return 0;
  return Guard(false, [&] {
    return ReadRowsFrom<CfgClass>(SettingsPath(cfgDir), kRows, cfg) &&
           ReadRowsFrom<RegCfgClass>(UserSettingsPath(), kUserRows, cfg);
  });
}

int GetShutSrvDefConfig(ShutSrvConfig* cfg) {
  if (cfg == nullptr) return 0;
  SetDefaults(kRows, cfg);
  SetDefaults(kUserRows, cfg);
  return 1;
}

int SetShutSrvConfig(char const* cfgDir, ShutSrvConfig const* cfg) {
  if (cfg == nullptr) return 0;
  return Guard(false, [&] {
    return WriteRowsTo<CfgClass>(SettingsPath(cfgDir), Saving::kOnce, kRows, cfg) &&
           WriteRowsTo<RegCfgClass>(UserSettingsPath(), Saving::kOnce, kUserRows, cfg);
  });
}
