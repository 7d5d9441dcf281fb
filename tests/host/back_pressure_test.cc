// The recorder against a plugin that answers when the test says so: a handler
// in the real one's place.
#include <gtest/gtest.h>

#include <deque>

#include "support/bytes.h"
#include "take/recorder.h"

namespace corvane_test {
namespace {

using corvane::Engine;
using corvane::Recorder;
using corvane::TakeOptions;
using corvane::TakeResult;

// One second of silence in memory.
class SilentSource : public corvane::AudioSource {
 public:
  corvane::PcmFormat format() const override { return {48000, 1}; }
  std::string name() const override { return "silence"; }
  std::optional<int64_t> total_frames() const override { return 48000; }
  int wait_fd() const override { return -1; }
  std::string error() const override { return ""; }
  size_t Read(uint8_t* out, size_t size) override {
    const size_t got = std::min(size, left_);
    std::fill(out, out + got, 0);
    left_ -= got;
    return got;
  }

 private:
  size_t left_ = 96000;
};

// Answers "start" and "stop" at once. Appends wait until the main loop has
// nothing else to do: by then the recorder has sent all that it dares to. Then
// one of them is answered.
class SlowPlugin {
 public:
  explicit SlowPlugin(Engine* engine) : engine_(engine) {
    fl_binary_messenger_set_message_handler_on_channel(
        engine->messenger(), "com.velka.corvane", OnMessage, this, nullptr);
    idle_ = g_idle_add(OnIdle, this);
  }
  ~SlowPlugin() { g_source_remove(idle_); }

  // The error that answers append number `n`, counted from 1.
  void FailAppend(size_t n) { failing_append_ = n; }

  size_t most_unanswered = 0;
  size_t appends = 0;
  std::vector<std::string> calls;  // all others

 private:
  static void OnMessage(FlBinaryMessenger*, const gchar*, GBytes* message,
                        FlBinaryMessengerResponseHandle* handle,
                        gpointer data) {
    auto* self = static_cast<SlowPlugin*>(data);
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    g_autofree gchar* name = nullptr;
    g_autoptr(FlValue) args = nullptr;
    FL_METHOD_CODEC_GET_CLASS(codec)->decode_method_call(
        FL_METHOD_CODEC(codec), message, &name, &args, nullptr);
    if (!g_str_equal(name, "append")) {
      self->calls.emplace_back(name);
      while (!self->waiting_.empty()) self->AnswerOldest();
      self->Answer(handle, false);
      return;
    }
    ++self->appends;
    self->waiting_.push_back(
        FL_BINARY_MESSENGER_RESPONSE_HANDLE(g_object_ref(handle)));
    self->most_unanswered =
        std::max(self->most_unanswered, self->waiting_.size());
  }

  static gboolean OnIdle(gpointer data) {
    auto* self = static_cast<SlowPlugin*>(data);
    if (!self->waiting_.empty()) self->AnswerOldest();
    return G_SOURCE_CONTINUE;
  }

  void AnswerOldest() {
    g_autoptr(FlBinaryMessengerResponseHandle) handle = waiting_.front();
    waiting_.pop_front();
    Answer(handle, ++answered_ == failing_append_);
  }

  void Answer(FlBinaryMessengerResponseHandle* handle, bool fails) {
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    auto* functions = FL_METHOD_CODEC_GET_CLASS(codec);
    g_autoptr(GBytes) reply =
        fails ? functions->encode_error_envelope(FL_METHOD_CODEC(codec),
                                                 "WRITE_FAILED", "no room",
                                                 nullptr, nullptr)
              : functions->encode_success_envelope(FL_METHOD_CODEC(codec),
                                                   nullptr, nullptr);
    fl_binary_messenger_send_response(engine_->messenger(), handle, reply,
                                      nullptr);
  }

  Engine* const engine_;
  guint idle_ = 0;
  size_t failing_append_ = 0;
  size_t answered_ = 0;
  std::deque<FlBinaryMessengerResponseHandle*> waiting_;
};

class BackPressureTest : public ::testing::Test {
 protected:
  TakeResult Record() {
    TakeOptions options;
    options.capture_path = "take.aac";
    options.chunk_ms = 5;
    return Recorder(&engine_, &source_, options, nullptr).Run();
  }

  Engine engine_;
  SlowPlugin plugin_{&engine_};
  SilentSource source_;
};

TEST_F(BackPressureTest, NeverMoreThanSixtyFourAppendsAreUnanswered) {
  const TakeResult take = Record();
  EXPECT_EQ(plugin_.most_unanswered, 64U);
  EXPECT_EQ(plugin_.appends, 200U);
  EXPECT_EQ(take.frames, 48000);
  EXPECT_FALSE(take.error);
}

TEST_F(BackPressureTest, TheFirstFailedAppendEndsTheTakeWithStop) {
  plugin_.FailAppend(10);
  const TakeResult take = Record();
  ASSERT_TRUE(take.error);
  EXPECT_EQ(take.error->code, "WRITE_FAILED");
  EXPECT_EQ(take.error->message, "no room");
  // Those that were under way by then, and none after.
  EXPECT_EQ(plugin_.appends, 64U + 9U);
  EXPECT_EQ(plugin_.calls, (std::vector<std::string>{"start", "stop"}));
}

}  // namespace
}  // namespace corvane_test
