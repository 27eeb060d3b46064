#include "folvant/platform/plist/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <unordered_map>

#include "folvant/platform/plist/BulkMemory.h"

namespace folvant::plist {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Truncates toward zero and saturates at the limits of T; NaN gives 0.
template <typename T>
T SaturatingCast(double x) {
  if (std::isnan(x)) return 0;
  if (x <= static_cast<double>(std::numeric_limits<T>::min())) return std::numeric_limits<T>::min();
  if (x >= static_cast<double>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
  return static_cast<T>(x);
}

// The leading integer of a text, as NSString's intValue / longLongValue read it: blanks, an
// optional sign, digits; saturating on overflow; 0 when there are no digits.
template <typename T>
T LeadingInteger(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  constexpr T kMax = std::numeric_limits<T>::max();
  constexpr T kMin = std::numeric_limits<T>::min();
  T result = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const T digit = text[i] - '0';
    if (negative) {
      if (result < (kMin + digit) / 10) return kMin;
      result = result * 10 - digit;
    } else {
      if (result > (kMax - digit) / 10) return kMax;
      result = result * 10 + digit;
    }
  }
  return result;
}

// The leading floating-point number of a text, as NSString's doubleValue reads it: blanks,
// an optional sign, then the longest decimal number; 0 when there is none. Never depends on
// the C locale.
double LeadingDouble(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  double value = 0.0;
  const char* first = text.data() + i;
  const auto result = std::from_chars(first, text.data() + text.size(), value);
  if (result.ec == std::errc::invalid_argument) return 0.0;
  return negative ? -value : value;
}

}  // namespace

Value::Value(Array array) : v_(detail::Box<Array>(std::move(array))) {}

void Value::SetUnsigned(std::uint64_t value) {
  if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    v_ = static_cast<std::int64_t>(value);
  } else {
    v_ = value;
  }
}

Value::Kind Value::kind() const {
  switch (v_.index()) {
    case 0:
      return Kind::kNone;
    case 1:
    case 2:
      return Kind::kInteger;
    case 3:
      return Kind::kReal;
    case 4:
      return Kind::kBoolean;
    case 5:
      return Kind::kDate;
    case 6:
      return Kind::kString;
    case 7:
      return Kind::kData;
    case 8:
      return Kind::kArray;
    default:
      return Kind::kDictionary;
  }
}

bool Value::isNumber() const {
  const Kind k = kind();
  return k == Kind::kInteger || k == Kind::kReal || k == Kind::kBoolean;
}

std::optional<std::int64_t> Value::asInteger() const {
  if (const auto* i = std::get_if<std::int64_t>(&v_)) return *i;
  return std::nullopt;
}

std::optional<std::uint64_t> Value::asUnsignedInteger() const {
  if (const auto* i = std::get_if<std::int64_t>(&v_)) {
    if (*i >= 0) return static_cast<std::uint64_t>(*i);
    return std::nullopt;
  }
  if (const auto* u = std::get_if<std::uint64_t>(&v_)) return *u;
  return std::nullopt;
}

std::optional<double> Value::asReal() const {
  if (const auto* d = std::get_if<double>(&v_)) return *d;
  return std::nullopt;
}

std::optional<bool> Value::asBoolean() const {
  if (const auto* b = std::get_if<bool>(&v_)) return *b;
  return std::nullopt;
}

std::optional<Date> Value::asDate() const {
  if (const auto* d = std::get_if<Date>(&v_)) return *d;
  return std::nullopt;
}

const std::string* Value::asString() const {
  const auto* t = std::get_if<detail::SharedText>(&v_);
  return t ? &t->get() : nullptr;
}
std::string* Value::asString() {
  auto* t = std::get_if<detail::SharedText>(&v_);
  return t ? &t->mutate() : nullptr;
}
const Data* Value::asData() const {
  const auto* b = std::get_if<detail::Box<Data>>(&v_);
  return b ? &b->get() : nullptr;
}
Data* Value::asData() {
  auto* b = std::get_if<detail::Box<Data>>(&v_);
  return b ? &b->get() : nullptr;
}
const Array* Value::asArray() const {
  const auto* b = std::get_if<detail::Box<Array>>(&v_);
  return b ? &b->get() : nullptr;
}
Array* Value::asArray() {
  auto* b = std::get_if<detail::Box<Array>>(&v_);
  return b ? &b->get() : nullptr;
}
const Dictionary* Value::asDictionary() const { return std::get_if<Dictionary>(&v_); }
Dictionary* Value::asDictionary() { return std::get_if<Dictionary>(&v_); }

std::int64_t Value::longLongValue() const {
  if (const auto* i = std::get_if<std::int64_t>(&v_)) return *i;
  if (const auto* u = std::get_if<std::uint64_t>(&v_)) return static_cast<std::int64_t>(*u);
  if (const auto* d = std::get_if<double>(&v_)) return SaturatingCast<std::int64_t>(*d);
  if (const auto* b = std::get_if<bool>(&v_)) return *b ? 1 : 0;
  if (const std::string* s = asString()) return LeadingInteger<std::int64_t>(*s);
  return 0;
}

