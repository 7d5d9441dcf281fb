// The encoder by itself: what it does with a codec that was opened and then got
// nothing to encode, which a capture never lets come about.
#include "encoder/adts_aac_encoder.h"
#include "encoder/open_encoder.h"
#include "faults_fixture.h"

namespace corvane_test {
namespace {

TEST(EncoderAloneTest, ACodecThatGotNothingIsNotFlushed) {
  av_log_set_level(AV_LOG_QUIET);  // it remarks on having had no frame
  const WatchProgram watch;
  const CallLog log;
  AdtsAacEncoder encoder(-1, "take.aac", 48000, 1, 64000,
                         [](const char*, const std::string&) {});
  NativeError error;
  ASSERT_EQ(encoder.Open(&error), 0);
  EXPECT_EQ(log.Of("avcodec_open2").size(), 1U);
  EXPECT_TRUE(encoder.Finish(&error));
  EXPECT_EQ(log.Of("avcodec_send_frame").size(), 0U);
  EXPECT_EQ(log.Of("avcodec_receive_packet").size(), 0U);
  EXPECT_EQ(HeldNow(), Held());
}

}  // namespace
}  // namespace corvane_test
