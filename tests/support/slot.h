// Where a virtual operation stands in its class's table, which is part of the interface.
#ifndef ZELVANE_TESTS_SUPPORT_SLOT_H
#define ZELVANE_TESTS_SUPPORT_SLOT_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace test {

// A pointer to a virtual member begins with its offset in the table; some processors have 1 more there, which the
// division drops. A destructor takes two slots.
template <class Member>
std::size_t Slot(Member member) {
  std::size_t offset = 0;
  std::memcpy(&offset, &member, sizeof offset);
  return offset / sizeof(void*);
}

// The operations stand side by side, the first of them in that slot.
template <class... Members>
void ExpectSlots(std::size_t first, Members... members) {
  for (std::size_t const slot : {Slot(members)...}) EXPECT_EQ(slot, first++);
}

}  // namespace test

#endif
