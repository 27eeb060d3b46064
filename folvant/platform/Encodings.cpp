#include "folvant/platform/Encodings.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <array>
#include <memory>

#include "folvant/platform/UserSettings.h"

namespace folvant::platform {
namespace {

struct EncodingRow {
  StringEncoding encoding;
  std::uint32_t codepage;  // 0: none
  const char* icu;         // nullptr: no converter
  std::string_view name;
};

// Encodings with a platform number of 0x80000000 | n carry n, the platform's own encoding
// number (0x0400 DOS Latin US, 0x0500 range Windows, 0x0200 range ISO 8859, …).
constexpr std::array kEncodings = {
    EncodingRow{kASCIIStringEncoding, 20127, "US-ASCII", "Western (ASCII)"},
    EncodingRow{kNEXTSTEPStringEncoding, 0, nullptr, "Western (NextStep)"},
    EncodingRow{kJapaneseEUCStringEncoding, 20932, "EUC-JP", "Japanese (EUC)"},
    EncodingRow{kUTF8StringEncoding, 65001, "UTF-8", "Unicode (UTF-8)"},
    EncodingRow{kISOLatin1StringEncoding, 28591, "ISO-8859-1", "Western (ISO Latin 1)"},
    EncodingRow{kSymbolStringEncoding, 0, nullptr, "Symbol (Mac OS)"},
    EncodingRow{kNonLossyASCIIStringEncoding, 0, nullptr, "Non-lossy ASCII"},
    EncodingRow{kShiftJISStringEncoding, 932, "windows-31j", "Japanese (Windows, DOS)"},
    EncodingRow{kISOLatin2StringEncoding, 28592, "ISO-8859-2", "Central European (ISO Latin 2)"},
    EncodingRow{kUnicodeStringEncoding, 0, "UTF-16", "Unicode (UTF-16)"},
    EncodingRow{kWindowsCP1251StringEncoding, 1251, "windows-1251", "Cyrillic (Windows)"},
    EncodingRow{kWindowsCP1252StringEncoding, 1252, "windows-1252", "Western (Windows Latin 1)"},
    EncodingRow{kWindowsCP1253StringEncoding, 1253, "windows-1253", "Greek (Windows)"},
    EncodingRow{kWindowsCP1254StringEncoding, 1254, "windows-1254", "Turkish (Windows Latin 5)"},
    EncodingRow{kWindowsCP1250StringEncoding, 1250, "windows-1250",
                "Central European (Windows Latin 2)"},
    EncodingRow{kISO2022JPStringEncoding, 50220, "ISO-2022-JP", "Japanese (ISO 2022-JP)"},
    EncodingRow{kMacOSRomanStringEncoding, 10000, "macintosh", "Western (Mac OS Roman)"},
    EncodingRow{kUTF16BigEndianStringEncoding, 1201, "UTF-16BE", "Unicode (UTF-16BE)"},
    EncodingRow{kUTF16LittleEndianStringEncoding, 1200, "UTF-16LE", "Unicode (UTF-16LE)"},
    EncodingRow{kUTF32StringEncoding, 0, "UTF-32", "Unicode (UTF-32)"},
    EncodingRow{kUTF32BigEndianStringEncoding, 12001, "UTF-32BE", "Unicode (UTF-32BE)"},
    EncodingRow{kUTF32LittleEndianStringEncoding, 12000, "UTF-32LE", "Unicode (UTF-32LE)"},
    EncodingRow{0x80000505, 1255, "windows-1255", "Hebrew (Windows)"},
    EncodingRow{0x80000506, 1256, "windows-1256", "Arabic (Windows)"},
    EncodingRow{0x80000507, 1257, "windows-1257", "Baltic (Windows)"},
    EncodingRow{0x80000508, 1258, "windows-1258", "Vietnamese (Windows)"},
    EncodingRow{0x80000400, 437, "ibm-437", "Latin-US (DOS)"},
    EncodingRow{0x80000405, 737, "ibm-737", "Greek (DOS)"},
    EncodingRow{0x80000406, 775, "ibm-775", "Baltic (DOS)"},
    EncodingRow{0x80000410, 850, "ibm-850", "Western (DOS Latin 1)"},
    EncodingRow{0x80000412, 852, "ibm-852", "Central European (DOS Latin 2)"},
    EncodingRow{0x80000413, 855, "ibm-855", "Cyrillic (DOS)"},
    EncodingRow{0x80000414, 857, "ibm-857", "Turkish (DOS)"},
    EncodingRow{0x80000415, 860, "ibm-860", "Portuguese (DOS)"},
    EncodingRow{0x80000416, 861, "ibm-861", "Icelandic (DOS)"},
    EncodingRow{0x80000417, 862, "ibm-862", "Hebrew (DOS)"},
    EncodingRow{0x80000418, 863, "ibm-863", "Canadian French (DOS)"},
    EncodingRow{0x80000419, 864, "ibm-864", "Arabic (DOS)"},
    EncodingRow{0x8000041A, 865, "ibm-865", "Nordic (DOS)"},
    EncodingRow{0x8000041B, 866, "ibm-866", "Russian (DOS)"},
    EncodingRow{0x8000041C, 869, "ibm-869", "Greek (DOS Greek 2)"},
    EncodingRow{0x8000041D, 874, "windows-874", "Thai (Windows, DOS)"},
    EncodingRow{0x80000421, 936, "windows-936", "Simplified Chinese (Windows, DOS)"},
    EncodingRow{0x80000422, 949, "windows-949", "Korean (Windows, DOS)"},
    EncodingRow{0x80000423, 950, "windows-950", "Traditional Chinese (Windows, DOS)"},
    EncodingRow{0x80000203, 28593, "ISO-8859-3", "Western (ISO Latin 3)"},
    EncodingRow{0x80000204, 28594, "ISO-8859-4", "Central European (ISO Latin 4)"},
    EncodingRow{0x80000205, 28595, "ISO-8859-5", "Cyrillic (ISO 8859-5)"},
    EncodingRow{0x80000206, 28596, "ISO-8859-6", "Arabic (ISO 8859-6)"},
    EncodingRow{0x80000207, 28597, "ISO-8859-7", "Greek (ISO 8859-7)"},
    EncodingRow{0x80000208, 28598, "ISO-8859-8", "Hebrew (ISO 8859-8)"},
    EncodingRow{0x80000209, 28599, "ISO-8859-9", "Turkish (ISO Latin 5)"},
    EncodingRow{0x8000020D, 28603, "ISO-8859-13", "Baltic (ISO Latin 7)"},
    EncodingRow{0x8000020F, 28605, "ISO-8859-15", "Western (ISO Latin 9)"},
    EncodingRow{0x80000A02, 20866, "KOI8-R", "Cyrillic (KOI8-R)"},
    EncodingRow{0x80000A08, 21866, "KOI8-U", "Ukrainian (KOI8-U)"},
    EncodingRow{0x80000632, 54936, "GB18030", "Chinese (GB 18030)"},
    EncodingRow{0x80000930, 51936, "GB2312", "Simplified Chinese (GB 2312)"},
    EncodingRow{0x80000940, 51949, "EUC-KR", "Korean (EUC)"},
    EncodingRow{0x80000A03, 0, "Big5", "Traditional Chinese (Big 5)"},
    EncodingRow{0x80000007, 10007, "x-mac-cyrillic", "Cyrillic (Mac OS)"},
    EncodingRow{0x80000006, 10006, "x-mac-greek", "Greek (Mac OS)"},
    EncodingRow{0x80000023, 10081, "x-mac-turkish", "Turkish (Mac OS)"},
    EncodingRow{0x8000001D, 10029, "x-mac-centraleurroman", "Central European (Mac OS)"},
};

// Further code pages that name an encoding of the table.
struct CodepageAlias {
  std::uint32_t codepage;
  StringEncoding encoding;
};
constexpr std::array kCodepageAliases = {
    CodepageAlias{51932, kJapaneseEUCStringEncoding},
    CodepageAlias{50221, kISO2022JPStringEncoding},
    CodepageAlias{50222, kISO2022JPStringEncoding},
};

const EncodingRow* Find(StringEncoding encoding) {
  for (const auto& row : kEncodings) {
    if (row.encoding == encoding) return &row;
  }
  return nullptr;
}

bool IsUnicode(StringEncoding encoding) {
  switch (encoding) {
    case kUTF8StringEncoding:
    case kUnicodeStringEncoding:
    case kUTF16BigEndianStringEncoding:
    case kUTF16LittleEndianStringEncoding:
    case kUTF32StringEncoding:
    case kUTF32BigEndianStringEncoding:
    case kUTF32LittleEndianStringEncoding:
      return true;
    default:
      return false;
  }
}

struct ConverterCloser {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter Open(const char* name) {
  if (name == nullptr) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(name, &status));
  if (U_FAILURE(status)) return nullptr;
  return converter;
}

// Replaces every invalid or unmapped byte sequence with U+FFFD (ICU's own substitute would be
// U+001A in the 8-bit code pages).
void ReplacementToUnicode(const void*, UConverterToUnicodeArgs* args, const char*, int32_t,
                          UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;  // reset, close or clone: nothing to write
  static const UChar kReplacement = 0xFFFD;
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, status);
}

void SetToUnicodeMode(UConverter* converter, bool lossy) {
  UErrorCode status = U_ZERO_ERROR;
  if (lossy) {
    ucnv_setToUCallBack(converter, ReplacementToUnicode, nullptr, nullptr, nullptr, &status);
  } else {
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
}

// Streams the bytes from one converter to the other through ICU's pivot buffer.
std::optional<std::string> Convert(std::string_view bytes, UConverter* from, UConverter* to) {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 2);
  UChar pivot[1024];
  UChar* pivot_source = pivot;
  UChar* pivot_target = pivot;
  const char* source = bytes.data();
  const char* const source_limit = bytes.data() + bytes.size();
  char buffer[8192];
  for (bool first = true;; first = false) {
    char* target = buffer;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_convertEx(to, from, &target, buffer + sizeof buffer, &source, source_limit, pivot,
                   &pivot_source, &pivot_target, pivot + 1024, first, true, &status);
    out.append(buffer, static_cast<std::size_t>(target - buffer));
    if (status == U_BUFFER_OVERFLOW_ERROR) continue;
    if (U_FAILURE(status)) return std::nullopt;
    return out;
  }
}

std::optional<std::string> Decode(std::string_view bytes, StringEncoding encoding, bool lossy) {
  const EncodingRow* row = Find(encoding);
  if (row == nullptr) return std::nullopt;
  Converter from = Open(row->icu);
  Converter to = Open("UTF-8");
  if (!from || !to) return std::nullopt;
  SetToUnicodeMode(from.get(), lossy);
  std::optional<std::string> text = Convert(bytes, from.get(), to.get());
  if (text && IsUnicode(encoding) && text->starts_with("\xEF\xBB\xBF")) text->erase(0, 3);
  return text;
}

std::optional<std::string> Encode(std::string_view utf8, StringEncoding encoding, bool lossy) {
  // UTF-16 and UTF-32 without an endianness are written with a byte-order mark and little-
  // endian, whatever the machine, as Windows and Intel Macs write them.
  std::string_view mark;
  if (encoding == kUnicodeStringEncoding) {
    mark = "\xFF\xFE";
    encoding = kUTF16LittleEndianStringEncoding;
  } else if (encoding == kUTF32StringEncoding) {
    mark = std::string_view("\xFF\xFE\0\0", 4);
    encoding = kUTF32LittleEndianStringEncoding;
  }
  const EncodingRow* row = Find(encoding);
  if (row == nullptr) return std::nullopt;
  Converter from = Open("UTF-8");
  Converter to = Open(row->icu);
  if (!from || !to) return std::nullopt;
  SetToUnicodeMode(from.get(), lossy);
  UErrorCode status = U_ZERO_ERROR;
  if (lossy) {
    // A substitute that the encoding cannot take (UTF-16 has no 1-byte "?") is refused by
    // ICU; those encodings represent every character anyway.
    ucnv_setSubstChars(to.get(), "?", 1, &status);
  } else {
    ucnv_setFromUCallBack(to.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  std::optional<std::string> bytes = Convert(utf8, from.get(), to.get());
  if (bytes && !mark.empty()) bytes->insert(0, mark);
  return bytes;
}

bool StartsWith(std::string_view bytes, std::string_view prefix) {
  return bytes.substr(0, prefix.size()) == prefix;
}

}  // namespace

StringEncoding WindowsCodepageToEncoding(std::uint32_t codepage) {
  if (codepage == 0) return kNoEncoding;
  for (const auto& row : kEncodings) {
    if (row.codepage == codepage) return row.encoding;
  }
  for (const auto& alias : kCodepageAliases) {
    if (alias.codepage == codepage) return alias.encoding;
  }
  return kNoEncoding;
}

std::uint32_t EncodingToWindowsCodepage(StringEncoding encoding) {
  const EncodingRow* row = Find(encoding);
  return row == nullptr ? 0 : row->codepage;
}

std::string_view EncodingName(StringEncoding encoding) {
  const EncodingRow* row = Find(encoding);
  return row == nullptr ? std::string_view{} : row->name;
}

const char* IcuConverterName(StringEncoding encoding) {
  const EncodingRow* row = Find(encoding);
  return row == nullptr ? nullptr : row->icu;
}

std::optional<std::string> DecodeBytes(std::string_view bytes, StringEncoding encoding) {
  return Decode(bytes, encoding, false);
}

std::optional<std::string> DecodeBytesLossy(std::string_view bytes, StringEncoding encoding) {
  return Decode(bytes, encoding, true);
}

std::optional<std::string> EncodeText(std::string_view utf8, StringEncoding encoding) {
  return Encode(utf8, encoding, false);
}

std::optional<std::string> EncodeTextLossy(std::string_view utf8, StringEncoding encoding) {
  return Encode(utf8, encoding, true);
}

GuessedText DecodeBytesGuessingEncoding(std::string_view bytes) {
  StringEncoding encoding = kNoEncoding;
  if (StartsWith(bytes, "\xEF\xBB\xBF")) {
    encoding = kUTF8StringEncoding;
  } else if (StartsWith(bytes, std::string_view("\xFF\xFE\0\0", 4))) {
    encoding = kUTF32LittleEndianStringEncoding;
  } else if (StartsWith(bytes, std::string_view("\0\0\xFE\xFF", 4))) {
    encoding = kUTF32BigEndianStringEncoding;
  } else if (StartsWith(bytes, "\xFE\xFF") || StartsWith(bytes, "\xFF\xFE")) {
    encoding = kUnicodeStringEncoding;
  }
  if (encoding != kNoEncoding) {
    if (auto text = DecodeBytesLossy(bytes, encoding)) return {std::move(*text), encoding};
  }
  if (auto text = DecodeBytes(bytes, kUTF8StringEncoding)) {
    return {std::move(*text), kUTF8StringEncoding};
  }
  const StringEncoding fallback = CurrentUserSettings().defaultCStringEncoding;
  if (auto text = DecodeBytesLossy(bytes, fallback)) return {std::move(*text), fallback};
  return {DecodeBytesLossy(bytes, kISOLatin1StringEncoding).value_or(std::string{}),
          kISOLatin1StringEncoding};
}

}  // namespace folvant::platform
