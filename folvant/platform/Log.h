#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace folvant {

// Where ZELMLog sends its messages. Each thread has its own current sink, so a thread that
// collects the messages of its work sees none of another thread's; a thread that installed
// none writes one line per message to stderr.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void Write(std::string_view message) = 0;
};

// Hands one fixed message text to the calling thread's sink. Forgiving loads report what they
// dropped through this, and carry on.
void ZELMLog(std::string_view message);

// Installs a sink for the calling thread and returns the thread's previous one (nullptr
// restores the stderr sink). The sink must outlive its installation.
LogSink* SetLogSink(LogSink* sink);

// Keeps every message of the thread that made it while alive, in place of the sink installed
// before it (which it puts back when it goes): for callers that report messages their own way,
// or later. Made, used and destroyed on one thread.
class LogCollector final : public LogSink {
 public:
  LogCollector() : previous_(SetLogSink(this)) {}
  ~LogCollector() override { SetLogSink(previous_); }
  LogCollector(const LogCollector&) = delete;
  LogCollector& operator=(const LogCollector&) = delete;

  void Write(std::string_view message) override { messages_.emplace_back(message); }
  const std::vector<std::string>& messages() const { return messages_; }
  // The messages so far, leaving none.
  std::vector<std::string> Take() { return std::exchange(messages_, {}); }
  void clear() { messages_.clear(); }

 private:
  LogSink* previous_;
  std::vector<std::string> messages_;
};

}  // namespace folvant
