// A file system that goes away under a running take: its mount is taken down
// while the capture is open.
#include <cerrno>

#include "real/real_fixture.h"

namespace corvane_test {
namespace {

class RealDetachedTest : public DiskTest {
 protected:
  // The disk can still be reached in the drawer.
  void RecordAcrossTheDetach() {
    ASSERT_EQ(disk().ShowAlsoAt(drawer_), 0);
    Start(path_);
    AppendAll({chunks_.begin(), chunks_.begin() + 3});
    ASSERT_EQ(disk().Detach(), 0);
    AppendAll({chunks_.begin() + 3, chunks_.end()});
    EXPECT_EQ(Flush(), NullReply());
    TakeTranscript();
  }

  const std::string drawer_ = Path("drawer");
  const std::string path_ = Path("disk/take.aac");
  const std::vector<Bytes> chunks_ = ChunksFor(6);
  const std::vector<Bytes> frames_ = FramesOf(chunks_);
  const Bytes whole_ = Join(frames_, 0, frames_.size());
};

// The open descriptor keeps the file system alive, out of everybody's sight.
TEST_F(RealDetachedTest, TheTakeGoesOnAndIsWholeWhenTheDiskComesBack) {
  RecordAcrossTheDetach();
  Stop();
  ExpectFailed(
      "stop",
      ErrnoError("CAPTURE_MISSING", "capture not available", path_, ENOENT),
      {ClosedLine("stop", path_, frames_.size()), SealStartLine(path_)});
  EXPECT_EQ(ListDir(Path("disk")), Lines()) << "nothing is made in its place";
  ASSERT_EQ(disk().BringBack(), 0);
  ExpectRecovered(path_, whole_);
}

TEST_F(RealDetachedTest, ANewTakeInItsPlaceLeavesTheOldOneAlone) {
  RecordAcrossTheDetach();
  EXPECT_EQ(Start(path_), NullReply());
  ExpectTranscript(
      {ClosedLine("start over an open session", path_, frames_.size()),
       StartLine(path_, kRate, 1), Answer("start", NullReply())});
  AppendAll(chunks_);
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path_), whole_);
  ExpectRecovered(drawer_ + "/take.aac", whole_);
}

TEST_F(RealDetachedTest, DisposeClosesWhatNobodyCanSeeAnyMore) {
  RecordAcrossTheDetach();
  glib().Take();
  Restart();
  EXPECT_THAT(glib().Take(), testing::ElementsAre(PluginMessage(
                                 "closed capture on plugin dispose: " + path_ +
                                 " frames=" + std::to_string(frames_.size()))));
  ExpectRecovered(drawer_ + "/take.aac", whole_);
}

}  // namespace
}  // namespace corvane_test
