// Encoders that differ from the usual one: another AudioSpecificConfig, an
// unusable one, no small last frame.
#include <algorithm>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

// AAC LC, 44100 Hz, stereo, while the take is 48000 Hz, mono.
const std::vector<uint8_t> kOtherConfig = {0x12, 0x10};

std::string HeadersFollow(int reported_rate, int reported_channels) {
  return Warning(
      "AAC encoder reports objectType=2 rate=" + std::to_string(reported_rate) +
      " channels=" + std::to_string(reported_channels) +
      ", configured rate=48000 channels=1; headers follow the "
      "encoder");
}

class CodecConfigTest : public FaultsTest {
 protected:
  // What every frame's header says: frequency index and channels.
  static std::vector<std::pair<int, int>> Headers(const std::string& path) {
    std::vector<std::pair<int, int>> headers;
    for (const Bytes& frame : SplitFrames(ReadFile(path))) {
      headers.emplace_back(FrequencyIndexOf(frame), ChannelConfigOf(frame));
    }
    return headers;
  }
};

TEST_F(CodecConfigTest, HeadersFollowAnEncoderThatDisagrees) {
  const std::string path = Begin();
  Fault fault(ExtradataOnceOpen(kOtherConfig));
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{HeadersFollow(44100, 2), EncoderLine(48000, 1),
                   Answer("append", NullReply())}));
  EXPECT_EQ(Headers(path), (std::vector<std::pair<int, int>>{{4, 2}, {4, 2}}));
}

TEST_F(CodecConfigTest, DisagreementIsSaidOnceForAllFramesOfACodec) {
  Begin();
  Fault fault(ExtradataOnceOpen(kOtherConfig));
  for (int i = 0; i < 3; ++i) {
    Append(Sine(2 * kFrameSamples));
  }
  const Lines lines = LogLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), HeadersFollow(44100, 2)), 1);
}

// What the headers say outlives a codec: the next one is compared with that.
TEST_F(CodecConfigTest, EachCodecThatDisagreesWithTheHeadersIsReported) {
  const std::string path = Begin();
  const Bytes pcm = Sine(2 * kFrameSamples);
  const auto append_and_pause = [&] {
    Append(pcm);
    Pause();
    Resume();
    Lines lines = LogLines();
    TakeTranscript();
    return lines;
  };
  {
    Fault fault(ExtradataOnceOpen(kOtherConfig));
    EXPECT_EQ(append_and_pause(),
              (Lines{HeadersFollow(44100, 2), EncoderLine(48000, 1)}));
    EXPECT_EQ(append_and_pause(), (Lines{EncoderLine(48000, 1)}));
  }
  EXPECT_EQ(append_and_pause(),
            (Lines{HeadersFollow(48000, 1), EncoderLine(48000, 1)}));
  EXPECT_EQ(Headers(path), (std::vector<std::pair<int, int>>{{4, 2},
                                                             {4, 2},
                                                             {4, 2},
                                                             {4, 2},
                                                             {4, 2},
                                                             {4, 2},
                                                             {3, 1},
                                                             {3, 1},
                                                             {3, 1}}));
}

struct OneField {
  const char* name;
  std::vector<uint8_t> config;
  int object_type;
  int rate;
  int channels;
};

class OneFieldTest : public CodecConfigTest,
                     public testing::WithParamInterface<OneField> {};

TEST_P(OneFieldTest, OneFieldThatDisagreesIsEnough) {
  const OneField& field = GetParam();
  const std::string path = Begin();
  Fault fault(ExtradataOnceOpen(field.config));
  Append(Sine(2 * kFrameSamples));
  EXPECT_EQ(LogLines().front(),
            Warning("AAC encoder reports objectType=" +
                    std::to_string(field.object_type) +
                    " rate=" + std::to_string(field.rate) +
                    " channels=" + std::to_string(field.channels) +
                    ", configured rate=48000 channels=1; headers follow the "
                    "encoder"));
  EXPECT_EQ(SplitFrames(ReadFile(path)).at(0).at(2) >> 6,
            field.object_type - 1);
}

INSTANTIATE_TEST_SUITE_P(
    Every, OneFieldTest,
    testing::Values(OneField{"ObjectType", {0x09, 0x88}, 1, 48000, 1},
                    OneField{"Rate", {0x12, 0x08}, 2, 44100, 1},
                    OneField{"Channels", {0x11, 0x90}, 2, 48000, 2}),
    [](const auto& field) { return field.param.name; });

struct Unusable {
  const char* name;
  Rule rule;
  int size;
};

class UnusableExtradataTest : public CodecConfigTest,
                              public testing::WithParamInterface<Unusable> {};

TEST_P(UnusableExtradataTest, ConfiguredParametersAreKept) {
  const std::string path = Begin();
  Fault fault(GetParam().rule);
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning("unusable AAC extradata (" +
                           std::to_string(GetParam().size) +
                           " bytes); keeping the configured stream parameters"),
                   EncoderLine(48000, 1), Answer("append", NullReply())}));
  EXPECT_EQ(Headers(path), (std::vector<std::pair<int, int>>{{3, 1}, {3, 1}}));
}

