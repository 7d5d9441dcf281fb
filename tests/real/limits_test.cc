// The limits that the system sets to a process: how many descriptors, how long
// a file.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "channel/system_limits.h"
#include "real/real_fixture.h"
#include "real/recorder.h"

namespace corvane_test {
namespace {

// No descriptor from `first` on can be opened any more.
class DescriptorsEndAt {
 public:
  explicit DescriptorsEndAt(int first) {
    getrlimit(RLIMIT_NOFILE, &limit_);
    rlimit lowered = limit_;
    lowered.rlim_cur = static_cast<rlim_t>(first);
    setrlimit(RLIMIT_NOFILE, &lowered);
  }
  ~DescriptorsEndAt() { setrlimit(RLIMIT_NOFILE, &limit_); }
  DescriptorsEndAt(const DescriptorsEndAt&) = delete;
  DescriptorsEndAt& operator=(const DescriptorsEndAt&) = delete;

 private:
  rlimit limit_;
};

// The descriptor that the next open gets.
int NextDescriptor() {
  const int next = dup(STDIN_FILENO);
  close(next);
  return next;
}

class RealLimitsTest : public RealTest {
 protected:
  const std::string path_ = Path("take.aac");
  const std::vector<Bytes> chunks_ = ChunksFor(6);
};

// The first round shows that the second one's reason is the limit. It also
// lets a sanitizer see each type while it may still open what it needs for it.
TEST_F(RealLimitsTest, WithoutADescriptorEveryMethodSaysSo) {
  ExpectRefused(Path("missing/take.aac"), ENOENT, kStat);
  WriteFile(path_, {});
  const DescriptorsEndAt limit(NextDescriptor());
  ExpectRefused(path_, EMFILE);
  EXPECT_EQ(Stop(), NothingToStop());
}

// Moving needs no descriptor, so the older audio lies in its slot all the same.
TEST_F(RealLimitsTest, OlderAudioIsMovedAsideEvenWhenTheNewTakeCannotBegin) {
  const Bytes old = RecordedAt(path_, 4);
  {
    const DescriptorsEndAt limit(NextDescriptor());
    EXPECT_EQ(Start(path_),
              ErrnoError("WRITE_FAILED", "Failed to create capture file", path_,
                         EMFILE));
  }
  EXPECT_FALSE(Exists(path_));
  ExpectRecovered(Path("take.orphan.aac"), old);
}

TEST_F(RealLimitsTest, ATakeGoesOnWithoutADescriptorToSpare) {
  const std::vector<Bytes> frames = FramesOf(chunks_);
  const int of_capture = NextDescriptor();
  Start(path_);
  {
    const DescriptorsEndAt limit(of_capture);
    AppendAll(chunks_);
    EXPECT_EQ(Flush(), NullReply());
    TakeTranscript();
    Stop();
    ExpectFailed(
        "stop",
        ErrnoError("FINALIZE_FAILED", "capture not available", path_, EMFILE),
        {ClosedLine("stop", path_, frames.size()), SealStartLine(path_)});
  }
  ExpectRecovered(path_, Join(frames, 0, frames.size()));
}

// A seal needs one descriptor, and closing has just given one back.
TEST_F(RealLimitsTest, ATakeIsSealedWithTheDescriptorThatItGaveBack) {
  Start(path_);
  AppendAll(chunks_);
  const DescriptorsEndAt limit(NextDescriptor());
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
}

TEST_F(RealLimitsTest, AFileThatMayNotGrowIsRecoveredOnceItMay) {
  const std::vector<Bytes> frames = FramesOf(chunks_);
  const size_t whole = FrameOffset(frames, 3);
  size_t taken = 0;
  {
    const FilesEndAt midway(whole + 20);
    Start(path_);
    EXPECT_EQ(AppendUntilRefused(chunks_, &taken), WriteFailed(path_, EFBIG));
    TakeTranscript();
    Cancel();
    ExpectTranscript({DrainLine(path_, EFBIG, "cancel"),
                      ClosedLine("cancel", path_, 3),
                      Answer("cancel", NullReply())});
  }
  EXPECT_EQ(taken, 4u);
  EXPECT_EQ(ReadFile(path_), Slice(Join(frames, 0, 4), 0, whole + 20));
  FinalizePath(path_);
  EXPECT_THAT(TakeTranscript(), testing::Contains(DroppingLine(20, path_)));
  ExpectRecovered(path_, Join(frames, 0, 3));
}

// Corvane leaves the signal as it is: whether it kills is the application's to
// decide, and so is what a death leaves behind.
TEST_F(RealLimitsTest, AProcessThatTheLimitKillsLeavesARecoverableTake) {
  const std::vector<Bytes> frames = FramesOf(RecorderChunks());
  const size_t whole = FrameOffset(frames, 12);
  const size_t limit = whole + 20;
  const int status = RunRecorder(path_, limit);
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
  EXPECT_EQ(ReadFile(path_), Slice(Join(frames, 0, 13), 0, limit));

  WriteFile(Path("copy.aac"), ReadFile(path_));
  EXPECT_EQ(ResumePath(Path("copy.aac")), NullReply());
  EXPECT_THAT(TakeTranscript(),
              testing::Contains(DroppingLine(20, Path("copy.aac"))));
  ExpectRecovered(Path("copy.aac"), Join(frames, 0, 12));
  FinalizePath(path_);
  ExpectRecovered(path_, Join(frames, 0, 12));
}

TEST_F(RealLimitsTest, ARecorderThatTheLimitSparesLivesToItsEnd) {
  EXPECT_EQ(RunRecorder(path_, 1 << 20), 0);
  const std::vector<Bytes> frames = FramesOf(RecorderChunks());
  ExpectRecovered(path_, Join(frames, 0, frames.size()));
}

}  // namespace
}  // namespace corvane_test
