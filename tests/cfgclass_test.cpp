// The configuration engine: the meaning of a file's lines, what each operation writes, error codes, overridden hooks.
#include "zelvane/config/cfgclass.h"

#include "support/records.h"
#include "support/test.h"

namespace {

using test::Scratch;
using test::Words;

// The index as text: sections and keys in the engine's order, "NAME{KEY=value|KEY=value}".
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
  Scratch scratch;
  for (test::Case const& c : test::Table("config/cfgclass.txt", "lines")) {
    CfgClass cfg;
    ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", c[0]))) << c;
    EXPECT_EQ(Words(cfg.GetErrorCode(), cfg.GetErrorLine()), Words(c[2] == "0" ? 0 : 7, c[2])) << c;
    EXPECT_EQ(Dump(cfg), c[1]) << c;
    EXPECT_EQ(cfg.GetSectionName(cfg.GetSectionCount()), "") << "after the last section of " << c;
  }
}

// Makes the changes of a table row; the table describes their notation.
void Change(CfgClass& cfg, std::string const& changes) {
  std::istringstream in(changes);
  for (std::string change; std::getline(in, change, ',');) {
    SCOPED_TRACE(change);
    auto const upTo = [&change](char end) {
      std::string const part = change.substr(0, change.find(end));
      change.erase(0, part.size() + 1);
      return part;
    };
    char const mark = change[0];
    if (mark == '-' || mark == '!') change.erase(0, 1);
    std::string const first = upTo(' '), section = first == "_" ? "" : first, key = upTo('=');
    EXPECT_TRUE(mark == '!'   ? cfg.EraseSection(section)
                : mark == '-' ? cfg.DeleteKey(section, key)
                              : cfg.WriteStr(section, key, change));
    EXPECT_EQ(cfg.GetErrorCode(), 0);
  }
}

TEST(CfgWrite, OnlyTheNamedLinesChange) {
  Scratch scratch;
  for (test::Case const& c : test::Table("config/cfgclass.txt", "changes")) {
    SCOPED_TRACE(c);
    for (bool const cached : {false, true}) {
      CfgClass plain;
      RegCfgClass reg;
      bool const spelled = cached && c.columns.size() > 3;
      CfgClass& cfg = spelled ? reg : plain;
      ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", c[0])), cfg.SetCached(cached));
      Change(cfg, c[1]);
      if (cached) EXPECT_EACH((scratch.Read("f.cfg")), c[0]);
      ASSERT_TRUE(cfg.SetCached(false));
      EXPECT_EQ(scratch.Read("f.cfg"), c[spelled ? 3 : 2]);
    }
  }
  EXPECT_EQ(scratch.List(), test::Names{"f.cfg"});
}

