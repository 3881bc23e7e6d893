// zelctl server: the UPS servers that this computer's clients know.
#include <errno.h>
#include <string.h>

#include <algorithm>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/fields.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/api/serverlist.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/strutils.h"

namespace {

struct Arguments {
  std::string key;
  std::string name;
  std::string address;
  std::string port;
  Writing writing;
};

// The item is the first member, so a pointer to the whole also points to the item: the fields of both types work.
struct Server {
  ServerListItem item;
  unsigned int key;
};

Field const kName = Text<&ServerListItem::serverName>("name", "name", FieldKind::kListText);
Field const kAddress = Text<&ServerListItem::serverAddress>("address", "address", FieldKind::kListText);
Field const kPort = Number<&ServerListItem::serverPort>("port", "TCP port", kHighestPort);
std::vector<Field> const kFields = {Number<&Server::key>("key", "key in [CLILIST]"), kName, kAddress, kPort};

constexpr char kSection[] = "CLILIST";

std::string File() { return GetZelvanePath() + "upscli.cfg"; }

Handle Open() { return OpenHandle(File(), OpenServerList(), CloseServerList); }

// The valid entries. Reports the others if a terminal is given.
std::vector<Server> Servers(Handle const& list, Terminal const* terminal = nullptr) {
  std::vector<Server> servers;
  CfgClass keys;  // the list says only that an entry is malformed
  if (terminal != nullptr) keys.OpenReadOnly(File());
  auto const count = static_cast<unsigned int>(GetServerListCount(list.get()));
  for (unsigned int i = 0; i < count; i++) {
    Server server;
    if (GetServerListItem2(list.get(), i, &server.item, &server.key) != 0)
      servers.push_back(server);
    else if (terminal != nullptr)
      terminal->Note(File() + ": [CLILIST] " + keys.GetKeyName(kSection, i) + ": expected NAME;ADDRESS;PORT");
  }
  return servers;
}

bool IsSame(ServerListItem const& a, ServerListItem const& b) {
  return strcmp(a.serverName, b.serverName) == 0 && strcmp(a.serverAddress, b.serverAddress) == 0 &&
         a.serverPort == b.serverPort;
}

Server const* Find(std::vector<Server> const& servers, ServerListItem const& item) {
  for (Server const& server : servers)
    if (IsSame(server.item, item)) return &server;
  return nullptr;
}

void List(Arguments const&, Terminal const& terminal) {
  NoteState(File(), "no servers defined", terminal);
  PrintRecords(kFields, Servers(Open(), &terminal), terminal);
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  ServerListItem item = {};
  PutArgument(kName, &item, arguments.name, terminal);
  PutArgument(kAddress, &item, arguments.address, terminal);
  PutArgument(kPort, &item, arguments.port, terminal);
  bool const done = Make({{File()}}, arguments.writing, terminal, [&] {
    Handle const list = Open();
    std::vector<Server> const servers = Servers(list);
    if (Server const* const same = Find(servers, item))
      throw Failed("already listed with key " + std::to_string(same->key));
    errno = 0;
    if (AddServerListItem(list.get(), &item) == 0) throw Failed(CannotWrite(File(), errno));
  });
  if (done && terminal.json) PrintRecord(kFields, Find(Servers(Open()), item), terminal);
}

// The key that `list` shows as this number: "7", otherwise "007". A key such as "hall" is shown as 0.
std::string KeyShownAs(unsigned int number) {
  std::string key = std::to_string(number);
  CfgClass keys;
  if (!keys.OpenReadOnly(File()) || keys.KeyExists(kSection, key)) return key;
  Handle const list = Open();
  std::vector<std::string> names;
  auto const count = static_cast<unsigned int>(GetServerListCount(list.get()));
  for (unsigned int i = 0, shown = 0; i < count; i++)
    if (GetServerListItem2(list.get(), i, nullptr, &shown) != 0 && shown == number)
      names.push_back(keys.GetKeyName(kSection, i));
  if (names.size() > 1)
    throw Failed("key " + key + " is ambiguous: " + names[0] + " and " + names[1] + "; use `zelctl cfg unset " +
                 File() + " CLILIST NAME`");
  return names.empty() ? key : names[0];
}

void Remove(Arguments const& arguments, Terminal const& terminal) {
  auto const key = static_cast<unsigned int>(NumberArgument("KEY", arguments.key, 0, kHighestNumber));
  std::string const name = KeyShownAs(key);
  bool const done = RemoveKey(File(), kSection, name, arguments.writing, terminal, [&] {
    if (name == std::to_string(key)) return static_cast<void>(RemServerListItem2(Open().get(), key));
    CfgClass file;  // the list removes entries only by number
    if (file.Open(File())) file.DeleteKey(kSection, name);
  });
  if (done && terminal.json) terminal.PrintJson({{"key", key}});
}

void Clear(Arguments const& arguments, Terminal const& terminal) {
  RequireWholeLoad(File(), arguments.writing.force);
  auto const count = static_cast<std::uint64_t>(GetServerListCount(Open().get()));
  constexpr std::size_t kMostNames = 10;
  std::vector<Server> const servers = Servers(Open());
  std::string names;
  for (std::size_t i = 0; i < std::min(servers.size(), kMostNames); i++)
    names += (i == 0 ? ": " : ", ") + terminal.Shown(servers[i].item.serverName);
  if (servers.size() > kMostNames) names += ", ...";
  if (count > 0) RequireConsent(File(), "removes " + Counted(count, "server") + names, arguments.writing);
  bool const done = Make({{File()}}, arguments.writing, terminal, [&] {
    errno = 0;
    if (ClearServerList(Open().get()) == 0) throw Failed(CannotWrite(File(), errno));
  });
  if (done && terminal.json) terminal.PrintJson({{"removed", count}});
}

// The port of a UPS server in the client's defaults.
std::string DefaultPort() {
  ClientConfig defaults;
  GetClientDefConfig(&defaults);
  return std::to_string(defaults.serverPort);
}

}  // namespace

Command ServerCommands() {
  auto const arguments = std::make_shared<Arguments>();
  arguments->port = DefaultPort();
  auto const word = [](Field const& field, std::string& target) {
    return Argument(UpperCase(field.name), &target, std::string(field.meaning) + ": " + Limits(field));
  };
  Options const writing = WritingOptions(arguments->writing);
  return Family(
      "server", "UPS servers known to the clients on this computer",
      "The list is section [CLILIST] of upscli.cfg in the installation root, sorted by the text of the keys (\"10\" "
      "before \"2\"). "
      "The first server is also the client's (`zelctl client`).",
      {"zelctl server list", "zelctl server add ups-hall 192.168.0.10", "zelctl server remove 1",
       "zelctl server clear --dry-run"},
      {{"list", "List all servers", On(arguments, List)},
       {"add", "Add a server with the smallest free key", On(arguments, Add),
        Joined({{word(kName, arguments->name).Required().Filled(),
                 word(kAddress, arguments->address).Required().Filled(), word(kPort, arguments->port).ShowingDefault()},
                writing})},
       {"remove", "Remove the server with this key", On(arguments, Remove),
        Joined({{Argument("KEY", &arguments->key, "Key, as `zelctl server list` shows it").Required()}, writing})},
       {"clear", "Remove all servers", On(arguments, Clear), Joined({writing, {Yes(arguments->writing)}})}});
}
