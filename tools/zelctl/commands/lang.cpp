// zelctl lang: the programs' texts in each language, and the current user's overrides.
#include <errno.h>

#include <map>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/fields.h"
#include "terminal/latin1.h"
#include "zelvane/api/shutsrvconfig.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/lang/langclass.h"
#include "zelvane/lang/language.h"

namespace {

constexpr char kLanguages[] = "LANG";

struct Arguments {
  std::string number;
  std::string text;
  std::string language;
  std::string other;
  Writing writing;
};

std::string SystemFile() { return GetZelvanePath() + "zellang.cfg"; }
std::string UserFile() { return GetUserPath() + ".zellang.cfg"; }

// The texts of one language in one file.
struct Table : LangClass {
  Table(std::string const& file, long lang) {
    SetFileName(file);
    known = LoadStrings(lang);
  }
  std::map<std::int32_t, std::string> const& Texts() const { return strings_; }

  bool known;
};

long LanguageArgument(std::string const& name, std::string const& text) {
  return static_cast<long>(NumberArgument(name, text, 0, kHighestNumber));
}

// The requested language, or else the user's.
long Language(Arguments const& arguments) {
  if (!arguments.language.empty()) return LanguageArgument("--lang", arguments.language);
  CfgClass cfg;
  // The file is usually missing; the default comes from the library.
  ShutSrvConfig defaults;
  GetShutSrvDefConfig(&defaults);
  return cfg.OpenReadOnly(GetUserPath() + ".zelvane") ? cfg.ReadInt("ZELVANE", "LANGID", defaults.langId)
                                                      : static_cast<long>(defaults.langId);
}

// ---- The languages ----

struct Listed {
  std::int32_t number;
  std::string name;
  std::int64_t texts;
  std::int64_t own;  // from the user's file
};

// The number that a key or section names; -1 if it names none.
long NumberOf(std::string const& name) {
  long const number = StrToIntDef(name, -1);
  return number >= 0 && IntToStr(number) == name ? number : -1;
}

void List(Arguments const&, Terminal& terminal) {
  NoteState(SystemFile(), "no languages defined", terminal);
  CfgClass system;
  CfgClass user;
  user.OpenReadOnly(UserFile());
  std::map<long, std::string> names;
  if (system.OpenReadOnly(SystemFile())) {
    for (unsigned long i = 0; i < system.GetSectionCount(); i++) names[NumberOf(system.GetSectionName(i))];
    for (unsigned long i = 0; i < system.GetKeyCount(kLanguages); i++)
      names[NumberOf(system.GetKeyName(kLanguages, i))] = system.ReadStr(kLanguages, i, "");
  }
  names.erase(-1);
  std::vector<Listed> languages;
  for (auto const& [number, name] : names) {
    std::string const section = IntToStr(number);
    languages.push_back({static_cast<std::int32_t>(number), name,
                         static_cast<std::int64_t>(system.GetKeyCount(section)),
                         static_cast<std::int64_t>(user.GetKeyCount(section))});
  }
  PrintRecords({Number<&Listed::number>("number", ""), String<&Listed::name>("name"),
                Number<&Listed::texts>("texts", ""), Number<&Listed::own>("own", "")},
               languages, terminal);
}

// ---- One text ----

Handle Open(long lang) {
  return OpenHandle(SystemFile(), OpenLang(lang), [](void* tables) {
    CloseLang(tables);
    return 1;
  });
}

long TextNumber(Arguments const& arguments) {
  return static_cast<long>(NumberArgument("ID", arguments.number, 0, kHighestNumber));
}

Json TextJson(long number, long lang, void* tables) {
  std::string const text = GetLangStr(tables, number);
  std::string const installed = GetSystemLangStr(tables, number);
  return {{"id", number}, {"language", lang}, {"text", ToUtf8(text)}, {"installed", ToUtf8(installed)}};
}

void Get(Arguments const& arguments, Terminal& terminal) {
  long const number = TextNumber(arguments);
  long const lang = Language(arguments);
  Handle const tables = Open(lang);
  std::string const text = GetLangStr(tables.get(), number);
  if (text.empty())
    throw Failed("language " + std::to_string(lang) + " has no text " + std::to_string(number) + " in " + UserFile() +
                 " or " + SystemFile());
  terminal.json ? terminal.PrintJson(TextJson(number, lang, tables.get())) : terminal.PrintValue(text);
}

// A new section goes to the end of the file, where programs do not read it after a bad line. The library would then
// change the installed file, for all users.
void RequireReach(std::string const& file, long lang) {
  FileState const state = InspectFile(file);
  CfgClass own;
  if (state.badLine == 0 || !own.OpenReadOnly(file) || own.SectionExists(IntToStr(lang))) return;
  throw Failed(StoppedAt(file, state.badLine) + "; the texts of language " + std::to_string(lang) +
               " would be among them. Correct that line first");
}

void Set(Arguments const& arguments, Terminal& terminal) {
  long const number = TextNumber(arguments);
  std::string const text = terminal.FromArgument("TEXT", arguments.text);
  std::string const fault = text.find('\r') == std::string::npos ? ValueFault(text) : "contains a carriage return";
  if (!fault.empty()) throw WrongUsage("TEXT: " + fault);
  long const lang = Language(arguments);
  RequireWholeLoad(UserFile(), arguments.writing.force);
  RequireReach(UserFile(), lang);
  if (!text.empty() && *GetSystemLangStr(Open(lang).get(), number) == '\0')
    terminal.Note(SystemFile() + ": no text " + std::to_string(number) + " of language " + std::to_string(lang) +
                  "; check both numbers");
  Edit edit = {{UserFile()}, {SystemFile()}};
  // The library writes the installed file only if the user's file cannot be written.
  if (!IsWritable(UserFile())) std::swap(edit.files, edit.reads);
  bool const done = Make(edit, arguments.writing, terminal, [&] {
    errno = 0;
    bool const isSet = SetLangStr(Open(lang).get(), number, text.c_str()) != 0;
    int const error = errno;  // of the installed file, which is the last one tried
    if (!isSet) throw Failed(CannotWrite(UserFile()) + "; " + CannotWrite(SystemFile(), error));
  });
  if (!done) return;
  if (Table(UserFile(), lang).GetLangStr(number) != text)
    terminal.Note(CannotWrite(UserFile()) + "; the text is in " + SystemFile() + " instead");
  if (terminal.json) terminal.PrintJson(TextJson(number, lang, Open(lang).get()));
}

// ---- Missing texts ----

struct Finding {
  std::int32_t id;
  std::string finding;
  std::int32_t language;
  std::string text;
};

void Missing(Arguments const& arguments, Terminal& terminal) {
  long const languages[] = {LanguageArgument("A", arguments.language), LanguageArgument("B", arguments.other)};
  NoteState(SystemFile(), "no languages defined", terminal);
  Table const installed[] = {{SystemFile(), languages[0]}, {SystemFile(), languages[1]}};
  std::map<std::pair<std::int32_t, int>, Finding> findings;  // by number
  for (int i = 0; i < 2; i++) {
    if (!installed[i].known) throw Failed(SystemFile() + ": no texts of language " + std::to_string(languages[i]));
    auto const lacking = static_cast<std::int32_t>(languages[1 - i]);
    for (auto const& [id, text] : installed[i].Texts())
      if (installed[1 - i].Texts().count(id) == 0) findings[{id, 1 - i}] = {id, "missing", lacking, text};
  }
  terminal.status = findings.empty() ? 0 : 1;
  for (int i = 0; i < 2; i++) {
    Table const own(UserFile(), languages[i]);
    for (auto const& [id, text] : own.Texts())
      if (!text.empty()) findings[{id, 2 + i}] = {id, "own", static_cast<std::int32_t>(languages[i]), text};
  }
  std::vector<Finding> rows;
  rows.reserve(findings.size());
  for (auto const& entry : findings) rows.push_back(entry.second);
  PrintRecords({Number<&Finding::id>("id", ""), String<&Finding::finding>("finding"),
                Number<&Finding::language>("language", ""), String<&Finding::text>("text")},
               rows, terminal);
}

}  // namespace

