// When the codec opens, what it writes, and when.
#include <errno.h>
#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

extern "C" {
#include <libavutil/log.h>
}

namespace corvane_test {
namespace {

using testing::ElementsAre;
using EncoderTest = ChannelTest;

TEST_F(EncoderTest, TheCodecOpensWithTheFirstWholeSampleFrame) {
  const std::string path = Path("take.aac");
  Start(path, 44100, 2);
  Append({});
  Append({1, 2, 3});
  EXPECT_THAT(LogLines(), ElementsAre(StartLine(path, 44100, 2)));
  Append({4});
  EXPECT_THAT(LogLines(),
              ElementsAre(StartLine(path, 44100, 2), EncoderLine(44100, 2)));
  Append(Noise(4096, 2));
  EXPECT_THAT(LogLines(),
              ElementsAre(StartLine(path, 44100, 2), EncoderLine(44100, 2)))
      << "it stays open";
}

// The encoder looks one frame ahead, so what a crash can lose is known.
TEST_F(EncoderTest, AfterKFullFramesKMinusOneAreInTheFile) {
  const std::string path = Path("take.aac");
  Start(path);
  EXPECT_EQ(FileSize(path), 0);
  for (size_t k = 1; k <= 6; ++k) {
    Append(Noise(1024, 1, k));
    EXPECT_EQ(SplitFrames(ReadFile(path)).size(), k - 1) << "k = " << k;
  }
}

TEST_F(EncoderTest, ATakeHoldsOneFrameMoreThanItsAudioFills) {
  const std::string path = Path("take.aac");
  for (const size_t samples : {1, 2, 1023, 1024, 1025, 2047, 2048, 2049}) {
    SCOPED_TRACE(samples);
    const size_t frames = (samples + 1023) / 1024 + 1;
    const Reply figures = Record(path, Noise(samples));
    EXPECT_EQ(SplitFrames(ReadFile(path)).size(), frames);
    EXPECT_THAT(figures, Sealed(path, FramesToMs(frames, 48000)));
    EXPECT_EQ(LogLines().at(LogLines().size() - 3),
              ClosedLine("stop", path, frames));
    TruncateFile(path, 0);
  }
}

TEST_F(EncoderTest, EveryHeaderNamesTheCapturesFormat) {
  const std::vector<int> rates = {96000, 88200, 64000, 48000, 44100,
                                  32000, 24000, 22050, 16000, 12000,
                                  11025, 8000,  7350};
  const std::string path = Path("take.aac");
  for (size_t index = 0; index < rates.size(); ++index) {
    for (const int channels : {1, 2, 4, 5, 6}) {
      SCOPED_TRACE(std::to_string(rates[index]) + " Hz, " +
                   std::to_string(channels) + " channels");
      Record(path, Noise(2048, channels), rates[index], channels, 65536);
      for (const Bytes& frame : SplitFrames(ReadFile(path))) {
        EXPECT_EQ(FrequencyIndexOf(frame), static_cast<int>(index));
        EXPECT_EQ(ChannelConfigOf(frame), channels);
        EXPECT_EQ(frame[2] >> 6, 1) << "AAC LC";
      }
      TruncateFile(path, 0);
    }
  }
  for (const GlibLine& line : glib().Lines()) {
    EXPECT_EQ(line.level, G_LOG_LEVEL_MESSAGE) << line;
  }
}

TEST_F(EncoderTest, TheFixedBitsOfAHeaderAreAsWrittenInTheFormat) {
  const std::string path = Path("take.aac");
  Record(path, Speech());
  const std::vector<Bytes> frames = SplitFrames(ReadFile(path));
  ASSERT_GT(frames.size(), 60u);
  for (const Bytes& frame : frames) {
    // MPEG-4, no CRC, AAC LC, 48 kHz, mono, variable bit rate, one block.
    EXPECT_EQ(frame[0], 0xFF);
    EXPECT_EQ(frame[1], 0xF1);
    EXPECT_EQ(frame[2], 0x4C);
    EXPECT_EQ(frame[3] & 0xFC, 0x40);
    EXPECT_EQ(frame[5] & 0x1F, 0x1F);
    EXPECT_EQ(frame[6], 0xFC);
  }
}

TEST_F(EncoderTest, ACodecNobodyFedIsNotFlushed) {
  const std::string path = Path("take.aac");
  Start(path);
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_EQ(FileSize(path), 0);
  EXPECT_THAT(LogLines(), ElementsAre(StartLine(path, 48000, 1),
                                      ClosedLine("cancel", path, 0)));
}

TEST_F(EncoderTest, TheFrameCountRunsThroughPauses) {
  const std::string path = Path("take.aac");
  Start(path);
  for (int take = 0; take < 3; ++take) {
    Append(Noise(1024));
    Pause();
    Resume();
  }
  Cancel();
  EXPECT_EQ(SplitFrames(ReadFile(path)).size(), 6u);
  EXPECT_EQ(LogLines().back(), ClosedLine("cancel", path, 6));
}

// libavcodec refuses a bit rate that it cannot even split up: the honest way to
// a codec that never opens.
TEST_F(EncoderTest, ACodecThatCannotBeOpenedIsTriedThreeTimesForEachAppend) {
  const std::string path = Path("take.aac");
  const Reply error =
      FfmpegError("avcodec_open2", std::strerror(EINVAL), path, -EINVAL);
  const std::string restarting = Warning("AAC codec failed mid-capture (" +
                                         error.message + "); restarting it");
  Call("start", CaptureArgs(path, 48000, 1).With("bitRate", 1));
  for (int append = 0; append < 2; ++append) {
    TakeTranscript();
    Append(Noise(1));
    EXPECT_THAT(TakeTranscript(),
                ElementsAre(restarting, restarting, Failed("append", error),
                            Answer("append", error)));
  }
  Cancel();
  EXPECT_THAT(LogLines(), ElementsAre(ClosedLine("cancel", path, 0)));
}

TEST_F(EncoderTest, TheLogLevelOfLibavIsTheApplicationsOwn) {
  const int before = av_log_get_level();
  av_log_set_level(AV_LOG_PANIC);
  Record(Path("take.aac"), Noise(2048));
  Shutdown();
  EXPECT_EQ(av_log_get_level(), AV_LOG_PANIC);
  av_log_set_level(before);
}

TEST_F(EncoderTest, LouderAudioIsBigger) {
  const Reply silence = Record(Path("silence.aac"), Silence(48000));
  const Reply noise = Record(Path("noise.aac"), FullScale(48000));
  EXPECT_LT(silence.bytes * 4, noise.bytes);
}

TEST_F(EncoderTest, ABitRateIsFollowed) {
  std::vector<int64_t> sizes;
  for (const int64_t bit_rate : {32000, 64000, 128000}) {
    const std::string path = Path(std::to_string(bit_rate) + ".aac");
    Call("start", CaptureArgs(path, 48000, 1).With("bitRate", bit_rate));
    Append(Noise(48000));
    sizes.push_back(Stop().bytes);
  }
  EXPECT_LT(sizes[0], sizes[1]);
  EXPECT_LT(sizes[1], sizes[2]);
}

}  // namespace
}  // namespace corvane_test
