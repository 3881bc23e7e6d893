// The barrier around the exported plain functions. Callers are C programs too, and an exception that reached their
// frames would end them: whatever is thrown inside (in practice only std::bad_alloc) becomes the function's failing
// result. A cancelled thread unwinds as if by an exception, and stopping that ends the program: so the cancellation
// waits until the function is through.
#ifndef ZELVANE_CORE_BARRIER_INTERNAL_H
#define ZELVANE_CORE_BARRIER_INTERNAL_H

#include <pthread.h>

#include <utility>

namespace zelvane::internal {

// Defers the cancellation of this thread.
class Uncancelled {
 public:
  Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
  Uncancelled(Uncancelled const&) = delete;
  Uncancelled& operator=(Uncancelled const&) = delete;
  ~Uncancelled() { pthread_setcancelstate(before_, nullptr); }

 private:
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
