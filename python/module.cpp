// The module zelvane._zelvane: the library's interface, module by module. zelvane/__init__.py exports it.
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include "binding.h"
//
#include <datetime.h>  // needs Python.h

#include "zelvane/core/datetime.h"
#include "zelvane/version.h"

void BindConfig(py::module_& module);
void BindRecords(py::module_& module);
void BindLists(py::module_& module);
void BindBrowse(py::module_& module);
void BindEventLog(py::module_& module);
void BindLogs(py::module_& module);
void BindTexts(py::module_& module);
void BindSystem(py::module_& module);
void BindCrypto(py::module_& module);

py::object DatetimeOf(long seconds) {
  time_t const when = seconds;
  tm fields;
  gmtime_r(&when, &fields);
  return py::reinterpret_steal<py::object>(PyDateTime_FromDateAndTime(
      fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec, 0));
}

long SecondsOf(py::handle datetime) {
  PyObject* const object = datetime.ptr();
  if (!PyDate_Check(object)) throw py::type_error("expected a datetime or date");
  bool const timed = PyDateTime_Check(object);
  if (timed && !datetime.attr("tzinfo").is_none())
    throw py::value_error("expected a naive datetime: the library's times are local");
  int const year = PyDateTime_GET_YEAR(object);
  long const seconds =
      year < 1970  // years below 100 would mean others to the library
          ? -1
          : EncodeDateTime(year, PyDateTime_GET_MONTH(object), PyDateTime_GET_DAY(object),
                           timed ? PyDateTime_DATE_GET_HOUR(object) : 0, timed ? PyDateTime_DATE_GET_MINUTE(object) : 0,
                           timed ? PyDateTime_DATE_GET_SECOND(object) : 0);
  if (seconds < 0) throw py::value_error("expected a time from 1970-01-01 to 2038-01-19 03:14:07");
  return seconds;
}

py::object PathText(std::string const& path) {
  return py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<py::ssize_t>(path.size())));
}

off_t ReadableSize(std::string const& path) {
  // A FIFO does not wait for its writer.
  int const file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0 && errno == ENOENT) return 0;
  struct stat status {};
  int reason = file < 0 || fstat(file, &status) != 0 ? errno : 0;
  if (reason == 0 && S_ISDIR(status.st_mode)) reason = EISDIR;
  if (file >= 0) close(file);
  if (reason != 0) throw Failure(reason, path, "");
  return status.st_size;
}

PYBIND11_MODULE(_zelvane, module) {
  PyDateTime_IMPORT;
  module.attr("__module__") = "zelvane";  // where everything is imported from
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      std::rethrow_exception(thrown);
    } catch (Failure const& failure) {
      py::object const path = PathText(failure.path);
      if (failure.reason != 0) {
        errno = failure.reason;
        PyErr_SetFromErrnoWithFilenameObjects(PyExc_OSError, failure.path.empty() ? nullptr : path.ptr(),
                                              failure.other.empty() ? nullptr : PathText(failure.other).ptr());
        return;
      }
      std::string const message = (failure.path.empty() ? "" : std::string(py::str(path)) + ": ") + failure.message;
      PyErr_SetString(py::module_::import("zelvane._errors").attr("Error").ptr(), message.c_str());
    }
  });
  module.attr("__version__") = ZelvaneVersion();
  BindConfig(module);
  BindRecords(module);
  BindLists(module);
  BindBrowse(module);
  BindEventLog(module);
  BindLogs(module);
  BindTexts(module);
  BindSystem(module);
  BindCrypto(module);
  py::delattr(module, "__module__");
}
