// The configuration engine: what a file's lines mean, what each operation writes, error codes, replaced steps.
#include "zelvane/config/cfgclass.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <sstream>

#include "support/records.h"
#include "support/scratch.h"
#include "support/slot.h"

namespace {

using test::Scratch;

// The index as text: sections and keys in the order of the engine, "NAME{KEY=value|KEY=value}".
std::string Dump(CfgClass& cfg) {
  std::string text;
  for (unsigned long s = 0; s < cfg.GetSectionCount(); s++) {
    std::string const section = cfg.GetSectionName(s);
    text += section + "{";
    for (unsigned long k = 0; k < cfg.GetKeyCount(section); k++)
      text += (k > 0 ? "|" : "") + cfg.GetKeyName(section, k) + "=" + cfg.ReadStr(section, k, "?");
    text += "}";
  }
  return text;
}

TEST(CfgParse, LinesAndWhatTheyMean) {
  struct {
    std::string text;
    char const* dump;
    long errorLine;
  } const rows[] = {
      {"", "", 0},
      {"\n\n", "", 0},
      {"; a\n# b\n' c\n \t;d\r\n", "", 0},
      {"[S]\na=1\n", "S{A=1}", 0},
      {"a=1\n[S]\nb=2", "{A=1}S{B=2}", 0},
      {"[ ]\na=1", "{A=1}", 0},
      {" [ My Net ]\r\n\tkey  = \t value  ; note\t\r\n", "MY NET{KEY=value  ; note}", 0},
      {"[S]\nABC\nAB=\nX==y=\n", "S{AB=|ABC=ABC|X==y=}", 0},
      {"[b]\nk=1\n[A]\nk=2\n", "A{K=2}B{K=1}", 0},
      {"[Net]\na=1\n[X]\n[NET]\nb=2\nA=3\n", "NET{A=1|B=2}X{}", 0},
      {"[S]\nz=1\nb=2\na=3\n\xE7=4\nZZ=5\n", "S{A=3|B=2|Z=1|ZZ=5|\xC7=4}", 0},
      {std::string("[S]\na=x\0y\n", 10), "S{A=x", 0},  // compared up to the NUL below
      {"[S]\na=1\nx\nb=2\n", "S{A=1}", 3},
      {"[]\n", "", 1},
      {"[S\n", "", 1},
      {"S]\n", "", 1},
      {"[S]x\n", "", 1},
      {"[S]]\n", "", 1},
      {"=5\n", "", 1},
      {"[S]\nk=a[1]\n", "S{}", 2},
      {"a=1\nk=]\n", "{A=1}", 2},
      {"=", "", 1},
  };
  Scratch scratch;
  for (auto const& row : rows) {
    SCOPED_TRACE(row.text);
    CfgClass cfg;
    ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", row.text)));
    EXPECT_EQ(cfg.GetErrorCode(), row.errorLine == 0 ? 0 : 7);
    EXPECT_EQ(cfg.GetErrorLine(), row.errorLine);
    EXPECT_STREQ(Dump(cfg).c_str(), row.dump);
  }
}

// Each step is one operation: "SECTION KEY=value" writes, "-SECTION KEY" deletes, "!SECTION" erases; "" names the
// unnamed section as "_".
void RunSteps(CfgClass& cfg, std::string const& steps) {
  std::istringstream in(steps);
  for (std::string step; std::getline(in, step, ',');) {
    char const mark = step[0];
    if (mark == '-' || mark == '!') step.erase(0, 1);
    std::size_t const blank = step.find(' ');
    std::string const section = step.substr(0, blank) == "_" ? "" : step.substr(0, blank);
    std::string const rest = blank == std::string::npos ? "" : step.substr(blank + 1);
    std::size_t const equals = rest.find('=');
    bool const done = mark == '!'   ? cfg.EraseSection(section)
                      : mark == '-' ? cfg.DeleteKey(section, rest)
                                    : cfg.WriteStr(section, rest.substr(0, equals), rest.substr(equals + 1));
    EXPECT_TRUE(done) << step;
    EXPECT_EQ(cfg.GetErrorCode(), 0) << step;
  }
}

TEST(CfgWrite, OnlyTheNamedLinesChange) {
  struct {
    char const* before;
    char const* steps;
    char const* after;
    char const* afterReg = nullptr;  // by RegCfgClass, which keeps the caller's spelling in new lines
  } const rows[] = {
      // An existing key keeps its spelling; indentation and what followed the value go. Other lines stay.
      {"; top\r\n[Net]\r\n  Speed=10 ; fast\r\n\r\n# end", "net SPEED=20", "; top\r\n[Net]\r\nSpeed = 20\n\r\n# end"},
      {"[S]\n  a = 1\n\n", "s A=2", "[S]\na = 2\n\n"},
      {"[S]\nABC\nx=y=z\n", "S abc=1,S X=", "[S]\nABC = 1\nx = \n"},
      // New keys behind the last key, new sections at the end, behind the empty last line.
      {"[S]\nb=1\n; c\n[T]\nk=1\n", "S a=2,S c=3", "[S]\nb=1\nA = 2\nC = 3\n; c\n[T]\nk=1\n"},
      {"[S]\na=1\n", "New v=1,new W=2", "[S]\na=1\n\n[NEW]\nV = 1\nW = 2"},
      {"", "S k=v", "\n[S]\nK = v"},
      {"[S]\n; c\n", "S k=v", "[S]\nK = v\n; c\n"},
      {"[A]\na=1\n[B]\n[A]\nb=2\n[C]", "a c=3", "[A]\na=1\n[B]\n[A]\nb=2\nC = 3\n[C]"},
      // Deleting: a loaded key does not remember the one before it, a written one does.
      {"[S]\na=1\nb=2\n", "-S b,S c=3", "[S]\nC = 3\na=1\n"},
      {"[S]\na=1\nb=2\n", "-S a,S c=3", "[S]\nb=2\nC = 3\n"},
      {"[S]\na=1\n", "S b=2,S c=3,-S c,S d=4", "[S]\na=1\nB = 2\nD = 4\n"},
      {"[S]\na=1\n", "S b=2,S c=3,-S b,-S c,S d=4", "[S]\na=1\nD = 4\n"},
      {"[S]\na=1\n", "S b=2,-S a,-S b,S c=3", "[S]\nC = 3\n"},
      {"[S]\na=1\na=2\n", "-S a", "[S]\na=2\n"},
      {"[S]\na=1\n", "-S b,-T a,!T", "[S]\na=1\n"},
      // Erasing takes the indexed lines: comments, repeated headers and repeated keys stay.
      {"[S]\n;c\na=1\na=2\n[T]\nk=1\n[s]\nb=2\n", "!S", ";c\na=2\n[T]\nk=1\n[s]\n"},
      {"[S]\na=1\n", "!S,S b=1", "\n[S]\nB = 1"},
      // The unnamed section: its first key's line stands for its header.
      {"a=1\nb=2\n[S]\n", "_ c=3", "a=1\nb=2\nC = 3\n[S]\n"},
      {"a=1\nb=2\n[S]\n", "-_ a,_ c=3", "b=2\nC = 3\n[S]\n"},
      {"a=1\nb=2\n[S]\n", "-_ b,_ c=3", "a=1\nC = 3\n[S]\n"},
      {";x\na=1\n[S]\n", "-_ a,_ c=3", "C = 3\n;x\n[S]\n"},
      {"a=1\nb=2\n[S]\n", "!_", "[S]\n"},
      {"a=1\nb=2\n[S]", "-_ a,!_,_ c=3", "[S]\n[ ]\nC = 3"},
      {"[S]\nk=1", "_ c=3", "[S]\nk=1\n[ ]\nC = 3"},
      {"[Old]\nKey=1", "oLD keY=2,old New=3,Sect Name=4", "[Old]\nKey = 2\nNEW = 3\n[SECT]\nNAME = 4",
       "[Old]\nKey = 2\nNew = 3\n[Sect]\nName = 4"},
      // Latin-1 names fold, a stored value may hold "=" and inner blanks.
      {"[\xE7]\n\xE3=1\n", "\xC7 \xC3=a = b,\xC7 \xF5=2", "[\xE7]\n\xE3 = a = b\n\xD5 = 2\n"},
  };
  Scratch scratch;
  for (auto const& row : rows) {
    SCOPED_TRACE(std::string(row.before) + " <- " + row.steps);
    for (int variant = 0; variant < 3; variant++) {
      std::string const path = scratch.Write("f.cfg", row.before);
      CfgClass plain;
      RegCfgClass reg;
      CfgClass& cfg = row.afterReg != nullptr && variant == 2 ? reg : plain;
      ASSERT_TRUE(cfg.Open(path));
      ASSERT_TRUE(cfg.SetCached(variant > 0));
      RunSteps(cfg, row.steps);
      if (variant > 0) {
        EXPECT_EQ(test::ReadFile(path), row.before);
        ASSERT_TRUE(cfg.SetCached(false));
      }
      EXPECT_EQ(test::ReadFile(path), &cfg == &reg ? row.afterReg : row.after);
    }
  }
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"f.cfg"});
}

