// One call of the plugin, for commands that need no more than that.
#ifndef CORVANE_HOST_TAKE_PLUGIN_CALL_H_
#define CORVANE_HOST_TAKE_PLUGIN_CALL_H_

#include <flutter_linux/flutter_linux.h>

#include <optional>

#include "engine/engine.h"
#include "engine/plugin_reply.h"
#include "terminal/log_output.h"

namespace corvane {

struct PluginAnswer {
  std::optional<PluginError> error;
  std::optional<SealedCapture> sealed;
};

// Brings the log lines of the plugin on `engine` to `log`, which outlives it.
// What a seal skipped goes to `skipped_bytes`, which may be NULL.
void show_log_lines(Engine* engine, LogOutput* log,
                    std::optional<int64_t>* skipped_bytes = nullptr);

// Calls `method` with `args` (transfer none) on an engine of its own, from
// start to shutdown. All log lines are written by the time it returns.
PluginAnswer ask_plugin(const char* method, FlValue* args, LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_PLUGIN_CALL_H_
