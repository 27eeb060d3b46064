#include "folvant/platform/Log.h"

#include <cstdio>

namespace folvant {
namespace {

class StderrSink final : public LogSink {
 public:
  void Write(std::string_view message) override {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  }
};

StderrSink& DefaultSink() {
  static StderrSink sink;
  return sink;
}

thread_local LogSink* current_sink = nullptr;

}  // namespace

void ZELMLog(std::string_view message) {
  (current_sink ? *current_sink : static_cast<LogSink&>(DefaultSink())).Write(message);
}

LogSink* SetLogSink(LogSink* sink) {
  LogSink* previous = current_sink;
  current_sink = sink;
  return previous;
}

}  // namespace folvant
