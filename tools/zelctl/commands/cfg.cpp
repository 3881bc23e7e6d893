// zelctl cfg: any configuration file, read and written by the engine.
#include <errno.h>

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "records/lint.h"
#include "terminal/latin1.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

struct Arguments {
  std::string file;
  std::optional<std::string> section;
  std::optional<std::string> key;
  std::string value;
  bool keepSpelling = false;
  Writing writing;
};

// A header line for the section; the unnamed one is "[ ]".
std::string Header(std::string const& section) { return "[" + (section.empty() ? " " : section) + "]"; }

std::string NameOf(Arguments const& arguments) {
  return Header(*arguments.section) + (arguments.key ? " " + *arguments.key : "");
}

// The arguments in the encoding of the files.
Arguments Converted(Arguments arguments, Terminal const& terminal) {
  if (arguments.section) arguments.section = terminal.FromArgument("SECTION", *arguments.section);
  if (arguments.key) arguments.key = terminal.FromArgument("KEY", *arguments.key);
  arguments.value = terminal.FromArgument("VALUE", arguments.value);
  return arguments;
}

void OpenToRead(CfgClass& cfg, std::string const& file, Terminal const& terminal) {
  Busy const busy("reading", {file});
  FileState const state = InspectFile(file);
  if (!state.exists) throw Failed(file + ": no such file");
  if (state.badLine != 0) terminal.Note(StoppedAt(file, state.badLine));
  if (!cfg.OpenReadOnly(file)) throw Failed(CannotRead(file, errno));
}

std::unique_ptr<CfgClass> OpenToWrite(Arguments const& arguments) {
  std::string const file = At(arguments.file);
  std::unique_ptr<CfgClass> cfg = arguments.keepSpelling ? std::unique_ptr<CfgClass>(std::make_unique<RegCfgClass>())
                                                         : std::make_unique<CfgClass>();
  if (!cfg->Open(file)) throw Failed(CannotRead(file, errno));
  return cfg;
}

// Lets `act` change the open file. False after a dry run.
bool Change(Arguments const& arguments, Terminal const& terminal, std::function<bool(CfgClass&)> const& act) {
  if (!InspectFile(arguments.file).exists) throw Failed(arguments.file + ": no such file");
  return Make({{arguments.file}}, arguments.writing, terminal, [&] {
    std::unique_ptr<CfgClass> const cfg = OpenToWrite(arguments);
    errno = 0;
    if (!act(*cfg)) throw Failed(CannotWrite(arguments.file, errno));
  });
}

Json::Object KeyJson(Arguments const& arguments) {
  Json::Object json = {{"section", ToUtf8(*arguments.section)}};
  if (arguments.key) json.push_back({"key", ToUtf8(*arguments.key)});
  return json;
}

void List(Arguments const& arguments, Terminal const& terminal) {
  CfgClass cfg;
  OpenToRead(cfg, arguments.file, terminal);
  std::vector<std::string> sections;
  if (arguments.section) {
    if (!cfg.SectionExists(*arguments.section))
      throw Failed(arguments.file + ": section " + terminal.Shown(Header(*arguments.section)) + " does not exist");
    sections.push_back(*arguments.section);
  } else {
    for (unsigned long i = 0; i < cfg.GetSectionCount(); i++) sections.push_back(cfg.GetSectionName(i));
  }

  Json::Object json;
  Table rows = {{"SECTION", "KEY", "VALUE"}};
  for (std::string const& section : sections) {
    Json::Object members;
    unsigned long const count = cfg.GetKeyCount(section);
    if (count == 0) rows.push_back({Header(section)});
    for (unsigned long i = 0; i < count; i++) {
      std::string const key = cfg.GetKeyName(section, i);
      std::string const value = cfg.ReadStr(section, i, "");
      bool const hide = IsPasswordKey(key) && !value.empty() && !terminal.showPasswords;
      members.push_back({ToUtf8(key), hide ? Json() : Json(ToUtf8(value))});
      rows.push_back({Header(section), key, hide ? Cell(kHiddenPassword) : Cell(value)});
    }
    json.push_back({ToUtf8(section), std::move(members)});
  }
  terminal.json ? terminal.PrintJson(json) : terminal.PrintTable(rows);
}

