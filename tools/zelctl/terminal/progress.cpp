#include "terminal/progress.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "terminal/terminal.h"

namespace {

// Clears the cursor's line; the next output starts there.
void Erase() { std::cerr << "\r\033[K" << std::flush; }

}  // namespace

Progress::Progress(std::uint64_t total)
    : total_(total), shown_((total == 0 || total >= kLittle) && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (drawn_ >= 0) Erase();
}

void Progress::Advance(std::uint64_t bytes) {
  done_ += bytes;
  if (!shown_ || (total_ == 0 && done_ < kLittle)) return;
  // A file can grow during the read.
  auto const step = static_cast<int>(total_ > 0 ? std::min<std::uint64_t>(done_ * 100 / total_, 100) : done_ >> 20);
  if (step == drawn_) return;
  drawn_ = step;
  constexpr int kPercentPerMark = 2;
  std::cerr << '\r';
  if (total_ > 0) {
    std::string bar(static_cast<std::size_t>(step / kPercentPerMark), '#');
    bar.resize(100 / kPercentPerMark, '.');
    std::cerr << '[' << bar << "] " << step << " %  ";
  }
  std::cerr << (done_ >> 20) << " MiB" << std::flush;
}

Busy::Busy(std::string const& doing, std::vector<std::string> const& files) {
  std::uint64_t total = 0;
  std::string largest;
  std::uint64_t most = 0;
  for (std::string const& file : files) {
    std::error_code none;
    std::uintmax_t const size = std::filesystem::file_size(file, none);
    if (none) continue;
    total += size;
    if (size > most) largest = file, most = size;
  }
  shown_ = total >= kLittle && isatty(STDERR_FILENO) == 1;
  if (shown_)
    std::cerr << doing << ' ' << Terminal().ShownName(largest) << ", " << (total >> 20) << " MiB" << std::flush;
}

Busy::~Busy() {
  if (shown_) Erase();
}
