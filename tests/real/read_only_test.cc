// A file system that may not be written to: from the start, or from one moment
// of a take on.
#include <cerrno>
#include <cstring>

#include "real/loop_disk.h"
#include "real/real_fixture.h"

namespace corvane_test {
namespace {

class RealReadOnlyTest : public DiskTest {
 protected:
  static Reply NotSealed(const std::string& path) {
    return ErrnoError("FINALIZE_FAILED", "capture not available", path, EROFS);
  }

  const std::string path_ = Path("disk/take.aac");
  const std::vector<Bytes> chunks_ = ChunksFor(6);
  const std::vector<Bytes> frames_ = FramesOf(chunks_);
  const Bytes whole_ = Join(frames_, 0, frames_.size());
};

TEST_F(RealReadOnlyTest, EveryMethodIsRefusedAndSaysWhy) {
  WriteFile(path_, {});
  ASSERT_EQ(disk().Remount(true), 0);
  ExpectRefused(path_, EROFS);
  EXPECT_EQ(Start(OnDisk("new.aac")),
            ErrnoError("WRITE_FAILED", "Failed to create capture file",
                       OnDisk("new.aac"), EROFS));
  EXPECT_EQ(Stop(), NothingToStop());
}

TEST_F(RealReadOnlyTest, OlderAudioStaysWhereItIs) {
  const Bytes old = RecordedAt(path_, 4);
  ASSERT_EQ(disk().Remount(true), 0);
  TakeTranscript();
  Start(path_);
  ExpectFailed(
      "start",
      FileError("WRITE_FAILED",
                "existing audio at target could not be preserved", path_),
      {Error("could not preserve orphan audio " + path_ + ": " +
             strerror(EROFS))});
  EXPECT_EQ(ListDir(OnDisk("")), Lines({"take.aac"}));
  ASSERT_EQ(disk().Remount(false), 0);
  ExpectRecovered(path_, old);
}

// The system itself protects what is open for writing.
TEST_F(RealReadOnlyTest, ATakeThatRunsCannotBeRemounted) {
  Start(path_);
  AppendAll(chunks_);
  EXPECT_EQ(disk().Remount(true), EBUSY);
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(frames_.size(), kRate)));
  EXPECT_EQ(disk().Remount(true), 0) << "nothing is open any more";
  EXPECT_EQ(ReadFile(path_), whole_);
}

// What is open stays writable, what is opened anew does not.
TEST_F(RealReadOnlyTest, ATakeWhosePathTurnsReadOnlyIsWholeButNotSealed) {
  Start(path_);
  AppendAll({chunks_.begin(), chunks_.begin() + 3});
  ASSERT_EQ(disk().CoverReadOnly(), 0);
  AppendAll({chunks_.begin() + 3, chunks_.end()});
  EXPECT_EQ(Flush(), NullReply());
  TakeTranscript();
  Stop();
  ExpectFailed(
      "stop", NotSealed(path_),
      {ClosedLine("stop", path_, frames_.size()), SealStartLine(path_)});
  EXPECT_EQ(ReadFile(path_), whole_);
  ASSERT_EQ(disk().Detach(), 0);
  ExpectRecovered(path_, whole_);
}

// What a journaling file system does to itself after an error: what is open
// for writing takes no more writes.
TEST_F(RealReadOnlyTest, ATakeOnADiskThatGivesUpIsRecoveredAsItWasSynced) {
  LoopDisk loop(Path("loop"), Path("image"));
  if (!loop.refusal().empty()) GTEST_SKIP() << loop.refusal();
  const std::string path = loop.Path("take.aac");
  Start(path);
  AppendAll({chunks_.begin(), chunks_.begin() + 4});
  EXPECT_EQ(Flush(), NullReply());
  ASSERT_EQ(loop.GiveUp(), 0);
  TakeTranscript();
  Append(chunks_[4]);
  ExpectFailed("append", WriteFailed(path, EROFS));
  Flush();
  ExpectFailed("flush",
               ErrnoError("WRITE_FAILED", "flush failed", path, EROFS));
  Stop();
  ExpectFailed("stop", NotSealed(path),
               {DrainLine(path, EROFS), CloseStepLine("sync", path, EROFS),
                ClosedLine("stop", path, 3), SealStartLine(path)});
  loop.MountAgain();
  ASSERT_EQ(loop.refusal(), "");
  ExpectRecovered(path, Join(frames_, 0, 3));
}

}  // namespace
}  // namespace corvane_test
