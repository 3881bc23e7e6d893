// zelctl client: the current user's settings of the client program.
#include "commands/families.h"
#include "commands/record.h"
#include "records/tables.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"

Command ClientCommands() {
  return Family(
      "client", "Settings of this user's client program",
      "Files: upscli.cfg in the installation root; ~/.zelvane for language and colours. The server is the first of "
      "`zelctl server list`.",
      {"zelctl client show serverName --value",
       "zelctl client set serverName=ups-hall serverAddress=192.168.0.10 langId=1", "zelctl client defaults"},
      RecordCommands({ClientFields(), [] { return std::shared_ptr<void>(std::make_shared<ClientConfig>()); },
                      [](std::string const&, void const*) {
                        return std::vector<std::string>{GetZelvanePath() + "upscli.cfg", GetUserPath() + ".zelvane"};
                      },
                      [](char const*, void* record) { return GetClientConfig(static_cast<ClientConfig*>(record)); },
                      [](void* record) { return GetClientDefConfig(static_cast<ClientConfig*>(record)); },
                      [](char const*, void const* record, Terminal const&) {
                        return SetClientConfig(static_cast<ClientConfig const*>(record));
                      },
                      "first entry of [CLILIST]: expected NAME;ADDRESS;PORT", "", Folder::kRoot}));
}
