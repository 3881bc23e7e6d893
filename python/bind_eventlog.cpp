// Event logs.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <variant>
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

  // The payload without trailing zeros.
  std::string Filled() const {
    std::string const text(payload.data(), kPayload);
    return text.substr(0, text.find_last_not_of('\0') + 1);
  }
  bool operator==(Event const& other) const {
    return stamp == other.stamp && code == other.code && payload == other.payload;
  }
};
static_assert(sizeof(Event) == 68, "an event is laid out as in the file");

constexpr std::size_t kRegister = sizeof(Event) - sizeof(std::int32_t);  // the size of a record for LogClass

// All records of a log in one block, for the buffer protocol. Never changed: views stay valid.
struct Records {
  std::vector<Event> events;
};

// The first and the last day of a span; a missing one sets no bound.
struct Span {
  Span(std::optional<Moment> const& first, std::optional<Moment> const& last)
      : from(first ? first->seconds : -1), to(last ? std::min(last->seconds, kLastDay) : kLastDay) {}
  static constexpr long kLastDay = 2147385600;  // 2038-01-18: the last second of the next day is no date-time
  long from;
  long to;
};

class EventLog {
 public:
  // Works on the log in memory, which is read again after an append.
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
    if (limit_ == 0) throw py::value_error("limit: expected at least 1, or None for no limit");
    if (Count() == 0 && length_ > 0 &&
        PyErr_WarnFormat(PyExc_RuntimeWarning, 1, "%U: damaged, treated as empty", PathText(path_).ptr()) != 0)
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
      Must(path_, "out of memory", [&] { return writer.SetFile(path_); });
      writer.SetMaxLines(limit_);
      long const stamp = when ? when->seconds : GetDateTime();
      stale_ = true;
      create_ = false;
      Must(path_, "cannot be written", [&] { return writer.WriteReg(stamp, &event.code, kRegister); });
    });
  }

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
    count_ = 0;
    log_.reset();
    length_ = static_cast<unsigned long>(ReadableSize(path_));
    errno = 0;
    log_.reset(LogReaderOpen(path_.c_str()));
    if (log_ == nullptr && create_ && errno == ENOENT) return;
    if (log_ == nullptr) throw Failure(errno, path_, "cannot be read");
    count_ = LogReaderRegCount(log_.get());
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

Event MakeEvent(long code, std::string const& payload) {
  if (code < 0 || code > 0xFFFF) throw py::value_error("code: expected 0 to 65535");
  if (payload.size() > kPayload) throw py::value_error("text: an event has at most 62 bytes");
  Event event;
  event.code = static_cast<std::uint16_t>(code);
  payload.copy(event.payload.data(), kPayload);
  return event;
}

py::object Duration(EventLog& log, unsigned short start, std::vector<unsigned short> const& ends,
                    std::optional<Moment> const& from, std::optional<Moment> const& to) {
  Span const span(from, to);
  std::vector<short> const codes(ends.begin(), ends.end());
  long const seconds = log.Ask([&](void* handle) {
    return LogReaderTimeEvents2(handle, static_cast<short>(start), codes.data(), codes.size(), span.from, span.to);
  });
  return py::module_::import("datetime").attr("timedelta")("seconds"_a = seconds);
}

}  // namespace

void BindEventLog(py::module_& module) {
  py::class_<Event>(module, "Event", "One event of a log.")
      .def_property_readonly(
          "time", [](Event const& event) { return Moment{event.stamp}; },
          "Local time. Before 1970 for a record without a valid time.")
      .def_readonly("code", &Event::code, "The kind of event, a number defined by the programs.")
      .def_property_readonly(
          "text", [](Event const& event) { return Text{event.Filled()}; },
          "The payload as Latin-1 text, without trailing zeros.")
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
      "The file is read once, and again after an append(). Iteration creates one Event at a time. A damaged\n"
      "file (its last record is partial) is treated as empty, with a RuntimeWarning.")
      .def(py::init<Path const&, bool, std::optional<std::uint32_t>>(), "path"_a, "create"_a = false,
           "limit"_a = py::none(),
           "create: a missing file is an empty log, and the first append() creates it. limit: append() keeps\n"
           "this number of the newest events (the product's services keep 1024); None keeps all. OSError: the\n"
           "file cannot be read.")
      .def_property_readonly(
          "path", [](EventLog const& log) { return Path{log.GetPath()}; }, "The file.")
      .def("__len__", On(&EventLog::Count))
      .def("__getitem__",
           [](EventLog& log, py::slice const& slice) {
             std::size_t start = 0, stop = 0, step = 0, length = 0;
             if (!slice.compute(log.Count(), &start, &stop, &step, &length)) throw py::error_already_set();
             std::vector<Event> events;
             for (; length > 0; length--, start += step) events.push_back(log.At(start));
             return events;
           })
      .def("__getitem__", [](EventLog& log, py::object const& index) { return log.At(Position(index, log.Count())); })
      .def("__iter__",
           [](py::object const& log) { return py::reinterpret_steal<py::object>(PySeqIter_New(log.ptr())); })
      .def_property_readonly(
          "records", On(&EventLog::All),
          "All events as one block of memory: numpy.asarray(log.records). A copy, valid without the log.")
      .def(
          "count",
          [](EventLog& log, unsigned short code, std::optional<Moment> const& from, std::optional<Moment> const& to) {
            Span const span(from, to);
            return log.Ask([&](void* handle) { return LogReaderCountEvents(handle, code, span.from, span.to); });
          },
          "code"_a, "first"_a = py::none(), "last"_a = py::none(),
          "The number of events with the code, from the first day to the last day inclusive. The time of day is\n"
          "ignored.")
      .def("duration", &Duration, "start"_a, "ends"_a, "first"_a = py::none(), "last"_a = py::none(),
           "How long a condition lasted within the days: the code `start` begins it, the next of `ends` ends it.\n\n"
           "Same as in the product's programs: a condition that has not ended counts up to the last event, not\n"
           "to now; logreader.h has the details.")
      .def(
          "append",
          [](EventLog& log, long code, std::variant<py::bytes, Text> const& text, std::optional<Moment> const& when) {
            Text const* const characters = std::get_if<Text>(&text);
            std::string const payload =
                characters != nullptr ? characters->bytes : std::string(std::get<py::bytes>(text));
            log.Append(MakeEvent(code, payload), when);
          },
          "code"_a, "text"_a = "", "time"_a = py::none(),
          "Appends an event with up to 62 characters or bytes, and the time or now. OSError: nothing is written.\n\n"
          "A damaged file is copied to NAME.bad and started again.")
      .def("verify", On(&EventLog::Verify),
           "Checks the log. Returns the number of records, torn_bytes (bytes after the last complete record: the\n"
           "programs then treat the log as empty), and the positions of events that are out_of_order, in_future\n"
           "or without_time.")
      .def("__repr__", [](EventLog& log) { return py::str("EventLog({!r})").format(Path{log.GetPath()}); });
}
