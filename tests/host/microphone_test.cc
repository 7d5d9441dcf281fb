// A sound device as a source, sample by sample, and what becomes of its faults.
#include "audio/microphone.h"

#include <alsa/asoundlib.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <cstring>

#include "audio/sound_device.h"
#include "host/sound_config.h"
#include "support/bytes.h"

namespace corvane_test {
namespace {

// Set while a device that can't be resumed yet says so, as one of hardware
// does: alsa-lib doesn't pass on what a plug-in returns.
bool resuming_takes_time = false;

}  // namespace
}  // namespace corvane_test

extern "C" int snd_pcm_resume(snd_pcm_t* pcm) {
  static const auto resume =
      reinterpret_cast<int (*)(snd_pcm_t*)>(dlsym(RTLD_NEXT, "snd_pcm_resume"));
  const int failed = resume(pcm);
  return corvane_test::resuming_takes_time &&
                 snd_pcm_state(pcm) == SND_PCM_STATE_SUSPENDED
             ? -EAGAIN
             : failed;
}

namespace corvane_test {
namespace {

using corvane::AudioSource;
using corvane::Loss;
using corvane::LossCause;
using corvane::PcmFormat;

constexpr int kMicrophoneRate = 48000;
constexpr int64_t kToleranceUs = 20000;

std::string Ramp(const std::string& script, const std::string& more = "") {
  return "pcm.!default { type corvane_faults " + more + " script \"" + script +
         "\" }\n";
}

class MicrophoneTest : public ::testing::Test {
 protected:
  void Open(const std::string& config, const PcmFormat& wanted = {},
            const std::string& name = "") {
    sound_.emplace(config);
    source_ = corvane::open_microphone(
        name, wanted, [this](const Loss& loss) { losses_.push_back(loss); },
        &error_);
  }

  // Reads until there are so many sample frames, or the source ends.
  void ReadFrames(size_t frames) {
    const size_t bytes_per_frame = source_->format().bytes_per_frame();
    Bytes piece(frames_in_a_read_ * bytes_per_frame);
    while (read_.size() < frames * bytes_per_frame && !source_->has_ended()) {
      pollfd entry = {source_->wait_fd(), POLLIN, 0};
      ASSERT_GT(poll(&entry, 1, 10000), 0) << "nothing came";
      ++wake_ups_;
      const size_t got = source_->Read(piece.data(), piece.size());
      read_.insert(read_.end(), piece.begin(),
                   piece.begin() + static_cast<ptrdiff_t>(got));
    }
  }

  // Reads until what was lost is known.
  void ReadPastTheLoss() {
    while (losses_.empty() && !source_->has_ended()) {
      ReadFrames(Frames() + 1);
      ASSERT_LT(Frames(), 8U * kMicrophoneRate) << "nothing was told";
    }
  }

  size_t Frames() const {
    return read_.size() / source_->format().bytes_per_frame();
  }

  // The first channel.
  uint16_t Sample(size_t frame) const {
    uint16_t value = 0;
    std::memcpy(&value, &read_[frame * source_->format().bytes_per_frame()],
                sizeof(value));
    return value;
  }

  // By how much the ramp jumps, in frames, at each of its jumps.
  std::vector<int> Jumps() const {
    std::vector<int> jumps;
    for (size_t i = 1; i < Frames(); ++i) {
      const auto step = static_cast<uint16_t>(Sample(i) - Sample(i - 1));
      if (step != 1) jumps.push_back(step - 1);
    }
    return jumps;
  }

  static int64_t AudioUs(int frames) {
    return frames * 1000000LL / kMicrophoneRate;
  }

  // One loss, for this reason, as long as the ramp says, and counted once.
  void ShouldHaveLost(LossCause cause) {
    const std::vector<int> jumps = Jumps();
    ASSERT_EQ(jumps.size(), 1U);
    ASSERT_EQ(losses_.size(), 1U);
    EXPECT_EQ(losses_[0].cause, cause);
    EXPECT_NEAR(static_cast<double>(losses_[0].lost_us),
                static_cast<double>(AudioUs(jumps[0])), kToleranceUs);
    EXPECT_EQ(source_->overruns()->count, 1);
    EXPECT_EQ(source_->overruns()->lost_us, losses_[0].lost_us);
    EXPECT_EQ(source_->error(), "");
  }

