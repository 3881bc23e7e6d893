// Text logs and schedules.
#include <cstdint>
#include <optional>
#include <vector>

#include "binding.h"
#include "zelvane/logs/proglist.h"
#include "zelvane/logs/textlog.h"

namespace {

class Schedule {
 public:
  explicit Schedule(Path const& path) : path_(path.bytes) {
    Alone(mutex_, [&] {
      list_.SetFile(path_);
      errno = 0;
      if (!list_.ReadFromFile() && errno != ENOENT) throw Failure(errno, path_, "the schedule cannot be read");
    });
  }

  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] { return work(list_); });
  }

  template <class Work>
  void Change(Work&& work) {
    Alone(mutex_, [&] { Must(path_, "the schedule cannot be saved", [&] { return work(list_); }); });
  }

  std::vector<Moment> All() {
    return Ask([](ProgList& list) {
      std::vector<Moment> moments(list.GetRegCount());
      reg_proglist entry;
      for (std::size_t i = 0; i < moments.size(); i++) {
        if (list.GetRegByIndex(static_cast<long>(i), &entry)) moments[i].seconds = entry.dateTime;
      }
      return moments;
    });
  }

 private:
  std::mutex mutex_;
  std::string path_;
  ProgList list_;
};

class TextLog {
 public:
  explicit TextLog(Path const& path) : path_(path.bytes) { log_.SetFile(path_); }

  template <class Work>
  void Do(Work&& work) {
    Alone(mutex_, [&] { Must(path_, "cannot be written", [&] { return work(log_); }); });
  }

 private:
  std::mutex mutex_;
  std::string path_;
  TextLogClass log_;
};

}  // namespace

void BindLogs(py::module_& module) {
  py::class_<TextLog>(module, "TextLog", "A log for people: one stamped line a message, in a file that is never cut.")
      .def(py::init<Path const&>(), "path"_a, "The file is made by the first write.")
      .def(
          "write",
          [](TextLog& log, Text const& text, std::optional<Moment> const& when) {
            log.Do([&](TextLogClass& file) {
              return when ? file.WriteLine(when->seconds, text.bytes) : file.WriteLine(text.bytes);
            });
          },
          "text"_a, "time"_a = py::none(),
          "Appends a line, stamped with now or the time. OSError: it is not written. 29 February and 31\n"
          "December of a leap year are printed as 1 February and 1 January.")
      .def(
          "clear", [](TextLog& log) { log.Do([](TextLogClass& file) { return file.ClearFile(); }); },
          "Empties the file; makes it when it is missing.");

  py::class_<Schedule>(
      module, "Schedule",
      "The moments at which the product is to act: a sequence of datetimes, local time, in ascending order.\n\n"
      "Moments that have passed drop out. Every change is saved before it returns: OSError when it cannot\n"
      "be.")
      .def(py::init<Path const&>(), "path"_a, "A missing file is an empty schedule. OSError: it cannot be read.")
      .def("__len__",
           [](Schedule& schedule) { return schedule.Ask([](ProgList& list) { return list.GetRegCount(); }); })
      .def("__getitem__",
           [](Schedule& schedule, py::ssize_t index) {
             return schedule.Ask([&](ProgList& list) {
               reg_proglist entry{};
               list.GetRegByIndex(static_cast<long>(Position(index, list.GetRegCount())), &entry);
               return Moment{entry.dateTime};
             });
           })
      .def("__iter__", [](Schedule& schedule) { return py::iter(py::cast(schedule.All())); })
      .def(
          "next",
          [](Schedule& schedule) {
            return schedule.Ask([](ProgList& list) {
              reg_proglist entry;
              list.RefreshList();
              return list.GetNextReg(&entry) ? std::optional(Moment{entry.dateTime}) : std::nullopt;
            });
          },
          "The next moment after now, or None.")
      .def(
          "add",
          [](Schedule& schedule, Moment when) {
            schedule.Change([&](ProgList& list) {
              reg_proglist entry{static_cast<std::int32_t>(when.seconds)};
              return list.AddReg(&entry);
            });
          },
          "when"_a, "Adds a moment.")
      .def(
          "remove",
          [](Schedule& schedule, Moment day) {
            schedule.Change([&](ProgList& list) {
              reg_proglist const entry{static_cast<std::int32_t>(day.seconds)};
              return list.RemReg(&entry);
            });
          },
          "day"_a, "Removes the first moment of that day, whatever its time. A day without one is no error.")
      .def(
          "clear", [](Schedule& schedule) { schedule.Change([](ProgList& list) { return list.ClearList(); }); },
          "Removes all moments.");
}
