// A file system without room: what fits is kept, whole frames of it are
// recovered, and every refusal says why.
#include <unistd.h>

#include <cerrno>

#include "real/real_fixture.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

class RealFullDiskTest : public DiskTest {
 protected:
  // Leaves room for so many pages, which removing the filler makes more.
  void LeavePages(size_t pages) {
    disk().Fill("filler", SmallDisk::kSize - pages * 4096);
  }
  void MakeRoom() { ASSERT_EQ(unlink(OnDisk("filler").c_str()), 0); }

  // Records until the disk is full; the whole frames that fit are `fit_`, the
  // bytes of the next one `torn_`.
  Reply FillByRecording() {
    EXPECT_EQ(Start(path_), NullReply());
    const Reply refused = AppendUntilRefused(chunks_, &taken_);
    const size_t size = FileSize(path_);
    while (FrameOffset(frames_, fit_ + 1) <= size) ++fit_;
    torn_ = size - FrameOffset(frames_, fit_);
    return refused;
  }
  Bytes WhatFits() const { return Join(frames_, 0, fit_); }
  Reply FiguresOfWhatFits() const {
    return Figures(path_, FramesToMs(fit_, kRate), WhatFits().size());
  }

  std::string path_ = Path("disk/take.aac");
  const std::vector<Bytes> chunks_ = ChunksFor(120);
  const std::vector<Bytes> frames_ = FramesOf(chunks_);
  size_t taken_ = 0;
  size_t fit_ = 0;
  size_t torn_ = 0;
};

TEST_F(RealFullDiskTest, WhatFitsIsSealedAndTheRefusedAppendSaysWhy) {
  LeavePages(3);
  EXPECT_EQ(FillByRecording(), WriteFailed(path_, ENOSPC));
  EXPECT_EQ(ReadFile(path_), Slice(Join(frames_, 0, fit_ + 1), 0, 3 * 4096));
  EXPECT_EQ(taken_, fit_ + 1) << "the codec holds one frame back";

  TakeTranscript();
  Append(chunks_[taken_ + 1]);
  ExpectFailed("append", WriteFailed(path_, ENOSPC));
  EXPECT_EQ(Flush(), NullReply());
  EXPECT_EQ(Pause(), NullReply());
  ExpectTranscript({Answer("flush", NullReply()),
                    Warning("pause drain failed for " + path_ + ": " +
                            WriteFailed(path_, ENOSPC).message),
                    Answer("pause", NullReply())});

  Stop();
  Lines expected = {ClosedLine("stop", path_, fit_), SealStartLine(path_)};
  if (torn_ > 0) expected.push_back(DroppingLine(torn_, path_));
  expected.push_back(SealEndLine(FiguresOfWhatFits()));
  expected.push_back(Answer("stop", FiguresOfWhatFits()));
  ExpectTranscript(expected);
  MakeRoom();
  ExpectRecovered(path_, WhatFits());
}

TEST_F(RealFullDiskTest, ClosingWarnsOfWhatItCouldNotWrite) {
  FillByRecording();
  TakeTranscript();
  EXPECT_EQ(Cancel(), NullReply());
  ExpectTranscript({DrainLine(path_, ENOSPC, "cancel"),
                    ClosedLine("cancel", path_, fit_),
                    Answer("cancel", NullReply())});
  EXPECT_EQ(FinalizePath(path_), FiguresOfWhatFits());
  EXPECT_EQ(ReadFile(path_), WhatFits()) << "cutting a tail needs no room";
}

// The torn frame stays where it was cut short, and every frame whose write
// returned stands behind it: a scan finds what it can reach.
TEST_F(RealFullDiskTest, RoomInMidTakeLetsTheTakeGoOnBehindTheTornFrame) {
  LeavePages(2);
  EXPECT_EQ(FillByRecording(), WriteFailed(path_, ENOSPC));
  MakeRoom();
  const size_t last = taken_ + 10;
  AppendAll({chunks_.begin() + taken_ + 1, chunks_.begin() + last});
  const Bytes expected = Concat(Slice(Join(frames_, 0, fit_ + 1), 0, 2 * 4096),
                                Join(frames_, fit_ + 1, last - 1));
  EXPECT_EQ(ReadFile(path_), expected) << "one frame is lost, not two";

  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  const Bytes sealed = ReadFile(path_);
  EXPECT_EQ(Slice(sealed, 0, expected.size()), expected);
  const adts::Scan scan = NaiveScan(sealed);
  EXPECT_THAT(FinalizePath(path_), Sealed(path_, scan.DurationMs()));
}

TEST_F(RealFullDiskTest, OlderAudioIsMovedAsideWithoutRoomForTheNewTake) {
  const Bytes old = RecordedAt(path_, 10);
  LeavePages(0);
  EXPECT_EQ(Start(path_), NullReply());
  const std::string orphan = OnDisk("take.orphan.aac");
  ExpectTranscript(
      {Warning("preserved orphan audio " + path_ + " as " + orphan),
       StartLine(path_, kRate, 1), Answer("start", NullReply())});
  size_t taken = 0;
  EXPECT_EQ(AppendUntilRefused(chunks_, &taken), WriteFailed(path_, ENOSPC));
  EXPECT_EQ(taken, 1u);
  EXPECT_EQ(Stop(),
            FileError("VERIFY_FAILED",
                      "capture holds no complete AAC frame (0 bytes)", path_));
  MakeRoom();
  ExpectRecovered(orphan, old);
}

TEST_F(RealFullDiskTest, WithoutAnInodeNoTakeBegins) {
  for (int n = 1; n < SmallDisk::kInodes; ++n) {
    disk().Fill("file" + std::to_string(n), 0);
  }
  TakeTranscript();
  Start(path_);
  ExpectFailed("start",
               ErrnoError("WRITE_FAILED", "Failed to create capture file",
                          path_, ENOSPC));
  EXPECT_EQ(Stop(), NothingToStop());
}

TEST_F(RealFullDiskTest, ATornTakeIsResumedOnceThereIsRoom) {
  const Bytes old = RecordedAt(path_, 10);
  AppendToFile(path_, Slice(frames_[0], 0, frames_[0].size() - 1));
  LeavePages(0);
  EXPECT_EQ(ResumePath(path_), NullReply());
  ExpectTranscript({DroppingLine(frames_[0].size() - 1, path_),
                    ResumeLine(path_, old.size(), FramesToMs(11, kRate)),
                    Answer("resumePath", NullReply())});
  size_t taken = 0;
  EXPECT_EQ(AppendUntilRefused(chunks_, &taken), WriteFailed(path_, ENOSPC));
  Cancel();
  MakeRoom();
  FinalizePath(path_);
  ExpectRecovered(path_, Concat(old, Join(frames_, 0, taken - 1)));
}

TEST_F(RealFullDiskTest, AWavGetsItsHeaderUnlessThatNeedsRoom) {
  const std::string empty = OnDisk("empty.wav"), full = OnDisk("full.wav");
  WriteFile(empty, {});
  WriteFile(full, Bytes(44 + 1000, 1));
  LeavePages(0);
  TakeTranscript();
  FinalizeWav(empty);
  ExpectFailed("finalizeWavOnly",
               ErrnoError("FINALIZE_FAILED", kPatch, empty, ENOSPC));
  EXPECT_EQ(FileSize(empty), 0);
  EXPECT_EQ(FinalizeWav(full), NullReply());
  EXPECT_EQ(Slice(ReadFile(full), 44), Bytes(1000, 1));
}

}  // namespace
}  // namespace corvane_test
