#include <gtest/gtest.h>

#include "folvant/platform/Encodings.h"
#include "tests/support/TestSupport.h"

namespace folvant::platform {
namespace {

using namespace std::string_literals;

TEST(Encodings, WindowsCodepagesMapToEncodingsAndBack) {
  struct Row {
    std::uint32_t codepage;
    StringEncoding encoding;
  };
  const Row rows[] = {{1252, kWindowsCP1252StringEncoding},
                      {1250, kWindowsCP1250StringEncoding},
                      {1255, 0x80000505},
                      {437, 0x80000400},
                      {932, kShiftJISStringEncoding},
                      {950, 0x80000423},
                      {65001, kUTF8StringEncoding},
                      {1200, kUTF16LittleEndianStringEncoding},
                      {28591, kISOLatin1StringEncoding},
                      {10000, kMacOSRomanStringEncoding}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.codepage);
    EXPECT_EQ(WindowsCodepageToEncoding(row.codepage), row.encoding);
    EXPECT_EQ(EncodingToWindowsCodepage(row.encoding), row.codepage);
  }
  EXPECT_EQ(WindowsCodepageToEncoding(51932), kJapaneseEUCStringEncoding);
  EXPECT_EQ(WindowsCodepageToEncoding(0), kNoEncoding);
  EXPECT_EQ(WindowsCodepageToEncoding(12345), kNoEncoding);
  EXPECT_EQ(IcuConverterName(kNEXTSTEPStringEncoding), nullptr);
  // Every converter named in the table opens: an empty text decodes.
  for (StringEncoding n = 1; n < 0x1000; ++n) {
    for (StringEncoding e : {n, 0x80000000 | n}) {
      if (IcuConverterName(e) != nullptr) {
        EXPECT_EQ(DecodeBytes("", e), "") << e;
      }
    }
  }
  for (StringEncoding e :
       {kUTF16BigEndianStringEncoding, kUTF16LittleEndianStringEncoding, kUTF32StringEncoding,
        kUTF32BigEndianStringEncoding, kUTF32LittleEndianStringEncoding}) {
    EXPECT_EQ(DecodeBytes("", e), "") << e;
  }
}

TEST(Encodings, DecodesStrictlyOrWithSubstitution) {
  struct Row {
    std::string bytes;
    StringEncoding encoding;
    std::optional<std::string> strict;
    std::optional<std::string> lossy;
  };
  const std::string kReplacement = "\xEF\xBF\xBD";
  const Row rows[] = {
      {"caf\xE9 \x80", kWindowsCP1252StringEncoding, "caf\u00E9 \u20AC", "caf\u00E9 \u20AC"},
      {"caf\xE9 \x80", kISOLatin1StringEncoding, "caf\u00E9 \u0080", "caf\u00E9 \u0080"},
      {"caf\x8E", kMacOSRomanStringEncoding, "caf\u00E9", "caf\u00E9"},
      {"caf\x82", WindowsCodepageToEncoding(437), "caf\u00E9", "caf\u00E9"},
      {"\x93\xFA\x96\x7B", kShiftJISStringEncoding, "\u65E5\u672C", "\u65E5\u672C"},
      {"\xFE\xFF\x00\x41\x20\xAC"s, kUnicodeStringEncoding, "A\u20AC", "A\u20AC"},
      {"\xEF\xBB\xBFok", kUTF8StringEncoding, "ok", "ok"},
      {"a\xC3(b", kUTF8StringEncoding, std::nullopt, "a" + kReplacement + "(b"},
      {"a\xE9", kASCIIStringEncoding, std::nullopt, "a" + kReplacement},
      {"\x00\xD8\x41\x00"s, kUTF16LittleEndianStringEncoding, std::nullopt,
       kReplacement + "A"},  // an unpaired surrogate
      {"x", kNEXTSTEPStringEncoding, std::nullopt, std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.bytes);
    EXPECT_EQ(DecodeBytes(row.bytes, row.encoding), row.strict);
    EXPECT_EQ(DecodeBytesLossy(row.bytes, row.encoding), row.lossy);
  }
}

TEST(Encodings, EncodesStrictlyOrWithSubstitution) {
  EXPECT_EQ(EncodeText("caf\u00E9 \u20AC", kWindowsCP1252StringEncoding), "caf\xE9 \x80");
  EXPECT_EQ(EncodeText("caf\u00E9 \u20AC", kISOLatin1StringEncoding), std::nullopt);
  EXPECT_EQ(EncodeTextLossy("caf\u00E9 \u20AC", kISOLatin1StringEncoding), "caf\xE9 ?");
  EXPECT_EQ(EncodeText("A\u20AC", kUnicodeStringEncoding), "\xFF\xFE\x41\x00\xAC\x20"s);
  EXPECT_EQ(EncodeText("A", kUTF32StringEncoding), "\xFF\xFE\0\0A\0\0\0"s);
  EXPECT_EQ(DecodeBytes(*EncodeText("A\u20AC", kUTF32StringEncoding), kUTF32StringEncoding),
            "A\u20AC");
  EXPECT_EQ(EncodeText("a\xC3(b", kUTF8StringEncoding), std::nullopt);
  EXPECT_EQ(EncodeTextLossy("a\xC3(b", kWindowsCP1252StringEncoding), "a?(b");
  EXPECT_EQ(EncodeTextLossy("x", kSymbolStringEncoding), std::nullopt);

  // Long texts stream through the converters in pieces.
  std::string text;
  for (int i = 0; i < 20000; ++i) text += "\u00E9\u20AC\u65E5";
  EXPECT_EQ(EncodeText(text, kShiftJISStringEncoding), std::nullopt);  // no é in Shift-JIS
  const auto utf16 = EncodeText(text, kUTF16BigEndianStringEncoding);
  ASSERT_TRUE(utf16.has_value());
  EXPECT_EQ(DecodeBytes(*utf16, kUTF16BigEndianStringEncoding), text);
}

TEST(Encodings, GuessesFromMarksThenUtf8ThenTheUserDefault) {
  struct Row {
    std::string bytes;
    std::string text;
    StringEncoding encoding;
  };
  const Row rows[] = {
      {"\xEF\xBB\xBFok", "ok", kUTF8StringEncoding},
      {"\xFF\xFE\x41\x00"s, "A", kUnicodeStringEncoding},
      {"\xFF\xFE\x00\x00\x41\x00\x00\x00"s, "A", kUTF32LittleEndianStringEncoding},
      {"\x00\x00\xFE\xFF\x00\x00\x00\x41"s, "A", kUTF32BigEndianStringEncoding},
      {"caf\xC3\xA9", "caf\u00E9", kUTF8StringEncoding},
      {"caf\xE9 \x80", "caf\u00E9 \u20AC", kWindowsCP1252StringEncoding},
      {"", "", kUTF8StringEncoding},
  };
  UserSettings settings;
  settings.defaultCStringEncoding = kWindowsCP1252StringEncoding;
  {
    folvant::testing::ScopedSettingsPin pin(settings);
    for (const Row& row : rows) {
      SCOPED_TRACE(row.bytes);
      const GuessedText guessed = DecodeBytesGuessingEncoding(row.bytes);
      EXPECT_EQ(guessed.text, row.text);
      EXPECT_EQ(guessed.encoding, row.encoding);
    }
  }
  settings.defaultCStringEncoding = kNEXTSTEPStringEncoding;  // no converter: Latin-1
  folvant::testing::ScopedSettingsPin pin(settings);
  const GuessedText guessed = DecodeBytesGuessingEncoding("caf\xE9 \x80");
  EXPECT_EQ(guessed.text, "caf\u00E9 \u0080");
  EXPECT_EQ(guessed.encoding, kISOLatin1StringEncoding);
}

}  // namespace
}  // namespace folvant::platform
