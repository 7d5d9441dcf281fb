// A plugin that answers when the test's main loop has nothing else to do: by
// then whoever feeds it has sent all that it dares to.
#ifndef CORVANE_TESTS_HOST_SLOW_PLUGIN_H_
#define CORVANE_TESTS_HOST_SLOW_PLUGIN_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace corvane_test {

// Takes the real plugin's place on the engine's messenger. Appends and flushes
// wait, and one of them is answered at a time; everything else is answered at
// once, behind all that waits.
class SlowPlugin {
 public:
  explicit SlowPlugin(corvane::Engine* engine);
  ~SlowPlugin();
  SlowPlugin(const SlowPlugin&) = delete;
  SlowPlugin& operator=(const SlowPlugin&) = delete;

  // The error that answers append number `n`, counted from 1, or all flushes.
  void FailAppend(size_t n) { failing_append_ = n; }
  void FailFlushes() { flushes_fail_ = true; }
  // What happens before "start" is answered.
  void OnStart(std::function<void()> run) { on_start_ = std::move(run); }

  size_t most_unanswered = 0;  // appends
  size_t most_unanswered_bytes = 0;
  size_t most_unanswered_flushes = 0;
  size_t appends = 0;
  size_t flushes = 0;
  std::vector<std::string> calls;  // all others

 private:
  struct Waiting {
    FlBinaryMessengerResponseHandle* handle;
    size_t bytes;  // of an append
    bool is_flush;
  };

  static void OnMessage(FlBinaryMessenger* messenger, const gchar* channel,
                        GBytes* message,
                        FlBinaryMessengerResponseHandle* handle, gpointer self);
  static gboolean OnIdle(gpointer self);

  void Take(const std::string& name, FlValue* args,
            FlBinaryMessengerResponseHandle* handle);
  void Wait(const Waiting& call);
  void AnswerOldest();
  void Answer(FlBinaryMessengerResponseHandle* handle, bool fails);

  corvane::Engine* const engine_;
  guint idle_ = 0;
  size_t failing_append_ = 0;
  bool flushes_fail_ = false;
  std::function<void()> on_start_;
  size_t answered_ = 0;
  std::deque<Waiting> waiting_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SLOW_PLUGIN_H_
