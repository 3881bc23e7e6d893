// zelctl ups: the UPS units of this installation, and the settings of the service that monitors one.
#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>

#include "commands/families.h"
#include "commands/record.h"
#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "files/scratch.h"
#include "records/tables.h"
#include "terminal/latin1.h"
#include "zelvane/api/serialports.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

namespace fs = std::filesystem;

// ---- The units ----

constexpr std::int64_t kHighestUnit = 99;

struct Arguments {
  std::string number;
  Writing writing;
};

struct Unit {
  std::string name;
  std::string folder;
};

Unit UnitOf(std::string const& name) { return {name, GetZelvanePath() + name + "/"}; }

std::string ListFile() { return GetZelvanePath() + "srvlist.cfg"; }

std::vector<std::string> UnitNames() {
  std::vector<std::string> names;
  char name[4];
  for (unsigned int i = 0; GetUpsListItem(i, name) != 0; i++) names.emplace_back(name);
  return names;
}

void List(Terminal const& terminal) {
  NoteState(ListFile(), "no units defined", terminal);
  std::vector<Unit> units;
  for (std::string const& name : UnitNames()) units.push_back(UnitOf(name));
  PrintRecords({String<&Unit::name>("unit"), Path<&Unit::folder>("directory")}, units, terminal);
}

// The contents of a new unit.
std::string Template() { return GetZelvanePath() + "default/zelcfg.cfg"; }

std::vector<std::string> TemplateFiles() {
  std::vector<std::string> names;
  CfgClass cfg;
  if (!cfg.OpenReadOnly(Template())) return names;
  for (unsigned long i = 0; i < cfg.GetKeyCount("FILES"); i++) names.push_back(cfg.ReadStr("FILES", i, ""));
  names.erase(std::remove(names.begin(), names.end(), ""), names.end());
  return names;
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  Unit const unit = UnitOf(IntToStr(static_cast<long>(NumberArgument("N", arguments.number, 0, kHighestUnit)), 3));
  Edit edit = {{ListFile()}, {Template()}};
  int const fault = FolderFault(unit.folder);
  if (fault != 0 && fault != ENOENT) throw Failed(unit.folder + ": " + strerror(fault));
  bool const isNew = fault != 0;
  std::string const source = isNew ? ExtractFilePath(Template()) : unit.folder;
  if (isNew && !FilePermToRead(Template()))
    throw Failed(unit.folder + ": no such directory, and it cannot be created: " + CannotRead(Template()));
  if (!isNew) edit.reads.push_back(unit.folder);
  std::string missing;
  for (std::string const& name : TemplateFiles()) {
    if (!FilePermToRead(source + name)) missing += (missing.empty() ? "" : ", ") + name;
    if (isNew) edit.files.push_back(unit.folder + name), edit.reads.push_back(source + name);
  }
  if (!missing.empty()) throw Failed(source + ": lacks " + missing + ", which " + Template() + " lists");
  bool const done = Make(edit, arguments.writing, terminal, [&] {
    errno = 0;
    if (AddUpsListItem(unit.name.c_str()) == 0)
      throw Failed("unit " + unit.name + " not added: cannot create " + unit.folder + ", a file named in " +
                   Template() + ", or " + ListFile() + (errno == 0 ? "" : std::string(": ") + strerror(errno)) +
                   (CurrentUserIsAdmin() != 0 ? "" : " (root is required)"));
  });
  if (done && terminal.json) terminal.PrintJson({{"unit", unit.name}, {"directory", FileName{unit.folder}}});
}

void Remove(Arguments const& arguments, Terminal const& terminal) {
  std::string const number = std::to_string(NumberArgument("N", arguments.number, 0, kHighestNumber));
  std::string const unit = IntToStr(std::stol(number), 3);
  RequireWholeLoad(ListFile(), arguments.writing.force);
  if (!HasKey(ListFile(), "SRVLIST", number)) throw Failed(ListFile() + ": unit " + unit + " is not listed");
  RequireConsent(ListFile(), "removes unit " + unit + "; its directory and files stay", arguments.writing);
  bool const done =
      RemoveKey(ListFile(), "SRVLIST", number, arguments.writing, terminal, [&] { RemUpsListItem(number.c_str()); });
  if (done && terminal.json) terminal.PrintJson({{"unit", unit}});
}

// ---- The settings ----

// The directories of the settings and of the tables.
struct Place {
  std::string config;
  bool ownTables;

  std::string Main() const { return config + "upssrv.cfg"; }
  std::string Table(char const* name) const { return (ownTables ? config : GetZelvanePath()) + name; }
  std::string Types() const { return Table("upstype.cfg"); }
};

