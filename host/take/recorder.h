// One take: from a source's first sample to the sealed capture.
#ifndef CORVANE_HOST_TAKE_RECORDER_H_
#define CORVANE_HOST_TAKE_RECORDER_H_

#include <cstdint>
#include <optional>
#include <string>

#include "audio/audio_source.h"
#include "engine/engine.h"
#include "engine/plugin_reply.h"
#include "take/capture_lock.h"
#include "take/ending.h"
#include "take/feeder.h"
#include "take/flush_clock.h"
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
  bool started = false;
  TakeEnd end = TakeEnd::kNone;
  int64_t frames = 0;          // whole sample frames handed over
  int64_t leftover_bytes = 0;  // of an incomplete last sample frame
  int64_t longest_gap_us = 0;  // in which no audio came
  int64_t wall_us = 0;         // from the start to the seal
  FlushFigures flushes;
  std::optional<CaptureHolder> holder;  // why it was not begun, or given up
  std::optional<PluginError> error;     // the plugin's first
  bool was_removed = false;             // while it was written
  // Where the capture is if it didn't stay at its path: it was moved, or saved.
  std::string moved_to;
  // Why a removed capture could not be saved, or a moved one sealed; a clause.
  std::string loss;
  std::optional<SealedCapture> sealed;
};

class Recorder {
 public:
  // All pointers are borrowed; `progress` may be NULL. `lock` holds the capture
  // that a take goes on in; that of a new one it takes at the start.
  Recorder(Engine* engine, AudioSource* source, TakeOptions options,
           CaptureLock* lock, Progress* progress);

  // Runs the whole take on the main context. Nothing is touched before the
  // first audio is there. The first append or flush that fails ends the take,
  // because going on after a failed write would bury a torn frame in the
  // capture. Whatever ended it, a take that started is stopped and sealed.
  TakeResult Run();

  // Ends a running take from within the main context, as at the source's end.
  void Stop(TakeEnd why);

 private:
  bool Start();
  bool Claim();
  void WatchTheFile();
  void Seal();
  std::string SaveElsewhere();
  std::optional<SealedCapture> Ask(const char* method, FlValue* args);
  FlValue* ArgsWith(const std::string& path) const;

  Engine* const engine_;
  AudioSource* const source_;
  const TakeOptions options_;
  const std::string absolute_path_;
  CaptureLock* const lock_;
  Progress* const progress_;
  TakeResult result_;
  Ending ending_;
  FlushClock flushes_;
  Feeder feeder_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_RECORDER_H_
