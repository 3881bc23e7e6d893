// Progress on standard error, if that is a terminal. Less than kLittle bytes take under a second and show none.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_PROGRESS_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_PROGRESS_H

#include <cstdint>
#include <string>
#include <vector>

constexpr std::uint64_t kLittle = 16 << 20;

// A progress bar, erased at the end.
class Progress {
 public:
  // `total` is 0 if unknown.
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

// A temporary line for work in one step: "reading upscli.cfg, 200 MiB".
class Busy {
 public:
  // The files need not exist.
  Busy(std::string const& doing, std::vector<std::string> const& files);
  ~Busy();
  Busy(Busy const&) = delete;
  Busy& operator=(Busy const&) = delete;

 private:
  bool shown_ = false;
};

#endif
