#include "report/chartpicture.h"

#include <algorithm>

#include "report/markup.h"
#include "report/pictureframe.h"
#include "terminal/terminal.h"

namespace {

constexpr double kLeft = 160;  // the bars start right of the row names
constexpr int kRowHeight = 20;
constexpr int kHeadHeight = 26;
constexpr std::size_t kMostCodes = 12;
constexpr char const* kTitles[] = {"hour", "day", "week", "month", "year", "weekday", "hour of the day"};

class Drawing {
 public:
  Drawing(std::vector<ChartColumn> const& columns, Step step) : columns_(columns), step_(step) {
    for (ChartColumn const& column : columns_)
      for (auto const& [row, count] : column.counts) {
        all_[row] += count;
        greatest_ = std::max(greatest_, count);
      }
    RequirePictureRows(all_.size());
    cell_ = (kPictureWidth - kLeft) / static_cast<double>(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); i++)
      svg_ += TextAt(At(i), 13, "code " + std::to_string(columns_[i].code), "m");
  }

  std::string Draw() {
    RowRange const range = RangeOf(step_, all_);
    std::int64_t next = range.begin;
    for (auto const& [row, count] : all_) {
      Gap(next, row);
      Row(row);
      next = NextRow(step_, row);
    }
    Gap(next, range.end);
    return svg_;
  }

  int Height() const { return y_; }

 private:
  double At(std::size_t column) const { return kLeft + cell_ * static_cast<double>(column); }

  void Gap(std::int64_t from, std::int64_t to) {
    ChartGap const gap = GapBetween(step_, from, to);
    for (std::int64_t const row : gap.rows) Row(row);
    if (gap.words.empty()) return;
    svg_ += TextAt(kLeft, y_ + 13, gap.words + " without", "m");
    y_ += kRowHeight;
  }

  void Row(std::int64_t row) {
    svg_ += TextAt(16, y_ + 13, RowText(step_, row));
    double const longest = cell_ - 16 - 8 * static_cast<double>(std::to_string(greatest_).size() + 1);
    for (std::size_t i = 0; i < columns_.size(); i++) {
      auto const found = columns_[i].counts.find(row);
      std::uint64_t const count = found == columns_[i].counts.end() ? 0 : found->second;
      double const width = static_cast<double>(count) / static_cast<double>(greatest_) * longest;
      if (count > 0) svg_ += BarAt(At(i), y_ + 3, width);
      svg_ += TextAt(At(i) + (count > 0 ? std::max(width, 1.0) + 6 : 0), y_ + 13, std::to_string(count), "m");
    }
    y_ += kRowHeight;
  }

  std::vector<ChartColumn> const& columns_;
  Step step_;
  std::map<std::int64_t, std::uint64_t> all_;
  std::uint64_t greatest_ = 1;
  double cell_ = 0;
  std::string svg_;
  int y_ = kHeadHeight;
};

}  // namespace

std::string ChartPicture(Chart const& chart, Step step, std::string const& name) {
  std::vector<ChartColumn> const columns = chart.By(step);
  if (columns.size() > kMostCodes)
    throw WrongUsage("--svg: " + std::to_string(columns.size()) + " codes do not fit a picture (at most " +
                     std::to_string(kMostCodes) + "); --code names those to draw");
  std::string summary;
  std::uint64_t events = 0;
  for (ChartColumn const& column : columns) {
    summary +=
        (summary.empty() ? "" : ", ") + std::to_string(column.events) + " of code " + std::to_string(column.code);
    events += column.events;
  }
  Drawing drawing(columns, step);
  std::string const svg = drawing.Draw();
  std::string const title = std::string("Events by ") + kTitles[static_cast<std::size_t>(step)];
  return FramedPicture({title, Counted(events, "event") + ": " + summary, name, ". All bars have one scale."},
                       drawing.Height(), svg);
}
