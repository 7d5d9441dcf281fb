// What a scan reports, by example.
#include "adts/scan.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "pieces.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

// Two whole frames of 100 and 60 bytes, 44100 Hz.
Bytes TwoFrames() { return FrameOfLength(100) + FrameOfLength(60); }

Bytes Foreign(size_t count) { return Bytes(count, 0x55); }

TEST(Scan, OfAnEmptyFileIsAllZero) {
  EXPECT_EQ(ScanBytes({}), (Scan{0, 0, 0, 0, 0}));
}

TEST(Scan, OfWholeFramesTrustsTheWholeFile) {
  EXPECT_EQ(ScanBytes(TwoFrames()), (Scan{160, 160, 2048, 44100, 0}));
}

TEST(Scan, CutsALastFrameThatRuns100BytesPastTheEnd) {
  Bytes file = TwoFrames() + FrameOfLength(300);
  file.resize(file.size() - 100);
  EXPECT_EQ(ScanBytes(file), (Scan{160, 160, 2048, 44100, 0}));
}

TEST(Scan, CutsALastFrameAtEveryLengthShortOfWhole) {
  for (size_t kept = 1; kept < 40; ++kept) {
    Bytes file = TwoFrames() + FrameOfLength(40);
    file.resize(160 + kept);
    EXPECT_EQ(ScanBytes(file), (Scan{160, 160, 2048, 44100, 0})) << kept;
  }
  EXPECT_EQ(ScanBytes(TwoFrames() + FrameOfLength(40)),
            (Scan{200, 200, 3072, 44100, 0}));
}

TEST(Scan, CutsAHeaderCutShort) {
  for (const char* tail : {"FF", "FF F1", "FF F0", "FF F8", "FF F9", "FF F1 50",
                           "FF F1 50 80 2F 5F"}) {
    EXPECT_EQ(ScanBytes(TwoFrames() + Hex(tail)),
              (Scan{160, 160, 2048, 44100, 0}))
        << tail;
  }
}

TEST(Scan, KeepsAShortTailThatIsNoHeader) {
  for (const char* tail :
       {"00", "F1", "00 00 00", "FF F2", "FF F4 00", "FF E0 00", "FF 00",
        "00 FF", "00 FF F1", "00 00 00 00 00 00", "FF FF 50 80",
        "00 FF F1 50 80 00 00", "FF F1 50 80 00 1F FC"}) {
    const auto size = static_cast<int64_t>(160 + Hex(tail).size());
    EXPECT_EQ(ScanBytes(TwoFrames() + Hex(tail)),
              (Scan{160, size, 2048, 44100, 0}))
        << tail;
  }
}

TEST(Scan, SkipsTenForeignBytesBetweenTwoFrames) {
  const Bytes gap = FrameOfLength(100) + Foreign(10) + FrameOfLength(60);
  EXPECT_EQ(ScanBytes(gap), (Scan{170, 170, 2048, 44100, 10}))
      << "second frame ends the file";
  EXPECT_EQ(ScanBytes(gap + FrameOfLength(30)),
            (Scan{200, 200, 3072, 44100, 10}))
      << "a third frame follows the second";
}

TEST(Scan, CountsForeignBytesByTheHundredThousand) {
  EXPECT_EQ(ScanBytes(FrameOfLength(100) + Foreign(100000) + TwoFrames()),
            (Scan{100260, 100260, 3072, 44100, 100000}));
}

TEST(Scan, SkipsForeignBytesBeforeTheFirstFrame) {
  EXPECT_EQ(ScanBytes(Foreign(33) + TwoFrames()),
            (Scan{193, 193, 2048, 44100, 33}));
}

TEST(Scan, AddsUpSeveralGaps) {
  EXPECT_EQ(ScanBytes(Foreign(1) + TwoFrames() + Foreign(7) + TwoFrames() +
                      Foreign(2000) + TwoFrames()),
            (Scan{2488, 2488, 6144, 44100, 2008}));
}

TEST(Scan, NeitherCountsNorCutsForeignBytesAfterTheLastFrame) {
  EXPECT_EQ(ScanBytes(TwoFrames() + Foreign(500)),
            (Scan{160, 660, 2048, 44100, 0}));
}

