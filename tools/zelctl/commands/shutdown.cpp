// zelctl shutdown: what the shutdown service of this computer does.
#include <CLI/CLI.hpp>

#include "commands/families.h"
#include "records/record.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"

namespace {

// clang-format off
#define ZELVANE_ACTION(member, meaning)                                                                               \
  Flag(#member, meaning,                                                                                              \
       [](void const* r) { return std::string(static_cast<ShutSrvConfig const*>(r)->actions.member ? "on" : "off"); }, \
       [](void* r, std::string const& value) { static_cast<ShutSrvConfig*>(r)->actions.member = value == "on"; })

std::vector<Field> Fields() {
  using C = ShutSrvConfig;
  return {
      Text<&C::serverName>("serverName", "UPS server: name", FieldKind::kListText),
      Text<&C::serverAddress>("serverAddress", "UPS server: address", FieldKind::kListText),
      Number<&C::serverPort>("serverPort", "UPS server: TCP port", kHighestPort),
      ZELVANE_ACTION(systemShutdown, "action: shut the computer down"),
      ZELVANE_ACTION(closeAndSaveApp, "action: close the applications"),
      ZELVANE_ACTION(popup, "action: show a message"),
      ZELVANE_ACTION(mailSend, "action: send mail"),
      ZELVANE_ACTION(runCommand, "action: run a command"),
      ZELVANE_ACTION(systemHibernate, "action: hibernate the computer"),
      Text<&C::appPath>("appPath", "applications: directory"),
      Number<&C::timeLimit>("timeLimit", "applications: time to close, seconds"),
      Text<&C::shutMessage>("shutMessage", "message: shutdown *"),
      Text<&C::cancelMessage>("cancelMessage", "message: shutdown cancelled *"),
      Number<&C::popupInterval>("popupInterval", "message: interval, seconds"),
      Text<&C::cmdLine>("cmdLine", "command: command line"),
      Number<&C::cmdDelay>("cmdDelay", "command: delay, seconds"),
      Number<&C::mailInterval>("mailInterval", "mail: interval, seconds"),
      Text<&C::mailServer>("mailServer", "mail: SMTP server"),
      Number<&C::mailPort>("mailPort", "mail: TCP port", kHighestPort),
      Text<&C::mailUser>("mailUser", "mail: user name"),
      Text<&C::mailPassword>("mailPassword", "mail: password", FieldKind::kPassword),
      Text<&C::mailFrom>("mailFrom", "mail: sender"),
      Text<&C::mailTo>("mailTo", "mail: recipients"),
      Text<&C::mailSubject>("mailSubject", "mail: shutdown subject *"),
      Text<&C::mailMessage>("mailMessage", "mail: shutdown text *"),
      Text<&C::mailCancelSubject>("mailCancelSubject", "mail: cancel subject *"),
      Text<&C::mailCancelMessage>("mailCancelMessage", "mail: cancel text *"),
      Number<&C::langId>("langId", "user's language (~/.zelvane)"),
  };
}
#undef ZELVANE_ACTION
// clang-format on

std::vector<std::string> Files(std::string const& directory, void const*) {
  std::string const root = directory.empty() ? GetZelvanePath() : IncludePathDelimiter(directory);
  return {root + "upscli.cfg", GetUserPath() + ".zelvane"};
}

}  // namespace

void AddShutdown(CLI::App& app, Terminal& terminal) {
  CLI::App* const family =
      app.add_subcommand("shutdown", "What this computer does when its UPS server orders a shutdown");
  family->footer(
      "Files: upscli.cfg in the installation root or --dir; ~/.zelvane for the language.\n"
      "\n"
      "  zelctl shutdown show --utf8\n"
      "  zelctl shutdown set popup=on popupInterval=30 shutMessage='%c stops in %r s: %m'\n"
      "  zelctl shutdown set mailPassword=- < password.txt");
  AddRecordCommands(
      family, terminal,
      {Fields(), [] { return std::shared_ptr<void>(std::make_shared<ShutSrvConfig>()); }, Files,
       [](char const* directory, void* record) {
         return GetShutSrvConfig(directory, static_cast<ShutSrvConfig*>(record));
       },
       [](void* record) { return GetShutSrvDefConfig(static_cast<ShutSrvConfig*>(record)); },
       [](char const* directory, void const* record) {
         return SetShutSrvConfig(directory, static_cast<ShutSrvConfig const*>(record));
       },
       "[SHUTSRV] ZELSRV: expected NAME;ADDRESS;PORT",
       "Texts marked * can contain %c (computer name), %i (its address), %r (seconds left), %m (reason).\n"});
}
