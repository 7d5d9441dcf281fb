// Damage in a capture, as "resumePath" finds it: what is cut off, what stays,
// and where the next frame goes.
#include "resume_fixture.h"

namespace corvane_test {
namespace {

using ResumeDamageTest = ResumePathTest;

TEST_F(ResumeDamageTest, TheNextFrameStartsWhereTheTornOneBegan) {
  const size_t last = FrameOffset(frames_, 3);
  for (const size_t left : {size_t{1}, size_t{2}, size_t{6}, size_t{7},
                            size_t{8}, whole_.size() - last - 1}) {
    SCOPED_TRACE(left);
    LeftBehind(Slice(whole_, 0, last + left));
    ExpectResumed({DroppingLine(left, path_)}, last, FramesToMs(3, 48000));
    EXPECT_EQ(ReadFile(path_), Slice(whole_, 0, last));
    ExpectFramesBehind(Slice(whole_, 0, last));
  }
}

TEST_F(ResumeDamageTest, ATornFirstFrameLeavesAnEmptyFileToGoOnIn) {
  LeftBehind(Slice(whole_, 0, 50));
  ExpectResumed({DroppingLine(50, path_)}, 0, 0);
  EXPECT_EQ(FileSize(path_), 0);
  ExpectFramesBehind({});
}

TEST_F(ResumeDamageTest, ForeignBytesBetweenFramesAreReportedAndStay) {
  const Bytes damaged = Concat(Concat(whole_, Bytes(10, 0xAA)), whole_);
  LeftBehind(damaged);
  ExpectResumed({ForeignLine(path_, 10)}, damaged.size(), FramesToMs(8, 48000));
  ExpectFramesBehind(damaged);
}

TEST_F(ResumeDamageTest, OfBothKindsOfDamageTheCutIsReportedFirst) {
  const Bytes trusted = Concat(Concat(whole_, Bytes(10, 0xAA)), whole_);
  LeftBehind(Concat(trusted, {0xFF, 0xF1, 0x4C}));
  ExpectResumed({DroppingLine(3, path_), ForeignLine(path_, 10)},
                trusted.size(), FramesToMs(8, 48000));
  ExpectFramesBehind(trusted);
}

TEST_F(ResumeDamageTest, ForeignBytesAtTheEndStayInFrontOfTheNewFrames) {
  for (const Bytes& foreign : {Bytes{0, 0, 0}, Bytes(5000, 0xAA)}) {
    SCOPED_TRACE(foreign.size());
    const Bytes damaged = Concat(whole_, foreign);
    LeftBehind(damaged);
    ExpectResumed({}, whole_.size(), FramesToMs(4, 48000));
    ExpectFramesBehind(damaged);
  }
}

TEST_F(ResumeDamageTest, AFileOfForeignBytesAloneIsTakenAsItIs) {
  LeftBehind(Bytes(100, 0xAA));
  ExpectResumed({}, 0, 0);
  ExpectFramesBehind(Bytes(100, 0xAA));
}

TEST_F(ResumeDamageTest, AnEmptyFileGetsItsFirstFrames) {
  LeftBehind({});
  ExpectResumed({}, 0, 0);
  ExpectFramesBehind({});
}

TEST_F(ResumeDamageTest, ResumingAgainChangesNothing) {
  LeftBehind(Concat(whole_, {0xFF}));
  ExpectResumed({DroppingLine(1, path_)}, whole_.size(), FramesToMs(4, 48000));
  ExpectResumed({ClosedLine(kOverOpen, path_, 0)}, whole_.size(),
                FramesToMs(4, 48000));
  EXPECT_EQ(ReadFile(path_), whole_);
}

}  // namespace
}  // namespace corvane_test
