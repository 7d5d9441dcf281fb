// What makes a file a capture: more than chance gives.
#include "looks/evidence.h"

#include <gtest/gtest.h>

#include "adts/frame.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::Evidence;
using corvane::evidence_in;
using corvane::RegularFile;

constexpr size_t kFrameSize = 171;

Bytes OwnFrame() {
  const Bytes payload(kFrameSize - adts::kHeaderSize, 0x11);
  Bytes frame;
  EXPECT_TRUE(adts::Frame({2, 3, 1}, payload.data(), payload.size(), &frame));
  return frame;
}

// The same from a writer that tells the buffer's fullness.
Bytes OthersFrame() {
  Bytes frame = OwnFrame();
  frame[5] &= 0xE0;
  frame[6] = 0;
  return frame;
}

Bytes Times(int count, const Bytes& piece) {
  Bytes all;
  for (; count > 0; --count) all = Concat(all, piece);
  return all;
}

Bytes Foreign(size_t size) { return Bytes(size, 'x'); }

class EvidenceTest : public ::testing::Test {
 protected:
  Evidence Of(const Bytes& content) {
    WriteFile(path_, content);
    return evidence_in(RegularFile(path_));
  }

  void ExpectFigures(const Bytes& content, size_t frame_bytes,
                     size_t foreign_bytes) {
    const Evidence evidence = Of(content);
    EXPECT_EQ(evidence.frame_bytes, static_cast<int64_t>(frame_bytes));
    EXPECT_EQ(evidence.foreign_bytes, static_cast<int64_t>(foreign_bytes));
    EXPECT_FALSE(evidence.is_sure);
  }

  TempDir dir_;
  const std::string path_ = dir_.Path("capture.aac");
};

TEST_F(EvidenceTest, AtTheStartAnyFrameCounts) {
  ExpectFigures(OwnFrame(), kFrameSize, 0);
  ExpectFigures(OthersFrame(), kFrameSize, 0);
  ExpectFigures(Concat(OthersFrame(), Foreign(200)), kFrameSize, 200);
}

TEST_F(EvidenceTest, ElsewhereASingleFrameOfTheProgramsOwnCounts) {
  const Bytes before = Concat(Foreign(10), OwnFrame());
  ExpectFigures(before, kFrameSize, 10);
  ExpectFigures(Concat(before, Foreign(20)), kFrameSize, 30);
}

TEST_F(EvidenceTest, OtherHeadersElsewhereNeedFiveFramesInARow) {
  const Bytes before = Foreign(100);
  const size_t foreign = before.size() + 4 * kFrameSize;
  const Evidence four = Of(Concat(before, Times(4, OthersFrame())));
  EXPECT_EQ(four.frame_bytes, 0);
  EXPECT_LT(four.foreign_bytes, static_cast<int64_t>(foreign));
  EXPECT_FALSE(four.suffices());
  ExpectFigures(Concat(before, Times(5, OthersFrame())), 5 * kFrameSize, 100);
}

// Two valid headers, as far apart as the first says, in foreign bytes.
TEST_F(EvidenceTest, AChancePairOfHeadersIsNotEnough) {
  const Bytes pair = Concat(OthersFrame(), Slice(OthersFrame(), 0, 7));
  EXPECT_FALSE(
      Of(Concat(Concat(Foreign(1000), pair), Foreign(1000))).suffices());
  // Nor one behind which the file ends.
  EXPECT_FALSE(Of(Concat(Foreign(1000), OthersFrame())).suffices());
}

TEST_F(EvidenceTest, FramesMustBeAtLeastHalfOfWhatIsThere) {
  const Bytes frames = Times(3, OwnFrame());
  EXPECT_TRUE(Of(Concat(Foreign(3 * kFrameSize), frames)).suffices());
  EXPECT_FALSE(Of(Concat(Foreign(3 * kFrameSize + 1), frames)).suffices());
}

TEST_F(EvidenceTest, PiecesOfHeadersAmongZerosAreNegligible) {
  const Bytes piece = Concat(Slice(OwnFrame(), 0, 4), Bytes(100, 0));
  EXPECT_TRUE(Of(Concat({0}, Times(16, piece))).suffices());
  EXPECT_FALSE(Of(Concat({0}, Times(17, piece))).suffices());
}

TEST_F(EvidenceTest, ZerosSpeakAgainstNothing) {
  const Bytes zeros(100000, 0);
  ExpectFigures(Concat(zeros, OwnFrame()), kFrameSize, 0);
  ExpectFigures(Concat(OwnFrame(), zeros), kFrameSize, 0);
  ExpectFigures(Concat(Concat(zeros, {'x'}), Concat(OwnFrame(), zeros)),
                kFrameSize, 1);
}

TEST_F(EvidenceTest, TenFramesAtEitherEndAreSure) {
  const Bytes foreign = Foreign(100000);
  const Bytes ten = Times(10, OwnFrame());
  const Bytes nine = Times(9, OwnFrame());
  const Bytes torn = Slice(OwnFrame(), 0, 100);
  EXPECT_TRUE(Of(Concat(ten, foreign)).is_sure);
  EXPECT_TRUE(Of(Concat(foreign, ten)).is_sure);
  EXPECT_TRUE(Of(Concat(foreign, Concat(ten, torn))).is_sure);
  EXPECT_TRUE(Of(Concat(foreign, Concat(ten, Slice(torn, 0, 6)))).is_sure);

  EXPECT_FALSE(Of(Concat(nine, foreign)).suffices());
  EXPECT_FALSE(Of(Concat(foreign, nine)).suffices());
  EXPECT_FALSE(Of(Concat(Concat(foreign, ten), Foreign(8))).suffices());
  EXPECT_FALSE(Of(Concat(foreign, Times(10, OthersFrame()))).suffices());
}

TEST_F(EvidenceTest, RunsAreFoundWhereverTheWindowEnds) {
  for (size_t before = 65500; before < 65560; ++before) {
    ExpectFigures(Concat(Foreign(before), Times(3, OwnFrame())), 3 * kFrameSize,
                  before);
  }
}

TEST_F(EvidenceTest, TheFirstWindowOfAWholeCaptureIsEnough) {
  WriteFile(path_, Times(10, OwnFrame()));
  ASSERT_EQ(truncate(path_.c_str(), int64_t{1} << 40), 0);
  EXPECT_TRUE(evidence_in(RegularFile(path_)).is_sure);
}

}  // namespace
}  // namespace corvane_test
