#include "take/feeder.h"

#include <glib.h>
#include <poll.h>

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

constexpr int kLiveChunkMs = 20;
constexpr int kLargeChunkMs = 1000;
// A few of the largest have room, so that the worker always has one to do.
constexpr size_t kLargestChunk = kMostUnansweredBytes / 4;

constexpr guint kTickMs = 500;

constexpr int64_t kEndless = INT64_MAX;  // sample frames

bool is_readable(int fd) {
  pollfd entry = {fd, POLLIN, 0};
  return poll(&entry, 1, 0) > 0;
}

size_t bytes_of(const PcmFormat& format, int64_t ms) {
  const int64_t frames = format.sample_rate * ms / 1000;
  return static_cast<size_t>(std::max<int64_t>(frames, 1)) *
         format.bytes_per_frame();
}

// A pipe is read as its audio comes, so a large chunk is but room for what has
// gathered meanwhile.
size_t chunk_size(const PcmFormat& format, const FeedOptions& options) {
  if (options.chunk_ms) return bytes_of(format, *options.chunk_ms);
  if (options.realtime) return bytes_of(format, kLiveChunkMs);
  const size_t largest =
      kLargestChunk - kLargestChunk % format.bytes_per_frame();
  return std::min(bytes_of(format, kLargeChunkMs), largest);
}

int64_t most_unanswered(const AudioSource& source, bool realtime) {
  if (source.wait_fd() < 0 && !realtime) return kMostUnansweredBytes;
  const size_t audio = bytes_of(source.format(), kMostUnansweredMs);
  return std::max(static_cast<int64_t>(audio),
                  kMostUnansweredMs / kLiveChunkMs * kLeastAppendCost);
}

int64_t cost_of(size_t size) {
  return std::max(static_cast<int64_t>(size), kLeastAppendCost);
}

}  // namespace

Feeder::Feeder(Engine* engine, AudioSource* source, const FeedOptions& options,
               Ending* ending, FlushClock* flushes, Progress* progress)
    : engine_(engine),
      source_(source),
      options_(options),
      ending_(ending),
      flushes_(flushes),
      progress_(progress),
      frame_bytes_(source->format().bytes_per_frame()),
      most_unanswered_(most_unanswered(*source, options.realtime)),
      chunk_(chunk_size(source->format(), options)),
      left_in_take_(options.take_frames.value_or(kEndless)),
      left_in_part_(options.part_frames.value_or(kEndless)) {
  if (progress_ == nullptr || !progress_->is_shown()) return;
  ticks_.emplace(LoopEvent::Every(kTickMs, [this] { Show(); }));
}

bool Feeder::AwaitAudio() {
  while (!ending_->has_come() && filled_ < frame_bytes_) {
    WaitForInput();
    if (!ending_->has_come()) ReadChunk();
  }
  return !ending_->has_come();
}

void Feeder::Run(const std::function<void()>& next_part) {
  start_us_ = g_get_monotonic_time();
  longest_gap_us_ = 0;
  while (!ending_->has_come()) {
    PassOn(next_part);
    WaitForRoom();
    if (options_.realtime) WaitForTime();
    WaitForPause();
    WaitForInput();
    if (!ending_->has_come()) ReadChunk();
  }
}

void Feeder::WaitForRoom() {
  engine_->IterateUntil(
      [this] { return ending_->has_come() || unanswered_ < most_unanswered_; });
}

void Feeder::WaitForTime() {
  const LoopEvent due =
      LoopEvent::At(start_us_ + sent_frames_ * G_USEC_PER_SEC /
                                    source_->format().sample_rate);
  engine_->IterateUntil([&] { return ending_->has_come() || due.has_come(); });
}

// Paused time is none in which the audio should have played.
void Feeder::SetPaused(bool is_paused) {
  if (is_paused == this->is_paused()) return;
  const int64_t now_us = g_get_monotonic_time();
  if (paused_since_us_) start_us_ += now_us - *paused_since_us_;
  paused_since_us_.reset();
  if (is_paused) paused_since_us_ = now_us;
}

void Feeder::WaitForPause() {
  if (source_->wait_fd() >= 0) return;
  engine_->IterateUntil([this] { return ending_->has_come() || !is_paused(); });
}

// Waits in the main loop, so that a signal gets through while no audio comes.
void Feeder::WaitForInput() {
  const int fd = source_->wait_fd();
  if (ending_->has_come() || fd < 0 || is_readable(fd)) return;
  const int64_t since_us = g_get_monotonic_time();
  waiting_since_us_ = since_us;
  has_input_ = false;
  if (!input_) {
    input_.emplace(LoopEvent::WhileReadable(fd, [this] { OnInput(); }));
  }
  engine_->IterateUntil([&] { return ending_->has_come() || has_input_; });
  waiting_since_us_.reset();
  const int64_t gap_us = g_get_monotonic_time() - since_us;
  longest_gap_us_ = std::max(longest_gap_us_, gap_us);
  if (ending_->has_come()) last_gap_us_ = gap_us;
}

// It stays on the loop, which a change would wake once more for nothing. Where
// nobody has read since it came, the loop would turn and turn.
void Feeder::OnInput() {
  if (has_input_) input_.reset();
  has_input_ = true;
}

void Feeder::ReadChunk() {
  const size_t got =
      source_->Read(chunk_.data() + filled_, chunk_.size() - filled_);
  filled_ += got;
  if (got == 0 && source_->has_ended()) ending_->Come(TakeEnd::kInput);
}

// Whole sample frames, so that a pause or a part ends between two of them.
void Feeder::PassOn(const std::function<void()>& next_part) {
  const size_t whole = filled_ - filled_ % frame_bytes_;
  if (progress_ != nullptr) progress_->Hear(chunk_.data(), whole);
  size_t at = is_paused() && source_->wait_fd() >= 0 ? whole : 0;
  while (at < whole && !ending_->has_come()) {
    if (left_in_part_ == 0) {
      left_in_part_ = *options_.part_frames;
      next_part();
      continue;  // it may have ended the take
    }
    const auto frames = static_cast<size_t>(
        std::min({static_cast<int64_t>((whole - at) / frame_bytes_),
                  left_in_part_, left_in_take_}));
    Append(chunk_.data() + at, frames * frame_bytes_);
    at += frames * frame_bytes_;
    if (left_in_take_ == 0) ending_->Come(TakeEnd::kDuration);
  }
  std::copy(chunk_.data() + whole, chunk_.data() + filled_, chunk_.data());
  filled_ -= whole;
}

void Feeder::Append(const uint8_t* bytes, size_t size) {
  g_autoptr(FlValue) pcm = fl_value_new_uint8_list(bytes, size);
  const auto frames = static_cast<int64_t>(size / frame_bytes_);
  sent_frames_ += frames;
  left_in_part_ -= frames;
  left_in_take_ -= frames;
  unanswered_ += cost_of(size);
  engine_->Invoke("append", pcm, [this, size](FlMethodResponse* response) {
    OnAppended(size, response);
  });
  flushes_->OnAppend();
}

void Feeder::OnAppended(size_t size, FlMethodResponse* response) {
  unanswered_ -= cost_of(size);
  answered_bytes_ += static_cast<int64_t>(size);
  ending_->Fail(error_in(response));
  Show();
}

void Feeder::Show() {
  if (progress_ == nullptr) return;
  const int64_t silent_us =
      waiting_since_us_ ? g_get_monotonic_time() - *waiting_since_us_ : 0;
  progress_->Update(answered_bytes_ / static_cast<int64_t>(frame_bytes_),
                    silent_us);
}

}  // namespace corvane
