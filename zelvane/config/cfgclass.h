/// @file
/// CfgClass reads and writes the product's configuration files: text files with sections and keys. RegCfgClass is its
/// variant for the per-user and the system-wide settings.
///
/// USE
///
///     CfgClass cfg;                                   cfg.SetCached(true);             // many changes, one save
///     if (!cfg.Open("upscli.cfg")) return;            cfg.SetSection("RUNCOMMAND");
///     std::string line = cfg.ReadStr("RUNCOMMAND",    cfg.WriteUInt("DELAY", 30);
///                                    "CMDLINE", "");  bool saved = cfg.Flush();
///
/// Open reads the whole file into memory. The file itself is open only during a load or a save. The object keeps every
/// line as it was read: comments, blank lines, spacing, order, case, line ends. A change rewrites only the lines it
/// names; a save writes all other lines back byte for byte.
///
/// Without cached mode each change saves the file before it returns. In cached mode changes stay in memory until Flush,
/// SetCached(false), Close, Open of another file, or the destructor. The destructor saves, but cannot report a failure.
///
/// FILES: zelvane-cfg(5) describes the lines of a file, where a new line goes, and which lines a removal keeps. A
/// caller must know:
///
/// - Names match without regard to case (Latin-1, as in AnsiUpperCase). New ones are written upper-cased; RegCfgClass
///   writes them as given.
/// - Keys before the first header belong to the section with the empty name.
/// - Of repeated keys only the first one is read and written. A repeated header continues the earlier section.
/// - Access by index returns upper-cased names in ascending byte order, not in file order. Write index 0 as `0ul`: a
///   plain 0 is ambiguous where a name is also possible, and does not compile.
///
/// NOT CHECKED: the caller must refuse these where people type.
///
/// - "[" or "]" in a key or value. The line is then a syntax error (or a header) for the next load.
/// - "]" in a section name: a syntax error for the next load.
/// - "=" in a key: the next load splits the line at it.
/// - A comment character at the start of a key: the next load skips the line.
/// - Blanks around a name or value: the next load drops them.
///
/// A line feed in a section, key or value is refused (error 1). The std::string overloads use their arguments up to the
/// first NUL.
///
/// SYNTAX ERRORS: Open returns true, GetErrorCode() is 7 and GetErrorLine() is the line. The object holds the lines up
/// to and including that one. The next save drops all lines below it, but first copies the file to NAME.lost. If it
/// cannot be copied, the save fails (error 2) and the file is unchanged. A new section goes after the bad line, where
/// no load reaches it: correct the line first.
///
/// SAVING is atomic: the new text is written to a temporary file in the same directory, synced, and renamed over the
/// old one. Mode, owner and symbolic links are kept. When a save returns true, the text and its name are on disk: a
/// power failure does not bring back the old text. zelvane-cfg(5) lists the steps, and the cases that write in place
/// instead.
///
/// ERROR CODES: GetErrorCode() returns the code of the last operation (CfgError). IsFail, GetErrorCode and GetErrorLine
/// leave it unchanged. An operation checks in this order: arguments (error 1), open file (error 5), read-only (error
/// 6). SetSection checks for an open file first.
///
/// OUT OF MEMORY: the operation throws std::bad_alloc; the object stays consistent. The destructor never throws. The
/// keys of a section are allocated at its first use, so a read can fail too.
///
///     change    made completely or not at all, but perhaps not saved; a new section can exist without its key, and
///               ParseLine can keep a line that it does not index
///     load      no file is open
///     save      the file stays open with its changes; this includes the save at the start of Open and Close
///
/// SUBCLASSES can replace any virtual hook, and can be compiled without run-time type information.
///
/// THREADS: one thread at a time for each object. Separate objects are independent.
#ifndef ZELVANE_CONFIG_CFGCLASS_H
#define ZELVANE_CONFIG_CFGCLASS_H

#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "zelvane/export.h"

namespace zelvane::internal {
struct CfgState;
struct KeyText;
struct SectKeys;
template <class Base>
class OptionalFile;
template <class T>
using IfPointer = std::enable_if_t<std::is_pointer_v<std::decay_t<T>>>;
}  // namespace zelvane::internal

