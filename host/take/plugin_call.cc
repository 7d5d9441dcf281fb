#include "take/plugin_call.h"

namespace corvane {

void show_log_lines(Engine* engine, LogOutput* log) {
  engine->ListenToLog(
      [log](const std::string& level, const std::string& message) {
        log->OnEvent(level, message);
      });
}

PluginAnswer ask_plugin(const char* method, FlValue* args, LogOutput* log) {
  Engine engine;
  show_log_lines(&engine, log);
  PluginAnswer answer;
  bool answered = false;
  engine.Invoke(method, args, [&](FlMethodResponse* response) {
    answered = true;
    answer = {error_in(response), sealed_capture_in(response)};
  });
  engine.IterateUntil([&] { return answered; });
  engine.Shutdown();
  log->Flush();
  return answer;
}

}  // namespace corvane
