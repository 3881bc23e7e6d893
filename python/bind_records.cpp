// The product's settings records: a function reads one, save() writes it.
#include <optional>
#include <vector>

#include "fields.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/config/paths.h"

namespace {

// Each with its directory.
struct UpsSettings : UpsSrvConfig {
  std::string folder;
  bool tablesInFolder = false;
};
struct ShutdownSettings : ShutSrvConfig {
  std::string folder;
};
struct ClientSettings : ClientConfig {
  std::string folder;  // none: the installation root
};
struct Installation : VersionInfo {};

UpsSettings ReadUps(std::optional<Path> const& folder, bool tablesInFolder) {
  return Unlocked([&] {
    UpsSettings settings;
    settings.folder = folder ? folder->bytes : GetZelvanePath();
    settings.tablesInFolder = tablesInFolder;
    if (GetUpsSrvConfig(settings.folder.c_str(), &settings, tablesInFolder ? 1 : 0) == 0)
      throw Failure(0, settings.folder, "the UPS settings cannot be read");
    return settings;
  });
}

ShutdownSettings ReadShutdown(std::optional<Path> const& folder) {
  return Unlocked([&] {
    ShutdownSettings settings;
    settings.folder = folder ? folder->bytes : "";
    if (GetShutSrvConfig(settings.folder.c_str(), &settings) == 0)
      throw Failure(0, settings.folder, "ZELSRV in upscli.cfg has fewer than three fields");
    return settings;
  });
}

ClientSettings ReadClient() {
  return Unlocked([] {
    ClientSettings settings;
    if (GetClientConfig(&settings) == 0)
      throw Failure(0, "", "the first server in upscli.cfg has fewer than three fields");
    return settings;
  });
}

Installation ReadInstallation() {
  Installation found{};
  if (Unlocked([&] { return GetZelvaneVersionInfo(&found); }) == 0)
    throw Failure(0, "", "the installation root is unknown");
  return found;
}

std::vector<std::string> Programs(Installation const& found) {
  std::vector<std::string> names;
  unsigned bit = ZELVANE_MODULE_ZELSRV;
  for (char const* const name : {"zelsrv", "shutsrv", "zelcli", "zelconfig", "zelbrws"}) {
    if ((found.modules & bit) != 0) names.emplace_back(name);
    bit <<= 1;
  }
  return names;
}

// Saves a copy: another thread may change the record meanwhile.
template <class Settings, class Class, class Save>
void DefineSave(Class& type, Save save, char const* help) {
  type.def(
      "save",
      [save](Settings record) {
        Unlocked([&] { Must(record.folder, "the settings cannot be saved", [&] { return save(record); }); });
      },
      help);
}

template <class Settings, class Class, class Record>
void DefineDefaults(Class& type, int (*fill)(Record*)) {
  type.def_static(
      "defaults",
      [fill](Path const& folder) {
        Settings settings{};
        settings.folder = folder.bytes;
        fill(&settings);
        return settings;
      },
      "folder"_a, "The default of every field; no file is read or written. save() writes to the directory.");
}

#define ZELVANE_FIELD(Record, name) #name, &Record::name

// One bit of ShutSrvActions.
#define ZELVANE_ACTION(name)                                                              \
#name, [](ShutdownSettings const& record)                                               \
              -> bool { return record.actions.name != 0; }, [](ShutdownSettings & record, \
                                                               bool on) { record.actions.name = on ? 1 : 0; }

void BindUps(py::module_& module) {
  py::class_<UpsSettings> type(module, "UpsSettings",
                               "The settings of the monitoring service of one UPS, from ups_settings().\n\n"
                               "Times are milliseconds; the files keep whole seconds.");
  DefineSave<UpsSettings>(
      type,
      [](UpsSettings const& record) {
        return SetUpsSrvConfig(record.folder.c_str(), &record, record.tablesInFolder ? 1 : 0);
      },
      "Writes upssrv.cfg, usbhid.cfg (comm_type 1) and the model's settings.\n\n"
      "ups_type alone selects the driver and the model: ups_name, ups_driver, cfg_module, cli_module,\n"
      "model_index and comm_driver are not written. OSError, or Error for a type with fewer than five fields;\n"
      "files saved before the failure stay saved.");
  DefineDefaults<UpsSettings>(type, GetUpsSrvDefConfig);
  Describe(type);
#define ZELVANE_UPS(name) ZELVANE_FIELD(UpsSrvConfig, name)
  Fields<decltype(type), UpsSrvConfig> fields(type);
  fields(ZELVANE_UPS(upsType), "Number of the type in upstype.cfg.")(
      ZELVANE_UPS(modelIndex), "Number NN of the model file upscfgNN.cfg; -1 for none. From the type.")(
      ZELVANE_UPS(upsName), "Display name; from the type.")(ZELVANE_UPS(upsDriver), "Protocol driver.")(
      ZELVANE_UPS(cfgModule), "Module of the configuration tool; from the type.")(
      ZELVANE_UPS(cliModule), "Module of the client; from the type.")(
      ZELVANE_UPS(nbShutdown), "Whether the UPS is switched off after a shutdown.")(
      ZELVANE_UPS(nbStandby), "NBSTANDBY.")(ZELVANE_UPS(histLog), "Whether the history logs are kept.")(
      ZELVANE_UPS(nbShutdownDelay), "NBSHUTDOWNDELAY, in the unit of the file.")(ZELVANE_UPS(tcpPort),
                                                                                 "TCP port of the service.")(
      "fullDischargeDate",
      [](UpsSettings const& record) {
        return record.fullDischargeDate > 0 ? std::optional(Moment{record.fullDischargeDate}) : std::nullopt;
      },
      [](UpsSettings& record, std::optional<Moment> const& when) {
        record.fullDischargeDate = static_cast<int32_t>(when ? when->seconds : -1);
      },
      "Date of the battery's next full discharge, or None. At most discharge_interval days from now when saved.")(
      ZELVANE_UPS(dischargeInterval), "Days between full discharges.")(ZELVANE_UPS(timerManual), "Milliseconds.")(
      ZELVANE_UPS(timerOnBattery), "Milliseconds.")(ZELVANE_UPS(timerLowBattery), "Milliseconds.")(
      ZELVANE_UPS(timerFailure), "Milliseconds.")(ZELVANE_UPS(timerRegister), "Milliseconds.")(
      ZELVANE_UPS(batteryLevel), "BATLEVEL.")(ZELVANE_UPS(commType), "1 USB HID, 0 serial line.")(
      ZELVANE_UPS(commPort), "Counted from 1.")(ZELVANE_UPS(commDriver), "\"usbhid\" or \"rs232\"; from comm_type.")(
      ZELVANE_UPS(usbDevice), "Number in usbhid.cfg for this port.")(ZELVANE_UPS(batteryChargeMode), "0 low, 1 high.")(
      ZELVANE_UPS(lineSensitivity), "0 very low to 4 very high.");
}

void BindShutdown(py::module_& module) {
  py::class_<ShutdownSettings> type(
      module, "ShutdownSettings",
      "The settings of the shutdown service, from shutdown_settings().\n\n"
      "Times are seconds. Texts may hold %c (computer), %i (address), %r (seconds left) and %m (reason).");
  DefineSave<ShutdownSettings>(
      type, [](ShutdownSettings const& record) { return SetShutSrvConfig(record.folder.c_str(), &record); },
      "Writes upscli.cfg and the user's own file (lang_id). OSError if either cannot be written.");
  DefineDefaults<ShutdownSettings>(type, GetShutSrvDefConfig);
  Describe(type);
#define ZELVANE_SHUT(name) ZELVANE_FIELD(ShutSrvConfig, name)
  Fields<decltype(type), ShutSrvConfig> fields(type);
  fields(ZELVANE_SHUT(langId), "Number of the user's language.")(
      ZELVANE_SHUT(serverAddress), "Of the UPS server.", true)(ZELVANE_SHUT(serverName), "Of the UPS server.", true)(
      ZELVANE_SHUT(serverPort), "TCP port of the UPS server.")(ZELVANE_ACTION(systemShutdown),
                                                               "Whether the system is shut down.")(
      ZELVANE_ACTION(closeAndSaveApp), "Whether programs are closed and documents saved.")(
      ZELVANE_ACTION(popup), "Whether messages are shown.")(ZELVANE_ACTION(mailSend), "Whether mail is sent.")(
      ZELVANE_ACTION(runCommand), "Whether cmd_line is run.")(ZELVANE_ACTION(systemHibernate),
                                                              "Whether the system hibernates.")(
      ZELVANE_SHUT(appPath), "Folder for saved documents.")(ZELVANE_SHUT(timeLimit), "Seconds for closing programs.")(
      ZELVANE_SHUT(popupInterval), "Seconds between messages.")(ZELVANE_SHUT(shutMessage), "The message shown.")(
      ZELVANE_SHUT(cancelMessage), "The message when a shutdown is cancelled.")(
      ZELVANE_SHUT(cmdDelay), "Seconds before cmd_line is run.")(ZELVANE_SHUT(cmdLine), "The command.")(
      ZELVANE_SHUT(mailInterval), "Seconds between mails.")(ZELVANE_SHUT(mailServer), "SMTP server.")(
      ZELVANE_SHUT(mailPort), "Its port.")(ZELVANE_SHUT(mailUser), "User there.")(
      ZELVANE_SHUT(mailPassword), "Plain here, Base64 in the file; repr() hides it, as_dict() does not.")(
      ZELVANE_SHUT(mailFrom), "Sender.")(ZELVANE_SHUT(mailSubject), "Subject.")(ZELVANE_SHUT(mailTo), "Recipient.")(
      ZELVANE_SHUT(mailMessage), "Text.")(ZELVANE_SHUT(mailCancelSubject), "Subject when cancelled.")(
      ZELVANE_SHUT(mailCancelMessage), "Text when cancelled.");
}

void BindClient(py::module_& module) {
  py::class_<ClientSettings> type(module, "ClientSettings", "The settings of the client, from client_settings().");
  DefineSave<ClientSettings>(
      type, [](ClientSettings const& record) { return SetClientConfig(&record); },
      "Writes the user's own file and upscli.cfg. OSError if either cannot be written.");
  Describe(type);
#define ZELVANE_CLIENT(name) ZELVANE_FIELD(ClientConfig, name)
  Fields<decltype(type), ClientConfig> fields(type);
  fields(ZELVANE_CLIENT(serverAddress), "Of the first server in the list.", true)(
      ZELVANE_CLIENT(serverName), "Of the first server in the list.", true)(ZELVANE_CLIENT(serverPort), "TCP port.")(
      ZELVANE_CLIENT(langId), "Number of the user's language.")(ZELVANE_CLIENT(colorScheme), "COLORSCH.")(
      ZELVANE_CLIENT(libName), "Module of the client, in lower case.");
}

}  // namespace

