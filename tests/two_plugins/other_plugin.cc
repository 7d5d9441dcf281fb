// Adds integers up, in classes that are called what Corvane calls its own, and
// with much of the C++ runtime: threads, streams, exceptions, containers. None
// of it is hidden: what Corvane's library exported of the same name would be
// taken from here.
#include "other_plugin.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

struct NativeError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Reply {
  std::string text;
  std::string error;  // empty when the call went well
};

class CaptureSession {
 public:
  std::string Append(FlValue* value) {
    if (value == nullptr || fl_value_get_type(value) != FL_VALUE_TYPE_INT) {
      throw NativeError("not an integer");
    }
    integers_.push_back(fl_value_get_int(value));
    int64_t sum = 0;
    for (const int64_t integer : integers_) sum += integer;
    std::ostringstream text;
    text << integers_.size() << " integers, sum " << sum;
    return text.str();
  }

 private:
  std::vector<int64_t> integers_;
};

class PluginState {
 public:
  PluginState() : worker_([this] { Work(); }) {}

  ~PluginState() {
    Enqueue(nullptr);
    worker_.join();
  }

  // Waits for the worker, which alone touches the session.
  Reply Add(FlValue* value) {
    std::promise<Reply> reply;
    Enqueue([this, value, &reply] {
      try {
        reply.set_value({session_.Append(value), ""});
      } catch (const NativeError& error) {
        reply.set_value({"", error.what()});
      }
    });
    return reply.get_future().get();
  }

 private:
  void Enqueue(std::function<void()> task) {
    const std::lock_guard<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
    ready_.notify_one();
  }

  void Work() {
    while (const std::function<void()> task = Next()) task();
  }

  std::function<void()> Next() {
    std::unique_lock<std::mutex> lock(mutex_);
    ready_.wait(lock, [this] { return !tasks_.empty(); });
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    return task;
  }

  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<std::function<void()>> tasks_;
  CaptureSession session_;
  std::thread worker_;
};

static void method_call_cb(FlMethodChannel* /*channel*/, FlMethodCall* call,
                           gpointer user_data) {
  const Reply reply =
      static_cast<PluginState*>(user_data)->Add(fl_method_call_get_args(call));
  if (reply.error.empty()) {
    g_autoptr(FlValue) text = fl_value_new_string(reply.text.c_str());
    fl_method_call_respond_success(call, text, nullptr);
  } else {
    fl_method_call_respond_error(call, "NO_INTEGER", reply.error.c_str(),
                                 nullptr, nullptr);
  }
}

void other_plugin_register_with_registrar(FlPluginRegistrar* registrar) {
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
  g_autoptr(FlMethodChannel) channel =
      fl_method_channel_new(fl_plugin_registrar_get_messenger(registrar),
                            "com.example.other", FL_METHOD_CODEC(codec));
  fl_method_channel_set_method_call_handler(
      channel, method_call_cb, new PluginState(),
      [](gpointer state) { delete static_cast<PluginState*>(state); });
}
