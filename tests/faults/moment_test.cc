// What decides: the state at the moment when a call runs, and when a line is
// delivered, not the state when it was made or written.
#include <gmock/gmock.h>

#include "moment_fixture.h"

namespace corvane_test {
namespace {

TEST_F(MomentTest, PauseDropsWhatRunsBehindItAndNothingElse) {
  HoldInAFlush();
  Post("append", Noise(1024));  // before the pause
  Post("pause");
  Post("append", Bytes(100, 0));
  Post("append", Bytes(23, 0));
  Post("resume");
  Post("append", Noise(1024));
  Post("stop");
  GoOn();
  EXPECT_EQ(SplitFrames(ReadFile(path_)).size(), 4U);
  const Reply again = FinalizePath(path_);
  EXPECT_EQ(again.dropped_append_bytes, 0);
}

TEST_F(MomentTest, StopTellsWhatWasDroppedUntilItRuns) {
  HoldInAFlush();
  Post("append", Noise(1024));
  Post("pause");
  Post("append", Bytes(100, 0));
  Post("append", Bytes(23, 0));
  Post("stop");
  const Lines lines = GoOn();
  EXPECT_EQ(lines.back(),
            Answer("stop", Figures(path_, 42, FileSize(path_), 123)));
}

TEST_F(MomentTest, WhatIsAppendedBeforeAPauseRunsIsEncoded) {
  HoldInAFlush();
  Post("append", Noise(1024));
  Post("append", Noise(1024));
  Post("pause");
  GoOn();
  EXPECT_EQ(SplitFrames(ReadFile(path_)).size(), 3U);
  EXPECT_EQ(Stop().dropped_append_bytes, 0);
}

TEST_F(MomentTest, WhatIsAppendedBeforeAResumeRunsIsDropped) {
  path_ = Begin();
  Pause();
  TakeTranscript();
  HoldWithoutACapture();
  Post("append", Bytes(7, 0));
  Post("resume");
  GoOn();
  EXPECT_EQ(HeldNow(), HeldWithoutCodec()) << "nothing was encoded";
  // No frame: the verdict leaves the count to the log.
  EXPECT_EQ(Stop().code, "VERIFY_FAILED");
  EXPECT_THAT(LogLines(), testing::Contains(SealStartLine(path_, 7)));
}

TEST_F(MomentTest, OnlyTheFirstRefusalOfARowIsLoggedHoweverFastTheyCome) {
  HoldWithoutACapture();
  Post("append", Bytes(1, 0));
  Post("append", Bytes(2, 0));
  Post("append", Bytes(3, 0));
  EXPECT_EQ(
      GoOn(),
      (Lines{Failed("append", NoAppend(1)), Answer("append", NoAppend(1)),
             Answer("append", NoAppend(2)), Answer("append", NoAppend(3))}));
}

TEST_F(MomentTest, ARefusalIsLoudAgainBehindACaptureThatWasStillToCome) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  Post("append", Bytes(1, 0));
  Post("start", CaptureArgs(path, 48000, 1));
  Post("cancel");
  Post("append", Bytes(2, 0));
  EXPECT_EQ(
      GoOn(),
      (Lines{Failed("append", NoAppend(1)), Answer("append", NoAppend(1)),
             StartLine(path, 48000, 1), Answer("start", NullReply()),
             ClosedLine("cancel", path, 0), Answer("cancel", NullReply()),
             Failed("append", NoAppend(2)), Answer("append", NoAppend(2))}));
}

TEST_F(MomentTest, AnEmptyChunkIsRefusedLikeAnyOther) {
  HoldWithoutACapture();
  Post("append", Bytes());
  EXPECT_EQ(GoOn(), (Lines{Failed("append", NoAppend(0)),
                           Answer("append", NoAppend(0))}));
}

TEST_F(MomentTest, ACaptureThatIsStillToStartCanBeDrivenAlready) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  CallLog log;
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(1024));
  Post("flush");
  Post("stop");
  const Lines lines = GoOn();
  const Reply figures = Figures(path, 42, FileSize(path));
  EXPECT_EQ(lines,
            (Lines{StartLine(path, 48000, 1), Answer("start", NullReply()),
                   EncoderLine(48000, 1), Answer("append", NullReply()),
                   Answer("flush", NullReply()), ClosedLine("stop", path, 2),
                   SealStartLine(path), SealEndLine(figures),
                   Answer("stop", figures)}));
  EXPECT_EQ(log.Of("fsync").size(), 4U)
      << "the repair's, the flush's, the closing one and the seal's";
}

TEST_F(MomentTest, ACaptureThatIsGoneWhenItsStopRunsCannotBeStopped) {
  HoldInAFlush();
  Post("cancel");
  Post("stop");
  Post("append", Bytes(5, 0));
  EXPECT_EQ(
      GoOn(),
      (Lines{ClosedLine("cancel", path_, 0), Answer("cancel", NullReply()),
             Failed("stop", kNoStop), Answer("stop", kNoStop),
             Failed("append", NoAppend(5)), Answer("append", NoAppend(5))}));
}

// Lines written while nobody listens, delivered when somebody does.
TEST_F(MomentTest, ALineGoesToWhoeverListensWhenItIsDelivered) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  CancelLog();
  Post("stop");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("flush");
  HoldAgainIn(On("fsync").Path(path));
  ListenToLog();
  EXPECT_EQ(GoOn(),
            (Lines{Failed("stop", kNoStop), Answer("stop", kNoStop),
                   StartLine(path, 48000, 1), Answer("start", NullReply()),
                   Answer("flush", NullReply())}));
}

// And the other way round.
TEST_F(MomentTest, ALineGoesToNobodyWhenNobodyListensAnyMore) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  Post("stop");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("flush");
  HoldAgainIn(On("fsync").Path(path));
  CancelLog();
  EXPECT_EQ(GoOn(),
            (Lines{Answer("stop", kNoStop), Answer("start", NullReply()),
                   Answer("flush", NullReply())}));
}

}  // namespace
}  // namespace corvane_test
