#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "folvant/platform/Log.h"

namespace folvant {
namespace {

// Two threads, each collecting while both log in turn: each collector holds only the messages
// of its own thread, and the thread that started them collects none of theirs.
TEST(Log, EachThreadCollectsOnlyItsOwnMessages) {
  LogCollector starter;
  std::barrier step(2);
  std::vector<std::string> collected[2];
  const auto work = [&](int id) {
    LogCollector collector;
    step.arrive_and_wait();  // both collectors are installed
    for (int turn = 0; turn < 2; ++turn) {
      if (turn == id) ZELMLog("message of thread " + std::to_string(id));
      step.arrive_and_wait();
    }
    collected[id] = collector.Take();
    step.arrive_and_wait();  // both have taken theirs before either collector goes
  };
  std::thread first(work, 0), second(work, 1);
  first.join();
  second.join();

  EXPECT_EQ(collected[0], std::vector<std::string>{"message of thread 0"});
  EXPECT_EQ(collected[1], std::vector<std::string>{"message of thread 1"});
  ZELMLog("message of the starter");
  EXPECT_EQ(starter.messages(), std::vector<std::string>{"message of the starter"});
}

}  // namespace
}  // namespace folvant
