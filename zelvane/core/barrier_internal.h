// The barrier around the exported plain functions. Callers are C programs too, and an exception that reached their
// frames would end them: whatever is thrown inside (in practice only std::bad_alloc) becomes the function's failing
// result. A cancelled thread unwinds as if by an exception, and stopping that ends the program: so the cancellation
// waits until the function is through.
#ifndef ZELVANE_CORE_BARRIER_INTERNAL_H
#define ZELVANE_CORE_BARRIER_INTERNAL_H

#include <pthread.h>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <utility>

namespace zelvane::internal {

// Defers the cancellation of this thread. Both calls together take as long as many a function that reads one entry of a
// list, so a program without threads goes without them.
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

// What `body()` returns, or `failed` if it throws.
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
