// The life of a queued call: when its closure goes, who may queue another one
// meanwhile, and for how long a log line keeps the relay.
#include <memory>

#include "engine/messenger.h"
#include "faults_fixture.h"
#include "recording/append.h"
#include "recording/controls.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace corvane_test {
namespace {

using Work = std::function<::Reply()>;

constexpr std::chrono::seconds kPatience{20};

template <typename Future>
bool Comes(const Future& future) {
  return future.wait_for(kPatience) == std::future_status::ready;
}

// A plugin's state without the plugin, and a channel of the test's own that
// brings it calls.
class TaskLifeTest : public testing::Test {
 protected:
  TaskLifeTest() {
    g_main_context_acquire(nullptr);
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    channel_ =
        fl_method_channel_new(messenger_, "tasks", FL_METHOD_CODEC(codec));
    fl_method_channel_set_method_call_handler(channel_, OnCall, this, nullptr);
  }
  ~TaskLifeTest() override {
    Finish();
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    corvane::messenger_shutdown(messenger_);
    g_object_unref(channel_);
    g_object_unref(messenger_);
    g_main_context_release(nullptr);
  }

  // A call that does `work` on the worker; nothing of it is kept here.
  void Queue(Work work) {
    work_ = std::move(work);
    const Bytes call_of_x = {7, 1, 'x', 0};
    g_autoptr(GBytes) message = g_bytes_new(call_of_x.data(), call_of_x.size());
    corvane::messenger_deliver(messenger_, "tasks", message, nullptr);
  }

  // Asked on a thread of its own: one that has locked it must not ask.
  bool QueueIsFree() {
    return std::async(std::launch::async,
                      [this] {
                        const std::unique_lock<std::mutex> lock(
                            state_->mutex, std::try_to_lock);
                        return lock.owns_lock();
                      })
        .get();
  }

  void Finish() {
    if (state_->worker.joinable()) state_->FinishTasks();
  }

  GlibLogCapture glib_;
  std::unique_ptr<PluginState> state_ = std::make_unique<PluginState>();

 private:
  static void OnCall(FlMethodChannel*, FlMethodCall* call, gpointer test) {
    auto* self = static_cast<TaskLifeTest*>(test);
    self->state_->Enqueue(call, std::exchange(self->work_, nullptr));
  }

  FlBinaryMessenger* messenger_ = corvane::messenger_new();
  FlMethodChannel* channel_ = nullptr;
  Work work_;
};

// Work that waits, so that what is queued behind it is taken over together.
class Delay {
 public:
  Work work() {
    return [opened = opened_.get_future().share()] {
      EXPECT_TRUE(Comes(opened));
      return ::Reply();
    };
  }
  void End() { opened_.set_value(); }

 private:
  std::promise<void> opened_;
};

TEST_F(TaskLifeTest, AChunkGoesBeforeTheNextCallRuns) {
  Delay delay;
  Queue(delay.work());
  std::vector<std::weak_ptr<Bytes>> chunks;
  std::vector<long> alive;
  for (int i = 0; i < 5; ++i) {
    auto chunk = std::make_shared<Bytes>(1000);
    chunks.push_back(chunk);
    Queue([chunk = std::move(chunk), &chunks, &alive] {
      alive.push_back(std::count_if(
          chunks.begin(), chunks.end(),
          [](const std::weak_ptr<Bytes>& it) { return !it.expired(); }));
      return ::Reply();
    });
  }
  delay.End();
  Finish();
  EXPECT_EQ(alive, (std::vector<long>{5, 4, 3, 2, 1}))
      << "chunks in memory when each call ran";
}

TEST_F(TaskLifeTest, TheLastChunkGoesWithoutAnotherCall) {
  const auto gone = std::make_shared<std::promise<void>>();
  std::shared_ptr<void> chunk(nullptr, [gone](void*) { gone->set_value(); });
  Queue([chunk = std::move(chunk)] { return ::Reply(); });
  EXPECT_TRUE(Comes(gone->get_future()));
}

// While the queue is locked nobody could make a call. The main thread waits,
// for it would lock the queue itself.
TEST_F(TaskLifeTest, TheQueueIsFreeWhileACallRuns) {
  const auto free = std::make_shared<std::promise<bool>>();
  Queue([this, free] {
    free->set_value(QueueIsFree());
    return ::Reply();
  });
  EXPECT_TRUE(free->get_future().get());
}

TEST_F(TaskLifeTest, TheQueueIsFreeWhileAChunkGoes) {
  const auto free = std::make_shared<std::promise<bool>>();
  std::shared_ptr<void> chunk(
      nullptr, [this, free](void*) { free->set_value(QueueIsFree()); });
  Queue([chunk = std::move(chunk)] { return ::Reply(); });
  EXPECT_TRUE(free->get_future().get());
}

// A line under way keeps the relay, one that is delivered doesn't.
TEST_F(TaskLifeTest, ALineKeepsTheRelayUntilItIsDelivered) {
  const std::weak_ptr<LogRelay> relay = state_->log_relay;
  for (int i = 0; i < 3; ++i) {
    Queue([this] {
      state_->Log(kLevelInfo, "a line");
      return ::Reply();
    });
  }
  Finish();
  EXPECT_EQ(relay.use_count(), 1 + 3);
  state_->log_relay->listening = true;  // with no channel: dropped all the same
  g_main_context_iteration(nullptr, FALSE);
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_EQ(relay.use_count(), 1);
}

TEST_F(TaskLifeTest, TheRelayOutlivesTheStateInALine) {
  Queue([this] {
    state_->Log(kLevelInfo, "a line");
    return ::Reply();
  });
  Finish();
  const std::weak_ptr<LogRelay> relay = state_->log_relay;
  state_ = nullptr;
  EXPECT_EQ(relay.use_count(), 1) << "the line's";
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_EQ(relay.use_count(), 0);
  state_ = std::make_unique<PluginState>();
}

TEST_F(TaskLifeTest, ALineOfTheMainThreadIsDeliveredAtOnce) {
  const std::weak_ptr<LogRelay> relay = state_->log_relay;
  state_->Log(kLevelError, "a line");
  EXPECT_EQ(relay.use_count(), 1);
  EXPECT_EQ(glib_.Lines().size(), 1U);
}

TEST_F(TaskLifeTest, ACaptureIsPausedBeforeItsDrainBegins) {
  const TempDir dir;
  const std::string path = dir.Path("take.aac");
  const WatchProgram watch;
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  state_->OpenSession(fd, path, 48000, 1, 64000);
  append_chunk(state_.get(), Sine(100));
  bool paused = false;
  {
    Fault look(On("avcodec_send_frame").Nth(1).Before([&](PluginCall&) {
      paused = state_->session.paused;
    }));
    pause_capture(state_.get());
  }
  EXPECT_TRUE(paused);
  state_->CloseSession("the test's end");
}

}  // namespace
}  // namespace corvane_test
