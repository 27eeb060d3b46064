#include "folvant/platform/plist/BinaryPlist.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "folvant/platform/Port.h"
#include "folvant/platform/plist/BulkMemory.h"

namespace folvant::plist {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

// Object markers: the high nibble is the kind, the low nibble a size or a count (15: the count
// follows as an integer object).
constexpr std::uint8_t kNull = 0x00;
constexpr std::uint8_t kFalse = 0x08;
constexpr std::uint8_t kTrue = 0x09;
constexpr std::uint8_t kFill = 0x0F;
constexpr std::uint8_t kInteger = 0x1;
constexpr std::uint8_t kReal = 0x2;
constexpr std::uint8_t kDateMarker = 0x33;
constexpr std::uint8_t kData = 0x4;
constexpr std::uint8_t kAsciiString = 0x5;
constexpr std::uint8_t kUtf16String = 0x6;
constexpr std::uint8_t kUid = 0x8;
constexpr std::uint8_t kArray = 0xA;
constexpr std::uint8_t kSet = 0xC;
constexpr std::uint8_t kDictionary = 0xD;

std::uint64_t ReadBigEndian(const std::uint8_t* p, std::size_t size) {
  if constexpr (std::endian::native == std::endian::little) {
    // The widths of offsets and references, read in one load each.
    if (size == 4) {
      std::uint32_t word;
      std::memcpy(&word, p, 4);
      return platform::ByteSwap(word);
    }
    if (size == 8) {
      std::uint64_t word;
      std::memcpy(&word, p, 8);
      return platform::ByteSwap(word);
    }
  }
  if (size == 1) return p[0];
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = (value << 8) | p[i];
  return value;
}

std::string Hex(std::uint64_t value) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  do {
    text.insert(text.begin(), kDigits[value & 15]);
    value >>= 4;
  } while (value != 0);
  if (text.size() % 2 != 0) text.insert(text.begin(), '0');
  return "0x" + text;
}

// Decodes a binary property list held in `bytes`, which must outlive the reader.
class Reader {
 public:
  explicit Reader(std::string_view bytes, const StreamedRead* stream = nullptr)
      : data_(reinterpret_cast<const std::uint8_t*>(bytes.data())),
        size_(bytes.size()),
        stream_(stream),
        // A streamed read frees each member before the next: the heap reuses its memory.
        arena_(stream != nullptr || size_ < kArenaFrom
                   ? 0
                   : std::clamp(2 * size_, kArenaFrom * 4, std::size_t{64} << 20)) {}

  Expected<Value, ReadError> Read() {
    Value top;
    if (!ReadTrailer() || !ReadObject(top_object_, size_ - kTrailerSize + 16, 0, &top)) {
      return Unexpected{error_};
    }
    return top;
  }

 private:
  bool Fail(std::string what, std::size_t offset) {
    error_ = {std::move(what), offset};
    return false;
  }

  bool ReadTrailer();
  // The offset of object `ref`, named at `from` (for the error).
  bool Locate(std::uint64_t ref, std::size_t from, std::size_t* offset);
  // The count of the object at `offset` and where its contents start; the contents of
  // `count * unit` bytes must lie before the trailer.
  bool ReadCount(std::size_t offset, std::uint64_t unit, std::size_t* start, std::size_t* count);
  // Reads object `ref`, named at `from`, into `out`.
  bool ReadObject(std::uint64_t ref, std::size_t from, int depth, Value* out);
  // The same without the cache.
  bool Decode(std::uint64_t ref, std::size_t from, int depth, Value* out);
  bool ReadString(std::size_t offset, std::string* out);
  bool ReadContainer(std::uint64_t ref, std::size_t offset, int depth, Value* out);
  // After the top dictionary is read with an empty array under the streamed key: hands the
  // array object `ref` (named at `from`) to the stream's sink, or reads it into `slot`.
  bool StreamMembers(std::uint64_t ref, std::size_t from, Dictionary& top, Value* slot);
  std::uint64_t RefAt(std::size_t position) const {
    return ReadBigEndian(data_ + position, ref_size_);
  }
  // Charges the values a read produces against a budget set by the file size, so that objects
  // shared from many places (or nested shared containers) cannot expand without bound.
  bool Spend(std::uint64_t bytes, std::size_t offset) {
    if (bytes > budget_) {
      return Fail("shared objects expand far beyond the size of the file", offset);
    }
    budget_ -= bytes;
    return true;
  }

  // Files smaller than this keep every dictionary in memory of its own.
  static constexpr std::size_t kArenaFrom = std::size_t{1} << 20;
  // Values read so far, by object, other than arrays and dictionaries: a value referred to
  // from many places is located and decoded once, and every reference to a string object
  // shares one text. Direct-mapped: a value pushed out is read again when next met.
  struct CachedScalar {
    std::uint64_t ref = ~std::uint64_t{0};
    Value value;
  };
  // Dictionary keys read so far, in the same way.
  struct CachedKey {
    std::uint64_t ref = ~std::uint64_t{0};
    Key key;
  };

