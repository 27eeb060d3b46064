#include "folvant/platform/plist/BulkMemory.h"

#include <sys/mman.h>

#include <cstdint>

namespace folvant::plist {
namespace {

#ifndef MADV_POPULATE_WRITE
constexpr int MADV_POPULATE_WRITE = 23;  // Linux 5.14; older kernels refuse it harmlessly
#endif

constexpr std::size_t kPage = 4096;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Below this, a mapping of its own costs more than it saves.
constexpr std::size_t kMappedFrom = std::size_t{4} << 20;

std::size_t RoundUp(std::size_t n, std::size_t to) { return (n + to - 1) / to * to; }

void Advise(void* begin, std::size_t bytes, bool populate) {
  madvise(begin, bytes, MADV_HUGEPAGE);
  if (populate) madvise(begin, bytes, MADV_POPULATE_WRITE);
}

}  // namespace

void* AllocateBulk(std::size_t bytes, bool populate) {
  if (bytes < kMappedFrom) return ::operator new(bytes);
  const std::size_t size = RoundUp(bytes, kHugePage);
  // Over-map by one huge page so that the block can start on a huge-page boundary.
  void* mapped =
      mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  const auto start = reinterpret_cast<std::uintptr_t>(mapped);
  const std::uintptr_t aligned = RoundUp(start, kHugePage);
  if (aligned > start) munmap(mapped, aligned - start);
  const std::uintptr_t tail = aligned + size;
  const std::uintptr_t end = start + size + kHugePage;
  if (end > tail) munmap(reinterpret_cast<void*>(tail), end - tail);
  void* block = reinterpret_cast<void*>(aligned);
  Advise(block, size, populate);
  return block;
}

void FreeBulk(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) return;
  if (bytes < kMappedFrom) {
    ::operator delete(block);
    return;
  }
  munmap(block, RoundUp(bytes, kHugePage));
}

void DiscardUnused(void* block, std::size_t bytes, std::size_t used) noexcept {
  if (bytes < kMappedFrom) return;
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t start = RoundUp(begin + used, kPage);
  const std::uintptr_t end = begin + RoundUp(bytes, kHugePage);
  if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_DONTNEED);
}

void PrepareForFill(void* begin, std::size_t bytes) noexcept {
  if (bytes < kMappedFrom) return;
  const auto start = RoundUp(reinterpret_cast<std::uintptr_t>(begin), kHugePage);
  const auto end = (reinterpret_cast<std::uintptr_t>(begin) + bytes) / kHugePage * kHugePage;
  if (end > start) Advise(reinterpret_cast<void*>(start), end - start, true);
}

}  // namespace folvant::plist
