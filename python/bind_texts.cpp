// Message texts by language.
#include <memory>
#include <optional>

#include "binding.h"
#include "zelvane/lang/langclass.h"
#include "zelvane/lang/language.h"

namespace {

// The user's texts before the installed ones.
class Language {
 public:
  explicit Language(int number) : handle_(Unlocked([&] { return OpenLang(number); }), CloseLang) {
    if (handle_ == nullptr) throw std::bad_alloc();
  }

  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] { return work(handle_.get()); });
  }

  Text Get(int id, bool installed) {
    return Ask([&](void* handle) { return Text{installed ? GetSystemLangStr(handle, id) : GetLangStr(handle, id)}; });
  }

  void Set(int id, Text const& text) {
    Ask([&, &plain = Plain(text)](void* handle) {
      if (SetLangStr(handle, id, plain.c_str()) == 0)
        throw Failure(0, "", "neither the user's language file nor the installed one can be written");
      return 0;
    });
  }

 private:
  std::mutex mutex_;
  std::unique_ptr<void, void (*)(void*)> handle_;
};

// One language of one file.
class LanguageFile {
 public:
  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] { return work(table_); });
  }

  LanguageFile(Path const& path, int number) : path_(path.bytes), number_(number) {
    Ask([&](LangClass& table) {
      ReadableSize(path_);
      table.SetFileName(path_);
      table.LoadStrings(number_);
      return 0;
    });
  }

  void Set(int id, Text const& text) {
    Ask([&, &plain = Plain(text)](LangClass& table) {
      Must(path_, "cannot be written or read back", [&] { return table.SetLangStr(id, plain, number_); });
      return 0;
    });
  }

 private:
  std::mutex mutex_;
  LangClass table_;
  std::string path_;
  int number_;
};

Text Present(Text text, int id) {
  if (text.bytes.empty()) throw py::key_error(std::to_string(id));
  return text;
}

}  // namespace

void BindTexts(py::module_& module) {
  py::class_<Language>(
      module, "Language",
      "The message texts of a language, by number: the user's own (~/.zellang.cfg), otherwise the installed\n"
      "one (zellang.cfg in the installation root).\n\n"
      "    print(zelvane.Language(1)[12])")
      .def(py::init<int>(), "number"_a, "An unknown language has no texts.")
      .def("__getitem__", [](Language& language, int id) { return Present(language.Get(id, false), id); })
      .def("__contains__", [](Language& language, int id) { return !language.Get(id, false).bytes.empty(); })
      .def(
          "get",
          [](Language& language, int id, Text const& def) {
            Text const text = language.Get(id, false);
            return text.bytes.empty() ? def : text;
          },
          "id"_a, "default"_a = "", "The text, or the default when there is none.")
      .def(
          "installed", [](Language& language, int id) { return language.Get(id, true); }, "id"_a,
          "The installed text, also when the user has an own one; \"\" for none.")
      .def("__setitem__", On(&Language::Set))
      .def(
          "count", [](Language& language) { return language.Ask(GetLangCount); }, "The number of installed languages.")
      .def(
          "name",
          [](Language& language, int number) {
            return language.Ask([&](void* handle) {
              char name[256] = "";
              GetLangDesc(handle, number, name, sizeof name);
              return Text{name};
            });
          },
          "number"_a, "The display name of an installed language, \"\" for none.")
      .attr("__iter__") = py::none();  // texts are found by number only

  py::class_<LanguageFile>(module, "LanguageFile", "The texts of one language in one language file, by number.")
      .def(py::init<Path const&, int>(), "path"_a, "number"_a,
           "A missing file and an unknown language have no texts. OSError: the file cannot be read.")
      .def("__getitem__",
           [](LanguageFile& file, int id) {
             return Present(file.Ask([&](LangClass& table) { return Text{table.GetLangStr(id)}; }), id);
           })
      .def("__setitem__", On(&LanguageFile::Set))
      .def(
          "count", [](LanguageFile& file) { return file.Ask([](LangClass& table) { return table.GetLangCount(); }); },
          "The number of languages in the file.")
      .def(
          "name",
          [](LanguageFile& file, int number) {
            return file.Ask([&](LangClass& table) { return Text{table.GetLangDesc(number)}; });
          },
          "number"_a, "The display name of a language, \"\" for none.")
      .attr("__iter__") = py::none();
}