  const std::uint8_t* data_;
  std::size_t size_;
  const StreamedRead* stream_;
  DictionaryArena arena_;
  std::vector<CachedScalar> scalars_;
  std::vector<CachedKey> keys_;
  std::size_t limit_ = 0;  // where the trailer starts; every object lies before it
  std::size_t offset_size_ = 0;
  std::size_t ref_size_ = 0;
  std::uint64_t object_count_ = 0;
  std::uint64_t top_object_ = 0;
  std::size_t table_offset_ = 0;
  std::vector<bool> open_;  // containers being read: meeting one again is a cycle
  std::uint64_t budget_ = 0;
  ReadError error_;
};

bool Reader::ReadTrailer() {
  if (size_ < kHeaderSize + kTrailerSize + 2 || std::memcmp(data_, "bplist00", 8) != 0) {
    return Fail("not a binary property list: too short or no \"bplist00\" header", 0);
  }
  limit_ = size_ - kTrailerSize;
  const std::uint8_t* trailer = data_ + limit_;
  offset_size_ = trailer[6];
  ref_size_ = trailer[7];
  object_count_ = ReadBigEndian(trailer + 8, 8);
  top_object_ = ReadBigEndian(trailer + 16, 8);
  const std::uint64_t table_offset = ReadBigEndian(trailer + 24, 8);
  const auto valid_size = [](std::size_t size) {
    return size == 1 || size == 2 || size == 4 || size == 8;
  };
  if (!valid_size(offset_size_)) {
    return Fail("offset size " + std::to_string(offset_size_) + " is not 1, 2, 4 or 8", limit_ + 6);
  }
  if (!valid_size(ref_size_)) {
    return Fail("object reference size " + std::to_string(ref_size_) + " is not 1, 2, 4 or 8",
                limit_ + 7);
  }
  if (table_offset < kHeaderSize || table_offset >= limit_) {
    return Fail("offset table at " + std::to_string(table_offset) + " is outside the file",
                limit_ + 24);
  }
  table_offset_ = static_cast<std::size_t>(table_offset);
  if (object_count_ == 0 || object_count_ > (limit_ - table_offset_) / offset_size_) {
    return Fail("object count " + std::to_string(object_count_) + " does not fit the offset table",
                limit_ + 8);
  }
  if (top_object_ >= object_count_) {
    return Fail("top object " + std::to_string(top_object_) + " is not among the " +
                    std::to_string(object_count_) + " objects",
                limit_ + 16);
  }
  open_.assign(static_cast<std::size_t>(object_count_), false);
  const std::size_t cached =
      std::min(std::bit_ceil(static_cast<std::size_t>(object_count_)), std::size_t{1} << 16);
  scalars_.resize(cached);
  keys_.resize(std::min<std::size_t>(cached, 1024));
  budget_ = 64 * static_cast<std::uint64_t>(size_) + (std::uint64_t{4} << 20);
  return true;
}

bool Reader::Locate(std::uint64_t ref, std::size_t from, std::size_t* offset) {
  if (ref >= object_count_) {
    return Fail(
        "reference to object " + std::to_string(ref) + " of " + std::to_string(object_count_),
        from);
  }
  const std::size_t entry = table_offset_ + static_cast<std::size_t>(ref) * offset_size_;
  const std::uint64_t value = ReadBigEndian(data_ + entry, offset_size_);
  if (value < kHeaderSize || value >= limit_) {
    return Fail("object " + std::to_string(ref) + " has offset " + std::to_string(value) +
                    ", outside the objects",
                entry);
  }
  *offset = static_cast<std::size_t>(value);
  return true;
}

bool Reader::ReadCount(std::size_t offset, std::uint64_t unit, std::size_t* start,
                       std::size_t* count) {
  std::uint64_t value = data_[offset] & 0x0F;
  std::size_t position = offset + 1;
  if (value == 0x0F) {
    const std::uint8_t marker = position < limit_ ? data_[position] : 0;
    const std::size_t width = std::size_t{1} << (marker & 0x0F);
    if ((marker >> 4) != kInteger || width > 8 || position + 1 + width > limit_) {
      return Fail("object at " + std::to_string(offset) + " has a malformed count", offset);
    }
    value = ReadBigEndian(data_ + position + 1, width);
    position += 1 + width;
  }
  if (value > (limit_ - position) / unit) {
    return Fail("object at " + std::to_string(offset) + " has a count of " + std::to_string(value) +
                    ", beyond the end of the objects",
                offset);
  }
  *start = position;
  *count = static_cast<std::size_t>(value);
  return true;
}

