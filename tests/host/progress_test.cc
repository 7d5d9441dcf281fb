// The live line's text at any width.
#include "take/progress.h"

#include <gtest/gtest.h>

namespace corvane_test {
namespace {

using corvane::format_progress;
using corvane::ProgressFigures;

constexpr int64_t kKib = 1024;

ProgressFigures QuarterDone() {
  ProgressFigures figures;
  figures.has_begun = true;
  figures.audio_s = 15;
  figures.total_s = 60;
  figures.bytes = 120 * kKib;
  figures.elapsed_s = 2;
  return figures;
}

TEST(ProgressTest, ShowsABarAndTheTimeLeftWhereTheLengthIsKnown) {
  EXPECT_EQ(format_progress(QuarterDone(), 80),
            "[==========                              ]  "
            "0:15  120.0 KiB  7.5x  0:06 left");
}

TEST(ProgressTest, ShowsFiguresAloneWhereTheLengthIsUnknown) {
  ProgressFigures figures = QuarterDone();
  figures.total_s.reset();
  EXPECT_EQ(format_progress(figures, 80), "0:15  120.0 KiB  7.5x");
}

TEST(ProgressTest, GivesUpTheBarFirstAndTheRecordedTimeLast) {
  EXPECT_EQ(format_progress(QuarterDone(), 40),
            "[=      ] 0:15 120.0 KiB 7.5x 0:06 left");
  EXPECT_EQ(format_progress(QuarterDone(), 35),
            "0:15 120.0 KiB 7.5x 0:06 left");
  EXPECT_EQ(format_progress(QuarterDone(), 29), "0:15 120.0 KiB 7.5x");
  EXPECT_EQ(format_progress(QuarterDone(), 19), "0:15 120.0 KiB");
  EXPECT_EQ(format_progress(QuarterDone(), 10), "0:15");
}

TEST(ProgressTest, FitsEveryWidthThatHoldsTheTime) {
  ProgressFigures figures = QuarterDone();
  for (const double scale : {1.0, 100.0, 10000.0}) {
    figures.audio_s = 15 * scale;
    figures.total_s = 60 * scale;
    figures.bytes = static_cast<int64_t>(120 * 1024 * scale);
    for (int columns = 9; columns <= 300; ++columns) {
      const std::string line = format_progress(figures, columns);
      EXPECT_LT(line.size(), static_cast<size_t>(columns)) << line;
      EXPECT_FALSE(line.empty());
    }
  }
}

TEST(ProgressTest, WritesHoursAndLargeFilesInTheirUnits) {
  ProgressFigures figures;
  figures.has_begun = true;
  figures.audio_s = 3 * 3600 + 62;
  figures.bytes = 1536 * 1024 * kKib;
  figures.elapsed_s = figures.audio_s;
  EXPECT_EQ(format_progress(figures, 80), "3:01:02  1.50 GiB  1.0x");
  figures.bytes = 5 * 1024 * kKib;
  EXPECT_EQ(format_progress(figures, 80), "3:01:02  5.0 MiB  1.0x");
}

TEST(ProgressTest, MoreAudioThanPromisedLeavesTheBarFull) {
  ProgressFigures figures = QuarterDone();
  figures.audio_s = 90;
  EXPECT_EQ(format_progress(figures, 37),
            "[===] 1:30 120.0 KiB 45.0x 0:00 left");
}

TEST(ProgressTest, ATakeThatHasJustBegunHasNoSpeedYet) {
  ProgressFigures figures;
  figures.has_begun = true;
  figures.total_s = 60;
  EXPECT_EQ(format_progress(figures, 40),
            "[                   ] 0:00 0.0 KiB 0.0x");
}

TEST(ProgressTest, ATakeThatHasNotBegunSaysThatItWaits) {
  ProgressFigures figures;
  EXPECT_EQ(format_progress(figures, 80), "waiting for audio");
  figures.silent_s = 1.9;
  EXPECT_EQ(format_progress(figures, 80), "waiting for audio");
  figures.silent_s = 65;
  EXPECT_EQ(format_progress(figures, 80), "no audio for 1:05");
  EXPECT_EQ(format_progress(figures, 9), "no audio");
}

TEST(ProgressTest, AStallOfTwoSecondsStandsBehindTheTime) {
  ProgressFigures figures = QuarterDone();
  figures.silent_s = 1.9;
  EXPECT_EQ(format_progress(figures, 80), format_progress(QuarterDone(), 80));
  figures.silent_s = 2;
  EXPECT_NE(format_progress(figures, 80).find("  no audio for 0:02  "),
            std::string::npos)
      << format_progress(figures, 80);
}

}  // namespace
}  // namespace corvane_test
