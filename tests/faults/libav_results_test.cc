// Which results of a libav call are failures: every negative one, whatever it
// is called, and no other. Only for receiving two of them mean something else.
#include <climits>
#include <functional>
#include <tuple>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

// Those that mean something to somebody, and those at the ends.
const std::vector<int> kNegativeResults = {
    AVERROR(EAGAIN), AVERROR_EOF,      AVERROR(EINVAL), AVERROR(ENOMEM),
    AVERROR(EINTR),  AVERROR_EXTERNAL, AVERROR_UNKNOWN, -1,
    INT_MIN};

// What a call is reported as, and a result.
struct LibavCall {
  const char* name;
  const char* reported;
};

class LibavFailureTest
    : public FaultsTest,
      public testing::WithParamInterface<std::tuple<LibavCall, int>> {};

// Three full frames: each meets the failure once, with a codec of its own.
TEST_P(LibavFailureTest, AnyNegativeResultIsOne) {
  const auto [call, result] = GetParam();
  const std::string path = Begin();
  const Reply error = LibavError(call.reported, path, result);
  Fault fault(On(call.name).Return(result));
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)), error);
  EXPECT_EQ(fault.struck(), 3);
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
  EXPECT_EQ(ReadFile(path), Bytes());
}

INSTANTIATE_TEST_SUITE_P(
    Every, LibavFailureTest,
    testing::Combine(
        testing::Values(
            LibavCall{"avcodec_open2", "avcodec_open2"},
            LibavCall{"av_channel_layout_copy", "av_frame_get_buffer"},
            LibavCall{"av_frame_get_buffer", "av_frame_get_buffer"},
            LibavCall{"av_frame_make_writable", "av_frame_make_writable"},
            LibavCall{"avcodec_send_frame", "avcodec_send_frame"}),
        testing::ValuesIn(kNegativeResults)),
    [](const testing::TestParamInfo<std::tuple<LibavCall, int>>& tested) {
      return std::get<0>(tested.param).name +
             std::to_string(tested.index % kNegativeResults.size());
    });

class LibavResultTest : public FaultsTest {
 protected:
  // A take whose plugin calls get `result` for success; what they are to do is
  // done by `real`.
  void ExpectSuccess(const char* function, int nth, int result,
                     const std::function<int(PluginCall&)>& real) {
    const Bytes pcm = Sine(5 * kFrameSamples);
    const Bytes undisturbed = Undisturbed(pcm);
    const std::string path = Begin();
    {
      Fault fault(On(function).Nth(nth).Return(result).Before(
          [&](PluginCall& call) { EXPECT_EQ(real(call), 0) << function; }));
      EXPECT_EQ(Append(pcm), NullReply());
    }
    EXPECT_EQ(TakeTranscript(),
              (Lines{EncoderLine(48000, 1), Answer("append", NullReply())}));
    EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
    EXPECT_EQ(ReadFile(path), undisturbed);
    unlink(path.c_str());
    TakeTranscript();
  }
};

TEST_F(LibavResultTest, APositiveResultIsASuccess) {
  const auto writable = [](PluginCall& call) {
    return av_frame_make_writable(const_cast<AVFrame*>(call.frame));
  };
  const auto buffer = [](PluginCall& call) {
    return av_frame_get_buffer(const_cast<AVFrame*>(call.frame), 0);
  };
  for (const int result : {1, INT_MAX}) {
    ExpectSuccess("avcodec_open2", 1, result, [](PluginCall& call) {
      return avcodec_open2(call.context, nullptr, nullptr);
    });
    ExpectSuccess("av_frame_get_buffer", 1, result, buffer);
    ExpectSuccess("av_frame_make_writable", 2, result, writable);
    ExpectSuccess("avcodec_send_frame", 3, result, [](PluginCall& call) {
      return avcodec_send_frame(call.context, call.frame);
    });
    // The second call brings the first packet.
    ExpectSuccess("avcodec_receive_packet", 2, result, [](PluginCall& call) {
      return avcodec_receive_packet(call.context, call.packet);
    });
  }
}

class ReceiveResultTest : public FaultsTest,
                          public testing::WithParamInterface<int> {
 protected:
  static bool Ends(int result) {
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF;
  }
};

