#include "records/lint.h"

#include <string.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <utility>

#include "files/format.h"
#include "records/check.h"
#include "records/keylines.h"
#include "terminal/latin1.h"
#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

// Why a line is not blank, comment, header or key.
char const* SyntaxFault(std::string const& line) {
  std::string const text = Trim(line);
  if (text.size() == 1) return "a single character";
  if (text[0] == '=') return "missing key before '='";
  if (text == "[]") return "empty header";
  if (text[0] == '[') return "text after ']' in a header";
  return "'[' or ']' in a key or value";
}

std::string Where(std::string const& section) {
  return section.empty() ? "before the first header" : "[" + section + "]";
}

// Watches the engine during a load, so that the findings are the engine's own and not a second opinion. The parser
// looks up every header and every key; a lookup that succeeds during a load is a repetition.
class Listener final : public CfgClass {
 public:
  explicit Listener(bool showPasswords) : showPasswords_(showPasswords) {}

  bool ParseLine(std::string const& line, bool noLines) override {
    line_++;
    CheckEncoding(line);
    if (CfgClass::ParseLine(line, noLines)) return true;
    Add("syntax-error",
        std::string("syntax error: ") + SyntaxFault(line) + ": " + WithoutPassword(line, showPasswords_));
    return false;
  }

  bool LocateSection(std::string const& name, SectionPosition* position) override {
    bool const found = CfgClass::LocateSection(name, position);
    section_ = AnsiUpperCase(name);
    if (found)
      Add("repeated-section", "repeated section " + Where(section_) + ", first in line " +
                                  std::to_string(sections_[section_]) + ": the keys below continue it");
    return found;
  }

  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    section_ = AnsiUpperCase(name);
    sections_[section_] = line_;
    return CfgClass::InsertSection(name, line, create);
  }

  bool LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* position) override {
    bool const found = CfgClass::LocateKey(section, key, position);
    // Only the key's name is printed, so no password is shown.
    if (found)
      Add("repeated-key", "ignored: " + AnsiUpperCase(key) + " of " + Where(section_) + " is already in line " +
                              std::to_string(keys_[{section_, AnsiUpperCase(key)}].line));
    return found;
  }

  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    keys_[{section_, AnsiUpperCase(key)}] = {line_, value};
    return CfgClass::InsertKey(key, value, section, previous, line, create);
  }

  KeyLines const& Keys() const { return keys_; }
  std::vector<Finding> TakeFindings() { return std::move(findings_); }

 private:
  void Add(char const* kind, std::string message) { findings_.push_back({line_, kind, std::move(message)}); }

  void CheckEncoding(std::string const& line) {
    std::string const text = Trim(line);
    if (line_ == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
      return Add("encoding", "byte order mark: the programs read it as part of the line");
    if (line.find('\0') != std::string::npos) Add("encoding", "NUL bytes: " + WithoutPassword(line, showPasswords_));
    if (text.empty() || strchr(";#'", text[0]) != nullptr) return;
    std::string lacking;
    std::optional<std::string> const latin1 = ToLatin1(text, "UTF-8", lacking);
    if (latin1 ? *latin1 != text : !lacking.empty())
      Add("encoding", "UTF-8 text, which the programs read as Latin-1: " + WithoutPassword(line, showPasswords_));
  }

  bool showPasswords_;
  long line_ = 0;
  std::string section_;
  std::map<std::string, long> sections_;
  KeyLines keys_;
  std::vector<Finding> findings_;
};

// The engine does not read the lines after the one that stopped it.
void AddDropped(std::string const& path, long badLine, bool showPasswords, std::vector<Finding>& findings) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  for (long number = 1; std::getline(file, line); number++) {
    if (number <= badLine) continue;
    std::string const text = WithoutPassword(line, showPasswords);
    findings.push_back({number, "dropped", "not read; the next save drops it: " + (text.empty() ? "(blank)" : text)});
  }
}

}  // namespace

std::vector<Finding> Lint(std::string const& path, Terminal const& terminal) {
  bool const showPasswords = terminal.showPasswords;
  if (!InspectFile(path).exists) throw Failed(path + ": no such file");
  Listener listener(showPasswords);
  if (!listener.OpenReadOnly(path)) throw Failed(CannotRead(path));
  std::vector<Finding> findings = listener.TakeFindings();
  if (listener.GetErrorLine() != 0) AddDropped(path, listener.GetErrorLine(), showPasswords, findings);
  CheckValues(path, listener.Keys(), terminal, findings);
  std::stable_sort(findings.begin(), findings.end(), [](auto const& a, auto const& b) { return a.line < b.line; });
  return findings;
}
