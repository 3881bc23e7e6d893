// Signals that end the command, held back while an end would leave half a change or copies of settings.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_HELDSIGNALS_H
#define ZELVANE_TOOLS_ZELCTL_FILES_HELDSIGNALS_H

#include <signal.h>

// While this object exists, SIGHUP, SIGINT and SIGTERM wait.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (int const number : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &before_);
  }
  ~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(HeldSignals const&) = delete;
  HeldSignals& operator=(HeldSignals const&) = delete;

 private:
  sigset_t before_ = {};
};

#endif
