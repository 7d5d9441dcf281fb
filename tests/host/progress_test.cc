// What a take's progress makes of what it is told.
#include "take/progress.h"

#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "engine/loop_event.h"
#include "host/record_fixture.h"
#include "support/files.h"
#include "take/room.h"

namespace corvane_test {
namespace {

using corvane::Console;
using corvane::Progress;
using corvane::TakeOutlook;

constexpr int kProgressRate = 48000;

// Standard error is a file, so nothing but lines is seen.
class ProgressTest : public ::testing::Test {
 protected:
  ProgressTest()
      : log_(open(dir_.Path("log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC,
                  0600)),
        console_(log_) {
    outlook_.capture_path = dir_.Path("take.aac");
    outlook_.format = {kProgressRate, 1};
    WriteFile(outlook_.capture_path, {});
  }
  ~ProgressTest() override { close(log_); }

  // A bit rate at which the disk lasts about so long.
  void SetRoom(double seconds) {
    const auto bytes = corvane::free_bytes_at(outlook_.capture_path);
    ASSERT_TRUE(bytes.has_value());
    outlook_.bit_rate =
        static_cast<int64_t>(static_cast<double>(*bytes) / seconds * 8);
  }

  // One that is due: the interval between two draws has passed.
  static void UpdateLater(Progress* progress, int64_t frames) {
    const auto due = corvane::LoopEvent::At(g_get_monotonic_time() + 101'000);
    while (!due.has_come()) g_main_context_iteration(nullptr, TRUE);
    progress->Update(frames, 0);
  }

  Words Said() const {
    const Bytes log = ReadFile(dir_.Path("log"));
    return Lines(std::string(log.begin(), log.end()));
  }

  const TempDir dir_;
  const int log_;
  Console console_;
  TakeOutlook outlook_;
};

TEST_F(ProgressTest, LittleRoomIsWarnedOfOnceWithoutATerminalToo) {
  SetRoom(300);
  Progress progress(&console_, outlook_);
  progress.Begin();
  for (int i = 0; i < 3; ++i) UpdateLater(&progress, 0);
  const Words said = Said();
  ASSERT_EQ(said.size(), 1U);
  EXPECT_EQ(said[0].rfind("corvane: " + outlook_.capture_path +
                              ": warning: the disk has room for ",
                          0),
            0U)
      << said[0];
  EXPECT_NE(said[0].find(" more; free some, or the take ends there"),
            std::string::npos)
      << said[0];
}

TEST_F(ProgressTest, MoreThanTenMinutesOfRoomIsNoWarning) {
  SetRoom(1200);
  Progress progress(&console_, outlook_);
  progress.Begin();
  UpdateLater(&progress, 0);
  EXPECT_EQ(Said(), Words());
}

TEST_F(ProgressTest, AFileThatFitsNeedsNoMoreRoom) {
  SetRoom(300);
  outlook_.total_frames = kProgressRate * 60;
  Progress progress(&console_, outlook_);
  progress.Begin();
  UpdateLater(&progress, 0);
  EXPECT_EQ(Said(), Words());
}

// The bit rate says little room; what was written says that there is a lot.
TEST_F(ProgressTest, AfterTenSecondsTheTakesOwnRateCounts) {
  SetRoom(300);
  Progress progress(&console_, outlook_);
  progress.Begin();
  WriteFile(outlook_.capture_path, Bytes(1000));
  UpdateLater(&progress, kProgressRate * 10);
  EXPECT_EQ(Said(), Words());
}

TEST_F(ProgressTest, AMissingDiskSaysNothing) {
  outlook_.capture_path = dir_.Path("gone/take.aac");
  Progress progress(&console_, outlook_);
  progress.Begin();
  UpdateLater(&progress, 0);
  EXPECT_EQ(Said(), Words());
}

}  // namespace
}  // namespace corvane_test
