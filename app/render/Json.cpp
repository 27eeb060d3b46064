#include "app/render/Json.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <vector>

#include "app/render/AmountText.h"

namespace folvant::render {
namespace {

// The binary subtype that marks an amount; the bytes are the double's, little-endian.
constexpr std::uint8_t kAmountSubtype = 0x4D;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
// Output is handed to the stream in pieces of about this size.
constexpr std::size_t kFlushSize = 1 << 16;

// The first invalid UTF-8 sequence of the text: its offset and length, the longest start of a
// sequence that could have been valid (so "\xE2\x82 " loses two bytes to one U+FFFD, as
// nlohmann replaces them). Offset npos when the text is valid.
struct Invalid {
  std::size_t at;
  std::size_t size;
};

Invalid FirstInvalid(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
  for (std::int32_t i = 0; i < length;) {
    if (bytes[i] < 0x80) {
      ++i;
      continue;
    }
    const std::int32_t start = i;
    UChar32 c = 0;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) return {static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)};
  }
  return {std::string_view::npos, 0};
}

}  // namespace

Json JsonText(std::string_view text) {
  Invalid invalid = FirstInvalid(text);
  if (invalid.at == std::string_view::npos) return Json(std::string(text));
  std::string cleaned;
  cleaned.reserve(text.size() + 8);
  while (invalid.at != std::string_view::npos) {
    cleaned.append(text.substr(0, invalid.at));
    cleaned.append(kReplacement);
    text.remove_prefix(invalid.at + invalid.size);
    invalid = FirstInvalid(text);
  }
  cleaned.append(text);
  return Json(std::move(cleaned));
}

Json JsonAmount(double amount) {
  if (!std::isfinite(amount)) return Json(nullptr);
  auto bits = std::bit_cast<std::uint64_t>(amount);
  std::vector<std::uint8_t> bytes(sizeof bits);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(bits & 0xFF);
    bits >>= 8;
  }
  return Json::binary(std::move(bytes), kAmountSubtype);
}

std::optional<double> AmountOf(const Json& value) {
  if (!value.is_binary()) return std::nullopt;
  const Json::binary_t& binary = value.get_binary();
  if (!binary.has_subtype() || binary.subtype() != kAmountSubtype ||
      binary.size() != sizeof(std::uint64_t)) {
    return std::nullopt;
  }
  std::uint64_t bits = 0;
  for (std::size_t i = binary.size(); i > 0; --i) bits = bits << 8 | binary[i - 1];
  return std::bit_cast<double>(bits);
}

void WriteJson(std::ostream& out, const Json& value) {
  JsonWriter writer(out);
  writer.Value(value);
}

std::string JsonDump(const Json& value) {
  std::ostringstream out;
  WriteJson(out, value);
  return std::move(out).str();
}

// ---- JsonWriter ----

JsonWriter::JsonWriter(std::ostream& out)
    : stream_(out),
      scalars_(std::make_unique<Serializer>(
          nlohmann::detail::output_adapter<char, std::string>(buffer_), ' ',
          Json::error_handler_t::replace)) {}

JsonWriter::~JsonWriter() {
  buffer_.push_back('\n');
  Flush();
}

void JsonWriter::Flush() {
  stream_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

void JsonWriter::Place() {
  if (open_.empty()) return;
  Level& level = open_.back();
  if (level.keyed) {  // the value of a key: on the key's line
    level.keyed = false;
    return;
  }
  if (level.count++ > 0) buffer_.push_back(',');
  buffer_.push_back('\n');
  buffer_.append(2 * open_.size(), ' ');
}

void JsonWriter::Open(char bracket) {
  Place();
  buffer_.push_back(bracket);
  open_.push_back({});
}

void JsonWriter::Close(char bracket) {
  const bool empty = open_.back().count == 0;
  open_.pop_back();
  if (!empty) {
    buffer_.push_back('\n');
    buffer_.append(2 * open_.size(), ' ');
  }
  buffer_.push_back(bracket);
  if (buffer_.size() >= kFlushSize) Flush();
}

void JsonWriter::Key(std::string_view key) {
  Place();
  Text(key);
  buffer_.append(": ");
  open_.back().keyed = true;
}

void JsonWriter::Text(std::string_view text) {
  // Most texts are plain: printable ASCII without quotes or backslashes needs no escaping.
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
  });
  if (plain) {
    buffer_.push_back('"');
    buffer_.append(text);
    buffer_.push_back('"');
  } else {
    scalars_->dump(JsonText(text), false, false, 0);
  }
}

void JsonWriter::String(std::string_view text) {
  Place();
  Text(text);
}

void JsonWriter::Number(std::int64_t n) {
  Place();
  char text[24];
  buffer_.append(text, std::to_chars(text, text + sizeof text, n).ptr);
}

void JsonWriter::Bool(bool value) {
  Place();
  buffer_.append(value ? "true" : "false");
}

void JsonWriter::Null() {
  Place();
  buffer_.append("null");
}

void JsonWriter::Amount(double amount) {
  Place();
  char text[kPlainAmountSize];
  const std::size_t size = WritePlainAmount(amount, text);
  if (size > 0) {
    buffer_.append(text, size);
  } else {
    // Not finite (null) or too large for cents: nlohmann writes the double as it is.
    scalars_->dump(std::isfinite(amount) ? Json(amount) : Json(nullptr), false, false, 0);
  }
}

void JsonWriter::Value(const Json& value) {
  switch (value.type()) {
    case Json::value_t::object:
      BeginObject();
      for (auto it = value.begin(); it != value.end(); ++it) {
        Key(it.key());
        Value(it.value());
      }
      EndObject();
      return;
    case Json::value_t::array:
      BeginArray();
      for (const Json& element : value) Value(element);
      EndArray();
      return;
    case Json::value_t::binary:
      if (const std::optional<double> amount = AmountOf(value)) {
        Amount(*amount);
        return;
      }
      break;
    default:
      break;
  }
  Place();
  scalars_->dump(value, false, false, 0);
}

}  // namespace folvant::render