/// One indexed key and one indexed section, as positions refer to them. Only the engine fills and reads them.
struct KeyRec {
  std::string_view value;
  std::list<std::string>::iterator line;             ///< the end of the lines if the key has no line
  std::map<std::string, KeyRec>::iterator previous;  ///< in writing order; the end of the keys for none
  std::map<std::string, KeyRec>::iterator next;
};

struct SectRec {
  ZELVANE_HIDDEN SectRec(zelvane::internal::CfgState& state, std::list<std::string>::iterator headerLine);
  ZELVANE_HIDDEN ~SectRec();
  SectRec(SectRec const&) = delete;
  SectRec& operator=(SectRec const&) = delete;

  std::unique_ptr<zelvane::internal::SectKeys> const keys;
  /// The unnamed section of a loaded file has no header: this is the line of its first key while that exists, then the
  /// end of the lines.
  std::list<std::string>::iterator header;
  std::map<std::string, KeyRec>::iterator lastKey;  ///< new keys go after it; the end of the keys for none
};

/// The results of GetErrorCode().
enum CfgError : int {
  CFG_OK = 0,            ///< success
  CFG_BAD_ARGUMENT = 1,  ///< null or empty name, null position, line feed in a text to be written
  CFG_FILE_FAILED = 2,   ///< the file could not be opened, read or written
  CFG_EXISTS = 3,        ///< insertion refused: the name is indexed already
  CFG_SAME_FILE = 4,     ///< SaveAs to the open file itself
  CFG_NOT_OPEN = 5,      ///< no file is open
  CFG_READ_ONLY = 6,     ///< the file is open read-only
  CFG_SYNTAX = 7,        ///< a line is not a blank, comment, header or key: its number is GetErrorLine()
};

/// @copydoc zelvane/config/cfgclass.h
class ZELVANE_API CfgClass {
 public:
  /// Positions of a line, a section and a key. Valid until the line, section or key is removed or the object is closed.
  using LinePosition = std::list<std::string>::iterator;
  using SectionPosition = std::map<std::string, SectRec>::iterator;
  using KeyPosition = std::map<std::string, KeyRec>::iterator;

  /// Empty: no file, not read-only, not cached, error 0.
  CfgClass();
  CfgClass(CfgClass const&) = delete;
  CfgClass& operator=(CfgClass const&) = delete;

  /// @name Virtual hooks
  ///
  /// The parser and the writers call them through the virtual table, so that a variant can replace any. Called
  /// directly, the insertions check neither for an open file nor for its mode, and do not mark the object as modified:
  /// their additions are saved together with the next change.
  /// @{

  /// Returns whether new header and key lines have upper-cased names: true here, false in RegCfgClass.
  virtual bool GetUpperCaseWriteCache();
  /// Drops pending changes, empties the caches and reads the file GetFileName() again. With `noLines` it indexes
  /// without keeping lines: such an object can be read, but a save would write only the lines that it created itself.
  ///
  ///     false, error 2   the file could not be opened, or a read failed (GetErrorLine() is then the line being read);
  ///                      nothing is kept
  ///     false, error 7   the parser stopped at a syntax error; the lines up to it are kept
  virtual bool LoadFile(bool noLines);
  /// Writes the lines if anything was modified. Without an open file (error 5), read-only (error 6) or unmodified
  /// (error 0), returns true and writes nothing. If the write fails, returns false (error 2); the changes stay marked
  /// as modified, so a later call tries again.
  virtual bool SaveFile();
  /// Empty the index or the lines. Neither touches the file or marks the object as modified. Error 0. Called as a hook
  /// of another operation, they leave its code unchanged.
  virtual void ClearReadCache();
  virtual void ClearWriteCache();
  /// Adds one line, without its line feed: keeps it (unless `noLines`) as the last one and indexes it. A key belongs to
  /// the section last parsed or inserted. Returns false for a syntax error (error 7).
  virtual bool ParseLine(std::string const& line, bool noLines);
  /// Adds section `name` to the index. With `create`, appends its header line; otherwise `line` is the position of the
  /// header (null: error 1). Returns false with error 3 if it is indexed already. The unnamed section is created as
  /// `[ ]`, because `[]` would not load again.
  virtual bool InsertSection(std::string const& name, LinePosition const* line, bool create);
  /// Adds a key to `section`, after `previous` (the end of its keys: after none). With `create`, creates its line after
  /// the section's last key or else after its header; otherwise `line` is its position. Null section, previous or
  /// required line, or the end of the sections: error 1. Indexed already: error 3. Nothing is changed then.
  virtual bool InsertKey(std::string const& key, std::string const& value, SectionPosition const* section,
                         KeyPosition const* previous, LinePosition const* line, bool create);
  /// Returns true if the section is indexed. Stores its position, or the end of the sections, in `position` (can be
  /// null).
  virtual bool LocateSection(std::string const& name, SectionPosition* position);
  /// Returns true if the key is indexed in `section`. Stores its position, or the end of the keys, in `position` (can
  /// be null). Null section: error 1, false. The end of the sections: false, `position` unchanged.
  virtual bool LocateKey(SectionPosition const* section, std::string const& key, KeyPosition* position);

