#include "take/flush_clock.h"

#include <algorithm>

namespace corvane {

FlushClock::FlushClock(Engine* engine, int64_t every_us, Ending* ending)
    : engine_(engine), every_us_(every_us), ending_(ending) {}

void FlushClock::Begin() { last_start_us_ = g_get_monotonic_time(); }

void FlushClock::OnAppend() {
  if (has_new_audio_) return;
  has_new_audio_ = true;
  Arm();
}

void FlushClock::Arm() {
  if (every_us_ == 0 || is_flushing_ || !has_new_audio_) return;
  due_.emplace(LoopEvent::At(last_start_us_ + every_us_, [this] { Flush(); }));
}

void FlushClock::Flush() {
  if (ending_->has_come()) return;  // what comes next makes it durable too
  last_start_us_ = g_get_monotonic_time();
  is_flushing_ = true;
  has_new_audio_ = false;
  engine_->Invoke("flush", nullptr,
                  [this](FlMethodResponse* response) { OnFlushed(response); });
}

void FlushClock::OnFlushed(FlMethodResponse* response) {
  is_flushing_ = false;
  ++figures_.count;
  figures_.longest_us =
      std::max(figures_.longest_us, g_get_monotonic_time() - last_start_us_);
  ending_->Fail(error_in(response));
  if (!ending_->has_come()) Arm();
}

}  // namespace corvane
