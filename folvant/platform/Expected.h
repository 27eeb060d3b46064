#pragma once

#include <utility>
#include <variant>

namespace folvant {

// Wraps an error for constructing an Expected in the error state.
template <typename E>
struct Unexpected {
  E error;
};
template <typename E>
Unexpected(E) -> Unexpected<E>;

// A value or an error, with the member names of C++23's std::expected, so that moving to the
// standard type later is a rename.
template <typename T, typename E>
class Expected {
 public:
  Expected(T value) : v_(std::in_place_index<0>, std::move(value)) {}  // NOLINT: implicit
  template <typename G>
  Expected(Unexpected<G> error)  // NOLINT: implicit
      : v_(std::in_place_index<1>, E(std::move(error.error))) {}

  bool has_value() const { return v_.index() == 0; }
  explicit operator bool() const { return has_value(); }

  T& value() & { return std::get<0>(v_); }
  const T& value() const& { return std::get<0>(v_); }
  T&& value() && { return std::get<0>(std::move(v_)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  const E& error() const { return std::get<1>(v_); }

 private:
  std::variant<T, E> v_;
};

}  // namespace folvant
