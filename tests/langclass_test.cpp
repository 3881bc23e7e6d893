#include "zelvane/lang/langclass.h"

#include "support/test.h"

namespace {

// A hand-written file: comments, CR LF, odd spacing, a name in Latin-1, a language without a name, a name without
// texts.
constexpr char kFile[] =
    "; textos \xE9\r\n[lang]\r\n 1 = English ; US\r\n2=Portugu\xEAs\n9 = Klingon\n\n[1]\n12 = Power on\r\n"
    "  13=Power  off\n# note\n[3]\n1 = one\n[2]\n12 = Ligar\n";

// A subclass that records the hooks called and fails to load on request.
struct Steps : LangClass {
  using LangClass::SetLangStr;
  bool LoadStrings(long lang) override { return Note("load"), LangClass::LoadStrings(lang) && result; }
  void ClearStrings() override { Note("clear"), LangClass::ClearStrings(); }
  bool SetLangStr(long i, char const* text, long lang) override {
    return Note("set"), LangClass::SetLangStr(i, text, lang);
  }
  bool SetLangStr(long i, char const* text) override { return Note("set own"), LangClass::SetLangStr(i, text); }
  void Note(char const* step) { steps.append(step).append(", "); }
  std::string steps;
  bool result = true;
};

class Languages : public testing::Test {
 protected:
  Languages() { lang_.SetFileName(folder_.Path("lang.cfg")); }
  void Load(std::string const& bytes, long lang) {
    folder_.Write("lang.cfg", bytes);
    EXPECT_TRUE(lang_.LoadStrings(lang));
  }
  std::string File() const { return folder_.Read("lang.cfg"); }

