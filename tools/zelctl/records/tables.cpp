#include "records/tables.h"

#include <string.h>

#include <utility>

#include "records/typefields.h"
#include "zelvane/api/clientconfig.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/api/upssrvconfig.h"

namespace {

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
  // Seconds in the file, milliseconds in 32 bits in the record.
  Field field = Number<Member>(name, meaning, UINT32_MAX / kMillis * kMillis);
  field.step = kMillis;
  field.millis = 1;
  return field;
}

Field Words(std::vector<std::string> words, Field field) {
  field.words = std::move(words);
  return field;
}

Field UnderKey(std::string (*keyOf)(void const*), Field field) {
  field.keyOf = keyOf;
  return field;
}

}  // namespace

// clang-format off
#define ZELVANE_ACTION(member, meaning)                                                                               \
  Flag(#member, meaning,                                                                                              \
       [](void const* r) { return std::string(static_cast<ShutSrvConfig const*>(r)->actions.member ? "on" : "off"); }, \
       [](void* r, std::string const& value) { static_cast<ShutSrvConfig*>(r)->actions.member = value == "on"; })

std::vector<Field> ShutdownFields() {
  using C = ShutSrvConfig;
  return {
      In("upscli.cfg", "SHUTSRV", "ZELSRV", Text<&C::serverName>("serverName", "UPS server: name", FieldKind::kListText), 0),
      In("upscli.cfg", "SHUTSRV", "ZELSRV", Text<&C::serverAddress>("serverAddress", "UPS server: address", FieldKind::kListText), 1),
      In("upscli.cfg", "SHUTSRV", "ZELSRV", Number<&C::serverPort>("serverPort", "UPS server: TCP port", kHighestPort), 2),
      In("upscli.cfg", "SHUTSRV", "SYSTEMSHUTDOWN", ZELVANE_ACTION(systemShutdown, "action: shut the computer down")),
      In("upscli.cfg", "SHUTSRV", "CLOSEANDSAVEAPP", ZELVANE_ACTION(closeAndSaveApp, "action: close the applications")),
      In("upscli.cfg", "SHUTSRV", "POPUP", ZELVANE_ACTION(popup, "action: show a message")),
      In("upscli.cfg", "SHUTSRV", "MAILSEND", ZELVANE_ACTION(mailSend, "action: send mail")),
      In("upscli.cfg", "SHUTSRV", "RUNCOMMAND", ZELVANE_ACTION(runCommand, "action: run a command")),
      In("upscli.cfg", "SHUTSRV", "SYSTEMHIBERNATE", ZELVANE_ACTION(systemHibernate, "action: hibernate the computer")),
      In("upscli.cfg", "CLOSEANDSAVEAPP", "PATH", Text<&C::appPath>("appPath", "applications: directory")),
      In("upscli.cfg", "CLOSEANDSAVEAPP", "TIMELIMIT", Duration(1000, Number<&C::timeLimit>("timeLimit", "applications: time to close, seconds"))),
      In("upscli.cfg", "POPUP", "SHUTMESSAGE", Text<&C::shutMessage>("shutMessage", "message: shutdown *")),
      In("upscli.cfg", "POPUP", "CANCELMESSAGE", Text<&C::cancelMessage>("cancelMessage", "message: shutdown cancelled *")),
      In("upscli.cfg", "POPUP", "INTERVAL", Duration(1000, Number<&C::popupInterval>("popupInterval", "message: interval, seconds"))),
      In("upscli.cfg", "RUNCOMMAND", "CMDLINE", Text<&C::cmdLine>("cmdLine", "command: command line")),
      In("upscli.cfg", "RUNCOMMAND", "DELAY", Duration(1000, Number<&C::cmdDelay>("cmdDelay", "command: delay, seconds"))),
      In("upscli.cfg", "MAILSEND", "INTERVAL", Duration(1000, Number<&C::mailInterval>("mailInterval", "mail: interval, seconds"))),
      In("upscli.cfg", "MAILSEND", "SERVER", Text<&C::mailServer>("mailServer", "mail: SMTP server")),
      In("upscli.cfg", "MAILSEND", "PORT", Number<&C::mailPort>("mailPort", "mail: TCP port", kHighestPort)),
      In("upscli.cfg", "MAILSEND", "USERNAME", Text<&C::mailUser>("mailUser", "mail: user name")),
      In("upscli.cfg", "MAILSEND", "PASSWORD", Text<&C::mailPassword>("mailPassword", "mail: password", FieldKind::kPassword)),
      In("upscli.cfg", "MAILSEND", "FROM", Text<&C::mailFrom>("mailFrom", "mail: sender")),
      In("upscli.cfg", "MAILSEND", "TO", Text<&C::mailTo>("mailTo", "mail: recipients")),
      In("upscli.cfg", "MAILSEND", "SUBJECT", Text<&C::mailSubject>("mailSubject", "mail: shutdown subject *")),
      In("upscli.cfg", "MAILSEND", "MESSAGE", Text<&C::mailMessage>("mailMessage", "mail: shutdown text *")),
      In("upscli.cfg", "MAILSEND", "CANCELSUBJECT", Text<&C::mailCancelSubject>("mailCancelSubject", "mail: cancel subject *")),
      In("upscli.cfg", "MAILSEND", "CANCELMESSAGE", Text<&C::mailCancelMessage>("mailCancelMessage", "mail: cancel text *")),
      In(".zelvane", "ZELVANE", "LANGID", Number<&C::langId>("langId", "user's language (~/.zelvane)")),
  };
}
#undef ZELVANE_ACTION
// clang-format on

