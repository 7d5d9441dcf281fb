// A call without any arguments, not even null: the embedding's interface knows
// it, though none of its own codecs brings it about.
#include <flutter_linux/flutter_linux.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "plugin/method_table.h"
#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using Handler = void (*)(FlMethodCall*, FlValue*, PluginState*);

// What the standard codec makes of a call of "append" with null.
const Bytes kAppendWithNull = {7, 6, 'a', 'p', 'p', 'e', 'n', 'd', 0};

// A channel beside the plugin's, whose calls go to one handler of the method
// table without their arguments.
class AbsentArgumentsTest : public ChannelTest {
 protected:
  AbsentArgumentsTest() {
    channel_ = fl_method_channel_new(engine().messenger(), "beside",
                                     FL_METHOD_CODEC(codec_));
    fl_method_channel_set_method_call_handler(channel_, OnCall, this, nullptr);
  }
  ~AbsentArgumentsTest() override {
    state_.FinishTasks();
    g_object_unref(channel_);
    g_object_unref(codec_);
  }

  Reply CallOf(Handler handler) {
    handler_ = handler;
    g_autoptr(GBytes) message =
        g_bytes_new(kAppendWithNull.data(), kAppendWithNull.size());
    std::optional<Reply> reply;
    engine().SendRaw("beside", message, [&](GBytes* bytes) {
      g_autoptr(FlMethodResponse) response =
          FL_METHOD_CODEC_GET_CLASS(codec_)->decode_response(
              FL_METHOD_CODEC(codec_), bytes, nullptr);
      reply = ReadReply(response);
    });
    engine().IterateUntil([&] { return reply.has_value(); });
    return *reply;
  }

 private:
  static void OnCall(FlMethodChannel*, FlMethodCall* call, gpointer test) {
    auto* self = static_cast<AbsentArgumentsTest*>(test);
    self->handler_(call, nullptr, &self->state_);
  }

  FlStandardMethodCodec* codec_ = fl_standard_method_codec_new();
  FlMethodChannel* channel_;
  PluginState state_;
  Handler handler_ = nullptr;
};

TEST_F(AbsentArgumentsTest, AppendRefusesThem) {
  EXPECT_EQ(CallOf(handle_append), InvalidArgs("append requires Uint8List"));
}

TEST_F(AbsentArgumentsTest, FinalizePathRefusesThem) {
  EXPECT_EQ(CallOf(handle_finalize_path),
            InvalidArgs("finalizePath requires capturePath, outputPath"));
}

TEST_F(AbsentArgumentsTest, FinalizeWavOnlyRefusesThem) {
  EXPECT_EQ(
      CallOf(handle_finalize_wav_only),
      InvalidArgs("finalizeWavOnly requires wavPath, sampleRate, channels"));
}

TEST_F(AbsentArgumentsTest, ControlsDoWithoutThem) {
  EXPECT_EQ(CallOf(handle_control<pause_capture>), NullReply());
}

}  // namespace
}  // namespace corvane_test
