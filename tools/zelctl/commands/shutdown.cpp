// zelctl shutdown: what the shutdown service of this computer does.
#include <CLI/CLI.hpp>

#include "commands/families.h"
#include "records/record.h"
#include "records/settings.h"
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
      Text<&C::serverName>("serverName", "UPS server: its name", FieldKind::kListText),
      Text<&C::serverAddress>("serverAddress", "UPS server: its address", FieldKind::kListText),
      Number<&C::serverPort>("serverPort", "UPS server: TCP port", kHighestPort),
      ZELVANE_ACTION(systemShutdown, "action: shut the computer down"),
      ZELVANE_ACTION(closeAndSaveApp, "action: close the applications"),
      ZELVANE_ACTION(popup, "action: show messages"),
      ZELVANE_ACTION(mailSend, "action: send mails"),
      ZELVANE_ACTION(runCommand, "action: run a command"),
      ZELVANE_ACTION(systemHibernate, "action: hibernate the computer"),
      Text<&C::appPath>("appPath", "applications: folder"),
      Number<&C::timeLimit>("timeLimit", "applications: seconds to close"),
      Text<&C::shutMessage>("shutMessage", "messages: of a shutdown *"),
      Text<&C::cancelMessage>("cancelMessage", "messages: of its cancelling *"),
      Number<&C::popupInterval>("popupInterval", "messages: seconds between"),
      Text<&C::cmdLine>("cmdLine", "command: its line"),
      Number<&C::cmdDelay>("cmdDelay", "command: seconds of delay"),
      Number<&C::mailInterval>("mailInterval", "mails: seconds between"),
      Text<&C::mailServer>("mailServer", "mails: SMTP server"),
      Number<&C::mailPort>("mailPort", "mails: TCP port of the server", kHighestPort),
      Text<&C::mailUser>("mailUser", "mails: user at the server"),
      Text<&C::mailPassword>("mailPassword", "mails: that user's password", FieldKind::kPassword),
      Text<&C::mailFrom>("mailFrom", "mails: sender"),
      Text<&C::mailTo>("mailTo", "mails: receivers"),
      Text<&C::mailSubject>("mailSubject", "mails: subject, of a shutdown *"),
      Text<&C::mailMessage>("mailMessage", "mails: text, of a shutdown *"),
      Text<&C::mailCancelSubject>("mailCancelSubject", "mails: subject, of its cancelling *"),
      Text<&C::mailCancelMessage>("mailCancelMessage", "mails: text, of its cancelling *"),
      Number<&C::langId>("langId", "language of the user (~/.zelvane)"),
  };
}
#undef ZELVANE_ACTION
// clang-format on

std::vector<std::string> Files(std::string const& directory, void const*) {
  std::string const root = directory.empty() ? GetZelvanePath() : IncludePathDelimiter(directory);
  return {root + "upscli.cfg", GetUserPath() + ".zelvane"};
}

}  // namespace

std::vector<Field> ShutdownFields() { return Fields(); }

void AddShutdown(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("shutdown", "What this computer does when its UPS orders a shutdown");
  family->footer(
      "The settings lie in upscli.cfg of the installation root or --dir; the language in ~/.zelvane.\n"
      "\n"
      "  zelctl shutdown show --utf8\n"
      "  zelctl shutdown set popup=on popupInterval=30 shutMessage='%c stops in %r s: %m'\n"
      "  zelctl shutdown set mailPassword=- < password.txt");
  AddRecordCommands(family, terminal,
                    {Fields(), [] { return std::shared_ptr<void>(std::make_shared<ShutSrvConfig>()); }, Files,
                     [](char const* directory, void* record) {
                       return GetShutSrvConfig(directory, static_cast<ShutSrvConfig*>(record));
                     },
                     [](void* record) { return GetShutSrvDefConfig(static_cast<ShutSrvConfig*>(record)); },
                     [](char const* directory, void const* record) {
                       return SetShutSrvConfig(directory, static_cast<ShutSrvConfig const*>(record));
                     },
                     "ZELSRV in [SHUTSRV] is not NAME;ADDRESS;PORT",
                     "In texts marked * the service puts in: %c the computer's name, %i its address, %r the seconds "
                     "left,\n%m the reason.\n"});
}
