// "resumePath": recording goes on in a capture that exists already.
#include <errno.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "resume_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

Reply NotAvailable(const std::string& code, const std::string& path,
                   int errnum) {
  return ErrnoError(code, "capture not available for resume", path, errnum);
}

// A strict decoder's opinion of a file: what it complains about.
std::string Complaints(const std::string& path) {
  const std::string said = path + ".said";
  const std::string command = "ffmpeg -nostdin -v error -xerror -i '" + path +
                              "' -f null - > '" + said + "' 2>&1";
  const int status = system(command.c_str());
  const Bytes text = ReadFile(said);
  return std::string(text.begin(), text.end()) +
         (status == 0 ? "" : "[status " + std::to_string(status) + "]");
}

TEST_F(ResumePathTest, GoesOnBehindTheLastWholeFrame) {
  LeftBehind(whole_);
  ExpectResumed({}, whole_.size(), FramesToMs(4, 48000));
  EXPECT_EQ(ReadFile(path_), whole_) << "nothing is written yet";
  ExpectFramesBehind(whole_);
}

TEST_F(ResumePathTest, StopSealsOldAndNewFramesAsOneCapture) {
  LeftBehind(whole_);
  ResumePath(path_);
  Append(more_);
  TakeTranscript();
  const Reply figures = Stop();
  EXPECT_THAT(figures, Sealed(path_, FramesToMs(8, 48000)));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("stop", path_, 4), SealStartLine(path_),
                          SealEndLine(figures), Answer("stop", figures)))
      << "the closing line counts the session's own frames";
  EXPECT_EQ(Complaints(path_), "");
}

TEST_F(ResumePathTest, TheCaptureIsPausedAndResumedLikeAnyOther) {
  LeftBehind(whole_);
  ResumePath(path_);
  Append(Noise(1024));
  Pause();
  Append(Bytes(33));
  Resume();
  Append(Noise(1024, 1, 2));
  EXPECT_EQ(Flush(), NullReply());
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4 + 2 + 2, 48000), 33));
  EXPECT_EQ(SplitFrames(ReadFile(path_)).size(), 8u);
}

TEST_F(ResumePathTest, TheEndOfTheApplicationDrainsAResumedCapture) {
  LeftBehind(whole_);
  ResumePath(path_);
  Append(more_);
  Shutdown();
  EXPECT_EQ(ReadFile(path_), Concat(whole_, more_file_));
}

TEST_F(ResumePathTest, StartOverAResumedCaptureMovesAllOfItAside) {
  LeftBehind(whole_);
  ResumePath(path_);
  Append(more_);
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(ReadFile(Path("take.orphan.aac")), Concat(whole_, more_file_));
}

TEST_F(ResumePathTest, TheCodecIsOpenedByTheFirstAppendInTheFormatAsked) {
  LeftBehind(whole_);
  EXPECT_EQ(
      Call("resumePath", CaptureArgs(path_, 22050, 2).With("bitRate", 96000)),
      NullReply());
  EXPECT_THAT(LogLines(), ElementsAre(ResumeLine(path_, whole_.size(),
                                                 FramesToMs(4, 48000))));
  TakeTranscript();
  Append(Silence(1, 2));
  EXPECT_THAT(LogLines(), ElementsAre(EncoderLine(22050, 2, 96000)));
}

TEST_F(ResumePathTest, AFormatThatTheEncoderRefusesSurfacesWithTheFirstAppend) {
  LeftBehind(whole_);
  EXPECT_EQ(Call("resumePath", CaptureArgs(path_, 48000, 1).With("bitRate", 1)),
            NullReply());
  EXPECT_EQ(Append(Noise(1)).code, "ENCODE_FAILED");
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4, 48000)));
  EXPECT_EQ(ReadFile(path_), whole_);
}

// The line counts what is good; the new frames go to the end of the file.
TEST_F(ResumePathTest, TheVeryCaptureThatIsRecordedIsDrainedFirst) {
  Start(path_);
  Append(Noise(3 * 1024));
  EXPECT_EQ(FileSize(path_), static_cast<int64_t>(FrameOffset(frames_, 2)));
  TakeTranscript();
  ExpectResumed({ClosedLine(kOverOpen, path_, 4)}, whole_.size(),
                FramesToMs(4, 48000));
  EXPECT_EQ(ReadFile(path_), whole_);
  ExpectFramesBehind(whole_);
}

TEST_F(ResumePathTest, AnotherCaptureThatIsRecordedIsClosedAndNotSealed) {
  const std::string other = Path("other.aac");
  LeftBehind(whole_);
  Start(other);
  Append(Noise(3 * 1024));
  Pause();
  AppendToFile(other, {0xFF, 0xF1});
  TakeTranscript();
  ExpectResumed({ClosedLine(kOverOpen, other, 4)}, whole_.size(),
                FramesToMs(4, 48000));
  EXPECT_EQ(ReadFile(other), Concat(whole_, {0xFF, 0xF1}));
  ExpectFramesBehind(whole_);
}

