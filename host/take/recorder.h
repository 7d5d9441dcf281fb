// One take: from a source's first sample to the sealed capture, or captures.
#ifndef CORVANE_HOST_TAKE_RECORDER_H_
#define CORVANE_HOST_TAKE_RECORDER_H_

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_source.h"
#include "engine/engine.h"
#include "engine/plugin_reply.h"
#include "take/capture_lock.h"
#include "take/ending.h"
#include "take/feeder.h"
#include "take/flush_clock.h"
#include "take/part.h"
#include "take/progress.h"

namespace corvane {

// What a resumed capture held before.
struct KeptAudio {
  int64_t duration_ms = 0;
  int64_t bytes = 0;       // up to where the new frames begin
  int64_t torn_bytes = 0;  // behind them, cut off
  int sample_rate = 0;     // Hz, of its last whole frame; 0 without one
};

struct TakeOptions {
  std::string capture_path;  // goes to the plugin as it is
  int64_t bit_rate = 64000;  // bit/s
  FeedOptions feed;
  int64_t flush_every_us = 0;  // 0: never
  // Of a take that goes on in a capture; nothing for a new one.
  std::optional<KeptAudio> kept;
};

struct TakeResult {
  TakeEnd end = TakeEnd::kNone;
  int64_t frames = 0;          // whole sample frames handed over
  int64_t leftover_bytes = 0;  // of an incomplete last sample frame
  int64_t longest_gap_us = 0;  // in which no audio came
  int64_t last_gap_us = 0;     // the same, before it was ended
  int64_t missed_splits = 0;   // where the next file could not be begun
  int64_t wall_us = 0;         // from the start to the seal
  int64_t pauses = 0;          // that were begun
  std::vector<int64_t> marks;  // ms within the take, what it kept included
  FlushFigures flushes;
  std::optional<PluginError> error;  // the plugin's first
  // One, unless the take was split; none when no audio came.
  std::vector<PartResult> parts;
  // Where a split take would have gone on; empty for one in one piece.
  std::string next_path;

  // Whether there is a capture of this take's own.
  bool has_started() const { return !parts.empty() && parts.back().started; }
  bool has_sealed() const;
};

// The name of part `number`, counted from 1, of a take that is split:
// take.aac becomes take-001.aac.
std::string part_path(const std::string& capture_path, int number);

class Recorder {
 public:
  // All pointers are borrowed; `progress` may be NULL. `lock` holds the capture
  // that a take goes on in; that of a new one is taken at the start.
  Recorder(Engine* engine, AudioSource* source, TakeOptions options,
           CaptureLock lock, Progress* progress);

  // Runs the whole take on the main context. Nothing is touched before the
  // first audio is there. The first append or flush that fails ends the take,
  // because going on after a failed write would bury a torn frame in the
  // capture. Whatever ended it, a take that started is stopped and sealed.
  TakeResult Run();

  // The following are called from within the main context.

  // Whether the first audio has come.
  bool has_begun() const { return has_begun_; }
  // Ends a running take, as at the source's end.
  void Stop(TakeEnd why);
  // Pauses, or goes on; returns whether it is paused now. Nothing before the
  // take has begun.
  std::optional<bool> TogglePause();
  // Marks this moment of the take; returns it in ms. Likewise.
  std::optional<int64_t> Mark();
  // How much of the take there is by now, in ms, what it kept included.
  int64_t PositionMs() const;

 private:
  void BeginPart(CaptureLock lock);
  void EndPart();
  void NextPart();
  std::string NextPath();
  void CollectResult();

  Engine* const engine_;
  AudioSource* const source_;
  const TakeOptions options_;
  CaptureLock first_lock_;
  Progress* const progress_;
  TakeResult result_;
  Ending ending_;
  FlushClock flushes_;
  std::deque<Part> parts_;  // each stays where it is
  int next_number_ = 1;     // of a part
  int64_t part_start_ = 0;  // sample frames before the part that is written
  bool has_begun_ = false;
  Feeder feeder_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_RECORDER_H_