bool Reader::ReadString(std::size_t offset, std::string* out) {
  const std::uint8_t kind = data_[offset] >> 4;
  std::size_t start = 0;
  std::size_t count = 0;
  if (!ReadCount(offset, kind == kUtf16String ? 2 : 1, &start, &count)) return false;
  if (!Spend(count + 16, offset)) return false;
  const std::uint8_t* p = data_ + start;
  if (kind == kAsciiString) {
    // Some writers store UTF-8 under the ASCII marker; accept it when it is valid UTF-8.
    for (std::size_t i = 0; i < count; ++i) {
      if (p[i] < 0x80) continue;
      const auto length = static_cast<std::int64_t>(count);
      for (auto j = static_cast<std::int64_t>(i); j < length;) {
        UChar32 c;
        U8_NEXT(p, j, length, c);
        if (c < 0)
          return Fail("string object at " + std::to_string(offset) + " is not ASCII", offset);
      }
      break;
    }
    out->assign(reinterpret_cast<const char*>(p), count);
    return true;
  }
  out->clear();
  out->reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t c = static_cast<std::uint32_t>(p[2 * i]) << 8 | p[2 * i + 1];
    if (c >= 0xD800 && c <= 0xDFFF) {
      const std::uint32_t low =
          i + 1 < count ? (static_cast<std::uint32_t>(p[2 * i + 2]) << 8 | p[2 * i + 3]) : 0;
      if (c > 0xDBFF || low < 0xDC00 || low > 0xDFFF) {
        return Fail("string object at " + std::to_string(offset) + " is not valid UTF-16", offset);
      }
      c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
      ++i;
    }
    char buffer[4];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, c);
    out->append(buffer, length);
  }
  return true;
}

bool Reader::ReadObject(std::uint64_t ref, std::size_t from, int depth, Value* out) {
  CachedScalar& cached = scalars_[static_cast<std::size_t>(ref) & (scalars_.size() - 1)];
  if (cached.ref == ref) {
    *out = cached.value;
    return Spend(16, from);
  }
  if (!Decode(ref, from, depth, out)) return false;
  // Data may be large and is copied, not shared.
  if (!out->isArray() && !out->isDictionary() && !out->isData()) {
    cached.ref = ref;
    cached.value = *out;
  }
  return true;
}

bool Reader::Decode(std::uint64_t ref, std::size_t from, int depth, Value* out) {
  std::size_t offset = 0;
  if (!Locate(ref, from, &offset) || !Spend(16, offset)) return false;
  const std::uint8_t marker = data_[offset];
  const std::uint8_t kind = marker >> 4;
  const std::size_t available = limit_ - offset - 1;
  const std::uint8_t* payload = data_ + offset + 1;
  const auto at = [offset] { return " at " + std::to_string(offset); };
  switch (kind) {
    case 0x0:
      if (marker == kFalse || marker == kTrue) {
        *out = Value(marker == kTrue);
        return true;
      }
      if (marker == kNull || marker == kFill) {
        return Fail((marker == kNull ? "null object" : "fill byte") + at() +
                        " is not a property-list value",
                    offset);
      }
      break;
    case kInteger: {
      const std::size_t width = std::size_t{1} << (marker & 0x0F);
      if (width > 16 || width > available) {
        return Fail("integer object" + at() + " has a bad size", offset);
      }
      if (width < 8) {
        *out = Value(static_cast<std::int64_t>(ReadBigEndian(payload, width)));
      } else if (width == 8) {
        *out = Value(static_cast<std::int64_t>(ReadBigEndian(payload, 8)));
      } else {
        // 16-byte integers hold values above INT64_MAX (plistlib writes them so).
        const std::uint64_t high = ReadBigEndian(payload, 8);
        const std::uint64_t low = ReadBigEndian(payload + 8, 8);
        if (high == 0) {
          *out = Value(low);
        } else if (high == ~std::uint64_t{0} && (low >> 63) != 0) {
          *out = Value(static_cast<std::int64_t>(low));
        } else {
          return Fail("integer object" + at() + " does not fit in 64 bits", offset);
        }
      }
      return true;
    }
    case kReal:
      if (marker == 0x22 && available >= 4) {
        *out = Value(static_cast<double>(
            std::bit_cast<float>(static_cast<std::uint32_t>(ReadBigEndian(payload, 4)))));
        return true;
      }
      if (marker == 0x23 && available >= 8) {
        *out = Value(std::bit_cast<double>(ReadBigEndian(payload, 8)));
        return true;
      }
      return Fail("real object" + at() + " has a bad size", offset);
    case 0x3: {
      if (marker != kDateMarker || available < 8) {
        return Fail("date object" + at() + " has a bad size", offset);
      }
      const double seconds = std::bit_cast<double>(ReadBigEndian(payload, 8));
      if (!(std::fabs(seconds) <= kMaxDateSeconds)) {
        return Fail("date object" + at() + " is not a date in range", offset);
      }
      *out = Value(Date{seconds});
      return true;
    }
    case kData: {
      std::size_t start = 0;
      std::size_t count = 0;
      if (!ReadCount(offset, 1, &start, &count) || !Spend(count, offset)) return false;
      *out = Value(Data(data_ + start, data_ + start + count));
      return true;
    }
    case kAsciiString:
    case kUtf16String: {
      std::string text;
      if (!ReadString(offset, &text)) return false;
      *out = Value(std::move(text));
      return true;
    }
    case kArray:
    case kDictionary:
      return ReadContainer(ref, offset, depth, out);
    case kUid:
      return Fail("UID object" + at() + " (keyed archives) is not supported", offset);
    case kSet:
      return Fail("set object" + at() + " is not supported", offset);
    default:
      break;
  }
  return Fail("unknown object marker " + Hex(marker) + at(), offset);
}

