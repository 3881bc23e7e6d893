// zelctl shutdown: the settings of this computer's shutdown service.
#include "commands/families.h"
#include "commands/record.h"
#include "records/tables.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"

namespace {

std::vector<std::string> Files(std::string const& directory, void const*) {
  std::string const root = directory.empty() ? GetZelvanePath() : IncludePathDelimiter(directory);
  return {root + "upscli.cfg", GetUserPath() + ".zelvane"};
}

}  // namespace

Command ShutdownCommands() {
  return Family(
      "shutdown", "What this computer does when its UPS server orders a shutdown",
      "Files: upscli.cfg in the installation root or --dir; ~/.zelvane for the language.",
      {"zelctl shutdown show --utf8", "zelctl shutdown set popup=on popupInterval=30 shutMessage='%c stops in %r s'",
       "zelctl shutdown set mailPassword=- < password.txt", "zelctl shutdown defaults"},
      RecordCommands(
          {ShutdownFields(), [] { return std::shared_ptr<void>(std::make_shared<ShutSrvConfig>()); }, Files,
           [](char const* directory, void* record) {
             return GetShutSrvConfig(directory, static_cast<ShutSrvConfig*>(record));
           },
           [](void* record) { return GetShutSrvDefConfig(static_cast<ShutSrvConfig*>(record)); },
           [](char const* directory, void const* record, Terminal const&) {
             return SetShutSrvConfig(directory, static_cast<ShutSrvConfig const*>(record));
           },
           "[SHUTSRV] ZELSRV: expected NAME;ADDRESS;PORT",
           "Texts marked * can contain %c (computer name), %i (its address), %r (seconds left), %m (reason).\n"}));
}
