#include "zelvane/system/proc_internal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/scratch.h"

namespace {

using zelvane::internal::ParsePsLine;
using zelvane::internal::PsOutput;

std::string Shown(ProcClass& entry) {
  std::ostringstream out;
  out << entry.GetPID() << "|" << entry.GetPPID() << "|" << entry.GetPriority() << "|" << entry.GetName() << "|"
      << entry.GetFileName();
  return out.str();
}

std::string Parsed(std::string_view line) {
  std::optional<ProcClass> entry = ParsePsLine(line);
  return entry ? Shown(*entry) : "none";
}

// The output taken in pieces of that many bytes, one entry a line.
std::string Table(std::string const& output, size_t piece) {
  std::vector<ProcClass> table;
  PsOutput ps(table);
  for (size_t i = 0; i < output.size(); i += piece) ps.Take(std::string_view(output).substr(i, piece));
  ps.Finish();
  std::string shown;
  for (ProcClass& entry : table) shown += Shown(entry) + "\n";
  return shown;
}

TEST(PsLine, Fields) {
  struct {
    char const* line;
    char const* entry;
  } const cases[] = {
      {"    1     0   0 init            /sbin/init", "1|0|1|init|/sbin/init"},
      {"1 0 0 init /sbin/init", "1|0|1|init|/sbin/init"},
      {"4194000       1   0 exactly15chars_ bin/exactly15chars_ 300",
       "4194000|1|1|exactly15chars_|bin/exactly15chars_ 300"},
      {"  7   2 0 sh   sh  -c  two  blanks   ", "7|2|1|sh|sh  -c  two  blanks"},  // those inside stay
      {"7 2 0 sh \tsh\t-c\r", "7|2|1|sh|sh\t-c"},
      {"\t7\t 2 0 sh\t sh", "7|2|1|sh|sh"},
      {"9 1 0 a b  c          perl -e", "9|1|1|a|b  c          perl -e"},
      {"9 1 0                 perl -e  x", "9|1|1|perl|-e  x"},
      {"9 1 0 perl", "9|1|1|perl|"},
      {"9 1 0 perl ", "9|1|1|perl|"},
      {"9 1", "9|1|1||"},
      {"9", "9|0|1||"},
      {"9 x y z", "9|0|1|z|"},
      {"+9 -1 0 a a", "9|4294967295|1|a|a"},
      {"-9 1 0 a a", "4294967287|1|1|a|a"},
      {"- 1 0 a a", "0|1|1|a|a"},
      {"2147483647 2147483648 0 a a", "2147483647|0|1|a|a"},
      {"99999999999 1 0 a a", "0|1|1|a|a"},
      {"  PID  PPID  NI COMMAND         COMMAND", "none"},
      {"", "none"},
      {"     ", "none"},
      {"9x 1 0 a a", "none"},
      {"0x9 1 0 a a", "none"},
      {"1-2 1 0 a a", "none"},
      {"init 1 0 a a", "none"},
  };
  for (auto const& c : cases) EXPECT_EQ(Parsed(c.line), c.entry) << "'" << c.line << "'";
}

TEST(PsLine, PriorityOfNice) {
  struct {
    char const* nice;
    int priority;
  } const cases[] = {{"20", 0},  {"19", 0},  {"11", 0}, {"10", 1},  {"+10", 1},
                     {"1", 1},   {"0", 1},   {"-1", 2}, {"-9", 2},  {"-10", 2},
                     {"-11", 3}, {"-20", 3}, {"-", 1},  {"abc", 1}, {"-99999999999", 1}};
  for (auto const& c : cases) {
    std::optional<ProcClass> entry = ParsePsLine("9 1 " + std::string(c.nice) + " name command");
    ASSERT_TRUE(entry) << c.nice;
    EXPECT_EQ(entry->GetPriority(), c.priority) << c.nice;
    EXPECT_EQ(entry->GetName(), "name") << c.nice;
  }
}

TEST(PsOutput, LineCountsUpToItsLimit) {
  std::string const start = "1 0 0 a ";
  for (size_t const length : {1021u, 1022u, 1023u, 1024u, 1025u, 2046u, 2047u, 3000u, 9000u}) {
    std::string const line = start + std::string(length - start.size(), 'x');
    std::string const kept = "1|0|1|a|" + line.substr(start.size(), 1023 - start.size()) + "\n";
    EXPECT_EQ(Table(line + "\n2 0 0 b b\n", 4096), kept + "2|0|1|b|b\n") << length;
    EXPECT_EQ(Table(line, 4096), kept) << length << ", without line feed";
  }
}

// What stands at any byte of an over-long line belongs to that line.
TEST(PsOutput, NobodyForgesARow) {
  std::string const forged = "    666       1   0 upssrv          upssrv -d";
  for (size_t const at : {1022u, 1023u, 1024u, 2045u, 2046u, 2047u, 3069u}) {
    std::string line = "9 1 0 sleep ";
    line += std::string(at - line.size(), 'x') + forged;
    std::string const kept = "9|1|1|sleep|" + line.substr(12, std::min<size_t>(at, 1023) - 12) + "\n";
    for (size_t const piece : {1u, 1022u, 1023u, 1024u, 4096u, 100000u})
      EXPECT_EQ(Table(line + "\n", piece), kept) << at << " in pieces of " << piece;
  }
}

TEST(PsOutput, PiecesMakeNoDifference) {
  for (char const* name : {"/ps/wide_ids.txt", "/ps/kernel_threads.txt"}) {
    std::string const output = test::ReadFile(std::string(ZELVANE_FIXTURES) + name);
    std::string const whole = Table(output, output.size());
    ASSERT_NE(whole, "");
    for (size_t piece = 1; piece < 100; piece++) ASSERT_EQ(Table(output, piece), whole) << name << " " << piece;
  }
  EXPECT_EQ(Table("", 1), "");
  EXPECT_EQ(Table("\n\n\n", 1), "");
}

}  // namespace