TEST(CfgErrors, ArgumentsThenFileThenMode) {
  Scratch scratch;
  std::string const path = scratch.Write("f.cfg", "[S]\nk=1"), noFolder = scratch.Path("missing/x");
  char const* const null = nullptr;
  CfgClass closed, readOnly, open;
  ASSERT_ALL(readOnly.OpenReadOnly(path), open.Open(path), readOnly.SetSection("S"), open.SetSection("S"));
  CfgClass::SectionPosition section, none;
  CfgClass::KeyPosition key;
  ASSERT_ALL(closed.InsertSection("", nullptr, true), closed.LocateSection("", &section),
             closed.InsertKey("k", "v", &section, &section->second.lastKey, nullptr, true));
  ASSERT_ALL(open.LocateSection("s", &section), open.LocateKey(&section, "k", &key));
  EXPECT_NONE(open.LocateSection("none", &none), open.LocateKey(&none, "k", nullptr));
#define ZELVANE_CALL(call) #call, [&](CfgClass & c) { return c.call; }
  struct {
    char const* codes;  // of the closed, the read-only and the open object; "-" if not applicable
    char const* name;
    std::function<bool(CfgClass&)> call;
  } const rows[] = {
      {"511", ZELVANE_CALL(SetSection(null))},
      {"000", ZELVANE_CALL(GetSection() != "other")},
      {"000", ZELVANE_CALL(GetFileName() != "other")},
      {"111", ZELVANE_CALL(SectionExists(null))},
      {"111", ZELVANE_CALL(KeyExists(null))},
      {"500", ZELVANE_CALL(KeyExists("s", "K"))},
      {"111", ZELVANE_CALL(EraseSection(null))},
      {"560", ZELVANE_CALL(EraseSection("none"))},
      {"111", ZELVANE_CALL(DeleteKey("S", null))},
      {"111", ZELVANE_CALL(DeleteKey(9UL))},
      {"56-", ZELVANE_CALL(DeleteKey(0UL))},
      {"560", ZELVANE_CALL(DeleteKey("S", "none"))},
      {"111", ZELVANE_CALL(GetKeyCount(null) != 0)},
      {"111", ZELVANE_CALL(GetKeyName(null, 0) != "")},
      {"111", ZELVANE_CALL(ReadStr(null, "k", "d") != "d")},
      {"111", ZELVANE_CALL(ReadStr("S", 7UL, "d") != "d")},
      {"111", ZELVANE_CALL(ReadStr(null, 0UL, "d") != "d")},
      {"500", ZELVANE_CALL(ReadStr("S", "k", null) == "1")},
      {"111", ZELVANE_CALL(WriteStr(null, "k", "v"))},
      {"111", ZELVANE_CALL(WriteStr("S", null, "v"))},
      {"111", ZELVANE_CALL(WriteStr("S", "k", null))},
      {"111", ZELVANE_CALL(WriteStr("S\n", "k", "v"))},
      {"111", ZELVANE_CALL(WriteStr("N", "k\nx", "v"))},
      {"111", ZELVANE_CALL(WriteStr("S", "k", "\nx=1"))},
      {"111", ZELVANE_CALL(WriteStr("S", "", "v"))},
      {"560", ZELVANE_CALL(WriteStr("S", "k", "1"))},
      {"111", ZELVANE_CALL(SaveAs(""))},
      {"111", ZELVANE_CALL(Rename(null))},
      {"222", ZELVANE_CALL(SaveAs(noFolder))},
      {"--4", ZELVANE_CALL(SaveAs(path))},
      {"111", ZELVANE_CALL(LocateKey(nullptr, "k", nullptr))},
      {"111", ZELVANE_CALL(InsertSection("X", nullptr, false))},
      {"111", ZELVANE_CALL(InsertSection("x\n", nullptr, true))},
      {"--3", ZELVANE_CALL(InsertSection("s", nullptr, true))},
      {"--1", ZELVANE_CALL(InsertKey("x", "1", nullptr, &key, nullptr, true))},
      {"--1", ZELVANE_CALL(InsertKey("x", "1", &section, nullptr, nullptr, true))},
      {"--1", ZELVANE_CALL(InsertKey("x", "1", &none, &key, nullptr, true))},
      {"--1", ZELVANE_CALL(InsertKey("x", "1", &section, &key, nullptr, false))},
      {"--1", ZELVANE_CALL(InsertKey("x\n", "1", &section, &key, nullptr, true))},
      {"--1", ZELVANE_CALL(InsertKey("x", "1\n", &section, &key, nullptr, true))},
      {"--3", ZELVANE_CALL(InsertKey("k", "2", &section, &key, nullptr, true))},
  };
  for (auto const& row : rows) {
    for (auto [cfg, code] : {std::pair(&closed, row.codes[0]), {&readOnly, row.codes[1]}, {&open, row.codes[2]}}) {
      if (code == '-') continue;
      EXPECT_EQ(row.call(*cfg), code == '0') << row.name;
      EXPECT_EQ(Words(cfg->GetErrorCode(), cfg->IsFail()), Words(code, code != '0')) << row.name;
    }
  }
  // Flushing an object that cannot be written is no failure, but sets the error code.
  for (auto [cfg, code] : {std::pair(&closed, 5), {&readOnly, 6}, {&open, 0}})
    EXPECT_EACH((cfg->Flush(), cfg->GetErrorCode()), true, code) << code;
  EXPECT_EQ(test::ReadFile(path), "[S]\nk = 1") << "refused insertions leave the lines alone";
  for (auto const clear : {&CfgClass::ClearReadCache, &CfgClass::ClearWriteCache}) {
    EXPECT_ALL(closed.Flush(), closed.IsFail());
    (closed.*clear)();
    EXPECT_EQ(closed.GetErrorCode(), 0) << "emptying is an operation, too";
  }
  EXPECT_TRUE(closed.Close());
  EXPECT_EQ(closed.GetErrorCode(), 5) << "as a step it leaves the code alone";
}

