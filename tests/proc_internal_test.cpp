#include "zelvane/system/proc_internal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/scratch.h"

namespace {

using zelvane::internal::PsOutput;

// The output taken in pieces of that many bytes, one entry a line.
std::string Table(std::string const& output, size_t piece = 4096) {
  std::vector<ProcClass> table;
  PsOutput ps(table);
  for (size_t i = 0; i < output.size(); i += piece) ps.Take(std::string_view(output).substr(i, piece));
  ps.Finish();
  std::ostringstream out;
  for (ProcClass& entry : table)
    out << entry.GetPID() << "|" << entry.GetPPID() << "|" << entry.GetPriority() << "|" << entry.GetName() << "|"
        << entry.GetFileName() << "\n";
  return out.str();
}

TEST(PsOutput, Fields) {
  std::pair<char const*, char const*> const cases[] = {
      {"    1     0   0 init            /sbin/init", "1|0|1|init|/sbin/init\n"},
      {"  7   2 0 sh   sh  -c  two  blanks   ", "7|2|1|sh|sh  -c  two  blanks\n"},  // those inside stay
      {"\t7\t 2 0 sh\t \tsh\t-c\r", "7|2|1|sh|sh\t-c\n"},
      {"9 1 0                 perl -e  x", "9|1|1|perl|-e  x\n"},
      {"9 1 0 perl ", "9|1|1|perl|\n"},
      {"9 1", "9|1|1||\n"},
      {"9", "9|0|1||\n"},
      {"9 x y z", "9|0|1|z|\n"},
      {"+9 -1 0 a a", "9|4294967295|1|a|a\n"},
      {"-9 1 0 a a", "4294967287|1|1|a|a\n"},
      {"- 1 0 a a", "0|1|1|a|a\n"},
      {"2147483647 2147483648 0 a a", "2147483647|0|1|a|a\n"},
      {"  PID  PPID  NI COMMAND         COMMAND", ""},
      {"     ", ""},
      {"9x 1 0 a a\n0x9 1 0 a a\n1-2 1 0 a a\n\n\n", ""}};
  for (auto const& [line, entry] : cases) EXPECT_EQ(Table(line), entry) << "'" << line << "'";
  std::pair<char const*, int> const priorities[] = {{"20", 0},  {"11", 0}, {"10", 1},  {"+10", 1},
                                                    {"0", 1},   {"-1", 2}, {"-10", 2}, {"-11", 3},
                                                    {"-20", 3}, {"-", 1},  {"abc", 1}, {"-99999999999", 1}};
  for (auto const& [nice, priority] : priorities)
    EXPECT_EQ(Table("9 1 " + std::string(nice) + " a b"), "9|1|" + std::to_string(priority) + "|a|b\n") << nice;
}

// What stands at any byte of an over-long line belongs to that line.
TEST(PsOutput, LineCountsUpToItsLimit) {
  std::string const forged = "    666       1   0 upssrv          upssrv -d";
  for (size_t const at : {977u, 978u, 1021u, 1022u, 1023u, 1024u, 2045u, 2046u, 2047u, 3069u, 9000u}) {
    std::string line = "9 1 0 sleep ";
    line += std::string(at - line.size(), 'x') + forged;
    std::string const kept = "9|1|1|sleep|" + line.substr(12, 1023 - 12),
                      stripped = kept.substr(0, kept.find_last_not_of(' ') + 1);
    for (size_t const piece : {1u, 1022u, 1023u, 1024u, 4096u, 100000u})
      EXPECT_EQ(Table(line + "\n2 0 0 b b", piece), stripped + "\n2|0|1|b|b\n") << at << " in pieces of " << piece;
  }
}

TEST(PsOutput, PiecesMakeNoDifference) {
  std::string const output = test::ReadFile(ZELVANE_FIXTURES "/ps/wide_ids.txt"), whole = Table(output);
  ASSERT_NE(whole, "");
  for (size_t piece = 1; piece < 100; piece++) ASSERT_EQ(Table(output, piece), whole) << piece;
}

}  // namespace
