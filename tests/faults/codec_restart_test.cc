// A codec that fails in the middle of a capture: two restarts in one append,
// then an error.
#include "faults_fixture.h"

namespace corvane_test {
namespace {

class CodecRestartTest : public FaultsTest {
 protected:
  const std::string path_ = Begin();
  const Reply send_error_ =
      LibavError("avcodec_send_frame", path_, AVERROR_EXTERNAL);
  const Rule send_fails_ = On("avcodec_send_frame").Fail(AVERROR_EXTERNAL);
};

// The samples of one channel, as the encoder gets them.
std::vector<float> Floats(const Bytes& pcm) {
  std::vector<float> samples;
  for (size_t i = 0; i + 1 < pcm.size(); i += 2) {
    const auto sample = static_cast<int16_t>(pcm[i] | pcm[i + 1] << 8);
    samples.push_back(static_cast<float>(sample) / 32768.0F);
  }
  return samples;
}

TEST_F(CodecRestartTest, FailureOnTheLastFullFrameIsOnlyLogged) {
  Fault fault(send_fails_);
  EXPECT_EQ(Append(Sine(kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Restarting(send_error_),
                   Answer("append", NullReply())}));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_F(CodecRestartTest, SecondFailureOnTheLastFullFrameIsOnlyLogged) {
  Fault fault(send_fails_);
  EXPECT_EQ(Append(Sine(2 * kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Restarting(send_error_),
                   EncoderLine(48000, 1), Restarting(send_error_),
                   Answer("append", NullReply())}));
}

TEST_F(CodecRestartTest, ThirdFailureOnTheLastFullFrameIsAnError) {
  Fault fault(send_fails_);
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), send_error_);
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Restarting(send_error_),
                   EncoderLine(48000, 1), Restarting(send_error_),
                   EncoderLine(48000, 1), Failed("append", send_error_),
                   Answer("append", send_error_)}));
}

TEST_F(CodecRestartTest, GivingUpDropsTheRestOfTheChunk) {
  Fault fault(send_fails_);
  EXPECT_EQ(Append(Sine(9 * kFrameSamples)), send_error_);
  EXPECT_EQ(fault.struck(), 3);
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_F(CodecRestartTest, CodecGivenUpIsOpenedAgainByTheNextAppend) {
  const Bytes pcm = Sine(4 * kFrameSamples);
  {
    Fault fault(send_fails_);
    EXPECT_EQ(Append(Sine(3 * kFrameSamples)), send_error_);
  }
  TakeTranscript();
  EXPECT_EQ(Append(pcm), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Answer("append", NullReply())}));
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path_), Undisturbed(pcm));
}

TEST_F(CodecRestartTest, BudgetOfRestartsIsAnewInEveryAppend) {
  Fault fault(send_fails_);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Append(Sine(2 * kFrameSamples)), NullReply());
  }
  EXPECT_EQ(fault.struck(), 6);
}

TEST_F(CodecRestartTest, RestartLosesTheFrameThatFailedAndNoOther) {
  const Bytes pcm = Sine(5 * kFrameSamples);
  SentFrames sent;
  Fault fault(On("avcodec_send_frame").Nth(2).Fail(AVERROR_EXTERNAL));
  EXPECT_EQ(Append(pcm), NullReply());

  const std::vector<SentFrame> frames = sent.all();
  ASSERT_EQ(frames.size(), 5U);
  const std::vector<int64_t> expected_pts = {0, 1024, 0, 1024, 2048};
  for (size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].samples, kFrameSamples) << i;
    EXPECT_EQ(frames[i].pts, expected_pts[i]) << i;
    EXPECT_EQ(frames[i].planes[0], Floats(Slice(pcm, i * 2048, 2048))) << i;
  }
}

