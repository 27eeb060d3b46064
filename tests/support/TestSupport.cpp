#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace folvant::testing {

ScopedClockPin::ScopedClockPin(int date_number, int hour, int minute, int second) {
  using namespace std::chrono;
  const local_days day{year{date_number / 10000} / (date_number / 100 % 100) / (date_number % 100)};
  previous_ = platform::PinClock(day + hours{hour} + minutes{minute} + seconds{second});
}

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << "cannot open " << path;
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

}  // namespace folvant::testing
