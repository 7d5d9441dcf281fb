// A reply that the messenger refuses. With the stand-in alone: the real library
// frees the error of a refusal before whoever asked for it can read it.
#include <gmock/gmock.h>

#include <string>

#include "channel/overrides.h"
#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using RefusedReplyTest = ChannelTest;

gboolean RefuseResponse(FlBinaryMessenger*, FlBinaryMessengerResponseHandle*,
                        GBytes*, GError** error) {
  g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "nobody is there");
  return FALSE;
}

// The interface allows to refuse without a reason.
gboolean RefuseResponseSilently(FlBinaryMessenger*,
                                FlBinaryMessengerResponseHandle*, GBytes*,
                                GError**) {
  return FALSE;
}

// The host's own messenger remarks on a handle that is dropped unanswered.
const GlibLine kDropped{std::nullopt, G_LOG_LEVEL_CRITICAL,
                        "a platform message was dropped without an answer"};

TEST_F(RefusedReplyTest, AReplyThatCannotBeSentIsLoggedAndForgotten) {
  {
    const ScopedOverride refuse(
        &FL_BINARY_MESSENGER_GET_IFACE(engine().messenger())->send_response,
        RefuseResponse);
    Post("flush");
    engine().IterateUntil([this] { return !glib().Lines().empty(); });
  }
  EXPECT_THAT(glib().Take(),
              ElementsAre(PluginWarning("failed to respond: nobody is there"),
                          kDropped));
  EXPECT_THAT(TakeTranscript(), ElementsAre());
  EXPECT_EQ(Call("flush"), NullReply()) << "later calls are answered";
}

TEST_F(RefusedReplyTest, AnErrorReplyThatCannotBeSentIsLoggedTheSameWay) {
  {
    const ScopedOverride refuse(
        &FL_BINARY_MESSENGER_GET_IFACE(engine().messenger())->send_response,
        RefuseResponse);
    Post("stop");
    engine().IterateUntil([this] { return glib().Lines().size() == 3; });
  }
  EXPECT_THAT(
      glib().Take(),
      ElementsAre(PluginWarning("stop failed: NOT_RECORDING stop with no open "
                                "recording"),
                  PluginWarning("failed to respond: nobody is there"),
                  kDropped));
}

TEST_F(RefusedReplyTest, AReplyRefusedWithoutAReasonIsLoggedAllTheSame) {
  {
    const ScopedOverride refuse(
        &FL_BINARY_MESSENGER_GET_IFACE(engine().messenger())->send_response,
        RefuseResponseSilently);
    Post("flush");
    engine().IterateUntil([this] { return !glib().Lines().empty(); });
  }
  EXPECT_THAT(
      glib().Take(),
      ElementsAre(PluginWarning("failed to respond: unknown error"), kDropped));
}

TEST_F(RefusedReplyTest, AnUnknownMethodIgnoresThatItCannotRespond) {
  const ScopedOverride refuse(
      &FL_BINARY_MESSENGER_GET_IFACE(engine().messenger())->send_response,
      RefuseResponse);
  Post("begin");
  for (const GlibLine& line : glib().Take()) {
    EXPECT_NE(line.message.rfind("[Corvane]", 0), 0u)
        << "not the plugin's affair: " << line;
  }
}

}  // namespace
}  // namespace corvane_test
