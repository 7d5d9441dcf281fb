// One take: from a source's first sample to the sealed capture.
#ifndef CORVANE_HOST_TAKE_RECORDER_H_
#define CORVANE_HOST_TAKE_RECORDER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_source.h"
#include "engine/engine.h"
#include "engine/plugin_reply.h"
#include "take/progress.h"

namespace corvane {

// How many appends may wait for their answers. The plugin's queue has no bound
// of its own, so whoever feeds it has to keep one.
constexpr int kMaxUnanswered = 64;

// What a resumed capture held before.
struct KeptAudio {
  int64_t duration_ms = 0;
  int64_t bytes = 0;       // up to where the new frames begin
  int64_t torn_bytes = 0;  // behind them, cut off
};

struct TakeOptions {
  std::string capture_path;         // goes to the plugin as it is
  std::optional<int64_t> bit_rate;  // bit/s; the plugin's default if absent
  int chunk_ms = 20;                // audio in one append, 1 or more
  bool realtime = false;            // no faster than the audio plays
  // Of a take that goes on in a capture; nothing for a new one.
  std::optional<KeptAudio> kept;
};

struct TakeResult {
  bool started = false;
  bool stopped = false;              // by Stop(), before the source's end
  int64_t frames = 0;                // whole sample frames handed over
  int64_t leftover_bytes = 0;        // of an incomplete last sample frame
  std::optional<PluginError> error;  // the plugin's first
  std::optional<SealedCapture> sealed;
};

class Recorder {
 public:
  // All pointers are borrowed; `progress` may be NULL.
  Recorder(Engine* engine, AudioSource* source, TakeOptions options,
           Progress* progress);

  // Runs the whole take on the main context. The first append that fails ends
  // it, because going on after a failed write would bury a torn frame in the
  // capture. Whatever ended it, a take that started is stopped and sealed.
  TakeResult Run();

  // Ends a running take from within the main context, as at the source's end.
  void Stop();

 private:
  void Start();
  void Feed();
  void Seal();
  void WaitForRoom();
  void WaitForInput();
  void WaitForTime();
  void AppendChunk();
  void OnAppended(size_t size, FlMethodResponse* response);

  Engine* const engine_;
  AudioSource* const source_;
  const TakeOptions options_;
  Progress* const progress_;
  const size_t bytes_per_frame_;
  std::vector<uint8_t> chunk_;
  TakeResult result_;
  bool ended_ = false;
  int unanswered_ = 0;
  int64_t sent_bytes_ = 0;
  int64_t answered_bytes_ = 0;
  int64_t start_us_ = 0;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_RECORDER_H_
