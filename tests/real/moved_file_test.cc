// What others do to the file, or to its folder, while a take runs. The open
// descriptor decides where frames go, the path decides what is sealed.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "real/real_fixture.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

class RealMovedFileTest : public RealTest {
 protected:
  RealMovedFileTest() {
    mkdir(folder_.c_str(), 0755);
    EXPECT_EQ(Start(path_), NullReply());
    AppendAll({chunks_.begin(), chunks_.begin() + 5});
  }

  void AppendTheRest() {
    AppendAll({chunks_.begin() + 5, chunks_.end()});
    EXPECT_EQ(Flush(), NullReply());
    TakeTranscript();
  }

  // The take is closed as a whole, and its path has nothing to seal.
  void ExpectStopFindsNothing() {
    Stop();
    ExpectFailed(
        "stop",
        ErrnoError("CAPTURE_MISSING", "capture not available", path_, ENOENT),
        {ClosedLine("stop", path_, frames_.size()), SealStartLine(path_)});
    EXPECT_FALSE(Exists(path_)) << "a missing file is never made";
  }

  const std::string folder_ = Path("folder");
  const std::string path_ = folder_ + "/take.aac";
  const std::vector<Bytes> chunks_ = ChunksFor(10);
  const std::vector<Bytes> frames_ = FramesOf(chunks_);
  const Bytes whole_ = Join(frames_, 0, frames_.size());
};

// Every frame was written, into a file that has no name any more.
TEST_F(RealMovedFileTest, ARemovedFolderTakesTheFileAlongAndStopSaysSo) {
  const int held = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  std::filesystem::remove_all(folder_);
  AppendTheRest();
  ExpectStopFindsNothing();
  Bytes written(whole_.size() + 1);
  EXPECT_EQ(pread(held, written.data(), written.size(), 0),
            static_cast<ssize_t>(whole_.size()));
  written.pop_back();
  EXPECT_EQ(written, whole_);
  close(held);
  ExpectRefused(path_, ENOENT, kStat);
}

TEST_F(RealMovedFileTest, ARenamedFolderIsRecoveredUnderItsNewName) {
  ASSERT_EQ(rename(folder_.c_str(), Path("moved").c_str()), 0);
  AppendTheRest();
  ExpectStopFindsNothing();
  ExpectRecovered(Path("moved/take.aac"), whole_);
}

TEST_F(RealMovedFileTest, ARenamedFileIsRecoveredUnderItsNewName) {
  const std::string moved = folder_ + "/moved.aac";
  ASSERT_EQ(rename(path_.c_str(), moved.c_str()), 0);
  AppendTheRest();
  ExpectStopFindsNothing();
  ExpectRecovered(moved, whole_);
}

TEST_F(RealMovedFileTest, ARenamedFileCanBeSealedWhileItsTakeGoesOn) {
  const std::string moved = folder_ + "/moved.aac";
  ASSERT_EQ(rename(path_.c_str(), moved.c_str()), 0);
  EXPECT_THAT(FinalizePath(moved), Sealed(moved, FramesToMs(4, kRate)));
  AppendTheRest();
  ExpectStopFindsNothing();
  ExpectRecovered(moved, whole_);
}

// Seals what is there: the figures are the other file's, and only the count of
// frames in the closing line tells.
TEST_F(RealMovedFileTest, AReplacedFileIsSealedInTheTakesPlace) {
  const std::string kept = Path("kept.aac"), other = Path("other.aac");
  ASSERT_EQ(link(path_.c_str(), kept.c_str()), 0);
  WriteFile(other, Join(frames_, 0, 3));
  ASSERT_EQ(rename(other.c_str(), path_.c_str()), 0);
  AppendTheRest();
  Stop();
  const Reply figures =
      Figures(path_, FramesToMs(3, kRate), Join(frames_, 0, 3).size());
  ExpectTranscript({ClosedLine("stop", path_, frames_.size()),
                    SealStartLine(path_), SealEndLine(figures),
                    Answer("stop", figures)});
  EXPECT_EQ(ReadFile(path_), Join(frames_, 0, 3));
  ExpectRecovered(kept, whole_);
}

TEST_F(RealMovedFileTest, AReplacementWithoutAudioIsRefusedAndLeftAlone) {
  const std::string kept = Path("kept.aac");
  ASSERT_EQ(link(path_.c_str(), kept.c_str()), 0);
  const Bytes text(1000, 'x');
  WriteFile(Path("other"), text);
  ASSERT_EQ(rename(Path("other").c_str(), path_.c_str()), 0);
  AppendTheRest();
  Stop();
  ExpectFailed(
      "stop",
      FileError("VERIFY_FAILED",
                "capture holds no complete AAC frame (1000 bytes)", path_),
      {ClosedLine("stop", path_, frames_.size()), SealStartLine(path_)});
  EXPECT_EQ(ReadFile(path_), text);
  ExpectRecovered(kept, whole_);
}

TEST_F(RealMovedFileTest, AFolderInTheFilesPlaceIsRefused) {
  const std::string moved = folder_ + "/moved.aac";
  ASSERT_EQ(rename(path_.c_str(), moved.c_str()), 0);
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  AppendTheRest();
  EXPECT_EQ(Stop(), ErrnoError("FINALIZE_FAILED", "capture not available",
                               path_, EISDIR));
  ExpectRecovered(moved, whole_);
}

// Frames go to the end wherever it is: no hole is left, and nothing but what
// was cut off is missing.
TEST_F(RealMovedFileTest, AnEmptiedFileHoldsTheFramesThatFollow) {
  TruncateFile(path_, 0);
  AppendTheRest();
  const Bytes rest = Join(frames_, 4, frames_.size());
  Stop();
  const Reply figures = Figures(path_, FramesToMs(7, kRate), rest.size());
  ExpectTranscript({ClosedLine("stop", path_, frames_.size()),
                    SealStartLine(path_), SealEndLine(figures),
                    Answer("stop", figures)});
  ExpectRecovered(path_, rest);
}

// The frame that was cut short keeps its place; what a scan then makes of its
// length is all that is lost.
TEST_F(RealMovedFileTest, ACutInsideAFrameLeavesAllOthersInPlace) {
  const size_t cut = FrameOffset(frames_, 3) + 20;
  TruncateFile(path_, cut);
  AppendTheRest();
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  const Bytes sealed = ReadFile(path_);
  EXPECT_EQ(sealed,
            Concat(Slice(whole_, 0, cut), Join(frames_, 4, frames_.size())));
  EXPECT_THAT(FinalizePath(path_),
              Sealed(path_, NaiveScan(sealed).DurationMs()));
}

TEST_F(RealMovedFileTest, ForeignBytesOfAnotherWriterStayAndAreReported) {
  const Bytes foreign(100, 0xAA);
  AppendToFile(path_, foreign);
  AppendTheRest();
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(frames_.size(), kRate)));
  EXPECT_THAT(LogLines(), testing::Contains(ForeignLine(path_, 100)));
  EXPECT_EQ(ReadFile(path_), Concat(Concat(Join(frames_, 0, 4), foreign),
                                    Join(frames_, 4, frames_.size())));
}

// A path counts from the folder of the moment; when that is gone, from the
// root, where nothing lies.
TEST_F(RealMovedFileTest, ARelativePathInARemovedFolderIsMissing) {
  Cancel();
  mkdir(Path("gone").c_str(), 0755);
  const WorkingDir here(Path("gone"));
  ASSERT_EQ(rmdir(Path("gone").c_str()), 0);
  ExpectRefused("no-such-take.aac", ENOENT, kStat);
}

}  // namespace
}  // namespace corvane_test
