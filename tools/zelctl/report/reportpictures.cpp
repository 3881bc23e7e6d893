#include "report/reportpictures.h"

#include <algorithm>
#include <map>

#include "report/markup.h"
#include "report/outagepicture.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kMostDayMonths = 3;
constexpr std::size_t kMostSquareMonths = 24;
constexpr int kMonthFactor = 6;  // the limits of a month are six times those of a day

using Groups = std::map<std::int64_t, OutageGroup>;

Groups GroupsByBegin(std::vector<Outage> const& outages, Period period) {
  Groups groups;
  for (OutageGroup const& group : GroupsOf(outages, period)) groups[group.from] = group;
  return groups;
}

std::string Number(int number) { return std::to_string(number); }

std::string Text(double x, int y, char const* type, char const* anchor, std::string const& markup) {
  return Element("text",
                 {{"x", Coordinate(x)},
                  {"y", Number(y)},
                  {*anchor != '\0' ? "text-anchor" : "", anchor},
                  {*type != '\0' ? "class" : "", type}},
                 markup);
}

std::string Square(double x, double y, double size, char const* round) {
  return Shape("rect", {{"x", Coordinate(x)},
                        {"y", Coordinate(y)},
                        {"width", Coordinate(size)},
                        {"height", Coordinate(size)},
                        {*round != '\0' ? "rx" : "", round}});
}

std::string Tip(std::string const& name, OutageGroup const& group) {
  return Element("title", {}, Escaped(name + ": " + Counted(group.begun, "outage") + ", " + ClockText(group.seconds)));
}

std::string Picture(char const* type, int width, int height, std::string const& label, std::string const& content) {
  return Element("svg",
                 {{"class", type},
                  {"role", "img"},
                  {"width", Number(width)},
                  {"height", Number(height)},
                  {"viewBox", "0 0 " + Number(width) + " " + Number(height)},
                  {"aria-label", label}},
                 content);
}

// "45 s", "36 min", "2 h"
std::string RoughText(std::int64_t seconds) {
  if (seconds < 60) return std::to_string(seconds) + " s";
  if (seconds < 5970 && seconds != kHourSeconds) return std::to_string((seconds + 30) / 60) + " min";
  return std::to_string((seconds + kHourSeconds / 2) / kHourSeconds) + " h";
}

// ---- A month of days ----

// A row is a week from Monday to Sunday. Days outside the log are not drawn.
class MonthPicture {
 public:
  MonthPicture(std::int64_t month, bool isBig) : month_(month), big_(isBig) {}

  std::string Draw(Groups const& days, History const& history) {
    std::int64_t const first = std::max(month_, BeginOf(Period::kDay, history.earliest));
    std::int64_t const end = std::min(NextBegin(Period::kMonth, month_), static_cast<std::int64_t>(history.latest) + 1);
    std::int64_t const monday = BeginOf(Period::kWeek, first);
    std::uint64_t begun = 0;
    int weeks = 0;
    for (std::int64_t day = first; day < end; day += kDaySeconds) {
      weeks = static_cast<int>((day - monday) / kDaySeconds / 7);
      auto const found = days.find(day);
      OutageGroup const* const group = found == days.end() ? nullptr : &found->second;
      begun += group != nullptr ? group->begun : 0;
      int const column = static_cast<int>((day - monday) / kDaySeconds % 7);
      big_ ? Cell(column, weeks, day, group) : Dot(column, weeks, day, group);
    }
    if (!free_.empty()) svg_ += Shape("path", {{"class", "free"}, {"d", free_}});
    std::string const name = TextOf(Period::kMonth, month_);
    return Picture("cal", 7 * Width() + 1, Top() + (weeks + 1) * Height() + 2,
                   name + ": " + Counted(begun, "outage") + "; the table of outages names each", Head(name) + svg_);
  }

 private:
  int Width() const { return big_ ? 49 : 15; }
  int Height() const { return big_ ? 46 : 15; }
  int Top() const { return big_ ? 18 : 17; }

