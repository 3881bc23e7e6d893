// The exception barrier around the plain C functions. Their callers can be C programs, and an exception that reached a
// C frame would end them: whatever is thrown inside (in practice only std::bad_alloc) becomes the function's failure
// value. A cancelled thread unwinds as if by an exception, and stopping that would end the program: so cancellation
// waits until the function returns.
#ifndef ZELVANE_CORE_BARRIER_INTERNAL_H
#define ZELVANE_CORE_BARRIER_INTERNAL_H

#include <pthread.h>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <utility>

namespace zelvane::internal {

// Defers the cancellation of this thread. Both calls together take as long as many functions that read one entry of a
// list, so a program without threads skips them.
class Uncancelled {
 public:
  Uncancelled() {
    if (threads_) pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
  }
  Uncancelled(Uncancelled const&) = delete;
  Uncancelled& operator=(Uncancelled const&) = delete;
  ~Uncancelled() {
    if (threads_) pthread_setcancelstate(before_, nullptr);
  }

 private:
#if __has_include(<sys/single_threaded.h>)
  bool const threads_ = __libc_single_threaded == 0;
#else
  static constexpr bool threads_ = true;
#endif
  int before_ = PTHREAD_CANCEL_ENABLE;
};

// Returns the result of `body()`, or `failed` if it throws.
template <class R, class Body>
R Guard(R failed, Body&& body) noexcept {
  Uncancelled const meanwhile;
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return failed;
  }
}

}  // namespace zelvane::internal

#endif
