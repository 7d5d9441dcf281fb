// "finalizePath": a file sealed by its path, with no capture open.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "finalize_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

TEST_F(FinalizePathTest, AWholeCaptureIsVerifiedAndLeftAsItIs) {
  LeftBehind();
  ExpectFinalized(path_, FourFrames(whole_.size()));
  EXPECT_EQ(ReadFile(path_), whole_);
  ExpectFinalized(path_, FourFrames(whole_.size()));
}

TEST_F(FinalizePathTest, ATornTailIsCutOff) {
  LeftBehind();
  AppendToFile(path_, Slice(whole_, 0, 20));
  ExpectFinalized(path_, FourFrames(whole_.size()), {DroppingLine(20, path_)});
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(FinalizePathTest, BothKindsOfDamageAreReportedTheCutFirst) {
  LeftBehind();
  const Bytes trusted = Concat(Concat(whole_, Bytes(10, 0xAA)), whole_);
  WriteFile(path_, Concat(trusted, {0xFF, 0xF1}));
  ExpectFinalized(path_,
                  Figures(path_, FramesToMs(8, 48000), FileSize(path_) - 2),
                  {DroppingLine(2, path_), ForeignLine(path_, 10)}, 10);
  EXPECT_EQ(ReadFile(path_), trusted);
}

TEST_F(FinalizePathTest, ForeignBytesAtTheEndAreKeptAndMeasured) {
  LeftBehind();
  AppendToFile(path_, Bytes(500, 0xAA));
  ExpectFinalized(path_, FourFrames(whole_.size() + 500));
}

TEST_F(FinalizePathTest, AMissingCaptureIsNotCreated) {
  ExpectNotFinalized(path_, ErrnoError("CAPTURE_MISSING",
                                       "capture not available", path_, ENOENT));
  EXPECT_THAT(ListDir(Path("")), ElementsAre());
}

TEST_F(FinalizePathTest, AFolderIsNotACapture) {
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  ExpectNotFinalized(path_, ErrnoError("FINALIZE_FAILED",
                                       "capture not available", path_, EISDIR));
}

TEST_F(FinalizePathTest, AFileThatCannotBeSyncedIsNotSealed) {
  ASSERT_EQ(symlink("/dev/null", path_.c_str()), 0);
  ExpectNotFinalized(
      path_,
      ErrnoError("FINALIZE_FAILED", "sealing capture failed", path_, EINVAL));
}

TEST_F(FinalizePathTest, AnEmptyFileFailsItsVerificationAndStays) {
  WriteFile(path_, {});
  ExpectNotFinalized(path_, NoFrameIn(0));
  EXPECT_TRUE(Exists(path_));
}

TEST_F(FinalizePathTest, ForeignBytesAloneFailTheVerificationUntouched) {
  WriteFile(path_, Bytes(100, 0xAA));
  ExpectNotFinalized(path_, NoFrameIn(100));
  EXPECT_EQ(ReadFile(path_), Bytes(100, 0xAA));
}

TEST_F(FinalizePathTest, ATornFirstFrameLeavesNothingToSeal) {
  LeftBehind();
  TruncateFile(path_, 50);
  ExpectNotFinalized(path_, NoFrameIn(0), {DroppingLine(50, path_)});
  EXPECT_EQ(FileSize(path_), 0);
}

TEST_F(FinalizePathTest, TheFormatIsDemandedAndNotUsed) {
  LeftBehind();
  const Value args =
      CaptureArgs(path_, 8000, 6).With("outputPath", path_).With("bitRate", 1);
  EXPECT_EQ(Call("finalizePath", args), FourFrames(whole_.size()));
}

TEST_F(FinalizePathTest, PathsMayBeSpelledDifferentlyAndTheCapturesIsKept) {
  LeftBehind();
  ASSERT_EQ(mkdir(Path("rec").c_str(), 0755), 0);
  const WorkingDir here(Path("rec"));
  const std::string capture = ".././/take.aac";
  const Value args =
      CaptureArgs(capture, 48000, 1).With("outputPath", path_ + "/");
  const Reply figures = Figures(capture, FramesToMs(4, 48000),
                                static_cast<int64_t>(whole_.size()));
  Call("finalizePath", args);
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(SealStartLine(capture, 0, kFinalizeLabel),
                          SealEndLine(figures, 0, kFinalizeLabel),
                          Answer("finalizePath", figures)));
}

}  // namespace
}  // namespace corvane_test
