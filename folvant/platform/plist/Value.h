#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace folvant::plist {

class Value;
class Dictionary;
using Array = std::vector<Value>;
using Data = std::vector<std::uint8_t>;

// A property-list date: seconds since 2001-01-01 00:00:00 UTC, as property lists store it.
struct Date {
  double secondsSinceReferenceDate = 0.0;
  bool operator==(const Date&) const = default;
};

namespace detail {
// A heap-held value with deep copy, so that Value stays small (16 bytes) whatever it holds.
template <typename T>
class Box {
 public:
  Box() : p_(std::make_unique<T>()) {}
  explicit Box(T value) : p_(std::make_unique<T>(std::move(value))) {}
  Box(const Box& other) : p_(std::make_unique<T>(*other.p_)) {}
  Box(Box&&) noexcept = default;
  Box& operator=(const Box& other) {
    if (this != &other) p_ = std::make_unique<T>(*other.p_);
    return *this;
  }
  Box& operator=(Box&&) noexcept = default;
  T& get() { return *p_; }
  const T& get() const { return *p_; }

 private:
  std::unique_ptr<T> p_;
};
}  // namespace detail

// One property-list value: none, integer, real, boolean, string (UTF-8), data, date, array or
// dictionary. Three kinds of accessor:
//   isX()     tests the kind;
//   asX()     typed access: a pointer (or optional) that is empty for any other kind;
//   xValue()  converts as Foundation's NSNumber and NSString do, for loaders that accept
//             "anything that reads as a number".
class Value {
 public:
  enum class Kind : std::uint8_t {
    kNone,
    kInteger,
    kReal,
    kBoolean,
    kString,
    kData,
    kDate,
    kArray,
    kDictionary
  };

  Value() = default;
  Value(int value) : v_(static_cast<std::int64_t>(value)) {}  // NOLINT: implicit by design
  Value(long value) : v_(static_cast<std::int64_t>(value)) {}
  Value(long long value) : v_(static_cast<std::int64_t>(value)) {}
  Value(unsigned value) : v_(static_cast<std::int64_t>(value)) {}
  Value(unsigned long value) { SetUnsigned(value); }
  Value(unsigned long long value) { SetUnsigned(value); }
  Value(double value) : v_(value) {}
  Value(bool value) : v_(value) {}
  Value(const char* text) : v_(detail::Box<std::string>(std::string(text))) {}
  Value(std::string_view text) : v_(detail::Box<std::string>(std::string(text))) {}
  Value(std::string text) : v_(detail::Box<std::string>(std::move(text))) {}
  Value(Data data) : v_(detail::Box<Data>(std::move(data))) {}
  Value(Date date) : v_(date) {}
  Value(Array array);
  Value(Dictionary dictionary);

  Kind kind() const;
  bool isNone() const { return kind() == Kind::kNone; }
  bool isInteger() const { return kind() == Kind::kInteger; }
  bool isReal() const { return kind() == Kind::kReal; }
  bool isBoolean() const { return kind() == Kind::kBoolean; }
  bool isString() const { return kind() == Kind::kString; }
  bool isData() const { return kind() == Kind::kData; }
  bool isDate() const { return kind() == Kind::kDate; }
  bool isArray() const { return kind() == Kind::kArray; }
  bool isDictionary() const { return kind() == Kind::kDictionary; }
  // Integer, real or boolean: what Foundation holds as an NSNumber.
  bool isNumber() const;
  // An integer above INT64_MAX (binary property lists can hold unsigned 64-bit integers).
  bool isUnsignedInteger() const { return std::holds_alternative<std::uint64_t>(v_); }

  std::optional<std::int64_t> asInteger() const;  // empty for any other kind or above INT64_MAX
  std::optional<std::uint64_t> asUnsignedInteger() const;  // any non-negative integer
  std::optional<double> asReal() const;
  std::optional<bool> asBoolean() const;
  std::optional<Date> asDate() const;
  const std::string* asString() const;
  std::string* asString();
  const Data* asData() const;
  Data* asData();
  const Array* asArray() const;
  Array* asArray();
  const Dictionary* asDictionary() const;
  Dictionary* asDictionary();

  // Foundation conversions. Numbers convert as C casts do (reals truncate toward zero,
  // saturating at the target's limits; NaN gives 0); strings parse a leading number after
  // blanks ("  12abc" is 12) and give 0 when there is none; every other kind gives 0 / false.
  std::int32_t intValue() const;
  std::int64_t longLongValue() const;
  double doubleValue() const;
  // Numbers: not zero. Strings: the first character after blanks, an optional sign and
  // leading zeros is Y, y, T, t or a digit 1-9.
  bool boolValue() const;

  // Deep equality; dictionaries compare as unordered maps, and two NaN reals are equal.
  bool operator==(const Value& other) const;

 private:
  void SetUnsigned(std::uint64_t value);

  std::variant<std::monostate, std::int64_t, std::uint64_t, double, bool, Date,
               detail::Box<std::string>, detail::Box<Data>, detail::Box<Array>,
               detail::Box<Dictionary>>
      v_;
};

// A property-list dictionary: keys in insertion order in a flat vector (account dictionaries
// hold a few dozen keys, where a linear search beats hashing). Writers sort the keys.
class Dictionary {
 public:
  using Entry = std::pair<std::string, Value>;

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries);

  // The value for a key, or nullptr when the key is missing.
  const Value* find(std::string_view key) const;
  Value* find(std::string_view key);
  bool contains(std::string_view key) const { return find(key) != nullptr; }

  // Replaces the value of an existing key in place, or appends the key.
  void set(std::string_view key, Value value);
  // Appends without looking for the key first; for readers that check duplicates themselves
  // and builders that know the key is new.
  void append(std::string key, Value value) { entries_.emplace_back(std::move(key), std::move(value)); }
  // Removes a key; false when it was not there.
  bool erase(std::string_view key);
  // Merges repeated keys (left by append) as file readers do: the first position, the last
  // value. Returns whether any key repeated.
  bool collapseDuplicateKeys();

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  void reserve(std::size_t n) { entries_.reserve(n); }
  void clear() { entries_.clear(); }
  std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
  std::vector<Entry>::const_iterator end() const { return entries_.end(); }
  std::vector<Entry>::iterator begin() { return entries_.begin(); }
  std::vector<Entry>::iterator end() { return entries_.end(); }
  const std::vector<Entry>& entries() const { return entries_; }

  // The entries sorted by key (byte order), as writers emit them.
  std::vector<const Entry*> sortedEntries() const;

  // Unordered comparison: the same keys with equal values.
  bool operator==(const Dictionary& other) const;

 private:
  std::vector<Entry> entries_;
};

}  // namespace folvant::plist
