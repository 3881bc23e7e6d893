// zelctl ports: the serial ports that a UPS can be connected to.
#include "commands/families.h"
#include "files/handle.h"
#include "records/fields.h"
#include "zelvane/api/serialports.h"

namespace {

struct Port {
  unsigned char number;
  std::string device;
};

void List(Terminal const& terminal) {
  void* opened = nullptr;
  OpenEnumSerialPorts(&opened);
  Handle const found = OpenHandle("/dev/ttyS*", opened, CloseEnumSerialPorts);
  std::vector<Port> ports;
  Port port;
  while (GetEnumSerialPorts(found.get(), static_cast<unsigned char>(ports.size()), &port.number) != 0) {
    port.device = GetInternalDeviceName(port.number);
    ports.push_back(port);
  }
  if (ports.empty())
    terminal.Note(
        "no usable serial port found (this user must be able to open it, and it must report its modem lines)");
  PrintRecords({Number<&Port::number>("port", ""), String<&Port::device>("device")}, ports, terminal);
}

}  // namespace

Command PortsCommand() {
  return {"ports",
          "List serial ports for a UPS",
          List,
          {},
          "Ports count from 1, like commPort in `zelctl ups`: port 1 is /dev/ttyS0.",
          {"zelctl ports"}};
}