  test::Scratch folder_;
  Steps lang_;
};

TEST_F(Languages, ReadsAHandKeptFile) {
  EXPECT_FALSE(lang_.SetLangStr(1, "text")) << "no language is loaded";
  Load(kFile, 1);
  EXPECT_EQ(lang_.GetLangCount(), 3u);
  std::tuple<long, bool, char const*, char const*, char const*> const rows[] = {
      {0, false, "", "", ""},
      {1, true, "English ; US", "Power on", "Power  off"},
      {2, true, "Portugu\xEAs", "Ligar", ""},
      {3, true, "", "", ""},
      {9, false, "Klingon", "", ""},
      {-1, false, "", "", ""}};
  for (auto const& [lang, loads, name, on, off] : rows)
    EXPECT_EACH((lang_.LoadStrings(lang), lang_.GetLangDesc(lang), lang_.GetLangStr(12), lang_.GetLangStr(13)), loads,
                name, on, off)
        << lang;
  EXPECT_EQ(File(), kFile);
  Load(kFile, 1);
  lang_.SetFileName(test::kNull);
  EXPECT_EQ(lang_.GetLangStr(12), "Power on") << "naming another file leaves what is loaded";
  EXPECT_NONE(lang_.LoadStrings(1), lang_.SetLangStr(1, "text"), lang_.SetLangStr(1, "text", 1));
  EXPECT_EACH((lang_.GetLangStr(12), lang_.GetLangDesc(1)), "");
  EXPECT_EQ(lang_.GetLangCount(), 0u);
}

TEST_F(Languages, WhichKeysAreTexts) {
  for (test::Case const& c : test::Table("lang/keys.txt", "texts")) {
    Load("[5]\n" + c[0] + "\n", 5);
    std::string texts = lang_.GetLangStr(0);
    for (long const id : {1L, 7L, 2147483647L, -1L}) texts += "/" + lang_.GetLangStr(id);
    EXPECT_EQ(texts, c[1]) << c;
  }
}

TEST_F(Languages, WritesATextAndKnowsIt) {
  Load(kFile, 1);
  std::string expected = kFile;
  auto const replace = [&](std::string const& from, std::string const& to) {
    expected.replace(expected.find(from), from.size(), to);
  };
  EXPECT_TRUE(lang_.SetLangStr(12, "On \xE9"));
  replace("12 = Power on\r\n", "12 = On \xE9\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EACH((lang_.GetLangStr(12), lang_.GetLangStr(13)), "On \xE9", "Power  off");
  EXPECT_TRUE(lang_.SetLangStr(1, std::string("two; words\0]", 12), 3)) << "another language, up to the NUL";
  replace("1 = one\n", "1 = two; words\n");
  EXPECT_TRUE(lang_.SetLangStr(0, lang_.GetLangStr(13))) << "a text of the table itself";
  EXPECT_TRUE(lang_.SetLangStr(-3, "never read"));
  replace("  13=Power  off\n", "  13=Power  off\n0 = Power  off\n-3 = never read\n");
  EXPECT_TRUE(lang_.SetLangStr(12, lang_.GetLangStr(99).c_str()));
  replace("12 = On \xE9\n", "12 = \n");
  for (std::string const text : {"[", "]", "a[1]", "a\nb", "\n", "a\rb", "12 = x\r\n"})
    EXPECT_NONE(lang_.SetLangStr(12, text), lang_.SetLangStr(12, text.c_str(), 2)) << text;
  EXPECT_NONE(lang_.SetLangStr(12, test::kNull), lang_.SetLangStr(12, test::kNull, 1));
  EXPECT_EQ(File(), expected);
  EXPECT_EACH((lang_.GetLangStr(0), lang_.GetLangStr(-3), lang_.GetLangStr(12), lang_.GetLangStr(1)), "Power  off", "",
              "", "");
}

TEST_F(Languages, TheFirstTextMakesTheFileUnlessItCannotBeWritten) {
  EXPECT_NONE(lang_.LoadStrings(2), lang_.SetLangStr(1, "refused]"));
  EXPECT_EQ(folder_.List(), test::Names{});
  EXPECT_TRUE(lang_.SetLangStr(12, "Ligar")) << "language 2 counts as loaded although it has no section";
  EXPECT_EACH((File(), lang_.GetLangStr(12)), "[2]\n12 = Ligar", "Ligar");
  for (std::string const name : {"folder", "missing/lang.cfg"}) {
    std::filesystem::create_directories(folder_.Path("folder/x"));
    lang_.SetFileName(folder_.Path(name));
    EXPECT_EACH((lang_.LoadStrings(1), lang_.SetLangStr(1, "text"), lang_.GetLangCount()), false, false, 0) << name;
  }
  EXPECT_EQ(folder_.List(), (test::Names{"folder/", "folder/x/", "lang.cfg"}));
}

TEST_F(Languages, NumbersAre32BitsWide) {
  auto const beyond = static_cast<long>(1LL << 32);  // 0 where long has 32 bits
  Load(kFile, beyond + 1);
  EXPECT_TRUE(lang_.SetLangStr(beyond + 12, "On", beyond + 1));
  EXPECT_EACH((lang_.GetLangStr(beyond + 12), lang_.GetLangStr(12), lang_.GetLangDesc(beyond + 2)), "On", "On",
              "Portugu\xEAs");
}

TEST_F(Languages, HooksAreCalledVirtually) {
  Load("[1]\n1 = one\n", 1);
  EXPECT_EQ(std::exchange(lang_.steps, ""), "load, clear, ");
  EXPECT_TRUE(lang_.SetLangStr(2, std::string("two")));
  EXPECT_EQ(std::exchange(lang_.steps, ""), "set own, set, clear, load, clear, ");
  lang_.result = false;
  EXPECT_FALSE(lang_.SetLangStr(2, std::string("dois"), 1));
  EXPECT_EACH((std::exchange(lang_.steps, ""), File()), "set, clear, load, clear, ", "[1]\n1 = one\n2 = dois\n");
  EXPECT_TRUE(lang_.SetLangStr(1, "um", 2)) << "another language is not loaded";
  EXPECT_EQ(lang_.steps, "set, ");
}

}  // namespace
