#include "folvant/platform/plist/XmlPlist.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Text.h"

namespace folvant::plist {
namespace {

// Entity references are decoded by us rather than by pugixml, so that a malformed one ("&amp"
// without its semicolon) is an error instead of text, and CDATA stays verbatim. Whitespace-only
// text is kept only where it is the whole content of an element (<string>  </string>).
constexpr unsigned kParseOptions =
    pugi::parse_cdata | pugi::parse_eol | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata;

constexpr std::int64_t kReferenceDateUnixSeconds = 978307200;  // 2001-01-01T00:00:00Z
constexpr std::int64_t kSecondsPerDay = 86400;

bool IsXmlBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsXmlBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsXmlBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool IsBlankText(const char* text) {
  for (; *text != '\0'; ++text) {
    if (!IsXmlBlank(*text)) return false;
  }
  return true;
}

void AppendDigits(std::string& out, std::int64_t value, int width) {
  char buffer[24];
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  for (int pad = width - static_cast<int>(end - buffer); pad > 0; --pad) out.push_back('0');
  out.append(buffer, end);
}

// "2008-02-29T12:00:00Z", the fraction of a second dropped as Apple drops it. Years beyond
// 0000-9999 take a sign and more digits (ISO 8601's expanded years); a date beyond the range
// a file may hold is written at the nearest limit, and NaN as the reference date.
void AppendDate(std::string& out, double seconds) {
  if (std::isnan(seconds)) seconds = 0.0;
  seconds = std::clamp(seconds, -kMaxDateSeconds, kMaxDateSeconds);
  const std::int64_t unix_seconds =
      static_cast<std::int64_t>(std::floor(seconds)) + kReferenceDateUnixSeconds;
  const std::int64_t days = platform::FloorDiv(unix_seconds, kSecondsPerDay);
  const std::int64_t second_of_day = unix_seconds - days * kSecondsPerDay;
  const platform::CivilDate date = platform::CivilFromDay(days);
  if (date.year < 0) {
    out.push_back('-');
    AppendDigits(out, -date.year, 4);
  } else {
    if (date.year > 9999) out.push_back('+');
    AppendDigits(out, date.year, 4);
  }
  out.push_back('-');
  AppendDigits(out, date.month, 2);
  out.push_back('-');
  AppendDigits(out, date.day, 2);
  out.push_back('T');
  AppendDigits(out, second_of_day / 3600, 2);
  out.push_back(':');
  AppendDigits(out, second_of_day / 60 % 60, 2);
  out.push_back(':');
  AppendDigits(out, second_of_day % 60, 2);
  out.push_back('Z');
}

// Reads fixed-width decimal digits at `text[*pos]`.
bool TakeDigits(std::string_view text, std::size_t* pos, std::size_t count, std::int64_t* out) {
  if (text.size() - *pos < count) return false;
  std::int64_t value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char c = text[*pos + i];
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  *pos += count;
  *out = value;
  return true;
}

// The date forms Apple and plistlib write: a year, then optionally month, day, hour, minute
// and second, always ending in 'Z'. Signed years may have more than four digits; libplist
// writes early years with fewer ("1-01-01T00:00:00Z").
std::optional<double> ParseDate(std::string_view text) {
  text = TrimBlanks(text);
  std::size_t pos = 0;
  bool negative = false;
  bool sign = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    sign = true;
    pos = 1;
  }
  std::size_t year_digits = 0;
  while (pos + year_digits < text.size() && text[pos + year_digits] >= '0' &&
         text[pos + year_digits] <= '9') {
    ++year_digits;
  }
  if (year_digits == 0 || year_digits > (sign ? 7 : 4)) return std::nullopt;
  std::int64_t year = 0;
  std::int64_t fields[5] = {1, 1, 0, 0, 0};  // month, day, hour, minute, second
  static constexpr char kSeparators[] = {'-', '-', 'T', ':', ':'};
  if (!TakeDigits(text, &pos, year_digits, &year)) return std::nullopt;
  if (negative) year = -year;
  for (int i = 0; i < 5 && pos < text.size() && text[pos] == kSeparators[i]; ++i) {
    ++pos;
    if (!TakeDigits(text, &pos, 2, &fields[i])) return std::nullopt;
  }
  if (pos + 1 != text.size() || text[pos] != 'Z') return std::nullopt;
  const std::int64_t month = fields[0];
  const std::int64_t day = fields[1];
  if (month < 1 || month > 12 || day < 1 ||
      day > platform::MonthLength(year, static_cast<int>(month))) {
    return std::nullopt;
  }
  if (fields[2] > 23 || fields[3] > 59 || fields[4] > 60) return std::nullopt;
  const std::int64_t unix_seconds = platform::DayFromCivil(year, month, day) * kSecondsPerDay +
                                    fields[2] * 3600 + fields[3] * 60 + fields[4];
  const auto seconds = static_cast<double>(unix_seconds - kReferenceDateUnixSeconds);
  if (std::fabs(seconds) > kMaxDateSeconds) return std::nullopt;
  return seconds;
}

// Decimal or 0x-hexadecimal, with an optional sign, from INT64_MIN to UINT64_MAX.
std::optional<Value> ParseInteger(std::string_view text) {
  text = TrimBlanks(text);
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty() || text[0] == '+' || text[0] == '-') return std::nullopt;
  std::uint64_t magnitude = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (!negative) return Value(magnitude);
  constexpr std::uint64_t kMinMagnitude = std::uint64_t{1} << 63;
  if (magnitude > kMinMagnitude) return std::nullopt;
  return Value(static_cast<std::int64_t>(0 - magnitude));
}