TEST(CfgFiles, WhatCannotBeReadWholeIsNotOpened) {
  Scratch scratch;
  CfgClass cfg;
  EXPECT_FALSE(cfg.Open(nullptr));
  std::string const path = scratch.Write("f.cfg", ""), pipe = scratch.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  int const writer = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(write(writer, "a=1\nb=2\nc", 9), 9);  // the remainder does not arrive
  using Row = std::pair<std::string, char const*>;
  for (auto const& [name, codeAndLine] :
       {Row("", "1 0 "), Row(scratch.Path("none.cfg"), "2 0 "), Row(scratch.Path("none/f.cfg"), "2 0 "),
        Row(path + "/f.cfg", "2 0 "), Row(scratch.Path(), "2 1 "), Row("/dev/zero", "2 1 "), Row(pipe, "2 3 ")}) {
    EXPECT_FALSE(cfg.Open(name)) << name;
    EXPECT_EQ(Words(cfg.GetErrorCode(), cfg.GetErrorLine()), codeAndLine) << name;
    EXPECT_EACH((cfg.GetFileName(), Dump(cfg)), "") << name;
  }
  close(writer);
  EXPECT_EQ(scratch.List(), (test::Names{"f.cfg", "pipe"}));
}

TEST(CfgFiles, WhatIsKeptFromOneFileToTheNext) {
  Scratch scratch;
  CfgClass cfg;
  std::string const old = "[S]\nk=1\nbad]\nx=2\n", path = scratch.Write("f.cfg", old), other = scratch.Path("h.cfg");
  EXPECT_TRUE(cfg.SetFileName(path.c_str(), false));
  EXPECT_EQ(Words(cfg.GetErrorCode(), cfg.GetErrorLine()), "7 3 ");
  EXPECT_TRUE(cfg.SetSection("s"));
  EXPECT_EQ(Words(cfg.GetSection(), cfg.GetErrorCode(), cfg.GetErrorLine()), "s 0 3 ") << "until the load after";
  EXPECT_EACH((cfg.SectionExists(), cfg.KeyExists(std::string("K")), cfg.KeyExists(std::string("x"))), true, true,
              false);
  EXPECT_ALL(cfg.SetCached(true), cfg.WriteStr("k", "1"), cfg.Flush(), cfg.WriteStr("k", "2"));
  EXPECT_TRUE(cfg.Open(cfg.GetFileName())) << "opening anew saves first";
  EXPECT_EQ(scratch.Read("f.cfg"), "[S]\nk = 2\nbad]") << "lines after the bad one are dropped";
  EXPECT_EQ(scratch.Read("f.cfg.lost"), old) << "but kept beside the file";
  EXPECT_FALSE(scratch.Exists("f.cfg.lost.1")) << "the second save drops nothing";
  EXPECT_EQ(cfg.GetSection(), "");
  EXPECT_ALL(cfg.WriteStr("S", "k", "3"), cfg.Close());
  EXPECT_EQ(Words(cfg.GetErrorLine(), cfg.ReadStr("S", "k", "closed")), "0 closed ");
  EXPECT_EQ(scratch.Read("f.cfg.lost"), old) << "the first copy stays";

  EXPECT_ALL(cfg.SetFileName(scratch.Write("g.cfg", "[G]\ng=1"), true), cfg.Rename(other));
  EXPECT_EQ(cfg.GetFileName(), other);
  EXPECT_TRUE(cfg.WriteStr("G", "g", "2")) << "read-only does not last";
  EXPECT_EQ(scratch.Read("h.cfg"), "[G]\nG = 1\n\n") << "cached mode does";
  EXPECT_TRUE(cfg.FlushCache());
  EXPECT_EQ(scratch.Read("h.cfg"), "[G]\nG = 2\n\n");

  EXPECT_TRUE(cfg.Open(scratch.Write("h.cfg", old)));
  fs::remove(other);
  EXPECT_ALL(cfg.WriteStr("S", "k", "4"), cfg.Flush());
  EXPECT_EQ(scratch.Read("h.cfg"), "[S]\nk = 4\nbad]") << "no file, so nothing to keep";
  scratch.Write("h.cfg", "[S]");
  EXPECT_EACH((cfg.LoadFile(false), cfg.GetErrorLine()), true, 0);
}

TEST(CfgFiles, TheDestructorSavesChanges) {
  Scratch scratch;
  for (bool const reg : {false, true}) {
    std::string const path = scratch.Write("f.cfg", "[S]\nk=1\n");
    std::unique_ptr<CfgClass> cfg(reg ? new RegCfgClass : new CfgClass);
    ASSERT_ALL(cfg->Open(path), cfg->SetCached(true), cfg->WriteStr("S", "k", "2"));
    EXPECT_EQ(scratch.Read("f.cfg"), "[S]\nk=1\n") << reg;
    cfg.reset();
    EXPECT_EQ(scratch.Read("f.cfg"), "[S]\nk = 2\n") << reg;
  }
}

