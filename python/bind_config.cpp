// The configuration engine for zelvane/_config.py: keys by section and name, failures as exceptions.
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "binding.h"
#include "zelvane/config/cfgclass.h"

namespace {

struct ConfigFailure : std::exception {
  ConfigFailure(long code_, long line_, std::string path_) : code(code_), line(line_), path(std::move(path_)) {}
  long code;
  long line;
  std::string path;
};

using Keys = std::vector<std::pair<Text, Text>>;

// One file, open from construction to Close.
class File {
 public:
  File(Path const& path, bool readOnly, bool cached, bool keepCase, bool strict)
      : cfg_(keepCase ? std::make_unique<RegCfgClass>() : std::make_unique<CfgClass>()),
        path_(path.bytes),
        cached_(cached) {
    Alone(mutex_, [&] {
      errno = 0;
      if (!(readOnly ? cfg_->OpenReadOnly(path_) : cfg_->Open(path_))) Raise();
      if (strict && cfg_->GetErrorCode() == CFG_SYNTAX) Raise();
      errorLine_ = cfg_->GetErrorLine();
      cfg_->SetCached(cached);
    });
  }

  // Saves without Python's lock.
  ~File() {
    Unlocked([&] { cfg_.reset(); });
  }

  // Reads.
  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] {
      RequireOpen();
      return work(*cfg_);
    });
  }

  // Works, and raises when the result is false.
  template <class Work>
  void Do(Work&& work) {
    Alone(mutex_, [&] {
      RequireOpen();
      errno = 0;
      if (!work(*cfg_)) Raise();
    });
  }

  // Saves once.
  void Replace(std::string const& section, Keys const& keys) {
    Do([&](CfgClass& cfg) {
      cfg.SetCached(true);
      bool changed = cfg.EraseSection(section);
      for (auto const& [key, value] : keys) changed = changed && cfg.WriteStr(section, key.bytes, value.bytes);
      long const code = cfg.GetErrorCode();
      if (!cached_ && !cfg.SetCached(false)) return false;
      if (!changed) throw ConfigFailure(code, 0, path_);
      return true;
    });
  }

  // Closes only what has been saved: a failure loses nothing.
  void Close() {
    Alone(mutex_, [&] {
      errno = 0;
      if (!closed_ && !(cfg_->Flush() && cfg_->Close())) Raise();
      closed_ = true;
    });
  }

  std::string const& GetPath() const { return path_; }
  long ErrorLine() const { return errorLine_; }

 private:
  void RequireOpen() const {
    if (closed_) throw ConfigFailure(CFG_NOT_OPEN, 0, path_);
  }

  [[noreturn]] void Raise() {
    int const reason = errno;
    long const code = cfg_->GetErrorCode();
    if (code == CFG_FILE_FAILED && reason != 0) throw Failure(reason, path_, "");
    throw ConfigFailure(code, cfg_->GetErrorLine(), path_);
  }

  std::mutex mutex_;
  std::unique_ptr<CfgClass> cfg_;
  std::string path_;
  bool cached_;
  long errorLine_ = 0;
  bool closed_ = false;
};

// The file's next reader removes blanks at the ends, and would not find the name.
std::string const& Name(Text const& text) {
  std::string const& name = Plain(text);
  if (!name.empty() && (std::strchr(" \t", name.front()) != nullptr || std::strchr(" \t", name.back()) != nullptr))
    throw py::value_error("the name of a section or key has no blanks at its ends");
  return name;
}

std::string const& KeyName(Text const& key) {
  std::string const& name = Name(key);
  if (name.empty() || name.find('=') != std::string::npos || std::strchr(";#'", name[0]) != nullptr)
    throw py::value_error("a key is not empty, has no \"=\" and does not begin with \";\", \"#\" or \"'\"");
  return name;
}

// All names and values are checked before anything is changed.
void Replace(File& file, Text const& section, Keys const& keys) {
  Name(section);
  for (auto const& [key, value] : keys) {
    KeyName(key);
    Plain(value);
  }
  file.Replace(section.bytes, keys);
}

using Bytes = std::string const&;

// A method that reads: the work gets the engine and the bytes of the texts.
template <class... Texts, class Work>
auto Reader(Work work) {
  return [work](File& file, Texts const&... texts) {
    return file.Ask([&](CfgClass& cfg) { return work(cfg, texts.bytes...); });
  };
}