// Shortest decimal forms as std::to_chars reads them, plus the spellings of NaN and the
// infinities that Apple ("+infinity"), plistlib ("inf") and libplist write.
std::optional<double> ParseReal(std::string_view text) {
  text = TrimBlanks(text);
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  if (text.empty() || text[0] == '+' || text[0] == '-') return std::nullopt;
  double value = 0.0;
  if (platform::AsciiEqualIgnoringCase(text, "nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (platform::AsciiEqualIgnoringCase(text, "inf") ||
             platform::AsciiEqualIgnoringCase(text, "infinity")) {
    value = std::numeric_limits<double>::infinity();
  } else {
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  }
  return negative ? -value : value;
}

constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Base64Table {
  std::int8_t value[256];
  constexpr Base64Table() : value() {
    for (int i = 0; i < 256; ++i) value[i] = -1;
    for (int i = 0; i < 64; ++i) value[static_cast<unsigned char>(kBase64Alphabet[i])] = i;
  }
};
constexpr Base64Table kBase64;

// Base64 with blanks anywhere and optional '=' padding at the end. Returns the offset of the
// first character that does not belong, or npos when the text decodes.
std::size_t DecodeBase64(std::string_view text, Data* out) {
  out->reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  int count = 0;
  std::size_t padding_at = std::string_view::npos;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (IsXmlBlank(static_cast<char>(c))) continue;
    if (c == '=') {
      if (padding_at == std::string_view::npos) padding_at = i;
      continue;
    }
    const int digit = kBase64.value[c];
    if (digit < 0 || padding_at != std::string_view::npos) return i;
    group = (group << 6) | static_cast<std::uint32_t>(digit);
    if (++count == 4) {
      out->push_back(static_cast<std::uint8_t>(group >> 16));
      out->push_back(static_cast<std::uint8_t>(group >> 8));
      out->push_back(static_cast<std::uint8_t>(group));
      group = 0;
      count = 0;
    }
  }
  if (count == 1) return padding_at != std::string_view::npos ? padding_at : text.size();
  if (count == 2) {
    out->push_back(static_cast<std::uint8_t>(group >> 4));
  } else if (count == 3) {
    out->push_back(static_cast<std::uint8_t>(group >> 10));
    out->push_back(static_cast<std::uint8_t>(group >> 2));
  }
  return std::string_view::npos;
}

// Appends a code point as UTF-8 (the caller has checked that it is a scalar value).
void AppendUtf8(std::string& out, std::uint32_t c) {
  char buffer[4];
  std::size_t length = 0;
  U8_APPEND_UNSAFE(buffer, length, c);
  out.append(buffer, length);
}

// Turns a parsed XML document into a value, failing with the offset of the first element or
// text that is not a property list. Elements are removed from the document once converted: the
// document's memory, freed page by page in document order, then holds the values that follow,
// so that a large file does not need memory for both at once.
class Reader {
 public:
  Reader(const char* begin, std::size_t size)
      : begin_(begin), size_(size), strings_(size < kSharedFrom ? 1 : 4096) {}

  bool ReadDocument(pugi::xml_document& document, Value* out);
  const ReadError& error() const { return error_; }

