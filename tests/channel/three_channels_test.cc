// Three channels are a limit of the encoder that applications should know:
// libavutil's default layout for 3 is 2.1, which ADTS headers cannot name. The
// stream then carries a program config element, and the headers go on naming
// what was asked for.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

extern "C" {
#include <libavcodec/version.h>
}

namespace corvane_test {
namespace {

using testing::ElementsAre;
using ThreeChannelsTest = ChannelTest;

// The program config element ends in the encoder's name and version, which is
// not of one length in all releases.
std::string Unusable() {
  const size_t size = 12 + std::strlen(LIBAVCODEC_IDENT);
  return "unusable AAC extradata (" + std::to_string(size) +
         " bytes); keeping the configured stream parameters";
}

TEST_F(ThreeChannelsTest, TheExtradataIsRefusedWithAWarning) {
  const std::string path = Path("take.aac");
  Start(path, 48000, 3);
  Append(Noise(1, 3));
  EXPECT_THAT(LogLines(),
              ElementsAre(StartLine(path, 48000, 3), Warning(Unusable()),
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
              ElementsAre(StartLine(path, 48000, 3), Warning(Unusable()),
                          EncoderLine(48000, 3), Warning(Unusable()),
                          EncoderLine(48000, 3)));
}

// What ffmpeg has to say while it decodes.
std::string Complaints(const std::string& path) {
  const std::string command =
      "ffmpeg -nostdin -v error -i '" + path + "' -f null - 2>&1";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"),
                                                   pclose);
  std::string text;
  char piece[4096];
  while (size_t got = fread(piece, 1, sizeof(piece), pipe.get())) {
    text.append(piece, got);
  }
  return text;
}

TEST_F(ThreeChannelsTest, FfmpegRefusesTheFrames) {
  Record(Path("three.aac"), Noise(4096, 3), 48000, 3);
  Record(Path("four.aac"), Noise(4096, 4), 48000, 4);
  EXPECT_THAT(Complaints(Path("three.aac")),
              testing::HasSubstr("is not allocated"));
  EXPECT_EQ(Complaints(Path("four.aac")), "");
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
