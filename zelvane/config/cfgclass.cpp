#include "zelvane/config/cfgclass.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/config/cfgstate_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/core/strutils_internal.h"
#include "zelvane/core/vtable_internal.h"

using namespace zelvane::internal;

namespace {

bool HasLineFeed(std::string_view text) { return text.find('\n') != std::string_view::npos; }

// Backs up the file, because the next save drops some of its lines. Also true if there is no file.
bool KeptForGood(std::string const& fileName) {
  if (access(fileName.c_str(), F_OK) != 0 && errno == ENOENT) return true;
  return BackUp(fileName, ".lost");
}

}  // namespace

// ---- Construction, files. ----

CfgClass::CfgClass() : state_(std::make_unique<CfgState>()) { RememberTable(); }

// Saves with the virtual hooks of this class. A failed save, also when memory runs out, loses the changes.
CfgClass::~CfgClass() {
  Guard(false, [this] { return Close(); });
}

bool CfgClass::SetError(CfgError code) {
  state_->error = code;
  return code == CFG_OK;
}

// For the constructors of the classes that do not replace the virtual hooks between parser, index and lines.
void CfgClass::RememberTable() { state_->ownTable = TableOf(*this); }

// The two virtual hooks as part of another operation, which sets the error code.
void CfgClass::ClearCaches() {
  int const error = state_->error;
  ClearReadCache();
  ClearWriteCache();
  state_->error = error;
}

bool CfgClass::GetUpperCaseWriteCache() { return true; }

bool CfgClass::OpenAs(char const* name, bool readOnly) {
  if (name == nullptr || *name == '\0') return SetError(CFG_BAD_ARGUMENT);
  std::string copy = name;  // it can be this object's own file name, which Close clears
  Close();
  state_->fileName = std::move(copy);
  bool loaded = false;
  try {
    loaded = LoadFile(false);
  } catch (...) {
    ForgetFile(*state_);
    throw;
  }
  if (!loaded && state_->error != CFG_SYNTAX) {
    ForgetFile(*state_);
    return false;
  }
  state_->readOnly = readOnly;
  state_->modified = false;
  return true;
}

bool CfgClass::Open(char const* name) { return OpenAs(name, false); }
bool CfgClass::Open(std::string const& name) { return Open(name.c_str()); }
bool CfgClass::OpenReadOnly(char const* name) { return OpenAs(name, true); }
bool CfgClass::OpenReadOnly(std::string const& name) { return OpenReadOnly(name.c_str()); }
bool CfgClass::SetFileName(char const* name, bool readOnly) { return readOnly ? OpenReadOnly(name) : Open(name); }

bool CfgClass::Close() {
  bool const saved = SaveFile();
  ClearCaches();
  state_->fileName.clear();
  state_->section.clear();
  state_->readOnly = state_->modified = state_->dropsLines = false;
  state_->errorLine = 0;
  return saved;
}

bool CfgClass::LoadFile(bool noLines) try {
  CfgState& state = *state_;
  ClearCaches();
  state.errorLine = 0;
  state.dropsLines = false;
  state.modified = false;  // a load that keeps nothing must not be saved
  bool const direct = TableOf(*this) == state.ownTable && !noLines;

  std::string text;
  ReadResult const read = ReadWhole(state.fileName, text);
  state.reason = read == ReadResult::kOk ? 0 : errno;
  if (read == ReadResult::kReadFailed) {
    ClearCaches();
    state.errorLine = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  }
  if (read != ReadResult::kOk) {
    SetError(CFG_FILE_FAILED);
    // A caller may treat an unreadable file as a missing one. When memory runs out, that would be wrong.
    if (state.reason == ENOMEM) throw std::bad_alloc();
    return false;
  }

  state.textSize = text.size();
  state.parseSection = state.sections.end();
  BlockLoader loader(state);
  std::string_view rest = text;
  int number = 0;
  bool taken = true;
  for (std::string_view line; taken && CutLine(rest, line); number++)
    taken = direct ? loader.Take(line) : ParseLine(std::string(line), noLines);
  loader.Finish();
  if (taken) return SetError(CFG_OK);
  state.errorLine = number;
  state.dropsLines = noLines || rest.data() != nullptr;
  return false;
} catch (...) {
  ForgetFile(*state_);
  throw;
}