 private:
  bool Fail(std::string what, std::size_t offset) {
    error_ = {std::move(what), offset};
    return false;
  }
  std::size_t OffsetOf(const char* p) const {
    return p >= begin_ && p <= begin_ + size_ ? static_cast<std::size_t>(p - begin_) : 0;
  }
  // The offset of an element's '<'.
  std::size_t OffsetOf(pugi::xml_node node) const {
    const std::size_t name = OffsetOf(node.name());
    return name > 0 ? name - 1 : 0;
  }

  bool ReadValue(pugi::xml_node node, int depth, Value* out);
  bool ReadArray(pugi::xml_node node, int depth, Value* out);
  bool ReadDictionary(pugi::xml_node node, int depth, Value* out);
  // The next element child from `node` on (itself included); text between elements must be
  // blank. Sets *next to an empty node at the end.
  bool NextElement(pugi::xml_node node, pugi::xml_node parent, pugi::xml_node* next);
  // The text content of an element: its text and CDATA in order, entity references decoded.
  bool Text(pugi::xml_node node, std::string* out);
  bool AppendDecoded(const char* text, std::string* out);
  bool ExpectNoContent(pugi::xml_node node);

  // A string value equal to one read shortly before shares its text.
  Value SharedString(std::string text);

  // Documents smaller than this keep a text of its own for every string.
  static constexpr std::size_t kSharedFrom = std::size_t{1} << 20;

  const char* begin_;
  std::size_t size_;
  std::vector<Value> strings_;  // direct-mapped by the hash of the text
  ReadError error_;
};

Value Reader::SharedString(std::string text) {
  Value& cached = strings_[std::hash<std::string>{}(text) & (strings_.size() - 1)];
  if (const std::string* seen = std::as_const(cached).asString();
      seen != nullptr && *seen == text) {
    return cached;
  }
  cached = Value(std::move(text));
  return cached;
}

bool Reader::ReadDocument(pugi::xml_document& document, Value* out) {
  pugi::xml_node root;
  if (!NextElement(document.first_child(), document, &root)) return false;
  if (!root) return Fail("the XML document has no root element", size_);
  pugi::xml_node extra;
  if (!NextElement(root.next_sibling(), document, &extra)) return false;
  if (extra) return Fail("the XML document has a second root element", OffsetOf(extra));
  if (std::strcmp(root.name(), "plist") != 0) return ReadValue(root, 0, out);

  pugi::xml_node value;
  if (!NextElement(root.first_child(), root, &value)) return false;
  if (!value) return Fail("<plist> holds no value", OffsetOf(root));
  if (!NextElement(value.next_sibling(), root, &extra)) return false;
  if (extra) return Fail("<plist> holds more than one value", OffsetOf(extra));
  return ReadValue(value, 0, out);
}

bool Reader::NextElement(pugi::xml_node node, pugi::xml_node parent, pugi::xml_node* next) {
  if (node == parent.first_child() && !IsBlankText(parent.value())) {
    return Fail(std::string("text where <") + parent.name() + "> may hold only elements",
                OffsetOf(parent.value()));
  }
  for (; node; node = node.next_sibling()) {
    const pugi::xml_node_type type = node.type();
    if (type == pugi::node_element) break;
    if ((type == pugi::node_pcdata || type == pugi::node_cdata) && !IsBlankText(node.value())) {
      const std::string where = parent.type() == pugi::node_element
                                    ? std::string("<") + parent.name() + ">"
                                    : std::string("the document");
      return Fail("text where " + where + " may hold only elements", OffsetOf(node.value()));
    }
  }
  *next = node;
  return true;
}

bool Reader::AppendDecoded(const char* text, std::string* out) {
  const char* amp = std::strchr(text, '&');
  if (amp == nullptr) {
    out->append(text);
    return true;
  }
  for (;;) {
    out->append(text, amp);
    const char* semicolon = std::strchr(amp, ';');
    const std::size_t length = semicolon == nullptr ? 0 : semicolon - amp - 1;
    if (semicolon == nullptr || length > 10) {
      return Fail("entity reference without a closing ';'", OffsetOf(amp));
    }
    const std::string_view name(amp + 1, length);
    if (name == "amp") {
      out->push_back('&');
    } else if (name == "lt") {
      out->push_back('<');
    } else if (name == "gt") {
      out->push_back('>');
    } else if (name == "quot") {
      out->push_back('"');
    } else if (name == "apos") {
      out->push_back('\'');
    } else if (name.size() >= 2 && name[0] == '#') {
      const bool hex = name[1] == 'x' || name[1] == 'X';
      const std::string_view digits = name.substr(hex ? 2 : 1);
      std::uint32_t code = 0;
      const auto [end, ec] =
          std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
      if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size() ||
          code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return Fail("character reference &" + std::string(name) + "; is not a character",
                    OffsetOf(amp));
      }
      AppendUtf8(*out, code);
    } else {
      return Fail("unknown entity &" + std::string(name) + ";", OffsetOf(amp));
    }
    text = semicolon + 1;
    amp = std::strchr(text, '&');
    if (amp == nullptr) {
      out->append(text);
      return true;
    }
  }
}