  std::string Head(std::string const& name) const {
    if (!big_) return Text(1, 12, "b", "", name);
    std::string head;
    int column = 0;
    for (char const* const day : {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"})
      head += Text(Width() * column++ + Width() / 2.0, 12, "m", "middle", day);
    return head;
  }

  void Cell(int column, int week, std::int64_t day, OutageGroup const* group) {
    int const x = column * Width();
    int const y = Top() + week * Height();
    std::string cell = group != nullptr ? Tip(TextOf(Period::kDay, day), *group) : "";
    cell += Shape("rect", {{"x", Number(x + 1)},
                           {"y", Number(y + 1)},
                           {"width", Number(Width() - 2)},
                           {"height", Number(Height() - 2)},
                           {"rx", "3"}});
    cell += Text(x + 5, y + 15, "", "", Number((static_cast<int>((day - month_) / kDaySeconds) + 1)));
    if (group != nullptr && group->begun > 1)
      cell += Text(x + Width() - 5, y + 15, "", "end", std::to_string(group->begun) + "&#215;");
    if (group != nullptr) cell += Text(x + Width() / 2.0, y + 35, "", "middle", RoughText(group->seconds));
    svg_ += Element("g", {{"class", group != nullptr ? "s" + Number(StepOf(group->seconds)) : "s0"}}, cell);
  }

  void Dot(int column, int week, std::int64_t day, OutageGroup const* group) {
    int const x = column * Width();
    int const y = Top() + week * Height();
    if (group == nullptr) {
      free_ += "M" + Number(x + 6) + " " + Number(y + 6) + "h3v3h-3z";
      return;
    }
    int const step = StepOf(group->seconds);
    std::string const square = Square(x + 5.5 - 1.2 * step, y + 5.5 - 1.2 * step, 4 + 2.4 * step, "");
    svg_ += Element("g", {{"class", "s" + Number(step)}}, Tip(TextOf(Period::kDay, day), *group) + square);
  }

  std::int64_t month_;
  bool big_;
  std::string svg_;
  std::string free_;  // days without an outage, as one path
};

// ---- Years of months ----

std::string MonthCell(std::int64_t month, int column, int y, OutageGroup const* group) {
  int const x = 44 + 25 * column;
  int const step = group != nullptr ? StepOf(group->seconds, kMonthFactor) : 0;
  std::string cell = Tip(TextOf(Period::kMonth, month), group != nullptr ? *group : OutageGroup());
  cell += Square(x + 1, y, 23, "3");
  cell += Text(x + 12.5, y + 15, "", "middle", std::to_string(group != nullptr ? group->begun : 0));
  if (step > 0)
    cell += Shape("line", {{"class", "n"},
                           {"x1", Number(x + 3)},
                           {"x2", Coordinate(x + 3.5 + 4.5 * step)},
                           {"y1", Number(y + 20)},
                           {"y2", Number(y + 20)}});
  return Element("g", {{"class", "s" + Number(step)}}, cell);
}

std::string YearsPicture(History const& history) {
  Groups const months = GroupsByBegin(history.outages, Period::kMonth);
  std::string svg;
  for (int column = 0; column < 12; column++) svg += Text(56 + 25 * column, 12, "m", "middle", Number(column + 1));
  int row = 0;
  std::int64_t year = BeginOf(Period::kYear, history.earliest);
  for (; year <= history.latest; year = NextBegin(Period::kYear, year), row++) {
    svg += Text(0, 36 + 25 * row, "", "", TextOf(Period::kYear, year));
    std::int64_t month = year;
    for (int column = 0; column < 12; column++, month = NextBegin(Period::kMonth, month)) {
      if (month > history.latest || NextBegin(Period::kMonth, month) <= history.earliest) continue;
      auto const found = months.find(month);
      svg += MonthCell(month, column, 20 + 25 * row, found == months.end() ? nullptr : &found->second);
    }
  }
  std::string const label = "Outages by month of " + Counted(static_cast<std::uint64_t>(row), "year");
  return Picture("cal", 344, 25 * row + 20, label, svg);
}

std::string Legend(CalendarKind kind) {
  int const factor = kind == CalendarKind::kMonths ? kMonthFactor : 1;
  std::string legend;
  for (int step = 1; step <= 4; step++) {
    double const size = kind == CalendarKind::kSquares ? 4 + 2.4 * step : 14;
    std::string key = Square(8 - size / 2, 8 - size / 2, size, "1");
    if (kind == CalendarKind::kMonths)
      key += Shape("line", {{"class", "n"}, {"x1", "2"}, {"x2", Number(2 + 3 * step)}, {"y1", "12.5"}, {"y2", "12.5"}});
    legend += Element("li", {},
                      Element("svg", {{"width", "16"}, {"height", "16"}, {"class", "key"}, {"aria-hidden", "true"}},
                              Element("g", {{"class", "s" + Number(step)}}, key)) +
                          Escaped(StepText(step, factor)));
  }
  return Element("ul", {{"class", "legend"}}, legend);
}

}  // namespace

Calendar CalendarOf(History const& history) {
  std::vector<std::int64_t> months;
  for (std::int64_t month = BeginOf(Period::kMonth, history.earliest); month <= history.latest;
       month = NextBegin(Period::kMonth, month))
    months.push_back(month);
  CalendarKind const kind = months.size() <= kMostDayMonths      ? CalendarKind::kDays
                            : months.size() <= kMostSquareMonths ? CalendarKind::kSquares
                                                                 : CalendarKind::kMonths;
  if (kind == CalendarKind::kMonths) return {kind, YearsPicture(history), Legend(kind)};
  Groups const days = GroupsByBegin(history.outages, Period::kDay);
  Calendar calendar = {kind, "", Legend(kind)};
  for (std::int64_t const month : months)
    calendar.svg += MonthPicture(month, kind == CalendarKind::kDays).Draw(days, history);
  return calendar;
}

std::string HoursPicture(std::vector<Outage> const& outages) {
  RasterStyle style;
  // Percentages: the text keeps its size on a phone.
  style.position = [](double hours) { return Coordinate(hours / 0.24) + "%"; };
  style.width = [](double hours) { return Coordinate(std::max(hours / 0.24, 0.01)) + "%"; };
  style.label = [](int y, std::string const& text) { return Text(-10, y, "t", "end", Escaped(text)); };
  style.gap = [](int y, std::string const& text) { return Text(6, y, "m", "", Escaped(text)); };
  style.total = [](int, OutageGroup const&) { return std::string(); };
  Period const period = RowPeriod(outages);
  Raster const raster = DrawRaster(outages, period, style);
  return Element("svg",
                 {{"class", "time"},
                  {"role", "img"},
                  {"height", Number(raster.height + 4)},
                  {"aria-label", "When the outages were, by hour of the day: " + Counted(outages.size(), "outage") +
                                     " on " + Counted(GroupsOf(outages, period).size(), NameOf(period)) +
                                     "; the table of outages names each"}},
                 raster.svg);
}

std::string LengthBar(Outage const& outage, std::int64_t longest) {
  double const share = longest == 0 ? 100 : static_cast<double>(outage.Seconds()) * 100 / static_cast<double>(longest);
  return Element("svg", {{"class", "len"}, {"width", "100%"}, {"height", "10"}, {"aria-hidden", "true"}},
                 Shape("rect", {{"width", Coordinate(share) + "%"}, {"height", "10"}, {"class", "bar"}}));
}
