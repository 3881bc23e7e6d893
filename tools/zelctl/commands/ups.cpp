// zelctl ups: the UPS units of this installation, and the settings of the service that watches one.
#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <filesystem>

#include "commands/families.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/record.h"
#include "records/settings.h"
#include "records/typefields.h"
#include "terminal/latin1.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

namespace fs = std::filesystem;

// ---- The units. ----

constexpr std::int64_t kHighestUnit = 99;

struct Arguments {
  std::string number;
  bool force = false;
};

struct Unit {
  std::string name;
  std::string folder;
};

Unit UnitOf(std::string const& name) { return {name, GetZelvanePath() + name + "/"}; }

std::string ListFile() { return GetZelvanePath() + "srvlist.cfg"; }

void List(Terminal const& terminal) {
  NoteState(ListFile(), "there are no units", terminal);
  std::vector<Unit> units;
  char name[4];
  for (unsigned int i = 0; GetUpsListItem(i, name) != 0; i++) units.push_back(UnitOf(name));
  PrintRecords({String<&Unit::name>("unit"), String<&Unit::folder>("folder")}, units, terminal);
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  Unit const unit = UnitOf(IntToStr(static_cast<long>(NumberArgument("N", arguments.number, 0, kHighestUnit)), 3));
  RequireWholeLoad(ListFile(), arguments.force);
  std::string const model = GetZelvanePath() + "default/zelcfg.cfg";
  if (!DirExists(unit.folder) && !FilePermToRead(model))
    throw Failed(unit.folder + ": no such folder, and none can be made without " + model);
  if (AddUpsListItem(unit.name.c_str()) == 0)
    throw Failed("unit " + unit.name + " is not added: " + unit.folder + ", a file that " + model + " names, or " +
                 ListFile() + " cannot be made" + (CurrentUserIsAdmin() != 0 ? "" : " (it takes root)"));
  if (terminal.json) terminal.PrintJson({{"unit", unit.name}, {"folder", ToUtf8(unit.folder)}});
}

void Remove(Arguments const& arguments, Terminal const& terminal) {
  std::string const number = std::to_string(NumberArgument("N", arguments.number, 0, kHighestNumber));
  RequireWholeLoad(ListFile(), arguments.force);
  RemoveKey(ListFile(), "SRVLIST", number, [&] { RemUpsListItem(number.c_str()); });
  if (terminal.json) terminal.PrintJson({{"unit", IntToStr(std::stol(number), 3)}});
}

// ---- The settings. ----

Field Following(Field field, char const* decisive) {
  field.follows = decisive;
  return field;
}

Field Selecting(Field field) {
  field.selects = true;
  return field;
}

template <auto Member>
Field Timer(char const* name, char const* meaning) {
  constexpr std::int64_t kMillis = 1000;
  // Seconds in the file, and 32 bits of milliseconds in the record.
  Field field = Number<Member>(name, meaning, UINT32_MAX / kMillis * kMillis);
  field.step = kMillis;
  return field;
}

