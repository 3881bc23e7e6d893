// Event logs.
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "binding.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/logclass.h"
#include "zelvane/logs/logreader.h"

namespace {

constexpr std::size_t kPayload = 62;

struct Event {
  std::int32_t stamp = 0;
  std::uint16_t code = 0;
  std::array<char, kPayload> payload{};

  // The payload without the zeros at its end.
  std::string Filled() const {
    std::string const text(payload.data(), kPayload);
    return text.substr(0, text.find_last_not_of('\0') + 1);
  }
  bool operator==(Event const& other) const {
    return stamp == other.stamp && code == other.code && payload == other.payload;
  }
};
static_assert(sizeof(Event) == 68, "an event is laid out as in the file");

constexpr std::size_t kRegister = sizeof(Event) - sizeof(std::int32_t);  // what LogClass calls a record's size

// All records of a log in one block, for the buffer protocol. Never changed, so that views stay good.
struct Records {
  std::vector<Event> events;
};

// The first and the last day of a span; what is missing does not bound it.
struct Span {
  Span(std::optional<Moment> const& first, std::optional<Moment> const& last)
      : from(first ? first->seconds : -1), to(last ? std::min(last->seconds, kLastDay) : kLastDay) {}
  static constexpr long kLastDay = 2147385600;  // 2038-01-18: the next day's last second is no date-time any more
  long from;
  long to;
};

class EventLog {
 public:
  // Asks the log as it is in memory, read anew after an append.
  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] {
      if (stale_) Load();
      return work(log_.get());
    });
  }

  unsigned long Count() {
    return Ask([this](void*) { return count_; });
  }

  EventLog(Path const& path, bool create, std::optional<std::uint32_t> limit)
      : path_(path.bytes), create_(create), limit_(limit.value_or(std::numeric_limits<std::uint32_t>::max())) {
    Count();
    if (count_ == 0 && length_ > 0 &&
        PyErr_WarnEx(PyExc_RuntimeWarning, (path_ + ": damaged, counts as empty").c_str(), 1) != 0)
      throw py::error_already_set();
  }

  Event At(unsigned long index) {
    return Ask([&](void* log) {
      Event event;
      if (!Read(log, index, event)) throw py::index_error("no such event");
      return event;
    });
  }

  std::unique_ptr<Records> All() {
    return Ask([this](void* log) {
      auto records = std::make_unique<Records>();
      records->events.resize(count_);
      for (unsigned long i = 0; i < count_; i++) Read(log, i, records->events[i]);
      return records;
    });
  }

  void Append(Event const& event, std::optional<Moment> const& when) {
    Alone(mutex_, [&] {
      LogClass writer;
      Must(path_, "short of memory", [&] { return writer.SetFile(path_); });
      writer.SetMaxLines(limit_);
      long const stamp = when ? when->seconds : GetDateTime();
      stale_ = true;
      create_ = false;
      Must(path_, "cannot be written", [&] { return writer.WriteReg(stamp, &event.code, kRegister); });
    });
  }

  // Records, bytes after the last whole one, and the positions of those out of order, in the future, without a time.
  py::dict Verify() {
    std::vector<unsigned long> order, future, timeless;
    auto const [records, length] = Ask([&](void* log) {
      long const now = GetDateTime();
      std::int32_t before = std::numeric_limits<std::int32_t>::min();
      for (unsigned long i = 0; i < count_; i++) {
        Event event;
        Read(log, i, event);
        if (event.stamp < before) order.push_back(i);
        if (event.stamp > now) future.push_back(i);
        if (event.stamp < 0) timeless.push_back(i);
        before = event.stamp;
      }
      return std::pair(count_, length_);
    });
    return py::dict("records"_a = records, "torn_bytes"_a = length % sizeof(Event), "out_of_order"_a = order,
                    "in_future"_a = future, "without_time"_a = timeless);
  }

  std::string const& GetPath() const { return path_; }

 private:
  struct Close {
    void operator()(void* log) const { LogReaderClose(log); }
  };

  static bool Read(void* log, unsigned long index, Event& event) {
    long when = 0;
    bool const read = static_cast<LogClass*>(log)->ReadReg(index, &when, &event.code, kRegister);
    event.stamp = static_cast<std::int32_t>(when);
    return read;
  }

  void Load() {
    struct stat status;
    count_ = 0;
    length_ = 0;
    log_.reset();
    if (stat(path_.c_str(), &status) != 0) {
      if (create_ && errno == ENOENT) return;
      throw Failure(errno, path_, "");
    }
    if (S_ISDIR(status.st_mode)) throw Failure(EISDIR, path_, "");
    errno = 0;
    log_.reset(LogReaderOpen(path_.c_str()));
    if (log_ == nullptr) throw Failure(errno, path_, "cannot be read");
    count_ = LogReaderRegCount(log_.get());
    length_ = static_cast<unsigned long>(status.st_size);
    stale_ = false;
  }

  std::mutex mutex_;
  std::string path_;
  bool create_;
  std::uint32_t limit_;
  bool stale_ = true;
  std::unique_ptr<void, Close> log_;
  unsigned long count_ = 0;
  unsigned long length_ = 0;
};

Event MakeEvent(unsigned code, std::string const& payload) {
  if (code > 0xFFFF) throw py::value_error("an event's code is 0 to 65535");
  if (payload.size() > kPayload) throw py::value_error("an event takes at most 62 bytes");
  Event event;
  event.code = static_cast<std::uint16_t>(code);
  payload.copy(event.payload.data(), kPayload);
  return event;
}