TEST_P(ReceiveResultTest, WhileRecordingTwoOfThemEndTheCallAndAllOthersFail) {
  const std::string path = Begin();
  const Reply error = LibavError("avcodec_receive_packet", path, GetParam());
  Fault fault(On("avcodec_receive_packet").Return(GetParam()));
  EXPECT_EQ(Append(Sine(3 * kFrameSamples)),
            Ends(GetParam()) ? NullReply() : error);
  EXPECT_EQ(fault.struck(), 3);
  EXPECT_EQ(HeldNow(), Ends(GetParam()) ? HeldWithCodec() : HeldWithoutCodec());
}

TEST_P(ReceiveResultTest, SoItIsInADrain) {
  const std::string path = Begin();
  Append(Sine(kFrameSamples));
  TakeTranscript();
  const Reply error = LibavError("avcodec_receive_packet", path, GetParam());
  Fault fault(On("avcodec_receive_packet").Nth(1).Return(GetParam()));
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_EQ(LogLines(), Ends(GetParam())
                            ? Lines{}
                            : Lines{Warning("pause drain failed for " + path +
                                            ": " + error.message)});
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_P(ReceiveResultTest, ToSendTheFlushMayNotEndInAnyOfThem) {
  const std::string path = Begin();
  Append(Sine(kFrameSamples));
  TakeTranscript();
  const Reply error = LibavError("avcodec_send_frame", path, GetParam());
  Fault fault(On("avcodec_send_frame").Nth(1).Return(GetParam()));
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_EQ(LogLines(), (Lines{Warning("pause drain failed for " + path + ": " +
                                       error.message)}));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_P(ReceiveResultTest, NorMayTheLastFrame) {
  const std::string path = Begin();
  Append(Sine(100));
  TakeTranscript();
  const Reply error = LibavError("avcodec_send_frame", path, GetParam());
  CallLog log;
  Fault fault(On("avcodec_send_frame").Nth(1).Return(GetParam()));
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_EQ(LogLines(), (Lines{Warning("codec drain on cancel failed for " +
                                       path + ": " + error.message),
                               ClosedLine("cancel", path, 0)}));
  EXPECT_EQ(log.Of("avcodec_send_frame").size(), 1U) << "no flush behind it";
}

INSTANTIATE_TEST_SUITE_P(Every, ReceiveResultTest,
                         testing::ValuesIn(kNegativeResults));

// A packet without a byte is one all the same.
TEST_F(LibavResultTest, AnEmptyPacketIsWrittenAsAHeader) {
  const std::string path = Begin();
  Fault fault(PacketsResizedTo(0));
  EXPECT_EQ(Append(Sine(2 * kFrameSamples)), NullReply());
  EXPECT_EQ(ReadFile(path), (Bytes{0xFF, 0xF1, 0x4C, 0x40, 0x00, 0xFF, 0xFC}));
  Cancel();
  EXPECT_EQ(LogLines().back(), ClosedLine("cancel", path, 3));
}

// Every codec that fails is tried once, opened or not.
TEST_F(LibavResultTest, FailuresOfDifferentCallsShareOneBudget) {
  const std::string path = Begin();
  Fault open(On("avcodec_open2").Nth(1).Return(AVERROR(EAGAIN)));
  Fault writable(On("av_frame_make_writable").Nth(1).Return(AVERROR_EOF));
  Fault send(On("avcodec_send_frame").Nth(1).Return(AVERROR(EAGAIN)));
  const Reply error = LibavError("avcodec_send_frame", path, AVERROR(EAGAIN));
  EXPECT_EQ(Append(Sine(2 * kFrameSamples)), error);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{
          Restarting(LibavError("avcodec_open2", path, AVERROR(EAGAIN))),
          EncoderLine(48000, 1),
          Restarting(LibavError("av_frame_make_writable", path, AVERROR_EOF)),
          EncoderLine(48000, 1), Failed("append", error),
          Answer("append", error)}));
}

// The objects of a codec serve all its frames.
TEST_F(LibavResultTest, ACodecNeedsOnePacketAndOneFrame) {
  Begin();
  CallLog log;
  Append(Sine(20 * kFrameSamples));
  Pause();
  for (const char* made : {"avcodec_alloc_context3", "av_frame_alloc",
                           "av_packet_alloc", "av_frame_get_buffer"}) {
    EXPECT_EQ(log.Of(made).size(), 1U) << made;
  }
}

}  // namespace
}  // namespace corvane_test