TEST(Scan, OfForeignBytesAloneFindsNothing) {
  EXPECT_EQ(ScanBytes(Foreign(5000)), (Scan{0, 5000, 0, 0, 0}));
}

TEST(Scan, DoesNotSeeATornFrameBehindForeignBytes) {
  Bytes file = TwoFrames() + Foreign(10) + FrameOfLength(90);
  file.resize(file.size() - 1);
  EXPECT_EQ(ScanBytes(file), (Scan{160, 259, 2048, 44100, 0}));
}

TEST(Scan, SearchesOnBehindACandidateThatRunsPastTheEnd) {
  // Foreign bytes with a header of 8000 bytes in them, then a sound frame.
  const Bytes false_header = Hex("FF F1 50 83 E8 1F FC");
  EXPECT_EQ(ScanBytes(FrameOfLength(20) + Foreign(3) + false_header +
                      Foreign(4) + FrameOfLength(50)),
            (Scan{84, 84, 2048, 44100, 14}));
}

TEST(Scan, SearchesOnBehindACandidateThatNoHeaderFollows) {
  EXPECT_EQ(ScanBytes(FrameOfLength(20) + Foreign(3) + FrameOfLength(30) +
                      Foreign(2) + FrameOfLength(50) + FrameOfLength(40)),
            (Scan{145, 145, 3072, 44100, 35}));
}

TEST(Scan, AcceptsACandidateWhoseFollowerIsTorn) {
  // The header behind it is proof enough; the torn frame is then cut.
  Bytes file = FrameOfLength(20) + Foreign(3) + FrameOfLength(30);
  file = file + FrameOfLength(200);
  file.resize(file.size() - 150);
  EXPECT_EQ(ScanBytes(file), (Scan{53, 53, 2048, 44100, 3}));
}

TEST(Scan, WantsSevenBytesOfFollowerBehindACandidate) {
  const Bytes file =
      FrameOfLength(20) + Foreign(3) + FrameOfLength(30) + FrameOfLength(200);
  const auto scan_of_first = [&file](size_t size) {
    return ScanBytes(Bytes(file.data(), file.data() + size));
  };
  EXPECT_EQ(scan_of_first(53 + 6), (Scan{20, 59, 1024, 44100, 0}));
  EXPECT_EQ(scan_of_first(53 + 7), (Scan{53, 53, 2048, 44100, 3}));
}

TEST(Scan, TakesTheSampleRateOfTheLastFrame) {
  HeaderFields slow;
  slow.frequency_index = 11;
  EXPECT_EQ(ScanBytes(TwoFrames() + FrameBytes(slow)),
            (Scan{168, 168, 3072, 8000, 0}));
}

TEST(Scan, OfATornFirstFrameTrustsNothing) {
  Bytes file = FrameOfLength(100);
  file.pop_back();
  EXPECT_EQ(ScanBytes(file), (Scan{0, 0, 0, 0, 0}));
}

TEST(DurationMs, IsWholeMillisecondsRoundedDown) {
  EXPECT_EQ((Scan{0, 0, 1024, 44100, 0}.DurationMs()), 23);
  EXPECT_EQ((Scan{0, 0, 44100, 44100, 0}.DurationMs()), 1000);
  EXPECT_EQ((Scan{0, 0, 1023, 48000, 0}.DurationMs()), 21);
  EXPECT_EQ((Scan{0, 0, 47, 48000, 0}.DurationMs()), 0);
}

TEST(DurationMs, IsZeroWithoutASampleRate) {
  EXPECT_EQ((Scan{0, 0, 1024, 0, 0}.DurationMs()), 0);
  EXPECT_EQ((Scan{0, 0, 1024, -1, 0}.DurationMs()), 0);
}

TEST(DurationMs, OfAYearOfAudioDoesNotOverflow) {
  const int64_t seconds = 366LL * 24 * 3600;
  EXPECT_EQ((Scan{0, 0, seconds * 96000, 96000, 0}.DurationMs()),
            seconds * 1000);
}

}  // namespace
}  // namespace corvane_test