bool Reader::ReadContainer(std::uint64_t ref, std::size_t offset, int depth, Value* out) {
  if (depth >= kMaxNestingDepth) {
    return Fail("arrays and dictionaries nest too deeply", offset);
  }
  if (open_[static_cast<std::size_t>(ref)]) {
    return Fail("object " + std::to_string(ref) + " contains itself", offset);
  }
  const bool dictionary = (data_[offset] >> 4) == kDictionary;
  std::size_t start = 0;
  std::size_t count = 0;
  if (!ReadCount(offset, ref_size_ * (dictionary ? 2 : 1), &start, &count)) return false;
  open_[static_cast<std::size_t>(ref)] = true;
  if (dictionary) {
    Dictionary entries = arena_.Make(count);
    const std::size_t values = start + count * ref_size_;
    // The streamed array of the top dictionary: its reference and where it was named, once
    // the key is met. A repeated key keeps its last value, which is the one streamed.
    const bool streaming = stream_ != nullptr && depth == 0;
    std::optional<std::uint64_t> streamed_ref;
    std::size_t streamed_at = 0;
    std::size_t streamed_index = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t key_at = start + i * ref_size_;
      const std::uint64_t key_ref = RefAt(key_at);
      CachedKey& cached = keys_[static_cast<std::size_t>(key_ref) & (keys_.size() - 1)];
      if (cached.ref != key_ref) {
        std::size_t key_offset = 0;
        if (!Locate(key_ref, key_at, &key_offset)) return false;
        const std::uint8_t key_kind = data_[key_offset] >> 4;
        if (key_kind != kAsciiString && key_kind != kUtf16String) {
          return Fail("dictionary key at " + std::to_string(key_offset) + " is not a string",
                      key_offset);
        }
        std::string text;
        if (!ReadString(key_offset, &text)) return false;
        cached.key = Key(text);
        cached.ref = key_ref;
      }
      const Key& key = cached.key;
      const std::size_t value_at = values + i * ref_size_;
      if (streaming && key == stream_->key) {
        // An earlier value of the key is read as usual, for its errors.
        if (streamed_ref && !ReadObject(*streamed_ref, streamed_at, depth + 1,
                                        &(entries.begin() + streamed_index)->second)) {
          return false;
        }
        streamed_ref = RefAt(value_at);
        streamed_at = value_at;
        streamed_index = entries.size();
        entries.append(key, Array());
        continue;
      }
      entries.append(key, Value());
      if (!ReadObject(RefAt(value_at), value_at, depth + 1, &std::prev(entries.end())->second)) {
        return false;
      }
    }
    entries.collapseDuplicateKeys();
    if (streamed_ref &&
        !StreamMembers(*streamed_ref, streamed_at, entries, entries.find(stream_->key))) {
      return false;
    }
    *out = Value(std::move(entries));
  } else {
    Array members(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = start + i * ref_size_;
      if (!ReadObject(RefAt(at), at, depth + 1, &members[i])) return false;
    }
    *out = Value(std::move(members));
  }
  open_[static_cast<std::size_t>(ref)] = false;
  return true;
}

bool Reader::StreamMembers(std::uint64_t ref, std::size_t from, Dictionary& top, Value* slot) {
  std::size_t offset = 0;
  if (!Locate(ref, from, &offset)) return false;
  MemberSink sink;
  std::size_t start = 0;
  std::size_t count = 0;
  const bool array = (data_[offset] >> 4) == kArray && !open_[static_cast<std::size_t>(ref)];
  if (array) {
    if (!ReadCount(offset, ref_size_, &start, &count)) return false;
    sink = stream_->start(top, count);
  }
  if (!sink) return ReadObject(ref, from, 1, slot);
  if (!Spend(16, offset)) return false;
  open_[static_cast<std::size_t>(ref)] = true;
  Value member;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = start + i * ref_size_;
    if (!ReadObject(RefAt(at), at, 2, &member)) return false;
    sink(std::move(member));
    member = Value();
  }
  open_[static_cast<std::size_t>(ref)] = false;
  return true;
}

// Writes a value tree in two passes: the first numbers the objects (sharing equal scalars)
// and records each container's member references; the second emits objects in that order into
// a buffer sized exactly beforehand.
class Writer {
  template <typename T>
  using Table = std::vector<T, BulkAllocator<T>>;

 public:
  explicit Writer(const StreamedWrite* stream = nullptr) : stream_(stream) {}

  std::string Write(const Value& value) {
    std::size_t objects = 0;
    std::size_t references = 0;
    Count(value, &objects, &references);
    if (Streams(value)) {
      // The streamed members are not there to count: reserve for members like the first.
      std::size_t member_objects = 0;
      std::size_t member_references = 0;
      if (stream_->size > 0) Count(stream_->member(0), &member_objects, &member_references);
      objects += stream_->size * member_objects;
      references += stream_->size * (member_references + 1);
    }
    objects_.reserve(objects);
    refs_.reserve(references);
    const std::uint32_t top = Add(value, 0);
    return Emit(top);
  }

 private:
  enum class Kind : std::uint8_t {
    kNull,
    kFalse,
    kTrue,
    kInteger,
    kUnsigned,
    kReal,
    kDate,
    kString,
    kData,
    kArray,
    kDictionary
  };

