// The plugin's answers as plain records.
#ifndef CORVANE_HOST_ENGINE_PLUGIN_REPLY_H_
#define CORVANE_HOST_ENGINE_PLUGIN_REPLY_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <optional>
#include <string>

namespace corvane {

// An error answer; what the plugin left open is empty.
struct PluginError {
  std::string code;
  std::string message;
  std::string domain;                  // where native_code comes from
  std::optional<int64_t> native_code;  // an errno value or a libav number
  std::string path;
};

// The figures of a sealed capture, in the reply's own units.
struct SealedCapture {
  std::string path;
  int64_t duration_ms = 0;
  int64_t bytes = 0;
  int64_t source_duration_ms = 0;
  int64_t dropped_append_bytes = 0;
  // Foreign bytes between the frames: the log alone tells of them.
  std::optional<int64_t> skipped_bytes;
};

// The error in an answer, or nothing when it is a success. A method that the
// plugin does not have counts as one with the code "NOT_IMPLEMENTED".
std::optional<PluginError> error_in(FlMethodResponse* response);

// The figures in an answer, or nothing when it has none.
std::optional<SealedCapture> sealed_capture_in(FlMethodResponse* response);

// The figure of that name in a log line of the plugin, as in " name=12".
std::optional<int64_t> figure_in(const std::string& line,
                                 const std::string& name);

// Every field of the error in one line.
std::string describe(const PluginError& error);

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_PLUGIN_REPLY_H_