TEST(CfgWrite, WhatAnOpenAndCloseLeavesAlone) {
  Scratch scratch;
  for (std::string const& text : {std::string("a=1"), std::string("a=1\n"), std::string("\r\n[S]\r\nk=\xE1\r\n;"),
                                  std::string("[S]\n x \0=1\n\n\n", 13), std::string()}) {
    std::string const path = scratch.Write("f.cfg", text);
    CfgClass cfg;
    ASSERT_TRUE(cfg.Open(path));
    ASSERT_TRUE(cfg.WriteStr("T", "k", "v"));
    ASSERT_TRUE(cfg.EraseSection("T"));
    ASSERT_TRUE(cfg.Close());
    EXPECT_EQ(test::ReadFile(path), text) << "a line that came and went leaves no trace";
  }
}

#define ZELVANE_CALL(call) #call, [&](CfgClass & c) { return c.call; }

TEST(CfgErrors, ArgumentsThenFileThenMode) {
  Scratch scratch;
  std::string const path = scratch.Write("f.cfg", "[S]\nk=1");
  char const* const null = nullptr;
  CfgClass closed, readOnly, open;
  ASSERT_TRUE(readOnly.OpenReadOnly(path));
  ASSERT_TRUE(open.Open(path));
  ASSERT_TRUE(readOnly.SetSection("S") && open.SetSection("S"));
  struct {
    char const* name;
    std::function<bool(CfgClass&)> call;
    int closed, readOnly, open;  // error codes; the result is false for all but 0
  } const rows[] = {
      {ZELVANE_CALL(SetSection(null)), 5, 1, 1},
      {ZELVANE_CALL(SectionExists(null)), 1, 1, 1},
      {ZELVANE_CALL(KeyExists(null, "k")), 1, 1, 1},
      {ZELVANE_CALL(KeyExists("s", "K")), 5, 0, 0},
      {ZELVANE_CALL(EraseSection(null)), 1, 1, 1},
      {ZELVANE_CALL(EraseSection("none")), 5, 6, 0},
      {ZELVANE_CALL(DeleteKey("S", null)), 1, 1, 1},
      {ZELVANE_CALL(DeleteKey("S", "none")), 5, 6, 0},
      {ZELVANE_CALL(DeleteKey(9UL)), 1, 1, 1},
      {ZELVANE_CALL(GetKeyCount(null) != 0), 1, 1, 1},
      {ZELVANE_CALL(GetKeyName(null, 0) != ""), 1, 1, 1},
      {ZELVANE_CALL(ReadStr(null, "k", "d") != "d"), 1, 1, 1},
      {ZELVANE_CALL(ReadStr("S", 7UL, "d") != "d"), 1, 1, 1},
      {ZELVANE_CALL(ReadStr("S", "k", null) == "1"), 5, 0, 0},
      {ZELVANE_CALL(KeyExists("k")), 5, 0, 0},
      {ZELVANE_CALL(KeyExists(null)), 1, 1, 1},
      {ZELVANE_CALL(WriteStr(null, "k", "v")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S", null, "v")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S", "k", null)), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S", "", "v")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S\n", "k", "v")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("N", "k\nx", "v")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S", "k", "v\nx=1")), 1, 1, 1},
      {ZELVANE_CALL(WriteStr("S", "k", "1")), 5, 6, 0},
      {ZELVANE_CALL(WriteInt("S", 4UL, 1)), 1, 1, 1},
      {ZELVANE_CALL(SaveAs("")), 1, 1, 1},
      {ZELVANE_CALL(SaveAs("/nonexistent/x")), 2, 2, 2},
      {ZELVANE_CALL(Rename(null)), 1, 1, 1},
      {ZELVANE_CALL(LocateKey(nullptr, "k", nullptr)), 1, 1, 1},
      {ZELVANE_CALL(InsertSection("X", nullptr, false)), 1, 1, 1},
      {ZELVANE_CALL(InsertKey("x", "1", nullptr, nullptr, nullptr, true)), 1, 1, 1},
  };
  for (auto const& row : rows) {
    for (auto [cfg, code] : {std::pair(&closed, row.closed), {&readOnly, row.readOnly}, {&open, row.open}}) {
      EXPECT_EQ(row.call(*cfg), code == 0) << row.name;
      EXPECT_EQ(cfg->GetErrorCode(), code) << row.name;
      EXPECT_EQ(cfg->IsFail(), code != 0) << row.name;
    }
  }
  // Flushing what cannot be written to is no failure, yet says why nothing happened.
  for (auto [cfg, code] : {std::pair(&closed, 5), {&readOnly, 6}, {&open, 0}}) {
    EXPECT_TRUE(cfg->Flush());
    EXPECT_EQ(cfg->GetErrorCode(), code);
  }
  EXPECT_FALSE(open.SaveAs(path));
  EXPECT_EQ(open.GetErrorCode(), 4);
  CfgClass::SectionPosition section;
  ASSERT_TRUE(open.LocateSection("S", &section));
  CfgClass::KeyPosition key;
  ASSERT_TRUE(open.LocateKey(&section, "K", &key));
  EXPECT_FALSE(open.InsertKey("k", "2", &section, &key, nullptr, true));
  EXPECT_EQ(open.GetErrorCode(), 3);
  EXPECT_FALSE(open.InsertSection("s", nullptr, true));
  EXPECT_EQ(test::ReadFile(path), "[S]\nk = 1") << "refused insertions leave the lines alone";
}

