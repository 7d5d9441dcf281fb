// "finalizePath" while a capture is open: this one, or another.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "finalize_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using FinalizeOpenCaptureTest = FinalizePathTest;

TEST_F(FinalizeOpenCaptureTest, TheCaptureBeingRecordedIsClosedFirst) {
  Recording(path_);
  const Reply figures = FinalizePath(path_);
  EXPECT_THAT(figures, Sealed(path_, FramesToMs(4, 48000), 77));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("finalizePath", path_, 4),
                          SealStartLine(path_, 77, kFinalizeLabel),
                          SealEndLine(figures, 0, kFinalizeLabel),
                          Answer("finalizePath", figures)));
  EXPECT_EQ(SplitFrames(ReadFile(path_)).size(), 4u);
  EXPECT_EQ(Stop(), PlainError("NOT_RECORDING", "stop with no open recording"));
}

TEST_F(FinalizeOpenCaptureTest, AnotherCaptureGoesOnBeingRecorded) {
  LeftBehind();
  const std::string other = Path("other.aac");
  Recording(other);
  ExpectFinalized(path_, FourFrames(whole_.size()));
  EXPECT_EQ(Append(Noise(1024)), NullReply());
  EXPECT_THAT(Stop(), Sealed(other, FramesToMs(5, 48000), 77));
}

TEST_F(FinalizeOpenCaptureTest, AnotherCaptureGoesOnEvenWhenSealingFails) {
  const std::string other = Path("other.aac");
  Recording(other);
  ExpectNotFinalized(path_, ErrnoError("CAPTURE_MISSING",
                                       "capture not available", path_, ENOENT));
  EXPECT_THAT(Stop(), Sealed(other, FramesToMs(4, 48000), 77));
}

// The count of an earlier take is still known to the plugin, but it isn't the
// count of this call.
TEST_F(FinalizeOpenCaptureTest, WithoutAnOpenCaptureNothingWasDropped) {
  Recording(path_);
  EXPECT_EQ(Stop().dropped_append_bytes, 77);
  EXPECT_THAT(FinalizePath(path_), Sealed(path_, FramesToMs(4, 48000), 0));
}

// A session that is closed has an empty path, which means the working directory
// to whoever makes it absolute.
TEST_F(FinalizeOpenCaptureTest, AClosedCaptureIsNotFoundByTheWorkingDirectory) {
  Recording(path_);
  EXPECT_EQ(Stop().dropped_append_bytes, 77);
  TakeTranscript();
  const WorkingDir here(Path(""));
  FinalizePath(".");
  EXPECT_EQ(LogLines().front(), SealStartLine(".", 0, kFinalizeLabel));
}

TEST_F(FinalizeOpenCaptureTest, TheDroppedCountIsLoggedEvenWhenSealingFails) {
  Recording(path_);
  Pause();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  const Reply error =
      ErrnoError("CAPTURE_MISSING", "capture not available", path_, ENOENT);
  FinalizePath(path_);
  EXPECT_THAT(LogLines(), ElementsAre(ClosedLine("finalizePath", path_, 4),
                                      SealStartLine(path_, 77, kFinalizeLabel),
                                      Failed("finalizePath", error)));
}

TEST_F(FinalizeOpenCaptureTest, AResumedCaptureIsSealedWithItsOldFrames) {
  LeftBehind();
  ResumePath(path_);
  Append(Noise(1024));
  EXPECT_THAT(FinalizePath(path_), Sealed(path_, FramesToMs(4 + 2, 48000)));
}

TEST_F(FinalizeOpenCaptureTest, ARefusedOutputLeavesTheCaptureOpen) {
  Recording(path_);
  const std::string output = Path("./b.aac");
  EXPECT_EQ(Call("finalizePath",
                 CaptureArgs(path_, 48000, 1).With("outputPath", output)),
            FileError("INVALID_ARGS",
                      "ADTS capture is its own deliverable; outputPath " +
                          output + " must equal capturePath",
                      path_));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4, 48000), 77));
}