py::object Duration(EventLog& log, unsigned short start, std::vector<short> const& ends,
                    std::optional<Moment> const& from, std::optional<Moment> const& to) {
  Span const span(from, to);
  long const seconds = log.Ask([&](void* handle) {
    return LogReaderTimeEvents2(handle, static_cast<short>(start), ends.data(), ends.size(), span.from, span.to);
  });
  return py::module_::import("datetime").attr("timedelta")("seconds"_a = seconds);
}

}  // namespace

void BindEventLog(py::module_& module) {
  py::class_<Event>(module, "Event", "One event of a log.")
      .def_property_readonly(
          "time", [](Event const& event) { return Moment{event.stamp}; },
          "When, local time. Before 1970 for a record without a valid time.")
      .def_readonly("code", &Event::code, "What has happened: a number of the programs' own.")
      .def_property_readonly(
          "text", [](Event const& event) { return Text{event.Filled()}; },
          "The payload as Latin-1 text, without the zeros at its end.")
      .def_property_readonly(
          "payload", [](Event const& event) { return py::bytes(event.payload.data(), kPayload); },
          "The 62 bytes after the code.")
      .def(
          "__eq__", [](Event const& a, Event const& b) { return a == b; }, py::is_operator())
      .def("__repr__", [](Event const& event) {
        return py::str("Event({}, code={}, text={!r})").format(Moment{event.stamp}, event.code, Text{event.Filled()});
      });

  py::class_<Records>(
      module, "Records", py::buffer_protocol(),
      "All events of a log in one block, for numpy.asarray(): fields time (seconds since 1970, local), code\n"
      "and payload.")
      .def_buffer([](Records& records) {
        return py::buffer_info(records.events.data(), sizeof(Event), "T{<i:time:<H:code:62s:payload:}", 1,
                               {static_cast<py::ssize_t>(records.events.size())},
                               {static_cast<py::ssize_t>(sizeof(Event))}, true);
      })
      .def("__len__", [](Records const& records) { return records.events.size(); });

  py::class_<EventLog>(
      module, "EventLog",
      "An event log (logevt.rgt ...): a sequence of Event.\n\n"
      "    log = zelvane.EventLog(\"logevt.rgt\")\n"
      "    for event in log:\n"
      "        print(event.time, event.code, event.text)\n\n"
      "The file is read once, and again after an append(). No more than one Event exists at a time while\n"
      "the log is walked. A damaged file (a length that is no whole number of records) counts as empty,\n"
      "with a RuntimeWarning.")
      .def(py::init<Path const&, bool, std::optional<std::uint32_t>>(), "path"_a, "create"_a = false,
           "limit"_a = py::none(),
           "create: a missing file is an empty log, and the first append() makes it. limit: append() keeps no\n"
           "more than the newest events (the product's services keep 1024); None keeps all. OSError: the file\n"
           "cannot be read.")
      .def_property_readonly(
          "path", [](EventLog const& log) { return Path{log.GetPath()}; }, "The file.")
      .def("__len__", &EventLog::Count)
      .def("__getitem__", [](EventLog& log, py::ssize_t index) { return log.At(Position(index, log.Count())); })
      .def("__getitem__",
           [](EventLog& log, py::slice const& slice) {
             std::size_t start = 0, stop = 0, step = 0, length = 0;
             if (!slice.compute(log.Count(), &start, &stop, &step, &length)) throw py::error_already_set();
             std::vector<Event> events;
             for (; length > 0; length--, start += step) events.push_back(log.At(start));
             return events;
           })
      .def("__iter__",
           [](py::object const& log) { return py::reinterpret_steal<py::object>(PySeqIter_New(log.ptr())); })
      .def_property_readonly(
          "records", &EventLog::All,
          "All events as one block of memory for numpy: numpy.asarray(log.records). A copy; it outlives the\n"
          "log.")
      .def(
          "count",
          [](EventLog& log, unsigned short code, std::optional<Moment> const& from, std::optional<Moment> const& to) {
            Span const span(from, to);
            return log.Ask([&](void* handle) { return LogReaderCountEvents(handle, code, span.from, span.to); });
          },
          "code"_a, "first"_a = py::none(), "last"_a = py::none(),
          "The number of events with the code from the first day to the last one, both whole. Only the dates count.")
      .def("duration", &Duration, "start"_a, "ends"_a, "first"_a = py::none(), "last"_a = py::none(),
           "How long, within the days, a condition was in force that the code `start` begins and the next of\n"
           "`ends` ends.\n\n"
           "As the product's programs sum it up: a condition that is still in force counts to the last event,\n"
           "not to now; logreader.h has the details.")
      .def(
          "append",
          [](EventLog& log, unsigned code, Text const& text, std::optional<Moment> const& when) {
            log.Append(MakeEvent(code, text.bytes), when);
          },
          "code"_a, "text"_a = "", "time"_a = py::none(),
          "Appends an event, now or at a time, with up to 62 characters or bytes. OSError: it is not written.\n\n"
          "A damaged file is begun anew; what it held is kept beside it as NAME.bad.")
      .def(
          "append",
          [](EventLog& log, unsigned code, py::bytes const& payload, std::optional<Moment> const& when) {
            log.Append(MakeEvent(code, payload), when);
          },
          "code"_a, "text"_a, "time"_a = py::none())
      .def("verify", &EventLog::Verify,
           "What is odd: records, torn_bytes (bytes after the last whole record; the programs then take the log\n"
           "for empty), and the positions of events out_of_order, in_future and without_time.")
      .def("__repr__", [](EventLog& log) { return py::str("EventLog({!r})").format(Path{log.GetPath()}); });
}