std::int32_t Value::intValue() const {
  if (const auto* d = std::get_if<double>(&v_)) return SaturatingCast<std::int32_t>(*d);
  if (const std::string* s = asString()) return LeadingInteger<std::int32_t>(*s);
  // NSNumber's intValue of a wider integer keeps the low 32 bits, as a C cast does.
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(longLongValue()));
}

double Value::doubleValue() const {
  if (const auto* d = std::get_if<double>(&v_)) return *d;
  if (const auto* i = std::get_if<std::int64_t>(&v_)) return static_cast<double>(*i);
  if (const auto* u = std::get_if<std::uint64_t>(&v_)) return static_cast<double>(*u);
  if (const auto* b = std::get_if<bool>(&v_)) return *b ? 1.0 : 0.0;
  if (const std::string* s = asString()) return LeadingDouble(*s);
  return 0.0;
}

bool Value::boolValue() const {
  if (const auto* b = std::get_if<bool>(&v_)) return *b;
  if (const auto* i = std::get_if<std::int64_t>(&v_)) return *i != 0;
  if (std::holds_alternative<std::uint64_t>(v_)) return true;
  if (const auto* d = std::get_if<double>(&v_)) return *d != 0.0;
  if (const std::string* s = asString()) {
    std::size_t i = 0;
    while (i < s->size() && IsBlank((*s)[i])) ++i;
    if (i < s->size() && ((*s)[i] == '+' || (*s)[i] == '-')) ++i;
    while (i < s->size() && (*s)[i] == '0') ++i;
    if (i == s->size()) return false;
    const char c = (*s)[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
  }
  return false;
}

bool Value::operator==(const Value& other) const {
  if (v_.index() != other.v_.index()) return false;
  switch (v_.index()) {
    case 0:
      return true;
    case 1:
      return std::get<1>(v_) == std::get<1>(other.v_);
    case 2:
      return std::get<2>(v_) == std::get<2>(other.v_);
    case 3: {
      const double a = std::get<3>(v_), b = std::get<3>(other.v_);
      return a == b || (std::isnan(a) && std::isnan(b));
    }
    case 4:
      return std::get<4>(v_) == std::get<4>(other.v_);
    case 5: {
      const double a = std::get<5>(v_).secondsSinceReferenceDate;
      const double b = std::get<5>(other.v_).secondsSinceReferenceDate;
      return a == b || (std::isnan(a) && std::isnan(b));
    }
    case 6:
      return *asString() == *other.asString();
    case 7:
      return *asData() == *other.asData();
    case 8:
      return *asArray() == *other.asArray();
    default:
      return *asDictionary() == *other.asDictionary();
  }
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  reserve(entries.size());
  for (const Entry& entry : entries) set(entry.first, entry.second);
}

Dictionary::Dictionary(const Dictionary& other) {
  if (other.empty()) return;
  Reallocate(other.size());
  for (const Entry& entry : other) new (data() + block_->size++) Entry(entry);
}

Dictionary& Dictionary::operator=(const Dictionary& other) {
  if (this != &other) *this = Dictionary(other);
  return *this;
}

Dictionary& Dictionary::operator=(Dictionary&& other) noexcept {
  if (this != &other) {
    Free(block_);
    block_ = std::exchange(other.block_, nullptr);
  }
  return *this;
}

Dictionary::~Dictionary() { Free(block_); }

void Dictionary::Free(Block* block) noexcept {
  if (block == nullptr) return;
  std::destroy_n(reinterpret_cast<Entry*>(block + 1), block->size);
  detail::Chunk* chunk = block->chunk;
  if (chunk == nullptr) {
    ::operator delete(block);
  } else if (chunk->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    FreeBulk(chunk, chunk->bytes);
  }
}

void Dictionary::Reallocate(std::size_t capacity) {
  if (capacity > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("dictionary");
  auto* block = static_cast<Block*>(::operator new(sizeof(Block) + capacity * sizeof(Entry)));
  block->size = 0;
  block->capacity = static_cast<std::uint32_t>(capacity);
  block->chunk = nullptr;
  Entry* to = reinterpret_cast<Entry*>(block + 1);
  for (Entry& entry : *this) new (to + block->size++) Entry(std::move(entry));
  Free(block_);
  block_ = block;
}

void Dictionary::clear() {
  if (block_ == nullptr) return;
  std::destroy_n(data(), block_->size);
  block_->size = 0;
}

Key::Key(std::string_view text) {
  if (text.size() <= kInside) {
    std::memset(bytes_, 0, sizeof bytes_);  // two keys inside compare as their 16 bytes
    std::memcpy(bytes_, text.data(), text.size());
    bytes_[kTag] = static_cast<char>(text.size());
    return;
  }
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("key");
  char* copy = new char[text.size()];
  std::memcpy(copy, text.data(), text.size());
  const auto size = static_cast<std::uint32_t>(text.size());
  std::memcpy(bytes_, &copy, sizeof copy);
  std::memcpy(bytes_ + sizeof copy, &size, sizeof size);
  bytes_[kTag] = static_cast<char>(kLarge);
}

std::ostream& operator<<(std::ostream& out, const Key& key) { return out << key.view(); }

void Dictionary::append(Key key, Value value) {
  if (size() == capacity()) Reallocate(std::max<std::size_t>(4, 2 * capacity()));
  new (data() + block_->size) Entry(std::move(key), std::move(value));
  ++block_->size;
}

const Value* Dictionary::find(std::string_view key) const {
  for (const Entry& entry : *this) {
    if (entry.first == key) return &entry.second;
  }
  return nullptr;
}

Value* Dictionary::find(std::string_view key) {
  for (Entry& entry : *this) {
    if (entry.first == key) return &entry.second;
  }
  return nullptr;
}

void Dictionary::set(std::string_view key, Value value) {
  if (Value* existing = find(key)) {
    *existing = std::move(value);
  } else {
    append(Key(key), std::move(value));
  }
}

bool Dictionary::erase(std::string_view key) {
  Entry* it =
      std::find_if(begin(), end(), [key](const Entry& entry) { return entry.first == key; });
  if (it == end()) return false;
  std::move(it + 1, end(), it);
  std::destroy_at(end() - 1);
  --block_->size;
  return true;
}

bool Dictionary::collapseDuplicateKeys() {
  const std::size_t n = size();
  bool repeated = false;
  if (n <= 16) {
    // Small dictionaries (nearly all of them) compare pairwise, without allocating.
    const Entry* entries = data();
    for (std::size_t i = 1; i < n && !repeated; ++i) {
      for (std::size_t j = 0; j < i && !repeated; ++j) {
        repeated = entries[i].first == entries[j].first;
      }
    }
  } else {
    std::vector<std::string_view> keys;
    keys.reserve(n);
    for (const Entry& entry : *this) keys.push_back(entry.first);
    std::sort(keys.begin(), keys.end());
    repeated = std::adjacent_find(keys.begin(), keys.end()) != keys.end();
  }
  if (!repeated) return false;
  std::vector<Entry> kept;
  kept.reserve(n);
  // Keys seen so far, as views into `kept` (reserved, so it never reallocates).
  std::unordered_map<std::string_view, std::size_t> position;
  for (Entry& entry : *this) {
    const auto found = position.find(entry.first);
    if (found != position.end()) {
      kept[found->second].second = std::move(entry.second);
    } else {
      kept.push_back(std::move(entry));
      position.emplace(kept.back().first, kept.size() - 1);
    }
  }
  clear();
  for (Entry& entry : kept) append(std::move(entry.first), std::move(entry.second));
  return true;
}

std::vector<const Dictionary::Entry*> Dictionary::sortedEntries() const {
  std::vector<const Entry*> sorted;
  sorted.reserve(size());
  for (const Entry& entry : *this) sorted.push_back(&entry);
  std::sort(sorted.begin(), sorted.end(),
            [](const Entry* a, const Entry* b) { return a->first < b->first; });
  return sorted;
}

bool Dictionary::operator==(const Dictionary& other) const {
  if (size() != other.size()) return false;
  for (const Entry& entry : *this) {
    const Value* theirs = other.find(entry.first);
    if (theirs == nullptr || !(*theirs == entry.second)) return false;
  }
  return true;
}

// Every block in a chunk starts at a multiple of eight bytes.
static_assert(sizeof(detail::Chunk) % alignof(Dictionary::Entry) == 0);

Dictionary DictionaryArena::Make(std::size_t capacity) {
  const std::size_t bytes = sizeof(Dictionary::Block) + capacity * sizeof(Dictionary::Entry);
  if (capacity == 0 || bytes > chunk_bytes_ / 4) {
    Dictionary dictionary;
    dictionary.reserve(capacity);
    return dictionary;
  }
  if (chunk_ == nullptr || used_ + bytes > chunk_->bytes) {
    Finish();
    void* memory = AllocateBulk(chunk_bytes_, true);
    chunk_ = new (memory) detail::Chunk{{1}, chunk_bytes_};
    used_ = sizeof(detail::Chunk);
  }
  auto* block = new (reinterpret_cast<char*>(chunk_) + used_)
      Dictionary::Block{0, static_cast<std::uint32_t>(capacity), chunk_};
  used_ += bytes;
  chunk_->users.fetch_add(1, std::memory_order_relaxed);
  return Dictionary(block);
}

void DictionaryArena::Finish() {
  if (chunk_ == nullptr) return;
  DiscardUnused(chunk_, chunk_->bytes, used_);
  if (chunk_->users.fetch_sub(1, std::memory_order_acq_rel) == 1) FreeBulk(chunk_, chunk_->bytes);
  chunk_ = nullptr;
}

}  // namespace folvant::plist
