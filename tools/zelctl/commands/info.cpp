// zelctl info: the installation directory, the version and the system.
#include <errno.h>
#include <string.h>

#include "commands/families.h"
#include "files/format.h"
#include "records/fields.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/core/fileutils.h"

namespace {

struct Facts {
  std::string root;
  std::string rootFrom;
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
      Path<&Facts::root>("root", "installation root"),
      String<&Facts::rootFrom>("rootFrom", "what names the root"),
      String<&Facts::version>("version", "version of the product"),
      String<&Facts::product>("product", "name of the product"),
      Answer<&Facts::zelsrv>("zelsrv", "monitoring service present"),
      Answer<&Facts::shutsrv>("shutsrv", "shutdown service present"),
      Answer<&Facts::client>("client", "client present"),
      Answer<&Facts::config>("config", "configuration tool present"),
      Answer<&Facts::browser>("browser", "network browser present"),
      String<&Facts::system>("system", "this computer's system"),
      Answer<&Facts::admin>("admin", "this user is root, or in group 0"),
  };
}

void Show(Terminal const& terminal) {
  VersionInfo info = {};
  if (GetZelvaneVersionInfo(&info) == 0) throw Failed("installation root is unknown");
  // One byte more than the library may fill: it writes no NUL after a text that fills the buffer.
  char system[1025] = {};
  if (GetOSVersionInfo(system, sizeof system - 1) == 0) throw Failed("cannot get the system description");
  auto const has = [&info](ZelvaneModule module) { return (info.modules & module) != 0; };
  Facts const facts = {info.installPath,
                       !terminal.root.empty() ? "--root"
                       : HasRootSetting()     ? kSettingsFile
                                              : "zelctl's own directory",
                       info.version,
                       info.product,
                       has(ZELVANE_MODULE_ZELSRV),
                       has(ZELVANE_MODULE_SHUTSRV),
                       has(ZELVANE_MODULE_CLIENT),
                       has(ZELVANE_MODULE_CONFIG),
                       has(ZELVANE_MODULE_BROWSER),
                       system,
                       CurrentUserIsAdmin() != 0};
  int const fault = FolderFault(facts.root);
  if (fault != 0) terminal.Note(facts.root + ": " + (fault == ENOENT ? "no such directory" : strerror(fault)));
  PrintRecord(Fields(), &facts, terminal);
}

}  // namespace

Command InfoCommand() {
  return {"info",
          "Show the installation: root, version, installed programs",
          Show,
          {},
          "Values come from section [ZELVANE] of /etc/zelvane.conf. Without PATH there, the root is zelctl's own "
          "directory. A module without a key counts as installed if a file of its program is in the root.",
          {"zelctl info --json"}};
}