bool CfgClass::ParseLine(std::string const& line, bool noLines) {
  CfgState& state = *state_;
  ExpandAll(state);
  auto const position = noLines ? state.lines.end() : state.lines.insert(state.lines.end(), line);
  auto const give_up = [this] {
    ClearCaches();
    return false;
  };
  std::string_view const text = TrimView(line);
  switch (KindOf(text)) {
    case LineKind::kNothing: return true;
    case LineKind::kBad: return SetError(CFG_SYNTAX);
    case LineKind::kHeader: {
      std::string const name(HeaderName(text));
      SectionPosition found;
      if (!LocateSection(name, &found)) return InsertSection(name, &position, false) || give_up();
      state.parseSection = found;
      state.parseKey = found->second.keys->end();
      return true;
    }
    case LineKind::kKey: break;
  }
  if (state.parseSection == state.sections.end()) state.parseSection = FindSection(state, "");
  if (state.parseSection == state.sections.end() && !InsertSection("", &position, false)) return give_up();
  auto const [name, value] = KeyOf(text);
  std::string const key(name);
  // The failed lookup sets the parse key to the end, so a loaded key gets no previous one.
  if (LocateKey(&state.parseSection, key, &state.parseKey)) return true;
  return InsertKey(key, std::string(value), &state.parseSection, &state.parseKey, &position, false) || give_up();
}

void CfgClass::ClearReadCache() {
  ForgetIndex(*state_);
  SetError(CFG_OK);
}

void CfgClass::ClearWriteCache() {
  ForgetLines(*state_);
  SetError(CFG_OK);
}

bool CfgClass::SaveFile() {
  CfgState& state = *state_;
  if (state.fileName.empty()) return SetError(CFG_NOT_OPEN), true;
  if (state.readOnly) return SetError(CFG_READ_ONLY), true;
  if (!state.modified) return SetError(CFG_OK);
  if (state.dropsLines && !KeptForGood(state.fileName)) return SetError(CFG_FILE_FAILED);
  state.dropsLines = false;
  std::string text;
  text.reserve(state.textSize + state.textSize / 8 + 256);
  for (std::string const& line : state.lines) text.append(line).push_back('\n');
  if (!text.empty()) text.pop_back();  // line feeds only separate the lines
  bool const saved = state.onlyNew ? SaveIfMissing(state.fileName, text) : SafeSave(state.fileName, text);
  if (!saved) return SetError(CFG_FILE_FAILED);
  state.modified = false;
  return SetError(CFG_OK);
}

bool CfgClass::SaveAs(char const* name) {
  if (name == nullptr || *name == '\0') return SetError(CFG_BAD_ARGUMENT);
  if (state_->fileName == name) return SetError(CFG_SAME_FILE);
  std::string text;
  text.reserve(state_->textSize + state_->textSize / 8 + 256);
  for (auto& [section, record] : state_->sections) {
    if (!section.empty()) text.append("[").append(section).append("]\n");
    KeyText key;
    for (std::size_t n = 0; ReadKeyAt(*state_, record, n, &key); n++)
      text.append(Joined(Upper(*state_, key.name), key.value)).push_back('\n');
    text.push_back('\n');
  }
  return SetError(SafeSave(name, text) ? CFG_OK : CFG_FILE_FAILED);
}

bool CfgClass::SaveAs(std::string const& name) { return SaveAs(name.c_str()); }

bool CfgClass::Rename(char const* name) {
  std::string const copy = name == nullptr ? "" : name;
  return SaveAs(copy.c_str()) && Open(copy.c_str());
}

bool CfgClass::Rename(std::string const& name) { return Rename(name.c_str()); }
bool CfgClass::SetFileName(std::string const& name, bool readOnly) { return SetFileName(name.c_str(), readOnly); }

std::string CfgClass::GetFileName() {
  SetError(CFG_OK);
  return state_->fileName;
}

// ---- Virtual hooks on the index. ----

bool CfgClass::LocateSection(std::string const& name, SectionPosition* position) {
  SectionPosition const found = FindSection(*state_, name);
  if (position != nullptr) {
    ExpandAll(*state_);
    *position = found;
  }
  SetError(CFG_OK);
  return found != state_->sections.end();
}

bool CfgClass::LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* position) {
  if (section == nullptr) return SetError(CFG_BAD_ARGUMENT);
  SetError(CFG_OK);
  if (*section == state_->sections.end()) return false;
  SectRec& record = (*section)->second;
  Expand(*state_, record);
  KeyPosition const found = record.keys->find(Upper(*state_, key));
  if (position != nullptr) *position = found;
  return found != record.keys->end();
}

