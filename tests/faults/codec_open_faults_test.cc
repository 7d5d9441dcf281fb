// An encoder that can't be set up: every call on the way to an open codec is
// made to fail.
#include <functional>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

struct OpenFault {
  const char* name;
  Rule rule;
  std::function<Reply(const std::string& path)> error;
};

Reply AllocationError(const std::string& path) {
  return LibavError("codec allocation", path, AVERROR(ENOMEM));
}

std::vector<OpenFault> OpenFaults() {
  return {
      {"NoEncoder", On("avcodec_find_encoder_by_name").Return(0),
       [](const std::string& path) {
         return FileError("ENCODE_FAILED", "libavcodec has no AAC encoder",
                          path);
       }},
      {"NoContext", On("avcodec_alloc_context3").Fail(ENOMEM), AllocationError},
      {"NoFrame", On("av_frame_alloc").Fail(ENOMEM), AllocationError},
      {"NoPacket", On("av_packet_alloc").Fail(ENOMEM), AllocationError},
      {"CodecRefusesToOpen", On("avcodec_open2").Fail(EINVAL),
       [](const std::string& path) {
         return LibavError("avcodec_open2", path, AVERROR(EINVAL));
       }},
      {"FrameSizeIsNot1024", FrameSizeOnceOpen(960),
       [](const std::string& path) {
         return FileError("ENCODE_FAILED",
                          "AAC encoder frame size 960 is not 1024", path);
       }},
      {"LayoutCopy", On("av_channel_layout_copy").Fail(ENOMEM),
       [](const std::string& path) {
         return LibavError("av_frame_get_buffer", path, AVERROR(ENOMEM));
       }},
      {"FrameBuffer", On("av_frame_get_buffer").Fail(AVERROR_EXTERNAL),
       [](const std::string& path) {
         return LibavError("av_frame_get_buffer", path, AVERROR_EXTERNAL);
       }},
  };
}

class CodecOpenFaultsTest : public FaultsTest,
                            public testing::WithParamInterface<OpenFault> {};

TEST_P(CodecOpenFaultsTest, ThirdFailureInOneAppendIsAnswered) {
  const std::string path = Begin();
  const Reply error = GetParam().error(path);
  Fault fault(GetParam().rule);
  EXPECT_EQ(Append(Sine(10)), error);
  EXPECT_EQ(TakeTranscript(),
            (Lines{Restarting(error), Restarting(error),
                   Failed("append", error), Answer("append", error)}));
  EXPECT_EQ(fault.struck(), 3);
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_P(CodecOpenFaultsTest, OneFailureCostsNoSample) {
  const Bytes pcm = Sine(5 * kFrameSamples);
  const Bytes undisturbed = Undisturbed(pcm);
  const std::string path = Begin();
  const Reply error = GetParam().error(path);
  Rule rule = GetParam().rule;
  Fault fault(rule.Nth(1));
  EXPECT_EQ(Append(pcm), NullReply());
  EXPECT_EQ(TakeTranscript(), (Lines{Restarting(error), EncoderLine(48000, 1),
                                     Answer("append", NullReply())}));
  EXPECT_EQ(HeldNow(), HeldWithCodec());
  EXPECT_EQ(Stop(), Figures(path, FramesToMs(6, 48000),
                            static_cast<int64_t>(undisturbed.size())));
  EXPECT_EQ(ReadFile(path), undisturbed);
}

TEST_P(CodecOpenFaultsTest, CaptureStaysOpenForTheNextAppend) {
  const Bytes pcm = Sine(5 * kFrameSamples);
  const Bytes undisturbed = Undisturbed(pcm);
  const std::string path = Begin();
  {
    Fault fault(GetParam().rule);
    EXPECT_EQ(Append(Sine(10)), GetParam().error(path));
  }
  TakeTranscript();
  EXPECT_EQ(Append(pcm), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Answer("append", NullReply())}));
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path), undisturbed);
}

TEST_P(CodecOpenFaultsTest, TakeWithoutACodecHoldsNoFrame) {
  const std::string path = Begin();
  Fault fault(GetParam().rule);
  EXPECT_EQ(Append(Sine(10)), GetParam().error(path));
  TakeTranscript();
  const Reply verdict = FileError(
      "VERIFY_FAILED", "capture holds no complete AAC frame (0 bytes)", path);
  EXPECT_EQ(Stop(), verdict);
  EXPECT_EQ(TakeTranscript(),
            (Lines{ClosedLine("stop", path, 0), SealStartLine(path),
                   Failed("stop", verdict), Answer("stop", verdict)}));
}

INSTANTIATE_TEST_SUITE_P(Every, CodecOpenFaultsTest,
                         testing::ValuesIn(OpenFaults()),
                         [](const testing::TestParamInfo<OpenFault>& tested) {
                           return std::string(tested.param.name);
                         });

// The frame can't be filled, although the codec opened.
TEST_F(FaultsTest, FrameThatStaysSharedIsACodecFailure) {
  const std::string path = Begin();
  const Reply error =
      LibavError("av_frame_make_writable", path, AVERROR(ENOMEM));
  Fault fault(On("av_frame_make_writable").Fail(ENOMEM));
  EXPECT_EQ(Append(Sine(10)), error);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{EncoderLine(48000, 1), Restarting(error), EncoderLine(48000, 1),
             Restarting(error), EncoderLine(48000, 1), Failed("append", error),
             Answer("append", error)}));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_F(FaultsTest, FrameIsMadeWritableOnlyWhenOneIsBegun) {
  Begin();
  CallLog log;
  Append(Sine(1000));
  Append(Sine(24));
  EXPECT_EQ(log.Of("av_frame_make_writable").size(), 1U);
  Append(Sine(1));
  EXPECT_EQ(log.Of("av_frame_make_writable").size(), 2U);
}

}  // namespace
}  // namespace corvane_test