INSTANTIATE_TEST_SUITE_P(
    Every, UnusableExtradataTest,
    testing::Values(Unusable{"None", ExtradataOnceOpen({}), 0},
                    Unusable{"NegativeSize", ExtradataSizeOnceOpen(-5), 0},
                    Unusable{"OneByte", ExtradataOnceOpen({0x11}), 1},
                    // Object type 5, frequency index 13, channels 0.
                    Unusable{"Object", ExtradataOnceOpen({0x29, 0x88}), 2},
                    Unusable{"Rate", ExtradataOnceOpen({0x16, 0x88, 0}), 3},
                    Unusable{"Channels", ExtradataOnceOpen({0x11, 0x80}), 2}),
    [](const testing::TestParamInfo<Unusable>& tested) {
      return std::string(tested.param.name);
    });

// The method that drains a take which ends 300 sample frames into a frame.
class LastFrameTest : public FaultsTest,
                      public testing::WithParamInterface<const char*> {
 protected:
  // Sends one full frame, 300 loud stereo sample frames and the drain; returns
  // what the encoder was sent after the full frame.
  std::vector<SentFrame> DrainedFrames() {
    Begin("take.aac", 2);
    SentFrames sent;
    EXPECT_EQ(Append(FullScale(kFrameSamples + 300, 2)), NullReply());
    Call(GetParam());
    std::vector<SentFrame> frames = sent.all();
    frames.erase(frames.begin());
    return frames;
  }
};

bool IsLoud(float sample) { return sample < -0.9F || sample > 0.9F; }

TEST_P(LastFrameTest, EncoderWithoutTheCapabilityGetsAFrameFilledWithSilence) {
  Fault fault(EncoderWithoutSmallLastFrame());
  const std::vector<SentFrame> frames = DrainedFrames();
  ASSERT_EQ(frames.size(), 2U);
  EXPECT_EQ(frames[0].samples, kFrameSamples);
  EXPECT_EQ(frames[0].pts, kFrameSamples);
  ASSERT_EQ(frames[0].planes.size(), 2U);
  for (const std::vector<float>& plane : frames[0].planes) {
    EXPECT_TRUE(std::all_of(plane.begin(), plane.begin() + 300, IsLoud));
    EXPECT_EQ(std::vector<float>(plane.begin() + 300, plane.end()),
              std::vector<float>(724, 0.0F));
  }
  EXPECT_EQ(frames[1].samples, 0);  // the flush
}

TEST_P(LastFrameTest, EncoderWithTheCapabilityGetsAShortFrame) {
  const std::vector<SentFrame> frames = DrainedFrames();
  ASSERT_EQ(frames.size(), 2U);
  EXPECT_EQ(frames[0].samples, 300);
  EXPECT_EQ(frames[0].pts, kFrameSamples);
  EXPECT_TRUE(std::all_of(frames[0].planes[1].begin(),
                          frames[0].planes[1].end(), IsLoud));
  EXPECT_EQ(frames[1].samples, 0);
}

INSTANTIATE_TEST_SUITE_P(Every, LastFrameTest,
                         testing::Values("pause", "stop", "cancel"));

// 300 sample frames are the whole take: the shortest way to the padding.
TEST_F(FaultsTest, TakeOf300SamplesIsOneFrameOfSilenceAndSound) {
  const std::string path = Begin();
  SentFrames sent;
  Fault fault(EncoderWithoutSmallLastFrame());
  Append(FullScale(300));
  const Reply stopped = Stop();
  EXPECT_EQ(stopped, Figures(path, FramesToMs(2, 48000), FileSize(path)));
  ASSERT_EQ(sent.all().size(), 2U);
  EXPECT_EQ(sent.all()[0].samples, kFrameSamples);
  EXPECT_EQ(sent.all()[1].samples, 0);
}

TEST_F(FaultsTest, DrainOfAFullFrameOnlyFlushes) {
  Begin();
  SentFrames sent;
  Fault fault(EncoderWithoutSmallLastFrame());
  Append(Sine(kFrameSamples));
  Pause();
  ASSERT_EQ(sent.all().size(), 2U);
  EXPECT_EQ(sent.all()[1].samples, 0);
}

TEST_F(FaultsTest, DrainOfACodecThatGotNothingSendsNothing) {
  Begin("take.aac", 2);
  CallLog log;
  // The codec opens for the chunk's first sample frame and then fails to give
  // out its frame, so nothing is ever sent.
  Fault fault(On("av_frame_make_writable").Nth(1).Fail(ENOMEM));
  Append(Sine(1, 2));
  Pause();
  EXPECT_EQ(log.Of("avcodec_send_frame").size(), 2U);
  Resume();
  Pause();
  EXPECT_EQ(log.Of("avcodec_send_frame").size(), 2U);
}

}  // namespace
}  // namespace corvane_test
