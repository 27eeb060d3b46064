#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
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

// A text shared by every copy of a value and copied only when one of them changes it: the
// payee of a hundred thousand entries, stored once in a binary file, is held once in memory.
class SharedText {
 public:
  explicit SharedText(std::string text) : node_(new Node{{1}, std::move(text)}) {}
  SharedText(const SharedText& other) noexcept : node_(other.node_) {
    node_->refs.fetch_add(1, std::memory_order_relaxed);
  }
  SharedText(SharedText&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  SharedText& operator=(SharedText other) noexcept {
    std::swap(node_, other.node_);
    return *this;
  }
  ~SharedText() {
    if (node_ != nullptr && node_->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete node_;
  }
  const std::string& get() const { return node_->text; }
  // The text to change: copied first when another value shares it.
  std::string& mutate() {
    if (node_->refs.load(std::memory_order_acquire) != 1) *this = SharedText(node_->text);
    return node_->text;
  }

 private:
  struct Node {
    std::atomic<std::size_t> refs;
    std::string text;
  };
  Node* node_;
};

// The head of a block of memory that holds the entries of many dictionaries (see
// DictionaryArena); it is freed when the last of them is gone.
struct Chunk {
  std::atomic<std::size_t> users;
  std::size_t bytes;
};
}  // namespace detail

// A dictionary key: up to 15 bytes held inside (nearly every key of an account file), longer
// ones on the heap. Sixteen bytes, half of a std::string, which makes a dictionary entry 32.
class Key {
 public:
  Key() noexcept { std::memset(bytes_, 0, sizeof bytes_); }
  Key(std::string_view text);  // NOLINT: implicit by design, as std::string is
  Key(const char* text) : Key(std::string_view(text)) {}
  Key(const std::string& text) : Key(std::string_view(text)) {}
  Key(const Key& other) : Key(other.view()) {}
  Key(Key&& other) noexcept {
    std::memcpy(bytes_, other.bytes_, sizeof bytes_);
    std::memset(other.bytes_, 0, sizeof other.bytes_);
  }
  Key& operator=(const Key& other) {
    if (this != &other) *this = Key(other);
    return *this;
  }
  Key& operator=(Key&& other) noexcept {
    if (this != &other) {
      Release();
      std::memcpy(bytes_, other.bytes_, sizeof bytes_);
      std::memset(other.bytes_, 0, sizeof other.bytes_);
    }
    return *this;
  }
  ~Key() { Release(); }

  std::string_view view() const {
    const auto tag = static_cast<unsigned char>(bytes_[kTag]);
    if (tag != kLarge) return {bytes_, tag};
    const char* text = nullptr;
    std::uint32_t size = 0;
    std::memcpy(&text, bytes_, sizeof text);
    std::memcpy(&size, bytes_ + sizeof text, sizeof size);
    return {text, size};
  }
  operator std::string_view() const { return view(); }  // NOLINT: implicit by design
  std::string str() const { return std::string(view()); }
  std::size_t size() const { return view().size(); }
  bool empty() const { return bytes_[kTag] == 0; }

  friend bool operator==(const Key& a, const Key& b) {
    if (a.inside() && b.inside()) return std::memcmp(a.bytes_, b.bytes_, sizeof a.bytes_) == 0;
    return a.view() == b.view();
  }
  friend bool operator==(const Key& a, std::string_view b) { return a.view() == b; }
  friend bool operator==(const Key& a, const char* b) { return a.view() == b; }
  friend auto operator<=>(const Key& a, const Key& b) { return a.view() <=> b.view(); }
  friend std::ostream& operator<<(std::ostream& out, const Key& key);

 private:
  static constexpr std::size_t kTag = 15;
  static constexpr unsigned char kLarge = 0xFF;
  static constexpr std::size_t kInside = 15;
  bool inside() const { return static_cast<unsigned char>(bytes_[kTag]) != kLarge; }
  void Release() noexcept {
    if (static_cast<unsigned char>(bytes_[kTag]) != kLarge) return;
    char* text = nullptr;
    std::memcpy(&text, bytes_, sizeof text);
    delete[] text;
  }

  // Inside: the text, then its length in the last byte. On the heap: a pointer to the text,
  // its 32-bit length, and kLarge in the last byte.
  alignas(8) char bytes_[16];
};

// A property-list dictionary: keys in insertion order in one flat block (account dictionaries
// hold a few dozen keys, where a linear search beats hashing). Writers sort the keys. The
// handle is one pointer; an empty dictionary allocates nothing.
class Dictionary {
 public:
  using Entry = std::pair<Key, Value>;
  using iterator = Entry*;
  using const_iterator = const Entry*;

