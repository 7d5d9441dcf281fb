// A Flutter engine as the plugin sees it: the owner of the main context, with
// the plugin registered on its messenger.
#ifndef CORVANE_HOST_ENGINE_ENGINE_H_
#define CORVANE_HOST_ENGINE_ENGINE_H_

#include <flutter_linux/flutter_linux.h>

#include <functional>
#include <string>

#include "engine/messenger.h"

namespace corvane {

// Takes the answer to one method call, borrowed: a success, an error or a not
// implemented response.
using ResponseHandler = std::function<void(FlMethodResponse* response)>;

// Takes one log line of the plugin; the level is "info", "warning" or "error".
using LogHandler =
    std::function<void(const std::string& level, const std::string& message)>;

// All of it runs on the thread that made it. A process may have one engine
// after another; two at a time share the main context and nothing else.
class Engine {
 public:
  // Acquires the default main context, so that what the plugin's worker posts
  // runs here, and registers the plugin. Aborts when another thread owns the
  // context.
  Engine();
  // Shuts down and gives the context back.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // Takes the plugin down: its queue runs empty, its worker ends, and an open
  // capture is closed. Answers still under way are lost. Idempotent.
  void Shutdown();

  // Calls `method` with `args` (transfer none; NULL for none). `on_response`
  // runs in a later iteration of the main context, or before this returns when
  // the answer needs no worker.
  void Invoke(const char* method, FlValue* args, ResponseHandler on_response);

  // Hands bytes as they are to the handler of a channel.
  void SendRaw(const char* channel, GBytes* message, ReplyHandler on_reply);

  // Subscribes to the plugin's log lines, and ends the subscription.
  void ListenToLog(LogHandler on_line);
  void CancelLog();

  // Runs the main context until `done` holds; sleeps in the kernel between
  // events. `done` is asked before the first and after each iteration.
  void IterateUntil(const std::function<bool()>& done);

  FlBinaryMessenger* messenger() { return messenger_; }

 private:
  void OnOutgoing(const char* channel, GBytes* message);

  FlMethodCodec* codec_;
  FlBinaryMessenger* messenger_;
  LogHandler on_line_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_ENGINE_H_
