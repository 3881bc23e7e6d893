// zelctl report: one page for the person responsible for a site.
#include <filesystem>
#include <memory>

#include "commands/families.h"
#include "files/format.h"
#include "files/handle.h"
#include "files/picturefile.h"
#include "records/keylines.h"
#include "records/tables.h"
#include "report/options.h"
#include "report/reportpage.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/api/serverlist.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

namespace fs = std::filesystem;

struct Arguments {
  OutageOptions codes;
  std::string schedule;
  PictureFile page;
};

// A value with its unit, for people.
std::string ValueText(Field const& field, void const* record) {
  std::string value = field.get(record);
  std::string const name = field.name;
  if (field.kind == FieldKind::kPassword) return value.empty() ? "none" : "set, not shown";
  if (field.kind == FieldKind::kDate) return std::stoll(value) < 0 ? "none" : TimeText(std::stoi(value));
  if (field.step == 1000) return std::to_string(std::stoll(value) / 1000) + " s";
  return value;
}

// "timer: on battery, ms" becomes "Timer: on battery": the unit follows the value.
std::string NameText(Field const& field) {
  std::string name = field.meaning;
  std::string const unit = ", ms";
  if (field.step == 1000 && name.size() > unit.size()) name.resize(name.size() - unit.size());
  if (name.size() > 2 && name.compare(name.size() - 2, 2, " *") == 0) name.resize(name.size() - 2);
  if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

// The settings and their origins: "line 12" in the first file, "upstype.cfg:3" in another one.
std::vector<ShownSetting> Rows(std::vector<Field> const& fields, void const* record,
                               std::vector<std::string> const& files) {
  std::vector<std::string> const origins = Origins(fields, record, files);
  std::string const main = ExtractFileName(files[0]) + ":";
  std::vector<ShownSetting> rows;
  for (std::size_t i = 0; i < fields.size(); i++) {
    bool const isMain = origins[i].compare(0, main.size(), main) == 0;
    std::string const origin = isMain ? "line " + origins[i].substr(main.size()) : origins[i];
    rows.push_back({NameText(fields[i]), ValueText(fields[i], record), origin});
  }
  return rows;
}

// Also true of a missing file. The findings name the others.
bool CanBeRead(std::string const& path) {
  try {
    InspectFile(path);
    return true;
  } catch (Failed const&) {
    return false;
  }
}

ShownSettings ServiceOf(SitePlace const& place, std::string const& root) {
  UpsSrvConfig settings;
  // The library would create a missing file.
  bool const exists = InspectFile(place.folder + "upssrv.cfg").exists;
  int const read = exists ? GetUpsSrvConfig(place.folder.c_str(), &settings, 0) : GetUpsSrvDefConfig(&settings);
  if (read == 0) throw Failed(CannotRead(place.folder + "upssrv.cfg"));
  std::vector<std::string> files = {place.folder + "upssrv.cfg", root + "upstype.cfg", root + "usbhid.cfg"};
  if (settings.modelIndex >= 0) files.push_back(place.folder + "upscfg" + IntToStr(settings.modelIndex, 2) + ".cfg");
  return {place.Title() + ": " + settings.upsName, Rows(UpsFields(), &settings, files)};
}

ShownSettings ShutdownOf(std::string const& root) {
  ShutSrvConfig settings = {};
  if (!CanBeRead(root + "upscli.cfg")) return {"upscli.cfg cannot be read.", {}};
  if (GetShutSrvConfig(root.c_str(), &settings) == 0)
    return {"upscli.cfg: ZELSRV in [SHUTSRV] is not NAME;ADDRESS;PORT: nothing can be read.", {}};
  return {"Settings of this computer, and the line of upscli.cfg or another file that each comes from.",
          Rows(ShutdownFields(), &settings, {root + "upscli.cfg", GetUserPath() + ".zelvane"})};
}

std::vector<ShownServer> Servers() {
  std::vector<ShownServer> servers;
  Handle const list(OpenServerList(), CloseServerList);
  if (list == nullptr) return servers;
  auto const count = static_cast<unsigned int>(GetServerListCount(list.get()));
  for (unsigned int i = 0; i < count; i++) {
    ServerListItem item;
    unsigned int key = 0;
    if (GetServerListItem2(list.get(), i, &item, &key) != 0)
      servers.push_back({item.serverName, item.serverAddress, std::to_string(item.serverPort), std::to_string(key)});
  }
  return servers;
}

// "demo-root" of "/srv/demo-root/"
std::string NameOfRoot(std::string const& root) {
  std::error_code none;
  fs::path const path = fs::weakly_canonical(root, none);
  std::string const name = (path.filename().empty() ? path.parent_path() : path).filename();
  return name.empty() ? root : name;
}

void Report(Arguments const& arguments, Terminal& terminal) {
  OutageCodes const codes = arguments.codes.Codes();
  RequireRoot();
  arguments.page.RequireFree(arguments.schedule);
  ReportParts parts;
  parts.site = LookAtSite(codes, arguments.schedule, terminal);
  parts.rootName = NameOfRoot(parts.site.root);
  for (SitePlace const& place : parts.site.services)
    if (CanBeRead(place.folder + "upssrv.cfg")) parts.services.push_back(ServiceOf(place, parts.site.root));
  parts.shutdown = ShutdownOf(parts.site.root);
  parts.servers = Servers();
  std::string const page = ReportPage(parts);
  arguments.page.Write(page);
  if (!parts.site.unread.empty()) terminal.status = 1;
  std::uint64_t outages = 0;
  for (SiteEvents const& events : parts.site.events) {
    if (!events.history) terminal.status = 1;
    outages += events.history ? events.history->outages.size() : 0;
  }
  std::size_t const findings = parts.site.findings.size();
  arguments.page.Tell(Counted(outages, "outage") + ", " + Counted(findings, "finding"),
                      {{"outages", outages}, {"findings", findings}}, page.size(), terminal);
}

}  // namespace

Command ReportCommand() {
  auto const arguments = std::make_shared<Arguments>();
  Options page = arguments->page.Asked("--out", "Output file (HTML)");
  page.back().required = true;
  return {"report",
          "Write a report of an installation as one HTML page",
          On(arguments, Report),
          Joined({page,
                  arguments->codes.Asked(false),
                  {Value("--schedule", &arguments->schedule, "FILE", "Schedule file, for the next planned time")}}),
          "The page shows the settings with their origin, units and servers, outages by day, month and hour, and "
          "findings. It needs no script and no other file, and can be printed. It contains no passwords. Exit code 1 "
          "if a file cannot be read.",
          {"zelctl report --root /srv/site --out report.html",
           "zelctl report --out report.html --overwrite --schedule proglist.dat"}};
}