  Dictionary() noexcept = default;
  Dictionary(std::initializer_list<Entry> entries);
  Dictionary(const Dictionary& other);
  Dictionary(Dictionary&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  Dictionary& operator=(const Dictionary& other);
  Dictionary& operator=(Dictionary&& other) noexcept;
  ~Dictionary();

  // The value for a key, or nullptr when the key is missing.
  const Value* find(std::string_view key) const;
  Value* find(std::string_view key);
  bool contains(std::string_view key) const { return find(key) != nullptr; }

  // Replaces the value of an existing key in place, or appends the key.
  void set(std::string_view key, Value value);
  // Appends without looking for the key first; for readers that check duplicates themselves
  // and builders that know the key is new.
  void append(Key key, Value value);
  // Removes a key; false when it was not there.
  bool erase(std::string_view key);
  // Merges repeated keys (left by append) as file readers do: the first position, the last
  // value. Returns whether any key repeated.
  bool collapseDuplicateKeys();

  std::size_t size() const { return block_ != nullptr ? block_->size : 0; }
  bool empty() const { return size() == 0; }
  void reserve(std::size_t n) {
    if (n > capacity()) Reallocate(n);
  }
  void clear();
  const_iterator begin() const { return data(); }
  const_iterator end() const;
  iterator begin() { return data(); }
  iterator end();
  std::span<const Entry> entries() const;

  // The entries sorted by key (byte order), as writers emit them.
  std::vector<const Entry*> sortedEntries() const;

  // Unordered comparison: the same keys with equal values.
  bool operator==(const Dictionary& other) const;

 private:
  friend class DictionaryArena;
  // `chunk`: the shared block the dictionary lives in, or null for memory of its own.
  struct Block {
    std::uint32_t size;
    std::uint32_t capacity;
    detail::Chunk* chunk;
  };

  explicit Dictionary(Block* block) noexcept : block_(block) {}
  std::size_t capacity() const { return block_ != nullptr ? block_->capacity : 0; }
  // The entries follow the head.
  Entry* data() const { return block_ != nullptr ? reinterpret_cast<Entry*>(block_ + 1) : nullptr; }
  void Reallocate(std::size_t capacity);
  static void Free(Block* block) noexcept;

  Block* block_ = nullptr;
};

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
  Value(const char* text) : v_(detail::SharedText(std::string(text))) {}
  Value(std::string_view text) : v_(detail::SharedText(std::string(text))) {}
  Value(std::string text) : v_(detail::SharedText(std::move(text))) {}
  Value(Data data) : v_(detail::Box<Data>(std::move(data))) {}
  Value(Date date) : v_(date) {}
  Value(Array array);
  Value(Dictionary dictionary) : v_(std::move(dictionary)) {}

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

  std::variant<std::monostate, std::int64_t, std::uint64_t, double, bool, Date, detail::SharedText,
               detail::Box<Data>, detail::Box<Array>, Dictionary>
      v_;
};

inline Dictionary::const_iterator Dictionary::end() const { return data() + size(); }
inline Dictionary::iterator Dictionary::end() { return data() + size(); }
inline std::span<const Dictionary::Entry> Dictionary::entries() const { return {begin(), end()}; }

// Room for the dictionaries of one large read. Their entries are laid out one after another
// in blocks of many megabytes taken from the system at once (see BulkMemory.h), instead of
// one allocation each; a block is freed when the last dictionary in it is gone. A dictionary
// that outgrows its room moves to memory of its own.
class DictionaryArena {
 public:
  // `chunk_bytes`: the size of each block; dictionaries larger than a quarter of it get
  // memory of their own.
  explicit DictionaryArena(std::size_t chunk_bytes) : chunk_bytes_(chunk_bytes) {}
  DictionaryArena(const DictionaryArena&) = delete;
  DictionaryArena& operator=(const DictionaryArena&) = delete;
  ~DictionaryArena() { Finish(); }

  // An empty dictionary with room for `capacity` entries.
  Dictionary Make(std::size_t capacity);

 private:
  // Gives back the unused end of the current block and the arena's hold on it.
  void Finish();

  std::size_t chunk_bytes_;
  detail::Chunk* chunk_ = nullptr;
  std::size_t used_ = 0;
};

}  // namespace folvant::plist
