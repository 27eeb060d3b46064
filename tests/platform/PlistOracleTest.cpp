// Our property lists against two independent implementations: python3's plistlib and
// libplist's plistutil. Each test skips when its tool is not installed (CI installs both).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "folvant/platform/plist/PropertyList.h"
#include "tests/platform/PlistSample.h"

namespace folvant::plist {
namespace {

namespace fs = std::filesystem;

// The Python twin of testing::RichSample(), and a comparison that tells -0.0 from 0.0 and
// True from 1, which Python's == does not.
constexpr const char* kPlistlibScript = R"PY(
import datetime, math, plistlib, sys

def sample():
    nested = {"k": "v", "n": 1}
    return {
        "integers": [0, 1, -1, 255, 256, 65535, 65536, 4294967295, 4294967296, 2**63 - 1,
                     -2**63, 2**64 - 1, 2**63],
        "reals": [0.1, 1e-300, -0.0, 1.7976931348623157e308, 5e-324, 123456789.125, -2.5,
                  1e16, 1.0 / 3, 100.0, math.inf, -math.inf, math.nan],
        "booleans": [True, False],
        "strings": ["", "plain", "Grüße aus Köln", "日本語のテキスト", "Ελληνικά", "עברית",
                    "العربية", "🙂 emoji 👍🏽", "<&>\"'", "  spaces  ", "tab\there\nnewline",
                    "repeated", "repeated"],
        "data": [b"", bytes([0, 1, 2, 255]), bytes((i * 7) & 255 for i in range(200))],
        "dates": [datetime.datetime(2001, 1, 1), datetime.datetime(2008, 2, 29, 12),
                  datetime.datetime(1, 1, 1), datetime.datetime(1869, 1, 3, 8, 16, 32),
                  datetime.datetime(2199, 8, 20, 1, 10, 11)],
        "nested": [[], {}, [[dict(nested)]], dict(nested)],
        "key with <&> and ünïcode": "value",
        "repeated": "repeated",
    }

def same(a, b):
    if type(a) is not type(b):
        return False
    if isinstance(a, float):
        return (math.isnan(a) and math.isnan(b)) or (a == b and math.copysign(1, a) == math.copysign(1, b))
    if isinstance(a, dict):
        return a.keys() == b.keys() and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(same(x, y) for x, y in zip(a, b))
    return a == b

if sys.argv[1] == "check":
    with open(sys.argv[2], "rb") as f:
        value = plistlib.load(f)
    print("same" if same(value, sample()) else "differs: " + repr(value))
else:
    fmt = plistlib.FMT_XML if sys.argv[3] == "xml" else plistlib.FMT_BINARY
    with open(sys.argv[2], "wb") as f:
        plistlib.dump(sample(), f, fmt=fmt)
)PY";

bool HaveCommand(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a command and returns its standard output.
std::string Capture(const std::string& command) {
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
  std::string output;
  if (!pipe) return output;
  char buffer[4096];
  for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0;) {
    output.append(buffer, got);
  }
  return output;
}

class PlistOracle : public ::testing::Test {
 protected:
  void SetUp() override {
    directory_ = fs::path(::testing::TempDir()) /
                 ("folvant-plist-oracle-" +
                  std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::create_directories(directory_);
    std::ofstream(directory_ / "oracle.py") << kPlistlibScript;
  }
  void TearDown() override { fs::remove_all(directory_); }

  fs::path WriteOurs(Format format) const {
    const fs::path path = directory_ / (format == Format::kXml ? "ours.xml" : "ours.bin");
    std::ofstream(path, std::ios::binary) << Write(testing::RichSample(), format);
    return path;
  }
  std::string Python(const std::string& arguments) const {
    return Capture("python3 '" + (directory_ / "oracle.py").string() + "' " + arguments);
  }

  static void ExpectSample(const fs::path& path) {
    const Expected<Value, ReadError> read = ReadFile(path);
    ASSERT_TRUE(read) << read.error().what << " at " << read.error().offset;
    EXPECT_EQ(*read, testing::RichSample());
  }

  fs::path directory_;
};

const char* Name(Format format) { return format == Format::kXml ? "xml" : "binary"; }

TEST_F(PlistOracle, PlistlibReadsWhatWeWrite) {
  if (!HaveCommand("python3")) GTEST_SKIP() << "python3 is not installed";
  for (const Format format : {Format::kXml, Format::kBinary}) {
    SCOPED_TRACE(Name(format));
    EXPECT_EQ(Python("check '" + WriteOurs(format).string() + "'"), "same\n");
  }
}

TEST_F(PlistOracle, WeReadWhatPlistlibWrites) {
  if (!HaveCommand("python3")) GTEST_SKIP() << "python3 is not installed";
  for (const Format format : {Format::kXml, Format::kBinary}) {
    SCOPED_TRACE(Name(format));
    const fs::path path = directory_ / (std::string("theirs.") + Name(format));
    Python("write '" + path.string() + "' " + (format == Format::kXml ? "xml" : "binary"));
    ExpectSample(path);
    const Expected<Value, ReadError> read = ReadFile(path);
    ASSERT_TRUE(read);
    EXPECT_TRUE(std::signbit(*(*read->asDictionary()->find("reals")->asArray())[2].asReal()));
  }
}

// plistutil reads our file and writes its own in each format, which we read back. (libplist
// writes -0.0 as 0.0 in XML; equality of values does not look at the sign of zero.)
TEST_F(PlistOracle, LibplistAndWeReadEachOthersFiles) {
  if (!HaveCommand("plistutil")) GTEST_SKIP() << "plistutil (libplist-utils) is not installed";
  for (const Format ours : {Format::kXml, Format::kBinary}) {
    for (const Format theirs : {Format::kXml, Format::kBinary}) {
      SCOPED_TRACE(std::string(Name(ours)) + " to " + Name(theirs));
      const fs::path output = directory_ / (std::string("libplist.") + Name(theirs));
      const std::string command = "plistutil -i '" + WriteOurs(ours).string() + "' -o '" +
                                  output.string() + "' -f " +
                                  (theirs == Format::kXml ? "xml" : "bin");
      ASSERT_EQ(std::system(command.c_str()), 0) << command;
      ExpectSample(output);
    }
  }
}

}  // namespace
}  // namespace folvant::plist