TEST_F(ResumePathTest, APauseAndItsDroppedBytesEndWithTheCaptureTheyBelongTo) {
  LeftBehind(whole_);
  Start(Path("other.aac"));
  Pause();
  Append(Bytes(77));
  ResumePath(path_);
  Append(more_);
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(8, 48000), 0));
}

TEST_F(ResumePathTest, AMissingCaptureIsNotCreatedAndTheOpenOneIsClosed) {
  const std::string other = Path("other.aac");
  Start(other);
  Append(Noise(1024));
  TakeTranscript();
  ExpectNotResumed(path_, NotAvailable("CAPTURE_MISSING", path_, ENOENT),
                   {ClosedLine(kOverOpen, other, 2)});
  EXPECT_FALSE(Exists(path_));
}

TEST_F(ResumePathTest, WithNoCaptureOpenAMissingOneIsAllThatIsLogged) {
  ExpectNotResumed(path_, NotAvailable("CAPTURE_MISSING", path_, ENOENT));
}

TEST_F(ResumePathTest, AFolderIsNotACapture) {
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  const std::string other = Path("other.aac");
  Start(other);
  TakeTranscript();
  ExpectNotResumed(path_, NotAvailable("WRITE_FAILED", path_, EISDIR),
                   {ClosedLine(kOverOpen, other, 0)});
}

TEST_F(ResumePathTest, AFileInPlaceOfAFolderIsAnError) {
  LeftBehind(whole_);
  const std::string path = path_ + "/take.aac";
  ExpectNotResumed(path, NotAvailable("WRITE_FAILED", path, ENOTDIR));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(ResumePathTest, ARefusedCallLeavesTheOpenCaptureAlone) {
  Start(path_);
  Append(Noise(3 * 1024));
  EXPECT_EQ(ResumePath(path_, 44000),
            PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz"));
  EXPECT_EQ(ResumePath(""), InvalidArgs("resumePath requires capturePath"));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4, 48000)));
}

// Every frame names its own format, so the file holds both; its duration then
// counts all samples at the rate of the last frame.
TEST_F(ResumePathTest, AnotherFormatThanTheFilesIsTakenWithoutComplaint) {
  LeftBehind(whole_);
  EXPECT_EQ(ResumePath(path_, 8000, 2), NullReply());
  EXPECT_THAT(LogLines(), ElementsAre(ResumeLine(path_, whole_.size(),
                                                 FramesToMs(4, 48000))));
  Append(Noise(2048, 2));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4 + 3, 8000)));
  const std::vector<Bytes> frames = SplitFrames(ReadFile(path_));
  ASSERT_EQ(frames.size(), 7u);
  for (size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(FrequencyIndexOf(frames[i]), i < 4 ? 3 : 11) << "frame " << i;
    EXPECT_EQ(ChannelConfigOf(frames[i]), i < 4 ? 1 : 2) << "frame " << i;
  }
  EXPECT_EQ(Slice(ReadFile(path_), 0, whole_.size()), whole_);
  EXPECT_EQ(Complaints(path_), "");
}

TEST_F(ResumePathTest, TheDurationOfAMixedFileIsTakenAtItsLastRate) {
  const Bytes slow = FileOf(Noise(2048, 2), 8000, 2);
  LeftBehind(Concat(whole_, slow));
  ExpectResumed({}, whole_.size() + slow.size(), FramesToMs(4 + 3, 8000));
}

TEST_F(ResumePathTest, ARelativePathIsTakenAsItStands) {
  LeftBehind(whole_);
  const WorkingDir here(Path(""));
  const std::string path = ".//take.aac";
  EXPECT_EQ(ResumePath(path), NullReply());
  EXPECT_THAT(LogLines(), ElementsAre(ResumeLine(path, whole_.size(),
                                                 FramesToMs(4, 48000))));
  ExpectFramesBehind(whole_);
}

TEST_F(ResumePathTest, RunsInItsTurnBetweenTwoTakes) {
  const Value args = CaptureArgs(path_, 48000, 1);
  Post("start", args);
  Post("append", Noise(3 * 1024));
  Post("resumePath", args);
  Post("append", more_);
  Post("resumePath", args);
  Post("cancel");
  AwaitReplies();
  const size_t both = whole_.size() + more_file_.size();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(
          StartLine(path_, 48000, 1), Answer("start", NullReply()),
          EncoderLine(48000, 1), Answer("append", NullReply()),
          ClosedLine(kOverOpen, path_, 4),
          ResumeLine(path_, whole_.size(), FramesToMs(4, 48000)),
          Answer("resumePath", NullReply()), EncoderLine(48000, 1),
          Answer("append", NullReply()), ClosedLine(kOverOpen, path_, 4),
          ResumeLine(path_, both, FramesToMs(8, 48000)),
          Answer("resumePath", NullReply()), ClosedLine("cancel", path_, 0),
          Answer("cancel", NullReply())));
}

}  // namespace
}  // namespace corvane_test