void BindRecords(py::module_& module) {
  BindUps(module);
  BindShutdown(module);
  BindClient(module);
  module.def("ups_settings", &ReadUps, "folder"_a = py::none(), "tables_in_folder"_a = false,
             "The settings of the UPS whose upssrv.cfg is in the directory; None: the installation root.\n\n"
             "A missing key has its default. BEWARE: a missing upssrv.cfg is created with the defaults.\n"
             "tables_in_folder: upstype.cfg and usbhid.cfg are in the directory too, not in the root.");
  module.def("shutdown_settings", &ReadShutdown, "folder"_a = py::none(),
             "The shutdown settings in upscli.cfg of the directory; None: the installation root.\n\n"
             "A missing file or key has the defaults. Error if the entry of the server has fewer than three fields.");
  module.def("client_settings", &ReadClient,
             "The client's settings: upscli.cfg of the installation root and the user's own file.");
  py::class_<Installation> type(module, "Installation", "The installed product, from installation().");
  type.def_property_readonly(
          "root", [](Installation const& found) { return Path{found.installPath}; },
          "The installation root with its trailing \"/\".")
      .def_property_readonly(
          "version", [](Installation const& found) { return Text{found.version}; },
          "Of the product; zelvane.__version__ is that of the library.")
      .def_property_readonly(
          "product", [](Installation const& found) { return Text{found.product}; }, "Its name.")
      .def_property_readonly("programs", &Programs, "The installed programs: \"zelsrv\", \"shutsrv\" ...");
  type.attr("_fields") = py::make_tuple("root", "version", "product", "programs");
  Describe(type);
  module.def("installation", &ReadInstallation, "Root, version and programs, from /etc/zelvane.conf.");
  module.def(
      "root", [] { return Path{Unlocked(GetZelvanePath)}; },
      "The installation root with its trailing \"/\": PATH in /etc/zelvane.conf, otherwise the directory of\n"
      "the running program, which is Python.");
  module.def(
      "set_root",
      [](std::optional<Path> const& folder) {
        if (SetZelvanePath(folder ? folder->bytes.c_str() : nullptr) == 0) throw std::bad_alloc();
      },
      "folder"_a = py::none(),
      "Sets the installation root of this program; None: PATH in /etc/zelvane.conf again. Call it before\n"
      "other threads use the library.");
}