TEST(CfgTyped, TextThatIsNoSuchValueGivesTheDefault) {
  Scratch scratch;
  CfgClass cfg;
  ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", "")), cfg.SetCached(true));
  for (char const* text : {"", "yes", "1,5", "07/03"}) {  // the last two are also shorter than the format
    ASSERT_TRUE(cfg.WriteStr("T", "k", text));
    EXPECT_EQ(Words(cfg.ReadInt("T", "k", -7), cfg.ReadBool("T", "k", true), cfg.ReadBool("T", "k", false)), "-7 1 0 ");
    EXPECT_EQ(Words(cfg.ReadFloat("T", "k", -7), cfg.ReadDateTime("T", "k", "dd/mm/yyyy", -1)), "-7 -1 ") << text;
  }
  EXPECT_TRUE(cfg.WriteStr("T", "k", "07/03/2005"));
  EXPECT_EQ(cfg.ReadDateTime("T", "k", nullptr, -1), -1) << "shorter than the default format";
}

// Whether a call with these arguments compiles.
constexpr auto kRead = [](auto... args) -> decltype(std::declval<CfgClass&>().ReadBool(args...)) { return {}; };
constexpr auto kWrite = [](auto... args) -> decltype(std::declval<CfgClass&>().WriteBool(args...)) { return {}; };
template <auto& kCall, class... Args>
constexpr bool kCompiles = std::is_invocable_v<decltype(kCall), Args...>;
using Text = char const*;
static_assert(kCompiles<kRead, Text, Text, bool> && !kCompiles<kRead, Text, Text>);
static_assert(kCompiles<kRead, Text, unsigned long, bool> && !kCompiles<kRead, unsigned long, char*>);
static_assert(kCompiles<kWrite, Text, int> && !kCompiles<kWrite, Text, Text> && !kCompiles<kWrite, Text, Text, Text>);
static_assert(kCompiles<kWrite, std::string, std::string, bool> && !kCompiles<kWrite, std::string, Text>);

// The overloads of an operation on key K: four that name section T, where K is number 0, and four for the current
// section S, where it is number 1. `texts` is `args` for the overloads with std::string.
#define ZELVANE_TOLD(op, place, args) [](CfgClass& c) { return Words(c.op(ZELVANE_UNPACK place, ZELVANE_UNPACK args)); }
#define ZELVANE_FORMS(op, args, texts)                                                                        \
#op, {                                                                                                      \
    ZELVANE_TOLD(op, ("t", "k"), args), ZELVANE_TOLD(op, ("T", 0UL), args),                                   \
        ZELVANE_TOLD(op, (string("t"), string("k")), texts), ZELVANE_TOLD(op, (string("T"), 0UL), texts),     \
        ZELVANE_TOLD(op, ("k"), args), ZELVANE_TOLD(op, (1UL), args), ZELVANE_TOLD(op, (string("k")), texts), \
        ZELVANE_TOLD(op, (1UL), texts)                                                                        \
  }
#define ZELVANE_SAME_FORMS(op, args) ZELVANE_FORMS(op, args, args)