TEST(CfgFiles, OpeningClosingAndWhatLasts) {
  Scratch scratch;
  std::string const path = scratch.Write("f.cfg", "[S]\nk=1\nbad]\nx=2\n");
  CfgClass cfg;
  EXPECT_FALSE(cfg.Open(nullptr));
  EXPECT_FALSE(cfg.Open(""));
  EXPECT_EQ(cfg.GetErrorCode(), 1);
  for (std::string const& missing : {scratch.Path("none.cfg"), scratch.Path("none/f.cfg"), path + "/f.cfg"}) {
    EXPECT_FALSE(cfg.Open(missing)) << missing;
    EXPECT_EQ(cfg.GetErrorCode(), 2);
    EXPECT_EQ(cfg.GetFileName(), "");
  }
  EXPECT_FALSE(cfg.Open(scratch.Path())) << "a folder";
  EXPECT_EQ(cfg.GetErrorCode(), 2);
  EXPECT_FALSE(cfg.Open("/dev/zero")) << "a device without an end";
  std::string const pipe = scratch.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  int const writer = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(write(writer, "a=1\nb=2\nc", 9), 9);
  EXPECT_FALSE(cfg.Open(pipe)) << "the rest does not come";
  EXPECT_EQ(cfg.GetErrorLine(), 3);
  EXPECT_EQ(cfg.GetSectionCount(), 0U);
  close(writer);
  unlink(pipe.c_str());
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"f.cfg"});

  EXPECT_TRUE(cfg.SetFileName(path.c_str(), false));
  EXPECT_EQ(cfg.GetErrorCode(), 7);
  EXPECT_EQ(cfg.GetErrorLine(), 3);
  EXPECT_TRUE(cfg.SetSection("s"));
  EXPECT_EQ(cfg.GetErrorCode(), 0);
  EXPECT_EQ(cfg.GetErrorLine(), 3) << "until the next load or close";
  EXPECT_EQ(cfg.GetSection(), "s");
  EXPECT_TRUE(cfg.SectionExists() && cfg.KeyExists(std::string("K")) && !cfg.KeyExists(std::string("x")));
  cfg.SetCached(true);
  EXPECT_TRUE(cfg.WriteStr("k", "2"));
  EXPECT_TRUE(cfg.Open(cfg.GetFileName())) << "opening anew saves first";
  EXPECT_EQ(test::ReadFile(path), "[S]\nk = 2\nbad]") << "lines behind the bad one are dropped";
  EXPECT_EQ(scratch.Read("f.cfg.lost"), "[S]\nk=1\nbad]\nx=2\n") << "but kept beside the file";
  EXPECT_EQ(cfg.GetSection(), "");
  cfg.WriteStr("S", "k", "3");
  EXPECT_TRUE(cfg.Close());
  EXPECT_EQ(cfg.GetErrorLine(), 0);
  EXPECT_EQ(cfg.ReadStr("S", "k", "closed"), "closed");
  EXPECT_EQ(scratch.Read("f.cfg.lost"), "[S]\nk=1\nbad]\nx=2\n") << "the first copy stays";

  scratch.Write("g.cfg", "[G]\ng=1");
  EXPECT_TRUE(cfg.OpenReadOnly(scratch.Path("g.cfg")));
  EXPECT_TRUE(cfg.Rename(scratch.Path("h.cfg").c_str()));
  EXPECT_EQ(cfg.GetFileName(), scratch.Path("h.cfg"));
  EXPECT_TRUE(cfg.WriteStr("G", "g", "2")) << "cached mode lasts, read-only does not";
  EXPECT_EQ(scratch.Read("h.cfg"), "[G]\nG = 1\n\n");
  EXPECT_TRUE(cfg.FlushCache());
  EXPECT_EQ(scratch.Read("h.cfg"), "[G]\nG = 2\n\n");
}

