#include "report/outagepicture.h"

#include <algorithm>
#include <array>
#include <map>

#include "report/markup.h"
#include "report/pictureframe.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kMostRows = 31;
constexpr double kHour = kHourSeconds;
constexpr std::array<std::int64_t, 3> kSteps = {60, 600, kHourSeconds};
constexpr int kRowHeight = 24;
constexpr int kGapHeight = 20;
constexpr int kAxisHeight = 24;

std::string ShortText(std::int64_t seconds) {
  if (seconds < kHourSeconds) return std::to_string(seconds / 60) + " min";
  return std::to_string(seconds / kHourSeconds) + " h";
}

// The outages of each row: by day all that overlap it, otherwise those that begin in it.
using Members = std::map<std::int64_t, std::vector<Outage const*>>;

Members MembersOf(std::vector<Outage> const& outages, Period period) {
  Members members;
  for (Outage const& outage : outages) {
    std::int64_t row = BeginOf(period, outage.begin);
    members[row].push_back(&outage);
    if (period != Period::kDay) continue;
    for (row = NextBegin(period, row); row < outage.end; row = NextBegin(period, row)) members[row].push_back(&outage);
  }
  return members;
}

std::string Title(std::string const& text) { return Element("title", {}, Escaped(text)); }

class Drawing {
 public:
  Drawing(Period period, RasterStyle const& style) : period_(period), style_(style) {}

  void Row(OutageGroup const& group, std::vector<Outage const*> const& members) {
    if (next_ >= 0) Gap(group.from);
    next_ = NextBegin(period_, group.from);
    svg_ += Shape("line", {{"x1", style_.position(0)},
                           {"x2", style_.position(24)},
                           {"y1", std::to_string(y_ + 11)},
                           {"y2", std::to_string(y_ + 11)},
                           {"class", "grid"}});
    svg_ += style_.label(y_ + 15, TextOf(period_, group.from)) + style_.total(y_ + 15, group);
    period_ == Period::kDay ? Marks(group.from, members) : Dots(group.from, members);
    y_ += kRowHeight;
  }

  Raster Finished() const {
    std::string axis;
    for (int const hour : {0, 6, 12, 18, 24}) {
      std::string const x = style_.position(hour);
      axis += Shape("line", {{"x1", x}, {"x2", x}, {"y1", "20"}, {"y2", std::to_string(y_)}, {"class", "grid"}});
      axis += Element("text", {{"x", x}, {"y", "13"}, {"text-anchor", "middle"}, {"class", "m"}},
                      std::to_string(hour) + ":00");
    }
    return {axis + svg_, y_};
  }

 private:
  void Gap(std::int64_t from) {
    std::uint64_t count = 0;
    for (std::int64_t at = next_; at < from; at = NextBegin(period_, at)) count++;
    if (count == 0) return;
    svg_ += style_.gap(y_ + 12, Counted(count, NameOf(period_)) + " without");
    y_ += kGapHeight;
  }

  void Marks(std::int64_t day, std::vector<Outage const*> const& members) {
    for (Outage const* outage : members) {
      // An outage of length 0 is drawn as one second.
      std::int64_t const from = std::max<std::int64_t>(outage->begin - day, 0);
      std::int64_t const end = std::max<std::int64_t>(outage->end, static_cast<std::int64_t>(outage->begin) + 1);
      std::int64_t const to = std::min<std::int64_t>(end - day, kDaySeconds);
      svg_ += Element("rect",
                      {{"x", style_.position(static_cast<double>(from) / kHour)},
                       {"y", std::to_string(y_ + 3)},
                       {"width", style_.width(static_cast<double>(to - from) / kHour)},
                       {"height", "16"},
                       {"class", outage->open ? "o open" : "o"}},
                      Title(OutageText(*outage)));
    }
  }

  void Dots(std::int64_t row, std::vector<Outage const*> const& members) {
    std::array<std::int64_t, 24> seconds = {};
    std::array<std::uint64_t, 24> begun = {};
    for (Outage const* outage : members) {
      auto const hour = static_cast<std::size_t>(outage->begin % kDaySeconds / kHourSeconds);
      seconds[hour] += outage->Seconds();
      begun[hour]++;
    }
    for (std::size_t hour = 0; hour < seconds.size(); hour++) {
      if (begun[hour] == 0) continue;
      double const radius = 1.6 * StepOf(seconds[hour], period_ == Period::kYear ? 6 : 1) - 0.4;
      svg_ += Element("circle",
                      {{"cx", style_.position(static_cast<double>(hour) + 0.5)},
                       {"cy", std::to_string(y_ + 11)},
                       {"r", Coordinate(radius)},
                       {"class", "o"}},
                      Title(TextOf(period_, row) + ", " + std::to_string(hour) +
                            ":00: " + Counted(begun[hour], "outage") + ", " + ClockText(seconds[hour])));
    }
  }

