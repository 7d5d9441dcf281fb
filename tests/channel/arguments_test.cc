// What the method table refuses, and in which words.
#include <gmock/gmock.h>

#include <map>
#include <string>

#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using ArgumentsTest = ChannelTest;
using Cases = std::map<std::string, Value>;

const Bytes kSomeBytes = {1, 2, 3};

// Everything that is not a map with a non-empty string "capturePath".
Cases WithoutCapturePath() {
  const Value good = CaptureArgs("take.aac", 48000, 1);
  return {
      {"no arguments", Value()},
      {"null", Value::Null()},
      {"a string", "take.aac"},
      {"a list", Value::List({"capturePath", "take.aac"})},
      {"bytes", kSomeBytes},
      {"an empty map", Value::Map({})},
      {"a map without the key", good.Without("capturePath")},
      {"a null path", good.With("capturePath", Value::Null())},
      {"a number as path", good.With("capturePath", 7)},
      {"bytes as path", good.With("capturePath", kSomeBytes)},
      {"a list as path", good.With("capturePath", Value::List({"take.aac"}))},
      {"an empty path", good.With("capturePath", "")},
      {"neither path nor format", Value::Map({{"bitRate", 0}})},
  };
}

TEST_F(ArgumentsTest, StartWantsACapturePath) {
  const Reply refusal = InvalidArgs("start requires capturePath");
  for (const auto& [name, args] : WithoutCapturePath()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("start", args), refusal);
    EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("start", refusal),
                                              Answer("start", refusal)));
  }
}

TEST_F(ArgumentsTest, ResumePathWantsACapturePath) {
  const Reply refusal = InvalidArgs("resumePath requires capturePath");
  for (const auto& [name, args] : WithoutCapturePath()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("resumePath", args), refusal);
    EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("resumePath", refusal),
                                              Answer("resumePath", refusal)));
  }
}

TEST_F(ArgumentsTest, FinalizePathWantsBothPaths) {
  const Reply refusal =
      InvalidArgs("finalizePath requires capturePath, outputPath");
  Cases cases = WithoutCapturePath();
  for (auto& [name, args] : cases) {
    const bool is_map = args.get() != nullptr &&
                        fl_value_get_type(args.get()) == FL_VALUE_TYPE_MAP;
    if (is_map) args = args.With("outputPath", "take.aac");
  }
  const Value capture_only = CaptureArgs("take.aac", 48000, 1);
  cases["no output path"] = capture_only;
  cases["a null output path"] = capture_only.With("outputPath", Value::Null());
  cases["a number as output path"] = capture_only.With("outputPath", 7);
  cases["bytes as output path"] = capture_only.With("outputPath", kSomeBytes);
  cases["an empty output path"] = capture_only.With("outputPath", "");
  for (const auto& [name, args] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("finalizePath", args), refusal);
    EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("finalizePath", refusal),
                                              Answer("finalizePath", refusal)));
  }
}

TEST_F(ArgumentsTest, FinalizePathWantsTheOutputToBeTheCapture) {
  const WorkingDir here(Path(""));
  const Value args = CaptureArgs("rec/a.aac", 48000, 1);
  for (const std::string output :
       {"rec/b.aac", "./rec/A.aac", "/rec/a.aac", "rec/a.aac/b", "../a.aac"}) {
    SCOPED_TRACE(output);
    const Reply refusal =
        FileError("INVALID_ARGS",
                  "ADTS capture is its own deliverable; outputPath " + output +
                      " must equal capturePath",
                  "rec/a.aac");
    EXPECT_EQ(Call("finalizePath", args.With("outputPath", output)), refusal);
    EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("finalizePath", refusal),
                                              Answer("finalizePath", refusal)));
  }
}

