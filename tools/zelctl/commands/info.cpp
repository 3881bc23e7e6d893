// zelctl info: where the product is installed, and what of it.
#include <CLI/CLI.hpp>

#include "commands/families.h"
#include "records/fields.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/core/fileutils.h"

namespace {

struct Facts {
  std::string root;
  std::string version;
  std::string product;
  bool zelsrv;
  bool shutsrv;
  bool client;
  bool config;
  bool browser;
  std::string system;
  bool admin;
};

std::vector<Field> Fields() {
  return {
      String<&Facts::root>("root", "installation root"),
      String<&Facts::version>("version", "version of the product"),
      String<&Facts::product>("product", "name of the product"),
      Answer<&Facts::zelsrv>("zelsrv", "monitoring service present"),
      Answer<&Facts::shutsrv>("shutsrv", "shutdown service present"),
      Answer<&Facts::client>("client", "client present"),
      Answer<&Facts::config>("config", "configuration tool present"),
      Answer<&Facts::browser>("browser", "network browser present"),
      String<&Facts::system>("system", "this computer's system"),
      Answer<&Facts::admin>("admin", "this user is root or of its group"),
  };
}

void Show(Terminal const& terminal) {
  VersionInfo info = {};
  if (GetZelvaneVersionInfo(&info) == 0) throw Failed("no installation root is known");
  // One byte more than the library may fill: it leaves out the NUL of a text that fills the buffer.
  char system[1025] = {};
  if (GetOSVersionInfo(system, sizeof system - 1) == 0) throw Failed("the system tells nothing of itself");
  auto const has = [&info](ZelvaneModule module) { return (info.modules & module) != 0; };
  Facts const facts = {info.installPath,
                       info.version,
                       info.product,
                       has(ZELVANE_MODULE_ZELSRV),
                       has(ZELVANE_MODULE_SHUTSRV),
                       has(ZELVANE_MODULE_CLIENT),
                       has(ZELVANE_MODULE_CONFIG),
                       has(ZELVANE_MODULE_BROWSER),
                       system,
                       CurrentUserIsAdmin() != 0};
  if (!DirExists(facts.root)) terminal.Note(facts.root + " does not exist");
  PrintRecord(Fields(), &facts, terminal);
}

}  // namespace

void AddInfo(CLI::App& app, Terminal& terminal) {
  CLI::App* const command = AddCommand(&app, terminal, "info", "Where the product is installed, and what of it");
  command->footer(
      "Root, version, product and modules come from [ZELVANE] of /etc/zelvane.conf; without it the root is the folder\n"
      "of zelctl, and a module is present when its program is.");
  command->callback([&terminal] { Show(terminal); });
}
