// The places of foreign bytes: as many as the scan counts, wherever they are.
#include "looks/foreign_runs.h"

#include <gtest/gtest.h>

#include "adts/frame.h"
#include "host/foreign_places.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::foreign_runs_in;
using corvane::ForeignRuns;
using corvane::RegularFile;

constexpr size_t kWindow = 262144;  // what is read at a time

Bytes FrameOf(size_t size) {
  const Bytes payload(size - adts::kHeaderSize, 0x11);
  Bytes frame;
  EXPECT_TRUE(adts::Frame({2, 3, 1}, payload.data(), payload.size(), &frame));
  return frame;
}

Bytes Foreigners(size_t size) { return Bytes(size, 'x'); }

class ForeignRunsTest : public ::testing::Test {
 protected:
  ForeignRuns Of(const Bytes& content) {
    WriteFile(path_, content);
    return foreign_runs_in(RegularFile(path_), NaiveScan(content));
  }

  void ExpectPlaces(const Bytes& content, const std::string& how) {
    WriteFile(path_, content);
    ExpectForeignPlaces(path_, content, how);
  }

  TempDir dir_;
  const std::string path_ = dir_.Path("capture.aac");
};

TEST_F(ForeignRunsTest, EachRunHasItsPlaceAndItsBytes) {
  const Bytes frame = FrameOf(100);
  const ForeignRuns runs =
      Of(Concat(Concat(Foreigners(30), Concat(frame, frame)),
                Concat(Foreigners(5), Concat(frame, Foreigners(8)))));
  ASSERT_EQ(runs.listed.size(), 1U);
  EXPECT_EQ(runs.listed[0].offset, 0);
  EXPECT_EQ(runs.listed[0].bytes, 30);

  const ForeignRuns both =
      Of(Concat(Concat(Foreigners(30), Concat(frame, frame)),
                Concat(Foreigners(5), Concat(frame, frame))));
  ASSERT_EQ(both.listed.size(), 2U);
  EXPECT_EQ(both.listed[0].offset, 0);
  EXPECT_EQ(both.listed[0].bytes, 30);
  EXPECT_EQ(both.listed[1].offset, 230);
  EXPECT_EQ(both.listed[1].bytes, 5);
  EXPECT_EQ(both.count, 2);
  EXPECT_EQ(both.bytes, 35);
}

TEST_F(ForeignRunsTest, NothingSkippedIsNoRun) {
  const Bytes frame = FrameOf(100);
  for (const Bytes& content :
       {Bytes(), frame, Concat(frame, Slice(frame, 0, 50)),
        Concat(frame, Foreigners(50)), Foreigners(50)}) {
    const ForeignRuns runs = Of(content);
    EXPECT_EQ(runs.count, 0) << content.size();
    EXPECT_EQ(runs.bytes, 0) << content.size();
  }
}

// A frame of the largest size is looked behind of, so that the window has to
// follow early.
TEST_F(ForeignRunsTest, RunsAreFoundWhereverTheWindowEnds) {
  const Bytes frames = Concat(FrameOf(adts::kMaxFrameSize), FrameOf(20));
  const size_t look_ahead = adts::kMaxFrameSize + adts::kHeaderSize;
  for (const size_t edge : {kWindow - look_ahead, kWindow}) {
    for (size_t before = edge - 9; before < edge + 9; ++before) {
      const Bytes front = Concat(Foreigners(before), frames);
      ExpectPlaces(front, "in front, " + std::to_string(before));
      ExpectPlaces(Concat(FrameOf(100), Concat(front, Foreigners(3))),
                   "between, " + std::to_string(before));
    }
  }
}

TEST_F(ForeignRunsTest, HeadersByChanceAreNoFrames) {
  // What headers begin with and consist of, in any order.
  constexpr uint8_t kLikely[] = {0xFF, 0xF1, 0xF9, 0x4C, 0x40, 0x80,
                                 0x01, 0x00, 0x1F, 0xFC, 0x20};
  for (uint32_t run = 0; run < 200; ++run) {
    Chance chance(run);
    Bytes content = chance.OneIn(2) ? FrameOf(40) : Bytes();
    for (int left = chance.Between(1, 3000); left > 0; --left) {
      content.push_back(kLikely[chance.Between(0, sizeof(kLikely) - 1)]);
    }
    if (chance.OneIn(2)) content = Concat(content, FrameOf(50));
    ExpectPlaces(content, "seed " + std::to_string(TestSeed()) + ", run " +
                              std::to_string(run));
  }
}

TEST_F(ForeignRunsTest, BeyondTenThousandRunsAreOnlyCounted) {
  const Bytes piece = Concat(FrameOf(10), FrameOf(10));
  Bytes content = piece;
  for (int i = 0; i < 10002; ++i) {
    content.insert(content.end(), {'x', 'x'});
    content.insert(content.end(), piece.begin(), piece.end());
  }
  const ForeignRuns runs = Of(content);
  EXPECT_EQ(runs.count, 10002);
  EXPECT_EQ(runs.bytes, 20004);
  ASSERT_EQ(runs.listed.size(), 10000U);
  EXPECT_EQ(runs.listed.back().offset, 20 + 9999 * 22);
}

// It may be cut shorter, or vanish, between the scan and this.
TEST_F(ForeignRunsTest, AFileThatHasShrunkSinceTheScanEndsTheWalk) {
  const Bytes content = Concat(Foreigners(600000), FrameOf(100));
  WriteFile(path_, content);
  const RegularFile file(path_);
  TruncateFile(path_, 300000);
  const ForeignRuns runs = foreign_runs_in(file, NaiveScan(content));
  EXPECT_EQ(runs.count, 0);
}

}  // namespace
}  // namespace corvane_test
