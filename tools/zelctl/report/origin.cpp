#include "report/origin.h"

#include <cstring>

#include "zelvane/config/cfgclass.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

using Lines = std::map<std::pair<std::string, std::string>, long>;

// Listens to the engine while it loads, so that the lines are those that it takes the values from.
class Listener final : public CfgClass {
 public:
  explicit Listener(Lines& lines) : lines_(lines) {}

  bool ParseLine(std::string const& line, bool noLines) override {
    line_++;
    return CfgClass::ParseLine(line, noLines);
  }

  bool LocateSection(std::string const& name, SectionPosition* position) override {
    section_ = AnsiUpperCase(name);
    return CfgClass::LocateSection(name, position);
  }

  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    lines_.emplace(std::make_pair(section_, AnsiUpperCase(key)), line_);
    return CfgClass::InsertKey(key, value, section, previous, line, create);
  }

 private:
  Lines& lines_;
  long line_ = 0;
  std::string section_;
};

struct FieldKey {
  char const* field;
  char const* section;
  char const* key;
};

constexpr FieldKey kUpsKeys[] = {{"upsType", "UPS", "UPSTYPE"},
                                 {"upsDriver", "UPS", "UPSDL"},
                                 {"nbShutdown", "UPS", "NBSHUTDOWN"},
                                 {"nbStandby", "UPS", "NBSTANDBY"},
                                 {"nbShutdownDelay", "UPS", "NBSHUTDOWNDELAY"},
                                 {"histLog", "UPS", "HISTLOG"},
                                 {"tcpPort", "TCPIP", "PORT"},
                                 {"fullDischargeDate", "UPS", "UPSFULLDISCH"},
                                 {"dischargeInterval", "UPS", "UPSDISCHDELAY"},
                                 {"batteryLevel", "TIMERS", "BATLEVEL"},
                                 {"timerManual", "TIMERS", "MANUAL"},
                                 {"timerOnBattery", "TIMERS", "OPBAT"},
                                 {"timerLowBattery", "TIMERS", "BATBAIXA"},
                                 {"timerFailure", "TIMERS", "FALHA"},
                                 {"timerRegister", "TIMERS", "CONTREG"},
                                 {"commType", "UPS", "COMMDL"},
                                 {"commPort", "UPS", "COMMPORT"},
                                 {"commDriver", "UPS", "COMMDL"}};

constexpr FieldKey kModelKeys[] = {{"batteryChargeMode", "INIT", "ICARGABAT"},
                                   {"lineSensitivity", "INIT", "ENVOLTREDE"}};

constexpr FieldKey kShutdownKeys[] = {{"serverName", "SHUTSRV", "ZELSRV"},
                                      {"serverAddress", "SHUTSRV", "ZELSRV"},
                                      {"serverPort", "SHUTSRV", "ZELSRV"},
                                      {"systemShutdown", "SHUTSRV", "SYSTEMSHUTDOWN"},
                                      {"closeAndSaveApp", "SHUTSRV", "CLOSEANDSAVEAPP"},
                                      {"popup", "SHUTSRV", "POPUP"},
                                      {"mailSend", "SHUTSRV", "MAILSEND"},
                                      {"runCommand", "SHUTSRV", "RUNCOMMAND"},
                                      {"systemHibernate", "SHUTSRV", "SYSTEMHIBERNATE"},
                                      {"appPath", "CLOSEANDSAVEAPP", "PATH"},
                                      {"timeLimit", "CLOSEANDSAVEAPP", "TIMELIMIT"},
                                      {"shutMessage", "POPUP", "SHUTMESSAGE"},
                                      {"cancelMessage", "POPUP", "CANCELMESSAGE"},
                                      {"popupInterval", "POPUP", "INTERVAL"},
                                      {"cmdLine", "RUNCOMMAND", "CMDLINE"},
                                      {"cmdDelay", "RUNCOMMAND", "DELAY"},
                                      {"mailInterval", "MAILSEND", "INTERVAL"},
                                      {"mailServer", "MAILSEND", "SERVER"},
                                      {"mailPort", "MAILSEND", "PORT"},
                                      {"mailUser", "MAILSEND", "USERNAME"},
                                      {"mailPassword", "MAILSEND", "PASSWORD"},
                                      {"mailFrom", "MAILSEND", "FROM"},
                                      {"mailTo", "MAILSEND", "TO"},
                                      {"mailSubject", "MAILSEND", "SUBJECT"},
                                      {"mailMessage", "MAILSEND", "MESSAGE"},
                                      {"mailCancelSubject", "MAILSEND", "CANCELSUBJECT"},
                                      {"mailCancelMessage", "MAILSEND", "CANCELMESSAGE"}};

template <std::size_t N>
FieldKey const* Find(FieldKey const (&keys)[N], std::string const& field) {
  for (FieldKey const& key : keys)
    if (field == key.field) return &key;
  return nullptr;
}

// `file` "" is the main one.
std::string Told(std::string const& file, long line) {
  if (line == 0) return "default";
  return (file.empty() ? "line " : file + ":") + std::to_string(line);
}

}  // namespace

KeyLines::KeyLines(std::string const& path) {
  Listener listener(lines_);
  listener.OpenReadOnly(path);
}

long KeyLines::Of(std::string const& section, std::string const& key) const {
  auto const found = lines_.find({section, key});
  return found == lines_.end() ? 0 : found->second;
}

UpsOrigins::UpsOrigins(std::string const& folder, std::string const& root, UpsSrvConfig const& settings)
    : settings_(settings),
      model_("upscfg" + IntToStr(settings.modelIndex, 2) + ".cfg"),
      main_(folder + "upssrv.cfg"),
      types_(root + "upstype.cfg"),
      usb_(root + "usbhid.cfg"),
      modelFile_(folder + model_) {}

std::string UpsOrigins::Of(std::string const& field) const {
  if (FieldKey const* const key = Find(kUpsKeys, field)) return Told("", main_.Of(key->section, key->key));
  if (FieldKey const* const key = Find(kModelKeys, field)) return Told(model_, modelFile_.Of(key->section, key->key));
  if (field != "usbDevice") return Told("upstype.cfg", types_.Of("UPSTYPE", std::to_string(settings_.upsType)));
  if (settings_.commType != 1) return "default";
  return Told("usbhid.cfg", usb_.Of("USBHID", std::to_string(static_cast<long>(settings_.commPort) - 1)));
}

ShutdownOrigins::ShutdownOrigins(std::string const& root)
    : main_(root + "upscli.cfg"), user_(GetUserPath() + ".zelvane") {}

std::string ShutdownOrigins::Of(std::string const& field) const {
  if (FieldKey const* const key = Find(kShutdownKeys, field)) return Told("", main_.Of(key->section, key->key));
  return Told("~/.zelvane", user_.Of("ZELVANE", "LANGID"));
}
