// "start": the file it makes, and what becomes of an open capture.
#include <errno.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using StartTest = ChannelTest;

const Reply kNotRecording =
    PlainError("NOT_RECORDING", "stop with no open recording");

Reply CannotCreate(const std::string& path, int errnum) {
  return ErrnoError("WRITE_FAILED", "Failed to create capture file", path,
                    errnum);
}

mode_t ModeOf(const std::string& path) {
  struct stat info;
  EXPECT_EQ(stat(path.c_str(), &info), 0);
  return info.st_mode & 07777;
}

TEST_F(StartTest, CreatesAnEmptyFileAndLogsTheFormat) {
  const std::string path = Path("take.aac");
  Call("start", CaptureArgs(path, 11025, 6).With("bitRate", 96000));
  EXPECT_THAT(TakeTranscript(), ElementsAre(StartLine(path, 11025, 6, 96000),
                                            Answer("start", NullReply())));
  EXPECT_EQ(FileSize(path), 0);
}

TEST_F(StartTest, TheFileIsReadableByAllAndWritableByItsOwner) {
  const mode_t umask_before = umask(0);
  Start(Path("open.aac"));
  umask(077);
  Start(Path("closed.aac"));
  umask(umask_before);
  EXPECT_EQ(ModeOf(Path("open.aac")), 0644u);
  EXPECT_EQ(ModeOf(Path("closed.aac")), 0600u);
}

TEST_F(StartTest, AnEmptyFileIsReused) {
  const std::string path = Path("take.aac");
  WriteFile(path, {});
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(Start(path), NullReply());
  EXPECT_EQ(ModeOf(path), 0600u) << "the same file, not another";
  EXPECT_THAT(ListDir(Path("")), ElementsAre("take.aac"));
}

TEST_F(StartTest, WritesGoToTheEndOfTheFile) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Pause();
  const Bytes first = ReadFile(path);
  AppendToFile(path, Bytes(100, 0xAA));
  Resume();
  Append(Noise(1024));
  Cancel();
  const Bytes all = ReadFile(path);
  EXPECT_EQ(Slice(all, 0, first.size()), first);
  EXPECT_EQ(Slice(all, first.size(), 100), Bytes(100, 0xAA));
  EXPECT_EQ(SplitFrames(Slice(all, first.size() + 100)).size(), 2u);
}

TEST_F(StartTest, ClosesAnOpenCaptureWithoutSealingIt) {
  const std::string first = Path("first.aac"), second = Path("second.aac");
  Start(first);
  Append(Noise(3000));
  Pause();
  AppendToFile(first, {0xFF, 0xF1});
  const Bytes torn = ReadFile(first);
  TakeTranscript();
  Start(second);
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("start over an open session", first, 4),
                  StartLine(second, 48000, 1), Answer("start", NullReply())));
  EXPECT_EQ(ReadFile(first), torn);
}

TEST_F(StartTest, OverTheSamePathMovesTheFirstTakeAside) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1500));
  TakeTranscript();
  Start(path);
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("start over an open session", path, 3),
                  Warning("preserved orphan audio " + path + " as " +
                          Path("take.orphan.aac")),
                  StartLine(path, 48000, 1), Answer("start", NullReply())));
  EXPECT_EQ(SplitFrames(ReadFile(Path("take.orphan.aac"))).size(), 3u);
  EXPECT_EQ(FileSize(path), 0);
}

TEST_F(StartTest, OverTheSamePathWithoutAudioReusesTheFile) {
  const std::string path = Path("take.aac");
  Start(path);
  TakeTranscript();
  Start(path, 8000, 2);
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(ClosedLine("start over an open session", path, 0),
                  StartLine(path, 8000, 2), Answer("start", NullReply())));
  EXPECT_THAT(ListDir(Path("")), ElementsAre("take.aac"));
}

TEST_F(StartTest, AMissingFolderIsAnError) {
  const std::string path = Path("no/such/take.aac");
  const Reply error = CannotCreate(path, ENOENT);
  Start(path);
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Failed("start", error), Answer("start", error)));
}

TEST_F(StartTest, AFileInPlaceOfAFolderIsAnError) {
  WriteFile(Path("file"), {1});
  const std::string path = Path("file/take.aac");
  EXPECT_EQ(Start(path), CannotCreate(path, ENOTDIR));
}

TEST_F(StartTest, ANameThatIsTooLongIsAnError) {
  const std::string path = Path(std::string(300, 'x'));
  EXPECT_EQ(Start(path), CannotCreate(path, ENAMETOOLONG));
}

TEST_F(StartTest, AFailedStartLeavesNoCaptureOpen) {
  const std::string first = Path("first.aac");
  const Reply error = CannotCreate(Path("no/such/take.aac"), ENOENT);
  Start(first);
  Append(Noise(1024));
  TakeTranscript();
  Start(Path("no/such/take.aac"));
  Stop();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("start over an open session", first, 2),
                          Failed("start", error), Answer("start", error),
                          Failed("stop", kNotRecording),
                          Answer("stop", kNotRecording)));
}

TEST_F(StartTest, ARelativePathIsTakenAsItStands) {
  const WorkingDir here(Path(""));
  EXPECT_THAT(Record("take.aac", Noise(1024)), Sealed("take.aac", 42));
}

TEST_F(StartTest, ThePathIsNotNormalised) {
  const std::string path = Path(".//take.aac");
  Start(path);
  EXPECT_EQ(LogLines().back(), StartLine(path, 48000, 1));
  EXPECT_TRUE(Exists(Path("take.aac")));
}

TEST_F(StartTest, TheDescriptorIsNotInheritedByOtherPrograms) {
  const std::string path = Path("take.aac");
  Start(path);
  const std::string search = "ls -l /proc/self/fd | grep -F '" + path + "'";
  EXPECT_EQ(WEXITSTATUS(system(search.c_str())), 1)
      << "a child has the capture open";
}

}  // namespace
}  // namespace corvane_test