TEST(CfgFiles, AFailedSaveKeepsTheChanges) {
  Scratch scratch;
  std::string const path = scratch.Write("dir/f.cfg", "[S]\nk=1\n");
  CfgClass cfg;
  ASSERT_TRUE(cfg.Open(path));
  ASSERT_EQ(rename(scratch.Path("dir").c_str(), scratch.Path("away").c_str()), 0);
  EXPECT_FALSE(cfg.WriteStr("S", "k", "2"));
  EXPECT_EQ(cfg.GetErrorCode(), 2);
  EXPECT_EQ(cfg.ReadStr("S", "k", ""), "2");
  EXPECT_FALSE(cfg.Flush());
  ASSERT_EQ(rename(scratch.Path("away").c_str(), scratch.Path("dir").c_str()), 0);
  EXPECT_EQ(test::ReadFile(path), "[S]\nk=1\n");
  EXPECT_TRUE(cfg.Flush());
  EXPECT_EQ(test::ReadFile(path), "[S]\nk = 2\n");
}

TEST(CfgTyped, TextsWrittenAndReadBack) {
  Scratch scratch;
  CfgClass cfg;
  ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg",
                                     "[T]\n0=\n1=yes\n2= 12 \n3=2\n4=0\n5=-2147483648\n6=2147483648\n"
                                     "7=07/03/2005\n8=1.5E3\n9=1,5")));
  cfg.SetSection("T");
  struct {
    unsigned long index;
    long number;
    bool yes;
    double real;
  } const rows[] = {{0, -7, true, -7},
                    {1, -7, true, -7},
                    {2, 12, true, 12},
                    {3, 2, true, 2},
                    {4, 0, false, 0},
                    {5, -2147483647 - 1, true, -2147483648.0},
                    {6, -7, true, 2147483648.0},
                    {7, -7, true, -7},
                    {8, -7, true, 1500},
                    {9, -7, true, -7}};
  for (auto const& row : rows) {
    std::string const key = cfg.GetKeyName(row.index);
    EXPECT_EQ(cfg.ReadInt(row.index, -7), row.number) << key;
    EXPECT_EQ(cfg.ReadInt("t", key.c_str(), -7), row.number) << key;
    EXPECT_EQ(cfg.ReadBool(key, true), row.yes) << key;
    EXPECT_EQ(cfg.ReadFloat("T", row.index, -7), row.real) << key;
  }
  EXPECT_EQ(cfg.ReadDateTime("7", "dd/mm/yyyy", -1), 1110153600);
  EXPECT_EQ(cfg.ReadDateTime("7", nullptr, -1), -1) << "shorter than the default format";
  EXPECT_TRUE(cfg.WriteInt("i", -5));
  EXPECT_TRUE(cfg.WriteUInt("u", 4294967295UL));
  EXPECT_TRUE(cfg.WriteBool("T", "b", true));
  EXPECT_TRUE(cfg.WriteDateTime("d", "yyyy-mm-dd", 0));
  EXPECT_TRUE(cfg.WriteFloat("f", 1.5, 9, 4));
  EXPECT_EQ(cfg.ReadStr("f", ""), "    1.500") << "as written";
  EXPECT_TRUE(cfg.WriteStr(0UL, "first"));
  EXPECT_TRUE(cfg.WriteStr(std::string("T"), 1UL, std::string("second")));
  EXPECT_TRUE(cfg.DeleteKey(2UL));
  ASSERT_TRUE(cfg.Close());
  EXPECT_EQ(scratch.Read("f.cfg"),
            "[T]\n0 = first\n1 = second\n3=2\n4=0\n5=-2147483648\n6=2147483648\n7=07/03/2005\n"
            "8=1.5E3\n9=1,5\nI = -5\nU = 4294967295\nB = 1\nD = 1970-01-01\nF =     1.500");
}

