// Property lists written by other programs: each file must load (and survive our writers),
// or be refused with a message; a few values are checked where the file tests an edge.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/platform/plist/PropertyList.h"

namespace folvant::plist {
namespace {

namespace fs = std::filesystem;

const fs::path kCorpus = fs::path(FOLVANT_CORPUS_DIR) / "plist";

// The value at a '/'-separated path of dictionary keys, or none.
Value At(const Value& value, std::string_view path) {
  const Value* at = &value;
  while (at != nullptr && !path.empty()) {
    const std::size_t slash = std::min(path.find('/'), path.size());
    const Dictionary* dictionary = at->asDictionary();
    at = dictionary ? dictionary->find(path.substr(0, slash)) : nullptr;
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return at ? *at : Value();
}

struct CorpusFile {
  std::string name;
  std::vector<std::pair<std::string, Value>> values;  // path → value, for files that load
  std::string refusal{};  // a part of the message refusing the file; empty when it must load
};

const std::vector<CorpusFile>& Corpus() {
  using I = std::numeric_limits<std::int64_t>;
  const auto uint64_max = std::numeric_limits<std::uint64_t>::max();
  static const std::vector<CorpusFile> files = {
      {"biplist-empty_file.plist", {}, "the property list is empty"},
      {"biplist-fuzz-date_seconds_is_nan.plist", {}, "does not fit the offset table"},
      {"biplist-large_int_limits.plist",
       {{"Max 8 Byte Signed Integer", I::max()},
        {"Max 8 Byte Unsigned Integer", uint64_max},
        {"Min 8 Byte Signed Integer", I::min()}}},
      {"biplist-simple_binary.plist",
       {{"unicodeItem", "abcℬdefℳ"}, {"numberItem", -10000000000000000LL}, {"dataItem", Data{}}}},
      {"biplist-small_date.plist", {{"MyDate", Date{-63114076800}}}},
      {"biplist-small_real.plist", {{"4 byte real", 0.5}}},
      {"biplist-sorted.plist", {}, "set object at 11 is not supported"},
      {"dd-plist-github-issue76-xml.plist", {}, "<integer> \"42xy\" is not a 64-bit integer"},
      {"dd-plist-infinity-binary.plist", {{"a", HUGE_VAL}, {"b", -HUGE_VAL}}},
      {"dd-plist-issue22-emoji.plist", {{"emojiString", "Test Test, 😰❔👍👎🔥"}}},
      {"dd-plist-test-gzipinputstream-issue.plist", {{"aBoolean2", true}, {"aNumber", 3}}},
      {"dd-plist-test-xml-utf-16le-bom.plist",
       {{"key&B", "value&B ✅"}, {"array", Array{true, false, 87, 3.14159}}}},
      {"dd-plist-test1.plist",
       {{"data", Data{0, 0, 0, 4, 16, 65, 8, 32, 130}}, {"date", Date{344164890}}}},
      {"dd-plist-testNegative-bin.plist",
       {{"number", -1234},
        {"number2", I::max()},
        {"number4", I::min()},
        {"number3", -3.12312423423}}},
      {"libplist-7.plist", {{"Time3", Date{-4165314208}}, {"Time4", Date{6268237811}}}},
      {"libplist-amp.plist", {}, "entity reference without a closing ';'"},
      {"libplist-entities.plist",
       {{"some test entitites/copyright", "©"},
        {"some test entitites/multiple entitites", "⼠⼡⼢"},
        {"one byte entity/one byte entity with text before & after", "a@z"}}},
      {"libplist-off8bytes.bplist", {{"A", "B"}}},
      {"rust-plist-binary.plist",
       {{"BiggestNumber", uint64_max}, {"EmptyDictionary", Dictionary{}}}},
      {"rust-plist-binary_circular_array.plist", {}, "does not fit the offset table"},
      {"rust-plist-binary_zero_offset_size.plist", {}, "offset size 0 is not 1, 2, 4 or 8"},
      {"rust-plist-utf16_bplist.plist", {{"name", "★ or better"}}},
      {"rust-plist-xml.plist",
       {{"HexademicalNumber", 0xDEADBEEF},
        {"Lines", Array{"It is a tale told by an idiot,     ",
                        "Full of sound and fury, signifying nothing."}},
        {"Pets", "A cat & a dog."}}},
      {"rust-plist-xml_error.plist", {}, "malformed XML"},
  };
  return files;
}

TEST(PlistCorpus, EveryFileLoadsOrIsRefusedWithAMessage) {
  if (!fs::is_directory(kCorpus)) GTEST_SKIP() << "no corpus at " << kCorpus;
  std::size_t seen = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(kCorpus)) {
    const std::string name = entry.path().filename().string();
    SCOPED_TRACE(name);
    const auto row = std::find_if(Corpus().begin(), Corpus().end(),
                                  [&name](const CorpusFile& file) { return file.name == name; });
    ASSERT_NE(row, Corpus().end()) << "a new corpus file: decide whether it must load";
    ++seen;
    const Expected<Value, ReadError> read = ReadFile(entry.path());
    if (!row->refusal.empty()) {
      ASSERT_FALSE(read);
      EXPECT_NE(read.error().what.find(row->refusal), std::string::npos) << read.error().what;
      continue;
    }
    ASSERT_TRUE(read) << read.error().what << " at " << read.error().offset;
    for (const auto& [path, expected] : row->values) EXPECT_EQ(At(*read, path), expected) << path;
    EXPECT_EQ(Read(Write(*read, Format::kBinary)).value(), *read);
    // XML keeps whole seconds, so its round trip is checked on the XML text.
    const std::string xml = Write(*read, Format::kXml);
    EXPECT_EQ(Write(Read(xml).value(), Format::kXml), xml);
  }
  EXPECT_EQ(seen, Corpus().size());
}

}  // namespace
}  // namespace folvant::plist
