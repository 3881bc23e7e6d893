// Memory for the nodes of one object's lists and maps. A file with a million keys needs three million nodes, which are
// freed together with the object.
#ifndef ZELVANE_CONFIG_NODEPOOL_INTERNAL_H
#define ZELVANE_CONFIG_NODEPOOL_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace zelvane::internal {

// Allocates parts of a few sizes from large blocks and reuses freed parts of the same size. The blocks are freed with
// the pool.
class NodePool {
 public:
  NodePool() = default;
  NodePool(NodePool const&) = delete;
  NodePool& operator=(NodePool const&) = delete;

  void* Take(std::size_t size) {
    std::size_t const kind = Kind(size);
    if (free_[kind] == nullptr) return Carve((kind + 1) * kUnit);
    Free* const piece = free_[kind];
    free_[kind] = piece->next;
    return piece;
  }

  void Give(void* piece, std::size_t size) {
    std::size_t const kind = Kind(size);
    free_[kind] = ::new (piece) Free{free_[kind]};
  }

  // Whether the pool serves this size.
  static constexpr bool Serves(std::size_t size) { return size <= kKinds * kUnit; }

 private:
  struct Free {
    Free* next;
  };
  static constexpr std::size_t kUnit = alignof(std::max_align_t);
  static constexpr std::size_t kKinds = 16;
  static constexpr std::size_t kFirstBlock = 2048;
  static constexpr std::size_t kLargestBlock = 64 * 1024;  // larger blocks the C library may map and unmap each time

  static constexpr std::size_t Kind(std::size_t size) { return (size + kUnit - 1) / kUnit - 1; }

  void* Carve(std::size_t size) {
    if (static_cast<std::size_t>(end_ - next_) < size) {
      blocks_.push_back(std::unique_ptr<std::byte[]>(new std::byte[blockSize_]));
      next_ = blocks_.back().get();
      end_ = next_ + blockSize_;
      blockSize_ = std::min(2 * blockSize_, kLargestBlock);
    }
    void* const piece = next_;
    next_ += size;
    return piece;
  }

  Free* free_[kKinds] = {};
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  std::size_t blockSize_ = kFirstBlock;
};

// For lists and maps, which allocate one node at a time.
template <class T>
class PoolAllocator {
 public:
  using value_type = T;

  explicit PoolAllocator(NodePool& pool) : pool_(&pool) {}
  template <class U>
  // NOLINTNEXTLINE(google-explicit-constructor): containers rebind it
  PoolAllocator(PoolAllocator<U> const& other) : pool_(other.pool_) {}

  T* allocate(std::size_t) {
    static_assert(alignof(T) <= alignof(std::max_align_t) && NodePool::Serves(sizeof(T)));
    return static_cast<T*>(pool_->Take(sizeof(T)));
  }
  void deallocate(T* node, std::size_t) { pool_->Give(node, sizeof(T)); }

  friend bool operator==(PoolAllocator const& a, PoolAllocator const& b) { return a.pool_ == b.pool_; }
  friend bool operator!=(PoolAllocator const& a, PoolAllocator const& b) { return !(a == b); }

 private:
  template <class U>
  friend class PoolAllocator;
  NodePool* pool_;
};

}  // namespace zelvane::internal

#endif
