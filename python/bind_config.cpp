// The configuration engine, for zelvane/_config.py: keys by section and name, failures as exceptions.
#include <limits>
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

// One file, open from construction to Close.
class File {
 public:
  File(Path const& path, bool readOnly, bool cached, bool keepCase, bool strict)
      : cfg_(keepCase ? std::make_unique<RegCfgClass>() : std::make_unique<CfgClass>()), path_(path.bytes) {
    Alone(mutex_, [&] {
      errno = 0;
      if (!(readOnly ? cfg_->OpenReadOnly(path_) : cfg_->Open(path_))) Raise();
      if (strict && cfg_->GetErrorCode() == CFG_SYNTAX) Raise();
      errorLine_ = cfg_->GetErrorLine();
      cfg_->SetCached(cached);
    });
  }

  // Python's lock is not held: a thread that waits here holds up no other.
  ~File() {
    Unlocked([&] { cfg_.reset(); });
  }

  // A question.
  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] {
      RequireOpen();
      return work(*cfg_);
    });
  }

  // An operation that says whether it has succeeded.
  template <class Work>
  void Do(Work&& work) {
    Alone(mutex_, [&] {
      RequireOpen();
      errno = 0;
      if (!work(*cfg_)) Raise();
    });
  }

  // Reads a number with a default, and again with another where it could be the default.
  template <class Number, class Read>
  std::optional<Number> Find(Read&& read) {
    return Ask([&](CfgClass& cfg) -> std::optional<Number> {
      Number const first = read(cfg, Number(0));
      if (first == Number(0) && read(cfg, Number(1)) == Number(1)) return std::nullopt;
      return first;
    });
  }

  void Close() {
    if (closed_) return;
    Do([this](CfgClass& cfg) { return cfg.Close(); });
    closed_ = true;
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
  long errorLine_ = 0;
  bool closed_ = false;
};

std::string const& KeyName(Text const& key) {
  std::string const& name = Plain(key);
  if (name.empty() || name.find('=') != std::string::npos || std::string(";#'").find(name[0]) != std::string::npos)
    throw py::value_error("a key is not empty, does not hold \"=\" and does not begin with \";\", \"#\" or \"'\"");
  return name;
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
      .def_property_readonly("error_line", &File::ErrorLine)
      .def("sections",
           [](File& file) {
             return file.Ask([](CfgClass& cfg) {
               std::vector<Text> names;
               for (unsigned long i = 0, count = cfg.GetSectionCount(); i < count; i++)
                 names.push_back({cfg.GetSectionName(i)});
               return names;
             });
           })
      .def("section_count", [](File& file) { return file.Ask([](CfgClass& cfg) { return cfg.GetSectionCount(); }); })
      .def("has_section",
           [](File& file, Text const& name) {
             return file.Ask([&](CfgClass& cfg) { return cfg.SectionExists(name.bytes); });
           })
      .def("erase_section",
           [](File& file, Text const& name) { file.Do([&](CfgClass& cfg) { return cfg.EraseSection(name.bytes); }); })
      .def("keys",
           [](File& file, Text const& section) {
             return file.Ask([&](CfgClass& cfg) {
               std::vector<Text> names;
               for (unsigned long i = 0, count = cfg.GetKeyCount(section.bytes); i < count; i++)
                 names.push_back({cfg.GetKeyName(section.bytes, i)});
               return names;
             });
           })
      .def("key_count",
           [](File& file, Text const& section) {
             return file.Ask([&](CfgClass& cfg) { return cfg.GetKeyCount(section.bytes); });
           })
      .def("has_key",
           [](File& file, Text const& section, Text const& key) {
             return file.Ask([&](CfgClass& cfg) { return cfg.KeyExists(section.bytes, key.bytes); });
           })
      .def("delete_key",
           [](File& file, Text const& section, Text const& key) {
             file.Do([&](CfgClass& cfg) { return cfg.DeleteKey(section.bytes, key.bytes); });
           })
      .def("read_str",
           [](File& file, Text const& section, Text const& key) {
             return file.Ask([&](CfgClass& cfg) -> std::optional<Text> {
               if (!cfg.KeyExists(section.bytes, key.bytes)) return std::nullopt;
               return Text{cfg.ReadStr(section.bytes, key.bytes, std::string())};
             });
           })
      .def(
          "read_int",
          [](File& file, Text const& section, Text const& key) {
            return file.Find<long>([&](CfgClass& cfg, long def) { return cfg.ReadInt(section.bytes, key.bytes, def); });
          })
      .def("read_bool",
           [](File& file, Text const& section, Text const& key) {
             return file.Find<bool>(
                 [&](CfgClass& cfg, bool def) { return cfg.ReadBool(section.bytes, key.bytes, def); });
           })
      .def("read_float",
           [](File& file, Text const& section, Text const& key) {
             return file.Find<double>(
                 [&](CfgClass& cfg, double def) { return cfg.ReadFloat(section.bytes, key.bytes, def); });
           })
      .def("read_datetime",
           [](File& file, Text const& section, Text const& key, Text const& format) {
             return file.Ask([&](CfgClass& cfg) -> std::optional<Moment> {
               long const seconds = cfg.ReadDateTime(section.bytes, key.bytes, format.bytes, -1);
               return seconds < 0 ? std::nullopt : std::optional(Moment{seconds});
             });
           })
      .def("write_str",
           [](File& file, Text const& section, Text const& key, Text const& value) {
             std::string const& name = KeyName(key);
             file.Do([&, &where = Plain(section), &text = Plain(value)](CfgClass& cfg) {
               return cfg.WriteStr(where, name, text);
             });
           })
      .def("write_datetime",
           [](File& file, Text const& section, Text const& key, Moment when, Text const& format) {
             std::string const& name = KeyName(key);
             file.Do([&, &where = Plain(section), &layout = Plain(format)](CfgClass& cfg) {
               return cfg.WriteDateTime(where, name, layout, when.seconds);
             });
           })
      .def("save", [](File& file) { file.Do([](CfgClass& cfg) { return cfg.Flush(); }); })
      .def("close", &File::Close);
}
