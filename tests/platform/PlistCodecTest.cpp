#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "folvant/platform/plist/PropertyList.h"
#include "tests/platform/PlistSample.h"
#include "tests/support/TestSupport.h"

namespace folvant::plist {
namespace {

using namespace std::string_literals;

std::string Utf16(std::u16string_view text, bool little_endian, bool bom) {
  std::string bytes = bom ? (little_endian ? "\xFF\xFE" : "\xFE\xFF") : "";
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += little_endian ? std::string{low, high} : std::string{high, low};
  }
  return bytes;
}

Value Nested(int depth) {
  Value value = Array{};
  for (int i = 1; i < depth; ++i) {
    Array outer;
    outer.push_back(std::move(value));
    value = std::move(outer);
  }
  return value;
}

// The files in tests/data/plist were checked by hand against Apple's layout (tabs, sorted keys,
// base64 lines as plistlib cuts them) and load in plistlib and libplist; output must not drift.
TEST(PlistWriter, WritesTheReviewedFilesByteForByteAndReadsThemBack) {
  const Value sample = testing::RichSample();
  for (const auto& [format, file] : {std::pair{Format::kXml, "rich-sample.xml"},
                                     std::pair{Format::kBinary, "rich-sample.bplist"}}) {
    SCOPED_TRACE(file);
    const std::string bytes = Write(sample, format);
    EXPECT_EQ(bytes, ::folvant::testing::ReadFileBytes(FOLVANT_TEST_DATA_DIR "/plist/"s + file));
    const Expected<Value, ReadError> read = Read(bytes);
    ASSERT_TRUE(read) << read.error().what << " at " << read.error().offset;
    EXPECT_EQ(*read, sample);
    // Equality does not see the sign of zero.
    EXPECT_TRUE(std::signbit(*(*read->asDictionary()->find("reals")->asArray())[2].asReal()));
  }
  // Control characters XML would lose become references; none values are left out.
  EXPECT_NE(Write(Dictionary{{"a", "x\r\x01"}, {"b", Value()}}, Format::kXml)
                .find("<dict>\n\t<key>a</key>\n\t<string>x&#13;&#1;</string>\n</dict>"),
            std::string::npos);
}

TEST(PlistXmlWriter, DatesKeepWholeSecondsAndExpandYearsBeyondFourDigits) {
  struct Row {
    double seconds;
    const char* text;
    double read_back;
  };
  const Row rows[] = {
      {-0.25, "2000-12-31T23:59:59Z", -1},
      {-63114076800, "0000-12-30T00:00:00Z", -63114076800},
      {-1e12, "-29688-04-06T22:13:20Z", -1e12},
      {1e12, "+33689-09-27T01:46:40Z", 1e12},
      {1e300, "+33689-09-27T01:46:40Z", 1e12},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const std::string xml = Write(Value(Date{row.seconds}), Format::kXml);
    EXPECT_NE(xml.find("<date>"s + row.text), std::string::npos) << xml;
    EXPECT_EQ(Read(xml).value().asDate().value().secondsSinceReferenceDate, row.read_back);
  }
}

TEST(PlistXmlReader, AcceptsWhatOtherWritersProduce) {
  struct Row {
    std::string xml;
    Value expected;
  };
  const Row rows[] = {
      {"<plist><string>a&amp;&lt;&gt;&quot;&apos;&#233;&#x1F642;&#13;</string></plist>",
       "a&<>\"'é🙂\r"},
      {"<plist><string>x<![CDATA[<&amp;>]]>y<!-- note -->z</string></plist>", "x<&amp;>yz"},
      {"<plist><string>  </string></plist>", "  "},
      {"<plist><string>a\r\nb\rc</string></plist>", "a\nb\nc"},
      {"<?xml version=\"1.0\"?><!DOCTYPE plist SYSTEM \"x\"><?pi?><plist version=\"1.0\">\n"
       "<dict>\n\t<key>k</key>\n\t<integer> -42 </integer>\n</dict>\n</plist>",
       Dictionary{{"k", -42}}},
      {"<dict><key>a</key><integer>1</integer><key>b</key><true/><key>a</key><integer>2</integer>"
       "</dict>",
       Dictionary{{"a", 2}, {"b", true}}},
      {"<array><integer>0xDEADBEEF</integer><integer>18446744073709551615</integer>"
       "<integer>-9223372036854775808</integer><integer>+7</integer></array>",
       Array{3735928559LL, std::numeric_limits<std::uint64_t>::max(),
             std::numeric_limits<std::int64_t>::min(), 7}},
      {"<array><real>+infinity</real><real>-inf</real><real>NaN</real><real>1E+16</real>"
       "<real>.5</real><real>5e-324</real><real>7</real></array>",
       Array{HUGE_VAL, -HUGE_VAL, std::nan(""), 1e16, 0.5, 5e-324, 7.0}},
      {"<array><date>2008-02-29T12:00:00Z</date><date>2008Z</date><date>2008-03Z</date>"
       "<date>-0001-01-01T00:00:00Z</date></array>",
       Array{Date{225979200}, Date{220838400}, Date{226022400}, Date{-63177062400}}},
      {"<array><data> AAAA\n\tBBBB CC\nCC </data><data>AQ</data><data>AQ==</data><data/>"
       "<string/><array/><dict/></array>",
       Array{Data{0, 0, 0, 4, 16, 65, 8, 32, 130}, Data{1}, Data{1}, Data{}, "", Array{},
             Dictionary{}}},
      {"\xEF\xBB\xBF<plist><string>bom</string></plist>", "bom"},
      {Utf16(u"<plist><string>é🙂</string></plist>", true, true), "é🙂"},
      {Utf16(u"<plist><string>é🙂</string></plist>", false, true), "é🙂"},
      {Utf16(u"<plist><string>no mark</string></plist>", true, false), "no mark"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.xml);
    const Expected<Value, ReadError> read = Read(row.xml);
    ASSERT_TRUE(read) << read.error().what << " at " << read.error().offset;
    EXPECT_EQ(*read, row.expected);
  }
}

struct ErrorRow {
  std::string bytes;
  std::string what;  // a part of the message
  std::size_t offset;
};

void ExpectErrors(const std::vector<ErrorRow>& rows) {
  for (const ErrorRow& row : rows) {
    SCOPED_TRACE(row.what);
    const Expected<Value, ReadError> read = Read(row.bytes);
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().what.find(row.what), std::string::npos) << read.error().what;
    EXPECT_EQ(read.error().offset, row.offset);
  }
}

