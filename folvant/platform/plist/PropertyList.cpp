#include "folvant/platform/plist/PropertyList.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "folvant/platform/plist/BinaryPlist.h"
#include "folvant/platform/plist/XmlPlist.h"

namespace folvant::plist {
namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

enum class TextEncoding { kUtf8, kUtf16LE, kUtf16BE };

struct Detected {
  TextEncoding encoding = TextEncoding::kUtf8;
  std::size_t bom_size = 0;
};

// UTF-16 is recognised by its byte-order mark, or by a first character '<' (as some writers
// leave the mark out); everything else is read as UTF-8.
Detected DetectEncoding(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Bom)) return {TextEncoding::kUtf8, 3};
  if (bytes.starts_with("\xFF\xFE")) return {TextEncoding::kUtf16LE, 2};
  if (bytes.starts_with("\xFE\xFF")) return {TextEncoding::kUtf16BE, 2};
  if (bytes.size() >= 2 && bytes[0] == '<' && bytes[1] == '\0') return {TextEncoding::kUtf16LE, 0};
  if (bytes.size() >= 2 && bytes[0] == '\0' && bytes[1] == '<') return {TextEncoding::kUtf16BE, 0};
  return {};
}

// The offset in the UTF-16 file of the character that starts at `utf8_offset` in its UTF-8
// conversion, so that errors point into the file the user has.
std::size_t Utf16Offset(std::string_view utf8, std::size_t utf8_offset, std::size_t bom_size) {
  std::size_t units = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(utf8.data());
  const auto end = static_cast<std::int64_t>(std::min(utf8_offset, utf8.size()));
  for (std::int64_t i = 0; i < end;) {
    UChar32 c;
    U8_NEXT_OR_FFFD(bytes, i, end, c);
    units += c >= 0x10000 ? 2 : 1;
  }
  return bom_size + 2 * units;
}

// The index of the first unpaired surrogate.
std::size_t FirstUnpairedSurrogate(const std::vector<UChar>& units) {
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (U16_IS_LEAD(units[i]) && i + 1 < units.size() && U16_IS_TRAIL(units[i + 1])) {
      ++i;
    } else if (U16_IS_SURROGATE(units[i])) {
      return i;
    }
  }
  return units.size();
}

Expected<Value, ReadError> ReadUtf16Xml(std::string_view bytes, const Detected& detected) {
  const std::string_view body = bytes.substr(detected.bom_size);
  if (body.size() % 2 != 0) {
    return Unexpected{ReadError{"UTF-16 text has an odd number of bytes", bytes.size() - 1}};
  }
  std::vector<UChar> units(body.size() / 2);
  const bool little_endian = detected.encoding == TextEncoding::kUtf16LE;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<std::uint8_t>(body[2 * i]);
    const auto second = static_cast<std::uint8_t>(body[2 * i + 1]);
    units[i] = static_cast<UChar>(little_endian ? (second << 8 | first) : (first << 8 | second));
  }
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  const auto unit_count = static_cast<int32_t>(units.size());
  u_strToUTF8(nullptr, 0, &length, units.data(), unit_count, &status);
  std::string text;
  if (status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status)) {
    text.resize(static_cast<std::size_t>(length));
    status = U_ZERO_ERROR;
    u_strToUTF8(text.data(), length, nullptr, units.data(), unit_count, &status);
  }
  if (U_FAILURE(status)) {
    return Unexpected{ReadError{"unpaired surrogate in UTF-16 text",
                                detected.bom_size + 2 * FirstUnpairedSurrogate(units)}};
  }
  std::string converted = text;  // kept to map error offsets back to the file
  Expected<Value, ReadError> value = ReadXml(std::move(text));
  if (!value) {
    ReadError error = value.error();
    error.offset = Utf16Offset(converted, error.offset, detected.bom_size);
    return Unexpected{std::move(error)};
  }
  return value;
}

// Reads XML text in whichever Unicode encoding it is in; UTF-8 is parsed in `bytes` itself.
Expected<Value, ReadError> ReadText(std::string bytes) {
  const Detected detected = DetectEncoding(bytes);
  if (detected.encoding != TextEncoding::kUtf8) return ReadUtf16Xml(bytes, detected);
  bytes.erase(0, detected.bom_size);
  Expected<Value, ReadError> value = ReadXml(std::move(bytes));
  if (!value) {
    ReadError error = value.error();
    error.offset += detected.bom_size;
    return Unexpected{std::move(error)};
  }
  return value;
}

// What a streamed read of a whole tree does: the array under the stream's key is handed over
// member by member, exactly as the binary reader hands it while reading.
void HandOverMembers(Value& top, const StreamedRead& stream) {
  Dictionary* dictionary = top.asDictionary();
  if (dictionary == nullptr) return;
  Value* slot = dictionary->find(stream.key);
  if (slot == nullptr || !slot->isArray()) return;
  Array members = std::move(*slot->asArray());
  *slot = Array();
  MemberSink sink = stream.start(*dictionary, members.size());
  if (!sink) {
    *slot = std::move(members);
    return;
  }
  for (Value& member : members) sink(std::move(member));
}