std::vector<Field> Fields() {
  using C = UpsSrvConfig;
  std::vector<Field> fields = TypeFields<C>();
  fields[0].selects = true;
  for (std::size_t i = 1; i < fields.size(); i++) fields[i].follows = fields[0].name;
  Field date = Number<&C::fullDischargeDate>("fullDischargeDate", "battery: date of the next full discharge (-1 none)",
                                             kHighestNumber, -1);
  date.kind = FieldKind::kDate;
  std::vector<Field> const own = {
      Flag<&C::nbShutdown>("nbShutdown", "shutdown: switch the UPS off as well"),
      Flag<&C::nbStandby>("nbStandby", "shutdown: put the UPS in standby"),
      Number<&C::nbShutdownDelay>("nbShutdownDelay", "shutdown: delay of the UPS", kHighestNumber, INT32_MIN),
      Flag<&C::histLog>("histLog", "keep the history log"),
      Number<&C::tcpPort>("tcpPort", "TCP port of this UPS server", kHighestPort),
      date,
      Number<&C::dischargeInterval>("dischargeInterval", "battery: days between full discharges"),
      Number<&C::batteryLevel>("batteryLevel", "battery: threshold of its level"),
      Timer<&C::timerManual>("timerManual", "timer: manual, ms"),
      Timer<&C::timerOnBattery>("timerOnBattery", "timer: on battery, ms"),
      Timer<&C::timerLowBattery>("timerLowBattery", "timer: battery low, ms"),
      Timer<&C::timerFailure>("timerFailure", "timer: failure, ms"),
      Timer<&C::timerRegister>("timerRegister", "timer: register, ms"),
      Selecting(Number<&C::commType>("commType", "line: 0 serial, 1 USB HID", 1)),
      Selecting(Number<&C::commPort>("commPort", "line: port, counted from 1", kHighestNumber, 1)),
      Following(Text<&C::commDriver>("commDriver", "line: driver"), "commType"),
      Number<&C::usbDevice>("usbDevice", "line: device of a USB port (usbhid.cfg)"),
      Number<&C::batteryChargeMode>("batteryChargeMode", "model: 0 low, 1 high charge *", 1),
      Number<&C::lineSensitivity>("lineSensitivity", "model: 0 very low to 4 very high *", 4),
  };
  fields.insert(fields.end(), own.begin(), own.end());
  return fields;
}

// Where the settings and the tables lie.
struct Place {
  std::string config;
  bool ownTables;

  std::string Main() const { return config + "upssrv.cfg"; }
  std::string Table(char const* name) const { return (ownTables ? config : GetZelvanePath()) + name; }
  std::string Types() const { return Table("upstype.cfg"); }
};

// A directory of "" is the installation root.
Place PlaceOf(std::string const& directory, bool ownTables) {
  return {directory.empty() ? GetZelvanePath() : IncludePathDelimiter(directory), ownTables};
}

// False when the table has no well-formed entry for the type.
bool FindType(Place const& place, std::int32_t type, UpsTypeItem& item) {
  Handle const types = OpenHandle(place.Types(), OpenUPSTypeList(place.Types().c_str()), CloseUPSTypeList);
  return GetUPSTypeListItemByType(types.get(), static_cast<unsigned int>(type), &item) != 0;
}

// The files that a save of `cfg` writes.
std::vector<std::string> Files(Place const& place, UpsSrvConfig const& cfg) {
  std::vector<std::string> files = {place.Main()};
  if (cfg.commType == 1) files.push_back(place.Table("usbhid.cfg"));
  UpsTypeItem type;
  if (FindType(place, cfg.upsType, type) && type.modelIndex >= 0)
    files.push_back(place.config + "upscfg" + IntToStr(type.modelIndex, 2) + ".cfg");
  return files;
}

int Read(Place const& place, UpsSrvConfig& cfg) {
  // The library would give the defaults too, but create the file.
  if (!InspectFile(place.Main()).exists) return GetUpsSrvDefConfig(&cfg);
  return GetUpsSrvConfig(place.config.c_str(), &cfg, place.ownTables ? 1 : 0);
}

int Write(Place const& place, UpsSrvConfig const& cfg, Terminal const& terminal) {
  UpsTypeItem type;
  if (!FindType(place, cfg.upsType, type)) {
    std::string const number = std::to_string(cfg.upsType);
    if (HasKey(place.Types(), "UPSTYPE", number))
      throw Failed(place.Types() + ": type " + number + " has fewer than five fields");
    UpsSrvConfig defaults;
    GetUpsSrvDefConfig(&defaults);
    if (cfg.upsType != defaults.upsType)
      terminal.Note(place.Types() + " has no type " + number + ": it counts as " + defaults.upsName);
  }
  return SetUpsSrvConfig(place.config.c_str(), &cfg, place.ownTables ? 1 : 0);
}

struct ScratchFolder {
  fs::path path;

