// Whether an object is of a class that the library knows, without run-time type information: a caller may compile its
// subclasses without it.
#ifndef ZELVANE_CORE_VTABLE_INTERNAL_H
#define ZELVANE_CORE_VTABLE_INTERNAL_H

#include <cstring>
#include <type_traits>

namespace zelvane::internal {

// The virtual table that is at work now. In a constructor it is that of the constructor's own class. An object whose
// table is another one later is of a subclass, which may have replaced any virtual hook.
template <class T>
void const* TableOf(T const& object) {
  static_assert(std::is_polymorphic_v<T>);
  void const* table = nullptr;
  std::memcpy(&table, static_cast<void const*>(&object), sizeof table);  // its first word in the Itanium C++ ABI
  return table;
}

}  // namespace zelvane::internal

#endif