TEST_F(ArgumentsTest, FinalizePathChecksTheFormatBeforeComparingThePaths) {
  const Value args = CaptureArgs("a.aac", 44000, 1).With("outputPath", "b.aac");
  EXPECT_EQ(Call("finalizePath", args),
            PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz"));
}

TEST_F(ArgumentsTest, FinalizeWavOnlyWantsPathRateAndChannels) {
  const Reply refusal =
      InvalidArgs("finalizeWavOnly requires wavPath, sampleRate, channels");
  const Value good = Value::Map(
      {{"wavPath", "take.wav"}, {"sampleRate", 48000}, {"channels", 1}});
  const Cases cases = {
      {"no arguments", Value()},
      {"null", Value::Null()},
      {"a list", Value::List({"take.wav", 48000, 1})},
      {"bytes", kSomeBytes},
      {"no path", good.Without("wavPath")},
      {"another method's path", CaptureArgs("take.wav", 48000, 1)},
      {"a null path", good.With("wavPath", Value::Null())},
      {"a number as path", good.With("wavPath", 7)},
      {"an empty path", good.With("wavPath", "")},
      {"no rate", good.Without("sampleRate")},
      {"a rate of 0", good.With("sampleRate", 0)},
      {"a negative rate", good.With("sampleRate", -48000)},
      {"a rate above 31 bits", good.With("sampleRate", int64_t{2147483648})},
      {"a rate whose lower 32 bits are one",
       good.With("sampleRate", int64_t{4295015296})},
      {"a floating-point rate", good.With("sampleRate", 48000.0)},
      {"no channels", good.Without("channels")},
      {"0 channels", good.With("channels", 0)},
      {"channels above 31 bits", good.With("channels", int64_t{2147483648})},
      {"channels whose lower 32 bits are some",
       good.With("channels", int64_t{4294967297})},
      {"channels as text", good.With("channels", "1")},
  };
  for (const auto& [name, args] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("finalizeWavOnly", args), refusal);
    EXPECT_THAT(TakeTranscript(),
                ElementsAre(Failed("finalizeWavOnly", refusal),
                            Answer("finalizeWavOnly", refusal)));
  }
}

TEST_F(ArgumentsTest, AppendWantsAUint8List) {
  const Reply refusal = InvalidArgs("append requires Uint8List");
  const Cases cases = {
      {"no arguments", Value()},
      {"null", Value::Null()},
      {"a number", 7},
      {"a string", "\1\2\3"},
      {"a list of ints", Value::List({1, 2, 3})},
      {"an Int32List", Value::Int32List({1, 2, 3})},
      {"an empty map", Value::Map({})},
      {"a map that holds bytes", Value::Map({{"bytes", kSomeBytes}})},
      {"a list that holds bytes", Value::List({kSomeBytes})},
  };
  Start(Path("take.aac"));
  TakeTranscript();
  for (const auto& [name, args] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("append", args), refusal);
    EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("append", refusal),
                                              Answer("append", refusal)));
  }
}

TEST_F(ArgumentsTest, ControlsIgnoreTheirArguments) {
  Start(Path("take.aac"));
  for (const char* method : {"pause", "resume", "flush", "cancel"}) {
    SCOPED_TRACE(method);
    EXPECT_EQ(Call(method, Value::Map({{"capturePath", 7}})), NullReply());
    EXPECT_EQ(Call(method, kSomeBytes), NullReply());
  }
  EXPECT_EQ(Call("stop", "at once"),
            PlainError("NOT_RECORDING", "stop with no open recording"));
}

TEST_F(ArgumentsTest, NamesAreComparedExactly) {
  for (const char* method :
       {"Start", "START", "start ", " start", "starts", "star", "", "Append",
        "resumepath", "finalize", "finalizeWAVOnly", "listen", "cancel\n"}) {
    SCOPED_TRACE(method);
    EXPECT_EQ(Call(method, CaptureArgs(Path("take.aac"), 48000, 1)),
              NotImplemented());
  }
  EXPECT_THAT(LogLines(), ElementsAre()) << "an unknown name is not logged";
  EXPECT_THAT(ListDir(Path("")), ElementsAre());
}

}  // namespace
}  // namespace corvane_test
