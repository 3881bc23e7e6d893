// Records as Python classes: a property for each field, with its name in C in Python's spelling (popupInterval:
// popup_interval).
#ifndef ZELVANE_PYTHON_FIELDS_H
#define ZELVANE_PYTHON_FIELDS_H

#include <cctype>
#include <cstring>
#include <string>

#include "binding.h"

inline std::string PythonName(char const* field) {
  std::string name;
  for (; *field != '\0'; field++) {
    if (std::isupper(static_cast<unsigned char>(*field)) != 0) name += '_';
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(*field)));
  }
  return name;
}

// A field of an entry that the file keeps as "name;address;port".
inline Text const& Part(Text const& text, std::string const& name) {
  if (text.bytes.find(';') != std::string::npos) throw py::value_error(name + ": the file cannot hold \";\"");
  return text;
}

inline Text GetText(char const* field, std::size_t width) { return {std::string(field, strnlen(field, width))}; }

// The message leaves the text out: it may be a password.
inline void SetText(char* field, std::size_t width, Text const& text, std::string const& name) {
  if (Plain(text).size() >= width)
    throw py::value_error(name + ": " + std::to_string(text.bytes.size()) + " characters are too many, at most " +
                          std::to_string(width - 1));
  std::memset(field, 0, width);
  text.bytes.copy(field, width - 1);
}

// Declares the properties of a class one after the other, and keeps their names for repr() and as_dict().
template <class Class, class Record>
class Fields {
  using Type = typename Class::type;  // the record, or derived from it

 public:
  explicit Fields(Class& target) : target_(target) {}
  ~Fields() { target_.attr("_fields") = py::tuple(names_); }
  Fields(Fields const&) = delete;
  Fields& operator=(Fields const&) = delete;

  template <class Value>
  Fields& operator()(char const* field, Value Record::*member, char const* help) {
    target_.def_readwrite(Name(field).c_str(), member, help);
    return *this;
  }

  // A char array by its offset: one property for all widths. part: see Part.
  template <std::size_t Width>
  Fields& operator()(char const* field, char (Record::*member)[Width], char const* help, bool part = false) {
    static Record const sample{};
    auto const place = (sample.*member) - reinterpret_cast<char const*>(&sample);
    TextField(Name(field), static_cast<std::size_t>(place), Width, help, part);
    return *this;
  }

  // Anything else.
  template <class Get, class Set>
  Fields& operator()(char const* field, Get get, Set set, char const* help) {
    target_.def_property(Name(field).c_str(), get, set, help);
    return *this;
  }

 private:
  std::string Name(char const* field) {
    std::string name = PythonName(field);
    names_.append(name);
    return name;
  }

  void TextField(std::string const& name, std::size_t place, std::size_t width, char const* help, bool part) {
    target_.def_property(
        name.c_str(),
        [=](Type const& record) {
          return GetText(reinterpret_cast<char const*>(static_cast<Record const*>(&record)) + place, width);
        },
        [=](Type& record, Text const& text) {
          SetText(reinterpret_cast<char*>(static_cast<Record*>(&record)) + place, width, part ? Part(text, name) : text,
                  name);
        },
        help);
  }

  Class& target_;
  py::list names_;
};

inline py::dict AsDict(py::object const& record) {
  py::dict values;
  for (py::handle const name : record.attr("_fields")) values[name] = record.attr(name);
  return values;
}

inline std::string Shown(py::object const& record) {
  std::string text;
  for (auto const& [name, value] : AsDict(record)) {
    bool const secret = py::cast<std::string>(name) == "mail_password";
    text += (text.empty() ? "" : ", ") + py::cast<std::string>(name) + "=" +
            (secret ? "..." : std::string(py::repr(value)));
  }
  return std::string(py::str(py::type::of(record).attr("__name__"))) + "(" + text + ")";
}

// The methods of every record.
template <class Class>
void Describe(Class& target) {
  using Type = typename Class::type;
  target.def("__copy__", [](Type const& record) { return record; });
  target.def("__deepcopy__", [](Type const& record, py::handle) { return record; });
  target.def("as_dict", &AsDict, "The fields and their values.").def("__repr__", &Shown);
  target.def("__eq__", [](py::object const& self, py::object const& other) {
    return py::type::of(self).is(py::type::of(other)) && AsDict(self).equal(AsDict(other));
  });
  target.attr("__hash__") = py::none();
}

#endif
