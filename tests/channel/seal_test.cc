// The seal behind "stop": reopened by path, verified, measured.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

class SealTest : public ChannelTest {
 protected:
  // A capture with one second of audio, drained, its file free to be damaged.
  void RecordUnsealed() {
    Start(path_);
    Append(Noise(48000));
    Pause();
    TakeTranscript();
  }

  void ExpectStopFails(const Reply& error, size_t frames = 48) {
    Stop();
    EXPECT_THAT(
        TakeTranscript(),
        ElementsAre(ClosedLine("stop", path_, frames), SealStartLine(path_),
                    Failed("stop", error), Answer("stop", error)));
  }

  const std::string path_ = Path("take.aac");
};

TEST_F(SealTest, AVanishedCaptureIsMissing) {
  RecordUnsealed();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  ExpectStopFails(
      ErrnoError("CAPTURE_MISSING", "capture not available", path_, ENOENT));
  EXPECT_THAT(ListDir(Path("")), ElementsAre()) << "nothing is created";
}

TEST_F(SealTest, AFolderInItsPlaceIsNotACapture) {
  RecordUnsealed();
  ASSERT_EQ(rename(path_.c_str(), Path("moved.aac").c_str()), 0);
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  ExpectStopFails(
      ErrnoError("FINALIZE_FAILED", "capture not available", path_, EISDIR));
}

TEST_F(SealTest, AFileThatCannotBeSyncedIsNotSealed) {
  RecordUnsealed();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  ASSERT_EQ(symlink("/dev/null", path_.c_str()), 0);
  ExpectStopFails(
      ErrnoError("FINALIZE_FAILED", "sealing capture failed", path_, EINVAL));
}

TEST_F(SealTest, ACaptureWithoutAudioFailsItsVerificationAndStays) {
  Start(path_);
  TakeTranscript();
  ExpectStopFails(
      FileError("VERIFY_FAILED",
                "capture holds no complete AAC frame (0 bytes)", path_),
      0);
  EXPECT_THAT(ListDir(Path("")), ElementsAre("take.aac"));
}

TEST_F(SealTest, ForeignBytesAloneFailTheVerificationUntouched) {
  RecordUnsealed();
  WriteFile(path_, Bytes(100, 0xAA));
  ExpectStopFails(FileError("VERIFY_FAILED",
                            "capture holds no complete AAC frame (100 bytes)",
                            path_));
  EXPECT_EQ(ReadFile(path_), Bytes(100, 0xAA));
}

TEST_F(SealTest, TheDroppedCountIsLoggedEvenWhenSealingFails) {
  Start(path_);
  Pause();
  Append(Bytes(77));
  TakeTranscript();
  const Reply error = FileError(
      "VERIFY_FAILED", "capture holds no complete AAC frame (0 bytes)", path_);
  EXPECT_EQ(Stop(), error);
  EXPECT_THAT(LogLines(),
              ElementsAre(ClosedLine("stop", path_, 0),
                          SealStartLine(path_, 77), Failed("stop", error)));
}

TEST_F(SealTest, TheDurationCountsWholeFramesRoundedDown) {
  for (const int rate : {7350, 11025, 22050, 44100, 96000}) {
    const std::string path = Path(std::to_string(rate) + ".aac");
    EXPECT_THAT(Record(path, Noise(7000), rate),
                Sealed(path, FramesToMs(8, rate)));
  }
}

TEST_F(SealTest, SpeechIsSealedWithItsFigures) {
  const size_t samples = Speech().size() / 2;
  const size_t frames = (samples + 1023) / 1024 + 1;
  EXPECT_THAT(Record(path_, Speech()),
              Sealed(path_, FramesToMs(frames, 48000)));
  EXPECT_EQ(SplitFrames(ReadFile(path_)).size(), frames);
}

// The duration follows the rate of the last frame, as a scan reports it.
TEST_F(SealTest, ASealedFileMayHoldSomebodyElsesFrames) {
  Record(Path("other.aac"), Noise(2048, 2), 8000, 2);
  const Bytes other = ReadFile(Path("other.aac"));
  RecordUnsealed();
  AppendToFile(path_, other);
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(48 + 3, 8000)));
}

TEST_F(SealTest, ARelativePathIsReturnedUnchanged) {
  const WorkingDir here(Path(""));
  const Reply figures = Record("./take.aac", Noise(1024));
  EXPECT_THAT(figures, Sealed("./take.aac", 42));
  EXPECT_EQ(LogLines().back(), SealEndLine(figures));
}

}  // namespace
}  // namespace corvane_test