  /// Calls Close(), which saves the changes. A failure cannot be reported here: call Flush first.
  virtual ~CfgClass();
  /// @}

  /// @name Files
  ///
  /// Null or empty names: error 1, false.
  /// @{

  /// Closes the file that is open (saving its changes), then loads `name`. Returns true if it was loaded, also if the
  /// load stopped at a syntax error (error 7). Returns false if it cannot be read: no file is then open, and none is
  /// created. The result does not report that save: call Flush first if changes must not be lost.
  virtual bool Open(char const* name);
  virtual bool Open(std::string const& name);
  /// Same as Open, but every change fails with error 6.
  virtual bool OpenReadOnly(char const* name);
  virtual bool OpenReadOnly(std::string const& name);
  /// Saves pending changes and empties the object; cached mode stays. Returns the result of the save: on false the
  /// changes are lost. Without an open file: true, error 5.
  virtual bool Close();
  /// Writes a normalised copy: for each section in ascending order its header (none for the unnamed one), its keys in
  /// ascending order, an empty line; all names upper-cased, no comments. The object is unchanged. If `name` is the open
  /// file's own name, byte for byte: error 4. Failed write: error 2.
  virtual bool SaveAs(char const* name);
  virtual bool SaveAs(std::string const& name);
  /// Returns the name of the open file, "" if none. Error 0.
  virtual std::string GetFileName();
  /// SaveAs(name), then Open(name): continues with the normalised copy. Pending changes are also saved to the old file.
  virtual bool Rename(char const* name);
  bool Rename(std::string const& name);
  /// OpenReadOnly(name) or Open(name).
  virtual bool SetFileName(char const* name, bool readOnly);
  bool SetFileName(std::string const& name, bool readOnly);
  /// Same as Flush().
  virtual bool FlushCache();
  /// @}

  /// @name Sections
  /// @{

  /// Sets the section of all operations that do not name one; it need not exist. No open file: error 5; then null:
  /// error 1.
  virtual bool SetSection(char const* name);
  virtual bool SetSection(std::string const& name);
  /// Returns that name as it was given; "" at first and after Close. Error 0.
  virtual std::string GetSection();
  /// Returns whether the section exists; false without an open file (error 0). Null: error 1, false.
  virtual bool SectionExists(char const* name);
  virtual bool SectionExists(std::string const& name);
  virtual bool SectionExists();
  /// Removes the section: its header line and the lines of its indexed keys. Comments, repeated keys and repeated
  /// headers stay: a repeated key then belongs to the section above it. Kept: a section that does not exist is no
  /// error; returns true, and nothing changes. Null: error 1; no file: error 5; read-only: error 6. Without cached mode
  /// returns the result of the save.
  virtual bool EraseSection(char const* name);
  virtual bool EraseSection(std::string const& name);
  virtual bool EraseSection();
  /// Returns the number of sections; the unnamed one counts if it exists. 0 without an open file (error 0).
  virtual unsigned long GetSectionCount();
  /// Returns the upper-cased name of the n-th section in ascending order, counted from 0; "" if out of range (error 0).
  virtual std::string GetSectionName(unsigned long n);
  /// @}

