// A fixture that runs the folvant program as a user would, in a scratch folder per test.
#pragma once

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/TestSupport.h"

namespace folvant::testing {

namespace fs = std::filesystem;

struct CommandResult {
  int status;
  std::string out;
  std::string err;
};

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / (std::string("folvant-cli-") + info->name() + "-" +
                                        std::to_string(::getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  CommandResult Folvant(const std::string& args) {
    const fs::path out = dir_ / "stdout.txt", err = dir_ / "stderr.txt";
    const std::string command = std::string("cd '") + dir_.string() + "' && '" FOLVANT_BINARY "' " +
                                args + " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int raw = std::system(command.c_str());
    CommandResult run{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFileBytes(out.string()),
            ReadFileBytes(err.string())};
    return run;
  }

  std::string Book() const { return (dir_ / "book").string(); }

  fs::path dir_;
};

}  // namespace folvant::testing
