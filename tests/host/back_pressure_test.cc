// The recorder against a plugin that answers when the test says so: how much
// may be under way, and when it is flushed.
#include <sys/eventfd.h>

#include <gtest/gtest.h>

#include <cstdio>

#include "host/slow_plugin.h"
#include "support/files.h"
#include "take/recorder.h"

namespace corvane_test {
namespace {

using corvane::FileDescriptor;
using corvane::Recorder;
using corvane::TakeEnd;
using corvane::TakeOptions;
using corvane::TakeResult;

// Ten seconds of silence in memory, at 96000 bytes a second.
class SilentSource : public corvane::AudioSource {
 public:
  corvane::PcmFormat format() const override { return {48000, 1}; }
  std::string name() const override { return "silence"; }
  std::optional<int64_t> total_frames() const override { return 480000; }
  int wait_fd() const override { return readable_.get(); }
  std::string how_to_continue() const override { return "-i -"; }
  std::string error() const override { return ""; }
  bool has_ended() const override { return left_ == 0; }
  size_t Read(uint8_t* out, size_t size) override {
    const size_t got = std::min(size, left_);
    std::fill(out, out + got, 0);
    left_ -= got;
    return got;
  }

  // From now on as a pipe that is never empty.
  void BecomePipe() { readable_ = FileDescriptor(eventfd(1, EFD_CLOEXEC)); }

 private:
  FileDescriptor readable_;
  size_t left_ = 960000;
};

class BackPressureTest : public ::testing::Test {
 protected:
  TakeResult Record(const TakeOptions& options) {
    return Recorder(&engine_, &source_, options, {}, nullptr).Run();
  }

  static TakeOptions InChunksOf(int ms) {
    TakeOptions options;
    options.capture_path = "take.aac";
    options.feed.chunk_ms = ms;
    return options;
  }

  corvane::Engine engine_;
  SlowPlugin plugin_{&engine_};
  SilentSource source_;
};

TEST_F(BackPressureTest, AtFullSpeedHalfAMebibyteAndAChunkAreUnanswered) {
  TakeOptions options;
  options.capture_path = "take.aac";
  const TakeResult take = Record(options);
  EXPECT_GE(plugin_.most_unanswered_bytes, 512U * 1024);
  EXPECT_LE(plugin_.most_unanswered_bytes, 512U * 1024 + 96000);
  EXPECT_EQ(plugin_.appends, 10U);
  EXPECT_EQ(take.frames, 480000);
  EXPECT_FALSE(take.error);
}

TEST_F(BackPressureTest, LiveAudioHasRoomForTwoSeconds) {
  source_.BecomePipe();
  const TakeResult take = Record(InChunksOf(20));
  EXPECT_EQ(plugin_.most_unanswered_bytes, 2U * 96000);
  EXPECT_EQ(plugin_.appends, 500U);
  EXPECT_EQ(take.frames, 480000);
}

// A byte of audio may cost a kilobyte of message.
TEST_F(BackPressureTest, SmallAppendsAreBoundedByTheirNumberToo) {
  Record(InChunksOf(1));
  EXPECT_EQ(plugin_.most_unanswered, 512U);
  EXPECT_EQ(plugin_.appends, 10000U);
}

TEST_F(BackPressureTest, TheFirstFailedAppendEndsTheTakeWithStop) {
  plugin_.FailAppend(10);
  const TakeResult take = Record(InChunksOf(1));
  ASSERT_TRUE(take.error);
  EXPECT_EQ(take.error->code, "WRITE_FAILED");
  EXPECT_EQ(take.error->message, "no room");
  EXPECT_EQ(take.end, TakeEnd::kError);
  // Those that were under way by then, and none after.
  EXPECT_EQ(plugin_.appends, 512U + 9U);
  EXPECT_EQ(plugin_.calls, (std::vector<std::string>{"start", "stop"}));
}

TEST_F(BackPressureTest, FlushesAreNeverTwoAtOnceAndAllAreCounted) {
  TakeOptions options = InChunksOf(1);
  options.flush_every_us = 1;
  const TakeResult take = Record(options);
  EXPECT_EQ(plugin_.most_unanswered_flushes, 1U);
  EXPECT_GT(plugin_.flushes, 1U);
  EXPECT_EQ(take.flushes.count, static_cast<int64_t>(plugin_.flushes));
  EXPECT_GT(take.flushes.longest_us, 0);
}

TEST_F(BackPressureTest, NothingIsFlushedWhereTheIntervalIsZero) {
  const TakeResult take = Record(InChunksOf(1));
  EXPECT_EQ(plugin_.flushes, 0U);
  EXPECT_EQ(take.flushes.count, 0);
}

TEST_F(BackPressureTest, AFailedFlushEndsTheTakeWithStop) {
  plugin_.FailFlushes();
  TakeOptions options = InChunksOf(1);
  options.flush_every_us = 1;
  const TakeResult take = Record(options);
  ASSERT_TRUE(take.error);
  EXPECT_EQ(take.error->code, "WRITE_FAILED");
  EXPECT_EQ(take.end, TakeEnd::kError);
  EXPECT_EQ(plugin_.flushes, 1U);
  EXPECT_LT(plugin_.appends, 10000U);
  EXPECT_EQ(plugin_.calls.back(), "stop");
}

// Another program created and locked the file between "start" and its answer.
class ClaimTest : public BackPressureTest {
 protected:
  TakeOptions Take() {
    TakeOptions options = InChunksOf(20);
    options.capture_path = path_;
    return options;
  }

  const TempDir dir_;
  const std::string path_ = dir_.Path("take.aac");
  corvane::CaptureLock rival_;
};

TEST_F(ClaimTest, WhoeverLockedTheNewFileFirstHasIt) {
  plugin_.OnStart([this] {
    WriteFile(path_, {});
    ASSERT_FALSE(rival_.Take(path_));
  });
  const TakeResult take = Record(Take());
  ASSERT_EQ(take.parts.size(), 1U);
  EXPECT_FALSE(take.parts[0].started);
  ASSERT_TRUE(take.parts[0].holder);
  EXPECT_EQ(take.parts[0].holder->pid, getpid());
  EXPECT_EQ(plugin_.appends, 0U);
  EXPECT_EQ(plugin_.calls, (std::vector<std::string>{"start", "cancel"}));
}

// Here the file at the path isn't the one that this process has open.
TEST_F(ClaimTest, AFileThatThePluginDoesNotHaveOpenIsNotClaimed) {
  plugin_.OnStart([this] { WriteFile(path_, {}); });
  const TakeResult take = Record(Take());
  ASSERT_EQ(take.parts.size(), 1U);
  EXPECT_FALSE(take.parts[0].started);
  EXPECT_TRUE(take.parts[0].holder);
  EXPECT_EQ(plugin_.calls, (std::vector<std::string>{"start", "cancel"}));
}

TEST_F(ClaimTest, AFileThatIsLockedIsNotEvenMoved) {
  WriteFile(path_, {1, 2, 3});
  ASSERT_FALSE(rival_.Take(path_));
  const TakeResult take = Record(Take());
  ASSERT_EQ(take.parts.size(), 1U);
  EXPECT_FALSE(take.parts[0].started);
  ASSERT_TRUE(take.parts[0].holder);
  EXPECT_EQ(take.parts[0].holder->pid, getpid());
  EXPECT_EQ(plugin_.calls, std::vector<std::string>());
}

}  // namespace
}  // namespace corvane_test