void Get(Arguments const& arguments, Terminal const& terminal) {
  if (IsPasswordKey(*arguments.key) && !terminal.showPasswords)
    throw WrongUsage(terminal.Shown(*arguments.key) + " is a password; use --show-password");
  CfgClass cfg;
  OpenToRead(cfg, arguments.file, terminal);
  if (!cfg.KeyExists(*arguments.section, *arguments.key))
    throw Failed(arguments.file + ": key " + terminal.Shown(NameOf(arguments)) + " does not exist");
  std::string const value = cfg.ReadStr(*arguments.section, *arguments.key, "");
  if (!terminal.json) return terminal.PrintValue(value);
  Json::Object json = KeyJson(arguments);
  json.push_back({"value", ToUtf8(value)});
  terminal.PrintJson(json);
}

void RefuseFault(char const* name, std::string const& fault) {
  if (!fault.empty()) throw WrongUsage(std::string(name) + ": " + fault);
}

void Set(Arguments const& arguments, Terminal const& terminal) {
  RefuseFault("SECTION", SectionFault(*arguments.section));
  RefuseFault("KEY", KeyFault(*arguments.key));
  RefuseFault("VALUE", ValueFault(arguments.value));
  bool const done = Change(arguments, terminal, [&](CfgClass& cfg) {
    return cfg.WriteStr(*arguments.section, *arguments.key, arguments.value);
  });
  if (!done || !terminal.json) return;
  Json::Object json = KeyJson(arguments);
  bool const hide = IsPasswordKey(*arguments.key) && !terminal.showPasswords;
  json.push_back({"value", hide ? Json() : Json(ToUtf8(arguments.value))});
  terminal.PrintJson(json);
}

bool Exists(CfgClass& cfg, Arguments const& arguments) {
  return arguments.key ? cfg.KeyExists(*arguments.section, *arguments.key) : cfg.SectionExists(*arguments.section);
}

using Values = std::map<std::pair<std::string, std::string>, std::string>;

// By section and key, as the programs read them.
Values ValuesOutside(std::string const& section, std::string const& file) {
  Values values;
  CfgClass cfg;
  if (!cfg.OpenReadOnly(file)) throw Failed(CannotRead(file, errno));
  unsigned long const sections = cfg.GetSectionCount();
  for (unsigned long i = 0; i < sections; i++) {
    std::string const name = cfg.GetSectionName(i);
    unsigned long const count = name == AnsiUpperCase(section) ? 0 : cfg.GetKeyCount(name);
    for (unsigned long n = 0; n < count; n++) values[{name, cfg.GetKeyName(name, n)}] = cfg.ReadStr(name, n, "");
  }
  return values;
}

// Repeated keys stay when their section is removed. Without its header they would count in the section above.
void RequireNoneMoves(Arguments const& arguments, Terminal const& terminal) {
  FileState const state = InspectFile(arguments.file);
  if (arguments.key || !state.exists || state.badLine != 0) return;
  Rehearsal const rehearsal({{arguments.file}, {}}, terminal);
  std::string const file = At(arguments.file);
  Values const before = ValuesOutside(*arguments.section, file);
  OpenToWrite(arguments)->EraseSection(*arguments.section);
  for (auto const& [place, value] : ValuesOutside(*arguments.section, file)) {
    if (before.count(place) != 0) continue;
    std::string const key = terminal.Shown(place.second);
    std::string fault = arguments.file + ": a repeated line of " + terminal.Shown(NameOf(arguments));
    fault.append(" would become ").append(terminal.Shown(Header(place.first))).append(" ").append(key);
    throw Failed(fault.append("; remove key ").append(key).append(" first"));
  }
}

// A forgotten key must not cost the section.
void RequireSectionMeant(Arguments const& arguments, std::string const& name) {
  CfgClass cfg;
  if (arguments.key || !cfg.OpenReadOnly(arguments.file)) return;
  unsigned long const count = cfg.GetKeyCount(*arguments.section);
  if (count > 0)
    RequireConsent(arguments.file, "removes " + name + " with " + Counted(count, "key"), arguments.writing);
}

