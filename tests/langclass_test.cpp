#include "zelvane/lang/langclass.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "support/slot.h"

namespace {

using Names = std::vector<std::string>;

// Kept by hand: comments, CR LF, odd spacing, a name in Latin-1, a language without a name, a name without texts.
constexpr char kFile[] =
    "; textos \xE9\r\n[lang]\r\n 1 = English ; US\r\n2=Portugu\xEAs\n9 = Klingon\n\n[1]\n12 = Power on\r\n"
    "  13=Power  off\n# note\n[3]\n1 = one\n[2]\n12 = Ligar\n";

class Languages : public testing::Test {
 protected:
  Languages() { lang_.SetFileName(folder_.Path("lang.cfg")); }
  void Write(std::string const& bytes) { folder_.Write("lang.cfg", bytes); }
  std::string File() const { return folder_.Read("lang.cfg"); }

  test::Scratch folder_;
  LangClass lang_;
};

TEST(LangClassTable, SlotOrder) {
  using L = LangClass;
  using Text = std::string const&;
  size_t const slots[] = {test::Slot<void (L::*)(Text)>(&L::SetFileName),
                          test::Slot<void (L::*)(char const*)>(&L::SetFileName),
                          test::Slot(&L::GetLangCount),
                          test::Slot(&L::GetLangDesc),
                          test::Slot(&L::LoadStrings),
                          test::Slot(&L::ClearStrings),
                          test::Slot(&L::GetLangStr),
                          test::Slot<bool (L::*)(long, Text, long)>(&L::SetLangStr),
                          test::Slot<bool (L::*)(long, char const*, long)>(&L::SetLangStr),
                          test::Slot<bool (L::*)(long, Text)>(&L::SetLangStr),
                          test::Slot<bool (L::*)(long, char const*)>(&L::SetLangStr)};
  size_t expected = 2;  // behind the destructor's two
  for (size_t const slot : slots) EXPECT_EQ(slot, expected++);
}

TEST(LangClassTable, WithoutAFile) {
  LangClass lang;
  for (bool const named : {false, true}) {
    if (named) lang.SetFileName(static_cast<char const*>(nullptr));
    EXPECT_EQ(lang.GetLangCount(), 0u);
    EXPECT_EQ(lang.GetLangDesc(1), "");
    EXPECT_FALSE(lang.LoadStrings(1));
    EXPECT_FALSE(lang.SetLangStr(1, "text", 1));
    EXPECT_FALSE(lang.SetLangStr(1, "text")) << "no language is loaded";
    EXPECT_EQ(lang.GetLangStr(1), "");
  }
}

TEST_F(Languages, ReadsAHandKeptFile) {
  Write(kFile);
  EXPECT_EQ(lang_.GetLangCount(), 3u);
  struct {
    long lang;
    char const* name;
    bool loaded;
    char const* twelve;
    char const* thirteen;
  } const cases[] = {{1, "English ; US", true, "Power on", "Power  off"},
                     {2, "Portugu\xEAs", true, "Ligar", ""},
                     {9, "Klingon", false, "", ""},
                     {3, "", true, "", ""},
                     {4, "", false, "", ""},
                     {-1, "", false, "", ""}};
  for (auto const& c : cases) {
    EXPECT_EQ(lang_.GetLangDesc(c.lang), c.name) << c.lang;
    EXPECT_EQ(lang_.LoadStrings(c.lang), c.loaded) << c.lang;
    EXPECT_EQ(lang_.GetLangStr(12), c.twelve) << c.lang;
    EXPECT_EQ(lang_.GetLangStr(13), c.thirteen) << c.lang;
  }
  EXPECT_EQ(File(), kFile);
}

TEST_F(Languages, WhichKeysAreTexts) {
  struct {
    char const* keys;
    long id;
    char const* text;
  } const cases[] = {
      {"1 = a", 1, "a"},
      {"0 = a", 0, "a"},
      {"-1 = a", -1, ""},
      {"-3 = a", -3, ""},
      {"x = a", 0, ""},
      {"1x = a", 1, ""},
      {"2147483647 = a", 2147483647, "a"},
      {"2147483648 = a", 0, ""},
      {"4294967297 = a", 1, ""},
      {"1 = a;b = c \xE9 ;x", 1, "a;b = c \xE9 ;x"},
      {"1 =", 1, ""},
      {"11", 11, "11"},
      // Of two spellings the first by position counts: "+" and "0" sort before "7".
      {"7 = plain\n007 = zeros", 7, "zeros"},
      {"007 = zeros\n+7 = plus", 7, "plus"},
      {"7 = plain\n07 =", 7, ""},
      {"7 = first\n7 = again", 7, "first"},
  };
  for (auto const& c : cases) {
    Write("[5]\n" + std::string(c.keys) + "\n");
    EXPECT_TRUE(lang_.LoadStrings(5)) << c.keys;
    EXPECT_EQ(lang_.GetLangStr(c.id), c.text) << c.keys;
    EXPECT_EQ(lang_.GetLangStr(99), "") << c.keys;
  }
  EXPECT_EQ(lang_.GetLangStr(99).size() + lang_.GetLangStr(7).size(), 5u) << "asking for a text does not make one";
}

TEST_F(Languages, LoadingReplacesAndClearingForgets) {
  Write(kFile);
  EXPECT_TRUE(lang_.LoadStrings(1));
  EXPECT_TRUE(lang_.LoadStrings(3));
  EXPECT_EQ(lang_.GetLangStr(12), "");
  EXPECT_EQ(lang_.GetLangStr(1), "one");
  lang_.ClearStrings();
  EXPECT_EQ(lang_.GetLangStr(1), "");
  EXPECT_FALSE(lang_.SetLangStr(1, "text"));
  EXPECT_TRUE(lang_.LoadStrings(1));
  lang_.SetFileName("");
  EXPECT_EQ(lang_.GetLangStr(12), "Power on") << "naming another file leaves what is loaded";
  EXPECT_FALSE(lang_.LoadStrings(1));
  EXPECT_EQ(lang_.GetLangStr(12), "");
  EXPECT_FALSE(lang_.SetLangStr(1, "text"));
}

TEST_F(Languages, WritesATextAndKnowsIt) {
  Write(kFile);
  EXPECT_TRUE(lang_.LoadStrings(1));
  EXPECT_TRUE(lang_.SetLangStr(12, "On \xE9"));
  std::string expected = kFile;
  auto const replace = [&](std::string const& from, std::string const& to) {
    expected.replace(expected.find(from), from.size(), to);
  };
  replace("12 = Power on\r\n", "12 = On \xE9\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(lang_.GetLangStr(12), "On \xE9");
  EXPECT_EQ(lang_.GetLangStr(13), "Power  off");
  EXPECT_TRUE(lang_.SetLangStr(1, std::string("two; words"), 3)) << "another language";
  replace("1 = one\n", "1 = two; words\n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(lang_.GetLangStr(1) + lang_.GetLangStr(12), "On \xE9");
  EXPECT_TRUE(lang_.SetLangStr(0, std::string("zero")));
  replace("  13=Power  off\n", "  13=Power  off\n0 = zero\n");
  EXPECT_TRUE(lang_.SetLangStr(-3, "never read"));
  replace("0 = zero\n", "0 = zero\n-3 = never read\n");
  EXPECT_TRUE(lang_.SetLangStr(12, ""));
  replace("12 = On \xE9\n", "12 = \n");
  EXPECT_EQ(File(), expected);
  EXPECT_EQ(lang_.GetLangStr(0) + lang_.GetLangStr(-3) + lang_.GetLangStr(12), "zero");
}

TEST_F(Languages, ATextOfTheTableItself) {
  Write("[1]\n1 = a text that is too long to stand in the string itself\n2 = b\n");
  EXPECT_TRUE(lang_.LoadStrings(1));
  EXPECT_TRUE(lang_.SetLangStr(2, lang_.GetLangStr(1)));
  EXPECT_TRUE(lang_.SetLangStr(3, lang_.GetLangStr(2).c_str()));
  EXPECT_EQ(lang_.GetLangStr(3), "a text that is too long to stand in the string itself");
}

TEST_F(Languages, TheFirstTextMakesTheFile) {
  EXPECT_FALSE(lang_.LoadStrings(2));
  EXPECT_EQ(lang_.GetLangCount(), 0u);
  EXPECT_EQ(folder_.List(), Names{});
  EXPECT_FALSE(lang_.SetLangStr(1, "refused]"));
  EXPECT_EQ(folder_.List(), Names{});
  EXPECT_TRUE(lang_.SetLangStr(12, "Ligar")) << "language 2 counts as loaded although it has no section";
  EXPECT_EQ(File(), "[2]\n12 = Ligar");
  EXPECT_EQ(lang_.GetLangStr(12), "Ligar");
  EXPECT_EQ(folder_.List(), Names{"lang.cfg"});
}

TEST_F(Languages, TextsThatTheFileCannotHold) {
  Write(kFile);
  EXPECT_TRUE(lang_.LoadStrings(1));
  for (std::string const text : {"[", "]", "a[1]", "a\nb", "\n", "a\rb", "12 = x\r\n"}) {
    EXPECT_FALSE(lang_.SetLangStr(12, text)) << text;
    EXPECT_FALSE(lang_.SetLangStr(12, text.c_str(), 2)) << text;
  }
  EXPECT_FALSE(lang_.SetLangStr(12, static_cast<char const*>(nullptr)));
  EXPECT_FALSE(lang_.SetLangStr(12, static_cast<char const*>(nullptr), 1));
  EXPECT_EQ(File(), kFile);
  EXPECT_EQ(lang_.GetLangStr(12), "Power on");
  EXPECT_TRUE(lang_.SetLangStr(12, std::string("a\0]", 3))) << "up to the NUL";
  EXPECT_EQ(lang_.GetLangStr(12), "a");
}

TEST_F(Languages, NumbersAre32BitsWide) {
  if (sizeof(long) == 4) GTEST_SKIP() << "so is long";
  long const beyond = static_cast<long>(1LL << 32);
  Write(kFile);
  EXPECT_TRUE(lang_.LoadStrings(beyond + 1));
  EXPECT_EQ(lang_.GetLangStr(beyond + 12), "Power on");
  EXPECT_EQ(lang_.GetLangDesc(beyond + 2), "Portugu\xEAs");
  EXPECT_TRUE(lang_.SetLangStr(beyond + 12, "On", 1));
  EXPECT_EQ(lang_.GetLangStr(12), "On");
}

TEST_F(Languages, AFileThatCannotBeReadOrWritten) {
  int const descriptors = test::OpenDescriptors();
  std::filesystem::create_directories(folder_.Path("lang.cfg/x"));
  EXPECT_FALSE(lang_.LoadStrings(1));
  EXPECT_FALSE(lang_.SetLangStr(1, "text"));
  lang_.SetFileName(folder_.Path("missing/lang.cfg"));
  EXPECT_FALSE(lang_.LoadStrings(1));
  EXPECT_FALSE(lang_.SetLangStr(1, "text"));
  EXPECT_EQ(lang_.GetLangCount(), 0u);
  EXPECT_EQ(folder_.List(), (Names{"lang.cfg/", "lang.cfg/x/"}));
  EXPECT_EQ(test::OpenDescriptors(), descriptors);
}

// A subclass that replaces a step is asked wherever the step is taken.
struct Steps : LangClass {
  using LangClass::SetLangStr;
  bool LoadStrings(long lang) override {
    steps += "load " + std::to_string(lang) + ", ";
    return LangClass::LoadStrings(lang) && result;
  }
  void ClearStrings() override {
    steps += "clear, ";
    LangClass::ClearStrings();
  }
  bool SetLangStr(long id, char const* text, long lang) override {
    steps += "set, ";
    return LangClass::SetLangStr(id, text, lang);
  }
  bool SetLangStr(long id, char const* text) override {
    steps += "set own, ";
    return LangClass::SetLangStr(id, text);
  }
  std::string steps;
  bool result = true;
};

TEST_F(Languages, StepsGoThroughTheTable) {
  Write("[1]\n1 = one\n");
  Steps lang;
  lang.SetFileName(folder_.Path("lang.cfg"));
  EXPECT_TRUE(lang.LoadStrings(1));
  EXPECT_EQ(lang.steps, "load 1, clear, ");
  lang.steps.clear();
  EXPECT_TRUE(lang.SetLangStr(2, std::string("two")));
  EXPECT_EQ(lang.steps, "set own, set, clear, load 1, clear, ");
  lang.steps.clear();
  lang.result = false;
  EXPECT_FALSE(lang.SetLangStr(2, std::string("dois"), 1)) << "written, but not loaded anew";
  EXPECT_EQ(lang.steps, "set, clear, load 1, clear, ");
  EXPECT_EQ(File(), "[1]\n1 = one\n2 = dois\n");
  lang.steps.clear();
  EXPECT_TRUE(lang.SetLangStr(1, "um", 2)) << "another language is not loaded";
  EXPECT_EQ(lang.steps, "set, ");
}

}  // namespace
