// The engine against a naive model: the same seeded operations on both, every byte and every result compared.
#include "support/test.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

// A list of lines, searched from the start every time.
class Model {
 public:
  explicit Model(bool upper) : upper_(upper) {}

  void Load(std::string const& text) {
    *this = Model(upper_);
    std::istringstream in(text + "\n");
    Section* current = nullptr;
    for (std::string raw; std::getline(in, raw);) {
      std::string const line = Trim(raw);
      bool const header = line[0] == '[';
      lines_.push_back(std::make_shared<std::string>(raw));
      if (line.empty() || line[0] == ';') continue;
      if (header || current == nullptr) {
        std::string const name = header ? AnsiUpperCase(Trim(line.substr(1, line.size() - 2))) : "";
        current = &sections_.try_emplace(name, Section{lines_.back(), {}, {}}).first->second;
      }
      if (header) continue;
      std::size_t const equals = line.find('=');  // without one the whole line is also the value
      auto const [key, first] = current->keys.try_emplace(AnsiUpperCase(Trim(line.substr(0, equals))),
                                                          Key{Trim(line.substr(equals + 1)), lines_.back()});
      if (first) current->written = {key->first};
    }
  }

  std::string Text() const {
    std::string text;
    for (Line const& line : lines_) text += *line + "\n";
    return text.substr(0, text.size() - !text.empty());
  }

  void Write(std::string const& name, std::string const& key, std::string const& value) {
    auto const [at, made] = sections_.try_emplace(AnsiUpperCase(name));
    Section& section = at->second;
    if (made) {
      std::string const shown = name.empty() ? " " : upper_ ? at->first : name;
      section.header = *lines_.insert(lines_.end(), std::make_shared<std::string>("[" + shown + "]"));
    }
    auto const [found, added] = section.keys.try_emplace(AnsiUpperCase(key));
    Line& line = found->second.line;
    if (added) {
      auto const place = At(section.written.empty() ? section.header : section.keys[section.written.back()].line);
      line = *lines_.insert(place == lines_.end() ? lines_.begin() : place + 1, std::make_shared<std::string>());
      section.written.push_back(found->first);
    }
    *line = (!added ? Trim(Trim(*line).substr(0, Trim(*line).find('='))) : upper_ ? found->first : key) + " = " + value;
    found->second.value = value;
  }

  void Delete(std::string const& name, std::string const& key) {
    Section& section = Find(name);
    if (section.keys.count(AnsiUpperCase(key)) == 0) return;
    Drop(section.keys[AnsiUpperCase(key)].line);
    section.keys.erase(AnsiUpperCase(key));
    auto& written = section.written;
    written.erase(std::remove(written.begin(), written.end(), AnsiUpperCase(key)), written.end());
  }

  void Erase(std::string const& name) {
    for (auto const& [key, record] : Find(name).keys) Drop(record.line);
    Drop(Find(name).header);
    sections_.erase(AnsiUpperCase(name));
  }

  std::string Value(std::string const& name, std::string const& key, std::string const& def) {
    auto const& keys = Find(name).keys;
    return keys.count(AnsiUpperCase(key)) == 0 ? def : keys.at(AnsiUpperCase(key)).value;
  }

  std::string Name(std::string const& name, std::size_t n) {
    auto const& keys = Find(name).keys;
    return n >= keys.size() ? "" : std::next(keys.begin(), static_cast<std::ptrdiff_t>(n))->first;
  }

  std::string Dump() const {
    std::string text;
    for (auto const& [name, section] : sections_) {
      text += "[" + name + "]";
      for (auto const& [key, record] : section.keys) text += key + "=" + record.value + "|";
    }
    return text;
  }

 private:
  using Line = std::shared_ptr<std::string>;
  struct Key {
    std::string value;
    Line line;
  };
  struct Section {
    Line header;
    std::map<std::string, Key> keys;
    test::Names written;  // the last loaded key, then the written ones, without the deleted ones
  };

  // An empty section if there is none.
  Section& Find(std::string const& name) {
    auto const found = sections_.find(AnsiUpperCase(name));
    return found == sections_.end() ? none_ = Section() : found->second;
  }
  std::vector<Line>::iterator At(Line const& line) { return std::find(lines_.begin(), lines_.end(), line); }
  void Drop(Line const& line) {
    if (At(line) != lines_.end()) lines_.erase(At(line));
  }