TEST_F(FinalizeOpenCaptureTest, TheOpenCaptureIsFoundUnderAnySpelling) {
  const WorkingDir here(Path(""));
  ASSERT_EQ(mkdir("x", 0755), 0);
  const std::vector<std::string> spellings = {"take.aac", "./x/..//take.aac",
                                              path_, Path(".//take.aac")};
  for (const std::string& started : spellings) {
    for (const std::string& sent : spellings) {
      SCOPED_TRACE(started + " finalized as " + sent);
      Recording(started);
      EXPECT_THAT(FinalizePath(sent), Sealed(sent, FramesToMs(4, 48000), 77));
      EXPECT_EQ(Stop().code, "NOT_RECORDING");
      TruncateFile(path_, 0);
    }
  }
}

TEST_F(FinalizeOpenCaptureTest, LinksAreNotFollowedToFindTheOpenCapture) {
  Recording(path_);
  Pause();
  ASSERT_EQ(symlink("take.aac", Path("link.aac").c_str()), 0);
  EXPECT_THAT(FinalizePath(Path("link.aac")),
              Sealed(Path("link.aac"), FramesToMs(4, 48000), 0));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4, 48000), 77));
}

TEST_F(FinalizeOpenCaptureTest, EveryAnswerComesInItsTurn) {
  const Value args = CaptureArgs(path_, 48000, 1);
  const Reply refusal =
      FileError("INVALID_ARGS",
                "ADTS capture is its own deliverable; outputPath b.aac must "
                "equal capturePath",
                path_);
  Post("start", args);
  Post("append", Noise(3 * 1024));
  Post("finalizePath", args.With("outputPath", "b.aac"));
  Post("finalizePath", args.With("outputPath", path_));
  AwaitReplies();
  const Reply figures = FourFrames(static_cast<size_t>(FileSize(path_)));
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(StartLine(path_, 48000, 1), Answer("start", NullReply()),
                  EncoderLine(48000, 1), Answer("append", NullReply()),
                  Failed("finalizePath", refusal),
                  Answer("finalizePath", refusal),
                  ClosedLine("finalizePath", path_, 4),
                  SealStartLine(path_, 0, kFinalizeLabel),
                  SealEndLine(figures, 0, kFinalizeLabel),
                  Answer("finalizePath", figures)));
}

// A relative path means the working directory of the moment, for the open
// capture too: after a change of directory it goes by another name.
class MovedDirectoryTest : public FinalizePathTest {
 protected:
  MovedDirectoryTest() {
    mkdir(Path("then").c_str(), 0755);
    mkdir(Path("now").c_str(), 0755);
    const WorkingDir then(Path("then"));
    Recording("take.aac");
    Flush();
    TakeTranscript();
  }
};

TEST_F(MovedDirectoryTest, ItsOldPlaceNoLongerMatchesTheOpenCapture) {
  const WorkingDir now(Path("now"));
  const std::string path = Path("then/take.aac");
  EXPECT_THAT(FinalizePath(path), Sealed(path, FramesToMs(2, 48000), 0))
      << "what is written so far, beside the open capture";
  EXPECT_EQ(Append(Noise(1024)), NullReply()) << "which goes on";
}

TEST_F(MovedDirectoryTest, ItsNamesakeInTheNewPlaceDoes) {
  const WorkingDir now(Path("now"));
  WriteFile("take.aac", ReadFile(Path("then/take.aac")));
  FinalizePath(Path("now/take.aac"));
  EXPECT_EQ(LogLines().front(), ClosedLine("finalizePath", "take.aac", 4));
  EXPECT_EQ(LogLines().at(1),
            SealStartLine(Path("now/take.aac"), 77, kFinalizeLabel));
  EXPECT_EQ(SplitFrames(ReadFile(Path("then/take.aac"))).size(), 4u);
  EXPECT_EQ(SplitFrames(ReadFile("take.aac")).size(), 2u)
      << "another file is sealed than the one that was closed";
}

}  // namespace
}  // namespace corvane_test
