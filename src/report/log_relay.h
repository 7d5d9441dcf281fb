// The log's vocabulary, and the object that knows whether Dart listens.
#ifndef CORVANE_SRC_REPORT_LOG_RELAY_H_
#define CORVANE_SRC_REPORT_LOG_RELAY_H_

#include <flutter_linux/flutter_linux.h>

namespace {

constexpr char kLogTag[] = "[Corvane]";

constexpr char kLevelInfo[] = "info";
constexpr char kLevelWarning[] = "warning";
constexpr char kLevelError[] = "error";

// Touched by the main thread alone. Shared with the log events in flight, so
// that one delivered after dispose still finds it, with no channel.
struct LogRelay {
  FlEventChannel* channel = nullptr;  // one reference; dispose releases it
  bool listening = false;
};

}  // namespace

#endif  // CORVANE_SRC_REPORT_LOG_RELAY_H_
