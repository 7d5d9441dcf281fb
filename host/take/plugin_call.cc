#include "take/plugin_call.h"

namespace corvane {

void show_log_lines(Engine* engine, LogOutput* log,
                    std::optional<int64_t>* skipped_bytes) {
  engine->ListenToLog([log, skipped_bytes](const std::string& level,
                                           const std::string& message) {
    log->OnEvent(level, message);
    if (skipped_bytes == nullptr) return;
    if (const auto figure = figure_in(message, "skippedBytes")) {
      *skipped_bytes = figure;
    }
  });
}

PluginAnswer ask_plugin(const char* method, FlValue* args, LogOutput* log) {
  Engine engine;
  PluginAnswer answer;
  std::optional<int64_t> skipped_bytes;
  show_log_lines(&engine, log, &skipped_bytes);
  bool answered = false;
  engine.Invoke(method, args, [&](FlMethodResponse* response) {
    answered = true;
    answer = {error_in(response), sealed_capture_in(response)};
  });
  engine.IterateUntil([&] { return answered; });
  if (answer.sealed) answer.sealed->skipped_bytes = skipped_bytes;
  engine.Shutdown();
  log->Flush();
  return answer;
}

}  // namespace corvane