  bool upper_;
  std::vector<Line> lines_;
  std::map<std::string, Section> sections_;
  Section none_;
};

std::string Dump(CfgClass& cfg) {
  std::string text;
  for (unsigned long s = 0; s < cfg.GetSectionCount(); s++) {
    cfg.SetSection(cfg.GetSectionName(s));
    text += "[" + cfg.GetSection() + "]";
    for (unsigned long k = 0; k < cfg.GetKeyCount(); k++) text += cfg.GetKeyName(k) + "=" + cfg.ReadStr(k, "") + "|";
  }
  return text;
}

// Calls every hook through the virtual table, so the engine cannot use its direct paths.
class Stepwise : public CfgClass {};

void Drive(CfgClass& cfg, bool upper, unsigned seed, int operations) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  auto const below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  auto const one = [&below](test::Names const& texts) { return texts[below(texts.size())]; };
  test::Names const sections = {"", "Net", "UPS", "net ", "a b", "\xE7", "TIMERS", "x1", "x2", "x3", "x4", "x5"};
  test::Names const keys = {"A", "b", "Key one", "\xE7\xC7", "Zz", "k=q", "long key name that leaves the short string"};
  test::Names const values = {
      "", "1", " padded ", "a = b", "; no comment", "a value long enough to need memory of its own"};
  test::Names const lines = {"",   "; note", "  [ Net ]\r", "[UPS]", "[ ]", "A=1", " b = 2 ; tail\r",
                             "Zz", "\t",     "key ONE==",   "[x1]"};

  test::Scratch scratch;
  std::string text;
  for (std::size_t i = below(20); i > 0; i--) text += one(lines) + "\n";
  std::string const path = scratch.Write("model.cfg", text);
  Model model(upper);
  model.Load(text);
  ASSERT_ALL(cfg.Open(path), cfg.SetCached(true));
  for (int i = 0; i < operations; i++) {
    std::string const section = one(sections), base = one(keys);
    std::string const key = base + (below(2) == 0 ? std::to_string(below(40)) : "");
    std::size_t choice = below(100);
    // Some stretches have few removals and enough lookups for the engine to build its tables.
    if (i / 200 % 2 == 1 && choice >= 45 && choice < 73) choice = 80;
    if (choice < 45) {
      std::string const value = one(values);
      ASSERT_TRUE(cfg.WriteStr(section, key, value));
      model.Write(section, key, value);
    } else if (choice < 73) {
      ASSERT_TRUE(cfg.DeleteKey(section, key));
      model.Delete(section, key);
    } else if (choice < 76) {
      unsigned long const n = below(20);
      std::string name;
      for (unsigned long k = seed % 2 * n; k <= n; k++) name = cfg.GetKeyName(section, k);  // by a jump or step by step
      ASSERT_EQ(name, model.Name(section, n));
      cfg.SetSection(section);
      ASSERT_EQ(cfg.DeleteKey(n), !name.empty());
      model.Delete(section, name);
      ASSERT_EQ(cfg.GetKeyName(section, n), model.Name(section, n)) << section << " at " << n;
      if (!name.empty()) ASSERT_EACH((cfg.ReadStr(section, name, "none")), "none") << section << "/" << name;
    } else if (choice < 77) {
      ASSERT_TRUE(cfg.EraseSection(section));
      model.Erase(section);
    } else if (choice < 97) {
      ASSERT_EQ(cfg.ReadStr(section, key, "none"), model.Value(section, key, "none")) << section << "/" << key;
    } else if (choice < 99) {
      ASSERT_EQ(Dump(cfg), model.Dump());
    } else {
      ASSERT_TRUE(cfg.Open(path));
      ASSERT_EQ(test::ReadFile(path), model.Text()) << "after " << i << " operations";
      model.Load(model.Text());
    }
  }
  ASSERT_TRUE(cfg.Close());
  ASSERT_EQ(test::ReadFile(path), model.Text());
}

TEST(CfgModel, SameBytesAsANaiveList) {
  for (unsigned seed = 1; seed <= 25; seed++) {
    CfgClass plain;
    RegCfgClass spelled;
    Stepwise stepwise;
    Drive(plain, true, seed, 400);
    Drive(spelled, false, seed, 200);
    Drive(stepwise, true, seed, 200);
  }
}

