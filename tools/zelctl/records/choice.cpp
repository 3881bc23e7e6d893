#include "records/choice.h"

#include <CLI/CLI.hpp>

#include "files/recordlog.h"
#include "records/fields.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/core/strutils.h"

bool Choice::operator()(Record const& record) const {
  std::optional<std::uint16_t> const code = record.Code();
  if (!codes.empty() && (!code || codes.count(*code) == 0)) return false;
  if (!text.empty() && AnsiLowerCase(record.Text()).find(text) == std::string::npos) return false;
  return !dated || (record.stamp >= first && record.stamp <= last);
}

void ChoiceOptions::AddCodes(CLI::App* command) {
  CLI::Option* const option = command->add_option("--code", codes_, "Only these codes");
  option->type_name("A,B")->delimiter(',')->allow_extra_args(false);
}

void ChoiceOptions::AddText(CLI::App* command) {
  command->add_option("--grep", text_, "Only records whose text holds this, in any case")->type_name("TEXT");
}

void ChoiceOptions::AddSpan(CLI::App* command) {
  CLI::Option* const from = command->add_option("--from", from_, "Only from then on")->type_name("TIME");
  command->add_option("--to", to_, "Only up to then")->type_name("TIME");
  command->add_option("--since", since_, "The same as --from, also today, yesterday or \"2 hours ago\"")
      ->type_name("TIME")
      ->excludes(from);
}

Choice ChoiceOptions::Get(Terminal const& terminal) const {
  constexpr std::int64_t kHighestCode = 65535;
  Choice choice;
  for (std::string const& code : codes_)
    choice.codes.insert(static_cast<std::uint16_t>(NumberArgument("--code", code, 0, kHighestCode)));
  choice.text = AnsiLowerCase(terminal.FromArgument("--grep", text_));
  choice.dated = from_ || to_ || since_;
  if (from_) choice.first = ParseMoment("--from", *from_).first;
  if (since_) choice.first = ParseSince("--since", *since_);
  if (to_) choice.last = ParseMoment("--to", *to_).last;
  if (choice.first > choice.last) throw WrongUsage("--from must not be later than --to");
  return choice;
}
