// Files larger than the scanner's 64 KiB window: nothing depends on where a
// read ends, and a sound file is read once, from front to back.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "adts/scan.h"
#include "pieces.h"
#include "recorded_reads.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

constexpr int64_t kWindow = 65536;

// Frames that end exactly at `size`, which must be 600 or more.
Bytes FramesUpTo(int64_t size) {
  Bytes file;
  while (size - static_cast<int64_t>(file.size()) > 600) {
    file = std::move(file) + FrameOfLength(500);
  }
  const auto last = static_cast<unsigned>(size - file.size());
  return std::move(file) + FrameOfLength(last);
}

int64_t FramesIn(int64_t size) { return (size - 601) / 500 + 2; }

TEST(Window, AHeaderSplitAnywhereByAWindowEdgeIsRead) {
  for (const int64_t edge : {kWindow, 2 * kWindow}) {
    for (int64_t before = 0; before <= 8; ++before) {
      const int64_t at = edge - before;
      const Bytes file = FramesUpTo(at) + FrameOfLength(700);
      EXPECT_EQ(ScanBytes(file),
                (Scan{at + 700, at + 700, (FramesIn(at) + 1) * 1024, 44100, 0}))
          << before << " bytes of the header before " << edge;
    }
  }
}

TEST(Window, AHeaderCutShortAtAWindowEdgeIsCut) {
  for (int64_t before = 0; before <= 8; ++before) {
    for (size_t kept = 1; kept <= 6; ++kept) {
      const int64_t at = kWindow - before;
      Bytes file = FramesUpTo(at) + FrameOfLength(700);
      file.resize(static_cast<size_t>(at) + kept);
      EXPECT_EQ(ScanBytes(file), (Scan{at, at, FramesIn(at) * 1024, 44100, 0}))
          << kept << " bytes of a header at " << at;
    }
  }
}

TEST(Window, ResynchronisationLooksAheadAcrossTheEdgeAndComesBack) {
  // False headers before the edge each point behind it and make the window
  // move there; the true frame stands between them.
  for (int64_t before = 0; before <= 24; ++before) {
    Bytes file = FramesUpTo(kWindow - before - 40) + Bytes(12, 0x55);
    HeaderFields far;
    far.frame_length = 4000;
    const Bytes false_header = HeaderBytes(far);
    file = std::move(file) + false_header + Bytes(5, 0x55) + false_header;
    const auto found = static_cast<int64_t>(file.size());
    file =
        std::move(file) + FrameOfLength(30) + Bytes(9, 0x55) + FramesUpTo(9000);
    const Scan scan = ScanBytes(file);
    EXPECT_GE(scan.skipped_bytes, 31) << found;
    EXPECT_EQ(scan.valid_end, static_cast<int64_t>(file.size())) << found;
    ExpectLikeNaive(file);
  }
}

TEST(Window, DoesNotChangeTheResultOfLongRandomFiles) {
  std::mt19937 random(20);
  for (int i = 0; i < 40 && !testing::Test::HasFailure(); ++i) {
    Bytes file = RandomCapture(&random, 60, 6000);
    ExpectLikeNaive(file);
    // Foreign bytes right across each edge, one byte further every time.
    for (int64_t at = kWindow - i; at + 40 < static_cast<int64_t>(file.size());
         at += kWindow) {
      std::fill_n(file.begin() + at, 40, i % 2 == 0 ? 0 : 0xFF);
    }
    ExpectLikeNaive(file);
  }
}

// The positioned reads that a sound file needs: whole windows, each starting at
// the first header byte that the one before did not hold; a short one is
// followed by the read that meets the end.
std::vector<std::pair<int64_t, int64_t>> NeededReads(
    const std::vector<int64_t>& frame_starts, int64_t size) {
  std::vector<std::pair<int64_t, int64_t>> reads;
  int64_t held = 0;
  for (const int64_t start : frame_starts) {
    for (int64_t byte = start; byte < start + 7; ++byte) {
      if (byte < held) continue;
      const int64_t got = std::min(kWindow, size - byte);
      reads.emplace_back(byte, kWindow);
      if (got < kWindow) reads.emplace_back(byte + got, kWindow - got);
      held = byte + got;
    }
  }
  return reads;
}

TEST(Window, ASoundFileIsReadOnceInSequenceInWholeWindows) {
  std::mt19937 random(4);
  for (int i = 0; i < 40; ++i) {
    Bytes file;
    std::vector<int64_t> starts;
    while (file.size() < 3 * kWindow + 1000) {
      starts.push_back(static_cast<int64_t>(file.size()));
      file = std::move(file) + FrameOfLength(8 + random() % 1500);
    }
    const MemoryFile source(file);
    const RecordedReads recorder;
    Scan scan{};
    ASSERT_EQ(adts::ScanFile(source.fd(), &scan), 0);
    ASSERT_EQ(scan.valid_end, static_cast<int64_t>(file.size()));

    std::vector<std::pair<int64_t, int64_t>> reads;
    for (const Read& read : recorder.reads()) {
      reads.emplace_back(read.offset, read.count);
    }
    EXPECT_EQ(reads, NeededReads(starts, static_cast<int64_t>(file.size())));
  }
}

TEST(Window, AnEmptyFileIsNotRead) {
  const MemoryFile source;
  const RecordedReads recorder;
  Scan scan{};
  ASSERT_EQ(adts::ScanFile(source.fd(), &scan), 0);
  EXPECT_EQ(recorder.reads().size(), 0U);
}

TEST(Window, ScanningNeitherUsesNorMovesTheFileOffset) {
  const Bytes file = FramesUpTo(100000) + Bytes(50, 0x55) + FramesUpTo(70000);
  const MemoryFile source(file);
  for (const off_t offset : {0, 1, 65536, 170050, 999999}) {
    ASSERT_EQ(lseek(source.fd(), offset, SEEK_SET), offset);
    Scan scan{};
    ASSERT_EQ(adts::ScanFile(source.fd(), &scan), 0);
    EXPECT_EQ(scan, NaiveScan(file));
    EXPECT_EQ(lseek(source.fd(), 0, SEEK_CUR), offset);
  }
}

}  // namespace
}  // namespace corvane_test
