// The order in which the Dart side sees replies and log lines.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using OrderTest = ChannelTest;

TEST_F(OrderTest, AMalformedCallIsAnsweredInItsTurn) {
  const std::string path = Path("take.aac");
  const Reply refusal = InvalidArgs("append requires Uint8List");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Silence(1));
  Post("append", "not bytes");
  Post("append", Silence(1));
  Post("flush");
  Post("pause");
  Post("append", Silence(1));
  Post("resume");
  Post("cancel");
  Post("stop");
  AwaitReplies();
  const Reply none = PlainError("NOT_RECORDING", "stop with no open recording");
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(StartLine(path, 48000, 1), Answer("start", NullReply()),
                  EncoderLine(48000, 1), Answer("append", NullReply()),
                  Failed("append", refusal), Answer("append", refusal),
                  Answer("append", NullReply()), Answer("flush", NullReply()),
                  Answer("pause", NullReply()), Answer("append", NullReply()),
                  Answer("resume", NullReply()), ClosedLine("cancel", path, 2),
                  Answer("cancel", NullReply()), Failed("stop", none),
                  Answer("stop", none)));
}

TEST_F(OrderTest, EveryMethodsMalformedCallIsAnsweredInItsTurn) {
  const std::string path = Path("take.aac");
  const Reply no_path = InvalidArgs("start requires capturePath");
  const Reply no_resume = InvalidArgs("resumePath requires capturePath");
  const Reply no_finalize =
      InvalidArgs("finalizePath requires capturePath, outputPath");
  const Reply no_wav =
      InvalidArgs("finalizeWavOnly requires wavPath, sampleRate, channels");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(48000));
  Post("start");
  Post("resumePath");
  Post("finalizePath");
  Post("finalizeWavOnly");
  Post("flush");
  AwaitReplies();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(
          StartLine(path, 48000, 1), Answer("start", NullReply()),
          EncoderLine(48000, 1), Answer("append", NullReply()),
          Failed("start", no_path), Answer("start", no_path),
          Failed("resumePath", no_resume), Answer("resumePath", no_resume),
          Failed("finalizePath", no_finalize),
          Answer("finalizePath", no_finalize),
          Failed("finalizeWavOnly", no_wav), Answer("finalizeWavOnly", no_wav),
          Answer("flush", NullReply())));
}

TEST_F(OrderTest, ARefusedFormatIsAnsweredInItsTurn) {
  const std::string path = Path("take.aac");
  const Reply refusal =
      PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(48000));
  Post("start", CaptureArgs(path, 44000, 1));
  Post("cancel");
  AwaitReplies();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(StartLine(path, 48000, 1), Answer("start", NullReply()),
                  EncoderLine(48000, 1), Answer("append", NullReply()),
                  Failed("start", refusal), Answer("start", refusal),
                  ClosedLine("cancel", path, 48),
                  Answer("cancel", NullReply())));
}

TEST_F(OrderTest, AnUnknownNameIsAnsweredAtOnce) {
  Post("start", CaptureArgs(Path("take.aac"), 48000, 1));
  Post("append", Noise(48000));
  Post("begin");
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("begin", NotImplemented())))
      << "before the main context ran once";
  AwaitReplies();
}

TEST_F(OrderTest, RepliesKeepTheOrderOfManyCalls) {
  Start(Path("take.aac"));
  Append(Silence(1));
  TakeTranscript();
  std::vector<std::string> expected;
  for (int i = 0; i < 300; ++i) {
    const char* method = i % 3 == 0   ? "flush"
                         : i % 3 == 1 ? "append"
                                      : "resume";
    Post(method, i % 3 == 1 ? Value(Silence(1)) : Value());
    expected.push_back(Answer(method, NullReply()));
  }
  AwaitReplies();
  EXPECT_EQ(TakeTranscript(), expected);
}

// The caller may use its buffer again as soon as the call is made.
TEST_F(OrderTest, AppendCopiesItsBytesBeforeItReturns) {
  const Bytes pcm = Noise(4096);
  Record(Path("copied.aac"), pcm);
  Start(Path("reused.aac"));
  {
    FlMethodCodec* codec = FL_METHOD_CODEC(fl_standard_method_codec_new());
    const Value args(pcm);
    GBytes* message = FL_METHOD_CODEC_GET_CLASS(codec)->encode_method_call(
        codec, "append", args.get(), nullptr);
    gsize size = 0;
    auto* raw = static_cast<uint8_t*>(g_bytes_unref_to_data(message, &size));
    g_autoptr(GBytes) lent = g_bytes_new_static(raw, size);
    engine().SendRaw("com.velka.corvane", lent, nullptr);
    std::fill(raw, raw + size, 0xAA);
    g_free(raw);
    g_object_unref(codec);
  }
  Stop();
  EXPECT_EQ(ReadFile(Path("reused.aac")), ReadFile(Path("copied.aac")));
}

}  // namespace
}  // namespace corvane_test
