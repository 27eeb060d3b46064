// A fixture that runs the folvant program as a user would, in a scratch folder per test.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TestSupport.h"

namespace folvant::testing {

namespace fs = std::filesystem;

struct CommandResult {
  int status;
  std::string out;
  std::string err;
};

// Every value of `key` in a JSON text, in order (strings without their quotes).
inline std::vector<std::string> JsonList(const std::string& json, const std::string& key) {
  std::vector<std::string> values;
  const std::string needle = "\"" + key + "\": ";
  for (auto at = json.find(needle); at != std::string::npos; at = json.find(needle, at + 1)) {
    std::size_t begin = at + needle.size();
    const std::size_t end =
        json[begin] == '"' ? json.find('"', ++begin) : json.find_first_of(",}]\n", begin);
    values.push_back(json.substr(begin, end - begin));
  }
  return values;
}
// The same, joined by ", ".
inline std::string JsonValues(const std::string& json, const std::string& key) {
  std::string joined;
  const std::vector<std::string> values = JsonList(json, key);
  for (std::size_t i = 0; i < values.size(); ++i) joined += (i > 0 ? ", " : "") + values[i];
  return joined;
}

inline std::size_t LineCount(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() /
           (std::string("folvant-cli-") + info->name() + "-" + std::to_string(::getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  CommandResult Folvant(const std::string& args) {
    const fs::path out = dir_ / "stdout.txt", err = dir_ / "stderr.txt";
    const std::string command = std::string("cd '") + dir_.string() + "' && '" FOLVANT_BINARY "' " +
                                args + " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFileBytes(out.string()),
            ReadFileBytes(err.string())};
  }
  // On the book "book" with today pinned to 2026-06-30, a Tuesday.
  CommandResult Run(const std::string& args) {
    return Folvant("--book book --today 2026-06-30 " + args);
  }
  void CopySampleBook() {
    fs::copy(FOLVANT_SOURCE_DIR "/data/sample-book", dir_ / "book", fs::copy_options::recursive);
  }

  std::string Book() const { return (dir_ / "book").string(); }
  std::string BookFile(const std::string& name) const { return ReadFileBytes(Book() + "/" + name); }

  fs::path dir_;
};

}  // namespace folvant::testing
