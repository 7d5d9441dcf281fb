// Which comes first: GLib's line or Dart's, a reply or what is done behind it.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>

#include "channel/overrides.h"
#include "look_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RoadsTest : public LookTest {
 protected:
  RoadsTest() : plugins_(corvane_plugin_get_type()) { Restart(); }
  ~RoadsTest() override { Shutdown(); }

  InstanceCount plugins_;
};

TEST_F(RoadsTest, GlibsLineIsThereAtOnceAndDartsInItsTurn) {
  const std::string path = Begin();
  glib().Take();
  Gate gate(On("fsync"));
  Post("append");  // malformed: the worker logs that
  Post("flush");
  gate.AwaitWorker();
  EXPECT_THAT(Logged(), ElementsAre(HasSubstr("append failed")));
  EXPECT_THAT(TakeTranscript(), IsEmpty());
  gate.Open();
  AwaitReplies();
}

TEST_F(RoadsTest, WhereDartsIsDeliveredAtOnceGlibsIsStillTheFirst) {
  Begin();
  glib().Take();
  Lines logged;
  corvane::messenger_set_outgoing(
      engine().messenger(), [&](const char*, GBytes*) { logged = Logged(); });
  g_object_run_dispose(plugins_.last());
  EXPECT_THAT(logged, ElementsAre(HasSubstr("plugin dispose")));
}

TEST_F(RoadsTest, AReplyDoesNotWaitForTheNextCall) {
  Begin();
  Gate gate(On("fsync"));
  Post("resume");
  Post("append");
  Post("flush");
  gate.AwaitWorker();
  DispatchPending();
  const Reply refusal = InvalidArgs("append requires Uint8List");
  EXPECT_EQ(TakeTranscript(),
            (Lines{Answer("resume", NullReply()), Failed("append", refusal),
                   Answer("append", refusal)}));
  gate.Open();
  AwaitReplies();
}

// All of it has the default priority: before what is idle, behind nothing.
TEST_F(RoadsTest, RepliesAndLinesComeInOneRow) {
  const std::string path = Begin();
  Gate gate(On("fsync"));
  for (int i = 0; i < 3; ++i) {
    Post("resume");
    Post("append");
  }
  Post("flush");
  gate.AwaitWorker();
  Lines expected;
  const Reply refusal = InvalidArgs("append requires Uint8List");
  for (int i = 0; i < 3; ++i) {
    for (const std::string& line :
         {Answer("resume", NullReply()), Failed("append", refusal),
          Answer("append", refusal)}) {
      expected.push_back(line);
    }
  }
  DispatchPending();
  EXPECT_EQ(TakeTranscript(), expected);
  gate.Open();
  AwaitReplies();
}

TEST_F(RoadsTest, WhatTheWorkerPostsIsNoIdleWork) {
  Begin();
  Lines order;
  Gate gate(On("fsync"));
  Post("append");
  Post("flush");
  gate.AwaitWorker();
  size_t before_idle = 0;
  // One step above idle: whatever is posted below it would come behind.
  g_idle_add_full(
      G_PRIORITY_DEFAULT + 1,
      [](gpointer count) -> gboolean {
        *static_cast<size_t*>(count) = 1;
        return G_SOURCE_REMOVE;
      },
      &before_idle, nullptr);
  while (before_idle == 0) g_main_context_iteration(nullptr, TRUE);
  EXPECT_EQ(TakeTranscript().size(), 2U) << "a line and its reply";
  gate.Open();
  AwaitReplies();
}

TEST_F(RoadsTest, DisposeGivesTheCaptureBackBeforeItsParentHearsOfIt) {
  Begin();
  Append(Sine(100));
  Held held = HeldWithCodec();
  g_object_weak_ref(
      plugins_.last(),
      [](gpointer data, GObject*) { *static_cast<Held*>(data) = HeldNow(); },
      &held);
  g_object_run_dispose(plugins_.last());
  EXPECT_EQ(held, Held());
}

TEST_F(RoadsTest, DartHearsOfTheClosingThatDisposeDoes) {
  const std::string path = Begin();
  Append(Sine(100));
  TakeTranscript();
  Fault drain(On("avcodec_send_frame").Fail(EAGAIN));
  g_object_run_dispose(plugins_.last());
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(HasSubstr("codec drain on plugin dispose failed"),
                          ClosedLine("plugin dispose", path, 0)));
}

}  // namespace
}  // namespace corvane_test
