// The lists of servers, UPS units and UPS types. Each call opens and closes the list, so that nothing another program
// writes in between is lost.
#include <memory>
#include <optional>
#include <vector>

#include "fields.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/serverlist.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upstypes.h"

namespace {

struct Server : ServerListItem {
  std::optional<unsigned> key;
};

using Handle = std::unique_ptr<void, int (*)(void*)>;

char const kServers[] = "upscli.cfg";
char const kUnits[] = "srvlist.cfg";

// Does something with the opened list.
template <class Work>
auto WithServers(Work&& work) {
  return Unlocked([&] {
    errno = 0;
    Handle const list(OpenServerList(), CloseServerList);
    if (list == nullptr) throw Failure(errno, kServers, "cannot be read");
    return work(list.get());
  });
}

std::vector<Server> Servers() {
  return WithServers([](void* list) {
    std::vector<Server> servers;
    auto const count = static_cast<unsigned>(GetServerListCount(list));
    for (unsigned i = 0; i < count; i++) {
      Server server{};
      unsigned key = 0;
      if (GetServerListItem2(list, i, &server, &key) == 0) continue;
      server.key = key;
      servers.push_back(server);
    }
    return servers;
  });
}

void Require(int result, char const* file, char const* message) {
  if (result == 0) throw Failure(0, file, message);
}

// A copy of the server: another thread may change the caller's.
void AddServer(Server server) {
  WithServers([&](void* list) {
    int const added = server.key ? AddServerListItem2(list, &server, *server.key) : AddServerListItem(list, &server);
    Require(added, kServers, "the server is already in the list, or the file cannot be written");
  });
}

std::vector<Text> Units() {
  return Unlocked([] {
    std::vector<Text> units;
    char name[4];
    for (unsigned i = 0, count = static_cast<unsigned>(GetUpsListCount()); i < count; i++) {
      if (GetUpsListItem(i, name) != 0) units.push_back({name});
    }
    return units;
  });
}

std::vector<UpsTypeItem> Types(std::optional<Path> const& path) {
  std::string const file = path ? path->bytes : "";
  return Unlocked([&] {
    errno = 0;
    Handle const list(OpenUPSTypeList(file.c_str()), CloseUPSTypeList);
    if (list == nullptr) throw Failure(errno, file, "the table of UPS types cannot be read");
    std::vector<UpsTypeItem> types;
    UpsTypeItem item;
    for (unsigned i = 0, count = static_cast<unsigned>(GetUPSTypeListCount(list.get())); i < count; i++) {
      if (GetUPSTypeListItem(list.get(), i, &item) != 0) types.push_back(item);
    }
    return types;
  });
}

std::optional<Text> ModelName(short model, unsigned subModel) {
  std::vector<char> name(4096);
  int const found = Unlocked([&] { return GetUPSModelName(model, subModel, name.data(), 4096); });
  return found == 0 ? std::nullopt : std::optional(GetText(name.data(), name.size()));
}

std::vector<std::pair<int, std::string>> Ports() {
  return Unlocked([] {
    std::vector<std::pair<int, std::string>> ports;
    void* list = nullptr;
    auto const count = static_cast<unsigned char>(OpenEnumSerialPorts(&list));
    Handle const closing(list, CloseEnumSerialPorts);
    unsigned char number = 0;
    for (unsigned char i = 0; i < count; i++) {
      if (GetEnumSerialPorts(list, i, &number) != 0) ports.emplace_back(number, GetInternalDeviceName(number));
    }
    return ports;
  });
}

void BindServers(py::module_& module) {
  py::class_<Server> server(module, "Server", "A UPS server known to the clients of this computer.");
  server.def(py::init([](Text const& name, Text const& address, int port, std::optional<unsigned> key) {
               Server made{};
               SetText(made.serverName, sizeof made.serverName, Part(name, "name"), "name");
               SetText(made.serverAddress, sizeof made.serverAddress, Part(address, "address"), "address");
               made.serverPort = port;
               made.key = key;
               return made;
             }),
             "name"_a, "address"_a, "port"_a = 4375, "key"_a = py::none());
  Fields<decltype(server), ServerListItem> fields(server);
  fields("name", &ServerListItem::serverName, "Host name, at most 20 characters.", true)(
      "address", &ServerListItem::serverAddress, "IP address, at most 15 characters.", true)(
      "port", &ServerListItem::serverPort, "TCP port.");
  server.def_readwrite("key", &Server::key, "Number of the entry in the file; None: the smallest free one.");
  Describe(server);

  module.def("servers", &Servers,
             "The servers in upscli.cfg of the installation root, in ascending order of their keys as text.");
  module.def("add_server", &AddServer, "server"_a,
             "Adds a server under its key and saves. Error if the same server is in the list.");
  module.def(
      "remove_server",
      [](Server item) {
        WithServers([&](void* list) {
          Require(RemServerListItem(list, &item), kServers, "no such server, or the file cannot be written");
        });
      },
      "server"_a, "Removes the first server with this name, address and port. Error without such a server.");
  module.def(
      "clear_servers",
      [] { WithServers([](void* list) { Require(ClearServerList(list), kServers, "cannot be written"); }); },
      "Removes all servers.");
}

void BindTypes(py::module_& module) {
  py::class_<UpsTypeItem> type(module, "UpsType", "One type of UPS.");
  Fields<decltype(type), UpsTypeItem> fields(type);
  fields("number", &UpsTypeItem::upsType, "Number of the type.")(
      "modelIndex", &UpsTypeItem::modelIndex, "Number NN of the model file upscfgNN.cfg; -1 for none.")(
      "name", &UpsTypeItem::upsName, "Display name.")("driver", &UpsTypeItem::upsDriver, "Protocol driver.")(
      "cfgModule", &UpsTypeItem::cfgModule, "Module of the configuration tool.")("cliModule", &UpsTypeItem::cliModule,
                                                                                 "Module of the client.");
  Describe(type);
  module.def("ups_types", &Types, "path"_a = py::none(),
             "The types in a table; None: upstype.cfg in the installation root. [] for a missing table.");
  module.def("model_name", &ModelName, "model_index"_a, "sub_model"_a = 0u,
             "The display name of a UPS model; \"AUTO\" for a negative index, None for an unknown one.");
  module.def(
      "capabilities",
      [](unsigned kind) {
        unsigned mask = 0;
        GetUPSCapabilities(kind, &mask);
        return mask;
      },
      "kind"_a, "The capabilities of a kind of communication, as bits defined by the programs.");
}

}  // namespace

void BindLists(py::module_& module) {
  BindServers(module);
  BindTypes(module);
  module.def("units", &Units, "The names of the UPS units of the installation: \"007\" ...");
  module.def(
      "add_unit",
      [](Text const& name) {
        Unlocked([&] {
          Require(AddUpsListItem(name.bytes.c_str()), kUnits,
                  "cannot add the unit: expected a number from 0 to 99, and for a new unit root and the template in\n"
                  "default/ of the installation root");
        });
      },
      "name"_a, "Adds the unit \"7\" (007) to the list, and creates its directory from the template if missing.");
  module.def(
      "remove_unit",
      [](Text const& name) {
        Unlocked([&] { Require(RemUpsListItem(name.bytes.c_str()), kUnits, "cannot be read or written"); });
      },
      "name"_a, "Removes the unit from the list; its directory stays. An unknown unit is no error.");
  module.def("serial_ports", &Ports, "The usable serial ports: number, counted from 1, and device file.");
}
