#pragma once

#include <cstdint>

// The few compiler-specific helpers the library uses, in one place, so that a port to another
// compiler changes only this file. GCC and Clang provide every one of them as a builtin.
namespace folvant::platform {

// Starts loading the cache line that holds `address` for reading; never faults, even for an
// address that is not mapped.
inline void Prefetch(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
  __builtin_prefetch(address);
#else
  (void)address;
#endif
}

// The bytes of a value in the opposite order (std::byteswap arrives with C++23).
constexpr std::uint32_t ByteSwap(std::uint32_t value) {
#if defined(__GNUC__) || defined(__clang__)
  return __builtin_bswap32(value);
#else
  return (value >> 24) | ((value >> 8) & 0xFF00u) | ((value << 8) & 0xFF0000u) | (value << 24);
#endif
}

constexpr std::uint64_t ByteSwap(std::uint64_t value) {
#if defined(__GNUC__) || defined(__clang__)
  return __builtin_bswap64(value);
#else
  return (std::uint64_t{ByteSwap(static_cast<std::uint32_t>(value))} << 32) |
         ByteSwap(static_cast<std::uint32_t>(value >> 32));
#endif
}

}  // namespace folvant::platform
