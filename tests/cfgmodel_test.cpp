// The engine beside a naive model: the same seeded operations on both, every byte and every answer compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "zelvane/config/cfgclass.h"

namespace {

std::string Stripped(std::string const& text) {
  std::size_t const first = text.find_first_not_of(" \n\t\r");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \n\t\r") - first + 1);
}

std::string Capital(std::string text) {
  for (char& c : text)
    if ((c >= 'a' && c <= 'z') || c == '\xE7') c = static_cast<char>(c - 0x20);
  return text;
}

// A list of lines, searched from the start for everything.
class Model {
 public:
  explicit Model(bool upper) : upper_(upper) {}

  void Load(std::string const& text) {
    lines_.clear();
    sections_.clear();
    std::size_t start = 0;
    for (std::string current = "\n";; start++) {
      std::size_t const end = text.find('\n', start);
      std::string const raw = text.substr(start, end == std::string::npos ? end : end - start);
      std::string const line = Stripped(raw);
      int const id = Append(raw);
      if (!line.empty() && line[0] == '[') {
        current = Capital(Stripped(line.substr(1, line.size() - 2)));
        if (sections_.count(current) == 0) sections_[current].header = id;
      } else if (!line.empty() && line[0] != ';') {
        if (current == "\n" && sections_.count(current = "") == 0) sections_[current].header = id;
        std::size_t const equals = line.find('=');
        std::string const key = Capital(Stripped(line.substr(0, equals)));
        Section& section = sections_[current];
        if (section.keys.count(key) == 0) {
          section.keys[key] = {Stripped(equals == std::string::npos ? line : line.substr(equals + 1)), id};
          section.written = {key};
        }
      }
      if (end == std::string::npos) return;
      start = end;
    }
  }

  std::string Text() const {
    std::string text;
    for (Line const& line : lines_) text += line.text + "\n";
    return text.empty() ? text : text.substr(0, text.size() - 1);
  }

  void Write(std::string const& name, std::string const& key, std::string const& value) {
    if (sections_.count(Capital(name)) == 0)
      sections_[Capital(name)].header = Append("[" + (name.empty() ? " " : upper_ ? Capital(name) : name) + "]");
    Section& section = sections_[Capital(name)];
    auto const found = section.keys.find(Capital(key));
    if (found != section.keys.end()) {
      std::string const old = Stripped(At(found->second.line)->text);
      At(found->second.line)->text = Stripped(old.substr(0, old.find('='))) + " = " + value;
      found->second.value = value;
      return;
    }
    int const after = section.written.empty() ? section.header : section.keys[section.written.back()].line;
    auto place = At(after);
    place = place == lines_.end() ? lines_.begin() : place + 1;
    lines_.insert(place, {next_, (upper_ ? Capital(key) : key) + " = " + value});
    section.keys[Capital(key)] = {value, next_++};
    section.written.push_back(Capital(key));
  }

  void Delete(std::string const& name, std::string const& key) {
    auto const found = sections_.find(Capital(name));
    if (found == sections_.end() || found->second.keys.count(Capital(key)) == 0) return;
    Section& section = found->second;
    lines_.erase(At(section.keys[Capital(key)].line));
    section.keys.erase(Capital(key));
    auto& written = section.written;
    written.erase(std::remove(written.begin(), written.end(), Capital(key)), written.end());
  }

  void Erase(std::string const& name) {
    auto const found = sections_.find(Capital(name));
    if (found == sections_.end()) return;
    for (auto const& [key, record] : found->second.keys) lines_.erase(At(record.line));
    if (At(found->second.header) != lines_.end()) lines_.erase(At(found->second.header));
    sections_.erase(found);
  }

  std::optional<std::string> Value(std::string const& name, std::string const& key) const {
    auto const found = sections_.find(Capital(name));
    if (found == sections_.end() || found->second.keys.count(Capital(key)) == 0) return std::nullopt;
    return found->second.keys.at(Capital(key)).value;
  }

