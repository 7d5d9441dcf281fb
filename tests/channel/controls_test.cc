// "pause", "resume", "stop", "cancel" and "flush" from each state.
#include <gmock/gmock.h>

#include <string>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using ControlsTest = ChannelTest;

const Reply kNotRecording =
    PlainError("NOT_RECORDING", "stop with no open recording");

TEST_F(ControlsTest, WithoutACaptureOnlyStopFails) {
  for (const char* method : {"pause", "resume", "cancel", "flush", "stop"}) {
    Call(method);
  }
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(Answer("pause", NullReply()), Answer("resume", NullReply()),
                  Answer("cancel", NullReply()), Answer("flush", NullReply()),
                  Failed("stop", kNotRecording),
                  Answer("stop", kNotRecording)));
}

TEST_F(ControlsTest, PauseWithoutACaptureDoesNotPauseTheNext) {
  Pause();
  const std::string path = Path("take.aac");
  EXPECT_THAT(Record(path, Noise(1024)), Sealed(path, 42));
}

TEST_F(ControlsTest, StopSealsAndAnswersWithTheFigures) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(10 * 1024));
  TakeTranscript();
  Stop();
  const Reply figures = Figures(path, FramesToMs(11, 48000), FileSize(path));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("stop", path, 11), SealStartLine(path),
                          SealEndLine(figures), Answer("stop", figures)));
}

TEST_F(ControlsTest, ASecondStopHasNothingToStop) {
  Record(Path("take.aac"), Noise(1024));
  EXPECT_EQ(Stop(), kNotRecording);
}

TEST_F(ControlsTest, StopWhilePausedReportsWhatWasDropped) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Pause();
  Append(Bytes(4096));
  Append(Bytes(100));
  TakeTranscript();
  const Reply figures = Figures(path, 42, FileSize(path), 4196);
  EXPECT_EQ(Stop(), figures);
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("stop", path, 2), SealStartLine(path, 4196),
                  SealEndLine(figures), Answer("stop", figures)));
}

TEST_F(ControlsTest, PauseDrainsWhatWasAppended) {
  const std::string path = Path("take.aac");
  Record(Path("stopped.aac"), Noise(1500));
  Start(path);
  Append(Noise(1500));
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_EQ(ReadFile(path), ReadFile(Path("stopped.aac")));
}

TEST_F(ControlsTest, ASecondPauseDoesNothing) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1500));
  Pause();
  const Bytes drained = ReadFile(path);
  TakeTranscript();
  Pause();
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("pause", NullReply())));
  EXPECT_EQ(ReadFile(path), drained);
}

TEST_F(ControlsTest, TheFirstAppendAfterResumeOpensAFreshCodec) {
  const std::string path = Path("take.aac");
  Record(Path("first.aac"), Noise(1500, 1, 1));
  Record(Path("second.aac"), Noise(1500, 1, 2));
  Start(path);
  Append(Noise(1500, 1, 1));
  Pause();
  Resume();
  TakeTranscript();
  Append(Noise(1500, 1, 2));
  EXPECT_THAT(TakeTranscript(), ElementsAre(EncoderLine(48000, 1),
                                            Answer("append", NullReply())));
  Stop();
  EXPECT_EQ(ReadFile(path),
            Concat(ReadFile(Path("first.aac")), ReadFile(Path("second.aac"))));
}

TEST_F(ControlsTest, ResumeWithoutAPauseChangesNothing) {
  const std::string path = Path("take.aac");
  Record(Path("reference.aac"), Noise(3000));
  Start(path);
  Append(Noise(3000));
  Resume();
  Stop();
  EXPECT_EQ(ReadFile(path), ReadFile(Path("reference.aac")));
}

TEST_F(ControlsTest, CancelKeepsTheDrainedFileUnsealed) {
  const std::string path = Path("take.aac");
  Record(Path("stopped.aac"), Noise(3000));
  Start(path);
  Append(Noise(3000));
  TakeTranscript();
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_THAT(TakeTranscript(), ElementsAre(ClosedLine("cancel", path, 4),
                                            Answer("cancel", NullReply())));
  EXPECT_EQ(ReadFile(path), ReadFile(Path("stopped.aac")));
  EXPECT_EQ(Stop(), kNotRecording);
}

TEST_F(ControlsTest, CancelDoesNotTrim) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Pause();
  AppendToFile(path, {0xFF, 0xF1, 0x50});
  const Bytes torn = ReadFile(path);
  Cancel();
  EXPECT_EQ(ReadFile(path), torn);
}

TEST_F(ControlsTest, CancelOfAnEmptyCaptureKeepsTheEmptyFile) {
  Start(Path("take.aac"));
  Cancel();
  EXPECT_EQ(FileSize(Path("take.aac")), 0);
}

TEST_F(ControlsTest, FlushWritesNothingThatIsStillPending) {
  const std::string path = Path("take.aac");
  Start(path);
  EXPECT_EQ(Flush(), NullReply());
  Append(Noise(2048));
  const Bytes written = ReadFile(path);
  Append(Noise(1000));
  TakeTranscript();
  EXPECT_EQ(Flush(), NullReply());
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("flush", NullReply())));
  EXPECT_EQ(ReadFile(path), written);
  EXPECT_EQ(SplitFrames(written).size(), 1u);
}

TEST_F(ControlsTest, FlushWhilePausedIsFine) {
  Start(Path("take.aac"));
  Append(Noise(1024));
  Pause();
  EXPECT_EQ(Flush(), NullReply());
}

}  // namespace
}  // namespace corvane_test