TEST(CfgTyped, EveryFormOfAFamilyDoesTheSame) {
  using std::string;
  struct {
    char const* name;
    string (*forms[8])(CfgClass&);
    char const *inS, *inT;      // the value of K there
    char const *toldS, *toldT;  // by an overload for that section: the result; for a writer, the new value of K
    char const* closed;         // the result without a file
  } const rows[] = {
      {ZELVANE_FORMS(ReadStr, ("d"), (string("d"))), "a", "b", "a", "b", "d"},
      {ZELVANE_SAME_FORMS(ReadInt, (-3L)), "1", "-2147483648", "1", "-2147483648", "-3"},
      {ZELVANE_SAME_FORMS(ReadBool, (true)), "0", "-2", "0", "1", "1"},
      {ZELVANE_FORMS(ReadDateTime, ("dd/mm/yyyy", -3L), (string("dd/mm/yyyy"), -3L)), "07/03/2005", "08/03/2005",
       "1110153600", "1110240000", "-3"},
      {ZELVANE_SAME_FORMS(ReadFloat, (-0.5)), "1.5", "2.5E1", "1.5", "25", "-0.5"},
      {ZELVANE_FORMS(WriteStr, ("v"), (string("v"))), "a", "b", "=v", "=v", "0"},
      {ZELVANE_SAME_FORMS(WriteInt, (-7L)), "a", "b", "=-7", "=-7", "0"},
      {ZELVANE_SAME_FORMS(WriteUInt, (4294967295UL)), "a", "b", "=4294967295", "=4294967295", "0"},
      {ZELVANE_SAME_FORMS(WriteBool, (true)), "a", "b", "=1", "=1", "0"},
      {ZELVANE_FORMS(WriteDateTime, ("yyyy", 0L), (string("yyyy"), 0L)), "a", "b", "=1970", "=1970", "0"},
      {ZELVANE_SAME_FORMS(WriteFloat, (1.5, 9U, 4U)), "a", "b", "=    1.500", "=    1.500", "0"},
  };
  Scratch scratch;
  for (auto const& row : rows) {
    for (int form = 0; form < 8; form++) {
      SCOPED_TRACE(row.name + (" " + std::to_string(form)));
      CfgClass cfg;
      EXPECT_EQ(row.forms[form](cfg), row.closed + string(" "));
      string s = row.inS, t = row.inT;
      ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", "[S]\nA=other\nK=" + s + "\n[T]\nK=" + t)), cfg.SetSection("S"));
      string const told = form < 4 ? row.toldT : row.toldS;
      bool const writes = told[0] == '=';
      EXPECT_EQ(row.forms[form](cfg), (writes ? "1" : told) + " ");
      EXPECT_EQ(cfg.ReadStr("S", "A", ""), "other") << "not what was reached by number before";
      if (writes) (form < 4 ? t : s) = told.substr(1);
      EXPECT_EQ(Dump(cfg), "S{A=other|K=" + s + "}T{K=" + t + "}");
      EXPECT_EACH((cfg.ReadStr(0UL, ""), cfg.ReadStr("T", 0UL, ""), cfg.ReadStr(0UL, "")), "other", t, "other");
      ASSERT_ALL(cfg.DeleteKey("S", "K"), cfg.DeleteKey("T", "K"));
      if (writes && form % 2 == 0) continue;  // an overload by name would create the key
      EXPECT_EQ(row.forms[form](cfg), row.closed + string(" ")) << "no such key";
    }
  }
}

// A subclass that records the hooks called and refuses to insert one name, or to take one line.
struct Steps : CfgClass {
  std::string taken, refused = "-";
  bool upper = true;
  bool GetUpperCaseWriteCache() override {
    CfgClass::LocateSection("a look-up in between", nullptr);  // must not affect the insertion
    return taken += 'U', upper;
  }
  bool LoadFile(bool n) override { return taken += 'L', CfgClass::LoadFile(n); }
  bool SaveFile() override { return taken += 'S', CfgClass::SaveFile(); }
  void ClearReadCache() override { taken += 'r', CfgClass::ClearReadCache(); }
  void ClearWriteCache() override { taken += 'w', CfgClass::ClearWriteCache(); }
  bool ParseLine(std::string const& line, bool n) override {
    return taken += 'P', (line.empty() || line != refused) && CfgClass::ParseLine(line, n);
  }
  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    return taken += 'i', name != refused && CfgClass::InsertSection(name, line, create);
  }
  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    return taken += 'k', key != refused && CfgClass::InsertKey(key, value, section, previous, line, create);
  }
  bool LocateSection(std::string const& name, SectionPosition* out) override {
    return taken += 's', CfgClass::LocateSection(name, out);
  }
  bool LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* out) override {
    return taken += 'l', CfgClass::LocateKey(section, key, out);
  }
  std::string Take() { return std::exchange(taken, ""); }
};

