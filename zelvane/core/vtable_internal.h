// Tests whether an object is of a class that the library knows, without run-time type information: callers can compile
// their subclasses without it.
#ifndef ZELVANE_CORE_VTABLE_INTERNAL_H
#define ZELVANE_CORE_VTABLE_INTERNAL_H

#include <cstring>
#include <type_traits>

namespace zelvane::internal {

// Returns the current virtual table. In a constructor it is that of the constructor's own class. An object whose table
// is later a different one is of a subclass, which may have replaced any virtual hook.
template <class T>
void const* TableOf(T const& object) {
  static_assert(std::is_polymorphic_v<T>);
  void const* table = nullptr;
  std::memcpy(&table, static_cast<void const*>(&object), sizeof table);  // its first word in the Itanium C++ ABI
  return table;
}

}  // namespace zelvane::internal

#endif