// The forms of a family on key K, number 0: four that name section T, four that mean the current one, S. `texts` is
// `args` for the forms that take std::string.
#define ZELVANE_UNPACK(...) __VA_ARGS__
#define ZELVANE_TOLD(op, place, args) \
  [](CfgClass& c) { return test::Words(c.op(ZELVANE_UNPACK place, ZELVANE_UNPACK args)); }
#define ZELVANE_FORMS(op, args, texts)                                                                        \
#op, {                                                                                                      \
    ZELVANE_TOLD(op, ("t", "k"), args), ZELVANE_TOLD(op, ("T", 0UL), args),                                   \
        ZELVANE_TOLD(op, (string("t"), string("k")), texts), ZELVANE_TOLD(op, (string("T"), 0UL), texts),     \
        ZELVANE_TOLD(op, ("k"), args), ZELVANE_TOLD(op, (0UL), args), ZELVANE_TOLD(op, (string("k")), texts), \
        ZELVANE_TOLD(op, (0UL), texts)                                                                        \
  }
#define ZELVANE_SAME_FORMS(op, args) ZELVANE_FORMS(op, args, args)

TEST(CfgTyped, EveryFormOfAFamilyDoesTheSame) {
  using std::string;
  struct {
    char const* name;
    std::function<string(CfgClass&)> forms[8];
    char const *inS, *inT;      // K there
    char const *toldS, *toldT;  // by a form that works there: the result; for a writer, what K is then
    char const* closed;         // the result without a file
  } const rows[] = {
      {ZELVANE_FORMS(ReadStr, ("d"), (string("d"))), "a", "b", "a", "b", "d"},
      {ZELVANE_SAME_FORMS(ReadInt, (-3L)), "1", "-2147483648", "1", "-2147483648", "-3"},
      {ZELVANE_SAME_FORMS(ReadBool, (true)), "0", "2", "0", "1", "1"},
      {ZELVANE_FORMS(ReadDateTime, ("dd/mm/yyyy", -3L), (string("dd/mm/yyyy"), -3L)), "07/03/2005", "08/03/2005",
       "1110153600", "1110240000", "-3"},
      {ZELVANE_SAME_FORMS(ReadFloat, (-0.5)), "1.5", "2.5E1", "1.5", "25", "-0.5"},
      {ZELVANE_FORMS(WriteStr, ("v"), (string("v"))), "a", "b", "=v", "=v", "0"},
      {ZELVANE_SAME_FORMS(WriteInt, (-7L)), "a", "b", "=-7", "=-7", "0"},
      {ZELVANE_SAME_FORMS(WriteUInt, (4294967295UL)), "a", "b", "=4294967295", "=4294967295", "0"},
      {ZELVANE_SAME_FORMS(WriteBool, (true)), "a", "b", "=1", "=1", "0"},
      {ZELVANE_FORMS(WriteDateTime, ("yyyy", 0L), (string("yyyy"), 0L)), "a", "b", "=1970", "=1970", "0"},
      {ZELVANE_SAME_FORMS(WriteFloat, (1.5, 4U, 2U)), "a", "b", "= 1.5", "= 1.5", "0"},
  };
  Scratch scratch;
  for (auto const& row : rows) {
    for (int form = 0; form < 8; form++) {
      SCOPED_TRACE(row.name + (" " + std::to_string(form)));
      CfgClass cfg;
      EXPECT_EQ(row.forms[form](cfg), row.closed + string(" "));
      string s = row.inS, t = row.inT;
      ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", "[S]\nK=" + s + "\n[T]\nK=" + t)) && cfg.SetSection("S"));
      string const told = form < 4 ? row.toldT : row.toldS;
      bool const writes = told[0] == '=';
      EXPECT_EQ(row.forms[form](cfg), (writes ? "1" : told) + " ");
      if (writes) (form < 4 ? t : s) = told.substr(1);
      EXPECT_EQ(Dump(cfg), "S{K=" + s + "}T{K=" + t + "}");
      ASSERT_TRUE(cfg.DeleteKey("S", "K") && cfg.DeleteKey("T", "K"));
      if (writes && form % 2 == 0) continue;  // by name it would make the key
      EXPECT_EQ(row.forms[form](cfg), row.closed + string(" ")) << "no such key";
    }
  }
}