TEST_F(CodecRestartTest, CarryAndRestOfTheChunkOutliveARestart) {
  const Bytes pcm = Noise(3 * kFrameSamples);
  SentFrames sent;
  Fault fault(On("avcodec_send_frame").Nth(1).Fail(AVERROR_EXTERNAL));
  // One frame that fails, 100 samples behind it and half a sample more.
  EXPECT_EQ(Append(Slice(pcm, 0, 2048 + 200 + 1)), NullReply());
  EXPECT_EQ(Append(Slice(pcm, 2048 + 200 + 1)), NullReply());
  const std::vector<SentFrame> frames = sent.all();
  ASSERT_EQ(frames.size(), 3U);
  EXPECT_EQ(frames[1].pts, 0);
  EXPECT_EQ(frames[1].planes[0], Floats(Slice(pcm, 2048, 2048)));
  EXPECT_EQ(frames[2].planes[0], Floats(Slice(pcm, 4096, 2048)));
}

TEST_F(CodecRestartTest, ReleasedCodecIsNotFlushed) {
  CallLog log;
  Fault fault(On("avcodec_send_frame").Nth(3).Fail(AVERROR_EXTERNAL));
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), NullReply());
  // Three frames and no end of stream: what the codec held is lost.
  for (const PluginCall& call : log.Of("avcodec_send_frame")) {
    EXPECT_EQ(call.size, kFrameSamples);
  }
  EXPECT_EQ(log.Of("write").size(), 1U);
}

TEST_F(CodecRestartTest, FailureToReceiveIsACodecFailure) {
  const Reply error = LibavError("avcodec_receive_packet", path_, AVERROR_BUG);
  Fault fault(On("avcodec_receive_packet").Fail(AVERROR_BUG));
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), error);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{EncoderLine(48000, 1), Restarting(error), EncoderLine(48000, 1),
             Restarting(error), EncoderLine(48000, 1), Failed("append", error),
             Answer("append", error)}));
  EXPECT_EQ(ReadFile(path_), Bytes());
}

TEST_F(CodecRestartTest, EndOfStreamWhileReceivingIsNoFailure) {
  Fault fault(On("avcodec_receive_packet").Nth(1).Fail(AVERROR_EOF));
  EXPECT_EQ(Append(Sine(kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Answer("append", NullReply())}));
}

TEST_F(CodecRestartTest, FramesWrittenBeforeTheFailureStay) {
  const Bytes pcm = Sine(6 * kFrameSamples);
  const std::vector<Bytes> undisturbed = UndisturbedFrames(pcm);
  Begin();
  Append(Slice(pcm, 0, 3 * 2048));
  const Bytes before = ReadFile(path_);
  EXPECT_EQ(before, Concat(undisturbed[0], undisturbed[1]));
  Fault fault(send_fails_);
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), send_error_);
  EXPECT_EQ(ReadFile(path_), before);
}

TEST_F(CodecRestartTest, PacketOf8184BytesFitsAndIsWritten) {
  Fault fault(PacketsResizedTo(8184));
  EXPECT_EQ(Append(Sine(2 * kFrameSamples)), NullReply());
  const std::vector<Bytes> frames = SplitFrames(ReadFile(path_));
  ASSERT_EQ(frames.size(), 1U);
  EXPECT_EQ(frames[0].size(), 8191U);
}

TEST_F(CodecRestartTest, PacketOf8185BytesIsRefused) {
  const Reply error =
      FileError("ENCODE_FAILED",
                "AAC frame of 8185 bytes does not fit an ADTS frame", path_);
  Fault fault(PacketsResizedTo(8185));
  // Each codec gives its first packet with its second frame.
  EXPECT_EQ(Append(Sine(6 * kFrameSamples)), error);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{EncoderLine(48000, 1), Restarting(error), EncoderLine(48000, 1),
             Restarting(error), EncoderLine(48000, 1), Failed("append", error),
             Answer("append", error)}));
  EXPECT_EQ(ReadFile(path_), Bytes());
}

}  // namespace
}  // namespace corvane_test
