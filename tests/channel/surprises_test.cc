// Consequences of the recovery's rules that an application's author would not
// guess. Each is a worked example of docs/recovery.md, with its figures.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "adts/frame.h"
#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::Contains;

// A frame's average length at 64000 bit/s and 48000 Hz.
constexpr size_t kOrdinary = 171;

// A whole frame, mono at 48000 Hz, whose payload resembles no header.
Bytes FrameOf(size_t length) {
  const Bytes payload(length - adts::kHeaderSize, 0x55);
  Bytes frame;
  EXPECT_TRUE(adts::Frame({2, adts::FrequencyIndexOf(48000), 1}, payload.data(),
                          payload.size(), &frame));
  return frame;
}

Bytes Frames(size_t count) {
  const Bytes frame = FrameOf(kOrdinary);
  Bytes frames;
  for (size_t i = 0; i < count; ++i) {
    frames.insert(frames.end(), frame.begin(), frame.end());
  }
  return frames;
}

// What a write leaves that stopped after `there` of a frame's bytes.
Bytes Torn(size_t declared, size_t there) {
  return Slice(FrameOf(declared), 0, there);
}

Bytes Join(const std::vector<Bytes>& pieces) {
  Bytes all;
  for (const Bytes& piece : pieces) {
    all = Concat(all, piece);
  }
  return all;
}

class SurprisesTest : public ChannelTest {
 protected:
  // Finds `frames` frames in a file that stays as it is, and reports `foreign`
  // bytes between them.
  void ExpectSealedUntouched(const Bytes& content, size_t frames,
                             size_t foreign) {
    WriteFile(path_, content);
    TakeTranscript();
    EXPECT_THAT(FinalizePath(path_), Sealed(path_, FramesToMs(frames, 48000)));
    if (foreign > 0) {
      EXPECT_THAT(LogLines(), Contains(ForeignLine(path_, foreign)));
    } else {
      EXPECT_EQ(LogLines().size(), 2u) << "the seal's own lines alone";
    }
    EXPECT_EQ(ReadFile(path_), content);
  }

  const std::string path_ = Path("take.aac");
  const Bytes foreign_ = Bytes(10, 0xAA);
};

// The torn frame counts, as its length is made up by the frame behind it.
TEST_F(SurprisesTest, ATornFrameHidesTheOneWrittenBehindIt) {
  ExpectSealedUntouched(Join({Frames(2), Torn(kOrdinary, 10), Frames(3)}),
                        2 + 1 + 2, 10);
}

// The 8184 bytes that are missing end inside the 48th frame behind.
TEST_F(SurprisesTest, ATornFrameOfTheLargestLengthHides48OrdinaryOnes) {
  ExpectSealedUntouched(Join({Frames(2), Torn(8191, 7), Frames(100)}),
                        2 + 1 + 52, 48 * kOrdinary - 8184);
}

// The worst case: all but the first byte of a second one is skipped.
TEST_F(SurprisesTest, ATornFrameOfTheLargestLengthHidesTwoLargeOnes) {
  ExpectSealedUntouched(
      Join({Frames(2), Torn(8191, 7), FrameOf(8183), FrameOf(8191), Frames(2)}),
      2 + 1 + 2, 8190);
}

TEST_F(SurprisesTest, WholeFramesInsideATornOnesLengthAreCutOffWithIt) {
  WriteFile(path_, Join({Frames(2), Torn(4000, 7), Frames(20)}));
  EXPECT_THAT(FinalizePath(path_), Sealed(path_, FramesToMs(2, 48000)));
  EXPECT_THAT(LogLines(), Contains(DroppingLine(7 + 20 * kOrdinary, path_)));
  EXPECT_EQ(ReadFile(path_), Frames(2));
}

// What confirms a frame is a second one, or the file's end, right behind it.
TEST_F(SurprisesTest, ASingleFrameBetweenForeignBytesCountsAsForeign) {
  ExpectSealedUntouched(
      Join({Frames(2), foreign_, Frames(1), foreign_, Frames(2)}), 4,
      10 + kOrdinary + 10);
}

TEST_F(SurprisesTest, ASingleForeignByteIsWorthAWarning) {
  ExpectSealedUntouched(Join({Frames(2), Bytes(1, 0xAA), Frames(2)}), 4, 1);
}

TEST_F(SurprisesTest, ATornFrameBehindForeignBytesIsNotCutOff) {
  const Bytes damaged = Join({Frames(2), foreign_, Torn(kOrdinary, 100)});
  ExpectSealedUntouched(damaged, 2, 0);
  ResumePath(path_);
  Append(Noise(1024));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(2 + 2, 48000)));
  EXPECT_THAT(LogLines(), Contains(ForeignLine(path_, 110)));
  EXPECT_EQ(Slice(ReadFile(path_), 0, damaged.size()), damaged);
}

TEST_F(SurprisesTest, OneToSevenBytesThatAreNoHeaderStay) {
  for (size_t size = 1; size <= 7; ++size) {
    SCOPED_TRACE(size);
    ExpectSealedUntouched(Concat(Frames(2), Bytes(size, 0xAA)), 2, 0);
  }
}

TEST_F(SurprisesTest, ZerosAtTheEndStayAndTheNextFramesAreFoundBehindThem) {
  ExpectSealedUntouched(Concat(Frames(4), Bytes(4096)), 4, 0);
  ResumePath(path_);
  EXPECT_THAT(LogLines(),
              Contains(ResumeLine(path_, 4 * kOrdinary, FramesToMs(4, 48000))));
  Append(Noise(1024));
  EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(4 + 2, 48000)));
  EXPECT_THAT(LogLines(), Contains(ForeignLine(path_, 4096)));
}

// ADTS without a checksum knows lengths, not contents.
TEST_F(SurprisesTest, AFrameWhosePayloadIsZerosCountsAsWhole) {
  ExpectSealedUntouched(Join({Frames(2), Torn(kOrdinary, 7), Bytes(164 + 512)}),
                        3, 0);
}

TEST_F(SurprisesTest, OneSecondAtHalfTheRateDoublesTheDurationOfAMinute) {
  WriteFile(path_, Frames(2813));
  EXPECT_THAT(FinalizePath(path_), Sealed(path_, 60010));
  ResumePath(path_, 24000);
  Append(Noise(24000));
  EXPECT_THAT(Stop(), Sealed(path_, 121088));
}

TEST_F(SurprisesTest, EveryResumeAddsAFrameOfPriming) {
  Record(path_, Noise(1024 * 47));
  for (int resumed = 1; resumed <= 3; ++resumed) {
    ResumePath(path_);
    Append(Noise(1024 * 47));
    EXPECT_THAT(Stop(), Sealed(path_, FramesToMs(48 * (1 + resumed), 48000)));
  }
}

TEST_F(SurprisesTest, StopLooksForARelativePathInTheFolderOfTheMoment) {
  ASSERT_EQ(mkdir(Path("a").c_str(), 0755), 0);
  const std::string capture = Path("a/take.aac");
  {
    const WorkingDir there(Path("a"));
    Start("take.aac");
    Append(Noise(1024 * 4));
  }
  const WorkingDir here(Path(""));
  EXPECT_EQ(Stop(), ErrnoError("CAPTURE_MISSING", "capture not available",
                               "take.aac", ENOENT));
  EXPECT_THAT(FinalizePath(capture), Sealed(capture, FramesToMs(4 + 1, 48000)));
}

}  // namespace
}  // namespace corvane_test