  ScratchFolder() {
    std::string pattern = fs::temp_directory_path() / "zelctl-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw Failed(pattern + ": cannot be made");
    path = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  ScratchFolder(ScratchFolder const&) = delete;
  ScratchFolder& operator=(ScratchFolder const&) = delete;
};

// Another type has its own model file, another line its own entry in usbhid.cfg. The settings there must not be
// overwritten with those of the old type and line, so the library is asked for them: in a folder where the type and the
// line are the new ones already, and links lead to all the rest.
void Reselect(Place const& place, UpsSrvConfig& cfg) {
  ScratchFolder const scratch;
  std::string const folder = scratch.path.string() + "/";
  bool const written = SetUpsSrvConfig(folder.c_str(), &cfg, 1) != 0;
  std::vector<std::string> files = Files(place, cfg);
  files[0] = place.Types();
  for (std::string const& file : files) {
    std::string const link = folder + ExtractFileName(file);
    fs::remove(link);
    fs::create_symlink(fs::absolute(file), link);
  }
  UpsSrvConfig selected;
  if (!written || GetUpsSrvConfig(folder.c_str(), &selected, 1) == 0) throw Failed(folder + ": cannot be written");
  cfg.usbDevice = selected.usbDevice;
  cfg.batteryChargeMode = selected.batteryChargeMode;
  cfg.lineSensitivity = selected.lineSensitivity;
}

UpsSrvConfig& Settings(void* record) { return *static_cast<UpsSrvConfig*>(record); }
UpsSrvConfig const& Settings(void const* record) { return *static_cast<UpsSrvConfig const*>(record); }

void AddSettings(CLI::App* family, Terminal& terminal) {
  auto const own = std::make_shared<bool>(false);
  RecordFamily record = {};
  record.fields = Fields();
  record.make = [] { return std::shared_ptr<void>(std::make_shared<UpsSrvConfig>()); };
  record.files = [own](std::string const& directory, void const* r) {
    return Files(PlaceOf(directory, *own), Settings(r));
  };
  record.read = [own](char const* directory, void* r) { return Read(PlaceOf(directory, *own), Settings(r)); };
  record.defaults = [](void* r) { return GetUpsSrvDefConfig(&Settings(r)); };
  record.write = [own, &terminal](char const* directory, void const* r) {
    return Write(PlaceOf(directory, *own), Settings(r), terminal);
  };
  record.reselect = [own](std::string const& directory, void* r) { Reselect(PlaceOf(directory, *own), Settings(r)); };
  record.readFault = "cannot be read";
  record.notes =
      "Timers are kept in whole seconds. A date further away than one dischargeInterval is brought nearer by the "
      "save.\n"
      "Settings marked * are kept only if the file of the type's model in DIR, upscfgNN.cfg, has them already.\n";
  record.folder = Folder::kArgument;
  record.addOptions = [own](CLI::App* command) {
    command->add_flag("--own-tables", *own, "upstype.cfg and usbhid.cfg lie in DIR too, not in the installation root");
  };
  AddRecordCommands(family, terminal, record);
}

}  // namespace

std::vector<Field> UpsFields() { return Fields(); }

void AddUps(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("ups", "The UPS units of this installation, and the settings of each");
  family->footer(
      "The units are listed in srvlist.cfg of the installation root; the settings of one lie in upssrv.cfg of its\n"
      "folder there, and those of a single UPS in the root itself.\n\n"
      "  zelctl ups add 7\n"
      "  zelctl ups set 007 upsType=3 commType=1 timerOnBattery=120000\n"
      "  zelctl ups show 007 tcpPort");
  AddCommand(family, terminal, "list", "The units")->callback([&terminal] { List(terminal); });
  auto const arguments = std::make_shared<Arguments>();
  auto const add = [&](char const* name, char const* description, char const* footer,
                       void (*act)(Arguments const&, Terminal const&)) {
    CLI::App* const command = AddCommand(family, terminal, name, description);
    command->add_option("N", arguments->number, "Number of the unit")->required()->type_name("");
    AddForce(command, arguments->force);
    command->footer(footer);
    command->callback([arguments, act, &terminal] { act(*arguments, terminal); });
  };
  add("add", "List a unit (0 to 99), and make its folder if there is none",
      "A new folder gets the files that default/zelcfg.cfg of the installation root names. Its mode, 01230, lets only\n"
      "root use it: adding units takes root.",
      Add);
  add("remove", "Take a unit off the list", "Its folder and files stay.", Remove);
  AddSettings(family, terminal);
}
