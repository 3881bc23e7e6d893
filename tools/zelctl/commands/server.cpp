// zelctl server: the UPS servers that the clients of this computer know.
#include <string.h>

#include <CLI/CLI.hpp>

#include "commands/families.h"
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
  bool force = false;
};

// The item comes first: a pointer to the whole is one to the item, as the fields of both want it.
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

Handle OpenToWrite(Arguments const& arguments) {
  RequireWholeLoad(File(), arguments.force);
  return Open();
}

// The entries that are well formed; a remark on the others if a terminal is given.
std::vector<Server> Servers(Handle const& list, Terminal const* terminal = nullptr) {
  std::vector<Server> servers;
  CfgClass keys;  // the list tells no more of a malformed entry than that it is one
  if (terminal != nullptr) keys.OpenReadOnly(File());
  auto const count = static_cast<unsigned int>(GetServerListCount(list.get()));
  for (unsigned int i = 0; i < count; i++) {
    Server server;
    if (GetServerListItem2(list.get(), i, &server.item, &server.key) != 0)
      servers.push_back(server);
    else if (terminal != nullptr)
      terminal->Note(File() + ": [CLILIST] " + keys.GetKeyName(kSection, i) + " is not NAME;ADDRESS;PORT");
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
  NoteState(File(), "there are no servers", terminal);
  PrintRecords(kFields, Servers(Open(), &terminal), terminal);
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  ServerListItem item = {};
  PutArgument(kName, &item, arguments.name, terminal);
  PutArgument(kAddress, &item, arguments.address, terminal);
  PutArgument(kPort, &item, arguments.port, terminal);
  Handle const list = OpenToWrite(arguments);
  std::vector<Server> servers = Servers(list);
  if (Server const* const same = Find(servers, item))
    throw Failed("listed already under key " + std::to_string(same->key));
  if (AddServerListItem(list.get(), &item) == 0) throw Failed(File() + ": cannot be written");
  servers = Servers(list);
  if (terminal.json) PrintRecord(kFields, Find(servers, item), terminal);
}

// The key that `list` shows as this number: "7" or else "007"; also "hall", which is shown as 0.
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
    throw Failed("shown as " + key + " are " + names[0] + " and " + names[1] + "; `zelctl cfg unset` takes the name");
  return names.empty() ? key : names[0];
}

void Remove(Arguments const& arguments, Terminal const& terminal) {
  auto const key = static_cast<unsigned int>(NumberArgument("KEY", arguments.key, 0, kHighestNumber));
  RequireWholeLoad(File(), arguments.force);
  std::string const name = KeyShownAs(key);
  RemoveKey(File(), kSection, name, [&] {
    if (name == std::to_string(key)) return static_cast<void>(RemServerListItem2(Open().get(), key));
    CfgClass file;  // the list removes by number only
    if (file.Open(File())) file.DeleteKey(kSection, name);
  });
  if (terminal.json) terminal.PrintJson({{"key", key}});
}

void Clear(Arguments const& arguments, Terminal const& terminal) {
  Handle const list = OpenToWrite(arguments);
  int const count = GetServerListCount(list.get());
  if (ClearServerList(list.get()) == 0) throw Failed(File() + ": cannot be written");
  if (terminal.json) terminal.PrintJson({{"removed", count}});
}

// The client's defaults name the port of a UPS server.
std::string DefaultPort() {
  ClientConfig defaults;
  GetClientDefConfig(&defaults);
  return std::to_string(defaults.serverPort);
}

}  // namespace

void AddServer(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("server", "The UPS servers that the clients of this computer know");
  family->require_subcommand(1);
  family->footer(
      "The servers lie in [CLILIST] of upscli.cfg in the installation root, in ascending order of their keys' text.\n"
      "The first one is also the client's own (zelctl client).\n\n"
      "  zelctl server add ups-hall 192.168.0.10\n"
      "  zelctl server remove 1");
  auto const arguments = std::make_shared<Arguments>();
  auto const add = [&](char const* name, char const* description, void (*act)(Arguments const&, Terminal const&)) {
    CLI::App* const command = AddCommand(family, terminal, name, description);
    command->callback([arguments, act, &terminal] { act(*arguments, terminal); });
    return command;
  };
  auto const word = [](CLI::App* command, Field const& field, std::string& target) {
    return command->add_option(UpperCase(field.name), target, std::string(field.meaning) + ": " + Limits(field))
        ->type_name("");
  };
  add("list", "All servers", List);

  CLI::App* const adder = add("add", "Add a server under the smallest free key", Add);
  word(adder, kName, arguments->name)->required();
  word(adder, kAddress, arguments->address)->required();
  arguments->port = DefaultPort();
  word(adder, kPort, arguments->port)->capture_default_str();

  CLI::App* const remover = add("remove", "Remove the server of one key", Remove);
  remover->add_option("KEY", arguments->key, "Key, as `zelctl server list` shows it")->required()->type_name("");
  for (CLI::App* const writer : {adder, remover, add("clear", "Remove all servers", Clear)})
    AddForce(writer, arguments->force);
}
