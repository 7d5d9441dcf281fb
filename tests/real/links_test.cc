// Symbolic links as a capture path: they are followed, by every method but
// the one that moves older audio aside.
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "real/real_fixture.h"

namespace corvane_test {
namespace {

class RealLinksTest : public RealTest {
 protected:
  void Link(const std::string& target) const {
    ASSERT_EQ(symlink(target.c_str(), link_.c_str()), 0);
  }

  const std::string link_ = Path("link.aac");
  const std::string file_ = Path("file.aac");
};

TEST_F(RealLinksTest, RecoveryFollowsALinkAndAnswersWithItsPath) {
  const Bytes whole = RecordedAt(file_, 4);
  Link("file.aac");
  AppendToFile(file_, Slice(whole, 0, 20));
  EXPECT_THAT(FinalizePath(link_), Sealed(link_, FramesToMs(5, kRate)));
  EXPECT_THAT(LogLines(), testing::Contains(DroppingLine(20, link_)));
  ExpectRecovered(link_, whole);
  EXPECT_TRUE(std::filesystem::is_symlink(link_));
  EXPECT_EQ(ReadFile(file_), ReadFile(link_));
}

TEST_F(RealLinksTest, StartRecordsIntoTheEmptyFileBehindALink) {
  WriteFile(file_, {});
  Link("file.aac");
  const Bytes whole = RecordedAt(link_, 4);
  EXPECT_TRUE(std::filesystem::is_symlink(link_));
  ExpectRecovered(file_, whole);
}

TEST_F(RealLinksTest, StartMovesTheLinkAndTheAudioBehindItStays) {
  const Bytes old = RecordedAt(file_, 4);
  Link("file.aac");
  const Bytes whole = RecordedAt(link_, 5);
  EXPECT_FALSE(std::filesystem::is_symlink(link_));
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link.orphan.aac")));
  ExpectRecovered(Path("link.orphan.aac"), old);
  ExpectRecovered(link_, whole);
}

TEST_F(RealLinksTest, StartMakesTheFileThatALinkMisses) {
  Link("file.aac");
  ExpectRecovered(file_, RecordedAt(link_, 4));
  EXPECT_TRUE(std::filesystem::is_symlink(link_));
}

TEST_F(RealLinksTest, RecoveryMakesNoFileThatALinkMisses) {
  Link("file.aac");
  TakeTranscript();
  ResumePath(link_);
  ExpectFailed("resumePath",
               ErrnoError("CAPTURE_MISSING", "capture not available for resume",
                          link_, ENOENT));
  FinalizePath(link_);
  ExpectFailed(
      "finalizePath",
      ErrnoError("CAPTURE_MISSING", "capture not available", link_, ENOENT),
      {SealStartLine(link_, 0, "finalizePath")});
  EXPECT_FALSE(Exists(file_));
}

TEST_F(RealLinksTest, ALinkIntoAMissingFolderIsRefused) {
  Link("missing/file.aac");
  ExpectRefused(link_, ENOENT, kStat);
}

TEST_F(RealLinksTest, LinksInALoopAreRefused) {
  Link("other.aac");
  ASSERT_EQ(symlink("link.aac", Path("other.aac").c_str()), 0);
  ExpectRefused(link_, ELOOP, kStat);
  EXPECT_EQ(ListDir(Path("")), Lines({"link.aac", "other.aac"}));
}

// The take goes where the link led when it began; the seal looks anew.
TEST_F(RealLinksTest, ALinkThatTurnsInMidTakeIsSealedWhereItLeadsNow) {
  const std::string other = Path("other.aac");
  const Bytes old = RecordedAt(other, 3);
  Link("file.aac");
  Start(link_);
  AppendAll(ChunksFor(4));
  ASSERT_EQ(unlink(link_.c_str()), 0);
  Link("other.aac");
  EXPECT_EQ(Stop(), Figures(link_, FramesToMs(4, kRate), old.size()));
  EXPECT_EQ(ReadFile(other), old);
  const std::vector<Bytes> frames = FramesOf(ChunksFor(4));
  ExpectRecovered(file_, Join(frames, 0, frames.size()));
}

}  // namespace
}  // namespace corvane_test
