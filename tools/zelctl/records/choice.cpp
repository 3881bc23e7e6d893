#include "records/choice.h"

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

Options ChoiceOptions::Code() { return {Value("--code", &codes_, "A,B", "Only records with these codes").Separated()}; }

Options ChoiceOptions::Grep() {
  return {Value("--grep", &text_, "TEXT", "Only records whose text contains this, case-insensitive")};
}

Options ChoiceOptions::Span() {
  return {
      Value("--from", &from_, "TIME", "First time to include"), Value("--to", &to_, "TIME", "Last time to include"),
      Value("--since", &since_, "TIME", "Like --from; also today, yesterday or \"2 hours ago\"").Excludes("--from")};
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
  if (choice.first > choice.last) throw WrongUsage("--from is later than --to");
  return choice;
}