void Unset(Arguments const& arguments, Terminal const& terminal) {
  std::string const name = terminal.Shown(NameOf(arguments));
  RequireNoneMoves(arguments, terminal);
  RequireSectionMeant(arguments, name);
  bool const done = Change(arguments, terminal, [&](CfgClass& cfg) {
    if (!Exists(cfg, arguments))
      throw Failed(arguments.file + ": " + (arguments.key ? "key " : "section ") + name + " does not exist");
    return arguments.key ? cfg.DeleteKey(*arguments.section, *arguments.key) : cfg.EraseSection(*arguments.section);
  });
  // A later line with the same key is in effect now.
  CfgClass now;
  if (done && now.OpenReadOnly(arguments.file) && Exists(now, arguments))
    throw Failed(arguments.file + ": removed, but a repeated line of " + name +
                 " is now in effect; run the command again");
  if (!done) return;
  if (terminal.json) terminal.PrintJson(KeyJson(arguments));
}

void ReportLint(Arguments const& arguments, Terminal& terminal) {
  std::optional<Busy> busy(std::in_place, "reading", std::vector<std::string>{arguments.file});
  std::vector<Finding> const findings = Lint(arguments.file, terminal);
  busy.reset();
  Json::List json;
  for (Finding const& finding : findings) {
    if (terminal.json)
      json.push_back({{"file", FileName{arguments.file}},
                      {"line", finding.line},
                      {"kind", finding.kind},
                      {"message", ToUtf8(finding.message)}});
    else
      std::cout << terminal.ShownName(arguments.file) << ':' << finding.line << ": " << terminal.Shown(finding.message)
                << '\n';
  }
  if (terminal.json) terminal.PrintJson(json);
  terminal.status = findings.empty() ? 0 : 1;
}

// The command, run on arguments converted to the encoding of the files.
std::function<void(Terminal&)> OnConverted(std::shared_ptr<Arguments> const& arguments,
                                           void (*act)(Arguments const&, Terminal const&)) {
  return [arguments, act](Terminal const& terminal) { act(Converted(*arguments, terminal), terminal); };
}

}  // namespace

Command CfgCommands() {
  auto const arguments = std::make_shared<Arguments>();
  Option const file = Argument("FILE", &arguments->file, "Configuration file").Required();
  Option const section =
      Argument("SECTION", &arguments->section, "Section; \"\" for the keys before the first header").Required();
  auto const key = [&](char const* help) { return Argument("KEY", &arguments->key, help); };
  Options const writing = WritingOptions(arguments->writing);
  return Family(
      "cfg", "Read, change and check any configuration file", "",
      {"zelctl cfg list upscli.cfg POPUP", "zelctl cfg get upscli.cfg POPUP INTERVAL",
       "zelctl cfg set upscli.cfg POPUP INTERVAL 30", "zelctl cfg unset upscli.cfg POPUP INTERVAL --dry-run",
       "zelctl cfg lint upscli.cfg && echo clean"},
      {{"list",
        "List sections, keys and values as the programs read them",
        OnConverted(arguments, List),
        {file, Argument("SECTION", &arguments->section, "Only this section; \"\" for the keys before the first header"),
         ShowPassword()},
        "Names are in upper case and ascending order."},
       {"get",
        "Print one value",
        OnConverted(arguments, Get),
        {file, section, key("Key (case-insensitive)").Required(), ShowPassword()},
        "Exit code 1 if the key does not exist."},
       {"set", "Set one value; no other line changes", OnConverted(arguments, Set),
        Joined({{file, section, key("Key").Required(),
                 Argument("VALUE", &arguments->value, "Value; \"\" for an empty value").Required(),
                 Flag("--reg", &arguments->keepSpelling, "Keep the spelling of new names instead of upper case"),
                 ShowPassword()},
                writing}),
        "Missing sections and keys are created: a key after the last one of its section, a section at the end of the "
        "file. Refuses what the file cannot hold: brackets, line feeds, leading and trailing blanks. Put \"--\" before "
        "an argument that starts with \"-\": zelctl cfg set x.cfg UPS NAME -- -x"},
       {"unset", "Remove a key or a whole section", OnConverted(arguments, Unset),
        Joined({{file, section, key("Key; without it, the whole section")}, writing, {Yes(arguments->writing)}}),
        "Comments and repeated lines stay. Refused if a repeated key would then count in the section above it. Exit "
        "code 1 "
        "if the name does not exist."},
       {"lint",
        "Report lines that are ignored, cannot be parsed, or have unexpected values",
        On(arguments, ReportLint),
        {file, ShowPassword()},
        "Prints FILE:LINE: MESSAGE for a syntax error, each line below it (the next save drops them), repeated keys "
        "and headers, and values that the programs do not expect. Exit code 1 if there are findings, otherwise 0 and "
        "no output."}});
}
