// Where a virtual operation stands: callers built against an older library find it by its place.
#ifndef ZELVANE_TESTS_SUPPORT_SLOT_H
#define ZELVANE_TESTS_SUPPORT_SLOT_H

#include <string.h>

namespace test {

// From 0; a destructor takes two. A pointer to a virtual member begins with 1 + its offset in the table, on x86.
template <class Member>
size_t Slot(Member member) {
  size_t first = 0;
  memcpy(&first, &member, sizeof first);
  return (first - 1) / sizeof(void*);
}

}  // namespace test

#endif