  std::string Name(std::string const& name, std::size_t n) const {
    auto const found = sections_.find(Capital(name));
    if (found == sections_.end() || n >= found->second.keys.size()) return "";
    return std::next(found->second.keys.begin(), static_cast<std::ptrdiff_t>(n))->first;
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
  struct Line {
    int id;
    std::string text;
  };
  struct Key {
    std::string value;
    int line;
  };
  struct Section {
    int header = -1;
    std::map<std::string, Key> keys;
    std::vector<std::string> written;  // the last loaded key, then those written, without the deleted ones
  };

  int Append(std::string const& text) {
    lines_.push_back({next_, text});
    return next_++;
  }
  std::vector<Line>::iterator At(int id) {
    return std::find_if(lines_.begin(), lines_.end(), [id](Line const& line) { return line.id == id; });
  }

  bool upper_;
  int next_ = 0;
  std::vector<Line> lines_;
  std::map<std::string, Section> sections_;
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

// Takes every step through the virtual table, so that the engine cannot take its short ways.
class Stepwise : public CfgClass {};

void Drive(CfgClass& cfg, bool upper, unsigned seed, int operations) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  auto const below = [&random](unsigned n) { return static_cast<std::size_t>(random() % n); };
  static char const* const kSections[] = {"",       "Net", "UPS", "net ", "a b", "\xE7",
                                          "TIMERS", "x1",  "x2",  "x3",   "x4",  "x5"};
  static char const* const kKeys[] = {
      "A", "b", "Key one", "\xE7\xC7", "Zz", "k=q", "long key name that leaves the short string"};
  static char const* const kValues[] = {
      "", "1", " padded ", "a = b", "; no comment", "a value long enough to need memory of its own"};
  static char const* const kLines[] = {"",   "; note", "  [ Net ]\r", "[UPS]", "[ ]", "A=1", " b = 2 ; tail\r",
                                       "Zz", "\t",     "key ONE==",   "[x1]"};

  test::Scratch scratch;
  std::string text;
  for (std::size_t i = below(20); i > 0; i--) text += std::string(kLines[below(std::size(kLines))]) + "\n";
  std::string const path = scratch.Write("model.cfg", text);
  Model model(upper);
  model.Load(text);
  ASSERT_TRUE(cfg.Open(path));
  cfg.SetCached(true);
  for (int i = 0; i < operations; i++) {
    std::string const section = kSections[below(std::size(kSections))];
    std::string const key = kKeys[below(std::size(kKeys))] + (below(2) == 0 ? std::to_string(below(40)) : "");
    std::size_t choice = below(100);
    // Now and then a stretch with few removals, in which enough is asked for the engine to build its tables.
    if (i / 200 % 2 == 1 && choice >= 45 && choice < 73) choice = 80;
    if (choice < 45) {
      std::string const value = kValues[below(std::size(kValues))];
      ASSERT_TRUE(cfg.WriteStr(section, key, value));
      model.Write(section, key, value);
    } else if (choice < 73) {
      ASSERT_TRUE(cfg.DeleteKey(section, key));
      model.Delete(section, key);
    } else if (choice < 76) {
      unsigned long const n = below(20);
      std::string name;
      for (unsigned long k = seed % 2 * n; k <= n; k++) name = cfg.GetKeyName(section, k);  // at a leap or by a walk
      ASSERT_EQ(name, model.Name(section, n));
      cfg.SetSection(section);
      ASSERT_EQ(cfg.DeleteKey(n), !name.empty());
      model.Delete(section, name);
      ASSERT_EQ(cfg.GetKeyName(section, n), model.Name(section, n)) << section << " at " << n;
      if (!name.empty()) {
        ASSERT_EQ(cfg.ReadStr(section, name, "none"), "none") << section << "/" << name;
      }
    } else if (choice < 77) {
      ASSERT_TRUE(cfg.EraseSection(section));
      model.Erase(section);
    } else if (choice < 97) {
      ASSERT_EQ(cfg.ReadStr(section, key, "none"), model.Value(section, key).value_or("none")) << section << "/" << key;
    } else if (choice < 99) {
      ASSERT_EQ(Dump(cfg), model.Dump());
    } else {
      ASSERT_TRUE(cfg.Open(path));
      std::string const saved = test::ReadFile(path);
      ASSERT_EQ(saved, model.Text()) << "after " << i << " operations";
      model.Load(saved);
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

// Numbers in any order, with insertions and deletions between, on maps large enough for several rows of the index.
TEST(CfgModel, AddressingByNumber) {
  test::Scratch scratch;
  std::mt19937 random(7);
  CfgClass cfg;
  ASSERT_TRUE(cfg.Open(scratch.Write("many.cfg", "")));
  cfg.SetCached(true);
  cfg.SetSection("S");
  std::map<std::string, std::string> keys;
  auto const check = [&](unsigned long n) {
    std::string const expected = n < keys.size() ? std::next(keys.begin(), static_cast<long>(n))->first : "";
    ASSERT_EQ(cfg.GetKeyName(n), expected) << n << " of " << keys.size();
  };
  for (int i = 0; i < 6000; i++) {
    std::string const key = std::to_string(random() % 9000);
    if (random() % 3 != 0) {
      ASSERT_TRUE(cfg.WriteStr(key, "v"));
      keys[key] = "v";
    } else {
      ASSERT_TRUE(cfg.DeleteKey(key));
      keys.erase(key);
    }
    if (i % 8 == 0) check(random() % (keys.size() + 2));
  }
  for (unsigned long n = keys.size() + 1; n-- > 0;) check(n);
}

}  // namespace
