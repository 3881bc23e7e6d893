#include "records/lint.h"

#include <fstream>
#include <map>
#include <utility>

#include "files/format.h"
#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/core/strutils.h"

namespace {

std::string LineAsShown(std::string const& line, bool showPasswords) {
  std::string const text = Trim(line);
  std::size_t const equals = text.find('=');
  bool const hide = !showPasswords && IsPasswordKey(text.substr(0, equals));
  return hide && equals != std::string::npos ? text.substr(0, equals + 1) + " " + kHiddenPassword : text;
}

// Why a line is neither blank, comment, header nor key.
char const* SyntaxFault(std::string const& line) {
  std::string const text = Trim(line);
  if (text.size() == 1) return "one character alone";
  if (text[0] == '=') return "no key before '='";
  if (text == "[]") return "a header without a name";
  if (text[0] == '[') return "a header whose first ']' is not the end of the line";
  return "'[' or ']' in a key or value";
}

std::string Where(std::string const& section) {
  return section.empty() ? "above the first header" : "[" + section + "]";
}

// Listens to the engine while it loads, so that what is reported is what the engine does and not a second opinion. The
// parser looks every header and every key up; a look-up that succeeds during a load is a repetition.
class Listener final : public CfgClass {
 public:
  explicit Listener(bool showPasswords) : showPasswords_(showPasswords) {}

  bool ParseLine(std::string const& line, bool noLines) override {
    line_++;
    if (CfgClass::ParseLine(line, noLines)) return true;
    Add("syntax-error", std::string("syntax error: ") + SyntaxFault(line) + ": " + LineAsShown(line, showPasswords_));
    return false;
  }

  bool LocateSection(std::string const& name, SectionPosition* position) override {
    bool const found = CfgClass::LocateSection(name, position);
    section_ = AnsiUpperCase(name);
    if (found)
      Add("repeated-section", "repeated section: " + Where(section_) + " was opened in line " +
                                  std::to_string(sections_[section_]) + ", and the keys below are added there");
    return found;
  }

  bool InsertSection(std::string const& name, LinePosition const* line, bool create) override {
    section_ = AnsiUpperCase(name);
    sections_[section_] = line_;
    return CfgClass::InsertSection(name, line, create);
  }

  bool LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* position) override {
    bool const found = CfgClass::LocateKey(section, key, position);
    // With the password out of reach the key's name is all that is said.
    if (found)
      Add("repeated-key", "never read: " + AnsiUpperCase(key) + " of " + Where(section_) + " stands in line " +
                              std::to_string(keys_[{section_, AnsiUpperCase(key)}]) + " already");
    return found;
  }

  bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                 KeyPosition const* previous, LinePosition const* line, bool create) override {
    keys_[{section_, AnsiUpperCase(key)}] = line_;
    return CfgClass::InsertKey(key, value, section, previous, line, create);
  }

  std::vector<Finding> TakeFindings() { return std::move(findings_); }

 private:
  void Add(char const* kind, std::string message) { findings_.push_back({line_, kind, std::move(message)}); }

  bool showPasswords_;
  long line_ = 0;
  std::string section_;
  std::map<std::string, long> sections_;
  std::map<std::pair<std::string, std::string>, long> keys_;
  std::vector<Finding> findings_;
};

// The engine does not even look at what stands below the line that stopped it.
void AddDropped(std::string const& path, long badLine, bool showPasswords, std::vector<Finding>& findings) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  for (long number = 1; std::getline(file, line); number++) {
    if (number <= badLine) continue;
    std::string const text = LineAsShown(line, showPasswords);
    findings.push_back({number, "dropped", "not read, dropped by the next save: " + (text.empty() ? "(blank)" : text)});
  }
}

}  // namespace

std::vector<Finding> Lint(std::string const& path, bool showPasswords) {
  if (!InspectFile(path).exists) throw Failed(path + ": no such file");
  Listener listener(showPasswords);
  if (!listener.OpenReadOnly(path)) throw Failed(path + ": cannot be read");
  std::vector<Finding> findings = listener.TakeFindings();
  if (listener.GetErrorLine() != 0) AddDropped(path, listener.GetErrorLine(), showPasswords, findings);
  return findings;
}
