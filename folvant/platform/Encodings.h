#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace folvant::platform {

// Text encodings as account files store them: the platform's numeric string-encoding
// constants. The common ones have small numbers; the rest are a platform encoding number with
// the top bit set (0x80000000 | n). Each constant is backed by an ICU converter where ICU has
// one; Windows code-page numbers (as OFX headers give them) map onto these constants.
using StringEncoding = std::uint32_t;

inline constexpr StringEncoding kNoEncoding = 0;
inline constexpr StringEncoding kASCIIStringEncoding = 1;
inline constexpr StringEncoding kNEXTSTEPStringEncoding = 2;
inline constexpr StringEncoding kJapaneseEUCStringEncoding = 3;
inline constexpr StringEncoding kUTF8StringEncoding = 4;
inline constexpr StringEncoding kISOLatin1StringEncoding = 5;
inline constexpr StringEncoding kSymbolStringEncoding = 6;
inline constexpr StringEncoding kNonLossyASCIIStringEncoding = 7;
inline constexpr StringEncoding kShiftJISStringEncoding = 8;
inline constexpr StringEncoding kISOLatin2StringEncoding = 9;
inline constexpr StringEncoding kUnicodeStringEncoding = 10;  // UTF-16 with byte-order mark
inline constexpr StringEncoding kWindowsCP1251StringEncoding = 11;
inline constexpr StringEncoding kWindowsCP1252StringEncoding = 12;
inline constexpr StringEncoding kWindowsCP1253StringEncoding = 13;
inline constexpr StringEncoding kWindowsCP1254StringEncoding = 14;
inline constexpr StringEncoding kWindowsCP1250StringEncoding = 15;
inline constexpr StringEncoding kISO2022JPStringEncoding = 21;
inline constexpr StringEncoding kMacOSRomanStringEncoding = 30;
inline constexpr StringEncoding kUTF16BigEndianStringEncoding = 0x90000100;
inline constexpr StringEncoding kUTF16LittleEndianStringEncoding = 0x94000100;
inline constexpr StringEncoding kUTF32StringEncoding = 0x8c000100;
inline constexpr StringEncoding kUTF32BigEndianStringEncoding = 0x98000100;
inline constexpr StringEncoding kUTF32LittleEndianStringEncoding = 0x9c000100;

// The encoding of a Windows code page (1252 → 12, 65001 → 4, 437 → 0x80000400, 1200 →
// UTF-16 little-endian), or kNoEncoding for a code page the table does not know.
StringEncoding WindowsCodepageToEncoding(std::uint32_t codepage);

// The Windows code page of an encoding, or 0 when it has none.
std::uint32_t EncodingToWindowsCodepage(StringEncoding encoding);

// A readable name ("Western (Windows Latin 1)"), or "" for an unknown encoding.
std::string_view EncodingName(StringEncoding encoding);

// The ICU converter name of an encoding, or nullptr when there is no converter for it
// (NEXTSTEP, Symbol, non-lossy ASCII and unknown numbers).
const char* IcuConverterName(StringEncoding encoding);

// Bytes in an encoding to UTF-8. nullopt when the encoding has no converter or the bytes are
// not valid in it (a byte the encoding does not define, a broken multi-byte sequence). A
// leading byte-order mark of a Unicode encoding is dropped.
std::optional<std::string> DecodeBytes(std::string_view bytes, StringEncoding encoding);

// As DecodeBytes, but every invalid byte sequence becomes U+FFFD; nullopt only when the
// encoding has no converter.
std::optional<std::string> DecodeBytesLossy(std::string_view bytes, StringEncoding encoding);

// UTF-8 text to bytes in an encoding. nullopt when the encoding has no converter, the text is
// not valid UTF-8, or it holds a character the encoding cannot represent. UTF-16 and UTF-32
// (without an endianness) are written little-endian after a byte-order mark.
std::optional<std::string> EncodeText(std::string_view utf8, StringEncoding encoding);

// As EncodeText, but characters the encoding cannot represent become "?" (or the encoding's
// own substitute in multi-byte encodings); nullopt only when there is no converter.
std::optional<std::string> EncodeTextLossy(std::string_view utf8, StringEncoding encoding);

// Text whose encoding is not known: a byte-order mark decides (UTF-8, UTF-16, UTF-32); else
// valid UTF-8 is read as UTF-8; else the user's default 8-bit encoding (Windows-1252 unless
// set otherwise) with substitution, or ISO Latin-1 when that has no converter.
struct GuessedText {
  std::string text;
  StringEncoding encoding = kNoEncoding;
};
GuessedText DecodeBytesGuessingEncoding(std::string_view bytes);

}  // namespace folvant::platform
