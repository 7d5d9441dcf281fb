#include "audio/loss_watch.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

constexpr int64_t kUsPerSecond = 1000000;
constexpr int64_t kWindowUs = kUsPerSecond;
// More than a server's delay may change by while it records, as when another
// program joins; and less than a syllable.
constexpr int64_t kLeastLossUs = 100000;
// Clocks differ by a few in ten thousand at most.
constexpr int64_t kDriftPart = 1000;

}  // namespace

std::optional<Loss> LossWatch::OnDrained(int64_t now_us, int64_t frames) {
  const int64_t lag_us = now_us - AudioUs(frames);
  std::optional<Loss> loss;
  if (least_lag_us_ && now_us - since_us_ >= kWindowUs) loss = Close(frames);
  if (!least_lag_us_) {
    since_us_ = now_us;
    since_frames_ = frames;
    least_lag_us_ = lag_us;
  }
  least_lag_us_ = std::min(*least_lag_us_, lag_us);
  return loss;
}

// Behind the new start the lag is what the loss has made of it.
void LossWatch::OnReported(LossCause cause, int64_t frames) {
  ++overruns_.count;
  if (!usual_lag_us_) usual_lag_us_ = least_lag_us_;
  if (!reported_) reported_ = Loss{cause, AudioUs(frames), 0};
  least_lag_us_.reset();
}

Overruns LossWatch::overruns() const {
  Overruns overruns = overruns_;
  if (reported_ && least_lag_us_ && usual_lag_us_) {
    overruns.lost_us += std::max<int64_t>(0, *least_lag_us_ - *usual_lag_us_);
  }
  return overruns;
}

int64_t LossWatch::AudioUs(int64_t frames) const {
  return frames / sample_rate_ * kUsPerSecond +
         frames % sample_rate_ * kUsPerSecond / sample_rate_;
}

std::optional<Loss> LossWatch::Close(int64_t frames) {
  const int64_t lag_us = *std::exchange(least_lag_us_, std::nullopt);
  const int64_t usual_us = usual_lag_us_.value_or(lag_us);
  const int64_t drift_us =
      (AudioUs(frames) - AudioUs(since_frames_)) / kDriftPart;
  std::optional<Loss> loss = std::exchange(reported_, std::nullopt);
  if (!loss && lag_us - usual_us >= kLeastLossUs) {
    ++overruns_.count;
    loss = Loss{LossCause::kUnreported, AudioUs(since_frames_), 0};
  }
  if (!loss) {
    usual_lag_us_ = std::min(lag_us, usual_us + drift_us);
    return loss;
  }
  loss->lost_us = std::max<int64_t>(0, lag_us - usual_us);
  overruns_.lost_us += loss->lost_us;
  usual_lag_us_ = lag_us;
  return loss;
}

}  // namespace corvane
