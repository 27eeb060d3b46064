// Property lists of many megabytes, which the codec handles differently from small ones: the
// writer's tables and output are allocated in bulk, and files are decoded from a mapping.
// Each case checks the large path against the ordinary one.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "folvant/platform/plist/PropertyList.h"

namespace folvant::plist {
namespace {

// A register-like tree: many dictionaries with the same keys, recurring and unique texts, and
// texts that agree in length and first bytes but differ later (which a cache of recent texts
// must keep apart).
Value LargeTree(int count) {
  Array entries;
  entries.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    entries.emplace_back(Dictionary{
        {"number", i},
        {"amount", -0.25 * (i % 1000)},
        {"description", "payment " + std::to_string(i % 7)},
        {"toFrom", "payee number " + std::to_string(i)},
        {"note", i % 2 == 0 ? "abcdefgh-even" : "abcdefgh-odd!"},
        {"cleared", i % 3 == 0},
        {"text", "Caf\xC3\xA9 " + std::to_string(i % 50)}});
  }
  return Dictionary{{"entries", std::move(entries)}, {"name", "large"}};
}

class PlistLargeTest : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(path_); }
  std::filesystem::path path_ = std::filesystem::temp_directory_path() /
                                ("folvant_large_" + std::to_string(getpid()) + ".plist");

  void WriteBytes(const std::string& bytes) {
    std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
};

TEST_F(PlistLargeTest, BinaryRoundTripThroughAFileMatchesTheInMemoryPaths) {
  const Value tree = LargeTree(120'000);
  const std::string bytes = Write(tree, Format::kBinary);
  ASSERT_GT(bytes.size(), std::size_t{4} << 20);  // large enough for the bulk paths
  WriteBytes(bytes);

  const auto from_file = ReadFile(path_);
  ASSERT_TRUE(from_file.has_value()) << from_file.error().what;
  EXPECT_EQ(from_file.value(), tree);
  // Writing what was read gives the same bytes: shared objects were shared the same way.
  EXPECT_EQ(Write(from_file.value(), Format::kBinary), bytes);
  // And the XML form of the same tree reads back equal.
  const auto from_xml = Read(Write(tree, Format::kXml));
  ASSERT_TRUE(from_xml.has_value());
  EXPECT_EQ(from_xml.value(), tree);
}

TEST_F(PlistLargeTest, TextsThatLookAlikeStayDistinct) {
  // Same length, same first eight bytes: a wrong cache hit would store one for the other.
  Array texts;
  for (int i = 0; i < 2000; ++i) {
    texts.emplace_back(std::string("prefix00") + static_cast<char>('a' + i % 26));
    texts.emplace_back(std::string("prefix00") + static_cast<char>('A' + i % 26));
  }
  const Value tree = Dictionary{{"texts", texts}};
  const auto back = Read(Write(tree, Format::kBinary));
  ASSERT_TRUE(back.has_value());
  EXPECT_EQ(back.value(), tree);
}

TEST_F(PlistLargeTest, DamagedLargeFileFailsAsTheSameBytesInMemoryDo) {
  std::string bytes = Write(LargeTree(120'000), Format::kBinary);
  // Point the top object outside the object table.
  for (std::size_t i = bytes.size() - 16; i < bytes.size() - 8; ++i) bytes[i] = '\xFF';
  WriteBytes(bytes);
  const auto from_file = ReadFile(path_);
  const auto from_memory = Read(bytes);
  ASSERT_FALSE(from_file.has_value());
  ASSERT_FALSE(from_memory.has_value());
  EXPECT_EQ(from_file.error().what, from_memory.error().what);
  EXPECT_EQ(from_file.error().offset, from_memory.error().offset);
}

}  // namespace
}  // namespace folvant::plist
