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

  unsigned long Count() {
    return Ask([](ProgList& list) { return static_cast<unsigned long>(list.GetRegCount()); });
  }

  Moment At(unsigned long index) {
    return Ask([&](ProgList& list) {
      reg_proglist entry;
      if (!list.GetRegByIndex(static_cast<long>(index), &entry)) throw py::index_error("no such position");
      return Moment{entry.dateTime};
    });
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
  py::class_<TextLog>(module, "TextLog",
                      "A log for people: a line with its time for each message. The file is never truncated.")
      .def(py::init<Path const&>(), "path"_a, "The first write creates the file.")
      .def(
          "write",
          [](TextLog& log, Text const& text, std::optional<Moment> const& when) {
            log.Do([&](TextLogClass& file) {
              return when ? file.WriteLine(when->seconds, text.bytes) : file.WriteLine(text.bytes);
            });
          },
          "text"_a, "time"_a = py::none(),
          "Appends a line with the time or now. A line break in the text begins a line without a time. OSError\n"
          "when it cannot be written. Kept for compatibility: 29 February and 31 December of a leap year are\n"
          "written as 1 February and 1 January.")
      .def(
          "clear", [](TextLog& log) { log.Do([](TextLogClass& file) { return file.ClearFile(); }); },
          "Empties the file; creates a missing one.");

  py::class_<Schedule>(module, "Schedule",
                       "The schedule of the product: a sequence of datetimes, local time, in ascending order.\n\n"
                       "Past entries are removed. Every change is saved before it returns; OSError if it cannot be.")
      .def(py::init<Path const&>(), "path"_a, "A missing file is an empty schedule. OSError: it cannot be read.")
      .def("__len__", On(&Schedule::Count))
      .def("__getitem__",
           [](Schedule& schedule, py::slice const& slice) -> py::object {
             py::object const all = py::cast(schedule.All());
             return all[slice];
           })
      .def("__getitem__",
           [](Schedule& schedule, py::object const& index) { return schedule.At(Position(index, schedule.Count())); })
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
          "The next entry after now, or None.")
      .def(
          "add",
          [](Schedule& schedule, Moment when) {
            schedule.Change([&](ProgList& list) {
              reg_proglist entry{static_cast<std::int32_t>(when.seconds)};
              return list.AddReg(&entry);
            });
          },
          "when"_a, "Adds an entry.")
      .def(
          "remove",
          [](Schedule& schedule, Moment day) {
            schedule.Change([&](ProgList& list) {
              reg_proglist const entry{static_cast<std::int32_t>(day.seconds)};
              return list.RemReg(&entry);
            });
          },
          "day"_a, "Removes the first entry of that day, at any time. A day without an entry is no error.")
      .def(
          "clear", [](Schedule& schedule) { schedule.Change([](ProgList& list) { return list.ClearList(); }); },
          "Removes all entries.");
}