// A file is read before it is changed: with few lookups in each section, with many, and by number first or last. Each
// case uses another list. Names are repeated, in several spellings, with common beginnings.
TEST(CfgModel, ALoadedFile) {
  test::Scratch scratch;
  for (unsigned seed = 1; seed <= 60; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto const below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    auto const spelled = [&below](std::string const& name) { return below(2) == 0 ? AnsiUpperCase(name) : name; };
    auto const name = [&] {
      std::vector<std::string> const stems = {"k", "a name that begins as others do ", "\xE7\xFF", "a name t", "x y"};
      return spelled(stems[below(stems.size())] + std::to_string(below(12)));
    };
    std::vector<std::string> const separators = {"=", " = ", "\t=", ""};
    std::string text = seed % 2 == 0 ? "" : "; note\nfirst=1\n";
    for (std::size_t i = below(300); i > 0; i--) {
      if (below(20) == 0) text += "[" + spelled("section " + std::to_string(below(6))) + "]\r\n";
      text += std::string(below(2), ' ') + name() + separators[below(4)] + std::to_string(below(9)) + "\n";
    }
    std::string const path = scratch.Write("loaded.cfg", text);
    Model model(true);
    model.Load(text);
    CfgClass cfg;
    ASSERT_ALL(cfg.Open(path), cfg.SetCached(true));
    for (std::size_t i = 0; i < 30 * seed; i++) {
      std::string const section = spelled("section " + std::to_string(below(7))), key = name();
      ASSERT_EQ(cfg.ReadStr(section, key, "none"), model.Value(section, key, "none")) << section << "/" << key;
      unsigned long const n = below(40);
      if (i % 64 != 63) continue;
      ASSERT_EQ(cfg.GetKeyName(section, n), model.Name(section, n)) << section << " at " << n;
    }
    if (seed % 3 != 0) {
      ASSERT_EQ(Dump(cfg), model.Dump());
    }
    ASSERT_ALL(cfg.WriteStr("section 3", "k3", "v"), cfg.DeleteKey("section 4", "x y1"));
    model.Write("section 3", "k3", "v");
    model.Delete("section 4", "x y1");
    ASSERT_EQ(Dump(cfg), model.Dump());
    ASSERT_TRUE(cfg.Close());
    ASSERT_EQ(test::ReadFile(path), model.Text());
  }
}

// Numbers in any order, between insertions and deletions, in maps large enough for several rows of the index; names
// that are shorter than eight bytes, or have the first eight in common.
void DriveNames(bool sections) {
  SCOPED_TRACE(sections ? "sections" : "keys");
  test::Scratch scratch;
  std::mt19937 random(7);
  CfgClass cfg;
  ASSERT_ALL(cfg.Open(scratch.Write("many.cfg", "")), cfg.SetCached(true), cfg.SetSection("S"));
  test::Names const stems = {"", "LONG NAME ", "\xFFLONG NAME ", "00000"};
  std::set<std::string> names;
  auto const check = [&](unsigned long n) {
    std::string const expected = n < names.size() ? *std::next(names.begin(), static_cast<long>(n)) : "";
    ASSERT_EQ(sections ? cfg.GetSectionName(n) : cfg.GetKeyName(n), expected) << n << " of " << names.size();
  };
  for (int i = 0; i < 6000; i++) {
    std::string const name = stems[random() % 4] + std::to_string(random() % 2000);
    bool const exists = sections ? cfg.SectionExists(name) : cfg.KeyExists(name);
    ASSERT_EQ(exists, names.count(name) == 1) << name;
    bool const write = random() % 3 != 0;
    if (sections)
      ASSERT_TRUE(write ? cfg.WriteStr(name, "k", "v") : cfg.EraseSection(name)) << name;
    else
      ASSERT_TRUE(write ? cfg.WriteStr(name, "v") : cfg.DeleteKey(name)) << name;
    if (!write) names.erase(name);
    if (write) names.insert(name);
    if (i % 8 == 0) check(random() % (names.size() + 2));
    if (sections || i % 8 != 4 || names.empty()) continue;
    unsigned long const n = random() % names.size();
    ASSERT_TRUE(cfg.DeleteKey(n)) << n << " of " << names.size();
    names.erase(std::next(names.begin(), static_cast<long>(n)));
  }
  for (unsigned long n = names.size() + 1; n-- > 0;) check(n);
}

TEST(CfgModel, AddressingByNumber) {
  DriveNames(false);
  DriveNames(true);
}

}  // namespace