  /// @name Keys
  ///
  /// Null section, null or empty key: error 1 and false.
  /// @{

  /// Returns whether the key exists. No open file: error 5, false.
  virtual bool KeyExists(char const* section, char const* key);
  virtual bool KeyExists(std::string const& section, std::string const& key);
  virtual bool KeyExists(char const* key);
  virtual bool KeyExists(std::string const& key);
  /// Removes the key and its line. Kept: a key that does not exist is no error; returns true. No file: error 5;
  /// read-only: error 6. Without cached mode returns the result of the save. By number: the key GetKeyName(n); if there
  /// is none: error 1, false. Kept: after the last key of a section is deleted, the next new key can go right after the
  /// header (zelvane-cfg(5)).
  virtual bool DeleteKey(char const* section, char const* key);
  virtual bool DeleteKey(std::string const& section, std::string const& key);
  virtual bool DeleteKey(char const* key);
  virtual bool DeleteKey(std::string const& key);
  virtual bool DeleteKey(unsigned long n);
  /// Returns the number of keys; 0 for a section that does not exist. Null: error 1, 0.
  virtual unsigned long GetKeyCount(char const* section);
  virtual unsigned long GetKeyCount(std::string const& section);
  virtual unsigned long GetKeyCount();
  /// Returns the upper-cased name of the section's n-th key in ascending order, counted from 0; "" if there is none.
  virtual std::string GetKeyName(char const* section, unsigned long n);
  virtual std::string GetKeyName(std::string const& section, unsigned long n);
  virtual std::string GetKeyName(unsigned long n);
  /// @}

  /// @name Readers
  ///
  /// Null section, null or empty key: error 1; no open file: error 5; both return the default. A missing section or
  /// key, or text that does not convert, returns the default with error 0. By index: the key GetKeyName(index). Readers
  /// change nothing.
  /// @{

  /// Returns the value: trimmed if it was loaded, as given if it was written. A null default counts as "".
  virtual std::string ReadStr(char const* section, char const* key, char const* def);
  virtual std::string ReadStr(std::string const& section, std::string const& key, std::string const& def);
  virtual std::string ReadStr(char const* key, char const* def);
  virtual std::string ReadStr(std::string const& key, std::string const& def);
  virtual std::string ReadStr(char const* section, unsigned long index, char const* def);
  virtual std::string ReadStr(std::string const& section, unsigned long index, std::string const& def);
  virtual std::string ReadStr(unsigned long index, char const* def);
  virtual std::string ReadStr(unsigned long index, std::string const& def);

  /// Returns a signed 32-bit decimal number, converted by StrToIntDef.
  virtual long ReadInt(char const* section, char const* key, long def);
  virtual long ReadInt(std::string const& section, std::string const& key, long def);
  virtual long ReadInt(char const* key, long def);
  virtual long ReadInt(std::string const& key, long def);
  virtual long ReadInt(char const* section, unsigned long index, long def);
  virtual long ReadInt(std::string const& section, unsigned long index, long def);
  virtual long ReadInt(unsigned long index, long def);

  /// Numbers only: 0 is false, any other number true; words such as "yes" and "true" return the default. A text or
  /// other pointer as the default does not compile: C++ would convert it to true.
  virtual bool ReadBool(char const* section, char const* key, bool def);
  virtual bool ReadBool(std::string const& section, std::string const& key, bool def);
  virtual bool ReadBool(char const* key, bool def);
  virtual bool ReadBool(std::string const& key, bool def);
  virtual bool ReadBool(char const* section, unsigned long index, bool def);
  virtual bool ReadBool(std::string const& section, unsigned long index, bool def);
  virtual bool ReadBool(unsigned long index, bool def);
  template <class Key, class Text, class = zelvane::internal::IfPointer<Text>>
  bool ReadBool(Key const& key, Text const& def) = delete;
  template <class Section, class Key, class Text, class = zelvane::internal::IfPointer<Text>>
  bool ReadBool(Section const& section, Key const& key, Text const& def) = delete;

