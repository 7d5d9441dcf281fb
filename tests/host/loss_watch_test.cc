// Lost sound by the clock, with the clock in the test's hands.
#include "audio/loss_watch.h"

#include <gtest/gtest.h>

namespace corvane_test {
namespace {

using corvane::Loss;
using corvane::LossCause;
using corvane::LossWatch;

constexpr int kWatchedRate = 48000;
constexpr int64_t kPeriodUs = 50000;

// A device that delivers a period of sound at a time.
class LossWatchTest : public ::testing::Test {
 protected:
  // Sound for so long by the clock, of which `frames_a_second` come.
  void Run(int64_t us, int64_t frames_a_second = kWatchedRate) {
    for (int64_t end = now_us_ + us; now_us_ < end;) {
      now_us_ += kPeriodUs;
      due_ += frames_a_second * kPeriodUs;
      frames_ = due_ / 1000000;
      if (const auto loss = watch_.OnDrained(now_us_ + delay_us_, frames_)) {
        losses_.push_back(*loss);
      }
    }
  }

  void Lose(int64_t us) { now_us_ += us; }

  LossWatch watch_{kWatchedRate};
  std::vector<Loss> losses_;
  int64_t now_us_ = 5000000;
  int64_t due_ = 0;  // frames, in millionths
  int64_t frames_ = 0;
  int64_t delay_us_ = 0;
};

TEST_F(LossWatchTest, ASteadyDeviceLosesNothing) {
  Run(60000000);
  EXPECT_EQ(losses_.size(), 0U);
  EXPECT_EQ(watch_.overruns().count, 0);
}

TEST_F(LossWatchTest, ClocksThatDifferLoseNothingInAnHour) {
  for (const int64_t rate : {47990, 48010, 47960}) {
    Run(3600000000, rate);
    EXPECT_EQ(losses_.size(), 0U) << rate;
  }
}

TEST_F(LossWatchTest, AGapIsMeasuredOnce) {
  Run(10000000);
  Lose(2345000);
  Run(10000000);
  ASSERT_EQ(losses_.size(), 1U);
  EXPECT_EQ(losses_[0].cause, LossCause::kUnreported);
  EXPECT_NEAR(static_cast<double>(losses_[0].lost_us), 2345000, 1000);
  EXPECT_NEAR(static_cast<double>(losses_[0].after_us), 10000000, 1000000);
  EXPECT_EQ(watch_.overruns().count, 1);
  EXPECT_EQ(watch_.overruns().lost_us, losses_[0].lost_us);
}

TEST_F(LossWatchTest, AnHourWithoutSoundIsAnHourLost) {
  Run(10000000);
  Lose(3600000000);
  Run(3000000);
  ASSERT_EQ(losses_.size(), 1U);
  EXPECT_NEAR(static_cast<double>(losses_[0].lost_us), 3600000000, 5000);
}

TEST_F(LossWatchTest, WhatIsLateForHalfASecondIsNotLost) {
  Run(10000000);
  delay_us_ = 300000;
  Run(500000);
  delay_us_ = 0;
  Run(10000000);
  EXPECT_EQ(losses_.size(), 0U);
}

TEST_F(LossWatchTest, ManySmallGapsAddUpToALoss) {
  Run(5000000);
  for (int i = 0; i < 40; ++i) {
    Lose(10000);
    Run(1000000);
  }
  EXPECT_GE(losses_.size(), 3U);
  EXPECT_NEAR(static_cast<double>(watch_.overruns().lost_us), 400000, 100000);
}

TEST_F(LossWatchTest, AReportedLossIsCountedHoweverShort) {
  Run(10000000);
  Lose(7000);
  watch_.OnReported(LossCause::kOverrun, frames_);
  EXPECT_EQ(watch_.overruns().count, 1);
  Run(2000000);
  ASSERT_EQ(losses_.size(), 1U);
  EXPECT_EQ(losses_[0].cause, LossCause::kOverrun);
  EXPECT_NEAR(static_cast<double>(losses_[0].lost_us), 7000, 1000);
}

TEST_F(LossWatchTest, ATakeThatEndsAtOnceKnowsWhatShowed) {
  Run(10000000);
  Lose(700000);
  watch_.OnReported(LossCause::kOverrun, frames_);
  Run(100000);
  EXPECT_EQ(losses_.size(), 0U);
  EXPECT_NEAR(static_cast<double>(watch_.overruns().lost_us), 700000, 1000);
}

}  // namespace
}  // namespace corvane_test