  // One object of the file. Strings and data point into the value tree (which outlives the
  // writer), or, for streamed members, into the writer's own copies; `bits` holds a scalar's 8
  // bytes, a text's length, or a container's first member reference.
  struct Object {
    const void* data;
    std::uint64_t bits;
    std::uint32_t count;
    Kind kind;
  };

  // An upper bound on the objects (every value and key) and the exact number of member
  // references, so that the tables are allocated once.
  static void Count(const Value& value, std::size_t* objects, std::size_t* references) {
    ++*objects;
    if (const Array* array = value.asArray()) {
      for (const Value& member : *array) {
        if (member.isNone()) continue;
        ++*references;
        Count(member, objects, references);
      }
    } else if (const Dictionary* dictionary = value.asDictionary()) {
      for (const Dictionary::Entry& entry : *dictionary) {
        if (entry.second.isNone()) continue;
        ++*objects;
        *references += 2;
        Count(entry.second, objects, references);
      }
    }
  }

  static std::uint64_t Mix(std::uint64_t h) {
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdULL;
    h ^= h >> 33;
    h *= 0xc4ceb9fe1a85ec53ULL;
    return h ^ (h >> 33);
  }

  static std::uint64_t HashBytes(const char* p, std::size_t n) {
    std::uint64_t h = 0x9e3779b97f4a7c15ULL ^ n;
    while (n >= 8) {
      std::uint64_t word;
      std::memcpy(&word, p, 8);
      h = (h ^ word) * 0x100000001b3ULL;
      h ^= h >> 29;
      p += 8;
      n -= 8;
    }
    std::uint64_t tail = 0;
    std::memcpy(&tail, p, n);
    return Mix(h ^ tail);
  }

  // The number of an object equal to (kind, bits, data), adding it when new. `data` (with
  // `bits` bytes) is set for strings and data. The table's slots hold 32 bits of the hash
  // (which also place the slot) beside the object number + 1, so that a probe rarely needs to
  // look at the object itself.
  static std::uint64_t ScalarHash(Kind kind, std::uint64_t bits) {
    return Mix(bits ^ (static_cast<std::uint64_t>(kind) << 56));
  }

  // The kind and bits a scalar value is interned under; false for texts, data and containers.
  static bool ScalarKey(const Value& value, Kind* kind, std::uint64_t* bits) {
    switch (value.kind()) {
      case Value::Kind::kInteger:
        if (const std::optional<std::int64_t> i = value.asInteger()) {
          *kind = Kind::kInteger;
          *bits = static_cast<std::uint64_t>(*i);
        } else {
          *kind = Kind::kUnsigned;
          *bits = *value.asUnsignedInteger();
        }
        return true;
      case Value::Kind::kReal:
        *kind = Kind::kReal;
        *bits = std::bit_cast<std::uint64_t>(*value.asReal());
        return true;
      case Value::Kind::kDate:
        *kind = Kind::kDate;
        *bits = std::bit_cast<std::uint64_t>(value.asDate()->secondsSinceReferenceDate);
        return true;
      default:
        return false;
    }
  }

  // Starts fetching the table slot where a scalar value would be found: the members of a
  // dictionary are looked up one after another, and their slots lie far apart in a large table.
  void PrefetchScalar(const Value& value) const {
    Kind kind;
    std::uint64_t bits = 0;
    if (slots_.empty() || !ScalarKey(value, &kind, &bits)) return;
    const std::uint64_t hash = ScalarHash(kind, bits);
    if (recent_scalars_[hash % std::size(recent_scalars_)].bits == bits) return;
    platform::Prefetch(&slots_[(hash >> 32) & (slots_.size() - 1)]);
  }

  std::uint32_t Intern(Kind kind, std::uint64_t bits, const void* data) {
    const std::uint64_t hash = data != nullptr ? HashBytes(static_cast<const char*>(data), bits) +
                                                     static_cast<std::uint64_t>(kind)
                                               : ScalarHash(kind, bits);
    if (data != nullptr) return Insert(kind, bits, data, hash);
    // Scalars repeat too (flags, types, the dates of a register in order): a small cache of
    // recent ones spares most of them a probe of the large table.
    RecentScalar& recent = recent_scalars_[hash % std::size(recent_scalars_)];
    if (recent.id != 0 && recent.bits == bits && objects_[recent.id - 1].kind == kind) {
      return recent.id - 1;
    }
    const std::uint32_t id = Insert(kind, bits, data, hash);
    recent = {bits, id + 1};
    return id;
  }

