// What sends appends of 20 ms and times each as the main thread sees it: the
// plugin's queue, and beside it the least that anyone would need. Main thread.
#ifndef CORVANE_BENCH_APPENDS_H_
#define CORVANE_BENCH_APPENDS_H_

#include <fcntl.h>
#include <flutter_linux/flutter_linux.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "engine/messenger.h"
#include "plugin/method_table.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kRate = 44100;
constexpr int32_t kChannels = 2;
constexpr guint kChunkMs = 20;
constexpr size_t kChunkSize = kRate * kChunkMs / 1000 * kChannels * 2;

double us_since(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start)
      .count();
}

// Calls dispatch() as the plugin does. The capture is paused: the PCM is
// counted and thrown away, for the codec is not what is measured here.
class Appends {
 public:
  Appends() : messenger_(corvane::messenger_new()) {
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    channel_ =
        fl_method_channel_new(messenger_, "bench", FL_METHOD_CODEC(codec));
    fl_method_channel_set_method_call_handler(channel_, OnCall, this, nullptr);
    plugin_.OpenSession(open("/dev/null", O_WRONLY | O_CLOEXEC), "/dev/null",
                        kRate, kChannels, 64000);
    plugin_.session.paused = true;
    const std::vector<uint8_t> chunk(kChunkSize, 0x12);
    g_autoptr(FlValue) pcm = fl_value_new_uint8_list(chunk.data(), kChunkSize);
    message_ = FL_METHOD_CODEC_GET_CLASS(codec)->encode_method_call(
        FL_METHOD_CODEC(codec), "append", pcm, nullptr);
  }
  ~Appends() {
    plugin_.FinishTasks();
    WaitForAnswers();
    plugin_.CloseSession("the end of a benchmark");
    corvane::messenger_shutdown(messenger_);
    g_bytes_unref(message_);
    g_object_unref(channel_);
    g_object_unref(messenger_);
  }
  Appends(const Appends&) = delete;
  Appends& operator=(const Appends&) = delete;

  void Send() {
    ++unanswered_;
    corvane::messenger_deliver(messenger_, "bench", message_,
                               [this](GBytes*) { --unanswered_; });
  }

  void WaitForAnswers() {
    while (unanswered_ > 0) g_main_context_iteration(nullptr, TRUE);
  }

  double held_up_us() const { return held_up_us_; }  // by the last Send
  PluginState* plugin() { return &plugin_; }

 private:
  static void OnCall(FlMethodChannel*, FlMethodCall* call, gpointer data) {
    auto* self = static_cast<Appends*>(data);
    const Clock::time_point start = Clock::now();
    dispatch(call, &self->plugin_);
    self->held_up_us_ = us_since(start);
  }

  FlBinaryMessenger* messenger_;
  FlMethodChannel* channel_;
  GBytes* message_;
  int unanswered_ = 0;
  double held_up_us_ = 0;
  PluginState plugin_;
};

// With the codec at work behind the queue, as in a take.
class RecordedAppends : public Appends {
 public:
  RecordedAppends() {
    av_log_set_level(AV_LOG_ERROR);  // its farewell is no result
    plugin()->session.paused = false;
  }
};

// A copy into a queue under a lock, a notify, and a wake-up for the answer.
class BareAppends {
 public:
  ~BareAppends() {
    Post({});
    worker_.join();
  }

  void Send() {
    ++unanswered_;
    const Clock::time_point start = Clock::now();
    Post(std::vector<uint8_t>(chunk_));
    held_up_us_ = us_since(start);
  }

  void WaitForAnswers() {
    while (unanswered_ > 0) g_main_context_iteration(nullptr, TRUE);
  }

  double held_up_us() const { return held_up_us_; }

 private:
  void Post(std::vector<uint8_t> chunk) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      queue_.push_back(std::move(chunk));
    }
    cv_.notify_one();
  }

  void Answer() {
    for (;;) {
      std::unique_lock<std::mutex> lock(mutex_);
      cv_.wait(lock, [this] { return !queue_.empty(); });
      const std::vector<uint8_t> chunk = std::move(queue_.front());
      queue_.pop_front();
      lock.unlock();
      if (chunk.empty()) return;
      g_main_context_invoke(nullptr, OnAnswer, this);
    }
  }

  static gboolean OnAnswer(gpointer data) {
    --static_cast<BareAppends*>(data)->unanswered_;
    return G_SOURCE_REMOVE;
  }

  const std::vector<uint8_t> chunk_ = std::vector<uint8_t>(kChunkSize, 0x12);
  int unanswered_ = 0;  // main thread
  double held_up_us_ = 0;
  std::mutex mutex_;  // guards the queue
  std::condition_variable cv_;
  std::deque<std::vector<uint8_t>> queue_;
  std::thread worker_ = std::thread([this] { Answer(); });
};

}  // namespace

#endif  // CORVANE_BENCH_APPENDS_H_
