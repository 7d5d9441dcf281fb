// The recorder's flushes where the disk is slow or fails: live audio goes on
// meanwhile, and a flush that fails ends the take.
#include <sys/eventfd.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <optional>

#include "faults/faults_fixture.h"
#include "support/adts_frames.h"
#include "support/files.h"
#include "support/pcm.h"
#include "take/recorder.h"

namespace corvane_test {
namespace {

constexpr int64_t kBytesPerSecond = 96000;
constexpr int64_t kSlowSyncBytes = kBytesPerSecond * 3 / 2;
// Live audio is so much ahead of the encoder where nothing is slow.
constexpr int64_t kAhead = 3 * 1920;

// Live audio: it comes no faster than it is allowed to, and doesn't wait.
class LiveSource : public corvane::AudioSource {
 public:
  explicit LiveSource(Bytes pcm) : pcm_(std::move(pcm)) {}

  corvane::PcmFormat format() const override { return {48000, 1}; }
  std::string name() const override { return "live"; }
  std::optional<int64_t> total_frames() const override { return std::nullopt; }
  int wait_fd() const override { return readable_.get(); }
  std::string how_to_continue() const override { return "-i -"; }
  bool has_ended() const override { return has_ended_; }
  std::string error() const override { return ""; }

  size_t Read(uint8_t* out, size_t size) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    const size_t got = std::min(size, std::min(pcm_.size(), allowed_) - taken_);
    std::copy_n(pcm_.begin() + static_cast<std::ptrdiff_t>(taken_), got, out);
    taken_ += got;
    has_ended_ = got == 0;
    Signal();
    changed_.notify_all();
    return got;
  }

  // From any thread: so many bytes have been played by now, counted from the
  // first one.
  void PlayUpTo(int64_t bytes) {
    const std::lock_guard<std::mutex> lock(mutex_);
    allowed_ = std::max(allowed_, static_cast<size_t>(bytes));
    Signal();
  }

  // From the worker: so much more is played and taken meanwhile, or what there
  // is.
  void AwaitMore(int64_t bytes) {
    std::unique_lock<std::mutex> lock(mutex_);
    allowed_ = std::max(allowed_, taken_ + static_cast<size_t>(bytes));
    Signal();
    changed_.wait(lock, [&] { return taken_ == allowed_ || has_ended_; });
  }

  int64_t taken() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int64_t>(taken_);
  }

 private:
  // It can be read while there is more, or the end to be told.
  void Signal() {
    const bool has_more = taken_ < allowed_ || taken_ == pcm_.size();
    eventfd_t ignored = 0;
    eventfd_read(readable_.get(), &ignored);
    if (has_more) eventfd_write(readable_.get(), 1);
  }

  const corvane::FileDescriptor readable_{
      eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK)};
  const Bytes pcm_;
  std::mutex mutex_;
  std::condition_variable changed_;
  size_t taken_ = 0;
  size_t allowed_ = kAhead;
  bool has_ended_ = false;
};

class RecorderFlushTest : public ::testing::Test {
 protected:
  RecorderFlushTest() { av_log_set_level(AV_LOG_QUIET); }

  // In appends of 20 ms.
  corvane::TakeResult Record(const std::string& path, LiveSource* source,
                             int64_t flush_every_us) {
    corvane::TakeOptions options;
    options.capture_path = path;
    options.feed.chunk_ms = 20;
    options.flush_every_us = flush_every_us;
    corvane::Engine engine;
    return corvane::Recorder(&engine, source, options, {}, nullptr).Run();
  }

  const TempDir dir_;
  const std::string take_ = dir_.Path("take.aac");
};

