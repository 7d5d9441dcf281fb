// The one state object behind the plugin: a worker thread with its queue, the
// road of replies and log lines back to the main context, and the capture that
// the worker's tasks share.
#ifndef CORVANE_SRC_WORKER_PLUGIN_STATE_H_
#define CORVANE_SRC_WORKER_PLUGIN_STATE_H_

#include <flutter_linux/flutter_linux.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "report/log_relay.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/capture_session.h"

namespace {

// The worker runs every task: tasks alone touch `session` and the two fields
// below it, until dispose has joined the worker. Nothing may be thrown out of a
// task: it would end the process.
struct PluginState {
  PluginState() : worker([this] { RunTasks(); }) {}
  PluginState(const PluginState&) = delete;
  PluginState& operator=(const PluginState&) = delete;

  // Main thread. Answers `call` later with the Reply that `work()` returns on
  // the worker, in the order of the calls. The queue has no bound.
  template <typename Work>
  void Enqueue(FlMethodCall* call, Work work);

  // Any thread. Writes to the GLib log at once and, in the order of the calls,
  // to the log channel while Dart listens. `level` is one of the kLevel words.
  void Log(const char* level, const std::string& message);

  // Worker; `CloseSession` also on the main thread once the worker is joined.
  void OpenSession(int fd, const std::string& path, int sample_rate,
                   int channels, int64_t bit_rate);
  void CloseSession(const std::string& reason);

  // Main thread. Lets the worker finish what is queued, then joins it.
  void FinishTasks();

  CaptureSession session;
  uint64_t dropped_append_bytes = 0;  // PCM received while paused
  bool append_failure_reported = false;
  std::shared_ptr<LogRelay> log_relay = std::make_shared<LogRelay>();

  std::mutex mutex;  // guards `tasks` and `stop`, nothing else
  std::condition_variable cv;
  std::deque<std::function<void()>> tasks;
  bool stop = false;
  std::thread worker;  // last: it runs on all of the above

 private:
  // A reply on its way to the main context; holds the call's reference.
  struct ReplyEvent {
    FlMethodCall* call;
    Reply reply;
  };

  // A log line on its way to the main context.
  struct LogEvent {
    std::shared_ptr<LogRelay> relay;
    std::string level;
    std::string message;
  };

  void RunTasks();
  void Answer(FlMethodCall* call, const std::string& method, Reply reply);
  // Main context callbacks; noexcept, for GLib's frames can't be unwound.
  static gboolean DeliverReply(gpointer event) noexcept;
  static gboolean DeliverLog(gpointer event) noexcept;
};

template <typename Work>
void PluginState::Enqueue(FlMethodCall* call, Work work) {
  // DeliverReply gives this reference back once the call is answered.
  g_object_ref(call);
  std::function<void()> task =
      [this, call, method = std::string(fl_method_call_get_name(call)),
       work = std::move(work)] { Answer(call, method, work()); };
  {
    const std::lock_guard<std::mutex> lock(mutex);
    tasks.push_back(std::move(task));
  }
  cv.notify_one();
}

// The queue is taken over whole: an emptied deque keeps its first block, so
// that two of them that change places take in calls without allocating, up to
// what a block of libstdc++ holds: 15 calls a batch.
void PluginState::RunTasks() {
  std::deque<std::function<void()>> batch;
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(mutex);
      cv.wait(lock, [this] { return stop || !tasks.empty(); });
      if (tasks.empty()) {
        return;  // only now: calls made before dispose get their replies
      }
      batch.swap(tasks);
    }
    for (std::function<void()>& task : batch) {
      std::exchange(task, nullptr)();  // and its chunk goes at once
    }
    batch.clear();
  }
}

void PluginState::FinishTasks() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stop = true;
  }
  cv.notify_one();
  worker.join();
}

// Worker. The failure is logged here, so that its line precedes the reply.
void PluginState::Answer(FlMethodCall* call, const std::string& method,
                         Reply reply) {
  const NativeError& error = reply.error;
  if (reply.kind == kReplyError && !error.quiet) {
    Log(kLevelError, method + " failed: " + error.code + " " + error.message);
  }
  g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, DeliverReply,
                             new ReplyEvent{call, std::move(reply)}, nullptr);
}

gboolean PluginState::DeliverReply(gpointer event) noexcept {
  const std::unique_ptr<ReplyEvent> owned(static_cast<ReplyEvent*>(event));
  g_autoptr(FlMethodCall) call = owned->call;
  g_autoptr(FlMethodResponse) response = response_of(owned->reply);
  g_autoptr(GError) error = nullptr;
  if (!fl_method_call_respond(call, response, &error)) {
    // The embedding may refuse without saying why.
    g_log(nullptr, G_LOG_LEVEL_WARNING, "%s failed to respond: %s", kLogTag,
          error == nullptr ? "unknown error" : error->message);
  }
  return G_SOURCE_REMOVE;
}

void PluginState::Log(const char* level, const std::string& message) {
  // Never GLib's error level, which would end the process.
  g_log(nullptr,
        g_str_equal(level, kLevelInfo) ? G_LOG_LEVEL_MESSAGE
                                       : G_LOG_LEVEL_WARNING,
        "%s %s", kLogTag, message.c_str());
  g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, DeliverLog,
                             new LogEvent{log_relay, level, message}, nullptr);
}

gboolean PluginState::DeliverLog(gpointer event) noexcept {
  const std::unique_ptr<LogEvent> owned(static_cast<LogEvent*>(event));
  const LogRelay& relay = *owned->relay;
  if (relay.channel == nullptr || !relay.listening) {
    return G_SOURCE_REMOVE;
  }
  g_autoptr(FlValue) line = fl_value_new_map();
  fl_value_set_string_take(line, "level",
                           fl_value_new_string(owned->level.c_str()));
  fl_value_set_string_take(line, "message",
                           fl_value_new_string(owned->message.c_str()));
  g_autoptr(GError) error = nullptr;
  if (!fl_event_channel_send(relay.channel, line, nullptr, &error)) {
    g_log(nullptr, G_LOG_LEVEL_WARNING, "%s failed to relay log: %s", kLogTag,
          error == nullptr ? "unknown error" : error->message);
  }
  return G_SOURCE_REMOVE;
}

// Answers `call` with `error` in its turn, behind all earlier calls.
void enqueue_error(PluginState* state, FlMethodCall* call, NativeError error) {
  state->Enqueue(call,
                 [error = std::move(error)] { return error_reply(error); });
}

void enqueue_invalid(PluginState* state, FlMethodCall* call,
                     const char* message) {
  enqueue_error(state, call, plain_error(kErrInvalidArgs, message));
}

}  // namespace

#endif  // CORVANE_SRC_WORKER_PLUGIN_STATE_H_
