// What somebody who waits sees: on the error stream, if that is a terminal. Less than kLittle bytes take no second.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_PROGRESS_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_PROGRESS_H

#include <cstdint>
#include <string>
#include <vector>

constexpr std::uint64_t kLittle = 16 << 20;

// A bar, which goes away when all is done.
class Progress {
 public:
  // `total` is 0 when it is not known.
  explicit Progress(std::uint64_t total);
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

  void Advance(std::uint64_t bytes);
  std::uint64_t Done() const { return done_; }

 private:
  std::uint64_t total_;
  bool shown_;
  std::uint64_t done_ = 0;
  int drawn_ = -1;
};

// A line that goes away again, for work in one step: "reading upscli.cfg, 200 MiB".
class Busy {
 public:
  // Of files that need not exist.
  Busy(std::string const& doing, std::vector<std::string> const& files);
  ~Busy();
  Busy(Busy const&) = delete;
  Busy& operator=(Busy const&) = delete;

 private:
  bool shown_ = false;
};

#endif
