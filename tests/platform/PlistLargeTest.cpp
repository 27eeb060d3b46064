// Property lists of many megabytes, which the codec handles differently from small ones: the
// writer's tables and output are allocated in bulk, and files are decoded from a mapping.
// Each case checks the large path against the ordinary one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "folvant/platform/plist/PropertyList.h"

namespace folvant::plist {
namespace {

// A register-like tree: many dictionaries with the same keys, recurring and unique texts, and
// texts that agree in length and first eight bytes but differ later (which a cache of recent
// texts must keep apart: a wrong hit would store one for the other).
Value LargeTree(int count) {
  Array entries;
  entries.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    entries.emplace_back(Dictionary{{"number", i},
                                    {"amount", -0.25 * (i % 1000)},
                                    {"description", "payment " + std::to_string(i % 7)},
                                    {"toFrom", "payee number " + std::to_string(i)},
                                    {"note", i % 2 == 0 ? "abcdefgh-even" : "abcdefgh-odd!"},
                                    {"cleared", i % 3 == 0},
                                    {"text", "Caf\xC3\xA9 " + std::to_string(i % 50)}});
  }
  return Dictionary{{"entries", std::move(entries)}, {"name", "large"}};
}

TEST(PlistLargeTest, FilesAndDamageBehaveAsTheInMemoryPaths) {
  const Value tree = LargeTree(120'000);
  std::string bytes = Write(tree, Format::kBinary);
  ASSERT_GT(bytes.size(), std::size_t{4} << 20);  // large enough for the bulk paths
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("folvant_large_" + std::to_string(getpid()) + ".plist");
  const auto read_file = [&path](const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
    auto read = ReadFile(path);
    std::filesystem::remove(path);
    return read;
  };

  const auto from_file = read_file(bytes);
  ASSERT_TRUE(from_file.has_value()) << from_file.error().what;
  EXPECT_EQ(from_file.value(), tree);
  // Writing what was read gives the same bytes: shared objects were shared the same way.
  EXPECT_EQ(Write(from_file.value(), Format::kBinary), bytes);
  const auto from_xml = Read(Write(tree, Format::kXml));
  ASSERT_TRUE(from_xml.has_value());
  EXPECT_EQ(from_xml.value(), tree);

  // Point the top object outside the object table: the file fails as the bytes in memory do.
  for (std::size_t i = bytes.size() - 16; i < bytes.size() - 8; ++i) bytes[i] = '\xFF';
  const auto damaged_file = read_file(bytes);
  const auto damaged_memory = Read(bytes);
  ASSERT_FALSE(damaged_file.has_value());
  ASSERT_FALSE(damaged_memory.has_value());
  EXPECT_EQ(damaged_file.error().what, damaged_memory.error().what);
  EXPECT_EQ(damaged_file.error().offset, damaged_memory.error().offset);
}

}  // namespace
}  // namespace folvant::plist
