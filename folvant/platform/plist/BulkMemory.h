#pragma once

#include <cstddef>
#include <new>

namespace folvant::plist {

// Memory for large, short-lived or bulk-filled blocks (a register of a million entries, the
// tables and output of a property-list writer). A fresh process pays for every 4 KiB page it
// touches the first time; blocks of a few megabytes and more are therefore mapped on their
// own, in huge pages where the system allows it, and, when `populate` is set, made present in
// one call instead of one fault per page. Smaller blocks come from operator new.
void* AllocateBulk(std::size_t bytes, bool populate);
// Frees a block of AllocateBulk; `bytes` must be the size it was allocated with.
void FreeBulk(void* block, std::size_t bytes) noexcept;
// Gives the system back the pages of a block of AllocateBulk (of `bytes`) that lie past its
// first `used` bytes, which will not be touched again. Does nothing for small blocks.
void DiscardUnused(void* block, std::size_t bytes, std::size_t used) noexcept;
// Asks for huge pages and makes present the whole pages inside [begin, begin + bytes) of
// memory allocated elsewhere that is about to be filled (a large std::string). Does nothing
// for small ranges; a hint only, never fails.
void PrepareForFill(void* begin, std::size_t bytes) noexcept;

// A standard allocator over AllocateBulk, for internal tables whose size is known when they
// are allocated. `Populate`: whether an allocation is filled right away (a vector that is
// resized) rather than reserved and filled over time.
template <typename T, bool Populate = true>
struct BulkAllocator {
  using value_type = T;
  template <typename U>
  struct rebind {
    using other = BulkAllocator<U, Populate>;
  };
  BulkAllocator() = default;
  template <typename U>
  BulkAllocator(const BulkAllocator<U, Populate>&) noexcept {}  // NOLINT: allocator rebinding
  T* allocate(std::size_t n) {
    if (n > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(AllocateBulk(n * sizeof(T), Populate));
  }
  void deallocate(T* p, std::size_t n) noexcept { FreeBulk(p, n * sizeof(T)); }
  template <typename U>
  bool operator==(const BulkAllocator<U, Populate>&) const noexcept {
    return true;
  }
};

}  // namespace folvant::plist