bool CfgClass::InsertSection(std::string const& name, LinePosition const* line, bool create) {
  if (create ? HasLineFeed(name) : line == nullptr) return SetError(CFG_BAD_ARGUMENT);
  // Called before the name is upper-cased: a subclass may use this object for its answer.
  bool const upperCase = create && GetUpperCaseWriteCache();
  auto const makeLine = [&](std::string_view upper) {
    return create ? MakeHeader(*state_, upperCase ? upper : std::string_view(name)) : *line;
  };
  bool const added = AddSection(*state_, name, makeLine).second;
  return SetError(added ? CFG_OK : CFG_EXISTS);
}

bool CfgClass::InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                         KeyPosition const* previous, LinePosition const* line, bool create) {
  CfgState& state = *state_;
  if (section == nullptr || previous == nullptr || *section == state.sections.end()) return SetError(CFG_BAD_ARGUMENT);
  if (create ? HasLineFeed(key) || HasLineFeed(value) : line == nullptr) return SetError(CFG_BAD_ARGUMENT);
  SectRec& record = (*section)->second;
  bool const upperCase = create && GetUpperCaseWriteCache();
  auto const makeLine = [&](std::string_view upper) {
    if (!create) return KeyLine{*line, ValueIn(state, *line, value)};
    return MakeKey(state, record, upperCase ? upper : std::string_view(key), value);
  };
  auto const [position, added] = AddKey(state, record, key, *previous, makeLine);
  if (added) state.parseKey = position;
  return SetError(added ? CFG_OK : CFG_EXISTS);
}

// ---- Sections. ----

bool CfgClass::SetSection(char const* name) {
  if (state_->fileName.empty()) return SetError(CFG_NOT_OPEN);
  if (name == nullptr) return SetError(CFG_BAD_ARGUMENT);
  state_->section = name;
  state_->current = state_->sections.end();
  return SetError(CFG_OK);
}

bool CfgClass::SetSection(std::string const& name) { return SetSection(name.c_str()); }
std::string CfgClass::GetSection() {
  SetError(CFG_OK);
  return state_->section;
}

bool CfgClass::SectionExists(char const* name) {
  if (name == nullptr) return SetError(CFG_BAD_ARGUMENT);
  return LocateSection(name, nullptr);
}

bool CfgClass::SectionExists(std::string const& name) { return SectionExists(name.c_str()); }
bool CfgClass::SectionExists() { return SectionExists(GetSection().c_str()); }

bool CfgClass::EraseSection(char const* name) {
  if (name == nullptr) return SetError(CFG_BAD_ARGUMENT);
  if (state_->fileName.empty()) return SetError(CFG_NOT_OPEN);
  if (state_->readOnly) return SetError(CFG_READ_ONLY);
  SectionPosition found;
  if (!Find(name, &found)) return true;
  RemoveSection(*state_, found);
  return SaveUnlessCached();
}

bool CfgClass::EraseSection(std::string const& name) { return EraseSection(name.c_str()); }
bool CfgClass::EraseSection() { return EraseSection(GetSection().c_str()); }

unsigned long CfgClass::GetSectionCount() {
  SetError(CFG_OK);
  return state_->sections.size();
}

std::string CfgClass::GetSectionName(unsigned long n) {
  SetError(CFG_OK);
  SectionMap& sections = state_->sections;
  return n < sections.size() ? state_->sectionRanks.At(sections, n)->first : std::string();
}

// ---- Keys. ----

// Finds the section (null: the current one) without the virtual hooks. False if a subclass may replace them: the caller
// then uses the hooks, and names the section. All operations that differ for such a subclass ask here.
bool CfgClass::FindDirectly(char const* section, SectionPosition* at) {
  CfgState& state = *state_;
  if (TableOf(*this) != state.ownTable) return false;
  SetError(CFG_OK);
  if (section == nullptr && state.current == state.sections.end())
    state.current = FindSection(state, state.section.c_str());
  *at = section == nullptr ? state.current : FindSection(state, section);
  return true;
}

bool CfgClass::Find(char const* section, SectionPosition* at) {
  if (FindDirectly(section, at)) return *at != state_->sections.end();
  return section != nullptr && LocateSection(section, at);
}

bool CfgClass::Find(char const* section, char const* key, KeyText* found) {
  SectionPosition at;
  if (FindDirectly(section, &at)) return at != state_->sections.end() && ReadKey(*state_, at->second, key, found);
  KeyPosition position;
  if (!LocateSection(section, &at) || !LocateKey(&at, key, &position)) return false;
  *found = {position->first, position->second.value};
  return true;
}