bool Reader::Text(pugi::xml_node node, std::string* out) {
  out->clear();
  if (!AppendDecoded(node.value(), out)) return false;
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    switch (child.type()) {
      case pugi::node_pcdata:
        if (!AppendDecoded(child.value(), out)) return false;
        break;
      case pugi::node_cdata:
        out->append(child.value());
        break;
      case pugi::node_element:
        return Fail(std::string("element <") + child.name() + "> inside <" + node.name() + ">",
                    OffsetOf(child));
      default:
        break;
    }
  }
  return true;
}

bool Reader::ExpectNoContent(pugi::xml_node node) {
  pugi::xml_node child;
  if (!NextElement(node.first_child(), node, &child)) return false;
  if (child) {
    return Fail(std::string("element <") + child.name() + "> inside <" + node.name() + ">",
                OffsetOf(child));
  }
  return true;
}

bool Reader::ReadValue(pugi::xml_node node, int depth, Value* out) {
  const std::string_view name = node.name();
  if (name == "string") {
    std::string text;
    if (!Text(node, &text)) return false;
    *out = SharedString(std::move(text));
    return true;
  }
  if (name == "dict") return ReadDictionary(node, depth, out);
  if (name == "array") return ReadArray(node, depth, out);
  if (name == "true" || name == "false") {
    if (!ExpectNoContent(node)) return false;
    *out = Value(name == "true");
    return true;
  }
  if (name == "integer" || name == "real" || name == "date" || name == "data") {
    std::string text;
    if (!Text(node, &text)) return false;
    const std::size_t offset = OffsetOf(node);
    if (name == "integer") {
      std::optional<Value> value = ParseInteger(text);
      if (!value) return Fail("<integer> \"" + text + "\" is not a 64-bit integer", offset);
      *out = std::move(*value);
    } else if (name == "real") {
      const std::optional<double> value = ParseReal(text);
      if (!value) return Fail("<real> \"" + text + "\" is not a number", offset);
      *out = Value(*value);
    } else if (name == "date") {
      const std::optional<double> value = ParseDate(text);
      if (!value) return Fail("<date> \"" + text + "\" is not a date", offset);
      *out = Value(Date{*value});
    } else {
      Data data;
      const std::size_t bad = DecodeBase64(text, &data);
      if (bad != std::string_view::npos) {
        return Fail("<data> is not base64 at character " + std::to_string(bad), offset);
      }
      *out = Value(std::move(data));
    }
    return true;
  }
  return Fail("unknown element <" + std::string(name) + ">", OffsetOf(node));
}

bool Reader::ReadArray(pugi::xml_node node, int depth, Value* out) {
  if (depth >= kMaxNestingDepth)
    return Fail("arrays and dictionaries nest too deeply", OffsetOf(node));
  std::size_t count = 0;
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    count += child.type() == pugi::node_element ? 1 : 0;
  }
  Array array;
  array.reserve(count);
  pugi::xml_node child;
  if (!NextElement(node.first_child(), node, &child)) return false;
  while (child) {
    array.emplace_back();
    if (!ReadValue(child, depth + 1, &array.back())) return false;
    const pugi::xml_node next = child.next_sibling();
    node.remove_child(child);
    if (!NextElement(next, node, &child)) return false;
  }
  *out = Value(std::move(array));
  return true;
}

