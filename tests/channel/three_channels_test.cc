// Three channels are a limit of the encoder that applications should know:
// libavutil's default layout for 3 is 2.1, which ADTS headers cannot name. The
// stream then carries a program config element, and the headers go on naming
// what was asked for.
#include <gmock/gmock.h>

#include <string>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using ThreeChannelsTest = ChannelTest;

constexpr char kUnusable[] =
    "unusable AAC extradata (25 bytes); keeping the configured stream "
    "parameters";

TEST_F(ThreeChannelsTest, TheExtradataIsRefusedWithAWarning) {
  const std::string path = Path("take.aac");
  Start(path, 48000, 3);
  Append(Noise(1, 3));
  EXPECT_THAT(LogLines(),
              ElementsAre(StartLine(path, 48000, 3), Warning(kUnusable),
                          EncoderLine(48000, 3)));
}

TEST_F(ThreeChannelsTest, TheWarningComesWithEveryOpening) {
  const std::string path = Path("take.aac");
  Start(path, 48000, 3);
  Append(Noise(1, 3));
  Pause();
  Resume();
  Append(Noise(1, 3));
  EXPECT_THAT(LogLines(),
              ElementsAre(StartLine(path, 48000, 3), Warning(kUnusable),
                          EncoderLine(48000, 3), Warning(kUnusable),
                          EncoderLine(48000, 3)));
}

TEST_F(ThreeChannelsTest, TheHeadersNameThreeChannels) {
  const std::string path = Path("take.aac");
  EXPECT_THAT(Record(path, Noise(4096, 3), 48000, 3),
              Sealed(path, FramesToMs(5, 48000)));
  for (const Bytes& frame : SplitFrames(ReadFile(path))) {
    EXPECT_EQ(ChannelConfigOf(frame), 3);
  }
}

}  // namespace
}  // namespace corvane_test