// A variant that notes which steps are taken.
class Steps : public CfgClass {
 public:
  std::string taken;
  bool upper = true;
  bool GetUpperCaseWriteCache() override {
    CfgClass::LocateSection("a look-up in between", nullptr);  // must not get into what is being inserted
    return taken += 'U', upper;
  }
  bool LoadFile(bool n) override { return taken += 'L', CfgClass::LoadFile(n); }
  bool SaveFile() override { return taken += 'S', CfgClass::SaveFile(); }
  void ClearReadCache() override { taken += 'r', CfgClass::ClearReadCache(); }
  void ClearWriteCache() override { taken += 'w', CfgClass::ClearWriteCache(); }
  bool ParseLine(std::string const& line, bool n) override { return taken += 'P', CfgClass::ParseLine(line, n); }
  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    return taken += 'i', CfgClass::InsertSection(name, line, create);
  }
  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    return taken += 'k', CfgClass::InsertKey(key, value, section, previous, line, create);
  }
  bool LocateSection(std::string const& name, SectionPosition* out) override {
    return taken += 's', CfgClass::LocateSection(name, out);
  }
  bool LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* out) override {
    return taken += 'l', CfgClass::LocateKey(section, key, out);
  }
  std::string Take() { return std::exchange(taken, ""); }
};

