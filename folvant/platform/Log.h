#pragma once

#include <string>
#include <string_view>

namespace folvant {

// Where ZELMLog sends its messages. The default sink writes one line per message to stderr.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void Write(std::string_view message) = 0;
};

// Hands one fixed message text to the current sink. Forgiving loads report what they dropped
// through this, and carry on.
void ZELMLog(std::string_view message);

// Installs a sink and returns the previous one (nullptr restores the stderr sink). The sink
// must outlive its installation.
LogSink* SetLogSink(LogSink* sink);

}  // namespace folvant
