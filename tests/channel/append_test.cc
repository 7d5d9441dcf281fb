// Chunks of PCM: carried, dropped, refused.
#include <gmock/gmock.h>

#include <string>

#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using AppendTest = ChannelTest;

Reply NoRecording(size_t bytes) {
  return PlainError("NOT_RECORDING", "append of " + std::to_string(bytes) +
                                         " bytes with no open recording");
}

TEST_F(AppendTest, WithoutACaptureOnlyTheFirstRefusalIsLogged) {
  for (const size_t bytes : {10, 0, 4097}) Append(Bytes(bytes));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Failed("append", NoRecording(10)),
                          Answer("append", NoRecording(10)),
                          Answer("append", NoRecording(0)),
                          Answer("append", NoRecording(4097))));
}

TEST_F(AppendTest, AfterStopOnlyTheFirstRefusalIsLogged) {
  Record(Path("take.aac"), Noise(1024));
  TakeTranscript();
  Append(Bytes(2));
  Append(Bytes(2));
  EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("append", NoRecording(2)),
                                            Answer("append", NoRecording(2)),
                                            Answer("append", NoRecording(2))));
}

TEST_F(AppendTest, ANewCaptureMakesTheNextRefusalLoudAgain) {
  Append(Bytes(2));
  Start(Path("take.aac"));
  Cancel();
  TakeTranscript();
  Append(Bytes(2));
  Append(Bytes(2));
  EXPECT_THAT(TakeTranscript(), ElementsAre(Failed("append", NoRecording(2)),
                                            Answer("append", NoRecording(2)),
                                            Answer("append", NoRecording(2))));
}

TEST_F(AppendTest, AFailedStartDoesNotMakeItLoudAgain) {
  Append(Bytes(2));
  Start(Path("no/such/folder/take.aac"));
  TakeTranscript();
  Append(Bytes(2));
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("append", NoRecording(2))));
}

TEST_F(AppendTest, MalformedCallsDoNotUseUpTheOneLine) {
  const Reply malformed = InvalidArgs("append requires Uint8List");
  Call("append", 7);
  Append(Bytes(2));
  Call("append", 7);
  EXPECT_THAT(LogLines(), ElementsAre(Failed("append", malformed),
                                      Failed("append", NoRecording(2)),
                                      Failed("append", malformed)));
}

TEST_F(AppendTest, AnEmptyChunkIsTakenAndDoesNothing) {
  const std::string path = Path("take.aac");
  Start(path);
  EXPECT_EQ(Append({}), NullReply());
  EXPECT_EQ(Append(Noise(1024)), NullReply());
  EXPECT_EQ(Append({}), NullReply());
  EXPECT_THAT(Stop(), Sealed(path, 42));
}

TEST_F(AppendTest, WhilePausedBytesAreCountedAndDropped) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Pause();
  const Bytes drained = ReadFile(path);
  EXPECT_EQ(Append(Noise(2048)), NullReply());
  EXPECT_EQ(Append(Bytes(100)), NullReply());
  EXPECT_EQ(Append({}), NullReply());
  EXPECT_EQ(Append(Bytes(1)), NullReply());
  EXPECT_EQ(ReadFile(path), drained);
  EXPECT_THAT(Stop(), Sealed(path, 42, 4197));
  EXPECT_EQ(ReadFile(path), drained);
}

TEST_F(AppendTest, TheDroppedCountAddsUpOverSeveralPauses) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  for (int pause = 0; pause < 3; ++pause) {
    Pause();
    Append(Bytes(7));
    Resume();
  }
  EXPECT_THAT(Stop(), Sealed(path, 42, 21));
}

TEST_F(AppendTest, TheDroppedCountStartsAgainWithEachCapture) {
  Start(Path("first.aac"));
  Pause();
  Append(Bytes(100));
  Cancel();
  const std::string path = Path("second.aac");
  EXPECT_THAT(Record(path, Noise(1024)), Sealed(path, 42));
}

TEST_F(AppendTest, AStartOverAPausedCaptureIsNotPaused) {
  Start(Path("first.aac"));
  Pause();
  Append(Bytes(100));
  const std::string path = Path("second.aac");
  EXPECT_THAT(Record(path, Noise(1024)), Sealed(path, 42));
}

}  // namespace
}  // namespace corvane_test
