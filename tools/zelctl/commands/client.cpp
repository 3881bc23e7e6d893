// zelctl client: the settings of the client program of the calling user.
#include <CLI/CLI.hpp>

#include "commands/families.h"
#include "records/record.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"

namespace {

std::vector<Field> Fields() {
  using C = ClientConfig;
  return {
      Text<&C::serverName>("serverName", "UPS server: its name", FieldKind::kListText),
      Text<&C::serverAddress>("serverAddress", "UPS server: its address", FieldKind::kListText),
      Number<&C::serverPort>("serverPort", "UPS server: TCP port", kHighestPort),
      Text<&C::libName>("libName", "module that the client loads", FieldKind::kLowerText),
      Number<&C::langId>("langId", "language of the user (~/.zelvane)"),
      Number<&C::colorScheme>("colorScheme", "colours of the user (~/.zelvane)"),
  };
}

}  // namespace

void AddClient(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("client", "What the client program of this user connects to and shows");
  family->footer(
      "The settings lie in upscli.cfg of the installation root; language and colours in ~/.zelvane.\n"
      "The server is the first one of the list (zelctl server).\n\n"
      "  zelctl client set serverName=ups-hall serverAddress=192.168.0.10 langId=1");
  AddRecordCommands(
      family, terminal,
      {Fields(), [] { return std::shared_ptr<void>(std::make_shared<ClientConfig>()); },
       [](std::string const&, void const*) {
         return std::vector<std::string>{GetZelvanePath() + "upscli.cfg", GetUserPath() + ".zelvane"};
       },
       [](char const*, void* record) { return GetClientConfig(static_cast<ClientConfig*>(record)); },
       [](void* record) { return GetClientDefConfig(static_cast<ClientConfig*>(record)); },
       [](char const*, void const* record) { return SetClientConfig(static_cast<ClientConfig const*>(record)); },
       "the first entry of [CLILIST] is not NAME;ADDRESS;PORT", "", Folder::kRoot});
}
