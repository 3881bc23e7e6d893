#include "report/site.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "files/format.h"
#include "files/recordlog.h"
#include "records/lint.h"
#include "records/schedulecheck.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/api/upslist.h"
#include "zelvane/api/upssrvconfig.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/proglist.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned int kMostUnits = 100;
constexpr char kEventLog[] = "logevt.rgt";
constexpr char const* kRootSettings[] = {"srvlist.cfg", "upscli.cfg", "upssrv.cfg", "upstype.cfg", "usbhid.cfg"};

// Also true of a file whose directory does not let us look.
bool IsThere(std::string const& path) {
  std::error_code none;
  return fs::status(path, none).type() != fs::file_type::not_found;
}

bool IsReadable(std::string const& path) {
  try {
    return InspectFile(path).exists;
  } catch (Failed const&) {
    return false;
  }
}

// A message on the file without its path.
std::string ReasonOf(Failed const& error, std::string const& path) {
  std::string const text = error.what();
  std::string const head = path + ": ";
  return text.compare(0, head.size(), head) == 0 ? text.substr(head.size()) : text;
}

bool IsFolder(std::string const& path) {
  std::error_code none;
  return fs::is_directory(path, none);
}

// The names in the directory, in order. Sets `fault` if it cannot be read.
std::vector<std::string> FilesIn(std::string const& folder, std::error_code& fault) {
  std::vector<std::string> names;
  for (auto const& entry : fs::directory_iterator(folder, fault)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

class Look {
 public:
  Look(Site& site, Terminal const& terminal) : site_(site), terminal_(terminal), root_({"", site.root}) {}

  void Units() {
    char name[4];
    std::set<std::string> seen;
    // Each call reads the list again. Entries after the hundredth are not units.
    for (unsigned int i = 0; i < kMostUnits && GetUpsListItem(i, name) != 0; i++) {
      SitePlace const unit = {name, site_.root + name + "/"};
      bool const isName = unit.name.find('/') == std::string::npos && unit.name.find("..") == std::string::npos;
      if (!isName || !seen.insert(unit.name).second) continue;
      IsFolder(unit.folder) ? site_.units.push_back(unit) : site_.missing.push_back(name);
    }
    if (site_.units.empty() || IsThere(root_.folder + "upssrv.cfg")) site_.services.push_back(root_);
    site_.services.insert(site_.services.end(), site_.units.begin(), site_.units.end());
  }

  void Logs() {
    for (SitePlace const& place : Places()) {
      if (IsThere(place.folder + kEventLog)) site_.events.push_back(EventsOf(place));
      std::error_code unread;
      for (std::string const& name : FilesIn(place.folder, unread)) {
        if (name == kEventLog || fs::path(name).extension() != ".rgt") continue;
        std::error_code none;
        auto const bytes = fs::file_size(place.folder + name, none);
        if (!none) site_.otherLogs.push_back({place.File(name), bytes});
      }
    }
  }

  void Moments(std::string const& schedule) {
    if (!schedule.empty()) Schedule(schedule);
    for (SitePlace const& place : site_.services) Discharge(place);
    auto const earlier = [](PlannedMoment const& a, PlannedMoment const& b) { return a.when < b.when; };
    std::stable_sort(site_.planned.begin(), site_.planned.end(), earlier);
  }

  void Findings() {
    for (SiteEvents const& events : site_.events) FindInEvents(events);
    if (site_.events.empty()) Find(kEventLog, "There is no event log.", "");
    for (std::string const& unit : site_.missing)
      Find("srvlist.cfg", "Unit " + unit + " is listed but has no directory.", "zelctl ups remove " + unit);
    for (char const* const name : kRootSettings) LintFile(root_, name);
    for (SitePlace const& unit : site_.units) LintUnit(unit);
  }

 private:
  std::vector<SitePlace> Places() const {
    std::vector<SitePlace> places = {root_};
    places.insert(places.end(), site_.units.begin(), site_.units.end());
    return places;
  }

  void Find(std::string where, std::string what, std::string advice) {
    site_.findings.push_back({std::move(where), std::move(what), std::move(advice)});
  }

  void Unread(std::string const& file, std::string const& reason) {
    Find(file, reason, "");
    site_.unread.push_back({file, reason});
  }

  SiteEvents EventsOf(SitePlace const& place) const {
    SiteEvents events = {place, place.File(kEventLog), std::nullopt, ""};
    try {
      History history = ReadHistory(RecordLog(place.folder + kEventLog, kEventSize), site_.codes);
      events.fault = history.check.Fault();
      if (events.fault.empty()) events.history = std::move(history);
    } catch (Failed const& error) {
      events.fault = ReasonOf(error, place.folder + kEventLog);
    }
    return events;
  }

  void FindInEvents(SiteEvents const& events) {
    if (!events.history) return Find(events.file, events.fault, "");
    History const& history = *events.history;
    std::string const path = " " + events.place.folder + kEventLog;
    if (history.isOpen && TellsMains(history))
      Find(events.file, "The mains failed " + TimeText(history.current.begin) + " and have not returned.", "");
    if (history.torn > 0)
      Find(events.file,
           "Damaged: " + Counted(history.torn, "byte") + " after " + Counted(history.records, "complete record") +
               ". The log counts as empty in the programs; here its complete records count.",
           "zelctl log salvage" + path + " OUT");
    if (history.setBack > 0)
      Find(events.file, Counted(history.setBack, "outage") + " omitted: the clock was set back meanwhile.",
           "zelctl log verify" + path);
    if (history.backwards > 0)
      Find(events.file, "The times step back " + Counted(history.backwards, "time") + ".", "zelctl log verify" + path);
  }

  // Only reads the entries; nothing is written.
  void Schedule(std::string const& file) {
    site_.hasSchedule = true;
    ProgList list;
    list.SetFile(file);
    if (!IsThere(file)) throw Failed(file + ": no such file");
    errno = 0;
    if (!list.ReadFromFile()) throw Failed(CannotRead(file, errno));
    std::vector<reg_proglist> entries;
    reg_proglist next = {};
    for (long i = 0; list.GetRegByIndex(i, &next); i++) entries.push_back(next);
    std::string const fault = ScheduleFault(entries, 0);
    if (!fault.empty()) throw Failed(file + ": not a schedule: " + fault);
    for (reg_proglist const& entry : entries)
      if (entry.dateTime >= site_.now) site_.planned.push_back({entry.dateTime, "schedule"});
  }

  void Discharge(SitePlace const& place) {
    // The library would create a missing file.
    if (!IsReadable(place.folder + "upssrv.cfg")) return;
    UpsSrvConfig settings;
    if (GetUpsSrvConfig(place.folder.c_str(), &settings, 0) == 0 || settings.fullDischargeDate < 0) return;
    PlannedMoment const moment = {settings.fullDischargeDate, "full discharge of " + place.Title()};
    (moment.when >= site_.now ? site_.planned : site_.passed).push_back(moment);
  }

  void LintFile(SitePlace const& place, std::string const& name) {
    std::string const path = place.folder + name;
    if (!IsThere(path)) return;
    std::string const file = place.File(name);
    try {
      std::vector<Finding> const found = Lint(path, terminal_);
      for (Finding const& finding : found) Find(file + ":" + std::to_string(finding.line), finding.message, "");
      if (!found.empty()) site_.lint.push_back({file, path, found.size()});
    } catch (Failed const& error) {
      Unread(file, ReasonOf(error, path));
    }
  }

  void LintUnit(SitePlace const& unit) {
    LintFile(unit, "upssrv.cfg");
    std::error_code fault;
    for (std::string const& name : FilesIn(unit.folder, fault))
      if (name.compare(0, 6, "upscfg") == 0 && fs::path(name).extension() == ".cfg") LintFile(unit, name);
    if (fault) Unread(unit.name, fault.message());
  }

  Site& site_;
  Terminal const& terminal_;
  SitePlace root_;
};

}  // namespace

std::string SitePlace::File(std::string const& file) const { return name.empty() ? file : name + "/" + file; }

Site LookAtSite(OutageCodes const& codes, std::string const& schedule, Terminal const& terminal) {
  Site site;
  site.root = GetZelvanePath();
  // Every file in it would look missing.
  if (access(site.root.c_str(), X_OK) != 0) throw Failed(site.root + ": cannot read: " + strerror(errno));
  site.now = static_cast<std::int32_t>(GetDateTime());
  site.codes = codes;
  Look look(site, terminal);
  look.Units();
  look.Logs();
  look.Moments(schedule);
  look.Findings();
  return site;
}

bool TellsMains(History const& history) { return history.torn == 0; }

std::string UnitsFault(Site const& site) {
  for (SiteUnread const& unread : site.unread)
    if (unread.file == "srvlist.cfg") return unread.file + ": " + unread.reason;
  return "";
}

bool HasOutage(History const& history) { return !history.outages.empty() || history.setBack > 0; }
