// The exception barrier of the exported functions. Callers are C programs too, and an exception that reached their
// frames would end them: whatever is thrown inside (in practice only std::bad_alloc) becomes the function's failing
// result.
#ifndef ZELVANE_CORE_BARRIER_INTERNAL_H
#define ZELVANE_CORE_BARRIER_INTERNAL_H

#include <utility>

namespace zelvane::internal {

// What `body()` returns, or `failed` if it throws.
template <class R, class Body>
R Guard(R failed, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return failed;
  }
}

}  // namespace zelvane::internal

#endif