// Finds a key that the operation by name finds too: that one fails for a key that begins with a NUL.
bool CfgClass::Find(char const* section, unsigned long n, KeyText* found) {
  SectionPosition at;
  return FindDirectly(section, &at) && at != state_->sections.end() && ReadKeyAt(*state_, at->second, n, found) &&
         Refusal("", found->name.data(), false) == CFG_OK;
}

// Checks the arguments of an operation on one key, then the object's state. All operations share this order.
CfgError CfgClass::Refusal(char const* section, char const* key, bool writing) const {
  if (section == nullptr || key == nullptr || *key == '\0') return CFG_BAD_ARGUMENT;
  if (state_->fileName.empty()) return CFG_NOT_OPEN;
  return writing && state_->readOnly ? CFG_READ_ONLY : CFG_OK;
}

// After a change: saves now, or leaves it to a flush.
bool CfgClass::SaveUnlessCached() {
  state_->modified = true;
  return state_->cached ? SetError(CFG_OK) : SaveFile();
}

bool CfgClass::KeyExists(char const* section, char const* key) {
  KeyText found;
  return SetError(Refusal(section, key, false)) && Find(section, key, &found);
}

bool CfgClass::KeyExists(std::string const& section, std::string const& key) {
  return KeyExists(section.c_str(), key.c_str());
}
bool CfgClass::KeyExists(char const* key) { return KeyExists(GetSection().c_str(), key); }
bool CfgClass::KeyExists(std::string const& key) { return KeyExists(key.c_str()); }

bool CfgClass::DeleteKey(char const* section, char const* key) {
  if (!SetError(Refusal(section, key, true))) return false;
  SectionPosition at;
  KeyPosition found;
  if (!Find(section, &at) || !LocateKey(&at, key, &found)) return true;
  RemoveKey(*state_, at->second, found);
  return SaveUnlessCached();
}

bool CfgClass::DeleteKey(std::string const& section, std::string const& key) {
  return DeleteKey(section.c_str(), key.c_str());
}
bool CfgClass::DeleteKey(char const* key) { return DeleteKey(GetSection().c_str(), key); }
bool CfgClass::DeleteKey(std::string const& key) { return DeleteKey(key.c_str()); }

// Deletes by position if possible: the name of a key can contain a NUL, and would then name another key.
bool CfgClass::DeleteKey(unsigned long n) {
  SectionPosition at;
  if (!Find(nullptr, &at) || n >= KeyCount(*state_, at->second)) return DeleteKey(GetKeyName(n).c_str());
  if (!SetError(Refusal("", "its name", true))) return false;
  Expand(*state_, at->second);
  RemoveKey(*state_, at->second, at->second.keys->ranks.At(*at->second.keys, n));
  return SaveUnlessCached();
}

unsigned long CfgClass::GetKeyCount(char const* section) {
  if (section == nullptr) return SetError(CFG_BAD_ARGUMENT), 0;
  SectionPosition at;
  return Find(section, &at) ? KeyCount(*state_, at->second) : 0;
}

unsigned long CfgClass::GetKeyCount(std::string const& section) { return GetKeyCount(section.c_str()); }
unsigned long CfgClass::GetKeyCount() {
  SectionPosition at;
  return Find(nullptr, &at) ? KeyCount(*state_, at->second) : GetKeyCount(GetSection().c_str());
}

std::string CfgClass::GetKeyName(char const* section, unsigned long n) {
  if (section == nullptr) return SetError(CFG_BAD_ARGUMENT), "";
  SectionPosition at;
  return Find(section, &at) ? KeyNameAt(*state_, at->second, n) : std::string();
}

std::string CfgClass::GetKeyName(std::string const& section, unsigned long n) { return GetKeyName(section.c_str(), n); }
std::string CfgClass::GetKeyName(unsigned long n) {
  SectionPosition at;
  return Find(nullptr, &at) ? KeyNameAt(*state_, at->second, n) : GetKeyName(GetSection().c_str(), n);
}

// ---- Values. ----

std::string CfgClass::ReadStr(char const* section, char const* key, char const* def) {
  KeyText found;
  if (SetError(Refusal(section, key, false)) && Find(section, key, &found)) return std::string(found.value);
  return def == nullptr ? "" : def;
}

std::string CfgClass::ReadStr(char const* section, unsigned long index, char const* def) {
  KeyText found;
  if (section != nullptr && Find(section, index, &found)) return std::string(found.value);
  return ReadStr(section, GetKeyName(section, index).c_str(), def);
}