// Reads a property list whose bytes the caller hands over, so that XML needs no copy.
Expected<Value, ReadError> ReadOwned(std::string_view view, std::string* owned,
                                     const StreamedRead* stream = nullptr) {
  if (view.empty()) return Unexpected{ReadError{"the property list is empty", 0}};
  const std::optional<Format> format = DetectFormat(view);
  if (!format) {
    return Unexpected{ReadError{"not a property list: neither XML nor \"bplist00\"", 0}};
  }
  if (*format == Format::kBinary) {
    if (!view.starts_with("bplist00")) {
      return Unexpected{ReadError{"binary property list version \"" +
                                      std::string(view.substr(0, 8)) + "\" is not supported",
                                  0}};
    }
    return stream != nullptr ? ReadBinary(view, *stream) : ReadBinary(view);
  }
  Expected<Value, ReadError> value =
      ReadText(owned != nullptr ? std::move(*owned) : std::string(view));
  if (value && stream != nullptr) HandOverMembers(*value, *stream);
  return value;
}

}  // namespace

std::optional<Format> DetectFormat(std::string_view bytes) {
  if (bytes.starts_with("bplist")) return Format::kBinary;
  const Detected detected = DetectEncoding(bytes);
  if (detected.encoding != TextEncoding::kUtf8) return Format::kXml;
  std::string_view text = bytes.substr(detected.bom_size);
  while (!text.empty() &&
         (text[0] == ' ' || text[0] == '\t' || text[0] == '\n' || text[0] == '\r')) {
    text.remove_prefix(1);
  }
  if (text.starts_with("<")) return Format::kXml;
  return std::nullopt;
}

Expected<Value, ReadError> Read(std::string_view bytes) { return ReadOwned(bytes, nullptr); }

Expected<Value, ReadError> Read(std::string_view bytes, const StreamedRead& stream) {
  return ReadOwned(bytes, nullptr, &stream);
}

Expected<Value, ReadError> ReadInPlace(std::string bytes) {
  const std::string_view view = bytes;
  return ReadOwned(view, &bytes);
}

namespace {

// A large binary property list is decoded straight from a read-only mapping of its file: its
// strings are copied out as they are decoded, so the bytes need not be copied into memory of
// their own first. Empty when the file is not such a list or cannot be mapped; the caller then
// reads it the ordinary way.
std::optional<Expected<Value, ReadError>> ReadMappedBinary(const std::filesystem::path& path,
                                                           const StreamedRead* stream) {
  constexpr std::size_t kMappedFrom = std::size_t{4} << 20;
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  struct stat status {};
  char head[6] = {};
  void* mapped = MAP_FAILED;
  std::size_t size = 0;
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
      static_cast<std::uintmax_t>(status.st_size) >= kMappedFrom &&
      pread(fd, head, sizeof head, 0) == static_cast<ssize_t>(sizeof head) &&
      std::memcmp(head, "bplist", sizeof head) == 0) {
    size = static_cast<std::size_t>(status.st_size);
    mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
  }
  close(fd);
  if (mapped == MAP_FAILED) return std::nullopt;
  const std::string_view bytes(static_cast<const char*>(mapped), size);
  Expected<Value, ReadError> value = stream != nullptr ? Read(bytes, *stream) : Read(bytes);
  munmap(mapped, size);
  return value;
}

}  // namespace

namespace {

Expected<Value, ReadError> ReadFileStreaming(const std::filesystem::path& path,
                                             const StreamedRead* stream) {
  const auto fail = [&path](int error) {
    return Unexpected{ReadError{
        "cannot read " + path.string() + ": " + std::generic_category().message(error), 0}};
  };
  if (auto mapped = ReadMappedBinary(path, stream)) return std::move(*mapped);
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                       &std::fclose);
  if (!file) return fail(errno);
  std::string bytes;
  std::error_code size_error;
  const std::uintmax_t size = std::filesystem::file_size(path, size_error);
  if (!size_error) bytes.reserve(static_cast<std::size_t>(size));
  char buffer[1 << 16];
  for (;;) {
    const std::size_t got = std::fread(buffer, 1, sizeof buffer, file.get());
    bytes.append(buffer, got);
    if (got < sizeof buffer) break;
  }
  if (std::ferror(file.get())) return fail(errno);
  const std::string_view view = bytes;
  return ReadOwned(view, &bytes, stream);
}

}  // namespace

Expected<Value, ReadError> ReadFile(const std::filesystem::path& path) {
  return ReadFileStreaming(path, nullptr);
}

Expected<Value, ReadError> ReadFile(const std::filesystem::path& path, const StreamedRead& stream) {
  return ReadFileStreaming(path, &stream);
}

std::string Write(const Value& value, Format format) {
  return format == Format::kBinary ? WriteBinary(value) : WriteXml(value);
}

std::string Write(const Value& value, Format format, const StreamedWrite& stream) {
  if (format == Format::kBinary) return WriteBinary(value, stream);
  // XML text is written from a whole tree.
  Value whole = value;
  Dictionary* dictionary = whole.asDictionary();
  if (dictionary == nullptr || !dictionary->contains(stream.key)) return WriteXml(whole);
  Array members;
  members.reserve(stream.size);
  for (std::size_t i = 0; i < stream.size; ++i) members.push_back(stream.member(i));
  dictionary->set(stream.key, std::move(members));
  return WriteXml(whole);
}

}  // namespace folvant::plist
