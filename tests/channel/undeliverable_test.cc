// A log line that the embedding fails to take.
#include <gmock/gmock.h>

#include <string>

#include "channel/overrides.h"
#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using UndeliverableTest = ChannelTest;

GBytes* RefuseSuccess(FlMethodCodec*, FlValue*, GError** error) {
  g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "no words for it");
  return nullptr;
}

// The interface allows to refuse without a reason.
GBytes* RefuseSuccessSilently(FlMethodCodec*, FlValue*, GError**) {
  return nullptr;
}

TEST_F(UndeliverableTest, ALogLineThatCannotBeSentIsLoggedAndForgotten) {
  const Reply no_recording =
      PlainError("NOT_RECORDING", "stop with no open recording");
  const GlibLine stop_failed =
      PluginWarning("stop failed: NOT_RECORDING stop with no open recording");
  auto* codec_class = FL_METHOD_CODEC_CLASS(
      g_type_class_ref(fl_standard_method_codec_get_type()));
  {
    // Events travel as success envelopes, this error reply does not.
    const ScopedOverride refuse(&codec_class->encode_success_envelope,
                                RefuseSuccess);
    EXPECT_EQ(Stop(), no_recording);
  }
  EXPECT_THAT(
      glib().Take(),
      ElementsAre(stop_failed,
                  PluginWarning("failed to relay log: no words for it")));
  EXPECT_THAT(LogLines(), ElementsAre());

  EXPECT_EQ(Stop(), no_recording);
  EXPECT_THAT(LogLines(), ElementsAre(Failed("stop", no_recording)))
      << "a failed send does not end the subscription";
  g_type_class_unref(codec_class);
}

TEST_F(UndeliverableTest, ALogLineRefusedWithoutAReasonIsLoggedAllTheSame) {
  auto* codec_class = FL_METHOD_CODEC_CLASS(
      g_type_class_ref(fl_standard_method_codec_get_type()));
  {
    const ScopedOverride refuse(&codec_class->encode_success_envelope,
                                RefuseSuccessSilently);
    EXPECT_EQ(Stop(),
              PlainError("NOT_RECORDING", "stop with no open recording"));
  }
  EXPECT_EQ(glib().Take().back(),
            PluginWarning("failed to relay log: unknown error"));
  g_type_class_unref(codec_class);
}

}  // namespace
}  // namespace corvane_test
