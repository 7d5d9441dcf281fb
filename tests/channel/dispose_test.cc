// The plugin taken down at every inconvenient moment.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "channel/overrides.h"
#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

class DisposeTest : public ChannelTest {
 protected:
  DisposeTest() : plugins_(corvane_plugin_get_type()) { Restart(); }
  ~DisposeTest() override { Shutdown(); }

  // Disposes the plugin while its channels and the messenger still live, as
  // happens when the application registers another handler.
  void Dispose() { g_object_run_dispose(plugins_.last()); }

  InstanceCount plugins_;
};

TEST_F(DisposeTest, WithoutACaptureNothingIsLogged) {
  Flush();
  Dispose();
  EXPECT_THAT(glib().Take(), ElementsAre());
}

TEST_F(DisposeTest, AnOpenCaptureIsDrainedSyncedAndClosedButNotSealed) {
  const std::string path = Path("take.aac");
  const std::vector<std::string> before = OpenDescriptors();
  Start(path);
  Append(Noise(3 * 1024 + 5));
  TakeTranscript();
  glib().Take();
  Dispose();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("plugin dispose", path, 5)))
      << "delivered at once, on the main thread";
  EXPECT_THAT(glib().Take(),
              ElementsAre(PluginMessage(
                  "closed capture on plugin dispose: " + path + " frames=5")));
  EXPECT_EQ(SplitFrames(ReadFile(path)).size(), 5u);
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(DisposeTest, APausedCaptureIsClosedToo) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Pause();
  Append(Noise(10));
  TakeTranscript();
  Dispose();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("plugin dispose", path, 2)));
}

TEST_F(DisposeTest, EveryQueuedCallStillRunsInOrder) {
  const std::string path = Path("take.aac");
  const Bytes pcm = Noise(400 * 1024);
  Record(Path("reference.aac"), pcm);
  glib().Take();
  Post("start", CaptureArgs(path, 48000, 1));
  for (const Bytes& chunk : Chunks(pcm, 2048)) Post("append", chunk);
  Shutdown();
  EXPECT_EQ(ReadFile(path), ReadFile(Path("reference.aac")));
  EXPECT_THAT(
      glib().Take(),
      ElementsAre(PluginMessage("start capture=" + path +
                                " rate=48000 channels=1 bitRate=64000"),
                  PluginMessage("AAC encoder aac started rate=48000 channels=1 "
                                "bitRate=64000"),
                  PluginMessage("closed capture on plugin dispose: " + path +
                                " frames=401")));
}

TEST_F(DisposeTest, AQueuedStopIsStillSealed) {
  const std::string path = Path("take.aac");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(1024));
  Post("stop");
  Dispose();
  TakeTranscript();
  AwaitReplies();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(Answer("start", NullReply()), Answer("append", NullReply()),
                  Answer("stop", Figures(path, 42, FileSize(path)))));
}

TEST_F(DisposeTest, RepliesArriveAfterDisposeAndLogLinesAreDropped) {
  const std::string path = Path("take.aac");
  const Reply none = PlainError("NOT_RECORDING", "stop with no open recording");
  Post("stop");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Value::Null());
  Dispose();
  AwaitReplies();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("plugin dispose", path, 0), Answer("stop", none),
                  Answer("start", NullReply()),
                  Answer("append", InvalidArgs("append requires Uint8List"))));
}

TEST_F(DisposeTest, TwiceIsOnce) {
  Start(Path("take.aac"));
  Dispose();
  glib().Take();
  TakeTranscript();
  Dispose();
  EXPECT_THAT(glib().Take(), ElementsAre());
  EXPECT_THAT(TakeTranscript(), ElementsAre());
  Shutdown();
  EXPECT_EQ(plugins_.alive(), 0u);
}

// GObject's own dispose is what tells those who watch an object.
TEST_F(DisposeTest, EachTimeTheParentIsDisposedToo) {
  int told = 0;
  const GWeakNotify count = [](gpointer data, GObject*) {
    ++*static_cast<int*>(data);
  };
  for (int time = 1; time <= 2; ++time) {
    g_object_weak_ref(plugins_.last(), count, &told);
    Dispose();
    EXPECT_EQ(told, time);
  }
}

TEST_F(DisposeTest, ListenAndCancelAreHarmlessAfterwards) {
  Dispose();
  CancelLog();
  ListenToLog();
  EXPECT_THAT(glib().Take(), ElementsAre());
}

TEST_F(DisposeTest, TheLogChannelIsReleased) {
  const InstanceCount channels(fl_event_channel_get_type());
  Restart();
  ASSERT_EQ(channels.made(), 1);
  EXPECT_EQ(channels.last()->ref_count, 2u)
      << "one of the relay's, one of the messenger's";
  Dispose();
  EXPECT_EQ(channels.last()->ref_count, 1u);
  Shutdown();
  EXPECT_EQ(channels.alive(), 0u);
}

TEST_F(DisposeTest, APluginThatWasNeverRegisteredCanGo) {
  auto* plugin =
      static_cast<GObject*>(g_object_new(corvane_plugin_get_type(), nullptr));
  g_object_run_dispose(plugin);
  g_object_run_dispose(plugin);
  g_object_unref(plugin);
  EXPECT_EQ(plugins_.alive(), 1u) << "the registered one";
}

// What an application does that opens the method channel for itself.
TEST_F(DisposeTest, ReplacingTheMethodChannelDisposesThePlugin) {
  const std::string path = Path("take.aac");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(1024));
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
  g_autoptr(FlMethodChannel) other = fl_method_channel_new(
      engine().messenger(), "com.velka.corvane", FL_METHOD_CODEC(codec));
  ASSERT_TRUE(FL_IS_METHOD_CHANNEL(other));
  EXPECT_EQ(plugins_.alive(), 0u);
  EXPECT_EQ(SplitFrames(ReadFile(path)).size(), 2u);
  AwaitReplies();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("plugin dispose", path, 2),
                  Answer("start", NullReply()), Answer("append", NullReply())));
}

}  // namespace
}  // namespace corvane_test