  Period period_;
  RasterStyle const& style_;
  std::string svg_;
  int y_ = kAxisHeight;
  std::int64_t next_ = -1;
};

// ---- The stand-alone picture ----

constexpr double kLeft = 136;
constexpr double kRight = 560;

std::string Totalled(int y, OutageGroup const& group, std::int64_t most) {
  double const width = static_cast<double>(group.seconds) / static_cast<double>(most) * 200;
  return Element("text", {{"x", Coordinate(kRight + 76)}, {"y", std::to_string(y)}, {"text-anchor", "end"}},
                 std::to_string(group.begun) + "&#215;") +
         TextAt(kRight + 150, y, ClockText(group.seconds), "", true) + BarAt(kRight + 164, y - 10, width);
}

RasterStyle PictureRaster(std::int64_t most) {
  RasterStyle style;
  constexpr double kPerHour = (kRight - kLeft) / 24;
  style.position = [](double hours) { return Coordinate(kLeft + hours * kPerHour); };
  style.width = [](double hours) { return Coordinate(std::max(hours * kPerHour, 0.01)); };
  style.label = [](int y, std::string const& text) { return TextAt(16, y, text); };
  style.gap = [](int y, std::string const& text) { return TextAt(kLeft + 6, y, text, "m"); };
  style.total = [most](int y, OutageGroup const& group) { return Totalled(y, group, most); };
  return style;
}

}  // namespace

Period RowPeriod(std::vector<Outage> const& outages) {
  for (Period const period : {Period::kDay, Period::kMonth})
    if (GroupsOf(outages, period).size() <= kMostRows) return period;
  return Period::kYear;
}

int StepOf(std::int64_t seconds, int factor) {
  int step = 1;
  for (std::int64_t const limit : kSteps) step += seconds >= limit * factor ? 1 : 0;
  return step;
}

std::string StepText(int step, int factor) {
  auto const last = static_cast<int>(kSteps.size());
  if (step <= last) return "under " + ShortText(kSteps[static_cast<std::size_t>(step - 1)] * factor);
  return ShortText(kSteps.back() * factor) + " and more";
}

std::string UntilText(Outage const& outage) {
  if (outage.open) return "still open";
  std::string const end = TimeText(outage.end);
  return DayText(outage.end) == DayText(outage.begin) ? end.substr(11) : end;
}

std::string OutageText(Outage const& outage) {
  return DayText(outage.begin) + " " + WeekdayText(outage.begin) + TimeText(outage.begin).substr(10) + " to " +
         UntilText(outage) + ", " + LengthText(outage);
}

Raster DrawRaster(std::vector<Outage> const& outages, Period period, RasterStyle const& style) {
  Members const members = MembersOf(outages, period);
  static std::vector<Outage const*> const kNone;
  Drawing drawing(period, style);
  for (OutageGroup const& group : GroupsOf(outages, period)) {
    auto const found = members.find(group.from);
    drawing.Row(group, found == members.end() ? kNone : found->second);
  }
  return drawing.Finished();
}

std::string OutagePicture(std::vector<Outage> const& outages, Period period, History const& history) {
  std::vector<OutageGroup> const groups = GroupsOf(outages, period);
  RequirePictureRows(groups.size());
  std::int64_t most = 1;
  for (OutageGroup const& group : groups) most = std::max(most, group.seconds);
  Raster const raster = DrawRaster(outages, period, PictureRaster(most));
  Totals const totals = TotalsOf(outages);
  std::string const title = std::string("Outages by ") + NameOf(period);
  std::string const summary = Counted(totals.count, "outage") + ", " + ClockText(totals.seconds) +
                              " in all; the longest " + ClockText(totals.longest) + ", " +
                              TimeText(outages[totals.longestAt].begin);
  std::string const name = history.path.substr(history.path.rfind('/') + 1);
  std::string const heads = TextAt(16, 13, NameOf(period), "m") + TextAt(kRight + 76, 13, "begun", "m", true) +
                            TextAt(kRight + 150, 13, "total", "m", true);
  std::string const foot = ", " + TimeText(history.earliest) + " to " + TimeText(history.latest) +
                           (period == Period::kDay ? ". Marks: the outages at their times. Bars: the totals."
                                                   : ". Dots: the hours in which outages began. Bars: the totals.");
  return FramedPicture({title, summary, name, foot}, raster.height, heads + raster.svg);
}