TEST(CfgSteps, AVariantMayReplaceAny) {
  Scratch scratch;
  Steps cfg;
  ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", "[S]\na=1\na=2\n[s]")));
  EXPECT_EQ(cfg.Take(), "SrwLrwPsiPlkPlPs") << "close, load, then a line each";
  EXPECT_EQ(cfg.ReadInt("S", "a", 0), 1);
  EXPECT_EQ(cfg.Take(), "sl");
  cfg.upper = false;
  EXPECT_TRUE(cfg.WriteStr("New", "Key", "v"));
  EXPECT_EQ(cfg.Take(), "siUslkUS");
  EXPECT_EQ(Dump(cfg), "NEW{KEY=v}S{A=1}");
  cfg.Take();
  EXPECT_TRUE(cfg.DeleteKey("s", "A"));
  EXPECT_EQ(cfg.Take(), "slS");
  EXPECT_EQ(scratch.Read("f.cfg"), "[S]\na=2\n[s]\n[New]\nKey = v");
}

// A variant that does not insert one name.
struct Refusing : CfgClass {
  std::string refused = "-";
  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    return name != refused && CfgClass::InsertSection(name, line, create);
  }
  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    return key != refused && CfgClass::InsertKey(key, value, section, previous, line, create);
  }
};

TEST(CfgSteps, ARefusedInsertionChangesNothing) {
  Scratch scratch;
  for (char const* refused : {"s", "k", ""}) {
    Refusing cfg;
    cfg.refused = refused;
    EXPECT_FALSE(cfg.Open(scratch.Write("f.cfg", "a=1\n[s]\nk=1"))) << refused;
    EXPECT_EQ(cfg.GetFileName() + Dump(cfg), "") << refused << ": nothing stays of half a file";
    ASSERT_TRUE(cfg.Open(scratch.Write("g.cfg", "")));
    EXPECT_FALSE(cfg.WriteStr(*refused == '\0' ? "" : "s", "k", "v") || cfg.KeyExists("s", "k")) << refused;
  }
  CfgClass cfg;
  ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", "[S]\nk=1")));
  CfgClass::SectionPosition section, none;
  CfgClass::KeyPosition key;
  EXPECT_TRUE(!cfg.LocateSection("none", &none) && cfg.LocateSection("s", &section) &&
              cfg.LocateKey(&section, "k", &key) && cfg.LocateKey(&section, "k", nullptr));
  EXPECT_FALSE(cfg.LocateKey(&none, "k", nullptr) || cfg.InsertKey("x", "1", &section, nullptr, nullptr, true) ||
               cfg.InsertKey("x", "1", &none, &key, nullptr, true) ||
               cfg.InsertKey("x\n", "1", &section, &key, nullptr, true) ||
               cfg.InsertKey("x", "1\n", &section, &key, nullptr, true) ||
               cfg.InsertKey("x", "1", &section, &key, nullptr, false) || cfg.InsertSection("x\n", nullptr, true));
  EXPECT_EQ(cfg.GetErrorCode(), 1);
  // An entry whose line says something else keeps its own value.
  EXPECT_TRUE(cfg.InsertKey("x", "other", &section, &key, &section->second.header, false));
  EXPECT_EQ(Dump(cfg), "S{K=1|X=other}");
}