// "" means the installation root.
Place PlaceOf(std::string const& directory, bool ownTables) {
  return {directory.empty() ? GetZelvanePath() : IncludePathDelimiter(directory), ownTables};
}

// False if the table has no valid entry for the type.
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
  // The library would return the defaults too, but create the file.
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
      terminal.Note(place.Types() + ": no type " + number + "; used as " + defaults.upsName);
  }
  return SetUpsSrvConfig(place.config.c_str(), &cfg, place.ownTables ? 1 : 0);
}

// Another type has its own model file, and another line has its own entry in usbhid.cfg. The settings there must not be
// overwritten with those of the old type and line. So the library reads them from a directory that already has the new
// type and line, and links to everything else.
void Reselect(Place const& place, UpsSrvConfig& cfg) {
  ScratchFolder const scratch;
  std::string const folder = scratch.Path() + "/";
  bool const written = SetUpsSrvConfig(folder.c_str(), &cfg, 1) != 0;
  std::vector<std::string> files = Files(place, cfg);
  files[0] = place.Types();
  for (std::string const& file : files) {
    std::string const link = folder + ExtractFileName(file);
    fs::remove(link);
    fs::create_symlink(fs::absolute(file), link);
  }
  UpsSrvConfig selected;
  if (!written || GetUpsSrvConfig(folder.c_str(), &selected, 1) == 0) throw Failed(CannotWrite(folder));
  cfg.usbDevice = selected.usbDevice;
  cfg.batteryChargeMode = selected.batteryChargeMode;
  cfg.lineSensitivity = selected.lineSensitivity;
}

UpsSrvConfig& Settings(void* record) { return *static_cast<UpsSrvConfig*>(record); }
UpsSrvConfig const& Settings(void const* record) { return *static_cast<UpsSrvConfig const*>(record); }

std::vector<Command> Settings() {
  auto const own = std::make_shared<bool>(false);
  RecordFamily record = {};
  record.fields = UpsFields();
  record.make = [] { return std::shared_ptr<void>(std::make_shared<UpsSrvConfig>()); };
  record.files = [own](std::string const& directory, void const* r) {
    return Files(PlaceOf(directory, *own), Settings(r));
  };
  record.read = [own](char const* directory, void* r) { return Read(PlaceOf(directory, *own), Settings(r)); };
  record.defaults = [](void* r) { return GetUpsSrvDefConfig(&Settings(r)); };
  record.write = [own](char const* directory, void const* r, Terminal const& terminal) {
    return Write(PlaceOf(directory, *own), Settings(r), terminal);
  };
  record.reselect = [own](std::string const& directory, void* r) { Reselect(PlaceOf(directory, *own), Settings(r)); };
  record.tables = [own](std::string const& directory) {
    return std::vector<std::string>{PlaceOf(directory, *own).Types()};
  };
  record.readFault = "cannot read";
  record.notes =
      "Timers are rounded down to whole seconds. A save brings the full discharge forward to at most "
      "dischargeInterval days from now.\nSettings marked * are saved only if the model file upscfgNN.cfg in DIR "
      "already has them.\n";
  record.folder = Folder::kArgument;
  record.places = UnitNames;
  record.options = {
      Flag("--own-tables", own.get(), "Use upstype.cfg and usbhid.cfg in DIR instead of the installation root")};
  return RecordCommands(record);
}

}  // namespace

Command UpsCommands() {
  auto const arguments = std::make_shared<Arguments>();
  Options const options =
      Joined({{Argument("N", &arguments->number, "Number of the unit").Required().Suggesting([](std::string const&) {
                return UnitNames();
              })},
              WritingOptions(arguments->writing)});
  std::vector<Command> commands = {
      {"list", "List all units", List},
      {"add", "Add a unit (0 to 99); create its directory if it is missing", On(arguments, Add), options,
       "Copies the files named in default/zelcfg.cfg of the installation root into a new directory. Its mode is 01230, "
       "so only root can use it; run as root."},
      {"remove", "Remove a unit from the list", On(arguments, Remove), Joined({options, {Yes(arguments->writing)}}),
       "Its directory and files stay."}};
  std::vector<Command> const settings = Settings();
  commands.insert(commands.end(), settings.begin(), settings.end());
  return Family("ups", "UPS units of this installation and their settings",
                "Units are listed in srvlist.cfg of the installation root. Settings are in upssrv.cfg of the unit's "
                "directory; with a single UPS, in the root itself.",
                {"zelctl ups list", "zelctl ups add 7", "zelctl ups remove 7 --dry-run", "zelctl ups show 007 tcpPort",
                 "zelctl ups set 007 upsType=3 commType=1 timerOnBattery=120000", "zelctl ups defaults"},
                std::move(commands));
}
