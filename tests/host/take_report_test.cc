// What a user reads of failures that take a broken disk.
#include "take/take_report.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "engine/file_descriptor.h"
#include "host/record_fixture.h"
#include "support/files.h"

namespace corvane_test {
namespace {

class TakeReportTest : public ::testing::Test {
 protected:
  void Begin() {
    corvane::PartResult& part = take_.parts.emplace_back();
    part.path = path_;
    part.started = true;
  }

  // A take that failed so, and was begun.
  void FailWith(corvane::PluginError error) {
    options_.capture_path = path_;
    Begin();
    take_.end = corvane::TakeEnd::kError;
    take_.error = std::move(error);
  }

  Words Report() {
    const auto source = corvane::open_raw_input(-1, {48000, 1}, false);
    EXPECT_TRUE(corvane::report_problems(options_, *source, take_, &console_));
    return Said();
  }

  Words Said() const {
    const Bytes said = ReadFile(dir_.Path("log"));
    return Lines(std::string(said.begin(), said.end()));
  }

  const TempDir dir_;
  const std::string path_ = dir_.Path("take.aac");
  const corvane::FileDescriptor log_{
      open(dir_.Path("log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
  corvane::Console console_{log_.get()};
  corvane::TakeOptions options_;
  corvane::TakeResult take_;
};

TEST_F(TakeReportTest, AFailedFlushLeavesDoubtAboutWhatIsBehindTheLastGoodOne) {
  FailWith({"WRITE_FAILED", "flush failed: Input/output error", "errno", EIO,
            path_});
  take_.parts[0].sealed.emplace().duration_ms = 61234;
  EXPECT_EQ(
      Report(),
      Words({"corvane: " + path_ +
                 ": flush failed: Input/output error; what lies behind the "
                 "last flush that succeeded may not be on the disk",
             "corvane: " + path_ +
                 ": the capture is whole up to 1:01.2 and sealed",
             "corvane: name a file in another folder, or on another disk; "
             "then continue it with: corvane resume '" +
                 path_ + "' -i -"}));
}

TEST_F(TakeReportTest, ATakeThatCannotBeSealedSaysSo) {
  WriteFile(path_,
            {0xFF, 0xF1, 0x60, 0x40, 0x01, 0x7F, 0xFC, 0x01, 0x18, 0x20, 0x07});
  FailWith({"FINALIZE_FAILED", "sync failed: Input/output error", "errno", EIO,
            path_});
  EXPECT_EQ(Report()[1], "corvane: " + path_ +
                             " keeps what was recorded until then, but could "
                             "not be sealed");
}

TEST_F(TakeReportTest, ABitRateOfOnesOwnIsNamedForTheRest) {
  options_.bit_rate = 96000;
  FailWith({"WRITE_FAILED", "write failed: No space left on device", "errno",
            ENOSPC, path_});
  take_.parts[0].sealed.emplace().duration_ms = 1000;
  EXPECT_NE(
      Report().back().find("corvane resume '" + path_ + "' -i - -b 96000"),
      std::string::npos);
}

// The source may come back, or be dead: nobody would know.
TEST_F(TakeReportTest, ALiveSourceThatWasSilentToTheEndIsNamed) {
  Begin();
  take_.parts[0].sealed.emplace();
  take_.end = corvane::TakeEnd::kSignal;
  take_.last_gap_us = 10'085'000;
  const auto source = corvane::open_raw_input(log_.get(), {48000, 1}, false);
  EXPECT_FALSE(corvane::report_problems(options_, *source, take_, &console_));
  EXPECT_EQ(Said(),
            Words({"corvane: standard input: warning: nothing came for the "
                   "last 0:10.0 of the take"}));
}

// Not a word would pass for success.
TEST_F(TakeReportTest, AMovedTakeWhoseNewNameIsUnknownHasFailed) {
  options_.capture_path = path_;
  Begin();
  take_.end = corvane::TakeEnd::kInput;
  take_.parts[0].loss = "its new name is not known";
  EXPECT_EQ(Report(),
            Words({"corvane: " + path_ +
                   ": it was moved while it was written, and its new name is "
                   "not known; seal it where it is now: corvane finalize "
                   "FILE"}));
}

}  // namespace
}  // namespace corvane_test
