// zelctl status: the state of an installation on one screen.
#include <algorithm>
#include <iostream>
#include <memory>

#include "commands/families.h"
#include "commands/processes.h"
#include "report/options.h"
#include "report/site.h"
#include "terminal/latin1.h"
#include "terminal/moment.h"
#include "terminal/page.h"
#include "terminal/terminal.h"
#include "zelvane/api/versioninfo.h"
#include "zelvane/system/svc.h"

namespace {

constexpr std::size_t kIndent = 12;
constexpr std::size_t kMostDuring = 4;

struct Arguments {
  OutageOptions codes;
  std::string schedule;
};

// "18 hours"
std::string Span(std::int64_t seconds) {
  auto const counted = [](std::int64_t n, char const* noun) { return Counted(static_cast<std::uint64_t>(n), noun); };
  if (seconds < 120) return counted(seconds, "second");
  if (seconds < 2 * kHourSeconds) return counted(seconds / 60, "minute");
  if (seconds < 2 * kDaySeconds) return counted(seconds / kHourSeconds, "hour");
  return counted(seconds / kDaySeconds, "day");
}

// The answer: lines under a few names, with a mark on those that need attention.
class Screen {
 public:
  explicit Screen(Terminal const& terminal) : terminal_(terminal) {}

  // Later lines under the same name do not repeat it.
  void Line(char const* name, std::string const& text, bool wantsLook = false) {
    ShownLine(name, terminal_.Shown(text), wantsLook);
  }

  // The same for a text with path names, which are not Latin-1.
  void PathLine(char const* name, std::string const& text, bool wantsLook = false) {
    ShownLine(name, terminal_.ShownName(text), wantsLook);
  }

  void Below(std::string const& text) const { std::cout << Wrapped(std::string(kIndent, ' '), terminal_.Shown(text)); }

  void Footer(std::string const& text) {
    std::cout << (inFooter_ ? "" : "\n") << ::Wrapped(terminal_.Shown(text));
    inFooter_ = true;
  }

 private:
  void ShownLine(char const* name, std::string const& text, bool wantsLook) {
    bool const repeats = last_ == name;
    last_ = name;
    std::string head = wantsLook ? "! " : "  ";
    if (!repeats) head += name;
    head.resize(kIndent, ' ');
    std::cout << Wrapped(head, text);
  }

  static std::string Wrapped(std::string const& head, std::string const& text) {
    return ::Wrapped(text, head, std::string(kIndent, ' '));
  }

