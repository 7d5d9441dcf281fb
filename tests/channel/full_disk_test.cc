// Writes that the system refuses: a device that is full, a file that may not
// grow. What was written before stays, and the plugin goes on.
#include <errno.h>
#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "channel/system_limits.h"
#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using FullDiskTest = ChannelTest;

constexpr char kFull[] = "/dev/full";
const std::string kAppendFailed =
    std::string("Failed to append AAC frame: ") + std::strerror(ENOSPC);

Reply WriteFailed(const std::string& path, int errnum) {
  return ErrnoError("WRITE_FAILED", "Failed to append AAC frame", path, errnum);
}

TEST_F(FullDiskTest, AFailedWriteIsTheReplyOfItsAppend) {
  const Reply error = WriteFailed(kFull, ENOSPC);
  Start(kFull);
  Append(Noise(1024));
  TakeTranscript();
  Append(Noise(1024));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Failed("append", error), Answer("append", error)))
      << "no restart of the codec, no other line";
  Append(Noise(10));
  EXPECT_THAT(TakeTranscript(), ElementsAre(Answer("append", NullReply())))
      << "the codec is still open and the frame is not full yet";
}

TEST_F(FullDiskTest, AFailedWriteDropsTheRestOfItsChunk) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  {
    const FilesEndAt nothing(0);
    EXPECT_EQ(Append(Noise(10 * 1024)), WriteFailed(path, EFBIG));
  }
  // One frame of the ten was taken, and its packet is lost.
  EXPECT_EQ(FileSize(path), 0);
  EXPECT_THAT(Stop(), Sealed(path, 42))
      << "two frames were still inside the codec";
}

TEST_F(FullDiskTest, AFailedPauseIsOnlyAWarning) {
  Start(kFull);
  Append(Noise(1024));
  TakeTranscript();
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Warning(std::string("pause drain failed for ") +
                                  kFull + ": " + kAppendFailed),
                          Answer("pause", NullReply())));
  EXPECT_EQ(Append(Bytes(10)), NullReply());
  EXPECT_EQ(Cancel(), NullReply());
}

TEST_F(FullDiskTest, AFailedFlushIsAnError) {
  const Reply error = ErrnoError("WRITE_FAILED", "flush failed", kFull, EINVAL);
  Start(kFull);
  TakeTranscript();
  Flush();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Failed("flush", error), Answer("flush", error)));
}

TEST_F(FullDiskTest, StopReportsEachFailureAndThatItCannotSeal) {
  const Reply error =
      ErrnoError("FINALIZE_FAILED", "sealing capture failed", kFull, EINVAL);
  Start(kFull);
  Append(Noise(1024));
  TakeTranscript();
  Stop();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(Warning(std::string("codec drain on stop failed for ") +
                          kFull + ": " + kAppendFailed),
                  Warning(std::string("sync on stop failed for ") + kFull +
                          ": " + std::strerror(EINVAL)),
                  ClosedLine("stop", kFull, 0), SealStartLine(kFull),
                  Failed("stop", error), Answer("stop", error)));
  EXPECT_EQ(Stop(), PlainError("NOT_RECORDING", "stop with no open recording"))
      << "a failed seal does not reopen the capture";
}

// A short write leaves part of a frame behind, which the seal cuts off.
TEST_F(FullDiskTest, AWholeFrameBeforeTheEndOfTheDiskIsKept) {
  const std::string path = Path("take.aac");
  Record(Path("reference.aac"), Noise(3 * 1024));
  const auto frames = SplitFrames(ReadFile(Path("reference.aac")));
  const size_t whole = FrameOffset(frames, 2);
  Start(path);
  {
    const FilesEndAt midway(whole + 20);
    EXPECT_EQ(Append(Noise(3 * 1024)), NullReply());
    EXPECT_EQ(FileSize(path), static_cast<int64_t>(whole));
    TakeTranscript();
    EXPECT_EQ(Stop(), Figures(path, 42, whole));
  }
  EXPECT_THAT(
      LogLines(),
      ElementsAre(
          Warning("codec drain on stop failed for " + path +
                  ": Failed to append AAC frame: " + std::strerror(EFBIG)),
          ClosedLine("stop", path, 2), SealStartLine(path),
          Warning("dropping 20 torn trailing bytes from " + path),
          SealEndLine(Figures(path, 42, whole))));
  EXPECT_EQ(ReadFile(path), Slice(ReadFile(Path("reference.aac")), 0, whole));
}

TEST_F(FullDiskTest, RecordingGoesOnWhenThereIsRoomAgain) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  {
    const FilesEndAt nothing(0);
    EXPECT_EQ(Append(Noise(1024)), WriteFailed(path, EFBIG));
  }
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Append(Noise(1024)), NullReply());
  EXPECT_EQ(SplitFrames(ReadFile(path)).size(), 3u);
}

}  // namespace
}  // namespace corvane_test
