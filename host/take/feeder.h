// A source's audio on its way to the plugin: how much at a time, how fast, and
// how much of it may be under way.
#ifndef CORVANE_HOST_TAKE_FEEDER_H_
#define CORVANE_HOST_TAKE_FEEDER_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "audio/audio_source.h"
#include "engine/engine.h"
#include "engine/loop_event.h"
#include "take/ending.h"
#include "take/flush_clock.h"
#include "take/progress.h"

namespace corvane {

// The plugin's queue has no bound of its own, so whoever feeds it keeps one. At
// full speed this many bytes keep the worker busy...
constexpr int64_t kMostUnansweredBytes = 524288;
// ...and live audio, which doesn't wait, has room for as long as a slow disk
// may take to sync.
constexpr int64_t kMostUnansweredMs = 2000;
// What an append counts at least, since a small one costs more than its audio.
constexpr int64_t kLeastAppendCost = 1024;

struct FeedOptions {
  // Audio in one append, 1 or more. Without it a source that can wait is read
  // in large pieces, and one that can't as its audio comes.
  std::optional<int> chunk_ms;
  bool realtime = false;  // no faster than the audio plays
  // The take's length, and a part's, in sample frames; whole without them.
  std::optional<int64_t> take_frames;
  std::optional<int64_t> part_frames;
};

class Feeder {
 public:
  // All pointers are borrowed; `progress` may be NULL.
  Feeder(Engine* engine, AudioSource* source, const FeedOptions& options,
         Ending* ending, FlushClock* flushes, Progress* progress);

  // Waits for the first sample frame and keeps it; false when the take is over
  // first.
  bool AwaitAudio();

  // Appends what comes until the take is over, which it is at the source's end
  // and at the take's length. `next_part` is called between two parts.
  void Run(const std::function<void()>& next_part);

  // What a live source brings while it is paused is passed over; any other
  // waits.
  void SetPaused(bool is_paused);
  bool is_paused() const { return paused_since_us_.has_value(); }

  int64_t sent_frames() const { return sent_frames_; }
  // Of an incomplete last sample frame.
  int64_t leftover_bytes() const {
    return static_cast<int64_t>(filled_ % frame_bytes_);
  }
  // The longest time in which no audio came, the first audio apart.
  int64_t longest_gap_us() const { return longest_gap_us_; }
  // For how long none had come when the take was ended.
  int64_t last_gap_us() const { return last_gap_us_; }

 private:
  void WaitForRoom();
  void WaitForInput();
  void OnInput();
  void WaitForTime();
  void WaitForPause();
  void ReadChunk();
  void PassOn(const std::function<void()>& next_part);
  void Append(const uint8_t* bytes, size_t size);
  void OnAppended(size_t size, FlMethodResponse* response);
  void Show();

  Engine* const engine_;
  AudioSource* const source_;
  const FeedOptions options_;
  Ending* const ending_;
  FlushClock* const flushes_;
  Progress* const progress_;
  const size_t frame_bytes_;
  std::optional<LoopEvent> ticks_;  // for the live line, while nothing else is
  std::optional<LoopEvent> input_;  // while audio is waited for, and behind it
  bool has_input_ = false;          // since it was waited for
  const int64_t most_unanswered_;   // in bytes
  std::vector<uint8_t> chunk_;
  size_t filled_ = 0;       // of the chunk
  int64_t unanswered_ = 0;  // in bytes
  int64_t sent_frames_ = 0;
  int64_t answered_bytes_ = 0;
  int64_t left_in_take_;  // sample frames
  int64_t left_in_part_;
  int64_t start_us_ = 0;
  std::optional<int64_t> paused_since_us_;
  std::optional<int64_t> waiting_since_us_;
  int64_t longest_gap_us_ = 0;
  int64_t last_gap_us_ = 0;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_FEEDER_H_