  // The number of the object with this hash equal to (kind, bits, data), adding it when new.
  std::uint32_t Insert(Kind kind, std::uint64_t bits, const void* data, std::uint64_t hash) {
    const std::uint64_t tag = hash & 0xFFFFFFFF00000000ULL;
    if ((interned_ + 1) * 2 > slots_.size()) Grow();
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = (hash >> 32) & mask;; i = (i + 1) & mask) {
      const std::uint64_t slot = slots_[i];
      if (slot == 0) {
        const auto id = static_cast<std::uint32_t>(objects_.size());
        if (data != nullptr && copying_) data = Keep(data, bits);
        objects_.push_back({data, bits, 0, kind});
        slots_[i] = tag | (id + std::uint64_t{1});
        ++interned_;
        return id;
      }
      if ((slot & 0xFFFFFFFF00000000ULL) == tag) {
        const Object& object = objects_[static_cast<std::uint32_t>(slot) - 1];
        if (object.kind == kind && object.bits == bits &&
            (data == nullptr || std::memcmp(object.data, data, bits) == 0)) {
          return static_cast<std::uint32_t>(slot) - 1;
        }
      }
    }
  }

  // Whether `value` is a top dictionary whose streamed key is to be written from the stream.
  bool Streams(const Value& value) const {
    const Dictionary* dictionary = value.asDictionary();
    return stream_ != nullptr && dictionary != nullptr && dictionary->contains(stream_->key);
  }

  // A copy of `bytes` bytes that lives as long as the writer, for the texts and data of
  // streamed members, which are gone by the time the file is emitted.
  const void* Keep(const void* data, std::size_t bytes) {
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    if (bytes > kChunk / 4) {
      kept_.push_back(std::make_unique<char[]>(bytes));
      std::memcpy(kept_.back().get(), data, bytes);
      return kept_.back().get();
    }
    if (kept_.empty() || kept_free_ < bytes) {
      kept_.push_back(std::make_unique<char[]>(kChunk));
      kept_next_ = kept_.back().get();
      kept_free_ = kChunk;
    }
    char* copy = kept_next_;
    std::memcpy(copy, data, bytes);
    kept_next_ += bytes;
    kept_free_ -= bytes;
    return copy;
  }

  // The array under the streamed key: its members made one at a time and added as they come.
  std::uint32_t AddStreamedArray(std::size_t depth) {
    const auto count = static_cast<std::uint32_t>(stream_->size);
    const std::uint32_t id = NewContainer(Kind::kArray, count, count);
    std::size_t slot = objects_[id].bits;
    std::uint32_t added = 0;
    copying_ = true;
    for (std::size_t i = 0; i < stream_->size; ++i) {
      const Value member = stream_->member(i);
      if (member.isNone()) continue;
      const std::uint32_t child = Add(member, depth + 1);
      refs_[slot++] = child;
      ++added;
    }
    copying_ = false;
    objects_[id].count = added;
    return id;
  }

  void Grow() {
    Table<std::uint64_t> slots(std::max<std::size_t>(1024, slots_.size() * 2), 0);
    const std::size_t mask = slots.size() - 1;
    for (const std::uint64_t slot : slots_) {
      if (slot == 0) continue;
      std::size_t i = (slot >> 32) & mask;
      while (slots[i] != 0) i = (i + 1) & mask;
      slots[i] = slot;
    }
    slots_ = std::move(slots);
  }

  std::uint32_t NewContainer(Kind kind, std::uint32_t count, std::size_t references) {
    const auto id = static_cast<std::uint32_t>(objects_.size());
    objects_.push_back({nullptr, refs_.size(), count, kind});
    refs_.resize(refs_.size() + references);
    return id;
  }

  // Texts repeat (every dictionary of a list has the same keys; payees recur): a small cache
  // of recent texts answers most of them without probing the large table, whose slots and
  // objects lie far apart in memory.
  std::uint32_t AddString(std::string_view text) {
    const std::size_t size = text.size();
    std::uint64_t head = 0;
    std::memcpy(&head, text.data(), std::min<std::size_t>(size, 8));
    RecentText& recent = recent_[Mix(head ^ size) % std::size(recent_)];
    if (recent.data != nullptr && recent.size == size &&
        std::memcmp(recent.data, text.data(), size) == 0) {
      return recent.id;
    }
    const std::uint32_t id = Intern(Kind::kString, size, text.data());
    recent = {static_cast<const char*>(objects_[id].data), size, id};
    return id;
  }

  std::uint32_t Add(const Value& value, std::size_t depth) {
    switch (value.kind()) {
      case Value::Kind::kNone:
        return Intern(Kind::kNull, 0, nullptr);
      case Value::Kind::kBoolean:
        return Intern(*value.asBoolean() ? Kind::kTrue : Kind::kFalse, 0, nullptr);
      case Value::Kind::kInteger:
      case Value::Kind::kReal:
      case Value::Kind::kDate: {
        Kind kind = Kind::kNull;
        std::uint64_t bits = 0;
        ScalarKey(value, &kind, &bits);
        return Intern(kind, bits, nullptr);
      }
      case Value::Kind::kString:
        return AddString(*value.asString());
      case Value::Kind::kData: {
        const Data& data = *value.asData();
        // An empty vector may have no storage; any pointer compares equal over 0 bytes.
        return Intern(Kind::kData, data.size(),
                      data.empty() ? "" : static_cast<const void*>(data.data()));
      }
      case Value::Kind::kArray: {
        const Array& array = *value.asArray();
        const auto count = static_cast<std::uint32_t>(std::count_if(
            array.begin(), array.end(), [](const Value& member) { return !member.isNone(); }));
        const std::uint32_t id = NewContainer(Kind::kArray, count, count);
        std::size_t slot = objects_[id].bits;
        for (const Value& member : array) {
          if (member.isNone()) continue;
          const std::uint32_t child = Add(member, depth + 1);
          refs_[slot++] = child;
        }
        return id;
      }
      case Value::Kind::kDictionary: {
        // Sorted entries, in a buffer kept per depth so that sorting allocates only once.
        if (scratch_.size() <= depth) scratch_.resize(depth + 1);
        std::vector<const Dictionary::Entry*>& entries = scratch_[depth];
        entries.clear();
        for (const Dictionary::Entry& entry : *value.asDictionary()) {
          if (!entry.second.isNone()) entries.push_back(&entry);
        }
        std::sort(entries.begin(), entries.end(),
                  [](const Dictionary::Entry* a, const Dictionary::Entry* b) {
                    return a->first < b->first;
                  });
        const auto count = static_cast<std::uint32_t>(entries.size());
        const std::uint32_t id = NewContainer(Kind::kDictionary, count, 2 * std::size_t{count});
        const std::size_t first = objects_[id].bits;
        for (std::uint32_t i = 0; i < count; ++i) PrefetchScalar(entries[i]->second);
        for (std::uint32_t i = 0; i < count; ++i) refs_[first + i] = AddString(entries[i]->first);
        const bool streams = depth == 0 && Streams(value);
        for (std::uint32_t i = 0; i < count; ++i) {
          // Deeper levels resize `scratch_` but never touch this level's buffer contents.
          const Dictionary::Entry& entry = *scratch_[depth][i];
          const std::uint32_t child = streams && entry.first == stream_->key
                                          ? AddStreamedArray(depth)
                                          : Add(entry.second, depth + 1);
          refs_[first + count + i] = child;
        }
        return id;
      }
    }
    return Intern(Kind::kNull, 0, nullptr);
  }

  static std::size_t BytesFor(std::uint64_t value) {
    if (value <= 0xFF) return 1;
    if (value <= 0xFFFF) return 2;
    if (value <= 0xFFFFFFFF) return 4;
    return 8;
  }

  // The count after a marker: in the marker below 15, else as an integer object.
  static std::size_t CountSize(std::uint64_t count) { return count < 15 ? 0 : 1 + BytesFor(count); }

  // UTF-16 code units of a non-ASCII text (U+FFFD for each byte that is not UTF-8, which only
  // code can put in a value), or 0 for ASCII.
  static std::size_t Utf16Length(const Object& object) {
    const auto* bytes = static_cast<const std::uint8_t*>(object.data);
    const auto length = static_cast<std::int64_t>(object.bits);
    std::int64_t i = 0;
    while (i < length && bytes[i] < 0x80) ++i;
    if (i == length) return 0;
    std::size_t units = static_cast<std::size_t>(i);
    while (i < length) {
      UChar32 c;
      U8_NEXT_OR_FFFD(bytes, i, length, c);
      units += c >= 0x10000 ? 2 : 1;
    }
    return units;
  }

  std::size_t ObjectSize(const Object& object, std::size_t* utf16) const {
    switch (object.kind) {
      case Kind::kNull:
      case Kind::kFalse:
      case Kind::kTrue:
        return 1;
      case Kind::kInteger:
        return 1 + (static_cast<std::int64_t>(object.bits) < 0 ? 8 : BytesFor(object.bits));
      case Kind::kUnsigned:
        return 17;
      case Kind::kReal:
      case Kind::kDate:
        return 9;
      case Kind::kString:
        *utf16 = Utf16Length(object);
        if (*utf16 != 0) return 1 + CountSize(*utf16) + 2 * *utf16;
        [[fallthrough]];
      case Kind::kData:
        return 1 + CountSize(object.bits) + object.bits;
      case Kind::kArray:
        return 1 + CountSize(object.count) + object.count * ref_size_;
      case Kind::kDictionary:
        return 1 + CountSize(object.count) + 2 * std::size_t{object.count} * ref_size_;
    }
    return 0;
  }

  void PutBigEndian(std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i > 0; --i) {
      *out_++ = static_cast<char>(value >> (8 * (i - 1)));
    }
  }

  void PutMarker(std::uint8_t kind, std::uint64_t count) {
    if (count < 15) {
      *out_++ = static_cast<char>(kind << 4 | count);
      return;
    }
    *out_++ = static_cast<char>(kind << 4 | 0x0F);
    PutInteger(count);
  }

  // 1, 2 and 4-byte integers are unsigned; 8 bytes hold everything else non-negative.
  void PutInteger(std::uint64_t value) {
    const std::size_t size = BytesFor(value);
    *out_++ = static_cast<char>(kInteger << 4 | std::countr_zero(size));
    PutBigEndian(value, size);
  }

  void PutBytes(const void* data, std::size_t size) {
    std::memcpy(out_, data, size);
    out_ += size;
  }

  void PutUtf16(const Object& object, std::size_t units) {
    PutMarker(kUtf16String, units);
    const auto* bytes = static_cast<const std::uint8_t*>(object.data);
    const auto length = static_cast<std::int64_t>(object.bits);
    for (std::int64_t i = 0; i < length;) {
      UChar32 c;
      U8_NEXT_OR_FFFD(bytes, i, length, c);
      if (c >= 0x10000) {
        PutBigEndian(0xD7C0 + (static_cast<std::uint32_t>(c) >> 10), 2);
        PutBigEndian(0xDC00 | (static_cast<std::uint32_t>(c) & 0x3FF), 2);
      } else {
        PutBigEndian(static_cast<std::uint32_t>(c), 2);
      }
    }
  }

  void PutObject(const Object& object, std::size_t utf16) {
    switch (object.kind) {
      case Kind::kNull:
        *out_++ = static_cast<char>(kNull);
        return;
      case Kind::kFalse:
        *out_++ = static_cast<char>(kFalse);
        return;
      case Kind::kTrue:
        *out_++ = static_cast<char>(kTrue);
        return;
      case Kind::kInteger:
        // Negative numbers take 8 bytes.
        if (static_cast<std::int64_t>(object.bits) < 0) {
          *out_++ = 0x13;
          PutBigEndian(object.bits, 8);
        } else {
          PutInteger(object.bits);
        }
        return;
      case Kind::kUnsigned:
        *out_++ = 0x14;
        PutBigEndian(0, 8);
        PutBigEndian(object.bits, 8);
        return;
      case Kind::kReal:
        *out_++ = 0x23;
        PutBigEndian(object.bits, 8);
        return;
      case Kind::kDate:
        *out_++ = static_cast<char>(kDateMarker);
        PutBigEndian(object.bits, 8);
        return;
      case Kind::kString:
        if (utf16 != 0) {
          PutUtf16(object, utf16);
          return;
        }
        PutMarker(kAsciiString, object.bits);
        PutBytes(object.data, object.bits);
        return;
      case Kind::kData:
        PutMarker(kData, object.bits);
        PutBytes(object.data, object.bits);
        return;
      case Kind::kArray:
      case Kind::kDictionary: {
        const bool dictionary = object.kind == Kind::kDictionary;
        PutMarker(dictionary ? kDictionary : kArray, object.count);
        const std::size_t references = object.count * std::size_t{dictionary ? 2u : 1u};
        for (std::size_t i = 0; i < references; ++i)
          PutBigEndian(refs_[object.bits + i], ref_size_);
        return;
      }
    }
  }

  std::string Emit(std::uint32_t top) {
    ref_size_ = BytesFor(objects_.size() - 1);
    // Offsets first (object sizes are known without writing), then one buffer for the file.
    std::vector<std::uint64_t, BulkAllocator<std::uint64_t>> offsets(objects_.size());
    std::uint64_t offset = kHeaderSize;
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      std::size_t utf16 = 0;
      offsets[i] = offset;
      offset += ObjectSize(objects_[i], &utf16);
    }
    const std::uint64_t table_offset = offset;
    const std::size_t offset_size = BytesFor(offsets.back());
    const std::size_t total = table_offset + objects_.size() * offset_size + kTrailerSize;
    std::string bytes;
    bytes.reserve(total);
    PrepareForFill(bytes.data(), total);
    bytes.resize(total);
    out_ = bytes.data();
    PutBytes("bplist00", kHeaderSize);
    for (const Object& object : objects_) {
      std::size_t utf16 = 0;
      if (object.kind == Kind::kString) utf16 = Utf16Length(object);
      PutObject(object, utf16);
    }
    for (const std::uint64_t at : offsets) PutBigEndian(at, offset_size);
    out_ += 6;
    *out_++ = static_cast<char>(offset_size);
    *out_++ = static_cast<char>(ref_size_);
    PutBigEndian(objects_.size(), 8);
    PutBigEndian(top, 8);
    PutBigEndian(table_offset, 8);
    return bytes;
  }

  // Objects are reserved for an upper bound and filled as far as needed; the other tables are
  // filled as soon as they are allocated.
  std::vector<Object, BulkAllocator<Object, false>> objects_;
  Table<std::uint64_t> slots_;  // hash table of interned objects; 0 is an empty slot
  std::size_t interned_ = 0;
  Table<std::uint32_t> refs_;
  std::vector<std::vector<const Dictionary::Entry*>> scratch_;
  struct RecentText {
    const char* data = nullptr;  // the interned object's text
    std::size_t size = 0;
    std::uint32_t id = 0;
  };
  RecentText recent_[256];
  struct RecentScalar {
    std::uint64_t bits = 0;
    std::uint32_t id = 0;  // object number + 1; 0 for an empty slot
  };
  RecentScalar recent_scalars_[4096];
  const StreamedWrite* stream_;
  bool copying_ = false;  // adding streamed members: texts and data are copied
  std::vector<std::unique_ptr<char[]>> kept_;
  char* kept_next_ = nullptr;
  std::size_t kept_free_ = 0;
  std::size_t ref_size_ = 1;
  char* out_ = nullptr;
};

}  // namespace

Expected<Value, ReadError> ReadBinary(std::string_view bytes) { return Reader(bytes).Read(); }

Expected<Value, ReadError> ReadBinary(std::string_view bytes, const StreamedRead& stream) {
  return Reader(bytes, &stream).Read();
}

std::string WriteBinary(const Value& value) { return Writer().Write(value); }

std::string WriteBinary(const Value& value, const StreamedWrite& stream) {
  return Writer(&stream).Write(value);
}

}  // namespace folvant::plist