TEST(PlistXmlReader, RefusesMalformedTextSayingWhatAndWhere) {
  ExpectErrors({
      {"", "empty", 0},
      {"  {a = b;}", "not a property list", 0},
      {"<plist><dict><key>a</key></dict></plist>", "<key> \"a\" has no value", 13},
      {"<plist><foo/></plist>", "unknown element <foo>", 7},
      {"<plist><dict><key>a</key><true/><string>y</string></dict></plist>",
       "<string> where <dict> expects a <key>", 32},
      {"<plist><integer>42xy</integer></plist>", "<integer> \"42xy\"", 7},
      {"<plist><integer>18446744073709551616</integer></plist>", "not a 64-bit integer", 7},
      {"<plist><integer>-9223372036854775809</integer></plist>", "not a 64-bit integer", 7},
      {"<plist><real>1.5.2</real></plist>", "<real> \"1.5.2\" is not a number", 7},
      {"<plist><date>2008-02-30T00:00:00Z</date></plist>", "is not a date", 7},
      {"<plist><date>2008-02-29T12:00:00</date></plist>", "is not a date", 7},
      {"<plist><data>AB*D</data></plist>", "not base64 at character 2", 7},
      {"<plist><string>a&amp</string></plist>", "without a closing ';'", 16},
      {"<plist><string>&bogus;</string></plist>", "unknown entity &bogus;", 15},
      {"<plist><string>&#xD800;</string></plist>", "is not a character", 15},
      {"<plist><array>junk<true/></array></plist>", "text where <array>", 14},
      {"<plist><true>x</true></plist>", "text where <true>", 13},
      {"<plist><string><b/></string></plist>", "element <b> inside <string>", 15},
      {"<plist><true/><false/></plist>", "more than one value", 14},
      {"<plist> </plist>", "<plist> holds no value", 0},
      {"<plist><string>x</string></plist><plist/>", "second root element", 33},
      {"<plist><dict>", "malformed XML", 12},
      {"<plist><string>\xC3(</string></plist>", "not UTF-8", 15},
      {"\xEF\xBB\xBF<plist><foo/></plist>", "unknown element <foo>", 10},
      {Utf16(u"<plist><array><string>é🙂</string><foo/></array></plist>", true, true),
       "unknown element", 2 + 2 * 34},
      {Utf16(u"<plist>\xD800</plist>", true, true), "unpaired surrogate", 2 + 2 * 7},
  });
}

TEST(PlistReader, NestingIsCappedInBothFormats) {
  for (const Format format : {Format::kXml, Format::kBinary}) {
    SCOPED_TRACE(format == Format::kXml ? "xml" : "binary");
    EXPECT_TRUE(Read(Write(Nested(kMaxNestingDepth), format)));
    const Expected<Value, ReadError> deep = Read(Write(Nested(kMaxNestingDepth + 1), format));
    ASSERT_FALSE(deep);
    EXPECT_EQ(deep.error().what, "arrays and dictionaries nest too deeply");
  }
}

// A binary property list from hand-made objects, with 1-byte offsets and references.
std::string Assemble(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table.push_back(static_cast<char>(bytes.size()));
    bytes += object;
  }
  const auto table_offset = static_cast<char>(bytes.size());
  bytes += table + std::string(6, '\0') + "\x01\x01"s + std::string(7, '\0') +
           static_cast<char>(objects.size()) + std::string(15, '\0') + table_offset;
  return bytes;
}