bool Reader::ReadDictionary(pugi::xml_node node, int depth, Value* out) {
  if (depth >= kMaxNestingDepth)
    return Fail("arrays and dictionaries nest too deeply", OffsetOf(node));
  std::size_t count = 0;
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    count += child.type() == pugi::node_element ? 1 : 0;
  }
  Dictionary dictionary;
  dictionary.reserve(count / 2);
  pugi::xml_node key;
  if (!NextElement(node.first_child(), node, &key)) return false;
  while (key) {
    if (std::strcmp(key.name(), "key") != 0) {
      return Fail(std::string("<") + key.name() + "> where <dict> expects a <key>", OffsetOf(key));
    }
    std::string text;
    if (!Text(key, &text)) return false;
    pugi::xml_node value;
    if (!NextElement(key.next_sibling(), node, &value)) return false;
    if (!value) return Fail("<key> \"" + text + "\" has no value", OffsetOf(key));
    dictionary.append(std::move(text), Value());
    if (!ReadValue(value, depth + 1, &std::prev(dictionary.end())->second)) return false;
    const pugi::xml_node next = value.next_sibling();
    node.remove_child(key);
    node.remove_child(value);
    if (!NextElement(next, node, &key)) return false;
  }
  dictionary.collapseDuplicateKeys();
  *out = Value(std::move(dictionary));
  return true;
}

// Text escapes: the three markup characters, and the control characters that XML would
// otherwise drop or normalise (a raw CR reads back as LF) as character references.
struct EscapeTable {
  bool escape[256];
  constexpr EscapeTable() : escape() {
    for (int c = 0; c < 0x20; ++c) escape[c] = c != '\t' && c != '\n';
    escape[static_cast<unsigned char>('&')] = true;
    escape[static_cast<unsigned char>('<')] = true;
    escape[static_cast<unsigned char>('>')] = true;
  }
};
constexpr EscapeTable kEscape;

// Writes the XML text of a value tree into one string, as Apple lays it out.
class Writer {
 public:
  std::string Write(const Value& value) {
    out_.append(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n");
    if (!value.isNone()) WriteValue(value, 0);
    out_.append("</plist>\n");
    return std::move(out_);
  }

 private:
  void Indent(int depth) { out_.append(static_cast<std::size_t>(depth), '\t'); }

  void Escaped(std::string_view text) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      if (!kEscape.escape[c]) continue;
      out_.append(text.data() + start, i - start);
      start = i + 1;
      switch (c) {
        case '&':
          out_.append("&amp;");
          break;
        case '<':
          out_.append("&lt;");
          break;
        case '>':
          out_.append("&gt;");
          break;
        default:
          out_.append("&#");
          AppendDigits(out_, c, 1);
          out_.push_back(';');
      }
    }
    out_.append(text.data() + start, text.size() - start);
  }

  void Element(int depth, std::string_view tag, std::string_view text) {
    Indent(depth);
    out_.push_back('<');
    out_.append(tag);
    out_.push_back('>');
    out_.append(text);
    out_.append("</");
    out_.append(tag);
    out_.append(">\n");
  }

  // Lines of base64 as plistlib cuts them: at most 76 columns less the indentation (a tab
  // counting 8), and never under 16.
  void WriteData(const Data& data, int depth) {
    Indent(depth);
    out_.append("<data>\n");
    const std::size_t line_length = static_cast<std::size_t>(std::max(16, 76 - 8 * depth));
    const std::size_t bytes_per_line = line_length / 4 * 3;
    for (std::size_t at = 0; at < data.size(); at += bytes_per_line) {
      Indent(depth);
      const std::size_t end = std::min(data.size(), at + bytes_per_line);
      for (std::size_t i = at; i < end; i += 3) {
        const std::size_t n = std::min<std::size_t>(3, end - i);
        std::uint32_t group = static_cast<std::uint32_t>(data[i]) << 16;
        if (n > 1) group |= static_cast<std::uint32_t>(data[i + 1]) << 8;
        if (n > 2) group |= data[i + 2];
        out_.push_back(kBase64Alphabet[group >> 18]);
        out_.push_back(kBase64Alphabet[(group >> 12) & 63]);
        out_.push_back(n > 1 ? kBase64Alphabet[(group >> 6) & 63] : '=');
        out_.push_back(n > 2 ? kBase64Alphabet[group & 63] : '=');
      }
      out_.push_back('\n');
    }
    Indent(depth);
    out_.append("</data>\n");
  }

  void WriteValue(const Value& value, int depth) {
    char buffer[64];
    switch (value.kind()) {
      case Value::Kind::kNone:
        return;
      case Value::Kind::kString:
        Indent(depth);
        out_.append("<string>");
        Escaped(*value.asString());
        out_.append("</string>\n");
        return;
      case Value::Kind::kInteger: {
        const std::optional<std::int64_t> signed_value = value.asInteger();
        const auto [end, ec] =
            signed_value
                ? std::to_chars(buffer, buffer + sizeof buffer, *signed_value)
                : std::to_chars(buffer, buffer + sizeof buffer, *value.asUnsignedInteger());
        Element(depth, "integer", std::string_view(buffer, end - buffer));
        return;
      }
      case Value::Kind::kReal: {
        const double real = *value.asReal();
        if (std::isnan(real)) {
          Element(depth, "real", "nan");
        } else if (std::isinf(real)) {
          Element(depth, "real", real > 0 ? "+infinity" : "-infinity");
        } else {
          const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, real);
          Element(depth, "real", std::string_view(buffer, end - buffer));
        }
        return;
      }
      case Value::Kind::kBoolean:
        Indent(depth);
        out_.append(*value.asBoolean() ? "<true/>\n" : "<false/>\n");
        return;
      case Value::Kind::kDate:
        Indent(depth);
        out_.append("<date>");
        AppendDate(out_, value.asDate()->secondsSinceReferenceDate);
        out_.append("</date>\n");
        return;
      case Value::Kind::kData:
        WriteData(*value.asData(), depth);
        return;
      case Value::Kind::kArray: {
        const Array& array = *value.asArray();
        const bool empty = std::all_of(array.begin(), array.end(),
                                       [](const Value& member) { return member.isNone(); });
        Indent(depth);
        if (empty) {
          out_.append("<array/>\n");
          return;
        }
        out_.append("<array>\n");
        for (const Value& member : array) WriteValue(member, depth + 1);
        Indent(depth);
        out_.append("</array>\n");
        return;
      }
      case Value::Kind::kDictionary: {
        const std::vector<const Dictionary::Entry*> entries = value.asDictionary()->sortedEntries();
        const bool empty =
            std::all_of(entries.begin(), entries.end(),
                        [](const Dictionary::Entry* e) { return e->second.isNone(); });
        Indent(depth);
        if (empty) {
          out_.append("<dict/>\n");
          return;
        }
        out_.append("<dict>\n");
        for (const Dictionary::Entry* entry : entries) {
          if (entry->second.isNone()) continue;
          Indent(depth + 1);
          out_.append("<key>");
          Escaped(entry->first);
          out_.append("</key>\n");
          WriteValue(entry->second, depth + 1);
        }
        Indent(depth);
        out_.append("</dict>\n");
        return;
      }
    }
  }

  std::string out_;
};

