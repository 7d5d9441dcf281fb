// The two roads of a log line: always the GLib log, and the event channel
// while somebody listens.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>

#include <string>

#include "engine/messenger.h"
#include "engine/registrar.h"
#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using LogRelayTest = ChannelTest;

const Reply kNoRecording =
    PlainError("NOT_RECORDING", "stop with no open recording");
constexpr char kStopFailed[] =
    "stop failed: NOT_RECORDING stop with no open recording";

TEST_F(LogRelayTest, ALineBeforeAnyListenerIsOnlyInTheGlibLog) {
  CancelLog();
  Stop();
  ListenToLog();
  Flush();
  EXPECT_THAT(LogLines(), ElementsAre());
  EXPECT_THAT(glib().Take(), ElementsAre(PluginWarning(kStopFailed)));
}

// An engine drops what nobody listens to, so this looks where it would arrive.
TEST_F(LogRelayTest, NothingIsSentBeforeTheFirstListener) {
  FlBinaryMessenger* messenger = corvane::messenger_new();
  int sent = 0;
  corvane::messenger_set_outgoing(messenger,
                                  [&](const char*, GBytes*) { ++sent; });
  g_autoptr(FlPluginRegistrar) registrar = corvane::registrar_new(messenger);
  corvane_plugin_register_with_registrar(registrar);
  const auto call = [&](const char* channel, const Bytes& name_and_null) {
    g_autoptr(GBytes) message =
        g_bytes_new(name_and_null.data(), name_and_null.size());
    bool answered = false;
    corvane::messenger_deliver(messenger, channel, message,
                               [&](GBytes*) { answered = true; });
    engine().IterateUntil([&] { return answered; });
  };
  const Bytes stop = {7, 4, 's', 't', 'o', 'p', 0};
  call("com.velka.corvane", stop);
  EXPECT_EQ(sent, 0);
  call("com.velka.corvane/log", {7, 6, 'l', 'i', 's', 't', 'e', 'n', 0});
  call("com.velka.corvane", stop);
  EXPECT_EQ(sent, 1);
  corvane::messenger_shutdown(messenger);
  g_object_unref(messenger);
}

TEST_F(LogRelayTest, ListeningIsAskedWhenALineIsDelivered) {
  Stop();
  CancelLog();
  Stop();
  ListenToLog();
  Stop();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(Failed("stop", kNoRecording), Answer("stop", kNoRecording),
                  Answer("stop", kNoRecording), Failed("stop", kNoRecording),
                  Answer("stop", kNoRecording)));
  EXPECT_THAT(glib().Take(), ElementsAre(PluginWarning(kStopFailed),
                                         PluginWarning(kStopFailed),
                                         PluginWarning(kStopFailed)));
}

TEST_F(LogRelayTest, CancelSilencesLinesThatAreStillUnderWay) {
  Post("stop");
  CancelLog();
  AwaitReplies();
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("stop", kNoRecording)));
}

TEST_F(LogRelayTest, ListeningTwiceSendsALineOnce) {
  ListenToLog();
  Stop();
  EXPECT_THAT(LogLines(), ElementsAre(Failed("stop", kNoRecording)));
}

TEST_F(LogRelayTest, CancellingTwiceIsHarmless) {
  CancelLog();
  CancelLog();
  ListenToLog();
  Stop();
  EXPECT_THAT(LogLines(), ElementsAre(Failed("stop", kNoRecording)));
}

TEST_F(LogRelayTest, InfoIsAMessageAndTheOthersAreWarningsOfTheNullDomain) {
  const std::string path = Path("take.aac");
  WriteFile(path, {1});
  Start(path);
  Cancel();
  Stop();
  EXPECT_THAT(LogLines(),
              ElementsAre(Warning("preserved orphan audio " + path + " as " +
                                  Path("take.orphan.aac")),
                          StartLine(path, 48000, 1),
                          ClosedLine("cancel", path, 0), Error(kStopFailed)));
  EXPECT_THAT(glib().Take(),
              ElementsAre(PluginWarning("preserved orphan audio " + path +
                                        " as " + Path("take.orphan.aac")),
                          PluginMessage("start capture=" + path +
                                        " rate=48000 channels=1 bitRate=64000"),
                          PluginMessage("closed capture on cancel: " + path +
                                        " frames=0"),
                          PluginWarning(kStopFailed)));
}

TEST_F(LogRelayTest, PercentSignsInAPathAreJustText) {
  const std::string path = Path("100%s%n%d.aac");
  Start(path);
  EXPECT_THAT(LogLines(), ElementsAre(StartLine(path, 48000, 1)));
  EXPECT_THAT(
      glib().Take(),
      ElementsAre(PluginMessage("start capture=" + path +
                                " rate=48000 channels=1 bitRate=64000")));
}

TEST_F(LogRelayTest, ListenAndCancelAreAnsweredWithNull) {
  FlMethodCodec* codec = FL_METHOD_CODEC(fl_standard_method_codec_new());
  for (const char* method : {"listen", "cancel", "listen"}) {
    SCOPED_TRACE(method);
    g_autoptr(GBytes) message =
        FL_METHOD_CODEC_GET_CLASS(codec)->encode_method_call(
            codec, method, Value("ignored").get(), nullptr);
    Reply reply = NotImplemented();
    engine().SendRaw("com.velka.corvane/log", message, [&](GBytes* bytes) {
      g_autoptr(FlMethodResponse) response =
          FL_METHOD_CODEC_GET_CLASS(codec)->decode_response(codec, bytes,
                                                            nullptr);
      reply = ReadReply(response);
    });
    EXPECT_EQ(reply, NullReply());
  }
  g_object_unref(codec);
}

// An event is a map of exactly two entries in a fixed order.
TEST_F(LogRelayTest, AnEventIsAMapOfLevelAndMessage) {
  std::string event;
  corvane::messenger_set_outgoing(engine().messenger(), [&](const char* channel,
                                                            GBytes* message) {
    FlMethodCodec* codec = FL_METHOD_CODEC(fl_standard_method_codec_new());
    g_autoptr(FlMethodResponse) envelope =
        FL_METHOD_CODEC_GET_CLASS(codec)->decode_response(codec, message,
                                                          nullptr);
    g_autofree gchar* text =
        fl_value_to_string(fl_method_response_get_result(envelope, nullptr));
    event = std::string(channel) + " " + text;
    g_object_unref(codec);
  });
  Stop();
  EXPECT_EQ(event,
            std::string("com.velka.corvane/log {level: error, message: ") +
                kStopFailed + "}");
}

}  // namespace
}  // namespace corvane_test
