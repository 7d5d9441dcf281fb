// What a live source lost, by the clock: sound servers report no overrun, and
// what a device reports says nothing of how much.
#ifndef CORVANE_HOST_AUDIO_LOSS_WATCH_H_
#define CORVANE_HOST_AUDIO_LOSS_WATCH_H_

#include <cstdint>
#include <optional>

#include "audio/audio_source.h"

namespace corvane {

enum class LossCause {
  kUnreported,  // less came than the time that passed
  kOverrun,     // the device said that nobody had read in time
  kSuspend,     // the device was put to sleep
};

// Sample frames that never came.
struct Loss {
  LossCause cause = LossCause::kUnreported;
  int64_t after_us = 0;  // of audio that had been read before
  int64_t lost_us = 0;   // of audio
};

// Holds the lag of the audio behind the clock. Between arrivals it swings, so
// the least of each second counts; device and system may have clocks that
// differ by one in a thousand. What the lag grows by beyond that was lost.
class LossWatch {
 public:
  explicit LossWatch(int sample_rate) : sample_rate_(sample_rate) {}

  // `frames` in all were read until `now_us`, and no more are there by then.
  // Returns what turns out to have been lost.
  std::optional<Loss> OnDrained(int64_t now_us, int64_t frames);

  // The device has told of a loss and was started again: the length shows in
  // what comes next.
  void OnReported(LossCause cause, int64_t frames);

  // With what is reported and not measured yet, as far as it shows.
  Overruns overruns() const;

 private:
  int64_t AudioUs(int64_t frames) const;
  std::optional<Loss> Close(int64_t frames);

  const int sample_rate_;
  std::optional<int64_t> usual_lag_us_;
  std::optional<int64_t> least_lag_us_;  // of the second under way
  int64_t since_us_ = 0;                 // when that began
  int64_t since_frames_ = 0;
  std::optional<Loss> reported_;  // still to be measured
  Overruns overruns_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_LOSS_WATCH_H_