std::vector<Field> ClientFields() {
  using C = ClientConfig;
  return {
      In("upscli.cfg", "CLILIST", kFirstKey,
         Text<&C::serverName>("serverName", "UPS server: name", FieldKind::kListText), 0),
      In("upscli.cfg", "CLILIST", kFirstKey,
         Text<&C::serverAddress>("serverAddress", "UPS server: address", FieldKind::kListText), 1),
      In("upscli.cfg", "CLILIST", kFirstKey, Number<&C::serverPort>("serverPort", "UPS server: TCP port", kHighestPort),
         2),
      In("upscli.cfg", "UPSCLI", "LIBNAME", Text<&C::libName>("libName", "client module", FieldKind::kLowerText)),
      In(".zelvane", "ZELVANE", "LANGID", Number<&C::langId>("langId", "user's language (~/.zelvane)")),
      In(".zelvane", "ZELVANE", "COLORSCH",
         Number<&C::colorScheme>("colorScheme", "user's colour scheme (~/.zelvane)")),
  };
}

std::vector<Field> UpsFields() {
  using C = UpsSrvConfig;
  std::vector<Field> fields = TypeFields<C>();
  for (Field& field : fields) {
    bool const isType = strcmp(field.name, "upsType") == 0;
    bool const isDriver = strcmp(field.name, "upsDriver") == 0;
    field.selects = isType;
    field.follows = isType ? nullptr : "upsType";
    if (isType || isDriver)
      field = In("upssrv.cfg", "UPS", isType ? "UPSTYPE" : "UPSDL", field);
    else
      field = UnderKey([](void const* r) { return std::to_string(static_cast<C const*>(r)->upsType); },
                       In("upstype.cfg", "UPSTYPE", nullptr, field));
  }
  Field date = In("upssrv.cfg", "UPS", "UPSFULLDISCH",
                  Number<&C::fullDischargeDate>("fullDischargeDate", "battery: next full discharge, -1 for none",
                                                kHighestNumber, -1));
  date.kind = FieldKind::kDate;
  std::vector<Field> const own = {
      In("upssrv.cfg", "UPS", "NBSHUTDOWN", Flag<&C::nbShutdown>("nbShutdown", "shutdown: switch the UPS off as well")),
      In("upssrv.cfg", "UPS", "NBSTANDBY", Flag<&C::nbStandby>("nbStandby", "shutdown: put the UPS in standby")),
      In("upssrv.cfg", "UPS", "NBSHUTDOWNDELAY",
         Number<&C::nbShutdownDelay>("nbShutdownDelay", "shutdown: delay of the UPS", kHighestNumber, INT32_MIN)),
      In("upssrv.cfg", "UPS", "HISTLOG", Flag<&C::histLog>("histLog", "keep the history log")),
      In("upssrv.cfg", "TCPIP", "PORT", Number<&C::tcpPort>("tcpPort", "TCP port of this UPS server", kHighestPort)),
      date,
      In("upssrv.cfg", "UPS", "UPSDISCHDELAY",
         Number<&C::dischargeInterval>("dischargeInterval", "battery: days between full discharges")),
      In("upssrv.cfg", "TIMERS", "BATLEVEL", Number<&C::batteryLevel>("batteryLevel", "battery: level threshold")),
      In("upssrv.cfg", "TIMERS", "MANUAL", Timer<&C::timerManual>("timerManual", "timer: manual, ms")),
      In("upssrv.cfg", "TIMERS", "OPBAT", Timer<&C::timerOnBattery>("timerOnBattery", "timer: on battery, ms")),
      In("upssrv.cfg", "TIMERS", "BATBAIXA", Timer<&C::timerLowBattery>("timerLowBattery", "timer: battery low, ms")),
      In("upssrv.cfg", "TIMERS", "FALHA", Timer<&C::timerFailure>("timerFailure", "timer: failure, ms")),
      In("upssrv.cfg", "TIMERS", "CONTREG", Timer<&C::timerRegister>("timerRegister", "timer: register, ms")),
      Selecting(Words({"rs232", "usbhid"}, In("upssrv.cfg", "UPS", "COMMDL",
                                              Number<&C::commType>("commType", "connection: 0 serial, 1 USB HID", 1)))),
      Selecting(In("upssrv.cfg", "UPS", "COMMPORT",
                   Number<&C::commPort>("commPort", "connection: port, counted from 1", kHighestNumber, 1))),
      Following(In("upssrv.cfg", "UPS", "COMMDL", Text<&C::commDriver>("commDriver", "connection: driver")),
                "commType"),
      UnderKey([](void const* r) { return std::to_string(static_cast<C const*>(r)->commPort - 1); },
               In("usbhid.cfg", "USBHID", nullptr,
                  Number<&C::usbDevice>("usbDevice", "connection: device of a USB port (usbhid.cfg)"))),
      Words({"CARGABATLO", "CARGABATHI", "NADA"},
            In("upscfg", "INIT", "ICARGABAT",
               Number<&C::batteryChargeMode>("batteryChargeMode", "model: 0 low, 1 high charge *", 1))),
      Words({"SENSVLOW", "SENSLOW", "SENSNORMAL", "SENSHI", "SENSVHI", "NADA"},
            In("upscfg", "INIT", "ENVOLTREDE",
               Number<&C::lineSensitivity>("lineSensitivity", "model: 0 very low to 4 very high *", 4))),
  };
  fields.insert(fields.end(), own.begin(), own.end());
  return fields;
}