TEST(CfgHooks, ASubclassMayReplaceEach) {
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

// A subclass whose lines do not come from the file.
struct OwnLines : Steps {
  bool LoadFile(bool) override { return CfgClass::ParseLine("[S]", false); }
};

TEST(CfgHooks, ALoadOfItsOwnKeepsTheOtherHooks) {
  Scratch scratch;
  OwnLines cfg;
  ASSERT_TRUE(cfg.Open(scratch.Path("f.cfg")));
  cfg.Take();
  EXPECT_TRUE(cfg.WriteStr("S", "k", "v"));
  EXPECT_EQ(cfg.Take(), "slkUS");
  EXPECT_EQ(scratch.Read("f.cfg"), "[S]\nK = v");
}

TEST(CfgHooks, AKeyParsedAfterItsSectionIsErased) {
  Scratch scratch;
  CfgClass cfg;
  ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", "a=1\n[S]\nk=1")), cfg.SetCached(true), cfg.EraseSection("S"));
  EXPECT_TRUE(cfg.ParseLine("b=2", false));
  EXPECT_EQ(Dump(cfg), "{A=1|B=2}") << "it belongs to the unnamed section";
  EXPECT_TRUE(cfg.Flush());
  EXPECT_EQ(scratch.Read("f.cfg"), "a=1\nb=2");
}

TEST(CfgHooks, ARefusedInsertionChangesNothing) {
  Scratch scratch;
  std::string const path = scratch.Write("f.cfg", "a=1\n[s]\nk=1");
  for (char const* refused : {"s", "k", "", "k=1"}) {
    Steps cfg;
    cfg.refused = refused;
    EXPECT_FALSE(cfg.Open(path)) << refused;
    EXPECT_EACH((cfg.GetFileName(), Dump(cfg)), "") << refused << ": nothing stays of half a file";
  }
  for (char const* refused : {"s", "k", ""}) {
    Steps cfg;
    ASSERT_ALL(cfg.Open(path), cfg.SetCached(true), cfg.WriteStr("t", "x", "pending"));
    cfg.refused = refused;
    EXPECT_FALSE(cfg.LoadFile(false)) << refused;
    EXPECT_EQ(Dump(cfg), "") << refused << ": nor of half a reload";
    EXPECT_TRUE(cfg.Flush());
    EXPECT_EQ(scratch.Read("f.cfg"), "a=1\n[s]\nk=1") << refused << ": and a save does not empty the file";
    ASSERT_TRUE(cfg.Open(scratch.Write("g.cfg", "")));
    EXPECT_NONE(cfg.WriteStr(*refused == '\0' ? "" : "s", "k", "v"), cfg.KeyExists("s", "k")) << refused;
  }
}

TEST(CfgHooks, AnEntryWhoseLineSaysSomethingElseKeepsItsValue) {
  Scratch scratch;
  CfgClass cfg;
  CfgClass::SectionPosition at;
  CfgClass::KeyPosition key;
  ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", "[S]\nk=1")), cfg.LocateSection("s", &at), cfg.LocateKey(&at, "k", &key),
             cfg.InsertKey("x", "other", &at, &key, &at->second.header, false));
  EXPECT_EQ(Dump(cfg), "S{K=1|X=other}");
}

TEST(CfgHooks, APositionReachesTheOtherSections) {
  Scratch scratch;
  CfgClass cfg;
  CfgClass::SectionPosition a;
  ASSERT_ALL(cfg.Open(scratch.Write("f.cfg", "[A]\na=1\n[B]\nb=1\nc=2\n[A]\nd=3")), cfg.LocateSection("a", &a));
  CfgClass::SectionPosition const b = std::next(a);
  EXPECT_EQ(Words(*a->second.lastKey->second.line, *b->second.lastKey->second.line), Words("d=3", "c=2"));
  // A section that was inserted there has its keys among the lines of another one, which must not treat them as its
  // own.
  CfgClass::LinePosition const inside = std::next(b->second.header);
  EXPECT_ALL(cfg.InsertSection("x", &inside, false), cfg.WriteStr("x", "k", "1"));
  EXPECT_EQ(Dump(cfg), "A{A=1|D=3}B{B=1|C=2}X{K=1}");
}

TEST(CfgHooks, AnIndexWithoutLinesCanBeRead) {
  Scratch scratch;
  for (bool const anew : {false, true}) {
    RegCfgClass cfg;
    ASSERT_TRUE(cfg.Open(scratch.Write("f.cfg", "k=0\n[S]\na=1\nb=2\n")));
    EXPECT_TRUE(anew ? cfg.LoadFile(true) : (cfg.ClearWriteCache(), true));
    EXPECT_ALL(cfg.SetCached(true), cfg.WriteStr("S", "a", "3"), cfg.DeleteKey("S", "b")) << anew;
    EXPECT_ALL(cfg.SaveAs(scratch.Path("copy").c_str()), cfg.SaveAs(scratch.Path("twin"))) << anew;
    EXPECT_EACH((scratch.Read("copy"), scratch.Read("twin")), "K = 0\n\n[S]\nA = 3\n\n") << anew;
    EXPECT_ALL(cfg.EraseSection(""), cfg.EraseSection("S"), cfg.Flush()) << anew;
    EXPECT_EQ(scratch.Read("f.cfg"), "") << anew << ": a save writes the lines, and there are none";
  }
}

}  // namespace