std::string CfgClass::ReadStr(unsigned long index, char const* def) {
  KeyText found;
  return Find(nullptr, index, &found) ? std::string(found.value) : ReadStr(GetSection().c_str(), index, def);
}

bool CfgClass::WriteStr(char const* section, char const* key, char const* value) {
  if (section == nullptr || key == nullptr || value == nullptr) return SetError(CFG_BAD_ARGUMENT);
  std::string_view const name = key;
  std::string_view const text = value;
  if (HasLineFeed(section) || HasLineFeed(name) || HasLineFeed(text)) return SetError(CFG_BAD_ARGUMENT);
  if (!SetError(Refusal(section, key, true))) return false;
  CfgState& state = *state_;
  SectionPosition at;
  bool const direct = FindDirectly(section, &at);
  bool const found = direct ? at != state.sections.end() : LocateSection(section, &at);
  if (!found && (!InsertSection(section, nullptr, true) || !Find(section, &at))) return false;
  SectRec& record = at->second;
  KeyPosition position;
  if (direct) {
    Expand(state, record);
    auto const makeLine = [&](std::string_view upper) {
      return MakeKey(state, record, GetUpperCaseWriteCache() ? upper : name, text);
    };
    auto const [place, added] = AddKey(state, record, name, record.lastKey, makeLine);
    if (!added) Rewrite(state, place->second, text);
  } else if (LocateKey(&at, key, &position)) {
    Rewrite(state, position->second, text);
  } else if (!InsertKey(key, value, &at, &record.lastKey, nullptr, true)) {
    return false;
  }
  return SaveUnlessCached();
}

// ---- Cached mode and errors. ----

bool CfgClass::SetCached(bool on) {
  SetError(CFG_OK);
  if (on == state_->cached) return true;
  state_->cached = on;
  return on || Flush();
}

bool CfgClass::Flush() { return SaveFile(); }
bool CfgClass::FlushCache() { return Flush(); }
bool CfgClass::IsFail() { return state_->error != CFG_OK; }
long CfgClass::GetErrorCode() { return state_->error; }
long CfgClass::GetErrorLine() { return state_->errorLine; }

// ---- The variants. ----

RegCfgClass::RegCfgClass() { RememberTable(); }
RegCfgClass::~RegCfgClass() = default;  // the base class closes and so saves
bool RegCfgClass::GetUpperCaseWriteCache() { return false; }
bool RegCfgClass::LoadFile(bool noLines) { return CfgClass::LoadFile(noLines); }
bool RegCfgClass::SaveFile() { return CfgClass::SaveFile(); }
bool RegCfgClass::SaveAs(char const* name) { return CfgClass::SaveAs(name); }
bool RegCfgClass::SaveAs(std::string const& name) { return CfgClass::SaveAs(name); }

namespace zelvane::internal {

bool IsLasting(int reason) {
  constexpr int kLasting[] = {ENOENT, ENOTDIR, EACCES, EPERM, ELOOP, ENAMETOOLONG, EISDIR, EFBIG, ENXIO, ENODEV};
  return std::find(std::begin(kLasting), std::end(kLasting), reason) != std::end(kLasting);
}

template <class Base>
OptionalFile<Base>::OptionalFile() {
  this->RememberTable();
}

template <class Base>
bool OptionalFile<Base>::LoadFile(bool noLines) {
  return Base::LoadFile(noLines) || (IsMissing() && this->SetError(CFG_OK));
}

template <class Base>
bool OptionalFile<Base>::OpenOrThrow(std::string const& path, bool readOnly) {
  if (this->SetFileName(path.c_str(), readOnly)) return true;
  int const reason = this->state_->reason;
  if (!IsLasting(reason)) throw std::system_error(reason, std::generic_category());
  return false;
}

template <class Base>
bool OptionalFile<Base>::IsMissing() const {
  return this->state_->reason == ENOENT;
}

template <class Base>
void OptionalFile<Base>::PrepareChanges(char const* section) {
  CfgClass::SectionPosition at;
  if (this->Find(section, &at)) Expand(*this->state_, at->second);
}

template <class Base>
void OptionalFile<Base>::SaveOnlyNew() {
  this->state_->onlyNew = true;
}

template <class Base>
void OptionalFile<Base>::ForgetChanges() {
  this->state_->modified = false;
}

template class OptionalFile<CfgClass>;
template class OptionalFile<RegCfgClass>;

}  // namespace zelvane::internal