  std::optional<SoundHere> sound_;
  corvane::DeviceError error_;
  std::unique_ptr<AudioSource> source_;
  std::vector<Loss> losses_;
  size_t frames_in_a_read_ = kMicrophoneRate;  // at most
  Bytes read_;
  int wake_ups_ = 0;
};

TEST_F(MicrophoneTest, EverySampleComesThroughOnceInEightWakeUpsASecond) {
  Open(Ramp(""));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadFrames(kMicrophoneRate);
  EXPECT_EQ(Sample(0), 0);
  EXPECT_EQ(Jumps(), std::vector<int>());
  EXPECT_EQ(source_->overruns()->count, 0);
  EXPECT_LE(wake_ups_, 12);
}

TEST_F(MicrophoneTest, ItIsOneChannelAt48000HzIfNothingElseIsAskedFor) {
  Open(Ramp(""));
  ASSERT_NE(source_, nullptr) << error_.text;
  EXPECT_EQ(source_->format().sample_rate, 48000);
  EXPECT_EQ(source_->format().channels, 1);
  EXPECT_EQ(source_->total_frames(), std::nullopt);
}

TEST_F(MicrophoneTest, AnOverrunIsCountedAndMeasuredAndTheTakeGoesOn) {
  Open(Ramp("12000 overrun 300"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadPastTheLoss();
  ShouldHaveLost(LossCause::kOverrun);
  EXPECT_EQ(losses_[0].after_us, 250000);
}

TEST_F(MicrophoneTest, ADeviceThatCannotResumeIsStartedAnew) {
  Open(Ramp("12000 suspend 400"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadPastTheLoss();
  ShouldHaveLost(LossCause::kSuspend);
}

TEST_F(MicrophoneTest, ADeviceThatSleepsIsWaitedForWithoutSpinning) {
  Open(Ramp("12000 sleep 500"));
  ASSERT_NE(source_, nullptr) << error_.text;
  resuming_takes_time = true;
  ReadPastTheLoss();
  resuming_takes_time = false;
  ShouldHaveLost(LossCause::kSuspend);
  EXPECT_LE(wake_ups_, 3 * 20 + 10);
}

TEST_F(MicrophoneTest, WhatIsMissingByTheClockIsCountedUnasked) {
  Open(Ramp("60000 silent 250"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadPastTheLoss();
  ShouldHaveLost(LossCause::kUnreported);
}

// As of many channels at a high rate: something is always left to read.
TEST_F(MicrophoneTest, WhatIsMissingIsCountedThoughAReadTakesLessThanAPeriod) {
  Open(Ramp("60000 silent 250"));
  ASSERT_NE(source_, nullptr) << error_.text;
  frames_in_a_read_ = kMicrophoneRate / 8 - 10;
  ReadPastTheLoss();
  ShouldHaveLost(LossCause::kUnreported);
}

// Two seconds and a half, in which it wakes whoever waits for nothing.
TEST_F(MicrophoneTest, ADeviceThatIsLateIsWaitedForWithoutSpinningOrALoss) {
  Open(Ramp("60000 late 2500"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadFrames(size_t{5} * kMicrophoneRate);
  EXPECT_EQ(Jumps(), std::vector<int>());
  EXPECT_TRUE(losses_.empty());
  EXPECT_EQ(source_->overruns()->count, 0);
  EXPECT_LE(wake_ups_, 2.5 * 50 + 5 * 8 + 10);
}

TEST_F(MicrophoneTest, ABufferOfASecondGoesBeforeAShortPeriod) {
  const SoundHere sound(Ramp("", "periods 4"));
  const corvane::PcmPtr pcm = corvane::open_pcm("", &error_);
  ASSERT_NE(pcm, nullptr) << error_.text;
  ASSERT_EQ(corvane::agree_on_format(pcm.get(), "", {}, &error_).sample_rate,
            kMicrophoneRate);
  snd_pcm_uframes_t buffer = 0;
  snd_pcm_uframes_t period = 0;
  ASSERT_EQ(snd_pcm_get_params(pcm.get(), &buffer, &period), 0);
  EXPECT_GE(buffer, static_cast<snd_pcm_uframes_t>(kMicrophoneRate));
}

TEST_F(MicrophoneTest, APeriodOfTheLargestFormatIsAtMostHalfARead) {
  const SoundHere sound(Ramp(""));
  const corvane::PcmPtr pcm = corvane::open_pcm("", &error_);
  ASSERT_NE(pcm, nullptr) << error_.text;
  const PcmFormat agreed =
      corvane::agree_on_format(pcm.get(), "", {96000, 6}, &error_);
  ASSERT_EQ(agreed.sample_rate, 96000) << error_.text;
  snd_pcm_uframes_t buffer = 0;
  snd_pcm_uframes_t period = 0;
  ASSERT_EQ(snd_pcm_get_params(pcm.get(), &buffer, &period), 0);
  EXPECT_LE(period * agreed.bytes_per_frame(), 65536U);
  EXPECT_GE(period * agreed.bytes_per_frame(), 60000U);
}

TEST_F(MicrophoneTest, TwoOverrunsInARowAreTwo) {
  Open(Ramp("12000 overrun 200 19200 overrun 200"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadPastTheLoss();
  const std::vector<int> jumps = Jumps();
  ASSERT_EQ(jumps.size(), 2U);
  EXPECT_EQ(source_->overruns()->count, 2);
  EXPECT_NEAR(static_cast<double>(source_->overruns()->lost_us),
              static_cast<double>(AudioUs(jumps[0] + jumps[1])), kToleranceUs);
}

TEST_F(MicrophoneTest, ADeviceThatVanishesEndsTheTake) {
  Open(Ramp("12000 gone 0"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadFrames(kMicrophoneRate);
  EXPECT_TRUE(source_->has_ended());
  EXPECT_EQ(read_.size(), 2 * 12000U);
  EXPECT_EQ(source_->error(), "the device has vanished (No such device)");
  EXPECT_EQ(source_->overruns()->count, 0);
}

TEST_F(MicrophoneTest, AFaultThatNothingMendsEndsTheTake) {
  Open(Ramp("12000 broken 0"));
  ASSERT_NE(source_, nullptr) << error_.text;
  ReadFrames(kMicrophoneRate);
  EXPECT_TRUE(source_->has_ended());
  EXPECT_EQ(read_.size(), 2 * 12000U);
  EXPECT_EQ(source_->error(), "it stopped (Input/output error)");
}

}  // namespace
}  // namespace corvane_test
