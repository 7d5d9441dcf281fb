// What decides is the file, and the open capture, that a call finds when it
// runs, not those of the moment when it was made.
#include "moment_fixture.h"

namespace corvane_test {
namespace {

TEST_F(MomentTest, AStartClosesTheCaptureThatIsOpenWhenItRuns) {
  HoldWithoutACapture();
  const std::string first = Path("first.aac");
  const std::string second = Path("second.aac");
  Post("start", CaptureArgs(first, 48000, 1));
  Post("start", CaptureArgs(second, 48000, 1));
  Post("resumePath", CaptureArgs(first, 48000, 1));
  EXPECT_EQ(
      GoOn(),
      (Lines{StartLine(first, 48000, 1), Answer("start", NullReply()),
             ClosedLine("start over an open session", first, 0),
             StartLine(second, 48000, 1), Answer("start", NullReply()),
             ClosedLine("resumePath over an open session", second, 0),
             ResumeLine(first, 0, 0), Answer("resumePath", NullReply())}));
}

TEST_F(MomentTest, AStartMovesAsideWhatIsThereWhenItRuns) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  Post("start", CaptureArgs(path, 48000, 1));
  WriteFile(path, {1, 2, 3});
  GoOn();
  EXPECT_EQ(ReadFile(Path("late.orphan.aac")), (Bytes{1, 2, 3}));
}

TEST_F(MomentTest, AStartLeavesAloneWhatIsGoneWhenItRuns) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  WriteFile(path, {1, 2, 3});
  Post("start", CaptureArgs(path, 48000, 1));
  ASSERT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(GoOn(),
            (Lines{StartLine(path, 48000, 1), Answer("start", NullReply())}));
}

TEST_F(MomentTest, FinalizePathClosesTheCaptureThatIsOpenWhenItRuns) {
  HoldWithoutACapture();
  const std::string path = Path("late.aac");
  Post("start", CaptureArgs(path, 48000, 1));
  Post("append", Noise(1024));
  Post("pause");
  Post("append", Bytes(9, 0));
  Post("finalizePath", CaptureArgs(path, 48000, 1).With("outputPath", path));
  const Lines lines = GoOn();
  EXPECT_EQ(lines.back(),
            Answer("finalizePath", Figures(path, 42, FileSize(path), 9)));
  EXPECT_EQ(HeldNow(), Held());
}

TEST_F(MomentTest, FinalizePathLeavesACaptureThatIsAnotherWhenItRuns) {
  HoldInAFlush();
  const std::string other = Path("other.aac");
  Post("start", CaptureArgs(other, 48000, 1));
  Post("finalizePath", CaptureArgs(path_, 48000, 1).With("outputPath", path_));
  GoOn();
  EXPECT_EQ(HeldNow(), HeldWithoutCodec()) << "the other is open";
}

TEST_F(MomentTest, AWavFileIsMeasuredWhenItsRepairRuns) {
  HoldWithoutACapture();
  const std::string wav = Path("growing.wav");
  WriteFile(wav, Bytes(50, 0));
  Post("finalizeWavOnly", WavArgs(wav));
  AppendToFile(wav, Bytes(94, 0));
  EXPECT_EQ(GoOn().front(),
            Info("finalizeWavOnly patched " + wav + " dataBytes=100"));
}

}  // namespace
}  // namespace corvane_test
