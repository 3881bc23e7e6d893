// Shared by the modules of the binding: conversion of texts, paths and dates, failures as exceptions, work without
// Python's lock (the GIL).
#ifndef ZELVANE_PYTHON_BINDING_H
#define ZELVANE_PYTHON_BINDING_H

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

namespace py = pybind11;
using namespace py::literals;

// Latin-1 here, str in Python.
struct Text {
  std::string bytes;
};

// A file's name, not empty: str, bytes or os.PathLike.
struct Path {
  std::string bytes;
};

// A date-time of the library: a naive datetime, or a date for its midnight.
struct Moment {
  long seconds;
};

// The true calendar date, also on the two days of a leap year that DecodeDateTime gets wrong.
py::object DatetimeOf(long seconds);
long SecondsOf(py::handle datetime);

// A file's name as Python shows it.
py::object PathText(std::string const& path);

// Becomes OSError, with reason 0 zelvane.Error. May be thrown without Python's lock. `other` is the second file, if
// any.
struct Failure : std::exception {
  Failure(int reason_, std::string path_, std::string message_, std::string other_ = "")
      : reason(reason_), path(std::move(path_)), message(std::move(message_)), other(std::move(other_)) {}
  int reason;  // errno
  std::string path;
  std::string message;
  std::string other;
};

// Works without Python's lock, one thread at a time for each mutex.
template <class Work>
auto Alone(std::mutex& mutex, Work&& work) {
  py::gil_scoped_release const released;
  std::lock_guard const lock(mutex);
  return work();
}

template <class Work>
auto Unlocked(Work&& work) {
  py::gil_scoped_release const released;
  return work();
}

// Without Python's lock: throws Failure with the system's reason when the call returns 0 or false.
template <class Call>
void Must(std::string const& path, char const* message, Call&& call) {
  errno = 0;
  if (call()) return;
  // ENOENT can be left over from a look for a file that need not exist.
  int const reason = errno;
  bool const stale = reason == ENOENT && (path.empty() || access(path.c_str(), F_OK) == 0);
  throw Failure(stale ? 0 : reason, path, message);
}

// The size of the file, 0 when it is missing. Throws Failure when it cannot be read: the library would treat it as
// empty.
off_t ReadableSize(std::string const& path);

// A method for Python that is given an object: pybind11 passes a null pointer for an object without a constructor call.
template <class Class, class Result, class... Arguments>
auto On(Result (Class::*method)(Arguments...)) {
  return [method](Class& self, Arguments... arguments) -> Result { return (self.*method)(arguments...); };
}
template <class Class, class Result, class... Arguments>
auto On(Result (Class::*method)(Arguments...) const) {
  return [method](Class const& self, Arguments... arguments) -> Result { return (self.*method)(arguments...); };
}

// Refuses what a settings file cannot hold: the next reader stops at a line with a stray bracket or break.
inline std::string const& Plain(Text const& text) {
  if (text.bytes.find_first_of("[]\r\n") != std::string::npos)
    throw py::value_error("a settings file cannot hold \"[\", \"]\" or a line break");
  return text.bytes;
}

// A container's index, counted from the end when it is negative.
inline unsigned long Position(py::handle number, unsigned long count) {
  py::ssize_t index = PyNumber_AsSsize_t(number.ptr(), PyExc_IndexError);
  if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
  if (index < 0) index += static_cast<py::ssize_t>(count);
  if (index < 0 || index >= static_cast<py::ssize_t>(count)) throw py::index_error("no such position");
  return static_cast<unsigned long>(index);
}

// The bytes of an object with the buffer protocol, while this lives.
class View {
 public:
  explicit View(py::buffer const& object) {
    if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  ~View() { PyBuffer_Release(&view_); }
  View(View const&) = delete;
  View& operator=(View const&) = delete;
  char const* Data() const { return static_cast<char const*>(view_.buf); }
  std::size_t Size() const { return static_cast<std::size_t>(view_.len); }

 private:
  Py_buffer view_;
};

namespace pybind11::detail {

template <>
struct type_caster<Text> {
  PYBIND11_TYPE_CASTER(Text, const_name("str"));
  bool load(handle source, bool) {
    if (!PyUnicode_Check(source.ptr()))
      throw type_error(std::string("expected str, not ") + Py_TYPE(source.ptr())->tp_name);
    auto const latin1 = reinterpret_steal<py::bytes>(PyUnicode_AsLatin1String(source.ptr()));
    if (!latin1) throw error_already_set();  // UnicodeEncodeError
    value.bytes = std::string(latin1);
    if (value.bytes.find('\0') != std::string::npos) throw value_error("embedded null character");
    return true;
  }
  static handle cast(Text const& text, return_value_policy, handle) {
    return PyUnicode_DecodeLatin1(text.bytes.data(), static_cast<ssize_t>(text.bytes.size()), nullptr);
  }
};

template <>
struct type_caster<Path> {
  PYBIND11_TYPE_CASTER(Path, const_name("os.PathLike"));
  bool load(handle source, bool) {
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(source.ptr(), &bytes) == 0) throw error_already_set();
    value.bytes = std::string(reinterpret_steal<py::bytes>(bytes));
    if (value.bytes.empty()) throw Failure(ENOENT, "", "");
    return true;
  }
  static handle cast(Path const& path, return_value_policy, handle) { return PathText(path.bytes).release(); }
};

template <>
struct type_caster<Moment> {
  PYBIND11_TYPE_CASTER(Moment, const_name("datetime.datetime"));
  bool load(handle source, bool) {
    value.seconds = source.is_none() ? -1 : SecondsOf(source);
    return !source.is_none();
  }
  static handle cast(Moment const& moment, return_value_policy, handle) { return DatetimeOf(moment.seconds).release(); }
};

}  // namespace pybind11::detail

#endif