// The offset of the first byte that is not UTF-8 (or is NUL, which XML cannot hold), or npos.
std::size_t FirstInvalidByte(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int64_t>(text.size());
  std::int64_t i = 0;
  constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
  constexpr std::uint64_t kHighs = 0x8080808080808080ULL;
  while (i < length) {
    // Eight bytes at a time while they are ASCII and not NUL (the usual case).
    if (i + 8 <= length) {
      std::uint64_t word;
      std::memcpy(&word, bytes + i, 8);
      if (((word | (word - kOnes)) & kHighs) == 0) {
        i += 8;
        continue;
      }
    }
    const std::int64_t start = i;
    if (bytes[i] >= 0x80) {
      UChar32 c;
      U8_NEXT(bytes, i, length, c);
      if (c < 0) return static_cast<std::size_t>(start);
    } else {
      if (bytes[i] == 0) return static_cast<std::size_t>(i);
      ++i;
    }
  }
  return std::string_view::npos;
}

}  // namespace

Expected<Value, ReadError> ReadXml(std::string text) {
  const std::size_t bad = FirstInvalidByte(text);
  if (bad != std::string_view::npos) {
    return Unexpected{
        ReadError{text[bad] == '\0' ? "NUL byte in XML text" : "text is not UTF-8", bad}};
  }
  pugi::xml_document document;
  const pugi::xml_parse_result parsed =
      document.load_buffer_inplace(text.data(), text.size(), kParseOptions, pugi::encoding_utf8);
  if (!parsed) {
    return Unexpected{ReadError{std::string("malformed XML: ") + parsed.description(),
                                static_cast<std::size_t>(parsed.offset)}};
  }
  Reader reader(text.data(), text.size());
  Value value;
  if (!reader.ReadDocument(document, &value)) return Unexpected{reader.error()};
  return value;
}

std::string WriteXml(const Value& value) { return Writer().Write(value); }

}  // namespace folvant::plist
