// Reading and writing the large array of a top dictionary member by member: the result must
// be exactly what the whole-tree read and write give, in both encodings.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "folvant/platform/plist/PropertyList.h"
#include "tests/platform/PlistSample.h"

namespace folvant::plist {
namespace {

constexpr Format kFormats[] = {Format::kBinary, Format::kXml};

std::string Name(Format format) { return format == Format::kBinary ? "binary" : "XML"; }

Array Members() {
  return Array{1, "two", Dictionary{{"k", "v"}, {"n", -3}}, Array{}, "two", testing::RichSample()};
}

// What a streamed read saw: the dictionary and size when it started, and the members.
struct Seen {
  std::optional<Dictionary> rest;
  std::size_t size = 0;
  Array members;
  int starts = 0;
};

StreamedRead Collecting(Seen& seen, bool accept = true) {
  return {"entries", [&seen, accept](const Dictionary& rest, std::size_t size) -> MemberSink {
            ++seen.starts;
            seen.rest = rest;
            seen.size = size;
            if (!accept) return {};
            return [&seen](Value&& member) { seen.members.push_back(std::move(member)); };
          }};
}

TEST(PlistStreamTest, ReadHandsOverTheMembersInOrderAfterTheRestOfTheDictionary) {
  const Dictionary whole{{"name", "Checking"}, {"entries", Members()}, {"zlast", 3}};
  Dictionary rest = whole;
  rest.set("entries", Array{});
  for (const Format format : kFormats) {
    SCOPED_TRACE(Name(format));
    Seen seen;
    const auto read = Read(Write(whole, format), Collecting(seen));
    ASSERT_TRUE(read.has_value()) << read.error().what;
    EXPECT_EQ(*read, Value(rest));
    EXPECT_EQ(seen.starts, 1);
    // Keys after the array's are there when the members start coming.
    EXPECT_EQ(seen.rest, rest);
    EXPECT_EQ(seen.size, Members().size());
    // XML keeps dates to the second; the sample's dates are whole seconds.
    EXPECT_EQ(Value(seen.members), Value(Members()));

    // A sink that declines leaves the array in the dictionary.
    Seen declined;
    EXPECT_EQ(Read(Write(whole, format), Collecting(declined, false)).value(), Value(whole));
    EXPECT_EQ(declined.starts, 1);
  }
}

// A repeated key streams the array that a whole read keeps; nothing is streamed unless the top
// dictionary holds an array under the key.
TEST(PlistStreamTest, OtherShapesReadAsAWholeReadDoes) {
  Dictionary repeated{{"entries", Array{1}}};
  repeated.append("entries", Array{2, 3});
  const std::pair<Value, bool> cases[] = {{repeated, true},
                                          {Dictionary{{"entries", "not an array"}}, false},
                                          {Dictionary{{"other", Array{1}}}, false},
                                          {Array{Dictionary{{"entries", Array{1}}}}, false}};
  for (const Format format : kFormats) {
    for (const auto& [value, streams] : cases) {
      SCOPED_TRACE(Name(format) + " " + ::testing::PrintToString(streams));
      const std::string bytes = Write(value, format);
      const Value whole = Read(bytes).value();
      Seen seen;
      EXPECT_EQ(Read(bytes, Collecting(seen)).value(),
                streams ? Value(Dictionary{{"entries", Array{}}}) : whole);
      EXPECT_EQ(seen.starts, streams ? 1 : 0);
      if (streams) {
        EXPECT_EQ(Value(seen.members), *whole.asDictionary()->find("entries"));
      }
    }
  }
}

TEST(PlistStreamTest, ADamagedMemberFailsTheReadAsAWholeReadFails) {
  // The last member is a string whose bytes end up cut off by the trailer.
  std::string bytes = Write(Dictionary{{"entries", Array{1, "x"}}}, Format::kBinary);
  const std::size_t marker = bytes.find("Qx");
  ASSERT_NE(marker, std::string::npos);
  bytes[marker] = '\x5f';  // a long count that is not there
  const auto whole = Read(bytes);
  ASSERT_FALSE(whole.has_value());
  Seen seen;
  const auto streamed = Read(bytes, Collecting(seen));
  ASSERT_FALSE(streamed.has_value());
  EXPECT_EQ(streamed.error().offset, whole.error().offset);
}

TEST(PlistStreamTest, WriteGivesTheBytesOfTheWholeTree) {
  Array members = Members();
  members.insert(members.begin() + 2, Value());  // a none member is left out, as in a tree
  Dictionary whole{{"name", "Checking"}, {"entries", members}, {"zlast", "two"}};
  Dictionary placeholder = whole;
  placeholder.set("entries", Array{"ignored"});
  for (const Format format : kFormats) {
    SCOPED_TRACE(Name(format));
    const auto member = [&members](std::size_t i) { return members[i]; };
    EXPECT_EQ(Write(placeholder, format, {"entries", members.size(), member}),
              Write(whole, format));
  }
  // Without the key, the stream is not used.
  const Dictionary other{{"other", 1}};
  EXPECT_EQ(Write(other, Format::kBinary, {"entries", 1, [](std::size_t) { return Value(2); }}),
            Write(other, Format::kBinary));
}

}  // namespace
}  // namespace folvant::plist