// A sync takes as long as a second and a half of audio plays, every tenth time.
TEST_F(RecorderFlushTest, NoSampleIsLostWhileADiskSyncsSlowly) {
  const Bytes pcm = Noise(60 * 48000);
  LiveSource unhindered(pcm);
  unhindered.PlayUpTo(static_cast<int64_t>(pcm.size()));
  Record(dir_.Path("reference.aac"), &unhindered, 0);

  LiveSource source(pcm);
  int syncs = 0;
  int slow = 0;
  const Fault slow_disk(On("fsync").Path(take_).Before([&](PluginCall&) {
    if (++syncs % 10 != 1) return;
    ++slow;
    source.AwaitMore(kSlowSyncBytes);
  }));
  std::atomic<int64_t> encoded{0};
  int64_t most_under_way = 0;
  const Fault encoder(On("avcodec_send_frame").Before([&](PluginCall& call) {
    most_under_way = std::max(most_under_way, source.taken() - encoded);
    encoded += call.size * 2;
    source.PlayUpTo(encoded + kAhead);
  }));
  const corvane::TakeResult take = Record(take_, &source, 1);

  EXPECT_FALSE(take.error);
  EXPECT_EQ(take.frames, 60 * 48000);
  EXPECT_GE(slow, 2);
  EXPECT_EQ(ReadFile(take_), ReadFile(dir_.Path("reference.aac")));
  // Two seconds, the append that is over, and the frame being filled.
  EXPECT_GE(most_under_way, kSlowSyncBytes);
  EXPECT_LE(most_under_way, 2 * kBytesPerSecond + 2 * 1920 + 2 * 2048);
}

TEST_F(RecorderFlushTest, AFlushThatFailsOnceEndsTheTakeSealed) {
  LiveSource source(Noise(60 * 48000));
  source.PlayUpTo(60 * kBytesPerSecond);
  const Fault disk(On("fsync").Path(take_).Nth(2).Fail(EIO));
  const corvane::TakeResult take = Record(take_, &source, 1);
  ASSERT_TRUE(take.error);
  EXPECT_EQ(take.error->code, "WRITE_FAILED");
  EXPECT_EQ(take.error->message, "flush failed: Input/output error");
  EXPECT_EQ(take.end, corvane::TakeEnd::kError);
  EXPECT_LT(take.frames, 60 * 48000);
  ASSERT_TRUE(take.has_sealed());
  EXPECT_EQ(take.parts[0].sealed->bytes, FileSize(take_));
  EXPECT_GT(SplitFrames(ReadFile(take_)).size(), 0U);
}

TEST_F(RecorderFlushTest, TheSourcesEndDuringAFlushSealsTheTake) {
  LiveSource source(Noise(48000));
  const Fault slow_disk(On("fsync").Path(take_).Nth(1).Before(
      [&](PluginCall&) { source.AwaitMore(2 * kBytesPerSecond); }));
  const corvane::TakeResult take = Record(take_, &source, 1);
  EXPECT_FALSE(take.error);
  EXPECT_EQ(take.end, corvane::TakeEnd::kInput);
  EXPECT_EQ(take.frames, 48000);
  EXPECT_EQ(take.flushes.count, 1);
  EXPECT_EQ(SplitFrames(ReadFile(take_)).size(), 48U);
}

TEST_F(RecorderFlushTest, AStopDuringAFlushSealsTheTake) {
  LiveSource source(Noise(60 * 48000));
  source.PlayUpTo(kBytesPerSecond);
  corvane::TakeOptions options;
  options.capture_path = take_;
  options.feed.chunk_ms = 20;
  options.flush_every_us = 1;
  corvane::Engine engine;
  corvane::Recorder recorder(&engine, &source, options, {}, nullptr);
  std::promise<void> stopped;
  const auto stop = [&] {
    recorder.Stop(corvane::TakeEnd::kSignal);
    stopped.set_value();
  };
  std::optional<corvane::LoopEvent> signal;
  const Fault disk(On("fsync").Path(take_).Nth(1).Before([&](PluginCall&) {
    signal.emplace(corvane::LoopEvent::At(0, stop));
    stopped.get_future().wait();
  }));
  const corvane::TakeResult take = recorder.Run();
  EXPECT_FALSE(take.error);
  EXPECT_EQ(take.end, corvane::TakeEnd::kSignal);
  ASSERT_TRUE(take.has_sealed());
  EXPECT_EQ(take.parts[0].sealed->bytes, FileSize(take_));
}

}  // namespace
}  // namespace corvane_test
