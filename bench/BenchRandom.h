#pragma once

#include <cstdint>

namespace bench {

// A small deterministic generator (a 64-bit linear congruence, the high bits taken), so that
// what a benchmark builds from a seed is the same on every run.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint32_t Next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<std::uint32_t>(state_ >> 33);
  }
  std::uint32_t Below(std::uint32_t bound) { return Next() % bound; }
  // Cents between the two amounts in dollars.
  std::int64_t Cents(std::int64_t low, std::int64_t high) {
    return low * 100 +
           static_cast<std::int64_t>(Below(static_cast<std::uint32_t>((high - low) * 100)));
  }

 private:
  std::uint64_t state_;
};

}  // namespace bench