  /// Returns seconds since 1970, converted by StrToDateTime with `format` (null or empty: "dd/mm/yyyy hh:nn:ss"). Text
  /// shorter than the format returns the default.
  virtual long ReadDateTime(char const* section, char const* key, char const* format, long def);
  virtual long ReadDateTime(std::string const& section, std::string const& key, std::string const& format, long def);
  virtual long ReadDateTime(char const* key, char const* format, long def);
  virtual long ReadDateTime(std::string const& key, std::string const& format, long def);
  virtual long ReadDateTime(char const* section, unsigned long index, char const* format, long def);
  virtual long ReadDateTime(std::string const& section, unsigned long index, std::string const& format, long def);
  virtual long ReadDateTime(unsigned long index, char const* format, long def);
  virtual long ReadDateTime(unsigned long index, std::string const& format, long def);

  /// Returns a number converted by StrToFloatDef, in any locale of the program.
  virtual double ReadFloat(char const* section, char const* key, double def);
  virtual double ReadFloat(std::string const& section, std::string const& key, double def);
  virtual double ReadFloat(char const* key, double def);
  virtual double ReadFloat(std::string const& key, double def);
  virtual double ReadFloat(char const* section, unsigned long index, double def);
  virtual double ReadFloat(std::string const& section, unsigned long index, double def);
  virtual double ReadFloat(unsigned long index, double def);
  /// @}

  /// @name Writers
  ///
  /// They create a missing key or section. Null section, key or value, empty key, a line feed in any of them, an index
  /// out of range: error 1; no open file: error 5; read-only: error 6. All of these return false and change nothing.
  /// Otherwise returns true in cached mode, and the result of the save without it. If the save fails, the change stays
  /// in memory, and a later Flush tries again.
  /// @{

  /// Writes the value as given.
  virtual bool WriteStr(char const* section, char const* key, char const* value);
  virtual bool WriteStr(std::string const& section, std::string const& key, std::string const& value);
  virtual bool WriteStr(char const* key, char const* value);
  virtual bool WriteStr(std::string const& key, std::string const& value);
  virtual bool WriteStr(char const* section, unsigned long index, char const* value);
  virtual bool WriteStr(std::string const& section, unsigned long index, std::string const& value);
  virtual bool WriteStr(unsigned long index, char const* value);
  virtual bool WriteStr(unsigned long index, std::string const& value);

  /// Writes the signed decimal of the low 32 bits.
  virtual bool WriteInt(char const* section, char const* key, long value);
  virtual bool WriteInt(std::string const& section, std::string const& key, long value);
  virtual bool WriteInt(char const* key, long value);
  virtual bool WriteInt(std::string const& key, long value);
  virtual bool WriteInt(char const* section, unsigned long index, long value);
  virtual bool WriteInt(std::string const& section, unsigned long index, long value);
  virtual bool WriteInt(unsigned long index, long value);

  /// Writes the unsigned decimal of the low 32 bits. For numbers above 2147483647 ReadInt returns its default.
  virtual bool WriteUInt(char const* section, char const* key, unsigned long value);
  virtual bool WriteUInt(std::string const& section, std::string const& key, unsigned long value);
  virtual bool WriteUInt(char const* key, unsigned long value);
  virtual bool WriteUInt(std::string const& key, unsigned long value);
  virtual bool WriteUInt(char const* section, unsigned long index, unsigned long value);
  virtual bool WriteUInt(std::string const& section, unsigned long index, unsigned long value);
  virtual bool WriteUInt(unsigned long index, unsigned long value);

  /// Writes "1" or "0". A text or other pointer as the value does not compile, as with ReadBool.
  virtual bool WriteBool(char const* section, char const* key, bool value);
  virtual bool WriteBool(std::string const& section, std::string const& key, bool value);
  virtual bool WriteBool(char const* key, bool value);
  virtual bool WriteBool(std::string const& key, bool value);
  virtual bool WriteBool(char const* section, unsigned long index, bool value);
  virtual bool WriteBool(std::string const& section, unsigned long index, bool value);
  virtual bool WriteBool(unsigned long index, bool value);
  template <class Key, class Text, class = zelvane::internal::IfPointer<Text>>
  bool WriteBool(Key const& key, Text const& value) = delete;
  template <class Section, class Key, class Text, class = zelvane::internal::IfPointer<Text>>
  bool WriteBool(Section const& section, Key const& key, Text const& value) = delete;