TEST(CfgSteps, AnIndexWithoutLinesCanBeRead) {
  Scratch scratch;
  for (int const way : {0, 1}) {
    RegCfgClass cfg;
    ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", "k=0\n[S]\na=1\nb=2\n")));
    EXPECT_TRUE(way == 0 ? (cfg.ClearWriteCache(), true) : cfg.LoadFile(true));
    EXPECT_TRUE(cfg.SetCached(true) && cfg.WriteStr("S", "a", "3") && cfg.DeleteKey("S", "b")) << way;
    EXPECT_TRUE(cfg.SaveAs(scratch.Path("copy").c_str()) && cfg.SaveAs(scratch.Path("twin"))) << way;
    EXPECT_EQ(scratch.Read("copy") + scratch.Read("twin"), "K = 0\n\n[S]\nA = 3\n\nK = 0\n\n[S]\nA = 3\n\n") << way;
    EXPECT_TRUE(cfg.EraseSection("") && cfg.EraseSection("S") && cfg.Flush()) << way;
    EXPECT_EQ(scratch.Read("f.cfg"), "") << way << ": a save writes the lines, and there are none";
  }
}

#if defined(__x86_64__) || defined(__i386__)
TEST(CfgSteps, SlotOrder) {
  using C = CfgClass;
  using P = char const*;
  using U = unsigned long;
  using test::Slot;
  struct {
    std::size_t slot, expected;
  } const rows[] = {
      {Slot(&C::GetUpperCaseWriteCache), 0},
      {Slot(&C::LocateKey), 9},  // then the destructor's two
      {Slot<bool (C::*)(P)>(&C::Open), 12},
      {Slot(&C::Close), 16},
      {Slot(&C::FlushCache), 22},
      {Slot<bool (C::*)(P)>(&C::SetSection), 23},
      {Slot(&C::GetSectionName), 33},
      {Slot<bool (C::*)(U)>(&C::DeleteKey), 42},
      {Slot<std::string (C::*)(U)>(&C::GetKeyName), 48},
      {Slot<std::string (C::*)(P, P, P)>(&C::ReadStr), 49},
      {Slot<long (C::*)(P, P, long)>(&C::ReadInt), 57},
      {Slot<bool (C::*)(P, P, bool)>(&C::ReadBool), 64},
      {Slot<long (C::*)(P, P, P, long)>(&C::ReadDateTime), 71},
      {Slot<double (C::*)(P, P, double)>(&C::ReadFloat), 79},
      {Slot<bool (C::*)(P, P, P)>(&C::WriteStr), 86},
      {Slot<bool (C::*)(P, P, long)>(&C::WriteInt), 94},
      {Slot<bool (C::*)(P, P, U)>(&C::WriteUInt), 101},
      {Slot<bool (C::*)(P, P, bool)>(&C::WriteBool), 108},
      {Slot<bool (C::*)(P, P, P, long)>(&C::WriteDateTime), 115},
      {Slot<bool (C::*)(P, P, double, unsigned, unsigned)>(&C::WriteFloat), 123},
      {Slot(&C::SetCached), 130},
      {Slot(&C::GetErrorLine), 134},
  };
  for (auto const& row : rows) EXPECT_EQ(row.slot, row.expected);
}
#endif

}  // namespace