// Reads a number with a default, and a second time with another default to tell a missing number from that default.
template <class Number, class Read>
std::optional<Number> Find(Read&& read) {
  Number const first = read(Number(0));
  return first == Number(0) && read(Number(1)) == Number(1) ? std::nullopt : std::optional(first);
}

template <class Get>
std::vector<Text> Names(unsigned long count, Get get) {
  std::vector<Text> names;
  for (unsigned long i = 0; i < count; i++) names.push_back({get(i)});
  return names;
}

}  // namespace

void BindConfig(py::module_& module) {
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      std::rethrow_exception(thrown);
    } catch (ConfigFailure const& failure) {
      py::object const type = py::module_::import("zelvane._errors").attr("ConfigError");
      py::object const error = type(failure.code, failure.line, PathText(failure.path));
      PyErr_SetObject(type.ptr(), error.ptr());
    }
  });

  py::class_<File>(module, "File")
      .def(py::init<Path const&, bool, bool, bool, bool>())
      .def_property_readonly("path", [](File const& file) { return Path{file.GetPath()}; })
      .def_property_readonly("error_line", On(&File::ErrorLine))
      .def("sections", Reader<>([](CfgClass& cfg) {
             return Names(cfg.GetSectionCount(), [&](unsigned long i) { return cfg.GetSectionName(i); });
           }))
      .def("section_count", Reader<>([](CfgClass& cfg) { return cfg.GetSectionCount(); }))
      .def("has_section", Reader<Text>([](CfgClass& cfg, Bytes section) { return cfg.SectionExists(section); }))
      .def("replace_section", &Replace)
      .def("keys", Reader<Text>([](CfgClass& cfg, Bytes section) {
             return Names(cfg.GetKeyCount(section), [&](unsigned long i) { return cfg.GetKeyName(section, i); });
           }))
      .def("key_count", Reader<Text>([](CfgClass& cfg, Bytes section) { return cfg.GetKeyCount(section); }))
      .def("has_key",
           Reader<Text, Text>([](CfgClass& cfg, Bytes section, Bytes key) { return cfg.KeyExists(section, key); }))
      .def("delete_key",
           [](File& file, Text const& section, Text const& key) {
             file.Do([&](CfgClass& cfg) { return cfg.DeleteKey(section.bytes, key.bytes); });
           })
      .def("read_str", Reader<Text, Text>([](CfgClass& cfg, Bytes section, Bytes key) {
             return cfg.KeyExists(section, key) ? std::optional(Text{cfg.ReadStr(section, key, std::string())})
                                                : std::nullopt;
           }))
      .def("read_int", Reader<Text, Text>([](CfgClass& cfg, Bytes section, Bytes key) {
             return Find<long>([&](long def) { return cfg.ReadInt(section, key, def); });
           }))
      .def("read_bool", Reader<Text, Text>([](CfgClass& cfg, Bytes section, Bytes key) {
             return Find<bool>([&](bool def) { return cfg.ReadBool(section, key, def); });
           }))
      .def("read_float", Reader<Text, Text>([](CfgClass& cfg, Bytes section, Bytes key) {
             return Find<double>([&](double def) { return cfg.ReadFloat(section, key, def); });
           }))
      .def("read_datetime", Reader<Text, Text, Text>([](CfgClass& cfg, Bytes section, Bytes key, Bytes format) {
             long const seconds = cfg.ReadDateTime(section, key, format, -1);
             return seconds < 0 ? std::nullopt : std::optional(Moment{seconds});
           }))
      .def("write_str",
           [](File& file, Text const& section, Text const& key, Text const& value) {
             std::string const& name = KeyName(key);
             file.Do([&, &where = Name(section), &text = Plain(value)](CfgClass& cfg) {
               return cfg.WriteStr(where, name, text);
             });
           })
      .def("write_datetime",
           [](File& file, Text const& section, Text const& key, Moment when, Text const& format) {
             std::string const& name = KeyName(key);
             file.Do([&, &where = Name(section), &layout = Plain(format)](CfgClass& cfg) {
               return cfg.WriteDateTime(where, name, layout, when.seconds);
             });
           })
      .def("save", [](File& file) { file.Do([](CfgClass& cfg) { return cfg.Flush(); }); })
      .def("close", On(&File::Close));
}