  /// Writes DateTimeToStr(format, time); `time` is seconds since 1970. An invalid time writes an empty value.
  virtual bool WriteDateTime(char const* section, char const* key, char const* format, long time);
  virtual bool WriteDateTime(std::string const& section, std::string const& key, std::string const& format, long time);
  virtual bool WriteDateTime(char const* key, char const* format, long time);
  virtual bool WriteDateTime(std::string const& key, std::string const& format, long time);
  virtual bool WriteDateTime(char const* section, unsigned long index, char const* format, long time);
  virtual bool WriteDateTime(std::string const& section, unsigned long index, std::string const& format, long time);
  virtual bool WriteDateTime(unsigned long index, char const* format, long time);
  virtual bool WriteDateTime(unsigned long index, std::string const& format, long time);

  /// Writes FloatToStr(value, width, digits, ' '): `digits` significant digits, filled with blanks to `width`. Use
  /// width 0 for numbers that are read back: ReadFloat fails on leading blanks until the next load drops them, and in a
  /// negative number the blanks stay after its sign.
  virtual bool WriteFloat(char const* section, char const* key, double value, unsigned int width, unsigned int digits);
  virtual bool WriteFloat(std::string const& section, std::string const& key, double value, unsigned int width,
                          unsigned int digits);
  virtual bool WriteFloat(char const* key, double value, unsigned int width, unsigned int digits);
  virtual bool WriteFloat(std::string const& key, double value, unsigned int width, unsigned int digits);
  virtual bool WriteFloat(char const* section, unsigned long index, double value, unsigned int width,
                          unsigned int digits);
  virtual bool WriteFloat(std::string const& section, unsigned long index, double value, unsigned int width,
                          unsigned int digits);
  virtual bool WriteFloat(unsigned long index, double value, unsigned int width, unsigned int digits);
  /// @}

  /// @name Cached mode and errors
  /// @{

  /// Error 0 and true. Switching the mode off flushes, and returns the result of the flush.
  virtual bool SetCached(bool on);
  /// Same as SaveFile().
  virtual bool Flush();
  /// Returns whether the last operation left an error code other than 0.
  virtual bool IsFail();
  /// Returns the last operation's CfgError. Code 7 of an Open stays until the next operation.
  virtual long GetErrorCode();
  /// Returns the number, counted from 1, of the line at which the last load stopped; 0 if it did not stop.
  virtual long GetErrorLine();
  /// @}

 private:
  template <class Base>
  friend class zelvane::internal::OptionalFile;
  friend class RegCfgClass;

  ZELVANE_HIDDEN bool OpenAs(char const* name, bool readOnly);
  ZELVANE_HIDDEN CfgError Refusal(char const* section, char const* key, bool writing) const;
  ZELVANE_HIDDEN bool FindDirectly(char const* section, SectionPosition* at);
  ZELVANE_HIDDEN bool Find(char const* section, SectionPosition* at);
  ZELVANE_HIDDEN bool Find(char const* section, char const* key, zelvane::internal::KeyText* found);
  ZELVANE_HIDDEN bool Find(char const* section, unsigned long n, zelvane::internal::KeyText* found);
  ZELVANE_HIDDEN bool SaveUnlessCached();
  ZELVANE_HIDDEN bool SetError(CfgError code);
  ZELVANE_HIDDEN void RememberTable();
  ZELVANE_HIDDEN void ClearCaches();

  std::unique_ptr<zelvane::internal::CfgState> state_;
};

/// The variant for the per-user and system-wide settings: new lines keep the caller's spelling. Look-ups still ignore
/// case, and SaveAs writes upper-cased names.
class ZELVANE_API RegCfgClass : public CfgClass {
 public:
  RegCfgClass();
  bool GetUpperCaseWriteCache() override;
  bool LoadFile(bool noLines) override;
  bool SaveFile() override;
  ~RegCfgClass() override;
  bool SaveAs(char const* name) override;
  bool SaveAs(std::string const& name) override;
};

#endif