TEST(PlistBinaryReader, RefusesDamageSayingWhatAndWhere) {
  // {"a": [1, "x"]}: dict at 8, "a" at 11, array at 13, 1 at 16, "x" at 18, offset table at
  // 20, trailer at 25 (offset size at 31, reference size 32, count 33, top 41, table 49).
  const std::string good = Write(Dictionary{{"a", Array{1, "x"}}}, Format::kBinary);
  ASSERT_EQ(good.size(), 57u);
  const auto patched = [&good](std::size_t at, std::string bytes) {
    std::string damaged = good;
    damaged.replace(at, bytes.size(), bytes);
    return damaged;
  };
  const auto single = [](const Value& value, std::size_t at, std::string bytes) {
    std::string damaged = Write(value, Format::kBinary);
    damaged.replace(at, bytes.size(), bytes);
    return damaged;
  };
  ExpectErrors({
      {good.substr(0, 41), "too short", 0},
      {"bplist01" + good.substr(8), "version \"bplist01\" is not supported", 0},
      {patched(31, "\x03"), "offset size 3", 31},
      {patched(32, "\x00"s), "object reference size 0", 32},
      {patched(40, "\x00"s), "object count 0", 33},
      {patched(40, "\x06"), "object count 6 does not fit", 33},
      {patched(48, "\x05"), "top object 5 is not among the 5 objects", 41},
      {patched(56, "\x19"), "offset table at 25 is outside the file", 49},
      {patched(22, "\x19"), "object 2 has offset 25, outside the objects", 22},
      {patched(20, "\x02"), "object 0 has offset 2", 20},
      {patched(15, "\x07"), "reference to object 7 of 5", 15},
      {patched(14, "\x02"), "object 2 contains itself", 13},
      {patched(10, "\x00"s), "object 0 contains itself", 8},
      {patched(9, "\x03"), "dictionary key at 16 is not a string", 16},
      {patched(16, "\x70"), "unknown object marker 0x70 at 16", 16},
      {patched(16, "\x00"s), "null object at 16 is not a property-list value", 16},
      {patched(16, "\x0F"), "fill byte at 16", 16},
      {patched(16, "\x80"), "UID object at 16", 16},
      {patched(13, "\xC2"), "set object at 13 is not supported", 13},
      {patched(16, "\x15"), "integer object at 16 has a bad size", 16},
      {patched(16, "\x21"), "real object at 16 has a bad size", 16},
      {patched(18, "\x5E"), "object at 18 has a count of 14", 18},
      {patched(18, "\x5F\x51"), "object at 18 has a malformed count", 18},
      {patched(18, "\x51\xFF"), "string object at 18 is not ASCII", 18},
      {single(Date{1}, 9, "\x7F\xF8"s + std::string(6, '\0')), "date object at 8 is not a date", 8},
      {single(Date{1}, 9, "\x42\x70"s + std::string(6, '\0')), "date object at 8 is not a date", 8},
      {single(std::numeric_limits<std::uint64_t>::max(), 16, "\x01"), "does not fit in 64 bits", 8},
      {single("é", 9, "\xD8\x00"s), "string object at 8 is not valid UTF-16", 8},
  });
}

TEST(PlistBinaryReader, ReadsSharedObjectsButRefusesExplosiveSharing) {
  // The writer stores one string for all the uses.
  const std::string shared =
      Write(Array(1000, Value("one text used a thousand times")), Format::kBinary);
  EXPECT_LT(shared.size(), 1200u);
  const Expected<Value, ReadError> read = Read(shared);
  ASSERT_TRUE(read);
  EXPECT_EQ(*read, Value(Array(1000, Value("one text used a thousand times"))));

  // Forty arrays, each holding the next one twice: 2^40 leaves from a few hundred bytes.
  std::vector<std::string> objects;
  for (char i = 1; i <= 40; ++i) objects.push_back("\xA2"s + i + i);
  objects.push_back("\x51x");
  const Expected<Value, ReadError> bomb = Read(Assemble(objects));
  ASSERT_FALSE(bomb);
  EXPECT_EQ(bomb.error().what, "shared objects expand far beyond the size of the file");
}

TEST(PlistFile, NamesTheFileThatCannotBeRead) {
  const std::filesystem::path missing = std::filesystem::path(::testing::TempDir()) / "no.plist";
  const Expected<Value, ReadError> none = ReadFile(missing),
                                   folder = ReadFile(::testing::TempDir());
  ASSERT_FALSE(none);
  ASSERT_FALSE(folder);
  EXPECT_EQ(none.error().what, "cannot read " + missing.string() + ": No such file or directory");
  EXPECT_NE(folder.error().what.find("Is a directory"), std::string::npos) << folder.error().what;
}

}  // namespace
}  // namespace folvant::plist
