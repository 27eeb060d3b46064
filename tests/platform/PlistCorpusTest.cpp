// Property lists written by other programs: each file must load (and survive our writers),
// or be refused with a message; a few values are checked where the file tests an edge.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <string>

#include "folvant/platform/plist/PropertyList.h"

namespace folvant::plist {
namespace {

namespace fs = std::filesystem;

const fs::path kCorpus = fs::path(FOLVANT_CORPUS_DIR) / "plist";

// XML keeps whole seconds: the value a date has after an XML round trip.
Value WithWholeSecondDates(const Value& value) {
  if (const std::optional<Date> date = value.asDate()) {
    return Date{std::floor(date->secondsSinceReferenceDate)};
  }
  if (const Array* array = value.asArray()) {
    Array copy;
    for (const Value& member : *array) copy.push_back(WithWholeSecondDates(member));
    return copy;
  }
  if (const Dictionary* dictionary = value.asDictionary()) {
    Dictionary copy;
    for (const auto& [key, member] : *dictionary) copy.set(key, WithWholeSecondDates(member));
    return copy;
  }
  return value;
}

const Value& At(const Value& value, const std::string& key) {
  static const Value kMissing;
  const Dictionary* dictionary = value.asDictionary();
  const Value* found = dictionary ? dictionary->find(key) : nullptr;
  return found ? *found : kMissing;
}

struct CorpusFile {
  // Empty when the file must load; else a part of the message refusing it.
  std::string refusal;
  std::function<void(const Value&)> check;
};

const std::map<std::string, CorpusFile>& Corpus() {
  using L = std::numeric_limits<std::int64_t>;
  static const std::map<std::string, CorpusFile> files = {
      {"biplist-empty_file.plist", {"the property list is empty", {}}},
      {"biplist-fuzz-date_seconds_is_nan.plist", {"does not fit the offset table", {}}},
      {"biplist-large_int_limits.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "Max 8 Byte Signed Integer"), Value(L::max()));
         EXPECT_EQ(At(v, "Max 8 Byte Unsigned Integer"),
                   Value(std::numeric_limits<std::uint64_t>::max()));
         EXPECT_EQ(At(v, "Min 8 Byte Signed Integer"), Value(L::min()));
       }}},
      {"biplist-simple_binary.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "unicodeItem"), Value("abcℬdefℳ"));
         EXPECT_EQ(At(v, "numberItem"), Value(-10000000000000000LL));
         EXPECT_EQ(At(v, "dataItem"), Value(Data{}));
       }}},
      {"biplist-small_date.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "MyDate"), Value(Date{-63114076800}));
       }}},
      {"biplist-small_real.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "4 byte real"), Value(0.5));
       }}},
      {"biplist-sorted.plist", {"set object at 11 is not supported", {}}},
      {"dd-plist-github-issue76-xml.plist", {"<integer> \"42xy\" is not a 64-bit integer", {}}},
      {"dd-plist-infinity-binary.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "a"), Value(HUGE_VAL));
         EXPECT_EQ(At(v, "b"), Value(-HUGE_VAL));
       }}},
      {"dd-plist-issue22-emoji.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "emojiString"), Value("Test Test, 😰❔👍👎🔥"));
       }}},
      {"dd-plist-test-gzipinputstream-issue.plist", {"", [](const Value& v) {
         EXPECT_EQ(v.asDictionary()->size(), 8u);
         EXPECT_TRUE(At(v, "aBoolean2").isBoolean());
       }}},
      {"dd-plist-test-xml-utf-16le-bom.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "key&B"), Value("value&B ✅"));
         EXPECT_EQ(At(v, "array"), Value(Array{true, false, 87, 3.14159}));
       }}},
      {"dd-plist-test1.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "data"), Value(Data{0, 0, 0, 4, 16, 65, 8, 32, 130}));
         EXPECT_EQ(At(v, "date"), Value(Date{344164890}));
       }}},
      {"dd-plist-testNegative-bin.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "number"), Value(-1234));
         EXPECT_EQ(At(v, "number2"), Value(L::max()));
         EXPECT_EQ(At(v, "number4"), Value(L::min()));
         EXPECT_EQ(At(v, "number3"), Value(-3.12312423423));
       }}},
      {"libplist-7.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "Time3"), Value(Date{-4165314208}));
         EXPECT_EQ(At(v, "Time4"), Value(Date{6268237811}));
       }}},
      {"libplist-amp.plist", {"entity reference without a closing ';'", {}}},
      {"libplist-entities.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(At(v, "some test entitites"), "copyright"), Value("©"));
         EXPECT_EQ(At(At(v, "some test entitites"), "multiple entitites"), Value("⼠⼡⼢"));
       }}},
      {"libplist-off8bytes.bplist", {"", [](const Value& v) {
         EXPECT_EQ(v, Value(Dictionary{{"A", "B"}}));
       }}},
      {"rust-plist-binary.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "BiggestNumber"), Value(std::numeric_limits<std::uint64_t>::max()));
         EXPECT_EQ(At(v, "EmptyDictionary"), Value(Dictionary{}));
       }}},
      {"rust-plist-binary_circular_array.plist", {"does not fit the offset table", {}}},
      {"rust-plist-binary_zero_offset_size.plist", {"offset size 0 is not 1, 2, 4 or 8", {}}},
      {"rust-plist-utf16_bplist.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "name"), Value("★ or better"));
       }}},
      {"rust-plist-xml.plist", {"", [](const Value& v) {
         EXPECT_EQ(At(v, "HexademicalNumber"), Value(0xDEADBEEF));
         EXPECT_EQ(At(v, "Lines"), Value(Array{"It is a tale told by an idiot,     ",
                                               "Full of sound and fury, signifying nothing."}));
         EXPECT_EQ(At(v, "Pets"), Value("A cat & a dog."));
       }}},
      {"rust-plist-xml_error.plist", {"malformed XML", {}}},
  };
  return files;
}

TEST(PlistCorpus, EveryFileLoadsOrIsRefusedWithAMessage) {
  if (!fs::is_directory(kCorpus)) GTEST_SKIP() << "no corpus at " << kCorpus;
  std::size_t seen = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(kCorpus)) {
    const std::string name = entry.path().filename().string();
    SCOPED_TRACE(name);
    const auto row = Corpus().find(name);
    ASSERT_NE(row, Corpus().end()) << "a new corpus file: decide whether it must load";
    ++seen;
    const Expected<Value, ReadError> read = ReadFile(entry.path());
    if (!row->second.refusal.empty()) {
      ASSERT_FALSE(read);
      EXPECT_NE(read.error().what.find(row->second.refusal), std::string::npos)
          << read.error().what;
      continue;
    }
    ASSERT_TRUE(read) << read.error().what << " at " << read.error().offset;
    row->second.check(*read);
    EXPECT_EQ(Read(Write(*read, Format::kBinary)).value(), *read);
    EXPECT_EQ(Read(Write(*read, Format::kXml)).value(), WithWholeSecondDates(*read));
  }
  EXPECT_EQ(seen, Corpus().size());
}

}  // namespace
}  // namespace folvant::plist