Command LangCommands() {
  auto const arguments = std::make_shared<Arguments>();
  auto const word = [](char const* name, std::string& target, char const* help) {
    return Argument(name, &target, help).Required();
  };
  Options const text = {word("ID", arguments->number, "Number of the text"),
                        Value("--lang", &arguments->language, "N", "Number of the language")};
  return Family(
      "lang", "Message texts of the programs and the user's overrides",
      "Installed texts: zellang.cfg in the installation root. Overrides: ~/.zellang.cfg. Default language: LANGID in "
      "~/.zelvane.",
      {"zelctl lang list", "zelctl lang get 12", "zelctl lang set 12 'Ligar o no-break' --lang 2 --utf8",
       "zelctl lang missing 1 2 && echo complete"},
      {{"list", "List languages, with the number of installed texts and of overrides", On(arguments, List)},
       {"get", "Print one text: the override if there is one, otherwise the installed text", On(arguments, Get), text},
       {"set", "Override one text; \"\" restores the installed text", On(arguments, Set),
        Joined({text, {word("TEXT", arguments->text, "New text")}, WritingOptions(arguments->writing)}),
        "If ~/.zellang.cfg cannot be written, the installed file is changed instead. Put \"--\" before an argument "
        "that starts with \"-\": zelctl lang set 12 -- -x"},
       {"missing",
        "List texts that one of two languages lacks, and the user's overrides of either",
        On(arguments, Missing),
        {word("A", arguments->language, "First language (number)"),
         word("B", arguments->other, "Second language (number)")},
        "A missing text is printed in the other language. Exit code 1 if a text is missing."}});
}