  Terminal const& terminal_;
  std::string last_;
  bool inFooter_ = false;
};

// ---- Mains ----

// The state of the mains at the end of a log.
enum class Mains { kOn, kOff, kUnknown, kNoOutage };

Mains MainsOf(SiteEvents const& events) {
  if (!events.history || !TellsMains(*events.history)) return Mains::kUnknown;
  if (!HasOutage(*events.history)) return Mains::kNoOutage;
  return events.history->isOpen ? Mains::kOff : Mains::kOn;
}

std::int32_t Since(History const& history) { return history.isOpen ? history.current.begin : history.current.end; }

std::string MainsText(SiteEvents const& events, std::int32_t now) {
  Mains const mains = MainsOf(events);
  if (mains == Mains::kUnknown)
    return "unknown: " + events.file + (events.history ? " is damaged" : ": " + events.fault);
  if (mains == Mains::kNoOutage) return "no outage in the log";
  std::int32_t const since = Since(*events.history);
  std::int64_t const seconds = static_cast<std::int64_t>(now) - since;
  std::string text = (mains == Mains::kOff ? "off since " : "on since ") + TimeText(since);
  if (seconds < 0) return text;
  if (mains == Mains::kOn) return text + ", " + Span(seconds) + " ago";
  return text + ", for " + (seconds < 2 * kDaySeconds ? ClockText(seconds) : Span(seconds));
}

std::string EventText(LogEvent const& event, std::int32_t begin) {
  std::string const time = TimeText(event.stamp);
  bool const sameDay = !time.empty() && DayText(event.stamp) == DayText(begin);
  return (time.empty() ? "no date-time" : sameDay ? time.substr(11) : time) + "  " + event.text;
}

std::string OutagesText(History const& history) {
  Totals const totals = TotalsOf(history.outages);
  std::string const since = history.earliest < 0 ? "" : " since " + DayText(history.earliest);
  if (totals.count == 0) return "none" + since;
  return std::to_string(totals.count) + since + ", " + ClockText(totals.seconds) + " in all; the last " +
         LengthText(history.outages.back());
}

// Names the place if there are several.
std::string In(Site const& site, SiteEvents const& events) {
  return site.events.size() > 1 ? events.place.Title() + ": " : "";
}

void ShowMains(Site const& site, Screen& screen) {
  if (site.events.empty()) screen.Line("mains", "unknown: there is no event log", true);
  for (SiteEvents const& events : site.events) {
    Mains const mains = MainsOf(events);
    screen.Line("mains", In(site, events) + MainsText(events, site.now),
                mains == Mains::kOff || mains == Mains::kUnknown);
    if (mains != Mains::kOff) continue;
    std::vector<LogEvent> const& during = events.history->current.during;
    for (std::size_t i = during.size() - std::min(during.size(), kMostDuring); i < during.size(); i++)
      screen.Below(EventText(during[i], events.history->current.begin));
  }
  for (SiteEvents const& events : site.events)
    if (events.history) screen.Line("outages", In(site, events) + OutagesText(*events.history));
}

// ---- Other parts ----

std::string PlannedText(Site const& site) {
  std::string text = site.planned.empty() ? "nothing" : TimeText(site.planned[0].when) + ", " + site.planned[0].what;
  for (PlannedMoment const& passed : site.passed) text += "; the " + passed.what + " was due " + TimeText(passed.when);
  return text;
}

std::string UnitsText(Site const& site) {
  std::string const fault = UnitsFault(site);
  if (!fault.empty()) return "unknown: " + fault;
  std::string text;
  for (SitePlace const& unit : site.units) text += (text.empty() ? "" : ", ") + unit.name;
  for (std::string const& unit : site.missing)
    text += (text.empty() ? "" : "; ") + unit + " is listed but has no directory";
  return text.empty() ? "none listed" : text;
}

// "runs", "is stopped" or "is not installed"
std::string StateOf(std::string const& service) {
  if (!LivingNamed(service).empty()) return "runs";
  SvcManager manager;
  return manager.GetSvcByName(service) != nullptr ? "is stopped" : "is not installed";
}

std::string ServicesText(bool& allRun) {
  std::string const server = StateOf("zelsrv");
  std::string const shutter = StateOf("shutsrv");
  allRun = server == "runs" && shutter == "runs";
  if (server != shutter) return "zelsrv " + server + "; shutsrv " + shutter;
  return "zelsrv and shutsrv " + (server == "runs" ? "run" : "are" + server.substr(2));
}

std::string LogText(SiteEvents const& events) {
  if (!events.history) return events.file + ": " + events.fault;
  History const& history = *events.history;
  std::string const text = events.file + ": " + Counted(history.records, "record") + ", ";
  return text + (history.torn == 0 ? "sound" : "damaged (zelctl log salvage " + history.path + " OUT)");
}

std::string OtherLogsText(Site const& site) {
  std::string names;
  for (SiteLog const& log : site.otherLogs) names += (names.empty() ? "" : ", ") + log.file;
  return names + ": not checked";
}

void ShowSettings(Site const& site, Screen& screen) {
  for (SiteLint const& lint : site.lint)
    screen.PathLine("settings",
                    lint.file + ": " + Counted(lint.findings, "finding") + " (zelctl cfg lint " + lint.path + ")",
                    true);
  for (SiteUnread const& unread : site.unread) screen.PathLine("settings", unread.file + ": " + unread.reason, true);
  if (site.lint.empty() && site.unread.empty()) screen.Line("settings", "no findings");
}

std::string VersionsText(bool isOther) {
  VersionInfo info = {};
  std::string const own = std::string("zelctl ") + ZELVANE_VERSION;
  // The version of another installation is unknown.
  return isOther || GetZelvaneVersionInfo(&info) == 0 ? own : own + ", " + info.product;
}

void Show(Site const& site, bool isOther, Terminal const& terminal) {
  Screen screen(terminal);
  ShowMains(site, screen);
  screen.Line("planned", PlannedText(site));
  screen.Line("units", UnitsText(site), !site.missing.empty() || !UnitsFault(site).empty());
  if (!isOther) {
    bool allRun = false;
    std::string const services = ServicesText(allRun);
    screen.Line("services", services, !allRun);
  }
  for (SiteEvents const& events : site.events)
    screen.PathLine("logs", LogText(events), !events.history || events.history->torn > 0);
  if (!site.otherLogs.empty()) screen.PathLine("logs", OtherLogsText(site));
  ShowSettings(site, screen);
  screen.PathLine("root", site.root);
  screen.Line("versions", VersionsText(isOther));
  for (SiteEvents const& events : site.events)
    if (events.history) screen.Footer(In(site, events) + "Outages run from " + CodesText(*events.history) + ".");
}

// ---- JSON ----

Json JsonMoment(PlannedMoment const& moment) { return {{"time", TimeText(moment.when)}, {"what", moment.what}}; }

Json JsonEvents(SiteEvents const& events) {
  static char const* const kMains[] = {"on", "off", "unknown", "no outage"};
  Mains const mains = MainsOf(events);
  bool const isKnown = mains == Mains::kOn || mains == Mains::kOff;
  Json::Object json = {{"file", events.file}, {"mains", kMains[static_cast<int>(mains)]}};
  json.push_back({"since", isKnown ? Json(TimeText(Since(*events.history))) : Json()});
  if (!events.history) {
    json.push_back({"reason", ToUtf8(events.fault)});
    return json;
  }
  History const& history = *events.history;
  Totals const totals = TotalsOf(history.outages);
  json.insert(json.end(), {{"outages", totals.count},
                           {"seconds", totals.seconds},
                           {"last", totals.count == 0 ? Json() : Json(history.outages.back().Seconds())},
                           {"records", history.records},
                           {"tornBytes", history.torn}});
  return json;
}

template <class Elements, class Make>
Json ListOf(Elements const& elements, Make make) {
  Json::List list;
  for (auto const& element : elements) list.push_back(make(element));
  return list;
}

Json JsonServices() { return {{"zelsrv", StateOf("zelsrv")}, {"shutsrv", StateOf("shutsrv")}}; }

void ShowJson(Site const& site, bool isOther, Terminal const& terminal) {
  auto const finding = [](SiteFinding const& each) -> Json {
    return {{"where", ToUtf8(each.where)}, {"what", ToUtf8(each.what)}};
  };
  auto const otherLog = [](SiteLog const& log) -> Json { return {{"file", log.file}, {"bytes", log.bytes}}; };
  terminal.PrintJson({{"root", site.root},
                      {"logs", ListOf(site.events, JsonEvents)},
                      {"otherLogs", ListOf(site.otherLogs, otherLog)},
                      {"planned", ListOf(site.planned, JsonMoment)},
                      {"passed", ListOf(site.passed, JsonMoment)},
                      {"units", ListOf(site.units, [](SitePlace const& unit) { return Json(unit.name); })},
                      {"missingUnits", Json::ListOf(site.missing)},
                      {"services", isOther ? Json() : JsonServices()},
                      {"findings", ListOf(site.findings, finding)},
                      {"versions", VersionsText(isOther)}});
}

void Status(Arguments const& arguments, Terminal& terminal) {
  OutageCodes const codes = arguments.codes.Codes();
  RequireRoot();
  Site const site = LookAtSite(codes, arguments.schedule, terminal);
  bool const isOther = !terminal.root.empty();
  terminal.json ? ShowJson(site, isOther, terminal) : Show(site, isOther, terminal);
  if (!site.unread.empty()) terminal.status = 1;
  for (SiteEvents const& events : site.events) {
    Mains const mains = MainsOf(events);
    if (mains == Mains::kOff || mains == Mains::kUnknown) terminal.status = 1;
  }
}

}  // namespace

Command StatusCommand() {
  auto const arguments = std::make_shared<Arguments>();
  return {
      "status",
      "Show the state of an installation on one screen",
      On(arguments, Status),
      Joined({arguments->codes.Asked(false),
              {Value("--schedule", &arguments->schedule, "FILE", "Schedule file, for the next planned time")}}),
      "\"!\" marks lines that need attention. Exit code 1 if the mains are off, if a damaged log hides their state, or "
      "if a file cannot be read. With "
      "--root, the services of this computer are not shown.",
      {"zelctl status --root /srv/site --start 1 --end 2,4"}};
}
